// Texts of SDF, read into lines of events or a message, and the texts around the part that a test is about.
#pragma once

#include "EventLog.h"
#include "readers/sdf/Parser.h"
#include "tests/support/command/InputFile.h"

#include <gtest/gtest.h>

namespace Support {

using Lines = std::vector<std::string>;

inline Lines parsed(std::string_view text, bool withPlaces = false,
                    std::size_t blockSize = Readers::Sdf::Lexer::defaultBlock) {
    const InputFile file(text);
    Base::Source source(file.path());
    EventLog log;
    log.withPlaces = withPlaces;
    Base::Diagnostics diagnostics;
    Readers::Sdf::parse(source, log, diagnostics, blockSize);
    return log.lines();
}

// "line:column: text" of the refusal.
inline std::string refusal(std::string_view text, std::size_t blockSize = Readers::Sdf::Lexer::defaultBlock) {
    try {
        parsed(text, false, blockSize);
    } catch (const Base::BadInput& error) {
        const Base::Diagnostic& diagnostic = error.diagnostic();
        EXPECT_FALSE(diagnostic.place.file.empty());
        return std::to_string(diagnostic.place.line) + ":" + std::to_string(diagnostic.place.column) + ": " +
               diagnostic.text;
    }
    return "none";
}

inline constexpr std::string_view scale = "(TIMESCALE 1ns)";

inline std::string fileOf(std::string_view header, std::string_view cells) {
    return "(DELAYFILE" + std::string(header) + std::string(cells) + ")";
}
inline std::string cellOf(std::string_view sections, std::string_view header = "") {
    return fileOf(std::string(scale) + std::string(header),
                  "(CELL(CELLTYPE \"T\")(INSTANCE u)" + std::string(sections) + ")");
}
inline std::string delayOf(std::string_view statements, std::string_view header = "") {
    return cellOf("(DELAY(ABSOLUTE" + std::string(statements) + "))", header);
}
inline std::string checkOf(std::string_view statements) {
    return cellOf("(TIMINGCHECK" + std::string(statements) + ")");
}

// The events of the cell's inside.
inline Lines inside(std::string_view text) {
    Lines lines = parsed(text);
    EXPECT_GE(lines.size(), 3U);
    if (lines.size() >= 3) {
        EXPECT_EQ(lines.at(1), "cell T <u>");
        EXPECT_EQ(lines.back(), "end");
        lines.erase(lines.begin(), lines.begin() + 2);
        lines.pop_back();
    }
    return lines;
}

} // namespace Support
