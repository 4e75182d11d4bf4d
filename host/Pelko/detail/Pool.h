// Storage for one class of objects: blocks of objects side by side, so that millions of them cost no
// allocation each, and freed places are used again. Taking and releasing a place is O(1). Blocks are kept
// until the program ends.
//
// Under AddressSanitizer every object gets an allocation of its own, so that a use after its end is seen.
#pragma once

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
        if (used_ == blockSize) {
            blocks_.push_back(std::make_unique_for_overwrite<Place[]>(blockSize));
            used_ = 0;
        }
        return &blocks_.back()[used_++];
    }

    void release(void* freed) {
        auto* place = static_cast<Place*>(freed);
        place->next = free_;
        free_ = place;
    }

private:
    static constexpr std::size_t blockSize = 8192;

    union Place {
        Place* next;
        alignas(Align) std::byte room[Size];
    };

    std::vector<std::unique_ptr<Place[]>> blocks_;
    std::size_t used_ = blockSize;
    Place* free_ = nullptr;
#endif
};

} // namespace Pelko::detail
