// The texts of diagnostics, and what is kept of a run.
#include "base/Diagnostics.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

using Base::BadInput;
using Base::BadInputs;
using Base::Diagnostic;
using Base::Diagnostics;
using Base::ErrorList;
using Base::Severity;

namespace {

TEST(Diagnostics, AreWrittenWithThePlaceAsFarAsItIsKnown) {
    const struct {
        Diagnostic diagnostic;
        const char* expected;
    } rows[] = {
        {{Severity::note, {}, "done"}, "note: done"},
        {{Severity::warning, {"a.sdf"}, "odd"}, "a.sdf: warning: odd"},
        {{Severity::error, {"a.sdf", 3}, "bad"}, "a.sdf:3: error: bad"},
        {{Severity::error, {"a.sdf", 3, 14}, "bad"}, "a.sdf:3:14: error: bad"},
        {{Severity::error, {"a.sdf", 0, 14}, "bad"}, "a.sdf: error: bad"},
        {{Severity::error, {"", 3, 14}, "bad"}, "error: bad"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(toString(row.diagnostic), row.expected);
        const BadInput thrown(row.diagnostic);
        EXPECT_STREQ(thrown.what(), row.expected);
        EXPECT_EQ(thrown.diagnostic(), row.diagnostic);
    }
}

TEST(Diagnostics, ABadInputIsAnError) {
    const BadInput thrown({"a.sdf", 1, 2}, "bad");
    EXPECT_EQ(thrown.diagnostic(), (Diagnostic{Severity::error, {"a.sdf", 1, 2}, "bad"}));
}

std::string thrownBy(const ErrorList& errors) {
    try {
        errors.finish();
    } catch (const BadInputs& bad) {
        return bad.what();
    }
    return "nothing";
}

TEST(Diagnostics, SeveralErrorsAreOneException) {
    ErrorList errors;
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(thrownBy(errors), "nothing");
    errors.add({"a.v", 1, 2}, "bad");
    EXPECT_FALSE(errors.empty());
    EXPECT_EQ(thrownBy(errors), "a.v:1:2: error: bad");
    errors.add(BadInput({"a.v", 3, 4}, "worse"));
    const BadInputs thrown(
        {{Severity::error, {"a.v", 1, 2}, "bad"}, {Severity::error, {"a.v", 3, 4}, "worse"}});
    EXPECT_EQ(thrownBy(errors), thrown.what());
    EXPECT_STREQ(thrown.what(), "a.v:1:2: error: bad\na.v:3:4: error: worse");
    EXPECT_EQ(thrown.diagnostic(), (Diagnostic{Severity::error, {"a.v", 1, 2}, "bad"}));
    ErrorList more;
    more.add(thrown);
    EXPECT_EQ(thrownBy(more), thrown.what());
}

TEST(Diagnostics, ThereAreAtMostTwentyErrors) {
    ErrorList errors;
    std::string lines;
    for (unsigned i = 1; i < ErrorList::most; ++i) {
        errors.add({"a.v", i, 1}, "bad");
        lines += "a.v:" + std::to_string(i) + ":1: error: bad\n";
    }
    try {
        errors.add({"a.v", 20, 1}, "bad");
        FAIL() << "expected an exception";
    } catch (const BadInputs& bad) {
        EXPECT_EQ(bad.what(),
                  lines + "a.v:20:1: error: bad\na.v: note: 20 errors: the rest of the file is not read");
    }
}

TEST(Diagnostics, StayInTheOrderTheyCome) {
    Diagnostics diagnostics;
    diagnostics.warning({"b", 2}, "second");
    diagnostics.note({"a", 1}, "first");
    diagnostics.error({}, "third");
    diagnostics.add({Severity::warning, {"b", 2}, "second"});
    const std::vector<Diagnostic> expected = {{Severity::warning, {"b", 2}, "second"},
                                              {Severity::note, {"a", 1}, "first"},
                                              {Severity::error, {}, "third"},
                                              {Severity::warning, {"b", 2}, "second"}};
    EXPECT_EQ(diagnostics.all(), expected);
    EXPECT_EQ(diagnostics.count(Severity::note), 1U);
    EXPECT_EQ(diagnostics.count(Severity::warning), 2U);
    EXPECT_EQ(diagnostics.count(Severity::error), 1U);
}

} // namespace
