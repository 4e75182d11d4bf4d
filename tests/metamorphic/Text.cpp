#include "Text.h"

#include <cctype>
#include <cstdlib>
#include <sstream>

namespace Metamorphic {

namespace {

bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)); }

// Parses "(1:2:3)" at a place, and moves the place behind it.
std::optional<std::array<int, 3>> tripleAt(const std::string& text, std::size_t& place) {
    if (place >= text.size() || text[place] != '(')
        return {};
    std::array<int, 3> values{};
    std::size_t at = place + 1;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (at >= text.size() || !(isDigit(text[at]) || text[at] == '-'))
            return {};
        char* end = nullptr;
        values[i] = static_cast<int>(std::strtol(text.c_str() + at, &end, 10));
        at = static_cast<std::size_t>(end - text.c_str());
        if (at >= text.size() || text[at] != (i + 1 < values.size() ? ':' : ')'))
            return {};
        ++at;
    }
    place = at;
    return values;
}

// Words are separated by blanks outside of parentheses.
std::pair<std::size_t, std::size_t> wordPlace(const std::string& head, int which) {
    std::size_t begin = head.find('(') + 1;
    for (;; --which) {
        std::size_t end = begin;
        for (int depth = 0; end < head.size() && (head[end] != ' ' || depth > 0); ++end)
            depth += head[end] == '(' ? 1 : head[end] == ')' ? -1 : 0;
        if (which == 0)
            return {begin, end};
        begin = end + 1;
    }
}

} // namespace

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> list;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        list.push_back(line);
    return list;
}

std::string joined(const std::vector<std::string>& list, const std::string& end) {
    std::string text;
    for (const std::string& line : list)
        text += line + end;
    return text;
}

std::string triple(const std::array<int, 3>& v) {
    return "(" + std::to_string(v[0]) + ":" + std::to_string(v[1]) + ":" + std::to_string(v[2]) + ")";
}

std::string Entry::text() const {
    std::string line = head;
    for (std::size_t i = 0; i < values.size(); ++i)
        line += (i == 0 ? "" : " ") + triple(values[i]);
    return line + ")";
}

std::string Entry::word(int which) const {
    const auto [begin, end] = wordPlace(head, which);
    return head.substr(begin, end - begin);
}

void Entry::setWord(int which, const std::string& word) {
    const auto [begin, end] = wordPlace(head, which);
    head.replace(begin, end - begin, word);
}

std::optional<Entry> entry(const std::string& line) {
    Entry result;
    for (std::size_t at = 0; at < line.size();) {
        if (const std::optional<std::array<int, 3>> values = tripleAt(line, at)) {
            if (result.values.empty())
                result.head = line.substr(0, line.find(triple(*values)));
            result.values.push_back(*values);
        } else {
            ++at;
        }
    }
    if (result.values.empty())
        return {};
    return result;
}

std::string eachEntry(const std::string& sdf, const std::function<std::string(const Entry&)>& with) {
    std::string text;
    for (const std::string& line : lines(sdf)) {
        const std::optional<Entry> found = entry(line);
        text += (found ? with(*found) : line) + "\n";
    }
    return text;
}

std::string eachTriple(const std::string& sdf,
                       const std::function<std::string(const std::array<int, 3>&)>& with) {
    std::string text;
    for (std::size_t at = 0; at < sdf.size();)
        if (const std::optional<std::array<int, 3>> values = tripleAt(sdf, at))
            text += with(*values);
        else
            text += sdf[at++];
    return text;
}

std::string eachTime(const std::string& sdc, const std::function<std::string(long)>& with) {
    constexpr std::size_t digits = 3;
    std::string text;
    for (std::size_t at = 0; at < sdc.size();) {
        const bool begins = at == 0 || sdc[at - 1] == ' ' || sdc[at - 1] == '{';
        std::size_t end = at + (sdc[at] == '-' ? 1 : 0);
        const std::size_t whole = end;
        while (end < sdc.size() && isDigit(sdc[end]))
            ++end;
        if (!begins || end == whole || end + digits >= sdc.size() || sdc[end] != '.') {
            text += sdc[at++];
            continue;
        }
        const std::string number = sdc.substr(at, end - at) + sdc.substr(end + 1, digits);
        text += with(std::strtol(number.c_str(), nullptr, 10));
        at = end + 1 + digits;
    }
    return text;
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
    return text;
}

std::string decimal(long value, int digits) {
    std::string text = std::to_string(std::labs(value));
    const std::size_t after = static_cast<std::size_t>(digits);
    if (text.size() <= after)
        text.insert(0, after + 1 - text.size(), '0');
    if (digits > 0)
        text.insert(text.size() - after, ".");
    return (value < 0 ? "-" : "") + text;
}

} // namespace Metamorphic
