// Contour tracing and cutting on hand-made cells: the edge-crossing rule and the nudge of a value
// on a level, the exact points and their order on small ordered and FE zones (boundary order,
// exit search, neighbours, saddles), the planes of a volume with their node strides, closed lines
// traced once, the MAXPTSINALINE cut, lines that end at a blanked hole, cell-local segments; band
// polygons checked by area and by the values at their vertices; the band levels of a flood; line
// patterns; label text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "base/field/colormap.h"
#include "base/field/contlevel.h"
#include "base/field/contour.h"
#include "base/field/proccell.h"
#include "base/field/setup.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/plot/fieldmap.h"
#include "base/plot/solntime.h"
#include "data/data_fixture.h"

namespace {

struct Pt {
    LgIndex_t Cell, I0, I1;
    double Fract;
};
struct TracedLine {
    std::vector<Pt> Points;
    IJKPlanes_e Plane;
    int Level;
    double Value;
};

bool recordLine(CZInfo_s *, CZData_s *, const LgIndex_t *cells, const LgIndex_t *i0, const LgIndex_t *i1,
                const double *fract, LgIndex_t count, IJKPlanes_e plane, int level, double value, long client) {
    auto &lines = *reinterpret_cast<std::vector<TracedLine> *>(client);
    TracedLine line{{}, plane, level, value};
    for (LgIndex_t n = 0; n < count; n++) line.Points.push_back({cells[n], i0[n], i1[n], fract[n]});
    lines.push_back(line);
    return true;
}

struct Pair {
    CZInfo_s *Info = nullptr;
    CZData_s *Data = nullptr;
    ~Pair() { ReleaseSetupZoneOrCOB(&Info, &Data); }
};

constexpr EntIndex_t FVar = 3;

class ContourTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        ResetCZBlankingHooks();
        savedBase = GeneralBase;
        makeDataSet(4, 0);
        CurFrame->Style.GlobalContour[0].Var = FVar;
    }
    void TearDown() override {
        ResetCZBlankingHooks();
        GeneralBase = savedBase;
        Interrupted = false;
        DataSetTest::TearDown();
    }

    // An ordered zone with X, Y, Z = i, j, k and F = f(i, j, k).
    EntIndex_t addGrid(LgIndex_t ni, LgIndex_t nj, LgIndex_t nk, const std::function<double(int, int, int)> &f) {
        EntIndex_t zone = dataSet()->NumZones;
        addZone(ni, nj, nk);
        for (EntIndex_t var = 0; var < 4; var++) {
            FieldData_a data = GetWritableNativeFieldDataPtr(dataSet(), zone, var);
            for (LgIndex_t n = 0; n < ni * nj * nk; n++) {
                int idx[3] = {int(n % ni), int((n / ni) % nj), int(n / (ni * nj))};
                SetFieldValue(data, n, var < 3 ? double(idx[var]) : f(idx[0], idx[1], idx[2]));
            }
        }
        return zone;
    }
    // An FE zone; node n at (n, n*n, 0) with F given per node.
    EntIndex_t addFE(ZoneType_e type, const std::vector<LgIndex_t> &nodes, const std::vector<double> &values) {
        EntIndex_t zone = dataSet()->NumZones;
        ZoneSpec_s spec;
        spec.Type = type;
        spec.NumPtsI = LgIndex_t(values.size());
        spec.NumPtsK = GetNodesPerElement(type);
        spec.NumPtsJ = LgIndex_t(nodes.size()) / spec.NumPtsK;
        EXPECT_TRUE(AddZone(&spec, nullptr, nullptr, zone, nullptr, nullptr, -1, false));
        std::copy(nodes.begin(), nodes.end(), GetZoneData(dataSet(), zone)->NodeMap->Nodes);
        for (EntIndex_t var = 0; var < 4; var++) {
            FieldData_a data = GetWritableNativeFieldDataPtr(dataSet(), zone, var);
            for (size_t n = 0; n < values.size(); n++)
                SetFieldValue(data, LgIndex_t(n),
                              var == 0   ? double(n)
                              : var == 1 ? double(n * n)
                              : var == 2 ? 0.0
                                         : values[n]);
        }
        return zone;
    }
    std::unique_ptr<Pair> setup(EntIndex_t zone, const std::function<void(FieldMapStyle_s &)> &style = {}) {
        FieldMapStyle_s map;
        map.Contour.ContourType = 0;  // LINES
        if (style) style(map);
        FieldLayers_s layers;
        layers.ShowContour = true;
        ZoneSetupInput_s input;
        input.DataSet = dataSet();
        input.DerivedList = GetFrameZoneList(CurFrame);
        input.Zone = zone;
        input.Is3D = GetZoneSpec(dataSet(), zone)->NumPtsK > 1 && !ZoneTypeIsFE(GetZoneSpec(dataSet(), zone)->Type);
        input.FieldMap = &map;
        input.FieldLayers = &layers;
        input.GlobalContour = CurFrame->Style.GlobalContour;
        auto pair = std::make_unique<Pair>();
        EXPECT_TRUE(SetupZone(&input, false, false, &pair->Info, &pair->Data));
        EXPECT_NE(pair->Data->Nodal[CZVar_Contour], nullptr);
        return pair;
    }
    std::vector<TracedLine> trace(Pair &pair, double value, int level = 0) {
        std::vector<TracedLine> lines;
        FieldData_a var = pair.Data->Nodal[CZVar_Contour];
        auto client = reinterpret_cast<long>(&lines);
        bool ok = pair.Info->IsFE
                      ? ProcessFELevelLine(pair.Info, pair.Data, level, value, var, nullptr, recordLine, client)
                      : ProcessOrderedLevelLine(pair.Info, pair.Data, level, value, var, nullptr, recordLine, client);
        EXPECT_TRUE(ok);
        return lines;
    }
    double f(EntIndex_t zone, LgIndex_t node) { return value(zone, FVar, node); }

    GeneralBase_s savedBase;
};

