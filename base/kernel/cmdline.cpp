// The command line. The option table below drives both scans: the pre-scan acts only on the rows
// marked pre-scan (they must take effect before the configuration file is read), the main scan on
// all the others and skips the pre-scan rows with their values. Toolkit options are compared with
// case, the table's options without; a name ending in ".mcr" or ".tcl" is a macro file even when
// it begins with "-".
#include "base/kernel/cmdline.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "base/data/readdataset.h"
#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/paths.h"
#include "base/kernel/seams.h"
#include "base/kernel/strlist.h"
#include "base/kernel/strutil.h"
#include "base/kernel/version.h"
#include "base/macro/macro1.h"

CommandLineState_s CommandLineState;

namespace {

// ---- the option table -------------------------------------------------------------------

struct ScanContext {
    int argc;
    char **argv;
    bool sawBatch = false;
    bool sawDataSetReader = false;
    bool noBatchLog = false;
    bool layoutIsPackage = false;
    bool dataFilesNamed = false;
};

using OptionHandler = bool (*)(ScanContext &scan, const char *value);

// What an option does: most set a flag or store their value (a file name made absolute against
// the start directory); the rest call a handler.
enum OptionAction_e {
    OptionAction_None,     // accepted and without effect
    OptionAction_SetFlag,  // *Flag = FlagValue
    OptionAction_SetText,  // *Text = the value as given
    OptionAction_SetPath,  // *Text = the value made absolute
    OptionAction_Call      // Handler(scan, value); false fails start-up
};

struct CommandLineOption_s {
    const char *Name;
    bool PreScan;
    const char *MissingValueMessage;  // null when the option takes no value
    OptionAction_e Action;
    bool *Flag = nullptr;
    bool FlagValue = true;
    std::string *Text = nullptr;
    OptionHandler Handler = nullptr;
};

std::string absolute(const char *name) { return MakeAbsolutePath(name, StartupDirectory); }

// Appends one data file name, quoted for the compound instruction string.
void appendQuoted(std::string *target, const std::string &name) {
    target->push_back('"');
    for (char c : name) {
        if (c == '"' || c == '\\') target->push_back('\\');
        target->push_back(c);
    }
    target->push_back('"');
}

bool noteDataFile(ScanContext &scan) {
    if (scan.layoutIsPackage) {
        ErrMsg("Not allowed to specify alternate plot files when loading a layout package.");
        return false;
    }
    scan.dataFilesNamed = true;
    return true;
}

bool onVersion(ScanContext &, const char *) {
    printf("Orvanex %s %s\n", VersionStr, OrvanexPlatform);
    fflush(stdout);
    return false;
}
bool onDataSetReader(ScanContext &scan, const char *value) {
    CommandLineState.DataSetReaderName = value;
    scan.sawDataSetReader = true;
    return true;
}
bool onLoadAddOn(ScanContext &, const char *value) {
    CommandLineState.AddOnNames.emplace_back(value);
    return true;
}
bool onQuickMacroFile(ScanContext &, const char *value) {
    QuickMacroFName = absolute(value);
    CommandLineState.UserNamedQuickMacroFile = true;
    return true;
}
bool onDefine(ScanContext &, const char *value) {
    const char *equals = strchr(value, '=');
    if (equals == nullptr) {  // NAME alone removes the variable, as putenv does
        unsetenv(value);
        return true;
    }
    std::string name(value, static_cast<size_t>(equals - value));
    setenv(name.c_str(), equals + 1, 1);
    return true;
}
bool onQuiet(ScanContext &, const char *) {
    GeneralBase.EnablePauses = false;
    GeneralBase.EnableDelays = false;
    return true;
}
bool onMacroFile(ScanContext &, const char *value) {
    CommandLineState.MacroFileNames.push_back(absolute(value));
    CommandLineState.MacroWasNamed = true;
    return true;
}
bool onPrintFile(ScanContext &, const char *value) {
    GeneralBase.PrintFName = absolute(value);
    GeneralBase.PrintToFile = true;
    return true;
}
bool onExportFile(ScanContext &, const char *value) {
    GeneralBase.ExportFName = absolute(value);
    return true;
}
bool onBatch(ScanContext &scan, const char *) {
    scan.sawBatch = true;
    return true;
}
bool onNoBatchLog(ScanContext &scan, const char *) {
    scan.noBatchLog = true;
    return true;
}
bool onDataFile(ScanContext &scan, const char *value) {
    if (!noteDataFile(scan)) return false;
    appendQuoted(&CommandLineState.DataSetInstructions, absolute(value));
    CommandLineState.DataSetInstructions.push_back(' ');
    return true;
}

CommandLineOption_s flagOption(const char *name, bool *flag, bool value, bool preScan = false) {
    return {name, preScan, nullptr, OptionAction_SetFlag, flag, value, nullptr, nullptr};
}
CommandLineOption_s pathOption(const char *name, const char *missing, std::string *target, bool preScan = false) {
    return {name, preScan, missing, OptionAction_SetPath, nullptr, true, target, nullptr};
}
CommandLineOption_s callOption(const char *name, const char *missing, OptionHandler handler, bool preScan = false) {
    return {name, preScan, missing, OptionAction_Call, nullptr, true, nullptr, handler};
}
CommandLineOption_s ignoredOption(const char *name) { return {name, false, nullptr, OptionAction_None}; }

const CommandLineOption_s CommandLineOptions[] = {
    callOption("-V", nullptr, onVersion),
    flagOption("-NOBANNER", &ShowOpeningBanner, false),
    flagOption("-NOSIDEBAR", &ShowInitialSidebar, false),
    flagOption("-NOTOOLBAR", &ToolbarDisabled, true),
    flagOption("-NOMAINMENU", &MainMenuDisabled, true),
    {"-ALTERNATETITLE", false, "Missing alternate title string.", OptionAction_SetText, nullptr, true, &OrvanexAppTitle},
    callOption("-datasetreader", "Missing data set reader name", onDataSetReader),
    pathOption("-ADDONFILE", "Missing addonlist filename", &CommandLineState.AddOnFileName),
    callOption("-LOADADDON", "Missing add-on filename", onLoadAddOn),
    pathOption("-C", "Missing alternate configuration fname", &ConfigFName, true),
    pathOption("-H", "Missing home directory name for -h flag", &OrvanexHomeDirectory, true),
    callOption("-QM", "Missing alternate quick macro file name", onQuickMacroFile, true),
    flagOption("-NOSTDADDONS", &CommandLineState.LoadStandardAddOns, false, true),
    callOption("-DEFINE", "Missing environment variable assignment from -define parameter", onDefine, true),
    flagOption("-X", &WantsToMaximizeProcessWindow, true),
    callOption("-Q", nullptr, onQuiet),
    callOption("-P", "Missing macro filename", onMacroFile),
    callOption("-R", "Missing routename", onPrintFile),
    callOption("-Y", "Missing export routename", onExportFile),
    pathOption("-F", "Missing alternate font filename", &FontFName),
    callOption("-B", nullptr, onBatch),
    callOption("-NOBATCHLOG", nullptr, onNoBatchLog),
    flagOption("-SHOWPANEL", &CommandLineState.ShowQuickMacroPanel, true),
    flagOption("-Z", &DebugPlay, true),
    pathOption("-S", "Missing stylesheet fname", &StyleFName),
    pathOption("-M", "Missing colormap fname", &ColorFName),
    callOption("-DATAFILE", "Missing datafile name", onDataFile),
    ignoredOption("-ALWAYSONBOTTOM"),
    ignoredOption("-DEVELOP"),
    ignoredOption("-MESA"),
    ignoredOption("-SGIOPENGL"),
    ignoredOption("-OPENGL"),
    ignoredOption("-ASSERTLOG"),
};

// Takes the option's value, the next argument, if it has one; reports a missing one.
bool takeOptionValue(const CommandLineOption_s &option, int argc, char **argv, int *i, const char **value) {
    if (option.MissingValueMessage == nullptr) return true;
    if (*i + 1 >= argc) {
        ErrMsg("%s", option.MissingValueMessage);
        return false;
    }
    *value = argv[++*i];
    return true;
}

// Carries out an option whose value (if any) has been taken. False fails start-up.
bool applyOption(const CommandLineOption_s &option, ScanContext &scan, const char *value) {
    switch (option.Action) {
    case OptionAction_None: return true;
    case OptionAction_SetFlag: *option.Flag = option.FlagValue; return true;
    case OptionAction_SetText: *option.Text = value; return true;
    case OptionAction_SetPath: *option.Text = absolute(value); return true;
    case OptionAction_Call: return option.Handler(scan, value);
    }
    return true;
}

const CommandLineOption_s *findOption(const char *arg) {
    for (const CommandLineOption_s &option : CommandLineOptions)
        if (ustrcmp(option.Name, arg) == 0) return &option;
    return nullptr;
}

// The toolkit's options, compared with case. Those with a value skip it too.
const char *const ToolkitFlags[] = {"+rv", "+synchronous", "+reverse", "-iconic", "-rv", "-synchronous", "-sync"};
const char *const ToolkitValued[] = {"-background", "-bd", "-bordercolor", "-bg", "-borderwidth", "-bw",
                                     "-d", "-display", "-fg", "-foreground", "-fn", "-font",
                                     "-geometry", "-name", "-selectionTimeout", "-title", "-xrm"};

template <size_t N>
bool inList(const char *const (&list)[N], const char *arg) {
    for (const char *item : list)
        if (strcmp(item, arg) == 0) return true;
    return false;
}

// -DEBUG: the next argument names the debug file unless it is absent or another option.
void processDebugOption(ScanContext &scan, int *i) {
    GeneralBase.Debug = true;
    StdError = stderr;
    if (*i + 1 >= scan.argc) return;
    const char *next = scan.argv[*i + 1];
    if (strcmp(next, "-") == 0) {
        (*i)++;
        return;
    }
    if (next[0] == '-') return;
    (*i)++;
    std::string name = absolute(next);
    FILE *file = fopen(name.c_str(), "w");
    if (file == nullptr) {
        ErrMsg("Cannot write debug output to %s, permission denied or invalid file name.", next);
        GeneralBase.Debug = false;
        StdError = stdout;
        return;
    }
    StdError = file;
}

// Classifies one argument that is no option: layout, add-on or data files.
bool processFileArgument(ScanContext &scan, const char *arg) {
    std::string name(arg);
    if (HasSuffixIgnoringCase(name, ".lay") || HasSuffixIgnoringCase(name, ".lpk")) {
        if (CommandLineState.LayoutWasNamed) {
            ErrMsg("Not allowed to specify multiple layout files on the command line");
            return false;
        }
        bool isPackage = HasSuffixIgnoringCase(name, ".lpk");
        if (isPackage && scan.dataFilesNamed) {
            ErrMsg("Not allowed to specify alternate plot files when loading a layout package.");
            return false;
        }
        LayoutFName = absolute(arg);
        CommandLineState.LayoutWasNamed = true;
        scan.layoutIsPackage = isPackage;
        return true;
    }
    if (HasSuffixIgnoringCase(name, ".so")) {
        CommandLineState.AddOnNames.push_back(name);
        return true;
    }
    if (!noteDataFile(scan)) return false;
    // "a.plt+b.plt" names one data set read from several files.
    std::string &instructions = CommandLineState.DataSetInstructions;
    size_t start = 0;
    bool first = true;
    while (true) {
        size_t plus = name.find('+', start);
        std::string piece = name.substr(start, plus == std::string::npos ? std::string::npos : plus - start);
        if (!first) instructions.push_back('+');
        appendQuoted(&instructions, absolute(piece.c_str()));
        first = false;
        if (plus == std::string::npos) break;
        start = plus + 1;
    }
    instructions.push_back(' ');
    return true;
}

// argv[0] made absolute: a bare name is looked up in PATH as the shell did.
std::string executablePath(const char *argv0) {
    if (strchr(argv0, '/') != nullptr) return absolute(argv0);
    const char *path = getenv("PATH");
    std::string dirs = path != nullptr ? path : "";
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t colon = dirs.find(':', start);
        std::string dir = dirs.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
        std::string candidate = MakeAbsolutePath(argv0, absolute(dir.empty() ? "." : dir.c_str()));
        if (access(candidate.c_str(), X_OK) == 0 && !IsDirectory(candidate)) return candidate;
        if (colon == std::string::npos) break;
        start = colon + 1;
    }
    return absolute(argv0);
}

