// What the statements of an SDF file are made of: ports with edges and conditions, values, lists of values.
//
// Everything is read into room that is used again, so that a statement allocates nothing.
#pragma once

#include "readers/sdf/Keywords.h"
#include "readers/sdf/Lexer.h"

#include <array>
#include <span>

namespace Readers::Sdf {

// An Event with its own text.
struct EventText {
    NameText name;
    Design::Transition edge = Design::Transition::any;
    bool conditional = false;

    Event event() const { return {name.path(), edge, conditional}; }
};

class Phrases {
public:
    static constexpr std::size_t mostValues = 12;

    explicit Phrases(Lexer& lexer) : lexer_(lexer) {}

    // --- Statements ---

    // Whether a parenthesis opens here; then it is taken, and its place known.
    bool open(Base::Position& place);
    // The word after an opening parenthesis; Keyword::none if it is unknown.
    Keyword keyword();
    // Refuses the word that keyword() took last.
    [[noreturn]] void refuse(std::string_view expected) const;

    // --- Ports ---

    void port(NameText& into);
    // "port" or "(edge port)".
    void edgedPort(EventText& into);
    // The same, or one of them in "(COND condition ...)".
    void checkedPort(EventText& into);
    // A condition, with a name before it or without, up to what it guards or to the closing parenthesis.
    void condition();

    // --- Values ---

    // "()", "(n)" or "(n:n:n)".
    void value(Value& into);
    // So many of them.
    std::span<const Value> exactly(std::size_t count);

    // The values of a delay, up to the closing parenthesis of the statement, and that parenthesis. A value
    // may carry limits of pulses; the values of an IOPATH may follow on times of retention.
    struct Delays {
        std::span<const Value> values;
        bool limits = false;        // some were passed over
        Base::Position limitsPlace; // the first of them
    };
    Delays delays();
    // Passes over "(RETAIN ...)". Whether there was one.
    bool retention(Base::Position& place);

private:
    void edgeWord();
    void edge(EventText& into);
    void guardedPort(EventText& into);
    bool sign(int next, bool operand);
    void digits();
    void valueBody(Value& into);
    bool delay(Value& into);
    void member(std::optional<Base::Decimal>& into, char behind);

    Lexer& lexer_;
    Base::Position wordPlace_;
    std::string_view word_; // valid until the lexer is used again
    std::array<Value, mostValues> values_;
    Base::Position openedPlace_;
    bool opened_ = false; // the parenthesis of the first value was taken by retention()
    std::string label_;
    std::string closing_; // what closes the parentheses of a condition that are open
};

} // namespace Readers::Sdf
