// The generic image: an RGB picture in memory that geometries, the device layer, the bit image
// and the image writers share. Pixels are 3 bytes (R, G, B), the top row first, each row
// contiguous; a texture image has a one-pixel border around the picture inside an allocation of
// powers of two, so rows then lie AllocWidth pixels apart. Images are shared by reference count.
// Also the hooks through which long image work shows its progress.
// Relies on: alloc.
#pragma once

#include <cstdint>

struct GenericImage_s {
    uint8_t *Pixels;  // the picture's top left pixel (one row and one pixel into Buffer for a texture)
    uint8_t *Buffer;  // the allocation
    int NumImages;    // pictures held; always 1 here
    int Width, Height;
    bool IsTexture;
    int AllocWidth, AllocHeight;  // pixels of Buffer in each direction
    int RefCount;
};
using GenericImage_a = GenericImage_s *;

enum CopyMode_e { CopyMode_Reference = 0, CopyMode_Duplicate = 1 };

// The pixels to allocate in one direction for a picture dimension: the dimension itself, or for a
// texture the smallest power of two at or above dimension + 2, at least 2.
int GetGenericImageSizeForDimension(int dimension, bool forTexture);
// The largest picture dimension that fits in an allocation of the given size (size - 2 for a texture).
int GetMaxDimensionForGenericImageSize(int size, bool forTexture);

// A new black image with one reference, or null when memory runs short; the caller reports, since
// only it knows what the image was for.
GenericImage_a AllocGenericImage(int width, int height, bool forTexture);
// Drops one reference, frees the image with the last, and nulls the pointer. Null is allowed.
void FreeGenericImage(GenericImage_a *image);
// CopyMode_Reference: the same image with one more reference. CopyMode_Duplicate: a new image of
// the same layout and pixels (null when memory runs short).
GenericImage_a CopyGenericImage(GenericImage_a image, CopyMode_e mode);
int GetGenericImageWidth(GenericImage_a image);
int GetGenericImageHeight(GenericImage_a image);
// Bytes from one row to the next.
int GetGenericImageRowStride(GenericImage_a image);
// The first pixel of a row, row 0 the top.
uint8_t *GetGenericImageRow(GenericImage_a image, int row);
// A new plain image holding width by height pixels from (x, y), the top left corner, which must
// lie inside the source; null when memory runs short.
GenericImage_a ExtractGenericSubImage(GenericImage_a image, int x, int y, int width, int height);

// Progress of long image work: the status line of the interface. Null hooks show nothing, as in
// batch mode.
struct ImageProgressHooks_s {
    void (*SetStatusText)(const char *text);  // null text clears
    void (*SetPercentDone)(int percent);       // 0 to 100
};
extern ImageProgressHooks_s ImageProgressHooks;
void ImageProgress_SetStatusText(const char *text);
void ImageProgress_SetPercentDone(int percent);
