// The TIFF writer. Layout: the 8-byte header (its directory offset patched last), the strips, the
// colour map of a palette image, the strip offset and byte count arrays (inline in their entries
// when there is one strip), the 8, 8, 8 of an RGB image's bits per sample, the two resolutions,
// the software text, then the directory with its tags in ascending order. Everything after the
// strips starts on an even offset. Offsets count from where the TIFF starts in the file.
#include "base/output/imgtiff.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"
#include "base/output/bitimage.h"

namespace {

enum TIFFType_e : uint16_t { TIFFType_ASCII = 2, TIFFType_SHORT = 3, TIFFType_LONG = 4, TIFFType_RATIONAL = 5 };

enum TIFFKind_e { TIFFKind_RGB, TIFFKind_Palette, TIFFKind_Gray };

constexpr uint16_t TIFFVersion = 42;
constexpr uint16_t CompressionPackBits = 32773;
constexpr uint32_t ResolutionDenominator = 100000;

struct Block_s {
    bool IsRepeat;
    int Start, Length;
};

struct TIFFWriter {
    TIFFWriter(FILE *file, bool littleEndian) : File(file), Little(littleEndian) {}
    void u16(uint16_t v) { BitImage_Write2ByteInt(File, v, Little); }
    void u32(uint32_t v) { BitImage_Write4ByteInt(File, v, Little); }
    void shortEntry(uint16_t tag, uint16_t value) {
        u16(tag);
        u16(TIFFType_SHORT);
        u32(1);
        u16(value);  // an inline SHORT takes the first two bytes of the field
        u16(0);
    }
    void entry(uint16_t tag, TIFFType_e type, uint32_t count, uint32_t valueOrOffset) {
        u16(tag);
        u16(type);
        u32(count);
        u32(valueOrOffset);
    }
    // The position relative to the start of the TIFF, first padded to an even offset.
    uint32_t evenPosition(long start) {
        long position = BitImage_ftell(File);
        if ((position - start) % 2 != 0) {
            BitImage_Write1ByteInt(File, 0);
            position++;
        }
        return uint32_t(position - start);
    }
    FILE *File;
    bool Little;
};

// Packs gray levels of `bits` bits per pixel from the high bit of each byte.
void packGray(const uint8_t *levels, int width, int bits, uint8_t *out, int bytesPerRow) {
    if (bits == 8) {
        memcpy(out, levels, size_t(width));
        return;
    }
    memset(out, 0, size_t(bytesPerRow));
    for (int i = 0; i < width; i++) {
        int bit = i * bits;
        out[bit / 8] |= uint8_t(levels[i] << (8 - bits - bit % 8));
    }
}

bool writeTIFF(FILE *file, TIFFKind_e kind, int grayBits, bool littleEndian) {
    int width = BitImage_GetImageWidth(), height = BitImage_GetImageHeight();
    int bytesPerRow = kind == TIFFKind_RGB ? 3 * width : kind == TIFFKind_Palette ? width : (width * grayBits + 7) / 8;
    int rowsPerStrip = TIFF_GetRowsPerStrip(width, bytesPerRow, height);
    int numStrips = (height + rowsPerStrip - 1) / rowsPerStrip;
    TIFFWriter w(file, littleEndian);

    long start = BitImage_ftell(file);
    BitImage_fwrite(littleEndian ? "II" : "MM", 1, 2, file);
    w.u16(TIFFVersion);
    w.u32(0);  // directory offset, patched

    std::vector<uint32_t> stripOffsets(static_cast<size_t>(numStrips)), stripByteCounts(static_cast<size_t>(numStrips));
    std::vector<uint8_t> pixels(size_t(std::max(3 * width, bytesPerRow)));
    std::vector<uint8_t> packed(static_cast<size_t>(bytesPerRow));
    std::vector<uint8_t> encoded(static_cast<size_t>(2 * bytesPerRow + 2));
    for (int strip = 0; strip < numStrips && !BitImageIOErrorFlag; strip++) {
        stripOffsets[size_t(strip)] = uint32_t(BitImage_ftell(file) - start);
        uint32_t count = 0;
        int lastRow = std::min(height, (strip + 1) * rowsPerStrip);
        for (int row = strip * rowsPerStrip; row < lastRow; row++) {
            const uint8_t *rowBytes = pixels.data();
            if (kind == TIFFKind_RGB) {
                if (!BitImage_GetRGBPixelRow(row, pixels.data())) return false;
            } else {
                if (!BitImage_GetIndexedPixelRow(row, pixels.data())) return false;
                if (kind == TIFFKind_Gray) {
                    packGray(pixels.data(), width, grayBits, packed.data(), bytesPerRow);
                    rowBytes = packed.data();
                }
            }
            size_t numEncoded = TIFF_PackBits(rowBytes, bytesPerRow, encoded.data());
            BitImage_fwrite(encoded.data(), 1, numEncoded, file);
            count += uint32_t(numEncoded);
        }
        stripByteCounts[size_t(strip)] = count;
    }

    uint32_t colorMapOffset = 0;
    if (kind == TIFFKind_Palette) {
        colorMapOffset = w.evenPosition(start);
        uint8_t rgb[256][3];
        for (int i = 0; i < 256; i++) BitImage_GetExportColorPaletteRGB(i, &rgb[i][0], &rgb[i][1], &rgb[i][2]);
        for (int channel = 0; channel < 3; channel++)
            for (int i = 0; i < 256; i++) w.u16(uint16_t(rgb[i][channel] << 8));
    }
    uint32_t stripOffsetsValue = stripOffsets[0], stripByteCountsValue = stripByteCounts[0];
    if (numStrips > 1) {
        stripOffsetsValue = w.evenPosition(start);
        for (uint32_t offset : stripOffsets) w.u32(offset);
        stripByteCountsValue = w.evenPosition(start);
        for (uint32_t count : stripByteCounts) w.u32(count);
    }
    uint32_t bitsPerSampleOffset = 0;
    if (kind == TIFFKind_RGB) {
        bitsPerSampleOffset = w.evenPosition(start);
        for (int i = 0; i < 3; i++) w.u16(8);
    }
    double numerator = BitImage_GetJDotsPerInch() * ResolutionDenominator + 0.5;
    uint32_t resolution = numerator >= 4294967295.0 ? 4294967295u : uint32_t(std::max(1.0, numerator));
    uint32_t xResolutionOffset = w.evenPosition(start);
    w.u32(resolution);
    w.u32(ResolutionDenominator);
    uint32_t yResolutionOffset = w.evenPosition(start);
    w.u32(resolution);
    w.u32(ResolutionDenominator);
    const char *software = BitImage_CreatorText();
    uint32_t softwareLength = uint32_t(strlen(software) + 1);
    uint32_t softwareOffset = w.evenPosition(start);
    BitImage_fwrite(software, 1, softwareLength, file);

    uint32_t directoryOffset = w.evenPosition(start);
    uint16_t numEntries = kind == TIFFKind_Palette ? 14 : 13;
    w.u16(numEntries);
    w.entry(256, TIFFType_LONG, 1, uint32_t(width));
    w.entry(257, TIFFType_LONG, 1, uint32_t(height));
    if (kind == TIFFKind_RGB)
        w.entry(258, TIFFType_SHORT, 3, bitsPerSampleOffset);
    else
        w.shortEntry(258, uint16_t(kind == TIFFKind_Palette ? 8 : grayBits));
    w.shortEntry(259, CompressionPackBits);
    w.shortEntry(262, kind == TIFFKind_RGB ? 2 : kind == TIFFKind_Palette ? 3 : 1);
    w.entry(273, TIFFType_LONG, uint32_t(numStrips), stripOffsetsValue);
    w.shortEntry(277, kind == TIFFKind_RGB ? 3 : 1);
    w.entry(278, TIFFType_LONG, 1, uint32_t(rowsPerStrip));
    w.entry(279, TIFFType_LONG, uint32_t(numStrips), stripByteCountsValue);
    w.entry(282, TIFFType_RATIONAL, 1, xResolutionOffset);
    w.entry(283, TIFFType_RATIONAL, 1, yResolutionOffset);
    w.shortEntry(296, 2);  // inch
    w.entry(305, TIFFType_ASCII, softwareLength, softwareOffset);
    if (kind == TIFFKind_Palette) w.entry(320, TIFFType_SHORT, 768, colorMapOffset);
    w.u32(0);  // no next directory

    long end = BitImage_ftell(file);
    if (start >= 0 && end >= 0 && BitImage_fseek(file, start + 4, SEEK_SET)) {
        w.u32(directoryOffset);
        BitImage_fseek(file, end, SEEK_SET);
    }
    return true;
}

}  // namespace

