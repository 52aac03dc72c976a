// Colour maps: the ramp of every built-in map against one worked out here in exact integer
// arithmetic from the maps' control points (each point on index round(p x 400), lead to trail
// between points, + 0.499 truncated), a few entries by hand, the raw and WILD ramps, the
// control-point operations and their refusals, and colour-map files: written and read back to
// identical ramps, and malformed files refused with their messages and the colour maps unchanged.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "base/field/colormap.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/macro/macro1.h"
#include "base/macro/setvalue.h"
#include "base/plot/devtypes.h"
#include "base/plot/grcolor.h"
#include "base/plot/vdi.h"
#include "e2e/harness.h"
#include "support/scratch.h"

namespace {

constexpr int RampSize = 401;  // MAXNUMCONTOURLEVELS + 1

struct Point {
    int Lead[3], Trail[3];
};

// Evenly spaced points with one colour each.
std::vector<Point> even(std::initializer_list<std::array<int, 3>> colors) {
    std::vector<Point> points;
    for (const auto &c : colors) points.push_back(Point{{c[0], c[1], c[2]}, {c[0], c[1], c[2]}});
    return points;
}

// The points of the factory maps, as the system documents them.
const std::vector<Point> SmRainbow = even({{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}});
const std::vector<Point> LgRainbow =
    even({{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}, {255, 0, 255}, {255, 255, 255}});
const std::vector<Point> GrayScale = even({{0, 0, 0}, {32, 32, 32}, {64, 64, 64}, {96, 96, 96}, {128, 128, 128},
                                           {160, 160, 160}, {192, 192, 192}, {224, 224, 224}, {255, 255, 255}});
const std::vector<Point> TwoColor = even({{255, 0, 0}, {128, 0, 128}, {0, 0, 255}});
// Lead, then trail.
const std::vector<Point> Modern = {
    {{100, 35, 100}, {100, 35, 100}}, {{35, 35, 100}, {255, 0, 255}}, {{35, 100, 100}, {0, 0, 255}},
    {{35, 100, 35}, {0, 255, 255}},   {{100, 100, 35}, {0, 255, 0}},  {{85, 46, 10}, {255, 255, 0}},
    {{100, 35, 35}, {217, 117, 26}},  {{255, 0, 0}, {255, 0, 0}},
};

// floor(num / den) for num, den >= 0.
long long floorDiv(long long num, long long den) { return num / den; }

// The ramp of evenly spaced points, in exact rationals: point i of n sits at index
// floor(i/(n-1) x (size-1) + 0.499); channel at k of D steps = floor(lead + (trail-lead) k/D + 0.499).
std::vector<std::array<int, 3>> expectedRamp(const std::vector<Point> &points, int size) {
    long long n1 = static_cast<long long>(points.size()) - 1, last = size - 1;
    auto at = [&](long long i) { return floorDiv(1000 * i * last + 499 * n1, 1000 * n1); };
    std::vector<std::array<int, 3>> ramp(static_cast<size_t>(size));
    for (long long i = 0; i <= at(0); i++)
        ramp[size_t(i)] = {points[0].Trail[0], points[0].Trail[1], points[0].Trail[2]};
    for (long long p = 1; p <= n1; p++) {
        long long from = at(p - 1), to = at(p), d = to - from;
        for (long long k = 0; k <= d; k++)
            for (int c = 0; c < 3; c++) {
                long long lead = points[size_t(p - 1)].Lead[c], trail = points[size_t(p)].Trail[c];
                ramp[size_t(from + k)][size_t(c)] =
                    d == 0 ? int(lead) : int(floorDiv(1000 * (lead * d + (trail - lead) * k) + 499 * d, 1000 * d));
            }
    }
    for (long long i = at(n1); i < size; i++)
        ramp[size_t(i)] = {points.back().Lead[0], points.back().Lead[1], points.back().Lead[2]};
    return ramp;
}

std::vector<std::string> messages;
MessageBoxReply_e captureMessage(const char *text, MessageBoxType_e) {
    messages.push_back(text);
    return MessageBoxReply_Ok;
}

class ColorMapTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved = GeneralBase;
        savedRaw.assign(RawUserDefColorMap, RawUserDefColorMap + MaxRawUserDefColors);
        savedNumRaw = NumRawUserDefColors;
        savedGraphics = GraphicsAreInitialized;
        savedBatch = InBatchMode;
        GeneralBase = GeneralBase_s();
        InitRawUserColorMap();
        GraphicsAreInitialized = true;  // messages go to the box
        InBatchMode = false;
        messages.clear();
        MessageBoxRegisterCallback(&captureMessage);
        dir = MakeScratchDir("colormap");
        ASSERT_FALSE(dir.empty());
    }
    void TearDown() override {
        MessageBoxRegisterCallback(nullptr);
        ClearPendingErrors();
        GeneralBase = saved;
        std::copy(savedRaw.begin(), savedRaw.end(), RawUserDefColorMap);
        NumRawUserDefColors = savedNumRaw;
        GraphicsAreInitialized = savedGraphics;
        InBatchMode = savedBatch;
        RemoveScratchDir(dir);
    }
    std::vector<std::array<int, 3>> rampOf(int group, int size = RampSize) {
        std::vector<RGB_s> ramp(size_t(size), RGB_s{-1, -1, -1});
        BuildContourRamp(group, ramp.data(), size);
        std::vector<std::array<int, 3>> out;
        for (const RGB_s &rgb : ramp) out.push_back({rgb.R, rgb.G, rgb.B});
        return out;
    }
    std::vector<std::array<int, 3>> rampOfMap(int map, int group = 1) {
        GeneralBase.ColorMapGroups[size_t(group)].ContourColorMap = map;
        return rampOf(group);
    }
    bool saidOnly(const std::string &message) {
        bool ok = messages.size() == 1 && HoldsMessage(messages[0], message);
        if (!ok)
            for (const std::string &m : messages) ADD_FAILURE() << "message: " << m;
        messages.clear();
        return ok;
    }
    std::string write(const std::string &name, const std::string &text) {
        std::string path = dir + "/" + name;
        FILE *file = fopen(path.c_str(), "w");
        fputs(text.c_str(), file);
        fclose(file);
        return path;
    }
    GeneralBase_s saved;
    std::vector<RGB_s> savedRaw;
    int savedNumRaw = 0;
    bool savedGraphics = false, savedBatch = false;
    std::string dir;
};

