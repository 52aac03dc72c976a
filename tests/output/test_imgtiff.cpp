// TIFF files read back by a decoder written here (either byte order, PackBits, packed gray) and
// by Pillow: the tags in order with their types and counts, strips and their arrays, the colour
// map, the resolution and software text, and PackBits blocks worked out by hand.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "base/output/imgexport.h"
#include "base/output/imgtiff.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class TIFFExport : public ImageTest {};

std::vector<uint8_t> packBits(const std::vector<uint8_t> &row) {
    std::vector<uint8_t> out(2 * row.size() + 2);
    out.resize(TIFF_PackBits(row.data(), int(row.size()), out.data()));
    return out;
}

// PackBits decoding as TIFF readers do it.
std::vector<uint8_t> unpackBits(const std::vector<uint8_t> &in, size_t &at, size_t numBytes) {
    std::vector<uint8_t> out;
    while (out.size() < numBytes && at < in.size()) {
        int8_t n = int8_t(in[at++]);
        if (n >= 0) {
            out.insert(out.end(), in.begin() + long(at), in.begin() + long(at) + n + 1);
            at += size_t(n) + 1;
        } else if (n != -128) {
            out.insert(out.end(), size_t(1 - n), in[at++]);
        }
    }
    return out;
}

TEST(TIFFPackBits, BlocksAsTheRuleLaysThemOut) {
    EXPECT_EQ(packBits({1, 2, 3}), (std::vector<uint8_t>{2, 1, 2, 3}));
    EXPECT_EQ(packBits({7, 7, 7, 7}), (std::vector<uint8_t>{0xFD, 7}));
    EXPECT_EQ(packBits({1, 2, 2, 3}), (std::vector<uint8_t>{3, 1, 2, 2, 3}));  // a 2-repeat between literals joins them
    EXPECT_EQ(packBits({2, 2, 3}), (std::vector<uint8_t>{0xFF, 2, 0, 3}));     // not between literals
    EXPECT_EQ(packBits({1, 2, 2, 2, 3}), (std::vector<uint8_t>{0, 1, 0xFE, 2, 0, 3}));
    std::vector<uint8_t> run(130, 5);
    EXPECT_EQ(packBits(run), (std::vector<uint8_t>{0x81, 5, 0xFF, 5}));  // 128 then 2
    std::vector<uint8_t> literals;
    for (int i = 0; i < 129; i++) literals.push_back(uint8_t(i));
    std::vector<uint8_t> packed = packBits(literals);
    ASSERT_EQ(packed.size(), 131u);
    EXPECT_EQ(packed[0], 127);  // 128 literals, then one
    EXPECT_EQ(packed[129], 0);
    EXPECT_EQ(packed[130], 128);
    // 127 literals, a 2-repeat and one literal: 130 together is too many to join.
    std::vector<uint8_t> mixed(literals.begin(), literals.begin() + 127);
    mixed.push_back(200);
    mixed.push_back(200);
    mixed.push_back(201);
    packed = packBits(mixed);
    ASSERT_EQ(packed.size(), 128u + 2 + 2);
    EXPECT_EQ(packed[0], 126);
    EXPECT_EQ(packed[128], 0xFF);
    EXPECT_EQ(packed[129], 200);
    EXPECT_EQ(packed[130], 0);
    EXPECT_EQ(packed[131], 201);
}

TEST(TIFFPackBits, RowsDecodeBackToThemselves) {
    uint32_t seed = 12345;
    for (int trial = 0; trial < 200; trial++) {
        std::vector<uint8_t> row(size_t(1 + trial * 3));
        for (uint8_t &v : row) {
            seed = seed * 1103515245 + 12345;
            v = uint8_t((seed >> 16) % (trial % 2 == 0 ? 3 : 256));  // runs in even trials
        }
        std::vector<uint8_t> packed = packBits(row);
        size_t at = 0;
        EXPECT_EQ(unpackBits(packed, at, row.size()), row) << trial;
        EXPECT_EQ(at, packed.size());
    }
}

