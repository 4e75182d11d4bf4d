// The command line: options, their checks, help.
#include "cli/Options.h"

#include "base/Characters.h"
#include "base/Version.h"
#include "cli/Output.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <functional>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <set>
#include <string_view>
#include <utility>

namespace Cli {

namespace {

constexpr std::size_t helpColumn = 36;
constexpr std::string_view exitStatusHelp =
    "Exit status: 0 timing met or nothing constrained, 1 timing violated, 2 bad input or usage,\n"
    "3 internal error, 130 interrupted.";

template <typename Value>
using Choices = std::initializer_list<std::pair<const char*, Value>>;

// "a, b or c", or with another separator all along.
template <typename Value>
std::string listed(Choices<Value> choices, std::string_view last) {
    std::string text;
    std::size_t left = choices.size();
    for (const auto& [name, value] : choices) {
        text += name;
        --left;
        if (left != 0)
            text += left == 1 ? last : last == "|" ? "|" : ", ";
    }
    return text;
}

[[noreturn]] void refuse(const std::string& option, const std::string& expected, const std::string& found) {
    throw CLI::ValidationError(option, "expected " + expected + ", found '" + found + "'");
}

// The options of 'vorlen analyze', bound to an Options.
class AnalyzeCommand {
public:
    AnalyzeCommand(CLI::App& app, Options& options) : app_(app), options_(options) {
        inputs();
        analysis();
        contents();
        outputs();
    }

    // Checks what concerns more than one option.
    void finish() {
        if (options_.sdf.empty())
            throw CLI::RequiredError("--sdf");
        if (setupOnly_ != holdOnly_) {
            options_.setupPaths = setupOnly_;
            options_.holdPaths = holdOnly_;
        }
        if (options_.quiet && options_.verbose)
            throw CLI::ValidationError("--quiet", "excludes --verbose");
        if (options_.json)
            refuseInput("--json", *options_.json);
        refuseInput("standard output", "-");
    }

private:
    void inputs() {
        text("--sdf", "FILE", "the delays; may be compressed by gzip",
             [this](std::string v) { options_.sdf = std::move(v); });
        value("--sdc", "FILE", "constraints; may be given several times, read in order",
              [this](const std::string& found) { options_.sdc.push_back(checked("--sdc", "FILE", found)); });
        text("--netlist", "FILE",
             "ports and connectivity: .json or .v, also .gz (default: the SDF's INTERCONNECT)",
             [this](std::string v) { options_.netlist = std::move(v); });
        text("--top", "NAME",
             "the netlist's module to analyse (default: the one marked top, or the only one)",
             [this](std::string v) { options_.top = std::move(v); });
    }

    void analysis() {
        using enum Delays;
        choice<Delays>("--delays", "which values of a triple the early and the late side use",
                       {{"min", min}, {"typ", typ}, {"max", max}, {"minmax", minmax}}, options_.delays);
        choice<ClockDefault>("--clocks", "what a clock is if the constraints do not specify it",
                             {{"propagated", ClockDefault::propagated}, {"ideal", ClockDefault::ideal}},
                             options_.clocks);
        choice<int>("--resolution", "the unit of time of the analysis",
                    {{"1ps", -12}, {"100fs", -13}, {"10fs", -14}, {"1fs", -15}}, options_.scale);
        choice<AnalysisMode>("--mode", "the engine's analysis mode",
                             {{"exhaustive", AnalysisMode::exhaustive}, {"critical", AnalysisMode::critical}},
                             options_.mode);
    }

    void contents() {
        number("--paths", "how many setup and how many hold paths are reported", 0, options_.paths);
        number("--per-endpoint", "report at most N of these paths per end point", 1, options_.perEndpoint);
        app_.add_flag("--setup", setupOnly_, "report only setup paths (with --hold: both)");
        app_.add_flag("--hold", holdOnly_, "report only hold paths (with --setup: both)");
        app_.add_flag("--unconstrained", options_.unconstrained, "list the unconstrained end points");
        app_.add_flag("--exceptions", options_.exceptions,
                      "list the exceptions: what each governs, or why it governs nothing");
    }

    void outputs() {
        text("--json", "FILE",
             "write the whole result as JSON; - is standard output, then no text is printed",
             [this](std::string v) { options_.json = std::move(v); });
        app_.add_flag("--quiet", options_.quiet, "print only violations and errors");
        app_.add_flag("--verbose", options_.verbose, "print the engine's own messages too");
        choice<ColorWhen>(
            "--color", "colour in the text",
            {{"auto", ColorWhen::automatic}, {"always", ColorWhen::always}, {"never", ColorWhen::never}},
            options_.color);
        choice<ProgressWhen>("--progress", "show a progress line, only on a terminal",
                             {{"auto", ProgressWhen::automatic}, {"never", ProgressWhen::never}},
                             options_.progress);
        app_.add_flag("--allow-violations", options_.allowViolations,
                      "exit with 0 even if timing is violated");
    }

    // Takes every value as it comes, so that none is joined with another one or passed over.
    CLI::Option* value(const std::string& name, const std::string& type, const std::string& help,
                       std::function<void(const std::string&)> take) {
        return app_.add_option_function<std::string>(name, std::move(take), help)
            ->type_name(type)
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->trigger_on_parse();
    }

