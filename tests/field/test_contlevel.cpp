// Contour levels: nice steps and starts worked out by hand from the rules (snap, finer candidate,
// the 0.0001 allowance, the count, the choice nearer the asked-for number), the generators by
// step, count and exponent, the level operations and their refusals, resets over a variable's
// range and the work that follows a new contour variable; the multi-colour codes; and the colour
// of a value: bands (a value on a level belongs to the band below), cycles, reversal, cut-off,
// overrides, zebra, continuous colouring with and without the control-point segments.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "base/field/colormap.h"
#include "base/field/contlevel.h"
#include "base/field/setup.h"
#include "base/kernel/genbase.h"
#include "base/plot/devtypes.h"
#include "base/plot/framestyle.h"
#include "data/data_fixture.h"

namespace {

struct Nice {
    double Start, Delta;
    int Count;
};

Nice nice(double min, double max, int approx, int maxCount = 400) {
    Nice n{};
    GetNiceRangeMinAndDelta(min, max, approx, &n.Start, &n.Delta, &n.Count, maxCount);
    return n;
}

TEST(NiceLevels, SnapsStepsToOneTwoFiveTen) {
    EXPECT_EQ(SnapToNiceDelta(1.0), 1.0);
    EXPECT_EQ(SnapToNiceDelta(1.49), 1.0);
    EXPECT_EQ(SnapToNiceDelta(1.5), 2.0);
    EXPECT_EQ(SnapToNiceDelta(3.0), 2.0);
    EXPECT_EQ(SnapToNiceDelta(3.01), 5.0);
    EXPECT_EQ(SnapToNiceDelta(7.0), 5.0);
    EXPECT_EQ(SnapToNiceDelta(7.01), 10.0);
}

TEST(NiceLevels, SnapsTinyValuesToZeroOnlyAgainstAPositiveStep) {
    EXPECT_EQ(CheckToSnapNiceNumberToZero(5e-6, 1.0), 0.0);
    EXPECT_EQ(CheckToSnapNiceNumberToZero(-5e-6, 1.0), 0.0);
    // 5e-6 / 0.1 = 5e-5 is not below 1e-5.
    EXPECT_EQ(CheckToSnapNiceNumberToZero(5e-6, 0.1), 5e-6);
    EXPECT_EQ(CheckToSnapNiceNumberToZero(2e-5, 1e6), 2e-5);
    EXPECT_EQ(CheckToSnapNiceNumberToZero(5e-6, 0.0), 5e-6);
}

TEST(NiceLevels, WorkedCases) {
    // 0..10 about 10: step 1 (10/10 = 1); 0 to 10 is 11 levels; the finer 0.5 gives 21, farther.
    Nice a = nice(0, 10, 10);
    EXPECT_EQ(a.Start, 0.0);
    EXPECT_EQ(a.Delta, 1.0);
    EXPECT_EQ(a.Count, 11);
    // 0..1 about 4: 0.25 snaps to 0.2, giving 5 steps > 4; 1/3 snaps to 0.5. Counts: 0.5 -> 3,
    // finer 0.2 -> trunc(1.0001/0.2)+1 = 6; 3 is nearer 4.
    Nice b = nice(0, 1, 4);
    EXPECT_EQ(b.Start, 0.0);
    EXPECT_EQ(b.Delta, 0.5);
    EXPECT_EQ(b.Count, 3);
    // 0..1 about 9: 1/9, 1/8, 1/7 snap to 0.1 (10 steps > 9); 1/6 snaps to 0.2. Coarse 0.2 gives 6
    // levels (3 from 9), the finer 0.1 gives 11 (2 from 9): the finer wins...
    Nice c = nice(0, 1, 9);
    EXPECT_EQ(c.Delta, 0.1);
    EXPECT_EQ(c.Count, 11);
    // ...unless it has more than the most allowed.
    Nice d = nice(0, 1, 9, 10);
    EXPECT_EQ(d.Delta, 0.2);
    EXPECT_EQ(d.Count, 6);
    // -3.7..12.2 about 5: 15.9/5 = 3.18 snaps to 5. The start is the smallest multiple of 5 not
    // below -3.7 - 0.00159: 0; count trunc(12.20159/5)+1 = 3. The finer 2 starts at -2 with 8.
    Nice e = nice(-3.7, 12.2, 5);
    EXPECT_EQ(e.Start, 0.0);
    EXPECT_EQ(e.Delta, 5.0);
    EXPECT_EQ(e.Count, 3);
    // A start just below a multiple: -0.99995 lies within 0.0001 x 2 of -1, so -1 is allowed.
    Nice f = nice(-0.99995, 1.00005, 2);
    EXPECT_EQ(f.Start, -1.0);
    EXPECT_EQ(f.Delta, 1.0);
    EXPECT_EQ(f.Count, 3);
}

TEST(NiceLevels, EmptyRangeAndHugeOffsets) {
    // No range: steps 1 and 0.5; from 3.3 the first multiple of 1 is 4, and both counts are 1.
    Nice a = nice(3.3, 3.3, 10);
    EXPECT_EQ(a.Delta, 1.0);
    EXPECT_EQ(a.Count, 1);
    EXPECT_EQ(a.Start, 4.0);
    // min/delta beyond 1e7: the start is min itself.
    Nice b = nice(1e8 + 0.3, 1e8 + 10.3, 10);
    EXPECT_EQ(b.Delta, 1.0);
    EXPECT_EQ(b.Start, 1e8 + 0.3);
    EXPECT_EQ(b.Count, 11);
}

TEST(LevelGenerators, ByStepCountAndExponent) {
    std::vector<double> levels;
    int n = 0;
    ASSERT_TRUE(GetMinMaxDeltaContourLevels(0, 1, 0.25, &n, &levels));
    EXPECT_EQ(n, 5);
    EXPECT_EQ(levels, (std::vector<double>{0, 0.25, 0.5, 0.75, 1}));
    // 1/0.3 = 3.33: trunc(3.33 x 1.000001) + 1 = 4 levels, each min + i x delta.
    ASSERT_TRUE(GetMinMaxDeltaContourLevels(0, 1, 0.3, &n, &levels));
    ASSERT_EQ(n, 4);
    for (int i = 0; i < 4; i++) EXPECT_EQ(levels[size_t(i)], i * 0.3);
    ASSERT_TRUE(GetMinMaxNumContourLevels(2, 4, 5, &levels));
    EXPECT_EQ(levels, (std::vector<double>{2, 2.5, 3, 3.5, 4}));
    ASSERT_TRUE(GetMinMaxNumContourLevels(2, 4, 1, &levels));
    EXPECT_EQ(levels, (std::vector<double>{2}));
    ASSERT_TRUE(GetMinMaxExpContourLevels(1, 1000, 4, &levels));
    ASSERT_EQ(levels.size(), 4u);
    const double powers[4] = {1, 10, 100, 1000};
    for (int i = 0; i < 4; i++) EXPECT_NEAR(levels[size_t(i)], powers[i], powers[i] * 1e-12);
}

TEST(LevelGenerators, RefuseBadRanges) {
    std::vector<double> levels;
    int n = 0;
    int most = MaxNumContourLevels();
    struct Case {
        bool (*call)(std::vector<double> *, int *, int);
        const char *message;
    };
    const Case cases[] = {
        {[](std::vector<double> *l, int *c, int) { return GetMinMaxDeltaContourLevels(1, 0, 0.1, c, l); },
         "Invalid value for Min, Max or Delta"},
        {[](std::vector<double> *l, int *c, int) { return GetMinMaxDeltaContourLevels(0, 1, 0.0, c, l); },
         "Invalid value for Min, Max or Delta"},
        {[](std::vector<double> *l, int *c, int m) { return GetMinMaxDeltaContourLevels(0, m + 1, 1.0, c, l); },
         "Invalid value for Min, Max or Delta"},
        {[](std::vector<double> *l, int *, int) { return GetMinMaxNumContourLevels(1, 0, 3, l); },
         "Invalid value for Min, Max or NumLevels"},
        {[](std::vector<double> *l, int *, int) { return GetMinMaxNumContourLevels(0, 1, 0, l); },
         "Invalid value for Min, Max or NumLevels"},
        {[](std::vector<double> *l, int *, int m) { return GetMinMaxNumContourLevels(0, 1, m + 1, l); },
         "Invalid value for Min, Max or NumLevels"},
        {[](std::vector<double> *l, int *, int) { return GetMinMaxExpContourLevels(0, 1, 3, l); },
         "Invalid value for Min, Max or NumLevels"},
        {[](std::vector<double> *l, int *, int) { return GetMinMaxExpContourLevels(-1, 1, 3, l); },
         "Invalid value for Min, Max or NumLevels"},
    };
    for (const Case &c : cases) {
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(c.call(&levels, &n, most));
        std::string err = ::testing::internal::GetCapturedStderr();
        EXPECT_TRUE(HoldsMessage(err, c.message)) << err;
    }
    // A step that fits exactly is allowed.
    EXPECT_TRUE(GetMinMaxDeltaContourLevels(0, most, 1.0, &n, &levels));
}

TEST(MultiColorCodes, TranslateBetweenGroupsCodesAndColorings) {
    const int codes[4] = {-1, -3, -4, -5};
    for (int group = 0; group < 4; group++) {
        EXPECT_EQ(GetMultiColorFromContourGroup(group), codes[group]);
        EXPECT_EQ(GetContourGroupFromMultiColor(codes[group]), group);
        EXPECT_EQ(GetContourGroupFromMultiColor(65536 + codes[group]), group);  // as a 16-bit field
        EXPECT_EQ(GetContourColoringFromContourGroup(group), group + 1);
        EXPECT_EQ(GetContourGroupFromContourColoring(group + 1), group);
        EXPECT_EQ(GetMultiColorFromContourColoring(group + 1), codes[group]);
        EXPECT_EQ(GetContourColoringFromMultiColor(codes[group]), group + 1);
        EXPECT_EQ(GetContourGroupForVaryingColor(codes[group]), group);
    }
    EXPECT_EQ(GetMultiColorFromContourColoring(0), -6);
    EXPECT_EQ(GetContourColoringFromMultiColor(65530), 0);
    EXPECT_EQ(GetContourGroupFromMultiColor(-6), -1);
    EXPECT_EQ(GetContourGroupFromMultiColor(-2), -1);
    EXPECT_EQ(GetContourGroupFromMultiColor(3), -1);
    EXPECT_EQ(GetMultiColorFromContourGroup(4), -255);
    EXPECT_EQ(GetContourColoringFromContourGroup(-1), 255);
    EXPECT_EQ(GetContourColoringFromMultiColor(-2), 255);
    EXPECT_EQ(GetContourGroupFromContourColoring(0), -1);
    EXPECT_EQ(GetMultiColorFromContourColoring(255), -255);
    EXPECT_EQ(GetContourGroupForVaryingColor(5), -1);
}

// A frame whose variable 3 (index 2) runs over 0, 2, ..., 10 on one 3 x 2 zone.
class ContourLevelsTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        savedBase = GeneralBase;
        makeDataSet(3, 1);
        setValues(0, 2, {0, 2, 4, 6, 8, 10});
    }
    void TearDown() override {
        GeneralBase = savedBase;
        DataSetTest::TearDown();
    }
    GlobalContour_s &contour(int group = 0) { return CurFrame->Style.GlobalContour[group]; }
    std::vector<double> &levels(int group = 0) { return contour(group).Levels; }
    bool set(ContourLevelAction_e action, std::vector<double> values, double min = 0, double max = 0, int n = 0) {
        return SetContourLevels(action, 0, min, max, values.empty() ? n : int(values.size()), values.data());
    }
    GeneralBase_s savedBase;
};

