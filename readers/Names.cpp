// The interning table: open addressing with linear probing over numbers, texts in blocks that never move.
#include "Names.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace Readers {

namespace {

constexpr std::size_t blockSize = 1 << 16;

std::uint64_t hashOf(std::string_view text) { return std::hash<std::string_view>{}(text); }

} // namespace

Names::Names() : slots_(1024) {}

std::size_t Names::slot(std::string_view text, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at] != 0 && texts_[slots_[at] - 1] != text)
        at = (at + 1) & mask;
    return at;
}

Name Names::add(std::string_view text) {
    std::size_t at = slot(text, hashOf(text));
    if (slots_[at] == 0) {
        if ((texts_.size() + 1) * 2 > slots_.size()) {
            grow();
            at = slot(text, hashOf(text));
        }
        texts_.push_back(keep(text));
        slots_[at] = static_cast<std::uint32_t>(texts_.size());
    }
    return Name{slots_[at] - 1};
}

std::optional<Name> Names::find(std::string_view text) const {
    const std::uint32_t number = slots_[slot(text, hashOf(text))];
    return number == 0 ? std::nullopt : std::optional(Name{number - 1});
}

void Names::grow() {
    slots_.assign(slots_.size() * 2, 0);
    for (std::size_t number = 0; number < texts_.size(); ++number)
        slots_[slot(texts_[number], hashOf(texts_[number]))] = static_cast<std::uint32_t>(number + 1);
}

std::string_view Names::keep(std::string_view text) {
    if (text.size() > left_) {
        left_ = std::max(blockSize, text.size());
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(left_));
        next_ = blocks_.back().get();
    }
    if (!text.empty())
        std::memcpy(next_, text.data(), text.size());
    const std::string_view kept(next_, text.size());
    next_ += text.size();
    left_ -= text.size();
    return kept;
}

} // namespace Readers
