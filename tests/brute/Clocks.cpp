#include "Clocks.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <stdexcept>

namespace Brute {

namespace {

constexpr int degreesOfPeriod = 360;
constexpr int percent = 100;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

int early(const Triple& t, DelayMode mode) {
    switch (mode) {
    case DelayMode::typical:
        return t.typical;
    case DelayMode::maximum:
        return t.maximum;
    default:
        return t.minimum;
    }
}

int late(const Triple& t, DelayMode mode) {
    switch (mode) {
    case DelayMode::minimum:
        return t.minimum;
    case DelayMode::typical:
        return t.typical;
    default:
        return t.maximum;
    }
}

struct Waveform {
    int period = 0, rise = 0, fall = 0;
};

// The master's edge by number: 1 is its first rise, 2 the fall after it, 3 the next rise.
int masterEdge(const LiveClock& master, int number) {
    const int cycle = (number - 1) / 2;
    return (number % 2 == 1 ? master.rise : master.fall) + cycle * master.period;
}

// a / b for positive b, rounded to the nearest integer; a half is rounded up.
int nearest(long a, long b) {
    const long twice = 2 * a + b;
    return static_cast<int>(twice >= 0 ? twice / (2 * b) : -((2 * b - 1 - twice) / (2 * b)));
}

Waveform generatedWaveform(const Generated& g, const LiveClock& master) {
    Waveform w;
    if (g.kind == Generated::Kind::edges) {
        const int shift = g.edgeShift.value_or(0);
        w.rise = masterEdge(master, g.edges[0]) + shift;
        w.fall = masterEdge(master, g.edges[1]) + shift;
        w.period = masterEdge(master, g.edges[2]) + shift - w.rise;
    } else {
        w.period =
            g.kind == Generated::Kind::divide ? master.period * g.factor : nearest(master.period, g.factor);
        w.rise = master.rise;
        w.fall = w.rise + w.period / 2;
        if (g.kind == Generated::Kind::divide && g.factor == 1)
            w.fall = master.fall; // a copy
        if (g.dutyCycle)
            w.fall = w.rise + nearest(long{w.period} * *g.dutyCycle, percent);
    }
    if (g.invert)
        w = {w.period, w.fall, w.rise + w.period};
    const int shift = g.offset + nearest(long{w.period} * g.phase, degreesOfPeriod);
    return {w.period, w.rise + shift, w.fall + shift};
}

class Resolver {
public:
    Resolver(const Design& design, const Options& options)
        : design_(design), options_(options), arcs_(liveArcs(design)), passed_(design.pins.size()) {}

    Clocks run() {
        replaceClocks();
        for (LiveClock& clock : result_.live)
            result_.sources.insert(clock.targets.begin(), clock.targets.end());
        for (LiveClock& clock : result_.live)
            settle(clock);
        return std::move(result_);
    }

private:
    // A clock without -add replaces the earlier ones on its pins; a clock of a known name replaces the one of
    // that name.
    void replaceClocks() {
        const int count = static_cast<int>(design_.clocks.size());
        std::vector<int> replacedBy(at(count), none);
        for (int later = 0; later < count; ++later)
            for (int earlier = 0; earlier < later; ++earlier)
                if (replacedBy[at(earlier)] == none && replaces(later, earlier))
                    replacedBy[at(earlier)] = later;
        result_.liveOf.assign(at(count), none);
        for (int i = 0; i < count; ++i)
            if (replacedBy[at(i)] == none) {
                result_.liveOf[at(i)] = static_cast<int>(result_.live.size());
                LiveClock clock;
                clock.index = i;
                clock.name = design_.clocks[at(i)].name;
                clock.targets = design_.clocks[at(i)].targets;
                result_.live.push_back(std::move(clock));
            }
        for (int i = count - 1; i >= 0; --i) // names of a replaced clock mean the new one
            if (const int by = replacedBy[at(i)];
                by != none && design_.clocks[at(by)].name == design_.clocks[at(i)].name)
                result_.liveOf[at(i)] = result_.liveOf[at(by)];
    }

