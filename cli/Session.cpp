// The stages of a run, in order.
#include "cli/Session.h"

#include "analysis/AchieveApart.h"
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

#include "Vorlen/Tool.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <memory>

namespace Cli {

namespace {

std::atomic<Pelko::Application*> running = nullptr;
static_assert(std::atomic<Pelko::Application*>::is_always_lock_free);

// Tcl ignores SIGPIPE for the whole process when it makes its first interpreter. While this lives, that has
// no effect: a run with constraints ends as one without, if nobody reads its report.
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

// Everything that a run holds, in the order in which it comes about.
class Run {
public:
    Run(Session& session, const Options& options) : session_(session), options_(options) {}

    Report::Report run();

private:
    void begin(std::string_view stage);
    void finish();
    void readNetlist();
    void readSdf();
    void readConstraints();
    void build();
    void launch();
    Analysis::AnalyzedDesign analyzed() const {
        return {design_, *network_, *clocks_, constraints_, *model_, *exceptions_};
    }
    void report();

    Session& session_;
    const Options& options_;
    Report::Report report_;
    std::optional<Design::Netlist> netlist_;
    Design::RoutedDesign design_;
    Base::Rounding rounding_;
    Design::Constraints constraints_;
    std::unique_ptr<Model::Network> network_;
    std::unique_ptr<Model::Clocks> clocks_;
    std::unique_ptr<Exceptions::Exceptions> exceptions_;
    std::unique_ptr<Model::TimingModel> model_;
    std::unique_ptr<Analysis::Harvest> harvest_;
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
    for (std::size_t file = 0; file < constraints_.files.size(); ++file)
        report_.inputs.push_back({constraints_.files[file], "sdc", constraints_.fileHashes[file]});
    report_.constraintsUnmatched = constraints_.unmatched;
    Model::lookAtTimes(constraints_, options_.scale, rounding_);
}

void Run::build() {
    begin("building the timing graph");
    rounding_.report(options_.scale, session_.diagnostics);
    if (options_.sdc.empty())
        constraints_ = Analysis::clocksAtRoots(design_, session_.diagnostics);
    std::vector<std::uint32_t> sources;
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
    Analysis::warnOfUnclocked(design_, *network_, *model_, diagnostics);
}

// The engine's tool, and what is set for its launches. All of it is put back.
class Engine {
public:
    // hear: each message of the console.
    Engine(Pelko::Application* application, std::function<void(const Ruvex::Console::Message&)> hear)
        : application_(application), tool_(Vorlen::Tool::create()) {
        Ruvex::console.setRecorder([this, hear = std::move(hear)](const Ruvex::Console::Message& message) {
            if (message.level == Ruvex::Console::Level::Error)
                lastError_ = message.text;
            hear(message);
        });
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() {
        running = nullptr;
        tool_->destroy();
        Ruvex::console.setRecorder({});
        Ruvex::console.setErrorOutput();
    }

    void launch() {
        running = application_;
        const bool completed = tool_->launch();
        running = nullptr;
        Base::throwIfStopped();
        if (!completed)
            throw std::logic_error("the analysis was given up: " + lastError_);
    }

private:
    Pelko::Application* const application_;
    Vorlen::Tool* const tool_;
    std::string lastError_;
};

class Listening {
public:
    explicit Listening(Analysis::Harvest* listener) : listener_(listener) {
        Pelko::Object::addListener(listener_);
        Pelko::Object::addSweepListener(listener_);
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() {
        Pelko::Object::removeSweepListener(listener_);
        Pelko::Object::removeListener(listener_);
    }

private:
    Analysis::Harvest* const listener_;
};

// A sweep is read as it goes; the engine's own searches and tags are not needed. Clocks that were found are
// not related to each other.
void Run::launch() {
    begin("analysing");
    Pelko::Analyzer* analyzer = model_->host().getAnalyzer();
    analyzer->setVerbose(options_.verbose);
    analyzer->setLongestPath(false);
    analyzer->setShortestPath(false);
    analyzer->setSlackTagging(false);
    analyzer->setAnalysisMode(options_.mode == AnalysisMode::critical ? Pelko::AnalysisMode::Critical
                                                                      : Pelko::AnalysisMode::Exhaustive);
    Pelko::Analyzer::_muted = !options_.verbose;
    Ruvex::console.setOutput(nullptr);
    harvest_ = std::make_unique<Analysis::Harvest>(
        analyzed(), Analysis::HarvestOptions{{options_.paths, options_.perEndpoint},
                                             {options_.setupPaths, options_.holdPaths}});
    Engine engine(model_->host().getApplication(), [this](const Ruvex::Console::Message& message) {
        if (options_.verbose)
            session_.onEngineMessage(message);
    });
    if (!options_.sdc.empty() || clocks_->size() <= 1) {
        const Listening listening(harvest_.get());
        return engine.launch();
    }
    std::vector<Pelko::Pole*> roots;
    for (std::uint32_t clock = 0; clock < clocks_->size(); ++clock)
        roots.push_back(model_->root(clock));
    Analysis::achieveApart(roots, [&engine] { engine.launch(); });
}

void Run::report() {
    begin("reporting");
    Analysis::Harvested results = harvest_->take();
    Analysis::noteCutOffs(results.cutOffPairs, *clocks_, session_.diagnostics);
    exceptions_->findCut(*model_);
    Analysis::fillReport(analyzed(), std::move(results), options_.unconstrained, report_);
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

Report::Report Session::run(const Options& options) { return Run(*this, options).run(); }

bool requestStop() noexcept {
    Base::askToStop();
    Pelko::Application* application = running;
    if (application)
        application->requestStop();
    return application != nullptr;
}

} // namespace Cli
