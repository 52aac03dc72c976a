// The redraw driver: marks, repairing the work area by them, and drawing frames slot by slot to
// whatever destination is selected. Display lists are kept only on a work area that has an OpenGL
// context of its own (a window); without one every slot runs its function directly.
#include "base/plot/draw0.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "base/data/dataset.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/plot/frame.h"
#include "base/plot/solntime.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"

PlotLayerHooks_s PlotLayerHooks{};
RedrawCounters_s RedrawCounters{};
bool ManualDoubleBuffer = false, ManualSwapRequired = false;

namespace {

enum DrawState_e { DrawState_Full = 0, DrawState_Approximate = 1 };

int WorkAreaSuspended = 0, StatusLineSuspended = 0;
bool IsRedrawing = false, InRepair = false, InSideEffects = false, FrameOrderUpToDate = true;
bool WorkAreaNeedsUpdate = true;
int DrawEventNesting = 0;

struct DrawEventCallback_s {
    DrawEventCallback_pf Callback;
    void *ClientData;
};
std::vector<DrawEventCallback_s> PreDrawCallbacks, PostDrawCallbacks;

void clearSlots(Frame_s *frame, int first, int last, bool fullState = true, bool approximateState = true) {
    if (frame == nullptr) return;
    FrameDrawState_s &state = frame->DrawState;
    for (int drawState = 0; drawState < 2; drawState++) {
        if ((drawState == DrawState_Full && !fullState) || (drawState == DrawState_Approximate && !approximateState))
            continue;
        for (int slot = first; slot <= last; slot++) state.SlotValid[drawState][slot] = false;
        state.NeedsUpdate[drawState] = true;
    }
    // A change shows again even where an interrupted redraw held the frame back.
    state.ScreenUpdateEnabled = true;
}

bool deviceDrawn3D(const Frame_s *frame) { return frame->PlotType == PlotType_Cartesian3D; }

bool isLinePlot(const Frame_s *frame) {
    return frame->PlotType == PlotType_XYLine || frame->PlotType == PlotType_PolarLine;
}

bool callHook(bool (*hook)()) { return hook == nullptr || hook(); }

// ---- frame geometry on the destination -----------------------------------------------------------

struct ScreenRect_s {
    double X1, Y1, X2, Y2;  // left, top, right, bottom in pixels
};

ScreenRect_s frameOnScreen() {
    const Transformations_s &maps = CurTransforms;
    double x1 = CoordMap_X(maps.Frame2Screen, 0.0), x2 = CoordMap_X(maps.Frame2Screen, 1.0);
    double y1 = CoordMap_Y(maps.Frame2Screen, 1.0), y2 = CoordMap_Y(maps.Frame2Screen, 0.0);
    return {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)};
}

// The colour that stands out against what lies behind a transparent frame.
int dominantBackColor(const Frame_s *frame) {
    if (!frame->Style.FrameLayout.IsTransparent) return frame->Style.FrameLayout.BackgroundColor;
    return GeneralBase.Paper.BackgroundColor;
}

int frameBorderColor(bool printing) {
    const Frame_s *frame = CurFrame;
    if (CurrentRenderDest <= RenderDest_ExampleColor && !printing) return FrameHighlightColorIndex;
    int back = dominantBackColor(frame);
    if (back == 64) back = 7;  // light gray counts as white
    if (frame->Style.FrameLayout.IsTransparent) return back == 7 ? 0 : 7;
    return back == 0 ? 7 : 0;
}

// ---- slots -----------------------------------------------------------------------------------------

bool slotFrameStart() {
    EraseFrame();
    return true;
}

bool slotPreData() {
    if (CurFrame->PlotType == PlotType_Cartesian3D) {
        if (!callHook(PlotLayerHooks.DrawPreData)) return false;
        return callHook(PlotLayerHooks.Plot3DPreDataInHardware);
    }
    return callHook(PlotLayerHooks.DrawPreData);
}

