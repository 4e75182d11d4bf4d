#include "exceptions/Encoding.h"

#include <algorithm>
#include <bit>
#include <map>
#include <utility>

namespace Exceptions {

namespace {

// How many lines a refusal names.
constexpr std::size_t namedLines = 20;

// "line 3", "lines 3, 7", or with more than a few "lines 3, 7, ..., 41 and 2 more".
std::string listed(const std::vector<Design::Origin>& origins) {
    std::string text = origins.size() == 1 ? "line" : "lines";
    for (std::size_t i = 0; i < origins.size(); ++i) {
        if (i == namedLines)
            return text + " and " + std::to_string(origins.size() - namedLines) + " more";
        text += (i == 0 ? " " : ", ") + std::to_string(origins[i].line);
    }
    return text;
}

} // namespace

Encoding::Encoding(const Design::RoutedDesign& design, const Model::Network& network,
                   const Design::Constraints& constraints, const Variants& variants)
    : design_(design), network_(network), constraints_(constraints), variants_(variants),
      numbers_(design, network, constraints, variants),
      startClasses_(static_cast<unsigned>(std::bit_width(numbers_.starts() - 1))), atoms_(network, variants) {
    if (startClasses_ + atoms_.size() <= ClassSet::most)
        layApart();
    else
        layTogether();
    if (!isShared())
        for (Layer& layer : layers_)
            for (const AtomId atom : layer.atoms)
                layer.atomOfCode[codes_[atom]] = atom;
}

// One layer and one class for each atom.
void Encoding::layApart() {
    for (const AtomId atom : atoms_.ids()) {
        layerOf_.push_back(layers_.next());
        codes_.push_back(1);
        layers_.push_back({startClasses_ + atom.number(), 1, {atom}, {}});
    }
}

void Encoding::layTogether() {
    atoms_.splitByLevel();
    together_.emplace(design_, network_, atoms_.levels(), pointsToLay());
    layerOf_.resize(atoms_.size());
    codes_.resize(atoms_.size());
    unsigned next = startClasses_;
    for (const ThroughLayers::Layer& layer : together_->layers()) {
        for (const AtomId atom : layer.points) {
            layerOf_[atom] = layers_.next();
            codes_[atom] = together_->code(atom);
        }
        layers_.push_back({next, layer.classes, layer.points, {}});
        sortOnce(layers_.back().atoms);
        next += layer.classes;
    }
    if (next > ClassSet::most)
        refuse(next);
}

ThroughLayers::Points Encoding::pointsToLay() const {
    ThroughLayers::Points points(atoms_.size());
    for (const AtomId atom : atoms_.ids())
        points[atom].nodes = atoms_.nodes(atom);
    for (const VariantId number : variants_.ids()) {
        const NamedPins& ends = variants_[number].to.points;
        for (const ThroughList& list : atoms_.lists(number))
            for (const ThroughPoint& named : list) {
                ThroughLayers::Point& point = points[named.atom];
                point.anyEnd |= ends.empty();
                point.endPins.insert(point.endPins.end(), ends.pins.begin(), ends.pins.end());
            }
    }
    for (ThroughLayers::Point& point : points) {
        if (point.anyEnd)
            point.endPins.clear();
        sortOnce(point.endPins);
    }
    return points;
}

// --- Too many classes ---

// The commands that name one of the atoms, by file and line.
std::vector<Design::Origin> Encoding::linesThrough(const std::vector<AtomId>& atoms) const {
    const auto isNamed = [&](const ThroughPoint& point) { return isIn(atoms, point.atom); };
    std::map<std::pair<Design::FileId, std::uint32_t>, Design::Origin> origins;
    for (const VariantId number : variants_.ids())
        for (const ThroughList& list : atoms_.lists(number))
            if (std::ranges::any_of(list, isNamed)) {
                const Design::Origin& origin = constraints_.exceptions[variants_[number].exception].origin;
                origins.try_emplace({origin.file, origin.line}, origin);
            }
    std::vector<Design::Origin> lines;
    for (const auto& [place, origin] : origins)
        lines.push_back(origin);
    return lines;
}

// Names the lines that take the most classes: those through the points that paths to one end point may pass,
// or, if these are not known, through the points of the largest layer.
void Encoding::refuse(unsigned classes) const {
    const Design::PinId end = together_->busiestEnd();
    const auto& layers = together_->layers();
    const auto largest = std::ranges::max_element(
        layers, {}, [](const ThroughLayers::Layer& layer) { return layer.points.size(); });
    std::vector<AtomId> points = end == Base::none ? largest->points : together_->pointsAt(end);
    sortOnce(points);
    const std::vector<Design::Origin> origins = linesThrough(points);
    const std::string place =
        end == Base::none ? std::string("at one depth") : "before '" + design_.pinName(end) + "'";
    throw Base::BadInput(
        constraints_.place(origins.front()),
        "the exceptions need " + std::to_string(classes) + " classes of paths, and there are " +
            std::to_string(ClassSet::most) + ": " + std::to_string(startClasses_) +
            " for start points, the others for -through points. Most of these, " +
            std::to_string(points.size()) + ", lie " + place + ": those of " + listed(origins) +
            "; expected fewer -through points: -to with the end points that are meant, one point "
            "for a stage in place of one for each cell in it, or -from and -to");
}

// --- Reading classes ---

StartNumber Encoding::startOf(ClassSet classes) const {
    return StartNumber(static_cast<std::uint32_t>(classes.number(0, startClasses_)));
}

bool Encoding::mayStart(const Model::Start& start, ClassSet classes) const {
    return startOf(classes) == numbers_.numberOf(start);
}

Key Encoding::keyOf(const ClockEdges& edges, Design::PinId endPin, ClassSet classes) const {
    return {edges, startOf(classes), numbers_.numberOf(endPin), isShared() ? endPin : Design::PinId(),
            classes.from(startClasses_)};
}

std::vector<AtomId> Encoding::passedAtoms(const Key& key) const {
    std::vector<AtomId> passed;
    if (key.throughs.isEmpty())
        return passed;
    const auto codeIn = [&](const Layer& layer) {
        return key.throughs.number(layer.firstClass, layer.classes);
    };
    if (isShared()) {
        for (const AtomId atom : together_->pointsAt(key.endPin))
            if (codeIn(layers_[layerOf_[atom]]) == codes_[atom])
                passed.push_back(atom);
        return passed;
    }
    for (const Layer& layer : layers_)
        if (const auto found = layer.atomOfCode.find(codeIn(layer)); found != layer.atomOfCode.end())
            passed.push_back(found->second);
    std::ranges::sort(passed);
    return passed;
}

} // namespace Exceptions
