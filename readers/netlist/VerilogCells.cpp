// Instances of modules and of gates.
#include "VerilogReader.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace Readers {

namespace {

constexpr std::string_view inputPins = "ABCDEFGHIJKLMNOPQRSTUVWX";
constexpr std::size_t switchedTerminals = 3; // an output, an input, a control

} // namespace

// --- Instances ----------------------------------------------------------------------------------------------------

// "TYPE #(...) name (...), name (...);"
void VerilogReader::readInstances() {
    if (lexer_.token().kind == Kind::name && lexer_.token().text.front() == '$')
        failBehavioural();
    const Name type = readName("a statement or 'endmodule'");
    skipDelay();
    do {
        const Place place = lexer_.place();
        const Name name = readName("the name of a cell");
        if (lexer_.isAt('['))
            lexer_.fail("arrays of cells are not supported");
        module_.startCell(name, type, place);
        expect('(');
        readConnections();
    } while (takeIf(','));
    if (!lexer_.isAt(';'))
        lexer_.failExpected("',' or ';'");
    lexer_.advance();
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

// ".pin(net)", or the net alone; nothing where nothing is connected.
void VerilogReader::readConnection() {
    const Place place = lexer_.place();
    if (!takeIf('.')) {
        const bool isOpen = lexer_.isAt(',') || lexer_.isAt(')');
        module_.connect(noName, Direction::unknown, isOpen ? VerilogModule::Bits() : expression_.read(),
                        place);
        return;
    }
    const Name pin = readName("a pin");
    expect('(');
    const bool isOpen = lexer_.isAt(')');
    module_.connect(pin, Direction::unknown, isOpen ? VerilogModule::Bits() : expression_.read(), place);
    expect(')');
}

// --- Gates --------------------------------------------------------------------------------------------------------

// "and (strong0, strong1) #1 name (y, a, b), (z, c, d);": all but the terminals may be missing.
void VerilogReader::readGates(Word word) {
    const Name type = modules_.names.add(lexer_.token().text);
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

// isOpen: what comes next is behind the '('.
void VerilogReader::readGate(Name type, Word word, bool isOpen) {
    const Place place = lexer_.place();
    Name name = noName;
    if (!isOpen && !lexer_.isAt('('))
        name = readName("the name of a gate");
    else
        name = modules_.names.add(std::string(modules_.names[type]) + "$" + std::to_string(++unnamed_));
    if (lexer_.isAt('['))
        lexer_.fail("arrays of cells are not supported");
    if (!isOpen)
        expect('(');
    std::vector<VerilogModule::Bits> terminals;
    do
        terminals.push_back(expression_.read());
    while (takeIf(','));
    expect(')');
    module_.startCell(name, type, place);
    const std::size_t outputs = outputsOf(word, terminals.size(), place);
    for (std::size_t i = 0; i < terminals.size(); ++i)
        module_.connect(modules_.names.add(gatePin(i, outputs)),
                        i < outputs ? Direction::output : Direction::input, terminals[i], place);
}

// Of a gate with so many terminals.
std::size_t VerilogReader::outputsOf(Word word, std::size_t terminals, const Place& place) {
    const std::size_t most = word == Word::pull       ? 1
                             : word == Word::switched ? switchedTerminals
                                                      : inputPins.size() + 1;
    const std::size_t least = word == Word::gate || word == Word::buffer ? 2 : most;
    if (terminals < least || terminals > most)
        throw BadInput(place, "expected a gate with " + std::to_string(least) +
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