    bool replaces(int later, int earlier) const {
        const Clock& a = design_.clocks[at(later)];
        const Clock& b = design_.clocks[at(earlier)];
        if (a.name == b.name)
            return true;
        return !a.add && std::ranges::any_of(a.targets, [&](int pin) {
            return std::ranges::find(b.targets, pin) != b.targets.end();
        });
    }

    void settle(LiveClock& clock) {
        const Clock& made = design_.clocks[at(clock.index)];
        readLatencies(clock);
        if (made.generated) {
            const LiveClock& master = masterOf(*made.generated);
            const Waveform w = generatedWaveform(*made.generated, master);
            clock.period = w.period, clock.rise = w.rise, clock.fall = w.fall;
            if (clock.propagated)
                clock.root = master.root + insertion(*made.generated, master, clock.targets);
        } else {
            clock.period = made.period, clock.rise = made.rise, clock.fall = made.fall;
        }
        for (int target : clock.targets)
            walk(clock, target, clock.root);
        if (!clock.propagated)
            for (auto& [pin, arrival] : clock.arrivals)
                arrival = clock.root + Interval{clock.network, clock.network};
    }

    void readLatencies(LiveClock& clock) const {
        clock.propagated = options_.propagated;
        for (const Latency& l : design_.latencies) {
            if (result_.liveOf[at(l.clock)] == none ||
                &result_.live[at(result_.liveOf[at(l.clock)])] != &clock)
                continue;
            if (l.kind == Latency::Kind::propagated)
                clock.propagated = true, clock.network = 0;
            else if (l.kind == Latency::Kind::network)
                clock.propagated = false, clock.network = l.value;
            else {
                if (l.late.value_or(false) == false)
                    clock.root.early = l.value;
                if (l.late.value_or(true))
                    clock.root.late = l.value;
            }
        }
    }

    const LiveClock& masterOf(const Generated& generated) const {
        if (generated.master != none)
            return result_.live[at(result_.liveOf[at(generated.master)])];
        const LiveClock* found = nullptr;
        for (const LiveClock& clock : result_.live)
            if (clock.arrivals.contains(generated.source)) {
                if (found)
                    throw std::logic_error("a generated clock with several masters");
                found = &clock;
            }
        if (!found)
            throw std::logic_error("a generated clock without a master");
        return *found;
    }

    void walk(LiveClock& clock, int pin, Interval arrival) {
        const auto [place, fresh] = clock.arrivals.emplace(pin, arrival);
        if (!fresh) {
            place->second.early = std::min(place->second.early, arrival.early);
            place->second.late = std::max(place->second.late, arrival.late);
        }
        passed_[at(pin)] = true;
        for (int index : arcs_[at(pin)]) {
            const Arc& arc = design_.arcs[at(index)];
            if (arc.kind != Arc::Kind::wire && arc.kind != Arc::Kind::gate)
                continue;
            if (!result_.sources.contains(arc.to) && !passed_[at(arc.to)])
                walk(clock, arc.to, arrival + interval(arc.values, options_.delays));
        }
        passed_[at(pin)] = false;
    }

    // The delay from the master's roots to the target through the generated clock's source pin. It counts
    // only the ways through as few registers as possible: these make the clock, others have an output that
    // gates the master.
    Interval insertion(const Generated& generated, const LiveClock& master,
                       const std::vector<int>& targets) const {
        std::map<int, Interval> found; // key: the number of registers on the way
        std::vector<bool> passed(design_.pins.size());
        const std::function<void(int, Interval, int, bool)> go = [&](int pin, Interval delay, int registers,
                                                                     bool seen) {
            seen = seen || pin == generated.source;
            passed[at(pin)] = true;
            for (int index : arcs_[at(pin)]) {
                const Arc& arc = design_.arcs[at(index)];
                if (arc.kind == Arc::Kind::reset)
                    continue;
                const Interval sum = delay + interval(arc.values, options_.delays);
                const int through = registers + (arc.kind == Arc::Kind::clockToOutput ? 1 : 0);
                if (std::ranges::find(targets, arc.to) == targets.end()) {
                    if (!result_.sources.contains(arc.to) && !passed[at(arc.to)])
                        go(arc.to, sum, through, seen);
                } else if (seen) {
                    Interval& best = found.emplace(through, sum).first->second;
                    best = {std::min(best.early, sum.early), std::max(best.late, sum.late)};
                }
            }
            passed[at(pin)] = false;
        };
        for (int root : master.targets)
            go(root, {}, 0, false);
        return found.empty() ? Interval{} : found.begin()->second;
    }

