// Which exceptions cover a path.
//
// Example. Registers r0, r1 and r2 of the clock a, and a gate g between them; a period is 10:
//
//   line 2   set_multicycle_path 2 -from r0                  variant 0: names the start point of r0
//   line 3   set_false_path -through g/Z -to r2/D            variant 1: names the end point r2/D, and g/Z
//   line 4   set_max_delay 5 -from {r0 r1}                   variant 2: names the start points of r0 and r1
//   line 5   set_multicycle_path 3 -from [get_clocks a]      variant 3: names no point
//
// Start numbers: r0 is named by variants 0 and 2 and has 1, r1 by variant 2 and has 2, r2 has 0. Three
// numbers take two classes, 0 and 1. g/Z is the only atom and has class 2. End numbers: r2/D has 1, all
// others 0.
//
//   path                       classes   key: start, end, throughs   candidates   matches
//   r0 -> g/Z -> r2/D          {0, 2}    1, 1, {2}                   0, 1, 2, 3   0, 1, 2, 3
//   r1 -> r2/D, not through g  {1}       2, 1, {}                    1, 2, 3      2, 3
//   r2 -> r1/D                 {}        0, 0, {}                    3            3
//
// Candidates are the variants that hold between the two clocks and name no point at all (3), those that name
// the start number (0 and 2, or 2), those that name only the end number (1), and those that name neither but
// begin with an atom that the path passed. On the second path variant 1 is a candidate, but no match, because
// the path did not pass g/Z.
//
// What governs (Govern.h): on the first path line 3 on both sides, because a false path comes before all
// others. On the second one line 4 for setup, with 5 ns in place of the relation, and line 5 for hold,
// because a maximum delay is about setup only: the hold check moves by 2 periods, as the setup check would.
// On the third one line 5 on both sides.
//
// The work for a key grows with its candidates and with the combinations of through points.
#pragma once

#include "exceptions/Encoding.h"
#include "exceptions/Match.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace Exceptions {

class Matcher {
public:
    // Refers to both as long as it lives.
    Matcher(const Variants& variants, const Encoding& encoding);

    // In the order of the variants.
    std::vector<Match> matches(const Key& key);

private:
    // The variants that may cover the paths of a key, each once, in order.
    std::vector<VariantId> candidates(const Key& key, const std::vector<AtomId>& passed);
    const std::vector<VariantId>& betweenClocks(Design::ClockId launch, Design::ClockId capture);
    std::optional<Match> match(VariantId variant, const Key& key, const std::vector<AtomId>& passed);
    std::vector<Combination> combinations(VariantId variant, const std::vector<AtomId>& passed);
    bool isBehind(const ThroughPoint& point, const ThroughPoint& before);
    bool isInOrder(AtomId before, AtomId after);

    const Variants& variants_;
    const Encoding& encoding_;
    // The variants that name no start and no end point: those without through lists; the others by each atom
    // that they begin with.
    std::vector<VariantId> unpinned_;
    Base::IndexVector<AtomId, std::vector<VariantId>> unpinnedThrough_;
    // What has been worked out before.
    std::map<std::pair<Design::ClockId, Design::ClockId>, std::vector<VariantId>> betweenClocks_;
    std::map<std::pair<AtomId, AtomId>, bool> order_;
};

} // namespace Exceptions