bool openBatchLog() {
    const char *envName = getenv("BATCHLOGFILE");
    std::string logName = envName != nullptr ? envName : "";
    size_t first = logName.find_first_not_of(" \t");
    logName = first == std::string::npos ? std::string() : logName.substr(first, logName.find_last_not_of(" \t") - first + 1);
    if (logName.empty()) logName = "batch.log";
    logName = absolute(logName.c_str());
    BatchFile = fopen(logName.c_str(), "w");
    if (BatchFile == nullptr) {
        fprintf(stderr, "Err: Cannot create batch log file %s\n", logName.c_str());
        return false;
    }
    fprintf(BatchFile, "Orvanex %s Batch Log\n", VersionStr);
    fflush(BatchFile);
    return true;
}

}  // namespace

void ProcessEnvironmentVariables() {
    for (const char *variable : {"ORVZ9HOME", "ORV110HOME", "ORVHOME"}) {
        const char *value = getenv(variable);
        if (value == nullptr) continue;
        std::string home;
        for (const char *c = value; *c != '\0'; c++)
            if (*c != '"') home.push_back(*c);
        if (!home.empty() && home.back() == '\\') home.pop_back();
        OrvanexHomeDirectory = home.empty() ? "." : home;
        return;
    }
}

void PreScanCommandLine(int argc, char **argv, bool *ok) {
    ShowOpeningBanner = true;
    ShowInitialSidebar = true;
    MainMenuDisabled = false;
    ToolbarDisabled = false;
    WantsToMaximizeProcessWindow = false;
    ConfigFName = "orvanex.cfg";
    QuickMacroFName = "orvanex.mcr";
    FontFName = "orvanex.fnt";
    CommandLineState = CommandLineState_s();
    CommandLineState.DataSetReaderName = OrvanexBaseDataSetReaderName;
    const char *display = getenv("DISPLAY");
    X_DisplayString = display != nullptr ? display : "";
    OrvanexExePath = argc > 0 ? executablePath(argv[0]) : std::string();

    ScanContext scan{argc, argv};
    for (int i = 1; i < argc && *ok; i++) {
        const CommandLineOption_s *option = findOption(argv[i]);
        if (option == nullptr || !option->PreScan) continue;
        const char *value = nullptr;
        if (!takeOptionValue(*option, argc, argv, &i, &value)) {
            *ok = false;
            break;
        }
        applyOption(*option, scan, value);
    }
}

