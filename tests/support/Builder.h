// Builds designs in the in-memory model, in few words, and reads them back as names.
//
//   Support::Builder design;
//   Pole* clk = design.addClockSource("clk", 10);
//   Register a = design.addRegister("a", clk), b = design.addRegister("b", clk);
//   design.connect(a.output, b.data, 2, 5);
//   const Support::ToolPointer tool = Support::makeTool();
//   tool->launch();
//   EXPECT_EQ(Support::namesOf(analyzer->getDomains()), (Support::Names{"clk -> clk"}));
//
// The application is in batch mode: nothing is pumped unless a test clears the flag. One builder lives at a
// time.
#pragma once

#include "Pelko/Model.h"
#include "Vorlen/TimingMap.h"
#include "Vorlen/Tool.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Support {

// The special delays, for tables of integers.
constexpr int undefined = Pelko::Delay::undefinedValue;
constexpr int minimum = Pelko::Delay::minimumValue;
constexpr int maximum = Pelko::Delay::maximumValue;

constexpr Pelko::ClockMode::Code none = Pelko::ClockMode::None;
constexpr Pelko::ClockMode::Code falling = Pelko::ClockMode::Falling;
constexpr Pelko::ClockMode::Code rising = Pelko::ClockMode::Rising;

// A register as the graph shows it. Arcs lead from the clock to the output, and from the data pin into the
// check.
struct Register {
    Pelko::Pole* clock;  // "name/C"
    Pelko::Pole* data;   // "name/D"
    Pelko::Pole* check;  // "name/check"
    Pelko::Pole* output; // "name/Q"
};

class Builder {
public:
    using Pole = Pelko::Pole;

    explicit Builder(const std::string& name = "top") : model_(name) { Pelko::application->setBatch(true); }

    // Poles of no kind | input ports | output ports | clock sources, without a period or with one.
    Pole* addPole(const std::string& name = {}) { return Pole::create(Pelko::cell, name); }
    Pole* addInput(const std::string& name) { return Pole::createInput(Pelko::cell, name); }
    Pole* addOutput(const std::string& name) { return Pole::createOutput(Pelko::cell, name); }
    Pole* addClockSource(const std::string& name) { return Pole::createClockSource(Pelko::cell, name); }
    Pole* addClockSource(const std::string& name, int period) {
        Pole* source = addClockSource(name);
        setClock(source, period, period / 2);
        return source;
    }
    // A clock pole on a pin of its own | a check at it.
    Pole* addClock(const std::string& name, Pelko::ClockMode::Code mode = rising) {
        return Pole::createClock(Pelko::cell, Pelko::Pin::create(Pelko::cell->getModule(), name), mode, name);
    }
    Pole* addCheck(Pole* clock, const std::string& name) { return Pole::createCheck(clock, name); }
    // The clock pin is driven by `clock` without delay, where there is one.
    Register addRegister(const std::string& name, Pole* clock = nullptr, Pelko::ClockMode::Code mode = rising,
                         int clockToOutput = 0, int hold = 0, int setup = 0) {
        Register made{};
        made.clock = addClock(name + "/C", mode);
        made.data = addPole(name + "/D");
        made.check = addCheck(made.clock, name + "/check");
        made.output = addPole(name + "/Q");
        connect(made.clock, made.output, clockToOutput, clockToOutput);
        connect(made.data, made.check, hold, setup);
        if (clock)
            connect(clock, made.clock, 0, 0);
        return made;
    }

    Pelko::Edge* connect(Pole* source, Pole* target, int minDelay = 1, int maxDelay = 1) {
        return Pelko::Edge::create(source, target, Pelko::Delay(minDelay), Pelko::Delay(maxDelay));
    }
    // Arcs of delay 1 from each pole to the next.
    void connectAll(const std::vector<Pole*>& poles) {
        for (std::size_t i = 1; i < poles.size(); ++i)
            connect(poles[i - 1], poles[i]);
    }
    // So many new poles without names, behind each other and behind `start`. The last one is returned.
    Pole* addChain(Pole* start, std::size_t count, int delay = 1) {
        for (; count != 0; --count) {
            Pole* next = addPole();
            connect(start, next, delay, delay);
            start = next;
        }
        return start;
    }

