// Domains: the factory and the calls it rejects, order, subdomains, the paths of all subdomains together.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Ruvex/Record.h"

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <utility>

namespace HostTest {

namespace {

class DomainTest : public ModelTest {
protected:
    Pole* a_ = Pole::createClockSource(cell, "a");
    Pole* b_ = Pole::createClockSource(cell, "b");
};

TEST_F(DomainTest, Refusals) {
    Domain::create(a_, b_);
    Domain::create(nullptr, nullptr);
    Subdomain* subdomain = addSubdomain(a_, a_);
    const auto again = [](Pole* launch, Pole* latch) { return [=] { Domain::create(launch, latch); }; };
    const Ruvex::Place place{"Domain", "create", 2};
    expectRefused({
        {"twice", again(a_, b_), factoryFailed, "Domain exists already", place},
        {"twice without clocks", again(nullptr, nullptr), factoryFailed, "Domain exists already", place},
        {"subdomain twice",
         [=] { Subdomain::create(subdomain->getDomain(), ClockMode::Rising, ClockMode::Rising); },
         factoryFailed,
         "Subdomain exists already",
         {"Subdomain", "create", 2}},
        {"subdomain of nothing",
         [] { Subdomain::create(nullptr, ClockMode::Rising, ClockMode::Rising); },
         factoryFailed,
         "Null domain",
         {"Subdomain", "create", 1}},
    });
    EXPECT_NE(Domain::create(b_, a_), nullptr);

    Analyzer* before = std::exchange(analyzer, nullptr);
    EXPECT_THROW(Domain::create(b_, b_), Ruvex::FactoryFailed);
    expectRefused({"no analyzer", again(b_, b_), factoryFailed, "Null analyzer", {"Domain", "create", 1}});
    analyzer = before;
    EXPECT_EQ(analyzer->getDomain(b_, b_), nullptr);
}

TEST_F(DomainTest, InOrderOfCreation) {
    const std::pair<Pole*, Pole*> roots[] = {
        {b_, a_}, {nullptr, a_}, {a_, a_}, {a_, nullptr}, {nullptr, nullptr}};
    std::vector<Domain*> expected;
    for (const auto& [launch, latch] : roots)
        expected.push_back(Domain::create(launch, latch));
    EXPECT_EQ(walk(analyzer->getDomains()), expected);
    expected[1]->destroy();
    expected.erase(expected.begin() + 1);
    expected.push_back(Domain::create(nullptr, a_));
    EXPECT_EQ(walk(analyzer->getDomains()), expected);
    EXPECT_EQ(analyzer->getDomains().getLast(), expected.back());
    EXPECT_EQ(analyzer->getDomain(nullptr, a_), expected.back());
}

// A walk may destroy the domain that it has passed: exclusive domains are removed this way.
TEST_F(DomainTest, EndBehindAWalk) {
    for (Pole* launch : {a_, b_})
        for (Pole* latch : {a_, b_})
            Domain::create(launch, latch);
    std::vector<Domain*> copy = walk(analyzer->getDomains());
    for (Domain* domain : copy)
        if (domain->getLaunchRoot() != domain->getLatchRoot())
            domain->destroy();
    EXPECT_THAT(walk(analyzer->getDomains()), ElementsAre(copy[0], copy[3]));
    EXPECT_EQ(analyzer->getDomain(a_, b_), nullptr);
    EXPECT_EQ(analyzer->getDomain(b_, b_), copy[3]);
}

TEST_F(DomainTest, ManyRoots) {
    std::vector<Pole*> roots{nullptr};
    for (int i = 0; i < 60; ++i)
        roots.push_back(addPole());
    for (Pole* launch : roots)
        for (Pole* latch : roots)
            Domain::create(launch, latch);
    EXPECT_EQ(analyzer->getDomains().getCount(), 61u * 61u);
    std::vector<Domain*> domains = walk(analyzer->getDomains());
    std::shuffle(domains.begin(), domains.end(), std::mt19937(3));
    for (std::size_t i = 0; i < domains.size() / 2; ++i)
        domains[i]->destroy();
    for (std::size_t i = domains.size() / 2; i < domains.size(); ++i)
        EXPECT_EQ(analyzer->getDomain(domains[i]->getLaunchRoot(), domains[i]->getLatchRoot()), domains[i]);
    EXPECT_EQ(analyzer->getDomains().getCount(), domains.size() - domains.size() / 2);
}

// Domains and exceptions belong to the analyzer for which they were made, whichever is the global one later.
TEST_F(DomainTest, ASecondAnalyzerStandsByItself) {
    Domain* kept = Domain::create(a_, b_);
    CPath* keptException = FPath::create({{a_}, {}});
    Cell* otherCell = Cell::create("other");
    Pole* clk = Pole::createClockSource(otherCell, "clk");
    Pole* in = Pole::createInput(otherCell, "in");
    Edge* edge = connect(in, clk, 2, 7);
    Analyzer* other = Analyzer::create(otherCell);
    Analyzer* first = std::exchange(analyzer, other);
    Domain* domain = Domain::create(clk, clk);
    CPath* exception = MPath::create({{in}, {}}, 3);
    other->setClock(clk, Delay(10), Delay(0), Delay(5), Delay(5));
    other->setInputConstraint(in, IOConstraint(clk, ClockMode::Rising, Delay(1), Delay(2)));
    EXPECT_THAT(walk(other->getDomains()), ElementsAre(domain));
    EXPECT_THAT(walk(other->getCPaths()), ElementsAre(exception));

    analyzer = first;
    EXPECT_EQ(domain->getAnalyzer(), other);
    EXPECT_TRUE(domain->isCritical());
    EXPECT_FALSE(kept->isCritical());
    Subdomain* subdomain = Subdomain::create(domain, ClockMode::Rising, ClockMode::Rising);
    subdomain->setSetupRelation(Delay(10));
    EXPECT_EQ(int(exception->getSlackAdjustment(subdomain, true)), 20);
    EXPECT_EQ(int(Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0))->getSlack()), 1);
    exception->setPseudoMask(PseudoMask(2));
    EXPECT_EQ(in->getOpeningPseudoMask().getBits(), 2u);

