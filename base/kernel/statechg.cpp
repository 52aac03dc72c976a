// Delivery of state changes. The records of all depths sit in one fixed array: depth d (1 for
// the outermost delivery) uses records[d - 1], and the setters fill records[depth], the record
// of the call about to come. Listener lists only grow while a delivery runs: an unregistered
// listener is marked removed and the lists are compacted when the outermost delivery ends, so a
// walk by position neither skips nor repeats anyone and reaches listeners appended behind it.
// Relies on: set, globals, data set (MarkDataSetAsChanged and the scratch invalidations), frame
// (CurFrame), macro vocabulary tables (set-value rows).
#include "base/kernel/statechg.h"

#include <vector>

#include "base/data/dataset.h"
#include "base/data/datautil.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/set.h"
#include "base/macro/vocabtables.h"
#include "base/plot/draw0.h"
#include "base/plot/frame.h"

namespace {

// No listener is being called at this depth.
constexpr int16_t NoModeFilter = 255;

struct SupplementalInfo_s {
    StateChange_e Change;
    int16_t ModeFilter;  // the mode of the listener being called, or NoModeFilter
    bool HasIndex, HasArbEnum, HasName, HasZone, HasVar, HasMap, HasZoneSet, HasVarSet, HasFieldMapSet;
    LgIndex_t Index;
    int32_t ArbEnum;
    const char *Name;
    EntIndex_t Zone, Var, Map;
    const Set_a *ZoneSet;
    const Set_a *VarSet;
    const Set_a *FieldMapSet;
    bool HasStyleParam[NumStateChangeStyleParams];
    ArbParam_t StyleParam[NumStateChangeStyleParams];
};

// An empty record: every has-value flag false, no listener filter.
SupplementalInfo_s emptyRecord() {
    SupplementalInfo_s record{};
    record.ModeFilter = NoModeFilter;
    return record;
}

struct Listener_s {
    StateChangeCallbackAPI_e API;
    StateChangeOnlyCallback_pf ChangeOnly;   // set for CHANGEONLY
    StateChangeClassicCallback_pf TwoValue;  // set for CLASSIC and CHANGEPLUSCLIENT
    ArbParam_t ClientData;
    StateChangeMode_e Mode;
    bool IsRemoved;
};

SupplementalInfo_s records[MaxStateChangeDepth];
int depth = 0;  // deliveries in progress
int listenerWalks = 0;  // walks over the listener lists in progress, nested ones included
std::vector<Listener_s> internalListeners;
std::vector<Listener_s> addOnListeners;
bool listRemovalPending = false;
StateChangedAction_e stateChangedAction = StateChangedAction_Deliver;
bool layoutIsDirty = false;
int interfaceSuspendCount = 0;

bool isModalDialogCode(StateChange_e change) {
    return change == StateChange_ModalDialogLaunch || change == StateChange_ModalDialogDismiss;
}

// The record the next StateChanged call will use; null past the last depth.
SupplementalInfo_s *pendingRecord() {
    CHECK(depth < MaxStateChangeDepth);
    return depth < MaxStateChangeDepth ? &records[depth] : nullptr;
}

// The record of the delivery in progress, or null outside one.
const SupplementalInfo_s *currentRecord() { return depth > 0 ? &records[depth - 1] : nullptr; }

// ---- listeners ------------------------------------------------------------------------------

template <typename Match>
Listener_s *findListener(Match match) {
    for (std::vector<Listener_s> *list : {&internalListeners, &addOnListeners})
        for (Listener_s &listener : *list)
            if (!listener.IsRemoved && match(listener)) return &listener;
    return nullptr;
}

Listener_s *findListener(StateChangeOnlyCallback_pf callback) {
    return findListener([callback](const Listener_s &l) { return l.ChangeOnly == callback; });
}

Listener_s *findListener(StateChangeClassicCallback_pf callback) {
    return findListener([callback](const Listener_s &l) { return l.TwoValue == callback; });
}

// A function is registered once at most, whatever its call style.
template <typename Callback>
bool addListener(Callback callback, const Listener_s &listener, bool isAddOn) {
    REQUIRE(callback != nullptr);
    if (findListener(callback) != nullptr) return false;
    (isAddOn ? addOnListeners : internalListeners).push_back(listener);
    return true;
}

bool removeListener(Listener_s *listener) {
    if (listener == nullptr) return false;
    listener->IsRemoved = true;
    listRemovalPending = true;
    return true;
}

void compactListeners() {
    for (std::vector<Listener_s> *list : {&internalListeners, &addOnListeners}) {
        size_t kept = 0;
        for (const Listener_s &listener : *list)
            if (!listener.IsRemoved) (*list)[kept++] = listener;
        list->resize(kept);
    }
    listRemovalPending = false;
}

// ---- immediate work -------------------------------------------------------------------------

DataSet_s *currentDataSet() { return CurFrame != nullptr ? CurFrame->DataSet : nullptr; }

// Computed objects built from a variable are rebuilt on demand once invalid; they join with the
// computed-object layer.
void invalidateCOBsOnVarChange(DataSet_s * /*dataSet*/, EntIndex_t /*var*/) {}
// Node maps carry no valid flag until element maps are cached with them.
void markNodeMapInvalid(DataSet_s * /*dataSet*/, EntIndex_t /*zone*/) {}
// Text and geometries after the data are redrawn.
void markFramePostDataForScreenUpdate() {
    if (CurFrame != nullptr) MarkFramePostDataForScreenUpdate(CurFrame);
}
// The list of auxiliary data names that must be unique is rebuilt on next use; joins with the
// auxiliary data dialogs.
void markAuxDataUniqueNameListForReset() {}

template <typename Visit>
void forEachMember(const Set_a *set, Visit visit) {
    for (SetIndex_t m = GetNextMember(set, -1); m != BADSETVALUE; m = GetNextMember(set, m))
        visit(static_cast<EntIndex_t>(m));
}

void varsAdded(const SupplementalInfo_s &record) {
    DataSet_s *dataSet = currentDataSet();
    if (dataSet == nullptr) return;
    const Set_a *vars = record.HasVarSet ? record.VarSet : dataSet->EnabledVars;
    forEachMember(vars, [dataSet](EntIndex_t var) { invalidateCOBsOnVarChange(dataSet, var); });
    MarkDataSetAsChanged(dataSet);
}

void varsAltered(const SupplementalInfo_s &record) {
    DataSet_s *dataSet = currentDataSet();
    if (dataSet == nullptr) return;
    InvalidateAllScratchOnVarValueChange(dataSet, record.HasZoneSet ? record.ZoneSet : nullptr,
                                         record.HasVarSet ? record.VarSet : nullptr);
}

// Only the connectivity changed: the values, and so their ranges, are as they were.
void nodeMapsAltered(const SupplementalInfo_s &record) {
    DataSet_s *dataSet = currentDataSet();
    if (dataSet == nullptr) return;
    const Set_a *zones = record.HasZoneSet ? record.ZoneSet : dataSet->EnabledZones;
    forEachMember(zones, [dataSet](EntIndex_t zone) {
        if (!IsZoneEnabled(dataSet, zone)) return;
        InvalidateAllScratchOnZoneStructureChange(dataSet, zone, false, false);
        if (ZoneTypeIsFE(GetZoneSpec(dataSet, zone)->Type)) markNodeMapInvalid(dataSet, zone);
    });
}

void doImmediateWork(const SupplementalInfo_s &record) {
    switch (record.Change) {
        case StateChange_VarsAdded: varsAdded(record); break;
        case StateChange_VarsAltered: varsAltered(record); break;
        case StateChange_NodeMapsAltered: nodeMapsAltered(record); break;
        case StateChange_Text:
        case StateChange_Geom: markFramePostDataForScreenUpdate(); break;
        case StateChange_ZonesDeleted:
        case StateChange_ZonesAdded:
        case StateChange_FrameDeleted:
        case StateChange_DataSetReset:
        case StateChange_AuxDataAdded:
        case StateChange_AuxDataDeleted: markAuxDataUniqueNameListForReset(); break;
        default: break;
    }
}

// ---- delivery -------------------------------------------------------------------------------

// Rows of interface, file and output settings: a layout does not store them.
bool isStyleRowOutsideLayout(ArbParam_t row) {
    return row == MacroSetValue_INTERFACE || row == MacroSetValue_FILECONFIG || row == MacroSetValue_EXPORTSETUP ||
           row == MacroSetValue_PRINTSETUP;
}

void updateLayoutDirty(const SupplementalInfo_s &record) {
    switch (record.Change) {
        case StateChange_VarsAltered:
        case StateChange_VarsAdded:
        case StateChange_ZonesDeleted:
        case StateChange_ZonesAdded:
        case StateChange_NodeMapsAltered:
        case StateChange_DataSetReset:
        case StateChange_Text:
        case StateChange_Geom:
        case StateChange_VarsDeleted: layoutIsDirty = true; break;
        case StateChange_Style:
            if (!record.HasStyleParam[0] || !isStyleRowOutsideLayout(record.StyleParam[0])) layoutIsDirty = true;
            break;
        default: break;
    }
}

// The CLASSIC value as an add-on sees it: the name of the style row instead of its number.
ArbParam_t addOnClassicValue(StateChange_e change, ArbParam_t value) {
    ArbParam_t row = 0;
    if (change != StateChange_Style || !StateChangeSupplementalInfoGetStyleParam(0, &row)) return value;
    if (row < 0 || row >= SetValueCommandListItemCount) return 0;
    return reinterpret_cast<ArbParam_t>(SetValueCommandList[row].Name);
}

void callListener(const Listener_s &listener, StateChange_e change, bool isAddOn) {
    SupplementalInfo_s &record = records[depth - 1];
    record.ModeFilter = listener.Mode;
    ArbParam_t value = 0;
    if (listener.API == StateChangeCallbackAPI_Classic) {
        GetOldV1PrimaryStateChangeCallData(change, &value);
        if (isAddOn) value = addOnClassicValue(change, value);
    }
    StateChange_e delivered = change;
    bool deliver = true;
    TranslateStateChange(listener.Mode, &delivered, &deliver);
    if (deliver) {
        switch (listener.API) {
            case StateChangeCallbackAPI_Classic: listener.TwoValue(delivered, value); break;
            case StateChangeCallbackAPI_ChangeOnly: listener.ChangeOnly(delivered); break;
            case StateChangeCallbackAPI_ChangePlusClient: listener.TwoValue(delivered, listener.ClientData); break;
        }
    }
    // The listener may have raised changes of its own; they have ended and left this record be.
    records[depth - 1].ModeFilter = NoModeFilter;
}

// Walks by position and copies each entry before the call: the call may append to the list
// (moving its storage) or mark entries removed, and neither may disturb the walk.
void informListeners(std::vector<Listener_s> &list, StateChange_e change, bool isAddOn) {
    for (size_t n = 0; n < list.size(); n++) {
        if (list[n].IsRemoved) continue;
        Listener_s listener = list[n];
        callListener(listener, change, isAddOn);
    }
}

void fillFromInfo(SupplementalInfo_s *record, const StateChangeInfo_s &info) {
    if (info.VarSet != nullptr) {
        record->VarSet = info.VarSet;
        record->HasVarSet = true;
    }
    if (info.ZoneSet != nullptr) {
        record->ZoneSet = info.ZoneSet;
        record->HasZoneSet = true;
    }
    if (info.Index != -1) {
        record->Index = info.Index;
        record->HasIndex = true;
    }
    if (info.ArbEnum != -1) {
        record->ArbEnum = static_cast<int32_t>(info.ArbEnum);
        record->HasArbEnum = true;
    }
}

}  // namespace

