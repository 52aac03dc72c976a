// String helpers: owned-string idioms, FormatString beyond its initial buffer (also from two
// threads), case-blind comparison and matching, line breaking, quoted-string scanning, and the
// number readers with their limits.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/strlist.h"
#include "base/kernel/strutil.h"

namespace {

std::string take(char *s) {
    std::string result = s != nullptr ? s : "<null>";
    newfree(s);
    return result;
}

std::vector<std::string> lines(const char *s, int width) {
    StringList_s *list = LineBreakString(s, width);
    std::vector<std::string> result;
    for (LgIndex_t i = 0; i < StringListCount(list); i++) result.push_back(StringListGetStringRef(list, i));
    StringListDealloc(&list);
    return result;
}

using Strings = std::vector<std::string>;

}  // namespace

TEST(OwnedStrings, DupAndReset) {
    long before = AllocActiveCount();
    EXPECT_EQ(DupString(nullptr), nullptr);
    char *s = nullptr;
    ASSERT_TRUE(InternalResetString(&s, "first", true));
    EXPECT_STREQ(s, "first");
    ASSERT_TRUE(InternalResetString(&s, s + 2, true));  // the new value may lie in the old string
    EXPECT_STREQ(s, "rst");
    ASSERT_TRUE(InternalResetString(&s, nullptr, true));
    EXPECT_EQ(s, nullptr);
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(OwnedStrings, TackOnAppendsExactly) {
    char *s = nullptr;
    ASSERT_TRUE(TackOnConstString(&s, "ab", false));
    ASSERT_TRUE(TackOnConstString(&s, nullptr, false));  // nothing to add is a success
    ASSERT_TRUE(TackOnConstString(&s, "c\nd", true));
    EXPECT_STREQ(s, "abc\\nd");
    char *owned = DupString("!");
    ASSERT_TRUE(TackOnString(&s, owned, true, false));  // frees owned
    ASSERT_TRUE(TackOnChar(&s, '?'));
    EXPECT_STREQ(s, "abc\\nd!?");
    newfree(s);
}

TEST(FormatString, ShortAndLongOutputsAreWhole) {
    EXPECT_EQ(take(FormatString("%d-%s", 42, "x")), "42-x");
    // Lengths around the initial buffer of 49152 bytes, and far beyond it.
    for (size_t length : {49150u, 49151u, 49152u, 49153u, 120000u}) {
        std::string big(length, 'q');
        big[length / 2] = 'M';
        std::string expected = "<" + big + ">7";
        EXPECT_EQ(take(FormatString("<%s>%d", big.c_str(), 7)), expected) << length;
    }
    EXPECT_EQ(take(FormatString("%s", "after growth")), "after growth");
    FormatStringBufferCleanup();
    EXPECT_EQ(take(FormatString("%5.2f", 3.14159)), " 3.14");
    FormatStringBufferCleanup();
}

TEST(FormatString, TwoThreadsGetTheirOwnTexts) {
    auto worker = [](char letter, int *failures) {
        for (int i = 0; i < 200; i++) {
            std::string body(1000 + static_cast<size_t>(i) * 300, letter);
            char *s = FormatString("%s%d", body.c_str(), i);
            if (s == nullptr || body + std::to_string(i) != s) ++*failures;
            newfree(s);
        }
    };
    int failuresA = 0;
    int failuresB = 0;
    std::thread a(worker, 'a', &failuresA);
    std::thread b(worker, 'b', &failuresB);
    a.join();
    b.join();
    EXPECT_EQ(failuresA, 0);
    EXPECT_EQ(failuresB, 0);
    FormatStringBufferCleanup();
}

TEST(CaseBlindCompare, FoldsAsciiLettersAndOrdersNulls) {
    EXPECT_EQ(ustrcmp(nullptr, nullptr), 0);
    EXPECT_LT(ustrcmp(nullptr, ""), 0);
    EXPECT_GT(ustrcmp("", nullptr), 0);
    EXPECT_EQ(ustrcmp("Zone 1", "zONE 1"), 0);
    EXPECT_LT(ustrcmp("a", "B"), 0);  // byte order would put 'B' first
    EXPECT_LT(ustrcmp("z", "_"), 0);  // letters fold to upper case, below '_'
    EXPECT_LT(ustrcmp("ab", "abc"), 0);
    EXPECT_EQ(ustrncmp("abcX", "ABCy", 3), 0);
    EXPECT_NE(ustrncmp("abcX", "ABCy", 4), 0);
    EXPECT_EQ(ustrncmp("ab", "AB", 10), 0);
    EXPECT_LT(ustrncmp(nullptr, "a", 1), 0);

    const char *hay = "Contour Levels";
    EXPECT_EQ(ustrstr(hay, "LEV"), hay + 8);
    EXPECT_EQ(ustrstr(hay, "xyz"), nullptr);
    EXPECT_EQ(ustrstr(hay, nullptr), hay);
}

TEST(MatchKey, StarsPiecesInOrderAndAnchoredStart) {
    EXPECT_TRUE(MatchKey("ContourLevels", "cont*lev"));
    EXPECT_TRUE(MatchKey("ContourLevels", "*LEV"));
    EXPECT_FALSE(MatchKey("ContourLevels", "lev*"));  // without a leading star: at the start
    EXPECT_TRUE(MatchKey("ContourLevels", "contour"));  // the end is not anchored
    EXPECT_TRUE(MatchKey("abc", "*"));
    EXPECT_TRUE(MatchKey("abc", "a**c"));
    EXPECT_FALSE(MatchKey("ab", "*b*a"));  // pieces must appear in order
    EXPECT_FALSE(MatchKey("abc", "abcd"));
    EXPECT_FALSE(MatchKey("abc", "c*x"));
    EXPECT_FALSE(MatchKey("", "*"));
    EXPECT_FALSE(MatchKey("abc", ""));
    EXPECT_FALSE(MatchKey(nullptr, "a"));
    EXPECT_FALSE(MatchKey("a", nullptr));
}

TEST(LineBreak, GreedyFillAtBlanks) {
    EXPECT_EQ(lines("aaa bbb ccc", 7), (Strings{"aaa bbb", "ccc"}));
    EXPECT_EQ(lines("abcde fghij", 5), (Strings{"abcde", "fghij"}));  // a line of exactly width
    EXPECT_EQ(lines("ab   cd", 3), (Strings{"ab", "cd"}));  // blanks at a break vanish
    EXPECT_EQ(lines("short", 60), (Strings{"short"}));
    EXPECT_EQ(lines("", 10), (Strings{""}));
}

TEST(LineBreak, OverLongWordStandsAloneAndNewlinesBreak) {
    EXPECT_EQ(lines("hi abcdefghijkl there", 5), (Strings{"hi", "abcdefghijkl", "there"}));
    EXPECT_EQ(lines("abcdefghijkl", 5), (Strings{"abcdefghijkl"}));
    EXPECT_EQ(lines("ab\ncd ef", 10), (Strings{"ab", "cd ef"}));
    EXPECT_EQ(lines("one two\n\nthree", 3), (Strings{"one", "two", "", "three"}));
    EXPECT_EQ(lines("abc   \nd", 10), (Strings{"abc", "d"}));  // trailing blanks of a line are cut
}

TEST(LineBreak, WrapJoinsLinesButKeepsShortTexts) {
    std::string sixty(60, 'x');
    sixty[10] = ' ';
    EXPECT_EQ(take(WrapString(sixty.c_str(), 60)), sixty);
    EXPECT_EQ(take(WrapString("trailing   ", 60)), "trailing   ");
    EXPECT_EQ(take(WrapString("aaa bbb ccc", 7)), "aaa bbb\nccc");
    std::string words;
    for (int i = 0; i < 13; i++) words += "word ";  // 65 characters with the last blank
    std::string expected;
    for (int i = 0; i < 12; i++) expected += i == 0 ? "word" : " word";
    EXPECT_EQ(take(WrapString(words.c_str(), 60)), expected + "\nword");
}

TEST(ScanForString, QuotesEscapesAndInnerPieces) {
    const char *p = "  \"abc\" rest";
    char *s = nullptr;
    ASSERT_TRUE(ScanForString(&p, &s, false));
    EXPECT_EQ(take(s), "abc");
    EXPECT_STREQ(p, " rest");

    p = "'it''s'";
    ASSERT_TRUE(ScanForString(&p, &s, false));
    EXPECT_EQ(take(s), "it");

    p = R"("a\"b")";
    ASSERT_TRUE(ScanForString(&p, &s, false));
    EXPECT_EQ(take(s), "a\"b");
    p = R"("a\"b")";
    ASSERT_TRUE(ScanForString(&p, &s, true));
    EXPECT_EQ(take(s), R"(a\"b)");

    p = R"("a\\" tail)";  // a doubled backslash stays and does not escape the quote
    ASSERT_TRUE(ScanForString(&p, &s, false));
    EXPECT_EQ(take(s), R"(a\\)");
    EXPECT_STREQ(p, " tail");

    p = R"("'say "hi"'" x)";  // inside the inner piece the outer quote does not close
    ASSERT_TRUE(ScanForString(&p, &s, false));
    EXPECT_EQ(take(s), R"('say "hi"')");
    EXPECT_STREQ(p, " x");

    p = "\"don't\"";
    ASSERT_TRUE(ScanForString(&p, &s, false));
    EXPECT_EQ(take(s), "don't");
}

