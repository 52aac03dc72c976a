// Zone traversal: the cells, faces, lines and points the walkers visit on ordered zones of every
// shape and on every FE type, counted against formulas worked out here from the dimensions,
// ranges and skips; the corner order of ordered planes and of each FE face; strips that hand over
// exactly the cells a cell walk would; blanking and collapse; the fast and general value paths;
// subzone partitions and their min-max ranges against a brute-force scan, with and without the
// thread pool; and the degenerate zones.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "base/data/derived.h"
#include "base/field/proccell.h"
#include "base/field/procln.h"
#include "base/field/procpt.h"
#include "base/field/setup.h"
#include "base/field/zoneopt.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"
#include "data/data_fixture.h"

namespace {

using Nodes = std::vector<LgIndex_t>;

struct VisitedCell {
    std::array<LgIndex_t, 4> N;
    LgIndex_t Cell;
    IJKPlanes_e Plane;
    CellBlankedCond_e Cond;
};

struct Recorder {
    std::vector<VisitedCell> Cells;
    std::vector<std::array<LgIndex_t, 4>> OrderedStrips;  // start, stride, end, other stride
    std::vector<Nodes> FEStripElements, FEStripNodes;
    std::vector<std::array<LgIndex_t, 3>> Runs;  // start, stride, end
    std::vector<Nodes> ChainNodes, ChainElements;
    std::vector<std::pair<LgIndex_t, IJKPlanes_e>> Points;
    Nodes VolumeCells;
    bool StripsAreTriangles = false;  // count + 2 strip nodes, else 2 x count + 2
    int StopAfter = -1;  // a callback answers false at this call

    bool next() { return StopAfter < 0 || --StopAfter > 0; }
    long client() { return reinterpret_cast<long>(this); }
};

Recorder &recorderOf(long client) { return *reinterpret_cast<Recorder *>(client); }

bool recordCell(CZInfo_s *, CZData_s *, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t cell,
                IJKPlanes_e plane, CellBlankedCond_e cond, long client) {
    Recorder &r = recorderOf(client);
    r.Cells.push_back({{n1, n2, n3, n4}, cell, plane, cond});
    return r.next();
}

bool recordOrderedStrip(CZInfo_s *, CZData_s *, LgIndex_t start, LgIndex_t stride, LgIndex_t end, LgIndex_t other,
                        long client) {
    recorderOf(client).OrderedStrips.push_back({start, stride, end, other});
    return true;
}

bool recordFEStrip(CZInfo_s *, CZData_s *, const LgIndex_t *elements, const LgIndex_t *nodes, LgIndex_t count,
                   long client) {
    Recorder &r = recorderOf(client);
    r.FEStripElements.emplace_back(elements, elements + count);
    r.FEStripNodes.emplace_back(nodes, nodes + (r.StripsAreTriangles ? count + 2 : 2 * count + 2));
    return true;
}

bool recordRun(CZInfo_s *, CZData_s *, LgIndex_t start, LgIndex_t stride, LgIndex_t end, long client) {
    recorderOf(client).Runs.push_back({start, stride, end});
    return true;
}

bool recordChain(CZInfo_s *, CZData_s *, const LgIndex_t *nodes, const LgIndex_t *elements, LgIndex_t count,
                 long client) {
    Recorder &r = recorderOf(client);
    r.ChainNodes.emplace_back(nodes, nodes + count);
    r.ChainElements.emplace_back(elements, elements + count - 1);
    return true;
}

bool recordPoint(CZInfo_s *, CZData_s *, LgIndex_t point, IJKPlanes_e plane, long client) {
    Recorder &r = recorderOf(client);
    r.Points.emplace_back(point, plane);
    return r.next();
}

bool recordVolumeCell(CZInfo_s *, CZData_s *, LgIndex_t cell, long client) {
    recorderOf(client).VolumeCells.push_back(cell);
    return true;
}

// Cells a direction of n points has when stepped by s, the last one shortened.
LgIndex_t cellsAlong(LgIndex_t n, LgIndex_t s) { return n > 1 ? (n - 1 + s - 1) / s : 0; }

struct Pair {
    CZInfo_s *Info = nullptr;
    CZData_s *Data = nullptr;
    ~Pair() { ReleaseSetupZoneOrCOB(&Info, &Data); }
};

class TraversalTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        ResetCZBlankingHooks();
        savedFraction = GeneralBase.Interface.PercentageOfPointsToKeep;
        makeDataSet(3, 0);
    }
    void TearDown() override {
        ResetCZBlankingHooks();
        GeneralBase.Interface.PercentageOfPointsToKeep = savedFraction;
        Interrupted = false;
        DataSetTest::TearDown();
    }

    // An ordered zone whose X, Y, Z are i, j, k, so no two points share coordinates.
    EntIndex_t addOrdered(LgIndex_t i, LgIndex_t j, LgIndex_t k) {
        EntIndex_t zone = dataSet()->NumZones;
        addZone(i, j, k);
        for (EntIndex_t var = 0; var < 3; var++) {
            FieldData_a fieldData = GetWritableNativeFieldDataPtr(dataSet(), zone, var);
            for (LgIndex_t n = 0; n < i * j * k; n++) {
                LgIndex_t index[3] = {n % i, (n / i) % j, n / (i * j)};
                SetFieldValue(fieldData, n, double(index[var]));
            }
        }
        return zone;
    }

    // An FE zone of the type with the node map given element by element; node n stands at
    // (n, n * n, 0) so every node has coordinates of its own.
    EntIndex_t addFE(ZoneType_e type, LgIndex_t numNodes, const Nodes &nodes) {
        EntIndex_t zone = dataSet()->NumZones;
        ZoneSpec_s spec;
        spec.Type = type;
        spec.NumPtsI = numNodes;
        spec.NumPtsK = GetNodesPerElement(type);
        spec.NumPtsJ = LgIndex_t(nodes.size()) / spec.NumPtsK;
        EXPECT_TRUE(AddZone(&spec, nullptr, nullptr, zone, nullptr, nullptr, -1, false));
        std::copy(nodes.begin(), nodes.end(), GetZoneData(dataSet(), zone)->NodeMap->Nodes);
        for (EntIndex_t var = 0; var < 3; var++) {
            FieldData_a fieldData = GetWritableNativeFieldDataPtr(dataSet(), zone, var);
            for (LgIndex_t n = 0; n < numNodes; n++)
                SetFieldValue(fieldData, n, var == 0 ? double(n) : var == 1 ? double(n) * n : 0.0);
        }
        return zone;
    }

    std::unique_ptr<Pair> setup(EntIndex_t zone, const std::function<void(FieldMapStyle_s &)> &style = {},
                                bool applySkip = false) {
        FieldMapStyle_s fieldMap;
        if (style) style(fieldMap);
        FieldLayers_s layers;
        ZoneSetupInput_s input;
        input.DataSet = dataSet();
        input.DerivedList = GetFrameZoneList(CurFrame);
        input.Zone = zone;
        input.Is3D = true;
        input.FieldMap = &fieldMap;
        input.FieldLayers = &layers;
        auto pair = std::make_unique<Pair>();
        EXPECT_TRUE(SetupZone(&input, applySkip, false, &pair->Info, &pair->Data));
        return pair;
    }

    // Value blanking on, with state arrays that the test fills.
    static void enableValueBlanking(Pair &pair) {
        pair.Info->Blanking.Value.Include = true;
        pair.Info->Blanking.Value.Constraint[0].Include = true;
        ASSERT_TRUE(CZDataAllocStateArrays(pair.Info, pair.Data));
        pair.Data->BlankingActive = true;
    }

    static int countSurface(Pair &pair, int flags, LgIndex_t iSkip = 1, LgIndex_t jSkip = 1, LgIndex_t kSkip = 1) {
        int count = -1;
        EXPECT_TRUE(ProcessSurfaceCells(pair.Info, pair.Data, false, flags, iSkip, jSkip, kSkip, nullptr, nullptr,
                                        nullptr, 0, &count));
        return count;
    }
    static Recorder walkSurface(Pair &pair, int flags, LgIndex_t iSkip = 1, LgIndex_t jSkip = 1, LgIndex_t kSkip = 1) {
        Recorder r;
        int count = -1;
        EXPECT_TRUE(ProcessSurfaceCells(pair.Info, pair.Data, false, flags, iSkip, jSkip, kSkip, recordCell, nullptr,
                                        nullptr, r.client(), &count));
        EXPECT_EQ(count, int(r.Cells.size()));
        return r;
    }

    double savedFraction = 0.5;
};

// The corners an ordered plane cell must have, from its lowest corner and the skips: I planes
// (j,k) (j,k+dK) (j+dJ,k+dK) (j+dJ,k), J planes (i,k) (i+dI,k) (i+dI,k+dK) (i,k+dK), K planes
// (i,j) (i+dI,j) (i+dI,j+dJ) (i,j+dJ), each step shortened at the zone's edge.
std::array<LgIndex_t, 4> expectedPlaneCorners(LgIndex_t n1, IJKPlanes_e plane, const LgIndex_t dims[3],
                                              const LgIndex_t skips[3]) {
    LgIndex_t index[3] = {n1 % dims[0], (n1 / dims[0]) % dims[1], n1 / (dims[0] * dims[1])};
    LgIndex_t strides[3] = {1, dims[0], dims[0] * dims[1]};
    auto step = [&](int d) { return std::min(skips[d], dims[d] - 1 - index[d]) * strides[d]; };
    switch (plane) {
    case IJKPlanes_I: return {n1, n1 + step(2), n1 + step(1) + step(2), n1 + step(1)};
    case IJKPlanes_J: return {n1, n1 + step(0), n1 + step(0) + step(2), n1 + step(2)};
    default: return {n1, n1 + step(0), n1 + step(0) + step(1), n1 + step(1)};
    }
}

// ---- ordered surfaces ---------------------------------------------------------------------------

