// Columns, colours, and names that a terminal can show.
#include "report/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace Report {

namespace {

constexpr std::string_view gap = "  ";

std::string_view sequenceOf(Ink ink) {
    switch (ink) {
    case Ink::title:
        return "\x1b[1m";
    case Ink::good:
        return "\x1b[32m";
    case Ink::bad:
        return "\x1b[31m";
    case Ink::plain:
        break;
    }
    return ""; // GCOVR_EXCL_LINE: plain text is not painted
}

// Code points: bytes that do not continue one.
std::size_t widthOf(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

} // namespace

std::string paint(std::string_view text, Ink ink, bool color) {
    if (!color || ink == Ink::plain)
        return std::string(text);
    return fmt::format("{}{}\x1b[0m", sequenceOf(ink), text);
}

void Table::print(std::ostream& out, bool color) const {
    const std::vector<std::size_t> widths = this->widths();
    if (std::ranges::any_of(columns_, [](const Column& column) { return !column.title.empty(); })) {
        std::vector<Cell> titles;
        std::string rule;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            titles.emplace_back(columns_[i].title, Ink::title);
            rule += (i == 0 ? "" : std::string(gap)) + std::string(widths[i], '-');
        }
        printRow(titles, widths, out, color);
        out << rule << '\n';
    }
    for (const std::vector<Cell>& row : rows_)
        printRow(row, widths, out, color);
}

std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> widths;
    for (const Column& column : columns_)
        widths.push_back(widthOf(column.title));
    for (const std::vector<Cell>& row : rows_)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(row[i].text));
    return widths;
}

void Table::printRow(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, std::ostream& out,
                     bool color) const {
    std::string line;
    std::size_t spaces = 0; // that are due: none stand at a line's end
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::size_t padding = widths[i] - widthOf(row[i].text);
        const bool right = columns_[i].align == Align::right;
        if (i != 0)
            spaces += gap.size();
        if (right)
            spaces += padding;
        if (!row[i].text.empty()) {
            line.append(spaces, ' ');
            line += paint(row[i].text, row[i].ink, color);
            spaces = 0;
        }
        if (!right)
            spaces += padding;
    }
    out << line << '\n';
}

} // namespace Report
