// Macro files and their execution: a file is loaded into lists of compressed commands (the main
// macro and its macro functions, with include files read in place), checked for the shape of its
// control words, and run by the interpreter, which decides the control commands itself and hands
// every other command to the action layer or the style tree.
// Relies on: macrocomp (reading and scanning commands), macrovar (variables), actcmd (actions),
// draw0 (the drawing suspensions a run gives back).
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "base/kernel/types.h"

struct MacroCommand_s;

constexpr int MacroVersionCurrent = 1100;
constexpr int MacroVersionOldest = 700;
constexpr int MaxCallFrames = 10;
constexpr int MaxLoopLevels = 10;
constexpr int MaxIfLevels = 100;
constexpr int MaxMacroParameters = 20;

// Flags of the macro layer read across the system.
// (The configuration, stylesheet, layout and .add flags are in globals.h, IsProcessingMacroCommand
// in errors.h.)
extern bool IsProcessingQuickMacro;
extern bool IsProcessingQuickMacroFile;
extern bool IsProcessingJournalCommand;
extern bool StopPlayback;
extern bool MacroLoadError;

// Reads the first line of an open file (at most 78 characters) and gives the version of a
// "#!MC <n>" header; false if the line is no such header.
bool GetFileMagic(FILE *file, const char *magic, int *version);
// Opens a file and reads the version of its "#!MC" header, -1 if it has none. False, with the
// message, if the file cannot be opened.
bool ReadMacroFileVersion(const char *fileName, int *version);
// True for versions 700 to 1100.
bool MacroHeaderOk(int version);

// A macro function: its body and how the quick macro panel shows it.
struct MacroFunction_s {
    bool Retain = false;            // survives the loading of another macro file
    bool ShowInMacroPanel = false;  // listed in the quick macro panel; implies Retain
    char Mnemonic = 0;              // panel mnemonic, or 0
    char Keystroke = 0;             // hot key (0-9, a-z, A-Z), or 0
    std::string Name;               // compared without regard to case
    MacroCommand_s *Commands = nullptr;  // the body; owned
    MacroFunction_s() = default;
    MacroFunction_s(const MacroFunction_s &) = delete;
    MacroFunction_s &operator=(const MacroFunction_s &) = delete;
    ~MacroFunction_s();
};

// The function of that name (without regard to case), or null. The pointer stays valid until the
// function is redefined or released.
MacroFunction_s *GetMacroFunctionPtr(const char *name);
// The first function whose keystroke is `key`, without regard to case, or null.
MacroFunction_s *GetMacroFunctionPtrByKeystroke(char key);

// After a macro run has failed or finished: undoes the graphics, interface, status line and work
// area suspensions the macro left behind (those in force when the run began stay), and ends a
// manual double buffer.
void ResetGraphicsStateAfterMacroProcessing();

// Clears the interpreter state and checks the vocabulary (once, at start-up).
bool InitMacros();
// Reads a whole macro file into the interpreter. Functions are made with Retain and
// ShowInMacroPanel as retainDefault says. False after reporting the error (nothing will run).
bool LoadMacroFile(const char *fileName, bool warnOnRedefine, bool retainDefault);
// Loads, checks and runs a macro file.
bool LoadAndRunMacro(const char *fileName, bool rememberName, bool warnOnRedefine, bool retainDefault,
                     bool interruptible);
// The interpreter loop over the loaded macro, from where it stands.
bool ProcessLinkedMacroList(bool interruptible, bool restart, bool singleStep, bool stepOver, bool runToReturn);
// One compressed command that is not a control command.
bool ProcessMacroCommand(const char *command, int line, int version, const char *rawData,
                         const std::vector<std::string> &parameters);
// Compresses and runs one command given as text (raw data are refused).
bool ExecuteSingleMacroCommand(const char *text, int version);
// Runs one macro function outside a macro run; parameters as text "(a, b)" or empty.
bool ProcessQuickMacro(const char *functionName, const char *parameters);
bool Action_RunMacroFunction(const char *name, const char *parameters);
bool Action_RunMacroFunctionByKeystroke(char key);
// Runs a macro file (".mcr"), or hands another extension to the script runner.
bool Action_RunMacro(const char *fileName);

// Finds the quick macro file (start directory, $HOME/.<name>, home) and runs its definitions.
bool ReadInQuickMacros(const std::string &fileName, bool userNamedFile);
// Runs the configuration file as a macro (only set-value commands and a few control commands).
bool RunConfigurationFile(const char *fileName);

// The stack of header versions of the commands running; 1100 when none runs.
void PushMacroVersion(int version);
void PopMacroVersion();
int GetMacroVersion();

// Frees the main macro and the functions that are not retained (all with includingRetained).
void ReleaseMacros(bool includingRetained);
void ResetMacros();
// True with the current count of the innermost $!LOOP; false outside loops.
bool MacroLoopCurrent(LgIndex_t *current);
// The directory of the macro file of the run (without its last separator), and its name.
std::string MacroFilePath();
std::string MacroRunFileName();
// Names of the macro functions, in order of definition (for the quick macro panel and tests).
std::vector<std::string> MacroFunctionNames();
