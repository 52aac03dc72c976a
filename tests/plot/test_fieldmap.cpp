// Field maps as holders of zone style: how zones are grouped into maps, the colours and defaults
// new maps take, and how maps follow zones that are added and deleted. Also the sheet as it lies,
// and a 3D fit that sizes the view to the data box, and the style changes that set commands on
// maps announce.
#include <gtest/gtest.h>

#include <cmath>

#include "base/data/strand.h"
#include "base/kernel/genbase.h"
#include "base/kernel/statechg.h"
#include "base/macro/macro1.h"
#include "base/macro/macrocomp.h"
#include "base/macro/vocabtables.h"
#include "base/plot/fieldmap.h"
#include "base/plot/linemap.h"
#include "base/plot/view.h"
#include "data/data_fixture.h"

namespace {

class FieldMapTest : public DataSetTest {
  protected:
    // New frames take the factory frame style, with its axis variables.
    void SetUp() override {
        InitializeFrameFactoryDefaults();
        DataSetTest::SetUp();
    }
    const FieldMapStyle_s &style(int map) const { return CurFrame->FieldAttributes[size_t(map)]->Style; }
    void putInStrand(EntIndex_t zone, int32_t strand) {
        GetZoneSpec(dataSet(), zone)->StrandID = strand;
        ASSERT_TRUE(AddZoneToStrand(dataSet(), strand, zone));
    }
};

TEST_F(FieldMapTest, EachStaticZoneGetsAMapColouredInTurn) {
    makeDataSet(3, 7);
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian2D, false, false));
    ASSERT_EQ(NumFieldMaps(CurFrame), 7);
    // RED, GREEN, BLUE, CYAN, YELLOW, PURPLE, then RED again; shading stays white.
    const int expected[] = {1, 2, 3, 4, 5, 6, 1};
    for (int m = 0; m < 7; m++) {
        EXPECT_EQ(style(m).Mesh.Color, expected[m]) << m;
        EXPECT_EQ(style(m).Contour.Color, expected[m]) << m;
        EXPECT_EQ(style(m).EdgeLayer.Color, expected[m]) << m;
        EXPECT_EQ(style(m).Shade.Color, 7) << m;
        EXPECT_EQ(GetFieldMapForZone(CurFrame, EntIndex_t(m)), m);
        EXPECT_TRUE(IsFieldMapActive(CurFrame, m));
    }
}

TEST_F(FieldMapTest, StrandsShareAMapAndZonesFollowDeletion) {
    makeDataSet(3, 4);
    putInStrand(0, 0);
    putInStrand(1, 0);
    putInStrand(2, 1);
    ASSERT_TRUE(FrameStyleSynchronizeWithDataSet(CurFrame, PlotType_Cartesian2D, true));
    // Maps are numbered by the first zone that needs each: strand 0, strand 1, then zone 4.
    ASSERT_EQ(NumFieldMaps(CurFrame), 3);
    EXPECT_FALSE(CurFrame->FieldAttributes[0]->MapsZones);
    EXPECT_EQ(CurFrame->FieldAttributes[0]->StrandID, 0);
    EXPECT_EQ(CurFrame->FieldAttributes[1]->StrandID, 1);
    EXPECT_TRUE(CurFrame->FieldAttributes[2]->MapsZones);
    EXPECT_EQ(GetFieldMapForZone(CurFrame, 1), 0);
    EXPECT_EQ(GetFieldMapForZone(CurFrame, 3), 2);

    // The strand map loses one zone and keeps the other; then it loses its last and goes, and
    // the maps above it move down one number, in the zone records and in the shown set.
    CurFrame->FieldAttributes[2]->Style.Mesh.Color = 9;
    ASSERT_TRUE(DeleteZone(dataSet(), 0, true));
    EXPECT_EQ(NumFieldMaps(CurFrame), 3);
    EXPECT_EQ(GetFieldMapForZone(CurFrame, 0), 0);
    ASSERT_TRUE(DeleteZone(dataSet(), 0, true));
    ASSERT_EQ(NumFieldMaps(CurFrame), 2);
    EXPECT_EQ(GetFieldMapForZone(CurFrame, 0), 0);
    EXPECT_EQ(GetFieldMapForZone(CurFrame, 1), 1);
    EXPECT_EQ(style(1).Mesh.Color, 9);
    EXPECT_EQ(MemberCount(CurFrame->ActiveFieldMaps), 2);
    Set_a *zones = GetFieldMapZones(CurFrame, 1);
    ASSERT_NE(zones, nullptr);
    EXPECT_TRUE(InSet(zones, 1));
    EXPECT_EQ(MemberCount(zones), 1);
    DeallocSet(&zones);
}

