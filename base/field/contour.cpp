// Contour lines (assembled and cell-local), band cutting and flood, auto labels and their text,
// and contour-line extraction.
#include "base/field/contour.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <unordered_map>

#include <sys/mman.h>

#include "base/data/datahooks.h"
#include "base/data/datautil.h"
#include "base/field/colormap.h"
#include "base/field/contlevel.h"
#include "base/field/plot.h"
#include "base/field/proccell.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/macro/actcmd.h"
#include "base/macro/vocabtables.h"
#include "base/plot/frame.h"
#include "base/plot/grcolor.h"
#include "base/plot/grhw.h"
#include "base/plot/solntime.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"

namespace {

const char *const ScratchMessage = "Out of memory while allocating scratch space to do contour plot.";

// Scratch that cannot be had ends the work with the message; nothing is thrown out of this module.
template <typename Work>
bool withScratch(Work &&work) {
    try {
        return work();
    } catch (const std::bad_alloc &) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
}

// Values of a contour variable at nodes, less those of an offset variable when one is given.
struct LevelValues {
    FieldValueReader_s Var{}, Offset{};
    bool HasOffset = false;

    LevelValues(FieldData_a var, FieldData_a varOffset)
        : Var(MakeFieldValueReader(var)), Offset(MakeFieldValueReader(varOffset)), HasOffset(varOffset != nullptr) {}
    double at(LgIndex_t node) const {
        double value = ReadFieldValue(Var, node);
        return HasOffset ? value - ReadFieldValue(Offset, node) : value;
    }
};

// Which side of level v a value lies: 1 at or above, 2 below, 0 neither (not a number). An edge
// is crossed exactly when its two ends give 1 and 2.
inline int sideOf(double a, double v) { return (a - v >= 0 ? 1 : 0) | (a - v < 0 ? 2 : 0); }
inline bool sidesCross(int a, int b) { return (a | b) == 3; }

// The polyline being traced: index-fract points up to MAXPTSINALINE; points past it are dropped.
struct IndexFractLine {
    std::vector<LgIndex_t> Cells, I0, I1;
    std::vector<double> Fract;
    LgIndex_t Count = 0, Limit = 0;

    bool alloc() {
        Limit = std::max(GeneralBase.MaxPtsInALine, 2);
        try {
            Cells.resize(size_t(Limit));
            I0.resize(size_t(Limit));
            I1.resize(size_t(Limit));
            Fract.resize(size_t(Limit));
        } catch (const std::bad_alloc &) {
            return false;
        }
        return true;
    }
    void stuff(LgIndex_t cell, LgIndex_t i0, LgIndex_t i1, double fract) {
        if (Count >= Limit) return;
        Cells[size_t(Count)] = cell;
        I0[size_t(Count)] = i0;
        I1[size_t(Count)] = i1;
        Fract[size_t(Count)] = fract;
        Count++;
    }
};

struct LineWalk {
    CZInfo_s *CZInfo;
    CZData_s *CZData;
    int Level;
    double Value;
    const LevelValues *Values;
    ContourLineCallback_pf Callback;
    long ClientData;
    IndexFractLine *Line;
    bool UseValue, UseIJK, UseDepth;

    bool anyBlanking() const { return UseValue || UseIJK || UseDepth; }
    bool emit(IJKPlanes_e plane) {
        if (Line->Count < 2) return true;
        return Callback(CZInfo, CZData, Line->Cells.data(), Line->I0.data(), Line->I1.data(), Line->Fract.data(),
                        Line->Count, plane, Level, Value, ClientData);
    }
};

void setLineBlanking(LineWalk &walk) {
    walk.UseValue = walk.CZData->BlankingActive && IsZoneOrCOBValueBlankingActive(walk.CZInfo);
    walk.UseIJK = walk.CZData->BlankingActive && IsZoneOrCOBIJKBlankingActive(walk.CZInfo);
    walk.UseDepth = IsZoneOrCOBDepthBlankingActive(walk.CZInfo);
}

bool isWhollyBlanked(const LineWalk &walk, LgIndex_t cell, IJKPlanes_e plane) {
    return CZBlankingHooks.GetSurfaceCellBlankedCondition(walk.CZInfo, walk.CZData, cell, plane, walk.UseValue,
                                                          walk.UseIJK,
                                                          walk.UseDepth) == CellBlankedCond_EntirelyBlanked;
}

// ---- FE level lines ------------------------------------------------------------------------

struct FEScratch {
    std::vector<uint8_t> Marks;  // per element; zero between levels
    std::vector<LgIndex_t> Marked;
    IndexFractLine Line;
    bool alloc(LgIndex_t numCells) {
        try {
            Marks.assign(size_t(std::max<LgIndex_t>(numCells, 1)), 0);
            Marked.reserve(size_t(std::max<LgIndex_t>(numCells, 1)));
        } catch (const std::bad_alloc &) {
            return false;
        }
        return Line.alloc();
    }
};

int feNumEdges(ZoneType_e type) { return type == ZoneType_FETriangle ? 3 : type == ZoneType_FEQuad ? 4 : 0; }

void feEdgeNodes(NodeMap_a nodeMap, LgIndex_t element, int edge, int numEdges, LgIndex_t *a, LgIndex_t *b) {
    *a = NodeMapGetNode(nodeMap, element, edge);
    *b = NodeMapGetNode(nodeMap, element, (edge + 1) % numEdges);
}

// The element over an edge in this zone, or -1.
LgIndex_t feNeighbor(const CZData_s *czData, LgIndex_t element, int edge) {
    if (czData->FaceNeighbors == nullptr) return -1;
    LgIndex_t neighbor = -1;
    if (!HasOnlyOneLocalFaceNeighbor(czData->FaceNeighbors, element, edge, &neighbor)) return -1;
    return neighbor;
}

bool traceFE(LineWalk &walk, FEScratch &scratch, LgIndex_t element, int edge, int numEdges) {
    NodeMap_a nodeMap = walk.CZData->NodeMap;
    const LevelValues &values = *walk.Values;
    IndexFractLine &line = *walk.Line;
    line.Count = 0;
    LgIndex_t a, b;
    feEdgeNodes(nodeMap, element, edge, numEdges, &a, &b);
    scratch.Marks[size_t(element)] &= uint8_t(~(1u << edge));
    line.stuff(element, a, b, ContourEdgeFraction(walk.Value, values.at(a), values.at(b)));
    for (;;) {
        // Odd entry edges search upwards, even ones downwards, each wrapping round the element.
        const int step = (edge & 1) != 0 ? 1 : numEdges - 1;
        int exit = -1;
        for (int k = 1, candidate = edge; k < numEdges; k++) {
            candidate = (candidate + step) % numEdges;
            if ((scratch.Marks[size_t(element)] & (1u << candidate)) != 0) {
                exit = candidate;
                break;
            }
        }
        if (exit < 0) break;
        feEdgeNodes(nodeMap, element, exit, numEdges, &a, &b);
        double fract = ContourEdgeFraction(walk.Value, values.at(a), values.at(b));
        scratch.Marks[size_t(element)] &= uint8_t(~(1u << exit));
        LgIndex_t neighbor = feNeighbor(walk.CZData, element, exit);
        if (neighbor < 0 || neighbor >= walk.CZData->NumCells) {
            line.stuff(-1, a, b, fract);
            break;
        }
        int entry = -1;
        for (int e = 0; e < numEdges && entry < 0; e++) {
            LgIndex_t na, nb;
            feEdgeNodes(nodeMap, neighbor, e, numEdges, &na, &nb);
            if ((na == a && nb == b) || (na == b && nb == a)) entry = e;
        }
        if (entry < 0) break;
        line.stuff(element, a, b, fract);
        if ((scratch.Marks[size_t(neighbor)] & (1u << entry)) == 0) break;
        scratch.Marks[size_t(neighbor)] &= uint8_t(~(1u << entry));
        element = neighbor;
        edge = entry;
    }
    return walk.emit(IJKPlanes_None);
}

bool processFELevel(LineWalk &walk, FEScratch &scratch) {
    CZData_s *czData = walk.CZData;
    const int numEdges = feNumEdges(walk.CZInfo->ZoneType);
    if (numEdges == 0 || czData->NodeMap == nullptr) return true;
    NodeMap_a nodeMap = czData->NodeMap;
    const LevelValues &values = *walk.Values;
    const double v = walk.Value;
    scratch.Marked.clear();
    for (LgIndex_t element = 0; element < czData->NumCells; element++) {
        if (walk.anyBlanking() && isWhollyBlanked(walk, element, IJKPlanes_None)) continue;
        int sides[4];
        for (int c = 0; c < numEdges; c++) sides[c] = sideOf(values.at(NodeMapGetNode(nodeMap, element, c)), v);
        uint8_t bits = 0;
        for (int e = 0; e < numEdges; e++)
            if (sidesCross(sides[e], sides[(e + 1) % numEdges])) bits |= uint8_t(1u << e);
        if (bits == 0) continue;
        scratch.Marks[size_t(element)] = bits;
        scratch.Marked.push_back(element);
    }
    bool ok = true;
    // Open lines first: from edges with nothing (or a wholly blanked element) over them.
    for (size_t n = 0; ok && n < scratch.Marked.size(); n++) {
        LgIndex_t element = scratch.Marked[n];
        for (int e = 0; ok && e < numEdges; e++) {
            if ((scratch.Marks[size_t(element)] & (1u << e)) == 0) continue;
            LgIndex_t neighbor = feNeighbor(czData, element, e);
            if (neighbor < 0 || (walk.anyBlanking() && isWhollyBlanked(walk, neighbor, IJKPlanes_None)))
                ok = traceFE(walk, scratch, element, e, numEdges);
        }
    }
    for (size_t n = 0; ok && n < scratch.Marked.size(); n++) {
        LgIndex_t element = scratch.Marked[n];
        for (int e = 0; ok && e < numEdges; e++)
            if ((scratch.Marks[size_t(element)] & (1u << e)) != 0) ok = traceFE(walk, scratch, element, e, numEdges);
    }
    // Every mark is used by a complete pass; a stopped one leaves some behind.
    if (!ok)
        for (LgIndex_t element : scratch.Marked) scratch.Marks[size_t(element)] = 0;
    return ok;
}

// ---- ordered level lines --------------------------------------------------------------------

// One index plane: node strides A and B, NumA by NumB nodes from Base.
struct LevelPlane {
    LgIndex_t Base, A, B, NumA, NumB;
    IJKPlanes_e Kind;
};

bool planeIsShown(int surfaces, int direction) {
    switch (surfaces) {
    case SurfacesToPlot_IPlanes: return direction == 0;
    case SurfacesToPlot_JPlanes: return direction == 1;
    case SurfacesToPlot_KPlanes: return direction == 2;
    case SurfacesToPlot_IJPlanes: return direction != 2;
    case SurfacesToPlot_JKPlanes: return direction != 0;
    case SurfacesToPlot_IKPlanes: return direction != 1;
    default: return true;
    }
}

std::vector<LevelPlane> orderedLevelPlanes(const CZInfo_s *czInfo, const CZData_s *czData) {
    const LgIndex_t dims[3] = {czData->NumIPts, czData->NumJPts, czData->NumKPts};
    const LgIndex_t strides[3] = {1, czData->NumIPts, czData->NumIJPts};
    // The in-plane directions: I planes run along J and K, J planes along I and K, K planes
    // along I and J.
    static constexpr int aOf[3] = {1, 0, 0}, bOf[3] = {2, 2, 1};
    const int surfaces =
        czInfo->FieldMap != nullptr ? czInfo->FieldMap->Surfaces.SurfacesToPlot : SurfacesToPlot_BoundaryFaces;
    std::vector<LevelPlane> planes;
    for (int d = 0; d < 3; d++) {
        if (dims[aOf[d]] < 2 || dims[bOf[d]] < 2 || !planeIsShown(surfaces, d)) continue;
        const LgIndex_t last = dims[d] - 1;
        std::vector<LgIndex_t> indices;
        if (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces) {
            indices.push_back(0);
            if (last > 0) indices.push_back(last);
        } else if (surfaces == SurfacesToPlot_All || czInfo->FieldMap == nullptr) {
            for (LgIndex_t p = 0; p <= last; p++) indices.push_back(p);
        } else {
            const FieldSurfaces_s &style = czInfo->FieldMap->Surfaces;
            const IndexRange_s *given[3] = {&style.IRange, &style.JRange, &style.KRange};
            IndexRange_s range = GetZeroBasedIndexRange(*given[d], dims[d]);
            for (LgIndex_t p = range.Min; p <= range.Max; p += range.Skip) indices.push_back(p);
        }
        for (LgIndex_t p : indices)
            planes.push_back(
                {p * strides[d], strides[aOf[d]], strides[bOf[d]], dims[aOf[d]], dims[bOf[d]], IJKPlanes_e(d)});
    }
    return planes;
}

// Planes are cut into tiles of cells whose value range is found once, so a level only visits
// the tiles it can cross. A tile's range covers every node of its cells.
constexpr LgIndex_t TileCells = 32;

struct PlaneTiles {
    LgIndex_t NumTA = 0, NumTB = 0;
    std::vector<double> Min, Max;
};

struct OrderedScratch {
    std::vector<LevelPlane> Planes;
    std::vector<PlaneTiles> Tiles;  // per plane, filled on first use
    std::vector<uint8_t> Marks;     // per cell of the plane being traced; zero between uses
    std::vector<uint8_t> Active;    // per tile of that plane
    IndexFractLine Line;
    bool alloc(const CZInfo_s *czInfo, const CZData_s *czData) {
        try {
            Planes = orderedLevelPlanes(czInfo, czData);
            size_t maxCells = 1;
            for (const LevelPlane &plane : Planes)
                maxCells = std::max(maxCells, size_t(plane.NumA - 1) * size_t(plane.NumB - 1));
            Tiles.assign(Planes.size(), PlaneTiles());
            Marks.assign(maxCells, 0);
        } catch (const std::bad_alloc &) {
            return false;
        }
        return Line.alloc();
    }
};

bool fillPlaneTiles(const LevelPlane &plane, const LevelValues &values, PlaneTiles &tiles) {
    const LgIndex_t cellsA = plane.NumA - 1, cellsB = plane.NumB - 1;
    tiles.NumTA = (cellsA + TileCells - 1) / TileCells;
    tiles.NumTB = (cellsB + TileCells - 1) / TileCells;
    try {
        tiles.Min.assign(size_t(tiles.NumTA) * size_t(tiles.NumTB), std::numeric_limits<double>::infinity());
        tiles.Max.assign(size_t(tiles.NumTA) * size_t(tiles.NumTB), -std::numeric_limits<double>::infinity());
    } catch (const std::bad_alloc &) {
        return false;
    }
    for (LgIndex_t tb = 0; tb < tiles.NumTB; tb++) {
        const LgIndex_t b0 = tb * TileCells, b1 = std::min(b0 + TileCells, cellsB);
        for (LgIndex_t b = b0; b <= b1; b++) {
            const LgIndex_t row = plane.Base + b * plane.B;
            for (LgIndex_t ta = 0; ta < tiles.NumTA; ta++) {
                const LgIndex_t a0 = ta * TileCells, a1 = std::min(a0 + TileCells, cellsA);
                double &min = tiles.Min[size_t(tb * tiles.NumTA + ta)];
                double &max = tiles.Max[size_t(tb * tiles.NumTA + ta)];
                for (LgIndex_t a = a0; a <= a1; a++) {
                    double value = values.at(row + a * plane.A);
                    if (value < min) min = value;
                    if (value > max) max = value;
                }
            }
        }
    }
    return true;
}

struct PlaneWalk {
    LineWalk *Walk;
    const LevelPlane *Plane;
    OrderedScratch *Scratch;
    LgIndex_t CellsA, CellsB;

