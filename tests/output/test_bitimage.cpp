// The bit image state: the gray reductions and ramps by their formulas, the image height from the
// region's aspect with its rounding, the default width, construction through the device (sizes
// asked, rows, release, failures that leave nothing), supersample antialiasing worked out by
// hand, the palette with the background colour, interruption, and the guarded file helpers.
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "base/output/imgresize.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class BitImage : public ImageTest {};

// The byte gray level, typed from the rule: (int)(255 * (0.3 R + 0.59 G + 0.11 B) / 255 + 0.499).
int grayByte(int r, int g, int b) { return int(255.0 * ((0.3 * r + 0.59 * g + 0.11 * b) / 255.0) + 0.499); }

TEST_F(BitImage, GrayLevelsByDepth) {
    // Hand values: red 76.5 -> 76, green 150.45 -> 150, blue 28.05 -> 28.
    EXPECT_EQ(grayByte(255, 0, 0), 76);
    EXPECT_EQ(BitImage_GetGrayFromRGB(8, 255, 0, 0), 76);
    EXPECT_EQ(BitImage_GetGrayFromRGB(8, 0, 255, 0), 150);
    EXPECT_EQ(BitImage_GetGrayFromRGB(8, 0, 0, 255), 28);
    EXPECT_EQ(BitImage_GetGrayFromRGB(8, 255, 255, 255), 255);
    EXPECT_EQ(BitImage_GetGrayFromRGB(4, 255, 0, 0), 4);   // 76 / 16
    EXPECT_EQ(BitImage_GetGrayFromRGB(4, 0, 255, 0), 9);   // 150 / 16
    EXPECT_EQ(BitImage_GetGrayFromRGB(4, 255, 255, 255), 15);
    EXPECT_EQ(BitImage_GetGrayFromRGB(2, 0, 0, 255), 0);   // 28 < 64
    EXPECT_EQ(BitImage_GetGrayFromRGB(2, 255, 0, 0), 1);   // 64 <= 76 < 128
    EXPECT_EQ(BitImage_GetGrayFromRGB(2, 0, 255, 0), 2);   // 128 <= 150 < 192
    EXPECT_EQ(BitImage_GetGrayFromRGB(2, 200, 200, 200), 3);
    EXPECT_EQ(BitImage_GetGrayFromRGB(2, 64, 64, 64), 1);  // exactly 64
    EXPECT_EQ(BitImage_GetGrayFromRGB(1, 128, 128, 128), 1);  // 0.50196 >= 0.5
    EXPECT_EQ(BitImage_GetGrayFromRGB(1, 127, 127, 127), 0);
    EXPECT_EQ(BitImage_GetGrayFromRGB(1, 0, 255, 0), 1);     // 0.59
    // Every depth-8 level against the typed rule over a sweep of colours.
    for (int r = 0; r < 256; r += 15)
        for (int g = 0; g < 256; g += 17)
            for (int b = 0; b < 256; b += 51) {
                int level = grayByte(r, g, b);
                EXPECT_EQ(BitImage_GetGrayFromRGB(8, uint8_t(r), uint8_t(g), uint8_t(b)), level);
                EXPECT_EQ(BitImage_GetGrayFromRGB(4, uint8_t(r), uint8_t(g), uint8_t(b)), level / 16);
            }
}

TEST_F(BitImage, DepthZeroTellsTheBackgroundFromEverythingElse) {
    GeneralBase.Paper.BackgroundColor = 7;  // WHITE
    EXPECT_EQ(BitImage_GetGrayFromRGB(0, 255, 255, 255), 1);
    EXPECT_EQ(BitImage_GetGrayFromRGB(0, 254, 255, 255), 0);
    EXPECT_EQ(BitImage_GetGrayFromRGB(0, 0, 0, 0), 0);
    GeneralBase.Paper.BackgroundColor = 0;  // BLACK
    EXPECT_EQ(BitImage_GetGrayFromRGB(0, 0, 0, 0), 1);
    EXPECT_EQ(BitImage_GetGrayFromRGB(0, 255, 255, 255), 0);
}

TEST_F(BitImage, GrayPalettesAreRampsOfTheirDepth) {
    struct Case {
        int depth, size, index, level;
    };
    const Case cases[] = {{0, 2, 1, 255}, {1, 2, 0, 0}, {1, 2, 1, 255}, {2, 4, 1, 85}, {2, 4, 3, 255},
                          {4, 16, 1, 17}, {4, 16, 15, 255}, {8, 256, 200, 200}};
    for (const Case &c : cases) {
        ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_GrayScale, c.depth, ExportRegion_CurrentFrame, 4, 2));
        EXPECT_EQ(BitImage_GetExportPaletteSize(), c.size) << c.depth;
        uint8_t r, g, b;
        BitImage_GetExportColorPaletteRGB(c.index, &r, &g, &b);
        EXPECT_EQ(r, c.level) << c.depth;
        EXPECT_EQ(g, c.level);
        EXPECT_EQ(b, c.level);
        BitImage_DestroyBitImage();
    }
}