TEST_F(FieldMapTest, NewMapsTakeDefaultsFromTheirZones) {
    makeDataSet(3, 0);
    addZone(3, 3, 3);  // a volume
    addZone(3, 1, 4);  // an IK surface: J planes
    addZone(1, 3, 3);  // a JK surface: I planes
    addZone(5, 1, 1);  // a line
    ASSERT_TRUE(FrameStyleSynchronizeWithDataSet(CurFrame, PlotType_Cartesian3D, true));
    ASSERT_EQ(NumFieldMaps(CurFrame), 4);
    EXPECT_EQ(style(0).Surfaces.SurfacesToPlot, 1);  // EXPOSEDCELLFACES
    EXPECT_TRUE(style(0).VolumeMode.ShowIsoSurfaces);
    EXPECT_EQ(style(1).Surfaces.SurfacesToPlot, 3);  // JPLANES
    EXPECT_EQ(style(2).Surfaces.SurfacesToPlot, 2);  // IPLANES
    EXPECT_FALSE(style(1).VolumeMode.ShowSlices);
    EXPECT_FALSE(style(3).EdgeLayer.Show);
    EXPECT_TRUE(style(1).EdgeLayer.Show);
    EXPECT_TRUE(FieldMapHasVolumeZones(CurFrame, 0));
    EXPECT_TRUE(FieldMapHasIJKOrderedZones(CurFrame, 0));
    EXPECT_TRUE(FieldMapHasSurfaceZones(CurFrame, 1));
    EXPECT_TRUE(FieldMapHasLinearZones(CurFrame, 3));
    EXPECT_FALSE(FieldMapHasFEZones(CurFrame, 3));
}

TEST_F(FieldMapTest, AZoneOfItsOwnColourOverridesTheSequence) {
    makeDataSet(3, 0);
    addZone(3, 2, 1);
    GetZoneSpec(dataSet(), 0)->ZoneColor = 4;
    ASSERT_TRUE(FrameStyleSynchronizeWithDataSet(CurFrame, PlotType_Cartesian2D, true));
    EXPECT_EQ(style(0).Mesh.Color, 4);
    EXPECT_EQ(style(0).Shade.Color, 4);
}

TEST_F(FieldMapTest, ALinePlotGetsOneMapPerZoneWithTheFirstShown) {
    makeDataSet(2, 3, 4, 1, 1);
    ASSERT_TRUE(SetNewPlotType(PlotType_XYLine, false, false));
    ASSERT_EQ(NumLineMaps(CurFrame), 3);
    EXPECT_EQ(CurFrame->LineMapAttributes[2]->Style.Assign.Zone, 2);
    EXPECT_EQ(MemberCount(CurFrame->ActiveLineMaps), 1);
    ASSERT_TRUE(DeleteZone(dataSet(), 1, true));
    ASSERT_EQ(NumLineMaps(CurFrame), 2);
    EXPECT_EQ(CurFrame->LineMapAttributes[1]->Style.Assign.Zone, 1);
}

TEST(PaperSpecs, LandscapeTurnsTheSheetAndItsMargins) {
    Paper_s paper;
    paper.PaperSize = 0;  // LETTER
    PaperSizeInfo_s &letter = paper.PaperSizeInfo[0];
    letter.LeftHardClipOffset = 0.1;
    letter.RightHardClipOffset = 0.2;
    letter.TopHardClipOffset = 0.3;
    letter.BottomHardClipOffset = 0.4;
    double width, height, left, right, bottom, top;
    paper.OrientPortrait = false;
    GetPaperSpecs(paper, &width, &height, &left, &right, &bottom, &top);
    EXPECT_EQ(width, 11.0);
    EXPECT_EQ(height, 8.5);
    EXPECT_EQ(left, 0.4);
    EXPECT_EQ(right, 0.3);
    EXPECT_EQ(bottom, 0.2);
    EXPECT_EQ(top, 0.1);
    paper.OrientPortrait = true;
    GetPaperSpecs(paper, &width, &height, &left, &right, &bottom, &top);
    EXPECT_EQ(width, 8.5);
    EXPECT_EQ(left, 0.1);
}