    uint8_t &marks(LgIndex_t a, LgIndex_t b) { return Scratch->Marks[size_t(a + b * CellsA)]; }
    LgIndex_t corner(LgIndex_t a, LgIndex_t b) const { return Plane->Base + a * Plane->A + b * Plane->B; }
    // Edge 0 joins c+A and c+A+B, edge 1 c+B and c+B+A, edge 2 c+B and c, edge 3 c+A and c.
    void edgeNodes(LgIndex_t c, int edge, LgIndex_t *n0, LgIndex_t *n1) const {
        const LgIndex_t A = Plane->A, B = Plane->B;
        switch (edge) {
        case 0: *n0 = c + A, *n1 = c + A + B; break;
        case 1: *n0 = c + B, *n1 = c + B + A; break;
        case 2: *n0 = c + B, *n1 = c; break;
        default: *n0 = c + A, *n1 = c; break;
        }
    }
    // The cell over an edge: +A, +B, -A, -B; false off the plane.
    bool across(LgIndex_t a, LgIndex_t b, int edge, LgIndex_t *na, LgIndex_t *nb) const {
        static constexpr int da[4] = {1, 0, -1, 0}, db[4] = {0, 1, 0, -1};
        *na = a + da[edge];
        *nb = b + db[edge];
        return *na >= 0 && *na < CellsA && *nb >= 0 && *nb < CellsB;
    }
};

bool traceOrdered(PlaneWalk &pw, LgIndex_t a, LgIndex_t b, int edge) {
    LineWalk &walk = *pw.Walk;
    const LevelValues &values = *walk.Values;
    IndexFractLine &line = *walk.Line;
    line.Count = 0;
    LgIndex_t c = pw.corner(a, b), n0, n1;
    pw.edgeNodes(c, edge, &n0, &n1);
    pw.marks(a, b) &= uint8_t(~(1u << edge));
    line.stuff(c, n0, n1, ContourEdgeFraction(walk.Value, values.at(n0), values.at(n1)));
    for (;;) {
        // Odd entry edges search downwards, even ones upwards, wrapping round the four.
        const int step = (edge & 1) != 0 ? 3 : 1;
        int exit = -1;
        for (int k = 1, candidate = edge; k < 4; k++) {
            candidate = (candidate + step) & 3;
            if ((pw.marks(a, b) & (1u << candidate)) != 0) {
                exit = candidate;
                break;
            }
        }
        if (exit < 0) break;
        pw.edgeNodes(c, exit, &n0, &n1);
        double fract = ContourEdgeFraction(walk.Value, values.at(n0), values.at(n1));
        pw.marks(a, b) &= uint8_t(~(1u << exit));
        LgIndex_t na, nb;
        if (!pw.across(a, b, exit, &na, &nb)) {
            line.stuff(-1, n0, n1, fract);
            break;
        }
        line.stuff(c, n0, n1, fract);
        const int entry = (exit + 2) & 3;
        if ((pw.marks(na, nb) & (1u << entry)) == 0) break;
        pw.marks(na, nb) &= uint8_t(~(1u << entry));
        a = na, b = nb, edge = entry;
        c = pw.corner(a, b);
    }
    return walk.emit(pw.Plane->Kind);
}

// Marks, traces and clears one level on one plane. The marks are all zero again afterwards,
// unless the walk stopped.
bool processOrderedPlane(LineWalk &walk, OrderedScratch &scratch, size_t planeIndex, const LevelValues &values) {
    const LevelPlane &plane = scratch.Planes[planeIndex];
    PlaneTiles &tiles = scratch.Tiles[planeIndex];
    if (tiles.Min.empty() && !fillPlaneTiles(plane, values, tiles)) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
    PlaneWalk pw{&walk, &plane, &scratch, plane.NumA - 1, plane.NumB - 1};
    const double v = walk.Value;
    const size_t numTiles = size_t(tiles.NumTA) * size_t(tiles.NumTB);
    try {
        scratch.Active.assign(numTiles, 0);
    } catch (const std::bad_alloc &) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
    bool anyActive = false;
    for (size_t t = 0; t < numTiles; t++) {
        bool active = tiles.Max[t] - v >= 0 && tiles.Min[t] - v < 0;
        scratch.Active[t] = active;
        anyActive = anyActive || active;
    }
    if (!anyActive) return true;
    auto tileActive = [&](LgIndex_t a, LgIndex_t b) {
        return scratch.Active[size_t((b / TileCells) * tiles.NumTA + a / TileCells)] != 0;
    };
    // Visits the cells of active tiles, rows in order and each row from low A up.
    auto forEachActiveCell = [&](auto &&visit) {
        for (LgIndex_t b = 0; b < pw.CellsB; b++) {
            const LgIndex_t tb = b / TileCells;
            for (LgIndex_t ta = 0; ta < tiles.NumTA; ta++) {
                if (scratch.Active[size_t(tb * tiles.NumTA + ta)] == 0) continue;
                const LgIndex_t a1 = std::min((ta + 1) * TileCells, pw.CellsA);
                for (LgIndex_t a = ta * TileCells; a < a1; a++)
                    if (!visit(a, b)) return false;
            }
        }
        return true;
    };

    const LgIndex_t A = plane.A, B = plane.B;
    forEachActiveCell([&](LgIndex_t a, LgIndex_t b) {
        const LgIndex_t c = pw.corner(a, b);
        if (walk.anyBlanking() && isWhollyBlanked(walk, c, plane.Kind)) {
            pw.marks(a, b) = 0;
            return true;
        }
        const int s0 = sideOf(values.at(c), v), s1 = sideOf(values.at(c + A), v);
        const int s2 = sideOf(values.at(c + A + B), v), s3 = sideOf(values.at(c + B), v);
        pw.marks(a, b) = uint8_t((sidesCross(s1, s2) ? 1 : 0) | (sidesCross(s3, s2) ? 2 : 0) |
                                 (sidesCross(s3, s0) ? 4 : 0) | (sidesCross(s1, s0) ? 8 : 0));
        return true;
    });

    bool ok = true;
    auto startAt = [&](LgIndex_t a, LgIndex_t b, int edge) {
        if (ok && (pw.marks(a, b) & (1u << edge)) != 0) ok = traceOrdered(pw, a, b, edge);
    };
    // Lines that start at the plane's edges, in a fixed order of the four sides.
    for (LgIndex_t a = 0; a < pw.CellsA; a++)
        if (tileActive(a, 0)) startAt(a, 0, 3);
    for (LgIndex_t b = 0; b < pw.CellsB; b++)
        if (tileActive(pw.CellsA - 1, b)) startAt(pw.CellsA - 1, b, 0);
    for (LgIndex_t b = 0; b < pw.CellsB; b++)
        if (tileActive(0, b)) startAt(0, b, 2);
    for (LgIndex_t a = 0; a < pw.CellsA; a++)
        if (tileActive(a, pw.CellsB - 1)) startAt(a, pw.CellsB - 1, 1);
    // Lines that end at a blanked hole start there, so they come out open.
    if (ok && walk.anyBlanking()) {
        forEachActiveCell([&](LgIndex_t a, LgIndex_t b) {
            for (int e = 0; ok && e < 4; e++) {
                LgIndex_t na, nb;
                if ((pw.marks(a, b) & (1u << e)) == 0 || !pw.across(a, b, e, &na, &nb)) continue;
                if (isWhollyBlanked(walk, pw.corner(na, nb), plane.Kind)) startAt(a, b, e);
            }
            return ok;
        });
    }
    if (ok)
        forEachActiveCell([&](LgIndex_t a, LgIndex_t b) {
            for (int e = 0; ok && e < 4; e++) startAt(a, b, e);
            return ok;
        });
    if (!ok) std::fill(scratch.Marks.begin(), scratch.Marks.end(), uint8_t(0));
    return ok;
}

bool processOrderedLevel(LineWalk &walk, OrderedScratch &scratch) {
    for (size_t p = 0; p < scratch.Planes.size(); p++) {
        if (!processOrderedPlane(walk, scratch, p, *walk.Values)) return false;
        if (Interrupted) return false;
    }
    return true;
}

const GlobalContour_s *contourGroup(int group) {
    if (CurFrame == nullptr || group < 0 || group >= MaxContourGroups) return nullptr;
    return &CurFrame->Style.GlobalContour[group];
}

}  // namespace

// ---- edges --------------------------------------------------------------------------------------

double ContourEdgeFraction(double v, double a, double b) {
    if (a == b) return 0.5;
    const double nudge = std::max(1e-150, std::fabs(a - b) * 0.0001);
    if (a == v)
        a += nudge;
    else if (b == v)
        b += nudge;
    return (v - a) / (b - a);
}

void GetCellEdgeFraction(double value, LgIndex_t n1, LgIndex_t n2, FieldData_a var, FieldData_a varOffset,
                         double *fract) {
    LevelValues values(var, varOffset);
    *fract = ContourEdgeFraction(value, values.at(n1), values.at(n2));
}

bool IsCellEdgeIntersected(double value, LgIndex_t n1, LgIndex_t n2, FieldData_a var, FieldData_a varOffset,
                           double *fract) {
    LevelValues values(var, varOffset);
    double a = values.at(n1), b = values.at(n2);
    if (!ContourEdgeIsCrossed(a, b, value)) return false;
    *fract = ContourEdgeFraction(value, a, b);
    return true;
}

// ---- level lines ----------------------------------------------------------------------------------