bool slotData(int slot) {
    Frame_s *frame = CurFrame;
    if (frame->DataSet == nullptr) return true;
    if (frame->PlotType == PlotType_Cartesian2D) {
        if (slot == 2) return callHook(PlotLayerHooks.Plot2DFieldData);
        if (slot == 3) return callHook(PlotLayerHooks.Plot2DCOBData);
        return true;
    }
    if (isLinePlot(frame)) return slot != 2 || callHook(PlotLayerHooks.PlotAllLineMaps);
    if (frame->PlotType == PlotType_Cartesian3D) {
        VDI_Set_Clipping_Mode(ClippingMode_3D);
        switch (slot) {
        case 2: return callHook(PlotLayerHooks.Plot3DOpaqueFieldDataInHardware);
        case 3: return callHook(PlotLayerHooks.Plot3DOpaqueCOBDataInHardware);
        case 4: return callHook(PlotLayerHooks.Plot3DViewSensitiveDataInHardware);
        case 5: return callHook(PlotLayerHooks.Plot3DTranslucentDataInHardware);
        default: return true;
        }
    }
    return true;
}

bool slotPostData() {
    if (CurFrame->PlotType == PlotType_Cartesian3D && !callHook(PlotLayerHooks.Plot3DPostDataInHardware)) return false;
    VDI_Set_Clipping_Mode(ClippingMode_2D);
    return callHook(PlotLayerHooks.DrawPostData);
}

bool slotFinish() {
    FrameDrawState_s &state = CurFrame->DrawState;
    if (CurrentRenderDest == RenderDest_WorkArea && state.WasInterrupted && GeneralBase.Interface.BeepOnFrameInterrupt)
        fputc('\a', stderr);
    DrawFrameBorderAndHeader(false, true);
    return true;
}

const char *const SlotNames[NumFrameDrawSlots] = {
    "DL_FRAME_START",          "DL_FRAME_PREDATA",     "DL_FRAME_BASE_ZONE_MAP_DATA", "DL_FRAME_BASE_COB_DATA",
    "DL_FRAME_VIEW_SENSITIVE_DATA", "DL_FRAME_PANELSORTED_DATA", "DL_FRAME_POSTDATA",   "DL_FRAME_FINISH"};

bool runSlot(int slot) {
    switch (slot) {
    case 0: return slotFrameStart();
    case 1: return slotPreData();
    case 6: return slotPostData();
    case 7: return slotFinish();
    default: return slotData(slot);
    }
}

// One slot: trace, interrupt test, then build (run the slot's function) or keep what the screen has.
bool processRendering(int slot, bool full, DisplayListMode_e mode) {
    Frame_s *frame = CurFrame;
    if (GeneralBase.Debug) fprintf(StdError, "ProcessRendering: %s\n", SlotNames[slot]);
    bool dataSlot = slot >= 2 && slot <= 5;
    if (dataSlot && Interrupted) {
        frame->DrawState.WasInterrupted = true;
        return false;
    }
    int drawState = full ? DrawState_Full : DrawState_Approximate;
    bool &valid = frame->DrawState.SlotValid[drawState][slot];
    // On the work area with lists a valid slot is called as it was built; elsewhere every slot is
    // drawn afresh.
    bool useLists = OkToUseDisplayLists(frame, !full);
    DisplayList_s *&list = frame->DisplayLists[drawState];
    if (useLists && list == nullptr) list = VDI_AllocDisplayList(NumFrameDrawSlots);
    if (useLists && list != nullptr && valid) {
        if (mode != DisplayListMode_BuildOnly && frame->DrawState.IsVisible) VDI_CallDisplayList(list, slot, false);
        return true;
    }
    if (mode == DisplayListMode_Empty) return true;
    RedrawCounters.SlotsBuilt++;
    bool building = useLists && list != nullptr && VDI_BeginDisplayList(list, slot, false, !full, mode, nullptr);
    bool ok = runSlot(slot);
    if (building) VDI_EndDisplayList();
    if (CurrentRenderDest == RenderDest_WorkArea) valid = ok && building;
    if (!ok) frame->DrawState.WasInterrupted = true;
    return ok;
}

// The frame checks that bring derived state up to date before a frame is drawn.
bool checkFrame() {
    RedrawCounters.FramesChecked++;
    SetTransformations();
    CheckToResetViewStack();
    SetTransformations();
    return !Interrupted;
}

void swapBuffers() {
    for (int n = 0; n < FrameStackCount(); n++) {
        FrameDrawState_s &state = FrameStackGet(n)->DrawState;
        state.FrontLevel = state.BackLevel;
    }
    if (ManualDoubleBuffer)
        ManualSwapRequired = true;
    else
        VDI_SwapBuffers();
}

bool runDrawEventCallbacks(std::vector<DrawEventCallback_s> &callbacks, RedrawReason_e reason) {
    for (const DrawEventCallback_s &entry : callbacks)
        if (!entry.Callback(reason, entry.ClientData)) return false;
    return true;
}

}  // namespace

