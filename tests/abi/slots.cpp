// The classes whose virtual tables slots.sh reads. The dump names operations without their arguments, so the
// operation that is identified by its argument is checked here.
#include "Pelko/Issue.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Timing.h"
#include "Vorlen/Tool.h"

static_assert(requires(const Pelko::Object& object, Pelko::Issue& issue) { object.check(issue); });
