// The index of reduced names.
#include "readers/sdf/Spelling.h"

namespace Readers {

std::string Spelling::reduced(std::string_view name) {
    std::string text;
    text.reserve(name.size());
    for (const char character : name)
        if (character != '\\' && character != ' ')
            text += character == '.' ? '/' : character;
    return text;
}

Spelling::Spelling(const Design::RoutedDesign& design) {
    for (const Design::CellId cell : design.cells.ids()) {
        const std::string name = reduced(design.cellName(cell));
        Match& match = entryOf(name).match;
        (match.cell == Base::none ? match.cell : match.other) = cell;
        for (std::size_t slash = name.rfind('/'); slash != std::string::npos && slash != 0;
             slash = name.rfind('/', slash - 1)) {
            Entry& above = entryOf(std::string_view(name).substr(0, slash));
            if (above.isAbove)
                break; // and so are those above it
            above.isAbove = true;
        }
    }
}

Spelling::Match Spelling::find(std::string_view reducedName) const {
    const Entry* const found = entry(reducedName);
    return found ? found->match : Match();
}

bool Spelling::isAbove(std::string_view reducedName) const {
    const Entry* const found = entry(reducedName);
    return found && found->isAbove;
}

Spelling::Entry& Spelling::entryOf(std::string_view reducedName) {
    const auto number = static_cast<std::size_t>(names_.add(reducedName));
    if (number >= entries_.size())
        entries_.resize(number + 1);
    return entries_[number];
}

const Spelling::Entry* Spelling::entry(std::string_view reducedName) const {
    const std::optional<Base::Name> name = names_.find(reducedName);
    return name ? &entries_[static_cast<std::size_t>(*name)] : nullptr;
}

} // namespace Readers
