// Macro files: the header line and running a macro file. The command language itself is not
// part of this build yet: a macro file is opened and its header checked, and no command runs.
#pragma once

#include <cstdio>

constexpr int MacroVersionCurrent = 1100;
constexpr int MacroVersionOldest = 700;

// Reads the first line of an open file (at most 78 characters) and gives the version of a
// "#!MC <n>" header; false if the line is no such header.
bool GetFileMagic(FILE *file, const char *magic, int *version);
// True for versions 700 to 1100.
bool MacroHeaderOk(int version);

// Runs a macro file (".mcr"), or hands another extension to the script runner.
bool Action_RunMacro(const char *fileName);
