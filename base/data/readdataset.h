// Loading data files into the current frame, as the command line asks for it. Binary data files
// load here; text data files and other readers join as they are built.
#pragma once

#include <string>

struct StringList_s;

// Reads the files of the instructions (each string holds one or more file names, one per line)
// into one new data set that replaces the current frame's. All or nothing: on failure the frame
// keeps what it had.
bool Action_ReadDataSet(const StringList_s *instructions, const std::string &readerName);
