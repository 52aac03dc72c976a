// Contour layers drawn in-process into the off-screen image: a banded flood of F = X + 2Y over an
// ordered and an FE zone, each sampled pixel in the colour of the band its own F falls in (the
// band and its colour worked out here from the pixel's position); the exact path on a hard-copy
// recorder, whose band polygons tile the zone; the continuous flood blending node colours; and
// auto labels along straight lines, on the lines and spaced as the group asks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <vector>

#include "base/field/contlevel.h"
#include "base/field/contour.h"
#include "base/field/plot.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/plot/draw0.h"
#include "base/plot/fieldmap.h"
#include "base/plot/grcolor.h"
#include "base/plot/solntime.h"
#include "base/plot/plotdev.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"
#include "data/data_fixture.h"

namespace {

constexpr int Width = 400, Height = 300;
constexpr EntIndex_t FVar = 2;

struct Rgb {
    int R, G, B;
    bool operator==(const Rgb &o) const { return R == o.R && G == o.G && B == o.B; }
};
std::ostream &operator<<(std::ostream &out, const Rgb &c) {
    return out << "(" << c.R << "," << c.G << "," << c.B << ")";
}

class ContourRenderTest : public DataSetTest {
  protected:
    void SetUp() override {
        InitializeFrameFactoryDefaults();
        DataSetTest::SetUp();
        savedBase = GeneralBase;
        savedBatch = InBatchMode;
        InBatchMode = true;
        Gr_RegisterBatchProxyCallbacks();
        if (CurrentColorMap[0].empty()) {
            ASSERT_TRUE(Gr_AllocColorTables());
        }
        // The tables as the factory colour maps make them, whatever ran before.
        for (int group = NumColorMapGroups - 1; group >= 0; group--) Gr_InstallColorMap(group);
        if (PlXPoly.empty()) {
            ASSERT_TRUE(VDI_AllocPolygonBuffers());
        }
        ASSERT_TRUE(Gr_ConstructOffscreenImage(Width, Height, ExportRegion_WorkArea));
        SetUsableWorkAreaSize(Width, Height);
        savedHooks = PlotLayerHooks;
        RegisterFieldPlotLayers();
        makeDataSet(3, 0);
    }
    void TearDown() override {
        VDI_SetRenderDest(RenderDest_None);
        Pl_SetDevice(nullptr);
        Gr_DestroyOffscreenImage();
        Gr_RegisterBatchProxyCallbacks();
        DeleteContourLabels(CurFrame, -1);
        PlotLayerHooks = savedHooks;
        GeneralBase = savedBase;
        InBatchMode = savedBatch;
        DataSetTest::TearDown();
    }

