// The search from an end point backwards.
#include "analysis/PathSearch.h"

#include "analysis/PathTrail.h"
#include "analysis/TracedPath.h"
#include "base/Stopping.h"

#include <set>

namespace Analysis {

using Base::none;

namespace {

// How many steps are taken between two looks at whether the run is to stop.
constexpr unsigned stopStride = 4096;

class Search {
public:
    Search(const AnalyzedDesign& analyzed, const SweepView& view, const Arrival& arrival, KeptPaths& kept)
        : of_(analyzed), view_(view), arrival_(arrival), kept_(kept), side_(arrival.side),
          trail_(analyzed.design) {}

    void run();

private:
    // A step that is not taken yet, and when data that passes it comes to the end point at the worst.
    struct Open {
        Time time;
        StepId step;
    };
    // Worst first: the latest for setup, the earliest for hold.
    struct IsWorse {
        const Search* search;
        bool operator()(const Open& a, const Open& b) const {
            if (a.time != b.time)
                return search->side_ == Side::setup ? a.time > b.time : a.time < b.time;
            return search->trail_.isBefore(a.step, b.step);
        }
    };

    SlackTerms termsAt(Time time) const;
    Time slackAt(Time time) const { return slackOf(side_, termsAt(time)); }
    bool keep(const Step& start, Time time);
    void expand(StepId number);
    void expand(StepId number, const Step& step, Pelko::Edge& edge);
    Design::PinId pinOf(const Pelko::Pole* pole) const;

    const AnalyzedDesign& of_;
    const SweepView& view_;
    const Arrival& arrival_;
    KeptPaths& kept_;
    const Side side_;
    Trail trail_;
    std::multiset<Open, IsWorse> open_{IsWorse{this}};
    Time whole_ = 0; // the arrival at the end point, of the worst path
};

// The end point's terms for data that comes there at another time.
SlackTerms Search::termsAt(Time time) const {
    SlackTerms terms = arrival_.terms;
    terms.arrival += time - whole_;
    return terms;
}

// Poles that stand for no node, as those behind a port, count as the end point's pin.
Design::PinId Search::pinOf(const Pelko::Pole* pole) const {
    const Model::NodeId node = of_.model.nodeOf(pole);
    if (node == none)
        return arrival_.end->pin;
    return of_.network.pinOf(node);
}

void Search::run() {
    const Model::End& end = *arrival_.end;
    if (!kept_.isWanted(end.pin, arrival_.slack))
        return;
    Vorlen::TimingMap arrivals;
    view_.sweep.hasArrivalTimingMap(end.pole, arrivals);
    whole_ = int(dataTime(arrivals.at(arrival_.classes.bits()), side_));
    open_.insert({whole_, trail_.add({end.pole, arrival_.classes}, end.pin)});
    for (unsigned steps = 0; !open_.empty(); ++steps) {
        if (steps % stopStride == 0)
            Base::throwIfStopped();
        const StepId number = open_.begin()->step;
        const Time time = open_.begin()->time;
        open_.erase(open_.begin());
        if (!kept_.isWanted(end.pin, slackAt(time)))
            return;
        const Step& step = trail_[number];
        if (step.pole == end.pole || !of_.model.startAt(step.pole))
            expand(number);
        else if (!keep(step, time))
            return;
    }
}

bool Search::keep(const Step& start, Time time) {
    Arrival traced = arrival_;
    traced.terms = termsAt(time);
    traced.slack = slackOf(side_, traced.terms);
    return kept_.keep(
        {traced.end->pin, standingOf(view_.edges, traced), reportedPath(of_, view_, traced, start, trail_)});
}

// Opens the steps before this one.
void Search::expand(StepId number) {
    const Step step = trail_[number]; // a copy: the trail grows
    for (Pelko::Edge* edge : step.pole->getIncomingEdges())
        expand(number, step, *edge);
}

void Search::expand(StepId number, const Step& step, Pelko::Edge& edge) {
    const std::optional<Time> part = partOf(edge, side_);
    Vorlen::TimingMap sources;
    if (!part || !edge.isActive() || !view_.sweep.hasArrivalTimingMap(edge.getSource(), sources))
        return;
    const Time behind = *part + step.behind;
    for (const auto& [classes, timing] : sources) {
        const std::optional<Time> time = ordinary(dataTime(timing, side_));
        const ClassSet arriving((classes & edge.getPseudoMask().getBits()) |
                                step.pole->getOpeningPseudoMask().getBits());
        if (!time || arriving != step.classes)
            continue;
        const Time whole = *time + behind;
        if (kept_.isWanted(arrival_.end->pin, slackAt(whole)))
            open_.insert(open_.begin(),
                         {whole, trail_.add({edge.getSource(), ClassSet(classes), behind, &edge, number},
                                            pinOf(edge.getSource()))});
    }
}

} // namespace

void tracePaths(const AnalyzedDesign& analyzed, const SweepView& view, const Arrival& arrival,
                KeptPaths& kept) {
    Search(analyzed, view, arrival, kept).run();
}

} // namespace Analysis