TEST_F(BitImage, HeightKeepsTheRegionsAspectAndRoundsWith0499) {
    ExportRegionSize_s size = DefaultRegionSize();  // 6 by 3 inches
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_CurrentFrame, 1, size), 1);  // 0 * ... + 1
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_CurrentFrame, 13, size), 7);
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_AllFrames, 512, size), 256);  // 256.5 + 0.499
    size.Width = 2.0;
    size.Height = 1.0;
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_CurrentFrame, 4, size), 2);  // 2.5 rounds down
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_CurrentFrame, 5, size), 3);
    size.JDotsPerIDots = 1.2;
    size.Width = 6.0;
    size.Height = 3.0;
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_CurrentFrame, 13, size), 8);  // 12 * 1.2 / 2 + 1 = 8.2
    // The work area takes the usable pixels: 400 * 600 / 800 + 1.
    size.UsableWidth = 801;
    size.UsableHeight = 601;
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_WorkArea, 401, size), 301);
    EXPECT_EQ(ExportImageHeightForRegionSize(ExportRegion_WorkArea, 1, size), 1);

    EXPECT_EQ(BitImage_GetExportImageHeight(ExportRegion_CurrentFrame, 13), 7);  // through the device
    BitImage_SetCachedImageHeight(40);
    EXPECT_EQ(BitImage_GetExportImageHeight(ExportRegion_CurrentFrame, 13), 40);
    BitImage_ClearCachedImageHeight();
    EXPECT_EQ(BitImage_GetExportImageHeight(ExportRegion_CurrentFrame, 13), 7);
}

TEST_F(BitImage, DefaultWidthFollowsTheScreenOrTheStyle) {
    // On screen 600 pixels wide, usable area 640, screen 1280.
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_CurrentFrame), 600);
    Log.Size.OnScreenWidth = 900;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_CurrentFrame), 640);  // clipped to the work area
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_WorkArea), 641);
    Log.Size.ScreenWidth = 500;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_WorkArea), 500);
    // A region a few pixels wide on screen still offers the least image dimension, 4.
    Log.Size.OnScreenWidth = 2;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_CurrentFrame), 4);
    Log.Size.OnScreenWidth = 5;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_CurrentFrame), 5);
    Log.SizeIsKnown = false;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_CurrentFrame), 512);
    InBatchMode = true;
    GeneralBase.ExportSetup.ImageWidth = 777;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_AllFrames), 777);
    // IMAGEWIDTH is taken as it stands, down to 1.
    GeneralBase.ExportSetup.ImageWidth = 1;
    EXPECT_EQ(BitImage_GetDefaultExportImageWidth(ExportRegion_AllFrames), 1);
}

TEST_F(BitImage, RowsComeFromTheDeviceAtTheAskedSizeAndTheDeviceIsReleasedOnce) {
    ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, ExportRegion_AllFrames, 5, 3));
    EXPECT_EQ(Log.RenderCalls, 1);
    EXPECT_EQ(Log.RenderWidth, 5);
    EXPECT_EQ(Log.RenderHeight, 3);
    EXPECT_EQ(Log.RenderRegion, ExportRegion_AllFrames);
    EXPECT_TRUE(Log.RenderUsedOffscreen);
    EXPECT_EQ(BitImage_GetMostRecentRenderedImageHeight(), 3);
    std::vector<uint8_t> rgb(15), r(5), g(5), b(5);
    for (int row : {2, 0, 1}) {  // any order
        ASSERT_TRUE(BitImage_GetRGBPixelRow(row, rgb.data()));
        ASSERT_TRUE(BitImage_GetRGBPlanarPixelRow(row, r.data(), g.data(), b.data()));
        for (int x = 0; x < 5; x++) {
            RGB c = GradientPattern(x, row, 5, 3);
            EXPECT_EQ(rgb[3 * x], c.R);
            EXPECT_EQ(rgb[3 * x + 1], c.G);
            EXPECT_EQ(rgb[3 * x + 2], c.B);
            EXPECT_EQ(r[x], c.R);
            EXPECT_EQ(g[x], c.G);
            EXPECT_EQ(b[x], c.B);
        }
    }
    EXPECT_EQ(Log.ReleaseCalls, 0);
    BitImage_DestroyBitImage();
    EXPECT_EQ(Log.ReleaseCalls, 1);
    BitImage_DestroyBitImage();  // harmless twice
    EXPECT_EQ(Log.ReleaseCalls, 1);
}

