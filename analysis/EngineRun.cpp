// What is set for a run, and how a launch ends.
#include "analysis/EngineRun.h"

#include "base/Stopping.h"

#include "Pelko/Analyzer.h"

#include <atomic>
#include <utility>

namespace Analysis {

namespace {

// The application of the launch that goes on; null: none.
std::atomic<Pelko::Application*> running = nullptr;
static_assert(std::atomic<Pelko::Application*>::is_always_lock_free);

class Running {
public:
    explicit Running(Pelko::Application& application) : before_(running.exchange(&application)) {}
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() { running = before_; }

private:
    Pelko::Application* const before_;
};

std::string reasonOf(const std::vector<std::string>& errors) {
    return "the analysis was given up: " + (errors.empty() ? "no reason was reported" : errors.back());
}

} // namespace

EngineFailure::EngineFailure(std::vector<std::string> errors)
    : std::logic_error(reasonOf(errors)), errors_(std::move(errors)) {}

// --- What is set, and put back ---

// The console is a value: a copy has its recorder, output, colour, indentation and open timers.
EngineRun::ConsoleTaken::ConsoleTaken() : before_(Ruvex::console) { Ruvex::console.setOutput(nullptr); }

EngineRun::ConsoleTaken::~ConsoleTaken() { Ruvex::console = std::move(before_); }

EngineRun::Muting::Muting(bool muted) : before_(std::exchange(Pelko::Analyzer::_muted, muted)) {}

EngineRun::Muting::~Muting() { Pelko::Analyzer::_muted = before_; }

EngineRun::Listening::Listening(Pelko::ObjectListener& objects, Pelko::SweepListener& sweeps)
    : objects_(objects), sweeps_(sweeps) {
    Pelko::Object::addListener(&objects_);
    try {
        Pelko::Object::addSweepListener(&sweeps_);
    } catch (...) {
        Pelko::Object::removeListener(&objects_);
        throw;
    }
}

EngineRun::Listening::~Listening() {
    Pelko::Object::removeSweepListener(&sweeps_);
    Pelko::Object::removeListener(&objects_);
}

// --- The run ---

EngineRun::EngineRun(Pelko::Application& application, bool verbose, Hear hear)
    : application_(application), hear_(verbose ? std::move(hear) : Hear()), muting_(!verbose),
      tool_(Vorlen::Tool::create()) {
    Ruvex::console.setRecorder([this](const Message& message) { record(message); });
}

EngineRun::~EngineRun() = default;

// What is thrown here ends the launch, with the engine's own words for it; so the exception itself is kept.
void EngineRun::record(const Message& message) {
    if (message.level == Ruvex::Console::Level::Error)
        errors_.push_back(message.text);
    if (!hear_ || unheard_)
        return;
    try {
        hear_(message);
    } catch (...) {
        unheard_ = std::current_exception();
        throw;
    }
}

void EngineRun::launch() {
    errors_.clear();
    unheard_ = nullptr;
    bool completed = false;
    try {
        const Running going(application_);
        completed = tool_->launch();
    } catch (...) {
        if (!unheard_)
            throw;
    }
    if (unheard_)
        std::rethrow_exception(unheard_);
    Base::throwIfStopped();
    if (!completed)
        throw EngineFailure(errors_);
}

bool EngineRun::isGoingOn() noexcept { return running != nullptr; }

bool requestStop() noexcept {
    Base::askToStop();
    Pelko::Application* application = running;
    if (application)
        application->requestStop();
    return application != nullptr;
}

} // namespace Analysis