void expectPoint(const Pt &p, LgIndex_t cell, LgIndex_t i0, LgIndex_t i1, double fract) {
    EXPECT_EQ(p.Cell, cell);
    EXPECT_EQ(p.I0, i0);
    EXPECT_EQ(p.I1, i1);
    EXPECT_DOUBLE_EQ(p.Fract, fract);
}

// ---- edges --------------------------------------------------------------------------------------

TEST(ContourEdge, ANodeOnTheLevelCountsAsAboveAndIsNudged) {
    EXPECT_TRUE(ContourEdgeIsCrossed(1.0, 2.0, 1.5));
    EXPECT_TRUE(ContourEdgeIsCrossed(2.0, 1.0, 1.5));
    EXPECT_TRUE(ContourEdgeIsCrossed(1.0, 0.0, 1.0));  // on the level (above) to below
    EXPECT_TRUE(ContourEdgeIsCrossed(0.0, 1.0, 1.0));
    EXPECT_FALSE(ContourEdgeIsCrossed(1.0, 2.0, 1.0));  // on the level and above: both above
    EXPECT_FALSE(ContourEdgeIsCrossed(1.0, 1.0, 1.0));  // all on the level: nothing
    EXPECT_FALSE(ContourEdgeIsCrossed(0.0, 0.5, 1.0));
    EXPECT_FALSE(ContourEdgeIsCrossed(NAN, 2.0, 1.0));
    EXPECT_FALSE(ContourEdgeIsCrossed(0.0, NAN, 1.0));

    EXPECT_DOUBLE_EQ(ContourEdgeFraction(1.5, 1.0, 3.0), 0.25);
    EXPECT_DOUBLE_EQ(ContourEdgeFraction(1.5, 3.0, 1.0), 0.75);
    EXPECT_DOUBLE_EQ(ContourEdgeFraction(7.0, 4.0, 4.0), 0.5);
    // The end on the level moves up by |a - b| / 10000: from a = 1 towards b = 0 the fraction is
    // (1 - 1.0001) / (0 - 1.0001); from a = 0 towards b = 1 it is 1 / 1.0001.
    EXPECT_NEAR(ContourEdgeFraction(1.0, 1.0, 0.0), 0.0001 / 1.0001, 1e-15);
    EXPECT_NEAR(ContourEdgeFraction(1.0, 0.0, 1.0), 1.0 / 1.0001, 1e-15);
    EXPECT_GT(ContourEdgeFraction(1.0, 1.0, 0.0), 0.0);
    // The move is never below 1e-150.
    EXPECT_DOUBLE_EQ(ContourEdgeFraction(0.0, 0.0, -1e-160), 1e-150 / (1e-160 + 1e-150));
}

TEST_F(ContourTest, NodeFormsReadTheVariableLessTheOffset) {
    EntIndex_t zone = addGrid(3, 1, 1, [](int i, int, int) { return 10.0 * i; });
    FieldData_a var = GetReadableNativeFieldDataPtr(dataSet(), zone, FVar);
    FieldData_a offset = GetReadableNativeFieldDataPtr(dataSet(), zone, 0);  // X = i
    double fract = -1;
    EXPECT_TRUE(IsCellEdgeIntersected(5.0, 0, 1, var, nullptr, &fract));
    EXPECT_DOUBLE_EQ(fract, 0.5);
    EXPECT_FALSE(IsCellEdgeIntersected(25.0, 0, 1, var, nullptr, &fract));
    // Differences F - X: 0, 9, 18.
    EXPECT_TRUE(IsCellEdgeIntersected(12.0, 1, 2, var, offset, &fract));
    EXPECT_DOUBLE_EQ(fract, 3.0 / 9.0);
    GetCellEdgeFraction(10.0, 0, 1, var, nullptr, &fract);  // 10 is node 1's value: nudged
    EXPECT_DOUBLE_EQ(fract, 10.0 / (10.0 + 0.001));
}

// ---- ordered lines ------------------------------------------------------------------------------

TEST_F(ContourTest, OrderedLineOnHandMadeCellsComesOutPointByPoint) {
    // Nodes 0 1 2 in row 0 (F = 0), 3 4 5 in row 1 (F = 4); level 1 crosses the three J edges at
    // a quarter of the way up. The first boundary side with a mark is the column at the high end
    // of A (edge 0 of cell 1); from entry edge 0 the exit search runs 1, 2 and leaves by edge 2,
    // which joins c+B and c; the last point lies off the plane, stored under cell -1.
    EntIndex_t zone = addGrid(3, 2, 1, [](int, int j, int) { return 4.0 * j; });
    auto pair = setup(zone);
    std::vector<TracedLine> lines = trace(*pair, 1.0, 7);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Plane, IJKPlanes_K);
    EXPECT_EQ(lines[0].Level, 7);
    EXPECT_EQ(lines[0].Value, 1.0);
    ASSERT_EQ(lines[0].Points.size(), 3u);
    expectPoint(lines[0].Points[0], 1, 2, 5, 0.25);   // edge 0 of cell 1: c+A, c+A+B
    expectPoint(lines[0].Points[1], 1, 4, 1, 0.75);   // edge 2 of cell 1: c+B, c
    expectPoint(lines[0].Points[2], -1, 3, 0, 0.75);  // edge 2 of cell 0, off the plane
}

