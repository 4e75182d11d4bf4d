// Makes the design of an SDF file's delays, with a netlist's connections or with the file's own.
//
//   Design design;
//   Annotator annotator(design, netlist or null, options, file, diagnostics);
//   Sdf::parse(source, annotator, diagnostics);
//   annotator.finish();
//
// With a netlist its pins and nets are the design, and a delay of anything else is a counted warning. Without
// one, the connections are the INTERCONNECT entries, and pads' pins that nothing drives or that drive nothing
// stand for ports. A pad is a cell that joins a port: where the file has neither arc nor check of its pins,
// arcs of zero delay join them. A value that does not fit the engine's integers is an error with its line.
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

    // After the last event: connects, counts what was passed over, and builds the design's tables.
    void finish();

    // Wires and pad arcs to which nothing gave a delay.
    std::uint64_t bareArcs() const { return bareArcs_; }
    // The values that were rounded.
    const Base::Rounding& rounding() const { return rounding_; }

    void header(const Sdf::Header& header) override;
    void cell(std::string_view type, std::string_view instance, std::span<const std::uint32_t> escaped,
              Sdf::Where where) override;
    void ioPath(const Sdf::Event& from, const Sdf::Path& to, std::span<const Sdf::Value> values,
                bool conditional, bool increment, Sdf::Where where) override;
    void interconnect(const Sdf::Path& from, const Sdf::Path& to, std::span<const Sdf::Value> values,
                      bool increment, Sdf::Where where) override;
    void port(const Sdf::Path& to, std::span<const Sdf::Value> values, bool increment,
              Sdf::Where where) override;
    void netDelay(const Sdf::Path& net, std::span<const Sdf::Value> values, bool increment,
                  Sdf::Where where) override;
    void device(const std::optional<Sdf::Path>& output, std::span<const Sdf::Value> values, bool increment,
                Sdf::Where where) override;
    void check(Sdf::CheckKind kind, const Sdf::Event& data, const Sdf::Event& clock,
               std::span<const Sdf::Value> values, Sdf::Where where) override;
    void ignored(std::string_view keyword, Sdf::Where where) override;