    // F = X + 2Y on an ni x nj grid over [0, 10] x [0, 5], ordered or as FE quadrilaterals.
    static double field(double x, double y) { return x + 2 * y; }
    void addField(LgIndex_t ni, LgIndex_t nj, bool asFE) {
        EntIndex_t zone = dataSet()->NumZones;
        if (asFE) {
            ZoneSpec_s spec;
            spec.Type = ZoneType_FEQuad;
            spec.NumPtsI = ni * nj;
            spec.NumPtsJ = (ni - 1) * (nj - 1);
            spec.NumPtsK = 4;
            ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, zone, nullptr, nullptr, -1, false));
            NodeMap_a nodeMap = GetZoneData(dataSet(), zone)->NodeMap;
            LgIndex_t e = 0;
            for (LgIndex_t j = 0; j + 1 < nj; j++)
                for (LgIndex_t i = 0; i + 1 < ni; i++, e++) {
                    LgIndex_t c = i + j * ni;
                    const LgIndex_t corners[4] = {c, c + 1, c + 1 + ni, c + ni};
                    for (int k = 0; k < 4; k++) NodeMapSetNode(nodeMap, e, k, corners[k]);
                }
        } else {
            addZone(ni, nj, 1);
        }
        FieldData_a x = GetWritableNativeFieldDataPtr(dataSet(), zone, 0);
        FieldData_a y = GetWritableNativeFieldDataPtr(dataSet(), zone, 1);
        FieldData_a f = GetWritableNativeFieldDataPtr(dataSet(), zone, FVar);
        for (LgIndex_t j = 0; j < nj; j++)
            for (LgIndex_t i = 0; i < ni; i++) {
                double xv = 10.0 * i / (ni - 1), yv = 5.0 * j / (nj - 1);
                SetFieldValue(x, i + j * ni, xv);
                SetFieldValue(y, i + j * ni, yv);
                SetFieldValue(f, i + j * ni, field(xv, yv));
            }
    }
    // Contour on, mesh off, every map with the contour type.
    void showContour(int contourType, const std::vector<double> &levels) {
        ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian2D, false, false));
        UpdateFrameFlagsOnSolutionTimeChange(CurFrame);  // the zones shown, now that they exist
        CurFrame->Style.FieldLayers.ShowContour = true;
        CurFrame->Style.FieldLayers.ShowMesh = false;
        GlobalContour_s &contour = CurFrame->Style.GlobalContour[0];
        contour.Var = FVar;
        contour.Levels = levels;
        for (int m = 0; m < NumFieldMaps(CurFrame); m++) {
            CurFrame->FieldAttributes[size_t(m)]->Style.Contour.ContourType = contourType;
            CurFrame->FieldAttributes[size_t(m)]->Style.Contour.FloodColoring = 1;
            CurFrame->FieldAttributes[size_t(m)]->Style.Contour.LineContourGroup = 0;
        }
    }
    // Draws the frame and keeps the picture's pixels.
    void render() {
        ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
        ASSERT_TRUE(RedrawAllFrames(RedrawReason_UserReqRedrawAllFrames));
        image.assign(size_t(Width) * Height * 3, 0);
        ASSERT_TRUE(Gr_PrepareOffScreenImageForPixelAccess());
        for (int y = 0; y < Height; y++) ASSERT_TRUE(Gr_GetRGBPixelRow(y, &image[size_t(y) * Width * 3]));
    }
    Rgb pixel(int x, int y) const {
        const uint8_t *p = &image[(size_t(y) * Width + size_t(x)) * 3];
        return {p[0], p[1], p[2]};
    }
    static double gridX(double px) { return ConvertXPosition(CurTransforms, CoordSys_Screen, CoordSys_Grid, px); }
    static double gridY(double py) { return ConvertYPosition(CurTransforms, CoordSys_Screen, CoordSys_Grid, py); }
    static Rgb colorOf(int index) {
        RGB_s c = CurrentColorMap[SelectFinalColorMapGroup(0)][size_t(index)];
        return {c.R, c.G, c.B};
    }
    static int bandOf(const std::vector<double> &levels, double value) {
        int band = 0;
        while (band < int(levels.size()) && levels[size_t(band)] < value) band++;  // (L[b-1], L[b]]
        return band;
    }

    // Samples a lattice of pixels well inside the data and away from every level; each must
    // show its band's colour, and every band must be seen.
    void expectBandColours(const std::vector<double> &levels) {
        std::map<int, int> seen;
        int sampled = 0;
        for (int py = 4; py < Height - 4; py += 3)
            for (int px = 4; px < Width - 4; px += 3) {
                int band = -1;
                bool clear = true;
                for (int dy = -2; dy <= 2 && clear; dy += 2)
                    for (int dx = -2; dx <= 2 && clear; dx += 2) {
                        double x = gridX(px + dx + 0.5), y = gridY(py + dy + 0.5);
                        if (x < 0 || x > 10 || y < 0 || y > 5) clear = false;
                        int b = bandOf(levels, field(x, y));
                        if (band >= 0 && b != band) clear = false;
                        band = b;
                    }
                if (!clear) continue;
                double value = field(gridX(px + 0.5), gridY(py + 0.5));
                ASSERT_EQ(GetMultiColor(0, value), GetMultiColorFromContourLevel(0, band, false));
                Rgb expected = colorOf(GetMultiColorFromContourLevel(0, band, false));
                ASSERT_EQ(pixel(px, py), expected) << "pixel " << px << "," << py << " F " << value << " band " << band;
                seen[band]++;
                sampled++;
            }
        EXPECT_GT(sampled, 1000);
        EXPECT_EQ(seen.size(), levels.size() + 1);
    }

    std::vector<uint8_t> image;
    GeneralBase_s savedBase;
    PlotLayerHooks_s savedHooks{};
    bool savedBatch = false;
};

TEST_F(ContourRenderTest, BandedFloodOfAnOrderedZoneShowsEachPixelsBand) {
    addField(41, 21, false);
    const std::vector<double> levels = {2.5, 7.3, 11.1, 16.9};
    showContour(1, levels);  // FLOOD
    CurFrame->Style.GlobalContour[0].ColorMapFilter.ColorMapDistribution = 1;
    render();
    expectBandColours(levels);
}

TEST_F(ContourRenderTest, BandedFloodOfAnFEZoneShowsEachPixelsBand) {
    addField(21, 11, true);
    const std::vector<double> levels = {3.3, 9.9, 14.2};
    showContour(1, levels);
    CurFrame->Style.GlobalContour[0].ColorMapFilter.ColorMapDistribution = 1;
    render();
    expectBandColours(levels);
}

