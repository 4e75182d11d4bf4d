#include "GenerateExceptions.h"

#include "Analyse.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace Brute {

namespace {

using Kind = Exception::Kind;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Maker {
public:
    Maker(Random& random, const Shape& shape, Skeleton& skeleton, bool allIdeal)
        : random_(random), shape_(shape), s_(skeleton), d_(skeleton.design),
          clocks_(resolveClocks(d_, options_)), paths_(listPaths(d_, clocks_, options_)) {
        ignoreLatency_ = allIdeal && random_.chance(50);
        setupStart_ = start(), holdStart_ = start();
    }

    void run() {
        if (shape_.exceptions == ExceptionMode::without || paths_.empty())
            return;
        const int wanted = random_.between(shape_.minimumExceptions, shape_.maximumExceptions);
        // Not every attempt makes an exception. If many are asked for, more attempts are needed.
        constexpr int patience = 20;
        const int least = shape_.minimumExceptions > 1 ? shape_.minimumExceptions : 0;
        for (int n = 0; hasRoom() && (n < wanted || isBelow(least)) && n < patience * wanted; ++n)
            tryOne();
        std::ranges::stable_partition(
            d_.exceptions, [](const Exception& e) { return e.kind == Kind::multicycle && !e.setup; });
    }

private:
    bool isBelow(int count) const { return static_cast<int>(d_.exceptions.size()) < count; }
    bool hasRoom() const { return static_cast<int>(d_.exceptions.size()) < shape_.maximumExceptions; }

    std::optional<bool> start() {
        if (random_.chance(50))
            return {};
        return random_.chance(50);
    }

    // --- Objects ---

    Object clock() { return {Object::Kind::clock, random_.of(clocks_.live).index}; }

    // A path of the design, so that most exceptions name something.
    const DataPath& path() { return random_.of(paths_); }

    Object pinOrPort(int pin) const { return {d_.isPort(pin) ? Object::Kind::port : Object::Kind::pin, pin}; }

    // A register by its cell, its clock pin or its output; sometimes one register by all of them.
    Object fromObject() {
        const DataPath& p = path();
        if (random_.chance(30))
            return clock();
        if (p.start != DataPath::Start::clockPin)
            return pinOrPort(p.pins.front());
        if (random_.chance(40))
            return {Object::Kind::cell, d_.pins[at(p.pins.front())].cell};
        return {Object::Kind::pin, p.pins[random_.chance(30) ? 1 : 0]};
    }

    Object toObject() {
        const int pin = path().pins.back();
        if (random_.chance(30))
            return clock();
        if (!d_.isPort(pin) && random_.chance(50))
            return {Object::Kind::cell, d_.pins[at(pin)].cell};
        return pinOrPort(pin);
    }

    // A gate or its driver, by pin, net or cell. If the order does not count, also the start and the end of
    // the path.
    std::optional<Object> throughObject(const DataPath& p, bool ordered) {
        const bool inside = ordered || !shape_.throughEnds;
        std::vector<Object> found;
        for (std::size_t i = 0; i < p.pins.size(); ++i) {
            const int pin = p.pins[i], cell = d_.pins[at(pin)].cell;
            const bool isGate = std::ranges::count(s_.gates, cell) != 0;
            const bool isInside = isGate ? d_.pins[at(pin)].direction == Direction::output
                                         : i < 2 && p.start == DataPath::Start::clockPin &&
                                               shape_.throughEnds; // the output of its register
            if (!isInside && (inside || (i > 0 && i + 1 < p.pins.size() && !isGate)))
                continue;
            found.push_back(pinOrPort(pin));
            if (cell != none)
                found.push_back({Object::Kind::cell, cell});
            if (i + 1 < p.pins.size() && p.nets[i] != none && !d_.isPort(pin)) // a net that every netlist has
                found.push_back({Object::Kind::net, p.nets[i]});
        }
        if (found.empty())
            return {};
        return random_.of(found);
    }

    void addOnce(std::vector<Object>& to, const std::optional<Object>& object) const {
        if (object && std::ranges::find(to, *object) == to.end())
            to.push_back(*object);
    }

    // A pin or a gate at which no path starts or ends, used as -from or -to.
    std::optional<Object> middle() {
        const std::optional<Object> o = throughObject(path(), true);
        const auto isGate = [&](int cell) { return std::ranges::count(s_.gates, cell) != 0; };
        if (o && (o->kind == Object::Kind::pin    ? isGate(d_.pins[at(o->index)].cell)
                  : o->kind == Object::Kind::cell ? isGate(o->index)
                                                  : false))
            return o;
        return {};
    }

    Exception objects(Kind kind) {
        const bool delay = kind == Kind::maximumDelay || kind == Kind::minimumDelay;
        Exception e;
        e.kind = kind;
        if (random_.chance(65))
            for (int n = random_.chance(70) ? 1 : random_.between(2, 3); n > 0; --n)
                addOnce(e.from, fromObject());
        if (random_.chance(55))
            for (int n = random_.chance(70) ? 1 : random_.between(2, 3); n > 0; --n)
                addOnce(e.to, toObject());
        const std::optional<Object> other = !delay && random_.chance(5) ? middle() : std::nullopt;
        const bool asFrom = random_.chance(50);
        if (random_.chance(shape_.throughPercent))
            through(e, other.has_value());
        if (other)
            (asFrom ? e.from : e.to) = {*other};
        return e;
    }

    // Groups in the order of one path. Other objects of a group are from other paths.
    void through(Exception& e, bool ordered) {
        const DataPath& p = path();
        const auto position = [&](const Object& o) {
            for (std::size_t i = 0; i < p.pins.size(); ++i) {
                const Pin& pin = d_.pins[at(p.pins[i])];
                const bool same = o.kind == Object::Kind::cell ? pin.cell == o.index
                                  : o.kind == Object::Kind::net
                                      ? pin.net == o.index && pin.direction == Direction::output
                                      : p.pins[i] == o.index;
                if (same)
                    return i;
            }
            return p.pins.size();
        };
        std::vector<Object> row;
        const int count = random_.chance(75) ? 1 : 2;
        ordered = ordered || count > 1;
        for (int n = 0; n < count; ++n)
            addOnce(row, throughObject(p, ordered));
        std::ranges::sort(row, {}, position);
        for (const Object& o : row)
            e.through.push_back({o});
        if (!e.through.empty() && random_.chance(30)) {
            std::vector<Object> known = row;
            if (const std::optional<Object> other = throughObject(path(), ordered);
                other && std::ranges::find(known, *other) == known.end())
                e.through.front().push_back(*other);
        }
    }

    // --- Exceptions ---

    Kind drawKind() {
        static constexpr std::array all{Kind::falsePath, Kind::multicycle, Kind::maximumDelay,
                                        Kind::minimumDelay};
        int draw = random_.between(0, std::accumulate(shape_.kinds.begin(), shape_.kinds.end(), 0) - 1);
        std::size_t kind = 0;
        while (draw >= shape_.kinds[kind])
            draw -= shape_.kinds[kind++];
        return all[kind];
    }

    // The pins of a register at which paths start or end; empty for any other cell.
    std::vector<int> pointsOf(int cell, bool from) const {
        std::vector<int> points;
        for (int pin : d_.cells[at(cell)].pins)
            if (std::ranges::any_of(d_.checks,
                                    [&](const Check& c) { return (from ? c.clock : c.data) == pin; }))
                points.push_back(pin);
        return points;
    }

    void nameOtherwise(Object& o, const std::vector<int>& pinsOfCell) {
        if (pinsOfCell.empty() || !random_.chance(50))
            return;
        if (o.kind == Object::Kind::pin)
            o = {Object::Kind::cell, d_.pins[at(o.index)].cell};
        else
            o = {Object::Kind::pin, random_.of(pinsOfCell)};
    }

    // Names the same places by other objects: a pin by its cell, a cell by a pin. Points in an order are not
    // changed.
    void nameOtherwise(Exception& e) {
        const auto cellOf = [&](const Object& o) {
            return o.kind == Object::Kind::pin    ? d_.pins[at(o.index)].cell
                   : o.kind == Object::Kind::cell ? o.index
                                                  : none;
        };
        for (const bool from : {true, false})
            for (Object& o : from ? e.from : e.to)
                if (const int cell = cellOf(o); cell != none)
                    nameOtherwise(o, pointsOf(cell, from));
        if (e.through.size() == 1 && shape_.throughEnds)
            for (Object& o : e.through.front())
                if (const int cell = cellOf(o); cell != none)
                    nameOtherwise(o, d_.cells[at(cell)].pins);
        for (std::vector<Object>* list :
             {&e.from, &e.to, e.through.size() == 1 ? &e.through.front() : &e.to}) {
            std::ranges::sort(*list);
            const auto rest = std::ranges::unique(*list);
            list->erase(rest.begin(), rest.end());
        }
    }

    void tryOne() {
        const Kind kind = drawKind();
        Exception e = objects(kind);
        if (shape_.exceptions == ExceptionMode::overlapping && !d_.exceptions.empty() && random_.chance(25)) {
            const Exception& old = random_.of(d_.exceptions); // the same objects again
            if (kind == old.kind)
                e.from = old.from, e.to = old.to, e.through = old.through;
            if (random_.chance(50))
                nameOtherwise(e);
        }
        if (e.from.empty() && e.to.empty() && e.through.empty())
            return;
        const bool overlapping = shape_.exceptions == ExceptionMode::overlapping;
        switch (kind) {
        case Kind::falsePath:
            e.setup = random_.chance(60) ? std::nullopt : std::optional(random_.chance(50));
            break;
        case Kind::multicycle:
            e.setup = random_.chance(35) ? std::nullopt : std::optional(random_.chance(65));
            e.value = e.setup.value_or(true) ? random_.between(1, 4) : random_.between(0, 3);
            e.start = overlapping ? (e.setup.value_or(true) ? setupStart_ : holdStart_) : start();
            break;
        default: {
            const int most = kind == Kind::maximumDelay ? 120 : 30;
            e.value = random_.between(kind == Kind::maximumDelay ? 10 : -20, most) * 100;
            e.ignoreLatency = ignoreLatency_;
        }
        }
        const std::size_t before = d_.exceptions.size();
        d_.exceptions.push_back(e);
        if (kind == Kind::multicycle && e.setup == true && hasRoom() && random_.chance(60)) {
            Exception pair = e; // the usual pair: the hold check goes back
            pair.setup = false;
            pair.value = std::max(0, e.value - 1);
            pair.start = overlapping ? holdStart_ : e.start;
            d_.exceptions.push_back(pair);
        }
        if (!fits(before))
            d_.exceptions.resize(before);
    }

    // Whether the exceptions from the given one on leave nothing open and, if the mode asks for it, name no
    // path that others name.
    bool fits(std::size_t first) {
        if (shape_.exceptions == ExceptionMode::overlapping)
            return leaveNothingOpen(first);
        for (const Naming& n : namings(d_, clocks_, paths_, options_)) {
            bool mine = false, others = false;
            for (int e : n.exceptions)
                (static_cast<std::size_t>(e) >= first ? mine : others) = true;
            if (shape_.exceptions == ExceptionMode::single && mine && others)
                return false;
            for (int e : n.exceptions)
                if (static_cast<std::size_t>(e) >= first && isOpen(d_.exceptions[at(e)], n))
                    return false;
        }
        return true;
    }

    // Judges only the exceptions from the given one on; the earlier ones are set aside meanwhile.
    bool leaveNothingOpen(std::size_t first) {
        const auto isDelay = [](const Exception& e) {
            return e.kind == Kind::maximumDelay || e.kind == Kind::minimumDelay;
        };
        if (std::none_of(d_.exceptions.begin() + static_cast<std::ptrdiff_t>(first), d_.exceptions.end(),
                         isDelay))
            return true;
        std::vector<Exception> all = d_.exceptions;
        d_.exceptions.erase(d_.exceptions.begin(),
                            d_.exceptions.begin() + static_cast<std::ptrdiff_t>(first));
        bool open = false;
        for (const Naming& n : namings(d_, clocks_, paths_, options_))
            for (int e : n.exceptions)
                open = open || isOpen(d_.exceptions[at(e)], n);
        d_.exceptions = std::move(all);
        return !open;
    }

    bool isOpen(const Exception& e, const Naming& n) const {
        if (e.kind == Kind::falsePath || e.kind == Kind::multicycle)
            return false;
        return n.launch.unclocked || n.capture.unclocked;
    }

    Random& random_;
    const Shape& shape_;
    Skeleton& s_;
    Design& d_;
    const Options options_{};
    Clocks clocks_;
    std::vector<DataPath> paths_;
    bool ignoreLatency_ = false;
    std::optional<bool> setupStart_, holdStart_;
};

} // namespace

void generateExceptions(Random& random, const Shape& shape, Skeleton& skeleton, bool allIdeal) {
    Maker(random, shape, skeleton, allIdeal).run();
}

} // namespace Brute
