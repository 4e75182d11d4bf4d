#include "Ruvex/Label.h"

#include "Ruvex/Utility.h"

namespace Ruvex {

std::string getLabel(const unsigned long& count) { return std::to_string(count); }

std::string getMapLabel(unsigned long count) {
    const std::string prefix = isDebug() ? "map:" : "";
    if (count == 0)
        return prefix + "{empty}";
    if (count == 1)
        return prefix + "{1 element}";
    return prefix + "{" + getLabel(count) + " elements}";
}

} // namespace Ruvex
