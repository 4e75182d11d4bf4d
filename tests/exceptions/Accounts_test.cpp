// What is noted of hand-made matches: exceptions 0 to 3 are a false path, a maximum delay, a multicycle and a
// path group.
#include "exceptions/Accounts.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using Design::ExceptionId;
using Exceptions::Accounts;
using Exceptions::Match;
using Exceptions::Requirement;
using Exceptions::Use;
using Exceptions::Variant;

using Kind = Design::Exception::Kind;

Design::Constraints constraints() {
    Design::Constraints constraints;
    for (const Kind kind : {Kind::falsePath, Kind::maxDelay, Kind::multicycle, Kind::pathGroup})
        constraints.exceptions.emplace_back().kind = kind;
    constraints.exceptions[Design::ExceptionId(1)].hold = false;
    return constraints;
}

// "0; 2 behind 0 1": those that match some path, with what overrules them.
std::string text(const Accounts& accounts) {
    std::string text;
    for (const ExceptionId exception : accounts.uses().ids()) {
        const Use& use = accounts.uses()[exception];
        if (!use.matchesPath)
            continue;
        text += (text.empty() ? "" : "; ") + std::to_string(exception.number());
        std::set<std::uint32_t> overruling;
        for (const ExceptionId other : use.overruledBy)
            overruling.insert(other.number());
        for (const std::uint32_t other : overruling)
            text += (other == *overruling.begin() ? " behind " : " ") + std::to_string(other);
    }
    return text;
}

TEST(Accounts, Note) {
    const Design::Constraints stated = constraints();
    std::vector<Variant> variants(stated.exceptions.size());
    for (const ExceptionId exception : Base::firstIds<ExceptionId>(variants.size()))
        variants[exception.number()].exception = exception;

    Requirement falsePath, multicycle, delay, nothing;
    falsePath.isFalse = {true, true};
    falsePath.exception = {ExceptionId(0), ExceptionId(0)};
    falsePath.group = ExceptionId(3);
    multicycle.exception = {ExceptionId(2), ExceptionId(2)};
    delay.delay.setup = 5;
    delay.exception = {ExceptionId(1), ExceptionId(2)};

    struct Row {
        const char* name;
        std::vector<std::size_t> matches;
        Requirement requirement;
        bool isRelated;
        const char* expected;
    };
    const Row rows[] = {
        {"nothing matches", {}, nothing, true, ""},
        {"the only one", {2}, multicycle, true, "2"},
        {"a false path before the others", {0, 1, 2}, falsePath, true, "0; 1 behind 0; 2 behind 0"},
        {"a group of false paths", {0, 3}, falsePath, true, "0; 3 behind 0"},
        {"each side by itself", {1, 2}, delay, true, "1; 2 behind 1"},
        {"a delay without clocks: setup only", {1, 2}, delay, false, "1; 2 behind 1"},
        {"without clocks and delay", {0, 2}, falsePath, false, ""},
    };
    for (const Row& row : rows) {
        Accounts accounts(stated);
        std::vector<Match> matches;
        for (const std::size_t number : row.matches)
            matches.push_back({&variants[number], {}, {}, {{}}});
        accounts.note(matches, row.requirement, row.isRelated);
        EXPECT_EQ(text(accounts), row.expected) << row.name;
    }
}

} // namespace