    const Design& design_;
    const Options& options_;
    std::vector<std::vector<int>> arcs_;
    std::vector<bool> passed_; // by pin, on this walk
    Clocks result_;
};

} // namespace

Interval interval(const Values& values, DelayMode mode) {
    if (values.empty())
        return {};
    Interval sum{early(values.front(), mode), late(values.front(), mode)};
    for (const Triple& t : values)
        sum = {std::min(sum.early, early(t, mode)), std::max(sum.late, late(t, mode))};
    return sum;
}

int checkValue(const Triple& triple, DelayMode mode) {
    if (mode == DelayMode::minmax)
        return std::max({triple.minimum, triple.typical, triple.maximum});
    return late(triple, mode);
}

Interval LiveClock::atPort(bool sourceIncluded, bool networkIncluded) const {
    Interval sum;
    if (!sourceIncluded)
        sum = root;
    if (!networkIncluded && !propagated)
        sum = sum + Interval{network, network};
    return sum;
}

Clocks resolveClocks(const Design& design, const Options& options) { return Resolver(design, options).run(); }

std::set<int> disabledCells(const Design& design) {
    std::set<int> cells;
    for (const Disable& d : design.disables)
        if (d.object.kind == Object::Kind::cell && d.from.empty() && d.to.empty())
            cells.insert(d.object.index);
    return cells;
}

std::vector<std::vector<int>> liveArcs(const Design& design) {
    const auto takesOut = [&](const Disable& d, const Arc& arc) {
        if (d.object.kind != Object::Kind::cell)
            return arc.from == d.object.index || arc.to == d.object.index;
        const Pin& from = design.pins[at(arc.from)];
        const Pin& to = design.pins[at(arc.to)];
        if (arc.kind == Arc::Kind::wire || from.cell != d.object.index)
            return false;
        return (d.from.empty() || d.from == from.name) && (d.to.empty() || d.to == to.name);
    };
    std::vector<std::vector<int>> result(design.pins.size());
    for (int i = 0; i < static_cast<int>(design.arcs.size()); ++i) {
        const Arc& arc = design.arcs[at(i)];
        if (std::ranges::none_of(design.disables, [&](const Disable& d) { return takesOut(d, arc); }))
            result[at(arc.from)].push_back(i);
    }
    return result;
}

Relation relation(int launchEdge, int launchPeriod, int captureEdge, int capturePeriod) {
    const long common = std::lcm(static_cast<long>(launchPeriod), static_cast<long>(capturePeriod));
    // Edges from far before to far after one common period, for any shift.
    const long reach = 2 * common + std::abs(static_cast<long>(captureEdge) - launchEdge);
    std::optional<long> setup, hold;
    for (long launch = launchEdge; launch < launchEdge + common; launch += launchPeriod) {
        const long back = (launch + reach - captureEdge) / capturePeriod + 1;
        const long first = captureEdge - (back + reach / capturePeriod) * capturePeriod;
        for (long capture = first; capture <= launch + reach; capture += capturePeriod) {
            const long difference = capture - launch;
            if (difference > 0)
                setup = std::min(setup.value_or(difference), difference);
            else
                hold = std::max(hold.value_or(difference), difference);
        }
    }
    return {static_cast<int>(setup.value()), static_cast<int>(hold.value())};
}

} // namespace Brute
