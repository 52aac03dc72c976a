#include "base/macro/dataactions.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "base/data/dataset.h"
#include "base/data/datautil.h"
#include "base/data/share.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/statechg.h"
#include "base/kernel/undo.h"
#include "base/macro/actcmd.h"
#include "base/macro/macrovar.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"

namespace {

// The data set the action works on, or null with "Cannot <verb>: ...".
DataSet_s *needData(const char *verb) { return DataSetAvailable(verb); }

// A zone or variable number of a command: one-based in text, zero-based here.
EntIndex_t entity(const ActionCommand_s &cmd, int row, EntIndex_t missing = -1) {
    const ActionOptionValue_s *option = cmd.find(row);
    return option != nullptr ? EntIndex_t(option->Integer - 1) : missing;
}

bool checkZone(const ActionCommand_s &cmd, const DataSet_s *dataSet, EntIndex_t zone) {
    if (zone >= 0 && zone < dataSet->NumZones && IsZoneEnabled(dataSet, zone)) return true;
    return cmd.fail("Invalid zone number: " + std::to_string(zone + 1) + ".");
}

bool checkVar(const ActionCommand_s &cmd, const DataSet_s *dataSet, EntIndex_t var) {
    if (var >= 0 && var < dataSet->NumVars && IsVarEnabled(dataSet, var)) return true;
    return cmd.fail("Invalid variable number: " + std::to_string(var + 1) + ".");
}

bool assign(const ActionCommand_s &cmd, const std::string &value) {
    if (!SetInternalMacroVar(cmd.Variable.c_str(), value.c_str(), true)) return cmd.fail("Too Many Macro Variables");
    return true;
}

FieldDataType_e dataType(const ActionCommand_s &cmd) {
    LgIndex_t type = cmd.integer(MacroSetValue_DATATYPE, FieldDataType_Float);
    return type == 255 ? FieldDataType_Float : FieldDataType_e(type);
}

// The data part of an action, in the steps every data action takes: an undo block of its kind
// around the work, data-set marking suspended while it runs (the action itself is what the
// journal records), then on success the command joins the journal of the current frame's data
// set if that journal can still rebuild the data set. A command whose values travel in its raw
// data cannot be replayed from the journal's text: it marks the data set changed instead.
bool alterData(const ActionCommand_s &cmd, UndoBlockKind_e kind, const std::function<bool()> &work) {
    BeginUndoCommandBlock(kind);
    SuspendDataSetMarking();
    bool ok = work();
    UnsuspendDataSetMarking();
    EndUndoCommandBlock(ok);
    DataSet_s *dataSet = CurFrame != nullptr ? CurFrame->DataSet : nullptr;
    if (ok && dataSet != nullptr) {
        if (cmd.RawData != nullptr) MarkDataSetAsChanged(dataSet);
        else if (dataSet->Journal.IsValid && cmd.Command != nullptr) JournalRegisterMacroCommand(dataSet, cmd.Command);
    }
    return ok;
}

// The zone creators make a data set when the frame has none.
bool createRectangularZone(const ActionCommand_s &cmd) {
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&cmd] { return CreateRectangularZone(cmd.integer(MacroSetValue_IMAX, 1), cmd.integer(MacroSetValue_JMAX, 1),
                                 cmd.integer(MacroSetValue_KMAX, 1), cmd.number(MacroSetValue_X1, 0),
                                 cmd.number(MacroSetValue_Y1, 0), cmd.number(MacroSetValue_Z1, 0),
                                 cmd.number(MacroSetValue_X2, 1), cmd.number(MacroSetValue_Y2, 1),
                                 cmd.number(MacroSetValue_Z2, 1), entity(cmd, MacroSetValue_XVAR, 0),
                                 entity(cmd, MacroSetValue_YVAR, 1), entity(cmd, MacroSetValue_ZVAR, 2), dataType(cmd)); });
}

