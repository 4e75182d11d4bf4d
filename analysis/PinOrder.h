// The order of pins by their names, and of sequences of pins by the names in them. It decides between equal
// slacks, so that no choice depends on the order in which a file lists its cells.
#pragma once

#include "design/Ids.h"
#include "design/RoutedDesign.h"

#include <cstdint>

namespace Analysis {

// Whether Design::pinName(a) comes before Design::pinName(b) in byte order. Makes no strings.
bool isNamedBefore(const Design::RoutedDesign& design, Design::PinId a, Design::PinId b);

using SequenceId = Base::Index<struct SequenceTag>;

// Sequences of pins that share their beginnings, as the paths of a search do. To append a pin costs one step;
// to compare two sequences costs the logarithm of their common length.
class Sequences {
public:
    // The sequence without pins.
    static constexpr SequenceId empty{std::uint32_t{0}};

    explicit Sequences(const Design::RoutedDesign& design) : design_(design), nodes_(1) {}

    // Returns the sequence with the pin added at its end. If the pin is the last one already, it is the same
    // sequence.
    SequenceId append(SequenceId sequence, Design::PinId pin);
    // Lexicographic, by names; a sequence comes before those that it begins.
    bool isBefore(SequenceId a, SequenceId b) const;

private:
    // Sequences of one length have their jumps at one length too, so that two can be followed together.
    struct Node {
        std::uint64_t hash = 0; // equal sequences have equal hashes
        SequenceId shorter = empty, jump = empty;
        std::uint32_t length = 0;
        Design::PinId pin;
    };

    SequenceId beginning(SequenceId sequence, std::uint32_t length) const;

    const Design::RoutedDesign& design_;
    Base::IndexVector<SequenceId, Node> nodes_;
};

} // namespace Analysis
