// The command as a process: what it leaves behind, and its status, if an output fails or a signal comes.
// Every wait has a deadline.
#include "ProjectFiles.h"
#include "tests/support/Rows.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

#ifdef VORLEN_COUNTS_LINES
constexpr bool countsLines = true;
#else
constexpr bool countsLines = false;
#endif
// Half a second is promised; a machine that is busy with other tests gets more.
constexpr std::chrono::milliseconds patience{countsLines ? 20'000 : 2'000};
constexpr std::chrono::milliseconds deadline{120'000}; // of what is no matter of speed

std::string textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// How a process ended: "exit 2", "signal 15", "still there".
using Ending = std::string;

class ProcessTest : public testing::Test {
protected:
    ProcessTest() { fs::copy(fs::path(VORLEN_GOLDEN_DIR) / "common" / "pair.sdf", folder_.path()); }
    ~ProcessTest() override {
        if (child_ > 0) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
    }

    struct How {
        std::string output = "out"; // standard output; empty: a pipe that nobody reads
        std::vector<int> ignored;
    };
    // In the folder, with the signals as a shell leaves them; "analyze" is understood.
    void start(std::vector<std::string> args) { start(std::move(args), How{}); }
    void start(std::vector<std::string> args, const How& how) {
        args.insert(args.begin(), {VORLEN_COMMAND_FILE, "analyze"});
        std::vector<char*> words;
        for (std::string& arg : args)
            words.push_back(arg.data());
        words.push_back(nullptr);
        child_ = fork();
        ASSERT_GE(child_, 0);
        if (child_ == 0)
            become(words.data(), how);
    }
    Ending wait(std::chrono::milliseconds patient = deadline) {
        const auto last = std::chrono::steady_clock::now() + patient;
        int status = 0;
        while (waitpid(child_, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > last)
                return "still there";
            std::this_thread::sleep_for(1ms);
        }
        child_ = -1;
        return WIFEXITED(status) ? "exit " + std::to_string(WEXITSTATUS(status))
                                 : "signal " + std::to_string(WTERMSIG(status));
    }
    Ending run(std::vector<std::string> args) { return run(std::move(args), How{}); }
    Ending run(std::vector<std::string> args, const How& how) {
        start(std::move(args), how);
        return wait();
    }
    void signal(int number) const { kill(child_, number); }

    // A constraint file that the run waits for: it is being read when this comes back.
    void startAndHold(std::vector<std::string> args, const How& how) {
        ASSERT_EQ(mkfifo(at("held.sdc").c_str(), S_IRUSR | S_IWUSR), 0);
        args.insert(args.end(), {"--sdc", "held.sdc"});
        start(std::move(args), how);
        const auto last = std::chrono::steady_clock::now() + deadline;
        while ((held_ = open(at("held.sdc").c_str(), O_WRONLY | O_NONBLOCK)) < 0) {
            ASSERT_LT(std::chrono::steady_clock::now(), last);
            std::this_thread::sleep_for(1ms);
        }
    }
    void release() {
        constexpr std::string_view text = "create_clock -period 10 [get_ports clk]\n";
        EXPECT_EQ(::write(held_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(held_);
    }

    std::string at(const std::string& name) const { return folder_.at(name); }
    void write(const std::string& name, const std::string& text) const { std::ofstream(at(name)) << text; }
    std::string errors() const { return textOf(at("err")); }
    // Without the streams.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            if (const std::string name = entry.path().filename(); name != "out" && name != "err")
                names.push_back(name);
        return names;
    }

private:
    [[noreturn]] void become(char** words, const How& how) const {
        for (int number = 1; number < NSIG; ++number)
            std::signal(number, SIG_DFL);
        for (const int number : how.ignored)
            std::signal(number, SIG_IGN);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        int ends[2] = {-1, -1};
        if (chdir(folder_.path().c_str()) != 0 || pipe(ends) != 0)
            _exit(127);
        close(ends[0]);
        constexpr mode_t mode = S_IRUSR | S_IWUSR;
        const int output =
            how.output.empty() ? ends[1] : open(how.output.c_str(), O_WRONLY | O_CREAT | O_APPEND, mode);
        const int error = open("err", O_WRONLY | O_CREAT | O_TRUNC, mode);
        if (output >= 0 && error >= 0 && dup2(output, STDOUT_FILENO) >= 0 && dup2(error, STDERR_FILENO) >= 0)
            execv(words[0], words);
        _exit(127);
    }

    Support::TemporaryFolder folder_;
    pid_t child_ = -1;
    int held_ = -1;
};

// --- Outputs that would overwrite an input ---

TEST_F(ProcessTest, AFileThatConstraintsSourceIsNoOutput) {
    const std::string clock = "create_clock -period 10 [get_ports clk]\n";
    write("pins.tcl", clock);
    write("top.sdc", "source pins.tcl\n");
    fs::create_symlink("pins.tcl", at("link"));
    fs::create_hard_link(at("pins.tcl"), at("other"));
    struct Row {
        const char *json, *output, *option;
    };
    const Row rows[] = {
        {"pins.tcl", "out", "--json"},
        {"./pins.tcl", "out", "--json"},
        {"link", "out", "--json"},
        {"other", "out", "--json"},
        {nullptr, "pins.tcl", "standard output"},
        {"report.json", "link", "standard output"},
        {"-", "pins.tcl", "--json"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        std::vector<std::string> args = {"--sdf", "pair.sdf", "--sdc", "top.sdc"};
        if (row.json)
            args.insert(args.end(), {"--json", row.json});
        EXPECT_EQ(run(args, {row.output, {}}), "exit 2") << row.option;
        EXPECT_EQ(errors(), std::string("vorlen: error: ") + row.option +
                                ": would overwrite the input 'pins.tcl' (see vorlen analyze --help)\n");
        EXPECT_EQ(textOf(at("pins.tcl")), clock);
        EXPECT_THAT(names(), UnorderedElementsAre("pair.sdf", "pins.tcl", "top.sdc", "link", "other"));
    }
}

TEST_F(ProcessTest, AnInputIsNoStandardOutput) {
    const std::string text = textOf(at("pair.sdf"));
    EXPECT_EQ(run({"--sdf", "pair.sdf"}, {"pair.sdf", {}}), "exit 2");
    EXPECT_EQ(errors(), "vorlen: error: standard output: would overwrite the input 'pair.sdf' (see vorlen "
                        "analyze --help)\n");
    EXPECT_EQ(textOf(at("pair.sdf")), text);
}

// --- Outputs that cannot be written ---

TEST_F(ProcessTest, WithoutTheTextThereIsNoFile) {
    // With constraints: Tcl would ignore SIGPIPE.
    const std::vector<std::string> args = {"--sdf", "pair.sdf", "--sdc", "c.sdc", "--json", "report.json"};
    write("c.sdc", "create_clock -period 10 [get_ports clk]\n");
    write("report.json", "as it was");
    struct Row {
        How how;
        const char *ending, *error;
    };
    const Row rows[] = {
        {{"/dev/full", {}}, "exit 2", "standard output: error: cannot write: No space left on device\n"},
        {{"", {SIGPIPE}}, "exit 2", "standard output: error: cannot write: Broken pipe\n"},
        {{"", {}}, "signal 13", ""}, // as of any program whose reader has had enough
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(run(args, row.how), row.ending);
        EXPECT_THAT(errors(), testing::EndsWith(row.error));
        EXPECT_EQ(textOf(at("report.json")), "as it was");
        EXPECT_THAT(names(), UnorderedElementsAre("c.sdc", "pair.sdf", "report.json"));
    }
    EXPECT_EQ(run(args), "exit 0");
    EXPECT_THAT(textOf(at("report.json")), HasSubstr("\"schema\""));
}

TEST_F(ProcessTest, APlaceThatIsTakenMeanwhileIsAnError) {
    startAndHold({"--sdf", "pair.sdf", "--json", "report.json"}, How{});
    fs::create_directory(at("report.json"));
    release();
    EXPECT_EQ(wait(), "exit 2");
    EXPECT_EQ(errors(), "report.json: error: cannot write: Is a directory\n");
    EXPECT_THAT(names(), UnorderedElementsAre("held.sdc", "pair.sdf", "report.json"));
}

// --- Signals ---

TEST_F(ProcessTest, SignalsLeaveNoFile) {
    std::vector<int> signals = {SIGHUP,  SIGQUIT, SIGTERM, SIGPIPE,   SIGALRM, SIGUSR1, SIGUSR2,
                                SIGXCPU, SIGPROF, SIGIO,   SIGVTALRM, SIGABRT, SIGSEGV, SIGBUS};
#ifdef __SANITIZE_ADDRESS__ // which has its own handlers of faults
    std::erase_if(signals, [](int number) { return number == SIGSEGV || number == SIGBUS; });
#endif
    signals.push_back(SIGRTMIN);
    for (const int number : signals) {
        startAndHold({"--sdf", "pair.sdf", "--json", "report.json"}, How{});
        signal(number);
        EXPECT_EQ(wait(), "signal " + std::to_string(number));
        EXPECT_EQ(errors(), "");
        EXPECT_THAT(names(), UnorderedElementsAre("held.sdc", "pair.sdf")) << number;
        fs::remove(at("held.sdc"));
    }
}

TEST_F(ProcessTest, CtrlCIsAStatus) {
    startAndHold({"--sdf", "pair.sdf", "--json", "report.json"}, How{});
    signal(SIGINT);
    EXPECT_EQ(wait(patience), "exit 130");
    EXPECT_EQ(errors(), "vorlen: interrupted\n");
    EXPECT_THAT(names(), UnorderedElementsAre("held.sdc", "pair.sdf"));
}

// As nohup and a shell's background jobs have it.
TEST_F(ProcessTest, IgnoredSignalsStayIgnored) {
    const std::vector<int> ignored = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGXCPU};
    startAndHold({"--sdf", "pair.sdf", "--json", "report.json"}, {"out", ignored});
    for (const int number : ignored)
        signal(number);
    EXPECT_EQ(wait(50ms), "still there");
    release();
    EXPECT_EQ(wait(), "exit 0");
    EXPECT_EQ(errors(), "");
    EXPECT_THAT(names(), UnorderedElementsAre("held.sdc", "pair.sdf", "report.json"));
}

// Stages with two ways each, all of one length: 2^40 paths.
std::string ladder(std::size_t stages) {
    std::string wires = "(INTERCONNECT clk a/C (0))(INTERCONNECT clk b/C (0))", cells, before = "a/Q";
    for (std::size_t i = 0; i < stages; ++i) {
        const std::string name = "g" + std::to_string(i);
        for (const char* pin : {"/A", "/B"})
            wires += "(INTERCONNECT " + before + " " + name + pin + " (1))";
        cells += Support::cell("G", name, "(IOPATH A Z (1)) (IOPATH B Z (1))");
        before = name + "/Z";
    }
    for (const char* name : {"a", "b"})
        cells += Support::flipFlop(name, {.type = "R"});
    return Support::sdf(Support::wires(wires + "(INTERCONNECT " + before + " b/D (1))") + cells);
}

TEST_F(ProcessTest, OneCtrlCEndsALongPathSearch) {
    write("ladder.sdf", ladder(40));
    write("clock.sdc", "create_clock -period 10 [get_ports clk]\n");
    start({"--sdf", "ladder.sdf", "--sdc", "clock.sdc", "--paths", "1000000", "--per-endpoint", "1000000",
           "--json", "report.json", "--verbose"});
    const auto last = std::chrono::steady_clock::now() + deadline;
    while (errors().find("Analyzing project") == std::string::npos && std::chrono::steady_clock::now() < last)
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(wait(200ms), "still there");
    signal(SIGINT);
    EXPECT_EQ(wait(patience), "exit 130");
    EXPECT_THAT(errors(), testing::EndsWith("vorlen: interrupted\n"));
    EXPECT_THAT(names(), UnorderedElementsAre("ladder.sdf", "clock.sdc", "pair.sdf"));
}

// The design is large enough that it takes a while to take it down.
TEST_F(ProcessTest, BehindTheLastOutputTheStatusStands) {
    write("ladder.sdf", ladder(30'000));
    write("clock.sdc", "create_clock -period 1 [get_ports clk]\n");
    for (const int number : {SIGINT, SIGTERM}) {
        start({"--sdf", "ladder.sdf", "--sdc", "clock.sdc", "--json", "report.json"});
        const auto last = std::chrono::steady_clock::now() + deadline;
        while (!fs::exists(at("report.json")) && std::chrono::steady_clock::now() < last)
            std::this_thread::sleep_for(50us);
        signal(number);
        EXPECT_EQ(wait(), "exit 1");
        EXPECT_THAT(names(), UnorderedElementsAre("ladder.sdf", "clock.sdc", "pair.sdf", "report.json"));
        fs::remove(at("report.json"));
    }
}

// --- Standard error ---

TEST_F(ProcessTest, NamesDoNotSteerTheTerminal) {
    struct Row {
        std::vector<std::string> args;
        const char* expected;
    };
    const Row rows[] = {
        {{"--sdf", "a\x1b[31mb.sdf"}, "a\\x1B[31mb.sdf: error: cannot open: No such file or directory\n"},
        {{"--sdf", "pair.sdf", "--json", "no\x1b/r.json"},
         "no\\x1B/r.json: error: cannot write: No such file or directory\n"},
        {{"--sdf", "pair.sdf", "--sdc", "\xC2\x9Bm\xC3\x80.sdc"},
         "\\xC2\\x9Bm\xC3\x80.sdc: error: cannot open: No such file or directory\n"},
        {{"--sdf", "pair.sdf", "--delays", "\x07"},
         "vorlen: error: --delays: expected min, typ, max or minmax, found '\\x07' (see vorlen analyze "
         "--help)\n"},
        {{"--sdf", "pair.sdf", "\x1b]0;title\x07"},
         "vorlen: error: unexpected argument '\\x1B]0;title\\x07' (see vorlen analyze --help)\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(run(row.args), "exit 2");
        EXPECT_EQ(errors(), row.expected);
    }
}

// The last line of a script that cannot be left is written without memory, on a thread of its own.
TEST_F(ProcessTest, TheLastLineOfAScriptDoesNotSteerTheTerminal) {
    write("a\x1b[31m.sdc", "regexp [string repeat ( 1000000] x\n");
    EXPECT_EQ(run({"--sdf", "pair.sdf", "--sdc", "a\x1b[31m.sdc"}), "exit 2");
    EXPECT_EQ(errors(), "a\\x1B[31m.sdc:1: error: the script is given up: it nests too deep\n");
}

} // namespace
