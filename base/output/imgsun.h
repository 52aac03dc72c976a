// Sun raster export, big endian: eight 4-byte header fields (magic 0x59A66A95, width, height,
// depth 8, length, type, map type 1, map length 768), the colour map (256 R, then G, then B),
// then 8-bit palette rows padded to an even length. The byte-encoded form run-length codes each
// row: a run of 2 to 256 equal bytes is 128, count - 1, value; a lone 128 is 128, 0; any other
// lone byte stands for itself.
// Relies on: bitimage, genbase (export setup).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "base/output/exportsetup.h"

// Encodes one padded row into out (room for 3 * numBytes) and returns the bytes written.
size_t SunRaster_EncodeRow(const uint8_t *row, int numBytes, uint8_t *out);
// Still image export of a region, reduced to 256 colours; SUNRASTERFORMAT BYTEENCODED gives type 2
// with encoded rows, the others type 1.
bool ExportSunRaster(FILE *file, ExportRegion_e region, int width);
