// A record: what a debugging view shows of an object or a value, as a label and an ordered list of slots.
//
// A record owns its slots. Records are made on demand, in debug mode only, and belong to whoever asked for
// them.
#pragma once

#include "Ruvex/Slot.h"

#include <iosfwd>
#include <memory>
#include <vector>

namespace Ruvex {

class RUVEX_API Record {
public:
    explicit Record(const std::string& label) : label_(label) {}
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    const std::string& _getLabel() const { return label_; }
    // Starts a titled group of slots.
    void addHeader(const std::string& text);
    // Takes a slot over, under this name. A null slot is passed over.
    void add(const std::string& name, Slot* slot);
    const std::vector<std::unique_ptr<Slot>>& getSlots() const { return slots_; }

    // Prints the label, then a line a slot, two blanks deeper a level; data records open down to `depth`
    // levels.
    void print(std::ostream& out, unsigned depth = 2, unsigned indentation = 0) const;

private:
    std::string label_;
    std::vector<std::unique_ptr<Slot>> slots_;
};

} // namespace Ruvex