// ---- listeners ----------------------------------------------------------------------------

bool RegisterStateChangeCallback(StateChangeOnlyCallback_pf callback, bool isAddOn) {
    return addListener(callback,
                       {StateChangeCallbackAPI_ChangeOnly, callback, nullptr, 0, StateChangeMode_V100, false}, isAddOn);
}

bool RegisterStateChangeCallback(StateChangeClassicCallback_pf callback, bool isAddOn) {
    return addListener(callback, {StateChangeCallbackAPI_Classic, nullptr, callback, 0, StateChangeMode_V100, false},
                       isAddOn);
}

bool RegisterStateChangePlusClientCallback(StateChangePlusClientCallback_pf callback, ArbParam_t clientData,
                                           bool isAddOn) {
    return addListener(
        callback, {StateChangeCallbackAPI_ChangePlusClient, nullptr, callback, clientData, StateChangeMode_V100, false},
        isAddOn);
}

bool UnregisterStateChangeCallback(StateChangeOnlyCallback_pf callback) {
    bool found = removeListener(findListener(callback));
    if (depth == 0 && listRemovalPending) compactListeners();
    return found;
}

bool UnregisterStateChangeCallback(StateChangeClassicCallback_pf callback) {
    bool found = removeListener(findListener(callback));
    if (depth == 0 && listRemovalPending) compactListeners();
    return found;
}