using Rgb = std::array<int, 3>;

TEST_F(ColorMapTest, EveryFactoryMapRampFromItsControlPoints) {
    EXPECT_EQ(rampOfMap(ContourColorMap_SmRainbow), expectedRamp(SmRainbow, RampSize));
    EXPECT_EQ(rampOfMap(ContourColorMap_LgRainbow), expectedRamp(LgRainbow, RampSize));
    EXPECT_EQ(rampOfMap(ContourColorMap_Modern), expectedRamp(Modern, RampSize));
    EXPECT_EQ(rampOfMap(ContourColorMap_GrayScale), expectedRamp(GrayScale, RampSize));
    EXPECT_EQ(rampOfMap(ContourColorMap_TwoColor), expectedRamp(TwoColor, RampSize));
    // User defined starts as a copy of the small rainbow.
    EXPECT_EQ(rampOfMap(ContourColorMap_UserDef), expectedRamp(SmRainbow, RampSize));
    // Every group has the same factory bands.
    for (int group = 0; group < NumColorMapGroups; group++)
        EXPECT_EQ(rampOfMap(ContourColorMap_Modern, group), expectedRamp(Modern, RampSize)) << group;
    // Small ramps too.
    GeneralBase.ColorMapGroups[0].ContourColorMap = ContourColorMap_LgRainbow;
    EXPECT_EQ(rampOf(0, 10), expectedRamp(LgRainbow, 10));
}