bool createCircularZone(const ActionCommand_s &cmd) {
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&cmd] { return CreateCircularZone(cmd.integer(MacroSetValue_IMAX, 1), cmd.integer(MacroSetValue_JMAX, 1),
                              cmd.integer(MacroSetValue_KMAX, 1), cmd.number(MacroSetValue_X, 0),
                              cmd.number(MacroSetValue_Y, 0), cmd.number(MacroSetValue_Z1, 0),
                              cmd.number(MacroSetValue_Z2, 1), cmd.number(MacroSetValue_RADIUS, 1),
                              entity(cmd, MacroSetValue_XVAR, 0), entity(cmd, MacroSetValue_YVAR, 1),
                              entity(cmd, MacroSetValue_ZVAR, 2), dataType(cmd)); });
}

// CREATESIMPLEZONE: raw data of the number of points and the values per point, then the values,
// point after point; CREATESIMPLEXYZONE: the number of points, then X Y pairs.
bool createSimpleZone(const ActionCommand_s &cmd) {
    CookedRawData_s raw;
    RawPolyline_s values;
    if (!CookActionRawData(cmd, &raw) || !LoadPolylineRawMacroData(raw.Text, cmd.Line, cmd.Command, &values)) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] {
        return CreateSimpleZone(values.NumPoints, EntIndex_t(values.NumValuesPerPoint), values.Values.data(), dataType(cmd), true);
    });
}

bool createSimpleXYZone(const ActionCommand_s &cmd) {
    CookedRawData_s raw;
    std::vector<XY_s> points;
    if (!CookActionRawData(cmd, &raw) || !LoadXYPolylineRawMacroData(raw.Text, cmd.Line, cmd.Command, &points)) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] {
        return CreateSimpleXYZone(LgIndex_t(points.size()), points.data(), dataType(cmd), true);
    });
}

bool deleteZones(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("delete zone");
    if (dataSet == nullptr) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] { return DeleteZones(dataSet, cmd.Set); });
}

bool deleteVars(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("delete variable");
    if (dataSet == nullptr) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] { return DeleteVars(dataSet, cmd.Set); });
}

IndexRange_s rangeOf(const ActionCommand_s &cmd, int parent) {
    return IndexRange_s{cmd.integer(MacroSetValue_MIN, 1, parent), cmd.integer(MacroSetValue_MAX, 0, parent),
                        cmd.integer(MacroSetValue_SKIP, 1, parent)};
}

bool duplicateZone(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("duplicate a zone");
    if (dataSet == nullptr || !checkZone(cmd, dataSet, entity(cmd, MacroSetValue_SOURCEZONE))) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] {
        return DuplicateZone(entity(cmd, MacroSetValue_SOURCEZONE), rangeOf(cmd, MacroSetValue_IRANGE),
                             rangeOf(cmd, MacroSetValue_JRANGE), rangeOf(cmd, MacroSetValue_KRANGE));
    });
}

bool createMirrorZones(const ActionCommand_s &cmd) {
    if (needData("mirror zones") == nullptr) return false;
    const ActionOptionValue_s *zones = cmd.find(MacroSetValue_SOURCEZONES);
    const ActionOptionValue_s *axis = cmd.find(MacroSetValue_MIRRORVAR);
    std::string word = axis != nullptr ? axis->Text : "X";
    if (word.size() != 1 || (toupper(word[0]) != 'X' && toupper(word[0]) != 'Y' && toupper(word[0]) != 'Z'))
        return cmd.fail("Invalid mirror axis");
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] { return CreateMirrorZones(zones->Set, char(toupper(word[0]))); });
}

bool setFieldValue(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("set a field value");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE), var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone) || !checkVar(cmd, dataSet, var)) return false;
    cmd.logAction();
    bool changed = false;
    return alterData(cmd, UndoBlock_DataAlteration, [&] {
        return SetFieldValueInCurrentDataSet(zone, var, cmd.integer(MacroSetValue_INDEX, 1) - 1,
                                             cmd.number(MacroSetValue_FIELDVALUE, 0),
                                             cmd.flag(MacroSetValue_AUTOBRANCH, false), &changed);
    });
}

bool getFieldValue(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a field value");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE), var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone) || !checkVar(cmd, dataSet, var)) return false;
    FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
    LgIndex_t index = cmd.integer(MacroSetValue_INDEX, 1) - 1;
    if (fieldData == nullptr || index < 0 || index >= fieldData->NumValues)
        return cmd.fail("Index out of range for zone " + std::to_string(zone + 1) + ".");
    return assign(cmd, MacroNumberText(GetFieldValue(fieldData, index)));
}

