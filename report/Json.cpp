// The JSON report, key by key in the order of the document.
#include "report/Json.h"

#include "base/Decimal.h"
#include "base/Version.h"
#include "report/JsonWriter.h"
#include "report/Numbers.h"

#include <fmt/format.h>

namespace Report {

namespace {

constexpr std::string_view schemaName = "vorlen.report";
constexpr std::uint64_t schemaVersion = 1;
constexpr std::string_view toolName = "vorlen";
constexpr bool block = true;

std::string_view kindOf(PointKind kind) {
    switch (kind) {
    case PointKind::clock:
        return "clock";
    case PointKind::port:
        return "port";
    case PointKind::cell:
        return "cell";
    case PointKind::net:
        break;
    }
    return "net";
}

class Printer {
public:
    Printer(const Report& report, std::ostream& out) : report_(report), json_(out) {}

    void print() {
        json_.beginObject(block);
        head();
        summary();
        clocks();
        endpoints();
        paths();
        unconstrained();
        pulseChecks();
        exceptions();
        coverage();
        diagnostics();
        json_.endObject();
        json_.finish();
    }

private:
    // --- Values ---

    void text(std::string_view key, std::string_view value) { json_.key(key).string(value); }
    void textOrNull(std::string_view key, std::string_view value) {
        json_.key(key);
        stringOrNull(value);
    }
    void stringOrNull(std::string_view value) {
        if (value.empty())
            json_.null();
        else
            json_.string(value);
    }
    void count(std::string_view key, std::uint64_t value) { json_.key(key).number(value); }
    void flag(std::string_view key, bool value) { json_.key(key).boolean(value); }
    void time(std::string_view key, const MaybeTime& value) {
        json_.key(key);
        if (value)
            json_.number(exactNs(*value, report_.scale));
        else
            json_.null();
    }

    // --- Sections ---

    void head() {
        text("schema", schemaName);
        count("schema_version", schemaVersion);
        json_.key("tool").beginObject();
        text("name", toolName);
        text("version", Base::version);
        json_.endObject();
        json_.key("inputs").beginArray(block);
        for (const Input& input : report_.inputs) {
            json_.beginObject();
            text("path", input.path);
            text("kind", input.kind);
            text("sha256", input.sha256);
            json_.endObject();
        }
        json_.endArray();
        textOrNull("design", report_.design);
        json_.key("units").beginObject();
        text("time", "ns");
        json_.endObject();
    }

    void summary() {
        json_.key("summary").beginObject(block);
        side("setup", report_.setup);
        side("hold", report_.hold);
        json_.endObject();
    }

    void side(std::string_view key, const Summary& summary) {
        json_.key(key).beginObject();
        time("wns", summary.worst);
        time("tns", summary.total);
        count("failing_endpoints", summary.failing);
        count("endpoints", summary.endpoints);
        time("worst_slack", summary.worstSlack);
        json_.endObject();
    }

    void clocks() {
        json_.key("clocks").beginArray(block);
        for (const Clock& clock : report_.clocks)
            this->clock(clock);
        json_.endArray();
    }

    void clock(const Clock& clock) {
        json_.beginObject(block);
        text("name", clock.name);
        time("period", clock.period);
        json_.key("waveform").beginArray();
        for (const Time edge : clock.waveform)
            json_.number(exactNs(edge, report_.scale));
        json_.endArray();
        json_.key("sources").beginArray();
        for (const std::string& source : clock.sources)
            json_.string(source);
        json_.endArray();
        flag("propagated", clock.propagated);
        json_.key("generated_from");
        if (clock.generatedFrom)
            json_.string(*clock.generatedFrom);
        else
            json_.null();
        time("achieved_period", clock.achievedPeriod);
        json_.key("fmax_mhz");
        if (clock.achievedPeriod && *clock.achievedPeriod > 0)
            json_.number(fmaxMhz(*clock.achievedPeriod, report_.scale));
        else
            json_.null();
        side("setup", clock.setup);
        side("hold", clock.hold);
        json_.endObject();
    }

    void endpoints() {
        json_.key("endpoints").beginArray(block);
        for (const Endpoint& endpoint : report_.endpoints) {
            json_.beginObject();
            text("pin", endpoint.pin);
            time("setup_slack", endpoint.setupSlack);
            time("hold_slack", endpoint.holdSlack);
            clockPair("setup_clocks", endpoint.setupClocks);
            clockPair("hold_clocks", endpoint.holdClocks);
            exception("setup_exception", endpoint.setupException);
            exception("hold_exception", endpoint.holdException);
            json_.endObject();
        }
        json_.endArray();
    }

    void clockPair(std::string_view key, const std::string (&clocks)[2]) {
        json_.key(key);
        if (clocks[0].empty() && clocks[1].empty()) {
            json_.null();
            return;
        }
        json_.beginArray();
        for (const std::string& clock : clocks)
            stringOrNull(clock);
        json_.endArray();
    }

