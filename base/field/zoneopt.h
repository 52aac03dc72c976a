// Subzones of a zone: a partition into pieces (inclusive cell ranges for ordered zones, runs of a
// permuted element list for FE zones) with the minimum and maximum of a few variables per piece,
// so that blanking, contour lines, slices and viewport culling can pass over whole pieces. The
// min-max fill runs one job per subzone on the standard thread pool.
// Relies on: setup (CZData_s dimensions and connectivity), fielddata, threadpool, thread.
#pragma once

#include <cstdint>

#include "base/data/fielddata.h"
#include "base/data/nodemap.h"
#include "base/kernel/thread.h"

struct CZData_s;

// Shared by reference count between zones with the same connectivity and coordinates.
struct ZoneOptPartitioning_s {
    int32_t RefCount;
    bool IsValid;
    LgIndex_t NumSubZones;
    // Ordered zones: inclusive cell ranges, one entry per subzone.
    LgIndex_t *IMin, *IMax, *JMin, *JMax, *KMin, *KMax;
    // FE zones: subzone s holds CellList[SubZoneStart[s]] up to, not including, CellList[SubZoneStart[s+1]].
    LgIndex_t *CellList;
    LgIndex_t *SubZoneStart;  // NumSubZones + 1
};

struct ZoneOptVarMinMax_s {
    int32_t RefCount;
    bool IsValid;
    ValueLocation_e Location;
    LgIndex_t NumSubZones;
    double *SubZoneMin, *SubZoneMax;
};

// The variables that keep subzone ranges, in this order.
enum ZoneOptVar_e { ZoneOptVar_Contour = 0, ZoneOptVar_X = 1, ZoneOptVar_Y = 2, ZoneOptVar_Z = 3, NumZoneOptVars = 4 };

struct ZoneOptInfo_s {
    ZoneOptPartitioning_s *Partitioning;  // null: no subzones
    ZoneOptVarMinMax_s *VarMinMax[NumZoneOptVars];
    Mutex_a Mutex;  // held while the record is brought up to date
};

constexpr int MaxSubZones = 256;
constexpr LgIndex_t OrderedSubZonePieceLength = 10;  // cells
constexpr LgIndex_t MinFECellsForSubZones = 2500;

// Null (with the message) on out of memory.
ZoneOptInfo_s *ZoneOptInfoAlloc();
void ZoneOptInfoDealloc(ZoneOptInfo_s **optInfo);

// A partition of numSubZones subzones with its arrays, count 1, not yet valid; null on out of
// memory (no message). isFE chooses the arrays; numCells is the FE element count.
ZoneOptPartitioning_s *ZoneOptPartitioningAlloc(bool isFE, LgIndex_t numSubZones, LgIndex_t numCells);
// Lowers the count and frees at 0; nulls the pointer.
void ZoneOptPartitioningDealloc(ZoneOptPartitioning_s **partitioning);
ZoneOptVarMinMax_s *ZoneOptVarMinMaxAlloc(LgIndex_t numSubZones);
void ZoneOptVarMinMaxDealloc(ZoneOptVarMinMax_s **minMax);

// The ordered partition: about 256 pieces of 10 cells, the allowance going to the smallest
// direction first; pieces numbered I outermost, K innermost. Null for fewer than two pieces or on
// out of memory.
ZoneOptPartitioning_s *CreateOrderedZoneOptPartitioning(LgIndex_t numI, LgIndex_t numJ, LgIndex_t numK);
// The FE partition: a quadtree (2D) or octree (3D) over element bounding boxes from the nodal
// coordinates (z null in 2D). Null for fewer than two subzones, a box too small to split, or
// out of memory.
ZoneOptPartitioning_s *CreateFEZoneOptPartitioning(NodeMap_a nodeMap, FieldData_a x, FieldData_a y, FieldData_a z);

// The subzone's inclusive cell ranges (ordered) or its stretch of CellList (FE).
inline void GetSubZoneCellRange(const ZoneOptPartitioning_s *partitioning, LgIndex_t subZone, LgIndex_t *iMin,
                                LgIndex_t *iMax, LgIndex_t *jMin, LgIndex_t *jMax, LgIndex_t *kMin, LgIndex_t *kMax) {
    *iMin = partitioning->IMin[subZone];
    *iMax = partitioning->IMax[subZone];
    *jMin = partitioning->JMin[subZone];
    *jMax = partitioning->JMax[subZone];
    *kMin = partitioning->KMin[subZone];
    *kMax = partitioning->KMax[subZone];
}

// Fills minMax (sized for the partition) with each subzone's range of fieldData: one job per
// subzone on StandardThreadPool (inline without a pool), the caller waiting. An ordered subzone
// reads nodal values over its cells widened by one node in I, J and K, clipped to the last node,
// and cell-centred values over its cells; an FE subzone reads the nodes of its elements, or the
// elements' own values. Ranges start at 1e150 and -1e150, so an empty subzone keeps those.
// False with the message on out of memory.
bool FillZoneOptVarMinMax(const CZData_s *czData, const ZoneOptPartitioning_s *partitioning, FieldData_a fieldData,
                          ZoneOptVarMinMax_s *minMax);

// Brings one zone's record up to date: the partition when invalid (ordered non-linear zones, FE
// zones above 2500 cells), then the min-max of X, Y, Z (when is3D) and the contour variable
// (when given) that are not valid. Holds the record's mutex. False when interrupted or out of
// memory; a failed partition leaves the zone without subzones.
bool SetupOptimizationForZone(const CZData_s *czData, bool is3D, FieldData_a contourVar, ZoneOptInfo_s *optInfo);

bool IsZoneOptPartitioningValid(const ZoneOptInfo_s *optInfo);
bool IsVarOptMinMaxValid(const ZoneOptInfo_s *optInfo, ZoneOptVar_e var);
void InvalidateZoneOptPartitioning(ZoneOptInfo_s *optInfo);
void InvalidateVarOptMinMax(ZoneOptInfo_s *optInfo, ZoneOptVar_e var);
