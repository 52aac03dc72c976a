// BMP (device-independent bitmap) export, little endian: the 14-byte file header, a 40-byte
// information header, for 8-bit images a palette of 256 B, G, R, 0 entries, then the rows from the
// bottom up. 24-bit pixels are B, G, R; rows are padded to a multiple of 4 bytes, except in the
// run-length (RLE8) form, which has its own row ends.
// Relies on: bitimage.
#pragma once

#include <cstdio>

#include "base/output/exportsetup.h"

// Bytes that pad a row of numBytes to a multiple of 4.
int BMP_GetNumPadBytes(int numBytes);
// Writes the constructed bit image uncompressed: 24-bit for an RGB image, else 8-bit with its
// palette. False when interrupted; I/O errors go to BitImageIOErrorFlag.
bool BitImage_ExportDIB(FILE *file);
// Writes the constructed palette or gray image as 8-bit RLE8: (count, index) runs of up to 255,
// 0 0 after each row, 0 1 after the last.
bool BitImage_ExportCompressedDIB(FILE *file);
// Still image export of a region: a monochrome palette gives 8-bit gray with a gray ramp, colour
// reduced to 256 colours the quantised palette (both compressed), else 24-bit colour.
bool ExportBMP(FILE *file, ExportRegion_e region, int width, bool convertTo256Colors, Palette_e palette);
