// Scratch buffers shared by the drawing code, sized from the limits in force at start-up:
// the text buffer, the index/fraction arrays, the X, Y and Z line buffers, the pick list and the
// polyline buffer.
#pragma once

#include <vector>

#include "base/kernel/types.h"

struct ScratchSpace_s {
    std::vector<char> TextBuffer;          // MAXCHRSINTEXTLABELS + 1 bytes
    std::vector<LgIndex_t> IndexBuffer;    // MAXPTSINALINE + 1 entries each
    std::vector<double> FractBuffer;
    std::vector<double> XLineBuffer, YLineBuffer, ZLineBuffer;
    std::vector<ArbParam_t> PickList;      // MAXNUMPICKOBJECTS + 1 entries
    std::vector<XY_s> PolylineBuffer;      // MAXPTSINALINE + 1 entries
    std::vector<XYZ_s> PointBuffer;        // the device layer's points, MAXPTSINALINE + 1 entries
};

extern ScratchSpace_s ScratchSpace;

// Allocates the text, line and pick buffers; "Cannot allocate scratch space" on failure.
bool InitializeScratchSpace();
// Allocates the device layer's point buffer (part of Gr_Init).
bool AllocPointBuffer();
void FreeScratchSpace();
