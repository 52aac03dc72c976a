// Classification of the export formats by the path an export takes, and the check that refuses
// the formats whose writers do not exist yet.
#include "base/output/exportsetup.h"

#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"

namespace {

// The macro words of EXPORTFORMAT by value (SUNRASTER also reads as SUNVIEW).
constexpr const char *ExportFormatWords[] = {
    "RASTERMETAFILE", "TIFF", "SGI", "SUNRASTER", "XWINDOWS", "PSIMAGE", "HPGL", "HPGL2", "PS", "EPS", "LASERGRAPHICS",
    "WINDOWSMETAFILE", "BMP", "PNG", "AVI", "CUSTOM", "JPEG", "FLASH"};
constexpr int NumExportFormats = int(sizeof(ExportFormatWords) / sizeof(ExportFormatWords[0]));
static_assert(NumExportFormats == ExportFormat_Flash + 1);

}  // namespace

bool IsVectorExportFormat(ExportFormat_e format, PrintRenderType_e renderType) {
    switch (format) {
    case ExportFormat_HPGL:
    case ExportFormat_HPGL2: return true;
    case ExportFormat_PS:
    case ExportFormat_EPS:
    case ExportFormat_WindowsMetafile: return renderType == PrintRenderType_Vector;
    default: return false;
    }
}

bool IsStillImageExportFormat(ExportFormat_e format) {
    switch (format) {
    case ExportFormat_TIFF:
    case ExportFormat_SGI:
    case ExportFormat_SunRaster:
    case ExportFormat_XWindows:
    case ExportFormat_BMP:
    case ExportFormat_PNG:
    case ExportFormat_JPEG: return true;
    default: return false;
    }
}

bool IsMovieExportFormat(ExportFormat_e format) {
    return format == ExportFormat_RasterMetafile || format == ExportFormat_AVI || format == ExportFormat_Flash;
}

bool CheckExportFormatAvailable(ExportFormat_e format) {
    REQUIRE(int(format) >= 0 && int(format) < NumExportFormats);
    // Vector output and movies have no writers yet; PSIMAGE becomes EPS, so it goes with them.
    if (IsStillImageExportFormat(format)) return true;
    ErrMsg("Export format %s is not available.", ExportFormatWords[format]);
    return false;
}
