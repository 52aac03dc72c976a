// The tables of a data set and the structural operations on them. Zone and variable tables are
// arrays of pointers indexed by number, so reaching a zone's variable is two array reads; every
// operation that renumbers (insert, delete) also renumbers what refers to a number: the enabled
// sets, parent zones, strand members and user-defined face neighbours.
#include "base/data/dataset.h"

#include <algorithm>
#include <cstring>

#include "base/data/dataload.h"
#include "base/data/datahooks.h"
#include "base/data/share.h"
#include "base/data/strand.h"
#include "base/kernel/alloc.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strlist.h"
#include "base/kernel/strutil.h"

namespace {

uint64_t uniqueIDCounter = 0;
int dataSetMarkingSuspended = 0;

template <typename T>
T *listItem(const ArrayList_s *list, LgIndex_t index) {
    return index < list->count ? reinterpret_cast<T **>(list->array)[index] : nullptr;
}

bool setPointerItem(ArrayList_s *list, LgIndex_t index, void *pointer, ArrayListItemDestructor_pf destructor) {
    ArrayListItem_u item;
    item.VoidPtr = pointer;
    return ArrayListSetItem(list, index, item, destructor, 0);
}

// A name trimmed of blanks at both ends and cut to the limit; null on out of memory.
char *trimmedName(const char *name, size_t limit) {
    char *copy = DupString(name != nullptr ? name : "");
    if (copy == nullptr) return nullptr;
    TrimLeadAndTrailSpaces(copy);
    if (strlen(copy) > limit) copy[limit] = '\0';
    return copy;
}

bool fieldDataItemDestructor(void *itemRef, ArbParam_t doTrackVarSharing) {
    FieldDataDealloc(static_cast<FieldData_a *>(itemRef), doTrackVarSharing != 0);
    return true;
}

VarSpec_s *varSpecAlloc() {
    auto *spec = static_cast<VarSpec_s *>(newmalloc(sizeof(VarSpec_s)));
    if (spec == nullptr) return nullptr;
    spec->UniqueID = GetNextUniqueID();
    spec->IsLocked = false;
    spec->LockOwner = nullptr;
    spec->LockMode = VarLockMode_None;
    spec->AuxData = nullptr;
    return spec;
}

bool varSpecItemDestructor(void *itemRef, ArbParam_t) {
    auto **slot = static_cast<VarSpec_s **>(itemRef);
    if (VarSpec_s *varSpec = *slot) {
        newfree(varSpec->LockOwner);
        AuxDataDealloc(&varSpec->AuxData);
        newfree(varSpec);
        *slot = nullptr;
    }
    return true;
}

ZoneData_s *zoneDataAlloc(EntIndex_t numVars, bool doTrackVarSharing) {
    auto *zoneData = static_cast<ZoneData_s *>(newmalloc(sizeof(ZoneData_s)));
    if (zoneData == nullptr) return nullptr;
    memset(zoneData, 0, sizeof(ZoneData_s));
    zoneData->DoTrackVarSharing = doTrackVarSharing;
    bool ok = Thread_InitMutex(&zoneData->Mutex);
    if (ok && numVars > 0) {
        zoneData->VarList = ArrayListAlloc(numVars, ArrayListType_VoidPtr, ZoneOrVarListAdjustCapacityRequest, 0);
        ok = zoneData->VarList != nullptr;
        // The slots exist (null) for every variable number in use.
        if (ok) ok = setPointerItem(zoneData->VarList, numVars - 1, nullptr, nullptr);
    }
    if (!ok) {
        ArrayListDealloc(&zoneData->VarList, nullptr, 0);
        Thread_FreeMutex(&zoneData->Mutex);
        newfree(zoneData);
        return nullptr;
    }
    return zoneData;
}

bool zoneDataItemDestructor(void *itemRef, ArbParam_t) {
    auto **zoneData = static_cast<ZoneData_s **>(itemRef);
    ZoneData_s *z = *zoneData;
    if (z == nullptr) return true;
    ArrayListDealloc(&z->VarList, fieldDataItemDestructor, z->DoTrackVarSharing);
    ArrayListDealloc(&z->ThreeDVarList, fieldDataItemDestructor, 0);
    ArrayListDealloc(&z->ZoneAuxList, nullptr, 0);
    DeallocNodeMapPtr(&z->NodeMap);
    FaceNeighborDealloc(&z->FN);
    DataElementStateDealloc(&z->DataElementState);
    Thread_FreeMutex(&z->Mutex);
    newfree(z);
    *zoneData = nullptr;
    return true;
}

bool isEnabledFirstOtherZone(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t *firstZone) {
    SetIndex_t first = GetNextMember(dataSet->EnabledZones, -1);
    if (first == zone) first = GetNextMember(dataSet->EnabledZones, first);
    *firstZone = static_cast<EntIndex_t>(first);
    return first >= 0;
}

}  // namespace

