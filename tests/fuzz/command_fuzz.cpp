// A run of the command on any bytes: it rejects one of the files by name, or makes a report whose numbers
// agree with each other, and a second run does the same.
//
// The first byte chooses options. The files follow, with a line "====" between them: constraints, delays (if
// missing, those of a small design), a netlist (if missing, none).
#include "Netlists.h"
#include "analysis/Session.h"
#include "report/Json.h"
#include "report/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Fuzz::require;
using Report::MaybeTime;

constexpr const char* smallSdf = R"((DELAYFILE (SDFVERSION "3.0") (DESIGN "top") (DIVIDER /) (TIMESCALE 1ns)
(CELL (CELLTYPE "top") (INSTANCE) (DELAY (ABSOLUTE
(INTERCONNECT a r0/CLK (0)) (INTERCONNECT a r1/CLK (1:2:3)) (INTERCONNECT a s/CLK (0)) (INTERCONNECT b t/CLK (0))
(INTERCONNECT din r0/D (1)) (INTERCONNECT r0/Q g/A (1:1:2)) (INTERCONNECT r1/Q g/B (1)) (INTERCONNECT g/Z r1/D (0))
(INTERCONNECT r1/Q dout (0)) (INTERCONNECT s/Q t/D (2)) (INTERCONNECT t/Q u/CLK (0)) (INTERCONNECT t/Q t/D (1)))))
(CELL (CELLTYPE "DFF") (INSTANCE r0) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (1)))) (TIMINGCHECK
(SETUPHOLD D (posedge CLK) (0.1) (0.2)) (WIDTH (posedge CLK) (1))))
(CELL (CELLTYPE "DFF") (INSTANCE r1) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (1)))) (TIMINGCHECK (SETUPHOLD D (posedge CLK) (0) (0))))
(CELL (CELLTYPE "DFF") (INSTANCE s) (DELAY (ABSOLUTE (IOPATH (negedge CLK) Q (1)))) (TIMINGCHECK (SETUPHOLD D (negedge CLK) (0) (0))))
(CELL (CELLTYPE "DFF") (INSTANCE t) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (1)))) (TIMINGCHECK (SETUPHOLD D (posedge CLK) (0) (0))))
(CELL (CELLTYPE "DFF") (INSTANCE u) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (1)))) (TIMINGCHECK (RECREM R (posedge CLK) (0) (0))))
(CELL (CELLTYPE "AND") (INSTANCE g) (DELAY (ABSOLUTE (IOPATH A Z (1)) (IOPATH B Z (1)))))
)
)";

// --- The run ---

// Up to three files; what has no line "====" behind it goes to the end.
std::array<std::string_view, 3> split(std::string_view bytes) {
    constexpr std::string_view between = "\n====\n";
    std::array<std::string_view, 3> parts;
    for (std::size_t part = 0; part < parts.size(); ++part) {
        const std::size_t end = part + 1 < parts.size() ? bytes.find(between) : std::string_view::npos;
        parts[part] = bytes.substr(0, end);
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + between.size());
    }
    return parts;
}

Analysis::SessionOptions optionsOf(const Support::TemporaryFolder& folder, std::string_view bytes) {
    const unsigned choice = bytes.empty() ? 0 : static_cast<unsigned char>(bytes.front());
    const auto [sdc, sdf, netlist] = split(bytes.empty() ? bytes : bytes.substr(1));
    Analysis::SessionOptions options;
    options.sdc = {folder.write("d.sdc", sdc)};
    options.sdf = folder.write("d.sdf", sdf.empty() ? smallSdf : sdf);
    if (!netlist.empty())
        options.netlist = folder.write(netlist.front() == '{' ? "d.json" : "d.v", netlist);
    constexpr std::array delays = {Analysis::Delays::minmax, Analysis::Delays::min, Analysis::Delays::typ,
                                   Analysis::Delays::max};
    options.delays = delays[choice & 3];
    options.clocks = choice & 4 ? Analysis::ClockDefault::ideal : Analysis::ClockDefault::propagated;
    options.mode = choice & 8 ? Analysis::AnalysisMode::critical : Analysis::AnalysisMode::exhaustive;
    options.perEndpoint = choice & 16 ? 3 : 1;
    options.paths = 1000;
    options.unconstrained = true;
    return options;
}

constexpr Readers::Sdc::Limits limits{.time = std::chrono::milliseconds(200),
                                      .commands = 20'000,
                                      .depth = 100,
                                      .memory = 500,
                                      .grace = std::chrono::minutes(2),
                                      .giveUp = [](std::string_view line) noexcept {
                                          std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()),
                                                       line.data());
                                          std::abort();
                                      }};

// --- What must hold ---

struct Sums {
    std::uint64_t endpoints = 0, failing = 0;
    Report::Time total = 0;
    MaybeTime worst;

