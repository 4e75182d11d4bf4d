// Looking up objects: by hash for names, one pass over all names of the kind for patterns.
#include "readers/sdc/Finder.h"

#include "readers/sdc/Interpreter.h"
#include "readers/sdc/Objects.h"

#include <algorithm>
#include <unordered_set>

namespace Readers::Sdc {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// From so many patterns on it pays to have the names in order.
constexpr unsigned fewPatterns = 8;

// Beyond that the results of all patterns so far are forgotten.
constexpr std::size_t mostKnownObjects = 4'000'000;

std::string withoutEscapes(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 1 < text.size())
            ++at;
        result += text[at];
    }
    return result;
}

} // namespace

Finder::Finder(const Design::RoutedDesign& design, const Design::ClockTable& clocks, Tcl_Interp* tcl)
    : design_(design), clocks_(clocks), tcl_(tcl) {}

Design::ClockId Finder::clock(std::string_view name) const {
    const auto known = clockByName_.find(std::string(name));
    return known == clockByName_.end() ? Design::ClockId() : known->second;
}

std::string Finder::name(const Design::Object& object) const {
    switch (object.kind) {
    case Design::ObjectKind::cell:
        return std::string(design_.cellName(object.cell()));
    case Design::ObjectKind::net:
        return std::string(design_.netName(object.net()));
    case Design::ObjectKind::clock:
        return clocks_[object.clock()].name;
    case Design::ObjectKind::port:
    case Design::ObjectKind::pin:
        break;
    }
    return design_.pinName(object.pin());
}

bool Finder::exists(const Design::Object& object) const {
    switch (object.kind) {
    case Design::ObjectKind::cell:
        return object.index < design_.cells.size();
    case Design::ObjectKind::net:
        return object.index < design_.nets.size();
    case Design::ObjectKind::clock:
        return object.index < clocks_.size() && !clocks_[object.clock()].removed;
    case Design::ObjectKind::port:
    case Design::ObjectKind::pin:
        break;
    }
    if (object.index >= design_.pins.size())
        return false;
    // A pad's pin can be both.
    return object.kind == Design::ObjectKind::port ? design_.isPort(object.pin())
                                                   : !design_.isPortOfTop(object.pin());
}

std::optional<Design::Object> Finder::toKnown(Tcl_Obj* value) const {
    const std::optional<Design::Object> object = toObject(value);
    if (!object)
        return std::nullopt;
    const bool replaced = object->kind == Design::ObjectKind::clock && object->index < clocks_.size();
    return replaced || exists(*object) ? object : std::nullopt;
}

// --- By name ---

Design::PinId Finder::exactPin(std::string_view name) const {
    const std::size_t slash = name.rfind('/');
    if (slash == npos)
        return Base::none;
    const Design::CellId cell = design_.findCell(name.substr(0, slash));
    return cell == Base::none ? Design::PinId() : design_.findPin(cell, name.substr(slash + 1));
}

bool Finder::findExactName(Design::ObjectKind kind, const std::string& name,
                           std::vector<Design::Object>& found) const {
    const auto take = [&](auto id) {
        if (id != Base::none)
            found.push_back({kind, id.number()});
        return id != Base::none;
    };
    switch (kind) {
    case Design::ObjectKind::port:
        return take(design_.findPort(name));
    case Design::ObjectKind::pin:
        return take(exactPin(name));
    case Design::ObjectKind::cell:
        return take(design_.findCell(name));
    case Design::ObjectKind::net:
        return take(design_.findNet(name));
    case Design::ObjectKind::clock:
        break;
    }
    return take(clock(name));
}

// Slashes are accepted even if the design's divider is another character.
bool Finder::findExact(Design::ObjectKind kind, std::string_view pattern,
                       std::vector<Design::Object>& found) const {
    std::string name = withoutEscapes(pattern);
    if (findExactName(kind, name, found))
        return true;
    if (design_.divider == '/' || kind == Design::ObjectKind::port || kind == Design::ObjectKind::clock)
        return false;
    const std::size_t last = kind == Design::ObjectKind::pin ? name.rfind('/') : npos;
    const auto end = last == npos ? name.end() : name.begin() + static_cast<std::ptrdiff_t>(last);
    std::replace(name.begin(), end, '/', design_.divider);
    return findExactName(kind, name, found);
}

