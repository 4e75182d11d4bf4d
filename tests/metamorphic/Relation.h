// What must hold between the reports of two runs: the second run reads the same design with a known change.
//
// A relation needs no reference, so it can also test what no reference covers: ways to write a file, options
// of the command, netlists of another kind. It cannot find a fault that both runs share; tests/brute can.
#pragma once

#include "Case.h"

#include <functional>
#include <string>
#include <vector>

namespace Metamorphic {

// Returns the first key in which two reports are not as the relation expects: "endpoints/r1/D/setup_slack:
// 1.5, then 1.4". Returns "" if they are.
using Judge = std::function<std::string(const Outcome& before, const Outcome& after, const Case& changed)>;

struct Relation {
    std::string name;
    Brute::Shape shape = {};
    // Adapts both cases to the relation. Returns false if the relation does not apply to this design.
    std::function<bool(Case&)> prepare = {};
    // Changes the second case. Returns false if nothing in the design can be changed in this way.
    std::function<bool(Case&)> change = {};
    // Changes the second case's files.
    std::function<void(Files&, Brute::Random&)> rewrite = {};
    Judge holds;
};

// --- Judges ---

// The reports are equal, except for the inputs' checksums and the given keys at any depth.
Judge same(std::vector<std::string> apartFrom = {});
// The end points and clocks are equal after the names of the second report are replaced by those of the first
// (Case::names).
Judge sameEndsRenamed();
// Every end point has the same slacks, and the same end points have one.
Judge sameSlacks();
Judge slacksTimes(std::int64_t numerator, std::int64_t denominator);
// Slacks are shifted by Case::amount times these factors: at Case::end or, if that is empty, at each end
// point. All others are equal.
Judge slacksShifted(int setupTimes, int holdTimes);

enum class Change { none, worse, better };
// No slack of an end point changes in the other direction, and none is added.
Judge slacksOnly(Change setup, Change hold);
// Case::end has no slack any more; all others are equal.
Judge onlyEndGone();
// The end points of the first report have the same slacks; there may be others.
Judge othersAdded();

// --- The tables, by the part that is changed ---

std::vector<Relation> fileRelations();
std::vector<Relation> netlistRelations();
std::vector<Relation> scriptRelations();
std::vector<Relation> clockRelations();
std::vector<Relation> exceptionRelations();
std::vector<Relation> delayRelations();

// The relations of all tables.
const std::vector<Relation>& allRelations();

// Runs a relation on the design of a seed. Returns no value if the relation does not apply to it; otherwise
// the judge's verdict.
struct Verdict {
    std::string difference;
    Files before, after;
};
std::optional<Verdict> judge(const Runner& runner, const Relation& relation, std::uint64_t seed,
                             const Brute::Shape& shape);

} // namespace Metamorphic
