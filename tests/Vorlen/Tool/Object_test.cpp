// The tool as an object of the host: creation, names, record, and the mode it reads.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

using Support::makeTool;
using Support::ToolPointer;

namespace {

TEST(ToolObject, IsRegisteredUnderItsName) {
    EXPECT_EQ(Pelko::Tool::getTool("Analyzing"), nullptr);
    for (int round = 0; round < 2; ++round) {
        Vorlen::Tool* tool = Vorlen::Tool::create();
        EXPECT_EQ(Pelko::Tool::getTool("Analyzing"), tool);
        EXPECT_EQ(tool->getName(), "Analyzing");
        static_cast<Pelko::Tool*>(tool)->destroy();
        EXPECT_EQ(Pelko::Tool::getTool("Analyzing"), nullptr);
    }
}

TEST(ToolObject, IsCreatedOnce) {
    const ToolPointer tool = makeTool();
    Support::expectThrown({"second",
                           [] { Vorlen::Tool::create(); },
                           typeid(Ruvex::FactoryFailed),
                           "Tool exists already",
                           {"Tool", "preCreate", 2}});
    EXPECT_EQ(Pelko::Tool::getTool("Analyzing"), tool.get());
}

TEST(ToolObject, StartsClosedAndEmpty) {
    const ToolPointer tool = makeTool();
    EXPECT_TRUE(tool->getLoopPoles().isEmpty());
    Support::expectThrown({"not open",
                           [&] { tool->loopClose(); },
                           typeid(Ruvex::InvalidRequest),
                           "Not opened",
                           {"Tool", "loopClose", 537}});
}

TEST(ToolObject, Names) {
    const ToolPointer tool = makeTool();
    EXPECT_EQ(tool->getAlias(), "VORLEN-4.0");
    EXPECT_EQ(tool->_getLabel(), "Tool Analyzing");
    const Pelko::Tool& base = *tool;
    EXPECT_EQ(base.getAlias(), "VORLEN-4.0");
    EXPECT_EQ(base._getLabel(), "Tool Analyzing");
}

TEST(ToolObject, RecordInDebugModeOnly) {
    const ToolPointer tool = makeTool();
    {
        const Support::DebugMode debug(false);
        EXPECT_FALSE(tool->_hasRecord());
        EXPECT_EQ(tool->_getRecord(), nullptr);
    }
    const Support::DebugMode debug(true);
    EXPECT_TRUE(tool->_hasRecord());
    const std::unique_ptr<Ruvex::Record> record(tool->_getRecord());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->_getLabel(), "Tool Analyzing");
    ASSERT_EQ(record->getSlots().size(), 1U) << "a header, and no slots of its own";
    EXPECT_TRUE(record->getSlots()[0]->isHeader());
    EXPECT_EQ(record->getSlots()[0]->getName(), "Vorlen::Tool");
    const std::unique_ptr<Ruvex::Slot> slot(tool->_getSlot());
    ASSERT_TRUE(slot);
    EXPECT_EQ(slot->getDataLabel(), "Tool Analyzing");
    EXPECT_FALSE(slot->isTerminal());
}

TEST(ToolObject, IsExhaustiveByTheModeInForce) {
    const Support::Builder design;
    const ToolPointer tool = makeTool();
    using Mode = Pelko::AnalysisMode;
    const std::pair<Mode::Code, bool> rows[] = {
        {Mode::Exhaustive, true},
        {Mode::Critical, false},
        {Mode::Default, true}, // the default mode is the exhaustive one
    };
    for (const auto& [mode, exhaustive] : rows) {
        Pelko::analyzer->setAnalysisMode(mode);
        EXPECT_EQ(tool->isExhaustive(), exhaustive) << Mode(mode)._getLabel();
    }
}

} // namespace
