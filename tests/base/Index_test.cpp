// Indices, the tables that they lead into, and groups of them.
#include "base/Groups.h"
#include "base/NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace {

using OwnerId = Base::Index<struct OwnerTag>;
using MemberId = Base::Index<struct MemberTag>;

OwnerId owner(std::uint32_t number) { return OwnerId(number); }
MemberId member(std::uint32_t number) { return MemberId(number); }

TEST(Index, IsNoneUntilItIsSet) {
    EXPECT_TRUE(OwnerId() == Base::none);
    EXPECT_FALSE(owner(0) == Base::none);
    EXPECT_TRUE(owner(3) < OwnerId());
    EXPECT_EQ(owner(7).number(), 7U);
}

TEST(Index, CostsWhatANumberCosts) {
    static_assert(sizeof(OwnerId) == sizeof(std::uint32_t));
    static_assert(std::is_trivially_copyable_v<OwnerId>);
}

TEST(Index, IsThePlaceInATable) {
    Base::IndexVector<OwnerId, std::string> table;
    EXPECT_EQ(table.next(), owner(0));
    table.push_back("a");
    table.push_back("b");
    EXPECT_EQ(table.next(), owner(2));
    std::string all;
    for (const OwnerId id : table.ids())
        all += table[id];
    EXPECT_EQ(all, "ab");
}

TEST(Index, IsHashedByItsNumber) {
    const std::unordered_set<OwnerId> set = {owner(1), owner(2), owner(1)};
    EXPECT_EQ(set.size(), 2U);
    EXPECT_TRUE(set.contains(owner(2)));
}

TEST(Index, GoesIntoAKeyWithAnotherAndComesBack) {
    const std::uint64_t key = Base::pairKey(owner(5), MemberId());
    EXPECT_EQ(Base::firstOf<OwnerId>(key), owner(5));
    EXPECT_TRUE(Base::secondOf<MemberId>(key) == Base::none);
    EXPECT_NE(Base::pairKey(owner(1), member(2)), Base::pairKey(owner(2), member(1)));
}

// Owner 1 has no member, and member 3 no owner.
TEST(Groups, HaveTheMembersOfEachOwnerInOrder) {
    const std::vector<OwnerId> owners = {owner(2), owner(0), owner(2), OwnerId(), owner(0), owner(2)};
    Base::Groups<OwnerId, MemberId> groups;
    EXPECT_TRUE(groups.empty());
    groups.assign(3, owners.size(), [&](MemberId id) { return owners[id.number()]; });
    std::string text;
    for (const OwnerId id : Base::firstIds<OwnerId>(3)) {
        text += std::to_string(id.number()) + ":";
        for (const MemberId of : groups[id])
            text += " " + std::to_string(of.number());
        text += "; ";
    }
    EXPECT_EQ(text, "0: 1 4; 1:; 2: 0 2 5; ");
}

TEST(NameTable, KeepsTheFirstIndexOfAName) {
    Base::NameTable<OwnerId> table;
    const Base::Name low{3}, high{1000};
    EXPECT_TRUE(table.find(high) == Base::none);
    EXPECT_TRUE(table.add(high, owner(1)));
    EXPECT_FALSE(table.add(high, owner(2)));
    EXPECT_EQ(table.find(high), owner(1));
    EXPECT_TRUE(table.find(low) == Base::none);
    table.clear();
    EXPECT_TRUE(table.find(high) == Base::none);
    EXPECT_TRUE(table.add(high, owner(2)));
    EXPECT_EQ(table.find(high), owner(2));
}

TEST(NameSet, HasWhatWasAddedSinceItWasCleared) {
    Base::NameSet set;
    const Base::Name low{3}, high{1000};
    EXPECT_FALSE(set.contains(low));
    EXPECT_TRUE(set.add(high));
    EXPECT_FALSE(set.add(high));
    EXPECT_TRUE(set.contains(high));
    EXPECT_FALSE(set.contains(low));
    set.clear();
    EXPECT_FALSE(set.contains(high));
    EXPECT_TRUE(set.add(high));
}

} // namespace
