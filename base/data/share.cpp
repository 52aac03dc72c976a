// Shared objects carry two counts: RefCount (all owners) and, for field data, VarShareRefCount
// (owners through sharing between zones). A shared object is never written in place: the writer
// branches first, so the other zones keep what they had.
#include "base/data/share.h"

#include "base/data/datahooks.h"
#include "base/kernel/genbase.h"

namespace {

template <typename F>
void forEachEnabledZone(const DataSet_s *dataSet, F visit) {
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z))
        visit(EntIndex_t(z));
}

bool isOrderedILine(const ZoneSpec_s *spec) { return spec->NumPtsJ <= 1 && spec->NumPtsK <= 1; }

}  // namespace

void ShareVariable(DataSet_s *dataSet, EntIndex_t sourceZone, EntIndex_t zone, EntIndex_t var) {
    if (sourceZone == zone) return;
    FieldData_a source = GetNativeFieldDataPtr(dataSet, sourceZone, var);
    if (source == nullptr) return;
    source->RefCount++;
    source->VarShareRefCount++;
    SetNativeFieldDataPtr(dataSet, zone, var, source);  // releases the cell's old object
    DataSetHooks.InvalidateDerivedVar(dataSet, zone, var);
}

void ShareConnectivity(DataSet_s *dataSet, EntIndex_t sourceZone, EntIndex_t zone) {
    if (sourceZone == zone) return;
    ZoneData_s *source = GetZoneData(dataSet, sourceZone);
    ZoneData_s *target = GetZoneData(dataSet, zone);
    DeallocNodeMapPtr(&target->NodeMap);
    FaceNeighborDealloc(&target->FN);
    DataElementStateDealloc(&target->DataElementState);
    if ((target->NodeMap = source->NodeMap) != nullptr) target->NodeMap->RefCount++;
    if ((target->FN = source->FN) != nullptr) target->FN->RefCount++;
    if ((target->DataElementState = source->DataElementState) != nullptr) target->DataElementState->RefCount++;
}

bool BranchVariable(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr || fieldData->VarShareRefCount < 2) return true;
    FieldData_a copy;
    if (IsFieldDataLoadOnDemandByOrvanex(fieldData) && !IsFieldDataStorable(fieldData) &&
        !IsFieldDataReadable(fieldData))
        copy = FieldDataCloneUnloaded(fieldData);  // same file and offset: nothing to read
    else
        copy = FieldDataCopy(fieldData, DataSetHooks.CurrentDataSet() == dataSet);
    if (copy == nullptr) return false;
    SetNativeFieldDataPtr(dataSet, zone, var, copy);
    DataSetHooks.BranchNodeNormalCache(dataSet, zone);
    return true;
}

bool BranchConnectivity(DataSet_s *dataSet, EntIndex_t zone) {
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    NodeMap_a nodeMap = nullptr;
    FaceNeighbor_a faceNeighbor = nullptr;
    DataElementState_a elementState = nullptr;
    bool ok = true;
    if (zoneData->NodeMap != nullptr && zoneData->NodeMap->RefCount > 1)
        ok = (nodeMap = NodeMapDuplicate(zoneData->NodeMap, true)) != nullptr;
    if (ok && zoneData->FN != nullptr && zoneData->FN->RefCount > 1)
        ok = (faceNeighbor = FaceNeighborCopy(zoneData->FN, true)) != nullptr;
    if (ok && zoneData->DataElementState != nullptr && zoneData->DataElementState->RefCount > 1)
        ok = (elementState = DataElementStateCopy(zoneData->DataElementState)) != nullptr;
    if (!ok) {
        DeallocNodeMapPtr(&nodeMap);
        FaceNeighborDealloc(&faceNeighbor);
        return false;
    }
    if (nodeMap != nullptr) {
        DeallocNodeMapPtr(&zoneData->NodeMap);
        zoneData->NodeMap = nodeMap;
    }
    if (faceNeighbor != nullptr) {
        FaceNeighborDealloc(&zoneData->FN);
        zoneData->FN = faceNeighbor;
    }
    if (elementState != nullptr) {
        DataElementStateDealloc(&zoneData->DataElementState);
        zoneData->DataElementState = elementState;
    }
    if (nodeMap != nullptr || faceNeighbor != nullptr) DataSetHooks.BranchNodeNormalCache(dataSet, zone);
    return true;
}

int32_t GetVarShareReferenceCount(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    return fieldData != nullptr ? fieldData->VarShareRefCount : 0;
}

bool IsVarShared(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    return GetVarShareReferenceCount(dataSet, zone, var) >= 2;
}

bool VarIsSharedBetweenZones(const DataSet_s *dataSet, EntIndex_t zoneA, EntIndex_t zoneB, EntIndex_t var) {
    FieldData_a a = GetNativeFieldDataPtr(dataSet, zoneA, var);
    return a != nullptr && a == GetNativeFieldDataPtr(dataSet, zoneB, var);
}

int32_t GetConnectivityReferenceCount(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    if (zoneData == nullptr) return 1;
    if (ZoneTypeIsFE(GetZoneSpec(dataSet, zone)->Type))
        return zoneData->NodeMap != nullptr ? zoneData->NodeMap->RefCount : 1;
    return zoneData->FN != nullptr ? zoneData->FN->RefCount : 1;
}

