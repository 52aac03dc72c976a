#include "base/macro/dataactions.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "base/data/dataset.h"
#include "base/data/datautil.h"
#include "base/data/share.h"
#include "base/kernel/errors.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/kernel/undo.h"
#include "base/macro/actcmd.h"
#include "base/macro/macrovar.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"
#include "base/plot/linemap.h"

namespace {

// ---- checks -------------------------------------------------------------------------------

bool zoneIsValid(const DataSet_s *dataSet, EntIndex_t zone) {
    if (zone >= 0 && zone < dataSet->NumZones && IsZoneEnabled(dataSet, zone)) return true;
    ErrMsg("Invalid zone number: %d.", zone + 1);
    return false;
}

bool varIsValid(const DataSet_s *dataSet, EntIndex_t var) {
    if (var >= 0 && var < dataSet->NumVars && IsVarEnabled(dataSet, var)) return true;
    ErrMsg("Invalid variable number: %d.", var + 1);
    return false;
}

// The current frame's data set with a valid zone (and variable, if var is not -2), or null after
// the message. The verb completes "Cannot %s: ...".
DataSet_s *dataWithZone(const char *verb, EntIndex_t zone, EntIndex_t var = -2) {
    DataSet_s *dataSet = DataSetAvailable(verb);
    if (dataSet == nullptr || !zoneIsValid(dataSet, zone) || (var != -2 && !varIsValid(dataSet, var))) return nullptr;
    return dataSet;
}

// ---- the steps every data-changing action takes -------------------------------------------

// The work in an undo block of its kind, with data-set marking suspended while it runs (the
// action as a whole is what the journal keeps); then, on success, the journal of the current
// frame's data set takes the command if it can still rebuild the data set, or without a command
// the data set is marked as changed.
bool alterData(UndoBlockKind_e kind, const char *journalCommand, const std::function<bool()> &work) {
    BeginUndoCommandBlock(kind);
    SuspendDataSetMarking();
    bool ok = work();
    UnsuspendDataSetMarking();
    EndUndoCommandBlock(ok);
    DataSet_s *dataSet = CurFrame != nullptr ? CurFrame->DataSet : nullptr;
    if (ok && dataSet != nullptr) {
        if (journalCommand == nullptr)
            MarkDataSetAsChanged(dataSet);
        else if (dataSet->Journal.IsValid)
            JournalRegisterMacroCommand(dataSet, journalCommand);
    }
    return ok;
}

// ---- auxiliary data -----------------------------------------------------------------------

// The address of the map a location keeps (the map itself may still be null), or null after
// the message. Frames and line maps keep theirs without a data set.
AuxData_s **auxDataRef(AuxDataLocation_e location, EntIndex_t number) {
    if (location == AuxDataLocation_Frame) {
        if (CurFrame == nullptr) ErrMsg("Cannot use auxiliary data: There is no current frame");
        return CurFrame != nullptr ? &CurFrame->AuxData : nullptr;
    }
    if (location == AuxDataLocation_LineMap) {
        if (!IsValidLineMap(CurFrame, number)) {
            ErrMsg("Invalid line map number: %d.", number + 1);
            return nullptr;
        }
        return &CurFrame->LineMapAttributes[size_t(number)]->AuxData;
    }
    DataSet_s *dataSet = DataSetAvailable("use auxiliary data");
    if (dataSet == nullptr) return nullptr;
    switch (location) {
    case AuxDataLocation_Zone: return zoneIsValid(dataSet, number) ? &GetZoneSpec(dataSet, number)->AuxData : nullptr;
    case AuxDataLocation_DataSet: return &dataSet->AuxData;
    case AuxDataLocation_Var: return varIsValid(dataSet, number) ? &GetVarSpec(dataSet, number)->AuxData : nullptr;
    default: break;
    }
    ErrMsg("Invalid auxiliary data location.");
    return nullptr;
}

// Fills the record that listeners of the auxiliary data changes read: the location, the name,
// and the zone, variable or map it belongs to.
void announceAuxData(StateChange_e change, AuxDataLocation_e location, EntIndex_t number, const char *name) {
    StateChangeSupplementalInfoSetArbEnum(int32_t(location));
    StateChangeSupplementalInfoSetName(name);
    if (location == AuxDataLocation_Zone) StateChangeSupplementalInfoSetZone(number);
    if (location == AuxDataLocation_Var) StateChangeSupplementalInfoSetVar(number);
    if (location == AuxDataLocation_LineMap) StateChangeSupplementalInfoSetMap(number);
    StateChanged(change, nullptr);
}

const char *nameOrEmpty(const char *text) { return text != nullptr ? text : ""; }

}  // namespace

