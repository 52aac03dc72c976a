// Surface and volume cell walkers for ordered and FE objects, with the FE surface stripper.
#include "base/field/proccell.h"

#include <algorithm>
#include <vector>

#include "base/field/zoneopt.h"
#include "base/kernel/globals.h"
#include "base/kernel/idle.h"
#include "base/kernel/orvassert.h"

// ---- shared pieces ----------------------------------------------------------------------------

void GetCellInOrderedSurfaceCellStrip(LgIndex_t start, LgIndex_t stride, LgIndex_t end, LgIndex_t otherStride,
                                      LgIndex_t n, LgIndex_t *n1, LgIndex_t *n2, LgIndex_t *n3, LgIndex_t *n4) {
    *n1 = start + n * stride;
    *n2 = std::min(*n1 + stride, end);
    *n3 = *n2 + otherStride;
    *n4 = *n1 + otherStride;
}

void GetCellFaceNodes(NodeMap_a nodeMap, LgIndex_t element, int face, LgIndex_t *n1, LgIndex_t *n2, LgIndex_t *n3,
                      LgIndex_t *n4) {
    GetFEFaceNodes(nodeMap, element, face, n1, n2, n3, n4);
    // The first face of a tetrahedron repeats its last corner rather than its first, so that a
    // walk hands over the triangle 0 1 2 as 0 1 2 2.
    if (nodeMap->ZoneType == ZoneType_FETetra && face == 0) *n4 = *n3;
}

namespace {

bool sameCorner(const FieldValueReader_s coords[3], int numCoords, LgIndex_t a, LgIndex_t b) {
    if (a == b) return true;
    if (numCoords == 0) return false;
    for (int c = 0; c < numCoords; c++)
        if (ReadFieldValue(coords[c], a) != ReadFieldValue(coords[c], b)) return false;
    return true;
}

}  // namespace

CollapsedStatus_e GetSurfaceCellCollapsedStatus(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t n1,
                                                LgIndex_t n2, LgIndex_t n3, LgIndex_t n4) {
    FieldValueReader_s coords[3];
    int numCoords = 0;
    if (czData->Nodal[CZVar_X] != nullptr && czData->Nodal[CZVar_Y] != nullptr) {
        coords[numCoords++] = MakeFieldValueReader(czData->Nodal[CZVar_X]);
        coords[numCoords++] = MakeFieldValueReader(czData->Nodal[CZVar_Y]);
        if (czInfo->Is3D && czData->Nodal[CZVar_Z] != nullptr) coords[numCoords++] = MakeFieldValueReader(czData->Nodal[CZVar_Z]);
    }
    auto eq = [&](LgIndex_t a, LgIndex_t b) { return sameCorner(coords, numCoords, a, b); };
    if (czInfo->ZoneType == ZoneType_FETriangle || czInfo->ZoneType == ZoneType_FETetra) {
        int equalPairs = eq(n1, n2) + eq(n2, n3) + eq(n3, n1);
        return equalPairs == 0   ? CollapsedStatus_NotCollapsed
               : equalPairs == 3 ? CollapsedStatus_CollapsedToPoint
                                 : CollapsedStatus_CollapsedToLine;
    }
    const LgIndex_t corners[4] = {n1, n2, n3, n4};
    int adjacent = 0, unique = 0;
    for (int c = 0; c < 4; c++) {
        adjacent += eq(corners[c], corners[(c + 1) % 4]);
        bool differsFromAll = true;
        for (int other = 0; other < 4 && differsFromAll; other++)
            if (other != c && eq(corners[c], corners[other])) differsFromAll = false;
        unique += differsFromAll;
    }
    if (unique == 4 && adjacent == 0) return CollapsedStatus_NotCollapsed;
    if (unique == 2 && adjacent == 1) return CollapsedStatus_CollapsedToTriangle;
    if (unique <= 1 && adjacent == 2) return CollapsedStatus_CollapsedToLine;
    if (unique == 2 && adjacent == 0) return CollapsedStatus_CollapsedToSegmentedLine;
    if (unique == 0 && adjacent == 4) return CollapsedStatus_CollapsedToPoint;
    return CollapsedStatus_Invalid;
}

int GetFaceObscuration(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell, int face) {
    if (czData->FaceNeighbors == nullptr) return FaceObscuration_NotObscured;
    return FaceNeighborGetFaceObscuration(czData->FaceNeighbors, cell, face, czInfo->ActiveZones);
}

namespace {

// ---- the walk's state ---------------------------------------------------------------------

struct SurfaceWalk {
    CZInfo_s *CZInfo;
    CZData_s *CZData;
    bool CheckInterrupt;
    bool UseValue, UseIJK, UseDepth;
    bool CollapseTest;
    SurfaceCellCallback_pf CellCallback;
    OrderedSurfaceCellStripCallback_pf OrderedStrip;
    FESurfaceCellStripCallback_pf FEStrip;
    long ClientData;
    int NumVisited;
    bool Stopped;

