// The same delays written in another way, and options that change no slack.
#include "Relation.h"
#include "Text.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace Metamorphic {

namespace {

using Brute::Random;
using Triple = std::array<int, 3>;

// --- Order ---

void cellsInAnotherOrder(Files& files, Random& random) {
    std::vector<std::string> head, cells;
    for (const std::string& line : lines(files.sdf)) {
        if (line == "  (CELL")
            cells.emplace_back();
        (cells.empty() ? head.emplace_back() : cells.back()) += line + "\n";
    }
    cells.back().resize(cells.back().size() - std::string(")\n").size()); // without the end of the file
    shuffle(cells, random);
    files.sdf = joined(head, "") + joined(cells, "") + ")\n";
}

void entriesInAnotherOrder(Files& files, Random& random) {
    std::vector<std::string> all = lines(files.sdf);
    for (std::size_t begin = 0; begin < all.size(); ++begin) {
        std::size_t end = begin;
        while (end < all.size() && entry(all[end]))
            ++end;
        std::vector<std::string> run(all.begin() + static_cast<std::ptrdiff_t>(begin),
                                     all.begin() + static_cast<std::ptrdiff_t>(end));
        shuffle(run, random);
        std::ranges::copy(run, all.begin() + static_cast<std::ptrdiff_t>(begin));
        begin = end;
    }
    files.sdf = joined(all);
}

// --- The shape of the file ---

// After any entry the cell may be closed and opened again.
void severalCellsForAnInstance(Files& files, Random& random) {
    std::vector<std::string> text;
    std::string type, instance;
    for (const std::string& line : lines(files.sdf)) {
        if (line.find("(CELLTYPE ") != std::string::npos)
            type = line;
        if (line.find("(INSTANCE ") != std::string::npos)
            instance = line;
        const bool check = line == "    (TIMINGCHECK";
        if (check && random.chance(50))
            for (const std::string& between : {std::string("  )"), std::string("  (CELL"), type, instance})
                text.push_back(between);
        text.push_back(line);
        const std::optional<Entry> found = entry(line);
        if (found && (found->is("IOPATH") || found->is("INTERCONNECT")) && random.chance(30))
            for (const std::string& between :
                 {std::string("      )"), std::string("    )"), std::string("  )"), std::string("  (CELL"),
                  type, instance, std::string("    (DELAY"), std::string("      (ABSOLUTE")})
                text.push_back(between);
    }
    files.sdf = joined(text);
}

void onOneLineInSmallLetters(Files& files, Random&) {
    std::string text;
    for (char c : files.sdf) {
        const std::size_t open = text.rfind('(');
        const bool keyword =
            open != std::string::npos && text.find_first_of(" \")", open) == std::string::npos;
        text += c == '\n' ? ' '
                : keyword ? static_cast<char>(std::tolower(static_cast<unsigned char>(c)))
                          : c;
    }
    files.sdf = text;
}

void withComments(Files& files, Random& random) {
    std::string sdf;
    for (const std::string& line : lines(files.sdf)) {
        sdf += line;
        if (random.chance(20))
            sdf += " // (CELL ) \"";
        sdf += "\r\n";
        if (random.chance(20))
            sdf += "/* (IOPATH A Z (1:1:1)\r\n * ) */\r\n";
        if (line.starts_with("  (DESIGN "))
            sdf += "(DATE \"1 Jan\") (VENDOR \"(\") (PROGRAM \"p\") (VERSION \"1\")"
                   " (VOLTAGE 1.0:1.1:1.2) (PROCESS \"x\") (TEMPERATURE 0:25:85)\r\n";
    }
    files.sdf = sdf;
    std::string sdc;
    for (const std::string& line : lines(files.sdc.front())) {
        if (random.chance(30))
            sdc += "# set_false_path -to {\r\n";
        sdc += random.chance(20)   ? line + " ;# and more"
               : random.chance(30) ? replaced(line, " -", " \\\r\n -")
                                   : line;
        sdc += "\r\n";
    }
    files.sdc.front() = sdc;
}

void timescale(Files& files, Random& random) {
    struct Unit {
        const char* text;
        int digits;
    };
    const Unit unit =
        random.of(std::vector<Unit>{{"10 ps", 1}, {"100ps", 2}, {"1 ns", 3}, {"10.0ns", 4}, {"1us", 6}});
    files.sdf =
        eachTriple(replaced(files.sdf, "(TIMESCALE 1ps)", std::string("(TIMESCALE ") + unit.text + ")"),
                   [&](const Triple& v) {
                       return "(" + decimal(v[0], unit.digits) + ":" + decimal(v[1], unit.digits) + ":" +
                              decimal(v[2], unit.digits) + ")";
                   });
}

void finerTimescale(Files& files, Random&) {
    files.sdf = eachTriple(replaced(files.sdf, "(TIMESCALE 1ps)", "(TIMESCALE 100 fs)"), [](const Triple& v) {
        return "(" + std::to_string(v[0]) + "0:" + std::to_string(v[1]) + "0:" + std::to_string(v[2]) + "e1)";
    });
}

// Any character may be escaped. Of the brackets of a bit, both or neither are escaped.
void escapedNames(Files& files, Random& random) {
    const auto escape = [&](const std::string& name) {
        std::string text;
        const bool bits = random.chance(50);
        for (std::size_t i = 0; i < name.size(); ++i) {
            const bool already = i > 0 && name[i - 1] == '\\';
            const bool bracket = name[i] == '[' || name[i] == ']';
            const bool index = i > 0 && text.find('[') != std::string::npos && !bracket;
            if (name[i] != '/' && name[i] != '\\' && !already && !index &&
                (bracket ? bits : random.chance(40)))
                text += '\\';
            text += name[i];
        }
        return text;
    };
    files.sdf = eachEntry(files.sdf, [&](Entry e) {
        if (e.is("INTERCONNECT"))
            e.setWord(1, escape(e.word(1))), e.setWord(2, escape(e.word(2)));
        return e.text();
    });
}

void dividerDot(Files& files, Random& random) {
    files.sdf =
        eachEntry(replaced(files.sdf, "(DIVIDER /)", random.chance(50) ? "(DIVIDER .)" : ""), [](Entry e) {
            if (e.is("INTERCONNECT"))
                e.head = replaced(e.head, "/", ".");
            return e.text();
        });
}

// --- Values ---

std::size_t used(Analysis::Delays delays) {
    return delays == Analysis::Delays::min ? 0 : delays == Analysis::Delays::typ ? 1 : 2;
}

bool withOneMember(Case& c) {
    c.options.delays =
        c.random.of(std::vector{Analysis::Delays::min, Analysis::Delays::typ, Analysis::Delays::max});
    c.amount = static_cast<int>(used(c.options.delays));
    return true;
}

bool withMinmax(Case& c) {
    c.options.delays = Analysis::Delays::minmax;
    return true;
}

// Sets all members of each triple to the one that counts, in the structs.
bool onlyTheChosenMember(Case& c) {
    const std::size_t which = used(c.options.delays);
    const auto narrow = [&](Brute::Triple& t) {
        const int value = which == 0 ? t.minimum : which == 1 ? t.typical : t.maximum;
        t = {value, value, value};
    };
    for (Brute::Arc& arc : c.design.arcs)
        std::ranges::for_each(arc.values, narrow);
    for (Brute::Check& check : c.design.checks)
        for (std::optional<Brute::Triple>* t : {&check.setup, &check.hold})
            if (*t)
                narrow(**t);
    c.options.delays = c.random.of(std::vector{Analysis::Delays::min, Analysis::Delays::typ,
                                               Analysis::Delays::max, Analysis::Delays::minmax});
    return true;
}

void singleValues(Files& files, Random& random) {
    files.sdf = eachTriple(files.sdf, [&](const Triple& v) {
        if (v[0] == v[1] && v[1] == v[2])
            return random.chance(50) ? "(" + std::to_string(v[0]) + ")" : triple(v);
        return triple(v);
    });
}

void withoutTypical(Files& files, Random&) {
    files.sdf = eachTriple(files.sdf, [](const Triple& v) {
        return "(" + std::to_string(v[0]) + "::" + std::to_string(v[2]) + ")";
    });
}

// Writes six or twelve values: those after the second are for edges from and to z.
void longerLists(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](Entry e) {
        if (!e.is("IOPATH") && !e.is("INTERCONNECT"))
            return e.text();
        if (e.values.size() == 1)
            e.values.push_back(e.values.front());
        const std::size_t count = random.chance(50) ? 3 : random.chance(50) ? 6 : 12;
        while (e.values.size() < count)
            e.values.push_back({1, 2, 5000});
        return e.text();
    });
}

