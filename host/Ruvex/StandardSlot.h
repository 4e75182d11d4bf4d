// A slot that holds a copy of a value, and the records of maps, which have one slot for each entry, named by
// its key.
#pragma once

#include "Ruvex/Record.h"
#include "Ruvex/Utility.h"

namespace Ruvex {

inline bool hasRecord(const unsigned long&) { return false; }

inline Record* getRecord(const unsigned long&) { return nullptr; }

template <Labelled T>
bool hasRecord(const T& value) {
    return value._hasRecord();
}

template <Labelled T>
Record* getRecord(const T& value) {
    return value._getRecord();
}

template <MapLike T>
bool hasRecord(const T& map) {
    return isDebug() && !map.empty();
}

template <MapLike T>
Record* getRecord(const T& map);

template <class T>
class StandardSlot : public Slot {
public:
    explicit StandardSlot(const T& value) : value_(value) {}

    const T& getValue() const { return value_; }
    std::string getDataLabel() const override { return getLabel(value_); }
    Record* getDataRecord() const override { return getRecord(value_); }
    bool isTerminal() const override { return !hasRecord(value_); }

private:
    T value_;
};

template <MapLike T>
Record* getRecord(const T& map) {
    if (!hasRecord(map))
        return nullptr;
    auto record = std::make_unique<Record>(getLabel(map));
    for (const auto& [key, value] : map)
        record->add(getLabel(key), new StandardSlot<typename T::mapped_type>(value));
    return record.release();
}

} // namespace Ruvex
