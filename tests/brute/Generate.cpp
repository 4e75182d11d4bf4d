// What the generator avoids, because constraints leave it open or it is an error:
// - ideal and propagated clocks on one pin; a propagated clock generated from an ideal one; a source latency
//   of a generated clock that is propagated;
// - divide_by 1, multiply_by without -duty_cycle and odd divides of a master whose high and low times differ;
// - a clock generated from an inverted one, or edges counted from an edge whose place depends on the reader;
// - an input delay on a clock's own port;
// - a maximum or minimum delay exception over a path that begins or ends at a register without a clock;
// - such an exception together with an ideal clock's network latency at an output port;
// - a multicycle for both sides after one with a flag, -start and -end mixed in overlapping ones, and a cell
//   and its own data pin as two -through of one exception.
#include "Generate.h"

#include "Clocks.h"
#include "GenerateExceptions.h"
#include "GenerateLoops.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <stdexcept>

namespace Brute {

namespace {

constexpr int nanosecond = 1000;
constexpr long greatestPathCount = 1'000'000'000;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Constrainer {
public:
    Constrainer(Random& random, const Shape& shape, Skeleton& skeleton)
        : random_(random), shape_(shape), s_(skeleton), d_(skeleton.design) {}

    // Returns false if the clocks are too far apart.
    bool run() {
        plainClocks();
        generatedClocks();
        if (!periodsAreClose())
            return false;
        latencies();
        uncertainties();
        groups();
        for (int port : s_.inputs)
            inputDelays(port);
        for (int port : s_.outputs)
            outputDelays(port);
        disables();
        generateExceptions(random_, shape_, s_, allIdeal_);
        dropOpenLatencies();
        return true;
    }

private:
    // --- Clocks ---

    bool full() const { return living_ >= shape_.maximumClocks; }
    static bool isEven(const LiveClock& clock) { return 2 * (clock.fall - clock.rise) == clock.period; }

    Clock plainClock(const std::string& name) {
        static const std::vector<int> periods{4, 5, 6, 8, 10, 10, 10, 12, 15, 20, 30};
        Clock clock;
        clock.name = name;
        clock.period = random_.of(periods) * nanosecond;
        clock.fall = clock.period / 2;
        if (random_.chance(35)) {
            clock.waveform = true;
            if (random_.chance(70))
                clock.rise = random_.between(0, clock.period / nanosecond - 1) * nanosecond;
            clock.fall = clock.rise + clock.period / 2;
            if (random_.chance(50))
                clock.fall = clock.rise + random_.between(1, clock.period / nanosecond - 1) * nanosecond;
        }
        return clock;
    }

    int addClock(Clock clock) {
        d_.clocks.push_back(std::move(clock));
        ++living_;
        return static_cast<int>(d_.clocks.size()) - 1;
    }

    void plainClocks() {
        for (std::size_t i = 0; i < s_.clockPorts.size() && !full(); ++i) {
            if (i > 0 && random_.chance(12))
                continue; // nothing clocks this network
            // A clock that loses only one of several targets to another clock would remain on the other
            // targets, so it is not generated.
            const bool replacedFirst =
                d_.clocks.size() > 1 && !d_.clocks[1].add && d_.clocks[0].targets == d_.clocks[1].targets;
            if (i > 0 && random_.chance(12) && !d_.clocks[0].targets.empty() && !replacedFirst) {
                d_.clocks[0].targets.push_back(s_.clockPorts[i]);
                continue;
            }
            Clock clock = plainClock("c" + std::to_string(i));
            const int target = i > 0 && !s_.clockBuffers.empty() && random_.chance(15)
                                   ? random_.of(s_.clockBuffers)
                                   : s_.clockPorts[i];
            if (std::ranges::any_of(
                    d_.clocks, [&](const Clock& c) { return std::ranges::count(c.targets, target) > 0; }))
                continue;
            clock.targets = {target};
            if (random_.chance(7))
                replaced(clock);
            addClock(clock);
            if (random_.chance(15) && !full()) {
                Clock second = plainClock("c" + std::to_string(i) + "_too");
                second.targets = {target};
                second.add = true;
                addClock(second);
            }
        }
        if (random_.chance(30) && !full())
            virtual_ = addClock(plainClock("outside"));
    }

