// Walking the hierarchy, with a stack of its own, and joining nets.
//
// Every net of every instance is an entry of a union-find forest whose roots are the first of their trees;
// entry 0 is the constant. A child's net that is connected takes its parent's entry, so that entries are
// merged only if one module joins several of its ports. The result is measured before it is made: the time
// is linear in it, and a small file cannot ask for more than the limits below.
#include "readers/netlist/Flatten.h"

#include "readers/netlist/Hierarchy.h"

#include <algorithm>
#include <unordered_map>

namespace Readers {

namespace {

constexpr std::size_t mostClashes = 10; // that are reported one by one

// Into Flattener::parents_: a net of an instance.
using EntryId = Base::Index<struct EntryTag>;
constexpr EntryId constantEntry(0U);

class Flattener {
public:
    Flattener(Modules& modules, const Hierarchy& hierarchy, Base::Diagnostics& diagnostics)
        : modules_(modules), names_(modules.names), hierarchy_(hierarchy), diagnostics_(diagnostics),
          portTables_(modules.all.size()) {}

    Design::Netlist run(ModuleId top);

private:
    // An instance that is being walked.
    struct Frame {
        ModuleId module;
        ModuleCellId cell;      // the next one
        std::size_t prefix = 0; // how long the path is without it
        Base::IndexVector<ModuleNetId, EntryId> nets;
    };
    // The outermost module knows a net best; there the shortest name counts, and of those the first.
    struct NetName {
        Base::Name name = noName;
        bool generated = false;
        std::uint32_t depth = 0;
    };
    using PortTable = std::unordered_map<Base::Name, ModulePortId>;

    // --- The forest ---

    EntryId addEntry() {
        parents_.push_back(parents_.next());
        best_.emplace_back();
        return parents_.back();
    }
    EntryId root(EntryId entry) {
        while (parents_[entry] != entry)
            entry = parents_[entry] = parents_[parents_[entry]];
        return entry;
    }
    void join(EntryId a, EntryId b);
    void offer(EntryId entry, const Module::Net& net, std::size_t depth);
    bool isBetter(const NetName& a, const NetName& b) const;

    // --- The walk ---

    void walk(ModuleId top);
    Frame frameOf(ModuleId module) const {
        return {module, ModuleCellId(0U), path_.size(),
                Base::IndexVector<ModuleNetId, EntryId>(modules_.all[module].nets.size())};
    }
    void enter(const Frame& above, const Module::Cell& cell, ModuleId type);
    void bind(const Frame& above, const Module::Cell& cell, const Module::Connection& connection,
              ModuleId type, std::uint32_t position, Frame& frame);
    void nameNets(Frame& frame, std::size_t depth);
    void addPorts(const Frame& frame);
    void addCell(const Frame& frame, const Module::Cell& cell, ModuleId type);
    void addPins(const Frame& frame, const Module::Connection& connection, const Module::Port* port);
    void addPin(Base::Name name, Design::Direction direction, const Numbering& numbering, std::size_t bit,
                Design::Netlist::NetId net);

    // Until numberNets(), a net of the result is the number of its entry.
    static Design::Netlist::NetId netAt(const Frame& frame, ModuleNetId net) {
        return net == Base::none ? Design::Netlist::NetId()
                                 : Design::Netlist::NetId(frame.nets[net].number());
    }
    template <class Action>
    void tryTo(Action action);
    Base::Name full(Base::Name name);
    Base::Place place(const Module::Cell& cell) const { return cell.position.in(modules_.file); }
    ModulePortId findPort(ModuleId type, const Module::Cell& cell, const Module::Connection& connection,
                          std::uint32_t position);
    void checkWidth(const Module::Cell& cell, const Module::Connection& connection, const Module::Port& port);
    const PortTable& portsOf(ModuleId module);

    // --- The end ---

    void numberNets();
    template <class Items>
    void tellClashes(const Items& items, const char* what);
    void tellBehaviour();
    void tellInversions();

