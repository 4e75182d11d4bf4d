// What is no SDF: the place and the message for each fault.
#include "readers/sdf/Parser.h"

#include "Parsed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Base::BadInput;
using Base::Diagnostics;
using Base::Source;
using Support::checkOf;
using Support::delayOf;
using Support::InputFile;
using Support::refusal;

namespace {

using namespace std::string_view_literals;

struct Fault {
    std::string_view text;
    std::string message;
};

TEST(ParserFaults, FaultsOfTheFile) {
    const Fault rows[] = {
        {"", "1:1: expected '(', found the end of the file"},
        {" \n ", "2:2: expected '(', found the end of the file"},
        {"DELAYFILE", "1:1: expected '(', found 'DELAYFILE'"},
        {"(", "1:2: expected a keyword, found the end of the file"},
        {"()", "1:2: expected a keyword, found ')'"},
        {"(LIBRARY)", "1:2: expected DELAYFILE, found 'LIBRARY'"},
        {"(DELAYFILES)", "1:2: expected DELAYFILE, found 'DELAYFILES'"},
        {"(DELAYFILE", "1:11: expected ')', found the end of the file"},
        {"(DELAYFILE\n", "2:1: expected ')', found the end of the file"},
        {"(DELAYFILE x)", "1:12: expected ')', found 'x'"},
        {"(DELAYFILE))", "1:12: expected the end of the file, found ')'"},
        {"(DELAYFILE) (CELL", "1:13: expected the end of the file, found '('"},
        {"(DELAYFILE)\nmore text", "2:1: expected the end of the file, found 'more'"},
        {"(DELAYFILE)\0"sv, "1:12: expected the end of the file, found byte 0x00"},
        {"(DELAYFILE\0)"sv, "1:11: expected ')', found byte 0x00"},
        {"(\0"sv, "1:2: expected a keyword, found byte 0x00"},
        {"\0"sv, "1:1: expected '(', found byte 0x00"},
        {"\x1b[0m", "1:1: expected '(', found byte 0x1b"},
        {"(DELAYFILE /", "1:12: expected ')', found '/'"},
        {"(DELAYFILE / )", "1:12: expected ')', found '/'"},
        {"(DELAYFILE /* x", "1:16: expected '*/', found the end of the file"},
        {"(DELAYFILE /* *", "1:16: expected '*/', found the end of the file"},
        {"(DELAYFILE /* \0 */)"sv, "1:15: expected '*/', found byte 0x00"},
        {"(DELAYFILE // \0\n)"sv, "1:15: expected the end of the line, found byte 0x00"},
        {"(DELAYFILE) // x", "none"},
        {"\xef\xbb\xbf(DELAYFILE)", "none"},
        {"\xef\xbb(DELAYFILE)", "1:3: expected '(', found '('"},
        {" \xbb(DELAYFILE)", "1:2: expected '(', found '\xbb'"},
        {"(DELAYFILE (FOO))", "1:13: expected an entry of the header or CELL, found 'FOO'"},
        {"(DELAYFILE (CELLTYPE \"x\"))", "1:13: expected an entry of the header or CELL, found 'CELLTYPE'"},
        {"(DELAYFILE (\"x\"))", "1:13: expected a keyword, found '\"'"},
        {"(DELAYFILE (3))", "1:13: expected a keyword, found '3'"},
        {"(DELAYFILE (DIVIDER))", "1:20: expected '.' or '/', found ''"},
        {"(DELAYFILE (DIVIDER :))", "1:21: expected '.' or '/', found ':'"},
        {"(DELAYFILE (DIVIDER ./))", "1:21: expected '.' or '/', found './'"},
        {"(DELAYFILE (DIVIDER //))", "1:25: expected ')', found the end of the file"},
        {"(DELAYFILE (TIMESCALE))", "1:22: expected 1, 10 or 100 and a unit of time, found ''"},
        {"(DELAYFILE (TIMESCALE 1))", "1:23: expected 1, 10 or 100 and a unit of time, found '1'"},
        {"(DELAYFILE (TIMESCALE ns))", "1:23: expected 1, 10 or 100 and a unit of time, found 'ns'"},
        {"(DELAYFILE (TIMESCALE 5 ns))", "1:23: expected 1, 10 or 100 and a unit of time, found '5 ns'"},
        {"(DELAYFILE (TIMESCALE 1000ns))", "1:23: expected 1, 10 or 100 and a unit of time, found '1000ns'"},
        {"(DELAYFILE (TIMESCALE 1e2 ns))", "1:23: expected 1, 10 or 100 and a unit of time, found '1e2 ns'"},
        {"(DELAYFILE (TIMESCALE 1 hour))", "1:23: expected 1, 10 or 100 and a unit of time, found '1 hour'"},
        {"(DELAYFILE (TIMESCALE 1ns x))", "1:23: expected 1, 10 or 100 and a unit of time, found '1ns x'"},
        {"(DELAYFILE (DESIGN a (b)))", "1:22: expected ')', found '('"},
        {"(DELAYFILE (DESIGN \"a\" b))", "1:24: expected ')', found 'b'"},
        {"(DELAYFILE (DESIGN a \"b\"))", "1:22: expected ')', found '\"'"},
        {"(DELAYFILE (DESIGN a\1))", "1:21: expected ')', found byte 0x01"},
        {"(DELAYFILE (DESIGN \"a", "1:22: expected '\"', found the end of the file"},
        {"(DELAYFILE (DESIGN \"a\nb\"))", "1:22: expected '\"', found the end of the line"},
        {"(DELAYFILE (DESIGN \"a\0\"))"sv, "1:22: expected '\"', found byte 0x00"},
        {"(DELAYFILE (DATE \"a", "1:20: expected '\"', found the end of the file"},
        {"(DELAYFILE (DATE (a)", "1:21: expected ')', found the end of the file"},
        {"(DELAYFILE (DATE \x7f))", "1:18: expected ')', found byte 0x7f"},
    };
    for (const Fault& row : rows)
        EXPECT_EQ(refusal(row.text), row.message) << row.text;
}

TEST(ParserFaults, FaultsOfCells) {
    const Fault rows[] = {
        {"", "1:17: expected '(', found ')'"},
        {"(INSTANCE)", "1:18: expected CELLTYPE, found 'INSTANCE'"},
        {"(CELLTYPE \"T\")", "1:31: expected '(', found ')'"},
        {"(CELLTYPE \"T\")(DELAY)", "1:32: expected INSTANCE, found 'DELAY'"},
        {"(CELLTYPE \"T\")(INSTANCE a b)", "1:43: expected ')', found 'b'"},
        {"(CELLTYPE \"T\")(INSTANCE a*)", "1:42: expected ')', found '*'"},
        {"(CELLTYPE \"T\")(INSTANCE *a)", "1:42: expected ')', found 'a'"},
        {"(CELLTYPE \"T\")(INSTANCE \"a\")", "1:41: expected an instance, found '\"'"},
        {"(CELLTYPE \"T\")(INSTANCE (a))", "1:41: expected an instance, found '('"},
        {"(CELLTYPE \"T\")(INSTANCE a\\\n)",
         "1:43: expected a character behind '\\', found the end of the line"},
        {"(CELLTYPE \"T\")(INSTANCE a)(FOO)",
         "1:44: expected DELAY, TIMINGCHECK, TIMINGENV, LABEL or CORRELATION, found 'FOO'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(CELL)",
         "1:44: expected DELAY, TIMINGCHECK, TIMINGENV, LABEL or CORRELATION, found 'CELL'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(DELAY)(INSTANCE b)",
         "1:51: expected DELAY, TIMINGCHECK, TIMINGENV, LABEL or CORRELATION, found 'INSTANCE'"},
        {"(CELLTYPE \"T\")(INSTANCE a) x", "1:44: expected ')', found 'x'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(DELAY x)", "1:50: expected ')', found 'x'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(DELAY(IOPATH a b (1)))",
         "1:50: expected ABSOLUTE, INCREMENT, PATHPULSE or PATHPULSEPERCENT, found 'IOPATH'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(DELAY(ABSOLUTE x))", "1:59: expected ')', found 'x'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(TIMINGCHECK x)", "1:56: expected ')', found 'x'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(LABEL (a)", "1:55: expected ')', found the end of the file"},
        {"(CELLTYPE \"T\")(INSTANCE a))(DATE \"x\"", "1:45: expected CELL, found 'DATE'"},
        {"(CELLTYPE \"T\")(INSTANCE a)(LABEL \0)"sv, "1:50: expected ')', found byte 0x00"},
    };
    for (const Fault& row : rows)
        EXPECT_EQ(refusal("(DELAYFILE (CELL" + std::string(row.text) + "))"), row.message) << row.text;
}

// The text stands on a line of its own.
TEST(ParserFaults, FaultsOfDelays) {
    const std::string sections = "IOPATH, COND, CONDELSE, PORT, INTERCONNECT, NETDELAY or DEVICE";
    const Fault rows[] = {
        {"(FOO a b (1))", "2:2: expected " + sections + ", found 'FOO'"},
        {"(SETUP a b (1))", "2:2: expected " + sections + ", found 'SETUP'"},
        {"(IOPATHS a b (1))", "2:2: expected " + sections + ", found 'IOPATHS'"},
        {"()", "2:2: expected a keyword, found ')'"},
        {"(IOPATH)", "2:8: expected a port, found ')'"},
        {"(IOPATH a (1))", "2:11: expected a port, found '('"},
        {"(IOPATH a b)", "2:12: expected a value, found ')'"},
        {"(IOPATH a b c (1))", "2:13: expected a value, found 'c'"},
        {"(IOPATH a b 1)", "2:13: expected a value, found '1'"},
        {"(IOPATH a b (1) 2)", "2:17: expected ')', found '2'"},
        {"(IOPATH a b (x))", "2:14: expected RETAIN or a number, found 'x'"},
        {"(IOPATH a b (1) (x))", "2:18: expected a number, found 'x'"},
        {"(IOPATH a b (1) (RETAIN (1)))", "2:18: expected a number, found 'RETAIN'"},
        {"(IOPATH a b (edge))", "2:14: expected RETAIN or a number, found 'edge'"},
        {"(IOPATH (posedge) b (1))", "2:17: expected a port, found ')'"},
        {"(IOPATH (a) b (1))", "2:10: expected an edge, found 'a'"},
        {"(IOPATH (11 a) b (1))", "2:10: expected an edge, found '11'"},
        {"(IOPATH (COND c a) b (1))", "2:10: expected an edge, found 'COND'"},
        {"(IOPATH (posedge a b) b (1))", "2:20: expected ')', found 'b'"},
        {"(IOPATH a (posedge b) (1))", "2:11: expected a port, found '('"},
        {"(IOPATH () b (1))", "2:10: expected an edge, found ')'"},
        {"(PORT a/ (1))", "2:10: expected a pin behind the divider, found '('"},
        {"(PORT a. (1))", "2:10: expected a pin behind the divider, found '('"},
        {"(PORT a@b (1))", "2:8: expected a value, found '@b'"},
        {"(PORT @ (1))", "2:7: expected a port, found '@'"},
        {"(PORT [3] (1))", "2:7: expected a port, found '[3]'"},
        {"(PORT a[3 (1))", "2:11: expected ']', found '('"},
        {"(PORT a[3;] (1))", "2:10: expected ']', found ';]'"},
        {"(PORT \\\t (1))", "2:8: expected a character behind '\\', found byte 0x09"},
        {"(PORT a\0b (1))"sv, "2:8: expected a value, found byte 0x00"},
        {"(PORT \"a\" (1))", "2:7: expected a port, found '\"'"},
        {"(PORT a (1)(2)(3)(4))", "2:21: expected 1, 2, 3, 6 or 12 values, found 4"},
        {"(PORT a ()()()()())", "2:19: expected 1, 2, 3, 6 or 12 values, found 5"},
        {"(PORT a ()()()()()()())", "2:23: expected 1, 2, 3, 6 or 12 values, found 7"},
        {"(PORT a ()()()()()()()()()()())", "2:31: expected 1, 2, 3, 6 or 12 values, found 11"},
        {"(PORT a ()()()()()()()()()()()()())", "2:33: expected 1, 2, 3, 6 or 12 values, found more"},
        {"(PORT a (1:2))", "2:13: expected ':', found ')'"},
        {"(PORT a (1:2:3:4))", "2:15: expected ')', found ':4'"},
        {"(PORT a (1 2))", "2:12: expected ':' or ')', found '2'"},
        {"(PORT a (1:x:3))", "2:12: expected a number, found 'x:3'"},
        {"(PORT a (1,2))", "2:11: expected ':' or ')', found ',2'"},
        {"(PORT a (-))", "2:10: expected a number, found '-'"},
        {"(PORT a (1.2.3))", "2:10: expected a number, found '1.2.3'"},
        {"(PORT a (1e))", "2:10: expected a number, found '1e'"},
        {"(PORT a (1ns))", "2:10: expected a number, found '1ns'"},
        {"(PORT a (0x1F))", "2:10: expected a number, found '0x1F'"},
        {"(PORT a (1)", "3:1: expected ')', found 'x'"},
        {"(PORT a ((1) (2) (3) (4)))", "2:22: expected ')', found '('"},
        {"(PORT a ((1) 2))", "2:14: expected ')', found '2'"},
        {"(PORT a (((1))))", "2:11: expected a number, found '('"},
        {"(DEVICE)", "2:8: expected a value, found ')'"},
        {"(DEVICE a)", "2:10: expected a value, found ')'"},
        {"(INTERCONNECT a (1))", "2:17: expected a port, found '('"},
        {"(COND (IOPATH a b (1)))", "2:15: expected an operator or ')', found 'a'"},
        {"(COND ((b + c) == 2'b01 (IOPATH a b (1)))", "2:33: expected an operator or ')', found 'a'"},
        {"(COND (b (IOPATH (posedge a) b (1)))", "2:27: expected an operator or ')', found 'a'"},
        {"(COND b) == c (IOPATH a b (1)))", "2:8: expected '(', found ')'"},
        {"(COND b[1 (IOPATH a b (1)))", "2:19: expected an operator or ')', found 'a'"},
        {"(COND b[1 c] (IOPATH a b (1)))", "2:11: expected an operator or ']', found 'c]'"},
        {"(COND b[1) (IOPATH a b (1)))", "2:10: expected ']', found ')'"},
        {"(COND {b, c] (IOPATH a b (1)))", "2:12: expected '}', found ']'"},
        {"(COND b] (IOPATH a b (1)))", "2:8: expected a condition, found ']'"},
        {"(COND (b && ) (IOPATH a b (1)))", "2:13: expected a condition, found ')'"},
        {"(COND (b \"c\") (IOPATH a b (1)))", "2:10: expected an operator or ')', found '\"'"},
        {"(COND)", "2:6: expected a condition, found ')'"},
        {"(COND a)", "2:8: expected '(', found ')'"},
        {"(COND a &&)", "2:11: expected a condition, found ')'"},
        {"(COND a (PORT a (1)))", "2:10: expected IOPATH, found 'PORT'"},
        {"(COND a b (IOPATH a b (1)))", "2:9: expected '(', found 'b'"},
        {"(COND a \"b\" (IOPATH a b (1)))", "2:9: expected a condition, found '\"'"},
        {"(COND a (IOPATH a b (1)) x)", "2:26: expected ')', found 'x'"},
        {"(COND a && \0 (IOPATH a b (1)))"sv, "2:12: expected ')', found byte 0x00"},
        {"(CONDELSE a (IOPATH a b (1)))", "2:11: expected '(', found 'a'"},
        {"(CONDELSE (IOPATH a b (1)) x)", "2:28: expected ')', found 'x'"},
    };
    for (const Fault& row : rows)
        EXPECT_EQ(refusal(delayOf("\n" + std::string(row.text) + "\nx")), row.message) << row.text;
}

TEST(ParserFaults, FaultsOfTimingChecks) {
    const Fault rows[] = {
        {"(FOO a b (1))", "2:2: expected a timing check, found 'FOO'"},
        {"(IOPATH a b (1))", "2:2: expected a timing check, found 'IOPATH'"},
        {"(COND a (SETUP a b (1)))", "2:2: expected a timing check, found 'COND'"},
        {"(SETUP)", "2:7: expected a port, found ')'"},
        {"(SETUP a (1))", "2:11: expected an edge, found '1'"},
        {"(SETUP a b)", "2:11: expected a value, found ')'"},
        {"(SETUP a b (1) (2))", "2:16: expected ')', found '('"},
        {"(SETUP a b (x))", "2:13: expected a number, found 'x'"},
        {"(SETUP a b ((1)))", "2:13: expected a number, found '('"},
        {"(SETUP (bothedge a) b (1))", "2:9: expected an edge, found 'bothedge'"},
        {"(SETUP (COND a) b (1))", "2:15: expected a port, found ')'"},
        {"(SETUP (COND) b (1))", "2:13: expected a condition, found ')'"},
        {"(SETUP (COND a b c) b (1))", "2:18: expected ')', found 'c'"},
        {"(SETUP (COND a (b)) b (1))", "2:17: expected an edge, found 'b'"},
        {"(SETUP (COND a == 1'b1) b (1))", "2:23: expected a port, found ')'"},
        {"(SETUPHOLD a b (1))", "2:19: expected a value, found ')'"},
        {"(SETUPHOLD a b (1) (2) (3))", "2:25: expected a keyword, found '3'"},
        {"(SETUPHOLD a b (1) (2) (COND x))", "2:25: expected SCOND or CCOND, found 'COND'"},
        {"(SETUPHOLD a b (1) (2) (SCOND))", "2:30: expected a condition, found ')'"},
        {"(SETUPHOLD a b (1) (2) (SCOND x y))", "2:33: expected ')', found 'y'"},
        {"(WIDTH a b (1))", "2:10: expected a value, found 'b'"},
        {"(PERIOD a)", "2:10: expected a value, found ')'"},
        {"(BIDIRECTSKEW a b (1))", "2:22: expected a value, found ')'"},
    };
    for (const Fault& row : rows)
        EXPECT_EQ(refusal(checkOf("\n" + std::string(row.text) + "\nx")), row.message) << row.text;
}

TEST(ParserFaults, QuotesTheBeginningOfALongText) {
    const std::string junk(1'000, '@');
    EXPECT_EQ(refusal("(DELAYFILE " + junk + ")"),
              "1:12: expected ')', found '" + std::string(40, '@') + "...'");
}

TEST(ParserFaults, RefusesATextWithoutEnd) {
    const std::string longText((std::size_t{1} << 20) + 1, 'a');
    const std::string message = "a text of more than 1048576 characters";
    for (const std::string& text :
         {"(DELAYFILE(DESIGN \"" + longText + "\"))", "(DELAYFILE(DESIGN " + longText + "))",
          delayOf("(PORT " + longText + "(1))"), delayOf("(" + longText + " a (1))"),
          delayOf("(PORT a (" + std::string(longText.size(), '1') + "))")})
        EXPECT_THAT(refusal(text, 4'096), testing::EndsWith(message));
}

TEST(ParserFaults, AreToldWithTheNameOfTheFile) {
    const InputFile file("(DELAYFILE\n  x)");
    Source source(file.path());
    Readers::Sdf::Handler nothing;
    Diagnostics diagnostics;
    try {
        Readers::Sdf::parse(source, nothing, diagnostics);
        ADD_FAILURE();
    } catch (const BadInput& error) {
        EXPECT_EQ(error.what(), file.path() + ":2:3: error: expected ')', found 'x'");
    }
}

} // namespace