    bool anyBlanking() const { return UseValue || UseIJK || UseDepth; }
};

// True when the walk must stop: a time-out tick or an interrupt lets the interface be polled,
// and an interrupt the user asked for ends the walk.
bool isInterrupted(bool checkInterrupt) {
    if (!checkInterrupt) return false;
    if (TimeOut.General.load(std::memory_order_relaxed) || Interrupted) {
        HandleGeneralTimeOut();
        return Interrupted;
    }
    return false;
}

void setBlankingUse(const CZInfo_s *czInfo, const CZData_s *czData, int flags, bool *useValue, bool *useIJK,
                    bool *useDepth) {
    *useValue = (flags & WalkFlag_ValueBlanking) != 0 && czData->BlankingActive && IsZoneOrCOBValueBlankingActive(czInfo);
    *useIJK = (flags & WalkFlag_IJKBlanking) != 0 && czData->BlankingActive && IsZoneOrCOBIJKBlankingActive(czInfo);
    *useDepth = (flags & WalkFlag_DepthBlanking) != 0 && IsZoneOrCOBDepthBlankingActive(czInfo);
}

bool emitCell(SurfaceWalk &w, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t cell,
              IJKPlanes_e plane, CellBlankedCond_e cond) {
    w.NumVisited++;
    if (w.CellCallback != nullptr && !w.CellCallback(w.CZInfo, w.CZData, n1, n2, n3, n4, cell, plane, cond, w.ClientData)) {
        w.Stopped = true;
        return false;
    }
    if (isInterrupted(w.CheckInterrupt)) {
        w.Stopped = true;
        return false;
    }
    return true;
}

bool isCollapseVisible(CollapsedStatus_e status) {
    return status == CollapsedStatus_NotCollapsed || status == CollapsedStatus_CollapsedToTriangle;
}

CellBlankedCond_e surfaceCond(const SurfaceWalk &w, LgIndex_t cell, IJKPlanes_e plane) {
    if (!w.anyBlanking()) return CellBlankedCond_NotBlanked;
    return CZBlankingHooks.GetSurfaceCellBlankedCondition(w.CZInfo, w.CZData, cell, plane, w.UseValue, w.UseIJK,
                                                          w.UseDepth);
}

CellBlankedCond_e volumeCond(const SurfaceWalk &w, LgIndex_t cell) {
    if (!w.anyBlanking()) return CellBlankedCond_NotBlanked;
    return CZBlankingHooks.GetVolumeCellBlankedCondition(w.CZInfo, w.CZData, cell, w.UseValue, w.UseIJK, w.UseDepth);
}

int surfacesToPlot(const CZInfo_s *czInfo) {
    return czInfo->FieldMap != nullptr ? czInfo->FieldMap->Surfaces.SurfacesToPlot : SurfacesToPlot_BoundaryFaces;
}

bool hasPartition(const CZInfo_s *czInfo) {
    return czInfo->OptInfo != nullptr && czInfo->OptInfo->Partitioning != nullptr &&
           czInfo->OptInfo->Partitioning->IsValid;
}

// The subzones to walk: the one asked for, every subzone when blanking can skip some of them
// (skips 1 only), else the whole object (-1).
std::vector<LgIndex_t> getSubZoneRange(const SurfaceWalk &w, bool skipsAreOne) {
    const CZInfo_s *czInfo = w.CZInfo;
    if (czInfo->SubZone >= 0 && hasPartition(czInfo)) return {czInfo->SubZone};
    if (hasPartition(czInfo) && w.anyBlanking() && skipsAreOne) {
        std::vector<LgIndex_t> all(size_t(czInfo->OptInfo->Partitioning->NumSubZones));
        for (size_t s = 0; s < all.size(); s++) all[s] = LgIndex_t(s);
        return all;
    }
    return {-1};
}

// ---- ordered objects ------------------------------------------------------------------------

// An ordered linear object: one run of segments (i, e, e, i).
bool walkOrderedLinear(SurfaceWalk &w, LgIndex_t iSkip, LgIndex_t kSkip) {
    const bool isIPlanes = surfacesToPlot(w.CZInfo) == SurfacesToPlot_IPlanes;
    const LgIndex_t step = std::max(isIPlanes ? iSkip : kSkip, 1);
    const IJKPlanes_e plane = isIPlanes ? IJKPlanes_I : IJKPlanes_K;
    const LgIndex_t last = w.CZData->NumPoints - 1;
    for (LgIndex_t i = 0; i < last; i += step) {
        LgIndex_t e = std::min(i + step, last);
        CellBlankedCond_e cond = surfaceCond(w, i, IJKPlanes_None);
        if (cond == CellBlankedCond_EntirelyBlanked) continue;
        if (!emitCell(w, i, e, e, i, i, plane, cond)) return false;
    }
    return true;
}

struct OrderedGeometry {
    LgIndex_t Dims[3];
    LgIndex_t Strides[3];
    LgIndex_t Skips[3];
    bool IsVolume;
};

// A direction's range of cells: the whole, or the subzone's.
struct CellRange {
    LgIndex_t Min[3], Max[3];
};

bool planeIsRequested(int surfaces, int direction) {
    switch (surfaces) {
    case SurfacesToPlot_BoundaryFaces:
    case SurfacesToPlot_ExposedCellFaces:
    case SurfacesToPlot_All:
    case SurfacesToPlot_IJKPlanes: return true;
    case SurfacesToPlot_IPlanes: return direction == 0;
    case SurfacesToPlot_JPlanes: return direction == 1;
    case SurfacesToPlot_KPlanes: return direction == 2;
    case SurfacesToPlot_IJPlanes: return direction != 2;
    case SurfacesToPlot_JKPlanes: return direction != 0;
    case SurfacesToPlot_IKPlanes: return direction != 1;
    default: return false;
    }
}

// The planes of one direction that the walk draws in this range: boundary planes, every plane,
// or the field map's index range; a subzone contributes the planes it holds, and the last plane
// belongs to the subzone that reaches it.
std::vector<LgIndex_t> getMajorSurfaceRange(const SurfaceWalk &w, const OrderedGeometry &geometry,
                                            const CellRange &range, int direction) {
    const LgIndex_t last = geometry.Dims[direction] - 1;
    const LgIndex_t cellMin = range.Min[direction], cellMax = range.Max[direction];
    auto belongs = [&](LgIndex_t p) { return (p >= cellMin && p <= cellMax) || (p == last && cellMax >= last - 1); };
    std::vector<LgIndex_t> planes;
    const int surfaces = surfacesToPlot(w.CZInfo);
    if (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces) {
        if (belongs(0)) planes.push_back(0);
        if (last > 0 && belongs(last)) planes.push_back(last);
    } else if (surfaces == SurfacesToPlot_All) {
        for (LgIndex_t p = 0; p <= last; p++)
            if (belongs(p)) planes.push_back(p);
    } else {
        const FieldSurfaces_s &style = w.CZInfo->FieldMap->Surfaces;
        const IndexRange_s *given[3] = {&style.IRange, &style.JRange, &style.KRange};
        IndexRange_s zeroBased = GetZeroBasedIndexRange(*given[direction], geometry.Dims[direction]);
        for (LgIndex_t p = zeroBased.Min; p <= zeroBased.Max; p += zeroBased.Skip)
            if (belongs(p)) planes.push_back(p);
    }
    return planes;
}

// The cells' starting indices along an in-plane direction: multiples of the skip inside the
// range, each starting a cell (below the last point).
std::vector<LgIndex_t> cellStarts(const OrderedGeometry &geometry, const CellRange &range, int direction) {
    const LgIndex_t last = geometry.Dims[direction] - 1;
    const LgIndex_t skip = geometry.Skips[direction];
    std::vector<LgIndex_t> starts;
    LgIndex_t first = (range.Min[direction] + skip - 1) / skip * skip;
    for (LgIndex_t a = first; a <= range.Max[direction] && a < last; a += skip) starts.push_back(a);
    return starts;
}

bool isOrderedFaceObscured(const SurfaceWalk &w, const OrderedGeometry &geometry, int direction, LgIndex_t plane,
                           LgIndex_t corner) {
    const LgIndex_t last = geometry.Dims[direction] - 1;
    const LgIndex_t stride = geometry.Strides[direction];
    if (plane == 0) return GetFaceObscuration(w.CZInfo, w.CZData, corner, 2 * direction) >= 2;
    // The last plane is the far face of the cell before it, and of the cell one skip back.
    LgIndex_t cell = corner - stride;
    if (GetFaceObscuration(w.CZInfo, w.CZData, cell, 2 * direction + 1) >= 2) return true;
    LgIndex_t skipped = corner - std::min(geometry.Skips[direction], last) * stride;
    return skipped != cell && GetFaceObscuration(w.CZInfo, w.CZData, skipped, 2 * direction + 1) >= 2;
}

// One plane of a direction: rows along the outer in-plane direction, cells along the inner one.
bool walkOrderedPlane(SurfaceWalk &w, const OrderedGeometry &geometry, const CellRange &range, int direction,
                      LgIndex_t plane, bool obscurationInForce) {
    // The inner direction runs from N1 to N2: K in I planes, I in J and K planes.
    static constexpr int innerOf[3] = {2, 0, 0}, outerOf[3] = {1, 2, 1};
    const int inner = innerOf[direction], outer = outerOf[direction];
    const LgIndex_t *strides = geometry.Strides;
    const LgIndex_t lastInner = geometry.Dims[inner] - 1, lastOuter = geometry.Dims[outer] - 1;
    const LgIndex_t lastPlane = geometry.Dims[direction] - 1;
    const IJKPlanes_e planeKind = IJKPlanes_e(direction);
    const std::vector<LgIndex_t> innerStarts = cellStarts(geometry, range, inner);
    const std::vector<LgIndex_t> outerStarts = cellStarts(geometry, range, outer);
    const LgIndex_t innerStride = geometry.Skips[inner] * strides[inner];
    // Ends of a volume take the blanking of the volume cell behind them.
    const bool usesVolumeCells = geometry.IsVolume && (plane == 0 || plane == lastPlane);
    const LgIndex_t volumeBack = plane == 0 ? 0 : std::min(geometry.Skips[direction], lastPlane) * strides[direction];
    const bool canStripWholeRows =
        w.OrderedStrip != nullptr && !w.anyBlanking() && !w.CollapseTest && !obscurationInForce;

    for (LgIndex_t b : outerStarts) {
        const LgIndex_t dB = std::min(geometry.Skips[outer], lastOuter - b);
        const LgIndex_t otherStride = dB * strides[outer];
        const LgIndex_t rowBase = plane * strides[direction] + b * strides[outer];
        auto cornerOf = [&](LgIndex_t a) { return rowBase + a * strides[inner]; };
        auto endOf = [&](LgIndex_t a) { return cornerOf(std::min(a + geometry.Skips[inner], lastInner)); };
        if (innerStarts.empty()) continue;
        if (canStripWholeRows && innerStarts.size() > 1) {
            w.NumVisited += int(innerStarts.size());
            if (!w.OrderedStrip(w.CZInfo, w.CZData, cornerOf(innerStarts.front()), innerStride,
                                endOf(innerStarts.back()), otherStride, w.ClientData) ||
                isInterrupted(w.CheckInterrupt)) {
                w.Stopped = true;
                return false;
            }
            continue;
        }
        // Runs of clean cells go in strips; a run of one, and every visible cell that is not
        // clean, goes to the cell callback.
        size_t runStart = 0, runLength = 0;
        auto flushRun = [&]() {
            if (runLength == 0) return true;
            size_t first = runStart, count = runLength;
            runLength = 0;
            if (count > 1 && w.OrderedStrip != nullptr) {
                w.NumVisited += int(count);
                if (!w.OrderedStrip(w.CZInfo, w.CZData, cornerOf(innerStarts[first]), innerStride,
                                    endOf(innerStarts[first + count - 1]), otherStride, w.ClientData) ||
                    isInterrupted(w.CheckInterrupt)) {
                    w.Stopped = true;
                    return false;
                }
                return true;
            }
            for (size_t n = first; n < first + count; n++) {
                LgIndex_t n1 = cornerOf(innerStarts[n]), n2 = endOf(innerStarts[n]);
                if (!emitCell(w, n1, n2, n2 + otherStride, n1 + otherStride, n1, planeKind, CellBlankedCond_NotBlanked))
                    return false;
            }
            return true;
        };
        for (size_t n = 0; n < innerStarts.size(); n++) {
            LgIndex_t n1 = cornerOf(innerStarts[n]), n2 = endOf(innerStarts[n]);
            LgIndex_t n3 = n2 + otherStride, n4 = n1 + otherStride;
            CellBlankedCond_e cond = !w.anyBlanking() ? CellBlankedCond_NotBlanked
                                     : usesVolumeCells ? volumeCond(w, n1 - volumeBack)
                                                       : surfaceCond(w, n1, planeKind);
            CollapsedStatus_e status = w.CollapseTest ? GetSurfaceCellCollapsedStatus(w.CZInfo, w.CZData, n1, n2, n3, n4)
                                                      : CollapsedStatus_NotCollapsed;
            bool isVisible = cond != CellBlankedCond_EntirelyBlanked && isCollapseVisible(status) &&
                             !(obscurationInForce && isOrderedFaceObscured(w, geometry, direction, plane, n1));
            bool isClean = isVisible && cond == CellBlankedCond_NotBlanked && status == CollapsedStatus_NotCollapsed;
            if (isClean && w.OrderedStrip != nullptr) {
                if (runLength == 0) runStart = n;
                runLength++;
                continue;
            }
            if (!flushRun()) return false;
            if (isVisible && !emitCell(w, n1, n2, n3, n4, n1, planeKind, cond)) return false;
        }
        if (!flushRun()) return false;
    }
    return true;
}

// Faces between a visible cell and a wholly blanked neighbour inside the volume.
bool walkExposedCellFaces(SurfaceWalk &w, const OrderedGeometry &geometry, const CellRange &range) {
    const CZData_s *czData = w.CZData;
    const LgIndex_t *strides = geometry.Strides;
    std::vector<LgIndex_t> starts[3];
    for (int d = 0; d < 3; d++) starts[d] = cellStarts(geometry, range, d);
    for (LgIndex_t k : starts[2])
        for (LgIndex_t j : starts[1])
            for (LgIndex_t i : starts[0]) {
                const LgIndex_t cell = i + j * strides[1] + k * strides[2];
                CellBlankedCond_e cond = volumeCond(w, cell);
                if (cond == CellBlankedCond_EntirelyBlanked) continue;
                LgIndex_t dI, dJ, dK;
                GetOrderedCellSpan(czData, i, j, k, &dI, &dJ, &dK);
                const LgIndex_t index[3] = {i, j, k};
                const LgIndex_t span[3] = {dI, dJ * strides[1], dK * strides[2]};
                for (int face = 0; face < 6; face++) {
                    const int d = face / 2;
                    const bool isMax = (face & 1) != 0;
                    // The neighbour is a cell of the zone on that side.
                    LgIndex_t neighborIndex = isMax ? index[d] + (span[d] / strides[d]) : index[d] - 1;
                    if (neighborIndex < 0 || neighborIndex >= geometry.Dims[d] - 1) continue;
                    LgIndex_t neighbor = cell + (neighborIndex - index[d]) * strides[d];
                    if (volumeCond(w, neighbor) != CellBlankedCond_EntirelyBlanked) continue;
                    // The face's corners: the cell's lowest corner, moved to the far side for a
                    // maximum face, then round the two other directions: I faces (c, c+dK,
                    // c+dJ+dK, c+dJ), J faces (c, c+dI, c+dI+dK, c+dK), K faces (c, c+dI,
                    // c+dI+dJ, c+dJ).
                    static constexpr int firstOf[3] = {2, 0, 0}, secondOf[3] = {1, 2, 1};
                    const LgIndex_t first = span[firstOf[d]], second = span[secondOf[d]];
                    const LgIndex_t n1 = cell + (isMax ? span[d] : 0);
                    const LgIndex_t n2 = n1 + first, n3 = n1 + first + second, n4 = n1 + second;
                    if (w.CollapseTest &&
                        !isCollapseVisible(GetSurfaceCellCollapsedStatus(w.CZInfo, w.CZData, n1, n2, n3, n4)))
                        continue;
                    if (GetFaceObscuration(w.CZInfo, w.CZData, cell, face) == FaceObscuration_EntirelyObscured) continue;
                    if (!emitCell(w, n1, n2, n3, n4, n1, IJKPlanes_e(d), cond)) return false;
                }
            }
    return true;
}

bool walkOrderedSurface(SurfaceWalk &w, LgIndex_t iSkip, LgIndex_t jSkip, LgIndex_t kSkip) {
    CZInfo_s *czInfo = w.CZInfo;
    const CZData_s *czData = w.CZData;
    OrderedGeometry geometry{{czData->NumIPts, czData->NumJPts, czData->NumKPts},
                             {1, czData->NumIPts, czData->NumIJPts},
                             {std::max(iSkip, 1), std::max(jSkip, 1), std::max(kSkip, 1)},
                             czInfo->ZoneRank == 3};
    const int surfaces = surfacesToPlot(czInfo);
    const bool skipsAreOne = iSkip == 1 && jSkip == 1 && kSkip == 1;
    const bool obscurationInForce = geometry.IsVolume && czData->FaceNeighbors != nullptr &&
                                    czData->FaceNeighbors->UserDef != nullptr &&
                                    (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces);
    const bool savedValue = w.UseValue, savedIJK = w.UseIJK, savedDepth = w.UseDepth;
    for (LgIndex_t subZone : getSubZoneRange(w, skipsAreOne)) {
        CellRange range;
        if (subZone < 0) {
            for (int d = 0; d < 3; d++) {
                range.Min[d] = 0;
                range.Max[d] = std::max(geometry.Dims[d] - 2, 0);
            }
        } else {
            GetSubZoneCellRange(czInfo->OptInfo->Partitioning, subZone, &range.Min[0], &range.Max[0], &range.Min[1],
                                &range.Max[1], &range.Min[2], &range.Max[2]);
            CellBlankedCond_e cond = w.anyBlanking() ? CZBlankingHooks.GetSubZoneBlankedCondition(
                                                           czInfo, czData, subZone, w.UseValue, w.UseIJK, w.UseDepth)
                                                     : CellBlankedCond_NotBlanked;
            if (cond == CellBlankedCond_EntirelyBlanked) continue;
            // A subzone known to be clear is walked without tests.
            if (cond == CellBlankedCond_NotBlanked) w.UseValue = w.UseIJK = w.UseDepth = false;
        }
        for (int direction = 0; direction < 3 && !w.Stopped; direction++) {
            bool hasExtent = true;
            for (int other = 0; other < 3; other++)
                if (other != direction && geometry.Dims[other] < 2) hasExtent = false;
            if (!hasExtent || !planeIsRequested(surfaces, direction)) continue;
            for (LgIndex_t plane : getMajorSurfaceRange(w, geometry, range, direction))
                if (!walkOrderedPlane(w, geometry, range, direction, plane, obscurationInForce)) return false;
        }
        if (surfaces == SurfacesToPlot_ExposedCellFaces && w.anyBlanking() && geometry.IsVolume &&
            !walkExposedCellFaces(w, geometry, range))
            return false;
        w.UseValue = savedValue;
        w.UseIJK = savedIJK;
        w.UseDepth = savedDepth;
    }
    return true;
}

// ---- FE objects -------------------------------------------------------------------------------

// The elements to walk: a subzone's stretch of the cell list, or all.
struct ElementRange {
    const LgIndex_t *List;  // null: First..End-1 in order
    LgIndex_t First, End;
    LgIndex_t at(LgIndex_t p) const { return List != nullptr ? List[p] : p; }
};

std::vector<ElementRange> getElementRanges(const SurfaceWalk &w, bool skipsAreOne) {
    std::vector<ElementRange> ranges;
    for (LgIndex_t subZone : getSubZoneRange(w, skipsAreOne)) {
        if (subZone < 0) {
            ranges.push_back({nullptr, 0, w.CZData->NumCells});
            continue;
        }
        CellBlankedCond_e cond =
            w.anyBlanking() ? CZBlankingHooks.GetSubZoneBlankedCondition(w.CZInfo, w.CZData, subZone, w.UseValue,
                                                                         w.UseIJK, w.UseDepth)
                            : CellBlankedCond_NotBlanked;
        if (cond == CellBlankedCond_EntirelyBlanked) continue;
        const ZoneOptPartitioning_s *partitioning = w.CZInfo->OptInfo->Partitioning;
        ranges.push_back({partitioning->CellList, partitioning->SubZoneStart[subZone],
                          partitioning->SubZoneStart[subZone + 1]});
    }
    return ranges;
}

// Visible and clean for one FE surface cell.
struct FECellState {
    LgIndex_t N[4];
    CellBlankedCond_e Cond;
    bool IsVisible, IsClean;
};

FECellState feCellState(const SurfaceWalk &w, LgIndex_t element) {
    FECellState state;
    GetCellFaceNodes(w.CZData->NodeMap, element, 0, &state.N[0], &state.N[1], &state.N[2], &state.N[3]);
    state.Cond = surfaceCond(w, element, IJKPlanes_None);
    CollapsedStatus_e status = CollapsedStatus_NotCollapsed;
    if (w.CollapseTest && w.CZInfo->ZoneType != ZoneType_FELineSeg)
        status = GetSurfaceCellCollapsedStatus(w.CZInfo, w.CZData, state.N[0], state.N[1], state.N[2], state.N[3]);
    state.IsVisible = state.Cond != CellBlankedCond_EntirelyBlanked && isCollapseVisible(status);
    state.IsClean = state.IsVisible && state.Cond == CellBlankedCond_NotBlanked && status == CollapsedStatus_NotCollapsed;
    return state;
}

// Hands over one strip made by the stripper: whole when nothing is tested, else split into runs
// of clean cells.
bool emitFEStrip(SurfaceWalk &w, const LgIndex_t *elements, const LgIndex_t *nodes, LgIndex_t count) {
    const bool isTriangle = w.CZInfo->ZoneType == ZoneType_FETriangle;
    auto sendStrip = [&](LgIndex_t first, LgIndex_t length) {
        w.NumVisited += int(length);
        if (!w.FEStrip(w.CZInfo, w.CZData, elements + first, nodes + (isTriangle ? first : 2 * first), length,
                       w.ClientData) ||
            isInterrupted(w.CheckInterrupt)) {
            w.Stopped = true;
            return false;
        }
        return true;
    };
    if (!w.anyBlanking() && !w.CollapseTest) return sendStrip(0, count);
    LgIndex_t runStart = 0, runLength = 0;
    auto flushRun = [&]() {
        if (runLength == 0) return true;
        LgIndex_t first = runStart, length = runLength;
        runLength = 0;
        if (length > 1) return sendStrip(first, length);
        FECellState state = feCellState(w, elements[first]);
        return emitCell(w, state.N[0], state.N[1], state.N[2], state.N[3], elements[first], IJKPlanes_None, state.Cond);
    };
    for (LgIndex_t n = 0; n < count; n++) {
        FECellState state = feCellState(w, elements[n]);
        if (state.IsClean) {
            if (runLength == 0) runStart = n;
            runLength++;
            continue;
        }
        if (!flushRun()) return false;
        if (state.IsVisible &&
            !emitCell(w, state.N[0], state.N[1], state.N[2], state.N[3], elements[n], IJKPlanes_None, state.Cond))
            return false;
    }
    return flushRun();
}

constexpr LgIndex_t UsedElement = -99;

// Greedy strips over the face neighbours of an FE triangle or quadrilateral zone. Elements with
// the most free neighbours start strips; each strip grows through its start edge and then the
// other way, one neighbour at a time, up to the device's strip size.
class FESurfaceStripper {
  public:
    explicit FESurfaceStripper(SurfaceWalk &walk) : w_(walk) {
        nodeMap_ = w_.CZData->NodeMap;
        faceNeighbor_ = w_.CZData->FaceNeighbors;
        isTriangle_ = w_.CZInfo->ZoneType == ZoneType_FETriangle;
        facesPerElement_ = isTriangle_ ? 3 : 4;
        const int stripSize = std::max(w_.CZInfo->StripSize, 2);
        maxCellsPerDirection_ = std::max(stripSize / 2, 1);
        maxNodes_ = std::max(isTriangle_ ? stripSize + 2 : stripSize, isTriangle_ ? 3 : 4);
    }

