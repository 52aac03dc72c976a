// The orientation state of a zone's surface elements, shared with the zone's connectivity by
// reference count. It counts elements only for FE triangle and quadrilateral zones; every other
// zone type holds "valid" and nothing more.
#pragma once

#include <cstdint>

#include "base/data/zonespec.h"

struct DataElementState_s {
    int32_t RefCount;
    LgIndex_t NumElements;   // 0 unless the zone is an FE surface
    bool IsOriented;
    bool IsValid;
};
using DataElementState_a = DataElementState_s *;

DataElementState_a DataElementStateAlloc(LgIndex_t numElements, ZoneType_e zoneType, bool isOriented);
void DataElementStateDealloc(DataElementState_a *state);
DataElementState_a DataElementStateCopy(DataElementState_a state);
void InvalidateOrientationState(DataElementState_a state);
