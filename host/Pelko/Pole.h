// A pole: a timing point, where arcs meet. Poles live in the cell, in contiguous blocks, and are read in
// order of creation.
//
// What a pole is shows in its kinds, which combine: a design port, a clock pin, the data side of a timing
// check, a start or an end of timing paths. Factories make the usual ones; setters change any. An engine that
// walks the graph relies on these:
//   - input ports, clock poles and clock sources that launch are initial; check poles and output ports are
//   terminal;
//   - a clock pole has a clock mode, and a check pole a clock pole.
//
// Cost: 128 bytes a pole and its fan arrays; every operation here is O(1), but `getIncomingEdge` (the shorter
// of the two fans) and `insulate` (its arcs).
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
    // A pole of no kind, without a pin | with one, whose main pole it becomes where the pin has none yet.
    // FactoryFailed: "Null cell", "Null pin".
    static Pole* create(Cell* owner, const std::string& name = {});
    static Pole* create(Cell* owner, Pin* pin, const std::string& name = {});
    // An input port: input and initial. | An output port: output and terminal.
    static Pole* createInput(Cell* owner, const std::string& name = {});
    static Pole* createOutput(Cell* owner, const std::string& name = {});
    // A defined clock source, initial. One that is a design port is an input besides.
    static Pole* createClockSource(Cell* owner, const std::string& name = {});
    // A clock pin's pole: clock, initial, with its working edge. FactoryFailed also: "No clock mode".
    static Pole* createClock(Cell* owner, Pin* pin, const ClockMode& mode, const std::string& name = {});
    // The data side of a setup and hold check: check and terminal, governed by the clock pole, whose pin's
    // auxiliary pole it becomes. FactoryFailed: "Null clock pole", "Not a clock pole", "Clock pole without a
    // pin".
    static Pole* createCheck(Pole* clockPole, const std::string& name = {});

    bool isInput() const { return has(Input); }
    bool isOutput() const { return has(Output); }
    bool isClock() const { return has(Clock); }
    bool isClockSource() const { return has(ClockSource); }
    bool isInitial() const { return has(Initial); }
    bool isTerminal() const { return has(Terminal); }
    bool isSetupCheck() const { return has(SetupCheck); }
    bool isHoldCheck() const { return has(HoldCheck); }
    // Either check bit: an arc into this pole holds a hold and a setup value, not a propagation delay.
    bool isCheck() const { return (kinds_ & (SetupCheck | HoldCheck)) != 0; }
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

    // The edge this clock pole works on.
    ClockMode getClockMode() const { return ClockMode(clockMode_); }
    void setClockMode(const ClockMode& mode) { clockMode_ = mode.getCode(); }
    // The clock pole that governs this pole's timing check, or null.
    Pole* getClockPole() const { return clockPole_; }
    void setClockPole(Pole* pole);
    // The pole that stands for this pole's pin in domain building: the one set, else the pin's main pole,
    // else this pole.
    Pole* getMainPole() const;
    void setMainPole(Pole* pole);

    Edges getIncomingEdges() const { return viewOf(incoming_); }
    Edges getOutgoingEdges() const { return viewOf(outgoing_); }
    // The arc from `source` into this pole, or null.
    Edge* getIncomingEdge(const Pole* source) const;

    // The classes of the constrained paths that start here | that end here. Kept by CPath::setPseudoMask.
    PseudoMask getOpeningPseudoMask() const { return PseudoMask(openingBits_); }
    PseudoMask getClosingPseudoMask() const { return PseudoMask(closingBits_); }

    // One visit mark a pole. Analyzer::unmark() clears all marks at once.
    void mark();
    void unmark() { markEpoch_ = 0; }
    bool isMarked() const;

    // Cuts the pole out of timing propagation: all its arcs become inactive.
    void insulate();

    // The pole's own name, else its pin's, else "pole#" and its index.
    std::string getName() const;
    // The name of its pin's net, else the pole's name.
    std::string getNetUserName() const;
    Pin* getPin() const { return pin_; }
    Cell* getCell() const { return cell_; }
    // Below Cell::getPoleBound(), in order of creation; not given to another pole later.
    std::uint32_t getIndex() const { return index_; }
    // The address to prefetch before a walk reads the pole's kinds, masks, index and incoming arcs, or null if
    // the host has no advice. Reads nothing.
    const void* _getFetchAddress() const { return &incoming_; }
    // The same for its outgoing arcs.
    const void* _getOutgoingFetchAddress() const { return this; }
    // Whether constraints, domains, clocks or other poles refer to this pole.
    bool isReferenced() const { return references_ != 0; }

    std::string getClass() const override;
    std::string getAlias() const override;
    // False while the pole is referenced. Its arcs end with it.
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

    // A pole is two lines of the cache; what walks read against the arcs lies in the second.
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

// Counts one reference to each pole, so that a referenced pole is not destroyed. Null poles are passed over.
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
