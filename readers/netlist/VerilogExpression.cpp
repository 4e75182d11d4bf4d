// Nested braces are kept on a stack, each with the place in the bits where it begins; a replication repeats
// what came since.
#include "readers/netlist/VerilogExpression.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace Readers {

namespace {

using Kind = VerilogLexer::Kind;

constexpr std::uint64_t widest = std::uint64_t{1} << 20; // of vectors and expressions
constexpr std::string_view operand = "a net, a constant or '{' (only structural Verilog can be read)";
constexpr std::size_t deepest = 1'000'000; // of braces and parentheses in each other

struct Radix {
    char letter;
    unsigned bits; // of a digit; 0 for a decimal one
    std::string_view digits;
};
constexpr std::string_view anyDigits = "0123456789abcdefABCDEF";
constexpr Radix radices[] = {
    {'b', 1, anyDigits.substr(0, 2)},
    {'o', 3, anyDigits.substr(0, 8)},
    {'d', 0, anyDigits.substr(0, 10)},
    {'h', 4, anyDigits},
};

// Returns what each bit of a digit is connected to.
ModuleNetId netOf(char digit) {
    return std::string_view("xXzZ?").find(digit) == std::string_view::npos ? constantNet : ModuleNetId();
}

std::optional<std::uint64_t> toNumber(std::string_view text) {
    std::uint64_t value = 0;
    std::string digits(text);
    std::erase(digits, '_');
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() && end == digits.data() + digits.size() ? std::optional(value) : std::nullopt;
}

} // namespace

// --- Small parts ---

void VerilogExpression::expect(char symbol) {
    if (!lexer_.isAt(symbol))
        lexer_.failExpected(std::string("'") + symbol + "'");
    lexer_.advance();
}

std::int32_t VerilogExpression::readInteger() {
    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    const Base::Place place = lexer_.place();
    std::int64_t sum = 0;
    bool negative = lexer_.isAt('-');
    if (negative)
        lexer_.advance();
    for (;;) {
        const std::optional<std::uint64_t> value =
            lexer_.token().kind == Kind::number ? toNumber(lexer_.token().text) : std::nullopt;
        if (!value || *value > limit)
            lexer_.failExpected("an integer");
        lexer_.advance();
        sum += negative ? -static_cast<std::int64_t>(*value) : static_cast<std::int64_t>(*value);
        if (sum > limit || sum < -limit)
            throw Base::BadInput(place, "expected an integer of 32 bits, found " + std::to_string(sum));
        if (!lexer_.isAt('+') && !lexer_.isAt('-'))
            return static_cast<std::int32_t>(sum);
        negative = lexer_.isAt('-');
        lexer_.advance();
    }
}

VerilogRange VerilogExpression::readRange() { return readBrackets(false); }

VerilogRange VerilogExpression::readBrackets(bool mayBeOneBit) {
    const Base::Place place = lexer_.place();
    expect('[');
    VerilogRange range;
    range.left = range.right = readInteger();
    if (!mayBeOneBit || lexer_.isAt(':')) {
        expect(':');
        range.right = readInteger();
    }
    expect(']');
    if (std::uint64_t{range.width()} - 1 >= widest)
        throw Base::BadInput(place, "a range of more than " + std::to_string(widest) + " bits");
    return range;
}

VerilogModule::Reference VerilogExpression::readReference() {
    if (lexer_.token().kind != Kind::name && lexer_.token().kind != Kind::escaped)
        lexer_.failExpected(operand);
    VerilogModule::Reference reference;
    reference.name = names_.add(lexer_.token().text);
    lexer_.advance();
    if (lexer_.isAt('['))
        reference.part = readBrackets(true);
    return reference;
}

// --- Expressions ---

const VerilogModule::Bits& VerilogExpression::read() { return readUpTo(false); }

// mayStop: it ends at an operator too, also within parentheses, which stay in braces_.
const VerilogModule::Bits& VerilogExpression::readUpTo(bool mayStop) {
    bits_.clear();
    braces_.clear();
    isFill_ = lexer_.token().kind == Kind::number && lexer_.token().text.size() == 2 &&
              lexer_.token().text.front() == '\'';
    readOperand();
    while (!braces_.empty()) {
        const bool isParenthesis = braces_.back().isParenthesis;
        if (lexer_.isAt(isParenthesis ? ')' : '}'))
            closeBrace();
        else if (!isParenthesis && lexer_.isAt(',')) {
            lexer_.advance();
            readOperand();
        } else if (mayStop && isOperator() &&
                   std::ranges::all_of(braces_, [](const Brace& brace) { return brace.isParenthesis; })) {
            return bits_;
        } else
            lexer_.failExpected(isParenthesis ? "')'" : "',' or '}'");
    }
    return bits_;
}