    void setClock(Pole* root, int period, int highWidth, int shift = 0) {
        using Pelko::Delay;
        Pelko::analyzer->setClock(root, Delay(period), Delay(shift), Delay(highWidth),
                                  Delay(period - highWidth));
    }
    void constrainInput(Pole* port, Pole* clockRoot, Pelko::ClockMode::Code mode = rising, int minDelay = 0,
                        int maxDelay = 0) {
        Pelko::analyzer->setInputConstraint(
            port, Pelko::IOConstraint(clockRoot, mode, Pelko::Delay(minDelay), Pelko::Delay(maxDelay)));
    }
    void constrainOutput(Pole* port, Pole* clockRoot, Pelko::ClockMode::Code mode = rising, int minDelay = 0,
                         int maxDelay = 0) {
        Pelko::analyzer->setOutputConstraint(
            port, Pelko::IOConstraint(clockRoot, mode, Pelko::Delay(minDelay), Pelko::Delay(maxDelay)));
    }
    // The two clocks never work together | have no common time.
    void makeExclusive(Pole* a, Pole* b) {
        Pelko::analyzer->addClockGroups(Pelko::Analyzer::GroupKind::Exclusive, {{a}, {b}});
    }
    void makeAsynchronous(Pole* a, Pole* b) {
        Pelko::analyzer->addClockGroups(Pelko::Analyzer::GroupKind::Asynchronous, {{a}, {b}});
    }

    // The subdomain of two roots, made with its domain where there is none.
    Pelko::Subdomain* addSubdomain(Pole* launchRoot, Pole* latchRoot,
                                   Pelko::ClockMode::Code launchMode = rising,
                                   Pelko::ClockMode::Code latchMode = rising) {
        Pelko::Domain* domain = Pelko::analyzer->getDomain(launchRoot, latchRoot);
        if (!domain)
            domain = Pelko::Domain::create(launchRoot, latchRoot);
        Pelko::Subdomain* subdomain = domain->getSubdomain(launchMode, latchMode);
        return subdomain ? subdomain : Pelko::Subdomain::create(domain, launchMode, latchMode);
    }
    // The same, null where there is none.
    static Pelko::Subdomain* findSubdomain(Pole* launchRoot, Pole* latchRoot,
                                           Pelko::ClockMode::Code launchMode = rising,
                                           Pelko::ClockMode::Code latchMode = rising) {
        const Pelko::Domain* domain = Pelko::analyzer->getDomain(launchRoot, latchRoot);
        return domain ? domain->getSubdomain(launchMode, latchMode) : nullptr;
    }

private:
    Pelko::Model model_;
};

struct DestroyTool {
    void operator()(Vorlen::Tool* tool) const { tool->destroy(); }
};
using ToolPointer = std::unique_ptr<Vorlen::Tool, DestroyTool>;

inline ToolPointer makeTool() { return ToolPointer(Vorlen::Tool::create()); }

// --- Reading back ---
using Names = std::vector<std::string>;

inline std::string nameOf(const Pelko::Object* object) { return object ? object->getAlias() : "none"; }

// In the order of the collection or container. Arcs read "source -> target", subdomains
// "clkA:rising -> clkB:falling".
template <class Objects>
Names namesOf(const Objects& objects) {
    Names names;
    for (const auto* object : objects)
        names.push_back(nameOf(object));
    return names;
}

// Those that satisfy the predicate: namesOf(cell->getPoles(), [](Pole* pole) { return pole->isMarked(); })
template <class Objects, class Predicate>
Names namesOf(const Objects& objects, Predicate predicate) {
    Names names;
    for (auto* object : objects)
        if (predicate(object))
            names.push_back(nameOf(object));
    return names;
}

inline Names marked() {
    return namesOf(Pelko::cell->getPoles(), [](const Pelko::Pole* pole) { return pole->isMarked(); });
}

// The arcs that walks no longer follow.
inline Names inactive() {
    return namesOf(Pelko::cell->getEdges(), [](const Pelko::Edge* edge) { return !edge->isActive(); });
}

// All subdomains, domain by domain.
inline Names subdomains() {
    Names names;
    for (const Pelko::Domain* domain : Pelko::analyzer->getDomains())
        for (const Pelko::Subdomain* subdomain : domain->getSubdomains())
            names.push_back(subdomain->getName());
    return names;
}

// {{"ff/C", {"clk"}}, ...}
using Stems = std::map<std::string, Names>;

inline Stems stemsOf(const Vorlen::StemPoleSetMap& map) {
    Stems stems;
    for (const auto& [pole, stem] : map)
        stems[nameOf(pole)] = namesOf(stem);
    return stems;
}

} // namespace Support
