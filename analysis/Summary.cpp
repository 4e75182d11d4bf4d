// Sums and counts of a run, and the names behind its numbers.
#include "analysis/Summary.h"

#include <algorithm>
#include <map>
#include <set>

namespace Analysis {

using Base::none;

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
struct ClockSums {
    Report::Summary setup, hold;
};
std::vector<ClockSums> sumByClock(const Results& results) {
    std::vector<ClockSums> sums(results.clocks.size());
    for (const auto& [pin, result] : results.harvest.endpoints()) {
        if (result.setup && result.setup->capture != none)
            add(sums[result.setup->capture].setup, result.setup->slack);
        if (result.hold && result.hold->capture != none)
            add(sums[result.hold->capture].hold, result.hold->slack);
    }
    return sums;
}

void fillClocks(const Results& results, Report::Report& report) {
    const std::vector<ClockSums> sums = sumByClock(results);
    for (std::uint32_t number = 0; number < results.clocks.size(); ++number) {
        const Model::Clock& clock = results.clocks[number];
        if (clock.removed)
            continue;
        Report::Clock& filled = report.clocks.emplace_back();
        filled.name = clock.name;
        if (clock.period > 0) {
            filled.period = clock.period;
            filled.waveform = {clock.rise, clock.fall};
        }
        for (const std::uint32_t target : clock.targets)
            filled.sources.push_back(results.network.nameOf(target));
        std::ranges::sort(filled.sources);
        filled.propagated = clock.propagated;
        if (clock.master)
            filled.generatedFrom = results.clocks[*clock.master].name;
        std::optional<Time> achieved = results.harvest.achievedPeriod(number);
        if (clock.period == 0)
            achieved = ordinary(results.model.host().getAnalyzer()->getPeriod(results.model.root(number)));
        if (achieved && *achieved > 0)
            filled.achievedPeriod = achieved;
        filled.setup = sums[number].setup;
        filled.hold = sums[number].hold;
    }
}

void fillEndpoints(const Results& results, Report::Report& report) {
    const auto nameOf = [&](std::uint32_t clock) {
        return clock == none ? std::string() : results.clocks[clock].name;
    };
    for (const auto& [pin, result] : results.harvest.endpoints()) {
        Report::Endpoint& endpoint = report.endpoints.emplace_back();
        endpoint.pin = results.design.pinName(pin);
        if (result.setup) {
            endpoint.setupSlack = result.setup->slack;
            endpoint.setupClocks[0] = nameOf(result.setup->launch);
            endpoint.setupClocks[1] = nameOf(result.setup->capture);
            if (result.setup->exception != none)
                endpoint.setupException = describe(results.constraints, result.setup->exception);
            add(report.setup, result.setup->slack);
        }
        if (result.hold) {
            endpoint.holdSlack = result.hold->slack;
            endpoint.holdClocks[0] = nameOf(result.hold->launch);
            endpoint.holdClocks[1] = nameOf(result.hold->capture);
            if (result.hold->exception != none)
                endpoint.holdException = describe(results.constraints, result.hold->exception);
            add(report.hold, result.hold->slack);
        }
    }
    std::ranges::sort(report.endpoints, {}, &Report::Endpoint::pin);
}

// What could be an end point and has no slack.
void fillUnconstrained(const Results& results, bool list, Report::Report& report) {
    const Design::RoutedDesign& design = results.design;
    for (std::uint32_t pin = 0; pin < design.pins.size(); ++pin) {
        const bool output = design.isPort(pin) && design.pins[pin].direction != Design::Direction::input;
        if ((!output && !design.isDataPin(pin)) || results.harvest.endpoints().contains(pin))
            continue;
        ++report.unconstrainedEndpoints;
        if (list)
            report.unconstrained.push_back(design.pinName(pin));
    }
    std::ranges::sort(report.unconstrained);
}

void fillPulseChecks(const Results& results, Report::Report& report) {
    for (const Design::PulseCheck& check : results.design.pulseChecks)
        for (const std::uint32_t number : results.model.clocksAt(check.pin)) {
            const Model::Clock& clock = results.clocks[number];
            if (clock.period == 0)
                continue;
            const Time low = clock.period - clock.high();
            const Time width = check.edge == Design::Transition::rise   ? clock.high()
                               : check.edge == Design::Transition::fall ? low
                                                                        : std::min(clock.high(), low);
            const Time actual = check.period ? clock.period : width;
            report.pulseChecks.push_back({results.design.pinName(check.pin), check.period, clock.name,
                                          check.required, actual, actual - check.required});
        }
    std::ranges::sort(report.pulseChecks, {}, [](const Report::PulseCheck& check) {
        return std::tie(check.pin, check.period, check.clock, check.required);
    });
}

// An exception of which a list came out empty.
Report::ExceptionUse skipped(const Design::Constraints& constraints, const Design::Exception& exception) {
    Report::ExceptionUse use;
    use.exception = describe(constraints, exception);
    use.text = exception.text;
    use.status = "matches nothing";
    return use;
}

// The lines that overrule an exception everywhere.
std::vector<unsigned> overruling(const Design::Constraints& constraints, const Exceptions::Use& use) {
    std::set<unsigned> lines;
    for (const std::uint32_t other : use.overruledBy)
        lines.insert(constraints.exceptions[other].origin.line);
    for (const std::uint32_t groups : use.cutByGroups)
        lines.insert(constraints.clockGroups[groups].origin.line);
    return {lines.begin(), lines.end()};
}

void fillExceptions(const Results& results, Report::Report& report) {
    const Design::Constraints& constraints = results.constraints;
    const std::vector<std::uint64_t> setups = results.harvest.governed(true),
                                     holds = results.harvest.governed(false);
    std::map<std::pair<std::string, unsigned>, std::uint64_t> paths;
    for (const Report::Path& path : report.paths)
        for (const auto& by : {path.exception, path.groupedBy})
            if (by)
                ++paths[{by->file, by->line}];
    auto next = constraints.skippedExceptions.begin();
    const auto addSkipped = [&](std::size_t position) {
        for (; next != constraints.skippedExceptions.end() && next->position <= position; ++next)
            report.exceptions.push_back(skipped(constraints, next->exception));
    };
    for (std::uint32_t number = 0; number < constraints.exceptions.size(); ++number) {
        addSkipped(number);
        const Exceptions::Use& use = results.exceptions.uses()[number];
        Report::ExceptionUse& filled = report.exceptions.emplace_back();
        filled.exception = describe(constraints, number);
        filled.text = constraints.exceptions[number].text;
        filled.setupEndpoints = setups[number];
        filled.holdEndpoints = holds[number];
        if (const auto own = paths.find({filled.exception.file, filled.exception.line}); own != paths.end())
            filled.paths = own->second;
        const bool governs = setups[number] + holds[number] != 0;
        if (!governs)
            filled.overruledBy = overruling(constraints, use);
        filled.status = governs                      ? "governs"
                        : filled.overruledBy.empty() ? "matches no path"
                                                     : "always overruled";
    }
    addSkipped(constraints.exceptions.size());
}

} // namespace

void fillReport(const Results& results, bool listUnconstrained, Report::Report& report) {
    report.design = results.design.name;
    fillEndpoints(results, report);
    fillClocks(results, report);
    report.paths = results.harvest.takePaths();
    fillUnconstrained(results, listUnconstrained, report);
    fillPulseChecks(results, report);
    fillExceptions(results, report);
}

} // namespace Analysis
