// ExportStaticImage: open, write, close, and clean up after an interruption or a failure. Only a
// regular file is ever removed, so that a name such as a device never loses its node.
#include "base/output/imgexport.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "base/interact/fileio.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"
#include "base/output/bitimage.h"
#include "base/output/imgbmp.h"
#include "base/output/imgjpeg.h"
#include "base/output/imgpng.h"
#include "base/output/imgsun.h"
#include "base/output/imgtiff.h"
#include "base/output/imgxwd.h"

namespace {

std::string trimmed(const char *name) {
    std::string text = name != nullptr ? name : "";
    size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return std::string();
    size_t last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

// The name without its directory: the title a picture carries.
std::string baseName(const char *fileName) {
    std::string name = trimmed(fileName);
    size_t slash = name.find_last_of('/');
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

void removePartialFile(const char *fileName) {
    std::string name = trimmed(fileName);
    if (name.empty() || name.find("://") != std::string::npos) return;
    struct stat info;
    if (stat(name.c_str(), &info) == 0 && S_ISREG(info.st_mode)) unlink(name.c_str());
}

bool runWriter(ExportFormat_e format, FILE *file, const char *fileName, ExportRegion_e region, int width,
               bool convertTo256Colors, Palette_e palette) {
    switch (format) {
    case ExportFormat_SGI: return true;  // no writer: the file stays empty
    case ExportFormat_TIFF: return ExportTIFF(file, region, width, convertTo256Colors, palette);
    case ExportFormat_SunRaster: return ExportSunRaster(file, region, width);
    case ExportFormat_XWindows: return ExportXWindowDump(file, region, width);
    case ExportFormat_BMP: return ExportBMP(file, region, width, convertTo256Colors, palette);
    case ExportFormat_PNG: return ExportPNG(file, region, width, convertTo256Colors, baseName(fileName).c_str());
    case ExportFormat_JPEG: return ExportJPEG(file, region, width);
    default: return false;
    }
}

}  // namespace

bool ExportStaticImage(ExportFormat_e format, const char *fileName, ExportRegion_e region, int width,
                       bool convertTo256Colors, bool append, const char *progressText, Palette_e palette) {
    if (!CheckExportFormatAvailable(format)) return false;
    REQUIRE(IsStillImageExportFormat(format));
    if (format == ExportFormat_SunRaster || format == ExportFormat_XWindows) convertTo256Colors = true;
    if (width < 1) width = BitImage_GetDefaultExportImageWidth(region);
    BitImageIOErrorFlag = false;
    BitImageInterrupted = false;

    FILE *file = nullptr;
    if (!Open_File(&file, fileName, false, append, true, true, false)) return false;
    BitImage_SetImageRenderProgressText(progressText);
    bool ok = runWriter(format, file, fileName, region, width, convertTo256Colors, palette);
    BitImage_SetImageRenderProgressText(nullptr);
    if (fflush(file) != 0) BitImageIOErrorFlag = true;
    if (!Close_File(&file, false)) BitImageIOErrorFlag = true;

    if (BitImageInterrupted) {
        ok = false;
    } else if (BitImageIOErrorFlag) {
        ErrMsg("Disk error. You may be out of disk space. Check available disk space or write permissions. This "
               "export has been cancelled.");
        ok = false;
    }
    if (!ok && !append) removePartialFile(fileName);
    return ok;
}
