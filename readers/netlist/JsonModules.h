// The modules of a JSON netlist, of the parts in which they come.
//
// The order of a cell's parts does not matter, nor does that of a module's.
#pragma once

#include "readers/netlist/Modules.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Readers {

class JsonModules {
public:
    explicit JsonModules(Modules& modules) : modules_(modules) {}

    // A port, a net or a cell, with what is known of it.
    struct Item {
        Base::Name name = noName;
        Base::Name type = noName;                                 // of a cell
        Design::Direction direction = Design::Direction::unknown; // of a port
        bool hasBits = false;
        bool upto = false;       // the most significant bit has the lowest number
        std::int64_t offset = 0; // the lowest number
        Base::Place place = {};
    };
    // What is wrong with a part; empty if nothing is.
    using Problem = std::string_view;

    Problem startModule(const std::string& name);
    void finishModule();
    // Whether there is no room for more nets, or bits of connections.
    bool isFull() const { return nets_ + numbers_.size() > mostNets || bits_ > mostBits; }
    Problem addPort(const Item& port, const std::vector<ModuleNetId>& bits);
    Problem addNet(const Item& net, const std::vector<ModuleNetId>& bits);
    Problem startCell(Base::Name name);
    void finishCell(const Item& cell);
    // Of the cell at hand.
    Problem startConnection(Base::Name pin);
    void addConnection(Base::Name pin, const std::vector<ModuleNetId>& bits);
    Problem addDirection(Base::Name pin, Design::Direction direction);

    Module& module() { return modules_.all.back(); }
    Base::Name moduleName() const { return modules_.all.back().name; }
    std::string_view text(Base::Name name) const { return modules_.names[name]; }
    Base::Name name(std::string_view text) { return modules_.names.add(text); }
    // The module's net that has the number in the file.
    ModuleNetId netOf(std::uint64_t number);

private:
    struct PinDirection {
        Base::Name pin;
        Design::Direction direction;
    };

    Modules& modules_;
    Base::NameSet known_, cells_, ports_, pins_;
    using NumberMap = std::unordered_map<std::uint64_t, ModuleNetId>;
    NumberMap netByNumber_;
    Base::IndexVector<ModuleNetId, std::uint64_t> numbers_; // in the file
    using DirectionId = Base::Index<struct DirectionTag>;
    Base::IndexVector<DirectionId, PinDirection> directions_; // of the cell's pins
    Base::NameTable<DirectionId> directionByPin_;
    ConnectionId firstConnection_; // of the cell
    std::string scratch_;
    std::size_t nets_ = 0, bits_ = 0; // of the modules before; of all
};

} // namespace Readers