// ---- marks --------------------------------------------------------------------------------------

void MarkFrameMinimumForScreenUpdate(Frame_s *frame) { clearSlots(frame, 0, 0); }
void MarkEntireFrameApproximateStateForScreenUpdate(Frame_s *frame) { clearSlots(frame, 0, 7, false, true); }
void MarkFramePreDataForScreenUpdate(Frame_s *frame) { clearSlots(frame, 1, 1); }
void MarkFramePostDataForScreenUpdate(Frame_s *frame) { clearSlots(frame, 6, 6); }
void MarkFrameStyleForScreenUpdate(Frame_s *frame) {
    clearSlots(frame, 0, 1);
    clearSlots(frame, 6, 7);
}
void MarkFrameViewForScreenUpdate(Frame_s *frame) {
    if (frame == nullptr) return;
    clearSlots(frame, 1, 1);
    clearSlots(frame, 6, 6);
    // Device-drawn 3D keeps its data lists: the view is a matrix in front of them.
    if (!deviceDrawn3D(frame)) clearSlots(frame, 2, 5);
}
void MarkFrameLightSourceForScreenUpdate(Frame_s *frame) { MarkFrameViewForScreenUpdate(frame); }
void MarkFrameDataForScreenUpdate(Frame_s *frame) { clearSlots(frame, 2, 5); }
void MarkFrameZonesForScreenUpdate(Frame_s *frame) {
    clearSlots(frame, 2, 2);
    clearSlots(frame, 5, 5);
}
void MarkFrameViewSensitiveObjectsForScreenUpdate(Frame_s *frame) { clearSlots(frame, 4, 4); }
void MarkFrameSortedItemsForScreenUpdate(Frame_s *frame) { clearSlots(frame, 5, 5); }
void MarkEntireFrameForScreenUpdate(Frame_s *frame) { clearSlots(frame, 0, 7); }
void MarkFrameSizeAndPositionForScreenUpdate(Frame_s *frame) {
    clearSlots(frame, 0, 7);
    WorkAreaNeedsUpdate = true;
}

void MarkWorkAreaForScreenUpdate() {
    WorkAreaNeedsUpdate = true;
    for (int n = 0; n < FrameStackCount(); n++) MarkEntireFrameForScreenUpdate(FrameStackGet(n));
}

void MarkEverythingForScreenUpdate() { MarkWorkAreaForScreenUpdate(); }

void RecalcScreenUpdateStatusForDrawState(Frame_s *frame, int drawState) {
    bool any = WorkAreaNeedsUpdate;
    for (int slot = 0; slot < NumFrameDrawSlots && !any; slot++) any = !frame->DrawState.SlotValid[drawState][slot];
    frame->DrawState.NeedsUpdate[drawState] = any;
}

bool FrameNeedsScreenUpdate(const Frame_s *frame) {
    // The approximate state counts only for a frame that may be drawn approximately.
    bool mayApproximate = GeneralBase.Interface.UseApproximatePlots && !frame->DrawState.AlwaysFull;
    return frame->DrawState.NeedsUpdate[DrawState_Full] ||
           (mayApproximate && frame->DrawState.NeedsUpdate[DrawState_Approximate]);
}

// ---- decisions ----------------------------------------------------------------------------------

bool FrameDefaultsToFullDrawState(const Frame_s *frame) {
    const Interface_s &ui = GeneralBase.Interface;
    if (!ui.UseApproximatePlots) return true;
    switch (ui.PlotApproximationMode) {
    case 0: return true;
    case 1: return frame == FrameStackGet(GetTopFrameStack());
    default: return false;
    }
}

double GetApproximateNumberOfPointsDrawnForFrame(Frame_s *frame) {
    if (frame->DataSet == nullptr) return 0.0;
    const Set_a *zones = GetActiveRelevantZones(frame);
    double total = 0.0;
    for (SetIndex_t z = zones != nullptr ? GetNextMember(zones, -1) : -1; z >= 0; z = GetNextMember(zones, z)) {
        const ZoneSpec_s *spec = GetZoneSpec(frame->DataSet, EntIndex_t(z));
        double i = spec->NumPtsI, j = spec->NumPtsJ, k = spec->NumPtsK;
        bool volume = spec->Type == ZoneType_FETetra || spec->Type == ZoneType_FEBrick ||
                      (spec->Type == ZoneType_Ordered && i > 1 && j > 1 && k > 1);
        if (!volume)
            total += spec->Type == ZoneType_Ordered ? i * j * k : i;
        else if (spec->Type == ZoneType_Ordered)
            total += 2 * (i * j + j * k + i * k);  // the six faces
        else
            total += 6 * std::pow(i, 2.0 / 3.0);
    }
    return total;
}

