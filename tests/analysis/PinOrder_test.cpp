// Pins and sequences of pins in the order of their names, against strings and vectors of strings.
#include "analysis/PinOrder.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <string>

namespace {

using Base::none;

TEST(PinOrder, isThatOfTheNames) {
    Design::RoutedDesign design;
    const auto name = [&](const char* text) { return design.names.add(text); };
    for (const char* cell : {"a", "a/b", "a.", "b", "a!", "", "\xC3\xA4", "a/"}) {
        const Design::CellId number = design.addCell(name(cell), name("T"));
        for (const char* pin : {"a", "b", "b/a", "/", ""})
            design.addPin(number, name(pin));
    }
    for (const char* port : {"a", "a/a", "a/b", "clk", "clk[3]", "b/b/a"})
        design.addPin(none, name(port));
    const auto pins = Base::firstIds<Design::PinId>(design.pins.size());
    for (const Design::PinId a : pins)
        for (const Design::PinId b : pins)
            EXPECT_EQ(Analysis::isNamedBefore(design, a, b), design.pinName(a) < design.pinName(b))
                << design.pinName(a) << " " << design.pinName(b);
}

// Random sequences that share beginnings; the same one is often made twice.
TEST(PinOrder, ofSequencesIsLexicographic) {
    const unsigned seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    Design::RoutedDesign design;
    for (const char* port : {"d", "b", "a", "c"}) // not in the order of their numbers
        design.addPin(none, design.names.add(port));
    Analysis::Sequences sequences(design);
    std::vector<Analysis::SequenceId> numbers = {Analysis::Sequences::empty};
    std::vector<std::vector<std::string>> expected(1);
    for (int i = 0; i < 400; ++i) {
        const std::size_t from = i % 3 == 0 ? random() % numbers.size() : numbers.size() - 1;
        const Design::PinId pin(static_cast<std::uint32_t>(random() % 4));
        numbers.push_back(sequences.append(numbers[from], pin));
        expected.push_back(expected[from]);
        if (expected[from].empty() || expected[from].back() != design.pinName(pin))
            expected.back().push_back(design.pinName(pin));
    }
    for (std::size_t a = 0; a < numbers.size(); ++a)
        for (std::size_t b = 0; b < numbers.size(); ++b)
            ASSERT_EQ(sequences.isBefore(numbers[a], numbers[b]), expected[a] < expected[b]);
}

} // namespace
