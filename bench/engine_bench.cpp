// The engine against the plain reference, both in this program and on the same designs of random logic.
//
// Every measurement runs in a new process, so that none finds another's memory. Times are processor times,
// including the system's part: all is single-threaded, and others may share the machine. The table is
// printed, and written as JSON into the file that the first argument names. The second argument selects the
// measurements whose names contain it.
#include "Measure.h"
#include "RandomLogic.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Tool.h"
#include "tests/oracle/ReferenceTool.h"

#include <array>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using bench::RandomLogic;
using bench::RandomLogicParameters;

// The results of a measurement: name and value, in the order of measuring.
using Values = std::vector<std::pair<std::string, double>>;

struct Measurement {
    std::string name;
    std::function<Values()> run;
};

// --- Separate processes ---

// The reference recurses once per pole, so its process gets a deep stack.
void deepenStack() {
    constexpr rlim_t deep = rlim_t{4} << 30;
    rlimit limit{};
    if (getrlimit(RLIMIT_STACK, &limit) == 0) {
        limit.rlim_cur = std::min(deep, limit.rlim_max);
        setrlimit(RLIMIT_STACK, &limit);
    }
}

// Uses memory and returns it. A virtual machine gets a page of its host's memory when it first uses it, which
// takes two seconds per gigabyte, and keeps it for a while. That time must not be measured.
void warmMemory() {
    constexpr std::size_t bytes = std::size_t{4} << 30;
    constexpr std::size_t page = 4096;
    void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    madvise(memory, bytes, MADV_HUGEPAGE);
    for (std::size_t at = 0; at < bytes; at += page)
        static_cast<volatile char*>(memory)[at] = 1;
    munmap(memory, bytes);
}

void writeValues(int file, const Values& values) {
    std::string text;
    for (const auto& [name, value] : values)
        text += name + " " + std::to_string(value) + "\n";
    if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        _exit(1);
}

Values readValues(int file) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = read(file, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(got));
    Values values;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t gap = text.find(' ', at);
        const std::size_t end = text.find('\n', gap);
        values.emplace_back(text.substr(at, gap - at), std::stod(text.substr(gap + 1, end - gap - 1)));
        at = end + 1;
    }
    return values;
}

