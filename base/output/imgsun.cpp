// The Sun raster writer. The length field holds the bytes of the image data: known in advance
// for plain rows, patched at offset 16 after encoded ones.
#include "base/output/imgsun.h"

#include <algorithm>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"
#include "base/output/bitimage.h"

namespace {

constexpr uint32_t SunRasterMagic = 0x59A66A95;
constexpr uint32_t SunRasterTypeStandard = 1;
constexpr uint32_t SunRasterTypeByteEncoded = 2;
constexpr uint32_t SunRasterMapTypeRGB = 1;
constexpr uint8_t EscapeByte = 128;
constexpr bool BigEndian = false;

bool writeSunRaster(FILE *file, bool encoded) {
    int width = BitImage_GetImageWidth(), height = BitImage_GetImageHeight();
    int paddedWidth = width + width % 2;
    long start = BitImage_ftell(file);
    BitImage_Write4ByteInt(file, SunRasterMagic, BigEndian);
    BitImage_Write4ByteInt(file, uint32_t(width), BigEndian);
    BitImage_Write4ByteInt(file, uint32_t(height), BigEndian);
    BitImage_Write4ByteInt(file, 8, BigEndian);
    BitImage_Write4ByteInt(file, encoded ? 0 : uint32_t(paddedWidth) * uint32_t(height), BigEndian);
    BitImage_Write4ByteInt(file, encoded ? SunRasterTypeByteEncoded : SunRasterTypeStandard, BigEndian);
    BitImage_Write4ByteInt(file, SunRasterMapTypeRGB, BigEndian);
    BitImage_Write4ByteInt(file, 768, BigEndian);
    uint8_t map[3][256];
    for (int i = 0; i < 256; i++) BitImage_GetExportColorPaletteRGB(i, &map[0][i], &map[1][i], &map[2][i]);
    BitImage_fwrite(map, 1, sizeof(map), file);

    std::vector<uint8_t> row(size_t(paddedWidth), 0);
    std::vector<uint8_t> out(static_cast<size_t>(3 * paddedWidth));
    uint32_t length = 0;
    for (int y = 0; y < height && !BitImageIOErrorFlag; y++) {
        if (!BitImage_GetIndexedPixelRow(y, row.data())) return false;
        if (encoded) {
            size_t n = SunRaster_EncodeRow(row.data(), paddedWidth, out.data());
            BitImage_fwrite(out.data(), 1, n, file);
            length += uint32_t(n);
        } else {
            BitImage_fwrite(row.data(), 1, size_t(paddedWidth), file);
        }
    }
    if (encoded) {
        long end = BitImage_ftell(file);
        if (start >= 0 && end >= 0 && BitImage_fseek(file, start + 16, SEEK_SET)) {
            BitImage_Write4ByteInt(file, length, BigEndian);
            BitImage_fseek(file, end, SEEK_SET);
        }
    }
    return true;
}

}  // namespace

size_t SunRaster_EncodeRow(const uint8_t *row, int numBytes, uint8_t *out) {
    size_t n = 0;
    int i = 0;
    while (i < numBytes) {
        int run = 1;
        while (i + run < numBytes && run < 256 && row[i + run] == row[i]) run++;
        if (run >= 2) {
            out[n++] = EscapeByte;
            out[n++] = uint8_t(run - 1);
            out[n++] = row[i];
        } else if (row[i] == EscapeByte) {
            out[n++] = EscapeByte;
            out[n++] = 0;
        } else {
            out[n++] = row[i];
        }
        i += run;
    }
    return n;
}

bool ExportSunRaster(FILE *file, ExportRegion_e region, int width) {
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(BitImageType_ColorPalette, 256, region, width, height)) return false;
    bool ok = writeSunRaster(file, GeneralBase.ExportSetup.SunRasterFormat == SunRasterFormat_ByteEncoded);
    BitImage_DestroyBitImage();
    return ok;
}
