// Contour groups: the levels of each of a frame's four contour groups and their generation ("nice"
// levels, levels by count, by step, exponential), the multi-colour codes that let a colour field
// say "by contour group", and the colour a value or a level has under the group's colour map and
// filter (banded and continuous distributions, cycles, reversal, cut-off, overrides, zebra), or
// under the frame's RGB variables. Levels live in GlobalContour_s::Levels, strictly ascending.
// Relies on: frame (CurFrame and its GlobalContour_s records), solntime/datautil (the variable's
// range over the frame's zones), grcolor (the ramp and the colour map groups), colormap (the
// control points of the group's map), framelink (LINKCONTOURLEVELS), setup (the RGB tables of an
// object), setvalue (the hook that follows a new contour variable).
#pragma once

#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/types.h"

struct CZData_s;
struct GlobalContour_s;

// ---- multi-colour codes ---------------------------------------------------------------------

// A colour field holds a colour index (0-65 basic, 67 on the contour ramp) or one of these codes,
// as a signed value (65535 stands for -1 and so on).
constexpr int MultiColor_Group1 = -1;  // multi-colour by contour group 1
constexpr int NoColor = -2;            // do not draw
constexpr int MultiColor_Group2 = -3;
constexpr int MultiColor_Group3 = -4;
constexpr int MultiColor_Group4 = -5;
constexpr int MultiColor_RGB = -6;      // the frame's RGB variables
constexpr int MultiColor_Invalid = -255;

// FLOODCOLORING: 0 RGB, 1 to 4 the contour groups, 255 none.
enum ContourColoring_e {
    ContourColoring_RGB = 0,
    ContourColoring_Group1 = 1,
    ContourColoring_Group2 = 2,
    ContourColoring_Group3 = 3,
    ContourColoring_Group4 = 4,
    ContourColoring_Invalid = 255
};

// A colour as a signed value: a 16-bit code above the index range becomes its negative form.
int SignedColorIndex(int color);
// Groups are 0-based; outside the table: -1 (group), -255 (multi-colour), 255 (coloring).
int GetContourGroupFromMultiColor(int color);
int GetMultiColorFromContourGroup(int group);
int GetContourGroupFromContourColoring(int coloring);
int GetMultiColorFromContourColoring(int coloring);
int GetContourColoringFromContourGroup(int group);
int GetContourColoringFromMultiColor(int color);
// The group a varying colour uses, or -1 for a plain colour (RGB included).
int GetContourGroupForVaryingColor(int color);

// ---- level generation -----------------------------------------------------------------------

// ContourLevelAction_e: the operations of $!CONTOURLEVELS.
enum ContourLevelAction_e {
    ContourLevelAction_Add = 0,
    ContourLevelAction_New = 1,
    ContourLevelAction_DeleteRange = 2,
    ContourLevelAction_Reset = 3,
    ContourLevelAction_ResetToNice = 4,
    ContourLevelAction_DeleteNearest = 5
};

// The most levels a group may have (MAXNUMCONTOURLEVELS); the ramp has one entry more.
int MaxNumContourLevels();

// value becomes 0 when |value| < 1e-5, delta > 0 and |value|/delta < 1e-5.
double CheckToSnapNiceNumberToZero(double value, double delta);
// A step d in [1, 10] snapped to 1, 2, 5 or 10 (below 1.5, up to 3, up to 7, above).
double SnapToNiceDelta(double delta);
// Nice levels over [min, max]: about approxNum of them, start a multiple of delta (k x delta for
// an integer k), count levels start + i x delta. The finer step wins when its count is nearer
// approxNum and at most maxCount.
void GetNiceRangeMinAndDelta(double min, double max, int approxNum, double *niceMin, double *delta, int *count,
                             int maxCount);
// Level lists for the level dialogs and actions: levels min + i x delta; numLevels levels from min
// to max evenly; numLevels levels from min to max evenly in log10. False with "Invalid value for
// Min, Max or Delta" / "Invalid value for Min, Max or NumLevels".
bool GetMinMaxDeltaContourLevels(double min, double max, double delta, int *numLevels, std::vector<double> *levels);
bool GetMinMaxNumContourLevels(double min, double max, int numLevels, std::vector<double> *levels);
bool GetMinMaxExpContourLevels(double min, double max, int numLevels, std::vector<double> *levels);

// The range of the group's variable over the frame's cross-section of zones: the active relevant
// zones with the first and last zones of each strand in context, else the first enabled zone.
// False when the group has no variable or nothing can be read.
bool GetContourGroupVarMinMax(int group, double *min, double *max);

