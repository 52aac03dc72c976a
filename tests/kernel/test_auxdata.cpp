// Auxiliary data: names kept sorted and unique without regard to case, replacement by a namesake
// in another case, the boolean words, copies that consider retain flags, appending, and the rule
// for valid names.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/auxdata.h"

namespace {

ArbParam_t text(const char *s) { return reinterpret_cast<ArbParam_t>(s); }

bool set(AuxData_s *aux, const char *name, const char *value, bool retain = true) {
    return AuxDataSetItem(aux, name, text(value), AuxDataType_String, retain);
}

// "name=value" for each item in map order.
std::vector<std::string> pairs(const AuxData_s *aux) {
    std::vector<std::string> result;
    for (LgIndex_t i = 0; i < AuxDataGetNumItems(aux); i++) {
        const char *name = nullptr;
        ArbParam_t value = 0;
        AuxDataGetItemByIndex(aux, i, &name, &value, nullptr, nullptr);
        const char *v = reinterpret_cast<const char *>(value);
        result.push_back(std::string(name) + "=" + (v != nullptr ? v : "<null>"));
    }
    return result;
}

using Pairs = std::vector<std::string>;

}  // namespace

TEST(AuxDataItems, SortedByNameWithoutRegardToCase) {
    long before = AllocActiveCount();
    AuxData_s *aux = AuxDataAlloc();
    ASSERT_TRUE(set(aux, "beta", "2"));
    ASSERT_TRUE(set(aux, "Alpha", "1"));
    ASSERT_TRUE(set(aux, "_z", "3"));  // '_' folds above the letters
    ASSERT_TRUE(set(aux, "GAMMA", "4"));
    EXPECT_EQ(pairs(aux), (Pairs{"Alpha=1", "beta=2", "GAMMA=4", "_z=3"}));

    LgIndex_t index = -1;
    EXPECT_TRUE(AuxDataGetItemIndex(aux, "ALPHA", &index));
    EXPECT_EQ(index, 0);
    EXPECT_FALSE(AuxDataGetItemIndex(aux, "c", &index));
    EXPECT_EQ(index, 2);  // between beta and GAMMA
    EXPECT_FALSE(AuxDataGetItemIndex(aux, "zz", &index));
    EXPECT_EQ(index, 3);
    AuxDataDealloc(&aux);
    EXPECT_EQ(aux, nullptr);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(AuxDataItems, NamesakeInAnotherCaseReplaces) {
    long before = AllocActiveCount();
    AuxData_s *aux = AuxDataAlloc();
    char value[] = "first";
    ASSERT_TRUE(set(aux, "Common.Name", value, false));
    value[0] = 'X';  // the item keeps its own copy
    ASSERT_TRUE(set(aux, "COMMON.NAME", "second", true));
    EXPECT_EQ(AuxDataGetNumItems(aux), 1);
    EXPECT_EQ(pairs(aux), (Pairs{"COMMON.NAME=second"}));
    ArbParam_t got = 0;
    AuxDataType_e type;
    bool retain = false;
    ASSERT_TRUE(AuxDataGetItemByName(aux, "common.name", &got, &type, &retain));
    EXPECT_STREQ(reinterpret_cast<const char *>(got), "second");
    EXPECT_EQ(type, AuxDataType_String);
    EXPECT_TRUE(retain);
    AuxDataDealloc(&aux);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(AuxDataItems, DeleteByIndexAndByName) {
    AuxData_s *aux = AuxDataAlloc();
    set(aux, "a", "1");
    set(aux, "b", "2");
    set(aux, "c", "3");
    AuxDataDeleteItemByIndex(aux, 0);
    EXPECT_TRUE(AuxDataDeleteItemByName(aux, "C"));
    EXPECT_FALSE(AuxDataDeleteItemByName(aux, "c"));
    EXPECT_EQ(pairs(aux), (Pairs{"b=2"}));
    ArbParam_t got = 0;
    EXPECT_FALSE(AuxDataGetItemByName(aux, "a", &got, nullptr, nullptr));
    AuxDataDealloc(&aux);
}

TEST(AuxDataBoolean, TrueWordsInAnyCase) {
    AuxData_s *aux = AuxDataAlloc();
    const char *trueWords[] = {"YES", "yep", "Y", "true", "t", "On", "1"};
    const char *falseWords[] = {"no", "0", "yes!", "", "TRUEX", "off"};
    for (const char *word : trueWords) {
        set(aux, "flag", word);
        bool value = false;
        EXPECT_TRUE(AuxDataGetBooleanItemByName(aux, "FLAG", &value, nullptr, nullptr)) << word;
        EXPECT_TRUE(value) << word;
    }
    for (const char *word : falseWords) {
        set(aux, "flag", word);
        bool value = true;
        EXPECT_TRUE(AuxDataGetBooleanItemByName(aux, "flag", &value, nullptr, nullptr)) << word;
        EXPECT_FALSE(value) << word;
    }
    bool value = true;
    EXPECT_FALSE(AuxDataGetBooleanItemByName(aux, "missing", &value, nullptr, nullptr));
    EXPECT_FALSE(value);
    AuxDataDealloc(&aux);
}

TEST(AuxDataCopy, ConsiderRetainDropsRunsOfUnretainedItems) {
    long before = AllocActiveCount();
    AuxData_s *aux = AuxDataAlloc();
    set(aux, "a", "1", true);
    set(aux, "b", "2", false);
    set(aux, "c", "3", false);
    set(aux, "d", "4", true);
    set(aux, "e", "5", false);
    AuxData_s *all = AuxDataCopy(aux, false);
    AuxData_s *retained = AuxDataCopy(aux, true);
    EXPECT_EQ(pairs(all), (Pairs{"a=1", "b=2", "c=3", "d=4", "e=5"}));
    EXPECT_EQ(pairs(retained), (Pairs{"a=1", "d=4"}));
    // The copy is deep: changing the source leaves it alone.
    set(aux, "a", "changed");
    EXPECT_EQ(pairs(retained)[0], "a=1");
    AuxDataDealloc(&all);
    AuxDataDealloc(&retained);
    AuxDataDealloc(&aux);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(AuxDataCopy, AppendItemsMergesAndReplaces) {
    long before = AllocActiveCount();
    AuxData_s *target = AuxDataAlloc();
    AuxData_s *source = AuxDataAlloc();
    set(target, "keep", "k");
    set(target, "Shared", "old");
    set(source, "SHARED", "new");
    set(source, "added", "x", false);
    ASSERT_TRUE(AuxDataAppendItems(target, source));
    EXPECT_EQ(pairs(target), (Pairs{"added=x", "keep=k", "SHARED=new"}));
    EXPECT_EQ(pairs(source), (Pairs{"added=x", "SHARED=new"}));
    AuxDataDealloc(&target);
    AuxDataDealloc(&source);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(AuxDataNames, ValidNameRule) {
    EXPECT_FALSE(AuxDataIsValidName(""));
    EXPECT_FALSE(AuxDataIsValidName(nullptr));
    EXPECT_TRUE(AuxDataIsValidName("a.b_1"));
    EXPECT_TRUE(AuxDataIsValidName("_x"));
    EXPECT_TRUE(AuxDataIsValidName("Z"));
    EXPECT_FALSE(AuxDataIsValidName("1a"));
    EXPECT_FALSE(AuxDataIsValidName(".a"));
    EXPECT_FALSE(AuxDataIsValidName("a b"));
    EXPECT_FALSE(AuxDataIsValidName("a-b"));
    EXPECT_TRUE(AuxDataIsValidNameChar('.', false));
    EXPECT_FALSE(AuxDataIsValidNameChar('.', true));
    EXPECT_TRUE(AuxDataIsValidNameChar('7', false));
    EXPECT_FALSE(AuxDataIsValidNameChar('7', true));
    EXPECT_TRUE(AuxDataIsValidNameChar('_', true));
}
