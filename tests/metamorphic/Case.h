// A random design on its way to a run: as structs, as the texts of its files, and as what a run says of it.
//
// A relation (Relation.h) changes the structs or the texts of one of two equal cases. Files keep their names
// from the one run to the other, so that reports differ only where the inputs do.
#pragma once

#include "Design.h"
#include "Generate.h"
#include "Random.h"

#include "cli/Options.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Metamorphic {

enum class NetlistKind { none, json, verilog };

struct Case {
    Brute::Design design;
    Brute::Random random;
    NetlistKind netlist = NetlistKind::json;
    Cli::Options options; // all but the files
    // Verilog alone: the cells (and nets) whose names begin so are in modules of their own. "h/" or "h/k/".
    std::string hierarchy;

    // What the change did, for the judge.
    int amount = 0;                           // a time in picoseconds
    std::string end;                          // an end point
    std::map<std::string, std::string> names; // after -> before

    explicit Case(std::uint64_t seed, const Brute::Shape& shape);
};

struct Files {
    std::string sdf;
    std::vector<std::string> sdc;               // one for each --sdc
    std::map<std::string, std::string> besides; // by name: what constraint files source
    std::string netlist;                        // empty: none
    std::string netlistEnding = ".json";
    std::optional<std::string> top;
    bool gzipped = false;
};

Files write(const Case& from);
// Structural Verilog in which the cells below `hierarchy` are in modules.
std::string writeHierarchy(const Brute::Design& design, const std::string& hierarchy);

// Times are in femtoseconds.
struct Slacks {
    std::optional<std::int64_t> setup, hold;

    bool operator==(const Slacks&) const = default;
};
struct Outcome {
    std::string refused; // why; empty: it was not
    nlohmann::json report;

    std::map<std::string, Slacks> slacks() const; // by end point
};

// Runs the command on files in a folder of its own, which goes with the object; $VORLEN_KEEP names one that
// stays.
class Runner {
public:
    Runner();
    ~Runner();
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    Outcome run(const Files& files, Cli::Options options) const;

private:
    std::string put(const std::string& name, const std::string& text, bool gzipped) const;

    std::string folder_;
    bool keep_ = false;
};

} // namespace Metamorphic
