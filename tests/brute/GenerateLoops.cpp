#include "GenerateLoops.h"

#include <algorithm>
#include <string>

namespace Brute {

namespace {

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Looper {
public:
    Looper(Random& random, Skeleton& skeleton) : random_(random), s_(skeleton), d_(skeleton.design) {}

    bool run() {
        std::vector<int> clockGates;
        for (int cell = 0; cell < static_cast<int>(d_.cells.size()); ++cell)
            if (d_.cells[at(cell)].type.starts_with("CK"))
                clockGates.push_back(cell);
        bool any = false;
        const bool inClocks = !clockGates.empty() && random_.chance(35);
        if (inClocks)
            for (int n = random_.between(1, 2); n > 0; --n)
                any |= join(random_.of(clockGates), true);
        if (!s_.gates.empty() && (!inClocks || random_.chance(50)))
            for (int n = random_.between(1, 4); n > 0; --n)
                any |= join(random_.of(s_.gates), false);
        if (random_.chance(20))
            any |= join(random_.of(s_.registers), false);
        return any;
    }

private:
    int outputOf(int cell) const {
        for (int pin : d_.cells[at(cell)].pins)
            if (d_.pins[at(pin)].direction == Direction::output)
                return pin;
        return none;
    }

    // Adds an input with an arc to the cell's output, and connects it to an output that the cell's output
    // reaches.
    bool join(int cell, bool clock) {
        const int output = outputOf(cell);
        const int driver = random_.of(drivenBy(output, clock));
        if (driver == output && d_.pins[at(output)].net == none)
            return false; // no fan-out
        const int input = static_cast<int>(d_.pins.size());
        d_.pins.push_back(
            {"L" + std::to_string(d_.cells[at(cell)].pins.size()), cell, Direction::input, none});
        d_.cells[at(cell)].pins.push_back(input);
        d_.arcs.push_back({Arc::Kind::gate, input, output, Edge::any, values()});
        const int net = d_.pins[at(driver)].net;
        d_.nets[at(net)].sinks.push_back(input);
        d_.pins[at(input)].net = net;
        d_.arcs.push_back({Arc::Kind::wire, driver, input, Edge::any, values()});
        return true;
    }

    // Outputs of gates that an output reaches, and the output itself.
    std::vector<int> drivenBy(int output, bool clock) const {
        std::vector<int> open{output}, found{output};
        std::vector<bool> seen(d_.pins.size());
        seen[at(output)] = true;
        while (!open.empty()) {
            const int pin = open.back();
            open.pop_back();
            for (const Arc& arc : d_.arcs) {
                if (arc.from != pin || seen[at(arc.to)] ||
                    (arc.kind != Arc::Kind::wire && arc.kind != Arc::Kind::gate))
                    continue;
                seen[at(arc.to)] = true;
                open.push_back(arc.to);
                const Pin& to = d_.pins[at(arc.to)];
                if (to.direction == Direction::output && to.cell != none && to.net != none &&
                    d_.cells[at(to.cell)].type.starts_with("CK") == clock)
                    found.push_back(arc.to);
            }
        }
        return found;
    }

    Values values() {
        const int value = random_.between(50, 900);
        return {{value, value + random_.between(0, 100), value + 100 + random_.between(0, 100)}};
    }

    Random& random_;
    Skeleton& s_;
    Design& d_;
};

// Whether at most `limit` paths pass no pin twice, and the search takes at most a multiple of that many
// steps.
bool hasFewPaths(const Design& d, int limit) {
    constexpr long walksForAPath = 20;
    std::vector<std::vector<int>> next(d.pins.size());
    std::vector<bool> starts(d.pins.size()), passed(d.pins.size());
    for (const Arc& arc : d.arcs) {
        if (arc.kind == Arc::Kind::wire || arc.kind == Arc::Kind::gate)
            next[at(arc.from)].push_back(arc.to);
        if (arc.kind == Arc::Kind::clockToOutput)
            starts[at(arc.to)] = true;
    }
    struct Step {
        int pin;
        std::size_t next;
    };
    long paths = 0, walks = 0;
    for (int start = 0; start < static_cast<int>(d.pins.size()); ++start) {
        if (!starts[at(start)] && !(d.isPort(start) && d.pins[at(start)].direction == Direction::input))
            continue;
        std::vector<Step> walk{{start, 0}};
        passed[at(start)] = true;
        while (!walk.empty()) {
            Step& step = walk.back();
            const std::vector<int>& to = next[at(step.pin)];
            paths += to.empty() ? 1 : 0;
            if (step.next == to.size()) {
                passed[at(step.pin)] = false;
                walk.pop_back();
            } else if (const int pin = to[step.next++]; !passed[at(pin)]) {
                passed[at(pin)] = true;
                walk.push_back({pin, 0});
                if (++walks > walksForAPath * limit)
                    return false;
            }
        }
    }
    return paths <= limit;
}

} // namespace

bool addLoops(Random& random, const Shape& shape, Skeleton& skeleton) {
    return Looper(random, skeleton).run() && hasFewPaths(skeleton.design, shape.maximumPaths);
}

} // namespace Brute