private:
    // Arcs by their ends and the edge that sets them off; checks likewise.
    struct Key {
        std::uint32_t from, to;
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
        std::uint32_t cell, output; // output none: all
        Design::Interval delay;
        bool increment;
        Sdf::Where where;
    };
    // A cell that joins a port: its pins of which the file says nothing, and how many arcs are to join it.
    struct Pad {
        std::vector<std::uint32_t> inputs, outputs;
        std::size_t arcs = 0;
    };
    // What is told once, with a count, at the end.
    struct Counted {
        std::uint64_t count = 0;
        Sdf::Where first;
        std::string example;
        Base::Severity severity = Base::Severity::note;
    };

    // A pin that the SDF alone knows, and the first entry that named it.
    struct ExtraPin {
        std::uint32_t pin;
        Sdf::Where where;
        std::uint64_t count = 0;
    };
    // An instance as the file spells it.
    struct Spelled {
        std::string_view text;
        std::span<const std::uint32_t> escaped; // as in a Path
        std::string_view type;                  // empty: not known
        Sdf::Where where;
        std::string_view otherEnd = {}; // of a wire: the instance there
    };

    void takeNetlist(const Design::Netlist& netlist);
    std::uint32_t findInstance(const Spelled& instance);
    std::uint32_t findWithoutNetlist(std::string_view instance);
    std::uint32_t findDotted(const Spelled& instance, std::uint32_t straight);
    std::uint32_t findSpelled(const Spelled& instance);
    std::uint32_t findBelowPrefix(const Spelled& instance);
    std::uint32_t guessPrefix(const Spelled& instance);
    bool showsPrefix(const Spelled& instance, std::string_view prefix, std::uint32_t cell) const;
    std::uint32_t onlyMatch(std::string_view name, const Spelled& instance);
    std::uint32_t takeStraight(std::uint32_t cell, const Spelled& instance);
    std::uint32_t settle(std::uint32_t cell);
    bool isTop(const Spelled& instance);
    bool isAbove(const Spelled& instance);
    void countLost(Sdf::Where where);
    const Spelling& spelling();
    // isWire: the entry is of a wire, which makes no pin known that the netlist does not have.
    std::uint32_t pinOf(std::uint32_t cell, std::string_view pin, Sdf::Where where, bool isWire);
    std::uint32_t extraPin(std::uint32_t cell, std::string_view pin, Sdf::Where where);
    std::uint32_t resolve(const Sdf::Path& path, Sdf::Where where);
    std::uint32_t resolveOtherwise(const Spelled& instance, std::string_view pin);
    std::uint32_t resolveInCell(std::uint32_t cell, const Sdf::Path& path, Sdf::Where where);
    std::optional<Given> givenBy(std::span<const Sdf::Value> values, Sdf::Where where);
    std::optional<Design::Interval> intervalOf(std::span<const Sdf::Value> values, Sdf::Where where);
    Design::Interval intervalOf(const Sdf::Value& value, Sdf::Where where);
    std::optional<std::int32_t> checkValue(const Sdf::Value& value, Sdf::Where where);
    std::int32_t toUnits(const Base::Decimal& value, Sdf::Where where);
    Design::Interval sum(const Design::Interval& a, const Design::Interval& b, Sdf::Where where) const;
    // An ABSOLUTE value replaces what is known, an INCREMENT adds to it.
    void update(Design::Interval& known, const Design::Interval& delay, bool increment,
                Sdf::Where where) const;
    void touchHalf(std::uint32_t cell, std::string_view pin);
    void setArc(std::uint32_t from, std::uint32_t to, Design::Transition edge, bool wire, const Given& given,
                bool conditional, bool increment, Sdf::Where where);
    void mergeConditions(std::uint32_t arc, const Given& given, bool conditional, bool increment,
                         Sdf::Where where);
    void setWire(std::uint32_t from, std::uint32_t to, const Design::Interval& delay, bool increment,
                 Sdf::Where where);
    void addCheck(std::uint32_t data, const Sdf::Event& clock, std::uint32_t clockPin, bool asynchronous,
                  std::optional<std::int32_t> setup, std::optional<std::int32_t> hold);
    void addPulseCheck(std::uint32_t pin, const Sdf::Event& event, bool period, std::int32_t required);
    void count(const char* what, Base::Severity severity, Sdf::Where where, std::string example = {});

    // What the netlist's pins of which the file says nothing may be. A pin that the SDF alone knows is
    // suspect if there is one of these in its cell: then it may be the same under another name.
    struct SilentPins {
        bool input = false, output = false;
    };

    SilentPins silentPinsOf(std::uint32_t cell, const std::vector<std::uint8_t>& uses,
                            const std::vector<bool>& driven) const;
    std::vector<bool> drivenNets(const std::vector<std::uint8_t>& uses) const;
    void countExtraPins();
    void inferDirections();
    void applyDevices();
    void directPinsOf(const DeviceDelay& device, const std::vector<bool>& driven);
    void applyDevice(const DeviceDelay& device, const std::vector<Key>& arcs);
    void joinPads();
    void joinSilentCells();
    void joinSilentCell(std::uint32_t cell, Sdf::Where where, const std::vector<bool>& driven);
    bool isFirstOfNet(std::uint32_t port, std::vector<bool>& seen) const;
    bool isBufferPad(std::uint32_t pin) const;
    void joinPad(std::uint32_t padPin, const Pad& pad);
    void addBareArc(std::uint32_t from, std::uint32_t to, bool wire);
    void makeWire(std::uint32_t from, std::uint32_t to, std::uint32_t net);
    std::vector<std::uint8_t> usesOfPins() const;
    void makeWires();
    void applyExpressions();
    void joinExpressions();
    void makeNetsOfWires();
    void findPortsOfPads();
    void countIdleChecks();
    void reportCounts();
    bool drives(std::uint32_t pin) const;
    bool receives(std::uint32_t pin) const;

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
    std::vector<bool> settled_;          // by cell: what the file calls it is known
    std::string prefix_;                 // of all instances, with its divider; empty: none
    std::string guessedBy_;              // the instance that showed the prefix, and what it was taken for
    std::string straight_;               // the first instance that was found without a prefix
    Base::HashMap<std::uint32_t, std::uint32_t> extraOf_; // by pin, into extraPins_
    std::vector<ExtraPin> extraPins_;
    std::vector<std::uint32_t>
        cells_; // that it means: one, or all of its type; empty: the top or an unknown one
    bool atTop_ = false;
    Base::HashMap<Key, std::uint32_t, KeyHash> arcs_, checks_, pulseChecks_;
    Base::HashMap<std::uint32_t, Conditioned> conditioned_; // by arc
    std::vector<DeviceDelay> devices_;
    std::unordered_set<std::uint32_t> touched_;            // pins of half an arc or check
    Base::HashMap<Key, Design::Interval, KeyHash> wires_;  // with a netlist: delays of wires, made at the end
    Base::HashMap<std::uint32_t, Design::Interval> loads_; // PORT delays by pin
    std::vector<std::pair<std::uint32_t, Sdf::Where>>
        loadedCells_;                                          // the same by cell, in the order of the file
    Base::HashMap<std::uint32_t, Design::Interval> netDelays_; // by net
    std::map<std::string, Counted> counted_;
    std::uint64_t bareArcs_ = 0;
    std::vector<std::uint32_t> invertedPins_, expressionCells_; // of the netlist
    Base::Rounding rounding_;
};

} // namespace Readers
