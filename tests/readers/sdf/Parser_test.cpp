// SDF files as events: what each form of the language becomes.
#include "readers/sdf/Parser.h"

#include "Parsed.h"
#include "ProjectFiles.h"
#include "tests/support/Rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Base::Diagnostics;
using Base::Source;
using Support::cellOf;
using Support::checkOf;
using Support::delayOf;
using Support::EventLog;
using Support::fileOf;
using Support::InputFile;
using Support::inside;
using Support::Lines;
using Support::parsed;
using Support::scale;

namespace {

using namespace std::string_view_literals;

struct Row {
    std::string_view text;
    Lines events;
};

// --- The header ---

TEST(Parser, Header) {
    const struct {
        std::string_view text, event;
    } rows[] = {
        {"", "header version= design= program= divider=. scale=-9"},
        {"(SDFVERSION \"3.0\")(DESIGN \"top\")(PROGRAM \"route\")(DIVIDER /)(TIMESCALE 1ps)",
         "header version=3.0 design=top program=route divider=/ scale=-12"},
        {"(SDFVERSION OVI 2.1) (DESIGN top)",
         "header version=OVI 2.1 design=top program= divider=. scale=-9"},
        {"(sdfversion \"1.0\")(Design \"a b\")", "header version=1.0 design=a b program= divider=. scale=-9"},
        {"(PROGRAM \"a \\\"b\\\" \\\\ \\c ( ;\tx\")",
         "header version= design= program=a \"b\" \\ \\c ( ;\tx divider=. scale=-9"},
        {"(PROGRAM)(DESIGN )(SDFVERSION \"\")", "header version= design= program= divider=. scale=-9"},
        {"(DATE \"today\")(VENDOR \"v\")(VERSION \"1\")(PROCESS \"best=0.65:nom=1.0:worst=1.8\")"
         "(VOLTAGE 5.5:5.0:4.5)(TEMPERATURE -25:25:85)",
         "header version= design= program= divider=. scale=-9"},
        {"(DATE Tue 1 (noon))(VENDOR v)(VERSION 1)(PROCESS 1:2:3)(VOLTAGE 5)(TEMPERATURE ::25)(VOLTAGE)",
         "header version= design= program= divider=. scale=-9"},
        {"(DIVIDER .)", "header version= design= program= divider=. scale=-9"},
        {"(DIVIDER / )", "header version= design= program= divider=/ scale=-9"},
        {"(DIVIDER \"/\")", "header version= design= program= divider=/ scale=-9"},
        {"(DESIGN a/*x*/b)(PROGRAM c // d\n  e)",
         "header version= design=a b program=c e divider=. scale=-9"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parsed(fileOf(row.text, "")), Lines{std::string(row.event)}) << row.text;
        const std::string cell = "(CELL(CELLTYPE \"T\")(INSTANCE))";
        EXPECT_EQ(parsed(fileOf(row.text, cell)), (Lines{std::string(row.event), "cell T <>", "end"}))
            << row.text;
    }
}

TEST(Parser, TimeScale) {
    const struct {
        std::string_view text;
        int scale;
    } rows[] = {
        {"1ps", -12},    {"100 ps", -10},    {"1 ns", -9},    {"1.0ns", -9},  {"10us", -5},
        {"10.0 us", -5}, {"100.00fs", -13},  {"1ms", -3},     {"1s", 0},      {"1 NS", -9},
        {"1Ps", -12},    {"\"10 ps\"", -11}, {"1\n\tns", -9}, {" 10ns ", -8},
    };
    for (const auto& row : rows) {
        const std::string text = fileOf("(TIMESCALE " + std::string(row.text) + ")", "");
        EXPECT_THAT(parsed(text).at(0), testing::EndsWith(" scale=" + std::to_string(row.scale))) << row.text;
    }
}

TEST(Parser, NotesAMissingTimeScale) {
    for (const bool given : {true, false}) {
        SCOPED_TRACE(given);
        const InputFile file(fileOf(given ? scale : "", ""));
        Source source(file.path());
        Diagnostics diagnostics;
        Readers::Sdf::Handler nothing;
        Readers::Sdf::parse(source, nothing, diagnostics);
        std::vector<Base::Diagnostic> expected;
        if (!given)
            expected = {{Base::Severity::note, {file.path()}, "no TIMESCALE: the unit of time is 1 ns"}};
        EXPECT_EQ(diagnostics.all(), expected);
    }
}

// --- Space, comments, keywords ---

TEST(Parser, SpaceAndCommentsStandAnywhereBetween) {
    const Lines expected = {"header version= design= program= divider=. scale=-9", "cell T <u>",
                            "iopath ^a b (1 2 3) (4 4 4)", "setup d ^c (1 1 1)", "end"};
    for (const std::string_view text : {
             "(DELAYFILE(TIMESCALE 1ns)(CELL(CELLTYPE\"T\")(INSTANCE u)(DELAY(ABSOLUTE(IOPATH(posedge "
             "a)b(1:2:3)(4))))(TIMINGCHECK(SETUP d(posedge c)(1)))))"sv,
             " ( DELAYFILE ( TIMESCALE 1 ns ) ( CELL ( CELLTYPE \"T\" ) ( INSTANCE u ) ( DELAY ( ABSOLUTE ( "
             "IOPATH ( posedge a ) b ( 1 : 2 : 3 ) ( 4 ) ) ) ) "
             "( TIMINGCHECK ( SETUP d ( posedge c ) ( 1 ) ) ) ) ) "sv,
             "(DELAYFILE\r\n(TIMESCALE 1ns)\r\n(CELL\t(CELLTYPE "
             "\"T\")\n\n\f\v(INSTANCE\nu)(DELAY(ABSOLUTE(IOPATH\n"
             "(posedge\na)\nb\n(1:\n2:\n3)\n(4))))(TIMINGCHECK(SETUP d(posedge c)(1)))))\n"sv,
             "// a ( comment\n(DELAYFILE// )\n(TIMESCALE 1ns/*)*/)/**/(CELL/***/(CELLTYPE\"T\"/* \n "
             "*/)(INSTANCE/*/ "
             "*/u//x\n)(DELAY(ABSOLUTE(IOPATH(posedge/**/a)b(1/**/:/**/2:3)(4))))(TIMINGCHECK(SETUP "
             "d/*\"*/(posedge c)(1)))))// the end"sv,
             "(delayfile(timescale 1NS)(cell(celltype\"T\")(instance u)(delay(absolute(iopath(POSEDGE "
             "a)b(1:2:3)(4))))(TimingCheck(Setup d(PosEdge c)(1)))))"sv,
         })
        EXPECT_EQ(parsed(text), expected) << text;
}

TEST(Parser, KnowsThePlaceOfEveryStatement) {
    EXPECT_EQ(parsed("(DELAYFILE (TIMESCALE 1ns)\n"
                     "  (CELL (CELLTYPE \"T\") (INSTANCE u)\n"
                     "\t(DELAY (ABSOLUTE (IOPATH a b (1)) /* one\n"
                     " two */ (PORT c (2))\n"
                     "      (COND x (IOPATH a b\n"
                     "       (RETAIN (1)) ((1) (2))))\n"
                     "  ))\n"
                     "  (TIMINGCHECK // three\n"
                     "    (WIDTH c (1)))\n"
                     "  (LABEL)))",
                     true),
              (Lines{"header version= design= program= divider=. scale=-9", "cell T <u> @2:3",
                     "iopath a b (1 1 1) @3:19", "port c (2 2 2) @4:9", "ignored RETAIN @6:8",
                     "ignored PATHPULSE @6:21", "conditional iopath a b (1 1 1) @5:15",
                     "width c (1 1 1) @9:5", "ignored LABEL @10:3", "end"}));
}

// --- Cells and names ---

TEST(Parser, CellsAndInstances) {
    const struct {
        std::string_view header, cell;
        std::string event;
    } rows[] = {
        {"", "(CELLTYPE \"T\")(INSTANCE)", "cell T <>"},
        {"", "(CELLTYPE \"T\")(INSTANCE )", "cell T <>"},
        {"", "(CELLTYPE \"T\")(INSTANCE *)", "cell T <*>"},
        {"", "(CELLTYPE \"T\")(INSTANCE*)", "cell T <*>"},
        {"", "(CELLTYPE T)(INSTANCE u)", "cell T <u>"},
        {"", "(CELLTYPE \"lib a\")(INSTANCE u)", "cell lib a <u>"},
        {"", "(CELLTYPE \"T\")(INSTANCE a.b.c)", "cell T <a.b.c>"},
        {"(DIVIDER /)", "(CELLTYPE \"T\")(INSTANCE a/b/c)", "cell T <a/b/c>"},
        {"(DIVIDER /)", "(CELLTYPE \"T\")(INSTANCE a\\.b/\\$c\\[3\\]\\ d)", "cell T <a.b/$c[3] d>"},
        {"", "(CELLTYPE \"T\")(INSTANCE u[3].v [ 1 ])", "cell T <u[3].v[1]>"},
        {"", "(CELLTYPE \"T\")(INSTANCE a)(INSTANCE b.c)(INSTANCE d)", "cell T <a.b.c.d>"},
        {"(DIVIDER /)", "(CELLTYPE \"T\")(INSTANCE a)(INSTANCE)(INSTANCE b)", "cell T <a/b>"},
        {"", "(CELLTYPE \"T\")(INSTANCE)(INSTANCE b)", "cell T <b>"},
        {"", "(CELLTYPE \"T\")(INSTANCE a)(INSTANCE b)(DELAY)(TIMINGCHECK)(DELAY(ABSOLUTE)(INCREMENT))",
         "cell T <a.b>"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(parsed(fileOf(row.header, "(CELL" + std::string(row.cell) + ")")).at(1), row.event)
            << row.cell;
}

TEST(Parser, CellsFollowEachOther) {
    EXPECT_EQ(
        parsed(fileOf(scale, "(CELL(CELLTYPE \"A\")(INSTANCE u)(DELAY(ABSOLUTE(PORT a (1))))"
                             "(DELAY(INCREMENT(PORT b (2)))(ABSOLUTE(PORT c (3))))(TIMINGCHECK(WIDTH d (4)))"
                             "(DELAY(ABSOLUTE(PORT e (5))))(TIMINGCHECK(PERIOD f (6))))"
                             "(CELL(CELLTYPE \"A\")(INSTANCE u)(DELAY(ABSOLUTE(PORT g (7)))))")),
        (Lines{"header version= design= program= divider=. scale=-9", "cell A <u>", "port a (1 1 1)",
               "port b + (2 2 2)", "port c (3 3 3)", "width d (4 4 4)", "port e (5 5 5)", "period f (6 6 6)",
               "end", "cell A <u>", "port g (7 7 7)", "end"}));
}

TEST(Parser, PortsAreSplitAtTheLastDivider) {
    const std::string longName(300, 'n');
    const struct {
        std::string divider, name, expected;
    } rows[] = {
        {"/", "a", "a"},
        {"/", "a/b", "{a}b"},
        {"/", "a/b/c", "{a/b}c"},
        {"/", "a.b/c.d", "{a.b}c.d"},
        {"/", "a\\/b", "a/b"},
        {"/", "a/b\\/c", "{a}b/c"},
        {"/", "a\\/b/c", "{a/b}c"},
        {"/", "\\$a\\$b\\_c/D", "{$a$b_c}D"},
        {"/", "u\\[3\\]/in\\[3\\]", "{u[3]}in[3]"},
        {"/", "u[3]/in[3]", "{u[3]}in[3]"},
        {"/", "in[7:0]", "in[7:0]"},
        {"/", "in [ 7 : 0 ]", "in[7:0]"},
        {"/", "a[1] [2]", "a[1][2]"},
        {"/", "m[1][2]/q", "{m[1][2]}q"},
        {"/", "/a", "a"},
        {"/", "a\\\\b", "a\\b"},
        {"/", "a\\(b\\)\\\"\\;\\ \\#", "a(b)\"; #"},
        {"/", "123", "123"},
        {"/", "caf\xe9", "caf\xe9"},
        {".", "a.b", "{a}b"},
        {".", "a.b.c", "{a.b}c"},
        {".", "a/b", "{a}b"},
        {".", "a.b/c", "{a.b}c"},
        {".", "a/b.c", "{a/b}c"},
        {".", "a\\.b", "a.b"},
        {".", "a.b\\/c", "{a}b/c"},
        {".", longName + "." + longName, "{" + longName + "}" + longName},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const std::string header = "(DIVIDER " + row.divider + ")";
        EXPECT_EQ(inside(delayOf("(PORT " + row.name + " (1))", header)),
                  Lines{"port " + row.expected + " (1 1 1)"});
        EXPECT_EQ(inside(delayOf("(INTERCONNECT " + row.name + " " + row.name + "(1))", header)),
                  Lines{"interconnect " + row.expected + " " + row.expected + " (1 1 1)"});
    }
}

// --- Values ---

TEST(Parser, Values) {
    const struct {
        std::string_view text, expected;
    } rows[] = {
        {"(1)", "(1 1 1)"},
        {"()", "()"},
        {"( )", "()"},
        {"(1:2:3)", "(1 2 3)"},
        {"(1::3)", "(1 _ 3)"},
        {"(:2:)", "(_ 2 _)"},
        {"(::3)", "(_ _ 3)"},
        {"(1::)", "(1 _ _)"},
        {"(1:2:)", "(1 2 _)"},
        {"(::)", "()"},
        {"(.5)", "(0.5 0.5 0.5)"},
        {"(5.)", "(5 5 5)"},
        {"(-1.2e+03:+1:1E-2)", "(-1200 1 0.01)"},
        {"(0.0:-0:0e5)", "(0 0 0)"},
        {"(1)(2)", "(1 1 1) (2 2 2)"},
        {"(1)()(2)", "(1 1 1) () (2 2 2)"},
        {"()()()()()()", "() () () () () ()"},
        {"(1)(2)(3)(4)(5)(6)(7)(8)(9)(10)(11)(12)",
         "(1 1 1) (2 2 2) (3 3 3) (4 4 4) (5 5 5) (6 6 6) (7 7 7) (8 8 8) (9 9 9) (10 10 10) (11 11 11) "
         "(12 12 12)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(inside(delayOf("(PORT a" + std::string(row.text) + ")")),
                  Lines{"port a " + std::string(row.expected)})
            << row.text;
}

// --- Delays ---

TEST(Parser, Delays) {
    const Row rows[] = {
        {"(IOPATH a y (1) (2))", {"iopath a y (1 1 1) (2 2 2)"}},
        {"(IOPATH (posedge a) y (1))", {"iopath ^a y (1 1 1)"}},
        {"(IOPATH (negedge a[3]) y[0] (1))", {"iopath va[3] y[0] (1 1 1)"}},
        {"(IOPATH (01 a) y (1))(IOPATH (10 a) y (1))", {"iopath a y (1 1 1)", "iopath a y (1 1 1)"}},
        {"(IOPATH (0z a) y (1))(IOPATH (Z1 a) y (1))", {"iopath a y (1 1 1)", "iopath a y (1 1 1)"}},
        {"(IOPATH (1Z a) y (1))(IOPATH (z0 a) y (1))", {"iopath a y (1 1 1)", "iopath a y (1 1 1)"}},
        {"(IOPATH a y (RETAIN (1) (2:3:4)) (5))", {"ignored RETAIN", "iopath a y (5 5 5)"}},
        {"(IOPATH a y (retain (1)) (RETAIN (2)) (5) (6))",
         {"ignored RETAIN", "ignored RETAIN", "iopath a y (5 5 5) (6 6 6)"}},
        {"(IOPATH a y ((1:2:3) (4)) ((5) (6) (7)))", {"ignored PATHPULSE", "iopath a y (1 2 3) (5 5 5)"}},
        {"(IOPATH a y (()) (2))", {"iopath a y () (2 2 2)"}},
        {"(INTERCONNECT u1.y u2.a (1))", {"interconnect {u1}y {u2}a (1 1 1)"}},
        {"(INTERCONNECT in out (1)(2)(3))", {"interconnect in out (1 1 1) (2 2 2) (3 3 3)"}},
        {"(PORT u1.a (1))", {"port {u1}a (1 1 1)"}},
        {"(NETDELAY n1 (1))(NETDELAY u1/y (2))", {"net n1 (1 1 1)", "net {u1}y (2 2 2)"}},
        {"(DEVICE y (1))(DEVICE (2) (3))(DEVICE(4))",
         {"device y (1 1 1)", "device * (2 2 2) (3 3 3)", "device * (4 4 4)"}},
        {"(CONDELSE (IOPATH a y (1)))", {"conditional iopath a y (1 1 1)"}},
        {"(COND b (IOPATH a y (1)))", {"conditional iopath a y (1 1 1)"}},
        {"(COND b(IOPATH (posedge a) y (RETAIN(1))(1)))",
         {"ignored RETAIN", "conditional iopath ^a y (1 1 1)"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(inside(delayOf(row.text)), row.events) << row.text;
}

TEST(Parser, Increments) {
    EXPECT_EQ(
        inside(cellOf("(DELAY(INCREMENT(IOPATH a y(1))(COND b(IOPATH a y(1)))(CONDELSE(IOPATH a y(1)))"
                      "(INTERCONNECT a b(1))(PORT a(1))(NETDELAY n(1))(DEVICE(1))))")),
        (Lines{"iopath a y + (1 1 1)", "conditional iopath a y + (1 1 1)", "conditional iopath a y + (1 1 1)",
               "interconnect a b + (1 1 1)", "port a + (1 1 1)", "net n + (1 1 1)", "device * + (1 1 1)"}));
}

TEST(Parser, ConditionsOfAnyShape) {
    for (const std::string_view condition : {
             "b",
             "!b",
             "~ b",
             "b&&c",
             "b && !c",
             "b == 1'b1",
             "b==1'B0&&c===1'b1",
             "b !== 1'bx",
             "(b)",
             "(b && c) || d",
             "!(b)",
             "((b))",
             "(b)&(c)",
             "b[3] == 1'b0",
             "b [3:0] == 4'hF",
             "{b,c} == 2'b01",
             "{b, {2{c}}}",
             "b ? c : d",
             "b ^ c ~^ d",
             "\"named\" b == 1",
             "\"\" (b)",
             "b=='1'",
             "u1.b | u2/c",
             "\\b\\( && c",
             "-1 < b",
             "b >= 3 % 2",
             "& b",
             "b /* ( */ && // )\n c",
             "(IOPATH)",
             "!(((((((((b)))))))))",
             "(b + c) == 2'b01",
             "(b[1:0] == 2'd3) && !(c ^ d)",
             "b + c - d * e / f % 2 ** 3 == 0",
             "b/c",
             "b ? c + 1 : d - 1",
             "(b ? (c) : d[e + 1]) === 1'bx",
             "b << 2 >> c >>> 1 <= 4'h F",
             "b[(c + 1) * 2 : d[0]] !== 'b1",
             "{b[1], {3{c & d}}, 2'sb 0_1} ~^ e",
             "(f(b, $g(c)) == 1) || !d",
             "(b == \"on (\") && c != \"\"",
             "-(b) + (+c) == ~|d",
             "b == 1.5 && c == 2'b0 ?d:e",
             "b==1'b1?c:d",
         }) {
        const std::string text(condition);
        EXPECT_EQ(inside(delayOf("(COND " + text + "(IOPATH a y (1)))")),
                  Lines{"conditional iopath a y (1 1 1)"})
            << text;
        EXPECT_EQ(inside(checkOf("(SETUP (COND " + text + " d) (COND " + text + "(negedge c)) (1))")),
                  Lines{"setup ?d ?vc (1 1 1)"})
            << text;
        EXPECT_EQ(inside(checkOf("(RECREM r c (1) (2) (SCOND " + text + "))")),
                  Lines{"recrem ?r c (1 1 1) (2 2 2)"})
            << text;
    }
}

TEST(Parser, ConditionsOfAnyDepth) {
    constexpr std::size_t depth = 1'000'000;
    const std::string text = std::string(depth, '(') + "b" + std::string(depth, ')');
    EXPECT_EQ(inside(delayOf("(COND " + text + "(IOPATH a y (1)))")),
              Lines{"conditional iopath a y (1 1 1)"});
    EXPECT_EQ(inside(cellOf("(LABEL " + text + ")")), Lines{"ignored LABEL"});
}

// --- Timing checks ---

TEST(Parser, TimingChecks) {
    const Row rows[] = {
        {"(SETUP d (posedge c) (1))", {"setup d ^c (1 1 1)"}},
        {"(SETUP (posedge d[2]) (negedge c) (1:2:3))", {"setup ^d[2] vc (1 2 3)"}},
        {"(HOLD d c (-1))", {"hold d c (-1 -1 -1)"}},
        {"(SETUPHOLD d (01 c) (1) (2))", {"setuphold d c (1 1 1) (2 2 2)"}},
        {"(SETUPHOLD d c () (2))", {"setuphold d c () (2 2 2)"}},
        {"(RECOVERY (posedge r) (posedge c) (1))", {"recovery ^r ^c (1 1 1)"}},
        {"(REMOVAL r c (1))", {"removal r c (1 1 1)"}},
        {"(RECREM r c (1) (2))", {"recrem r c (1 1 1) (2 2 2)"}},
        {"(SKEW (posedge a) (posedge b) (1))", {"skew ^a ^b (1 1 1)"}},
        {"(BIDIRECTSKEW (posedge a) b (1) (2))", {"ignored BIDIRECTSKEW"}},
        {"(WIDTH (posedge c) (1))", {"width ^c (1 1 1)"}},
        {"(WIDTH (COND e (negedge c)) (1))", {"width ?vc (1 1 1)"}},
        {"(PERIOD c (1:2:3))", {"period c (1 2 3)"}},
        {"(NOCHANGE (negedge w) a (1) (2))", {"nochange vw a (1 1 1) (2 2 2)"}},
        {"(SETUP (COND \"x\" e==1'b1 (posedge d)) (COND e c) (1))", {"setup ?^d ?c (1 1 1)"}},
        {"(HOLD (COND (e) (01 d)) c (1))", {"hold ?d c (1 1 1)"}},
        {"(SETUPHOLD d c (1) (2) (SCOND e))", {"setuphold ?d c (1 1 1) (2 2 2)"}},
        {"(SETUPHOLD d c (1) (2) (CCOND \"n\" e && !f))", {"setuphold d ?c (1 1 1) (2 2 2)"}},
        {"(SETUPHOLD d c (1) (2) (SCOND ~e) (CCOND f))", {"setuphold ?d ?c (1 1 1) (2 2 2)"}},
        {"(RECREM r c (1) (2) (CCOND f))", {"recrem r ?c (1 1 1) (2 2 2)"}},
        {"(NOCHANGE w a (1) (2) (SCOND f))", {"nochange ?w a (1 1 1) (2 2 2)"}},
        {"(SETUPHOLD (COND e d) c (1) (2))(SETUPHOLD d c (1) (2))",
         {"setuphold ?d c (1 1 1) (2 2 2)", "setuphold d c (1 1 1) (2 2 2)"}},
        {"(PATHCONSTRAINT a b (1) (2))(SUM (a b) (c d) (1))(DIFF (a b) (c d) (1))(SKEWCONSTRAINT (posedge c) "
         "(1))"
         "(PERIODCONSTRAINT c (1))",
         {"ignored PATHCONSTRAINT", "ignored SUM", "ignored DIFF", "ignored SKEWCONSTRAINT",
          "ignored PERIODCONSTRAINT"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(inside(checkOf(row.text)), row.events) << row.text;
}

TEST(Parser, SectionsThatArePassedOver) {
    const Row rows[] = {
        {"(DELAY(PATHPULSE a y (1) (2)))", {"ignored PATHPULSE"}},
        {"(DELAY(PATHPULSEPERCENT a y (25) (35))(GLOBALPATHPULSE (25)))",
         {"ignored PATHPULSEPERCENT", "ignored GLOBALPATHPULSE"}},
        {"(TIMINGENV (ARRIVAL (posedge c) a (1)(2)(3)(4)) (WAVEFORM c 15 (posedge 0 2) (negedge 5 7)))",
         {"ignored TIMINGENV"}},
        {"(LABEL (ABSOLUTE (tp (1) (2)) (\\) (3))))", {"ignored LABEL"}},
        {"(CORRELATION \"a ) b\" 0.5:0.5:0.5)", {"ignored CORRELATION"}},
        {"(label)(timingenv // )\n)", {"ignored LABEL", "ignored TIMINGENV"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(inside(cellOf(row.text)), row.events) << row.text;
}

// --- Real files ---

std::size_t countOf(const Lines& lines, std::string_view beginning) {
    return static_cast<std::size_t>(
        std::ranges::count_if(lines, [&](const std::string& line) { return line.starts_with(beginning); }));
}

TEST(Parser, RoutedDesigns) {
    const struct {
        const char* file;
        std::size_t connections, paths, checks;
    } rows[] = {
        {"two_regs/two_regs.sdf", 6, 3, 4},
        {"uart_fir/uart_fir.sdf", 6'914, 5'836, 2'988},
    };
    for (const auto& row : rows) {
        Source source(std::string(VORLEN_EXAMPLES_DIR "/") + row.file);
        EventLog log;
        Diagnostics diagnostics;
        Readers::Sdf::parse(source, log, diagnostics);
        EXPECT_EQ(countOf(log.lines(), "interconnect "), row.connections) << row.file;
        EXPECT_EQ(countOf(log.lines(), "iopath "), row.paths) << row.file;
        EXPECT_EQ(countOf(log.lines(), "setuphold "), row.checks) << row.file;
        EXPECT_EQ(countOf(log.lines(), "ignored "), 0U) << row.file;
        EXPECT_EQ(diagnostics.all().size(), 0U) << row.file;
        EXPECT_THAT(log.lines().at(0), testing::EndsWith(" divider=/ scale=-12")) << row.file;
    }
}

} // namespace