LgIndex_t ZoneOrVarListAdjustCapacityRequest(const ArrayList_s *, LgIndex_t currentCapacity,
                                              LgIndex_t requestedCapacity, ArbParam_t) {
    if (requestedCapacity > MaxNumZonesOrVars) return 0;
    if (currentCapacity == 0 && requestedCapacity != 0) return requestedCapacity;
    if (requestedCapacity == 0) return 32;
    LgIndex_t block = std::max<LgIndex_t>(currentCapacity / 2, 32);
    LgIndex_t capacity = ((requestedCapacity - 1) / block + 1) * block;
    return std::min<LgIndex_t>(capacity, MaxNumZonesOrVars);
}

uint64_t GetNextUniqueID() {
    if (++uniqueIDCounter == 0) uniqueIDCounter = 1;
    return uniqueIDCounter;
}

DataSet_s *AllocDataSet(const char *title, bool isDataSet, bool showErr) {
    auto *dataSet = static_cast<DataSet_s *>(newmalloc(sizeof(DataSet_s)));
    if (dataSet == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    memset(dataSet, 0, sizeof(DataSet_s));
    dataSet->IsDataSet = isDataSet;
    dataSet->Journal.IsValid = true;
    bool ok = (dataSet->DataSetTitle = DupString(title != nullptr ? title : "")) != nullptr;
    if (ok) ok = (dataSet->EnabledZones = AllocSet(false)) != nullptr;
    if (ok) ok = (dataSet->EnabledVars = AllocSet(false)) != nullptr;
    auto makeList = [](ArrayList_s **list) {
        *list = ArrayListAlloc(1, ArrayListType_VoidPtr, ZoneOrVarListAdjustCapacityRequest, 0);
        return *list != nullptr;
    };
    if (ok) ok = makeList(&dataSet->ZoneSpecList) && makeList(&dataSet->ZoneDataList);
    if (ok && isDataSet) {
        dataSet->UniqueID = GetNextUniqueID();
        ok = (dataSet->VarNames = StringListAlloc()) != nullptr && makeList(&dataSet->VarSpecList) &&
             makeList(&dataSet->StrandInfoList);
    }
    if (!ok) {
        DeallocDataSet(&dataSet);
        if (showErr) OutOfMemoryMsg();
    }
    return dataSet;
}

void DeallocDataSet(DataSet_s **dataSet) {
    DataSet_s *ds = *dataSet;
    if (ds == nullptr) return;
    newfree(ds->DataSetTitle);
    newfree(ds->LockOwner);
    DeallocSet(&ds->EnabledZones);
    DeallocSet(&ds->EnabledVars);
    StringListDealloc(&ds->VarNames);
    ArrayListDealloc(&ds->VarSpecList, varSpecItemDestructor, 0);
    ArrayListDealloc(&ds->ZoneSpecList, ZoneSpecItemDestructor, 0);
    ArrayListDealloc(&ds->ZoneDataList, zoneDataItemDestructor, 0);
    ArrayListDealloc(&ds->StrandInfoList, StrandInfoItemDestructor, 0);
    for (StringList_s *&labels : ds->CustomLabels) StringListDealloc(&labels);
    CleanupDataSetJournal(ds);
    AuxDataDealloc(&ds->AuxData);
    newfree(ds);
    *dataSet = nullptr;
}

// ---- cells --------------------------------------------------------------------------------

void SetNativeFieldDataPtr(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var, FieldData_a fieldData) {
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    REQUIRE(zoneData != nullptr && zoneData->VarList != nullptr);
    ArrayListItem_u item;
    item.VoidPtr = fieldData;
    ArrayListSetItem(zoneData->VarList, var, item, fieldDataItemDestructor, zoneData->DoTrackVarSharing);
}

FieldData_a GetReadableNativeFieldDataPtr(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr) return nullptr;
    fieldData->LoadGeneration = DataLoadGetCurrentGeneration();
    return FieldDataMakeReadable(fieldData) ? fieldData : nullptr;
}

FieldData_a GetWritableNativeFieldDataPtr(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr) return nullptr;
    return FieldDataMakeWritable(fieldData) ? fieldData : nullptr;
}

bool GetZoneVarFromFieldDataRef(const DataSet_s *dataSet, FieldData_a fieldData, EntIndex_t *zone, EntIndex_t *var) {
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z))
        for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v))
            if (GetNativeFieldDataPtr(dataSet, EntIndex_t(z), EntIndex_t(v)) == fieldData) {
                *zone = EntIndex_t(z);
                *var = EntIndex_t(v);
                return true;
            }
    return false;
}

// ---- names --------------------------------------------------------------------------------

bool SetDatasetTitle(DataSet_s *dataSet, const char *title) {
    char *copy = DupString(title != nullptr ? title : "");
    if (copy == nullptr) return false;
    if (strlen(copy) > MaxDataSetTitleLength) copy[MaxDataSetTitleLength] = '\0';
    newfree(dataSet->DataSetTitle);
    dataSet->DataSetTitle = copy;
    StateChanged(StateChange_DataSetTitle, nullptr);
    return true;
}

