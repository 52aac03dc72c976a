// The bit image: the one picture being exported, held in a single global state between
// BitImage_ConstructAndRenderBitImage and BitImage_DestroyBitImage, from which the writers pull
// rows (row 0 the top) as RGB, planar R, G, B, or palette or gray indices. The pixels come from a
// bit image device, registered by the drawing layer, that renders a region of the page at a
// given size and hands back its rows; or from a generic image. The state also knows the image
// size rules (the height that keeps the region's aspect, the default width), the gray reductions,
// the export palette, supersample antialiasing, and the guarded file helpers of the writers.
// Relies on: genbase (export setup, interface, colours), globals, idle (time-outs), errors,
// version, setvalue (the image dimension range), genimage, imgresize, colorquant, exportsetup.
#pragma once

#include <cstdint>
#include <cstdio>

#include "base/output/colorquant.h"
#include "base/output/exportsetup.h"
#include "base/output/genimage.h"

enum BitImageType_e { BitImageType_RGB = 0, BitImageType_ColorPalette = 1, BitImageType_GrayScale = 2 };

// What the drawing layer knows of an export region.
struct ExportRegionSize_s {
    double Width = 0.0, Height = 0.0;  // paper inches: the frame, the frames' bounding box, or the region in work area
    double JDotsPerIDots = 1.0;        // height of a screen dot over its width
    int UsableWidth = 0, UsableHeight = 0;  // the usable work area, pixels
    int OnScreenWidth = 0;                  // the region's width on screen, pixels, not clipped
    int ScreenWidth = 0;                    // the whole screen, pixels; 0 for no limit
};

// The drawing side of a bit image. Render draws the region into a picture of exactly width by
// height pixels, off screen or (without useOffscreen) on the screen's back buffer; it returns
// false after reporting why, or quietly with Interrupted set when the user interrupted.
// GetRGBPixelRow copies row `row` (0 the top) as width R, G, B triples; rows are asked in any
// order. Release frees what Render made; it is called once after every Render, whether or not
// that succeeded.
struct BitImageDevice_s {
    bool (*GetRegionSize)(ExportRegion_e region, ExportRegionSize_s *size);  // false: unknown region
    bool (*Render)(ExportRegion_e region, int width, int height, bool useOffscreen);
    void (*GetRGBPixelRow)(int row, uint8_t *rgb);
    void (*Release)(bool useOffscreen);
};
// Copies the table; null unregisters.
void BitImage_RegisterDevice(const BitImageDevice_s *device);

// Set when the user interrupted while the image was made or written: the export leaves no file.
extern bool BitImageInterrupted;
// Set by the guarded file helpers on a short transfer; sticky until the next export clears it.
extern bool BitImageIOErrorFlag;

// ---- size -------------------------------------------------------------------------------------

// Height of a width-pixel image of the region that keeps its aspect: for a frame or all frames
// (width - 1) * JDotsPerIDots * Height / Width + 1, for the work area (width - 1) *
// (UsableHeight - 1) / (UsableWidth - 1) + 1, rounded with 0.499; the width itself when the size
// is unknown.
int ExportImageHeightForRegionSize(ExportRegion_e region, int width, const ExportRegionSize_s &size);
// The height an export of the region at this width takes: the cached height when one is set,
// else the aspect rule with the device's region size.
int BitImage_GetExportImageHeight(ExportRegion_e region, int width);
// Width of an export when none is given: in batch mode IMAGEWIDTH as it stands (1 to 32766);
// otherwise the region's width on screen clipped to the usable work area (the work area itself:
// its width + 1), at most the screen width, at least the least image dimension (4); 512 when the
// region is unknown.
int BitImage_GetDefaultExportImageWidth(ExportRegion_e region);
// A fixed height for the images that follow (the frames of a movie keep one size); 0 clears.
void BitImage_SetCachedImageHeight(int height);
void BitImage_ClearCachedImageHeight();
int BitImage_GetMostRecentRenderedImageHeight();

// ---- the state --------------------------------------------------------------------------------

