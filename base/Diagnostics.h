// What the readers report to the user: the place in a file, the severity, and a text.
//
// A reader adds a diagnostic for everything that it passes over or guesses (a note or a warning) and throws a
// BadInput for what it cannot read: nothing is analysed after that. A reader that can go on after an error
// collects its errors in an ErrorList, so that the user sees them in one run.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Base {

enum class Severity : std::uint8_t { note, warning, error };

// A place in an input. Line and column count from 1; they are 0 if the place is a whole file, or no file.
struct Place {
    std::string file;
    unsigned line = 0;
    unsigned column = 0;

    bool operator==(const Place&) const = default;
};

// A place within a file that the holder knows: 8 bytes, for tables with millions of places.
struct Position {
    std::uint32_t line = 0, column = 0; // as in a Place

    Place in(const std::string& file) const { return {file, line, column}; }
    bool operator==(const Position&) const = default;
};

struct Diagnostic {
    Severity severity = Severity::note;
    Place place;
    std::string text;

    bool operator==(const Diagnostic&) const = default;
};

// Returns "file:line:column: severity: text", without the parts that are missing. Control characters are
// escaped, except newlines of the text.
std::string toString(const Diagnostic& diagnostic);
std::string_view toString(Severity severity);

// An input that cannot be read. what() is toString(diagnostic()).
class BadInput : public std::runtime_error {
public:
    BadInput(Place place, std::string text);
    explicit BadInput(Diagnostic diagnostic);

    const Diagnostic& diagnostic() const { return diagnostic_; }

protected:
    BadInput(const std::string& lines, Diagnostic diagnostic);

private:
    Diagnostic diagnostic_;
};

// Several errors of one input. diagnostic() is the first; what() has a line for each, without a final
// newline.
class BadInputs : public BadInput {
public:
    // REQUIRES: at least one.
    explicit BadInputs(std::vector<Diagnostic> all);

    const std::vector<Diagnostic>& all() const { return all_; }

private:
    std::vector<Diagnostic> all_;
};

// Keeps the errors of an input for a reader that goes on after an error:
//
//   ErrorList errors;
//   for (...)
//       try { readStatement(); } catch (const BadInput& bad) { errors.add(bad); skipStatement(); }
//   errors.finish();
class ErrorList {
public:
    static constexpr std::size_t most = 20;

    // Keeps the error, or those of a BadInputs. When there are `most` errors it throws them all, with a note
    // that the rest of the file is not read.
    void add(const BadInput& error);
    void add(Place place, std::string text) { add(BadInput(std::move(place), std::move(text))); }
    bool empty() const { return all_.empty(); }
    // Throws BadInputs if an error was kept.
    void finish() const;

private:
    void keep(const Diagnostic& error);

    std::vector<Diagnostic> all_;
};

// The diagnostics of a run, in the order in which they were found.
class Diagnostics {
public:
    void note(Place place, std::string text);
    void warning(Place place, std::string text);
    void error(Place place, std::string text);
    void add(Diagnostic diagnostic);

    const std::vector<Diagnostic>& all() const { return all_; }
    std::size_t count(Severity severity) const;

private:
    std::vector<Diagnostic> all_;
};

} // namespace Base
