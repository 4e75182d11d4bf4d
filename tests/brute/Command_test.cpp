// The command against the reference on random designs: files in, and out the setup and hold slack of every
// end point, its clocks and the exception that governs it.
//
// VORLEN_SEED and VORLEN_DESIGNS choose other designs and another number of them; VORLEN_MANY_DESIGNS sets
// the number of designs with many exceptions, which take longer.
#include "Analyse.h"
#include "Generate.h"
#include "Write.h"

#include "analysis/Session.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>

namespace {

using Support::TemporaryFolder;

std::uint64_t number(const char* variable, std::uint64_t otherwise) {
    const char* value = std::getenv(variable);
    return value ? std::strtoull(value, nullptr, 10) : otherwise;
}

// The lines of the exceptions, in order.
std::vector<unsigned> exceptionLines(const std::string& sdc) {
    std::vector<unsigned> lines;
    std::istringstream in(sdc);
    std::string line;
    for (unsigned at = 1; std::getline(in, line); ++at)
        for (const char* command :
             {"set_false_path", "set_multicycle_path", "set_max_delay", "set_min_delay"})
            if (line.starts_with(command))
                lines.push_back(at);
    return lines;
}

std::string shown(const std::optional<Brute::SideResult>& side, const std::vector<unsigned>& lines) {
    if (!side)
        return "none";
    std::string text = std::to_string(side->slack) + " of";
    for (const Brute::Worst& worst : side->pairs)
        text += " " + worst.launch + ">" + worst.capture + "#" +
                (worst.exception == Brute::none
                     ? "-"
                     : std::to_string(lines[static_cast<std::size_t>(worst.exception)]));
    return text;
}

// One side of an end point as the report has it, with the expected words wherever it agrees.
std::string compared(const std::optional<Brute::SideResult>& expected, const std::vector<unsigned>& lines,
                     const Report::MaybeTime& slack, const std::string (&clocks)[2],
                     const std::optional<Report::Exception>& exception) {
    if (!slack)
        return "none";
    const std::string pair =
        clocks[0] + ">" + clocks[1] + "#" + (exception ? std::to_string(exception->line) : "-");
    if (expected && expected->slack == *slack)
        for (const Brute::Worst& worst : expected->pairs)
            if (pair == worst.launch + ">" + worst.capture + "#" +
                            (worst.exception == Brute::none
                                 ? "-"
                                 : std::to_string(lines[static_cast<std::size_t>(worst.exception)])))
                return shown(expected, lines);
    return std::to_string(*slack) + " of " + pair;
}

// A design as files, and the options with which both sides read it.
struct Inputs {
    Brute::Design design;
    std::string sdc, netlist;
    Brute::Options options;
    Analysis::SessionOptions command;
};

Inputs inputsOf(const TemporaryFolder& folder, std::uint64_t seed, Brute::Shape shape) {
    const std::array delays = {Brute::DelayMode::minmax, Brute::DelayMode::minimum, Brute::DelayMode::typical,
                               Brute::DelayMode::maximum};
    const std::array named = {Analysis::Delays::minmax, Analysis::Delays::min, Analysis::Delays::typ,
                              Analysis::Delays::max};
    // Mostly the default; every way to read the delays comes up.
    const std::size_t which = seed % 8 < 4 ? 0 : seed % 4;
    Inputs inputs;
    auto& [design, sdc, netlist, options, command] = inputs;
    options.delays = delays[which];
    options.propagated = seed % 3 != 0;
    netlist = seed % 5 == 0 ? "verilog" : seed % 5 == 1 ? "none" : "json";
    if (netlist != "json")
        shape.pads = shape.bareWires = false;
    shape.openOutputs = seed % 4 == 1 || (netlist == "verilog" && seed % 4 != 0);
    design = Brute::generate(seed, shape);

    sdc = Brute::writeSdc(design);
    command.sdf = folder.write("d.sdf", Brute::writeSdf(design));
    command.sdc = {folder.write("d.sdc", sdc)};
    if (netlist == "json")
        command.netlist = folder.write("d.json", Brute::writeJson(design));
    if (netlist == "verilog")
        command.netlist = folder.write("d.v", Brute::writeVerilog(design));
    command.delays = named[which];
    command.clocks = options.propagated ? Analysis::ClockDefault::propagated : Analysis::ClockDefault::ideal;
    return inputs;
}

Report::Report runOf(const TemporaryFolder& folder, const Inputs& inputs,
                     const Model::LoopLimits& loopLimits = {}) {
    Analysis::Session session;
    session.loopLimits = loopLimits;
    Report::Report report = session.run(inputs.command);
    // Without a netlist a port that no delay names does not exist, and a constraint on it is lost.
    if (inputs.command.netlist || report.constraintsUnmatched == 0)
        return report;
    Analysis::SessionOptions command = inputs.command;
    command.netlist = folder.write("d.json", Brute::writeJson(inputs.design));
    Analysis::Session again;
    again.loopLimits = loopLimits;
    return again.run(command);
}

// What a run differs in from the reference; empty where it agrees.
std::string difference(const TemporaryFolder& folder, std::uint64_t seed, const Brute::Shape& shape) {
    const Inputs inputs = inputsOf(folder, seed, shape);
    const auto& [design, sdc, netlist, options, command] = inputs;
    const Report::Report report = runOf(folder, inputs);

    const std::vector<unsigned> lines = exceptionLines(sdc);
    const Brute::Result expected = Brute::analyse(design, options);
    std::string text;
    const auto compare = [&](const std::string& pin, const Brute::EndResult& end,
                             const Report::Endpoint& got) {
        const std::array wanted = {shown(end.setup, lines), shown(end.hold, lines)};
        const std::array found = {
            compared(end.setup, lines, got.setupSlack, got.setupClocks, got.setupException),
            compared(end.hold, lines, got.holdSlack, got.holdClocks, got.holdException)};
        for (std::size_t side = 0; side < 2; ++side)
            if (wanted[side] != found[side])
                text += pin + (side == 0 ? " setup" : " hold") + ": expected " + wanted[side] + ", found " +
                        found[side] + "\n";
    };
    for (const Base::Diagnostic& diagnostic : report.diagnostics)
        if (diagnostic.text.find("too large to be timed") != std::string::npos)
            text += diagnostic.text + "\n"; // not exact, so there would be nothing to compare
    std::map<std::string, Brute::EndResult> left = expected;
    for (const Report::Endpoint& endpoint : report.endpoints) {
        compare(endpoint.pin, left[endpoint.pin], endpoint);
        left.erase(endpoint.pin);
    }
    for (const auto& [pin, end] : left)
        compare(pin, end, {});
    return text.empty() ? text : "seed " + std::to_string(seed) + " (" + netlist + ")\n" + text + sdc;
}

// shapeOf: returns the shape for a seed.
template <class ShapeOf>
void compareShapes(const char* variable, std::uint64_t designs, ShapeOf shapeOf) {
    const TemporaryFolder folder;
    const std::uint64_t first = number("VORLEN_SEED", 1);
    const std::uint64_t count = number(variable, designs);
    std::cout << "seeds " << first << " to " << first + count - 1 << "\n";
    std::size_t bad = 0;
    for (std::uint64_t seed = first; seed < first + count && bad < 3; ++seed) {
        const std::string text = difference(folder, seed, shapeOf(seed));
        EXPECT_EQ(text, "");
        bad += !text.empty();
    }
}

void compareMany(std::uint64_t designs, Brute::ExceptionMode mode) {
    compareShapes("VORLEN_DESIGNS", designs, [&](std::uint64_t) {
        Brute::Shape shape;
        shape.exceptions = mode;
        return shape;
    });
}

// At least 65 exceptions, so that there are more of them than classes. False paths and delays are rare, since
// they would leave no path for others to govern.
Brute::Shape manyExceptions(std::uint64_t seed) {
    constexpr std::array most = {130, 130, 130, 260, 260, 500, 500, 1000, 1000, 2000};
    Brute::Shape shape;
    shape.minimumExceptions = 65;
    shape.maximumExceptions = most[seed % most.size()];
    shape.kinds = {1, 200, 4, 4};
    shape.maximumPaths = 3000;
    shape.minimumRegisters = 10;
    shape.maximumRegisters = 40;
    shape.minimumGates = 80;
    shape.maximumGates = 180;
    shape.throughPercent = seed % 3 == 0 ? 35 : 70;
    shape.throughEnds = false; // there would not be enough classes
    return shape;
}

TEST(Command, RandomDesignsAgree) { compareMany(2500, Brute::ExceptionMode::without); }

TEST(Command, RandomDesignsWithOneExceptionAPathAgree) { compareMany(2500, Brute::ExceptionMode::single); }

TEST(Command, RandomDesignsWithOverlappingExceptionsAgree) {
    compareMany(5000, Brute::ExceptionMode::overlapping);
}

TEST(Command, RandomDesignsWithLoopsAgree) {
    compareShapes("VORLEN_DESIGNS", 2000, [](std::uint64_t seed) {
        constexpr std::array modes = {Brute::ExceptionMode::without, Brute::ExceptionMode::single,
                                      Brute::ExceptionMode::overlapping, Brute::ExceptionMode::overlapping};
        Brute::Shape shape;
        shape.exceptions = modes[seed % modes.size()];
        shape.loopPercent = 100;
        shape.throughPercent = 60;
        return shape;
    });
}

// Random designs with loops under other limits. Counts the slacks that are smaller and those that are greater
// than the slacks of paths that pass no pin twice. A warning must name the greater ones.
struct Counts {
    std::size_t smaller = 0, greater = 0;
};
Counts compareUnder(const Model::LoopLimits& limits) {
    const TemporaryFolder folder;
    constexpr std::uint64_t share = 10; // of the designs of other tests
    const std::uint64_t first = number("VORLEN_SEED", 1),
                        count = std::max<std::uint64_t>(number("VORLEN_DESIGNS", 300 * share) / share, 1);
    Counts counts;
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        Brute::Shape shape;
        shape.exceptions = seed % 2 == 0 ? Brute::ExceptionMode::without : Brute::ExceptionMode::overlapping;
        shape.loopPercent = 100;
        shape.maximumExceptions = 5; // a through point takes a class per layer
        shape.maximumRegisters = 5;  // at most 20 end points, so that the warning names all of them
        const Inputs inputs = inputsOf(folder, seed, shape);
        const Report::Report report = runOf(folder, inputs, limits);
        std::map<std::string, Report::Endpoint> found;
        for (const Report::Endpoint& endpoint : report.endpoints)
            found[endpoint.pin] = endpoint;
        std::string named;
        for (const Base::Diagnostic& diagnostic : report.diagnostics)
            if (const std::size_t names = diagnostic.text.find("may be too large: ");
                names != std::string::npos)
                named = ", " + diagnostic.text.substr(diagnostic.text.find(": ", names) + 2);
        for (const auto& [pin, end] : Brute::analyse(inputs.design, inputs.options)) {
            const bool isNamed = named.find(", " + pin + ",") != std::string::npos ||
                                 named.find(", " + pin + ";") != std::string::npos;
            const auto compare = [&, &pin = pin](const std::optional<Brute::SideResult>& expected,
                                                 const Report::MaybeTime& slack) {
                if (!expected)
                    return;
                const bool isGreater = !slack || *slack > expected->slack;
                EXPECT_TRUE(!isGreater || isNamed) << "seed " << seed << " " << pin << named;
                counts.greater += isGreater ? 1 : 0;
                counts.smaller += slack && *slack < expected->slack ? 1 : 0;
            };
            compare(end.setup, found[pin].setupSlack);
            compare(end.hold, found[pin].holdSlack);
        }
    }
    return counts;
}

TEST(Command, SlacksBehindLoopsInLayersAreSafe) {
    Model::LoopLimits inLayers;
    inLayers.exactNodes = 0;
    const Counts counts = compareUnder(inLayers);
    EXPECT_GT(counts.smaller, 0U);
    EXPECT_EQ(counts.greater, 0U);
}

TEST(Command, SlacksThatACutLoopMayChangeAreNamed) {
    const Counts counts = compareUnder({0, 0, 0, 0, 0});
    EXPECT_GT(counts.greater, 0U);
}

TEST(Command, RandomDesignsWithManyExceptionsAgree) {
    compareShapes("VORLEN_MANY_DESIGNS", 200, manyExceptions);
}

} // namespace