TEST_F(ContourLevelsTest, NewAndAddKeepLevelsSortedAndDistinct) {
    ASSERT_TRUE(set(ContourLevelAction_New, {3, 1, 2, 2}));
    EXPECT_EQ(levels(), (std::vector<double>{1, 2, 3}));
    ASSERT_TRUE(set(ContourLevelAction_Add, {2.5, 0.5}));
    EXPECT_EQ(levels(), (std::vector<double>{0.5, 1, 2, 2.5, 3}));
    // A level equal to one there changes nothing.
    ASSERT_TRUE(set(ContourLevelAction_Add, {2}));
    EXPECT_EQ(levels(), (std::vector<double>{0.5, 1, 2, 2.5, 3}));
    ASSERT_TRUE(set(ContourLevelAction_New, {7}));
    EXPECT_EQ(levels(), (std::vector<double>{7}));
    EXPECT_FALSE(set(ContourLevelAction_Add, {}, 0, 0, 0));
    EXPECT_EQ(levels(), (std::vector<double>{7}));
}

TEST_F(ContourLevelsTest, MoreLevelsThanTheLimitAreRefusedWithTheLevelsKept) {
    int most = MaxNumContourLevels();
    std::vector<double> full;
    for (int i = 0; i < most; i++) full.push_back(i);
    ASSERT_TRUE(set(ContourLevelAction_New, full));
    std::string err = messagesOf([&] { EXPECT_FALSE(set(ContourLevelAction_Add, {most + 0.5})); });
    EXPECT_TRUE(HoldsMessage(err, "Too many contour levels.  The limit is " + std::to_string(most) + ".")) << err;
    EXPECT_EQ(levels(), full);
    // A duplicate is no new level, so the list at the limit takes it.
    EXPECT_TRUE(set(ContourLevelAction_Add, {3}));
    full.push_back(most);
    err = messagesOf([&] { EXPECT_FALSE(set(ContourLevelAction_New, full)); });
    EXPECT_TRUE(HoldsMessage(err, "Too many contour levels.")) << err;
    EXPECT_EQ(int(levels().size()), most);
}