TEST_F(ContourTest, AllCornersOnTheLevelDrawNothing) {
    EntIndex_t zone = addGrid(3, 3, 1, [](int, int, int) { return 2.0; });
    auto pair = setup(zone);
    EXPECT_TRUE(trace(*pair, 2.0).empty());
    EXPECT_TRUE(trace(*pair, 1.0).empty());
}

TEST_F(ContourTest, OrderedSaddleCutsOffTheCornersOfEdgePairsTwoThreeAndZeroOne) {
    // One cell, corners c=0 (1), c+A=1 (0), c+A+B=3 (1), c+B=2 (0): all four edges crossed. The
    // low-B row starts at edge 3 (odd: search 2 first), the high-A column at edge 0 (even: 1).
    EntIndex_t zone = addGrid(2, 2, 1, [](int i, int j, int) { return (i + j) % 2 == 0 ? 1.0 : 0.0; });
    auto pair = setup(zone);
    std::vector<TracedLine> lines = trace(*pair, 0.5);
    ASSERT_EQ(lines.size(), 2u);
    ASSERT_EQ(lines[0].Points.size(), 2u);
    expectPoint(lines[0].Points[0], 0, 1, 0, 0.5);   // edge 3: c+A, c
    expectPoint(lines[0].Points[1], -1, 2, 0, 0.5);  // edge 2: c+B, c
    ASSERT_EQ(lines[1].Points.size(), 2u);
    expectPoint(lines[1].Points[0], 0, 1, 3, 0.5);   // edge 0: c+A, c+A+B
    expectPoint(lines[1].Points[1], -1, 2, 3, 0.5);  // edge 1: c+B, c+B+A
}

TEST_F(ContourTest, AClosedLineIsTracedOnceAndClosesOnItsStart) {
    // A bump at (2,2) of a 5 x 5 grid: level 0.5 crosses the four edges from the peak once each.
    EntIndex_t zone = addGrid(5, 5, 1, [](int i, int j, int) { return i == 2 && j == 2 ? 1.0 : 0.0; });
    auto pair = setup(zone);
    std::vector<TracedLine> lines = trace(*pair, 0.5);
    ASSERT_EQ(lines.size(), 1u);
    const std::vector<Pt> &points = lines[0].Points;
    ASSERT_EQ(points.size(), 5u);
    std::set<std::pair<LgIndex_t, LgIndex_t>> edges;
    for (const Pt &p : points) {
        edges.insert({std::min(p.I0, p.I1), std::max(p.I0, p.I1)});
        EXPECT_DOUBLE_EQ(p.I0 == 12 ? p.Fract : 1.0 - p.Fract, 0.5);
    }
    EXPECT_EQ(edges, (std::set<std::pair<LgIndex_t, LgIndex_t>>{{7, 12}, {11, 12}, {12, 13}, {12, 17}}));
    // The last point is the first one reached again from the other side.
    EXPECT_EQ(std::min(points[0].I0, points[0].I1), std::min(points[4].I0, points[4].I1));
    EXPECT_EQ(std::max(points[0].I0, points[0].I1), std::max(points[4].I0, points[4].I1));
    // Every mark was used: a second level on the same plane is traced from scratch alike.
    EXPECT_EQ(trace(*pair, 0.5).size(), 1u);
}

TEST_F(ContourTest, ALineStopsAtMaxPtsInALine) {
    // F = j on 60 x 2: level 0.5 crosses all 60 J edges in one line, traced from the high-A end.
    EntIndex_t zone = addGrid(60, 2, 1, [](int, int j, int) { return double(j); });
    auto pair = setup(zone);
    std::vector<TracedLine> whole = trace(*pair, 0.5);
    ASSERT_EQ(whole.size(), 1u);
    EXPECT_EQ(whole[0].Points.size(), 60u);
    GeneralBase.MaxPtsInALine = 10;
    std::vector<TracedLine> cut = trace(*pair, 0.5);
    ASSERT_EQ(cut.size(), 1u);  // the rest of the line is dropped, not traced again
    ASSERT_EQ(cut[0].Points.size(), 10u);
    for (size_t n = 0; n < 10; n++)
        EXPECT_EQ(std::min(cut[0].Points[n].I0, cut[0].Points[n].I1), LgIndex_t(59 - n)) << n;
}

