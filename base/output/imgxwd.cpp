// The X window dump writer: a pseudo-colour (visual class 3) Z-pixmap of depth 8.
#include "base/output/imgxwd.h"

#include <vector>

#include "base/output/bitimage.h"

namespace {

constexpr bool BigEndian = false;
constexpr uint32_t XWDHeaderSize = 108;
constexpr uint32_t XWDFileVersion = 7;
constexpr uint32_t ZPixmap = 2;
constexpr uint32_t PseudoColor = 3;
constexpr int NumColorRecords = 256;

bool writeXWD(FILE *file) {
    int width = BitImage_GetImageWidth(), height = BitImage_GetImageHeight();
    const uint32_t fields[25] = {
        XWDHeaderSize, XWDFileVersion, ZPixmap, 8 /* depth */, uint32_t(width), uint32_t(height),
        0 /* x offset */, 0 /* byte order */, 8 /* bitmap unit */, 0 /* bit order */, 8 /* bitmap pad */,
        8 /* bits per pixel */, uint32_t(width) /* bytes per line */, PseudoColor, 0, 0, 0 /* masks */,
        8 /* bits per RGB */, NumColorRecords /* colour map entries */, NumColorRecords /* colours */,
        uint32_t(width), uint32_t(height), 0, 0 /* window x, y */, 0 /* border */};
    for (uint32_t field : fields) BitImage_Write4ByteInt(file, field, BigEndian);
    BitImage_fwrite("orvanex", 1, 8, file);

    for (int i = 0; i < NumColorRecords; i++) {
        uint8_t r, g, b;
        BitImage_GetExportColorPaletteRGB(i, &r, &g, &b);
        BitImage_Write4ByteInt(file, uint32_t(i), BigEndian);
        BitImage_Write2ByteInt(file, uint16_t(r << 8), BigEndian);
        BitImage_Write2ByteInt(file, uint16_t(g << 8), BigEndian);
        BitImage_Write2ByteInt(file, uint16_t(b << 8), BigEndian);
        BitImage_Write2ByteInt(file, 0, BigEndian);  // flags and pad
    }

    std::vector<uint8_t> row(static_cast<size_t>(width));
    for (int y = 0; y < height && !BitImageIOErrorFlag; y++) {
        if (!BitImage_GetIndexedPixelRow(y, row.data())) return false;
        BitImage_fwrite(row.data(), 1, row.size(), file);
    }
    return true;
}

}  // namespace

bool ExportXWindowDump(FILE *file, ExportRegion_e region, int width) {
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(BitImageType_ColorPalette, XWDNumColors, region, width, height))
        return false;
    bool ok = writeXWD(file);
    BitImage_DestroyBitImage();
    return ok;
}
