#include "Vorlen/detail/Messages.h"

#include "Pelko/Analyzer.h"
#include "Ruvex/Console.h"
#include "Ruvex/Label.h"

namespace Vorlen::detail::messages {

void warnOfLoops(const LoopWarning& warning, unsigned long count) {
    if (count == 0 || Pelko::Analyzer::_muted)
        return;
    Ruvex::console.warning(count == 1 ? warning.one : Ruvex::getLabel(count) + warning.several, "");
}

} // namespace Vorlen::detail::messages