TEST_F(ContourRenderTest, ExactFloodOnHardCopyTilesTheZoneWithBandPolygons) {
    addField(11, 6, false);
    const std::vector<double> levels = {4.1, 8.7, 13.3};
    showContour(1, levels);
    CurFrame->Style.GlobalContour[0].ColorMapFilter.ColorMapDistribution = 1;
    render();  // sets the frame's maps
    CZInfo_s *czInfo = nullptr;
    CZData_s *czData = nullptr;
    ASSERT_TRUE(SetupFrameZone(CurFrame, 0, &czInfo, &czData));
    PlRecorderClear();
    Pl_SetDevice(PlRecorderDevice());
    VDI_SetRenderDest(RenderDest_Hardcopy);
    VDI_SetHardcopyMap(CoordMap_s{1.0, 0.0, 1.0, 0.0});  // hard copy in screen units
    EXPECT_TRUE(Draw2DShadeOrContourFlooding(czInfo, czData));
    ReleaseSetupZoneOrCOB(&czInfo, &czData);
    VDI_SetRenderDest(RenderDest_None);

    int fillColor = -1, polygons = 0;
    double area = 0;
    for (const PlRecord_s &record : PlRecorderRecords()) {
        if (record.Op == PlOp_Set_Fill_Color) fillColor = record.Int1;
        if (record.Op != PlOp_Pgon) continue;
        polygons++;
        const std::vector<XY_s> &p = record.Points;
        ASSERT_GE(p.size(), 4u);
        double twice = 0, cx = 0, cy = 0;
        for (size_t k = 0; k + 1 < p.size(); k++) {
            twice += p[k].X * p[k + 1].Y - p[k + 1].X * p[k].Y;
            cx += p[k].X / double(p.size() - 1);
            cy += p[k].Y / double(p.size() - 1);
        }
        area += std::fabs(twice) / 2;
        // A band polygon is convex: its vertex average lies inside, in its band.
        int band = bandOf(levels, field(gridX(cx), gridY(cy)));
        EXPECT_EQ(fillColor, GetMultiColorFromContourLevel(0, band, false)) << "polygon " << polygons;
    }
    EXPECT_GT(polygons, 50);
    // Together they cover the zone's rectangle once.
    double zoneArea = std::fabs((CoordMap_X(CurTransforms.Grid2Screen, 10) - CoordMap_X(CurTransforms.Grid2Screen, 0)) *
                                (CoordMap_Y(CurTransforms.Grid2Screen, 5) - CoordMap_Y(CurTransforms.Grid2Screen, 0)));
    EXPECT_NEAR(area, zoneArea, zoneArea * 1e-9);
}

TEST_F(ContourRenderTest, ContinuousFloodBlendsNodeColours) {
    addField(11, 6, false);
    showContour(1, {5.0, 10.0});
    ColorMapFilter_s &filter = CurFrame->Style.GlobalContour[0].ColorMapFilter;
    filter.ColorMapDistribution = 0;  // CONTINUOUS
    filter.CMin = 0;
    filter.CMax = 20;
    // Fast colouring blends node colours over each cell; without it the cells are cut at the
    // colour map's control points and blended inside each piece. Either way an interior node
    // shows its own colour.
    for (bool fast : {true, false}) {
        SCOPED_TRACE(fast ? "fast" : "by control points");
        filter.UseFastApproxContinuousFlood = fast;
        render();
        int checked = 0;
        for (int j = 1; j < 5; j++)
            for (int i = 1; i < 10; i++) {
                double x = i, y = j;
                int px = int(CoordMap_X(CurTransforms.Grid2Screen, x));
                int py = int(CoordMap_Y(CurTransforms.Grid2Screen, y));
                Rgb got = pixel(px, py), want = colorOf(GetMultiColor(0, field(x, y)));
                EXPECT_NEAR(got.R, want.R, 12) << x << "," << y;
                EXPECT_NEAR(got.G, want.G, 12) << x << "," << y;
                EXPECT_NEAR(got.B, want.B, 12) << x << "," << y;
                checked++;
            }
        EXPECT_EQ(checked, 36);
    }
}

