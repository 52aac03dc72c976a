// The spine of the process. q_main runs InitOrvanex, UIInitialize, InitializeGraphicsCallbacks and
// StartUp, each only if the one before succeeded; then the run loop unless in batch mode; then,
// always, InitiateShutdown and FinalizeShutdown. The order of the steps inside each phase is fixed:
// the configuration file is read with the base frame up but before the command line is scanned,
// the workers of the thread pool come after the configuration file, and threads go last of all.
#include "base/kernel/startup.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "base/interact/fileio.h"
#include "base/interact/inet.h"
#include "base/data/dataload.h"
#include "base/data/face.h"
#include "base/data/memmap.h"
#include "base/kernel/alloc.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/idle.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/orvlock.h"
#include "base/kernel/paths.h"
#include "base/kernel/scratch.h"
#include "base/data/readdataset.h"
#include "base/kernel/seams.h"
#include "base/kernel/undo.h"
#include "base/macro/macrorec.h"
#include "base/plot/framestyle.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strutil.h"
#include "base/kernel/tempdir.h"
#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"
#include "base/kernel/version.h"
#include "base/macro/macro1.h"
#include "base/macro/setvalue.h"
#include "base/plot/frame.h"
#include "base/field/contlevel.h"
#include "base/field/plot.h"
#include "base/output/export.h"
#include "base/plot/vdi.h"
#include "ui/uimain.h"

namespace {

int OrvanexExitCode = 1;  // a start-up that fails, or Action_Quit(false), ends with 1
std::string rememberedSystemTempDir;

void FinalOrvanexCode() {
    if (MemoryStatisticsOn) PrintAllocStats();
}

std::string currentStartupDirectory() {
    const char *pwd = getenv("PWD");
    if (pwd != nullptr && pwd[0] == '/') return pwd;
    char buffer[PATH_MAX];
    if (getcwd(buffer, sizeof(buffer)) != nullptr) return buffer;
    return "/";
}

void InitializeHelp() {
    if (OrvanexHomeDirectory.size() >= 239) {
        ErrMsg("Unable to attach to help engine. Orvanex HOME Directory too many levels deep.");
        return;
    }
    if (setenv("HHHOME", (OrvanexHomeDirectory + "/help").c_str(), 1) != 0)
        ErrMsg("Unable to attach to help engine");
}

// Moves the base stores (never the factory ones) to the values new work should get, between the
// copy of the factory values and the configuration file.
void ModernizeFrameAndGeneralBaseDefaults() {
    ModernizeGeneralBaseDefaults();
    ModernizeFrameDefaults();
}

// The add-on list file: a macro of $!LOADADDON commands.
void RunAddOnListFile(const std::string &fileName) { LoadAndRunMacro(fileName.c_str(), false, false, false, false); }

void InitializeAddOns() {
    std::string standardFile;
    bool ranStandard = false;
    if (CommandLineState.LoadStandardAddOns && FindStartupFile("orvanex.add", "Addon Startup File", &standardFile)) {
        IsProcessingDotAddFile = true;
        RunAddOnListFile(standardFile);
        IsProcessingDotAddFile = false;
        ranStandard = true;
    }
    for (const std::string &addOn : CommandLineState.AddOnNames) Action_LoadAddOn(addOn);

    std::string listFile = CommandLineState.AddOnFileName;
    const char *message = "Cannot open addon file %s";
    if (listFile.empty()) {
        const char *env = getenv("ORVADDONFILE");
        if (env == nullptr || env[0] == '\0') return;
        listFile = env;
        message = "Cannot open addon file %s. Check ORVADDONFILE environment variable.";
    }
    std::string found;
    if (!FindStartupFile(listFile, "Addon Startup File", &found)) {
        ErrMsg(message, listFile.c_str());
        return;
    }
    if (ranStandard && found == standardFile) return;
    IsProcessingDotAddFile = true;
    RunAddOnListFile(found);
    IsProcessingDotAddFile = false;
}

}  // namespace

void SetOrvanexExitCode(int exitCode) { OrvanexExitCode = exitCode; }
int GetOrvanexExitCode() { return OrvanexExitCode; }

