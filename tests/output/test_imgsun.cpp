// Sun raster files read back by a decoder written here and by Pillow: the header, the colour map,
// rows padded to even lengths, and the byte encoding with its runs and escaped 128s.
#include <gtest/gtest.h>

#include <functional>

#include "base/output/imgexport.h"
#include "base/output/imgsun.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class SunRasterExport : public ImageTest {};

std::vector<uint8_t> encode(const std::vector<uint8_t> &row) {
    std::vector<uint8_t> out(3 * row.size() + 3);
    out.resize(SunRaster_EncodeRow(row.data(), int(row.size()), out.data()));
    return out;
}

// Byte decoding as a reader does it, over the whole data.
std::vector<uint8_t> decodeBytes(const std::vector<uint8_t> &in) {
    std::vector<uint8_t> out;
    for (size_t i = 0; i < in.size();) {
        if (in[i] != 128) {
            out.push_back(in[i++]);
        } else if (in.at(i + 1) == 0) {
            out.push_back(128);
            i += 2;
        } else {
            out.insert(out.end(), size_t(in[i + 1]) + 1, in.at(i + 2));
            i += 3;
        }
    }
    return out;
}

TEST(SunRasterEncoding, RunsLoneBytesAndEscapes) {
    std::vector<uint8_t> run(300, 7);
    EXPECT_EQ(encode(run), (std::vector<uint8_t>{128, 255, 7, 128, 43, 7}));  // 256 then 44
    EXPECT_EQ(encode({128}), (std::vector<uint8_t>{128, 0}));                 // a literal 128 takes two bytes
    EXPECT_EQ(encode({5, 6}), (std::vector<uint8_t>{5, 6}));
    EXPECT_EQ(encode({128, 128}), (std::vector<uint8_t>{128, 1, 128}));
    std::vector<uint8_t> run257(257, 9);
    EXPECT_EQ(encode(run257), (std::vector<uint8_t>{128, 255, 9, 9}));
    std::vector<uint8_t> mixed = {1, 128, 128, 128, 2, 2, 0, 128, 3};
    EXPECT_EQ(decodeBytes(encode(mixed)), mixed);
}

struct Sun {
    uint32_t Header[8] = {};
    std::vector<RGB> Map;
    std::vector<uint8_t> Data;  // decoded
    size_t DataBytes = 0;        // as stored
};

Sun decodeSun(const std::vector<uint8_t> &b) {
    Sun s;
    for (int i = 0; i < 8; i++) s.Header[i] = BE32(b, 4 * size_t(i));
    for (int i = 0; i < 256; i++) s.Map.push_back({b.at(32 + size_t(i)), b.at(32 + 256 + size_t(i)), b.at(32 + 512 + size_t(i))});
    std::vector<uint8_t> data(b.begin() + 32 + 768, b.end());
    s.DataBytes = data.size();
    s.Data = s.Header[5] == 2 ? decodeBytes(data) : data;
    return s;
}

void expectPixels(const Sun &s, int width, int height, const std::function<RGB(int, int)> &pixel) {
    int padded = width + width % 2;
    ASSERT_EQ(s.Data.size(), size_t(padded) * height);
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) EXPECT_EQ(s.Map[s.Data[y * padded + x]], pixel(x, y)) << x << "," << y;
        if (padded > width) {
            EXPECT_EQ(s.Data[y * padded + width], 0);
        }
    }
}

TEST_F(SunRasterExport, StandardFormHasTheHeaderMapAndEvenRows) {
    GeneralBase.ExportSetup.SunRasterFormat = SunRasterFormat_Standard;
    std::string name = path("a.ras");
    // Not asked for 256 colours: the format always is.
    ASSERT_TRUE(ExportStaticImage(ExportFormat_SunRaster, name.c_str(), ExportRegion_CurrentFrame, 13, false, false,
                                  nullptr, Palette_Color));
    Sun s = decodeSun(ReadFile(name));
    const uint32_t header[8] = {0x59A66A95, 13, 7, 8, 14 * 7, 1, 1, 768};
    for (int i = 0; i < 8; i++) EXPECT_EQ(s.Header[i], header[i]) << i;
    EXPECT_EQ(s.DataBytes, 98u);
    expectPixels(s, 13, 7, [this](int x, int y) { return expected(x, y); });
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("P", 13, 7, [](int x, int y) {
                  return GradientPattern(x, y, 13, 7);
              }));
}

TEST_F(SunRasterExport, ByteEncodedFormPatchesTheLength) {
    GeneralBase.ExportSetup.SunRasterFormat = SunRasterFormat_ByteEncoded;
    Log.Pattern = StripePattern;
    std::string name = path("e.ras");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_SunRaster, name.c_str(), ExportRegion_CurrentFrame, 13, false, false,
                                  nullptr, Palette_Color));
    Sun s = decodeSun(ReadFile(name));
    EXPECT_EQ(s.Header[5], 2u);
    EXPECT_EQ(s.Header[4], s.DataBytes);
    // Each odd row decodes to 14 bytes, the pad byte included.
    expectPixels(s, 13, 7, [this](int x, int y) { return expected(x, y); });
}

TEST_F(SunRasterExport, ByteEncodedRowsOfOneColourShrinkToThreeBytes) {
    GeneralBase.ExportSetup.SunRasterFormat = SunRasterFormat_ByteEncoded;
    Log.Pattern = [](int, int y, int, int) { return StripePattern(0, y, 1, 1); };
    std::string name = path("r.ras");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_SunRaster, name.c_str(), ExportRegion_CurrentFrame, 14, false, false,
                                  nullptr, Palette_Color));
    Sun s = decodeSun(ReadFile(name));
    EXPECT_EQ(s.Header[2], 7u);  // (14 - 1) * 3 / 6 + 1 = 7.5 rounds down with 0.499
    EXPECT_EQ(s.Header[4], 7u * 3);
    EXPECT_EQ(s.DataBytes, 7u * 3);
    expectPixels(s, 14, 7, [](int, int y) { return StripePattern(0, y, 1, 1); });
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("P", 14, 7, [](int, int y) {
                  return StripePattern(0, y, 1, 1);
              }));
}

TEST_F(SunRasterExport, OldFormatWritesTypeOne) {
    GeneralBase.ExportSetup.SunRasterFormat = SunRasterFormat_OldFormat;
    std::string name = path("o.ras");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_SunRaster, name.c_str(), ExportRegion_CurrentFrame, 12, false, false,
                                  nullptr, Palette_Color));
    Sun s = decodeSun(ReadFile(name));
    EXPECT_EQ(s.Header[5], 1u);
    EXPECT_EQ(s.Header[1], 12u);
    EXPECT_EQ(s.Header[4], 12u * s.Header[2]);  // even width: no padding
}

}  // namespace