bool SetVarName(DataSet_s *dataSet, EntIndex_t var, const char *name) {
    char *copy = trimmedName(name, MaxVarNameLength);
    bool ok = copy != nullptr && StringListSetString(dataSet->VarNames, var, copy);
    newfree(copy);
    return ok;
}

const char *GetVarName(const DataSet_s *dataSet, EntIndex_t var) {
    if (dataSet->VarNames == nullptr || var >= StringListCount(dataSet->VarNames)) return nullptr;
    return StringListGetStringRef(dataSet->VarNames, var);
}

bool SetZoneName(DataSet_s *dataSet, EntIndex_t zone, const char *name) {
    ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    char *copy = trimmedName(name, MaxZoneNameLength);
    if (spec == nullptr || copy == nullptr) {
        newfree(copy);
        return false;
    }
    newfree(spec->Name);
    spec->Name = copy;
    return true;
}

const char *GetZoneName(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    return spec != nullptr ? spec->Name : nullptr;
}

bool IsVarPassive(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    return fieldData != nullptr && IsFieldDataPassive(fieldData);
}

// ---- shape --------------------------------------------------------------------------------

LgIndex_t ZoneGetNumPoints(const DataSet_s *dataSet, EntIndex_t zone) {
    int64_t points = CalcNumPointValuesNeeded(GetZoneSpec(dataSet, zone));
    return static_cast<LgIndex_t>(points);
}

LgIndex_t ZoneGetNumElements(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    int64_t cells;
    CalcNumValuesNeeded(ZoneTypeIsFE(spec->Type), spec->NumPtsI, spec->NumPtsJ, spec->NumPtsK, nullptr, &cells,
                        nullptr, nullptr);
    return static_cast<LgIndex_t>(cells);
}

void GetZoneIndices(const DataSet_s *dataSet, EntIndex_t zone, LgIndex_t *i, LgIndex_t *j, LgIndex_t *k) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    if (i != nullptr) *i = spec->NumPtsI;
    if (j != nullptr) *j = spec->NumPtsJ;
    if (k != nullptr) *k = spec->NumPtsK;
}

int GetZoneRank(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    if (ZoneTypeIsFE(spec->Type)) return 0;
    int above = (spec->NumPtsI > 1) + (spec->NumPtsJ > 1) + (spec->NumPtsK > 1);
    // An I-line, an IJ/JK/IK surface, an IJK volume; a single point counts as linear.
    if (above <= 1) return 1;
    return above;
}

std::string GetVarStatus(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    std::string status;
    if (fieldData == nullptr || !IsFieldDataReadable(fieldData))
        status = "Not Loaded";
    else if (IsFieldDataPassive(fieldData))
        status = "Passive";
    else if (IsFieldDataMemoryMapped(fieldData))
        status = fieldData->IsMemMapFragmented
                     ? "Map:" + std::to_string(MemMapGetMemFragCount(fieldData->MemMap))
                     : std::string("Map");
    else
        status = "Heap";
    const VarSpec_s *spec = dataSet->VarSpecList != nullptr ? listItem<VarSpec_s>(dataSet->VarSpecList, var) : nullptr;
    if (spec != nullptr && spec->IsLocked)
        status += spec->LockMode == VarLockMode_Delete ? ",No Delete" : ",No Modify";
    return status;
}

// ---- zones --------------------------------------------------------------------------------

bool DataSetAllocZone(DataSet_s *dataSet, EntIndex_t zone) {
    REQUIRE(zone >= 0 && zone < MaxNumZonesOrVars);
    EntIndex_t oldNumZones = dataSet->NumZones;
    LgIndex_t oldSpecCount = dataSet->ZoneSpecList->count, oldDataCount = dataSet->ZoneDataList->count;
    bool ok = setPointerItem(dataSet->ZoneSpecList, zone, nullptr, ZoneSpecItemDestructor) &&
              setPointerItem(dataSet->ZoneDataList, zone, nullptr, zoneDataItemDestructor) &&
              AddToSet(dataSet->EnabledZones, zone, false);
    if (!ok) {
        // Take back slots that this call added beyond the old end.
        if (dataSet->ZoneSpecList->count > oldSpecCount)
            ArrayListDeleteItems(dataSet->ZoneSpecList, oldSpecCount, dataSet->ZoneSpecList->count - oldSpecCount,
                                 nullptr, 0);
        if (dataSet->ZoneDataList->count > oldDataCount)
            ArrayListDeleteItems(dataSet->ZoneDataList, oldDataCount, dataSet->ZoneDataList->count - oldDataCount,
                                 nullptr, 0);
        return false;
    }
    if (zone >= oldNumZones) dataSet->NumZones = EntIndex_t(zone + 1);
    return true;
}

