// Reading a plain SDF of some 200 MB with a handler that does nothing: the cost of the text only.
//
// The file is written to the folder for temporary files, from a fixed seed: half of it connections, half
// cells with their paths and checks. For comparison, a pass over its bytes without parsing (reading and
// hashing) is measured too.
#include "Measure.h"
#include "readers/sdf/Parser.h"

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t fileBytes = 200'000'000;
constexpr double megabyte = 1e6;

// A file that is deleted with this object.
class TemporaryFile {
public:
    TemporaryFile() : path_((std::filesystem::temp_directory_path() / "sdf_bench.XXXXXX").string()) {
        const int descriptor = mkstemp(path_.data());
        file_ = descriptor < 0 ? nullptr : fdopen(descriptor, "w");
        if (!file_) {
            std::perror(path_.c_str());
            std::exit(EXIT_FAILURE);
        }
    }
    ~TemporaryFile() {
        close();
        std::filesystem::remove(path_);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return path_; }
    void write(const std::string& text) { written_ += std::fwrite(text.data(), 1, text.size(), file_); }
    void close() {
        if (file_ && std::fclose(file_) != 0) {
            std::perror(path_.c_str());
            std::exit(EXIT_FAILURE);
        }
        file_ = nullptr;
    }
    std::size_t written() const { return written_; }

private:
    std::string path_;
    std::FILE* file_ = nullptr;
    std::size_t written_ = 0;
};

class Generator {
public:
    explicit Generator(TemporaryFile& file) : file_(file) {}

    void run() {
        file_.write(
            "(DELAYFILE\n  (SDFVERSION \"3.0\")\n  (DESIGN \"top\")\n  (DIVIDER /)\n  (TIMESCALE 1ps)\n"
            "  (CELL\n    (CELLTYPE \"top\")\n    (INSTANCE )\n    (DELAY\n      (ABSOLUTE\n");
        while (file_.written() < fileBytes / 2)
            file_.write("        (INTERCONNECT " + instance() + "/O " + instance() + "/I" +
                        std::to_string(random_() % 4) + " " + triple() + " " + triple() + ")\n");
        file_.write("      )\n    )\n  )\n");
        while (file_.written() < fileBytes)
            cell();
        file_.write(")\n");
        file_.close();
    }

private:
    std::string instance() {
        return "core/unit_" + std::to_string(random_() % 64) + "/row\\[" + std::to_string(random_() % 32) +
               "\\]_reg_" + std::to_string(random_() % 100'000);
    }
    std::string triple() {
        const unsigned long typical = 100 + random_() % 2'000;
        return "(" + std::to_string(typical * 9 / 10) + ":" + std::to_string(typical) + ":" +
               std::to_string(typical * 11 / 10) + ")";
    }
    void cell() {
        std::string text = "  (CELL\n    (CELLTYPE \"LOGIC_CELL\")\n    (INSTANCE " + instance() +
                           ")\n    (DELAY\n      (ABSOLUTE\n";
        for (const char* input : {"CLK", "I0", "I1", "I2", "I3"})
            text += std::string("        (IOPATH ") + input + " O " + triple() + " " + triple() + ")\n";
        text += "      )\n    )\n    (TIMINGCHECK\n";
        for (const char* edge : {"posedge", "negedge"})
            text +=
                std::string("      (SETUPHOLD (") + edge + " I0) (posedge CLK) " + triple() + " (0:0:0))\n";
        file_.write(text + "    )\n  )\n");
    }

    TemporaryFile& file_;
    std::mt19937 random_{11};
};

void passOver(const std::string& path) {
    Base::Source source(path);
    std::vector<char> block(Readers::Sdf::Lexer::defaultBlock);
    while (source.read(block.data(), block.size()) != 0) {
    }
}

void parse(const std::string& path) {
    Base::Source source(path);
    Readers::Sdf::Handler nothing;
    Base::Diagnostics diagnostics;
    Readers::Sdf::parse(source, nothing, diagnostics);
}

} // namespace

int main() {
    TemporaryFile file;
    Generator(file).run();
    const double size = static_cast<double>(file.written()) / megabyte;
    const double bytes = bench::timeOf([&] { passOver(file.path()); });
    const double before = bench::residentBytes();
    const double events = bench::timeOf([&] { parse(file.path()); });
    const double grown = (bench::residentBytes() - before) / megabyte;
    std::printf("SDF of %.0f MB: read and hashed in %.2f s (%.0f MB/s), parsed in %.2f s (%.0f MB/s), "
                "%.1f MB more held at the end\n",
                size, bytes, size / bytes, events, size / events, grown);
    return 0;
}
