// Strong indices: each table has an index type of its own, so that the index of a pin cannot be used for a
// cell. An index costs the same as a std::uint32_t.
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
// The order of indices is that of the table. `none` comes after all others.
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ranges>
#include <vector>

namespace Base {

// The one way to write "none". It compares with every index and converts to it.
struct None {};
inline constexpr None none;

template <class Tag>
class Index {
public:
    using Number = std::uint32_t;

    constexpr Index() = default; // none
    constexpr Index(None) {}
    // The number must be below that of `none`, 2^32 - 1. Other integers are converted by the caller.
    template <std::same_as<Number> N>
    constexpr explicit Index(N number) : number_(number) {}
    // A constant.
    template <std::same_as<int> N>
    consteval explicit Index(N number) : number_(static_cast<Number>(number)) {}

    friend constexpr bool operator==(Index, Index) = default;
    friend constexpr auto operator<=>(Index, Index) = default;
    friend constexpr bool operator==(Index index, None) { return index == Index(); }

    // The place in the table.
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

// A std::vector whose operator[] takes an index instead of a number.
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

// Two indices as one key of a hash table, and back.
template <class First, class Second>
constexpr std::uint64_t pairKey(Index<First> first, Index<Second> second) {
    return std::uint64_t{first.number()} << 32 | second.number();
}
template <class Id>
constexpr Id firstOf(std::uint64_t pair) {
    return Id(static_cast<typename Id::Number>(pair >> 32));
}
template <class Id>
constexpr Id secondOf(std::uint64_t pair) {
    return Id(static_cast<typename Id::Number>(pair));
}

} // namespace Base

template <class Tag>
struct std::hash<Base::Index<Tag>> {
    std::size_t operator()(Base::Index<Tag> index) const noexcept {
        return std::hash<std::uint32_t>()(index.number());
    }
};