TEST_F(ContourLevelsTest, DeleteRangeAndNearest) {
    ASSERT_TRUE(set(ContourLevelAction_New, {1, 2, 2.5, 3, 4}));
    // Both ends included.
    ASSERT_TRUE(set(ContourLevelAction_DeleteRange, {}, 2, 3));
    EXPECT_EQ(levels(), (std::vector<double>{1, 4}));
    // An empty range changes nothing.
    ASSERT_TRUE(set(ContourLevelAction_DeleteRange, {}, 1.5, 3.5));
    EXPECT_EQ(levels(), (std::vector<double>{1, 4}));
    ASSERT_TRUE(set(ContourLevelAction_New, {1, 2, 2.5, 3}));
    ASSERT_TRUE(set(ContourLevelAction_DeleteNearest, {}, 2.2));  // 2 is 0.2 away, 2.5 is 0.3
    EXPECT_EQ(levels(), (std::vector<double>{1, 2.5, 3}));
    ASSERT_TRUE(set(ContourLevelAction_DeleteNearest, {}, 2.75));  // a tie: the first goes
    EXPECT_EQ(levels(), (std::vector<double>{1, 3}));
    ASSERT_TRUE(set(ContourLevelAction_DeleteRange, {}, -100, 100));
    EXPECT_TRUE(levels().empty());
    for (ContourLevelAction_e action : {ContourLevelAction_DeleteRange, ContourLevelAction_DeleteNearest}) {
        std::string err = messagesOf([&] { EXPECT_FALSE(set(action, {}, 0, 1)); });
        EXPECT_TRUE(HoldsMessage(err, "No contour levels to delete")) << err;
    }
    // With no levels, a reset that keeps the count does nothing.
    contour().Var = 2;
    EXPECT_TRUE(set(ContourLevelAction_Reset, {}, 0, 0, 0));
    EXPECT_TRUE(levels().empty());
}

