// The PNG writer. libpng leaves an error by a long jump, so the part of the writer that calls it
// holds no object with a destructor; the row buffer and the texts are made and freed around it.
#include "base/output/imgpng.h"

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <ctime>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/strutil.h"
#include "base/output/bitimage.h"

namespace {

// Where the rows come from: the bit image state, or a generic image.
struct PNGRowSource_s {
    bool UsePalette;
    GenericImage_a Image;  // null: the bit image state
};

// The texts of the file, in buffers libpng may take (it wants writable strings and copies them).
struct PNGTexts_s {
    char DescriptionKey[12], TitleKey[6];
    char Description[64];
    char *Title;
};

bool getRow(const PNGRowSource_s &source, int row, uint8_t *out, int width) {
    if (source.Image != nullptr) {
        memcpy(out, GetGenericImageRow(source.Image, row), size_t(width) * 3);
        return true;
    }
    return source.UsePalette ? BitImage_GetIndexedPixelRow(row, out) : BitImage_GetRGBPixelRow(row, out);
}

// Returns 1 on success, 0 when interrupted, -1 after a library error (reported by the caller).
int writeBody(png_structp png, png_infop info, FILE *file, int width, int height, const PNGRowSource_s &source,
              PNGTexts_s *texts, uint8_t *rowBuffer) {
    if (setjmp(png_jmpbuf(png))) return -1;
    png_init_io(png, file);
    png_set_compression_level(png, 9);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8,
                 source.UsePalette ? PNG_COLOR_TYPE_PALETTE : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (source.UsePalette) {
        png_color palette[256];
        for (int i = 0; i < 256; i++)
            BitImage_GetExportColorPaletteRGB(i, &palette[i].red, &palette[i].green, &palette[i].blue);
        png_set_PLTE(png, info, palette, 256);
    }
    time_t now = time(nullptr);
    struct tm utc;
    gmtime_r(&now, &utc);
    png_time modTime;
    png_convert_from_struct_tm(&modTime, &utc);
    png_set_tIME(png, info, &modTime);

    png_text text[2];
    memset(text, 0, sizeof(text));
    text[0].compression = PNG_TEXT_COMPRESSION_NONE;
    text[0].key = texts->DescriptionKey;
    text[0].text = texts->Description;
    text[1].compression = PNG_TEXT_COMPRESSION_NONE;
    text[1].key = texts->TitleKey;
    text[1].text = texts->Title;
    png_set_text(png, info, text, 2);

    png_write_info(png, info);
    for (int row = 0; row < height; row++) {
        if (!getRow(source, row, rowBuffer, width)) return 0;
        png_write_row(png, rowBuffer);
    }
    png_write_end(png, info);
    return 1;
}

bool writePNG(FILE *file, int width, int height, const PNGRowSource_s &source, const char *title) {
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, GenericPNGErrorCallback, GenericPNGWarningCallback);
    if (png == nullptr) {
        ErrMsg("PNG library export error");
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (info == nullptr) {
        png_destroy_write_struct(&png, nullptr);
        ErrMsg("Cannot allocate png information structure.");
        return false;
    }
    PNGTexts_s texts;
    snprintf(texts.DescriptionKey, sizeof(texts.DescriptionKey), "Description");
    snprintf(texts.TitleKey, sizeof(texts.TitleKey), "Title");
    snprintf(texts.Description, sizeof(texts.Description), "Created with Orvanex Version %s", BitImage_VersionText());
    texts.Title = DupString(title != nullptr ? title : "");
    auto *rowBuffer = static_cast<uint8_t *>(newmalloc(size_t(width) * 3));
    if (rowBuffer == nullptr || texts.Title == nullptr) {
        png_destroy_write_struct(&png, &info);
        newfree(rowBuffer);
        newfree(texts.Title);
        OutOfMemoryMsg();
        return false;
    }
    int result = writeBody(png, info, file, width, height, source, &texts, rowBuffer);
    png_destroy_write_struct(&png, &info);
    newfree(rowBuffer);
    newfree(texts.Title);
    if (result < 0) ErrMsg("PNG library export error");
    return result > 0;
}

}  // namespace

void GenericPNGErrorCallback(png_struct_def *png, const char *message) {
    if (GeneralBase.Debug && message != nullptr) fprintf(StdError, "PNG error: %s\n", message);
    png_longjmp(png, 1);
}

void GenericPNGWarningCallback(png_struct_def *png, const char *message) {
    if (GeneralBase.Debug && message != nullptr) fprintf(StdError, "PNG warning: %s\n", message);
}

bool ExportPNG(FILE *file, ExportRegion_e region, int width, bool convertTo256Colors, const char *title) {
    BitImageType_e type = convertTo256Colors ? BitImageType_ColorPalette : BitImageType_RGB;
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(type, convertTo256Colors ? 256 : 0, region, width, height)) return false;
    PNGRowSource_s source = {convertTo256Colors, nullptr};
    bool ok = writePNG(file, width, height, source, title);
    BitImage_DestroyBitImage();
    return ok;
}

bool ExportGenericImageToPNG(FILE *file, GenericImage_a image, const char *title) {
    PNGRowSource_s source = {false, image};
    return writePNG(file, GetGenericImageWidth(image), GetGenericImageHeight(image), source, title);
}
