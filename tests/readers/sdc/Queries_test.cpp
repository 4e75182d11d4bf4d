// Queries: which objects a pattern, a filter or a relation gives.
#include "readers/sdc/Glob.h"

#include "tests/support/command/Script.h"

#include <chrono>
#include <random>

using Support::Row;

namespace {

// --- Patterns by themselves ---

TEST(SdcGlob, Matches) {
    const struct {
        const char *pattern, *text;
        bool expected;
    } rows[] = {
        {"a", "a", true},         {"a", "ab", false},           {"", "", true},
        {"*", "", true},          {"*", "u1/u2", true},         {"a*c", "abbc", true},
        {"a*c", "abcd", false},   {"*b*b", "abab", true},       {"*ab*ab*c", "ababxabab", false},
        {"a?c", "abc", true},     {"a?c", "ac", false},         {"in[3]", "in[3]", true},
        {"in[3]", "in3", false},  {"in\\[3\\]", "in[3]", true}, {"in[*]", "in[12]", true},
        {"in[*]", "in", false},   {"in[?]", "in[12]", false},   {"q[ab]", "qa", true},
        {"q[ab]", "qc", false},   {"q[a-c]z", "qbz", true},     {"q[!a-c]", "qd", true},
        {"q[!a-c]", "qb", false}, {"q[0-9]", "q7", true},       {"q[", "q[", true},
        {"a\\*", "a*", true},     {"a\\*", "ab", false},        {"[3:0]", "[3:0]", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Readers::Sdc::Glob(row.pattern).matches(row.text), row.expected)
            << row.pattern << " " << row.text;
    EXPECT_TRUE(Readers::Sdc::Glob("In[A-C]*", true).matches("iNb!"));
}

// The plainest matcher: a star takes nothing, or one character and is tried again.
bool matchesPlainly(std::string_view pattern, std::string_view text) {
    if (pattern.empty())
        return text.empty();
    if (pattern[0] == '*')
        return matchesPlainly(pattern.substr(1), text) ||
               (!text.empty() && matchesPlainly(pattern, text.substr(1)));
    return !text.empty() && (pattern[0] == '?' || pattern[0] == text[0]) &&
           matchesPlainly(pattern.substr(1), text.substr(1));
}

TEST(SdcGlob, AgreesWithThePlainestMatcher) {
    constexpr unsigned seed = 20260;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto word = [&random](std::string_view letters) {
        std::string text;
        for (auto left = random() % 9; left != 0; --left)
            text += letters[random() % letters.size()];
        return text;
    };
    int matched = 0;
    for (int i = 0; i < 20'000; ++i) {
        const std::string pattern = word("ab/*?"), text = word("ab/");
        const bool expected = matchesPlainly(pattern, text);
        matched += expected;
        ASSERT_EQ(Readers::Sdc::Glob(pattern).matches(text), expected) << pattern << " " << text;
    }
    EXPECT_GT(matched, 1'000);
}

// --- Queries ---

class SdcQueries : public testing::TestWithParam<Row> {};

// What the query gives, by names; then what it says.
TEST_P(SdcQueries, GiveTheExpectedObjects) {
    const Support::Outcome outcome =
        Support::run(std::string("create_clock -name c -period 5 clk; create_clock -name v -period 1\n"
                                 "puts [get_object_name [") +
                     GetParam().script + "]]");
    std::string text = outcome.allMessages();
    for (const std::string cut : {"x.sdc:2: note: puts: ", "x.sdc:2: "})
        for (std::size_t at = text.find(cut); at != std::string::npos; at = text.find(cut))
            text.erase(at, cut.size());
    EXPECT_EQ(text, GetParam().expected + std::string("\n")) << GetParam().script;
}

const Row names[] = {
    {"get_ports clk", "clk"},
    {"get_ports clk*", "clk clk2"},
    {"get_ports {rst a}", "rst a"},
    {"get_ports [list rst a rst]", "rst a"},
    {"get_ports {led[3]}", "led[3]"},
    {"get_ports led\\[3\\]", "led[3]"},
    {"get_ports {led\\[3\\]}", "led[3]"},
    {"get_ports {led[3] in\\[0\\]}", "{led[3]} {in[0]}"},
    {"get_ports {led[*]}", "{led[3]} {led[4]}"},
    {"get_ports {{led[*]} rst}", "{led[3]} {led[4]} rst"},
    {"get_ports -nocase CLK", "clk"},
    {"get_ports -regexp {(clk|rst).*}", "clk clk2 rst"},
    {"get_ports -regexp -nocase {LED\\[[0-9]\\]}", "{led[3]} {led[4]}"},
    {"get_ports", "clk clk2 rst {in[0]} {in[1]} a b out {led[3]} {led[4]} bidi"},
    {"get_pins r0/Q", "r0/Q"},
    {"get_pins u1/u2/ff/D", "u1/u2/ff/D"},
    {"get_pins */Q", "r0/Q r1/Q u1/u2/ff/Q"},
    {"get_pins r0/*", "r0/CLK r0/D r0/Q"},
    {"get_pins {r?/[CD]*}", "r0/CLK r0/D r1/CLK r1/D"},
    {"get_pins *ff*", "u1/u2/ff/CLK u1/u2/ff/D u1/u2/ff/Q"},
    {"get_pins -hierarchical ff/D", "u1/u2/ff/D"},
    {"get_pins -of_objects [get_cells l0]", "l0/A l0/B l0/Z"},
    {"get_pins -of_objects [get_nets mid]", "r0/Q l0/A"},
    {"get_pins -of r0", "r0/CLK r0/D r0/Q"},
    {"get_cells r*", "r0 r1"},
    {"get_cells u1/u2/ff", "u1/u2/ff"},
    {"get_cells -hier ff", "u1/u2/ff"},
    {"get_cells -of_objects [get_pins */Q]", "r0 r1 u1/u2/ff"},
    {"get_cells [get_cells r0]", "r0"},
    {"get_nets m*", "mid"},
    {"get_nets -of_objects l0/A", "mid"},
    {"get_nets -of_objects [get_cells r0]", "clk a mid"},
    {"get_cells -of_objects [get_nets mid]", "r0 l0"},
    {"get_ports -of_objects [get_clocks c]", "clk"},
    {"get_ports -of_objects [get_ports clk]", "clk"},
    {"get_pins -of_objects [get_clocks c]", ""},
    {"get_ports -of_objects [get_nets clk]", "clk"},
    {"get_clocks *", "c v"},
    {"get_clocks -of_objects [get_ports clk]", "c"},
    {"all_clocks", "c v"},
    {"all_inputs", "clk clk2 rst {in[0]} {in[1]} a b bidi"},
    {"all_inputs -no_clocks", "clk2 rst {in[0]} {in[1]} a b bidi"},
    {"all_outputs", "out {led[3]} {led[4]} bidi"},
    {"all_registers", "r0 r1 u1/u2/ff"},
    {"all_registers -data_pins", "r0/D r1/D u1/u2/ff/D"},
    {"all_registers -clock_pins -output_pins", "r0/CLK r0/Q r1/CLK r1/Q u1/u2/ff/CLK u1/u2/ff/Q"},
    // Not found.
    {"get_ports zz", "warning: get_ports: no port matches 'zz'\n"},
    {"get_ports -quiet zz", ""},
    {"get_pins nope/*", "warning: get_pins: no pin matches 'nope/*'\n"},
    {"get_pins clk", "warning: get_pins: no pin matches 'clk'\n"},
    {"get_ports -exact clk*", "warning: get_ports: no port matches 'clk*'\n"},
    {"get_ports {@place:1}", "warning: get_ports: no port matches '@place:1'\n"},
    {"get_ports \"a \\{b\"", "warning: get_ports: no port matches 'a {b'\n"}, // no list
};
INSTANTIATE_TEST_SUITE_P(Names, SdcQueries, testing::ValuesIn(names));

const Row filters[] = {
    {"get_cells -filter {ref_name == LUT}", "l0"},
    {"get_cells -filter {ref_name != LUT && full_name =~ u1*}", "u1/u2/ff"},
    {"get_cells -filter {full_name !~ r* || name == \"r1\"}", "r1 u1/u2/ff l0"},
    {"get_cells -filter is_sequential", "r0 r1 u1/u2/ff"},
    {"get_cells -filter {!is_sequential}", "l0"},
    {"get_cells -filter {!(name == r0 || name == r1) && @is_sequential == 1}", "u1/u2/ff"},
    {"get_ports -filter {direction == output}", "out {led[3]} {led[4]}"},
    {"get_pins -filter {is_clock}", "r0/CLK r1/CLK u1/u2/ff/CLK"},
    {"get_pins r0/* -filter {name == Q || NAME == D}", "r0/D r0/Q"},
    {"get_clocks -filter {period == 5}", "c"},
    {"filter_collection [get_cells *] {ref_name == LUT}", "l0"},
    {"get_cells -filter {name == zz}", "warning: get_cells: no cell passes the filter 'name == zz'\n"},
};
INSTANTIATE_TEST_SUITE_P(Filters, SdcQueries, testing::ValuesIn(filters));

const Row collections[] = {
    {"lindex [get_ports clk*] 1", "clk2"},
    {"concat [get_ports rst] [get_pins r0/D]", "rst r0/D"},
    {"add_to_collection [get_ports rst] [get_ports {rst a}]", "rst a"},
    {"remove_from_collection [all_outputs] [get_ports {led[*]}]", "out bidi"},
    {"index_collection [all_outputs] 1", "led[3]"},
    {"copy_collection [get_ports out]", "out"},
    {"lsort [list [lindex [get_ports rst] 0]]", "rst"},
    {"append_to_collection all [get_ports a]", "a"},
};
INSTANTIATE_TEST_SUITE_P(Collections, SdcQueries, testing::ValuesIn(collections));

// --- Attributes ---

class SdcAttributes : public testing::TestWithParam<Row> {};

TEST_P(SdcAttributes, HaveTheExpectedValue) {
    const std::string script =
        "create_clock -name c -period 5 clk; create_clock -name v -period 1 -waveform {0.1 0.3}\n"
        "create_generated_clock -name g -source clk -divide_by 2 {r0/Q r1/Q}; set_propagated_clock g\n"
        "puts [get_attribute " +
        std::string(GetParam().script) + "]";
    EXPECT_EQ(Support::run(script).allMessages(), "x.sdc:3: " + std::string(GetParam().expected) + "\n")
        << GetParam().script;
}

const Row attributes[] = {
    {"r0/Q name", "note: puts: Q"},
    {"r0/Q full_name", "note: puts: r0/Q"},
    {"r0/Q direction", "note: puts: output"},
    {"bidi direction", "note: puts: inout"},
    {"r0/Q class", "note: puts: pin"},
    {"bidi object_class", "note: puts: port"},
    {"r0/CLK is_clock", "note: puts: true"},
    {"r0/CLK is_clock_source", "note: puts: false"},
    {"r0/Q is_clock_source", "note: puts: true"},
    {"r0/D is_data", "note: puts: true"},
    {"r0/CLK is_data", "note: puts: false"},
    {"r0/Q net", "note: puts: mid"},
    {"l0/Z net_name", "note: puts: "},
    {"r0/Q cell", "note: puts: r0"},
    {"r0/Q ref_name", "note: puts: DFF"},
    {"bidi ref_name", "error: get_attribute: a port has no attribute 'ref_name'"},
    {"u1/u2/ff name", "note: puts: ff"},
    {"u1/u2/ff full_name", "note: puts: u1/u2/ff"},
    {"r0 is_hierarchical", "note: puts: false"},
    {"r0 zz", "error: get_attribute: a cell has no attribute 'zz'"},
    {"-quiet r0 zz", "note: puts: "},
    {"mid name", "note: puts: mid"},
    {"mid full_name", "note: puts: mid"},
    {"mid zz", "error: get_attribute: a net has no attribute 'zz'"},
    {"c name", "note: puts: c"},
    {"c period", "note: puts: 5"},
    {"c waveform", "note: puts: 0 2.5"},
    {"v waveform", "note: puts: 0.1 0.3"},
    {"g waveform", "note: puts: "},
    {"g period", "note: puts: "},
    {"c is_generated", "note: puts: false"},
    {"g is_generated", "note: puts: true"},
    {"c is_virtual", "note: puts: false"},
    {"v is_virtual", "note: puts: true"},
    {"c is_propagated", "note: puts: false"},
    {"g propagated_clock", "note: puts: true"},
    {"g sources", "note: puts: r0/Q r1/Q"},
    {"v sources", "note: puts: "},
    {"c zz", "error: get_attribute: a clock has no attribute 'zz'"},
    {"[get_cells r*] ref_name", "note: puts: DFF DFF"},
};
INSTANTIATE_TEST_SUITE_P(Attributes, SdcAttributes, testing::ValuesIn(attributes));

class SdcQueryMessages : public testing::TestWithParam<Row> {};

TEST_P(SdcQueryMessages, AreExact) {
    EXPECT_EQ(Support::run(GetParam().script).allMessages(), GetParam().expected) << GetParam().script;
}

const Row said[] = {
    {"puts [sizeof_collection [get_pins r0/*]]\nputs [llength [all_inputs]]",
     "x.sdc:1: note: puts: 3\nx.sdc:2: note: puts: 8\n"},
    {"foreach_in_collection p [get_pins r0/*] {\n  if {[get_name $p] eq \"r0/D\"} continue\n  puts "
     "[get_attribute $p name]\n}",
     "x.sdc:3: note: puts: CLK\nx.sdc:3: note: puts: Q\n"},
    {"puts [get_property [get_ports clk] direction]; puts [get_property full_name [get_cells r0]]",
     "x.sdc:1: note: puts: input\nx.sdc:1: note: puts: r0\n"},
    {"set s \"[get_ports rst]\"; puts [get_object_name $s]", "x.sdc:1: note: puts: rst\n"},
    {"set s [lindex [get_ports rst] 0]; set t $s; append t {}; puts [get_object_name $t]",
     "x.sdc:1: note: puts: rst\n"},
    {"puts [sizeof_collection [add_to_collection {rst a} {a b}]]\n"
     "puts [sizeof_collection [add_to_collection -unique {rst a} {a b}]]",
     "x.sdc:1: note: puts: 4\nx.sdc:2: note: puts: 3\n"},
    {"set all [get_ports rst]\nappend_to_collection all {rst a}; puts [sizeof_collection $all]\n"
     "append_to_collection -unique all a; puts [sizeof_collection $all]",
     "x.sdc:2: note: puts: 3\nx.sdc:3: note: puts: 2\n"},
    // The value that another variable has stays as it is; in a loop each one is added to what is there.
    {"append_to_collection all [get_ports rst]\nset other $all\nappend_to_collection all [get_ports a]\n"
     "puts [get_name $other]\nputs [get_name $all]",
     "x.sdc:4: note: puts: rst\nx.sdc:5: note: puts: rst a\n"},
    {"foreach_in_collection c [get_cells *] {\n  append_to_collection -unique all [list $c $c]\n"
     "  append_to_collection -unique all [get_cells r0]\n}\nputs [sizeof_collection $all]\n"
     "set few [remove_from_collection $all [get_cells {r0 l0}]]\nputs [get_name $few]\n"
     "puts [sizeof_collection $all]\nputs [get_name [index_collection $all 1]]\n"
     "puts [get_name [add_to_collection $few [get_cells l0]]]",
     "x.sdc:5: note: puts: 4\nx.sdc:7: note: puts: r1 u1/u2/ff\nx.sdc:8: note: puts: 4\n"
     "x.sdc:9: note: puts: r1\nx.sdc:10: note: puts: r1 u1/u2/ff l0\n"},
    {"set v(1) 2\nappend_to_collection v a", "x.sdc:2: error: can't set \"v\": variable is array\n"},
    // From the ninth pattern on names are looked up in order.
    {"for {set i 0} {$i < 9} {incr i} { get_cells r* }\n"
     "puts [get_object_name [get_cells r*]]; puts [get_object_name [get_pins u*/Q]]\n"
     "puts [get_object_name [get_nets cl*]]; get_cells zz*",
     "x.sdc:2: note: puts: r0 r1\nx.sdc:2: note: puts: u1/u2/ff/Q\nx.sdc:3: note: puts: clk clk2\n"
     "x.sdc:3: warning: get_cells: no cell matches 'zz*'\n"},
    {"get_cells -filter {name == \"a}", "x.sdc:1: error: -filter: expected '\"' in 'name == \"a'\n"},
    {"get_cells -filter \"name == \\{a\"", "x.sdc:1: error: -filter: expected '}' in 'name == {a'\n"},
    {"get_cells -filter {nosuch == 1}", "x.sdc:1: error: -filter: a cell has no attribute 'nosuch'\n"},
    {"get_cells -filter {name ==}", "x.sdc:1: error: -filter: expected a value in 'name =='\n"},
    {"get_cells -filter {(name == a}", "x.sdc:1: error: -filter: expected ')' in '(name == a'\n"},
    {"get_cells -filter {name == a)}", "x.sdc:1: error: -filter: unexpected ')' in 'name == a)'\n"},
    {"get_cells -filter {name == a b}", "x.sdc:1: error: -filter: expected && or || in 'name == a b'\n"},
    {"get_cells -filter {&& name}", "x.sdc:1: error: -filter: expected an attribute in '&& name'\n"},
    {"get_ports -regexp {(}",
     "x.sdc:1: error: couldn't compile regular expression pattern: parentheses () not balanced\n"},
    {"get_ports led[3]", "x.sdc:1: error: unknown command '3': brackets call a command; a name with brackets "
                         "stands in braces, {name[3]}\n"},
    {"get_ports a b", "x.sdc:1: error: get_ports: unexpected argument 'b'\n"},
    {"get_ports a -of_objects mid", "x.sdc:1: error: get_ports: patterns do not go with -of_objects\n"},
    {"get_ports [get_cells r0]", "x.sdc:1: error: get_ports: expected a port, found the cell 'r0'\n"},
    {"all_registers -clock c",
     "x.sdc:1: error: all_registers: -clock is not supported: what a clock reaches is not known while "
     "constraints are read\n"},
    {"index_collection [get_ports clk] 1",
     "x.sdc:1: error: index_collection: expected an index below 1, found '1'\n"},
};
INSTANTIATE_TEST_SUITE_P(Said, SdcQueryMessages, testing::ValuesIn(said));

// --- Other designs ---

TEST(SdcQueries, TakeSlashesForAnotherDivider) {
    Design::RoutedDesign design;
    design.divider = '.';
    const Design::CellId cell = design.addCell(design.names.add("u1.u2"), design.names.add("DFF"));
    design.addPin(cell, design.names.add("D"));
    design.index();
    design.classify();
    const Support::Outcome outcome = Support::run(
        {"set_case_analysis 0 [get_pins u1/u2/D]; set_case_analysis 1 [get_pins u1.u2/D]"}, {}, design);
    EXPECT_EQ(outcome.constraints, "case u1.u2/D 1\n") << outcome.allMessages();
    EXPECT_EQ(Support::run({"puts [get_attribute u1.u2/D direction]"}, {}, design).allMessages(),
              "x.sdc:1: note: puts: unknown\n");
}

TEST(SdcQueries, AreFastOnALargeDesign) {
    constexpr int cells = 100'000;
    Design::RoutedDesign design;
    const Base::Name type = design.names.add("DFF");
    for (int i = 0; i < cells; ++i) {
        const Design::CellId cell =
            design.addCell(design.names.add("top/block/reg_" + std::to_string(i)), type);
        for (const char* pin : {"CLK", "D", "Q"})
            design.addPin(cell, design.names.add(pin));
    }
    design.index();
    design.classify();
    const auto start = std::chrono::steady_clock::now();
    const Support::Outcome outcome =
        Support::run({"set n {}; for {set i 0} {$i < 20000} {incr i} { lappend n top/block/reg_$i/D }\n"
                      "set_case_analysis 0 [get_pins [lrange $n 0 9]]\n"
                      "puts [llength [get_pins $n]]; puts [llength [get_pins *reg_*5/Q]]; puts [llength "
                      "[get_pins -regexp .*7/D]]\n"
                      "foreach name $n { get_pins $name }"},
                     {}, design);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(outcome.allMessages(),
              "x.sdc:3: note: puts: 20000\nx.sdc:3: note: puts: 10000\nx.sdc:3: note: puts: 10000\n");
    EXPECT_LT(taken.count(), 5.0); // a pass over all names for each name would take minutes
}

} // namespace
