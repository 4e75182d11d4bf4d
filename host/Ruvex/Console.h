// The console: prints messages of the engine and the host for the user.
//
// Each call prints one message on a line of its own: the indentation (two blanks for each level), the word
// for the level, the label in brackets if it is not empty, and the text. `print` has no word:
//
//   Analyzing project with VORLEN-4.0 [exhaustive mode]
//     warning: 1 combinatorial loop detected during clock paths analysis.
//
// Messages go to standard error, unless another output is set. The words are coloured only on a terminal. A
// recorder receives every message as a structure before it is written, also if there is no output.
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

    // A message as a recorder receives it.
    struct Message {
        Level level;
        std::string text;
        std::string label;
        unsigned indentation;

        bool operator==(const Message&) const = default;
    };
    using Recorder = std::function<void(const Message&)>;

    // Print a message of one line. An empty label is not printed.
    void print(const std::string& text, const std::string& label);
    void remark(const std::string& text, const std::string& label);
    void warning(const std::string& text, const std::string& label);
    void error(const std::string& text, const std::string& label);
    // The message of the exception, followed by its place if that is known.
    void error(const Exception& exception);

    // Indents the messages that follow by one level more.
    void indent() { ++indentation_; }
    // One level less; does nothing at level 0.
    void unindent();
    unsigned getIndentation() const { return indentation_; }
    void setIndentation(unsigned indentation) { indentation_ = indentation; }

    // Starts a timer. Timers nest.
    void openTimer();
    // Stops the timer that was started last, and prints the text. Its first "%" is replaced by the elapsed
    // time, such as "1.234 s", or by "an unknown time" if no timer runs.
    void closeTimer(const std::string& text);

    // Writes messages to this stream, which must outlive its use; null writes none.
    void setOutput(std::ostream* output);
    // Writes messages to standard error, as at start.
    void setErrorOutput();
    // Whether words are coloured. Default: Automatic, which colours them on a terminal.
    void setColor(Color color) { color_ = color; }
    // Calls this recorder with every message; an empty one removes the recorder.
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
