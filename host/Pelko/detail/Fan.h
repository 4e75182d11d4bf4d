// The arcs into or out of one pole: an array of pointers, in order of creation.
//
// One arc is kept in place; more live in arrays of 2^n pointers, whose places are pooled. Ending an arc
// leaves a hole (null), so that it costs O(1) and no running walk loses its place; holes are closed when the
// array next grows. Each arc knows its position, so that the array tells it when it moves.
#pragma once

#include "Pelko/detail/Pool.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace Pelko {
class Edge;
}

namespace Pelko::detail {

// Arrays of 2^n pointers, from 2 up; small ones from pools, large ones from the heap.
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
        if (capacity_ > 1)
            FanStore::release(many_, capacity_);
    }

    Edge* const* begin() const { return capacity_ > 1 ? many_ : &one_; }
    Edge* const* end() const { return begin() + size_; }
    std::uint32_t getCount() const { return live_; }

    // Appends an arc and gives its position. `moved(arc, position)` is called for every arc that closing
    // holes moves.
    template <class Moved>
    std::uint32_t push(Edge* edge, Moved moved) {
        if (size_ == capacity_) {
            if (size_ - live_ > size_ / 2)
                closeHoles(moved);
            else
                grow();
        }
        data()[size_] = edge;
        ++live_;
        return size_++;
    }

    void remove(std::uint32_t position) {
        data()[position] = nullptr;
        --live_;
        while (size_ > 0 && !data()[size_ - 1])
            --size_;
    }

private:
    Edge** data() { return capacity_ > 1 ? many_ : &one_; }

    void grow() {
        const std::uint32_t wider = capacity_ * 2;
        Edge** array = FanStore::take(wider);
        std::memcpy(array, begin(), size_ * sizeof(Edge*));
        if (capacity_ > 1)
            FanStore::release(many_, capacity_);
        many_ = array;
        capacity_ = wider;
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
    }

    union {
        Edge* one_ = nullptr;
        Edge** many_;
    };
    std::uint32_t size_ = 0; // holes included
    std::uint32_t live_ = 0;
    std::uint32_t capacity_ = 1;
};

} // namespace Pelko::detail
