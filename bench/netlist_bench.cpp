// Reading a netlist of a million cell pins, as JSON and as Verilog, up to the flat netlist.
//
// The files are written to the folder for temporary files, from a fixed seed: cells of ten pins with
// parameters and places, for Verilog in modules of a thousand cells. For comparison, a pass over the bytes
// without parsing is measured too.
#include "Measure.h"
#include "readers/netlist/Json.h"
#include "readers/netlist/Verilog.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned cells = 100'000;
constexpr unsigned inputs = 8; // per cell, which has a clock and an output too
constexpr unsigned cellsOfModule = 1'000;
constexpr double megabyte = 1e6;

// A file that is deleted with this object.
class TemporaryFile {
public:
    TemporaryFile() : path_((std::filesystem::temp_directory_path() / "netlist_bench.XXXXXX").string()) {
        if (const int descriptor = mkstemp(path_.data()); descriptor < 0 || close(descriptor) != 0) {
            std::perror(path_.c_str());
            std::exit(EXIT_FAILURE);
        }
    }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

std::string cellName(unsigned cell) {
    return "core/unit_" + std::to_string(cell % 64) + "/row[" + std::to_string(cell % 32) + "]_reg_" +
           std::to_string(cell);
}

void writeJsonCell(std::ostream& file, unsigned cell, std::mt19937& random) {
    file << (cell == 0 ? "" : ",\n") << "    \"" << cellName(cell)
         << "\": {\n     \"hide_name\": 0,\n     \"type\": \"LOGIC_CELL\",\n     \"parameters\": {\n"
            "      \"LUT_INIT\": \"0000000011111111\",\n      \"DFF_ENABLE\": \"1\"\n     },\n"
            "     \"attributes\": {\n      \"PLACE\": \"X"
         << cell % 100 << "/Y" << cell % 77 << "\"\n     },\n     \"port_directions\": {\n";
    for (unsigned i = 0; i < inputs; ++i)
        file << "      \"I" << i << "\": \"input\",\n";
    file << "      \"CLK\": \"input\",\n      \"O\": \"output\"\n     },\n     \"connections\": {\n";
    for (unsigned i = 0; i < inputs; ++i)
        file << "      \"I" << i << "\": [\n       " << random() % cells + 3 << "\n      ],\n";
    file << "      \"CLK\": [\n       2\n      ],\n      \"O\": [\n       " << cell + 3
         << "\n      ]\n     }\n    }";
}

void writeJson(const std::string& path) {
    std::ofstream file(path);
    std::mt19937 random(5);
    file << "{\n \"modules\": {\n  \"top\": {\n   \"ports\": {\n    \"clk\": {\n     \"direction\": "
            "\"input\",\n"
            "     \"bits\": [\n      2\n     ]\n    }\n   },\n   \"cells\": {\n";
    for (unsigned cell = 0; cell < cells; ++cell)
        writeJsonCell(file, cell, random);
    file << "\n   },\n   \"netnames\": {\n    \"clk\": { \"bits\": [ 2 ] }";
    for (unsigned cell = 0; cell < cells; ++cell)
        file << ",\n    \"" << cellName(cell) << "_O\": {\n     \"hide_name\": 0,\n     \"bits\": [\n      "
             << cell + 3
             << "\n     ],\n     \"attributes\": {\n      \"ROUTING\": "
                "\"X1/Y10/cell_0:out;;1;X1/Y10/local_0;"
                "X1/Y10/1.10.cell_0:out.->.1.10.local_0;1;X1/Y10/cell_7:in_0\"\n     }\n    }";
    file << "\n   }\n  }\n }\n}\n";
}

void writeVerilogModule(std::ostream& file, unsigned first, std::mt19937& random) {
    file << "module unit_" << first << " (clk, in, out);\n  input clk;\n  input [7:0] in;\n  output out;\n";
    for (unsigned cell = 0; cell < cellsOfModule; ++cell)
        file << "  wire \\" << cellName(first + cell) << "_O ;\n";
    for (unsigned cell = 0; cell < cellsOfModule; ++cell) {
        file << "  (* place = \"X" << cell % 100 << "/Y" << cell % 77
             << "\" *)\n  LOGIC_CELL #(\n    .LUT_INIT(16'b0000000011111111)\n  ) \\"
             << cellName(first + cell) << "  (\n";
        for (unsigned i = 0; i < inputs; ++i)
            file << "    .I" << i << "(\\"
                 << cellName(first + static_cast<unsigned>(random() % cellsOfModule)) << "_O ),\n";
        file << "    .CLK(clk),\n    .O(\\" << cellName(first + cell) << "_O )\n  );\n";
    }
    file << "  assign out = \\" << cellName(first) << "_O ;\nendmodule\n";
}

void writeVerilog(const std::string& path) {
    std::ofstream file(path);
    std::mt19937 random(5);
    for (unsigned first = 0; first < cells; first += cellsOfModule)
        writeVerilogModule(file, first, random);
    file << "module top (input clk, input [7:0] in, output [" << cells / cellsOfModule - 1 << ":0] out);\n";
    for (unsigned first = 0; first < cells; first += cellsOfModule)
        file << "  unit_" << first << " u" << first << " (.clk(clk), .in(in), .out(out["
             << first / cellsOfModule << "]));\n";
    file << "endmodule\n";
}

using Reader = Design::Netlist (*)(Base::Source&, const std::string&, Base::Diagnostics&);

void measure(const char* what, void (*write)(const std::string&), Reader read) {
    const TemporaryFile file;
    write(file.path());
    const double size = static_cast<double>(std::filesystem::file_size(file.path())) / megabyte;
    const double bytes = bench::timeOf([&] {
        Base::Source source(file.path());
        std::vector<char> block(1 << 16);
        while (source.read(block.data(), block.size()) != 0) {
        }
    });
    Base::Diagnostics diagnostics;
    Design::Netlist netlist;
    const double before = bench::residentBytes();
    const double seconds = bench::timeOf([&] {
        Base::Source source(file.path());
        netlist = read(source, "", diagnostics);
    });
    const double grown = (bench::residentBytes() - before) / megabyte;
    std::printf(
        "%s, %.1f MB, %zu cells, %zu pins, %zu nets: read and hashed in %.2f s, to a netlist in %.2f s "
        "(%.0f MB/s), %.0f MB held\n",
        what, size, netlist.cells.size(), netlist.pins.size(), netlist.nets.size(), bytes, seconds,
        size / seconds, grown);
    std::fflush(stdout);
}

} // namespace

int main() {
    measure("JSON", writeJson, Readers::readJson);
    measure("Verilog", writeVerilog, Readers::readVerilog);
    return 0;
}
