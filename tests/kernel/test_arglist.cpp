// Argument lists: every kind goes in and comes out, lookups are case-blind and the first namesake
// wins, the getter's three answers, access counting, and ownership of names and strings.
#include <gtest/gtest.h>

#include "base/kernel/alloc.h"
#include "base/kernel/arglist.h"

TEST(ArgListKinds, EachKindRoundTrips) {
    long before = AllocActiveCount();
    ArgList_s *args = ArgListAlloc();
    ASSERT_NE(args, nullptr);
    ArbParam_t arb = 0;
    double number = 1.5;
    int target = 0;
    char name[] = "Title";
    ASSERT_TRUE(ArgListAppendArbParam(args, "ARB", -77));
    ASSERT_TRUE(ArgListAppendArbParamPtr(args, "ARBPTR", &arb));
    ASSERT_TRUE(ArgListAppendLgIndex(args, "ZONE", 2147483646));
    ASSERT_TRUE(ArgListAppendDouble(args, "X", -0.25));
    ASSERT_TRUE(ArgListAppendDoublePtr(args, "XPTR", &number));
    ASSERT_TRUE(ArgListAppendString(args, name, "hello"));
    ASSERT_TRUE(ArgListAppendString(args, "NOTHING", nullptr));
    ASSERT_TRUE(ArgListAppendRef(args, "REF", &target));
    name[0] = 'X';  // the list copied the name
    EXPECT_EQ(ArgListGetCount(args), 8);
    EXPECT_TRUE(ArgListIsValid(args));

    ArbParam_t arbOut = 0;
    ArbParam_t *arbPtrOut = nullptr;
    LgIndex_t zone = 0;
    double x = 0;
    double *xPtr = nullptr;
    char *text = nullptr;
    void *ref = nullptr;
    EXPECT_EQ(ArgListGetArbParam(args, "ARB", &arbOut), ArgListGetResult_Found);
    EXPECT_EQ(arbOut, -77);
    EXPECT_EQ(ArgListGetArbParamPtr(args, "ARBPTR", &arbPtrOut), ArgListGetResult_Found);
    EXPECT_EQ(arbPtrOut, &arb);
    EXPECT_EQ(ArgListGetLgIndex(args, "ZONE", &zone), ArgListGetResult_Found);
    EXPECT_EQ(zone, 2147483646);
    EXPECT_EQ(ArgListGetDouble(args, "X", &x), ArgListGetResult_Found);
    EXPECT_EQ(x, -0.25);
    EXPECT_EQ(ArgListGetDoublePtr(args, "XPTR", &xPtr), ArgListGetResult_Found);
    EXPECT_EQ(xPtr, &number);
    EXPECT_EQ(ArgListGetString(args, "title", &text), ArgListGetResult_Found);
    EXPECT_STREQ(text, "hello");
    newfree(text);
    EXPECT_EQ(ArgListGetString(args, "NOTHING", &text), ArgListGetResult_Found);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(ArgListGetRef(args, "REF", &ref), ArgListGetResult_Found);
    EXPECT_EQ(ref, &target);
    ArgListDealloc(&args);
    EXPECT_EQ(args, nullptr);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(ArgListLookup, ThreeAnswersAndCaseBlindNames) {
    ArgList_s *args = ArgListAlloc();
    ArgListAppendDouble(args, "Scale", 2.0);
    double value = -1;
    LgIndex_t index = -1;
    EXPECT_EQ(ArgListGetDouble(args, "SCALE", &value), ArgListGetResult_Found);
    EXPECT_EQ(value, 2.0);
    EXPECT_EQ(ArgListGetLgIndex(args, "scale", &index), ArgListGetResult_WrongKind);
    EXPECT_EQ(index, -1);  // untouched
    EXPECT_EQ(ArgListGetDouble(args, "Missing", &value), ArgListGetResult_NotFound);
    EXPECT_EQ(ArgListGetResult_WrongKind, 0);
    EXPECT_EQ(ArgListGetResult_NotFound, 1);
    EXPECT_EQ(ArgListGetResult_Found, 2);
    ArgListDealloc(&args);
}

TEST(ArgListLookup, FirstNamesakeWins) {
    ArgList_s *args = ArgListAlloc();
    ArgListAppendLgIndex(args, "n", 1);
    ArgListAppendLgIndex(args, "N", 2);
    ArgListAppendDouble(args, "d", 1.0);
    ArgListAppendLgIndex(args, "D", 5);
    LgIndex_t value = 0;
    EXPECT_EQ(ArgListGetLgIndex(args, "N", &value), ArgListGetResult_Found);
    EXPECT_EQ(value, 1);
    // The first "d" is a double, so the integer namesake behind it is never reached.
    EXPECT_EQ(ArgListGetLgIndex(args, "d", &value), ArgListGetResult_WrongKind);
    ArgListDealloc(&args);
}

TEST(ArgListAccess, SuccessfulGetsMarkTheArgument) {
    ArgList_s *args = ArgListAlloc();
    ArgListAppendLgIndex(args, "A", 1);
    ArgListAppendLgIndex(args, "B", 2);
    ArgListAppendString(args, "C", "c");
    EXPECT_EQ(ArgListGetAccessCount(args), 0);
    LgIndex_t value;
    double wrong;
    ArgListGetLgIndex(args, "A", &value);
    ArgListGetLgIndex(args, "A", &value);  // a second read counts once
    ArgListGetDouble(args, "B", &wrong);   // wrong kind: not marked
    ArgListGetLgIndex(args, "Z", &value);  // missing: nothing to mark
    EXPECT_EQ(ArgListGetAccessCount(args), 1);
    ArgListGetLgIndex(args, "b", &value);
    EXPECT_EQ(ArgListGetAccessCount(args), 2);
    ArgListDealloc(&args);
}

TEST(ArgListClear, EmptiesAllFourListsAndFreesStrings) {
    long before = AllocActiveCount();
    ArgList_s *args = ArgListAlloc();
    long empty = AllocActiveCount();
    ArgListAppendString(args, "S", "value");
    ArgListAppendDouble(args, "D", 1.0);
    ArgListClear(args);
    EXPECT_EQ(ArgListGetCount(args), 0);
    EXPECT_EQ(ArgListGetAccessCount(args), 0);
    EXPECT_TRUE(ArgListIsValid(args));
    EXPECT_EQ(AllocActiveCount(), empty);
    ArgListAppendLgIndex(args, "after", 3);
    EXPECT_EQ(ArgListGetCount(args), 1);
    ArgListDealloc(&args);
    EXPECT_EQ(AllocActiveCount(), before);
    EXPECT_FALSE(ArgListIsValid(nullptr));
}