bool IsStateChangeCallbackRegistered(StateChangeOnlyCallback_pf callback) { return findListener(callback) != nullptr; }

bool IsStateChangeCallbackRegistered(StateChangeClassicCallback_pf callback) {
    return findListener(callback) != nullptr;
}

bool StateChangeSetMode(StateChangeOnlyCallback_pf callback, StateChangeMode_e mode) {
    Listener_s *listener = findListener(callback);
    if (listener != nullptr) listener->Mode = mode;
    return listener != nullptr;
}

bool StateChangeSetMode(StateChangeClassicCallback_pf callback, StateChangeMode_e mode) {
    Listener_s *listener = findListener(callback);
    if (listener != nullptr) listener->Mode = mode;
    return listener != nullptr;
}

void StateChangeSetStateChangedAction(StateChangedAction_e action) { stateChangedAction = action; }

StateChangedAction_e StateChangeGetStateChangedAction() { return stateChangedAction; }

// ---- announcing ---------------------------------------------------------------------------

void StateChanged(StateChange_e change, const StateChangeInfo_s *info) {
    SupplementalInfo_s *record = pendingRecord();
    if (record == nullptr) return;
    if ((stateChangedAction == StateChangedAction_IgnoreAllButModal || OrvanexIsQuitting) &&
        !isModalDialogCode(change)) {
        // The record the raiser filled goes with the call that would have used it.
        *record = emptyRecord();
        return;
    }
    if (info != nullptr) fillFromInfo(record, *info);
    depth++;
    record->Change = change;
    record->ModeFilter = NoModeFilter;

    updateLayoutDirty(*record);
    doImmediateWork(*record);

    if (stateChangedAction == StateChangedAction_Deliver || isModalDialogCode(change)) {
        listenerWalks++;
        informListeners(internalListeners, change, false);
        informListeners(addOnListeners, change, true);
        listenerWalks--;
    }

    // A listener may have filled the next depth's record without raising anything; that record
    // dies with this call too.
    if (depth < MaxStateChangeDepth) records[depth] = emptyRecord();
    records[depth - 1] = emptyRecord();
    depth--;
    if (depth == 0 && listRemovalPending) compactListeners();
}

