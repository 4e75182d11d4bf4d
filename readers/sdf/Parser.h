// The reader of SDF files: a file's text becomes a handler's events, in one pass, without keeping any of it.
//
// It reads files of IEEE 1497 and of the older versions 2.1 and 1.0. The version that a file states is
// reported and has no effect. Statements without a use for delays and checks are passed over and reported by
// ignored().
//
// Memory is a block of the file; the time is that of one look at each character.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "readers/sdf/Handler.h"
#include "readers/sdf/Lexer.h"

namespace Readers::Sdf {

// Throws BadInput at the first error. The handler was called for all events before it.
void parse(Base::Source& source, Handler& handler, Base::Diagnostics& diagnostics,
           std::size_t blockSize = Lexer::defaultBlock);

} // namespace Readers::Sdf