TEST_F(ContourTest, VolumePlanesUseTheirOwnStridesAndCrossEveryEdgeOnce) {
    // F = i + 2j + 4k on a 3 x 4 x 5 block, boundary faces: each of the six planes gets lines
    // whose points lie on the plane's edges (I planes: strides I and I x J; J planes: 1 and I x J;
    // K planes: 1 and I), and together they hold every crossed edge of the plane exactly once
    // (the closing point of a closed line aside).
    const int ni = 3, nj = 4, nk = 5;
    auto field = [](int i, int j, int k) { return i + 2.0 * j + 4.0 * k; };
    EntIndex_t zone = addGrid(ni, nj, nk, field);
    auto pair = setup(zone);
    const double level = 9.5;
    std::vector<TracedLine> lines = trace(*pair, level);
    const LgIndex_t strides[3][2] = {{ni, ni * nj}, {1, ni * nj}, {1, ni}};
    auto indexOf = [&](LgIndex_t n, int d) { return d == 0 ? n % ni : d == 1 ? (n / ni) % nj : n / (ni * nj); };
    const LgIndex_t dims[3] = {ni, nj, nk};
    std::map<std::pair<int, LgIndex_t>, std::set<std::pair<LgIndex_t, LgIndex_t>>> found;  // (dir, plane) -> edges
    for (const TracedLine &line : lines) {
        int d = line.Plane;
        ASSERT_LT(d, 3);
        LgIndex_t plane = indexOf(line.Points[0].I0, d);
        EXPECT_TRUE(plane == 0 || plane == dims[d] - 1);
        for (const Pt &p : line.Points) {
            EXPECT_EQ(indexOf(p.I0, d), plane);
            EXPECT_EQ(indexOf(p.I1, d), plane);
            LgIndex_t step = std::abs(p.I1 - p.I0);
            EXPECT_TRUE(step == strides[d][0] || step == strides[d][1]) << "plane " << d << " step " << step;
            double a = field(int(p.I0 % ni), int((p.I0 / ni) % nj), int(p.I0 / (ni * nj)));
            double b = field(int(p.I1 % ni), int((p.I1 / ni) % nj), int(p.I1 / (ni * nj)));
            EXPECT_NEAR(a + p.Fract * (b - a), level, 1e-12);
            found[{d, plane}].insert({std::min(p.I0, p.I1), std::max(p.I0, p.I1)});
        }
    }
    // Brute force: the crossed edges of each boundary plane.
    for (int d = 0; d < 3; d++)
        for (LgIndex_t plane : {LgIndex_t(0), dims[d] - 1}) {
            std::set<std::pair<LgIndex_t, LgIndex_t>> crossed;
            for (LgIndex_t n = 0; n < ni * nj * nk; n++) {
                if (indexOf(n, d) != plane) continue;
                for (int s = 0; s < 2; s++) {
                    int other = d == 0 ? (s == 0 ? 1 : 2) : d == 1 ? (s == 0 ? 0 : 2) : (s == 0 ? 0 : 1);
                    if (indexOf(n, other) + 1 >= dims[other]) continue;
                    LgIndex_t m = n + strides[d][s];
                    if (ContourEdgeIsCrossed(f(zone, n), f(zone, m), level)) crossed.insert({n, m});
                }
            }
            EXPECT_EQ((found[{d, plane}]), crossed) << "direction " << d << " plane " << plane;
        }
}

TEST_F(ContourTest, LinesEndOpenAtABlankedHole) {
    // F = j on 4 x 2: one line through three cells; blanking the middle cell leaves two open
    // lines of two points, the right one first (high-A column), each ending at the hole.
    EntIndex_t zone = addGrid(4, 2, 1, [](int, int j, int) { return double(j); });
    auto pair = setup(zone);
    pair->Info->Blanking.Value.Include = true;
    pair->Info->Blanking.Value.Constraint[0].Include = true;
    ASSERT_TRUE(CZDataAllocStateArrays(pair->Info, pair->Data));
    pair->Data->BlankingActive = true;
    ASSERT_EQ(pair->Data->ElemStatePlane, IJKPlanes_K);
    pair->Data->ElemState[1] = CellBlankedCond_EntirelyBlanked;
    std::vector<TracedLine> lines = trace(*pair, 0.5);
    ASSERT_EQ(lines.size(), 2u);
    ASSERT_EQ(lines[0].Points.size(), 2u);
    expectPoint(lines[0].Points[0], 2, 3, 7, 0.5);
    expectPoint(lines[0].Points[1], 2, 6, 2, 0.5);
    ASSERT_EQ(lines[1].Points.size(), 2u);
    expectPoint(lines[1].Points[0], 0, 4, 0, 0.5);
    expectPoint(lines[1].Points[1], 0, 1, 5, 0.5);
}

// ---- FE lines -----------------------------------------------------------------------------------

TEST_F(ContourTest, FELineCrossesIntoTheNeighbourOverTheSharedEdge) {
    // Triangles (0,1,2) and (2,1,3); F = 0, 4, 0, 4. Level 1: the open line starts on edge 0 of
    // triangle 0 (no neighbour), leaves by edge 1 (even entry: search -1, so 2 then 1) into
    // triangle 1 through its edge 0 (same nodes 2-1), leaves by its edge 2 onto the boundary.
    EntIndex_t zone = addFE(ZoneType_FETriangle, {0, 1, 2, 2, 1, 3}, {0, 4, 0, 4});
    auto pair = setup(zone);
    std::vector<TracedLine> lines = trace(*pair, 1.0);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Plane, IJKPlanes_None);
    ASSERT_EQ(lines[0].Points.size(), 3u);
    expectPoint(lines[0].Points[0], 0, 0, 1, 0.25);
    expectPoint(lines[0].Points[1], 0, 1, 2, 0.75);
    expectPoint(lines[0].Points[2], -1, 3, 2, 0.75);
}

