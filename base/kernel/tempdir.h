// The process's temporary directory, the temporary files made in it, the paste buffer file, and
// the handler of fatal signals that removes the directory when the process dies.
#pragma once

#include <string>

// Creates "orvanex_XXXXXX" under the configured parent (TEMPFILEPATH, TMPDIR, /usr/tmp, /tmp),
// prints its name, installs the fatal-signal handler. False, with the message, on failure.
bool InitializeTempDirectory(const std::string &systemTempDir);
// Removes the directory at shutdown if this process created it (it is empty by then).
void RemoveTempDirectory();
// True if this process created OrvanexTempDirectory.
bool TempDirectoryCreatedByProcess();

// Makes a new empty file "tpXXXXXX" in the temporary directory and gives its name.
bool GetRandomFileName(std::string *fileName);

// The paste buffer file: created at start-up, deleted at shutdown.
bool CreatePasteBufferFile();
void DeletePasteBufferFile();
const std::string &PasteBufferFileName();

// Prints up to 127 frames of the current call stack to standard error.
void PrintCurBacktrace();

// Installs the handler for the fatal signals (once).
void InstallFatalSignalHandler();
