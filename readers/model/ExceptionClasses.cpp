// The classes that tell paths apart: start points in binary, through points in layers.
#include "Exceptions.h"

#include "Pelko/CPath.h"

#include <algorithm>
#include <bit>
#include <deque>
#include <set>

namespace Readers::Model {

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
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through)
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
            const Arc& arc = network_.arcs()[number];
            if (arc.kind != ArcKind::through || level_[arc.to] > deepest || !seen.insert(arc.to).second)
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

// Nodes that all through groups hold together are one atom, unless one of them reaches another or their order
// counts.
void Exceptions::makeAtoms() {
    std::map<std::uint32_t, std::vector<std::uint64_t>> groupsOf;
    std::vector<std::pair<std::uint32_t, std::size_t>> groups; // variant and place
    std::unordered_map<std::uint32_t, bool> alone;
    std::map<Group, std::uint64_t> sameGroup;
    for (std::uint32_t variant = 0; variant < variants_.size(); ++variant)
        for (std::size_t place = 0; place < variants_[variant].throughs.size(); ++place) {
            const Group& group = variants_[variant].throughs[place];
            const bool ordered = variants_[variant].throughs.size() > 1;
            const auto [known, isNew] = sameGroup.try_emplace(group, sameGroup.size());
            for (const std::uint32_t node : group) {
                if (isNew)
                    groupsOf[node].push_back(known->second);
                alone[node] |= ordered;
            }
            groups.emplace_back(variant, place);
        }
    if (groups.empty())
        return;
    levelNodes();
    std::map<std::vector<std::uint64_t>, Group> together;
    std::unordered_map<std::uint32_t, std::uint32_t> atomOf;
    const auto add = [&](Group nodes) {
        for (const std::uint32_t node : nodes)
            atomOf[node] = static_cast<std::uint32_t>(atoms_.size());
        atoms_.push_back({std::move(nodes), 0, 0});
    };
    for (const auto& [node, named] : groupsOf)
        if (alone[node])
            add({node});
        else
            together[named].push_back(node);
    for (auto& [named, nodes] : together) {
        if (isAntichain(nodes))
            add(std::move(nodes));
        else
            for (const std::uint32_t node : nodes)
                add({node});
    }
    for (Variant& variant : variants_)
        for (const Group& group : variant.throughs) {
            std::set<std::uint32_t> atoms;
            for (const std::uint32_t node : group)
                atoms.insert(atomOf.at(node));
            variant.atoms.emplace_back(atoms.begin(), atoms.end());
        }
}

// A class each while there is room; then atoms of one level, which no path passes two of, share binary
// numbers.
void Exceptions::layAtoms() {
    layers_.clear();
    if (startClasses_ + atoms_.size() <= classLimit) {
        for (Atom& atom : atoms_) {
            atom.layer = static_cast<std::uint32_t>(layers_.size());
            atom.code = 1;
            layers_.push_back({startClasses_ + atom.layer, 1});
        }
        return;
    }
    layAtomsByLevel();
}

void Exceptions::layAtomsByLevel() {
    // Greedy, by the deepest level first: an atom joins the first layer with none that it reaches or that
    // reaches it.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint32_t>> byLevel;
    for (std::uint32_t atom = 0; atom < atoms_.size(); ++atom) {
        std::uint32_t low = none, high = 0;
        for (const std::uint32_t node : atoms_[atom].nodes) {
            low = std::min(low, level_[node]);
            high = std::max(high, level_[node]);
        }
        byLevel[{low, low == high ? none : atom}].push_back(atom);
    }
    unsigned next = startClasses_;
    for (const auto& [level, atoms] : byLevel) {
        const unsigned classes = binaryDigits(atoms.size());
        std::uint64_t code = 0;
        for (const std::uint32_t atom : atoms) {
            atoms_[atom].layer = static_cast<std::uint32_t>(layers_.size());
            atoms_[atom].code = ++code;
        }
        layers_.push_back({next, classes});
        next += classes;
    }
    if (next <= classLimit)
        return;
    std::set<std::uint32_t> lines;
    std::uint32_t first = none;
    for (const Variant& variant : variants_)
        if (!variant.throughs.empty()) {
            first = std::min(first, variant.exception);
            lines.insert(stated(variant.exception).origin.line);
        }
    std::string text = "the exceptions need " + std::to_string(next) + " classes, and there are " +
                       std::to_string(classLimit) + "; most are for the -through points of lines";
    std::size_t named = 0;
    for (const std::uint32_t line : lines) {
        if (named++ == namedLines) {
            text += " and " + std::to_string(lines.size() - namedLines) + " more";
            break;
        }
        text += " " + std::to_string(line);
    }
    throw BadInput(placeOf(first),
                   text + "; expected fewer -through points, or -from and -to in their place");
}

