// Subzone partitions and their per-subzone value ranges.
#include "base/field/zoneopt.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "base/field/setup.h"
#include "base/kernel/alloc.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/threadpool.h"

// ---- records ----------------------------------------------------------------------------------

ZoneOptInfo_s *ZoneOptInfoAlloc() {
    auto *optInfo = static_cast<ZoneOptInfo_s *>(newmalloc(sizeof(ZoneOptInfo_s)));
    if (optInfo != nullptr) {
        memset(static_cast<void *>(optInfo), 0, sizeof(ZoneOptInfo_s));
        if (!Thread_InitMutex(&optInfo->Mutex)) {
            newfree(optInfo);
            optInfo = nullptr;
        }
    }
    if (optInfo == nullptr) OutOfMemoryMsg();
    return optInfo;
}

void ZoneOptInfoDealloc(ZoneOptInfo_s **optInfo) {
    if (*optInfo == nullptr) return;
    ZoneOptPartitioningDealloc(&(*optInfo)->Partitioning);
    for (ZoneOptVarMinMax_s *&minMax : (*optInfo)->VarMinMax) ZoneOptVarMinMaxDealloc(&minMax);
    Thread_FreeMutex(&(*optInfo)->Mutex);
    newfree(*optInfo);
    *optInfo = nullptr;
}

ZoneOptPartitioning_s *ZoneOptPartitioningAlloc(bool isFE, LgIndex_t numSubZones, LgIndex_t numCells) {
    REQUIRE(numSubZones >= 0 && numCells >= 0);
    auto *partitioning = static_cast<ZoneOptPartitioning_s *>(newmalloc(sizeof(ZoneOptPartitioning_s)));
    if (partitioning == nullptr) return nullptr;
    memset(static_cast<void *>(partitioning), 0, sizeof(ZoneOptPartitioning_s));
    partitioning->RefCount = 1;
    partitioning->NumSubZones = numSubZones;
    auto array = [](LgIndex_t count) { return static_cast<LgIndex_t *>(newmalloc(sizeof(LgIndex_t) * size_t(std::max(count, 1)))); };
    bool isOk;
    if (isFE) {
        partitioning->CellList = array(numCells);
        partitioning->SubZoneStart = array(numSubZones + 1);
        isOk = partitioning->CellList != nullptr && partitioning->SubZoneStart != nullptr;
    } else {
        LgIndex_t **ranges[6] = {&partitioning->IMin, &partitioning->IMax, &partitioning->JMin,
                                 &partitioning->JMax, &partitioning->KMin, &partitioning->KMax};
        isOk = true;
        for (LgIndex_t **range : ranges) isOk = (*range = array(numSubZones)) != nullptr && isOk;
    }
    if (!isOk) ZoneOptPartitioningDealloc(&partitioning);
    return partitioning;
}

void ZoneOptPartitioningDealloc(ZoneOptPartitioning_s **partitioning) {
    if (*partitioning == nullptr) return;
    if (--(*partitioning)->RefCount < 1) {
        ZoneOptPartitioning_s *p = *partitioning;
        for (LgIndex_t *array : {p->IMin, p->IMax, p->JMin, p->JMax, p->KMin, p->KMax, p->CellList, p->SubZoneStart})
            newfree(array);
        newfree(p);
    }
    *partitioning = nullptr;
}

ZoneOptVarMinMax_s *ZoneOptVarMinMaxAlloc(LgIndex_t numSubZones) {
    auto *minMax = static_cast<ZoneOptVarMinMax_s *>(newmalloc(sizeof(ZoneOptVarMinMax_s)));
    if (minMax == nullptr) return nullptr;
    minMax->RefCount = 1;
    minMax->IsValid = false;
    minMax->Location = ValueLocation_Invalid;
    minMax->NumSubZones = numSubZones;
    minMax->SubZoneMin = static_cast<double *>(newmalloc(sizeof(double) * size_t(std::max(numSubZones, 1))));
    minMax->SubZoneMax = static_cast<double *>(newmalloc(sizeof(double) * size_t(std::max(numSubZones, 1))));
    if (minMax->SubZoneMin == nullptr || minMax->SubZoneMax == nullptr) ZoneOptVarMinMaxDealloc(&minMax);
    return minMax;
}

void ZoneOptVarMinMaxDealloc(ZoneOptVarMinMax_s **minMax) {
    if (*minMax == nullptr) return;
    if (--(*minMax)->RefCount < 1) {
        newfree((*minMax)->SubZoneMin);
        newfree((*minMax)->SubZoneMax);
        newfree(*minMax);
    }
    *minMax = nullptr;
}

