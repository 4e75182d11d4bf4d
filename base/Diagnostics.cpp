// The texts of diagnostics.
#include "base/Diagnostics.h"

#include "base/Characters.h"

#include <algorithm>
#include <utility>

namespace Base {

std::string_view toString(Severity severity) {
    switch (severity) {
    case Severity::note:
        return "note";
    case Severity::warning:
        return "warning";
    case Severity::error:
        break;
    }
    return "error";
}

std::string toString(const Diagnostic& diagnostic) {
    std::string text;
    const Place& place = diagnostic.place;
    if (!place.file.empty()) {
        text += printable(place.file) + ":";
        if (place.line != 0)
            text += std::to_string(place.line) + ":";
        if (place.line != 0 && place.column != 0)
            text += std::to_string(place.column) + ":";
        text += " ";
    }
    text += toString(diagnostic.severity);
    return text + ": " + printableLines(diagnostic.text);
}

BadInput::BadInput(Place place, std::string text)
    : BadInput(Diagnostic{Severity::error, std::move(place), std::move(text)}) {}

BadInput::BadInput(Diagnostic diagnostic)
    : std::runtime_error(toString(diagnostic)), diagnostic_(std::move(diagnostic)) {}

BadInput::BadInput(const std::string& lines, Diagnostic diagnostic)
    : std::runtime_error(lines), diagnostic_(std::move(diagnostic)) {}

// --- Several errors ---

namespace {

std::string linesOf(const std::vector<Diagnostic>& all) {
    std::string lines;
    for (const Diagnostic& each : all)
        lines += (lines.empty() ? "" : "\n") + toString(each);
    return lines;
}

} // namespace

BadInputs::BadInputs(std::vector<Diagnostic> all) : BadInput(linesOf(all), all.at(0)), all_(std::move(all)) {}

void ErrorList::add(const BadInput& error) {
    if (const auto* several = dynamic_cast<const BadInputs*>(&error))
        for (const Diagnostic& each : several->all())
            keep(each);
    else
        keep(error.diagnostic());
}

void ErrorList::keep(const Diagnostic& error) {
    all_.push_back(error);
    if (all_.size() < most)
        return;
    Diagnostic& rest = all_.emplace_back();
    rest.place.file = error.place.file;
    rest.text = std::to_string(most) + " errors: the rest of the file is not read";
    finish();
}

void ErrorList::finish() const {
    if (!all_.empty())
        throw BadInputs(all_);
}

// --- The diagnostics of a run ---

void Diagnostics::note(Place place, std::string text) {
    add({Severity::note, std::move(place), std::move(text)});
}

void Diagnostics::warning(Place place, std::string text) {
    add({Severity::warning, std::move(place), std::move(text)});
}

void Diagnostics::error(Place place, std::string text) {
    add({Severity::error, std::move(place), std::move(text)});
}

void Diagnostics::add(Diagnostic diagnostic) { all_.push_back(std::move(diagnostic)); }

std::size_t Diagnostics::count(Severity severity) const {
    return static_cast<std::size_t>(std::ranges::count(all_, severity, &Diagnostic::severity));
}

} // namespace Base
