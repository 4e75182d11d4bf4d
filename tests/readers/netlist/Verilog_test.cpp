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
         "m:\nS s a[2]<v[0] a[3]<v[1] y>y\nS t a[2]<v[0] a[3]<v[1]\nnets: v[0] v[1] y\n"},
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
        {two, "", "error: more than one module may be the top: give its name, one of 'a', 'b'"},
        {two, "c", "error: there is no module 'c', only 'a', 'b'"},
        {two + "module leaf; endmodule module c; a x(); b y(); endmodule", "", "c:\nL x/u\nL y/u\nnets:\n"},
        {"module a; b u(); endmodule\nmodule b; a u(); endmodule", "",
         "error: each module is instantiated by another one: give the name of the top, one of 'a', 'b'"},
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
        Readers::Source source(file.path());
        Readers::Input input(source);
        Readers::Diagnostics diagnostics;
        std::vector<std::string> found;
        VerilogLexer lexer(input, diagnostics, block);
        for (lexer.advance(); lexer.token().kind != VerilogLexer::Kind::end; lexer.advance()) {
            const VerilogLexer::Token& token = lexer.token();
            found.push_back(std::to_string(static_cast<int>(token.kind)) + " " + std::string(token.text) +
                            " " + std::to_string(token.line) + ":" + std::to_string(token.column));
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
    EXPECT_EQ(read(doubling), "error: the flat design would have more than 268435456 cells, pins or nets");
    const std::string name(5'000, 'n');
    std::string named = "module m0; L u(); endmodule ";
    for (std::size_t i = 0; i < 20; ++i)
        named += "module m" + std::to_string(i + 1) + "; m" + std::to_string(i) + " " + name +
                 "(), v(); endmodule ";
    EXPECT_EQ(read(named), "error: the names of the flat design would take more than 8589934592 bytes");
    EXPECT_EQ(read(module("A u(.p(" + std::string(deep, '{') + "a" + std::string(deep, '}') + "));")),
              "m:\nA u p?a\nnets: a\n");
    EXPECT_EQ(read(module("A #" + std::string(deep, '(') + std::string(deep, ')') + " u(.p(a));")),
              "m:\nA u p?a\nnets: a\n");
    std::string many;
    for (std::size_t i = 0; i < 1'000; ++i)
        many += "wire [1048575:0] v" + std::to_string(i) + ";";
    EXPECT_EQ(read(module(many)), "1:1341: error: a module has more than 67108864 nets");
}

} // namespace
