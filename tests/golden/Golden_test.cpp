// Whole runs of the command, compared byte for byte. A case is a folder here with
//
//   args         the command line behind "vorlen", in shell syntax
//   why          how the expected values follow, for the reader who has to judge a difference
//   files        other files that the run needs: paths from the project's root, one per line
//   stdout, stderr, status, report.json
//                the expected results; without report.json the run must leave no file behind
//   slacks.csv   endpoint,setup,hold in ns, worked out by hand: all end points of the run's JSON report
//   (others)     the run's own inputs
//
// The run goes in a copy of the folder, so that names in messages are short. VORLEN_UPDATE=1 in the
// environment rewrites what must come of it, but for slacks.csv.
#include "ProjectFiles.h"
#include "tests/report/SchemaValidator.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const fs::path cases = VORLEN_GOLDEN_DIR;
const fs::path root = cases.parent_path().parent_path();
// The files of a case that are no inputs of the run.
const std::set<std::string> aboutTheRun = {"args",   "why",    "files",       "stdout",
                                           "stderr", "status", "report.json", "slacks.csv"};

#ifdef VORLEN_COUNTS_LINES
constexpr bool countsLines = true;
#else
constexpr bool countsLines = false;
#endif

std::string textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void write(const fs::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
    ASSERT_TRUE(out.flush().good()) << file;
}

