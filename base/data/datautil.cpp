// Operations on the current frame's data set. Each checks what can be checked before anything
// changes, then works so that a failure part-way leaves the data set as it was.
#include "base/data/datautil.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

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

struct SetDeleter {
    void operator()(Set_a *set) const { DeallocSet(&set); }
};
using SetPtr = std::unique_ptr<Set_a, SetDeleter>;

SetPtr singleMemberSet(SetIndex_t member) {
    SetPtr set(AllocSet(true));
    if (set && !AddToSet(set.get(), member, true)) set.reset();
    return set;
}

void notify(StateChange_e change, const Set_a *zones, const Set_a *vars) {
    StateChangeInfo_s info;
    info.ZoneSet = zones;
    info.VarSet = vars;
    StateChanged(change, &info);
}

bool checkNotLocked(const DataSet_s *dataSet, const char *verb) {
    if (!dataSet->IsLocked) return true;
    DataSetShowLockError(verb);
    return false;
}

// Ordered zones need every dimension at least 1 and at most MAXINDEX points in all.
bool orderedDimensionsAreValid(const ZoneSpec_s *spec) {
    if (ZoneTypeIsFE(spec->Type)) return spec->NumPtsI >= 0 && spec->NumPtsJ >= 0;
    if (spec->NumPtsI < 1 || spec->NumPtsJ < 1 || spec->NumPtsK < 1) {
        ErrMsg("Invalid zone dimensions: I, J and K must each be at least 1.");
        return false;
    }
    return true;
}

// Removes zones at and beyond a number, so that NumZones is as it was before an addition.
void trimZonesTo(DataSet_s *dataSet, EntIndex_t numZones) {
    while (dataSet->NumZones > numZones) DataSetDeleteZone(dataSet, EntIndex_t(dataSet->NumZones - 1));
}

template <typename F>
void forEachMember(const Set_a *set, F visit) {
    for (SetIndex_t m = GetNextMember(set, -1); m >= 0; m = GetNextMember(set, m)) visit(EntIndex_t(m));
}

}  // namespace

// ---- checks -------------------------------------------------------------------------------

DataSet_s *DataSetAvailable(const char *verb) {
    DataSet_s *dataSet = DataSetHooks.CurrentDataSet();
    if (dataSet == nullptr) ErrMsg("Cannot %s: The current frame does not have an attached data set", verb);
    return dataSet;
}

bool GetFinalZoneSetForActionFunction(const Set_a *zones, Set_a **finalZones, EntIndex_t destinationZone,
                                      bool showErr) {
    *finalZones = nullptr;
    DataSet_s *dataSet = DataSetHooks.CurrentDataSet();
    if (dataSet == nullptr) return false;
    if (zones != nullptr && !IsSubSet(zones, dataSet->EnabledZones)) {
        if (showErr) ErrMsg("Zones requested are not all available");
        return false;
    }
    SetPtr result(AllocSet(true));
    if (!result || !CopySet(result.get(), zones != nullptr ? zones : dataSet->EnabledZones, true)) return false;
    if (IsEmpty(result.get())) {
        if (showErr) ErrMsg("No source zones were specified");
        return false;
    }
    if (destinationZone >= 0) {
        RemoveFromSet(result.get(), destinationZone);
        if (IsEmpty(result.get())) {
            if (showErr) ErrMsg("Source Zone is same as destination zone");
            return false;
        }
    }
    *finalZones = result.release();
    return true;
}

bool GetFinalVarSetForActionFunction(const Set_a *vars, Set_a **finalVars, bool excludeCoordinates) {
    *finalVars = nullptr;
    DataSet_s *dataSet = DataSetHooks.CurrentDataSet();
    if (dataSet == nullptr) return false;
    if (vars != nullptr && !IsSubSet(vars, dataSet->EnabledVars)) {
        ErrMsg("Vars requested are not all available");
        return false;
    }
    SetPtr result(AllocSet(true));
    if (!result || !CopySet(result.get(), vars != nullptr ? vars : dataSet->EnabledVars, true)) return false;
    if (IsEmpty(result.get())) {
        ErrMsg("No variables were specified");
        return false;
    }
    if (excludeCoordinates) {
        EntIndex_t axisVars[3];
        int numAxes = DataSetHooks.GetAxisVars(axisVars);
        if (!DataSetHooks.PlotTypeIs3D() && numAxes > 2) numAxes = 2;
        for (int a = 0; a < numAxes; a++) RemoveFromSet(result.get(), axisVars[a]);
        if (IsEmpty(result.get())) {
            ErrMsg("Only non-coordinate variables can be operated on");
            return false;
        }
    }
    *finalVars = result.release();
    return true;
}

// ---- adding -------------------------------------------------------------------------------

bool AddZone(const ZoneSpec_s *zoneSpec, const FieldDataType_e *types, const ValueLocation_e *locations,
             EntIndex_t zone, const EntIndex_t *shareFromZones, const bool *isPassive,
             EntIndex_t shareConnectivityFromZone, bool isOriented) {
    DataSet_s *dataSet = DataSetAvailable("add a zone");
    if (dataSet == nullptr) return false;
    if (zone >= MaxNumZonesOrVars || zone < 0) {
        ErrMsg("Exceeded maximum number of zones allowed (%d).", int(MaxNumZonesOrVars));
        return false;
    }
    if (!orderedDimensionsAreValid(zoneSpec) || !checkNotLocked(dataSet, "add a zone")) return false;

    EntIndex_t oldNumZones = dataSet->NumZones;
    bool ok = DataSetAllocZone(dataSet, zone) &&
              DataSetAllocZoneData(dataSet, zone, zoneSpec, types, locations, shareFromZones, isPassive, true,
                                   shareConnectivityFromZone, true, true, true, isOriented);
    if (ok && !DataSetHooks.IncorporateZoneIntoFrameStyle(dataSet, zone)) {
        ok = false;
    }
    if (!ok) {
        DataSetDeallocZone(dataSet, zone);
        trimZonesTo(dataSet, oldNumZones);
        OutOfMemoryMsg();
        return false;
    }
    DataSetHooks.ResetScratchFlagsOnDataSetChange(dataSet);
    return true;
}