TEST_F(ContourTest, FEQuadSaddlePairsEdgesByTheOddEvenRule) {
    // One quadrilateral, F = 1, 0, 1, 0: all edges on the boundary and crossed. Edge 0 (even)
    // searches 3 first, edge 1 (odd) searches 2: the lines cut off nodes 0 and 2.
    EntIndex_t zone = addFE(ZoneType_FEQuad, {0, 1, 2, 3}, {1, 0, 1, 0});
    auto pair = setup(zone);
    std::vector<TracedLine> lines = trace(*pair, 0.5);
    ASSERT_EQ(lines.size(), 2u);
    ASSERT_EQ(lines[0].Points.size(), 2u);
    expectPoint(lines[0].Points[0], 0, 0, 1, 0.5);
    expectPoint(lines[0].Points[1], -1, 3, 0, 0.5);
    ASSERT_EQ(lines[1].Points.size(), 2u);
    expectPoint(lines[1].Points[0], 0, 1, 2, 0.5);
    expectPoint(lines[1].Points[1], -1, 2, 3, 0.5);
}

TEST_F(ContourTest, FEClosedLineRoundAPeakNode) {
    // A fan of four triangles round node 0 (F = 1), outer nodes F = 0: one closed line of four
    // crossings and the closing point.
    EntIndex_t zone = addFE(ZoneType_FETriangle, {0, 1, 2, 0, 2, 3, 0, 3, 4, 0, 4, 1}, {1, 0, 0, 0, 0});
    auto pair = setup(zone);
    std::vector<TracedLine> lines = trace(*pair, 0.25);
    ASSERT_EQ(lines.size(), 1u);
    ASSERT_EQ(lines[0].Points.size(), 5u);
    std::set<LgIndex_t> outer;
    for (const Pt &p : lines[0].Points) {
        LgIndex_t other = p.I0 == 0 ? p.I1 : p.I0;
        EXPECT_TRUE(p.I0 == 0 || p.I1 == 0);
        EXPECT_DOUBLE_EQ(p.I0 == 0 ? p.Fract : 1.0 - p.Fract, 0.75);
        outer.insert(other);
    }
    EXPECT_EQ(outer, (std::set<LgIndex_t>{1, 2, 3, 4}));
}

// ---- cell-local lines ---------------------------------------------------------------------------

TEST_F(ContourTest, CellLocalSegmentsCutOffCornersOneAndThreeOfASaddle) {
    EntIndex_t zone = addGrid(3, 2, 1, [](int i, int j, int) {
        // Cell 0: corners 0 (0), 1 (1), 4 (0), 3 (1): a saddle. Cell 1: 1 (1), 2 (1), 5 (0), 4 (0).
        static const double values[2][3] = {{0, 1, 1}, {1, 0, 0}};
        return values[j][i];
    });
    auto pair = setup(zone);
    CurFrame->Style.GlobalContour[0].Levels = {0.5, 2.0};
    std::vector<TracedLine> segments;
    // An ordered object's own end planes are the assembled path's; approximated, all cells are
    // walked here.
    EXPECT_TRUE(ProcessContLinesOnSurfCells(pair->Info, pair->Data, recordLine, reinterpret_cast<long>(&segments)));
    EXPECT_TRUE(segments.empty());
    pair->Data->IsApprox = true;
    EXPECT_TRUE(ProcessContLinesOnSurfCells(pair->Info, pair->Data, recordLine, reinterpret_cast<long>(&segments)));
    ASSERT_EQ(segments.size(), 3u);
    for (const TracedLine &s : segments) {
        EXPECT_EQ(s.Level, 0);
        EXPECT_EQ(s.Value, 0.5);
        ASSERT_EQ(s.Points.size(), 2u);
    }
    // Saddle: N1N2 with N4N1 (round N1 = 0), then N2N3 with N3N4 (round N3 = 4).
    expectPoint(segments[0].Points[0], 0, 0, 1, 0.5);
    expectPoint(segments[0].Points[1], 0, 3, 0, 0.5);
    expectPoint(segments[1].Points[0], 0, 1, 4, 0.5);
    expectPoint(segments[1].Points[1], 0, 4, 3, 0.5);
    // Cell 1: edges N2N3 (2-5) and N4N1 (4-1), in cell order.
    expectPoint(segments[2].Points[0], 1, 2, 5, 0.5);
    expectPoint(segments[2].Points[1], 1, 4, 1, 0.5);
}

TEST_F(ContourTest, FEBrickLinesComeFromItsFacesCellByCellAndExtractIntoOneLoop) {
    // One brick, F = 0 on its bottom face (nodes 0-3) and 1 on its top (4-7): level 0.5 crosses
    // the four upright edges, one segment on each side face; extraction joins them at the shared
    // edges into one zone of four points and four segments.
    EntIndex_t zone = addFE(ZoneType_FEBrick, {0, 1, 2, 3, 4, 5, 6, 7}, {0, 0, 0, 0, 1, 1, 1, 1});
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian3D, false, false));
    UpdateFrameFlagsOnSolutionTimeChange(CurFrame);
    CurFrame->Style.FieldLayers.ShowContour = true;
    CurFrame->Style.GlobalContour[0].Levels = {0.5};
    FieldMapStyle_s &style = CurFrame->FieldAttributes[size_t(GetFieldMapForZone(CurFrame, zone))]->Style;
    style.Contour.ContourType = 0;
    style.Surfaces.SurfacesToPlot = SurfacesToPlot_BoundaryFaces;
    Set_a *zones = AllocSet(true);
    AddToSet(zones, zone, true);
    ASSERT_TRUE(ExtractZonesFromContourLines(0, ContLineCreateMode_OneZonePerContourLevel, zones));
    DeallocSet(&zones);
    ASSERT_EQ(dataSet()->NumZones, zone + 2);
    const EntIndex_t lines = EntIndex_t(zone + 1);
    const ZoneSpec_s *spec = GetZoneSpec(dataSet(), lines);
    EXPECT_EQ(spec->Type, ZoneType_FELineSeg);
    EXPECT_STREQ(spec->Name, "Contour line: C=0.5");
    ASSERT_EQ(spec->NumPtsI, 4);
    ASSERT_EQ(spec->NumPtsJ, 4);
    // Each point halfway up an upright edge n - n+4: X = (n + n + 4) / 2, F = 0.5.
    std::set<double> xs;
    for (LgIndex_t n = 0; n < 4; n++) {
        EXPECT_DOUBLE_EQ(value(lines, FVar, n), 0.5);
        xs.insert(value(lines, 0, n));
    }
    EXPECT_EQ(xs, (std::set<double>{2, 3, 4, 5}));
    // Every point ends two segments: a closed loop.
    NodeMap_a nodeMap = GetZoneData(dataSet(), lines)->NodeMap;
    std::map<LgIndex_t, int> ends;
    for (LgIndex_t e = 0; e < 4; e++) {
        ends[NodeMapGetNode(nodeMap, e, 0)]++;
        ends[NodeMapGetNode(nodeMap, e, 1)]++;
    }
    for (auto &entry : ends) EXPECT_EQ(entry.second, 2);
}

