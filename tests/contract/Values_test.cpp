// Masks of exception classes, clock modes, analysis modes and port constraints.
#include "tests/support/Thrown.h"

#include "Pelko/AnalysisMode.h"
#include "Pelko/IOConstraint.h"
#include "Pelko/PseudoMask.h"
#include "tests/support/Rows.h"

#include <type_traits>

namespace Contract {

namespace {

using namespace Pelko;

constexpr unsigned long all = ~0UL;
constexpr unsigned long top = 1UL << 63;

// --- PseudoMask ---

TEST(PseudoMask, Algebra) {
    const unsigned long values[] = {0, 1, 2, 3, 0x80, 0xFF00FF00FF00FF00, top, top | 1, all};
    for (unsigned long a : values)
        for (unsigned long b : values) {
            const PseudoMask left(a), right(b);
            EXPECT_EQ((left & right).getBits(), a & b);
            EXPECT_EQ((left | right).getBits(), a | b);
            EXPECT_EQ(left == right, a == b);
            PseudoMask narrowed(left), widened;
            widened = left;
            EXPECT_EQ(&(narrowed &= right), &narrowed);
            EXPECT_EQ(&(widened |= right), &widened);
            EXPECT_EQ(narrowed.getBits(), a & b);
            EXPECT_EQ(widened.getBits(), a | b);
            EXPECT_EQ(left.getBits(), a);
        }
}

TEST(PseudoMask, Labels) {
    struct {
        PseudoMask mask;
        bool empty;
        const char* label;
    } const rows[] = {
        {PseudoMask(), true, "{}"},       {PseudoMask(0), true, "{}"},
        {PseudoMask(1), false, "{1}"},    {PseudoMask(5), false, "{1 3}"},
        {PseudoMask(top), false, "{64}"}, {PseudoMask(top | 6), false, "{2 3 64}"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.mask.isEmpty(), row.empty);
        EXPECT_EQ(row.mask._getLabel(), row.label);
        EXPECT_TRUE(PseudoMask(row.mask.getBits()) == row.mask);
    }
}

TEST(PseudoMask, ClassesOfARun) {
    for (unsigned long n : {0UL, 1UL, 2UL, 63UL, 64UL}) {
        PseudoMask::reset(n);
        EXPECT_EQ(PseudoMask::getClassCount(), n);
        unsigned long seen = 0;
        for (unsigned long i = 1; i <= n; ++i) {
            EXPECT_EQ(PseudoMask::getBasic(i).getBits(), 1UL << (i - 1));
            EXPECT_EQ(seen & PseudoMask::getBasic(i).getBits(), 0u);
            seen |= PseudoMask::getBasic(i).getBits();
        }
    }
    PseudoMask::reset(0);
}

TEST(PseudoMask, Refusals) {
    const auto reset = [](unsigned long n) { return [n] { PseudoMask::reset(n); }; };
    const auto get = [](unsigned long i) { return [i] { PseudoMask::getBasic(i); }; };
    struct {
        std::function<void()> action;
        const char* message;
        Ruvex::Place place;
    } const rows[] = {
        {reset(65), "65 constrained paths: at most 64 have a class of their own", {"PseudoMask", "reset", 1}},
        {reset(1000),
         "1000 constrained paths: at most 64 have a class of their own",
         {"PseudoMask", "reset", 1}},
        {reset(all),
         "18446744073709551615 constrained paths: at most 64 have a class of their own",
         {"PseudoMask", "reset", 1}},
        {get(0), "No class 0: the classes are numbered 1 to 3", {"PseudoMask", "getBasic", 2}},
        {get(4), "No class 4: the classes are numbered 1 to 3", {"PseudoMask", "getBasic", 2}},
        {get(65), "No class 65: the classes are numbered 1 to 3", {"PseudoMask", "getBasic", 2}},
        {get(all),
         "No class 18446744073709551615: the classes are numbered 1 to 3",
         {"PseudoMask", "getBasic", 2}},
    };
    PseudoMask::reset(3);
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Support::expectThrown(
            {"of three classes", row.action, typeid(Ruvex::InvalidRequest), row.message, row.place});
        EXPECT_EQ(PseudoMask::getClassCount(), 3u);
        EXPECT_EQ(PseudoMask::getBasic(3).getBits(), 4u);
    }
    PseudoMask::reset(0);
    Support::expectThrown({"of no class",
                           get(1),
                           typeid(Ruvex::InvalidRequest),
                           "No class 1: the classes are numbered 1 to 0",
                           {"PseudoMask", "getBasic", 2}});
}

// --- Modes ---

TEST(ClockMode, Codes) {
    struct {
        ClockMode mode;
        int code;
        const char* label;
    } const rows[] = {
        {ClockMode(), 0, "none"},
        {ClockMode(ClockMode::None), 0, "none"},
        {ClockMode(ClockMode::Falling), 1, "falling"},
        {ClockMode(ClockMode::Rising), 2, "rising"},
        {ClockMode(static_cast<ClockMode::Code>(2)), 2, "rising"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.mode.getCode(), row.code);
        EXPECT_EQ(row.mode._getLabel(), row.label);
        ClockMode assigned;
        assigned = row.mode;
        for (const auto& other : rows)
            EXPECT_EQ(assigned == other.mode, row.code == other.code);
    }
}

TEST(AnalysisMode, Codes) {
    struct {
        AnalysisMode mode;
        int code;
        int effective;
        const char* label;
    } const rows[] = {
        {AnalysisMode(), 0, 3, "Default"},
        {AnalysisMode(AnalysisMode::Critical), 2, 2, "Critical"},
        {AnalysisMode(AnalysisMode::Exhaustive), 3, 3, "Exhaustive"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.mode.getCode(), row.code);
        EXPECT_EQ(row.mode.getEffective().getCode(), row.effective);
        EXPECT_EQ(row.mode._getLabel(), row.label);
    }
}

// --- Port constraints ---

TEST(IOConstraint, HoldsWhatItIsGiven) {
    const IOConstraint none;
    EXPECT_FALSE(none.isDefined());
    EXPECT_EQ(none.getClockRoot(), nullptr);
    EXPECT_EQ(none.getClockMode().getCode(), ClockMode::None);
    EXPECT_FALSE(none.getMinimum().isDefined());
    EXPECT_FALSE(none.getMaximum().isDefined());
    EXPECT_EQ(none._getLabel(), "undefined");

    const IOConstraint clockless(nullptr, ClockMode::Falling, Delay(2), Delay::getUndefined());
    IOConstraint copy;
    copy = clockless;
    EXPECT_TRUE(copy.isDefined());
    EXPECT_EQ(copy.getClockRoot(), nullptr);
    EXPECT_EQ(copy.getClockMode().getCode(), ClockMode::Falling);
    EXPECT_EQ(int(copy.getMinimum()), 2);
    EXPECT_FALSE(copy.getMaximum().isDefined());
    EXPECT_EQ(copy._getLabel(), "[2:undefined] falling no clock");
    copy = none;
    EXPECT_FALSE(copy.isDefined());
}

TEST(Values, AreValuesOfTheFramework) {
    const auto check = []<class T>(std::type_identity<T>) {
        static_assert(std::is_base_of_v<Ruvex::Stuff, T>);
        static_assert(std::has_virtual_destructor_v<T>);
        static_assert(std::is_copy_constructible_v<T> && std::is_copy_assignable_v<T>);
    };
    check(std::type_identity<PseudoMask>());
    check(std::type_identity<ClockMode>());
    check(std::type_identity<AnalysisMode>());
    check(std::type_identity<IOConstraint>());
    // No implicit conversion between an integer and a set of classes.
    static_assert(!std::is_convertible_v<unsigned long, PseudoMask>);
}

} // namespace

} // namespace Contract
