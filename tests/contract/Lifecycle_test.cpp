// The life of a database object: creation and destruction in their order, stamps, and the order by stamp.
#include "Design.h"
#include "tests/support/Rows.h"
#include "tests/support/Thrown.h"

#include <map>
#include <set>

namespace Contract {

namespace {

using namespace Pelko;
using Log = std::vector<std::string>;

// A class of a host or of an engine. It records each step of its life.
class Probe : public Object {
public:
    static Probe* create(Log& log, bool refused = false, bool destroyable = true) {
        preCreate(log, refused);
        auto* probe = new Probe(log, destroyable);
        probe->postCreate();
        return probe;
    }
    ~Probe() override { log_.push_back("end"); }

    bool isDestroyable() const override { return destroyable_ && Object::isDestroyable(); }
    std::string getAlias() const override { return "probe"; }
    void setDestroyable(bool set) { destroyable_ = set; }

protected:
    Probe(Log& log, bool destroyable) : log_(log), destroyable_(destroyable) { log_.push_back("begin"); }

    static void preCreate(Log& log, bool refused) {
        log.push_back("preCreate");
        if (refused)
            throw Ruvex::FactoryFailed(
                Ruvex::InternalError("Not this one", Ruvex::Error::locate("Probe", "preCreate", 1)));
        Object::preCreate();
    }
    void postCreate() {
        Object::postCreate();
        log_.push_back("postCreate");
    }
    void preDestroy() override {
        log_.push_back("preDestroy");
        Object::preDestroy();
    }

private:
    Log& log_;
    bool destroyable_;
};

TEST(Lifecycle, Order) {
    Log log;
    Probe* probe = Probe::create(log);
    EXPECT_EQ(log, (Log{"preCreate", "begin", "postCreate"}));
    EXPECT_TRUE(probe->isDestroyable());
    EXPECT_FALSE(probe->isTouchable());
    log.clear();
    Object* object = probe;
    object->destroy();
    EXPECT_EQ(log, (Log{"preDestroy", "end"}));
}

TEST(Lifecycle, RefusedCreationMakesNothing) {
    Log log;
    Support::expectThrown({"refused",
                           [&log] { Probe::create(log, true); },
                           typeid(Ruvex::FactoryFailed),
                           "Not this one",
                           {"Probe", "preCreate", 1}});
    EXPECT_EQ(log, Log{"preCreate"});
}

TEST(Lifecycle, NotDestroyableStays) {
    Log log;
    Probe* probe = Probe::create(log, false, false);
    log.clear();
    Support::expectThrown({"kept",
                           [probe] { probe->destroy(); },
                           typeid(Ruvex::InvalidRequest),
                           "Not destroyable: Probe probe",
                           {"Object", "destroy", 1}});
    EXPECT_EQ(log, Log{});
    EXPECT_EQ(probe->_getLabel(), "Probe probe");
    probe->setDestroyable(true);
    probe->destroy();
    EXPECT_EQ(log, (Log{"preDestroy", "end"}));
}

TEST(Lifecycle, Inspection) {
    Log log;
    Probe* probe = Probe::create(log);
    EXPECT_EQ(probe->getClass(), "Probe");
    EXPECT_EQ(probe->getAlias(), "probe");
    EXPECT_EQ(probe->getReprLabel(), "probe");
    EXPECT_EQ(probe->_getLabel(), "Probe probe");
    EXPECT_FALSE(probe->_hasRecord());
    EXPECT_EQ(probe->_getRecord(), nullptr);
    const std::unique_ptr<Ruvex::Slot> slot(probe->_getSlot());
    ASSERT_TRUE(slot);
    EXPECT_EQ(slot->getDataLabel(), "Probe probe");
    probe->destroy();
}

// --- Stamps ---

TEST(Stamps, AscendOverAllClasses) {
    const auto design = Design::create();
    Log log;
    std::vector<Object*> objects;
    const auto make = [&objects](Object* object) { objects.push_back(object); };
    Pole* a = design->addPole("a");
    make(a);
    Probe* probe = Probe::create(log);
    make(probe);
    Pole* b = design->addPole("b");
    make(b);
    make(design->addEdge(a, b, 1, 2));
    Domain* domain = Domain::create(a, b);
    make(domain);
    make(Subdomain::create(domain, ClockMode::Rising, ClockMode::Rising));
    make(design->addFalsePath({a}, {b}, false));

    const Object::StampLess less;
    for (std::size_t i = 0; i < objects.size(); ++i)
        for (std::size_t j = 0; j < objects.size(); ++j) {
            EXPECT_EQ(less(objects[i], objects[j]), i < j) << i << " " << j;
            EXPECT_EQ(objects[i]->getStamp() < objects[j]->getStamp(), i < j);
        }
    probe->destroy();
}

TEST(Stamps, NullComesFirst) {
    const auto design = Design::create();
    Pole* a = design->addPole("a");
    Pole* b = design->addPole("b");
    const Object::StampLess less;
    struct {
        Object *left, *right;
        bool expected;
    } const rows[] = {
        {nullptr, nullptr, false},
        {nullptr, a, true},
        {a, nullptr, false},
        {a, a, false},
        {a, b, true},
        {b, a, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(less(row.left, row.right), row.expected);
    }

    const std::set<Pole*, Object::StampLess> set{b, nullptr, a, b};
    EXPECT_EQ(std::vector<Pole*>(set.begin(), set.end()), (std::vector<Pole*>{nullptr, a, b}));
    const std::map<Pole*, int, Object::StampLess> map{{b, 3}, {nullptr, 1}, {a, 2}};
    EXPECT_EQ(map.begin()->second, 1);
    EXPECT_EQ(map.rbegin()->second, 3);
}

// An address in memory is used again, a stamp never: an object that is created later has a greater stamp.
TEST(Stamps, DoNotFollowAddresses) {
    const auto design = Design::create();
    std::vector<Pole*> poles;
    for (int i = 0; i < 100; ++i)
        poles.push_back(design->addPole({}));
    unsigned long last = poles.back()->getStamp();
    for (std::size_t i = 0; i < poles.size(); i += 2)
        poles[i]->destroy();
    std::set<Pole*, Object::StampLess> set;
    std::vector<Pole*> expected;
    for (std::size_t i = 1; i < poles.size(); i += 2)
        expected.push_back(poles[i]);
    for (int i = 0; i < 50; ++i) {
        expected.push_back(design->addPole({}));
        EXPECT_GT(expected.back()->getStamp(), last);
        last = expected.back()->getStamp();
    }
    set.insert(expected.rbegin(), expected.rend());
    EXPECT_EQ(std::vector<Pole*>(set.begin(), set.end()), expected);
}

} // namespace

} // namespace Contract