    // A clock that the given one replaces, with port delays that name it right after it.
    void replaced(const Clock& by) {
        Clock first = plainClock(random_.chance(50) ? by.name : by.name + "_first");
        first.targets = by.targets;
        d_.clocks.push_back(first);
        const int clock = static_cast<int>(d_.clocks.size()) - 1;
        for (const auto& [ports, input] : {std::pair{&s_.inputs, true}, std::pair{&s_.outputs, false}})
            if (random_.chance(60)) {
                PortDelay delay = portDelay(input, random_.of(*ports), clock);
                delay.early = true;
                d_.portDelays.push_back(delay);
            }
    }

    void generatedClocks() {
        for (std::size_t i = 0; i < s_.dividers.size() && !full(); ++i) {
            const Divider& divider = s_.dividers[i];
            const Clocks clocks = resolveClocks(d_, {});
            std::vector<int> masters;
            for (const LiveClock& clock : clocks.live)
                if (clock.arrivals.contains(divider.clockPin))
                    masters.push_back(clock.index);
            if (masters.empty() || random_.chance(10))
                continue;
            const std::string name = "g" + std::to_string(i);
            if (makeGenerated(name, divider.clockPin, divider.output, masters, masters[0]) &&
                masters.size() > 1 && random_.chance(50) && !full() &&
                makeGenerated(name + "_too", divider.clockPin, divider.output, masters, masters[1]))
                d_.clocks.back().add = true;
        }
        if (random_.chance(10) && !full() && !s_.clockBuffers.empty())
            generatedOnBuffer();
    }

    // As behind a phase-locked loop: no register makes the clock.
    void generatedOnBuffer() {
        const int target = random_.of(s_.clockBuffers);
        const Clocks clocks = resolveClocks(d_, {});
        std::vector<int> masters;
        const int source = d_.cells[at(d_.pins[at(target)].cell)].pins[0];
        for (const LiveClock& clock : clocks.live)
            if (clock.arrivals.contains(source))
                masters.push_back(clock.index);
        const bool feedsOthers =
            std::ranges::any_of(d_.clocks, [&](const Clock& c) { return c.generated.has_value(); });
        if (!masters.empty() && !clocks.sources.contains(target) && !feedsOthers)
            makeGenerated("gb", source, target, masters, masters[0]);
    }

    // Returns false if it depends on the reader which edge of the master is the first.
    bool makeGenerated(const std::string& name, int source, int target, const std::vector<int>& masters,
                       int master) {
        const Clocks clocks = resolveClocks(d_, {});
        const LiveClock& live = clocks.live[at(clocks.liveOf[at(master)])];
        Generated g;
        g.source = source;
        if (masters.size() > 1 || random_.chance(20))
            g.master = master;
        const bool even = isEven(live);
        if (inverted_.contains(master) || live.rise < 0 || live.rise >= live.period)
            return false;
        switch (random_.between(0, 3)) {
        case 0: {
            const int first = random_.chance(70) ? 1 : random_.between(1, 3);
            const int length = 2 * random_.between(1, 3);
            g.kind = Generated::Kind::edges;
            g.edges = {first, first + random_.between(1, length - 1), first + length};
            if (random_.chance(30))
                g.edgeShift = random_.between(-4, 6) * nanosecond / 2;
            break;
        }
        case 1:
            g.kind = Generated::Kind::multiply;
            g.factor = 2;
            if (live.period % (5 * nanosecond) == 0 && random_.chance(30))
                g.factor = 5;
            if (!even || random_.chance(40))
                g.dutyCycle = random_.of(std::vector<int>{20, 30, 50, 60, 80});
            break;
        default:
            g.factor = random_.of(std::vector<int>{2, 2, 2, 3, 4, 6});
            if (!even && g.factor % 2 == 1)
                g.factor = 2;
        }
        if (g.kind != Generated::Kind::edges && random_.chance(20)) {
            g.invert = true;
            inverted_.insert(static_cast<int>(d_.clocks.size()));
        }
        if (g.kind != Generated::Kind::edges && random_.chance(10)) {
            (random_.chance(50) ? g.offset : g.phase) = random_.of(std::vector<int>{90, 180, 270});
        }
        Clock clock;
        clock.name = name;
        clock.targets = {target};
        clock.generated = g;
        addClock(clock);
        return true;
    }

