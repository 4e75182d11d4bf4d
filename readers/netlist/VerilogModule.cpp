// Nets are numbered as they are declared. What assignments join is kept in a forest and becomes one net each
// when the module ends.
#include "VerilogModule.h"

#include <algorithm>
#include <utility>

namespace Readers {

namespace {

// A short text can declare vectors of any width.
constexpr std::size_t mostNets = std::size_t{1} << 26;
constexpr std::size_t mostBits = std::size_t{1} << 28;

std::string toString(const VerilogRange& range) {
    std::string text = "[" + std::to_string(range.left);
    return text + ":" + std::to_string(range.right) + "]";
}

} // namespace

Numbering VerilogModule::Symbol::numbering() const {
    const Range& range = declaration.range;
    return range ? Numbering{true, range->right, range->left < range->right ? -1 : 1} : Numbering{};
}

void VerilogModule::start(Name name) {
    module_ = {};
    module_.name = name;
    symbols_.clear();
    header_.clear();
    parents_.assign(1, constantNet);
    symbolByName_.clear();
    cells_.clear();
    ports_.clear();
}

// --- Declarations -------------------------------------------------------------------------------------------------

// A port may be declared twice, once for its direction and once as a wire.
void VerilogModule::declare(Name name, const Declaration& declaration, const Place& place) {
    const std::uint32_t known = symbolByName_.find(name);
    Symbol& symbol = known == none ? add(name, declaration, place) : symbols_[known];
    Declaration& now = symbol.declaration;
    if (known != none) {
        if (declaration.range && now.range != declaration.range)
            throw BadInput(place, symbol.isImplicit ? quoted(name) + " is used before it is declared"
                                                    : quoted(name) + " is declared with another range");
        if (declaration.direction != Direction::unknown && now.direction != Direction::unknown)
            throw BadInput(place, quoted(name) + " is declared twice");
        if (declaration.direction != Direction::unknown)
            now.direction = declaration.direction;
        symbol.isImplicit = false;
    }
    if (declaration.isConstant)
        for (std::uint32_t i = 0; i < symbol.width(); ++i)
            join(symbol.firstNet + i, constantNet);
}

VerilogModule::Symbol& VerilogModule::add(Name name, const Declaration& declaration, const Place& place) {
    Symbol symbol{name,       declaration, static_cast<std::uint32_t>(parents_.size()), false, false,
                  place.line, place.column};
    if (parents_.size() + symbol.width() > mostNets)
        throw BadInput(place, "a module has more than " + std::to_string(mostNets) + " nets");
    for (std::uint32_t i = 0; i < symbol.width(); ++i)
        parents_.push_back(symbol.firstNet + i);
    symbolByName_.add(name, static_cast<std::uint32_t>(symbols_.size()));
    symbols_.push_back(symbol);
    return symbols_.back();
}

void VerilogModule::addBits(const Reference& reference, const Place& place, Bits& bits) {
    std::uint32_t known = symbolByName_.find(reference.name);
    if (known == none) {
        if (reference.part)
            throw BadInput(place, quoted(reference.name) + " is not declared");
        add(reference.name, {}, place).isImplicit = true;
        known = static_cast<std::uint32_t>(symbols_.size() - 1);
    }
    const Symbol& symbol = symbols_[known];
    std::int64_t first = std::int64_t{symbol.width()} - 1; // offsets from the least significant bit
    std::int64_t last = 0;
    if (reference.part) {
        if (!symbol.declaration.range)
            throw BadInput(place, quoted(reference.name) + " is not a vector");
        const Numbering numbering = symbol.numbering();
        const auto offset = [&](std::int32_t index) {
            return (std::int64_t{index} - numbering.right) * numbering.step;
        };
        const std::int64_t width = symbol.width();
        first = offset(reference.part->left);
        last = offset(reference.part->right);
        if (last < 0 || first < last || first >= width)
            throw BadInput(place, quoted(reference.name) + " is " + toString(*symbol.declaration.range) +
                                      ", which has no part " + toString(*reference.part));
    }
    for (std::int64_t i = first; i >= last; --i)
        bits.push_back(symbol.firstNet + static_cast<std::uint32_t>(i));
}

// --- Joining ------------------------------------------------------------------------------------------------------

std::uint32_t VerilogModule::root(std::uint32_t net) {
    while (parents_[net] != net)
        net = parents_[net] = parents_[parents_[net]];
    return net;
}

void VerilogModule::join(std::uint32_t a, std::uint32_t b) {
    const auto [first, second] = std::minmax({root(a), root(b)});
    parents_[second] = first;
}

void VerilogModule::alias(const Bits& left, const Bits& right) {
    for (std::size_t i = 0; i < left.size(); ++i) {
        const std::uint32_t other =
            i < right.size() ? right.end()[-1 - static_cast<std::ptrdiff_t>(i)] : constantNet;
        if (other != none)
            join(left.end()[-1 - static_cast<std::ptrdiff_t>(i)], other);
    }
}

// --- Ports and cells ----------------------------------------------------------------------------------------------

void VerilogModule::addPort(Name name, std::vector<Reference> parts, const Place& place) {
    if (!ports_.add(name, 0))
        throw BadInput(place, "port " + quoted(name) + " is there twice");
    header_.push_back({name, std::move(parts), place});
}

void VerilogModule::startCell(Name name, Name type, const Place& place) {
    if (!cells_.add(name, 0))
        throw BadInput(place, "cell " + quoted(name) + " is there twice");
    module_.cells.push_back(
        {name, type, static_cast<std::uint32_t>(module_.connections.size()), 0, place.line, place.column});
    pins_.clear();
}

void VerilogModule::connect(Name pin, Direction direction, const Bits& bits, const Place& place) {
    Module::Cell& cell = module_.cells.back();
    if (pin != noName && !pins_.add(pin, 0))
        throw BadInput(place, "pin " + quoted(pin) + " of cell " + quoted(cell.name) + " is connected twice");
    if (module_.bits.size() + bits.size() > mostBits)
        // GCOVR_EXCL_START: a gigabyte is not built for a test
        throw BadInput(place, "a module has more than " + std::to_string(mostBits) + " connected bits");
    // GCOVR_EXCL_STOP
    module_.connections.push_back({pin, direction, module_.addBits(Bits(bits.rbegin(), bits.rend()))});
    ++cell.connectionCount;
}

// --- The end ------------------------------------------------------------------------------------------------------

Module VerilogModule::finish() {
    for (const HeaderPort& port : header_)
        finishPort(port);
    for (const Symbol& symbol : symbols_)
        if (symbol.declaration.direction != Direction::unknown && !symbol.isPort)
            throw BadInput({file_, symbol.line, symbol.column},
                           quoted(symbol.name) + " is not in the module's list of ports");
    std::vector<std::uint32_t> numbers(parents_.size());
    std::uint32_t count = 0;
    for (std::uint32_t net = 0; net < parents_.size(); ++net) // a root comes before the others of its tree
        numbers[net] = root(net) == net ? count++ : numbers[root(net)];
    for (std::uint32_t& bit : module_.bits)
        bit = bit == none ? none : numbers[bit];
    module_.nets.resize(count);
    nameNets(numbers);
    return std::move(module_);
}

void VerilogModule::finishPort(const HeaderPort& port) {
    Module::Port made{port.name};
    Bits bits;
    for (const Reference& part : port.parts) {
        const std::uint32_t known = symbolByName_.find(part.name);
        if (known == none || symbols_[known].declaration.direction == Direction::unknown)
            throw BadInput(port.place, "port " + quoted(port.name) + " has no direction");
        symbols_[known].isPort = true;
        made.direction = symbols_[known].declaration.direction;
        addBits(part, port.place, bits);
        made.numbering = symbols_[known].numbering();
    }
    if (port.parts.size() != 1 || port.parts.front().part)
        made.numbering = Numbering::positions(bits.size());
    std::reverse(bits.begin(), bits.end());
    made.bits = module_.addBits(bits);
    module_.ports.push_back(made);
}

void VerilogModule::nameNets(const std::vector<std::uint32_t>& numbers) {
    for (const Symbol& symbol : symbols_) {
        const Numbering numbering = symbol.numbering();
        for (std::uint32_t i = 0; i < symbol.width(); ++i) {
            const std::uint32_t net = numbers[symbol.firstNet + i];
            Name& known = module_.nets[net].name;
            if (net == constantNet)
                continue;
            writeBitName(scratch_, names_[symbol.name], numbering, i);
            if (known == noName || isBetterName(scratch_, names_[known]))
                known = names_.add(scratch_);
        }
    }
}

} // namespace Readers
