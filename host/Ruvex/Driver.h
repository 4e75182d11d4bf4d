// The drivers behind collections and locators, and the box that holds one by value.
//
// A kind of collection derives from DriverOf<CollectionDriver<T>, Kind> and implements a walk over its
// elements. All other operations have a default in terms of that walk, and a kind overrides those that it can
// do faster. A kind whose elements are an array offers it with `getMemory()`: range-for then walks the array
// itself, without a virtual call for each element.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Ruvex {

template <class T>
class Locator;

// Holds one object of a class derived from Base: in place if it fits in `Room` bytes, otherwise on the heap.
// A copy of a box holds a clone. Base has `Base* clone(void* room, std::size_t size) const`.
template <class Base, std::size_t Room>
class Box {
public:
    Box() = default;

    template <class D>
    requires std::is_base_of_v<Base, std::remove_cvref_t<D>>
    explicit Box(D&& driver) {
        using Driver = std::remove_cvref_t<D>;
        if constexpr (sizeof(Driver) <= Room && alignof(Driver) <= alignof(std::max_align_t))
            held_ = new (room_) Driver(std::forward<D>(driver));
        else
            held_ = new Driver(std::forward<D>(driver));
    }

    Box(const Box& other) : held_(other.held_ ? other.held_->clone(room_, Room) : nullptr) {}

    // A driver on the heap changes its owner. One in place is cloned, which does not allocate.
    Box(Box&& other) : held_(other.held_) {
        if (other.isInPlace())
            held_ = other.held_->clone(room_, Room);
        else
            other.held_ = nullptr;
    }

    Box& operator=(Box other) {
        reset();
        if (other.isInPlace()) {
            held_ = other.held_->clone(room_, Room);
        } else {
            held_ = std::exchange(other.held_, nullptr);
        }
        return *this;
    }

    ~Box() { reset(); }

    Base* get() const { return held_; }
    Base* operator->() const { return held_; }

private:
    bool isInPlace() const { return static_cast<const void*>(held_) == static_cast<const void*>(room_); }

    void reset() {
        if (isInPlace())
            held_->~Base();
        else
            delete held_;
        held_ = nullptr;
    }

    Base* held_ = nullptr;
    alignas(std::max_align_t) std::byte room_[Room];
};

// A run of elements in memory. If `holes` is set, null elements stand for destroyed ones and are skipped. If
// `isOffered` is not set, there is no such run.
template <class T>
struct Memory {
    const T* begin = nullptr;
    const T* end = nullptr;
    bool holes = false;
    bool isOffered = false;
};

template <class T>
class LocatorDriver {
public:
    virtual ~LocatorDriver() = default;

    virtual bool isValid() const = 0;
    // The element, or T() if the locator is not valid.
    virtual T getCurrent() const = 0;
    virtual void progress() = 0;
    virtual LocatorDriver* clone(void* room, std::size_t size) const = 0;
    virtual std::string _getLabel() const = 0;

    LocatorDriver* getClone() const { return clone(nullptr, 0); }
};

template <class T>
class CollectionDriver {
public:
    virtual ~CollectionDriver() = default;

    // A locator at the first element.
    virtual Locator<T> getLocator() const = 0;
    // A copy of the driver: in `room` if it fits there, otherwise on the heap.
    virtual CollectionDriver* clone(void* room, std::size_t size) const = 0;
    virtual std::string _getLabel() const = 0;

    // The elements as an array, if they are one.
    virtual Memory<T> getMemory() const { return {}; }
    virtual unsigned long getCount() const;
    // Whether there are exactly n elements. Looks at n + 1 of them at most.
    virtual bool hasCount(unsigned long n) const;
    virtual bool isEmpty() const;
    // The first element, or T() if there is none.
    virtual T getFirst() const;
    // The last element, or T() if there is none. The default walks all elements.
    virtual T getLast() const;
    // The element at an index from 0, or T() if there is none. The default walks to it.
    virtual T getAt(unsigned long index) const;
    virtual bool contains(const T& element) const;
    // The elements from the last to the first. The default copies them.
    virtual Locator<T> getReverseLocator() const;
    // The elements in a random order, drawn from Ruvex::getRandomValue(). Copies them.
    virtual Locator<T> getRandomLocator() const;

    CollectionDriver* getClone() const { return clone(nullptr, 0); }
};

// Implements `clone` for a driver class: in the room if the driver fits there, otherwise on the heap.
template <class Base, class Derived>
class DriverOf : public Base {
public:
    Base* clone(void* room, std::size_t size) const override {
        const auto& self = static_cast<const Derived&>(*this);
        if (room && sizeof(Derived) <= size)
            return new (room) Derived(self);
        return new Derived(self);
    }
};

} // namespace Ruvex