TEST(ScanForString, NoQuoteOrNoCloseFails) {
    const char *start = "  abc";
    const char *p = start;
    char *s = nullptr;
    EXPECT_FALSE(ScanForString(&p, &s, false));
    EXPECT_EQ(p, start);
    start = "\"abc";
    p = start;
    EXPECT_FALSE(ScanForString(&p, &s, false));
    EXPECT_EQ(p, start);
    start = R"("abc\")";
    p = start;
    EXPECT_FALSE(ScanForString(&p, &s, false));
    EXPECT_EQ(s, nullptr);
}

TEST(Conversions, NewlinesBackslashesAndQuotedLines) {
    char *s = DupString("a\nb\n");
    ASSERT_TRUE(ReplaceNewlineWithBackslashN(&s));
    EXPECT_STREQ(s, "a\\nb\\n");
    ReplaceBackslashNWithNewline(s);
    EXPECT_STREQ(s, "a\nb\n");
    newfree(s);

    EXPECT_EQ(take(EscapeOutDelimitersInString("a,b;c", ",;")), "a\\,b\\;c");

    char *quoted = ConvertNewlineDelimitedStringToQuotedString("one\ntwo \"2\"\n");
    EXPECT_STREQ(quoted, R"("one" "two \"2\"" "")");
    EXPECT_EQ(take(ConvertStringToNewlineDelimitedString(quoted)), "one\ntwo \"2\"\n");
    newfree(quoted);
    EXPECT_EQ(take(ConvertStringToNewlineDelimitedString("'a', \"b\"")), "a\nb");
    EXPECT_EQ(ConvertStringToNewlineDelimitedString("\"a\" bare"), nullptr);
}

