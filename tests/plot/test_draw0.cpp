// The redraw driver: marks narrow to the frame and slots a change affects, repairing by them,
// suspension counting, and frames drawn to the off-screen image at the places the paper maps give.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/plot/draw0.h"
#include "base/plot/frame.h"
#include "base/plot/grcolor.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"

namespace {

constexpr int Width = 200, Height = 150;

bool WorkAreaIsOffscreen(RenderDest_e dest) {
    if (dest == RenderDest_WorkArea || dest == RenderDest_OffscreenBitmap) return Gr_MakeOffscreenCurrent();
    return true;
}
void WorkAreaSize(RenderDest_e dest, int *width, int *height) {
    if (dest == RenderDest_WorkArea) *width = Width, *height = Height;
}
void NoSwap(RenderDest_e) {}
void Pitch(double *x, double *y) { *x = 40.0, *y = 40.0; }

struct Rgb_s {
    int R, G, B;
    bool operator==(const Rgb_s &o) const { return R == o.R && G == o.G && B == o.B; }
};

class RedrawTest : public ::testing::Test {
  protected:
    void SetUp() override {
        savedBase = GeneralBase;
        savedBatch = InBatchMode;
        InBatchMode = true;
        Gr_RegisterBatchProxyCallbacks();
        if (CurrentColorMap[0].empty()) {
            ASSERT_TRUE(Gr_AllocColorTables());
            for (int group = NumColorMapGroups - 1; group >= 0; group--) Gr_InstallColorMap(group);
        }
        if (PlXPoly.empty()) {
            ASSERT_TRUE(VDI_AllocPolygonBuffers());
        }
        ASSERT_TRUE(Gr_ConstructOffscreenImage(Width, Height, ExportRegion_WorkArea));
        SetUsableWorkAreaSize(Width, Height);
        InitializeFrameFactoryDefaults();
        ASSERT_TRUE(CreateNewFrame());
        ASSERT_TRUE(CreateNewFrame());
        RedrawCounters = {};
    }
    void TearDown() override {
        VDI_SetRenderDest(RenderDest_None);
        DeleteAllFrames();
        Gr_DestroyOffscreenImage();
        Gr_RegisterBatchProxyCallbacks();
        GeneralBase = savedBase;
        InBatchMode = savedBatch;
    }
    // Destination 0 as a window would have it, drawn into the memory image.
    void useWindow() {
        InBatchMode = false;
        RenderDestRegisterCallback(WorkAreaIsOffscreen);
        RenderDestSizeRegisterCallback(WorkAreaSize);
        SwapBuffersRegisterCallback(NoSwap);
        DotPitchRegisterCallback(Pitch);
    }
    Rgb_s pixel(int x, int y) {
        std::vector<uint8_t> row(size_t(Width) * 3);
        EXPECT_TRUE(Gr_PrepareOffScreenImageForPixelAccess());
        EXPECT_TRUE(Gr_GetRGBPixelRow(y, row.data()));
        return {row[size_t(x) * 3], row[size_t(x) * 3 + 1], row[size_t(x) * 3 + 2]};
    }
    GeneralBase_s savedBase;
    bool savedBatch = false;
};

TEST_F(RedrawTest, RepairingRebuildsOnlyWhatTheMarksCover) {
    useWindow();
    RepairFramesOnScreen(RedrawReason_AutoRedraw);
    EXPECT_EQ(RedrawCounters.SlotsBuilt, 16);  // two new frames, eight slots each
    EXPECT_FALSE(FrameNeedsScreenUpdate(FrameStackGet(0)));
    EXPECT_FALSE(FrameNeedsScreenUpdate(FrameStackGet(1)));

    RepairFramesOnScreen(RedrawReason_AutoRedraw);  // nothing marked: the lists are called
    EXPECT_EQ(RedrawCounters.SlotsBuilt, 16);

    MarkFrameDataForScreenUpdate(FrameStackGet(0));  // the four data slots of the lower frame
    EXPECT_TRUE(FrameNeedsScreenUpdate(FrameStackGet(0)));
    EXPECT_FALSE(FrameNeedsScreenUpdate(FrameStackGet(1)));
    RepairFramesOnScreen(RedrawReason_AutoRedraw);
    EXPECT_EQ(RedrawCounters.SlotsBuilt, 20);

    // A style change of the current (top) frame marks that frame alone.
    MarkFrameStyleForScreenUpdate(CurFrame);
    EXPECT_FALSE(FrameNeedsScreenUpdate(FrameStackGet(0)));
    RepairFramesOnScreen(RedrawReason_AutoRedraw);
    EXPECT_EQ(RedrawCounters.SlotsBuilt, 24);  // slots 0, 1, 6 and 7

    // In 3D a view change keeps the device-drawn data slots.
    CurFrame->PlotType = PlotType_Cartesian3D;
    MarkFrameViewForScreenUpdate(CurFrame);
    const bool *valid = CurFrame->DrawState.SlotValid[0];
    EXPECT_TRUE(valid[2] && valid[3] && valid[4] && valid[5]);
    EXPECT_FALSE(valid[1] || valid[6]);
    CurFrame->PlotType = PlotType_Cartesian2D;
    MarkFrameViewForScreenUpdate(CurFrame);
    EXPECT_FALSE(valid[2]);
}

TEST_F(RedrawTest, BatchModeNeverDrawsTheWorkArea) {
    MarkEverythingForScreenUpdate();
    ForceViewUpdateOnScreen();
    ForceStyleUpdateOnScreen();
    EXPECT_EQ(RedrawCounters.SlotsBuilt, 0);
    EXPECT_GT(RedrawCounters.FramesChecked, 0);  // the side effects still ran
}

TEST_F(RedrawTest, SuspensionCountsInPairs) {
    EXPECT_FALSE(IsGraphicsSuspended());
    SuspendGraphics();
    SuspendGraphics();
    EXPECT_TRUE(IsWorkAreaSuspended());
    UnsuspendGraphics();
    EXPECT_TRUE(IsGraphicsSuspended());
    EXPECT_TRUE(IsStatusLineSuspended());
    UnsuspendGraphics();
    EXPECT_FALSE(IsGraphicsSuspended());
    EXPECT_FALSE(IsWorkAreaSuspended());
    UnsuspendGraphics();  // one too many is harmless
    EXPECT_FALSE(IsGraphicsSuspended());
}

TEST_F(RedrawTest, FramesLandWhereThePaperMapsPutThem) {
    // Landscape letter shown whole: the region 11.1 by 8.6 inches is height-limited in 199 by 149
    // pixels, 149 / 8.6 pixels an inch, centred across.
    GeneralBase.Interface.ScrBackgroundColor = 0;  // black around the paper
    DeleteAllFrames();
    ASSERT_TRUE(CreateNewFrame());
    CurFrame->Style.FrameLayout.BackgroundColor = 1;  // red
    ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
    ASSERT_TRUE(RedrawAllFrames(RedrawReason_UserReqRedrawAllFrames));
    double perInch = 149.0 / 8.6, centreX = 99.5;
    auto screenX = [&](double inches) { return centreX + (inches - 5.5) * perInch; };
    auto screenY = [&](double inches) { return (inches + 0.05) * perInch; };
    int row = int(screenY(4.25));
    EXPECT_EQ(pixel(int(screenX(-0.03)), row), (Rgb_s{0, 0, 0}));          // left of the sheet
    EXPECT_EQ(pixel(int(screenX(0.5)), row), (Rgb_s{255, 255, 255}));      // the sheet
    EXPECT_EQ(pixel(int(screenX(5.5)), row), (Rgb_s{255, 0, 0}));          // inside the frame
    EXPECT_EQ(pixel(int(screenX(5.5)), int(screenY(8.4))), (Rgb_s{255, 255, 255}));  // below it
    // The frame's edges within a pixel of where the map puts them.
    EXPECT_EQ(pixel(int(screenX(1.0)) + 2, row), (Rgb_s{255, 0, 0}));
    EXPECT_EQ(pixel(int(screenX(1.0)) - 2, row), (Rgb_s{255, 255, 255}));
}

}  // namespace
