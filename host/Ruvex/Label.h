// Labels: the names of objects, values and containers in a debugging view.
#pragma once

#include "Ruvex/Export.h"

#include <concepts>
#include <string>

namespace Ruvex {

// A label as an object.
class RUVEX_API Label {
public:
    static Label create(const std::string& text) { return Label(text); }

    const std::string& getText() const { return text_; }

private:
    explicit Label(const std::string& text) : text_(text) {}

    std::string text_;
};

// The decimal text of a count.
RUVEX_API std::string getLabel(const unsigned long& count);

// "{empty}", "{1 element}" or "{n elements}"; in debug mode after "map:".
RUVEX_API std::string getMapLabel(unsigned long count);

template <class T>
concept Labelled = requires(const T& value) {
    { value._getLabel() } -> std::convertible_to<std::string>;
};

template <Labelled T>
std::string getLabel(const T& value) {
    return value._getLabel();
}

template <Labelled T>
std::string getLabel(const T* object) {
    return object ? object->_getLabel() : "null";
}

// A container of keys and values whose iterator refers to pairs.
template <class T>
concept MapLike = requires(const T& map) {
    typename T::key_type;
    typename T::mapped_type;
    map.begin()->second;
    { map.size() } -> std::convertible_to<unsigned long>;
};

template <MapLike T>
std::string getLabel(const T& map) {
    return getMapLabel(map.size());
}

} // namespace Ruvex
