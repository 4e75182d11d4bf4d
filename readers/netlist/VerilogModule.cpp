// Nets are numbered as they are declared. What assignments join is kept in a forest and becomes one net each
// when the module ends.
#include "readers/netlist/VerilogModule.h"

#include <algorithm>
#include <utility>

namespace Readers {

namespace {

std::string toString(const VerilogRange& range) {
    std::string text = "[" + std::to_string(range.left);
    return text + ":" + std::to_string(range.right) + "]";
}

} // namespace

Numbering VerilogModule::Symbol::numbering() const {
    const Range& range = declaration.range;
    return range ? Numbering{true, range->right, range->left < range->right ? -1 : 1} : Numbering{};
}

void VerilogModule::start(Base::Name name) {
    module_ = {};
    module_.name = name;
    symbols_.clear();
    header_.clear();
    parents_.assign(1, constantNet);
    symbolByName_.clear();
    cells_.clear();
    ports_.clear();
    rest_ = {};
    isLenient_ = false;
}

// Nothing more is read.
void VerilogModule::failAtLimit(const Base::Place& place, std::size_t limit, const char* what) const {
    throw Base::BadInputs({{Base::Severity::error, place,
                            "with module " + quoted(module_.name) + " the file has more than " +
                                std::to_string(limit) + " " + what}});
}

// --- Declarations ---

// A port may be declared twice, once for its direction and once as a wire.
void VerilogModule::declare(Base::Name name, const Declaration& declaration, const Base::Place& place) {
    const SymbolId known = symbolByName_.find(name);
    Symbol& symbol = known == Base::none ? add(name, declaration, place) : symbols_[known];
    Declaration& now = symbol.declaration;
    if (known != Base::none) {
        if (declaration.range && now.range != declaration.range && isLenient_)
            return;
        if (declaration.range && now.range != declaration.range)
            throw Base::BadInput(place, symbol.isImplicit ? quoted(name) + " is used before it is declared"
                                                          : quoted(name) + " is declared with another range");
        if (declaration.direction != Design::Direction::unknown &&
            now.direction != Design::Direction::unknown)
            throw Base::BadInput(place, quoted(name) + " is declared twice");
        if (declaration.direction != Design::Direction::unknown)
            now.direction = declaration.direction;
        symbol.isImplicit = false;
    }
    if (declaration.isConstant)
        for (std::uint32_t i = 0; i < symbol.width(); ++i)
            join(symbol.net(i), constantNet);
}

VerilogModule::Symbol& VerilogModule::add(Base::Name name, const Declaration& declaration,
                                          const Base::Place& place) {
    Symbol symbol{name, declaration, parents_.next(), false, false, {place.line, place.column}};
    if (netsBefore_ + parents_.size() + symbol.width() > mostNets)
        failAtLimit(place, mostNets, "nets");
    for (std::uint32_t i = 0; i < symbol.width(); ++i)
        parents_.push_back(symbol.net(i));
    symbolByName_.add(name, symbols_.next());
    symbols_.push_back(symbol);
    return symbols_.back();
}

void VerilogModule::addBits(const Reference& reference, const Base::Place& place, Bits& bits) {
    SymbolId known = symbolByName_.find(reference.name);
    if (known == Base::none) {
        if (reference.part && !isLenient_)
            throw Base::BadInput(place, quoted(reference.name) + " is not declared");
        known = symbols_.next();
        add(reference.name, {}, place).isImplicit = true;
    }
    const Symbol& symbol = symbols_[known];
    std::int64_t first = std::int64_t{symbol.width()} - 1; // offsets from the least significant bit
    std::int64_t last = 0;
    if (reference.part && !(isLenient_ && symbol.isImplicit)) {
        if (!symbol.declaration.range)
            throw Base::BadInput(place, quoted(reference.name) + " is not a vector");
        const Numbering numbering = symbol.numbering();
        const auto offset = [&](std::int32_t index) {
            return (std::int64_t{index} - numbering.right) * numbering.step;
        };
        const std::int64_t width = symbol.width();
        first = offset(reference.part->left);
        last = offset(reference.part->right);
        if (last < 0 || first < last || first >= width)
            throw Base::BadInput(place, quoted(reference.name) + " is " +
                                            toString(*symbol.declaration.range) + ", which has no part " +
                                            toString(*reference.part));
    }
    for (std::int64_t i = first; i >= last; --i)
        bits.push_back(symbol.net(static_cast<std::uint32_t>(i)));
}

// --- Joining ---

ModuleNetId VerilogModule::root(ModuleNetId net) {
    while (parents_[net] != net)
        net = parents_[net] = parents_[parents_[net]];
    return net;
}

void VerilogModule::join(ModuleNetId a, ModuleNetId b) {
    const auto [first, second] = std::minmax({root(a), root(b)});
    parents_[second] = first;
}

bool VerilogModule::alias(const Bits& left, const Bits& right) {
    bool isAnyInverted = false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const ModuleNetId other =
            i < right.size() ? right.end()[-1 - static_cast<std::ptrdiff_t>(i)] : constantNet;
        isAnyInverted = isAnyInverted || isInverted(other);
        if (other != Base::none)
            join(left.end()[-1 - static_cast<std::ptrdiff_t>(i)], plain(other));
    }
    return isAnyInverted;
}

