// The data set: a table of zones (rows) by variables (columns) whose cells are FieldData_a
// objects. Zone and variable numbers are zero-based; a number may be disabled, and EnabledZones
// and EnabledVars say which exist. This header holds the records and the structural operations
// on the tables, which change the tables and nothing else.
#pragma once

#include <cstdint>
#include <string>

#include "base/data/elemstate.h"
#include "base/data/face.h"
#include "base/data/fielddata.h"
#include "base/data/nodemap.h"
#include "base/data/zonespec.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/set.h"
#include "base/kernel/thread.h"

struct AuxData_s;
struct StringList_s;

constexpr EntIndex_t MaxNumZonesOrVars = 32700;  // zone and variable numbers 0..32699
constexpr int MaxVarNameLength = 128;
constexpr int MaxDataSetTitleLength = 256;
constexpr int MaxCustomLabelSets = 10;

enum VarLockMode_e : int16_t { VarLockMode_ValueChange = 0, VarLockMode_Delete = 1, VarLockMode_None = 255 };

struct VarSpec_s {
    uint64_t UniqueID;
    bool IsLocked;
    char *LockOwner;
    VarLockMode_e LockMode;
    AuxData_s *AuxData;
};

struct ZoneData_s {
    bool DoTrackVarSharing;        // true for a data set's zones; passed to FieldDataDealloc
    Mutex_a Mutex;                 // guards derivation for this zone
    ArrayList_s *VarList;          // FieldData_a by variable number; null without variables
    NodeMap_a NodeMap;
    FaceNeighbor_a FN;
    ArrayList_s *ZoneAuxList;
    DataElementState_a DataElementState;
    ArrayList_s *ThreeDVarList;    // six slots: two groups of X, Y, Z position variables
};

struct Journal_s {
    ArrayList_s *Commands;  // strings: the macro commands that rebuild the data set
    bool IsDirty;
    bool IsValid;
};

struct DataSet_s {
    uint64_t UniqueID;
    bool IsLocked;
    char *LockOwner;
    char *DataSetTitle;
    Journal_s Journal;
    StringList_s *CustomLabels[MaxCustomLabelSets];
    int16_t NumCustomLabelSets;
    EntIndex_t NumZones;  // highest zone number in use plus 1
    EntIndex_t NumVars;   // highest variable number in use plus 1
    Set_a *EnabledZones;
    Set_a *EnabledVars;
    StringList_s *VarNames;
    ArrayList_s *VarSpecList;   // VarSpec_s pointers
    ArrayList_s *ZoneSpecList;  // ZoneSpec_s pointers
    ArrayList_s *ZoneDataList;  // ZoneData_s pointers
    int32_t ZoneDataFlag;
    AuxData_s *AuxData;
    ArrayList_s *StrandInfoList;  // StrandInfo_s pointers by StrandID
    bool IsDataSet;               // false for derived storage (computed objects)
    // Set once any zone has a parent; a zone's ParentZone is set only through DataSetAllocZoneData
    // or SetZoneParentZone, so that renumbering can skip the walk when no zone has one.
    bool HasParentZones;
};

// ---- the tables -------------------------------------------------------------------------

// The capacity rule of the zone and variable lists: nothing above 32700.
LgIndex_t ZoneOrVarListAdjustCapacityRequest(const ArrayList_s *list, LgIndex_t currentCapacity,
                                              LgIndex_t requestedCapacity, ArbParam_t clientData);

uint64_t GetNextUniqueID();

DataSet_s *AllocDataSet(const char *title, bool isDataSet, bool showErr);
void DeallocDataSet(DataSet_s **dataSet);

inline bool IsZoneEnabled(const DataSet_s *dataSet, EntIndex_t zone) { return InSet(dataSet->EnabledZones, zone); }
inline bool IsVarEnabled(const DataSet_s *dataSet, EntIndex_t var) { return InSet(dataSet->EnabledVars, var); }

