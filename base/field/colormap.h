// Contour colour maps: the ramp of each colour map group, built from the control points of the
// map the group shows (or drawn at random for WILD, or sampled from the raw user-defined table);
// the raw user-defined table itself; the canned maps and the operations of $!COLORMAPCONTROL;
// and colour-map files (".map"), which are macro text run in a restricted mode.
// Relies on: genbase (the colour map groups of the general style), grcolor (the colour tables and
// their ramp hook), vdi (reinstalling the tables), macro1/macrocomp/macrovar (running a file),
// fileio (opening files).
#pragma once

#include <cstdio>
#include <string>

#include "base/kernel/genbase.h"

// CONTOURCOLORMAP.
enum ContourColorMap_e {
    ContourColorMap_SmRainbow = 0,
    ContourColorMap_LgRainbow = 1,
    ContourColorMap_Modern = 2,
    ContourColorMap_GrayScale = 3,
    ContourColorMap_Wild = 4,
    ContourColorMap_UserDef = 5,
    ContourColorMap_TwoColor = 6,
    ContourColorMap_RawUserDef = 7
};

// The operation of $!COLORMAPCONTROL.
enum ColorMapControlAction_e {
    ColorMapControlAction_RedistributeControlPoints = 0,
    ColorMapControlAction_CopyStandard = 1,
    ColorMapControlAction_ResetToFactory = 2
};

// The raw user-defined colours: one table for the whole program.
constexpr int MaxRawUserDefColors = 800;
extern RGB_s RawUserDefColorMap[MaxRawUserDefColors];
extern int NumRawUserDefColors;

// Start-up: 800 entries of gray, entry i having i x 0.3191489361702128, truncated, on each channel.
void InitRawUserColorMap();
// Registers the ramp builder with the colour tables (GrColorHooks) and the reinstallation of the
// tables after a colour map style change.
void RegisterColorMapHooks();

// The control points of one map of a colour map group; null for WILD and raw user defined.
ColorMapBand_s *GetColorMapBand(ColorMap_s *map, int contourColorMap);
const ColorMapBand_s *GetColorMapBand(const ColorMap_s *map, int contourColorMap);
// The control points of the map that colour map group `group` (0-based) shows, or null.
const ColorMapBand_s *GetCurrentColorMapBand(int group);

// A control point at location p falls on index round(p x (numEntries-1)) (x + 0.499, truncated).
int ColorMapControlPointIndex(double location, int numEntries);
// Fills rgbOut[0..numEntries-1] from the band: constant at the first point's trail colour before
// it, linear from each point's lead colour to the next one's trail colour (both ends included,
// each channel + 0.499 truncated), constant at the last point's lead colour after it.
void BuildBandedColorMap(const ColorMapBand_s &band, RGB_s *rgbOut, int numEntries);
// The ramp of colour map group `group` (0-based) by its CONTOURCOLORMAP: the band for the banded
// maps, three random numbers per entry (blue, green, red) for WILD, the raw table sampled for raw
// user defined. The same random ramp comes back on every call.
void BuildContourRamp(int group, RGB_s *ramp, int numEntries);

// Spreads the band's points evenly: point i at i/(N-1), the last at exactly 1. A null band (WILD,
// raw user defined) gives "Cannot redistribute control points for current colormap".
bool ReDistributeColorMapControlPoints(ColorMapBand_s *band);
// Copies canned map `map` (0 to 3, or 6) of colour map group `group` onto the group's user-defined
// map, or samples it into the raw table (800 entries) when the group shows raw user defined.
bool CopyCannedColorMap(int map, int group);
// Puts map `map` of the group back to its factory control points (not WILD, not raw).
bool ResetContourColorMapToFactoryDefaults(int map, int group);
// Replaces the raw table by numEntries colours (0 to 800).
bool InstallRawColorMapRGBValues(int numEntries, const RGB_s *rgb);
// Rebuilds the ramps of the four groups in the device colour tables.
void InstallAllColorMaps();

// Runs a colour-map file: a macro file in which only $!RAWCOLORMAP, $!GLOBALCOLORMAP, $!COLORMAP
// and $!COLORSPECTRUM run; then reinstalls the four groups. On any failure the colour maps are
// left as they were.
bool LoadColorMap(const char *fileName);
// Writes the header and, for each of the four groups, WriteColorMapInfo.
bool WriteColorMap(const char *fileName);
// The commands that rebuild one colour map group: the raw table ($!RAWCOLORMAP) when the group
// shows it, $!GLOBALCOLORMAP n with CONTOURCOLORMAP, $!COLORMAPCONTROL n RESETTOFACTORY for a
// canned map, and the control points of the map in use.
bool WriteColorMapInfo(FILE *file, int group);

// The actions. Groups are 0-based colour map groups.
bool Action_LoadColorMap(const std::string &fileName);
bool Action_WriteColorMap(const std::string &fileName);
bool Action_RawColorMap(int numEntries, const RGB_s *rgb, int group);
bool Action_ColorMapControl(ColorMapControlAction_e action, int map, int group);
