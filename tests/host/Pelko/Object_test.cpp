// What all objects of the model have in common: classes and labels, and listeners that are called for their
// creation and destruction.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Ruvex/Record.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

namespace HostTest {

namespace {

using Strings = std::vector<std::string>;

class ObjectTest : public ModelTest {};

TEST_F(ObjectTest, ClassesAndLabels) {
    Pole* clk = Pole::createClockSource(model_.getCell(), "clk");
    Pole* in = Pole::createInput(model_.getCell(), "in");
    Instance* instance = Instance::create(model_.getModule(), "u1");
    Subdomain* subdomain = addSubdomain(clk, nullptr, ClockMode::Rising, ClockMode::None);
    CPath* plain = CPath::create({{clk}, {}});
    MPath* named = MPath::create({{clk}, {}}, 2);
    named->setAlias("slow");
    Edge* edge = connect(in, clk);
    const auto numbered = [](const Object* object) { return "#" + std::to_string(object->getStamp()); };
    struct {
        const Object* object;
        std::string className, alias;
    } const rows[] = {
        {clk, "Pole", "clk"},
        {edge, "Edge", "in -> clk"},
        {instance, "Instance", "u1"},
        {PLL::create(model_.getModule(), "pll"), "PLL", "pll"},
        {WFG::create(model_.getModule(), "wfg"), "WFG", "wfg"},
        {Pin::create(instance, "A"), "Pin", "u1/A"},
        {Pin::create(model_.getModule(), "port"), "Pin", "port"},
        {Net::create(model_.getModule(), "n"), "Net", "n"},
        {model_.getModule(), "Module", "top"},
        {model_.getCell(), "Cell", "top"},
        {model_.getAnalyzer(), "Analyzer", "top"},
        {model_.getApplication(), "Application", numbered(model_.getApplication())},
        {subdomain->getDomain(), "Domain", "clk -> none"},
        {subdomain, "Subdomain", "clk:rising -> none"},
        {plain, "CPath", "CPath" + numbered(plain)},
        {named, "MPath", "slow"},
        {Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0)), "Path", "in -> clk"},
        {Path::createLongest(subdomain, {}, Delay(0), Delay(0), Delay(0)), "Path", "clk:rising -> none"},
    };
    for (const auto& [object, className, alias] : rows) {
        SCOPED_TRACE(alias);
        EXPECT_EQ(object->getClass(), className);
        EXPECT_EQ(object->getAlias(), alias);
        EXPECT_EQ(object->getReprLabel(), alias);
        EXPECT_EQ(object->_getLabel(), className + " " + alias);
        EXPECT_FALSE(object->isTouchable());
    }
}

// The label, and in debug mode the record under it.
TEST_F(ObjectTest, PrintDetails) {
    Pole* pole = addPole("u1/A");
    {
        Support::Recorder recorder;
        pole->printDetails();
        EXPECT_EQ(recorder.getLines(), Support::Lines{"Pole u1/A"});
    }
    Support::Recorder recorder;
    const Support::DebugMode debug(true);
    pole->printDetails();
    std::ostringstream text;
    std::unique_ptr<Ruvex::Record>(pole->_getRecord())->print(text);
    ASSERT_EQ(recorder.getMessages().size(), 2u);
    EXPECT_EQ(recorder.getMessages()[0].text, "Pole u1/A");
    EXPECT_EQ(recorder.getMessages()[1].text, text.str());
}

// --- Listeners ---

// Records each call, and the state of the object and its neighbours at that moment.
class Listener : public ObjectListener {
public:
    explicit Listener(const std::string& name = {}) : name_(name) { Object::addListener(this); }
    ~Listener() override { Object::removeListener(this); }

    void onCreated(Object* object) override { note("+", object); }
    void onDestroyed(Object* object) override { note("-", object); }

    Strings take() { return std::exchange(heard_, {}); }
    static inline Strings all; // calls of all listeners, with their names

private:
    void note(const std::string& sign, Object* object) {
        heard_.push_back(sign + describe(object));
        all.push_back(name_ + sign);
    }