// Changes the levels of contour group `group` (0-based) of the current frame:
//   ADD, NEW: numLevels >= 1 values (NEW empties the list first), each inserted in its sorted
//     place, a value equal to an existing level dropped; more than MAXNUMCONTOURLEVELS fails with
//     "Too many contour levels.  The limit is %d.".
//   DELETERANGE: the levels from the first at or above min to the last at or below max.
//   DELETENEAREST: the level nearest min (the first of equals). Both fail on an empty list with
//     "No contour levels to delete".
//   RESET: numLevels levels evenly inside the variable's range (min + (i+1) x (max-min)/(N+1));
//   RESETTONICE: about numLevels nice levels inside it. N = 0 keeps the current count (nothing
//     happens when that is 0); DefNumLevels becomes N. False when the range cannot be read.
// The levels are unchanged on failure.
bool SetContourLevels(ContourLevelAction_e action, int group, double min, double max, int numLevels,
                      const double *levels);
bool Action_ContourLevels(ContourLevelAction_e action, int group, double min, double max, int numLevels,
                          const double *levels);

// After the contour variable of a group changed: the colour cut-off at a quarter and three
// quarters of the variable's range, the levels reset (DefNumLevels of them for a new variable,
// the current count otherwise), the continuous range on the variable's range, the legend's
// increment checked, the iso-surface values of groups defined on it reset, redraw marked. False
// (nothing changed) when the variable has no range.
bool UpdateFlagsAndMarkFrameForNewContourVar(int group, int newVar);

// max(the smallest positive double of input, (CMax - CMin)/500).
double GetMinimumSpecifiedIncrementValue(int group);
// A legend increment below that minimum becomes (CMax - CMin)/10, with a warning when asked and
// the legend is shown with LABELLOCATION INCREMENT.
void ResetLegendSpecifiedIncrement(int group, bool showWarning);

// ---- value to colour ------------------------------------------------------------------------

// The colour map group that contour group `group` uses after LINKCOLORMAPS.
int GetFilterColorMapGroup(int group);
// The colour of a value of contour group `group` (0-based) of the current frame: an index into
// the colour table (the ramp starts at FirstContourColorIndex), or -2 when the colour cut-off
// leaves the value out. A value exactly on a level belongs to the band below it.
int GetMultiColor(int group, double value);
int GetMultiColorIgnoringColorCutOff(int group, double value);
// The colour of band `level` (0-based: the values above level-1 up to and including level; the
// number of levels gives the band above the last level).
int GetMultiColorFromContourLevel(int group, int level, bool useCutoff);
// The colour of an iso-surface of iso-surface group isoGroup: a plain colour stays; a multi-colour
// of the definition group takes the colour of the iso-value (or of level `level` for
// ALLCONTOURLEVELS on a banded group).
int GetIsoSurfaceColor(int level, int color, int isoGroup);

// ---- RGB colouring ---------------------------------------------------------------------------

// The colour of values of the frame's RGB variables: each given channel (v - min)/(max - min)
// clamped to 0..1, x 255 + 0.499, truncated. rgbMode 0 gives all three; 1 red and green, 2 red
// and blue, 3 green and blue, the third channel being 255 less the two others, or 0 when they
// pass 255, half the excess then taken from the smaller (not below 0) and the larger set to 255
// less that. The value of the channel without a variable is not read.
RGB_s RGBColorFromValues(int rgbMode, double r, double g, double b, double min, double max);
// The same for an object's point or cell, from the nodal or cell-centred RGB tables of CZData_s
// and the current frame's RGB mode and range; false when a table the mode needs is missing.
bool GetRGBColorAtIndex(const CZData_s *czData, LgIndex_t index, bool isPoint, RGB_s *rgb);
bool GetRGBColorAtPointIndex(const CZData_s *czData, LgIndex_t point, RGB_s *rgb);
bool GetRGBColorAtCellIndex(const CZData_s *czData, LgIndex_t cell, RGB_s *rgb);
// The channels of the points' colours averaged (+ 0.499, truncated).
bool GetAveragedRGBColorAtPointIndices(const CZData_s *czData, int numPoints, const LgIndex_t *points, RGB_s *rgb);
// The colour of the variables' values interpolated between two points (0 at point1, 1 at point2).
bool GetRGBColorAtIndexFract(const CZData_s *czData, LgIndex_t point1, LgIndex_t point2, double fract, RGB_s *rgb);

// Registers what the style tree and frame linking call: the new contour variable after
// $!GLOBALCONTOUR n VAR, the copy of levels to linked frames, and the colour map hooks.
void RegisterContourHooks();