// ---- ordered partition ------------------------------------------------------------------------

namespace {

struct Pieces {
    LgIndex_t Count, Length;
};

// Pieces of about ten cells along a direction of numCells cells, at most allowance of them.
Pieces piecesAlong(LgIndex_t numCells, LgIndex_t allowance) {
    if (numCells <= OrderedSubZonePieceLength) return {1, OrderedSubZonePieceLength};
    LgIndex_t count = numCells / OrderedSubZonePieceLength + (numCells % OrderedSubZonePieceLength >= 5 ? 1 : 0);
    LgIndex_t length = OrderedSubZonePieceLength;
    if (count > allowance) {
        count = allowance;
        length = numCells / allowance;
        if (numCells % length != 0) {
            length++;
            count = (numCells + length - 1) / length;
        }
    }
    return {count, length};
}

}  // namespace

ZoneOptPartitioning_s *CreateOrderedZoneOptPartitioning(LgIndex_t numI, LgIndex_t numJ, LgIndex_t numK) {
    const LgIndex_t points[3] = {numI, numJ, numK};
    // Smallest first; among equals K, then J, then I.
    int order[3] = {2, 1, 0};
    std::stable_sort(order, order + 3, [&](int a, int b) { return points[a] < points[b]; });
    Pieces pieces[3];
    LgIndex_t first = LgIndex_t(std::trunc(std::cbrt(double(MaxSubZones))));
    pieces[order[0]] = piecesAlong(points[order[0]] - 1, first);
    LgIndex_t second = LgIndex_t(std::trunc(std::sqrt(double(MaxSubZones) / pieces[order[0]].Count)));
    pieces[order[1]] = piecesAlong(points[order[1]] - 1, second);
    LgIndex_t third = MaxSubZones / (pieces[order[0]].Count * pieces[order[1]].Count);
    pieces[order[2]] = piecesAlong(points[order[2]] - 1, third);

    LgIndex_t numSubZones = pieces[0].Count * pieces[1].Count * pieces[2].Count;
    if (numSubZones < 2) return nullptr;
    ZoneOptPartitioning_s *partitioning = ZoneOptPartitioningAlloc(false, numSubZones, 0);
    if (partitioning == nullptr) return nullptr;
    auto range = [&](int d, LgIndex_t n, LgIndex_t *min, LgIndex_t *max) {
        *min = n * pieces[d].Length;
        *max = n == pieces[d].Count - 1 ? std::max(points[d] - 2, 0) : *min + pieces[d].Length - 1;
    };
    LgIndex_t s = 0;
    for (LgIndex_t pi = 0; pi < pieces[0].Count; pi++)
        for (LgIndex_t pj = 0; pj < pieces[1].Count; pj++)
            for (LgIndex_t pk = 0; pk < pieces[2].Count; pk++, s++) {
                range(0, pi, &partitioning->IMin[s], &partitioning->IMax[s]);
                range(1, pj, &partitioning->JMin[s], &partitioning->JMax[s]);
                range(2, pk, &partitioning->KMin[s], &partitioning->KMax[s]);
            }
    return partitioning;
}

// ---- FE partition -----------------------------------------------------------------------------

