#include "Paths.h"

#include <algorithm>

namespace Brute {

namespace {

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Lister {
public:
    Lister(const Design& design, const Clocks& clocks, const Options& options)
        : design_(design), clocks_(clocks), options_(options), arcs_(liveArcs(design)),
          passed_(design.pins.size()) {
        const std::set<int> off = disabledCells(design);
        for (const Check& check : design.checks)
            if (!off.contains(design.pins[at(check.data)].cell))
                ends_.insert(check.data);
    }

    std::vector<DataPath> run() {
        for (int pin = 0; pin < static_cast<int>(design_.pins.size()); ++pin) {
            if (clocks_.sources.contains(pin))
                start(DataPath::Start::clockSource, pin);
            else if (design_.isPort(pin) && design_.pins[at(pin)].direction == Direction::input &&
                     !isConstant(pin))
                start(DataPath::Start::port, pin);
            startRegister(pin);
        }
        return std::move(paths_);
    }

private:
    bool isConstant(int pin) const {
        return std::ranges::any_of(design_.caseValues, [&](const CaseValue& c) { return c.port == pin; });
    }

    void start(DataPath::Start kind, int pin) {
        path_ = {kind, Edge::rise, {pin}, {}, {}};
        goOn();
    }

    // One start per clock-to-output arc. An arc without an edge works on the edge of the checks.
    void startRegister(int clockPin) {
        for (int index : arcs_[at(clockPin)]) {
            const Arc& arc = design_.arcs[at(index)];
            if (arc.kind != Arc::Kind::clockToOutput || clocks_.sources.contains(arc.to))
                continue;
            Edge edge = arc.edge;
            for (const Check& check : design_.checks)
                if (edge == Edge::any && check.clock == clockPin)
                    edge = check.clockEdge;
            path_ = {DataPath::Start::clockPin, edge == Edge::any ? Edge::rise : edge, {clockPin}, {}, {}};
            step(arc);
        }
    }

    void step(const Arc& arc) {
        const Interval before = path_.delay;
        path_.delay = before + interval(arc.values, options_.delays);
        path_.pins.push_back(arc.to);
        path_.nets.push_back(arc.kind == Arc::Kind::wire ? design_.pins[at(arc.from)].net : none);
        goOn();
        path_.pins.pop_back();
        path_.nets.pop_back();
        path_.delay = before;
    }

    void goOn() {
        const int pin = path_.pins.back();
        passed_[at(pin)] = true;
        lookOn(pin);
        passed_[at(pin)] = false;
    }

    void lookOn(int pin) {
        const bool outputPort = design_.isPort(pin) && design_.pins[at(pin)].direction == Direction::output;
        if (outputPort || ends_.contains(pin)) {
            paths_.push_back(path_);
            return;
        }
        for (int index : arcs_[at(pin)]) {
            const Arc& arc = design_.arcs[at(index)];
            if (arc.kind != Arc::Kind::wire && arc.kind != Arc::Kind::gate)
                continue;
            if (!clocks_.sources.contains(arc.to) && !passed_[at(arc.to)])
                step(arc);
        }
    }

    const Design& design_;
    const Clocks& clocks_;
    const Options& options_;
    std::vector<std::vector<int>> arcs_;
    std::vector<bool> passed_; // by pin, on this path
    std::set<int> ends_;
    DataPath path_;
    std::vector<DataPath> paths_;
};

// One entry of a port: the values relative to one edge of one clock.
struct Entry {
    int clock = none;
    bool fall = false;
    bool sourceIncluded = false, networkIncluded = false;
    std::optional<int> minimum, maximum;
};

bool give(std::optional<int>& place, int value, bool keepGreater, bool merge) {
    if (!place || !merge || (keepGreater ? value > *place : value < *place))
        place = value;
    return true;
}

std::vector<Entry> portEntries(const Design& design, const Clocks& clocks, int port, bool input) {
    std::vector<const PortDelay*> commands;
    for (bool early : {true, false}) // in the order of the file
        for (const PortDelay& d : design.portDelays)
            if (d.early == early && d.port == port && d.input == input)
                commands.push_back(&d);
    std::vector<Entry> entries;
    for (const PortDelay* d : commands) {
        const int clock = d->clock == none ? none : clocks.liveOf[at(d->clock)];
        if (d->clock != none && clock == none) { // dropped with its clock, but it has replaced others first
            if (!d->add)
                entries.clear();
            continue;
        }
        const auto same = [&](const Entry& e) { return e.clock == clock && e.fall == d->fall; };
        if (!d->add)
            std::erase_if(entries, [&](const Entry& e) { return !same(e); });
        auto place = std::ranges::find_if(entries, same);
        if (place == entries.end())
            place = entries.insert(entries.end(), Entry{clock, d->fall, false, false, {}, {}});
        place->sourceIncluded = d->sourceIncluded;
        place->networkIncluded = d->networkIncluded;
        if (d->maximum.value_or(true))
            give(place->maximum, d->value, true, d->add);
        if (!d->maximum.value_or(false))
            give(place->minimum, d->value, false, d->add);
    }
    return entries;
}

} // namespace

std::vector<DataPath> listPaths(const Design& design, const Clocks& clocks, const Options& options) {
    return Lister(design, clocks, options).run();
}

std::vector<Launch> launches(const Design& design, const Clocks& clocks, const DataPath& path) {
    std::vector<Launch> result;
    const int pin = path.pins.front();
    const int count = static_cast<int>(clocks.live.size());
    if (path.start == DataPath::Start::port) {
        for (const Entry& e : portEntries(design, clocks, pin, true)) {
            if (e.clock == none) {
                result.push_back({none, false, e.minimum, e.maximum, {}, false});
                continue;
            }
            const Interval base = clocks.live[at(e.clock)].atPort(e.sourceIncluded, e.networkIncluded);
            Launch launch{e.clock, e.fall, {}, {}, base, false};
            if (e.minimum)
                launch.early = base.early + *e.minimum;
            if (e.maximum)
                launch.late = base.late + *e.maximum;
            result.push_back(launch);
        }
        if (result.empty())
            result.push_back({none, false, 0, 0, {}, false});
        return result;
    }
    for (int c = 0; c < count; ++c) {
        const LiveClock& clock = clocks.live[at(c)];
        if (path.start == DataPath::Start::clockSource) {
            if (std::ranges::find(clock.targets, pin) != clock.targets.end())
                for (bool fall : {false, true})
                    result.push_back({c, fall, clock.root.early, clock.root.late, clock.root, false});
        } else if (const auto place = clock.arrivals.find(pin); place != clock.arrivals.end()) {
            const bool fall = path.startEdge == Edge::fall;
            result.push_back({c, fall, place->second.early, place->second.late, place->second, false});
        }
    }
    if (result.empty())
        result.push_back({none, false, {}, {}, {}, true});
    return result;
}

std::vector<Capture> captures(const Design& design, const Clocks& clocks, const DataPath& path,
                              const Options& options) {
    std::vector<Capture> result;
    const int pin = path.pins.back();
    if (design.isPort(pin)) {
        for (const Entry& e : portEntries(design, clocks, pin, false)) {
            Capture capture{e.clock, e.fall, {}, e.maximum, {}, false};
            if (e.clock != none)
                capture.latency = clocks.live[at(e.clock)].atPort(e.sourceIncluded, e.networkIncluded);
            if (e.minimum)
                capture.hold = -*e.minimum;
            result.push_back(capture);
        }
        if (result.empty())
            result.push_back({none, false, {}, 0, 0, false});
        return result;
    }
    for (const Check& check : design.checks) {
        if (check.data != pin)
            continue;
        bool reached = false;
        for (int c = 0; c < static_cast<int>(clocks.live.size()); ++c) {
            const auto place = clocks.live[at(c)].arrivals.find(check.clock);
            if (place == clocks.live[at(c)].arrivals.end())
                continue;
            reached = true;
            Capture capture{c, check.clockEdge == Edge::fall, place->second, {}, {}, false};
            if (check.setup)
                capture.setup = checkValue(*check.setup, options.delays);
            if (check.hold)
                capture.hold = checkValue(*check.hold, options.delays);
            result.push_back(capture);
        }
        if (!reached)
            result.push_back({none, false, {}, {}, {}, true});
    }
    return result;
}

} // namespace Brute
