// Scripts that Tcl cannot end: how the process ends then, and that nothing is left where it does not.
#include "readers/sdc/Watch.h"

#include "readers/sdc/Interpreter.h"
#include "tests/support/command/Script.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Base::Source;
using Readers::Sdc::Limits;
using testing::ExitedWithCode;
namespace fs = std::filesystem;

constexpr int refused = 2;
constexpr Limits brief{.time = std::chrono::milliseconds(100), .grace = std::chrono::milliseconds(100)};
constexpr Limits ample{.time = std::chrono::minutes(1)};

void read(Source& source, const Limits& limits) {
    Base::Diagnostics diagnostics;
    Readers::Sdc::Reader(Support::smallDesign(), diagnostics, limits).read(source);
}

void read(std::string_view script, const Limits& limits) {
    Source source("x.sdc", script);
    read(source, limits);
}

// --- One command without end ---

class SdcWatchDeathTest : public testing::TestWithParam<Support::Row> {};

TEST_P(SdcWatchDeathTest, EndsWhatTclDoesNot) {
    EXPECT_EXIT(read(GetParam().script, brief), ExitedWithCode(refused), testing::Eq(GetParam().expected));
}

const Support::Row endless[] = {
    {"expr {10 ** 100000000}", "x.sdc:1: error: the script ran for more than 0.1 s\n"},
    {"set x 1\nset y [expr {\n  10 ** 100000000}]", "x.sdc:2: error: the script ran for more than 0.1 s\n"},
    {"catch {expr {10 ** 100000000}}\nset x 1", "x.sdc:1: error: the script ran for more than 0.1 s\n"},
    {"proc p {} {\n  expr {10 ** 100000000}\n}\n\np", "x.sdc:5: error: the script ran for more than 0.1 s\n"},
    {"regexp {^(.*)(.*)(.*)\\1\\2\\3b$} [string repeat a 1001]b",
     "x.sdc:1: error: the script ran for more than 0.1 s\n"},
};
INSTANTIATE_TEST_SUITE_P(Endless, SdcWatchDeathTest, testing::ValuesIn(endless));

TEST(SdcWatchDeathTest, NamesTheInnerFileAndThenTheOuterOneAgain) {
    const Support::TemporaryFolder folder;
    const std::string inner = folder.write("inner.sdc", "set x 1\nif {$slow} { expr {10 ** 100000000} }\n");
    const auto readFile = [&](const std::string& script) {
        const std::string path = folder.write("x.sdc", script);
        Source source(path);
        read(source, brief);
    };
    EXPECT_EXIT(readFile("set slow 1\n\nsource inner.sdc"), ExitedWithCode(refused),
                testing::Eq(inner + ":2: error: the script ran for more than 0.1 s\n"));
    const std::string outer = folder.write("x.sdc", "");
    EXPECT_EXIT(readFile("set slow 0\nforeach n 100000000 {\n  source inner.sdc\n  expr {10 ** $n}\n}"),
                ExitedWithCode(refused),
                testing::Eq(outer + ":2: error: the script ran for more than 0.1 s\n"));
}

// The program's own end, on whichever thread it comes.
[[noreturn]] void endWithSeven(std::string_view line) noexcept {
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    _exit(7);
}

TEST(SdcWatchDeathTest, CallsTheProgram) {
    Limits limits = brief;
    limits.giveUp = endWithSeven;
    EXPECT_EXIT(read("expr {10 ** 100000000}", limits), ExitedWithCode(7),
                testing::Eq("x.sdc:1: error: the script ran for more than 0.1 s"));
}

// One command that takes more memory than a script may.
class SdcMemoryDeathTest : public testing::TestWithParam<Support::Row> {};

TEST_P(SdcMemoryDeathTest, EndsWhatTclDoesNot) {
    const Limits little{.time = std::chrono::minutes(1), .memory = 50, .memoryGrace = 10};
    EXPECT_EXIT(read(GetParam().script, little), ExitedWithCode(refused), testing::Eq(GetParam().expected));
}