// ---- zone creators ------------------------------------------------------------------------

bool Action_CreateRectangularZone(LgIndex_t iMax, LgIndex_t jMax, LgIndex_t kMax, double x1, double y1, double z1,
                                  double x2, double y2, double z2, EntIndex_t xVar, EntIndex_t yVar, EntIndex_t zVar,
                                  FieldDataType_e type, const char *journalCommand) {
    LogAction("CREATERECTANGULARZONE");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] {
        return CreateRectangularZone(iMax, jMax, kMax, x1, y1, z1, x2, y2, z2, xVar, yVar, zVar, type);
    });
}

bool Action_CreateCircularZone(LgIndex_t iMax, LgIndex_t jMax, LgIndex_t kMax, double xCenter, double yCenter,
                               double z1, double z2, double radius, EntIndex_t xVar, EntIndex_t yVar, EntIndex_t zVar,
                               FieldDataType_e type, const char *journalCommand) {
    LogAction("CREATECIRCULARZONE");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] {
        return CreateCircularZone(iMax, jMax, kMax, xCenter, yCenter, z1, z2, radius, xVar, yVar, zVar, type);
    });
}

bool Action_CreateSimpleZone(LgIndex_t numPoints, EntIndex_t numVars, const double *values, FieldDataType_e type,
                             bool resetStyle, const char *journalCommand) {
    LogAction("CREATESIMPLEZONE");
    return alterData(UndoBlock_DataStructure, journalCommand,
                     [&] { return CreateSimpleZone(numPoints, numVars, values, type, resetStyle); });
}

bool Action_CreateSimpleXYZone(LgIndex_t numPoints, const XY_s *points, FieldDataType_e type, bool resetStyle,
                               const char *journalCommand) {
    LogAction("CREATESIMPLEXYZONE");
    return alterData(UndoBlock_DataStructure, journalCommand,
                     [&] { return CreateSimpleXYZone(numPoints, points, type, resetStyle); });
}

// ---- structure ----------------------------------------------------------------------------

bool Action_DeleteZones(const Set_a *zones, const char *journalCommand) {
    DataSet_s *dataSet = DataSetAvailable("delete zone");
    if (dataSet == nullptr) return false;
    if (zones == nullptr || IsEmpty(zones)) {
        ErrMsg("Invalid set of zones to delete");
        return false;
    }
    if (!IsSubSet(zones, dataSet->EnabledZones)) {
        ErrMsg("Zones requested are not all available");
        return false;
    }
    LogAction("DELETEZONES");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] { return DeleteZones(dataSet, zones); });
}

bool Action_DeleteVars(const Set_a *vars, const char *journalCommand) {
    DataSet_s *dataSet = DataSetAvailable("delete variable");
    if (dataSet == nullptr) return false;
    if (vars == nullptr || IsEmpty(vars)) {
        ErrMsg("Invalid set of variables to delete");
        return false;
    }
    if (!IsSubSet(vars, dataSet->EnabledVars)) {
        ErrMsg("Vars requested are not all available");
        return false;
    }
    LogAction("DELETEVARS");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] { return DeleteVars(dataSet, vars); });
}

bool Action_DuplicateZone(EntIndex_t zone, IndexRange_s iRange, IndexRange_s jRange, IndexRange_s kRange,
                          const char *journalCommand) {
    if (dataWithZone("duplicate a zone", zone) == nullptr) return false;
    LogAction("DUPLICATEZONE");
    return alterData(UndoBlock_DataStructure, journalCommand,
                     [&] { return DuplicateZone(zone, iRange, jRange, kRange); });
}

