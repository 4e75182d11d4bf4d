// The base of value classes (delays, masks, clock modes, timings): they can be copied, and shown in a
// debugging view.
//
// The order of the virtual operations is part of the interface: destructor, label, slot, record, has-record.
#pragma once

#include "Ruvex/Export.h"

#include <string>

namespace Ruvex {

class Record;
class Slot;

class RUVEX_API Stuff {
public:
    Stuff() = default;
    Stuff(const Stuff&) = default;
    Stuff& operator=(const Stuff&) = default;
    virtual ~Stuff() = default;

    // The value as a text.
    virtual std::string _getLabel() const = 0;
    // A new slot that shows this value, or null. The caller owns it.
    virtual Slot* _getSlot() const;
    // A new record with the parts of the value, or null if `_hasRecord()` is false. The caller owns it.
    virtual Record* _getRecord() const;
    virtual bool _hasRecord() const;
};

} // namespace Ruvex