TEST_F(TraversalTest, OrderedPlaneCountsFollowSurfacesRangesAndSkips) {
    struct Case {
        LgIndex_t I, J, K;
        int Surfaces;
        IndexRange_s IRange, JRange, KRange;
        LgIndex_t Skips[3];
    } cases[] = {
        {5, 4, 3, SurfacesToPlot_BoundaryFaces, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {1, 1, 1}},
        {6, 5, 4, SurfacesToPlot_BoundaryFaces, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {2, 3, 2}},
        {5, 4, 3, SurfacesToPlot_All, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {1, 1, 1}},
        {7, 4, 5, SurfacesToPlot_All, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {4, 2, 3}},
        {9, 4, 3, SurfacesToPlot_IPlanes, {2, 0, 3}, {1, 0, 1}, {1, 0, 1}, {1, 1, 1}},
        {5, 6, 7, SurfacesToPlot_JKPlanes, {1, 0, 1}, {2, -1, 2}, {3, 5, 1}, {1, 2, 1}},
        {5, 6, 7, SurfacesToPlot_IJKPlanes, {1, 1, 1}, {6, 6, 1}, {1, 0, 6}, {1, 1, 1}},
        {6, 5, 1, SurfacesToPlot_BoundaryFaces, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {2, 2, 1}},  // IJ: K planes
        {6, 1, 5, SurfacesToPlot_All, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {1, 1, 3}},            // IK: J planes
        {1, 6, 5, SurfacesToPlot_ExposedCellFaces, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}, {1, 1, 1}},  // JK: I planes
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.I << "x" << c.J << "x" << c.K << " surfaces " << c.Surfaces);
        EntIndex_t zone = addOrdered(c.I, c.J, c.K);
        auto pair = setup(zone, [&](FieldMapStyle_s &map) {
            map.Surfaces.SurfacesToPlot = c.Surfaces;
            map.Surfaces.IRange = c.IRange;
            map.Surfaces.JRange = c.JRange;
            map.Surfaces.KRange = c.KRange;
        });
        const LgIndex_t dims[3] = {c.I, c.J, c.K};
        const IndexRange_s ranges[3] = {c.IRange, c.JRange, c.KRange};
        const bool isVolume = c.I > 1 && c.J > 1 && c.K > 1;
        // Planes per direction, worked out from the style as a user reads it.
        auto planeCount = [&](int d) -> LgIndex_t {
            bool wanted[3] = {true, true, true};
            int surfaces = c.Surfaces;
            if (!isVolume && (surfaces <= SurfacesToPlot_ExposedCellFaces || surfaces == SurfacesToPlot_All))
                surfaces = c.K == 1 ? SurfacesToPlot_KPlanes : c.J == 1 ? SurfacesToPlot_JPlanes : SurfacesToPlot_IPlanes;
            switch (surfaces) {
            case SurfacesToPlot_IPlanes: wanted[1] = wanted[2] = false; break;
            case SurfacesToPlot_JPlanes: wanted[0] = wanted[2] = false; break;
            case SurfacesToPlot_KPlanes: wanted[0] = wanted[1] = false; break;
            case SurfacesToPlot_JKPlanes: wanted[0] = false; break;
            default: break;
            }
            if (!wanted[d]) return 0;
            if (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces)
                return dims[d] > 1 ? 2 : 1;
            if (surfaces == SurfacesToPlot_All) return dims[d];
            LgIndex_t first = ranges[d].Min, last = ranges[d].Max <= 0 ? dims[d] + ranges[d].Max : ranges[d].Max;
            return last < first ? 0 : (last - first) / ranges[d].Skip + 1;
        };
        LgIndex_t expected = 0;
        static constexpr int a[3] = {1, 0, 0}, b[3] = {2, 2, 1};
        for (int d = 0; d < 3; d++)
            if (dims[a[d]] > 1 && dims[b[d]] > 1)
                expected += planeCount(d) * cellsAlong(dims[a[d]], c.Skips[a[d]]) * cellsAlong(dims[b[d]], c.Skips[b[d]]);
        EXPECT_EQ(countSurface(*pair, 0, c.Skips[0], c.Skips[1], c.Skips[2]), expected);

        Recorder r = walkSurface(*pair, 0, c.Skips[0], c.Skips[1], c.Skips[2]);
        std::set<std::pair<LgIndex_t, int>> distinct;
        for (const VisitedCell &cell : r.Cells) {
            EXPECT_EQ(cell.N, expectedPlaneCorners(cell.Cell, cell.Plane, dims, c.Skips));
            EXPECT_EQ(cell.N[0], cell.Cell);
            EXPECT_EQ(cell.Cond, CellBlankedCond_NotBlanked);
            distinct.insert({cell.Cell, cell.Plane});
        }
        EXPECT_EQ(distinct.size(), r.Cells.size()) << "a cell visited twice";
    }
}

TEST_F(TraversalTest, OrderedPlaneWalkOrderAndShortenedLastCell) {
    // I planes: J outer, K inner; the last cell of a skipped row ends on the zone's edge.
    EntIndex_t zone = addOrdered(3, 4, 6);
    auto pair = setup(zone, [](FieldMapStyle_s &map) {
        map.Surfaces.SurfacesToPlot = SurfacesToPlot_IPlanes;
        map.Surfaces.IRange = {2, 2, 1};
    });
    Recorder r = walkSurface(*pair, 0, 1, 2, 3);
    // Plane i = 1: j in {0, 2} (cells 0-2, 2-3), k in {0, 3} (cells 0-3, 3-5).
    auto at = [](LgIndex_t i, LgIndex_t j, LgIndex_t k) { return i + 3 * j + 12 * k; };
    std::vector<std::array<LgIndex_t, 4>> expected = {
        {at(1, 0, 0), at(1, 0, 3), at(1, 2, 3), at(1, 2, 0)},
        {at(1, 0, 3), at(1, 0, 5), at(1, 2, 5), at(1, 2, 3)},
        {at(1, 2, 0), at(1, 2, 3), at(1, 3, 3), at(1, 3, 0)},
        {at(1, 2, 3), at(1, 2, 5), at(1, 3, 5), at(1, 3, 3)},
    };
    ASSERT_EQ(r.Cells.size(), expected.size());
    for (size_t n = 0; n < expected.size(); n++) {
        EXPECT_EQ(r.Cells[n].N, expected[n]) << n;
        EXPECT_EQ(r.Cells[n].Plane, IJKPlanes_I);
    }
}

TEST_F(TraversalTest, LinearZonesWalkOneRunOfSegments) {
    EntIndex_t zone = addOrdered(7, 1, 1);
    {
        auto pair = setup(zone);  // K planes: the step is the K skip
        Recorder r = walkSurface(*pair, WalkFlag_SkipCollapsed, 4, 1, 1);
        ASSERT_EQ(r.Cells.size(), 6u);
        EXPECT_EQ(r.Cells[5].N, (std::array<LgIndex_t, 4>{5, 6, 6, 5}));
        EXPECT_EQ(r.Cells[5].Plane, IJKPlanes_K);
    }
    {
        auto pair = setup(zone, [](FieldMapStyle_s &map) { map.Surfaces.SurfacesToPlot = SurfacesToPlot_IPlanes; });
        Recorder r = walkSurface(*pair, 0, 4, 1, 1);
        ASSERT_EQ(r.Cells.size(), 2u);
        EXPECT_EQ(r.Cells[0].N, (std::array<LgIndex_t, 4>{0, 4, 4, 0}));
        EXPECT_EQ(r.Cells[1].N, (std::array<LgIndex_t, 4>{4, 6, 6, 4}));
        EXPECT_EQ(r.Cells[1].Cell, 4);
        EXPECT_EQ(r.Cells[1].Plane, IJKPlanes_I);
    }
    // A K-line indexes by k.
    EntIndex_t kLine = addOrdered(1, 1, 4);
    auto pair = setup(kLine);
    EXPECT_EQ(countSurface(*pair, 0), 3);
}

TEST_F(TraversalTest, SurfacesToPlotIsNormalisedPerObjectKind) {
    struct Case {
        LgIndex_t I, J, K;
        int Given, Kept;
    } cases[] = {
        {4, 4, 4, SurfacesToPlot_ExposedCellFaces, SurfacesToPlot_ExposedCellFaces},
        {4, 4, 1, SurfacesToPlot_BoundaryFaces, SurfacesToPlot_KPlanes},
        {4, 1, 4, SurfacesToPlot_All, SurfacesToPlot_JPlanes},
        {1, 4, 4, SurfacesToPlot_ExposedCellFaces, SurfacesToPlot_IPlanes},
        {4, 4, 1, SurfacesToPlot_JKPlanes, SurfacesToPlot_JKPlanes},
        {4, 1, 1, SurfacesToPlot_All, SurfacesToPlot_KPlanes},
    };
    for (const Case &c : cases) {
        auto pair = setup(addOrdered(c.I, c.J, c.K), [&](FieldMapStyle_s &map) { map.Surfaces.SurfacesToPlot = c.Given; });
        EXPECT_EQ(pair->Info->FieldMap->Surfaces.SurfacesToPlot, c.Kept) << c.I << "x" << c.J << "x" << c.K;
    }
    EntIndex_t triangles = addFE(ZoneType_FETriangle, 3, {0, 1, 2});
    auto surface = setup(triangles, [](FieldMapStyle_s &map) { map.Surfaces.SurfacesToPlot = SurfacesToPlot_All; });
    EXPECT_EQ(surface->Info->FieldMap->Surfaces.SurfacesToPlot, SurfacesToPlot_KPlanes);
    EntIndex_t tetra = addFE(ZoneType_FETetra, 4, {0, 1, 2, 3});
    auto volume = setup(tetra, [](FieldMapStyle_s &map) { map.Surfaces.SurfacesToPlot = SurfacesToPlot_JPlanes; });
    EXPECT_EQ(volume->Info->FieldMap->Surfaces.SurfacesToPlot, SurfacesToPlot_ExposedCellFaces);
    auto all = setup(tetra, [](FieldMapStyle_s &map) { map.Surfaces.SurfacesToPlot = SurfacesToPlot_All; });
    EXPECT_EQ(all->Info->FieldMap->Surfaces.SurfacesToPlot, SurfacesToPlot_All);
}

