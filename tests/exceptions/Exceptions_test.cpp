// What the report contains of exceptions, what is refused, and what multicycles make of achieved periods,
// over whole runs (Runs.h).
#include "tests/exceptions/Runs.h"

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Support::Runs;

class Exceptions : public ExceptionRuns {};

// By line: kind, end points of setup and of hold, reported paths, status, overruling lines.
TEST_F(Exceptions, Table) {
    const std::vector<Row> rows = {
        {"", ""},
        {"set_false_path -to r1", "2 false_path 1 1 0 governs"},
        {"set_false_path -setup -to {r0 r1}", "2 false_path 2 0 0 governs"},
        {"set_multicycle_path 2 -from [get_clocks a]", "2 multicycle_path 4 4 8 governs"},
        {"set_multicycle_path 2 -setup -from r0\nset_multicycle_path 1 -hold -from r0",
         "2 multicycle_path 1 0 1 governs; 3 multicycle_path 0 1 1 governs"},
        {"set_max_delay 5 -to dout", "2 max_delay 1 0 1 governs"},
        {"group_path -name mine -to {r1 dout}", "2 path_group 2 2 4 governs"},
        {"group_path -name mine -to r1\nset_false_path -from r0",
         "2 path_group 0 0 0 always overruled 3; 3 false_path 1 1 0 governs"},
        // Through a register's clock pin: all that it launches.
        {"set_false_path -through r0/CLK", "2 false_path 1 1 0 governs"},
        {"set_max_delay 5 -from r0 -through r0/CLK -to r1", "2 max_delay 1 0 1 governs"},
        // Names that are not there, and lists that are empty.
        {"set_false_path -from [get_cells -quiet nothing] -to r1\nset_false_path -to r1\nset_max_delay 3 -to "
         "x",
         "2 false_path 0 0 0 matches nothing; 3 false_path 1 1 0 governs; 4 max_delay 0 0 0 matches nothing"},
        // Objects between which there is no path, in the wrong order, or without a clock.
        {"set_false_path -from r1 -to r0", "2 false_path 0 0 0 matches no path"},
        {"set_false_path -through g/Z -through g/A", "2 false_path 0 0 0 matches no path"},
        {"set_false_path -from s -through g/Z", "2 false_path 0 0 0 matches no path"},
        {"create_clock -name c -period 5\nset_false_path -from [get_clocks c]",
         "3 false_path 0 0 0 matches no path"},
        // Others come before it on all of its paths, or on some.
        {"set_multicycle_path 2 -to r1\nset_false_path -from [get_clocks a]",
         "2 multicycle_path 0 0 0 always overruled 3; 3 false_path 4 4 0 governs"},
        {"set_max_delay 5 -to r1\nset_max_delay 6 -to r1",
         "2 max_delay 0 0 0 always overruled 3; 3 max_delay 1 0 1 governs"},
        {"set_max_delay 5 -to {r0 r1}\nset_max_delay 6 -to r1",
         "2 max_delay 1 0 1 governs; 3 max_delay 1 0 1 governs"},
        {"set_multicycle_path 2 -setup -to {r0 r1}\nset_max_delay 6 -to r0\nset_max_delay 7 -to "
         "r1\nset_min_delay 0 "
         "-to {r0 r1}",
         "2 multicycle_path 0 0 0 always overruled 3 4; 3 max_delay 1 0 1 governs; 4 max_delay 1 0 1 "
         "governs; "
         "5 min_delay 0 2 2 governs"},
        // Clock groups take the paths away.
        {"set_clock_groups -asynchronous -group a -group b\nset_max_delay 5 -from s -to t",
         "3 max_delay 0 0 0 always overruled 2"},
        {"set_max_delay 5 -from [get_clocks a] -to [get_clocks b]\nset_clock_groups -exclusive -group b",
         "2 max_delay 0 0 0 always overruled 3"},
        {"set_clock_groups -asynchronous -group a -group b\nset_false_path -from r0 -to t",
         "3 false_path 0 0 0 matches no path"},
        {"set_clock_groups -asynchronous -group a -group b\nset_false_path -from {r0 s}",
         "3 false_path 1 1 0 governs"},
        // Without a clock at both ends only a delay times a path, so nothing else governs there.
        {"set_output_delay 0 dout\nset_max_delay 5 -to dout\nset_multicycle_path 2 -to dout",
         "3 max_delay 1 0 1 governs; 4 multicycle_path 0 0 0 always overruled 3"},
        {"set_output_delay 0 dout\nset_min_delay 5 -from s\nset_multicycle_path 2 -to dout",
         "3 min_delay 0 1 1 governs; 4 multicycle_path 0 0 0 matches no path"},
        {"set_output_delay 0 dout\nset_min_delay 0 -from r1\nset_false_path -to dout",
         "3 min_delay 0 0 0 always overruled 4; 4 false_path 0 1 0 governs"},
        // Edges of clocks.
        {"set_false_path -rise_from [get_clocks a] -to r1", "2 false_path 1 1 0 governs"},
        {"set_false_path -fall_from [get_clocks a] -to r1", "2 false_path 0 0 0 matches no path"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(table(run(row.lines)), row.expected) << row.lines;
}

TEST_F(Exceptions, Messages) {
    const std::vector<Row> rows = {
        {"set_false_path", "2: error: set_false_path: needs -from, -through or -to"},
        {"set_false_path -to r1 -fast", "2: error: set_false_path: unknown option '-fast'"},
        {"set_multicycle_path -to r1",
         "2: error: set_multicycle_path: expected a whole number, found nothing"},
        {"set_multicycle_path two -to r1",
         "2: error: set_multicycle_path: expected a whole number, found 'two'"},
        {"set_multicycle_path 2 -start -end -to r1",
         "2: error: set_multicycle_path: only one of -start or -end can be given"},
        {"set_max_delay 3 -from r0 -rise_from r1",
         "2: error: set_max_delay: only one of -from, -rise_from or -fall_from can be given"},
        {"set_max_delay 3 -to [get_nets g/Z]",
         "2: error: set_max_delay: -to: expected a clock, port, cell or pin, found the net 'g/Z'"},
        {"set_max_delay 3 -from g/Z",
         "2: error: set_max_delay: -from 'g/Z' is no start point, which would cut the "
         "paths there; expected a clock, a register or its clock pin, or an input port"},
        {"set_min_delay 3 -to g/A",
         "2: error: set_min_delay: -to 'g/A' is no end point, which would cut the paths "
         "there; expected a clock, a register or its data pin, or an output port"},
        {"set_false_path -from g/Z",
         "2: warning: set_false_path: -from 'g/Z' is no start point: taken as -through"},
        {"group_path -name x -from g/Z",
         "2: warning: group_path: -from 'g/Z' is no start point: taken as -through"},
        {"group_path -name x -rise_to r1",
         "2: note: group_path: edges of data are not told apart: taken for rising and falling ones"},
        {"set_multicycle_path 2 -to g",
         "2: warning: set_multicycle_path: -to 'g' is no end point: taken as -through"},
        {"set_false_path -from [get_cells none]",
         "2: warning: get_cells: no cell matches 'none'\n2: warning: set_false_path: -from: no objects: the "
         "command has no effect"},
        {"set_false_path -from [list]",
         "2: warning: set_false_path: -from: no objects: the command has no effect"},
        {"set_false_path -rise_to r1",
         "2: note: set_false_path: edges of data are not told apart: taken for rising "
         "and falling ones"},
        {"set_false_path -rise_to [get_clocks b]", ""},
        {"group_path -name x -weight 2 -to r1",
         "2: note: group_path: -weight and -critical_range are accepted, and "
         "not applied"},
        {"set_case_analysis 1 g/A",
         "2: note: set_case_analysis: constants stop at the pins that they are given for, "
         "since what cells make of them is not known"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(messages(row.lines), row.expected) << row.lines;
}

// Registers with early and with late clocks, too many to be told apart, lead to one end point.
TEST_F(Exceptions, LatenciesThatCannotBeIgnored) {
    const auto wide = [](int registers) {
        std::string wires =
            "(INTERCONNECT b t/CLK (0)) (INTERCONNECT w/Z t/D (0)) (INTERCONNECT din r0/D (0)) "
            "(INTERCONNECT r0/Q dout (0))\n";
        std::string inputs, cells;
        for (int i = 0; i < registers; ++i) {
            const std::string number = std::to_string(i);
            wires += "(INTERCONNECT a r" + number + "/CLK (" + std::to_string(i % 2) + ")) (INTERCONNECT r" +
                     number + "/Q w/I" + number + " (0))\n";
            inputs += "(IOPATH I" + number + " Z (1))\n";
            cells += cell("DFF", "r" + number);
        }
        return sdfOf(wires, "(CELL (CELLTYPE \"WIDE\") (INSTANCE w) (DELAY (ABSOLUTE\n" + inputs + ")))\n" +
                                cells + cell("DFF", "t"));
    };
    const std::string ignoring = "set_max_delay 5 -to t -ignore_clock_latency";
    EXPECT_EQ(messages(ignoring, wide(499)), "");
    EXPECT_EQ(
        messages(ignoring, wide(500)),
        "2: error: -ignore_clock_latency: the clock reaches the start points at different times; expected "
        "-from with registers or ports, or an ideal clock");
    EXPECT_EQ(messages(ignoring + "\nset_clock_latency 1 a", wide(500)), "");
}

// The period at which setup would just be met: a path of n cycles needs an n-th of its time.
TEST_F(Exceptions, AchievedPeriods) {
    struct Case {
        const char* lines;
        Report::MaybeTime period; // of a
    };
    // Without exceptions r0 to r1 needs 3 ns; din to r0 and r1 to dout 1.
    const std::vector<Case> cases = {
        {"", 3000},
        {"set_multicycle_path 2 -to r1", 1500},
        {"set_multicycle_path 2 -setup -to r1\nset_multicycle_path 1 -hold -to r1", 1500},
        {"set_multicycle_path 2 -start -to r1", 1500},
        {"set_multicycle_path 7 -to r1", 1000},
        {"set_false_path -to r1", 1000},
        {"set_max_delay 2 -to r1", 1000},
        {"set_clock_uncertainty 1 -setup a", 4000},
        {"set_clock_uncertainty 1 -setup a\nset_multicycle_path 4 -to r1", 2000},
        {"set_multicycle_path 0 -to r1", 1000},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(Support::rowOf(cases, row));
        const Report::Report report = run(row.lines);
        const auto clock = std::ranges::find(report.clocks, "a", &Report::Clock::name);
        ASSERT_NE(clock, report.clocks.end());
        EXPECT_EQ(clock->achievedPeriod, row.period) << row.lines;
    }
}

TEST_F(Exceptions, PathGroups) {
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"", "a"},
        {"group_path -name mine -to r1", "mine"},
        {"group_path -name mine -from [get_clocks a]\ngroup_path -name yours -through g/Z", "yours"},
        {"group_path -name mine -to r1\ngroup_path -name yours -to {r0 r1}", "yours"},
        {"group_path -default -to r1", "default"},
    };
    for (const auto& [lines, group] : rows) {
        std::vector<std::string> groups;
        for (const Report::Path& path : run(lines).paths)
            if (path.endpoint == "r1/D")
                groups.push_back(path.group);
        EXPECT_EQ(groups, std::vector<std::string>(2, group)) << lines;
    }
}

} // namespace