TEST_F(BitImage, GrayRowsHoldLevelsOfTheirDepth) {
    ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_GrayScale, 4, ExportRegion_CurrentFrame, 6, 2));
    std::vector<uint8_t> index(6);
    ASSERT_TRUE(BitImage_GetIndexedPixelRow(1, index.data()));
    for (int x = 0; x < 6; x++) {
        RGB c = GradientPattern(x, 1, 6, 2);
        EXPECT_EQ(index[x], grayByte(c.R, c.G, c.B) / 16);
    }
}

TEST_F(BitImage, PaletteImagesAlwaysHoldTheBackgroundColour) {
    Log.Pattern = StripePattern;  // no white in it
    GeneralBase.Paper.BackgroundColor = 7;
    ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_ColorPalette, 256, ExportRegion_CurrentFrame, 13, 4));
    EXPECT_EQ(Log.RowsServed, 4);  // gathered once
    int background = BitImage_GetBackgroundColorIndex();
    uint8_t r, g, b;
    BitImage_GetExportColorPaletteRGB(background, &r, &g, &b);
    EXPECT_EQ(r, 255);
    EXPECT_EQ(g, 255);
    EXPECT_EQ(b, 255);
    std::vector<uint8_t> index(13);
    ASSERT_TRUE(BitImage_GetIndexedPixelRow(3, index.data()));
    for (int x = 0; x < 13; x++) {
        BitImage_GetExportColorPaletteRGB(index[x], &r, &g, &b);
        EXPECT_EQ((RGB{r, g, b}), StripePattern(x, 3, 13, 4)) << x;
    }
}

TEST_F(BitImage, SupersamplingRendersLargerAndResamplesBack) {
    // 3 by 2 at factor 3 renders (3-1)*3+1 = 7 by (2-1)*3+1 = 4. With the box, row centres are
    // 0, 7/3, 14/3 over a window of 7/6: R (10 x) gives (10 + 0 + 10) / 3 -> 7, (20 + 30) / 2,
    // (40 + 50) / 2. Columns: centres 0 and 2 over a window of 1: G (20 y) gives (20 + 0) / 2
    // and (20 + 40) / 2.
    GeneralBase.ExportSetup.UseSuperSampleAntiAliasing = true;
    GeneralBase.ExportSetup.SuperSampleFactor = 3;
    GeneralBase.ExportSetup.ResizeFilter = ImageResizeFilter_Box;
    Log.Pattern = [](int x, int y, int, int) { return RGB{uint8_t(10 * x), uint8_t(20 * y), 99}; };
    ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, ExportRegion_CurrentFrame, 3, 2));
    EXPECT_EQ(Log.RenderWidth, 7);
    EXPECT_EQ(Log.RenderHeight, 4);
    EXPECT_EQ(Log.ReleaseCalls, 1);  // the rendering is let go once resampled
    EXPECT_EQ(BitImage_GetImageWidth(), 3);
    EXPECT_EQ(BitImage_GetImageHeight(), 2);
    const int red[3] = {7, 25, 45}, green[2] = {10, 30};
    std::vector<uint8_t> rgb(9);
    for (int row = 0; row < 2; row++) {
        ASSERT_TRUE(BitImage_GetRGBPixelRow(row, rgb.data()));
        for (int x = 0; x < 3; x++) {
            EXPECT_EQ(rgb[3 * x], red[x]) << x << "," << row;
            EXPECT_EQ(rgb[3 * x + 1], green[row]) << x << "," << row;
            EXPECT_EQ(rgb[3 * x + 2], 99);
        }
    }
    BitImage_DestroyBitImage();
    EXPECT_EQ(Log.ReleaseCalls, 1);
}

TEST_F(BitImage, SupersamplingNeedsTheOffscreenImage) {
    GeneralBase.ExportSetup.UseSuperSampleAntiAliasing = true;
    GeneralBase.Interface.UseOffscreenBitmap = false;
    long blocks = LiveBlocks();
    EXPECT_FALSE(BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, ExportRegion_CurrentFrame, 3, 2));
    ASSERT_EQ(Messages.size(), 1u);
    EXPECT_EQ(Messages[0], "Cannot export image.  Antialiasing for exported images requires use of an offscreen image.");
    EXPECT_EQ(Log.RenderCalls, 0);
    EXPECT_FALSE(BitImage_IsConstructed());
    EXPECT_EQ(LiveBlocks(), blocks);
    // Without antialiasing the screen path is taken.
    GeneralBase.ExportSetup.UseSuperSampleAntiAliasing = false;
    ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, ExportRegion_CurrentFrame, 3, 2));
    EXPECT_FALSE(Log.RenderUsedOffscreen);
}

