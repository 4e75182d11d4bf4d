// What a launch works on stays until it is over: whoever destroys it from a listener is refused, and the
// launch goes on and finds what it would have found.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include "Pelko/Path.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

using Pelko::analyzer;
using Pelko::Object;
using Pelko::Pole;
using Support::Builder;
using Support::Lines;
using Support::Names;
using Support::Register;
using Support::subdomains;

namespace {

const std::type_info& invalidRequest = typeid(Ruvex::InvalidRequest);

enum class Moment { Created, Destroyed };

// Acts each time when a run creates or destroys an object of a class.
template <class Kind>
class Meddler : public Pelko::ObjectListener {
public:
    using Act = std::function<void(Kind*)>;

    Meddler(Moment moment, Act act) : moment_(moment), act_(std::move(act)) { Object::addListener(this); }
    ~Meddler() override { Object::removeListener(this); }
    void onCreated(Object* object) override { meddle(Moment::Created, object); }
    void onDestroyed(Object* object) override { meddle(Moment::Destroyed, object); }
    int getCount() const { return count_; }

private:
    void meddle(Moment moment, Object* object) {
        auto* kind = dynamic_cast<Kind*>(object);
        if (moment != moment_ || !kind || !Pelko::Tool::Run::isGoingOn())
            return;
        ++count_;
        act_(kind);
    }

    Moment moment_;
    Act act_;
    int count_ = 0;
};

// Two clocks with paths to each other and to themselves, two clocks that exclude each other, and an
// exception.
class LaunchKeeps : public testing::Test {
protected:
    LaunchKeeps() {
        const Register c = design_.addRegister("c", other_);
        design_.connect(a_.output, b_.data, 2, 5);
        design_.connect(b_.output, c.data, 2, 5);
        design_.connect(c.output, a_.data, 2, 5);
        exception_ = Pelko::MPath::create({{b_.clock}, {a_.check}}, 2); // matches no path
    }

