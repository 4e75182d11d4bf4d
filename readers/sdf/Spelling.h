// The netlist's instances by names that are spelled in another way: dots for slashes and the other way round,
// with backslashes and blanks or without, below the name of a top module or a test bench.
//
// Made only when a plain look-up has failed: the time is linear in the names of the design.
#pragma once

#include "design/RoutedDesign.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Readers {

class Spelling {
public:
    // The instances that a spelling fits; `other` if there is more than one.
    struct Match {
        Design::CellId cell = Base::none, other = Base::none;
    };

    explicit Spelling(const Design::RoutedDesign& design);

    // A name without what is spelled in different ways: both look-ups take such a name.
    static std::string reduced(std::string_view name);

    Match find(std::string_view reducedName) const;
    // Whether instances lie below that name.
    bool isAbove(std::string_view reducedName) const;

private:
    struct Entry {
        Match match;
        bool isAbove = false;
    };

    Entry& entryOf(std::string_view reducedName);
    const Entry* entry(std::string_view reducedName) const;

    Base::Names names_;
    std::vector<Entry> entries_; // by name
};

} // namespace Readers
