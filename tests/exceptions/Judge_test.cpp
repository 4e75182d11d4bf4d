#include "exceptions/Judge.h"

#include "tests/exceptions/Example.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::Accounts;
using Exceptions::Judge;
using Support::Small;

class JudgeOf {
public:
    explicit JudgeOf(const Small& small)
        : accounts(small.built.constraints), judge(small.built.constraints, *small.built.clocks, -12,
                                                   small.resolved.variants, small.encoding, accounts) {}

    Accounts accounts;
    Judge judge;
};

TEST(Judge, Example) {
    const Small small(Support::exampleScript);
    JudgeOf of(small);
    for (const Support::ExamplePath& path : Support::examplePaths())
        EXPECT_EQ(small.text(of.judge.requirement(path.key)), path.requirement) << path.name;
}

// A key is judged once, so a requirement keeps its address.
TEST(Judge, KnownKeys) {
    const Small small(Support::exampleScript);
    JudgeOf of(small);
    const std::vector<Support::ExamplePath> paths = Support::examplePaths();
    const Exceptions::Requirement* const first = &of.judge.requirement(paths[0].key);
    for (const Support::ExamplePath& path : paths)
        of.judge.requirement(path.key);
    EXPECT_EQ(&of.judge.requirement(paths[0].key), first);
}

// Without a clock at one end a multicycle has no period of that clock, and only a delay is noted.
TEST(Judge, PathsWithoutAClock) {
    const Small small("set_multicycle_path 3 -to r2\nset_max_delay 5 -from r0");
    JudgeOf of(small);
    Exceptions::Key key;
    key.edges.launch = Small::a;
    key.end = small.encoding.numbers().numberOf(small.pin("r2/D"));
    EXPECT_EQ(small.text(of.judge.requirement(key)), "setup shift 0 by 2, hold shift 0 by 2");
    EXPECT_FALSE(of.accounts.uses().at(0).matchesPath);
    key.start = small.startNumber("r0/C");
    EXPECT_EQ(small.text(of.judge.requirement(key)), "setup delay 5000 by 3, hold shift 0 by 2");
    EXPECT_TRUE(of.accounts.uses().at(0).matchesPath);
    EXPECT_TRUE(of.accounts.uses().at(1).matchesPath);
}

} // namespace
