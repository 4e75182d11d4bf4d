// The grammar of SDF from the file down to the statements, one function for each section.
//
// The depth of sections is fixed by the grammar, so functions that call each other do for a stack; what may
// nest without bound (conditions, sections passed over) is counted, not called.
#include "readers/sdf/Parser.h"

#include "readers/sdf/Phrases.h"

#include <algorithm>

namespace Readers::Sdf {

namespace {

class Parser {
public:
    Parser(Base::Source& source, Handler& handler, Base::Diagnostics& diagnostics, std::size_t blockSize)
        : source_(source), handler_(handler), diagnostics_(diagnostics), lexer_(source, blockSize),
          phrases_(lexer_) {}

    void file();

private:
    void byteOrderMark();
    void headerEntry(Keyword keyword);
    void headerText(std::string& into);
    void divider();
    void timeScale();
    void endHeader();

    void cell(Base::Position place);
    void instance();
    void beginCell();
    void cellSection(Keyword keyword, Base::Position place);
    void delaySection();
    void delayStatements(bool increment);
    void timingCheckSection();

    void delayStatement(Keyword keyword, Base::Position place, bool increment);
    void ioPath(Base::Position place, bool conditional, bool increment);
    void guardedPath(bool increment);
    std::span<const Value> delays();

    void check(Keyword keyword, Base::Position place);
    void pairCheck(CheckKind kind, std::size_t count, Base::Position place);
    void pulseCheck(CheckKind kind, Base::Position place);
    void stampConditions();
    void bidirectionalSkew(Base::Position place);

    void ignore(Keyword keyword, Base::Position place);

    Base::Source& source_;
    Handler& handler_;
    Base::Diagnostics& diagnostics_;
    Lexer lexer_;
    Phrases phrases_;

