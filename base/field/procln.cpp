// Line runs of ordered objects and polylines of FE line-segment zones.
#include "base/field/procln.h"

#include <algorithm>
#include <vector>

#include "base/field/proccell.h"
#include "base/kernel/globals.h"
#include "base/kernel/idle.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"

namespace {

struct LineWalk {
    CZInfo_s *CZInfo;
    CZData_s *CZData;
    bool CheckInterrupt;
    bool UseValue, UseIJK, UseDepth;
    OrderedLineCallback_pf OrderedCallback;
    FELineChainCallback_pf FECallback;
    long ClientData;
    int NumHandedOver;

    bool anyBlanking() const { return UseValue || UseIJK || UseDepth; }
};

bool isInterrupted(bool checkInterrupt) {
    if (!checkInterrupt) return false;
    if (TimeOut.General.load(std::memory_order_relaxed) || Interrupted) {
        HandleGeneralTimeOut();
        return Interrupted;
    }
    return false;
}

bool handOverRun(LineWalk &w, LgIndex_t start, LgIndex_t stride, LgIndex_t end) {
    w.NumHandedOver++;
    if (w.OrderedCallback != nullptr && !w.OrderedCallback(w.CZInfo, w.CZData, start, stride, end, w.ClientData))
        return false;
    return !isInterrupted(w.CheckInterrupt);
}

int surfacesToPlot(const CZInfo_s *czInfo) {
    return czInfo->FieldMap != nullptr ? czInfo->FieldMap->Surfaces.SurfacesToPlot : SurfacesToPlot_BoundaryFaces;
}

// A line of points first, first + step, ... up to last, given as segments; visible(n) says
// whether segment n (from point n x step) is drawn. Hands over runs of drawn segments.
template <typename Visible>
bool handOverVisibleRuns(LineWalk &w, LgIndex_t base, LgIndex_t pointStride, LgIndex_t step, LgIndex_t last,
                         Visible visible) {
    const LgIndex_t stride = step * pointStride;
    LgIndex_t runStart = -1;
    for (LgIndex_t a = 0; a < last; a += step) {
        if (visible(a)) {
            if (runStart < 0) runStart = a;
            continue;
        }
        if (runStart >= 0 && !handOverRun(w, base + runStart * pointStride, stride, base + a * pointStride)) return false;
        runStart = -1;
    }
    if (runStart >= 0 && !handOverRun(w, base + runStart * pointStride, stride, base + last * pointStride)) return false;
    return true;
}

bool walkLinear(LineWalk &w, LgIndex_t iSkip, LgIndex_t kSkip) {
    const LgIndex_t step = std::max(surfacesToPlot(w.CZInfo) == SurfacesToPlot_IPlanes ? iSkip : kSkip, 1);
    const LgIndex_t last = w.CZData->NumPoints - 1;
    if (last < 1) return true;
    if (!w.anyBlanking()) return handOverRun(w, 0, step, last);
    return handOverVisibleRuns(w, 0, 1, step, last, [&](LgIndex_t i) {
        return CZBlankingHooks.GetSurfaceCellBlankedCondition(w.CZInfo, w.CZData, i, IJKPlanes_None, w.UseValue,
                                                              w.UseIJK, w.UseDepth) != CellBlankedCond_EntirelyBlanked;
    });
}

bool planeIsRequested(int surfaces, int direction) {
    switch (surfaces) {
    case SurfacesToPlot_IPlanes: return direction == 0;
    case SurfacesToPlot_JPlanes: return direction == 1;
    case SurfacesToPlot_KPlanes: return direction == 2;
    case SurfacesToPlot_IJPlanes: return direction != 2;
    case SurfacesToPlot_JKPlanes: return direction != 0;
    case SurfacesToPlot_IKPlanes: return direction != 1;
    default: return true;  // boundary, exposed, IJK planes and all
    }
}

std::vector<LgIndex_t> planesOf(const CZInfo_s *czInfo, LgIndex_t dimension, int direction) {
    const LgIndex_t last = dimension - 1;
    const int surfaces = surfacesToPlot(czInfo);
    std::vector<LgIndex_t> planes;
    if (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces) {
        planes.push_back(0);
        if (last > 0) planes.push_back(last);
    } else if (surfaces == SurfacesToPlot_All) {
        for (LgIndex_t p = 0; p <= last; p++) planes.push_back(p);
    } else {
        const FieldSurfaces_s &style = czInfo->FieldMap->Surfaces;
        const IndexRange_s *given[3] = {&style.IRange, &style.JRange, &style.KRange};
        IndexRange_s range = GetZeroBasedIndexRange(*given[direction], dimension);
        for (LgIndex_t p = range.Min; p <= range.Max; p += range.Skip) planes.push_back(p);
    }
    return planes;
}

// Positions of the lines across a direction: every skip step and the last point.
std::vector<LgIndex_t> linePositions(LgIndex_t dimension, LgIndex_t skip) {
    std::vector<LgIndex_t> positions;
    const LgIndex_t last = dimension - 1;
    for (LgIndex_t a = 0; a < last; a += skip) positions.push_back(a);
    positions.push_back(last);
    return positions;
}

struct PlaneGeometry {
    LgIndex_t Dims[3], Strides[3], Skips[3];
    bool IsVolume;
    bool ObscurationInForce;
};

// Whether the plane cell whose lowest corner is n1 shows: not wholly blanked, and, on the end
// of a volume, its face not obscured.
bool isPlaneCellVisible(const LineWalk &w, const PlaneGeometry &geometry, int direction, LgIndex_t plane,
                        LgIndex_t n1) {
    const LgIndex_t last = geometry.Dims[direction] - 1;
    const bool isEnd = geometry.IsVolume && (plane == 0 || plane == last);
    const LgIndex_t back = plane == 0 ? 0 : std::min(geometry.Skips[direction], last) * geometry.Strides[direction];
    if (w.anyBlanking()) {
        CellBlankedCond_e cond =
            isEnd ? CZBlankingHooks.GetVolumeCellBlankedCondition(w.CZInfo, w.CZData, n1 - back, w.UseValue, w.UseIJK,
                                                                  w.UseDepth)
                  : CZBlankingHooks.GetSurfaceCellBlankedCondition(w.CZInfo, w.CZData, n1, IJKPlanes_e(direction),
                                                                   w.UseValue, w.UseIJK, w.UseDepth);
        if (cond == CellBlankedCond_EntirelyBlanked) return false;
    }
    if (geometry.ObscurationInForce && isEnd) {
        int face = 2 * direction + (plane == 0 ? 0 : 1);
        if (GetFaceObscuration(w.CZInfo, w.CZData, n1 - back, face) >= FaceObscuration_EntirelyObscured) return false;
    }
    return true;
}

// The lines of one plane, in its two in-plane directions.
bool walkPlaneLines(LineWalk &w, const PlaneGeometry &geometry, int direction, LgIndex_t plane) {
    static constexpr int innerOf[3] = {2, 0, 0}, outerOf[3] = {1, 2, 1};
    const bool testsCells = w.anyBlanking() || geometry.ObscurationInForce;
    const LgIndex_t planeBase = plane * geometry.Strides[direction];
    for (int pass = 0; pass < 2; pass++) {
        // along: the direction the line runs in; across: the direction of its position.
        const int along = pass == 0 ? innerOf[direction] : outerOf[direction];
        const int across = pass == 0 ? outerOf[direction] : innerOf[direction];
        const LgIndex_t lastAlong = geometry.Dims[along] - 1, lastAcross = geometry.Dims[across] - 1;
        const LgIndex_t skipAlong = geometry.Skips[along], skipAcross = geometry.Skips[across];
        for (LgIndex_t b : linePositions(geometry.Dims[across], skipAcross)) {
            const LgIndex_t base = planeBase + b * geometry.Strides[across];
            if (!testsCells) {
                if (!handOverRun(w, base, skipAlong * geometry.Strides[along], base + lastAlong * geometry.Strides[along]))
                    return false;
                continue;
            }
            // A segment shows when a cell on either side of it shows: the cell of this row (if
            // the line isn't the last) and that of the row before (if it isn't the first).
            const LgIndex_t before = b == 0 ? -1 : b == lastAcross ? (lastAcross - 1) / skipAcross * skipAcross : b - skipAcross;
            auto visible = [&](LgIndex_t a) {
                LgIndex_t corner = planeBase + a * geometry.Strides[along];
                if (b < lastAcross && isPlaneCellVisible(w, geometry, direction, plane, corner + b * geometry.Strides[across]))
                    return true;
                return before >= 0 &&
                       isPlaneCellVisible(w, geometry, direction, plane, corner + before * geometry.Strides[across]);
            };
            if (!handOverVisibleRuns(w, base, geometry.Strides[along], skipAlong, lastAlong, visible)) return false;
        }
    }
    return true;
}

bool walkOrdered(LineWalk &w, LgIndex_t iSkip, LgIndex_t jSkip, LgIndex_t kSkip) {
    const CZData_s *czData = w.CZData;
    const int surfaces = surfacesToPlot(w.CZInfo);
    PlaneGeometry geometry{{czData->NumIPts, czData->NumJPts, czData->NumKPts},
                           {1, czData->NumIPts, czData->NumIJPts},
                           {std::max(iSkip, 1), std::max(jSkip, 1), std::max(kSkip, 1)},
                           w.CZInfo->ZoneRank == 3,
                           false};
    geometry.ObscurationInForce = geometry.IsVolume && czData->FaceNeighbors != nullptr &&
                                  czData->FaceNeighbors->UserDef != nullptr &&
                                  (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces);
    for (int direction = 0; direction < 3; direction++) {
        bool hasExtent = true;
        for (int other = 0; other < 3; other++)
            if (other != direction && geometry.Dims[other] < 2) hasExtent = false;
        if (!hasExtent || !planeIsRequested(surfaces, direction)) continue;
        for (LgIndex_t plane : planesOf(w.CZInfo, geometry.Dims[direction], direction))
            if (!walkPlaneLines(w, geometry, direction, plane)) return false;
    }
    return true;
}

// ---- FE line segments -------------------------------------------------------------------------

class SegmentChainer {
  public:
    SegmentChainer(LineWalk &walk, LgIndex_t maxPoints) : w_(walk), maxPoints_(std::max(maxPoints, LgIndex_t(2))) {}

