// A set of timing-exception classes: one bit a constrained path, 64 at the most, readable and rebuildable as
// an unsigned value.
//
// `reset(n)` sizes the class space before the classes of a run are handed out with `getBasic(1)` …
// `getBasic(n)`.
#pragma once

#include "Ruvex/Stuff.h"

namespace Pelko {

class PELKO_API PseudoMask : public Ruvex::Stuff {
public:
    static constexpr unsigned long maximumClassCount = 64;

    PseudoMask() = default;
    explicit PseudoMask(unsigned long bits) : bits_(bits) {}
    PseudoMask(const PseudoMask&) = default;
    PseudoMask& operator=(const PseudoMask&) = default;
    ~PseudoMask() override = default;

    // Throws InvalidRequest beyond `maximumClassCount`, and leaves the class space as it was.
    static void reset(unsigned long n);
    static unsigned long getClassCount();
    // The mask that holds only the class of constrained path number i, from 1. Throws InvalidRequest outside
    // the class space.
    static PseudoMask getBasic(unsigned long i);

    unsigned long getBits() const { return bits_; }
    bool isEmpty() const { return bits_ == 0; }

    PseudoMask operator&(const PseudoMask& other) const { return PseudoMask(bits_ & other.bits_); }
    PseudoMask operator|(const PseudoMask& other) const { return PseudoMask(bits_ | other.bits_); }
    PseudoMask& operator&=(const PseudoMask& other) {
        bits_ &= other.bits_;
        return *this;
    }
    PseudoMask& operator|=(const PseudoMask& other) {
        bits_ |= other.bits_;
        return *this;
    }
    bool operator==(const PseudoMask& other) const { return bits_ == other.bits_; }

    // "{}", "{1 3}": the numbers of the classes.
    std::string _getLabel() const override;
    Ruvex::Slot* _getSlot() const override;

private:
    unsigned long bits_ = 0;
};

} // namespace Pelko
