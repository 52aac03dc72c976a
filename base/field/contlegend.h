// The colour bar of each contour group whose legend is shown: one box per band of the group's
// levels, in the band's colour, stacked up (or along), anchored at the legend's XYPOS. The
// numbers beside the bands wait for text drawing.
// Relies on: contlevel (band colours), frame (the groups and maps), view (frame-to-screen map),
// vdi (drawing).
#pragma once

// Draws the legends of the current frame; true unless interrupted.
bool DrawContourLegends();