bool DrawFrameAlwaysAsFull(Frame_s *frame) {
    if (!GeneralBase.Interface.UseApproximatePlots) return true;
    return FrameDefaultsToFullDrawState(frame) &&
           GetApproximateNumberOfPointsDrawnForFrame(frame) <= GeneralBase.Interface.NumPtsAllowedBeforeApprox;
}

bool DoFullDrawingForFrameAndRedrawReason(const Frame_s *frame, RedrawReason_e reason) {
    bool defaultsFull = FrameDefaultsToFullDrawState(frame), alwaysFull = frame->DrawState.AlwaysFull;
    bool top = frame == FrameStackGet(GetTopFrameStack());
    switch (reason) {
    case RedrawReason_UserReqRedrawActiveFrame:
    case RedrawReason_Animation: return top || alwaysFull || defaultsFull;
    case RedrawReason_UserReqTraceActiveFrame: return top ? alwaysFull : alwaysFull || defaultsFull;
    case RedrawReason_UserReqRedrawAllFrames: return true;
    case RedrawReason_UserReqTraceAllFrames:
    case RedrawReason_PreFullRedrawTraceOfAllFrames: return alwaysFull;
    case RedrawReason_InteractiveDataViewChange:
    case RedrawReason_InteractivePaperViewChange:
    case RedrawReason_InteractiveStyleChange:
    case RedrawReason_RedrawForcedViewUpdate:
    case RedrawReason_RedrawForcedStyleUpdate:
        return alwaysFull || (!GeneralBase.Interface.UseApproximatePlots && defaultsFull);
    default: return alwaysFull || defaultsFull;
    }
}

bool OkToUseDisplayLists(const Frame_s *, bool isLight) {
    // Lists live in the work area's own context, which a run without a window does not have.
    const Interface_s &ui = GeneralBase.Interface;
    if (InBatchMode || CurrentRenderDest != RenderDest_WorkArea || !ui.UseDisplayLists) return false;
    return !ui.CacheLightDisplayListsOnly || isLight;
}

bool OrvanexIsRedrawing() { return IsRedrawing; }

// ---- callbacks ----------------------------------------------------------------------------------

bool DrawEventAddPreDrawCallback(DrawEventCallback_pf callback, void *clientData) {
    PreDrawCallbacks.push_back({callback, clientData});
    return true;
}

bool DrawEventAddPostDrawCallback(DrawEventCallback_pf callback, void *clientData) {
    PostDrawCallbacks.push_back({callback, clientData});
    return true;
}

void MopupDrawEventCallbackInfo() {
    PreDrawCallbacks.clear();
    PostDrawCallbacks.clear();
}

void DisableScreenUpdateUntilNextFrameChange(Frame_s *frame) { frame->DrawState.ScreenUpdateEnabled = false; }
void EnableScreenUpdateForFrame(Frame_s *frame) { frame->DrawState.ScreenUpdateEnabled = true; }
void SetFrameOrderOutOfDateOnScreen() {
    FrameOrderUpToDate = false;
    MarkWorkAreaForScreenUpdate();
}
void SetFrameOrderUpToDateOnScreen() { FrameOrderUpToDate = true; }
bool IsFrameOrderUpToDateOnScreen() { return FrameOrderUpToDate; }

// ---- suspension ---------------------------------------------------------------------------------

void SuspendWorkArea() { WorkAreaSuspended++; }
void UnsuspendWorkArea() {
    if (WorkAreaSuspended > 0) WorkAreaSuspended--;
}
bool IsWorkAreaSuspended() { return WorkAreaSuspended > 0; }
void SuspendStatusLine() { StatusLineSuspended++; }
void UnsuspendStatusLine() {
    if (StatusLineSuspended > 0) StatusLineSuspended--;
}
bool IsStatusLineSuspended() { return StatusLineSuspended > 0; }
void SuspendGraphics() {
    GraphicsSuspended++;
    SuspendStatusLine();
    SuspendInterface();
    SuspendWorkArea();
}
void UnsuspendGraphics() {
    if (GraphicsSuspended == 0) return;
    GraphicsSuspended--;
    UnsuspendStatusLine();
    UnsuspendInterface();
    UnsuspendWorkArea();
}
bool IsGraphicsSuspended() { return GraphicsSuspended > 0; }

