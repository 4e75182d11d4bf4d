// Lists the exceptions that name a path, and finds the one that governs it.
//
// An exception is split into atoms: one for each combination of one -from object, one object of each -through
// and one -to object, as they are written. A cell names its clock pins (-from) or its checked pins (-to), and
// a register's output the register through it. An object that is no start or end point is read as a -through.
// If several atoms have the same objects, kind and side, only that of the last command counts.
#pragma once

#include "Paths.h"

namespace Brute {

struct Atom {
    int exception = none;
    std::optional<Object> from, to;
    std::vector<Object> through;
    int start = none, end = none; // the pins that from and to name

    int rank() const; // greater is more specific
};

std::vector<Atom> atoms(const Design& design, const Clocks& clocks);

bool matches(const Design& design, const Clocks& clocks, const Atom& atom, const DataPath& path,
             const Launch& launch, const Capture& capture);

// The exception of the kind that governs one side of a path, or none. `atoms` are those that match it. Of two
// commands of equal rank the one with the smaller tightness governs.
template <class Tightness>
int governing(const Design& design, const std::vector<const Atom*>& matching, Exception::Kind kind,
              bool setup, Tightness tightness) {
    std::vector<const Atom*> left;
    for (const Atom* atom : matching) {
        const Exception& e = design.exceptions[static_cast<std::size_t>(atom->exception)];
        if (e.kind == kind && e.setup.value_or(setup) == setup)
            left.push_back(atom);
    }
    const auto flagged = [&](const Atom* atom) {
        return kind == Exception::Kind::multicycle &&
               design.exceptions[static_cast<std::size_t>(atom->exception)].setup.has_value();
    };
    const auto same = [&](const Atom* a, const Atom* b) {
        return flagged(a) == flagged(b) && a->from == b->from && a->to == b->to && a->through == b->through;
    };
    const Atom* best = nullptr;
    for (const Atom* atom : left) {
        bool last = true;
        for (const Atom* other : left)
            last = last && !(other->exception > atom->exception && same(atom, other));
        if (!last)
            continue;
        if (!best || atom->rank() > best->rank()) {
            best = atom;
        } else if (atom->rank() == best->rank()) {
            if (flagged(atom) != flagged(best))
                best = flagged(atom) ? atom : best;
            else if (tightness(atom->exception) < tightness(best->exception))
                best = atom;
        }
    }
    return best ? best->exception : none;
}

} // namespace Brute
