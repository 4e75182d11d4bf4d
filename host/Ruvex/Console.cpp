#include "Ruvex/Console.h"

#include "Ruvex/Exception.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace Ruvex {

Console console;

namespace {

struct LevelStyle {
    const char* word;
    const char* color;
};

// The words, by Console::Level.
constexpr std::array<LevelStyle, 4> styles{{
    {"", ""},
    {"remark", "\033[36m"},
    {"warning", "\033[33m"},
    {"error", "\033[31m"},
}};

} // namespace

void Console::print(const std::string& text, const std::string& label) { write(Level::Print, text, label); }

void Console::remark(const std::string& text, const std::string& label) { write(Level::Remark, text, label); }

void Console::warning(const std::string& text, const std::string& label) {
    write(Level::Warning, text, label);
}

void Console::error(const std::string& text, const std::string& label) { write(Level::Error, text, label); }

void Console::error(const Exception& exception) { error(exception._getLabel(), ""); }

void Console::unindent() {
    if (indentation_ > 0)
        --indentation_;
}

void Console::openTimer() { timers_.push_back(Clock::now()); }

void Console::closeTimer(const std::string& text) {
    std::string elapsed = "an unknown time";
    if (!timers_.empty()) {
        std::array<char, 40> buffer{};
        const std::chrono::duration<double> seconds = Clock::now() - timers_.back();
        std::snprintf(buffer.data(), buffer.size(), "%.3f s", seconds.count());
        elapsed = buffer.data();
        timers_.pop_back();
    }
    std::string shown = text;
    if (const std::size_t place = shown.find('%'); place != std::string::npos)
        shown.replace(place, 1, elapsed);
    print(shown, "");
}

void Console::setOutput(std::ostream* output) {
    toStandardError_ = false;
    output_ = output;
}

void Console::setErrorOutput() {
    toStandardError_ = true;
    output_ = nullptr;
}

bool Console::isColored() const {
    if (color_ != Color::Automatic)
        return color_ == Color::Always;
    return toStandardError_ && isatty(STDERR_FILENO) == 1;
}

void Console::write(Level level, const std::string& text, const std::string& label) {
    if (recorder_)
        recorder_({level, text, label, indentation_});
    std::ostream* out = toStandardError_ ? &std::cerr : output_;
    if (!out)
        return;
    std::string line(2 * static_cast<std::size_t>(indentation_), ' ');
    const LevelStyle& style = styles[static_cast<std::size_t>(level)];
    if (*style.word) {
        line += isColored() ? style.color + std::string(style.word) + "\033[0m" : style.word;
        line += label.empty() ? ": " : " [" + label + "]: ";
    } else if (!label.empty()) {
        line += "[" + label + "] ";
    }
    *out << line << text << '\n' << std::flush;
}

} // namespace Ruvex
