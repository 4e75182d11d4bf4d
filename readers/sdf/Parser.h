// The reader of SDF files: a file's text becomes a handler's events, in one pass, without keeping any of it.
//
// Read are the files of IEEE 1497 and those of the older versions 2.1 and 1.0; the version that a file states
// is reported and changes nothing. What the grammar has and timing analysis of delays and checks has no use
// for is passed over and reported as ignored().
//
// Memory is a block of the file; the time is that of one look at each character.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "readers/sdf/Handler.h"
#include "readers/sdf/Lexer.h"

namespace Readers::Sdf {

// Throws BadInput at the first thing that is no SDF; the events before it were fired.
void parse(Base::Source& source, Handler& handler, Base::Diagnostics& diagnostics,
           std::size_t blockSize = Lexer::defaultBlock);

} // namespace Readers::Sdf
