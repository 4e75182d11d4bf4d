// The registry of tools: a tool is known by its name while it lives, and a name is given once.
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include "Pelko/Tool.h"

#include <memory>

namespace Contract {

namespace {

using Pelko::Tool;

class ProbeTool : public Tool {
public:
    static ProbeTool* create(const std::string& name) {
        preCreate(name);
        auto* tool = new ProbeTool(name);
        tool->postCreate(name);
        return tool;
    }
    static void finish(ProbeTool* tool, const std::string& name) { tool->postCreate(name); }
    explicit ProbeTool(const std::string& name) : Tool(name) {}
    ~ProbeTool() override { events += " end"; }

    bool launch() override {
        events += " launch";
        return result;
    }

    static inline std::string events;
    bool result = true;

protected:
    void preDestroy() override {
        events += " preDestroy";
        Tool::preDestroy();
        events += getTool(getName()) ? " known" : " unknown";
    }
};

TEST(Tools, AreKnownWhileTheyLive) {
    ProbeTool::events.clear();
    EXPECT_EQ(Tool::getTool("Probing"), nullptr);
    ProbeTool* probe = ProbeTool::create("Probing");
    ProbeTool* other = ProbeTool::create("Other");
    EXPECT_EQ(Tool::getTool("Probing"), probe);
    EXPECT_EQ(Tool::getTool("Other"), other);
    EXPECT_EQ(Tool::getTool("probing"), nullptr);
    EXPECT_EQ(Tool::getTool(""), nullptr);
    other->destroy();
    EXPECT_EQ(Tool::getTool("Other"), nullptr);
    EXPECT_EQ(Tool::getTool("Probing"), probe);
    ProbeTool::events.clear();
    probe->destroy();
    EXPECT_EQ(ProbeTool::events, " preDestroy unknown end");
    EXPECT_EQ(Tool::getTool("Probing"), nullptr);
    ProbeTool* again = ProbeTool::create("Probing");
    EXPECT_EQ(Tool::getTool("Probing"), again);
    again->destroy();
}

TEST(Tools, Refusals) {
    ProbeTool* probe = ProbeTool::create("Probing");
    ProbeTool unregistered("Unregistered");
    const Support::Fault faults[] = {
        {"again",
         [] { ProbeTool::create("Probing"); },
         typeid(Ruvex::FactoryFailed),
         "Tool exists already",
         {"Tool", "preCreate", 2}},
        {"no name",
         [] { ProbeTool::create(""); },
         typeid(Ruvex::FactoryFailed),
         "Empty tool name",
         {"Tool", "preCreate", 1}},
        {"another name",
         [&unregistered] { ProbeTool::finish(&unregistered, "Another"); },
         typeid(Ruvex::InvalidRequest),
         "Tool of another name",
         {"Tool", "postCreate", 3}},
    };
    for (const Support::Fault& fault : faults) {
        Support::expectThrown(fault);
        EXPECT_EQ(Tool::getTool("Probing"), probe);
        for (const char* name : {"", "Another", "Unregistered"})
            EXPECT_EQ(Tool::getTool(name), nullptr);
    }
    probe->destroy();
}

TEST(Tools, Inspection) {
    ProbeTool* probe = ProbeTool::create("Probing");
    const Tool* tool = probe;
    EXPECT_EQ(tool->getName(), "Probing");
    EXPECT_EQ(tool->getAlias(), "Probing");
    EXPECT_EQ(tool->_getLabel(), "Tool Probing");
    const std::unique_ptr<Ruvex::Slot> slot(tool->_getSlot());
    ASSERT_TRUE(slot);
    EXPECT_EQ(slot->_getLabel(), "Tool Probing");
    EXPECT_FALSE(tool->_hasRecord());
    EXPECT_EQ(tool->_getRecord(), nullptr);
    {
        const Support::DebugMode debug(true);
        EXPECT_TRUE(tool->_hasRecord());
        const std::unique_ptr<Ruvex::Record> record(tool->_getRecord());
        ASSERT_TRUE(record);
        EXPECT_EQ(record->_getLabel(), "Tool Probing");
        EXPECT_TRUE(record->getSlots().empty());
    }
    probe->destroy();
}

TEST(Tools, AreLaunchedByTheirBase) {
    ProbeTool* probe = ProbeTool::create("Probing");
    Tool* tool = Tool::getTool("Probing");
    ASSERT_EQ(tool, probe);
    ProbeTool::events.clear();
    EXPECT_TRUE(tool->launch());
    probe->result = false;
    EXPECT_FALSE(tool->launch());
    EXPECT_EQ(ProbeTool::events, " launch launch");
    tool->destroy();
}

} // namespace

} // namespace Contract
