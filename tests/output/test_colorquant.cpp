// The octree quantiser: a palette of 256 sorted entries with the unused ones black (a real black
// ahead of them), exact colours when there are few, exactly one merge for one colour too many
// (the group with the fewest pixels), every palette entry the rounded mean of the pixels that map
// to it, a bounded error, and a pool too small for the colours met by merging, not by failing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/output/colorquant.h"

namespace {

struct Color {
    int R, G, B;
};

uint32_t key(int r, int g, int b) { return (uint32_t(r) << 16) | (uint32_t(g) << 8) | uint32_t(b); }

std::vector<Color> palette(ColorQuantization_a q) {
    std::vector<Color> colors;
    for (int i = 0; i < BitImage_GetPaletteSize(q); i++) {
        uint8_t r, g, b;
        BitImage_GetColorPaletteRGB(q, i, &r, &g, &b);
        colors.push_back({r, g, b});
    }
    return colors;
}

TEST(ColorQuantization, FewColoursGiveASortedPaletteOf256WithUnusedSlotsBlack) {
    ColorQuantization_a q = BitImage_NewColorQuantization(256, true);
    ASSERT_NE(q, nullptr);
    const uint8_t r[] = {200, 200, 10, 90, 90, 90};
    const uint8_t g[] = {100, 100, 20, 0, 0, 0};
    const uint8_t b[] = {50, 50, 30, 255, 255, 255};
    BitImage_AddPlanerColorsToQuantization(q, 6, r, g, b);
    BitImage_CreatePalette(q);
    EXPECT_EQ(BitImage_GetPaletteSize(q), 256);
    EXPECT_EQ(BitImage_GetNumQuantizedColors(q), 3);
    std::vector<Color> colors = palette(q);
    for (int i = 0; i < 253; i++) EXPECT_EQ(key(colors[i].R, colors[i].G, colors[i].B), 0u) << i;
    // The three colours, ascending as 24-bit numbers, at the end.
    EXPECT_EQ(key(colors[253].R, colors[253].G, colors[253].B), key(10, 20, 30));
    EXPECT_EQ(key(colors[254].R, colors[254].G, colors[254].B), key(90, 0, 255));
    EXPECT_EQ(key(colors[255].R, colors[255].G, colors[255].B), key(200, 100, 50));
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 10, 20, 30), 253);
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 90, 0, 255), 254);
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 200, 100, 50), 255);
    BitImage_DeleteColorQuantization(&q);
    EXPECT_EQ(q, nullptr);
}

TEST(ColorQuantization, ARealBlackComesBeforeTheUnusedSlots) {
    // Black, the one used entry of key 0, must come before the 253 unused entries of the same key.
    ColorQuantization_a q = BitImage_NewColorQuantization(256, true);
    ASSERT_NE(q, nullptr);
    BitImage_AddColorToQuantization(q, 255, 255, 255, 4);
    BitImage_AddColorToQuantization(q, 0, 0, 1, 2);
    BitImage_AddColorToQuantization(q, 0, 0, 0, 3);
    BitImage_CreatePalette(q);
    EXPECT_EQ(BitImage_GetNumQuantizedColors(q), 3);
    std::vector<Color> colors = palette(q);
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 0, 0, 0), 0);
    for (int i = 0; i < 254; i++) EXPECT_EQ(key(colors[i].R, colors[i].G, colors[i].B), 0u) << i;
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 0, 0, 1), 254);
    EXPECT_EQ(key(colors[254].R, colors[254].G, colors[254].B), key(0, 0, 1));
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 255, 255, 255), 255);
    EXPECT_EQ(key(colors[255].R, colors[255].G, colors[255].B), key(255, 255, 255));
    BitImage_DeleteColorQuantization(&q);

    // Without black the unused entries lead: 0 to 253, then the two colours.
    q = BitImage_NewColorQuantization(256, true);
    BitImage_AddColorToQuantization(q, 255, 255, 255, 4);
    BitImage_AddColorToQuantization(q, 0, 0, 1, 2);
    BitImage_CreatePalette(q);
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 0, 0, 1), 254);
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 255, 255, 255), 255);
    colors = palette(q);
    for (int i = 0; i < 254; i++) EXPECT_EQ(key(colors[i].R, colors[i].G, colors[i].B), 0u) << i;
    BitImage_DeleteColorQuantization(&q);
}