bool ProcessFELevelLine(CZInfo_s *czInfo, CZData_s *czData, int level, double value, FieldData_a var,
                        FieldData_a varOffset, ContourLineCallback_pf callback, long clientData) {
    if (var == nullptr || !czInfo->IsFE) return true;
    FEScratch scratch;
    if (!scratch.alloc(czData->NumCells)) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
    LevelValues values(var, varOffset);
    LineWalk walk{czInfo, czData, level, value, &values, callback, clientData, &scratch.Line, false, false, false};
    setLineBlanking(walk);
    return processFELevel(walk, scratch);
}

bool ProcessOrderedLevelLine(CZInfo_s *czInfo, CZData_s *czData, int level, double value, FieldData_a var,
                             FieldData_a varOffset, ContourLineCallback_pf callback, long clientData) {
    if (var == nullptr || czInfo->IsFE) return true;
    OrderedScratch scratch;
    if (!scratch.alloc(czInfo, czData)) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
    LevelValues values(var, varOffset);
    LineWalk walk{czInfo, czData, level, value, &values, callback, clientData, &scratch.Line, false, false, false};
    setLineBlanking(walk);
    return processOrderedLevel(walk, scratch);
}

int GetContourGroupForZoneLineContours(const CZInfo_s *czInfo) {
    if (czInfo->FieldMap == nullptr) return -1;
    int group = czInfo->FieldMap->Contour.LineContourGroup;
    return group >= 0 && group < MaxContourGroups ? group : -1;
}

int GetContourGroupForZoneFloodColoring(const CZInfo_s *czInfo) {
    if (czInfo->FieldMap == nullptr) return -1;
    int coloring = czInfo->FieldMap->Contour.FloodColoring;
    return coloring >= 1 && coloring <= MaxContourGroups ? coloring - 1 : -1;
}

namespace {

bool isLinearObject(const CZInfo_s *czInfo) { return czInfo->ZoneRank == 1 || czInfo->ZoneType == ZoneType_FELineSeg; }

bool contourShown(const CZInfo_s *czInfo) {
    return czInfo->FieldPlotTypes != nullptr && czInfo->FieldMap != nullptr && czInfo->FieldPlotTypes->ShowContour &&
           czInfo->FieldMap->Contour.Show && !isLinearObject(czInfo);
}

}  // namespace

bool ZoneOrCOBHasContourLineStyle(const CZInfo_s *czInfo) {
    if (!contourShown(czInfo)) return false;
    int type = czInfo->FieldMap->Contour.ContourType;
    return type == 0 || type == 2;
}

bool ZoneOrCOBHasContourFloodStyle(const CZInfo_s *czInfo) {
    return contourShown(czInfo) && czInfo->FieldMap->Contour.ContourType != 0;
}

bool GetNodeContourLevelValues(const CZData_s *czData, LgIndex_t nodes[4], int group, double values[4], int *numNodes,
                               double *min, double *max) {
    if (group < 0 || group >= MaxContourGroups) return false;
    FieldData_a var = czData->Nodal[CZVar_Contour + group];
    if (var == nullptr) return false;
    // Corners repeated round the cell (triangles, collapsed quadrilaterals) count once.
    LgIndex_t unique[4];
    int count = 0;
    for (int c = 0; c < 4; c++)
        if (count == 0 || (nodes[c] != unique[count - 1] && (c < 3 || nodes[c] != unique[0])))
            unique[count++] = nodes[c];
    *numNodes = count;
    *min = std::numeric_limits<double>::infinity();
    *max = -std::numeric_limits<double>::infinity();
    for (int c = 0; c < count; c++) {
        nodes[c] = unique[c];
        values[c] = GetFieldValue(var, nodes[c]);
        *min = std::min(*min, values[c]);
        *max = std::max(*max, values[c]);
    }
    return true;
}

namespace {

struct CellLocalWalk {
    int Group;
    const std::vector<double> *Levels;
    ContourLineCallback_pf Callback;
    long ClientData;
};

bool onEndPlane(const CZData_s *czData, LgIndex_t node, IJKPlanes_e plane) {
    LgIndex_t index, dim;
    switch (plane) {
    case IJKPlanes_I: index = node % czData->NumIPts, dim = czData->NumIPts; break;
    case IJKPlanes_J: index = (node / czData->NumIPts) % czData->NumJPts, dim = czData->NumJPts; break;
    case IJKPlanes_K: index = node / czData->NumIJPts, dim = czData->NumKPts; break;
    default: return false;
    }
    return index == 0 || index == dim - 1;
}

bool cellLocalSegments(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4,
                       LgIndex_t cell, IJKPlanes_e plane, CellBlankedCond_e, long clientData) {
    const CellLocalWalk &walk = *reinterpret_cast<const CellLocalWalk *>(clientData);
    if (!czInfo->IsFE && !czData->IsApprox && onEndPlane(czData, n1, plane)) return true;
    LgIndex_t nodes[4] = {n1, n2, n3, n4};
    double values[4], min, max;
    int count;
    if (!GetNodeContourLevelValues(czData, nodes, walk.Group, values, &count, &min, &max) || count < 3) return true;
    const std::vector<double> &levels = *walk.Levels;
    for (size_t level = 0; level < levels.size(); level++) {
        const double v = levels[level];
        if (!(v - min > 0)) continue;  // nothing of the cell lies below the level
        if (v - max > 0) break;
        int crossed[4], numCrossed = 0;
        for (int e = 0; e < count; e++)
            if (ContourEdgeIsCrossed(values[e], values[(e + 1) % count], v)) crossed[numCrossed++] = e;
        auto segment = [&](int e1, int e2) {
            LgIndex_t cells[2] = {cell, cell};
            LgIndex_t i0[2] = {nodes[e1], nodes[e2]}, i1[2] = {nodes[(e1 + 1) % count], nodes[(e2 + 1) % count]};
            double fract[2] = {ContourEdgeFraction(v, values[e1], values[(e1 + 1) % count]),
                               ContourEdgeFraction(v, values[e2], values[(e2 + 1) % count])};
            return walk.Callback(czInfo, czData, cells, i0, i1, fract, 2, plane, int(level), v, walk.ClientData);
        };
        if (numCrossed == 4) {
            // A saddle: cut off corners N1 (edges N1N2 and N4N1) and N3 (edges N2N3 and N3N4).
            if (!segment(0, 3) || !segment(1, 2)) return false;
        } else {
            for (int s = 0; s + 1 < numCrossed; s += 2)
                if (!segment(crossed[s], crossed[s + 1])) return false;
        }
    }
    return true;
}

}  // namespace

bool ProcessContLinesOnSurfCells(CZInfo_s *czInfo, CZData_s *czData, ContourLineCallback_pf segmentCallback,
                                 long clientData) {
    const int group = GetContourGroupForZoneLineContours(czInfo);
    const GlobalContour_s *contour = contourGroup(group);
    if (contour == nullptr || contour->Levels.empty() || czData->Nodal[CZVar_Contour + group] == nullptr) return true;
    CellLocalWalk walk{group, &contour->Levels, segmentCallback, clientData};
    const int flags = czInfo->Is3D ? 27 : 25;
    return ProcessSurfaceCells(czInfo, czData, true, flags, czData->ISkip, czData->JSkip, czData->KSkip,
                               cellLocalSegments, nullptr, nullptr, reinterpret_cast<long>(&walk));
}

namespace {

// Every level of a group through the assembled walkers, with one scratch for all levels.
bool processAllLevels(CZInfo_s *czInfo, CZData_s *czData, int group, ContourLineCallback_pf callback, long clientData) {
    const GlobalContour_s *contour = contourGroup(group);
    FieldData_a var = group >= 0 ? czData->Nodal[CZVar_Contour + group] : nullptr;
    if (contour == nullptr || contour->Levels.empty() || var == nullptr) return true;
    const std::vector<double> levels = contour->Levels;
    LevelValues values(var, nullptr);
    if (czInfo->IsFE) {
        FEScratch scratch;
        if (!scratch.alloc(czData->NumCells)) {
            ErrMsg("%s", ScratchMessage);
            return false;
        }
        LineWalk walk{czInfo, czData, 0, 0.0, &values, callback, clientData, &scratch.Line, false, false, false};
        setLineBlanking(walk);
        for (size_t level = 0; level < levels.size(); level++) {
            walk.Level = int(level);
            walk.Value = levels[level];
            if (!processFELevel(walk, scratch) || Interrupted) return false;
        }
        return true;
    }
    OrderedScratch scratch;
    if (!scratch.alloc(czInfo, czData)) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
    LineWalk walk{czInfo, czData, 0, 0.0, &values, callback, clientData, &scratch.Line, false, false, false};
    setLineBlanking(walk);
    for (size_t level = 0; level < levels.size(); level++) {
        walk.Level = int(level);
        walk.Value = levels[level];
        if (!processOrderedLevel(walk, scratch) || Interrupted) return false;
    }
    return true;
}

}  // namespace

bool DrawContourLinesAndDefineLabels(CZInfo_s *czInfo, CZData_s *czData, ContourLineCallback_pf callback,
                                     long clientData) {
    if (isLinearObject(czInfo)) return true;
    const bool cellLocal = (!czInfo->IsFE && czData->IsApprox) || (czInfo->IsFE && IsFEVolumeType(czInfo->ZoneType));
    if (cellLocal) return ProcessContLinesOnSurfCells(czInfo, czData, callback, clientData);
    return processAllLevels(czInfo, czData, GetContourGroupForZoneLineContours(czInfo), callback, clientData);
}

void GetContourLinePattern(const ContourLayer_s &layer, const ContourLineStyle_s &lineStyle, double value, int level,
                           LinePattern_e *pattern, double *patternLength) {
    switch (lineStyle.ContourLineMode) {
    case 1:  // SKIPTOSOLID
        *pattern = level % (std::max(lineStyle.LineSkip, 0) + 1) == 0 ? LinePattern_Solid : LinePattern_Dashed;
        *patternLength = lineStyle.PatternLength;
        break;
    case 2:  // DASHNEGATIVE
        *pattern = value < 0 ? LinePattern_Dashed : LinePattern_Solid;
        *patternLength = lineStyle.PatternLength;
        break;
    default:
        *pattern = LinePattern_e(layer.LinePattern);
        *patternLength = layer.PatternLength;
        break;
    }
}

// ---- band cutting -------------------------------------------------------------------------------

namespace {

int bandOf(const double *levels, int numLevels, double value) {
    return int(std::lower_bound(levels, levels + numLevels, value) - levels);
}

// One piece (3 or 4 corners) cut into its bands.
bool cutPieceIntoBands(const LgIndex_t *corners, const double *values, int count, const double *levels, int numLevels,
                       FloodBandCallback_pf callback, void *clientData) {
    int minBand = numLevels, maxBand = 0;
    for (int c = 0; c < count; c++) {
        int band = bandOf(levels, numLevels, values[c]);
        minBand = std::min(minBand, band);
        maxBand = std::max(maxBand, band);
    }
    const double inf = std::numeric_limits<double>::infinity();
    FloodPoint_s points[10];
    for (int band = minBand; band <= maxBand; band++) {
        const double lo = band > 0 ? levels[band - 1] : -inf;
        const double hi = band < numLevels ? levels[band] : inf;
        if (!(lo < hi)) continue;
        int numPoints = 0;
        for (int c = 0; c < count; c++) {
            const int n = (c + 1) % count;
            const double vp = values[c], vq = values[n];
            if (vp > lo && vp <= hi) points[numPoints++] = {corners[c], corners[c], 0.0, vp};
            // The crossings of the band's bounds on the way to the next corner, nearest first.
            double bounds[2] = {lo, hi};
            if (vp > vq) std::swap(bounds[0], bounds[1]);
            for (double t : bounds) {
                if (std::isinf(t) || (vp <= t) == (vq <= t)) continue;
                // From the lower node number, so both cells of an edge find the same point.
                if (corners[c] < corners[n])
                    points[numPoints++] = {corners[c], corners[n], (t - vp) / (vq - vp), t};
                else
                    points[numPoints++] = {corners[n], corners[c], (t - vq) / (vp - vq), t};
            }
        }
        if (numPoints >= 3 && !callback(points, numPoints, band, clientData)) return false;
    }
    return true;
}

}  // namespace

bool CutCellIntoBands(const LgIndex_t *corners, const double *values, int numCorners, const double *levels,
                      int numLevels, FloodBandCallback_pf callback, void *clientData) {
    for (int c = 0; c < numCorners; c++)
        if (std::isnan(values[c])) return true;
    if (numCorners == 4) {
        int bands[4], changes = 0, split = -1;
        for (int c = 0; c < 4; c++) bands[c] = bandOf(levels, numLevels, values[c]);
        for (int c = 0; c < 4; c++)
            if (bands[c] != bands[(c + 1) % 4] && ++changes == 3) split = c;
        if (split >= 0) {
            // Three or more runs of bands round the cell: two triangles (k, k+1, k+2) and (k+2, k+3, k).
            for (int half = 0; half < 2; half++) {
                LgIndex_t triCorners[3];
                double triValues[3];
                for (int n = 0; n < 3; n++) {
                    int c = (split + 2 * half + n) % 4;
                    triCorners[n] = corners[c];
                    triValues[n] = values[c];
                }
                if (!cutPieceIntoBands(triCorners, triValues, 3, levels, numLevels, callback, clientData)) return false;
            }
            return true;
        }
    }
    return cutPieceIntoBands(corners, values, numCorners, levels, numLevels, callback, clientData);
}

