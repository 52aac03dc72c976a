// Bit sets: growth by doubling, member walks at word edges, renumbering by deletion, insertion and
// shifting (checked against a plain vector<bool> model), and comparisons across sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <random>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/set.h"

namespace {

// Owns a set for the length of a test.
struct SetGuard {
    Set_a *set;
    explicit SetGuard(std::initializer_list<SetIndex_t> members = {}) : set(AllocSet(false)) {
        for (SetIndex_t member : members) AddToSet(set, member, false);
    }
    ~SetGuard() { DeallocSet(&set); }
    SetGuard(const SetGuard &) = delete;
    SetGuard &operator=(const SetGuard &) = delete;
};

std::vector<SetIndex_t> members(const Set_a *set) {
    std::vector<SetIndex_t> result;
    for (SetIndex_t m = GetNextMember(set, -1); m != BADSETVALUE; m = GetNextMember(set, m)) result.push_back(m);
    return result;
}

std::vector<SetIndex_t> membersOf(const std::vector<bool> &model) {
    std::vector<SetIndex_t> result;
    for (size_t i = 0; i < model.size(); i++) {
        if (model[i]) result.push_back(static_cast<SetIndex_t>(i));
    }
    return result;
}

using Members = std::vector<SetIndex_t>;

}  // namespace

TEST(SetGrowth, AddingGrowsByDoublingToMemberPlusOne) {
    SetGuard s;
    ASSERT_TRUE(AddToSet(s.set, 63, true));
    EXPECT_EQ(s.set->size, 64);
    ASSERT_TRUE(AddToSet(s.set, 64, true));
    EXPECT_EQ(s.set->size, 128);  // two words
    EXPECT_EQ(s.set->data[1], 1u);

    SetGuard t;
    ASSERT_TRUE(AddToSet(t.set, 1000, true));
    EXPECT_EQ(t.set->size, 1024);  // 64 -> 128 -> 256 -> 512 -> 1024
    EXPECT_EQ(members(t.set), (Members{1000}));
}

TEST(SetGrowth, ExpandKeepsMembersAndNeverShrinks) {
    SetGuard s({3, 60});
    ASSERT_TRUE(ExpandSet(s.set, 129, true));
    EXPECT_EQ(s.set->size, 256);
    EXPECT_EQ(members(s.set), (Members{3, 60}));
    ASSERT_TRUE(ExpandSet(s.set, 10, true));
    EXPECT_EQ(s.set->size, 256);
    for (SetIndex_t w = 1; w < 4; w++) EXPECT_EQ(s.set->data[w], 0u);
}

TEST(SetGrowth, ImpossibleSizesAndNullSetsFail) {
    SetGuard s;
    EXPECT_FALSE(ExpandSet(s.set, INT64_MAX, false));
    EXPECT_EQ(s.set->size, 64);
    EXPECT_FALSE(ExpandSet(nullptr, 10, false));
}

TEST(SetMembership, OutOfRangeMembersAreNeverInTheSet) {
    SetGuard s({0, 63});
    EXPECT_TRUE(InSet(s.set, 0));
    EXPECT_TRUE(InSet(s.set, 63));
    EXPECT_FALSE(InSet(s.set, 62));
    EXPECT_FALSE(InSet(s.set, 64));
    EXPECT_FALSE(InSet(s.set, 100000));
    EXPECT_FALSE(InSet(s.set, -1));
    RemoveFromSet(s.set, 5000);  // outside: nothing happens, nothing grows
    RemoveFromSet(s.set, -3);
    EXPECT_EQ(s.set->size, 64);
    RemoveFromSet(s.set, 63);
    EXPECT_EQ(members(s.set), (Members{0}));
    ClearSet(s.set);
    EXPECT_TRUE(IsEmpty(s.set));
}

TEST(SetWalk, NextMemberStopsAtTheLastWordWithoutReadingPastIt) {
    // The set has exactly one word; an out-of-bounds read would be caught by the address checker.
    SetGuard s({63});
    EXPECT_EQ(GetNextMember(s.set, -1), 63);
    EXPECT_EQ(GetNextMember(s.set, 63), BADSETVALUE);
    SetGuard empty;
    EXPECT_EQ(GetNextMember(empty.set, 63), BADSETVALUE);
    EXPECT_EQ(GetNextMember(empty.set, -1), BADSETVALUE);
}

TEST(SetWalk, WalksCrossWordEdgesBothWays) {
    SetGuard s({0, 63, 64, 127, 128, 1000});
    EXPECT_EQ(members(s.set), (Members{0, 63, 64, 127, 128, 1000}));
    Members backwards;
    for (SetIndex_t m = GetPrevMember(s.set, -1); m != BADSETVALUE; m = GetPrevMember(s.set, m)) backwards.push_back(m);
    EXPECT_EQ(backwards, (Members{1000, 128, 127, 64, 63, 0}));
    EXPECT_EQ(GetPrevMember(s.set, 0), BADSETVALUE);
    EXPECT_EQ(GetPrevMember(s.set, 64), 63);
    EXPECT_EQ(GetPrevMember(s.set, 999999), 1000);  // beyond the size: from the top
    EXPECT_EQ(GetNextMember(s.set, 128), 1000);
}