bool Action_CreateMirrorZones(const Set_a *zones, char axis, const char *journalCommand) {
    if (DataSetAvailable("mirror zones") == nullptr) return false;
    if (axis != 'X' && axis != 'Y' && axis != 'Z') {
        ErrMsg("Invalid mirror axis");
        return false;
    }
    LogAction("CREATEMIRRORZONES");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] { return CreateMirrorZones(zones, axis); });
}

// ---- values, sharing and branching --------------------------------------------------------

bool Action_SetFieldValue(EntIndex_t zone, EntIndex_t var, LgIndex_t index, double value, bool autoBranch,
                          const char *journalCommand) {
    if (dataWithZone("set a field value", zone, var) == nullptr) return false;
    LogAction("SETFIELDVALUE");
    bool changed = false;
    return alterData(UndoBlock_DataAlteration, journalCommand, [&] {
        return SetFieldValueInCurrentDataSet(zone, var, index, value, autoBranch, &changed);
    });
}

bool Action_ShareFieldDataVar(EntIndex_t sourceZone, EntIndex_t destinationZone, EntIndex_t var,
                              const char *journalCommand) {
    DataSet_s *dataSet = dataWithZone("share a variable", sourceZone);
    if (dataSet == nullptr || !zoneIsValid(dataSet, destinationZone) || !varIsValid(dataSet, var)) return false;
    FieldData_a sourceData = GetNativeFieldDataPtr(dataSet, sourceZone, var);
    if (sourceData == nullptr ||
        !OkToShareNativeVarBetweenZones(dataSet, sourceZone, GetZoneSpec(dataSet, destinationZone),
                                        sourceData->Location, var)) {
        ErrMsg("The zones are not compatible for sharing.");
        return false;
    }
    LogAction("SHAREFIELDDATAVAR");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] {
        ShareVariable(dataSet, sourceZone, destinationZone, var);
        return true;
    });
}

bool Action_BranchFieldDataVar(EntIndex_t zone, EntIndex_t var, const char *journalCommand) {
    DataSet_s *dataSet = dataWithZone("branch a variable", zone, var);
    if (dataSet == nullptr) return false;
    LogAction("BRANCHFIELDDATAVAR");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] { return BranchVariable(dataSet, zone, var); });
}

bool Action_ShareConnectivity(EntIndex_t sourceZone, EntIndex_t destinationZone, const char *journalCommand) {
    DataSet_s *dataSet = dataWithZone("share connectivity", sourceZone);
    if (dataSet == nullptr || !zoneIsValid(dataSet, destinationZone)) return false;
    if (!OkToShareConnectivityBetweenZones(dataSet, sourceZone, GetZoneSpec(dataSet, destinationZone))) {
        ErrMsg("The zones are not compatible for sharing connectivity.");
        return false;
    }
    LogAction("SHARECONNECTIVITY");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] {
        ShareConnectivity(dataSet, sourceZone, destinationZone);
        return true;
    });
}

bool Action_BranchConnectivity(EntIndex_t zone, const char *journalCommand) {
    DataSet_s *dataSet = dataWithZone("branch connectivity", zone);
    if (dataSet == nullptr) return false;
    LogAction("BRANCHCONNECTIVITY");
    return alterData(UndoBlock_DataStructure, journalCommand, [&] { return BranchConnectivity(dataSet, zone); });
}

// ---- names and the title ------------------------------------------------------------------

bool Action_SetDataSetTitle(const char *title, const char *journalCommand) {
    DataSet_s *dataSet = DataSetAvailable("set the data set title");
    if (dataSet == nullptr) return false;
    std::string kept = std::string(nameOrEmpty(title)).substr(0, 256);
    LogAction("SETDATASETTITLE", kept.c_str());
    return alterData(UndoBlock_DataStructure, journalCommand, [&] { return SetDatasetTitle(dataSet, kept.c_str()); });
}