    void paths() {
        json_.key("paths").beginArray(block);
        for (const Path& path : report_.paths)
            this->path(path);
        json_.endArray();
    }

    void path(const Path& path) {
        json_.beginObject(block);
        text("path_type", path.setup ? "max" : "min");
        text("path_group", path.group);
        text("startpoint", path.startpoint);
        text("endpoint", path.endpoint);
        clockEdge("source_clock", "source_clock_edge", path.sourceClock, path.sourceRise);
        clockEdge("target_clock", "target_clock_edge", path.targetClock, path.targetRise);
        time("launch_edge", path.launchEdge);
        time("capture_edge", path.captureEdge);
        time("launch_clock_delay", path.launchClockDelay);
        time("capture_clock_delay", path.captureClockDelay);
        time("relation", path.relation);
        time("uncertainty", path.uncertainty);
        time("input_delay", path.startsAtPort ? MaybeTime(path.inputDelay) : MaybeTime());
        time("output_delay", path.endsAtPort ? MaybeTime(path.outputDelay) : MaybeTime());
        time("check", path.check);
        json_.key("points").beginArray(block);
        for (const Point& point : path.points)
            this->point(point);
        json_.endArray();
        time("data_arrival_time", path.arrival);
        time("required_time", path.required);
        time("slack", path.slack);
        exception("exception", path.exception);
        json_.endObject();
    }

    void clockEdge(std::string_view clockKey, std::string_view edgeKey, std::string_view clock, bool rise) {
        textOrNull(clockKey, clock);
        textOrNull(edgeKey, clock.empty() ? "" : rise ? "rise" : "fall");
    }

    void point(const Point& point) {
        json_.beginObject();
        text("pin", point.pin);
        time("delay", point.delay);
        time("arrival", point.arrival);
        text("kind", kindOf(point.kind));
        textOrNull("edge", point.edge == '^' ? "rise" : point.edge == 'v' ? "fall" : "");
        textOrNull("cell", point.cell);
        json_.endObject();
    }

    void exception(std::string_view key, const std::optional<Exception>& exception) {
        json_.key(key);
        if (!exception) {
            json_.null();
            return;
        }
        json_.beginObject();
        this->exception(*exception);
        json_.endObject();
    }

    // The value of a path group is its name; that of any other exception is a number, if it has one.
    void exception(const Exception& exception) {
        text("file", exception.file);
        count("line", exception.line);
        text("kind", exception.kind);
        json_.key("value");
        const auto decimal = Base::Decimal::parse(exception.value);
        if (decimal && exception.kind != "path_group")
            json_.number(decimal->toString());
        else
            stringOrNull(exception.value);
    }

    void unconstrained() {
        json_.key("unconstrained").beginObject(block);
        count("endpoints", report_.unconstrainedEndpoints);
        json_.key("list").beginArray(block);
        for (const std::string& pin : report_.unconstrained)
            json_.string(pin);
        json_.endArray();
        json_.endObject();
    }

    void pulseChecks() {
        json_.key("pulse_checks").beginArray(block);
        for (const PulseCheck& check : report_.pulseChecks) {
            json_.beginObject();
            text("pin", check.pin);
            text("kind", check.period ? "period" : "width");
            text("clock", check.clock);
            time("required", check.required);
            time("actual", check.actual);
            time("slack", check.slack);
            json_.endObject();
        }
        json_.endArray();
    }

    void exceptions() {
        json_.key("exceptions").beginArray(block);
        for (const ExceptionUse& use : report_.exceptions) {
            json_.beginObject();
            exception(use.exception);
            text("text", use.text);
            count("setup_endpoints", use.setupEndpoints);
            count("hold_endpoints", use.holdEndpoints);
            count("paths", use.paths);
            text("status", use.status);
            json_.key("overruled_by").beginArray();
            for (const unsigned line : use.overruledBy)
                json_.number(std::uint64_t{line});
            json_.endArray();
            json_.endObject();
        }
        json_.endArray();
    }

    void coverage() {
        json_.key("coverage").beginObject();
        count("arcs", report_.arcs);
        count("arcs_without_delay", report_.arcsWithoutDelay);
        count("constraints_unmatched", report_.constraintsUnmatched);
        json_.endObject();
    }

    void diagnostics() {
        json_.key("diagnostics").beginArray(block);
        for (const Base::Diagnostic& diagnostic : report_.diagnostics) {
            json_.beginObject();
            text("severity", Base::toString(diagnostic.severity));
            textOrNull("file", diagnostic.place.file);
            place("line", diagnostic.place.line);
            place("column", diagnostic.place.column);
            text("text", diagnostic.text);
            json_.endObject();
        }
        json_.endArray();
    }

    void place(std::string_view key, unsigned value) {
        if (value != 0)
            count(key, value);
        else
            json_.key(key).null();
    }

    const Report& report_;
    JsonWriter json_;
};

} // namespace

void writeJson(const Report& report, std::ostream& out) { Printer(report, out).print(); }

} // namespace Report
