// How a design is connected: with a netlist and without, pads, ports, directions, and what is a register.
#include "tests/support/Rows.h"
#include "tests/support/command/Annotated.h"

#include <gtest/gtest.h>

namespace {

using Support::Annotated;
using Support::cell;
using Support::wires;

struct Row {
    const char* netlist; // "": none
    std::string cells;
    const char* arcs;
    const char* ports;
};

Annotated read(const Row& row) {
    return Annotated(row.cells,
                     *row.netlist == 0 ? std::nullopt : std::optional<std::string_view>(row.netlist));
}

void check(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const Annotated found = read(row);
        EXPECT_EQ(found.arcs(), row.arcs) << row.netlist << "\n" << row.cells;
        EXPECT_EQ(found.ports(), row.ports) << row.netlist << "\n" << row.cells;
        EXPECT_EQ(found.messages(), "") << row.netlist << "\n" << row.cells;
    }
}

// --- Wires ---

TEST(Connect, MakesWiresOfTheNetlist) {
    const Row rows[] = {
        // The most special delay: of the wire, of its end, of the net.
        {"a<n1 y>n2 b:B(A<n1 Y>n2)",
         wires("(NETDELAY n1 (9)) (INTERCONNECT a b/A (3))") +
             cell("B", "b", "(PORT A (4)) (IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A 3 3\nb/Y ~ y ?\n", "a in, y out"},
        {"a<n1 y>n2 b:B(A<n1 Y>n2)",
         wires("(NETDELAY n1 (9)) (PORT b/A (4))") + cell("B", "b", "(IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A 4 4\nb/Y ~ y ?\n", "a in, y out"},
        {"a<n1 y>n2 b:B(A<n1 Y>n2)",
         wires("(NETDELAY a (9)) (NETDELAY b/Y (8))") + cell("B", "b", "(IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A 9 9\nb/Y ~ y 8 8\n", "a in, y out"},
        {"a<n1 y>n2 b:B(A<n1 Y>n2)",
         cell("B", "b", "(PORT A (4))") + cell("B", "b", "(PORT A (2))", "", "INCREMENT") +
             cell("B", "b", "(IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A 6 6\nb/Y ~ y ?\n", "a in, y out"},
        // The later of two replaces, an increment adds; without a value there is none.
        {"a<n1 y>n2 b:B(A<n1 Y>n2)",
         wires("(INTERCONNECT a b/A (3)) (INTERCONNECT a b/A (5)) (INTERCONNECT b/Y y (1))") +
             cell("top", "", "(INTERCONNECT b/Y y (2))", "", "INCREMENT") +
             cell("B", "b", "(IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A 5 5\nb/Y ~ y 3 3\n", "a in, y out"},
        {"a<n1 y>n2 b:B(A<n1 Y>n2)",
         wires("(NETDELAY n1 ()) (PORT b/A ())") + cell("B", "b", "(DEVICE ()) (IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A ?\nb/Y ~ y ?\n", "a in, y out"},
        // A cell without delays between two ports is joined once.
        {"a<n1 y>n2 b:B(A<n1 Y>n2)", "", "b/A > b/Y ?\na ~ b/A ?\nb/Y ~ y ?\n", "a in, y out"},
        // A port that leads straight to another one; a net that several drive; pins without a net.
        {"a<n1 y>n1", "", "a ~ y ?\n", "a in, y out"},
        {"b:B(A< Y>n1) c:B(A< Y>n1) d:B(A<n1 Y>)", "", "b/Y ~ d/A ?\nc/Y ~ d/A ?\n", ""},
        // Both ways.
        {"s<>n1 b:B(IO<>n1 A<n2) c:B(Y>n2)", cell("B", "b", "(IOPATH A IO (5))"),
         "b/A > b/IO 5 5\ns ~ b/IO ?\nb/IO ~ s ?\nc/Y ~ b/A ?\n", "s inout"},
    };
    check(rows);
}

TEST(Connect, MakesNetsAndPortsOfTheWiresWhereThereIsNoNetlist) {
    const Row rows[] = {
        {"",
         wires("(INTERCONNECT clk r/C (1)) (INTERCONNECT r/Q q (2))") +
             cell("R", "r", "(IOPATH (posedge C) Q (3))"),
         "clk ~ r/C 1 1\nr/Q ~ q 2 2\nr/C rise > r/Q 3 3\n", "clk in, q out"},
        // Pins of pads that nothing drives, or that lead nowhere, are the ports.
        {"",
         wires("(INTERCONNECT pad/O r/C (1)) (INTERCONNECT r/Q pad2/I (2))") +
             cell("R", "r", "(IOPATH (posedge C) Q (3))"),
         "pad/O ~ r/C 1 1\nr/Q ~ pad2/I 2 2\nr/C rise > r/Q 3 3\n", "pad/O in, pad2/I out"},
        // Not so one that has a check, or that leads on.
        {"", wires("(INTERCONNECT a/O r/D (1))") + cell("R", "r", "", "(SETUP D (posedge C) (1))"),
         "a/O ~ r/D 1 1\n", "a/O in"},
        // The same wire again replaces.
        {"", wires("(INTERCONNECT a b (1)) (INTERCONNECT a b (2))"), "a ~ b 2 2\n", "a in, b out"},
        {"", wires("(INTERCONNECT a b ())"), "a ~ b 0 0\n", "a in, b out"},
        // In and out.
        {"",
         wires("(INTERCONNECT io b/A (1)) (INTERCONNECT b/Y io (2))") + cell("B", "b", "(IOPATH A Y (3))"),
         "io ~ b/A 1 1\nb/Y ~ io 2 2\nb/A > b/Y 3 3\n", "io inout"},
    };
    check(rows);
}

TEST(Connect, NamesANetByItsDriverWhereThereIsNoNetlist) {
    const Annotated read(wires("(INTERCONNECT r/Q a/A (1)) (INTERCONNECT r/Q b/A (2))"));
    ASSERT_EQ(read.design.nets.size(), 1U);
    EXPECT_EQ(read.design.netName(Design::NetId(0)), "r/Q");
    EXPECT_EQ(read.design.pinsOfNet(Design::NetId(0)).size(), 3U);
}

// --- Directions ---

TEST(Connect, InfersDirectionsFromTheDelays) {
    const Row rows[] = {
        // Arcs and checks tell what goes in and out; a pad's pin takes its port's.
        {"a<n1 y>n2 b:B(A?n1 Y?n2)", cell("B", "b", "(IOPATH A Y (1))"),
         "b/A > b/Y 1 1\na ~ b/A ?\nb/Y ~ y ?\n", "a in, y out"},
        {"clk<n1 r:R(C?n1 D?n2 Q?n2)",
         cell("R", "r", "(IOPATH (posedge C) Q (1))", "(SETUP D (posedge C) (1))"),
         "r/C rise > r/Q 1 1\nclk ~ r/C ?\nr/Q ~ r/D ?\n", "clk in"},
        {"a<n1 p:P(PAD?n1 O?n2) b:B(A?n2 Y?)",
         wires("(INTERCONNECT p/O b/A (7))") + cell("B", "b", "(IOPATH A Y (1))"),
         "b/A > b/Y 1 1\np/PAD > p/O ?\na ~ p/PAD ?\np/O ~ b/A 7 7\n", "a in"},
        // What nothing says stays out of it.
        {"b:B(A?n1 Y?n1)", "", "", ""},
    };
    check(rows);
}

// --- Pads ---

TEST(Connect, JoinsThePinsOfPadsThatHaveNoDelays) {
    const Row rows[] = {
        {"a<n1 y>n3 p:P(PAD<n1 O>n2) q:P(PAD>n3 I<n2)", "",
         "p/PAD > p/O ?\nq/I > q/PAD ?\na ~ p/PAD ?\nq/PAD ~ y ?\np/O ~ q/I ?\n", "a in, y out"},
        // A delay of a pin, or of the pad's own, leaves it as it is.
        {"a<n1 k<n4 p:P(PAD<n1 K<n4 O>n2 X>n3)", cell("P", "p", "(IOPATH K X (1))"),
         "p/K > p/X 1 1\np/PAD > p/O ?\na ~ p/PAD ?\nk ~ p/K ?\n", "a in, k in"},
        {"a<n1 p:P(PAD<n1 O>n2)", cell("P", "p", "(IOPATH PAD O (4))"), "p/PAD > p/O 4 4\na ~ p/PAD ?\n",
         "a in"},
        // Pins without a net are not joined.
        {"a<n1 p:P(PAD<n1 O>n2 X>)", "", "p/PAD > p/O ?\na ~ p/PAD ?\n", "a in"},
        // Of a buffer with registers, only the data pins: not its clock, nor its enable.
        {"y>n1 p:P(PACKAGE_PIN>n1 D_OUT_0<n2 CLOCK_ENABLE<n3 OUTPUT_CLK<n4) g:G(A>n2 B>n3 C>n4)", "",
         "p/D_OUT_0 > p/PACKAGE_PIN ?\np/PACKAGE_PIN ~ y ?\ng/A ~ p/D_OUT_0 ?\ng/B ~ p/CLOCK_ENABLE ?\ng/C ~ "
         "p/OUTPUT_CLK ?\n",
         "y out"},
        // One that is registered by the pad has a check, and is its end.
        {"y>n1 p:P(PACKAGE_PIN>n1 D_OUT_0<n2 OUTPUT_CLK<n4) g:G(A>n2 C>n4)",
         cell("P", "p", "", "(SETUP D_OUT_0 (posedge OUTPUT_CLK) (1))"),
         "p/PACKAGE_PIN ~ y ?\ng/A ~ p/D_OUT_0 ?\ng/C ~ p/OUTPUT_CLK ?\n", "y out"},
        // Both ways: in, out and the enable.
        {"s<>n1 p:P(PACKAGE_PIN<>n1 D_IN_0>n2 D_OUT_0<n3 OUTPUT_ENABLE<n4) g:G(I<n2 O>n3 E>n4)", "",
         "p/PACKAGE_PIN > p/D_IN_0 ?\np/D_OUT_0 > p/PACKAGE_PIN ?\np/OUTPUT_ENABLE > p/PACKAGE_PIN ?\n"
         "s ~ p/PACKAGE_PIN ?\np/PACKAGE_PIN ~ s ?\np/D_IN_0 ~ g/I ?\ng/O ~ p/D_OUT_0 ?\ng/E ~ "
         "p/OUTPUT_ENABLE ?\n",
         "s inout"},
    };
    check(rows);
}

// A cell between so many inputs and outputs.
std::string widePad(std::size_t inputs, std::size_t outputs) {
    std::string ports, pins;
    for (std::size_t i = 0; i < inputs + outputs; ++i) {
        const char* side = i < inputs ? "<n" : ">n";
        const std::string number = std::to_string(i);
        ports += "p" + number + side + number + " ";
        pins += " P" + number + side + number;
    }
    return ports + "w:W(" + pins.substr(1) + ")";
}

TEST(Connect, JoinsWidePadsAndNotTheWidest) {
    const struct {
        std::size_t inputs, outputs, arcs;
        const char* messages;
    } rows[] = {
        {50'000, 1, 50'000, ""}, // looks at each input once: each pair of them would take minutes
        {1, 50'000, 50'000, ""},
        {1'000, 500, 500'000, ""},
        {1'000, 501, 0,
         "warning: 1501 pins of pads that are not joined: their cell has too many pins without a delay, "
         "first 'w/P0'\n"},
        {50'000, 50'000, 0,
         "warning: 100000 pins of pads that are not joined: their cell has too many pins without a delay, "
         "first 'w/P0'\n"},
    };
    for (const auto& row : rows) {
        const Annotated wide("", widePad(row.inputs, row.outputs));
        EXPECT_EQ(wide.messages(), row.messages);
        EXPECT_EQ(wide.design.arcs.size(), row.arcs + row.inputs + row.outputs)
            << row.inputs << ", " << row.outputs;
    }
}

// Drivers and receivers of one net.
std::string wideNet(std::size_t drivers, std::size_t receivers) {
    std::string text;
    for (std::size_t i = 0; i < drivers + receivers; ++i)
        text += (i == 0 ? "c" : " c") + std::to_string(i) + (i < drivers ? ":C(O>n)" : ":C(I<n)");
    return text;
}

// The net's pins are looked at once, not for each of its ports: that would take minutes.
TEST(Connect, TakesManyPortsOfOneNet) {
    constexpr std::size_t count = 50'000;
    std::string text = "c:C(O>n)";
    for (std::size_t i = 0; i < count; ++i)
        text += " p" + std::to_string(i) + ">n d" + std::to_string(i) + ":D(I<n)";
    EXPECT_EQ(Annotated("", text).design.arcs.size(), 2 * count);
}

TEST(Connect, RefusesNetsAndDevicesOfTooManyArcs) {
    EXPECT_EQ(Annotated("", wideNet(1'000, 1'000)).design.arcs.size(), 1'000'000U);
    EXPECT_EQ(Annotated("", wideNet(1, 50'000)).design.arcs.size(), 50'000U);
    EXPECT_EQ(Support::errorOf("", wideNet(1'000, 1'001)),
              " error: the net 'n' leads from 1000 pins to 1001: expected fewer drivers, or fewer receivers");
    const std::string device = cell("W", "w", "(DEVICE (5))");
    EXPECT_EQ(Annotated(device, widePad(1'000, 1'000)).bareArcs, 2'000U);
    EXPECT_EQ(Support::errorOf(device, widePad(1'000, 1'001)),
              "2:52: error: DEVICE: 'w' has 1000 inputs and 1001 outputs: expected delays of its pins");
}

TEST(Connect, CountsArcsWithoutADelay) {
    EXPECT_EQ(Annotated("", "a<n1 y>n3 p:P(PAD<n1 O>n2) q:P(PAD>n3 I<n2)").bareArcs, 5U);
    EXPECT_EQ(Annotated(wires("(INTERCONNECT a y (0))"), "a<n1 y>n1").bareArcs, 0U);
}

// --- Names ---

TEST(Connect, TakesTheFilesSpellingOfNames) {
    // The netlist separates hierarchy by a slash, the file by its divider; a vector of one bit may have no
    // index.
    const Annotated dotted("(DELAYFILE (SDFVERSION \"3.0\") (DIVIDER .) (TIMESCALE 1ps)" +
                               cell("B", "u1.b", "(IOPATH A Y (3))") + ")",
                           "u1/b:B(A< Y>)");
    EXPECT_EQ(dotted.arcs(), "u1.b/A > u1.b/Y 3 3\n");
    EXPECT_EQ(dotted.messages(), "");
    EXPECT_NE(dotted.design.findCell("u1/b"), Base::none);
    EXPECT_NE(dotted.design.findCell("u1.b"), Base::none);

    const Annotated bit(wires("(INTERCONNECT a[0] b/A (3))"), "a<n1 b:B(A<n1)");
    EXPECT_EQ(bit.arcs(), "a[0] ~ b/A 3 3\n");
    EXPECT_NE(bit.design.findPort("a"), Base::none);
    EXPECT_NE(bit.design.findPort("a[0]"), Base::none);
    EXPECT_EQ(bit.design.findPort("a[1]"), Base::none);
}

// What is written in the file, and which cell of the netlist it is; "-": none, and a warning.
TEST(Connect, FindsInstancesInEverySpelling) {
    const struct {
        const char *divider, *spelled, *found;
    } rows[] = {
        {".", "u.a\\.b", "u.a.b"},   {".", "u.a.b", "u.a.b"},
        {".", "u/a.b", "u/a.b"},     {".", "u.\\a.b ", "u.a.b"},
        {".", "u\\/a\\.b", "u/a.b"}, {"/", "u/a.b", "u/a.b"},
        {"/", "u/a\\.b", "u/a.b"},   {"/", "u/a/b", "u/a/b"},
        {"/", "u.a.b", "u.a.b"},     {"/", "u/\\a.b ", "u/a.b"},
        {"/", "w[3]", "w[3]"},       {".", "w\\[3\\]", "w[3]"},
        {"/", "f/g", "f/g"},         {".", "f.g", "f.g"},
        {"/", "top/u/a.b", "u/a.b"}, {".", "tb.top.u.a\\.b", "u.a.b"},
        {"/", "x/y/w[3]", "w[3]"},   {"/", "u/x", "-"},
        {"/", "u/a/b/c", "-"},
    };
    for (const auto& row : rows) {
        const Annotated read("(DELAYFILE (DIVIDER " + std::string(row.divider) + ") (TIMESCALE 1ps)\n" +
                                 cell("B", row.spelled, "(IOPATH A Y (3))") + ")",
                             "u/a.b:B(A< Y>) w[3]:B(A< Y>) f.g:B(A< Y>)");
        const std::string found = row.found;
        EXPECT_EQ(read.arcs(), found == "-" ? "" : found + "/A > " + found + "/Y 3 3\n") << row.spelled;
        EXPECT_EQ(read.messages(), found != "-"
                                       ? ""
                                       : "2:1: warning: 1 instances that the netlist does not have, first '" +
                                             std::string(row.spelled) + "'\n")
            << row.spelled;
    }
}

// An instance above others may have wires of its own, but no delays.
TEST(Connect, TellsOfDelaysOfInstancesThatAreNoCells) {
    const char* const netlist = "u/a:B(A< Y>n) u/b:B(A<n Y>)";
    const Annotated wired(cell("U", "u", "(INTERCONNECT a/Y b/A (3))"), netlist);
    EXPECT_EQ(wired.arcs(), "u/a/Y ~ u/b/A 3 3\n");
    EXPECT_EQ(wired.messages(), "");
    const Annotated delayed(cell("U", "u", "(IOPATH I O (3)) (IOPATH J O (3))", "(SETUP I J (1))"), netlist);
    EXPECT_EQ(delayed.messages(), "2:52: warning: 1 instances that the netlist does not have, first 'u'\n");
}

TEST(Connect, FindsPinsOfWiresInEverySpelling) {
    const struct {
        const char *divider, *spelled;
    } rows[] = {
        {".", "u.a\\.b.Y w.A"},       {".", "u.a.b.Y w.A"},
        {".", "u.a\\.b/Y w/A"},       {".", "u.\\a.b .Y w.A"},
        {"/", "u/a.b/Y w/A"},         {"/", "u.a.b.Y w.A"},
        {"/", "u/\\a.b /Y w/A"},      {"/", "tb/top/u/a.b/Y tb/top/w/A"},
        {"/", "top/u/a.b/Y top/w/A"}, {".", "tb.u.a\\.b.Y tb.w.A"},
    };
    for (const auto& row : rows) {
        const Annotated read("(DELAYFILE (DIVIDER " + std::string(row.divider) + ") (TIMESCALE 1ps)\n" +
                                 wires("(INTERCONNECT " + std::string(row.spelled) + " (3))") + ")",
                             "u/a.b:B(A< Y>n) w:B(A<n Y>)");
        EXPECT_TRUE(read.arcs().ends_with("/Y ~ w/A 3 3\n")) << row.spelled << read.arcs();
        EXPECT_EQ(read.messages(), "") << row.spelled;
    }
    // Ports: with dividers in their names, and below a prefix.
    for (const char* spelled : {"p.x u/a.b/A", "p\\.x u/a\\.b/A", "p/x u/a.b/A", "top/p.x top/u/a.b/A",
                                "tb/top/p.x tb/top/u/a.b/A"}) {
        const Annotated read(wires("(INTERCONNECT " + std::string(spelled) + " (3))"),
                             "p.x<n u/a.b:B(A<n Y>)");
        EXPECT_EQ(read.arcs(), "p.x ~ u/a.b/A 3 3\n") << spelled;
        EXPECT_EQ(read.messages(), "") << spelled;
    }
}

TEST(Connect, TakesTheTopAsAnInstanceOfATestBench) {
    const Annotated read(cell("top", "tb/dut", "(INTERCONNECT a b/A (3))") +
                             cell("B", "tb/dut/b", "(IOPATH A Y (4))") +
                             cell("C", "tb/other", "(IOPATH A Y (4))"),
                         "a<n1 b:B(A<n1 Y>)");
    EXPECT_EQ(read.arcs(), "b/A > b/Y 4 4\na ~ b/A 3 3\n");
    EXPECT_EQ(read.messages(),
              "4:1: warning: 1 instances that the netlist does not have, first 'tb/other'\n");
}

TEST(Connect, TellsInstancesApartThatDifferInDividersAlone) {
    const std::string head = "(DELAYFILE (DIVIDER .) (TIMESCALE 1ps)\n";
    const auto delay = [](const char* instance, const char* value) {
        return cell("B", instance, "(IOPATH A Y (" + std::string(value) + "))");
    };
    const char* const netlist = "u/a/b:B(A< Y>) u/a.b:B(A< Y>) u.a/b:B(A< Y>)";
    for (const std::string& text : {delay("u.a.b", "1") + delay("u.a\\.b", "2") + delay("u\\.a.b", "3"),
                                    delay("u\\.a.b", "3") + delay("u.a\\.b", "2") + delay("u.a.b", "1")}) {
        SCOPED_TRACE(text);
        const Annotated read(head + text + ")", netlist);
        const std::string arcs = read.arcs();
        for (const char* line :
             {"u.a.b/A > u.a.b/Y 1 1\n", "u/a.b/A > u/a.b/Y 2 2\n", "u.a/b/A > u.a/b/Y 3 3\n"})
            EXPECT_NE(arcs.find(line), std::string::npos) << arcs;
        EXPECT_EQ(read.messages(), "");
    }
    // A flat name that a file does not escape.
    const Annotated flat(head + delay("u.b", "1") + ")", "u/b:B(A< Y>) u.b:B(A< Y>)");
    EXPECT_EQ(flat.arcs(), "u/b/A > u/b/Y 1 1\n");
    EXPECT_EQ(flat.messages(),
              "2:1: warning: 'u.b' is taken for 'u/b': the netlist has 'u.b' too, whose dots would have "
              "to be escaped\n");
    EXPECT_EQ(Support::errorOf(head + delay("u.a.b", "1") + ")", "u/a.b:B(A< Y>) u.a/b:B(A< Y>)"),
              "2:1: error: 'u.a.b' may be 'u/a.b' or 'u.a/b' of the netlist: expected the spelling of one of "
              "them, with a "
              "'\\' before each divider that belongs to a name");
    EXPECT_EQ(Support::errorOf(cell("B", "x/b", "(IOPATH A Y (1))") + cell("B", "b", "(IOPATH A Y (2))"),
                               "b:B(A< Y>)"),
              "3:1: error: 'b' is an instance of the netlist, but 'x/b' was taken for 'b': expected names "
              "that all begin "
              "with 'x/', or none");
    // Neither the type nor the other end of the wire shows a prefix.
    const Annotated strange(wires("(INTERCONNECT y/c x/b/A (1))") + cell("C", "x/b", "(IOPATH A Y (1))") +
                                cell("B", "b", "(IOPATH A Y (2))"),
                            "b:B(A< Y>)");
    EXPECT_EQ(strange.arcs(), "b/A > b/Y 2 2\n");
    EXPECT_EQ(strange.messages(),
              "2:53: warning: 1 delays and checks of pins that the netlist does not have, first 'y/c'\n"
              "3:1: warning: 1 instances that the netlist does not have, first 'x/b'\n");
    // Another instance was found as it stands: there is no prefix.
    const Annotated stale(cell("B", "b", "(IOPATH A Y (1))") + cell("B", "x/b", "(IOPATH A Y (2))"),
                          "b:B(A< Y>)");
    EXPECT_EQ(stale.arcs(), "b/A > b/Y 1 1\n");
    EXPECT_EQ(stale.messages(), "3:1: warning: 1 instances that the netlist does not have, first 'x/b'\n");
}

// --- Pins that the netlist leaves out ---

TEST(Connect, KnowsPinsByTheDelaysAlone) {
    const std::string delays = "(IOPATH (posedge C) Q (1)) (IOPATH (posedge C) QN (2))",
                      checks = "(SETUPHOLD D (posedge C) (1) (1)) (RECREM R (posedge C) (1) (1))";
    const struct {
        const char *netlist, *arcs;
    } rows[] = {
        // Omitted, open, and known by its direction.
        {"k<n1 d<n2 q>n3 r:R(C?n1 D?n2 Q?n3)",
         "r/C rise > r/Q 1 1\nr/C rise > r/QN 2 2\nk ~ r/C ?\nd ~ r/D ?\nr/Q ~ q ?\n"},
        {"k<n1 d<n2 q>n3 r:R(C?n1 D?n2 Q?n3 QN?)",
         "r/C rise > r/Q 1 1\nr/C rise > r/QN 2 2\nk ~ r/C ?\nd ~ r/D ?\nr/Q ~ q ?\n"},
        {"k<n1 d<n2 q>n3 r:R(C<n1 D<n2 Q>n3 R<)",
         "r/C rise > r/Q 1 1\nr/C rise > r/QN 2 2\nk ~ r/C ?\nd ~ r/D ?\nr/Q ~ q ?\n"},
        {"k<n1 d<n2 r:R(C?n1 D?n2)", "r/C rise > r/Q 1 1\nr/C rise > r/QN 2 2\nk ~ r/C ?\nd ~ r/D ?\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const Annotated read(cell("R", "r", delays, checks), row.netlist);
        EXPECT_EQ(read.arcs(), row.arcs) << row.netlist;
        EXPECT_EQ(read.messages(), "") << row.netlist;
        EXPECT_EQ(read.design.pins[read.design.findPin(read.design.findCell("r"), "QN")].direction,
                  Design::Direction::output);
    }
}

// --- Cells with PORT delays and no IOPATH ---

TEST(Connect, PassesThroughCellsThatHavePortDelaysAlone) {
    const char* const warning =
        "warning: 1 cells of type 'CK' with PORT delays and no IOPATH: what comes in passes to the "
        "outputs without delay, first 'c'\n";
    const struct {
        std::string cells;
        const char *netlist, *arcs;
        std::string messages;
    } rows[] = {
        // With directions and without.
        {cell("CK", "c", "(PORT I (3)) (PORT E (4))"), "b:B(Y>n1) c:CK(I<n1 E< O>n2) d:D(A<n2)",
         "c/I > c/O ?\nb/Y ~ c/I 3 3\nc/O ~ d/A ?\n", "2:53: " + std::string(warning)},
        {cell("CK", "c", "(PORT I (3))") + cell("B", "b", "(IOPATH A Y (1))") +
             cell("D", "d", "(PORT A (5)) (IOPATH A Z (6))"),
         "a<n0 b:B(A?n0 Y?n1) c:CK(I?n1 E? O?n2) d:D(A?n2)",
         "b/A > b/Y 1 1\nd/A > d/Z 6 6\nc/I > c/O ?\na ~ b/A ?\nb/Y ~ c/I 3 3\nc/O ~ d/A 5 5\n",
         "2:53: " + std::string(warning)},
        // Right behind a port, and two in a row.
        {cell("CK", "c", "(PORT I (3))") + cell("D", "d", "(PORT A (5)) (IOPATH A Z (6))"),
         "a<n0 c:CK(I?n0 O?n2) d:D(A?n2)", "d/A > d/Z 6 6\nc/I > c/O ?\na ~ c/I 3 3\nc/O ~ d/A 5 5\n",
         "2:53: " + std::string(warning)},
        {cell("CK", "c", "(PORT I (3))") + cell("CK", "e", "(PORT I (4))"),
         "a<n0 y>n2 c:CK(I?n0 O?n1) e:CK(I?n1 O?n2)",
         "e/I > e/O ?\nc/I > c/O ?\na ~ c/I 3 3\ne/O ~ y ?\nc/O ~ e/I 4 4\n",
         "2:53: " + std::string(warning)},
        // Not so a cell that has delays or checks, or that is of a type with checks.
        {cell("CK", "c", "(PORT I (3)) (IOPATH E O (1))"), "b:B(Y>n1) c:CK(I<n1 E<n1 O>n2) d:D(A<n2)",
         "c/E > c/O 1 1\nb/Y ~ c/I 3 3\nb/Y ~ c/E ?\nc/O ~ d/A ?\n", ""},
        {cell("CK", "c", "(PORT I (3))", "(SETUP I E (1))") + cell("CK", "e", "(PORT I (3))"),
         "b:B(Y>n1) c:CK(I<n1 E<n1 O>n2) e:CK(I<n2 E<n1 O>)",
         "b/Y ~ c/I 3 3\nb/Y ~ c/E ?\nb/Y ~ e/E ?\nc/O ~ e/I 3 3\n", ""},
    };
    for (const auto& row : rows) {
        const Annotated read(row.cells, row.netlist);
        EXPECT_EQ(read.arcs(), row.arcs) << row.netlist;
        EXPECT_EQ(read.messages(), row.messages) << row.netlist;
    }
}

// --- What is a register ---

TEST(Connect, TellsRegistersByTheirChecksAndArcs) {
    const std::string clocked = "(IOPATH (posedge C) Q (1))", checked = "(SETUP D (posedge C) (1))";
    struct RoleRow {
        std::string cells;
        const char* expected;
    };
    const RoleRow rows[] = {
        {cell("R", "r", clocked, checked), "clock: r/C; data: r/D; output: r/Q"},
        {cell("R", "r", "", checked), "clock: r/C; data: r/D; output:"},
        // A clock-to-output arc alone, on one edge.
        {cell("R", "r", clocked), "clock: r/C; data:; output: r/Q"},
        {cell("R", "r", "(IOPATH C Q (1))", checked), "clock: r/C; data: r/D; output: r/Q"},
        {cell("R", "r", "(IOPATH C Q (1))"), "clock:; data:; output:"},
        // Of a type whose other cells have checks: this one's data is constant.
        {cell("R", "r", "(IOPATH C Q (1))") + cell("R", "s", "(IOPATH C Q (1))", checked),
         "clock: r/C s/C; data: s/D; output: r/Q s/Q"},
        // One edge of a pin beside a clock: a reset, with checks or without.
        {cell("R", "r", clocked + "(IOPATH (negedge N) Q (1))", checked),
         "clock: r/C; data: r/D; output: r/Q"},
        {cell("R", "r", clocked + "(IOPATH (negedge N) Q (1))",
              checked + "(RECOVERY (posedge N) (posedge C) (1))"),
         "clock: r/C; data: r/N r/D; output: r/Q"},
        // Both edges name a combinational arc.
        {cell("X", "x", "(IOPATH (posedge A) Y (1)) (IOPATH (negedge A) Y (2))"), "clock:; data:; output:"},
    };
    for (const RoleRow& row : rows)
        EXPECT_EQ(Annotated(row.cells).roles(), row.expected) << row.cells;
}

} // namespace