bool isUpdate() {
    const char* update = std::getenv("VORLEN_UPDATE");
    return update && std::string(update) == "1";
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

struct Outcome {
    std::string output, errors;
    int status = -1;
};

// Runs through a shell, so that a case can redirect its output.
Outcome run(const fs::path& folder, const std::string& args, const std::string& before = {}) {
    const Support::TemporaryFolder streams;
    const std::string out = (streams.path() / "out").string(), err = (streams.path() / "err").string();
    const std::string command = "cd '" + folder.string() + "' && { " + before +
                                "env -u NO_COLOR -u COLUMNS LC_ALL=C '" + VORLEN_COMMAND_FILE "' " + args +
                                "; } >'" + out + "' 2>'" + err + "' </dev/null";
    const int status = std::system(command.c_str());
    return {textOf(out), textOf(err), WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

// Key: end point. Values: setup and hold slack in fs.
using Slacks = std::map<std::string, std::vector<std::optional<long>>>;

std::optional<long> femtoseconds(double nanoseconds) { return std::lround(nanoseconds * 1e6); }

Slacks slacksOfTable(const fs::path& file) {
    Slacks slacks;
    const std::vector<std::string> lines = linesOf(textOf(file));
    for (std::size_t line = 1; line < lines.size(); ++line) {
        std::istringstream in(lines[line]);
        std::string pin;
        std::getline(in, pin, ',');
        for (std::string value; std::getline(in, value, ',');)
            slacks[pin].push_back(value == "-" ? std::nullopt : femtoseconds(std::stod(value)));
    }
    return slacks;
}

Slacks slacksOfReport(const std::string& json) {
    Slacks slacks;
    const auto document = nlohmann::json::parse(json, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << json;
    if (document.is_discarded())
        return slacks;
    for (const auto& endpoint : document.at("endpoints"))
        for (const char* side : {"setup_slack", "hold_slack"})
            slacks[endpoint.at("pin")].push_back(
                endpoint.at(side).is_null() ? std::nullopt : femtoseconds(endpoint.at(side).get<double>()));
    return slacks;
}

// The differences, one per line; empty if there is none.
std::string difference(const Slacks& expected, const Slacks& found) {
    const auto shown = [](const Slacks& slacks, const std::string& pin) {
        const auto at = slacks.find(pin);
        if (at == slacks.end())
            return std::string("nothing");
        std::string text;
        for (const std::optional<long>& slack : at->second)
            text += (slack ? std::to_string(*slack) + " fs" : "-") + " ";
        return text;
    };
    std::set<std::string> pins;
    for (const Slacks* slacks : {&expected, &found})
        for (const auto& [pin, both] : *slacks)
            pins.insert(pin);
    std::string text;
    for (const std::string& pin : pins)
        if (shown(expected, pin) != shown(found, pin))
            text += pin + ": expected " + shown(expected, pin) + ", found " + shown(found, pin) + "\n";
    return text;
}

// --- The cases ---

std::vector<std::string> caseNames() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(cases))
        if (fs::exists(entry.path() / "args"))
            names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

class Golden : public testing::TestWithParam<std::string> {
protected:
    // Compares the result, or rewrites the expected one.
    void settle(const std::string& name, const std::string& found) const {
        const fs::path file = cases / GetParam() / name;
        if (isUpdate())
            write(file, found);
        else
            EXPECT_EQ(textOf(file), found) << file;
    }
};

TEST_P(Golden, IsAsExpected) {
    const fs::path folder = cases / GetParam();
    EXPECT_TRUE(fs::exists(folder / "why")) << "expected a word on what must come of it";
    const Support::TemporaryFolder work;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (!aboutTheRun.contains(entry.path().filename().string()))
            fs::copy(entry.path(), work.path() / entry.path().filename(), fs::copy_options::recursive);
    for (const std::string& file : linesOf(textOf(folder / "files")))
        fs::copy(root / file, work.path() / fs::path(file).filename());
    std::set<std::string> names = work.names();

    const Outcome outcome = run(work.path(), linesOf(textOf(folder / "args")).at(0));
    settle("status", std::to_string(outcome.status) + "\n");
    settle("stderr", outcome.errors);
    settle("stdout", outcome.output);
    std::string json = outcome.output;
    if (fs::exists(work.path() / "report.json")) {
        json = textOf(work.path() / "report.json");
        settle("report.json", json);
        names.insert("report.json");
    } else {
        EXPECT_FALSE(fs::exists(folder / "report.json")) << "expected a report.json";
    }
    EXPECT_EQ(work.names(), names) << "a run leaves nothing else behind";
    if (json.starts_with('{')) {
        const ReportTests::SchemaValidator schema(
            nlohmann::json::parse(textOf(fs::path(VORLEN_DOCS_DIR) / "report.schema.json")));
        EXPECT_EQ(schema.validate(nlohmann::json::parse(json)), std::vector<std::string>());
    }
    if (fs::exists(folder / "slacks.csv")) {
        EXPECT_EQ(difference(slacksOfTable(folder / "slacks.csv"), slacksOfReport(json)), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Golden, testing::ValuesIn(caseNames()),
                         [](const auto& row) { return row.param; });

// --- The example designs, end point by end point ---

struct Example {
    const char *name, *constraints, *netlist, *clocks, *expected;
    std::size_t endpoints;
    int status; // some hold slacks are negative with propagated clocks
};

class Examples : public testing::TestWithParam<Example> {};

TEST_P(Examples, HaveTheKnownSlacks) {
    const Example& example = GetParam();
    const fs::path folder = fs::path(VORLEN_EXAMPLES_DIR) / example.name;
    const std::string name = example.name;
    const Outcome outcome =
        run(folder, "analyze --sdf " + name + ".sdf --sdc " + example.constraints + " --netlist " +
                        example.netlist + " --clocks " + example.clocks + " --json -");
    EXPECT_EQ(outcome.status, example.status) << outcome.errors;
    const Slacks expected = slacksOfTable(folder / example.expected);
    EXPECT_EQ(expected.size(), example.endpoints);
    EXPECT_EQ(difference(expected, slacksOfReport(outcome.output)), "");
}

INSTANTIATE_TEST_SUITE_P(Designs, Examples,
                         testing::Values(Example{"two_regs", "two_regs.sdc", "two_regs.routed.json",
                                                 "propagated", "expected_propagated.csv", 3, 1},
                                         Example{"two_regs", "two_regs_ideal.sdc", "two_regs.routed.json",
                                                 "ideal", "expected_ideal.csv", 3, 0},
                                         Example{"uart_fir", "uart_fir.sdc", "uart_fir.routed.json.gz",
                                                 "propagated", "expected_propagated.csv", 1486, 1},
                                         Example{"uart_fir", "uart_fir_ideal.sdc", "uart_fir.routed.json.gz",
                                                 "ideal", "expected_ideal.csv", 1486, 0}),
                         [](const auto& row) {
                             return std::string(row.param.name) + "_" + row.param.clocks;
                         });

// --- The stages and their times ---

TEST(Verbose, TellsHowLongEachStageTook) {
    const Support::TemporaryFolder work;
    fs::copy(cases / "common" / "pair.sdf", work.path());
    std::string stages;
    for (const std::string& line : linesOf(run(work.path(), "analyze --sdf pair.sdf --verbose").errors))
        if (std::smatch found; std::regex_match(line, found, std::regex("vorlen: (.*): [0-9.e-]+ s")))
            stages += found[1].str() + "; ";
    EXPECT_EQ(stages, "reading the delays; building the timing graph; analysing; reporting; ");
}

// --- A file that may not grow ---

TEST(Output, ThatDoesNotFitLeavesTheOldFile) {
    if (countsLines)
        GTEST_SKIP() << "the limit would cut off the counters' files too";
    const Support::TemporaryFolder work;
    fs::copy(cases / "common" / "pair.sdf", work.path());
    write(work.path() / "report.json", "as it was");
    const Outcome outcome =
        run(work.path(), "analyze --sdf pair.sdf --quiet --json report.json", "ulimit -f 1; ");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "report.json: error: cannot write: File too large\n");
    EXPECT_EQ(textOf(work.path() / "report.json"), "as it was");
    EXPECT_EQ(work.names(), (std::set<std::string>{"pair.sdf", "report.json"}));
}

// --- A script that wants too much ---

#ifndef __SANITIZE_ADDRESS__ // its shadow memory exceeds every address limit
TEST(Script, WhoseValueOutgrowsTheMemoryLeavesTheOldFile) {
    const Support::TemporaryFolder work;
    fs::copy(cases / "common" / "pair.sdf", work.path());
    write(work.path() / "large.sdc", "set x a\nwhile 1 {\n  append x $x\n}\n");
    write(work.path() / "report.json", "as it was");
    const Outcome outcome =
        run(work.path(), "analyze --sdf pair.sdf --sdc large.sdc --json report.json", "ulimit -v 600000; ");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors,
              "large.sdc:2: error: the script is given up: unable to realloc 268435457 bytes\n");
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(textOf(work.path() / "report.json"), "as it was");
    EXPECT_EQ(work.names(), (std::set<std::string>{"large.sdc", "pair.sdf", "report.json"}));
}
#endif

// --- Ctrl-C ---

// A run that waits for the bytes of one of its inputs, so that the result does not depend on speed.
class Interruption : public testing::Test {
protected:
    // Makes a pipe of that name, starts a run, and returns when the run has opened the pipe.
    void begin(const std::string& pipe, std::vector<std::string> args) {
        const std::string path = (folder_.path() / pipe).string();
        ASSERT_EQ(mkfifo(path.c_str(), S_IRUSR | S_IWUSR), 0) << path;
        args.insert(args.begin(), VORLEN_COMMAND_FILE);
        child_ = fork();
        ASSERT_GE(child_, 0);
        if (child_ == 0)
            become(args);
        pipe_ = Support::openForReader(path);
        ASSERT_GE(pipe_, 0) << path << " is not opened by the run";
    }
    void feed(const std::string& text) {
        EXPECT_EQ(::write(pipe_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(pipe_);
        pipe_ = -1;
    }
    // The status as waitpid() reports it after a signal.
    int end(int signal) {
        kill(child_, signal);
        const std::optional<int> status = Support::waitFor(child_);
        EXPECT_TRUE(status) << "the run goes on";
        child_ = -1;
        return status.value_or(0);
    }
    // The exit status after a SIGINT, and how long it took.
    int interrupt(std::chrono::milliseconds& took) {
        const auto start = std::chrono::steady_clock::now();
        const int status = end(SIGINT);
        took =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void TearDown() override {
        if (pipe_ >= 0)
            close(pipe_);
        if (child_ > 0)
            Support::waitFor(child_, {}); // a test that failed half-way left it running
    }

    Support::TemporaryFolder folder_;

private:
    [[noreturn]] void become(const std::vector<std::string>& args) const {
        std::vector<char*> words;
        for (const std::string& arg : args)
            words.push_back(const_cast<char*>(arg.c_str()));
        words.push_back(nullptr);
        const int errors = open((folder_.path() / "stderr").c_str(), O_WRONLY | O_CREAT, S_IRUSR | S_IWUSR);
        if (errors >= 0 && dup2(errors, STDERR_FILENO) >= 0 && chdir(folder_.path().c_str()) == 0)
            execv(words[0], words.data());
        _exit(127);
    }

    pid_t child_ = -1;
    int pipe_ = -1;
};

constexpr int interrupted = 130;
// Half a second is the aim. The test allows more, for a machine that is busy with other tests, and for a
// process that adds up its coverage counters at exit.
constexpr std::chrono::milliseconds patience{countsLines ? 20'000 : 4'000};

TEST_F(Interruption, OfReadingEndsAtOnceAndLeavesNoFile) {
    begin("slow.sdf", {"analyze", "--sdf", "slow.sdf", "--json", "report.json"});
    std::chrono::milliseconds took{};
    EXPECT_EQ(interrupt(took), interrupted);
    EXPECT_LT(took, patience);
    EXPECT_EQ(textOf(folder_.path() / "stderr"), "vorlen: interrupted\n");
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"slow.sdf", "stderr"}));
}

TEST_F(Interruption, OfAScriptWithoutEndLeavesTheOldFile) {
    fs::copy(cases / "common" / "pair.sdf", folder_.path());
    write(folder_.path() / "report.json", "as it was");
    begin("slow.sdc", {"analyze", "--sdf", "pair.sdf", "--sdc", "slow.sdc", "--json", "report.json"});
    feed("while 1 {}\n");
    std::chrono::milliseconds took{};
    EXPECT_EQ(interrupt(took), interrupted);
    EXPECT_LT(took, patience);
    EXPECT_EQ(textOf(folder_.path() / "report.json"), "as it was");
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"pair.sdf", "report.json", "slow.sdc", "stderr"}));
}

