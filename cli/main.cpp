// The command `vorlen`: options in, a report out, and the exit status that says how it went.
#include "../report/Json.h"
#include "../report/Text.h"
#include "Output.h"
#include "Progress.h"
#include "Session.h"
#include "Terminal.h"

#include <csignal>
#include <iostream>
#include <optional>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace Cli;

void print(const Readers::Diagnostics& diagnostics, bool quiet) {
    for (const Readers::Diagnostic& diagnostic : diagnostics.all())
        if (!quiet || diagnostic.severity == Readers::Severity::error)
            std::cerr << toString(diagnostic) << '\n';
}

// Where nothing would heed the request, and when it is made again, the process ends here: nothing is written
// yet but a file that has not taken its place.
void onInterrupt(int) {
    static volatile std::sig_atomic_t requests = 0;
    requests = requests + 1;
    if (requestStop() && requests == 1)
        return;
    Output::abandon();
    constexpr std::string_view text = "vorlen: interrupted\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    _exit(interrupted);
}

// What else ends the process takes the begun file away too.
void onEnd(int signal) {
    Output::abandon();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// A limit of the files' size is told as any other failure to write.
void handleSignals() {
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onEnd);
    std::signal(SIGHUP, onEnd);
    std::signal(SIGXFSZ, SIG_IGN);
}

// A file that is opened must not take the place of a standard stream that was closed: what is meant for that
// would go into the file. In its place stands one that refuses to be written.
void keepStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", O_RDONLY | O_NOCTTY);
}

// The report to where it is wanted: JSON to its file, text to standard output unless the JSON goes there.
void write(const Report::Report& report, const Options& options, std::optional<Output>& json) {
    if (json) {
        writeJson(report, json->stream());
        json->commit();
    }
    if (options.json == "-")
        return;
    Output text("-");
    Report::TextOptions how;
    how.color = wantsColor(options.color, STDOUT_FILENO);
    how.width = columnsOf(STDOUT_FILENO, how.width);
    how.quiet = options.quiet;
    how.listUnconstrained = options.unconstrained;
    how.listExceptions = options.exceptions;
    writeText(report, how, text.stream());
    text.commit();
}

// Help or the version. A usage error leaves nothing to print here, and no need of standard output.
void print(const std::string& answer) {
    if (answer.empty())
        return;
    Output output("-");
    output.stream() << answer;
    output.commit();
}

ExitStatus analyze(const Options& options, Session& session) {
    std::optional<Output> json;
    if (options.json)
        json.emplace(*options.json);
    const Report::Report report = [&] {
        Progress progress(STDERR_FILENO, wantsProgress(options.progress, STDERR_FILENO));
        session.onStage = [&](std::string_view stage) { progress.show(stage); };
        return session.run(options);
    }();
    print(session.diagnostics, options.quiet);
    if (options.verbose)
        for (const Stage& stage : session.stages)
            std::cerr << "vorlen: " << stage.name << ": " << stage.seconds << " s\n";
    write(report, options, json);
    return report.isViolated() && !options.allowViolations ? timingViolated : timingMet;
}

} // namespace

int main(int argc, char** argv) {
    keepStandardStreams();
    std::ostringstream answer;
    const Invocation invocation = parse(argc, argv, answer, std::cerr);
    handleSignals();
    Session session;
    try {
        if (invocation.exit) {
            print(answer.str());
            return *invocation.exit;
        }
        return analyze(invocation.options, session);
    } catch (const Readers::BadInput& bad) {
        print(session.diagnostics, invocation.options.quiet);
        std::cerr << bad.what() << '\n';
        return badInput;
    } catch (const CannotWrite& failure) {
        std::cerr << failure.what() << '\n';
        return badInput;
    } catch (const Interrupted&) {
        std::cerr << "vorlen: interrupted\n";
        return interrupted;
    } catch (const std::bad_alloc&) {
        std::cerr << "vorlen: error: out of memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "vorlen: internal error: " << failure.what() << '\n';
    }
    return internalError;
}
