// A cursor over a collection. A locator reads the live container, and is invalidated when the container's own
// iterators are.
#pragma once

#include "Ruvex/Driver.h"

namespace Ruvex {

template <class T>
class Locator {
public:
    Locator() = default;

    template <class D>
    requires std::is_base_of_v<LocatorDriver<T>, std::remove_cvref_t<D>> Locator(D&& driver)
        : box_(std::forward<D>(driver)) {}

    bool isValid() const { return box_.get() && box_->isValid(); }
    // The element, or T() if the locator is not valid.
    T getCurrent() const { return box_.get() ? box_->getCurrent() : T(); }
    // Moves to the next element. Does nothing if the locator is not valid.
    void progress() {
        if (box_.get())
            box_->progress();
    }
    Locator getClone() const { return *this; }
    std::string _getLabel() const { return box_.get() ? box_->_getLabel() : "null"; }

private:
    Box<LocatorDriver<T>, 96> box_;
};

// Walks a pair of iterators; `Read` turns an iterator into an element.
template <class T, class Iterator, class Read>
class IteratorLocator final : public DriverOf<LocatorDriver<T>, IteratorLocator<T, Iterator, Read>> {
public:
    IteratorLocator(Iterator begin, Iterator end) : current_(begin), end_(end) {}

    bool isValid() const override { return current_ != end_; }
    T getCurrent() const override { return isValid() ? Read()(current_) : T(); }
    void progress() override {
        if (isValid())
            ++current_;
    }
    std::string _getLabel() const override { return "Locator"; }

private:
    Iterator current_;
    Iterator end_;
};

// Walks a copy of the elements, in an order that the container does not have.
template <class T>
class OrderLocator final : public DriverOf<LocatorDriver<T>, OrderLocator<T>> {
public:
    explicit OrderLocator(std::vector<T> order) : order_(std::move(order)) {}

    bool isValid() const override { return index_ < order_.size(); }
    T getCurrent() const override { return isValid() ? T(order_[index_]) : T(); }
    void progress() override {
        if (isValid())
            ++index_;
    }
    std::string _getLabel() const override { return "Order locator"; }

private:
    std::vector<T> order_;
    std::size_t index_ = 0;
};

} // namespace Ruvex
