// Which slot a pole has, by the pole's index: the one table of a cone that is as large as the design.
//
// A launch has a sweep for every pair of clocks that meet, and most of their cones may be small. So a table
// that is no longer needed is cleared at the entries that were written and kept for the next one, while a
// launch goes on: after the first few tables a cone costs what lies in it, whatever the size of the design.
//
// Cost: 4 bytes a pole of the design, and 4 a slot. Kept are at most `SlotTable::mostKept` tables.
#pragma once

#include "Vorlen/Cone/TimingTable.h"
#include "Vorlen/detail/LargeVector.h"

namespace Vorlen::detail {

class SlotTable {
public:
    static constexpr std::size_t mostKept = 4;

    // While one lives, tables are kept. A launch has one.
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

    // None for an index without a slot, and for one beyond the table.
    Slot find(std::size_t index) const { return index < slots_.size() ? slots_[index] - 1 : noSlot; }
    void prefetch(std::size_t index) const { __builtin_prefetch(slots_.data() + index); }
    // Makes entries for the indices below the bound.
    void reach(std::size_t bound);
    bool reaches(std::size_t index) const { return index < slots_.size(); }
    // For an index within reach that has no slot.
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
