// Colour quantisation: an octree of at most 8 levels with a hard limit on the number of colours,
// built in a fixed pool of nodes, that reduces a picture to a palette of 256 entries. Colours are
// added (with a multiplicity), the palette is made once, then every added colour maps to an index.
// The palette is sorted by colour (R, G, B as one 24-bit number, the colours in use ahead of the
// unused black entries when equal) so that the same picture always gives the same palette.
// Relies on: alloc, errors.
#pragma once

#include <cstdint>

struct ColorQuantization_s;
using ColorQuantization_a = ColorQuantization_s *;

// Entries of every palette made here; slots beyond the colours found are black.
constexpr int ColorQuantizationPaletteSize = 256;
// Nodes of the pool: enough for 256 colours, each with a path of 8 nodes below the root, and the
// colours that wait to be merged while a new one comes in.
constexpr int ColorQuantizationPoolSize = 2559;

// A quantiser that keeps at most numColors (1 to 256) colours; null when memory runs short, with
// "Out of memory, unable to initialize color quantization" if reportError.
ColorQuantization_a BitImage_NewColorQuantization(int numColors, bool reportError);
// The same with a pool of poolSize nodes (at least 1) instead of ColorQuantizationPoolSize. When a
// colour needs a node and the pool is empty, colours are merged as when there are too many, and
// the colour is added again: a small pool gives fewer, coarser colours, never a failure.
ColorQuantization_a BitImage_NewColorQuantizationWithPool(int numColors, int poolSize, bool reportError);
// Frees it and nulls the pointer; null is allowed.
void BitImage_DeleteColorQuantization(ColorQuantization_a *quantization);

// Adds one colour multiplicity times.
void BitImage_AddColorToQuantization(ColorQuantization_a quantization, uint8_t r, uint8_t g, uint8_t b,
                                     uint32_t multiplicity);
// Adds count pixels of planar rows; neighbours of equal colour go in as one colour with their number.
void BitImage_AddPlanerColorsToQuantization(ColorQuantization_a quantization, int count, const uint8_t *r,
                                            const uint8_t *g, const uint8_t *b);
// Adds count pixels of an interleaved R, G, B row, folding equal neighbours likewise.
void BitImage_AddRGBColorsToQuantization(ColorQuantization_a quantization, int count, const uint8_t *rgb);

// Gives each colour left in the tree a palette entry: the mean of the pixels it stands for,
// rounded. Call once, after the last colour was added.
void BitImage_CreatePalette(ColorQuantization_a quantization);
// Entries of the palette: always ColorQuantizationPaletteSize.
int BitImage_GetPaletteSize(ColorQuantization_a quantization);
// Colours in use (the leaves of the tree), at most the limit given at creation.
int BitImage_GetNumQuantizedColors(ColorQuantization_a quantization);
void BitImage_GetColorPaletteRGB(ColorQuantization_a quantization, int index, uint8_t *r, uint8_t *g, uint8_t *b);
// The palette index of a colour that was added.
int BitImage_GetPaletteIndex(ColorQuantization_a quantization, uint8_t r, uint8_t g, uint8_t b);