// --- Operators ---

bool VerilogExpression::isOperator() const {
    return lexer_.token().kind == Kind::symbol &&
           std::string_view("&|^~?:+-*/%<>=!").find(lexer_.token().text) != std::string_view::npos;
}

VerilogExpression::Computed VerilogExpression::readComputed() {
    Computed computed;
    std::size_t depth = 0;
    const bool isCall = lexer_.token().kind == Kind::name && lexer_.token().text.front() == '$';
    if (!isCall && (!isOperator() || lexer_.isAt('~') || lexer_.isAt('!'))) {
        computed.operands.push_back(readUpTo(true));
        depth = braces_.size();
        isComputed_ = isOperator() || depth != 0;
        if (!isComputed_)
            return computed;
    }
    isComputed_ = true;
    readRest(computed, depth);
    return computed;
}

// Operands and operators as they come: which operands there are is all that counts.
void VerilogExpression::readRest(Computed& computed, std::size_t depth) {
    bool isBehindOperand = !computed.operands.empty();
    while (depth != 0 || (!lexer_.isAt(',') && !lexer_.isAt(';'))) {
        const Kind kind = lexer_.token().kind;
        if (kind == Kind::name && lexer_.token().text.front() == '$') {
            computed.isBitwise = false;
            lexer_.advance();
        } else if (kind == Kind::name || kind == Kind::escaped) {
            bits_.clear();
            const Base::Place place = lexer_.place();
            module_.addBits(readReference(), place, bits_);
            if (lexer_.isAt('('))
                lexer_.fail("only structural Verilog can be read, found a call of a function");
            computed.operands.push_back(bits_);
            isBehindOperand = true;
        } else if (kind == Kind::number) {
            lexer_.advance();
            isBehindOperand = true;
        } else if (lexer_.isAt('(') || lexer_.isAt('{') || lexer_.isAt(')') || lexer_.isAt('}')) {
            const bool isOpening = lexer_.isAt('(') || lexer_.isAt('{');
            if (!isOpening && depth == 0)
                lexer_.failExpected("',' or ';'");
            computed.isBitwise = computed.isBitwise && !lexer_.isAt('{');
            depth += isOpening ? 1 : 0;
            depth -= isOpening ? 0 : 1;
            isBehindOperand = !isOpening;
            lexer_.advance();
        } else if (lexer_.isAt(',') && depth != 0) {
            lexer_.advance();
        } else if (isOperator()) {
            const bool isBinary = lexer_.isAt('&') || lexer_.isAt('|') || lexer_.isAt('^');
            computed.isConditional = computed.isConditional || lexer_.isAt('?');
            computed.isBitwise = computed.isBitwise && ((isBinary && isBehindOperand) || lexer_.isAt('~') ||
                                                        lexer_.isAt('?') || lexer_.isAt(':'));
            isBehindOperand = isBehindOperand && lexer_.isAt('~');
            lexer_.advance();
        } else
            lexer_.failExpected("',' or ';' (only structural Verilog can be read)");
    }
}

// Up to the end of a net or a constant.
void VerilogExpression::readOperand() {
    Brace brace;
    for (;;) {
        brace = {bits_.size()};
        readInversions(brace);
        if (!lexer_.isAt('{') && !lexer_.isAt('('))
            break;
        brace.isParenthesis = lexer_.isAt('(');
        if (braces_.size() == deepest)
            lexer_.fail("more than " + std::to_string(deepest) + " braces within each other");
        if (openBrace(brace))
            return;
    }
    if (lexer_.token().kind == Kind::number)
        readConstant();
    else {
        const Base::Place place = lexer_.place();
        module_.addBits(readReference(), place, bits_);
        checkWidth(bits_.size());
    }
    invert(brace);
}

