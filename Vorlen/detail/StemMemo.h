// The memo of the stem walks: the stems of the poles at the frontier of a walk,
// how a stem moves on to the poles that its pole drives, and when it is freed.
//
// A stem is freed when no other active arc leads from its pole to a pole that
// is still to be walked. Looking for such an arc from the first one on would
// cost the whole fan-out for every arc of it; so the arc found last is
// remembered a pole, and the next look goes on from there, once around.
#pragma once

#include "Vorlen/TimingMap.h"

#include <unordered_map>
#include <vector>

namespace Vorlen::detail {

// Whether a stem will be asked for again.
class StemUse {
public:
    bool isNeeded(const Pelko::Pole* source, const Pelko::Edge* except);

private:
    // By pole of a wide fan-out: where in it the last arc was found.
    std::unordered_map<const Pelko::Pole*, std::size_t> found_;
};

// A memo in the container of a caller.
class CallerStems {
public:
    explicit CallerStems(StemPoleSetMap& work) : work_(work) {}

    void addSelf(Pelko::Pole* pole) { work_[pole].insert(pole); }
    // After the walk has come back over `edge`: its source's stem joins that of
    // its target.
    void pass(const Pelko::Edge* edge);

private:
    StemPoleSetMap& work_;
    StemUse use_;
};

// A memo of a whole phase: stems as sorted arrays, whose storage is used again.
class PhaseStems {
public:
    using Stem = std::vector<Pelko::Pole*>; // in stamp order

    void addSelf(Pelko::Pole* pole);
    void pass(const Pelko::Edge* edge);
    // The stem of a pole, or null.
    const Stem* find(const Pelko::Pole* pole) const;
    void release(const Pelko::Pole* pole);

private:
    static constexpr std::uint32_t none = 0;

    Stem& obtain(const Pelko::Pole* pole);

    std::vector<std::uint32_t> numbers_; // by pole index: its stem's number from 1, or none
    std::vector<Stem> stems_;            // by number
    std::vector<std::uint32_t> free_;
    Stem merged_;
    StemUse use_;
};

} // namespace Vorlen::detail
