// The memo of the stem walks: how the stem of a pole moves on to the poles that it drives, and when it is
// freed.
//
// A stem is freed when no other active arc leads from its pole to a pole that is still to be walked. Looking
// for such an arc from the first one on would cost the whole fan-out for every arc of it; so the arc found
// last is remembered a pole, and the next look goes on from there, once around.
#pragma once

#include "Vorlen/TimingMap.h"

#include <unordered_map>

namespace Vorlen::detail {

class StemMerge {
public:
    // After the walk has come back over `edge`.
    void operator()(Pelko::Edge* edge, StemPoleSetMap& work);

private:
    bool isNeeded(Pelko::Pole* source, const Pelko::Edge* except);

    // By pole of a wide fan-out: where in it the last arc was found.
    std::unordered_map<const Pelko::Pole*, std::size_t> found_;
};

} // namespace Vorlen::detail
