// State changes: the announcement of what changed, told to every listener (sidebar, dialogs,
// add-ons). Delivery is synchronous in the caller: the immediate internal work first, then the
// internal listeners and the add-on listeners in order of registration. Each nesting depth of
// StateChanged has its own supplemental record, which the raiser fills just before the call and
// which lives only during it. Also here: the layout-dirty flag and the interface suspension
// count, which decide what a listener of the oldest protocol sees.
// Relies on: set, globals (OrvanexIsQuitting), the data set (immediate work on codes 0, 1, 4),
// frames (CurFrame) and the macro vocabulary (set-value rows of style changes).
#pragma once

#include "base/kernel/types.h"

struct Set_a;

// The codes of state changes. The numbers are fixed: add-ons compare them.
enum StateChange_e {
    StateChange_VarsAltered = 0,
    StateChange_VarsAdded = 1,
    StateChange_ZonesDeleted = 2,
    StateChange_ZonesAdded = 3,
    StateChange_NodeMapsAltered = 4,
    StateChange_FrameDeleted = 5,
    StateChange_NewTopFrame = 6,
    StateChange_Style = 7,
    StateChange_DataSetReset = 8,
    StateChange_NewLayout = 9,
    StateChange_InterfaceRefresh = 10,
    StateChange_LineMapAssign = 11,
    StateChange_ContourLevels = 12,
    StateChange_ModalDialogLaunch = 13,
    StateChange_ModalDialogDismiss = 14,
    StateChange_Quit = 15,
    StateChange_ZoneName = 16,
    StateChange_VarName = 17,
    StateChange_LineMapName = 18,
    StateChange_LineMapSet = 19,
    StateChange_View = 20,
    StateChange_ColorMap = 21,
    StateChange_ContourVar = 22,
    StateChange_Streamtrace = 23,
    StateChange_AxisVars = 24,
    StateChange_MouseMode = 25,
    StateChange_PickListCleared = 26,
    StateChange_PickListGroup = 27,
    StateChange_PickListSingle = 28,
    StateChange_PickListStyle = 29,
    StateChange_DataSetFileName = 30,
    StateChange_UnsuspendInterface = 31,
    StateChange_SuspendInterface = 32,
    StateChange_DataSetLockOn = 33,
    StateChange_DataSetLockOff = 34,
    StateChange_Text = 35,
    StateChange_Geom = 36,
    StateChange_DataSetTitle = 37,
    StateChange_RedrawFinished = 38,
    StateChange_PrintPreviewOpen = 39,
    StateChange_PrintPreviewClose = 40,
    StateChange_AuxDataAdded = 41,
    StateChange_AuxDataDeleted = 42,
    StateChange_AuxDataAltered = 43,
    StateChange_VarsDeleted = 44,
    StateChange_OrvanexIsInitialized = 45,
    StateChange_ExportNextFrame = 46,
    StateChange_VariableLockOn = 47,
    StateChange_VariableLockOff = 48,
};

// The version of the change protocol a listener speaks. V75 listeners know neither interface
// suspension nor the text and geometry codes, and get them translated.
enum StateChangeMode_e : int16_t {
    StateChangeMode_V75 = 0,
    StateChangeMode_V80 = 1,
    StateChangeMode_V100 = 2,
};

// How a listener is called: CLASSIC with the code and one value (GetOldV1PrimaryStateChangeCallData),
// CHANGEONLY with the code alone (details through the getters), CHANGEPLUSCLIENT with the code and
// the client data given at registration.
enum StateChangeCallbackAPI_e : int16_t {
    StateChangeCallbackAPI_Classic = 0,
    StateChangeCallbackAPI_ChangeOnly = 1,
    StateChangeCallbackAPI_ChangePlusClient = 2,
};

// What StateChanged does, for all codes but the modal dialog codes 13 and 14, which are always
// delivered: 0 everything; 1 the internal work without the listeners (a rebuild by undo);
// 2 nothing at all (a large read).
enum StateChangedAction_e : int16_t {
    StateChangedAction_Deliver = 0,
    StateChangedAction_InternalWorkOnly = 1,
    StateChangedAction_IgnoreAllButModal = 2,
};

// Nesting depths of StateChanged the supplemental records can hold; listeners do not come near it.
constexpr int MaxStateChangeDepth = 50;
// Positions of style parameters in a supplemental record.
constexpr int NumStateChangeStyleParams = 7;

using StateChangeClassicCallback_pf = void (*)(StateChange_e change, ArbParam_t callData);
using StateChangeOnlyCallback_pf = void (*)(StateChange_e change);
using StateChangePlusClientCallback_pf = void (*)(StateChange_e change, ArbParam_t clientData);

// ---- listeners ------------------------------------------------------------------------------

// A function is registered once at most: registering it again (while it is registered) fails and
// changes nothing. Internal listeners hear a change before add-on listeners; within each group
// the order is that of registration. A new listener speaks V100 until StateChangeSetMode says
// otherwise. A listener registered during a delivery is reached later in that same delivery.
bool RegisterStateChangeCallback(StateChangeOnlyCallback_pf callback, bool isAddOn = false);
bool RegisterStateChangeCallback(StateChangeClassicCallback_pf callback, bool isAddOn = false);
bool RegisterStateChangePlusClientCallback(StateChangePlusClientCallback_pf callback, ArbParam_t clientData,
                                           bool isAddOn = false);