void ProcessCommandLineOptions(int argc, char **argv, bool *ok) {
    ScanContext scan{argc, argv};
    for (int i = 1; i < argc && *ok; i++) {
        const char *arg = argv[i];
        if (scan.sawDataSetReader) {
            // From -datasetreader on, the rest of the line belongs to the reader.
            // With a layout they all replace its first data set, so they are joined by "+";
            // otherwise each is an instruction of its own.
            std::string &instructions = CommandLineState.DataSetInstructions;
            if (CommandLineState.LayoutWasNamed && !instructions.empty()) {
                while (!instructions.empty() && instructions.back() == ' ') instructions.pop_back();
                instructions.push_back('+');
            }
            appendQuoted(&instructions, arg);
            if (!CommandLineState.LayoutWasNamed) instructions.push_back(' ');
            continue;
        }
        if (inList(ToolkitFlags, arg)) {
            if (strcmp(arg, "-iconic") == 0) ShowOpeningBanner = false;
            continue;
        }
        if (inList(ToolkitValued, arg)) {
            if (i + 1 >= argc) {
                ErrMsg("Invalid option to %s", arg);  // reported; start-up goes on
                continue;
            }
            i++;
            if (strcmp(arg, "-d") == 0 || strcmp(arg, "-display") == 0) X_DisplayString = argv[i];
            continue;
        }
        if (ustrcmp(arg, "-DEBUG") == 0) {
            processDebugOption(scan, &i);
            continue;
        }
        if (const CommandLineOption_s *option = findOption(arg)) {
            const char *value = nullptr;
            if (!takeOptionValue(*option, argc, argv, &i, &value)) {
                *ok = false;
                break;
            }
            if (!option->PreScan && !applyOption(*option, scan, value)) *ok = false;  // pre-scan ones are done
            continue;
        }
        size_t length = strlen(arg);
        if (length > 3 && (HasSuffixIgnoringCase(arg, ".mcr") || HasSuffixIgnoringCase(arg, ".tcl"))) {
            onMacroFile(scan, arg);
            continue;
        }
        if (arg[0] == '-') {
            ErrMsg("Unknown command line option: %s", arg);
            *ok = false;
            break;
        }
        if (!processFileArgument(scan, arg)) *ok = false;
    }

    if (*ok && scan.sawBatch) {
        if (CommandLineState.MacroFileNames.empty()) {
            ErrMsg("No macro file specified for batch mode");
            *ok = false;
            return;
        }
        InBatchMode = true;
        GraphicsSuspended++;
        WriteBatchLog = !scan.noBatchLog;
        if (WriteBatchLog && !openBatchLog()) *ok = false;
    }
}

