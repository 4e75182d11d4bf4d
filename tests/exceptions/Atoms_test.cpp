#include "exceptions/Atoms.h"

#include "tests/exceptions/Small.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::AtomId;
using Exceptions::Atoms;
using Support::Small;

// "g/Z+w/B | h/Z"
std::string atomsOf(const Small& small, const Atoms& atoms) {
    std::string text;
    for (const AtomId atom : atoms.ids())
        text += (text.empty() ? "" : " | ") + small.names(atoms.nodes(atom));
    return text;
}

TEST(Atoms, NodesThatAllListsHoldTogether) {
    struct Row {
        const char *script, *expected, *split; // the atoms, and the same split by level
    };
    const Row rows[] = {
        {"", "", ""},
        {"set_false_path -to r2", "", ""},
        {"set_false_path -through g/Z", "g/Z", "g/Z"},
        // On several levels, but on no path together.
        {"set_false_path -through {g/Z w/B}", "g/Z+w/B", "w/B | g/Z"},
        // Some path passes both.
        {"set_false_path -through {g/Z h/Z}", "g/Z | h/Z", "g/Z | h/Z"},
        // Another list holds only one of them.
        {"set_false_path -through {g/Z w/B}; set_false_path -through {w/B r2/Q}", "g/Z | w/B | r2/Q",
         "g/Z | w/B | r2/Q"},
        // The same list twice.
        {"set_false_path -through {g/Z w/B}; set_multicycle_path 2 -through {g/Z w/B}", "g/Z+w/B",
         "w/B | g/Z"},
        // The order matters.
        {"set_false_path -through {g/Z w/B} -through h/Z", "g/Z | w/B | h/Z", "g/Z | w/B | h/Z"},
    };
    for (const Row& row : rows) {
        const Small small(row.script);
        Atoms atoms(*small.built.network, small.resolved.variants);
        EXPECT_EQ(atomsOf(small, atoms), row.expected) << row.script;
        if (atoms.size() != 0)
            atoms.splitByLevel();
        EXPECT_EQ(atomsOf(small, atoms), row.split) << row.script;
    }
}

TEST(Atoms, ListsOfAVariant) {
    const Small small("set_false_path -through {g/Z w/B}\nset_false_path -to r2");
    Atoms atoms(*small.built.network, small.resolved.variants);
    const auto sizes = [&] {
        std::vector<std::size_t> all;
        for (const auto variant : small.resolved.variants.ids())
            for (const Exceptions::ThroughList& list : atoms.lists(variant))
                all.push_back(list.size());
        return all;
    };
    EXPECT_EQ(sizes(), std::vector<std::size_t>{1});
    atoms.splitByLevel();
    EXPECT_EQ(sizes(), std::vector<std::size_t>{2});
}

TEST(Atoms, Order) {
    const Small small("set_false_path -through g/Z -through h/Z");
    const Atoms atoms(*small.built.network, small.resolved.variants);
    ASSERT_EQ(atomsOf(small, atoms), "g/Z | h/Z");
    EXPECT_TRUE(atoms.reaches(AtomId(0), AtomId(1)));
    EXPECT_FALSE(atoms.reaches(AtomId(1), AtomId(0)));
}

} // namespace
