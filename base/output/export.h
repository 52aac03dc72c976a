// Export: the one entry behind $!EXPORT. It reads the export setup and sends still images to the
// image writers; the drawing side of a bit image (rendering a region of the page off screen at a
// given size) is registered here.
// Relies on: bitimage and imgexport (the images and their writers), draw0 (drawing frames), vdi
// and grhw (the off-screen image), view (the maps), frame.
#pragma once

#include "base/kernel/types.h"
#include "base/plot/devtypes.h"

// Registers the drawing side of bit images: region sizes from the frames and the paper, rendering
// into the off-screen image, rows read back top first.
void RegisterBitImageDevice();

// Exports the region (255: the EXPORTREGION style value) in the EXPORTFORMAT of the export setup
// to EXPORTFNAME.
bool Action_Export(int region);
bool GoExport();

// Draws the region of the page into the off-screen image of width by height pixels.
bool BitImage_Render(int width, int height, ExportRegion_e region);
// The paper rectangle (inches, Y down, X1 < X2 and Y1 < Y2) that a region shows; false for an
// empty page.
bool GetExportRegionRect(ExportRegion_e region, Rect_s *rect);