namespace {

const ColorMapBand_s *colorMapBand(int group) { return GetCurrentColorMapBand(GetFilterColorMapGroup(group)); }

bool isBanded(const GlobalContour_s &contour) { return contour.ColorMapFilter.ColorMapDistribution == 1; }

}  // namespace

void SetupLevelsForContourFlooding(const CZInfo_s *czInfo, std::vector<double> *levels, bool *banded) {
    levels->clear();
    *banded = false;
    const int group = GetContourGroupForZoneFloodColoring(czInfo);
    const GlobalContour_s *contour = contourGroup(group);
    if (contour == nullptr || czInfo->FieldMap == nullptr) return;
    const int type = czInfo->FieldMap->Contour.ContourType;
    if (type == 3 || type == 4) return;
    if (isBanded(*contour)) {
        *levels = contour->Levels;
        *banded = true;
        return;
    }
    const ColorMapFilter_s &filter = contour->ColorMapFilter;
    if (filter.UseFastApproxContinuousFlood) return;
    const int cycles = std::max(filter.ColorMapCycles, 1);
    const double a = filter.CMin, span = (filter.CMax - filter.CMin) / cycles;
    const ColorMapBand_s *band = colorMapBand(group);
    const int numPoints = band != nullptr ? band->NumControlPoints : 0;
    for (int c = 0; c < cycles; c++) {
        const double start = a + c * span;
        if (numPoints == 0 || band->ControlPoint[0].Location != 0.0) levels->push_back(start);
        for (int p = 0; p < numPoints; p++) {
            double location = band->ControlPoint[size_t(p)].Location;
            if (p == numPoints - 1 && location == 1.0 && c != cycles - 1) continue;
            levels->push_back(start + location * span);
        }
    }
}

// ---- drawing --------------------------------------------------------------------------------------

namespace {

int roundToDot(double v) { return int(v >= 0.0 ? v + 0.499 : v - 0.499); }

// The contour group a multi-colour stands for, -1 for RGB, -2 for a plain colour.
int multiColorGroup(int color) {
    const int signedColor = SignedColorIndex(color);
    if (signedColor == MultiColor_RGB) return -1;
    const int group = GetContourGroupFromMultiColor(signedColor);
    return group >= 0 ? group : -2;
}

// How the points of an object reach the screen: in 2D through the grid-to-screen maps (log axes
// included), in 3D first through the frame's view.
struct Projector {
    bool Is3D = false;
    const ThreeDView_s *View = nullptr;
    FieldValueReader_s X{}, Y{}, Z{};

    bool init(const CZInfo_s *czInfo, const CZData_s *czData) {
        Is3D = czInfo->Is3D;
        View = CurFrame != nullptr ? &CurFrame->Style.ThreeDView : nullptr;
        X = MakeFieldValueReader(czData->Nodal[CZVar_DrawX]);
        Y = MakeFieldValueReader(czData->Nodal[CZVar_DrawY]);
        Z = MakeFieldValueReader(czData->Nodal[CZVar_DrawZ]);
        return X.FieldData != nullptr && Y.FieldData != nullptr &&
               (!Is3D || (Z.FieldData != nullptr && View != nullptr));
    }
    XYZ_s at(LgIndex_t i0, LgIndex_t i1, double fract) const {
        auto lerp = [&](const FieldValueReader_s &r) {
            double a = ReadFieldValue(r, i0);
            return i0 == i1 ? a : a + fract * (ReadFieldValue(r, i1) - a);
        };
        return {lerp(X), lerp(Y), Is3D ? lerp(Z) : 0.0};
    }
    // Screen X and Y, and the eye depth in 3D.
    void toScreen(const XYZ_s &p, double *sx, double *sy, double *depth) const {
        double x = p.X, y = p.Y;
        *depth = 0.0;
        if (!Is3D && CurTransforms.CurXAxisCoordScale == CoordScale_Linear &&
            CurTransforms.CurYAxisCoordScale == CoordScale_Linear) {
            *sx = CoordMap_X(CurTransforms.Grid2Screen, x);
            *sy = CoordMap_Y(CurTransforms.Grid2Screen, y);
            return;
        }
        if (Is3D) {
            XYZ_s frameView = VDI3D_TransformXYZ(*View, CurThreeDViewCalc, p);
            x = frameView.X, y = frameView.Y, *depth = frameView.Z;
        }
        *sx = ConvertXPosition(CurTransforms, CoordSys_Grid, CoordSys_Screen, x);
        *sy = ConvertYPosition(CurTransforms, CoordSys_Grid, CoordSys_Screen, y);
    }
};

// Per-node scratch of a drawing, left unset until filled. Large arrays ask for huge pages: a
// zone of a million nodes would otherwise fault in thousands of small pages on its first use,
// which costs more than filling them.
template <typename T>
class NodeScratch {
  public:
    NodeScratch() = default;
    NodeScratch(const NodeScratch &) = delete;
    NodeScratch &operator=(const NodeScratch &) = delete;
    ~NodeScratch() { release(); }
    bool alloc(size_t count) {
        release();
        bytes_ = std::max<size_t>(count, 1) * sizeof(T);
        if (bytes_ >= HugePageBytes) {
            bytes_ = (bytes_ + HugePageBytes - 1) / HugePageBytes * HugePageBytes;
            void *memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (memory == MAP_FAILED) return false;
            madvise(memory, bytes_, MADV_HUGEPAGE);
            data_ = static_cast<T *>(memory);
            mapped_ = true;
        } else {
            data_ = new (std::nothrow) T[std::max<size_t>(count, 1)];
        }
        return data_ != nullptr;
    }
    T &operator[](size_t n) { return data_[n]; }
    const T &operator[](size_t n) const { return data_[n]; }

