// An object that owns the whole model: it creates the globals, and destroys them.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include <functional>
#include <optional>
#include <stdexcept>

namespace HostTest {

namespace {

TEST(ModelObject, MakesAndEndsTheGlobals) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(cell, nullptr);
        EXPECT_EQ(analyzer, nullptr);
        EXPECT_EQ(application, nullptr);
        const Model model("top");
        EXPECT_EQ(model.getCell(), cell);
        EXPECT_EQ(model.getAnalyzer(), analyzer);
        EXPECT_EQ(model.getApplication(), application);
        EXPECT_EQ(model.getModule(), cell->getModule());
        EXPECT_EQ(analyzer->getCell(), cell);
        EXPECT_EQ(cell->getName(), "top");
        EXPECT_TRUE(cell->getPoles().isEmpty());
    }
    EXPECT_EQ(cell, nullptr);
    EXPECT_EQ(analyzer, nullptr);
    EXPECT_EQ(application, nullptr);
}

TEST(ModelObject, Refusals) {
    expectRefused(
        {"empty name", [] { Model model(""); }, factoryFailed, "Empty cell name", {"Cell", "create", 1}});
    EXPECT_EQ(cell, nullptr);
    const Model model("top");
    expectRefused({{"second",
                    [] { Model second("second"); },
                    factoryFailed,
                    "A model exists already",
                    {"Model", "Model", 1}},
                   {"null cell",
                    [] { Analyzer::create(nullptr); },
                    factoryFailed,
                    "Null cell",
                    {"Analyzer", "create", 1}},
                   {"cell in use",
                    [] { cell->destroy(); },
                    invalidRequest,
                    "Not destroyable: Cell top",
                    {"Object", "destroy", 1}}});
    EXPECT_EQ(model.getCell(), cell);
}

// Everything that refers to something else is destroyed with the model, whatever the order of creation.
TEST(ModelObject, EndsWhateverIsInIt) {
    const Model model("top");
    Cell* owner = model.getCell();
    Pole* clk = Pole::createClockSource(owner, "clk");
    Pole* in = Pole::createInput(owner, "in");
    Pole* clock = Pole::createClock(owner, Pin::create(model.getModule(), "C"), ClockMode::Rising);
    Pole* check = Pole::createCheck(clock);
    clk->setMainPole(check);
    check->setClockPole(clk);
    clk->setClockPole(clk);
    Edge* edge = Edge::create(in, check, Delay(1), Delay(2));
    Subdomain* subdomain = Subdomain::create(Domain::create(clk, clk), ClockMode::Rising, ClockMode::Rising);
    subdomain->captureLaunch(in);
    subdomain->captureLatch(clock);
    MPath* exception = MPath::create({{in}, {check}, {clk}}, 2);
    Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0))->setConstrainedPath(exception);
    analyzer->setClock(clk, Delay(10), Delay(0), Delay(5), Delay(5));
    analyzer->setInputConstraint(in, IOConstraint(clk, ClockMode::Rising, Delay(0), Delay(0)));
    analyzer->addClockGroups(Analyzer::GroupKind::Exclusive, {{clk}, {clock}});
    analyzer->mergeIODelayLongestSlack(in, Delay(3));
    for (const Pole* pole : owner->getPoles())
        EXPECT_FALSE(pole->isDestroyable()) << pole->getName();
}

// --- Listeners that throw ---

class Failing : public ObjectListener {
public:
    explicit Failing(std::function<void(Object*)> fail) : fail_(std::move(fail)) {
        Object::addListener(this);
    }
    ~Failing() override { Object::removeListener(this); }
    void onDestroyed(Object* object) override {
        ++told_;
        fail_(object);
    }
    int getTold() const { return told_; }

private:
    std::function<void(Object*)> fail_;
    int told_ = 0;
};