// Safe during a delivery, also for the listener being called: it is not called again, and the
// others are each still called once. False if the function was not registered.
bool UnregisterStateChangeCallback(StateChangeOnlyCallback_pf callback);
bool UnregisterStateChangeCallback(StateChangeClassicCallback_pf callback);
bool IsStateChangeCallbackRegistered(StateChangeOnlyCallback_pf callback);
bool IsStateChangeCallbackRegistered(StateChangeClassicCallback_pf callback);
bool StateChangeSetMode(StateChangeOnlyCallback_pf callback, StateChangeMode_e mode);
bool StateChangeSetMode(StateChangeClassicCallback_pf callback, StateChangeMode_e mode);

void StateChangeSetStateChangedAction(StateChangedAction_e action);
StateChangedAction_e StateChangeGetStateChangedAction();

// ---- announcing -----------------------------------------------------------------------------

// What travels with a change, for raisers that fill it in one go; fields a change does not use
// stay null or -1.
struct StateChangeInfo_s {
    const Set_a *VarSet = nullptr;
    const Set_a *ZoneSet = nullptr;
    LgIndex_t Index = -1;
    ArbParam_t ArbEnum = -1;
};

// Announces a change with the supplemental record filled by the setters below, to which the
// fields of info (if given) are added. A listener may raise a further change; it is delivered at
// once, one depth further in, with its own record.
void StateChanged(StateChange_e change, const StateChangeInfo_s *info = nullptr);
// Code 0 for one variable of the zones (null: all). An index from 0 to below MAXINDEX names the
// single point that changed; any other index means the whole variable.
void VarAlteredStateChanged(const Set_a *zones, EntIndex_t var, LgIndex_t index);
// True while listeners are being called.
bool StateChangeInCallbackContext();

// ---- the supplemental record ----------------------------------------------------------------

// The setters fill the record of the next StateChanged call; the sets and the name stay the
// caller's and must live until that call returns.
void StateChangeSupplementalInfoSetIndex(LgIndex_t index);
void StateChangeSupplementalInfoSetArbEnum(int32_t arbEnum);
void StateChangeSupplementalInfoSetFieldMapSet(const Set_a *fieldMapSet);
void StateChangeSupplementalInfoSetZoneSet(const Set_a *zoneSet);
void StateChangeSupplementalInfoSetVarSet(const Set_a *varSet);
void StateChangeSupplementalInfoSetName(const char *name);
void StateChangeSupplementalInfoSetZone(EntIndex_t zone);
void StateChangeSupplementalInfoSetVar(EntIndex_t var);
void StateChangeSupplementalInfoSetMap(EntIndex_t map);
// position 0..6; for a style change the values are set-value rows, position 0 the outermost.
void StateChangeSupplementalInfoSetStyleParam(int position, ArbParam_t row);

// The getters read the record of the delivery in progress; false outside a delivery and for a
// field without a value. Style parameter 0 is translated for a V75 listener: FRAMEMODE for
// PLOTTYPE, XYMAP for LINEMAP, and 0 for the text and geometry codes.
bool StateChangeSupplementalInfoGetIndex(LgIndex_t *index);
bool StateChangeSupplementalInfoGetArbEnum(int32_t *arbEnum);
bool StateChangeSupplementalInfoGetFieldMapSet(const Set_a **fieldMapSet);
bool StateChangeSupplementalInfoGetZoneSet(const Set_a **zoneSet);
bool StateChangeSupplementalInfoGetVarSet(const Set_a **varSet);
bool StateChangeSupplementalInfoGetName(const char **name);
bool StateChangeSupplementalInfoGetZone(EntIndex_t *zone);
bool StateChangeSupplementalInfoGetVar(EntIndex_t *var);
bool StateChangeSupplementalInfoGetMap(EntIndex_t *map);
bool StateChangeSupplementalInfoGetStyleParam(int position, ArbParam_t *row);

// The one value a CLASSIC listener gets, read from the record of the delivery in progress: the
// VarSet for code 0, the ZoneSet for 2 and 4, the first style row for 7, the ArbEnum for 20, 23,
// 25, 41, 42 and 43, and 0 for all others and for a field without a value.
void GetOldV1PrimaryStateChangeCallData(StateChange_e change, ArbParam_t *value);
// What a listener of the mode receives for the change: *deliver false means nothing. Code 15 and
// the modes V80 and V100 pass unchanged. V75: nothing while the interface is suspended; 31
// arrives as 10; 35 and 36 arrive as 7.
void TranslateStateChange(StateChangeMode_e mode, StateChange_e *change, bool *deliver);

// ---- layout and interface -------------------------------------------------------------------

// Whether the layout has a change not yet saved.
void SetIsLayoutDirty(bool isDirty);
bool IsLayoutDirty();

// Suspensions of the interface are counted. Suspending raises code 32 after counting;
// unsuspending counts down, then raises code 31, so that a V75 listener sees one
// StateChange_InterfaceRefresh when the last suspension ends.
void SuspendInterface();
void UnsuspendInterface();
bool IsInterfaceSuspended();

// Start-up and shutdown: a clean state with delivery on; the layout starts clean; at shutdown only
// the modal dialog codes still go out.
void ResetStateChangeState();
void MarkLayoutClean();
void TurnOffStateChangeNotification();