  private:
    static constexpr size_t HugePageBytes = size_t(2) << 20;
    void release() {
        if (mapped_)
            munmap(data_, bytes_);
        else
            delete[] data_;
        data_ = nullptr;
        mapped_ = false;
    }
    T *data_ = nullptr;
    size_t bytes_ = 0;
    bool mapped_ = false;
};

double frameHeightInPixels() { return std::max(std::fabs(CurTransforms.Frame2Screen.YScale), 1e-10); }

// ---- labels ---------------------------------------------------------------------------------------

struct FrameLabels {
    std::array<std::vector<ContourLabel_s>, MaxContourGroups> Groups;
};
std::map<uint64_t, FrameLabels> LabelStore;
uint64_t LabelRandomState = 1;

double nextLabelRandom() {
    LabelRandomState = LabelRandomState * 6364136223846793005ULL + 1442695040888963407ULL;
    return double(LabelRandomState >> 11) / 9007199254740992.0;
}

// ---- line drawing ---------------------------------------------------------------------------------

struct LineDraw {
    Projector Proj;
    int Group = 0;
    const GlobalContour_s *Contour = nullptr;
    const ContourLayer_s *Layer = nullptr;
    int CurLevel = -1;
    bool SkipLevel = false;
    int Color = 0, ColorGroup = -1;
    bool PerSegment = false;  // coloured by another group's values along the line
    int SegmentGroup = -1;
    FieldValueReader_s SegmentVar{};
    bool MakeLabels = false;
    Rect_s Viewport{0.0, 0.0, 1.0, 1.0};
    std::vector<double> SX, SY;
    std::vector<XYZ_s> Points;
};

void setupLevelLook(LineDraw &draw, int level, double value) {
    draw.CurLevel = level;
    draw.SkipLevel = false;
    const int colorGroup = multiColorGroup(draw.Layer->Color);
    draw.PerSegment = false;
    if (colorGroup == draw.Group) {
        draw.Color = isBanded(*draw.Contour) ? GetMultiColorFromContourLevel(draw.Group, level, true)
                                             : GetMultiColor(draw.Group, value);
        draw.ColorGroup = draw.Group;
    } else if (colorGroup >= 0) {
        draw.PerSegment = true;
        draw.SegmentGroup = colorGroup;
        draw.ColorGroup = colorGroup;
    } else if (colorGroup == -1) {
        draw.Color = 0;  // RGB lines wait for the RGB colouring of segments
        draw.ColorGroup = -1;
    } else {
        draw.Color = SignedColorIndex(draw.Layer->Color);
        draw.ColorGroup = -1;
    }
    if (!draw.PerSegment && draw.Color == ColorNotDrawn) {
        draw.SkipLevel = true;
        return;
    }
    LinePattern_e pattern;
    double patternLength;
    GetContourLinePattern(*draw.Layer, draw.Contour->ContourLineStyle, value, level, &pattern, &patternLength);
    const double frameHeight = frameHeightInPixels();
    VDI_Set_Line_Style(draw.Layer->LineThickness * frameHeight, pattern, patternLength * frameHeight, LineCap_Round,
                       LineJoin_Round);
    if (!draw.PerSegment) VDI_Set_Line_Color(draw.Color, 1, false, draw.ColorGroup);
}

// Auto labels along a line: the first after a random part of the spacing, then one at the
// middle of the segment where the length walked since the last reaches the spacing.
void defineLabelsAlongLine(LineDraw &draw, int level, double value) {
    const ContourLabels_s &labels = draw.Contour->Labels;
    const double spacing = labels.AutoLabelSpacing;
    if (spacing <= 0.0 || CurFrame == nullptr) return;
    const double frameHeight = frameHeightInPixels();
    double walked = spacing * nextLabelRandom();
    for (size_t k = 1; k < draw.Points.size(); k++) {
        walked += std::hypot(draw.SX[k] - draw.SX[k - 1], draw.SY[k] - draw.SY[k - 1]) / frameHeight;
        if (walked < spacing) continue;
        walked = 0.0;
        const XYZ_s &p = draw.Points[k - 1], &q = draw.Points[k];
        ContourLabel_s label;
        label.X = (p.X + q.X) / 2;
        label.Y = (p.Y + q.Y) / 2;
        label.Z = (p.Z + q.Z) / 2;
        if (!draw.Proj.Is3D) {
            double fx = ConvertXPosition(CurTransforms, CoordSys_Grid, CoordSys_Frame, label.X);
            double fy = ConvertYPosition(CurTransforms, CoordSys_Grid, CoordSys_Frame, label.Y);
            const Rect_s &vp = draw.Viewport;
            if (fx < std::min(vp.X1, vp.X2) || fx > std::max(vp.X1, vp.X2) || fy < std::min(vp.Y1, vp.Y2) ||
                fy > std::max(vp.Y1, vp.Y2))
                continue;
        }
        label.IsAligned = labels.AlignAutoLabels;
        label.IsAuto = true;
        label.Level = level;
        label.Value = value;
        AddContourLabel(CurFrame, draw.Group, label);
    }
}

bool drawLineUnguarded(CZInfo_s *, CZData_s *czData, const LgIndex_t *, const LgIndex_t *i0, const LgIndex_t *i1,
                       const double *fract, LgIndex_t count, IJKPlanes_e, int level, double value, long clientData) {
    LineDraw &draw = *reinterpret_cast<LineDraw *>(clientData);
    if (level != draw.CurLevel) setupLevelLook(draw, level, value);
    if (draw.SkipLevel) return !Interrupted;
    draw.Points.resize(size_t(count));
    draw.SX.resize(size_t(count));
    draw.SY.resize(size_t(count));
    double depth;
    for (LgIndex_t n = 0; n < count; n++) {
        draw.Points[size_t(n)] = draw.Proj.at(i0[n], i1[n], fract[n]);
        draw.Proj.toScreen(draw.Points[size_t(n)], &draw.SX[size_t(n)], &draw.SY[size_t(n)], &depth);
    }
    if (draw.PerSegment) {
        FieldData_a var = czData->Nodal[CZVar_Contour + draw.SegmentGroup];
        for (LgIndex_t n = 1; n < count; n++) {
            int color = 0;
            if (var != nullptr) {
                auto at = [&](LgIndex_t k) {
                    double a = GetFieldValue(var, i0[k]);
                    return a + fract[k] * (GetFieldValue(var, i1[k]) - a);
                };
                color = GetMultiColor(draw.SegmentGroup, (at(n - 1) + at(n)) / 2);
            }
            if (color == ColorNotDrawn) continue;
            VDI_Set_Line_Color(color, 1, false, draw.SegmentGroup);
            VDI_Begin_Path();
            VDI_Move_Abs(draw.SX[size_t(n - 1)], draw.SY[size_t(n - 1)]);
            VDI_Line_Abs(draw.SX[size_t(n)], draw.SY[size_t(n)]);
            VDI_End_Path(false);
        }
    } else {
        VDI_Begin_Path();
        VDI_Move_Abs(draw.SX[0], draw.SY[0]);
        for (LgIndex_t n = 1; n < count; n++) VDI_Line_Abs(draw.SX[size_t(n)], draw.SY[size_t(n)]);
        VDI_End_Path(false);
    }
    if (draw.MakeLabels && level % std::max(draw.Contour->Labels.AutoLevelSkip, 1) == 0)
        defineLabelsAlongLine(draw, level, value);
    return !Interrupted;
}

bool drawLine(CZInfo_s *czInfo, CZData_s *czData, const LgIndex_t *cells, const LgIndex_t *i0, const LgIndex_t *i1,
              const double *fract, LgIndex_t count, IJKPlanes_e plane, int level, double value, long clientData) {
    return withScratch([&] {
        return drawLineUnguarded(czInfo, czData, cells, i0, i1, fract, count, plane, level, value, clientData);
    });
}

// A cell-local segment with a label by chance: the larger the cell's share of the axis ranges,
// the likelier.
bool drawSegmentAndDefineLabel(CZInfo_s *czInfo, CZData_s *czData, const LgIndex_t *cells, const LgIndex_t *i0,
                               const LgIndex_t *i1, const double *fract, LgIndex_t count, IJKPlanes_e plane, int level,
                               double value, long clientData) {
    LineDraw &draw = *reinterpret_cast<LineDraw *>(clientData);
    const bool labels = draw.MakeLabels;
    draw.MakeLabels = false;
    bool ok = drawLine(czInfo, czData, cells, i0, i1, fract, count, plane, level, value, clientData);
    draw.MakeLabels = labels;
    if (!labels || draw.SkipLevel || count < 2 || level % std::max(draw.Contour->Labels.AutoLevelSkip, 1) != 0)
        return ok;
    const AxisDetail_s &x = CurFrame->Style.TwoDAxis.XDetail, &y = CurFrame->Style.TwoDAxis.YDetail;
    const double extent = std::fabs(x.RangeMax - x.RangeMin) + std::fabs(y.RangeMax - y.RangeMin);
    const XYZ_s &p = draw.Points[0], &q = draw.Points[1];
    const double size = std::fabs(q.X - p.X) + std::fabs(q.Y - p.Y);
    if (extent > 0.0 && size / extent > nextLabelRandom() * draw.Contour->Labels.AutoLabelSpacing) {
        ContourLabel_s label;
        label.X = (p.X + q.X) / 2, label.Y = (p.Y + q.Y) / 2, label.Z = (p.Z + q.Z) / 2;
        label.IsAligned = draw.Contour->Labels.AlignAutoLabels;
        label.Level = level;
        label.Value = value;
        AddContourLabel(CurFrame, draw.Group, label);
    }
    return ok;
}

bool drawContourLines(CZInfo_s *czInfo, CZData_s *czData) {
    if (!ZoneOrCOBHasContourLineStyle(czInfo)) return true;
    const int group = GetContourGroupForZoneLineContours(czInfo);
    const GlobalContour_s *contour = contourGroup(group);
    if (contour == nullptr || contour->Levels.empty() || czData->Nodal[CZVar_Contour + group] == nullptr) return true;
    if (!VDI_GoesToGr() && !VDI_GoesToPl()) return true;
    LineDraw draw;
    if (!draw.Proj.init(czInfo, czData)) return true;
    draw.Group = group;
    draw.Contour = contour;
    draw.Layer = &czInfo->FieldMap->Contour;
    draw.MakeLabels = contour->Labels.Show && contour->Labels.GenerateAutoLabels && !czData->IsApprox;
    draw.Viewport = CurFrame->Style.TwoDAxis.Grid.ViewportPosition;
    const bool cellLocal = (!czInfo->IsFE && czData->IsApprox) || (czInfo->IsFE && IsFEVolumeType(czInfo->ZoneType));
    if (cellLocal)
        return ProcessContLinesOnSurfCells(czInfo, czData, drawSegmentAndDefineLabel, reinterpret_cast<long>(&draw));
    return DrawContourLinesAndDefineLabels(czInfo, czData, drawLine, reinterpret_cast<long>(&draw));
}

// ---- flood ----------------------------------------------------------------------------------------

enum FloodMode_e { FloodMode_Fill, FloodMode_CellColor, FloodMode_NodeColor, FloodMode_Bands };

// A 3D polygon waiting for the back-to-front pass.
struct Panel {
    double Depth;
    int Color, ColorGroup;
    size_t First;
    int Count;
};

struct FloodDraw {
    CZInfo_s *CZInfo = nullptr;
    CZData_s *CZData = nullptr;
    bool Is3D = false;
    bool UseDevice = false;  // batch into device blocks
    FloodMode_e Mode = FloodMode_Fill;
    int Group = -1;
    int ContourType = 1;
    bool VertexColors = false;  // bands of a continuous group, coloured at their vertices
    int FillColor = ColorNotDrawn;
    FieldValueReader_s Values{}, CellValues{};
    std::vector<double> Breaks;   // band bounds: the levels with the cut-off values
    std::vector<int> BreakColor;  // per band; -2 not drawn
    // Per node: screen position and depth, band or colour (filled before use, so left unset here).
    NodeScratch<double> SX, SY, Depth;
    NodeScratch<int> NodeBand, NodeColor;
    double ClipX1 = -1e300, ClipY1 = -1e300, ClipX2 = 1e300, ClipY2 = 1e300;
    bool BlockOpen = false;
    BlockType_e BlockType = BlockType_Triangles;
    ShadeModel_e Model = ShadeModel_Flat;
    std::vector<Panel> Panels;
    std::vector<double> PanelX, PanelY;
    std::vector<LgIndex_t> CutCells;  // of the ordered row being drawn
};

void endBlock(FloodDraw &fd) {
    if (fd.BlockOpen) GrHW_EndBlock();
    fd.BlockOpen = false;
}

// One polygon of n vertices (convex or fanned from its first vertex); vertex colours when given.
void emitPolygon(FloodDraw &fd, const double *x, const double *y, const int *vertexColors, int n, int color,
                 double depth) {
    if (n < 3) return;
    if (vertexColors == nullptr && color == ColorNotDrawn) {
        if (fd.FillColor == ColorNotDrawn) return;
        color = fd.FillColor;
    }
    if (vertexColors != nullptr)
        for (int k = 0; k < n; k++)
            if (vertexColors[k] == ColorNotDrawn) return;
    const int colorGroup = color >= FirstContourColorIndex || vertexColors != nullptr ? fd.Group : -1;
    if (fd.Is3D) {
        int average = color;
        if (vertexColors != nullptr) average = vertexColors[0];
        fd.Panels.push_back({depth, average, colorGroup, fd.PanelX.size(), n});
        fd.PanelX.insert(fd.PanelX.end(), x, x + n);
        fd.PanelY.insert(fd.PanelY.end(), y, y + n);
        return;
    }
    if (fd.UseDevice) {
        ShadeModel_e model = vertexColors != nullptr ? ShadeModel_Smooth : ShadeModel_Flat;
        if (!fd.BlockOpen || model != fd.Model || fd.BlockType != BlockType_Triangles) {
            endBlock(fd);
            GrHW_BeginMultiColorBlock(BlockType_Triangles, PolygonMode_Fill, false, LightingEffect_Paneled, model);
            fd.BlockOpen = true;
            fd.BlockType = BlockType_Triangles;
            fd.Model = model;
        }
        if (vertexColors == nullptr) GrHW_SetMultiColor(color);
        for (int k = 1; k + 1 < n; k++) {
            const int corner[3] = {0, k, k + 1};
            for (int c : corner) {
                if (vertexColors != nullptr) GrHW_SetMultiColor(vertexColors[c]);
                GrHW_Vertex2D(roundToDot(x[c]), roundToDot(y[c]));
            }
        }
        return;
    }
    VDI_Set_Fill_Color(color, false, colorGroup);
    VDI_ResetVert();
    int index = 0;
    for (int k = 0; k < n; k++)
        if (VDI_SetVert(index, x[k], y[k])) index++;
    if (VDI_SetVert(index, x[0], y[0])) index++;
    if (index >= 4) VDI_Pgon(true, false);
}

double averageOf(const double *values, int count) {
    double sum = 0.0;
    for (int c = 0; c < count; c++) sum += values[c];
    return sum / count;
}

struct BandEmit {
    FloodDraw *Draw;
    double Depth;
};

bool emitBandPiece(const FloodPoint_s *points, int count, int band, void *clientData) {
    BandEmit &be = *static_cast<BandEmit *>(clientData);
    FloodDraw &fd = *be.Draw;
    double x[10], y[10];
    int colors[10];
    for (int k = 0; k < count; k++) {
        const FloodPoint_s &p = points[k];
        x[k] = fd.SX[size_t(p.I0)] + p.Fract * (fd.SX[size_t(p.I1)] - fd.SX[size_t(p.I0)]);
        y[k] = fd.SY[size_t(p.I0)] + p.Fract * (fd.SY[size_t(p.I1)] - fd.SY[size_t(p.I0)]);
    }
    const int color = fd.BreakColor[size_t(band)];
    if (fd.VertexColors && color != ColorNotDrawn) {
        // Each vertex takes the colour of its own value, kept inside the band so that a sharp
        // break of the map stays at the band's bound.
        const double lo = band > 0 ? fd.Breaks[size_t(band - 1)] : -std::numeric_limits<double>::infinity();
        for (int k = 0; k < count; k++)
            colors[k] = GetMultiColor(fd.Group, points[k].Value <= lo ? std::nextafter(lo, INFINITY) : points[k].Value);
        emitPolygon(fd, x, y, colors, count, color, be.Depth);
    } else {
        emitPolygon(fd, x, y, nullptr, count, color, be.Depth);
    }
    return true;
}

void floodCell(FloodDraw &fd, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t cell) {
    const LgIndex_t given[4] = {n1, n2, n3, n4};
    LgIndex_t corners[4];
    int count = 0;
    for (int c = 0; c < 4; c++)
        if (count == 0 || (given[c] != corners[count - 1] && (c < 3 || given[c] != corners[0])))
            corners[count++] = given[c];
    if (count < 3) return;
    double x[4], y[4], depth = 0.0;
    bool left = true, right = true, above = true, below = true;
    for (int c = 0; c < count; c++) {
        x[c] = fd.SX[size_t(corners[c])];
        y[c] = fd.SY[size_t(corners[c])];
        if (fd.Is3D) depth += fd.Depth[size_t(corners[c])] / count;
        left = left && x[c] < fd.ClipX1;
        right = right && x[c] > fd.ClipX2;
        above = above && y[c] < fd.ClipY1;
        below = below && y[c] > fd.ClipY2;
    }
    if (!fd.Is3D && (left || right || above || below)) return;
    switch (fd.Mode) {
    case FloodMode_Fill: emitPolygon(fd, x, y, nullptr, count, fd.FillColor, depth); return;
    case FloodMode_NodeColor: {
        int colors[4];
        for (int c = 0; c < count; c++) colors[c] = fd.NodeColor[size_t(corners[c])];
        emitPolygon(fd, x, y, colors, count, 0, depth);
        return;
    }
    case FloodMode_CellColor: {
        double value;
        if (fd.Values.FieldData == nullptr || (fd.ContourType == 4 && fd.CellValues.FieldData != nullptr)) {
            if (fd.CellValues.FieldData == nullptr) return;
            value = ReadFieldValue(fd.CellValues, std::clamp(cell, 0, fd.CellValues.FieldData->NumValues - 1));
        } else if (fd.ContourType == 4) {
            value = ReadFieldValue(fd.Values, corners[0]);
        } else {
            double values[4];
            for (int c = 0; c < count; c++) values[c] = ReadFieldValue(fd.Values, corners[c]);
            value = averageOf(values, count);
        }
        if (std::isnan(value)) return;
        emitPolygon(fd, x, y, nullptr, count, GetMultiColor(fd.Group, value), depth);
        return;
    }
    case FloodMode_Bands: {
        int bands[4];
        bool same = true;
        for (int c = 0; c < count; c++) {
            bands[c] = fd.NodeBand[size_t(corners[c])];
            if (bands[c] < 0) return;
            same = same && bands[c] == bands[0];
        }
        if (same && !fd.VertexColors) {
            emitPolygon(fd, x, y, nullptr, count, fd.BreakColor[size_t(bands[0])], depth);
            return;
        }
        double values[4];
        for (int c = 0; c < count; c++) values[c] = ReadFieldValue(fd.Values, corners[c]);
        BandEmit be{&fd, depth};
        CutCellIntoBands(corners, values, count, fd.Breaks.data(), int(fd.Breaks.size()), emitBandPiece, &be);
        return;
    }
    }
}

bool floodCellUnguarded(CZInfo_s *, CZData_s *, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t cell,
                        IJKPlanes_e, CellBlankedCond_e, long clientData) {
    floodCell(*reinterpret_cast<FloodDraw *>(clientData), n1, n2, n3, n4, cell);
    return !Interrupted;
}

bool floodCellCallback(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4,
                       LgIndex_t cell, IJKPlanes_e plane, CellBlankedCond_e cond, long clientData) {
    return withScratch(
        [&] { return floodCellUnguarded(czInfo, czData, n1, n2, n3, n4, cell, plane, cond, clientData); });
}

// How a clean cell of an ordered row goes to the device: not at all, whole in one flat colour,
// whole with its nodes' colours, or through the general cell path (band cuts).
enum CellPlan_e { CellPlan_Skip, CellPlan_Flat, CellPlan_Smooth, CellPlan_General };

CellPlan_e planRowCell(const FloodDraw &fd, const LgIndex_t corners[4], int *color) {
    bool left = true, right = true, above = true, below = true;
    for (int c = 0; c < 4; c++) {
        const double x = fd.SX[size_t(corners[c])], y = fd.SY[size_t(corners[c])];
        left = left && x < fd.ClipX1;
        right = right && x > fd.ClipX2;
        above = above && y < fd.ClipY1;
        below = below && y > fd.ClipY2;
    }
    if (left || right || above || below) return CellPlan_Skip;
    auto orFill = [&](int c) {
        *color = c != ColorNotDrawn ? c : fd.FillColor;
        return *color != ColorNotDrawn ? CellPlan_Flat : CellPlan_Skip;
    };
    switch (fd.Mode) {
    case FloodMode_Fill: return orFill(fd.FillColor);
    case FloodMode_NodeColor:
        for (int c = 0; c < 4; c++)
            if (fd.NodeColor[size_t(corners[c])] == ColorNotDrawn) return CellPlan_Skip;
        return CellPlan_Smooth;
    case FloodMode_Bands: {
        if (fd.VertexColors) return CellPlan_General;
        const int band = fd.NodeBand[size_t(corners[0])];
        if (band < 0) return CellPlan_Skip;
        for (int c = 1; c < 4; c++)
            if (fd.NodeBand[size_t(corners[c])] != band) return CellPlan_General;
        return orFill(fd.BreakColor[size_t(band)]);
    }
    default: return CellPlan_General;
    }
}

// A row of clean cells on the device as one triangle strip, two vertices a cell: the strip runs
// N1, N4, then N2, N3 of each cell. With flat shading a triangle takes the colour of its last
// vertex, so the colour set before a cell's far pair colours both of its triangles. Where the
// row lies level on the screen (its corners on one pixel row below and one above), neighbouring
// cells of one colour merge into one quadrilateral of the strip: the outline is the same, so the
// same pixels are covered. A cell that needs cutting stays in the strip in the colour of its
// first corner's band, and its band polygons go over it once the row is done: they tile the
// cell, so the strip never shows, and the strip is not broken at every crossing.
void floodRowOnDevice(FloodDraw &fd, LgIndex_t start, LgIndex_t stride, LgIndex_t end, LgIndex_t otherStride) {
    const LgIndex_t numCells = (end - start + stride - 1) / stride;
    auto vertex = [&](LgIndex_t node, bool smooth) {
        if (smooth) GrHW_SetMultiColor(fd.NodeColor[size_t(node)]);
        GrHW_Vertex2D(roundToDot(fd.SX[size_t(node)]), roundToDot(fd.SY[size_t(node)]));
    };
    auto roundedY = [&](LgIndex_t node) { return roundToDot(fd.SY[size_t(node)]); };
    bool inStrip = false;
    // The far pair of the last flat cell waits while following cells extend it.
    bool pending = false, pendingLevel = false;
    LgIndex_t pendingB = 0, pendingT = 0;
    int pendingColor = 0;
    auto flushPending = [&]() {
        if (!pending) return;
        GrHW_SetMultiColor(pendingColor);
        vertex(pendingB, false);
        vertex(pendingT, false);
        pending = false;
    };
    auto endStrip = [&]() {
        flushPending();
        if (inStrip) endBlock(fd);
        inStrip = false;
    };
    fd.CutCells.clear();
    for (LgIndex_t n = 0; n < numCells; n++) {
        LgIndex_t c[4];
        GetCellInOrderedSurfaceCellStrip(start, stride, end, otherStride, n, &c[0], &c[1], &c[2], &c[3]);
        int color = 0;
        CellPlan_e plan = planRowCell(fd, c, &color);
        if (plan == CellPlan_General && fd.Mode == FloodMode_Bands && !fd.VertexColors) {
            fd.CutCells.push_back(n);
            const int under = fd.BreakColor[size_t(fd.NodeBand[size_t(c[0])])];
            color = under != ColorNotDrawn ? under : fd.FillColor;
            if (color != ColorNotDrawn) plan = CellPlan_Flat;
        }
        if (plan != CellPlan_Flat && plan != CellPlan_Smooth) {
            endStrip();
            if (plan == CellPlan_General) floodCell(fd, c[0], c[1], c[2], c[3], c[0]);
            continue;
        }
        const bool smooth = plan == CellPlan_Smooth;
        if (!inStrip) {
            endBlock(fd);
            const ShadeModel_e model = smooth ? ShadeModel_Smooth : ShadeModel_Flat;
            GrHW_BeginMultiColorBlock(BlockType_TriangleStrip, PolygonMode_Fill, false, LightingEffect_Paneled, model);
            fd.BlockOpen = true;
            fd.BlockType = BlockType_TriangleStrip;
            fd.Model = model;
            inStrip = true;
            vertex(c[0], smooth);
            vertex(c[3], smooth);
        }
        if (smooth) {
            vertex(c[1], true);
            vertex(c[2], true);
            continue;
        }
        const bool level = roundedY(c[0]) == roundedY(c[1]) && roundedY(c[3]) == roundedY(c[2]);
        if (pending && pendingLevel && level && color == pendingColor) {
            pendingB = c[1], pendingT = c[2];
            continue;
        }
        flushPending();
        pending = true, pendingLevel = level;
        pendingB = c[1], pendingT = c[2], pendingColor = color;
    }
    endStrip();
    for (LgIndex_t n : fd.CutCells) {
        LgIndex_t n1, n2, n3, n4;
        GetCellInOrderedSurfaceCellStrip(start, stride, end, otherStride, n, &n1, &n2, &n3, &n4);
        floodCell(fd, n1, n2, n3, n4, n1);
    }
}

bool floodStripUnguarded(CZInfo_s *, CZData_s *, LgIndex_t start, LgIndex_t stride, LgIndex_t end,
                         LgIndex_t otherStride, long clientData) {
    FloodDraw &fd = *reinterpret_cast<FloodDraw *>(clientData);
    if (fd.UseDevice && fd.Mode != FloodMode_CellColor) {
        floodRowOnDevice(fd, start, stride, end, otherStride);
        return !Interrupted;
    }
    const LgIndex_t numCells = (end - start + stride - 1) / stride;
    for (LgIndex_t n = 0; n < numCells; n++) {
        LgIndex_t n1, n2, n3, n4;
        GetCellInOrderedSurfaceCellStrip(start, stride, end, otherStride, n, &n1, &n2, &n3, &n4);
        floodCell(fd, n1, n2, n3, n4, n1);
    }
    return !Interrupted;
}

bool floodStripCallback(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t start, LgIndex_t stride, LgIndex_t end,
                        LgIndex_t otherStride, long clientData) {
    return withScratch(
        [&] { return floodStripUnguarded(czInfo, czData, start, stride, end, otherStride, clientData); });
}

bool allocFloodNodes(FloodDraw &fd, const Projector &proj) {
    const size_t numPoints = size_t(std::max(fd.CZData->NumPoints, 1));
    if (!fd.SX.alloc(numPoints) || !fd.SY.alloc(numPoints) || (fd.Is3D && !fd.Depth.alloc(numPoints)) ||
        (fd.Mode == FloodMode_Bands && !fd.NodeBand.alloc(numPoints)) ||
        (fd.Mode == FloodMode_NodeColor && !fd.NodeColor.alloc(numPoints))) {
        ErrMsg("%s", ScratchMessage);
        return false;
    }
    double depth = 0.0;
    const double *breaks = fd.Breaks.data();
    const int numBreaks = int(fd.Breaks.size());
    for (LgIndex_t node = 0; node < fd.CZData->NumPoints; node++) {
        const size_t n = size_t(node);
        proj.toScreen(proj.at(node, node, 0.0), &fd.SX[n], &fd.SY[n], &depth);
        if (fd.Is3D) fd.Depth[n] = depth;
        if (fd.Mode == FloodMode_Bands) {
            double value = ReadFieldValue(fd.Values, node);
            fd.NodeBand[n] = std::isnan(value) ? -1 : bandOf(breaks, numBreaks, value);
        } else if (fd.Mode == FloodMode_NodeColor) {
            double value = ReadFieldValue(fd.Values, node);
            fd.NodeColor[n] = std::isnan(value) ? ColorNotDrawn : GetMultiColor(fd.Group, value);
        }
    }
    return true;
}

// The band bounds of the flood: its levels with the cut-off values, and the colour of each band.
void setupBands(FloodDraw &fd, const GlobalContour_s &contour, const std::vector<double> &levels, bool banded) {
    const ColorCutoff_s &cutoff = contour.ColorCutoff;
    fd.Breaks = levels;
    if (cutoff.IncludeMin) fd.Breaks.push_back(cutoff.RangeMin);
    if (cutoff.IncludeMax) fd.Breaks.push_back(cutoff.RangeMax);
    std::sort(fd.Breaks.begin(), fd.Breaks.end());
    const size_t numBands = fd.Breaks.size() + 1;
    fd.BreakColor.assign(numBands, 0);
    for (size_t b = 0; b < numBands; b++) {
        const bool belowMin = cutoff.IncludeMin && b < fd.Breaks.size() && fd.Breaks[b] <= cutoff.RangeMin;
        const bool aboveMax = cutoff.IncludeMax && b > 0 && fd.Breaks[b - 1] >= cutoff.RangeMax;
        if (belowMin || aboveMax) {
            fd.BreakColor[b] = ColorNotDrawn;
        } else if (banded) {
            int level =
                b < fd.Breaks.size() ? bandOf(levels.data(), int(levels.size()), fd.Breaks[b]) : int(levels.size());
            fd.BreakColor[b] = GetMultiColorFromContourLevel(fd.Group, level, false);
        }
    }
}

bool drawFlood(CZInfo_s *czInfo, CZData_s *czData, bool is3D) {
    if (isLinearObject(czInfo) || CurFrame == nullptr) return true;
    const bool goesToDevice = VDI_GoesToGr();
    if (!goesToDevice && !VDI_GoesToPl()) return true;
    FloodDraw fd;
    fd.CZInfo = czInfo;
    fd.CZData = czData;
    fd.Is3D = is3D;
    fd.UseDevice = goesToDevice && !is3D;
    fd.FillColor = czInfo->Colors.FillColor;
    const bool hasFlood = ZoneOrCOBHasContourFloodStyle(czInfo);
    fd.Group = hasFlood ? GetContourGroupForZoneFloodColoring(czInfo) : -1;
    const GlobalContour_s *contour = contourGroup(fd.Group);
    if (contour != nullptr) {
        fd.Values = MakeFieldValueReader(czData->Nodal[CZVar_Contour + fd.Group]);
        fd.CellValues = MakeFieldValueReader(czData->CC[CZVar_Contour + fd.Group]);
        if (fd.Values.FieldData == nullptr && fd.CellValues.FieldData == nullptr) contour = nullptr;
    }
    if (contour == nullptr) {
        // No flood (or an RGB one): the shade or hidden-line fill in one colour.
        if (fd.FillColor == ColorNotDrawn) return true;
        fd.Mode = FloodMode_Fill;
        fd.Group = -1;
    } else {
        fd.ContourType = czInfo->FieldMap->Contour.ContourType;
        const bool banded = isBanded(*contour);
        const ColorCutoff_s &cutoff = contour->ColorCutoff;
        const bool hasCutoff = cutoff.IncludeMin || cutoff.IncludeMax;
        std::vector<double> levels;
        bool levelsAreBanded;
        SetupLevelsForContourFlooding(czInfo, &levels, &levelsAreBanded);
        if (fd.ContourType == 3 || fd.ContourType == 4 || fd.Values.FieldData == nullptr) {
            fd.Mode = FloodMode_CellColor;
        } else if (!banded && contour->ColorMapFilter.UseFastApproxContinuousFlood && !hasCutoff && fd.UseDevice) {
            fd.Mode = FloodMode_NodeColor;
        } else if (banded) {
            fd.Mode = FloodMode_Bands;
            setupBands(fd, *contour, levels, true);
        } else if (fd.UseDevice) {
            // A continuous group on the device: bands at the map's control points (none with
            // fast colouring, which comes here only for its cut-off), blended inside each band.
            fd.Mode = FloodMode_Bands;
            fd.VertexColors = true;
            setupBands(fd, *contour, levels, false);
        } else {
            // Exact drawing of a continuous group: each cell in the colour of its average.
            fd.Mode = FloodMode_CellColor;
            fd.ContourType = 3;
        }
    }
    Projector proj;
    if (!proj.init(czInfo, czData) || !allocFloodNodes(fd, proj)) return !Interrupted;
    if (!is3D) {
        // The frame's rectangle on the screen: cells wholly outside it are not sent.
        double x1 = CoordMap_X(CurTransforms.Frame2Screen, 0.0), x2 = CoordMap_X(CurTransforms.Frame2Screen, 1.0);
        double y1 = CoordMap_Y(CurTransforms.Frame2Screen, 1.0), y2 = CoordMap_Y(CurTransforms.Frame2Screen, 0.0);
        fd.ClipX1 = std::min(x1, x2), fd.ClipX2 = std::max(x1, x2);
        fd.ClipY1 = std::min(y1, y2), fd.ClipY2 = std::max(y1, y2);
    }
    const int savedGroup = VDI_GetCurrentColorMapGroup();
    if (fd.Group >= 0) VDI_SelectColorMapGroup(fd.Group);
    if (fd.UseDevice) Gr_Set_Clipping_Mode(ClippingMode_2D);
    // Value and IJK blanking, depth blanking in 3D, and collapsed cells left out. On the device
    // a collapsed cell covers no pixel, so the collapse test (a read of every corner's
    // coordinates) is left to the exact path, and clean rows come whole.
    const int flags = WalkFlag_ValueBlanking | WalkFlag_IJKBlanking | (is3D ? WalkFlag_DepthBlanking : 0) |
                      (fd.UseDevice ? 0 : WalkFlag_SkipCollapsed);
    const bool ok =
        ProcessSurfaceCells(czInfo, czData, true, flags, czData->ISkip, czData->JSkip, czData->KSkip, floodCellCallback,
                            is3D ? nullptr : floodStripCallback, nullptr, reinterpret_cast<long>(&fd));
    endBlock(fd);
    if (is3D && !fd.Panels.empty()) {
        // Far panels first, so nearer ones cover them.
        std::stable_sort(fd.Panels.begin(), fd.Panels.end(),
                         [](const Panel &a, const Panel &b) { return a.Depth > b.Depth; });
        fd.Is3D = false;
        fd.UseDevice = false;
        for (const Panel &panel : fd.Panels) {
            VDI_Set_Fill_Color(panel.Color, false, panel.ColorGroup);
            VDI_ResetVert();
            int index = 0;
            for (int k = 0; k < panel.Count; k++)
                if (VDI_SetVert(index, fd.PanelX[panel.First + size_t(k)], fd.PanelY[panel.First + size_t(k)])) index++;
            if (VDI_SetVert(index, fd.PanelX[panel.First], fd.PanelY[panel.First])) index++;
            if (index >= 4) VDI_Pgon(true, false);
        }
    }
    VDI_SelectColorMapGroup(savedGroup);
    return ok || !Interrupted;
}

}  // namespace