    bool headerEnded_ = false;
    bool scaled_ = false; // a time scale was given
    int scale_ = Header{}.scale;
    std::string version_, design_, program_;
    std::string cellType_, instance_;
    std::vector<std::uint32_t> instanceEscapes_; // the offsets of each '.' or '/' that was escaped
    Base::Position cellPlace_;
    bool cellBegun_ = false; // its event was fired
    std::string text_;
    EventText from_, to_; // of a check: data and clock
};

// --- The file ---

// The bytes that some editors put before a text.
void Parser::byteOrderMark() {
    if (lexer_.peek() != 0xef)
        return;
    for (const int byte : {0xef, 0xbb, 0xbf}) {
        if (lexer_.peek() != byte)
            lexer_.fail("'('");
        lexer_.skip();
    }
}

void Parser::file() {
    byteOrderMark();
    lexer_.expect('(');
    if (phrases_.keyword() != Keyword::delayFile)
        phrases_.refuse("DELAYFILE");
    for (Base::Position place; phrases_.open(place);) {
        const Keyword keyword = phrases_.keyword();
        if (keyword == Keyword::cell) {
            endHeader();
            cell(place);
        } else if (headerEnded_) {
            phrases_.refuse("CELL");
        } else {
            headerEntry(keyword);
        }
    }
    lexer_.expect(')');
    endHeader();
    if (lexer_.peek() != Lexer::endOfFile)
        lexer_.fail("the end of the file");
}

void Parser::headerEntry(Keyword keyword) {
    switch (keyword) {
    case Keyword::sdfVersion:
        return headerText(version_);
    case Keyword::design:
        return headerText(design_);
    case Keyword::program:
        return headerText(program_);
    case Keyword::divider:
        return divider();
    case Keyword::timeScale:
        return timeScale();
    case Keyword::date:
    case Keyword::vendor:
    case Keyword::version:
    case Keyword::voltage:
    case Keyword::process:
    case Keyword::temperature:
        return lexer_.skipGroup();
    default:
        phrases_.refuse("an entry of the header or CELL");
    }
}

// A text with quotes or without, and the ")".
void Parser::headerText(std::string& into) {
    if (lexer_.peek() == '"')
        lexer_.quoted(into);
    else
        lexer_.bare(into);
    lexer_.expect(')');
}

void Parser::divider() {
    lexer_.peek();
    const Base::Position place = lexer_.where();
    headerText(text_);
    if (text_ != "." && text_ != "/")
        lexer_.fail(place, "'.' or '/'", text_);
    lexer_.setDivider(text_[0]);
}

void Parser::timeScale() {
    struct Unit {
        std::string_view name;
        int power;
    };
    constexpr Unit units[] = {{"s", 0}, {"ms", -3}, {"us", -6}, {"ns", -9}, {"ps", -12}, {"fs", -15}};
    constexpr int largestPower = 2;

    lexer_.peek();
    const Base::Position place = lexer_.where();
    headerText(text_);
    const std::string_view text = text_;
    const std::size_t digits = std::min(text.find_first_not_of("0123456789."), text.size());
    const std::size_t letters = std::min(text.find_first_not_of(' ', digits), text.size());
    const auto same = [name = text.substr(letters)](const Unit& unit) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        return std::ranges::equal(unit.name, name, {}, {}, lower);
    };
    const Unit* const unit = std::ranges::find_if(units, same);
    const std::optional<Base::Decimal> factor = Base::Decimal::parse(text.substr(0, digits));
    if (unit != std::end(units) && factor)
        for (int power = 0; power <= largestPower; ++power)
            if (*factor == Base::Decimal{1, power}) {
                scale_ = unit->power + power;
                scaled_ = true;
                return;
            }
    lexer_.fail(place, "1, 10 or 100 and a unit of time", text_);
}

// The header ends at the first cell, or at the end of the file.
void Parser::endHeader() {
    if (headerEnded_)
        return;
    headerEnded_ = true;
    if (!scaled_)
        diagnostics_.note({source_.path()}, "no TIMESCALE: the unit of time is 1 ns");
    handler_.header({version_, design_, program_, lexer_.divider(), scale_});
}

// --- A cell ---

void Parser::cell(Base::Position place) {
    lexer_.expect('(');
    if (phrases_.keyword() != Keyword::cellType)
        phrases_.refuse("CELLTYPE");
    headerText(cellType_);
    instance_.clear();
    instanceEscapes_.clear();
    lexer_.expect('(');
    if (phrases_.keyword() != Keyword::instance)
        phrases_.refuse("INSTANCE");
    instance();

    cellPlace_ = place;
    cellBegun_ = false;
    for (Base::Position section; phrases_.open(section);)
        cellSection(phrases_.keyword(), section);
    lexer_.expect(')');
    beginCell();
    handler_.endCell();
}

// The cell is known when its first section begins that is not an instance, or when it ends.
void Parser::beginCell() {
    if (!cellBegun_)
        handler_.cell(cellType_, instance_, instanceEscapes_, cellPlace_);
    cellBegun_ = true;
}

// An instance, relative to the one before it in the same cell.
void Parser::instance() {
    NameText& name = to_.name;
    name.clear();
    if (lexer_.take('*'))
        name.text.assign(1, '*');
    else if (lexer_.peek() != ')')
        lexer_.name(name, "an instance");
    lexer_.expect(')');
    if (!instance_.empty() && !name.text.empty())
        instance_ += lexer_.divider();
    for (const std::uint32_t at : name.escaped)
        instanceEscapes_.push_back(static_cast<std::uint32_t>(instance_.size()) + at);
    instance_ += name.text;
}

void Parser::cellSection(Keyword keyword, Base::Position place) {
    switch (keyword) {
    case Keyword::instance:
        if (cellBegun_)
            break;
        return instance();
    case Keyword::delay:
        beginCell();
        return delaySection();
    case Keyword::timingCheck:
        beginCell();
        return timingCheckSection();
    case Keyword::timingEnvironment:
    case Keyword::label:
    case Keyword::correlation:
        beginCell();
        return ignore(keyword, place);
    default:
        break;
    }
    phrases_.refuse("DELAY, TIMINGCHECK, TIMINGENV, LABEL or CORRELATION");
}

void Parser::delaySection() {
    for (Base::Position place; phrases_.open(place);) {
        switch (const Keyword keyword = phrases_.keyword()) {
        case Keyword::absolute:
            delayStatements(false);
            break;
        case Keyword::increment:
            delayStatements(true);
            break;
        case Keyword::pathPulse:
        case Keyword::pathPulsePercent:
        case Keyword::globalPathPulse:
            ignore(keyword, place);
            break;
        default:
            phrases_.refuse("ABSOLUTE, INCREMENT, PATHPULSE or PATHPULSEPERCENT");
        }
    }
    lexer_.expect(')');
}

void Parser::delayStatements(bool increment) {
    for (Base::Position place; phrases_.open(place);)
        delayStatement(phrases_.keyword(), place, increment);
    lexer_.expect(')');
}

void Parser::timingCheckSection() {
    for (Base::Position place; phrases_.open(place);)
        check(phrases_.keyword(), place);
    lexer_.expect(')');
}

// --- Delays ---

void Parser::delayStatement(Keyword keyword, Base::Position place, bool increment) {
    switch (keyword) {
    case Keyword::ioPath:
        return ioPath(place, false, increment);
    case Keyword::cond:
        phrases_.condition();
        return guardedPath(increment);
    case Keyword::condElse:
        return guardedPath(increment);
    case Keyword::interconnect: {
        phrases_.port(from_.name);
        phrases_.port(to_.name);
        const std::span<const Value> values = delays();
        return handler_.interconnect(from_.name.path(), to_.name.path(), values, increment, place);
    }
    case Keyword::port: {
        phrases_.port(to_.name);
        const std::span<const Value> values = delays();
        return handler_.port(to_.name.path(), values, increment, place);
    }
    case Keyword::netDelay: {
        phrases_.port(to_.name);
        const std::span<const Value> values = delays();
        return handler_.netDelay(to_.name.path(), values, increment, place);
    }
    case Keyword::device: {
        const bool output = Lexer::isNameStart(lexer_.peek());
        if (output)
            phrases_.port(to_.name);
        const std::span<const Value> values = delays();
        return handler_.device(output ? std::optional(to_.name.path()) : std::nullopt, values, increment,
                               place);
    }
    default:
        phrases_.refuse("IOPATH, COND, CONDELSE, PORT, INTERCONNECT, NETDELAY or DEVICE");
    }
}

void Parser::ioPath(Base::Position place, bool conditional, bool increment) {
    phrases_.edgedPort(from_);
    phrases_.port(to_.name);
    for (Base::Position retain; phrases_.retention(retain);)
        handler_.ignored(toString(Keyword::retain), retain);
    const std::span<const Value> values = delays();
    handler_.ioPath(from_.event(), to_.name.path(), values, conditional, increment, place);
}

// The "(IOPATH ...))" after a condition, or after the CONDELSE that holds if no condition does.
void Parser::guardedPath(bool increment) {
    Base::Position place;
    if (!phrases_.open(place))
        lexer_.fail("'('");
    if (phrases_.keyword() != Keyword::ioPath)
        phrases_.refuse("IOPATH");
    ioPath(place, true, increment);
    lexer_.expect(')');
}

std::span<const Value> Parser::delays() {
    const Phrases::Delays delays = phrases_.delays();
    if (delays.limits)
        handler_.ignored(toString(Keyword::pathPulse), delays.limitsPlace);
    return delays.values;
}

// --- Timing checks ---

void Parser::check(Keyword keyword, Base::Position place) {
    switch (keyword) {
    case Keyword::setup:
        return pairCheck(CheckKind::setup, 1, place);
    case Keyword::hold:
        return pairCheck(CheckKind::hold, 1, place);
    case Keyword::setupHold:
        return pairCheck(CheckKind::setupHold, 2, place);
    case Keyword::recovery:
        return pairCheck(CheckKind::recovery, 1, place);
    case Keyword::removal:
        return pairCheck(CheckKind::removal, 1, place);
    case Keyword::recrem:
        return pairCheck(CheckKind::recoveryRemoval, 2, place);
    case Keyword::skew:
        return pairCheck(CheckKind::skew, 1, place);
    case Keyword::noChange:
        return pairCheck(CheckKind::noChange, 2, place);
    case Keyword::width:
        return pulseCheck(CheckKind::width, place);
    case Keyword::period:
        return pulseCheck(CheckKind::period, place);
    case Keyword::bidirectSkew:
        return bidirectionalSkew(place);
    case Keyword::pathConstraint:
    case Keyword::periodConstraint:
    case Keyword::skewConstraint:
    case Keyword::sum:
    case Keyword::diff:
        return ignore(keyword, place);
    default:
        phrases_.refuse("a timing check");
    }
}

// A check of two ports with one value, or with two and perhaps conditions after them.
void Parser::pairCheck(CheckKind kind, std::size_t count, Base::Position place) {
    phrases_.checkedPort(from_);
    phrases_.checkedPort(to_);
    const std::span<const Value> values = phrases_.exactly(count);
    if (count > 1)
        stampConditions();
    lexer_.expect(')');
    handler_.check(kind, from_.event(), to_.event(), values, place);
}

// "(SCOND condition)", of the first port, and "(CCOND condition)", of the second.
void Parser::stampConditions() {
    for (Base::Position place; phrases_.open(place);) {
        const Keyword keyword = phrases_.keyword();
        if (keyword != Keyword::scond && keyword != Keyword::ccond)
            phrases_.refuse("SCOND or CCOND");
        phrases_.condition();
        lexer_.expect(')');
        (keyword == Keyword::scond ? from_ : to_).conditional = true;
    }
}

void Parser::pulseCheck(CheckKind kind, Base::Position place) {
    phrases_.checkedPort(to_);
    const std::span<const Value> values = phrases_.exactly(1);
    lexer_.expect(')');
    handler_.check(kind, {}, to_.event(), values, place);
}

// A skew with a value for either order of the ports. There is no check of that kind.
void Parser::bidirectionalSkew(Base::Position place) {
    phrases_.checkedPort(from_);
    phrases_.checkedPort(to_);
    phrases_.exactly(2);
    lexer_.expect(')');
    handler_.ignored(toString(Keyword::bidirectSkew), place);
}

// Passes over the rest of a section.
void Parser::ignore(Keyword keyword, Base::Position place) {
    lexer_.skipGroup();
    handler_.ignored(toString(keyword), place);
}

} // namespace

void parse(Base::Source& source, Handler& handler, Base::Diagnostics& diagnostics, std::size_t blockSize) {
    Parser(source, handler, diagnostics, blockSize).file();
}

} // namespace Readers::Sdf
