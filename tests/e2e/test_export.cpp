// Still image export from the launcher with no display: each format written and read back by an
// independent decoder (Pillow, or ImageMagick for the X window dump), sizes from the aspect of the
// region, the frame drawn where the paper maps put it, repeat runs giving the same pixels, and the
// refusals.
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "e2e/harness.h"

namespace {

const char *kSurface = "VARIABLES = X Y P\nZONE I=3 J=2\n0 0 1\n5 0 2\n10 0 3\n0 5 4\n5 5 5\n10 5 6\n";

std::string runExport(Scratch &s, const std::string &body) {
    s.write("a.dat", kSurface);
    s.write("run.mcr", "#!MC 1100\n" + body);
    RunResult r = s.run({"-b", "run.mcr", "a.dat"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return s.read("batch.log");
}

TEST(ExportE2E, EachFormatDecodesToTheSizeOfTheRegion) {
    // A frame of 9 by 8 inches exported 300 pixels wide: (300 - 1) * 8 / 9 + 1 = 266.8, and with
    // the rounding (add 0.499, cut) 267 rows.
    Scratch s;
    struct Case {
        const char *format, *file, *mode;
    };
    const Case cases[] = {{"PNG", "x.png", "RGB"},       {"BMP", "x.bmp", "RGB"},        {"JPEG", "x.jpg", "RGB"},
                          {"TIFF", "x.tif", "RGB"},      {"SUNRASTER", "x.ras", "P"}};
    std::string body = "$!FRAMELAYOUT BACKGROUNDCOLOR = CYAN\n";
    for (const Case &c : cases)
        body += std::string("$!EXPORTSETUP EXPORTFORMAT = ") + c.format + " IMAGEWIDTH = 300 EXPORTFNAME = \"" +
                c.file + "\"\n$!EXPORT\n";
    body += "$!EXPORTSETUP EXPORTFORMAT = XWINDOWS EXPORTFNAME = \"x.xwd\"\n$!EXPORT\n";
    std::string log = runExport(s, body);
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    std::string program = "from PIL import Image\n";
    for (const Case &c : cases)
        program += std::string("im = Image.open('") + c.file +
                   "'); rgb = im.convert('RGB'); print(im.format, im.size[0], im.size[1], im.mode, "
                   "rgb.getpixel((100, 100)), rgb.getpixel((0, 0)))\n";
    std::vector<std::string> lines = Lines(RunPython(s, program));
    ASSERT_EQ(lines.size(), 5u);
    // Inside the frame between the mesh lines is its background, its corner the border.
    EXPECT_EQ(lines[0], "PNG 300 267 RGB (0, 255, 255) (0, 0, 0)");
    EXPECT_EQ(lines[1], "BMP 300 267 RGB (0, 255, 255) (0, 0, 0)");
    EXPECT_EQ(lines[3], "TIFF 300 267 RGB (0, 255, 255) (0, 0, 0)");
    EXPECT_EQ(lines[4], "SUN 300 267 P (0, 255, 255) (0, 0, 0)");
    // JPEG is lossy: near the colours rather than at them.
    int r = -1, g = -1, b = -1, r0 = -1, g0 = -1, b0 = -1;
    ASSERT_EQ(sscanf(lines[2].c_str(), "JPEG 300 267 RGB (%d, %d, %d) (%d, %d, %d)", &r, &g, &b, &r0, &g0, &b0), 6)
        << lines[2];
    EXPECT_LT(r, 20);
    EXPECT_GT(g, 235);
    EXPECT_GT(b, 235);
    EXPECT_LT(r0 + g0 + b0, 60);
    std::string xwd = RunShell("identify -format '%m %w %h' '" + s.path("x.xwd") + "' 2>&1");
    EXPECT_EQ(xwd, "XWD 300 267") << xwd;
}

TEST(ExportE2E, TwoRunsGiveTheSamePixels) {
    Scratch s;
    // A display that does not exist: batch export must not need one.
    s.setEnv("DISPLAY", ":987.0");
    const std::string body = "$!FRAMELAYOUT BACKGROUNDCOLOR = YELLOW\n$!CREATENEWFRAME XYPOS { X = 2 Y = 2 } WIDTH = 3 "
                             "HEIGHT = 2\n$!FRAMELAYOUT BACKGROUNDCOLOR = BLUE\n"
                             "$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 451 EXPORTREGION = ALLFRAMES "
                             "EXPORTFNAME = \"one.png\"\n$!EXPORT\n"
                             "$!EXPORTSETUP EXPORTFNAME = \"two.png\"\n$!EXPORT\n";
    std::string log = runExport(s, body);
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    // All frames: the bounding box is the first frame, 9 by 8 inches from (1, 0.25); the second
    // frame's middle (3.5, 3) lies at 2.5 / 9 and 2.75 / 8 of the picture.
    std::string out = RunPython(s, "from PIL import Image\n"
                                "a = Image.open('one.png').convert('RGB'); b = Image.open('two.png').convert('RGB')\n"
                                "print(a.size, list(a.getdata()) == list(b.getdata()))\n"
                                "x = round(2.5 / 9 * 450); y = round(2.75 / 8 * (a.size[1] - 1))\n"
                                "print(a.getpixel((x, y)), a.getpixel((20, 20)))\n");
    // (451 - 1) * 8 / 9 + 1 = 401
    EXPECT_EQ(out, "(451, 401) True\n(0, 0, 255) (255, 255, 0)\n") << out;
}

TEST(ExportE2E, MeshOfAKnownZoneLandsWhereTheMapsPutIt) {
    Scratch s;
    std::string log = runExport(s, "$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 300 EXPORTFNAME = \"m.png\"\n"
                                   "$!EXPORT\n");
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    // The zone spans X 0..10 and Y 0..5; the fit takes the ranges 0..10.001 and 0..5.0005 onto the
    // grid area, 0.13..0.88 of the frame across and 0.11..0.88 up. The frame is pixels 0..299
    // across and 0..266 down.
    auto column = [](double x) { return (0.13 + 0.75 * x / 10.001) * 299; };
    auto row = [](double y) { return (1 - (0.11 + 0.77 * y / 5.0005)) * 266; };
    char program[1024];
    snprintf(program, sizeof(program),
             "from PIL import Image\n"
             "im = Image.open('m.png').convert('RGB')\n"
             "red = lambda p: p[0] > 200 and p[1] < 80 and p[2] < 80\n"
             "def near_column(x, y): return any(red(im.getpixel((c, y))) for c in range(x - 1, x + 2))\n"
             "def near_row(x, y): return any(red(im.getpixel((x, r))) for r in range(y - 1, y + 2))\n"
             "print(near_column(%d, %d), near_column(%d, %d), near_row(%d, %d), near_row(%d, %d))\n"
             "print(red(im.getpixel((%d, %d))))\n",
             int(column(5) + 0.5), int(row(2.5)), int(column(10) + 0.5), int(row(1)), int(column(2)), int(row(0) + 0.5),
             int(column(7)), int(row(5) + 0.5), int(column(2.5)), int(row(2.5)));
    // The middle and right I-lines, the bottom and top J-lines; nothing between them.
    EXPECT_EQ(RunPython(s, program), "True True True True\nFalse\n");
}

TEST(ExportE2E, RefusalsLeaveNoFile) {
    Scratch s;
    struct Case {
        std::string body, message, file;
    };
    const std::vector<Case> cases = {
        {"$!EXPORTSETUP EXPORTFORMAT = PS EXPORTFNAME = \"v.ps\"\n", "Export format PS is not available.", "v.ps"},
        {"$!EXPORTSETUP EXPORTFORMAT = AVI EXPORTFNAME = \"m.avi\"\n", "Export format AVI is not available.", "m.avi"},
        {"$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 30000 EXPORTFNAME = \"big.png\"\n",
         "An image of 30000 by 26667 pixels is too large.  The largest image is 16384 by 16384 pixels.", "big.png"},
        {"$!INTERFACE USEOFFSCREENBITMAP = NO\n$!EXPORTSETUP EXPORTFORMAT = PNG USESUPERSAMPLEANTIALIASING = YES "
         "EXPORTFNAME = \"aa.png\"\n",
         "Cannot export image.  Antialiasing for exported images requires use of an offscreen image.", "aa.png"},
        {"$!EXPORTSETUP EXPORTFORMAT = PNG EXPORTFNAME = \"nodir/x.png\"\n", "Filename Error: Directory is invalid.",
         "nodir/x.png"},
    };
    for (const Case &c : cases) {
        std::string log = runExport(s, c.body + "$!EXPORT\n");
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.body << log;
        EXPECT_FALSE(s.exists(c.file)) << c.body;
    }
    // SGI has no writer: the file is made, empty.
    std::string log = runExport(s, "$!EXPORTSETUP EXPORTFORMAT = SGI EXPORTFNAME = \"x.sgi\"\n$!EXPORT\n");
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    ASSERT_TRUE(s.exists("x.sgi"));
    EXPECT_TRUE(s.read("x.sgi").empty());
}

}  // namespace
