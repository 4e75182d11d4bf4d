// JSON netlists: what they give, which module is the top, and what is said of those that are not right.
#include "readers/netlist/Json.h"

#include "Dump.h"
#include "readers/netlist/Read.h"

#include <gtest/gtest.h>

namespace {

using Support::InputFile;

std::string read(std::string_view text, const std::string& top = "") {
    return Support::outcome(Readers::readJson, text, top);
}

// A file with one module "m".
std::string module(const std::string& parts) { return "{\"modules\": {\"m\": {" + parts + "}}}"; }
std::string ports(const std::string& rest) { return module("\"ports\": {" + rest + "}"); }
std::string cells(const std::string& rest) { return module("\"cells\": {" + rest + "}"); }
std::string nets(const std::string& rest) {
    return module(R"("ports": {"p": {"direction": "input", "bits": [2, 3]}}, "netnames": {)" + rest + "}");
}

// A register in a wrapper, twice in a top, with a stub of the register.
constexpr std::string_view hierarchy = R"({"modules": {
 "DFF": {"attributes": {"blackbox": 1}, "ports": {
   "C": {"direction": "input", "bits": [2]}, "D": {"direction": "input", "bits": [3, 4]},
   "Q": {"direction": "output", "bits": [5]}}, "cells": {"inside": {"type": "X", "connections": {}}}},
 "wrap": {"ports": {"c": {"direction": "input", "bits": [2]}, "d": {"direction": "input", "bits": [3, 4]},
   "q": {"direction": "output", "bits": [5]}, "k": {"direction": "output", "bits": [3]}, "one": {"direction": "output", "bits": ["1"]}},
   "cells": {"ff": {"type": "DFF", "connections": {"C": [2], "D": [3, 4], "Q": [5]}},
             "inv": {"type": "INV", "port_directions": {"A": "input", "Y": "output"}, "connections": {"A": [5], "Y": [6]}}},
   "netnames": {"c": {"bits": [2]}, "d": {"bits": [3, 4]}, "q": {"bits": [5]}}},
 "top": {"ports": {"clk": {"direction": "input", "bits": [2]}, "y": {"direction": "output", "bits": [9]}},
   "cells": {"u1": {"type": "wrap", "connections": {"c": [2], "d": [7, "0"], "q": [8], "k": [10], "one": [11]}},
             "u2": {"type": "wrap", "connections": {"c": [2], "d": [8, 11], "q": [9]}},
             "sink": {"type": "S", "connections": {"A": [10]}}},
   "netnames": {"clk": {"bits": [2]}, "a": {"bits": [7]}, "b": {"bits": [8]}, "y": {"bits": [9]}}}
}})";