// ---- band cutting -------------------------------------------------------------------------------

struct Piece {
    std::vector<FloodPoint_s> Points;
    int Band;
};

bool recordPiece(const FloodPoint_s *points, int count, int band, void *client) {
    static_cast<std::vector<Piece> *>(client)->push_back({std::vector<FloodPoint_s>(points, points + count), band});
    return true;
}

struct XY {
    double X, Y;
};

double polygonArea(const std::vector<XY> &p) {
    double twice = 0;
    for (size_t k = 0; k < p.size(); k++) twice += p[k].X * p[(k + 1) % p.size()].Y - p[(k + 1) % p.size()].X * p[k].Y;
    return std::fabs(twice) / 2;
}

std::vector<XY> placed(const Piece &piece, const std::map<LgIndex_t, XY> &at) {
    std::vector<XY> out;
    for (const FloodPoint_s &p : piece.Points) {
        XY a = at.at(p.I0), b = at.at(p.I1);
        out.push_back({a.X + p.Fract * (b.X - a.X), a.Y + p.Fract * (b.Y - a.Y)});
    }
    return out;
}

TEST(ContourBands, TriangleBandsHaveTheAreasOfALinearField) {
    // F = x + y on the triangle (0,0) (1,0) (0,1): the part up to t has area t^2 / 2.
    const LgIndex_t corners[3] = {0, 1, 2};
    const double values[3] = {0, 1, 1};
    const double levels[2] = {0.25, 0.75};
    std::vector<Piece> pieces;
    ASSERT_TRUE(CutCellIntoBands(corners, values, 3, levels, 2, recordPiece, &pieces));
    ASSERT_EQ(pieces.size(), 3u);
    std::map<LgIndex_t, XY> at = {{0, {0, 0}}, {1, {1, 0}}, {2, {0, 1}}};
    const double expected[3] = {0.25 * 0.25 / 2, (0.75 * 0.75 - 0.25 * 0.25) / 2, 0.5 - 0.75 * 0.75 / 2};
    for (const Piece &piece : pieces) {
        ASSERT_GE(piece.Band, 0);
        ASSERT_LE(piece.Band, 2);
        EXPECT_NEAR(polygonArea(placed(piece, at)), expected[piece.Band], 1e-12) << piece.Band;
        const double lo = piece.Band > 0 ? levels[piece.Band - 1] : -1e300,
                     hi = piece.Band < 2 ? levels[piece.Band] : 1e300;
        for (const FloodPoint_s &p : piece.Points) {
            XY xy = placed({{p}, 0}, at)[0];
            EXPECT_NEAR(xy.X + xy.Y, p.Value, 1e-12);
            EXPECT_GE(p.Value, lo - 1e-12);
            EXPECT_LE(p.Value, hi + 1e-12);
        }
    }
}

TEST(ContourBands, QuadrilateralsSplitOnlyWhenTheirBandsFormThreeRuns) {
    const std::map<LgIndex_t, XY> at = {{10, {0, 0}}, {11, {1, 0}}, {12, {1, 1}}, {13, {0, 1}}};
    const LgIndex_t corners[4] = {10, 11, 12, 13};
    const double levels[1] = {0.5};
    // a, a, b, b: two runs, cut whole into one polygon per band.
    {
        const double values[4] = {0, 0, 1, 1};
        std::vector<Piece> pieces;
        ASSERT_TRUE(CutCellIntoBands(corners, values, 4, levels, 1, recordPiece, &pieces));
        ASSERT_EQ(pieces.size(), 2u);
        EXPECT_NEAR(polygonArea(placed(pieces[0], at)) + polygonArea(placed(pieces[1], at)), 1.0, 1e-12);
        EXPECT_EQ(pieces[0].Points.size(), 4u);
    }
    // a, b, a, b: four runs, split at the third change (between corners 2 and 3) into the
    // triangles (12, 13, 10) and (10, 11, 12); every piece lies in one of those halves.
    {
        const double values[4] = {0, 1, 0, 1};
        std::vector<Piece> pieces;
        ASSERT_TRUE(CutCellIntoBands(corners, values, 4, levels, 1, recordPiece, &pieces));
        ASSERT_EQ(pieces.size(), 4u);
        double total = 0;
        for (const Piece &piece : pieces) {
            std::vector<XY> polygon = placed(piece, at);
            total += polygonArea(polygon);
            bool upperLeft = true, lowerRight = true;  // the halves either side of the diagonal 10-12
            for (const XY &p : polygon) {
                upperLeft = upperLeft && p.Y >= p.X - 1e-12;
                lowerRight = lowerRight && p.Y <= p.X + 1e-12;
            }
            EXPECT_TRUE(upperLeft || lowerRight);
        }
        EXPECT_NEAR(total, 1.0, 1e-12);
    }
}

