// The classes that tell paths apart: start points in binary, through points in layers.
#include "exceptions/Exceptions.h"

#include "Pelko/CPath.h"

#include <algorithm>
#include <bit>
#include <deque>
#include <set>
#include <tuple>

namespace Exceptions {

namespace {

constexpr unsigned classLimit = 64;

// How many lines a refusal names.
constexpr std::size_t namedLines = 20;

unsigned binaryDigits(std::size_t count) { return static_cast<unsigned>(std::bit_width(count)); }

} // namespace

// --- Through points ---

// The longest way to each node.
void Exceptions::levelNodes() {
    if (!level_.empty())
        return;
    level_.assign(network_.size(), 0);
    for (const std::uint32_t node : network_.order())
        for (const std::uint32_t number : network_.out(node))
            if (const Model::Arc& arc = network_.arcs()[number]; arc.kind == Model::ArcKind::through)
                level_[arc.to] = std::max(level_[arc.to], level_[node] + 1);
}

// Whether a path may pass the first and then the second group.
bool Exceptions::reaches(const Group& from, const Group& to) const {
    std::uint32_t deepest = 0;
    for (const std::uint32_t node : to)
        deepest = std::max(deepest, level_[node]);
    std::unordered_set<std::uint32_t> seen;
    std::deque<std::uint32_t> next(from.begin(), from.end());
    while (!next.empty()) {
        const std::uint32_t node = next.front();
        next.pop_front();
        for (const std::uint32_t number : network_.out(node)) {
            const Model::Arc& arc = network_.arcs()[number];
            if (arc.kind != Model::ArcKind::through || level_[arc.to] > deepest ||
                !seen.insert(arc.to).second)
                continue;
            if (std::ranges::binary_search(to, arc.to))
                return true;
            next.push_back(arc.to);
        }
    }
    return false;
}

bool Exceptions::isAntichain(const Group& group) const {
    const auto sameLevel = [&](std::uint32_t node) { return level_[node] == level_[group.front()]; };
    return std::ranges::all_of(group, sameLevel) || !reaches(group, group);
}

// Of the nodes in loops whose order with others counts, the pins of the same loop among these that a path can
// still pass behind them. On a path that passes two of them, the second lies ahead of the first and the first
// not ahead of the second.
std::unordered_map<std::uint32_t, Exceptions::Group>
Exceptions::loopPointsAhead(const std::vector<std::uint32_t>& ordered) const {
    std::map<std::uint32_t, std::vector<std::uint32_t>> ofLoops;
    for (const std::uint32_t node : ordered)
        if (const std::uint32_t loop = network_.loopOf(node);
            loop != Base::none && !network_.isRepeated(node))
            ofLoops[loop].push_back(node);
    std::unordered_map<std::uint32_t, Group> ahead;
    for (const auto& [loop, nodes] : ofLoops) {
        std::set<std::uint32_t> points;
        for (const std::uint32_t node : nodes)
            points.insert(network_.originalOf(node));
        for (const std::uint32_t point : points) {
            std::unordered_set<std::uint32_t> leads;
            std::vector<std::uint32_t> open;
            const auto add = [&](std::uint32_t node) {
                if (leads.insert(node).second)
                    open.push_back(node);
            };
            network_.eachCopy(point, add);
            while (!open.empty()) {
                const std::uint32_t node = open.back();
                open.pop_back();
                for (const std::uint32_t number : network_.in(node))
                    if (const Model::Arc& arc = network_.arcs()[number];
                        arc.kind == Model::ArcKind::through && network_.loopOf(arc.from) == loop)
                        add(arc.from);
            }
            for (const std::uint32_t node : nodes)
                if (network_.originalOf(node) != point && leads.contains(node))
                    ahead[node].push_back(point);
        }
    }
    return ahead;
}

// Nodes that all through lists name together, and by the same kinds of objects, are one atom, unless one of
// them reaches another or their order counts. By which object the only list of a node names it makes no
// difference. The copies that a loop has of one pin are one point all the same, if no path passes two of them
// and the same points lie ahead of them.
void Exceptions::makeAtoms() {
    std::map<std::uint32_t, std::vector<Point>> namedIn; // by node: the numbers of the lists, as atoms
    std::unordered_map<std::uint32_t, bool> alone;
    std::map<Mentions, std::uint32_t> lists;
    for (const Variant& variant : variants_)
        for (const Mentions& list : variant.throughs) {
            const auto [known, isNew] = lists.try_emplace(list, static_cast<std::uint32_t>(lists.size()));
            for (const Mention& mention : list) {
                if (isNew)
                    namedIn[mention.node].push_back({known->second, mention.by, mention.clockPin});
                alone[mention.node] |= variant.throughs.size() > 1;
            }
        }
    if (lists.empty())
        return;
    levelNodes();
    std::map<std::vector<Point>, Group> together;
    std::unordered_map<std::uint32_t, std::uint32_t> atomOf;
    std::unordered_set<std::uint32_t> plain; // nodes of one list only
    const auto add = [&](Group nodes) {
        for (const std::uint32_t node : nodes)
            atomOf[node] = static_cast<std::uint32_t>(atoms_.size());
        atoms_.push_back({std::move(nodes), 0, 0});
    };
    std::vector<std::uint32_t> ordered;
    for (const auto& [node, named] : namedIn)
        if (alone[node])
            ordered.push_back(node);
    const std::unordered_map<std::uint32_t, Group> ahead = loopPointsAhead(ordered);
    std::map<std::tuple<std::uint32_t, std::vector<Point>, Group>, std::uint32_t> points;
    const auto addPoint = [&](std::uint32_t node, const std::vector<Point>& named) {
        const auto found = ahead.find(node);
        const auto [place, isNew] =
            points.try_emplace({network_.isRepeated(node) ? node : network_.originalOf(node), named,
                                found == ahead.end() ? Group() : found->second},
                               static_cast<std::uint32_t>(atoms_.size()));
        if (isNew)
            return add({node});
        atomOf[node] = place->second;
        atoms_[place->second].nodes.push_back(node);
    };
    for (auto& [node, named] : namedIn) {
        if (alone[node]) {
            addPoint(node, named);
            continue;
        }
        if (named.front().atom == named.back().atom) {
            plain.insert(node);
            named = {{named.front().atom}};
        }
        together[named].push_back(node);
    }
    for (auto& [named, nodes] : together) {
        if (isAntichain(nodes))
            add(std::move(nodes));
        else
            for (const std::uint32_t node : nodes)
                addPoint(node, named);
    }
    for (Variant& variant : variants_)
        for (const Mentions& list : variant.throughs) {
            std::set<Point> named;
            for (const Mention& mention : list)
                named.insert(plain.contains(mention.node)
                                 ? Point{atomOf.at(mention.node)}
                                 : Point{atomOf.at(mention.node), mention.by, mention.clockPin});
            variant.atoms.emplace_back(named.begin(), named.end());
        }
}

// A class each while there is room; then atoms share.
void Exceptions::layAtoms() {
    layers_.clear();
    together_.reset();
    if (startClasses_ + atoms_.size() > classLimit)
        layAtomsTogether();
    else
        for (Atom& atom : atoms_) {
            atom.layer = static_cast<std::uint32_t>(layers_.size());
            atom.code = 1;
            layers_.push_back({startClasses_ + atom.layer, 1, {}});
        }
    if (!together_ || !together_->isShared())
        for (std::uint32_t atom = 0; atom < atoms_.size(); ++atom)
            layers_[atoms_[atom].layer].atomOfCode[atoms_[atom].code] = atom;
    indexAtoms();
}

// The variants that begin with an atom and name no start and no end point.
void Exceptions::indexAtoms() {
    unpinnedThrough_.assign(atoms_.size(), {});
    for (std::uint32_t number = 0; number < variants_.size(); ++number)
        if (const Variant& variant = variants_[number];
            variant.from.empty() && variant.to.empty() && !variant.atoms.empty())
            for (const Point& point : variant.atoms.front())
                if (auto& own = unpinnedThrough_[point.atom]; own.empty() || own.back() != number)
                    own.push_back(number);
}

// Every atom of several levels becomes one a level.
void Exceptions::splitByLevel() {
    std::vector<Atom> whole = std::move(atoms_);
    std::vector<std::vector<std::uint32_t>> parts(whole.size());
    atoms_.clear();
    for (std::uint32_t atom = 0; atom < whole.size(); ++atom) {
        std::map<std::uint32_t, Group> byLevel;
        for (const std::uint32_t node : whole[atom].nodes)
            byLevel[level_[node]].push_back(node);
        for (auto& [level, nodes] : byLevel) {
            parts[atom].push_back(static_cast<std::uint32_t>(atoms_.size()));
            atoms_.push_back({std::move(nodes), 0, 0});
        }
    }
    for (Variant& variant : variants_)
        for (std::vector<Point>& list : variant.atoms) {
            std::vector<Point> split;
            for (const Point& point : list)
                for (const std::uint32_t part : parts[point.atom])
                    split.push_back({part, point.by, point.clockPin});
            std::ranges::sort(split);
            list = std::move(split);
        }
}

std::vector<ThroughLayers::Point> Exceptions::pointsOfAtoms() const {
    std::vector<ThroughLayers::Point> points(atoms_.size());
    for (std::size_t atom = 0; atom < atoms_.size(); ++atom)
        points[atom].nodes = atoms_[atom].nodes;
    for (const Variant& variant : variants_)
        for (const std::vector<Point>& list : variant.atoms)
            for (const Point& named : list) {
                ThroughLayers::Point& point = points[named.atom];
                point.anyEnd |= variant.to.empty();
                point.endPins.insert(point.endPins.end(), variant.to.pins.begin(), variant.to.pins.end());
            }
    for (ThroughLayers::Point& point : points) {
        if (point.anyEnd)
            point.endPins.clear();
        std::ranges::sort(point.endPins);
        const auto rest = std::ranges::unique(point.endPins);
        point.endPins.erase(rest.begin(), rest.end());
    }
    return points;
}

void Exceptions::layAtomsTogether() {
    splitByLevel();
    together_.emplace(design_, network_, level_, pointsOfAtoms());
    unsigned next = startClasses_;
    for (const ThroughLayers::Layer& layer : together_->layers()) {
        for (const std::uint32_t atom : layer.points) {
            atoms_[atom].layer = static_cast<std::uint32_t>(layers_.size());
            atoms_[atom].code = together_->codes()[atom];
        }
        layers_.push_back({next, layer.classes, {}});
        next += layer.classes;
    }
    if (next > classLimit)
        refuse(next);
}

// Names the lines that take the most: those through the points that paths to one end point may pass, or,
// where that is not known, through those of the largest layer.
void Exceptions::refuse(unsigned classes) const {
    const std::uint32_t end = together_->busiestEnd();
    const auto& layers = together_->layers();
    const auto largest = std::ranges::max_element(
        layers, {}, [](const ThroughLayers::Layer& layer) { return layer.points.size(); });
    const std::vector<std::uint32_t>& points =
        end == Base::none ? largest->points : together_->pointsAt(end); // in order
    const auto isOfGroup = [&](const Point& point) { return std::ranges::binary_search(points, point.atom); };
    std::map<std::pair<std::uint32_t, std::uint32_t>, Design::Origin> origins;
    for (const Variant& variant : variants_)
        for (const std::vector<Point>& list : variant.atoms)
            if (std::ranges::any_of(list, isOfGroup)) {
                const Design::Origin& origin = stated(variant.exception).origin;
                origins.try_emplace({origin.file, origin.line}, origin);
            }
    std::string text =
        "the exceptions need " + std::to_string(classes) + " classes of paths, and there are " +
        std::to_string(classLimit) + ": " + std::to_string(startClasses_) +
        " for start points, the others for -through points. Most of these, " + std::to_string(points.size()) +
        ", lie " + (end == Base::none ? "at one depth" : "before '" + design_.pinName(end) + "'") +
        ": those of " + (origins.size() == 1 ? "line" : "lines");
    std::size_t named = 0;
    for (const auto& [place, origin] : origins) {
        if (named++ == namedLines) {
            text += " and " + std::to_string(origins.size() - namedLines) + " more";
            break;
        }
        text += (named == 1 ? " " : ", ") + std::to_string(origin.line);
    }
    throw Base::BadInput(
        constraints_.place(origins.begin()->second),
        text + "; expected fewer -through points: -to with the end points that are meant, one point "
               "for a stage in place of one for each cell in it, or -from and -to");
}

// --- The constrained paths ---

void Exceptions::makeClasses(Model::TimingModel& model) {
    startClasses_ = binaryDigits(startVariants_.size() - 1); // pins have 32 bits, so no more than those
    layAtoms();
    makeStartClasses(model);
    for (std::uint32_t number = 0; number < layers_.size(); ++number)
        makeLayerClasses(model, layers_[number], number);
}

// A digit of the start points' numbers: opened where the digit is 1, and kept up to every end point that one
// of the variants may end at.
void Exceptions::makeStartClasses(Model::TimingModel& model) {
    if (startClasses_ == 0)
        return;
    bool everywhere = false;
    std::unordered_set<std::uint32_t> endPins;
    for (const Variant& variant : variants_)
        if (!variant.from.empty() || stated(variant.exception).ignoreClockLatency) {
            everywhere |= variant.to.empty();
            endPins.insert(variant.to.pins.begin(), variant.to.pins.end());
        }
    Pelko::CPath::PoleList targets;
    for (const Model::End& end : model.ends())
        if (everywhere || endPins.contains(end.pin))
            targets.push_back(end.pole);
    for (unsigned digit = 0; digit < startClasses_; ++digit) {
        Pelko::CPath::PoleList sources;
        for (const Model::Start& start : model.starts())
            if ((numberOf(start) >> digit & 1U) != 0)
                sources.push_back(start.pole);
        Pelko::CPath::create({sources, targets});
    }
}

// A digit of a layer's through points: paths from where the variants may start through them to where these
// may end.
void Exceptions::makeLayerClasses(Model::TimingModel& model, const Layer& layer, std::uint32_t number) {
    bool anyStart = false, anyEnd = false;
    std::unordered_set<std::uint32_t> startPins, endPins;
    const auto isOf = [&](const Variant& variant) {
        return std::ranges::any_of(variant.atoms, [&](const std::vector<Point>& list) {
            return std::ranges::any_of(
                list, [&](const Point& point) { return atoms_[point.atom].layer == number; });
        });
    };
    for (const Variant& variant : variants_)
        if (isOf(variant)) {
            anyStart |= variant.from.empty();
            anyEnd |= variant.to.empty();
            startPins.insert(variant.from.pins.begin(), variant.from.pins.end());
            endPins.insert(variant.to.pins.begin(), variant.to.pins.end());
        }
    Pelko::CPath::Objects objects;
    for (const Model::Start& start : model.starts())
        if (anyStart || startPins.contains(start.pin))
            objects.sources.push_back(start.pole);
    for (const Model::End& end : model.ends())
        if (anyEnd || endPins.contains(end.pin))
            objects.targets.push_back(end.pole);
    for (unsigned digit = 0; digit < layer.classes; ++digit) {
        objects.bridges.clear();
        for (const Atom& atom : atoms_)
            if (atom.layer == number && (atom.code >> digit & 1U) != 0)
                for (const std::uint32_t node : atom.nodes)
                    if (Pelko::Pole* pole = model.dataPole(node))
                        objects.bridges.push_back(pole);
        // Without bridges the class would be of all paths: one without sources is of none.
        Pelko::CPath::create(objects.bridges.empty() ? Pelko::CPath::Objects{{}, objects.targets} : objects);
    }
}

bool Exceptions::mayStart(const Model::Start& start, std::uint64_t classes) const {
    return (classes & ((std::uint64_t{1} << startClasses_) - 1)) == numberOf(start);
}

std::uint64_t Exceptions::codeIn(const Layer& layer, std::uint64_t classes) const {
    const std::uint64_t digits =
        layer.classes == classLimit ? ~std::uint64_t{0} : (std::uint64_t{1} << layer.classes) - 1;
    return classes >> layer.firstClass & digits;
}

// In order.
std::vector<std::uint32_t> Exceptions::passedAtoms(const Key& key) const {
    std::vector<std::uint32_t> passed;
    if (key.atoms == 0)
        return passed;
    if (together_ && together_->isShared()) {
        for (const std::uint32_t atom : together_->pointsAt(key.endPin))
            if (codeIn(layers_[atoms_[atom].layer], key.atoms) == atoms_[atom].code)
                passed.push_back(atom);
        return passed;
    }
    for (const Layer& layer : layers_)
        if (const auto found = layer.atomOfCode.find(codeIn(layer, key.atoms));
            found != layer.atomOfCode.end())
            passed.push_back(found->second);
    std::ranges::sort(passed);
    return passed;
}

} // namespace Exceptions
