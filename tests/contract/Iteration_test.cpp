// The cost of a walk over the graph: a loop over the arcs of a pole, or over the poles and arcs of the cell,
// allocates nothing.
#include "Allocations.h"
#include "Design.h"

#include <gtest/gtest.h>

#include <array>

namespace Contract {

namespace {

using namespace Pelko;

// Counts the allocations of an action: the calls of this program's operator new.
template <class Action>
unsigned long countAllocations(Action action) {
    const unsigned long before = getAllocationCount();
    action();
    return getAllocationCount() - before;
}

class Iteration : public testing::Test {
protected:
    // Adds a pole with `arcs` arcs in and as many out. If `holes`, every third of them is destroyed again.
    Pole* addHub(int arcs, bool holes) {
        Pole* hub = design_->addPole("hub");
        std::vector<Edge*> ended;
        for (int i = 0; i < arcs; ++i) {
            Edge* in = design_->addEdge(design_->addPole({}), hub, i, i);
            Edge* out = design_->addEdge(hub, design_->addPole({}), i, i);
            if (holes && i % 3 == 1)
                ended.insert(ended.end(), {in, out});
        }
        for (Edge* edge : ended)
            edge->destroy();
        return hub;
    }

    std::unique_ptr<Design> design_ = Design::create();
};

TEST_F(Iteration, TheCounterCountsProgramAndLibrary) {
    Pole* pole = design_->addPole("a name that does not fit into a string without an allocation");
    EXPECT_EQ(countAllocations([] {}), 0u);
    EXPECT_EQ(countAllocations([] { std::vector<int> one(1); }), 1u);
    EXPECT_GE(countAllocations([pole] { EXPECT_FALSE(pole->getName().empty()); }), 1u);
}

TEST_F(Iteration, OverArcsAllocatesNothing) {
    for (const int arcs : {0, 1, 2, 3, 16, 17, 1000})
        for (const bool holes : {false, true}) {
            SCOPED_TRACE(holes);
            Pole* hub = addHub(arcs, holes);
            unsigned long incoming = 0, outgoing = 0;
            std::int64_t sum = 0;
            EXPECT_EQ(countAllocations([&] {
                          for (Edge* edge : hub->getIncomingEdges()) {
                              ++incoming;
                              sum += int(edge->getMaxDelay());
                          }
                          for (Edge* edge : hub->getOutgoingEdges()) {
                              ++outgoing;
                              sum -= int(edge->getMaxDelay());
                          }
                      }),
                      0u)
                << arcs << (holes ? " with holes" : "");
            const auto expected = static_cast<unsigned long>(arcs - (holes ? (arcs + 1) / 3 : 0));
            EXPECT_EQ(incoming, expected);
            EXPECT_EQ(outgoing, expected);
            EXPECT_EQ(sum, 0);
        }
}

TEST_F(Iteration, OverTheCellAllocatesNothing) {
    addHub(40, true);
    unsigned long poles = 0, edges = 0;
    EXPECT_EQ(countAllocations([&] {
                  for (Pole* pole : cell->getPoles())
                      poles += pole != nullptr;
                  for (Edge* edge : cell->getEdges())
                      edges += edge != nullptr;
              }),
              0u);
    EXPECT_EQ(poles, 81u);
    EXPECT_EQ(edges, 54u);
}

TEST_F(Iteration, QueriesOfArcsAllocateNothing) {
    Pole* hub = addHub(17, true);
    Edge* first = hub->getIncomingEdges().getFirst();
    const Edge* found = nullptr;
    EXPECT_EQ(countAllocations([&] {
                  hub->getIncomingEdges().getCount();
                  hub->getIncomingEdges().isEmpty();
                  hub->getOutgoingEdges().getLast();
                  for (Ruvex::Locator<Edge*> l = hub->getOutgoingEdges().getLocator(); l.isValid();
                       l.progress())
                      l.getClone().getCurrent();
                  found = hub->getIncomingEdge(first->getSource());
                  hub->mark();
                  analyzer->unmark();
                  hub->insulate();
              }),
              0u);
    EXPECT_EQ(found, first);
}

// The innermost loops read the exceptions of a mask.
TEST_F(Iteration, OverExceptionsAllocatesNothing) {
    Pole* pole = design_->addPole("p");
    for (unsigned long i = 1; i <= 8; ++i)
        design_->addMulticycle({pole}, {}, i)->setPseudoMask(PseudoMask(1UL << i));
    unsigned long cycles = 0, count = 0;
    EXPECT_EQ(countAllocations([&] {
                  for (CPath* path : analyzer->getCPaths(PseudoMask(0b101010))) {
                      cycles += path->getPseudoMask().getBits();
                      ++count;
                  }
                  for (CPath* path : analyzer->getCPaths(PseudoMask()))
                      cycles += path->getPseudoMask().getBits();
              }),
              0u);
    EXPECT_EQ(cycles, 0b101010u);
    EXPECT_EQ(count, 3u);
}

} // namespace

} // namespace Contract
