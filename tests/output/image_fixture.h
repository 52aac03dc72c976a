// Shared by the image tests: a bit image device that draws a test pattern at whatever size it is
// asked for, with a region size the test chooses; captured messages; a scratch directory; file
// readers; and a way to ask an independent decoder (Pillow, ImageMagick, Ghostscript) about a
// file.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/strutil.h"
#include "base/output/bitimage.h"
#include "support/scratch.h"

namespace imagetest {

struct RGB {
    uint8_t R, G, B;
    bool operator==(const RGB &other) const { return R == other.R && G == other.G && B == other.B; }
};

// The picture the device draws: pixel (x, y) of a width by height rendering.
using Pattern_pf = RGB (*)(int x, int y, int width, int height);

// Many colours: every pixel of a small image differs.
inline RGB GradientPattern(int x, int y, int, int) {
    return {uint8_t(x * 37 + y * 11), uint8_t(x * 5 + y * 70), uint8_t((x ^ y) * 13 + 1)};
}

// Five colours in stripes with runs, so that palettes are exact and run-length coding has work.
inline RGB StripePattern(int x, int y, int, int) {
    static const RGB colors[5] = {{255, 0, 0}, {0, 128, 0}, {0, 0, 255}, {250, 250, 250}, {128, 128, 0}};
    return colors[(x / 3 + y) % 5];
}

struct DeviceLog {
    Pattern_pf Pattern = GradientPattern;
    ExportRegionSize_s Size;
    bool SizeIsKnown = true;
    bool FailRender = false;
    int InterruptAfterRows = -1;  // sets Interrupted once this many rows were served
    int RenderCalls = 0, ReleaseCalls = 0, RowsServed = 0;
    int RenderWidth = 0, RenderHeight = 0;
    bool RenderUsedOffscreen = false;
    ExportRegion_e RenderRegion = ExportRegion_CurrentFrame;
};
inline DeviceLog Log;

inline bool DeviceGetRegionSize(ExportRegion_e, ExportRegionSize_s *size) {
    if (!Log.SizeIsKnown) return false;
    *size = Log.Size;
    return true;
}
inline bool DeviceRender(ExportRegion_e region, int width, int height, bool useOffscreen) {
    Log.RenderCalls++;
    Log.RenderRegion = region;
    Log.RenderWidth = width;
    Log.RenderHeight = height;
    Log.RenderUsedOffscreen = useOffscreen;
    if (Log.FailRender) ErrMsg("Unable to render offscreen image.");
    return !Log.FailRender;
}
inline void DeviceGetRGBPixelRow(int row, uint8_t *rgb) {
    for (int x = 0; x < Log.RenderWidth; x++) {
        RGB c = Log.Pattern(x, row, Log.RenderWidth, Log.RenderHeight);
        rgb[3 * x] = c.R;
        rgb[3 * x + 1] = c.G;
        rgb[3 * x + 2] = c.B;
    }
    Log.RowsServed++;
    if (Log.InterruptAfterRows >= 0 && Log.RowsServed >= Log.InterruptAfterRows) Interrupted = true;
}
inline void DeviceRelease(bool) { Log.ReleaseCalls++; }

inline std::vector<std::string> Messages;
inline MessageBoxReply_e CaptureMessage(const char *text, MessageBoxType_e) {
    Messages.push_back(text);
    return MessageBoxReply_Ok;
}

// A region of 6 by 3 inches: a 13 pixel wide export is (13 - 1) * 3 / 6 + 1 = 7 high.
inline ExportRegionSize_s DefaultRegionSize() {
    ExportRegionSize_s size;
    size.Width = 6.0;
    size.Height = 3.0;
    size.JDotsPerIDots = 1.0;
    size.UsableWidth = 640;
    size.UsableHeight = 480;
    size.OnScreenWidth = 600;
    size.ScreenWidth = 1280;
    return size;
}

class ImageTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = MakeScratchDir("image");
        ASSERT_FALSE(dir.empty());
        savedBase = GeneralBase;
        savedGraphics = GraphicsAreInitialized;
        savedBatch = InBatchMode;
        GraphicsAreInitialized = true;
        InBatchMode = false;
        Interrupted = false;
        Messages.clear();
        MessageBoxRegisterCallback(&CaptureMessage);
        Log = DeviceLog();
        Log.Size = DefaultRegionSize();
        static const BitImageDevice_s device = {DeviceGetRegionSize, DeviceRender, DeviceGetRGBPixelRow, DeviceRelease};
        BitImage_RegisterDevice(&device);
        BitImage_ClearCachedImageHeight();
    }
    void TearDown() override {
        BitImage_DestroyBitImage();
        BitImage_RegisterDevice(nullptr);
        BitImage_ClearCachedImageHeight();
        MessageBoxRegisterCallback(nullptr);
        ClearPendingErrors();
        Interrupted = false;
        BitImageInterrupted = false;
        BitImageIOErrorFlag = false;
        GeneralBase = savedBase;
        GraphicsAreInitialized = savedGraphics;
        InBatchMode = savedBatch;
        ASSERT_TRUE(RemoveScratchDir(dir));
    }
    std::string path(const std::string &name) const { return dir + "/" + name; }

    // The pattern's pixel of the exported image.
    RGB expected(int x, int y) const { return Log.Pattern(x, y, Log.RenderWidth, Log.RenderHeight); }

    std::string dir;
    GeneralBase_s savedBase;
    bool savedGraphics = false, savedBatch = false;
};

