// The note on rounded values.
#include "base/Rounding.h"

#include <algorithm>
#include <iterator>

namespace Base {

namespace {

// What --resolution takes.
constexpr struct {
    int scale;
    const char* name;
} resolutions[] = {{-12, "1ps"}, {-13, "100fs"}, {-14, "10fs"}, {-15, "1fs"}};

const char* nameOf(int scale) {
    const auto* const found =
        std::ranges::find_if(resolutions, [&](const auto& resolution) { return resolution.scale <= scale; });
    return found == std::end(resolutions) ? nullptr : found->name;
}

} // namespace

void Rounding::report(int scale, Diagnostics& diagnostics) const {
    if (count_ == 0)
        return;
    const char* const unit = nameOf(scale);
    const char* const fine = nameOf(finest_);
    const bool one = count_ == 1;
    std::string text = std::to_string(count_) + (one ? " value is" : " values are") + " rounded to " +
                       (unit ? unit : "the unit");
    if (fine)
        text += "; --resolution " + std::string(fine) + (one ? " keeps it" : " keeps them all");
    else
        text += std::string("; no --resolution keeps ") + (one ? "it" : "them all") + ", the finest is 1fs";
    diagnostics.note(first_, std::move(text));
}

} // namespace Base
