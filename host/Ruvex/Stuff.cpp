#include "Ruvex/Stuff.h"

namespace Ruvex {

Slot* Stuff::_getSlot() const { return nullptr; }

Record* Stuff::_getRecord() const { return nullptr; }

bool Stuff::_hasRecord() const { return false; }

} // namespace Ruvex
