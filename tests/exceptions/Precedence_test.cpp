// Which of two exceptions over one path governs, for every ordered pair of kinds and forms.
//
//   a -> r0/CLK   r0/Q -> g/A  g/Z -> h/A  h/Z -> r1/D   b -> r1/CLK
//
// Both clocks rise at 0 and 10, the data takes 3 ns, checks take nothing: setup slack 7, hold slack 3.
#include "analysis/Session.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

const std::string sdf = Support::sdf(R"((CELL (CELLTYPE "top") (INSTANCE) (DELAY (ABSOLUTE
  (INTERCONNECT a r0/CLK (0)) (INTERCONNECT b r1/CLK (0)) (INTERCONNECT r0/Q g/A (0.5))
  (INTERCONNECT g/Z h/A (0)) (INTERCONNECT h/Z r1/D (0)))))
(CELL (CELLTYPE "DFF") (INSTANCE r0) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (0.5))))
  (TIMINGCHECK (SETUPHOLD D (posedge CLK) (0) (0))))
(CELL (CELLTYPE "DFF") (INSTANCE r1) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (0.5))))
  (TIMINGCHECK (SETUPHOLD D (posedge CLK) (0) (0))))
(CELL (CELLTYPE "BUF") (INSTANCE g) (DELAY (ABSOLUTE (IOPATH A Z (1)))))
(CELL (CELLTYPE "BUF") (INSTANCE h) (DELAY (ABSOLUTE (IOPATH A Z (1)))))
)",
                                     "1ns");

// The slack of a side in ps and the line of the exception that governs it; "none" without a slack.
struct Outcome {
    std::string setup, hold;

    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << "setup " << outcome.setup << ", hold " << outcome.hold;
}

std::string shown(Report::Time slack, unsigned line) {
    return std::to_string(slack) + (line == 0 ? "" : " by line " + std::to_string(line));
}

class Precedence : public testing::Test {
protected:
    Precedence() { folder_.write("d.sdf", sdf); }

    // Two lines after that of the clocks.
    Outcome run(const std::string& first, const std::string& second) const {
        folder_.write("d.sdc", "create_clock -period 10 a; create_clock -period 10 b\n" + first + "\n" +
                                   second + "\n");
        Analysis::SessionOptions options;
        options.sdf = folder_.at("d.sdf");
        options.sdc = {folder_.at("d.sdc")};
        options.paths = 0;
        for (const Report::Endpoint& endpoint : Analysis::Session().run(options).endpoints)
            if (endpoint.pin == "r1/D")
                return {side(endpoint.setupSlack, endpoint.setupException),
                        side(endpoint.holdSlack, endpoint.holdException)};
        return {"none", "none"};
    }

private:
    static std::string side(const Report::MaybeTime& slack,
                            const std::optional<Report::Exception>& exception) {
        return slack ? shown(*slack, exception ? exception->line : 0) : "none";
    }

    Support::TemporaryFolder folder_;
};

// All forms, the more specific first: the start point weighs most, then the end point, then points between,
// then the launch clock, then the capture clock.
constexpr std::array forms = {
    "-from r0 -through g/Z -to r1",
    "-from r0 -to r1",
    "-from r0 -through g/Z -to [get_clocks b]",
    "-from r0 -through g/Z",
    "-from r0 -to [get_clocks b]",
    "-from r0",
    "-from [get_clocks a] -through g/Z -to r1",
    "-through g/Z -to r1",
    "-from [get_clocks a] -to r1",
    "-to r1",
    "-from [get_clocks a] -through g/Z -to [get_clocks b]",
    "-from [get_clocks a] -through g/Z",
    "-through g/Z -to [get_clocks b]",
    "-through g/Z",
    "-from [get_clocks a] -to [get_clocks b]",
    "-from [get_clocks a]",
    "-to [get_clocks b]",
};

enum class Kind { falsePath, maxDelay, minDelay, cycles, setupCycles, holdCycles };
constexpr std::array plainKinds = {Kind::falsePath, Kind::maxDelay, Kind::minDelay, Kind::cycles};
constexpr std::array cycleKinds = {Kind::cycles, Kind::setupCycles, Kind::holdCycles};

// An exception, and by which values it and another of its kind are distinguished.
struct Statement {
    Kind kind;
    std::size_t form;
    int value;