bool getFieldValueRefCount(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a reference count");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE), var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone) || !checkVar(cmd, dataSet, var)) return false;
    return assign(cmd, std::to_string(GetVarShareReferenceCount(dataSet, zone, var)));
}

bool branchFieldDataVar(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("branch a variable");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE), var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone) || !checkVar(cmd, dataSet, var)) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] { return BranchVariable(dataSet, zone, var); });
}

bool shareFieldDataVar(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("share a variable");
    EntIndex_t source = entity(cmd, MacroSetValue_SOURCEZONE), target = entity(cmd, MacroSetValue_DESTINATIONZONE);
    EntIndex_t var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, source) || !checkZone(cmd, dataSet, target) ||
        !checkVar(cmd, dataSet, var))
        return false;
    FieldData_a sourceData = GetNativeFieldDataPtr(dataSet, source, var);
    if (sourceData == nullptr ||
        !OkToShareNativeVarBetweenZones(dataSet, source, GetZoneSpec(dataSet, target), sourceData->Location, var))
        return cmd.fail("The zones are not compatible for sharing.");
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] {
        ShareVariable(dataSet, source, target, var);
        return true;
    });
}

bool getNodeIndex(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a node index");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone)) return false;
    NodeMap_a nodeMap = GetZoneData(dataSet, zone)->NodeMap;
    LgIndex_t element = cmd.integer(MacroSetValue_ELEMENT, 1) - 1, corner = cmd.integer(MacroSetValue_CORNER, 1) - 1;
    if (nodeMap == nullptr) return cmd.fail("Zone is not finite-element.");
    if (element < 0 || element >= nodeMap->NumElements || corner < 0 || corner >= nodeMap->NodesPerElement)
        return cmd.fail("Element or corner out of range.");
    return assign(cmd, std::to_string(NodeMapGetNode(nodeMap, element, int(corner)) + 1));
}

bool getConnectivityRefCount(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a reference count");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone)) return false;
    return assign(cmd, std::to_string(GetConnectivityReferenceCount(dataSet, zone)));
}

bool branchConnectivity(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("branch connectivity");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone)) return false;
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] { return BranchConnectivity(dataSet, zone); });
}

bool shareConnectivity(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("share connectivity");
    EntIndex_t source = entity(cmd, MacroSetValue_SOURCEZONE), target = entity(cmd, MacroSetValue_DESTINATIONZONE);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, source) || !checkZone(cmd, dataSet, target)) return false;
    if (!OkToShareConnectivityBetweenZones(dataSet, source, GetZoneSpec(dataSet, target)))
        return cmd.fail("The zones are not compatible for sharing connectivity.");
    cmd.logAction();
    return alterData(cmd, UndoBlock_DataStructure, [&] {
        ShareConnectivity(dataSet, source, target);
        return true;
    });
}

bool getZoneType(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a zone type");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone)) return false;
    std::string name;
    GetEnumText(GetZoneSpec(dataSet, zone)->Type, MacroSetValue_ZONETYPE, false, &name);
    return assign(cmd, name);
}

bool getVarLocation(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a variable location");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE), var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone) || !checkVar(cmd, dataSet, var)) return false;
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    return assign(cmd, fieldData != nullptr && fieldData->Location == ValueLocation_CellCentered ? "CELLCENTERED" : "NODAL");
}

bool renameVar(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("rename a variable");
    EntIndex_t var = entity(cmd, MacroSetValue_VAR);
    if (dataSet == nullptr || !checkVar(cmd, dataSet, var)) return false;
    cmd.logAction();
    if (!alterData(cmd, UndoBlock_DataStructure,
                   [&] { return SetVarName(dataSet, var, cmd.find(MacroSetValue_NAME)->Text.c_str()); }))
        return false;
    StateChanged(StateChange_VarName, nullptr);
    return true;
}

