// The user's exceptions, compiled to classes of the engine, and which of them governs a path.
//
// The engine keeps apart the paths of at most 64 classes. A class here does not stand for an exception but
// for what tells paths apart: at which of the named start points a path starts (a number in binary, a class a
// digit: start points that the same exceptions name share a number) and which of the named through points it
// passes. Clocks and end points need no class: a sweep has one pair of clocks, and an end point knows itself.
// So the classes of an arriving path, with its clocks and its end point, say which exceptions cover it; and
// of those one governs each side by type, specificity and order.
//
// One place can be named by several objects: a register by its cell or its clock pin, a node by its pin, its
// cell or its net. These are different objects, and a later command takes the place of an earlier one on the
// same objects only. So every point carries by which of them it was named.
//
// Through points share classes too where there are many (ThroughLayers.h): then a class's meaning depends on
// the end point.
#pragma once

#include "exceptions/ThroughLayers.h"
#include "model/TimingModel.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Exceptions {

// What is required of a path, on both sides.
struct Requirement {
    bool falseSetup = false, falseHold = false;
    std::optional<Model::Time> maxDelay, minDelay; // in units; in place of the clocks' relation
    bool maxIgnoresLatency = false, minIgnoresLatency = false;
    Model::Time setupShift = 0;                                            // added to the setup relation
    Model::Time holdShift = 0;                                             // added to the hold relation
    std::uint32_t setupException = Base::none, holdException = Base::none; // that govern
    std::uint32_t group = Base::none;                                      // the path group's statement

    bool operator==(const Requirement&) const = default;
};

class Exceptions {
public:
    // Resolves the named objects. Warns of what is no start or end point, and of exceptions that name
    // nothing. BadInput: a max or min delay from or to a point within paths.
    Exceptions(const Design::RoutedDesign& design, const Model::Network& network, const Model::Clocks& clocks,
               const Design::Constraints& constraints, int scale, Base::Diagnostics& diagnostics);

    // Ports without a delay, or with one without a clock, that a max or min delay may time by itself.
    const Model::TimedPorts& timedPorts() const { return timedPorts_; }

    // Makes the constrained paths that carry the classes. BadInput: more classes than the engine has.
    void makeClasses(Model::TimingModel& model);

    struct ClockEdges {
        std::uint32_t launch = Base::none, capture = Base::none; // clocks; none: no clock
        bool launchRise = true, captureRise = true;
    };
    // What holds for paths between two clock edges that arrive at an end point's pin under these classes.
    const Requirement& requirement(const ClockEdges& edges, std::uint32_t endPin, std::uint64_t classes);

    // Whether paths under these classes may start there.
    bool mayStart(const Model::Start& start, std::uint64_t classes) const;

    struct Use {
        std::unordered_set<std::uint32_t> overruledBy; // exceptions, on some path
        std::vector<std::uint32_t>
            cutByGroups;          // statements of clock groups; of exceptions that cover no path
        bool matchesPath = false; // some path that arrives is covered by it
    };
    // Finds out for exceptions that cover no path whether clock groups cut those that they would; after the
    // analysis.
    void findCut(const Model::TimingModel& model);
    const std::vector<Use>& uses() const { return uses_; }

private:
    using Group = std::vector<std::uint32_t>; // nodes of the data plane: any of them
    // The objects that a point can be named by, in the order of a path: a clock pin stands before what it
    // launches, a cell before its output, a net behind its driver. A register's output names a start point.
    enum By : std::uint32_t { byClockPin = 1, byCell = 2, byPin = 4, byNet = 8, byOutput = 16 };
    // A node of a -through list, and the object that names it there.
    struct Mention {
        std::uint32_t node = Base::none;
        By by = byPin;
        Base::Name clockPin{}; // the name of a clock pin: there may be several before a node

        auto operator<=>(const Mention&) const = default;
    };
    using Mentions = std::vector<Mention>; // sorted
    // The same of an atom: all of its nodes are named alike.
    struct Point {
        std::uint32_t atom = Base::none;
        By by = byPin;
        Base::Name clockPin{};

        auto operator<=>(const Point&) const = default;
    };
    // Start or end points: the pins, and by which objects each is named (bits of By).
    struct Pins {
        std::vector<std::uint32_t> pins; // sorted
        std::vector<std::uint32_t> by;

        void add(std::uint32_t pin, By object);
        void sort();
        bool empty() const { return pins.empty(); }
    };

    // One way to read an exception: with objects of one kind on either side.
    struct Variant {
        std::uint32_t exception = 0;
        bool hasFrom = false, hasTo = false;
        Pins from, to;                                   // at most one of from and fromClocks
        std::vector<std::uint32_t> fromClocks, toClocks; // has any, likewise to; sorted
        Design::Transition fromEdge = Design::Transition::any,
                           toEdge = Design::Transition::any; // of the clocks
        std::uint32_t fromOutput = Base::none; // the register's output that names the start points
        std::vector<Mentions> throughs;
        std::vector<std::vector<Point>> atoms; // by list: any of them; sorted

