// Array lists: the capacity rule, item sizes, positions past the end, the zero-fill invariant
// after every kind of change, destructors and duplicators, sorting (also nested) and search.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"

namespace {

ArrayListItem_u intItem(int value) {
    ArrayListItem_u item;
    memset(&item, 0, sizeof(item));
    item.Int = value;
    return item;
}

ArrayListItem_u doubleItem(double value) {
    ArrayListItem_u item;
    item.Double = value;
    return item;
}

std::vector<int> ints(const ArrayList_s *list) {
    std::vector<int> result;
    for (LgIndex_t i = 0; i < list->count; i++) result.push_back(ArrayListGetItem(list, i).Int);
    return result;
}

ArrayList_s *intList(std::initializer_list<int> values) {
    ArrayList_s *list = ArrayListAlloc(0, ArrayListType_Int, nullptr, 0);
    for (int v : values) ArrayListAppendItem(list, intItem(v));
    return list;
}

// Every byte between count and capacity must be zero.
bool tailIsZero(const ArrayList_s *list) {
    size_t start = static_cast<size_t>(list->count) * static_cast<size_t>(list->itemSize);
    size_t end = static_cast<size_t>(list->capacity) * static_cast<size_t>(list->itemSize);
    for (size_t i = start; i < end; i++) {
        if (list->array[i] != 0) return false;
    }
    return true;
}

int compareInts(ArrayListItem_u a, ArrayListItem_u b, ArbParam_t /*clientData*/) {
    return (a.Int > b.Int) - (a.Int < b.Int);
}

int compareIntsDescending(ArrayListItem_u a, ArrayListItem_u b, ArbParam_t /*clientData*/) {
    return (a.Int < b.Int) - (a.Int > b.Int);
}

// Counts the items a destructor saw, through the client data.
bool countingDestructor(void *itemRef, ArbParam_t clientData) {
    auto *seen = reinterpret_cast<std::vector<int> *>(clientData);
    seen->push_back(*static_cast<int *>(itemRef));
    return true;
}

}  // namespace

TEST(ArrayListCapacity, DefaultRule) {
    // (current, requested) -> new capacity, worked out by hand from the growth rule.
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 0, 0, 0), 32);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 0, 7, 0), 7);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 32, 33, 0), 64);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 64, 100, 0), 128);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 1000, 1001, 0), 1500);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 1000, 3001, 0), 3500);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 10, 11, 0), 32);
    EXPECT_EQ(ArrayListDefaultCapacityCallback(nullptr, 5, 0, 0), 32);
    // Near the index limit the rounding may not pass it.
    LgIndex_t near = ArrayListDefaultCapacityCallback(nullptr, 2000000000, 2100000000, 0);
    EXPECT_GE(near, 2100000000);
    EXPECT_LE(near, MAXINDEX);
}

TEST(ArrayListCapacity, AllocAndEnlarge) {
    ArrayList_s *list = ArrayListAlloc(0, ArrayListType_Double, nullptr, 0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->capacity, 32);
    EXPECT_EQ(list->count, 0);
    EXPECT_TRUE(tailIsZero(list));
    ASSERT_TRUE(ArrayListEnlargeCapacity(list, 33));
    EXPECT_EQ(list->capacity, 64);
    ASSERT_TRUE(ArrayListEnlargeCapacity(list, 100));
    EXPECT_EQ(list->capacity, 128);
    ASSERT_TRUE(ArrayListEnlargeCapacity(list, 50));  // at or below capacity: nothing
    EXPECT_EQ(list->capacity, 128);
    ArrayListDealloc(&list, nullptr, 0);
    EXPECT_EQ(list, nullptr);

    ArrayList_s *big = ArrayListAlloc(1000, ArrayListType_Int, nullptr, 0);
    EXPECT_EQ(big->capacity, 1000);
    ASSERT_TRUE(ArrayListEnlargeCapacity(big, 1001));
    EXPECT_EQ(big->capacity, 1500);
    EXPECT_TRUE(tailIsZero(big));
    ArrayListDealloc(&big, nullptr, 0);
}

