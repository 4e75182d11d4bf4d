// The same constraints as another script.
#include "Relation.h"
#include "Rewrite.h"
#include "Text.h"

#include <algorithm>

namespace Metamorphic {

namespace {

using Brute::Random;

// Reports contain the line of a command, and its text.
Judge sameButLines() { return same({"diagnostics", "file", "line", "overruled_by"}); }

std::size_t somewhere(const std::vector<std::string>& list, Random& random) {
    return static_cast<std::size_t>(random.between(0, static_cast<int>(list.size())));
}

std::vector<std::string> part(const std::vector<std::string>& list, std::size_t begin, std::size_t end) {
    return {list.begin() + static_cast<std::ptrdiff_t>(begin),
            list.begin() + static_cast<std::ptrdiff_t>(end)};
}

void severalFiles(Files& files, Random& random) {
    std::vector<std::string> rest = lines(files.sdc.front());
    files.sdc.clear();
    for (int n = random.between(1, 3); n > 0; --n) {
        const std::size_t cut = somewhere(rest, random);
        files.sdc.push_back(joined(part(rest, 0, cut)));
        rest = part(rest, cut, rest.size());
    }
    files.sdc.push_back(joined(rest));
}

void sourced(Files& files, Random& random) {
    const std::vector<std::string> text = lines(files.sdc.front());
    std::size_t first = somewhere(text, random), last = somewhere(text, random);
    if (first > last)
        std::swap(first, last);
    files.besides["part.sdc"] = joined(part(text, first, last));
    files.sdc.front() =
        joined(part(text, 0, first)) + "source part.sdc\n" + joined(part(text, last, text.size()));
}

// Puts each command, or several consecutive ones, into a block that Tcl runs exactly once.
void inTclBlocks(Files& files, Random& random) {
    static const std::vector<std::pair<std::string, std::string>> blocks{
        {"if {1 + 1 == 2} {\n", "} else {\n  error never\n}\n"},
        {"foreach one {1} {\n", "}\n"},
        {"for {set i 0} {$i < 1} {incr i} {\n", "}\n"},
        {"proc once {} {\n", "}\nonce\n"},
        {"eval {\n", "}\n"},
        {"if {[catch {\n", "} why]} { error $why }\n"},
        {"while 1 {\n", "break\n}\n"},
        {"switch b { a { error never } b {\n", "} }\n"},
    };
    std::string text;
    std::vector<std::string> rest = lines(files.sdc.front());
    while (!rest.empty()) {
        const std::size_t count = std::min(
            rest.size(), static_cast<std::size_t>(random.between(1, 1 + static_cast<int>(rest.size()) / 2)));
        const auto& [begin, end] = random.of(blocks);
        const std::string inner = joined(part(rest, 0, count));
        text += random.chance(30) ? inner : begin + inner + end;
        rest = part(rest, count, rest.size());
    }
    files.sdc.front() = text;
}

void inAnotherUnit(Files& files, Random& random) {
    struct Unit {
        const char* text;
        int digits;
    };
    const Unit unit =
        random.of(std::vector<Unit>{{"1ps", 0}, {"10ps", 1}, {"100ps", 2}, {"10ns", 4}, {"us", 6}});
    files.sdc.front() = std::string("set_units -time ") + unit.text + "\n" +
                        eachTime(files.sdc.front(), [&](long time) { return decimal(time, unit.digits); });
}

void inVariables(Files& files, Random& random) {
    std::string text;
    int number = 0;
    for (const std::string& line : lines(files.sdc.front())) {
        std::string before;
        const std::string changed = eachTime(line, [&](long time) {
            const std::string value = decimal(time, 3);
            if (line.find("-waveform") != std::string::npos || line.find("-edge_shift") != std::string::npos)
                return value; // in braces
            constexpr long exactInBinary = 125;
            if (time % exactInBinary == 0 && random.chance(50))
                return "[expr {" + decimal(time - 1000, 3) + " + 1}]";
            const std::string name = "t" + std::to_string(++number);
            before += "set " + name + " " + value + "\n";
            return random.chance(50) ? "$" + name : "${" + name + "}";
        });
        text += before + changed + "\n";
    }
    files.sdc.front() = text;
}

// Writes queries as quoted words, as concatenated lists, and as collections.
void otherQueries(Files& files, Random& random) {
    std::string text;
    for (std::string line : lines(files.sdc.front())) {
        for (const char* query : {"get_pins", "get_cells", "get_ports", "get_clocks", "get_nets"}) {
            const std::string begin = std::string("[") + query + " {";
            std::size_t at = 0;
            while ((at = line.find(begin, at)) != std::string::npos) {
                const std::size_t end = line.find("}]", at);
                const std::string names = line.substr(at + begin.size(), end - at - begin.size());
                std::string by = line.substr(at, end + 2 - at);
                if (random.chance(40))
                    by = std::string("[concat [") + query + " {" +
                         replaced(names, " ", std::string("}] [") + query + " {") + "}]]";
                else if (random.chance(40))
                    by = std::string("[add_to_collection [") + query + " {" + names + "}] [" + query + " {" +
                         names + "}]]";
                else if (random.chance(40))
                    by = std::string("[filter_collection [") + query + " {" + names + "}] {full_name =~ *}]";
                line.replace(at, end + 2 - at, by);
                at += by.size();
            }
        }
        text += line + "\n";
    }
    files.sdc.front() = text;
}

void twice(Files& files, Random& random) {
    if (random.chance(50))
        files.sdc.push_back(files.sdc.front());
    else
        files.sdc.front() += files.sdc.front();
}

// For commands whose values come before all options.
void optionsInAnotherOrder(Files& files, Random& random) {
    std::string text;
    for (const std::string& line : lines(files.sdc.front())) {
        const std::size_t first = line.find(" -");
        const bool movable =
            (line.starts_with("set_false_path") || line.starts_with("set_multicycle_path")) &&
            line.find("-through") == std::string::npos;
        if (!movable || first == std::string::npos) {
            text += line + "\n";
            continue;
        }
        std::vector<std::string> options;
        for (std::size_t at = first; at != std::string::npos;) {
            const std::size_t next = line.find(" -", at + 1);
            options.push_back(line.substr(at, next - at));
            at = next;
        }
        shuffle(options, random);
        text += line.substr(0, first) + joined(options, "") + "\n";
    }
    files.sdc.front() = text;
}

} // namespace

std::vector<Relation> scriptRelations() {
    return {
        {.name = "SeveralConstraintFiles", .rewrite = severalFiles, .holds = sameButLines()},
        {.name = "Sourced", .rewrite = sourced, .holds = sameButLines()},
        {.name = "InTclBlocks", .rewrite = inTclBlocks, .holds = sameButLines()},
        {.name = "InAnotherUnit",
         .rewrite = inAnotherUnit,
         .holds = same({"diagnostics", "line", "overruled_by", "text"})},
        {.name = "InVariables",
         .rewrite = inVariables,
         .holds = same({"diagnostics", "line", "overruled_by", "text"})},
        {.name = "OtherQueries", .rewrite = otherQueries, .holds = same({"diagnostics", "text"})},
        {.name = "OptionsInAnotherOrder",
         .rewrite = optionsInAnotherOrder,
         .holds = same({"diagnostics", "text"})},
        {.name = "ConstraintsReadTwice",
         .prepare = all({noneIsReplaced, withoutGroups}),
         .rewrite = twice,
         .holds = sameSlacks()},
    };
}

} // namespace Metamorphic
