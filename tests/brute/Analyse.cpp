#include "Analyse.h"

#include <algorithm>
#include <tuple>

namespace Brute {

namespace {

using Kind = Exception::Kind;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Analyser {
public:
    Analyser(const Design& design, const Options& options)
        : design_(design), options_(options), clocks_(resolveClocks(design, options)),
          atoms_(atoms(design, clocks_)) {}

    Result run() {
        for (const DataPath& path : listPaths(design_, clocks_, options_)) {
            path_ = &path;
            const std::vector<Capture> ends = captures(design_, clocks_, path, options_);
            for (const Launch& launch : launches(design_, clocks_, path))
                for (const Capture& capture : ends)
                    time(launch, capture);
        }
        std::erase_if(result_, [](const auto& end) { return !end.second.setup && !end.second.hold; });
        return std::move(result_);
    }

private:
    void time(const Launch& launch, const Capture& capture) {
        if (launch.unclocked || capture.unclocked || inSeparateGroups(launch.clock, capture.clock))
            return;
        launch_ = &launch, capture_ = &capture;
        matching_.clear();
        for (const Atom& atom : atoms_)
            if (matches(design_, clocks_, atom, *path_, launch, capture))
                matching_.push_back(&atom);
        timeSetup();
        timeHold();
    }

    bool inSeparateGroups(int a, int b) const {
        if (a == none || b == none || a == b)
            return false;
        const auto isIn = [&](const std::vector<int>& group, int clock) {
            return std::ranges::any_of(group, [&](int named) { return clocks_.liveOf[at(named)] == clock; });
        };
        for (const ClockGroups& command : design_.clockGroups) {
            bool hasA = false, hasB = false, shared = false;
            for (const std::vector<int>& group : command.groups) {
                const bool inA = isIn(group, a), inB = isIn(group, b);
                hasA = hasA || inA, hasB = hasB || inB, shared = shared || (inA && inB);
            }
            if (!shared && (command.groups.size() == 1 ? hasA != hasB : hasA && hasB))
                return true;
        }
        return false;
    }

    // --- The relation between the two edges ---

    bool related() const { return launch_->clock != none && capture_->clock != none; }
    const LiveClock& from() const { return clocks_.live[at(launch_->clock)]; }
    const LiveClock& to() const { return clocks_.live[at(capture_->clock)]; }

    Relation plainRelation() {
        const auto key = std::tuple{launch_->clock, launch_->fall, capture_->clock, capture_->fall};
        auto place = relations_.find(key);
        if (place == relations_.end())
            place = relations_
                        .emplace(key, relation(from().edge(launch_->fall), from().period,
                                               to().edge(capture_->fall), to().period))
                        .first;
        return place->second;
    }

    std::int64_t setupShift(int exception) const {
        if (exception == none)
            return 0;
        const Exception& e = design_.exceptions[at(exception)];
        return std::int64_t{e.value - 1} * (e.start.value_or(false) ? from() : to()).period;
    }

    // By how much the hold command moves the hold relation back. A multicycle without -setup or -hold does
    // not move it.
    std::int64_t holdShift(int exception) const {
        if (exception == none || !design_.exceptions[at(exception)].setup)
            return 0;
        const Exception& e = design_.exceptions[at(exception)];
        return std::int64_t{e.value} * (e.start.value_or(true) ? from() : to()).period;
    }

    int setupMulticycle() const {
        return governing(design_, matching_, Kind::multicycle, true, [&](int e) { return setupShift(e); });
    }

    // --- Uncertainty ---

    std::int64_t uncertainty(bool setup) const {
        std::int64_t value = 0;
        if (capture_->clock == none)
            return value;
        for (bool pair : {false, true})
            for (const Uncertainty& u : design_.uncertainties) {
                if (u.setup.value_or(setup) != setup || (u.from != none) != pair ||
                    clocks_.liveOf[at(u.to)] != capture_->clock)
                    continue;
                if (!pair || clocks_.liveOf[at(u.from)] == launch_->clock)
                    value = u.value;
            }
        return value;
    }

    // --- The two sides ---

    bool isFalse(bool setup) const {
        return governing(design_, matching_, Kind::falsePath, setup, [](int) { return 0; }) != none;
    }

    void timeSetup() {
        if (!launch_->late || !capture_->setup || isFalse(true))
            return;
        const int delay = governing(design_, matching_, Kind::maximumDelay, true,
                                    [&](int e) { return design_.exceptions[at(e)].value; });
        const int cycles = related() ? setupMulticycle() : none;
        if (delay == none && !related())
            return;
        const Exception* limit = delay == none ? nullptr : &design_.exceptions[at(delay)];
        std::int64_t launched = *launch_->late, captured = capture_->latency.early - uncertainty(true);
        if (limit && limit->ignoreLatency)
            launched -= launch_->latency.late, captured = 0;
        const std::int64_t allowed = limit ? limit->value : plainRelation().setup + setupShift(cycles);
        const std::int64_t slack = allowed + captured - *capture_->setup - launched - path_->delay.late;
        keep(&EndResult::setup, slack, limit ? delay : cycles);
    }

    void timeHold() {
        if (!launch_->early || !capture_->hold || isFalse(false))
            return;
        const int delay = governing(design_, matching_, Kind::minimumDelay, false,
                                    [&](int e) { return -design_.exceptions[at(e)].value; });
        if (delay == none && !related())
            return;
        const Exception* limit = delay == none ? nullptr : &design_.exceptions[at(delay)];
        std::int64_t launched = *launch_->early, captured = capture_->latency.late + uncertainty(false);
        if (limit && limit->ignoreLatency)
            launched -= launch_->latency.early, captured = 0;
        int governs = delay;
        std::int64_t allowed = 0;
        if (limit) {
            allowed = limit->value;
        } else {
            const int cycles = setupMulticycle();
            const int back =
                governing(design_, matching_, Kind::multicycle, false, [&](int e) { return holdShift(e); });
            allowed = plainRelation().hold + setupShift(cycles) - holdShift(back);
            governs = back != none ? back : cycles;
        }
        keep(&EndResult::hold, launched + path_->delay.early - allowed - captured - *capture_->hold, governs);
    }

    void keep(std::optional<SideResult> EndResult::*side, std::int64_t slack, int governs) {
        std::optional<SideResult>& place = result_[design_.pinName(path_->pins.back())].*side;
        if (!place || slack < place->slack)
            place = SideResult{slack, {}};
        if (slack == place->slack)
            place->pairs.insert({launch_->clock == none ? "" : from().name,
                                 capture_->clock == none ? "" : to().name, governs});
    }

    const Design& design_;
    const Options& options_;
    Clocks clocks_;
    std::vector<Atom> atoms_;
    const DataPath* path_ = nullptr;
    const Launch* launch_ = nullptr;
    const Capture* capture_ = nullptr;
    std::vector<const Atom*> matching_;
    std::map<std::tuple<int, bool, int, bool>, Relation> relations_;
    Result result_;
};

} // namespace

Result analyse(const Design& design, const Options& options) { return Analyser(design, options).run(); }

std::vector<Naming> namings(const Design& design, const Clocks& clocks, const std::vector<DataPath>& paths,
                            const Options& options) {
    const std::vector<Atom> all = atoms(design, clocks);
    std::vector<Naming> result;
    for (const DataPath& path : paths) {
        const std::vector<Capture> ends = captures(design, clocks, path, options);
        for (const Launch& launch : launches(design, clocks, path))
            for (const Capture& capture : ends) {
                Naming naming{&path, launch, capture, {}};
                for (const Atom& atom : all)
                    if (matches(design, clocks, atom, path, launch, capture))
                        naming.exceptions.insert(atom.exception);
                result.push_back(std::move(naming));
            }
    }
    return result;
}

} // namespace Brute
