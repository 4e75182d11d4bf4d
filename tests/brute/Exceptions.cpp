#include "Exceptions.h"

#include <algorithm>

namespace Brute {

namespace {

std::size_t at(int index) { return static_cast<std::size_t>(index); }

// One way to read one end of an exception: an object and the pin that it names, or a -through instead. A
// register's output can be read both ways.
struct End {
    std::optional<Object> object;
    int pin = none;
    std::optional<Object> through;
};

bool checksReferTo(const Design& d, int pin) {
    return std::ranges::any_of(d.checks, [&](const Check& c) { return c.clock == pin; });
}
bool isChecked(const Design& d, int pin) {
    return std::ranges::any_of(d.checks, [&](const Check& c) { return c.data == pin; });
}

std::vector<int> clockPins(const Design& d, int cell) {
    std::vector<int> pins;
    for (int pin : d.cells[at(cell)].pins)
        if (checksReferTo(d, pin))
            pins.push_back(pin);
    return pins;
}

std::vector<End> fromEnds(const Design& d, const Clocks& clocks, const std::vector<Object>& objects) {
    std::vector<End> ends;
    for (const Object& o : objects) {
        if (o.kind == Object::Kind::clock || o.kind == Object::Kind::port) {
            ends.push_back({o, o.index, {}});
        } else if (o.kind == Object::Kind::cell) {
            std::vector<int> pins = clockPins(d, o.index);
            if (!pins.empty()) // the pins on which a clock is defined, too
                std::ranges::copy_if(d.cells[at(o.index)].pins, std::back_inserter(pins),
                                     [&](int pin) { return clocks.sources.contains(pin); });
            for (int pin : pins)
                ends.push_back({o, pin, {}});
            if (pins.empty())
                ends.push_back({{}, none, o});
        } else if (checksReferTo(d, o.index) || clocks.sources.contains(o.index)) {
            ends.push_back({o, o.index, {}});
        } else {
            const std::vector<int> pins = clockPins(d, d.pins[at(o.index)].cell);
            if (d.pins[at(o.index)].direction == Direction::output && !pins.empty())
                ends.push_back({o, pins.front(), o});
            else
                ends.push_back({{}, none, o});
        }
    }
    return ends.empty() ? std::vector<End>{End{}} : ends;
}

std::vector<End> toEnds(const Design& d, const std::vector<Object>& objects) {
    std::vector<End> ends;
    for (const Object& o : objects) {
        if (o.kind == Object::Kind::clock || o.kind == Object::Kind::port) {
            ends.push_back({o, o.index, {}});
        } else if (o.kind == Object::Kind::cell) {
            bool found = false;
            for (int pin : d.cells[at(o.index)].pins)
                if (isChecked(d, pin)) {
                    ends.push_back({o, pin, {}});
                    found = true;
                }
            if (!found)
                ends.push_back({{}, none, o});
        } else if (isChecked(d, o.index)) {
            ends.push_back({o, o.index, {}});
        } else {
            ends.push_back({{}, none, o});
        }
    }
    return ends.empty() ? std::vector<End>{End{}} : ends;
}

std::vector<std::vector<Object>> throughChoices(const std::vector<std::vector<Object>>& groups) {
    std::vector<std::vector<Object>> choices{{}};
    for (const std::vector<Object>& group : groups) {
        std::vector<std::vector<Object>> longer;
        for (const std::vector<Object>& choice : choices)
            for (const Object& o : group) {
                longer.push_back(choice);
                longer.back().push_back(o);
            }
        choices = std::move(longer);
    }
    return choices;
}

// Places along a path: pin i is at 2i, the net from it to the next pin at 2i + 1.
bool standsAt(const Design& d, const Object& o, const DataPath& path, std::size_t place) {
    const std::size_t i = place / 2;
    if (place % 2 == 1)
        return o.kind == Object::Kind::net && path.nets[i] == o.index;
    if (o.kind == Object::Kind::cell)
        return d.pins[at(path.pins[i])].cell == o.index;
    return (o.kind == Object::Kind::pin || o.kind == Object::Kind::port) && path.pins[i] == o.index;
}

bool passes(const Design& d, const std::vector<Object>& through, const DataPath& path) {
    std::size_t place = 0;
    for (const Object& o : through) {
        while (place < 2 * path.pins.size() - 1 && !standsAt(d, o, path, place))
            ++place;
        if (place == 2 * path.pins.size() - 1)
            return false;
        ++place;
    }
    return true;
}

} // namespace

int Atom::rank() const {
    const auto is = [](const std::optional<Object>& o, bool clock) {
        return o && (o->kind == Object::Kind::clock) == clock;
    };
    int rank = 0; // one bit each, the most important first
    for (bool has : {is(from, false), is(to, false), !through.empty(), is(from, true), is(to, true)})
        rank = 2 * rank + (has ? 1 : 0);
    return rank;
}

std::vector<Atom> atoms(const Design& design, const Clocks& clocks) {
    std::vector<Atom> result;
    for (int i = 0; i < static_cast<int>(design.exceptions.size()); ++i) {
        const Exception& e = design.exceptions[at(i)];
        for (const End& from : fromEnds(design, clocks, e.from))
            for (const std::vector<Object>& middle : throughChoices(e.through))
                for (const End& to : toEnds(design, e.to)) {
                    Atom atom{i, from.object, to.object, middle, from.pin, to.pin};
                    if (from.through)
                        atom.through.insert(atom.through.begin(), *from.through);
                    if (to.through)
                        atom.through.push_back(*to.through);
                    result.push_back(std::move(atom));
                }
    }
    return result;
}

bool matches(const Design& design, const Clocks& clocks, const Atom& atom, const DataPath& path,
             const Launch& launch, const Capture& capture) {
    const auto endMatches = [&](const std::optional<Object>& o, int named, int pin, int clock) {
        if (!o)
            return true;
        if (o->kind == Object::Kind::clock)
            return clock != none && clocks.liveOf[at(o->index)] == clock;
        return named == pin;
    };
    if (!endMatches(atom.from, atom.start, path.pins.front(), launch.clock) ||
        !endMatches(atom.to, atom.end, path.pins.back(), capture.clock))
        return false;
    return passes(design, atom.through, path);
}

} // namespace Brute
