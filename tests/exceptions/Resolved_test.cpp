// The variants that exceptions have on a small design (Small.h), and the warnings about their objects.
#include "tests/exceptions/Small.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::By;
using Exceptions::BySet;
using Exceptions::Mentions;
using Exceptions::NamedPins;
using Exceptions::Variant;
using Support::Small;

// "cell", "pin+cell" ...
std::string text(BySet by) {
    static const std::pair<By, const char*> names[] = {{By::clockPin, "clock pin"},
                                                       {By::cell, "cell"},
                                                       {By::pin, "pin"},
                                                       {By::net, "net"},
                                                       {By::output, "output"}};
    std::string text;
    for (const auto& [one, name] : names)
        if (!(by & one).isEmpty())
            text += (text.empty() ? "" : "+") + std::string(name);
    return text;
}

std::string text(const Small& small, const Variant::End& end) {
    std::string text;
    for (std::size_t i = 0; i < end.points.pins.size(); ++i)
        text += " " + small.design().pinName(end.points.pins[i]) + " by " + ::text(end.points.by[i]);
    for (const Design::ClockId clock : end.clocks)
        text += " clock " + small.built.constraints.clocks[clock].name;
    return text + (end.edge == Design::Transition::any    ? ""
                   : end.edge == Design::Transition::rise ? " rise"
                                                          : " fall");
}

// "from r0/C by cell, through g/Z by pin, to r2/D by pin; ..."
std::string variants(const std::string& script) {
    const Small small(script);
    std::string all;
    for (const Variant& variant : small.resolved.variants) {
        std::string text;
        const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
        if (variant.from.isGiven)
            add("from" + ::text(small, variant.from));
        for (const Mentions& list : variant.throughs) {
            std::string nodes = "through";
            for (const auto& mention : list)
                nodes += " " + small.built.network->nameOf(mention.node) + " by " + ::text(mention.by);
            add(nodes);
        }
        if (variant.to.isGiven)
            add("to" + ::text(small, variant.to));
        all += (all.empty() ? "" : "; ") + text;
    }
    for (const Base::Diagnostic& diagnostic : small.diagnostics.all())
        all += " | " + std::string(Base::toString(diagnostic.severity)) + ": " + diagnostic.text;
    return all;
}

TEST(Resolved, Variants) {
    struct Row {
        const char *script, *expected;
    };
    const Row rows[] = {
        {"", ""},
        {"set_false_path -from r0", "from r0/C by cell"},
        {"set_false_path -from {r0 r0/C}", "from r0/C by cell+pin"},
        {"set_false_path -to {r2 r1/D q}", "to r2/D by cell r1/D by pin q by pin"},
        {"set_false_path -from [get_clocks a] -to [get_clocks {a b}]", "from clock a, to clock a clock b"},
        {"set_false_path -rise_from [get_clocks a]", "from clock a rise"},
        // A variant for each kind of object.
        {"set_false_path -from [list [get_cells r0] [get_clocks a]] -to r2",
         "from clock a, to r2/D by cell; from r0/C by cell, to r2/D by cell"},
        // A register's output names the register, through that output.
        {"set_false_path -from r0/Q", "from r0/C by output, through r0/Q by pin"},
        // Through points: a cell is its outputs, a net its drivers, a clock pin what it launches.
        {"set_false_path -through [get_cells w] -through h/Z", "through w/Z by cell, through h/Z by pin"},
        {"set_false_path -through r0/C", "through r0/Q by clock pin"},
        {"set_false_path -through [get_cells r1]", "through r1/Q by cell r1/D by cell"},
        // What is no start or end point.
        {"set_false_path -from g/Z -to r2", "through g/Z by pin, to r2/D by cell | warning: set_false_path: "
                                            "-from 'g/Z' is no start point: taken as "
                                            "-through"},
        {"set_multicycle_path 2 -from r0 -to h/A", "from r0/C by cell, through h/A by pin | warning: "
                                                   "set_multicycle_path: -to 'h/A' is no end point: taken as "
                                                   "-through"},
        {"set_false_path -rise_from r0",
         "from r0/C by cell | note: set_false_path: edges of data are not told apart: "
         "taken for rising and falling ones"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(variants(row.script), row.expected) << row.script;
}

TEST(Resolved, DelaysWithinPathsAreRefused) {
    struct Row {
        const char *script, *expected;
    };
    const Row rows[] = {
        {"set_max_delay 5 -from g/Z", "set_max_delay: -from 'g/Z' is no start point, which would cut the "
                                      "paths there; expected a clock, a register "
                                      "or its clock pin, or an input port"},
        {"set_min_delay 5 -to h/A", "set_min_delay: -to 'h/A' is no end point, which would cut the paths "
                                    "there; expected a clock, a register or "
                                    "its data pin, or an output port"},
    };
    for (const Row& row : rows)
        try {
            Small{row.script};
            ADD_FAILURE() << row.script;
        } catch (const Base::BadInput& bad) {
            EXPECT_EQ(bad.diagnostic().text, row.expected);
            EXPECT_EQ(bad.diagnostic().place.line, 2U) << row.script;
        }
}

// The ports that only a delay times: those of its list, or all if it has none on that side.
TEST(Resolved, TimedPorts) {
    struct Row {
        const char* script;
        bool input, output; // of ports a and q
    };
    const Row rows[] = {
        {"", false, false},
        {"set_false_path -to q", false, false},
        {"set_max_delay 5 -to q", true, true},
        {"set_max_delay 5 -from r0", false, true},
        {"set_min_delay 5 -from r0 -to r2", false, false},
        {"set_min_delay 5 -from r2 -to q", false, true},
        {"set_max_delay 5 -through g/Z", true, true},
        {"set_max_delay 5 -to [get_clocks a]", true, false},
    };
    for (const Row& row : rows) {
        const Small small(row.script);
        EXPECT_EQ(small.resolved.timedPorts.inputs.contains(small.pin("a")), row.input) << row.script;
        EXPECT_EQ(small.resolved.timedPorts.outputs.contains(small.pin("q")), row.output) << row.script;
    }
}

} // namespace
