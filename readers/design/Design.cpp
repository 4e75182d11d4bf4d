// The tables behind the design's look-ups.
#include "Design.h"

#include <numeric>

namespace Readers {

namespace {

std::uint64_t pinKey(std::uint32_t cell, Name name) {
    return (std::uint64_t{cell} << 32) | static_cast<std::uint32_t>(name);
}

// Numbers 0 .. count-1 of the members grouped by owner: the members of owner o stand in
// members[first[o] .. first[o + 1]), in order.
template <class OwnerOf>
void group(std::size_t owners, std::size_t count, OwnerOf ownerOf, std::vector<std::uint32_t>& first,
           std::vector<std::uint32_t>& members) {
    first.assign(owners + 1, 0);
    for (std::uint32_t member = 0; member < count; ++member)
        if (const std::uint32_t owner = ownerOf(member); owner != none)
            ++first[owner + 1];
    std::partial_sum(first.begin(), first.end(), first.begin());
    members.resize(first.back());
    std::vector<std::uint32_t> next(first.begin(), first.end() - 1);
    for (std::uint32_t member = 0; member < count; ++member)
        if (const std::uint32_t owner = ownerOf(member); owner != none)
            members[next[owner]++] = member;
}

std::span<const std::uint32_t> slice(const std::vector<std::uint32_t>& members,
                                     const std::vector<std::uint32_t>& first, std::uint32_t owner) {
    return std::span(members).subspan(first[owner], first[owner + 1] - first[owner]);
}

} // namespace

void Design::reserve(std::size_t count) {
    pins.reserve(count);
    pinByName_.reserve(count);
}

std::uint32_t Design::addCell(Name cell, Name type) {
    const auto number = static_cast<std::uint32_t>(cells.size());
    if (!cellByName_.add(cell, number))
        return cellByName_.find(cell);
    cells.push_back({cell, type});
    return number;
}

std::uint32_t Design::addPin(std::uint32_t cell, Name pin) {
    const auto number = static_cast<std::uint32_t>(pins.size());
    const auto [place, isNew] = pinByName_.try_emplace(pinKey(cell, pin), number);
    if (isNew)
        pins.push_back({.name = pin, .cell = cell});
    return place->second;
}

std::uint32_t Design::addNet(Name net) {
    const auto number = static_cast<std::uint32_t>(nets.size());
    if (!netByName_.add(net, number))
        return netByName_.find(net);
    nets.push_back({net});
    return number;
}

void Design::rename(std::uint32_t cell, Name newName) {
    cells[cell].name = newName;
    cellByName_.add(newName, cell);
}

void Design::renamePin(std::uint32_t pin, Name newName) {
    pins[pin].name = newName;
    pinByName_.try_emplace(pinKey(pins[pin].cell, newName), pin);
}

void Design::index() {
    group(
        cells.size(), pins.size(), [&](std::uint32_t pin) { return pins[pin].cell; }, cellFirst_, cellPins_);
    group(
        nets.size(), pins.size(), [&](std::uint32_t pin) { return pins[pin].net; }, netFirst_, netPins_);
    ports_.clear();
    for (std::uint32_t pin = 0; pin < pins.size(); ++pin)
        if (isPort(pin))
            ports_.push_back(pin);
}

std::uint32_t Design::findCell(std::string_view cell) const {
    const std::optional<Name> known = names.find(cell);
    return known ? cellByName_.find(*known) : none;
}

std::uint32_t Design::findPin(std::uint32_t cell, std::string_view pin) const {
    if (const std::optional<Name> known = names.find(pin))
        if (const auto found = pinByName_.find(pinKey(cell, *known)); found != pinByName_.end())
            return found->second;
    // A vector of one bit has no index in some files.
    constexpr std::string_view onlyBit = "[0]";
    return pin.size() > onlyBit.size() && pin.ends_with(onlyBit)
               ? findPin(cell, pin.substr(0, pin.size() - onlyBit.size()))
               : none;
}

std::uint32_t Design::findPort(std::string_view port) const {
    if (const std::uint32_t pin = findPin(none, port); pin != none)
        return pin;
    // Without a netlist a pad's pin stands for the port, by its full name.
    const std::size_t slash = port.rfind('/');
    if (slash == std::string_view::npos)
        return none;
    const std::uint32_t cell = findCell(port.substr(0, slash));
    const std::uint32_t pin = cell == none ? none : findPin(cell, port.substr(slash + 1));
    return pin != none && isPort(pin) ? pin : none;
}

std::uint32_t Design::findNet(std::string_view net) const {
    const std::optional<Name> known = names.find(net);
    return known ? netByName_.find(*known) : none;
}

std::span<const std::uint32_t> Design::pinsOfCell(std::uint32_t cell) const {
    return slice(cellPins_, cellFirst_, cell);
}

std::span<const std::uint32_t> Design::pinsOfNet(std::uint32_t net) const {
    return slice(netPins_, netFirst_, net);
}

std::string Design::pinName(std::uint32_t pin) const {
    const Pin& of = pins[pin];
    std::string text;
    if (of.cell != none)
        text.append(cellName(of.cell)).append(1, '/');
    return text.append(names[of.name]);
}

} // namespace Readers
