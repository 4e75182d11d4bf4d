// Declarations of ports and nets, and assignments.
#include "readers/netlist/VerilogReader.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Readers {

// --- Declarations ---

// A direction, a kind of net, and a range, of which each but the first may be missing.
void VerilogReader::readType(Declaration& declaration, Word first) {
    declaration = {};
    if (first <= Word::inout) {
        constexpr Design::Direction directions[] = {Design::Direction::input, Design::Direction::output,
                                                    Design::Direction::inout};
        declaration.direction = directions[static_cast<std::size_t>(first)];
        lexer_.advance();
    }
    for (;;) {
        const std::optional<Word> next = isTypeWord() ? Word::variable : word();
        if (next != Word::wire && next != Word::supply && next != Word::variable && next != Word::detail)
            break;
        declaration.isConstant = declaration.isConstant || next == Word::supply;
        declaration.isVariable = declaration.isVariable || next == Word::variable;
        lexer_.advance();
    }
    skipStrength();
    if (word() == Word::detail)
        lexer_.advance();
    if (lexer_.isAt('['))
        declaration.range = expression_.readRange();
    skipDelay();
}

void VerilogReader::readDeclaration(Word first) {
    Declaration declaration;
    readType(declaration, first);
    do {
        const Base::Place place = lexer_.place();
        const Base::Name name = readName("a name");
        if (lexer_.isAt('[') && !declaration.isVariable)
            lexer_.fail("only structural Verilog can be read, found an array of wires");
        if (lexer_.isAt('['))
            skipDimensions(); // a memory is no net
        else
            module_.declare(name, declaration, place);
        if (!lexer_.isAt('='))
            continue;
        if (declaration.isVariable) {
            skipToSeparator(); // the value at the start
            continue;
        }
        VerilogModule::Bits bits;
        module_.addBits({name, {}}, place, bits);
        readAssignment(bits, place);
    } while (takeIf(','));
    if (!lexer_.isAt(';'))
        lexer_.failExpected("',' or ';'");
    lexer_.advance();
}

void VerilogReader::readAssign() {
    lexer_.advance();
    skipStrength();
    skipDelay();
    do {
        const Base::Place place = lexer_.place();
        const VerilogModule::Bits left = expression_.read();
        readAssignment(left, place);
    } while (takeIf(','));
    lexer_.advance();
}

// From the '=' on, to the ',' or ';' after it.
void VerilogReader::readAssignment(const VerilogModule::Bits& left, const Base::Place& place) {
    for (const ModuleNetId bit : left)
        if (bit == Base::none || bit == constantNet || VerilogModule::isInverted(bit))
            throw Base::BadInput(place, "expected nets before '=', found a constant");
    expect('=');
    VerilogExpression::Computed right;
    try {
        right = expression_.readComputed();
        if (!lexer_.isAt(',') && !lexer_.isAt(';'))
            lexer_.failExpected("',' or ';' (only structural Verilog can be read)");
    } catch (const Base::BadInputs&) {
        throw;
    } catch (const Base::BadInput& error) { // as long as the module is not needed
        if (lexer_.token().kind == Kind::end || lexer_.token().kind == Kind::invalid)
            throw;
        module_.setBehaviour(error.diagnostic().place, error.diagnostic().text, true);
        skipToSeparator();
        if (!lexer_.isAt(',') && !lexer_.isAt(';'))
            lexer_.failExpected("',' or ';'");
        return;
    }
    if (!expression_.isComputed()) {
        if (module_.alias(left, right.operands.front()) && inversions_.count++ == 0)
            inversions_.first = place;
    } else if (right.isBitwise)
        for (std::size_t bit = 0; bit < left.size(); ++bit)
            addExpression({left[left.size() - 1 - bit]}, operandsOf(right, bit), place);
    else
        addExpression(left, operandsOf(right, std::nullopt), place);
}

// The bits on which the bit at that place depends, or all of them.
VerilogModule::Bits VerilogReader::operandsOf(const VerilogExpression::Computed& computed,
                                              std::optional<std::size_t> bit) {
    VerilogModule::Bits bits;
    for (const VerilogModule::Bits& operand : computed.operands) {
        if (!bit)
            bits.insert(bits.end(), operand.begin(), operand.end());
        else if (computed.isConditional && operand.size() == 1)
            bits.push_back(operand.front());
        else if (*bit < operand.size())
            bits.push_back(operand[operand.size() - 1 - *bit]);
    }
    for (ModuleNetId& each : bits)
        if (each != Base::none)
            each = VerilogModule::plain(each);
    std::sort(bits.begin(), bits.end());
    bits.erase(std::unique(bits.begin(), bits.end()), bits.end());
    std::erase_if(bits, [](ModuleNetId each) { return each == Base::none || each == constantNet; });
    return bits;
}

// A cell "assign$1" with inputs I0, I1 ... and outputs Y0, Y1 ...
void VerilogReader::addExpression(const VerilogModule::Bits& outputs, const VerilogModule::Bits& inputs,
                                  const Base::Place& place) {
    constexpr std::size_t mostArcs = std::size_t{1} << 12, mostInAll = std::size_t{1} << 22;
    const std::size_t arcs = inputs.size() * outputs.size();
    arcsOfExpressions_ += arcs;
    if (arcs > mostArcs || arcsOfExpressions_ > mostInAll) {
        module_.setBehaviour(place,
                             "only structural Verilog can be read, found an expression of " +
                                 std::to_string(inputs.size()) + " bits for " +
                                 std::to_string(outputs.size()) + " nets",
                             true);
        return;
    }
    if (expressions_.count++ == 0)
        expressions_.first = place;
    module_.startExpression(unnamed(modules_.names.add("assign")), modules_.names.add("assign"), place);
    for (std::size_t i = 0; i < inputs.size(); ++i)
        module_.connect(modules_.names.add("I" + std::to_string(i)), Design::Direction::input, {inputs[i]},
                        place);
    for (std::size_t i = 0; i < outputs.size(); ++i)
        module_.connect(modules_.names.add("Y" + std::to_string(i)), Design::Direction::output, {outputs[i]},
                        place);
}

} // namespace Readers
