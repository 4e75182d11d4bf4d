// The reader: a session, and a file at a time.
#include "readers/sdc/Reader.h"

#include "readers/sdc/Session.h"

namespace Readers::Sdc {

struct Reader::State {
    Session session;
};

Reader::Reader(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics, const Limits& limits)
    : state_(new State{Session(design, diagnostics, limits)}) {}

Reader::~Reader() = default;

void Reader::read(Base::Source& source) {
    state_->session.timeExponent = 0; // a file's unit is its own
    state_->session.tcl.run(source);
}

Design::Constraints Reader::take() {
    Session& session = state_->session;
    session.noteWithoutEffect();
    session.result.portDelays = session.portDelays.take();
    return std::move(session.result);
}

} // namespace Readers::Sdc
