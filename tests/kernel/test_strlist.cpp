// String lists: ownership of entries, null entries, newline joining and splitting, the compound
// form (quoting, escapes, groups joined by "+" or ";", unclosed quotes) and sorting.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/strlist.h"

namespace {

// Entries as std::string; a null entry shows as "<null>".
std::vector<std::string> entries(const StringList_s *list) {
    std::vector<std::string> result;
    for (LgIndex_t i = 0; i < StringListCount(list); i++) {
        const char *s = StringListGetStringRef(list, i);
        result.push_back(s != nullptr ? s : "<null>");
    }
    return result;
}

StringList_s *listOf(std::initializer_list<const char *> strings) {
    StringList_s *list = StringListAlloc();
    for (const char *s : strings) StringListAppendString(list, s);
    return list;
}

std::string take(char *s) {
    std::string result = s != nullptr ? s : "<null>";
    newfree(s);
    return result;
}

using Strings = std::vector<std::string>;

}  // namespace

TEST(StringListEntries, SettersCopyAndGettersGiveCopies) {
    long before = AllocActiveCount();
    StringList_s *list = StringListAlloc();
    char buffer[] = "abc";
    ASSERT_TRUE(StringListAppendString(list, buffer));
    buffer[0] = 'X';  // the list holds its own copy
    EXPECT_EQ(entries(list), (Strings{"abc"}));
    char *copy = StringListGetString(list, 0);
    EXPECT_NE(copy, StringListGetStringRef(list, 0));
    EXPECT_EQ(take(copy), "abc");

    ASSERT_TRUE(StringListSetString(list, 0, "replaced"));  // the old string is freed
    ASSERT_TRUE(StringListSetString(list, 3, "four"));       // past the end: null entries between
    EXPECT_EQ(entries(list), (Strings{"replaced", "<null>", "<null>", "four"}));
    EXPECT_EQ(StringListGetString(list, 1), nullptr);

    ASSERT_TRUE(StringListInsertString(list, 1, "ins"));
    StringListRemoveString(list, 0);
    EXPECT_EQ(entries(list), (Strings{"ins", "<null>", "<null>", "four"}));
    StringListClear(list);
    EXPECT_EQ(StringListCount(list), 0);
    StringListDealloc(&list);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(StringListEntries, CopyAppendAndArrays) {
    long before = AllocActiveCount();
    StringList_s *list = listOf({"a", nullptr, "c"});
    StringList_s *copy = StringListCopy(list);
    EXPECT_EQ(entries(copy), (Strings{"a", "<null>", "c"}));
    ASSERT_TRUE(StringListAppend(copy, list));
    EXPECT_EQ(entries(copy), (Strings{"a", "<null>", "c", "a", "<null>", "c"}));
    ASSERT_TRUE(StringListAppend(list, list));  // a list appended to itself
    EXPECT_EQ(StringListCount(list), 6);

    char **array = StringListToArray(copy);
    ASSERT_NE(array, nullptr);
    EXPECT_STREQ(array[0], "a");
    EXPECT_EQ(array[1], nullptr);
    StringList_s *back = StringListFromArray(array, 3);
    EXPECT_EQ(entries(back), (Strings{"a", "<null>", "c"}));
    for (int i = 0; i < 6; i++) newfree(array[i]);
    newfree(array);

    StringListDealloc(&back);
    StringListDealloc(&copy);
    StringListDealloc(&list);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(StringListNewlines, JoinAndSplit) {
    StringList_s *list = listOf({"one", nullptr, "three"});
    EXPECT_EQ(take(StringListToNLString(list)), "one\n\nthree");
    StringListDealloc(&list);

    StringList_s *empty = StringListAlloc();
    EXPECT_EQ(take(StringListToNLString(empty)), "");
    StringListDealloc(&empty);

    StringList_s *split = StringListFromNLString("a\nb\n");
    EXPECT_EQ(entries(split), (Strings{"a", "b", ""}));
    StringListDealloc(&split);
    split = StringListFromNLString("single");
    EXPECT_EQ(entries(split), (Strings{"single"}));
    StringListDealloc(&split);
    split = StringListFromNLString("");
    EXPECT_EQ(entries(split), (Strings{""}));
    StringListDealloc(&split);
}

TEST(StringListCompound, GroupsJoinedByPlusBecomeOneEntry) {
    StringList_s *list = StringListFromCompound("\"a\"+\"b\" c");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(entries(list), (Strings{"a\nb", "c"}));
    StringListDealloc(&list);

    list = StringListFromCompound("a.plt+b.plt c.plt");
    EXPECT_EQ(entries(list), (Strings{"a.plt\nb.plt", "c.plt"}));
    StringListDealloc(&list);

    // Separators: blanks, tabs, newlines and commas; ";" joins like "+".
    list = StringListFromCompound(" x,\ty\n'z w';v ");
    EXPECT_EQ(entries(list), (Strings{"x", "y", "z w\nv"}));
    StringListDealloc(&list);

    list = StringListFromCompound("");
    EXPECT_EQ(StringListCount(list), 0);
    StringListDealloc(&list);
}

TEST(StringListCompound, QuotesAndEscapesInside) {
    StringList_s *list = StringListFromCompound("\"say \\\"hi\\\"\" 'it''s' \"\"");
    ASSERT_NE(list, nullptr);
    // A backslash before the item's own quote is the quote; the other quote is plain.
    EXPECT_EQ(entries(list), (Strings{"say \"hi\"", "it", "s", ""}));
    StringListDealloc(&list);

    list = StringListFromCompound("'a\\'b' \"c'd\"");
    EXPECT_EQ(entries(list), (Strings{"a'b", "c'd"}));
    StringListDealloc(&list);
}

TEST(StringListCompound, UnclosedQuoteFails) {
    long before = AllocActiveCount();
    EXPECT_EQ(StringListFromCompound("\"a\" \"b"), nullptr);
    EXPECT_EQ(StringListFromCompound("'a\\'"), nullptr);  // the only closing quote is escaped
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(StringListCompound, WritingQuotesLinesAndEscapes) {
    StringList_s *list = listOf({"a\nb", nullptr, "", "say \"x\"", "p$q"});
    // Lines in quotes joined by the group character, entries by one blank, "" for null or
    // empty, one backslash before an inner quote and two before a character to escape.
    EXPECT_EQ(take(StringListToCompound(list, '+', "$")), "\"a\"+\"b\" \"\" \"\" \"say \\\"x\\\"\" \"p\\\\$q\"");
    StringListDealloc(&list);

    list = listOf({nullptr, "x"});
    EXPECT_EQ(take(StringListToCompound(list, ';', nullptr)), "\"\" \"x\"");
    StringListDealloc(&list);

    StringList_s *empty = StringListAlloc();
    EXPECT_EQ(take(StringListToCompound(empty, '+', nullptr)), "");
    StringListDealloc(&empty);
}

TEST(StringListCompound, RoundTripKeepsEntries) {
    StringList_s *list = listOf({"plain", "two\nlines", "with \"quotes\"", "", "a, b; c+d", "it's"});
    for (char join : {'+', ';'}) {
        char *compound = StringListToCompound(list, join, nullptr);
        StringList_s *back = StringListFromCompound(compound);
        newfree(compound);
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(entries(back), entries(list));
        StringListDealloc(&back);
    }
    StringListDealloc(&list);
}

TEST(StringListSort, NullsFirstThenByteOrder) {
    StringList_s *list = listOf({"b", nullptr, "B", "a", nullptr});
    StringListSort(list, nullptr, 0);
    EXPECT_EQ(entries(list), (Strings{"<null>", "<null>", "B", "a", "b"}));
    StringListDealloc(&list);
}

TEST(StringListSort, CustomComparatorWithClientData) {
    StringList_s *list = listOf({"ccc", "a", "bb"});
    int calls = 0;
    StringListSort(
        list,
        [](const char *a, const char *b, ArbParam_t clientData) {
            ++*reinterpret_cast<int *>(clientData);
            return static_cast<int>(strlen(b)) - static_cast<int>(strlen(a));  // longest first
        },
        reinterpret_cast<ArbParam_t>(&calls));
    EXPECT_EQ(entries(list), (Strings{"ccc", "bb", "a"}));
    EXPECT_GT(calls, 0);
    StringListDealloc(&list);
}
