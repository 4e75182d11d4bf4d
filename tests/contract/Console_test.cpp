// The console: levels, labels, indentation, timers, colour, where messages go, and the recorder.
#include "tests/support/Recorder.h"

#include "Ruvex/Console.h"
#include "Ruvex/Exception.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <poll.h>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace Contract {

namespace {

using namespace Ruvex;
using Level = Console::Level;
using Color = Console::Color;

// The console writing into a text. The destructor restores its settings.
class Written {
public:
    Written() : indentation_(console.getIndentation()) { console.setOutput(&text_); }
    Written(const Written&) = delete;
    Written& operator=(const Written&) = delete;
    ~Written() {
        console.setIndentation(indentation_);
        console.setColor(Color::Automatic);
        console.setRecorder({});
        console.setErrorOutput();
    }

    // What was written since the last call.
    std::string take() {
        const std::string taken = text_.str();
        text_.str("");
        return taken;
    }

private:
    unsigned indentation_;
    std::ostringstream text_;
};

void tell(Level level, const std::string& text, const std::string& label) {
    switch (level) {
    case Level::Print:
        return console.print(text, label);
    case Level::Remark:
        return console.remark(text, label);
    case Level::Warning:
        return console.warning(text, label);
    case Level::Error:
        return console.error(text, label);
    }
}

struct Row {
    Level level;
    unsigned indentation;
    const char* text;
    const char* label;
    const char* line;
};

const Row rows[] = {
    {Level::Print, 0, "Analyzing", "", "Analyzing\n"},
    {Level::Remark, 0, "Generated clock", "", "remark: Generated clock\n"},
    {Level::Warning, 0, "1 loop", "", "warning: 1 loop\n"},
    {Level::Error, 0, "Null pole", "", "error: Null pole\n"},
    {Level::Print, 0, "Analyzing", "STA", "[STA] Analyzing\n"},
    {Level::Remark, 0, "Generated clock", "STA", "remark [STA]: Generated clock\n"},
    {Level::Warning, 0, "1 loop", "STA", "warning [STA]: 1 loop\n"},
    {Level::Error, 0, "Null pole", "STA", "error [STA]: Null pole\n"},
    {Level::Print, 1, "inner", "", "  inner\n"},
    {Level::Warning, 2, "inner", "", "    warning: inner\n"},
    {Level::Error, 3, "inner", "x", "      error [x]: inner\n"},
    {Level::Print, 0, "", "", "\n"},
    {Level::Print, 0, "100 %", "", "100 %\n"},
};

TEST(Console, Lines) {
    Written written;
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        console.setIndentation(row.indentation);
        tell(row.level, row.text, row.label);
        EXPECT_EQ(written.take(), row.line);
    }
}

TEST(Console, RecorderSeesMessages) {
    Written written;
    std::vector<Console::Message> messages;
    console.setRecorder([&messages](const Console::Message& message) { messages.push_back(message); });
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        console.setIndentation(row.indentation);
        tell(row.level, row.text, row.label);
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.back(), (Console::Message{row.level, row.text, row.label, row.indentation}));
        EXPECT_EQ(written.take(), row.line);
    }
    EXPECT_EQ(messages.size(), std::size(rows));
    console.setOutput(nullptr);
    console.print("unheard", "");
    EXPECT_EQ(messages.back().text, "unheard");
    console.setRecorder({});
    console.print("unrecorded", "");
    EXPECT_EQ(messages.back().text, "unheard");
}

TEST(Console, Indentation) {
    Written written;
    console.setIndentation(0);
    struct {
        std::function<void()> step;
        unsigned indentation;
        const char* line;
    } const steps[] = {
        {[] { console.indent(); }, 1, "  x\n"},   {[] { console.indent(); }, 2, "    x\n"},
        {[] { console.unindent(); }, 1, "  x\n"}, {[] { console.unindent(); }, 0, "x\n"},
        {[] { console.unindent(); }, 0, "x\n"},   {[] { console.indent(); }, 1, "  x\n"},
    };
    for (const auto& [step, indentation, line] : steps) {
        step();
        EXPECT_EQ(console.getIndentation(), indentation);
        console.print("x", "");
        EXPECT_EQ(written.take(), line);
    }
}

