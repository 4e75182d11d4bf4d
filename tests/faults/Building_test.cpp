// The creation of each object of the database, and of each of the analyzer's constraints, with one allocation
// after the other failing. After a failure nothing has changed and the same call can be made again. In the
// end the model is the same as without faults.
#include "Allocator.h"

#include "Pelko/CPath.h"
#include "Pelko/Domain.h"
#include "Pelko/Instance.h"
#include "Pelko/Model.h"
#include "Pelko/Module.h"
#include "Pelko/Net.h"
#include "Pelko/Path.h"
#include "Pelko/Pin.h"
#include "Pelko/Subdomain.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using Pelko::Analyzer;
using Pelko::analyzer;
using Pelko::Cell;
using Pelko::cell;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Domain;
using Pelko::DPath;
using Pelko::Edge;
using Pelko::FPath;
using Pelko::Instance;
using Pelko::IOConstraint;
using Pelko::Model;
using Pelko::Module;
using Pelko::MPath;
using Pelko::Net;
using Pelko::Path;
using Pelko::Pin;
using Pelko::PLL;
using Pelko::Pole;
using Pelko::Subdomain;
using Pelko::WFG;

Module* module() { return cell->getModule(); }

Pole* pole(const std::string& name) {
    for (Pole* pole : cell->getPoles())
        if (pole->getName() == name)
            return pole;
    throw std::logic_error("no pole " + name);
}

Subdomain* subdomain() {
    return analyzer->getDomain(pole("clk"), nullptr)->getSubdomain(ClockMode::Rising, ClockMode::None);
}

Pin* pin(const std::string& instance, const std::string& name) {
    return module()->getInstance(instance)->getPin(name);
}

// --- The model as text ---

std::string label(const Pole* pole) { return pole ? pole->getName() : "-"; }

std::string label(const Delay& delay) { return delay._getLabel() + " "; }

template <class Range>
std::string labels(const Range& poles) {
    std::string text;
    for (const Pole* pole : poles)
        text += label(pole) + " ";
    return text;
}

std::string label(const IOConstraint& constraint) {
    return label(constraint.getClockRoot()) + " " + label(constraint.getMinimum()) +
           label(constraint.getMaximum());
}

std::string textOf(Pole* pole) {
    std::string text = std::to_string(pole->getIndex()) + " " + label(pole) + " pin " +
                       (pole->getPin() ? pole->getPin()->getName() : "-") + " main " +
                       label(pole->getMainPole()) + " clock " + label(pole->getClockPole()) +
                       (pole->isReferenced() ? " referenced" : "") + "\n  from ";
    for (const Edge* edge : pole->getIncomingEdges())
        text += label(edge->getSource()) + " ";
    text += "to ";
    for (const Edge* edge : pole->getOutgoingEdges())
        text += label(edge->getTarget()) + " ";
    return text + "\n  period " + label(analyzer->getRequiredPeriod(pole)) +
           label(analyzer->getPeriod(pole)) + "feedback " + label(analyzer->getMinPLLFeedbackDelay(pole)) +
           "slack " + label(analyzer->getIODelayLongestSlack(pole)) +
           label(analyzer->getIODelayShortestSlack(pole)) + "in " +
           label(analyzer->getInputConstraint(pole)) + "out " + label(analyzer->getOutputConstraint(pole)) +
           "\n";
}

std::string textOf(const Domain* domain) {
    std::string text = domain->getAlias() + (analyzer->isExclusive(domain) ? " exclusive" : "") + "\n";
    for (const Subdomain* subdomain : domain->getSubdomains())
        text += "  " + subdomain->getName() + ": " + labels(subdomain->getLaunchLeaves()) + "| " +
                labels(subdomain->getLatchLeaves()) +
                std::to_string(subdomain->getLongestPaths().getCount()) +
                std::to_string(subdomain->getShortestPaths().getCount()) + "\n";
    return text;
}

std::string textOfInstance(const char* name) {
    const Instance* instance = module()->getInstance(name);
    if (!instance)
        return {};
    std::string text = std::string(name) + "\n";
    for (const char* pinName : {"a", "b", "c"})
        if (const Pin* pin = instance->getPin(pinName))
            text += "  " + pin->getName() + " net " + (pin->getNet() ? pin->getNet()->getName() : "-") +
                    " main " + label(pin->getMainPole()) + " others " + labels(pin->getAuxiliaryPoles()) +
                    "\n";
    return text;
}

