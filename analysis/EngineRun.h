// A run of the engine: its tool, and everything global that is set for it. Destructors put all of it back,
// whatever is thrown: the console with its recorder and output, the muting of the engine's messages, the
// listeners, and what requestStop() stops.
//
//     Analysis::EngineRun run(*model.host().getApplication(), verbose, hear);
//     run.launch(harvest);
//
// Only one can exist at a time, since the engine's tool has a name.
#pragma once

#include "Pelko/Application.h"
#include "Pelko/Object.h"
#include "Ruvex/Console.h"
#include "Vorlen/Tool.h"

#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Analysis {

// The engine gave up. what() is "the analysis was given up: " and the last error that it reported.
class EngineFailure : public std::logic_error {
public:
    explicit EngineFailure(std::vector<std::string> errors);

    // What the engine reported as errors in the launch, in order.
    const std::vector<std::string>& errors() const { return errors_; }

private:
    std::vector<std::string> errors_;
};

class EngineRun {
public:
    using Message = Ruvex::Console::Message;
    using Hear = std::function<void(const Message&)>;

    // Takes the console: it writes nothing until the object is destroyed. `hear` is called for each of its
    // messages instead, if `verbose`; otherwise most of them are not even made. Throws Ruvex::FactoryFailed
    // if another tool of the engine exists.
    EngineRun(Pelko::Application& application, bool verbose, Hear hear = {});
    EngineRun(const EngineRun&) = delete;
    EngineRun& operator=(const EngineRun&) = delete;
    ~EngineRun();

    // One launch of the engine on the design that the host's globals mean. The engine reports why it fails on
    // the console only, as error messages; these are collected, and thrown as an EngineFailure. Throws
    // Base::Interrupted instead if a stop was requested, and what `hear` threw if that ended the launch.
    void launch();
    // The same; meanwhile the listener hears of all objects and of all sweeps.
    template <class Listener>
    void launch(Listener& listener) {
        const Listening listening(listener, listener);
        launch();
    }

    // Whether a launch goes on, in any thread.
    static bool isGoingOn() noexcept;

private:
    class ConsoleTaken {
    public:
        ConsoleTaken();
        ConsoleTaken(const ConsoleTaken&) = delete;
        ConsoleTaken& operator=(const ConsoleTaken&) = delete;
        ~ConsoleTaken();

    private:
        Ruvex::Console before_;
    };
    class Muting {
    public:
        explicit Muting(bool muted);
        Muting(const Muting&) = delete;
        Muting& operator=(const Muting&) = delete;
        ~Muting();

    private:
        const bool before_;
    };
    class Listening {
    public:
        Listening(Pelko::ObjectListener& objects, Pelko::SweepListener& sweeps);
        Listening(const Listening&) = delete;
        Listening& operator=(const Listening&) = delete;
        ~Listening();

    private:
        Pelko::ObjectListener& objects_;
        Pelko::SweepListener& sweeps_;
    };
    struct Destroy {
        void operator()(Vorlen::Tool* tool) const { tool->destroy(); }
    };

    void record(const Message& message);

    Pelko::Application& application_;
    const Hear hear_;
    std::vector<std::string> errors_; // of the launch
    std::exception_ptr unheard_;      // what `hear_` threw
    // From here on in the order in which it is set.
    const ConsoleTaken console_;
    const Muting muting_;
    const std::unique_ptr<Vorlen::Tool, Destroy> tool_;
};

// Asks the run that goes on, if any, to stop, from another thread or a signal handler: it throws
// Base::Interrupted. Returns whether a launch goes on, which heeds the request at once. Everything else heeds
// it when it next looks (Base::throwIfStopped()).
bool requestStop() noexcept;

} // namespace Analysis
