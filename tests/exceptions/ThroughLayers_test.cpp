// Layers and numbers of through points on a small design:
//
//   r0/Q -> x -> m -> r1/D      x -> w/A
//   r0/Q -> y -> n -> r2/D      y -> w/B      w -> r3/D
#include "tests/support/command/Built.h"

#include "exceptions/ThroughLayers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Exceptions::AtomId;
using Exceptions::ThroughLayers;
using Support::Built;
using Support::cell;
using Support::wires;

std::string cells() {
    std::string text =
        wires("(INTERCONNECT r0/Q x/A (1)) (INTERCONNECT r0/Q y/A (1)) (INTERCONNECT x/Z m/A (1))"
              "(INTERCONNECT y/Z n/A (1)) (INTERCONNECT m/Z r1/D (1)) (INTERCONNECT n/Z r2/D (1))"
              "(INTERCONNECT x/Z w/A (1)) (INTERCONNECT y/Z w/B (1)) (INTERCONNECT w/Z r3/D (1))");
    for (const char* name : {"x", "y", "m", "n"})
        text += cell("BUF", name, "(IOPATH A Z (1))");
    text += cell("OR", "w", "(IOPATH A Z (1)) (IOPATH B Z (1))");
    for (const char* name : {"r0", "r1", "r2", "r3"})
        text += cell("DFF", name, "(IOPATH (posedge C) Q (1))", "(SETUP D (posedge C) (1))");
    return text;
}

class Layers {
public:
    explicit Layers(const Built& built) : built_(built), levels_(*built.network) {}

    // Takes points as "x/Z" or "m/Z+n/Z", followed by "@r1/D" if only that end point is of interest. Returns
    // the layers ("x/Z=1 y/Z=1 | ...", with "levels: " before if numbers are not shared) and the number of
    // classes.
    std::string of(const std::string& points, std::uint64_t walkLimit = ThroughLayers::usualWalkLimit) const {
        ThroughLayers::Points list;
        Base::IndexVector<AtomId, std::string> names;
        std::istringstream in(points);
        for (std::string word; in >> word;) {
            ThroughLayers::Point& point = list.emplace_back();
            names.push_back(word.substr(0, word.find('@')));
            point.anyEnd = names.back() == word;
            if (!point.anyEnd)
                point.endPins = {pin(word.substr(word.find('@') + 1))};
            std::istringstream nodes(names.back());
            for (std::string node; std::getline(nodes, node, '+');)
                point.nodes.emplace_back(built_.network->sourceOf(pin(node)));
        }
        const ThroughLayers layers(built_.annotated.design, *built_.network, levels_, list, walkLimit);
        std::string text = layers.isShared() ? "" : "levels: ";
        unsigned classes = 0;
        for (const ThroughLayers::Layer& layer : layers.layers()) {
            text += classes == 0 ? "" : "| ";
            for (const AtomId point : layer.points)
                text += names[point] + "=" + std::to_string(layers.code(point)) + " ";
            classes += layer.classes;
        }
        return text + "in " + std::to_string(classes);
    }

private:
    Design::PinId pin(const std::string& name) const {
        const auto& design = built_.annotated.design;
        const std::size_t slash = name.find('/');
        return design.findPin(design.findCell(name.substr(0, slash)), name.substr(slash + 1));
    }

    const Built& built_;
    const Exceptions::Levels levels_;
};

TEST(ThroughLayers, Numbers) {
    const Built built(cells(), "");
    const Layers layers(built);
    struct Row {
        const char *points, *expected;
    };
    const Row rows[] = {
        {"x/Z", "x/Z=1 in 1"},
        // Paths through either arrive at r3/D.
        {"x/Z y/Z", "x/Z=1 y/Z=2 in 2"},
        // Both lead to no common end point.
        {"m/Z n/Z", "m/Z=1 n/Z=1 in 1"},
        // r3/D need not tell them apart, because it is of interest to neither.
        {"x/Z@r1/D y/Z@r2/D", "x/Z=1 y/Z=1 in 1"},
        // It is of interest to one of them.
        {"x/Z@r3/D y/Z@r2/D", "x/Z=1 y/Z=2 in 2"},
        {"x/Z@r1/D y/Z@r3/D", "x/Z=1 y/Z=2 in 2"},
        // One behind the other.
        {"m/Z x/Z", "x/Z=1 | m/Z=1 in 2"},
        {"x/Z m/Z n/Z w/Z", "x/Z=1 n/Z=1 | m/Z=1 w/Z=1 in 2"},
        {"x/Z y/Z m/Z n/Z w/Z", "x/Z=1 y/Z=2 | m/Z=1 n/Z=1 w/Z=1 in 3"},
        // A point of several nodes.
        {"m/Z+n/Z w/Z", "m/Z+n/Z=1 w/Z=1 in 1"},
        {"x/Z+y/Z w/Z n/Z", "x/Z+y/Z=1 | w/Z=1 n/Z=1 in 2"},
        {"x/A x/Z", "x/A=1 | x/Z=1 in 2"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(layers.of(row.points), row.expected) << row.points;
}

TEST(ThroughLayers, LevelsIfTheWalksWouldBeTooLong) {
    const Built built(cells(), "");
    EXPECT_EQ(Layers(built).of("x/Z y/Z m/Z n/Z w/Z", 0), "levels: x/Z=1 y/Z=2 | m/Z=1 n/Z=2 w/Z=3 in 4");
}

} // namespace
