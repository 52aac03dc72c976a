// Export. Still images render the page region into an off-screen image whose paper view is the
// region itself, so that the region fills the picture; the writers then pull its rows.
#include "base/output/export.h"

#include <algorithm>

#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/output/bitimage.h"
#include "base/output/exportsetup.h"
#include "base/output/imgexport.h"
#include "base/plot/draw0.h"
#include "base/plot/frame.h"
#include "base/plot/grhw.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"

namespace {

bool regionSize(ExportRegion_e region, ExportRegionSize_s *size) {
    Rect_s rect;
    if (!GetExportRegionRect(region, &rect)) return false;
    size->Width = rect.X2 - rect.X1;
    size->Height = rect.Y2 - rect.Y1;
    size->JDotsPerIDots = 1.0;
    size->UsableWidth = std::max(WorkAreaWidth, 2);
    size->UsableHeight = std::max(WorkAreaHeight, 2);
    size->OnScreenWidth = int(size->Width * 96.0);
    size->ScreenWidth = 0;
    return size->Width > 0 && size->Height > 0;
}

bool render(ExportRegion_e region, int width, int height, bool useOffscreen) {
    // Without a window there is no screen to read: the off-screen image is the only way.
    if (!useOffscreen && !InBatchMode) {
        ErrMsg("Unable to render offscreen image.");
        return false;
    }
    if (!Gr_ConstructOffscreenImage(width, height, region)) return false;
    if (!BitImage_Render(width, height, region)) return false;
    return Gr_PrepareOffScreenImageForPixelAccess();
}

void pixelRow(int row, uint8_t *rgb) { Gr_GetRGBPixelRow(row, rgb); }

void release(bool) { Gr_DestroyOffscreenImage(); }

const BitImageDevice_s OffscreenDevice{regionSize, render, pixelRow, release};

// Frames drawn into the region: the current frame (with what shows through a transparent one) or
// all of them.
void selectFramesForDrawing(ExportRegion_e region) {
    const Frame_s *current = CurFrame;
    for (int n = 0; n < FrameStackCount(); n++) {
        Frame_s *frame = FrameStackGet(n);
        bool selected = true;
        if (region == ExportRegion_CurrentFrame && frame != current) {
            const Rect_s &a = frame->Style.FrameLayout.Rect, &b = current->Style.FrameLayout.Rect;
            bool overlaps = a.X1 < b.X2 && b.X1 < a.X2 && a.Y2 < b.Y1 && b.Y2 < a.Y1;
            selected = current->Style.FrameLayout.IsTransparent && overlaps;
        }
        frame->DrawState.SelectedForDrawing = selected;
    }
}

void selectAllFrames() {
    for (int n = 0; n < FrameStackCount(); n++) FrameStackGet(n)->DrawState.SelectedForDrawing = true;
}

}  // namespace

void RegisterBitImageDevice() { BitImage_RegisterDevice(&OffscreenDevice); }

bool GetExportRegionRect(ExportRegion_e region, Rect_s *rect) {
    if (region == ExportRegion_WorkArea) {
        *rect = GeneralBase.Paper.RegionInWorkArea;
        return true;
    }
    if (CurFrame == nullptr) return false;
    // Frame rectangles keep the bottom in Y1; the region keeps the top there.
    Rect_s r = CurFrame->Style.FrameLayout.Rect;
    if (region == ExportRegion_AllFrames) GetBoundingBoxOfAllFrames(&r);
    *rect = Rect_s{r.X1, r.Y2, r.X2, r.Y1};
    return true;
}

bool BitImage_Render(int width, int height, ExportRegion_e region) {
    Paper_s &paper = GeneralBase.Paper;
    Rect_s savedRegion = paper.RegionInWorkArea;
    bool savedRuler = paper.ShowRuler;
    paper.ShowRuler = false;
    SetUsableWorkAreaSize(width, height);
    VDI_SetRenderDest(RenderDest_OffscreenBitmap);
    Gr_FrontBuffer();
    Rect_s shown;
    if (region != ExportRegion_WorkArea && GetExportRegionRect(region, &shown)) paper.RegionInWorkArea = shown;
    selectFramesForDrawing(region);
    SetTransformations();
    Interrupted = false;
    bool ok = RedrawAllFrames(RedrawReason_UserReqRedrawAllFrames);
    VDI_SetRenderDest(RenderDest_None);
    paper.RegionInWorkArea = savedRegion;
    paper.ShowRuler = savedRuler;
    selectAllFrames();
    SetUsableWorkAreaSize(WorkAreaWidth, WorkAreaHeight);
    SetTransformations();
    if (!ok && !Interrupted) ErrMsg("Unable to render offscreen image.");
    return ok;
}

bool GoExport() {
    const ExportSetup_s &setup = GeneralBase.ExportSetup;
    auto format = ExportFormat_e(setup.ExportFormat);
    if (!CheckExportFormatAvailable(format)) return false;
    auto region = ExportRegion_e(setup.ExportRegion);
    bool to256 = setup.ConvertTo256Colors || format == ExportFormat_SGI || format == ExportFormat_SunRaster ||
                 format == ExportFormat_XWindows;
    int width = InBatchMode ? setup.ImageWidth : BitImage_GetDefaultExportImageWidth(region);
    bool ok = ExportStaticImage(format, GeneralBase.ExportFName.c_str(), region, width, to256, false, nullptr, Palette_Color);
    if (!ok && BitImageInterrupted) ErrMsg("Image export canceled.");
    return ok;
}

bool Action_Export(int region) {
    Interrupted = false;
    ExportSetup_s &setup = GeneralBase.ExportSetup;
    int savedRegion = setup.ExportRegion;
    if (region != 255) setup.ExportRegion = region;
    if (CurFrame == nullptr) {
        ErrMsg("There is no frame to export.");
        setup.ExportRegion = savedRegion;
        return false;
    }
    bool ok = GoExport();
    setup.ExportRegion = savedRegion;
    return ok;
}
