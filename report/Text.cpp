// The text report: its tables and the order of its sections.
#include "report/Text.h"

#include "report/Numbers.h"
#include "report/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <ostream>

namespace Report {

namespace {

using Align = Table::Align;

constexpr std::string_view absent = "-";

class Printer {
public:
    Printer(const Report& report, const TextOptions& options, std::ostream& out)
        : report_(report), options_(options), out_(out) {}

    void print() {
        out_ << "Design: " << (report_.design.empty() ? absent : printable(report_.design))
             << " (times in ns)\n";
        slacks();
        clocks();
        coverage();
        pulseChecks();
        paths(true);
        paths(false);
        if (options_.listUnconstrained)
            unconstrained();
        if (options_.listExceptions)
            exceptions();
    }

    void printViolations() {
        failing("setup", report_.setup);
        failing("hold", report_.hold);
        pulseChecks();
        paths(true);
        paths(false);
    }

private:
    // --- Cells ---

    std::string time(const MaybeTime& value) const {
        return value ? threeDigits(shownPs(*value, report_.scale)) : std::string(absent);
    }
    std::string slackText(Time value) const { return threeDigits(shownSlackPs(value, report_.scale)); }
    Table::Cell slack(const MaybeTime& value) const {
        if (!value)
            return absent;
        return {slackText(*value), *value < 0 ? Ink::bad : Ink::plain};
    }
    static std::string count(std::uint64_t value) { return std::to_string(value); }

    void title(std::string_view text) const {
        out_ << '\n' << paint(text, Ink::title, options_.color) << "\n\n";
    }
    void printTable(const Table& table) const { table.print(out_, options_.color); }

    // --- Sections ---

    void slacks() const {
        title("Slack");
        Table table({{"Clock"},
                     {"Check"},
                     {"Worst slack", Align::right},
                     {"Total negative slack", Align::right},
                     {"Failing", Align::right},
                     {"End points", Align::right}});
        for (const Clock& clock : report_.clocks) {
            table.add(side(clock.name, "setup", clock.setup));
            table.add(side(clock.name, "hold", clock.hold));
        }
        table.add(side("(all)", "setup", report_.setup));
        table.add(side("(all)", "hold", report_.hold));
        printTable(table);
    }

    std::vector<Table::Cell> side(std::string_view clock, std::string_view check,
                                  const Summary& summary) const {
        return {clock,
                check,
                slack(summary.worstSlack),
                slack(summary.total),
                {count(summary.failing), summary.failing != 0 ? Ink::bad : Ink::plain},
                count(summary.endpoints)};
    }

    void clocks() const {
        title("Clocks");
        if (report_.clocks.empty()) {
            out_ << "none\n";
            return;
        }
        Table table({{"Clock"},
                     {"Period", Align::right},
                     {"Achieved period", Align::right},
                     {"Fmax (MHz)", Align::right},
                     {"Network"},
                     {"Source"}});
        for (const Clock& clock : report_.clocks) {
            const bool achieved = clock.achievedPeriod && *clock.achievedPeriod > 0;
            table.add({clock.name, time(clock.period), time(clock.achievedPeriod),
                       achieved ? fmaxMhz(*clock.achievedPeriod, report_.scale) : std::string(absent),
                       clock.propagated ? "propagated" : "ideal", sourceOf(clock)});
        }
        printTable(table);
    }

    static std::string sourceOf(const Clock& clock) {
        std::string text;
        for (const std::string& source : clock.sources)
            text += (text.empty() ? "" : ", ") + source;
        if (text.empty())
            text = "(virtual)";
        return clock.generatedFrom ? fmt::format("{} (generated from {})", text, *clock.generatedFrom) : text;
    }

    void coverage() const {
        title("Coverage");
        const std::uint64_t constrained = report_.endpoints.size();
        const auto failing = std::ranges::count_if(report_.pulseChecks, fails);
        Table table({{""}, {"", Align::right}, {""}});
        table.add({"arcs with a delay", count(report_.arcs - report_.arcsWithoutDelay),
                   fmt::format("of {}", report_.arcs)});
        table.add({"end points constrained", count(constrained),
                   fmt::format("of {}", constrained + report_.unconstrainedEndpoints)});
        table.add({"end points unconstrained", count(report_.unconstrainedEndpoints), ""});
        table.add({"constraints that match nothing", count(report_.constraintsUnmatched), ""});
        table.add({"exceptions", count(report_.exceptions.size()), exceptionCounts()});
        table.add({"pulse checks", count(report_.pulseChecks.size()), fmt::format("{} failing", failing)});
        printTable(table);
    }

