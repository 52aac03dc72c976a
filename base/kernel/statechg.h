// The codes of state changes: what changed, told to every listener (sidebar, dialogs, add-ons).
// The numbers are fixed: add-ons compare them.
#pragma once

#include "base/kernel/types.h"

struct Set_a;

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

// What travels with a change; fields a change does not use stay null or -1.
struct StateChangeInfo_s {
    const Set_a *VarSet = nullptr;
    const Set_a *ZoneSet = nullptr;
    LgIndex_t Index = -1;
    ArbParam_t ArbEnum = 0;
};

// Announces a change. Until listeners can register, nobody hears it; the call sites are final.
void StateChanged(StateChange_e change, const StateChangeInfo_s *info);
