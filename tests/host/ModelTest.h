// A fixture with a model, and short functions that build in it.
#pragma once

#include "Pelko/Model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace HostTest {

using namespace Pelko;
using testing::ElementsAre;

// The special delays, in tables of integers.
constexpr int U = std::numeric_limits<int>::min();
constexpr int lowest = U + 1;
constexpr int highest = std::numeric_limits<int>::max();

template <class T>
std::vector<T> walk(const Ruvex::Collection<T>& collection) {
    std::vector<T> elements;
    for (T element : collection)
        elements.push_back(element);
    return elements;
}

inline Edges view(const std::vector<Edge*>& edges) {
    return Ruvex::MemoryCollection<Edge*>(edges.data(), edges.data() + edges.size());
}

class ModelTest : public testing::Test {
protected:
    Pole* addPole(const std::string& name = {}) { return Pole::create(model_.getCell(), name); }
    Pole* addClock(const std::string& pin, ClockMode::Code mode = ClockMode::Rising) {
        return Pole::createClock(model_.getCell(), Pin::create(model_.getModule(), pin), mode);
    }
    static Edge* connect(Pole* source, Pole* target, int minimum = 1, int maximum = 1) {
        return Edge::create(source, target, Delay(minimum), Delay(maximum));
    }
    // The subdomain of two roots, rising to rising. The domain is made if there is none.
    static Subdomain* addSubdomain(Pole* launch, Pole* latch, ClockMode::Code launchMode = ClockMode::Rising,
                                   ClockMode::Code latchMode = ClockMode::Rising) {
        Domain* domain = analyzer->getDomain(launch, latch);
        return Subdomain::create(domain ? domain : Domain::create(launch, latch), launchMode, latchMode);
    }

    Model model_{"top"};
};

} // namespace HostTest