TEST_F(ContourLevelsTest, ResetsOverTheVariablesRange) {
    contour().Var = 2;
    // Plain: (10 - 0)/(N + 1) apart, starting one step in.
    ASSERT_TRUE(set(ContourLevelAction_Reset, {}, 0, 0, 4));
    EXPECT_EQ(levels(), (std::vector<double>{2, 4, 6, 8}));
    EXPECT_EQ(contour().DefNumLevels, 4);
    // Each level is min + (i+1) x delta, not a running sum.
    ASSERT_TRUE(set(ContourLevelAction_Reset, {}, 0, 0, 9));
    ASSERT_EQ(levels().size(), 9u);
    for (int i = 0; i < 9; i++) EXPECT_EQ(levels()[size_t(i)], 0 + (i + 1) * (10.0 / 10));
    // N = 0 keeps the count.
    ASSERT_TRUE(set(ContourLevelAction_New, {1, 2, 3}));
    ASSERT_TRUE(set(ContourLevelAction_Reset, {}, 0, 0, 0));
    EXPECT_EQ(levels(), (std::vector<double>{2.5, 5, 7.5}));
    // One level: the middle.
    ASSERT_TRUE(set(ContourLevelAction_Reset, {}, 0, 0, 1));
    EXPECT_EQ(levels(), (std::vector<double>{5}));
    // Nice, about 10: border 10 x 0.25/11 = 0.227; 0.227..9.773 has step 1 from 1 (9 levels,
    // nearer 10 than the 19 of step 0.5).
    ASSERT_TRUE(set(ContourLevelAction_ResetToNice, {}, 0, 0, 10));
    EXPECT_EQ(levels(), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(contour().DefNumLevels, 10);
    // Without a variable there is no range: nothing changes.
    contour().Var = -1;
    EXPECT_FALSE(set(ContourLevelAction_Reset, {}, 0, 0, 3));
    EXPECT_EQ(levels(), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(ContourLevelsTest, ANewVariableResetsLevelsCutoffContinuousRangeAndIsoValues) {
    contour().DefNumLevels = 4;
    contour().Legend.LabelIncrement = 0.001;
    ASSERT_TRUE(UpdateFlagsAndMarkFrameForNewContourVar(0, 2));
    EXPECT_EQ(contour().Var, 2);
    EXPECT_EQ(levels(), (std::vector<double>{2, 4, 6, 8}));
    EXPECT_EQ(contour().ColorCutoff.RangeMin, 2.5);  // (3 x 0 + 10)/4
    EXPECT_EQ(contour().ColorCutoff.RangeMax, 7.5);
    EXPECT_EQ(contour().ColorMapFilter.CMin, 0.0);
    EXPECT_EQ(contour().ColorMapFilter.CMax, 10.0);
    // The legend increment was below (10 - 0)/500 and becomes a tenth of the range.
    EXPECT_EQ(contour().Legend.LabelIncrement, 1.0);
    for (const IsoSurfaceAttributes_s &iso : CurFrame->Style.IsoSurfaceAttributes) {
        if (iso.DefinitionContourGroup != 0) continue;
        EXPECT_EQ(iso.IsoValue1, 2.5);
        EXPECT_EQ(iso.IsoValue2, 5.0);
        EXPECT_EQ(iso.IsoValue3, 7.5);
    }
    // The same variable again keeps the count of levels.
    ASSERT_TRUE(set(ContourLevelAction_New, {1, 9}));
    ASSERT_TRUE(UpdateFlagsAndMarkFrameForNewContourVar(0, 2));
    EXPECT_EQ(levels(), (std::vector<double>{10.0 / 3, 2 * (10.0 / 3)}));
    // A variable that does not exist: nothing changes.
    EXPECT_FALSE(UpdateFlagsAndMarkFrameForNewContourVar(0, 7));
    EXPECT_EQ(contour().Var, 2);
    EXPECT_EQ(levels().size(), 2u);
}

// ---- value to colour ------------------------------------------------------------------------

class MultiColorTest : public ContourLevelsTest {
  protected:
    void SetUp() override {
        ContourLevelsTest::SetUp();
        ASSERT_EQ(MaxNumContourLevels(), 400);  // the hand-worked indices below
        levels() = {1, 2, 3};
    }
    ColorMapFilter_s &filter() { return contour().ColorMapFilter; }
    static int ramp(int index) { return FirstContourColorIndex + index; }
};

TEST_F(MultiColorTest, BandsByLevelWithCyclesAndReversal) {
    // Band L runs above level L-1 up to level L; index trunc(L/3 x (401 c - 1) + 0.499) mod 401.
    EXPECT_EQ(GetMultiColor(0, 0.5), ramp(0));
    EXPECT_EQ(GetMultiColor(0, 1.0), ramp(0));  // on a level: the band below
    EXPECT_EQ(GetMultiColor(0, 1.0001), ramp(133));  // 400/3 = 133.33
    EXPECT_EQ(GetMultiColor(0, 2.0), ramp(133));
    EXPECT_EQ(GetMultiColor(0, 2.5), ramp(267));  // 266.67
    EXPECT_EQ(GetMultiColor(0, 3.0), ramp(267));
    EXPECT_EQ(GetMultiColor(0, 3.5), ramp(400));  // above the last level: the top
    // The last band below the top stays below it; L = NumLevels is the top.
    EXPECT_LT(GetMultiColorFromContourLevel(0, 2, false), ramp(400));
    EXPECT_EQ(GetMultiColorFromContourLevel(0, 3, false), ramp(400));
    filter().ColorMapCycles = 2;  // 2 x 401 - 1 = 801: 801/3 = 267, 2 x 801/3 = 534 mod 401 = 133
    EXPECT_EQ(GetMultiColor(0, 1.5), ramp(267));
    EXPECT_EQ(GetMultiColor(0, 2.5), ramp(133));
    EXPECT_EQ(GetMultiColor(0, 9.0), ramp(400));
    filter().ColorMapCycles = 1;
    filter().ReverseColorMap = true;
    EXPECT_EQ(GetMultiColor(0, 0.0), ramp(400));
    EXPECT_EQ(GetMultiColor(0, 1.5), ramp(400 - 133));
    EXPECT_EQ(GetMultiColor(0, 9.0), ramp(0));
}

TEST_F(MultiColorTest, CutoffOverridesAndZebra) {
    ColorCutoff_s &cutoff = contour().ColorCutoff;
    cutoff.RangeMin = 1.5;
    cutoff.RangeMax = 2.5;
    // Off: values outside pass.
    EXPECT_EQ(GetMultiColor(0, 1.2), ramp(133));
    cutoff.IncludeMin = true;
    EXPECT_EQ(GetMultiColor(0, 1.2), NoColor);
    EXPECT_EQ(GetMultiColor(0, 1.5), ramp(133));
    EXPECT_EQ(GetMultiColorIgnoringColorCutOff(0, 1.2), ramp(133));
    EXPECT_EQ(GetMultiColor(0, 2.7), ramp(267));
    cutoff.IncludeMax = true;
    EXPECT_EQ(GetMultiColor(0, 2.7), NoColor);
    // By level: the level's own value is tested when asked.
    EXPECT_EQ(GetMultiColorFromContourLevel(0, 0, true), NoColor);  // level 1 < 1.5
    EXPECT_EQ(GetMultiColorFromContourLevel(0, 1, true), ramp(133));  // level 2 inside
    EXPECT_EQ(GetMultiColorFromContourLevel(0, 0, false), ramp(0));
    cutoff.IncludeMin = cutoff.IncludeMax = false;
    // Override 1 from level 1 to level 2 (stored from 0): band 1 only.
    filter().ColorMapOverrideActive = true;
    filter().ColorMapOverride[0] = ColorMapOverride_s{true, 5, 0, 1};
    filter().ColorMapOverride[1] = ColorMapOverride_s{true, 6, 0, 3};
    EXPECT_EQ(GetMultiColor(0, 0.5), ramp(0));
    EXPECT_EQ(GetMultiColor(0, 1.5), 5);
    EXPECT_EQ(GetMultiColor(0, 2.5), 6);  // the first one that applies
    filter().ColorMapOverride[0].Include = false;
    EXPECT_EQ(GetMultiColor(0, 1.5), 6);
    filter().ColorMapOverrideActive = false;
    // Zebra: even bands.
    filter().Zebra = Zebra_s{true, false, 3};
    EXPECT_EQ(GetMultiColor(0, 0.5), 3);
    EXPECT_EQ(GetMultiColor(0, 1.5), ramp(133));
    EXPECT_EQ(GetMultiColor(0, 2.5), 3);
    filter().Zebra.IsTransparent = true;
    EXPECT_EQ(GetMultiColor(0, 2.5), NoColor);
}

TEST_F(MultiColorTest, ContinuousColouring) {
    filter().ColorMapDistribution = 0;
    filter().CMin = 0;
    filter().CMax = 10;
    filter().UseFastApproxContinuousFlood = true;
    EXPECT_EQ(GetMultiColor(0, -1), ramp(0));
    EXPECT_EQ(GetMultiColor(0, 0), ramp(0));
    EXPECT_EQ(GetMultiColor(0, 10), ramp(400));
    EXPECT_EQ(GetMultiColor(0, 2.5), ramp(100));
    EXPECT_EQ(GetMultiColor(0, 3.3), ramp(132));  // 132 + 0.499
    filter().ColorMapCycles = 2;
    EXPECT_EQ(GetMultiColor(0, 7.5), ramp(200));  // x = 1.5 -> 0.5
    filter().ColorMapCycles = 1;
    filter().ReverseColorMap = true;
    EXPECT_EQ(GetMultiColor(0, 2.5), ramp(300));
    EXPECT_EQ(GetMultiColor(0, 12), ramp(0));
}

TEST_F(MultiColorTest, ContinuousColouringKeepsControlPointSegments) {
    filter().ColorMapDistribution = 0;
    filter().CMin = 0;
    filter().CMax = 10;
    GeneralBase.LinkColorMaps = true;
    GeneralBase.ColorMapGroups[0].ContourColorMap = ContourColorMap_Modern;  // points at i/7
    const double point1 = (1.0 / 7.0) * 10;  // ramp index round(400/7) = 57
    filter().UseFastApproxContinuousFlood = false;
    EXPECT_EQ(GetMultiColor(0, point1 + 1e-9), ramp(57));  // the next segment from its start
    EXPECT_EQ(GetMultiColor(0, point1), ramp(56));         // on the point: the segment below
    EXPECT_EQ(GetMultiColor(0, point1 - 1e-9), ramp(56));
    filter().UseFastApproxContinuousFlood = true;
    EXPECT_EQ(GetMultiColor(0, point1 - 1e-9), ramp(57));
    // Maps without control points keep the index within [0, M - 1] below the top.
    GeneralBase.ColorMapGroups[0].ContourColorMap = ContourColorMap_Wild;
    filter().UseFastApproxContinuousFlood = false;
    EXPECT_EQ(GetMultiColor(0, 9.9999), ramp(399));
    EXPECT_EQ(GetMultiColor(0, 10), ramp(400));
    filter().UseFastApproxContinuousFlood = true;
    EXPECT_EQ(GetMultiColor(0, 9.9999), ramp(400));
}

TEST_F(MultiColorTest, IsoSurfaceColours) {
    IsoSurfaceAttributes_s &iso = CurFrame->Style.IsoSurfaceAttributes[0];
    iso.DefinitionContourGroup = 0;
    iso.IsoSurfaceSelection = 1;  // ONESPECIFICVALUE
    iso.IsoValue1 = 1.5;
    EXPECT_EQ(GetIsoSurfaceColor(0, 4, 0), 4);                       // a plain colour stays
    EXPECT_EQ(GetIsoSurfaceColor(0, MultiColor_Group2, 0), MultiColor_Group2);  // another group stays
    EXPECT_EQ(GetIsoSurfaceColor(0, MultiColor_Group1, 0), ramp(133));
    iso.IsoSurfaceSelection = 0;  // ALLCONTOURLEVELS, banded: the level's band with the cut-off
    EXPECT_EQ(GetIsoSurfaceColor(2, MultiColor_Group1, 0), ramp(267));
    contour().ColorCutoff = ColorCutoff_s{1.5, 2.5, true, false};
    EXPECT_EQ(GetIsoSurfaceColor(0, MultiColor_Group1, 0), NoColor);
}

// ---- RGB colouring ----------------------------------------------------------------------------

bool sameRGB(const RGB_s &rgb, int r, int g, int b) { return rgb.R == r && rgb.G == g && rgb.B == b; }

TEST(RGBColoring, ChannelsFromValuesAndTheThirdChannel) {
    // x 255 + 0.499, truncated, clamped.
    EXPECT_TRUE(sameRGB(RGBColorFromValues(0, 0.5, 0, 1, 0, 1), 127, 0, 255));
    EXPECT_TRUE(sameRGB(RGBColorFromValues(0, 2, -1, 0.2, 0, 1), 255, 0, 51));
    EXPECT_TRUE(sameRGB(RGBColorFromValues(0, 15, 10, 20, 10, 20), 127, 0, 255));
    // Two channels given: the third is 255 less their sum.
    EXPECT_TRUE(sameRGB(RGBColorFromValues(1, 0.2, 0.4, 99, 0, 1), 51, 102, 102));
    EXPECT_TRUE(sameRGB(RGBColorFromValues(2, 0.2, 99, 0.4, 0, 1), 51, 102, 102));
    EXPECT_TRUE(sameRGB(RGBColorFromValues(3, 99, 0.2, 0.4, 0, 1), 102, 51, 102));
    // Past 255: 255 + 153 is 153 too many; 76 comes off the smaller, the larger is 255 - 77.
    EXPECT_TRUE(sameRGB(RGBColorFromValues(1, 1.0, 0.6, 0, 0, 1), 178, 77, 0));
    EXPECT_TRUE(sameRGB(RGBColorFromValues(3, 0, 0.6, 1.0, 0, 1), 0, 77, 178));
    EXPECT_TRUE(sameRGB(RGBColorFromValues(2, 1.0, 0, 1.0, 0, 1), 128, 0, 127));
}

TEST_F(ContourLevelsTest, RGBColoursOfPointsAndBetweenThem) {
    setValues(0, 0, {0, 1, 0.5, 0, 0, 0});
    setValues(0, 1, {1, 0, 0.5, 0, 0, 0});
    setValues(0, 2, {0.2, 0.2, 0.2, 0.2, 0.2, 0.2});
    CZData_s data{};
    for (int c = 0; c < 3; c++) data.Nodal[CZVar_R + c] = GetReadableNativeFieldDataPtr(dataSet(), 0, EntIndex_t(c));
    RGB_s rgb{};
    ASSERT_TRUE(GetRGBColorAtPointIndex(&data, 0, &rgb));
    EXPECT_TRUE(sameRGB(rgb, 0, 255, 51));
    ASSERT_TRUE(GetRGBColorAtIndex(&data, 2, true, &rgb));
    EXPECT_TRUE(sameRGB(rgb, 127, 127, 51));
    const LgIndex_t pair[2] = {0, 1};
    ASSERT_TRUE(GetAveragedRGBColorAtPointIndices(&data, 2, pair, &rgb));
    EXPECT_TRUE(sameRGB(rgb, 127, 127, 51));  // 127.5 -> 127
    ASSERT_TRUE(GetRGBColorAtIndexFract(&data, 0, 1, 0.25, &rgb));
    EXPECT_TRUE(sameRGB(rgb, 64, 191, 51));  // 63.75 and 191.25, + 0.499
    EXPECT_FALSE(GetRGBColorAtCellIndex(&data, 0, &rgb));  // no cell-centred tables
    // Red and green given: blue is not read.
    data.Nodal[CZVar_B] = nullptr;
    EXPECT_FALSE(GetRGBColorAtPointIndex(&data, 0, &rgb));
    CurFrame->Style.GlobalRGB.RGBMode = 1;
    ASSERT_TRUE(GetRGBColorAtPointIndex(&data, 0, &rgb));
    EXPECT_TRUE(sameRGB(rgb, 0, 255, 0));
    CurFrame->Style.GlobalRGB.RangeMax = 2;
    ASSERT_TRUE(GetRGBColorAtPointIndex(&data, 1, &rgb));
    EXPECT_TRUE(sameRGB(rgb, 127, 0, 128));
}

}  // namespace
