// The JSON report: its exact text, strings of any bytes, and that every report fits the published schema.
#include "report/Json.h"

#include "ProjectFiles.h"
#include "Sample.h"
#include "SchemaValidator.h"
#include "tests/support/Rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

using Whole = Report::Report;
using ReportTests::Json;
using ReportTests::SchemaValidator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string jsonOf(const Whole& report) {
    std::ostringstream out;
    writeJson(report, out);
    return out.str();
}

Json publishedSchema() {
    std::ifstream file(VORLEN_DOCS_DIR "/report.schema.json");
    EXPECT_TRUE(file) << "no report.schema.json in " VORLEN_DOCS_DIR;
    return Json::parse(file);
}

// --- The text ---

TEST(Json, aWholeReport) {
    EXPECT_EQ(jsonOf(ReportTests::sample()), R"json({
  "schema": "vorlen.report",
  "schema_version": 1,
  "tool": {"name": "vorlen", "version": "4.0"},
  "inputs": [
    {"path": "a.sdf", "kind": "sdf", "sha256": "0000000000000000000000000000000000000000000000000000000000000000"},
    {"path": "x.sdc", "kind": "sdc", "sha256": "ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff"}
  ],
  "design": "two",
  "units": {"time": "ns"},
  "summary": {
    "setup": {"wns": 0, "tns": 0, "failing_endpoints": 0, "endpoints": 1, "worst_slack": 8.127},
    "hold": {"wns": -0.12, "tns": -0.12, "failing_endpoints": 1, "endpoints": 2, "worst_slack": -0.12}
  },
  "clocks": [
    {
      "name": "clk",
      "period": 10,
      "waveform": [0, 5],
      "sources": ["clk"],
      "propagated": true,
      "generated_from": null,
      "achieved_period": 7.41,
      "fmax_mhz": 134.953,
      "setup": {"wns": 0, "tns": 0, "failing_endpoints": 0, "endpoints": 1, "worst_slack": 8.127},
      "hold": {"wns": 0, "tns": 0, "failing_endpoints": 0, "endpoints": 1, "worst_slack": 0.3}
    },
    {
      "name": "half",
      "period": null,
      "waveform": [],
      "sources": ["r7/Q"],
      "propagated": false,
      "generated_from": "clk",
      "achieved_period": null,
      "fmax_mhz": null,
      "setup": {"wns": 0, "tns": 0, "failing_endpoints": 0, "endpoints": 0, "worst_slack": null},
      "hold": {"wns": -0.12, "tns": -0.12, "failing_endpoints": 1, "endpoints": 1, "worst_slack": -0.12}
    }
  ],
  "endpoints": [
    {"pin": "r1/D", "setup_slack": 8.127, "hold_slack": 0.3, "setup_clocks": ["clk", "clk"], "hold_clocks": ["clk", "clk"], "setup_exception": null, "hold_exception": null},
    {"pin": "u1/u2/ff/D", "setup_slack": null, "hold_slack": -0.12, "setup_clocks": null, "hold_clocks": [null, "half"], "setup_exception": null, "hold_exception": {"file": "x.sdc", "line": 14, "kind": "multicycle_path", "value": 2}}
  ],
  "paths": [
    {
      "path_type": "max",
      "path_group": "clk",
      "startpoint": "r0/CLK",
      "endpoint": "r1/D",
      "source_clock": "clk",
      "source_clock_edge": "rise",
      "target_clock": "clk",
      "target_clock_edge": "rise",
      "launch_edge": 0,
      "capture_edge": 10,
      "launch_clock_delay": 1.625,
      "capture_clock_delay": 1.6,
      "relation": 10,
      "uncertainty": 0.25,
      "input_delay": null,
      "output_delay": null,
      "check": 0.47,
      "points": [
        {"pin": "r0/CLK", "delay": 0, "arrival": 1.625, "kind": "clock", "edge": "rise", "cell": "DFF"},
        {"pin": "r0/Q", "delay": 0.54, "arrival": 2.165, "kind": "cell", "edge": "fall", "cell": "DFF"},
        {"pin": "r1/D", "delay": 0.588, "arrival": 2.753, "kind": "net", "edge": null, "cell": "DFF"}
      ],
      "data_arrival_time": 2.753,
      "required_time": 10.88,
      "slack": 8.127,
      "exception": null
    },
    {
      "path_type": "min",
      "path_group": "half",
      "startpoint": "in[3]",
      "endpoint": "u1/u2/ff/D",
      "source_clock": "half",
      "source_clock_edge": "fall",
      "target_clock": "half",
      "target_clock_edge": "fall",
      "launch_edge": 5,
      "capture_edge": 5,
      "launch_clock_delay": 0,
      "capture_clock_delay": 0.3,
      "relation": 0,
      "uncertainty": 0.02,
      "input_delay": 0.4,
      "output_delay": null,
      "check": 0.35,
      "points": [
        {"pin": "in[3]", "delay": 0, "arrival": 0.4, "kind": "port", "edge": null, "cell": null},
        {"pin": "u1/u2/ff/D", "delay": 0.15, "arrival": 0.55, "kind": "net", "edge": null, "cell": "DFFN"}
      ],
      "data_arrival_time": 0.55,
      "required_time": 0.67,
      "slack": -0.12,
      "exception": {"file": "x.sdc", "line": 14, "kind": "multicycle_path", "value": 2}
    }
  ],
  "unconstrained": {
    "endpoints": 2,
    "list": [
      "led[0]",
      "led[1]"
    ]
  },
  "pulse_checks": [
    {"pin": "r0/CLK", "kind": "period", "clock": "clk", "required": 1.2, "actual": 10, "slack": 8.8},
    {"pin": "ram/WCLK", "kind": "width", "clock": "clk", "required": 5.1, "actual": 5, "slack": -0.1}
  ],
  "exceptions": [
    {"file": "x.sdc", "line": 14, "kind": "multicycle_path", "value": 2, "text": "set_multicycle_path 2 -to u1/u2/ff", "setup_endpoints": 1, "hold_endpoints": 1, "paths": 1, "status": "governs", "overruled_by": []},
    {"file": "x.sdc", "line": 15, "kind": "false_path", "value": null, "text": "set_false_path -to nothing", "setup_endpoints": 0, "hold_endpoints": 0, "paths": 0, "status": "matches nothing", "overruled_by": []},
    {"file": "x.sdc", "line": 16, "kind": "max_delay", "value": 3.5, "text": "set_max_delay 3.50 -to r1", "setup_endpoints": 0, "hold_endpoints": 0, "paths": 0, "status": "always overruled", "overruled_by": [17, 20]},
    {"file": "x.sdc", "line": 18, "kind": "path_group", "value": "7", "text": "group_path -name 7 -to r1", "setup_endpoints": 0, "hold_endpoints": 0, "paths": 0, "status": "matches no path", "overruled_by": []}
  ],
  "coverage": {"arcs": 100, "arcs_without_delay": 1, "constraints_unmatched": 1},
  "diagnostics": [
    {"severity": "warning", "file": "x.sdc", "line": 15, "column": 3, "text": "matches nothing: 'nothing'"},
    {"severity": "note", "file": null, "line": null, "column": null, "text": "no netlist"}
  ]
}
)json");
}