// ---- drawing the parts ----------------------------------------------------------------------------

void EraseFrame() {
    const FrameLayout_s &layout = CurFrame->Style.FrameLayout;
    if (layout.IsTransparent) return;
    ScreenRect_s r = frameOnScreen();
    VDI_SelectColorMapGroup(0);
    VDI_SetClipping(r.X1, r.Y1, r.X2, r.Y2, true);
    VDI_Set_Fill_Color(layout.BackgroundColor, false, 0);
    VDI_Set_Line_Color(layout.BackgroundColor, 1, false, 0);
    VDI_Rectangle(r.X1, r.Y1, r.X2, r.Y2, false, true);
}

void DrawFrameBorderAndHeader(bool forceColorChoice, bool drawBorder) {
    Frame_s *frame = CurFrame;
    const FrameLayout_s &layout = frame->Style.FrameLayout;
    bool outlineAnyway = CurrentRenderDest <= RenderDest_ExampleColor && GeneralBase.Interface.ShowFrameBordersWhenOff;
    if (!layout.ShowBorder && !outlineAnyway) return;
    ScreenRect_s r = frameOnScreen();
    VDI_SelectColorMapGroup(0);
    VDI_SetClipping(r.X1, r.Y1, r.X2, r.Y2, true);
    int color = drawBorder ? frameBorderColor(CurrentRenderDest > RenderDest_ExampleColor)
                           : (layout.IsTransparent ? GeneralBase.Interface.ScrBackgroundColor : layout.BackgroundColor);
    if (!layout.ShowBorder) color = drawBorder ? frameBorderColor(false) : color;
    // The thickness is a fraction of the frame height, at least one whole pixel.
    double pixels = layout.BorderThickness * (r.Y2 - r.Y1);
    int thickness = std::max(1, int(pixels + 0.499));
    VDI_Set_Line_Color(color, 1, false, 0);
    VDI_Set_Line_Style(0, LinePattern_Solid, 0, LineCap_Flat, LineJoin_Miter);
    if (CurrentRenderDest == RenderDest_Hardcopy) {
        VDI_Set_Line_Style(pixels, LinePattern_Solid, 0, LineCap_Flat, LineJoin_Miter);
        VDI_Rectangle(r.X1, r.Y1, r.X2, r.Y2, true, false);
    } else {
        for (int n = 0; n < thickness; n++) VDI_Rectangle(r.X1 + n, r.Y1 + n, r.X2 - n, r.Y2 - n, true, false);
    }
    if (layout.ShowBorder && layout.ShowHeader) {
        // The header bar; its text waits for the stroke fonts.
        double barHeight = GeneralBase.GlobalFrame.FrameHeaderHeight * std::fabs(CurTransforms.Paper2Screen.YScale);
        VDI_Set_Fill_Color(layout.HeaderColor, false, 0);
        VDI_Set_Line_Color(layout.HeaderColor, 1, false, 0);
        VDI_Rectangle(r.X1, r.Y1, r.X2, std::min(r.Y2, r.Y1 + barHeight), false, true);
    }
    (void)forceColorChoice;
}

void DrawPaper(bool clipToFrame) {
    const Paper_s &paper = GeneralBase.Paper;
    if (!paper.ShowPaper) return;
    if (CurrentRenderDest != RenderDest_WorkArea && CurrentRenderDest != RenderDest_OffscreenBitmap) return;
    double width, height, left, right, bottom, top;
    GetPaperSpecs(paper, &width, &height, &left, &right, &bottom, &top);
    const CoordMap_s &toScreen = CurTransforms.Paper2Screen;
    double x1 = CoordMap_X(toScreen, 0), y1 = CoordMap_Y(toScreen, 0);
    double x2 = CoordMap_X(toScreen, width), y2 = CoordMap_Y(toScreen, height);
    VDI_SelectColorMapGroup(0);
    if (clipToFrame) {
        ScreenRect_s r = frameOnScreen();
        VDI_SetClipping(r.X1 - 1, r.Y1 - 1, r.X2 + 1, r.Y2 + 1, true);
    } else {
        int w, h;
        VDI_GetRenderDestSize(CurrentRenderDest, &w, &h);
        VDI_SetClipping(0, 0, w - 1, h - 1, true);
    }
    int color = paper.IsTransparent ? 7 : paper.BackgroundColor;
    VDI_Set_Fill_Color(color, false, 0);
    VDI_Set_Line_Color(color, 1, false, 0);
    VDI_Rectangle(x1, y1, x2, y2, false, true);
}