bool Draw2DShadeOrContourFlooding(CZInfo_s *czInfo, CZData_s *czData) {
    return withScratch([&] { return drawFlood(czInfo, czData, false); });
}
bool Draw3DShadeOrContourFloodingInSoftware(CZInfo_s *czInfo, CZData_s *czData) {
    return withScratch([&] { return drawFlood(czInfo, czData, true); });
}
bool Draw2DContourLinesAndDefLabels(CZInfo_s *czInfo, CZData_s *czData) {
    return withScratch([&] { return drawContourLines(czInfo, czData); });
}
bool Draw3DContLinesAndDefLabelsInSoftware(CZInfo_s *czInfo, CZData_s *czData) {
    return withScratch([&] { return drawContourLines(czInfo, czData); });
}

// ---- labels -------------------------------------------------------------------------------------

void AddContourLabel(const Frame_s *frame, int group, const ContourLabel_s &label) {
    if (frame == nullptr || group < 0 || group >= MaxContourGroups) return;
    try {
        LabelStore[frame->UniqueID].Groups[size_t(group)].push_back(label);
    } catch (const std::bad_alloc &) {
        ErrMsg("Cannot allocate scratch space for contour labels");
    }
}

void DeleteContourLabels(const Frame_s *frame, int group) {
    if (frame == nullptr) return;
    auto found = LabelStore.find(frame->UniqueID);
    if (found == LabelStore.end()) return;
    for (int g = 0; g < MaxContourGroups; g++)
        if (group < 0 || g == group) found->second.Groups[size_t(g)].clear();
}