// Creates an object of each kind in the model. Returns the number of objects.
int fill(const Model& model) {
    Pole* clk = Pole::createClockSource(model.getCell(), "clk");
    Pole* clock = Pole::createClock(model.getCell(), Pin::create(model.getModule(), "C"), ClockMode::Rising);
    Pole* check = Pole::createCheck(clock);
    Edge* edge = Edge::create(clk, check, Delay(1), Delay(2));
    Subdomain* subdomain = Subdomain::create(Domain::create(clk, clk), ClockMode::Rising, ClockMode::Rising);
    MPath* exception = MPath::create({{clk}, {check}, {}}, 2);
    Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0))->setConstrainedPath(exception);
    return 13; // including application, analyzer, cell, module and the pin
}

struct EndRow {
    const char* what;
    void (*fail)(Object*);
    std::string text;
};

const EndRow endRows[] = {
    {"located",
     [](Object* object) {
         if (dynamic_cast<Domain*>(object))
             throw Ruvex::Critical("broken", Ruvex::Error::locate("Host", "work", 12));
     },
     "broken (Host, work, 12)"},
    {"standard", [](Object*) { throw std::runtime_error("whatever"); }, "whatever"},
    {"no class", [](Object*) { throw 42; }, "something strange"},
    {"the first of many", [](Object* object) { throw Ruvex::Error(object->getClass()); }, "Application"},
};

// All listeners are called for all objects, the model is destroyed, and the destructor prints the first
// exception.
TEST(ModelEnd, DestructorTells) {
    for (const EndRow& row : endRows) {
        SCOPED_TRACE(row.what);
        const Support::Recorder console;
        std::optional<Model> model(std::in_place, "top");
        const int objects = fill(*model);
        const Failing failing(row.fail), second([](Object*) {});
        model.reset();
        EXPECT_EQ(console.getLines(),
                  Support::Lines{"warning: A listener failed while the model ended: " + row.text});
        EXPECT_EQ(failing.getTold(), objects);
        EXPECT_EQ(second.getTold(), objects);
        EXPECT_TRUE(!cell && !analyzer && !application);
    }
}

TEST(ModelEnd, EndThrowsTheFirst) {
    const Support::Recorder console;
    Model model("top");
    const int objects = fill(model);
    {
        const Failing failing(endRows[0].fail), second([](Object*) {});
        Support::expectThrown({"end", [&] { model.end(); }, typeid(Ruvex::Critical), "broken",
                               Ruvex::Error::locate("Host", "work", 12)});
        EXPECT_EQ(second.getTold(), objects);
    }
    EXPECT_TRUE(!cell && !analyzer && !application);
    model.end(); // nothing is left
    // A second end() does not destroy the next model.
    std::optional<Model> next(std::in_place, "next");
    model.end();
    EXPECT_EQ(next->getCell()->getName(), "next");
    EXPECT_TRUE(console.isEmpty());
}

// If objects are destroyed one by one and a listener throws, the object stays whole.
TEST(ModelEnd, OneByOneStays) {
    const Model model("top");
    fill(model);
    const std::string before = takeSnapshot();
    {
        const Failing failing([](Object* object) {
            if (dynamic_cast<Analyzer*>(object))
                throw std::runtime_error("whatever");
        });
        EXPECT_THROW(analyzer->destroy(), std::runtime_error);
    }
    EXPECT_EQ(takeSnapshot(), before);
}

// An object is not destroyed while listeners are called for its creation or its destruction.
TEST(ModelEnd, NoObjectTwice) {
    const Model model("top");
    class Twice : public ObjectListener {
    public:
        Twice() { Object::addListener(this); }
        ~Twice() override { Object::removeListener(this); }
        void onCreated(Object* object) override { refuse(object); }
        void onDestroyed(Object* object) override { refuse(object); }
        int refused = 0;

    private:
        void refuse(Object* object) {
            Support::expectThrown({"now",
                                   [object] { object->destroy(); },
                                   invalidRequest,
                                   "Not destroyable now: " + object->_getLabel(),
                                   {"Object", "destroy", 3}});
            ++refused;
        }
    } twice;
    Pole::create(model.getCell(), "pole")->destroy();
    EXPECT_EQ(twice.refused, 2);
}

} // namespace

} // namespace HostTest
