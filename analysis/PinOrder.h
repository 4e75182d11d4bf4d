// The order of pins by their names, and of sequences of pins by the names in them: what decides between equal
// slacks, so that no choice depends on the order in which a file lists its cells.
#pragma once

#include "design/RoutedDesign.h"

#include <cstdint>
#include <vector>

namespace Analysis {

// Whether Design::pinName(a) comes before Design::pinName(b) in byte order. Makes no strings.
bool isNamedBefore(const Design::RoutedDesign& design, std::uint32_t a, std::uint32_t b);

// Sequences of pins that share their beginnings, as the paths of a search do. Each is a number; the empty one
// is Sequences::empty. To append is one step; to compare takes the logarithm of the common length.
class Sequences {
public:
    static constexpr std::uint32_t empty = 0;

    explicit Sequences(const Design::RoutedDesign& design) : design_(design), nodes_(1) {}

    // The sequence with the pin behind its last one. A pin that is the last one already adds nothing.
    std::uint32_t append(std::uint32_t sequence, std::uint32_t pin);
    // Lexicographically, by names; a sequence comes before those that it begins.
    bool isBefore(std::uint32_t a, std::uint32_t b) const;

private:
    // Sequences of one length have their jumps at one length too, so that two can be followed together.
    struct Node {
        std::uint64_t hash = 0; // equal sequences have equal hashes
        std::uint32_t shorter = 0, jump = 0;
        std::uint32_t length = 0, pin = Base::none;
    };

    std::uint32_t beginning(std::uint32_t sequence, std::uint32_t length) const;

    const Design::RoutedDesign& design_;
    std::vector<Node> nodes_;
};

} // namespace Analysis