TEST_F(ContourRenderTest, ExactContinuousFloodColoursEachCellByItsAverage) {
    addField(6, 4, false);
    showContour(1, {5.0});
    ColorMapFilter_s &filter = CurFrame->Style.GlobalContour[0].ColorMapFilter;
    filter.ColorMapDistribution = 0;
    filter.CMin = 0;
    filter.CMax = 20;
    render();
    CZInfo_s *czInfo = nullptr;
    CZData_s *czData = nullptr;
    ASSERT_TRUE(SetupFrameZone(CurFrame, 0, &czInfo, &czData));
    PlRecorderClear();
    Pl_SetDevice(PlRecorderDevice());
    VDI_SetRenderDest(RenderDest_Hardcopy);
    VDI_SetHardcopyMap(CoordMap_s{1.0, 0.0, 1.0, 0.0});
    EXPECT_TRUE(Draw2DShadeOrContourFlooding(czInfo, czData));
    ReleaseSetupZoneOrCOB(&czInfo, &czData);
    VDI_SetRenderDest(RenderDest_None);
    // One polygon per cell (5 x 3), coloured by the mean of its corners, which for this linear
    // field is F at the cell's centre.
    int fillColor = -1, polygons = 0;
    for (const PlRecord_s &record : PlRecorderRecords()) {
        if (record.Op == PlOp_Set_Fill_Color) fillColor = record.Int1;
        if (record.Op != PlOp_Pgon) continue;
        polygons++;
        ASSERT_EQ(record.Points.size(), 5u);
        double cx = 0, cy = 0;
        for (size_t k = 0; k < 4; k++) cx += record.Points[k].X / 4, cy += record.Points[k].Y / 4;
        EXPECT_EQ(fillColor, GetMultiColor(0, field(gridX(cx), gridY(cy))));
    }
    EXPECT_EQ(polygons, 15);
}

TEST_F(ContourRenderTest, ThreeDFloodFacesShowBandColours) {
    // A block with F = X + 2Y, its six faces flooded through the frame's view: the colours on
    // the picture are band colours, and more than one band shows.
    EntIndex_t zone = dataSet()->NumZones;
    addZone(6, 6, 6);
    FieldData_a x = GetWritableNativeFieldDataPtr(dataSet(), zone, 0);
    FieldData_a y = GetWritableNativeFieldDataPtr(dataSet(), zone, 1);
    FieldData_a f = GetWritableNativeFieldDataPtr(dataSet(), zone, FVar);
    ASSERT_TRUE(AddVar("Z", nullptr, nullptr, false, nullptr));
    FieldData_a z = GetWritableNativeFieldDataPtr(dataSet(), zone, 3);
    for (LgIndex_t n = 0; n < 216; n++) {
        double xv = n % 6, yv = (n / 6) % 6, zv = n / 36;
        SetFieldValue(x, n, xv);
        SetFieldValue(y, n, yv);
        SetFieldValue(z, n, zv);
        SetFieldValue(f, n, field(xv, yv));
    }
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian3D, false, false));
    UpdateFrameFlagsOnSolutionTimeChange(CurFrame);
    CurFrame->Style.ThreeDAxis.ZDetail.VarNum = 3;
    CurFrame->Style.FieldLayers.ShowContour = true;
    CurFrame->Style.FieldLayers.ShowMesh = false;
    const std::vector<double> levels = {3.1, 7.7, 11.3};
    GlobalContour_s &contour = CurFrame->Style.GlobalContour[0];
    contour.Var = FVar;
    contour.Levels = levels;
    contour.ColorMapFilter.ColorMapDistribution = 1;
    CurFrame->FieldAttributes[0]->Style.Contour.ContourType = 1;
    render();
    std::map<std::vector<int>, int> bandOfColour;
    for (int band = 0; band <= 3; band++) {
        Rgb c = colorOf(GetMultiColorFromContourLevel(0, band, false));
        bandOfColour[{c.R, c.G, c.B}] = band;
    }
    std::set<int> bandsSeen;
    int coloured = 0;
    for (int py = 0; py < Height; py++)
        for (int px = 0; px < Width; px++) {
            Rgb c = pixel(px, py);
            auto found = bandOfColour.find({c.R, c.G, c.B});
            if (found == bandOfColour.end()) continue;
            bandsSeen.insert(found->second);
            coloured++;
        }
    EXPECT_GT(coloured, 5000);
    EXPECT_GE(bandsSeen.size(), 3u);
}

