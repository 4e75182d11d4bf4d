// The tables for the design's look-ups.
#include "design/RoutedDesign.h"

namespace Design {

namespace {

std::uint64_t pinKey(CellId cell, Base::Name name) {
    return (std::uint64_t{cell.number()} << 32) | static_cast<std::uint32_t>(name);
}

} // namespace

void RoutedDesign::reserve(std::size_t count) {
    pins.reserve(count);
    pinByName_.reserve(count);
}

CellId RoutedDesign::addCell(Base::Name cell, Base::Name type) {
    const CellId number = cells.next();
    if (!cellByName_.add(cell, number))
        return cellByName_.find(cell);
    cells.push_back({cell, type});
    return number;
}

PinId RoutedDesign::addPin(CellId cell, Base::Name pin) {
    const PinId number = pins.next();
    const auto [place, isNew] = pinByName_.try_emplace(pinKey(cell, pin), number);
    if (isNew)
        pins.push_back({.name = pin, .cell = cell});
    return place->second;
}

NetId RoutedDesign::addNet(Base::Name net) {
    const NetId number = nets.next();
    if (!netByName_.add(net, number))
        return netByName_.find(net);
    nets.push_back({net});
    return number;
}

void RoutedDesign::rename(CellId cell, Base::Name newName) {
    cells[cell].name = newName;
    cellByName_.add(newName, cell);
}

void RoutedDesign::renamePin(PinId pin, Base::Name newName) {
    pins[pin].name = newName;
    pinByName_.try_emplace(pinKey(pins[pin].cell, newName), pin);
}

void RoutedDesign::index() {
    pinsOfCells_.assign(cells.size(), pins.size(), [&](PinId pin) { return pins[pin].cell; });
    pinsOfNets_.assign(nets.size(), pins.size(), [&](PinId pin) { return pins[pin].net; });
    ports_.clear();
    for (const PinId pin : pins.ids())
        if (isPort(pin))
            ports_.push_back(pin);
}

CellId RoutedDesign::findCell(std::string_view cell) const {
    const std::optional<Base::Name> known = names.find(cell);
    return known ? cellByName_.find(*known) : CellId();
}

PinId RoutedDesign::findPin(CellId cell, std::string_view pin) const {
    if (const std::optional<Base::Name> known = names.find(pin))
        if (const auto found = pinByName_.find(pinKey(cell, *known)); found != pinByName_.end())
            return found->second;
    // A vector of one bit has no index in some files.
    constexpr std::string_view onlyBit = "[0]";
    return pin.size() > onlyBit.size() && pin.ends_with(onlyBit)
               ? findPin(cell, pin.substr(0, pin.size() - onlyBit.size()))
               : Base::none;
}

PinId RoutedDesign::findPort(std::string_view port) const {
    if (const PinId pin = findPin(Base::none, port); pin != Base::none)
        return pin;
    // Without a netlist a pad's pin stands for the port, by its full name.
    const std::size_t slash = port.rfind('/');
    if (slash == std::string_view::npos)
        return Base::none;
    const CellId cell = findCell(port.substr(0, slash));
    const PinId pin = cell == Base::none ? Base::none : findPin(cell, port.substr(slash + 1));
    return pin != Base::none && isPort(pin) ? pin : Base::none;
}

NetId RoutedDesign::findNet(std::string_view net) const {
    const std::optional<Base::Name> known = names.find(net);
    return known ? netByName_.find(*known) : Base::none;
}

std::span<const PinId> RoutedDesign::pinsOfCell(CellId cell) const { return pinsOfCells_[cell]; }

std::span<const PinId> RoutedDesign::pinsOfNet(NetId net) const { return pinsOfNets_[net]; }

std::string RoutedDesign::pinName(PinId pin) const {
    const Pin& of = pins[pin];
    std::string text;
    if (of.cell != Base::none)
        text.append(cellName(of.cell)).append(1, '/');
    return text.append(names[of.name]);
}

} // namespace Design
