// X window dump export, big endian: a 108-byte header (25 fields of 4 bytes and the window name
// "orvanex" with its terminating zero), 256 colour records, then one byte per pixel, rows of
// exactly the image width. The picture is reduced to 253 colours.
// Relies on: bitimage.
#pragma once

#include <cstdio>

#include "base/output/exportsetup.h"

constexpr int XWDNumColors = 253;

bool ExportXWindowDump(FILE *file, ExportRegion_e region, int width);
