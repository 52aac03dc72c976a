// Resampling of generic images: a separable filter, first along rows into a temporary image, then
// along columns, with one list of contributions per destination pixel. Used to bring a
// supersampled rendering down to the exported size (antialiasing) and to resize pictures.
// Relies on: genimage.
#pragma once

#include "base/output/genimage.h"

enum ImageResizeFilter_e {
    ImageResizeFilter_Texture = 0,  // left to the device; resampling here takes the box
    ImageResizeFilter_Box = 1,
    ImageResizeFilter_Lanczos2 = 2,
    ImageResizeFilter_Lanczos3 = 3,
    ImageResizeFilter_Triangle = 4,
    ImageResizeFilter_Bell = 5,
    ImageResizeFilter_BSpline = 6,
    ImageResizeFilter_Cubic = 7,
    ImageResizeFilter_Mitchell = 8,
    ImageResizeFilter_Gaussian = 9
};

// Half-width of a filter's kernel, in source pixels.
double ImageResizeFilterSupport(ImageResizeFilter_e filter);
// The kernel at distance x (source pixels); 0 outside the support.
double ImageResizeFilterKernel(ImageResizeFilter_e filter, double x);

// Resamples all of source into all of destination (distinct images). Destination pixel i of a row
// is centred on source position i / s, s = destination size / source size; when shrinking the
// kernel is widened by 1/s. Weights of each list sum to 1, positions outside the source mirror
// about the edge pixel, results are rounded and clamped to 0..255. With showProgress the percent
// done runs from percentStart to percentEnd. False when *interrupt became true or memory ran
// short; the caller reports, telling the two apart by the interrupt flag.
bool ResizeGenericImage(GenericImage_a destination, GenericImage_a source, ImageResizeFilter_e filter,
                        bool showProgress, int percentStart, int percentEnd, volatile bool *interrupt);