bool AddVar(const char *name, const FieldDataType_e *types, const ValueLocation_e *locations,
            bool tryShareWithAllZones, const bool *isPassive) {
    DataSet_s *dataSet = DataSetAvailable("add a variable");
    if (dataSet == nullptr) return false;
    DataSetHooks.InvalidateCOBsOnVarChange(dataSet);
    if (!checkNotLocked(dataSet, "add a variable")) return false;
    EntIndex_t var = dataSet->NumVars;
    if (var >= MaxNumZonesOrVars) {
        ErrMsg("Exceeded maximum number of variables allowed (%d).", int(MaxNumZonesOrVars));
        return false;
    }
    bool ok = DataSetAllocVar(dataSet, var) && DataSetAllocVarData(dataSet, var, name);
    EntIndex_t firstZone = EntIndex_t(GetNextMember(dataSet->EnabledZones, -1));
    for (SetIndex_t z = firstZone; ok && z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        auto zone = EntIndex_t(z);
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
        FieldDataType_e type = FieldDataType_Float;
        if (types != nullptr) {
            type = types[zone];
        } else {
            SetIndex_t firstVar = GetNextMember(dataSet->EnabledVars, -1);
            if (FieldData_a other = firstVar >= 0 && firstVar != var ? GetNativeFieldDataPtr(dataSet, zone, EntIndex_t(firstVar)) : nullptr)
                type = other->Type;
        }
        ValueLocation_e location = locations != nullptr ? locations[zone] : ValueLocation_Nodal;
        if (tryShareWithAllZones && zone != firstZone &&
            OkToShareNativeVarBetweenZones(dataSet, firstZone, spec, location, var) &&
            GetNativeFieldDataPtr(dataSet, firstZone, var)->Type == type) {
            ShareVariable(dataSet, firstZone, zone, var);
            continue;
        }
        FieldData_a fieldData = FieldDataAlloc();
        ok = fieldData != nullptr &&
             FieldDataDefineData(fieldData, LgIndex_t(CalcNumValuesNeededAt(spec, location)), type, location);
        if (ok) {
            if (isPassive != nullptr && isPassive[zone])
                FieldDataMakePassive(fieldData);
            else if ((ok = FieldDataAllocStorableData(fieldData, false)))
                FieldDataZeroNewStorage(fieldData);
        }
        if (!ok) {
            FieldDataDealloc(&fieldData, true);
            ErrMsg("Cannot allocate space for new variable");
            break;
        }
        SetNativeFieldDataPtr(dataSet, zone, var, fieldData);
    }
    if (!ok) {
        DataSetDeallocVar(dataSet, var);
        if (dataSet->NumVars == var + 1) DataSetDeleteVar(dataSet, var);
        return false;
    }
    SetPtr vars = singleMemberSet(var);
    notify(StateChange_VarsAdded, nullptr, vars.get());
    return true;
}

// ---- deleting -----------------------------------------------------------------------------

bool DeleteZone(DataSet_s *dataSet, EntIndex_t zone, bool doNotify) {
    if (MemberCount(dataSet->EnabledZones) <= 1 && IsZoneEnabled(dataSet, zone)) {
        ErrMsg("Cannot delete the last zone in a data set.");
        return false;
    }
    DataSetHooks.PickZoneDeleted(dataSet, zone);
    // Deleting the last number also deletes the disabled numbers below it, so that NumZones
    // stays exact.
    EntIndex_t lowest = zone;
    if (zone == dataSet->NumZones - 1)
        while (lowest > 0 && !IsZoneEnabled(dataSet, EntIndex_t(lowest - 1))) lowest--;
    for (EntIndex_t z = zone; z >= lowest; z--) {
        DataSetHooks.FrameStyleDeleteZone(dataSet, z);
        DataSetDeleteZone(dataSet, z);
    }
    if (doNotify) {
        DataSetHooks.ResetScratchFlagsOnDataSetChange(dataSet);
        SetPtr zones = singleMemberSet(zone);
        notify(StateChange_ZonesDeleted, zones.get(), nullptr);
    }
    return true;
}

bool DeleteZones(DataSet_s *dataSet, const Set_a *zones) {
    if (!checkNotLocked(dataSet, "delete a zone")) return false;
    if (zones == nullptr || IsEmpty(zones)) {
        ErrMsg("Invalid set of zones to delete");
        return false;
    }
    bool ok = true;
    for (SetIndex_t z = GetPrevMember(zones, -1); ok && z >= 0; z = GetPrevMember(zones, z)) {
        if (z >= dataSet->NumZones) continue;
        DataSetHooks.InvalidateCOBsOnZoneChange(dataSet, EntIndex_t(z));
        ok = DeleteZone(dataSet, EntIndex_t(z), false);
    }
    DataSetHooks.ResetScratchFlagsOnDataSetChange(dataSet);
    notify(StateChange_ZonesDeleted, zones, nullptr);
    return ok;
}

bool DeleteVars(DataSet_s *dataSet, const Set_a *vars) {
    if (!checkNotLocked(dataSet, "delete a variable")) return false;
    if (vars == nullptr || IsEmpty(vars)) {
        ErrMsg("Invalid set of variables to delete");
        return false;
    }
    for (SetIndex_t v = GetNextMember(vars, -1); v >= 0; v = GetNextMember(vars, v)) {
        VarLockMode_e mode;
        const char *owner;
        if (VariableIsLocked(dataSet, EntIndex_t(v), &mode, &owner) && mode == VarLockMode_Delete) {
            VariableShowLockError("delete variable", EntIndex_t(v), owner);
            return false;
        }
    }
    DataSetHooks.InvalidateCOBsOnVarChange(dataSet);
    for (SetIndex_t v = GetPrevMember(vars, -1); v >= 0; v = GetPrevMember(vars, v)) {
        if (v >= dataSet->NumVars) continue;
        DataSetHooks.FrameStyleDeleteVar(dataSet, EntIndex_t(v));
        DataSetDeleteVar(dataSet, EntIndex_t(v));
    }
    DataSetHooks.ResetScratchFlagsOnDataSetChange(dataSet);
    notify(StateChange_VarsDeleted, nullptr, vars);
    return true;
}

// ---- resizing -----------------------------------------------------------------------------