TEST(NumberReaders, RealsAndTheirClipping) {
    double value = -1;
    bool clipped = true;
    ASSERT_TRUE(IsAReal("1.5", &value, &clipped));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(clipped);
    ASSERT_TRUE(IsAReal("  -2e3 ", &value, nullptr));
    EXPECT_EQ(value, -2000.0);
    ASSERT_TRUE(IsAReal(".5", &value, nullptr));
    EXPECT_EQ(value, 0.5);
    ASSERT_TRUE(IsAReal("+5.", &value, nullptr));
    EXPECT_EQ(value, 5.0);
    for (const char *bad : {"", " ", "1e", "e5", "abc", "1.2.3", "0x10", "inf", "nan", "1 2", "-", "."}) {
        EXPECT_FALSE(IsAReal(bad, &value, nullptr)) << bad;
    }

    ASSERT_TRUE(IsAReal("1.0E150", &value, &clipped));
    EXPECT_EQ(value, 1.0E150);
    EXPECT_FALSE(clipped);
    ASSERT_TRUE(IsAReal("1e200", &value, &clipped));
    EXPECT_EQ(value, 1.0E150);
    EXPECT_TRUE(clipped);
    ASSERT_TRUE(IsAReal("-1e400", &value, &clipped));
    EXPECT_EQ(value, -1.0E150);
    EXPECT_TRUE(clipped);
    ASSERT_TRUE(IsAReal("1e-200", &value, &clipped));
    EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(clipped);
    ASSERT_TRUE(IsAReal("-1e-400", &value, &clipped));
    EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(clipped);
    ASSERT_TRUE(IsAReal("1e-150", &value, &clipped));
    EXPECT_FALSE(clipped);
    ASSERT_TRUE(IsAReal("0.000", &value, &clipped));
    EXPECT_EQ(value, 0.0);
    EXPECT_FALSE(clipped);
}

TEST(NumberReaders, IndexLimits) {
    LgIndex_t value = 0;
    ASSERT_TRUE(IsALgIndex("2147483646", &value));
    EXPECT_EQ(value, 2147483646);
    EXPECT_FALSE(IsALgIndex("2147483647", &value));
    ASSERT_TRUE(IsALgIndex("-2147483646", &value));
    EXPECT_EQ(value, -2147483646);
    EXPECT_FALSE(IsALgIndex("-2147483647", &value));
    EXPECT_FALSE(IsALgIndex("99999999999999999999", &value));
    ASSERT_TRUE(IsALgIndex("  +12 ", &value));
    EXPECT_EQ(value, 12);
    for (const char *bad : {"", "-", "+", "1.0", "1e3", "12a", "a12", "1 2"}) EXPECT_FALSE(IsALgIndex(bad, &value)) << bad;
}
