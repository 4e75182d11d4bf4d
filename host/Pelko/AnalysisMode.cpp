#include "Pelko/AnalysisMode.h"

namespace Pelko {

std::string AnalysisMode::_getLabel() const {
    switch (code_) {
    case Critical:
        return "Critical";
    case Exhaustive:
        return "Exhaustive";
    case Default:
        break;
    }
    return "Default";
}

} // namespace Pelko