// All that can be read, including the references between objects.
std::string textOfModel() {
    std::string text;
    for (Pole* pole : cell->getPoles())
        text += textOf(pole);
    for (const Edge* edge : cell->getEdges())
        text += edge->getAlias() + (edge->isDestroyable() ? "" : " of a path") + "\n";
    for (const char* name : {"i", "pll", "wfg"})
        text += textOfInstance(name);
    for (const PLL* pll : module()->getPLLs())
        text += "pll " + pll->getName() + "\n";
    for (const char* name : {"n", "m"})
        if (const Net* net = module()->getNet(name)) {
            text += std::string("net ") + name;
            for (const Pin* receiver : net->getReceivers())
                text += " " + receiver->getName();
            text += "\n";
        }
    text += "inputs " + labels(analyzer->getConstrainedInputs()) + "outputs " +
            labels(analyzer->getConstrainedOutputs()) + "\n";
    for (const CPath* path : analyzer->getCPaths())
        text += path->getClass() + "\n";
    for (const Domain* domain : analyzer->getDomains())
        text += textOf(domain);
    return text;
}

// --- The calls ---

struct Row {
    const char* what;
    std::function<void()> call;
};

void connect(const char* source, const char* target) {
    Edge::create(pole(source), pole(target), Delay(1), Delay(2));
}

CPath::Objects objects() { return {{pole("in")}, {pole("out")}}; }

Pelko::Edges arcs() { return Ruvex::VectorCollection<Edge*>({pole("out")->getIncomingEdge(pole("in"))}); }

// Names are longer than a string's internal buffer if an allocation for them must be able to fail.
const Row rows[] = {
    {"an instance", [] { Instance::create(module(), "i"); }},
    {"a PLL", [] { PLL::create(module(), "pll"); }},
    {"a waveform generator", [] { WFG::create(module(), "wfg"); }},
    {"a long name", [] { Instance::create(module(), "an instance whose name is long"); }},
    {"a pin", [] { Pin::create(module()->getInstance("i"), "a"); }},
    {"another", [] { Pin::create(module()->getInstance("i"), "b"); }},
    {"one that drives", [] { Pin::create(module()->getInstance("i"), "c", Pin::Direction::Driver); }},
    {"a pin of the module", [] { Pin::create(module(), "p"); }},
    {"a net", [] { Net::create(module(), "n"); }},
    {"another net", [] { Net::create(module(), "m"); }},
    {"a receiver", [] { pin("i", "a")->connect(module()->getNet("n")); }},
    {"another receiver", [] { pin("i", "b")->connect(module()->getNet("n")); }},
    {"to another net", [] { pin("i", "a")->connect(module()->getNet("m")); }},
    {"to the same net", [] { pin("i", "b")->connect(module()->getNet("n")); }},
    {"off its net", [] { pin("i", "a")->connect(nullptr); }},
    {"a driver", [] { pin("i", "c")->connect(module()->getNet("n")); }},
    {"a clock source", [] { Pole::createClockSource(cell, "clk"); }},
    {"an input", [] { Pole::createInput(cell, "in"); }},
    {"an output", [] { Pole::createOutput(cell, "out"); }},
    {"a pole without a name", [] { Pole::create(cell); }},
    {"a pole with a long name", [] { Pole::create(cell, "a pole whose name is long"); }},
    {"poles", [] { Pole::create(cell, "x"); }},
    {"", [] { Pole::create(cell, "y"); }},
    {"", [] { Pole::create(cell, "z"); }},
    {"a pin's pole", [] { Pole::create(cell, pin("i", "a"), "a"); }},
    {"a clock pin's pole", [] { Pole::createClock(cell, pin("i", "b"), ClockMode::Rising, "c"); }},
    {"a check", [] { Pole::createCheck(pole("c"), "check"); }},
    {"another check", [] { Pole::createCheck(pole("c"), "check of a name that is long"); }},
    {"an arc", [] { connect("in", "x"); }},
    {"fans that outgrow their poles", [] { connect("in", "y"); }},
    {"", [] { connect("in", "z"); }},
    {"", [] { connect("in", "out"); }},
    {"", [] { connect("x", "out"); }},
    {"", [] { connect("y", "out"); }},
    {"", [] { connect("z", "out"); }},
    {"", [] { connect("x", "y"); }},
    {"", [] { connect("x", "z"); }},
    {"", [] { connect("in", "a"); }},
    {"a clock", [] { analyzer->setClock(pole("clk"), Delay(10), Delay(0), Delay(5), Delay(5)); }},
    {"a period", [] { analyzer->setPeriod(pole("c"), Delay(10)); }},
    {"a duty ratio", [] { analyzer->setDutyRatio(pole("x"), 40); }},
    {"a feedback", [] { analyzer->setPLLFeedbackDelay(pole("y"), Delay(1), Delay(2)); }},
    {"a latency", [] { analyzer->setSourceLatency(pole("z"), Delay(1), Delay(2)); }},
    {"clock groups",
     [] {
         analyzer->addClockGroups(Analyzer::GroupKind::Exclusive, {{pole("clk")}, {pole("c"), pole("x")}});
     }},
    {"an input's delay",
     [] {
         analyzer->setInputConstraint(pole("in"), {pole("clk"), ClockMode::Rising, Delay(1), Delay(2)});
     }},
    {"another in its place",
     [] {
         analyzer->setInputConstraint(pole("in"), {pole("c"), ClockMode::Rising, Delay(3), Delay(4)});
     }},
    {"an output's delay",
     [] {
         analyzer->setOutputConstraint(pole("out"), {pole("clk"), ClockMode::Falling, Delay(1), Delay(2)});
     }},
    {"a port's slack", [] { analyzer->mergeIODelayLongestSlack(pole("out"), Delay(7)); }},
    {"an exception", [] { CPath::create(objects()); }},
    {"a false path", [] { FPath::create(objects()); }},
    {"a maximum delay", [] { DPath::createMaximum(objects(), Delay(9)); }},
    {"a multicycle", [] { MPath::create(objects(), 2); }},
    {"a domain", [] { Domain::create(pole("clk"), nullptr); }},
    {"another domain", [] { Domain::create(pole("clk"), pole("c")); }},
    {"a subdomain",
     [] {
         Subdomain::create(analyzer->getDomain(pole("clk"), nullptr), ClockMode::Rising, ClockMode::None);
     }},
    {"a launch leaf", [] { subdomain()->captureLaunch(pole("in")); }},
    {"a latch leaf", [] { subdomain()->captureLatch(pole("out")); }},
    {"another", [] { subdomain()->captureLatch(pole("z")); }},
    {"a path", [] { Path::createLongest(subdomain(), arcs(), Delay(0), Delay(0), Delay(0)); }},
};