// --- By pattern ---

void Finder::find(Design::ObjectKind kind, std::string_view pattern, const FindOptions& options,
                  std::vector<Design::Object>& found) const {
    if (!options.regexp && !options.hierarchical && !options.ignoreCase && findExact(kind, pattern, found))
        return;
    if (kind == Design::ObjectKind::clock) { // they come and go
        search(kind, pattern, options, found);
        return;
    }
    std::string key = {static_cast<char>('0' + static_cast<int>(kind)), options.regexp ? 'r' : 'g',
                       options.ignoreCase ? 'i' : '-', options.hierarchical ? 'h' : '-'};
    key += pattern;
    auto known = known_.find(key);
    if (known == known_.end()) {
        std::vector<Design::Object> objects;
        search(kind, pattern, options, objects);
        knownObjects_ += objects.size() + 1;
        if (knownObjects_ > mostKnownObjects) {
            known_.clear();
            knownObjects_ = objects.size() + 1;
        }
        known = known_.emplace(std::move(key), std::move(objects)).first;
    }
    found.insert(found.end(), known->second.begin(), known->second.end());
}

void Finder::search(Design::ObjectKind kind, std::string_view pattern, const FindOptions& options,
                    std::vector<Design::Object>& found) const {
    if (options.regexp) {
        const std::string whole = "^(?:" + std::string(pattern) + ")$";
        Tcl_Obj* const text = Tcl_NewStringObj(whole.c_str(), -1);
        Tcl_IncrRefCount(text);
        const int flags = TCL_REG_ADVANCED | (options.ignoreCase ? TCL_REG_NOCASE : 0);
        Tcl_RegExp const compiled = Tcl_GetRegExpFromObj(tcl_, text, flags);
        if (compiled == nullptr) {
            Tcl_DecrRefCount(text);
            throw CommandError(std::string(Tcl_GetStringResult(tcl_)));
        }
        std::string name;
        const Test test = [&](std::string_view candidate) {
            name = candidate;
            return Tcl_RegExpExec(tcl_, compiled, name.c_str(), name.c_str()) == 1;
        };
        findAll(
            kind, [&](std::string_view candidate) { return matches(test, candidate, options); }, {}, found);
        Tcl_DecrRefCount(text);
        return;
    }
    const std::size_t slash = kind == Design::ObjectKind::pin ? pattern.rfind('/') : npos;
    const Glob glob(pattern, options.ignoreCase);
    if (glob.isLiteral() && !options.hierarchical)
        return;
    if (slash != npos) {
        const bool escaped = slash > 0 && pattern[slash - 1] == '\\';
        findPins(Glob(pattern.substr(0, escaped ? slash - 1 : slash), options.ignoreCase),
                 Glob(pattern.substr(slash + 1), options.ignoreCase), options, found);
        return;
    }
    if (kind == Design::ObjectKind::pin && !isInAPinsOwnName(glob.piece())) {
        findWholePins(glob, options, found);
        return;
    }
    const Test test = [&glob](std::string_view name) { return glob.matches(name); };
    findAll(
        kind, [&](std::string_view name) { return matches(test, name, options); },
        options.hierarchical ? std::string() : glob.prefix(), found);
}

// Those objects of a kind whose names may begin with the prefix, by index.
template <class Id, class NameOf, class Use>
void Finder::forEachNamed(std::size_t count, NameOf nameOf, const std::string& prefix, std::vector<Id>& order,
                          Use use) const {
    if (prefix.empty() || ++patterns_ <= fewPatterns) {
        std::ranges::for_each(Base::firstIds<Id>(count), use);
        return;
    }
    if (order.empty()) {
        const auto all = Base::firstIds<Id>(count);
        order.assign(all.begin(), all.end());
        std::ranges::sort(order, {}, nameOf);
    }
    const auto begins = [&](Id id) { return nameOf(id).substr(0, prefix.size()); };
    const auto range = std::ranges::equal_range(order, std::string_view(prefix), {}, begins);
    std::vector<Id> found(range.begin(), range.end());
    std::ranges::sort(found);
    std::ranges::for_each(found, use);
}