bool renameZone(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("rename a zone");
    EntIndex_t zone = entity(cmd, MacroSetValue_ZONE);
    if (dataSet == nullptr || !checkZone(cmd, dataSet, zone)) return false;
    cmd.logAction();
    if (!alterData(cmd, UndoBlock_DataStructure,
                   [&] { return SetZoneName(dataSet, zone, cmd.find(MacroSetValue_NAME)->Text.c_str()); }))
        return false;
    StateChanged(StateChange_ZoneName, nullptr);
    return true;
}

bool setTitle(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("set the data set title");
    if (dataSet == nullptr) return false;
    cmd.logAction();
    std::string title = cmd.String.substr(0, 256);
    return alterData(cmd, UndoBlock_DataStructure, [&] { return SetDatasetTitle(dataSet, title.c_str()); });
}

bool getCurFrameName(const ActionCommand_s &cmd) { return assign(cmd, CurFrame != nullptr ? CurFrame->Name : ""); }

bool getVarNumByName(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("get a variable number");
    if (dataSet == nullptr) return false;
    const ActionOptionValue_s *name = cmd.find(MacroSetValue_NAME);
    for (EntIndex_t var = 0; name != nullptr && var < dataSet->NumVars; var++)
        if (IsVarEnabled(dataSet, var) && name->Text == GetVarName(dataSet, var)) return assign(cmd, std::to_string(var + 1));
    return cmd.fail("Variable name not found in the data set.");
}

// The auxiliary data of AUXDATALOCATION with its ZONE or VAR; frames and line maps keep none yet.
AuxData_s **auxDataOf(const ActionCommand_s &cmd) {
    DataSet_s *dataSet = needData("use auxiliary data");
    if (dataSet == nullptr) return nullptr;
    switch (cmd.integer(MacroSetValue_AUXDATALOCATION, 1)) {
    case 0: {  // ZONE
        EntIndex_t zone = entity(cmd, MacroSetValue_ZONE);
        return checkZone(cmd, dataSet, zone) ? &GetZoneSpec(dataSet, zone)->AuxData : nullptr;
    }
    case 1:  // DATASET
        return &dataSet->AuxData;
    case 3: {  // VAR
        EntIndex_t var = entity(cmd, MacroSetValue_VAR);
        return checkVar(cmd, dataSet, var) ? &GetVarSpec(dataSet, var)->AuxData : nullptr;
    }
    default:
        cmd.fail("Auxiliary data of frames and line maps is not available yet.");
        return nullptr;
    }
}

bool setAuxData(const ActionCommand_s &cmd) {
    AuxData_s **aux = auxDataOf(cmd);
    if (aux == nullptr) return false;
    const std::string &name = cmd.find(MacroSetValue_NAME)->Text;
    if (!AuxDataIsValidName(name.c_str())) return cmd.fail("Invalid auxiliary data name.");
    if (*aux == nullptr && (*aux = AuxDataAlloc()) == nullptr) return cmd.fail("Out of memory.");
    cmd.logAction();
    const std::string &value = cmd.find(MacroSetValue_VALUESTRING)->Text;
    if (!AuxDataSetItem(*aux, name.c_str(), ArbParam_t(value.c_str()), AuxDataType_String, true)) return false;
    StateChanged(StateChange_AuxDataAltered, nullptr);
    return true;
}

bool getAuxData(const ActionCommand_s &cmd) {
    AuxData_s **aux = auxDataOf(cmd);
    if (aux == nullptr) return false;
    const std::string &name = cmd.find(MacroSetValue_NAME)->Text;
    ArbParam_t value;
    AuxDataType_e type;
    bool retain;
    if (*aux == nullptr || !AuxDataGetItemByName(*aux, name.c_str(), &value, &type, &retain))
        return cmd.fail("Auxiliary data item " + name + " does not exist.");
    return assign(cmd, reinterpret_cast<const char *>(value));
}

bool deleteAuxData(const ActionCommand_s &cmd) {
    AuxData_s **aux = auxDataOf(cmd);
    if (aux == nullptr) return false;
    const std::string &name = cmd.find(MacroSetValue_NAME)->Text;
    if (*aux == nullptr || !AuxDataDeleteItemByName(*aux, name.c_str()))
        return cmd.fail("Auxiliary data item " + name + " does not exist.");
    cmd.logAction();
    StateChanged(StateChange_AuxDataDeleted, nullptr);
    return true;
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