TEST(JsonNetlist, GivesPortsCellsAndNets) {
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"nothing in the module", module(""), "m:\nnets:\n"},
        {"ports of all directions",
         ports(R"("i": {"direction": "input", "bits": [2]}, "o": {"direction": "output", "bits": [3]},
                  "b": {"direction": "inout", "bits": [4]})"),
         "m:\nport i<$2\nport o>$3\nport b=$4\nnets: $2 $3 $4\n"},
        {"a vector", ports(R"("p": {"direction": "input", "bits": [2, 3]})"),
         "m:\nport p[0]<$2\nport p[1]<$3\nnets: $2 $3\n"},
        {"a vector that does not begin at 0",
         ports(R"("p": {"direction": "input", "bits": [2, 3], "offset": 4})"),
         "m:\nport p[4]<$2\nport p[5]<$3\nnets: $2 $3\n"},
        {"a vector that runs up",
         ports(R"("p": {"upto": 1, "offset": 4, "direction": "input", "bits": [2, 3]})"),
         "m:\nport p[5]<$2\nport p[4]<$3\nnets: $2 $3\n"},
        {"below zero", ports(R"("p": {"direction": "input", "bits": [2, 3], "offset": -1})"),
         "m:\nport p[-1]<$2\nport p[0]<$3\nnets: $2 $3\n"},
        {"one bit has no number", ports(R"("p": {"direction": "input", "bits": [2], "offset": 4})"),
         "m:\nport p<$2\nnets: $2\n"},
        {"a port without bits", ports(R"("p": {"direction": "input", "bits": []})"), "m:\nport p<-\nnets:\n"},
        {"constants are no nets", ports(R"("p": {"direction": "input", "bits": ["0", "1", "x", "z", 7]})"),
         "m:\nport p[0]<-\nport p[1]<-\nport p[2]<-\nport p[3]<-\nport p[4]<$7\nnets: $7\n"},
        {"a cell", cells(R"("c": {"type": "T", "port_directions": {"A": "input", "Y": "output", "P": "inout"},
                            "connections": {"A": [2], "Y": [3], "P": [2]}})"),
         "m:\nT c A<$2 Y>$3 P=$2\nnets: $2 $3\n"},
        {"parts of a cell in another order",
         cells(R"("c": {"connections": {"A": [2], "Y": [3]}, "port_directions": {"Y": "output", "A": "input"},
                  "type": "T"})"),
         "m:\nT c A<$2 Y>$3\nnets: $2 $3\n"},
        {"without directions", cells(R"("c": {"type": "T", "connections": {"A": [2]}})"),
         "m:\nT c A?$2\nnets: $2\n"},
        {"pins without a net",
         cells(
             R"("c": {"type": "T", "port_directions": {"B": "output"}, "connections": {"A": [], "C": ["x"]}})"),
         "m:\nT c A?- C?- B>-\nnets:\n"},
        {"a wide pin", cells(R"("c": {"type": "T", "connections": {"A": [2, "0", 3]}})"),
         "m:\nT c A[0]?$2 A[1]?- A[2]?$3\nnets: $2 $3\n"},
        {"a cell of no pins", cells(R"("c": {"type": "T"})"), "m:\nT c\nnets:\n"},
        {"the shortest name of a net",
         nets(R"("bbb": {"bits": [2]}, "cc": {"bits": [2]}, "ddd": {"bits": [2]})"),
         "m:\nport p[0]<cc\nport p[1]<$3\nnets: cc $3\n"},
        {"the first of the short ones",
         nets(R"("bc": {"bits": [2]}, "b[": {"bits": [2]}, "bd": {"bits": [2]})"),
         "m:\nport p[0]<b[\nport p[1]<$3\nnets: b[ $3\n"},
        {"names of vectors", nets(R"("v": {"bits": [3, 2], "offset": 8, "upto": 1})"),
         "m:\nport p[0]<v[8]\nport p[1]<v[9]\nnets: v[8] v[9]\n"},
        {"names of constants", nets(R"("v": {"bits": ["0", 3, "x"]})"),
         "m:\nport p[0]<$2\nport p[1]<v[1]\nnets: $2 v[1]\n"},
        {"a net without anything at it", nets(R"("v": {"bits": [99]})"),
         "m:\nport p[0]<$2\nport p[1]<$3\nnets: $2 $3 v\n"},
        {"escapes of JSON", nets(R"("a\\b\"\u00e4\/[1]": {"bits": [2]})"),
         "m:\nport p[0]<a\\b\"\xc3\xa4/[1]\nport p[1]<$3\nnets: a\\b\"\xc3\xa4/[1] $3\n"},
        {"what is not used, of any shape",
         R"({"creator": [1, {"modules": 2}], "models": {"x": [[[]]]}, "modules": {"m": {"settings": {"cells": 5},
             "attributes": {"src": null, "keep": {"top": 1}}, "parameter_default_values": {"a": 1.5e3},
             "cells": {"c": {"hide_name": 1, "type": "T", "model": "x", "parameters": {"connections": [true]},
             "attributes": {"type": 7}, "connections": {}}}, "memories": {"cells": {}}}}, "end": false})",
         "m:\nT c\nnets:\n"},
        {"the numbers of nets are any",
         ports(R"("p": {"direction": "input", "bits": [0, 9007199254740993]})"),
         "m:\nport p[0]<$0\nport p[1]<$9007199254740993\nnets: $0 $9007199254740993\n"},
        {"two nets of a name", nets(R"("v": {"bits": [2, 9]}, "v[1]": {"bits": [3]})"),
         "warning: more than one of the nets is named 'v[1]'\n"
         "m:\nport p[0]<v[0]\nport p[1]<v[1]\nnets: v[0] v[1] v[1]\n"},
        {"hierarchy", std::string(hierarchy),
         "top:\nport clk<clk\nport y>y\n"
         "DFF u1/ff C<clk D[0]<a D[1]<- Q>b\nINV u1/inv A<b Y>u1/$6\n"
         "DFF u2/ff C<clk D[0]<b D[1]<- Q>y\nINV u2/inv A<y Y>u2/$6\n"
         "S sink A?a\n"
         "nets: clk y a b u1/$6 u2/$6\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

// A leaf is a module without cells whose ports are not joined.
TEST(JsonNetlist, TakesTheWidthsOfLeavesAndJoinsThroughWires) {
    const std::string leaf = R"("L": {"ports": {"A": {"direction": "input", "bits": [2, 3], "offset": 3},
                                               "Y": {"direction": "output", "bits": [4]}}, "cells": {}})";
    const std::string wire = R"("W": {"ports": {"a": {"direction": "input", "bits": [2]},
                                               "y": {"direction": "output", "bits": [2]}}})";
    const struct {
        const char* what;
        std::string modules, expected;
    } rows[] = {
        {"a wide pin",
         leaf + R"(, "m": {"cells": {"c": {"type": "L", "connections": {"Y": [2], "A": [3, 4]}}}})",
         "m:\nL c Y>$2 A[3]<$3 A[4]<$4\nnets: $2 $3 $4\n"},
        {"not connected", leaf + R"(, "m": {"cells": {"c": {"type": "L", "connections": {"A": []}}}})",
         "m:\nL c A[3]<- A[4]<-\nnets:\n"},
        {"too narrow", leaf + R"(, "m": {"cells": {"c": {"type": "L", "connections": {"A": [2]}}}})",
         "2:122: warning: port 'A' of cell 'c' has 2 bits, its connection has 1\n"
         "m:\nL c A[3]<$2 A[4]<-\nnets: $2\n"},
        {"wires through a module",
         wire + R"(, "m": {"cells": {"w": {"type": "W", "connections": {"a": [2], "y": [3]}},
                                     "c": {"type": "L", "connections": {"A": [3], "Y": [2]}}},
                           "netnames": {"n": {"bits": [3]}}})",
         "m:\nL c A?n Y?n\nnets: n\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read("{\"modules\": {" + row.modules + "}}"), row.expected) << row.what;
}

