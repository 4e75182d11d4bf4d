#include "Allocator.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

std::atomic<unsigned long> untilFailure = 0; // 0: never
std::atomic<bool> failed = false;
std::atomic<std::size_t> blocks = 0;
std::atomic<std::size_t> bytes = 0;
std::atomic<std::size_t> peak = 0;

void countDown() {
    if (untilFailure == 0 || --untilFailure != 0)
        return;
    failed = true;
    if (const std::new_handler handler = std::get_new_handler())
        handler();
    throw std::bad_alloc();
}

void* counted(void* place) {
    if (!place)
        throw std::bad_alloc();
    ++blocks;
    const std::size_t live = bytes += malloc_usable_size(place);
    if (live > peak)
        peak = live;
    return place;
}

void* allocate(std::size_t size) {
    countDown();
    return counted(std::malloc(size ? size : 1));
}

void* allocate(std::size_t size, std::align_val_t alignment) {
    countDown();
    const auto align = static_cast<std::size_t>(alignment);
    return counted(std::aligned_alloc(align, (size + align - 1) / align * align));
}

void release(void* place) noexcept {
    if (!place)
        return;
    --blocks;
    bytes -= malloc_usable_size(place);
    std::free(place);
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return allocate(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return allocate(size, alignment); }
void operator delete(void* place) noexcept { release(place); }
void operator delete[](void* place) noexcept { release(place); }
void operator delete(void* place, std::size_t) noexcept { release(place); }
void operator delete[](void* place, std::size_t) noexcept { release(place); }
void operator delete(void* place, std::align_val_t) noexcept { release(place); }
void operator delete[](void* place, std::align_val_t) noexcept { release(place); }
void operator delete(void* place, std::size_t, std::align_val_t) noexcept { release(place); }
void operator delete[](void* place, std::size_t, std::align_val_t) noexcept { release(place); }

namespace Faults {

void failAllocation(unsigned long number) {
    failed = false;
    untilFailure = number;
}

bool hasFailed() { return failed; }
std::size_t liveBlocks() { return blocks; }
std::size_t liveBytes() { return bytes; }
void startPeak() { peak = bytes.load(); }
std::size_t peakBytes() { return peak; }

} // namespace Faults
