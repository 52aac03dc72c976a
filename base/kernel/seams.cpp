#include "base/kernel/seams.h"

#include "base/kernel/errors.h"

void InitializeInternalMacroSettings() {}
void ClearExtendedCurveFits() {}
void InitializeAddOnVars() {}
void InitializeInterfaceAttributes() {}
void InitializeNonconfigurableInputSpecs() {}
bool AllocBaseFrameAttributePointers() { return true; }
void InitCZData() {}
void InitCZInfo() {}
void InitLineMapInfo() {}
void PushPaperView() {}
void SaveInitialWorkspaceSettings() {}
bool ReadInInternalFont() { return true; }

void RegisterSidebarStateChangeMonitor() {}
void ConfigureInterfaceLayout() {}
void InitializeWorkArea() {}
void InitializeMainMenu() {}
void SetMainWindowTitle() {}
void BroadcastStartupCompleted() {}
bool OpenQuickMacroPanel() { return true; }

bool Action_OpenLayout(const std::string &, const StringList_s *) {
    ErrMsg("Opening layout files is not available in this version of Orvanex.");
    return false;
}

bool Action_ReadStylesheet(const std::string &) {
    ErrMsg("Reading stylesheets is not available in this version of Orvanex.");
    return false;
}

bool Action_LoadAddOn(const std::string &addOnName) {
    ErrMsg("Cannot load add-on %s: add-ons are not available in this version of Orvanex.", addOnName.c_str());
    return false;
}


void FinishExportRecording() {}
void EndUnstableMouseMode() {}
void NewLayout() {}
void FreeExtraMapData() {}
void ReleaseDisplayLists() {}
void DeleteOrvanexInternalsPending() {}
void MopupAddOns() {}