namespace {

constexpr double SubZoneBandFraction = 0.2;
constexpr double MinSplittableHalfWidth = 1e-150;

struct Box {
    double Min[3], Max[3];
};

struct FEPartitionBuild {
    NodeMap_a NodeMap;
    int NumAxes;
    std::vector<Box> ElementBoxes;
    std::vector<Box> SubZoneBoxes;
    std::vector<LgIndex_t> Start, Count;  // stretch of each subzone in CellList
    std::vector<LgIndex_t> CellList;
};

// Which side of the middle an element's extent lies on along one axis: 0 low, 1 high, -1 across
// the band about the middle.
int sideOf(double min, double max, double mid, double band) {
    if (max <= mid) return 0;
    if (min > mid) return 1;
    if (max <= mid + band) return 0;
    if (min > mid - band) return 1;
    return -1;
}

// Splits subzone s into up to 2^axes + 1 bins; false when its box is too small to split.
// *grewOutside tells whether the bins away from the middle hold more than the middle bin.
bool splitSubZone(FEPartitionBuild &build, LgIndex_t s, bool *grewOutside) {
    const Box parent = build.SubZoneBoxes[size_t(s)];
    double mid[3], half[3], band[3];
    bool canSplit = false;
    for (int a = 0; a < build.NumAxes; a++) {
        mid[a] = 0.5 * (parent.Min[a] + parent.Max[a]);
        half[a] = 0.5 * (parent.Max[a] - parent.Min[a]);
        band[a] = SubZoneBandFraction * half[a];
        canSplit = canSplit || std::fabs(half[a]) >= MinSplittableHalfWidth;
    }
    if (!canSplit) return false;
    const int numBins = 1 + (1 << build.NumAxes);
    const LgIndex_t start = build.Start[size_t(s)], count = build.Count[size_t(s)];
    std::vector<int> binOf(static_cast<size_t>(count));
    std::vector<LgIndex_t> binCount(size_t(numBins), 0);
    for (LgIndex_t n = 0; n < count; n++) {
        const Box &box = build.ElementBoxes[size_t(build.CellList[size_t(start + n)])];
        int bin = 1;
        for (int a = 0; a < build.NumAxes && bin != 0; a++) {
            int side = sideOf(box.Min[a], box.Max[a], mid[a], band[a]);
            bin = side < 0 ? 0 : bin + side * (1 << a);
        }
        binOf[size_t(n)] = bin;
        binCount[size_t(bin)]++;
    }
    // A stable counting sort of the stretch by bin.
    std::vector<LgIndex_t> binStart(size_t(numBins), 0);
    for (int b = 1; b < numBins; b++) binStart[size_t(b)] = binStart[size_t(b - 1)] + binCount[size_t(b - 1)];
    std::vector<LgIndex_t> sorted(static_cast<size_t>(count));
    std::vector<LgIndex_t> fill = binStart;
    for (LgIndex_t n = 0; n < count; n++) sorted[size_t(fill[size_t(binOf[size_t(n)])]++)] = build.CellList[size_t(start + n)];
    std::copy(sorted.begin(), sorted.end(), build.CellList.begin() + start);

    bool isFirst = true;
    for (int b = 0; b < numBins; b++) {
        if (binCount[size_t(b)] == 0) continue;
        Box box = parent;
        if (b > 0) {
            for (int a = 0; a < build.NumAxes; a++) {
                if (((b - 1) >> a) & 1)
                    box.Min[a] = mid[a];
                else
                    box.Max[a] = mid[a];
            }
        }
        LgIndex_t target = s;
        if (!isFirst) {
            target = LgIndex_t(build.Start.size());
            build.Start.push_back(0);
            build.Count.push_back(0);
            build.SubZoneBoxes.push_back(box);
        }
        build.Start[size_t(target)] = start + binStart[size_t(b)];
        build.Count[size_t(target)] = binCount[size_t(b)];
        build.SubZoneBoxes[size_t(target)] = box;
        isFirst = false;
    }
    *grewOutside = count - binCount[0] > binCount[0];
    return true;
}

}  // namespace

ZoneOptPartitioning_s *CreateFEZoneOptPartitioning(NodeMap_a nodeMap, FieldData_a x, FieldData_a y, FieldData_a z) {
    REQUIRE(nodeMap != nullptr && x != nullptr && y != nullptr);
    FEPartitionBuild build;
    build.NodeMap = nodeMap;
    build.NumAxes = z != nullptr ? 3 : 2;
    const LgIndex_t numCells = nodeMap->NumElements;
    if (numCells < 2) return nullptr;
    FieldValueReader_s readers[3] = {MakeFieldValueReader(x), MakeFieldValueReader(y), MakeFieldValueReader(z)};

    Box zoneBox;
    for (int a = 0; a < 3; a++) {
        zoneBox.Min[a] = 1e150;
        zoneBox.Max[a] = -1e150;
    }
    for (int a = 0; a < build.NumAxes; a++) {
        for (LgIndex_t n = 0; n < readers[a].FieldData->NumValues; n++) {
            double v = ReadFieldValue(readers[a], n);
            zoneBox.Min[a] = std::min(zoneBox.Min[a], v);
            zoneBox.Max[a] = std::max(zoneBox.Max[a], v);
        }
    }
    build.ElementBoxes.resize(size_t(numCells));
    for (LgIndex_t e = 0; e < numCells; e++) {
        Box &box = build.ElementBoxes[size_t(e)];
        for (int a = 0; a < build.NumAxes; a++) {
            box.Min[a] = 1e150;
            box.Max[a] = -1e150;
            for (int c = 0; c < nodeMap->NodesPerElement; c++) {
                double v = ReadFieldValue(readers[a], NodeMapGetNode(nodeMap, e, c));
                box.Min[a] = std::min(box.Min[a], v);
                box.Max[a] = std::max(box.Max[a], v);
            }
        }
    }
    build.CellList.resize(size_t(numCells));
    for (LgIndex_t e = 0; e < numCells; e++) build.CellList[size_t(e)] = e;
    build.Start = {0};
    build.Count = {numCells};
    build.SubZoneBoxes = {zoneBox};

    const LgIndex_t growth = LgIndex_t(1) << build.NumAxes;
    for (LgIndex_t next = 0;;) {
        if (Interrupted) return nullptr;
        bool grewOutside = false;
        if (!splitSubZone(build, next, &grewOutside)) return nullptr;
        LgIndex_t numSubZones = LgIndex_t(build.Start.size());
        if (!grewOutside || numSubZones + growth >= MaxSubZones) break;
        LgIndex_t largest = 0;
        for (LgIndex_t s = 1; s < numSubZones; s++)
            if (build.Count[size_t(s)] > build.Count[size_t(largest)]) largest = s;
        if (build.Count[size_t(largest)] <= MinFECellsForSubZones) break;
        next = largest;
    }

    LgIndex_t numSubZones = LgIndex_t(build.Start.size());
    if (numSubZones < 2) return nullptr;
    ZoneOptPartitioning_s *partitioning = ZoneOptPartitioningAlloc(true, numSubZones, numCells);
    if (partitioning == nullptr) return nullptr;
    std::copy(build.CellList.begin(), build.CellList.end(), partitioning->CellList);
    // Subzones numbered by where their stretch begins, so that each one ends where the next starts.
    std::vector<LgIndex_t> starts = build.Start;
    std::sort(starts.begin(), starts.end());
    std::copy(starts.begin(), starts.end(), partitioning->SubZoneStart);
    partitioning->SubZoneStart[numSubZones] = numCells;
    return partitioning;
}

