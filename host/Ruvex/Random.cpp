#include "Ruvex/Random.h"

#include <random>

namespace Ruvex {

namespace {

constexpr unsigned long defaultSeed = 20040601;

std::mt19937_64& generator() {
    static std::mt19937_64 instance(defaultSeed);
    return instance;
}

} // namespace

unsigned long getDefaultSeed() { return defaultSeed; }

void setRandomSeed(unsigned long seed) { generator().seed(seed); }

unsigned long getRandomValue() { return generator()(); }

} // namespace Ruvex