    Modules& modules_;
    Base::Names& names_;
    const Hierarchy& hierarchy_;
    Base::Diagnostics& diagnostics_;
    Design::Netlist result_;
    Base::IndexVector<EntryId, EntryId> parents_;
    Base::IndexVector<EntryId, NetName> best_; // of a root: its best name so far
    Base::IndexVector<ModuleId, PortTable> portTables_;
    std::string path_; // of the instance at hand, with a final '/'
    Base::ErrorList errors_;
    std::vector<Base::Diagnostic> errorsOfCells_; // each once, however often its module is instantiated
    // Connections of inverted nets: to pins of cells, and to ports of modules, where the inversion is lost.
    std::uint64_t lostInversions_ = 0;
    std::string firstLost_, firstInverted_;
    Base::Place firstLostPlace_, firstInvertedPlace_;
    std::string scratch_;
};

// --- The forest ---

bool Flattener::isBetter(const NetName& a, const NetName& b) const {
    if (a.name == noName || b.name == noName)
        return b.name == noName;
    if (a.generated != b.generated)
        return b.generated;
    return a.depth != b.depth ? a.depth < b.depth : isBetterName(names_[a.name], names_[b.name]);
}

void Flattener::join(EntryId a, EntryId b) {
    a = root(a);
    b = root(b);
    if (a == b)
        return;
    const auto [first, second] = std::minmax(a, b);
    parents_[second] = first;
    if (isBetter(best_[second], best_[first]))
        best_[first] = best_[second];
}

// The full name is made only if it can be the better one.
void Flattener::offer(EntryId entry, const Module::Net& net, std::size_t depth) {
    entry = root(entry);
    NetName& best = best_[entry];
    if (entry == constantEntry || (best.name != noName && net.generated && !best.generated))
        return;
    if (best.name != noName && net.generated == best.generated && depth > best.depth)
        return;
    const NetName offered{full(net.name), net.generated, static_cast<std::uint32_t>(depth)};
    if (isBetter(offered, best))
        best = offered;
}

Base::Name Flattener::full(Base::Name name) {
    if (path_.empty())
        return name;
    scratch_.assign(path_).append(names_[name]);
    return names_.add(scratch_);
}

// --- The walk ---

Design::Netlist Flattener::run(ModuleId top) {
    result_.top = modules_.nameOf(modules_.all[top]);
    const HierarchySize size = hierarchy_.sizeOf(top);
    tellBehaviour();
    result_.cells.reserve(size.cells);
    parents_.reserve(size.nets + 1);
    best_.reserve(size.nets + 1);
    addEntry();
    walk(top);
    errors_.finish();
    numberNets();
    tellInversions();
    tellClashes(result_.ports, "ports");
    tellClashes(result_.cells, "cells");
    tellClashes(result_.nets, "nets");
    result_.names = std::move(names_);
    return std::move(result_);
}

void Flattener::walk(ModuleId top) {
    std::vector<Frame> frames;
    frames.push_back(frameOf(top));
    nameNets(frames.back(), 0);
    addPorts(frames.back());
    while (!frames.empty()) {
        Frame& frame = frames.back();
        const Module& module = modules_.all[frame.module];
        if (frame.cell == module.cells.next()) {
            path_.resize(frame.prefix);
            frames.pop_back();
            continue;
        }
        const Module::Cell& cell = module.cells[frame.cell++];
        const ModuleId type = hierarchy_.typeOf(cell);
        if (hierarchy_.isLeaf(type)) {
            addCell(frame, cell, type);
            continue;
        }
        Frame child = frameOf(type);
        for (std::uint32_t i = 0; i < cell.connectionCount; ++i)
            tryTo([&] { bind(frame, cell, module.connections[cell.connection(i)], type, i, child); });
        path_.append(names_[cell.name]).append(1, '/');
        nameNets(child, frames.size());
        frames.push_back(std::move(child));
    }
}

// An error of a cell comes once, however often its module is instantiated.
template <class Action>
void Flattener::tryTo(Action action) {
    try {
        action();
    } catch (const Base::BadInput& error) {
        if (std::ranges::find(errorsOfCells_, error.diagnostic()) != errorsOfCells_.end())
            return;
        errorsOfCells_.push_back(error.diagnostic());
        errors_.add(error);
    }
}

// The child's nets at the port become the parent's that are connected to it.
void Flattener::bind(const Frame& above, const Module::Cell& cell, const Module::Connection& connection,
                     ModuleId type, std::uint32_t position, Frame& frame) {
    const Module& parent = modules_.all[above.module];
    const Module& child = modules_.all[type];
    const ModulePortId found = findPort(type, cell, connection, position);
    const Module::Port& port = child.ports[found];
    checkWidth(cell, connection, port);
    for (std::uint32_t i = 0; i < std::min(connection.bits.count, port.bits.count); ++i) {
        if (parent.isInverted(connection.bits[i]) && lostInversions_++ == 0) {
            firstLost_ = path_ + std::string(names_[cell.name]) + "/" + std::string(names_[port.name]);
            firstLostPlace_ = place(cell);
        }
        const ModuleNetId outer = parent.bits[connection.bits[i]];
        const ModuleNetId inner = child.bits[port.bits[i]];
        if (outer == Base::none || inner == Base::none)
            continue;
        EntryId& entry = frame.nets[inner];
        if (inner == constantNet)
            join(constantEntry, above.nets[outer]);
        else if (entry == Base::none)
            entry = above.nets[outer];
        else
            join(entry, above.nets[outer]);
    }
}

void Flattener::nameNets(Frame& frame, std::size_t depth) {
    frame.nets[constantNet] = constantEntry;
    const auto& nets = modules_.all[frame.module].nets;
    for (const ModuleNetId i : nets.ids()) {
        if (i == constantNet)
            continue;
        if (frame.nets[i] == Base::none)
            frame.nets[i] = addEntry();
        offer(frame.nets[i], nets[i], depth);
    }
}

void Flattener::addPorts(const Frame& frame) {
    const Module& module = modules_.all[frame.module];
    for (const Module::Port& port : module.ports) {
        if (port.bits.count == 0)
            result_.ports.push_back({port.name, port.direction, Base::none});
        for (std::uint32_t i = 0; i < port.bits.count; ++i) {
            writeBitName(scratch_, names_[port.name], port.numbering, i);
            result_.ports.push_back(
                {names_.add(scratch_), port.direction, netAt(frame, module.bits[port.bits[i]])});
        }
    }
}

void Flattener::addCell(const Frame& frame, const Module::Cell& cell, ModuleId type) {
    const Design::Netlist::PinId first = result_.pins.next();
    const Module& module = modules_.all[frame.module];
    const std::size_t invertedBefore = result_.invertedPins.size();
    for (std::uint32_t i = 0; i < cell.connectionCount; ++i)
        tryTo([&] {
            const Module::Connection& connection = module.connections[cell.connection(i)];
            const ModulePortId found = findPort(type, cell, connection, i);
            const Module::Port* port = found == Base::none ? nullptr : &modules_.all[type].ports[found];
            if (port)
                checkWidth(cell, connection, *port);
            addPins(frame, connection, port);
        });
    if (invertedBefore == 0 && !result_.invertedPins.empty()) {
        firstInverted_ = path_ + std::string(names_[cell.name]) + "/" +
                         std::string(names_[result_.pins[result_.invertedPins.front()].name]);
        firstInvertedPlace_ = place(cell);
    }
    if ((type != Base::none && modules_.all[type].isComputed) ||
        std::ranges::binary_search(module.expressions,
                                   ModuleCellId(static_cast<std::uint32_t>(&cell - module.cells.data()))))
        result_.expressionCells.push_back(result_.cells.next());
    result_.cells.push_back(
        {full(cell.name), cell.type, first, result_.pins.next().number() - first.number()});
}

// A pin is as wide as its port or, without a port, as its connection.
void Flattener::addPins(const Frame& frame, const Module::Connection& connection, const Module::Port* port) {
    const BitRange bits = connection.bits;
    const Base::Name name = port ? port->name : connection.name;
    const std::size_t width = std::max(port ? port->bits.count : bits.count, 1U);
    const Numbering numbering = port ? port->numbering : Numbering::positions(width);
    const Design::Direction direction =
        port && connection.direction == Design::Direction::unknown ? port->direction : connection.direction;
    for (std::uint32_t i = 0; i < width; ++i) {
        const Module& module = modules_.all[frame.module];
        const ModuleNetId net = i < bits.count ? module.bits[bits[i]] : ModuleNetId();
        if (i < bits.count && module.isInverted(bits[i]))
            result_.invertedPins.push_back(result_.pins.next());
        addPin(name, direction, numbering, i, netAt(frame, net));
    }
}

void Flattener::addPin(Base::Name name, Design::Direction direction, const Numbering& numbering,
                       std::size_t bit, Design::Netlist::NetId net) {
    if (numbering.vector) {
        writeBitName(scratch_, names_[name], numbering, bit);
        name = names_.add(scratch_);
    }
    result_.pins.push_back({name, direction, net});
}

// --- Ports of instances ---

const Flattener::PortTable& Flattener::portsOf(ModuleId module) {
    PortTable& table = portTables_[module];
    const auto& ports = modules_.all[module].ports;
    if (table.empty())
        for (const ModulePortId port : ports.ids())
            table.emplace(ports[port].name, port);
    return table;
}

// none for a pin of a cell whose type the file does not define.
ModulePortId Flattener::findPort(ModuleId type, const Module::Cell& cell,
                                 const Module::Connection& connection, std::uint32_t position) {
    const auto quoted = [&](Base::Name name) { return "'" + std::string(names_[name]) + "'"; };
    if (connection.name == noName) {
        if (type == Base::none)
            throw Base::BadInput(place(cell), "expected connections by name at cell " + quoted(cell.name) +
                                                  ": module " + quoted(cell.type) + " is not defined");
        if (position >= modules_.all[type].ports.size())
            throw Base::BadInput(place(cell), "cell " + quoted(cell.name) + " has " +
                                                  std::to_string(cell.connectionCount) +
                                                  " connections, module " + quoted(cell.type) + " has " +
                                                  std::to_string(modules_.all[type].ports.size()) + " ports");
        return ModulePortId(position);
    }
    if (type == Base::none)
        return Base::none;
    const PortTable& ports = portsOf(type);
    const auto found = ports.find(connection.name);
    if (found != ports.end())
        return found->second;
    throw Base::BadInput(place(cell), "cell " + quoted(cell.name) + " connects " + quoted(connection.name) +
                                          ", which is not a port of module " + quoted(cell.type));
}

void Flattener::checkWidth(const Module::Cell& cell, const Module::Connection& connection,
                           const Module::Port& port) {
    if (connection.bits.count == port.bits.count || connection.bits.count == 0)
        return;
    diagnostics_.warning(place(cell), "port '" + std::string(names_[port.name]) + "' of cell '" +
                                          std::string(names_[cell.name]) + "' has " +
                                          std::to_string(port.bits.count) + " bits, its connection has " +
                                          std::to_string(connection.bits.count));
}

// --- The end ---

// Roots become nets, in the order of the entries.
void Flattener::numberNets() {
    using NetId = Design::Netlist::NetId;
    Base::IndexVector<EntryId, NetId> numbers(parents_.size());
    for (const EntryId entry : parents_.ids())
        if (entry != constantEntry && parents_[entry] == entry) {
            numbers[entry] = result_.nets.next();
            result_.nets.push_back(best_[entry].name);
        }
    const auto number = [&](auto& item) {
        if (item.net != Base::none)
            item.net = numbers[root(EntryId(item.net.number()))];
    };
    std::for_each(result_.ports.begin(), result_.ports.end(), number);
    std::for_each(result_.pins.begin(), result_.pins.end(), number);
}

Base::Name nameOf(Base::Name net) { return net; }
template <class Item>
Base::Name nameOf(const Item& item) {
    return item.name;
}

template <class Items>
void Flattener::tellClashes(const Items& items, const char* what) {
    Base::NameSet known;
    std::size_t clashes = 0;
    for (const auto& item : items)
        if (!known.add(nameOf(item)) && ++clashes <= mostClashes)
            diagnostics_.warning({modules_.file, 0, 0}, std::string("more than one of the ") + what +
                                                            " is named '" +
                                                            std::string(names_[nameOf(item)]) + "'");
    if (clashes > mostClashes)
        diagnostics_.warning({modules_.file, 0, 0}, std::to_string(clashes - mostClashes) + " more " + what +
                                                        " have the name of another one");
}

// What a module computes without structure cannot be timed. Beside cells it may be of no account.
void Flattener::tellBehaviour() {
    for (const ModuleId i : modules_.all.ids()) {
        const Module& module = modules_.all[i];
        if (!module.behaviour || !hierarchy_.isNeeded(i))
            continue;
        const auto& [place, text, isError] = *module.behaviour;
        if (isError)
            errors_.add(place, text);
        else if (module.cells.empty())
            errors_.add(place, "only structural Verilog can be read, found '" + text + "'");
        else
            diagnostics_.warning(place, "module '" + std::string(names_[module.name]) + "' has '" + text +
                                            "' beside its cells: what that computes is not timed");
    }
}

void Flattener::tellInversions() {
    if (const std::size_t count = result_.invertedPins.size(); count != 0)
        diagnostics_.note(
            firstInvertedPlace_,
            std::to_string(count) +
                " pins are connected to inverted nets: what a rising edge does there, a falling edge "
                "of the net does, first '" +
                firstInverted_ + "'");
    if (lostInversions_ != 0)
        diagnostics_.warning(firstLostPlace_,
                             std::to_string(lostInversions_) +
                                 " ports of modules are connected to inverted nets: the nets are joined, and "
                                 "edges are not exchanged, first '" +
                                 firstLost_ + "'");
}

} // namespace

Design::Netlist flatten(Modules modules, const std::string& top, Base::Diagnostics& diagnostics) {
    const ModuleId root = modules.findTop(top);
    const Hierarchy hierarchy(modules, root);
    return Flattener(modules, hierarchy, diagnostics).run(root);
}

} // namespace Readers
