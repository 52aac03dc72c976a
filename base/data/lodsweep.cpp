// The sweep runs only on the mainline (the data-load module guarantees it): workers read loaded
// arrays without a lock, so nothing may be unloaded while they run.
#include "base/data/lodsweep.h"

#include <chrono>

#include "base/data/dataload.h"
#include "base/data/datahooks.h"
#include "base/kernel/genbase.h"

namespace {

using Clock = std::chrono::steady_clock;
Clock::time_point lastPreload;
bool havePreloaded = false;

bool minimizeMemory() { return GeneralBase.LoadOnDemandUnloadStrategy == UnloadStrategy_MinimizeMemoryUse; }

// Unloads one variable if the sweep may: readable, load on demand, stamped from 1 to limit.
void sweepOne(FieldData_a fieldData, int64_t limit) {
    if (fieldData == nullptr || !IsFieldDataLoadOnDemand(fieldData) || !IsFieldDataReadable(fieldData)) return;
    int64_t stamp = fieldData->LoadGeneration;
    if (stamp >= 1 && stamp <= limit) FieldDataUnload(fieldData);
}

struct SweepState {
    int64_t limit;
    bool done;
};

bool sweepDataSet(DataSet_s *dataSet, void *clientData) {
    auto *state = static_cast<SweepState *>(clientData);
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        auto zone = EntIndex_t(z);
        for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v)) {
            sweepOne(GetNativeFieldDataPtr(dataSet, zone, EntIndex_t(v)), state->limit);
            if (!minimizeMemory() && DataLoadIsMemoryBelowThreshold()) {
                state->done = true;
                return false;
            }
        }
        if (const ArrayList_s *threeD = GetZoneData(dataSet, zone)->ThreeDVarList)
            for (LgIndex_t n = 0; n < threeD->count; n++)
                sweepOne(static_cast<FieldData_a>(ArrayListGetItem(threeD, n).VoidPtr), state->limit);
        if (!minimizeMemory() && DataLoadIsMemoryBelowThreshold()) {
            state->done = true;
            return false;
        }
    }
    return true;
}

template <typename F>
void forEachMember(const Set_a *set, F visit) {
    for (SetIndex_t m = GetNextMember(set, -1); m >= 0; m = GetNextMember(set, m)) visit(EntIndex_t(m));
}

}  // namespace

void DataLoadSweep(int64_t limit) {
    if (limit < 0 || !GeneralBase.LoadOnDemandAllow) return;
    if (!minimizeMemory() && !DataLoadIsMemoryAboveThreshold()) return;
    SweepState state{limit, false};
    DataSetHooks.VisitFrameDataSets(sweepDataSet, &state);
}

void DataLoadUnloadAllVarsInUnNeededZones(DataSet_s *dataSet, const Set_a *neededZones) {
    if (!GeneralBase.LoadOnDemandAllow || !minimizeMemory()) return;
    forEachMember(dataSet->EnabledZones, [&](EntIndex_t zone) {
        if (neededZones != nullptr && InSet(neededZones, zone)) return;
        forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
            FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
            if (fieldData == nullptr || !IsFieldDataLoadOnDemand(fieldData) || !IsFieldDataReadable(fieldData)) return;
            // A variable shared with a needed zone stays.
            bool sharedWithNeeded = false;
            if (neededZones != nullptr && fieldData->VarShareRefCount > 1)
                forEachMember(neededZones, [&](EntIndex_t needed) {
                    sharedWithNeeded = sharedWithNeeded || GetNativeFieldDataPtr(dataSet, needed, var) == fieldData;
                });
            if (!sharedWithNeeded) FieldDataUnload(fieldData);
        });
        if (const ArrayList_s *threeD = GetZoneData(dataSet, zone)->ThreeDVarList)
            for (LgIndex_t n = 0; n < threeD->count; n++)
                if (auto fieldData = static_cast<FieldData_a>(ArrayListGetItem(threeD, n).VoidPtr))
                    if (IsFieldDataLoadOnDemand(fieldData)) FieldDataUnload(fieldData);
    });
}

