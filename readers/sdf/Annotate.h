// Makes the design of an SDF file's delays, with a netlist's connections or with the file's own.
//
//   Design design;
//   Annotator annotator(design, netlist or null, options, file, diagnostics);
//   Sdf::parse(source, annotator, diagnostics);
//   annotator.finish();
//
// With a netlist, the design consists of its pins and nets, and delays of anything else are counted in a
// warning. Without one, the connections are the INTERCONNECT entries, and the pins of pads without a driver
// or without fan-out stand for ports. A pad is a cell that is connected to a port. If the file has neither
// arcs nor checks of its pins, they are joined by arcs of zero delay. A value that does not fit the engine's
// integers is an error with its line.
#pragma once

#include "base/Rounding.h"
#include "design/RoutedDesign.h"
#include "readers/sdf/Handler.h"
#include "readers/sdf/Spelling.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace Readers {

// Which values of a triple feed the early and the late side.
enum class Corner : std::uint8_t { minimum, typical, maximum, minmax };

struct AnnotateOptions {
    Corner corner = Corner::minmax;
    int scale = -12; // a unit is 10^scale s
};

class Annotator : public Sdf::Handler {
public:
    Annotator(Design::RoutedDesign& design, const Design::Netlist* netlist, const AnnotateOptions& options,
              std::string file, Base::Diagnostics& diagnostics);

    // Called after the last event. Connects the design, reports what was passed over, and builds the design's
    // tables.
    void finish();

    // How many wires and pad arcs have no delay in the file.
    std::uint64_t bareArcs() const { return bareArcs_; }
    // Which values were rounded.
    const Base::Rounding& rounding() const { return rounding_; }

    void header(const Sdf::Header& header) override;
    void cell(std::string_view type, std::string_view instance, std::span<const std::uint32_t> escaped,
              Base::Position where) override;
    void ioPath(const Sdf::Event& from, const Sdf::Path& to, std::span<const Sdf::Value> values,
                bool conditional, bool increment, Base::Position where) override;
    void interconnect(const Sdf::Path& from, const Sdf::Path& to, std::span<const Sdf::Value> values,
                      bool increment, Base::Position where) override;
    void port(const Sdf::Path& to, std::span<const Sdf::Value> values, bool increment,
              Base::Position where) override;
    void netDelay(const Sdf::Path& net, std::span<const Sdf::Value> values, bool increment,
                  Base::Position where) override;
    void device(const std::optional<Sdf::Path>& output, std::span<const Sdf::Value> values, bool increment,
                Base::Position where) override;
    void check(Sdf::CheckKind kind, const Sdf::Event& data, const Sdf::Event& clock,
               std::span<const Sdf::Value> values, Base::Position where) override;
    void ignored(std::string_view keyword, Base::Position where) override;

private:
    // Arcs by their ends and the edge that sets them off; checks likewise.
    struct Key {
        Design::PinId from, to;
        Design::Transition edge;

        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    // The values of an entry: rise and fall together, and for which of these there is one.
    struct Given {
        Design::Interval delay;
        bool rises = true, falls = true;
    };
    // An arc of which something holds under a condition: what holds with one and what holds without.
    struct Conditioned {
        std::optional<Design::Interval> with, without;
    };
    struct DeviceDelay {
        Design::CellId cell;
        Design::PinId output; // none: all
        Design::Interval delay;
        bool increment;
        Base::Position where;
    };
    // A cell that is connected to a port: its pins that the file does not mention, and how many arcs are to
    // be made.
    struct Pad {
        std::vector<Design::PinId> inputs, outputs;
        std::size_t arcs = 0;
    };
    // What is reported once at the end, with a count.
    struct Counted {
        std::uint64_t count = 0;
        Base::Position first;
        std::string example;
        Base::Severity severity = Base::Severity::note;
    };

    // A pin that only the SDF has, and the first entry that names it.
    struct ExtraPin {
        Design::PinId pin;
        Base::Position where;
        std::uint64_t count = 0;
    };
    // An instance as the file spells it.
    struct Spelled {
        std::string_view text;
        std::span<const std::uint32_t> escaped; // as in a Path
        std::string_view type;                  // empty: not known
        Base::Position where;
        std::string_view otherEnd = {}; // of a wire: the instance there
    };

