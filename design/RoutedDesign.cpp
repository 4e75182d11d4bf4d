// The tables behind the design's look-ups.
#include "design/RoutedDesign.h"

#include <numeric>

namespace Design {

namespace {

std::uint64_t pinKey(std::uint32_t cell, Base::Name name) {
    return (std::uint64_t{cell} << 32) | static_cast<std::uint32_t>(name);
}

// Numbers 0 .. count-1 of the members grouped by owner: the members of owner o stand in
// members[first[o] .. first[o + 1]), in order.
template <class OwnerOf>
void group(std::size_t owners, std::size_t count, OwnerOf ownerOf, std::vector<std::uint32_t>& first,
           std::vector<std::uint32_t>& members) {
    first.assign(owners + 1, 0);
    for (std::uint32_t member = 0; member < count; ++member)
        if (const std::uint32_t owner = ownerOf(member); owner != Base::none)
            ++first[owner + 1];
    std::partial_sum(first.begin(), first.end(), first.begin());
    members.resize(first.back());
    std::vector<std::uint32_t> next(first.begin(), first.end() - 1);
    for (std::uint32_t member = 0; member < count; ++member)
        if (const std::uint32_t owner = ownerOf(member); owner != Base::none)
            members[next[owner]++] = member;
}

std::span<const std::uint32_t> slice(const std::vector<std::uint32_t>& members,
                                     const std::vector<std::uint32_t>& first, std::uint32_t owner) {
    return std::span(members).subspan(first[owner], first[owner + 1] - first[owner]);
}

} // namespace

void RoutedDesign::reserve(std::size_t count) {
    pins.reserve(count);
    pinByName_.reserve(count);
}

std::uint32_t RoutedDesign::addCell(Base::Name cell, Base::Name type) {
    const auto number = static_cast<std::uint32_t>(cells.size());
    if (!cellByName_.add(cell, number))
        return cellByName_.find(cell);
    cells.push_back({cell, type});
    return number;
}

std::uint32_t RoutedDesign::addPin(std::uint32_t cell, Base::Name pin) {
    const auto number = static_cast<std::uint32_t>(pins.size());
    const auto [place, isNew] = pinByName_.try_emplace(pinKey(cell, pin), number);
    if (isNew)
        pins.push_back({.name = pin, .cell = cell});
    return place->second;
}

std::uint32_t RoutedDesign::addNet(Base::Name net) {
    const auto number = static_cast<std::uint32_t>(nets.size());
    if (!netByName_.add(net, number))
        return netByName_.find(net);
    nets.push_back({net});
    return number;
}

void RoutedDesign::rename(std::uint32_t cell, Base::Name newName) {
    cells[cell].name = newName;
    cellByName_.add(newName, cell);
}

void RoutedDesign::renamePin(std::uint32_t pin, Base::Name newName) {
    pins[pin].name = newName;
    pinByName_.try_emplace(pinKey(pins[pin].cell, newName), pin);
}

void RoutedDesign::index() {
    group(
        cells.size(), pins.size(), [&](std::uint32_t pin) { return pins[pin].cell; }, cellFirst_, cellPins_);
    group(
        nets.size(), pins.size(), [&](std::uint32_t pin) { return pins[pin].net; }, netFirst_, netPins_);
    ports_.clear();
    for (std::uint32_t pin = 0; pin < pins.size(); ++pin)
        if (isPort(pin))
            ports_.push_back(pin);
}

std::uint32_t RoutedDesign::findCell(std::string_view cell) const {
    const std::optional<Base::Name> known = names.find(cell);
    return known ? cellByName_.find(*known) : Base::none;
}

std::uint32_t RoutedDesign::findPin(std::uint32_t cell, std::string_view pin) const {
    if (const std::optional<Base::Name> known = names.find(pin))
        if (const auto found = pinByName_.find(pinKey(cell, *known)); found != pinByName_.end())
            return found->second;
    // A vector of one bit has no index in some files.
    constexpr std::string_view onlyBit = "[0]";
    return pin.size() > onlyBit.size() && pin.ends_with(onlyBit)
               ? findPin(cell, pin.substr(0, pin.size() - onlyBit.size()))
               : Base::none;
}

std::uint32_t RoutedDesign::findPort(std::string_view port) const {
    if (const std::uint32_t pin = findPin(Base::none, port); pin != Base::none)
        return pin;
    // Without a netlist a pad's pin stands for the port, by its full name.
    const std::size_t slash = port.rfind('/');
    if (slash == std::string_view::npos)
        return Base::none;
    const std::uint32_t cell = findCell(port.substr(0, slash));
    const std::uint32_t pin = cell == Base::none ? Base::none : findPin(cell, port.substr(slash + 1));
    return pin != Base::none && isPort(pin) ? pin : Base::none;
}

std::uint32_t RoutedDesign::findNet(std::string_view net) const {
    const std::optional<Base::Name> known = names.find(net);
    return known ? netByName_.find(*known) : Base::none;
}

std::span<const std::uint32_t> RoutedDesign::pinsOfCell(std::uint32_t cell) const {
    return slice(cellPins_, cellFirst_, cell);
}

std::span<const std::uint32_t> RoutedDesign::pinsOfNet(std::uint32_t net) const {
    return slice(netPins_, netFirst_, net);
}

std::string RoutedDesign::pinName(std::uint32_t pin) const {
    const Pin& of = pins[pin];
    std::string text;
    if (of.cell != Base::none)
        text.append(cellName(of.cell)).append(1, '/');
    return text.append(names[of.name]);
}

} // namespace Design