    bool run() {
        const LgIndex_t numCells = w_.CZData->NumCells;
        neighborCount_.assign(size_t(numCells), 0);
        isBlanked_.assign(size_t(numCells), false);
        if (w_.anyBlanking())
            for (LgIndex_t e = 0; e < numCells; e++)
                isBlanked_[size_t(e)] = surfaceCond(w_, e, IJKPlanes_None) == CellBlankedCond_EntirelyBlanked;
        for (LgIndex_t e = 0; e < numCells; e++) {
            if (isBlanked_[size_t(e)]) continue;
            for (int f = 0; f < facesPerElement_; f++)
                if (freeNeighbor(e, f, false) >= 0) neighborCount_[size_t(e)]++;
        }
        // Room for the two halves of a strip: the start element sits in the middle.
        const size_t nodeRoom = size_t(2 * maxNodes_ + 8), cellRoom = size_t(2 * maxCellsPerDirection_ + 4);
        nodes_.assign(nodeRoom, -1);
        elements_.assign(cellRoom, -1);

        LgIndex_t wanted = facesPerElement_, scanFrom = 0;
        for (;;) {
            LgIndex_t start = -1;
            for (LgIndex_t e = scanFrom; e < numCells && start < 0; e++)
                if (neighborCount_[size_t(e)] == wanted) start = e;
            if (start < 0) {
                if (wanted == 0) return true;
                wanted--;
                scanFrom = 0;
                continue;
            }
            scanFrom = start;
            if (!buildStrip(start)) return false;
        }
    }

