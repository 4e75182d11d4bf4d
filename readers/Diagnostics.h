// What the readers tell the user: where in which file, how bad, and what.
//
// A reader adds a diagnostic for everything that it passes over or guesses (a note or a warning) and throws a
// BadInput for what it cannot read: nothing is analysed after that.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Readers {

enum class Severity : std::uint8_t { note, warning, error };

// A place in an input. Line and column count from 1; 0 where there is none (a whole file, no file).
struct Place {
    std::string file;
    unsigned line = 0;
    unsigned column = 0;

    bool operator==(const Place&) const = default;
};

struct Diagnostic {
    Severity severity = Severity::note;
    Place place;
    std::string text;

    bool operator==(const Diagnostic&) const = default;
};

// "file:line:column: severity: text", without the parts that are not there.
std::string toString(const Diagnostic& diagnostic);
std::string_view toString(Severity severity);

// An input that cannot be read. what() is toString(diagnostic()).
class BadInput : public std::runtime_error {
public:
    BadInput(Place place, std::string text);
    explicit BadInput(Diagnostic diagnostic);

    const Diagnostic& diagnostic() const { return diagnostic_; }

private:
    Diagnostic diagnostic_;
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

} // namespace Readers
