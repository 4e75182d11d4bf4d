// The whole command in process: what becomes of inputs that are cut off, and of runs one after the other.
#include "cli/Session.h"

#include "report/Json.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Folder {
public:
    Folder() : path_((fs::temp_directory_path() / "vorlen-session.XXXXXX").string()) {
        EXPECT_NE(mkdtemp(path_.data()), nullptr);
    }
    ~Folder() { fs::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string write(const char* name, std::string_view text) const {
        const fs::path file = fs::path(path_) / name;
        std::ofstream(file, std::ios::binary) << text;
        return file.string();
    }

private:
    std::string path_;
};

std::string textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string example(const char* name) { return textOf(fs::path(VORLEN_EXAMPLES_DIR) / "two_regs" / name); }

// The report as JSON, but for what the inputs' sums are; nothing where an input is refused.
std::optional<std::string> reportOf(const Cli::Options& options, std::string& error) {
    Cli::Session session;
    try {
        Report::Report report = session.run(options);
        report.inputs.clear();
        std::ostringstream out;
        writeJson(report, out);
        return out.str();
    } catch (const Readers::BadInput& bad) {
        error = bad.what();
        return std::nullopt;
    }
}

std::string whole(const Cli::Options& options) {
    std::string error;
    const std::optional<std::string> report = reportOf(options, error);
    EXPECT_TRUE(report) << error;
    return report.value_or("");
}

// One of the files cut at every byte: refused with a place, or, where only white space is missing, nothing
// else. Says how often it was refused.
std::size_t refusals(const Cli::Options& options, const std::string& path, const std::string& text) {
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
    const Folder folder;
    const std::string sdf = example("two_regs.sdf");
    Cli::Options options;
    options.sdf = folder.write("d.sdf", sdf);
    options.sdc = {folder.write("d.sdc", example("two_regs.sdc"))};
    options.netlist = folder.write("d.json", example("two_regs.routed.json"));
    // All but the one that lacks nothing but the last line's end.
    const std::size_t end = sdf.find_last_not_of(" \n") + 1;
    EXPECT_EQ(refusals(options, options.sdf, sdf), end);
}

TEST(Session, RefusesANetlistThatIsCutAtAnyByte) {
    const Folder folder;
    // Of the netlist what the readers look at; the rest is attributes.
    const std::string netlist = R"({"modules": {"top": {"attributes": {"top": "1"}, "ports": {
 "clk": {"direction": "input", "bits": [2]}, "q": {"direction": "output", "bits": [5]}},
 "cells": {"r": {"type": "R", "port_directions": {"C": "input", "D": "input", "Q": "output"},
  "connections": {"C": [2], "D": ["0"], "Q": [5]}}}, "netnames": {"clk": {"bits": [2]}}}}}
)";
    Cli::Options options;
    options.sdf = folder.write("d.sdf", R"((DELAYFILE (SDFVERSION "3.0") (DIVIDER /) (TIMESCALE 1ps)
 (CELL (CELLTYPE "R") (INSTANCE r) (DELAY (ABSOLUTE (IOPATH (posedge C) Q (400)))))))");
    options.sdc = {folder.write("d.sdc", "create_clock -period 10 [get_ports clk]\n"
                                         "set_output_delay 1 -clock clk [get_ports q]\n")};
    options.netlist = folder.write("d.json", netlist);
    const std::size_t end = netlist.find_last_not_of(" \n") + 1;
    EXPECT_EQ(refusals(options, *options.netlist, netlist), end);
}

TEST(Session, GivesTheSameReportAgain) {
    const Folder folder;
    Cli::Options options;
    options.sdf = folder.write("d.sdf", example("two_regs.sdf"));
    options.sdc = {folder.write("d.sdc", example("two_regs.sdc"))};
    options.netlist = folder.write("d.json", example("two_regs.routed.json"));
    const std::string first = whole(options);
    Cli::Options other = options;
    other.sdc.clear();
    other.netlist.reset();
    EXPECT_NE(whole(other), first);
    EXPECT_EQ(whole(options), first);
}

TEST(Session, TellsItsStages) {
    const Folder folder;
    Cli::Options options;
    options.sdf = folder.write("d.sdf", example("two_regs.sdf"));
    options.sdc = {folder.write("d.sdc", "create_clock -period 10\n")};
    Cli::Session session;
    std::string stages;
    session.onStage = [&](std::string_view stage) { stages.append(stage).append("; "); };
    EXPECT_THROW(session.run(options), Readers::BadInput);
    EXPECT_EQ(stages, "reading the delays; reading the constraints; ");
}

} // namespace
