#include "Ruvex/Record.h"

#include <ostream>

namespace Ruvex {

void Record::addHeader(const std::string& text) {
    slots_.push_back(std::make_unique<HeaderSlot>(text));
    slots_.back()->setOwner(this);
}

void Record::add(const std::string& name, Slot* slot) {
    if (!slot)
        return;
    std::unique_ptr<Slot> owned(slot);
    owned->setName(name);
    owned->setOwner(this);
    slots_.push_back(std::move(owned));
}

void Record::print(std::ostream& out, unsigned depth, unsigned indentation) const {
    const std::string margin(2 * static_cast<std::size_t>(indentation), ' ');
    out << margin << label_ << '\n';
    for (const auto& slot : slots_) {
        if (slot->isHeader()) {
            out << margin << "  [" << slot->getName() << "]\n";
            continue;
        }
        out << margin << "  " << slot->_getLabel() << '\n';
        if (depth == 0 || slot->isTerminal())
            continue;
        if (const std::unique_ptr<Record> data{slot->getDataRecord()})
            data->print(out, depth - 1, indentation + 2);
    }
}

} // namespace Ruvex
