// The set of classes that a path carries: what tells it apart from others for the user's exceptions. The
// engine has 64 classes.
#pragma once

#include <compare>
#include <cstdint>

namespace Exceptions {

class ClassSet {
public:
    static constexpr unsigned most = 64;

    constexpr ClassSet() = default; // empty
    // As the engine has it: bit i for class i.
    constexpr explicit ClassSet(std::uint64_t bits) : bits_(bits) {}

    constexpr std::uint64_t bits() const { return bits_; }
    constexpr bool isEmpty() const { return bits_ == 0; }
    constexpr bool has(unsigned number) const { return (bits_ >> number & 1) != 0; }
    // The number that `count` classes from the first one on spell in binary, the first one its lowest digit.
    constexpr std::uint64_t number(unsigned first, unsigned count) const {
        return count == 0 ? 0 : bits_ >> first & (~std::uint64_t{0} >> (most - count));
    }
    // The set without the classes below `first`.
    constexpr ClassSet from(unsigned first) const {
        return ClassSet(first == most ? 0 : bits_ >> first << first);
    }

    auto operator<=>(const ClassSet&) const = default;

private:
    std::uint64_t bits_ = 0;
};

} // namespace Exceptions
