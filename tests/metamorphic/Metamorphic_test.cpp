// Random designs, each run twice: unchanged, and changed in a way with a known effect (Relation.h).
//
// VORLEN_DESIGNS is the number of runs over all relations, two per design; VORLEN_SEED is the first seed of
// each relation. A failure prints the relation, its seed, the first key that is not as expected, and the
// files of the smallest design that fails in the same way. VORLEN_KEEP=FOLDER keeps the files of the last
// run.
#include "Relation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace {

using namespace Metamorphic;

std::uint64_t number(const char* variable, std::uint64_t otherwise) {
    const char* value = std::getenv(variable);
    return value ? std::strtoull(value, nullptr, 10) : otherwise;
}

std::string text(const char* title, const Files& files) {
    std::string all = std::string("=== ") + title + " ===\n" + files.sdf + files.netlist;
    for (const std::string& sdc : files.sdc)
        all += "--- constraints\n" + sdc;
    for (const auto& [name, other] : files.besides)
        all += "--- " + name + "\n" + other;
    return all;
}

// The first failure among designs of growing size, as text; `found` if none of them fails.
std::string smallest(const Runner& runner, const Relation& relation, const Verdict& found) {
    constexpr std::uint64_t tries = 150;
    for (int size = 0; size <= 4; ++size) {
        Brute::Shape shape = relation.shape;
        shape.minimumRegisters = 1;
        shape.maximumRegisters = size + 1;
        shape.maximumGates = size;
        shape.minimumExceptions = std::min(shape.minimumExceptions, size);
        shape.maximumExceptions = size;
        for (std::uint64_t seed = 1; seed <= tries; ++seed)
            if (const std::optional<Verdict> verdict = judge(runner, relation, seed, shape);
                verdict && !verdict->difference.empty())
                return "smallest: seed " + std::to_string(seed) + " of size " + std::to_string(size) + ", " +
                       verdict->difference + "\n" + text("before", verdict->before) +
                       text("after", verdict->after);
    }
    return "no smaller design fails\n" + text("before", found.before) + text("after", found.after);
}

class Metamorphic : public testing::TestWithParam<Relation> {};

TEST_P(Metamorphic, Holds) {
    constexpr std::uint64_t runs = 8000, patience = 40;
    const Relation& relation = GetParam();
    const std::uint64_t wanted =
        std::max<std::uint64_t>(1, number("VORLEN_DESIGNS", runs) / (2 * allRelations().size()));
    const std::uint64_t first = number("VORLEN_SEED", 1);
    const Runner runner;
    std::uint64_t seed = first, judged = 0;
    for (; judged < wanted && seed < first + patience * wanted; ++seed) {
        const std::optional<Verdict> verdict = judge(runner, relation, seed, relation.shape);
        judged += verdict.has_value();
        if (!verdict || verdict->difference.empty())
            continue;
        ADD_FAILURE() << relation.name << ", seed " << seed << ": " << verdict->difference << "\n"
                      << smallest(runner, relation, *verdict);
        break;
    }
    std::cout << "seeds " << first << " to " << seed - 1 << ", " << judged << " designs\n";
    EXPECT_GT(judged, 0u) << "no design of these seeds is one that the relation speaks of";
}

INSTANTIATE_TEST_SUITE_P(All, Metamorphic, testing::ValuesIn(allRelations()),
                         [](const auto& row) { return row.param.name; });

} // namespace

namespace Metamorphic {
// Prints the row's name when a test fails.
void PrintTo(const Relation& relation, std::ostream* out) { *out << relation.name; }
} // namespace Metamorphic