    static std::string describe(const Object* object) {
        std::string text = object->_getLabel();
        const auto note = [&text](bool holds, const char* what) {
            text += holds ? std::string(" ") + what : "";
        };
        if (const auto* pole = dynamic_cast<const Pole*>(object)) {
            note(cell->getPoles().contains(const_cast<Pole*>(pole)), "in cell");
            note(pole->isInput(), "input");
            note(pole->isClock() && pole->getPin()->getMainPole() == pole, "clock of its pin");
            note(pole->isCheck() && pole->getPin()->getAuxiliaryPoles().contains(const_cast<Pole*>(pole)) &&
                     pole->getClockPole(),
                 "check at its clock");
        }
        if (const auto* edge = dynamic_cast<const Edge*>(object)) {
            note(edge->getTarget()->getIncomingEdge(edge->getSource()) == edge, "linked");
            note(cell->getEdges().contains(const_cast<Edge*>(edge)), "in cell");
        }
        if (const auto* domain = dynamic_cast<const Domain*>(object))
            note(analyzer->getDomain(domain->getLaunchRoot(), domain->getLatchRoot()) == domain, "known");
        if (const auto* subdomain = dynamic_cast<const Subdomain*>(object))
            note(subdomain->getDomain()->getSubdomains().contains(const_cast<Subdomain*>(subdomain)),
                 "in domain");
        if (const auto* path = dynamic_cast<const CPath*>(object))
            note(analyzer->getCPaths().contains(const_cast<CPath*>(path)), "known");
        if (const auto* path = dynamic_cast<const Path*>(object)) {
            note(path->getSubdomain()->getLongestPaths().contains(const_cast<Path*>(path)), "kept");
            text += " " + path->getSlack()._getLabel();
        }
        return text;
    }

    std::string name_;
    Strings heard_;
};

TEST_F(ObjectTest, ListenersHearOfWholeObjects) {
    Listener listener;
    Pole* in = Pole::createInput(model_.getCell(), "in");
    Pole* clock = addClock("r/C");
    Pole* check = Pole::createCheck(clock, "r/D");
    EXPECT_EQ(listener.take(),
              (Strings{"+Pole in in cell input", "+Pin r/C", "+Pole r/C in cell clock of its pin",
                       "+Pole r/D in cell check at its clock"}));
    Edge* edge = connect(in, check);
    Subdomain* subdomain = addSubdomain(nullptr, clock);
    subdomain->setSetupRelation(Delay(10));
    FPath* exception = FPath::create({{in}, {}});
    exception->setAlias("cut");
    Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
    const std::string numbered = "FPath#" + std::to_string(exception->getStamp());
    EXPECT_EQ(listener.take(), (Strings{"+Edge in -> r/D linked in cell", "+Domain none -> r/C known",
                                        "+Subdomain none:rising -> r/C:rising in domain",
                                        "+FPath " + numbered + " known", "+Path in -> r/D kept 9"}));
    // From the outside in: an object that is being destroyed can still be read, with all that is destroyed
    // with it.
    subdomain->getDomain()->destroy();
    exception->destroy();
    check->destroy();
    EXPECT_EQ(listener.take(),
              (Strings{"-Domain none -> r/C known", "-Subdomain none:rising -> r/C:rising in domain",
                       "-Path in -> r/D kept 9", "-FPath cut known", "-Pole r/D in cell check at its clock",
                       "-Edge in -> r/D linked in cell"}));
}

TEST_F(ObjectTest, NothingIsHeardOfARefusal) {
    Pole* a = addPole("a");
    Listener listener;
    EXPECT_ANY_THROW(connect(a, a));
    EXPECT_ANY_THROW(Pole::createCheck(a));
    EXPECT_ANY_THROW(MPath::create({{a}, {}}, 0));
    EXPECT_ANY_THROW(analyzer->getCell()->destroy());
    EXPECT_EQ(listener.take(), Strings{});
}

TEST_F(ObjectTest, ListenersAreHeardInTheOrderOfAdding) {
    Listener first("first"), second("second");
    Object::addListener(&first); // is added only once, and keeps its place
    Listener::all.clear();
    Pole* a = addPole();
    EXPECT_EQ(Listener::all, (Strings{"first+", "second+"}));
    Object::removeListener(&first);
    Object::removeListener(&first);
    Listener::all.clear();
    a->destroy();
    EXPECT_EQ(Listener::all, Strings{"second-"});
    Object::addListener(&first);
    Listener::all.clear();
    addPole();
    EXPECT_EQ(Listener::all, (Strings{"second+", "first+"}));
}

TEST_F(ObjectTest, NullListener) {
    Object::removeListener(nullptr);
    expectRefused({{"null",
                    [] { Object::addListener(nullptr); },
                    invalidRequest,
                    "Null listener",
                    {"Object", "addListener", 2}}});
}

