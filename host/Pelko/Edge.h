// An edge: a timing arc from one pole to another, with its delays and the results of an analysis.
//
// At most one arc leads from a pole to another, and none from a pole to itself. An arc into a check pole
// holds the hold value as its minimum and the setup value as its maximum. Delays are stored as integers, and
// are returned by value.
//
// Cost: 88 bytes per arc, and its places in two fan arrays. Creation looks for a second arc in the shorter of
// the two fans; every other operation is O(1).
#pragma once

#include "Pelko/Delay.h"
#include "Pelko/Pole.h"

namespace Pelko {

namespace detail {
struct EdgeDetails;
}

class PELKO_API Edge : public Object {
public:
    // An active arc from `source` to `target`. FactoryFailed: "Null source", "Null target", "Edge from a pole
    // to itself", "Poles of two cells", "Edge exists already".
    static Edge* create(Pole* source, Pole* target, const Delay& minimum, const Delay& maximum);

    Pole* getSource() const { return source_; }
    Pole* getTarget() const { return target_; }

    Delay getMinDelay() const { return Delay(minDelay_); }
    Delay getMaxDelay() const { return Delay(maxDelay_); }
    void setMinDelay(const Delay& delay) { minDelay_ = int(delay); }
    void setMaxDelay(const Delay& delay) { maxDelay_ = int(delay); }

    // Whether walks follow the arc. True at start.
    bool isActive() const { return active_; }
    void activate() { active_ = true; }
    void disactivate() { active_ = false; }

    // The classes of the exceptions whose paths may use this arc.
    PseudoMask getPseudoMask() const { return PseudoMask(maskBits_); }
    // Adds the classes of the mask.
    void sensitize(const PseudoMask& mask) { maskBits_ |= mask.getBits(); }

    // The worst slack of the paths through the arc, undefined until written.
    Delay getSlack() const { return Delay(slack_); }
    void setSlack(const Delay& slack) {
        slack_ = int(slack);
        _hasMaximumSlack = _hasMaximumSlack || slack_ == Delay::maximumValue;
    }
    // The criticality class of the arc, 0 until written.
    unsigned long getWeight() const;
    void setWeight(unsigned long weight);
    // The smallest duty cycle of the clocks that govern the slack, as a percentage; 100 until written.
    unsigned long getMinDutyCycle() const { return minDutyCycle_; }
    // InvalidRequest: "Duty cycle above 100".
    void setMinDutyCycle(unsigned long percentage);

    // Clears slack, weight, duty cycle and classes. Delays stay, and whether the arc is active.
    void clearResults();

    // Whether the maximum special was ever written as the slack of any arc. An analysis never writes it.
    static bool _hasMaximumSlack;

    // The number of the arc in order of creation, less than Cell::getEdgeBound(). It is never used again for
    // another arc.
    std::uint32_t getIndex() const { return index_; }
    // The index of the source. A walk that keeps tables by index does not have to read the source for it.
    std::uint32_t getSourceIndex() const { return sourceIndex_; }
    // The address to prefetch before a walk reads the arc, or null if the host has no advice. Reads nothing.
    const void* _getFetchAddress() const { return this; }

    std::string getClass() const override;
    // "source -> target"
    std::string getAlias() const override;
    // False while a reported path uses the arc.
    bool isDestroyable() const override;
    Ruvex::Record* _getRecord() const override;

    static void* operator new(std::size_t size);
    static void operator delete(void* place);

protected:
    Edge(Pole* source, Pole* target, const Delay& minimum, const Delay& maximum);
    void preDestroy() override;

private:
    friend class Cell;
    friend class Path;
    friend class Pole;

    static void preCreate(const Pole* source, const Pole* target);
    void link();
    void unlink();
    detail::EdgeDetails& getDetails() const;

    // An arc takes one line of the cache. What walks do not read is kept by index in the cell.
    Pole* source_;
    Pole* target_;
    unsigned long maskBits_ = 0;
    int minDelay_;
    int maxDelay_;
    int slack_ = Delay::undefinedValue;
    std::uint32_t index_ = 0;
    std::uint32_t sourceIndex_;
    std::uint8_t minDutyCycle_ = 100;
    bool active_ = true;
};

} // namespace Pelko
