// Finds objects by name or pattern.
//
// A pattern is first taken as a name, by hash; only where that finds nothing, and where it has wildcards, are
// all objects of its kind compared, or, once there were several patterns, those that begin as it does. What
// a pattern found is kept, within bounds, for when it comes again. A
// pin's pattern is "instance/pin" with the last slash before the pin, and both sides match by themselves;
// without a slash it is matched against the whole name.
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
    Finder(const Design::RoutedDesign& design, const std::vector<Design::Clock>& clocks, Tcl_Interp* tcl);

    // Appends what matches. Throws CommandError for a bad regular expression.
    void find(Design::ObjectKind kind, std::string_view pattern, const FindOptions& options,
              std::vector<Design::Object>& found) const;
    // By name alone.
    bool findExact(Design::ObjectKind kind, std::string_view name, std::vector<Design::Object>& found) const;

    std::string name(const Design::Object& object) const;
    bool exists(const Design::Object& object) const; // a clock that was replaced does not
    // The object behind a handle; nothing for any other value, and for an index that never was.
    std::optional<Design::Object> toKnown(Tcl_Obj* value) const;

    std::uint32_t clock(std::string_view name) const; // none where there is none
    void nameClock(const std::string& name, std::uint32_t index) { clockByName_[name] = index; }
    void forgetClock(const std::string& name) { clockByName_.erase(name); }

private:
    using Test = std::function<bool(std::string_view)>;

    void search(Design::ObjectKind kind, std::string_view pattern, const FindOptions& options,
                std::vector<Design::Object>& found) const;
    bool findExactName(Design::ObjectKind kind, const std::string& name,
                       std::vector<Design::Object>& found) const;
    std::uint32_t exactPin(std::string_view name) const;
    void findWholePins(const Glob& glob, const FindOptions& options,
                       std::vector<Design::Object>& found) const;
    bool isInAPinsOwnName(std::string_view piece) const;
    void findPins(const Glob& cells, const Glob& pins, const FindOptions& options,
                  std::vector<Design::Object>& found) const;
    void findAll(Design::ObjectKind kind, const Test& test, const std::string& prefix,
                 std::vector<Design::Object>& found) const;
    template <class NameOf, class Use>
    void forEachNamed(std::size_t count, NameOf nameOf, const std::string& prefix,
                      std::vector<std::uint32_t>& order, Use use) const;
    bool matches(const Test& test, std::string_view name, const FindOptions& options) const;

    const Design::RoutedDesign& design_;
    const std::vector<Design::Clock>& clocks_;
    Tcl_Interp* tcl_;
    std::unordered_map<std::string, std::uint32_t> clockByName_; // those that live
    mutable unsigned patterns_ = 0;
    mutable std::vector<std::uint32_t> cellsByName_, netsByName_; // in byte order; empty: not yet made
    mutable std::unordered_map<std::string, std::vector<Design::Object>> known_; // what patterns have found
    mutable std::size_t knownObjects_ = 0;
    mutable std::vector<std::string_view> pinsOwnNames_; // each once; empty: not yet made
};

} // namespace Readers::Sdc
