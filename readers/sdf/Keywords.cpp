// The table of words, and a look-up by a hash that has no collision among them (checked when this is
// compiled).
#include "readers/sdf/Keywords.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Readers::Sdf {

namespace {

// In the order of the enumeration.
constexpr std::string_view texts[] = {
    "",
    "ABSOLUTE",
    "BIDIRECTSKEW",
    "CCOND",
    "CELL",
    "CELLTYPE",
    "COND",
    "CONDELSE",
    "CORRELATION",
    "DATE",
    "DELAY",
    "DELAYFILE",
    "DESIGN",
    "DEVICE",
    "DIFF",
    "DIVIDER",
    "GLOBALPATHPULSE",
    "HOLD",
    "INCREMENT",
    "INSTANCE",
    "INTERCONNECT",
    "IOPATH",
    "LABEL",
    "NEGEDGE",
    "NETDELAY",
    "NOCHANGE",
    "PATHCONSTRAINT",
    "PATHPULSE",
    "PATHPULSEPERCENT",
    "PERIOD",
    "PERIODCONSTRAINT",
    "PORT",
    "POSEDGE",
    "PROCESS",
    "PROGRAM",
    "RECOVERY",
    "RECREM",
    "REMOVAL",
    "RETAIN",
    "SCOND",
    "SDFVERSION",
    "SETUP",
    "SETUPHOLD",
    "SKEW",
    "SKEWCONSTRAINT",
    "SUM",
    "TEMPERATURE",
    "TIMESCALE",
    "TIMINGCHECK",
    "TIMINGENV",
    "VENDOR",
    "VERSION",
    "VOLTAGE",
    "WIDTH",
};
static_assert(std::size(texts) == static_cast<std::size_t>(Keyword::width) + 1);

constexpr std::size_t longest =
    std::ranges::max_element(texts, {}, [](std::string_view text) { return text.size(); })->size();

constexpr char upper(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

constexpr std::size_t slots = 512;

constexpr std::size_t slotOf(std::string_view text) {
    std::size_t hash = text.size();
    for (const char character : text)
        hash = hash * 53 + static_cast<unsigned char>(upper(character));
    return (hash ^ (hash >> 8)) % slots;
}

// Keyword by slot. Where two fall into one slot, the table is not usable.
struct Table {
    std::array<Keyword, slots> keywords{};
    bool usable = true;
};

constexpr Table makeTable() {
    Table table;
    for (std::size_t i = 1; i < std::size(texts); ++i) {
        Keyword& keyword = table.keywords[slotOf(texts[i])];
        table.usable = table.usable && keyword == Keyword::none;
        keyword = static_cast<Keyword>(i);
    }
    return table;
}

constexpr Table table = makeTable();
static_assert(table.usable, "change the hash");

} // namespace

Keyword keywordOf(std::string_view text) {
    if (text.empty() || text.size() > longest)
        return Keyword::none;
    const Keyword keyword = table.keywords[slotOf(text)];
    return std::ranges::equal(text, toString(keyword), {}, upper) ? keyword : Keyword::none;
}

std::string_view toString(Keyword keyword) { return texts[static_cast<std::size_t>(keyword)]; }

} // namespace Readers::Sdf
