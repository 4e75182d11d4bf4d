// The command line: the options that it sets, and the messages of what it refuses.
#include "ProjectFiles.h"
#include "cli/Options.h"
#include "tests/support/Rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using namespace Cli;
using testing::ElementsAre;
using testing::HasSubstr;

struct Result {
    Invocation invocation;
    std::string out, err;
};

Result parsed(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "vorlen");
    std::ostringstream out, err;
    Result result;
    result.invocation = parse(static_cast<int>(arguments.size()), arguments.data(), out, err);
    result.out = out.str();
    result.err = err.str();
    return result;
}

// The options after 'analyze --sdf a.sdf'.
Options optionsOf(const std::vector<const char*>& arguments) {
    std::vector<const char*> all = {"analyze", "--sdf", "a.sdf"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Result result = parsed(all);
    EXPECT_EQ(result.invocation.exit, std::nullopt) << result.err;
    EXPECT_EQ(result.out + result.err, "");
    return result.invocation.options;
}

TEST(Options, defaults) {
    const Options options = optionsOf({});
    EXPECT_EQ(options.sdf, "a.sdf");
    EXPECT_THAT(options.sdc, ElementsAre());
    EXPECT_EQ(options.netlist, std::nullopt);
    EXPECT_EQ(options.top, std::nullopt);
    EXPECT_EQ(options.delays, Delays::minmax);
    EXPECT_EQ(options.clocks, ClockDefault::propagated);
    EXPECT_EQ(options.scale, -12);
    EXPECT_EQ(options.paths, 10u);
    EXPECT_EQ(options.perEndpoint, 1u);
    EXPECT_TRUE(options.setupPaths);
    EXPECT_TRUE(options.holdPaths);
    EXPECT_FALSE(options.unconstrained);
    EXPECT_FALSE(options.exceptions);
    EXPECT_EQ(options.mode, AnalysisMode::exhaustive);
    EXPECT_EQ(options.json, std::nullopt);
    EXPECT_FALSE(options.quiet);
    EXPECT_FALSE(options.verbose);
    EXPECT_EQ(options.color, ColorWhen::automatic);
    EXPECT_EQ(options.progress, ProgressWhen::automatic);
    EXPECT_FALSE(options.allowViolations);
}

TEST(Options, each) {
    struct Row {
        std::vector<const char*> arguments;
        bool (*holds)(const Options& options);
    };
    using O = const Options&;
    const Row rows[] = {
        {{"--sdc", "b.sdc", "--sdc", "a.sdc"},
         [](O o) {
             return o.sdc == std::vector<std::string>{"b.sdc", "a.sdc"};
         }},
        {{"--sdc", "[a,b].sdc"}, [](O o) { return o.sdc == std::vector<std::string>{"[a,b].sdc"}; }},
        {{"--netlist", "n.v"}, [](O o) { return o.netlist == "n.v"; }},
        {{"--netlist=a b=c.v"}, [](O o) { return o.netlist == "a b=c.v"; }},
        {{"--top", "\\x[3] "}, [](O o) { return o.top == "\\x[3] "; }},
        {{"--delays", "min"}, [](O o) { return o.delays == Delays::min; }},
        {{"--delays", "typ"}, [](O o) { return o.delays == Delays::typ; }},
        {{"--delays", "max"}, [](O o) { return o.delays == Delays::max; }},
        {{"--delays", "minmax"}, [](O o) { return o.delays == Delays::minmax; }},
        {{"--clocks", "ideal"}, [](O o) { return o.clocks == ClockDefault::ideal; }},
        {{"--clocks", "propagated"}, [](O o) { return o.clocks == ClockDefault::propagated; }},
        {{"--resolution", "1ps"}, [](O o) { return o.scale == -12; }},
        {{"--resolution", "100fs"}, [](O o) { return o.scale == -13; }},
        {{"--resolution", "10fs"}, [](O o) { return o.scale == -14; }},
        {{"--resolution", "1fs"}, [](O o) { return o.scale == -15; }},
        {{"--paths", "0"}, [](O o) { return o.paths == 0; }},
        {{"--paths=250"}, [](O o) { return o.paths == 250; }},
        {{"--paths", "4294967295"}, [](O o) { return o.paths == 4294967295u; }},
        {{"--per-endpoint", "3"}, [](O o) { return o.perEndpoint == 3; }},
        {{"--setup"}, [](O o) { return o.setupPaths && !o.holdPaths; }},
        {{"--hold"}, [](O o) { return !o.setupPaths && o.holdPaths; }},
        {{"--setup", "--hold"}, [](O o) { return o.setupPaths && o.holdPaths; }},
        {{"--unconstrained"}, [](O o) { return o.unconstrained; }},
        {{"--exceptions"}, [](O o) { return o.exceptions; }},
        {{"--mode", "critical"}, [](O o) { return o.mode == AnalysisMode::critical; }},
        {{"--mode", "exhaustive"}, [](O o) { return o.mode == AnalysisMode::exhaustive; }},
        {{"--json", "-"}, [](O o) { return o.json == "-"; }},
        {{"--json", "r.json"}, [](O o) { return o.json == "r.json"; }},
        {{"--quiet"}, [](O o) { return o.quiet && !o.verbose; }},
        {{"--verbose"}, [](O o) { return o.verbose && !o.quiet; }},
        {{"--color", "auto"}, [](O o) { return o.color == ColorWhen::automatic; }},
        {{"--color", "always"}, [](O o) { return o.color == ColorWhen::always; }},
        {{"--color", "never"}, [](O o) { return o.color == ColorWhen::never; }},
        {{"--progress", "auto"}, [](O o) { return o.progress == ProgressWhen::automatic; }},
        {{"--progress", "never"}, [](O o) { return o.progress == ProgressWhen::never; }},
        {{"--allow-violations"}, [](O o) { return o.allowViolations; }},
    };
    for (const Row& row : rows)
        EXPECT_TRUE(row.holds(optionsOf(row.arguments))) << testing::PrintToString(row.arguments);
}

TEST(Options, usageErrors) {
    struct Row {
        std::vector<const char*> arguments;
        const char* error;
    };
    const Row rows[] = {
        {{}, "expected a command: vorlen analyze --sdf FILE"},
        {{"check"}, "unexpected argument 'check'"},
        {{"--sdf", "a"}, "unknown option '--sdf'"},
        {{"analyze"}, "--sdf is required"},
        {{"analyze", "--sdf"}, "--sdf: expected a value"},
        {{"analyze", "--sdf", ""}, "--sdf: expected a file name, found ''"},
        {{"analyze", "--sdf", "--setup"}, "--sdf: expected a file name, found '--setup'"},
        {{"analyze", "--sdf", "a", "b"}, "unexpected argument 'b'"},
        {{"analyze", "--sdf", "a", "--sdf", "b"}, "--sdf: given more than once"},
        {{"analyze", "--sdf", "a", "--sdc", "b", "c"}, "unexpected argument 'c'"},
        {{"analyze", "--sdf", "a", "--sdc", ""}, "--sdc: expected a file name, found ''"},
        {{"analyze", "--sdf", "a", "--netlist"}, "--netlist: expected a value"},
        {{"analyze", "--sdf", "a", "--top", ""}, "--top: expected a name, found ''"},
        {{"analyze", "--sdf", "a", "--delays", "mean"},
         "--delays: expected min, typ, max or minmax, found 'mean'"},
        {{"analyze", "--sdf", "a", "--delays", "MIN"},
         "--delays: expected min, typ, max or minmax, found 'MIN'"},
        {{"analyze", "--sdf", "a", "--clocks", ""}, "--clocks: expected propagated or ideal, found ''"},
        {{"analyze", "--sdf", "a", "--resolution", "1ns"},
         "--resolution: expected 1ps, 100fs, 10fs or 1fs, found '1ns'"},
        {{"analyze", "--sdf", "a", "--mode", "all"}, "--mode: expected exhaustive or critical, found 'all'"},
        {{"analyze", "--sdf", "a", "--color", "yes"}, "--color: expected auto, always or never, found 'yes'"},
        {{"analyze", "--sdf", "a", "--progress", "always"},
         "--progress: expected auto or never, found 'always'"},
        {{"analyze", "--sdf", "a", "--paths", "-1"},
         "--paths: expected a whole number from 0 to 4294967295, found '-1'"},
        {{"analyze", "--sdf", "a", "--paths", "4294967296"},
         "--paths: expected a whole number from 0 to 4294967295, found '4294967296'"},
        {{"analyze", "--sdf", "a", "--paths", "1.5"},
         "--paths: expected a whole number from 0 to 4294967295, found '1.5'"},
        {{"analyze", "--sdf", "a", "--paths", ""},
         "--paths: expected a whole number from 0 to 4294967295, found ''"},
        {{"analyze", "--sdf", "a", "--per-endpoint", "0"},
         "--per-endpoint: expected a whole number from 1 to 4294967295, found '0'"},
        {{"analyze", "--sdf", "a", "--quiet", "--verbose"}, "--quiet: excludes --verbose"},
        {{"analyze", "--sdf", "a", "--color", "never", "--color", "never"}, "--color: given more than once"},
        {{"analyze", "--sdf", "a", "--pat", "3"}, "unknown option '--pat'"},
        {{"analyze", "--sdf", "a", "-q"}, "unknown option '-q'"},
        {{"analyze", "analyze"}, "unexpected argument 'analyze'"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const Result result = parsed(row.arguments);
        EXPECT_EQ(result.invocation.exit, badInput) << row.error;
        EXPECT_EQ(result.err, "vorlen: error: " + std::string(row.error) + " (see vorlen analyze --help)\n");
        EXPECT_EQ(result.out, "");
    }
}

TEST(Options, anInputIsNeverOverwritten) {
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "vorlen_options_test";
    std::filesystem::create_directories(folder);
    const std::string input = folder / "in.sdc", sameInput = folder / "." / "in.sdc",
                      other = folder / "other";
    std::ofstream(input) << "text";

    struct Row {
        std::vector<const char*> arguments;
        std::string error; // empty: none
    };
    const Row rows[] = {
        {{"analyze", "--sdf", input.c_str(), "--json", input.c_str()}, input},
        {{"analyze", "--sdf", "a", "--sdc", input.c_str(), "--json", sameInput.c_str()}, input},
        {{"analyze", "--sdf", "a", "--netlist", input.c_str(), "--json", input.c_str()}, input},
        {{"analyze", "--sdf", input.c_str(), "--json", other.c_str()}, ""},
        {{"analyze", "--sdf", "/dev/null", "--json", "/dev/null"}, ""},
        {{"analyze", "--sdf", "-", "--json", "-"}, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const Result result = parsed(row.arguments);
        EXPECT_EQ(result.err, row.error.empty() ? ""
                                                : "vorlen: error: --json: would overwrite the input '" +
                                                      row.error + "' (see vorlen analyze --help)\n");
        EXPECT_EQ(result.invocation.exit.has_value(), !row.error.empty());
    }
    std::filesystem::remove_all(folder);
}

TEST(Options, version) {
    const Result result = parsed({"--version"});
    EXPECT_EQ(result.invocation.exit, timingMet);
    EXPECT_EQ(result.out, "vorlen 4.0\n");
    EXPECT_EQ(result.err, "");
}

TEST(Options, help) {
    const Result general = parsed({"--help"});
    EXPECT_EQ(general.invocation.exit, timingMet);
    EXPECT_THAT(general.out, HasSubstr("Usage: vorlen [OPTIONS] [SUBCOMMAND]\n"));
    EXPECT_THAT(general.out, HasSubstr("  analyze  "));
    EXPECT_EQ(general.err, "");

    const Result help = parsed({"analyze", "--help"});
    EXPECT_EQ(help.invocation.exit, timingMet);
    EXPECT_THAT(help.out, HasSubstr("Usage: vorlen analyze [OPTIONS]\n"));
    EXPECT_THAT(
        help.out,
        HasSubstr("\n  --delays min|typ|max|minmax       which values of a triple the early and the late "
                  "side use (default: minmax)\n"));
    EXPECT_THAT(help.out,
                HasSubstr("\n  --paths N                         how many setup and how many hold paths are "
                          "reported (default: 10)\n"));
    EXPECT_THAT(help.out,
                HasSubstr("\nExit status: 0 timing met or nothing constrained, 1 timing violated, "));
    EXPECT_EQ(help.err, "");
}

// --- Other places that list the options ---

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> optionsInHelp() {
    std::vector<std::string> options;
    std::istringstream help(parsed({"analyze", "--help"}).out);
    for (std::string line; std::getline(help, line);)
        if (line.starts_with("  --"))
            options.push_back(line.substr(2, line.find(' ', 2) - 2));
    return options;
}

TEST(Options, documentedEverywhere) {
    const std::string docs = VORLEN_DOCS_DIR, completions = docs + "/../completions";
    const std::vector<std::string> options = optionsInHelp();
    EXPECT_EQ(options.size(), 21u);
    for (const std::string& option : options) {
        std::string escaped; // as roff has it
        for (const char c : option)
            escaped += c == '-' ? "\\-" : std::string(1, c);
        EXPECT_THAT(contentOf(docs + "/vorlen.1"), HasSubstr(escaped));
        EXPECT_THAT(contentOf(docs + "/command.md"), HasSubstr("`" + option));
        EXPECT_THAT(contentOf(completions + "/vorlen.bash"), HasSubstr(option));
        EXPECT_THAT(contentOf(completions + "/_vorlen"), HasSubstr(option));
    }
}

} // namespace
