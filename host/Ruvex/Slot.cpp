#include "Ruvex/Slot.h"

namespace Ruvex {

Slot::~Slot() = default;

bool Slot::isHeader() const { return false; }

std::string Slot::getDataLabel() const { return {}; }

Record* Slot::getDataRecord() const { return nullptr; }

bool Slot::isTerminal() const { return true; }

std::string Slot::_getLabel() const {
    const std::string data = getDataLabel();
    if (name_.empty())
        return data;
    return data.empty() ? name_ : name_ + ": " + data;
}

NullSlot::~NullSlot() = default;

HeaderSlot::~HeaderSlot() = default;

bool HeaderSlot::isHeader() const { return true; }

} // namespace Ruvex
