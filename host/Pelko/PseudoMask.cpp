#include "Pelko/PseudoMask.h"

#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

namespace Pelko {

namespace {
unsigned long classCount = 0;
} // namespace

void PseudoMask::reset(unsigned long n) {
    if (n > maximumClassCount)
        Ruvex::refuse<Ruvex::InvalidRequest>("PseudoMask", "reset", 1,
                                             std::to_string(n) + " constrained paths: at most " +
                                                 std::to_string(maximumClassCount) +
                                                 " have a class of their own");
    classCount = n;
}

unsigned long PseudoMask::getClassCount() { return classCount; }

PseudoMask PseudoMask::getBasic(unsigned long i) {
    if (i == 0 || i > classCount)
        Ruvex::refuse<Ruvex::InvalidRequest>("PseudoMask", "getBasic", 2,
                                             "No class " + std::to_string(i) +
                                                 ": the classes are numbered 1 to " +
                                                 std::to_string(classCount));
    return PseudoMask(1UL << (i - 1));
}

std::string PseudoMask::_getLabel() const {
    std::string label = "{";
    for (unsigned long i = 1; i <= maximumClassCount; ++i)
        if (bits_ >> (i - 1) & 1)
            label += (label.size() > 1 ? " " : "") + std::to_string(i);
    return label + "}";
}

Ruvex::Slot* PseudoMask::_getSlot() const { return new Ruvex::StandardSlot<PseudoMask>(*this); }

} // namespace Pelko
