// PNG files read back chunk by chunk here and by Pillow: IHDR first with depth 8 and the colour
// type, the palette of exactly 256 entries before the data, the time and the two text entries
// byte for byte (the version, the file's name without its directory), nothing else that changes
// from one export to the next, compression at the best level, the pixels, a one pixel wide
// image; and a picture in memory written directly.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <ctime>

#include "base/kernel/version.h"
#include "base/output/imgexport.h"
#include "base/output/imgpng.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class PNGExport : public ImageTest {};

struct Chunk {
    std::string Type;
    std::vector<uint8_t> Data;
};

std::vector<Chunk> chunksOf(const std::vector<uint8_t> &b) {
    std::vector<Chunk> chunks;
    const uint8_t signature[8] = {137, 'P', 'N', 'G', 13, 10, 26, 10};
    if (b.size() < 8 || !std::equal(signature, signature + 8, b.begin())) return chunks;
    for (size_t at = 8; at + 12 <= b.size();) {
        uint32_t length = BE32(b, at);
        Chunk c{std::string(b.begin() + long(at) + 4, b.begin() + long(at) + 8),
                std::vector<uint8_t>(b.begin() + long(at) + 8, b.begin() + long(at) + 8 + length)};
        chunks.push_back(c);
        at += 12 + length;
    }
    return chunks;
}

int indexOf(const std::vector<Chunk> &chunks, const std::string &type) {
    for (size_t i = 0; i < chunks.size(); i++)
        if (chunks[i].Type == type) return int(i);
    return -1;
}

// The tEXt chunks as "key=text" (key, a zero byte, the text).
std::vector<std::string> textEntries(const std::vector<Chunk> &chunks) {
    std::vector<std::string> entries;
    for (const Chunk &c : chunks) {
        if (c.Type != "tEXt") continue;
        std::string data(c.Data.begin(), c.Data.end());
        size_t zero = data.find('\0');
        if (zero == std::string::npos) {
            entries.push_back("<no separator>");
            continue;
        }
        entries.push_back(data.substr(0, zero) + "=" + data.substr(zero + 1));
    }
    return entries;
}

// The version identifier as start-up makes it from the version numbers.
std::string versionFromNumbers() {
    char text[32];
    snprintf(text, sizeof(text), "%d.%d-%d-%d", OrvanexMajorVersion, OrvanexMinorVersion, OrvanexRevision,
             OrvanexBuild);
    return text;
}

// Sets VersionStr for the length of a test.
class VersionStrGuard {
  public:
    explicit VersionStrGuard(const char *text) {
        memcpy(saved_, VersionStr, sizeof(saved_));
        snprintf(VersionStr, sizeof(VersionStr), "%s", text);
    }
    ~VersionStrGuard() { memcpy(VersionStr, saved_, sizeof(saved_)); }

  private:
    char saved_[sizeof(VersionStr)];
};

std::vector<std::string> textKeys(const std::vector<Chunk> &chunks) {
    std::vector<std::string> keys;
    for (const Chunk &c : chunks)
        if (c.Type == "tEXt") keys.push_back(std::string(reinterpret_cast<const char *>(c.Data.data())));
    return keys;
}

