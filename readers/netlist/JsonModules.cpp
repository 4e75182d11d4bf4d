// Bits by their numbers, and names for them.
#include "readers/netlist/JsonModules.h"

#include <limits>

namespace Readers {

namespace {

constexpr JsonModules::Problem isThereTwice = "is there twice";
constexpr JsonModules::Problem isOutOfRange = "has bits whose indices are out of range";

// Returns false if the numbers are out of range.
bool number(const JsonModules::Item& item, std::size_t count, Numbering& numbering) {
    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    const auto width = static_cast<std::int64_t>(count);
    if (item.offset < -limit || item.offset > limit - width)
        return false;
    const std::int64_t right = item.upto ? item.offset + width - 1 : item.offset;
    numbering = {count > 1, static_cast<std::int32_t>(right), item.upto ? -1 : 1};
    return true;
}

} // namespace

JsonModules::Problem JsonModules::startModule(const std::string& name) {
    const Base::Name added = modules_.names.add(name);
    if (!known_.add(added))
        return isThereTwice;
    modules_.all.emplace_back().name = added;
    cells_.clear();
    ports_.clear();
    netByNumber_ = NumberMap(); // clear() would cost what the largest module had
    nets_ += numbers_.size();
    numbers_.assign(1, 0);
    return {};
}

void JsonModules::finishModule() {
    auto& nets = module().nets;
    for (const ModuleNetId i : nets.ids())
        if (i != constantNet && nets[i].name == noName)
            nets[i] = {modules_.names.add("$" + std::to_string(numbers_[i])), true};
}

ModuleNetId JsonModules::netOf(std::uint64_t number) {
    const auto [at, isNew] = netByNumber_.try_emplace(number, numbers_.next());
    if (isNew) {
        numbers_.push_back(number);
        module().nets.emplace_back();
    }
    return at->second;
}

JsonModules::Problem JsonModules::addPort(const Item& port, const std::vector<ModuleNetId>& bits) {
    Numbering numbering;
    if (!number(port, bits.size(), numbering))
        return isOutOfRange;
    if (!ports_.add(port.name))
        return isThereTwice;
    bits_ += bits.size();
    module().ports.push_back({port.name, port.direction, numbering, module().addBits(bits)});
    return {};
}

JsonModules::Problem JsonModules::addNet(const Item& net, const std::vector<ModuleNetId>& bits) {
    Numbering numbering;
    if (!number(net, bits.size(), numbering))
        return isOutOfRange;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (bits[i] == Base::none || bits[i] == constantNet)
            continue;
        Module::Net& known = module().nets[bits[i]];
        writeBitName(scratch_, modules_.names[net.name], numbering, i);
        if (known.name == noName || isBetterName(scratch_, modules_.names[known.name]))
            known.name = modules_.names.add(scratch_);
    }
    return {};
}

JsonModules::Problem JsonModules::startCell(Base::Name name) {
    pins_.clear();
    directionByPin_.clear();
    directions_.clear();
    firstConnection_ = module().connections.next();
    return cells_.add(name) ? Problem{} : isThereTwice;
}

JsonModules::Problem JsonModules::startConnection(Base::Name pin) {
    return pins_.add(pin) ? Problem{} : isThereTwice;
}

void JsonModules::addConnection(Base::Name pin, const std::vector<ModuleNetId>& bits) {
    bits_ += bits.size();
    module().connections.push_back({pin, Design::Direction::unknown, module().addBits(bits)});
}

JsonModules::Problem JsonModules::addDirection(Base::Name pin, Design::Direction direction) {
    if (!directionByPin_.add(pin, directions_.next()))
        return isThereTwice;
    directions_.push_back({pin, direction});
    return {};
}

// Pins with a direction and without a connection are pins too.
void JsonModules::finishCell(const Item& cell) {
    auto& connections = module().connections;
    for (const PinDirection& known : directions_)
        if (!pins_.contains(known.pin))
            connections.push_back({known.pin, known.direction, {}});
    for (ConnectionId i = firstConnection_; i < connections.next(); ++i)
        if (const DirectionId at = directionByPin_.find(connections[i].name); at != Base::none)
            connections[i].direction = directions_[at].direction;
    module().cells.push_back({cell.name,
                              cell.type,
                              firstConnection_,
                              connections.next().number() - firstConnection_.number(),
                              {cell.place.line, cell.place.column}});
}

} // namespace Readers
