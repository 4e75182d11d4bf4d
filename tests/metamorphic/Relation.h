// What must hold between the reports of two runs, the second of which reads the same design changed in a
// known way.
//
// A relation needs no reference, so it also holds for what no reference covers: ways to write a file, options
// of the command, netlists of another kind. It says nothing of a fault that both runs share; tests/brute
// does.
#pragma once

#include "Case.h"

#include <functional>
#include <string>
#include <vector>

namespace Metamorphic {

// The first key in which two reports are not what the relation asks: "endpoints/r1/D/setup_slack: 1.5,
// then 1.4". Empty: they are.
using Judge = std::function<std::string(const Outcome& before, const Outcome& after, const Case& changed)>;

struct Relation {
    std::string name;
    Brute::Shape shape = {};
    // Fits both cases to the relation. False: it has nothing to say of this design.
    std::function<bool(Case&)> prepare = {};
    // Changes the second case. False: nothing in the design can be changed so.
    std::function<bool(Case&)> change = {};
    // Changes the second case's files.
    std::function<void(Files&, Brute::Random&)> rewrite = {};
    Judge holds;
};

// --- Judges ---

// The whole report, but for what it says of the inputs' bytes and for keys of these names, at any depth.
Judge same(std::vector<std::string> apartFrom = {});
// The same once the names of the second report are the first's again (Case::names), end points and clocks
// alone.
Judge sameEndsRenamed();
// Every end point's slacks; the same end points have one.
Judge sameSlacks();
Judge slacksTimes(std::int64_t numerator, std::int64_t denominator);
// By Case::amount, times these, at Case::end or, where that is empty, at each end point. All others keep
// their slacks.
Judge slacksShifted(int setupTimes, int holdTimes);

enum class Change { none, worse, better };
// No end point's slack changes the other way; what is not there before is not there then.
Judge slacksOnly(Change setup, Change hold);
// Case::end has no slack any more; all others have theirs.
Judge onlyEndGone();
// The end points of before have their slacks; there may be others.
Judge othersAdded();

// --- The tables, by what is changed ---

std::vector<Relation> fileRelations();
std::vector<Relation> netlistRelations();
std::vector<Relation> scriptRelations();
std::vector<Relation> clockRelations();
std::vector<Relation> exceptionRelations();
std::vector<Relation> delayRelations();

// Every relation of all tables.
const std::vector<Relation>& allRelations();

// Runs a relation on the design of a seed: nothing where it has nothing to say of it; else what its judge
// says.
struct Verdict {
    std::string difference;
    Files before, after;
};
std::optional<Verdict> judge(const Runner& runner, const Relation& relation, std::uint64_t seed,
                             const Brute::Shape& shape);

} // namespace Metamorphic