TEST_F(TraversalTest, OrderedStripsHandOverTheSameCellsAsCellWalks) {
    EntIndex_t zone = addOrdered(6, 4, 1);
    auto pair = setup(zone);
    const LgIndex_t dims[3] = {6, 4, 1}, skips[3] = {2, 1, 1};
    Recorder cells = walkSurface(*pair, 0, 2, 1, 1);
    auto cornersOf = [&](const Recorder &r) {
        std::vector<std::array<LgIndex_t, 4>> all;
        for (const VisitedCell &c : r.Cells) all.push_back(c.N);
        for (const auto &strip : r.OrderedStrips) {
            LgIndex_t count = (strip[2] - strip[0] + strip[1] - 1) / strip[1];
            for (LgIndex_t n = 0; n < count; n++) {
                std::array<LgIndex_t, 4> c;
                GetCellInOrderedSurfaceCellStrip(strip[0], strip[1], strip[2], strip[3], n, &c[0], &c[1], &c[2], &c[3]);
                all.push_back(c);
            }
        }
        std::sort(all.begin(), all.end());
        return all;
    };

    Recorder strips;
    int count = -1;
    ASSERT_TRUE(ProcessSurfaceCells(pair->Info, pair->Data, false, 0, 2, 1, 1, recordCell, recordOrderedStrip, nullptr,
                                    strips.client(), &count));
    EXPECT_EQ(strips.OrderedStrips.size(), 3u);  // one per row of cells
    EXPECT_TRUE(strips.Cells.empty());
    EXPECT_EQ(count, 9);
    EXPECT_EQ(cornersOf(strips), cornersOf(cells));
    // Row j = 1: cells from i = 0, 2, 4, the last one ending at i = 5.
    EXPECT_EQ(strips.OrderedStrips[1], (std::array<LgIndex_t, 4>{6, 2, 11, 6}));
    for (const VisitedCell &c : cells.Cells) EXPECT_EQ(c.N, expectedPlaneCorners(c.Cell, IJKPlanes_K, dims, skips));

    // A partly blanked cell breaks its row: the clean cells around it go as a strip or alone.
    enableValueBlanking(*pair);
    ASSERT_EQ(pair->Data->ElemStatePlane, IJKPlanes_K);
    for (LgIndex_t cell : {1, 2, 7, 8}) pair->Data->ElemState[cell] = CellBlankedCond_PartiallyBlanked;
    Recorder split;
    ASSERT_TRUE(ProcessSurfaceCells(pair->Info, pair->Data, false, WalkFlag_ValueBlanking, 1, 1, 1, recordCell,
                                    recordOrderedStrip, nullptr, split.client(), &count));
    EXPECT_EQ(count, 15);
    std::set<LgIndex_t> partly;
    for (const VisitedCell &c : split.Cells)
        if (c.Cond == CellBlankedCond_PartiallyBlanked) partly.insert(c.Cell);
    EXPECT_EQ(partly, (std::set<LgIndex_t>{1, 2, 7, 8}));
    pair->Data->BlankingActive = false;
    Recorder whole = walkSurface(*pair, 0);
    EXPECT_EQ(cornersOf(split), cornersOf(whole));
}

TEST_F(TraversalTest, BlankingDropsWhollyBlankedCellsAndExposesTheirFaces) {
    EntIndex_t zone = addOrdered(4, 4, 4);
    auto pair = setup(zone, [](FieldMapStyle_s &map) { map.Surfaces.SurfacesToPlot = SurfacesToPlot_ExposedCellFaces; });
    const LgIndex_t boundary = 6 * 9;
    // Without blanking exposed faces are the boundary faces.
    EXPECT_EQ(countSurface(*pair, WalkFlag_ValueBlanking), boundary);

    enableValueBlanking(*pair);
    auto cellAt = [](LgIndex_t i, LgIndex_t j, LgIndex_t k) { return i + 4 * j + 16 * k; };
    ASSERT_EQ(pair->Data->ElemStatePlane, IJKPlanes_Volume);
    pair->Data->ElemState[cellAt(1, 1, 1)] = CellBlankedCond_EntirelyBlanked;  // an inner cell
    EXPECT_EQ(countSurface(*pair, WalkFlag_ValueBlanking), boundary + 6);
    Recorder r = walkSurface(*pair, WalkFlag_ValueBlanking);
    std::multiset<IJKPlanes_e> innerPlanes;
    for (size_t n = size_t(boundary); n < r.Cells.size(); n++) innerPlanes.insert(r.Cells[n].Plane);
    EXPECT_EQ(innerPlanes, (std::multiset<IJKPlanes_e>{IJKPlanes_I, IJKPlanes_I, IJKPlanes_J, IJKPlanes_J, IJKPlanes_K,
                                                       IJKPlanes_K}));
    // The face toward I-max of cell (0,1,1) is the I-min face of the blanked cell: corners
    // (c, c+dK, c+dJ+dK, c+dJ) from c = (1,1,1).
    LgIndex_t c = cellAt(1, 1, 1);
    bool found = false;
    for (const VisitedCell &cell : r.Cells)
        found = found || cell.N == std::array<LgIndex_t, 4>{c, c + 16, c + 20, c + 4};
    EXPECT_TRUE(found);

    // A corner cell loses its three boundary faces and shows three faces to its neighbours.
    pair->Data->ElemState[cellAt(1, 1, 1)] = 0;
    pair->Data->ElemState[cellAt(2, 2, 2)] = CellBlankedCond_EntirelyBlanked;  // touches the last planes
    EXPECT_EQ(countSurface(*pair, WalkFlag_ValueBlanking), boundary - 3 + 3);
    // The walk without the blanking flag sees none of it.
    EXPECT_EQ(countSurface(*pair, 0), boundary);
    // Plain boundary faces don't look inside.
    pair->Info->FieldMap->Surfaces.SurfacesToPlot = SurfacesToPlot_BoundaryFaces;
    EXPECT_EQ(countSurface(*pair, WalkFlag_ValueBlanking), boundary - 3);
}

TEST_F(TraversalTest, CollapsedOrderedCellsAreJudgedOnCoordinates) {
    EntIndex_t zone = addOrdered(3, 3, 1);
    // Point (1,0) moves onto (0,0): cell 0 becomes a triangle. Points (2,1) and (2,2) move onto
    // (1,1) and (1,2): cell (1,1) collapses to a line.
    FieldData_a x = GetWritableNativeFieldDataPtr(dataSet(), zone, 0);
    FieldData_a y = GetWritableNativeFieldDataPtr(dataSet(), zone, 1);
    SetFieldValue(x, 1, 0.0);
    SetFieldValue(x, 5, 1.0);
    SetFieldValue(x, 8, 1.0);
    auto pair = setup(zone);
    (void)y;
    EXPECT_EQ(GetSurfaceCellCollapsedStatus(pair->Info, pair->Data, 0, 1, 4, 3), CollapsedStatus_CollapsedToTriangle);
    EXPECT_EQ(GetSurfaceCellCollapsedStatus(pair->Info, pair->Data, 4, 5, 8, 7), CollapsedStatus_CollapsedToLine);
    EXPECT_EQ(countSurface(*pair, 0), 4);
    Recorder r = walkSurface(*pair, WalkFlag_SkipCollapsed);
    ASSERT_EQ(r.Cells.size(), 3u);
    for (const VisitedCell &c : r.Cells) EXPECT_NE(c.Cell, 4);

    // The rules on corner values alone.
    struct StatusCase {
        LgIndex_t n[4];
        CollapsedStatus_e status;
    } statusCases[] = {
        {{0, 1, 4, 3}, CollapsedStatus_CollapsedToTriangle}, {{0, 0, 0, 0}, CollapsedStatus_CollapsedToPoint},
        {{3, 4, 6, 7}, CollapsedStatus_NotCollapsed},        {{3, 4, 3, 6}, CollapsedStatus_CollapsedToSegmentedLine},
        {{3, 4, 3, 4}, CollapsedStatus_Invalid},             {{3, 3, 3, 4}, CollapsedStatus_CollapsedToLine},
    };
    for (const StatusCase &s : statusCases)
        EXPECT_EQ(GetSurfaceCellCollapsedStatus(pair->Info, pair->Data, s.n[0], s.n[1], s.n[2], s.n[3]), s.status)
            << s.n[0] << s.n[1] << s.n[2] << s.n[3];
}

// ---- FE surfaces and volumes --------------------------------------------------------------------

TEST_F(TraversalTest, EachFETypeHandsOverItsFacesInWalkingOrder) {
    // A brick of nodes 10..17 and a tetrahedron of nodes 5..8, each alone: every face is a boundary.
    EntIndex_t brick = addFE(ZoneType_FEBrick, 18, {10, 11, 12, 13, 14, 15, 16, 17});
    auto brickPair = setup(brick);
    Recorder r = walkSurface(*brickPair, 0);
    const std::vector<std::array<LgIndex_t, 4>> brickFaces = {
        {10, 13, 17, 14}, {11, 12, 16, 15}, {10, 11, 15, 14}, {13, 12, 16, 17}, {10, 11, 12, 13}, {14, 15, 16, 17}};
    ASSERT_EQ(r.Cells.size(), brickFaces.size());
    for (size_t f = 0; f < brickFaces.size(); f++) {
        EXPECT_EQ(r.Cells[f].N, brickFaces[f]) << "brick face " << f;
        EXPECT_EQ(r.Cells[f].Cell, 0);
        EXPECT_EQ(r.Cells[f].Plane, IJKPlanes_None);
    }

    EntIndex_t tetra = addFE(ZoneType_FETetra, 9, {5, 6, 7, 8});
    auto tetraPair = setup(tetra);
    r = walkSurface(*tetraPair, WalkFlag_SkipCollapsed);
    const std::vector<std::array<LgIndex_t, 4>> tetraFaces = {{5, 6, 7, 7}, {5, 6, 8, 5}, {5, 7, 8, 5}, {6, 7, 8, 6}};
    ASSERT_EQ(r.Cells.size(), tetraFaces.size());
    for (size_t f = 0; f < tetraFaces.size(); f++) EXPECT_EQ(r.Cells[f].N, tetraFaces[f]) << "tetrahedron face " << f;

    struct SurfaceCase {
        ZoneType_e type;
        Nodes nodes;
        std::array<LgIndex_t, 4> corners;
    } surfaceCases[] = {
        {ZoneType_FETriangle, {2, 0, 1}, {2, 0, 1, 2}},
        {ZoneType_FEQuad, {3, 1, 0, 2}, {3, 1, 0, 2}},
        {ZoneType_FELineSeg, {1, 0}, {1, 0, 1, 1}},
    };
    for (const SurfaceCase &c : surfaceCases) {
        auto pair = setup(addFE(c.type, 4, c.nodes));
        r = walkSurface(*pair, 0);
        ASSERT_EQ(r.Cells.size(), 1u);
        EXPECT_EQ(r.Cells[0].N, c.corners) << "type " << c.type;
    }
}