bool ReallocZone(DataSet_s *dataSet, EntIndex_t zone, LgIndex_t i, LgIndex_t j, LgIndex_t k) {
    if (!checkNotLocked(dataSet, "reallocate a zone")) return false;
    ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    bool isFE = ZoneTypeIsFE(spec->Type);
    ZoneSpec_s newSpec = *spec;  // shape only: the name and aux data stay with the old record
    newSpec.NumPtsI = i;
    newSpec.NumPtsJ = j;
    if (!isFE) newSpec.NumPtsK = k;
    if (!orderedDimensionsAreValid(&newSpec)) return false;
    bool samePoints = CalcNumPointValuesNeeded(&newSpec) == CalcNumPointValuesNeeded(spec);
    bool sameShape = newSpec.NumPtsI == spec->NumPtsI && newSpec.NumPtsJ == spec->NumPtsJ &&
                     newSpec.NumPtsK == spec->NumPtsK;
    if (sameShape) return true;
    DataSetHooks.PickZoneDeleted(dataSet, zone);

    bool nodalChanged = isFE ? !samePoints : true;
    bool cellChanged = isFE ? newSpec.NumPtsJ != spec->NumPtsJ : true;
    // New objects for every changing variable, values copied by position.
    std::vector<std::pair<EntIndex_t, FieldData_a>> newVars;
    bool ok = true;
    forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
        FieldData_a old = ok ? GetReadableNativeFieldDataPtr(dataSet, zone, var) : nullptr;
        if (!ok) return;
        if (old == nullptr) {
            ok = false;
            return;
        }
        bool changes = old->Location == ValueLocation_Nodal ? nodalChanged : cellChanged;
        if (!changes) return;
        FieldData_a copy = FieldDataAlloc();
        ok = copy != nullptr &&
             FieldDataDefineData(copy, LgIndex_t(CalcNumValuesNeededAt(&newSpec, old->Location)), old->Type,
                                 old->Location) &&
             (IsFieldDataPassive(old) ? (FieldDataMakePassive(copy), true) : FieldDataAllocStorableData(copy, false));
        if (ok && !IsFieldDataPassive(old)) {
            if (isFE) {
                for (LgIndex_t n = 0; n < copy->NumValues; n++)
                    SetFieldValue(copy, n, n < old->NumValues ? GetFieldValue(old, n) : 0.0);
            } else {
                // The same (i, j, k) in both zones; a cell-centred value stands at its lowest corner.
                LgIndex_t oi = spec->NumPtsI, oj = spec->NumPtsJ, ok_ = spec->NumPtsK;
                LgIndex_t ni = newSpec.NumPtsI, nj = newSpec.NumPtsJ;
                for (LgIndex_t n = 0; n < copy->NumValues; n++) {
                    LgIndex_t ii = n % ni, jj = (n / ni) % nj, kk = n / (int64_t(ni) * nj);
                    int64_t oldIndex = ii + int64_t(jj) * oi + int64_t(kk) * oi * oj;
                    bool inside = ii < oi && jj < oj && kk < ok_ && oldIndex < old->NumValues;
                    SetFieldValue(copy, n, inside ? GetFieldValue(old, LgIndex_t(oldIndex)) : 0.0);
                }
            }
        }
        if (!ok) {
            FieldDataDealloc(&copy, true);
            return;
        }
        newVars.emplace_back(var, copy);
    });
    // New connectivity when the cells change.
    NodeMap_a nodeMap = nullptr;
    FaceNeighbor_a faceNeighbor = nullptr;
    DataElementState_a elementState = nullptr;
    bool cellsChange = cellChanged;
    if (ok && cellsChange) {
        if (isFE) {
            ok = (nodeMap = AllocNodeMapPtr(newSpec.NumPtsJ, newSpec.Type, false)) != nullptr;
            if (ok && zoneData->NodeMap != nullptr) {
                LgIndex_t keep = std::min(newSpec.NumPtsJ, zoneData->NodeMap->NumElements);
                int perElement = nodeMap->NodesPerElement;
                for (LgIndex_t e = 0; e < keep; e++)
                    for (int c = 0; c < perElement; c++) {
                        LgIndex_t node = NodeMapGetNode(zoneData->NodeMap, e, c);
                        NodeMapSetNode(nodeMap, e, c, node >= newSpec.NumPtsI ? 0 : node);
                    }
            }
        }
        if (ok && ZoneNeedsFaceNeighbors(&newSpec)) ok = (faceNeighbor = FaceNeighborAlloc(&newSpec, false)) != nullptr;
        if (ok) {
            LgIndex_t elements =
                isFE ? newSpec.NumPtsJ : LgIndex_t(int64_t(newSpec.NumPtsI) * newSpec.NumPtsJ * newSpec.NumPtsK);
            ok = (elementState = DataElementStateAlloc(elements, newSpec.Type, false)) != nullptr;
        }
    } else if (ok && isFE && !samePoints && zoneData->NodeMap != nullptr) {
        // Same elements, fewer points: node numbers past the end become 0 in a private copy.
        ok = (nodeMap = NodeMapDuplicate(zoneData->NodeMap, false)) != nullptr;
        if (ok)
            for (int64_t n = 0; n < int64_t(nodeMap->NumElements) * nodeMap->NodesPerElement; n++)
                if (nodeMap->Nodes[n] >= newSpec.NumPtsI) nodeMap->Nodes[n] = 0;
    }
    if (!ok) {
        for (auto &[var, fieldData] : newVars) FieldDataDealloc(&fieldData, true);
        DeallocNodeMapPtr(&nodeMap);
        FaceNeighborDealloc(&faceNeighbor);
        DataElementStateDealloc(&elementState);
        OutOfMemoryMsg();
        return false;
    }
    // Everything exists: swap it in.
    spec->ICellDim = spec->JCellDim = spec->KCellDim = 0;
    spec->NumPtsI = newSpec.NumPtsI;
    spec->NumPtsJ = newSpec.NumPtsJ;
    spec->NumPtsK = newSpec.NumPtsK;
    for (auto &[var, fieldData] : newVars) {
        SetNativeFieldDataPtr(dataSet, zone, var, fieldData);
        DataSetHooks.InvalidateDerivedVar(dataSet, zone, var);
    }
    if (zoneData->ThreeDVarList != nullptr) ArrayListDeleteAllItems(zoneData->ThreeDVarList, nullptr, 0);
    if (nodeMap != nullptr) {
        DeallocNodeMapPtr(&zoneData->NodeMap);
        zoneData->NodeMap = nodeMap;
    }
    if (cellsChange) {
        FaceNeighborDealloc(&zoneData->FN);
        zoneData->FN = faceNeighbor;
        DataElementStateDealloc(&zoneData->DataElementState);
        zoneData->DataElementState = elementState;
    }
    DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment(dataSet, zone, 0);
    InvalidateAllScratchOnZoneStructureChange(dataSet, zone, nodalChanged, cellChanged);
    return true;
}

// ---- creating -----------------------------------------------------------------------------

bool GoCreateDataSet(const char *title, EntIndex_t numVars, const StringList_s *varNames, bool resetStyle) {
    DataSet_s *dataSet = AllocDataSet(title, true, false);
    bool ok = dataSet != nullptr;
    for (EntIndex_t v = 0; ok && v < numVars; v++) {
        const char *name = varNames != nullptr && v < StringListCount(varNames) ? StringListGetStringRef(varNames, v)
                                                                                : nullptr;
        std::string fallback = "V" + std::to_string(v + 1);
        ok = DataSetAllocVar(dataSet, v) && DataSetAllocVarData(dataSet, v, name != nullptr ? name : fallback.c_str());
    }
    if (ok) ok = DataSetHooks.AttachDataSetToCurFrame(dataSet, resetStyle);
    if (!ok) {
        DeallocDataSet(&dataSet);
        ErrMsg("Error while creating new data set");
    }
    return ok;
}

