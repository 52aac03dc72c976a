// Contour groups: the levels of each of a frame's four contour groups, their generation, and the
// colour a value or a level has under the group's colour map and filter.
// Relies on: frame (CurFrame and its GlobalContour_s records), grcolor (the contour ramp).
#pragma once

// The colour of a value of contour group `group` (0-based) of the current frame: an index into the
// colour table (the ramp starts at FirstContourColorIndex), or -2 when the colour cut-off leaves the
// value out.
int GetMultiColor(int group, double value);
int GetMultiColorIgnoringColorCutOff(int group, double value);
// The colour of the band below level `level` (0-based; the number of levels gives the band above
// the last level).
int GetMultiColorFromContourLevel(int group, int level, bool useCutoff);