void EraseWorkArea() {
    int w, h;
    VDI_GetRenderDestSize(CurrentRenderDest, &w, &h);
    VDI_SelectColorMapGroup(0);
    VDI_SetClipping(0, 0, w - 1, h - 1, false);
    VDI_Set_Fill_Color(GeneralBase.Interface.ScrBackgroundColor, false, 0);
    VDI_Set_Line_Color(GeneralBase.Interface.ScrBackgroundColor, 1, false, 0);
    VDI_Rectangle(0, 0, w, h, false, true);
}

// ---- driving --------------------------------------------------------------------------------------

bool RenderEntireFrame(bool full, bool light, DisplayListMode_e mode) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr) return false;
    RedrawCounters.FramesRendered++;
    FrameDrawState_s &state = frame->DrawState;
    state.WasInterrupted = false;
    state.BackLevel = full ? 2 : 1;
    bool ok = true;
    // Before the data, the data, after the data: slot by slot.
    for (int slot = 0; slot < NumFrameDrawSlots; slot++) {
        if (!processRendering(slot, full, mode) && slot >= 2 && slot <= 5) ok = false;
        if (Interrupted && slot >= 2 && slot <= 5) ok = false;
    }
    if (CurrentRenderDest == RenderDest_WorkArea) RecalcScreenUpdateStatusForDrawState(frame, full ? 0 : 1);
    (void)light;
    return ok;
}

bool RedrawAllFrames(RedrawReason_e reason) {
    if (IsRedrawing) return false;
    IsRedrawing = true;
    Frame_s *saved = CurFrame;
    bool limited = reason == RedrawReason_InteractiveDataViewChange || reason == RedrawReason_InteractiveStyleChange;
    // The paper behind all frames.
    if (!limited && (CurrentRenderDest == RenderDest_WorkArea || CurrentRenderDest == RenderDest_OffscreenBitmap)) {
        if (CurFrame != nullptr) SetTransformations();
        EraseWorkArea();
        DrawPaper(false);
    }
    bool ok = true;
    for (int n = 0; n < FrameStackCount(); n++) {
        Frame_s *frame = FrameStackGet(n);
        if (!frame->DrawState.ScreenUpdateEnabled && CurrentRenderDest == RenderDest_WorkArea) continue;
        if (!frame->DrawState.SelectedForDrawing) continue;
        AssignCurFrame(n);
        bool full = DoFullDrawingForFrameAndRedrawReason(frame, reason);
        SetTransformations();
        if (!checkFrame()) continue;
        if (!RenderEntireFrame(full, !full, DisplayListMode_BuildAndRun)) ok = false;
        if (CurrentRenderDest == RenderDest_WorkArea) frame->DrawState.NeedsUpdate[full ? 0 : 1] = false;
    }
    WorkAreaNeedsUpdate = false;
    CurFrame = saved;
    ResetTopFrame();
    if (CurFrame != nullptr) SetTransformations();
    IsRedrawing = false;
    return ok;
}

void DoRedrawSideEffectsForAllFrames() {
    if (InSideEffects) return;
    InSideEffects = true;
    Frame_s *saved = CurFrame;
    for (int n = 0; n < FrameStackCount(); n++) {
        Frame_s *frame = FrameStackGet(n);
        if (!FrameNeedsScreenUpdate(frame)) continue;
        AssignCurFrame(n);
        checkFrame();
    }
    CurFrame = saved;
    if (CurFrame != nullptr) SetTransformations();
    InSideEffects = false;
}