TEST(TIFFStrips, RowsPerStripStayWithinTheLimit) {
    EXPECT_EQ(TIFF_GetRowsPerStrip(13, 39, 7), 7);       // 8191 / 39 = 210 rows, all 7
    EXPECT_EQ(TIFF_GetRowsPerStrip(13, 39, 1000), 210);
    EXPECT_EQ(TIFF_GetRowsPerStrip(3000, 9000, 5), 1);   // max(9001, 8191) / 9000
    EXPECT_EQ(TIFF_GetRowsPerStrip(4000, 4000, 9), 3);   // 12001 / 4000
    EXPECT_EQ(TIFF_GetRowsPerStrip(100, 13, 1000), 630); // 1-bit gray rows of 13 bytes
}

struct Entry {
    uint16_t Tag, Type;
    uint32_t Count, Value;  // the raw 4-byte field read as LONG, or the inline SHORT
};

struct TIFF {
    bool Little = true;
    std::vector<Entry> Entries;
    std::map<uint16_t, Entry> ByTag;
    std::vector<std::vector<uint8_t>> Rows;  // decoded, packed as stored
    std::string Error;
    uint32_t DirectoryOffset = 0;
};

uint16_t get16(const TIFF &t, const std::vector<uint8_t> &b, size_t at) { return t.Little ? LE16(b, at) : BE16(b, at); }
uint32_t get32(const TIFF &t, const std::vector<uint8_t> &b, size_t at) { return t.Little ? LE32(b, at) : BE32(b, at); }

// Reads the LONG array (or inline value) of an entry.
std::vector<uint32_t> longs(const TIFF &t, const std::vector<uint8_t> &b, const Entry &e) {
    if (e.Count == 1) return {e.Value};
    std::vector<uint32_t> values;
    for (uint32_t i = 0; i < e.Count; i++) values.push_back(get32(t, b, e.Value + 4 * i));
    return values;
}

TIFF decodeTIFF(const std::vector<uint8_t> &b, int bytesPerRow) {
    TIFF t;
    if (b.size() < 8 || !((b[0] == 'I' && b[1] == 'I') || (b[0] == 'M' && b[1] == 'M'))) {
        t.Error = "byte order marker";
        return t;
    }
    t.Little = b[0] == 'I';
    if (get16(t, b, 2) != 42) t.Error = "version";
    t.DirectoryOffset = get32(t, b, 4);
    size_t at = t.DirectoryOffset;
    uint16_t count = get16(t, b, at);
    at += 2;
    for (int i = 0; i < count; i++, at += 12) {
        Entry e{get16(t, b, at), get16(t, b, at + 2), get32(t, b, at + 4), 0};
        e.Value = (e.Type == 3 && e.Count == 1) ? get16(t, b, at + 8) : get32(t, b, at + 8);
        if (e.Type == 3 && e.Count == 1 && get16(t, b, at + 10) != 0) t.Error = "inline SHORT not in the first bytes";
        t.Entries.push_back(e);
        t.ByTag[e.Tag] = e;
    }
    if (get32(t, b, at) != 0) t.Error = "next directory";
    std::vector<uint32_t> offsets = longs(t, b, t.ByTag[273]), counts = longs(t, b, t.ByTag[279]);
    uint32_t rowsPerStrip = t.ByTag[278].Value, height = t.ByTag[257].Value;
    for (size_t s = 0; s < offsets.size(); s++) {
        size_t p = offsets[s];
        for (uint32_t r = 0; r < rowsPerStrip && t.Rows.size() < height; r++)
            t.Rows.push_back(unpackBits(b, p, size_t(bytesPerRow)));
        if (p != offsets[s] + counts.at(s)) t.Error = "strip byte count";
    }
    return t;
}

const std::vector<uint16_t> PlainTags = {256, 257, 258, 259, 262, 273, 277, 278, 279, 282, 283, 296, 305};

std::vector<uint16_t> tagsOf(const TIFF &t) {
    std::vector<uint16_t> tags;
    for (const Entry &e : t.Entries) tags.push_back(e.Tag);
    return tags;
}

const std::string SoftwareText = "Created with Orvanex Version 11.0-0-1 (Unix)";

class TIFFByteOrders : public TIFFExport, public ::testing::WithParamInterface<int> {};

