// How the exceptions are encoded in the engine's classes.
//
// The engine keeps apart the paths of at most 64 classes. A class here does not stand for an exception but
// for what tells paths apart:
//
//   start points     by their numbers (PointNumbers.h) in binary, one class for each digit, from class 0 on
//   through points   as atoms (Atoms.h). Each has a class of its own while there is room; otherwise they are
//                    put in layers and numbered in binary too (ThroughLayers.h)
//
// Clocks and end points need no class: a sweep has one pair of clock edges, and an end point knows itself. So
// the classes of an arrival, with its clock edges and its end point, say which exceptions cover its paths.
//
// Invariant: no path passes two atoms of one layer, so the classes of a layer spell the code of the one atom
// that the path passed, or 0. If atoms share codes, the end point decides which of them is meant.
//
// It costs what its parts cost; after that reading a class set costs a look at each layer.
#pragma once

#include "exceptions/Atoms.h"
#include "exceptions/ClassSet.h"
#include "exceptions/Key.h"
#include "exceptions/PointNumbers.h"
#include "exceptions/ThroughLayers.h"

#include <optional>
#include <unordered_map>
#include <vector>

namespace Exceptions {

class Encoding {
public:
    // BadInput: the exceptions need more classes than the engine has.
    Encoding(const Design::RoutedDesign& design, const Model::Network& network,
             const Design::Constraints& constraints, const Variants& variants);

    // Creates the constrained paths that carry the classes, in the order of the classes.
    void makePaths(Model::TimingModel& model) const;

    const PointNumbers& numbers() const { return numbers_; }
    const Atoms& atoms() const { return atoms_; }

    // Whether paths with these classes may start there.
    bool mayStart(const Model::Start& start, ClassSet classes) const;
    // What is known of the paths with these classes that arrive at an end point.
    Key keyOf(const ClockEdges& edges, Design::PinId endPin, ClassSet classes) const;
    // The atoms that paths of the key passed, sorted.
    std::vector<AtomId> passedAtoms(const Key& key) const;

private:
    struct Layer {
        unsigned firstClass = 0, classes = 0;
        std::vector<AtomId> atoms;                   // sorted
        std::unordered_map<Code, AtomId> atomOfCode; // unless atoms share codes
    };

    void layApart();
    void layTogether();
    bool isShared() const { return together_ && together_->isShared(); }
    ThroughLayers::Points pointsToLay() const;
    void makeStartPaths(Model::TimingModel& model) const;
    void makeLayerPaths(Model::TimingModel& model, LayerId number) const;
    StartNumber startOf(ClassSet classes) const;

    [[noreturn]] void refuse(unsigned classes) const;
    std::vector<Design::Origin> linesThrough(const std::vector<AtomId>& atoms) const;

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const Design::Constraints& constraints_;
    const Variants& variants_;
    PointNumbers numbers_;
    unsigned startClasses_; // classes 0 to startClasses_ - 1 spell the start number
    Atoms atoms_;
    Base::IndexVector<LayerId, Layer> layers_;
    Base::IndexVector<AtomId, LayerId> layerOf_;
    Base::IndexVector<AtomId, Code> codes_;
    std::optional<ThroughLayers> together_; // if atoms share layers
};

} // namespace Exceptions
