// The through points of the exceptions, as atoms: sets of nodes that all through lists hold together or not
// at all. A path needs to remember only which atoms it passed.
//
//   set_false_path -through {g/Z h/Z}
//   set_multicycle_path 2 -through {h/Z k/Z}
//     three atoms: g/Z, h/Z and k/Z. With only the first line g/Z and h/Z are one atom.
//
// Nodes are one atom only if no path passes two of them and if their order does not matter. Their order
// matters if they are named by an exception with several -through lists. The copies that a loop has of one
// pin are one atom even then, if no path passes two of them and the same points lie ahead of them.
//
// An atom is named by an object in each list (ThroughPoint), because a later exception replaces an earlier
// one on the same objects only. By which object a node is named makes no difference if only one list has it.
//
// It costs n log n for n nodes named, and for each group of nodes on several levels a walk (Levels.h).
#pragma once

#include "exceptions/Levels.h"
#include "exceptions/Variant.h"

#include <compare>
#include <optional>
#include <vector>

namespace Exceptions {

// An atom, and the object that names it in a list.
struct ThroughPoint {
    AtomId atom;
    By by = By::pin;
    Base::Name clockPin{};

    auto operator<=>(const ThroughPoint&) const = default;
};
// A -through list: a path passes any of the points. Sorted.
using ThroughList = std::vector<ThroughPoint>;

class Atoms {
public:
    Atoms(const Model::Network& network, const Variants& variants);

    std::size_t size() const { return nodes_.size(); }
    auto ids() const { return nodes_.ids(); }
    const Nodes& nodes(AtomId atom) const { return nodes_[atom]; }
    // The through lists of a variant, in order.
    const std::vector<ThroughList>& lists(VariantId variant) const { return lists_[variant]; }
    // Whether a path may pass the first atom and then the second. Costs a walk.
    bool reaches(AtomId before, AtomId after) const { return levels_->reaches(nodes(before), nodes(after)); }

    // REQUIRES: there are atoms.
    const Levels& levels() const { return *levels_; }
    // Makes of each atom one atom per level of its nodes. The lists name all of these.
    void splitByLevel();

private:
    class Builder;

    std::optional<Levels> levels_; // if there are atoms
    Base::IndexVector<AtomId, Nodes> nodes_;
    Base::IndexVector<VariantId, std::vector<ThroughList>> lists_;
};

} // namespace Exceptions