bool OrvanexLaunchedWithMacro() { return CommandLineState.MacroWasNamed; }

const char *GetSystemTempDir() { return getenv("TMPDIR"); }

bool FindStartupFile(const std::string &name, const char *label, std::string *foundPath) {
    std::vector<std::string> candidates{MakeAbsolutePath(name, StartupDirectory)};
    if (!FileNameHasDirectory(name)) {
        if (const char *home = getenv("HOME")) candidates.push_back(std::string(home) + "/." + name);
        candidates.push_back(MakeAbsolutePath(name, OrvanexHomeDirectory));
    }
    for (const std::string &candidate : candidates) {
        if (IsRegularFileOrOther(candidate)) {
            printf("%-23s: %s\n", label, candidate.c_str());
            fflush(stdout);
            *foundPath = candidate;
            return true;
        }
    }
    return false;
}

namespace {

// The one report after several command-line macros stopped before the last one finished.
void reportMultiMacroStop(const std::vector<std::string> &files, size_t stoppedAt, bool byQuit) {
    std::string text = byQuit ? "Orvanex encountered a $!QUIT command while processing multiple macro files "
                                "loaded from the command line.\n"
                              : "Orvanex was interrupted while processing multiple macro files loaded from the "
                                "command line.\n";
    if (stoppedAt > 0) {
        text += "\nOrvanex successfully processed these files:\n";
        for (size_t i = 0; i < stoppedAt; i++) text += "    " + files[i] + "\n";
    }
    text += "\nOrvanex was interrupted during this macro file:\n    " + files[stoppedAt] + "\n";
    if (stoppedAt + 1 < files.size()) {
        text += "\nThese files are left unprocessed:\n";
        for (size_t i = stoppedAt + 1; i < files.size(); i++) text += "    " + files[i] + "\n";
    }
    ErrMsg("%s", text.c_str());
}

// The data files of the command line replace the data of the first frame, style reset.
void readCommandLineData(const StringList_s *instructions, const std::string &readerName) {
    ReadDataSetArgs_s args;
    InitReadDataSetArgs(&args);
    args.ReadDataOption = ReadDataOption_Replace;
    args.ResetStyle = true;
    args.DataSetReader = readerName;
    for (LgIndex_t n = 0; n < StringListCount(instructions); n++) {
        const char *entry = StringListGetStringRef(instructions, n);
        args.FileNamesOrInstructions.emplace_back(entry != nullptr ? entry : "");
    }
    Action_ReadDataSet(args);
}

void runCommandLineMacros() {
    const std::vector<std::string> &files = CommandLineState.MacroFileNames;
    for (size_t i = 0; i < files.size(); i++) {
        bool ok = Action_RunMacro(files[i].c_str());
        bool last = i + 1 == files.size();
        if (ok && !OrvanexIsQuitting && !Interrupted && !DebugPlay) continue;
        if (DebugPlay) return;
        // A failed macro counts as an interruption. $!QUIT or a failure in the last file ends the
        // list quietly; a user interrupt in the last file is still worth telling.
        bool byQuit = ok && OrvanexIsQuitting;
        bool userInterrupt = ok && Interrupted;
        if (files.size() > 1 && (!last || userInterrupt)) reportMultiMacroStop(files, i, byQuit);
        return;
    }
}

}  // namespace