TEST(ArrayListCapacity, GrowthThroughAppendKeepsItems) {
    ArrayList_s *list = ArrayListAlloc(0, ArrayListType_Int, nullptr, 0);
    for (int i = 0; i < 33; i++) ASSERT_TRUE(ArrayListAppendItem(list, intItem(i * 3)));
    EXPECT_EQ(list->capacity, 64);
    for (int i = 0; i < 33; i++) EXPECT_EQ(ArrayListGetItem(list, i).Int, i * 3);
    EXPECT_TRUE(tailIsZero(list));
    ArrayListDealloc(&list, nullptr, 0);
}

namespace {
LgIndex_t refuseGrowth(const ArrayList_s *, LgIndex_t current, LgIndex_t requested, ArbParam_t) {
    return current == 0 ? requested : 0;
}
}  // namespace

TEST(ArrayListCapacity, CallbackRefusalFailsAndLeavesTheList) {
    ArrayList_s *list = ArrayListAlloc(2, ArrayListType_Int, refuseGrowth, 0);
    ASSERT_EQ(list->capacity, 2);
    ASSERT_TRUE(ArrayListAppendItem(list, intItem(1)));
    ASSERT_TRUE(ArrayListAppendItem(list, intItem(2)));
    EXPECT_FALSE(ArrayListAppendItem(list, intItem(3)));
    EXPECT_FALSE(ArrayListSetItem(list, 5, intItem(3), nullptr, 0));
    EXPECT_EQ(ints(list), (std::vector<int>{1, 2}));
    ArrayListDealloc(&list, nullptr, 0);
}

TEST(ArrayListTypes, SmallItemsKeepTheirNeighbours) {
    ArrayList_s *list = ArrayListAlloc(0, ArrayListType_EntIndex, nullptr, 0);
    ArrayListItem_u item;
    for (int v : {-2, 300, 7}) {
        item.EntIndex = static_cast<EntIndex_t>(v);
        ArrayListAppendItem(list, item);
    }
    // Two bytes each, back to back.
    EXPECT_EQ(list->itemSize, 2);
    EntIndex_t raw[3];
    memcpy(raw, list->array, sizeof(raw));
    EXPECT_EQ(raw[0], -2);
    EXPECT_EQ(raw[1], 300);
    EXPECT_EQ(raw[2], 7);
    EXPECT_EQ(ArrayListGetItem(list, 1).EntIndex, 300);
    EXPECT_TRUE(ArrayListIsValid(list));
    EXPECT_EQ(ArrayListGetType(list), ArrayListType_EntIndex);
    ArrayListDealloc(&list, nullptr, 0);
    EXPECT_FALSE(ArrayListIsValid(nullptr));
}

TEST(ArrayListPastTheEnd, SetItemLeavesAZeroGap) {
    ArrayList_s *list = ArrayListAlloc(0, ArrayListType_Double, nullptr, 0);
    ASSERT_TRUE(ArrayListSetItem(list, 10, doubleItem(2.5), nullptr, 0));
    EXPECT_EQ(list->count, 11);
    for (LgIndex_t i = 0; i < 10; i++) {
        ArrayListItem_u item = ArrayListGetItem(list, i);
        EXPECT_EQ(item.Int64, 0) << i;
    }
    EXPECT_EQ(ArrayListGetItem(list, 10).Double, 2.5);
    EXPECT_TRUE(tailIsZero(list));
    ArrayListDealloc(&list, nullptr, 0);
}

TEST(ArrayListPastTheEnd, InsertItemAndInsertListBeyondCount) {
    ArrayList_s *list = intList({1, 2});
    ASSERT_TRUE(ArrayListInsertItem(list, 5, intItem(9)));
    EXPECT_EQ(ints(list), (std::vector<int>{1, 2, 0, 0, 0, 9}));
    ArrayList_s *source = intList({7, 8});
    ASSERT_TRUE(ArrayListInsert(list, 8, source));
    EXPECT_EQ(ints(list), (std::vector<int>{1, 2, 0, 0, 0, 9, 0, 0, 7, 8}));
    EXPECT_EQ(list->count, 10);  // offset plus the source's count
    ASSERT_TRUE(ArrayListInsert(list, 1, source));
    EXPECT_EQ(ints(list), (std::vector<int>{1, 7, 8, 2, 0, 0, 0, 9, 0, 0, 7, 8}));
    ArrayListDealloc(&source, nullptr, 0);
    ArrayListDealloc(&list, nullptr, 0);
}

