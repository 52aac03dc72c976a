// X window dumps read back by a decoder written here and by ImageMagick: every header field, the
// window name, the colour records, and the limit of 253 colours.
#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "base/output/imgexport.h"
#include "base/output/imgxwd.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class XWDExport : public ImageTest {};

TEST_F(XWDExport, HeaderColourRecordsAndRows) {
    std::string name = path("a.xwd");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_XWindows, name.c_str(), ExportRegion_CurrentFrame, 13, false, false,
                                  nullptr, Palette_Color));
    std::vector<uint8_t> b = ReadFile(name);
    ASSERT_EQ(b.size(), 108u + 256 * 12 + 13 * 7);
    const uint32_t header[25] = {108, 7, 2, 8, 13, 7, 0, 0, 8, 0, 8, 8, 13, 3, 0, 0, 0, 8, 256, 256, 13, 7, 0, 0, 0};
    for (int i = 0; i < 25; i++) EXPECT_EQ(BE32(b, 4 * size_t(i)), header[i]) << "field " << i;
    EXPECT_EQ(std::string(b.begin() + 100, b.begin() + 108), std::string("orvanex\0", 8));
    std::vector<RGB> colors;
    for (int i = 0; i < 256; i++) {
        size_t at = 108 + 12 * size_t(i);
        EXPECT_EQ(BE32(b, at), uint32_t(i));
        uint16_t r = BE16(b, at + 4), g = BE16(b, at + 6), bl = BE16(b, at + 8);
        EXPECT_EQ(r & 0xFF, 0);
        EXPECT_EQ(g & 0xFF, 0);
        EXPECT_EQ(bl & 0xFF, 0);
        EXPECT_EQ(BE16(b, at + 10), 0);
        colors.push_back({uint8_t(r >> 8), uint8_t(g >> 8), uint8_t(bl >> 8)});
    }
    size_t data = 108 + 256 * 12;
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) EXPECT_EQ(colors[b[data + 13 * y + x]], expected(x, y)) << x << "," << y;
    // ImageMagick reads the same pixels; it takes a 16-bit colour v to 8 bits as v * 255 / 65535,
    // so the 8-bit value c in the high byte comes back as c * 256 * 255 / 65535.
    std::string raw = RunCommand("/usr/bin/convert '" + name + "' -depth 8 rgb:- 2>/dev/null");
    ASSERT_EQ(raw.size(), 13u * 7 * 3);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) {
            const char *p = raw.data() + 3 * (13 * y + x);
            RGB c = expected(x, y);
            auto to8 = [](int v) { return uint8_t(v * 256 * 255 / 65535); };
            EXPECT_EQ((RGB{uint8_t(p[0]), uint8_t(p[1]), uint8_t(p[2])}), (RGB{to8(c.R), to8(c.G), to8(c.B)})) << x << "," << y;
        }
}

TEST_F(XWDExport, AtMost253ColoursAreUsed) {
    BitImage_SetCachedImageHeight(20);
    std::string name = path("many.xwd");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_XWindows, name.c_str(), ExportRegion_CurrentFrame, 40, false, false,
                                  nullptr, Palette_Color));
    std::vector<uint8_t> b = ReadFile(name);
    std::set<RGB, bool (*)(const RGB &, const RGB &)> distinct([](const RGB &a, const RGB &c) {
        return std::tie(a.R, a.G, a.B) < std::tie(c.R, c.G, c.B);
    });
    for (int y = 0; y < 20; y++)
        for (int x = 0; x < 40; x++) distinct.insert(GradientPattern(x, y, 40, 20));
    ASSERT_GT(distinct.size(), 253u);  // the picture has more
    std::set<uint8_t> used(b.begin() + 108 + 256 * 12, b.end());
    EXPECT_LE(used.size(), 253u);
    EXPECT_GE(used.size(), 253u - 8);  // a merge removes at most 7; the background may be unused
}

}  // namespace