// A listener that removes itself, or adds another, during a call.
class Changing : public ObjectListener {
public:
    Changing(ObjectListener* added, ObjectListener* removed) : added_(added), removed_(removed) {
        Object::addListener(this);
    }
    ~Changing() override { Object::removeListener(this); }
    void onCreated(Object*) override {
        if (added_)
            Object::addListener(added_);
        Object::removeListener(removed_ ? removed_ : this);
    }

private:
    ObjectListener* added_;
    ObjectListener* removed_;
};

TEST_F(ObjectTest, ListenersComeAndGoWhileOthersAreTold) {
    // A listener that stays is called for every object, whatever other listeners are added or removed at that
    // moment.
    Changing leaving(nullptr, nullptr);
    Listener staying("staying");
    Listener::all.clear();
    addPole();
    EXPECT_EQ(Listener::all, Strings{"staying+"});
    addPole();
    EXPECT_EQ(Listener::all, (Strings{"staying+", "staying+"}));

    // A removed listener is not called.
    Listener removed("removed");
    Changing removing(nullptr, &removed);
    Object::removeListener(&removed);
    Object::addListener(&removed);
    Listener::all.clear();
    addPole();
    EXPECT_EQ(Listener::all, Strings{"staying+"});

    Listener added("added");
    Object::removeListener(&added);
    Changing adding(&added, &staying);
    Listener::all.clear();
    addPole();
    addPole();
    EXPECT_EQ(std::count(Listener::all.begin(), Listener::all.end(), "staying+"), 1);
    EXPECT_GE(std::count(Listener::all.begin(), Listener::all.end(), "added+"), 1);
}

// A listener that creates objects during a call, for which the others are called in between; and one that
// then removes itself.
TEST_F(ObjectTest, ObjectsMayComeWhileOthersAreTold) {
    class Making : public ObjectListener {
    public:
        Making() { Object::addListener(this); }
        ~Making() override { Object::removeListener(this); }
        void onCreated(Object* object) override {
            if (object->getAlias() == "seed")
                Pole::create(cell, "sprout");
        }
    } making;
    class Leaving : public ObjectListener {
    public:
        Leaving() { Object::addListener(this); }
        ~Leaving() override { Object::removeListener(this); }
        void onCreated(Object*) override { Object::removeListener(this); }
    } leaving;
    Listener staying;
    addPole("seed");
    EXPECT_EQ(staying.take(), (Strings{"+Pole sprout in cell", "+Pole seed in cell"}));
    addPole("last");
    EXPECT_EQ(staying.take(), Strings{"+Pole last in cell"});
}

// A listener that was called for an object's creation is called for its destruction. Everything is destroyed
// with the model.
TEST(ObjectListeners, HearOfEveryEnd) {
    class Balance : public ObjectListener {
    public:
        Balance() { Object::addListener(this); }
        ~Balance() override { Object::removeListener(this); }
        void onCreated(Object* object) override { living_[object->getStamp()] = object->_getLabel(); }
        void onDestroyed(Object* object) override { living_.erase(object->getStamp()); }
        Strings getLiving() const {
            Strings names;
            for (const auto& [stamp, name] : living_)
                names.push_back(name);
            return names;
        }

    private:
        std::map<unsigned long, std::string> living_;
    } balance;
    {
        Model model("top");
        Pole* clk = Pole::createClockSource(model.getCell(), "clk");
        Pin* pin = Pin::create(Instance::create(model.getModule(), "r"), "C");
        pin->connect(Net::create(model.getModule(), "n"));
        Pole* clock = Pole::createClock(model.getCell(), pin, ClockMode::Rising);
        Edge* edge = Edge::create(clk, clock, Delay(1), Delay(1));
        Subdomain* subdomain =
            Subdomain::create(Domain::create(clk, clk), ClockMode::Rising, ClockMode::Rising);
        Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
        FPath::create({{clk}, {clock}});
        EXPECT_GE(balance.getLiving().size(), 13u);
    }
    EXPECT_EQ(balance.getLiving(), Strings{});
}

// --- Listeners of sweeps ---

// An object of a class that is not one of the database's, as an engine's sweeps are.
class ForeignObject : public Object {
public:
    static ForeignObject* create() {
        auto* object = new ForeignObject;
        object->postCreate();
        return object;
    }

private:
    void preDestroy() override { Object::preDestroy(); }
};

