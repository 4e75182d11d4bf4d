// The classes whose virtual tables slots.sh reads. The dump names operations without their arguments, so the
// one that is known by its argument is pinned here.
#include "Pelko/Issue.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Timing.h"
#include "Vorlen/Tool.h"

static_assert(requires(const Pelko::Object& object, Pelko::Issue& issue) { object.check(issue); });
