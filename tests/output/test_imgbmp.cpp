// BMP files read back by a decoder written here and by Pillow: 24-bit rows bottom up with their
// padding, the RLE8 form of palette and gray images with its row and bitmap ends, the patched
// sizes, the palettes, a one pixel image from IMAGEWIDTH 1.
#include <gtest/gtest.h>

#include "base/output/imgbmp.h"
#include "base/output/imgexport.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class BMPExport : public ImageTest {};

struct BMP {
    int Width = 0, Height = 0, Bits = 0;
    uint32_t FileSize = 0, DataOffset = 0, Compression = 0, ImageSize = 0, ColorsUsed = 0;
    std::vector<RGB> Palette;
    std::vector<std::vector<uint8_t>> Indices;  // top row first (8-bit)
    std::vector<std::vector<RGB>> Pixels;       // top row first
    std::string Error;
};

BMP decodeBMP(const std::vector<uint8_t> &b) {
    BMP bmp;
    if (b.size() < 54 || b[0] != 'B' || b[1] != 'M') {
        bmp.Error = "no BM header";
        return bmp;
    }
    bmp.FileSize = LE32(b, 2);
    bmp.DataOffset = LE32(b, 10);
    if (LE32(b, 14) != 40 || LE16(b, 26) != 1 || LE16(b, 6) != 0 || LE16(b, 8) != 0) bmp.Error = "bad header fields";
    bmp.Width = int(LE32(b, 18));
    bmp.Height = int(LE32(b, 22));
    bmp.Bits = LE16(b, 28);
    bmp.Compression = LE32(b, 30);
    bmp.ImageSize = LE32(b, 34);
    bmp.ColorsUsed = LE32(b, 46);
    if (LE32(b, 38) != 0 || LE32(b, 42) != 0 || LE32(b, 50) != 0) bmp.Error = "non-zero resolution or important";
    if (bmp.Bits == 8)
        for (int i = 0; i < 256; i++) {
            size_t at = 54 + 4 * size_t(i);
            bmp.Palette.push_back({b.at(at + 2), b.at(at + 1), b.at(at)});
            if (b.at(at + 3) != 0) bmp.Error = "palette reserved byte";
        }
    std::vector<std::vector<uint8_t>> rows;  // bottom row first
    size_t at = bmp.DataOffset;
    if (bmp.Compression == 1) {
        std::vector<uint8_t> row;
        while (true) {
            uint8_t count = b.at(at), value = b.at(at + 1);
            at += 2;
            if (count > 0) {
                row.insert(row.end(), count, value);
            } else if (value == 0) {
                rows.push_back(row);
                row.clear();
            } else if (value == 1) {
                break;
            } else {
                bmp.Error = "escape other than end of row or bitmap";
                return bmp;
            }
        }
        if (at != b.size()) bmp.Error = "bytes after the end of bitmap";
    } else {
        int rowBytes = bmp.Width * bmp.Bits / 8;
        int padded = (rowBytes + 3) / 4 * 4;
        for (int y = 0; y < bmp.Height; y++) {
            rows.emplace_back(b.begin() + long(at), b.begin() + long(at) + rowBytes);
            for (int k = rowBytes; k < padded; k++)
                if (b.at(at + size_t(k)) != 0) bmp.Error = "non-zero padding";
            at += size_t(padded);
        }
        if (at != b.size()) bmp.Error = "size mismatch";
    }
    for (int y = bmp.Height - 1; y >= 0; y--) {
        const std::vector<uint8_t> &row = rows.at(size_t(y));
        std::vector<RGB> pixels;
        if (bmp.Bits == 24) {
            for (int x = 0; x < bmp.Width; x++) pixels.push_back({row.at(3 * x + 2), row.at(3 * x + 1), row.at(3 * x)});
        } else {
            if (int(row.size()) != bmp.Width) bmp.Error = "row length";
            bmp.Indices.push_back(row);
            for (uint8_t i : row) pixels.push_back(bmp.Palette[i]);
        }
        bmp.Pixels.push_back(pixels);
    }
    return bmp;
}

TEST(BMPLayout, RowsPadToMultiplesOfFour) {
    EXPECT_EQ(BMP_GetNumPadBytes(39), 1);
    EXPECT_EQ(BMP_GetNumPadBytes(40), 0);
    EXPECT_EQ(BMP_GetNumPadBytes(13), 3);
    EXPECT_EQ(BMP_GetNumPadBytes(2), 2);
    EXPECT_EQ(BMP_GetNumPadBytes(0), 0);
}

TEST_F(BMPExport, TrueColourRowsRunBottomUpInBGRWithPadding) {
    std::string name = path("a.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> bytes = ReadFile(name);
    BMP bmp = decodeBMP(bytes);
    ASSERT_EQ(bmp.Error, "");
    EXPECT_EQ(bmp.Width, 13);
    EXPECT_EQ(bmp.Height, 7);  // (13 - 1) * 3 / 6 + 1
    EXPECT_EQ(bmp.Bits, 24);
    EXPECT_EQ(bmp.Compression, 0u);
    EXPECT_EQ(bmp.DataOffset, 54u);
    EXPECT_EQ(bmp.ColorsUsed, 0u);
    EXPECT_EQ(bmp.ImageSize, 7u * 40u);  // 39 bytes + 1 pad per row
    EXPECT_EQ(bmp.FileSize, 54u + 280u);
    EXPECT_EQ(bytes.size(), 334u);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) EXPECT_EQ(bmp.Pixels[y][x], expected(x, y)) << x << "," << y;
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("RGB", 13, 7, [](int x, int y) {
                  return GradientPattern(x, y, 13, 7);
              }));
}