TEST(ArrayListPastTheEnd, InsertIntoItself) {
    ArrayList_s *list = intList({1, 2, 3});
    ASSERT_TRUE(ArrayListInsert(list, 1, list));
    EXPECT_EQ(ints(list), (std::vector<int>{1, 1, 2, 3, 2, 3}));
    ArrayListDealloc(&list, nullptr, 0);
}

TEST(ArrayListZeroFill, DeletesAndRemovesClearTheVacatedItems) {
    ArrayList_s *list = intList({10, 11, 12, 13, 14, 15});
    ArrayListDeleteItems(list, 1, 2, nullptr, 0);
    EXPECT_EQ(ints(list), (std::vector<int>{10, 13, 14, 15}));
    EXPECT_TRUE(tailIsZero(list));

    ArrayListItem_u removed = ArrayListRemoveItem(list, 0);
    EXPECT_EQ(removed.Int, 10);
    EXPECT_TRUE(tailIsZero(list));

    ArrayList_s *taken = ArrayListRemoveItems(list, 1, 2);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(ints(taken), (std::vector<int>{14, 15}));
    EXPECT_EQ(ints(list), (std::vector<int>{13}));
    EXPECT_TRUE(tailIsZero(list));
    EXPECT_TRUE(tailIsZero(taken));

    ArrayListDeleteAllItems(list, nullptr, 0);
    EXPECT_EQ(list->count, 0);
    EXPECT_TRUE(tailIsZero(list));
    // The cleared tail makes a later set past the end read zeros again.
    ASSERT_TRUE(ArrayListSetItem(list, 3, intItem(5), nullptr, 0));
    EXPECT_EQ(ints(list), (std::vector<int>{0, 0, 0, 5}));
    ArrayListDealloc(&taken, nullptr, 0);
    ArrayListDealloc(&list, nullptr, 0);
}

TEST(ArrayListDestructors, RunOnDeletedReplacedAndDeallocatedItemsOnly) {
    std::vector<int> seen;
    ArbParam_t context = reinterpret_cast<ArbParam_t>(&seen);
    ArrayList_s *list = intList({1, 2, 3, 4});
    ArrayListDeleteItems(list, 1, 2, countingDestructor, context);
    EXPECT_EQ(seen, (std::vector<int>{2, 3}));
    seen.clear();
    ASSERT_TRUE(ArrayListSetItem(list, 0, intItem(9), countingDestructor, context));  // replaces 1
    ASSERT_TRUE(ArrayListSetItem(list, 6, intItem(8), countingDestructor, context));  // past the end
    EXPECT_EQ(seen, (std::vector<int>{1}));
    seen.clear();
    ArrayListDealloc(&list, countingDestructor, context);
    EXPECT_EQ(seen, (std::vector<int>{9, 4, 0, 0, 0, 0, 8}));
}

namespace {
bool addOneUntilFive(void *itemRef, ArbParam_t clientData) {
    auto *list = reinterpret_cast<ArrayList_s *>(clientData);
    EXPECT_TRUE(list->isVisitingItems);
    int *value = static_cast<int *>(itemRef);
    if (*value == 5) return false;
    (*value)++;
    return true;
}
}  // namespace

TEST(ArrayListVisit, StopsWhenTheVisitorSaysSoAndRestoresTheFlag) {
    ArrayList_s *list = intList({1, 2, 5, 7});
    EXPECT_FALSE(ArrayListVisitItems(list, 0, 4, addOneUntilFive, reinterpret_cast<ArbParam_t>(list)));
    EXPECT_EQ(ints(list), (std::vector<int>{2, 3, 5, 7}));
    EXPECT_FALSE(list->isVisitingItems);
    EXPECT_TRUE(ArrayListVisitItems(list, 0, 2, addOneUntilFive, reinterpret_cast<ArbParam_t>(list)));
    EXPECT_EQ(ints(list), (std::vector<int>{3, 4, 5, 7}));
    ArrayListDealloc(&list, nullptr, 0);
}

