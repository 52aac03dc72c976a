// Generic images: the texture sizes and border, sharing and copying, sub-images.
#include <gtest/gtest.h>

#include <cstring>

#include "base/kernel/alloc.h"
#include "base/output/genimage.h"

namespace {

TEST(GenericImage, TextureSizesArePowersOfTwoWithRoomForTheBorder) {
    EXPECT_EQ(GetGenericImageSizeForDimension(30, true), 32);  // 30 + 2 fits exactly
    EXPECT_EQ(GetGenericImageSizeForDimension(31, true), 64);
    EXPECT_EQ(GetGenericImageSizeForDimension(0, true), 2);  // at least 2
    EXPECT_EQ(GetGenericImageSizeForDimension(1, true), 4);
    EXPECT_EQ(GetGenericImageSizeForDimension(62, true), 64);
    EXPECT_EQ(GetGenericImageSizeForDimension(63, true), 128);
    EXPECT_EQ(GetGenericImageSizeForDimension(31, false), 31);
    EXPECT_EQ(GetMaxDimensionForGenericImageSize(32, true), 30);
    EXPECT_EQ(GetMaxDimensionForGenericImageSize(64, true), 62);
    EXPECT_EQ(GetMaxDimensionForGenericImageSize(64, false), 64);
}

TEST(GenericImage, TexturePixelsStartOneRowAndOnePixelInAndLeaveTheBorderBlack) {
    GenericImage_a image = AllocGenericImage(5, 3, true);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->AllocWidth, 8);  // 5 + 2 -> 8
    EXPECT_EQ(image->AllocHeight, 8);  // 3 + 2 -> 8 (at least the next power of two)
    EXPECT_EQ(image->Pixels, image->Buffer + (8 + 1) * 3);
    EXPECT_EQ(GetGenericImageRowStride(image), 8 * 3);
    for (int row = 0; row < 3; row++) memset(GetGenericImageRow(image, row), 0xFF, 5 * 3);
    for (int y = 0; y < 8; y++)
        for (int x = 0; x < 8; x++) {
            bool inside = x >= 1 && x <= 5 && y >= 1 && y <= 3;
            const uint8_t *p = image->Buffer + (y * 8 + x) * 3;
            EXPECT_EQ(p[0], inside ? 0xFF : 0) << x << "," << y;
        }
    FreeGenericImage(&image);
    EXPECT_EQ(image, nullptr);
}

TEST(GenericImage, ReferenceCopiesShareAndTheLastFreeReleases) {
    long before = AllocActiveCount();
    GenericImage_a image = AllocGenericImage(4, 2, false);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->RefCount, 1);
    EXPECT_EQ(image->NumImages, 1);
    GetGenericImageRow(image, 1)[5] = 77;
    GenericImage_a shared = CopyGenericImage(image, CopyMode_Reference);
    EXPECT_EQ(shared, image);
    EXPECT_EQ(image->RefCount, 2);
    GenericImage_a copy = CopyGenericImage(image, CopyMode_Duplicate);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->Buffer, image->Buffer);
    EXPECT_EQ(GetGenericImageRow(copy, 1)[5], 77);
    EXPECT_EQ(copy->RefCount, 1);
    FreeGenericImage(&shared);
    EXPECT_EQ(shared, nullptr);
    EXPECT_EQ(image->RefCount, 1);  // still alive for the other holder
    EXPECT_EQ(GetGenericImageRow(image, 1)[5], 77);
    FreeGenericImage(&image);
    FreeGenericImage(&copy);
    FreeGenericImage(&copy);  // null is allowed
    EXPECT_EQ(AllocActiveCount(), before);
}

TEST(GenericImage, SubImageCopiesTheRectangleFromTheTopLeftCorner) {
    GenericImage_a image = AllocGenericImage(6, 5, true);
    ASSERT_NE(image, nullptr);
    for (int y = 0; y < 5; y++)
        for (int x = 0; x < 6; x++) {
            uint8_t *p = GetGenericImageRow(image, y) + x * 3;
            p[0] = uint8_t(x);
            p[1] = uint8_t(y);
            p[2] = uint8_t(10 * x + y);
        }
    GenericImage_a sub = ExtractGenericSubImage(image, 2, 1, 3, 4);
    ASSERT_NE(sub, nullptr);
    EXPECT_FALSE(sub->IsTexture);
    EXPECT_EQ(GetGenericImageWidth(sub), 3);
    EXPECT_EQ(GetGenericImageHeight(sub), 4);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 3; x++) {
            const uint8_t *p = GetGenericImageRow(sub, y) + x * 3;
            EXPECT_EQ(p[0], x + 2);
            EXPECT_EQ(p[1], y + 1);
            EXPECT_EQ(p[2], 10 * (x + 2) + (y + 1));
        }
    FreeGenericImage(&sub);
    FreeGenericImage(&image);
}

}  // namespace
