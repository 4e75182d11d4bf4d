// The pair of delays: specials, tests, arithmetic, order, widening, label and inspection.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Ruvex/StandardSlot.h"
#include "Vorlen/Timing.h"

#include <gtest/gtest.h>

#include <utility>

using Pelko::Delay;
using Support::maximum;
using Support::minimum;
using Support::undefined;
using Vorlen::Timing;

namespace {

using Pair = std::pair<int, int>;

Timing timing(const Pair& bounds) { return {Delay(bounds.first), Delay(bounds.second)}; }

Pair boundsOf(const Timing& timing) { return {int(timing.getMinimumDelay()), int(timing.getMaximumDelay())}; }

constexpr Pair U{undefined, undefined};
constexpr int greatest = maximum - 1; // the greatest ordinary value
constexpr int least = minimum + 1;

TEST(Timing, Construction) {
    EXPECT_EQ(boundsOf(Timing()), U);
    EXPECT_EQ(boundsOf(Timing(Delay(2), Delay(5))), Pair(2, 5));
    EXPECT_EQ(boundsOf(Timing(Delay(5), Delay(2))), Pair(5, 2)) << "the bounds are independent";
    const Timing original(Delay(2), Delay(5));
    Timing copy(original);
    EXPECT_EQ(boundsOf(copy), Pair(2, 5));
    copy.setMinimumDelay(Delay(7));
    EXPECT_EQ(boundsOf(copy), Pair(7, 5));
    copy.setMaximumDelay(Delay(8));
    EXPECT_EQ(boundsOf(copy), Pair(7, 8));
    EXPECT_EQ(&(copy = original), &copy);
    EXPECT_EQ(boundsOf(copy), Pair(2, 5));
    EXPECT_EQ(boundsOf(original), Pair(2, 5));
}

TEST(Timing, Specials) {
    struct Row {
        const Timing& (*get)();
        Delay bound;
        const char* label;
    };
    const Row rows[] = {
        {Timing::getNone, Delay::getNone(), "[0:0]"},
        {Timing::getMinimum, Delay::getMinimum(), "[minimum]"},
        {Timing::getMaximum, Delay::getMaximum(), "[maximum]"},
        {Timing::getUndefined, Delay::getUndefined(), "[undefined]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(boundsOf(row.get()), Pair(int(row.bound), int(row.bound)));
        EXPECT_EQ(row.get()._getLabel(), row.label);
        EXPECT_EQ(&row.get(), &row.get()) << "one object each";
    }
}

TEST(Timing, TestsAndLabels) {
    struct Row {
        Pair bounds;
        bool isMinimum, isMaximum, isUndefined;
        const char* label;
    };
    const Row rows[] = {
        {U, false, false, true, "[undefined]"},
        {{undefined, 5}, false, false, true, "[undefined]"},
        {{5, undefined}, false, false, true, "[undefined]"},
        {{undefined, minimum}, false, false, true, "[undefined]"},
        {{maximum, undefined}, false, false, true, "[undefined]"},
        {{minimum, minimum}, true, false, false, "[minimum]"},
        {{minimum, 7}, false, false, false, "[minimum:7]"},
        {{7, minimum}, false, false, false, "[7:minimum]"},
        {{maximum, maximum}, false, true, false, "[maximum]"},
        {{maximum, 7}, false, false, false, "[maximum:7]"},
        {{7, maximum}, false, false, false, "[7:maximum]"},
        {{minimum, maximum}, false, false, false, "[minimum:maximum]"},
        {{2, 5}, false, false, false, "[2:5]"},
        {{-2, -5}, false, false, false, "[-2:-5]"},
        {{0, 0}, false, false, false, "[0:0]"},
        {{least, greatest}, false, false, false, "[-2147483646:2147483646]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        const Timing value = timing(row.bounds);
        EXPECT_EQ(value.isMinimum(), row.isMinimum);
        EXPECT_EQ(value.isMaximum(), row.isMaximum);
        EXPECT_EQ(value.isUndefined(), row.isUndefined);
        EXPECT_EQ(value._getLabel(), row.label);
    }
    EXPECT_EQ(Timing()._getLabel(), "[undefined]");
    EXPECT_EQ(timing({2, 5})._getLabel(), "[" + Delay(2)._getLabel() + ":" + Delay(5)._getLabel() + "]");
}

TEST(Timing, SumsAndDifferences) {
    struct Row {
        Pair a, b, sum, difference;
    };
    const Row rows[] = {
        {{2, 5}, {1, 1}, {3, 6}, {1, 4}},
        {{2, 5}, {10, 20}, {12, 25}, {-8, -15}},
        {{2, 5}, {2, 5}, {4, 10}, {0, 0}},
        {{1, 2}, {3, 9}, {4, 11}, {-2, -7}}, // the difference has its minimum above its maximum
        {{9, 9}, {0, 9}, {9, 18}, {9, 0}},
        {{2, 5}, {0, 0}, {2, 5}, {2, 5}},
        {{2, 5}, U, U, U},
        {{2, 5}, {undefined, 1}, {undefined, 6}, {undefined, 4}},
        {{2, 5}, {1, undefined}, {3, undefined}, {1, undefined}},
        {{minimum, maximum}, {7, 7}, {minimum, maximum}, {minimum, maximum}},
        {{minimum, maximum}, {maximum, minimum}, U, {minimum, maximum}},
        {{minimum, maximum}, {minimum, maximum}, {minimum, maximum}, U},
        {{greatest, least}, {1, -1}, {maximum, minimum}, {greatest - 1, least + 1}},
        {{least, greatest}, {1, -1}, {least + 1, greatest - 1}, {minimum, maximum}},
    };
    for (const Row& row : rows) {
        const Timing a = timing(row.a);
        const Timing b = timing(row.b);
        SCOPED_TRACE(a._getLabel() + " and " + b._getLabel());
        EXPECT_EQ(boundsOf(a + b), row.sum);
        EXPECT_EQ(boundsOf(a - b), row.difference);
        Timing grown = a;
        EXPECT_EQ(&(grown += b), &grown);
        EXPECT_EQ(boundsOf(grown), row.sum);
        Timing shrunk = a;
        EXPECT_EQ(&(shrunk -= b), &shrunk);
        EXPECT_EQ(boundsOf(shrunk), row.difference);
        EXPECT_EQ(boundsOf(a), row.a);
        EXPECT_EQ(boundsOf(b), row.b);
    }
    Timing self = timing({2, 5});
    self += self;
    EXPECT_EQ(boundsOf(self), Pair(4, 10));
    self -= self;
    EXPECT_EQ(boundsOf(self), Pair(0, 0));
}

TEST(Timing, Negation) {
    const std::pair<Pair, Pair> rows[] = {
        {{2, 5}, {-2, -5}}, // each keeps its place
        {{-2, -5}, {2, 5}},
        {{0, 0}, {0, 0}},
        {{undefined, 5}, {undefined, -5}},
        {{minimum, maximum}, {maximum, minimum}},
        {{least, greatest}, {greatest, least}},
    };
    for (const auto& [bounds, negated] : rows)
        EXPECT_EQ(boundsOf(-timing(bounds)), negated) << timing(bounds)._getLabel();
}

TEST(Timing, Order) {
    struct Row {
        Pair a, b;
        bool equal, less, greater;
    };
    const Row rows[] = {
        {{3, 9}, {3, 9}, true, false, false},
        {{3, 9}, {3, 10}, false, true, false},
        {{2, 100}, {3, 0}, false, true, false},
        {{3, 9}, {4, 9}, false, true, false},
        {{4, 0}, {3, 9}, false, false, true},
        {{-3, 0}, {3, 0}, false, true, false},
        {U, U, true, false, false},
        {U, {minimum, 0}, false, true, false},
        {{3, undefined}, {3, 0}, false, true, false},
        {{minimum, minimum}, {least, minimum}, false, true, false},
        {{greatest, 0}, {maximum, 0}, false, true, false},
    };
    for (const Row& row : rows) {
        const Timing a = timing(row.a);
        const Timing b = timing(row.b);
        SCOPED_TRACE(a._getLabel() + " and " + b._getLabel());
        EXPECT_EQ(a == b, row.equal);
        EXPECT_EQ(b == a, row.equal);
        EXPECT_EQ(a != b, !row.equal);
        EXPECT_EQ(a < b, row.less);
        EXPECT_EQ(b < a, row.greater);
    }
}

TEST(Timing, CombineWidens) {
    struct Row {
        Pair value, other, combined;
    };
    const Row rows[] = {
        {U, {2, 5}, {2, 5}},
        {{1, 4}, {2, 5}, {1, 5}},
        {{1, 4}, {undefined, 9}, {1, 9}},
        {{1, 4}, {0, undefined}, {0, 4}},
        {{1, 4}, U, {1, 4}},
        {U, U, U},
        {U, {undefined, 9}, {undefined, 9}},
        {U, {0, undefined}, {0, undefined}},
        {{undefined, 4}, {2, 3}, {2, 4}},
        {{1, undefined}, {2, 3}, {1, 3}},
        {{1, 4}, {2, 3}, {1, 4}},
        {{2, 3}, {1, 4}, {1, 4}},
        {{1, 4}, {1, 4}, {1, 4}},
        {{1, 4}, {minimum, maximum}, {minimum, maximum}},
        {{maximum, minimum}, {1, 4}, {1, 4}},
        {{5, 1}, {3, 0}, {3, 1}},
    };
    for (const Row& row : rows) {
        Timing value = timing(row.value);
        const Timing other = timing(row.other);
        SCOPED_TRACE(value._getLabel() + " with " + other._getLabel());
        EXPECT_EQ(&value.combine(other), &value);
        EXPECT_EQ(boundsOf(value), row.combined);
        EXPECT_EQ(boundsOf(other), row.other);
    }
    Timing self = timing({1, 4});
    self.combine(self);
    EXPECT_EQ(boundsOf(self), Pair(1, 4));
}

// --- Inspection ---

TEST(Timing, NoRecordOutsideDebugMode) {
    const Support::DebugMode debug(false);
    const Timing value = timing({2, 5});
    EXPECT_FALSE(value._hasRecord());
    EXPECT_EQ(value._getRecord(), nullptr);
}

TEST(Timing, RecordInDebugMode) {
    const Support::DebugMode debug(true);
    const Timing value = timing({2, 5});
    EXPECT_TRUE(value._hasRecord());
    const std::unique_ptr<Ruvex::Record> record(value._getRecord());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->_getLabel(), "[2:5]");
    const auto& slots = record->getSlots();
    ASSERT_EQ(slots.size(), 3U);
    struct Row {
        const char* name;
        bool isHeader;
        const char* data;
    };
    const Row rows[] = {{"Timing", true, ""}, {"MinimumDelay", false, "2"}, {"MaximumDelay", false, "5"}};
    for (std::size_t i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i]->getName(), rows[i].name);
        EXPECT_EQ(slots[i]->isHeader(), rows[i].isHeader);
        EXPECT_EQ(slots[i]->getDataLabel(), rows[i].data);
        EXPECT_EQ(slots[i]->getOwner(), record.get());
    }
}

