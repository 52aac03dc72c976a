// The PostScript picture writer. The page defines its procedures in a dictionary of its own:
// read_next_byte reads one hex coded byte, unpack fills a row string from packets, and
// planar_to_rgb unpacks the three planes of a row and interleaves them for colorimage.
#include "base/output/imgps.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <string>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/output/bitimage.h"

namespace {

constexpr int HexBytesPerLine = 36;

void printPS(FILE *file, const char *format, ...) __attribute__((format(printf, 2, 3)));
void printPS(FILE *file, const char *format, ...) {
    char text[1024];
    va_list args;
    va_start(args, format);
    int n = vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    if (n > 0) BitImage_fwrite(text, 1, size_t(std::min(n, int(sizeof(text)) - 1)), file);
}

void writeProcedures(FILE *file, int width, bool isColor) {
    printPS(file, "20 dict begin\n");
    printPS(file, "/image_width %d def\n", width);
    printPS(file, "/byte_buf 1 string def\n");
    printPS(file, "/read_next_byte { currentfile byte_buf readhexstring pop 0 get } bind def\n");
    printPS(file,
            "/unpack { /str exch def /pos 0 def\n"
            "  { pos str length ge { exit } if\n"
            "    read_next_byte /n exch def\n"
            "    n 128 lt\n"
            "    { 0 1 n { pop str pos read_next_byte put /pos pos 1 add def } for }\n"
            "    { read_next_byte /v exch def 0 1 n 127 sub { pop str pos v put /pos pos 1 add def } for }\n"
            "    ifelse\n"
            "  } loop str } bind def\n");
    if (isColor) {
        printPS(file, "/red_row image_width string def\n/green_row image_width string def\n"
                      "/blue_row image_width string def\n/rgb_row image_width 3 mul string def\n");
        printPS(file, "/planar_to_rgb { red_row unpack pop green_row unpack pop blue_row unpack pop\n"
                      "  0 1 image_width 1 sub { /i exch def\n"
                      "    rgb_row i 3 mul red_row i get put\n"
                      "    rgb_row i 3 mul 1 add green_row i get put\n"
                      "    rgb_row i 3 mul 2 add blue_row i get put } for\n"
                      "  rgb_row } bind def\n");
    } else {
        printPS(file, "/gray_row image_width string def\n");
    }
}

void writeHexRow(FILE *file, const uint8_t *row, int width, std::vector<uint8_t> &packed, std::string &line) {
    static const char hexDigits[] = "0123456789abcdef";  // as "%02x" prints
    size_t n = PSImage_EncodeRow(row, width, packed.data());
    line.clear();
    for (size_t i = 0; i < n; i++) {
        line.push_back(hexDigits[packed[i] >> 4]);
        line.push_back(hexDigits[packed[i] & 15]);
        if ((i + 1) % HexBytesPerLine == 0 || i + 1 == n) line.push_back('\n');
    }
    BitImage_fwrite(line.data(), 1, line.size(), file);
}

bool writePSImage(FILE *file, bool isColor) {
    int width = BitImage_GetImageWidth(), height = BitImage_GetImageHeight();
    double pointsPerPixel = 72.0 / BitImage_GetJDotsPerInch();
    double widthPoints = width * pointsPerPixel, heightPoints = height * pointsPerPixel;
    bool landscape = !GeneralBase.Paper.OrientPortrait;
    // Whole points around the picture; the allowance keeps a size of exactly n points at n.
    int boxWidth = int(ceil((landscape ? heightPoints : widthPoints) - 1e-6));
    int boxHeight = int(ceil((landscape ? widthPoints : heightPoints) - 1e-6));

    printPS(file, "%%!PS-Adobe-3.0 EPSF-3.0\n");
    printPS(file, "%%%%BoundingBox: %d %d %d %d\n", 0, 0, boxWidth, boxHeight);
    printPS(file, "%%%%Title: Orvanex PS Bit Image\n");
    printPS(file, "%%%%Creator: %s\n", BitImage_CreatorText());
    printPS(file, "%%%%Pages: 1\n");
    printPS(file, "%%%%EndComments\n");
    printPS(file, "%%%%EndProlog\n");
    printPS(file, "%%%%Page: 1 1\n");
    writeProcedures(file, width, isColor);
    printPS(file, "gsave\n");
    printPS(file, "%f %f translate\n", landscape ? heightPoints : 0.0, 0.0);
    if (landscape) printPS(file, "90.0 rotate\n");
    printPS(file, "%f %f scale\n", widthPoints, heightPoints);
    if (isColor)
        printPS(file, "%d %d 8 [%d 0 0 %d 0 %d] { planar_to_rgb } false 3 colorimage\n", width, height, width,
                -height, height);
    else
        printPS(file, "%d %d 8 [%d 0 0 %d 0 %d] { gray_row unpack } image\n", width, height, width, -height, height);

    std::vector<uint8_t> r(static_cast<size_t>(width)), g(static_cast<size_t>(width)), b(static_cast<size_t>(width));
    std::vector<uint8_t> packed(static_cast<size_t>(2 * width + 2));
    std::string line;
    for (int row = 0; row < height && !BitImageIOErrorFlag; row++) {
        if (isColor) {
            if (!BitImage_GetRGBPlanarPixelRow(row, r.data(), g.data(), b.data())) return false;
            writeHexRow(file, r.data(), width, packed, line);
            writeHexRow(file, g.data(), width, packed, line);
            writeHexRow(file, b.data(), width, packed, line);
        } else {
            if (!BitImage_GetIndexedPixelRow(row, r.data())) return false;
            writeHexRow(file, r.data(), width, packed, line);
        }
    }
    printPS(file, "grestore\nend\nshowpage\n%%%%Trailer\n%%%%EOF\n");
    return true;
}

}  // namespace

size_t PSImage_EncodeRow(const uint8_t *row, int numBytes, uint8_t *out) {
    size_t n = 0;
    int i = 0;
    while (i < numBytes) {
        int run = 1;
        while (i + run < numBytes && run < 129 && row[i + run] == row[i]) run++;
        if (run >= 2) {
            out[n++] = uint8_t(run + 126);
            out[n++] = row[i];
            i += run;
            continue;
        }
        // Literals up to the next run of two or more equal bytes, at most 128.
        int j = i + 1;
        while (j < numBytes && j - i < 128 && !(j + 1 < numBytes && row[j] == row[j + 1])) j++;
        out[n++] = uint8_t(j - i - 1);
        for (int k = i; k < j; k++) out[n++] = row[k];
        i = j;
    }
    return n;
}

bool ExportPSImage(FILE *file, ExportRegion_e region, int width, Palette_e palette) {
    bool isColor = palette != Palette_Monochrome;
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(isColor ? BitImageType_RGB : BitImageType_GrayScale, isColor ? 0 : 8,
                                             region, width, height))
        return false;
    bool ok = writePSImage(file, isColor);
    BitImage_DestroyBitImage();
    return ok;
}
