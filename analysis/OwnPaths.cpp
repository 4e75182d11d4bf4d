// Which poles lie on the own paths of which clocks is found for some clocks at once, as a row of bits for
// each pole: forwards the clocks that reach it, then backwards those whose checks it reaches too.
//
// Data that meets on one net reaches everything from there, and everything reaches the net. So the way
// forwards is free only in the first half of the data; in the second it keeps to what leads to a check of
// these clocks, which is found backwards before. Both are then small, and so is what they have in common.
#include "analysis/OwnPaths.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Module.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <numeric>
#include <span>
#include <stdexcept>

namespace Analysis {

using Pelko::Edge;
using Pelko::Pole;

namespace {

using Place = std::uint32_t;

// The active arcs of a cell by places: a pole has its place after the poles that drive it, and a check after
// its clock pole.
class Flow {
public:
    struct Arc {
        Place target;
        const Edge* edge; // null: no arc, but the tie of a clock pole to a check
    };

    explicit Flow(const Pelko::Cell& cell);

    std::size_t size() const { return poles_.size(); }
    Pole* pole(Place place) const { return poles_[place]; }
    Place placeOf(const Pole* pole) const { return places_[pole->getIndex()]; }
    std::span<const Arc> outOf(Place place) const {
        return std::span(arcs_).subspan(first_[place], first_[place + 1] - first_[place]);
    }
    std::span<const Place> into(Place place) const {
        return std::span(sources_).subspan(firstInto_[place], firstInto_[place + 1] - firstInto_[place]);
    }
    // Every arc is held by one of its poles, the one with the smaller fan: so what is held is little, even by
    // a pole that a hundred thousand arcs lead to, and to find the arcs among some poles costs little.
    struct Held {
        Place source, target;
        const Edge* edge;
    };
    std::span<const Held> heldBy(Place place) const {
        return std::span(held_).subspan(firstHeld_[place], firstHeld_[place + 1] - firstHeld_[place]);
    }
    // Whether the pole is a clock pole, or leads to one.
    bool isClockSide(Place place) const { return isClockSide_[place]; }
    // The last place of the first half of the data.
    Place middle() const { return middle_; }

private:
    void count(const Pelko::Cell& cell);
    void sort(const Pelko::Cell& cell);
    void link();
    Place holderOf(Place source, const Arc& arc) const {
        return outOf(source).size() <= into(arc.target).size() ? source : arc.target;
    }
    void hold();
    void findSides();

