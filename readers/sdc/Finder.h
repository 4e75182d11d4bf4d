// Finds objects by name or pattern.
//
// A pattern is first looked up as a name, by hash. If that finds nothing and the pattern has wildcards, it is
// compared with all objects of its kind or, after several patterns, with those that begin like the pattern.
// The results of patterns are kept, within bounds, in case a pattern is used again. A pin's pattern is
// "instance/pin", split at the last slash, and each side matches on its own; without a slash it is matched
// against the whole name.
#pragma once

#include "design/Constraints.h"
#include "readers/sdc/Glob.h"

#include <tcl.h>

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Readers::Sdc {

struct FindOptions {
    bool regexp = false;
    bool ignoreCase = false;
    bool hierarchical = false; // a name without its leading instances matches too
};

class Finder {
public:
    // The clocks may grow and change while the finder lives. The interpreter is for regular expressions.
    Finder(const Design::RoutedDesign& design, const Design::ClockTable& clocks, Tcl_Interp* tcl);

    // Appends what matches. Throws CommandError for a bad regular expression.
    void find(Design::ObjectKind kind, std::string_view pattern, const FindOptions& options,
              std::vector<Design::Object>& found) const;
    // By name, without wildcards.
    bool findExact(Design::ObjectKind kind, std::string_view name, std::vector<Design::Object>& found) const;

    std::string name(const Design::Object& object) const;
    bool exists(const Design::Object& object) const; // a clock that was replaced does not
    // Returns the object that a handle stands for; nothing for any other value, and for an index that was
    // never used.
    std::optional<Design::Object> toKnown(Tcl_Obj* value) const;

    Design::ClockId clock(std::string_view name) const; // none if there is no such clock
    void nameClock(const std::string& name, Design::ClockId index) { clockByName_[name] = index; }
    void forgetClock(const std::string& name) { clockByName_.erase(name); }

private:
    using Test = std::function<bool(std::string_view)>;

    void search(Design::ObjectKind kind, std::string_view pattern, const FindOptions& options,
                std::vector<Design::Object>& found) const;
    bool findExactName(Design::ObjectKind kind, const std::string& name,
                       std::vector<Design::Object>& found) const;
    Design::PinId exactPin(std::string_view name) const;
    void findWholePins(const Glob& glob, const FindOptions& options,
                       std::vector<Design::Object>& found) const;
    bool isInAPinsOwnName(std::string_view piece) const;
    void findPins(const Glob& cells, const Glob& pins, const FindOptions& options,
                  std::vector<Design::Object>& found) const;
    void findAll(Design::ObjectKind kind, const Test& test, const std::string& prefix,
                 std::vector<Design::Object>& found) const;
    template <class Id, class NameOf, class Use>
    void forEachNamed(std::size_t count, NameOf nameOf, const std::string& prefix, std::vector<Id>& order,
                      Use use) const;
    bool matches(const Test& test, std::string_view name, const FindOptions& options) const;

    const Design::RoutedDesign& design_;
    const Design::ClockTable& clocks_;
    Tcl_Interp* tcl_;
    std::unordered_map<std::string, Design::ClockId> clockByName_; // those that live
    mutable unsigned patterns_ = 0;
    mutable std::vector<Design::CellId> cellsByName_; // in byte order; empty: not yet made
    mutable std::vector<Design::NetId> netsByName_;   // likewise
    mutable std::unordered_map<std::string, std::vector<Design::Object>> known_; // what patterns have found
    mutable std::size_t knownObjects_ = 0;
    mutable std::vector<std::string_view> pinsOwnNames_; // each once; empty: not yet made
};

} // namespace Readers::Sdc