TEST(Console, Exceptions) {
    Written written;
    console.error(InvalidRequest(InternalError("Null pole", Error::locate("Tool", "loopPush", 566))));
    EXPECT_EQ(written.take(), "error: Null pole (Tool, loopPush, 566)\n");
    console.error(Interruption("stopped by the user"));
    EXPECT_EQ(written.take(), "error: stopped by the user\n");
}

// --- Timers ---

TEST(Console, Timers) {
    Support::Recorder recorder;
    struct {
        const char* text;
        const char* shown;
    } const table[] = {
        {"Analyzing in %", "Analyzing in <time>"},
        {"%", "<time>"},
        {"50 %% of %", "50 <time>% of %"},
        {"no time", "no time"},
        {"", ""},
    };
    for (const auto& [text, shown] : table) {
        recorder.clear();
        console.openTimer();
        console.closeTimer(text);
        ASSERT_EQ(recorder.getMessages().size(), 1u);
        const Console::Message& message = recorder.getMessages().front();
        EXPECT_EQ(Support::replaceTimes(message.text, "<time>"), shown) << message.text;
        EXPECT_EQ(message.level, Level::Print);
        EXPECT_EQ(message.label, "");
    }
    recorder.clear();
    console.closeTimer("done in %");
    EXPECT_EQ(recorder.getLines(), Support::Lines{"done in an unknown time"});
}

// The timer opened last is closed first, so the outer one has run for longer.
TEST(Console, TimersNest) {
    Support::Recorder recorder;
    console.openTimer();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    console.openTimer();
    console.closeTimer("%");
    console.closeTimer("%");
    console.closeTimer("%");
    ASSERT_EQ(recorder.getMessages().size(), 3u);
    const double inner = std::stod(recorder.getMessages()[0].text);
    const double outer = std::stod(recorder.getMessages()[1].text);
    EXPECT_GE(outer, inner + 0.029);
    EXPECT_LT(outer, 10.0);
    EXPECT_EQ(recorder.getMessages()[2].text, "an unknown time");
}

// --- Colour and output ---

TEST(Console, Color) {
    Written written;
    struct {
        Color color;
        Level level;
        const char* line;
    } const table[] = {
        {Color::Always, Level::Print, "[l] t\n"},
        {Color::Always, Level::Remark, "\033[36mremark\033[0m [l]: t\n"},
        {Color::Always, Level::Warning, "\033[33mwarning\033[0m [l]: t\n"},
        {Color::Always, Level::Error, "\033[31merror\033[0m [l]: t\n"},
        {Color::Never, Level::Warning, "warning [l]: t\n"},
        {Color::Never, Level::Error, "error [l]: t\n"},
        {Color::Automatic, Level::Warning, "warning [l]: t\n"},
        {Color::Automatic, Level::Error, "error [l]: t\n"},
    };
    for (const auto& [color, level, line] : table) {
        console.setColor(color);
        tell(level, "t", "l");
        EXPECT_EQ(written.take(), line);
    }
}

TEST(Console, OutputsInTurn) {
    std::ostringstream first, second, standardError;
    std::streambuf* const before = std::cerr.rdbuf(standardError.rdbuf());
    console.print("a", "");
    console.setOutput(&first);
    console.print("b", "");
    console.setOutput(&second);
    console.print("c", "");
    console.setOutput(nullptr);
    console.print("d", "");
    console.setErrorOutput();
    console.print("e", "");
    std::cerr.rdbuf(before);
    EXPECT_EQ(standardError.str(), "a\ne\n");
    EXPECT_EQ(first.str(), "b\n");
    EXPECT_EQ(second.str(), "c\n");
}