    bool periodsAreClose() const {
        constexpr long mostEdges = 900;
        const Clocks clocks = resolveClocks(d_, {});
        for (const LiveClock& a : clocks.live)
            for (const LiveClock& b : clocks.live)
                if (std::lcm(long{a.period}, long{b.period}) / std::min(a.period, b.period) > mostEdges ||
                    a.period < nanosecond)
                    return false;
        return true;
    }

    // --- Latencies ---

    // The clocks that must be ideal together: those that meet at a pin, and those generated from an ideal
    // one.
    std::vector<bool> chooseIdeal(const Clocks& clocks) {
        const std::size_t count = clocks.live.size();
        std::vector<bool> ideal(count);
        allIdeal_ = random_.chance(12);
        for (std::size_t i = 0; i < count; ++i)
            ideal[i] = allIdeal_ || random_.chance(15);
        for (bool changed = true; changed;) {
            changed = false;
            for (std::size_t a = 0; a < count; ++a)
                for (std::size_t b = 0; b < count; ++b)
                    if (ideal[a] && !ideal[b] &&
                        (meet(clocks.live[a], clocks.live[b]) || isMaster(clocks, a, b)))
                        ideal[b] = changed = true;
        }
        return ideal;
    }

    static bool meet(const LiveClock& a, const LiveClock& b) {
        return std::ranges::any_of(a.arrivals,
                                   [&](const auto& arrival) { return b.arrivals.contains(arrival.first); });
    }

    bool isMaster(const Clocks& clocks, std::size_t a, std::size_t b) const {
        const std::optional<Generated>& g = d_.clocks[at(clocks.live[b].index)].generated;
        if (!g)
            return false;
        if (g->master != none)
            return clocks.liveOf[at(g->master)] == static_cast<int>(a);
        return clocks.live[a].arrivals.contains(g->source);
    }

    void latencies() {
        const Clocks clocks = resolveClocks(d_, {});
        const std::vector<bool> ideal = chooseIdeal(clocks);
        const bool sayPropagated = random_.chance(50);
        for (std::size_t i = 0; i < clocks.live.size(); ++i) {
            const int clock = clocks.live[i].index;
            const auto network = [&] {
                return Latency{Latency::Kind::network, clock, {}, random_.between(0, 20) * 100};
            };
            if (random_.chance(10)) // the last one wins
                d_.latencies.push_back(ideal[i] ? Latency{Latency::Kind::propagated, clock, {}, 0}
                                                : network());
            if (ideal[i])
                d_.latencies.push_back(network());
            else if (sayPropagated || (!d_.latencies.empty() && d_.latencies.back().clock == clock))
                d_.latencies.push_back({Latency::Kind::propagated, clock, {}, 0});
            if (random_.chance(35) && (!d_.clocks[at(clock)].generated || ideal[i]))
                sourceLatency(clock);
        }
    }

    void sourceLatency(int clock) {
        const int early = random_.between(0, 15) * 100;
        if (random_.chance(40)) {
            d_.latencies.push_back({Latency::Kind::source, clock, {}, early});
            return;
        }
        d_.latencies.push_back({Latency::Kind::source, clock, false, early});
        d_.latencies.push_back({Latency::Kind::source, clock, true, early + random_.between(0, 10) * 100});
    }

    // --- Between clocks ---

    std::vector<int> liveClocks() const {
        std::vector<int> result;
        for (const LiveClock& clock : resolveClocks(d_, {}).live)
            result.push_back(clock.index);
        return result;
    }

    std::optional<bool> side(int percent) {
        if (!random_.chance(percent))
            return {};
        return random_.chance(50);
    }

