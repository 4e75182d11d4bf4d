// The interpreter: what a script may do, what it may not, and where its errors stand.
#include "tests/support/command/Script.h"

#include "readers/sdc/Folder.h"

#include <chrono>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using Support::Row;
using Support::TemporaryFolder;

namespace {

constexpr std::chrono::milliseconds aMoment{100};

class SdcScripts : public testing::TestWithParam<Row> {};

TEST_P(SdcScripts, SayTheExpected) {
    EXPECT_EQ(Support::run(GetParam().script).allMessages(), GetParam().expected) << GetParam().script;
}

const Row language[] = {
    {"", ""},
    {"# only a comment\n\n", ""},
    {"puts -nonewline {a b}; puts stdout c", "x.sdc:1: note: puts: a b\nx.sdc:1: note: puts: c\n"},
    {"set d [dict create a 1]\nputs [string toupper x[dict get $d a]]", "x.sdc:2: note: puts: X1\n"},
    {"if {[catch {set_false_path} text]} { puts $text }",
     "x.sdc:1: note: puts: set_false_path: needs -from, -through or -to\n"},
    {"puts a\r\nputs \\\r\n b\r\nputs c\r\n",
     "x.sdc:1: note: puts: a\nx.sdc:2: note: puts: b\nx.sdc:4: note: puts: c\n"},
    {"\xEF\xBB\xBFputs a", "x.sdc:1: note: puts: a\n"},
    {"puts \"a\x1b\\[31m\tb\"\nputs {c\nd}",
     "x.sdc:1: note: puts: a\\x1B[31m\\x09b\nx.sdc:2: note: puts: c\nd\n"},
    {"for {set i 0} {$i < 3} {incr i} {\n  if {$i == 1} continue\n  puts $i\n}",
     "x.sdc:3: note: puts: 0\nx.sdc:3: note: puts: 2\n"},
};
INSTANTIATE_TEST_SUITE_P(Language, SdcScripts, testing::ValuesIn(language));

const Row refused[] = {
    {"exec ls", "x.sdc:1: error: 'exec' is not available in a constraint file\n"},
    {"\n::exec ls", "x.sdc:2: error: 'exec' is not available in a constraint file\n"},
    {"set f [open /etc/passwd]", "x.sdc:1: error: 'open' is not available in a constraint file\n"},
    {"open |ls", "x.sdc:1: error: 'open' is not available in a constraint file\n"},
    {"socket localhost 80", "x.sdc:1: error: 'socket' is not available in a constraint file\n"},
    {"load libfoo.so", "x.sdc:1: error: 'load' is not available in a constraint file\n"},
    {"cd /", "x.sdc:1: error: 'cd' is not available in a constraint file\n"},
    {"glob *", "x.sdc:1: error: 'glob' is not available in a constraint file\n"},
    {"file delete x", "x.sdc:1: error: 'file' is not available in a constraint file\n"},
    {"after 1000", "x.sdc:1: error: 'after' is not available in a constraint file\n"},
    {"vwait x", "x.sdc:1: error: 'vwait' is not available in a constraint file\n"},
    {"update", "x.sdc:1: error: 'update' is not available in a constraint file\n"},
    {"exit", "x.sdc:1: error: 'exit' is not available in a constraint file\n"},
    {"interp create", "x.sdc:1: error: 'interp' is not available in a constraint file\n"},
    {"package require x", "x.sdc:1: error: 'package' is not available in a constraint file\n"},
    {"pid", "x.sdc:1: error: 'pid' is not available in a constraint file\n"},
    {"encoding system", "x.sdc:1: error: 'encoding' is not available in a constraint file\n"},
    {"fconfigure stdin", "x.sdc:1: error: 'fconfigure' is not available in a constraint file\n"},
    {"gets stdin", "x.sdc:1: error: 'gets' is not available in a constraint file\n"},
    {"rename puts x", "x.sdc:1: error: 'rename' is not available in a constraint file\n"},
    {"trace add x", "x.sdc:1: error: 'trace' is not available in a constraint file\n"},
    {"namespace delete ::", "x.sdc:1: error: 'namespace' is not available in a constraint file\n"},
    {"coroutine x y", "x.sdc:1: error: 'coroutine' is not available in a constraint file\n"},
    {"clock seconds", "x.sdc:1: error: 'clock' is not available in a constraint file\n"},
    {"::tcl::file::delete x", "x.sdc:1: error: unknown command '::tcl::file::delete'\n"},
    {"::tcl::unsupported::assemble x", "x.sdc:1: error: unknown command '::tcl::unsupported::assemble'\n"},
    {"expr rand()", "x.sdc:1: error: unknown command 'tcl::mathfunc::rand'\n"},
    {"uplevel #0 exec ls", "x.sdc:1: error: 'exec' is not available in a constraint file\n"},
    {"apply {{} {exec ls}}", "x.sdc:1: error: 'exec' is not available in a constraint file\n"},
    {"lsort -command exec {a b}", "x.sdc:1: error: 'exec' is not available in a constraint file\n"},
    {"time {set x 1}", "x.sdc:1: error: 'time' is not available in a constraint file\n"},
    {"puts [info script]", "x.sdc:1: error: unknown command '::tcl::info::script'\n"},
    {"tcl::pkgconfig list", "x.sdc:1: error: unknown command 'tcl::pkgconfig'\n"},
    {"puts [array size env]", "x.sdc:1: note: puts: 0\n"},
    {"puts [info hostname]", "x.sdc:1: error: unknown command '::tcl::info::hostname'\n"},
    {"puts [info exists env]", "x.sdc:1: note: puts: 0\n"},
    {"puts [info vars]", "x.sdc:1: note: puts: tcl_version tcl_patchLevel\n"},
    {"puts file1 text", "x.sdc:1: error: puts: expected one text; files cannot be written\n"},
};
INSTANTIATE_TEST_SUITE_P(Refused, SdcScripts, testing::ValuesIn(refused));

// How a file can end before its last line.
#define NO_END "error: return: a file can end by 'return' or 'return -code error' only\n"
const Row ended[] = {
    {"puts a\nreturn\n\n# no\nputs b",
     "x.sdc:1: note: puts: a\n"
     "x.sdc:2: note: return: the rest of the file, from line 5 on, is not read\n"},
    {"puts a\nreturn\n# nothing\n;\n", "x.sdc:1: note: puts: a\n"},
    {"if 1 {\n  return {a text}\n}\nset x {",
     "x.sdc:1: note: return: the rest of the file, from line 4 on, is not read\n"},
    {"proc p {} {\n  return -code return\n}\np\nputs a",
     "x.sdc:4: note: return: the rest of the file, from line 5 on, is not read\n"},
    {"return -code ok\nputs a", "x.sdc:1: note: return: the rest of the file, from line 2 on, is not read\n"},
    {"puts a\nreturn -code error {no such board}\nputs b",
     "x.sdc:1: note: puts: a\nx.sdc:2: error: no such board\n"},
    {"if 1 {\n  return -code error stop\n}\nfoo", "x.sdc:2: error: stop\n"},
    {"return -code error", "x.sdc:1: error: return -code error\n"},
    {"catch {return -code error stop} text\nputs $text", "x.sdc:2: note: puts: stop\n"},
    {"proc p {} {\n  return -code error bad\n}\np", "x.sdc:4: error: bad\n"},
    {"return -code break", "x.sdc:1: " NO_END},
    {"\nreturn -code continue", "x.sdc:2: " NO_END},
    {"return -code return", "x.sdc:1: " NO_END},
    {"return -level 2", "x.sdc:1: " NO_END},
    {"return -code 7\nputs a", "x.sdc:1: " NO_END},
    {"proc p {} {\n  return -code 7\n}\np\nputs a",
     "x.sdc:5: note: puts: a\nx.sdc:4: error: the command returns the code 7, which has no meaning here\n"},
    {"error boom", "x.sdc:1: error: boom\n"},
    {"throw {A B} boom", "x.sdc:1: error: boom\n"},
};
INSTANTIATE_TEST_SUITE_P(Ended, SdcScripts, testing::ValuesIn(ended));

// Behind an error the file is read on; what only follows from it is not told.
const Row several[] = {
    {"foo\nset_false_path\nputs on\nexit", "x.sdc:3: note: puts: on\nx.sdc:1: error: unknown command 'foo'\n"
                                           "x.sdc:2: error: set_false_path: needs -from, -through or -to\n"
                                           "x.sdc:4: error: 'exit' is not available in a constraint file\n"},
    {"foreach x {1 2} {\n  foo $x\n  bar\n}\nbaz",
     "x.sdc:2: error: unknown command 'foo'\nx.sdc:5: error: unknown command 'baz'\n"},
    {"proc p {} {\n  foo\n}\np\nbreak\np",
     "x.sdc:2: error: unknown command 'foo'\n"
     "x.sdc:5: error: 'break' and 'continue' work inside of a loop only\n"
     "x.sdc:2: error: unknown command 'foo'\n"},
    {"foo\nset x {", "x.sdc:1: error: unknown command 'foo'\nx.sdc:2: error: missing close-brace\n"},
    {"set a [foo]\nputs $a\nputs $a(1)\nputs $b",
     "x.sdc:1: error: unknown command 'foo'\nx.sdc:4: error: can't read \"b\": no such variable\n"},
    {"proc p {} {}  {}\np\nq", "x.sdc:1: error: wrong # args: should be \"proc name args body\"\nx.sdc:3: "
                               "error: unknown command 'q'\n"},
    {"source none.sdc\nputs $a\nhelp_me\nset_false_path -form a",
     "x.sdc:1: error: source: 'none.sdc': cannot open: No such file or directory\n"
     "x.sdc:4: error: set_false_path: unknown option '-form'\n"},
    {"create_clock -period x clk\nset_input_delay 1 -clock clk a\nset_false_path -from [get_clocks clk]\n"
     "set_clock_groups -asynchronous -group {a b}\nget_ports zz",
     "x.sdc:5: warning: get_ports: no port matches 'zz'\n"
     "x.sdc:1: error: create_clock: -period: expected a time, found 'x'\n"},
    {"catch {create_clock -period x clk}\nset_false_path -from [get_clocks clk]",
     "x.sdc:2: warning: get_clocks: no clock matches 'clk'\n"
     "x.sdc:2: warning: set_false_path: -from: no objects: the command has no effect\n"},
    {"for {set i 1} {$i <= 3} {incr i} {}\nfoo\nputs $i",
     "x.sdc:3: note: puts: 4\nx.sdc:2: error: unknown command 'foo'\n"},
};
INSTANTIATE_TEST_SUITE_P(Several, SdcScripts, testing::ValuesIn(several));

TEST(SdcErrors, AreTwentyAtMost) {
    std::string script, expected;
    for (int line = 1; line <= 25; ++line) {
        script += "foo" + std::to_string(line) + "\n";
        if (line <= 20)
            expected += "x.sdc:" + std::to_string(line) + ": error: unknown command 'foo" +
                        std::to_string(line) + "'\n";
    }
    EXPECT_EQ(Support::run(script).allMessages(),
              expected + "x.sdc: note: 20 errors: the rest of the file is not read\n");
    const TemporaryFolder folder;
    folder.write("inner.sdc", script);
    EXPECT_EQ(Support::runIn(folder, "foo\nsource inner.sdc\nputs on").messages.back().substr(0, 30),
              "x.sdc:1: error: unknown comman");
}

TEST(SdcErrors, OfAllFilesAreTold) {
    const TemporaryFolder folder;
    folder.write("inner.sdc", "foo\nputs on\nbar\n");
    EXPECT_EQ(Support::runIn(folder, "source inner.sdc\nbaz").allMessages(),
              "inner.sdc:2: note: puts: on\ninner.sdc:1: error: unknown command 'foo'\n"
              "inner.sdc:3: error: unknown command 'bar'\nx.sdc:2: error: unknown command 'baz'\n");
    EXPECT_EQ(Support::runIn(folder, "catch {source inner.sdc}\nputs off").allMessages(),
              "inner.sdc:1: note: the command fails: the rest of the file, from line 2 on, is not read\n"
              "x.sdc:2: note: puts: off\n");
    folder.write("inner.sdc", "set a 1\nif {$a} return\nfoo\n");
    EXPECT_EQ(Support::runIn(folder, "source inner.sdc\nputs $a").allMessages(),
              "inner.sdc:2: note: return: the rest of the file, from line 3 on, is not read\n"
              "x.sdc:2: note: puts: 1\n");
    folder.write("inner.sdc", "\nreturn -code error {no board}\nfoo\n");
    EXPECT_EQ(Support::runIn(folder, "source inner.sdc\nputs on").allMessages(),
              "x.sdc:2: note: puts: on\ninner.sdc:2: error: no board\n");
    folder.write("inner.sdc", "break\n");
    EXPECT_EQ(Support::runIn(folder, "foreach f {1 2} {\n  source inner.sdc\n}").allMessages(),
              "inner.sdc:1: error: 'break' and 'continue' work inside of a loop only\n");
}

const Row placed[] = {
    {"foo", "x.sdc:1: error: unknown command 'foo'\n"},
    {"\n# a comment\nfoo 1 2", "x.sdc:3: error: unknown command 'foo'\n"},
    {"set a 1; \\\n  foo", "x.sdc:2: error: unknown command 'foo'\n"},
    {"set_false_path \\\n  -from rst \\\n  -foo", "x.sdc:1: error: set_false_path: unknown option '-foo'\n"},
    {"foreach x {1} {\n  set y 1\n  foo\n}", "x.sdc:3: error: unknown command 'foo'\n"},
    {"if 0 {\n  set y 1\n} else {\n  set y 2\n  foo\n}", "x.sdc:5: error: unknown command 'foo'\n"},
    {"if 0 {\n  set y 1\n} else {\n  set y 2\n  set y $z\n}",
     "x.sdc:5: error: can't read \"z\": no such variable\n"},
    {"foreach x {1} {\n  set y 1\n  set y [expr {$x + }]\n}",
     "x.sdc:3: error: missing operand at _@_\nin expression \"$x + _@_\"\n"},
    {"proc p {a} {\n  set b $a\n  foo\n}\n\np 1", "x.sdc:3: error: unknown command 'foo'\n"},
    {"proc p {a} {\n  set b $a\n  set c $d\n}\n\np 1",
     "x.sdc:3: error: can't read \"d\": no such variable\n"},
    {"proc p {a} {\n}\nif 1 {\n  p\n}", "x.sdc:4: error: wrong # args: should be \"p a\"\n"},
    {"set s {\n\n\nfoo}\n\neval $s", "x.sdc:6: error: unknown command 'foo'\n"},
    // The same command stands twice: the one that is closest to where the loop's body failed.
    {"foreach x 1 {\n  if 0 {\n    set z $w\n  }\n  set y 1\n  set z $w\n}",
     "x.sdc:6: error: can't read \"w\": no such variable\n"},
    {"set x 1\n\nset y {1", "x.sdc:3: error: missing close-brace\n"},
    {"set x 1\nputs \"a", "x.sdc:2: error: missing \"\n"},
    {"puts [get_ports", "x.sdc:1: error: missing close-bracket\n"},
    {"set x 1\nbreak", "x.sdc:2: error: 'break' and 'continue' work inside of a loop only\n"},
    {"set x 1\nerror {my own}", "x.sdc:2: error: my own\n"},
    {"catch {foo}\nbar", "x.sdc:2: error: unknown command 'bar'\n"},
    {"if {[catch {foo} m]} {\n\n  error \"again: $m\"\n}", "x.sdc:3: error: again: unknown command 'foo'\n"},
};
INSTANTIATE_TEST_SUITE_P(Placed, SdcScripts, testing::ValuesIn(placed));

// --- Limits ---

TEST(SdcLimits, EndRunawayScripts) {
    const Support::Outcome loop =
        Support::run("set x 1\nwhile 1 {\n  set x 2\n}", {aMoment, 1'000'000'000, 1000});
    EXPECT_EQ(loop.allMessages(), "x.sdc:2: error: the script ran for more than 0.1 s\n");

    const Support::Outcome empty =
        Support::run("catch { while 1 {} }\nputs on", {aMoment, 1'000'000'000, 1000});
    EXPECT_EQ(empty.allMessages(), "x.sdc:1: error: the script ran for more than 0.1 s\n");

    const Support::Outcome nested =
        Support::run("proc p {} {\n while 1 {}\n}\n\nforeach x 1 {\n p\n}", {aMoment, 1'000'000'000, 1000});
    EXPECT_EQ(nested.allMessages(), "x.sdc:5: error: the script ran for more than 0.1 s\n");

    const Support::Outcome commands =
        Support::run("while 1 { get_ports clk }", {std::chrono::seconds(60), 1000, 1000});
    EXPECT_EQ(commands.allMessages(), "x.sdc:1: error: the script ran for more than 1000 commands\n");
}

TEST(SdcLimits, EndDeepRecursion) {
    const Support::Outcome calls = Support::run("proc p {} {\n  p\n}\np");
    ASSERT_EQ(calls.messages.size(), 1U);
    EXPECT_EQ(calls.messages[0], "x.sdc:2: error: too many nested evaluations (infinite loop?)");

    const Support::Outcome caught =
        Support::run("proc p {} { foreach_in_collection x 1 { p } }\ncatch { p } m\nputs $m");
    EXPECT_EQ(caught.allMessages(), "x.sdc:3: note: puts: too many nested evaluations (infinite loop?)\n");

    for (const char bracket : {'[', '{'}) {
        const Support::Outcome deep = Support::run("set x 1\nset y " + std::string(100'000, bracket));
        EXPECT_EQ(deep.allMessages(), "x.sdc:2: error: brackets or braces stand in one another too deep\n")
            << bracket;
    }
}

TEST(SdcLimits, AreForOneFileEach) {
    const std::string busy = "for {set i 0} {$i < 600} {incr i} { get_ports clk }";
    EXPECT_EQ(Support::run({busy, busy, busy}, {std::chrono::seconds(60), 2500, 1000}).allMessages(), "");
}

TEST(SdcScripts, PrintOnlySoMuch) {
    const Support::Outcome outcome = Support::run("for {set i 0} {$i < 1000} {incr i} { puts $i }");
    ASSERT_EQ(outcome.messages.size(), 101U);
    EXPECT_EQ(outcome.messages.back(), "x.sdc:1: note: puts: the script's further output is left out");
}

// --- source ---

TEST(SdcSource, ReadsFilesBesideAndBelow) {
    const TemporaryFolder folder;
    folder.write("clocks.sdc", "set period 4\nproc cut {to} {\n\n  set_false_path -to $to\n}\n");
    folder.write("sub/io.sdc", "\nset_input_delay 1 -clock c rst\nsource more.sdc\n");
    folder.write("sub/more.sdc", "get_ports zz\nreturn\nfoo\n");
    const Support::Outcome outcome = Support::runIn(
        folder,
        "source clocks.sdc\ncreate_clock -name c -period $period clk\nsource -echo sub/io.sdc\ncut out");
    EXPECT_EQ(outcome.constraints, "clock c 4 {0 2} on clk\ninput rst 1 1 c\nfalse to {out}\nunmatched 1\n");
    EXPECT_EQ(outcome.allMessages(),
              "sub/more.sdc:1: warning: get_ports: no port matches 'zz'\n"
              "sub/more.sdc:2: note: return: the rest of the file, from line 3 on, is not read\n");
    std::string files;
    for (const std::string& file : outcome.result.files)
        files += folder.relative(file) + " ";
    EXPECT_EQ(files, "x.sdc clocks.sdc sub/io.sdc sub/more.sdc ");
    EXPECT_EQ(outcome.result.fileHashes.size(), 4U);
    EXPECT_EQ(outcome.result.fileHashes.back(),
              Base::Source(folder.write("copy", "get_ports zz\nreturn\nfoo\n")).sha256());
    const auto place = [&](const Design::Origin& origin) {
        const Base::Place found = outcome.result.place(origin);
        return folder.relative(found.file) + ":" + std::to_string(found.line);
    };
    EXPECT_EQ(place(outcome.result.clocks.front().origin), "x.sdc:2");
    EXPECT_EQ(place(outcome.result.portDelays[0].origin), "sub/io.sdc:2");
    EXPECT_EQ(place(outcome.result.exceptions.front().origin), "clocks.sdc:4");
}

TEST(SdcSource, PlacesErrorsInTheInnerFile) {
    const TemporaryFolder folder;
    folder.write("inner.sdc", "set a 1\n\nif 1 {\n  set b $c\n}\n");
    folder.write("foo.sdc", "\nfoo\n");
    EXPECT_EQ(Support::runIn(folder, "\nsource inner.sdc").allMessages(),
              "inner.sdc:4: error: can't read \"c\": no such variable\n");
    EXPECT_EQ(Support::runIn(folder, "foreach f {foo} {\n source $f.sdc\n}").allMessages(),
              "foo.sdc:2: error: unknown command 'foo'\n");
    EXPECT_EQ(Support::runIn(folder, "catch {source foo.sdc}\nputs on").allMessages(),
              "x.sdc:2: note: puts: on\n");
}

TEST(SdcSource, FollowsLinksAndStepsThatStayInTheFolder) {
    const TemporaryFolder folder;
    folder.write("sub/inner.sdc", "source ../other.sdc\nsource ./link.sdc\n");
    fs::create_symlink("../other.sdc", folder.write("sub/link.sdc", "") + "2");
    fs::rename(folder.write("sub/link.sdc", "") + "2", folder.write("sub/link.sdc", ""));
    folder.write("other.sdc", "puts here\n");
    EXPECT_EQ(Support::runIn(folder, "source sub/../sub/inner.sdc").allMessages(),
              "other.sdc:1: note: puts: here\nsub/link.sdc:1: note: puts: here\n");
}

// Of what is refused not a word is shown, and nothing is waited for.
TEST(SdcSource, RefusesWhatIsNoFileOfTheFolder) {
    const TemporaryFolder folder, outside;
    const std::string secret = outside.write("secret.sdc", "word\n");
    const std::string base = fs::path(folder.write("x.sdc", "")).parent_path();
    fs::create_symlink(secret, base + "/absolute.sdc");
    fs::create_symlink("../" + fs::path(secret).parent_path().filename().string() + "/secret.sdc",
                       base + "/relative.sdc");
    fs::create_symlink(fs::path(secret).parent_path(), base + "/out");
    fs::create_symlink("/proc/self/fd", base + "/descriptors");
    fs::create_symlink("loop.sdc", base + "/loop.sdc");
    fs::create_directory(base + "/sub");
    ASSERT_EQ(mkfifo((base + "/pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    const std::string leads = "a link leads out of the folder of the constraint file";
    const std::pair<std::string, std::string> rows[] = {
        {"absolute.sdc", leads},
        {"relative.sdc", leads},
        {"out/secret.sdc", leads},
        {"descriptors/0", leads},
        {"loop.sdc", "links are not followed here"},
        {"pipe", "expected a file, found a pipe or a device"},
        {"sub", "cannot open: Is a directory"},
        {"sub/none", "cannot open: No such file or directory"},
        {"x.sdc/none", "cannot open: Not a directory"},
    };
    for (const auto& [name, reason] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Support::runIn(folder, "source " + name).allMessages(),
                  "x.sdc:1: error: source: '" + name + "': " + reason + "\n");
    }
    Base::Diagnostics diagnostics;
    Readers::Sdc::Reader reader(Support::smallDesign(), diagnostics);
    Base::Source device("/dev/x.sdc", "source zero");
    try {
        reader.read(device);
        ADD_FAILURE();
    } catch (const Base::BadInput& error) {
        EXPECT_EQ(error.diagnostic().text, "source: 'zero': expected a file, found a pipe or a device");
    }
}

TEST(SdcSource, RefusesLinksWhereTheKernelCannotFollowThemSafely) {
    const TemporaryFolder folder;
    const std::string base = fs::path(folder.write("sub/inner.sdc", "x")).parent_path().parent_path();
    fs::create_symlink("sub/inner.sdc", base + "/link.sdc");
    fs::create_symlink("sub", base + "/link");
    const Readers::Sdc::Folder stepwise(base, true);
    const auto open = [&](const std::string& path) -> std::string {
        try {
            close(stepwise.open(path));
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    };
    EXPECT_EQ(open("sub/inner.sdc"), "");
    EXPECT_EQ(open("link.sdc"), "links are not followed here");
    EXPECT_EQ(open("link/inner.sdc"), "cannot open: Not a directory");
    EXPECT_EQ(open("none/inner.sdc"), "cannot open: No such file or directory");
    EXPECT_EQ(open("sub"), "cannot open: Is a directory");
    EXPECT_THROW(Readers::Sdc::Folder(base + "/none").open("x"), std::runtime_error);
}

TEST(SdcSource, RefusesTextsThatAreTooLong) {
    const TemporaryFolder folder;
    const Readers::Sdc::Limits limits{.text = 1};
    const std::string comment = "# " + std::string(std::size_t{1} << 20, 'x');
    folder.write("inner.sdc", comment);
    EXPECT_EQ(Support::runIn(folder, "source inner.sdc", limits).allMessages(),
              "x.sdc:1: error: source: 'inner.sdc': the text has more than 1 MB\n");
    EXPECT_EQ(Support::runIn(folder, comment, limits).allMessages(),
              "x.sdc: error: the text has more than 1 MB\n");
    EXPECT_EQ(Support::runIn(folder, comment.substr(2), limits).allMessages().substr(0, 30),
              "x.sdc:1: error: unknown comman");
}

TEST(SdcSource, RefusesOtherPlaces) {
    const TemporaryFolder folder;
    folder.write("a.sdc", "source b.sdc\n");
    folder.write("b.sdc", "\nsource a.sdc\n");
    const Row rows[] = {
        {"source ../x.sdc", "x.sdc:1: error: source: '../x.sdc': only files in the folder of 'x.sdc', or "
                            "below it, can be read\n"},
        {"source sub/../../x.sdc", "x.sdc:1: error: source: 'sub/../../x.sdc': only files in the folder of "
                                   "'x.sdc', or below it, can be "
                                   "read\n"},
        {"source /etc/passwd",
         "x.sdc:1: error: source: '/etc/passwd': expected a path relative to this file\n"},
        {"source none.sdc", "x.sdc:1: error: source: 'none.sdc': cannot open: No such file or directory\n"},
        {"\nsource x.sdc", "x.sdc:2: error: source: 'x.sdc' is being read already\n"},
        {"source ./x.sdc", "x.sdc:1: error: source: './x.sdc' is being read already\n"},
        {"source a.sdc", "b.sdc:2: error: source: 'a.sdc' is being read already\n"},
        {"source", "x.sdc:1: error: source: expected one file\n"},
        {"source -foo x", "x.sdc:1: error: source: unknown option '-foo'\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Support::runIn(folder, row.script).allMessages(), row.expected) << row.script;
}

} // namespace