TEST(ArrayListSort, SortsBySmallItemsCopiedIntoTheUnion) {
    ArrayList_s *list = ArrayListAlloc(0, ArrayListType_SmInteger, nullptr, 0);
    ArrayListItem_u item;
    for (int v : {5, -3, 200, 0}) {
        item.SmInteger = static_cast<SmInteger_t>(v);
        ArrayListAppendItem(list, item);
    }
    ArrayListSort(list, [](ArrayListItem_u a, ArrayListItem_u b, ArbParam_t) { return int(a.SmInteger) - int(b.SmInteger); }, 0);
    std::vector<int> sorted;
    for (LgIndex_t i = 0; i < list->count; i++) sorted.push_back(ArrayListGetItem(list, i).SmInteger);
    EXPECT_EQ(sorted, (std::vector<int>{-3, 0, 5, 200}));
    ArrayListDealloc(&list, nullptr, 0);
}

namespace {
// Outer items are lists of ints; comparing two of them sorts both (descending) first and then
// compares their first items, so each comparison runs two inner sorts.
int compareBySortedHead(ArrayListItem_u a, ArrayListItem_u b, ArbParam_t clientData) {
    auto *innerSorts = reinterpret_cast<int *>(clientData);
    auto *listA = static_cast<ArrayList_s *>(a.VoidPtr);
    auto *listB = static_cast<ArrayList_s *>(b.VoidPtr);
    ArrayListSort(listA, compareIntsDescending, 0);
    ArrayListSort(listB, compareIntsDescending, 0);
    *innerSorts += 2;
    return compareInts(ArrayListGetItem(listA, 0), ArrayListGetItem(listB, 0), 0);
}
}  // namespace

TEST(ArrayListSort, NestedSortRestoresTheOuterComparator) {
    ArrayList_s *outer = ArrayListAlloc(0, ArrayListType_VoidPtr, nullptr, 0);
    ArrayList_s *inner[] = {intList({3, 9, 1}), intList({4, 2}), intList({1, 12, 6}), intList({7})};
    for (ArrayList_s *l : inner) {
        ArrayListItem_u item;
        item.VoidPtr = l;
        ArrayListAppendItem(outer, item);
    }
    int innerSorts = 0;
    ArrayListSort(outer, compareBySortedHead, reinterpret_cast<ArbParam_t>(&innerSorts));
    EXPECT_GT(innerSorts, 0);
    // Heads after the inner sorts: 9, 4, 12, 7 -> outer order 4, 7, 9, 12.
    std::vector<int> heads;
    for (LgIndex_t i = 0; i < outer->count; i++) {
        heads.push_back(ArrayListGetItem(static_cast<ArrayList_s *>(ArrayListGetItem(outer, i).VoidPtr), 0).Int);
    }
    EXPECT_EQ(heads, (std::vector<int>{4, 7, 9, 12}));
    EXPECT_EQ(ints(inner[2]), (std::vector<int>{12, 6, 1}));
    for (ArrayList_s *l : inner) ArrayListDealloc(&l, nullptr, 0);
    ArrayListDealloc(&outer, nullptr, 0);
}

TEST(ArrayListSearch, FoundPositionOrInsertionPoint) {
    ArrayList_s *list = intList({10, 20, 30, 40});
    LgIndex_t index = -7;
    EXPECT_TRUE(ArrayListSearch(list, intItem(30), compareInts, 0, &index));
    EXPECT_EQ(index, 2);
    EXPECT_FALSE(ArrayListSearch(list, intItem(25), compareInts, 0, &index));
    EXPECT_EQ(index, 2);
    EXPECT_FALSE(ArrayListSearch(list, intItem(5), compareInts, 0, &index));
    EXPECT_EQ(index, 0);
    EXPECT_FALSE(ArrayListSearch(list, intItem(99), compareInts, 0, &index));
    EXPECT_EQ(index, 4);  // past the end: the count
    ArrayList_s *empty = ArrayListAlloc(0, ArrayListType_Int, nullptr, 0);
    EXPECT_FALSE(ArrayListSearch(empty, intItem(1), compareInts, 0, &index));
    EXPECT_EQ(index, 0);
    ArrayListDealloc(&empty, nullptr, 0);
    ArrayListDealloc(&list, nullptr, 0);
}