void ReadInConfigFile() {
    std::string path;
    if (!FindStartupFile(ConfigFName, "Configuration File", &path)) {
        Warning("Configuration file is missing.  Using factory defaults.");
        return;
    }
    ConfigFName = path;
    int version = 0;
    if (!ReadMacroFileVersion(path.c_str(), &version)) return;
    bool haveVersion = version >= 0;
    if (!haveVersion)
        ErrMsg("Bad header in configuration file.  Using factory defaults.");
    else if (version < MacroVersionOldest)
        ErrMsg("Configuration file is out of date.  Using factory defaults.");
    else if (version > MacroVersionCurrent)
        ErrMsg("Configuration file is for a newer version of Orvanex.  Using factory defaults.");
    else if (!RunConfigurationFile(path.c_str()))
        Warning("Errors detected while processing configuration file.  Some or all configuration options may not be in effect.");
}

bool InitOrvanex(int argc, char **argv) {
    bool ok = true;
    // 1-3: memory-map bookkeeping, version banner, exit hook
    ok = MemMapInitialize();
    GraphicsAreInitialized = false;
    InitializeInternalMacroSettings();
    srand(1);
    Initializing();
    if (atexit(FinalOrvanexCode) != 0) {
        fprintf(stderr, "Cannot register FinalOrvanexCode function in atexit\n");
        ok = false;
    }
    // 4: kernel globals
    ResetKernelGlobals();
    StartupDirectory = currentStartupDirectory();
    // 5-8: readers, factory defaults, idle queue
    RegisterBuiltInDataSetReaders();
    ClearExtendedCurveFits();
    InitRawUserColorMap();
    FillGeneralFactoryDefaults();
    ResetStateChangeState();
    if (ok) ok = OnIdleQueueInit();
    InitTimeOutFacility();
    InitializeAddOnVars();
    GeneralBase = GeneralFactoryDefaults;
    // 9-12: file names, frame defaults, the base frame, modern values
    InitializeGeneralFileNameDefaults(StartupDirectory);
    InitializeInterfaceAttributes();
    InitializeFrameFactoryDefaults();
    InitializeNonconfigurableInputSpecs();
    DotsPerCmX = DotsPerCmY = 38.0;
    if (ok) ok = AllocBaseFrameAttributePointers();
    ModernizeFrameAndGeneralBaseDefaults();
    // 13-15
    const char *systemTemp = GetSystemTempDir();
    rememberedSystemTempDir = systemTemp != nullptr ? systemTemp : "";
    INetInitialize();
    FaceNeighborInstallHooks();
    InitCZData();
    InitCZInfo();
    InitLineMapInfo();
    if (ok) ok = InitMacros();
    if (ok && GeneralBase.NumUndoLevels != 0) ok = UndoStateInitialize();
    if (ok) ok = Thread_Init() && ThreadPoolInit() && (StandardThreadPool = ThreadPoolCreate()) != nullptr;
    // 16-20: environment, pre-scan, configuration file, workers, the option scan
    ProcessEnvironmentVariables();
    PreScanCommandLine(argc, argv, &ok);
    if (ok) ReadInConfigFile();
    if (ok) ok = ThreadPoolCreateStandardWorkers() && StartTimeOutTimer();
    DataLoadValidateThresholdValues(false);
    if (ok) ProcessCommandLineOptions(argc, argv, &ok);
    // 21-22: help, paper, workspace, temp directory, paste buffer
    if (ok) {
        InitializeHelp();
        PushPaperView();
        SaveInitialWorkspaceSettings();
        ok = InitializeTempDirectory(rememberedSystemTempDir);
        if (ok) ok = CreatePasteBufferFile();
    }
    rememberedSystemTempDir.clear();
    if (!ok) return false;
    // 23-25: font, input bounds, the first frame
    if (!ReadInInternalFont()) return false;
    SetInputCheckBounds();
    return CreateNewFrame();
}

// The batch callbacks of the device layer stand until the window layer registers its own over
// them; StartUp verifies all of them through Gr_Init.
bool InitializeGraphicsCallbacks() {
    Gr_RegisterBatchProxyCallbacks();
    RegisterBitImageDevice();
    RegisterFieldPlotLayers();
    RegisterContourHooks();
    return true;
}

