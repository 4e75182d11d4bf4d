// Comparing names piece by piece, and sequences by the first place at which they differ.
#include "analysis/PinOrder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Analysis {

namespace {

using Parts = std::array<std::string_view, 3>;

// "instance", "/" and "pin", or the name of a port.
Parts partsOf(const Design::RoutedDesign& design, Design::PinId pin) {
    const Design::Pin& of = design.pins[pin];
    const std::string_view name = design.names[of.name];
    if (of.cell == Base::none)
        return {name};
    return {design.cellName(of.cell), "/", name};
}

constexpr std::uint64_t mixed(std::uint64_t value) {
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
    value = (value ^ value >> 27) * 0x94D049BB133111EBU;
    return value ^ value >> 31;
}

} // namespace

bool isNamedBefore(const Design::RoutedDesign& design, Design::PinId a, Design::PinId b) {
    Parts first = partsOf(design, a), second = partsOf(design, b);
    for (std::size_t i = 0, j = 0;;) {
        while (i < first.size() && first[i].empty())
            ++i;
        while (j < second.size() && second[j].empty())
            ++j;
        if (j == second.size())
            return false;
        if (i == first.size())
            return true;
        const std::size_t common = std::min(first[i].size(), second[j].size());
        if (const int order = first[i].substr(0, common).compare(second[j].substr(0, common)); order != 0)
            return order < 0;
        first[i].remove_prefix(common);
        second[j].remove_prefix(common);
    }
}

SequenceId Sequences::append(SequenceId sequence, Design::PinId pin) {
    const Node& last = nodes_[sequence];
    if (last.pin == pin && sequence != empty)
        return sequence;
    const Node& behind = nodes_[last.jump];
    const bool far = last.length - behind.length == behind.length - nodes_[behind.jump].length;
    const Node node{mixed(last.hash + mixed(std::uint64_t{pin.number()} + 1)), sequence,
                    far ? behind.jump : sequence, last.length + 1, pin};
    const SequenceId appended = nodes_.next();
    nodes_.push_back(node);
    return appended;
}

SequenceId Sequences::beginning(SequenceId sequence, std::uint32_t length) const {
    while (nodes_[sequence].length > length) {
        const Node& node = nodes_[sequence];
        sequence = nodes_[node.jump].length >= length ? node.jump : node.shorter;
    }
    return sequence;
}

bool Sequences::isBefore(SequenceId a, SequenceId b) const {
    const std::uint32_t length = std::min(nodes_[a].length, nodes_[b].length);
    const bool isShorter = nodes_[a].length < nodes_[b].length;
    a = beginning(a, length);
    b = beginning(b, length);
    if (nodes_[a].hash == nodes_[b].hash)
        return isShorter;
    const auto differ = [this](SequenceId x, SequenceId y) { return nodes_[x].hash != nodes_[y].hash; };
    while (differ(nodes_[a].shorter, nodes_[b].shorter)) {
        const bool far = differ(nodes_[a].jump, nodes_[b].jump);
        a = far ? nodes_[a].jump : nodes_[a].shorter;
        b = far ? nodes_[b].jump : nodes_[b].shorter;
    }
    return isNamedBefore(design_, nodes_[a].pin, nodes_[b].pin);
}

} // namespace Analysis