    // Every call that destroys an object of the launch, except the objects that the caller adds.
    std::vector<Support::Fault> everyRefusal() {
        const auto refusal = [](const char* what, std::function<void()> action, const std::string& label) {
            return Support::Fault{what,
                                  std::move(action),
                                  invalidRequest,
                                  "Not destroyable now: " + label,
                                  {"Object", "destroy", 3}};
        };
        return {
            {"tool", [this] { tool_->destroy(); }, invalidRequest, "Tool is running", {"Tool", "destroy", 4}},
            refusal(
                "analyzer", [] { analyzer->destroy(); }, "Analyzer top"),
            refusal(
                "application", [] { Pelko::application->destroy(); }, Pelko::application->_getLabel()),
            {"cell",
             [] { Pelko::cell->destroy(); },
             invalidRequest,
             "Not destroyable: Cell top",
             {"Object", "destroy", 1}},
            refusal(
                "exception", [this] { exception_->destroy(); }, exception_->_getLabel()),
            refusal(
                "pole", [this] { spare_->destroy(); }, "Pole spare"),
            refusal(
                "arc", [this] { spareArc_->destroy(); }, "Edge a/Q -> spare"),
        };
    }
    template <class Kind>
    void expectRefusedAt(Moment moment, int times) {
        const Names before = launchAlone();
        const Meddler<Kind> meddler(moment, [this](Kind* object) {
            Support::expectThrown(everyRefusal());
            Support::expectThrown({"the object itself",
                                   [object] { object->destroy(); },
                                   invalidRequest,
                                   "Not destroyable now: " + object->_getLabel(),
                                   {"Object", "destroy", 3}});
            for (Pelko::Domain* domain : domains()) {
                Support::expectThrown({"domain",
                                       [domain] { domain->destroy(); },
                                       invalidRequest,
                                       "Not destroyable now: " + domain->_getLabel(),
                                       {"Object", "destroy", 3}});
                for (Pelko::Subdomain* subdomain : domain->getSubdomains())
                    EXPECT_TRUE(static_cast<Object*>(domain) == object || refuses(subdomain));
            }
        });
        EXPECT_EQ(launchAlone(), before);
        EXPECT_EQ(meddler.getCount(), times);
    }
    static std::vector<Pelko::Domain*> domains() {
        std::vector<Pelko::Domain*> found;
        for (Pelko::Domain* domain : analyzer->getDomains())
            found.push_back(domain);
        return found;
    }
    static bool refuses(Object* object) {
        try {
            object->destroy();
        } catch (const Ruvex::InvalidRequest&) {
            return true;
        }
        return false;
    }
    // Launches without a listener, and returns the results. The domains are created anew.
    Names launchAlone() {
        while (!analyzer->getDomains().isEmpty())
            analyzer->getDomains().getFirst()->destroy();
        analyzer->clearResults();
        EXPECT_TRUE(tool_->launch());
        Names found = subdomains();
        for (const Pelko::Edge* edge : Pelko::cell->getEdges())
            found.push_back(edge->getAlias() + " " + edge->getSlack()._getLabel());
        return found;
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
    Pole* clk_ = design_.addClockSource("clk", 10);
    Pole* other_ = design_.addClockSource("other", 10);
    Register a_ = design_.addRegister("a", clk_), b_ = design_.addRegister("b", clk_);
    Pole* spare_ = design_.addPole("spare");
    Pelko::Edge* spareArc_ = design_.connect(a_.output, spare_);
    Pelko::CPath* exception_ = nullptr;
};

TEST_F(LaunchKeeps, WhenADomainIsCreated) { expectRefusedAt<Pelko::Domain>(Moment::Created, 3); }
TEST_F(LaunchKeeps, WhenASubdomainIsCreated) { expectRefusedAt<Pelko::Subdomain>(Moment::Created, 3); }
TEST_F(LaunchKeeps, WhenASweepIsCreated) { expectRefusedAt<Vorlen::Sweep>(Moment::Created, 3); }
TEST_F(LaunchKeeps, WhenASweepIsDestroyed) { expectRefusedAt<Vorlen::Sweep>(Moment::Destroyed, 3); }
// One clock and one edge have no hold relation, and so no shortest path.
TEST_F(LaunchKeeps, WhenAPathIsCreated) { expectRefusedAt<Pelko::Path>(Moment::Created, 5); }

// A domain that the run itself destroys is destroyed, and no other with it.
TEST_F(LaunchKeeps, WhenAnExclusiveDomainIsDestroyed) {
    design_.makeExclusive(clk_, other_);
    expectRefusedAt<Pelko::Domain>(Moment::Destroyed, 2);
    EXPECT_EQ(subdomains(), Names{"clk:rising -> clk:rising"});
}

// All sweeps of the domain stay, not only the one that is analysed.
TEST_F(LaunchKeeps, SweepsOfTheDomain) {
    const Register d = design_.addRegister("d", clk_, Support::falling);
    design_.connect(a_.output, d.data, 2, 5);
    std::vector<Vorlen::Sweep*> sweeps;
    const Meddler<Vorlen::Sweep> created(Moment::Created,
                                         [&](Vorlen::Sweep* sweep) { sweeps.push_back(sweep); });
    int refusals = 0;
    const Meddler<Pelko::Path> meddler(Moment::Created, [&](Pelko::Path*) {
        for (Vorlen::Sweep* sweep : sweeps)
            refusals += refuses(sweep) ? 1 : 0;
    });
    const Meddler<Vorlen::Sweep> destroyed(Moment::Destroyed,
                                           [&](Vorlen::Sweep* sweep) { std::erase(sweeps, sweep); });
    EXPECT_TRUE(tool_->launch());
    EXPECT_GT(refusals, 2); // for one of the paths, at least two sweeps
    EXPECT_TRUE(sweeps.empty());
    EXPECT_TRUE(console_.isEmpty());
}

// If the listener does not catch the exception, the run stops as for any other, and all objects stay.
TEST_F(LaunchKeeps, RefusalThatEndsTheRun) {
    std::optional<Meddler<Vorlen::Sweep>> meddler(std::in_place, Moment::Destroyed,
                                                  [this](Vorlen::Sweep*) { tool_->destroy(); });
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getLines(), Lines{"error: Tool is running (Tool, destroy, 4)"});
    meddler.reset();
    EXPECT_TRUE(tool_->launch());
}

// After the launch, all objects can be destroyed.
TEST_F(LaunchKeeps, NothingAfterwards) {
    EXPECT_TRUE(tool_->launch());
    spareArc_->destroy();
    spare_->destroy();
    analyzer->getDomain(clk_, clk_)->destroy();
    tool_.release()->destroy();
    EXPECT_EQ(Pelko::Tool::getTool("Analyzing"), nullptr);
}

// --- The model as a whole ---

struct OwnModel {
    OwnModel() {
        Pole* clk = Pole::createClockSource(model->getCell(), "clk");
        Pole* clock = Pole::createClock(model->getCell(), Pelko::Pin::create(model->getModule(), "C"),
                                        Pelko::ClockMode::Rising);
        Pole* check = Pole::createCheck(clock);
        Pelko::Edge::create(clk, clock, Pelko::Delay(0), Pelko::Delay(0));
        Pelko::Edge::create(clock, check, Pelko::Delay(1), Pelko::Delay(2));
        analyzer->setClock(clk, Pelko::Delay(10), Pelko::Delay(0), Pelko::Delay(5), Pelko::Delay(5));
    }
    std::optional<Pelko::Model> model{std::in_place, "top"};
};

TEST(LaunchKeepsTheModel, EndIsRefused) {
    OwnModel own;
    const Support::ToolPointer tool = Support::makeTool();
    const Support::Recorder console;
    const Meddler<Vorlen::Sweep> meddler(Moment::Created, [&](Vorlen::Sweep*) {
        Support::expectThrown(
            {"end", [&] { own.model->end(); }, invalidRequest, "A tool is running", {"Model", "end", 2}});
    });
    EXPECT_TRUE(tool->launch());
    EXPECT_EQ(meddler.getCount(), 1);
    EXPECT_TRUE(console.isEmpty());
    own.model->end();
    EXPECT_EQ(Pelko::cell, nullptr);
}

// A destructor cannot throw: the model is destroyed when the run is over.
TEST(LaunchKeepsTheModel, DestructorWaits) {
    OwnModel own;
    const Support::ToolPointer tool = Support::makeTool();
    const Support::Recorder console;
    const Meddler<Vorlen::Sweep> meddler(Moment::Created, [&](Vorlen::Sweep*) {
        own.model.reset();
        EXPECT_TRUE(Pelko::cell && analyzer && Pelko::application);
        EXPECT_THROW(Pelko::Model("next"), Ruvex::FactoryFailed);
    });
    EXPECT_TRUE(tool->launch());
    EXPECT_TRUE(console.isEmpty());
    EXPECT_EQ(meddler.getCount(), 1);
    EXPECT_EQ(Pelko::cell, nullptr);
    EXPECT_EQ(analyzer, nullptr);
    EXPECT_EQ(Pelko::application, nullptr);
    const Pelko::Model next("next");
    EXPECT_TRUE(tool->launch());
}

} // namespace
