// What classes say of paths: start numbers in binary from class 0 on, then a class for each atom.
#include "exceptions/Encoding.h"

#include "tests/exceptions/Small.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::AtomId;
using Exceptions::ClassSet;
using Exceptions::ClockEdges;
using Exceptions::EndNumber;
using Exceptions::Key;
using Exceptions::StartNumber;
using Support::Small;

// Two start numbers and two atoms: classes 0 and 1, 2 and 3.
constexpr const char* script = "set_false_path -from r0 -through g/Z -through h/Z -to r2\n"
                               "set_multicycle_path 2 -from {r0 r1}";

TEST(Encoding, Keys) {
    const Small small(script);
    const ClockEdges edges{Small::a, Small::b, true, false};
    struct Row {
        const char* end;
        std::uint64_t classes;
        std::uint32_t startNumber, endNumber;
        std::uint64_t throughs;
    };
    const Row rows[] = {
        {"r1/D", 0, 0, 0, 0},
        {"r2/D", 0b1101, 1, 1, 0b1100},
        {"r2/D", 0b1010, 2, 1, 0b1000},
        {"q", 0b0011, 3, 0, 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(
            small.encoding.keyOf(edges, small.pin(row.end), ClassSet(row.classes)),
            (Key{edges, StartNumber(row.startNumber), EndNumber(row.endNumber), {}, ClassSet(row.throughs)}))
            << row.end << " " << row.classes;
}

TEST(Encoding, Starts) {
    const Small small(script);
    struct Row {
        const char* clockPin;
        std::uint64_t classes;
        bool expected;
    };
    const Row rows[] = {{"r0/C", 0b0001, true}, {"r0/C", 0b1101, true}, {"r0/C", 0b1110, false},
                        {"r1/C", 0b1110, true}, {"r1/C", 0, false},     {"r2/C", 0b1100, true},
                        {"r2/C", 0b0001, false}};
    for (const Row& row : rows) {
        Model::Start start;
        start.pin = small.pin(row.clockPin);
        EXPECT_EQ(small.encoding.mayStart(start, ClassSet(row.classes)), row.expected)
            << row.clockPin << " " << row.classes;
    }
}

TEST(Encoding, PassedAtoms) {
    const Small small(script);
    ASSERT_EQ(small.names(small.encoding.atoms().nodes(AtomId(0))), "g/Z");
    ASSERT_EQ(small.names(small.encoding.atoms().nodes(AtomId(1))), "h/Z");
    const std::pair<std::uint64_t, std::vector<AtomId>> rows[] = {
        {0, {}}, {0b0100, {AtomId(0)}}, {0b1000, {AtomId(1)}}, {0b1100, {AtomId(0), AtomId(1)}}};
    for (const auto& [classes, expected] : rows) {
        Key key;
        key.throughs = ClassSet(classes);
        EXPECT_EQ(small.encoding.passedAtoms(key), expected) << classes;
    }
}

} // namespace
