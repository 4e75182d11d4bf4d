// Storage for the objects of one class, in blocks. Objects lie side by side, so that millions of them do not
// cost an allocation each, and freed places are used again. Taking and releasing a place is O(1). The first
// block is small, the others are huge pages; they are kept until the program ends.
//
// Under AddressSanitizer every object has an allocation of its own, so that a use after its destruction is
// found.
#pragma once

#include "Pelko/detail/HugePages.h"

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace Pelko::detail {

template <std::size_t Size, std::size_t Align>
class Pool {
public:
#ifdef __SANITIZE_ADDRESS__
    void* take() { return ::operator new(Size); }
    void release(void* place) { ::operator delete(place); }
#else
    void* take() {
        if (free_) {
            Place* place = free_;
            free_ = place->next;
            return place;
        }
        if (next_ == end_)
            addBlock();
        return next_++;
    }

    void release(void* freed) {
        auto* place = static_cast<Place*>(freed);
        place->next = free_;
        free_ = place;
    }

private:
    union Place {
        Place* next;
        alignas(Align) std::byte room[Size];
    };

    struct Release {
        void operator()(Place* block) const { HugePages::release(block); }
    };

    void addBlock() {
        constexpr std::size_t firstBlock = std::size_t{1} << 16;
        if (!first_) {
            constexpr std::size_t count = firstBlock / sizeof(Place);
            first_ = std::make_unique_for_overwrite<Place[]>(count);
            next_ = first_.get();
            end_ = next_ + count;
            return;
        }
        constexpr std::size_t count = HugePages::size / sizeof(Place);
        blocks_.emplace_back(static_cast<Place*>(HugePages::take(HugePages::size)));
        next_ = blocks_.back().get();
        end_ = next_ + count;
    }

    std::unique_ptr<Place[]> first_;
    std::vector<std::unique_ptr<Place, Release>> blocks_;
    Place* next_ = nullptr; // in the last block
    Place* end_ = nullptr;
    Place* free_ = nullptr;
#endif
};

} // namespace Pelko::detail