// A kind of timing that decides whether it has a record.
class RecordedTiming : public Timing {
public:
    RecordedTiming(bool recorded) : Timing(Delay(2), Delay(5)), recorded_(recorded) {}
    bool _hasRecord() const override { return recorded_; }

private:
    bool recorded_;
};

TEST(Timing, RecordAsksVirtually) {
    for (const bool debugOn : {false, true})
        for (const bool recorded : {false, true}) {
            const Support::DebugMode debug(debugOn);
            const std::unique_ptr<Ruvex::Record> record(RecordedTiming(recorded)._getRecord());
            EXPECT_EQ(record != nullptr, recorded) << "debug " << debugOn;
        }
}

TEST(Timing, SlotHoldsACopy) {
    for (const bool debugOn : {false, true}) {
        SCOPED_TRACE(debugOn);
        const Support::DebugMode debug(debugOn);
        Timing value = timing({2, 5});
        const std::unique_ptr<Ruvex::Slot> slot(value._getSlot());
        ASSERT_TRUE(slot);
        value = Timing::getUndefined();
        const auto* standard = dynamic_cast<Ruvex::StandardSlot<Timing>*>(slot.get());
        ASSERT_TRUE(standard);
        EXPECT_EQ(boundsOf(standard->getValue()), Pair(2, 5));
        EXPECT_EQ(slot->getDataLabel(), "[2:5]");
        EXPECT_EQ(slot->isTerminal(), !debugOn);
        const std::unique_ptr<Ruvex::Record> data(slot->getDataRecord());
        EXPECT_EQ(data != nullptr, debugOn);
        if (data) {
            EXPECT_EQ(data->_getLabel(), "[2:5]");
        }
        EXPECT_FALSE(slot->isHeader());
        EXPECT_EQ(slot->getName(), "");
        EXPECT_EQ(slot->getOwner(), nullptr);
    }
}

} // namespace