// Returns the line that the console writes while standard error is the given descriptor, read from `readEnd`.
std::string writtenTo(int descriptor, int readEnd) {
    const int before = dup(STDERR_FILENO);
    dup2(descriptor, STDERR_FILENO);
    console.warning("t", "");
    dup2(before, STDERR_FILENO);
    close(before);
    // A terminal may deliver a line in pieces.
    std::string line;
    pollfd ready{readEnd, POLLIN, 0};
    while ((line.empty() || line.back() != '\n') && poll(&ready, 1, 10000) == 1) {
        char piece[200];
        const ssize_t count = read(readEnd, piece, sizeof piece);
        if (count <= 0)
            break;
        line.append(piece, static_cast<std::size_t>(count));
    }
    return line;
}

TEST(Console, IsColouredOnATerminalOnly) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(writtenTo(ends[1], ends[0]), "warning: t\n");
    close(ends[0]);
    close(ends[1]);

    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
        GTEST_SKIP() << "no terminals here";
    const int inner = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    ASSERT_GE(inner, 0);
    EXPECT_EQ(writtenTo(inner, terminal), "\033[33mwarning\033[0m: t\r\n");
    console.setColor(Color::Never);
    EXPECT_EQ(writtenTo(inner, terminal), "warning: t\r\n");
    console.setColor(Color::Automatic);
    close(inner);
    close(terminal);
}

// --- The recorder of the tests ---

TEST(Recorder, ReadsAsWritten) {
    Support::Lines expected;
    Support::Recorder recorder;
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        console.setIndentation(row.indentation);
        tell(row.level, row.text, row.label);
        expected.push_back(std::string(row.line).substr(0, std::string(row.line).size() - 1));
    }
    EXPECT_EQ(recorder.getLines(), expected);
    EXPECT_EQ(recorder.getLines(Level::Remark),
              (Support::Lines{"remark: Generated clock", "remark [STA]: Generated clock"}));
    recorder.clear();
    EXPECT_TRUE(recorder.isEmpty());
    console.openTimer();
    console.setIndentation(0);
    console.closeTimer("completed in %");
    EXPECT_EQ(recorder.getTimelessLines(), Support::Lines{"completed in %"});
    EXPECT_NE(recorder.getLines(), Support::Lines{"completed in %"});
}

TEST(Recorder, ReplacesTimes) {
    struct {
        const char* text;
        const char* replaced;
    } const table[] = {
        {"", ""},
        {"in 0.001 s", "in T"},
        {"123.456 s", "T"},
        {"a 1.234 s, b 5.678 s.", "a T, b T."},
        {"1.23 s", "1.23 s"},
        {"1.2345 s", "1.2345 s"},
        {".123 s", ".123 s"},
        {"1.234 seconds", "1.234 seconds"},
        {"1.234s", "1.234s"},
        {"12 1.234", "12 1.234"},
        {"x1.234 s", "xT"},
        {"12.", "12."},
    };
    for (const auto& [text, replaced] : table)
        EXPECT_EQ(Support::replaceTimes(text, "T"), replaced);
}

TEST(Recorder, LeavesTheConsoleAsItWas) {
    std::ostringstream standardError;
    std::streambuf* const before = std::cerr.rdbuf(standardError.rdbuf());
    console.indent();
    {
        Support::Recorder outer;
        console.indent();
        console.print("outer", "");
        {
            Support::Recorder inner;
            console.indent();
            console.print("inner", "");
            EXPECT_EQ(inner.getLines(), Support::Lines{"      inner"});
        }
        console.print("outer again", "");
        EXPECT_EQ(outer.getLines(), (Support::Lines{"    outer", "    outer again"}));
    }
    console.print("free", "");
    console.unindent();
    std::cerr.rdbuf(before);
    EXPECT_EQ(standardError.str(), "  free\n");
    EXPECT_EQ(console.getIndentation(), 0u);
}

} // namespace

} // namespace Contract