TEST_P(TIFFByteOrders, RGBImageWithEveryTagInOrder) {
    GeneralBase.ExportSetup.TIFFByteOrder = GetParam();
    std::string name = path("a.tif");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_TIFF, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> b = ReadFile(name);
    TIFF t = decodeTIFF(b, 39);
    ASSERT_EQ(t.Error, "");
    EXPECT_EQ(t.Little, GetParam() == TIFFByteOrder_Intel);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 2), GetParam() == TIFFByteOrder_Intel ? "II" : "MM");
    EXPECT_EQ(tagsOf(t), PlainTags);
    EXPECT_EQ(t.DirectoryOffset % 2, 0u);
    auto expectEntry = [&](uint16_t tag, uint16_t type, uint32_t count, uint32_t value) {
        const Entry &e = t.ByTag[tag];
        EXPECT_EQ(e.Type, type) << tag;
        EXPECT_EQ(e.Count, count) << tag;
        EXPECT_EQ(e.Value, value) << tag;
    };
    expectEntry(256, 4, 1, 13);
    expectEntry(257, 4, 1, 7);
    expectEntry(259, 3, 1, 32773);
    expectEntry(262, 3, 1, 2);
    expectEntry(273, 4, 1, 8);  // one strip, right after the header
    expectEntry(277, 3, 1, 3);
    expectEntry(278, 4, 1, 7);
    expectEntry(296, 3, 1, 2);
    const Entry &bits = t.ByTag[258];
    EXPECT_EQ(bits.Type, 3);
    EXPECT_EQ(bits.Count, 3u);
    for (int i = 0; i < 3; i++) EXPECT_EQ(get16(t, b, bits.Value + 2 * i), 8);
    // 7 rows over 3 inches: 7/3 dots per inch, times 100000.
    for (uint16_t tag : {282, 283}) {
        const Entry &e = t.ByTag[tag];
        EXPECT_EQ(e.Type, 5);
        EXPECT_EQ(e.Value % 2, 0u);
        EXPECT_EQ(get32(t, b, e.Value), 233333u);
        EXPECT_EQ(get32(t, b, e.Value + 4), 100000u);
    }
    const Entry &software = t.ByTag[305];
    EXPECT_EQ(software.Type, 2);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&b[software.Value])), SoftwareText);
    EXPECT_EQ(software.Count, SoftwareText.size() + 1);
    ASSERT_EQ(t.Rows.size(), 7u);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) {
            RGB c = expected(x, y);
            EXPECT_EQ((RGB{t.Rows[y][3 * x], t.Rows[y][3 * x + 1], t.Rows[y][3 * x + 2]}), c) << x << "," << y;
        }
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("RGB", 13, 7, [](int x, int y) {
                  return GradientPattern(x, y, 13, 7);
              }));
}

INSTANTIATE_TEST_SUITE_P(IntelAndMotorola, TIFFByteOrders, ::testing::Values(0, 1));

TEST_F(TIFFExport, PaletteImageCarriesAColourMapAfterItsStrips) {
    GeneralBase.ExportSetup.TIFFByteOrder = TIFFByteOrder_Motorola;
    Log.Pattern = StripePattern;
    std::string name = path("p.tif");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_TIFF, name.c_str(), ExportRegion_CurrentFrame, 13, true, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> b = ReadFile(name);
    TIFF t = decodeTIFF(b, 13);
    ASSERT_EQ(t.Error, "");
    std::vector<uint16_t> tags = PlainTags;
    tags.push_back(320);
    EXPECT_EQ(tagsOf(t), tags);
    EXPECT_EQ(t.ByTag[258].Value, 8u);
    EXPECT_EQ(t.ByTag[258].Count, 1u);
    EXPECT_EQ(t.ByTag[262].Value, 3u);
    EXPECT_EQ(t.ByTag[277].Value, 1u);
    const Entry &map = t.ByTag[320];
    EXPECT_EQ(map.Type, 3);
    EXPECT_EQ(map.Count, 768u);
    EXPECT_GT(map.Value, t.ByTag[273].Value);  // after the strip
    EXPECT_LT(map.Value, t.ByTag[282].Value);  // before the rationals
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) {
            int i = t.Rows[y][x];
            uint16_t r = get16(t, b, map.Value + 2 * i), g = get16(t, b, map.Value + 512 + 2 * i),
                     bl = get16(t, b, map.Value + 1024 + 2 * i);
            EXPECT_EQ(r & 0xFF, 0);  // 8-bit value in the high byte
            EXPECT_EQ((RGB{uint8_t(r >> 8), uint8_t(g >> 8), uint8_t(bl >> 8)}), expected(x, y)) << x << "," << y;
        }
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("P", 13, 7, [](int x, int y) {
                  return StripePattern(x, y, 13, 7);
              }));
}

