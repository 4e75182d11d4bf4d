// A run of the command, and the messages of its failures.
#include "cli/Command.h"

#include "analysis/Session.h"
#include "base/Characters.h"
#include "base/Stopping.h"
#include "cli/Ending.h"
#include "cli/Output.h"
#include "cli/Progress.h"
#include "cli/Terminal.h"
#include "report/Json.h"
#include "report/Text.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace Cli {

namespace {

// Prints lines on standard error. Names in them cannot steer the terminal.
void say(std::string_view lines) { std::cerr << Base::printableLines(lines) << '\n'; }

void print(const Base::Diagnostics& diagnostics, bool quiet) {
    for (const Base::Diagnostic& diagnostic : diagnostics.all())
        if (!quiet || diagnostic.severity == Base::Severity::error)
            say(toString(diagnostic));
}

// As the engine's console writes it.
void printEngineMessage(const Ruvex::Console::Message& message, bool color) {
    using enum Ruvex::Console::Level;
    const auto [word, ink] = message.level == Error     ? std::pair("error", "\x1b[31m")
                             : message.level == Warning ? std::pair("warning", "\x1b[33m")
                             : message.level == Remark  ? std::pair("remark", "\x1b[36m")
                                                        : std::pair("", "");
    const bool hasWord = *word != '\0';
    std::string line(2 * static_cast<std::size_t>(message.indentation), ' ');
    line += hasWord && color ? ink + std::string(word) + "\x1b[0m" : word;
    if (!message.label.empty())
        line += (hasWord ? " [" : "[") + Base::printable(message.label) + (hasWord ? "]: " : "] ");
    else if (hasWord)
        line += ": ";
    std::cerr << line << Base::printable(message.text) << '\n';
}

// An output that would overwrite a file that a constraint file sources.
class OverwritesInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void refuseToOverwrite(const Options& options, const std::string& input) {
    if (options.json && wouldOverwrite(*options.json, input))
        throw OverwritesInput(usageError("--json: would overwrite the input '" + input + "'"));
    if (wouldOverwrite("-", input))
        throw OverwritesInput(usageError("standard output: would overwrite the input '" + input + "'"));
}

// The text to standard output, to its last byte.
void writeText(const Report::Report& report, const Options& options) {
    Output text("-");
    Report::TextOptions how;
    how.color = wantsColor(options.color, STDOUT_FILENO);
    how.width = columnsOf(STDOUT_FILENO, how.width);
    how.quiet = options.quiet;
    how.listUnconstrained = options.unconstrained;
    how.listExceptions = options.exceptions;
    writeText(report, how, text.stream());
    text.finish();
}

ExitStatus analyze(const Options& options, Analysis::Session& session) {
    std::optional<Output> json;
    if (options.json)
        json.emplace(*options.json);
    const Report::Report report = [&] {
        Progress progress(STDERR_FILENO, wantsProgress(options.progress, STDERR_FILENO));
        session.onStage = [&](std::string_view stage) { progress.show(stage); };
        session.onEngineMessage =
            [&, color = wantsColor(options.color, STDERR_FILENO)](const Ruvex::Console::Message& message) {
                progress.clear();
                printEngineMessage(message, color);
            };
        session.onInput = [&](const std::string& input) { refuseToOverwrite(options, input); };
        return session.run(options);
    }();
    print(session.diagnostics, options.quiet);
    if (options.verbose)
        for (const Analysis::Stage& stage : session.stages)
            std::cerr << "vorlen: " << stage.name << ": " << stage.seconds << " s\n";
    if (json) {
        writeJson(report, json->stream());
        json->finish();
    }
    if (options.json != "-")
        writeText(report, options);
    // Only now that all outputs are complete does the file take its place.
    const ExitStatus status = report.isViolated() && !options.allowViolations ? timingViolated : timingMet;
    conclude(status, [&] {
        if (json)
            json->commit();
    });
    return status;
}

ExitStatus analyzeOrRefuse(const Options& options) {
    Analysis::Session session;
    session.limits.giveUp = endBadScript;
    try {
        return analyze(options, session);
    } catch (const Base::BadInput& bad) {
        print(session.diagnostics, options.quiet);
        say(bad.what());
        return badInput;
    } catch (const CannotWrite& failure) {
        say(Base::printable(failure.what()));
        return badInput;
    } catch (const OverwritesInput& refused) {
        say(Base::printable(refused.what()));
        return badInput;
    } catch (const Base::Interrupted&) {
        std::cerr << "vorlen: interrupted\n";
        return interrupted;
    }
}

// A failure that no input leads to.
ExitStatus giveUp() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        std::cerr << "vorlen: error: out of memory\n";
    } catch (const std::exception& failure) {
        say("vorlen: internal error: " + std::string(failure.what()));
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
        say(Base::printable(failure.what()));
        return badInput;
    } catch (...) {
        return giveUp();
    }
}

} // namespace Cli
