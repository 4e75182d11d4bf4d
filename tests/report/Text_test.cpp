// The text report: a whole one as it is printed, and what differs by options and by paths.
#include "report/Text.h"

#include "Sample.h"
#include "report/Table.h"
#include "tests/support/Rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using Report::Path;
using Whole = Report::Report;
using Report::TextOptions;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string textOf(const Whole& report, const TextOptions& options = {}) {
    std::ostringstream out;
    writeText(report, options, out);
    return out.str();
}

std::string textOf(const Path& path, int scale = -12) {
    std::ostringstream out;
    writePath(path, scale, false, out);
    return out.str();
}

TextOptions everything() {
    TextOptions options;
    options.listUnconstrained = options.listExceptions = true;
    return options;
}

TEST(Text, aWholeReport) {
    EXPECT_EQ(textOf(ReportTests::sample(), everything()), R"(Design: two (times in ns)

Slack

Clock  Check  Worst slack  Total negative slack  Failing  End points
-----  -----  -----------  --------------------  -------  ----------
clk    setup        8.127                 0.000        0           1
clk    hold         0.300                 0.000        0           1
half   setup            -                 0.000        0           0
half   hold        -0.120                -0.120        1           1
(all)  setup        8.127                 0.000        0           1
(all)  hold        -0.120                -0.120        1           2

Clocks

Clock  Period  Achieved period  Fmax (MHz)  Network     Source
-----  ------  ---------------  ----------  ----------  -------------------------
clk    10.000            7.410     134.953  propagated  clk
half        -                -           -  ideal       r7/Q (generated from clk)

Coverage

arcs with a delay               99  of 100
end points constrained           2  of 4
end points unconstrained         2
constraints that match nothing   1
exceptions                       4  always overruled: 1, governs: 1, matches no path: 1, matches nothing: 1
pulse checks                     2  1 failing

Pulse checks that fail

Pin       Check  Clock  Required  Actual   Slack
--------  -----  -----  --------  ------  ------
ram/WCLK  width  clk       5.100   5.000  -0.100

Setup paths, worst first

Startpoint: r0/CLK (rising edge-triggered register clocked by clk)
Endpoint: r1/D (rising edge-triggered register clocked by clk)
Path Group: clk
Path Type: max

    Delay      Time   Description
------------------------------------------------------------------
    0.000     0.000   clock clk (rise edge)
    1.625     1.625   clock network delay (propagated)
    0.000     1.625 ^ r0/CLK (DFF)
    0.540     2.165 v r0/Q (DFF)
    0.588     2.753   r1/D (DFF)
              2.753   data arrival time

   10.000    10.000   clock clk (rise edge)
    1.600    11.600   clock network delay (propagated)
   -0.250    11.350   clock uncertainty
   -0.470    10.880   library setup time
             10.880   data required time
------------------------------------------------------------------
             10.880   data required time
             -2.753   data arrival time
              8.127   slack (MET)

Hold paths, worst first

Startpoint: in[3] (input port clocked by half)
Endpoint: u1/u2/ff/D (falling edge-triggered register clocked by half)
Path Group: half
Path Type: min
Exception: multicycle_path 2 (x.sdc:14)

    Delay      Time   Description
------------------------------------------------------------------
    5.000     5.000   clock half (fall edge)
    0.000     5.000   clock network delay (ideal)
    0.400     5.400   input external delay
    0.000     5.400   in[3]
    0.150     5.550   u1/u2/ff/D (DFFN)
              5.550   data arrival time

    5.000     5.000   clock half (fall edge)
    0.300     5.300   clock network delay (ideal)
    0.020     5.320   clock uncertainty
    0.350     5.670   library hold time
              5.670   data required time
------------------------------------------------------------------
              5.550   data arrival time
             -5.670   data required time
             -0.120   slack (VIOLATED)

Unconstrained end points

led[0]
led[1]

Exceptions

Line      Kind             Value  Setup  Hold  Paths  Status
--------  ---------------  -----  -----  ----  -----  --------------------------------
x.sdc:14  multicycle_path      2      1     1      1  governs
x.sdc:15  false_path           -      0     0      0  matches nothing
x.sdc:16  max_delay         3.50      0     0      0  always overruled by lines 17, 20
x.sdc:18  path_group           7      0     0      0  matches no path

Setup and Hold count the end points that an exception governs, Paths the reported ones.

x.sdc:14: set_multicycle_path 2 -to u1/u2/ff
x.sdc:15: set_false_path -to nothing
x.sdc:16: set_max_delay 3.50 -to r1
x.sdc:18: group_path -name 7 -to r1
)");
}