void PreloadAllVariablesIfUnderThreshold(DataSet_s *dataSet, const Set_a *zones, const Set_a *vars) {
    if (dataSet == nullptr || minimizeMemory() || !DataLoadIsMemoryBelowThreshold()) return;
    Clock::time_point now = Clock::now();
    if (havePreloaded && now - lastPreload < std::chrono::milliseconds(1000)) return;
    const Set_a *zoneSet = zones != nullptr ? zones : dataSet->EnabledZones;
    const Set_a *varSet = vars != nullptr ? vars : dataSet->EnabledVars;
    // The bytes of what is not loaded must fit under the lower threshold.
    int64_t unloadedBytes = 0;
    forEachMember(zoneSet, [&](EntIndex_t zone) {
        forEachMember(varSet, [&](EntIndex_t var) {
            FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
            if (fieldData != nullptr && !IsFieldDataReadable(fieldData))
                unloadedBytes += FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
        });
    });
    int64_t room = (DataLoadGetMinKBytesThreshold() - DataLoadGetResidentKBytes()) * 1000;
    if (unloadedBytes <= 0 || unloadedBytes >= room) return;
    Clock::time_point deadline = now + std::chrono::milliseconds(500);
    bool stop = false;
    forEachMember(zoneSet, [&](EntIndex_t zone) {
        forEachMember(varSet, [&](EntIndex_t var) {
            if (stop) return;
            FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
            if (fieldData == nullptr || IsFieldDataReadable(fieldData)) return;
            if (GetReadableNativeFieldDataPtr(dataSet, zone, var) != nullptr && IsFieldDataMemoryMapped(fieldData)) {
                // Computing min and max brings the mapped pages in.
                double min, max;
                FieldDataCalcMinMaxRange(fieldData, 0, fieldData->NumValues, &min, &max);
                FieldDataSetMinMax(fieldData, min, max);
            }
            stop = Clock::now() > deadline || !DataLoadIsMemoryBelowThreshold();
        });
    });
    lastPreload = Clock::now();
    havePreloaded = true;
}

DataLoadState_s DataLoadStateSave(const DataSet_s *dataSet) {
    DataLoadState_s state;
    state.ReadableVars.resize(size_t(dataSet->NumZones));
    forEachMember(dataSet->EnabledZones, [&](EntIndex_t zone) {
        forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
            FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
            if (fieldData != nullptr && IsFieldDataReadable(fieldData)) state.ReadableVars[size_t(zone)].push_back(var);
        });
    });
    return state;
}

void DataLoadStateRestore(DataSet_s *dataSet, const DataLoadState_s &state) {
    for (size_t zone = state.ReadableVars.size(); zone-- > 0;) {
        if (EntIndex_t(zone) >= dataSet->NumZones || !IsZoneEnabled(dataSet, EntIndex_t(zone))) continue;
        const std::vector<EntIndex_t> &vars = state.ReadableVars[zone];
        for (size_t n = vars.size(); n-- > 0;)
            if (vars[n] < dataSet->NumVars) GetReadableNativeFieldDataPtr(dataSet, EntIndex_t(zone), vars[n]);
    }
}

Set_a *DataLoadGetNotLoadedVars(const DataSet_s *dataSet, EntIndex_t zone) {
    Set_a *vars = AllocSet(true);
    if (vars == nullptr) return nullptr;
    forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
        FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
        if (fieldData != nullptr && !IsFieldDataReadable(fieldData)) AddToSet(vars, var, true);
    });
    return vars;
}

bool DataLoadZoneHasNotLoadedVariables(const DataSet_s *dataSet, EntIndex_t zone) {
    bool any = false;
    forEachMember(dataSet->EnabledVars, [&](EntIndex_t var) {
        FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
        any = any || (fieldData != nullptr && !IsFieldDataReadable(fieldData));
    });
    return any;
}