TEST_F(TraversalTest, FEVolumeFacesByBoundaryAllAndCollapse) {
    // Two bricks sharing face 1 of the first (nodes 1 2 6 5); two tetrahedra sharing 0 1 2.
    EntIndex_t bricks = addFE(ZoneType_FEBrick, 12, {0, 1, 2, 3, 4, 5, 6, 7, 1, 8, 9, 2, 5, 10, 11, 6});
    auto brickPair = setup(bricks);
    EXPECT_EQ(countSurface(*brickPair, WalkFlag_SkipCollapsed), 2 * 6 - 2);
    brickPair->Info->FieldMap->Surfaces.SurfacesToPlot = SurfacesToPlot_All;
    EXPECT_EQ(countSurface(*brickPair, 0), 2 * 6);
    // Skip of cells: only element 0.
    EXPECT_EQ(countSurface(*brickPair, 0, 1, 2, 1), 6);
    brickPair->Info->FieldMap->Surfaces.SurfacesToPlot = SurfacesToPlot_KPlanes;  // not a volume choice
    EXPECT_EQ(countSurface(*brickPair, 0), 0);

    EntIndex_t tetra = addFE(ZoneType_FETetra, 5, {0, 1, 2, 3, 0, 2, 1, 4});
    auto tetraPair = setup(tetra);
    EXPECT_EQ(countSurface(*tetraPair, 0), 2 * 4 - 2);

    // A brick whose face 0 (0,3,7,4) collapses to a line (3 = 0, 7 = 4); faces 4 and 5 become
    // triangles.
    EntIndex_t wedge = addFE(ZoneType_FEBrick, 8, {0, 1, 2, 0, 4, 5, 6, 4});
    auto wedgePair = setup(wedge);
    Recorder r = walkSurface(*wedgePair, WalkFlag_SkipCollapsed);
    ASSERT_EQ(r.Cells.size(), 5u);
    for (const VisitedCell &c : r.Cells) EXPECT_NE(c.N, (std::array<LgIndex_t, 4>{0, 0, 4, 4}));
    EXPECT_EQ(countSurface(*wedgePair, 0), 6);

    // Exposed faces: a wholly blanked brick lets its neighbour show the shared face.
    brickPair->Info->FieldMap->Surfaces.SurfacesToPlot = SurfacesToPlot_ExposedCellFaces;
    enableValueBlanking(*brickPair);
    brickPair->Data->ElemState[1] = CellBlankedCond_EntirelyBlanked;
    r = walkSurface(*brickPair, WalkFlag_ValueBlanking);
    ASSERT_EQ(r.Cells.size(), 6u);
    for (const VisitedCell &c : r.Cells) EXPECT_EQ(c.Cell, 0);
    brickPair->Info->FieldMap->Surfaces.SurfacesToPlot = SurfacesToPlot_BoundaryFaces;
    EXPECT_EQ(countSurface(*brickPair, WalkFlag_ValueBlanking), 5);
}

// Quadrilaterals of an nx x ny grid of cells, node (i, j) numbered i + (nx+1) j.
Nodes quadGrid(int nx, int ny) {
    Nodes nodes;
    for (int j = 0; j < ny; j++)
        for (int i = 0; i < nx; i++) {
            LgIndex_t n = i + (nx + 1) * j;
            nodes.insert(nodes.end(), {n, n + 1, n + nx + 2, n + nx + 1});
        }
    return nodes;
}

Nodes triangleGrid(int nx, int ny) {
    Nodes quads = quadGrid(nx, ny), nodes;
    for (size_t q = 0; q < quads.size(); q += 4)
        nodes.insert(nodes.end(), {quads[q], quads[q + 1], quads[q + 2], quads[q], quads[q + 2], quads[q + 3]});
    return nodes;
}

TEST_F(TraversalTest, FEStripsCoverEveryCellOnceWithTheCellsOwnNodes) {
    for (ZoneType_e type : {ZoneType_FETriangle, ZoneType_FEQuad}) {
        for (int stripSize : {250, 6}) {
            SCOPED_TRACE(testing::Message() << "type " << type << " strip size " << stripSize);
            const bool isTriangle = type == ZoneType_FETriangle;
            Nodes nodes = isTriangle ? triangleGrid(6, 4) : quadGrid(6, 4);
            EntIndex_t zone = addFE(type, 7 * 5, nodes);
            auto pair = setup(zone);
            pair->Info->StripSize = stripSize;
            const int perElement = isTriangle ? 3 : 4;
            const LgIndex_t numCells = LgIndex_t(nodes.size()) / perElement;
            Recorder r;
            r.StripsAreTriangles = isTriangle;
            int count = -1;
            ASSERT_TRUE(ProcessSurfaceCells(pair->Info, pair->Data, false, 0, 1, 1, 1, recordCell, nullptr,
                                            recordFEStrip, r.client(), &count));
            EXPECT_EQ(count, numCells);
            std::vector<int> seen(size_t(numCells), 0);
            for (size_t s = 0; s < r.FEStripElements.size(); s++) {
                const Nodes &elements = r.FEStripElements[s];
                LgIndex_t numStripNodes = isTriangle ? LgIndex_t(elements.size()) + 2 : 2 * LgIndex_t(elements.size()) + 2;
                EXPECT_LE(numStripNodes, isTriangle ? stripSize + 2 : std::max(stripSize, 4));
                const Nodes &stripNodes = r.FEStripNodes[s];
                for (size_t n = 0; n < elements.size(); n++) {
                    seen[size_t(elements[n])]++;
                    std::set<LgIndex_t> own(nodes.begin() + elements[n] * perElement,
                                            nodes.begin() + (elements[n] + 1) * perElement);
                    std::set<LgIndex_t> fromStrip;
                    if (isTriangle)
                        fromStrip = {stripNodes[n], stripNodes[n + 1], stripNodes[n + 2]};
                    else
                        fromStrip = {stripNodes[2 * n], stripNodes[2 * n + 1], stripNodes[2 * n + 2], stripNodes[2 * n + 3]};
                    EXPECT_EQ(fromStrip, own) << "strip " << s << " cell " << n;
                    if (isTriangle) continue;
                    // Round the cell 2n, 2n+1, 2n+3, 2n+2 each step is an edge of the element.
                    const LgIndex_t *element = nodes.data() + elements[n] * 4;
                    const LgIndex_t round[4] = {stripNodes[2 * n], stripNodes[2 * n + 1], stripNodes[2 * n + 3],
                                                stripNodes[2 * n + 2]};
                    for (int c = 0; c < 4; c++) {
                        int at = int(std::find(element, element + 4, round[c]) - element);
                        int next = int(std::find(element, element + 4, round[(c + 1) % 4]) - element);
                        EXPECT_TRUE((at + 1) % 4 == next || (next + 1) % 4 == at) << "strip " << s << " cell " << n;
                    }
                }
            }
            for (LgIndex_t e = 0; e < numCells; e++) EXPECT_EQ(seen[size_t(e)], 1) << "element " << e;
            if (stripSize == 250) {
                EXPECT_LT(r.FEStripElements.size(), size_t(numCells / 2));
            }

            // A wholly blanked element never comes out; a partly blanked one comes out alone.
            enableValueBlanking(*pair);
            pair->Data->ElemState[5] = CellBlankedCond_EntirelyBlanked;
            pair->Data->ElemState[9] = CellBlankedCond_PartiallyBlanked;
            Recorder b;
            b.StripsAreTriangles = isTriangle;
            ASSERT_TRUE(ProcessSurfaceCells(pair->Info, pair->Data, false, WalkFlag_ValueBlanking, 1, 1, 1, recordCell,
                                            nullptr, recordFEStrip, b.client(), &count));
            EXPECT_EQ(count, numCells - 1);
            std::vector<int> seenBlanked(size_t(numCells), 0);
            for (const Nodes &elements : b.FEStripElements)
                for (LgIndex_t e : elements) seenBlanked[size_t(e)]++;
            bool partlyAlone = false;
            for (const VisitedCell &c : b.Cells) {
                seenBlanked[size_t(c.Cell)]++;
                partlyAlone = partlyAlone || (c.Cell == 9 && c.Cond == CellBlankedCond_PartiallyBlanked);
            }
            EXPECT_TRUE(partlyAlone);
            for (LgIndex_t e = 0; e < numCells; e++) EXPECT_EQ(seenBlanked[size_t(e)], e == 5 ? 0 : 1) << e;
        }
    }
}

TEST_F(TraversalTest, FESurfaceCountsWithSkips) {
    EntIndex_t zone = addFE(ZoneType_FEQuad, 7 * 5, quadGrid(6, 4));
    auto pair = setup(zone);
    for (LgIndex_t skip : {1, 2, 5, 24, 30}) {
        LgIndex_t expected = (24 - 1) / skip + 1;
        EXPECT_EQ(countSurface(*pair, 0, 1, skip, 1), expected) << skip;
        Recorder r = walkSurface(*pair, WalkFlag_SkipCollapsed, 1, skip, 1);
        ASSERT_EQ(LgIndex_t(r.Cells.size()), expected);
        for (const VisitedCell &c : r.Cells) EXPECT_EQ(c.Cell % skip, 0);
    }
}

// ---- volume cells, lines, points ----------------------------------------------------------------