// ---- min and max per subzone ------------------------------------------------------------------

namespace {

struct MinMaxJob_s {
    const CZData_s *CZData;
    const ZoneOptPartitioning_s *Partitioning;
    FieldValueReader_s Reader;
    bool IsNodal;
    LgIndex_t SubZone;
    double *Min, *Max;
};

void subZoneMinMaxJob(void *argument) {
    auto *job = static_cast<MinMaxJob_s *>(argument);
    const CZData_s *czData = job->CZData;
    const ZoneOptPartitioning_s *partitioning = job->Partitioning;
    const FieldValueReader_s &reader = job->Reader;
    const LgIndex_t s = job->SubZone;
    double min = 1e150, max = -1e150;
    auto take = [&](LgIndex_t index) {
        double v = ReadFieldValue(reader, index);
        min = std::min(min, v);
        max = std::max(max, v);
    };
    if (czData->NodeMap != nullptr) {
        NodeMap_a nodeMap = czData->NodeMap;
        for (LgIndex_t p = partitioning->SubZoneStart[s]; p < partitioning->SubZoneStart[s + 1]; p++) {
            LgIndex_t element = partitioning->CellList[p];
            if (!job->IsNodal) {
                take(element);
                continue;
            }
            for (int c = 0; c < nodeMap->NodesPerElement; c++) take(NodeMapGetNode(nodeMap, element, c));
        }
    } else {
        LgIndex_t iMin, iMax, jMin, jMax, kMin, kMax;
        GetSubZoneCellRange(partitioning, s, &iMin, &iMax, &jMin, &jMax, &kMin, &kMax);
        if (job->IsNodal) {
            // Cells reach one node past their lowest corner.
            iMax = std::min(iMax + 1, czData->NumIPts - 1);
            jMax = std::min(jMax + 1, czData->NumJPts - 1);
            kMax = std::min(kMax + 1, czData->NumKPts - 1);
        }
        for (LgIndex_t k = kMin; k <= kMax; k++)
            for (LgIndex_t j = jMin; j <= jMax; j++) {
                LgIndex_t row = j * czData->NumIPts + k * czData->NumIJPts;
                for (LgIndex_t i = iMin; i <= iMax; i++) take(row + i);
            }
    }
    *job->Min = min;
    *job->Max = max;
}

}  // namespace

