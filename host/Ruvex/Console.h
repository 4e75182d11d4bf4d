// The console: where the library and the host tell the user something.
//
// One message a call, on a line of its own: the indentation (two blanks a level), the level's word, the label
// in brackets where there is one, the text. `print` has no word:
//
//   Analyzing project with VORLEN-4.0 [exhaustive mode]
//     warning: 1 combinatorial loop detected during clock paths analysis.
//
// Messages go to standard error until told otherwise; the words are coloured on a terminal only. A recorder
// sees every message as a structure, before it is written, whatever the output.
#pragma once

#include "Ruvex/Export.h"

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace Ruvex {

class Exception;

class RUVEX_API Console {
public:
    enum class Level { Print, Remark, Warning, Error };
    enum class Color { Automatic, Always, Never };

    struct Message {
        Level level;
        std::string text;
        std::string label;
        unsigned indentation;

        bool operator==(const Message&) const = default;
    };
    using Recorder = std::function<void(const Message&)>;

    void print(const std::string& text, const std::string& label);
    void remark(const std::string& text, const std::string& label);
    void warning(const std::string& text, const std::string& label);
    void error(const std::string& text, const std::string& label);
    // The exception's message, and its place where it is known.
    void error(const Exception& exception);

    void indent() { ++indentation_; }
    // At no indentation it stays there.
    void unindent();
    unsigned getIndentation() const { return indentation_; }
    void setIndentation(unsigned indentation) { indentation_ = indentation; }

    // Timers nest: a close ends the timer opened last, and prints the text with its first "%" replaced by the
    // elapsed time
    // ("1.234 s"; "an unknown time" where no timer is open).
    void openTimer();
    void closeTimer(const std::string& text);

    // Null: no output at all. The stream must outlive its use.
    void setOutput(std::ostream* output);
    void setErrorOutput();
    void setColor(Color color) { color_ = color; }
    // An empty recorder: none.
    void setRecorder(Recorder recorder) { recorder_ = std::move(recorder); }

private:
    using Clock = std::chrono::steady_clock;

    void write(Level level, const std::string& text, const std::string& label);
    bool isColored() const;

    unsigned indentation_ = 0;
    std::vector<Clock::time_point> timers_;
    bool toStandardError_ = true;
    std::ostream* output_ = nullptr;
    Color color_ = Color::Automatic;
    Recorder recorder_;
};

extern RUVEX_API Console console;

} // namespace Ruvex
