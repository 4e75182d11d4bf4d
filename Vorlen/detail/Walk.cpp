#include "Vorlen/detail/Walk.h"

#include "Pelko/Analyzer.h"

namespace Vorlen::detail {

MarkGuard::~MarkGuard() {
    if (std::uncaught_exceptions() > exceptions_ && Pelko::analyzer)
        Pelko::analyzer->unmark();
}

} // namespace Vorlen::detail