bool Action_RenameDataSetVar(EntIndex_t var, const char *name, const char *journalCommand) {
    DataSet_s *dataSet = DataSetAvailable("rename a variable");
    if (dataSet == nullptr || !varIsValid(dataSet, var)) return false;
    LogAction("RENAMEDATASETVAR");
    if (!alterData(UndoBlock_DataStructure, journalCommand, [&] { return SetVarName(dataSet, var, nameOrEmpty(name)); }))
        return false;
    StateChanged(StateChange_VarName, nullptr);
    return true;
}

bool Action_RenameDataSetZone(EntIndex_t zone, const char *name, const char *journalCommand) {
    DataSet_s *dataSet = dataWithZone("rename a zone", zone);
    if (dataSet == nullptr) return false;
    LogAction("RENAMEDATASETZONE");
    if (!alterData(UndoBlock_DataStructure, journalCommand,
                   [&] { return SetZoneName(dataSet, zone, nameOrEmpty(name)); }))
        return false;
    StateChanged(StateChange_ZoneName, nullptr);
    return true;
}

// ---- reading ------------------------------------------------------------------------------

bool Action_GetFieldValue(EntIndex_t zone, EntIndex_t var, LgIndex_t index, std::string *value) {
    DataSet_s *dataSet = dataWithZone("get a field value", zone, var);
    if (dataSet == nullptr) return false;
    FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr || index < 0 || index >= fieldData->NumValues) {
        ErrMsg("Index out of range for zone %d.", zone + 1);
        return false;
    }
    *value = MacroNumberText(GetFieldValue(fieldData, index));
    return true;
}

bool Action_GetFieldValueRefCount(EntIndex_t zone, EntIndex_t var, std::string *count) {
    DataSet_s *dataSet = dataWithZone("get a reference count", zone, var);
    if (dataSet == nullptr) return false;
    *count = std::to_string(GetVarShareReferenceCount(dataSet, zone, var));
    return true;
}

bool Action_GetConnectivityRefCount(EntIndex_t zone, std::string *count) {
    DataSet_s *dataSet = dataWithZone("get a reference count", zone);
    if (dataSet == nullptr) return false;
    *count = std::to_string(GetConnectivityReferenceCount(dataSet, zone));
    return true;
}

bool Action_GetNodeIndex(EntIndex_t zone, LgIndex_t element, LgIndex_t corner, std::string *node) {
    DataSet_s *dataSet = dataWithZone("get a node index", zone);
    if (dataSet == nullptr) return false;
    NodeMap_a nodeMap = GetZoneData(dataSet, zone)->NodeMap;
    if (nodeMap == nullptr) {
        ErrMsg("Zone is not finite-element.");
        return false;
    }
    if (element < 0 || element >= nodeMap->NumElements || corner < 0 || corner >= nodeMap->NodesPerElement) {
        ErrMsg("Element or corner out of range.");
        return false;
    }
    *node = std::to_string(NodeMapGetNode(nodeMap, element, int(corner)) + 1);
    return true;
}

bool Action_GetZoneType(EntIndex_t zone, std::string *type) {
    DataSet_s *dataSet = dataWithZone("get a zone type", zone);
    if (dataSet == nullptr) return false;
    type->clear();
    GetEnumText(GetZoneSpec(dataSet, zone)->Type, MacroSetValue_ZONETYPE, false, type);
    return true;
}

bool Action_GetVarLocation(EntIndex_t zone, EntIndex_t var, std::string *location) {
    DataSet_s *dataSet = dataWithZone("get a variable location", zone, var);
    if (dataSet == nullptr) return false;
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    *location = fieldData != nullptr && fieldData->Location == ValueLocation_CellCentered ? "CELLCENTERED" : "NODAL";
    return true;
}

bool Action_GetCurFrameName(std::string *name) {
    *name = CurFrame != nullptr ? CurFrame->Name : "";
    return true;
}

