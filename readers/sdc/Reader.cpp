// The reader: a session, and a file at a time.
#include "Reader.h"

#include "Session.h"

namespace Readers::Sdc {

struct Reader::State {
    Session session;
};

Reader::Reader(const Design& design, Diagnostics& diagnostics, const Limits& limits)
    : state_(new State{Session(design, diagnostics, limits)}) {}

Reader::~Reader() = default;

void Reader::read(Source& source) {
    state_->session.timeExponent = 0; // a file's unit is its own
    state_->session.tcl.run(source);
}

Constraints Reader::take() {
    Session& session = state_->session;
    session.noteWithoutEffect();
    session.result.portDelays = session.portDelays.take();
    return std::move(session.result);
}

} // namespace Readers::Sdc