// --- Entries ---

// Writes a part of each delay as absolute, and adds the rest to it.
void incrementAfterAbsolute(Files& files, Random& random) {
    constexpr int most = 50; // the smallest delay of all
    std::vector<std::string> text, added;
    for (const std::string& line : lines(files.sdf)) {
        std::optional<Entry> found = entry(line);
        if (!found || (!found->is("IOPATH") && !found->is("INTERCONNECT"))) {
            text.push_back(line);
            if (line == "      )" && !added.empty()) {
                text.push_back("      (INCREMENT");
                std::ranges::move(added, std::back_inserter(text));
                text.push_back("      )");
                added.clear();
            }
            continue;
        }
        Entry more = *found;
        const int part = random.between(0, most); // for both edges: the reader does not distinguish them
        for (std::size_t i = 0; i < more.values.size(); ++i) {
            more.values[i] = {part, part, part};
            for (int& value : found->values[i])
                value -= part;
        }
        text.push_back(found->text());
        added.push_back(more.text());
    }
    files.sdf = joined(text);
}

// An ABSOLUTE replaces earlier delays of the same place.
void absoluteTwice(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](const Entry& e) {
        if ((!e.is("IOPATH") && !e.is("INTERCONNECT")) || random.chance(50))
            return e.text();
        Entry other = e;
        for (Triple& values : other.values)
            values = {1, 2, 7777};
        return other.text() + "\n      )\n      (ABSOLUTE\n" + e.text();
    });
}

