// The cell: dense indices, holes left by destroyed objects, the order of iteration, names.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Rows.h"

#include <random>

namespace HostTest {

namespace {

class CellTest : public ModelTest {
protected:
    template <class T>
    static std::vector<std::uint32_t> indicesOf(const Ruvex::Collection<T*>& objects) {
        std::vector<std::uint32_t> indices;
        for (const T* object : objects)
            indices.push_back(object->getIndex());
        return indices;
    }
};

TEST_F(CellTest, IndicesAreDenseAndNeverGivenAgain) {
    std::vector<Pole*> poles;
    for (int i = 0; i < 5; ++i)
        poles.push_back(addPole());
    EXPECT_THAT(indicesOf(cell->getPoles()), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(cell->getPoleBound(), 5u);
    poles[4]->destroy();
    poles[0]->destroy();
    poles[2]->destroy();
    EXPECT_THAT(indicesOf(cell->getPoles()), ElementsAre(1, 3));
    EXPECT_EQ(cell->getPoleBound(), 5u);
    Pole* later = addPole();
    EXPECT_EQ(later->getIndex(), 5u);
    EXPECT_EQ(later->getName(), "pole#5");
    EXPECT_THAT(walk(cell->getPoles()), ElementsAre(poles[1], poles[3], later));

    Edge* first = connect(poles[1], poles[3]);
    Edge* second = connect(poles[3], later);
    EXPECT_THAT(indicesOf(cell->getEdges()), ElementsAre(0, 1));
    first->destroy();
    Edge* again = connect(poles[1], poles[3]);
    EXPECT_THAT(walk(cell->getEdges()), ElementsAre(second, again));
    EXPECT_THAT(indicesOf(cell->getEdges()), ElementsAre(1, 2));
    EXPECT_EQ(cell->getEdgeBound(), 3u);
}

TEST_F(CellTest, CollectionsPassOverHoles) {
    std::vector<Pole*> poles;
    for (int i = 0; i < 6; ++i)
        poles.push_back(addPole());
    for (std::size_t i : {0U, 1U, 3U, 5U})
        poles[i]->destroy();
    const Poles left = cell->getPoles();
    EXPECT_EQ(left.getCount(), 2u);
    EXPECT_TRUE(left.hasCount(2));
    EXPECT_FALSE(left.isEmpty());
    EXPECT_EQ(left.getFirst(), poles[2]);
    EXPECT_EQ(left.getLast(), poles[4]);
    EXPECT_EQ(left.getAt(0), poles[2]);
    EXPECT_EQ(left.getAt(1), poles[4]);
    EXPECT_EQ(left.getAt(2), nullptr);
    EXPECT_TRUE(left.contains(poles[4]));
    EXPECT_FALSE(left.contains(nullptr));
    poles[2]->destroy();
    poles[4]->destroy();
    EXPECT_TRUE(cell->getPoles().isEmpty());
    EXPECT_EQ(cell->getPoles().getFirst(), nullptr);
    EXPECT_EQ(cell->getPoles().getLast(), nullptr);
    EXPECT_EQ(cell->getPoleBound(), 6u);
}

TEST_F(CellTest, WhatEndsAheadOfAWalkIsPassedOver) {
    std::vector<Pole*> poles;
    for (int i = 0; i < 6; ++i)
        poles.push_back(addPole());
    connect(poles[0], poles[3]);
    Edge* last = connect(poles[0], poles[5]);
    std::vector<Pole*> seen;
    for (Pole* pole : cell->getPoles()) {
        seen.push_back(pole);
        if (pole == poles[1])
            for (std::size_t i : {0U, 1U, 2U, 3U})
                poles[i]->destroy();
    }
    EXPECT_THAT(seen, ElementsAre(poles[0], poles[1], poles[4], poles[5]));
    EXPECT_TRUE(cell->getEdges().isEmpty());
    EXPECT_FALSE(cell->getEdges().contains(last));
}

// Random creation and destruction, against a plain list in order of creation.
TEST_F(CellTest, OrderOfCreationSurvivesAnyHistory) {
    const unsigned seed = 20240;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    std::vector<Pole*> expected;
    std::uint32_t made = 0;
    for (int step = 0; step < 20000; ++step) {
        if (expected.empty() || generator() % 5 < 3) {
            expected.push_back(addPole());
            ASSERT_EQ(expected.back()->getIndex(), made++);
        } else {
            const auto victim = expected.begin() + static_cast<std::ptrdiff_t>(generator() % expected.size());
            (*victim)->destroy();
            expected.erase(victim);
        }
        if (step % 500 == 0) {
            ASSERT_EQ(walk(cell->getPoles()), expected);
            ASSERT_EQ(cell->getPoles().getCount(), expected.size());
        }
    }
    EXPECT_EQ(walk(cell->getPoles()), expected);
    EXPECT_EQ(cell->getPoleBound(), made);
}

TEST_F(CellTest, Names) {
    Pin* pin = Pin::create(Instance::create(model_.getModule(), "u1"), "A");
    Pin* netted = Pin::create(Instance::create(model_.getModule(), "u2"), "A");
    netted->connect(Net::create(model_.getModule(), "n1"));
    struct {
        Pole* pole;
        const char* name;
        const char* netUserName;
    } const rows[] = {
        {addPole("own"), "own", "own"},
        {addPole(), "pole#1", "pole#1"},
        {Pole::create(cell, pin), "u1/A", "u1/A"},
        {Pole::create(cell, pin, "own"), "own", "own"}, // names need not differ
        {Pole::create(cell, netted), "u2/A", "n1"},
        {Pole::create(cell, netted, "own"), "own", "n1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.pole->getName(), row.name);
        EXPECT_EQ(row.pole->getAlias(), row.name);
        EXPECT_EQ(row.pole->getNetUserName(), row.netUserName);
    }
    rows[0].pole->destroy();
    EXPECT_EQ(addPole()->getName(), "pole#6");
    EXPECT_EQ(rows[3].pole->getName(), "own");
}

// These sizes decide the memory that ten million arcs and seven million poles take.
TEST_F(CellTest, ObjectsAreSmall) {
    EXPECT_LE(sizeof(Pole), 128u);
    EXPECT_LE(sizeof(Edge), 80u);
}

TEST_F(CellTest, ReserveChangesNothingVisible) {
    Pole* a = addPole("a");
    Edge* edge = connect(a, addPole("b"));
    const std::string before = takeSnapshot();
    cell->reserve(10000, 10000);
    cell->reserve(0, 0);
    EXPECT_EQ(takeSnapshot(), before);
    EXPECT_EQ(cell->getEdges().getFirst(), edge);
}

TEST(CellWithoutAnalyzer, EndsWithItsPoles) {
    Cell* alone = Cell::create("alone");
    Pole* a = Pole::create(alone, "a");
    Pole* b = Pole::create(alone, "b");
    a->setClockPole(b);
    b->setMainPole(a);
    Edge::create(a, b, Delay(1), Delay(1));
    EXPECT_EQ(alone->getModule()->getName(), "alone");
    EXPECT_EQ(alone->getModule()->getCell(), alone);
    EXPECT_TRUE(alone->isDestroyable());
    alone->destroy();
    EXPECT_EQ(cell, nullptr);
}

TEST_F(CellTest, ASecondCellStandsByItself) {
    Cell* other = Cell::create("other");
    Pole* here = addPole("a");
    Pole* there = Pole::create(other, "a");
    EXPECT_EQ(there->getIndex(), 0u);
    EXPECT_EQ(there->getCell(), other);
    EXPECT_EQ(cell->getPoles().getCount(), 1u);
    expectRefused({"across cells",
                   [&] { connect(here, there); },
                   factoryFailed,
                   "Poles of two cells",
                   {"Edge", "preCreate", 4}});
    other->destroy();
    EXPECT_EQ(cell, model_.getCell());
    EXPECT_EQ(walk(cell->getPoles()), std::vector<Pole*>{here});
}

} // namespace

} // namespace HostTest
