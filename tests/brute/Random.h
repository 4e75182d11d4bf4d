// Random numbers that are the same on every machine and with every compiler.
#pragma once

#include <cstdint>
#include <vector>

namespace Brute {

class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() { // splitmix64
        std::uint64_t z = state_ += 0x9e3779b97f4a7c15u;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }
    int between(int least, int greatest) { // both bounds are possible
        return least + static_cast<int>(next() % static_cast<std::uint64_t>(greatest - least + 1));
    }
    bool chance(int percent) { return between(1, 100) <= percent; }
    template <class T>
    const T& of(const std::vector<T>& from) {
        return from[static_cast<std::size_t>(between(0, static_cast<int>(from.size()) - 1))];
    }

private:
    std::uint64_t state_;
};

} // namespace Brute