bool DataSetAllocConnectivity(DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *zoneSpec, bool,
                              EntIndex_t shareFromZone, bool isOriented) {
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    if (shareFromZone >= 0) {
        if (!IsZoneEnabled(dataSet, shareFromZone) || GetZoneData(dataSet, shareFromZone) == nullptr) return false;
        ShareConnectivity(dataSet, shareFromZone, zone);
        return true;
    }
    NodeMap_a nodeMap = nullptr;
    FaceNeighbor_a faceNeighbor = nullptr;
    DataElementState_a elementState = nullptr;
    bool isFE = ZoneTypeIsFE(zoneSpec->Type);
    bool ok = true;
    if (isFE) ok = (nodeMap = AllocNodeMapPtr(zoneSpec->NumPtsJ, zoneSpec->Type, false)) != nullptr;
    if (ok && ZoneNeedsFaceNeighbors(zoneSpec)) ok = (faceNeighbor = FaceNeighborAlloc(zoneSpec, false)) != nullptr;
    if (ok) {
        LgIndex_t elements = isFE ? zoneSpec->NumPtsJ
                                  : LgIndex_t(int64_t(zoneSpec->NumPtsI) * zoneSpec->NumPtsJ * zoneSpec->NumPtsK);
        ok = (elementState = DataElementStateAlloc(elements, zoneSpec->Type, isOriented)) != nullptr;
    }
    if (!ok) {
        DeallocNodeMapPtr(&nodeMap);
        FaceNeighborDealloc(&faceNeighbor);
        return false;
    }
    DeallocNodeMapPtr(&zoneData->NodeMap);
    FaceNeighborDealloc(&zoneData->FN);
    DataElementStateDealloc(&zoneData->DataElementState);
    zoneData->NodeMap = nodeMap;
    zoneData->FN = faceNeighbor;
    zoneData->DataElementState = elementState;
    return true;
}

bool DataSetAllocFieldData(DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *zoneSpec,
                           const FieldDataType_e *types, const ValueLocation_e *locations,
                           const EntIndex_t *shareFromZones, const bool *isPassive, bool storable) {
    // Pass 1: check sizes before anything is allocated.
    double points = ZoneTypeIsFE(zoneSpec->Type)
                        ? double(zoneSpec->NumPtsI)
                        : double(zoneSpec->NumPtsI) * double(zoneSpec->NumPtsJ) * double(zoneSpec->NumPtsK);
    if (points > double(MAXINDEX)) {
        ErrMsg("Total Number of points for a zone exceeds %ld", long(MAXINDEX));
        return false;
    }
    EntIndex_t firstZone = -1;
    bool haveFirst = isEnabledFirstOtherZone(dataSet, zone, &firstZone);
    auto typeOf = [&](EntIndex_t var) {
        if (types != nullptr) return types[var];
        if (haveFirst)
            if (FieldData_a other = GetNativeFieldDataPtr(dataSet, firstZone, var)) return other->Type;
        return FieldDataType_Float;
    };
    auto locationOf = [&](EntIndex_t var) {
        if (locations != nullptr) return locations[var];
        if (haveFirst)
            if (FieldData_a other = GetNativeFieldDataPtr(dataSet, firstZone, var)) return other->Location;
        return ValueLocation_Nodal;
    };
    for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v)) {
        double bytesPerValue = typeOf(EntIndex_t(v)) == FieldDataType_Bit
                                   ? 0.125
                                   : double(FieldDataGetBytesNeeded(1, typeOf(EntIndex_t(v))));
        if (points * bytesPerValue > double(MAXINDEX)) {
            ErrMsg("Cannot allocate memory for field data.  If possible, try reducing precision for the field data "
                   "type.");
            return false;
        }
    }
    // Pass 2: share or make each variable's object.
    for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v)) {
        auto var = EntIndex_t(v);
        if (shareFromZones != nullptr && shareFromZones[var] >= 0) {
            if (!IsZoneEnabled(dataSet, shareFromZones[var])) return false;
            ShareVariable(dataSet, shareFromZones[var], zone, var);
            continue;
        }
        ValueLocation_e location = locationOf(var);
        FieldData_a fieldData = FieldDataAlloc();
        bool ok = fieldData != nullptr &&
                  FieldDataDefineData(fieldData, LgIndex_t(CalcNumValuesNeededAt(zoneSpec, location)), typeOf(var),
                                      location);
        if (ok) {
            if (isPassive != nullptr && isPassive[var])
                FieldDataMakePassive(fieldData);
            else if ((ok = storable ? FieldDataAllocStorableData(fieldData, false) : FieldDataAllocData(fieldData, false)))
                FieldDataZeroNewStorage(fieldData);
        }
        if (!ok) {
            FieldDataDealloc(&fieldData, true);
            return false;
        }
        SetNativeFieldDataPtr(dataSet, zone, var, fieldData);
    }
    return true;
}

