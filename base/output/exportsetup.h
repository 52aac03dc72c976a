// The enumerations of the export setup ($!EXPORTSETUP, ExportSetup_s in base/kernel/genbase.h):
// the export formats with the path each takes, the region, the render type of formats that may
// carry an image, and the settings of the still image writers. The record itself lives with the
// general style; it stores these values as plain ints.
// ExportRegion_e (CURRENTFRAME, ALLFRAMES, WORKAREA) is the device layer's, in base/plot/devtypes.h.
// Relies on: devtypes, errors.
#pragma once

#include "base/plot/devtypes.h"

enum ExportFormat_e {
    ExportFormat_RasterMetafile = 0,  // movie writer
    ExportFormat_TIFF = 1,
    ExportFormat_SGI = 2,  // still image without a writer
    ExportFormat_SunRaster = 3,
    ExportFormat_XWindows = 4,
    ExportFormat_PSImage = 5,  // rewritten as EPS with image rendering
    ExportFormat_HPGL = 6,
    ExportFormat_HPGL2 = 7,
    ExportFormat_PS = 8,
    ExportFormat_EPS = 9,
    ExportFormat_LaserGraphics = 10,  // no writer behind it
    ExportFormat_WindowsMetafile = 11,
    ExportFormat_BMP = 12,
    ExportFormat_PNG = 13,
    ExportFormat_AVI = 14,     // movie writer
    ExportFormat_Custom = 15,  // no path in export
    ExportFormat_JPEG = 16,
    ExportFormat_Flash = 17  // movie writer
};

enum PrintRenderType_e { PrintRenderType_Vector = 0, PrintRenderType_Image = 1 };

// The colour capability asked of an export: one gray channel, a pen plotter, or full colour.
enum Palette_e { Palette_Monochrome = 0, Palette_PenPlotter = 1, Palette_Color = 2 };

enum SunRasterFormat_e { SunRasterFormat_OldFormat = 0, SunRasterFormat_Standard = 1, SunRasterFormat_ByteEncoded = 2 };
enum TIFFByteOrder_e { TIFFByteOrder_Intel = 0, TIFFByteOrder_Motorola = 1 };
enum JPEGEncoding_e { JPEGEncoding_Standard = 0, JPEGEncoding_Progressive = 1 };

// Vector output (and not a picture): HPGL and HPGL2 always; PS, EPS and WINDOWSMETAFILE when
// rendered as vectors. With PrintRenderType_Image those three carry an image instead.
bool IsVectorExportFormat(ExportFormat_e format, PrintRenderType_e renderType);
// The formats that the still image writers produce (TIFF, SGI, SUNRASTER, XWINDOWS, BMP, PNG, JPEG).
bool IsStillImageExportFormat(ExportFormat_e format);
// The formats that go to the movie writers (RASTERMETAFILE, AVI, FLASH).
bool IsMovieExportFormat(ExportFormat_e format);
// Whether an export in this format can be made at all, asked before anything is rendered. Only
// the still image formats have writers (SGI among them: it gives an empty file); every other
// format fails with "Export format <word> is not available." (its macro word) and nothing is
// written.
bool CheckExportFormatAvailable(ExportFormat_e format);
