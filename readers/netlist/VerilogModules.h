// What the modules of a Verilog file mean for each other, when all are read: which are cells, and what arrays
// of cells and ".*" connect.
#pragma once

#include "readers/netlist/Modules.h"
#include "readers/netlist/VerilogModule.h"

#include <vector>

namespace Readers {

class VerilogModules {
public:
    // Of a module, what its text says beside its structure.
    struct Facts {
        bool isPrimitive = false; // a table of values
        bool isCell = false;      // under `celldefine
        bool isSpecified = false; // has a specify block
        VerilogModule::Rest rest = {};
    };

    VerilogModules(Modules& modules, const Base::IndexVector<ModuleId, Facts>& facts)
        : modules_(modules), facts_(facts), byName_(modules.byName()) {}

    // A module is a cell if its text says so, or if it models a cell: it has a specify block or behaviour,
    // and in addition at most gates and primitives. Throws BadInputs.
    void finish();

private:
    bool isModel(ModuleId module) const;
    static bool isSmall(const Module& module);
    void expand(ModuleId module);
    void addCells(Module& made, const Module& module, const Module::Cell& cell, const VerilogRange& range);
    void addWildcard(Module& made, const Module& module, Module::Cell cell, ConnectionId firstByName);
    void addConnection(Module& made, const Module& module, const Module::Connection& connection,
                       std::uint32_t first, std::uint32_t count);
    const Module::Port* portOf(const Module::Cell& cell, const Module::Connection& connection,
                               std::uint32_t position) const;
    std::uint32_t widthOf(const Module& module, const Module::Cell& cell, std::uint32_t position,
                          std::uint32_t cells);
    Base::Place place(const Module::Cell& cell) const { return cell.position.in(modules_.file); }
    std::string quoted(Base::Name name) const { return "'" + std::string(modules_.names[name]) + "'"; }

    Modules& modules_;
    const Base::IndexVector<ModuleId, Facts>& facts_;
    Base::NameTable<ModuleId> byName_;
    Base::ErrorList errors_;
    std::uint64_t added_ = 0; // cells and bits
};

} // namespace Readers
