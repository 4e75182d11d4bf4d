// The interning table: open addressing with linear probing over numbers, texts in blocks that never move.
#include "base/Names.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace Base {

namespace {

constexpr std::size_t blockSize = 1 << 16;

std::uint32_t hashOf(std::string_view text) {
    const std::uint64_t hash = std::hash<std::string_view>{}(text);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

} // namespace

Names::Names() : slots_(1024) {}

std::size_t Names::slot(std::string_view text, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].number != 0 && (slots_[at].hash != hash || texts_[slots_[at].number - 1] != text))
        at = (at + 1) & mask;
    return at;
}

Name Names::add(std::string_view text) {
    const std::uint32_t hash = hashOf(text);
    std::size_t at = slot(text, hash);
    if (slots_[at].number == 0) {
        if ((texts_.size() + 1) * 2 > slots_.size()) {
            grow();
            at = slot(text, hash);
        }
        texts_.push_back(keep(text));
        slots_[at] = {static_cast<std::uint32_t>(texts_.size()), hash};
    }
    return Name{slots_[at].number - 1};
}

std::optional<Name> Names::find(std::string_view text) const {
    const std::uint32_t number = slots_[slot(text, hashOf(text))].number;
    return number == 0 ? std::nullopt : std::optional(Name{number - 1});
}

void Names::grow() {
    LargeVector<Slot> larger(slots_.size() * 2);
    const std::size_t mask = larger.size() - 1;
    for (const Slot& slot : slots_) {
        if (slot.number == 0)
            continue;
        std::size_t at = slot.hash & mask;
        while (larger[at].number != 0)
            at = (at + 1) & mask;
        larger[at] = slot;
    }
    slots_.swap(larger);
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

} // namespace Base
