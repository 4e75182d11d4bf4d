// The own designs of the clocks, and their launches.
#include "analysis/AchieveApart.h"

#include "analysis/OwnPaths.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Module.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

namespace Analysis {

using Pelko::Edge;
using Pelko::Pole;

namespace {

struct Destroy {
    void operator()(Pelko::Object* object) const { object->destroy(); }
};

// A design next to the model's. The host's globals mean it while it lives.
class OwnDesigns {
public:
    OwnDesigns(const PoleFlow& flow, Pelko::Analyzer& host);

    // Adds a clock's own paths. The poles are theirs by place, the root first.
    void add(const OwnPaths& own, std::size_t clock, const std::vector<Place>& poles);
    std::size_t size() const { return size_; }
    void launch(const std::function<void()>& launch);

private:
    // Puts the globals back, after everything else has been destroyed.
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

    const PoleFlow& flow_;
    Pelko::Analyzer& host_;
    Globals globals_;
    std::unique_ptr<Pelko::Cell, Destroy> cell_;
    std::unique_ptr<Pelko::Analyzer, Destroy> analyzer_;
    std::vector<std::pair<Pole*, Pole*>> roots_; // of the model, and here
    Base::IndexVector<Place, Pole*> copies_;     // by place, of the clock that was added last
    std::size_t size_ = 0;
};

OwnDesigns::OwnDesigns(const PoleFlow& flow, Pelko::Analyzer& host)
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
        for (const PoleFlow::HeldArc& arc : flow_.heldBy(place))
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
    const PoleFlow& flow() const { return flow_; }

private:
    void addSome(const std::vector<std::size_t>& sizes, std::size_t begin, std::size_t end);

    const PoleFlow flow_;
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