bool DataSetAllocZoneData(DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *zoneSpec,
                          const FieldDataType_e *types, const ValueLocation_e *locations,
                          const EntIndex_t *shareFromZones, const bool *isPassive, bool storable,
                          EntIndex_t shareConnectivityFromZone, bool allocVars, bool allocConnectivity,
                          bool doTrackVarSharing, bool isOriented) {
    ZoneSpec_s *spec = ZoneSpecAlloc();
    bool ok = spec != nullptr && CopyZoneSpec(spec, zoneSpec);
    if (ok) {
        spec->UniqueID = GetNextUniqueID();
        char *name = trimmedName(zoneSpec->Name, MaxZoneNameLength);
        ok = name != nullptr;
        newfree(spec->Name);
        spec->Name = name;
    }
    ZoneData_s *zoneData = ok ? zoneDataAlloc(dataSet->NumVars, doTrackVarSharing) : nullptr;
    ok = ok && zoneData != nullptr;
    if (!ok) {
        ZoneSpecDealloc(&spec);
        return false;
    }
    if (spec->ParentZone >= 0) dataSet->HasParentZones = true;
    setPointerItem(dataSet->ZoneSpecList, zone, spec, ZoneSpecItemDestructor);
    setPointerItem(dataSet->ZoneDataList, zone, zoneData, zoneDataItemDestructor);
    if (dataSet->IsDataSet && spec->StrandID >= 0) ok = AddZoneToStrand(dataSet, spec->StrandID, zone);
    if (ok && allocVars) ok = DataSetAllocFieldData(dataSet, zone, spec, types, locations, shareFromZones, isPassive, storable);
    if (ok && allocConnectivity) ok = DataSetAllocConnectivity(dataSet, zone, spec, true, shareConnectivityFromZone, isOriented);
    if (!ok) {
        if (dataSet->IsDataSet && spec->StrandID >= 0) RemoveZoneFromStrand(dataSet, spec->StrandID, zone, false);
        setPointerItem(dataSet->ZoneDataList, zone, nullptr, zoneDataItemDestructor);
        setPointerItem(dataSet->ZoneSpecList, zone, nullptr, ZoneSpecItemDestructor);
    }
    return ok;
}

void DataSetDeallocZone(DataSet_s *dataSet, EntIndex_t zone) {
    if (zone >= dataSet->ZoneSpecList->count) return;
    if (const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone))
        if (dataSet->IsDataSet && spec->StrandID >= 0) RemoveZoneFromStrand(dataSet, spec->StrandID, zone, false);
    setPointerItem(dataSet->ZoneSpecList, zone, nullptr, ZoneSpecItemDestructor);
    setPointerItem(dataSet->ZoneDataList, zone, nullptr, zoneDataItemDestructor);
    RemoveFromSet(dataSet->EnabledZones, zone);
}

bool DataSetInsertZone(DataSet_s *dataSet, EntIndex_t zone) {
    REQUIRE(zone >= 0);
    if (zone >= dataSet->NumZones) {
        if (!DataSetAllocZone(dataSet, zone)) return false;
        RemoveFromSet(dataSet->EnabledZones, zone);
        return true;
    }
    if (dataSet->NumZones >= MaxNumZonesOrVars) return false;
    ArrayListItem_u nothing;
    nothing.VoidPtr = nullptr;
    if (!ArrayListInsertItem(dataSet->ZoneSpecList, zone, nothing)) return false;
    if (!ArrayListInsertItem(dataSet->ZoneDataList, zone, nothing)) {
        ArrayListDeleteItem(dataSet->ZoneSpecList, zone, nullptr, 0);
        return false;
    }
    if (!InsertSetMember(dataSet->EnabledZones, zone, false)) {
        ArrayListDeleteItem(dataSet->ZoneSpecList, zone, nullptr, 0);
        ArrayListDeleteItem(dataSet->ZoneDataList, zone, nullptr, 0);
        return false;
    }
    RemoveFromSet(dataSet->EnabledZones, zone);  // the new number stays disabled
    if (dataSet->IsDataSet) StrandsInsertZone(dataSet, zone);
    dataSet->NumZones++;
    if (dataSet->HasParentZones)
        for (EntIndex_t z = 0; z < dataSet->NumZones; z++)
            if (ZoneSpec_s *spec = GetZoneSpec(dataSet, z))
                if (spec->ParentZone >= zone) spec->ParentZone++;
    DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment(dataSet, zone, 1);
    return true;
}