    void add(const MaybeTime& slack) {
        if (!slack)
            return;
        ++endpoints;
        failing += *slack < 0;
        total += std::min<Report::Time>(*slack, 0);
        worst = std::min(worst.value_or(*slack), *slack);
    }
    void add(const Report::Summary& summary) {
        endpoints += summary.endpoints;
        failing += summary.failing;
        total += summary.total;
        if (summary.worstSlack)
            worst = std::min(worst.value_or(*summary.worstSlack), *summary.worstSlack);
    }
    bool operator==(const Sums&) const = default;
};

Sums of(const Report::Summary& summary) {
    Sums sums;
    sums.add(summary);
    require(summary.worst == std::min<Report::Time>(summary.worstSlack.value_or(0), 0),
            "worst negative slack");
    return sums;
}

void checkSums(const Report::Report& report) {
    Sums setup, hold;
    const std::string* before = nullptr;
    for (const Report::Endpoint& endpoint : report.endpoints) {
        require(!before || *before < endpoint.pin, "end points stand in order, each once");
        before = &endpoint.pin;
        require(endpoint.setupSlack || endpoint.holdSlack, "an end point has a slack");
        setup.add(endpoint.setupSlack);
        hold.add(endpoint.holdSlack);
    }
    require(of(report.setup) == setup && of(report.hold) == hold, "sums are those of the end points");
    for (const Report::Clock& clock : report.clocks)
        require(of(clock.setup).endpoints <= setup.endpoints && of(clock.hold).endpoints <= hold.endpoints,
                "clocks have no more than there are");
    require(report.unconstrained.size() == report.unconstrainedEndpoints, "all that is counted is listed");
    for (const std::string& pin : report.unconstrained)
        require(!std::ranges::binary_search(report.endpoints, pin, {}, &Report::Endpoint::pin),
                "an end point is constrained or not");
}

void checkPath(const Report::Path& path) {
    require(!path.points.empty() && path.points.front().pin == path.startpoint &&
                path.points.back().pin == path.endpoint,
            "a path goes from its start to its end");
    Report::Time arrival = path.launchClockDelay + path.inputDelay;
    for (const Report::Point& point : path.points) {
        arrival += &point == path.points.data() ? 0 : point.delay;
        require(point.arrival == arrival, "arrivals add up");
    }
    require(path.arrival == arrival, "a path's arrival is its last point's");
    require(path.slack == (path.setup ? path.required - path.arrival : path.arrival - path.required),
            "a slack is the difference");
    require(path.captureEdge - path.launchEdge == path.relation, "a relation is that of its edges");
}

// Every slack has its path, which comes first of its end point's.
void checkPaths(const Report::Report& report, const Analysis::SessionOptions& options) {
    std::map<std::pair<bool, std::string>, std::vector<Report::Time>> slacks;
    bool setup = true;
    for (const Report::Path& path : report.paths) {
        require(setup || !path.setup, "setup paths come first");
        setup = path.setup;
        checkPath(path);
        slacks[{path.setup, path.endpoint}].push_back(path.slack);
    }
    for (const auto& [end, own] : slacks)
        require(std::ranges::is_sorted(own) && own.size() <= options.perEndpoint, "each end's worst first");
    if (report.endpoints.size() * options.perEndpoint >= options.paths)
        return;
    for (const Report::Endpoint& endpoint : report.endpoints)
        for (const auto& [side, slack] :
             {std::pair(true, endpoint.setupSlack), std::pair(false, endpoint.holdSlack)}) {
            const auto own = slacks.find({side, endpoint.pin});
            require(slack.has_value() == (own != slacks.end()), "a path for every slack");
            require(!slack || own->second.front() == *slack, "the worst path has the slack");
        }
}

// The report as JSON, but for what the inputs' sums are; or the refusal.
std::string outcome(const Analysis::SessionOptions& options, const Support::TemporaryFolder& folder) {
    Analysis::Session session;
    session.limits = limits;
    try {
        Report::Report report = session.run(options);
        checkSums(report);
        checkPaths(report, options);
        std::ostringstream json, text;
        writeJson(report, json);
        require(nlohmann::json::accept(json.str()), "JSON");
        writeText(report, {.listUnconstrained = true, .listExceptions = true}, text);
        return json.str() + text.str();
    } catch (const Base::BadInput& bad) {
        // The message about sums of delays has no place in a file.
        const Base::Diagnostic& said = bad.diagnostic();
        require(said.place.file.starts_with(folder.path().string()) ||
                    said.text.starts_with("the delays of a path may"),
                "a refusal names the file");
        return bad.what();
    }
}

// Time and memory differ from run to run.
bool isOverLimit(const std::string& outcome) {
    return outcome.find(": error: the script ran for more than ") != std::string::npos ||
           outcome.find(": error: the script took more than ") != std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Support::TemporaryFolder folder;
    const Analysis::SessionOptions options =
        optionsOf(folder, std::string_view(reinterpret_cast<const char*>(data), size));
    const std::string first = outcome(options, folder), second = outcome(options, folder);
    require(first == second || isOverLimit(first) || isOverLimit(second), "the same again");
    return 0;
}
