// Still image export to a file: the one place that opens the file, runs the writer of the format
// and closes it, and that turns interruption and I/O errors into the export's outcome.
// Relies on: fileio, bitimage and the writers (imgbmp, imgpng, imgjpeg, imgtiff, imgsun, imgxwd).
#pragma once

#include "base/output/exportsetup.h"

// Writes the region as a picture of the given width (the default width when width < 1) in one of
// the still image formats. A format that has no writer is refused through
// CheckExportFormatAvailable before the file is touched. SUNRASTER and XWINDOWS are always reduced
// to 256 colours. SGI has no writer: its file is made empty. The file is replaced, or with
// `append` added to. An interrupted or failed export removes the file it made (an appended file
// keeps its earlier content); a short write reports "Disk error. You may be out of disk space.
// ..." once. progressText, when not null, is the status text while the region renders. A PNG
// takes the file's name without its directory as its title.
bool ExportStaticImage(ExportFormat_e format, const char *fileName, ExportRegion_e region, int width,
                       bool convertTo256Colors, bool append, const char *progressText, Palette_e palette);