// "~", "!", or several of them.
void VerilogExpression::readInversions(Brace& brace) {
    for (; lexer_.isAt('~') || lexer_.isAt('!'); lexer_.advance()) {
        brace.isInverted = !brace.isInverted;
        brace.isLogical = brace.isLogical || lexer_.isAt('!');
    }
}

// What came since the brace.
void VerilogExpression::invert(const Brace& brace) {
    if (brace.isLogical && bits_.size() - brace.firstBit != 1)
        lexer_.fail("'!' of " + std::to_string(bits_.size() - brace.firstBit) +
                    " bits (only structural Verilog can be read)");
    for (std::size_t i = brace.firstBit; brace.isInverted && i < bits_.size(); ++i)
        if (bits_[i] != Base::none && bits_[i] != constantNet)
            bits_[i] = VerilogModule::inverse(bits_[i]);
}

// A number after a brace, and a brace after the number: a replication, of which the outer brace is a part.
// Returns true if the number is a constant, and so an operand.
bool VerilogExpression::openBrace(const Brace& brace) {
    lexer_.advance();
    braces_.push_back(brace);
    if (brace.isParenthesis || lexer_.token().kind != Kind::number)
        return false;
    const std::optional<std::uint64_t> count = toNumber(lexer_.token().text);
    const Base::Place place = lexer_.place();
    const std::size_t before = bits_.size();
    readConstant();
    if (!lexer_.isAt('{'))
        return true;
    bits_.resize(before);
    if (!count || *count == 0)
        throw Base::BadInput(place, "expected a count above 0");
    braces_.push_back({.firstBit = bits_.size(), .count = *count, .isReplication = true});
    lexer_.advance();
    return false;
}

void VerilogExpression::closeBrace() {
    const Brace brace = braces_.back();
    braces_.pop_back();
    const std::size_t width = bits_.size() - brace.firstBit;
    if (brace.count > widest)
        checkWidth(brace.count);
    checkWidth(brace.firstBit + width * brace.count);
    for (std::uint64_t i = 1; i < brace.count; ++i)
        for (std::size_t bit = 0; bit < width; ++bit)
            bits_.push_back(bits_[brace.firstBit + bit]);
    invert(brace);
    lexer_.advance();
    if (brace.isReplication && !lexer_.isAt('}'))
        lexer_.failExpected("'}'");
}

void VerilogExpression::checkWidth(std::uint64_t width) const {
    if (width > widest)
        lexer_.fail("an expression of more than " + std::to_string(widest) + " bits");
}

// Without a width it is one bit wide, or 32 if it has a base.
void VerilogExpression::readConstant() {
    constexpr std::uint64_t defaultWidth = 32;
    std::string text(lexer_.token().text);
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '_'; });
    const std::size_t apostrophe = std::min(text.find('\''), text.size());
    const std::uint64_t width =
        apostrophe == 0 ? defaultWidth : toNumber(text.substr(0, apostrophe)).value_or(0);
    std::string_view digits = std::string_view(text).substr(apostrophe);
    if (digits.size() <= 2) // a plain number, or a digit that fills
        bits_.push_back(digits.empty() ? constantNet : netOf(digits.back()));
    else if (width == 0 || !addDigits(digits, width))
        lexer_.failExpected("a constant");
    checkWidth(bits_.size());
    lexer_.advance();
}

// Of "'sh12f". Returns false if a digit is not of the base.
bool VerilogExpression::addDigits(std::string_view digits, std::uint64_t width) {
    checkWidth(width);
    digits.remove_prefix((digits[1] | 0x20) == 's' ? 2 : 1); // a small letter
    const char letter = static_cast<char>(digits.front() | 0x20);
    const Radix* radix = std::find_if(std::begin(radices), std::end(radices),
                                      [&](const Radix& each) { return each.letter == letter; });
    digits.remove_prefix(1);
    for (const char digit : digits)
        if (netOf(digit) == constantNet && radix->digits.find(digit) == std::string_view::npos)
            return false;
    const std::size_t first = bits_.size();
    if (radix->bits != 0)
        for (std::size_t i = digits.size(); i-- != 0 && bits_.size() - first < width;)
            bits_.insert(bits_.end(), radix->bits, netOf(digits[i]));
    bits_.resize(first + width, netOf(digits.front())); // cut, or widened
    std::reverse(bits_.begin() + static_cast<std::ptrdiff_t>(first), bits_.end());
    return true;
}

} // namespace Readers
