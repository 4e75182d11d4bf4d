// Structural Verilog: what it gives, and what is said of a text that is not right or not structural.
#include "readers/netlist/Verilog.h"

#include "Dump.h"
#include "readers/netlist/VerilogLexer.h"

#include <gtest/gtest.h>

namespace {

using Readers::VerilogLexer;

std::string read(std::string_view text, const std::string& top = "") {
    return Support::outcome(Readers::readVerilog, text, top);
}

// The statements in a module "m".
std::string module(const std::string& statements) { return "module m; " + statements + " endmodule"; }

TEST(VerilogNetlist, ReadsHeadersAndDeclarations) {
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"nothing", "module m; endmodule", "m:\nnets:\n"},
        {"no ports", "module m (); endmodule", "m:\nnets:\n"},
        {"old ports", "module m(a, b, c); output b; input a; inout c; endmodule",
         "m:\nport a<a\nport b>b\nport c=c\nnets: b a c\n"},
        {"old ports, wires too", "module m(a); output [1:0] a; wire [1:0] a; endmodule",
         "m:\nport a[0]>a[0]\nport a[1]>a[1]\nnets: a[0] a[1]\n"},
        {"a wire first", "module m(a); wire [1:0] a; output [1:0] a; endmodule",
         "m:\nport a[0]>a[0]\nport a[1]>a[1]\nnets: a[0] a[1]\n"},
        {"a wire without its range", "module m(a); output [1:0] a; wire a; endmodule",
         "m:\nport a[0]>a[0]\nport a[1]>a[1]\nnets: a[0] a[1]\n"},
        {"new ports", "module m(input a, b, output wire [1:0] c, inout tri d); endmodule",
         "m:\nport a<a\nport b<b\nport c[0]>c[0]\nport c[1]>c[1]\nport d=d\nnets: a b c[0] c[1] d\n"},
        {"a range is of its declaration", "module m(input [1:0] a, input b); endmodule",
         "m:\nport a[0]<a[0]\nport a[1]<a[1]\nport b<b\nnets: a[0] a[1] b\n"},
        {"a range that runs up", "module m(input [4:5] a); endmodule",
         "m:\nport a[5]<a[5]\nport a[4]<a[4]\nnets: a[5] a[4]\n"},
        {"below zero", "module m(input [0:-1] a); endmodule",
         "m:\nport a[-1]<a[-1]\nport a[0]<a[0]\nnets: a[-1] a[0]\n"},
        {"a vector of one bit", "module m(input [0:0] a); endmodule", "m:\nport a[0]<a[0]\nnets: a[0]\n"},
        {"ports of other names", "module m(.x(a), .y({b[1:0], a}), .z()); input a; output [2:0] b; endmodule",
         "m:\nport x<a\nport y[0]<a\nport y[1]<b[0]\nport y[2]<b[1]\nport z?-\nnets: a b[0] b[1] b[2]\n"},
        {"parameters of the module", "module m #(parameter A = (1), B = \")\") (input a); endmodule",
         "m:\nport a<a\nnets: a\n"},
        {"wires of all kinds",
         module("wire a; tri b; wand signed [1:0] c; trireg (small) d; wire #(1, 2) e; wire (strong1, weak0) "
                "#3.5 f = a;"),
         "m:\nnets: a b c[0] c[1] d e\n"},
        {"supplies are constants", module("supply0 z; supply1 [1:0] o; A u (.a(z), .b(o), .c(o[1]));"),
         "m:\nA u a?- b[0]?- b[1]?- c?-\nnets:\n"},
        {"escaped names",
         module("wire \\a.b[3] , \\c\\d ,\\wire\t; A \\u/1 (.\\p[1] (\\a.b[3] ), .q(\\c\\d ), .r(\\wire ));"),
         "m:\nA u/1 p[1]?a.b[3] q?c\\d r?wire\nnets: a.b[3] c\\d wire\n"},
        {"an escaped name is the name", module("wire \\abc ; A u(.a(abc), .b(\\abc ));"),
         "m:\nA u a?abc b?abc\nnets: abc\n"},
        {"an escaped bit is another net", module("wire [1:0] v; wire \\v[1] ; A u(.a(v[1]), .b(\\v[1] ));"),
         "warning: more than one of the nets is named 'v[1]'\nm:\nA u a?v[1] b?v[1]\nnets: v[0] v[1] v[1]\n"},
        {"comments, attributes, directives",
         "`timescale 1ns/1ps\n// module x\n/* module\n y **/ (* a = \"*)\", b *) module m; `celldefine\n"
         "(* keep *) wire a; /**/ A (* x *) u (/* c */ .a(a) // (\n); endmodule "
         "`endcelldefine\n`default_nettype wire",
         "m:\nA u a?a\nnets: a\n"},
        {"what is passed over",
         module("parameter A = {1, \";\"}; localparam [1:0] B = 2'b0; defparam u.C = (1);"
                " specify specparam d = 1; (a => b) = (1, 2); $setup(a, b, 3); endspecify ; wire x;"),
         "1:11: note: statements without structure are passed over: 1 defparam, 1 localparam, 1 parameter, 1 "
         "specify\nm:\nnets: x\n"},
        {"a string with an escaped quote", module("parameter S = \"a\\\"; wire x;\"; wire y;"),
         "1:11: note: statements without structure are passed over: 1 parameter\nm:\nnets: y\n"},
        {"a charge, then what the simulator makes of the vector", module("trireg (small) vectored [1:0] v;"),
         "m:\nnets: v[0] v[1]\n"},
        {"a primitive is a leaf",
         "primitive p(y, a); output y; input a; table 0 : 1; endtable endprimitive\n" +
             module("p u (.y(a));"),
         "m:\np u y>a\nnets: a\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

TEST(VerilogNetlist, ReadsCellsAndConnections) {
    const std::string wires = "wire a, b; wire [3:0] v; wire [0:3] w; ";
    const std::string nets = "nets: a b v[0] v[1] v[2] v[3] w[3] w[2] w[1] w[0]\n";
    const struct {
        const char* what;
        std::string statements, expected;
    } rows[] = {
        {"no pins", "A u ();", "A u\n"},
        {"a wire", "A u (.p(a));", "A u p?a\n"},
        {"several cells", "A u (.p(a)), x (.p(b)); B y (.q(a));", "A u p?a\nA x p?b\nB y q?a\n"},
        {"parameters", "A #(.I(16'hff), .S(\")(\"), .T((1))) u (.p(a)); B #5 x (); B #(1,2) y ();",
         "A u p?a\nB x\nB y\n"},
        {"nothing", "A u (.p());", "A u p?-\n"},
        {"bits", "A u (.p(v[2]), .q(w[0]));", "A u p?v[2] q?w[0]\n"},
        {"parts", "A u (.p(v[2:1]), .q(w[1:2]), .r(v[3:3]));",
         "A u p[0]?v[1] p[1]?v[2] q[0]?w[2] q[1]?w[1] r?v[3]\n"},
        {"vectors", "A u (.p(v), .q(w));",
         "A u p[0]?v[0] p[1]?v[1] p[2]?v[2] p[3]?v[3] q[0]?w[3] q[1]?w[2] q[2]?w[1] q[3]?w[0]\n"},
        {"concatenations", "A u (.p({a, v[1:0], {b, {a}}}), .q({b}));",
         "A u p[0]?a p[1]?b p[2]?v[0] p[3]?v[1] p[4]?a q?b\n"},
        {"replications", "A u (.p({2{a, b}}), .q({a, {2{b}}}), .r({2{{1{a}}, b}}));",
         "A u p[0]?b p[1]?a p[2]?b p[3]?a q[0]?b q[1]?b q[2]?a r[0]?b r[1]?a r[2]?b r[3]?a\n"},
        {"constants", "A u (.p(1'b0), .q(1), .r(2'bx1), .s({a, 2'd3}), .t('1), .u({1'bz}));",
         "A u p?- q?- r[0]?- r[1]?- s[0]?- s[1]?- s[2]?a t?- u?-\n"},
        {"widths of constants", "A u (.p({a, 4 'h F}), .q({b, 3'sb1}), .r({a, 5'o7_7}), .s({b, 2'hff}));",
         "A u p[0]?- p[1]?- p[2]?- p[3]?- p[4]?a q[0]?- q[1]?- q[2]?- q[3]?b "
         "r[0]?- r[1]?- r[2]?- r[3]?- r[4]?- r[5]?a s[0]?- s[1]?- s[2]?b\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(module(wires + row.statements)), "m:\n" + row.expected + nets) << row.what;
    EXPECT_EQ(read(module("A u (.p(x), .q(y)); wire x;")), "m:\nA u p?x q?y\nnets: x y\n") << "not declared";
}

TEST(VerilogNetlist, ReadsGates) {
    const struct {
        std::string statements, expected;
    } rows[] = {
        {"and g (y, a, b);", "and g Y>y A<a B<b\nnets: y a b\n"},
        {"nor #(1, 2) g (y, a, b, c), (z, a);",
         "nor g Y>y A<a B<b C<c\nnor nor$1 Y>z A<a\nnets: y a b c z\n"},
        {"buf (y, a);", "buf buf$1 Y>y A<a\nnets: y a\n"},
        {"not g (y, z, a);", "not g Y>y Y1>z A<a\nnets: y z a\n"},
        {"or (strong0, weak1) #1 g (y, a);", "or g Y>y A<a\nnets: y a\n"},
        {"xor (pull1, highz0) (y, a, 1'b1);", "xor xor$1 Y>y A<a B<-\nnets: y a\n"},
        {"bufif0 g (y, a, e);", "bufif0 g Y>y A<a B<e\nnets: y a e\n"},
        {"pullup (y), g (z);", "pullup pullup$1 Y>y\npullup g Y>z\nnets: y z\n"},
        {"and g (strong0x, a);", "and g Y>strong0x A<a\nnets: strong0x a\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(module(row.statements)), "m:\n" + row.expected) << row.statements;
}

// A net has the shortest of its names, and of those the first.
TEST(VerilogNetlist, AssignmentsJoinNets) {
    const struct {
        std::string statements, expected;
    } rows[] = {
        {"wire aa, b; assign aa = b; A u(.p(aa), .q(b));", "A u p?b q?b\nnets: b\n"},
        {"wire b, a, c; assign b = a, a = c; A u(.p(c));", "A u p?a\nnets: a\n"},
        {"wire a = b; A u(.p(a));", "A u p?a\nnets: a\n"},
        {"wire [1:0] v; wire [0:1] w; assign v = w; A u(.p(w));",
         "A u p[0]?v[0] p[1]?v[1]\nnets: v[0] v[1]\n"},
        {"wire [1:0] v; wire x, y; assign {y, x} = v; A u(.p(v));", "A u p[0]?x p[1]?y\nnets: x y\n"},
        {"wire [1:0] v; assign v[1] = c; A u(.p(v));", "A u p[0]?v[0] p[1]?c\nnets: v[0] c\n"},
        {"wire [1:0] v; assign v = 2'b1x; A u(.p(v));", "A u p[0]?v[0] p[1]?-\nnets: v[0]\n"},
        {"wire [1:0] v; assign v = a; A u(.p(v));", "A u p[0]?a p[1]?-\nnets: a\n"},
        {"wire [1:0] v; assign a = v; A u(.p(v));", "A u p[0]?a p[1]?v[1]\nnets: a v[1]\n"},
        {"wire a, b, c; assign a = b, b = c, c = a; A u(.p(c));", "A u p?a\nnets: a\n"},
        {"assign (strong0, weak1) #1 a = 1'b0; A u(.p(a));", "A u p?-\nnets:\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(module(row.statements)), "m:\n" + row.expected) << row.statements;
}

TEST(VerilogNetlist, FlattensHierarchy) {
    const std::string wrap = "module wrap(input [1:0] d, output q, input c);\n"
                             " wire n; DFF ff(.C(c), .D(d), .Q(n)); INV i(.A(n), .Y(q)); endmodule\n";
    const std::string through = "module through(input a, output y, z); assign y = a, z = 1'b1; endmodule\n";
    const std::string stub =
        "module S(input [3:2] a, output y); specify (a => y) = 1; endspecify endmodule\n";
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"instances",
         wrap + "module m(input k, output y); wire [1:0] v;\n"
                "wrap u1(.c(k), .q(v[0]), .d({y, k})), u2({v[0], 1'b0}, y, k); endmodule",
         "m:\nport k<k\nport y>y\nDFF u1/ff C?k D[0]?k D[1]?y Q?u1/n\nINV u1/i A?u1/n Y?v[0]\n"
         "DFF u2/ff C?k D[0]?- D[1]?v[0] Q?u2/n\nINV u2/i A?u2/n Y?y\nnets: k y v[0] v[1] u1/n u2/n\n"},
        {"the module behind its use", "module m; wrap u(.c(k)); endmodule\n" + wrap,
         "m:\nDFF u/ff C?k D[0]?u/d[0] D[1]?u/d[1] Q?u/n\nINV u/i A?u/n Y?u/q\nnets: k u/d[0] u/d[1] u/q "
         "u/n\n"},
        {"depth first", "module a; L x(); b y(); L z(); endmodule module b; L x(); L y(); endmodule",
         "a:\nL x\nL y/x\nL y/y\nL z\nnets:\n"},
        {"a net through a module",
         through + "module m; through t(.a(p), .y(q), .z(r)); A u(.p(p), .q(q), .r(r)); endmodule",
         "m:\nA u p?p q?p r?-\nnets: p\n"},
        {"nets through instances of instances",
         through + "module two(input a, output y); through i(.a(a), .y(n)), j(.a(n), .y(y)); endmodule\n"
                   "module m; two t(.a(p), .y(q)); A u(.p(p), .q(q)); endmodule",
         "m:\nA u p?p q?p\nnets: p\n"},
        {"a constant for a child", wrap + "module m; wrap u(.c(1'b0), .d(2'bz1)); endmodule",
         "m:\nDFF u/ff C?- D[0]?- D[1]?u/d[1] Q?u/n\nINV u/i A?u/n Y?u/q\nnets: u/d[1] u/q u/n\n"},
        {"the name from the outermost module, however long",
         "module c(input a); L l(.p(a)); endmodule module m; wire long_name; c u(.a(long_name)); endmodule",
         "m:\nL u/l p?long_name\nnets: long_name\n"},
        {"empty modules are leaves with directions",
         stub + "module m; wire [1:0] v; S s(v, y), t(.a(v)); endmodule",
         "1:36: note: statements without structure are passed over: 1 specify\nm:\nS s a[2]<v[0] a[3]<v[1] "
         "y>y\nS t a[2]<v[0] a[3]<v[1]\nnets: v[0] v[1] y\n"},
        {"widths that do not fit", wrap + "module m;\n wrap u(.d(a), .q({b, c})); endmodule",
         "4:7: warning: port 'd' of cell 'u' has 2 bits, its connection has 1\n"
         "4:7: warning: port 'q' of cell 'u' has 1 bits, its connection has 2\n"
         "m:\nDFF u/ff C?u/c D[0]?a D[1]?u/d[1] Q?u/n\nINV u/i A?u/n Y?c\nnets: a b c u/d[1] u/c u/n\n"},
        {"cells of one name", wrap + "module m; wrap u(); L \\u/ff (); endmodule",
         "warning: more than one of the cells is named 'u/ff'\n"
         "m:\nDFF u/ff C?u/c D[0]?u/d[0] D[1]?u/d[1] Q?u/n\nINV u/i A?u/n Y?u/q\nL u/ff\n"
         "nets: u/d[0] u/d[1] u/q u/c u/n\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

TEST(VerilogNetlist, ChoosesTheTop) {
    const std::string two = "module a; L u(); endmodule module b; L u(); endmodule ";
    const struct {
        std::string text, top, expected;
    } rows[] = {
        {two + "module c; a x(); b y(); endmodule", "", "c:\nL x/u\nL y/u\nnets:\n"},
        {two + "module c; a x(); b y(); endmodule", "b", "b:\nL u\nnets:\n"},
        {two, "", "error: more than one module may be the top: give its name by --top, one of 'a', 'b'"},
        {two, "c", "error: there is no module 'c', only 'a', 'b'"},
        {two + "module leaf; endmodule module c; a x(); b y(); endmodule", "", "c:\nL x/u\nL y/u\nnets:\n"},
        {two + "module glbl; reg GSR; wire G = GSR; initial GSR = 1; endmodule module c; a x(); b y(); "
               "endmodule",
         "",
         "1:91: note: statements without structure are passed over: 1 initial\nc:\nL x/u\nL y/u\nnets:\n"},
        {"module a; b u(); endmodule\nmodule b; a u(); endmodule", "",
         "error: each module is instantiated by another one: give the name of the top by --top, one of 'a', "
         "'b'"},
        {"module a; b u(); endmodule\nmodule b; a u(); endmodule", "a",
         "2:13: error: a module instantiates itself: 'a' -> 'b' -> 'a'"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text, row.top), row.expected) << row.text;
}

TEST(VerilogNetlist, TellsWhatIsWrong) {
    const std::string structural = " (only structural Verilog can be read)";
    const struct {
        std::string text, expected;
    } rows[] = {
        {"", "error: there is no module"},
        {"{", "1:1: error: expected 'module', found '{'"},
        {"wire a;", "1:1: error: expected 'module', found 'wire'"},
        {"module", "1:7: error: expected a module's name, found the end of the file"},
        {"module 3;", "1:8: error: expected a module's name, found '3'"},
        {"module m", "1:9: error: expected ';', found the end of the file"},
        {"module m(a;", "1:11: error: expected ',' or ')', found ';'"},
        {"module m(a,);", "1:12: error: expected a port, found ')'"},
        {"(* a =\n \"x\ny\" *) module m(3);", "3:16: error: expected a port, found '3'"},
        {"module m(a); endmodule", "1:10: error: port 'a' has no direction"},
        {"module m(a);\n wire a; endmodule", "1:10: error: port 'a' has no direction"},
        {"module m(a, a); input a; endmodule", "1:13: error: port 'a' is there twice"},
        {"module m(a); input a, b; endmodule", "1:23: error: 'b' is not in the module's list of ports"},
        {"module m(a); input a; output a; endmodule", "1:30: error: 'a' is declared twice"},
        {"module m; endmodule module m; endmodule", "1:28: error: module 'm' is there twice"},
        {"module m; wire a", "1:17: error: expected ',' or ';', found the end of the file"},
        {"module m; module n;", "1:11: error: expected a statement or 'endmodule', found 'module'"},
        {"module m;", "1:10: error: expected a statement or 'endmodule', found the end of the file"},
        {module("wire 1;"), "1:16: error: expected a name, found '1'"},
        {module("wire [a:0] b;"), "1:17: error: expected an integer, found 'a'"},
        {module("wire [1] b;"), "1:18: error: expected ':', found ']'"},
        {module("wire [99999999999:0] b;"), "1:17: error: expected an integer, found '99999999999'"},
        {module("wire [1048576:0] b;"), "1:16: error: a range of more than 1048576 bits"},
        {module("wire [-2147483647:2147483647] b;"), "1:16: error: a range of more than 1048576 bits"},
        {module("wire [1:0] a; wire [2:0] a;"), "1:36: error: 'a' is declared with another range"},
        {module("A u(.p(a)); wire [2:0] a;"), "1:34: error: 'a' is used before it is declared"},
        {module("wire [1:0] a [0:1];"),
         "1:24: error: only structural Verilog can be read, found an array of wires"},
        {module("\nalways @(*) a = b;"), "2:1: error: only structural Verilog can be read, found 'always'"},
        {module("assign a = {b | c};"), "1:25: error: expected ',' or '}', found '|'"},
        {module("assign 1'b0 = a;"), "1:18: error: expected nets before '=', found a constant"},
        {module("assign a;"), "1:19: error: expected '=', found ';'"},
        {module("wire a; A u(.p(a[0]));"), "1:26: error: 'a' is not a vector"},
        {module("A u(.p(a[0]));"), "1:18: error: 'a' is not declared"},
        {module("wire [3:1] a; A u(.p(a[0]));"), "1:32: error: 'a' is [3:1], which has no part [0:0]"},
        {module("wire [3:1] a; A u(.p(a[4:2]));"), "1:32: error: 'a' is [3:1], which has no part [4:2]"},
        {module("wire [3:1] a; A u(.p(a[1:2]));"), "1:32: error: 'a' is [3:1], which has no part [1:2]"},
        {module("A u(.p({0{a}}));"), "1:19: error: expected a count above 0"},
        {module("A u(.p({2{a} b}));"), "1:24: error: expected '}', found 'b'"},
        {module("A u(.p({2000000{a}}));"), "1:28: error: an expression of more than 1048576 bits"},
        {module("A u(.p({2048{{1024{a}}}, a}));"), "1:33: error: an expression of more than 1048576 bits"},
        {module("A u(.p(2'b2));"), "1:18: error: expected a constant, found '2'b2'"},
        {module("A u(.p(0'b1));"), "1:18: error: expected a constant, found '0'b1'"},
        {module("A u(.p(4'q1));"), "1:18: error: expected a base b, o, d or h behind the apostrophe"},
        {module("A u(.p(4'b));"), "1:18: error: expected a number's digits"},
        {module("A u(.p(4'b_1));"), "1:18: error: expected a number's digits"},
        {module("A u(.p(4'sb_));"), "1:18: error: expected a number's digits"},
        {module("A u(.p('s1));"), "1:18: error: expected a base b, o, d or h behind the apostrophe"},
        {module("A u(.p(4'Sx));"), "1:18: error: expected a base b, o, d or h behind the apostrophe"},
        {module("A u(.p(9999999'h0));"), "1:18: error: an expression of more than 1048576 bits"},
        {module("A u(.p(a) .q(b));"), "1:21: error: expected ',' or ')', found '.'"},
        {module("A u(.p(a), b);"), "1:22: error: expected '.' and a pin, found 'b'"},
        {module("A u(a, .p(b));"), "1:18: error: expected a connection by position, found '.'"},
        {module("A u(.p(a), .p(b));"), "1:22: error: pin 'p' of cell 'u' is connected twice"},
        {module("A u(.p(a)); B u();"), "1:25: error: cell 'u' is there twice"},
        {module("A u(a);"),
         "1:13: error: expected connections by name at cell 'u': module 'A' is not defined"},
        {module("A u;"), "1:14: error: expected '(', found ';'"},
        {module("A (a);"), "1:13: error: expected the name of a cell, found '('"},
        {module("and g (a);"), "1:15: error: expected a gate with 2 to 25 terminals, found 1"},
        {module("bufif1 g (a, b);"), "1:18: error: expected a gate with 3 terminals, found 2"},
        {module("pulldown (a, b);"), "1:21: error: expected a gate with 1 terminals, found 2"},
        {module("A #(1 u();"), "1:31: error: expected ')', found the end of the file"},
        {"module w(input a); L l(); endmodule module m; w u(.b(c)); endmodule",
         "1:49: error: cell 'u' connects 'b', which is not a port of module 'w'"},
        {"module w(input a); L l(); endmodule module m; w u(b, c); endmodule",
         "1:49: error: cell 'u' has 2 connections, module 'w' has 1 ports"},
        {module("/* \n * "), "1:11: error: the comment has no end"},
        {module("(* keep "), "1:11: error: the attribute has no end"},
        {module("parameter s = \"x"), "1:25: error: the string has no end"},
        {module("wire \\ ;"), "1:16: error: expected a name behind '\\'"},
        {module("wire \x01;"), "1:16: error: expected a Verilog text, found the byte 1"},
        {std::string("module m; \0", 11), "1:11: error: expected a Verilog text, found the byte 0"},
        {"module \xc3\xa4;", "1:8: error: expected a Verilog text, found the byte 195"},
        {"module m; specify ", "1:19: error: expected 'endspecify', found the end of the file"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.text;
}

// Statements that simulation needs, and what they leave.
TEST(VerilogNetlist, PassesOverWhatHasNoStructure) {
    const std::string note = "note: statements without structure are passed over: ";
    const std::string cell = "A u (.p(a)); ";
    const struct {
        std::string statements, passedOver;
    } rows[] = {
        {"initial $sdf_annotate(\"top.sdf\", u, , , \"MAXIMUM\");", "1:11: " + note + "1 initial\n"},
        {"initial begin if (x) begin y = 1; end else y = 0; end", "1:11: " + note + "1 initial\n"},
        {"initial if (x) y = 1; else begin y = 0; end", "1:11: " + note + "1 initial\n"},
        {"initial fork : f begin : g end join", "1:11: " + note + "1 initial\n"},
        {"initial for (i = 0; i < 4; i = i + 1) x[i] = 0;", "1:11: " + note + "1 initial\n"},
        {"initial case (x) 0: y = 1; default: ; endcase", "1:11: " + note + "1 initial\n"},
        {"initial begin : b case (x) 0: begin end endcase end : b", "1:11: " + note + "1 initial\n"},
        {"specify specparam t = 1; (p *> q) = (1:2:3); endspecify", "1:11: " + note + "1 specify\n"},
        {"function [7:0] f; input a; f = a; endfunction", "1:11: " + note + "1 function\n"},
        {"task t; begin end endtask", "1:11: " + note + "1 task\n"},
        {"parameter P = 1, Q = {2'b0, 1'b1}; localparam R = P;",
         "1:11: " + note + "1 localparam, 1 parameter\n"},
        {"defparam u.INIT = 16'hff00;", "1:11: " + note + "1 defparam\n"},
        {"integer i; real r; time t; event e; genvar g;",
         "1:11: " + note + "1 event, 1 genvar, 1 integer, 1 real, 1 time\n"},
        {"$info(\"x\");", "1:11: " + note + "1 $info\n"},
        {"\n  defparam u.A = 1; initial ; defparam u.B = 2;", "2:3: " + note + "2 defparam, 1 initial\n"},
        {"reg [7:0] mem [0:3]; reg x = 1'b0, y; logic z; bit [1:0] w [3:0]; var logic v = 1;", ""},
        {"generate A g (.p(a)); endgenerate", ""},
        {"tri0 b; tri1 c; trireg d; wand e; wor f; triand g; trior h; supply0 i; supply1 j; uwire k;", ""},
    };
    for (const auto& row : rows) {
        const std::string result = read(module(cell + row.statements + " B v (.p(a));"));
        const std::string before = "1:24"; // the statement is behind a cell of 13 characters
        std::string expected = row.passedOver;
        if (expected.starts_with("1:11"))
            expected.replace(0, before.size(), before);
        EXPECT_EQ(result.substr(0, result.find("m:\n")), expected) << row.statements;
        EXPECT_NE(result.find("A u p?a\n"), std::string::npos) << row.statements;
        EXPECT_NE(result.find("B v p?a\n"), std::string::npos) << row.statements;
    }
}

TEST(VerilogNetlist, ReadsDeclarationsOfOtherTools) {
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"registers as ports", "module m(output reg a, input logic [1:0] b); endmodule : m",
         "m:\nport a>a\nport b[0]<b[0]\nport b[1]<b[1]\nnets: a b[0] b[1]\n"},
        {"older texts may have nets of these names", "module m(bit, input logic); endmodule",
         "1:10: error: port 'bit' has no direction"},
        {"a net named logic", module("wire logic, bit; A u (.p(logic), .q(bit));"),
         "m:\nA u p?logic q?bit\nnets: logic bit\n"},
        {"values at the start", "module m(input a = 1'b0, output reg [1:0] b = {1'b0, 1'b1}); endmodule",
         "m:\nport a<a\nport b[0]>b[0]\nport b[1]>b[1]\nnets: a b[0] b[1]\n"},
        {"attributes everywhere",
         "(* a *) module (* b *) m ((* c *) input a, (* d = \"(*\" *) output b); (* e *) wire (* f *) c; "
         "(* keep = 1 *) A (* g *) u ((* h *) .p((* i *) a), .q(c)); (* j *) assign (* k *) b = c; endmodule",
         "m:\nport a<a\nport b>b\nA u p?a q?b\nnets: a b\n"},
        {"macromodules, delays, strengths",
         "macromodule m; supply0 (strong0) g; wire #(1:2:3) a; assign (pull1, weak0) #(1, 2) a = b; "
         "A #(.X(1), .Y(\"z\")) u (.p(a), .q(g)); endmodule",
         "m:\nA u p?a q?-\nnets: a\n"},
        {"sums in ranges", "`define W 8\n" + module("wire [`W-1:`W-2] a; wire [1+1-2:0] b;"),
         "m:\nnets: a[6] a[7] b[0]\n"},
        {"configurations and packages",
         "config c; design work.m; endconfig package p; endpackage : p timeunit 1ns; library l \"x\"; ; " +
             module(""),
         "1:1: note: statements without structure are passed over: 1 config, 1 library, 1 package, 1 "
         "timeunit\n"
         "m:\nnets:\n"},
        {"wires that are one", module("tran t (a, b), (c, d); A u (.p(b), .q(d));"),
         "m:\nA u p?a q?c\nnets: a c\n"},
        {"transistors", module("nmos n (y, a, g); pmos (z, a, g);"),
         "m:\nnmos n Y>y A<a B<g\npmos pmos$1 Y>z A<a B<g\nnets: y a g z\n"},
        {"a primitive in the new style, without a name",
         "primitive p(output reg y = 0, input a, b); table 0 ? : 0; endtable endprimitive " +
             module("p (y, a, b), (z, a, b); p (strong0, weak1) q (w, a, b);"),
         "m:\np p$1 y>y a<a b<b\np p$2 y>z a<a b<b\np q y>w a<a b<b\nnets: y a b z w\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

TEST(VerilogNetlist, ReadsConnectionsOfOtherTools) {
    const std::string wires = "wire a, b; wire [1:0] v; ";
    const std::string nets = "nets: a b v[0] v[1]\n";
    const std::string inverted =
        " pins are connected to inverted nets: what a rising edge does there, a falling "
        "edge of the net does, first ";
    const struct {
        const char* what;
        std::string statements, expected;
    } rows[] = {
        {"an open pin is a pin", "A u (.p(a), .q( ));", "A u p?a q?-\n"},
        {"the name of the net", "A u (.a, .p(b), .v);", "A u a?a p?b v[0]?v[0] v[1]?v[1]\n"},
        {"digits that fill", "A u (.p('0), .q('1), .r('x), .s('z));", "A u p?- q?- r?- s?-\n"},
        {"parentheses", "A u (.p((a)), .q(({a, (b)})));", "A u p?a q[0]?b q[1]?a\n"},
        {"twice inverted", "A u (.p(~~a), .q(!(~b)));", "A u p?a q?b\n"},
        {"constants are not inverted", "A u (.p(~1'b0), .q(!1'b1), .r(~1'bx));", "A u p?- q?- r?-\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(module(wires + row.statements)), "m:\n" + row.expected + nets) << row.what;
    EXPECT_EQ(read(module(wires + "A u (.p(!a), .q(~v), .r({b, ~a}), .s({2{~{a, b}}}));")),
              "1:38: note: 8" + inverted +
                  "'u/p'\nm:\nA u p?a q[0]?v[0] q[1]?v[1] r[0]?a r[1]?b s[0]?b s[1]?a "
                  "s[2]?b s[3]?a\n" +
                  nets);
    EXPECT_EQ(read(module(wires + "A u (.p(!v));")),
              "1:46: error: '!' of 2 bits (only structural Verilog can be read)");
    EXPECT_EQ(
        read("module w(input i); L l(.p(i)); endmodule " + module("w u(.i(~a)), v(.i(~a)); L l(.p(~a));"),
             "m"),
        "1:78: note: 1" + inverted +
            "'l/p'\n"
            "1:54: warning: 2 ports of modules are connected to inverted nets: the nets are joined, and "
            "edges are "
            "not exchanged, first 'u/i'\n"
            "m:\nL u/l p?a\nL v/l p?a\nL l p?a\nnets: a\n");
    EXPECT_EQ(read(module("assign a = ~b, c = !(d); A u(.p(b), .q(d));")),
              "1:18: warning: 2 assignments of inverted nets: the nets are joined, and their edges are not "
              "exchanged\nm:\nA u p?a q?c\nnets: a c\n");
}

TEST(VerilogNetlist, ReadsArraysOfCells) {
    const std::string leaf = "module L(input [1:0] a, output y); endmodule ";
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"without pins", module("FILL f[3:2] ();"), "m:\nFILL f[3]\nFILL f[2]\nnets:\n"},
        {"one bit goes to all", module("F f[0:1] (.a(x));"), "m:\nF f[0] a?x\nF f[1] a?x\nnets: x\n"},
        {"the first takes the left", module("wire [3:0] v; F f[1:0] (.a(v), .b(v[1:0]));"),
         "m:\nF f[1] a[0]?v[2] a[1]?v[3] b?v[1]\nF f[0] a[0]?v[0] a[1]?v[1] b?v[0]\n"
         "nets: v[0] v[1] v[2] v[3]\n"},
        {"so it does in a range that runs up", module("wire [1:0] v; F f[0:1] (.b(v));"),
         "m:\nF f[0] b?v[1]\nF f[1] b?v[0]\nnets: v[0] v[1]\n"},
        {"the module tells the width", leaf + module("wire [1:0] v; L f[1:0] (.a(v), .y(v));"),
         "m:\nL f[1] a[0]<v[0] a[1]<v[1] y>v[1]\nL f[0] a[0]<v[0] a[1]<v[1] y>v[0]\nnets: v[0] v[1]\n"},
        {"by position, in a hierarchy",
         leaf + "module w(input [1:0] a, output y); L l (a, y); endmodule " +
             module("wire [3:0] v; w f[1:0] (v, {b, c});"),
         "m:\nL f[1]/l a[0]<v[2] a[1]<v[3] y>b\nL f[0]/l a[0]<v[0] a[1]<v[1] y>c\n"
         "nets: v[0] v[1] v[2] v[3] b c\n"},
        {"nothing, and inverted", module("wire [1:0] v; F f[1:0] (.a(), .b(~v));"),
         "1:27: note: 2 pins are connected to inverted nets: what a rising edge does there, a falling edge "
         "of "
         "the net does, first 'f[1]/b'\nm:\nF f[1] a?- b?v[1]\nF f[0] a?- b?v[0]\nnets: v[0] v[1]\n"},
        {"a width that does not fit", leaf + module("wire [2:0] v; L f[1:0] (.a(v));"),
         "1:72: error: the array 'f' has 2 cells with 2 bits at port 'a': expected a connection of 2 or 4 "
         "bits, "
         "found 3"},
        {"gates", module("wire [1:0] v; buf b[1:0] (v, {x, y}); and g[1:0] (v, a, {x, y});"),
         "m:\nbuf b[1] Y>v[1] A<x\nbuf b[0] Y>v[0] A<y\nand g[1] Y>v[1] A<a B<x\nand g[0] Y>v[0] A<a B<y\n"
         "nets: v[0] v[1] x y a\n"},
        {"gates whose width does not fit", module("wire [2:0] v; buf b[1:0] (v, x);"),
         "1:29: error: expected 1 or 2 bits at each terminal of the array, found 3"},
        {"too many", module("F f[1048575:0] (.a({128{x}}));"),
         "1:13: error: with the array 'f' of module 'm' the file has more than 4194304 cells and pins in "
         "arrays"},
        {".*", leaf + module("wire y; wire [1:0] a; wire z; L l (.*); L k (.y(z), .*);"),
         "m:\nL l y>y a[0]<a[0] a[1]<a[1]\nL k y>z a[0]<a[0] a[1]<a[1]\nnets: y a[0] a[1] z\n"},
        {".* of an unknown module", module("wire y; L l (.*);"),
         "1:21: error: '.*' at cell 'l': module 'L' is not defined: expected connections by name"},
        {".* of an array", leaf + module("wire y; L l[1:0] (.*);"),
         "1:66: error: '.*' at the array 'l' is not supported: expected connections by name"},
        {".* is the last", leaf + module("wire y; L l (.*, .a(b));"),
         "1:71: error: expected ')' behind '.*', found ','"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

// Of a bit only those that it can depend on.
TEST(VerilogNetlist, ExpressionsAreCellsWithoutDelays) {
    const std::string wires = "wire [1:0] v, w, x; ";
    const struct {
        std::string statement, expected;
    } rows[] = {
        {"assign a = b & c;", "assign assign$1 I0<b I1<c Y0>a\n"},
        {"wire a = b & ~c;", "assign assign$1 I0<b I1<c Y0>a\n"},
        {"assign a = (b | c) ^ (~b & d);", "assign assign$1 I0<b I1<c I2<d Y0>a\n"},
        {"assign v = w & x;",
         "assign assign$1 I0<w[0] I1<x[0] Y0>v[0]\nassign assign$2 I0<w[1] I1<x[1] Y0>v[1]\n"},
        {"assign v = s ? w : x;",
         "assign assign$1 I0<w[0] I1<x[0] I2<s Y0>v[0]\nassign assign$2 I0<w[1] I1<x[1] I2<s Y0>v[1]\n"},
        {"assign v = w & a;", "assign assign$1 I0<w[0] I1<a Y0>v[0]\nassign assign$2 I0<w[1] Y0>v[1]\n"},
        {"assign v = w + x;", "assign assign$1 I0<w[0] I1<w[1] I2<x[0] I3<x[1] Y0>v[1] Y1>v[0]\n"},
        {"assign a = &v;", "assign assign$1 I0<v[0] I1<v[1] Y0>a\n"},
        {"assign a = b && v;", "assign assign$1 I0<v[0] I1<v[1] I2<b Y0>a\n"},
        {"assign a = v[0] & 1'b1;", "assign assign$1 I0<v[0] Y0>a\n"},
        {"assign a = $signed(v) < w[1];", "assign assign$1 I0<v[0] I1<v[1] I2<w[1] Y0>a\n"},
        {"assign a = b ? 1'b0 : {c, b} == v;", "assign assign$1 I0<v[0] I1<v[1] I2<b I3<c Y0>a\n"},
    };
    for (const auto& row : rows) {
        const std::string result = read(module(wires + "A u (); " + row.statement));
        const std::string cell = "m:\nA u\n";
        const std::size_t from = result.find(cell) + cell.size();
        EXPECT_EQ(result.substr(from, result.find("nets:") - from), row.expected) << row.statement;
        EXPECT_NE(result.find(" cells 'assign' stand for expressions: they have no delays\n"),
                  std::string::npos)
            << row.statement;
    }
    EXPECT_EQ(
        read(module("wire [99:0] a, b; assign a = b + a; A u ();")),
        "1:36: error: only structural Verilog can be read, found an expression of 200 bits for 100 nets");
    EXPECT_EQ(read(module("A u (); assign a = f(b) & c;")),
              "1:31: error: expected ',' or ';' (only structural Verilog can be read), found '('");
}

TEST(VerilogNetlist, ModelsOfCellsAreCells) {
    const std::string note = "note: statements without structure are passed over: ";
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"a process",
         "module D(input C, D, output reg Q); always @(posedge C) Q <= D; endmodule\n" +
             module("D u(.C(c), .D(d), .Q(q));"),
         "1:37: " + note + "1 always\nm:\nD u C<c D<d Q>q\nnets: c d q\n"},
        {"every change",
         "module D(input C, output reg Q); always @(*) if (C) Q = 1; else Q = 0; endmodule\n" +
             module("D u(.C(c), .Q(q));"),
         "1:34: " + note + "1 always\nm:\nD u C<c Q>q\nnets: c q\n"},
        {"a table and gates under a specify block",
         "primitive p(q, d); output q; input d; table 0 : 0; endtable endprimitive\n"
         "module D(input D, output Q); reg n; p (w, D); buf b (Q, w); specify (D => Q) = 1; endspecify "
         "endmodule\n" +
             module("D u(.D(d), .Q(q));"),
         "2:61: " + note + "1 specify\nm:\nD u D<d Q>q\nnets: d q\n"},
        {"under `celldefine",
         "`celldefine\nmodule D(input D, output Q); X x(.D(D), .Q(Q)); endmodule\n`endcelldefine\n" +
             module("D u(.D(d), .Q(q));"),
         "m:\nD u D<d Q>q\nnets: d q\n"},
        {"expressions",
         "module N(input A, B, output Y); assign Y = ~(A & B); endmodule\n" +
             module("N u(.A(a), .B(b), .Y(y));"),
         "1:40: note: 1 cells 'assign' stand for expressions: they have no delays\n"
         "m:\nN u A<a B<b Y>y\nnets: a b y\n"},
        {"choices of a generate block that is not needed",
         "module N(input A); generate if (P) begin : g X x(); end else X y(); endgenerate endmodule\n" +
             module("N u(.A(a));"),
         "1:29: " + note + "1 if\nm:\nN u A<a\nnets: a\n"},
        {"gates alone are a netlist",
         "module N(input A, output Y); not n(Y, A); endmodule\n" + module("N u(.A(a), .Y(y));"),
         "m:\nnot u/n Y>y A<a\nnets: a y\n"},
        {"a process beside cells",
         "module N(input A); X x(.A(A)); always @(A) ; endmodule\n" + module("N u(.A(a));"),
         "1:32: " + note +
             "1 always\n"
             "1:32: warning: module 'N' has 'always' beside its cells: what that computes is not timed\n"
             "m:\nX u/x A?a\nnets: a\n"},
        {"a choice of a generate block", module("X x(); generate if (P) X y(); endgenerate"),
         "1:27: error: only structural Verilog can be read, found 'if'"},
        {"a process alone", module("always @(a) b = a;"),
         "1:11: error: only structural Verilog can be read, found 'always'"},
        {"what is wrong in a module that is not needed",
         "module N(input A); assign x = y[z]; endmodule\n" + module("N u(.A(a)); L l();"),
         "m:\nN u A<a\nL l\nnets: a\n"},
    };
    for (const auto& row : rows) {
        const std::string result = read(row.text);
        EXPECT_EQ(result, row.expected) << row.what;
    }
}

TEST(VerilogNetlist, MacrosAndConditions) {
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"a macro", "`define N a // a net\n" + module("A u (.p(`N), .q(`N));"), "m:\nA u p?a q?a\nnets: a\n"},
        {"with arguments", "`define P(x, y) .x(y), .q({y, y})\n" + module("A u (`P(p, a[0])); wire a;"),
         "2:16: error: 'a' is not declared"},
        {"nested arguments", "`define P(x, y) .x(y)\n" + module("A u (`P(p, {a, (b)}), `P( q ,b));"),
         "m:\nA u p[0]?b p[1]?a q?b\nnets: a b\n"},
        {"over lines", "`define M A u ( \\\n .p(a) ); \\\n B v();\n" + module("`M"),
         "m:\nA u p?a\nB v\nnets: a\n"},
        {"in one another", "`define X `Y\n`define Y a\n" + module("A u (.p(`X)); wire b;"),
         "m:\nA u p?a\nnets: a b\n"},
        {"a width", "`define W 4\n" + module("A u (.p({`W'b0, a}));"),
         "m:\nA u p[0]?a p[1]?- p[2]?- p[3]?- p[4]?-\nnets: a\n"},
        {"joined names", "`define J(x) x``_``x\n" + module("A u (.p(`J(a)));"), "m:\nA u p?a_a\nnets: a_a\n"},
        {"defined anew, and no more",
         "`define X a\n`define X b\n" + module("A u (.p(`X));\n`undef X\n A v (.p(`X));"),
         "5:10: error: the macro '`X' is not defined"},
        {"not in strings and comments", "`define X y\n" + module("A #(.S(\"`X `Z\")) u (/* `Z */); // `Z\n"),
         "m:\nA u\nnets:\n"},
        {"the first branch",
         "`define X\n`ifdef X\n" + module("A u();") + "\n`else\n junk `endif junk\n`endif\n",
         "5:14: error: expected 'module', found 'junk'"},
        {"branches",
         "`define Y\n`ifdef X\n junk \" ` // `endif\n`elsif Y\n" + module("A u();") +
             "\n`elsif Z\n junk\n`else\n junk\n`endif\n",
         "m:\nA u\nnets:\n"},
        {"ifndef and nesting",
         "`ifndef X\n`ifdef Z junk `ifdef Q `else junk `endif `else\n`define X\n`endif\n`endif\n`ifdef X " +
             module("A u();") + "`endif",
         "m:\nA u\nnets:\n"},
        {"else of a branch that is read", "`ifdef X\n`else module m; A u(); `endif endmodule",
         "m:\nA u\nnets:\n"},
        {"include between modules", "`include \"cells.v\"\n" + module("A u();"),
         "1:1: warning: `include is passed over: modules of that file are taken as cells\nm:\nA u\nnets:\n"},
        {"include in a module", module("\n`include \"cells.v\"\n A u();"),
         "2:1: error: `include within a module is not supported: expected the netlist in one file"},
        {"directives that change nothing",
         "`resetall `timescale 1ns / 1ps\n`default_nettype none\n`begin_keywords \"1364-2005\"\n`pragma x\n"
         "`unconnected_drive pull0\n" +
             module("A u();") + "`end_keywords",
         "m:\nA u\nnets:\n"},
        {"not defined", module("A u(.p(`X));"), "1:18: error: the macro '`X' is not defined"},
        {"not defined in what is passed over", module("initial `X; A u();"),
         "1:11: note: statements without structure are passed over: 1 initial\nm:\nA u\nnets:\n"},
        {"the place is that of the use", "`define X wire a,\n" + module("`X  3;"),
         "2:15: error: expected a name, found '3'"},
        {"and of the outermost one",
         "`define Y 3\n`define X wire `Y;\n" + module("  `X wire b; A u(.p(b[0]));"),
         "3:13: error: expected a name, found '3'\n3:31: error: 'b' is not a vector"},
        {"without its arguments", "`define P(x) x\n" + module("`P;"),
         "2:11: error: expected '(' and arguments behind the macro '`P'"},
        {"too few", "`define P(x, y) x\n" + module("`P(a);"),
         "2:11: error: the macro '`P' takes 2 arguments, found 1"},
        {"no end", "`define P(x) x\n" + module("`P(a;"),
         "2:11: error: expected ')' behind the arguments of the macro '`P'"},
        {"itself", "`define X `X\n" + module("`X"),
         "2:11: error: the macro '`X' is one of more than 10000 within one: does it use itself?"},
        {"without a name", "`define\n" + module(""), "1:1: error: expected a name behind '`define'"},
        {"parameters", "`define P(x y) x\n" + module(""),
         "1:1: error: expected ',' or ')' in the parameters of '`P'"},
        {"no endif", "module m; endmodule\n `ifdef X\n", "2:2: error: '`ifdef' without '`endif'"},
        {"no endif of what is read", "`ifndef X\n" + module("A u();"), "m:\nA u\nnets:\n"},
        {"no ifdef", "module m; endmodule\n`endif", "2:1: error: '`endif' without '`ifdef'"},
        {"no ifdef", "`else", "1:1: error: '`else' without '`ifdef'"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

// Each use is as long as the text before it twice.
TEST(VerilogNetlist, MacrosHaveLimits) {
    std::string doubling = "`define M0 aaaaaaaaaaaaaaaa\n";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "`M" + std::to_string(i - 1);
        doubling += "`define M" + std::to_string(i) + " " + before + " " + before + "\n";
    }
    EXPECT_EQ(read(doubling + module("initial `M29;")),
              "31:19: error: the macro '`M0' is one of more than 10000 within one: does it use itself?");
    std::string large = "`define M `M";
    for (int i = 0; i < 500'000; ++i)
        large += " x";
    EXPECT_EQ(
        read(large + "\n" + module("initial `M;")),
        "2:19: error: the macro '`M' becomes longer than 1048576 characters, or with what it is in than "
        "16777216");
    const std::string many(1'000, 'x');
    std::string body;
    for (int i = 0; i < 1'100; ++i)
        body += " x";
    EXPECT_EQ(read("`define M(x)" + body + "\n" + module("`M(" + many + ")")),
              "2:11: error: the macro '`M' becomes longer than 1048576 characters, or with what it is in "
              "than 16777216");
    EXPECT_EQ(read("`define M " + std::string(1'048'577, 'x') + "\n"),
              "1:1: error: the text of a macro has more than 1048576 characters");
}

TEST(VerilogNetlist, SeveralErrorsAreReportedAtOnce) {
    EXPECT_EQ(read("module m(a);\n input a;\n A u(.p(a) .q(b));\n wire [a:0] b;\n B v(.p(b[3]));\n C "
                   "(x);\nendmodule\n"
                   "module m;\nendmodule\nmodule n;\n junk\nendmodule\n"),
              "3:12: error: expected ',' or ')', found '.'\n4:8: error: expected an integer, found 'a'\n"
              "6:4: error: expected the name of a cell, found '('\n8:8: error: module 'm' is there twice\n"
              "12:1: error: expected the name of a cell, found 'endmodule'");
    EXPECT_EQ(
        read("module m(a, b;\n input a;\n wire \x01;\n A u(;\nendmodule junk module n; A u(.p(a)"),
        "1:14: error: expected ',' or ')', found ';'\n3:7: error: expected a Verilog text, found the byte 1\n"
        "4:6: error: expected a net, a constant or '{' (only structural Verilog can be read), found ';'\n"
        "5:11: error: expected 'module', found 'junk'");
    EXPECT_EQ(read("module w(input a); L l(.p(a)); endmodule\nmodule v; w u(.b(x)); w t(.c(x));\nw s(y, "
                   "z); endmodule\n"
                   "module m; v a(); v b(); endmodule"),
              "2:13: error: cell 'u' connects 'b', which is not a port of module 'w'\n"
              "2:25: error: cell 't' connects 'c', which is not a port of module 'w'\n"
              "3:3: error: cell 's' has 2 connections, module 'w' has 1 ports");
    EXPECT_EQ(read("module m(a, b);\n output c;\nendmodule"),
              "1:10: error: port 'a' has no direction\n1:13: error: port 'b' has no direction\n"
              "2:9: error: 'c' is not in the module's list of ports");
    std::string many = "module m;\n", expected;
    for (int i = 2; i < 40; ++i) {
        many += "A u" + std::to_string(i) + "(;\n";
        if (i < 22)
            expected += std::to_string(i) + (i < 10 ? ":6" : ":7") +
                        ": error: expected a net, a constant or '{' (only structural Verilog can be read), "
                        "found ';'\n";
    }
    EXPECT_EQ(read(many + "endmodule"), expected + "note: 20 errors: the rest of the file is not read");
}

constexpr std::string_view sample = R"verilog(`timescale 1ns/1ps
(* src = "a.v" *) module sub #(parameter P = "x)") (input [1:0] d, output q, input c); /* sub */
  DFF #(.INIT(1'b0)) ff (.C(c), .D(d[0]), .Q(q));
endmodule // sub
module top (clk, y, \z[0] );
  input clk; output y; inout \z[0] ; supply1 vcc; wire [1:0] v; wire #1 w = v[1];
  localparam L = 4'b1x_z0; specify (clk => y) = (1.5, 2); endspecify
  assign {v[0], y} = {2{w}};
  sub u1 (.c(clk), .d({v[0], 1'b1}), .q(w)), \u2. (v, , clk);
  nand #(1) (y, clk, vcc); LUT l (.I({3{v[1]}}), .O(\z[0] ), .E());
endmodule
)verilog";

TEST(VerilogNetlist, BeginningsAreErrorsUnlessTheyAreWhole) {
    const std::string whole = read(sample, "top");
    ASSERT_EQ(whole, "7:3: note: statements without structure are passed over: 1 localparam, 1 specify\n"
                     "top:\nport clk<clk\nport y>w\nport z[0]=z[0]\n"
                     "DFF u1/ff C?clk D?- Q?w\nDFF u2./ff C?clk D?w Q?u2./q\nnand nand$1 Y>w A<clk B<-\n"
                     "LUT l I[0]?w I[1]?w I[2]?w O?z[0] E?-\nnets: clk w z[0] u2./q\n");
    const std::size_t end = sample.rfind("endmodule") + std::string_view("endmodule").size();
    for (std::size_t size = 0; size < end; ++size) {
        const std::string result = read(sample.substr(0, size), "top");
        EXPECT_NE(result.find("error: "), std::string::npos) << size << ": " << result;
    }
    EXPECT_EQ(read(sample.substr(0, end), "top"), whole);
}

// Tokens and their places are the same in blocks of any size.
TEST(VerilogLexer, BlocksDoNotMatter) {
    const auto tokens = [](std::size_t block) {
        const Support::InputFile file(sample);
        Base::Source source(file.path());
        Readers::Input input(source);
        Base::Diagnostics diagnostics;
        std::vector<std::string> found;
        VerilogLexer lexer(input, diagnostics, block);
        for (lexer.advance(); lexer.token().kind != VerilogLexer::Kind::end; lexer.advance()) {
            const VerilogLexer::Token& token = lexer.token();
            found.push_back(std::to_string(static_cast<int>(token.kind)) + " " + std::string(token.text) +
                            " " + std::to_string(token.position.line) + ":" +
                            std::to_string(token.position.column));
        }
        return found;
    };
    const std::vector<std::string> expected = tokens(VerilogLexer::defaultBlock);
    ASSERT_EQ(expected.size(), 218U);
    EXPECT_EQ(expected.front(), "1 module 2:19");
    EXPECT_EQ(expected.back(), "1 endmodule 11:1");
    for (std::size_t block = 1; block < 100; ++block)
        EXPECT_EQ(tokens(block), expected) << block;
}

// Ten of what there is too much of, and then how much more.
TEST(VerilogNetlist, SaysNoMoreThanCanBeRead) {
    std::string inner, outer, clashes, ring;
    for (int i = 0; i < 12; ++i) {
        const std::string number = std::to_string(i);
        inner += "L x" + number + "(); ";
        outer += "L \\u/x" + number + " (); ";
        if (i < 10)
            clashes += "warning: more than one of the cells is named 'u/x" + number + "'\n";
        ring += "module a" + number + "; a" + std::to_string((i + 1) % 12) + " u(); endmodule\n";
    }
    const std::string clashing =
        read("module c; " + inner + "endmodule module m; c u(); " + outer + "endmodule");
    EXPECT_EQ(clashing.substr(0, clashing.find("m:")),
              clashes + "warning: 2 more cells have the name of another one\n");
    EXPECT_EQ(read(ring, "a0"),
              "12:16: error: a module instantiates itself: 'a0' -> 'a1' -> 'a2' -> 'a3' -> 'a4' -> 'a5' -> "
              "'a6' -> 'a7' -> 'a8' -> 'a9' -> ... -> 'a0'");
}

TEST(VerilogNetlist, BearsDepthAndRefusesWhatExplodes) {
    constexpr std::size_t deep = 100'000;
    std::string chain, doubling = "module m0; L u(); endmodule ";
    for (std::size_t i = 0; i < deep; ++i)
        chain += "module m" + std::to_string(i) + "; m" + std::to_string(i + 1) + " u(); endmodule ";
    for (std::size_t i = 0; i < 60; ++i)
        doubling += "module m" + std::to_string(i + 1) + "; m" + std::to_string(i) + " u(), v(); endmodule ";
    EXPECT_EQ(read(chain), "error: the hierarchy has 100000 levels, more than 1000");
    EXPECT_EQ(read(chain, "m99001").substr(0, 12), "m99001:\nm100") << "a chain of 999";
    EXPECT_EQ(
        read(doubling),
        "error: module 'm23' with everything in it would take 5.2 GB of memory (25165822 cells, 0 pins, "
        "16777215 nets), more than the 4.0 GB that a netlist may take");
    const std::string name(5'000, 'n');
    std::string named = "module m0; L u(); endmodule ";
    for (std::size_t i = 0; i < 20; ++i)
        named += "module m" + std::to_string(i + 1) + "; m" + std::to_string(i) + " " + name +
                 "(), v(); endmodule ";
    EXPECT_EQ(
        read(named),
        "error: module 'm15' with everything in it would take 5.4 GB of memory (98302 cells, 0 pins, 65535 "
        "nets), more than the 4.0 GB that a netlist may take");
    EXPECT_EQ(read(module("A u(.p(" + std::string(deep, '{') + "a" + std::string(deep, '}') + "));")),
              "m:\nA u p?a\nnets: a\n");
    EXPECT_EQ(read(module("A #" + std::string(deep, '(') + std::string(deep, ')') + " u(.p(a));")),
              "m:\nA u p?a\nnets: a\n");
    std::string many;
    for (std::size_t i = 0; i < 1'000; ++i)
        many += "wire [1048575:0] v" + std::to_string(i) + ";";
    EXPECT_EQ(read(module(many)), "1:333: error: with module 'm' the file has more than 16777216 nets");
}

} // namespace