void DataSetDeleteZone(DataSet_s *dataSet, EntIndex_t zone) {
    REQUIRE(zone >= 0 && zone < dataSet->NumZones);
    if (dataSet->IsDataSet && dataSet->StrandInfoList != nullptr) {
        // Every strand's members above the zone move down one; the zone leaves its own strand.
        for (LgIndex_t s = 0; s < dataSet->StrandInfoList->count; s++) {
            StrandInfo_s *info = GetStrandInfo(dataSet, s);
            if (info == nullptr || info->ZoneMembers->size <= zone) continue;
            if (InSet(info->ZoneMembers, zone) || GetPrevMember(info->ZoneMembers, -1) > zone)
                RemoveZoneFromStrand(dataSet, s, zone, true);
        }
    }
    DeleteSetMember(dataSet->EnabledZones, zone);
    ArrayListDeleteItem(dataSet->ZoneSpecList, zone, ZoneSpecItemDestructor, 0);
    ArrayListDeleteItem(dataSet->ZoneDataList, zone, zoneDataItemDestructor, 0);
    dataSet->NumZones--;
    // Parent links: to the deleted zone become -1, to a higher one move down. Most data sets have
    // none, and skipping the walk keeps deleting many zones linear.
    if (!dataSet->HasParentZones) {
        DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment(dataSet, zone, -1);
        return;
    }
    auto **specs = reinterpret_cast<ZoneSpec_s **>(dataSet->ZoneSpecList->array);
    LgIndex_t count = dataSet->ZoneSpecList->count;
    for (LgIndex_t z = 0; z < count; z++) {
        ZoneSpec_s *spec = specs[z];
        if (spec == nullptr || spec->ParentZone < 0) continue;
        if (spec->ParentZone == zone)
            spec->ParentZone = -1;
        else if (spec->ParentZone > zone)
            spec->ParentZone--;
    }
    DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment(dataSet, zone, -1);
}

// ---- variables ----------------------------------------------------------------------------

bool ZoneDataAllocVar(ZoneData_s *zoneData, EntIndex_t var) {
    if (zoneData->VarList == nullptr) {
        zoneData->VarList = ArrayListAlloc(var + 1, ArrayListType_VoidPtr, ZoneOrVarListAdjustCapacityRequest, 0);
        if (zoneData->VarList == nullptr) return false;
    }
    if (var < zoneData->VarList->count) return true;
    return setPointerItem(zoneData->VarList, var, nullptr, nullptr);
}

void ZoneDataDeallocVar(ZoneData_s *zoneData, EntIndex_t var) {
    if (zoneData->VarList == nullptr || var >= zoneData->VarList->count) return;
    ArrayListItem_u nothing;
    nothing.VoidPtr = nullptr;
    ArrayListSetItem(zoneData->VarList, var, nothing, fieldDataItemDestructor, zoneData->DoTrackVarSharing);
}

bool ZoneDataInsertVar(ZoneData_s *zoneData, EntIndex_t var) {
    if (zoneData->VarList == nullptr || var >= zoneData->VarList->count) return ZoneDataAllocVar(zoneData, var);
    ArrayListItem_u nothing;
    nothing.VoidPtr = nullptr;
    return ArrayListInsertItem(zoneData->VarList, var, nothing);
}

void ZoneDataDeleteVar(ZoneData_s *zoneData, EntIndex_t var) {
    if (zoneData->VarList != nullptr && var < zoneData->VarList->count)
        ArrayListDeleteItem(zoneData->VarList, var, fieldDataItemDestructor, zoneData->DoTrackVarSharing);
}

void SetZoneParentZone(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t parentZone) {
    GetZoneSpec(dataSet, zone)->ParentZone = parentZone;
    if (parentZone >= 0) dataSet->HasParentZones = true;
}

bool DataSetAllocVar(DataSet_s *dataSet, EntIndex_t var) {
    REQUIRE(var >= 0 && var < MaxNumZonesOrVars);
    // Every existing zone gets a slot; on failure the slots added so far are taken back.
    EntIndex_t done = 0;
    bool ok = true;
    for (; done < dataSet->NumZones && ok; done++)
        if (ZoneData_s *zoneData = GetZoneData(dataSet, done)) ok = ZoneDataAllocVar(zoneData, var);
    if (ok && dataSet->VarSpecList != nullptr)
        ok = var < dataSet->VarSpecList->count || setPointerItem(dataSet->VarSpecList, var, nullptr, nullptr);
    if (ok && dataSet->VarNames != nullptr)
        ok = var < StringListCount(dataSet->VarNames) || StringListSetString(dataSet->VarNames, var, nullptr);
    if (ok) ok = AddToSet(dataSet->EnabledVars, var, false);
    if (!ok) return false;
    if (var >= dataSet->NumVars) dataSet->NumVars = EntIndex_t(var + 1);
    return true;
}

bool DataSetAllocVarData(DataSet_s *dataSet, EntIndex_t var, const char *name) {
    if (!dataSet->IsDataSet) return true;
    VarSpec_s *spec = varSpecAlloc();
    if (spec == nullptr || !SetVarName(dataSet, var, name)) {
        varSpecItemDestructor(&spec, 0);
        return false;
    }
    setPointerItem(dataSet->VarSpecList, var, spec, varSpecItemDestructor);
    return true;
}