    std::string text() const {
        const std::string number = std::to_string(value);
        const std::string command = kind == Kind::falsePath     ? "set_false_path"
                                    : kind == Kind::maxDelay    ? "set_max_delay " + number
                                    : kind == Kind::minDelay    ? "set_min_delay " + number
                                    : kind == Kind::cycles      ? "set_multicycle_path " + number
                                    : kind == Kind::setupCycles ? "set_multicycle_path -setup " + number
                                                                : "set_multicycle_path -hold " + number;
        return command + " " + forms[form];
    }
};

// Of two statements the one of a kind that governs: the more specific one, else the last; 0 none.
unsigned governing(const std::array<Statement, 2>& statements, std::initializer_list<Kind> kinds) {
    unsigned best = 0;
    for (unsigned line = 1; line <= 2; ++line) {
        const Statement& own = statements[line - 1];
        if (std::ranges::count(kinds, own.kind) == 0)
            continue;
        const auto isFlagged = [](const Statement& statement) { return statement.kind != Kind::cycles; };
        const bool isBetter =
            best == 0 || own.form < statements[best - 1].form ||
            (own.form == statements[best - 1].form && isFlagged(own) >= isFlagged(statements[best - 1]));
        best = isBetter ? line : best;
    }
    return best;
}

Outcome expected(const std::array<Statement, 2>& statements) {
    if (governing(statements, {Kind::falsePath}) != 0)
        return {"none", "none"};
    const auto value = [&](unsigned line) { return line == 0 ? 0 : statements[line - 1].value * 1000; };
    const unsigned cycles = governing(statements, {Kind::cycles, Kind::setupCycles});
    // Both checks move by the periods that setup has more.
    const int moved = cycles == 0 ? 0 : (value(cycles) - 1000) * 10;
    Outcome outcome;
    const unsigned most = governing(statements, {Kind::maxDelay});
    outcome.setup =
        most != 0 ? shown(value(most) - 3000, most + 1) : shown(7000 + moved, cycles == 0 ? 0 : cycles + 1);
    // A command for both sides takes nothing off the hold relation; one for hold alone its count of periods.
    const unsigned back = governing(statements, {Kind::cycles, Kind::holdCycles});
    const int taken = back == 0 || statements[back - 1].kind == Kind::cycles ? 0 : value(back) * 10;
    const unsigned hold = back != 0 ? back : cycles;
    const unsigned least = governing(statements, {Kind::minDelay});
    outcome.hold = least != 0 ? shown(3000 - value(least), least + 1)
                              : shown(3000 - moved + taken, hold == 0 ? 0 : hold + 1);
    return outcome;
}

TEST_F(Precedence, EveryOrderedPairOfKindsAndForms) {
    for (const Kind first : plainKinds)
        for (const Kind second : plainKinds)
            for (std::size_t a = 0; a < forms.size(); ++a)
                for (std::size_t b = 0; b < forms.size(); ++b) {
                    const std::array statements = {Statement{first, a, 2}, Statement{second, b, 3}};
                    EXPECT_EQ(run(statements[0].text(), statements[1].text()), expected(statements))
                        << statements[0].text() << "\n"
                        << statements[1].text();
                }
}

TEST_F(Precedence, EveryOrderedPairOfMulticycles) {
    for (const Kind first : cycleKinds)
        for (const Kind second : cycleKinds)
            for (std::size_t a = 0; a < forms.size(); ++a)
                for (std::size_t b = 0; b < forms.size(); ++b) {
                    const std::array statements = {Statement{first, a, 3}, Statement{second, b, 2}};
                    EXPECT_EQ(run(statements[0].text(), statements[1].text()), expected(statements))
                        << statements[0].text() << "\n"
                        << statements[1].text();
                }
}

struct Row {
    const char *first, *second;
    Outcome expected;
};