void portInsteadOfInterconnect(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](Entry e) {
        if (e.is("INTERCONNECT") && random.chance(60)) {
            const std::string sink = e.word(2);
            e.head = "        (PORT " + sink + " ";
        }
        return e.text();
    });
}

void setupAndHoldApart(Files& files, Random&) {
    files.sdf = eachEntry(files.sdf, [](const Entry& e) {
        if (e.values.size() != 2 || !(e.is("SETUPHOLD") || e.is("RECREM")))
            return e.text();
        Entry first = e, second = e;
        first.setWord(0, e.is("SETUPHOLD") ? "SETUP" : "RECOVERY");
        second.setWord(0, e.is("SETUPHOLD") ? "HOLD" : "REMOVAL");
        first.values = {e.values[0]}, second.values = {e.values[1]};
        return second.text() + "\n" + first.text();
    });
}

// Writes an entry without an edge at this word as one entry per edge.
void onBothEdges(Entry e, int which, std::string& text, Random& random) {
    const std::string pin = e.word(which);
    const bool fallFirst = random.chance(50);
    e.setWord(which, (fallFirst ? "(negedge " : "(posedge ") + pin + ")");
    text = e.text() + "\n";
    e.setWord(which, (fallFirst ? "(posedge " : "(negedge ") + pin + ")");
    text += e.text();
}

void checksOfBothEdges(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](const Entry& e) {
        std::string text = e.text();
        if (!e.is("IOPATH") && !e.is("INTERCONNECT") && e.word(1).front() != '(' && random.chance(60))
            onBothEdges(e, 1, text, random);
        return text;
    });
}

void gateArcsOfBothEdges(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](const Entry& e) {
        std::string text = e.text();
        if (e.is("IOPATH") && e.word(2) == "Z" && random.chance(60))
            onBothEdges(e, 1, text, random);
        return text;
    });
}

// A netlist does not distinguish a vector of one bit from a single port. The names in the delays do, as long
// as they contain the port.
bool noVectorOfOneBit(Case& c) {
    bool first = false, second = false;
    for (const Brute::Pin& pin : c.design.pins) {
        first = first || pin.name == "in[0]";
        second = second || pin.name == "in[1]";
    }
    return !first || second;
}

// --- Conditions ---

// Writes the earliest and the latest delay under conditions; together they are the delay of the arc. One of
// them, or neither, is the plain entry.
std::string underConditions(const Entry& e, int plain, Random& random) {
    int earliest = e.values[0][0], latest = e.values[0][2];
    for (const Triple& v : e.values)
        earliest = std::min(earliest, v[0]), latest = std::max(latest, v[2]);
    const int middle = random.between(earliest, latest);
    std::vector<std::string> text;
    int number = 0;
    for (int value : {earliest, middle, latest}) {
        Entry one = e;
        one.values = {{value, value, value}};
        const std::string bare = one.text().substr(one.text().find('('));
        const char* conditions[] = {"S == 1'b1", "!S&&T", "S"};
        text.push_back("        " + (number == plain ? bare
                                     : number == 1 && random.chance(50)
                                         ? "(CONDELSE " + bare + ")"
                                         : "(COND " + std::string(conditions[number]) + " " + bare + ")"));
        ++number;
    }
    shuffle(text, random);
    std::string all = joined(text);
    all.pop_back();
    return all;
}

