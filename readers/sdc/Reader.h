// Reads constraint files, in order, into one state. See docs/sdc.md for what is understood.
//
// Reading goes on after an error, up to the twentieth; at the end a BadInput is thrown with all their places.
// Everything that is passed over, guessed or matches nothing is reported as a diagnostic.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "design/Constraints.h"
#include "design/RoutedDesign.h"
#include "readers/sdc/Limits.h"

#include <memory>

namespace Readers::Sdc {

class Reader {
public:
    // The design must be indexed and classified, and both must outlive the reader.
    Reader(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics, const Limits& limits = {});
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // Throws BadInput; the reader is of no use after that.
    void read(Base::Source& source);

    // The state after the last file. Adds the notes about commands without effect. Call it once, at the end.
    Design::Constraints take();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace Readers::Sdc