TEST(JsonNetlist, ChoosesTheTop) {
    const std::string leaf = R"("leaf": {"ports": {}})";
    const auto with = [](const std::string& name, const std::string& type,
                         const std::string& attributes = "") {
        return "\"" + name + "\": {\"attributes\": {" + attributes + "}, \"cells\": {\"c\": {\"type\": \"" +
               type + "\"}}}";
    };
    const struct {
        const char* what;
        std::string modules, top, expected;
    } rows[] = {
        {"the only one", with("a", "T"), "", "a:\nT c\nnets:\n"},
        {"the only one, without anything", leaf, "", "leaf:\nnets:\n"},
        {"the one that no other uses", with("b", "T") + "," + with("a", "b"), "", "a:\nT c/c\nnets:\n"},
        {"leaves that no one uses do not count", leaf + "," + with("a", "T"), "", "a:\nT c\nnets:\n"},
        {"marked", with("a", "T") + "," + with("b", "U", R"("top": "00000000000000000000000000000001")"), "",
         "b:\nU c\nnets:\n"},
        {"marked by a number", with("a", "T") + "," + with("b", "U", R"("top": 1)"), "", "b:\nU c\nnets:\n"},
        {"marked by zero", with("a", "T", R"("top": "0000")") + "," + with("b", "a"), "",
         "b:\nT c/c\nnets:\n"},
        {"asked for", with("a", "T") + "," + with("b", "a", R"("top": 1)"), "a", "a:\nT c\nnets:\n"},
        {"asked for, and not there", with("a", "T") + "," + with("b", "a"), "c",
         "error: there is no module 'c', only 'a', 'b'"},
        {"two", with("a", "T") + "," + with("b", "U"), "",
         "error: more than one module may be the top: give its name by --top, one of 'a', 'b'"},
        {"two that are marked", with("a", "T", R"("top": 1)") + "," + with("b", "U", R"("top": 1)"), "",
         "error: more than one module may be the top: give its name by --top, one of 'a', 'b'"},
        {"none", "", "", "error: there is no module"},
        {"each in another", with("a", "b") + "," + with("b", "a"), "",
         "error: each module is instantiated by another one: give the name of the top by --top, one of 'a', "
         "'b'"},
        {"in itself", with("a", "a"), "", "1:48: error: a module instantiates itself: 'a' -> 'a'"},
        {"a ring below",
         with("t", "a") + ",\n" + with("a", "b") + ",\n" + with("b", "c") + ",\n" + with("c", "a"), "",
         "4:35: error: a module instantiates itself: 'a' -> 'b' -> 'c' -> 'a'"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read("{\"modules\": {" + row.modules + "}}", row.top), row.expected) << row.what;
}

TEST(JsonNetlist, TellsWhatIsWrong) {
    const struct {
        std::string text, expected;
    } rows[] = {
        {"", "1:1: error: not JSON: unexpected end of input; expected '[', '{', or a literal"},
        {"[]", "1:1: error: the file: expected an object, found an array"},
        {"7", "1:1: error: the file: expected an object, found a number"},
        {"{}", "error: expected an object 'modules'"},
        {"{\"modules\": []}", "1:13: error: modules: expected an object, found an array"},
        {"{\"modules\":\n {\"m\":\n  null}}", "3:3: error: module 'm': expected an object, found null"},
        {module("\"ports\": 1"), "1:29: error: ports of module 'm': expected an object, found a number"},
        {module("\"cells\": []"), "1:29: error: cells of module 'm': expected an object, found an array"},
        {module("\"netnames\": \"a\""),
         "1:32: error: netnames of module 'm': expected an object, found \"a\""},
        {module(R"("attributes": {"top": "yes"})"), "1:42: error: attributes of module 'm': expected a "
                                                    "number, or a string of binary digits, found \"yes\""},
        {ports("\"p\": {\"direction\": \"in\"}"),
         "1:49: error: direction of port 'p': expected \"input\", \"output\" or \"inout\", found \"in\""},
        {ports("\"p\": {\"direction\": \"input\"}"), "1:30: error: port 'p': expected bits"},
        {ports("\"p\": {\"bits\": [2]}"), "1:30: error: port 'p': expected a direction"},
        {ports("\"p\": {\"bits\": 2}"),
         "1:44: error: bits of port 'p': expected an array of bits, found a number"},
        {ports("\"p\": {\"bits\": [2,\n 2.5]}"), "2:2: error: bits of port 'p': expected the number of a "
                                                 "net, or \"0\", \"1\", \"x\" or \"z\", found a fraction"},
        {ports("\"p\": {\"bits\": [\"y\"]}"), "1:45: error: bits of port 'p': expected the number of a net, "
                                              "or \"0\", \"1\", \"x\" or \"z\", found \"y\""},
        {ports("\"p\": {\"bits\": [[2]]}"), "1:45: error: bits of port 'p': expected the number of a net, or "
                                            "\"0\", \"1\", \"x\" or \"z\", found an array"},
        {ports("\"p\": {\"bits\": [-1]}"), "1:45: error: bits of port 'p': expected the number of a net, or "
                                           "\"0\", \"1\", \"x\" or \"z\", found a number"},
        {ports("\"p\": {\"offset\": \"1\"}"),
         "1:46: error: offset of port 'p': expected an integer, found \"1\""},
        {ports("\"p\": {\"upto\": \"1\"}"),
         "1:44: error: upto of port 'p': expected an integer, found \"1\""},
        {nets("\"n\": {\"bits\": [2], \"offset\": 2147483647}"),
         "1:89: error: net 'n' has bits whose indices are out of range"},
        {cells("\"c\": {\"type\": 5}"), "1:44: error: type of cell 'c': expected a string, found a number"},
        {cells("\"c\": {\"port_directions\": 5}"),
         "1:55: error: port_directions of cell 'c': expected an object, found a number"},
        {ports(R"("p": {"direction": "input", "bits": [2], "offset": 2147483647})"),
         "1:30: error: port 'p' has bits whose indices are out of range"},
        {ports(R"("p": {"direction": "input", "bits": [2]}, "p": {"direction": "input", "bits": [2]})"),
         "1:72: error: port 'p' is there twice"},
        {nets("\"n\": {}"), "1:89: error: net 'n': expected bits"},
        {nets("\"n\": {\"bits\": {}}"),
         "1:103: error: bits of net 'n': expected an array of bits, found an object"},
        {cells("\"c\": {}"), "1:30: error: cell 'c': expected a type"},
        {cells("\"c\": 5"), "1:35: error: cell 'c': expected an object, found a number"},
        {cells("\"c\": {\"type\": [\"T\"]}"),
         "1:44: error: type of cell 'c': expected a string, found an array"},
        {cells("\"c\": {\"connections\": []}"),
         "1:51: error: connections of cell 'c': expected an object, found an array"},
        {cells("\"c\": {\"connections\": {\"A\": 2}}"),
         "1:57: error: connection 'A' of cell 'c': expected an array of bits, found a number"},
        {cells("\"c\": {\"connections\": {\"A\": [true]}}"),
         "1:58: error: connection 'A' of cell 'c': expected the number of a net, or \"0\", \"1\", \"x\" or "
         "\"z\", "
         "found a boolean"},
        {cells("\"c\": {\"connections\": {\"A\": [2], \"A\": [3]}}"),
         "1:62: error: connection 'A' of cell 'c' is there twice"},
        {cells("\"c\": {\"port_directions\": {\"A\": \"unknown\"}}"),
         "1:61: error: direction of pin 'A' of cell 'c': expected \"input\", \"output\" or \"inout\", found "
         "\"unknown\""},
        {cells("\"c\": {\"port_directions\": {\"A\": \"input\", \"A\": \"input\"}}"),
         "1:75: error: direction of pin 'A' of cell 'c' is there twice"},
        {cells("\"c\": {\"type\": \"T\"}, \"c\": {\"type\": \"T\"}"), "1:50: error: cell 'c' is there twice"},
        {"{\"modules\": {\"m\": {}, \"m\": {}}}", "1:23: error: module 'm' is there twice"},
        {"{\"modules\": {\"m\": {}}} x", "1:24: error: not JSON: invalid literal; expected end of input"},
        {"{\"modules\": {\"m\": {}\n} y", "2:3: error: not JSON: invalid literal; expected '}'"},
        {"{\"modules\": {\"m\": {},}}", "1:22: error: not JSON: unexpected '}'; expected string literal"},
        {"{\"modules\" {}}", "1:12: error: not JSON: unexpected '{'; expected ':'"},
        {"{\"modules\": {\"m\n\": {}}}", "1:14: error: not JSON: invalid string: control character U+000A "
                                         "(LF) must be escaped to \\u000A or \\n; "
                                         "expected string literal"},
        {"{\"a\": 1e999}", "1:7: error: not JSON: number overflow parsing '1e999'"},
        {R"({"modules": {"w": {"ports": {"a": {"direction": "input", "bits": [2]}}, "cells": {"i": {"type": "I"}}},
"m": {"cells": {"u": {"type": "w", "connections": {"b": [2]}}}}}})",
         "2:17: error: cell 'u' connects 'b', which is not a port of module 'w'"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text), row.expected) << row.text;
}