    void takeNetlist(const Design::Netlist& netlist);
    Design::CellId findInstance(const Spelled& instance);
    Design::CellId findWithoutNetlist(std::string_view instance);
    Design::CellId findDotted(const Spelled& instance, Design::CellId straight);
    Design::CellId findSpelled(const Spelled& instance);
    Design::CellId findBelowPrefix(const Spelled& instance);
    Design::CellId guessPrefix(const Spelled& instance);
    bool showsPrefix(const Spelled& instance, std::string_view prefix, Design::CellId cell) const;
    Design::CellId onlyMatch(std::string_view name, const Spelled& instance);
    Design::CellId takeStraight(Design::CellId cell, const Spelled& instance);
    Design::CellId settle(Design::CellId cell);
    bool isTop(const Spelled& instance);
    bool isAbove(const Spelled& instance);
    void countLost(Base::Position where);
    const Spelling& spelling();
    // isWire: the entry is about a wire; then no pin is added that the netlist does not have.
    Design::PinId pinOf(Design::CellId cell, std::string_view pin, Base::Position where, bool isWire);
    Design::PinId extraPin(Design::CellId cell, std::string_view pin, Base::Position where);
    Design::PinId resolve(const Sdf::Path& path, Base::Position where);
    Design::PinId resolveOtherwise(const Spelled& instance, std::string_view pin);
    Design::PinId resolveInCell(Design::CellId cell, const Sdf::Path& path, Base::Position where);
    std::optional<Given> givenBy(std::span<const Sdf::Value> values, Base::Position where);
    std::optional<Design::Interval> intervalOf(std::span<const Sdf::Value> values, Base::Position where);
    Design::Interval intervalOf(const Sdf::Value& value, Base::Position where);
    std::optional<std::int32_t> checkValue(const Sdf::Value& value, Base::Position where);
    std::int32_t toUnits(const Base::Decimal& value, Base::Position where);
    Design::Interval sum(const Design::Interval& a, const Design::Interval& b, Base::Position where) const;
    // An ABSOLUTE value replaces what is known, an INCREMENT adds to it.
    void update(Design::Interval& known, const Design::Interval& delay, bool increment,
                Base::Position where) const;
    void touchHalf(Design::CellId cell, std::string_view pin);
    void setArc(Design::PinId from, Design::PinId to, Design::Transition edge, bool wire, const Given& given,
                bool conditional, bool increment, Base::Position where);
    void mergeConditions(Design::ArcId arc, const Given& given, bool conditional, bool increment,
                         Base::Position where);
    void setWire(Design::PinId from, Design::PinId to, const Design::Interval& delay, bool increment,
                 Base::Position where);
    void addCheck(Design::PinId data, const Sdf::Event& clock, Design::PinId clockPin, bool asynchronous,
                  std::optional<std::int32_t> setup, std::optional<std::int32_t> hold);
    void addPulseCheck(Design::PinId pin, const Sdf::Event& event, bool period, std::int32_t required);
    void count(const char* what, Base::Severity severity, Base::Position where, std::string example = {});

    using Uses = Base::IndexVector<Design::PinId, std::uint8_t>; // how the file uses each pin
    using DrivenNets = Base::IndexVector<Design::NetId, bool>;

    // Which directions the netlist's pins may have that the file does not mention. A pin that only the SDF
    // has is suspect if its cell has such a pin: it may be the same pin under another name.
    struct SilentPins {
        bool input = false, output = false;
    };

    SilentPins silentPinsOf(Design::CellId cell, const Uses& uses, const DrivenNets& driven) const;
    DrivenNets drivenNets(const Uses& uses) const;
    void countExtraPins();
    void inferDirections();
    void applyDevices();
    void directPinsOf(const DeviceDelay& device, const DrivenNets& driven);
    void applyDevice(const DeviceDelay& device, const std::vector<Key>& arcs);
    void joinPads();
    void joinSilentCells();
    void joinSilentCell(Design::CellId cell, Base::Position where, const DrivenNets& driven);
    bool isFirstOfNet(Design::PinId port, DrivenNets& seen) const;
    bool isBufferPad(Design::PinId pin) const;
    void joinPad(Design::PinId padPin, const Pad& pad);
    void addBareArc(Design::PinId from, Design::PinId to, bool wire);
    void makeWire(Design::PinId from, Design::PinId to, Design::NetId net);
    Uses usesOfPins() const;
    void makeWires();
    void applyExpressions();
    void joinExpressions();
    void makeNetsOfWires();
    void findPortsOfPads();
    void countIdleChecks();
    void reportCounts();
    bool drives(Design::PinId pin) const;
    bool receives(Design::PinId pin) const;

    Design::RoutedDesign& design_;
    const bool hasNetlist_;
    const AnnotateOptions options_;
    const std::string file_;
    Base::Diagnostics& diagnostics_;

    int fileScale_ = -9;
    char divider_ = '.';
    std::string instance_;               // of the current CELL
    std::vector<std::uint32_t> escaped_; // its dividers that belong to names
    bool isAbove_ = false;               // the current CELL is of an instance that is no cell itself
    bool isPrefixed_ = false;            // the current CELL is the top, below a prefix
    std::unique_ptr<Spelling> spelling_; // made when it is needed
    Base::IndexVector<Design::CellId, bool> settled_; // what the file calls it is known
    std::string prefix_;                              // of all instances, with its divider; empty: none
    std::string guessedBy_; // the instance that showed the prefix, and what it was taken for
    std::string straight_;  // the first instance that was found without a prefix
    using ExtraId = Base::Index<struct ExtraTag>;
    Base::HashMap<Design::PinId, ExtraId> extraOf_;
    Base::IndexVector<ExtraId, ExtraPin> extraPins_;
    // The cells that it means: one, or all of its type; empty: the top or an unknown one.
    std::vector<Design::CellId> cells_;
    bool atTop_ = false;
    Base::HashMap<Key, Design::ArcId, KeyHash> arcs_;
    Base::HashMap<Key, Design::CheckId, KeyHash> checks_;
    Base::HashMap<Key, Design::PulseCheckId, KeyHash> pulseChecks_;
    Base::HashMap<Design::ArcId, Conditioned> conditioned_;
    std::vector<DeviceDelay> devices_;
    std::unordered_set<Design::PinId> touched_;            // pins of half an arc or check
    Base::HashMap<Key, Design::Interval, KeyHash> wires_;  // with a netlist: delays of wires, made at the end
    Base::HashMap<Design::PinId, Design::Interval> loads_; // PORT delays
    std::vector<std::pair<Design::CellId, Base::Position>>
        loadedCells_; // the same by cell, in the order of the file
    Base::HashMap<Design::NetId, Design::Interval> netDelays_;
    std::map<std::string, Counted> counted_;
    std::uint64_t bareArcs_ = 0;
    std::vector<Design::PinId> invertedPins_; // of the netlist
    std::vector<Design::CellId> expressionCells_;
    Base::Rounding rounding_;
};

} // namespace Readers