TEST(ContourBands, CrossingsComeFromTheLowerNodeAndCornersOnALevelBelongBelow) {
    // Corners in falling node order: each crossing is stored from the lower node number, so two
    // cells that share an edge find the same point.
    const LgIndex_t corners[3] = {9, 5, 2};
    const double values[3] = {0, 2, 1};
    const double levels[1] = {1.0};  // corner 2 lies on the level: band 0
    std::vector<Piece> pieces;
    ASSERT_TRUE(CutCellIntoBands(corners, values, 3, levels, 1, recordPiece, &pieces));
    ASSERT_EQ(pieces.size(), 2u);
    for (const Piece &piece : pieces)
        for (const FloodPoint_s &p : piece.Points) {
            EXPECT_LE(p.I0, p.I1);
            if (p.I0 != p.I1) {
                EXPECT_EQ(p.Value, 1.0);
            }
        }
    auto holdsCorner = [](const Piece &piece, LgIndex_t node) {
        for (const FloodPoint_s &p : piece.Points)
            if (p.I0 == node && p.I1 == node) return true;
        return false;
    };
    EXPECT_EQ(pieces[0].Band, 0);
    EXPECT_TRUE(holdsCorner(pieces[0], 2));
    EXPECT_FALSE(holdsCorner(pieces[1], 2));
    // A value that is not a number gives no polygon.
    const double bad[3] = {0, NAN, 1};
    pieces.clear();
    ASSERT_TRUE(CutCellIntoBands(corners, bad, 3, levels, 1, recordPiece, &pieces));
    EXPECT_TRUE(pieces.empty());
}

// ---- flood levels, patterns, labels -------------------------------------------------------------

TEST_F(ContourTest, FloodLevelsByContourTypeAndDistribution) {
    EntIndex_t zone = addGrid(2, 2, 1, [](int i, int, int) { return double(i); });
    GlobalContour_s &contour = CurFrame->Style.GlobalContour[0];
    contour.Levels = {0.2, 0.4, 0.6};
    auto pair = setup(zone, [](FieldMapStyle_s &map) { map.Contour.ContourType = 1; });
    std::vector<double> levels;
    bool banded = false;
    contour.ColorMapFilter.ColorMapDistribution = 1;
    SetupLevelsForContourFlooding(pair->Info, &levels, &banded);
    EXPECT_TRUE(banded);
    EXPECT_EQ(levels, contour.Levels);
    pair->Info->FieldMap->Contour.ContourType = 3;  // AVERAGECELL: no levels
    SetupLevelsForContourFlooding(pair->Info, &levels, &banded);
    EXPECT_TRUE(levels.empty());
    pair->Info->FieldMap->Contour.ContourType = 1;
    contour.ColorMapFilter.ColorMapDistribution = 0;  // continuous, fast: no levels
    contour.ColorMapFilter.UseFastApproxContinuousFlood = true;
    SetupLevelsForContourFlooding(pair->Info, &levels, &banded);
    EXPECT_TRUE(levels.empty());

    // Continuous and exact: the control points of the map in every cycle of CMIN..CMAX.
    contour.ColorMapFilter.UseFastApproxContinuousFlood = false;
    contour.ColorMapFilter.CMin = 0;
    contour.ColorMapFilter.CMax = 8;
    contour.ColorMapFilter.ColorMapCycles = 2;
    GeneralBase.LinkColorMaps = true;
    ColorMap_s &map = GeneralBase.ColorMapGroups[0];
    map.ContourColorMap = ContourColorMap_UserDef;
    // Points at 0, 0.25, 1: the last one only closes the last cycle.
    map.UserDefined.NumControlPoints = 3;
    map.UserDefined.ControlPoint[0].Location = 0.0;
    map.UserDefined.ControlPoint[1].Location = 0.25;
    map.UserDefined.ControlPoint[2].Location = 1.0;
    SetupLevelsForContourFlooding(pair->Info, &levels, &banded);
    EXPECT_FALSE(banded);
    EXPECT_EQ(levels, (std::vector<double>{0, 1, 4, 5, 8}));
    // A first point past 0: each cycle's start is a level of its own.
    map.UserDefined.ControlPoint[0].Location = 0.5;
    map.UserDefined.ControlPoint[1].Location = 0.75;
    map.UserDefined.NumControlPoints = 2;
    SetupLevelsForContourFlooding(pair->Info, &levels, &banded);
    EXPECT_EQ(levels, (std::vector<double>{0, 2, 3, 4, 6, 7}));
    // WILD has no control points: only the cycle starts.
    map.ContourColorMap = ContourColorMap_Wild;
    SetupLevelsForContourFlooding(pair->Info, &levels, &banded);
    EXPECT_EQ(levels, (std::vector<double>{0, 4}));
}

