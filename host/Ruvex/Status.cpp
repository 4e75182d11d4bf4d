#include "Ruvex/Status.h"

namespace Ruvex {

Status::~Status() = default;

std::string Status::_getLabel() const {
    switch (code_) {
    case Ready:
        return "ready";
    case Running:
        return "not completed";
    case Completed:
        return "completed";
    case Unknown:
        break;
    }
    return "unknown";
}

} // namespace Ruvex
