// The ports of an analyzer: their constraints and their worst slacks.
#include "Pelko/Analyzer.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

namespace {

void require(bool condition, const char* function, unsigned line, const char* message) {
    Ruvex::require<Ruvex::InvalidRequest>(condition, "Analyzer", function, line, message);
}

template <class Map>
IOConstraint constraintOf(const Map& constraints, Pole* pole) {
    const auto found = constraints.find(pole);
    return found == constraints.end() ? IOConstraint() : found->second;
}

template <class Map>
bool fill(const Map& constraints, Pole* pole, IOConstraint& constraint) {
    const auto found = constraints.find(pole);
    if (found == constraints.end() || !found->second.isDefined())
        return false;
    constraint = found->second;
    return true;
}

} // namespace

IOConstraint Analyzer::getInputConstraint(Pole* pole) const { return constraintOf(inputs_, pole); }

IOConstraint Analyzer::getOutputConstraint(Pole* pole) const { return constraintOf(outputs_, pole); }

bool Analyzer::hasInputConstraint(Pole* pole, IOConstraint& constraint) const {
    return fill(inputs_, pole, constraint);
}

bool Analyzer::hasOutputConstraint(Pole* pole, IOConstraint& constraint) const {
    return fill(outputs_, pole, constraint);
}

void Analyzer::replace(ConstraintMap& constraints, Pole* pole, const IOConstraint& constraint) {
    const auto [place, isNew] = constraints.try_emplace(pole, constraint);
    Reference::add(constraint.getClockRoot());
    if (isNew) {
        Reference::add(pole);
        return;
    }
    Reference::remove(place->second.getClockRoot());
    place->second = constraint;
}

void Analyzer::erase(ConstraintMap& constraints, Pole* pole) {
    const auto found = constraints.find(pole);
    if (found == constraints.end())
        return;
    Reference::remove(pole);
    Reference::remove(found->second.getClockRoot());
    constraints.erase(found);
}

void Analyzer::setInputConstraint(Pole* pole, const IOConstraint& constraint) {
    require(pole, "setInputConstraint", 13, "Null pole");
    require(pole->isInput(), "setInputConstraint", 14, "Not an input port");
    replace(inputs_, pole, constraint);
}

void Analyzer::setOutputConstraint(Pole* pole, const IOConstraint& constraint) {
    require(pole, "setOutputConstraint", 13, "Null pole");
    require(pole->isOutput(), "setOutputConstraint", 15, "Not an output port");
    replace(outputs_, pole, constraint);
}

void Analyzer::removeInputConstraint(Pole* pole) { erase(inputs_, pole); }

void Analyzer::removeOutputConstraint(Pole* pole) { erase(outputs_, pole); }

namespace {

void merge(Delay& worst, const Delay& slack) {
    if (slack.isDefined() && (!worst.isDefined() || slack < worst))
        worst = slack;
}

} // namespace

Analyzer::PortSlack& Analyzer::getPortSlack(Pole* pole, const char* function) {
    require(pole, function, 13, "Null pole");
    const auto [place, isNew] = portSlacks_.try_emplace(pole);
    if (isNew)
        Reference::add(pole);
    return place->second;
}

void Analyzer::mergeIODelayLongestSlack(Pole* pole, const Delay& slack) {
    merge(getPortSlack(pole, "mergeIODelayLongestSlack").longest, slack);
}

void Analyzer::mergeIODelayShortestSlack(Pole* pole, const Delay& slack) {
    merge(getPortSlack(pole, "mergeIODelayShortestSlack").shortest, slack);
}

Delay Analyzer::getIODelayLongestSlack(Pole* pole) const {
    const auto found = portSlacks_.find(pole);
    return found == portSlacks_.end() ? Delay::getUndefined() : found->second.longest;
}

Delay Analyzer::getIODelayShortestSlack(Pole* pole) const {
    const auto found = portSlacks_.find(pole);
    return found == portSlacks_.end() ? Delay::getUndefined() : found->second.shortest;
}

} // namespace Pelko
