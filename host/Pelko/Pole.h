// A pole: a timing point, at which arcs meet. Poles belong to a cell, lie in contiguous blocks, and are read
// in order of creation.
//
// A pole has kinds, which combine: a design port, a clock pin, the data side of a timing check, a start or an
// end of timing paths. The factories create the usual combinations; setters change any of them. An engine
// that walks the graph relies on these rules, which `check()` verifies:
//
//   - Input ports, clock poles and clock sources that launch are initial.
//   - Check poles and output ports are terminal.
//   - A clock pole has a clock mode.
//   - A check pole has a clock pole.
//
// Cost: 128 bytes per pole, and its fan arrays. Every operation is O(1), except `getIncomingEdge` (the
// shorter of the two fans), `insulate` and destruction (the pole's arcs).
#pragma once

#include "Pelko/ClockMode.h"
#include "Pelko/Edges.h"
#include "Pelko/Object.h"
#include "Pelko/PseudoMask.h"
#include "Pelko/detail/Fan.h"

#include <cstdint>

namespace Pelko {

class Cell;
class Delay;
class Pin;

class PELKO_API Pole : public Object {
public:
    // All factories: FactoryFailed: "Null cell".

    // A pole of no kind and without a pin.
    static Pole* create(Cell* owner, const std::string& name = {});
    // A pole of no kind. It becomes the main pole of the pin if the pin has none yet. FactoryFailed: "Null
    // pin".
    static Pole* create(Cell* owner, Pin* pin, const std::string& name = {});
    // An input port: input and initial.
    static Pole* createInput(Cell* owner, const std::string& name = {});
    // An output port: output and terminal.
    static Pole* createOutput(Cell* owner, const std::string& name = {});
    // A defined clock source: clock source and initial. If it is a design port as well, set it to input too.
    static Pole* createClockSource(Cell* owner, const std::string& name = {});
    // The pole of a clock pin: clock and initial, with the edge that it works on. FactoryFailed: "Null pin",
    // "No clock mode".
    static Pole* createClock(Cell* owner, Pin* pin, const ClockMode& mode, const std::string& name = {});
    // The data side of a setup and hold check: both check kinds and terminal. The clock pole governs it, and
    // it becomes an auxiliary pole of the clock pole's pin. FactoryFailed: "Null clock pole", "Not a clock
    // pole", "Clock pole without a pin".
    static Pole* createCheck(Pole* clockPole, const std::string& name = {});

    bool isInput() const { return has(Input); }
    bool isOutput() const { return has(Output); }
    bool isClock() const { return has(Clock); }
    bool isClockSource() const { return has(ClockSource); }
    bool isInitial() const { return has(Initial); }
    bool isTerminal() const { return has(Terminal); }
    bool isSetupCheck() const { return has(SetupCheck); }
    bool isHoldCheck() const { return has(HoldCheck); }
    // Whether the pole is of either check kind: an arc into it holds a hold value (minimum) and a setup value
    // (maximum), not a propagation delay.
    bool isCheck() const { return (kinds_ & (SetupCheck | HoldCheck)) != 0; }
    // Whether a clock pole latches on the other edge than that of its clock mode.
    bool isCaptureInverted() const { return has(CaptureInverted); }

    void setInput(bool set) { change(Input, set); }
    void setOutput(bool set) { change(Output, set); }
    void setClock(bool set) { change(Clock, set); }
    void setClockSource(bool set) { change(ClockSource, set); }
    void setInitial(bool set) { change(Initial, set); }
    void setTerminal(bool set) { change(Terminal, set); }
    void setSetupCheck(bool set) { change(SetupCheck, set); }
    void setHoldCheck(bool set) { change(HoldCheck, set); }
    void setCaptureInverted(bool set) { change(CaptureInverted, set); }

    // The edge that a clock pole works on; None for other poles.
    ClockMode getClockMode() const { return ClockMode(clockMode_); }
    void setClockMode(const ClockMode& mode) { clockMode_ = mode.getCode(); }
    // The clock pole that governs this pole's timing check, or null.
    Pole* getClockPole() const { return clockPole_; }
    void setClockPole(Pole* pole);
    // The pole that represents this pole's pin when domains are built: the one that was set, else the pin's
    // main pole, else this pole.
    Pole* getMainPole() const;
    void setMainPole(Pole* pole);

