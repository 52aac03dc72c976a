// Process-wide state of the kernel: each global is set at one place of the start-up order and
// read everywhere.
#pragma once

#include <cstdio>
#include <string>

extern bool OrvanexIsInitialized;   // set just before the command-line start-up actions run
extern bool OrvanexIsQuitting;      // set once by InitiateShutdown
extern bool GraphicsAreInitialized; // true after Gr_Init succeeded
extern bool InBatchMode;            // set only by ProcessCommandLineOptions
extern bool WriteBatchLog;          // -NOBATCHLOG clears it
extern FILE *BatchFile;             // the open batch log, or null
extern bool DebugPlay;              // -Z: macros start stopped in the macro viewer
extern FILE *StdError;              // where debug output goes

extern std::string StartupDirectory;
extern std::string OrvanexHomeDirectory;
extern std::string OrvanexExePath;
extern std::string OrvanexAppVersionTitle;
extern std::string OrvanexAppTitle;
extern std::string X_DisplayString;
extern std::string ConfigFName, QuickMacroFName, FontFName, StyleFName, ColorFName, LayoutFName;

extern bool ShowOpeningBanner, ShowInitialSidebar, MainMenuDisabled, ToolbarDisabled,
    WantsToMaximizeProcessWindow;

// Work area of the screen in dots, and the dot pitch in dots per centimetre.
extern int WorkAreaWidth, WorkAreaHeight;
extern double DotsPerCmX, DotsPerCmY;

// What is being processed right now; some commands behave differently inside each.
extern bool IsProcessingConfigFile, IsProcessingDotAddFile, IsProcessingQuickMacros, IsProcessingLayout,
    IsProcessingStylesheet;

// Long work tests this (and the time-out flags of the idle module) and leaves quietly.
extern volatile bool Interrupted;

// The count of suspensions of drawing; batch mode suspends it for the whole run.
extern int GraphicsSuspended;

// The process's temporary directory; empty until InitializeTempDirectory succeeded.
extern std::string OrvanexTempDirectory;

// Puts every global above back to its value at start.
void ResetKernelGlobals();