// The parser keeps what it has of a token. What nobody needs is not given to it.
TEST(JsonNetlist, LongTextsTakeNoMemoryOrAreRefused) {
    const std::size_t longest = std::size_t{1} << 24, beyond = longest + 200'000;
    const std::string end = ", \"modules\": {\"m\": {\"cells\": {\"c\": {\"type\": 5}}}}}";
    const std::string wrong = ": error: type of cell 'c': expected a string, found a number";
    const auto text = [&](const std::string& repeated) {
        std::string made;
        while (made.size() < beyond)
            made += repeated;
        return made;
    };
    const struct {
        const char* what;
        std::string text, expected;
    } rows[] = {
        {"white space", "{\"x\": 1" + text(" ") + end, "1:16977268"},
        {"lines", "{\"x\": 1" + text("\n ") + end, "8488609:46"},
        {"a string", "{\"x\": \"" + text("x") + "\"" + end, "1:16977269"},
        {"in what is passed over", "{\"x\": [{\"y\": \"" + text("x") + "\"}]" + end, "1:16977278"},
        {"an escape now and then",
         "{\"x\": \"" + text(std::string(65'000, 'x') + "\\\"\\\\\\ud83d\\ude00\xc3\xa4") + "\"" + end, ""},
        {"a name of what is passed over", "{\"x\": {\"" + text("x") + "\": 1}" + end, "1:16977274"},
    };
    for (const auto& row : rows) {
        const std::string result = read(row.text);
        EXPECT_EQ(result.substr(result.find(": error")), wrong) << row.what;
        if (!row.expected.empty()) {
            EXPECT_EQ(result, row.expected + wrong) << row.what;
        }
    }
    const struct {
        const char* what;
        std::string text, expected;
    } errors[] = {
        {"a line's end in a string", "{\"x\": \"" + text("x") + "\n\"" + end,
         "1:7: error: not JSON: invalid string: control character U+000A (LF) must be escaped to \\u000A or "
         "\\n"},
        {"no end", "{\"x\": \"" + text("x"), "1:7: error: not JSON: invalid string: missing closing quote"},
        {"nothing but escapes", "{\"x\": \"" + text("\\n") + "\"" + end,
         "1:7: error: a text of more than 16777216 bytes"},
        {"a name", "{\"modules\": {\"" + text("x") + "\": {}}}",
         "1:14: error: a text of more than 16777216 bytes"},
        {"a number", "{\"x\": 1" + text("0") + end, "1:7: error: a text of more than 16777216 bytes"},
    };
    for (const auto& row : errors)
        EXPECT_EQ(read(row.text), row.expected) << row.what;
}

TEST(JsonNetlist, HasLimits) {
    std::string bits = "2";
    for (std::size_t i = 0; i < (std::size_t{1} << 20); ++i)
        bits += ",2";
    EXPECT_EQ(read(ports("\"p\": {\"bits\": [" + bits + "]}")),
              "1:2097197: error: bits of port 'p': expected at most 1048576 bits");
    const std::size_t deep = 1'000'010;
    EXPECT_EQ(read("{\"x\": " + std::string(deep, '[')),
              "1:1000007: error: more than 1000000 arrays and objects within each other");
}

TEST(JsonNetlist, SeveralErrorsAreReportedAtOnce) {
    EXPECT_EQ(
        read(R"({"modules": {"m": {"ports": {
"p": {"direction": "in", "bits": [2]},
"q": {"direction": "input", "bits": 3},
"r": {"direction": "input"}},
"cells": {"c": {"type": 5, "connections": {"A": ["y", "w"]}},
"d": {"type": "T", "connections": {"A": [2], "A": [true]}},
"d": {"type": 7},
"e": 1},
"netnames": 5}, "m": {"ports": 6}, "n": 7},})"),
        "2:20: error: direction of port 'p': expected \"input\", \"output\" or \"inout\", found \"in\"\n"
        "3:37: error: bits of port 'q': expected an array of bits, found a number\n"
        "4:1: error: port 'r': expected bits\n"
        "5:25: error: type of cell 'c': expected a string, found a number\n"
        "5:50: error: connection 'A' of cell 'c': expected the number of a net, or \"0\", \"1\", \"x\" or "
        "\"z\", found \"y\"\n"
        "5:55: error: connection 'A' of cell 'c': expected the number of a net, or \"0\", \"1\", \"x\" or "
        "\"z\", found \"w\"\n"
        "6:46: error: connection 'A' of cell 'd' is there twice\n"
        "7:1: error: cell 'd' is there twice\n"
        "8:6: error: cell 'e': expected an object, found a number\n"
        "9:13: error: netnames of module 'm': expected an object, found a number\n"
        "9:17: error: module 'm' is there twice\n"
        "9:41: error: module 'n': expected an object, found a number\n"
        "9:44: error: not JSON: unexpected '}'; expected string literal");
}

