// A set of classes of timing exceptions: one bit for each constrained path, at most 64. It converts to an
// unsigned value and back.
//
// `reset(n)` sets the number of classes of a run; `getBasic(1)` to `getBasic(n)` then return them.
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

    // Sets the number of classes. If n is larger than `maximumClassCount`, it throws InvalidRequest, and the
    // number stays as it was.
    static void reset(unsigned long n);
    static unsigned long getClassCount();
    // The mask that has only the class of constrained path number i, from 1. Throws InvalidRequest if i is 0
    // or larger than the number of classes.
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

    // The numbers of the classes, such as "{}" or "{1 3}".
    std::string _getLabel() const override;
    Ruvex::Slot* _getSlot() const override;

private:
    unsigned long bits_ = 0;
};

} // namespace Pelko
