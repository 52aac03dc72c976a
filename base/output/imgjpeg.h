// JPEG export through libjpeg: three RGB components, the library's defaults, progressive scans
// for JPEGENCODING PROGRESSIVE, and the quality floor(100 * QUALITY) with baseline tables forced.
// Relies on: bitimage, genbase (export setup), libjpeg.
#pragma once

#include <cstdio>

#include "base/output/exportsetup.h"

// The libjpeg quality (1 to 100) of a QUALITY fraction.
int JPEG_QualityFromFraction(double quality);
// Still image export of a region.
bool ExportJPEG(FILE *file, ExportRegion_e region, int width);
