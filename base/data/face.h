// Face neighbours of a zone: what lies across each face of each cell. This holds the record and
// its sharing; the neighbour search and the user-defined connections come with the binary file.
#pragma once

#include <cstdint>

#include "base/data/zonespec.h"

struct FaceNeighbor_s {
    int32_t RefCount;
    LgIndex_t NumElements;
    ZoneType_e ZoneType;
    FaceNeighborMode_e Mode;
    bool IsValid;  // auto-generated neighbours are up to date
};
using FaceNeighbor_a = FaceNeighbor_s *;

// False for an FE line-segment zone and an ordered zone with at least two of I, J, K equal to 1:
// those have no faces that can have neighbours.
bool ZoneNeedsFaceNeighbors(const ZoneSpec_s *zoneSpec);
FaceNeighbor_a FaceNeighborAlloc(const ZoneSpec_s *zoneSpec, bool showErr);
void FaceNeighborDealloc(FaceNeighbor_a *faceNeighbor);
FaceNeighbor_a FaceNeighborCopy(FaceNeighbor_a faceNeighbor, bool showErr);
void InvalidateFaceNeighbor(FaceNeighbor_a faceNeighbor);
