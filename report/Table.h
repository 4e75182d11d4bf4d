// Text in columns, each as wide as its widest cell. No cell is ever cut.
//
// Widths are counted in code points. Colour is put around a cell after the cell has its width, so that it
// moves nothing. Control characters in names are shown as \xNN, so that a report cannot steer a terminal.
#pragma once

#include "base/Characters.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Report {

enum class Ink : std::uint8_t { plain, title, good, bad };

// The text in that colour; unchanged if colour is off or the ink is plain.
std::string paint(std::string_view text, Ink ink, bool color);

using Base::printable;

class Table {
public:
    enum class Align : std::uint8_t { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };
    struct Cell {
        template <std::convertible_to<std::string_view> Content>
        Cell(const Content& content, Ink cellInk = Ink::plain) : text(printable(content)), ink(cellInk) {}

        std::string text;
        Ink ink;
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    // Adds a row. REQUIRES: as many cells as there are columns.
    void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }
    bool empty() const { return rows_.empty(); }
    // Prints the titles, a rule and the rows; only the rows if no column has a title.
    void print(std::ostream& out, bool color) const;

private:
    std::vector<std::size_t> widths() const;
    void printRow(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, std::ostream& out,
                  bool color) const;

    std::vector<Column> columns_;
    std::vector<std::vector<Cell>> rows_;
};

} // namespace Report
