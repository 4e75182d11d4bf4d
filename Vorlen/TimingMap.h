// The names of the library's containers. All sets and maps are ordered by creation stamp, never by address,
// so that every walk, result and message is the same in every run.
#pragma once

#include "Pelko/Edge.h"
#include "Pelko/Pole.h"
#include "Vorlen/PoleMap.h"
#include "Vorlen/Timing.h"

#include <list>
#include <map>
#include <set>

namespace Vorlen {

// The timing of a pole, for every combination of exception classes that its paths are under. The key is the
// bits of a PseudoMask; 0 is the key for paths under no exception. A missing key means the same as an
// undefined timing. Most maps have only the key 0.
using TimingMap = std::map<unsigned long, Timing>;

using PoleSet = std::set<Pelko::Pole*, Pelko::Object::StampLess>;
using EdgeSet = std::set<Pelko::Edge*, Pelko::Object::StampLess>;
using PoleList = std::list<Pelko::Pole*>;
using EdgeList = std::list<Pelko::Edge*>;

// Timing maps by pole.
using PoleTimingMap = PoleMap<TimingMap>;
// The stem of each pole: the roots or sources that reach it.
using StemPoleSetMap = std::map<Pelko::Pole*, PoleSet, Pelko::Object::StampLess>;
// Path counts by pole, modulo 2^64.
using PoleCountMap = PoleMap<unsigned long>;

} // namespace Vorlen
