// ExportStaticImage: files that cannot be written, interruption and failures that leave no file,
// a full disk reported once, the formats without a writer refused before anything is written, SGI
// as an empty file, the default width down to IMAGEWIDTH 1 in every format, the status texts.
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

#include "base/output/exportsetup.h"
#include "base/output/imgexport.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class ImageExport : public ImageTest {};

TEST_F(ImageExport, AFileThatCannotBeWrittenIsReportedAndNothingRenders) {
    std::string blocker = path("plain");
    FILE *f = fopen(blocker.c_str(), "w");
    fclose(f);
    std::string name = blocker + "/a.png";  // its directory is a file
    EXPECT_FALSE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                   Palette_Color));
    ASSERT_EQ(Messages.size(), 1u);
    EXPECT_EQ(Messages[0], "Filename Error: Directory is invalid.\nFileName: " + name);
    EXPECT_EQ(Log.RenderCalls, 0);
}

TEST_F(ImageExport, InterruptionDeletesTheFile) {
    std::string name = path("i.png");
    FILE *f = fopen(name.c_str(), "w");  // an older file of that name goes too
    fputs("old", f);
    fclose(f);
    Log.InterruptAfterRows = 3;
    EXPECT_FALSE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                   Palette_Color));
    EXPECT_TRUE(BitImageInterrupted);
    EXPECT_FALSE(FileExists(name));
    EXPECT_TRUE(Messages.empty());
    EXPECT_FALSE(BitImage_IsConstructed());
    EXPECT_EQ(Log.ReleaseCalls, 1);
}

TEST_F(ImageExport, InterruptionWhileReducingColoursDeletesTheFileToo) {
    std::string name = path("i.tif");
    Log.InterruptAfterRows = 2;
    EXPECT_FALSE(ExportStaticImage(ExportFormat_TIFF, name.c_str(), ExportRegion_CurrentFrame, 13, true, false, nullptr,
                                   Palette_Color));
    EXPECT_FALSE(FileExists(name));
    EXPECT_TRUE(Messages.empty());
}

TEST_F(ImageExport, AFullDiskIsReportedOnceAndLeavesNoFile) {
    struct rlimit saved;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    struct rlimit small = saved;
    small.rlim_cur = 200;  // a 13 by 7 BMP needs 334 bytes
    void (*savedHandler)(int) = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string name = path("full.bmp");
    bool ok = ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                Palette_Color);
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, savedHandler);
    EXPECT_FALSE(ok);
    ASSERT_EQ(Messages.size(), 1u);
    EXPECT_EQ(Messages[0], "Disk error. You may be out of disk space. Check available disk space or write permissions. "
                           "This export has been cancelled.");
    EXPECT_FALSE(FileExists(name));
}

TEST_F(ImageExport, FailuresOfTheBitImageLeaveNoFile) {
    GeneralBase.ExportSetup.UseSuperSampleAntiAliasing = true;
    GeneralBase.Interface.UseOffscreenBitmap = false;
    std::string name = path("aa.jpg");
    EXPECT_FALSE(ExportStaticImage(ExportFormat_JPEG, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                   Palette_Color));
    ASSERT_EQ(Messages.size(), 1u);
    EXPECT_EQ(Messages[0], "Cannot export image.  Antialiasing for exported images requires use of an offscreen image.");
    EXPECT_FALSE(FileExists(name));
}

TEST_F(ImageExport, FormatsWithoutAWriterAreRefusedAndWriteNoFile) {
    const struct {
        ExportFormat_e Format;
        const char *Word;
    } refused[] = {{ExportFormat_HPGL, "HPGL"},
                   {ExportFormat_HPGL2, "HPGL2"},
                   {ExportFormat_PS, "PS"},
                   {ExportFormat_EPS, "EPS"},
                   {ExportFormat_WindowsMetafile, "WINDOWSMETAFILE"},
                   {ExportFormat_PSImage, "PSIMAGE"},
                   {ExportFormat_RasterMetafile, "RASTERMETAFILE"},
                   {ExportFormat_AVI, "AVI"},
                   {ExportFormat_Flash, "FLASH"},
                   {ExportFormat_LaserGraphics, "LASERGRAPHICS"},
                   {ExportFormat_Custom, "CUSTOM"}};
    for (const auto &c : refused) {
        std::string message = std::string("Export format ") + c.Word + " is not available.";
        Messages.clear();
        EXPECT_FALSE(CheckExportFormatAvailable(c.Format)) << c.Word;
        EXPECT_EQ(Messages, std::vector<std::string>{message}) << c.Word;

        Messages.clear();
        std::string name = path(std::string("new.") + c.Word);
        EXPECT_FALSE(ExportStaticImage(c.Format, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                       Palette_Color))
            << c.Word;
        EXPECT_EQ(Messages, std::vector<std::string>{message}) << c.Word;
        EXPECT_FALSE(FileExists(name)) << c.Word;

        // A file already there under that name is left as it was.
        std::string old = path(std::string("old.") + c.Word);
        FILE *f = fopen(old.c_str(), "w");
        fputs("old", f);
        fclose(f);
        EXPECT_FALSE(ExportStaticImage(c.Format, old.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                       Palette_Color));
        EXPECT_EQ(ReadFile(old), (std::vector<uint8_t>{'o', 'l', 'd'})) << c.Word;
    }
    EXPECT_EQ(Log.RenderCalls, 0);
    EXPECT_FALSE(BitImage_IsConstructed());

    Messages.clear();
    for (ExportFormat_e f : {ExportFormat_TIFF, ExportFormat_SGI, ExportFormat_SunRaster, ExportFormat_XWindows,
                             ExportFormat_BMP, ExportFormat_PNG, ExportFormat_JPEG})
        EXPECT_TRUE(CheckExportFormatAvailable(f)) << f;
    EXPECT_TRUE(Messages.empty());
}

