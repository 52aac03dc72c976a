// The colour tables of the device layer: CurrentColorMap holds one table per colour map group,
// each of NumContourColors + 68 RGB entries: 0-7 the named basic colours, 8-63 CUSTOM1-56, 64
// gray, 65 dark gray, 66 the XOR colour (white), 67 on the contour ramp of NumContourColors + 1
// entries. Colour indices of drawing calls resolve in the table of the selected group.
// The ramp is built by the contour colour map code through GrColorHooks; until it registers, a
// ramp is interpolated from the group's control points.
// Relies on: genbase (the basic colours, colour map groups, LINKCOLORMAPS), statechg.
#pragma once

#include <vector>

#include "base/kernel/genbase.h"
#include "base/plot/devtypes.h"

// Entries of the contour ramp less one; fixed when the tables are allocated (MAXNUMCONTOURLEVELS).
extern int NumContourColors;
// One table per colour map group; empty until Gr_AllocColorTables.
extern std::vector<RGB_s> CurrentColorMap[NumColorMapGroups];

struct GrColorHooks_s {
    // Fills ramp[0..numEntries-1] for a colour map group (banded maps, WILD, raw user defined).
    void (*BuildContourRamp)(int group, RGB_s *ramp, int numEntries);
    // The redraw driver's mark for a colour map change.
    void (*MarkColorMapForScreenUpdate)();
};
extern GrColorHooks_s GrColorHooks;

// Allocates the four tables for MAXNUMCONTOURLEVELS; false with "Out of memory" otherwise.
bool Gr_AllocColorTables();
void Gr_FreeColorTables();

// Group 0 for every group while LINKCOLORMAPS is on; else the group itself.
int SelectFinalColorMapGroup(int group);
// The group whose table colour indices use.
void Gr_SelectColorMapGroup(int group);
int Gr_GetColorMapGroup();

// Selects the group, reloads the basic entries and the XOR entry, rebuilds the ramp, marks the
// colour map for redraw and raises the colour map state change.
void Gr_InstallColorMap(int group);

// The entry of the selected table; an index outside the table gives black and false.
bool Gr_GetColorMapRGB(int index, int *r, int *g, int *b);
RGB_s Gr_ColorMapEntry(int index);
// A basic colour as a packed 0xRRGGBB value (what a pixel of the off-screen image holds).
unsigned long Gr_GetBasicColorPixelValue(int basicColor);
