// The actions on the data set: zone creators, deleting zones and variables, duplicating and
// mirroring zones, single values, sharing and branching, names and the title, auxiliary data of
// every place that keeps it, and the actions that read something for a macro variable. Each
// Action_ function checks its precondition, logs "ACTION: NAME" once the check has passed, runs
// the work in an undo block with data-set marking suspended, keeps the data set's journal and
// announces the change. The macro handlers read the options and call them.
// Zone, variable, map, index, element and corner numbers are zero-based here; messages and the
// texts handed back speak one-based, as macros do.
// Relies on: datautil and share (the operations), auxdata, frame and linemap, actcmd, macrovar.
#pragma once

#include <string>

#include "base/data/fielddata.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/types.h"

struct ActionCommand_s;
struct Set_a;

// Where an auxiliary data item lives (the values of AUXDATALOCATION).
enum AuxDataLocation_e {
    AuxDataLocation_Zone = 0,
    AuxDataLocation_DataSet = 1,
    AuxDataLocation_Frame = 2,
    AuxDataLocation_Var = 3,
    AuxDataLocation_LineMap = 4
};

// journalCommand: the compressed macro command that repeats the change, added to the journal of
// the current frame's data set when that journal can still rebuild the data set. Null when there
// is no such command (a call from code, a command whose values travel in raw data): the data set
// is then marked as changed, so that no journal claims to rebuild it.

// ---- zone creators (a frame without a data set gets one) ----------------------------------

bool Action_CreateRectangularZone(LgIndex_t iMax, LgIndex_t jMax, LgIndex_t kMax, double x1, double y1, double z1,
                                  double x2, double y2, double z2, EntIndex_t xVar, EntIndex_t yVar, EntIndex_t zVar,
                                  FieldDataType_e type, const char *journalCommand = nullptr);
bool Action_CreateCircularZone(LgIndex_t iMax, LgIndex_t jMax, LgIndex_t kMax, double xCenter, double yCenter,
                               double z1, double z2, double radius, EntIndex_t xVar, EntIndex_t yVar, EntIndex_t zVar,
                               FieldDataType_e type, const char *journalCommand = nullptr);
// Values stand point after point: value n of variable v at n * numVars + v.
bool Action_CreateSimpleZone(LgIndex_t numPoints, EntIndex_t numVars, const double *values, FieldDataType_e type,
                             bool resetStyle, const char *journalCommand = nullptr);
bool Action_CreateSimpleXYZone(LgIndex_t numPoints, const XY_s *points, FieldDataType_e type, bool resetStyle,
                               const char *journalCommand = nullptr);

// ---- structure ----------------------------------------------------------------------------

bool Action_DeleteZones(const Set_a *zones, const char *journalCommand = nullptr);
bool Action_DeleteVars(const Set_a *vars, const char *journalCommand = nullptr);
// Ranges are one-based as in macros; Max 0 means the last index.
bool Action_DuplicateZone(EntIndex_t zone, IndexRange_s iRange, IndexRange_s jRange, IndexRange_s kRange,
                          const char *journalCommand = nullptr);
// axis is 'X', 'Y' or 'Z'; null zones mean all enabled zones.
bool Action_CreateMirrorZones(const Set_a *zones, char axis, const char *journalCommand = nullptr);

// ---- values, sharing and branching --------------------------------------------------------

bool Action_SetFieldValue(EntIndex_t zone, EntIndex_t var, LgIndex_t index, double value, bool autoBranch,
                          const char *journalCommand = nullptr);
bool Action_ShareFieldDataVar(EntIndex_t sourceZone, EntIndex_t destinationZone, EntIndex_t var,
                              const char *journalCommand = nullptr);
bool Action_BranchFieldDataVar(EntIndex_t zone, EntIndex_t var, const char *journalCommand = nullptr);
bool Action_ShareConnectivity(EntIndex_t sourceZone, EntIndex_t destinationZone, const char *journalCommand = nullptr);
bool Action_BranchConnectivity(EntIndex_t zone, const char *journalCommand = nullptr);

// ---- names and the title ------------------------------------------------------------------

// Titles are kept to 256 characters.
bool Action_SetDataSetTitle(const char *title, const char *journalCommand = nullptr);
bool Action_RenameDataSetVar(EntIndex_t var, const char *name, const char *journalCommand = nullptr);
bool Action_RenameDataSetZone(EntIndex_t zone, const char *name, const char *journalCommand = nullptr);

// ---- reading: each gives the text a macro variable would take ------------------------------

// The value as macro variables hold numbers.
bool Action_GetFieldValue(EntIndex_t zone, EntIndex_t var, LgIndex_t index, std::string *value);
bool Action_GetFieldValueRefCount(EntIndex_t zone, EntIndex_t var, std::string *count);
bool Action_GetConnectivityRefCount(EntIndex_t zone, std::string *count);
// The node (one-based) at a corner of an element of a finite-element zone.
bool Action_GetNodeIndex(EntIndex_t zone, LgIndex_t element, LgIndex_t corner, std::string *node);
// "ORDERED", "FETRIANGLE", ...
bool Action_GetZoneType(EntIndex_t zone, std::string *type);
// "NODAL" or "CELLCENTERED".
bool Action_GetVarLocation(EntIndex_t zone, EntIndex_t var, std::string *location);
bool Action_GetCurFrameName(std::string *name);
// The one-based number of the enabled variable of exactly that name.
bool Action_GetVarOffsetByName(const char *name, std::string *number);

// ---- auxiliary data -----------------------------------------------------------------------

// number is the zone, variable or line map of those locations and is ignored by the others.
// Only string items exist.
bool Action_SetAuxData(AuxDataLocation_e location, EntIndex_t number, const char *name, const char *value,
                       AuxDataType_e type = AuxDataType_String);
bool Action_GetAuxData(AuxDataLocation_e location, EntIndex_t number, const char *name, std::string *value);
bool Action_DeleteAuxData(AuxDataLocation_e location, EntIndex_t number, const char *name);

// ---- macro handlers -----------------------------------------------------------------------

using ActionHandler_pf = bool (*)(const ActionCommand_s &);

// The handler of a data-set action, or null if the action is not one of them.
ActionHandler_pf FindDataActionHandler(int action);