int TIFF_GetRowsPerStrip(int width, int bytesPerRow, int height) {
    REQUIRE(width >= 1 && bytesPerRow >= 1 && height >= 1);
    long maxBytes = std::max(3L * width + 1, 8191L);
    long rows = std::max(1L, maxBytes / bytesPerRow);
    return int(std::min<long>(rows, height));
}

size_t TIFF_PackBits(const uint8_t *row, int numBytes, uint8_t *out) {
    // Runs of equal bytes cut into blocks of at most 128; a lone byte is a literal.
    std::vector<Block_s> raw;
    for (int i = 0; i < numBytes;) {
        int run = 1;
        while (i + run < numBytes && row[i + run] == row[i]) run++;
        while (run > 0) {
            int length = std::min(run, 128);
            raw.push_back({length >= 2, i, length});
            i += length;
            run -= length;
        }
    }
    std::vector<Block_s> blocks;
    for (size_t k = 0; k < raw.size(); k++) {
        const Block_s &block = raw[k];
        bool afterLiteral = !blocks.empty() && !blocks.back().IsRepeat;
        if (!block.IsRepeat && afterLiteral && blocks.back().Length + block.Length <= 128) {
            blocks.back().Length += block.Length;
        } else if (block.IsRepeat && block.Length == 2 && afterLiteral && k + 1 < raw.size() && !raw[k + 1].IsRepeat &&
                   blocks.back().Length + 2 + raw[k + 1].Length <= 128) {
            blocks.back().Length += 2;
        } else {
            blocks.push_back(block);
        }
    }
    size_t n = 0;
    for (const Block_s &block : blocks) {
        if (block.IsRepeat) {
            out[n++] = uint8_t(257 - block.Length);  // -(length - 1) as a signed byte
            out[n++] = row[block.Start];
        } else {
            out[n++] = uint8_t(block.Length - 1);
            memcpy(out + n, row + block.Start, size_t(block.Length));
            n += size_t(block.Length);
        }
    }
    return n;
}

bool ExportTIFF(FILE *file, ExportRegion_e region, int width, bool convertTo256Colors, Palette_e palette) {
    const ExportSetup_s &setup = GeneralBase.ExportSetup;
    TIFFKind_e kind = TIFFKind_RGB;
    BitImageType_e type = BitImageType_RGB;
    int numColors = 0;
    int grayBits = 8;
    if (palette == Palette_Monochrome || palette == Palette_PenPlotter) {
        int depth = std::clamp(setup.GrayScaleDepth, 0, 8);
        if (depth >= 2 && depth <= 4) depth = 4;  // readers know 1, 4 and 8 bits of gray
        if (depth > 4) depth = 8;
        kind = TIFFKind_Gray;
        type = BitImageType_GrayScale;
        numColors = depth;
        grayBits = std::max(1, depth);
    } else if (convertTo256Colors) {
        kind = TIFFKind_Palette;
        type = BitImageType_ColorPalette;
        numColors = 256;
    }
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(type, numColors, region, width, height)) return false;
    bool ok = writeTIFF(file, kind, grayBits, setup.TIFFByteOrder == TIFFByteOrder_Intel);
    BitImage_DestroyBitImage();
    return ok;
}