TEST(SetCounting, CountOffsetAndVoids) {
    SetGuard s({2, 63, 64, 200});
    EXPECT_EQ(MemberCount(s.set), 4);
    EXPECT_EQ(MemberOffset(s.set, 2), 0);
    EXPECT_EQ(MemberOffset(s.set, 64), 2);
    EXPECT_EQ(MemberOffset(s.set, 200), 3);
    EXPECT_EQ(MemberOffset(s.set, 3), -1);
    EXPECT_EQ(OffsetMember(s.set, 0), 2);
    EXPECT_EQ(OffsetMember(s.set, 1), 63);
    EXPECT_EQ(OffsetMember(s.set, 3), 200);
    EXPECT_EQ(OffsetMember(s.set, 4), BADSETVALUE);

    SetGuard dense({0, 1, 2});
    SetGuard gap({0, 2});
    SetGuard noZero({1});
    SetGuard empty;
    EXPECT_FALSE(HasVoids(dense.set));
    EXPECT_TRUE(HasVoids(gap.set));
    EXPECT_TRUE(HasVoids(noZero.set));
    EXPECT_FALSE(HasVoids(empty.set));
}

TEST(SetRenumber, DeleteMemberClosesTheGap) {
    SetGuard s({1, 2, 5});
    DeleteSetMember(s.set, 2);
    EXPECT_EQ(members(s.set), (Members{1, 4}));

    // Bits cross from one word into the one below.
    SetGuard t({0, 63, 64, 65, 127, 128});
    DeleteSetMember(t.set, 10);
    EXPECT_EQ(members(t.set), (Members{0, 62, 63, 64, 126, 127}));
    EXPECT_EQ(t.set->size, 256);

    SetGuard u({63, 64});
    DeleteSetMember(u.set, 63);
    EXPECT_EQ(members(u.set), (Members{63}));

    SetGuard v({4});
    DeleteSetMember(v.set, 500);  // above the size: nothing to renumber
    EXPECT_EQ(members(v.set), (Members{4}));
}

TEST(SetRenumber, InsertMemberMakesRoomAndAdds) {
    SetGuard s({1, 4});
    ASSERT_TRUE(InsertSetMember(s.set, 2, true));
    EXPECT_EQ(members(s.set), (Members{1, 2, 5}));

    SetGuard t({63});  // the top bit of the only word moves into a new word
    ASSERT_TRUE(InsertSetMember(t.set, 0, true));
    EXPECT_EQ(members(t.set), (Members{0, 64}));
    EXPECT_EQ(t.set->size, 128);

    SetGuard u({3});
    ASSERT_TRUE(InsertSetMember(u.set, 200, true));
    EXPECT_EQ(members(u.set), (Members{3, 200}));
    EXPECT_EQ(u.set->size, 256);
}

TEST(SetRenumber, DeleteThenInsertMatchesModelAcrossWords) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; round++) {
        std::vector<bool> model(400, false);
        SetGuard s;
        for (int i = 0; i < 40; i++) {
            SetIndex_t m = static_cast<SetIndex_t>(random() % 300);
            model[static_cast<size_t>(m)] = true;
            AddToSet(s.set, m, false);
        }
        SetIndex_t at = static_cast<SetIndex_t>(random() % 300);
        model.erase(model.begin() + at);
        model.push_back(false);
        DeleteSetMember(s.set, at);
        ASSERT_EQ(members(s.set), membersOf(model)) << "delete " << at;

        at = static_cast<SetIndex_t>(random() % 300);
        model.insert(model.begin() + at, true);
        ASSERT_TRUE(InsertSetMember(s.set, at, false));
        ASSERT_EQ(members(s.set), membersOf(model)) << "insert " << at;
    }
}

TEST(SetShift, PositiveShiftRotatesThePassedOverBitsDown) {
    SetGuard s({2, 5});
    ASSERT_TRUE(ShiftSet(s.set, 2, 3, 2));  // 2 -> 4, and the passed-over 5 -> 3
    EXPECT_EQ(members(s.set), (Members{3, 4}));
}

TEST(SetShift, NegativeShiftRotatesThePassedOverBitsUp) {
    // Range 3..4 moves down by 2 onto 1..2; the passed-over 1..2 go up to 3..4.
    SetGuard s({1, 4, 9});
    ASSERT_TRUE(ShiftSet(s.set, 3, 4, -2));
    EXPECT_EQ(members(s.set), (Members{2, 3, 9}));
}