TEST_F(PNGExport, TrueColourChunksInOrderAndPixels) {
    std::string name = path("a.png");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Color));
    std::vector<Chunk> chunks = chunksOf(ReadFile(name));
    ASSERT_GE(chunks.size(), 4u);
    EXPECT_EQ(chunks.front().Type, "IHDR");
    EXPECT_EQ(chunks.back().Type, "IEND");
    const std::vector<uint8_t> &ihdr = chunks[0].Data;
    EXPECT_EQ(BE32(ihdr, 0), 13u);
    EXPECT_EQ(BE32(ihdr, 4), 7u);
    EXPECT_EQ(ihdr[8], 8);  // bit depth
    EXPECT_EQ(ihdr[9], 2);  // RGB
    EXPECT_EQ(indexOf(chunks, "PLTE"), -1);
    int idat = indexOf(chunks, "IDAT");
    ASSERT_GT(idat, 0);
    // zlib header: FLEVEL (the top two bits of FLG) is 3 for the best compression.
    EXPECT_EQ(chunks[size_t(idat)].Data[0] & 0x0F, 8);
    EXPECT_EQ(chunks[size_t(idat)].Data[1] >> 6, 3);
    EXPECT_EQ(textKeys(chunks), (std::vector<std::string>{"Description", "Title"}));
    int timeChunk = indexOf(chunks, "tIME");
    ASSERT_GE(timeChunk, 0);
    time_t now = time(nullptr);
    struct tm utc;
    gmtime_r(&now, &utc);
    EXPECT_NEAR(BE16(chunks[size_t(timeChunk)].Data, 0), utc.tm_year + 1900, 1);
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("RGB", 13, 7, [](int x, int y) {
                  return GradientPattern(x, y, 13, 7);
              }));
    EXPECT_EQ(RunPillow(dir, "print(sorted(Image.open(sys.argv[1]).text.keys()))\n", name), "['Description', 'Title']\n");
}

TEST_F(PNGExport, TheTextsAreTheVersionAndTheFilesName) {
    std::string version = versionFromNumbers();
    VersionStrGuard guard(version.c_str());
    ASSERT_EQ(mkdir(path("sub").c_str(), 0755), 0);
    std::string name = path("sub/My Plot.v2.png");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, false, false, nullptr,
                                  Palette_Color));
    std::vector<Chunk> chunks = chunksOf(ReadFile(name));
    EXPECT_EQ(textEntries(chunks), (std::vector<std::string>{"Description=Created with Orvanex Version " + version,
                                                             "Title=My Plot.v2.png"}));
    EXPECT_EQ(indexOf(chunks, "zTXt"), -1);
    EXPECT_EQ(indexOf(chunks, "iTXt"), -1);
    EXPECT_EQ(RunPillow(dir, "t = Image.open(sys.argv[1]).text\nprint(repr(t['Description']), repr(t['Title']))\n",
                        name),
              "'Created with Orvanex Version " + version + "' 'My Plot.v2.png'\n");

    // The description follows VersionStr as start-up left it; leading blanks of the name go.
    VersionStrGuard other("11.0-7-42");
    std::string second = " " + path("b.png");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, second.c_str(), ExportRegion_CurrentFrame, 13, true, false,
                                  nullptr, Palette_Color));
    EXPECT_EQ(textEntries(chunksOf(ReadFile(path("b.png")))),
              (std::vector<std::string>{"Description=Created with Orvanex Version 11.0-7-42", "Title=b.png"}));
}

TEST_F(PNGExport, OnlyTheTimeDiffersBetweenTwoExportsOfOnePicture) {
    std::string name = path("same.png");
    for (bool to256 : {false, true}) {
        ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, to256, false,
                                      nullptr, Palette_Color));
        std::vector<Chunk> first = chunksOf(ReadFile(name));
        ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, to256, false,
                                      nullptr, Palette_Color));
        std::vector<Chunk> second = chunksOf(ReadFile(name));
        ASSERT_EQ(first.size(), second.size());
        std::vector<std::string> types;
        for (size_t i = 0; i < first.size(); i++) {
            types.push_back(first[i].Type);
            EXPECT_EQ(first[i].Type, second[i].Type) << i;
            if (first[i].Type != "tIME") {
                EXPECT_EQ(first[i].Data, second[i].Data) << first[i].Type;
            }
        }
        // Nothing but the header, the palette, the time, the two texts, the data and the end.
        std::vector<std::string> expectedTypes = {"IHDR"};
        if (to256) expectedTypes.push_back("PLTE");
        for (const char *t : {"tIME", "tEXt", "tEXt"}) expectedTypes.push_back(t);
        std::vector<std::string> kinds;
        for (const std::string &t : types)
            if (t != "IDAT" && t != "IEND") kinds.push_back(t);
        std::sort(kinds.begin() + 1, kinds.end());
        std::sort(expectedTypes.begin() + 1, expectedTypes.end());
        EXPECT_EQ(kinds, expectedTypes) << to256;
    }
}