TEST_F(ColorMapTest, RampEntriesByHand) {
    auto sm = rampOfMap(ContourColorMap_SmRainbow);
    EXPECT_EQ(sm[0], (Rgb{0, 0, 255}));
    EXPECT_EQ(sm[50], (Rgb{0, 127, 255}));  // 255 x 50/100 = 127.5, + 0.499 -> 127
    EXPECT_EQ(sm[100], (Rgb{0, 255, 255}));
    EXPECT_EQ(sm[400], (Rgb{255, 0, 0}));
    // Modern: point 1 sits on round(400/7) = 57 and shows its lead colour; 56 is the end of the
    // first segment, from (100,35,100) towards the trail (255,0,255): 100 + 155 x 56/57 = 252.3.
    auto modern = rampOfMap(ContourColorMap_Modern);
    EXPECT_EQ(modern[0], (Rgb{100, 35, 100}));
    EXPECT_EQ(modern[57], (Rgb{35, 35, 100}));
    EXPECT_EQ(modern[56], (Rgb{252, 1, 252}));
    EXPECT_EQ(modern[400], (Rgb{255, 0, 0}));
    auto two = rampOfMap(ContourColorMap_TwoColor);
    EXPECT_EQ(two[100], (Rgb{191, 0, 64}));  // 255 - 127/2 = 191.5 -> 191; 64 -> 64
    EXPECT_EQ(two[200], (Rgb{128, 0, 128}));
    auto gray = rampOfMap(ContourColorMap_GrayScale);
    EXPECT_EQ(gray[25], (Rgb{16, 16, 16}));
    EXPECT_EQ(gray[50], (Rgb{32, 32, 32}));
}

TEST_F(ColorMapTest, SharpBreaksAndPointsNotAtTheEnds) {
    ColorMap_s &map = GeneralBase.ColorMapGroups[2];
    map.ContourColorMap = ContourColorMap_UserDef;
    ColorMapBand_s &band = map.UserDefined;
    band.NumControlPoints = 2;
    band.ControlPoint[0] = ColorMapControlPoint_s{0.25, {10, 20, 30}, {200, 0, 0}};
    band.ControlPoint[1] = ColorMapControlPoint_s{0.5, {0, 0, 250}, {100, 120, 140}};
    auto ramp = rampOf(2, 9);  // points on 2 and 4
    EXPECT_EQ(ramp[0], (Rgb{200, 0, 0}));  // before the first point: its trail
    EXPECT_EQ(ramp[1], (Rgb{200, 0, 0}));
    EXPECT_EQ(ramp[2], (Rgb{10, 20, 30}));  // the point itself: the lead that leaves it
    EXPECT_EQ(ramp[3], (Rgb{55, 70, 85}));  // halfway to the trail of the second
    EXPECT_EQ(ramp[4], (Rgb{0, 0, 250}));   // from the last point on: its lead
    EXPECT_EQ(ramp[8], (Rgb{0, 0, 250}));
}