// Renders the region through the device at width by height and prepares rows of the given type.
// numColors is the palette size for BitImageType_ColorPalette (colours are gathered and quantised
// here) and the gray depth for BitImageType_GrayScale. With USESUPERSAMPLEANTIALIASING the region
// is rendered F times larger ((size - 1) * F + 1) and resampled with RESIZEFILTER. False with a
// message on failure, or quietly with BitImageInterrupted set; nothing stays allocated then.
bool BitImage_ConstructAndRenderBitImage(BitImageType_e type, int numColors, ExportRegion_e region, int width,
                                         int height);
// The same over a picture already in memory (shared, not copied).
bool BitImage_ConstructFromGenericImage(BitImageType_e type, int numColors, GenericImage_a image);
// Frees the state and releases the device; harmless when nothing is constructed.
void BitImage_DestroyBitImage();
bool BitImage_IsConstructed();
int BitImage_GetImageWidth();
int BitImage_GetImageHeight();
BitImageType_e BitImage_GetImageType();
// Palette size or gray depth, as given at construction.
int BitImage_GetNumColors();
// Dots per inch of the image on paper (height over the region's height); 72 when unknown.
double BitImage_GetJDotsPerInch();

// Row pullers. Each counts progress, polls the time-out and stops (false, BitImageInterrupted
// set) once the user interrupted. The indexed row holds palette indices, or gray levels by depth.
bool BitImage_GetRGBPlanarPixelRow(int row, uint8_t *r, uint8_t *g, uint8_t *b);
bool BitImage_GetRGBPixelRow(int row, uint8_t *rgb);
bool BitImage_GetIndexedPixelRow(int row, uint8_t *index);

// ---- colours ----------------------------------------------------------------------------------

// The paper's background colour.
void BitImage_GetBackgroundColorRGB(uint8_t *r, uint8_t *g, uint8_t *b);
// Its index in the export palette of the constructed image.
int BitImage_GetBackgroundColorIndex();
// Gray level of a colour at a depth, from G = (0.3 R + 0.59 G + 0.11 B) / 255 and its byte value
// g = (int)(255 G + 0.499): depth 0: 1 for the background colour, else 0; depth 1: 1 if G >= 0.5;
// depth 2: g / 64 (0 to 3); depth 4: g / 16; depth 8: g; other depths g >> (8 - depth).
int BitImage_GetGrayFromRGB(int depth, uint8_t r, uint8_t g, uint8_t b);
// The export palette of the constructed image: the quantised colours, or for gray the ramp of its
// depth (0 or 255 for depths 0 and 1; k * 85; k * 17; k).
int BitImage_GetExportPaletteSize();
int BitImage_GetExportPaletteIndex(uint8_t r, uint8_t g, uint8_t b);
void BitImage_GetExportColorPaletteRGB(int index, uint8_t *r, uint8_t *g, uint8_t *b);

// Status texts. The quantisation text defaults to "Reducing the image to %d colors..." with the
// number of colours; a text set here is shown as it stands. Null restores the default.
void BitImage_SetColorQuantizationProgressText(const char *text);
void BitImage_SetImageRenderProgressText(const char *text);

// ---- guarded file helpers ---------------------------------------------------------------------
// All fields are unsigned. A short transfer sets BitImageIOErrorFlag; once it is set, writes are
// skipped so that one failure gives one report.

void BitImage_Write1ByteInt(FILE *file, uint8_t value);
void BitImage_Write2ByteInt(FILE *file, uint16_t value, bool littleEndian);
void BitImage_Write4ByteInt(FILE *file, uint32_t value, bool littleEndian);
uint16_t BitImage_Read2ByteInt(FILE *file, bool littleEndian);
uint32_t BitImage_Read4ByteInt(FILE *file, bool littleEndian);
size_t BitImage_fread(void *buffer, size_t size, size_t count, FILE *file);
size_t BitImage_fwrite(const void *buffer, size_t size, size_t count, FILE *file);
bool BitImage_fseek(FILE *file, long offset, int whence);
long BitImage_ftell(FILE *file);

// The program's version identifier, VersionStr ("11.0-0-1"); made from the version numbers in the
// same form when start-up has not filled it in.
const char *BitImage_VersionText();
// "Created with Orvanex Version <version> (Unix)": the software of a TIFF, the creator of a
// PostScript picture.
const char *BitImage_CreatorText();