TEST_F(FieldMapTest, ThreeDFitSizesTheViewToTheBox) {
    makeDataSet(3, 1, 2, 2, 2);
    // The box 0..4 by 0..2 by 0..1.
    setValues(0, 0, {0, 4, 0, 4, 0, 4, 0, 4});
    setValues(0, 1, {0, 0, 2, 2, 0, 0, 2, 2});
    setValues(0, 2, {0, 0, 0, 0, 1, 1, 1, 1});
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian3D, false, false));
    double min, max;
    ASSERT_TRUE(GetNativeVarMinMax(CurFrame, 0, &min, &max));
    EXPECT_EQ(max, 4.0);
    ASSERT_TRUE(GetNativeVarMinMax(CurFrame, 2, &min, &max));
    EXPECT_EQ(max, 1.0);
    for (bool perspective : {false, true}) {
        CurFrame->Style.ThreeDView.DrawInPerspective = perspective;
        ASSERT_TRUE(Action_View(View_Fit, 'X', 1, 0, 0, 0, 0));
        double minX = 1e300, maxX = -1e300, minY = 1e300, maxY = -1e300;
        for (int c = 0; c < 8; c++) {
            XYZ_s p = VDI3D_TransformXYZ(CurFrame->Style.ThreeDView, CurThreeDViewCalc,
                                         XYZ_s{c & 1 ? 4.0 : 0.0, c & 2 ? 2.0 : 0.0, c & 4 ? 1.0 : 0.0});
            minX = std::min(minX, p.X), maxX = std::max(maxX, p.X), minY = std::min(minY, p.Y), maxY = std::max(maxY, p.Y);
        }
        const Rect_s &limits = CurThreeDViewCalc.ViewLimits;
        double width = limits.X2 - limits.X1, height = limits.Y2 - limits.Y1, tol = 1e-6 * width;
        // The limiting direction fills the view.
        bool fillsX = std::fabs((maxX - minX) - width) < 1e-4 * width;
        bool fillsY = std::fabs((maxY - minY) - height) < 1e-4 * height;
        EXPECT_TRUE(fillsX || fillsY) << perspective << " " << maxX - minX << " of " << width << ", "
                                      << maxY - minY << " of " << height;
        if (perspective) continue;
        // Without perspective the box lies centred, wholly inside.
        EXPECT_GE(minX, limits.X1 - tol);
        EXPECT_LE(maxX, limits.X2 + tol);
        EXPECT_GE(minY, limits.Y1 - tol);
        EXPECT_LE(maxY, limits.Y2 + tol);
        EXPECT_NEAR((minX + maxX) / 2, (limits.X1 + limits.X2) / 2, 1e-6 * width);
        EXPECT_NEAR((minY + maxY) / 2, (limits.Y1 + limits.Y2) / 2, 1e-6 * height);
    }
}

}  // namespace

namespace {

TEST_F(FieldMapTest, ResettingStyleKeepsWhatMakesTheFrame) {
    makeDataSet(3, 2);
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian2D, false, false));
    Frame_s *frame = CurFrame;
    frame->Name = "Kept";
    uint64_t id = frame->UniqueID;
    frame->Style.FrameLayout.Rect = Rect_s{2, 6, 7, 1};
    frame->Style.FrameLayout.BorderThickness = 0.01;
    frame->Style.FrameLayout.BackgroundColor = 3;
    frame->Style.ThreeDView.PsiAngle = 0.5;
    frame->FieldAttributes[1]->Style.Mesh.Color = 9;

    ResetFrameStylePreserveFrameLayoutAndPlotType(frame);
    EXPECT_EQ(frame->Name, "Kept");
    EXPECT_EQ(frame->UniqueID, id);
    EXPECT_EQ(frame->PlotType, PlotType_Cartesian2D);
    EXPECT_EQ(frame->Style.FrameLayout.Rect.X1, 2);
    EXPECT_EQ(frame->Style.FrameLayout.BorderThickness, 0.01);
    EXPECT_EQ(frame->Style.FrameLayout.BackgroundColor, FrameFactoryDefaults.FrameLayout.BackgroundColor);
    EXPECT_EQ(frame->Style.ThreeDView.PsiAngle, FrameFactoryDefaults.ThreeDView.PsiAngle);
    ASSERT_EQ(NumFieldMaps(frame), 2);
    EXPECT_EQ(frame->FieldAttributes[1]->Style.Mesh.Color, 2);  // made again: GREEN

    SetFrameAttributesToDefaults(frame, StyleBase_Factory);
    EXPECT_EQ(frame->PlotType, PlotType_Sketch);
    EXPECT_EQ(frame->Style.FrameLayout.Rect.Y2, 1);
    EXPECT_EQ(frame->Style.FrameLayout.BorderThickness, FrameFactoryDefaults.FrameLayout.BorderThickness);
    EXPECT_EQ(frame->DataSet, dataSet());
}

}  // namespace

