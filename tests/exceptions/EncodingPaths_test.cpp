// The constrained paths that are made for classes, on the small design (Small.h).
#include "tests/exceptions/Small.h"

#include "Pelko/Analyzer.h"
#include "Pelko/CPath.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Support::Small;

// The pins of poles, in byte order: "g/Z w/Z"; "all" if there are as many as start or end points.
std::string pins(const Small& small, const Model::TimingModel& model, Pelko::Poles poles, std::size_t all) {
    std::multiset<std::string> names;
    for (const Pelko::Pole* pole : poles) {
        const Model::Start* const start = model.startAt(pole);
        const Model::End* const end = model.endAt(pole);
        names.insert(start ? small.design().pinName(start->pin)
                     : end ? small.design().pinName(end->pin)
                           : small.built.network->nameOf(model.nodeOf(pole)));
    }
    if (names.size() == all)
        return "all";
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

// A line for each class: sources > bridges > targets.
std::string classes(const std::string& script) {
    const Small small(script);
    Base::Diagnostics told;
    Model::TimingModel model(small.design(), *small.built.network, *small.built.clocks,
                             small.built.constraints, small.resolved.timedPorts, -12, told);
    small.encoding.makePaths(model);
    std::string text;
    for (const Pelko::CPath* path : model.host().getAnalyzer()->getCPaths())
        text += pins(small, model, path->getSources(), model.starts().size()) + " > " +
                pins(small, model, path->getBridges(), ~std::size_t{0}) + " > " +
                pins(small, model, path->getTargets(), model.ends().size()) + "\n";
    return text;
}

TEST(EncodingPaths, Table) {
    struct Row {
        const char *script, *expected;
    };
    const Row rows[] = {
        {"", ""},
        // Clocks and end points need no class.
        {"set_false_path -from [get_clocks a] -to r2", ""},
        {"set_false_path -from r0", "r0/C >  > all\n"},
        {"set_false_path -from r0 -to r2", "r0/C >  > r2/D\n"},
        // Two numbers, two digits: r0 has 1, r1 has 2; then r2 has 3.
        {"set_false_path -from {r0 r1}; set_multicycle_path 2 -from r1", "r0/C >  > all\nr1/C >  > all\n"},
        {"set_false_path -from {r0 r1} -to r1; set_multicycle_path 2 -from {r1 r2} -to r2;"
         "set_multicycle_path 3 -from r2 -to r1",
         "r0/C r2/C >  > r1/D r2/D\nr1/C r2/C >  > r1/D r2/D\n"},
        // Through points: from the start points of the exceptions through them to their end points.
        {"set_false_path -through g/Z", "all > g/Z > all\n"},
        {"set_false_path -through {g/Z w/B} -to r2", "all > g/Z w/B > r2/D\n"},
        {"set_false_path -from r0 -through g/Z -through h/Z -to r2",
         "r0/C >  > r2/D\nr0/C > g/Z > r2/D\nr0/C > h/Z > r2/D\n"},
        // No data passes the port of a clock: a class of no path.
        {"set_false_path -through a", " >  > all\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(classes(row.script), row.expected) << row.script;
}

} // namespace
