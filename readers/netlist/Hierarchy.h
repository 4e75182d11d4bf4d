// What instantiates what, and how large it all becomes when it is flattened.
#pragma once

#include "readers/netlist/Modules.h"

#include <cstdint>
#include <vector>

namespace Readers {

// Of a module with everything in it. Sums stop at the largest number.
struct HierarchySize {
    // What a flat netlist may take, as it is estimated: 4 GB.
    static constexpr std::uint64_t mostBytes = std::uint64_t{1} << 32;

    std::uint64_t cells = 0;     // leaves, and instances of modules
    std::uint64_t pins = 0;      // at most
    std::uint64_t nets = 0;      // of all the instances; connecting them makes them fewer
    std::uint64_t nameBytes = 0; // of the paths of cells and nets, at most
    std::uint32_t levels = 1;

    // Of memory, once it is flat.
    std::uint64_t bytes() const;
};

class Hierarchy {
public:
    // Throws BadInput if a module below the top instantiates itself, or if the result is too large.
    Hierarchy(const Modules& modules, ModuleId top);

    // Returns the module that a cell is an instance of; none if the file does not define it.
    ModuleId typeOf(const Module::Cell& cell) const { return byName_.find(cell.type); }
    bool isLeaf(ModuleId module) const { return module == Base::none || leaves_[module]; }
    HierarchySize sizeOf(ModuleId module) const { return sizes_[module]; }
    // Whether the top needs what is in the module.
    bool isNeeded(ModuleId module) const { return states_[module] == State::known; }

private:
    enum class State : std::uint8_t { unknown, open, known };

    struct Frame {
        ModuleId module;
        ModuleCellId cell = ModuleCellId(0U); // the next one
    };

    void measure(ModuleId top);
    HierarchySize ownSize(const Module& module) const;
    void add(HierarchySize& size, const Module& module, const Module::Cell& cell, ModuleId type) const;
    [[noreturn]] void failAtCycle(const std::vector<Frame>& frames, ModuleId again) const;
    void checkLimits(ModuleId top) const;

    const Modules& modules_;
    Base::NameTable<ModuleId> byName_;
    Base::IndexVector<ModuleId, bool> leaves_;
    Base::IndexVector<ModuleId, State> states_;
    Base::IndexVector<ModuleId, HierarchySize> sizes_;
    ModuleId tooLarge_;
};

} // namespace Readers
