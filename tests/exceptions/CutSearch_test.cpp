// Which statements of clock groups cut the paths that an exception would cover. Clock a is on all registers
// of the small design (Small.h), and so is clock c, from the same port.
#include "exceptions/CutSearch.h"

#include "tests/exceptions/Small.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Support::Small;

// The lines of the statements.
std::set<unsigned> cutting(const std::string& exception) {
    const Small small("create_clock -add -name c -period 4 a\n" + exception +
                      "\nset_clock_groups -asynchronous -group a -group c\n"
                      "set_clock_groups -asynchronous -group b -group c");
    const Support::Built& built = small.built;
    const Exceptions::Variants& variants = small.resolved.variants;
    Base::Diagnostics told;
    Model::TimingModel model(small.design(), *built.network, *built.clocks, built.constraints,
                             small.resolved.timedPorts, -12, told);
    const Model::ClockGroups groups(built.constraints.clockGroups, built.clocks->size());
    Exceptions::CutSearch search(model, *built.network, *built.clocks, groups, small.encoding.numbers());
    std::set<unsigned> lines;
    for (const auto variant : variants.ids())
        for (const auto cut : search.groupsThatCut(variants[variant], variant))
            lines.insert(built.constraints.clockGroups[cut].origin.line);
    return lines;
}

TEST(CutSearch, Table) {
    const std::pair<const char*, std::set<unsigned>> rows[] = {
        {"set_false_path -from [get_clocks a] -to [get_clocks c]", {4}},
        {"set_false_path -from [get_clocks b] -to [get_clocks c]", {}}, // b launches nothing
        {"set_false_path -from [get_clocks a] -to [get_clocks a]", {}}, // not separated
        {"set_false_path -from r0 -to r2", {4}},
        {"set_false_path -from r0 -to r1", {}}, // no path
        {"set_false_path -from r0 -through g/Z -through h/Z", {4}},
        {"set_false_path -from r0 -through h/Z -through g/Z", {}},
        {"set_false_path -from r1 -through g/Z", {}},
    };
    for (const auto& [exception, expected] : rows)
        EXPECT_EQ(cutting(exception), expected) << exception;
}

} // namespace