namespace {

// The current data set, made with numVars variables "X", "Y", "Z" if the frame has none.
DataSet_s *dataSetForCreation(EntIndex_t numVars) {
    if (DataSet_s *dataSet = DataSetHooks.CurrentDataSet()) return dataSet;
    StringList_s *names = StringListAlloc();
    const char *axisNames[3] = {"X", "Y", "Z"};
    for (EntIndex_t v = 0; names != nullptr && v < numVars && v < 3; v++) StringListAppendString(names, axisNames[v]);
    bool ok = names != nullptr && GoCreateDataSet("", numVars, names, true);
    StringListDealloc(&names);
    return ok ? DataSetHooks.CurrentDataSet() : nullptr;
}

// Adds an ordered zone of i x j x k at the end of the numbering with the given value type.
bool addOrderedZone(DataSet_s *dataSet, const char *name, LgIndex_t i, LgIndex_t j, LgIndex_t k,
                    FieldDataType_e type, EntIndex_t *zone) {
    ZoneSpec_s spec;
    spec.NumPtsI = i;
    spec.NumPtsJ = j;
    spec.NumPtsK = k;
    spec.Name = const_cast<char *>(name);  // copied by the zone
    std::vector<FieldDataType_e> types(size_t(dataSet->NumVars), type);
    *zone = dataSet->NumZones;
    return AddZone(&spec, types.data(), nullptr, *zone, nullptr, nullptr, -1, false);
}

void announceNewZone(DataSet_s *dataSet, EntIndex_t zone) {
    DataSetHooks.ActivateFieldMapsForNewZonesAdded(dataSet);
    SetPtr zones = singleMemberSet(zone);
    notify(StateChange_ZonesAdded, zones.get(), nullptr);
}

bool checkCreationVar(DataSet_s *dataSet, EntIndex_t var, const char *which, const char *creator) {
    if (var >= 0 && IsVarEnabled(dataSet, var)) return true;
    ErrMsg("Invalid %sVar request in %s", which, creator);
    return false;
}

}  // namespace

bool CreateRectangularZone(LgIndex_t i, LgIndex_t j, LgIndex_t k, double xMin, double yMin, double zMin,
                           double xMax, double yMax, double zMax, EntIndex_t xVar, EntIndex_t yVar,
                           EntIndex_t zVar, FieldDataType_e type) {
    if (i < 1 || j < 1 || k < 1) {
        ErrMsg("Invalid dimensions for rectangular zone creation.");
        return false;
    }
    DataSet_s *dataSet = dataSetForCreation(k < 2 ? 2 : 3);
    if (dataSet == nullptr) return false;
    const char *creator = "CreateRectangularZone";
    if (!checkCreationVar(dataSet, xVar, "X", creator) || !checkCreationVar(dataSet, yVar, "Y", creator) ||
        (k > 1 && !checkCreationVar(dataSet, zVar, "Z", creator)))
        return false;
    int above = (i > 1) + (j > 1) + (k > 1);
    EntIndex_t zone;
    if (!addOrderedZone(dataSet, above == 1 ? "1-D Zone" : "Rectangular zone", i, j, k, type, &zone)) return false;
    FieldData_a x = GetWritableNativeFieldDataPtr(dataSet, zone, xVar);
    FieldData_a y = GetWritableNativeFieldDataPtr(dataSet, zone, yVar);
    FieldData_a z = k > 1 || (zVar >= 0 && IsVarEnabled(dataSet, zVar)) ? GetWritableNativeFieldDataPtr(dataSet, zone, zVar)
                                                                         : nullptr;
    if (x == nullptr || y == nullptr) return false;
    auto step = [](double min, double max, LgIndex_t n, LgIndex_t at) {
        return n > 1 ? min + (max - min) * double(at) / double(n - 1) : min;
    };
    LgIndex_t n = 0;
    for (LgIndex_t kk = 0; kk < k; kk++)
        for (LgIndex_t jj = 0; jj < j; jj++)
            for (LgIndex_t ii = 0; ii < i; ii++, n++) {
                SetFieldValue(x, n, step(xMin, xMax, i, ii));
                SetFieldValue(y, n, step(yMin, yMax, j, jj));
                if (z != nullptr) SetFieldValue(z, n, step(zMin, zMax, k, kk));
            }
    announceNewZone(dataSet, zone);
    return true;
}

bool CreateCircularZone(LgIndex_t i, LgIndex_t j, LgIndex_t k, double xCenter, double yCenter, double zMin,
                        double zMax, double radius, EntIndex_t xVar, EntIndex_t yVar, EntIndex_t zVar,
                        FieldDataType_e type) {
    if (i < 2 || j < 2 || k < 1) {
        ErrMsg("Invalid dimensions for circular zone creation");
        return false;
    }
    DataSet_s *dataSet = dataSetForCreation(k < 2 ? 2 : 3);
    if (dataSet == nullptr) return false;
    const char *creator = "CreateCircularZone";
    if (!checkCreationVar(dataSet, xVar, "X", creator) || !checkCreationVar(dataSet, yVar, "Y", creator) ||
        (k > 1 && !checkCreationVar(dataSet, zVar, "Z", creator)))
        return false;
    EntIndex_t zone;
    if (!addOrderedZone(dataSet, "Circular zone", i, j, k, type, &zone)) return false;
    FieldData_a x = GetWritableNativeFieldDataPtr(dataSet, zone, xVar);
    FieldData_a y = GetWritableNativeFieldDataPtr(dataSet, zone, yVar);
    FieldData_a z = k > 1 ? GetWritableNativeFieldDataPtr(dataSet, zone, zVar) : nullptr;
    if (x == nullptr || y == nullptr || (k > 1 && z == nullptr)) return false;
    // Cosine and sine of each J angle. At the quarter and half turns the exact values stand in
    // for the library's, so the last J lands on the first and the circle closes exactly.
    std::vector<double> cosines(static_cast<size_t>(j)), sines(static_cast<size_t>(j));
    LgIndex_t turns = j - 1;
    for (LgIndex_t jj = 0; jj < j; jj++) {
        double angle = 2.0 * M_PI * double(jj) / double(turns);
        cosines[size_t(jj)] = cos(angle);
        sines[size_t(jj)] = sin(angle);
        LgIndex_t quarter = turns % 4 == 0 ? turns / 4 : 0;
        LgIndex_t half = turns % 2 == 0 ? turns / 2 : 0;
        if (jj == 0 || jj == turns) {
            cosines[size_t(jj)] = 1.0;
            sines[size_t(jj)] = 0.0;
        } else if (half != 0 && jj == half) {
            cosines[size_t(jj)] = -1.0;
            sines[size_t(jj)] = 0.0;
        } else if (quarter != 0 && jj == quarter) {
            cosines[size_t(jj)] = 0.0;
            sines[size_t(jj)] = 1.0;
        } else if (quarter != 0 && jj == 3 * quarter) {
            cosines[size_t(jj)] = 0.0;
            sines[size_t(jj)] = -1.0;
        }
    }
    LgIndex_t n = 0;
    for (LgIndex_t kk = 0; kk < k; kk++)
        for (LgIndex_t jj = 0; jj < j; jj++)
            for (LgIndex_t ii = 0; ii < i; ii++, n++) {
                double r = radius * double(ii) / double(i - 1);
                SetFieldValue(x, n, xCenter + r * cosines[size_t(jj)]);
                SetFieldValue(y, n, yCenter + r * sines[size_t(jj)]);
                if (z != nullptr) SetFieldValue(z, n, k > 1 ? zMin + (zMax - zMin) * double(kk) / double(k - 1) : zMin);
            }
    announceNewZone(dataSet, zone);
    return true;
}