void DeleteAllAutoContourLabels(const Frame_s *frame) {
    if (frame == nullptr) return;
    auto found = LabelStore.find(frame->UniqueID);
    if (found == LabelStore.end()) return;
    for (std::vector<ContourLabel_s> &labels : found->second.Groups)
        labels.erase(std::remove_if(labels.begin(), labels.end(), [](const ContourLabel_s &l) { return l.IsAuto; }),
                     labels.end());
}

const std::vector<ContourLabel_s> &GetContourLabels(const Frame_s *frame, int group) {
    static const std::vector<ContourLabel_s> none;
    if (frame == nullptr || group < 0 || group >= MaxContourGroups) return none;
    auto found = LabelStore.find(frame->UniqueID);
    return found == LabelStore.end() ? none : found->second.Groups[size_t(group)];
}

void ResetContourLabelPlacement() { LabelRandomState = 1; }

namespace {

enum NumberFormat_e {
    NumberFormat_Integer = 0,
    NumberFormat_FixedFloat = 1,
    NumberFormat_Exponential = 2,
    NumberFormat_BestFloat = 3,
    NumberFormat_Superscript = 4,
    NumberFormat_CustomLabel = 5,
    NumberFormat_LogSuperscript = 6,
    NumberFormat_RangeBestFloat = 7,
    NumberFormat_DynamicLabel = 8
};

// The exponent after 'E' and its sign as two digits, three above 99.
std::string rewriteExponent(const std::string &text) {
    size_t e = text.find('E');
    if (e == std::string::npos) return text;
    size_t digits = e + 1;
    if (digits < text.size() && (text[digits] == '+' || text[digits] == '-')) digits++;
    int exponent = digits < text.size() ? atoi(text.c_str() + digits) : 0;
    char buffer[16];
    snprintf(buffer, sizeof buffer, exponent > 99 ? "%3d" : "%02d", exponent);
    return text.substr(0, digits) + buffer;
}

std::string trimmed(const std::string &text) {
    size_t first = text.find_first_not_of(' '), last = text.find_last_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

std::string encodeValue(double value, int formatting, int precision) {
    char buffer[128];
    precision = std::clamp(precision, 0, 30);
    switch (formatting) {
    case NumberFormat_Integer: {
        double clamped = std::clamp(value, -2e9, 2e9);
        snprintf(buffer, sizeof buffer, "%ld", long(clamped >= 0 ? clamped + 0.499 : clamped - 0.499));
        return buffer;
    }
    case NumberFormat_FixedFloat: snprintf(buffer, sizeof buffer, "%.*f", precision, value); break;
    case NumberFormat_Exponential:
    case NumberFormat_Superscript: snprintf(buffer, sizeof buffer, "%.*E", precision, value); break;
    case NumberFormat_LogSuperscript: snprintf(buffer, sizeof buffer, "%G", double(long(value + 0.499))); break;
    default: snprintf(buffer, sizeof buffer, "%G", value); break;
    }
    std::string text = trimmed(rewriteExponent(buffer));
    if (formatting == NumberFormat_Superscript) {
        size_t e = text.find('E');
        if (e != std::string::npos) text = text.substr(0, e) + "x10<sup>" + text.substr(e + 1) + "</sup>";
    }
    return text;
}

}  // namespace

std::string EncodeContourLabelValue(double value, const ValueFormat_s &format) {
    const double shown = format.ShowNegativeSign ? value : std::fabs(value);
    std::string text;
    int formatting = format.Formatting;
    if (formatting == NumberFormat_CustomLabel || formatting == NumberFormat_DynamicLabel ||
        formatting == NumberFormat_RangeBestFloat)
        formatting = NumberFormat_BestFloat;
    if (formatting == NumberFormat_LogSuperscript) {
        if (!(value > 0)) return "***";
        long exponent = std::lround(std::log10(value));
        text = "10<sup>" + std::to_string(exponent) + "</sup>";
    } else {
        text = encodeValue(shown, formatting, format.Precision);
        if ((formatting == NumberFormat_Integer || formatting == NumberFormat_FixedFloat) &&
            text.find('E') != std::string::npos)
            return "***";
        if (format.RemoveLeadingZeros) {
            if (text.compare(0, 2, "0.") == 0)
                text.erase(0, 1);
            else if (text.compare(0, 3, "-0.") == 0)
                text.erase(1, 1);
        }
        const bool whole = text.find_first_of(".E") == std::string::npos;
        if (format.ShowDecimalsOnWholeNumbers &&
            (formatting == NumberFormat_Integer || (formatting == NumberFormat_BestFloat && whole)))
            text += ".";
    }
    const std::string &prefix = value > 0   ? format.PositivePrefix
                                : value < 0 ? format.NegativePrefix
                                            : format.ZeroPrefix;
    const std::string &suffix = value > 0   ? format.PositiveSuffix
                                : value < 0 ? format.NegativeSuffix
                                            : format.ZeroSuffix;
    return prefix + text + suffix;
}

ValueFormat_s GetFinalContourLabelValueFormat(int group) {
    const GlobalContour_s *contour = contourGroup(group);
    if (contour == nullptr) return ValueFormat_s();
    ValueFormat_s format = contour->Labels.NumFormat;
    if (format.Formatting != NumberFormat_RangeBestFloat) return format;
    // One format for every level: fixed with the most digits any level shows after the point,
    // or exponential as soon as one needs an exponent.
    const int givenPrecision = format.Precision;
    format.Formatting = NumberFormat_FixedFloat;
    format.Precision = 0;
    for (double level : contour->Levels) {
        char buffer[64];
        snprintf(buffer, sizeof buffer, "%G", level);
        if (strpbrk(buffer, "ED") != nullptr) {
            format.Formatting = NumberFormat_Exponential;
            format.Precision = givenPrecision;
            return format;
        }
        const char *point = strchr(buffer, '.');
        if (point != nullptr) format.Precision = std::max(format.Precision, int(strlen(point + 1)));
    }
    return format;
}

std::string GetContourLabelText(int group, const ContourLabel_s &label) {
    const GlobalContour_s *contour = contourGroup(group);
    const bool withValue = contour == nullptr || contour->Labels.LabelWithValue;
    return EncodeContourLabelValue(withValue ? label.Value : double(label.Level + 1),
                                   GetFinalContourLabelValueFormat(group));
}

// ---- extraction -----------------------------------------------------------------------------------

namespace {

struct ExtractPoint {
    EntIndex_t Zone;
    LgIndex_t Cell, I0, I1;
    double Fract;
};

struct ExtractClient {
    EntIndex_t Zone;
    std::vector<std::vector<ExtractPoint>> *Buffers;  // per level: pairs of segment ends
};

bool recordSegments(CZInfo_s *, CZData_s *, const LgIndex_t *cells, const LgIndex_t *i0, const LgIndex_t *i1,
                    const double *fract, LgIndex_t count, IJKPlanes_e, int level, double, long clientData) {
    ExtractClient &client = *reinterpret_cast<ExtractClient *>(clientData);
    if (level < 0 || size_t(level) >= client.Buffers->size()) return true;
    std::vector<ExtractPoint> &buffer = (*client.Buffers)[size_t(level)];
    try {
        for (LgIndex_t k = 0; k + 1 < count; k++) {
            buffer.push_back({client.Zone, cells[k], i0[k], i1[k], fract[k]});
            buffer.push_back({client.Zone, cells[k], i0[k + 1], i1[k + 1], fract[k + 1]});
        }
    } catch (const std::bad_alloc &) {
        ErrMsg("Cannot allocate temporary memory to extract the contour lines.");
        return false;
    }
    return !Interrupted;
}

// A point of a level is known by its zone and edge: a level crosses an edge once.
struct EdgeKey {
    EntIndex_t Zone;
    LgIndex_t Low, High;
    bool operator==(const EdgeKey &other) const { return Zone == other.Zone && Low == other.Low && High == other.High; }
};
struct EdgeKeyHash {
    size_t operator()(const EdgeKey &key) const {
        uint64_t h =
            (uint64_t(uint32_t(key.Low)) << 32) ^ uint64_t(uint32_t(key.High)) ^ (uint64_t(uint16_t(key.Zone)) << 48);
        h ^= h >> 33;
        h *= 0xff51afd7ed558ccdULL;
        h ^= h >> 33;
        return size_t(h);
    }
};

// Fills the variables of a new zone from the points: nodal values between the edge's nodes,
// cell-centred ones from the cell the point was found in.
bool fillExtractedValues(DataSet_s *dataSet, EntIndex_t zone, const std::vector<ExtractPoint> &nodes,
                         const std::vector<LgIndex_t> &order) {
    for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v)) {
        const EntIndex_t var = EntIndex_t(v);
        FieldData_a target = GetWritableNativeFieldDataPtr(dataSet, zone, var);
        if (target == nullptr) return false;
        EntIndex_t sourceZone = -1;
        FieldData_a source = nullptr;
        for (size_t n = 0; n < order.size(); n++) {
            const ExtractPoint &point = nodes[size_t(order[n])];
            if (point.Zone != sourceZone) {
                sourceZone = point.Zone;
                source = GetReadableNativeFieldDataPtr(dataSet, sourceZone, var);
            }
            double value = 0.0;
            if (source != nullptr && !IsFieldDataPassive(source)) {
                if (source->Location == ValueLocation_Nodal) {
                    double a = GetFieldValue(source, point.I0);
                    value = point.I0 == point.I1 ? a : a + point.Fract * (GetFieldValue(source, point.I1) - a);
                } else {
                    value = GetFieldValue(source, std::clamp(point.Cell, 0, source->NumValues - 1));
                }
            }
            SetFieldValue(target, LgIndex_t(n), value);
        }
    }
    return true;
}

