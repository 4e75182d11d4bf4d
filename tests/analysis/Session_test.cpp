// Whole sessions in one process: inputs that are cut off, failures, and one session after another.
#include "analysis/EngineRun.h"
#include "analysis/Session.h"
#include "base/Stopping.h"

#include "report/Json.h"

#include "Pelko/Domain.h"
#include "ProjectFiles.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string example(const char* name) { return textOf(fs::path(VORLEN_EXAMPLES_DIR) / "two_regs" / name); }

// The report as JSON without the inputs' checksums; nothing if an input is refused.
std::optional<std::string> reportOf(const Analysis::SessionOptions& options, std::string& error) {
    Analysis::Session session;
    try {
        Report::Report report = session.run(options);
        report.inputs.clear();
        std::ostringstream out;
        writeJson(report, out);
        return out.str();
    } catch (const Base::BadInput& bad) {
        error = bad.what();
        return std::nullopt;
    }
}

std::string whole(const Analysis::SessionOptions& options) {
    std::string error;
    const std::optional<std::string> report = reportOf(options, error);
    EXPECT_TRUE(report) << error;
    return report.value_or("");
}

// Cuts one of the files at every byte. It must be refused with a place, or, if only white space is missing,
// lead to the same report. Returns how often it was refused.
std::size_t refusals(const Analysis::SessionOptions& options, const std::string& path,
                     const std::string& text) {
    const std::string expected = whole(options);
    std::size_t refused = 0;
    for (std::size_t size = 0; size < text.size(); ++size) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << text.substr(0, size);
        std::string error;
        if (const std::optional<std::string> report = reportOf(options, error)) {
            EXPECT_EQ(*report, expected) << "cut at byte " << size;
            continue;
        }
        ++refused;
        EXPECT_TRUE(error.starts_with(path)) << error;
        EXPECT_NE(error.find(": error: "), std::string::npos) << error;
    }
    return refused;
}

TEST(Session, RefusesAnSdfThatIsCutAtAnyByte) {
    const Support::TemporaryFolder folder;
    const std::string sdf = example("two_regs.sdf");
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", sdf);
    options.sdc = {folder.write("d.sdc", example("two_regs.sdc"))};
    options.netlist = folder.write("d.json", example("two_regs.routed.json"));
    // All but the one that lacks nothing but the last line's end.
    const std::size_t end = sdf.find_last_not_of(" \n") + 1;
    EXPECT_EQ(refusals(options, options.sdf, sdf), end);
}

TEST(Session, RefusesANetlistThatIsCutAtAnyByte) {
    const Support::TemporaryFolder folder;
    // Of the netlist what the readers look at; the rest is attributes.
    const std::string netlist = R"({"modules": {"top": {"attributes": {"top": "1"}, "ports": {
 "clk": {"direction": "input", "bits": [2]}, "q": {"direction": "output", "bits": [5]}},
 "cells": {"r": {"type": "R", "port_directions": {"C": "input", "D": "input", "Q": "output"},
  "connections": {"C": [2], "D": ["0"], "Q": [5]}}}, "netnames": {"clk": {"bits": [2]}}}}}
)";
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", R"((DELAYFILE (SDFVERSION "3.0") (DIVIDER /) (TIMESCALE 1ps)
 (CELL (CELLTYPE "R") (INSTANCE r) (DELAY (ABSOLUTE (IOPATH (posedge C) Q (400)))))))");
    options.sdc = {folder.write("d.sdc", "create_clock -period 10 [get_ports clk]\n"
                                         "set_output_delay 1 -clock clk [get_ports q]\n")};
    options.netlist = folder.write("d.json", netlist);
    const std::size_t end = netlist.find_last_not_of(" \n") + 1;
    EXPECT_EQ(refusals(options, *options.netlist, netlist), end);
}

TEST(Session, ReturnsTheSameReportAgain) {
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", example("two_regs.sdf"));
    options.sdc = {folder.write("d.sdc", example("two_regs.sdc"))};
    options.netlist = folder.write("d.json", example("two_regs.routed.json"));
    const std::string first = whole(options);
    Analysis::SessionOptions other = options;
    other.sdc.clear();
    other.netlist.reset();
    EXPECT_NE(whole(other), first);
    EXPECT_EQ(whole(options), first);
}

// Two registers on one clock; the first one's pin needs a high time.
constexpr std::string_view smallSdf = R"((DELAYFILE (SDFVERSION "3.0") (DIVIDER /) (TIMESCALE 1ps)
 (CELL (CELLTYPE "top") (INSTANCE) (DELAY (ABSOLUTE
  (INTERCONNECT clk r/C (0)) (INTERCONNECT clk s/C (0)) (INTERCONNECT r/Q s/D (10)))))
 (CELL (CELLTYPE "R") (INSTANCE r) (DELAY (ABSOLUTE (IOPATH (posedge C) Q (400))))
  (TIMINGCHECK (WIDTH (posedge C) (100))))
 (CELL (CELLTYPE "R") (INSTANCE s) (DELAY (ABSOLUTE (IOPATH (posedge C) Q (400))))
  (TIMINGCHECK (SETUPHOLD D (posedge C) (5) (5))))))";