// Empty if the process did not succeed.
Values runApart(const Measurement& measurement) {
    std::fflush(nullptr);
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        warmMemory();
        writeValues(ends[1], measurement.run());
        _exit(0);
    }
    close(ends[1]);
    Values values = readValues(ends[0]);
    close(ends[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
        return {};
    return values;
}

// --- Measurements ---

struct EndTool {
    void operator()(Vorlen::Tool* tool) const { tool->destroy(); }
};

double nanosecondsAnArc(double seconds, const RandomLogic& design) {
    return seconds / static_cast<double>(design.getEdgeCount()) * 1e9;
}

// Silences the console: printing is not measured.
class Silence {
public:
    Silence() { Pelko::Analyzer::_muted = true; }
};

// From the clock arrivals to the slacks of arcs, without path search. `memory`: peak in bytes per pole.
template <class Phases>
Values propagate(RandomLogic& design, Phases phases) {
    Pelko::Subdomain* subdomain = design.captureAll();
    const bench::PeakMemory memory;
    Values values;
    double total = 0;
    const auto measure = [&](const char* phase, auto work) {
        const double seconds = bench::processorTimeOf(work);
        total += seconds;
        values.emplace_back(phase, seconds);
    };
    phases(subdomain, measure);
    values.emplace_back("seconds", total);
    values.emplace_back("ns/arc", nanosecondsAnArc(total, design));
    values.emplace_back("bytes/pole", memory.getRise() / static_cast<double>(design.getPoleCount()));
    values.emplace_back("rss-MB", bench::residentBytes() / 1e6);
    values.emplace_back("poles", static_cast<double>(design.getPoleCount()));
    values.emplace_back("arcs", static_cast<double>(design.getEdgeCount()));
    return values;
}

Values propagateByEngine(const RandomLogicParameters& parameters) {
    RandomLogic design(parameters);
    return propagate(design, [](Pelko::Subdomain* subdomain, auto measure) {
        Vorlen::Sweep* sweep = Vorlen::Sweep::create(subdomain);
        measure("clock-arrival", [&] { sweep->clockAnalyze(); });
        measure("data-arrival", [&] { sweep->arrivalAnalyze(); });
        measure("required", [&] { sweep->requireAnalyze(); });
        measure("slacks", [&] { sweep->tagSlacks(); });
        sweep->destroy();
    });
}

Values propagateByReference(const RandomLogicParameters& parameters) {
    RandomLogic design(parameters);
    return propagate(design, [](Pelko::Subdomain* subdomain, auto measure) {
        oracle::ReferenceSweep sweep(subdomain);
        measure("clock-arrival", [&] { sweep.clockAnalyze(); });
        measure("data-arrival", [&] { sweep.arrivalAnalyze(); });
        measure("required", [&] { sweep.requireAnalyze(); });
        measure("slacks", [&] { sweep.tagSlacks(); });
    });
}

// The memory of a launch includes that of the domains, which belong to the database afterwards.
template <class Launch>
void launchOnce(const char* prefix, RandomLogic& design, Values& values, Launch launch) {
    const bench::PeakMemory memory;
    bool completed = false;
    const double seconds = bench::processorTimeOf([&] { completed = launch(); });
    if (!completed)
        _exit(1);
    values.emplace_back(std::string(prefix) + "seconds", seconds);
    values.emplace_back(std::string(prefix) + "ns/arc", nanosecondsAnArc(seconds, design));
    values.emplace_back(std::string(prefix) + "bytes/pole",
                        memory.getRise() / static_cast<double>(design.getPoleCount()));
}

// Two launches on the same design, and one more to measure the memory of the domains.
Values launchEngine(const RandomLogicParameters& parameters) {
    const Silence silence;
    RandomLogic design(parameters);
    Pelko::Analyzer* analyzer = design.getModel().getAnalyzer();
    const std::unique_ptr<Vorlen::Tool, EndTool> tool(Vorlen::Tool::create());
    Values values;
    launchOnce("", design, values, [&] { return tool->launch(); });
    analyzer->clearResults();
    launchOnce("second-", design, values, [&] { return tool->launch(); });
    analyzer->clearResults();
    analyzer->setDomainsOnly(true);
    launchOnce("domains-", design, values, [&] { return tool->launch(); });
    values.emplace_back("rss-MB", bench::residentBytes() / 1e6);
    return values;
}

Values launchReference(const RandomLogicParameters& parameters) {
    const Silence silence;
    RandomLogic design(parameters);
    oracle::ReferenceTool tool;
    Values values;
    launchOnce("", design, values, [&] { return tool.launch(); });
    return values;
}

// 40 stages of two ways each: 2^40 paths. Their delays are equal, random, or such that every path is worse
// than the one before.
enum class Ladder { Equal, Random, WorstOrder };

std::pair<int, int> delaysOfStage(Ladder ladder, unsigned stagesBehind, std::uint64_t& state) {
    const auto draw = [&state] {
        state = state * 6364136223846793005UL + 1442695040888963407UL;
        return static_cast<int>((state >> 33) % 1'000);
    };
    if (ladder == Ladder::Equal)
        return {10, 10};
    if (ladder == Ladder::WorstOrder)
        return {1, 1 + (1 << std::min(stagesBehind, 24U))};
    const int first = 1 + draw();
    return {first, 1 + draw()};
}

Values climb(Ladder ladder) {
    using Pelko::Delay;
    using Pelko::Edge;
    using Pelko::Pole;
    constexpr unsigned stages = 40;
    constexpr unsigned long count = 1'000;
    Pelko::Model model("ladder");
    model.getApplication()->setBatch(true);
    std::uint64_t state = 5;
    Pole* const start = Pole::createInput(model.getCell());
    Pole* here = start;
    for (unsigned stage = 0; stage < stages; ++stage) {
        Pole* first = Pole::create(model.getCell());
        Pole* second = Pole::create(model.getCell());
        Pole* join = Pole::create(model.getCell());
        const auto [firstDelay, secondDelay] = delaysOfStage(ladder, stages - 1 - stage, state);
        Edge::create(here, first, Delay(firstDelay), Delay(firstDelay));
        Edge::create(here, second, Delay(secondDelay), Delay(secondDelay));
        Edge::create(first, join, Delay(1), Delay(1));
        Edge::create(second, join, Delay(1), Delay(1));
        here = join;
    }
    Pole* end = Pole::createOutput(model.getCell());
    Edge::create(here, end, Delay(1), Delay(1));
    auto* subdomain = Pelko::Subdomain::create(Pelko::Domain::create(nullptr, nullptr), {}, {});
    subdomain->captureLaunch(start);
    subdomain->captureLatch(end);
    subdomain->fixSetupRelation(Delay(1'000'000'000));
    Vorlen::Sweep* sweep = Vorlen::Sweep::create(subdomain);
    sweep->clockAnalyze();
    sweep->arrivalAnalyze();
    sweep->requireAnalyze();
    const double seconds =
        bench::processorTimeOf([&] { sweep->searchLongestPaths(Delay::getMaximum(), count); });
    const auto kept = static_cast<double>(subdomain->getLongestPaths().getCount());
    sweep->destroy();
    return {{"seconds", seconds}, {"kept", kept}};
}

std::vector<Measurement> getMeasurements() {
    constexpr std::size_t million = 1'000'000;
    const RandomLogicParameters small{.poles = million / 10};
    const RandomLogicParameters large{.poles = million};
    const RandomLogicParameters arcs6{.poles = million * 2 / 3};
    const RandomLogicParameters arcs7{.poles = million * 20 / 3};
    const RandomLogicParameters constrained{.poles = million / 10, .clocks = 4, .exceptions = 30};
    return {
        {"propagation 1e5 poles, engine", [=] { return propagateByEngine(small); }},
        {"propagation 1e5 poles, reference", [=] { return propagateByReference(small); }},
        {"propagation 1e6 poles, engine", [=] { return propagateByEngine(large); }},
        {"propagation 1e6 poles, reference", [=] { return propagateByReference(large); }},
        {"propagation 1e6 arcs, engine", [=] { return propagateByEngine(arcs6); }},
        {"propagation 1e7 arcs, engine", [=] { return propagateByEngine(arcs7); }},
        {"launch 1e5 poles, engine", [=] { return launchEngine(small); }},
        {"launch 1e5 poles, reference", [=] { return launchReference(small); }},
        {"launch 1e5 poles, 4 clocks, 30 exceptions, engine", [=] { return launchEngine(constrained); }},
        {"launch 1e5 poles, 4 clocks, 30 exceptions, reference",
         [=] { return launchReference(constrained); }},
        {"launch 1e6 poles, engine", [=] { return launchEngine(large); }},
        {"launch 1e6 arcs, engine", [=] { return launchEngine(arcs6); }},
        {"launch 1e7 arcs, engine", [=] { return launchEngine(arcs7); }},
        {"ladder of 40 stages, equal", [] { return climb(Ladder::Equal); }},
        {"ladder of 40 stages, random", [] { return climb(Ladder::Random); }},
        {"ladder of 40 stages, worst order", [] { return climb(Ladder::WorstOrder); }},
    };
}

// --- The table ---

using Results = std::vector<std::pair<std::string, Values>>;

const double* find(const Results& results, const std::string& name, const std::string& value) {
    for (const auto& [each, values] : results)
        if (each == name)
            for (const auto& [key, number] : values)
                if (key == value)
                    return &number;
    return nullptr;
}

// Ratios of two figures, if both were measured.
Values compare(const Results& results) {
    Values ratios;
    const auto add = [&](const char* title, const std::string& above, const std::string& aboveValue,
                         const std::string& below, const std::string& belowValue) {
        const double* a = find(results, above, aboveValue);
        const double* b = find(results, below, belowValue);
        if (a && b && *b > 0)
            ratios.emplace_back(title, *a / *b);
    };
    const std::string p5 = "propagation 1e5 poles, ";
    const std::string p6 = "propagation 1e6 poles, ";
    const std::string l5 = "launch 1e5 poles, ";
    const std::string l5c = "launch 1e5 poles, 4 clocks, 30 exceptions, ";
    add("propagation 1e5 poles: reference / engine", p5 + "reference", "seconds", p5 + "engine", "seconds");
    add("propagation 1e6 poles: reference / engine", p6 + "reference", "seconds", p6 + "engine", "seconds");
    add("launch 1e5 poles: reference / engine", l5 + "reference", "seconds", l5 + "engine", "seconds");
    add("launch 4 clocks, 30 exceptions: reference / engine", l5c + "reference", "seconds", l5c + "engine",
        "seconds");
    const std::string l6 = "launch 1e6 poles, engine";
    add("launch 1e6 poles: domains / whole", l6, "domains-seconds", l6, "seconds");
    add("launch 1e6 poles: second / first", l6, "second-seconds", l6, "seconds");
    add("growth 1e6 to 1e7 arcs: propagation ns/arc", "propagation 1e7 arcs, engine", "ns/arc",
        "propagation 1e6 arcs, engine", "ns/arc");
    add("growth 1e6 to 1e7 arcs: propagation bytes/pole", "propagation 1e7 arcs, engine", "bytes/pole",
        "propagation 1e6 arcs, engine", "bytes/pole");
    add("growth 1e6 to 1e7 arcs: launch ns/arc", "launch 1e7 arcs, engine", "ns/arc",
        "launch 1e6 arcs, engine", "ns/arc");
    return ratios;
}

std::string toJson(const Results& results, const Values& ratios) {
    const auto object = [](const Values& values, const char* indent) {
        std::string text = "{";
        for (const auto& [name, value] : values)
            text += (text.size() > 1 ? ",\n" : "\n") + std::string(indent) + "  \"" + name +
                    "\": " + std::to_string(value);
        return text + "\n" + indent + "}";
    };
    std::string text = "{\n  \"measurements\": {";
    const char* separator = "\n";
    for (const auto& [name, values] : results) {
        text += separator + ("    \"" + name + "\": ") + object(values, "    ");
        separator = ",\n";
    }
    return text + "\n  },\n  \"ratios\": " + object(ratios, "  ") + "\n}\n";
}

} // namespace

int main(int argc, char** argv) {
    deepenStack();
    if (!std::getenv("VORLEN_BENCH_STACK")) {
        // A new limit holds for programs that are started after it.
        setenv("VORLEN_BENCH_STACK", "deep", 1);
        execv("/proc/self/exe", argv);
    }
    const std::string wanted = argc > 2 ? argv[2] : "";
    Results results;
    bool good = true;
    for (const Measurement& measurement : getMeasurements()) {
        if (measurement.name.find(wanted) == std::string::npos)
            continue;
        Values values = runApart(measurement);
        good = good && !values.empty();
        std::printf("%s%s\n", measurement.name.c_str(), values.empty() ? ": FAILED" : "");
        for (const auto& [name, value] : values)
            std::printf("    %-20s %14.4f\n", name.c_str(), value);
        std::fflush(stdout);
        results.emplace_back(measurement.name, std::move(values));
    }
    const Values ratios = compare(results);
    std::printf("\n");
    for (const auto& [name, ratio] : ratios)
        std::printf("%-56s %8.2f\n", name.c_str(), ratio);
    if (argc > 1)
        std::ofstream(argv[1]) << toJson(results, ratios);
    return good ? 0 : 1;
}