TEST(Text, quietIsWhatFails) {
    TextOptions options = everything();
    options.quiet = true;
    const std::string text = textOf(ReportTests::sample(), options);
    EXPECT_THAT(text, StartsWith("hold: 1 of 2 end points fail, worst slack -0.120 ns, total -0.120 ns\n"
                                 "\nPulse checks that fail\n"));
    EXPECT_THAT(text, HasSubstr("Startpoint: in[3] "));
    EXPECT_THAT(text, Not(HasSubstr("Startpoint: r0/CLK")));
    EXPECT_THAT(text, Not(HasSubstr("Clocks")));
    EXPECT_THAT(text, Not(HasSubstr("led[0]")));
    EXPECT_THAT(text, Not(HasSubstr("set_false_path")));

    Whole met = ReportTests::sample();
    met.hold = met.setup;
    met.paths.pop_back();
    met.pulseChecks.pop_back();
    EXPECT_EQ(textOf(met, options), "");
}

TEST(Text, listsOnlyWhatWasAskedFor) {
    const std::string text = textOf(ReportTests::sample());
    EXPECT_THAT(text, Not(HasSubstr("Unconstrained end points")));
    EXPECT_THAT(text, Not(HasSubstr("set_false_path")));
    EXPECT_THAT(text, HasSubstr("end points unconstrained         2\n"));
}

TEST(Text, aReportOfNothing) {
    EXPECT_EQ(textOf(Whole(), everything()), R"(Design: - (times in ns)

Slack

Clock  Check  Worst slack  Total negative slack  Failing  End points
-----  -----  -----------  --------------------  -------  ----------
(all)  setup            -                 0.000        0           0
(all)  hold             -                 0.000        0           0

Clocks

none

Coverage

arcs with a delay               0  of 0
end points constrained          0  of 0
end points unconstrained        0
constraints that match nothing  0
exceptions                      0
pulse checks                    0  0 failing

Unconstrained end points

none

Exceptions

none
)");
}

TEST(Text, colorChangesNoColumn) {
    TextOptions options = everything();
    options.color = true;
    const std::string colored = textOf(ReportTests::sample(), options);
    EXPECT_THAT(colored, HasSubstr("\x1b[1mCoverage\x1b[0m\n"));
    EXPECT_THAT(colored, HasSubstr("   \x1b[31m-0.120\x1b[0m "));
    EXPECT_THAT(colored, HasSubstr("\x1b[31mslack (VIOLATED)\x1b[0m\n"));
    EXPECT_THAT(colored, HasSubstr("\x1b[32mslack (MET)\x1b[0m\n"));
    std::string plain;
    for (std::size_t at = 0; at < colored.size(); ++at) {
        if (colored[at] == '\x1b')
            at = colored.find('m', at);
        else
            plain += colored[at];
    }
    EXPECT_EQ(plain, textOf(ReportTests::sample(), everything()));
}

TEST(Text, commandsWrapAndNamesStayWhole) {
    Whole report;
    const std::string name(60, 'n');
    report.exceptions = {{{"x.sdc", 3, "false_path", ""},
                          "set_false_path -from [get_cells " + name + "] -to r1",
                          0,
                          0,
                          0,
                          "matches nothing",
                          {}}};
    TextOptions options = everything();
    options.width = 40;
    EXPECT_THAT(textOf(report, options), EndsWith("\nx.sdc:3: set_false_path -from [get_cells\n"
                                                  "    " +
                                                  name +
                                                  "]\n"
                                                  "    -to r1\n"));
    options.width = 10;
    EXPECT_THAT(textOf(report, options),
                EndsWith("\nx.sdc:3:\n    set_false_path\n    -from\n    [get_cells\n"
                         "    " +
                         name +
                         "]\n"
                         "    -to r1\n"));
}

// --- Paths ---

// The two blocks and the balance of a path's text.
std::string columnsOf(const std::string& text) { return text.substr(text.find("    Delay")); }

