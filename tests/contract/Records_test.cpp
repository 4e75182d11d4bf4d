// Records and slots: what a debugging view displays of values, maps and objects.
#include "Design.h"
#include "tests/support/Recorder.h"

#include "Ruvex/StandardSlot.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace Contract {

namespace {

using namespace Ruvex;
using Pelko::ClockMode;
using Pelko::Delay;
using Pelko::PseudoMask;
using Support::DebugMode;

std::string printed(const Record& record, unsigned depth = 2, unsigned indentation = 0) {
    std::ostringstream text;
    record.print(text, depth, indentation);
    return text.str();
}

template <class T>
std::unique_ptr<Slot> slotOf(const T& value) {
    return std::make_unique<StandardSlot<T>>(value);
}

// --- Slots ---

TEST(Slots, NameOwnerHeader) {
    Record record("record");
    struct {
        std::unique_ptr<Slot> slot;
        bool header;
        const char* bare;  // the label without a name
        const char* named; // with the name "n"
    } const rows[] = {
        {std::unique_ptr<Slot>(NullSlot::create()), false, "", "n"},
        {std::make_unique<HeaderSlot>("Title"), true, "Title", "n"},
        {slotOf(Delay(7)), false, "7", "n: 7"},
        {slotOf(Delay::getUndefined()), false, "undefined", "n: undefined"},
        {slotOf(12UL), false, "12", "n: 12"},
        {slotOf(PseudoMask(5)), false, "{1 3}", "n: {1 3}"},
        {slotOf(ClockMode(ClockMode::Rising)), false, "rising", "n: rising"},
    };
    for (const auto& [slot, header, bare, named] : rows) {
        SCOPED_TRACE(named);
        EXPECT_EQ(slot->isHeader(), header) << named;
        EXPECT_EQ(slot->_getLabel(), bare);
        EXPECT_TRUE(slot->isTerminal());
        EXPECT_EQ(slot->getDataRecord(), nullptr);
        EXPECT_EQ(slot->getOwner(), nullptr);
        slot->setName("n");
        slot->setOwner(&record);
        EXPECT_EQ(slot->getName(), "n");
        EXPECT_EQ(slot->getOwner(), &record);
        EXPECT_EQ(slot->_getLabel(), named);
    }
}

TEST(Slots, HoldCopies) {
    Delay delay(7);
    const StandardSlot<Delay> slot(delay);
    delay += Delay(1);
    EXPECT_EQ(int(slot.getValue()), 7);
    EXPECT_EQ(slot.getDataLabel(), "7");
}

TEST(Slots, OfValues) {
    const std::unique_ptr<Slot> slots[] = {
        std::unique_ptr<Slot>(Delay(3)._getSlot()),
        std::unique_ptr<Slot>(PseudoMask(2)._getSlot()),
        std::unique_ptr<Slot>(ClockMode(ClockMode::Falling)._getSlot()),
    };
    const char* const labels[] = {"3", "{2}", "falling"};
    for (std::size_t i = 0; i < std::size(slots); ++i)
        EXPECT_EQ(slots[i]->_getLabel(), labels[i]);
}

TEST(Labels, OfCountsTextsAndNull) {
    EXPECT_EQ(getLabel(0UL), "0");
    EXPECT_EQ(getLabel(18446744073709551615UL), "18446744073709551615");
    EXPECT_EQ(getLabel(Delay(5)), "5");
    EXPECT_EQ(getLabel(static_cast<const Delay*>(nullptr)), "null");
    EXPECT_EQ(Label::create("text").getText(), "text");
    EXPECT_EQ(Label::create("").getText(), "");
}

// --- Maps ---

using DelayMap = std::map<unsigned long, Delay>;
using DelayMapMap =
    std::map<PseudoMask, DelayMap,
             decltype([](const PseudoMask& a, const PseudoMask& b) { return a.getBits() < b.getBits(); })>;

DelayMap mapOf(unsigned long count) {
    DelayMap map;
    for (unsigned long i = 0; i < count; ++i)
        map.emplace(i, Delay(static_cast<int>(10 * i)));
    return map;
}

TEST(Maps, LabelsInAndOutOfDebugMode) {
    struct {
        unsigned long count;
        const char* label;
        const char* debugLabel;
    } const rows[] = {
        {0, "{empty}", "map:{empty}"},
        {1, "{1 element}", "map:{1 element}"},
        {2, "{2 elements}", "map:{2 elements}"},
        {1234, "{1234 elements}", "map:{1234 elements}"},
    };
    for (const auto& [count, label, debugLabel] : rows) {
        SCOPED_TRACE(label);
        const auto slot = slotOf(mapOf(count));
        for (const bool debug : {false, true}) {
            SCOPED_TRACE(debug);
            const DebugMode mode(debug);
            EXPECT_EQ(slot->getDataLabel(), debug ? debugLabel : label);
            EXPECT_EQ(slot->isTerminal(), !debug || count == 0);
            const std::unique_ptr<Record> record(slot->getDataRecord());
            ASSERT_EQ(record != nullptr, debug && count != 0);
            if (record) {
                EXPECT_EQ(record->_getLabel(), debugLabel);
                EXPECT_EQ(record->getSlots().size(), count);
            }
        }
    }
}

TEST(Maps, RecordsNest) {
    const DebugMode mode(true);
    DelayMapMap maps;
    maps[PseudoMask(1)] = mapOf(2);
    maps[PseudoMask(2)] = mapOf(0);
    Record record("top");
    record.add("Maps", new StandardSlot<DelayMapMap>(maps));
    const std::string full = "top\n"
                             "  Maps: map:{2 elements}\n"
                             "    map:{2 elements}\n"
                             "      {1}: map:{2 elements}\n"
                             "        map:{2 elements}\n"
                             "          0: 0\n"
                             "          1: 10\n"
                             "      {2}: map:{empty}\n";
    EXPECT_EQ(printed(record), full);
    EXPECT_EQ(printed(record, 1), "top\n"
                                  "  Maps: map:{2 elements}\n"
                                  "    map:{2 elements}\n"
                                  "      {1}: map:{2 elements}\n"
                                  "      {2}: map:{empty}\n");
    EXPECT_EQ(printed(record, 0), "top\n  Maps: map:{2 elements}\n");
}

// --- Records ---

TEST(Records, HoldTheirSlotsInOrder) {
    Record record("label");
    EXPECT_EQ(printed(record), "label\n");
    record.addHeader("First");
    record.add("Delay", new StandardSlot<Delay>(Delay(3)));
    record.add("Nothing", nullptr);
    record.add("Flag", NullSlot::create());
    record.addHeader("Second");
    record.add("Count", new StandardSlot<unsigned long>(4));
    const std::vector<std::string> names{"First", "Delay", "Flag", "Second", "Count"};
    ASSERT_EQ(record.getSlots().size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(record.getSlots()[i]->getName(), names[i]);
        EXPECT_EQ(record.getSlots()[i]->getOwner(), &record);
        EXPECT_EQ(record.getSlots()[i]->isHeader(), i == 0 || i == 3);
    }
    EXPECT_EQ(record._getLabel(), "label");
    EXPECT_EQ(printed(record), "label\n  [First]\n  Delay: 3\n  Flag\n  [Second]\n  Count: 4\n");
    EXPECT_EQ(printed(record, 2, 1),
              "  label\n    [First]\n    Delay: 3\n    Flag\n    [Second]\n    Count: 4\n");
}

TEST(Records, OfObjectsInDebugModeOnly) {
    const auto design = Design::create();
    Pelko::Pole* a = design->addPole("a");
    Pelko::Edge* edge = design->addEdge(a, design->addPole("b"), 1, 2);
    for (const Pelko::Object* object : {static_cast<Pelko::Object*>(a), static_cast<Pelko::Object*>(edge)}) {
        EXPECT_FALSE(object->_hasRecord());
        EXPECT_EQ(object->_getRecord(), nullptr);
        const DebugMode mode(true);
        EXPECT_TRUE(object->_hasRecord());
        const std::unique_ptr<Record> record(object->_getRecord());
        ASSERT_TRUE(record);
        EXPECT_EQ(record->_getLabel(), object->_getLabel());
        ASSERT_FALSE(record->getSlots().empty());
        EXPECT_TRUE(record->getSlots().front()->isHeader());
    }
}

TEST(Records, SlotsOfObjects) {
    const auto design = Design::create();
    Pelko::Pole* pole = design->addPole("u1/A");
    const ObjectSlot<Pelko::Pole> slot(pole);
    const ObjectSlot<Pelko::Pole> null(nullptr);
    for (const bool debug : {false, true}) {
        SCOPED_TRACE(debug);
        const DebugMode mode(debug);
        EXPECT_EQ(slot.getDataLabel(), "Pole u1/A");
        EXPECT_EQ(slot.isTerminal(), !debug);
        EXPECT_EQ(std::unique_ptr<Record>(slot.getDataRecord()) != nullptr, debug);
        EXPECT_EQ(null.getDataLabel(), "null");
        EXPECT_TRUE(null.isTerminal());
        EXPECT_EQ(null.getDataRecord(), nullptr);
    }
}

} // namespace

} // namespace Contract
