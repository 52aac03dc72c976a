// The PLOT3D reader of the text data file converter: grid, solution and function files (whole or
// multi-grid, 1D, 2D or 3D, with or without IBlank; text, plain binary or unformatted Fortran
// records; either byte order) written out as a binary data file of the current version.
// Relies on: nothing beyond the C library; the converter (fenrow) parses the options.
#pragma once

#include <string>
#include <vector>

enum Plot3dMode_e { Plot3dMode_NotSet, Plot3dMode_Unstructured, Plot3dMode_1D, Plot3dMode_2D, Plot3dMode_3DWhole,
                    Plot3dMode_3DPlanes };

// Which files beside the grid are read: the solution (q), the function file (f), or both.
enum Plot3dFiles_e { Plot3dFiles_GridAndQ, Plot3dFiles_GridOnly, Plot3dFiles_GridAndFunction,
                     Plot3dFiles_GridFunctionAndQ };

struct Plot3dOptions {
    Plot3dMode_e mode = Plot3dMode_NotSet;
    Plot3dFiles_e files = Plot3dFiles_GridAndQ;
    bool multiGrid = false;
    bool foreign = false;   // the input is in the other byte order
    bool iBlank = false;
    bool binary = false;
    bool fortran = false;   // unformatted Fortran records; implies binary
    bool collapse = false;  // drop zone dimensions of one point
    bool planesGiven[3] = {false, false, false};
    std::vector<int> planes[3];  // -ip, -jp, -kp: one-based plane numbers in the order given
};

// "3", "1,4", "2-5,7" (optionally in brackets): one-based plane numbers. False when malformed.
bool Plot3dParsePlaneList(const char *text, std::vector<int> *planes);

// Reads stem + "g" (and stem + "q", stem + "f" as the options ask) and writes outputName.
// foreignOutput writes the output in the other byte order. On failure *errorText holds the
// message (without the "Err: " prefix) and outputName is neither created nor changed.
bool Plot3dConvert(const Plot3dOptions &options, const std::string &stem, const std::string &outputName,
                   bool foreignOutput, std::string *errorText);
