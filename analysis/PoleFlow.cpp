// Places by the count of drivers that have none yet, and tables of arcs by place.
#include "analysis/PoleFlow.h"

#include "Pelko/Cell.h"
#include "Pelko/Pin.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace Analysis {

using Pelko::Edge;
using Pelko::Pole;

namespace {

// Calls `visit(target, edge)` for what depends on a pole: the targets of its arcs, and its checks without an
// arc.
template <class Visit>
void forEachTarget(const Pole* pole, Visit visit) {
    for (const Edge* edge : pole->getOutgoingEdges())
        if (edge->isActive())
            visit(edge->getTarget(), edge);
    if (pole->isClock() && pole->getPin())
        for (Pole* check : pole->getPin()->getAuxiliaryPoles())
            if (clockPoleOf(check) == pole)
                visit(check, static_cast<const Edge*>(nullptr));
}

// Turns the counts of members by place into the ends of their parts of a table. The table is then filled from
// the ends of the parts: counted down with every member, each entry becomes the beginning of its part.
void sumUp(std::vector<std::uint32_t>& counts) {
    std::partial_sum(counts.begin(), counts.end(), counts.begin());
}

} // namespace

const Pole* clockPoleOf(const Pole* pole) { return pole->isCheck() ? pole->getMainPole() : nullptr; }

PoleFlow::PoleFlow(const Pelko::Cell& cell) {
    sort(cell);
    fillArcs();
    fillSources();
    fillHeld();
    findSides();
}

void PoleFlow::sort(const Pelko::Cell& cell) {
    std::vector<std::uint32_t> waitsFor(cell.getPoleBound()); // by the pole's index: drivers without a place
    for (const Pole* pole : cell.getPoles())
        forEachTarget(pole, [&](const Pole* target, const Edge*) { ++waitsFor[target->getIndex()]; });
    const std::size_t total = cell.getPoles().getCount();
    poles_.reserve(total);
    places_.resize(cell.getPoleBound());
    for (Pole* pole : cell.getPoles())
        if (waitsFor[pole->getIndex()] == 0)
            poles_.push_back(pole);
    for (Place place(std::uint32_t{0}); place != poles_.next(); ++place) {
        forEachTarget(poles_[place], [&](Pole* target, const Edge*) {
            if (--waitsFor[target->getIndex()] == 0)
                poles_.push_back(target);
        });
        places_[poles_[place]->getIndex()] = place;
    }
    if (poles_.size() != total)
        throw std::logic_error("the timing graph has a loop");
}

void PoleFlow::fillArcs() {
    first_.reserve(size() + 1);
    for (const Pole* pole : poles_) {
        first_.push_back(static_cast<std::uint32_t>(arcs_.size()));
        forEachTarget(pole, [this](const Pole* target, const Edge* edge) {
            arcs_.push_back({placeOf(target), edge});
        });
    }
    first_.push_back(static_cast<std::uint32_t>(arcs_.size()));
}

void PoleFlow::fillSources() {
    firstInto_.assign(size() + 1, 0);
    for (const Arc& arc : arcs_)
        if (arc.edge)
            ++firstInto_[arc.target.number()];
    sumUp(firstInto_);
    sources_.resize(firstInto_.back());
    for (const Place place : places())
        for (const Arc& arc : outOf(place))
            if (arc.edge)
                sources_[--firstInto_[arc.target.number()]] = place;
}

void PoleFlow::fillHeld() {
    const auto forEachArc = [this](auto visit) {
        for (const Place place : places())
            for (const Arc& arc : outOf(place))
                if (arc.edge)
                    visit(place, arc);
    };
    firstHeld_.assign(size() + 1, 0);
    forEachArc([this](Place source, const Arc& arc) { ++firstHeld_[holderOf(source, arc).number()]; });
    sumUp(firstHeld_);
    held_.resize(firstHeld_.back());
    forEachArc([this](Place source, const Arc& arc) {
        held_[--firstHeld_[holderOf(source, arc).number()]] = {source, arc.target, arc.edge};
    });
}

void PoleFlow::findSides() {
    isClockSide_.assign(size(), false);
    std::vector<Place> data;
    for (std::uint32_t number = poles_.next().number(); number-- > 0;) {
        const Place place(number);
        isClockSide_[place] =
            pole(place)->isClock() || std::ranges::any_of(outOf(place), [this](const Arc& arc) {
                return arc.edge && isClockSide_[arc.target];
            });
        if (!isClockSide_[place])
            data.push_back(place);
    }
    if (!data.empty())
        middle_ = data[data.size() / 2];
}

} // namespace Analysis
