// The constrained paths that carry the classes: for each class its sources, its bridges and its targets.
#include "exceptions/Encoding.h"

#include "Pelko/CPath.h"

#include <algorithm>
#include <unordered_set>

namespace Exceptions {

using Design::PinId;

namespace {

// The start or end points of several variants: their pins, or all points if a variant names none.
class Union {
public:
    void add(const NamedPins& points) {
        all_ |= points.empty();
        pins_.insert(points.pins.begin(), points.pins.end());
    }
    bool contains(PinId pin) const { return all_ || pins_.contains(pin); }

private:
    bool all_ = false;
    std::unordered_set<PinId> pins_;
};

Pelko::CPath::PoleList endPoles(const Model::TimingModel& model, const Union& ends) {
    Pelko::CPath::PoleList poles;
    for (const Model::End& end : model.ends())
        if (ends.contains(end.pin))
            poles.push_back(end.pole);
    return poles;
}

} // namespace

void Encoding::makePaths(Model::TimingModel& model) const {
    makeStartPaths(model);
    for (const LayerId layer : layers_.ids())
        makeLayerPaths(model, layer);
}

// A digit of the start numbers is opened at the start points whose number has it, and kept up to every end
// point at which one of the variants may end.
void Encoding::makeStartPaths(Model::TimingModel& model) const {
    if (startClasses_ == 0)
        return;
    Union ends;
    for (const Variant& variant : variants_)
        if (!variant.from.points.empty() || constraints_.exceptions[variant.exception].ignoreClockLatency)
            ends.add(variant.to.points);
    const Pelko::CPath::PoleList targets = endPoles(model, ends);
    for (unsigned digit = 0; digit < startClasses_; ++digit) {
        Pelko::CPath::PoleList sources;
        for (const Model::Start& start : model.starts())
            if ((numbers_.numberOf(start).number() >> digit & 1U) != 0)
                sources.push_back(start.pole);
        Pelko::CPath::create({sources, targets});
    }
}

// A digit of a layer's codes: paths from the start points of its variants, through the atoms whose code has
// it, to the end points of its variants.
void Encoding::makeLayerPaths(Model::TimingModel& model, LayerId number) const {
    const Layer& layer = layers_[number];
    const auto isOfLayer = [&](const ThroughPoint& point) { return layerOf_[point.atom] == number; };
    Union starts, ends;
    for (const VariantId variant : variants_.ids())
        if (std::ranges::any_of(atoms_.lists(variant), [&](const ThroughList& list) {
                return std::ranges::any_of(list, isOfLayer);
            })) {
            starts.add(variants_[variant].from.points);
            ends.add(variants_[variant].to.points);
        }
    Pelko::CPath::Objects objects;
    for (const Model::Start& start : model.starts())
        if (starts.contains(start.pin))
            objects.sources.push_back(start.pole);
    objects.targets = endPoles(model, ends);
    for (unsigned digit = 0; digit < layer.classes; ++digit) {
        objects.bridges.clear();
        for (const AtomId atom : layer.atoms)
            if ((codes_[atom] >> digit & 1U) != 0)
                for (const Model::NodeId node : atoms_.nodes(atom))
                    if (Pelko::Pole* pole = model.dataPole(node))
                        objects.bridges.push_back(pole);
        // Without bridges the class would be that of all paths. One without sources is of no path.
        Pelko::CPath::create(objects.bridges.empty() ? Pelko::CPath::Objects{{}, objects.targets} : objects);
    }
}

} // namespace Exceptions