void RepairFramesOnScreen(RedrawReason_e reason) {
    if (InRepair) return;
    Interrupted = false;
    InRepair = true;
    if (DrawEventNesting++ == 0 && !runDrawEventCallbacks(PreDrawCallbacks, reason)) Interrupted = true;
    bool interactive = reason == RedrawReason_InteractiveDataViewChange ||
                       reason == RedrawReason_InteractivePaperViewChange || reason == RedrawReason_InteractiveStyleChange;
    // The frame checks of the marked frames, with their views put on the view stacks.
    Frame_s *saved = CurFrame;
    for (int n = 0; n < FrameStackCount() && !Interrupted; n++) {
        Frame_s *frame = FrameStackGet(n);
        if (!FrameNeedsScreenUpdate(frame)) continue;
        AssignCurFrame(n);
        if (!checkFrame()) Interrupted = true;
    }
    CurFrame = saved;
    for (int n = 0; n < FrameStackCount(); n++) EnableScreenUpdateForFrame(FrameStackGet(n));
    bool drawable = !InBatchMode && !IsGraphicsSuspended() && !IsWorkAreaSuspended();
    if (drawable) {
        VDI_SetRenderDest(RenderDest_WorkArea);
        for (int n = 0; n < FrameStackCount(); n++) {
            Frame_s *frame = FrameStackGet(n);
            frame->DrawState.IsVisible = true;
            frame->DrawState.AlwaysFull = DrawFrameAlwaysAsFull(frame);
        }
        bool twoPass = !ManualDoubleBuffer && GeneralBase.Interface.UseApproximatePlots && !interactive &&
                       reason != RedrawReason_Animation;
        if (twoPass) {
            RedrawAllFrames(RedrawReason_PreFullRedrawTraceOfAllFrames);
            swapBuffers();
            if (!Interrupted) {
                RedrawAllFrames(reason);
                swapBuffers();
            }
        } else {
            RedrawAllFrames(reason);
            swapBuffers();
        }
        if (Interrupted)
            for (int n = 0; n < FrameStackCount(); n++) DisableScreenUpdateUntilNextFrameChange(FrameStackGet(n));
        VDI_SetRenderDest(RenderDest_None);
    }
    if (Interrupted && drawable) StateChanged(StateChange_RedrawFinished, nullptr);
    SetFrameOrderUpToDateOnScreen();
    ResetTopFrame();
    if (--DrawEventNesting == 0) runDrawEventCallbacks(PostDrawCallbacks, reason);
    InRepair = false;
}

void ForceViewUpdateOnScreen() {
    if (InSideEffects || InRepair) return;
    if (InBatchMode || IsGraphicsSuspended() || IsWorkAreaSuspended()) {
        DoRedrawSideEffectsForAllFrames();
        return;
    }
    RepairFramesOnScreen(RedrawReason_RedrawForcedViewUpdate);
}

void ForceStyleUpdateOnScreen() {
    if (InSideEffects || InRepair) return;
    if (InBatchMode || IsGraphicsSuspended() || IsWorkAreaSuspended()) {
        DoRedrawSideEffectsForAllFrames();
        return;
    }
    RepairFramesOnScreen(RedrawReason_RedrawForcedStyleUpdate);
}

// ---- actions ------------------------------------------------------------------------------------

bool Action_Redraw(bool doFullDrawing) {
    if (CurFrame == nullptr) return false;
    MarkEntireFrameForScreenUpdate(CurFrame);
    RepairFramesOnScreen(doFullDrawing ? RedrawReason_UserReqRedrawActiveFrame : RedrawReason_UserReqTraceActiveFrame);
    return true;
}

bool Action_RedrawAll(bool doFullDrawing) {
    MarkEverythingForScreenUpdate();
    RepairFramesOnScreen(doFullDrawing ? RedrawReason_UserReqRedrawAllFrames : RedrawReason_UserReqTraceAllFrames);
    return true;
}

bool Action_DrawGraphics(bool doDrawing) {
    if (doDrawing) {
        if (!IsGraphicsSuspended()) return true;
        UnsuspendGraphics();
        MarkEverythingForScreenUpdate();
    } else {
        SuspendGraphics();
    }
    return true;
}

bool Action_DoubleBuffer(DoubleBufferAction_e action) {
    switch (action) {
    case DoubleBufferAction_On: ManualDoubleBuffer = true; break;
    case DoubleBufferAction_Off:
        ManualDoubleBuffer = false;
        ManualSwapRequired = false;
        break;
    case DoubleBufferAction_Swap:
        if (!InBatchMode && !IsGraphicsSuspended()) {
            VDI_SetRenderDest(RenderDest_WorkArea);
            VDI_SwapBuffers();
            VDI_SetRenderDest(RenderDest_None);
        }
        ManualSwapRequired = false;
        break;
    }
    return true;
}
