// Timing exceptions: factories and the calls they reject, the classes that poles show, slack adjustments by
// kind and side.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Ruvex/Record.h"
#include "tests/support/Rows.h"

#include <memory>
#include <sstream>
#include <utility>

namespace HostTest {

namespace {

class CPathTest : public ModelTest {
protected:
    unsigned long opening(const Pole* pole) { return pole->getOpeningPseudoMask().getBits(); }
    unsigned long closing(const Pole* pole) { return pole->getClosingPseudoMask().getBits(); }

    Pole* a_ = addPole("a");
    Pole* b_ = addPole("b");
    Pole* c_ = addPole("c");
};

TEST_F(CPathTest, Refusals) {
    FPath::create({{a_}, {b_}});
    const CPath::Objects some{{a_}, {b_}};
    const auto place = [](const char* file, unsigned line) { return Ruvex::Place{file, "preCreate", line}; };
    expectRefused({
        {"null source",
         [=, this] {
             CPath::create({{a_, nullptr}, {b_}});
         },
         factoryFailed, "Null pole", place("CPath", 2)},
        {"null target",
         [=, this] {
             FPath::create({{a_}, {nullptr}});
         },
         factoryFailed, "Null pole", place("CPath", 2)},
        {"null bridge",
         [=, this] {
             MPath::create({{a_}, {b_}, {nullptr}}, 2);
         },
         factoryFailed, "Null pole", place("CPath", 2)},
        {"null in a maximum",
         [] {
             DPath::createMaximum({{nullptr}, {}}, Delay(1));
         },
         factoryFailed, "Null pole", place("CPath", 2)},
        {"undefined", [=] { DPath::createMaximum(some, Delay(U)); }, factoryFailed, "Special delay",
         place("DPath", 3)},
        {"minimum special", [=] { DPath::createMinimum(some, Delay(lowest)); }, factoryFailed,
         "Special delay", place("DPath", 3)},
        {"maximum special", [=] { DPath::createMaximum(some, Delay(highest)); }, factoryFailed,
         "Special delay", place("DPath", 3)},
        {"no cycle", [=] { MPath::create(some, 0); }, factoryFailed, "Zero multiplier", place("MPath", 4)},
        {"null subdomain",
         [] { analyzer->getCPaths().getFirst()->getSlackAdjustment(nullptr, true); },
         invalidRequest,
         "Null subdomain",
         {"CPath", "getSlackAdjustment", 5}},
    });
    Analyzer* before = std::exchange(analyzer, nullptr);
    for (const auto& create : std::vector<std::function<void()>>{
             [=] { CPath::create(some); }, [=] { FPath::create(some); }, [=] { MPath::create(some, 1); },
             [=] { DPath::createMinimum(some, Delay(1)); }})
        expectRefused({"no analyzer", create, factoryFailed, "Null analyzer", place("CPath", 1)});
    analyzer = before;
    EXPECT_EQ(analyzer->getCPaths().getCount(), 1u);
}

TEST_F(CPathTest, ObjectsOnceEachInTheirOrder) {
    CPath* path = CPath::create({{c_, a_, c_, c_}, {b_, b_}, {a_, b_, a_}});
    EXPECT_THAT(walk(path->getSources()), ElementsAre(c_, a_));
    EXPECT_THAT(walk(path->getTargets()), ElementsAre(b_));
    EXPECT_THAT(walk(path->getBridges()), ElementsAre(a_, b_));
    EXPECT_THAT(walk(path->getPoles()), ElementsAre(c_, a_, a_, b_, b_));
    CPath* empty = CPath::create({{}, {}});
    EXPECT_TRUE(empty->getSources().isEmpty());
    EXPECT_TRUE(empty->getPoles().isEmpty());
}

TEST_F(CPathTest, KindsAliasesAndOrder) {
    CPath* plain = CPath::create({{a_}, {}});
    FPath* cut = FPath::create({{a_}, {}}, true);
    DPath* low = DPath::createMinimum({{a_}, {}}, Delay(lowest + 1));
    DPath* high = DPath::createMaximum({{a_}, {}}, Delay(highest - 1));
    MPath* cycles = MPath::create({{a_}, {}}, ~0UL);
    EXPECT_THAT(walk(analyzer->getCPaths()), ElementsAre(plain, cut, low, high, cycles));
    EXPECT_FALSE(plain->isInsulated());
    EXPECT_TRUE(cut->isInsulated());
    EXPECT_EQ(int(low->getMindelay()), lowest + 1);
    EXPECT_EQ(int(high->getMaxdelay()), highest - 1);
    EXPECT_EQ(cycles->getMultiplier(), ~0UL);
    EXPECT_EQ(high->getAlias(), "DPath#" + std::to_string(high->getStamp()));
    high->setAlias("line 12");
    EXPECT_EQ(high->getAlias(), "line 12");
    EXPECT_EQ(high->_getLabel(), "DPath line 12");
    cut->destroy();
    EXPECT_THAT(walk(analyzer->getCPaths()), ElementsAre(plain, low, high, cycles));
    EXPECT_TRUE(analyzer->getFalsePaths().isEmpty());
}

TEST_F(CPathTest, ReportedPathsKeepTheirException) {
    MPath* exception = MPath::create({{a_}, {}}, 2);
    Path* path = Path::createLongest(addSubdomain(nullptr, nullptr), {}, Delay(0), Delay(0), Delay(0));
    exception->setAlias("slow");
    path->setConstrainedPath(exception);
    path->setConstrainedPath(exception);
    expectRefused({"governs a path",
                   [=] { exception->destroy(); },
                   invalidRequest,
                   "Not destroyable: MPath slow",
                   {"Object", "destroy", 1}});
    MPath* other = MPath::create({{a_}, {}}, 2);
    path->setConstrainedPath(other);
    exception->destroy();
    path->destroy();
    other->destroy();
    EXPECT_TRUE(analyzer->getCPaths().isEmpty());
    EXPECT_FALSE(a_->isReferenced());
}

// --- Classes ---

TEST_F(CPathTest, ClassesShowOnSourcesAndTargets) {
    FPath* first = FPath::create({{a_}, {b_}, {c_}});
    MPath* second = MPath::create({{a_, b_}, {b_}}, 2);
    struct {
        const char* what;
        CPath* path;
        unsigned long mask;
        unsigned long openA, openB, closeB;
    } const steps[] = {
        {"first", first, 1, 1, 0, 1},          {"second", second, 2, 3, 2, 3},
        {"the same again", first, 1, 3, 2, 3}, {"renumbered", second, 8, 9, 8, 9},
        {"back", second, 2, 3, 2, 3},          {"two bits", first, 0b101, 7, 2, 7},
        {"one of them", first, 4, 6, 2, 6},    {"none", first, 0, 2, 2, 2},
        {"none at all", second, 0, 0, 0, 0},   {"the last bit", first, 1UL << 63, 1UL << 63, 0, 1UL << 63},
    };
    for (const auto& row : steps) {
        SCOPED_TRACE(row.what);
        row.path->setPseudoMask(PseudoMask(row.mask));
        EXPECT_EQ(row.path->getPseudoMask().getBits(), row.mask);
        EXPECT_EQ(opening(a_), row.openA);
        EXPECT_EQ(opening(b_), row.openB);
        EXPECT_EQ(closing(b_), row.closeB);
        EXPECT_EQ(closing(a_), 0u);
        EXPECT_EQ(opening(c_) | closing(c_), 0u); // a through point shows nothing
    }
    first->destroy();
    EXPECT_EQ(opening(a_) | closing(b_), 0u);
}

// The classes of a pole are those of its exceptions, whatever numbers they had before, and in whatever order
// they change.
TEST_F(CPathTest, RenumberingKeepsWhatOthersShow) {
    struct {
        const char* what;
        std::vector<unsigned long> before, after;
    } const rows[] = {
        {"down by one", {2, 4, 8}, {1, 2, 4}},    {"up by one", {1, 2, 4}, {2, 4, 8}},
        {"exchanged", {1, 2, 4}, {2, 1, 4}},      {"in a ring", {1, 2, 4}, {2, 4, 1}},
        {"one goes", {1, 2, 4}, {0, 1, 2}},       {"shared", {1, 1, 1}, {1, 2, 1}},
        {"shared, all go", {1, 1, 1}, {0, 0, 2}}, {"joined", {1, 2, 4}, {4, 4, 4}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::vector<CPath*> paths;
        for (unsigned long mask : row.before) {
            paths.push_back(FPath::create({{a_}, {b_}}));
            paths.back()->setPseudoMask(PseudoMask(mask));
        }
        unsigned long expected = 0;
        for (std::size_t i = 0; i < paths.size(); ++i) {
            paths[i]->setPseudoMask(PseudoMask(row.after[i]));
            expected |= row.after[i];
        }
        EXPECT_EQ(opening(a_), expected);
        EXPECT_EQ(closing(b_), expected);
        for (std::size_t i = 0; i < paths.size(); ++i) {
            paths[i]->destroy();
            unsigned long left = 0;
            for (std::size_t j = i + 1; j < paths.size(); ++j)
                left |= row.after[j];
            EXPECT_EQ(opening(a_), left);
            EXPECT_EQ(closing(b_), left);
        }
    }
}

TEST_F(CPathTest, ClearResults) {
    MPath* path = MPath::create({{a_}, {b_}}, 3);
    const std::string before = takeSnapshot();
    path->setPseudoMask(PseudoMask(4));
    path->validate();
    path->mergeLongestSlack(Delay(-3));
    path->mergeShortestSlack(Delay(-4));
    EXPECT_NE(takeSnapshot(), before);
    path->clearResults();
    EXPECT_EQ(takeSnapshot(), before);
}

// --- Slack adjustments ---

// Exceptions of every kind on either side, in a subdomain with these relations and this period of the latch
// clock.
TEST_F(CPathTest, Adjustments) {
    Pole* launch = Pole::createClockSource(cell, "launch");
    Pole* latch = Pole::createClockSource(cell, "latch");
    const CPath::Objects objects{{a_}, {b_}};
    CPath* plain = CPath::create(objects);
    CPath* cut = FPath::create(objects);
    CPath* insulated = FPath::create(objects, true);
    const auto maximum = [&](int delay) -> CPath* { return DPath::createMaximum(objects, Delay(delay)); };
    const auto minimum = [&](int delay) -> CPath* { return DPath::createMinimum(objects, Delay(delay)); };
    const auto cycles = [&](unsigned long count) -> CPath* { return MPath::create(objects, count); };
    constexpr int million = 1000000;
    struct {
        const char* what;
        CPath* path;
        int setup, hold, period; // period U: no clock
        int longest, shortest;
    } const rows[] = {
        {"no kind", plain, 10, 0, 10, 0, 0},
        {"no kind, nothing known", plain, U, U, U, 0, 0},
        {"false", cut, 10, 0, 10, highest, highest},
        {"false, nothing known", cut, U, U, U, highest, highest},
        {"insulated", insulated, 10, 0, 10, highest, highest},
        {"maximum, longer", maximum(15), 10, 0, 10, 5, 0},
        {"maximum, shorter", maximum(7), 10, 0, 10, -3, 0},
        {"maximum, negative", maximum(-7), 10, 0, 10, -17, 0},
        {"maximum, no relation", maximum(15), U, 0, 10, 0, 0},
        {"maximum, no limit before", maximum(15), highest, 0, 10, lowest, 0},
        {"maximum beyond the range", maximum(highest - 1), lowest + 1, 0, 10, highest, 0},
        {"minimum", minimum(3), 10, 0, 10, 0, -3},
        {"minimum, earlier latch", minimum(3), 10, -4, 10, 0, 1},
        {"minimum, later latch", minimum(3), 10, 4, 10, 0, -7},
        {"minimum, negative", minimum(-3), 10, 0, 10, 0, 3},
        {"minimum, no relation", minimum(3), 10, U, 10, 0, 0},
        {"one cycle", cycles(1), 10, 0, 10, 0, 0},
        {"two cycles", cycles(2), 10, 0, 10, 10, -10},
        {"three cycles of another period", cycles(3), 5, -5, 20, 40, -40},
        {"two cycles, no clock", cycles(2), 10, 0, U, 0, 0},
        {"two cycles, no relations", cycles(2), U, U, 10, 10, -10},
        {"cycles up to the range", cycles(2148), 0, 0, million, highest - 483647, -(highest - 483647)},
        {"cycles beyond the range", cycles(2149), 0, 0, million, highest, lowest},
        {"cycles without number", cycles(~0UL), 0, 0, highest - 1, highest, lowest},
        {"cycles without number, small period", cycles(~0UL), 0, 0, 2, highest, lowest},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        if (row.period == U)
            analyzer->removeClock(latch);
        else
            analyzer->setClock(latch, Delay(row.period), Delay(0), Delay(1), Delay(row.period - 1));
        Subdomain* subdomain = addSubdomain(launch, latch);
        subdomain->setSetupRelation(Delay(row.setup));
        subdomain->setHoldRelation(Delay(row.hold));
        EXPECT_EQ(int(row.path->getSlackAdjustment(subdomain, true)), row.longest);
        EXPECT_EQ(int(row.path->getSlackAdjustment(subdomain, false)), row.shortest);
        subdomain->destroy();
    }
    // Only the latch clock's period counts, and a port side has no period.
    analyzer->setClock(launch, Delay(8), Delay(0), Delay(4), Delay(4));
    EXPECT_EQ(int(cycles(2)->getSlackAdjustment(addSubdomain(launch, nullptr), true)), 0);
    EXPECT_EQ(int(cycles(2)->getSlackAdjustment(addSubdomain(nullptr, launch), true)), 8);
}

TEST_F(CPathTest, AnApplicationAdjustsItself) {
    Subdomain* here = addSubdomain(nullptr, nullptr);
    Subdomain* elsewhere = addSubdomain(a_, a_);
    FPath* path = FPath::create({{a_}, {b_}});
    path->setAdjuster([here](const Subdomain& subdomain, bool longest) {
        return &subdomain != here ? Delay(0) : longest ? Delay::getMaximum() : Delay(-3);
    });
    struct {
        Subdomain* subdomain;
        bool longest;
        int adjustment;
    } const rows[] = {{here, true, highest}, {here, false, -3}, {elsewhere, true, 0}, {elsewhere, false, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(int(path->getSlackAdjustment(row.subdomain, row.longest)), row.adjustment);
    }
    path->clearResults(); // the adjuster is a constraint, so it stays
    EXPECT_EQ(int(path->getSlackAdjustment(here, false)), -3);
    path->setAdjuster({});
    EXPECT_EQ(int(path->getSlackAdjustment(here, false)), highest);
}

TEST_F(CPathTest, Records) {
    const Support::DebugMode debug(true);
    const auto print = [](const CPath* path) {
        std::ostringstream text;
        std::unique_ptr<Ruvex::Record>(path->_getRecord())->print(text);
        return text.str();
    };
    const auto common = [](const char* label, const char* mask) {
        return std::string(label) +
               "\n  [CPath]\n  Sources: 2\n  Bridges: 0\n  Targets: 1\n  PseudoMask: " + mask +
               "\n  Validated: 0\n  LongestSlack: undefined\n  ShortestSlack: undefined\n";
    };
    const CPath::Objects objects{{a_, c_}, {b_}};
    FPath* cut = FPath::create(objects);
    DPath* limit = DPath::createMinimum(objects, Delay(4));
    MPath* cycles = MPath::create(objects, 3);
    cut->setAlias("x");
    limit->setAlias("y");
    cycles->setAlias("z");
    limit->setPseudoMask(PseudoMask(2));
    EXPECT_EQ(print(cut), common("FPath x", "{}"));
    EXPECT_EQ(print(limit), common("DPath y", "{2}") + "  MinDelay: 4\n");
    EXPECT_EQ(print(cycles), common("MPath z", "{}") + "  Multiplier: 3\n");
}

} // namespace

} // namespace HostTest
