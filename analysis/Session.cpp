// The stages of a run, in order.
#include "analysis/Session.h"

#include "analysis/AchieveApart.h"
#include "analysis/EngineRun.h"
#include "analysis/Harvest.h"
#include "analysis/Roots.h"
#include "analysis/Summary.h"
#include "base/Source.h"
#include "base/Stopping.h"
#include "model/RoundedTimes.h"
#include "readers/netlist/Read.h"
#include "readers/sdc/Reader.h"
#include "readers/sdf/Annotate.h"
#include "readers/sdf/Parser.h"

#include <chrono>
#include <csignal>
#include <memory>
#include <utility>

namespace Analysis {

namespace {

// Tcl ignores SIGPIPE for the whole process when it makes its first interpreter. While this lives, that has
// no effect, so that a run with constraints ends like one without if nobody reads its report.
class PipeSignalKept {
public:
    PipeSignalKept() { sigaction(SIGPIPE, nullptr, &before_); }
    ~PipeSignalKept() { sigaction(SIGPIPE, &before_, nullptr); }
    PipeSignalKept(const PipeSignalKept&) = delete;
    PipeSignalKept& operator=(const PipeSignalKept&) = delete;

private:
    struct sigaction before_ {};
};

Readers::Corner cornerOf(Delays delays) {
    switch (delays) {
    case Delays::min:
        return Readers::Corner::minimum;
    case Delays::typ:
        return Readers::Corner::typical;
    case Delays::max:
        return Readers::Corner::maximum;
    case Delays::minmax:
        break;
    }
    return Readers::Corner::minmax;
}

// Everything that a run holds, in the order in which it is made.
class Run {
public:
    Run(Session& session, const SessionOptions& options) : session_(session), options_(options) {}

    Report::Report run();

private:
    void begin(std::string_view stage);
    void finish();
    void readNetlist();
    void readSdf();
    void readConstraints();
    void build();
    void launch();
    void report();
    AnalyzedDesign analyzed() const {
        return {design_, *network_, *clocks_, constraints_, *model_, *exceptions_};
    }