bool CreateSimpleZone(LgIndex_t numValues, EntIndex_t numVars, const double *values, FieldDataType_e type,
                      bool resetStyle) {
    if (numValues < 1 || numVars < 1 || values == nullptr) {
        ErrMsg("Invalid list of values");
        return false;
    }
    DataSet_s *dataSet = DataSetHooks.CurrentDataSet();
    if (dataSet == nullptr) {
        if (!GoCreateDataSet("", numVars, nullptr, resetStyle)) return false;
        dataSet = DataSetHooks.CurrentDataSet();
    }
    // Extra variables the data set lacks are added, named "V%d".
    for (EntIndex_t v = dataSet->NumVars; v < numVars; v++) {
        std::string name = "V" + std::to_string(v + 1);
        if (!AddVar(name.c_str(), nullptr, nullptr, false, nullptr)) return false;
    }
    EntIndex_t zone;
    if (!addOrderedZone(dataSet, "Enter Values", numValues, 1, 1, type, &zone)) return false;
    for (EntIndex_t v = 0; v < numVars; v++) {
        if (!IsVarEnabled(dataSet, v)) continue;
        FieldData_a fieldData = GetWritableNativeFieldDataPtr(dataSet, zone, v);
        if (fieldData == nullptr) return false;
        for (LgIndex_t n = 0; n < numValues; n++) SetFieldValue(fieldData, n, values[int64_t(n) * numVars + v]);
    }
    announceNewZone(dataSet, zone);
    return true;
}

bool CreateSimpleXYZone(LgIndex_t numValues, const XY_s *xyPairs, FieldDataType_e type, bool resetStyle) {
    if (numValues < 1 || xyPairs == nullptr) {
        ErrMsg("Invalid list of values");
        return false;
    }
    EntIndex_t axisVars[3];
    DataSetHooks.GetAxisVars(axisVars);
    EntIndex_t numVars = EntIndex_t(std::max(axisVars[0], axisVars[1]) + 1);
    std::vector<double> values(size_t(numValues) * size_t(numVars), 0.0);
    for (LgIndex_t n = 0; n < numValues; n++) {
        values[size_t(n) * numVars + size_t(axisVars[0])] = xyPairs[n].X;
        values[size_t(n) * numVars + size_t(axisVars[1])] = xyPairs[n].Y;
    }
    return CreateSimpleZone(numValues, numVars, values.data(), type, resetStyle);
}

// ---- duplicating --------------------------------------------------------------------------

namespace {

// A one-based macro range made zero-based against a dimension: Max 0 is the last index, a
// negative Max counts back from it. False if the range is empty or outside the zone.
bool GetFinalIndexRange(IndexRange_s range, LgIndex_t dimension, IndexRange_s *final) {
    LgIndex_t min = range.Min < 1 ? 1 : range.Min;
    LgIndex_t max = range.Max <= 0 ? dimension + range.Max : range.Max;
    LgIndex_t skip = range.Skip < 1 ? 1 : range.Skip;
    if (min > dimension || max > dimension || max < 1 || min > max) return false;
    *final = {min - 1, max - 1, skip};
    return true;
}

// min, min+skip, ..., always ending with max.
LgIndex_t rangeCount(const IndexRange_s &r) { return (r.Max - r.Min + r.Skip - 1) / r.Skip + 1; }
LgIndex_t rangeIndex(const IndexRange_s &r, LgIndex_t n) { return std::min(r.Min + n * r.Skip, r.Max); }

}  // namespace

