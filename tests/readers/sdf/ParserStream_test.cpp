// One file in blocks of every size, cut at every byte, and with every byte changed.
#include "readers/sdf/Parser.h"

#include "Parsed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Base::BadInput;
using Base::Diagnostics;
using Base::Source;
using Support::delayOf;
using Support::EventLog;
using Support::InputFile;
using Support::Lines;
using Support::parsed;
using Support::refusal;
using testing::ElementsAreArray;

namespace {

using namespace std::string_view_literals;

constexpr std::string_view sample = R"sdf((DELAYFILE
  (SDFVERSION "3.0") (DESIGN "to\"p") (DATE "some day") (VENDOR v)
  (PROGRAM tool /* a name */ one) (VERSION "1.2") (DIVIDER /) (VOLTAGE 1.1:1.2:1.3)
  (TIMESCALE 100 ps) // the unit
  (CELL (CELLTYPE "top") (INSTANCE)
    (DELAY (ABSOLUTE
      (INTERCONNECT u1/u\$2\[3\]/Q[3] u4/in [7:0] (1.5:2:2.5e0) (-.5::+1))
      (PORT u4/\/x (1)) (NETDELAY n (2)) (DEVICE (3)))
     (PATHPULSE a y (1) (2))))
  (CELL (CELLTYPE "ff") (INSTANCE u1) (INSTANCE u2)
    (DELAY (INCREMENT
      (IOPATH (posedge clk) q (RETAIN (1)) (100:200:300) ())
      (COND "c" (a == 1'b1) && !b (IOPATH a y ((1) (2) (3)) (2)))
      (CONDELSE (IOPATH a y (1)(2)(3)(4)(5)(6)))))
    (TIMINGCHECK
      (SETUPHOLD (COND en[0] (negedge d)) (posedge clk) (0.1) (-0.1) (SCOND ~r) (CCOND r))
      (RECREM (01 r) clk (1) (2)) (WIDTH (COND x /**/ clk) (3)) (BIDIRECTSKEW a b (1) (2)))
    (LABEL (ABSOLUTE (p "))" (1)))))
)
)sdf";

Lines sampleEvents() {
    return {"header version=3.0 design=to\"p program=tool one divider=/ scale=-10",
            "cell top <> @5:3",
            "interconnect {u1/u$2[3]}Q[3] {u4}in[7:0] (1.5 2 2.5) (-0.5 _ 1) @7:7",
            "port {u4}/x (1 1 1) @8:7",
            "net n (2 2 2) @8:25",
            "device * (3 3 3) @8:42",
            "ignored PATHPULSE @9:6",
            "end",
            "cell ff <u1/u2> @10:3",
            "ignored RETAIN @12:31",
            "iopath ^clk q + (100 200 300) () @12:7",
            "ignored PATHPULSE @13:47",
            "conditional iopath a y + (1 1 1) (2 2 2) @13:35",
            "conditional iopath a y + (1 1 1) (2 2 2) (3 3 3) (4 4 4) (5 5 5) (6 6 6) @14:17",
            "setuphold ?vd ?^clk (0.1 0.1 0.1) (-0.1 -0.1 -0.1) @16:7",
            "recrem r clk (1 1 1) (2 2 2) @17:7",
            "width ?clk (3 3 3) @17:35",
            "ignored BIDIRECTSKEW @17:65",
            "ignored LABEL @18:5",
            "end"};
}

TEST(ParserStream, MeansTheSameInBlocksOfAnySize) {
    for (std::size_t size = 1; size <= 64; ++size)
        ASSERT_EQ(parsed(sample, true, size), sampleEvents()) << size;
    EXPECT_EQ(parsed(sample, true), sampleEvents());
}

TEST(ParserStream, FailsTheSameInBlocksOfAnySize) {
    const std::string text = delayOf("\n(IOPATH a b (1) (1e5e5) /* x */ (3))");
    for (std::size_t size = 1; size <= 64; ++size)
        EXPECT_EQ(refusal(text, size), "2:18: expected a number, found '1e5e5'") << size;
}

// Whether what was found is the file's end, or a word that ends there.
bool blamesTheEnd(std::string_view message, std::string_view text) {
    const std::string_view found = message.substr(message.rfind(", found ") + 8);
    return found == "the end of the file" ||
           (found.starts_with('\'') && text.ends_with(found.substr(1, found.size() - 2)));
}

TEST(ParserStream, IsCompleteOrRefusedWhereverItIsCut) {
    const std::size_t whole = sample.rfind(')') + 1;
    const InputFile file("");
    for (std::size_t size = 0; size <= sample.size(); ++size) {
        file.rewrite(sample.substr(0, size));
        Source source(file.path());
        EventLog log;
        log.withPlaces = true;
        Diagnostics diagnostics;
        try {
            Readers::Sdf::parse(source, log, diagnostics, 61);
            EXPECT_GE(size, whole);
            EXPECT_EQ(log.lines(), sampleEvents());
        } catch (const BadInput& error) {
            EXPECT_LT(size, whole);
            EXPECT_TRUE(blamesTheEnd(error.diagnostic().text, sample.substr(0, size))) << error.what();
            // What was fired is the beginning of what the whole fires.
            const Lines all = sampleEvents();
            ASSERT_LE(log.lines().size(), all.size());
            const auto count = static_cast<std::ptrdiff_t>(log.lines().size());
            EXPECT_THAT(log.lines(), ElementsAreArray(all.begin(), all.begin() + count)) << size;
        }
    }
}

// Whatever byte is put in the place of another one: a refusal or an end, in finite time.
TEST(ParserStream, EndsWhateverByteIsChanged) {
    const InputFile file("");
    constexpr std::size_t smallBlock = 256;
    std::size_t refused = 0;
    for (const char byte :
         {'\0', '(', ')', '"', '\\', '/', '*', '[', ' ', '\n', '1', 'e', ':', '\x7f', '\xff'})
        for (std::size_t at = 0; at < sample.size(); ++at) {
            std::string text(sample);
            text[at] = byte;
            file.rewrite(text);
            Source source(file.path());
            Readers::Sdf::Handler nothing;
            Diagnostics diagnostics;
            try {
                Readers::Sdf::parse(source, nothing, diagnostics, smallBlock);
            } catch (const BadInput& error) {
                ++refused;
                EXPECT_NE(error.diagnostic().place.line, 0U) << error.what();
                EXPECT_NE(error.diagnostic().place.column, 0U) << error.what();
            }
        }
    EXPECT_GT(refused, sample.size());
}

} // namespace