TEST_F(ContourRenderTest, DrawOrderByZoneOrByLayer) {
    // Two zones on the same cells, both flooded; the first one's overlay mesh is black. By zone,
    // the second zone's flood covers the first zone's mesh; by layer, every flood comes first
    // and the mesh lies on top.
    addField(11, 6, false);
    addField(11, 6, false);
    showContour(1, {7.5});
    CurFrame->Style.GlobalContour[0].ColorMapFilter.ColorMapDistribution = 1;
    CurFrame->Style.FieldLayers.ShowMesh = true;
    FieldMapStyle_s &first = CurFrame->FieldAttributes[size_t(GetFieldMapForZone(CurFrame, 0))]->Style;
    FieldMapStyle_s &second = CurFrame->FieldAttributes[size_t(GetFieldMapForZone(CurFrame, 1))]->Style;
    ASSERT_NE(&first, &second);
    first.Mesh.Show = true;
    first.Mesh.MeshType = 1;  // OVERLAY
    first.Mesh.Color = 0;     // black
    second.Mesh.Show = false;
    auto meshLineShows = [&]() {
        // The I-line X = 5 at Y = 0.7 (F = 6.4, in the lower band), within a pixel either way.
        int px = int(CoordMap_X(CurTransforms.Grid2Screen, 5.0)), py = int(CoordMap_Y(CurTransforms.Grid2Screen, 0.7));
        for (int dx = -1; dx <= 1; dx++)
            if (pixel(px + dx, py) == Rgb{0, 0, 0}) return true;
        return false;
    };
    CurFrame->Style.FieldLayers.TwoDDrawOrder = 0;  // BYZONE
    render();
    EXPECT_FALSE(meshLineShows());
    CurFrame->Style.FieldLayers.TwoDDrawOrder = 1;  // BYLAYER
    render();
    EXPECT_TRUE(meshLineShows());
}

TEST_F(ContourRenderTest, AutoLabelsLieOnTheirLinesAtTheGroupsSpacing) {
    addField(81, 41, false);
    const std::vector<double> levels = {4.03, 10.07, 16.01};  // on no node
    showContour(0, levels);                                   // LINES
    ContourLabels_s &labels = CurFrame->Style.GlobalContour[0].Labels;
    labels.Show = true;
    labels.GenerateAutoLabels = true;
    labels.AutoLabelSpacing = 0.08;
    render();
    const std::vector<ContourLabel_s> &placed = GetContourLabels(CurFrame, 0);
    ASSERT_FALSE(placed.empty());
    const double frameHeight = std::fabs(CurTransforms.Frame2Screen.YScale);
    auto toFrame = [&](double x, double y, double *fx, double *fy) {
        *fx = CoordMap_X(CurTransforms.Grid2Screen, x) / frameHeight;
        *fy = CoordMap_Y(CurTransforms.Grid2Screen, y) / frameHeight;
    };
    // A grid cell's diagonal in frame units bounds the length of one segment of a line.
    double ax, ay, bx, by;
    toFrame(0, 0, &ax, &ay);
    toFrame(10.0 / 80, 5.0 / 40, &bx, &by);
    const double segment = std::hypot(bx - ax, by - ay);
    for (size_t level = 0; level < levels.size(); level++) {
        const double v = levels[level];
        std::vector<double> along;  // frame distance from the line's end at Y = 0 (or X = 0)
        // The line X + 2Y = v inside [0,10] x [0,5]: from (min(v,10), (v - min(v,10)) / 2) to
        // (max(v - 10, 0), min(v / 2, 5)).
        const double x0 = std::min(v, 10.0), y0 = (v - x0) / 2;
        const double x1 = std::max(v - 10.0, 0.0), y1 = (v - x1) / 2;
        double sx, sy, ex, ey;
        toFrame(x0, y0, &sx, &sy);
        toFrame(x1, y1, &ex, &ey);
        const double length = std::hypot(ex - sx, ey - sy);
        for (const ContourLabel_s &label : placed) {
            if (label.Level != int(level)) continue;
            EXPECT_EQ(label.Value, v);
            EXPECT_TRUE(label.IsAuto);
            EXPECT_NEAR(field(label.X, label.Y), v, 1e-9);
            double fx, fy;
            toFrame(label.X, label.Y, &fx, &fy);
            along.push_back(std::hypot(fx - sx, fy - sy));
        }
        std::sort(along.begin(), along.end());
        // One label per spacing walked, the first after a random part of it.
        EXPECT_GE(double(along.size()), std::floor(length / 0.08) - 1) << v;
        EXPECT_LE(double(along.size()), std::floor(length / 0.08) + 1) << v;
        for (size_t n = 1; n < along.size(); n++) {
            EXPECT_GE(along[n] - along[n - 1], 0.08 - 2 * segment) << v;
            EXPECT_LE(along[n] - along[n - 1], 0.08 + 2 * segment) << v;
        }
    }
    // A second drawing makes the same auto labels afresh.
    std::vector<ContourLabel_s> first = placed;
    render();
    const std::vector<ContourLabel_s> &again = GetContourLabels(CurFrame, 0);
    ASSERT_EQ(again.size(), first.size());
    for (size_t n = 0; n < first.size(); n++) EXPECT_EQ(again[n].X, first[n].X);
}

}  // namespace