void DataSetDeallocVar(DataSet_s *dataSet, EntIndex_t var) {
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++)
        if (ZoneData_s *zoneData = GetZoneData(dataSet, z)) ZoneDataDeallocVar(zoneData, var);
    if (dataSet->VarSpecList != nullptr && var < dataSet->VarSpecList->count)
        setPointerItem(dataSet->VarSpecList, var, nullptr, varSpecItemDestructor);
    if (dataSet->VarNames != nullptr && var < StringListCount(dataSet->VarNames))
        StringListSetString(dataSet->VarNames, var, nullptr);
    RemoveFromSet(dataSet->EnabledVars, var);
}

bool DataSetInsertVar(DataSet_s *dataSet, EntIndex_t var) {
    if (var >= dataSet->NumVars) {
        if (!DataSetAllocVar(dataSet, var)) return false;
        RemoveFromSet(dataSet->EnabledVars, var);
        return true;
    }
    if (dataSet->NumVars >= MaxNumZonesOrVars) return false;
    EntIndex_t zonesDone = 0;
    bool ok = true;
    while (ok && zonesDone < dataSet->NumZones) {
        if (ZoneData_s *zoneData = GetZoneData(dataSet, zonesDone)) ok = ZoneDataInsertVar(zoneData, var);
        if (ok) zonesDone++;
    }
    ArrayListItem_u nothing;
    nothing.VoidPtr = nullptr;
    bool specDone = false, nameDone = false;
    if (ok && dataSet->VarSpecList != nullptr) ok = specDone = ArrayListInsertItem(dataSet->VarSpecList, var, nothing);
    if (ok && dataSet->VarNames != nullptr) ok = nameDone = StringListInsertString(dataSet->VarNames, var, nullptr);
    if (ok) ok = InsertSetMember(dataSet->EnabledVars, var, false);
    if (!ok) {
        for (EntIndex_t z = 0; z < zonesDone; z++)
            if (ZoneData_s *zoneData = GetZoneData(dataSet, z)) ZoneDataDeleteVar(zoneData, var);
        if (specDone) ArrayListDeleteItem(dataSet->VarSpecList, var, nullptr, 0);
        if (nameDone) StringListRemoveString(dataSet->VarNames, var);
        return false;
    }
    RemoveFromSet(dataSet->EnabledVars, var);
    dataSet->NumVars++;
    return true;
}

void DataSetDeleteVar(DataSet_s *dataSet, EntIndex_t var) {
    REQUIRE(var >= 0 && var < dataSet->NumVars);
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++)
        if (ZoneData_s *zoneData = GetZoneData(dataSet, z)) ZoneDataDeleteVar(zoneData, var);
    if (dataSet->VarSpecList != nullptr && var < dataSet->VarSpecList->count)
        ArrayListDeleteItem(dataSet->VarSpecList, var, varSpecItemDestructor, 0);
    if (dataSet->VarNames != nullptr && var < StringListCount(dataSet->VarNames))
        StringListRemoveString(dataSet->VarNames, var);
    DeleteSetMember(dataSet->EnabledVars, var);
    dataSet->NumVars--;
}

void DataSetDeallocZoneVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    if (ZoneData_s *zoneData = GetZoneData(dataSet, zone)) ZoneDataDeallocVar(zoneData, var);
}

void CollapseDataSet(DataSet_s *dataSet) {
    for (EntIndex_t z = EntIndex_t(dataSet->NumZones - 1); z >= 0; z--)
        if (!IsZoneEnabled(dataSet, z)) DataSetDeleteZone(dataSet, z);
    for (EntIndex_t v = EntIndex_t(dataSet->NumVars - 1); v >= 0; v--)
        if (!IsVarEnabled(dataSet, v)) DataSetDeleteVar(dataSet, v);
}

// ---- locks --------------------------------------------------------------------------------

bool DataSetLockOn(DataSet_s *dataSet, const char *owner) {
    if (dataSet->IsLocked) return false;
    char *copy = DupString(owner != nullptr ? owner : "");
    if (copy == nullptr) return false;
    dataSet->IsLocked = true;
    dataSet->LockOwner = copy;
    StateChanged(StateChange_DataSetLockOn, nullptr);
    return true;
}

bool DataSetLockOff(DataSet_s *dataSet, const char *owner) {
    if (!dataSet->IsLocked || (owner != nullptr && strcmp(owner, dataSet->LockOwner) != 0)) return false;
    newfree(dataSet->LockOwner);
    dataSet->LockOwner = nullptr;
    dataSet->IsLocked = false;
    StateChanged(StateChange_DataSetLockOff, nullptr);
    return true;
}

bool DataSetIsLocked(const DataSet_s *dataSet, const char **owner) {
    if (owner != nullptr) *owner = dataSet->IsLocked ? dataSet->LockOwner : nullptr;
    return dataSet->IsLocked;
}

