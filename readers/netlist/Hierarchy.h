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
    Hierarchy(const Modules& modules, std::uint32_t top);

    // The module that a cell is an instance of; none where the file does not define it.
    std::uint32_t typeOf(const Module::Cell& cell) const { return byName_.find(cell.type); }
    bool isLeaf(std::uint32_t module) const { return module == Base::none || leaves_[module]; }
    HierarchySize sizeOf(std::uint32_t module) const { return sizes_[module]; }
    // Whether the top needs what is in the module.
    bool isNeeded(std::uint32_t module) const { return states_[module] == State::known; }

private:
    enum class State : std::uint8_t { unknown, open, known };

    struct Frame {
        std::uint32_t module;
        std::uint32_t cell = 0; // the next one
    };

    void measure(std::uint32_t top);
    HierarchySize ownSize(const Module& module) const;
    void add(HierarchySize& size, const Module& module, const Module::Cell& cell, std::uint32_t type) const;
    [[noreturn]] void failAtCycle(const std::vector<Frame>& frames, std::uint32_t again) const;
    void checkLimits(std::uint32_t top) const;

    const Modules& modules_;
    Base::NameTable byName_;
    std::vector<bool> leaves_;
    std::vector<State> states_;
    std::vector<HierarchySize> sizes_;
    std::uint32_t tooLarge_ = Base::none;
};

} // namespace Readers