TEST_F(ColorMapTest, RawAndWildRamps) {
    // Start-up gray: i x 15/47 truncated.
    EXPECT_EQ(NumRawUserDefColors, 800);
    EXPECT_EQ(RawUserDefColorMap[0].R, 0);
    EXPECT_EQ(RawUserDefColorMap[100].G, 31);
    EXPECT_EQ(RawUserDefColorMap[400].B, 127);
    EXPECT_EQ(RawUserDefColorMap[799].R, 255);
    const RGB_s three[3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    ASSERT_TRUE(InstallRawColorMapRGBValues(3, three));
    // Entry i takes raw entry trunc(i/401 x 2 + 0.499).
    auto raw = rampOfMap(ContourColorMap_RawUserDef);
    EXPECT_EQ(raw[0], (Rgb{255, 0, 0}));
    EXPECT_EQ(raw[100], (Rgb{255, 0, 0}));  // 0.4988 + 0.499 < 1
    EXPECT_EQ(raw[101], (Rgb{0, 255, 0}));
    EXPECT_EQ(raw[300], (Rgb{0, 255, 0}));  // 1.4963 + 0.499 < 2
    EXPECT_EQ(raw[301], (Rgb{0, 0, 255}));
    EXPECT_EQ(raw[400], (Rgb{0, 0, 255}));
    // WILD repeats itself and is no single colour.
    auto wild = rampOfMap(ContourColorMap_Wild);
    EXPECT_EQ(rampOfMap(ContourColorMap_Wild), wild);
    bool varies = false;
    for (const Rgb &rgb : wild) {
        for (int c : rgb) EXPECT_TRUE(c >= 0 && c <= 255);
        varies = varies || rgb != wild[0];
    }
    EXPECT_TRUE(varies);
    EXPECT_FALSE(InstallRawColorMapRGBValues(801, three));
    EXPECT_TRUE(saidOnly("Cannot install Raw ColorMap RGB Values.  Invalid number of RGB entries requested"));
    EXPECT_EQ(NumRawUserDefColors, 3);
}

TEST_F(ColorMapTest, ControlPointOperations) {
    ColorMap_s &map = GeneralBase.ColorMapGroups[0];
    map.ContourColorMap = ContourColorMap_UserDef;
    const double odd[5] = {0, 0.1, 0.2, 0.9, 1};
    for (int i = 0; i < 5; i++) map.UserDefined.ControlPoint[size_t(i)].Location = odd[i];
    ASSERT_TRUE(Action_ColorMapControl(ColorMapControlAction_RedistributeControlPoints, -1, 0));
    for (int i = 0; i < 5; i++) EXPECT_EQ(map.UserDefined.ControlPoint[size_t(i)].Location, i / 4.0);
    // Copy a canned map onto the user-defined one.
    ASSERT_TRUE(Action_ColorMapControl(ColorMapControlAction_CopyStandard, ContourColorMap_Modern, 0));
    EXPECT_EQ(rampOf(0), expectedRamp(Modern, RampSize));
    // Onto the raw table: the band sampled into 800 entries.
    map.ContourColorMap = ContourColorMap_RawUserDef;
    ASSERT_TRUE(CopyCannedColorMap(ContourColorMap_TwoColor, 0));
    EXPECT_EQ(NumRawUserDefColors, 800);
    auto expected = expectedRamp(TwoColor, 800);
    for (int i : {0, 1, 399, 400, 798, 799})
        EXPECT_EQ((Rgb{RawUserDefColorMap[i].R, RawUserDefColorMap[i].G, RawUserDefColorMap[i].B}), expected[size_t(i)]);
    // Reset to factory.
    GeneralBase.ColorMapGroups[1].SmRainbow.ControlPoint[2].LeadRGB = RGB_s{1, 2, 3};
    GeneralBase.ColorMapGroups[1].SmRainbow.NumControlPoints = 3;
    ASSERT_TRUE(Action_ColorMapControl(ColorMapControlAction_ResetToFactory, ContourColorMap_SmRainbow, 1));
    EXPECT_EQ(rampOfMap(ContourColorMap_SmRainbow, 1), expectedRamp(SmRainbow, RampSize));
    EXPECT_TRUE(messages.empty());
}

TEST_F(ColorMapTest, ControlPointOperationsRefuse) {
    ColorMap_s &map = GeneralBase.ColorMapGroups[0];
    map.ContourColorMap = ContourColorMap_SmRainbow;
    EXPECT_FALSE(CopyCannedColorMap(ContourColorMap_Modern, 0));
    EXPECT_TRUE(saidOnly(
        "Only allowed to copy canned color map if current contour color map is user defined or raw user defined"));
    map.ContourColorMap = ContourColorMap_UserDef;
    for (int bad : {int(ContourColorMap_Wild), int(ContourColorMap_UserDef), int(ContourColorMap_RawUserDef), 9}) {
        EXPECT_FALSE(CopyCannedColorMap(bad, 0));
        EXPECT_TRUE(saidOnly("Attempt to copy invalid canned colormap"));
    }
    for (int bad : {int(ContourColorMap_Wild), int(ContourColorMap_RawUserDef)}) {
        EXPECT_FALSE(ResetContourColorMapToFactoryDefaults(bad, 0));
        EXPECT_TRUE(saidOnly("Cannot reset this color map - no factory defaults"));
    }
    map.ContourColorMap = ContourColorMap_Wild;
    EXPECT_FALSE(Action_ColorMapControl(ColorMapControlAction_RedistributeControlPoints, -1, 0));
    EXPECT_TRUE(saidOnly("Cannot redistribute control points for current colormap"));
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].UserDefined.NumControlPoints, 5);
}