TEST(ColorQuantization, OrderOfArrivalDoesNotChangeThePalette) {
    ColorQuantization_a first = BitImage_NewColorQuantization(256, true);
    ColorQuantization_a second = BitImage_NewColorQuantization(256, true);
    const uint8_t rgb[] = {1, 2, 3, 255, 0, 7, 64, 64, 64, 0, 0, 0};
    const uint8_t reversed[] = {0, 0, 0, 64, 64, 64, 255, 0, 7, 1, 2, 3};
    BitImage_AddRGBColorsToQuantization(first, 4, rgb);
    BitImage_AddRGBColorsToQuantization(second, 4, reversed);
    BitImage_CreatePalette(first);
    BitImage_CreatePalette(second);
    std::vector<Color> a = palette(first), b = palette(second);
    for (int i = 0; i < 256; i++) EXPECT_EQ(key(a[i].R, a[i].G, a[i].B), key(b[i].R, b[i].G, b[i].B));
    // Black is a real colour here and maps to an entry that is black.
    int black = BitImage_GetPaletteIndex(first, 0, 0, 0);
    EXPECT_EQ(key(a[black].R, a[black].G, a[black].B), 0u);
    EXPECT_EQ(BitImage_GetNumQuantizedColors(first), 4);
    BitImage_DeleteColorQuantization(&first);
    BitImage_DeleteColorQuantization(&second);
}

TEST(ColorQuantization, OneColourTooManyMergesExactlyTheGroupWithFewestPixels) {
    // Reds 0..255 fill 128 groups of two (they differ only in the last bit). Each red comes 5
    // times, except 254 and 255, which come once; then a 257th colour arrives 9 times. The merge
    // takes the level-8 pair with the fewest pixels: 254 and 255, whose mean is (509 + 1) / 2 = 255.
    ColorQuantization_a q = BitImage_NewColorQuantization(256, true);
    for (int red = 0; red < 256; red++) {
        int count = red >= 254 ? 1 : 5;
        std::vector<uint8_t> r(static_cast<size_t>(count), uint8_t(red)), g(static_cast<size_t>(count), 0), b(static_cast<size_t>(count), 0);
        BitImage_AddPlanerColorsToQuantization(q, count, r.data(), g.data(), b.data());
    }
    EXPECT_EQ(BitImage_GetNumQuantizedColors(q), 256);
    BitImage_AddColorToQuantization(q, 0, 2, 0, 9);
    EXPECT_EQ(BitImage_GetNumQuantizedColors(q), 256);
    BitImage_CreatePalette(q);
    std::vector<Color> colors = palette(q);
    std::map<uint32_t, int> seen;
    for (const Color &c : colors) seen[key(c.R, c.G, c.B)]++;
    EXPECT_EQ(seen.size(), 256u);  // all 256 entries distinct: no unused slot
    EXPECT_EQ(seen.count(key(254, 0, 0)), 0u);
    EXPECT_EQ(seen[key(255, 0, 0)], 1);
    EXPECT_EQ(seen[key(0, 2, 0)], 1);
    for (int red = 0; red < 254; red++) EXPECT_EQ(seen[key(red, 0, 0)], 1) << red;
    EXPECT_EQ(BitImage_GetPaletteIndex(q, 254, 0, 0), BitImage_GetPaletteIndex(q, 255, 0, 0));
    Color merged = colors[size_t(BitImage_GetPaletteIndex(q, 254, 0, 0))];
    EXPECT_EQ(key(merged.R, merged.G, merged.B), key(255, 0, 0));
    BitImage_DeleteColorQuantization(&q);
}

TEST(ColorQuantization, EveryEntryIsTheRoundedMeanOfItsPixelsAndTheErrorIsBounded) {
    // 4096 colours of a 16-level cube, with multiplicities 1 to 7, reduced to 256 and to 20.
    for (int limit : {256, 20}) {
        ColorQuantization_a q = BitImage_NewColorQuantization(limit, true);
        struct Pixel {
            int r, g, b, n;
        };
        std::vector<Pixel> pixels;
        for (int r = 0; r < 16; r++)
            for (int g = 0; g < 16; g++)
                for (int b = 0; b < 16; b++) pixels.push_back({r * 17, g * 17, b * 17, 1 + (r + 2 * g + 3 * b) % 7});
        for (const Pixel &p : pixels) BitImage_AddColorToQuantization(q, uint8_t(p.r), uint8_t(p.g), uint8_t(p.b), uint32_t(p.n));
        BitImage_CreatePalette(q);
        EXPECT_LE(BitImage_GetNumQuantizedColors(q), limit);
        EXPECT_GE(BitImage_GetNumQuantizedColors(q), limit - 7);  // a merge removes at most 7
        std::vector<Color> colors = palette(q);
        std::map<int, std::vector<long>> sums;  // index -> n, sum r, sum g, sum b
        int maxError = 0;
        for (const Pixel &p : pixels) {
            int index = BitImage_GetPaletteIndex(q, uint8_t(p.r), uint8_t(p.g), uint8_t(p.b));
            std::vector<long> &s = sums[index];
            s.resize(4);
            s[0] += p.n;
            s[1] += long(p.r) * p.n;
            s[2] += long(p.g) * p.n;
            s[3] += long(p.b) * p.n;
            const Color &c = colors[size_t(index)];
            maxError = std::max({maxError, abs(c.R - p.r), abs(c.G - p.g), abs(c.B - p.b)});
        }
        EXPECT_EQ(int(sums.size()), BitImage_GetNumQuantizedColors(q));
        for (const auto &[index, s] : sums) {
            const Color &c = colors[size_t(index)];
            EXPECT_EQ(c.R, (s[1] + s[0] / 2) / s[0]) << index;
            EXPECT_EQ(c.G, (s[2] + s[0] / 2) / s[0]) << index;
            EXPECT_EQ(c.B, (s[3] + s[0] / 2) / s[0]) << index;
        }
        // 256 colours: every leaf is at least an octant of an octant (side 64); 20: side 128.
        EXPECT_LT(maxError, limit == 256 ? 64 : 128) << limit;
        BitImage_DeleteColorQuantization(&q);
    }
}

