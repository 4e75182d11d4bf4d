// A random design in three forms: as structs, as the texts of its files, and as the results of a run.
//
// A relation (Relation.h) changes the structs or the texts of one of two equal cases. Files have the same
// names in both runs, so that reports differ only if the inputs do.
#pragma once

#include "Design.h"
#include "Generate.h"
#include "Random.h"

#include "cli/Options.h"
#include "tests/support/TemporaryFolder.h"

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
    Cli::Options options; // without the files
    // For Verilog only: cells (and nets) whose names begin with this are in modules of their own. "h/" or
    // "h/k/".
    std::string hierarchy;

    // What the change did; the judge reads it.
    int amount = 0;                           // in picoseconds
    std::string end;                          // name of an end point
    std::map<std::string, std::string> names; // name after the change -> name before

    explicit Case(std::uint64_t seed, const Brute::Shape& shape);
};

struct Files {
    std::string sdf;
    std::vector<std::string> sdc;               // one per --sdc
    std::map<std::string, std::string> besides; // key: name; files that constraint files source
    std::string netlist;                        // empty for a run without a netlist
    std::string netlistEnding = ".json";
    std::optional<std::string> top;
    bool gzipped = false;
};

Files write(const Case& from);
// Writes structural Verilog in which the cells below `hierarchy` are in modules.
std::string writeHierarchy(const Brute::Design& design, const std::string& hierarchy);

// Times are in femtoseconds.
struct Slacks {
    std::optional<std::int64_t> setup, hold;

    bool operator==(const Slacks&) const = default;
};
struct Outcome {
    std::string refused; // the reason for a rejection; empty if the run was not rejected
    nlohmann::json report;

    std::map<std::string, Slacks> slacks() const; // key: end point
};

// Runs the command on files in a new folder, which is deleted with the object. $VORLEN_KEEP names a folder
// that is kept.
class Runner {
public:
    Runner();

    Outcome run(const Files& files, Cli::Options options) const;

private:
    std::string put(const std::string& name, const std::string& text, bool gzipped) const;

    std::optional<Support::TemporaryFolder> own_; // none if the folder is to stay
    std::string folder_;
};

} // namespace Metamorphic
