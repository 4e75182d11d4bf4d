// The fuzzers' entry points without a fuzzer: every input of the corpora, then random mutations of these.
//
// VORLEN_SEED and VORLEN_FUZZ_RUNS choose other mutations and another number of them per entry point. An
// input that fails is written to the folder for temporary files, and its name is printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

using EntryPoint = int(const std::uint8_t* data, std::size_t size);

extern "C" EntryPoint fuzz_sdf, fuzz_json, fuzz_verilog, fuzz_sdc, fuzz_run, fuzz_command;

namespace {

namespace fs = std::filesystem;

struct Row {
    const char* name;
    EntryPoint* run;
    unsigned mutations; // as many as take a few seconds
};

constexpr Row rows[] = {
    {"sdf", fuzz_sdf, 5'000}, {"json", fuzz_json, 20'000}, {"verilog", fuzz_verilog, 20'000},
    {"sdc", fuzz_sdc, 1'000}, {"run", fuzz_run, 1'000},    {"command", fuzz_command, 1'000},
};

unsigned numberFrom(const char* variable, unsigned otherwise) {
    const char* text = std::getenv(variable);
    return text && *text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

// Sorted by name, so that a seed always selects the same input.
std::vector<std::string> inputsOf(const char* name) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(VORLEN_CORPUS_DIR) / name))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<std::string> inputs;
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return inputs;
}

class Mutator {
public:
    Mutator(const std::vector<std::string>& inputs, unsigned seed) : inputs_(inputs), random_(seed) {}

    std::string next() {
        constexpr std::size_t mostChanges = 4;
        std::string bytes = any();
        for (std::size_t left = 1 + below(mostChanges); left > 0; --left)
            change(bytes);
        return bytes;
    }

private:
    std::size_t below(std::size_t bound) { return random_() % std::max<std::size_t>(bound, 1); }
    const std::string& any() { return inputs_[below(inputs_.size())]; }
    // A piece of another input, of at most the given length.
    std::string piece(std::size_t longest) {
        const std::string& from = any();
        return from.substr(below(from.size()), 1 + below(longest));
    }

    void change(std::string& bytes) {
        constexpr std::size_t longestCut = 40, longestPiece = 60, mostCopies = 50, kinds = 7;
        const std::size_t at = below(bytes.size());
        switch (below(kinds)) {
        case 0: // a bit
            if (!bytes.empty())
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
            return;
        case 1: // a byte
            if (!bytes.empty())
                bytes[at] = static_cast<char>(below(256));
            return;
        case 2:
            bytes.erase(at, 1 + below(longestCut));
            return;
        case 3: // to the end
            bytes.erase(at);
            return;
        case 4:
            bytes.insert(at, piece(longestPiece));
            return;
        case 5: {
            const std::string part = piece(longestPiece);
            bytes.replace(at, part.size(), part);
            return;
        }
        default: { // one byte many times
            const std::string part = bytes.substr(at, 1 + below(longestPiece));
            for (std::size_t copies = 1 + below(mostCopies); copies > 0; --copies)
                bytes.insert(at, part);
            return;
        }
        }
    }

    const std::vector<std::string>& inputs_;
    std::mt19937 random_;
};

// The exception that leaves the entry point; empty if there is none.
std::string failure(const Row& row, const std::string& bytes) {
    try {
        row.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    } catch (const std::exception& thrown) {
        return thrown.what();
    }
    return {};
}

void expectHarmless(const Row& row, const std::string& bytes, const std::string& what) {
    const std::string text = failure(row, bytes);
    if (text.empty())
        return;
    const fs::path file = fs::temp_directory_path() / ("vorlen-fuzz-" + std::string(row.name));
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    ADD_FAILURE() << what << ": " << text << " (" << file << ")";
}

class Replay : public testing::TestWithParam<Row> {};

TEST_P(Replay, Corpus) {
    const std::vector<std::string> inputs = inputsOf(GetParam().name);
    EXPECT_GE(inputs.size(), 10U);
    for (std::size_t i = 0; i < inputs.size(); ++i)
        expectHarmless(GetParam(), inputs[i], "input " + std::to_string(i));
    expectHarmless(GetParam(), {}, "nothing");
}

TEST_P(Replay, Mutations) {
    const std::vector<std::string> inputs = inputsOf(GetParam().name);
    const unsigned seed = numberFrom("VORLEN_SEED", 1);
    const unsigned count = numberFrom("VORLEN_FUZZ_RUNS", GetParam().mutations);
    std::cout << "seed " << seed << ", " << count << " mutations\n";
    Mutator mutator(inputs, seed);
    for (unsigned i = 0; i < count && !HasFailure(); ++i)
        expectHarmless(GetParam(), mutator.next(), "mutation " + std::to_string(i));
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Replay, testing::ValuesIn(rows),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