  private:
    // The one neighbour in this zone across a face that the strip may still take, or -1.
    LgIndex_t freeNeighbor(LgIndex_t element, int face, bool mustBeUnused) const {
        LgIndex_t neighbor;
        if (faceNeighbor_ == nullptr || !HasOnlyOneLocalFaceNeighbor(faceNeighbor_, element, face, &neighbor)) return -1;
        if (neighbor < 0 || neighbor >= w_.CZData->NumCells || isBlanked_[size_t(neighbor)]) return -1;
        if (mustBeUnused && neighborCount_[size_t(neighbor)] == UsedElement) return -1;
        return neighbor;
    }

    void markUsed(LgIndex_t element) {
        neighborCount_[size_t(element)] = UsedElement;
        for (int f = 0; f < facesPerElement_; f++) {
            LgIndex_t neighbor = freeNeighbor(element, f, true);
            if (neighbor >= 0 && neighborCount_[size_t(neighbor)] > 0) neighborCount_[size_t(neighbor)]--;
        }
    }

    LgIndex_t node(LgIndex_t element, int corner) const { return NodeMapGetNode(nodeMap_, element, corner); }

    // The face of element whose two nodes are {a, b}, or -1.
    int faceWithNodes(LgIndex_t element, LgIndex_t a, LgIndex_t b) const {
        if (a == b) return -1;
        for (int f = 0; f < facesPerElement_; f++) {
            LgIndex_t p = node(element, f), q = node(element, (f + 1) % facesPerElement_);
            if ((p == a && q == b) || (p == b && q == a)) return f;
        }
        return -1;
    }

