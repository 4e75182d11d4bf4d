// Records the messages of Ruvex::console, which prints nothing meanwhile.
//
//   Support::Recorder recorder;
//   tool->launch();
//   EXPECT_EQ(recorder.getLines(), (Support::Lines{"Analyzing project ...", "  warning: text"}));
//
// A line reads as the console would write it: two blanks a level of indentation, the level's word, the label
// in brackets where there is one, the text. Recorders nest: the innermost one hears the messages. When one
// goes, the console has the indentation that it found, and writes to the outer recorder, or to standard error
// again; timers that are still open stay so.
#pragma once

#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace Support {

using Lines = std::vector<std::string>;

// The text with this in the place of every elapsed time ("1.234 s").
inline std::string replaceTimes(const std::string& text, const std::string& by) {
    const auto isDigit = [&text](std::size_t i) {
        return std::isdigit(static_cast<unsigned char>(text[i])) != 0;
    };
    std::string replaced;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t dot = i;
        while (dot < text.size() && isDigit(dot))
            ++dot;
        const bool isTime =
            dot > i && dot + 6 <= text.size() && text[dot] == '.' && isDigit(dot + 1) && isDigit(dot + 2) &&
            isDigit(dot + 3) && text.compare(dot + 4, 2, " s") == 0 &&
            (dot + 6 == text.size() || std::isalnum(static_cast<unsigned char>(text[dot + 6])) == 0);
        const std::size_t end = isTime ? dot + 6 : std::max(dot, i + 1);
        replaced += isTime ? by : text.substr(i, end - i);
        i = end;
    }
    return replaced;
}

class Recorder {
public:
    using Message = Ruvex::Console::Message;
    using Level = Ruvex::Console::Level;

    Recorder() : outer_(innermost()), indentation_(Ruvex::console.getIndentation()) {
        innermost() = this;
        attach();
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() {
        Ruvex::console.setIndentation(indentation_);
        innermost() = outer_;
        if (outer_) {
            outer_->attach();
            return;
        }
        Ruvex::console.setRecorder({});
        Ruvex::console.setErrorOutput();
    }

    const std::vector<Message>& getMessages() const { return messages_; }
    bool isEmpty() const { return messages_.empty(); }
    void clear() { messages_.clear(); }

    Lines getLines() const {
        Lines lines;
        for (const Message& message : messages_)
            lines.push_back(lineOf(message));
        return lines;
    }
    // The lines of one level.
    Lines getLines(Level level) const {
        Lines lines;
        for (const Message& message : messages_)
            if (message.level == level)
                lines.push_back(lineOf(message));
        return lines;
    }
    // With "%" in the place of every elapsed time.
    Lines getTimelessLines() const {
        Lines lines = getLines();
        for (std::string& line : lines)
            line = replaceTimes(line, "%");
        return lines;
    }

    static std::string lineOf(const Message& message) {
        static const char* const words[] = {"", "remark", "warning", "error"};
        const std::string word = words[static_cast<std::size_t>(message.level)];
        const std::string label = message.label.empty() ? "" : "[" + message.label + "]";
        std::string head = word;
        if (!label.empty())
            head += (word.empty() ? "" : " ") + label;
        if (!word.empty())
            head += ":";
        if (!head.empty())
            head += " ";
        return std::string(2 * static_cast<std::size_t>(message.indentation), ' ') + head + message.text;
    }

private:
    static Recorder*& innermost() {
        static Recorder* recorder = nullptr;
        return recorder;
    }

    void attach() {
        Ruvex::console.setOutput(nullptr);
        Ruvex::console.setRecorder([this](const Message& message) { messages_.push_back(message); });
    }

    Recorder* outer_;
    unsigned indentation_;
    std::vector<Message> messages_;
};

// Switches debug mode, and back at the end.
class DebugMode {
public:
    explicit DebugMode(bool on) : before_(Ruvex::isDebug()) { Ruvex::setDebug(on); }
    DebugMode(const DebugMode&) = delete;
    DebugMode& operator=(const DebugMode&) = delete;
    ~DebugMode() { Ruvex::setDebug(before_); }

private:
    bool before_;
};

} // namespace Support