TEST_F(BitImage, AFailedRenderingLeavesNothingBehind) {
    Log.FailRender = true;
    long blocks = LiveBlocks();
    EXPECT_FALSE(BitImage_ConstructAndRenderBitImage(BitImageType_ColorPalette, 256, ExportRegion_CurrentFrame, 8, 8));
    EXPECT_FALSE(BitImage_IsConstructed());
    EXPECT_EQ(Log.ReleaseCalls, 1);
    EXPECT_EQ(LiveBlocks(), blocks);
    ASSERT_EQ(Messages.size(), 1u);  // the device's own report, nothing more
    // No device at all.
    BitImage_RegisterDevice(nullptr);
    EXPECT_FALSE(BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, ExportRegion_CurrentFrame, 8, 8));
    ASSERT_EQ(Messages.size(), 2u);
    EXPECT_EQ(Messages[1], "Unable to render offscreen image.");
    EXPECT_EQ(LiveBlocks(), blocks);
}

TEST_F(BitImage, InterruptionStopsTheRowsAndAnInterruptedQuantisationFreesAll) {
    Log.InterruptAfterRows = 2;
    ASSERT_TRUE(BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, ExportRegion_CurrentFrame, 4, 5));
    std::vector<uint8_t> rgb(12);
    EXPECT_TRUE(BitImage_GetRGBPixelRow(0, rgb.data()));
    EXPECT_TRUE(BitImage_GetRGBPixelRow(1, rgb.data()));  // the device sees the interrupt here
    EXPECT_FALSE(BitImageInterrupted);
    EXPECT_FALSE(BitImage_GetRGBPixelRow(2, rgb.data()));
    EXPECT_TRUE(BitImageInterrupted);
    BitImage_DestroyBitImage();

    Interrupted = false;
    Log = DeviceLog();
    Log.InterruptAfterRows = 1;
    long blocks = LiveBlocks();
    EXPECT_FALSE(BitImage_ConstructAndRenderBitImage(BitImageType_ColorPalette, 256, ExportRegion_CurrentFrame, 4, 5));
    EXPECT_TRUE(BitImageInterrupted);
    EXPECT_FALSE(BitImage_IsConstructed());
    EXPECT_EQ(LiveBlocks(), blocks);
    EXPECT_TRUE(Messages.empty());
}

TEST_F(BitImage, ConstructionOverAGenericImageSharesIt) {
    GenericImage_a image = AllocGenericImage(3, 2, true);
    GetGenericImageRow(image, 1)[6] = 200;  // red of pixel (2, 1)
    ASSERT_TRUE(BitImage_ConstructFromGenericImage(BitImageType_GrayScale, 8, image));
    EXPECT_EQ(image->RefCount, 2);
    std::vector<uint8_t> index(3);
    ASSERT_TRUE(BitImage_GetIndexedPixelRow(1, index.data()));
    EXPECT_EQ(index[2], grayByte(200, 0, 0));  // 60
    EXPECT_EQ(index[0], 0);
    BitImage_DestroyBitImage();
    EXPECT_EQ(image->RefCount, 1);
    FreeGenericImage(&image);
}

TEST_F(BitImage, FileHelpersWriteBothByteOrdersAndFlagShortTransfers) {
    std::string name = path("bytes");
    FILE *f = fopen(name.c_str(), "wb+");
    ASSERT_NE(f, nullptr);
    BitImageIOErrorFlag = false;
    BitImage_Write1ByteInt(f, 0xAB);
    BitImage_Write2ByteInt(f, 0x1234, true);
    BitImage_Write2ByteInt(f, 0x1234, false);
    BitImage_Write4ByteInt(f, 0x01020304, true);
    BitImage_Write4ByteInt(f, 0x01020304, false);
    EXPECT_EQ(BitImage_ftell(f), 13);
    ASSERT_TRUE(BitImage_fseek(f, 1, SEEK_SET));
    EXPECT_EQ(BitImage_Read2ByteInt(f, true), 0x1234);
    EXPECT_EQ(BitImage_Read2ByteInt(f, false), 0x1234);
    EXPECT_EQ(BitImage_Read4ByteInt(f, true), 0x01020304u);
    EXPECT_EQ(BitImage_Read4ByteInt(f, false), 0x01020304u);
    EXPECT_FALSE(BitImageIOErrorFlag);
    BitImage_Read4ByteInt(f, true);  // past the end
    EXPECT_TRUE(BitImageIOErrorFlag);
    fclose(f);
    const std::vector<uint8_t> expectedBytes = {0xAB, 0x34, 0x12, 0x12, 0x34, 4, 3, 2, 1, 1, 2, 3, 4};
    EXPECT_EQ(ReadFile(name), expectedBytes);

    // A device that is always full, unbuffered so that the write itself fails.
    BitImageIOErrorFlag = false;
    FILE *full = fopen("/dev/full", "wb");
    ASSERT_NE(full, nullptr);
    setvbuf(full, nullptr, _IONBF, 0);
    BitImage_Write4ByteInt(full, 7, true);
    EXPECT_TRUE(BitImageIOErrorFlag);
    fclose(full);
}

}  // namespace