TEST_F(TraversalTest, VolumeCellsOfOrderedAndFEVolumes) {
    EntIndex_t volume = addOrdered(5, 4, 3);
    auto pair = setup(volume);
    int count = -1;
    ASSERT_TRUE(ProcessVolumeCells(pair->Info, pair->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 4 * 3 * 2);
    Recorder r;
    ASSERT_TRUE(ProcessVolumeCells(pair->Info, pair->Data, false, 0, 2, 2, 1, recordVolumeCell, r.client(), &count));
    EXPECT_EQ(count, cellsAlong(5, 2) * cellsAlong(4, 2) * cellsAlong(3, 1));
    EXPECT_EQ(r.VolumeCells.front(), 0);
    EXPECT_EQ(r.VolumeCells.back(), 2 + 2 * 5 + 1 * 20);  // K outermost, I innermost
    enableValueBlanking(*pair);
    pair->Data->ElemState[1 + 5 + 20] = CellBlankedCond_EntirelyBlanked;
    pair->Data->ElemState[0] = CellBlankedCond_PartiallyBlanked;
    ASSERT_TRUE(ProcessVolumeCells(pair->Info, pair->Data, false, WalkFlag_ValueBlanking, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 24 - 1);

    auto surface = setup(addOrdered(5, 4, 1));
    ASSERT_TRUE(ProcessVolumeCells(surface->Info, surface->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 0);

    auto bricks = setup(addFE(ZoneType_FEBrick, 12, {0, 1, 2, 3, 4, 5, 6, 7, 1, 8, 9, 2, 5, 10, 11, 6}));
    Recorder fe;
    ASSERT_TRUE(ProcessVolumeCells(bricks->Info, bricks->Data, false, 0, 1, 1, 1, recordVolumeCell, fe.client(), &count));
    EXPECT_EQ(fe.VolumeCells, (Nodes{0, 1}));
    ASSERT_TRUE(ProcessVolumeCells(bricks->Info, bricks->Data, false, 0, 1, 2, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 1);
}

TEST_F(TraversalTest, OrderedLinesRunAlongBothDirectionsOfEachPlane) {
    EntIndex_t zone = addOrdered(5, 4, 1);
    auto pair = setup(zone);
    Recorder r;
    int count = -1;
    ASSERT_TRUE(ProcessLines(pair->Info, pair->Data, false, 0, 2, 2, 1, recordRun, nullptr, r.client(), 100, &count));
    // I-lines at j = 0, 2, 3 and J-lines at i = 0, 2, 4, each skipping by 2 and ending on the edge.
    std::vector<std::array<LgIndex_t, 3>> expected = {{0, 2, 4}, {10, 2, 14}, {15, 2, 19},
                                                      {0, 10, 15}, {2, 10, 17}, {4, 10, 19}};
    EXPECT_EQ(r.Runs, expected);
    EXPECT_EQ(count, 6);

    // Boundary planes of a volume: six planes of two families of lines.
    auto volume = setup(addOrdered(3, 4, 5));
    ASSERT_TRUE(ProcessLines(volume->Info, volume->Data, false, 0, 1, 1, 1, nullptr, nullptr, 0, 100, &count));
    EXPECT_EQ(count, 2 * (4 + 5) + 2 * (3 + 5) + 2 * (3 + 4));

    // A wholly blanked cell of a single row splits the lines along it.
    EntIndex_t row = addOrdered(5, 2, 1);
    auto rowPair = setup(row);
    enableValueBlanking(*rowPair);
    rowPair->Data->ElemState[2] = CellBlankedCond_EntirelyBlanked;
    Recorder split;
    ASSERT_TRUE(ProcessLines(rowPair->Info, rowPair->Data, false, WalkFlag_ValueBlanking, 1, 1, 1, recordRun, nullptr,
                             split.client(), 100, &count));
    std::vector<std::array<LgIndex_t, 3>> expectedSplit = {{0, 1, 2}, {3, 1, 4}, {5, 1, 7}, {8, 1, 9}, {0, 5, 5},
                                                           {1, 5, 6}, {2, 5, 7}, {3, 5, 8}, {4, 5, 9}};
    EXPECT_EQ(split.Runs, expectedSplit);

    // A linear zone: one run, split where both ends of a segment are blanked.
    EntIndex_t line = addOrdered(6, 1, 1);
    auto linePair = setup(line);
    Recorder one;
    ASSERT_TRUE(ProcessLines(linePair->Info, linePair->Data, false, 0, 1, 1, 2, recordRun, nullptr, one.client(), 100));
    EXPECT_EQ(one.Runs, (std::vector<std::array<LgIndex_t, 3>>{{0, 2, 5}}));
    enableValueBlanking(*linePair);
    linePair->Data->PointState[2] = linePair->Data->PointState[3] = PointState_ValueBlanked;
    Recorder two;
    ASSERT_TRUE(ProcessLines(linePair->Info, linePair->Data, false, WalkFlag_ValueBlanking, 1, 1, 1, recordRun, nullptr,
                             two.client(), 100));
    EXPECT_EQ(two.Runs, (std::vector<std::array<LgIndex_t, 3>>{{0, 1, 2}, {3, 1, 5}}));
}

TEST_F(TraversalTest, LineSegmentsJoinIntoChains) {
    // A path 0-1-2-3 given out of order, a lone segment 5-6 and a degenerate 4-4.
    EntIndex_t zone = addFE(ZoneType_FELineSeg, 7, {2, 1, 5, 6, 4, 4, 0, 1, 2, 3});
    auto pair = setup(zone);
    Recorder r;
    int count = -1;
    ASSERT_TRUE(ProcessLines(pair->Info, pair->Data, false, 0, 1, 1, 1, nullptr, recordChain, r.client(), 100, &count));
    ASSERT_EQ(count, 2);
    // From segment 0 (2-1): outward from node 2, reversed, then outward from node 1.
    EXPECT_EQ(r.ChainNodes[0], (Nodes{3, 2, 1, 0}));
    EXPECT_EQ(r.ChainElements[0], (Nodes{4, 0, 3}));
    EXPECT_EQ(r.ChainNodes[1], (Nodes{5, 6}));
    EXPECT_EQ(r.ChainElements[1], (Nodes{1}));

    // At most three points a chain: every segment but the degenerate one still comes out once.
    Recorder shortChains;
    ASSERT_TRUE(ProcessLines(pair->Info, pair->Data, false, 0, 1, 1, 1, nullptr, recordChain, shortChains.client(), 3));
    std::multiset<LgIndex_t> segments;
    for (size_t c = 0; c < shortChains.ChainNodes.size(); c++) {
        EXPECT_LE(shortChains.ChainNodes[c].size(), 3u);
        for (size_t s = 0; s < shortChains.ChainElements[c].size(); s++) {
            LgIndex_t e = shortChains.ChainElements[c][s];
            segments.insert(e);
            NodeMap_a nodeMap = pair->Data->NodeMap;
            std::set<LgIndex_t> ends = {NodeMapGetNode(nodeMap, e, 0), NodeMapGetNode(nodeMap, e, 1)};
            EXPECT_EQ(ends, (std::set<LgIndex_t>{shortChains.ChainNodes[c][s], shortChains.ChainNodes[c][s + 1]}));
        }
    }
    EXPECT_EQ(segments, (std::multiset<LgIndex_t>{0, 1, 3, 4}));
}

TEST_F(TraversalTest, PointsBySurfaceNodesAllNodesSkipsAndBlanking) {
    // A surface: every point is on its K plane.
    auto surface = setup(addOrdered(5, 4, 1));
    Recorder r;
    int count = -1;
    ASSERT_TRUE(ProcessPoints(surface->Info, surface->Data, false, 0, 1, 1, 1, recordPoint, r.client(), &count));
    EXPECT_EQ(count, 20);
    for (const auto &point : r.Points) EXPECT_EQ(point.second, IJKPlanes_K);
    ASSERT_TRUE(ProcessPoints(surface->Info, surface->Data, false, 0, 2, 2, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 3 * 2);

    // A volume's boundary nodes, each tested on the skips of the planes it lies on.
    const LgIndex_t n = 4;
    auto volume = setup(addOrdered(n, n, n));
    for (LgIndex_t skip : {1, 2}) {
        Recorder v;
        ASSERT_TRUE(ProcessPoints(volume->Info, volume->Data, false, 0, skip, skip, skip, recordPoint, v.client()));
        std::vector<LgIndex_t> expected;
        for (LgIndex_t p = 0; p < n * n * n; p++) {
            LgIndex_t index[3] = {p % n, (p / n) % n, p / (n * n)};
            bool passes = false;
            for (int d = 0; d < 3; d++) {
                if (index[d] != 0 && index[d] != n - 1) continue;
                passes = passes || (index[(d + 1) % 3] % skip == 0 && index[(d + 2) % 3] % skip == 0);
            }
            if (passes) expected.push_back(p);
        }
        std::vector<LgIndex_t> got;
        for (const auto &point : v.Points) got.push_back(point.first);
        EXPECT_EQ(got, expected) << "skip " << skip;
        if (skip == 1) {
            EXPECT_EQ(got.size(), size_t(n * n * n - (n - 2) * (n - 2) * (n - 2)));
        }
    }
    // Planes by the index: K wins, then J, then I.
    Recorder planes;
    ASSERT_TRUE(ProcessPoints(volume->Info, volume->Data, false, 0, 1, 1, 1, recordPoint, planes.client()));
    std::map<LgIndex_t, IJKPlanes_e> planeOf(planes.Points.begin(), planes.Points.end());
    EXPECT_EQ(planeOf[0], IJKPlanes_K);
    EXPECT_EQ(planeOf[0 + 1 * 4 + 1 * 16], IJKPlanes_I);
    EXPECT_EQ(planeOf[1 + 0 * 4 + 1 * 16], IJKPlanes_J);
    // All nodes: the inside too, with no plane.
    volume->Info->FieldMap->Points.PointsToPlot = PointsToPlot_AllNodes;
    Recorder all;
    ASSERT_TRUE(ProcessPoints(volume->Info, volume->Data, false, 0, 1, 1, 1, recordPoint, all.client(), &count));
    EXPECT_EQ(count, n * n * n);
    EXPECT_EQ(std::find(all.Points.begin(), all.Points.end(), std::make_pair(LgIndex_t(21), IJKPlanes_None)) !=
                  all.Points.end(),
              true);
    // The field map is as it was after a surface walk changed it for its length.
    volume->Info->FieldMap->Points.PointsToPlot = PointsToPlot_SurfaceCellCenters;
    ASSERT_TRUE(ProcessPoints(volume->Info, volume->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(volume->Info->FieldMap->Points.PointsToPlot, PointsToPlot_SurfaceCellCenters);

    // Value-blanked points drop out only with the flag.
    enableValueBlanking(*surface);
    surface->Data->PointState[7] = PointState_ValueBlanked;
    ASSERT_TRUE(ProcessPoints(surface->Info, surface->Data, false, WalkFlag_ValueBlanking, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 19);
    ASSERT_TRUE(ProcessPoints(surface->Info, surface->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 20);

    // FE: node 4 is used by no element.
    auto fe = setup(addFE(ZoneType_FETriangle, 5, {0, 1, 2, 2, 1, 3}));
    ASSERT_TRUE(ProcessPoints(fe->Info, fe->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 4);
    fe->Info->FieldMap->Points.PointsToPlot = PointsToPlot_AllNodes;
    ASSERT_TRUE(ProcessPoints(fe->Info, fe->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 5);
    ASSERT_TRUE(ProcessPoints(fe->Info, fe->Data, false, 0, 2, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 3);  // nodes 0, 2, 4
    fe->Info->FieldMap->Points.PointsToPlot = PointsToPlot_AllConnected;
    Recorder connected;
    ASSERT_TRUE(ProcessPoints(fe->Info, fe->Data, false, 0, 1, 1, 1, recordPoint, connected.client(), &count));
    EXPECT_EQ(count, 4);
    for (const auto &point : connected.Points) EXPECT_EQ(point.second, IJKPlanes_None);
}

// ---- degenerate zones and stops ---------------------------------------------------------------

TEST_F(TraversalTest, DegenerateZonesVisitNothingOrTheirOneItem) {
    auto single = setup(addOrdered(1, 1, 1));
    EXPECT_EQ(GetZoneOrder(1, 1, 1), ZoneOrder_I);
    EXPECT_EQ(single->Info->ZoneRank, 1);
    EXPECT_EQ(countSurface(*single, WalkFlag_SkipCollapsed), 0);
    int count = -1;
    ASSERT_TRUE(ProcessLines(single->Info, single->Data, false, 0, 1, 1, 1, recordRun, nullptr, 0, 100, &count));
    EXPECT_EQ(count, 0);
    ASSERT_TRUE(ProcessVolumeCells(single->Info, single->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 0);
    ASSERT_TRUE(ProcessPoints(single->Info, single->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
    EXPECT_EQ(count, 1);

    auto pairOfPoints = setup(addOrdered(1, 2, 1));
    EXPECT_EQ(countSurface(*pairOfPoints, 0), 1);

    // One element of each surface type is one cell.
    auto oneQuad = setup(addFE(ZoneType_FEQuad, 4, {0, 1, 2, 3}));
    EXPECT_EQ(countSurface(*oneQuad, WalkFlag_SkipCollapsed), 1);
    Recorder strips;
    ASSERT_TRUE(ProcessSurfaceCells(oneQuad->Info, oneQuad->Data, false, 0, 1, 1, 1, recordCell, nullptr, recordFEStrip,
                                    strips.client(), &count));
    EXPECT_EQ(count, 1);

    // An index range that holds no plane.
    auto empty = setup(addOrdered(4, 4, 4), [](FieldMapStyle_s &map) {
        map.Surfaces.SurfacesToPlot = SurfacesToPlot_IPlanes;
        map.Surfaces.IRange = {3, 2, 1};
    });
    EXPECT_EQ(countSurface(*empty, 0), 0);
}

TEST_F(TraversalTest, AFalseCallbackOrAnInterruptStopsTheWalk) {
    auto pair = setup(addOrdered(5, 5, 5));
    Recorder r;
    r.StopAfter = 3;
    int count = -1;
    EXPECT_FALSE(ProcessSurfaceCells(pair->Info, pair->Data, false, 0, 1, 1, 1, recordCell, nullptr, nullptr,
                                     r.client(), &count));
    EXPECT_EQ(r.Cells.size(), 3u);
    Recorder points;
    points.StopAfter = 2;
    EXPECT_FALSE(ProcessPoints(pair->Info, pair->Data, false, 0, 1, 1, 1, recordPoint, points.client()));
    EXPECT_EQ(points.Points.size(), 2u);

    Interrupted = true;
    Recorder none;
    EXPECT_FALSE(ProcessSurfaceCells(pair->Info, pair->Data, true, 0, 1, 1, 1, recordCell, nullptr, nullptr,
                                     none.client()));
    EXPECT_TRUE(none.Cells.empty());
    EXPECT_FALSE(ProcessVolumeCells(pair->Info, pair->Data, true, 0, 1, 1, 1, recordVolumeCell, none.client()));
    // Without the check the same walk runs to the end.
    EXPECT_TRUE(ProcessSurfaceCells(pair->Info, pair->Data, false, 0, 1, 1, 1, recordCell, nullptr, nullptr,
                                    none.client()));
    EXPECT_EQ(none.Cells.size(), 6u * 16);
    Interrupted = false;
}

// ---- values ---------------------------------------------------------------------------------

TEST_F(TraversalTest, FastAndGeneralValuePathsAgree) {
    ZoneSpec_s spec;
    spec.NumPtsI = 4;
    spec.NumPtsJ = 3;
    spec.NumPtsK = 2;
    const FieldDataType_e types[3] = {FieldDataType_Float, FieldDataType_Double, FieldDataType_LongInt};
    EntIndex_t zone = 0;
    ASSERT_TRUE(AddZone(&spec, types, nullptr, zone, nullptr, nullptr, -1, false));
    for (EntIndex_t var = 0; var < 3; var++) {
        FieldData_a fieldData = GetWritableNativeFieldDataPtr(dataSet(), zone, var);
        for (LgIndex_t n = 0; n < 24; n++) SetFieldValue(fieldData, n, var == 2 ? double(7 * n - 40) : 0.25 * n + var / 3.0);
    }
    auto pair = setup(zone);
    for (int axis = 0; axis < 3; axis++) {
        FieldData_a fieldData = pair->Data->Nodal[CZVar_X + axis];
        ASSERT_NE(fieldData, nullptr);
        EXPECT_EQ(pair->Data->Native[CZVar_X + axis], fieldData);
        EXPECT_EQ(pair->Data->Nodal[CZVar_DrawX + axis], fieldData);
        FieldValueReader_s reader = MakeFieldValueReader(fieldData);
        EXPECT_EQ(reader.Floats != nullptr, axis == 0);
        EXPECT_EQ(reader.Doubles != nullptr, axis == 1);
        for (LgIndex_t n = 0; n < 24; n++) {
            double expected = axis == 2 ? double(7 * n - 40) : axis == 0 ? double(float(0.25 * n)) : 0.25 * n + 1 / 3.0;
            EXPECT_EQ(ReadFieldValue(reader, n), expected);
            EXPECT_EQ(GetCZNodalValue(pair->Data, CZVar_e(CZVar_X + axis), n), expected);
            EXPECT_EQ(GetFieldValue(fieldData, n), expected);
        }
    }
    // A nodal variable asked for at cells gets a derived cell-centred view, and the other way.
    FieldData_a native, nodal, cc;
    ASSERT_TRUE(SetupAndAssignNativeAndDerivedVar(dataSet(), GetFrameZoneList(CurFrame), zone, 0, true, true, &native,
                                                  &nodal, &cc, nullptr));
    EXPECT_EQ(nodal, native);
    ASSERT_NE(cc, nullptr);
    EXPECT_EQ(cc->Location, ValueLocation_CellCentered);
    // Cell (1,1,0) averages its eight corners.
    double sum = 0.0;
    for (LgIndex_t corner : {5, 6, 9, 10, 17, 18, 21, 22}) sum += GetFieldValue(native, corner);
    EXPECT_DOUBLE_EQ(GetFieldValue(cc, 5), sum / 8);
    // A dry run only records the variable.
    Set_a *needed = AllocSet(false);
    ASSERT_TRUE(SetupAndAssignNativeAndDerivedVar(dataSet(), nullptr, zone, 2, true, false, &native, &nodal, &cc, needed));
    EXPECT_EQ(native, nullptr);
    EXPECT_TRUE(InSet(needed, 2));
    EXPECT_EQ(MemberCount(needed), 1);
    DeallocSet(&needed);
    // No need, or no variable: nothing.
    ASSERT_TRUE(SetupAndAssignNativeAndDerivedVar(dataSet(), nullptr, zone, -1, true, true, &native, &nodal, &cc, nullptr));
    EXPECT_EQ(nodal, nullptr);
}

TEST_F(TraversalTest, MeshAndFillColoursFollowTheStyle) {
    EntIndex_t zone = addOrdered(3, 3, 1);
    auto multi = setup(zone, [](FieldMapStyle_s &map) { map.Mesh.Color = 65533; });
    EXPECT_EQ(multi->Info->Colors.MeshColor, MultiColorMark);
    EXPECT_EQ(multi->Info->Colors.FillColor, ColorNotDrawn);
    auto hidden = setup(zone, [](FieldMapStyle_s &map) {
        map.Mesh.Color = 3;
        map.Mesh.MeshType = 2;
    });
    EXPECT_EQ(hidden->Info->Colors.MeshColor, 3);
    EXPECT_EQ(hidden->Info->Colors.FillColor, 7);
    EXPECT_EQ(hidden->Info->Colors.UseLighting, 0);
    auto noMesh = setup(zone, [](FieldMapStyle_s &map) { map.Mesh.Show = false; });
    EXPECT_EQ(noMesh->Info->Colors.MeshColor, ColorNotDrawn);
}

// ---- approximate skips ------------------------------------------------------------------------

TEST_F(TraversalTest, ReducedIndexSkipsSplitTheRatioOverTheDirections) {
    auto pair = setup(addOrdered(3, 3, 3));
    LgIndex_t i, j, k;
    struct Case {
        double Fraction;
        LgIndex_t I, J, K;
        IndexSkipMode_e Mode;
        LgIndex_t Skips[3];
    } cases[] = {
        // Base 27 over three equal directions: a cube root each.
        {1.0 / 27, 100, 100, 100, IndexSkipMode_Points, {3, 3, 3}},
        // Boundary planes weigh each direction by the two others: still equal.
        {1.0 / 27, 100, 100, 100, IndexSkipMode_Surfaces, {3, 3, 3}},
        // Base 8: the smallest (I) takes the cube root, the middle the square root of the rest.
        {1.0 / 8, 10, 100, 1000, IndexSkipMode_Points, {2, 2, 2}},
        // A direction of 4 points has the limit (4-1)/3 = 1; K, equal to J, comes first.
        {1.0 / 64, 4, 100, 100, IndexSkipMode_Points, {1, 8, 8}},
        // A direction of 3 points: limit 0, skip 1 all the same.
        {1.0 / 1000, 3, 3, 3, IndexSkipMode_Points, {1, 1, 1}},
        {1.0, 50, 50, 50, IndexSkipMode_Points, {1, 1, 1}},
    };
    for (const Case &c : cases) {
        GeneralBase.Interface.PercentageOfPointsToKeep = c.Fraction;
        GetReducedIndexSkipByRatio(pair->Info, c.I, c.J, c.K, c.Mode, &i, &j, &k);
        EXPECT_EQ((std::array<LgIndex_t, 3>{i, j, k}), (std::array<LgIndex_t, 3>{c.Skips[0], c.Skips[1], c.Skips[2]}))
            << c.I << "x" << c.J << "x" << c.K << " fraction " << c.Fraction;
    }
    // Applied at set-up, the surface skips land in CZData_s.
    GeneralBase.Interface.PercentageOfPointsToKeep = 1.0 / 27;
    auto approx = setup(addOrdered(40, 40, 40), {}, true);
    EXPECT_TRUE(approx->Data->IsApprox);
    EXPECT_EQ(approx->Data->ISkip * approx->Data->JSkip * approx->Data->KSkip, 27);
    EXPECT_EQ(approx->Data->PointISkip, 3);
}

// ---- subzones ---------------------------------------------------------------------------------

class SubZoneTest : public TraversalTest {
  protected:
    static void SetUpTestSuite() {
        if (!Thread_ThreadingIsInitialized()) ownsThreads = Thread_Init();
        if (MainlineJobPool == nullptr) ownsPoolSystem = ThreadPoolInit();
    }
    static void TearDownTestSuite() {
        if (ownsPoolSystem) ThreadPoolCleanup();
        if (ownsThreads) Thread_Cleanup();
        ownsThreads = ownsPoolSystem = false;
    }
    void SetUp() override {
        TraversalTest::SetUp();
        savedPool = StandardThreadPool;
    }
    void TearDown() override {
        if (StandardThreadPool != savedPool) ThreadPoolFree(&StandardThreadPool);
        StandardThreadPool = savedPool;
        TraversalTest::TearDown();
    }
    void useWorkers(int workers) {
        if (StandardThreadPool != savedPool) ThreadPoolFree(&StandardThreadPool);
        StandardThreadPool = nullptr;
        if (workers < 0) return;  // no pool: the jobs run inline
        StandardThreadPool = ThreadPoolCreate();
        for (int w = 0; w < workers; w++) ASSERT_TRUE(ThreadPoolCreateThread(StandardThreadPool));
    }
    static inline bool ownsThreads = false, ownsPoolSystem = false;
    ThreadPool_s *savedPool = nullptr;
};

TEST_F(SubZoneTest, OrderedPartitionByHand) {
    // 21 x 21 x 2: K (smallest) one piece, J (before I among equals) two pieces of 10, I two.
    ZoneOptPartitioning_s *partitioning = CreateOrderedZoneOptPartitioning(21, 21, 2);
    ASSERT_NE(partitioning, nullptr);
    ASSERT_EQ(partitioning->NumSubZones, 4);
    // Numbered I outermost: subzone 1 is I piece 0, J piece 1.
    const LgIndex_t expected[4][6] = {
        {0, 9, 0, 9, 0, 0}, {0, 9, 10, 19, 0, 0}, {10, 19, 0, 9, 0, 0}, {10, 19, 10, 19, 0, 0}};
    for (LgIndex_t s = 0; s < 4; s++) {
        LgIndex_t r[6];
        GetSubZoneCellRange(partitioning, s, &r[0], &r[1], &r[2], &r[3], &r[4], &r[5]);
        EXPECT_EQ(std::vector<LgIndex_t>(r, r + 6), std::vector<LgIndex_t>(expected[s], expected[s] + 6)) << s;
    }
    ZoneOptPartitioningDealloc(&partitioning);
    EXPECT_EQ(partitioning, nullptr);

    // 26 cells make three pieces (a remainder of 6 adds one), the last ending at the last cell;
    // 24 cells make two.
    partitioning = CreateOrderedZoneOptPartitioning(27, 25, 1);
    ASSERT_NE(partitioning, nullptr);
    EXPECT_EQ(partitioning->NumSubZones, 3 * 2);
    EXPECT_EQ(partitioning->IMax[5], 25);
    EXPECT_EQ(partitioning->JMax[5], 23);
    ZoneOptPartitioningDealloc(&partitioning);

    // Too small for two pieces: no partition.
    EXPECT_EQ(CreateOrderedZoneOptPartitioning(11, 11, 11), nullptr);

    // Directions over their allowance, 199 cells each: K (first among equals) may have 6 pieces,
    // 199 / 6 = 33 doesn't divide, so 34 long; J the same; I may have 256 / 36 = 7, 29 long.
    partitioning = CreateOrderedZoneOptPartitioning(200, 200, 200);
    ASSERT_NE(partitioning, nullptr);
    EXPECT_EQ(partitioning->NumSubZones, 7 * 6 * 6);
    EXPECT_EQ(partitioning->KMax[0], 33);
    EXPECT_EQ(partitioning->JMax[0], 33);
    EXPECT_EQ(partitioning->IMax[0], 28);
    EXPECT_EQ(partitioning->KMax[5], 198);  // the last K piece ends on the last cell
    EXPECT_EQ(partitioning->JMin[6], 34);
    EXPECT_EQ(partitioning->IMin[36], 29);
    ZoneOptPartitioningDealloc(&partitioning);
}

TEST_F(SubZoneTest, MinMaxPerSubZoneEqualsABruteForceScan) {
    const LgIndex_t I = 37, J = 23, K = 6;
    EntIndex_t zone = addOrdered(I, J, K);
    // Rising in every direction, so each subzone's extremes lie on its first and its last nodes.
    FieldData_a x = GetWritableNativeFieldDataPtr(dataSet(), zone, 0);
    for (LgIndex_t n = 0; n < I * J * K; n++)
        SetFieldValue(x, n, double((n % I + 1) * ((n / I) % J + 2) * (n / (I * J) + 3)) + 0.25 * std::sin(0.37 * n));
    auto pair = setup(zone);
    ZoneOptPartitioning_s *partitioning = CreateOrderedZoneOptPartitioning(I, J, K);
    ASSERT_NE(partitioning, nullptr);
    // Every cell lies in exactly one subzone.
    std::vector<int> owners(size_t((I - 1) * (J - 1) * (K - 1)), 0);
    for (LgIndex_t s = 0; s < partitioning->NumSubZones; s++)
        for (LgIndex_t k = partitioning->KMin[s]; k <= partitioning->KMax[s]; k++)
            for (LgIndex_t j = partitioning->JMin[s]; j <= partitioning->JMax[s]; j++)
                for (LgIndex_t i = partitioning->IMin[s]; i <= partitioning->IMax[s]; i++)
                    owners[size_t(i + (I - 1) * (j + (J - 1) * k))]++;
    EXPECT_TRUE(std::all_of(owners.begin(), owners.end(), [](int n) { return n == 1; }));

    for (int workers : {-1, 1, 2}) {
        useWorkers(workers);
        ZoneOptVarMinMax_s *minMax = ZoneOptVarMinMaxAlloc(partitioning->NumSubZones);
        ASSERT_NE(minMax, nullptr);
        ASSERT_TRUE(FillZoneOptVarMinMax(pair->Data, partitioning, pair->Data->Nodal[CZVar_X], minMax));
        EXPECT_TRUE(minMax->IsValid);
        EXPECT_EQ(minMax->Location, ValueLocation_Nodal);
        for (LgIndex_t s = 0; s < partitioning->NumSubZones; s++) {
            double min = 1e150, max = -1e150;
            for (LgIndex_t k = partitioning->KMin[s]; k <= partitioning->KMax[s] + 1; k++)
                for (LgIndex_t j = partitioning->JMin[s]; j <= partitioning->JMax[s] + 1; j++)
                    for (LgIndex_t i = partitioning->IMin[s]; i <= partitioning->IMax[s] + 1; i++) {
                        double v = GetFieldValue(x, i + I * j + I * J * k);
                        min = std::min(min, v);
                        max = std::max(max, v);
                    }
            EXPECT_EQ(minMax->SubZoneMin[s], min) << "subzone " << s << " workers " << workers;
            EXPECT_EQ(minMax->SubZoneMax[s], max) << "subzone " << s << " workers " << workers;
        }
        ZoneOptVarMinMaxDealloc(&minMax);
    }

    // Cell-centred values: a subzone reads its own cells, no wider.
    ZoneSpec_s spec;
    spec.NumPtsI = I;
    spec.NumPtsJ = J;
    spec.NumPtsK = K;
    const ValueLocation_e locations[3] = {ValueLocation_CellCentered, ValueLocation_Nodal, ValueLocation_Nodal};
    EntIndex_t ccZone = dataSet()->NumZones;
    ASSERT_TRUE(AddZone(&spec, nullptr, locations, ccZone, nullptr, nullptr, -1, false));
    FieldData_a cc = GetWritableNativeFieldDataPtr(dataSet(), ccZone, 0);
    ASSERT_EQ(cc->Location, ValueLocation_CellCentered);
    for (LgIndex_t n = 0; n < cc->NumValues; n++) SetFieldValue(cc, n, double((n % I + 1) * (n / I + 1)));
    CZData_s *ccData = nullptr;
    ASSERT_TRUE(SetupCZData(dataSet(), ccZone, "cc zone", &ccData));
    ZoneOptVarMinMax_s *ccMinMax = ZoneOptVarMinMaxAlloc(partitioning->NumSubZones);
    ASSERT_TRUE(FillZoneOptVarMinMax(ccData, partitioning, cc, ccMinMax));
    EXPECT_EQ(ccMinMax->Location, ValueLocation_CellCentered);
    for (LgIndex_t s = 0; s < partitioning->NumSubZones; s++) {
        LgIndex_t first = partitioning->IMin[s] + I * (partitioning->JMin[s] + J * partitioning->KMin[s]);
        LgIndex_t last = partitioning->IMax[s] + I * (partitioning->JMax[s] + J * partitioning->KMax[s]);
        EXPECT_EQ(ccMinMax->SubZoneMin[s], GetFieldValue(cc, first)) << s;
        EXPECT_EQ(ccMinMax->SubZoneMax[s], GetFieldValue(cc, last)) << s;
    }
    ZoneOptVarMinMaxDealloc(&ccMinMax);
    ReleaseSetupData(&ccData);
    ZoneOptPartitioningDealloc(&partitioning);

    // The zone's record: partition and the X, Y, Z ranges in one call.
    useWorkers(2);
    ZoneOptInfo_s *optInfo = ZoneOptInfoAlloc();
    ASSERT_NE(optInfo, nullptr);
    ASSERT_TRUE(SetupOptimizationForZone(pair->Data, true, nullptr, optInfo));
    EXPECT_TRUE(IsZoneOptPartitioningValid(optInfo));
    EXPECT_FALSE(IsVarOptMinMaxValid(optInfo, ZoneOptVar_Contour));
    for (ZoneOptVar_e var : {ZoneOptVar_X, ZoneOptVar_Y, ZoneOptVar_Z}) EXPECT_TRUE(IsVarOptMinMaxValid(optInfo, var));
    // Y is j: subzone 0 spans nodes j = 0 .. JMax + 1.
    EXPECT_EQ(optInfo->VarMinMax[ZoneOptVar_Y]->SubZoneMin[0], 0.0);
    EXPECT_EQ(optInfo->VarMinMax[ZoneOptVar_Y]->SubZoneMax[0], optInfo->Partitioning->JMax[0] + 1.0);
    InvalidateVarOptMinMax(optInfo, ZoneOptVar_Y);
    EXPECT_FALSE(IsVarOptMinMaxValid(optInfo, ZoneOptVar_Y));
    ASSERT_TRUE(SetupOptimizationForZone(pair->Data, true, nullptr, optInfo));
    EXPECT_TRUE(IsVarOptMinMaxValid(optInfo, ZoneOptVar_Y));
    ZoneOptInfoDealloc(&optInfo);
}

TEST_F(SubZoneTest, FEPartitionAndItsMinMax) {
    const int nx = 60, ny = 50;  // 3000 quadrilaterals
    Nodes nodes = quadGrid(nx, ny);
    EntIndex_t zone = addFE(ZoneType_FEQuad, (nx + 1) * (ny + 1), nodes);
    // A plane grid: X = i, Y = j.
    FieldData_a x = GetWritableNativeFieldDataPtr(dataSet(), zone, 0);
    FieldData_a y = GetWritableNativeFieldDataPtr(dataSet(), zone, 1);
    for (LgIndex_t n = 0; n < (nx + 1) * (ny + 1); n++) {
        SetFieldValue(x, n, n % (nx + 1));
        SetFieldValue(y, n, n / (nx + 1));
    }
    auto pair = setup(zone);
    ZoneOptPartitioning_s *partitioning = CreateFEZoneOptPartitioning(pair->Data->NodeMap, x, y, nullptr);
    ASSERT_NE(partitioning, nullptr);
    const LgIndex_t numCells = nx * ny, numSubZones = partitioning->NumSubZones;
    EXPECT_GE(numSubZones, 2);
    EXPECT_LE(numSubZones, MaxSubZones);
    EXPECT_EQ(partitioning->SubZoneStart[0], 0);
    EXPECT_EQ(partitioning->SubZoneStart[numSubZones], numCells);
    for (LgIndex_t s = 0; s < numSubZones; s++) EXPECT_LT(partitioning->SubZoneStart[s], partitioning->SubZoneStart[s + 1]);
    Nodes cellList(partitioning->CellList, partitioning->CellList + numCells);
    std::sort(cellList.begin(), cellList.end());
    for (LgIndex_t e = 0; e < numCells; e++) ASSERT_EQ(cellList[size_t(e)], e);

    useWorkers(2);
    ZoneOptVarMinMax_s *minMax = ZoneOptVarMinMaxAlloc(numSubZones);
    ASSERT_TRUE(FillZoneOptVarMinMax(pair->Data, partitioning, x, minMax));
    for (LgIndex_t s = 0; s < numSubZones; s++) {
        double min = 1e150, max = -1e150;
        for (LgIndex_t p = partitioning->SubZoneStart[s]; p < partitioning->SubZoneStart[s + 1]; p++)
            for (int c = 0; c < 4; c++) {
                double v = GetFieldValue(x, nodes[size_t(partitioning->CellList[p]) * 4 + size_t(c)]);
                min = std::min(min, v);
                max = std::max(max, v);
            }
        EXPECT_EQ(minMax->SubZoneMin[s], min) << s;
        EXPECT_EQ(minMax->SubZoneMax[s], max) << s;
    }
    ZoneOptVarMinMaxDealloc(&minMax);

    // A walk by subzones (blanking on, skip 1) visits the same cells as the whole walk; a subzone
    // the blanking test rules out is passed over.
    ZoneOptInfo_s *optInfo = ZoneOptInfoAlloc();
    optInfo->Partitioning = partitioning;
    partitioning->IsValid = true;
    pair->Info->OptInfo = optInfo;
    auto cellsOf = [](const Recorder &r) {
        Nodes cells;
        for (const VisitedCell &c : r.Cells) cells.push_back(c.Cell);
        std::sort(cells.begin(), cells.end());
        return cells;
    };
    Recorder whole = walkSurface(*pair, 0);
    enableValueBlanking(*pair);
    Recorder bySubZone = walkSurface(*pair, WalkFlag_ValueBlanking);
    EXPECT_EQ(cellsOf(bySubZone), cellsOf(whole));
    CZBlankingHooks.GetSubZoneBlankedCondition = [](const CZInfo_s *, const CZData_s *, LgIndex_t subZone, bool, bool,
                                                    bool) {
        return subZone == 0 ? CellBlankedCond_EntirelyBlanked : CellBlankedCond_NotBlanked;
    };
    EXPECT_EQ(countSurface(*pair, WalkFlag_ValueBlanking), numCells - (partitioning->SubZoneStart[1] - partitioning->SubZoneStart[0]));
    pair->Info->OptInfo = nullptr;
    ZoneOptInfoDealloc(&optInfo);
}

TEST_F(SubZoneTest, OrderedWalkBySubZonesMatchesTheWholeWalk) {
    EntIndex_t zone = addOrdered(25, 26, 17);  // 2 x 3 x 2 subzones
    for (int surfaces : {SurfacesToPlot_BoundaryFaces, SurfacesToPlot_All, SurfacesToPlot_IJKPlanes}) {
        auto pair = setup(zone, [&](FieldMapStyle_s &map) {
            map.Surfaces.SurfacesToPlot = surfaces;
            map.Surfaces.IRange = {2, 0, 7};
            map.Surfaces.KRange = {1, 12, 11};
        });
        auto keyed = [](const Recorder &r) {
            std::vector<std::pair<std::array<LgIndex_t, 4>, int>> all;
            for (const VisitedCell &c : r.Cells) all.push_back({c.N, c.Plane});
            std::sort(all.begin(), all.end());
            return all;
        };
        Recorder whole = walkSurface(*pair, 0);
        ZoneOptInfo_s *optInfo = ZoneOptInfoAlloc();
        ASSERT_TRUE(SetupOptimizationForZone(pair->Data, true, nullptr, optInfo));
        ASSERT_TRUE(IsZoneOptPartitioningValid(optInfo));
        EXPECT_EQ(optInfo->Partitioning->NumSubZones, 12);
        pair->Info->OptInfo = optInfo;
        enableValueBlanking(*pair);
        Recorder bySubZone = walkSurface(*pair, WalkFlag_ValueBlanking);
        EXPECT_EQ(keyed(bySubZone), keyed(whole)) << "surfaces " << surfaces;
        // One subzone asked for: only its cells.
        pair->Info->SubZone = 1;
        Recorder one = walkSurface(*pair, 0);
        LgIndex_t r[6];
        GetSubZoneCellRange(optInfo->Partitioning, 1, &r[0], &r[1], &r[2], &r[3], &r[4], &r[5]);
        for (const VisitedCell &c : one.Cells) {
            LgIndex_t index[3] = {c.Cell % 25, (c.Cell / 25) % 26, c.Cell / (25 * 26)};
            for (int d = 0; d < 3; d++) {
                EXPECT_GE(index[d], r[2 * d]);
                EXPECT_LE(index[d], std::max(r[2 * d + 1], d == c.Plane ? r[2 * d + 1] + 1 : r[2 * d + 1]));
            }
        }
        int count = -1;
        ASSERT_TRUE(ProcessVolumeCells(pair->Info, pair->Data, false, 0, 1, 1, 1, nullptr, 0, &count));
        EXPECT_EQ(count, (r[1] - r[0] + 1) * (r[3] - r[2] + 1) * (r[5] - r[4] + 1));
        pair->Info->SubZone = -1;
        pair->Info->OptInfo = nullptr;
        ZoneOptInfoDealloc(&optInfo);
    }
}

}  // namespace
