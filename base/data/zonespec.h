// The description of one zone (ZoneSpec_s) and the counts of points, elements and values that
// follow from its type and dimensions.
#pragma once

#include <cstdint>

#include "base/kernel/types.h"

struct AuxData_s;

enum ZoneType_e : int16_t {
    ZoneType_Ordered = 0,
    ZoneType_FETriangle = 1,
    ZoneType_FEQuad = 2,
    ZoneType_FETetra = 3,
    ZoneType_FEBrick = 4,
    ZoneType_FELineSeg = 5
};

enum FaceNeighborMode_e : int16_t {
    FaceNeighborMode_LocalOneToOne = 0,
    FaceNeighborMode_LocalOneToMany = 1,
    FaceNeighborMode_GlobalOneToOne = 2,
    FaceNeighborMode_GlobalOneToMany = 3
};

enum ValueLocation_e : int16_t { ValueLocation_CellCentered = 0, ValueLocation_Nodal = 1, ValueLocation_Invalid = 255 };

// How an ordered zone's cell-centred block lies in a data file.
enum DataValueStructure_e : int16_t {
    DataValueStructure_Classic = 0,      // only the real cells (versions below 103)
    DataValueStructure_Ordered = 1,      // all I x J x K slots (version 103)
    DataValueStructure_ClassicGhost = 2  // the in-memory layout with ghost slots (later versions)
};

constexpr int MaxZoneNameLength = 128;

struct ZoneSpec_s {
    uint64_t UniqueID = 0;
    char *Name = nullptr;       // newmalloc'd
    EntIndex_t ParentZone = -1;
    int32_t StrandID = -1;
    double SolutionTime = 0.0;
    LgIndex_t NumPtsI = 0;      // FE: number of points
    LgIndex_t NumPtsJ = 0;      // FE: number of elements
    LgIndex_t NumPtsK = 0;      // FE: nodes per element
    LgIndex_t ICellDim = 0, JCellDim = 0, KCellDim = 0;
    ZoneType_e Type = ZoneType_Ordered;
    int16_t ZoneColor = -2;     // -2: no colour of its own
    bool IsBlock = true;
    LgIndex_t FNNumBndryConns = 0;
    FaceNeighborMode_e FNMode = FaceNeighborMode_LocalOneToOne;
    bool AutoAssignFN = true;
    AuxData_s *AuxData = nullptr;
    bool BuildZoneOptInfo = true;
};

void SetZoneSpecDefaults(ZoneSpec_s *zoneSpec);
// Frees the name and auxiliary data and resets the defaults.
void CleanoutZoneSpec(ZoneSpec_s *zoneSpec);
ZoneSpec_s *ZoneSpecAlloc();
void ZoneSpecDealloc(ZoneSpec_s **zoneSpec);
// An ArrayList_s item destructor for lists of ZoneSpec_s pointers.
bool ZoneSpecItemDestructor(void *itemRef, ArbParam_t clientData);
// Copies every field; name and auxiliary data are duplicated. False on out of memory.
bool CopyZoneSpec(ZoneSpec_s *target, const ZoneSpec_s *source);

inline bool ZoneTypeIsFE(ZoneType_e type) { return type != ZoneType_Ordered; }

// Points and value counts, in 64 bits so that a caller can test them against the limits.
// Nodal values: I x J x K (ordered) or NumPts (FE). Cell-centred values: the element count for
// FE; for ordered zones the ghost layout: the value of cell (i, j, k) stands at its lowest
// corner, so there are I x J x (K-1) slots if K >= 2, else I x (J-1) if J >= 2, else I-1 if
// I >= 2, else 1.
void CalcNumValuesNeeded(bool isFE, LgIndex_t i, LgIndex_t j, LgIndex_t k, int64_t *numPts, int64_t *numCells,
                         int64_t *numPointValues, int64_t *numElementValues);
int64_t CalcNumPointValuesNeeded(const ZoneSpec_s *zoneSpec);
int64_t CalcNumElementValuesNeeded(const ZoneSpec_s *zoneSpec);
inline int64_t CalcNumValuesNeededAt(const ZoneSpec_s *zoneSpec, ValueLocation_e location) {
    return location == ValueLocation_Nodal ? CalcNumPointValuesNeeded(zoneSpec) : CalcNumElementValuesNeeded(zoneSpec);
}
