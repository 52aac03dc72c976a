// PNG export through libpng: 8 bits per sample, RGB or, reduced to 256 colours, a palette of
// exactly 256 entries; compression level 9, the modification time, and the text entries
// "Description" ("Created with Orvanex Version <version>") and "Title" (the name of the file
// without its directory). Only the modification time differs between two exports of one picture.
// Relies on: bitimage, genimage, libpng.
#pragma once

#include <cstdio>

#include "base/output/exportsetup.h"
#include "base/output/genimage.h"

struct png_struct_def;

// The library's error and warning handlers. The error handler does not return: it jumps back to
// the writer, which reports "PNG library export error". Warnings are shown only when debugging.
void GenericPNGErrorCallback(png_struct_def *png, const char *message);
void GenericPNGWarningCallback(png_struct_def *png, const char *message);

// Still image export of a region; title is the "Title" text (null for an empty one).
bool ExportPNG(FILE *file, ExportRegion_e region, int width, bool convertTo256Colors, const char *title);
// Writes a picture in memory as an RGB PNG with the same entries; leaves the bit image state
// alone, so it may run while an export is under way.
bool ExportGenericImageToPNG(FILE *file, GenericImage_a image, const char *title);