bool FillZoneOptVarMinMax(const CZData_s *czData, const ZoneOptPartitioning_s *partitioning, FieldData_a fieldData,
                          ZoneOptVarMinMax_s *minMax) {
    REQUIRE(partitioning != nullptr && fieldData != nullptr && minMax != nullptr &&
            minMax->NumSubZones == partitioning->NumSubZones);
    const LgIndex_t numSubZones = partitioning->NumSubZones;
    auto *jobs = static_cast<MinMaxJob_s *>(newmalloc(sizeof(MinMaxJob_s) * size_t(std::max(numSubZones, 1))));
    JobControl_s *control = nullptr;
    if (jobs == nullptr || (StandardThreadPool != nullptr && !InitJobControl(&control))) {
        newfree(jobs);
        OutOfMemoryMsg();
        return false;
    }
    FieldValueReader_s reader = MakeFieldValueReader(fieldData);
    const bool isNodal = fieldData->Location == ValueLocation_Nodal;
    for (LgIndex_t s = 0; s < numSubZones; s++) {
        jobs[s] = MinMaxJob_s{czData, partitioning, reader, isNodal, s, &minMax->SubZoneMin[s], &minMax->SubZoneMax[s]};
        // A job the pool can't take runs here while the others run on the workers.
        if (control == nullptr || !ThreadPoolAddJob(StandardThreadPool, subZoneMinMaxJob, &jobs[s], control))
            subZoneMinMaxJob(&jobs[s]);
    }
    if (control != nullptr) {
        ThreadPoolWait(StandardThreadPool, control);
        FreeJobControl(&control);
    }
    newfree(jobs);
    minMax->Location = fieldData->Location;
    minMax->IsValid = true;
    return true;
}

// ---- the zone's record ------------------------------------------------------------------------

bool IsZoneOptPartitioningValid(const ZoneOptInfo_s *optInfo) {
    return optInfo->Partitioning != nullptr && optInfo->Partitioning->IsValid;
}

bool IsVarOptMinMaxValid(const ZoneOptInfo_s *optInfo, ZoneOptVar_e var) {
    const ZoneOptVarMinMax_s *minMax = optInfo->VarMinMax[var];
    return minMax != nullptr && minMax->IsValid;
}

void InvalidateZoneOptPartitioning(ZoneOptInfo_s *optInfo) {
    if (optInfo->Partitioning != nullptr) optInfo->Partitioning->IsValid = false;
    for (int var = 0; var < NumZoneOptVars; var++) InvalidateVarOptMinMax(optInfo, ZoneOptVar_e(var));
}

void InvalidateVarOptMinMax(ZoneOptInfo_s *optInfo, ZoneOptVar_e var) {
    if (optInfo->VarMinMax[var] != nullptr) optInfo->VarMinMax[var]->IsValid = false;
}

bool SetupOptimizationForZone(const CZData_s *czData, bool is3D, FieldData_a contourVar, ZoneOptInfo_s *optInfo) {
    REQUIRE(czData != nullptr && optInfo != nullptr);
    MutexLock lock(optInfo->Mutex);
    const bool isFE = czData->NodeMap != nullptr;
    if (optInfo->Partitioning == nullptr || !optInfo->Partitioning->IsValid) {
        // The record starts anew: none of the old ranges fit a new partition.
        ZoneOptPartitioningDealloc(&optInfo->Partitioning);
        for (ZoneOptVarMinMax_s *&minMax : optInfo->VarMinMax) ZoneOptVarMinMaxDealloc(&minMax);
        ZoneOptPartitioning_s *partitioning = nullptr;
        if (isFE) {
            FieldData_a x = czData->Nodal[CZVar_X], y = czData->Nodal[CZVar_Y];
            if (czData->NumCells > MinFECellsForSubZones && x != nullptr && y != nullptr) {
                partitioning = CreateFEZoneOptPartitioning(czData->NodeMap, x, y, is3D ? czData->Nodal[CZVar_Z] : nullptr);
                if (partitioning == nullptr && Interrupted) return false;
            }
        } else if ((czData->NumIPts > 1) + (czData->NumJPts > 1) + (czData->NumKPts > 1) >= 2) {
            partitioning = CreateOrderedZoneOptPartitioning(czData->NumIPts, czData->NumJPts, czData->NumKPts);
        }
        if (partitioning == nullptr) return true;  // no subzones for this zone
        partitioning->IsValid = true;
        optInfo->Partitioning = partitioning;
    }
    const FieldData_a vars[NumZoneOptVars] = {contourVar, czData->Native[CZVar_X], czData->Native[CZVar_Y],
                                              is3D ? czData->Native[CZVar_Z] : nullptr};
    for (int var = 0; var < NumZoneOptVars; var++) {
        if (vars[var] == nullptr || IsVarOptMinMaxValid(optInfo, ZoneOptVar_e(var))) continue;
        ZoneOptVarMinMax_s *&minMax = optInfo->VarMinMax[var];
        if (minMax == nullptr && (minMax = ZoneOptVarMinMaxAlloc(optInfo->Partitioning->NumSubZones)) == nullptr) {
            OutOfMemoryMsg();
            return false;
        }
        if (!FillZoneOptVarMinMax(czData, optInfo->Partitioning, vars[var], minMax)) return false;
    }
    return true;
}
