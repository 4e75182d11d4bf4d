#include "Vorlen/Cone/SlotTable.h"

#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Vorlen::detail {

namespace {

// The cleared tables that are kept during a launch; the others are empty.
std::array<LargeVector<Slot>, SlotTable::mostKept> kept;
unsigned keepings = 0;

// If more than one entry in this number was written, clearing the whole table is cheaper than clearing the
// entries.
constexpr std::size_t sparse = 16;

} // namespace

SlotTable::Keeping::Keeping() { ++keepings; }

SlotTable::Keeping::~Keeping() {
    if (--keepings == 0)
        kept = {};
}

SlotTable::SlotTable(SlotTable&& other) noexcept
    : slots_(std::move(other.slots_)), written_(std::move(other.written_)) {}

SlotTable& SlotTable::operator=(SlotTable&& other) noexcept {
    giveBack();
    slots_ = std::exchange(other.slots_, {});
    written_ = std::exchange(other.written_, {});
    return *this;
}

void SlotTable::reach(std::size_t bound) {
    if (slots_.empty()) {
        const auto largest = std::max_element(
            kept.begin(), kept.end(), [](const auto& a, const auto& b) { return a.size() < b.size(); });
        slots_.swap(*largest);
    }
    if (bound <= slots_.size())
        return;
    clearEntries(bound - slots_.size());
    slots_.resize(bound, 0);
}

LargeVector<Slot> SlotTable::getSorted() const {
    LargeVector<Slot> sorted;
    sorted.reserve(written_.size());
    if (written_.size() * sparse >= slots_.size()) {
        for (const Slot slot : slots_)
            if (slot != 0)
                sorted.push_back(slot - 1);
        return sorted;
    }
    LargeVector<std::uint32_t> indices = written_;
    std::sort(indices.begin(), indices.end());
    for (const std::uint32_t index : indices)
        sorted.push_back(slots_[index] - 1);
    return sorted;
}

void SlotTable::clear() {
    if (written_.size() * sparse >= slots_.size()) {
        clearEntries(slots_.size());
        std::fill(slots_.begin(), slots_.end(), 0);
        return;
    }
    clearEntries(written_.size());
    for (const std::uint32_t index : written_)
        slots_[index] = 0;
}

// Keeps the largest tables.
void SlotTable::giveBack() noexcept {
    if (keepings == 0 || slots_.empty())
        return;
    const auto smallest = std::min_element(kept.begin(), kept.end(),
                                           [](const auto& a, const auto& b) { return a.size() < b.size(); });
    if (smallest->size() >= slots_.size())
        return;
    clear();
    smallest->swap(slots_);
}

} // namespace Vorlen::detail
