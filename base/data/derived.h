// Values at the other location: a nodal copy of a cell-centred variable or a cell-centred copy of
// a nodal one, derived by simple averages and kept per frame in a FrameZoneList_s. Drawing asks
// for values where it needs them (GetReadableNLFieldDataPtr / GetReadableCCFieldDataPtr) and gets
// the native object when it is already there.
#pragma once

#include <vector>

#include "base/data/dataset.h"

struct DerivedVarSlot_s {
    FieldData_a FieldData = nullptr;  // derived values, or null
    Mutex_a Mutex = nullptr;          // guards the derivation of this slot; made on first need
};

// One frame's derived values, by zone and variable.
struct FrameZoneList_s {
    std::vector<std::vector<DerivedVarSlot_s>> Zones;
};

FrameZoneList_s *FrameZoneListAlloc();
void FrameZoneListDealloc(FrameZoneList_s **list);
// Gives every zone and variable of the data set a slot. Mainline only: workers never resize.
void FrameZoneListEnsureSize(FrameZoneList_s *list, EntIndex_t numZones, EntIndex_t numVars);
// Renumbering after a zone or variable of the data set was deleted.
void FrameZoneListDeleteZone(FrameZoneList_s *list, EntIndex_t zone);
void FrameZoneListDeleteVar(FrameZoneList_s *list, EntIndex_t var);
// Drops the derived values of one zone and variable (var -1: all of the zone's).
void FrameZoneListInvalidate(FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);

FieldData_a GetDerivedFieldDataPtr(const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);
// Replaces the derived object of a slot; the old one is released.
void SetDerivedFieldDataPtr(FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var, FieldData_a fieldData);

// Makes the derived values of a zone's variable if they are not there; safe on workers once the
// list has its size. False, with the message, when memory runs out.
bool UpdateDerivedVar(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);

// The object with values at the nodes (or cells): the native one if it is located there, else
// the derived one (null if there is none yet).
FieldData_a GetNLFieldDataPtr(const DataSet_s *dataSet, const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);
FieldData_a GetCCFieldDataPtr(const DataSet_s *dataSet, const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);
// The same, loaded, deriving first when needed; null if the load or derivation failed.
FieldData_a GetReadableNLFieldDataPtr(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);
FieldData_a GetReadableCCFieldDataPtr(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var);

// The averages themselves, on objects already allocated with the right counts.
void DeriveNodalFromCellCentered(const ZoneSpec_s *zoneSpec, NodeMap_a nodeMap, FieldData_a cellCentered,
                                 FieldData_a nodal);
void DeriveCellCenteredFromNodal(const ZoneSpec_s *zoneSpec, NodeMap_a nodeMap, FieldData_a nodal,
                                 FieldData_a cellCentered);
