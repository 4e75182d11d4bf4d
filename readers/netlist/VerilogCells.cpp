// Instances of modules and of gates.
#include "readers/netlist/VerilogReader.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace Readers {

namespace {

constexpr std::string_view inputPins = "ABCDEFGHIJKLMNOPQRSTUVWX";
constexpr std::size_t switchedTerminals = 3; // an output, an input, a control

} // namespace

// --- Instances ---

// "TYPE #(...) name (...), name [3:0] (...);"
void VerilogReader::readInstances() {
    const Base::Name type = readName("a statement or 'endmodule'");
    const bool isPrimitive = primitives_.contains(type);
    bool isOpen = isPrimitive && takeIf('('); // of a strength, or of an instance without a name
    if (isOpen && isStrength()) {
        skipPast(")");
        isOpen = false;
    }
    if (!isOpen)
        skipDelay();
    do {
        readInstance(type, isOpen);
        isOpen = false;
    } while (takeIf(','));
    if (!lexer_.isAt(';'))
        lexer_.failExpected("',' or ';'");
    lexer_.advance();
}

// isOpen: what comes next is after the '(' of an instance without a name.
void VerilogReader::readInstance(Base::Name type, bool isOpen) {
    const Base::Place place = lexer_.place();
    const bool isUnnamed = isOpen || (lexer_.isAt('(') && primitives_.contains(type));
    const Base::Name name = isUnnamed ? unnamed(type) : readName("the name of a cell");
    module_.startCell(name, type, place);
    if (lexer_.isAt('['))
        module_.setArray(expression_.readRange());
    if (!isOpen)
        expect('(');
    readConnections();
}

// "nand$1", the first one without a name.
Base::Name VerilogReader::unnamed(Base::Name type) {
    return modules_.names.add(std::string(modules_.names[type]) + "$" + std::to_string(++unnamed_));
}

void VerilogReader::readConnections() {
    if (takeIf(')'))
        return;
    const bool byName = lexer_.isAt('.');
    do {
        if (byName != lexer_.isAt('.'))
            lexer_.failExpected(byName ? "'.' and a pin" : "a connection by position");
        readConnection();
    } while (takeIf(','));
    if (!lexer_.isAt(')'))
        lexer_.failExpected("',' or ')'");
    lexer_.advance();
}

// ".pin(net)", ".net", ".*", or only the net; nothing if the pin is not connected.
void VerilogReader::readConnection() {
    const Base::Place place = lexer_.place();
    VerilogModule::Bits nothing;
    if (!takeIf('.')) {
        const bool isOpen = lexer_.isAt(',') || lexer_.isAt(')');
        module_.connect(noName, Design::Direction::unknown, isOpen ? nothing : readConnected(), place);
        return;
    }
    if (takeIf('*')) {
        module_.connectByNames(place);
        if (!lexer_.isAt(')'))
            lexer_.failExpected("')' behind '.*'");
        return;
    }
    const Base::Name pin = readName("a pin");
    if (lexer_.isAt(',') || lexer_.isAt(')')) {
        module_.addBits({pin, {}}, place, nothing);
        module_.connect(pin, Design::Direction::unknown, nothing, place);
        return;
    }
    expect('(');
    const bool isOpen = lexer_.isAt(')');
    module_.connect(pin, Design::Direction::unknown, isOpen ? nothing : readConnected(), place);
    expect(')');
}

// One digit for all bits is no net, whatever the width of the port.
const VerilogModule::Bits& VerilogReader::readConnected() {
    static const VerilogModule::Bits nothing;
    const VerilogModule::Bits& bits = expression_.read();
    return expression_.isFill() && bits.size() == 1 ? nothing : bits;
}

// --- Gates ---

// "and (strong0, strong1) #1 name (y, a, b), (z, c, d);": everything except the terminals may be missing.
void VerilogReader::readGates(Word word) {
    const Base::Name type = modules_.names.add(lexer_.token().text);
    lexer_.advance();
    bool isOpen = takeIf('(');
    if (isOpen && isStrength()) {
        skipPast(")");
        isOpen = false;
    }
    if (!isOpen)
        skipDelay();
    do {
        readGate(type, word, isOpen);
        isOpen = false;
    } while (takeIf(','));
    if (!lexer_.isAt(';'))
        lexer_.failExpected("',' or ';'");
    lexer_.advance();
}

