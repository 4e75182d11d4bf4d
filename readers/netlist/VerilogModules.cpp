// Arrays and ".*" make a module anew: its cells and their connections are copied, with what they stand for.
#include "readers/netlist/VerilogModules.h"

#include "readers/netlist/VerilogWords.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Readers {

void VerilogModules::finish() {
    for (const ModuleId number : modules_.all.ids()) {
        Module& module = modules_.all[number];
        const Facts& facts = facts_[number];
        module.isBox = facts.isPrimitive || facts.isCell;
        if (!module.isBox && isModel(number)) {
            module.isComputed = !facts.isSpecified && !module.behaviour;
            module.isBox = true;
        }
        if (!facts.rest.arrays.empty() || !facts.rest.wildcards.empty())
            expand(number);
    }
    errors_.finish();
}

// Gates only are not a model: a netlist consists of them.
bool VerilogModules::isModel(ModuleId number) const {
    const auto isPart = [&](const Module::Cell& cell) { // a gate or an expression has a keyword for its type
        const ModuleId type = byName_.find(cell.type);
        return type == Base::none ? findWord(modules_.names[cell.type]).has_value()
                                  : facts_[type].isPrimitive;
    };
    const Module& module = modules_.all[number];
    if (!facts_[number].isSpecified && !module.behaviour && (module.expressions.empty() || !isSmall(module)))
        return false;
    return std::ranges::all_of(module.cells, isPart);
}

// Whether all its inputs can be joined to all its outputs.
bool VerilogModules::isSmall(const Module& module) {
    constexpr std::uint64_t mostArcs = 4'096;
    std::uint64_t inputs = 0, outputs = 0;
    for (const Module::Port& port : module.ports) {
        inputs += port.direction == Design::Direction::output ? 0 : port.bits.count;
        outputs += port.direction == Design::Direction::input ? 0 : port.bits.count;
    }
    return inputs * outputs <= mostArcs;
}

// --- Arrays ---

void VerilogModules::expand(ModuleId number) {
    const Module module = std::move(modules_.all[number]);
    Module& made = modules_.all[number];
    made = module;
    made.cells.clear();
    made.connections.clear();
    made.expressions.clear();
    const VerilogModule::Rest& rest = facts_[number].rest;
    auto array = rest.arrays.begin();
    auto wildcard = rest.wildcards.begin();
    for (const ModuleCellId i : module.cells.ids()) {
        const Module::Cell& cell = module.cells[i];
        const bool isArray = array != rest.arrays.end() && array->cell == i;
        const bool isWildcard = wildcard != rest.wildcards.end() && wildcard->cell == i;
        try {
            if (isArray && isWildcard)
                throw Base::BadInput(place(cell), "'.*' at the array " + quoted(cell.name) +
                                                      " is not supported: expected connections by name");
            if (std::ranges::binary_search(module.expressions, i))
                made.expressions.push_back(made.cells.next());
            if (isArray)
                addCells(made, module, cell, array->range);
            else
                addWildcard(made, module, cell,
                            isWildcard ? wildcard->firstConnection : cell.connection(cell.connectionCount));
        } catch (const Base::BadInput& error) {
            errors_.add(error);
        }
        array += isArray ? 1 : 0;
        wildcard += isWildcard ? 1 : 0;
    }
}

