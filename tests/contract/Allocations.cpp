#include "Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned long> allocations = 0;

void* allocate(std::size_t size) {
    ++allocations;
    if (void* place = std::malloc(size ? size : 1))
        return place;
    throw std::bad_alloc();
}

void* allocate(std::size_t size, std::align_val_t alignment) {
    ++allocations;
    const auto align = static_cast<std::size_t>(alignment);
    if (void* place = std::aligned_alloc(align, (size + align - 1) / align * align))
        return place;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return allocate(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return allocate(size, alignment); }
void operator delete(void* place) noexcept { std::free(place); }
void operator delete[](void* place) noexcept { std::free(place); }
void operator delete(void* place, std::size_t) noexcept { std::free(place); }
void operator delete[](void* place, std::size_t) noexcept { std::free(place); }
void operator delete(void* place, std::align_val_t) noexcept { std::free(place); }
void operator delete[](void* place, std::align_val_t) noexcept { std::free(place); }
void operator delete(void* place, std::size_t, std::align_val_t) noexcept { std::free(place); }
void operator delete[](void* place, std::size_t, std::align_val_t) noexcept { std::free(place); }

namespace Contract {

unsigned long getAllocationCount() { return allocations; }

} // namespace Contract
