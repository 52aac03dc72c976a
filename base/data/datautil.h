// Operations on the data set of the current frame: adding and deleting zones and variables,
// resizing and duplicating zones, the zone creators, setting single values, and joining data
// sets. Unlike the structural operations of dataset.h these check locks and limits, keep the
// frames' style in step and announce what changed.
#pragma once

#include "base/data/dataset.h"


// ---- checks -------------------------------------------------------------------------------

// The current frame's data set, or null with "Cannot %s: The current frame does not have an
// attached data set".
DataSet_s *DataSetAvailable(const char *verb);
// Null zones mean all enabled; the result leaves out the destination (if >= 0).
bool GetFinalZoneSetForActionFunction(const Set_a *zones, Set_a **finalZones, EntIndex_t destinationZone,
                                      bool showErr);
bool GetFinalVarSetForActionFunction(const Set_a *vars, Set_a **finalVars, bool excludeCoordinates);

// ---- zones and variables ------------------------------------------------------------------

bool AddZone(const ZoneSpec_s *zoneSpec, const FieldDataType_e *types, const ValueLocation_e *locations,
             EntIndex_t zone, const EntIndex_t *shareFromZones, const bool *isPassive,
             EntIndex_t shareConnectivityFromZone, bool isOriented);
bool AddVar(const char *name, const FieldDataType_e *types, const ValueLocation_e *locations,
            bool tryShareWithAllZones, const bool *isPassive);
bool DeleteZone(DataSet_s *dataSet, EntIndex_t zone, bool doNotify);
bool DeleteZones(DataSet_s *dataSet, const Set_a *zones);
bool DeleteVars(DataSet_s *dataSet, const Set_a *vars);
// FE: i is the point count and j the element count; k is ignored.
bool ReallocZone(DataSet_s *dataSet, EntIndex_t zone, LgIndex_t i, LgIndex_t j, LgIndex_t k);
bool GoCreateDataSet(const char *title, EntIndex_t numVars, const StringList_s *varNames, bool resetStyle);
// Ranges are one-based as in macros; Max 0 means the last index, a negative Max counts back.
bool DuplicateZone(EntIndex_t zone, IndexRange_s iRange, IndexRange_s jRange, IndexRange_s kRange);

// ---- creators -----------------------------------------------------------------------------

bool CreateRectangularZone(LgIndex_t i, LgIndex_t j, LgIndex_t k, double xMin, double yMin, double zMin,
                           double xMax, double yMax, double zMax, EntIndex_t xVar, EntIndex_t yVar,
                           EntIndex_t zVar, FieldDataType_e type);
bool CreateCircularZone(LgIndex_t i, LgIndex_t j, LgIndex_t k, double xCenter, double yCenter, double zMin,
                        double zMax, double radius, EntIndex_t xVar, EntIndex_t yVar, EntIndex_t zVar,
                        FieldDataType_e type);
// Values stand interleaved: value n of variable v at n * numVars + v.
bool CreateSimpleZone(LgIndex_t numValues, EntIndex_t numVars, const double *values, FieldDataType_e type,
                      bool resetStyle);
bool CreateSimpleXYZone(LgIndex_t numValues, const XY_s *xyPairs, FieldDataType_e type, bool resetStyle);
// axis is 'X', 'Y' or 'Z'.
bool CreateMirrorZones(const Set_a *zones, char axis);

// ---- values -------------------------------------------------------------------------------

// index is zero-based; messages speak one-based.
bool SetFieldValueInCurrentDataSet(EntIndex_t zone, EntIndex_t var, LgIndex_t index, double value, bool doBranch,
                                   bool *changed);
bool UpdateNativeVarMinMaxForZoneVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var, bool doLoad);
bool GetNativeVarMinMaxForZoneVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var, bool doLoad, double *min,
                                  double *max);

// ---- whole data sets ----------------------------------------------------------------------

bool ConcatDataSets(DataSet_s *destination, DataSet_s *source, bool mergeStrands, bool showErr);
void InvalidateAllScratchOnVarValueChange(DataSet_s *dataSet, const Set_a *zones, const Set_a *vars);
void InvalidateAllScratchOnZoneStructureChange(DataSet_s *dataSet, EntIndex_t zone, bool nodalChanged,
                                               bool cellCenteredChanged);
