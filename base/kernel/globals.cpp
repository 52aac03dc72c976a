#include "base/kernel/globals.h"

bool OrvanexIsInitialized = false;
bool OrvanexIsQuitting = false;
bool GraphicsAreInitialized = false;
bool InBatchMode = false;
bool WriteBatchLog = true;
FILE *BatchFile = nullptr;
bool DebugPlay = false;
FILE *StdError = stderr;

std::string StartupDirectory;
std::string OrvanexHomeDirectory = "/usr/orvz9";
std::string OrvanexExePath;
std::string OrvanexAppVersionTitle = "Orvanex Z9";
std::string OrvanexAppTitle = "Orvanex Z9";
std::string X_DisplayString;
std::string ConfigFName, QuickMacroFName, FontFName, StyleFName, ColorFName, LayoutFName;

bool ShowOpeningBanner = true, ShowInitialSidebar = true, MainMenuDisabled = false, ToolbarDisabled = false,
     WantsToMaximizeProcessWindow = false;

int WorkAreaWidth = 800, WorkAreaHeight = 600;
double DotsPerCmX = 38.0, DotsPerCmY = 38.0;

bool IsProcessingConfigFile = false, IsProcessingDotAddFile = false, IsProcessingQuickMacros = false,
     IsProcessingLayout = false, IsProcessingStylesheet = false;

volatile bool Interrupted = false;
int GraphicsSuspended = 0;
std::string OrvanexTempDirectory;

void ResetKernelGlobals() {
    OrvanexIsInitialized = false;
    OrvanexIsQuitting = false;
    GraphicsAreInitialized = false;
    InBatchMode = false;
    WriteBatchLog = true;
    BatchFile = nullptr;
    DebugPlay = false;
    StdError = stderr;
    OrvanexHomeDirectory = "/usr/orvz9";
    OrvanexExePath.clear();
    OrvanexAppVersionTitle = "Orvanex Z9";
    OrvanexAppTitle = "Orvanex Z9";
    X_DisplayString.clear();
    ConfigFName.clear();
    QuickMacroFName.clear();
    FontFName.clear();
    StyleFName.clear();
    ColorFName.clear();
    LayoutFName.clear();
    ShowOpeningBanner = true;
    ShowInitialSidebar = true;
    MainMenuDisabled = false;
    ToolbarDisabled = false;
    WantsToMaximizeProcessWindow = false;
    WorkAreaWidth = 800;
    WorkAreaHeight = 600;
    DotsPerCmX = 38.0;
    DotsPerCmY = 38.0;
    IsProcessingConfigFile = IsProcessingDotAddFile = IsProcessingQuickMacros = IsProcessingLayout =
        IsProcessingStylesheet = false;
    Interrupted = false;
    GraphicsSuspended = 0;
    OrvanexTempDirectory.clear();
}