bool Action_GetVarOffsetByName(const char *name, std::string *number) {
    DataSet_s *dataSet = DataSetAvailable("get a variable number");
    if (dataSet == nullptr) return false;
    for (EntIndex_t var = 0; name != nullptr && var < dataSet->NumVars; var++)
        if (IsVarEnabled(dataSet, var) && strcmp(name, GetVarName(dataSet, var)) == 0) {
            *number = std::to_string(var + 1);
            return true;
        }
    ErrMsg("Variable name not found in the data set.");
    return false;
}

// ---- auxiliary data -----------------------------------------------------------------------

bool Action_SetAuxData(AuxDataLocation_e location, EntIndex_t number, const char *name, const char *value,
                       AuxDataType_e type) {
    AuxData_s **aux = auxDataRef(location, number);
    if (aux == nullptr) return false;
    if (name == nullptr || !AuxDataIsValidName(name)) {
        ErrMsg("Invalid auxiliary data name.");
        return false;
    }
    if (*aux == nullptr && (*aux = AuxDataAlloc()) == nullptr) {
        ErrMsg("Out of memory.");
        return false;
    }
    LogAction("SETAUXDATA");
    LgIndex_t index;
    bool existed = AuxDataGetItemIndex(*aux, name, &index);
    if (!AuxDataSetItem(*aux, name, ArbParam_t(nameOrEmpty(value)), type, true)) return false;
    announceAuxData(existed ? StateChange_AuxDataAltered : StateChange_AuxDataAdded, location, number, name);
    return true;
}

bool Action_GetAuxData(AuxDataLocation_e location, EntIndex_t number, const char *name, std::string *value) {
    AuxData_s **aux = auxDataRef(location, number);
    if (aux == nullptr) return false;
    ArbParam_t item;
    AuxDataType_e type;
    bool retain;
    if (*aux == nullptr || name == nullptr || !AuxDataGetItemByName(*aux, name, &item, &type, &retain)) {
        ErrMsg("Auxiliary data item %s does not exist.", nameOrEmpty(name));
        return false;
    }
    *value = reinterpret_cast<const char *>(item);
    return true;
}

bool Action_DeleteAuxData(AuxDataLocation_e location, EntIndex_t number, const char *name) {
    AuxData_s **aux = auxDataRef(location, number);
    if (aux == nullptr) return false;
    if (*aux == nullptr || name == nullptr || !AuxDataDeleteItemByName(*aux, name)) {
        ErrMsg("Auxiliary data item %s does not exist.", nameOrEmpty(name));
        return false;
    }
    LogAction("DELETEAUXDATA");
    announceAuxData(StateChange_AuxDataDeleted, location, number, name);
    return true;
}

// ---- macro handlers -----------------------------------------------------------------------