bool Finder::matches(const Test& test, std::string_view name, const FindOptions& options) const {
    if (test(name))
        return true;
    if (!options.hierarchical)
        return false;
    for (std::size_t at = 0; at + 1 < name.size(); ++at)
        if ((name[at] == '/' || name[at] == design_.divider) && test(name.substr(at + 1)))
            return true;
    return false;
}

bool Finder::isInAPinsOwnName(std::string_view piece) const {
    if (pinsOwnNames_.empty()) {
        std::unordered_set<Base::Name> known;
        for (const Design::Pin& pin : design_.pins)
            if (known.insert(pin.name).second)
                pinsOwnNames_.push_back(design_.names[pin.name]);
    }
    return std::ranges::any_of(pinsOwnNames_,
                               [piece](std::string_view name) { return name.find(piece) != npos; });
}

// Pins by their whole names, if some piece of the pattern can only be in the name of the cell. Cells without
// that piece are skipped.
void Finder::findWholePins(const Glob& glob, const FindOptions& options,
                           std::vector<Design::Object>& found) const {
    const Test test = [&glob](std::string_view name) { return glob.matches(name); };
    const auto first = static_cast<std::ptrdiff_t>(found.size());
    std::string name;
    for (const Design::CellId cell : design_.cells.ids()) {
        const std::string_view cellName = design_.cellName(cell);
        if (cellName.find(glob.piece()) == npos)
            continue;
        const bool all = glob.isOpen() && matches(test, cellName, options);
        for (const Design::PinId pin : design_.pinsOfCell(cell)) {
            name = cellName;
            name += '/';
            name += design_.names[design_.pins[pin].name];
            if (all || matches(test, name, options))
                found.push_back({Design::ObjectKind::pin, pin});
        }
    }
    std::ranges::sort(found.begin() + first, found.end());
}

void Finder::findPins(const Glob& cells, const Glob& pins, const FindOptions& options,
                      std::vector<Design::Object>& found) const {
    const auto addPins = [&](Design::CellId cell) {
        for (const Design::PinId pin : design_.pinsOfCell(cell))
            if (pins.matches(design_.names[design_.pins[pin].name]))
                found.push_back({Design::ObjectKind::pin, pin});
    };
    std::vector<Design::Object> exact;
    if (cells.isLiteral() && !options.hierarchical) {
        if (findExact(Design::ObjectKind::cell, cells.literal(), exact))
            addPins(exact.front().cell());
        return;
    }
    const Test test = [&cells](std::string_view name) { return cells.matches(name); };
    forEachNamed(
        design_.cells.size(), [this](Design::CellId cell) { return design_.cellName(cell); },
        options.hierarchical ? std::string() : cells.prefix(), cellsByName_,
        [&](Design::CellId cell) {
            if (matches(test, design_.cellName(cell), options))
                addPins(cell);
        });
}

void Finder::findAll(Design::ObjectKind kind, const Test& test, const std::string& prefix,
                     std::vector<Design::Object>& found) const {
    const auto scan = [&](std::size_t count, auto& order, const auto& nameOf) {
        forEachNamed(count, nameOf, prefix, order, [&](auto id) {
            if (test(nameOf(id)))
                found.push_back({kind, id.number()});
        });
    };
    switch (kind) {
    case Design::ObjectKind::port:
        for (const Design::PinId port : design_.ports())
            if (test(design_.pinName(port)))
                found.push_back({kind, port});
        break;
    case Design::ObjectKind::pin: {
        std::string name;
        for (const Design::PinId pin : design_.pins.ids()) {
            if (design_.isPortOfTop(pin))
                continue;
            name = design_.cellName(design_.pins[pin].cell);
            name += '/';
            name += design_.names[design_.pins[pin].name];
            if (test(name))
                found.push_back({kind, pin});
        }
        break;
    }
    case Design::ObjectKind::cell:
        scan(design_.cells.size(), cellsByName_,
             [this](Design::CellId cell) { return design_.cellName(cell); });
        break;
    case Design::ObjectKind::net:
        scan(design_.nets.size(), netsByName_, [this](Design::NetId net) { return design_.netName(net); });
        break;
    case Design::ObjectKind::clock:
        for (const Design::ClockId clock : clocks_.ids())
            if (!clocks_[clock].removed && test(clocks_[clock].name))
                found.emplace_back(clock);
        break;
    }
}

} // namespace Readers::Sdc