// --- Failing ---

// Builds a model from the rows: each is called again until no allocation fails. Returns the number of
// failures.
std::size_t build(bool failing, std::string& text) {
    std::size_t failures = 0;
    const Model model("design");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string before = textOfModel();
        for (unsigned long number = failing ? 1 : 0;; ++number) {
            Faults::failAllocation(number);
            try {
                row.call();
                Faults::failAllocation(0);
                break;
            } catch (const std::bad_alloc&) {
                ++failures;
            }
            EXPECT_EQ(textOfModel(), before);
            if (testing::Test::HasFailure())
                return failures;
        }
    }
    text = textOfModel();
    return failures;
}

TEST(Building, AnAllocationThatFailsChangesNothing) {
    std::string expected, text;
    build(false, expected);
    build(true, text); // creates what is created on first use
    const std::size_t before = Faults::liveBlocks();
    const std::size_t failures = build(true, text);
    EXPECT_EQ(text, expected);
    EXPECT_GT(failures, std::size(rows));
    EXPECT_EQ(Faults::liveBlocks(), before);
    std::cout << failures << " failures\n";
}

// Qt does not survive an allocation that fails while it creates an application, so there is one from the
// start. If Qt cannot connect, it leaks a block or two, so the blocks are not counted.
TEST(Building, AModelThatCannotBeMadeLeavesNone) {
    int count = 1;
    char name[] = "building";
    char* words[] = {name, nullptr};
    const QCoreApplication application(count, words);
    unsigned long number = 0;
    for (bool made = false; !made;) {
        Faults::failAllocation(++number);
        try {
            const Model model("a design whose name is long");
            Faults::failAllocation(0);
            made = true;
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(cell, nullptr);
        EXPECT_EQ(analyzer, nullptr);
        EXPECT_EQ(Pelko::application, nullptr);
    }
    EXPECT_GT(number, 5U);
}

} // namespace
