// Interned names: each different text is kept once and is known by a number.
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

    // The number of the text, new or known.
    Name add(std::string_view text);
    std::optional<Name> find(std::string_view text) const;
    // Valid as long as the Names live.
    std::string_view operator[](Name name) const { return texts_[static_cast<std::size_t>(name)]; }
    std::size_t size() const { return texts_.size(); }

private:
    // A text's place in the table. Its hash comes before the text, which lies elsewhere.
    struct Slot {
        std::uint32_t number = 0; // and 1 more; 0: free
        std::uint32_t hash = 0;
    };

    std::size_t slot(std::string_view text, std::uint32_t hash) const;
    void grow();
    std::string_view keep(std::string_view text);

    LargeVector<std::string_view> texts_;
    LargeVector<Slot> slots_; // a power of two of them
    std::vector<std::unique_ptr<char[]>> blocks_;
    std::size_t left_ = 0;
    char* next_ = nullptr;
};

} // namespace Base
