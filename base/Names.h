// Interned names: each different text is stored once, and a number stands for it.
#pragma once

#include "base/LargeTables.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace Base {

enum class Name : std::uint32_t {};

class Names {
public:
    Names();

    // Returns the number of the text, which is added if it is new.
    Name add(std::string_view text);
    std::optional<Name> find(std::string_view text) const;
    // The view is valid as long as the Names exist.
    std::string_view operator[](Name name) const { return texts_[static_cast<std::size_t>(name)]; }
    std::size_t size() const { return texts_.size(); }

private:
    // The hash is stored here, so that most comparisons need not read the text, which is elsewhere.
    struct Slot {
        std::uint32_t number = 0; // of the text, plus 1; 0 if the slot is free
        std::uint32_t hash = 0;
    };

    std::size_t slot(std::string_view text, std::uint32_t hash) const;
    void grow();
    std::string_view keep(std::string_view text);

    LargeVector<std::string_view> texts_;
    LargeVector<Slot> slots_; // their count is a power of two
    std::vector<std::unique_ptr<char[]>> blocks_;
    std::size_t left_ = 0;
    char* next_ = nullptr;
};

} // namespace Base
