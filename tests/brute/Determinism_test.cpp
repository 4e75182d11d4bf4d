// The same files have the same report, byte for byte: in one process and in another, whatever the state of
// the heap, after any number of earlier runs, and with every compiler. digests.txt holds what every build
// must report; VORLEN_UPDATE=1 in the environment writes it anew.
#include "Generate.h"
#include "Write.h"

#include "ProjectFiles.h"
#include "analysis/Session.h"
#include "report/Json.h"
#include "tests/support/TemporaryFolder.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

// The files of some designs. They are deleted with this object.
class Designs {
public:
    Analysis::SessionOptions add(std::uint64_t seed,
                                 Brute::ExceptionMode mode = Brute::ExceptionMode::overlapping,
                                 int loopPercent = 0) const {
        Brute::Shape shape;
        shape.exceptions = mode;
        shape.loopPercent = loopPercent;
        const Brute::Design design = Brute::generate(seed, shape);
        Analysis::SessionOptions options;
        options.sdf = write(seed, "sdf", Brute::writeSdf(design));
        options.sdc = {write(seed, "sdc", Brute::writeSdc(design))};
        options.netlist = write(seed, "json", Brute::writeJson(design));
        options.unconstrained = true;
        options.perEndpoint = 3;
        return options;
    }
    std::string path(const std::string& name) const { return folder_.at(name); }
    // The text without the folder, whose name is another one in each run.
    std::string withoutFolder(std::string text) const { return folder_.relative(std::move(text)); }

private:
    std::string write(std::uint64_t seed, const char* kind, const std::string& text) const {
        return folder_.write("d" + std::to_string(seed) + "." + kind, text);
    }

    Support::TemporaryFolder folder_;
};

std::string jsonOf(const Analysis::SessionOptions& options) {
    std::ostringstream json;
    Report::writeJson(Analysis::Session().run(options), json);
    return json.str();
}

// Leaves the heap full of holes, so that later objects have addresses in no order. The remaining blocks are
// freed with this object.
class Litter {
public:
    explicit Litter(unsigned seed) {
        std::mt19937 random(seed);
        constexpr std::size_t blocks = 50'000, largest = 600;
        for (std::size_t i = 0; i < blocks; ++i)
            blocks_.push_back(std::make_unique<char[]>(1 + random() % largest));
        std::shuffle(blocks_.begin(), blocks_.end(), random);
        blocks_.resize(blocks / 2);
    }

private:
    std::vector<std::unique_ptr<char[]>> blocks_;
};

constexpr std::array<std::uint64_t, 8> seeds{1, 2, 3, 5, 8, 13, 21, 34};

TEST(Determinism, ASecondRunGivesTheSameBytes) {
    const Designs designs;
    for (const std::uint64_t seed : seeds) {
        const Analysis::SessionOptions options = designs.add(seed);
        const std::string json = jsonOf(options);
        EXPECT_NE(json.find("\"endpoints\""), std::string::npos);
        EXPECT_EQ(jsonOf(options), json) << "seed " << seed;
    }
}

TEST(Determinism, OtherAddressesGiveTheSameBytes) {
    const Designs designs;
    for (const std::uint64_t seed : seeds) {
        const Analysis::SessionOptions options = designs.add(seed);
        const std::string json = jsonOf(options);
        for (unsigned order = 1; order <= 5; ++order) {
            const Litter litter(order);
            EXPECT_EQ(jsonOf(options), json) << "seed " << seed << ", order " << order;
        }
    }
}

TEST(Determinism, TheHundredAndFirstRunGivesTheSameBytes) {
    const Designs designs;
    const Analysis::SessionOptions first = designs.add(seeds[0]);
    const std::string json = jsonOf(first);
    constexpr std::uint64_t others = 99;
    for (std::uint64_t seed = 100; seed < 100 + others; ++seed)
        jsonOf(designs.add(seed));
    EXPECT_EQ(jsonOf(first), json);
}

// The program in a new process, and this process, which has made runs before.
TEST(Determinism, TheProgramGivesTheSameBytes) {
    const Designs designs;
    for (const std::uint64_t seed : seeds) {
        const Analysis::SessionOptions options = designs.add(seed);
        for (const char* name : {"first.json", "second.json"}) {
            const std::string json = designs.path(name);
            const std::string command =
                std::string(VORLEN_COMMAND_FILE) + " analyze --sdf " + options.sdf + " --sdc " +
                options.sdc.front() + " --netlist " + *options.netlist +
                " --exceptions --unconstrained --per-endpoint 3 --allow-violations --json " + json +
                " > /dev/null 2> /dev/null";
            ASSERT_EQ(std::system(command.c_str()), 0) << command;
            std::ifstream in(json, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(in), {}};
            EXPECT_EQ(bytes, jsonOf(options)) << "seed " << seed;
        }
    }
}

// --- Builds ---

// The reports of consecutive designs as one digest: "overlapping 1-10 5d41...".
std::string digestOf(const char* name, Brute::ExceptionMode mode, int loopPercent, std::uint64_t first,
                     std::uint64_t last) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const Designs designs;
    for (std::uint64_t seed = first; seed <= last; ++seed) {
        const std::string json = designs.withoutFolder(jsonOf(designs.add(seed, mode, loopPercent)));
        EXPECT_NE(json.find("\"endpoints\""), std::string::npos);
        hash.addData(json.data(), static_cast<int>(json.size()));
    }
    return std::string(name) + " " + std::to_string(first) + "-" + std::to_string(last) + " " +
           hash.result().toHex().toStdString();
}

std::vector<std::string> linesOf(const fs::path& file) {
    std::vector<std::string> lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

TEST(Determinism, EveryBuildGivesTheSameBytes) {
    using Brute::ExceptionMode;
    constexpr std::uint64_t designs = 50, perRow = 10;
    const struct {
        const char* name;
        ExceptionMode mode;
        int loopPercent;
    } modes[] = {{"without", ExceptionMode::without, 0},
                 {"single", ExceptionMode::single, 0},
                 {"overlapping", ExceptionMode::overlapping, 0},
                 {"loops", ExceptionMode::overlapping, 100}};
    std::vector<std::string> rows;
    for (const auto& [name, mode, loopPercent] : modes)
        for (std::uint64_t first = 1; first <= designs; first += perRow)
            rows.push_back(digestOf(name, mode, loopPercent, first, first + perRow - 1));
    const fs::path stored = VORLEN_DIGESTS_FILE;
    const char* update = std::getenv("VORLEN_UPDATE");
    if (update && std::string(update) == "1") {
        std::ofstream out(stored);
        for (const std::string& row : rows)
            out << row << '\n';
        GTEST_SKIP() << "written: " << stored;
    }
    const std::vector<std::string> expected = linesOf(stored);
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
        EXPECT_EQ(rows[row], expected[row]);
}

} // namespace