// --- The constrained paths ---

void Exceptions::makeClasses(TimingModel& model) {
    startClasses_ = binaryDigits(startVariants_.size() - 1);
    if (startClasses_ > classLimit)
        throw BadInput({}, "the exceptions name too many different start points");
    layAtoms();
    makeStartClasses(model);
    for (std::uint32_t number = 0; number < layers_.size(); ++number)
        makeLayerClasses(model, layers_[number], number);
}

// A digit of the start points' numbers: opened where the digit is 1, and kept up to every end point that one
// of the variants may end at.
void Exceptions::makeStartClasses(TimingModel& model) {
    if (startClasses_ == 0)
        return;
    bool everywhere = false;
    std::unordered_set<std::uint32_t> endPins;
    for (const Variant& variant : variants_)
        if (!variant.fromPins.empty() || stated(variant.exception).ignoreClockLatency) {
            everywhere |= variant.toPins.empty();
            endPins.insert(variant.toPins.begin(), variant.toPins.end());
        }
    Pelko::CPath::PoleList targets;
    for (const End& end : model.ends())
        if (everywhere || endPins.contains(end.pin))
            targets.push_back(end.pole);
    for (unsigned digit = 0; digit < startClasses_; ++digit) {
        Pelko::CPath::PoleList sources;
        for (const Start& start : model.starts())
            if (const auto number = startNumber_.find(start.pin);
                number != startNumber_.end() && (number->second >> digit & 1U) != 0)
                sources.push_back(start.pole);
        Pelko::CPath::create({sources, targets});
    }
}

// A digit of a layer's through points: paths from where the variants may start through them to where these
// may end.
void Exceptions::makeLayerClasses(TimingModel& model, const Layer& layer, std::uint32_t number) {
    bool anyStart = false, anyEnd = false;
    std::unordered_set<std::uint32_t> startPins, endPins;
    const auto isOf = [&](const Variant& variant) {
        return std::ranges::any_of(variant.atoms, [&](const std::vector<std::uint32_t>& atoms) {
            return std::ranges::any_of(atoms,
                                       [&](std::uint32_t atom) { return atoms_[atom].layer == number; });
        });
    };
    for (const Variant& variant : variants_)
        if (isOf(variant)) {
            anyStart |= variant.fromPins.empty();
            anyEnd |= variant.toPins.empty();
            startPins.insert(variant.fromPins.begin(), variant.fromPins.end());
            endPins.insert(variant.toPins.begin(), variant.toPins.end());
        }
    Pelko::CPath::Objects objects;
    for (const Start& start : model.starts())
        if (anyStart || startPins.contains(start.pin))
            objects.sources.push_back(start.pole);
    for (const End& end : model.ends())
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

bool Exceptions::mayStart(std::uint32_t pin, std::uint64_t classes) const {
    const auto found = startNumber_.find(pin);
    return (classes & ((std::uint64_t{1} << startClasses_) - 1)) ==
           (found == startNumber_.end() ? 0 : found->second);
}

bool Exceptions::isPassed(std::uint32_t atom, std::uint64_t classes) const {
    const Layer& layer = layers_[atoms_[atom].layer];
    const std::uint64_t digits =
        layer.classes == classLimit ? ~std::uint64_t{0} : (std::uint64_t{1} << layer.classes) - 1;
    return (classes >> layer.firstClass & digits) == atoms_[atom].code;
}

} // namespace Readers::Model
