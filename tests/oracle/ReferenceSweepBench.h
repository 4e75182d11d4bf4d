// A small model and helper functions that the tests of the reference sweep share: a clock on "clk", one on
// "clk2", and what a test adds to them.
#pragma once

#include "ReferenceSweep.h"

#include <string>

namespace oracle::bench {

using namespace Pelko;
using Vorlen::Timing;
using Map = ReferenceSweep::Map;

constexpr int undefined = Delay::undefinedValue;
constexpr int minimum = Delay::minimumValue;
constexpr int maximum = Delay::maximumValue;
constexpr ClockMode::Code none = ClockMode::None;
constexpr ClockMode::Code fall = ClockMode::Falling;
constexpr ClockMode::Code rise = ClockMode::Rising;

inline Delay d(int value) { return Delay(value); }
inline Timing t(int low, int high) { return Timing(Delay(low), Delay(high)); }
inline PseudoMask m(unsigned long bits) { return PseudoMask(bits); }

inline std::string textOf(const Map& map) {
    std::string text;
    for (const auto& [key, timing] : map)
        text += (text.empty() ? "" : " ") + std::to_string(key) + ":[" +
                timing.getMinimumDelay()._getLabel() + ":" + timing.getMaximumDelay()._getLabel() + "]";
    return text;
}

inline std::string textOf(const ReferenceSweep::PoleMap& maps) {
    std::string text;
    for (const auto& [pole, map] : maps)
        text += (text.empty() ? "" : ", ") + pole->getName() + " " + textOf(map);
    return text;
}

inline std::string textOf(const Ruvex::Collection<Path*>& paths) {
    std::string text;
    for (Path* path : paths)
        text += (text.empty() ? "" : ", ") + path->getAlias() + " " + path->getSlack()._getLabel();
    return text;
}

class Bench {
public:
    Model model{"bench"};
    Cell* owner = model.getCell();
    Pole* clk = Pole::createClockSource(owner, "clk");
    Pole* clk2 = Pole::createClockSource(owner, "clk2");

    Pole* clockPin(const std::string& name, ClockMode::Code mode = rise) {
        Instance* instance = Instance::create(model.getModule(), name);
        return Pole::createClock(owner, Pin::create(instance, "CK"), mode, name);
    }
    Pole* gate(const std::string& name) { return Pole::create(owner, name); }
    Edge* arc(Pole* source, Pole* target, int low, int high) {
        return Edge::create(source, target, d(low), d(high));
    }
    Subdomain* subdomain(Pole* launch, ClockMode::Code launchMode, Pole* latch, ClockMode::Code latchMode) {
        Domain* domain = analyzer->getDomain(launch, latch);
        return Subdomain::create(domain ? domain : Domain::create(launch, latch), launchMode, latchMode);
    }
    // Assigns the classes in order of creation: bits 1, 2, 4 …
    void classify() {
        unsigned long number = 0;
        PseudoMask::reset(analyzer->getCPaths().getCount());
        PseudoMask falsePaths, maxdelays, mindelays, multicycles;
        for (CPath* path : analyzer->getCPaths()) {
            path->setPseudoMask(PseudoMask::getBasic(++number));
            if (dynamic_cast<FPath*>(path))
                falsePaths |= path->getPseudoMask();
            if (const auto* delay = dynamic_cast<DPath*>(path))
                (delay->isMaximum() ? maxdelays : mindelays) |= path->getPseudoMask();
            if (dynamic_cast<MPath*>(path))
                multicycles |= path->getPseudoMask();
        }
        analyzer->setFalsePathMask(falsePaths);
        analyzer->setMaxdelayPathMask(maxdelays);
        analyzer->setMindelayPathMask(mindelays);
        analyzer->setMulticyclePathMask(multicycles);
    }
};

} // namespace oracle::bench