TEST(Json, aReportOfNothing) {
    EXPECT_EQ(jsonOf({}), R"({
  "schema": "vorlen.report",
  "schema_version": 1,
  "tool": {"name": "vorlen", "version": "4.0"},
  "inputs": [],
  "design": null,
  "units": {"time": "ns"},
  "summary": {
    "setup": {"wns": 0, "tns": 0, "failing_endpoints": 0, "endpoints": 0, "worst_slack": null},
    "hold": {"wns": 0, "tns": 0, "failing_endpoints": 0, "endpoints": 0, "worst_slack": null}
  },
  "clocks": [],
  "endpoints": [],
  "paths": [],
  "unconstrained": {
    "endpoints": 0,
    "list": []
  },
  "pulse_checks": [],
  "exceptions": [],
  "coverage": {"arcs": 0, "arcs_without_delay": 0, "constraints_unmatched": 0},
  "diagnostics": []
}
)");
}

TEST(Json, strings) {
    struct Row {
        std::string name;
        const char* expected;
    };
    const Row rows[] = {
        {"", R"("")"},
        {"led[3]", R"("led[3]")"},
        {"a\"b\\c/d", R"("a\"b\\c/d")"},
        {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
        {std::string("\0\x01\x1f", 3), R"("\u0000\u0001\u001f")"},
        {"\x7f\xC2\x9B", R"("\u007f\u009b")"},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {"a\xFFz", "\"a\xEF\xBF\xBDz\""},                             // never a byte of UTF-8
        {"\x80", "\"\xEF\xBF\xBD\""},                                 // continues nothing
        {"\xC3", "\"\xEF\xBF\xBD\""},                                 // ends early
        {"\xC3(", "\"\xEF\xBF\xBD(\""},                               // is not continued
        {"\xC0\xAF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},                 // overlong
        {"\xE0\x9F\xBF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""}, // overlong
        {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""}, // a surrogate
        {"\xED\x9F\xBF", "\"\xED\x9F\xBF\""},                         // the last before them
        {"\xF4\x8F\xBF\xBF", "\"\xF4\x8F\xBF\xBF\""},                 // U+10FFFF
        {"\xF4\x90\x80\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
        {"\xF0\x8F\xBF\xBF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Whole report;
        report.unconstrained = {row.name};
        const std::string text = jsonOf(report);
        EXPECT_THAT(text, HasSubstr("\"list\": [\n      " + std::string(row.expected) + "\n    ]"));
        EXPECT_TRUE(Json::accept(text)) << row.expected;
    }
}

TEST(Json, valuesOfExceptions) {
    struct Row {
        const char* kind;
        const char* value;
        const char* expected;
    };
    const Row rows[] = {
        {"false_path", "", "null"},     {"multicycle_path", "2", "2"}, {"max_delay", "3.50", "3.5"},
        {"min_delay", "-.25", "-0.25"}, {"max_delay", "+1e1", "10"},   {"path_group", "io", "\"io\""},
        {"path_group", "10", "\"10\""}, {"max_delay", "$x", "\"$x\""}, {"path_group", "", "null"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Whole report;
        report.paths = {ReportTests::setupPath()};
        report.paths[0].exception = {{"x.sdc", 3, row.kind, row.value}};
        EXPECT_THAT(jsonOf(report),
                    HasSubstr(std::string("\"exception\": {\"file\": \"x.sdc\", \"line\": 3, \"kind\": \"") +
                              row.kind + "\", \"value\": " + row.expected + "}"));
    }
}

TEST(Json, resolutions) {
    Whole report;
    report.scale = -15;
    report.endpoints = {{"a", 1234567, -1, {"c", "c"}, {"c", ""}, {}, {}}};
    EXPECT_THAT(jsonOf(report), HasSubstr(R"({"pin": "a", "setup_slack": 1.234567, "hold_slack": -0.000001, )"
                                          R"("setup_clocks": ["c", "c"], "hold_clocks": ["c", null], )"
                                          R"("setup_exception": null, "hold_exception": null})"));
}

TEST(Json, aPathFromNowhere) {
    Whole report;
    report.paths.emplace_back();
    const Json path = Json::parse(jsonOf(report))["paths"][0];
    for (const char* key : {"source_clock", "source_clock_edge", "target_clock", "target_clock_edge",
                            "input_delay", "output_delay", "check", "exception"})
        EXPECT_TRUE(path.at(key).is_null()) << key;
    EXPECT_EQ(path.at("points"), Json::array());
}

// --- The schema ---

TEST(JsonSchema, reportsFitIt) {
    Whole paths = ReportTests::sample();
    paths.scale = -15;
    paths.paths.emplace_back();
    for (const char* kind : {"false_path", "max_delay", "min_delay", "path_group"}) {
        paths.paths.push_back(ReportTests::setupPath());
        paths.paths.back().endsAtPort = true;
        paths.paths.back().exception = {{"x.sdc", 1, kind, "7"}};
    }
    Whole bytes = ReportTests::sample();
    bytes.design = "\xFF\n";
    bytes.endpoints[0].pin = "\xC0\"\\";

    const SchemaValidator validator(publishedSchema());
    for (const Whole& report : {Whole(), ReportTests::sample(), paths, bytes})
        EXPECT_THAT(validator.validate(Json::parse(jsonOf(report))), IsEmpty());
}

// The schema describes every key, and requires each.
TEST(JsonSchema, everyKeyIsRequired) {
    const Json document = Json::parse(jsonOf(ReportTests::sample()));
    const SchemaValidator validator(publishedSchema());
    std::size_t tried = 0;
    std::vector<Json::json_pointer> open = {Json::json_pointer()};
    while (!open.empty()) {
        const Json::json_pointer at = open.back();
        open.pop_back();
        const Json value = document.at(at);
        if (value.is_array())
            for (std::size_t i = 0; i < value.size(); ++i)
                open.push_back(at / i);
        if (!value.is_object())
            continue;
        for (const auto& [key, member] : value.items()) {
            open.push_back(at / key);
            Json less = document;
            less.at(at).erase(key);
            ++tried;
            const bool alternative =
                !at.empty() && at.back().ends_with("exception"); // null or whole: told by one line for both
            EXPECT_THAT(validator.validate(less),
                        ElementsAre(alternative ? at.to_string() + ": fits none of the alternatives"
                                                : at.to_string() + ": '" + key + "' is missing"));
        }
    }
    EXPECT_GT(tried, 150u);
}

TEST(JsonSchema, wrongValuesAreFound) {
    struct Row {
        const char* at;
        Json value;
        const char* error;
    };
    const Row rows[] = {
        {"/schema", "other", ": expected \"vorlen.report\", found \"other\""},
        {"/schema_version", 2, ": expected 1, found 2"},
        {"/inputs/0/kind", "vhdl", R"(: expected one of ["sdf","sdc","netlist"], found "vhdl")"},
        {"/inputs/0/sha256", "0", ": does not match ^[0-9a-f]{64}$"},
        {"/summary/setup/wns", 1, ": more than 0"},
        {"/summary/hold/endpoints", -1, ": less than 0"},
        {"/summary/hold/endpoints", 1.5, R"(: expected "integer", found number)"},
        {"/clocks/0/period", 0, ": not above 0"},
        {"/clocks/0/waveform", nullptr, R"(: expected "array", found null)"},
        {"/endpoints/0/setup_slack", "1", R"(: expected ["number","null"], found string)"},
        {"/endpoints/0/setup_clocks", Json::array({"clk"}), ": fewer than 2 items"},
        {"/endpoints/0/setup_clocks", Json::array({"a", "b", "c"}), ": more than 2 items"},
        {"/paths/0/path_type", "late", R"(: expected one of ["max","min"], found "late")"},
        {"/paths/0/points/0/kind", "wire",
         R"(: expected one of ["clock","port","cell","net"], found "wire")"},
        {"/paths/0/exception", false, ": fits none of the alternatives"},
        {"/exceptions/0/overruled_by", Json::array({0}), "/0: less than 1"},
        {"/diagnostics/0/line", 0, ": less than 1"},
    };
    const Json document = Json::parse(jsonOf(ReportTests::sample()));
    const SchemaValidator validator(publishedSchema());
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Json wrong = document;
        wrong.at(Json::json_pointer(row.at)) = row.value;
        EXPECT_THAT(validator.validate(wrong), ElementsAre(std::string(row.at) + row.error));
    }
}

TEST(JsonSchema, keysMayBeAdded) {
    Json document = Json::parse(jsonOf(ReportTests::sample()));
    document["later"] = 1;
    document["paths"][0]["later"] = Json::object();
    EXPECT_THAT(SchemaValidator(publishedSchema()).validate(document), IsEmpty());
}

TEST(SchemaValidator, refusesWhatItDoesNotKnow) {
    struct Row {
        Json schema;
        const char* error;
    };
    const Row rows[] = {
        {{{"oneOf", Json::array()}}, "unknown keyword 'oneOf' for "},
        {{{"type", "text"}}, "unknown type 'text'"},
        {{{"$ref", "other.json"}}, "a reference outside the schema: other.json"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_THAT([&] { SchemaValidator(row.schema).validate(1); },
                    testing::ThrowsMessage<std::invalid_argument>(row.error));
    }
}

TEST(SchemaValidator, keywordsThatNoReportBreaks) {
    struct Row {
        Json schema, value;
        const char* error; // or nothing
    };
    const Row rows[] = {
        {false, 1, ": not allowed"},
        {true, 1, nullptr},
        {{{"additionalProperties", false}}, {{"a", 1}}, "/a: not allowed"},
        {{{"properties", {{"a", true}}}, {"additionalProperties", false}}, {{"a", 1}}, nullptr},
        {{{"minLength", 1}}, "", ": shorter than 1"},
        {{{"minLength", 1}}, "a", nullptr},
        {{{"minimum", 3}}, "text", nullptr},
    };
    for (const Row& row : rows) {
        const auto errors = SchemaValidator(row.schema).validate(row.value);
        if (row.error)
            EXPECT_THAT(errors, ElementsAre(row.error)) << row.schema;
        else
            EXPECT_THAT(errors, IsEmpty()) << row.schema;
    }
}

} // namespace
