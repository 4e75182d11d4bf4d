// Strong indices: what is known by its place in a table gets a type of its own, so that a pin is never taken for a
// cell. An index costs what a std::uint32_t costs.
//
//     struct PinTag;
//     using PinId = Base::Index<PinTag>;
//
//     Base::IndexVector<PinId, Pin> pins;
//     for (const PinId pin : pins.ids())
//         use(pins[pin]);
//     PinId found;               // none
//     if (found == Base::none) ...
//
// The order of indices is that of the table. `none` comes behind all others.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ranges>
#include <vector>

namespace Base {

// The one way to say that there is none; compares with every index and converts to it.
struct None {
    // While some tables are still indexed by plain numbers.
    constexpr operator std::uint32_t() const { return ~std::uint32_t{0}; }
};
inline constexpr None none;

template <class Tag>
class Index {
public:
    using Number = std::uint32_t;

    constexpr Index() = default; // none
    constexpr Index(None) {}
    // The number must be below that of `none`, 2^32 - 1.
    constexpr Index(Number number) : number_(number) {}

    // The place in the table.
    constexpr operator Number() const { return number_; }
    constexpr Number number() const { return number_; }

    constexpr Index& operator++() {
        ++number_;
        return *this;
    }
    constexpr Index operator++(int) {
        const Index old = *this;
        ++number_;
        return old;
    }

private:
    Number number_ = ~Number{0};
};

// The indices from 0 up to a count.
template <class Id>
auto firstIds(std::size_t count) {
    return std::views::iota(typename Id::Number{0}, static_cast<typename Id::Number>(count)) |
           std::views::transform([](typename Id::Number number) { return Id(number); });
}

// A table whose entries are known by their index: a std::vector, but for the type that it is asked by.
template <class Id, class T, class Allocator = std::allocator<T>>
class IndexVector : public std::vector<T, Allocator> {
    using Vector = std::vector<T, Allocator>;

public:
    using Vector::Vector;

    decltype(auto) operator[](Id id) { return Vector::operator[](id.number()); }
    decltype(auto) operator[](Id id) const { return Vector::operator[](id.number()); }

    // The index of the entry that is added next.
    Id next() const { return Id(static_cast<typename Id::Number>(this->size())); }
    auto ids() const { return firstIds<Id>(this->size()); }
};

} // namespace Base

template <class Tag>
struct std::hash<Base::Index<Tag>> {
    std::size_t operator()(Base::Index<Tag> index) const noexcept {
        return std::hash<std::uint32_t>()(index.number());
    }
};
