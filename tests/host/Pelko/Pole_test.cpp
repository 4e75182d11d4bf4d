// Poles: factories and the calls they reject, kinds, references, main poles, marks, insulation, consistency.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Pelko/Issue.h"
#include "Ruvex/Record.h"
#include "tests/support/Rows.h"

#include <memory>
#include <sstream>

namespace HostTest {

namespace {

class PoleTest : public ModelTest {};

TEST_F(PoleTest, RefusedFactories) {
    Pin* pin = Pin::create(model_.getModule(), "C");
    Pole* plain = addPole("plain");
    Pole* clock = addClock("clock");
    Pole* pinless = addPole("pinless");
    pinless->setClock(true);
    const auto place = [](const char* function, unsigned line) {
        return Ruvex::Place{"Pole", function, line};
    };
    expectRefused({
        {"no cell", [] { Pole::create(nullptr); }, factoryFailed, "Null cell", place("create", 1)},
        {"no cell, named", [] { Pole::create(nullptr, "p"); }, factoryFailed, "Null cell",
         place("create", 1)},
        {"no cell, pin", [=] { Pole::create(nullptr, pin); }, factoryFailed, "Null cell", place("create", 1)},
        {"no pin", [] { Pole::create(cell, nullptr, "p"); }, factoryFailed, "Null pin", place("create", 2)},
        {"input", [] { Pole::createInput(nullptr); }, factoryFailed, "Null cell", place("createInput", 1)},
        {"output", [] { Pole::createOutput(nullptr); }, factoryFailed, "Null cell", place("createOutput", 1)},
        {"source", [] { Pole::createClockSource(nullptr); }, factoryFailed, "Null cell",
         place("createClockSource", 1)},
        {"clock: no cell", [=] { Pole::createClock(nullptr, pin, ClockMode::Rising); }, factoryFailed,
         "Null cell", place("createClock", 1)},
        {"clock: no pin", [] { Pole::createClock(cell, nullptr, ClockMode::Rising); }, factoryFailed,
         "Null pin", place("createClock", 2)},
        {"clock: no mode", [=] { Pole::createClock(cell, pin, ClockMode::None); }, factoryFailed,
         "No clock mode", place("createClock", 3)},
        {"check: nothing", [] { Pole::createCheck(nullptr); }, factoryFailed, "Null clock pole",
         place("createCheck", 4)},
        {"check: not a clock", [=] { Pole::createCheck(plain); }, factoryFailed, "Not a clock pole",
         place("createCheck", 5)},
        {"check: no pin", [=] { Pole::createCheck(pinless); }, factoryFailed, "Clock pole without a pin",
         place("createCheck", 6)},
    });
    EXPECT_EQ(Pole::createCheck(clock)->getClockPole(), clock);
}

TEST_F(PoleTest, KindsAreSetOneByOne) {
    struct {
        void (Pole::*set)(bool);
        bool (Pole::*is)() const;
    } const kinds[] = {
        {&Pole::setInput, &Pole::isInput},
        {&Pole::setOutput, &Pole::isOutput},
        {&Pole::setClock, &Pole::isClock},
        {&Pole::setClockSource, &Pole::isClockSource},
        {&Pole::setInitial, &Pole::isInitial},
        {&Pole::setTerminal, &Pole::isTerminal},
        {&Pole::setSetupCheck, &Pole::isSetupCheck},
        {&Pole::setHoldCheck, &Pole::isHoldCheck},
        {&Pole::setCaptureInverted, &Pole::isCaptureInverted},
    };
    Pole* pole = addPole();
    for (const auto& kind : kinds) {
        (pole->*kind.set)(true);
        (pole->*kind.set)(true);
        for (const auto& other : kinds)
            EXPECT_EQ((pole->*other.is)(), &kind == &other);
        EXPECT_EQ(pole->isCheck(), pole->isSetupCheck() || pole->isHoldCheck());
        (pole->*kind.set)(false);
        EXPECT_FALSE((pole->*kind.is)());
    }
    for (const auto& kind : kinds)
        (pole->*kind.set)(true);
    for (const auto& kind : kinds)
        EXPECT_TRUE((pole->*kind.is)());
    for (ClockMode::Code mode : {ClockMode::Falling, ClockMode::Rising, ClockMode::None}) {
        SCOPED_TRACE(mode);
        pole->setClockMode(mode);
        EXPECT_EQ(pole->getClockMode().getCode(), mode);
    }
}

// --- Main poles and references ---

TEST_F(PoleTest, MainPole) {
    Pin* pin = Pin::create(model_.getModule(), "p");
    Pole* free = addPole();
    Pole* first = Pole::create(cell, pin);
    Pole* second = Pole::create(cell, pin);
    EXPECT_EQ(pin->getMainPole(), first);
    EXPECT_EQ(free->getMainPole(), free);
    EXPECT_EQ(first->getMainPole(), first);
    EXPECT_EQ(second->getMainPole(), first);
    second->setMainPole(free);
    EXPECT_EQ(second->getMainPole(), free);
    EXPECT_EQ(pin->getMainPole(), first);
    second->setMainPole(nullptr);
    EXPECT_EQ(second->getMainPole(), first);
    first->destroy();
    EXPECT_EQ(pin->getMainPole(), nullptr);
    EXPECT_EQ(second->getMainPole(), second);
    Pole* third = Pole::create(cell, pin);
    EXPECT_EQ(pin->getMainPole(), third);
    EXPECT_EQ(second->getMainPole(), third);
}

TEST_F(PoleTest, AuxiliaryPolesGoWithTheirEnd) {
    Pole* clock = addClock("C");
    Pole* a = Pole::createCheck(clock);
    Pole* b = Pole::createCheck(clock);
    EXPECT_THAT(walk(clock->getPin()->getAuxiliaryPoles()), ElementsAre(a, b));
    a->destroy();
    EXPECT_THAT(walk(clock->getPin()->getAuxiliaryPoles()), ElementsAre(b));
    EXPECT_EQ(clock->getPin()->getMainPole(), clock);
}

TEST_F(PoleTest, ReferencesKeepAPole) {
    Pole* pole = addPole("p");
    Pole* user = addPole("user");
    Pole* input = Pole::createInput(cell, "input");
    CPath* constrained = nullptr;
    Domain* domain = nullptr;
    const auto port = [&](Pole* at, Pole* root) {
        return [=] {
            analyzer->setInputConstraint(at, IOConstraint(root, ClockMode::Rising, Delay(0), Delay(0)));
        };
    };
    struct {
        const char* what;
        Pole* pole;
        std::function<void()> refer, release;
    } const rows[] = {
        {"clock pole", pole, [&] { user->setClockPole(pole); }, [&] { user->setClockPole(nullptr); }},
        {"replaced clock pole", pole, [&] { user->setClockPole(pole); }, [&] { user->setClockPole(user); }},
        {"main pole", pole, [&] { user->setMainPole(pole); }, [&] { user->setMainPole(nullptr); }},
        {"exception's source", pole,
         [&] {
             constrained = CPath::create({{pole}, {}});
         },
         [&] { constrained->destroy(); }},
        {"exception's target", pole,
         [&] {
             constrained = CPath::create({{}, {pole}});
         },
         [&] { constrained->destroy(); }},
        {"exception's bridge", pole,
         [&] {
             constrained = CPath::create({{}, {}, {pole}});
         },
         [&] { constrained->destroy(); }},
        {"launch root", pole, [&] { domain = Domain::create(pole, nullptr); }, [&] { domain->destroy(); }},
        {"latch root", pole, [&] { domain = Domain::create(nullptr, pole); }, [&] { domain->destroy(); }},
        {"both roots", pole, [&] { domain = Domain::create(pole, pole); }, [&] { domain->destroy(); }},
        {"launch leaf", pole, [&] { addSubdomain(nullptr, nullptr)->captureLaunch(pole); },
         [&] { analyzer->getDomain(nullptr, nullptr)->destroy(); }},
        {"latch leaf", pole, [&] { addSubdomain(nullptr, nullptr)->captureLatch(pole); },
         [&] { analyzer->getDomain(nullptr, nullptr)->destroy(); }},
        {"constrained port", input, port(input, nullptr), [&] { analyzer->removeInputConstraint(input); }},
        {"reference clock", pole, port(input, pole), [&] { analyzer->removeInputConstraint(input); }},
        {"replaced reference clock", pole, port(input, pole), port(input, nullptr)},
        {"clock group", pole,
         [&] {
             analyzer->addClockGroups(Analyzer::GroupKind::Exclusive, {{pole, user}});
         },
         [&] { analyzer->clearClockGroups(); }},
        {"port slack", pole, [&] { analyzer->mergeIODelayLongestSlack(pole, Delay(1)); },
         [&] { analyzer->clearResults(); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_FALSE(row.pole->isReferenced());
        EXPECT_TRUE(row.pole->isDestroyable());
        row.refer();
        EXPECT_TRUE(row.pole->isReferenced());
        expectRefused({"destroy",
                       [&row] { row.pole->destroy(); },
                       invalidRequest,
                       "Not destroyable: Pole " + row.pole->getName(),
                       {"Object", "destroy", 1}});
        row.release();
        EXPECT_TRUE(row.pole->isDestroyable());
        analyzer->removeInputConstraint(input);
    }
    pole->destroy();
    EXPECT_THAT(walk(cell->getPoles()), ElementsAre(user, input));
}

TEST_F(PoleTest, APoleDoesNotKeepItself) {
    Pole* pole = addPole();
    pole->setClockPole(pole);
    pole->setMainPole(pole);
    EXPECT_FALSE(pole->isReferenced());
    pole->destroy();
    EXPECT_TRUE(cell->getPoles().isEmpty());
}

// A removed clock keeps no pole alive.
TEST_F(PoleTest, ARemovedClockKeepsNoPole) {
    Pole* clk = addPole("clk");
    analyzer->setClock(clk, Delay(10), Delay(0), Delay(5), Delay(5));
    EXPECT_FALSE(clk->isDestroyable());
    analyzer->removeClock(clk);
    EXPECT_TRUE(clk->isDestroyable());

    Pole* never = addPole("never");
    analyzer->removeClock(never);
    EXPECT_TRUE(never->isDestroyable());

    Pole* analysed = addPole("analysed");
    analyzer->setPeriod(analysed, Delay(7));
    analyzer->clearResults();
    EXPECT_TRUE(analysed->isDestroyable());
}

TEST_F(PoleTest, ArcsEndWithTheirPole) {
    Pole* a = addPole("a");
    Pole* b = addPole("b");
    Pole* c = addPole("c");
    connect(a, b);
    Edge* kept = connect(a, c);
    connect(b, c);
    connect(c, b);
    b->destroy();
    EXPECT_THAT(walk(cell->getEdges()), ElementsAre(kept));
    EXPECT_THAT(walk(a->getOutgoingEdges()), ElementsAre(kept));
    EXPECT_THAT(walk(c->getIncomingEdges()), ElementsAre(kept));
    EXPECT_TRUE(c->getOutgoingEdges().isEmpty());
    EXPECT_EQ(c->getIncomingEdge(a), kept);
    // A reported path keeps its arcs alive, and so their poles.
    Path* path =
        Path::createLongest(addSubdomain(nullptr, nullptr), view({kept}), Delay(0), Delay(0), Delay(0));
    for (Pole* pole : {a, c})
        expectRefused({"pole of a reported path",
                       [pole] { pole->destroy(); },
                       invalidRequest,
                       "Not destroyable: Pole " + pole->getName(),
                       {"Object", "destroy", 1}});
    path->destroy();
    a->destroy();
    EXPECT_TRUE(cell->getEdges().isEmpty());
}

// --- Marks ---

class Marks : public PoleTest {
protected:
    void TearDown() override { Analyzer::_epoch = epoch_; }

    std::uint32_t epoch_ = Analyzer::_epoch;
    static constexpr std::uint32_t lastEpoch = ~std::uint32_t{0};
};

// All marks are cleared in one step: a walk over the poles would take hours here.
TEST_F(Marks, UnmarkCostsTheSameForAnyCell) {
    for (int i = 0; i < 100000; ++i)
        addPole();
    Pole* last = addPole();
    for (int i = 0; i < 2000000; ++i) {
        last->mark();
        analyzer->unmark();
    }
    EXPECT_FALSE(last->isMarked());
}

TEST_F(Marks, OldMarksDoNotComeBackWhenTheCountComesRound) {
    Pole* ancient = addPole();
    Pole* late = addPole();
    Pole* never = addPole();
    Pole* ended = addPole();
    Analyzer::_epoch = 1;
    ancient->mark();
    Analyzer::_epoch = lastEpoch - 1;
    EXPECT_FALSE(ancient->isMarked());
    late->mark();
    ended->destroy(); // a hole in the cell's table
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(late->isMarked(), i == 0);
        EXPECT_FALSE(ancient->isMarked());
        EXPECT_FALSE(never->isMarked());
        EXPECT_NE(Analyzer::_epoch, 0u);
        analyzer->unmark();
        late->unmark();
    }
    EXPECT_EQ(Analyzer::_epoch, 3u);
    never->mark();
    EXPECT_TRUE(never->isMarked());
    EXPECT_FALSE(late->isMarked());
    EXPECT_FALSE(addPole()->isMarked());
}

TEST_F(Marks, AtTheLastEpoch) {
    Pole* a = addPole();
    Pole* b = addPole();
    Analyzer::_epoch = lastEpoch;
    a->mark();
    EXPECT_TRUE(a->isMarked());
    EXPECT_FALSE(b->isMarked());
    a->unmark();
    EXPECT_FALSE(a->isMarked());
    a->mark();
    analyzer->unmark();
    EXPECT_FALSE(a->isMarked());
    EXPECT_EQ(Analyzer::_epoch, 1u);
}

// --- Inspection ---

TEST_F(PoleTest, Consistency) {
    Pole* clock = addClock("C");
    const auto make = [this](const std::vector<void (Pole::*)(bool)>& kinds) {
        Pole* pole = addPole();
        for (auto kind : kinds)
            (pole->*kind)(true);
        return pole;
    };
    Pole* orphan = Pole::createCheck(clock);
    orphan->setClockPole(nullptr);
    struct {
        Pole* pole;
        std::vector<std::string> findings;
    } const rows[] = {
        {addPole(), {}},
        {Pole::createInput(cell), {}},
        {Pole::createOutput(cell), {}},
        {Pole::createClockSource(cell), {}},
        {clock, {}},
        {Pole::createCheck(clock), {}},
        {make({&Pole::setInput}), {"input port that is not initial"}},
        {make({&Pole::setOutput}), {"output port that is not terminal"}},
        {make({&Pole::setClock}), {"clock pole without a clock mode", "clock pole that is not initial"}},
        {make({&Pole::setSetupCheck}),
         {"check pole without a clock pole", "check pole that is not terminal"}},
        {make({&Pole::setHoldCheck, &Pole::setTerminal}), {"check pole without a clock pole"}},
        {orphan, {"check pole without a clock pole"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Issue issue;
        row.pole->check(issue);
        std::vector<std::string> findings;
        for (const Issue::Finding& finding : issue.getFindings()) {
            EXPECT_EQ(finding.object, row.pole);
            findings.push_back(finding.text);
        }
        EXPECT_EQ(findings, row.findings) << row.pole->getName();
        EXPECT_EQ(issue.isEmpty(), row.findings.empty());
    }
}

// The addresses that an engine prefetches are within the object; the two addresses of a pole are in its two
// halves.
TEST_F(PoleTest, FetchAddresses) {
    Pole* pole = addPole("a");
    const Edge* edge = connect(pole, addPole("b"));
    const auto offset = [](const void* object, const void* address) {
        return static_cast<const char*>(address) - static_cast<const char*>(object);
    };
    constexpr std::ptrdiff_t line = 64;
    EXPECT_EQ(offset(pole, pole->_getOutgoingFetchAddress()) / line, 0);
    EXPECT_EQ(offset(pole, pole->_getFetchAddress()) / line, 1);
    EXPECT_EQ(offset(edge, edge->_getFetchAddress()) / line, 0);
}

TEST_F(PoleTest, Record) {
    const Support::DebugMode debug(true);
    Pole* clock = addClock("r/C", ClockMode::Falling);
    Pole* check = Pole::createCheck(clock, "r/D");
    connect(addPole("a"), check);
    FPath::create({{clock}, {check}})->setPseudoMask(PseudoMask(4));
    std::ostringstream text;
    std::unique_ptr<Ruvex::Record>(check->_getRecord())->print(text, 1);
    EXPECT_EQ(text.str(), "Pole r/D\n"
                          "  [Pole]\n"
                          "  terminal\n"
                          "  setup check\n"
                          "  hold check\n"
                          "  ClockMode: none\n"
                          "  ClockPole: Pole r/C\n"
                          "    Pole r/C\n"
                          "      [Pole]\n"
                          "      clock\n"
                          "      initial\n"
                          "      ClockMode: falling\n"
                          "      Incoming: 0\n"
                          "      Outgoing: 0\n"
                          "      OpeningPseudoMask: {3}\n"
                          "      ClosingPseudoMask: {}\n"
                          "  Incoming: 1\n"
                          "  Outgoing: 0\n"
                          "  OpeningPseudoMask: {}\n"
                          "  ClosingPseudoMask: {3}\n");
}

} // namespace

} // namespace HostTest