TEST(ColorQuantization, AnEmptyPoolMergesAndAddsTheColourAgain) {
    // A pool of 9 nodes holds the root and black's path to level 8. White then needs nodes from
    // level 1 down. Each time the pool is empty the deepest internal node is merged: first black's
    // nodes at levels 7, 6, 5, 4 (each frees one node, which white's path takes: white reaches level
    // 4), then white's own node at level 4, which has no child yet and becomes a leaf. So black
    // ends as a leaf at level 4 (the cell 0..15 of each channel) and white as a leaf at level 4.
    ColorQuantization_a q = BitImage_NewColorQuantizationWithPool(256, 9, true);
    ASSERT_NE(q, nullptr);
    BitImage_AddColorToQuantization(q, 0, 0, 0, 1);
    BitImage_AddColorToQuantization(q, 255, 255, 255, 1);
    EXPECT_EQ(BitImage_GetNumQuantizedColors(q), 2);
    // Black's leaf now covers (0, 0, 15); white's covers (240, 250, 255).
    BitImage_AddColorToQuantization(q, 0, 0, 15, 1);
    BitImage_AddColorToQuantization(q, 240, 250, 255, 3);
    EXPECT_EQ(BitImage_GetNumQuantizedColors(q), 2);
    BitImage_CreatePalette(q);
    std::vector<Color> colors = palette(q);
    int dark = BitImage_GetPaletteIndex(q, 0, 0, 0), light = BitImage_GetPaletteIndex(q, 255, 255, 255);
    EXPECT_EQ(dark, BitImage_GetPaletteIndex(q, 0, 0, 15));
    EXPECT_EQ(light, BitImage_GetPaletteIndex(q, 240, 250, 255));
    // Means: blue (0 + 15 + 1) / 2 = 8; (255 + 3 * 240 + 2) / 4 = 244, (255 + 750 + 2) / 4 = 251.
    EXPECT_EQ(key(colors[size_t(dark)].R, colors[size_t(dark)].G, colors[size_t(dark)].B), key(0, 0, 8));
    EXPECT_EQ(key(colors[size_t(light)].R, colors[size_t(light)].G, colors[size_t(light)].B), key(244, 251, 255));
    EXPECT_EQ(dark, 254);
    EXPECT_EQ(light, 255);
    BitImage_DeleteColorQuantization(&q);

    // A many-coloured picture in a pool of 20 nodes: never more leaves than the pool can hold, and
    // every entry still the rounded mean of the pixels that map to it.
    q = BitImage_NewColorQuantizationWithPool(256, 20, true);
    std::map<int, std::vector<long>> sums;
    std::vector<Color> added;
    for (int i = 0; i < 3000; i++) {
        Color c = {(i * 37) % 256, (i * 101) % 256, (i * 7 + i / 5) % 256};
        BitImage_AddColorToQuantization(q, uint8_t(c.R), uint8_t(c.G), uint8_t(c.B), 1);
        added.push_back(c);
    }
    EXPECT_GE(BitImage_GetNumQuantizedColors(q), 1);
    EXPECT_LE(BitImage_GetNumQuantizedColors(q), 19);
    BitImage_CreatePalette(q);
    colors = palette(q);
    for (const Color &c : added) {
        std::vector<long> &s = sums[BitImage_GetPaletteIndex(q, uint8_t(c.R), uint8_t(c.G), uint8_t(c.B))];
        s.resize(4);
        s[0]++;
        s[1] += c.R;
        s[2] += c.G;
        s[3] += c.B;
    }
    EXPECT_EQ(int(sums.size()), BitImage_GetNumQuantizedColors(q));
    for (const auto &[index, s] : sums) {
        const Color &c = colors[size_t(index)];
        EXPECT_EQ(key(c.R, c.G, c.B), key(int((s[1] + s[0] / 2) / s[0]), int((s[2] + s[0] / 2) / s[0]),
                                          int((s[3] + s[0] / 2) / s[0])))
            << index;
    }
    BitImage_DeleteColorQuantization(&q);
}

TEST(ColorQuantization, UsesNoMemoryPerColour) {
    ColorQuantization_a q = BitImage_NewColorQuantization(256, true);
    long blocks = AllocActiveCount();
    for (int i = 0; i < 20000; i++) BitImage_AddColorToQuantization(q, uint8_t(i * 7), uint8_t(i * 13), uint8_t(i / 3), 1);
    EXPECT_EQ(AllocActiveCount(), blocks);
    BitImage_CreatePalette(q);
    BitImage_DeleteColorQuantization(&q);
}

}  // namespace

