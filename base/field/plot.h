// The field plot layers the redraw driver calls for 2D and 3D frames. For now each zone of the
// shown field maps draws its mesh: the index lines of ordered zones, the cell edges of FE zones,
// the segments of line-segment zones, through the zone walkers. 3D frames project the mesh through
// the frame's 3D view. Other layers (contour, vector, scatter, shade) join as they are built.
// Relies on: setup, proccell, procln (the walkers), frame, fieldmap, solntime (the zones shown),
// view (the maps), vdi (drawing), draw0 (the layer hooks).
#pragma once

// Draws the field data of the current 2D frame; false when interrupted.
bool Plot2DFieldData();
// The same for a 3D frame, projected through its view.
bool Plot3DOpaqueFieldData();
// Puts the field layers into the redraw driver's hooks.
void RegisterFieldPlotLayers();
