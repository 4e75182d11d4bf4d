// The whole model by one object: it makes the globals, and ends them.
#include "ModelTest.h"
#include "Refused.h"

namespace HostTest {

namespace {

TEST(ModelObject, MakesAndEndsTheGlobals) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(cell, nullptr);
        EXPECT_EQ(analyzer, nullptr);
        EXPECT_EQ(application, nullptr);
        const Model model("top");
        EXPECT_EQ(model.getCell(), cell);
        EXPECT_EQ(model.getAnalyzer(), analyzer);
        EXPECT_EQ(model.getApplication(), application);
        EXPECT_EQ(model.getModule(), cell->getModule());
        EXPECT_EQ(analyzer->getCell(), cell);
        EXPECT_EQ(cell->getName(), "top");
        EXPECT_TRUE(cell->getPoles().isEmpty());
    }
    EXPECT_EQ(cell, nullptr);
    EXPECT_EQ(analyzer, nullptr);
    EXPECT_EQ(application, nullptr);
}

TEST(ModelObject, Refusals) {
    expectRefused(
        {"empty name", [] { Model model(""); }, factoryFailed, "Empty cell name", {"Cell", "create", 1}});
    EXPECT_EQ(cell, nullptr);
    const Model model("top");
    expectRefused({{"second",
                    [] { Model second("second"); },
                    factoryFailed,
                    "A model exists already",
                    {"Model", "Model", 1}},
                   {"null cell",
                    [] { Analyzer::create(nullptr); },
                    factoryFailed,
                    "Null cell",
                    {"Analyzer", "create", 1}},
                   {"cell in use",
                    [] { cell->destroy(); },
                    invalidRequest,
                    "Not destroyable: Cell top",
                    {"Object", "destroy", 1}}});
    EXPECT_EQ(model.getCell(), cell);
}

// Everything that refers to something else goes with the model, whatever the order in which it came.
TEST(ModelObject, EndsWhateverIsInIt) {
    const Model model("top");
    Cell* owner = model.getCell();
    Pole* clk = Pole::createClockSource(owner, "clk");
    Pole* in = Pole::createInput(owner, "in");
    Pole* clock = Pole::createClock(owner, Pin::create(model.getModule(), "C"), ClockMode::Rising);
    Pole* check = Pole::createCheck(clock);
    clk->setMainPole(check);
    check->setClockPole(clk);
    clk->setClockPole(clk);
    Edge* edge = Edge::create(in, check, Delay(1), Delay(2));
    Subdomain* subdomain = Subdomain::create(Domain::create(clk, clk), ClockMode::Rising, ClockMode::Rising);
    subdomain->captureLaunch(in);
    subdomain->captureLatch(clock);
    MPath* exception = MPath::create({{in}, {check}, {clk}}, 2);
    Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0))->setConstrainedPath(exception);
    analyzer->setClock(clk, Delay(10), Delay(0), Delay(5), Delay(5));
    analyzer->setInputConstraint(in, IOConstraint(clk, ClockMode::Rising, Delay(0), Delay(0)));
    analyzer->addClockGroups(Analyzer::GroupKind::Exclusive, {{clk}, {clock}});
    analyzer->mergeIODelayLongestSlack(in, Delay(3));
    for (const Pole* pole : owner->getPoles())
        EXPECT_FALSE(pole->isDestroyable()) << pole->getName();
}

} // namespace

} // namespace HostTest