// --- Ports and cells ---

void VerilogModule::addPort(Base::Name name, std::vector<Reference> parts, const Base::Place& place) {
    if (!ports_.add(name))
        throw Base::BadInput(place, "port " + quoted(name) + " is there twice");
    header_.push_back({name, std::move(parts), place});
}

void VerilogModule::startCell(Base::Name name, Base::Name type, const Base::Place& place) {
    if (!cells_.add(name))
        throw Base::BadInput(place, "cell " + quoted(name) + " is there twice");
    module_.cells.push_back({name, type, module_.connections.next(), 0, {place.line, place.column}});
    pins_.clear();
}

void VerilogModule::connect(Base::Name pin, Design::Direction direction, const Bits& bits,
                            const Base::Place& place) {
    Module::Cell& cell = module_.cells.back();
    if (pin != noName && !pins_.add(pin))
        throw Base::BadInput(place,
                             "pin " + quoted(pin) + " of cell " + quoted(cell.name) + " is connected twice");
    if (bitsBefore_ + module_.bits.size() + bits.size() > mostBits)
        failAtLimit(place, mostBits, "connected bits");
    const BitRange range = module_.addBits(Bits(bits.rbegin(), bits.rend()));
    for (std::uint32_t i = 0; i < range.count; ++i)
        if (ModuleNetId& bit = module_.bits[range[i]]; isInverted(bit)) {
            bit = plain(bit);
            if (root(bit) != constantNet)
                module_.inverted.push_back(range[i]);
        }
    module_.connections.push_back({pin, direction, range});
    ++cell.connectionCount;
}

void VerilogModule::startExpression(Base::Name name, Base::Name type, const Base::Place& place) {
    module_.expressions.push_back(module_.cells.next());
    startCell(name, type, place);
}

void VerilogModule::setArray(const VerilogRange& range) { rest_.arrays.push_back({lastCell(), range}); }

// To every net that is declared. Which of them are ports is known later.
void VerilogModule::connectByNames(const Base::Place& place) {
    rest_.wildcards.push_back({lastCell(), module_.connections.next()});
    constexpr std::size_t most = std::size_t{1} << 22;
    wildcardNames_ += symbols_.size();
    if (wildcardNames_ > most)
        throw Base::BadInput(place, "'.*' is too often in too large modules: expected connections by name");
    Bits bits;
    for (const SymbolId symbol : symbols_.ids()) {
        const Base::Name name = symbols_[symbol].name;
        if (pins_.contains(name))
            continue;
        bits.clear();
        addBits({name, {}}, place, bits);
        connect(name, Design::Direction::unknown, bits, place);
    }
}

void VerilogModule::setBehaviour(const Base::Place& place, const std::string& text, bool isError) {
    if (!module_.behaviour || (isError && !module_.behaviour->isError))
        module_.behaviour = {place, text, isError};
}

// --- The end ---

Module VerilogModule::finish(Rest& rest, Base::ErrorList& errors) {
    for (const HeaderPort& port : header_)
        finishPort(port, errors);
    for (const Symbol& symbol : symbols_)
        if (symbol.declaration.direction != Design::Direction::unknown && !symbol.isPort && !isLenient_)
            errors.add(symbol.position.in(file_),
                       quoted(symbol.name) + " is not in the module's list of ports");
    Base::IndexVector<ModuleNetId, ModuleNetId> numbers(parents_.size());
    ModuleNetId count(0U);
    for (const ModuleNetId net : parents_.ids()) // a root comes before the others of its tree
        numbers[net] = root(net) == net ? count++ : numbers[root(net)];
    for (ModuleNetId& bit : module_.bits)
        if (bit != Base::none)
            bit = numbers[bit];
    module_.nets.resize(count.number());
    nameNets(numbers);
    netsBefore_ += parents_.size();
    bitsBefore_ += module_.bits.size();
    rest = std::move(rest_);
    return std::move(module_);
}

void VerilogModule::finishPort(const HeaderPort& port, Base::ErrorList& errors) {
    Module::Port made{port.name};
    Bits bits;
    for (const Reference& part : port.parts) {
        const SymbolId known = symbolByName_.find(part.name);
        if (known == Base::none || symbols_[known].declaration.direction == Design::Direction::unknown) {
            if (!isLenient_)
                errors.add(port.place, "port " + quoted(port.name) + " has no direction");
            return;
        }
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

void VerilogModule::nameNets(const Base::IndexVector<ModuleNetId, ModuleNetId>& numbers) {
    for (const Symbol& symbol : symbols_) {
        const Numbering numbering = symbol.numbering();
        for (std::uint32_t i = 0; i < symbol.width(); ++i) {
            const ModuleNetId net = numbers[symbol.net(i)];
            Base::Name& known = module_.nets[net].name;
            if (net == constantNet)
                continue;
            writeBitName(scratch_, names_[symbol.name], numbering, i);
            if (known == noName || isBetterName(scratch_, names_[known]))
                known = names_.add(scratch_);
        }
    }
}

} // namespace Readers
