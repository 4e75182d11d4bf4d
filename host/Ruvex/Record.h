// A record: the contents of an object or a value for a debugging view, as a label and an ordered list of
// slots.
//
// A record owns its slots. Records are created on demand, only in debug mode, and belong to the caller.
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
    // Appends a slot under this name and takes ownership of it. A null slot is ignored.
    void add(const std::string& name, Slot* slot);
    const std::vector<std::unique_ptr<Slot>>& getSlots() const { return slots_; }

    // Prints the label, then one line for each slot, indented by two blanks more for each level. Data records
    // are printed down to `depth` levels.
    void print(std::ostream& out, unsigned depth = 2, unsigned indentation = 0) const;

private:
    std::string label_;
    std::vector<std::unique_ptr<Slot>> slots_;
};

} // namespace Ruvex
