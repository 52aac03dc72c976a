// Moving variables in and out of memory across whole data sets: the generational sweep, the
// unloading of zones nobody needs, the preload while memory is plentiful, and the saving and
// restoring of what was loaded around an operation that would disturb it.
#pragma once

#include <cstdint>
#include <vector>

#include "base/data/dataset.h"

// What was readable, per zone, when DataLoadStateSave ran.
struct DataLoadState_s {
    std::vector<std::vector<EntIndex_t>> ReadableVars;  // by zone number
};

void DataLoadUnloadAllVarsInUnNeededZones(DataSet_s *dataSet, const Set_a *neededZones);
// Loads unloaded variables of the zones and variables (null: all enabled) while resident memory
// stays below the lower threshold, within a budget of 500 ms and at most once a second.
void PreloadAllVariablesIfUnderThreshold(DataSet_s *dataSet, const Set_a *zones, const Set_a *vars);
DataLoadState_s DataLoadStateSave(const DataSet_s *dataSet);
void DataLoadStateRestore(DataSet_s *dataSet, const DataLoadState_s &state);
bool DataLoadZoneHasNotLoadedVariables(const DataSet_s *dataSet, EntIndex_t zone);
// The enabled variables of the zone that are not in memory; the caller frees the set.
Set_a *DataLoadGetNotLoadedVars(const DataSet_s *dataSet, EntIndex_t zone);
