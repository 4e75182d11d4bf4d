#include "Case.h"

#include "Write.h"

#include "analysis/Session.h"
#include "report/Json.h"

#include <zlib.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Metamorphic {

namespace {

namespace fs = std::filesystem;

constexpr double femtosecondsPerNanosecond = 1e6;

std::optional<std::int64_t> time(const nlohmann::json& value) {
    if (value.is_null())
        return {};
    return std::llround(value.get<double>() * femtosecondsPerNanosecond);
}

} // namespace

Case::Case(std::uint64_t seed, const Brute::Shape& shape)
    : design(Brute::generate(seed, shape)), random(seed ^ 0x6d6574616d6f7270u) {
    // Mostly the default; every way to read the delays comes up.
    constexpr std::array delays = {Analysis::Delays::minmax, Analysis::Delays::minmax,
                                   Analysis::Delays::minmax, Analysis::Delays::min,
                                   Analysis::Delays::typ,    Analysis::Delays::max};
    options.delays = delays[seed % delays.size()];
    options.clocks = seed % 5 != 0 ? Analysis::ClockDefault::propagated : Analysis::ClockDefault::ideal;
}

Files write(const Case& from) {
    Files files;
    files.sdf = Brute::writeSdf(from.design);
    files.sdc = {Brute::writeSdc(from.design)};
    if (from.netlist == NetlistKind::json)
        files.netlist = Brute::writeJson(from.design);
    if (from.netlist == NetlistKind::verilog) {
        files.netlist = from.hierarchy.empty() ? Brute::writeVerilog(from.design)
                                               : writeHierarchy(from.design, from.hierarchy);
        files.netlistEnding = ".v";
    }
    return files;
}

std::map<std::string, Slacks> Outcome::slacks() const {
    std::map<std::string, Slacks> result;
    for (const nlohmann::json& end : report.at("endpoints"))
        result[end.at("pin")] = {time(end.at("setup_slack")), time(end.at("hold_slack"))};
    return result;
}

Runner::Runner() {
    if (const char* keep = std::getenv("VORLEN_KEEP")) {
        folder_ = keep;
        fs::create_directories(folder_);
        return;
    }
    folder_ = own_.emplace().path().string();
}

std::string Runner::put(const std::string& name, const std::string& text, bool gzipped) const {
    const std::string path = folder_ + "/" + name + (gzipped ? ".gz" : "");
    if (!gzipped) {
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    gzFile out = gzopen(path.c_str(), "wb1");
    if (!out ||
        gzwrite(out, text.data(), static_cast<unsigned>(text.size())) != static_cast<int>(text.size()) ||
        gzclose(out) != Z_OK)
        throw std::runtime_error("cannot write " + path);
    return path;
}

Outcome Runner::run(const Files& files, Cli::Options options) const {
    options.sdf = put("d.sdf", files.sdf, files.gzipped);
    options.sdc.clear();
    for (const std::string& text : files.sdc)
        options.sdc.push_back(put("d" + std::to_string(options.sdc.size()) + ".sdc", text, files.gzipped));
    for (const auto& [name, text] : files.besides)
        put(name, text, false);
    if (!files.netlist.empty())
        options.netlist = put("d" + files.netlistEnding, files.netlist, files.gzipped);
    options.top = files.top;
    Outcome outcome;
    try {
        std::ostringstream json;
        Report::writeJson(Analysis::Session().run(options), json);
        outcome.report = nlohmann::json::parse(json.str());
    } catch (const std::exception& refused) {
        outcome.refused = refused.what();
    }
    return outcome;
}

} // namespace Metamorphic