TEST_F(ImageExport, SGIWritesAnEmptyFile) {
    std::string name = path("a.sgi");
    EXPECT_TRUE(ExportStaticImage(ExportFormat_SGI, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Color));
    EXPECT_TRUE(Messages.empty());
    EXPECT_TRUE(FileExists(name));
    EXPECT_TRUE(ReadFile(name).empty());
    EXPECT_EQ(Log.RenderCalls, 0);
    EXPECT_FALSE(BitImage_IsConstructed());

    // An older file of that name is replaced by the empty one.
    FILE *f = fopen(name.c_str(), "w");
    fputs("old content", f);
    fclose(f);
    EXPECT_TRUE(ExportStaticImage(ExportFormat_SGI, name.c_str(), ExportRegion_CurrentFrame, 13, true, false, nullptr,
                                  Palette_Color));
    EXPECT_TRUE(FileExists(name));
    EXPECT_TRUE(ReadFile(name).empty());
    EXPECT_TRUE(Messages.empty());
}

TEST_F(ImageExport, NoWidthTakesTheDefaultWidth) {
    InBatchMode = true;
    GeneralBase.ExportSetup.ImageWidth = 9;
    std::string name = path("d.bmp");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_BMP, name.c_str(), ExportRegion_CurrentFrame, 0, false, false, nullptr,
                                  Palette_Color));
    std::vector<uint8_t> b = ReadFile(name);
    EXPECT_EQ(LE32(b, 18), 9u);
    EXPECT_EQ(LE32(b, 22), 5u);  // (9 - 1) * 3 / 6 + 1
}

TEST_F(ImageExport, IMAGEWIDTH1GivesAOnePixelImageInEveryFormat) {
    // (1 - 1) * 3 / 6 + 1 = 1 row. The pattern's one pixel is (0, 0, 1).
    InBatchMode = true;
    GeneralBase.ExportSetup.ImageWidth = 1;
    const struct {
        ExportFormat_e Format;
        const char *Name;
        bool To256;
        const char *Pillow;  // Pillow's view, or null where it has no reader
    } cases[] = {{ExportFormat_TIFF, "a.tif", false, "RGB 1 1\n0,0,1\n"},
                 {ExportFormat_TIFF, "p.tif", true, "P 1 1\n0,0,1\n"},
                 {ExportFormat_SunRaster, "a.ras", true, "P 1 1\n0,0,1\n"},
                 {ExportFormat_BMP, "a.bmp", false, "RGB 1 1\n0,0,1\n"},
                 {ExportFormat_PNG, "a.png", true, "P 1 1\n0,0,1\n"},
                 {ExportFormat_JPEG, "a.jpg", false, nullptr},
                 {ExportFormat_XWindows, "a.xwd", true, nullptr}};
    for (const auto &c : cases) {
        std::string name = path(c.Name);
        ASSERT_TRUE(ExportStaticImage(c.Format, name.c_str(), ExportRegion_CurrentFrame, 0, c.To256, false, nullptr,
                                      Palette_Color))
            << c.Name;
        EXPECT_EQ(Log.RenderWidth, 1) << c.Name;
        EXPECT_EQ(Log.RenderHeight, 1) << c.Name;
        if (c.Pillow != nullptr) {
            EXPECT_EQ(PillowPixels(dir, name), c.Pillow) << c.Name;
        }
    }
    EXPECT_EQ(RunPillow(dir, "print(Image.open(sys.argv[1]).size)\n", path("a.jpg")), "(1, 1)\n");
    std::vector<uint8_t> xwd = ReadFile(path("a.xwd"));
    EXPECT_EQ(BE32(xwd, 16), 1u);  // width
    EXPECT_EQ(BE32(xwd, 20), 1u);  // height
    EXPECT_EQ(BE32(xwd, 48), 1u);  // bytes per line
    EXPECT_EQ(xwd.size(), 108u + 256u * 12u + 1u);
    EXPECT_TRUE(Messages.empty());
}

std::vector<std::string> statusTexts;
void recordStatus(const char *text) { statusTexts.push_back(text != nullptr ? text : "<clear>"); }

TEST_F(ImageExport, StatusTextsWhileRenderingAndReducing) {
    statusTexts.clear();
    ImageProgressHooks.SetStatusText = recordStatus;
    std::string name = path("s.png");
    bool ok = ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, true, false,
                                "Exporting frame 1...", Palette_Color);
    ImageProgressHooks.SetStatusText = nullptr;
    ASSERT_TRUE(ok);
    EXPECT_EQ(statusTexts, (std::vector<std::string>{"Exporting frame 1...", "Reducing the image to 256 colors...", "<clear>"}));
}

}  // namespace
