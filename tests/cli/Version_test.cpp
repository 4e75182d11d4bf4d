// The version is written once, in CMakeLists.txt. What repeats it by hand must agree: the man page, the
// changelog.
#include "base/Version.h"

#include "ProjectFiles.h"
#include "cli/Options.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace {

const std::string version(Base::version);

// The first line of a file that begins with the text.
std::string lineOf(const std::string& file, const std::string& begin) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        if (line.starts_with(begin))
            return line;
    ADD_FAILURE() << file << " has no line that begins with '" << begin << "'";
    return "";
}

TEST(Version, OfTheCommand) {
    std::ostringstream out, err;
    const char* const arguments[] = {"vorlen", "--version"};
    EXPECT_EQ(Cli::parse(2, arguments, out, err).exit, Cli::timingMet);
    EXPECT_EQ(out.str(), "vorlen " + version + "\n");
}

TEST(Version, OfTheManPage) {
    EXPECT_EQ(lineOf(VORLEN_DOCS_DIR "/vorlen.1", ".TH"),
              ".TH VORLEN 1 \"\" \"vorlen " + version + "\" \"User Commands\"");
}

TEST(Version, OfTheChangelogsFirstEntry) {
    const std::string line = lineOf(VORLEN_DOCS_DIR "/../CHANGELOG.md", "## ");
    EXPECT_TRUE((line + " ").starts_with("## " + version + " ")) << line;
}

} // namespace