namespace {

// What a listener heard of style changes: the path of each, and the field maps it names.
std::vector<std::string> styleChanges;

void hearStyle(StateChange_e change) {
    if (change != StateChange_Style) return;
    std::string text = "style";
    // Position 1 of a map command is the set of maps, of a grouped command the group number.
    ArbParam_t row, modifier = 0;
    StateChangeSupplementalInfoGetStyleParam(0, &row);
    text += " " + std::string(SetValueCommandList[row].Name);
    StateChangeSupplementalInfoGetStyleParam(1, &modifier);
    const Set_a *maps = nullptr;
    if (StateChangeSupplementalInfoGetFieldMapSet(&maps)) {
        text += reinterpret_cast<const Set_a *>(modifier) == maps ? " [" : " [?";
        for (SetIndex_t m = GetNextMember(maps, -1); m >= 0; m = GetNextMember(maps, m)) text += " " + std::to_string(m + 1);
        text += " ]";
    } else if (row == MacroSetValue_GLOBALCONTOUR) {
        text += " " + std::to_string(modifier);
    } else {
        text += " " + std::string(SetValueCommandList[modifier].Name);
    }
    for (int p = 2; p < NumStateChangeStyleParams && StateChangeSupplementalInfoGetStyleParam(p, &row); p++)
        text += " " + std::string(SetValueCommandList[row].Name);
    styleChanges.push_back(text);
}

}  // namespace

TEST_F(FieldMapTest, StyleCommandsAnnounceEachValueWithItsPath) {
    makeDataSet(3, 3);
    ASSERT_TRUE(FrameStyleSynchronizeWithDataSet(CurFrame, PlotType_Cartesian2D, true));
    ASSERT_TRUE(RegisterStateChangeCallback(hearStyle));
    styleChanges.clear();
    SetIsLayoutDirty(false);
    // Two values in one command: two changes, each with its whole path and the maps it reached.
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!FIELDMAP [1,3] MESH { COLOR = RED LINETHICKNESS = 0.4 }", MacroVersionCurrent));
    EXPECT_EQ(styleChanges, (std::vector<std::string>{"style FIELDMAP [ 1 3 ] MESH COLOR",
                                                     "style FIELDMAP [ 1 3 ] MESH LINETHICKNESS"}));
    EXPECT_TRUE(IsLayoutDirty());
    // The same values again change nothing and raise nothing.
    styleChanges.clear();
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!FIELDMAP [1,3] MESH { COLOR = RED }", MacroVersionCurrent));
    EXPECT_TRUE(styleChanges.empty());
    // Settings of the interface leave the layout clean; the frame's style does not.
    SetIsLayoutDirty(false);
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!INTERFACE ENABLEPAUSES = NO", MacroVersionCurrent));
    EXPECT_FALSE(IsLayoutDirty());
    EXPECT_EQ(styleChanges.back(), "style INTERFACE ENABLEPAUSES");
    ASSERT_TRUE(ExecuteSingleMacroCommand("$!GLOBALCONTOUR 2 VAR = 3", MacroVersionCurrent));
    EXPECT_TRUE(IsLayoutDirty());
    EXPECT_EQ(styleChanges.back(), "style GLOBALCONTOUR 2 VAR");
    ASSERT_TRUE(UnregisterStateChangeCallback(hearStyle));
    GeneralBase.EnablePauses = true;
}
