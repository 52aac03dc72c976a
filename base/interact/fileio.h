// Opening and closing files. Every file of the system opens through Open_File and closes through
// Close_File, so that a name may be a URL and so that the open files are known.
#pragma once

#include <cstdio>
#include <string>

// Opens a stream. Modes: reading "r"/"rb", appending "r+"/"r+b" at the end, writing "w"/"wb+".
// A write over an existing file asks first unless overwriteConfirmed. False on failure, with a
// message if reportErrors.
bool Open_File(FILE **stream, const char *name, bool isReading, bool isAppend, bool overwriteConfirmed,
               bool reportErrors, bool isAscii);
// Closes a stream opened by Open_File and nulls it. False on an I/O error.
bool Close_File(FILE **stream, bool reportErrors);
// Number of streams opened by Open_File and not yet closed.
int OpenFileCount();

// For a URL of a supported scheme, whether the remote file exists; otherwise whether stat finds
// the name and it is no directory.
bool FileExists(const char *name, bool reportErrors);
// Checks a file name before use: blank, URL syntax, directory, characters, directory part, and
// existence when reading.
bool IsValidFileName(const char *name, bool isReading, bool reportErrors);
// A character that may stand in a file name (see IsValidFileName).
bool IsOkFNameChar(unsigned char c);
// The name shortened to 50 characters: "..." and the last 47.
std::string ChopFilename(const char *name);
// Asks whether an existing file may be replaced; batch mode answers yes.
bool VerifyToOverwriteFile(const char *name);