    // Steps from element over the edge {a, b} into an unused neighbour; gives the neighbour and
    // the strip's next nodes: a triangle's third node (in *x), or a quadrilateral's far edge with
    // *x next to a and *y next to b.
    LgIndex_t stepOver(LgIndex_t element, LgIndex_t a, LgIndex_t b, LgIndex_t *x, LgIndex_t *y) const {
        int face = faceWithNodes(element, a, b);
        if (face < 0) return -1;
        LgIndex_t neighbor = freeNeighbor(element, face, true);
        if (neighbor < 0) return -1;
        int entry = faceWithNodes(neighbor, a, b);
        if (entry < 0) return -1;
        if (isTriangle_) {
            *x = node(neighbor, (entry + 2) % 3);
            return neighbor;
        }
        LgIndex_t m0 = node(neighbor, entry), m2 = node(neighbor, (entry + 2) % 4), m3 = node(neighbor, (entry + 3) % 4);
        // m0 is joined to m3 and m1 to m2 by the neighbour's side edges.
        if (m0 == a) {
            *x = m3;
            *y = m2;
        } else {
            *x = m2;
            *y = m3;
        }
        return neighbor;
    }

    bool buildStrip(LgIndex_t start) {
        markUsed(start);
        int startFace = -1;
        for (int f = 0; f < facesPerElement_ && startFace < 0; f++)
            if (freeNeighbor(start, f, true) >= 0) startFace = f;
        if (startFace < 0) startFace = 0;

        // The node array holds the strip from nodeFirst to nodeEnd - 1, the element array from
        // cellFirst to cellEnd - 1; the backward half grows downwards.
        LgIndex_t nodeFirst = maxNodes_ + 2, nodeEnd = nodeFirst;
        LgIndex_t cellFirst = maxCellsPerDirection_ + 1, cellEnd = cellFirst;
        auto corner = [&](int c) { return node(start, (startFace + c) % facesPerElement_); };
        if (isTriangle_) {
            nodes_[size_t(nodeEnd++)] = corner(2);
            nodes_[size_t(nodeEnd++)] = corner(0);
            nodes_[size_t(nodeEnd++)] = corner(1);
        } else {
            nodes_[size_t(nodeEnd++)] = corner(3);
            nodes_[size_t(nodeEnd++)] = corner(2);
            nodes_[size_t(nodeEnd++)] = corner(0);
            nodes_[size_t(nodeEnd++)] = corner(1);
        }
        elements_[size_t(cellEnd++)] = start;
        const LgIndex_t nodesPerStep = isTriangle_ ? 1 : 2;

        // Forward, through the start edge: the strip's last node or last pair.
        LgIndex_t current = start;
        for (LgIndex_t cells = 0; cells < maxCellsPerDirection_ && nodeEnd - nodeFirst + nodesPerStep <= maxNodes_;
             cells++) {
            LgIndex_t x = -1, y = -1;
            LgIndex_t a = nodes_[size_t(nodeEnd - 2)], b = nodes_[size_t(nodeEnd - 1)];
            LgIndex_t next = stepOver(current, a, b, &x, &y);
            if (next < 0) break;
            markUsed(next);
            nodes_[size_t(nodeEnd++)] = x;
            if (!isTriangle_) nodes_[size_t(nodeEnd++)] = y;
            elements_[size_t(cellEnd++)] = next;
            current = next;
        }
        // Backward, through the first node pair of the start element.
        current = start;
        for (LgIndex_t cells = 0; cells < maxCellsPerDirection_ && nodeEnd - nodeFirst + nodesPerStep <= maxNodes_;
             cells++) {
            LgIndex_t x = -1, y = -1;
            LgIndex_t a = nodes_[size_t(nodeFirst)], b = nodes_[size_t(nodeFirst + 1)];
            LgIndex_t next = stepOver(current, a, b, &x, &y);
            if (next < 0) break;
            markUsed(next);
            if (isTriangle_) {
                nodes_[size_t(--nodeFirst)] = x;
            } else {
                nodes_[size_t(--nodeFirst)] = y;
                nodes_[size_t(--nodeFirst)] = x;
            }
            elements_[size_t(--cellFirst)] = next;
            current = next;
        }
        return emitFEStrip(w_, elements_.data() + cellFirst, nodes_.data() + nodeFirst, cellEnd - cellFirst);
    }