TEST(PathText, toAnOutput) {
    Path path = ReportTests::setupPath();
    path.endsAtPort = true;
    path.outputDelay = 2000;
    path.check.reset();
    path.uncertainty = 0;
    path.endpoint = "out";
    path.endDescription.clear();
    path.group.clear();
    path.required = 9600;
    path.slack = 6847;
    const std::string text = textOf(path);
    EXPECT_THAT(text, HasSubstr("Endpoint: out\nPath Group: (none)\nPath Type: max\n\n"));
    EXPECT_THAT(text, HasSubstr(R"(
   10.000    10.000   clock clk (rise edge)
    1.600    11.600   clock network delay (propagated)
   -2.000     9.600   output external delay
              9.600   data required time
------------------------------------------------------------------
              9.600   data required time
             -2.753   data arrival time
              6.847   slack (MET)
)"));
}

TEST(PathText, underAMaximumDelay) {
    Path path = ReportTests::setupPath();
    path.exception = {{"x.sdc", 9, "max_delay", "3.5"}};
    path.launchEdge = 5000;
    path.sourceRise = false;
    path.captureEdge = 8500;
    path.relation = 3500;
    path.uncertainty = 0;
    path.required = 4630;
    path.slack = 1877;
    const std::string text = textOf(path);
    EXPECT_THAT(text, HasSubstr("Path Type: max\nException: max_delay 3.5 (x.sdc:9)\n"));
    EXPECT_THAT(text, HasSubstr(R"(
    5.000     5.000   clock clk (fall edge)
    3.500     8.500   max_delay
    1.600    10.100   clock network delay (propagated)
   -0.470     9.630   library setup time
              9.630   data required time
------------------------------------------------------------------
              9.630   data required time
             -7.753   data arrival time
              1.877   slack (MET)
)"));
}

TEST(PathText, withoutClocks) {
    Path path;
    path.startpoint = "in";
    path.endpoint = "out";
    path.startsAtPort = path.endsAtPort = true;
    path.relation = 1000;
    path.points = {{"in", 0, 0, Report::PointKind::port, 0, ""},
                   {"out", 1200, 1200, Report::PointKind::net, 0, ""}};
    path.arrival = 1200;
    path.required = 1000;
    path.slack = -200;
    path.exception = {{"x.sdc", 9, "max_delay", "1"}};
    EXPECT_EQ(columnsOf(textOf(path)), R"(    Delay      Time   Description
------------------------------------------------------------------
    0.000     0.000   input external delay
    0.000     0.000   in
    1.200     1.200   out
              1.200   data arrival time

    1.000     1.000   max_delay
    0.000     1.000   output external delay
              1.000   data required time
------------------------------------------------------------------
              1.000   data required time
             -1.200   data arrival time
             -0.200   slack (VIOLATED)
)");
}

TEST(PathText, whatDoesNotAddUpIsShown) {
    Path path = ReportTests::setupPath();
    path.slack += 30;
    path.required += 30;
    EXPECT_THAT(textOf(path), HasSubstr("   -0.470    10.880   library setup time\n"
                                        "    0.030    10.910   adjustment\n"
                                        "             10.910   data required time\n"));
    path = ReportTests::setupPath();
    path.arrival += 5;
    path.slack -= 5;
    EXPECT_THAT(textOf(path), HasSubstr("    0.588     2.753   r1/D (DFF)\n"
                                        "    0.005     2.758   adjustment\n"
                                        "              2.758   data arrival time\n"));
}

TEST(PathText, wideNumbersWidenTheirColumns) {
    Path path = ReportTests::setupPath();
    path.launchEdge = 20'000'000'000;
    path.captureEdge = 20'000'010'000;
    EXPECT_THAT(columnsOf(textOf(path)), StartsWith("    Delay          Time   Description\n"));
    EXPECT_THAT(textOf(path), HasSubstr("\n       0.540  20000002.165 v r0/Q (DFF)\n"));
    EXPECT_THAT(textOf(path), HasSubstr("\n             -20000002.753   data arrival time\n"));
}

// --- Sums ---

struct ShownLine {
    double delay = 0, time = 0;
    bool hasDelay = false;
    std::string description;
};

// The lines that begin with one or two numbers of three digits.
std::vector<ShownLine> shownLines(const std::string& text) {
    const auto isNumber = [](const std::string& word) {
        return word.size() > 4 && word[word.size() - 4] == '.' &&
               word.find_first_not_of("-.0123456789") == word.npos;
    };
    std::vector<ShownLine> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string first, second;
        words >> first >> second;
        if (!isNumber(first))
            continue;
        const bool hasDelay = isNumber(second);
        const std::string& time = hasDelay ? second : first;
        const std::size_t end = line.find(time, hasDelay ? line.find(first) + first.size() : 0) + time.size();
        constexpr std::size_t edge = 3; // " ^ "
        lines.push_back(
            {hasDelay ? std::stod(first) : 0, std::stod(time), hasDelay, line.substr(end + edge)});
    }
    return lines;
}

// Each time is the one before plus the delay, both ends are the block's last time, and the balance is the
// slack.
void expectThatSumsAddUp(const std::string& text) {
    constexpr double tolerance = 1e-7;
    const std::vector<ShownLine> lines = shownLines(text);
    double time = 0;
    std::vector<ShownLine> results;
    for (const ShownLine& line : lines) {
        if (line.hasDelay) {
            time += line.delay;
            EXPECT_NEAR(time, line.time, tolerance) << line.description << '\n' << text;
            continue;
        }
        if (results.size() < 2) {
            EXPECT_NEAR(time, line.time, tolerance) << line.description << '\n' << text;
            time = 0;
        }
        results.push_back(line);
    }
    ASSERT_EQ(results.size(), 5u) << text;
    EXPECT_NEAR(std::abs(results[2].time),
                std::abs(results[2].description == "data arrival time" ? results[0].time : results[1].time),
                tolerance);
    EXPECT_NEAR(results[2].time + results[3].time, results[4].time, tolerance) << text;
}

// A path of femtoseconds from a small generator: the sums hold, and what is shown is never 1 ps or more from
// the truth.
TEST(PathText, sumsAddUpAtEveryResolution) {
    std::uint32_t state = 12345;
    const auto next = [&](std::uint32_t limit) {
        constexpr std::uint32_t factor = 1664525, increment = 1013904223;
        state = state * factor + increment;
        return static_cast<Report::Time>((state >> 8) % limit);
    };
    for (int round = 0; round < 500; ++round) {
        Path path = ReportTests::setupPath();
        path.setup = round % 2 == 0;
        path.launchEdge = next(3000);
        path.relation = next(6000);
        path.captureEdge = path.launchEdge + path.relation;
        path.launchClockDelay = next(2000);
        path.captureClockDelay = next(2000);
        path.uncertainty = next(3) * 333;
        path.check = next(1500) - 700;
        Report::Time time = path.launchClockDelay;
        for (Report::Point& point : path.points) {
            point.delay = &point == path.points.data() ? 0 : next(2500);
            point.arrival = time += point.delay;
        }
        path.arrival = time;
        const Report::Time harder = path.setup ? -1 : 1;
        path.required = path.relation + path.captureClockDelay + harder * (path.uncertainty + *path.check);
        path.slack = path.setup ? path.required - path.arrival : path.arrival - path.required;

        const std::string text = textOf(path, -15);
        expectThatSumsAddUp(text);
        EXPECT_THAT(text, Not(HasSubstr("adjustment")));
        EXPECT_THAT(text, HasSubstr(path.slack < 0 ? "slack (VIOLATED)" : "slack (MET)"));
        for (const ShownLine& line : shownLines(text)) {
            if (line.description == "data required time") {
                const double exact = static_cast<double>(path.launchEdge + path.required) * 1e-6;
                EXPECT_NEAR(std::abs(line.time), std::abs(exact), 0.001501) << text;
            }
            if (line.description.starts_with("slack")) {
                EXPECT_NEAR(line.time, static_cast<double>(path.slack) * 1e-6, 0.001);
                EXPECT_EQ(line.time < 0, path.slack < 0) << text;
            }
        }
    }
}

TEST(PathText, aTinyViolationIsSeen) {
    Path path = ReportTests::setupPath(1000);
    path.points.back().delay += 8127000 + 1;
    path.points.back().arrival += 8127000 + 1;
    path.arrival = path.points.back().arrival;
    path.slack = path.required - path.arrival;
    ASSERT_EQ(path.slack, -1);
    const std::string text = textOf(path, -15);
    expectThatSumsAddUp(text);
    EXPECT_THAT(text, EndsWith("             10.879   data required time\n"
                               "            -10.880   data arrival time\n"
                               "             -0.001   slack (VIOLATED)\n"));
}

// --- Tables ---

TEST(Table, widthsAreCodePoints) {
    ::Report::Table table({{"Name"}, {"N", ::Report::Table::Align::right}, {"Rest"}});
    table.add({"\xC3\xA4\xE2\x82\xAC", "1", ""});
    table.add({"longer", "22", "x"});
    std::ostringstream out;
    table.print(out, false);
    EXPECT_EQ(out.str(), "Name     N  Rest\n"
                         "------  --  ----\n"
                         "\xC3\xA4\xE2\x82\xAC       1\n"
                         "longer  22  x\n");
}

TEST(Table, namesCannotSteerATerminal) {
    struct Row {
        std::string name;
        const char* expected;
    };
    const Row rows[] = {
        {"a[0]/b", "a[0]/b"},
        {"\x1b[31mred", "\\x1B[31mred"},
        {"a\nb\t\x7f", "a\\x0Ab\\x09\\x7F"},
        {std::string("\0", 1), "\\x00"},
        {"\xC3\xA4\xC3\x80", "\xC3\xA4\xC3\x80"}, // no byte of a character is a control character
        {"\xC2\x9B\x9B\xC2\xA0", "\\xC2\\x9B\\x9B\xC2\xA0"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(::Report::printable(row.name), row.expected);
        Whole report;
        report.design = row.name;
        EXPECT_THAT(textOf(report), StartsWith("Design: " + std::string(row.expected) + " (times in ns)\n"));
    }
}

} // namespace
