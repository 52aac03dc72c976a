// Values with suffixes: recognising suffixes, the error texts, clipping that rewrites the caller's
// text, integer fields, and the unit conversions (checked against factors worked out by hand).
#include <gtest/gtest.h>

#include <string>

#include "base/kernel/alloc.h"
#include "base/kernel/strutil.h"
#include "base/kernel/valparse.h"

namespace {

// One parse of a fresh copy of input; the text as it stands afterwards is kept in text.
struct Parse {
    bool ok = false;
    double value = -999;
    bool hadSuffix = false;
    bool clipped = false;
    const char *error = nullptr;
    std::string text;
    Parse(const char *input, ValueSuffixConverter_pf converter, bool mustBeInteger = false) {
        char *buffer = DupString(input);
        ok = ParseStringForValue(&buffer, &value, mustBeInteger, converter, &hadSuffix, &clipped, &error);
        text = buffer != nullptr ? buffer : "<null>";
        newfree(buffer);
    }
};

// Restores the default unit scales after a test that changes them.
struct ScalesGuard {
    ValueUnitScales_s saved = ValueUnitScales;
    ~ScalesGuard() { ValueUnitScales = saved; }
};

}  // namespace

TEST(ParseSuffix, KnownNamesFollowedByBlankOrEnd) {
    struct Case {
        const char *text;
        int code;
    } cases[] = {{"CM", Suffix_Cm}, {"in", Suffix_In},  {"Pt", Suffix_Pt},      {"PIX", Suffix_Pix},
                 {"pi", Suffix_Pi}, {"PI X", Suffix_Pi}, {"PIXEL", Suffix_Unknown}, {"INCH", Suffix_Unknown},
                 {"MM", Suffix_Unknown}, {"", Suffix_Unknown}};
    for (const Case &c : cases) {
        const char *cursor = c.text;
        EXPECT_EQ(ParseSuffix(&cursor), c.code) << c.text;
    }
    const char *cursor = "cm rest";
    EXPECT_EQ(ParseSuffix(&cursor), Suffix_Cm);
    EXPECT_STREQ(cursor, " rest");
    cursor = "mm";
    ParseSuffix(&cursor);
    EXPECT_STREQ(cursor, "mm");  // an unknown suffix leaves the cursor
    EXPECT_EQ(Suffix_Unknown, 255);
}

TEST(ParseStringForValue, PlainNumbers) {
    Parse p(" 3.25 ", nullptr);
    EXPECT_TRUE(p.ok);
    EXPECT_EQ(p.value, 3.25);
    EXPECT_FALSE(p.hadSuffix);
    EXPECT_FALSE(p.clipped);
    EXPECT_EQ(p.error, nullptr);
    EXPECT_EQ(p.text, " 3.25 ");  // the caller's text is left alone
}

TEST(ParseStringForValue, ErrorTexts) {
    EXPECT_STREQ(Parse("", nullptr).error, "No Value Entered");
    EXPECT_STREQ(Parse("   \t", nullptr).error, "No Value Entered");
    EXPECT_STREQ(Parse("cm", ModifyXValueWithSuffixToInchPaperUnits).error, "No Value Entered");
    EXPECT_STREQ(Parse("2 cm", nullptr).error, "Suffix not allowed");
    EXPECT_STREQ(Parse("2.x5", ModifyXValueWithSuffixToInchPaperUnits).error, "Invalid Value");
    EXPECT_STREQ(Parse("--2", nullptr).error, "Invalid Value");
    EXPECT_STREQ(Parse("2.5", nullptr, true).error, "Invalid Integer Value");
    EXPECT_STREQ(Parse("2147483647", nullptr, true).error, "Invalid Integer Value");
    EXPECT_STREQ(Parse("2 INCHES", ModifyXValueWithSuffixToInchPaperUnits).error, "Invalid Suffix");
    EXPECT_STREQ(Parse("2 pi", ModifyXValueWithSuffixToInchPaperUnits).error, "Invalid Suffix");
    EXPECT_STREQ(Parse("2 cm", MultiplyValueWithPiSuffixByPi).error, "Invalid Suffix");
    EXPECT_FALSE(Parse("2 cm", nullptr).ok);
}

TEST(ParseStringForValue, SuffixIsTheTrailingLetterRun) {
    // "PIX" cut from "PIXELATED" would be a suffix; the whole run is taken, so it isn't.
    EXPECT_STREQ(Parse("2 PIXELATED", ModifyXValueWithSuffixToInchPaperUnits).error, "Invalid Suffix");
    Parse glued("72pt", ModifyXValueWithSuffixToInchPaperUnits);
    EXPECT_TRUE(glued.ok);
    EXPECT_TRUE(glued.hadSuffix);
    EXPECT_DOUBLE_EQ(glued.value, 1.0);
    Parse lower("2.54 cm  ", ModifyXValueWithSuffixToInchPaperUnits);
    EXPECT_TRUE(lower.ok);
    EXPECT_DOUBLE_EQ(lower.value, 1.0);
}

TEST(ParseStringForValue, PixelsCountFromOne) {
    Parse p("2 PIX", ModifyXValueWithSuffixToInchPaperUnits);
    ASSERT_TRUE(p.ok);
    EXPECT_TRUE(p.hadSuffix);
    EXPECT_DOUBLE_EQ(p.value, 1.0 / 96.52);
}