void DataSetShowLockError(const char *verb) { ErrMsg("Cannot %s: The current data set is locked.", verb); }

bool VariableLockOn(DataSet_s *dataSet, EntIndex_t var, VarLockMode_e mode, const char *owner) {
    VarSpec_s *spec = dataSet->VarSpecList != nullptr ? listItem<VarSpec_s>(dataSet->VarSpecList, var) : nullptr;
    if (spec == nullptr || spec->IsLocked) return false;
    char *copy = DupString(owner != nullptr ? owner : "");
    if (copy == nullptr) return false;
    spec->IsLocked = true;
    spec->LockMode = mode;
    spec->LockOwner = copy;
    StateChangeInfo_s info;
    info.Index = var;
    info.ArbEnum = mode;
    StateChanged(StateChange_VariableLockOn, &info);
    return true;
}

bool VariableLockOff(DataSet_s *dataSet, EntIndex_t var, const char *owner) {
    VarSpec_s *spec = dataSet->VarSpecList != nullptr ? listItem<VarSpec_s>(dataSet->VarSpecList, var) : nullptr;
    if (spec == nullptr || !spec->IsLocked || (owner != nullptr && strcmp(owner, spec->LockOwner) != 0)) return false;
    newfree(spec->LockOwner);
    spec->LockOwner = nullptr;
    spec->IsLocked = false;
    spec->LockMode = VarLockMode_None;
    StateChangeInfo_s info;
    info.Index = var;
    StateChanged(StateChange_VariableLockOff, &info);
    return true;
}

bool VariableIsLocked(const DataSet_s *dataSet, EntIndex_t var, VarLockMode_e *mode, const char **owner) {
    const VarSpec_s *spec =
        dataSet->VarSpecList != nullptr ? listItem<VarSpec_s>(dataSet->VarSpecList, var) : nullptr;
    bool locked = spec != nullptr && spec->IsLocked;
    if (mode != nullptr) *mode = locked ? spec->LockMode : VarLockMode_None;
    if (owner != nullptr) *owner = locked ? spec->LockOwner : nullptr;
    return locked;
}

void VariableShowLockError(const char *verb, EntIndex_t var, const char *owner) {
    ErrMsg("Cannot %s: Variable %d is locked by %s.", verb, var + 1, owner != nullptr ? owner : "");
}

// ---- journal ------------------------------------------------------------------------------

bool IsDataSetMarkingSuspended() { return dataSetMarkingSuspended > 0; }
void SuspendDataSetMarking() { dataSetMarkingSuspended++; }
void UnsuspendDataSetMarking() {
    if (dataSetMarkingSuspended > 0) dataSetMarkingSuspended--;
}

static bool stringItemDestructor(void *itemRef, ArbParam_t) {
    auto **text = static_cast<char **>(itemRef);
    newfree(*text);
    *text = nullptr;
    return true;
}

void CleanupDataSetJournal(DataSet_s *dataSet) {
    ArrayListDealloc(&dataSet->Journal.Commands, stringItemDestructor, 0);
    dataSet->Journal.IsDirty = false;
}

void MarkDataSetAsChanged(DataSet_s *dataSet) {
    if (DataSetHooks.IsDataSetMarkingSuspendedByAddOn()) return;
    if (IsDataSetMarkingSuspended() && !DataSetHooks.IsDisruptiveAddOnCallRunning()) return;
    if (dataSet->Journal.Commands != nullptr) CleanupDataSetJournal(dataSet);
    dataSet->Journal.IsValid = false;
}

bool JournalRegisterMacroCommand(DataSet_s *dataSet, const char *command) {
    if (dataSet->Journal.Commands == nullptr) {
        dataSet->Journal.Commands = ArrayListAlloc(0, ArrayListType_CharPtr, nullptr, 0);
        if (dataSet->Journal.Commands == nullptr) return false;
    }
    char *copy = DupString(command);
    ArrayListItem_u item;
    item.CharPtr = copy;
    if (copy == nullptr || !ArrayListAppendItem(dataSet->Journal.Commands, item)) {
        newfree(copy);
        return false;
    }
    if (!DataSetHooks.IsProcessingLayout()) dataSet->Journal.IsDirty = true;
    return true;
}

bool ReassignDatasetToFileName(DataSet_s *dataSet, const char *fileName) {
    CleanupDataSetJournal(dataSet);
    std::string command = "$!READDATASET  '\"";
    for (const char *c = fileName; *c != '\0'; c++) {
        if (*c == '"' || *c == '\\') command.push_back('\\');
        command.push_back(*c);
    }
    command += "\"'";
    if (!JournalRegisterMacroCommand(dataSet, command.c_str())) return false;
    dataSet->Journal.IsValid = true;
    StateChanged(StateChange_DataSetFileName, nullptr);
    return true;
}
