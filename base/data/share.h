// Sharing of values and connectivity between zones of one data set, by reference count, and
// branching: giving a zone a private copy before it changes what others share.
#pragma once

#include "base/data/dataset.h"

// The cell (zone, var) takes the object of (sourceZone, var).
void ShareVariable(DataSet_s *dataSet, EntIndex_t sourceZone, EntIndex_t zone, EntIndex_t var);
// The zone takes the source's node map, face neighbours and element state.
void ShareConnectivity(DataSet_s *dataSet, EntIndex_t sourceZone, EntIndex_t zone);
// A private copy for the zone if the variable is shared; an unloaded file-backed variable is
// copied without reading the file.
bool BranchVariable(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
// Private copies of the connectivity trio where shared; all or nothing.
bool BranchConnectivity(DataSet_s *dataSet, EntIndex_t zone);

int32_t GetVarShareReferenceCount(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
bool IsVarShared(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
bool VarIsSharedBetweenZones(const DataSet_s *dataSet, EntIndex_t zoneA, EntIndex_t zoneB, EntIndex_t var);
int32_t GetConnectivityReferenceCount(const DataSet_s *dataSet, EntIndex_t zone);
// The zones sharing the variable with the zone (the zone included); null if it isn't shared.
Set_a *GetSharedVarZoneSet(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
Set_a *GetZonesThatShareConnectivityWithZone(const DataSet_s *dataSet, EntIndex_t zone);
bool ZoneHasConnectivitySharing(const DataSet_s *dataSet, EntIndex_t zone);
bool ZoneHasVarSharing(const DataSet_s *dataSet, EntIndex_t zone);
bool ZoneHasDataSharing(const DataSet_s *dataSet, EntIndex_t zone);
bool DataSetHasConnectivitySharing(const DataSet_s *dataSet);
bool DataSetHasVarSharing(const DataSet_s *dataSet);
bool DataSetHasDataSharing(const DataSet_s *dataSet);

bool ZoneStructuresAreNativeVarShareCompatible(ValueLocation_e locationA, ValueLocation_e locationB,
                                               const ZoneSpec_s *zoneSpecA, const ZoneSpec_s *zoneSpecB);
bool OkToShareNativeVarBetweenZones(const DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *otherSpec,
                                    ValueLocation_e location, EntIndex_t var);
bool ZoneStructuresAreConnectivityShareCompatible(const ZoneSpec_s *zoneSpecA, const ZoneSpec_s *zoneSpecB);
bool OkToShareConnectivityBetweenZones(const DataSet_s *dataSet, EntIndex_t zone, const ZoneSpec_s *otherSpec);