class SweepEar : public SweepListener {
public:
    explicit SweepEar(const std::string& name = {}) : name_(name) { Object::addSweepListener(this); }
    ~SweepEar() override { Object::removeSweepListener(this); }
    void onSweepDestroyed(Object* sweep) override {
        heard.push_back(sweep);
        Listener::all.push_back(name_ + "sweep");
        if (fails)
            throw Ruvex::Error("no end");
    }

    std::vector<const Object*> heard;
    bool fails = false;

private:
    std::string name_;
};

TEST_F(ObjectTest, SweepListenersHearOfForeignObjectsAfterTheOthers) {
    SweepEar first("first "), second("second ");
    Listener listener("object");
    Object::addSweepListener(&first); // is added only once
    Object* sweep = ForeignObject::create();
    Listener::all.clear();
    sweep->destroy();
    EXPECT_EQ(Listener::all, (Strings{"object-", "first sweep", "second sweep"}));
    EXPECT_EQ(first.heard, std::vector<const Object*>{sweep});
    Object::removeSweepListener(&first);
    Object::removeSweepListener(&first);
    ForeignObject::create()->destroy();
    EXPECT_EQ(first.heard.size(), 1U);
    EXPECT_EQ(second.heard.size(), 2U);
}

// Objects of every class of the database are created, and all are destroyed with the model.
TEST(SweepListeners, HearOfNoObjectOfTheDatabase) {
    const SweepEar ear;
    Listener listener;
    {
        Model model("top");
        Pole* clk = Pole::createClockSource(model.getCell(), "clk");
        PLL::create(model.getModule(), "pll");
        WFG::create(model.getModule(), "wfg");
        Pin* pin = Pin::create(Instance::create(model.getModule(), "r"), "C");
        pin->connect(Net::create(model.getModule(), "n"));
        Pole* clock = Pole::createClock(model.getCell(), pin, ClockMode::Rising);
        Edge* edge = Edge::create(clk, clock, Delay(1), Delay(1));
        Subdomain* subdomain =
            Subdomain::create(Domain::create(clk, clk), ClockMode::Rising, ClockMode::Rising);
        Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
        CPath::create({{clk}, {clock}});
        FPath::create({{clk}, {clock}});
        DPath::createMaximum({{clk}, {clock}}, Delay(1));
        MPath::create({{clk}, {clock}}, 2);
        listener.take();
    }
    std::set<std::string> classes;
    for (const std::string& line : listener.take())
        classes.insert(line.substr(0, line.find(' ')));
    EXPECT_EQ(classes,
              (std::set<std::string>{"-Analyzer", "-Application", "-CPath", "-Cell", "-DPath", "-Domain",
                                     "-Edge", "-FPath", "-Instance", "-MPath", "-Module", "-Net", "-PLL",
                                     "-Path", "-Pin", "-Pole", "-Subdomain", "-WFG"}));
    EXPECT_EQ(ear.heard, std::vector<const Object*>{});
}

// The caller that destroys the object gets the exception, and the object stays whole.
TEST_F(ObjectTest, ASweepListenerMayThrow) {
    SweepEar ear;
    Object* sweep = ForeignObject::create();
    ear.fails = true;
    EXPECT_THROW(sweep->destroy(), Ruvex::Error);
    EXPECT_NE(sweep->getStamp(), 0U);
    ear.fails = false;
    sweep->destroy();
    EXPECT_EQ(ear.heard, (std::vector<const Object*>{sweep, sweep}));
}

TEST_F(ObjectTest, ASweepStaysWhileItsListenersHearOfIt) {
    class Destroying : public SweepListener {
    public:
        Destroying() { Object::addSweepListener(this); }
        ~Destroying() override { Object::removeSweepListener(this); }
        void onSweepDestroyed(Object* sweep) override {
            expectRefused({{"again",
                            [sweep] { sweep->destroy(); },
                            invalidRequest,
                            "Not destroyable now: ForeignObject #" + std::to_string(sweep->getStamp()),
                            {"Object", "destroy", 3}}});
        }
    } const destroying;
    const SweepEar ear;
    ForeignObject::create()->destroy();
    EXPECT_EQ(ear.heard.size(), 1U);
}

TEST_F(ObjectTest, NullSweepListener) {
    Object::removeSweepListener(nullptr);
    expectRefused({{"null",
                    [] { Object::addSweepListener(nullptr); },
                    invalidRequest,
                    "Null listener",
                    {"Object", "addSweepListener", 4}}});
}

} // namespace

} // namespace HostTest
