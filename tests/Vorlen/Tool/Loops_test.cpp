// The loop protocol: the stack, its set and its flag, and where a closed loop is cut.
#include "tests/support/Builder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

using Pelko::Pole;
using Support::inactive;
using Support::marked;
using Support::Names;
using Support::namesOf;

namespace {

class Loops : public testing::Test {
protected:
    Pole* add(const std::string& name) { return design_.addPole(name); }
    Names stack() const { return namesOf(tool_->getLoopPoles()); }

    Support::Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
};

TEST_F(Loops, StackIsReadFromItsTop) {
    Pole* a = add("a");
    Pole* b = add("b");
    tool_->loopOpen();
    EXPECT_EQ(stack(), Names{});
    EXPECT_FALSE(tool_->isLooping(a));
    tool_->loopPush(a);
    tool_->loopPush(b);
    EXPECT_EQ(stack(), (Names{"b", "a"}));
    EXPECT_TRUE(tool_->isLooping(a));
    EXPECT_TRUE(tool_->isLooping(b));
    tool_->loopPop();
    EXPECT_EQ(stack(), Names{"a"});
    EXPECT_TRUE(tool_->isLooping(a));
    EXPECT_FALSE(tool_->isLooping(b));
    tool_->loopPop();
    EXPECT_EQ(stack(), Names{});
    tool_->loopClose();
}

TEST_F(Loops, LoopPolesAreAViewOfTheLiveStack) {
    const Pelko::Poles view = tool_->getLoopPoles();
    EXPECT_EQ(namesOf(view), Names{});
    tool_->loopPush(add("a"));
    EXPECT_EQ(namesOf(view), Names{"a"});
    tool_->loopPush(add("b"));
    EXPECT_EQ(namesOf(view), (Names{"b", "a"}));
    tool_->reset();
    EXPECT_EQ(namesOf(view), Names{});
}

TEST_F(Loops, PushAndPopDoNotAskForAnOpenWalk) {
    Pole* a = add("a");
    tool_->loopPush(a);
    EXPECT_TRUE(tool_->isLooping(a));
    tool_->loopOpen();
    EXPECT_EQ(stack(), Names{"a"}) << "opening leaves the stack";
    tool_->loopPop();
    EXPECT_FALSE(tool_->isLooping(a));
}

// The set drops a pole by value, although the stack has another entry for it.
TEST_F(Loops, PolePushedTwice) {
    Pole* a = add("a");
    tool_->loopPush(a);
    tool_->loopPush(a);
    EXPECT_EQ(stack(), (Names{"a", "a"}));
    tool_->loopPop();
    EXPECT_EQ(stack(), Names{"a"});
    EXPECT_FALSE(tool_->isLooping(a));
    tool_->loopPop();
    EXPECT_EQ(stack(), Names{});
}

TEST_F(Loops, CloseAndResetEmptyEverything) {
    Pole* a = add("a");
    for (const bool byReset : {false, true}) {
        SCOPED_TRACE(byReset);
        tool_->loopOpen();
        tool_->loopPush(a);
        byReset ? tool_->reset() : tool_->loopClose();
        EXPECT_EQ(stack(), Names{});
        EXPECT_FALSE(tool_->isLooping(a));
    }
    tool_->reset();
    tool_->loopOpen();
    tool_->loopClose();
}

TEST_F(Loops, Faults) {
    Pole* inside = add("inside");
    Pole* outside = add("outside");
    const std::type_info& invalid = typeid(Ruvex::InvalidRequest);
    Support::expectThrown({
        {"close", [&] { tool_->loopClose(); }, invalid, "Not opened", {"Tool", "loopClose", 537}},
        {"pop", [&] { tool_->loopPop(); }, invalid, "Empty stack", {"Tool", "loopPop", 552}},
        {"push", [&] { tool_->loopPush(nullptr); }, invalid, "Null pole", {"Tool", "loopPush", 566}},
        {"look", [&] { tool_->isLooping(nullptr); }, invalid, "Null pole", {"Tool", "isLooping", 173}},
        {"cut", [&] { tool_->loopCutting(outside); }, invalid, "No looping", {"Tool", "loopCutting", 580}},
        {"cut null", [&] { tool_->loopCutting(nullptr); }, invalid, "Null pole", {"Tool", "isLooping", 173}},
    });
    tool_->loopOpen();
    tool_->loopPush(inside);
    Support::expectThrown({
        {"open", [&] { tool_->loopOpen(); }, invalid, "Already opened", {"Tool", "loopOpen", 525}},
        {"open again", [&] { tool_->loopOpen(); }, invalid, "Already opened", {"Tool", "loopOpen", 525}},
        {"push", [&] { tool_->loopPush(nullptr); }, invalid, "Null pole", {"Tool", "loopPush", 566}},
        {"cut", [&] { tool_->loopCutting(outside); }, invalid, "No looping", {"Tool", "loopCutting", 580}},
    });
    EXPECT_EQ(stack(), Names{"inside"}) << "a fault changes nothing";
    EXPECT_TRUE(tool_->isLooping(inside));
    tool_->loopClose();
    Support::expectThrown(
        {"close again", [&] { tool_->loopClose(); }, invalid, "Not opened", {"Tool", "loopClose", 537}});
}

// --- Cutting ---

// The stack is listed from its top: each pole is a source of the next. All its poles are marked before the
// cut.
struct CutRow {
    const char* what;
    Names stack;
    Names merges; // they have a second arc, from elsewhere
    Names clocks;
    std::string pole; // the loop closes here
    Names cut;
    Names marked;
};

class Cutting : public testing::TestWithParam<CutRow> {};

TEST_P(Cutting, Row) {
    const CutRow& row = GetParam();
    SCOPED_TRACE(row.what);
    Support::Builder design;
    const Support::ToolPointer tool = Support::makeTool();
    std::map<std::string, Pole*> poles;
    for (const std::string& name : row.stack)
        poles[name] = design.addPole(name);
    for (std::size_t i = 1; i < row.stack.size(); ++i)
        design.connect(poles[row.stack[i - 1]], poles[row.stack[i]]);
    for (const std::string& name : row.merges)
        design.connect(design.addPole("into " + name), poles[name]);
    // The closing arc, from the pole into the top.
    if (row.pole != row.stack.front())
        design.connect(poles[row.pole], poles[row.stack.front()]);
    for (const std::string& name : row.clocks)
        poles[name]->setClock(true);
    tool->loopOpen();
    for (auto name = row.stack.rbegin(); name != row.stack.rend(); ++name) {
        tool->loopPush(poles[*name]);
        poles[*name]->mark();
    }
    tool->loopCutting(poles[row.pole]);
    EXPECT_EQ(inactive(), row.cut);
    EXPECT_EQ(marked(), row.marked);
    EXPECT_EQ(namesOf(tool->getLoopPoles()), row.stack) << "the walk goes on";
}

const CutRow cutRows[] = {
    {"the arc into the merge point", {"P", "X", "S"}, {"X"}, {}, "S", {"P -> X"}, {"P", "X", "S"}},
    {"no merge point: unmarked down to the pole, and the stack ends",
     {"P", "X", "S"},
     {},
     {},
     "S",
     {},
     {"S"}},
    {"no merge point: the pair below the pole counts, then all are marked",
     {"P", "X", "S", "T"},
     {},
     {},
     "S",
     {},
     {"P", "X", "S", "T"}},
    {"the merge point nearest to the top",
     {"P", "X", "Y", "S"},
     {"X", "Y"},
     {},
     "S",
     {"P -> X"},
     {"P", "X", "Y", "S"}},
    {"poles above the merge point are unmarked",
     {"P", "X", "Y", "S"},
     {"Y"},
     {},
     "S",
     {"X -> Y"},
     {"X", "Y", "S"}},
    {"a clock pole is passed over",
     {"P", "X", "Y", "S"},
     {"X", "Y"},
     {"X"},
     "S",
     {"X -> Y"},
     {"P", "X", "Y", "S"}},
    {"only clock poles: the stack ends", {"P", "X", "S"}, {"X", "S"}, {"X", "S"}, "S", {}, {"P", "X", "S"}},
    {"only clock poles: all are marked",
     {"P", "X", "S", "T"},
     {"X", "S"},
     {"X", "S"},
     "S",
     {},
     {"P", "X", "S", "T"}},
    {"a clock pole without a merge is unmarked like others", {"P", "X", "S"}, {}, {"X"}, "S", {}, {"S"}},
    {"the pole is the merge point", {"P", "X", "S"}, {"S"}, {}, "S", {"X -> S"}, {"X", "S"}},
    {"the pair below the loop", {"P", "S", "T"}, {"T"}, {}, "S", {"S -> T"}, {"S", "T"}},
    {"the pair below the loop, at a clock pole: all are marked",
     {"P", "S", "T"},
     {"T"},
     {"T"},
     "S",
     {},
     {"P", "S", "T"}},
    {"not beyond the pair below the loop", {"P", "S", "T", "U"}, {"U"}, {}, "S", {}, {"P", "S", "T", "U"}},
    {"the pole on top, a merge below", {"S", "T", "U"}, {"T"}, {}, "S", {"S -> T"}, {"S", "T", "U"}},
    {"the pole on top, no merge below", {"S", "T", "U"}, {}, {}, "S", {}, {"S", "T", "U"}},
    {"the pole on top, a clock merge below", {"S", "T", "U"}, {"T"}, {"T"}, "S", {}, {"S", "T", "U"}},
    {"the pole on top, a merge further below", {"S", "T", "U"}, {"U"}, {}, "S", {}, {"S", "T", "U"}},
    {"the pole alone", {"S"}, {"S"}, {}, "S", {}, {"S"}},
};

INSTANTIATE_TEST_SUITE_P(Loops, Cutting, testing::ValuesIn(cutRows));

// A pole with several arcs in is a merge, whether they are active or not. The cut is permanent.
TEST_F(Loops, InactiveArcsCountAsIncoming) {
    Pole* p = add("P");
    Pole* x = add("X");
    Pole* s = add("S");
    design_.connectAll({p, x, s, p});
    design_.connect(add("Q"), x)->disactivate();
    tool_->loopOpen();
    for (Pole* pole : {s, x, p})
        tool_->loopPush(pole);
    tool_->loopCutting(s);
    EXPECT_EQ(inactive(), (Names{"P -> X", "Q -> X"}));
    tool_->loopClose();
    EXPECT_EQ(inactive(), (Names{"P -> X", "Q -> X"}));
}

// Nothing was marked before. If no arc can be cut, the whole stack is marked, even poles that were unmarked
// on the way.
TEST_F(Loops, MarksTheStackThatCannotBeCut) {
    Pole* p = add("P");
    Pole* s = add("S");
    Pole* t = add("T");
    add("elsewhere");
    design_.connectAll({p, s, t});
    design_.connect(s, p);
    tool_->loopOpen();
    for (Pole* pole : {t, s, p})
        tool_->loopPush(pole);
    tool_->loopCutting(s);
    EXPECT_EQ(marked(), (Names{"P", "S", "T"}));
}

} // namespace
