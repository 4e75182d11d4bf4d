// The memo of the stem walks: keeps the stems of the poles at the frontier of a walk, merges a stem into
// those of the poles that its pole drives, and frees it.
//
// A stem is freed when no other active arc leads from its pole to a pole that is still to be walked. A search
// for such an arc from the first one would cost the whole fan-out for each of its arcs. So the arc that was
// found last is remembered for each pole, and the next search starts there.
#pragma once

#include "Vorlen/TimingMap.h"

#include <unordered_map>
#include <vector>

namespace Vorlen::detail {

// Finds out whether a stem will be needed again, for an arc other than `except`.
class StemUse {
public:
    bool isNeeded(const Pelko::Pole* source, const Pelko::Edge* except);

private:
    // For poles with a wide fan-out: the place of the arc that was found last.
    std::unordered_map<const Pelko::Pole*, std::size_t> found_;
};

// A memo in a container of the caller.
class CallerStems {
public:
    explicit CallerStems(StemPoleSetMap& work) : work_(work) {}

    void addSelf(Pelko::Pole* pole) { work_[pole].insert(pole); }
    // To be called when the walk has returned over `edge`: merges the stem of its source into that of its
    // target.
    void pass(const Pelko::Edge* edge);

private:
    StemPoleSetMap& work_;
    StemUse use_;
};

// A memo for a whole phase. Stems are sorted arrays, whose storage is reused.
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

    std::vector<std::uint32_t> numbers_; // by pole index: the number of its stem, from 1, or `none`
    std::vector<Stem> stems_;            // by number
    std::vector<std::uint32_t> free_;
    Stem merged_;
    StemUse use_;
};

} // namespace Vorlen::detail
