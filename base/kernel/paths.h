// Small path helpers for the file names of the command line and the start-up files.
#pragma once

#include <string>

// name unchanged if absolute (or empty); otherwise directory + "/" + name.
std::string MakeAbsolutePath(const std::string &name, const std::string &directory);
// True if the name holds a directory part (a '/').
bool FileNameHasDirectory(const std::string &name);
// True if the name ends in the suffix, compared without regard to case.
bool HasSuffixIgnoringCase(const std::string &name, const char *suffix);
bool IsDirectory(const std::string &name);
bool IsRegularFileOrOther(const std::string &name);  // exists and is no directory