TEST_F(Precedence, Rows) {
    const Outcome none{"none", "none"};
    const std::vector<Row> rows = {
        // Above all exceptions.
        {"set_disable_timing g", "set_max_delay 5 -from r0 -to r1", none},
        {"set_max_delay 5 -from r0 -to r1", "set_case_analysis 0 g/A", none},
        {"set_clock_groups -asynchronous -group a -group b", "set_max_delay 5 -from r0 -to r1", none},
        {"set_max_delay 5 -from r0 -to r1", "set_clock_groups -exclusive -group a", none},
        {"set_clock_groups -asynchronous -group a -group b", "set_false_path -hold -from r0", none},
        // A kind that is for one side only leaves the other one.
        {"set_false_path -setup -to [get_clocks b]", "set_max_delay 5 -from r0 -to r1", {"none", "3000"}},
        {"set_false_path -hold -to [get_clocks b]",
         "set_max_delay 5 -from r0 -to r1",
         {"2000 by line 3", "none"}},
        {"set_max_delay 5 -to [get_clocks b]",
         "set_multicycle_path 2 -from r0 -to r1",
         {"2000 by line 2", "-7000 by line 3"}},
        {"set_min_delay 1 -to [get_clocks b]",
         "set_multicycle_path 2 -from r0 -to r1",
         {"17000 by line 3", "2000 by line 2"}},
        // Setup and hold of one path act together, whatever their forms.
        {"set_multicycle_path -setup 2 -from r0",
         "set_multicycle_path -hold 1 -to [get_clocks b]",
         {"17000 by line 2", "3000 by line 3"}},
        {"set_multicycle_path -hold 1 -from r0 -to r1",
         "set_multicycle_path -setup 2 -through h/Z",
         {"17000 by line 3", "3000 by line 2"}},
        // Identical objects, taken one by one: the last command.
        {"set_max_delay 5 -from r0", "set_max_delay 6 -from {r0 r1}", {"3000 by line 3", "3000"}},
        {"set_max_delay 6 -from {r0 r1}", "set_max_delay 5 -from r0", {"2000 by line 3", "3000"}},
        {"set_max_delay 5 -from {r0 r1}", "set_max_delay 6 -from r0", {"3000 by line 3", "3000"}},
        {"set_max_delay 5 -through g/Z", "set_max_delay 6 -through {g/Z h/Z}", {"3000 by line 3", "3000"}},
        {"set_max_delay 5 -from r0/CLK",
         "set_max_delay 6 -from [get_pins r0/CLK]",
         {"3000 by line 3", "3000"}},
        {"set_max_delay 5 -from r0", "set_max_delay 6 -from {r0 r0/CLK}", {"3000 by line 3", "3000"}},
        {"set_max_delay 5 -to {r1 r0}", "set_max_delay 6 -to r1", {"3000 by line 3", "3000"}},
        {"set_multicycle_path 2 -from r0/Q",
         "set_multicycle_path 3 -from [get_pins r0/Q]",
         {"27000 by line 3", "-17000 by line 3"}},
        {"set_multicycle_path 2 -from g/Z",
         "set_multicycle_path 3 -through g/Z",
         {"27000 by line 3", "-17000 by line 3"}},
        {"set_max_delay 5 -through [get_nets g/Z]",
         "set_max_delay 6 -through [get_nets {g/Z h/Z}]",
         {"3000 by line 3", "3000"}},
        {"set_max_delay 5 -through r0/CLK", "set_max_delay 6 -through r0/CLK", {"3000 by line 3", "3000"}},
        // A cell and its pin, a net and its driver are different objects: the tightest.
        {"set_max_delay 5 -from r0/CLK", "set_max_delay 6 -from r0", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -from r0", "set_max_delay 6 -from r0/CLK", {"2000 by line 2", "3000"}},
        {"set_max_delay 6 -from r0/CLK", "set_max_delay 5 -from r0", {"2000 by line 3", "3000"}},
        {"set_max_delay 5 -from {r0 r0/CLK}", "set_max_delay 6 -from r0", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -to r1/D", "set_max_delay 6 -to r1", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -to r1", "set_max_delay 6 -to r1/D", {"2000 by line 2", "3000"}},
        {"set_min_delay 2 -to r1", "set_min_delay 1 -to r1/D", {"7000", "1000 by line 2"}},
        {"set_max_delay 5 -from r0 -to r1/D", "set_max_delay 6 -from r0 -to r1", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -from r0 -to r1",
         "set_max_delay 6 -from r0/CLK -to r1",
         {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through g", "set_max_delay 6 -through g/Z", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through g/Z",
         "set_max_delay 6 -through [get_nets g/Z]",
         {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through [get_nets g/Z]",
         "set_max_delay 6 -through [get_cells g]",
         {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through r0/CLK", "set_max_delay 6 -through r0/Q", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through r0", "set_max_delay 6 -through r0/Q", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through r0", "set_max_delay 6 -through r0/CLK", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through g -through h/Z",
         "set_max_delay 6 -through g/Z -through h/Z",
         {"2000 by line 2", "3000"}},
        {"set_multicycle_path 2 -setup -through g",
         "set_multicycle_path 3 -setup -through g/Z",
         {"17000 by line 2", "-7000 by line 2"}},
        {"set_multicycle_path 2 -to g",
         "set_multicycle_path 3 -through g/Z",
         {"17000 by line 2", "-7000 by line 2"}},
        // A register through its output is an object of its own.
        {"set_multicycle_path 2 -from r0/Q",
         "set_multicycle_path 3 -from r0 -through r0/Q",
         {"17000 by line 2", "-7000 by line 2"}},
        {"set_multicycle_path 2 -from r0/CLK -through r0/Q",
         "set_multicycle_path 3 -from r0/Q",
         {"17000 by line 2", "-7000 by line 2"}},
        // Equal rank, other objects: the tightest.
        {"set_max_delay 5 -through g/Z", "set_max_delay 6 -through h/Z", {"2000 by line 2", "3000"}},
        {"set_max_delay 6 -through g/Z", "set_max_delay 5 -through h/Z", {"2000 by line 3", "3000"}},
        {"set_max_delay 5 -through {g/Z h/Z}", "set_max_delay 6 -through g/Z", {"2000 by line 2", "3000"}},
        {"set_max_delay 6 -through {g/Z h/Z}", "set_max_delay 5 -through g/Z", {"2000 by line 3", "3000"}},
        {"set_min_delay 1 -through g/Z", "set_min_delay 2 -through h/Z", {"7000", "1000 by line 3"}},
        {"set_min_delay 2 -through g/Z", "set_min_delay 1 -through h/Z", {"7000", "1000 by line 2"}},
        {"set_multicycle_path 3 -through g/Z",
         "set_multicycle_path 2 -through h/Z",
         {"17000 by line 3", "-7000 by line 2"}},
        {"set_multicycle_path -hold 2 -through g/Z",
         "set_multicycle_path -hold 1 -through h/Z",
         {"7000", "13000 by line 3"}},
        // Several -through count as one form, and must be passed in order.
        {"set_max_delay 5 -through g/Z -through h/Z",
         "set_max_delay 6 -through g/Z",
         {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through h/Z -through g/Z",
         "set_max_delay 6 -through g/Z",
         {"3000 by line 3", "3000"}},
        // A cell is passed before its output.
        {"set_max_delay 5 -through [get_cells g] -through g/Z", "", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through g/Z -through [get_cells g]", "", {"7000", "3000"}},
        {"set_max_delay 5 -through g/A -through [get_cells g]", "", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through g/Z -through g/Z", "", {"7000", "3000"}},
        {"set_max_delay 5 -through g/Z -through [get_nets g/Z]", "", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through [get_nets g/Z] -through g/Z", "", {"7000", "3000"}},
        {"set_max_delay 5 -through [get_cells g] -through [get_cells g]", "", {"2000 by line 2", "3000"}},
        // A clock pin is passed before its cell's output.
        {"set_max_delay 5 -through r0/CLK -through r0/Q", "", {"2000 by line 2", "3000"}},
        {"set_max_delay 5 -through r0/Q -through r0/CLK", "", {"7000", "3000"}},
        // A pin within a path stands for -through; a register's output for the register through it.
        {"set_multicycle_path 2 -from r0/Q",
         "set_multicycle_path 3 -to r1",
         {"17000 by line 2", "-7000 by line 2"}},
        {"set_multicycle_path 2 -from g/Z",
         "set_multicycle_path 3 -to r1",
         {"27000 by line 3", "-17000 by line 3"}},
        {"set_multicycle_path 2 -to g/A",
         "set_multicycle_path 3 -from [get_clocks a]",
         {"17000 by line 2", "-7000 by line 2"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(run(row.first, row.second), row.expected) << row.first << "\n" << row.second;
}

} // namespace