        unsigned rank() const;
    };
    // A set of through points that all through lists hold together or not at all.
    struct Atom {
        Group nodes;
        std::uint32_t layer = 0; // atoms of one layer are never on one path
        std::uint64_t code = 0;  // within the layer's classes; not 0
    };
    struct Layer {
        unsigned firstClass = 0, classes = 0;
        std::unordered_map<std::uint64_t, std::uint32_t> atomOfCode; // where no two share one
    };
    struct Match {
        const Variant* variant;
        std::uint32_t from = 0, to = 0;         // by which objects the path's ends are named; bits of By
        std::vector<std::vector<Point>> passed; // combinations of points, one of each list
    };
    // A variant that names a start or end point, and by which objects.
    struct Naming {
        std::uint32_t variant;
        std::uint32_t by; // bits of By
    };
    struct Key {
        std::uint32_t launch, capture, start, end;
        std::uint32_t endPin; // none where the classes mean the same at all of the end's number
        bool launchRise, captureRise;
        std::uint64_t atoms;

        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };

    void noteEdges(const Design::Exception& exception);
    void resolve(std::uint32_t exception);
    std::vector<Variant> resolveSide(const Design::Points& points, const Variant& base, bool from);
    bool addPoint(const Design::Object& object, bool from, Variant& pins,
                  std::vector<Variant>& outputs) const;
    bool addPin(std::uint32_t pin, bool from, Variant& pins, std::vector<Variant>& outputs) const;
    Pins clockPinsBehind(std::uint32_t output) const;
    void addNodes(const Design::Object& object, Mentions& list) const;
    void addPinNodes(std::uint32_t pin, By by, Mentions& list) const;
    std::string nameOf(const Design::Object& object) const;
    void collectTimedPorts();
    void numberPoints(bool from);
    static std::uint64_t startKey(std::uint32_t pin, bool clockSource);
    std::vector<std::uint64_t> startKeys(std::uint32_t pin) const;
    std::vector<std::uint64_t> startsAlone() const;
    std::uint32_t numberOf(const Model::Start& start) const;
    std::uint32_t namedBy(const std::vector<Naming>& namings, const Variant& variant) const;
    std::unordered_map<std::uint32_t, Group> loopPointsAhead(const std::vector<std::uint32_t>& ordered) const;
    void makeAtoms();
    void levelNodes();
    bool isAntichain(const Group& group) const;
    bool reaches(const Group& from, const Group& to) const;
    void indexAtoms();
    void layAtoms();
    void layAtomsTogether();
    void splitByLevel();
    std::vector<ThroughLayers::Point> pointsOfAtoms() const;
    [[noreturn]] void refuse(unsigned classes) const;
    void makeStartClasses(Model::TimingModel& model);
    void makeLayerClasses(Model::TimingModel& model, const Layer& layer, std::uint32_t number);

    Requirement decide(const Key& key);
    void decideMulticycles(const Key& key, const std::vector<Match>& matches, Requirement& requirement);
    std::vector<std::uint32_t> candidates(const Key& key, const std::vector<std::uint32_t>& passed);
    const std::vector<std::uint32_t>& betweenClocks(std::uint32_t launch, std::uint32_t capture);
    std::vector<std::uint32_t> passedAtoms(const Key& key) const;
    std::optional<Match> match(const Variant& variant, const Key& key,
                               const std::vector<std::uint32_t>& passed);
    std::vector<std::vector<Point>> waysThrough(const Variant& variant,
                                                const std::vector<std::uint32_t>& passed);
    bool isBehind(const Point& point, const Point& before);
    bool isInOrder(std::uint32_t before, std::uint32_t after);
    // Of the matches that compete on a side as one kind: those that no more specific or later one takes.
    std::vector<std::uint32_t> survivors(const std::vector<Match>& matches, Design::Exception::Kind kind,
                                         bool setup);
    void account(const std::vector<Match>& matches, const Requirement& requirement, bool isRelated);
    struct CutSearch; // in ExceptionUse.cpp
    void findCut(CutSearch& search, const Variant& variant);
    std::vector<std::uint32_t> startNodes(const CutSearch& search, const Variant& variant,
                                          std::uint32_t launch) const;
    std::vector<bool> walkVariant(CutSearch& search, const Variant& variant, std::uint32_t launch) const;
    std::vector<std::uint32_t> launchClocks(const Model::TimingModel& model, const Model::Start& start) const;
    const Design::Exception& stated(std::uint32_t exception) const {
        return constraints_.exceptions[exception];
    }
    Base::Place placeOf(std::uint32_t exception) const;
    std::uint64_t codeIn(const Layer& layer, std::uint64_t classes) const;

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const Model::Clocks& clocks_;
    const Design::Constraints& constraints_;
    const int scale_;
    Base::Diagnostics& diagnostics_;

    std::vector<Variant> variants_;
    Model::TimedPorts timedPorts_;
    // Variants that name no start and no end point: those without through points; those that begin with an
    // atom.
    std::vector<std::uint32_t> unpinned_;
    std::vector<std::vector<std::uint32_t>> unpinnedThrough_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint32_t>> betweenClocks_;
    // The number of a start point (by startKey) or an end point (by pin); 0: not named. By number, the
    // variants that name it, in order.
    std::unordered_map<std::uint64_t, std::uint32_t> startNumber_, endNumber_;
    std::vector<std::vector<Naming>> startVariants_, endVariants_;
    std::vector<Atom> atoms_;
    std::vector<Layer> layers_;
    std::optional<ThroughLayers> together_; // where atoms share classes
    std::vector<std::uint32_t> level_;      // by node: the longest way to it
    unsigned startClasses_ = 0;
    std::vector<Use> uses_;
    std::unordered_map<Key, Requirement, KeyHash> known_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, bool> order_;
};

} // namespace Exceptions