TEST_F(ColorMapTest, TheDeviceTablesFollowTheStyle) {
    if (CurrentColorMap[0].empty()) {
        ASSERT_TRUE(Gr_AllocColorTables());
    }
    ASSERT_EQ(NumContourColors + 1, RampSize);
    RegisterColorMapHooks();
    struct Restore {
        ~Restore() {
            GrColorHooks.BuildContourRamp = nullptr;
            SetValueHooks.ColorMapChanged = nullptr;
        }
    } restore;
    auto entry = [](int group, int index) {
        VDI_SelectColorMapGroup(group);
        RGB_s rgb = Gr_ColorMapEntry(index);
        return Rgb{rgb.R, rgb.G, rgb.B};
    };
    GeneralBase.LinkColorMaps = false;
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!GLOBALCOLORMAP 2 CONTOURCOLORMAP = MODERN", MacroVersionCurrent));
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!BASICCOLOR RED { G = 9 }", MacroVersionCurrent));
    auto modern = expectedRamp(Modern, RampSize);
    for (int i : {0, 56, 57, 200, 400}) EXPECT_EQ(entry(1, FirstContourColorIndex + i), modern[size_t(i)]) << i;
    EXPECT_EQ(entry(1, 1), (Rgb{255, 9, 0}));
    EXPECT_EQ(entry(0, FirstContourColorIndex + 100), (Rgb{0, 255, 255}));  // group 1: small rainbow
    // Linked, every group shows map group 1.
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!GLOBALLINKING LINKCOLORMAPS = YES", MacroVersionCurrent));
    EXPECT_EQ(entry(1, FirstContourColorIndex + 100), (Rgb{0, 255, 255}));
    EXPECT_TRUE(messages.empty());
    GeneralBase = saved;
    InstallAllColorMaps();
}

TEST_F(ColorMapTest, FilesRoundTripToIdenticalRamps) {
    // A user map with a sharp break and a fraction that needs all its digits, the raw table, an
    // edited canned map, and WILD.
    ColorMap_s &user = GeneralBase.ColorMapGroups[0];
    user.ContourColorMap = ContourColorMap_UserDef;
    user.UserDefined.NumControlPoints = 3;
    user.UserDefined.ControlPoint[0] = ColorMapControlPoint_s{0.0, {5, 6, 7}, {5, 6, 7}};
    user.UserDefined.ControlPoint[1] = ColorMapControlPoint_s{1.0 / 3.0, {200, 10, 20}, {30, 40, 50}};
    user.UserDefined.ControlPoint[2] = ColorMapControlPoint_s{1.0, {0, 255, 0}, {0, 255, 0}};
    const RGB_s five[5] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {250, 251, 252}, {0, 0, 0}};
    ASSERT_TRUE(InstallRawColorMapRGBValues(5, five));
    GeneralBase.ColorMapGroups[1].ContourColorMap = ContourColorMap_RawUserDef;
    GeneralBase.ColorMapGroups[2].ContourColorMap = ContourColorMap_Modern;
    GeneralBase.ColorMapGroups[2].Modern.ControlPoint[3].TrailRGB = RGB_s{9, 99, 199};
    GeneralBase.ColorMapGroups[3].ContourColorMap = ContourColorMap_Wild;
    std::vector<std::vector<Rgb>> before;
    for (int group = 0; group < NumColorMapGroups; group++) before.push_back(rampOf(group));
    ColorMapBand_s userBand = user.UserDefined;

    std::string path = dir + "/out.map";
    ASSERT_TRUE(Action_WriteColorMap(path));
    FILE *file = fopen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    char header[32] = {};
    ASSERT_NE(fgets(header, sizeof(header), file), nullptr);
    fclose(file);
    EXPECT_STREQ(header, "#!MC 1100\n");

    GeneralBase.ColorMapGroups = FactoryColorMapGroups();
    InitRawUserColorMap();
    ASSERT_TRUE(Action_LoadColorMap(path)) << (messages.empty() ? "" : messages[0]);
    for (int group = 0; group < NumColorMapGroups; group++) EXPECT_EQ(rampOf(group), before[size_t(group)]) << group;
    EXPECT_EQ(NumRawUserDefColors, 5);
    for (int p = 0; p < 3; p++)
        EXPECT_EQ(GeneralBase.ColorMapGroups[0].UserDefined.ControlPoint[size_t(p)].Location,
                  userBand.ControlPoint[size_t(p)].Location);
    EXPECT_TRUE(messages.empty());
}