    SurfaceWalk &w_;
    NodeMap_a nodeMap_;
    FaceNeighbor_a faceNeighbor_;
    bool isTriangle_;
    int facesPerElement_;
    LgIndex_t maxCellsPerDirection_, maxNodes_;
    std::vector<LgIndex_t> neighborCount_;
    std::vector<bool> isBlanked_;
    std::vector<LgIndex_t> nodes_, elements_;
};

bool walkFESurface(SurfaceWalk &w, LgIndex_t cellSkip) {
    const CZData_s *czData = w.CZData;
    const LgIndex_t skip = std::max(cellSkip, 1);
    const bool hasCallback = w.CellCallback != nullptr || w.FEStrip != nullptr;
    if (!hasCallback && !w.anyBlanking() && !w.CollapseTest && w.CZInfo->SubZone < 0) {
        w.NumVisited += czData->NumCells > 0 ? int((czData->NumCells - 1) / skip + 1) : 0;
        return true;
    }
    const bool canStrip = w.FEStrip != nullptr && skip == 1 && w.CZInfo->SubZone < 0 &&
                          (w.CZInfo->ZoneType == ZoneType_FETriangle || w.CZInfo->ZoneType == ZoneType_FEQuad) &&
                          czData->FaceNeighbors != nullptr && IsValidFaceNeighbor(czData->FaceNeighbors);
    if (canStrip) {
        FESurfaceStripper stripper(w);
        return stripper.run() && !w.Stopped;
    }
    for (const ElementRange &range : getElementRanges(w, skip == 1)) {
        for (LgIndex_t p = range.First; p < range.End; p++) {
            LgIndex_t element = range.at(p);
            if (element % skip != 0) continue;
            FECellState state = feCellState(w, element);
            if (state.IsVisible &&
                !emitCell(w, state.N[0], state.N[1], state.N[2], state.N[3], element, IJKPlanes_None, state.Cond))
                return false;
        }
    }
    return true;
}

// Whether some neighbour over a face is blanked: one in a zone outside the active zones, or a
// local one that is wholly blanked.
bool hasBlankedNeighbor(const SurfaceWalk &w, LgIndex_t element, int face) {
    const LgIndex_t *elements = nullptr;
    const EntIndex_t *zones = nullptr;
    LgIndex_t elementBuffer;
    EntIndex_t zoneBuffer;
    LgIndex_t count = FaceNeighborGetNeighbors(w.CZData->FaceNeighbors, element, face, &elements, &zones,
                                               &elementBuffer, &zoneBuffer);
    for (LgIndex_t n = 0; n < count; n++) {
        EntIndex_t zone = zones != nullptr ? zones[n] : EntIndex_t(-1);
        if (zone >= 0 && zone != w.CZData->Zone) {
            if (w.CZInfo->ActiveZones != nullptr && !InSet(w.CZInfo->ActiveZones, zone)) return true;
            continue;
        }
        if (elements[n] >= 0 && volumeCond(w, elements[n]) == CellBlankedCond_EntirelyBlanked) return true;
    }
    return false;
}

bool walkFEVolume(SurfaceWalk &w, LgIndex_t cellSkip) {
    const int surfaces = surfacesToPlot(w.CZInfo);
    if (surfaces != SurfacesToPlot_BoundaryFaces && surfaces != SurfacesToPlot_ExposedCellFaces &&
        surfaces != SurfacesToPlot_All)
        return true;
    const CZData_s *czData = w.CZData;
    NodeMap_a nodeMap = czData->NodeMap;
    const LgIndex_t skip = std::max(cellSkip, 1);
    const int facesPerElement = GetFacesPerElement(w.CZInfo->ZoneType, 0, 0, 0);
    for (const ElementRange &range : getElementRanges(w, skip == 1)) {
        for (LgIndex_t p = range.First; p < range.End; p++) {
            LgIndex_t element = range.at(p);
            if (element % skip != 0) continue;
            CellBlankedCond_e cond = volumeCond(w, element);
            if (cond == CellBlankedCond_EntirelyBlanked) continue;
            for (int face = 0; face < facesPerElement; face++) {
                LgIndex_t n[4];
                GetCellFaceNodes(nodeMap, element, face, &n[0], &n[1], &n[2], &n[3]);
                bool isObscured = GetFaceObscuration(w.CZInfo, czData, element, face) >= FaceObscuration_EntirelyObscured;
                if (!isObscured) {
                    if (w.CollapseTest &&
                        !isCollapseVisible(GetSurfaceCellCollapsedStatus(w.CZInfo, czData, n[0], n[1], n[2], n[3])))
                        continue;
                } else {
                    bool reached = surfaces == SurfacesToPlot_All ||
                                   (surfaces == SurfacesToPlot_ExposedCellFaces && w.anyBlanking() &&
                                    hasBlankedNeighbor(w, element, face));
                    if (!reached) continue;
                    bool isDegenerate =
                        !isCollapseVisible(GetSurfEdgeOrVolFaceLogicalCollapsedStatus(nodeMap, element, face));
                    if (isDegenerate && w.CollapseTest) continue;
                }
                if (!emitCell(w, n[0], n[1], n[2], n[3], element, IJKPlanes_None, cond)) return false;
            }
        }
    }
    return true;
}

}  // namespace

