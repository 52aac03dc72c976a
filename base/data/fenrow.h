// The text data file converter: reads the keyword records and free-form numbers of a text data
// file and writes a binary data file of the current version, header to the output and the data
// section through a scratch file in the temporary directory, joined at the end.
// Relies on: alloc (errorText), tempdir (the scratch file; OrvanexTempDirectory must be set).
#pragma once

#include <utility>
#include <vector>

// Converts with an argument vector of its own: argv[0] is the program name, then options, the
// input name ("-" for standard input) and an optional output name. With -plot3d the input name is
// the stem of PLOT3D grid, solution and function files (stem + "g", "q", "f"), read by plot3d.
// True on success; on failure *errorText is a newmalloc'd message and neither the output nor the scratch file is left.
bool Fenrow(int argc, char **argv, char **errorText);

// The data load's converter: creates or empties the output, then converts inputName into it.
bool FenrowAsciiDatafile(const char *inputName, const char *outputName, char **errorText);

// A list of one-based numbers and ranges, "1-3,5" or "[1-3,5]", each at most maxValue; false if
// the text is no such list.
bool FenrowParseRangeList(const char *text, long maxValue, std::vector<std::pair<long, long>> *ranges);