TEST(Session, ThrowsIfTheEngineGivesUp) {
    struct Refusing : Pelko::ObjectListener {
        Refusing() { Pelko::Object::addListener(this); }
        ~Refusing() override { Pelko::Object::removeListener(this); }
        void onCreated(Pelko::Object* object) override {
            if (dynamic_cast<Pelko::Domain*>(object))
                throw Ruvex::Exception("no room");
        }
    };
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", smallSdf);
    const std::string expected = whole(options);
    {
        const Refusing refusing;
        EXPECT_THAT([&] { Analysis::Session().run(options); },
                    testing::ThrowsMessage<std::logic_error>("the analysis was given up: no room"));
    }
    EXPECT_EQ(whole(options), expected);
}

// In a process of its own, since a stop cannot be taken back.
TEST(Session, AStopEndsTheNextStage) {
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", smallSdf);
    constexpr int interrupted = 130;
    const auto stopAtTheFirstStage = [&] {
        Analysis::Session session;
        int stages = 0;
        session.onStage = [&stages](std::string_view) {
            ++stages;
            if (Analysis::requestStop()) // nothing hears it while inputs are read
                std::exit(1);
        };
        try {
            session.run(options);
        } catch (const Base::Interrupted&) {
            std::exit(stages == 1 ? interrupted : 1);
        }
        std::exit(0);
    };
    EXPECT_EXIT(stopAtTheFirstStage(), testing::ExitedWithCode(interrupted), "");
}

TEST(Session, NamesTheFirstPairsWithoutAShortCommonPeriod) {
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", smallSdf);
    options.sdc = {folder.write("d.sdc", "foreach p {10.007 10.009 10.037 10.039 10.061 10.067 10.069} {\n"
                                         "  create_clock -add -name c$p -period $p [get_ports clk]\n}\n")};
    const std::vector<Base::Diagnostic> said = Analysis::Session().run(options).diagnostics;
    ASSERT_EQ(said.size(), 21U);
    EXPECT_EQ(toString(said.front()), options.sdc[0] +
                                          ":2: note: the common period of 'c10.007' and 'c10.009' has more "
                                          "than 1000 edges of the faster clock: only these are compared");
    EXPECT_EQ(toString(said.back()), "note: 1 more pairs of clocks have no short common period");
}

TEST(Session, AClockWithoutAPeriodHasNoPulses) {
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", smallSdf);
    EXPECT_EQ(Analysis::Session().run(options).pulseChecks.size(), 0U);
    options.sdc = {folder.write("d.sdc", "create_clock -period 1 -waveform {0 0.3} [get_ports clk]\n")};
    const Report::Report report = Analysis::Session().run(options);
    ASSERT_EQ(report.pulseChecks.size(), 1U);
    EXPECT_EQ(report.pulseChecks[0].slack, 200);
}

// Of one edge and of any edge: one arc with the delays of both.
TEST(Session, TwoArcsFromAClockToAnOutput) {
    const Support::TemporaryFolder folder;
    std::string sdf(smallSdf);
    const std::string arc = "(IOPATH (posedge C) Q (400))";
    sdf.insert(sdf.find(arc) + arc.size(), " (IOPATH C Q (300:350:600))");
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", sdf);
    options.sdc = {folder.write("d.sdc", "create_clock -period 10 [get_ports clk]\n")};
    const Report::Report report = Analysis::Session().run(options);
    ASSERT_EQ(report.endpoints.size(), 1U);
    EXPECT_EQ(report.endpoints[0].pin, "s/D");
    EXPECT_EQ(report.endpoints[0].setupSlack, 10000 - 600 - 10 - 5);
    EXPECT_EQ(report.endpoints[0].holdSlack, 300 + 10 - 5);
}

TEST(Session, NamesTheFirstRootsWithoutAClock) {
    std::string wires, cells;
    for (int i = 0; i < 22; ++i) {
        const std::string number = std::to_string(i);
        wires += "(INTERCONNECT p" + number + " r" + number + "/C (0))";
        cells += Support::cell("R", "r" + number, "(IOPATH (posedge C) Q (1))");
    }
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf =
        folder.write("d.sdf", "(DELAYFILE (SDFVERSION \"3.0\") (TIMESCALE 1ps) (CELL (CELLTYPE \"top\") "
                              "(INSTANCE) (DELAY (ABSOLUTE " +
                                  wires + ")))\n" + cells + ")");
    options.sdc = {folder.write("d.sdc", "create_clock -name v -period 10\n")};
    const std::vector<Base::Diagnostic> said = Analysis::Session().run(options).diagnostics;
    ASSERT_EQ(said.size(), 21U);
    EXPECT_EQ(toString(said.front()), "warning: no clock reaches 1 clock pin behind 'p0'");
    EXPECT_EQ(toString(said.back()), "warning: 2 more roots of clock pins have no clock");
}

TEST(Session, ReportsItsStages) {
    const Support::TemporaryFolder folder;
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", example("two_regs.sdf"));
    options.sdc = {folder.write("d.sdc", "create_clock -period 10\n")};
    Analysis::Session session;
    std::string stages;
    session.onStage = [&](std::string_view stage) { stages.append(stage).append("; "); };
    EXPECT_THROW(session.run(options), Base::BadInput);
    EXPECT_EQ(stages, "reading the delays; reading the constraints; ");
}

} // namespace
