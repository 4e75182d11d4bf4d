// Which instances and pins the names of an SDF file mean.
//
// The name as it is written is tried first, and is usually found. Otherwise these are tried in turn: if dots
// are the dividers, the name with slashes instead of all dots that are not escaped; a name of the netlist
// that differs only in dividers and escapes; and the part of the name below a prefix that all instances have,
// such as the top or a test bench. A name that fits several instances is an error.
#include "readers/sdf/Annotate.h"

#include <algorithm>

namespace Readers {

namespace {

constexpr std::string_view dividers = "./";
constexpr const char* unknownPins = "delays and checks of pins that the netlist does not have";

constexpr const char* unknownInstances = "instances that the netlist does not have";

bool contains(std::span<const std::uint32_t> places, std::size_t place) {
    return std::ranges::find(places, place) != places.end();
}

} // namespace

// --- Instances ---

Design::CellId Annotator::findInstance(const Spelled& instance) {
    if (!hasNetlist_)
        return findWithoutNetlist(instance.text);
    const Design::CellId straight = design_.findCell(instance.text);
    const bool isPlain = divider_ == '/' || instance.text.find('.') == std::string_view::npos;
    if (straight != Base::none && (isPlain || (instance.escaped.empty() && settled_[straight])))
        return takeStraight(straight, instance);
    if (!isPlain)
        if (const Design::CellId cell = findDotted(instance, straight); cell != Base::none)
            return takeStraight(cell, instance);
    return findSpelled(instance);
}

// An instance's name as the file spells it becomes the cell's, if wires spelled it with slashes.
Design::CellId Annotator::findWithoutNetlist(std::string_view instance) {
    Design::CellId cell = design_.findCell(instance);
    if (cell != Base::none || divider_ == '/')
        return cell;
    std::string slashed(instance);
    std::ranges::replace(slashed, divider_, '/');
    cell = design_.findCell(slashed);
    if (cell != Base::none)
        design_.rename(cell, design_.names.add(instance));
    return cell;
}

// With dots as dividers. The netlist separates hierarchy by a slash: the name as the file spells it becomes
// the cell's, unless that could be another cell's too.
Design::CellId Annotator::findDotted(const Spelled& instance, Design::CellId straight) {
    std::string slashed(instance.text);
    for (std::size_t at = 0; at < slashed.size(); ++at)
        if (slashed[at] == '.' && !contains(instance.escaped, at))
            slashed[at] = '/';
    const Design::CellId cell = slashed == instance.text ? Design::CellId() : design_.findCell(slashed);
    if (cell == Base::none || cell == straight)
        return straight == Base::none ? Base::none : settle(straight);
    if (straight != Base::none) {
        if (instance.escaped.empty() && !settled_[cell])
            diagnostics_.warning(instance.where.in(file_),
                                 "'" + std::string(instance.text) + "' is taken for '" + slashed +
                                     "': the netlist has '" + std::string(instance.text) +
                                     "' too, whose dots would have to be escaped");
    } else if (instance.escaped.empty() ||
               spelling().find(Spelling::reduced(instance.text)).other == Base::none) {
        design_.rename(cell, design_.names.add(instance.text));
    }
    return settle(cell);
}

Design::CellId Annotator::findSpelled(const Spelled& instance) {
    if (const Design::CellId cell = onlyMatch(instance.text, instance); cell != Base::none) {
        design_.rename(cell, design_.names.add(instance.text));
        return takeStraight(settle(cell), instance);
    }
    return prefix_.empty() ? guessPrefix(instance) : findBelowPrefix(instance);
}

// The only instance of that name, however it is spelled.
Design::CellId Annotator::onlyMatch(std::string_view name, const Spelled& instance) {
    const Spelling::Match match = spelling().find(Spelling::reduced(name));
    if (match.other != Base::none)
        throw Base::BadInput(
            instance.where.in(file_),
            "'" + std::string(instance.text) + "' may be '" + std::string(design_.cellName(match.cell)) +
                "' or '" + std::string(design_.cellName(match.other)) +
                "' of the netlist: expected the spelling of one of them, with a '\\' before each "
                "divider that belongs to a name");
    return match.cell;
}

Design::CellId Annotator::settle(Design::CellId cell) {
    settled_[cell] = true;
    return cell;
}

const Spelling& Annotator::spelling() {
    if (!spelling_)
        spelling_ = std::make_unique<Spelling>(design_);
    return *spelling_;
}

// --- Prefixes ---

// An instance that was found without a prefix. All names from the top have one, or none has.
Design::CellId Annotator::takeStraight(Design::CellId cell, const Spelled& instance) {
    if (isPrefixed_)
        return cell;
    if (!guessedBy_.empty())
        throw Base::BadInput(instance.where.in(file_),
                             "'" + std::string(instance.text) + "' is an instance of the netlist, but " +
                                 guessedBy_ + ": expected names that all begin with '" + prefix_ +
                                 "', or none");
    if (straight_.empty())
        straight_ = instance.text;
    return cell;
}

Design::CellId Annotator::findBelowPrefix(const Spelled& instance) {
    if (!instance.text.starts_with(prefix_))
        return Base::none;
    const std::string_view below = instance.text.substr(prefix_.size());
    if (const Design::CellId cell = design_.findCell(below); cell != Base::none && settled_[cell])
        return cell;
    const Design::CellId cell = onlyMatch(below, instance);
    if (cell == Base::none)
        return Base::none;
    design_.rename(cell, design_.names.add(below));
    return settle(cell);
}

// If no instance was found as it is written, the first one that the netlist has below some prefix shows
// it; else only one below the top's own name.
Design::CellId Annotator::guessPrefix(const Spelled& instance) {
    for (std::size_t at = instance.text.find_first_of(dividers); at != std::string_view::npos;
         at = instance.text.find_first_of(dividers, at + 1)) {
        const std::string_view above = instance.text.substr(0, at), below = instance.text.substr(at + 1);
        const std::size_t last = above.find_last_of(dividers);
        const bool isTops = above.substr(last == std::string_view::npos ? 0 : last + 1) == design_.name;
        if (!isTops && !straight_.empty())
            continue;
        const Spelling::Match match = spelling().find(Spelling::reduced(below));
        if (match.cell == Base::none ||
            (!isTops && !showsPrefix(instance, instance.text.substr(0, at + 1), match.cell)))
            continue;
        prefix_ = instance.text.substr(0, at + 1);
        if (!isTops)
            guessedBy_ = "'" + std::string(instance.text) + "' was taken for '" +
                         std::string(design_.cellName(match.cell)) + "'";
        return findBelowPrefix(instance);
    }
    return Base::none;
}

// Something else has to agree than a name: the cell's type, or the other end of a wire.
bool Annotator::showsPrefix(const Spelled& instance, std::string_view prefix, Design::CellId cell) const {
    return instance.otherEnd.empty() ? design_.names[design_.cells[cell].type] == instance.type
                                     : instance.otherEnd.starts_with(prefix.substr(0, prefix.size() - 1));
}

// Whether it is the top, as an instance of a test bench. Then its name is the prefix.
bool Annotator::isTop(const Spelled& instance) {
    if (!hasNetlist_ || instance.type != design_.name)
        return false;
    std::string prefix(instance.text);
    prefix += divider_;
    if (prefix_.empty())
        prefix_ = prefix;
    return prefix_ == prefix;
}

// Whether the netlist has instances below it, or it is a part of the prefix.
bool Annotator::isAbove(const Spelled& instance) {
    const std::string_view text = instance.text;
    if (prefix_.starts_with(text) && dividers.find(prefix_[text.size()]) != std::string_view::npos)
        return true;
    const bool isBelow = !prefix_.empty() && text.starts_with(prefix_);
    return spelling().isAbove(Spelling::reduced(isBelow ? text.substr(prefix_.size()) : text));
}

void Annotator::cell(std::string_view type, std::string_view instance, std::span<const std::uint32_t> escaped,
                     Base::Position where) {
    instance_ = instance;
    escaped_.assign(escaped.begin(), escaped.end());
    cells_.clear();
    isPrefixed_ = isAbove_ = false;
    atTop_ = instance.empty();
    if (atTop_)
        return;
    if (instance == "*") {
        const std::optional<Base::Name> name = design_.names.find(type);
        for (const Design::CellId number : design_.cells.ids())
            if (name && design_.cells[number].type == *name)
                cells_.push_back(number);
        return;
    }
    const Spelled spelled{instance_, escaped_, type, where};
    Design::CellId number = findInstance(spelled);
    if (number == Base::none && !hasNetlist_)
        number = design_.addCell(design_.names.add(instance), design_.names.add(type));
    if (!hasNetlist_ && design_.names[design_.cells[number].type].empty())
        design_.cells[number].type = design_.names.add(type); // a wire named the cell before
    if (number != Base::none)
        cells_.push_back(number);
    else if (isTop(spelled))
        atTop_ = isPrefixed_ = true;
    else if (isAbove(spelled))
        isAbove_ = true; // its wires may be read
    else
        count(unknownInstances, Base::Severity::warning, where, instance_);
}

// A delay or a check of an instance that is no cell is lost. Each CELL counts once.
void Annotator::countLost(Base::Position where) {
    if (isAbove_)
        count(unknownInstances, Base::Severity::warning, where, instance_);
    isAbove_ = false;
}

// --- Pins ---

Design::PinId Annotator::pinOf(Design::CellId cell, std::string_view pin, Base::Position where, bool isWire) {
    Design::PinId number = design_.findPin(cell, pin);
    if (number == Base::none && !hasNetlist_)
        number = design_.addPin(cell, design_.names.add(pin));
    if (hasNetlist_ && cell != Base::none && (number == Base::none || extraOf_.contains(number)))
        number = isWire ? Design::PinId() : extraPin(cell, pin, where);
    if (number != Base::none && design_.names[design_.pins[number].name] != pin)
        design_.renamePin(number, design_.names.add(pin)); // a vector of one bit, as the file spells it
    if (number == Base::none)
        count(unknownPins, Base::Severity::warning, where,
              cell == Base::none ? std::string(pin)
                                 : std::string(design_.cellName(cell)).append("/").append(pin));
    return number;
}

// A pin of a known cell that the netlist leaves out, since nothing is connected to it.
Design::PinId Annotator::extraPin(Design::CellId cell, std::string_view pin, Base::Position where) {
    const Design::PinId known = design_.findPin(cell, pin);
    const Design::PinId number = known == Base::none ? design_.addPin(cell, design_.names.add(pin)) : known;
    const auto [place, isNew] = extraOf_.try_emplace(number, extraPins_.next());
    if (isNew)
        extraPins_.push_back({number, where});
    ++extraPins_[place->second].count;
    return number;
}

// A path from the top, or from the instance of the current CELL.
Design::PinId Annotator::resolve(const Sdf::Path& path, Base::Position where) {
    std::string instance(path.instance);
    std::vector<std::uint32_t> escaped(path.escaped.begin(), path.escaped.end());
    if (!atTop_ && !instance_.empty()) {
        if (!instance.empty())
            instance.insert(0, 1, divider_);
        for (std::uint32_t& at : escaped)
            at += static_cast<std::uint32_t>(instance_.size() + 1);
        instance.insert(0, instance_);
        escaped.insert(escaped.begin(), escaped_.begin(), escaped_.end());
    }
    const Spelled spelled{instance, escaped, {}, where};
    if (instance.empty() && (!hasNetlist_ || design_.findPin(Base::none, path.pin) != Base::none))
        return pinOf(Base::none, path.pin, where, true);
    Design::CellId cell = instance.empty() ? Design::CellId() : findInstance(spelled);
    if (cell == Base::none && !hasNetlist_)
        cell = design_.addCell(design_.names.add(instance), design_.names.add(""));
    if (cell != Base::none)
        return pinOf(cell, path.pin, where, true);
    const Design::PinId pin = resolveOtherwise(spelled, path.pin);
    if (pin == Base::none)
        count(unknownPins, Base::Severity::warning, where,
              path.instance.empty() ? std::string(path.pin)
                                    : std::string(path.instance).append("/").append(path.pin));
    return pin;
}

// Of an instance that the netlist does not have: a port with dividers in its name, a port below the prefix,
// or a pin after another divider.
Design::PinId Annotator::resolveOtherwise(const Spelled& instance, std::string_view pin) {
    std::string text(instance.text);
    for (const char divider : dividers)
        if (const Design::PinId port = design_.findPin(Base::none, text + divider + std::string(pin));
            !text.empty() && port != Base::none)
            return port;
    if (!text.empty() && (prefix_.empty() ? text == design_.name : text + divider_ == prefix_))
        if (const Design::PinId port = design_.findPin(Base::none, pin); port != Base::none) {
            prefix_ = text + divider_;
            return port;
        }
    const std::size_t split = pin.find_last_of(dividers);
    if (split == std::string_view::npos)
        return Base::none;
    if (!text.empty())
        text += '/';
    text += pin.substr(0, split);
    const Design::CellId cell = findInstance({text, instance.escaped, {}, instance.where});
    return cell == Base::none ? Design::PinId() : design_.findPin(cell, pin.substr(split + 1));
}

Design::PinId Annotator::resolveInCell(Design::CellId cell, const Sdf::Path& path, Base::Position where) {
    return path.instance.empty() ? pinOf(cell, path.pin, where, false) : resolve(path, where);
}

} // namespace Readers
