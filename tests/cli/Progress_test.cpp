// The progress line as a terminal gets it, and when terminals get anything.
#include "cli/Progress.h"

#include "cli/Terminal.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

using Cli::ColorWhen;
using Cli::Progress;
using Cli::ProgressWhen;

// A terminal of a given width, and what was written to it.
class Terminal {
public:
    explicit Terminal(unsigned short columns = 80) : master_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        EXPECT_EQ(grantpt(master_), 0);
        EXPECT_EQ(unlockpt(master_), 0);
        slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
        EXPECT_GE(slave_, 0);
        winsize size{};
        size.ws_col = columns;
        EXPECT_EQ(ioctl(slave_, TIOCSWINSZ, &size), 0);
    }
    ~Terminal() {
        close(slave_);
        close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int descriptor() const { return slave_; }
    // What came since the last time; erasing is shown as '|'.
    std::string received() {
        std::string text;
        char buffer[4096];
        for (ssize_t count; (count = read(master_, buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<std::size_t>(count));
        constexpr std::string_view erase = "\r\x1b[K";
        for (std::size_t at; (at = text.find(erase)) != std::string::npos;)
            text.replace(at, erase.size(), "|");
        return text;
    }

private:
    int master_;
    int slave_ = -1;
};

// A variable of the environment for a while.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name))
            before_ = before;
        set(value);
    }
    ~Variable() { set(before_ ? before_->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void set(const char* value) const {
        if (value)
            setenv(name_, value, 1);
        else
            unsetenv(name_);
    }

    const char* name_;
    std::optional<std::string> before_;
};

Progress::Clock::time_point clockNow{};

Progress::Clock::time_point fakeNow() { return clockNow; }

TEST(Progress, line) {
    struct Row {
        const char* step;
        std::uint64_t done, total;
        unsigned short columns;
        const char* expected;
    };
    const Row rows[] = {
        {"reading x.sdf", 42, 100, 80, "|reading x.sdf ... 42%"},
        {"analysing", 0, 0, 80, "|analysing ..."},
        {"reading x.sdf", 0, 7, 80, "|reading x.sdf ... 0%"},
        {"reading x.sdf", 7, 7, 80, "|reading x.sdf ... 100%"},
        {"reading x.sdf", 9, 7, 80, "|reading x.sdf ... 100%"},
        {"reading x.sdf", 999, 1000, 80, "|reading x.sdf ... 99%"},
        {"x", 18446744073709551614u, 18446744073709551615u, 80, "|x ... 99%"},
        {"reading a/long/path/to/x.sdf", 42, 100, 30, "|reading a.../to/x.sdf ... 42%"},
        {"reading x.sdf", 42, 100, 12, "| ... 42%"},
        {"reading x.sdf", 42, 100, 4, "| .."},
        {"reading \xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4", 0, 0, 22,
         "|reading...\xC3\xA4\xC3\xA4\xC3\xA4 ..."},
        {"\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4", 0, 0, 18,
         "|\xC3\xA4\xC3\xA4...\xC3\xA4\xC3\xA4 ..."},
        {"a\x1b[31m\nb", 0, 0, 80, R"(|a\x1B[31m\x0Ab ...)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Terminal terminal(row.columns);
        Progress progress(terminal.descriptor(), true);
        progress.show(row.step, row.done, row.total);
        EXPECT_EQ(terminal.received(), row.expected);
    }
}

TEST(Progress, changes) {
    using std::chrono::milliseconds;
    struct Row {
        int afterMs;
        const char* step;
        std::uint64_t done;
        const char* expected;
    };
    const Row rows[] = {
        {0, "a", 0, "|a ... 0%"},   {50, "a", 10, ""},          {49, "a", 20, ""}, // too early
        {1, "a", 30, "|a ... 30%"}, {500, "a", 30, ""},                            // nothing new
        {0, "b", 30, "|b ... 30%"}, // another step is seen at once
        {99, "b", 40, ""},          {1, "b", 41, "|b ... 41%"},
    };
    Terminal terminal;
    Progress progress(terminal.descriptor(), true, &fakeNow);
    for (const Row& row : rows) {
        clockNow += milliseconds(row.afterMs);
        progress.show(row.step, row.done, 100);
        EXPECT_EQ(terminal.received(), row.expected) << row.step << row.done;
    }
    progress.clear();
    EXPECT_EQ(terminal.received(), "|");
    progress.clear();
    EXPECT_EQ(terminal.received(), "");
    progress.show("b", 41, 100);
    EXPECT_EQ(terminal.received(), "|b ... 41%");
}

TEST(Progress, goneAtTheEnd) {
    Terminal terminal;
    { Progress progress(terminal.descriptor(), true); }
    EXPECT_EQ(terminal.received(), "");
    {
        Progress progress(terminal.descriptor(), true);
        progress.show("a");
    }
    EXPECT_EQ(terminal.received(), "|a ...|");
}

TEST(Progress, abandoned) {
    Terminal terminal;
    Progress progress(terminal.descriptor(), true);
    Progress::abandon();
    EXPECT_EQ(terminal.received(), "");
    progress.show("a");
    Progress::abandon();
    EXPECT_EQ(terminal.received(), "|a ...|");
    progress.clear();
    Progress::abandon();
    EXPECT_EQ(terminal.received(), "|");
}

TEST(Progress, neverWhereItIsNotWanted) {
    Terminal terminal;
    {
        Progress progress(terminal.descriptor(), false);
        progress.show("a", 1, 2);
        progress.clear();
    }
    EXPECT_EQ(terminal.received(), "");
}

// No line is shown any more, even if there is a terminal again: it receives only what erases the line.
TEST(Progress, aTerminalThatIsGone) {
    Terminal terminal;
    const int closed = dup(STDERR_FILENO);
    close(closed);
    Progress progress(closed, true);
    progress.show("a");
    ASSERT_EQ(dup2(terminal.descriptor(), closed), closed);
    progress.show("b");
    progress.clear();
    EXPECT_EQ(terminal.received(), "|");
    close(closed);
}

// --- Terminals ---

TEST(Terminal, wants) {
    Terminal terminal;
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const int tty = terminal.descriptor(), file = pipe[1];
    struct Row {
        int descriptor;
        const char* term;
        const char* noColor;
        ColorWhen when;
        bool color;
        bool progress; // by default
    };
    const Row rows[] = {
        {tty, "xterm", nullptr, ColorWhen::automatic, true, true},
        {tty, "xterm", "", ColorWhen::automatic, true, true},
        {tty, "xterm", "1", ColorWhen::automatic, false, true},
        {tty, "dumb", nullptr, ColorWhen::automatic, false, false},
        {tty, nullptr, nullptr, ColorWhen::automatic, false, false},
        {tty, "xterm", "1", ColorWhen::always, true, true},
        {tty, "xterm", nullptr, ColorWhen::never, false, true},
        {file, "xterm", nullptr, ColorWhen::automatic, false, false},
        {file, "xterm", nullptr, ColorWhen::always, true, false},
    };
    for (const Row& row : rows) {
        const Variable term("TERM", row.term), noColor("NO_COLOR", row.noColor);
        const auto at = &row - rows;
        EXPECT_EQ(Cli::wantsColor(row.when, row.descriptor), row.color) << at;
        EXPECT_EQ(Cli::wantsProgress(ProgressWhen::automatic, row.descriptor), row.progress) << at;
        EXPECT_FALSE(Cli::wantsProgress(ProgressWhen::never, row.descriptor)) << at;
    }
    close(pipe[0]);
    close(pipe[1]);
}

TEST(Terminal, columns) {
    const Terminal narrow(33), unknown(0);
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    EXPECT_EQ(Cli::columnsOf(narrow.descriptor(), 70), 33u);
    EXPECT_EQ(Cli::columnsOf(unknown.descriptor(), 70), 70u);
    EXPECT_EQ(Cli::columnsOf(pipe[1], 70), 70u);
    close(pipe[0]);
    close(pipe[1]);
}

} // namespace
