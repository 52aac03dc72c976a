// TIFF export: version 42 in either byte order, one image directory, PackBits-compressed strips.
// Colour reduced to 256 colours is written with a colour map, colour as RGB, a monochrome or pen
// plotter palette as gray at GRAYSCALEDEPTH (1, 4 or 8 bits; 2 bits go up to 4, pixels packed from
// the high bit).
// Relies on: bitimage, genbase (export setup).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "base/output/exportsetup.h"

// Rows of a strip: the most that keep a strip within max(3 * width + 1, 8191) bytes before
// compression, at least 1, at most the height.
int TIFF_GetRowsPerStrip(int width, int bytesPerRow, int height);
// PackBits of one row into out (room for 2 * numBytes): blocks of at most 128 bytes, literal
// (count - 1, bytes) or repeated (1 - count, byte); neighbouring literals are merged, and a repeat
// of 2 between literals joins them while the sum stays within 128. Returns the bytes written.
size_t TIFF_PackBits(const uint8_t *row, int numBytes, uint8_t *out);
// Still image export of a region; byte order and gray depth from the export setup.
bool ExportTIFF(FILE *file, ExportRegion_e region, int width, bool convertTo256Colors, Palette_e palette);