TEST_F(BMPExport, PaletteImagesAreRunLengthCodedWithRowAndBitmapEnds) {
    Log.Pattern = StripePattern;
    std::string name = path("p.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 13, true, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> bytes = ReadFile(name);
    BMP bmp = decodeBMP(bytes);
    ASSERT_EQ(bmp.Error, "");
    EXPECT_EQ(bmp.Bits, 8);
    EXPECT_EQ(bmp.Compression, 1u);
    EXPECT_EQ(bmp.DataOffset, 1078u);
    EXPECT_EQ(bmp.ColorsUsed, 256u);
    EXPECT_EQ(bmp.FileSize, bytes.size());
    EXPECT_EQ(bmp.ImageSize, bytes.size() - 1078);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) EXPECT_EQ(bmp.Pixels[y][x], expected(x, y)) << x << "," << y;
    // Row 6 (the first written) is stripes of 3: colours 1,1,1 2,2,2 3,3,3 4,4,4 0.
    size_t at = 1078;
    for (int run : {3, 3, 3, 3, 1}) {
        EXPECT_EQ(bytes[at], run);
        at += 2;
    }
    EXPECT_EQ(bytes[at], 0);
    EXPECT_EQ(bytes[at + 1], 0);
    EXPECT_EQ(bytes[bytes.size() - 2], 0);
    EXPECT_EQ(bytes[bytes.size() - 1], 1);
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("P", 13, 7, [](int x, int y) {
                  return StripePattern(x, y, 13, 7);
              }));
}

TEST_F(BMPExport, LongRunsSplitAt255) {
    Log.Pattern = [](int, int, int, int) { return RGB{9, 8, 7}; };
    BitImage_SetCachedImageHeight(2);
    std::string name = path("long.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 600, true, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> bytes = ReadFile(name);
    BMP bmp = decodeBMP(bytes);
    ASSERT_EQ(bmp.Error, "");
    uint8_t index = bmp.Indices[0][0];
    EXPECT_EQ(bmp.Palette[index], (RGB{9, 8, 7}));
    const std::vector<uint8_t> row = {255, index, 255, index, 90, index, 0, 0};
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 1078, bytes.begin() + 1078 + 8), row);
    EXPECT_EQ(bytes.size(), 1078u + 2 * 8 + 2);
}

TEST_F(BMPExport, AOnePixelImageFromIMAGEWIDTH1) {
    InBatchMode = true;
    GeneralBase.ExportSetup.ImageWidth = 1;
    Log.Pattern = [](int, int, int, int) { return RGB{12, 34, 56}; };

    // 24-bit: one row of B, G, R and one pad byte.
    std::string name = path("one.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 0, false, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> bytes = ReadFile(name);
    BMP bmp = decodeBMP(bytes);
    ASSERT_EQ(bmp.Error, "");
    EXPECT_EQ(bmp.Width, 1);
    EXPECT_EQ(bmp.Height, 1);  // (1 - 1) * 3 / 6 + 1
    EXPECT_EQ(bmp.ImageSize, 4u);
    EXPECT_EQ(bmp.FileSize, 58u);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 54, bytes.end()), (std::vector<uint8_t>{56, 34, 12, 0}));
    EXPECT_EQ(PillowPixels(dir, name), "RGB 1 1\n12,34,56\n");

    // RLE8: one run, the row end, the bitmap end.
    std::string palName = path("one8.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, palName.c_str(), ExportRegion_CurrentFrame, 0, true, false,
                                  nullptr, Palette_Color));
    bytes = ReadFile(palName);
    bmp = decodeBMP(bytes);
    ASSERT_EQ(bmp.Error, "");
    EXPECT_EQ(bmp.Width, 1);
    EXPECT_EQ(bmp.Height, 1);
    ASSERT_EQ(bmp.Pixels.size(), 1u);
    EXPECT_EQ(bmp.Pixels[0].at(0), (RGB{12, 34, 56}));
    uint8_t index = bmp.Indices[0][0];
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 1078, bytes.end()), (std::vector<uint8_t>{1, index, 0, 0, 0, 1}));
    EXPECT_EQ(bmp.ImageSize, 6u);
    EXPECT_EQ(PillowPixels(dir, palName), "P 1 1\n12,34,56\n");
}

TEST_F(BMPExport, MonochromeIsEightBitGrayWithARamp) {
    std::string name = path("m.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Monochrome));
    BMP bmp = decodeBMP(ReadFile(name));
    ASSERT_EQ(bmp.Error, "");
    EXPECT_EQ(bmp.Bits, 8);
    EXPECT_EQ(bmp.Compression, 1u);
    for (int i = 0; i < 256; i++) EXPECT_EQ(bmp.Palette[i], (RGB{uint8_t(i), uint8_t(i), uint8_t(i)}));
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) {
            RGB c = expected(x, y);
            EXPECT_EQ(bmp.Indices[y][x], int(255.0 * ((0.3 * c.R + 0.59 * c.G + 0.11 * c.B) / 255.0) + 0.499));
        }
}

}  // namespace