    bool run() {
        NodeMap_a nodeMap = w_.CZData->NodeMap;
        const LgIndex_t numCells = w_.CZData->NumCells;
        ElementMap_s *elementMap = AllocElementMapPtr(true);
        if (elementMap == nullptr) return false;
        if (!UpdateElementMap(elementMap, nodeMap)) {
            DeallocElementMapPtr(&elementMap);
            OutOfMemoryMsg();
            return false;
        }
        elementMap_ = elementMap;
        visited_.assign(size_t(numCells), false);
        if (w_.anyBlanking())
            for (LgIndex_t e = 0; e < numCells; e++)
                visited_[size_t(e)] = CZBlankingHooks.GetSurfaceCellBlankedCondition(
                                          w_.CZInfo, w_.CZData, e, IJKPlanes_None, w_.UseValue, w_.UseIJK,
                                          w_.UseDepth) == CellBlankedCond_EntirelyBlanked;
        bool isOk = true;
        for (LgIndex_t e = 0; e < numCells && isOk; e++) {
            if (visited_[size_t(e)] || isDegenerate(e)) continue;
            visited_[size_t(e)] = true;
            nodes_.assign({NodeMapGetNode(nodeMap, e, 1), NodeMapGetNode(nodeMap, e, 0)});
            elements_.assign({e});
            grow();
            std::reverse(nodes_.begin(), nodes_.end());
            std::reverse(elements_.begin(), elements_.end());
            grow();
            w_.NumHandedOver++;
            if (w_.FECallback != nullptr &&
                !w_.FECallback(w_.CZInfo, w_.CZData, nodes_.data(), elements_.data(), LgIndex_t(nodes_.size()),
                               w_.ClientData))
                isOk = false;
            else
                isOk = !isInterrupted(w_.CheckInterrupt);
        }
        DeallocElementMapPtr(&elementMap);
        elementMap_ = nullptr;
        return isOk;
    }