void ProcessCommandlineStartupOptions() {
    CommandLineState_s &state = CommandLineState;
    if (!state.DataSetInstructions.empty() && !state.LayoutWasNamed) {
        StringList_s *instructions = StringListFromCompound(state.DataSetInstructions.c_str());
        if (instructions == nullptr)
            ErrMsg("Unable to process command line data set instructions.");
        else
            readCommandLineData(instructions, state.DataSetReaderName);
        StringListDealloc(&instructions);
    }
    if (state.LayoutWasNamed) {
        StringList_s *alternates = nullptr;
        if (!state.DataSetInstructions.empty()) alternates = StringListFromCompound(state.DataSetInstructions.c_str());
        Action_OpenLayout(LayoutFName, alternates);
        StringListDealloc(&alternates);
    }
    if (!ColorFName.empty()) Action_LoadColorMap(ColorFName);
    if (!StyleFName.empty()) Action_ReadStylesheet(StyleFName);
    runCommandLineMacros();
    if (!OrvanexIsQuitting && state.ShowQuickMacroPanel && !InBatchMode) OpenQuickMacroPanel();
    // The lists are used once; the flags stay for OrvanexLaunchedWithMacro and the like.
    state.DataSetInstructions.clear();
    state.MacroFileNames.clear();
    state.AddOnNames.clear();
}
