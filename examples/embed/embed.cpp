// A host that embeds the engine, on one page: builds two registers with logic between them in the in-memory
// model, launches the tool, and prints the results.
//
//        clk ──┬───────────────┬──────────────
//              ▼               ▼
//   din ──► [r0]──► and ──► [r1]──► dout
#include "Pelko/Model.h"
#include "Vorlen/Tool.h"

#include <cstdio>

using Pelko::ClockMode;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;

namespace {

// A register: its clock pole, its output, and the check of its data input. Times are in picoseconds.
struct Register {
    Pole* clock;
    Pole* data;
    Pole* output;

    Register(Pelko::Model& model, const char* name) {
        Pelko::Instance* instance = Pelko::Instance::create(model.getModule(), name);
        Pelko::Pin* clockPin = Pelko::Pin::create(instance, "C");
        Pelko::Pin* dataPin = Pelko::Pin::create(instance, "D");
        Pelko::Pin* outputPin = Pelko::Pin::create(instance, "Q", Pelko::Pin::Direction::Driver);
        clock = Pole::createClock(model.getCell(), clockPin, ClockMode::Rising);
        data = Pole::create(model.getCell(), dataPin);
        output = Pole::create(model.getCell(), outputPin);
        Edge::create(clock, output, Delay(300), Delay(400));
        // A check arc holds the hold value and the setup value.
        Edge::create(data, Pole::createCheck(clock, std::string(name) + "/D"), Delay(50), Delay(120));
    }
};

// The driver sets no hold relation between equal edges of one clock. This host sets it: data must be stable
// until the same edge.
class RelationFixer : public Pelko::ObjectListener {
public:
    void onCreated(Pelko::Object* object) override {
        auto* subdomain = dynamic_cast<Pelko::Subdomain*>(object);
        if (subdomain && subdomain->isPureClock() &&
            subdomain->getLaunchClockMode() == subdomain->getLatchClockMode())
            subdomain->fixHoldRelation(Delay(0));
    }
};

void printPaths(const char* kind, const Ruvex::Collection<Pelko::Path*>& paths) {
    for (const Pelko::Path* path : paths) {
        std::printf("  %s slack %5d ps:", kind, int(path->getSlack()));
        for (const Edge* edge : path->getEdges())
            std::printf(" %s ->", edge->getSource()->getName().c_str());
        std::printf(" %s\n", path->getEdges().getLast()->getTarget()->getName().c_str());
    }
}

} // namespace

int main() {
    Pelko::Model model("two_registers");
    Pole* clk = Pole::createClockSource(model.getCell(), "clk");
    Pole* din = Pole::createInput(model.getCell(), "din");
    const Register r0(model, "r0");
    Pole* gate = Pole::create(model.getCell(), "and/O");
    const Register r1(model, "r1");
    Pole* dout = Pole::createOutput(model.getCell(), "dout");
    Edge::create(clk, r0.clock, Delay(700), Delay(800));
    Edge::create(clk, r1.clock, Delay(720), Delay(850));
    Edge::create(din, r0.data, Delay(200), Delay(300));
    Edge::create(r0.output, gate, Delay(500), Delay(900));
    Edge::create(gate, r1.data, Delay(100), Delay(250));
    Edge::create(r1.output, dout, Delay(400), Delay(600));

    Pelko::Analyzer* analyzer = model.getAnalyzer();
    analyzer->setClock(clk, Delay(2000), Delay(0), Delay(1000), Delay(1000));
    analyzer->setInputConstraint(din, Pelko::IOConstraint(clk, ClockMode::Rising, Delay(100), Delay(150)));
    analyzer->setOutputConstraint(dout, Pelko::IOConstraint(clk, ClockMode::Rising, Delay(0), Delay(200)));
    analyzer->setVerbose(true);

    RelationFixer fixer;
    Pelko::Object::addListener(&fixer);
    Vorlen::Tool* tool = Vorlen::Tool::create();
    const bool completed = tool->launch();
    for (const Pelko::Domain* domain : analyzer->getDomains())
        for (const Pelko::Subdomain* subdomain : domain->getSubdomains()) {
            std::printf("%s: setup relation %s ps\n", subdomain->getName().c_str(),
                        subdomain->getSetupRelation()._getLabel().c_str());
            printPaths("setup", subdomain->getLongestPaths());
            printPaths("hold ", subdomain->getShortestPaths());
        }
    std::printf("achieved period of clk: %s ps\n", analyzer->getPeriod(clk)._getLabel().c_str());
    tool->destroy();
    Pelko::Object::removeListener(&fixer);
    return completed ? 0 : 1;
}
