// The arcs into or out of one pole: an array of pointers, in order of creation.
//
// Up to two arcs are kept in place; more are kept in arrays of 2^n pointers, whose memory is pooled. Removing
// an arc leaves a hole (null), so that it costs O(1) and no walk loses its place. Holes are closed when the
// array next grows. Each arc knows its position, so the array reports it when an arc moves.
#pragma once

#include "Pelko/detail/Pool.h"

#include <cstdint>
#include <cstring>

namespace Pelko {
class Edge;
}

namespace Pelko::detail {

// Arrays of 2^n pointers, from 4 up; small ones from pools, large ones from the heap.
class FanStore {
public:
    static Edge** take(std::uint32_t capacity);
    static void release(Edge** array, std::uint32_t capacity);
};

class Fan {
public:
    Fan() = default;
    Fan(const Fan&) = delete;
    Fan& operator=(const Fan&) = delete;
    ~Fan() {
        if (!isInPlace())
            FanStore::release(many_, getCapacity());
    }

    Edge* const* begin() const { return isInPlace() ? few_ : many_; }
    Edge* const* end() const { return begin() + size_; }
    std::uint32_t getCount() const { return size_ - holes_; }

    // Appends an arc and returns its position. Calls `moved(arc, position)` for every arc that moves because
    // holes are closed.
    template <class Moved>
    std::uint32_t push(Edge* edge, Moved moved) {
        if (size_ == getCapacity()) {
            if (holes_ > size_ / 2)
                closeHoles(moved);
            else
                grow();
        }
        data()[size_] = edge;
        return size_++;
    }

    void remove(std::uint32_t position) {
        data()[position] = nullptr;
        ++holes_;
        while (size_ > 0 && !data()[size_ - 1]) {
            --size_;
            --holes_;
        }
    }

private:
    static constexpr unsigned inPlaceBits = 1;

    bool isInPlace() const { return capacityBits_ == inPlaceBits; }
    std::uint32_t getCapacity() const { return std::uint32_t{1} << capacityBits_; }
    Edge** data() { return isInPlace() ? few_ : many_; }

    void grow() {
        Edge** array = FanStore::take(getCapacity() * 2);
        std::memcpy(array, begin(), size_ * sizeof(Edge*));
        if (!isInPlace())
            FanStore::release(many_, getCapacity());
        many_ = array;
        ++capacityBits_;
    }

    template <class Moved>
    void closeHoles(Moved moved) {
        std::uint32_t kept = 0;
        for (std::uint32_t i = 0; i < size_; ++i)
            if (Edge* edge = data()[i]) {
                data()[kept] = edge;
                moved(edge, kept++);
            }
        size_ = kept;
        holes_ = 0;
    }

    union {
        Edge* few_[2] = {};
        Edge** many_;
    };
    std::uint32_t size_ = 0;       // holes included
    std::uint32_t holes_ : 27 = 0; // more would need 2^26 arcs of one pole at once
    std::uint32_t capacityBits_ : 5 = inPlaceBits;
};

} // namespace Pelko::detail