    Session& session_;
    const SessionOptions& options_;
    Report::Report report_;
    std::optional<Design::Netlist> netlist_;
    Design::RoutedDesign design_;
    Base::Rounding rounding_;
    Design::Constraints constraints_;
    std::unique_ptr<Model::Network> network_;
    std::unique_ptr<Model::Clocks> clocks_;
    std::unique_ptr<Exceptions::Exceptions> exceptions_;
    std::unique_ptr<Model::TimingModel> model_;
    std::unique_ptr<Harvest> harvest_;
    std::string_view stage_;
    std::chrono::steady_clock::time_point started_;
};

void Run::begin(std::string_view stage) {
    finish();
    Base::throwIfStopped();
    stage_ = stage;
    started_ = std::chrono::steady_clock::now();
    session_.onStage(stage);
}

void Run::finish() {
    if (!stage_.empty())
        session_.stages.push_back(
            {stage_, std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count()});
    stage_ = {};
}

void Run::readNetlist() {
    if (!options_.netlist)
        return;
    begin("reading the netlist");
    Base::Source source(*options_.netlist);
    netlist_ = Readers::readNetlist(source, options_.top.value_or(""), session_.diagnostics);
    report_.inputs.push_back({source.path(), "netlist", source.sha256()});
}

void Run::readSdf() {
    begin("reading the delays");
    Base::Source source(options_.sdf);
    Readers::Annotator annotator(design_, netlist_ ? &*netlist_ : nullptr,
                                 {cornerOf(options_.delays), options_.scale}, source.path(),
                                 session_.diagnostics);
    Readers::Sdf::parse(source, annotator, session_.diagnostics);
    annotator.finish();
    netlist_.reset();
    report_.arcs = design_.arcs.size();
    report_.arcsWithoutDelay = annotator.bareArcs();
    rounding_ = annotator.rounding();
    report_.inputs.insert(report_.inputs.begin(), {source.path(), "sdf", source.sha256()});
}

void Run::readConstraints() {
    if (options_.sdc.empty())
        return;
    begin("reading the constraints");
    Readers::Sdc::Reader reader = [this] {
        const PipeSignalKept kept;
        return Readers::Sdc::Reader(design_, session_.diagnostics, session_.limits);
    }();
    for (const std::string& path : options_.sdc) {
        Base::Source source(path);
        reader.read(source);
    }
    constraints_ = reader.take();
    for (const std::string& file : constraints_.files)
        session_.onInput(file);
    for (const Design::FileId file : constraints_.files.ids())
        report_.inputs.push_back({constraints_.files[file], "sdc", constraints_.fileHashes[file]});
    report_.constraintsUnmatched = constraints_.unmatched;
    Model::lookAtTimes(constraints_, options_.scale, rounding_);
}

void Run::build() {
    begin("building the timing graph");
    rounding_.report(options_.scale, session_.diagnostics);
    if (options_.sdc.empty())
        constraints_ = clocksAtRoots(design_, session_.diagnostics);
    std::vector<Design::PinId> sources;
    for (const Design::Clock& clock : constraints_.clocks)
        if (!clock.removed)
            sources.insert(sources.end(), clock.targets.begin(), clock.targets.end());
    Base::Diagnostics& diagnostics = session_.diagnostics;
    const bool propagated = options_.clocks == ClockDefault::propagated;
    network_ =
        std::make_unique<Model::Network>(design_, constraints_, sources, diagnostics, session_.loopLimits);
    clocks_ = std::make_unique<Model::Clocks>(design_, *network_, constraints_,
                                              Model::ClockOptions{propagated, options_.scale}, diagnostics);
    exceptions_ = std::make_unique<Exceptions::Exceptions>(design_, *network_, *clocks_, constraints_,
                                                           options_.scale, diagnostics);
    model_ = std::make_unique<Model::TimingModel>(design_, *network_, *clocks_, constraints_,
                                                  exceptions_->timedPorts(), options_.scale, diagnostics);
    exceptions_->makeClasses(*model_);
    warnOfUnclocked(design_, *network_, *model_, diagnostics);
}

// Each sweep is read before it is destroyed; the engine's own searches and tags are not needed.
void Run::launch() {
    begin("analysing");
    Pelko::Analyzer* analyzer = model_->host().getAnalyzer();
    analyzer->setVerbose(options_.verbose);
    analyzer->setLongestPath(false);
    analyzer->setShortestPath(false);
    analyzer->setSlackTagging(false);
    analyzer->setAnalysisMode(options_.mode == AnalysisMode::critical ? Pelko::AnalysisMode::Critical
                                                                      : Pelko::AnalysisMode::Exhaustive);
    harvest_ =
        std::make_unique<Harvest>(analyzed(), HarvestOptions{{options_.paths, options_.perEndpoint},
                                                             {options_.setupPaths, options_.holdPaths}});
    EngineRun engine(*model_->host().getApplication(), options_.verbose, session_.onEngineMessage);
    // Clocks that were found, instead of stated, are not related to each other.
    if (!options_.sdc.empty() || clocks_->size() <= 1)
        return engine.launch(*harvest_);
    std::vector<Pelko::Pole*> roots;
    for (const Design::ClockId clock : Base::firstIds<Design::ClockId>(clocks_->size()))
        roots.push_back(model_->root(clock));
    achieveApart(roots, [&engine] { engine.launch(); });
}

void Run::report() {
    begin("reporting");
    Harvested results = harvest_->take();
    noteCutOffs(results.cutOffPairs, *clocks_, session_.diagnostics);
    exceptions_->findCut(*model_);
    fillReport(analyzed(), std::move(results), options_.unconstrained, report_);
    report_.scale = options_.scale;
    report_.diagnostics = session_.diagnostics.all();
}

Report::Report Run::run() {
    readNetlist();
    readSdf();
    readConstraints();
    build();
    launch();
    report();
    finish();
    return std::move(report_);
}

} // namespace

Report::Report Session::run(const SessionOptions& options) { return Run(*this, options).run(); }

} // namespace Analysis
