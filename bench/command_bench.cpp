// The whole command on files: time per stage and peak memory, for the example design and for a generated one
// of a million pins (the first argument sets another number): registers and four-input tables in random
// order, one clock.
//
// The files are written to a temporary folder, from a fixed seed, before anything is measured.
#include "Measure.h"

#include "analysis/Session.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <unistd.h>

namespace {

constexpr std::uint32_t seed = 20;
constexpr std::size_t defaultPins = 1'000'000;
// Two registers and three tables have twenty-one pins.
constexpr std::size_t block = 64; // of tables
constexpr std::size_t registersOfGroup = 2, tablesOfGroup = 3, pinsOfGroup = 21;

class Files {
public:
    explicit Files(std::size_t pins)
        : folder_(std::filesystem::temp_directory_path() / ("vorlen-bench-" + std::to_string(getpid()))),
          registers_(registersOfGroup * (pins / pinsOfGroup)), tables_(tablesOfGroup * (pins / pinsOfGroup)),
          random_(seed) {
        std::filesystem::create_directories(folder_);
        connect();
        writeSdf();
        writeNetlist();
        std::ofstream(folder_ / "d.sdc") << "create_clock -name clk -period 20 [get_ports clk]\n";
    }
    ~Files() { std::filesystem::remove_all(folder_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    std::string path(const char* name) const { return (folder_ / name).string(); }

private:
    // The driver of a pin: register r's output is r, table t's is registers + t.
    std::string driver(std::size_t number) const {
        return number < registers_ ? "r" + std::to_string(number) + "/Q"
                                   : "t" + std::to_string(number - registers_) + "/O";
    }
    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }

    // A table reads registers, and tables before it in its block, so that cones have some tens of registers.
    void connect() {
        for (std::size_t table = 0; table < tables_; ++table)
            for (std::size_t pin = 0; pin < 4; ++pin) {
                const std::size_t before = table % block;
                const bool chained = pin < 2 && before > 0;
                inputs_.push_back(chained ? registers_ + table - 1 - below(before) : below(registers_));
            }
        for (std::size_t reg = 0; reg < registers_; ++reg)
            data_.push_back(registers_ + below(tables_));
    }

    void writeSdf() {
        std::ofstream out(folder_ / "d.sdf");
        out << "(DELAYFILE (SDFVERSION \"3.0\") (DESIGN \"top\") (DIVIDER /) (TIMESCALE 1ps)\n"
               "  (CELL (CELLTYPE \"top\") (INSTANCE )\n    (DELAY\n      (ABSOLUTE\n";
        const auto wire = [&](const std::string& from, const std::string& to) {
            const std::size_t delay = 100 + below(900);
            const std::string late = std::to_string(delay), early = std::to_string(delay * 9 / 10);
            const std::string triple = "(" + early + ":" + late + ":" + late + ")";
            out << "        (INTERCONNECT " << from << ' ' << to << ' ' << triple << ' ' << triple << ")\n";
        };
        for (std::size_t reg = 0; reg < registers_; ++reg) {
            const std::string name = "r" + std::to_string(reg);
            wire("clk", name + "/CLK");
            wire(driver(data_[reg]), name + "/D");
        }
        for (std::size_t input = 0; input < inputs_.size(); ++input)
            wire(driver(inputs_[input]), "t" + std::to_string(input / 4) + "/I" + std::to_string(input % 4));
        out << "      )\n    )\n  )\n";
        for (std::size_t reg = 0; reg < registers_; ++reg)
            out << "  (CELL (CELLTYPE \"FF\") (INSTANCE r" << reg
                << ")\n    (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (540:540:540) (540:540:540))))\n"
                   "    (TIMINGCHECK\n      (SETUPHOLD (posedge D) (posedge CLK) (120:120:120) (30:30:30))\n"
                   "      (SETUPHOLD (negedge D) (posedge CLK) (110:110:110) (20:20:20))\n    )\n  )\n";
        for (std::size_t table = 0; table < tables_; ++table) {
            out << "  (CELL (CELLTYPE \"LUT4\") (INSTANCE t" << table << ")\n    (DELAY\n      (ABSOLUTE\n";
            for (int pin = 0; pin < 4; ++pin)
                out << "        (IOPATH I" << pin << " O (300:350:399) (300:350:399))\n";
            out << "      )\n    )\n  )\n";
        }
        out << ")\n";
    }

    void writeNetlist() {
        std::ofstream out(folder_ / "d.json");
        const auto net = [](std::size_t number) { return number + 3; };
        out << "{\"modules\":{\"top\":{\"attributes\":{\"top\":1},\n"
               "\"ports\":{\"clk\":{\"direction\":\"input\",\"bits\":[2]}},\n\"cells\":{";
        for (std::size_t reg = 0; reg < registers_; ++reg)
            out << (reg == 0 ? "\n" : ",\n") << "\"r" << reg
                << "\":{\"type\":\"FF\",\"port_directions\":{\"CLK\":\"input\",\"D\":\"input\",\"Q\":"
                   "\"output\"},"
                   "\"connections\":{\"CLK\":[2],\"D\":["
                << net(data_[reg]) << "],\"Q\":[" << net(reg) << "]}}";
        for (std::size_t table = 0; table < tables_; ++table) {
            out << ",\n\"t" << table
                << "\":{\"type\":\"LUT4\",\"port_directions\":{\"I0\":\"input\",\"I1\":\"input\",\"I2\":"
                   "\"input\","
                   "\"I3\":\"input\",\"O\":\"output\"},\"connections\":{";
            for (std::size_t pin = 0; pin < 4; ++pin)
                out << "\"I" << pin << "\":[" << net(inputs_[4 * table + pin]) << "],";
            out << "\"O\":[" << net(registers_ + table) << "]}}";
        }
        out << "},\n\"netnames\":{}}}}\n";
    }

    std::filesystem::path folder_;
    std::size_t registers_, tables_;
    std::mt19937_64 random_;
    std::vector<std::size_t> inputs_, data_;
};

void measure(const char* title, const Analysis::SessionOptions& options) {
    const bench::PeakMemory peak;
    const bench::Stopwatch watch;
    Analysis::Session session;
    const Report::Report report = session.run(options);
    std::printf("%s: %.2f s, %.0f MB, %zu end points, %llu arcs\n", title, watch.seconds(),
                peak.getRise() / 1e6, report.endpoints.size(), static_cast<unsigned long long>(report.arcs));
    for (const Analysis::Stage& stage : session.stages)
        std::printf("  %-28s %8.3f s\n", std::string(stage.name).c_str(), stage.seconds);
    std::fflush(stdout);
}

} // namespace

int main(int count, char** words) {
    const std::size_t pins = count > 1 ? std::strtoull(words[1], nullptr, 10) : defaultPins;
    Analysis::SessionOptions options;
    const std::string example = std::string(VORLEN_EXAMPLES_DIR) + "/uart_fir/uart_fir";
    options.sdf = example + ".sdf";
    options.sdc = {example + ".sdc"};
    options.netlist = example + ".routed.json.gz";
    measure("uart_fir", options);

    const Files files(pins);
    options.sdf = files.path("d.sdf");
    options.sdc = {files.path("d.sdc")};
    options.netlist.reset();
    measure("generated, without a netlist", options);
    options.netlist = files.path("d.json");
    measure("generated, with a netlist", options);
    std::printf("files: %.1f MB of SDF, %.1f MB of netlist\n",
                static_cast<double>(std::filesystem::file_size(options.sdf)) / 1e6,
                static_cast<double>(std::filesystem::file_size(*options.netlist)) / 1e6);
}