TEST(ParseStringForValue, ClippingRewritesTheText) {
    Parse big("1e200", nullptr);
    EXPECT_TRUE(big.ok);
    EXPECT_TRUE(big.clipped);
    EXPECT_EQ(big.value, 1.0E150);
    EXPECT_EQ(big.text, "1.0E150");
    Parse negative("-3E400", nullptr);
    EXPECT_EQ(negative.value, -1.0E150);
    EXPECT_EQ(negative.text, "-1.0E150");
    Parse tiny("1e-200", nullptr);
    EXPECT_TRUE(tiny.clipped);
    EXPECT_EQ(tiny.value, 0.0);
    EXPECT_EQ(tiny.text, "0.0");
    Parse edge("1.0E150", nullptr);
    EXPECT_FALSE(edge.clipped);
    EXPECT_EQ(edge.text, "1.0E150");
}

TEST(ParseStringForValue, IntegerFields) {
    Parse p("-2147483646", nullptr, true);
    EXPECT_TRUE(p.ok);
    EXPECT_EQ(p.value, -2147483646.0);
    Parse withSuffix("3 pi", MultiplyValueWithPiSuffixByPi, true);
    EXPECT_TRUE(withSuffix.ok);
    EXPECT_DOUBLE_EQ(withSuffix.value, 3 * 3.141592653589793);
}

TEST(SuffixConverters, PaperUnits) {
    // Expected values from the unit definitions: 1 in = 2.54 cm = 72 pt.
    struct Case {
        ValueSuffixConverter_pf convert;
        int suffix;
        double in;
        double out;
    } cases[] = {
        {ModifyXValueWithSuffixToInchPaperUnits, Suffix_Cm, 5.08, 2.0},
        {ModifyYValueWithSuffixToInchPaperUnits, Suffix_Pt, 36.0, 0.5},
        {ModifyXValueWithSuffixToInchPaperUnits, Suffix_In, 3.0, 3.0},
        {ModifyXValueWithSuffixToCmPaperUnits, Suffix_In, 2.0, 5.08},
        {ModifyYValueWithSuffixToCmPaperUnits, Suffix_Pt, 72.0, 2.54},
        {ModifyXValueWithSuffixToCmPaperUnits, Suffix_Cm, 7.0, 7.0},
        {ModifyXValueWithSuffixToPointPaperUnits, Suffix_Cm, 2.54, 72.0},
        {ModifyYValueWithSuffixToPointPaperUnits, Suffix_In, 0.5, 36.0},
        {ModifyXValueWithSuffixToPointPaperUnits, Suffix_Pix, 97.52, 72.0},
        {ModifyXValueWithSuffixToCmPaperUnits, Suffix_Pix, 97.52, 2.54},
    };
    for (const Case &c : cases) {
        double value = c.in;
        ASSERT_TRUE(c.convert(&value, c.suffix)) << c.suffix;
        EXPECT_NEAR(value, c.out, 1e-12) << c.suffix << " " << c.in;
    }
    for (ValueSuffixConverter_pf convert : {ModifyXValueWithSuffixToInchPaperUnits, ModifyXValueWithSuffixToCmPaperUnits,
                                            ModifyYValueWithSuffixToPointPaperUnits}) {
        double value = 1.0;
        EXPECT_FALSE(convert(&value, Suffix_Pi));
        EXPECT_FALSE(convert(&value, Suffix_Unknown));
    }
}

TEST(SuffixConverters, FrameUnitsScaleAndTurnY) {
    ScalesGuard guard;
    ValueUnitScales.PaperToFrameScale = 0.5;
    ValueUnitScales.FrameScale = 3.0;
    double x = 2.54;
    ASSERT_TRUE(ModifyXValueWithSuffixToFrameUnits(&x, Suffix_Cm));
    EXPECT_NEAR(x, 1.5, 1e-12);
    double y = 2.54;
    ASSERT_TRUE(ModifyYValueWithSuffixToFrameUnits(&y, Suffix_Cm));
    EXPECT_NEAR(y, -1.5, 1e-12);
    ValueUnitScales.PaperDotsPerInch = 100.0;
    double pixels = 51.0;  // 50 dots past the origin: half an inch
    ASSERT_TRUE(ModifyXValueWithSuffixToFrameUnits(&pixels, Suffix_Pix));
    EXPECT_NEAR(pixels, 0.75, 1e-12);
    double pi = 1.0;
    EXPECT_FALSE(ModifyYValueWithSuffixToFrameUnits(&pi, Suffix_Pi));
}

TEST(SuffixConverters, PiOnlyTakesThePiSuffix) {
    double value = 2.0;
    ASSERT_TRUE(MultiplyValueWithPiSuffixByPi(&value, Suffix_Pi));
    EXPECT_DOUBLE_EQ(value, 6.283185307179586);
    for (int suffix : {Suffix_Cm, Suffix_In, Suffix_Pt, Suffix_Pix, Suffix_Unknown}) {
        double other = 2.0;
        EXPECT_FALSE(MultiplyValueWithPiSuffixByPi(&other, suffix));
        EXPECT_EQ(other, 2.0);
    }
}

TEST(ParseStringForValue, OptionalOutParametersAndMissingText) {
    char *buffer = DupString("1e300");
    double value = 0;
    EXPECT_TRUE(ParseStringForValue(&buffer, &value, false, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(value, 1.0E150);
    EXPECT_STREQ(buffer, "1.0E150");
    newfree(buffer);
    char *none = nullptr;
    const char *error = nullptr;
    EXPECT_FALSE(ParseStringForValue(&none, &value, false, nullptr, nullptr, nullptr, &error));
    EXPECT_STREQ(error, "No Value Entered");
}