bool VerilogReader::isStrength() const {
    const std::string_view text = lexer_.token().text;
    if (lexer_.token().kind != Kind::name || (!text.ends_with('0') && !text.ends_with('1')))
        return false;
    constexpr std::array strengths{"supply", "strong", "pull", "weak", "highz"};
    return std::find(strengths.begin(), strengths.end(), text.substr(0, text.size() - 1)) != strengths.end();
}

// isOpen: what comes next is after the '('.
void VerilogReader::readGate(Base::Name type, Word word, bool isOpen) {
    const Base::Place place = lexer_.place();
    const Base::Name name = isOpen || lexer_.isAt('(') ? unnamed(type) : readName("the name of a gate");
    VerilogModule::Range range;
    if (lexer_.isAt('['))
        range = expression_.readRange();
    if (!isOpen)
        expect('(');
    std::vector<VerilogModule::Bits> terminals;
    do
        terminals.push_back(expression_.read());
    while (takeIf(','));
    expect(')');
    if (!range) {
        connectGate(name, type, word, terminals, place);
        return;
    }
    for (const VerilogModule::Bits& terminal : terminals)
        if (terminal.size() != 1 && terminal.size() != range->width())
            throw Base::BadInput(place, "expected 1 or " + std::to_string(range->width()) +
                                            " bits at each terminal of the array, found " +
                                            std::to_string(terminal.size()));
    const std::int32_t step = range->left < range->right ? 1 : -1;
    std::vector<VerilogModule::Bits> own(terminals.size());
    for (std::uint32_t i = 0; i < range->width(); ++i) {
        for (std::size_t at = 0; at < terminals.size(); ++at)
            own[at] = {terminals[at][terminals[at].size() == 1 ? 0 : i]};
        const std::int64_t index = range->left + static_cast<std::int64_t>(i) * step;
        const std::string one = std::string(modules_.names[name]) + "[" + std::to_string(index) + "]";
        connectGate(modules_.names.add(one), type, word, own, place);
    }
}

void VerilogReader::connectGate(Base::Name name, Base::Name type, Word word,
                                const std::vector<VerilogModule::Bits>& terminals, const Base::Place& place) {
    module_.startCell(name, type, place);
    const std::size_t outputs = outputsOf(word, terminals.size(), place);
    for (std::size_t i = 0; i < terminals.size(); ++i)
        module_.connect(modules_.names.add(gatePin(i, outputs)),
                        i < outputs ? Design::Direction::output : Design::Direction::input, terminals[i],
                        place);
}

// "tran name (a, b), (c, d);": each pair of nets is one.
void VerilogReader::readTran() {
    lexer_.advance();
    do {
        const Base::Place place = lexer_.place();
        if (!lexer_.isAt('('))
            readName("the name of a gate");
        expect('(');
        const VerilogModule::Bits left = expression_.read();
        for (const ModuleNetId bit : left)
            if (bit == Base::none || bit == constantNet || VerilogModule::isInverted(bit))
                throw Base::BadInput(place, "expected nets at the terminals, found a constant");
        expect(',');
        module_.alias(left, expression_.read());
        expect(')');
    } while (takeIf(','));
    expect(';');
}

// Of a gate with so many terminals.
std::size_t VerilogReader::outputsOf(Word word, std::size_t terminals, const Base::Place& place) {
    const std::size_t most = word == Word::pull       ? 1
                             : word == Word::switched ? switchedTerminals
                                                      : inputPins.size() + 1;
    const std::size_t least = word == Word::gate || word == Word::buffer ? 2 : most;
    if (terminals < least || terminals > most)
        throw Base::BadInput(place, "expected a gate with " + std::to_string(least) +
                                        (least == most ? "" : " to " + std::to_string(most)) +
                                        " terminals, found " + std::to_string(terminals));
    return word == Word::buffer ? terminals - 1 : 1;
}

// Inputs are A, B, C ..., the output is Y; of several ones the second is Y1.
std::string VerilogReader::gatePin(std::size_t at, std::size_t outputs) {
    if (at >= outputs)
        return std::string(1, inputPins[at - outputs]);
    return at == 0 ? "Y" : "Y" + std::to_string(at);
}

} // namespace Readers
