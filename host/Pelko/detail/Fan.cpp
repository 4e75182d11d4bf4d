#include "Pelko/detail/Fan.h"

namespace Pelko::detail {

namespace {

// Capacities 4, 8 and 16 are pooled. Nearly all fans of a design have one of these.
Pool<4 * sizeof(Edge*), alignof(Edge*)> pool4;
Pool<8 * sizeof(Edge*), alignof(Edge*)> pool8;
Pool<16 * sizeof(Edge*), alignof(Edge*)> pool16;

} // namespace

Edge** FanStore::take(std::uint32_t capacity) {
    switch (capacity) {
    case 4:
        return static_cast<Edge**>(pool4.take());
    case 8:
        return static_cast<Edge**>(pool8.take());
    case 16:
        return static_cast<Edge**>(pool16.take());
    default:
        return static_cast<Edge**>(::operator new(capacity * sizeof(Edge*)));
    }
}

void FanStore::release(Edge** array, std::uint32_t capacity) {
    switch (capacity) {
    case 4:
        return pool4.release(array);
    case 8:
        return pool8.release(array);
    case 16:
        return pool16.release(array);
    default:
        ::operator delete(array);
    }
}

} // namespace Pelko::detail
