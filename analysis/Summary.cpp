// Sums and counts of a run, and the names behind its numbers.
#include "analysis/Summary.h"

#include "analysis/Describe.h"
#include "analysis/EngineTimes.h"

#include <algorithm>
#include <map>
#include <set>

namespace Analysis {

using Base::none;
using Report::MaybeTime;

namespace {

void add(Report::Summary& summary, Time slack) {
    ++summary.endpoints;
    summary.worstSlack = std::min(summary.worstSlack.value_or(slack), slack);
    if (slack >= 0)
        return;
    ++summary.failing;
    summary.total += slack;
    summary.worst = std::min(summary.worst, slack);
}

// By the clock that captures, in one pass over the end points.
using ClockSums = Base::IndexVector<Design::ClockId, PerSide<Report::Summary>>;
ClockSums sumByClock(const AnalyzedDesign& of, const EndpointResults& endpoints) {
    ClockSums sums(of.clocks.size());
    for (const auto& [pin, result] : endpoints.worst)
        for (const Side side : Base::bothSides)
            if (const std::optional<Worst>& worst = result[side]; worst && worst->edges.capture != none)
                add(sums[worst->edges.capture][side], worst->slack);
    return sums;
}

// The period that a clock achieves by its own paths; nothing if it has none.
MaybeTime achievedPeriod(const AnalyzedDesign& of, const EndpointResults& endpoints, Design::ClockId clock) {
    MaybeTime achieved;
    if (of.clocks[clock].period == 0)
        achieved = ordinary(of.model.host().getAnalyzer()->getPeriod(of.model.root(clock)));
    else if (const auto own = endpoints.achievedPeriods.find(clock); own != endpoints.achievedPeriods.end())
        achieved = own->second;
    return achieved && *achieved > 0 ? achieved : std::nullopt;
}

void fillClocks(const AnalyzedDesign& of, const EndpointResults& endpoints, Report::Report& report) {
    const ClockSums sums = sumByClock(of, endpoints);
    for (const Design::ClockId number : sums.ids()) {
        const Model::Clock& clock = of.clocks[number];
        if (clock.removed)
            continue;
        Report::Clock& filled = report.clocks.emplace_back();
        filled.name = clock.name;
        if (clock.period > 0) {
            filled.period = clock.period;
            filled.waveform = {clock.rise, clock.fall};
        }
        for (const Model::NodeId target : clock.targets)
            filled.sources.push_back(of.network.nameOf(target));
        std::ranges::sort(filled.sources);
        filled.propagated = clock.propagated;
        if (clock.master != none)
            filled.generatedFrom = of.clocks[clock.master].name;
        filled.achievedPeriod = achievedPeriod(of, endpoints, number);
        filled.setup = sums[number].setup;
        filled.hold = sums[number].hold;
    }
}

// One side of an end point, into the members of the report's end point that hold that side.
void fillSide(const AnalyzedDesign& of, const Worst& worst, MaybeTime& slack, std::string (&clocks)[2],
              std::optional<Report::Exception>& exception) {
    const auto nameOf = [&](Design::ClockId clock) {
        return clock == none ? std::string() : of.clocks[clock].name;
    };
    slack = worst.slack;
    clocks[0] = nameOf(worst.edges.launch);
    clocks[1] = nameOf(worst.edges.capture);
    if (worst.exception != none)
        exception = describe(of.constraints, worst.exception);
}

void fillEndpoints(const AnalyzedDesign& of, const EndpointResults& endpoints, Report::Report& report) {
    for (const auto& [pin, result] : endpoints.worst) {
        Report::Endpoint& endpoint = report.endpoints.emplace_back();
        endpoint.pin = of.design.pinName(pin);
        if (result.setup) {
            fillSide(of, *result.setup, endpoint.setupSlack, endpoint.setupClocks, endpoint.setupException);
            add(report.setup, result.setup->slack);
        }
        if (result.hold) {
            fillSide(of, *result.hold, endpoint.holdSlack, endpoint.holdClocks, endpoint.holdException);
            add(report.hold, result.hold->slack);
        }
    }
    std::ranges::sort(report.endpoints, {}, &Report::Endpoint::pin);
}

// Pins that could be end points and have no slack.
void fillUnconstrained(const AnalyzedDesign& of, const EndpointResults& endpoints, bool list,
                       Report::Report& report) {
    const Design::RoutedDesign& design = of.design;
    for (const Design::PinId pin : Base::firstIds<Design::PinId>(design.pins.size())) {
        const bool output = design.isPort(pin) && design.pins[pin].direction != Design::Direction::input;
        if ((!output && !design.isDataPin(pin)) || endpoints.worst.contains(pin))
            continue;
        ++report.unconstrainedEndpoints;
        if (list)
            report.unconstrained.push_back(design.pinName(pin));
    }
    std::ranges::sort(report.unconstrained);
}

void fillPulseChecks(const AnalyzedDesign& of, Report::Report& report) {
    for (const Design::PulseCheck& check : of.design.pulseChecks)
        for (const Design::ClockId number : of.model.clocksAt(check.pin)) {
            const Model::Clock& clock = of.clocks[number];
            if (clock.period == 0)
                continue;
            const Time low = clock.period - clock.high();
            const Time width = check.edge == Design::Transition::rise   ? clock.high()
                               : check.edge == Design::Transition::fall ? low
                                                                        : std::min(clock.high(), low);
            const Time actual = check.period ? clock.period : width;
            report.pulseChecks.push_back({of.design.pinName(check.pin), check.period, clock.name,
                                          check.required, actual, actual - check.required});
        }
    std::ranges::sort(report.pulseChecks, {}, [](const Report::PulseCheck& check) {
        return std::tie(check.pin, check.period, check.clock, check.required);
    });
}

// An exception one of whose lists is empty.
Report::ExceptionUse skipped(const Design::Constraints& constraints, const Design::Exception& exception) {
    Report::ExceptionUse use;
    use.exception = describe(constraints, exception);
    use.text = exception.text;
    use.status = "matches nothing";
    return use;
}

// The lines of the commands that overrule an exception everywhere.
template <class Use>
std::vector<unsigned> overruling(const Design::Constraints& constraints, const Use& use) {
    std::set<unsigned> lines;
    for (const Design::ExceptionId other : use.overruledBy)
        lines.insert(constraints.exceptions[other].origin.line);
    for (const Design::ClockGroupsId groups : use.cutByGroups)
        lines.insert(constraints.clockGroups[groups].origin.line);
    return {lines.begin(), lines.end()};
}

// The number of reported paths that each command governs, by its file and line.
using PathCounts = std::map<std::pair<std::string, unsigned>, std::uint64_t>;
PathCounts countPaths(const std::vector<Report::Path>& paths) {
    PathCounts counts;
    for (const Report::Path& path : paths)
        for (const auto& by : {path.exception, path.groupedBy})
            if (by)
                ++counts[{by->file, by->line}];
    return counts;
}

Report::ExceptionUse useOf(const AnalyzedDesign& of, const EndpointResults& endpoints,
                           const PathCounts& paths, Design::ExceptionId number) {
    Report::ExceptionUse use;
    use.exception = describe(of.constraints, number);
    use.text = of.constraints.exceptions[number].text;
    use.setupEndpoints = endpoints.governed.setup[number];
    use.holdEndpoints = endpoints.governed.hold[number];
    if (const auto own = paths.find({use.exception.file, use.exception.line}); own != paths.end())
        use.paths = own->second;
    const bool governs = use.setupEndpoints + use.holdEndpoints != 0;
    if (!governs)
        use.overruledBy = overruling(of.constraints, of.exceptions.uses()[number]);
    use.status = governs ? "governs" : use.overruledBy.empty() ? "matches no path" : "always overruled";
    return use;
}

// In the order of the commands, those that were skipped included.
void fillExceptions(const AnalyzedDesign& of, const EndpointResults& endpoints, Report::Report& report) {
    const Design::Constraints& constraints = of.constraints;
    const PathCounts paths = countPaths(report.paths);
    auto next = constraints.skippedExceptions.begin();
    const auto addSkipped = [&](std::size_t position) {
        for (; next != constraints.skippedExceptions.end() && next->position <= position; ++next)
            report.exceptions.push_back(skipped(constraints, next->exception));
    };
    for (const Design::ExceptionId number :
         Base::firstIds<Design::ExceptionId>(constraints.exceptions.size())) {
        addSkipped(number.number());
        report.exceptions.push_back(useOf(of, endpoints, paths, number));
    }
    addSkipped(constraints.exceptions.size());
}

} // namespace

void fillReport(const AnalyzedDesign& of, Harvested results, bool listUnconstrained, Report::Report& report) {
    report.design = of.design.name;
    fillEndpoints(of, results.endpoints, report);
    fillClocks(of, results.endpoints, report);
    report.paths = std::move(results.paths);
    fillUnconstrained(of, results.endpoints, listUnconstrained, report);
    fillPulseChecks(of, report);
    fillExceptions(of, results.endpoints, report);
}

} // namespace Analysis