    void uncertainties() {
        const std::vector<int> clocks = liveClocks();
        for (int clock : clocks)
            if (random_.chance(30)) {
                d_.uncertainties.push_back({none, clock, side(50), random_.between(1, 6) * 50});
                if (random_.chance(30))
                    d_.uncertainties.push_back({none, clock, side(80), random_.between(1, 6) * 50});
            }
        for (int n = random_.chance(30) ? random_.between(1, 2) : 0; n > 0; --n)
            d_.uncertainties.push_back(
                {random_.of(clocks), random_.of(clocks), side(50), random_.between(0, 8) * 50});
    }

    void groups() {
        static const std::vector<std::string> options{"-asynchronous", "-logically_exclusive",
                                                      "-physically_exclusive", "-exclusive"};
        const std::vector<int> clocks = liveClocks();
        if (clocks.size() < 2 || !random_.chance(20))
            return;
        ClockGroups command{random_.of(options), std::vector<std::vector<int>>(at(random_.between(1, 3)))};
        for (int clock : clocks)
            if (random_.chance(80))
                command.groups[at(random_.between(0, static_cast<int>(command.groups.size()) - 1))].push_back(
                    clock);
        std::erase_if(command.groups, [](const auto& group) { return group.empty(); });
        if (command.groups.empty())
            return;
        if (command.groups.size() > 1 && random_.chance(50))
            overlap(command, clocks);
        d_.clockGroups.push_back(command);
    }

    // Puts some clocks in several groups.
    void overlap(ClockGroups& command, const std::vector<int>& clocks) {
        for (int n = random_.between(1, 3); n > 0; --n) {
            std::vector<int>& group =
                command.groups[at(random_.between(0, static_cast<int>(command.groups.size()) - 1))];
            if (const int clock = random_.of(clocks); std::ranges::find(group, clock) == group.end())
                group.push_back(clock);
        }
    }

    // --- Ports ---

    PortDelay portDelay(bool input, int port, int clock) {
        PortDelay delay;
        delay.input = input;
        delay.port = port;
        delay.clock = clock;
        delay.fall = random_.chance(20);
        delay.value = random_.between(-5, 30) * 100;
        return delay;
    }

    int portClock() {
        if (virtual_ != none && random_.chance(30))
            return virtual_;
        return random_.of(liveClocks());
    }

    // One reference edge: both sides, by one command each, or one side only.
    void reference(PortDelay delay, std::vector<PortDelay>& to) {
        if (delay.clock == none) {
            delay.fall = false;
        } else {
            const bool plain = !d_.clocks[at(delay.clock)].generated;
            delay.sourceIncluded = plain && random_.chance(8);
            delay.networkIncluded = random_.chance(8);
        }
        const int form = random_.between(0, 9);
        if (form < 5) {
            to.push_back(delay);
            return;
        }
        delay.maximum = form < 7 || form == 8;
        to.push_back(delay);
        if (form < 8) {
            delay.maximum = !*delay.maximum;
            delay.value += random_.between(-15, 0) * 100;
            to.push_back(delay);
        }
    }

    void portDelays(bool input, int port) {
        const std::size_t first = d_.portDelays.size();
        const auto clock = [&](int percentWithout) {
            return random_.chance(percentWithout) ? none : portClock();
        };
        reference(portDelay(input, port, clock(shape_.unclockedPercent)), d_.portDelays);
        if (random_.chance(25)) {
            const std::size_t second = d_.portDelays.size();
            reference(portDelay(input, port, clock(shape_.unclockedPercent)), d_.portDelays);
            if (random_.chance(75))
                for (std::size_t i = second; i < d_.portDelays.size(); ++i)
                    d_.portDelays[i].add = true;
        }
        sameFlags(first);
    }

    // All commands of one port include the same latencies.
    void sameFlags(std::size_t first) {
        for (std::size_t i = first; i < d_.portDelays.size(); ++i) {
            PortDelay& d = d_.portDelays[i];
            if (d.clock == none)
                continue;
            d.sourceIncluded = d_.portDelays[first].sourceIncluded && !d_.clocks[at(d.clock)].generated;
            d.networkIncluded = d_.portDelays[first].networkIncluded;
        }
    }