// The first cell takes the leftmost part of a connection that is as wide as the ports of all cells; one that
// is as wide as a port goes to every cell.
void VerilogModules::addCells(Module& made, const Module& module, const Module::Cell& cell,
                              const VerilogRange& range) {
    constexpr std::uint64_t most = std::uint64_t{1} << 22;
    const std::uint32_t count = range.width();
    std::vector<std::uint32_t> widths;
    for (std::uint32_t i = 0; i < cell.connectionCount; ++i)
        widths.push_back(widthOf(module, cell, i, count));
    added_ += count;
    for (const std::uint32_t width : widths)
        added_ += std::uint64_t{width} * count;
    if (added_ > most)
        throw Base::BadInput(place(cell), "with the array " + quoted(cell.name) + " of module " +
                                              quoted(module.name) + " the file has more than " +
                                              std::to_string(most) + " cells and pins in arrays");
    const std::int32_t step = range.left < range.right ? 1 : -1;
    std::string name;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int64_t index = range.left + static_cast<std::int64_t>(i) * step;
        name.assign(modules_.names[cell.name]).append("[").append(std::to_string(index)).append("]");
        Module::Cell one = cell;
        one.name = modules_.names.add(name);
        one.firstConnection = made.connections.next();
        one.connectionCount = 0;
        made.cells.push_back(one);
        for (std::uint32_t at = 0; at < cell.connectionCount; ++at) {
            const Module::Connection& connection = module.connections[cell.connection(at)];
            const bool isShared = connection.bits.count <= widths[at];
            addConnection(made, module, connection, isShared ? 0 : (count - 1 - i) * widths[at],
                          isShared ? connection.bits.count : widths[at]);
        }
    }
}

// How many bits of the connection each cell takes. Without the module of the cell, this is known only from
// the connection.
std::uint32_t VerilogModules::widthOf(const Module& module, const Module::Cell& cell, std::uint32_t position,
                                      std::uint32_t cells) {
    const Module::Connection& connection = module.connections[cell.connection(position)];
    const std::uint32_t width = connection.bits.count;
    const Module::Port* port = portOf(cell, connection, position);
    if (!port)
        return width % cells == 0 && width != 0 ? width / cells : width;
    const std::uint64_t whole = std::uint64_t{port->bits.count} * cells;
    if (width == 0 || width == port->bits.count)
        return width;
    if (width != whole)
        throw Base::BadInput(
            place(cell), "the array " + quoted(cell.name) + " has " + std::to_string(cells) + " cells with " +
                             std::to_string(port->bits.count) + " bits at port " + quoted(port->name) +
                             ": expected a connection of " + std::to_string(port->bits.count) + " or " +
                             std::to_string(whole) + " bits, found " + std::to_string(width));
    return port->bits.count;
}

const Module::Port* VerilogModules::portOf(const Module::Cell& cell, const Module::Connection& connection,
                                           std::uint32_t position) const {
    const ModuleId type = byName_.find(cell.type);
    if (type == Base::none)
        return nullptr;
    const auto& ports = modules_.all[type].ports;
    if (connection.name == noName)
        return position < ports.size() ? &ports[ModulePortId(position)] : nullptr;
    const auto found = std::ranges::find(ports, connection.name, &Module::Port::name);
    return found == ports.end() ? nullptr : &*found;
}

void VerilogModules::addConnection(Module& made, const Module& module, const Module::Connection& connection,
                                   std::uint32_t first, std::uint32_t count) {
    Module::Connection part = connection;
    part.bits = {made.bits.next(), count};
    for (std::uint32_t i = first; i < first + count; ++i) {
        const BitId bit = connection.bits[i];
        if (module.isInverted(bit))
            made.inverted.push_back(made.bits.next());
        made.bits.push_back(module.bits[bit]);
    }
    made.connections.push_back(part);
    ++made.cells.back().connectionCount;
}

// --- Connections by the names of nets ---

// Keeps the connections up to firstByName, and of the others those to ports.
void VerilogModules::addWildcard(Module& made, const Module& module, Module::Cell cell,
                                 ConnectionId firstByName) {
    const ConnectionId end = cell.connection(cell.connectionCount);
    if (firstByName != end && byName_.find(cell.type) == Base::none)
        throw Base::BadInput(place(cell), "'.*' at cell " + quoted(cell.name) + ": module " +
                                              quoted(cell.type) +
                                              " is not defined: expected connections by name");
    const ConnectionId first = cell.firstConnection;
    cell.firstConnection = made.connections.next();
    for (ConnectionId i = first; i < end; ++i)
        if (i < firstByName || portOf(cell, module.connections[i], 0))
            made.connections.push_back(module.connections[i]);
    cell.connectionCount = made.connections.next().number() - cell.firstConnection.number();
    made.cells.push_back(cell);
}

} // namespace Readers
