// The Tcl type of a handle, and lists of handles.
#include "readers/sdc/Objects.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace Readers::Sdc {

namespace {

constexpr std::array<std::string_view, 5> kinds = {"port", "pin", "cell", "net", "clock"};

std::uintptr_t packed(Design::Object object) {
    return (static_cast<std::uintptr_t>(object.index) << 3) | static_cast<std::uintptr_t>(object.kind);
}

Design::Object unpacked(const Tcl_Obj* value) {
    const auto bits = reinterpret_cast<std::uintptr_t>(value->internalRep.otherValuePtr);
    return {static_cast<Design::ObjectKind>(bits & 7), static_cast<std::uint32_t>(bits >> 3)};
}

// Called by Tcl: nothing may be thrown.
void writeText(Tcl_Obj* value) {
    const Design::Object object = unpacked(value);
    std::array<char, 32> text{};
    const int size =
        std::snprintf(text.data(), text.size(), "@%s:%u", kindName(object.kind).data(), object.index);
    value->bytes = Tcl_Alloc(static_cast<unsigned>(size + 1));
    std::memcpy(value->bytes, text.data(), static_cast<std::size_t>(size + 1));
    value->length = size;
}

void copyHandle(Tcl_Obj* from, Tcl_Obj* to) {
    to->internalRep = from->internalRep;
    to->typePtr = from->typePtr;
}

const Tcl_ObjType handleType = {"sdc object", nullptr, copyHandle, writeText, nullptr};

const Tcl_ObjType* listType() {
    static const Tcl_ObjType* const type = Tcl_GetObjType("list");
    return type;
}

std::optional<Design::Object> parseHandle(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (!text.starts_with('@') || colon == std::string_view::npos)
        return std::nullopt;
    const std::string_view kind = text.substr(1, colon - 1), number = text.substr(colon + 1);
    std::uint32_t index = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), index);
    if (error != std::errc() || end != number.data() + number.size())
        return std::nullopt;
    for (std::size_t i = 0; i < kinds.size(); ++i)
        if (kinds[i] == kind)
            return Design::Object{static_cast<Design::ObjectKind>(i), index};
    return std::nullopt;
}

} // namespace

std::string_view kindName(Design::ObjectKind kind) { return kinds[static_cast<std::size_t>(kind)]; }

Tcl_Obj* newHandle(Design::Object object) {
    Tcl_Obj* const value = Tcl_NewObj();
    Tcl_InvalidateStringRep(value);
    value->internalRep.otherValuePtr = reinterpret_cast<void*>(packed(object));
    value->typePtr = &handleType;
    return value;
}

Tcl_Obj* newCollection(const std::vector<Design::Object>& objects) {
    std::vector<Tcl_Obj*> handles;
    handles.reserve(objects.size());
    for (const Design::Object& object : objects)
        handles.push_back(newHandle(object));
    return Tcl_NewListObj(static_cast<int>(handles.size()), handles.data());
}

std::optional<Design::Object> toObject(Tcl_Obj* value) {
    if (value->typePtr == &handleType)
        return unpacked(value);
    int length = 0;
    const char* const text = Tcl_GetStringFromObj(value, &length);
    return parseHandle({text, static_cast<std::size_t>(length)});
}

bool isCollection(Tcl_Obj* value) {
    if (value->typePtr != listType())
        return false;
    Tcl_Obj* first = nullptr;
    Tcl_ListObjIndex(nullptr, value, 0, &first);
    return first != nullptr && first->typePtr == &handleType;
}

bool holdsHandles(Tcl_Obj* value) { return value->typePtr == &handleType || isCollection(value); }

std::vector<Tcl_Obj*> elementsOf(Tcl_Obj* value) {
    if (value->typePtr == &handleType)
        return {value};
    if (value->typePtr != listType()) {
        const std::string_view text = Tcl_GetString(value);
        const bool word = text.find_first_of(" \t\n\r") == std::string_view::npos && !text.starts_with('{');
        if (word && !text.empty())
            return {value};
    }
    int count = 0;
    Tcl_Obj** elements = nullptr;
    if (Tcl_ListObjGetElements(nullptr, value, &count, &elements) != TCL_OK)
        return {value};
    return {elements, elements + count};
}

} // namespace Readers::Sdc
