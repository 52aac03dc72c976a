// The BMP writer. The file size (offset 2) and the image size (offset 34) are known only at the
// end and patched then; offsets count from where the bitmap starts in the file.
#include "base/output/imgbmp.h"

#include <vector>

#include "base/kernel/orvassert.h"
#include "base/output/bitimage.h"

namespace {

constexpr bool LittleEndian = true;
constexpr uint32_t FileHeaderSize = 14;
constexpr uint32_t InfoHeaderSize = 40;
constexpr int NumPaletteEntries = 256;
constexpr uint32_t BI_RGB = 0;
constexpr uint32_t BI_RLE8 = 1;

void writeHeaders(FILE *file, int width, int height, bool indexed, bool compressed) {
    uint32_t dataOffset = FileHeaderSize + InfoHeaderSize + (indexed ? NumPaletteEntries * 4 : 0);
    BitImage_fwrite("BM", 1, 2, file);
    BitImage_Write4ByteInt(file, 0, LittleEndian);  // file size, patched
    BitImage_Write2ByteInt(file, 0, LittleEndian);
    BitImage_Write2ByteInt(file, 0, LittleEndian);
    BitImage_Write4ByteInt(file, dataOffset, LittleEndian);

    BitImage_Write4ByteInt(file, InfoHeaderSize, LittleEndian);
    BitImage_Write4ByteInt(file, uint32_t(width), LittleEndian);
    BitImage_Write4ByteInt(file, uint32_t(height), LittleEndian);
    BitImage_Write2ByteInt(file, 1, LittleEndian);  // planes
    BitImage_Write2ByteInt(file, indexed ? 8 : 24, LittleEndian);
    BitImage_Write4ByteInt(file, compressed ? BI_RLE8 : BI_RGB, LittleEndian);
    BitImage_Write4ByteInt(file, 0, LittleEndian);  // image size, patched
    BitImage_Write4ByteInt(file, 0, LittleEndian);  // no pixels per metre
    BitImage_Write4ByteInt(file, 0, LittleEndian);
    BitImage_Write4ByteInt(file, indexed ? NumPaletteEntries : 0, LittleEndian);
    BitImage_Write4ByteInt(file, 0, LittleEndian);  // all colours important

    if (!indexed) return;
    int paletteSize = BitImage_GetExportPaletteSize();
    for (int i = 0; i < NumPaletteEntries; i++) {
        uint8_t r = 0, g = 0, b = 0;
        if (i < paletteSize) BitImage_GetExportColorPaletteRGB(i, &r, &g, &b);
        const uint8_t entry[4] = {b, g, r, 0};
        BitImage_fwrite(entry, 1, 4, file);
    }
}

void patchSizes(FILE *file, long start, long dataStart) {
    long end = BitImage_ftell(file);
    if (end < 0) return;
    if (BitImage_fseek(file, start + 2, SEEK_SET)) BitImage_Write4ByteInt(file, uint32_t(end - start), LittleEndian);
    if (BitImage_fseek(file, start + 34, SEEK_SET)) BitImage_Write4ByteInt(file, uint32_t(end - dataStart), LittleEndian);
    BitImage_fseek(file, end, SEEK_SET);
}

// Appends (count, value) pairs of one row of indices.
void encodeRLE8Row(const uint8_t *index, int width, std::vector<uint8_t> &out) {
    int i = 0;
    while (i < width) {
        int run = 1;
        while (i + run < width && run < 255 && index[i + run] == index[i]) run++;
        out.push_back(uint8_t(run));
        out.push_back(index[i]);
        i += run;
    }
    out.push_back(0);  // end of row
    out.push_back(0);
}

bool writeDIB(FILE *file, bool compressed) {
    int width = BitImage_GetImageWidth(), height = BitImage_GetImageHeight();
    bool indexed = BitImage_GetImageType() != BitImageType_RGB;
    REQUIRE(indexed || !compressed);
    long start = BitImage_ftell(file);
    writeHeaders(file, width, height, indexed, compressed);
    long dataStart = BitImage_ftell(file);

    int rowBytes = indexed ? width : 3 * width;
    int padBytes = BMP_GetNumPadBytes(rowBytes);
    std::vector<uint8_t> pixels(static_cast<size_t>(rowBytes));
    std::vector<uint8_t> out;
    out.reserve(size_t(rowBytes) + 4 + size_t(2 * width + 4));
    for (int row = height - 1; row >= 0 && !BitImageIOErrorFlag; row--) {
        out.clear();
        if (indexed) {
            if (!BitImage_GetIndexedPixelRow(row, pixels.data())) return false;
            if (compressed)
                encodeRLE8Row(pixels.data(), width, out);
            else
                out.assign(pixels.begin(), pixels.end());
        } else {
            if (!BitImage_GetRGBPixelRow(row, pixels.data())) return false;
            out.resize(size_t(rowBytes));
            for (int i = 0; i < width; i++) {  // B, G, R
                out[size_t(3 * i)] = pixels[size_t(3 * i + 2)];
                out[size_t(3 * i + 1)] = pixels[size_t(3 * i + 1)];
                out[size_t(3 * i + 2)] = pixels[size_t(3 * i)];
            }
        }
        if (!compressed) out.insert(out.end(), size_t(padBytes), 0);
        BitImage_fwrite(out.data(), 1, out.size(), file);
    }
    if (compressed) {
        const uint8_t endOfBitmap[2] = {0, 1};
        BitImage_fwrite(endOfBitmap, 1, 2, file);
    }
    if (start >= 0 && dataStart >= 0) patchSizes(file, start, dataStart);
    return true;
}

}  // namespace

int BMP_GetNumPadBytes(int numBytes) {
    REQUIRE(numBytes >= 0);
    return (4 - numBytes % 4) % 4;
}

bool BitImage_ExportDIB(FILE *file) { return writeDIB(file, false); }

bool BitImage_ExportCompressedDIB(FILE *file) { return writeDIB(file, true); }

bool ExportBMP(FILE *file, ExportRegion_e region, int width, bool convertTo256Colors, Palette_e palette) {
    BitImageType_e type = BitImageType_RGB;
    int numColors = 0;
    if (palette == Palette_Monochrome) {
        type = BitImageType_GrayScale;
        numColors = 8;
    } else if (convertTo256Colors) {
        type = BitImageType_ColorPalette;
        numColors = 256;
    }
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(type, numColors, region, width, height)) return false;
    bool ok = type == BitImageType_RGB ? BitImage_ExportDIB(file) : BitImage_ExportCompressedDIB(file);
    BitImage_DestroyBitImage();
    return ok;
}