std::vector<FieldDataType_e> extractedTypes(DataSet_s *dataSet, EntIndex_t sourceZone) {
    std::vector<FieldDataType_e> types(size_t(dataSet->NumVars), FieldDataType_Float);
    for (EntIndex_t var = 0; var < dataSet->NumVars; var++) {
        if (!IsVarEnabled(dataSet, var)) continue;
        FieldData_a source = GetNativeFieldDataPtr(dataSet, sourceZone, var);
        if (source != nullptr && IsValidFieldDataType(source->Type)) types[size_t(var)] = source->Type;
    }
    return types;
}

bool addExtractedZone(DataSet_s *dataSet, const std::string &title, ZoneType_e type,
                      const std::vector<ExtractPoint> &nodes, const std::vector<LgIndex_t> &order,
                      const std::vector<std::pair<LgIndex_t, LgIndex_t>> *segments, Set_a *added) {
    ZoneSpec_s spec;
    spec.Type = type;
    spec.Name = const_cast<char *>(title.c_str());  // copied by the zone
    spec.NumPtsI = LgIndex_t(order.size());
    if (type == ZoneType_FELineSeg) {
        spec.NumPtsJ = LgIndex_t(segments->size());
        spec.NumPtsK = 2;
    } else {
        spec.NumPtsJ = spec.NumPtsK = 1;
    }
    std::vector<FieldDataType_e> types = extractedTypes(dataSet, nodes[size_t(order[0])].Zone);
    std::vector<ValueLocation_e> locations(size_t(dataSet->NumVars), ValueLocation_Nodal);
    const EntIndex_t zone = dataSet->NumZones;
    if (!AddZone(&spec, types.data(), locations.data(), zone, nullptr, nullptr, -1, false)) return false;
    if (type == ZoneType_FELineSeg) {
        NodeMap_a nodeMap = GetZoneData(dataSet, zone)->NodeMap;
        for (size_t s = 0; s < segments->size(); s++) {
            NodeMapSetNode(nodeMap, LgIndex_t(s), 0, (*segments)[s].first);
            NodeMapSetNode(nodeMap, LgIndex_t(s), 1, (*segments)[s].second);
        }
    }
    AddToSet(added, zone, true);
    return fillExtractedValues(dataSet, zone, nodes, order);
}

// Chains of segments joined at shared nodes: from each unused segment outward from its first
// node, then reversed and outward from its second.
std::vector<std::vector<LgIndex_t>> chainSegments(LgIndex_t numNodes,
                                                  const std::vector<std::pair<LgIndex_t, LgIndex_t>> &segments) {
    std::vector<std::vector<LgIndex_t>> atNode(static_cast<size_t>(numNodes));
    for (size_t s = 0; s < segments.size(); s++) {
        atNode[size_t(segments[s].first)].push_back(LgIndex_t(s));
        atNode[size_t(segments[s].second)].push_back(LgIndex_t(s));
    }
    std::vector<bool> used(segments.size(), false);
    std::vector<std::vector<LgIndex_t>> chains;
    auto grow = [&](std::vector<LgIndex_t> &chain) {
        for (;;) {
            LgIndex_t node = chain.back(), next = -1;
            for (LgIndex_t s : atNode[size_t(node)]) {
                if (used[size_t(s)]) continue;
                used[size_t(s)] = true;
                next = segments[size_t(s)].first == node ? segments[size_t(s)].second : segments[size_t(s)].first;
                break;
            }
            if (next < 0) return;
            chain.push_back(next);
        }
    };
    for (size_t s = 0; s < segments.size(); s++) {
        if (used[s]) continue;
        used[s] = true;
        std::vector<LgIndex_t> chain{segments[s].second, segments[s].first};
        grow(chain);
        std::reverse(chain.begin(), chain.end());
        grow(chain);
        chains.push_back(std::move(chain));
    }
    return chains;
}

bool extractZones(int group, ContLineCreateMode_e mode, const Set_a *zoneSet) {
    Frame_s *frame = CurFrame;
    const GlobalContour_s *contour = contourGroup(group);
    if (frame == nullptr || frame->DataSet == nullptr || contour == nullptr || zoneSet == nullptr) return false;
    DataSet_s *dataSet = frame->DataSet;
    const std::vector<double> levels = contour->Levels;
    std::vector<std::vector<ExtractPoint>> buffers;
    try {
        buffers.resize(levels.size());
    } catch (const std::bad_alloc &) {
        ErrMsg("Cannot allocate temporary memory to extract the contour lines.");
        return false;
    }
    std::vector<EntIndex_t> zones;
    for (SetIndex_t z = GetNextMember(zoneSet, -1); z >= 0; z = GetNextMember(zoneSet, z))
        zones.push_back(EntIndex_t(z));

    // Two passes: assembled lines over surfaces, then cell-local lines over FE volumes and the
    // exposed faces of blanked ordered volumes.
    for (int pass = 0; pass < 2; pass++) {
        for (EntIndex_t zone : zones) {
            if (!IsZoneEnabled(dataSet, zone)) continue;
            CZInfo_s *czInfo = nullptr;
            CZData_s *czData = nullptr;
            if (!SetupFrameZone(frame, zone, &czInfo, &czData)) continue;
            bool ok = true;
            const bool volumeFE = czInfo->IsFE && IsFEVolumeType(czInfo->ZoneType);
            const bool usable = czData->NumCells > 0 && !isLinearObject(czInfo) &&
                                GetContourGroupForZoneLineContours(czInfo) == group &&
                                ZoneOrCOBHasContourLineStyle(czInfo);
            ExtractClient client{zone, &buffers};
            if (usable && pass == 0 && !volumeFE) {
                ok = processAllLevels(czInfo, czData, group, recordSegments, reinterpret_cast<long>(&client));
                if (!ok && !Interrupted && !ErrorsArePending())
                    ErrMsg("Sufficient resources are not available to extract contour lines.");
            } else if (usable && pass == 1) {
                const bool exposedOrdered =
                    IsCZOrderedVolume(czInfo) && czData->BlankingActive &&
                    czInfo->FieldMap->Surfaces.SurfacesToPlot == SurfacesToPlot_ExposedCellFaces;
                if (volumeFE || exposedOrdered)
                    ok = ProcessContLinesOnSurfCells(czInfo, czData, recordSegments, reinterpret_cast<long>(&client));
            }
            ReleaseSetupZoneOrCOB(&czInfo, &czData);
            if (!ok) return false;
        }
    }

    Set_a *added = AllocSet(true);
    if (added == nullptr) return false;
    bool ok = true;
    for (size_t level = 0; ok && level < levels.size(); level++) {
        const std::vector<ExtractPoint> &buffer = buffers[level];
        if (buffer.empty()) continue;
        std::unordered_map<EdgeKey, LgIndex_t, EdgeKeyHash> index;
        std::vector<ExtractPoint> nodes;
        std::vector<std::pair<LgIndex_t, LgIndex_t>> segments;
        auto nodeOf = [&](const ExtractPoint &point) {
            EdgeKey key{point.Zone, std::min(point.I0, point.I1), std::max(point.I0, point.I1)};
            auto found = index.find(key);
            if (found != index.end()) return found->second;
            LgIndex_t node = LgIndex_t(nodes.size());
            index.emplace(key, node);
            nodes.push_back(point);
            return node;
        };
        for (size_t p = 0; p + 1 < buffer.size(); p += 2) {
            LgIndex_t a = nodeOf(buffer[p]), b = nodeOf(buffer[p + 1]);
            if (a != b) segments.emplace_back(a, b);
        }
        if (nodes.size() < 2 || segments.empty()) continue;
        char title[96];
        snprintf(title, sizeof title, "Contour line: C=%G", levels[level]);
        if (mode == ContLineCreateMode_OneZonePerContourLevel) {
            std::vector<LgIndex_t> order(nodes.size());
            for (size_t n = 0; n < order.size(); n++) order[n] = LgIndex_t(n);
            ok = addExtractedZone(dataSet, title, ZoneType_FELineSeg, nodes, order, &segments, added);
        } else {
            for (const std::vector<LgIndex_t> &chain : chainSegments(LgIndex_t(nodes.size()), segments))
                if (ok && chain.size() >= 2)
                    ok = addExtractedZone(dataSet, title, ZoneType_Ordered, nodes, chain, nullptr, added);
        }
    }
    const bool anyAdded = GetNextMember(added, -1) >= 0;
    if (anyAdded) {
        DataSetHooks.ActivateFieldMapsForNewZonesAdded(dataSet);
        StateChangeSupplementalInfoSetZoneSet(added);
        StateChanged(StateChange_ZonesAdded);
    } else if (ok) {
        ErrMsg("No contour lines were extracted.");
        ok = false;
    }
    DeallocSet(&added);
    return ok;
}

}  // namespace

bool ExtractZonesFromContourLines(int group, ContLineCreateMode_e mode, const Set_a *zoneSet) {
    Interrupted = false;
    try {
        return extractZones(group, mode, zoneSet);
    } catch (const std::bad_alloc &) {
        ErrMsg("Cannot allocate temporary memory to extract the contour lines.");
        return false;
    }
}

bool Action_CreateContourLineZones(ContLineCreateMode_e mode) {
    if (DataSetAvailable("create contour line zones") == nullptr) return false;
    const Set_a *active = GetActiveRelevantZones(CurFrame);
    if (active == nullptr) return false;
    Set_a *zones = AllocSet(true);
    if (zones == nullptr) return false;
    for (SetIndex_t z = GetNextMember(active, -1); z >= 0; z = GetNextMember(active, z)) AddToSet(zones, z, true);
    bool ok = ExtractZonesFromContourLines(0, mode, zones);
    DeallocSet(&zones);
    return ok;
}

namespace {

bool handleCreateContourLineZones(const ActionCommand_s &cmd) {
    LgIndex_t mode = cmd.integer(MacroSetValue_CONTLINECREATEMODE, ContLineCreateMode_OneZonePerContourLevel);
    if (DataSetAvailable("create contour line zones") == nullptr) return false;
    cmd.logAction();
    return Action_CreateContourLineZones(ContLineCreateMode_e(mode));
}

struct ContourLineAction {
    int Action;
    ActionHandler_pf Handler;
};
constexpr ContourLineAction ContourLineActions[] = {
    {MacroAction_CREATECONTOURLINEZONES, handleCreateContourLineZones},
};

}  // namespace

ActionHandler_pf FindContourLineActionHandler(int action) {
    for (const ContourLineAction &entry : ContourLineActions)
        if (entry.Action == action) return entry.Handler;
    return nullptr;
}