TEST_F(PNGExport, AOnePixelWideImageFromIMAGEWIDTH1) {
    InBatchMode = true;
    GeneralBase.ExportSetup.ImageWidth = 1;
    Log.Pattern = [](int, int, int, int) { return RGB{12, 34, 56}; };
    for (bool to256 : {false, true}) {
        std::string name = path(to256 ? "p1.png" : "a1.png");
        ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 0, to256, false,
                                      nullptr, Palette_Color));
        std::vector<Chunk> chunks = chunksOf(ReadFile(name));
        ASSERT_FALSE(chunks.empty());
        EXPECT_EQ(BE32(chunks[0].Data, 0), 1u);  // (1 - 1) * 3 / 6 + 1 = 1 by 1
        EXPECT_EQ(BE32(chunks[0].Data, 4), 1u);
        EXPECT_EQ(chunks[0].Data[9], to256 ? 3 : 2);
        EXPECT_EQ(PillowPixels(dir, name), std::string(to256 ? "P" : "RGB") + " 1 1\n12,34,56\n");
    }
}

TEST_F(PNGExport, ReducedColoursGiveAPaletteOfExactly256) {
    Log.Pattern = StripePattern;
    std::string name = path("p.png");
    ASSERT_TRUE(ExportStaticImage(ExportFormat_PNG, name.c_str(), ExportRegion_CurrentFrame, 13, true, false, nullptr,
                                  Palette_Color));
    std::vector<Chunk> chunks = chunksOf(ReadFile(name));
    ASSERT_FALSE(chunks.empty());
    EXPECT_EQ(chunks[0].Data[8], 8);
    EXPECT_EQ(chunks[0].Data[9], 3);  // palette
    int plte = indexOf(chunks, "PLTE");
    ASSERT_GT(plte, 0);
    EXPECT_EQ(chunks[size_t(plte)].Data.size(), 768u);
    EXPECT_LT(plte, indexOf(chunks, "IDAT"));
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("P", 13, 7, [](int x, int y) {
                  return StripePattern(x, y, 13, 7);
              }));
}

TEST_F(PNGExport, APictureInMemoryIsWrittenWithoutTheBitImage) {
    GenericImage_a image = AllocGenericImage(5, 4, true);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 5; x++) {
            RGB c = GradientPattern(x, y, 5, 4);
            uint8_t *p = GetGenericImageRow(image, y) + 3 * x;
            p[0] = c.R;
            p[1] = c.G;
            p[2] = c.B;
        }
    std::string name = path("g.png");
    FILE *f = fopen(name.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    EXPECT_TRUE(ExportGenericImageToPNG(f, image, "in memory"));
    fclose(f);
    FreeGenericImage(&image);
    EXPECT_FALSE(BitImage_IsConstructed());
    EXPECT_EQ(Log.RenderCalls, 0);
    EXPECT_EQ(textEntries(chunksOf(ReadFile(name))),
              (std::vector<std::string>{"Description=Created with Orvanex Version " +
                                            std::string(VersionStr[0] != '\0' ? VersionStr : versionFromNumbers()),
                                        "Title=in memory"}));
    EXPECT_EQ(PillowPixels(dir, name), PatternPixelsText("RGB", 5, 4, [](int x, int y) {
                  return GradientPattern(x, y, 5, 4);
              }));
}

TEST_F(PNGExport, LibraryErrorsAreReported) {
    // A stream open only for reading: libpng's writes fail and it leaves through its error handler.
    std::string name = path("r.png");
    FILE *f = fopen(name.c_str(), "wb");
    fclose(f);
    f = fopen(name.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    GenericImage_a image = AllocGenericImage(300, 300, false);
    EXPECT_FALSE(ExportGenericImageToPNG(f, image, "r.png"));
    fclose(f);
    FreeGenericImage(&image);
    ASSERT_EQ(Messages.size(), 1u);
    EXPECT_EQ(Messages[0], "PNG library export error");
}

}  // namespace