    // The arcs into the pole and out of it, in order of creation.
    Edges getIncomingEdges() const { return viewOf(incoming_); }
    Edges getOutgoingEdges() const { return viewOf(outgoing_); }
    // The arc from `source` into this pole, or null. Costs a walk of the shorter of the two fans.
    Edge* getIncomingEdge(const Pole* source) const;

    // The classes of the exceptions that start at this pole. CPath::setPseudoMask keeps it.
    PseudoMask getOpeningPseudoMask() const { return PseudoMask(openingBits_); }
    // The classes of the exceptions that end at this pole.
    PseudoMask getClosingPseudoMask() const { return PseudoMask(closingBits_); }

    // The visit mark of the pole. Analyzer::unmark() clears the marks of all poles at once.
    void mark();
    void unmark() { markEpoch_ = 0; }
    bool isMarked() const;

    // Makes all arcs of the pole inactive, so that timing does not pass it.
    void insulate();

    // The pole's own name, else its pin's, else "pole#" and its index.
    std::string getName() const;
    // The name of the net of its pin, else the pole's name.
    std::string getNetUserName() const;
    // The pole's pin, or null.
    Pin* getPin() const { return pin_; }
    Cell* getCell() const { return cell_; }
    // The number of the pole in order of creation, less than Cell::getPoleBound(). It is never used again for
    // another pole.
    std::uint32_t getIndex() const { return index_; }
    // The address to prefetch before a walk reads the pole's kinds, masks, index and incoming arcs, or null
    // if the host has no advice. Reads nothing.
    const void* _getFetchAddress() const { return &incoming_; }
    // The same for its outgoing arcs.
    const void* _getOutgoingFetchAddress() const { return this; }
    // Whether constraints, domains, clocks or other poles refer to this pole.
    bool isReferenced() const { return references_ != 0; }

    std::string getClass() const override;
    std::string getAlias() const override;
    // False while the pole is referenced. Its arcs are destroyed with it.
    bool isDestroyable() const override;
    Ruvex::Record* _getRecord() const override;
    void check(Issue& issue) const override;

    static void* operator new(std::size_t size);
    static void operator delete(void* place);

protected:
    Pole(Cell* owner, Pin* pin);
    void preDestroy() override;

private:
    friend class Analyzer;
    friend class Cell;
    friend class CPath;
    friend class Domain;
    friend class Edge;
    friend class Reference;

    enum Kind : std::uint16_t {
        Input = 1 << 0,
        Output = 1 << 1,
        Clock = 1 << 2,
        ClockSource = 1 << 3,
        Initial = 1 << 4,
        Terminal = 1 << 5,
        SetupCheck = 1 << 6,
        HoldCheck = 1 << 7,
        CaptureInverted = 1 << 8,
    };

    bool has(Kind kind) const { return (kinds_ & kind) != 0; }
    void change(Kind kind, bool set) {
        kinds_ = static_cast<std::uint16_t>(set ? kinds_ | kind : kinds_ & ~unsigned{kind});
    }
    static Pole* make(Cell* owner, Pin* pin, const std::string& name, unsigned kinds, ClockMode::Code mode);
    static Edges viewOf(const detail::Fan& fan);
    static void replace(Pole*& field, Pole* value, const Pole* self);

    // A pole takes two lines of the cache. What a walk against the arcs reads lies in the second.
    Cell* cell_;
    Pin* pin_;
    Pole* mainPole_ = nullptr;
    detail::Fan outgoing_;
    Pole* clockPole_ = nullptr;
    detail::Fan incoming_;
    unsigned long openingBits_ = 0;
    unsigned long closingBits_ = 0;
    std::uint32_t index_ = 0;
    std::uint32_t markEpoch_ = 0;
    std::uint32_t references_ = 0;
    std::uint16_t kinds_ = 0;
    ClockMode::Code clockMode_ = ClockMode::None;
};

// Counts references to poles: a pole with references is not destroyable. A null pole is ignored.
class PELKO_API Reference {
public:
    static void add(Pole* pole) {
        if (pole)
            ++pole->references_;
    }
    static void remove(Pole* pole) {
        if (pole)
            --pole->references_;
    }
};

} // namespace Pelko