    void inputDelays(int port) {
        if (random_.chance(6))
            d_.caseValues.push_back({port, random_.chance(50)});
        if (random_.chance(85))
            portDelays(true, port);
    }

    void outputDelays(int port) {
        if (random_.chance(85))
            portDelays(false, port);
    }

    // --- The rest ---

    void disables() {
        if (!s_.gates.empty() && random_.chance(20)) {
            const Cell& cell = d_.cells[at(random_.of(s_.gates))];
            const int index = static_cast<int>(&cell - d_.cells.data());
            Disable disable{{Object::Kind::cell, index}, "", ""};
            if (random_.chance(60))
                disable.from = d_.pins[at(cell.pins[0])].name, disable.to = "Z";
            else if (random_.chance(50))
                disable.object = {Object::Kind::pin, random_.of(cell.pins)};
            d_.disables.push_back(disable);
        }
        if (random_.chance(5)) {
            const int cell = random_.of(s_.registers);
            const bool divides = std::ranges::any_of(
                s_.dividers, [&](const Divider& v) { return d_.pins[at(v.clockPin)].cell == cell; });
            if (!divides)
                d_.disables.push_back({{Object::Kind::cell, cell}, "", ""});
        }
        if (random_.chance(4))
            d_.disables.push_back({{Object::Kind::port, random_.of(s_.inputs)}, "", ""});
    }

    void dropOpenLatencies() {
        const bool delays = std::ranges::any_of(d_.exceptions, [](const Exception& e) {
            return e.kind == Exception::Kind::maximumDelay || e.kind == Exception::Kind::minimumDelay;
        });
        for (Latency& l : d_.latencies)
            if (delays && l.kind == Latency::Kind::network)
                for (const PortDelay& p : d_.portDelays)
                    if (!p.input && p.clock == l.clock)
                        l.value = 0;
    }

    Random& random_;
    const Shape& shape_;
    Skeleton& s_;
    Design& d_;
    int virtual_ = none;
    int living_ = 0;
    std::set<int> inverted_;
    bool allIdeal_ = false;
};

// The number of ways from any start of a path to any end. Does not list them.
long countPaths(const Design& design) {
    std::vector<std::vector<int>> next(design.pins.size());
    std::vector<bool> starts(design.pins.size());
    for (const Arc& arc : design.arcs) {
        if (arc.kind == Arc::Kind::wire || arc.kind == Arc::Kind::gate)
            next[at(arc.from)].push_back(arc.to);
        if (arc.kind == Arc::Kind::clockToOutput)
            starts[at(arc.to)] = true;
    }
    std::vector<long> ways(design.pins.size(), -1);
    const std::function<long(int)> count = [&](int pin) {
        long& known = ways[at(pin)];
        if (known < 0) {
            long sum = next[at(pin)].empty() ? 1 : 0;
            for (int to : next[at(pin)])
                sum = std::min(greatestPathCount, sum + count(to));
            known = sum;
        }
        return known;
    };
    long sum = 0;
    for (int pin = 0; pin < static_cast<int>(design.pins.size()); ++pin)
        if (starts[at(pin)] || (design.isPort(pin) && design.pins[at(pin)].direction == Direction::input))
            sum += count(pin);
    return sum;
}

} // namespace

Design generate(std::uint64_t seed, const Shape& shape) {
    constexpr std::uint64_t ofLoops = 0x10095; // so that designs without loops do not depend on the loops
    Random random(seed), loopRandom(seed ^ ofLoops);
    const bool loops = loopRandom.chance(shape.loopPercent);
    for (;;) { // each attempt continues the same random sequence
        Skeleton skeleton = generateNetlist(random, shape);
        if (countPaths(skeleton.design) > shape.maximumPaths)
            continue;
        if (loops && !addLoops(loopRandom, shape, skeleton))
            continue;
        if (Constrainer(random, shape, skeleton).run())
            return std::move(skeleton.design);
    }
}

} // namespace Brute