#define TOO_MUCH "the script took more than 50 MB of memory\n"
const Support::Row greedy[] = {
    {"set x 1\nset y [format %.1500000000f 1.0]", "x.sdc:2: error: " TOO_MUCH},
    {"catch {format %1500000000d 1}", "x.sdc:1: error: " TOO_MUCH},
    {"string length [string repeat a 2000000000]", "x.sdc:1: error: " TOO_MUCH},
    {"llength [lrepeat 200000000 a]", "x.sdc:1: error: " TOO_MUCH},
    {"proc p {} {\n  split [string repeat ab 20000000] {}\n}\np", "x.sdc:4: error: " TOO_MUCH},
    {"regsub -all a [string repeat a 20000000] bbbbbbbbbbbbbbbbbbbb x", "x.sdc:1: error: " TOO_MUCH},
};
INSTANTIATE_TEST_SUITE_P(Greedy, SdcMemoryDeathTest, testing::ValuesIn(greedy));

// --- Tcl's panics ---

void readWithPanic(std::string_view script) {
    Design::Constraints constraints;
    Readers::Sdc::Interpreter interpreter(constraints, ample);
    interpreter.define("panic", [](Readers::Sdc::Words) { Tcl_Panic("no more than %d bytes", 17); });
    Source source("x.sdc", script);
    interpreter.run(source);
}

TEST(SdcWatchDeathTest, EndsWhatTclPanicsOf) {
    EXPECT_EXIT(readWithPanic("set x 1\npanic"), ExitedWithCode(refused),
                testing::Eq("x.sdc:2: error: the script is given up: no more than 17 bytes\n"));
    EXPECT_EXIT(readWithPanic("\nif 1 {\n  catch {panic}\n}"), ExitedWithCode(refused),
                testing::Eq("x.sdc:2: error: the script is given up: no more than 17 bytes\n"));
}

TEST(SdcWatchDeathTest, LeavesPanicsOutsideOfScriptsToTcl) {
    const auto panicLater = [] {
        read("set x 1", ample);
        Tcl_Panic("no more than %d bytes", 17);
    };
    EXPECT_EXIT(panicLater(), testing::KilledBySignal(SIGABRT), testing::Eq("no more than 17 bytes\n"));
}

// --- What is left ---

std::size_t threads() {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator()));
}

TEST(SdcWatch, LeavesNoThread) {
    const std::size_t before = threads();
    for (const char* script : {"set x 1", "foo", "while 1 {}", "set x {", "source none.sdc", "return"}) {
        try {
            read(script, brief);
        } catch (const Base::BadInput&) {
        }
        EXPECT_EQ(threads(), before) << script;
    }
}

TEST(SdcWatch, LeavesAShortScriptAlone) {
    for (int i = 0; i < 200; ++i)
        read("set x 1", ample);
    EXPECT_EQ(Support::run("set x 1\nputs $x", brief).allMessages(), "x.sdc:2: note: puts: 1\n");
}

// --- Limits that count what the script itself takes ---

TEST(SdcLimits, DoNotCountTheWaitForTheFile) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("x.sdc", "");
    fs::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), S_IRUSR | S_IWUSR), 0);
    std::jthread writer([&path] {
        const int pipe = open(path.c_str(), O_WRONLY);
        std::this_thread::sleep_for(2 * (brief.time + brief.grace));
        constexpr std::string_view script = "for {set i 0} {$i < 1000} {incr i} { set x $i }\n";
        EXPECT_EQ(::write(pipe, script.data(), script.size()), static_cast<ssize_t>(script.size()));
        close(pipe);
    });
    Source source(path);
    EXPECT_NO_THROW(read(source, brief));
}

// As on a machine with other work, or while the process is suspended.
TEST(SdcLimits, DoNotCountTheWaitForTheProcessor) {
    Design::Constraints constraints;
    Readers::Sdc::Interpreter interpreter(constraints, brief);
    interpreter.define(
        "wait", [](Readers::Sdc::Words) { std::this_thread::sleep_for(2 * (brief.time + brief.grace)); });
    Source source("x.sdc", "for {set i 0} {$i < 1000} {incr i} { set x $i }\nwait\n"
                           "for {set i 0} {$i < 1000} {incr i} { set x $i }\n");
    EXPECT_NO_THROW(interpreter.run(source));
}

TEST(SdcLimits, EndScriptsThatTakeTooMuchMemory) {
    Limits limits = ample;
    limits.memory = 50;
    limits.memoryGrace = 100'000; // for a single command
    for (const char* script :
         {"while 1 { lappend l [string repeat a 100000] }", "set x a\nwhile 1 { append x $x; puts x }"}) {
        const std::vector<std::string> messages = Support::run(script, limits).messages;
        ASSERT_FALSE(messages.empty());
        EXPECT_TRUE(messages.back().ends_with(": error: the script took more than 50 MB of memory"))
            << messages.back();
    }
}

} // namespace
