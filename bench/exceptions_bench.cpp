// The command on a design of 100,000 registers with 10 to 10,000 exceptions: the cost of reading them, of
// compiling them to classes and of analysing under them.
//
// The design has rows of registers. The logic before a register reads registers of its neighbourhood, through
// at most eight gates. Four kinds of constraints are measured, each from a fixed seed:
//   mixed    ten false paths per multicycle: cells, pins, lists and globs, overlapping, both sides named
//   one side every exception has only -from or only -to, so that its paths may end or start anywhere
//   through  every false path has a gate of its own as -through
//   wide     as mixed, but fewer, with globs of 1,000 registers on one side and up to 11,000 on the other
//
// Every run has its own process, and so its own peak of memory. The first argument selects a kind, the second
// one the number of exceptions.
#include "Measure.h"
#include "analysis/Session.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned registers = 100'000;
constexpr unsigned rowLength = 100;
constexpr unsigned nearby = 24; // distance from which a gate reads its inputs
constexpr unsigned gatesOfRegister = 3;

// A folder that is deleted with this object.
class Folder {
public:
    Folder() : path_((std::filesystem::temp_directory_path() / "exceptions_bench.XXXXXX").string()) {
        if (!mkdtemp(path_.data())) {
            std::perror(path_.c_str());
            std::exit(EXIT_FAILURE);
        }
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const char* name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

unsigned below(std::mt19937& random, unsigned limit) { return static_cast<unsigned>(random() % limit); }

std::string registerName(unsigned number) {
    return "row" + std::to_string(number / rowLength) + "_r" + std::to_string(number % rowLength);
}
std::string gateName(unsigned number) {
    return "row" + std::to_string(number / rowLength / gatesOfRegister) + "_g" +
           std::to_string(number % (rowLength * gatesOfRegister));
}

// Gate g of a register reads registers nearby and gates before it.
void writeSdf(const std::string& path) {
    std::mt19937 random(7);
    std::ofstream out(path);
    out << "(DELAYFILE (SDFVERSION \"3.0\") (DESIGN \"bench\") (DIVIDER .) (TIMESCALE 1ps)\n"
           "(CELL (CELLTYPE \"bench\") (INSTANCE) (DELAY (ABSOLUTE\n";
    const auto wire = [&](const std::string& from, const std::string& to) {
        out << "(INTERCONNECT " << from << ' ' << to << " (" << 100 + random() % 400 << "))\n";
    };
    const auto near = [&](unsigned number) {
        const unsigned row = number / rowLength * rowLength;
        return registerName(row + (number + rowLength - below(random, nearby)) % rowLength) + "/Q";
    };
    for (unsigned number = 0; number < registers; ++number) {
        wire("clk", registerName(number) + "/C");
        for (unsigned gate = 0; gate < gatesOfRegister; ++gate) {
            const unsigned own = number * gatesOfRegister + gate;
            const std::string name = gateName(own);
            wire(near(number), name + "/A");
            // The first gate may read another register's gate, but no deeper than the row allows.
            if (gate > 0)
                wire(gateName(own - 1) + "/Z", name + "/B");
            else if (number % 4 != 0)
                wire(gateName(own - 2) + "/Z", name + "/B");
            else
                wire(near(number), name + "/B");
        }
        wire(gateName(number * gatesOfRegister + gatesOfRegister - 1) + "/Z", registerName(number) + "/D");
    }
    out << ")))\n";
    for (unsigned number = 0; number < registers; ++number)
        out << "(CELL (CELLTYPE \"DFF\") (INSTANCE " << registerName(number)
            << ") (DELAY (ABSOLUTE (IOPATH (posedge C) Q (300)))) (TIMINGCHECK (SETUPHOLD D (posedge C) (80) "
               "(40))))\n";
    for (unsigned number = 0; number < registers * gatesOfRegister; ++number)
        out << "(CELL (CELLTYPE \"LUT2\") (INSTANCE " << gateName(number)
            << ") (DELAY (ABSOLUTE (IOPATH A Z (" << 100 + random() % 300 << ")) (IOPATH B Z ("
            << 100 + random() % 300 << ")))))\n";
    out << ")\n";
}

enum class Kind { mixed, oneSide, through, wide };

// One end of an exception near a place: a cell, a pin, a list or a glob of ten registers.
std::string end(std::mt19937& random, unsigned near, const char* pin) {
    const unsigned row = near / rowLength * rowLength;
    const auto one = [&] { return registerName(row + (near + below(random, nearby)) % rowLength); };
    switch (random() % 8) {
    case 0:
        return "[get_cells row" + std::to_string(near / rowLength) + "_r" + std::to_string(random() % 10) +
               "*]";
    case 1:
        return "[get_cells {" + one() + " " + one() + " " + one() + "}]";
    case 2:
    case 3:
        return "[get_pins " + one() + "/" + pin + "]";
    default:
        return "[get_cells " + one() + "]";
    }
}

void writeSdc(const std::string& path, Kind kind, unsigned count) {
    std::mt19937 random(11);
    std::ofstream out(path);
    out << "create_clock -period 10 clk\n";
    for (unsigned number = 0; number < count; ++number) {
        const auto near = below(random, registers);
        if (kind == Kind::through) {
            out << "set_false_path -through [get_pins "
                << gateName(near * gatesOfRegister + below(random, gatesOfRegister)) << "/Z]\n";
            continue;
        }
        out << (number % 11 == 10 ? "set_multicycle_path " + std::to_string(2 + random() % 3) + " -setup"
                                  : std::string("set_false_path"));
        if (kind == Kind::wide) {
            out << " -from [get_cells row" << below(random, 100) << "?_r*] -to [get_cells row"
                << below(random, 100) << "*_r*]\n";
            continue;
        }
        const bool both = kind == Kind::mixed;
        const bool from = both || random() % 2 == 0;
        if (from)
            out << " -from " << end(random, near, "C");
        if (both || !from)
            out << " -to " << end(random, near, "D");
        out << "\n";
    }
}

void run(const Folder& folder, Kind kind, const char* name, unsigned count) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child != 0) {
        int status = 0;
        waitpid(child, &status, 0);
        if (status != 0)
            std::printf("%-8s %6u exceptions: failed\n", name, count);
        return;
    }
    const std::string sdc = folder / (std::string(name) + std::to_string(count) + ".sdc").c_str();
    writeSdc(sdc, kind, count);
    Analysis::SessionOptions options;
    options.sdf = folder / "d.sdf";
    options.sdc = {sdc};
    Analysis::Session session;
    try {
        const Report::Report report = session.run(options);
        std::printf("%-8s %6u exceptions:", name, count);
        for (const Analysis::Stage& stage : session.stages)
            std::printf(" %.*s %.2f s,", static_cast<int>(stage.name.size()), stage.name.data(),
                        stage.seconds);
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        std::printf(
            " peak %.0f MB; setup %.3f ns, hold %.3f ns\n", static_cast<double>(usage.ru_maxrss) / 1024,
            static_cast<double>(report.setup.total) / 1000, static_cast<double>(report.hold.total) / 1000);
    } catch (const Base::BadInput& error) {
        std::printf("%-8s %6u exceptions: refused: %s\n", name, count, error.what());
    }
    std::fflush(stdout);
    _exit(0);
}

} // namespace

int main(int argc, char** argv) {
    const Folder folder;
    writeSdf(folder / "d.sdf");
    const std::pair<Kind, const char*> kinds[] = {{Kind::mixed, "mixed"},
                                                  {Kind::oneSide, "one side"},
                                                  {Kind::through, "through"},
                                                  {Kind::wide, "wide"}};
    std::printf("%u registers, %u gates\n", registers, registers * gatesOfRegister);
    for (const auto& [kind, name] : kinds)
        for (const unsigned count : {10U, 100U, 1'000U, 11'000U})
            if ((kind != Kind::wide || count <= 1'000) && (argc < 2 || std::strcmp(argv[1], name) == 0) &&
                (argc < 3 || static_cast<unsigned>(std::atoi(argv[2])) == count))
                run(folder, kind, name, count);
    return 0;
}