// Blocks of the counted allocator in use, not counting the formatter's buffer, which the first
// message of a process allocates and keeps.
inline long LiveBlocks() {
    FormatStringBufferCleanup();
    return AllocActiveCount();
}

inline std::vector<uint8_t> ReadFile(const std::string &name) {
    std::vector<uint8_t> bytes;
    FILE *f = fopen(name.c_str(), "rb");
    if (f == nullptr) return bytes;
    uint8_t buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), f)) > 0) bytes.insert(bytes.end(), buffer, buffer + n);
    fclose(f);
    return bytes;
}

inline bool FileExists(const std::string &name) {
    FILE *f = fopen(name.c_str(), "rb");
    if (f == nullptr) return false;
    fclose(f);
    return true;
}

inline uint32_t BE32(const std::vector<uint8_t> &b, size_t at) {
    return (uint32_t(b.at(at)) << 24) | (uint32_t(b.at(at + 1)) << 16) | (uint32_t(b.at(at + 2)) << 8) | b.at(at + 3);
}
inline uint16_t BE16(const std::vector<uint8_t> &b, size_t at) { return uint16_t((b.at(at) << 8) | b.at(at + 1)); }
inline uint32_t LE32(const std::vector<uint8_t> &b, size_t at) {
    return uint32_t(b.at(at)) | (uint32_t(b.at(at + 1)) << 8) | (uint32_t(b.at(at + 2)) << 16) | (uint32_t(b.at(at + 3)) << 24);
}
inline uint16_t LE16(const std::vector<uint8_t> &b, size_t at) { return uint16_t(b.at(at) | (b.at(at + 1) << 8)); }

// Runs a shell command and returns what it printed on standard output.
inline std::string RunCommand(const std::string &command) {
    std::string out;
    FILE *p = popen(command.c_str(), "r");
    if (p == nullptr) return out;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), p)) > 0) out.append(buffer, n);
    pclose(p);
    return out;
}

// Runs a Python program with Pillow on a file; the program finds the file name in sys.argv[1].
inline std::string RunPillow(const std::string &scratchDir, const std::string &program, const std::string &file) {
    std::string script = scratchDir + "/decode.py";
    FILE *f = fopen(script.c_str(), "w");
    if (f == nullptr) return "";
    fputs("import sys\nfrom PIL import Image\n", f);
    fputs(program.c_str(), f);
    fclose(f);
    return RunCommand("/usr/bin/python3 '" + script + "' '" + file + "' 2>&1");
}

// Pillow's view of an image as text: "<mode> <width> <height>" then one line per pixel row of
// "r,g,b" triples (after conversion to RGB).
inline std::string PillowPixels(const std::string &scratchDir, const std::string &file) {
    return RunPillow(scratchDir,
                     "im = Image.open(sys.argv[1])\n"
                     "print(im.mode, im.size[0], im.size[1])\n"
                     "rgb = im.convert('RGB')\n"
                     "for y in range(im.size[1]):\n"
                     "    print(' '.join('%d,%d,%d' % rgb.getpixel((x, y)) for x in range(im.size[0])))\n",
                     file);
}

// The same text made from the pattern, for comparison with PillowPixels.
inline std::string PatternPixelsText(const char *mode, int width, int height, RGB (*pixel)(int x, int y)) {
    std::string text = std::string(mode) + " " + std::to_string(width) + " " + std::to_string(height) + "\n";
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            RGB c = pixel(x, y);
            if (x > 0) text += " ";
            text += std::to_string(c.R) + "," + std::to_string(c.G) + "," + std::to_string(c.B);
        }
        text += "\n";
    }
    return text;
}

}  // namespace imagetest
