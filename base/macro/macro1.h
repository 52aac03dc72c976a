// Macro files: the header line and running a macro file. The command language itself is not
// part of this build yet: a macro file is opened and its header checked, and no command runs.
#pragma once

#include <cstdio>
#include <string>

constexpr int MacroVersionCurrent = 1100;
constexpr int MacroVersionOldest = 700;

// Reads the first line of an open file (at most 78 characters) and gives the version of a
// "#!MC <n>" header; false if the line is no such header.
bool GetFileMagic(FILE *file, const char *magic, int *version);
// Opens a file and reads the version of its "#!MC" header, -1 if it has none. False, with the
// message, if the file cannot be opened.
bool ReadMacroFileVersion(const char *fileName, int *version);
// True for versions 700 to 1100.
bool MacroHeaderOk(int version);

// Finds the quick macro file (start directory, $HOME/.<name>, home) and checks its header.
// A missing file is worth a warning only when the user named it.
bool ReadInQuickMacros(const std::string &fileName, bool userNamedFile);

// Runs a macro file (".mcr"), or hands another extension to the script runner.
bool Action_RunMacro(const char *fileName);