TEST(SetShift, ShiftPastTheEndGrowsTheSet) {
    SetGuard s({60, 61});
    ASSERT_TRUE(ShiftSet(s.set, 60, 61, 10));
    EXPECT_EQ(members(s.set), (Members{70, 71}));
    EXPECT_GE(s.set->size, 128);
}

TEST(SetShift, EmptySetOrStretchAboveAllMembersIsUnchanged) {
    SetGuard empty;
    ASSERT_TRUE(ShiftSet(empty.set, 0, 10, 5));
    EXPECT_TRUE(IsEmpty(empty.set));
    EXPECT_EQ(empty.set->size, 64);
    SetGuard s({1});
    ASSERT_TRUE(ShiftSet(s.set, 500, 600, 100));
    EXPECT_EQ(members(s.set), (Members{1}));
    EXPECT_EQ(s.set->size, 64);
}

TEST(SetShift, RandomShiftsMatchARotationOfTheModel) {
    std::mt19937 random(11);
    for (int round = 0; round < 300; round++) {
        std::vector<bool> model(700, false);
        SetGuard s;
        for (int i = 0; i < 60; i++) {
            SetIndex_t m = static_cast<SetIndex_t>(random() % 300);
            model[static_cast<size_t>(m)] = true;
            AddToSet(s.set, m, false);
        }
        SetIndex_t first = static_cast<SetIndex_t>(random() % 250);
        SetIndex_t last = first + static_cast<SetIndex_t>(random() % 150);
        SetIndex_t shift = static_cast<SetIndex_t>(random() % 300) - first;  // first + shift >= 0
        if (shift == 0) shift = 1;
        SetIndex_t low = std::min(first, first + shift);
        SetIndex_t high = std::max(last, last + shift);
        SetIndex_t length = high - low + 1;
        // Rotating the stretch toward higher bits by r is a left rotation by length - r.
        SetIndex_t r = shift > 0 ? shift : length + shift;
        std::rotate(model.begin() + low, model.begin() + low + (length - r), model.begin() + high + 1);
        ASSERT_TRUE(ShiftSet(s.set, first, last, shift));
        ASSERT_EQ(members(s.set), membersOf(model)) << first << ".." << last << " by " << shift;
    }
}

TEST(SetCompare, EqualSetsIgnoresSizeButNotMembers) {
    SetGuard small({5});
    SetGuard big({5, 900});
    EXPECT_FALSE(EqualSets(small.set, big.set));
    RemoveFromSet(big.set, 900);
    EXPECT_EQ(big.set->size, 1024);
    EXPECT_TRUE(EqualSets(small.set, big.set));
    EXPECT_TRUE(EqualSets(big.set, small.set));
    SetGuard empty;
    EXPECT_TRUE(EqualSets(nullptr, empty.set));
    EXPECT_FALSE(EqualSets(nullptr, small.set));
}

TEST(SetCompare, SubSets) {
    SetGuard parent({1, 2, 70});
    SetGuard child({2, 70});
    SetGuard other({2, 300});
    SetGuard empty;
    EXPECT_TRUE(IsSubSet(child.set, parent.set));
    EXPECT_FALSE(IsSubSet(parent.set, child.set));
    EXPECT_FALSE(IsSubSet(other.set, parent.set));
    EXPECT_TRUE(IsSubSet(empty.set, child.set));
    EXPECT_TRUE(IsSubSet(nullptr, child.set));
}

TEST(SetCopy, CopyTakesTheSourceSizeAndClearsTheRest) {
    SetGuard dest({1, 500});
    SetGuard src({3, 100});
    ASSERT_TRUE(CopySet(dest.set, src.set, true));
    EXPECT_EQ(members(dest.set), (Members{3, 100}));
    EXPECT_EQ(dest.set->size, 512);  // never shrinks
    SetGuard fresh;
    ASSERT_TRUE(CopySet(fresh.set, src.set, true));
    EXPECT_EQ(fresh.set->size, 128);
    EXPECT_TRUE(EqualSets(fresh.set, src.set));
}

TEST(SetCopy, AppendIsAUnionGrowingOnlyToTheHighestMember) {
    SetGuard dest({1});
    SetGuard src({2, 1000});
    ExpandSet(src.set, 5000, false);
    ASSERT_TRUE(AppendSet(dest.set, src.set, true));
    EXPECT_EQ(members(dest.set), (Members{1, 2, 1000}));
    EXPECT_EQ(dest.set->size, 1024);
}

TEST(SetCopy, CopySetMemberAddsOrRemoves) {
    SetGuard src({4});
    SetGuard dest({9});
    ASSERT_TRUE(CopySetMember(dest.set, 100, src.set, 4));
    ASSERT_TRUE(CopySetMember(dest.set, 9, src.set, 5));
    EXPECT_EQ(members(dest.set), (Members{100}));
}