void VarAlteredStateChanged(const Set_a *zones, EntIndex_t var, LgIndex_t index) {
    Set_a *vars = AllocSet(false);
    // Without memory for the one-variable set the change is told for all variables, which
    // covers the one that changed.
    if (vars != nullptr && !AddToSet(vars, var, false)) DeallocSet(&vars);
    StateChangeInfo_s info;
    info.ZoneSet = zones;
    info.VarSet = vars;
    if (index >= 0 && index < MAXINDEX) info.Index = index;
    StateChanged(StateChange_VarsAltered, &info);
    DeallocSet(&vars);
}

bool StateChangeInCallbackContext() { return listenerWalks > 0; }

// ---- the supplemental record --------------------------------------------------------------

void StateChangeSupplementalInfoSetIndex(LgIndex_t index) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->Index = index;
        record->HasIndex = true;
    }
}

void StateChangeSupplementalInfoSetArbEnum(int32_t arbEnum) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->ArbEnum = arbEnum;
        record->HasArbEnum = true;
    }
}

void StateChangeSupplementalInfoSetFieldMapSet(const Set_a *fieldMapSet) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->FieldMapSet = fieldMapSet;
        record->HasFieldMapSet = true;
    }
}

void StateChangeSupplementalInfoSetZoneSet(const Set_a *zoneSet) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->ZoneSet = zoneSet;
        record->HasZoneSet = true;
    }
}

