// Output files: whole or not at all, and what is no regular file is written directly.
#include "cli/Output.h"
#include "tests/support/Rows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Cli::CannotWrite;
using Cli::Output;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;
namespace fs = std::filesystem;

constexpr uid_t nobody = 65534;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string& path, const std::string& content) {
    Output output(path);
    output.stream() << content;
    output.commit();
}

class OutputTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return folder_.at(name); }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

    Support::TemporaryFolder folder_;
};

// Runs with another descriptor in the place of a standard one.
class Redirected {
public:
    Redirected(int standard, int descriptor) : standard_(standard), saved_(dup(standard)) {
        dup2(descriptor, standard_);
        close(descriptor);
    }
    ~Redirected() {
        dup2(saved_, standard_);
        close(saved_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

private:
    int standard_, saved_;
};

// --- Files ---

TEST_F(OutputTest, appearsAtTheCommit) {
    Output output(at("r.json"));
    output.stream() << "half";
    output.stream().flush();
    EXPECT_FALSE(fs::exists(at("r.json")));
    output.stream() << " and half";
    output.commit();
    EXPECT_EQ(contentOf(at("r.json")), "half and half");
    EXPECT_THAT(names(), ElementsAre("r.json"));
}

TEST_F(OutputTest, severalAppearTogether) {
    Output first(at("first")), second(at("second")), full("/dev/full");
    for (Output* output : {&first, &second, &full})
        output->stream() << "text";
    first.finish();
    second.finish();
    EXPECT_THROW(full.finish(), CannotWrite);
    EXPECT_FALSE(fs::exists(at("first")) || fs::exists(at("second")));
    first.commit();
    EXPECT_EQ(contentOf(at("first")), "text");
    second.commit();
    EXPECT_THAT(names(), ElementsAre("first", "second"));
}

TEST_F(OutputTest, abandoningRemovesAllThatAreBegun) {
    std::ofstream(at("old")) << "old";
    Output fresh(at("new")), replacing(at("old")), done(at("done"));
    done.commit();
    EXPECT_EQ(names().size(), 4u);
    Output::abandon();
    EXPECT_THAT(names(), ElementsAre("done", "old"));
    EXPECT_THAT([&] { replacing.commit(); },
                ThrowsMessage<CannotWrite>(at("old") + ": error: cannot write: No such file or directory"));
    EXPECT_EQ(contentOf(at("old")), "old");
}

TEST_F(OutputTest, whatWouldOverwriteAnInput) {
    fs::create_directory(at("sub"));
    std::ofstream(at("input")) << "text";
    std::ofstream(at("other")) << "text";
    fs::create_symlink("input", at("link"));
    fs::create_symlink("missing", at("dangling"));
    fs::create_hard_link(at("input"), at("hard"));
    struct Row {
        std::string output, input;
        bool expected;
    };
    const Row rows[] = {
        {at("input"), at("input"), true},      {at("sub/../input"), at("input"), true},
        {at("link"), at("input"), true},       {at("input"), at("link"), true},
        {at("hard"), at("input"), true},       {at("other"), at("input"), false},
        {at("missing"), at("missing"), false}, {at("dangling"), at("input"), false},
        {at("input"), at("missing"), false},   {"/dev/null", "/dev/null", false},
        {at("sub"), at("sub"), false},         {"-", at("other"), false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Cli::wouldOverwrite(row.output, row.input), row.expected) << row.output << " " << row.input;
    const Redirected redirected(STDOUT_FILENO, open(at("other").c_str(), O_WRONLY | O_APPEND));
    EXPECT_TRUE(Cli::wouldOverwrite("-", at("other")));
    EXPECT_TRUE(Cli::wouldOverwrite("/dev/stdout", at("other")));
    EXPECT_FALSE(Cli::wouldOverwrite("-", at("input")));
}

TEST_F(OutputTest, withoutACommitNothingWasThere) {
    std::ofstream(at("old")) << "old";
    {
        Output fresh(at("new")), replacing(at("old"));
        fresh.stream() << "text" << std::flush;
        replacing.stream() << "text" << std::flush;
        EXPECT_EQ(names().size(), 3u);
    }
    EXPECT_THAT(names(), ElementsAre("old"));
    EXPECT_EQ(contentOf(at("old")), "old");
}

TEST_F(OutputTest, sizes) {
    for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 1000000u}) {
        std::string content(size, ' ');
        for (std::size_t i = 0; i < size; ++i)
            content[i] = static_cast<char>('a' + i % 23);
        write(at("file"), content);
        EXPECT_EQ(contentOf(at("file")), content) << size;
    }
}

TEST_F(OutputTest, replacesAndKeepsPermissions) {
    std::ofstream(at("file")) << "a longer old text";
    ASSERT_EQ(chmod(at("file").c_str(), 0640), 0);
    write(at("file"), "new");
    EXPECT_EQ(contentOf(at("file")), "new");
    EXPECT_EQ(static_cast<unsigned>(fs::status(at("file")).permissions()), 0640u);
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(OutputTest, aNewFileHasThePermissionsOfAnyNewFile) {
    const mode_t mask = umask(027);
    write(at("file"), "new");
    umask(mask);
    EXPECT_EQ(static_cast<unsigned>(fs::status(at("file")).permissions()), 0640u);
}

TEST_F(OutputTest, followsLinks) {
    fs::create_directory(at("sub"));
    std::ofstream(at("sub/file")) << "old";
    fs::create_symlink("sub/file", at("link"));
    fs::create_symlink("link", at("second"));
    fs::create_symlink("sub/fresh", at("dangling"));
    write(at("second"), "new");
    write(at("dangling"), "fresh");
    EXPECT_EQ(contentOf(at("sub/file")), "new");
    EXPECT_EQ(contentOf(at("sub/fresh")), "fresh");
    EXPECT_TRUE(fs::is_symlink(at("link")) && fs::is_symlink(at("second")) && fs::is_symlink(at("dangling")));
}

TEST_F(OutputTest, inTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    write("plain", "text");
    write("standard output", "a name like any other");
    fs::current_path(before);
    EXPECT_THAT(names(), ElementsAre("plain", "standard output"));
    EXPECT_EQ(contentOf(at("plain")), "text");
}

TEST_F(OutputTest, leftoversOfAnotherRunAreNotTouched) {
    const std::string other = ".vorlen-" + std::to_string(getpid()) + "-0.tmp";
    std::ofstream(at(other)) << "other";
    write(at("file"), "text");
    EXPECT_THAT(names(), ElementsAre(other, "file"));
    EXPECT_EQ(contentOf(at(other)), "other");
}

// --- Failures ---

TEST_F(OutputTest, placesThatCannotBeWritten) {
    std::ofstream(at("file")) << "text";
    fs::create_symlink("circle", at("circle"));
    struct Row {
        std::string path;
        const char* reason;
    };
    const Row rows[] = {
        {at("missing/r.json"), "No such file or directory"},
        {at("file/r.json"), "Not a directory"},
        {folder_.path().string(), "Is a directory"},
        {at("circle"), "Too many levels of symbolic links"},
        {at(std::string(300, 'n')), "File name too long"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_THAT([&] { Output output(row.path); },
                    ThrowsMessage<CannotWrite>(row.path + ": error: cannot write: " + row.reason));
    }
    EXPECT_THAT(names(), ElementsAre("circle", "file"));
}

TEST_F(OutputTest, placesThatMayNotBeWritten) {
    fs::create_directory(at("closed"));
    std::ofstream(at("closed/old")) << "old";
    std::ofstream(at("fixed")) << "old";
    ASSERT_EQ(chmod(at("fixed").c_str(), 0444), 0);
    ASSERT_EQ(chmod(at("closed").c_str(), 0555), 0);
    ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
    const bool privileged = geteuid() == 0; // who may write anywhere
    if (privileged) {
        ASSERT_EQ(chown(folder_.path().c_str(), nobody, static_cast<gid_t>(-1)), 0);
        ASSERT_EQ(setresuid(nobody, nobody, 0), 0);
    }
    for (const char* name : {"closed/new", "closed/old", "fixed"})
        EXPECT_THAT([&] { Output output(at(name)); },
                    ThrowsMessage<CannotWrite>(at(name) + ": error: cannot write: Permission denied"));
    if (privileged) {
        ASSERT_EQ(setresuid(0, 0, 0), 0);
    }
    ASSERT_EQ(chmod(at("closed").c_str(), 0755), 0);
    EXPECT_EQ(contentOf(at("closed/old")), "old");
    EXPECT_EQ(contentOf(at("fixed")), "old");
    EXPECT_THAT(names(), ElementsAre("closed", "fixed"));
}

// A file that may not grow stands for a disk that is full.
TEST_F(OutputTest, fullWhileWriting) {
    constexpr rlim_t limit = 100000;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{limit, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::ofstream(at("old")) << "old";
    for (const std::string name : {"new", "old"}) {
        SCOPED_TRACE(name);
        Output output(at(name));
        for (int i = 0; i < 1000; ++i)
            output.stream() << std::string(1000, 'x');
        EXPECT_FALSE(output.stream());
        EXPECT_THAT([&] { output.commit(); },
                    ThrowsMessage<CannotWrite>(at(name) + ": error: cannot write: File too large"));
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(names(), ElementsAre("old"));
    EXPECT_EQ(contentOf(at("old")), "old");
}

TEST_F(OutputTest, aPlaceThatGoesAway) {
    fs::create_directory(at("sub"));
    Output output(at("sub/file"));
    fs::remove_all(at("sub"));
    EXPECT_THAT(
        [&] { output.commit(); },
        ThrowsMessage<CannotWrite>(at("sub/file") + ": error: cannot write: No such file or directory"));
}

TEST_F(OutputTest, aStreamThatWasMarkedAsFailed) {
    Output output(at("file"));
    output.stream().setstate(std::ios::failbit);
    EXPECT_THAT([&] { output.commit(); },
                ThrowsMessage<CannotWrite>(at("file") + ": error: cannot write: Input/output error"));
    EXPECT_FALSE(fs::exists(at("file")));
}

// --- What is no regular file ---

TEST_F(OutputTest, fullDevice) {
    struct Row {
        std::size_t size;
        bool seenEarly; // by more than a buffer
    };
    for (const Row& row : {Row{1, false}, Row{1000000, true}}) {
        Output output("/dev/full");
        output.stream() << std::string(row.size, 'x');
        EXPECT_EQ(!output.stream(), row.seenEarly);
        EXPECT_THAT([&] { output.commit(); },
                    ThrowsMessage<CannotWrite>("/dev/full: error: cannot write: No space left on device"));
    }
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(OutputTest, pipe) {
    ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = contentOf(at("pipe")); });
    write(at("pipe"), "through a pipe");
    reader.join();
    EXPECT_EQ(received, "through a pipe");
    EXPECT_TRUE(fs::is_fifo(at("pipe")));
}

TEST_F(OutputTest, aPipeThatNobodyReads) {
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    close(ends[0]);
    {
        const Redirected redirected(STDOUT_FILENO, ends[1]);
        Output output("-");
        output.stream() << "text";
        EXPECT_THAT([&] { output.commit(); },
                    ThrowsMessage<CannotWrite>("standard output: error: cannot write: Broken pipe"));
    }
    std::signal(SIGPIPE, handler);
}

// However it is called, it is written in its turn and stays the same file.
TEST_F(OutputTest, standardOutput) {
    for (const std::string name : {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "itself"}) {
        SCOPED_TRACE(name);
        const int file = open(at("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ASSERT_GE(file, 0);
        {
            const Redirected redirected(STDOUT_FILENO, file);
            ASSERT_EQ(::write(STDOUT_FILENO, "before ", 7), 7);
            write(name == "itself" ? at("out") : name, "report ");
            ASSERT_EQ(::write(STDOUT_FILENO, "after", 5), 5);
        }
        EXPECT_EQ(contentOf(at("out")), "before report after") << name;
        EXPECT_THAT(names(), ElementsAre("out"));
    }
}

TEST_F(OutputTest, standardOutputThatIsFull) {
    const Redirected redirected(STDOUT_FILENO, open("/dev/full", O_WRONLY));
    Output output("-");
    output.stream() << "text";
    EXPECT_THAT([&] { output.commit(); },
                ThrowsMessage<CannotWrite>("standard output: error: cannot write: No space left on device"));
}

TEST_F(OutputTest, standardOutputThatIsClosed) {
    const int saved = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);
    EXPECT_THAT([] { Output output("-"); },
                ThrowsMessage<CannotWrite>("standard output: error: cannot write: Bad file descriptor"));
    dup2(saved, STDOUT_FILENO);
    close(saved);
    EXPECT_THAT(names(), IsEmpty());
}

} // namespace
