// The field plot layers the redraw driver calls for 2D and 3D frames. A 2D frame draws each shown
// zone in stages, by zone or by layer as "TWODDRAWORDER" says: the mesh that lies under the flood,
// then flood (or shade) and contour lines, then the overlay and hidden-line mesh. A 3D frame is
// projected through its view: every zone's flood, back to front within the zone, then the mesh,
// then the contour lines. Border lines, scatter and vectors join as they are built.
// Relies on: setup, proccell, procln (the walkers), contour (flood, lines, labels), frame,
// fieldmap, solntime (the zones shown), view (the maps), vdi (drawing), draw0 (the layer hooks).
#pragma once

#include "base/field/setup.h"

struct Frame_s;

// Draws the field data of the current 2D frame; false when interrupted.
bool Plot2DFieldData();
// The same for a 3D frame, projected through its view.
bool Plot3DOpaqueFieldData();
// Puts the field layers into the redraw driver's hooks.
void RegisterFieldPlotLayers();

// The walking pair of a zone as the frame shows it: the style of its field map, the frame's
// layers, contour groups, blanking and axis variables. False when the zone has no valid field map
// or the set-up failed.
bool SetupFrameZone(Frame_s *frame, EntIndex_t zone, CZInfo_s **czInfo, CZData_s **czData);