int grayLevel(RGB c) { return int(255.0 * ((0.3 * c.R + 0.59 * c.G + 0.11 * c.B) / 255.0) + 0.499); }

TEST_F(TIFFExport, FourBitGrayOfAnOddWidthEndsInTheHighNibble) {
    GeneralBase.ExportSetup.GrayScaleDepth = 2;  // raised to 4
    std::string name = path("g.tif");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_TIFF, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Monochrome));
    std::vector<uint8_t> b = ReadFile(name);
    TIFF t = decodeTIFF(b, 7);  // 13 nibbles in 7 bytes
    ASSERT_EQ(t.Error, "");
    EXPECT_EQ(tagsOf(t), PlainTags);
    EXPECT_EQ(t.ByTag[258].Value, 4u);
    EXPECT_EQ(t.ByTag[262].Value, 1u);
    for (int y = 0; y < 7; y++) {
        for (int x = 0; x < 13; x++) {
            int nibble = x % 2 == 0 ? t.Rows[y][x / 2] >> 4 : t.Rows[y][x / 2] & 15;
            EXPECT_EQ(nibble, grayLevel(expected(x, y)) / 16) << x << "," << y;
        }
        EXPECT_EQ(t.Rows[y][6] & 15, 0);  // the spare low half of the last byte
    }
    // Pillow widens 4-bit gray to 8 bits by 17.
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("L", 13, 7, [](int x, int y) {
                  uint8_t v = uint8_t(grayLevel(GradientPattern(x, y, 13, 7)) / 16 * 17);
                  return RGB{v, v, v};
              }));
}

TEST_F(TIFFExport, OneBitGrayPacksFromTheHighBit) {
    GeneralBase.ExportSetup.GrayScaleDepth = 1;
    std::string name = path("b.tif");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_TIFF, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_PenPlotter));
    TIFF t = decodeTIFF(ReadFile(name), 2);
    ASSERT_EQ(t.Error, "");
    EXPECT_EQ(t.ByTag[258].Value, 1u);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) {
            RGB c = expected(x, y);
            int bit = (t.Rows[y][x / 8] >> (7 - x % 8)) & 1;
            EXPECT_EQ(bit, (0.3 * c.R + 0.59 * c.G + 0.11 * c.B) / 255.0 >= 0.5 ? 1 : 0) << x << "," << y;
        }
}

TEST_F(TIFFExport, WideImagesHaveOneRowPerStripAndOffsetArrays) {
    // 3000 pixels of RGB are 9000 bytes a row, over the 9001-byte limit for two.
    Log.Size.Width = 2999.0;
    Log.Size.Height = 2.0;  // 2999 * 2 / 2999 + 1 = 3 rows
    std::string name = path("w.tif");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_TIFF, name.c_str(), ExportRegion_CurrentFrame, 3000, false, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> b = ReadFile(name);
    TIFF t = decodeTIFF(b, 9000);
    ASSERT_EQ(t.Error, "");
    EXPECT_EQ(t.ByTag[278].Value, 1u);
    EXPECT_EQ(t.ByTag[273].Count, 3u);
    EXPECT_EQ(t.ByTag[279].Count, 3u);
    std::vector<uint32_t> offsets = longs(t, b, t.ByTag[273]);
    EXPECT_EQ(offsets[0], 8u);
    EXPECT_EQ(offsets[1], offsets[0] + longs(t, b, t.ByTag[279])[0]);
    ASSERT_EQ(t.Rows.size(), 3u);
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 3000; x += 7) {
            RGB c = expected(x, y);
            EXPECT_EQ((RGB{t.Rows[y][3 * x], t.Rows[y][3 * x + 1], t.Rows[y][3 * x + 2]}), c) << x << "," << y;
        }
    EXPECT_EQ(RunCommand("/usr/bin/identify -format '%w %h' '" + name + "' 2>&1"), "3000 3");
}

}  // namespace
