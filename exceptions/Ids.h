// The indices of the exceptions' own tables.
#pragma once

#include "base/Index.h"

namespace Exceptions {

// Into Resolved::variants.
using VariantId = Base::Index<struct VariantTag>;
// Into the atoms of an encoding (Atoms.h).
using AtomId = Base::Index<struct AtomTag>;
// Into the layers of an encoding (Encoding.h).
using LayerId = Base::Index<struct LayerTag>;

// The numbers of start and end points (PointNumbers.h). Points that the same exceptions name share a number.
using StartNumber = Base::Index<struct StartNumberTag>;
using EndNumber = Base::Index<struct EndNumberTag>;

// The numbers of the points that no exception names.
inline constexpr StartNumber unnamedStart{0};
inline constexpr EndNumber unnamedEnd{0};

} // namespace Exceptions
