// The JPEG writer. libjpeg's fatal errors leave through a long jump to the writer, which reports
// "Internal error exporting jpeg image."; no object with a destructor lives across it.
#include "base/output/imgjpeg.h"

#include <cstddef>
#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/outofmem.h"
#include "base/output/bitimage.h"

namespace {

struct JPEGErrorManager_s {
    jpeg_error_mgr Manager;  // first, so that the library's pointer is also ours
    jmp_buf Jump;
};

void jpegErrorExit(j_common_ptr cinfo) {
    auto *errors = reinterpret_cast<JPEGErrorManager_s *>(cinfo->err);
    longjmp(errors->Jump, 1);
}

void jpegOutputMessage(j_common_ptr cinfo) {
    if (!GeneralBase.Debug) return;
    char text[JMSG_LENGTH_MAX];
    cinfo->err->format_message(cinfo, text);
    fprintf(StdError, "JPEG: %s\n", text);
}

// Returns 1 on success, 0 when interrupted, -1 after a library error.
int writeBody(jpeg_compress_struct *cinfo, JPEGErrorManager_s *errors, FILE *file, int width, int height,
              uint8_t *rowBuffer) {
    if (setjmp(errors->Jump)) return -1;
    jpeg_create_compress(cinfo);
    jpeg_stdio_dest(cinfo, file);
    cinfo->image_width = JDIMENSION(width);
    cinfo->image_height = JDIMENSION(height);
    cinfo->input_components = 3;
    cinfo->in_color_space = JCS_RGB;
    jpeg_set_defaults(cinfo);
    if (GeneralBase.ExportSetup.JPEGEncoding == JPEGEncoding_Progressive) jpeg_simple_progression(cinfo);
    jpeg_set_quality(cinfo, JPEG_QualityFromFraction(GeneralBase.ExportSetup.Quality), TRUE);
    jpeg_start_compress(cinfo, TRUE);
    for (int row = 0; row < height; row++) {
        if (!BitImage_GetRGBPixelRow(row, rowBuffer)) {
            jpeg_abort_compress(cinfo);
            return 0;
        }
        JSAMPROW rows[1] = {rowBuffer};
        jpeg_write_scanlines(cinfo, rows, 1);
    }
    jpeg_finish_compress(cinfo);
    return 1;
}

bool writeJPEG(FILE *file, int width, int height) {
    auto *rowBuffer = static_cast<uint8_t *>(newmalloc(size_t(width) * 3));
    if (rowBuffer == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    jpeg_compress_struct cinfo;
    memset(&cinfo, 0, sizeof(cinfo));
    JPEGErrorManager_s errors;
    cinfo.err = jpeg_std_error(&errors.Manager);
    errors.Manager.error_exit = jpegErrorExit;
    errors.Manager.output_message = jpegOutputMessage;
    int result = writeBody(&cinfo, &errors, file, width, height, rowBuffer);
    jpeg_destroy_compress(&cinfo);
    newfree(rowBuffer);
    if (result < 0) ErrMsg("Internal error exporting jpeg image.");
    return result > 0;
}

}  // namespace

int JPEG_QualityFromFraction(double quality) {
    // The fraction came from a percent; the small allowance keeps 0.29 * 100 from flooring to 28.
    return std::clamp(int(floor(100.0 * quality + 1e-9)), 1, 100);
}

bool ExportJPEG(FILE *file, ExportRegion_e region, int width) {
    int height = BitImage_GetExportImageHeight(region, width);
    if (!BitImage_ConstructAndRenderBitImage(BitImageType_RGB, 0, region, width, height)) return false;
    bool ok = writeJPEG(file, width, height);
    BitImage_DestroyBitImage();
    return ok;
}