bool DuplicateZone(EntIndex_t zone, IndexRange_s iRange, IndexRange_s jRange, IndexRange_s kRange) {
    DataSet_s *dataSet = DataSetAvailable("duplicate a zone");
    if (dataSet == nullptr) return false;
    if (zone < 0 || !IsZoneEnabled(dataSet, zone)) {
        ErrMsg("Invalid source zone requested for zone duplication");
        return false;
    }
    const ZoneSpec_s *source = GetZoneSpec(dataSet, zone);
    bool isFE = ZoneTypeIsFE(source->Type);
    IndexRange_s ri{0, source->NumPtsI - 1, 1}, rj{0, source->NumPtsJ - 1, 1}, rk{0, source->NumPtsK - 1, 1};
    if (!isFE && (!GetFinalIndexRange(iRange, source->NumPtsI, &ri) || !GetFinalIndexRange(jRange, source->NumPtsJ, &rj) ||
                  !GetFinalIndexRange(kRange, source->NumPtsK, &rk))) {
        ErrMsg("Invalid index range");
        return false;
    }
    ZoneSpec_s spec;
    spec.Type = source->Type;
    spec.ParentZone = source->ParentZone;
    spec.StrandID = source->StrandID;
    spec.SolutionTime = source->SolutionTime;
    spec.BuildZoneOptInfo = source->BuildZoneOptInfo;
    spec.NumPtsK = source->NumPtsK;
    spec.FNMode = source->FNMode;
    if (isFE) {
        spec.NumPtsI = source->NumPtsI;
        spec.NumPtsJ = source->NumPtsJ;
    } else {
        spec.NumPtsI = rangeCount(ri);
        spec.NumPtsJ = rangeCount(rj);
        spec.NumPtsK = rangeCount(rk);
    }
    bool whole = isFE || (spec.NumPtsI == source->NumPtsI && spec.NumPtsJ == source->NumPtsJ &&
                          spec.NumPtsK == source->NumPtsK && ri.Skip == 1 && rj.Skip == 1 && rk.Skip == 1);
    spec.Name = const_cast<char *>(whole ? (source->Name != nullptr ? source->Name : "") : "SubZone");

    // A whole zone shares what it may with its source; a subset shares nothing.
    std::vector<EntIndex_t> shareFrom(size_t(dataSet->NumVars), -1);
    std::vector<FieldDataType_e> types(size_t(dataSet->NumVars), FieldDataType_Float);
    std::vector<ValueLocation_e> locations(size_t(dataSet->NumVars), ValueLocation_Nodal);
    forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
        FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
        if (fieldData == nullptr) return;
        types[size_t(var)] = fieldData->Type;
        locations[size_t(var)] = fieldData->Location;
        if (whole && OkToShareNativeVarBetweenZones(dataSet, zone, &spec, fieldData->Location, var))
            shareFrom[size_t(var)] = zone;
    });
    bool shareConnectivity = whole && OkToShareConnectivityBetweenZones(dataSet, zone, &spec);
    EntIndex_t newZone = dataSet->NumZones;
    if (!AddZone(&spec, types.data(), locations.data(), newZone, shareFrom.data(), nullptr,
                 shareConnectivity ? zone : -1, false))
        return false;
    if (spec.ParentZone >= 0) dataSet->HasParentZones = true;
    DataSetHooks.InvalidateCOBsOnZoneChange(dataSet, newZone);

    bool ok = true;
    forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
        if (!ok || shareFrom[size_t(var)] >= 0) return;
        FieldData_a from = GetReadableNativeFieldDataPtr(dataSet, zone, var);
        FieldData_a to = GetWritableNativeFieldDataPtr(dataSet, newZone, var);
        if (from == nullptr || to == nullptr) {
            ok = false;
            return;
        }
        if (IsFieldDataPassive(from)) return;
        if (whole) {
            CopyFieldData(to, from);
            return;
        }
        bool cellCentered = from->Location == ValueLocation_CellCentered;
        // Cell values stand at their lowest corner; the last cell index of a direction is dim-2.
        auto clampCell = [&](LgIndex_t index, LgIndex_t dimension) {
            return cellCentered ? std::min(index, std::max(dimension - 2, 0)) : index;
        };
        LgIndex_t si = source->NumPtsI, sj = source->NumPtsJ;
        LgIndex_t n = 0;
        for (LgIndex_t kk = 0; kk < spec.NumPtsK; kk++)
            for (LgIndex_t jj = 0; jj < spec.NumPtsJ; jj++)
                for (LgIndex_t ii = 0; ii < spec.NumPtsI; ii++, n++) {
                    if (n >= to->NumValues) continue;
                    LgIndex_t i = clampCell(rangeIndex(ri, ii), si);
                    LgIndex_t j = clampCell(rangeIndex(rj, jj), sj);
                    LgIndex_t k = clampCell(rangeIndex(rk, kk), source->NumPtsK);
                    int64_t from_ = i + int64_t(j) * si + int64_t(k) * si * sj;
                    if (from_ < from->NumValues) SetFieldValue(to, n, GetFieldValue(from, LgIndex_t(from_)));
                }
    });
    if (ok && whole) {
        ZoneData_s *fromData = GetZoneData(dataSet, zone);
        ZoneData_s *toData = GetZoneData(dataSet, newZone);
        if (!shareConnectivity && fromData->NodeMap != nullptr && toData->NodeMap != nullptr)
            CopyNodeMap(toData->NodeMap, fromData->NodeMap);
        ZoneSpec_s *newSpec = GetZoneSpec(dataSet, newZone);
        if (source->AuxData != nullptr) {
            AuxDataDealloc(&newSpec->AuxData);
            newSpec->AuxData = AuxDataCopy(source->AuxData, false);
            ok = newSpec->AuxData != nullptr;
        }
    }
    if (!ok) {
        DeleteZone(dataSet, newZone, false);
        return false;
    }
    announceNewZone(dataSet, newZone);
    return true;
}

bool CreateMirrorZones(const Set_a *zones, char axis) {
    DataSet_s *dataSet = DataSetAvailable("mirror zones");
    if (dataSet == nullptr) return false;
    int axisIndex = axis == 'X' || axis == 'x' ? 0 : axis == 'Y' || axis == 'y' ? 1 : axis == 'Z' || axis == 'z' ? 2 : -1;
    if (axisIndex < 0) {
        ErrMsg("Invalid mirror axis");
        return false;
    }
    if (axisIndex == 2 && !DataSetHooks.PlotTypeIs3D()) {
        ErrMsg("Plot type must be 3D to mirror about Z axis.");
        return false;
    }
    Set_a *sourceZones = nullptr;
    if (!GetFinalZoneSetForActionFunction(zones, &sourceZones, -1, true)) return false;
    SetPtr sources(sourceZones);
    EntIndex_t axisVars[3];
    DataSetHooks.GetAxisVars(axisVars);
    EntIndex_t mirrorVar = axisVars[axisIndex];
    if (!IsVarEnabled(dataSet, mirrorVar)) {
        ErrMsg("Invalid mirror axis");
        return false;
    }
    EntIndex_t firstNew = dataSet->NumZones;
    SetPtr added(AllocSet(true));
    std::vector<EntIndex_t> mirrorOf(size_t(firstNew), -1);
    bool ok = added != nullptr;
    forEachMember(sources.get(), [&](EntIndex_t zone) {
        if (!ok) return;
        ok = DuplicateZone(zone, {1, 0, 1}, {1, 0, 1}, {1, 0, 1});
        if (!ok) return;
        EntIndex_t mirror = EntIndex_t(dataSet->NumZones - 1);
        mirrorOf[size_t(zone)] = mirror;
        AddToSet(added.get(), mirror, true);
        std::string name = std::string("Mirror: ") + (GetZoneName(dataSet, zone) ? GetZoneName(dataSet, zone) : "") +
                           " (zone " + std::to_string(zone + 1) + ")";
        SetZoneName(dataSet, mirror, name.c_str());
        ok = BranchVariable(dataSet, mirror, mirrorVar);
        FieldData_a values = ok ? GetWritableNativeFieldDataPtr(dataSet, mirror, mirrorVar) : nullptr;
        ok = values != nullptr;
        if (ok && !IsFieldDataPassive(values))
            for (LgIndex_t n = 0; n < values->NumValues; n++) SetFieldValue(values, n, -GetFieldValue(values, n));
    });
    // A parent among the mirrored zones becomes the mirror of that parent.
    forEachMember(added.get(), [&](EntIndex_t mirror) {
        EntIndex_t parent = GetZoneSpec(dataSet, mirror)->ParentZone;
        if (parent >= 0 && parent < firstNew && mirrorOf[size_t(parent)] >= 0)
            SetZoneParentZone(dataSet, mirror, mirrorOf[size_t(parent)]);
    });
    return ok;
}