    std::vector<Pole*> poles_;  // by place
    std::vector<Place> places_; // by the pole's index; before they are sorted: what still drives the pole
    std::vector<std::uint32_t> first_; // by place, and one more
    std::vector<Arc> arcs_;
    std::vector<std::uint32_t> firstInto_; // by place, and one more
    std::vector<Place> sources_;
    std::vector<std::uint32_t> firstHeld_; // by place, and one more
    std::vector<Held> held_;
    std::vector<bool> isClockSide_;
    Place middle_ = 0;
};

const Pole* clockPoleOf(const Pole* pole) { return pole->isCheck() ? pole->getMainPole() : nullptr; }

// Calls `visit(target, edge)` for what depends on a pole.
template <class Visit>
void forEachTarget(const Pole* pole, Visit visit) {
    for (const Edge* edge : pole->getOutgoingEdges())
        if (edge->isActive())
            visit(edge->getTarget(), edge);
    if (pole->isClock() && pole->getPin())
        for (const Pole* check : pole->getPin()->getAuxiliaryPoles())
            if (clockPoleOf(check) == pole)
                visit(check, static_cast<const Edge*>(nullptr));
}

Flow::Flow(const Pelko::Cell& cell) {
    count(cell);
    sort(cell);
    first_.reserve(poles_.size() + 1);
    for (const Pole* pole : poles_) {
        first_.push_back(static_cast<std::uint32_t>(arcs_.size()));
        forEachTarget(pole, [this](const Pole* target, const Edge* edge) {
            arcs_.push_back({placeOf(target), edge});
        });
    }
    first_.push_back(static_cast<std::uint32_t>(arcs_.size()));
    link();
    hold();
    findSides();
}

void Flow::link() {
    firstInto_.assign(size() + 1, 0);
    for (const Arc& arc : arcs_)
        if (arc.edge)
            ++firstInto_[arc.target];
    std::partial_sum(firstInto_.begin(), firstInto_.end(), firstInto_.begin());
    sources_.resize(firstInto_.back());
    for (Place place = 0; place < size(); ++place)
        for (const Arc& arc : outOf(place))
            if (arc.edge)
                sources_[--firstInto_[arc.target]] = place;
}

void Flow::hold() {
    const auto forEachArc = [this](auto visit) {
        for (Place place = 0; place < size(); ++place)
            for (const Arc& arc : outOf(place))
                if (arc.edge)
                    visit(place, arc);
    };
    firstHeld_.assign(size() + 1, 0);
    forEachArc([this](Place source, const Arc& arc) { ++firstHeld_[holderOf(source, arc)]; });
    std::partial_sum(firstHeld_.begin(), firstHeld_.end(), firstHeld_.begin());
    held_.resize(firstHeld_.back());
    forEachArc([this](Place source, const Arc& arc) {
        held_[--firstHeld_[holderOf(source, arc)]] = {source, arc.target, arc.edge};
    });
}

void Flow::findSides() {
    isClockSide_.assign(size(), false);
    std::vector<Place> data;
    for (Place place = static_cast<Place>(size()); place-- > 0;) {
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

void Flow::count(const Pelko::Cell& cell) {
    places_.assign(cell.getPoleBound(), 0);
    for (const Pole* pole : cell.getPoles())
        forEachTarget(pole, [this](const Pole* target, const Edge*) { ++places_[target->getIndex()]; });
}

void Flow::sort(const Pelko::Cell& cell) {
    const std::size_t total = cell.getPoles().getCount();
    poles_.reserve(total);
    for (Pole* pole : cell.getPoles())
        if (places_[pole->getIndex()] == 0)
            poles_.push_back(pole);
    for (std::size_t place = 0; place < poles_.size(); ++place) {
        forEachTarget(poles_[place], [this](const Pole* target, const Edge*) {
            if (--places_[target->getIndex()] == 0)
                poles_.push_back(const_cast<Pole*>(target));
        });
        places_[poles_[place]->getIndex()] = static_cast<Place>(place);
    }
    if (poles_.size() != total)
        throw std::logic_error("the timing graph has a loop");
}

// The own paths of some clocks, up to a fixed number at once.
class OwnPaths {
public:
    static constexpr std::size_t most = 512; // clocks

    OwnPaths(const Flow& flow, std::size_t clocks)
        : flow_(flow), words_((std::min(clocks, most) + 63) / 64), rows_(flow.size() * words_),
          reached_((flow.size() + 63) / 64), isUseful_(flow.size()) {}

    // Replaces what was found before.
    void find(std::span<const Place> roots);
    bool contains(Place place, std::size_t clock) const {
        return (row(place)[clock / 64] >> (clock % 64) & 1) != 0;
    }
    // Calls `visit(place, clock)` for the poles on own paths, by place.
    template <class Visit>
    void forEach(Visit visit) const {
        for (const Place place : touched_)
            for (std::size_t word = 0; word < words_; ++word)
                for (std::uint64_t left = row(place)[word]; left != 0; left &= left - 1)
                    visit(place, word * 64 + static_cast<std::size_t>(std::countr_zero(left)));
    }

private:
    std::uint64_t* row(Place place) { return &rows_[place * words_]; }
    const std::uint64_t* row(Place place) const { return &rows_[place * words_]; }
    void reach(Place place) { reached_[place / 64] |= std::uint64_t{1} << (place % 64); }
    void clear();
    void findUseful();
    template <class Passes>
    void flood(Passes passes);
    void prune(Place place);

    const Flow& flow_;
    const std::size_t words_;
    std::vector<std::uint64_t> rows_;
    std::vector<std::uint64_t> reached_; // a bit for each place
    std::vector<Place> touched_;         // places with a row that may not be empty, in order
    std::vector<bool> isUseful_;         // in the second half of the data: leads to a check of these clocks
    std::vector<Place> useful_;
    std::vector<std::uint64_t> kept_;
};

void OwnPaths::find(std::span<const Place> roots) {
    clear();
    for (std::size_t clock = 0; clock < roots.size(); ++clock) {
        row(roots[clock])[clock / 64] |= std::uint64_t{1} << (clock % 64);
        reach(roots[clock]);
    }
    flood([this](Place place) { return flow_.isClockSide(place); });
    findUseful();
    for (const Place place : touched_)
        reach(place);
    touched_.clear();
    flood([this](Place place) {
        return !flow_.isClockSide(place) && (place <= flow_.middle() || isUseful_[place]);
    });
    for (std::size_t i = touched_.size(); i-- > 0;)
        prune(touched_[i]);
}

void OwnPaths::clear() {
    for (const Place place : touched_)
        std::fill_n(row(place), words_, 0);
    touched_.clear();
    for (const Place place : useful_)
        isUseful_[place] = false;
    useful_.clear();
}

// Backwards from the checks of the clock poles that are reached, down to the middle.
void OwnPaths::findUseful() {
    const auto reachBack = [this](Place place) {
        if (flow_.isClockSide(place) || place <= flow_.middle() || isUseful_[place])
            return;
        isUseful_[place] = true;
        useful_.push_back(place);
    };
    for (const Place place : touched_)
        for (const Flow::Arc& arc : flow_.outOf(place))
            if (!arc.edge)
                reachBack(arc.target);
    for (std::size_t next = 0; next < useful_.size(); ++next)
        for (const Place source : flow_.into(useful_[next]))
            reachBack(source);
}

// From the places that are reached, on to those that `passes`. What is reached lies ahead of what reaches it,
// so one pass over the places meets all of it in order.
template <class Passes>
void OwnPaths::flood(Passes passes) {
    for (std::size_t word = 0; word < reached_.size(); ++word)
        for (; reached_[word] != 0; reached_[word] &= reached_[word] - 1) {
            const auto place = static_cast<Place>(word * 64 + std::countr_zero(reached_[word]));
            touched_.push_back(place);
            for (const Flow::Arc& arc : flow_.outOf(place)) {
                if (!arc.edge || !passes(arc.target))
                    continue;
                for (std::size_t i = 0; i < words_; ++i)
                    row(arc.target)[i] |= row(place)[i];
                reach(arc.target);
            }
        }
}

// A check keeps the clocks that its clock pole has, any other pole those that what depends on it has kept.
void OwnPaths::prune(Place place) {
    kept_.assign(words_, 0);
    const auto keep = [&](Place other) {
        for (std::size_t i = 0; i < words_; ++i)
            kept_[i] |= row(other)[i];
    };
    if (const Pole* clockPole = clockPoleOf(flow_.pole(place)))
        keep(flow_.placeOf(clockPole));
    for (const Flow::Arc& arc : flow_.outOf(place))
        keep(arc.target);
    for (std::size_t i = 0; i < words_; ++i)
        row(place)[i] &= kept_[i];
}

struct Destroy {
    void operator()(Pelko::Object* object) const { object->destroy(); }
};

// A design beside the model's, which is what the globals mean while it lives.
class OwnDesigns {
public:
    OwnDesigns(const Flow& flow, Pelko::Analyzer& host);

    // A clock's own paths: their poles by place, the root first.
    void add(const OwnPaths& own, std::size_t clock, const std::vector<Place>& poles);
    std::size_t size() const { return size_; }
    void launch(const std::function<void()>& launch);

private:
    // Puts the globals back, when all else has been destroyed.
    struct Globals {
        Globals() = default;
        Globals(const Globals&) = delete;
        Globals& operator=(const Globals&) = delete;
        ~Globals() {
            Pelko::cell = cell;
            Pelko::analyzer = analyzer;
        }
        Pelko::Cell* cell = Pelko::cell;
        Pelko::Analyzer* analyzer = Pelko::analyzer;
    };

    Pole* copy(const Pole& pole);

    const Flow& flow_;
    Pelko::Analyzer& host_;
    Globals globals_;
    std::unique_ptr<Pelko::Cell, Destroy> cell_;
    std::unique_ptr<Pelko::Analyzer, Destroy> analyzer_;
    std::vector<std::pair<Pole*, Pole*>> roots_; // of the model, and here
    std::vector<Pole*> copies_;                  // by place, of the clock that was added last
    std::size_t size_ = 0;
};

OwnDesigns::OwnDesigns(const Flow& flow, Pelko::Analyzer& host)
    : flow_(flow), host_(host), cell_(Pelko::Cell::create(globals_.cell->getName())),
      analyzer_(Pelko::Analyzer::create(cell_.get())), copies_(flow.size()) {
    analyzer_->setVerbose(host.isVerbose());
    analyzer_->setAnalysisMode(host.getAnalysisMode());
    analyzer_->setLongestPath(host.isLongestPath());
    analyzer_->setShortestPath(host.isShortestPath());
    analyzer_->setSlackTagging(host.isSlackTagging());
    Pelko::cell = cell_.get();
    Pelko::analyzer = analyzer_.get();
}

void OwnDesigns::add(const OwnPaths& own, std::size_t clock, const std::vector<Place>& poles) {
    for (const Place place : poles)
        copies_[place] = copy(*flow_.pole(place));
    for (const Place place : poles)
        for (const Flow::Held& arc : flow_.heldBy(place))
            if (own.contains(arc.source, clock) && own.contains(arc.target, clock))
                Edge::create(copies_[arc.source], copies_[arc.target], arc.edge->getMinDelay(),
                             arc.edge->getMaxDelay());
    roots_.emplace_back(flow_.pole(poles.front()), copies_[poles.front()]);
    size_ += poles.size();
}

Pole* OwnDesigns::copy(const Pole& pole) {
    if (const Pole* clockPole = clockPoleOf(&pole))
        return Pole::createCheck(copies_[flow_.placeOf(clockPole)]);
    if (pole.isClockSource())
        return Pole::createClockSource(cell_.get(), pole.getName());
    if (!pole.isClock())
        return Pole::create(cell_.get());
    Pole* made = Pole::createClock(
        cell_.get(), Pelko::Pin::create(cell_->getModule(), pole.getPin()->getName()), pole.getClockMode());
    made->setCaptureInverted(pole.isCaptureInverted());
    return made;
}

void OwnDesigns::launch(const std::function<void()>& launch) {
    launch();
    for (const auto& [root, own] : roots_)
        if (const Pelko::Delay period = analyzer_->getPeriod(own); period.isDefined())
            host_.setPeriod(root, period);
}

// Collects own designs until they are as large as the model, and launches them.
class Separation {
public:
    Separation(std::size_t clocks, const std::function<void()>& launch)
        : flow_(*Pelko::cell), host_(*Pelko::analyzer), own_(flow_, clocks), launch_(launch) {}

    void add(std::span<const Place> roots);
    void finish();
    const Flow& flow() const { return flow_; }

private:
    void addSome(const std::vector<std::size_t>& sizes, std::size_t begin, std::size_t end);

    const Flow flow_;
    Pelko::Analyzer& host_;
    OwnPaths own_;
    const std::function<void()>& launch_;
    std::unique_ptr<OwnDesigns> designs_;
};

void Separation::add(std::span<const Place> roots) {
    own_.find(roots);
    std::vector<std::size_t> sizes(roots.size());
    own_.forEach([&](Place, std::size_t clock) { ++sizes[clock]; });
    for (std::size_t begin = 0; begin < roots.size();) {
        std::size_t end = begin, size = designs_ ? designs_->size() : 0;
        while (end < roots.size() && size + sizes[end] <= flow_.size())
            size += sizes[end++];
        if (end == begin) {
            finish();
            continue;
        }
        addSome(sizes, begin, end);
        begin = end;
    }
}

void Separation::addSome(const std::vector<std::size_t>& sizes, std::size_t begin, std::size_t end) {
    std::vector<std::vector<Place>> poles(end - begin);
    for (std::size_t clock = begin; clock < end; ++clock)
        poles[clock - begin].reserve(sizes[clock]);
    own_.forEach([&](Place place, std::size_t clock) {
        if (begin <= clock && clock < end)
            poles[clock - begin].push_back(place);
    });
    for (std::size_t clock = begin; clock < end; ++clock) {
        if (sizes[clock] == 0)
            continue;
        if (!designs_)
            designs_ = std::make_unique<OwnDesigns>(flow_, host_);
        designs_->add(own_, clock, poles[clock - begin]);
    }
}

void Separation::finish() {
    if (designs_)
        designs_->launch(launch_);
    designs_.reset();
}

} // namespace

void achieveApart(const std::vector<Pelko::Pole*>& roots, const std::function<void()>& launch) {
    Separation separation(roots.size(), launch);
    std::vector<Place> places;
    for (const Pole* root : roots)
        places.push_back(separation.flow().placeOf(root));
    for (std::size_t first = 0; first < places.size(); first += OwnPaths::most)
        separation.add(std::span(places).subspan(first, std::min(OwnPaths::most, places.size() - first)));
    separation.finish();
}

} // namespace Analysis