  private:
    bool isDegenerate(LgIndex_t e) const {
        return NodeMapGetNode(w_.CZData->NodeMap, e, 0) == NodeMapGetNode(w_.CZData->NodeMap, e, 1);
    }

    // Extends the chain from its last node over unvisited segments.
    void grow() {
        NodeMap_a nodeMap = w_.CZData->NodeMap;
        while (LgIndex_t(nodes_.size()) < maxPoints_) {
            LgIndex_t end = nodes_.back();
            LgIndex_t next = -1;
            for (LgIndex_t n = 0; n < ElementMapGetNumElements(elementMap_, end) && next < 0; n++) {
                LgIndex_t e = ElementMapGetElement(elementMap_, end, n);
                if (!visited_[size_t(e)] && !isDegenerate(e)) next = e;
            }
            if (next < 0) return;
            visited_[size_t(next)] = true;
            LgIndex_t a = NodeMapGetNode(nodeMap, next, 0), b = NodeMapGetNode(nodeMap, next, 1);
            nodes_.push_back(a == end ? b : a);
            elements_.push_back(next);
        }
    }

    LineWalk &w_;
    LgIndex_t maxPoints_;
    const ElementMap_s *elementMap_ = nullptr;
    std::vector<bool> visited_;
    std::vector<LgIndex_t> nodes_, elements_;
};

}  // namespace

