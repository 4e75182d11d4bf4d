// The names of the library's containers. All are ordered by creation stamp, never by address, so that every
// walk, result and message is the same from run to run.
#pragma once

#include "Pelko/Edge.h"
#include "Pelko/Pole.h"
#include "Vorlen/PoleMap.h"
#include "Vorlen/Timing.h"

#include <list>
#include <map>
#include <set>

namespace Vorlen {

// The timing of a pole, apart for every combination of exception classes that its paths are under (the bits
// of a PseudoMask; 0: under none). A missing key and an undefined timing mean the same. Maps are small:
// mostly the one key 0.
using TimingMap = std::map<unsigned long, Timing>;

using PoleSet = std::set<Pelko::Pole*, Pelko::Object::StampLess>;
using EdgeSet = std::set<Pelko::Edge*, Pelko::Object::StampLess>;
using PoleList = std::list<Pelko::Pole*>;
using EdgeList = std::list<Pelko::Edge*>;

// Timing by pole.
using PoleTimingMap = PoleMap<TimingMap>;
// For a pole, the roots or sources that reach it: its stem.
using StemPoleSetMap = std::map<Pelko::Pole*, PoleSet, Pelko::Object::StampLess>;
// Path counts by pole; they wrap on very large graphs.
using PoleCountMap = PoleMap<unsigned long>;

} // namespace Vorlen
