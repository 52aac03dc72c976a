// The PostScript picture: an Encapsulated PostScript page that draws the rendered region as one
// image, for PS and EPS export with the IMAGE render type. Rows are run-length packed and hex
// coded; procedures on the page unpack them. A packet is a count byte n and data: n < 128 means
// n + 1 literal bytes follow, n >= 128 means the one following byte repeats n - 126 times (2 to
// 129). Colour rows go as three planes, red, green, blue, each packed alone; a monochrome palette
// gives one plane of 8-bit gray.
// Relies on: bitimage, genbase (paper orientation).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "base/output/exportsetup.h"

// Packs one plane row into out (room for 2 * numBytes) and returns the bytes written.
size_t PSImage_EncodeRow(const uint8_t *row, int numBytes, uint8_t *out);
// Writes the region as an EPS picture: one image pixel per 1/dpi inch; a landscape page is turned
// by 90 degrees.
bool ExportPSImage(FILE *file, ExportRegion_e region, int width, Palette_e palette);