bool ProcessSurfaceCells(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                         LgIndex_t jSkip, LgIndex_t kSkip, SurfaceCellCallback_pf cellCallback,
                         OrderedSurfaceCellStripCallback_pf orderedStripCallback,
                         FESurfaceCellStripCallback_pf feStripCallback, long clientData, int *count) {
    REQUIRE(czInfo != nullptr && czData != nullptr);
    REQUIRE((orderedStripCallback == nullptr && feStripCallback == nullptr) || cellCallback != nullptr);
    SurfaceWalk w{};
    w.CZInfo = czInfo;
    w.CZData = czData;
    w.CheckInterrupt = checkInterrupt;
    setBlankingUse(czInfo, czData, flags, &w.UseValue, &w.UseIJK, &w.UseDepth);
    w.CollapseTest = (flags & WalkFlag_SkipCollapsed) != 0;
    w.CellCallback = cellCallback;
    w.OrderedStrip = orderedStripCallback;
    w.FEStrip = feStripCallback;
    w.ClientData = clientData;
    bool isOk = !isInterrupted(checkInterrupt);
    if (isOk) {
        if (czInfo->IsFE) {
            REQUIRE(czData->NodeMap != nullptr || czData->NumCells == 0);
            if (czData->NumCells > 0)
                isOk = IsFEVolumeType(czInfo->ZoneType) ? walkFEVolume(w, jSkip) : walkFESurface(w, jSkip);
        } else if (czInfo->ZoneRank == 1) {
            isOk = walkOrderedLinear(w, iSkip, kSkip);
        } else if (czInfo->ZoneRank == 2 || czInfo->ZoneRank == 3) {
            isOk = walkOrderedSurface(w, iSkip, jSkip, kSkip);
        }
    }
    if (count != nullptr) *count = w.NumVisited;
    return isOk && !w.Stopped;
}

