// Files as bytes: plain and compressed, whole and damaged, read in pieces of any size.
#include "base/Source.h"

#include "base/Diagnostics.h"
#include "tests/support/Rows.h"
#include "tests/support/command/InputFile.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

using Base::BadInput;
using Base::Source;
using Support::InputFile;

namespace {

using namespace std::string_view_literals;

constexpr std::string_view text = "rise and fall, rise and fall\n";
// The text, compressed: header, one block with back references, sum, length.
constexpr std::string_view member =
    "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\x2b\xca\x2c\x4e\x55\x48\xcc\x4b\x51\x48\x4b\xcc\xc9\xd1"
    "\x51\x28\x42\xe6\x72\x01\x00\xaa\xbc\x76\xc5\x1d\x00\x00\x00"sv;
constexpr std::size_t headerSize = 10;

std::string repeated(std::string_view piece, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += piece;
    return all;
}

std::string changed(std::size_t at, char byte) {
    std::string bytes(member);
    bytes[at] = byte;
    return bytes;
}

// Reads in pieces of one size.
std::string readBy(const std::string& path, std::size_t size) {
    Source source(path);
    std::string all, piece(size, '\0');
    while (const std::size_t got = source.read(piece.data(), size)) {
        EXPECT_LE(got, size);
        all.append(piece, 0, got);
    }
    EXPECT_EQ(source.read(piece.data(), size), 0U) << "an end stays an end";
    return all;
}

// The message without the path before it.
std::string refusal(const std::string& path) {
    try {
        Source source(path);
        source.readAll();
    } catch (const BadInput& error) {
        EXPECT_EQ(error.diagnostic().place, (Base::Place{path, 0, 0}));
        EXPECT_EQ(error.what(), path + ": error: " + error.diagnostic().text);
        return error.diagnostic().text;
    }
    return "none";
}

TEST(Source, GivesTheBytesOrWhatTheyHoldCompressed) {
    const struct {
        const char* what;
        std::string bytes, expected;
    } rows[] = {
        {"empty", "", ""},
        {"one byte", "(", "("},
        {"one byte of a magic number", "\x1f", "\x1f"},
        {"half a magic number", "\x1f(", "\x1f("},
        {"plain", std::string(text), std::string(text)},
        {"zeros", std::string(5, '\0'), std::string(5, '\0')},
        {"plain, many blocks", repeated(text, 10'000), repeated(text, 10'000)},
        {"compressed", std::string(member), std::string(text)},
        {"two members", repeated(member, 2), repeated(text, 2)},
        {"members over many blocks", repeated(member, 10'000), repeated(text, 10'000)},
        {"padded by zeros", std::string(member) + std::string(1'000, '\0'), std::string(text)},
        {"padded by zeros over a block", std::string(member) + std::string(100'000, '\0'), std::string(text)},
        {"zeros between members", std::string(member) + '\0' + std::string(member), repeated(text, 2)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const InputFile file(row.bytes);
        EXPECT_TRUE(Source(file.path()).readAll() == row.expected);
        for (const std::size_t size : {1U, 2U, 7U, 65'536U, 1'000'000U})
            EXPECT_TRUE(readBy(file.path(), size) == row.expected) << size;
        EXPECT_EQ(Source(file.path()).path(), file.path());
    }
}

TEST(Source, IsNotReadBeyondALimit) {
    constexpr std::size_t megabyte = std::size_t{1} << 20, count = megabyte / text.size() + 1;
    const auto errorOf = [](const std::string& bytes, std::size_t most) -> std::string {
        const InputFile file(bytes);
        try {
            Source(file.path()).readAll(most);
            return "";
        } catch (const BadInput& error) {
            return error.diagnostic().text;
        }
    };
    EXPECT_EQ(errorOf(repeated(text, count), count * text.size()), "");
    EXPECT_EQ(errorOf(repeated(text, count), megabyte), "the text has more than 1 MB");
    EXPECT_EQ(errorOf(repeated(member, count), count * text.size()), "");
    EXPECT_EQ(errorOf(repeated(member, count), megabyte), "the text has more than 1 MB");
}

TEST(Source, ReadsADescriptor) {
    const InputFile file{std::string(member)};
    const int descriptor = open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    Source source("name", descriptor);
    EXPECT_EQ(source.path(), "name");
    EXPECT_EQ(source.readAll(), text);
}

TEST(Source, TellsTheSumOfTheFileAsItIsOnDisk) {
    const struct {
        const char* what;
        std::string bytes, sum;
    } rows[] = {
        {"empty", "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"short", "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"blocks", std::string(1'000'000, 'a'),
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
        {"compressed", std::string(member),
         "7ac4df7c8801004347d933205527d516034f0e01e656951900302ace9b3ec726"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const InputFile file(row.bytes);
        Source unread(file.path()), begun(file.path()), whole(file.path());
        char byte = '\0';
        begun.read(&byte, 1);
        whole.readAll();
        for (Source* source : {&unread, &begun, &whole}) {
            EXPECT_EQ(source->sha256(), row.sum);
            EXPECT_EQ(source->sha256(), row.sum) << "asked again";
            EXPECT_EQ(source->read(&byte, 1), 0U) << "nothing is left behind the sum";
        }
    }
}

TEST(Source, ReadsAPipeThatBringsItsBytesOneByOne) {
    const InputFile file("");
    std::filesystem::remove(file.path());
    ASSERT_EQ(mkfifo(file.path().c_str(), S_IRUSR | S_IWUSR), 0);
    std::thread writer([&] {
        std::ofstream pipe(file.path(), std::ios::binary);
        for (const char byte : member)
            pipe.put(byte).flush();
    });
    EXPECT_EQ(Source(file.path()).readAll(), text);
    writer.join();
}

TEST(Source, RefusesWhatCannotBeOpened) {
    const InputFile file("");
    const struct {
        std::string path, message;
    } rows[] = {
        {file.path() + ".none", "cannot open: No such file or directory"},
        {file.path() + "/below", "cannot open: Not a directory"},
        {std::filesystem::temp_directory_path().string(), "cannot open: Is a directory"},
        {"", "cannot open: No such file or directory"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        try {
            const Source source(row.path);
            ADD_FAILURE() << row.path;
        } catch (const BadInput& error) {
            EXPECT_EQ(error.diagnostic().text, row.message);
            EXPECT_EQ(error.diagnostic().place.file, row.path);
        }
    }
}

TEST(Source, RefusesWhatCannotBeRead) {
    // The memory of this process, which has nothing at address zero.
    EXPECT_EQ(refusal("/proc/self/mem"), "cannot read: Input/output error");
}

TEST(Source, RefusesADamagedStream) {
    const struct {
        const char* what;
        std::string bytes, message;
    } rows[] = {
        {"method", changed(2, '\7'), "damaged gzip stream: unknown compression method"},
        {"flags", changed(3, '\xe0'), "damaged gzip stream: unknown header flags set"},
        {"block type", changed(headerSize, '\x07'), "damaged gzip stream: invalid block type"},
        {"sum", changed(member.size() - 8, '\0'), "damaged gzip stream: incorrect data check"},
        {"length", changed(member.size() - 4, '\0'), "damaged gzip stream: incorrect length check"},
        {"text behind", std::string(member) + "text", "damaged gzip stream: incorrect header check"},
        {"text behind padding", std::string(member) + '\0' + "text",
         "damaged gzip stream: incorrect header check"},
        {"second member", std::string(member) + changed(2, '\7'),
         "damaged gzip stream: unknown compression method"},
        {"second member cut", std::string(member) + std::string(member.substr(0, 20)),
         "gzip stream ends too early"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(refusal(InputFile(row.bytes).path()), row.message);
    }
}

TEST(Source, RefusesAStreamCutAnywhere) {
    const InputFile file("");
    for (std::size_t size = 2; size < member.size(); ++size) {
        file.rewrite(member.substr(0, size));
        EXPECT_EQ(refusal(file.path()), "gzip stream ends too early") << size;
    }
}

TEST(Source, SumsADamagedStreamToo) {
    const InputFile file(std::string(member.substr(0, 20)));
    Source source(file.path());
    EXPECT_THROW(source.readAll(), BadInput);
    EXPECT_EQ(source.sha256(), Source(file.path()).sha256());
}

// Bytes in memory are read, summed and refused like those of a file.
TEST(Source, TakesBytesInMemoryForAFile) {
    for (const std::string_view bytes : {text, member, std::string_view()}) {
        SCOPED_TRACE(bytes);
        const InputFile file(bytes);
        Source fromFile(file.path()), fromMemory("no/such/file", bytes);
        EXPECT_EQ(fromMemory.readAll(), fromFile.readAll());
        EXPECT_EQ(fromMemory.sha256(), fromFile.sha256());
        EXPECT_EQ(fromMemory.path(), "no/such/file");
    }
    Source cut("no/such/file", member.substr(0, 20));
    try {
        cut.readAll();
        ADD_FAILURE() << "read to its end";
    } catch (const BadInput& error) {
        EXPECT_EQ(std::string(error.what()), "no/such/file: error: gzip stream ends too early");
    }
}

} // namespace
