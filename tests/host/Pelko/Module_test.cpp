// The module's instances, pins and nets: factories and the calls they reject, names, joining and leaving
// nets.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Rows.h"

namespace HostTest {

namespace {

class ModuleTest : public ModelTest {
protected:
    Module* module_ = model_.getModule();
};

TEST_F(ModuleTest, Refusals) {
    Instance* u1 = Instance::create(module_, "u1");
    PLL* pll = PLL::create(module_, "pll");
    Pin* a = Pin::create(u1, "A");
    Net::create(module_, "n");
    Pole::create(cell, a); // shows the pin in the snapshot
    Cell* otherCell = Cell::create("other");
    Net* elsewhere = Net::create(otherCell->getModule(), "n");
    const auto instance = [](unsigned line) { return Ruvex::Place{"Instance", "preCreate", line}; };
    const auto pin = [](unsigned line) { return Ruvex::Place{"Pin", "create", line}; };
    const auto net = [](unsigned line) { return Ruvex::Place{"Net", "create", line}; };
    expectRefused({
        {"no module", [] { Instance::create(nullptr, "u"); }, factoryFailed, "Null module", instance(1)},
        {"no name", [=, this] { Instance::create(module_, ""); }, factoryFailed, "Empty instance name",
         instance(2)},
        {"again", [=, this] { Instance::create(module_, "u1"); }, factoryFailed, "Instance exists already",
         instance(3)},
        {"a PLL's name", [=, this] { WFG::create(module_, "pll"); }, factoryFailed, "Instance exists already",
         instance(3)},
        {"an instance's name", [=, this] { PLL::create(module_, "u1"); }, factoryFailed,
         "Instance exists already", instance(3)},
        {"PLL: no module", [] { PLL::create(nullptr, "p"); }, factoryFailed, "Null module", instance(1)},
        {"WFG: no module", [] { WFG::create(nullptr, "w"); }, factoryFailed, "Null module", instance(1)},
        {"pin: no instance", [] { Pin::create(static_cast<Instance*>(nullptr), "A"); }, factoryFailed,
         "Null instance", pin(1)},
        {"pin: no name", [=] { Pin::create(u1, ""); }, factoryFailed, "Empty pin name", pin(2)},
        {"pin: again", [=] { Pin::create(u1, "A"); }, factoryFailed, "Pin exists already", pin(3)},
        {"pin: no module", [] { Pin::create(static_cast<Module*>(nullptr), "A"); }, factoryFailed,
         "Null module", pin(4)},
        {"module pin: no name", [=, this] { Pin::create(module_, ""); }, factoryFailed, "Empty pin name",
         pin(2)},
        {"net: no module", [] { Net::create(nullptr, "n"); }, factoryFailed, "Null module", net(1)},
        {"net: no name", [=, this] { Net::create(module_, ""); }, factoryFailed, "Empty net name", net(2)},
        {"net: again", [=, this] { Net::create(module_, "n"); }, factoryFailed, "Net exists already", net(3)},
        {"net of another module",
         [=] { a->connect(elsewhere); },
         invalidRequest,
         "Net of another module",
         {"Pin", "connect", 5}},
        {"an instance's end",
         [=] { u1->destroy(); },
         invalidRequest,
         "Not destroyable: Instance u1",
         {"Object", "destroy", 1}},
        {"a pin's end",
         [=] { a->destroy(); },
         invalidRequest,
         "Not destroyable: Pin u1/A",
         {"Object", "destroy", 1}},
        {"a net's end",
         [=] { elsewhere->destroy(); },
         invalidRequest,
         "Not destroyable: Net n",
         {"Object", "destroy", 1}},
        {"the module's end",
         [=, this] { module_->destroy(); },
         invalidRequest,
         "Not destroyable: Module top",
         {"Object", "destroy", 1}},
    });
    EXPECT_THAT(walk(module_->getPLLs()), ElementsAre(pll));
    otherCell->destroy();
}

TEST_F(ModuleTest, ByName) {
    Instance* u1 = Instance::create(module_, "u1");
    WFG* wfg = WFG::create(module_, "wfg");
    Net* net = Net::create(module_, "u1"); // nets and instances have separate names
    struct {
        const char* name;
        Instance* instance;
        Net* net;
    } const rows[] = {
        {"u1", u1, net}, {"wfg", wfg, nullptr}, {"U1", nullptr, nullptr}, {"", nullptr, nullptr}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(module_->getInstance(row.name), row.instance);
        EXPECT_EQ(module_->getNet(row.name), row.net);
    }
    Pin* b = Pin::create(u1, "B");
    Pin* a = Pin::create(u1, "A");
    Pin* sameName = Pin::create(wfg, "A");
    EXPECT_EQ(u1->getPin("A"), a);
    EXPECT_EQ(u1->getPin("B"), b);
    EXPECT_EQ(u1->getPin("C"), nullptr);
    EXPECT_EQ(wfg->getPin("A"), sameName);
    EXPECT_THAT(walk(u1->getPins()), ElementsAre(a, b));
    EXPECT_EQ(a->getName(), "u1/A");
    EXPECT_EQ(a->getInstance(), u1);
    Pin* port = Pin::create(module_, "A");
    EXPECT_EQ(port->getName(), "A");
    EXPECT_EQ(port->getInstance(), nullptr);
    EXPECT_EQ(u1->getModule(), module_);
    EXPECT_EQ(net->getModule(), module_);
}

// Receivers are the receiving pins, in the order of joining; a pin is on one net at a time.
TEST_F(ModuleTest, Nets) {
    Net* n = Net::create(module_, "n");
    Net* other = Net::create(module_, "other");
    Pin* driver = Pin::create(module_, "driver", Pin::Direction::Driver);
    Pin* a = Pin::create(module_, "a");
    Pin* b = Pin::create(module_, "b");
    EXPECT_EQ(driver->getDirection(), Pin::Direction::Driver);
    EXPECT_EQ(a->getDirection(), Pin::Direction::Receiver);
    struct {
        Pin* pin;
        Net* net;
        std::vector<Pin*> onN, onOther;
    } const steps[] = {
        {driver, n, {}, {}},    {b, n, {b}, {}},       {a, n, {b, a}, {}},    {b, n, {a, b}, {}},
        {a, other, {b}, {a}},   {b, nullptr, {}, {a}}, {b, nullptr, {}, {a}}, {driver, nullptr, {}, {a}},
        {b, other, {}, {a, b}},
    };
    for (const auto& [pin, net, onN, onOther] : steps) {
        pin->connect(net);
        EXPECT_EQ(pin->getNet(), net);
        EXPECT_EQ(pin->isConnected(), net != nullptr);
        EXPECT_EQ(walk(n->getReceivers()), onN);
        EXPECT_EQ(walk(other->getReceivers()), onOther);
    }
}

TEST_F(ModuleTest, PllsInOrderOfCreation) {
    std::vector<PLL*> plls;
    for (const char* name : {"z", "a", "m"})
        plls.push_back(PLL::create(module_, name));
    Instance::create(module_, "b");
    EXPECT_EQ(walk(module_->getPLLs()), plls);
    EXPECT_FALSE(plls[0]->hasFeedbackCompensation());
    plls[1]->setFeedbackCompensation(true);
    EXPECT_FALSE(plls[0]->hasFeedbackCompensation());
    EXPECT_TRUE(plls[1]->hasFeedbackCompensation());
    WFG* generator = WFG::create(module_, "w");
    EXPECT_FALSE(generator->hasPLLFeedback());
    generator->setPLLFeedback(true);
    EXPECT_TRUE(generator->hasPLLFeedback());
    generator->setPLLFeedback(false);
    EXPECT_FALSE(generator->hasPLLFeedback());
}

} // namespace

} // namespace HostTest