    template <typename Take>
    void single(const std::string& name, const std::string& type, const std::string& help, Take take) {
        value(name, type, help, [this, name, take](const std::string& found) {
            if (!given_.insert(name).second)
                throw CLI::ValidationError(name, "given more than once");
            take(found);
        });
    }

    // Neither nothing nor what was meant as the next option.
    static const std::string& checked(const std::string& name, const std::string& type,
                                      const std::string& found) {
        if (found.empty() || found.starts_with("--"))
            refuse(name, type == "FILE" ? "a file name" : "a name", found);
        return found;
    }

    template <typename Assign>
    void text(const std::string& name, const std::string& type, const std::string& help, Assign assign) {
        single(name, type, help,
               [name, type, assign](const std::string& found) { assign(checked(name, type, found)); });
    }

    template <typename Value>
    void choice(const std::string& name, const std::string& help, Choices<Value> choices, Value& target) {
        const std::vector<std::pair<std::string, Value>> known(choices.begin(), choices.end());
        std::string standard;
        for (const auto& [text, value] : known)
            if (value == target)
                standard = text;
        const auto take = [name, known, expected = listed(choices, " or "),
                           &target](const std::string& found) {
            const auto choice = std::ranges::find(known, found, &std::pair<std::string, Value>::first);
            if (choice == known.end())
                refuse(name, expected, found);
            target = choice->second;
        };
        single(name, listed(choices, "|"), help + " (default: " + standard + ")", take);
    }

    void number(const std::string& name, const std::string& help, unsigned least, unsigned& target) {
        const auto take = [name, least, &target](const std::string& found) {
            unsigned number = 0;
            const char* const end = found.data() + found.size();
            const auto [stop, error] = std::from_chars(found.data(), end, number);
            if (error != std::errc() || stop != end || number < least)
                refuse(name,
                       "a whole number from " + std::to_string(least) + " to " +
                           std::to_string(std::numeric_limits<unsigned>::max()),
                       found);
            target = number;
        };
        single(name, "N", help + " (default: " + std::to_string(target) + ")", take);
    }

    // An output that would replace an input is a slip. Files that constraints source are not known yet.
    void refuseInput(const std::string& option, const std::string& path) const {
        std::vector<std::string> inputs = options_.sdc;
        inputs.push_back(options_.sdf);
        if (options_.netlist)
            inputs.push_back(*options_.netlist);
        for (const std::string& input : inputs) {
            if (wouldOverwrite(path, input))
                throw CLI::ValidationError(option, "would overwrite the input '" + input + "'");
        }
    }

    CLI::App& app_;
    Options& options_;
    bool setupOnly_ = false;
    bool holdOnly_ = false;
    std::set<std::string> given_;
};

// What the parser took for no option and no value.
void refuseRest(const std::vector<std::string>& rest) {
    if (rest.empty())
        return;
    const char* const what = rest.front().starts_with("-") ? "unknown option" : "unexpected argument";
    throw CLI::ParseError(std::string(what) + " '" + rest.front() + "'", CLI::ExitCodes::ExtrasError);
}

ExitStatus refuse(const std::string& text, std::ostream& err) {
    err << Base::printable(usageError(text)) << '\n';
    return badInput;
}

void parse(CLI::App& app, const CLI::App& analyze, int argc, const char* const* argv) {
    app.parse(argc, argv);
    refuseRest(app.remaining());
    refuseRest(analyze.remaining());
    if (!analyze.parsed())
        throw CLI::ParseError("expected a command: vorlen analyze --sdf FILE", CLI::ExitCodes::RequiredError);
}

} // namespace

std::string usageError(const std::string& text) {
    return "vorlen: error: " + text + " (see vorlen analyze --help)";
}

Invocation parse(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    Invocation invocation;
    CLI::App app("Static timing analysis of a routed design.", "vorlen");
    app.set_help_flag("--help", "print this help and exit");
    app.set_version_flag("--version", "vorlen " + std::string(Base::version), "print the version and exit");
    app.require_subcommand(0, 1);
    app.allow_extras();
    app.get_formatter()->column_width(helpColumn);
    CLI::App* const analyze =
        app.add_subcommand("analyze", "Read a routed design, analyse its timing, print a report.");
    analyze->footer(std::string(exitStatusHelp));

    try {
        AnalyzeCommand command(*analyze, invocation.options);
        parse(app, *analyze, argc, argv);
        command.finish();
    } catch (const CLI::CallForHelp&) {
        out << (analyze->parsed() ? analyze->help("vorlen") : app.help());
        invocation.exit = timingMet;
    } catch (const CLI::CallForVersion&) {
        out << "vorlen " << Base::version << '\n';
        invocation.exit = timingMet;
    } catch (const CLI::ArgumentMismatch& error) { // none given twice comes here, so a value is missing
        const std::string text = error.what();
        invocation.exit = refuse(text.substr(0, text.find(':')) + ": expected a value", err);
    } catch (const CLI::ParseError& error) {
        invocation.exit = refuse(error.what(), err);
    }
    return invocation;
}

} // namespace Cli