TEST_F(ColorMapTest, MalformedFilesAreRefusedAndChangeNothing) {
    struct Case {
        std::string text, message;
    };
    const std::vector<Case> cases = {
        {"#!XX 1100\n", "Invalid colormap file header."},
        {"$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = MODERN\n", "Invalid colormap file header."},
        {"#!MC 600\n", "Invalid colormap file header."},
        // A change that went in is taken back when a later command fails.
        {"#!MC 1100\n$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = MODERN\n$!GLOBALCOLORMAP 1 SMRAINBOW { NUMCONTROLPOINTS = 99 }\n",
         "\"NUMCONTROLPOINTS\" must be between 2 and 50."},
        {"#!MC 1100\n$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = MODERN\n$!LOOP 2\n$!ENDLOOP\n",
         "Not allowed to use control commands in this type of macro file"},
        {"#!MC 1100\n$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = MODERN\n$!EXPORT\n", "$!EXPORT not allowed in a color map file."},
        {"#!MC 1100\n$!LOADCOLORMAP \"other.map\"\n",
         "$!OPENLAYOUT, $!READSTYLESHEET, and $!LOADCOLORMAP cannot call one-another."},
        {"#!MC 1100\n$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = RAWUSERDEF\n$!RAWCOLORMAP\nRAWDATA\n2\n1 2 3\n4 256 6\n",
         "RGB value out of range in Color Map Entry number 2"},
        {"#!MC 1100\n$!RAWCOLORMAP\nRAWDATA\n2\n1 2 3\n",
         "I/O Error trying to read Color Map RGB Entry number 2"},
    };
    for (const Case &c : cases) {
        std::string path = write("bad.map", c.text);
        EXPECT_FALSE(LoadColorMap(path.c_str())) << c.text;
        EXPECT_TRUE(saidOnly(c.message)) << c.text;
        EXPECT_EQ(GeneralBase.ColorMapGroups[0].ContourColorMap, ContourColorMap_SmRainbow) << c.text;
        EXPECT_EQ(NumRawUserDefColors, 800) << c.text;
        EXPECT_EQ(RawUserDefColorMap[400].R, 127) << c.text;
    }
    EXPECT_FALSE(LoadColorMap(""));
    EXPECT_TRUE(saidOnly("Invalid file name for loading color map"));
    EXPECT_FALSE(WriteColorMap(""));
    EXPECT_TRUE(saidOnly("Invalid file name for writing color map"));
    EXPECT_FALSE(LoadColorMap((dir + "/missing.map").c_str()));
    EXPECT_EQ(messages.size(), 1u);
    messages.clear();
}

TEST_F(ColorMapTest, FilesRunOnlyColourMapCommands) {
    // Other style and other actions are passed over; the raw table and the maps go in.
    std::string path = write("mixed.map", "#!MC 1100\n"
                                          "$!PAPER SHOWGRID = NO\n"
                                          "$!REDRAWALL\n"
                                          "$!RAWCOLORMAP\nRAWDATA\n2\n9 8 7\n6 5 4\n"
                                          "$!COLORMAP CONTOURCOLORMAP = RAWUSERDEF\n"
                                          "$!GLOBALCOLORMAP 2 CONTOURCOLORMAP = GRAYSCALE\n");
    ASSERT_TRUE(LoadColorMap(path.c_str())) << (messages.empty() ? "" : messages[0]);
    EXPECT_TRUE(GeneralBase.Paper.ShowGrid);
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].ContourColorMap, ContourColorMap_RawUserDef);
    EXPECT_EQ(GeneralBase.ColorMapGroups[1].ContourColorMap, ContourColorMap_GrayScale);
    EXPECT_EQ(NumRawUserDefColors, 2);
    EXPECT_EQ(RawUserDefColorMap[1].G, 5);
}

}  // namespace