Set_a *GetSharedVarZoneSet(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    if (!IsVarShared(dataSet, zone, var)) return nullptr;
    Set_a *zones = AllocSet(true);
    if (zones == nullptr) return nullptr;
    FieldData_a target = GetNativeFieldDataPtr(dataSet, zone, var);
    forEachEnabledZone(dataSet, [&](EntIndex_t z) {
        if (GetNativeFieldDataPtr(dataSet, z, var) == target) AddToSet(zones, z, true);
    });
    return zones;
}

Set_a *GetZonesThatShareConnectivityWithZone(const DataSet_s *dataSet, EntIndex_t zone) {
    if (GetConnectivityReferenceCount(dataSet, zone) < 2) return nullptr;
    Set_a *zones = AllocSet(true);
    if (zones == nullptr) return nullptr;
    const ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    bool isFE = ZoneTypeIsFE(GetZoneSpec(dataSet, zone)->Type);
    forEachEnabledZone(dataSet, [&](EntIndex_t z) {
        const ZoneData_s *other = GetZoneData(dataSet, z);
        if (other != nullptr && (isFE ? other->NodeMap == zoneData->NodeMap : other->FN == zoneData->FN))
            AddToSet(zones, z, true);
    });
    return zones;
}

bool ZoneHasConnectivitySharing(const DataSet_s *dataSet, EntIndex_t zone) {
    return GetConnectivityReferenceCount(dataSet, zone) > 1;
}

bool ZoneHasVarSharing(const DataSet_s *dataSet, EntIndex_t zone) {
    for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v))
        if (IsVarShared(dataSet, zone, EntIndex_t(v))) return true;
    return false;
}

bool ZoneHasDataSharing(const DataSet_s *dataSet, EntIndex_t zone) {
    return ZoneHasVarSharing(dataSet, zone) || ZoneHasConnectivitySharing(dataSet, zone);
}

bool DataSetHasConnectivitySharing(const DataSet_s *dataSet) {
    bool any = false;
    forEachEnabledZone(dataSet, [&](EntIndex_t z) { any = any || ZoneHasConnectivitySharing(dataSet, z); });
    return any;
}

bool DataSetHasVarSharing(const DataSet_s *dataSet) {
    bool any = false;
    forEachEnabledZone(dataSet, [&](EntIndex_t z) { any = any || ZoneHasVarSharing(dataSet, z); });
    return any;
}

bool DataSetHasDataSharing(const DataSet_s *dataSet) {
    return DataSetHasVarSharing(dataSet) || DataSetHasConnectivitySharing(dataSet);
}

bool ZoneStructuresAreNativeVarShareCompatible(ValueLocation_e locationA, ValueLocation_e locationB,
                                               const ZoneSpec_s *zoneSpecA, const ZoneSpec_s *zoneSpecB) {
    if (locationA != locationB) return false;
    bool feA = ZoneTypeIsFE(zoneSpecA->Type), feB = ZoneTypeIsFE(zoneSpecB->Type);
    bool cellCentered = locationA == ValueLocation_CellCentered;
    if (feA && feB)
        return cellCentered ? zoneSpecA->NumPtsJ == zoneSpecB->NumPtsJ : zoneSpecA->NumPtsI == zoneSpecB->NumPtsI;
    if (!feA && !feB)
        return zoneSpecA->NumPtsI == zoneSpecB->NumPtsI && zoneSpecA->NumPtsJ == zoneSpecB->NumPtsJ &&
               zoneSpecA->NumPtsK == zoneSpecB->NumPtsK;
    // An ordered zone and an FE zone: nodal values of an I-line with as many points.
    if (cellCentered) return false;
    const ZoneSpec_s *ordered = feA ? zoneSpecB : zoneSpecA;
    const ZoneSpec_s *fe = feA ? zoneSpecA : zoneSpecB;
    return isOrderedILine(ordered) && CalcNumPointValuesNeeded(ordered) == fe->NumPtsI;
}

bool OkToShareNativeVarBetweenZones(const DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *otherSpec,
                                    ValueLocation_e location, EntIndex_t var) {
    if (!GeneralBase.AllowDataSharing) return false;
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr) return false;
    return ZoneStructuresAreNativeVarShareCompatible(fieldData->Location, location, GetZoneSpec(dataSet, zone),
                                                     otherSpec);
}

bool ZoneStructuresAreConnectivityShareCompatible(const ZoneSpec_s *zoneSpecA, const ZoneSpec_s *zoneSpecB) {
    // Equal J as well: FE zones with different element counts must not share one node map.
    return zoneSpecA->Type == zoneSpecB->Type && zoneSpecA->NumPtsI == zoneSpecB->NumPtsI &&
           zoneSpecA->NumPtsJ == zoneSpecB->NumPtsJ && zoneSpecA->NumPtsK == zoneSpecB->NumPtsK &&
           zoneSpecA->FNMode == zoneSpecB->FNMode && zoneSpecA->FNMode != FaceNeighborMode_GlobalOneToOne &&
           zoneSpecA->FNMode != FaceNeighborMode_GlobalOneToMany;
}

bool OkToShareConnectivityBetweenZones(const DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *otherSpec) {
    if (!GeneralBase.AllowDataSharing) return false;
    return ZoneStructuresAreConnectivityShareCompatible(GetZoneSpec(dataSet, zone), otherSpec);
}