namespace {

// A zone or variable number of a command: one-based in text, zero-based here.
EntIndex_t entity(const ActionCommand_s &cmd, int row, EntIndex_t missing = -1) {
    const ActionOptionValue_s *option = cmd.find(row);
    return option != nullptr ? EntIndex_t(option->Integer - 1) : missing;
}

const char *optionText(const ActionCommand_s &cmd, int row) {
    const ActionOptionValue_s *option = cmd.find(row);
    return option != nullptr ? option->Text.c_str() : nullptr;
}

// The command for the journal: one whose values travel in raw data cannot be replayed from it.
const char *journalOf(const ActionCommand_s &cmd) { return cmd.RawData == nullptr ? cmd.Command : nullptr; }

bool assign(const ActionCommand_s &cmd, const std::string &value) {
    if (!SetInternalMacroVar(cmd.Variable.c_str(), value.c_str(), true)) return cmd.fail("Too Many Macro Variables");
    return true;
}

FieldDataType_e dataType(const ActionCommand_s &cmd) {
    LgIndex_t type = cmd.integer(MacroSetValue_DATATYPE, FieldDataType_Float);
    return type == 255 ? FieldDataType_Float : FieldDataType_e(type);
}

IndexRange_s rangeOf(const ActionCommand_s &cmd, int parent) {
    return IndexRange_s{cmd.integer(MacroSetValue_MIN, 1, parent), cmd.integer(MacroSetValue_MAX, 0, parent),
                        cmd.integer(MacroSetValue_SKIP, 1, parent)};
}

bool createRectangularZone(const ActionCommand_s &cmd) {
    return Action_CreateRectangularZone(
        cmd.integer(MacroSetValue_IMAX, 1), cmd.integer(MacroSetValue_JMAX, 1), cmd.integer(MacroSetValue_KMAX, 1),
        cmd.number(MacroSetValue_X1, 0), cmd.number(MacroSetValue_Y1, 0), cmd.number(MacroSetValue_Z1, 0),
        cmd.number(MacroSetValue_X2, 1), cmd.number(MacroSetValue_Y2, 1), cmd.number(MacroSetValue_Z2, 1),
        entity(cmd, MacroSetValue_XVAR, 0), entity(cmd, MacroSetValue_YVAR, 1), entity(cmd, MacroSetValue_ZVAR, 2),
        dataType(cmd), journalOf(cmd));
}

bool createCircularZone(const ActionCommand_s &cmd) {
    return Action_CreateCircularZone(
        cmd.integer(MacroSetValue_IMAX, 1), cmd.integer(MacroSetValue_JMAX, 1), cmd.integer(MacroSetValue_KMAX, 1),
        cmd.number(MacroSetValue_X, 0), cmd.number(MacroSetValue_Y, 0), cmd.number(MacroSetValue_Z1, 0),
        cmd.number(MacroSetValue_Z2, 1), cmd.number(MacroSetValue_RADIUS, 1), entity(cmd, MacroSetValue_XVAR, 0),
        entity(cmd, MacroSetValue_YVAR, 1), entity(cmd, MacroSetValue_ZVAR, 2), dataType(cmd), journalOf(cmd));
}

// CREATESIMPLEZONE: raw data of the number of points and the values per point, then the values,
// point after point; CREATESIMPLEXYZONE: the number of points, then X Y pairs.
bool createSimpleZone(const ActionCommand_s &cmd) {
    CookedRawData_s raw;
    RawPolyline_s values;
    if (!CookActionRawData(cmd, &raw) || !LoadPolylineRawMacroData(raw.Text, cmd.Line, cmd.Command, &values)) return false;
    return Action_CreateSimpleZone(values.NumPoints, EntIndex_t(values.NumValuesPerPoint), values.Values.data(),
                                   dataType(cmd), true, journalOf(cmd));
}

bool createSimpleXYZone(const ActionCommand_s &cmd) {
    CookedRawData_s raw;
    std::vector<XY_s> points;
    if (!CookActionRawData(cmd, &raw) || !LoadXYPolylineRawMacroData(raw.Text, cmd.Line, cmd.Command, &points)) return false;
    return Action_CreateSimpleXYZone(LgIndex_t(points.size()), points.data(), dataType(cmd), true, journalOf(cmd));
}

bool deleteZones(const ActionCommand_s &cmd) { return Action_DeleteZones(cmd.Set, journalOf(cmd)); }

bool deleteVars(const ActionCommand_s &cmd) { return Action_DeleteVars(cmd.Set, journalOf(cmd)); }

bool duplicateZone(const ActionCommand_s &cmd) {
    return Action_DuplicateZone(entity(cmd, MacroSetValue_SOURCEZONE), rangeOf(cmd, MacroSetValue_IRANGE),
                                rangeOf(cmd, MacroSetValue_JRANGE), rangeOf(cmd, MacroSetValue_KRANGE), journalOf(cmd));
}

// MIRRORVAR is the axis letter; anything else reaches the action as no axis, which refuses it.
bool createMirrorZones(const ActionCommand_s &cmd) {
    const ActionOptionValue_s *zones = cmd.find(MacroSetValue_SOURCEZONES);
    const char *word = optionText(cmd, MacroSetValue_MIRRORVAR);
    char axis = word == nullptr ? 'X' : (word[0] != '\0' && word[1] == '\0') ? char(toupper(word[0])) : '\0';
    return Action_CreateMirrorZones(zones != nullptr ? zones->Set : nullptr, axis, journalOf(cmd));
}

bool setFieldValue(const ActionCommand_s &cmd) {
    return Action_SetFieldValue(entity(cmd, MacroSetValue_ZONE), entity(cmd, MacroSetValue_VAR),
                                cmd.integer(MacroSetValue_INDEX, 1) - 1, cmd.number(MacroSetValue_FIELDVALUE, 0),
                                cmd.flag(MacroSetValue_AUTOBRANCH, false), journalOf(cmd));
}

bool shareFieldDataVar(const ActionCommand_s &cmd) {
    return Action_ShareFieldDataVar(entity(cmd, MacroSetValue_SOURCEZONE), entity(cmd, MacroSetValue_DESTINATIONZONE),
                                    entity(cmd, MacroSetValue_VAR), journalOf(cmd));
}

bool branchFieldDataVar(const ActionCommand_s &cmd) {
    return Action_BranchFieldDataVar(entity(cmd, MacroSetValue_ZONE), entity(cmd, MacroSetValue_VAR), journalOf(cmd));
}

bool shareConnectivity(const ActionCommand_s &cmd) {
    return Action_ShareConnectivity(entity(cmd, MacroSetValue_SOURCEZONE), entity(cmd, MacroSetValue_DESTINATIONZONE),
                                    journalOf(cmd));
}

bool branchConnectivity(const ActionCommand_s &cmd) {
    return Action_BranchConnectivity(entity(cmd, MacroSetValue_ZONE), journalOf(cmd));
}

bool setTitle(const ActionCommand_s &cmd) { return Action_SetDataSetTitle(cmd.String.c_str(), journalOf(cmd)); }

bool renameVar(const ActionCommand_s &cmd) {
    return Action_RenameDataSetVar(entity(cmd, MacroSetValue_VAR), optionText(cmd, MacroSetValue_NAME), journalOf(cmd));
}

bool renameZone(const ActionCommand_s &cmd) {
    return Action_RenameDataSetZone(entity(cmd, MacroSetValue_ZONE), optionText(cmd, MacroSetValue_NAME), journalOf(cmd));
}

// The reading actions put their result in the command's macro variable.
bool getFieldValue(const ActionCommand_s &cmd) {
    std::string value;
    return Action_GetFieldValue(entity(cmd, MacroSetValue_ZONE), entity(cmd, MacroSetValue_VAR),
                                cmd.integer(MacroSetValue_INDEX, 1) - 1, &value) &&
           assign(cmd, value);
}

bool getFieldValueRefCount(const ActionCommand_s &cmd) {
    std::string count;
    return Action_GetFieldValueRefCount(entity(cmd, MacroSetValue_ZONE), entity(cmd, MacroSetValue_VAR), &count) &&
           assign(cmd, count);
}

bool getConnectivityRefCount(const ActionCommand_s &cmd) {
    std::string count;
    return Action_GetConnectivityRefCount(entity(cmd, MacroSetValue_ZONE), &count) && assign(cmd, count);
}

bool getNodeIndex(const ActionCommand_s &cmd) {
    std::string node;
    return Action_GetNodeIndex(entity(cmd, MacroSetValue_ZONE), cmd.integer(MacroSetValue_ELEMENT, 1) - 1,
                               cmd.integer(MacroSetValue_CORNER, 1) - 1, &node) &&
           assign(cmd, node);
}

bool getZoneType(const ActionCommand_s &cmd) {
    std::string type;
    return Action_GetZoneType(entity(cmd, MacroSetValue_ZONE), &type) && assign(cmd, type);
}

bool getVarLocation(const ActionCommand_s &cmd) {
    std::string location;
    return Action_GetVarLocation(entity(cmd, MacroSetValue_ZONE), entity(cmd, MacroSetValue_VAR), &location) &&
           assign(cmd, location);
}

bool getCurFrameName(const ActionCommand_s &cmd) {
    std::string name;
    return Action_GetCurFrameName(&name) && assign(cmd, name);
}

bool getVarNumByName(const ActionCommand_s &cmd) {
    std::string number;
    return Action_GetVarOffsetByName(optionText(cmd, MacroSetValue_NAME), &number) && assign(cmd, number);
}

// AUXDATALOCATION with the number its place needs: ZONE, VAR or MAP.
AuxDataLocation_e auxLocation(const ActionCommand_s &cmd, EntIndex_t *number) {
    auto location = AuxDataLocation_e(cmd.integer(MacroSetValue_AUXDATALOCATION, AuxDataLocation_DataSet));
    int row = location == AuxDataLocation_Zone  ? MacroSetValue_ZONE
              : location == AuxDataLocation_Var ? MacroSetValue_VAR
                                                : MacroSetValue_MAP;
    *number = entity(cmd, row);
    return location;
}

bool setAuxData(const ActionCommand_s &cmd) {
    EntIndex_t number;
    AuxDataLocation_e location = auxLocation(cmd, &number);
    return Action_SetAuxData(location, number, optionText(cmd, MacroSetValue_NAME), optionText(cmd, MacroSetValue_VALUESTRING));
}

bool getAuxData(const ActionCommand_s &cmd) {
    EntIndex_t number;
    AuxDataLocation_e location = auxLocation(cmd, &number);
    std::string value;
    return Action_GetAuxData(location, number, optionText(cmd, MacroSetValue_NAME), &value) && assign(cmd, value);
}

bool deleteAuxData(const ActionCommand_s &cmd) {
    EntIndex_t number;
    AuxDataLocation_e location = auxLocation(cmd, &number);
    return Action_DeleteAuxData(location, number, optionText(cmd, MacroSetValue_NAME));
}

struct DataAction_s {
    int Action;
    ActionHandler_pf Handler;
};

const DataAction_s DataActions[] = {
    {MacroAction_CREATERECTANGULARZONE, createRectangularZone},
    {MacroAction_CREATECIRCULARZONE, createCircularZone},
    {MacroAction_CREATESIMPLEZONE, createSimpleZone},
    {MacroAction_CREATESIMPLEXYZONE, createSimpleXYZone},
    {MacroAction_DELETEZONES, deleteZones},
    {MacroAction_DELETEVARS, deleteVars},
    {MacroAction_DUPLICATEZONE, duplicateZone},
    {MacroAction_CREATEMIRRORZONES, createMirrorZones},
    {MacroAction_SETFIELDVALUE, setFieldValue},
    {MacroAction_GETFIELDVALUE, getFieldValue},
    {MacroAction_GETFIELDVALUEREFCOUNT, getFieldValueRefCount},
    {MacroAction_BRANCHFIELDDATAVAR, branchFieldDataVar},
    {MacroAction_SHAREFIELDDATAVAR, shareFieldDataVar},
    {MacroAction_GETNODEINDEX, getNodeIndex},
    {MacroAction_GETCONNECTIVITYREFCOUNT, getConnectivityRefCount},
    {MacroAction_BRANCHCONNECTIVITY, branchConnectivity},
    {MacroAction_SHARECONNECTIVITY, shareConnectivity},
    {MacroAction_GETZONETYPE, getZoneType},
    {MacroAction_GETVARLOCATION, getVarLocation},
    {MacroAction_RENAMEDATASETVAR, renameVar},
    {MacroAction_RENAMEDATASETZONE, renameZone},
    {MacroAction_SETDATASETTITLE, setTitle},
    {MacroAction_GETCURFRAMENAME, getCurFrameName},
    {MacroAction_GETVARNUMBYNAME, getVarNumByName},
    {MacroAction_SETAUXDATA, setAuxData},
    {MacroAction_GETAUXDATA, getAuxData},
    {MacroAction_DELETEAUXDATA, deleteAuxData},
};

}  // namespace

ActionHandler_pf FindDataActionHandler(int action) {
    for (const DataAction_s &entry : DataActions)
        if (entry.Action == action) return entry.Handler;
    return nullptr;
}