bool ProcessLines(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                  LgIndex_t jSkip, LgIndex_t kSkip, OrderedLineCallback_pf orderedCallback,
                  FELineChainCallback_pf feCallback, long clientData, LgIndex_t maxChainPoints, int *count) {
    REQUIRE(czInfo != nullptr && czData != nullptr);
    LineWalk w{};
    w.CZInfo = czInfo;
    w.CZData = czData;
    w.CheckInterrupt = checkInterrupt;
    w.UseValue = (flags & WalkFlag_ValueBlanking) != 0 && czData->BlankingActive && IsZoneOrCOBValueBlankingActive(czInfo);
    w.UseIJK = (flags & WalkFlag_IJKBlanking) != 0 && czData->BlankingActive && IsZoneOrCOBIJKBlankingActive(czInfo);
    w.UseDepth = (flags & WalkFlag_DepthBlanking) != 0 && IsZoneOrCOBDepthBlankingActive(czInfo);
    w.OrderedCallback = orderedCallback;
    w.FECallback = feCallback;
    w.ClientData = clientData;
    bool isOk = !isInterrupted(checkInterrupt);
    if (isOk) {
        if (czInfo->IsFE) {
            if (czInfo->ZoneType == ZoneType_FELineSeg && czData->NumCells > 0) {
                SegmentChainer chainer(w, maxChainPoints);
                isOk = chainer.run();
            }
        } else if (czInfo->ZoneRank == 1) {
            isOk = walkLinear(w, iSkip, kSkip);
        } else if (czInfo->ZoneRank == 2 || czInfo->ZoneRank == 3) {
            isOk = walkOrdered(w, iSkip, jSkip, kSkip);
        }
    }
    if (count != nullptr) *count = w.NumHandedOver;
    return isOk;
}
