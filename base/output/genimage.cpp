// Generic images: allocation with the texture border, sharing by reference count, copies and
// sub-images. The border of a texture starts black and stays so unless a caller fills it.
#include "base/output/genimage.h"

#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/orvassert.h"

ImageProgressHooks_s ImageProgressHooks = {nullptr, nullptr};

namespace {

// Above this a texture dimension is no power of two that an int holds.
constexpr int MaxTextureAllocation = 1 << 30;

}  // namespace

int GetGenericImageSizeForDimension(int dimension, bool forTexture) {
    REQUIRE(dimension >= 0);
    if (!forTexture) return dimension;
    int size = 2;
    while (size < dimension + 2 && size < MaxTextureAllocation) size *= 2;
    return size;
}

int GetMaxDimensionForGenericImageSize(int size, bool forTexture) {
    REQUIRE(size >= 0);
    if (!forTexture) return size;
    return size >= 2 ? size - 2 : 0;
}

GenericImage_a AllocGenericImage(int width, int height, bool forTexture) {
    REQUIRE(width >= 1 && height >= 1);
    int allocWidth = GetGenericImageSizeForDimension(width, forTexture);
    int allocHeight = GetGenericImageSizeForDimension(height, forTexture);
    if (allocWidth < width + (forTexture ? 2 : 0) || allocHeight < height + (forTexture ? 2 : 0)) return nullptr;
    size_t numBytes = size_t(allocWidth) * size_t(allocHeight) * 3;
    auto *image = static_cast<GenericImage_s *>(newmalloc(sizeof(GenericImage_s)));
    if (image == nullptr) return nullptr;
    image->Buffer = static_cast<uint8_t *>(newmalloc(numBytes));
    if (image->Buffer == nullptr) {
        newfree(image);
        return nullptr;
    }
    memset(image->Buffer, 0, numBytes);
    image->Pixels = forTexture ? image->Buffer + (size_t(allocWidth) + 1) * 3 : image->Buffer;
    image->NumImages = 1;
    image->Width = width;
    image->Height = height;
    image->IsTexture = forTexture;
    image->AllocWidth = allocWidth;
    image->AllocHeight = allocHeight;
    image->RefCount = 1;
    return image;
}

void FreeGenericImage(GenericImage_a *image) {
    REQUIRE(image != nullptr);
    if (*image == nullptr) return;
    CHECK((*image)->RefCount >= 1);
    if (--(*image)->RefCount == 0) {
        newfree((*image)->Buffer);
        newfree(*image);
    }
    *image = nullptr;
}

GenericImage_a CopyGenericImage(GenericImage_a image, CopyMode_e mode) {
    REQUIRE(image != nullptr);
    if (mode == CopyMode_Reference) {
        image->RefCount++;
        return image;
    }
    GenericImage_a copy = AllocGenericImage(image->Width, image->Height, image->IsTexture);
    if (copy != nullptr) memcpy(copy->Buffer, image->Buffer, size_t(image->AllocWidth) * image->AllocHeight * 3);
    return copy;
}

int GetGenericImageWidth(GenericImage_a image) {
    REQUIRE(image != nullptr);
    return image->Width;
}

int GetGenericImageHeight(GenericImage_a image) {
    REQUIRE(image != nullptr);
    return image->Height;
}

int GetGenericImageRowStride(GenericImage_a image) {
    REQUIRE(image != nullptr);
    return image->AllocWidth * 3;
}

uint8_t *GetGenericImageRow(GenericImage_a image, int row) {
    REQUIRE(image != nullptr && row >= 0 && row < image->Height);
    return image->Pixels + size_t(row) * size_t(image->AllocWidth) * 3;
}

GenericImage_a ExtractGenericSubImage(GenericImage_a image, int x, int y, int width, int height) {
    REQUIRE(image != nullptr && width >= 1 && height >= 1);
    REQUIRE(x >= 0 && y >= 0 && x + width <= image->Width && y + height <= image->Height);
    GenericImage_a sub = AllocGenericImage(width, height, false);
    if (sub == nullptr) return nullptr;
    for (int row = 0; row < height; row++)
        memcpy(GetGenericImageRow(sub, row), GetGenericImageRow(image, y + row) + size_t(x) * 3, size_t(width) * 3);
    return sub;
}

void ImageProgress_SetStatusText(const char *text) {
    if (ImageProgressHooks.SetStatusText != nullptr) ImageProgressHooks.SetStatusText(text);
}

void ImageProgress_SetPercentDone(int percent) {
    if (ImageProgressHooks.SetPercentDone != nullptr) ImageProgressHooks.SetPercentDone(percent);
}
