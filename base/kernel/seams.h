// Steps of start-up and shutdown that belong to subsystems not built yet. Each has the name of the
// step it stands for, succeeds and does nothing; a step moves to its own module when that
// subsystem lands. Facilities a user can ask for by name (reading data, layouts, stylesheets,
// color maps, add-ons) say once that they are not available, and start-up goes on.
#pragma once

#include <string>

struct StringList_s;

// start-up, phase 1
void InitializeInternalMacroSettings();
void ClearExtendedCurveFits();
void InitRawUserColorMap();  // defined with the contour colour maps
void InitializeAddOnVars();
void InitializeInterfaceAttributes();
void InitializeNonconfigurableInputSpecs();
bool AllocBaseFrameAttributePointers();
void InitCZData();
void InitCZInfo();
void InitLineMapInfo();
void PushPaperView();
void SaveInitialWorkspaceSettings();
bool ReadInInternalFont();

// start-up, phase 4
void RegisterSidebarStateChangeMonitor();
void ConfigureInterfaceLayout();
void InitializeWorkArea();
void InitializeMainMenu();
void SetMainWindowTitle();
void BroadcastStartupCompleted();
bool OpenQuickMacroPanel();

// the command-line start-up actions
bool Action_OpenLayout(const std::string &layoutFileName, const StringList_s *alternateDataFiles);
bool Action_LoadColorMap(const std::string &fileName);  // defined with the contour colour maps
bool Action_ReadStylesheet(const std::string &fileName);
bool Action_LoadAddOn(const std::string &addOnName);

// shutdown
void FinishExportRecording();
void EndUnstableMouseMode();
void NewLayout();
void FreeExtraMapData();
void ReleaseDisplayLists();
void DeleteOrvanexInternalsPending();
void MopupAddOns();
