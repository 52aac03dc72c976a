// Points of ordered and FE objects: a single pass over all points, or the corners of the shown
// surface cells gathered in a set and then visited in ascending order.
#include "base/field/procpt.h"

#include <algorithm>

#include "base/field/proccell.h"
#include "base/kernel/globals.h"
#include "base/kernel/idle.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/set.h"

Set_a *BuildConnectedNodeSet(NodeMap_a nodeMap, LgIndex_t numPoints) {
    Set_a *connected = AllocSet(true);
    if (connected == nullptr) return nullptr;
    bool isOk = ExpandSet(connected, std::max(numPoints, LgIndex_t(1)), true);
    const int64_t numEntries = int64_t(nodeMap->NumElements) * nodeMap->NodesPerElement;
    for (int64_t n = 0; n < numEntries && isOk; n++) isOk = AddToSet(connected, nodeMap->Nodes[n], true);
    if (!isOk) DeallocSet(&connected);
    return connected;
}

namespace {

struct PointWalk {
    CZInfo_s *CZInfo;
    CZData_s *CZData;
    bool UseValue, UseIJK, UseDepth;
    LgIndex_t Skips[3];
    Set_a *Marked;
    bool OutOfMemory;
};

bool isInterrupted(bool checkInterrupt) {
    if (!checkInterrupt) return false;
    if (TimeOut.General.load(std::memory_order_relaxed) || Interrupted) {
        HandleGeneralTimeOut();
        return Interrupted;
    }
    return false;
}

// Skip and blanking of one point; across is the direction across the plane the point was found
// on (its skip is not tested), or -1.
bool pointPasses(const PointWalk &w, LgIndex_t point, int across) {
    const CZData_s *czData = w.CZData;
    if (w.CZInfo->IsFE) {
        if (point % w.Skips[0] != 0) return false;
    } else {
        const LgIndex_t index[3] = {point % czData->NumIPts, (point / czData->NumIPts) % czData->NumJPts,
                                    point / czData->NumIJPts};
        for (int d = 0; d < 3; d++)
            if (d != across && index[d] % w.Skips[d] != 0) return false;
    }
    if (czData->PointState != nullptr) {
        uint8_t state = czData->PointState[point];
        if (w.UseValue && (state & PointState_ValueBlanked) != 0) return false;
        if (w.UseIJK && !w.CZInfo->IsFE && (state & PointState_IJKBlanked) != 0) return false;
    }
    return !(w.UseDepth && CZBlankingHooks.IsPointDepthBlanked(w.CZInfo, czData, point));
}

IJKPlanes_e planeOfPoint(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t point) {
    if (czInfo->IsFE) return IJKPlanes_None;
    int surfaces = czInfo->FieldMap != nullptr ? czInfo->FieldMap->Surfaces.SurfacesToPlot : SurfacesToPlot_BoundaryFaces;
    switch (surfaces) {
    case SurfacesToPlot_BoundaryFaces:
    case SurfacesToPlot_ExposedCellFaces: {
        LgIndex_t i = point % czData->NumIPts, j = (point / czData->NumIPts) % czData->NumJPts, k = point / czData->NumIJPts;
        if (k == 0 || k == czData->NumKPts - 1) return IJKPlanes_K;
        if (j == 0 || j == czData->NumJPts - 1) return IJKPlanes_J;
        if (i == 0 || i == czData->NumIPts - 1) return IJKPlanes_I;
        return IJKPlanes_None;
    }
    case SurfacesToPlot_IPlanes:
    case SurfacesToPlot_IJPlanes: return IJKPlanes_I;
    case SurfacesToPlot_JPlanes: return IJKPlanes_J;
    case SurfacesToPlot_KPlanes:
    case SurfacesToPlot_JKPlanes:
    case SurfacesToPlot_IKPlanes:
    case SurfacesToPlot_IJKPlanes: return IJKPlanes_K;
    default: return IJKPlanes_None;
    }
}

bool markCorners(CZInfo_s *, CZData_s *, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t,
                 IJKPlanes_e plane, CellBlankedCond_e, long clientData) {
    auto *w = reinterpret_cast<PointWalk *>(clientData);
    const int across = plane == IJKPlanes_I || plane == IJKPlanes_J || plane == IJKPlanes_K ? int(plane) : -1;
    for (LgIndex_t corner : {n1, n2, n3, n4}) {
        if (InSet(w->Marked, corner) || !pointPasses(*w, corner, across)) continue;
        if (!AddToSet(w->Marked, corner, true)) {
            w->OutOfMemory = true;
            return false;
        }
    }
    return true;
}

}  // namespace

