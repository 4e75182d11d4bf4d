// A run of the command, and the messages of its failures.
#include "Command.h"

#include "../report/Json.h"
#include "../report/Text.h"
#include "Ending.h"
#include "Output.h"
#include "Progress.h"
#include "Session.h"
#include "Terminal.h"

#include <iostream>
#include <new>
#include <optional>

#include <unistd.h>

namespace Cli {

namespace {

void print(const Readers::Diagnostics& diagnostics, bool quiet) {
    for (const Readers::Diagnostic& diagnostic : diagnostics.all())
        if (!quiet || diagnostic.severity == Readers::Severity::error)
            std::cerr << toString(diagnostic) << '\n';
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

ExitStatus analyzeOrRefuse(const Options& options) {
    Session session;
    session.limits.giveUp = endBadScript;
    try {
        return analyze(options, session);
    } catch (const Readers::BadInput& bad) {
        print(session.diagnostics, options.quiet);
        std::cerr << bad.what() << '\n';
        return badInput;
    } catch (const CannotWrite& failure) {
        std::cerr << failure.what() << '\n';
        return badInput;
    } catch (const Interrupted&) {
        std::cerr << "vorlen: interrupted\n";
        return interrupted;
    }
}

// What no input leads to.
ExitStatus giveUp() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        std::cerr << "vorlen: error: out of memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "vorlen: internal error: " << failure.what() << '\n';
    }
    return internalError;
}

} // namespace

ExitStatus runCommand(const Options& options) noexcept {
    try {
        return analyzeOrRefuse(options);
    } catch (...) {
        return giveUp();
    }
}

ExitStatus printAnswer(const std::string& answer, ExitStatus status) noexcept {
    if (answer.empty())
        return status;
    try {
        Output output("-");
        output.stream() << answer;
        output.commit();
        return status;
    } catch (const CannotWrite& failure) {
        std::cerr << failure.what() << '\n';
        return badInput;
    } catch (...) {
        return giveUp();
    }
}

} // namespace Cli