inline ZoneSpec_s *GetZoneSpec(const DataSet_s *dataSet, EntIndex_t zone) {
    return reinterpret_cast<ZoneSpec_s **>(dataSet->ZoneSpecList->array)[zone];
}
inline ZoneData_s *GetZoneData(const DataSet_s *dataSet, EntIndex_t zone) {
    return reinterpret_cast<ZoneData_s **>(dataSet->ZoneDataList->array)[zone];
}
inline VarSpec_s *GetVarSpec(const DataSet_s *dataSet, EntIndex_t var) {
    return reinterpret_cast<VarSpec_s **>(dataSet->VarSpecList->array)[var];
}
// The stored object of a zone and variable, or null: two array reads, no load.
inline FieldData_a GetNativeFieldDataPtr(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    const ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    if (zoneData == nullptr || zoneData->VarList == nullptr || var >= zoneData->VarList->count) return nullptr;
    return reinterpret_cast<FieldData_a *>(zoneData->VarList->array)[var];
}
// Replaces the object of a cell; the old one is released.
void SetNativeFieldDataPtr(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var, FieldData_a fieldData);
// Stamps the generation and makes it readable; null if the load failed.
FieldData_a GetReadableNativeFieldDataPtr(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
// The readable form, then made writable; null on failure.
FieldData_a GetWritableNativeFieldDataPtr(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
// Finds a zone and variable that hold the object; false if none does.
bool GetZoneVarFromFieldDataRef(const DataSet_s *dataSet, FieldData_a fieldData, EntIndex_t *zone, EntIndex_t *var);

// Names. A name is trimmed and cut to 128 characters. GetVarName/GetZoneName lend the string.
bool SetDatasetTitle(DataSet_s *dataSet, const char *title);
bool SetVarName(DataSet_s *dataSet, EntIndex_t var, const char *name);
const char *GetVarName(const DataSet_s *dataSet, EntIndex_t var);
bool SetZoneName(DataSet_s *dataSet, EntIndex_t zone, const char *name);
const char *GetZoneName(const DataSet_s *dataSet, EntIndex_t zone);
void SetZoneParentZone(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t parentZone);
bool IsVarPassive(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);

// Zone shape.
LgIndex_t ZoneGetNumPoints(const DataSet_s *dataSet, EntIndex_t zone);
LgIndex_t ZoneGetNumElements(const DataSet_s *dataSet, EntIndex_t zone);
void GetZoneIndices(const DataSet_s *dataSet, EntIndex_t zone, LgIndex_t *i, LgIndex_t *j, LgIndex_t *k);
// 0 for FE; else 1, 2, 3 for linear, surface, volume ordered zones; -1 if none holds.
int GetZoneRank(const DataSet_s *dataSet, EntIndex_t zone);
// "Not Loaded", "Passive", "Map", "Map:%d", "Heap", with ",No Modify"/",No Delete" for locks.
std::string GetVarStatus(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);

// Structural operations: they alter the tables and do nothing else. Each undoes its own partial
// work on failure and leaves NumZones/NumVars as found.
bool DataSetAllocZone(DataSet_s *dataSet, EntIndex_t zone);
bool DataSetAllocZoneData(DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *zoneSpec,
                          const FieldDataType_e *types, const ValueLocation_e *locations,
                          const EntIndex_t *shareFromZones, const bool *isPassive, bool storable,
                          EntIndex_t shareConnectivityFromZone, bool allocVars, bool allocConnectivity,
                          bool doTrackVarSharing, bool isOriented);
bool DataSetAllocFieldData(DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *zoneSpec,
                           const FieldDataType_e *types, const ValueLocation_e *locations,
                           const EntIndex_t *shareFromZones, const bool *isPassive, bool storable);
bool DataSetAllocConnectivity(DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *zoneSpec, bool autoBuild,
                              EntIndex_t shareFromZone, bool isOriented);
void DataSetDeallocZone(DataSet_s *dataSet, EntIndex_t zone);
bool DataSetInsertZone(DataSet_s *dataSet, EntIndex_t zone);
void DataSetDeleteZone(DataSet_s *dataSet, EntIndex_t zone);
bool DataSetAllocVar(DataSet_s *dataSet, EntIndex_t var);
bool DataSetAllocVarData(DataSet_s *dataSet, EntIndex_t var, const char *name);
void DataSetDeallocVar(DataSet_s *dataSet, EntIndex_t var);
bool DataSetInsertVar(DataSet_s *dataSet, EntIndex_t var);
void DataSetDeleteVar(DataSet_s *dataSet, EntIndex_t var);
void DataSetDeallocZoneVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
// Deletes every disabled zone and variable, highest first, so the numbering has no gaps.
void CollapseDataSet(DataSet_s *dataSet);

// The same within one zone's variable list.
bool ZoneDataAllocVar(ZoneData_s *zoneData, EntIndex_t var);
void ZoneDataDeallocVar(ZoneData_s *zoneData, EntIndex_t var);
bool ZoneDataInsertVar(ZoneData_s *zoneData, EntIndex_t var);
void ZoneDataDeleteVar(ZoneData_s *zoneData, EntIndex_t var);

// Locks: a lock does not stop readers.
bool DataSetLockOn(DataSet_s *dataSet, const char *owner);
bool DataSetLockOff(DataSet_s *dataSet, const char *owner);
bool DataSetIsLocked(const DataSet_s *dataSet, const char **owner);
void DataSetShowLockError(const char *verb);
bool VariableLockOn(DataSet_s *dataSet, EntIndex_t var, VarLockMode_e mode, const char *owner);
bool VariableLockOff(DataSet_s *dataSet, EntIndex_t var, const char *owner);
bool VariableIsLocked(const DataSet_s *dataSet, EntIndex_t var, VarLockMode_e *mode, const char **owner);
void VariableShowLockError(const char *verb, EntIndex_t var, const char *owner);

// The journal: the macro commands that rebuild the data set.
bool IsDataSetMarkingSuspended();
void SuspendDataSetMarking();
void UnsuspendDataSetMarking();
void MarkDataSetAsChanged(DataSet_s *dataSet);
void CleanupDataSetJournal(DataSet_s *dataSet);
bool JournalRegisterMacroCommand(DataSet_s *dataSet, const char *command);
// After a save: a new journal of one command that reads the data set from the file.
bool ReassignDatasetToFileName(DataSet_s *dataSet, const char *fileName);
