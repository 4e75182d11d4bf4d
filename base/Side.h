// The two sides of an analysis. Setup: the latest data against the earliest capture. Hold: the earliest data
// against the latest capture.
#pragma once

#include <array>
#include <cstdint>

namespace Base {

enum class Side : std::uint8_t { setup, hold };

inline constexpr std::array<Side, 2> bothSides = {Side::setup, Side::hold};

// One value for each side.
template <class T>
struct PerSide {
    T setup{}, hold{};

    constexpr T& operator[](Side side) { return side == Side::setup ? setup : hold; }
    constexpr const T& operator[](Side side) const { return side == Side::setup ? setup : hold; }

    bool operator==(const PerSide&) const = default;
};

} // namespace Base