// ---- values -------------------------------------------------------------------------------

bool SetFieldValueInCurrentDataSet(EntIndex_t zone, EntIndex_t var, LgIndex_t index, double value, bool doBranch,
                                   bool *changed) {
    *changed = false;
    DataSet_s *dataSet = DataSetAvailable("set a field value");
    if (dataSet == nullptr) return false;
    FieldData_a fieldData = zone >= 0 && zone < dataSet->NumZones && var >= 0 && var < dataSet->NumVars
                                ? GetReadableNativeFieldDataPtr(dataSet, zone, var)
                                : nullptr;
    if (fieldData == nullptr) {
        ErrMsg("Unable to fetch variable %d from zone %d for modification.", var + 1, zone + 1);
        return false;
    }
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    if (!ZoneTypeIsFE(spec->Type) && fieldData->Location == ValueLocation_CellCentered) {
        LgIndex_t iDim = spec->NumPtsI, jDim = spec->NumPtsJ;
        LgIndex_t i = index % iDim, j = (index / iDim) % jDim, k = LgIndex_t(index / (int64_t(iDim) * jDim));
        LgIndex_t iMax = std::max(spec->NumPtsI - 1, 1), jMax = std::max(spec->NumPtsJ - 1, 1),
                  kMax = std::max(spec->NumPtsK - 1, 1);
        if (index < 0 || i >= iMax || j >= jMax || k >= kMax) {
            ErrMsg("Invalid INDEX (%d) in SetFieldValue command.\nINDEX is equivalent to I=%d, J=%d, K=%d and\n"
                   "must be within the following ranges:\n    1 <= I <= %d\n    1 <= J <= %d\n    1 <= K <= %d",
                   index + 1, i + 1, j + 1, k + 1, iMax, jMax, kMax);
            return false;
        }
    } else if (index < 0 || index >= fieldData->NumValues) {
        ErrMsg("Invalid INDEX (%d) in SetFieldValue command.\n(1 <= Index <= %d)", index + 1, fieldData->NumValues);
        return false;
    }
    if (EquivalentValues(GetFieldValue(fieldData, index), value, fieldData->Type)) return true;
    if (doBranch && !BranchVariable(dataSet, zone, var)) return false;
    fieldData = GetWritableNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr) return false;
    SetFieldValue(fieldData, index, value);
    FieldDataInvalidateMinMax(fieldData);
    *changed = true;
    return true;
}

bool UpdateNativeVarMinMaxForZoneVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var, bool doLoad) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr) return false;
    if (IsFieldDataMinMaxValid(fieldData)) return true;
    if (!IsFieldDataReadable(fieldData)) {
        if (!doLoad) return false;
        fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
        if (fieldData == nullptr) return false;
    }
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    double min = 1.0E150, max = -1.0E150;
    bool ok;
    bool oneDimensional = (spec->NumPtsI > 1) + (spec->NumPtsJ > 1) + (spec->NumPtsK > 1) <= 1;
    if (ZoneTypeIsFE(spec->Type) || fieldData->Location == ValueLocation_Nodal) {
        ok = FieldDataCalcMinMaxRange(fieldData, 0, fieldData->NumValues, &min, &max);
    } else if (oneDimensional) {
        ok = FieldDataCalcMinMaxRange(fieldData, 0, LgIndex_t(CalcNumElementValuesNeeded(spec)), &min, &max);
    } else {
        // Cell values stop one short of each dimension: the last slot of a line is a ghost.
        LgIndex_t iEnd = std::max(spec->NumPtsI - 1, 1), jEnd = std::max(spec->NumPtsJ - 1, 1),
                  kEnd = std::max(spec->NumPtsK - 1, 1);
        ok = FieldDataCalcMinMaxOrdered(fieldData, iEnd, jEnd, kEnd, spec->NumPtsI, spec->NumPtsJ, &min, &max);
    }
    if (ok) FieldDataSetMinMax(fieldData, min, max);
    return ok;
}

bool GetNativeVarMinMaxForZoneVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var, bool doLoad, double *min,
                                  double *max) {
    if (!UpdateNativeVarMinMaxForZoneVar(dataSet, zone, var, doLoad)) return false;
    FieldDataGetMinMax(GetNativeFieldDataPtr(dataSet, zone, var), min, max);
    return true;
}

// ---- whole data sets ----------------------------------------------------------------------

