// The whole command on a small design, with one allocation after the other failing: it reports the failure in
// one line, exits with the status for it, and leaves no file except a complete report. If the failure is
// thrown instead, as in a program that reads files with the library, no memory leaks.
//
// Each run has its own process, as the command has.
#include "Allocator.h"
#include "ProjectFiles.h"
#include "cli/Command.h"
#include "cli/Ending.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr unsigned long enough = 400; // a run with fewer allocations would test too little

class OutOfMemory : public testing::Test {
protected:
    // What a run reports to the test.
    struct Told {
        bool ended = false;   // the command returned
        bool failed = false;  // the allocation was reached and failed
        std::size_t kept = 0; // number of blocks that leaked
    };

    OutOfMemory()
        : told_(static_cast<Told*>(
              mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        const std::string example = VORLEN_EXAMPLES_DIR "/two_regs/two_regs";
        options_.sdf = example + ".sdf";
        options_.sdc = {example + ".sdc"};
        options_.netlist = example + ".routed.json";
        options_.json = folder_.at("report.json");
        options_.quiet = true;
        options_.allowViolations = true;
    }
    ~OutOfMemory() override { munmap(told_, sizeof(Told)); }

    std::string write(const char* name, const char* text) const { return folder_.write(name, text); }

    // Returns the exit status; -1 if the process was killed.
    int run(unsigned long failing) const {
        *told_ = {};
        const pid_t child = fork();
        if (child == 0) {
            redirect(STDOUT_FILENO, "/dev/null");
            redirect(STDERR_FILENO, "/dev/null");
            if (isThrown_)
                Cli::runCommand(options_); // creates what is created on first use
            else
                Cli::handleLackOfMemory();
            redirect(STDERR_FILENO, messageFile().c_str());
            const std::size_t before = Faults::liveBlocks();
            Faults::failAllocation(failing);
            const Cli::ExitStatus status = Cli::runCommand(options_);
            *told_ = {true, Faults::hasFailed(), Faults::liveBlocks() - before};
            _exit(status);
        }
        const std::optional<int> status = Support::waitFor(child);
        EXPECT_TRUE(status) << "still runs after the time";
        return status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
    }

    static std::string textOf(const std::string& file) {
        std::ifstream in(file);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::string messages() const { return textOf(messageFile()); }
    std::ptrdiff_t files() const {
        return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator());
    }

    // Makes every step-th allocation fail, and checks each run. Returns the number of failures.
    unsigned long failEach(unsigned long step) const {
        unsigned long failures = 0;
        for (unsigned long number = 1; !HasFailure(); number += step) {
            SCOPED_TRACE("allocation " + std::to_string(number));
            const std::ptrdiff_t before = files();
            const int status = run(number);
            if (told_->ended && !told_->failed) {
                std::cout << failures << " failures of " << number << " allocations\n";
                break;
            }
            EXPECT_EQ(status, Cli::internalError);
            EXPECT_EQ(messages(), "vorlen: error: out of memory\n");
            if (fs::exists(*options_.json)) { // it failed while printing to the terminal
                EXPECT_EQ(textOf(*options_.json), report_);
                fs::remove(*options_.json);
            }
            EXPECT_EQ(files(), before);
            EXPECT_EQ(told_->kept, 0U);
            ++failures;
        }
        return failures;
    }

    Cli::Options options_;
    std::string report_;    // the complete one
    bool isThrown_ = false; // the failure is thrown; otherwise it exits the process

private:
    static void redirect(int standard, const char* path) {
        dup2(open(path, O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR), standard);
    }
    std::string messageFile() const { return folder_.at("messages"); }

    Support::TemporaryFolder folder_;

protected:
    Told* told_;
};

TEST_F(OutOfMemory, IsALineAndAStatusWhereverItComes) {
    write("messages", "");
    ASSERT_EQ(run(~0UL), Cli::timingMet) << messages();
    report_ = textOf(*options_.json);
    fs::remove(*options_.json);
    EXPECT_GT(failEach(3), enough);
}

TEST_F(OutOfMemory, KeepsNothingOfWhatIsRead) {
    isThrown_ = true;
    options_.sdc = {write("script.sdc", "proc show {things} {\n"
                                        "  foreach thing $things { puts $thing }\n"
                                        "}\n"
                                        "create_clock -period 5 [get_ports clk]\n"
                                        "show [get_pins *r0*/*]\n"
                                        "catch { set_false_path }\n"
                                        "set_false_path -from [get_cells *r0*] -to [all_clocks]\n"
                                        "source more.sdc\n")};
    const std::string moreSdc = write("more.sdc", "if 1 {\n  foo\n}\n");
    ASSERT_EQ(run(0), Cli::badInput);
    EXPECT_EQ(messages(), moreSdc + ":2: error: unknown command 'foo'\n");
    EXPECT_EQ(told_->kept, 0U);
    EXPECT_GT(failEach(1), enough);
}

} // namespace