    other->destroy();
    EXPECT_TRUE(in->isDestroyable());
    otherCell->destroy();
    EXPECT_EQ(analyzer, first);
    EXPECT_EQ(analyzer->getDomains().getCount(), 1u);
    EXPECT_THAT(walk(analyzer->getDomains()), ElementsAre(kept));
    EXPECT_THAT(walk(analyzer->getCPaths()), ElementsAre(keptException));
    EXPECT_EQ(analyzer->getDomain(nullptr, nullptr), nullptr);
}

TEST_F(DomainTest, Aliases) {
    struct {
        Domain* domain;
        const char* alias;
    } const rows[] = {
        {Domain::create(a_, b_), "a -> b"},
        {Domain::create(a_, nullptr), "a -> none"},
        {Domain::create(nullptr, b_), "none -> b"},
        {Domain::create(nullptr, nullptr), "none -> none"},
    };
    for (const auto& [domain, alias] : rows) {
        SCOPED_TRACE(alias);
        EXPECT_EQ(domain->getAlias(), alias);
    }
}

TEST_F(DomainTest, PathsOfAllSubdomains) {
    Subdomain* late = addSubdomain(a_, b_, ClockMode::Rising, ClockMode::Falling);
    Subdomain* early = addSubdomain(a_, b_, ClockMode::Falling, ClockMode::Rising);
    const auto longest = [](Subdomain* subdomain, int adjust) {
        subdomain->setSetupRelation(Delay(0));
        return Path::createLongest(subdomain, {}, Delay(0), Delay(0), Delay(adjust));
    };
    const auto shortest = [](Subdomain* subdomain, int adjust) {
        subdomain->setHoldRelation(Delay(0));
        return Path::createShortest(subdomain, {}, Delay(0), Delay(0), Delay(adjust));
    };
    Path* e1 = longest(early, -5);
    Path* l2 = longest(late, 2);
    Path* l1 = longest(late, 1);
    Path* s1 = shortest(early, 3);
    const Domain* domain = late->getDomain();
    EXPECT_THAT(walk(domain->getLongestPaths()), ElementsAre(l1, l2, e1)); // grouped by subdomain
    EXPECT_THAT(walk(domain->getShortestPaths()), ElementsAre(s1));
    late->destroy();
    EXPECT_THAT(walk(domain->getSubdomains()), ElementsAre(early));
    EXPECT_THAT(walk(domain->getLongestPaths()), ElementsAre(e1));
    EXPECT_EQ(domain->getSubdomain(ClockMode::Rising, ClockMode::Falling), nullptr);
}

TEST_F(DomainTest, Record) {
    const Support::DebugMode debug(true);
    Subdomain* subdomain = addSubdomain(a_, nullptr, ClockMode::Rising, ClockMode::None);
    subdomain->getDomain()->setAsynchronous(true);
    subdomain->captureLaunch(a_);
    subdomain->setSetupRelation(Delay(7));
    std::ostringstream text;
    std::unique_ptr<Ruvex::Record>(subdomain->getDomain()->_getRecord())->print(text, 1);
    EXPECT_NE(text.str().find("  LaunchRoot: Pole a\n"), std::string::npos);
    EXPECT_EQ(text.str().find("LatchRoot"), std::string::npos);
    const std::size_t end = text.str().find("  Asynchronous");
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(text.str().substr(end), "  Asynchronous: 1\n"
                                      "  Subdomain: Subdomain a:rising -> none\n"
                                      "    Subdomain a:rising -> none\n"
                                      "      [Subdomain]\n"
                                      "      LaunchLeaves: 1\n"
                                      "      LatchLeaves: 0\n"
                                      "      SetupRelation: 7\n"
                                      "      HoldRelation: undefined\n"
                                      "      LAT: undefined\n"
                                      "      SAT: undefined\n"
                                      "      Criticity: 0\n"
                                      "      LongestPaths: 0\n"
                                      "      ShortestPaths: 0\n");
}

} // namespace

} // namespace HostTest