bool ConcatDataSets(DataSet_s *destination, DataSet_s *source, bool mergeStrands, bool showErr) {
    auto fail = [&](const char *message) {
        if (showErr) ErrMsg("%s", message);
        return false;
    };
    if (destination == nullptr || source == nullptr)
        return fail("Invalid data sets for concatenation.  Source or destination data sets not available.");
    if (destination->NumVars != source->NumVars)
        return fail("Invalid data sets for concatenation.  The source and destination data sets do not have the "
                    "same number of variables.");
    if (!EqualSets(destination->EnabledVars, source->EnabledVars))
        return fail("Invalid data sets for concatenation.  The source and desitnation data sets do not have the "
                    "same enabled variables.");
    if (destination->NumCustomLabelSets + source->NumCustomLabelSets > MaxCustomLabelSets)
        return fail("Invalid data sets for concatenation.  The total number of custom label sets exceeds the "
                    "maximum.");
    EntIndex_t offset = destination->NumZones;
    if (int(offset) + int(source->NumZones) > MaxNumZonesOrVars)
        return fail("Unable to append new data set. Out of memory.");

    // Everything that can fail for memory is done first, into copies, so a failure changes nothing.
    SetPtr enabled(AllocSet(false));
    bool ok = enabled && CopySet(enabled.get(), destination->EnabledZones, false);
    for (SetIndex_t z = GetNextMember(source->EnabledZones, -1); ok && z >= 0; z = GetNextMember(source->EnabledZones, z))
        ok = AddToSet(enabled.get(), z + offset, false);
    ok = ok && ArrayListEnlargeCapacity(destination->ZoneSpecList, offset + source->NumZones) &&
         ArrayListEnlargeCapacity(destination->ZoneDataList, offset + source->NumZones);
    AuxData_s *mergedAux = nullptr;
    if (ok && source->AuxData != nullptr) {
        mergedAux = destination->AuxData != nullptr ? AuxDataCopy(destination->AuxData, false) : AuxDataAlloc();
        ok = mergedAux != nullptr;
        for (LgIndex_t n = 0; ok && n < AuxDataGetNumItems(source->AuxData); n++) {
            const char *name;
            ArbParam_t value;
            AuxDataType_e type;
            bool retain;
            AuxDataGetItemByIndex(source->AuxData, n, &name, &value, &type, &retain);
            ArbParam_t oldValue;
            AuxDataType_e oldType;
            bool oldRetain;
            if (AuxDataGetItemByName(mergedAux, name, &oldValue, &oldType, &oldRetain)) {
                std::string joined = std::string(reinterpret_cast<const char *>(oldValue)) + "|" +
                                     reinterpret_cast<const char *>(value);
                ok = AuxDataSetItem(mergedAux, name, ArbParam_t(joined.c_str()), AuxDataType_String, retain || oldRetain);
            } else {
                ok = AuxDataSetItem(mergedAux, name, value, type, retain);
            }
        }
    }
    StringList_s *names = ok && source->VarNames != nullptr ? StringListCopy(source->VarNames) : nullptr;
    if (!ok || (source->VarNames != nullptr && names == nullptr)) {
        AuxDataDealloc(&mergedAux);
        StringListDealloc(&names);
        return fail("Unable to append new data set. Out of memory.");
    }

    // Zones move over; numbers that point at zones are raised by the old count.
    for (EntIndex_t z = 0; z < source->NumZones; z++) {
        ZoneSpec_s *spec = GetZoneSpec(source, z);
        if (spec != nullptr && spec->ParentZone >= 0) {
            spec->ParentZone = EntIndex_t(spec->ParentZone + offset);
            destination->HasParentZones = true;
        }
        ArrayListItem_u item;
        item.VoidPtr = spec;
        ArrayListSetItem(destination->ZoneSpecList, offset + z, item, nullptr, 0);
        item.VoidPtr = GetZoneData(source, z);
        ArrayListSetItem(destination->ZoneDataList, offset + z, item, nullptr, 0);
        DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment(destination, EntIndex_t(offset + z), 0);
    }
    CopySet(destination->EnabledZones, enabled.get(), false);
    ArrayListDeleteAllItems(source->ZoneSpecList, nullptr, 0);
    ArrayListDeleteAllItems(source->ZoneDataList, nullptr, 0);
    ClearSet(source->EnabledZones);
    destination->NumZones = EntIndex_t(offset + source->NumZones);
    source->NumZones = 0;

    // Strands.
    LgIndex_t sourceStrands = source->StrandInfoList != nullptr ? source->StrandInfoList->count : 0;
    LgIndex_t destStrands = destination->StrandInfoList != nullptr ? destination->StrandInfoList->count : 0;
    for (LgIndex_t s = 0; s < sourceStrands; s++) {
        StrandInfo_s *info = GetStrandInfo(source, s);
        if (info == nullptr) continue;
        ShiftSet(info->ZoneMembers, 0, info->ZoneMembers->size - 1, offset);
        info->IsValid = false;
    }
    if (sourceStrands > 0 && destination->StrandInfoList != nullptr) {
        bool append = !mergeStrands || offset == 0;
        for (LgIndex_t s = 0; s < sourceStrands; s++) {
            StrandInfo_s *info = GetStrandInfo(source, s);
            LgIndex_t target = append ? destStrands + s : s;
            StrandInfo_s *existing = GetStrandInfo(destination, target);
            ArrayListItem_u item;
            if (existing != nullptr && info != nullptr) {
                AppendSet(existing->ZoneMembers, info->ZoneMembers, false);
                existing->IsValid = false;
                StrandInfoDealloc(&info);
            } else if (info != nullptr) {
                item.VoidPtr = info;
                ArrayListSetItem(destination->StrandInfoList, target, item, nullptr, 0);
            }
        }
        if (append)
            for (EntIndex_t z = offset; z < destination->NumZones; z++) {
                ZoneSpec_s *spec = GetZoneSpec(destination, z);
                if (spec != nullptr && spec->StrandID >= 0 && spec->StrandID < MaxNumZonesOrVars)
                    spec->StrandID += destStrands;
            }
        ArrayListDeleteAllItems(source->StrandInfoList, nullptr, 0);
    }

    // Custom labels move over.
    for (int16_t n = 0; n < source->NumCustomLabelSets; n++) {
        destination->CustomLabels[destination->NumCustomLabelSets++] = source->CustomLabels[n];
        source->CustomLabels[n] = nullptr;
    }
    source->NumCustomLabelSets = 0;

    if (mergedAux != nullptr) {
        AuxDataDealloc(&destination->AuxData);
        destination->AuxData = mergedAux;
    }
    if (names != nullptr) {
        StringListDealloc(&destination->VarNames);
        destination->VarNames = names;
    }
    return true;
}

void InvalidateAllScratchOnVarValueChange(DataSet_s *dataSet, const Set_a *zones, const Set_a *vars) {
    MarkDataSetAsChanged(dataSet);
    const Set_a *varSet = vars != nullptr ? vars : dataSet->EnabledVars;
    forEachMember(varSet, [&](EntIndex_t var) {
        // The zones asked for, widened to every zone sharing the variable with one of them.
        forEachMember(dataSet->EnabledZones, [&](EntIndex_t zone) {
            bool affected = zones == nullptr || InSet(zones, zone);
            if (!affected)
                forEachMember(zones, [&](EntIndex_t asked) {
                    affected = affected || VarIsSharedBetweenZones(dataSet, zone, asked, var);
                });
            if (!affected) return;
            if (FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var)) FieldDataInvalidateMinMax(fieldData);
            DataSetHooks.InvalidateDerivedVar(dataSet, zone, var);
        });
    });
    DataSetHooks.InvalidateCOBsOnVarChange(dataSet);
}

void InvalidateAllScratchOnZoneStructureChange(DataSet_s *dataSet, EntIndex_t zone, bool nodalChanged,
                                               bool cellCenteredChanged) {
    ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    if (zoneData->FN != nullptr) {
        spec->AutoAssignFN = true;
        spec->FNNumBndryConns = 0;
        InvalidateFaceNeighbor(zoneData->FN);
    }
    if (spec->Type == ZoneType_FETriangle || spec->Type == ZoneType_FEQuad)
        InvalidateOrientationState(zoneData->DataElementState);
    MarkDataSetAsChanged(dataSet);
    forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
        FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
        if (fieldData == nullptr) return;
        bool changed = fieldData->Location == ValueLocation_Nodal ? nodalChanged : cellCenteredChanged;
        if (changed) FieldDataInvalidateMinMax(fieldData);
        DataSetHooks.InvalidateDerivedVar(dataSet, zone, var);
    });
    DataSetHooks.ResetScratchFlagsOnDataSetChange(dataSet);
    DataSetHooks.InvalidateCOBsOnZoneChange(dataSet, zone);
}