void StateChangeSupplementalInfoSetVarSet(const Set_a *varSet) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->VarSet = varSet;
        record->HasVarSet = true;
    }
}

void StateChangeSupplementalInfoSetName(const char *name) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->Name = name;
        record->HasName = true;
    }
}

void StateChangeSupplementalInfoSetZone(EntIndex_t zone) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->Zone = zone;
        record->HasZone = true;
    }
}

void StateChangeSupplementalInfoSetVar(EntIndex_t var) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->Var = var;
        record->HasVar = true;
    }
}

void StateChangeSupplementalInfoSetMap(EntIndex_t map) {
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->Map = map;
        record->HasMap = true;
    }
}

void StateChangeSupplementalInfoSetStyleParam(int position, ArbParam_t row) {
    REQUIRE(0 <= position && position < NumStateChangeStyleParams);
    if (SupplementalInfo_s *record = pendingRecord()) {
        record->StyleParam[position] = row;
        record->HasStyleParam[position] = true;
    }
}

namespace {

template <typename T>
bool getField(bool SupplementalInfo_s::*has, T SupplementalInfo_s::*field, T *value) {
    REQUIRE(value != nullptr);
    const SupplementalInfo_s *record = currentRecord();
    if (record == nullptr || !(record->*has)) return false;
    *value = record->*field;
    return true;
}

}  // namespace

bool StateChangeSupplementalInfoGetIndex(LgIndex_t *index) {
    return getField(&SupplementalInfo_s::HasIndex, &SupplementalInfo_s::Index, index);
}

bool StateChangeSupplementalInfoGetArbEnum(int32_t *arbEnum) {
    return getField(&SupplementalInfo_s::HasArbEnum, &SupplementalInfo_s::ArbEnum, arbEnum);
}

bool StateChangeSupplementalInfoGetFieldMapSet(const Set_a **fieldMapSet) {
    return getField(&SupplementalInfo_s::HasFieldMapSet, &SupplementalInfo_s::FieldMapSet, fieldMapSet);
}

bool StateChangeSupplementalInfoGetZoneSet(const Set_a **zoneSet) {
    return getField(&SupplementalInfo_s::HasZoneSet, &SupplementalInfo_s::ZoneSet, zoneSet);
}

bool StateChangeSupplementalInfoGetVarSet(const Set_a **varSet) {
    return getField(&SupplementalInfo_s::HasVarSet, &SupplementalInfo_s::VarSet, varSet);
}

bool StateChangeSupplementalInfoGetName(const char **name) {
    return getField(&SupplementalInfo_s::HasName, &SupplementalInfo_s::Name, name);
}

bool StateChangeSupplementalInfoGetZone(EntIndex_t *zone) {
    return getField(&SupplementalInfo_s::HasZone, &SupplementalInfo_s::Zone, zone);
}

bool StateChangeSupplementalInfoGetVar(EntIndex_t *var) {
    return getField(&SupplementalInfo_s::HasVar, &SupplementalInfo_s::Var, var);
}

