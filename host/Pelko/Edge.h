// An edge: a timing arc from one pole to another, with its delays and what an analysis found about it.
//
// At most one arc leads from a pole to another, none from a pole to itself. An arc into a check pole holds
// the hold value as its minimum and the setup value as its maximum. Delays are stored raw, and returned by
// value.
//
// Cost: 88 bytes an arc and its two places in fan arrays; creation looks for a second arc in the shorter of
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
    // FactoryFailed: "Null source", "Null target", "Edge from a pole to itself", "Poles of two cells",
    // "Edge exists already".
    static Edge* create(Pole* source, Pole* target, const Delay& minimum, const Delay& maximum);

    Pole* getSource() const { return source_; }
    Pole* getTarget() const { return target_; }

    Delay getMinDelay() const { return Delay(minDelay_); }
    Delay getMaxDelay() const { return Delay(maxDelay_); }
    void setMinDelay(const Delay& delay) { minDelay_ = int(delay); }
    void setMaxDelay(const Delay& delay) { maxDelay_ = int(delay); }

    // Walks follow active arcs only.
    bool isActive() const { return active_; }
    void activate() { active_ = true; }
    void disactivate() { active_ = false; }

    // The classes whose paths may use this arc.
    PseudoMask getPseudoMask() const { return PseudoMask(maskBits_); }
    void sensitize(const PseudoMask& mask) { maskBits_ |= mask.getBits(); }

    // The worst slack, undefined until written.
    Delay getSlack() const { return Delay(slack_); }
    void setSlack(const Delay& slack) {
        slack_ = int(slack);
        _hasMaximumSlack = _hasMaximumSlack || slack_ == Delay::maximumValue;
    }
    unsigned long getWeight() const;
    void setWeight(unsigned long weight);
    // A percentage, 100 until written. InvalidRequest beyond 100: "Duty cycle above 100".
    unsigned long getMinDutyCycle() const { return minDutyCycle_; }
    void setMinDutyCycle(unsigned long percentage);

    // Forgets slack, weight, duty cycle and classes. The active flag and the delays stay.
    void clearResults();

    // Whether an arc, of any cell, was ever given the maximum special for its slack. No analysis writes it.
    static bool _hasMaximumSlack;

    // Below Cell::getEdgeBound(), in order of creation; not given to another arc later.
    std::uint32_t getIndex() const { return index_; }
    // The source's index: a walk that keeps what it knows by index need not read the source for it.
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

    // An arc is one line of the cache. What walks do not read lies in the cell, by index.
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