TEST_F(Interruption, OfACommandWithoutEndLeavesNoFile) {
    fs::copy(cases / "common" / "pair.sdf", folder_.path());
    begin("slow.sdc", {"analyze", "--sdf", "pair.sdf", "--sdc", "slow.sdc", "--json", "report.json"});
    feed("expr {10 ** 100000000}\n");
    std::this_thread::sleep_for(
        std::chrono::milliseconds(200)); // otherwise the signal may arrive before the command runs
    std::chrono::milliseconds took{};
    EXPECT_EQ(interrupt(took), interrupted);
    EXPECT_LT(took, patience);
    EXPECT_EQ(textOf(folder_.path() / "stderr"), "vorlen: interrupted\n");
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"pair.sdf", "slow.sdc", "stderr"}));
}

TEST_F(Interruption, ByOtherSignalsLeavesNoFileEither) {
    begin("slow.sdf", {"analyze", "--sdf", "slow.sdf", "--json", "report.json"});
    const int status = end(SIGTERM);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"slow.sdf", "stderr"}));
}

// 300 clocks on one port are 90,000 pairs: the analysis takes seconds.
TEST_F(Interruption, OfTheAnalysisLeavesNoFile) {
    fs::copy(cases / "common" / "pair.sdf", folder_.path());
    begin("slow.sdc",
          {"analyze", "--sdf", "pair.sdf", "--sdc", "slow.sdc", "--json", "report.json", "--verbose"});
    feed("for {set i 0} {$i < 300} {incr i} {\n"
         "  create_clock -add -name c$i -period [expr {10 + 0.01 * $i}] [get_ports clk]\n"
         "}\n");
    const fs::path errors = folder_.path() / "stderr";
    const auto last = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (textOf(errors).find("Analyzing project") == std::string::npos) { // the engine's first line
        ASSERT_LT(std::chrono::steady_clock::now(), last) << textOf(errors);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::chrono::milliseconds took{};
    EXPECT_EQ(interrupt(took), interrupted);
    EXPECT_LT(took, patience);
    EXPECT_NE(textOf(errors).find("vorlen: interrupted\n"), std::string::npos) << textOf(errors);
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"pair.sdf", "slow.sdc", "stderr"}));
}

} // namespace
