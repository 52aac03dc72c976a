// JPEG files read back by Pillow: size and components, pixels close to the picture, the
// quantisation tables that the quality implies, and progressive scans.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "base/output/imgexport.h"
#include "base/output/imgjpeg.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class JPEGExport : public ImageTest {
  protected:
    void SetUp() override {
        ImageTest::SetUp();
        Log.Pattern = [](int x, int y, int, int) { return RGB{uint8_t(4 * x), uint8_t(8 * y), 128}; };
        Log.Size.Width = 63.0;
        Log.Size.Height = 31.0;  // 64 wide gives 63 * 31 / 63 + 1 = 32 high
    }
    std::string exportJPEG(const char *file) {
        std::string name = path(file);
        EXPECT_TRUE(ExportStaticImage(ExportFormat_JPEG, name.c_str(), ExportRegion_CurrentFrame, 64, false, false,
                                      nullptr, Palette_Color));
        return name;
    }
};

TEST(JPEGQuality, TheFractionBecomesAWholePercent) {
    EXPECT_EQ(JPEG_QualityFromFraction(0.75), 75);
    EXPECT_EQ(JPEG_QualityFromFraction(0.29), 29);  // 28.999... as a double
    EXPECT_EQ(JPEG_QualityFromFraction(0.999), 99);
    EXPECT_EQ(JPEG_QualityFromFraction(1.0), 100);
    EXPECT_EQ(JPEG_QualityFromFraction(0.0), 1);
}

TEST_F(JPEGExport, SizeComponentsAndPixelsCloseToThePicture) {
    GeneralBase.ExportSetup.Quality = 0.95;
    std::string name = exportJPEG("a.jpg");
    std::string out = RunPillow(dir,
                                "im = Image.open(sys.argv[1])\n"
                                "print(im.mode, im.size[0], im.size[1], im.format, 'progressive' in im.info)\n"
                                "worst = 0\n"
                                "for y in range(im.size[1]):\n"
                                "    for x in range(im.size[0]):\n"
                                "        r, g, b = im.getpixel((x, y))\n"
                                "        worst = max(worst, abs(r - 4 * x), abs(g - 8 * y), abs(b - 128))\n"
                                "print(worst)\n",
                                name);
    std::istringstream in(out);
    std::string mode, format, progressive;
    int width = 0, height = 0, worst = 999;
    in >> mode >> width >> height >> format >> progressive >> worst;
    EXPECT_EQ(mode, "RGB") << out;
    EXPECT_EQ(width, 64);
    EXPECT_EQ(height, 32);
    EXPECT_EQ(format, "JPEG");
    EXPECT_EQ(progressive, "False");
    EXPECT_LE(worst, 8);
}

TEST_F(JPEGExport, QualitySetsTheQuantisationTables) {
    // The standard luminance table starts with 16, scaled by 200 - 2q (q >= 50) or 5000 / q
    // percent, rounded: 75 -> (16 * 50 + 50) / 100 = 8; 30 -> (16 * 166 + 50) / 100 = 27.
    const char *program = "print(Image.open(sys.argv[1]).quantization[0][0])\n";
    GeneralBase.ExportSetup.Quality = 0.75;
    EXPECT_EQ(RunPillow(dir, program, exportJPEG("q75.jpg")), "8\n");
    GeneralBase.ExportSetup.Quality = 0.30;
    EXPECT_EQ(RunPillow(dir, program, exportJPEG("q30.jpg")), "27\n");
    // Baseline tables: at quality 1 the scaled entries stop at 255.
    GeneralBase.ExportSetup.Quality = 0.01;
    EXPECT_EQ(RunPillow(dir, "print(max(Image.open(sys.argv[1]).quantization[0]))\n", exportJPEG("q1.jpg")), "255\n");
}

TEST_F(JPEGExport, ProgressiveEncodingWritesProgressiveScans) {
    GeneralBase.ExportSetup.JPEGEncoding = JPEGEncoding_Progressive;
    std::string name = exportJPEG("p.jpg");
    EXPECT_EQ(RunPillow(dir, "im = Image.open(sys.argv[1]); print(im.info.get('progressive'), im.size)\n", name),
              "1 (64, 32)\n");
    // A progressive frame is an SOF2 marker.
    std::vector<uint8_t> b = ReadFile(name);
    bool sof2 = false;
    for (size_t i = 0; i + 1 < b.size(); i++) sof2 |= b[i] == 0xFF && b[i + 1] == 0xC2;
    EXPECT_TRUE(sof2);
}

}  // namespace