void conditionsAlone(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](const Entry& e) {
        return e.is("IOPATH") && random.chance(60) ? underConditions(e, Brute::none, random) : e.text();
    });
}

void conditionsAndPlain(Files& files, Random& random) {
    files.sdf = eachEntry(files.sdf, [&](const Entry& e) {
        return e.is("IOPATH") && random.chance(60) ? underConditions(e, random.between(0, 2), random)
                                                   : e.text();
    });
}

// --- Options ---

bool otherReport(Case& c) {
    c.options.setupPaths = c.random.chance(60);
    c.options.holdPaths = !c.options.setupPaths || c.random.chance(50);
    c.options.paths = static_cast<unsigned>(c.random.between(0, 40));
    c.options.perEndpoint = static_cast<unsigned>(c.random.between(1, 5));
    c.options.unconstrained = c.random.chance(50);
    c.options.exceptions = c.random.chance(50);
    c.options.quiet = c.random.chance(50);
    return true;
}

bool finerResolution(Case& c) {
    c.options.scale = c.random.chance(50) ? -13 : -14;
    return true;
}

} // namespace

std::vector<Relation> fileRelations() {
    return {
        {.name = "CellsInAnotherOrder", .rewrite = cellsInAnotherOrder, .holds = same({"diagnostics"})},
        {.name = "EntriesInAnotherOrder", .rewrite = entriesInAnotherOrder, .holds = same({"diagnostics"})},
        {.name = "SeveralCellsForAnInstance",
         .rewrite = severalCellsForAnInstance,
         .holds = same({"diagnostics"})},
        {.name = "OnOneLineInSmallLetters",
         .rewrite = onOneLineInSmallLetters,
         .holds = same({"diagnostics"})},
        {.name = "CommentsAndLineEnds",
         .rewrite = withComments,
         .holds = same({"diagnostics", "line", "overruled_by", "text"})},
        {.name = "Gzipped",
         .rewrite = [](Files& f, Random&) { f.gzipped = true; },
         .holds = same({"diagnostics", "file"})},
        {.name = "AnotherTimescale", .rewrite = timescale, .holds = same()},
        {.name = "FinerTimescale", .rewrite = finerTimescale, .holds = same()},
        {.name = "EscapedNames", .rewrite = escapedNames, .holds = same()},
        {.name = "DividerDot", .rewrite = dividerDot, .holds = same()},
        {.name = "OnlyTheChosenMember",
         .prepare = withOneMember,
         .change = onlyTheChosenMember,
         .rewrite = singleValues,
         .holds = same()},
        {.name = "WithoutTypical", .prepare = withMinmax, .rewrite = withoutTypical, .holds = same()},
        {.name = "LongerLists", .rewrite = longerLists, .holds = same({"diagnostics"})},
        {.name = "IncrementAfterAbsolute", .rewrite = incrementAfterAbsolute, .holds = same({"diagnostics"})},
        {.name = "AbsoluteTwice", .rewrite = absoluteTwice, .holds = same({"diagnostics"})},
        {.name = "PortInsteadOfInterconnect",
         .prepare = noVectorOfOneBit,
         .rewrite = portInsteadOfInterconnect,
         .holds = same({"diagnostics"})},
        {.name = "SetupAndHoldApart", .rewrite = setupAndHoldApart, .holds = same()},
        {.name = "ChecksOfBothEdges", .rewrite = checksOfBothEdges, .holds = same()},
        {.name = "GateArcsOfBothEdges", .rewrite = gateArcsOfBothEdges, .holds = same({"arcs"})},
        {.name = "ConditionsAlone",
         .prepare = withMinmax,
         .rewrite = conditionsAlone,
         .holds = same({"diagnostics"})},
        {.name = "ConditionsAndPlain",
         .prepare = withMinmax,
         .rewrite = conditionsAndPlain,
         .holds = same({"diagnostics"})},
        {.name = "OtherReport", .change = otherReport, .holds = same({"paths", "exceptions", "list"})},
        {.name = "FinerResolution",
         .change = finerResolution,
         .holds = same({"achieved_period", "fmax_mhz"})},
    };
}

} // namespace Metamorphic