bool StateChangeSupplementalInfoGetMap(EntIndex_t *map) {
    return getField(&SupplementalInfo_s::HasMap, &SupplementalInfo_s::Map, map);
}

bool StateChangeSupplementalInfoGetStyleParam(int position, ArbParam_t *row) {
    REQUIRE(0 <= position && position < NumStateChangeStyleParams);
    REQUIRE(row != nullptr);
    const SupplementalInfo_s *record = currentRecord();
    if (record == nullptr) return false;
    if (position == 0 && record->ModeFilter == StateChangeMode_V75) {
        // A V75 listener receives text and geometry changes as style changes without a row.
        if (record->Change == StateChange_Text || record->Change == StateChange_Geom) {
            *row = 0;
            return true;
        }
        if (!record->HasStyleParam[0]) return false;
        ArbParam_t value = record->StyleParam[0];
        if (value == MacroSetValue_PLOTTYPE) value = MacroSetValue_FRAMEMODE;
        else if (value == MacroSetValue_LINEMAP) value = MacroSetValue_XYMAP;
        *row = value;
        return true;
    }
    if (!record->HasStyleParam[position]) return false;
    *row = record->StyleParam[position];
    return true;
}

void GetOldV1PrimaryStateChangeCallData(StateChange_e change, ArbParam_t *value) {
    REQUIRE(value != nullptr);
    *value = 0;
    switch (change) {
        case StateChange_VarsAltered: {
            const Set_a *varSet = nullptr;
            if (StateChangeSupplementalInfoGetVarSet(&varSet)) *value = reinterpret_cast<ArbParam_t>(varSet);
            break;
        }
        case StateChange_ZonesDeleted:
        case StateChange_NodeMapsAltered: {
            const Set_a *zoneSet = nullptr;
            if (StateChangeSupplementalInfoGetZoneSet(&zoneSet)) *value = reinterpret_cast<ArbParam_t>(zoneSet);
            break;
        }
        case StateChange_Style: {
            ArbParam_t row = 0;
            if (StateChangeSupplementalInfoGetStyleParam(0, &row)) *value = row;
            break;
        }
        case StateChange_View:
        case StateChange_Streamtrace:
        case StateChange_MouseMode:
        case StateChange_AuxDataAdded:
        case StateChange_AuxDataDeleted:
        case StateChange_AuxDataAltered: {
            int32_t arbEnum = 0;
            if (StateChangeSupplementalInfoGetArbEnum(&arbEnum)) *value = arbEnum;
            break;
        }
        default: break;
    }
}

void TranslateStateChange(StateChangeMode_e mode, StateChange_e *change, bool *deliver) {
    REQUIRE(change != nullptr && deliver != nullptr);
    *deliver = true;
    if (*change == StateChange_Quit || mode != StateChangeMode_V75) return;
    if (IsInterfaceSuspended()) {
        *deliver = false;
        return;
    }
    if (*change == StateChange_UnsuspendInterface)
        *change = StateChange_InterfaceRefresh;
    else if (*change == StateChange_Text || *change == StateChange_Geom)
        *change = StateChange_Style;
}

// ---- layout and interface -----------------------------------------------------------------

void SetIsLayoutDirty(bool isDirty) { layoutIsDirty = isDirty; }

bool IsLayoutDirty() { return layoutIsDirty; }

void SuspendInterface() {
    interfaceSuspendCount++;
    StateChanged(StateChange_SuspendInterface);
}

void UnsuspendInterface() {
    REQUIRE(interfaceSuspendCount > 0);
    interfaceSuspendCount--;
    StateChanged(StateChange_UnsuspendInterface);
}

bool IsInterfaceSuspended() { return interfaceSuspendCount > 0; }

void ResetStateChangeState() {
    StateChangeSetStateChangedAction(StateChangedAction_Deliver);
    SetIsLayoutDirty(false);
}

void MarkLayoutClean() { SetIsLayoutDirty(false); }

void TurnOffStateChangeNotification() { StateChangeSetStateChangedAction(StateChangedAction_IgnoreAllButModal); }
