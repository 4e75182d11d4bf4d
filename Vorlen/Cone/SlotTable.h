// The slots of poles, by the poles' indices: the only table of a cone that is as large as the design.
//
// A launch has a sweep for every pair of clocks with paths between them, and most of their cones may be
// small. So during a launch a table that is no longer needed is kept for the next cone, and only the entries
// that were written are cleared. After the first few tables a cone costs what is in it, independent of the
// size of the design.
//
// Cost: 4 bytes for each pole of the design, and 4 for each slot. At most `SlotTable::mostKept` tables are
// kept.
#pragma once

#include "Vorlen/Cone/TimingTable.h"
#include "Vorlen/detail/LargeVector.h"

namespace Vorlen::detail {

class SlotTable {
public:
    static constexpr std::size_t mostKept = 4;

    // Tables are kept while one exists. A launch holds one.
    class Keeping {
    public:
        Keeping();
        Keeping(const Keeping&) = delete;
        Keeping& operator=(const Keeping&) = delete;
        ~Keeping();
    };

    SlotTable() = default;
    SlotTable(SlotTable&& other) noexcept;
    SlotTable& operator=(SlotTable&& other) noexcept;
    ~SlotTable() { giveBack(); }

    // The slot of the index, or `noSlot` if it has none.
    Slot find(std::size_t index) const { return index < slots_.size() ? slots_[index] - 1 : noSlot; }
    void prefetch(std::size_t index) const { __builtin_prefetch(slots_.data() + index); }
    // Makes room for the indices below the bound.
    void reach(std::size_t bound);
    bool reaches(std::size_t index) const { return index < slots_.size(); }
    // Gives a slot to an index, which must be within reach and have none.
    void add(std::size_t index, Slot slot) {
        written_.push_back(static_cast<std::uint32_t>(index));
        slots_[index] = slot + 1;
    }
    // The slots in ascending order of indices.
    LargeVector<Slot> getSorted() const;

private:
    void clear();
    void giveBack() noexcept;

    LargeVector<Slot> slots_;            // by index: the slot plus one, or 0
    LargeVector<std::uint32_t> written_; // indices that have a slot
};

} // namespace Vorlen::detail
