// The environment and the command line: the home directory, the pre-scan for the options that
// must act before the configuration file, the full option scan, and the start-up actions (data,
// layout, color map, stylesheet, macros) that the command line asks for.
#pragma once

#include <string>
#include <vector>

// What the option scan leaves for the start-up actions; cleared after use.
struct CommandLineState_s {
    std::string DataSetInstructions;    // compound string of the data files named
    std::string DataSetReaderName;      // -datasetreader, else the base reader
    std::string AddOnFileName;          // -ADDONFILE
    std::vector<std::string> MacroFileNames;
    std::vector<std::string> AddOnNames; // -LOADADDON and arguments ending in ".so"
    bool LayoutWasNamed = false;
    bool MacroWasNamed = false;
    bool ShowQuickMacroPanel = false;    // -SHOWPANEL
    bool UserNamedQuickMacroFile = false; // -QM
    bool LoadStandardAddOns = true;      // cleared by -NOSTDADDONS
};

extern CommandLineState_s CommandLineState;

// Takes the home directory from ORVZ9HOME, ORV110HOME or ORVHOME.
void ProcessEnvironmentVariables();
// Looks only for -C, -H, -QM, -NOSTDADDONS and -DEFINE; clears ok on a missing value.
void PreScanCommandLine(int argc, char **argv, bool *ok);
// The full scan; clears ok on the first error. In batch mode opens the batch log.
void ProcessCommandLineOptions(int argc, char **argv, bool *ok);
// Data, layout, color map, stylesheet, then the macros, in this order.
void ProcessCommandlineStartupOptions();

// True if a macro file was named on the command line.
bool OrvanexLaunchedWithMacro();
// The value of TMPDIR, or null.
const char *GetSystemTempDir();

// Searches for a start-up file: against the start directory, then (for a bare name) $HOME/.<name>
// and the home directory. On success prints "<label>: <path>" and gives the path.
bool FindStartupFile(const std::string &name, const char *label, std::string *foundPath);
