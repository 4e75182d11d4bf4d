// Changes of the texts that tests/brute writes: one entry or command per line, times of constraints with
// three digits, values of delays as (1:2:3).
#pragma once

#include "Random.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Metamorphic {

std::vector<std::string> lines(const std::string& text);
std::string joined(const std::vector<std::string>& lines, const std::string& end = "\n");

template <class T>
void shuffle(std::vector<T>& list, Brute::Random& random) {
    for (std::size_t i = list.size(); i > 1; --i)
        std::swap(list[i - 1], list[static_cast<std::size_t>(random.between(0, static_cast<int>(i) - 1))]);
}

// A line of an SDF file with values: "(IOPATH A Z (1:2:3) (4:5:6))".
struct Entry {
    std::string head; // "        (IOPATH A Z "
    std::vector<std::array<int, 3>> values;

    bool is(const char* keyword) const {
        return head.find(std::string("(") + keyword + " ") != std::string::npos;
    }
    std::string text() const; // the line without its newline
    // The word number `which` of the head, for example "A"; the keyword is number 0.
    std::string word(int which) const;
    void setWord(int which, const std::string& word);
};
std::optional<Entry> entry(const std::string& line);
std::string triple(const std::array<int, 3>& values);

// Replaces each entry of an SDF file by what the function makes of it. Other lines are unchanged.
std::string eachEntry(const std::string& sdf, const std::function<std::string(const Entry&)>& with);
// Replaces each triple of an SDF file, including its parentheses.
std::string eachTriple(const std::string& sdf,
                       const std::function<std::string(const std::array<int, 3>&)>& with);
// Replaces each time of a constraint file. The function gets picoseconds.
std::string eachTime(const std::string& sdc, const std::function<std::string(long)>& with);

std::string replaced(std::string text, const std::string& what, const std::string& by); // all occurrences
// value / 10^digits, exactly: decimal(1250, 3) is "1.250".
std::string decimal(long value, int digits);

} // namespace Metamorphic
