// Takes the results out of the engine's sweeps, while they are there: the worst setup and hold slack of every
// end point, and the worst paths.
//
// Harvest listens to the host's objects. As soon as a subdomain exists it fixes the relations that the
// clocks' edges give; just before a sweep goes it reads the arrivals at the sweep's end points, class by
// class, finds the exception that governs each, and keeps what is worst. Paths are traced back through the
// sweep's arrivals, the worst first, so that none is looked at that is not reported. The results of a run
// that did not end are incomplete: ask for them only after a launch that returned true.
//
// Equal slacks are ordered by names, never by the order in which a file lists its cells: by the end point,
// then by launching and capturing clock and their edges, by the exception, and then by the pins of the path
// from the end point backwards.
#pragma once

#include "Vorlen/Sweep.h"
#include "exceptions/Exceptions.h"
#include "model/Relations.h"
#include "model/TimingModel.h"
#include "report/Report.h"

#include <exception>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

namespace Analysis {

using Model::Time;

struct HarvestOptions {
    std::size_t paths = 10;      // of each kind
    std::size_t perEndpoint = 1; // of them
    bool setup = true, hold = true;
};

// What decides between equal slacks of an end point before the pins of the paths do.
struct Standing {
    std::uint32_t launch = Base::none, capture = Base::none; // clocks
    bool launchRise = true, captureRise = true;
    std::uint32_t exception = Base::none;
    const Model::End* end = nullptr;
};
// The worst of an end point on one side.
struct Worst : Standing {
    Time slack = 0;
};
struct EndResult {
    std::optional<Worst> setup, hold;
};

// An exception as reports tell it.
Report::Exception describe(const Design::Constraints& constraints, std::uint32_t exception);
Report::Exception describe(const Design::Constraints& constraints, const Design::Exception& exception);

inline Base::Side sideOf(bool setup) { return setup ? Base::Side::setup : Base::Side::hold; }

// A value of the engine that is a time; nothing for undefined and the other specials.
std::optional<Time> ordinary(const Pelko::Delay& delay);

class Harvest : public Pelko::ObjectListener {
public:
    Harvest(const Design::RoutedDesign& design, const Model::Network& network, const Model::Clocks& clocks,
            const Design::Constraints& constraints, Model::TimingModel& model,
            Exceptions::Exceptions& exceptions, const HarvestOptions& options);

    void onCreated(Pelko::Object* object) override;
    void onDestroyed(Pelko::Object* object) override;

    // By the pin of the end point. Throws what went wrong while a sweep was read.
    const std::map<std::uint32_t, EndResult>& endpoints() const;
    // The reported paths, setup first, each kind worst first. Hands them over: call it once.
    std::vector<Report::Path> takePaths();
    // The pairs of clocks whose edges were compared up to a limit only, the first clock first.
    std::set<std::pair<std::uint32_t, std::uint32_t>> cutOffPairs() const;
    // By exception, the end points of which it governs some path. A path group governs those of its paths.
    std::vector<std::uint64_t> governed(bool setup) const;
    // The period at which the clock's own setup paths would just be met; nothing where it has none.
    std::optional<Time> achievedPeriod(std::uint32_t clock) const;

private:
    // A sweep that is being read.
    struct Context {
        const Vorlen::Sweep* sweep = nullptr;
        std::uint32_t launch = Base::none, capture = Base::none;
        bool launchRise = true, captureRise = true;
        std::optional<Model::Relation> relation;
    };
    // What arrives at an end point under one set of classes, and what is required of it.
    struct Arrival {
        const Model::End* end = nullptr;
        std::uint64_t classes = 0;
        const Exceptions::Requirement* requirement = nullptr;
        bool setup = true;
        Time arrival = 0;        // at the end point, the check or the port's delay included
        Time captureLatency = 0; // of the clock at the check; 0 at a port
        Time uncertainty = 0;
        Time relation = 0; // capture edge - launch edge, or the delay in its place
        Time slack = 0;
    };
    // A path that is kept.
    struct Kept {
        std::uint32_t pin = Base::none; // of the end point
        Standing by = {};
        Report::Path path = {};
    };
    // The order of reports. What is equal in it is reported alike.
    struct Order {
        const Harvest* harvest;
        bool operator()(const Kept& a, const Kept& b) const;
    };
    using KeptPaths = std::multiset<Kept, Order>;
    struct Step;
    class Trail;

    Context contextOf(const Vorlen::Sweep* sweep);
    void read(const Vorlen::Sweep* sweep);
    void readEnd(const Context& context, Pelko::Pole* pole, const Vorlen::Timing& latch);
    void readSide(const Context& context, Arrival arrival, Pelko::Delay data, Pelko::Delay latch);
    void ignoreLatencies(const Context& context, Arrival& arrival);
    Time launchLatency(const Context& context, const Model::Start& start, bool late) const;
    std::optional<Time> commonLaunchLatency(const Context& context, std::uint64_t classes, bool late) const;
    void noteGoverning(const Arrival& arrival);
    void record(const Context& context, const Arrival& arrival);
    void achieve(const Context& context, const Arrival& arrival);
    Standing standingOf(const Context& context, const Arrival& arrival) const;
    bool isBefore(const Standing& a, const Standing& b) const;
    bool isBefore(const Arrival& a, const Arrival& b) const;
    void enqueue(const Arrival& arrival);
    void thinOut(std::vector<Arrival>& queue) const;
    void traceQueue(const Context& context);
    void trace(const Context& context, const Arrival& arrival);
    bool isWanted(bool setup, std::uint32_t pin, Time slack) const;
    bool keep(bool setup, Kept kept);
    Report::Path pathOf(const Context& context, const Arrival& arrival, const Step& step,
                        const Trail& trail) const;
    void addPoints(const std::vector<Pelko::Edge*>& edges, bool late, Report::Path& path) const;

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const Model::Clocks& clocks_;
    const Design::Constraints& constraints_;
    Model::TimingModel& model_;
    Exceptions::Exceptions& exceptions_;
    const HarvestOptions options_;

    std::map<std::uint32_t, EndResult> endpoints_;
    std::map<std::uint32_t, Time> achieved_;
    // Hold, setup: exceptions and the end pins where they govern.
    std::set<std::pair<std::uint32_t, std::uint32_t>> governed_[2];
    // Hold, setup: arrivals of the sweep whose paths may be reported.
    std::vector<Arrival> queue_[2];
    // Hold, setup: the number of arrivals at which the queue is thinned out.
    std::size_t queueLimit_[2] = {};
    KeptPaths kept_[2] = {KeptPaths(Order{this}), KeptPaths(Order{this})}; // hold, setup; in order
    std::unordered_map<std::uint32_t, std::vector<KeptPaths::iterator>> keptOfPin_[2]; // in order
    std::map<std::tuple<std::uint32_t, bool, std::uint32_t, bool>, Model::Relation> relations_;
    std::exception_ptr failure_;
};

} // namespace Analysis