    // "3 governs, 1 matches nothing", in byte order of what they do.
    std::string exceptionCounts() const {
        std::map<std::string_view, std::size_t> counts;
        for (const ExceptionUse& use : report_.exceptions)
            ++counts[use.status];
        std::string text;
        for (const auto& [status, number] : counts)
            text += fmt::format("{}{}: {}", text.empty() ? "" : ", ", status, number);
        return text;
    }

    static bool fails(const PulseCheck& check) { return check.slack < 0; }

    void pulseChecks() const {
        Table table({{"Pin"},
                     {"Check"},
                     {"Clock"},
                     {"Required", Align::right},
                     {"Actual", Align::right},
                     {"Slack", Align::right}});
        for (const PulseCheck& check : report_.pulseChecks)
            if (fails(check))
                table.add(pulseCheck(check));
        if (table.empty())
            return;
        title("Pulse checks that fail");
        printTable(table);
    }

    // The actual value is the shown required one plus the shown slack, so that the row adds up.
    std::vector<Table::Cell> pulseCheck(const PulseCheck& check) const {
        const Time actual = shownPs(check.required, report_.scale) + shownSlackPs(check.slack, report_.scale);
        return {check.pin,           check.period ? "period" : "width",
                check.clock,         time(check.required),
                threeDigits(actual), slack(check.slack)};
    }

    void paths(bool setup) const {
        bool first = true;
        for (const Path& path : report_.paths) {
            if (path.setup != setup || (options_.quiet && path.slack >= 0))
                continue;
            if (first)
                title(setup ? "Setup paths, worst first" : "Hold paths, worst first");
            else
                out_ << "\n\n";
            first = false;
            writePath(path, report_.scale, options_.color, out_);
        }
    }

    void unconstrained() const {
        title("Unconstrained end points");
        for (const std::string& pin : report_.unconstrained)
            out_ << printable(pin) << '\n';
        if (report_.unconstrained.empty())
            out_ << "none\n";
    }

    void exceptions() const {
        title("Exceptions");
        if (report_.exceptions.empty()) {
            out_ << "none\n";
            return;
        }
        Table table({{"Line"},
                     {"Kind"},
                     {"Value", Align::right},
                     {"Setup", Align::right},
                     {"Hold", Align::right},
                     {"Paths", Align::right},
                     {"Status"}});
        for (const ExceptionUse& use : report_.exceptions)
            table.add({fmt::format("{}:{}", use.exception.file, use.exception.line), use.exception.kind,
                       use.exception.value.empty() ? absent : std::string_view(use.exception.value),
                       count(use.setupEndpoints), count(use.holdEndpoints), count(use.paths), statusOf(use)});
        printTable(table);
        out_ << "\nSetup and Hold count the end points that an exception governs, Paths the reported "
                "ones.\n\n";
        for (const ExceptionUse& use : report_.exceptions)
            command(use);
    }

    static std::string statusOf(const ExceptionUse& use) {
        const std::string_view by = use.overruledBy.size() == 1 ? " by line " : " by lines ";
        std::string text = use.status;
        for (std::size_t i = 0; i < use.overruledBy.size(); ++i)
            text += fmt::format("{}{}", i == 0 ? by : std::string_view(", "), use.overruledBy[i]);
        return text;
    }

    // The command's words after its place, on lines of the given width as far as words allow.
    void command(const ExceptionUse& use) const {
        constexpr std::string_view indentation = "    ";
        const std::string text = printable(use.text);
        std::string line = fmt::format("{}:{}:", printable(use.exception.file), use.exception.line);
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const std::string word = text.substr(at, end - at);
            at = end + 1;
            if (line.size() + 1 + word.size() > options_.width && line.size() > indentation.size()) {
                out_ << line << '\n';
                line = indentation;
                line += word;
            } else {
                line += " " + word;
            }
        }
        out_ << line << '\n';
    }

    void failing(std::string_view check, const Summary& summary) const {
        if (summary.failing != 0)
            out_ << fmt::format("{}: {} of {} end points fail, worst slack {} ns, total {} ns\n", check,
                                summary.failing, summary.endpoints, slackText(summary.worst),
                                slackText(summary.total));
    }

    const Report& report_;
    const TextOptions& options_;
    std::ostream& out_;
};

} // namespace

void writeText(const Report& report, const TextOptions& options, std::ostream& out) {
    Printer printer(report, options, out);
    if (options.quiet)
        printer.printViolations();
    else
        printer.print();
}

} // namespace Report
