// A lazy, read-only view of elements of type T: a driver behind a value. Copying a collection clones its
// driver, never the elements. A default-constructed collection is null: it has no driver, and reads as empty.
//
//   for (Edge* edge : pole->getIncomingEdges())
//       …
//
// costs one virtual call for the loop and no allocation if the driver offers memory (Driver.h), otherwise a
// few virtual calls for each element. A collection is invalidated like an iterator of its container: when the
// container grows or is destroyed.
#pragma once

#include "Ruvex/Locator.h"
#include "Ruvex/Random.h"

#include <algorithm>
#include <iterator>

namespace Ruvex {

template <class T>
class Collection {
public:
    using Element = T;
    class Iterator;
    struct End {};

    Collection() = default;

    template <class D>
    requires std::is_base_of_v<CollectionDriver<T>, std::remove_cvref_t<D>> Collection(D&& driver)
        : box_(std::forward<D>(driver)) {}

    // The operations below are those of the driver (Driver.h). A null collection answers as an empty one.
    bool isNull() const { return !box_.get(); }
    unsigned long getCount() const { return isNull() ? 0 : box_->getCount(); }
    bool hasCount(unsigned long n) const { return isNull() ? n == 0 : box_->hasCount(n); }
    bool isEmpty() const { return isNull() || box_->isEmpty(); }
    T getFirst() const { return isNull() ? T() : box_->getFirst(); }
    T getLast() const { return isNull() ? T() : box_->getLast(); }
    T getAt(unsigned long index) const { return isNull() ? T() : box_->getAt(index); }
    bool contains(const T& element) const { return !isNull() && box_->contains(element); }
    Locator<T> getLocator() const { return isNull() ? Locator<T>() : box_->getLocator(); }
    Locator<T> getReverseLocator() const { return isNull() ? Locator<T>() : box_->getReverseLocator(); }
    Locator<T> getRandomLocator() const { return isNull() ? Locator<T>() : box_->getRandomLocator(); }
    Collection getClone() const { return *this; }
    Memory<T> getMemory() const { return isNull() ? Memory<T>() : box_->getMemory(); }
    std::string _getLabel() const { return isNull() ? "null" : box_->_getLabel(); }

    Iterator begin() const { return Iterator(*this); }
    End end() const { return {}; }

private:
    Box<CollectionDriver<T>, 64> box_;
};

// Walks memory if the driver offers it, otherwise a locator.
template <class T>
class Collection<T>::Iterator {
public:
    using value_type = T;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const Collection& collection) {
        const Memory<T> memory = collection.getMemory();
        if (memory.isOffered) {
            current_ = memory.begin;
            end_ = memory.end;
            holes_ = memory.holes;
            skipHoles();
        } else {
            walksMemory_ = false;
            locator_ = collection.getLocator();
        }
    }

    T operator*() const { return walksMemory_ ? T(*current_) : locator_.getCurrent(); }

    Iterator& operator++() {
        if (walksMemory_) {
            ++current_;
            skipHoles();
        } else {
            locator_.progress();
        }
        return *this;
    }
    void operator++(int) { ++*this; }

    bool operator==(End) const { return walksMemory_ ? current_ == end_ : !locator_.isValid(); }

private:
    void skipHoles() {
        if constexpr (std::is_pointer_v<T>)
            while (holes_ && current_ != end_ && !*current_)
                ++current_;
    }

    const T* current_ = nullptr;
    const T* end_ = nullptr;
    bool holes_ = false;
    bool walksMemory_ = true;
    Locator<T> locator_;
};

namespace detail {

template <class T>
std::vector<T> copyOf(const CollectionDriver<T>& driver) {
    std::vector<T> elements;
    for (Locator<T> locator = driver.getLocator(); locator.isValid(); locator.progress())
        elements.push_back(locator.getCurrent());
    return elements;
}

} // namespace detail

template <class T>
unsigned long CollectionDriver<T>::getCount() const {
    unsigned long count = 0;
    for (Locator<T> locator = getLocator(); locator.isValid(); locator.progress())
        ++count;
    return count;
}

template <class T>
bool CollectionDriver<T>::hasCount(unsigned long n) const {
    unsigned long count = 0;
    for (Locator<T> locator = getLocator(); locator.isValid(); locator.progress())
        if (++count > n)
            return false;
    return count == n;
}

template <class T>
bool CollectionDriver<T>::isEmpty() const {
    return !getLocator().isValid();
}

template <class T>
T CollectionDriver<T>::getFirst() const {
    return getLocator().getCurrent();
}

template <class T>
T CollectionDriver<T>::getLast() const {
    T last = T();
    for (Locator<T> locator = getLocator(); locator.isValid(); locator.progress())
        last = locator.getCurrent();
    return last;
}

template <class T>
T CollectionDriver<T>::getAt(unsigned long index) const {
    Locator<T> locator = getLocator();
    for (; index != 0 && locator.isValid(); --index)
        locator.progress();
    return locator.getCurrent();
}

template <class T>
bool CollectionDriver<T>::contains(const T& element) const {
    for (Locator<T> locator = getLocator(); locator.isValid(); locator.progress())
        if (locator.getCurrent() == element)
            return true;
    return false;
}

template <class T>
Locator<T> CollectionDriver<T>::getReverseLocator() const {
    std::vector<T> order = detail::copyOf(*this);
    std::reverse(order.begin(), order.end());
    return OrderLocator<T>(std::move(order));
}

template <class T>
Locator<T> CollectionDriver<T>::getRandomLocator() const {
    std::vector<T> order = detail::copyOf(*this);
    for (std::size_t left = order.size(); left > 1; --left)
        std::swap(order[left - 1], order[getRandomValue() % left]);
    return OrderLocator<T>(std::move(order));
}

} // namespace Ruvex
