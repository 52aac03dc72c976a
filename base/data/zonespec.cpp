#include "base/data/zonespec.h"

#include <algorithm>
#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/strutil.h"

void SetZoneSpecDefaults(ZoneSpec_s *zoneSpec) { *zoneSpec = ZoneSpec_s(); }

void CleanoutZoneSpec(ZoneSpec_s *zoneSpec) {
    newfree(zoneSpec->Name);
    AuxDataDealloc(&zoneSpec->AuxData);
    SetZoneSpecDefaults(zoneSpec);
}

ZoneSpec_s *ZoneSpecAlloc() {
    void *memory = newmalloc(sizeof(ZoneSpec_s));
    return memory != nullptr ? new (memory) ZoneSpec_s() : nullptr;
}

void ZoneSpecDealloc(ZoneSpec_s **zoneSpec) {
    if (*zoneSpec == nullptr) return;
    CleanoutZoneSpec(*zoneSpec);
    newfree(*zoneSpec);
    *zoneSpec = nullptr;
}

bool ZoneSpecItemDestructor(void *itemRef, ArbParam_t) {
    ZoneSpecDealloc(static_cast<ZoneSpec_s **>(itemRef));
    return true;
}

bool CopyZoneSpec(ZoneSpec_s *target, const ZoneSpec_s *source) {
    char *name = source->Name != nullptr ? DupString(source->Name) : nullptr;
    AuxData_s *aux = source->AuxData != nullptr ? AuxDataCopy(source->AuxData, false) : nullptr;
    if ((source->Name != nullptr && name == nullptr) || (source->AuxData != nullptr && aux == nullptr)) {
        newfree(name);
        AuxDataDealloc(&aux);
        return false;
    }
    CleanoutZoneSpec(target);
    *target = *source;
    target->Name = name;
    target->AuxData = aux;
    return true;
}

void CalcNumValuesNeeded(bool isFE, LgIndex_t i, LgIndex_t j, LgIndex_t k, int64_t *numPts, int64_t *numCells,
                         int64_t *numPointValues, int64_t *numElementValues) {
    int64_t pts, cells, elementValues;
    if (isFE) {
        pts = i;
        cells = j;
        elementValues = j;
    } else {
        pts = int64_t(i) * j * k;
        cells = int64_t(std::max(i - 1, 1)) * std::max(j - 1, 1) * std::max(k - 1, 1);
        if (k >= 2)
            elementValues = int64_t(i) * j * (k - 1);
        else if (j >= 2)
            elementValues = int64_t(i) * (j - 1);
        else if (i >= 2)
            elementValues = i - 1;
        else
            elementValues = 1;
    }
    if (numPts != nullptr) *numPts = pts;
    if (numCells != nullptr) *numCells = cells;
    if (numPointValues != nullptr) *numPointValues = pts;
    if (numElementValues != nullptr) *numElementValues = elementValues;
}

int64_t CalcNumPointValuesNeeded(const ZoneSpec_s *zoneSpec) {
    int64_t values;
    CalcNumValuesNeeded(ZoneTypeIsFE(zoneSpec->Type), zoneSpec->NumPtsI, zoneSpec->NumPtsJ, zoneSpec->NumPtsK,
                        nullptr, nullptr, &values, nullptr);
    return values;
}

int64_t CalcNumElementValuesNeeded(const ZoneSpec_s *zoneSpec) {
    int64_t values;
    CalcNumValuesNeeded(ZoneTypeIsFE(zoneSpec->Type), zoneSpec->NumPtsI, zoneSpec->NumPtsJ, zoneSpec->NumPtsK,
                        nullptr, nullptr, nullptr, &values);
    return values;
}