TEST(ContourLinePattern, ByLineMode) {
    ContourLayer_s layer;
    layer.LinePattern = LinePattern_DashDot;
    layer.PatternLength = 0.03;
    ContourLineStyle_s style;
    style.LineSkip = 2;
    style.PatternLength = 0.05;
    LinePattern_e pattern;
    double length;
    style.ContourLineMode = 0;  // USEZONELINETYPE
    GetContourLinePattern(layer, style, -1.0, 1, &pattern, &length);
    EXPECT_EQ(pattern, LinePattern_DashDot);
    EXPECT_EQ(length, 0.03);
    style.ContourLineMode = 1;  // SKIPTOSOLID: levels 0, 3, 6 solid
    for (int level = 0; level < 7; level++) {
        GetContourLinePattern(layer, style, 1.0, level, &pattern, &length);
        EXPECT_EQ(pattern, level % 3 == 0 ? LinePattern_Solid : LinePattern_Dashed) << level;
        EXPECT_EQ(length, 0.05);
    }
    style.ContourLineMode = 2;  // DASHNEGATIVE
    GetContourLinePattern(layer, style, -0.1, 0, &pattern, &length);
    EXPECT_EQ(pattern, LinePattern_Dashed);
    GetContourLinePattern(layer, style, 0.0, 0, &pattern, &length);
    EXPECT_EQ(pattern, LinePattern_Solid);
}

TEST(ContourLabelText, NumberFormats) {
    auto format = [](int formatting, int precision) {
        ValueFormat_s f;
        f.Formatting = formatting;
        f.Precision = precision;
        return f;
    };
    EXPECT_EQ(EncodeContourLabelValue(2.5, format(3, 4)), "2.5");
    EXPECT_EQ(EncodeContourLabelValue(1e-20, format(3, 4)), "1E-20");
    EXPECT_EQ(EncodeContourLabelValue(2.6, format(0, 0)), "3");
    EXPECT_EQ(EncodeContourLabelValue(-2.6, format(0, 0)), "-3");
    EXPECT_EQ(EncodeContourLabelValue(1e12, format(0, 0)), "2000000000");
    EXPECT_EQ(EncodeContourLabelValue(3.14159, format(1, 2)), "3.14");
    EXPECT_EQ(EncodeContourLabelValue(12345, format(2, 1)), "1.2E+04");
    EXPECT_EQ(EncodeContourLabelValue(1e123, format(2, 1)), "1.0E+123");
    EXPECT_EQ(EncodeContourLabelValue(1500, format(4, 1)), "1.5x10<sup>+03</sup>");
    EXPECT_EQ(EncodeContourLabelValue(1000, format(6, 0)), "10<sup>3</sup>");
    EXPECT_EQ(EncodeContourLabelValue(-1, format(6, 0)), "***");
    ValueFormat_s f = format(3, 4);
    f.RemoveLeadingZeros = true;
    EXPECT_EQ(EncodeContourLabelValue(0.5, f), ".5");
    EXPECT_EQ(EncodeContourLabelValue(-0.5, f), "-.5");
    f = format(3, 4);
    f.ShowNegativeSign = false;
    f.NegativePrefix = "(";
    f.NegativeSuffix = ")";
    f.ZeroSuffix = " z";
    EXPECT_EQ(EncodeContourLabelValue(-2, f), "(2)");
    EXPECT_EQ(EncodeContourLabelValue(0, f), "0 z");
    f = format(3, 4);
    f.ShowDecimalsOnWholeNumbers = true;
    EXPECT_EQ(EncodeContourLabelValue(3, f), "3.");
    EXPECT_EQ(EncodeContourLabelValue(3.5, f), "3.5");
}

TEST_F(ContourTest, LabelTextUsesTheGroupsSettledFormat) {
    GlobalContour_s &contour = CurFrame->Style.GlobalContour[0];
    contour.Levels = {0.5, 1.25, 2};
    contour.Labels.NumFormat.Formatting = 7;  // RANGEBESTFLOAT: fixed, two decimals for 1.25
    ValueFormat_s settled = GetFinalContourLabelValueFormat(0);
    EXPECT_EQ(settled.Formatting, 1);
    EXPECT_EQ(settled.Precision, 2);
    ContourLabel_s label;
    label.Level = 1;
    label.Value = 1.25;
    contour.Labels.LabelWithValue = true;
    EXPECT_EQ(GetContourLabelText(0, label), "1.25");
    label.Value = 2;
    EXPECT_EQ(GetContourLabelText(0, label), "2.00");
    contour.Labels.LabelWithValue = false;  // the level's number from 1, in the same format
    EXPECT_EQ(GetContourLabelText(0, label), "2.00");
    contour.Levels.push_back(1e30);  // an exponent anywhere: exponential for all
    EXPECT_EQ(GetFinalContourLabelValueFormat(0).Formatting, 2);

    // Labels kept per frame and group; auto ones go before a redraw, hand-made ones stay.
    ContourLabel_s manual;
    manual.IsAuto = false;
    AddContourLabel(CurFrame, 1, label);
    AddContourLabel(CurFrame, 1, manual);
    EXPECT_EQ(GetContourLabels(CurFrame, 1).size(), 2u);
    DeleteAllAutoContourLabels(CurFrame);
    ASSERT_EQ(GetContourLabels(CurFrame, 1).size(), 1u);
    EXPECT_FALSE(GetContourLabels(CurFrame, 1)[0].IsAuto);
    DeleteContourLabels(CurFrame, -1);
    EXPECT_TRUE(GetContourLabels(CurFrame, 1).empty());
}

}  // namespace