TEST(JsonNetlist, EveryBeginningIsAnError) {
    for (std::size_t size = 0; size < hierarchy.size(); ++size) {
        const std::string result = read(hierarchy.substr(0, size));
        EXPECT_NE(result.find("error: not JSON: "), std::string::npos) << size << ": " << result;
    }
}

TEST(JsonNetlist, PlacesAreRightBeyondABlock) {
    constexpr std::size_t block = 65'536;
    for (std::size_t before = block - 40; before < block + 10; ++before) {
        const std::string line = "{\"creator\": \"" + std::string(before, 'x') + "\",\n";
        EXPECT_EQ(read(line + "  \"modules\": 5}"),
                  "2:14: error: modules: expected an object, found a number")
            << before;
        const std::string column = std::to_string(line.size() + 13);
        EXPECT_EQ(read(line.substr(0, line.size() - 1) + "  \"modules\": 5}"),
                  "1:" + column + ": error: modules: expected an object, found a number");
    }
}

TEST(JsonNetlist, BearsDepth) {
    constexpr std::size_t deep = 100'000;
    std::string chain, brackets = "{\"x\": " + std::string(deep, '[') + std::string(deep, ']') +
                                  ", \"modules\": {\"m\": {}}}";
    for (std::size_t i = 0; i < deep; ++i)
        chain += (i == 0 ? "" : ",") + ("\"m" + std::to_string(i) + "\": {\"cells\": {\"u\": {\"type\": \"m" +
                                        std::to_string(i + 1) + "\"}}}");
    EXPECT_EQ(read(brackets), "m:\nnets:\n");
    EXPECT_EQ(read("{\"modules\": {" + chain + "}}"),
              "error: the hierarchy has 100000 levels, more than 1000");
}

TEST(JsonNetlist, TheNameOrTheFirstByteTellsTheFormat) {
    const std::string json = " \n" + module(""), verilog = "module v; endmodule";
    const struct {
        const char* ending;
        std::string text, expected;
    } rows[] = {
        {".json", json, "m"},        {".json.gz", json, "m"}, {".v", verilog, "v"},
        {".v.gz", verilog, "v"},     {"", json, "m"},         {"", verilog, "v"},
        {".txt", json, "m"},         {".txt", verilog, "v"},  {"", std::string(100'000, ' ') + verilog, "v"},
        {".json", verilog, "error"}, {".v", json, "error"},   {"", "", "error"},
    };
    for (const auto& row : rows) {
        const InputFile plain("");
        const std::string path = plain.path() + row.ending;
        std::ofstream(path) << row.text;
        Base::Diagnostics diagnostics;
        std::string top = "error";
        try {
            top = Readers::readNetlist(path, "", diagnostics).top;
        } catch (const Base::BadInput&) {
            EXPECT_EQ(row.expected, "error");
        }
        EXPECT_EQ(top, row.expected) << row.ending << " " << row.text.substr(0, 20);
        std::filesystem::remove(path);
    }
}

} // namespace
