// An edge: a timing arc from one pole to another, with its delays and what an analysis found about it.
//
// At most one arc leads from a pole to another, none from a pole to itself. An arc into a check pole holds
// the hold value as its minimum and the setup value as its maximum. Delays are stored raw, and returned by
// value.
//
// Cost: 80 bytes an arc and its two places in fan arrays; creation looks for a second arc in the shorter of
// the two fans; every other operation is O(1).
#pragma once

#include "Pelko/Delay.h"
#include "Pelko/Pole.h"

namespace Pelko {

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
    void setSlack(const Delay& slack) { slack_ = int(slack); }
    unsigned long getWeight() const { return weight_; }
    void setWeight(unsigned long weight) { weight_ = weight; }
    // A percentage, 100 until written. InvalidRequest beyond 100: "Duty cycle above 100".
    unsigned long getMinDutyCycle() const { return minDutyCycle_; }
    void setMinDutyCycle(unsigned long percentage);

    // Forgets slack, weight, duty cycle and classes. The active flag and the delays stay.
    void clearResults();

    // Below Cell::getEdgeBound(), in order of creation; not given to another arc later.
    std::uint32_t getIndex() const { return index_; }

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

    // What walks read lies together: in most arcs, in one line of the cache.
    Pole* source_;
    Pole* target_;
    unsigned long maskBits_ = 0;
    int minDelay_;
    int maxDelay_;
    int slack_ = Delay::undefinedValue;
    std::uint8_t minDutyCycle_ = 100;
    bool active_ = true;
    std::uint32_t references_ = 0; // reported paths
    std::uint32_t index_ = 0;
    unsigned long weight_ = 0;
    std::uint32_t sourcePosition_ = 0; // in the source's outgoing fan
    std::uint32_t targetPosition_ = 0; // in the target's incoming fan
};

} // namespace Pelko