bool ProcessPoints(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                   LgIndex_t jSkip, LgIndex_t kSkip, PointCallback_pf callback, long clientData, int *count) {
    REQUIRE(czInfo != nullptr && czData != nullptr);
    PointWalk w{};
    w.CZInfo = czInfo;
    w.CZData = czData;
    w.UseValue = (flags & WalkFlag_ValueBlanking) != 0 && czData->BlankingActive && IsZoneOrCOBValueBlankingActive(czInfo);
    w.UseIJK = (flags & WalkFlag_IJKBlanking) != 0 && czData->BlankingActive && IsZoneOrCOBIJKBlankingActive(czInfo);
    w.UseDepth = (flags & WalkFlag_DepthBlanking) != 0 && IsZoneOrCOBDepthBlankingActive(czInfo);
    w.Skips[0] = std::max(iSkip, 1);
    w.Skips[1] = std::max(jSkip, 1);
    w.Skips[2] = std::max(kSkip, 1);
    int numVisited = 0;
    auto finish = [&](bool isOk) {
        if (count != nullptr) *count = numVisited;
        return isOk;
    };
    auto visit = [&](LgIndex_t point) {
        numVisited++;
        if (callback != nullptr && !callback(czInfo, czData, point, planeOfPoint(czInfo, czData, point), clientData))
            return false;
        return !isInterrupted(checkInterrupt);
    };
    if (isInterrupted(checkInterrupt)) return finish(false);

    FieldMapStyle_s *fieldMap = czInfo->FieldMap;
    const int pointsToPlot = fieldMap != nullptr ? fieldMap->Points.PointsToPlot : PointsToPlot_SurfaceNodes;
    const bool isLinear = czInfo->IsFE ? czInfo->ZoneType == ZoneType_FELineSeg : czInfo->ZoneRank == 1;

    Set_a *connected = nullptr;
    if (pointsToPlot == PointsToPlot_AllConnected && czInfo->IsFE && czData->NodeMap != nullptr) {
        connected = BuildConnectedNodeSet(czData->NodeMap, czData->NumPoints);
        if (connected == nullptr) return finish(false);
        if (MemberCount(connected) == czData->NumPoints) DeallocSet(&connected);
    }
    const bool isSinglePass = isLinear || pointsToPlot == PointsToPlot_AllNodes || connected != nullptr ||
                              (pointsToPlot == PointsToPlot_AllConnected && !czInfo->IsFE);
    if (isSinglePass) {
        bool isOk = true;
        for (LgIndex_t point = 0; point < czData->NumPoints && isOk; point++) {
            if (connected != nullptr && !InSet(connected, point)) continue;
            if (pointPasses(w, point, -1)) isOk = visit(point);
        }
        DeallocSet(&connected);
        return finish(isOk);
    }

    // The surface walk finds the points: the field map changes for its length only.
    w.Marked = AllocSet(true);
    if (w.Marked == nullptr || !ExpandSet(w.Marked, std::max(czData->NumPoints, LgIndex_t(1)), true)) {
        DeallocSet(&w.Marked);
        return finish(false);
    }
    int savedPoints = 0, savedSurfaces = 0;
    const bool isVolume = czInfo->ZoneRank == 3 || (czInfo->IsFE && IsFEVolumeType(czInfo->ZoneType));
    if (fieldMap != nullptr) {
        savedPoints = fieldMap->Points.PointsToPlot;
        savedSurfaces = fieldMap->Surfaces.SurfacesToPlot;
        if (savedPoints == PointsToPlot_SurfaceCellCenters || savedPoints == PointsToPlot_AllCellCenters)
            fieldMap->Points.PointsToPlot = PointsToPlot_SurfaceNodes;
        if (czInfo->IsFE && isVolume && savedPoints == PointsToPlot_AllConnected)
            fieldMap->Surfaces.SurfacesToPlot = SurfacesToPlot_All;
    }
    int walkFlags = flags;
    // The points are tested themselves; cells leave value blanking to them unless exposed faces
    // of a volume need it to find the faces.
    int surfaces = fieldMap != nullptr ? fieldMap->Surfaces.SurfacesToPlot : SurfacesToPlot_BoundaryFaces;
    if (!isVolume || surfaces != SurfacesToPlot_ExposedCellFaces) walkFlags &= ~WalkFlag_ValueBlanking;
    bool isOk = ProcessSurfaceCells(czInfo, czData, checkInterrupt, walkFlags, czData->ISkip, czData->JSkip,
                                    czData->KSkip, markCorners, nullptr, nullptr, reinterpret_cast<long>(&w));
    if (fieldMap != nullptr) {
        fieldMap->Points.PointsToPlot = savedPoints;
        fieldMap->Surfaces.SurfacesToPlot = savedSurfaces;
    }
    isOk = isOk && !w.OutOfMemory;
    for (SetIndex_t point = GetNextMember(w.Marked, -1); isOk && point != BADSETVALUE;
         point = GetNextMember(w.Marked, point))
        isOk = visit(LgIndex_t(point));
    DeallocSet(&w.Marked);
    return finish(isOk);
}