bool StartUp(int, char **) {
    if (!Gr_Init() || !AllocPointBuffer() || !InitializeScratchSpace()) return false;
    RegisterSidebarStateChangeMonitor();
    ConfigureInterfaceLayout();

    if (!X_DisplayString.empty()) printf("%-23s: %s\n", "Orvanex displayed on", X_DisplayString.c_str());
    printf("%-23s: %s\n", "Orvanex executable", OrvanexExePath.c_str());
    printf("%-23s: %s\n", "Orvanex Home Directory", OrvanexHomeDirectory.c_str());
    fflush(stdout);

    InitializeWorkArea();
    InitializeMainMenu();
    SetMainWindowTitle();
    ReadInQuickMacros(QuickMacroFName, CommandLineState.UserNamedQuickMacroFile);
    InitializeAddOns();

    OrvanexIsInitialized = true;
    ProcessCommandlineStartupOptions();
    MarkLayoutClean();
    if (!InBatchMode) BroadcastStartupCompleted();
    return true;
}

void RunOrvanex() {
    // Events come from the window layer, which is not built yet (UIInitialize refuses an
    // interactive start): run the deferred work once and end the run.
    while (!OrvanexIsQuitting) {
        ProcessIdleEvents();
        Action_Quit(true);
    }
}

void InitiateShutdown(bool isOk) {
    if (OrvanexIsQuitting) return;
    if (OrvanexIsInitialized) {
        FinishExportRecording();
        EndUnstableMouseMode();
        NewLayout();
        UndoStateInvalidateUndo();
        if (isOk) SetOrvanexExitCode(0);
        // Listeners hear of the end with the exit code.
        StateChangeSupplementalInfoSetIndex(GetOrvanexExitCode());
        StateChanged(StateChange_Quit);
        StopMacroRecording();
    }
    OrvanexIsQuitting = true;
}

void Action_Quit(bool isOk) { InitiateShutdown(isOk); }

void MopupAuxFiles() {
    if (BatchFile != nullptr) {
        fclose(BatchFile);
        BatchFile = nullptr;
    }
    if (StdError != nullptr && StdError != stderr && StdError != stdout) fclose(StdError);
    StdError = stderr;
}

void FinalizeShutdown() {
    FreeExtraMapData();
    FinishExportRecording();
    bool graphicsWereUp = GraphicsAreInitialized;
    GraphicsAreInitialized = false;
    StopMacroRecording();
    OnIdleQueueCleanup();
    MopupTimeOutFacility();
    TurnOffStateChangeNotification();
    DeleteAllFrames();
    ReleaseDisplayLists();
    if (graphicsWereUp) Gr_Mopup();

    // DeleteOrvanexInternals
    FreeScratchSpace();
    DeletePasteBufferFile();
    DeleteOrvanexInternalsPending();
    INetFinalize();
    ReportMismatchedLocks();
    OrvanexLockCleanup();
    MopupAuxFiles();

    MopupAddOns();
    MopupDataSetReaders();
    FormatStringBufferCleanup();
    RemoveTempDirectory();

    ThreadPoolFree(&StandardThreadPool);
    MemMapFinalize();
    ThreadPoolCleanup();
    Thread_Cleanup();
}

void OrvanexMopupOnAssert() {
    static bool mopped = false;
    if (mopped) return;
    mopped = true;
    if (!InBatchMode && GraphicsAreInitialized)
        ProcessMessageBoxModalDialog("An assertion failure has occurred in orvanex.\nDo you want to save the current "
                                     "layout to \"crash.lpk\"\nin the orvanex startup directory?",
                                     MessageBox_YesNo);
    MopupAuxFiles();
}

void OrvanexAssertFailed(const char *kind, const char *expression, const char *file, int line) {
    fprintf(stderr, "Assertion failure (%s): %s\n    at %s:%d\n", kind, expression, file, line);
    fflush(stderr);
    OrvanexMopupOnAssert();
    abort();
}

extern "C" int q_main(int argc, char **argv) {
    bool startedOk = InitOrvanex(argc, argv) && UIInitialize(argc, argv) && InitializeGraphicsCallbacks() &&
                     StartUp(argc, argv);
    if (startedOk && !InBatchMode) RunOrvanex();
    InitiateShutdown(startedOk);
    FinalizeShutdown();
    return GetOrvanexExitCode();
}
