// Control characters of inputs, as messages and reports show them.
#include "base/Characters.h"

#include "base/Diagnostics.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using Base::printable;
using Base::printableLines;

TEST(Characters, EscapesControlCharacters) {
    const struct {
        std::string_view text, expected, lines;
    } rows[] = {
        {"", "", ""},
        {"a b~", "a b~", "a b~"},
        {"a\x1b[31m", "a\\x1B[31m", "a\\x1B[31m"},
        {"\t\r\x7f\0"sv, "\\x09\\x0D\\x7F\\x00", "\\x09\\x0D\\x7F\\x00"},
        {"a\nb", "a\\x0Ab", "a\nb"},
        {"\xC3\xA4 \xFF", "\xC3\xA4 \xFF", "\xC3\xA4 \xFF"},
        {"a\\x", "a\\x", "a\\x"},
        // No byte of a character is a control character; those from U+0080 to U+009F are.
        {"\xC2\x9B\x9B\xC2\xA0", "\\xC2\\x9B\\x9B\xC2\xA0", "\\xC2\\x9B\\x9B\xC2\xA0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(printable(row.text), row.expected);
        EXPECT_EQ(printableLines(row.text), row.lines);
    }
}

TEST(Characters, IsWhatDiagnosticsAre) {
    using Base::Severity;
    EXPECT_EQ(toString(Base::Diagnostic{Severity::note, {"a\nb", 3, 4}, "c\x1b\nd"}),
              "a\\x0Ab:3:4: note: c\\x1B\nd");
    EXPECT_STREQ(Base::BadInput({"f"}, "\x07").what(), "f: error: \\x07");
}

} // namespace