// ---- volume cells -----------------------------------------------------------------------------

bool ProcessVolumeCells(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                        LgIndex_t jSkip, LgIndex_t kSkip, VolumeCellCallback_pf callback, long clientData,
                        int *count) {
    REQUIRE(czInfo != nullptr && czData != nullptr);
    SurfaceWalk w{};
    w.CZInfo = czInfo;
    w.CZData = czData;
    setBlankingUse(czInfo, czData, flags, &w.UseValue, &w.UseIJK, &w.UseDepth);
    int numVisited = 0;
    auto finish = [&](bool isOk) {
        if (count != nullptr) *count = numVisited;
        return isOk;
    };
    auto visit = [&](LgIndex_t cell) {
        if (w.anyBlanking() && volumeCond(w, cell) == CellBlankedCond_EntirelyBlanked) return true;
        numVisited++;
        if (callback != nullptr && !callback(czInfo, czData, cell, clientData)) return false;
        return !isInterrupted(checkInterrupt);
    };
    if (isInterrupted(checkInterrupt)) return finish(false);
    const bool useSubZone = czInfo->SubZone >= 0 && hasPartition(czInfo);

    if (czInfo->IsFE) {
        if (!IsFEVolumeType(czInfo->ZoneType)) return finish(true);
        const LgIndex_t skip = std::max(jSkip, 1);
        ElementRange range{nullptr, 0, czData->NumCells};
        if (useSubZone) {
            const ZoneOptPartitioning_s *partitioning = czInfo->OptInfo->Partitioning;
            range = {partitioning->CellList, partitioning->SubZoneStart[czInfo->SubZone],
                     partitioning->SubZoneStart[czInfo->SubZone + 1]};
        }
        for (LgIndex_t p = range.First; p < range.End; p++) {
            LgIndex_t element = range.at(p);
            if (element % skip == 0 && !visit(element)) return finish(false);
        }
        return finish(true);
    }

    if (czInfo->ZoneRank != 3) return finish(true);
    const LgIndex_t skips[3] = {std::max(iSkip, 1), std::max(jSkip, 1), std::max(kSkip, 1)};
    if (callback == nullptr && !w.anyBlanking() && !useSubZone && skips[0] == 1 && skips[1] == 1 && skips[2] == 1) {
        numVisited = czData->NumCells;
        return finish(true);
    }
    LgIndex_t min[3] = {0, 0, 0};
    LgIndex_t max[3] = {czData->MaxICell - 1, czData->MaxJCell - 1, czData->MaxKCell - 1};
    if (useSubZone)
        GetSubZoneCellRange(czInfo->OptInfo->Partitioning, czInfo->SubZone, &min[0], &max[0], &min[1], &max[1],
                            &min[2], &max[2]);
    for (LgIndex_t k = min[2]; k <= max[2]; k++) {
        if (k % skips[2] != 0) continue;
        for (LgIndex_t j = min[1]; j <= max[1]; j++) {
            if (j % skips[1] != 0) continue;
            for (LgIndex_t i = min[0]; i <= max[0]; i++) {
                if (i % skips[0] != 0) continue;
                if (!visit(i + j * czData->NumIPts + k * czData->NumIJPts)) return finish(false);
            }
        }
    }
    return finish(true);
}
