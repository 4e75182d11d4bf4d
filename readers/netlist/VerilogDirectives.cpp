// Compiler directives: macros, and what `ifdef leaves out.
//
// The text of a macro is copied in front of the bytes that follow its use, where there is room because the
// use has been read: the bytes after it stay where they are, and so do their lines and columns. A macro that
// uses itself is found by counting, since the text does not tell where it came from.
#include "readers/netlist/VerilogLexer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace Readers {

namespace {

constexpr std::size_t longestShown = 40;
constexpr std::size_t mostConditions = 1'000;                  // in each other
constexpr std::size_t mostExpansions = 10'000;                 // within one
constexpr std::uint64_t mostExpanded = std::uint64_t{1} << 28; // bytes, in a file
constexpr std::int64_t longestPending = std::int64_t{1} << 24;
constexpr std::size_t mostArguments = 1'000;

// Directives that take the rest of their line and change nothing here.
constexpr std::array<std::string_view, 21> passedOver{"timescale",
                                                      "default_nettype",
                                                      "line",
                                                      "unconnected_drive",
                                                      "nounconnected_drive",
                                                      "delay_mode_distributed",
                                                      "delay_mode_path",
                                                      "delay_mode_unit",
                                                      "delay_mode_zero",
                                                      "suppress_faults",
                                                      "nosuppress_faults",
                                                      "enable_portfaults",
                                                      "disable_portfaults",
                                                      "default_decay_time",
                                                      "default_trireg_strength",
                                                      "pragma",
                                                      "protect",
                                                      "endprotect",
                                                      "uselib",
                                                      "begin_keywords",
                                                      "end_keywords"};

bool isNameStart(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isBlank(int c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string quoted(const std::string& name) { return "'`" + name.substr(0, longestShown) + "'"; }

} // namespace

// --- Names ---

// From the '`' on. The directive is the token at hand, for messages.
std::string VerilogLexer::readDirectiveName() {
    startToken();
    ++next_;
    skipName();
    std::string name(begin_ + 1, next_);
    begin_ = nullptr;
    return name;
}

// The name that a directive is about, on the same line.
std::string VerilogLexer::readNameBehind(std::string_view directive) {
    skipBlanks();
    const Token at = token_;
    startToken();
    if (!isNameStart(peek())) {
        token_ = at;
        failLexing("expected a name behind '`" + std::string(directive) + "'");
    }
    skipName();
    std::string name(begin_, next_);
    begin_ = nullptr;
    token_ = at;
    return name;
}

// --- Directives ---

// False for a macro that is not defined: it becomes a token.
bool VerilogLexer::takeDirective() {
    startToken();
    ++next_;
    skipName();
    std::string name(begin_ + 1, next_);
    if (takeCondition(name))
        return true;
    if (name == "define") {
        define();
    } else if (name == "undef") {
        begin_ = nullptr;
        macros_.undefine(readNameBehind(name));
    } else if (name == "celldefine" || name == "endcelldefine") {
        isCellDefine_ = name == "celldefine";
    } else if (name == "resetall" || name == "undefineall") {
        isCellDefine_ = isCellDefine_ && name != "resetall";
        if (name == "undefineall")
            macros_.clear();
    } else if (name == "include") {
        includeNothing();
    } else if (std::find(passedOver.begin(), passedOver.end(), name) != passedOver.end()) {
        begin_ = nullptr;
        skipLine();
    } else if (macros_.find(name)) {
        begin_ = nullptr;
        expand(std::move(name));
    } else {
        next_ = begin_;
        return false;
    }
    begin_ = nullptr;
    return true;
}

// What an included file defines are cells, unless it is read within a module.
void VerilogLexer::includeNothing() {
    begin_ = nullptr;
    if (inModule_)
        failLexing("`include within a module is not supported: expected the netlist in one file");
    diagnostics_.warning(place(), "`include is passed over: modules of that file are taken as cells");
    skipLine();
}

// --- Conditions ---

bool VerilogLexer::takeCondition(std::string_view name) {
    const bool isElse = name == "else" || name == "elsif";
    if (name != "ifdef" && name != "ifndef" && name != "endif" && !isElse)
        return false;
    const std::string directive(name);
    begin_ = nullptr;
    if (name == "ifdef" || name == "ifndef") {
        const Token start = token_;
        const bool isDefined = macros_.find(readNameBehind(directive)) != nullptr;
        startCondition(isDefined == (directive == "ifdef"), start);
        return true;
    }
    if (conditions_.empty())
        failLexing("'`" + directive + "' without '`ifdef'");
    if (isElse) // the branch before it was read
        skipInactive();
    else
        conditions_.pop_back();
    return true;
}

void VerilogLexer::startCondition(bool isTrue, const Token& start) {
    if (conditions_.size() == mostConditions)
        failLexing("more than " + std::to_string(mostConditions) + " '`ifdef' within each other");
    conditions_.push_back({start, isTrue});
    if (!isTrue)
        skipInactive();
}

// To the branch that is read, or after the end.
void VerilogLexer::skipInactive() {
    std::size_t depth = 0;
    for (int c = peek(); c != endOfText; c = peek()) {
        if (c == '\n')
            newLine();
        else if (c == '/' && peekSecond() == '/')
            skipLine();
        else if (c == '/' && peekSecond() == '*')
            skipComment();
        else if (c == '`') {
            if (skipInactiveDirective(depth))
                return;
        } else if (c == '"') {
            do
                next_ += c == '\\' && peekSecond() != '\n' && peekSecond() != endOfText ? 2 : 1;
            while ((c = peek()) != '"' && c != '\n' && c != endOfText);
            next_ += c == '"' ? 1 : 0;
        } else
            ++next_;
    }
    token_ = conditions_.back().start;
    conditions_.clear();
    failLexing("'`ifdef' without '`endif'");
}

// Whether what follows is read.
bool VerilogLexer::skipInactiveDirective(std::size_t& depth) {
    const std::string name = readDirectiveName();
    Condition& condition = conditions_.back();
    if (name == "ifdef" || name == "ifndef")
        ++depth;
    else if (name == "endif" && depth != 0)
        --depth;
    else if (name == "endif") {
        conditions_.pop_back();
        return true;
    } else if (depth == 0 && (name == "else" || name == "elsif")) {
        const bool isTrue = name == "else" || macros_.find(readNameBehind(name)) != nullptr;
        const bool isRead = isTrue && !condition.isTaken;
        condition.isTaken = condition.isTaken || isTrue;
        return isRead;
    }
    return false;
}

// --- Macros ---

// "`define NAME(a, b) text", to the end of the line; a backslash before it goes on on the next one.
void VerilogLexer::define() {
    begin_ = nullptr;
    const std::string name = readNameBehind("define");
    VerilogMacros::Macro macro;
    macro.hasParameters = peek() == '(';
    while (macro.hasParameters && peek() != ')') {
        ++next_;
        macro.parameters.push_back(readNameBehind("define"));
        skipBlanks();
        if (peek() != ',' && peek() != ')')
            failLexing("expected ',' or ')' in the parameters of " + quoted(name));
        if (macro.parameters.size() > mostArguments)
            failLexing("more than " + std::to_string(mostArguments) + " parameters of " + quoted(name));
    }
    next_ += macro.hasParameters ? 1 : 0;
    readBody(macro.body);
    if (!macros_.define(name, std::move(macro)))
        failLexing("the macros take more than " + std::to_string(VerilogMacros::mostBytes) + " bytes");
}

void VerilogLexer::readBody(std::string& body) {
    skipBlanks();
    for (int c = peek(); c != '\n' && c != endOfText; c = peek()) {
        if (c == '/' && peekSecond() == '/') {
            skipLine();
            break;
        }
        if (c == '/' && peekSecond() == '*') {
            skipComment();
            append(body, ' ');
            continue;
        }
        if (c == '\\' && (peekSecond() == '\n' || peekSecond() == '\r')) {
            ++next_;
            next_ += peek() == '\r' ? 1 : 0;
            if (peek() == '\n')
                newLine();
            append(body, ' ');
            continue;
        }
        append(body, static_cast<char>(c));
        ++next_;
    }
    while (!body.empty() && isBlank(body.back()))
        body.pop_back();
}

void VerilogLexer::append(std::string& text, char c) {
    if (text.size() == VerilogMacros::longestExpansion)
        failLexing("the text of a macro has more than " + std::to_string(VerilogMacros::longestExpansion) +
                   " characters");
    text += c;
}

// Behind the name of a macro that is defined.
void VerilogLexer::expand(std::string name) {
    const bool isOutermost = next_ - block_.data() - static_cast<std::ptrdiff_t>(name.size()) > expansionEnd_;
    if (isOutermost) {
        expansion_ = token_;
        expansions_ = 0;
    }
    const VerilogMacros::Macro& macro = *macros_.find(name);
    std::vector<std::string> arguments;
    if (macro.hasParameters)
        arguments = readArguments(name);
    if (macro.parameters.empty() && arguments.size() == 1 &&
        arguments[0].find_first_not_of(" \t") == std::string::npos)
        arguments.clear();
    if (arguments.size() != macro.parameters.size())
        failLexing("the macro " + quoted(name) + " takes " + std::to_string(macro.parameters.size()) +
                   " arguments, found " + std::to_string(arguments.size()));
    std::string text;
    const auto pending = std::max<std::int64_t>(expansionEnd_ - (next_ - block_.data()), 0);
    if (!VerilogMacros::expand(macro, arguments, text) ||
        pending + static_cast<std::int64_t>(text.size()) > longestPending)
        failAtLimit("the macro " + quoted(name) + " becomes longer than " +
                    std::to_string(VerilogMacros::longestExpansion) +
                    " characters, or with what it is in than " + std::to_string(longestPending));
    expanded_ += text.size();
    if (++expansions_ > mostExpansions)
        failAtLimit("the macro " + quoted(name) + " is one of more than " + std::to_string(mostExpansions) +
                    " within one: does it use itself?");
    if (expanded_ > mostExpanded)
        failAtLimit("the macros of the file become more than " + std::to_string(mostExpanded) +
                    " characters");
    if (isOutermost || next_ - block_.data() > expansionEnd_)
        expansionEnd_ = next_ - block_.data();
    insert(text);
}

// Nothing more is read.
void VerilogLexer::failAtLimit(std::string text) const {
    throw Base::BadInputs({{Base::Severity::error, place(), std::move(text)}});
}

// "(a, (b, c), {d, e})". White space, ends of lines and comments become blanks.
std::vector<std::string> VerilogLexer::readArguments(const std::string& name) {
    const Token use = token_;
    const auto failAtUse = [&](const std::string& text) {
        token_ = use;
        failLexing(text + quoted(name));
    };
    while (skipSpace()) {
    }
    if (peek() != '(')
        failAtUse("expected '(' and arguments behind the macro ");
    ++next_;
    std::vector<std::string> arguments(1);
    std::size_t depth = 0;
    bool isString = false;
    for (;;) {
        const int c = peek();
        if (c == endOfText)
            failAtUse("expected ')' behind the arguments of the macro ");
        if (c == '\n') {
            newLine();
            append(arguments.back(), ' ');
            continue;
        }
        if (isString && c == '\\' && peekSecond() != '\n') {
            append(arguments.back(), '\\');
            append(arguments.back(), static_cast<char>(peekSecond()));
            next_ += 2;
            continue;
        }
        isString = isString != (c == '"');
        if (!isString && depth == 0 && (c == ',' || c == ')')) {
            ++next_;
            if (c == ')')
                return arguments;
            if (arguments.size() == mostArguments)
                failAtUse("more than " + std::to_string(mostArguments) + " arguments of the macro ");
            arguments.emplace_back();
            continue;
        }
        if (!isString && (c == '(' || c == '{' || c == '['))
            ++depth;
        if (!isString && (c == ')' || c == '}' || c == ']') && depth != 0)
            --depth;
        append(arguments.back(), static_cast<char>(c));
        ++next_;
    }
}

// Puts the text in front of the next byte.
void VerilogLexer::insert(std::string_view text) {
    const auto at = next_ - block_.data();
    const auto size = static_cast<std::ptrdiff_t>(text.size());
    if (at < size) {
        const auto unread = end_ - next_;
        if (static_cast<std::ptrdiff_t>(block_.size()) < size + unread)
            block_.resize(static_cast<std::size_t>(size + unread));
        std::memmove(block_.data() + size, block_.data() + at, static_cast<std::size_t>(unread));
        lineBegin_ += size - at;
        expansionEnd_ += size - at;
        next_ = block_.data() + size;
        end_ = next_ + unread;
    }
    next_ -= size;
    std::copy(text.begin(), text.end(), next_);
}

} // namespace Readers
