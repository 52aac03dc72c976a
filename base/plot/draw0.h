// The redraw driver. Changes never draw at once: they mark the slots of the frames they affect,
// and the screen is repaired later by the marks. The same frame rendering, called on another
// destination (the off-screen image, hard copy), makes image and vector output.
// Relies on: frame (the stack, draw states), view (maps of the frame drawn), vdi (drawing),
// genbase (paper and interface style), statechg, idle.
#pragma once

#include <cstdint>

#include "base/plot/devtypes.h"

struct Frame_s;

enum RedrawReason_e : int {
    RedrawReason_UserReqRedrawActiveFrame = 0,
    RedrawReason_UserReqTraceActiveFrame = 1,
    RedrawReason_UserReqRedrawAllFrames = 2,
    RedrawReason_UserReqTraceAllFrames = 3,
    RedrawReason_InteractiveDataViewChange = 4,
    RedrawReason_InteractivePaperViewChange = 5,
    RedrawReason_InteractiveStyleChange = 6,
    RedrawReason_Animation = 7,
    RedrawReason_AutoRedraw = 8,
    RedrawReason_RedrawForcedViewUpdate = 9,
    RedrawReason_RedrawForcedStyleUpdate = 10,
    RedrawReason_PreFullRedrawTraceOfAllFrames = 11
};

// ---- marks --------------------------------------------------------------------------------------

void MarkFrameMinimumForScreenUpdate(Frame_s *frame);
void MarkEntireFrameApproximateStateForScreenUpdate(Frame_s *frame);
void MarkFramePreDataForScreenUpdate(Frame_s *frame);
void MarkFramePostDataForScreenUpdate(Frame_s *frame);
void MarkFrameStyleForScreenUpdate(Frame_s *frame);
void MarkFrameViewForScreenUpdate(Frame_s *frame);
void MarkFrameLightSourceForScreenUpdate(Frame_s *frame);
void MarkFrameDataForScreenUpdate(Frame_s *frame);
void MarkFrameZonesForScreenUpdate(Frame_s *frame);
void MarkFrameViewSensitiveObjectsForScreenUpdate(Frame_s *frame);
void MarkFrameSortedItemsForScreenUpdate(Frame_s *frame);
void MarkEntireFrameForScreenUpdate(Frame_s *frame);
void MarkFrameSizeAndPositionForScreenUpdate(Frame_s *frame);
// The work area (paper, ruler) and every frame.
void MarkWorkAreaForScreenUpdate();
void MarkEverythingForScreenUpdate();
// The needs-update flag of a draw state, from its slots and the work area.
void RecalcScreenUpdateStatusForDrawState(Frame_s *frame, int drawState);
bool FrameNeedsScreenUpdate(const Frame_s *frame);

// ---- driving ------------------------------------------------------------------------------------

// Brings the work area up to date by the marks.
void RepairFramesOnScreen(RedrawReason_e reason);
// Draws every frame whose screen update is on, bottom to top, to the selected destination.
bool RedrawAllFrames(RedrawReason_e reason);
// Draws the current frame: before the data, the data, after the data, slot by slot. mode says
// what happens to display lists on the work area.
bool RenderEntireFrame(bool full, bool light, DisplayListMode_e mode);
void ForceViewUpdateOnScreen();
void ForceStyleUpdateOnScreen();
// The frame checks of every marked frame, without drawing.
void DoRedrawSideEffectsForAllFrames();
bool DoFullDrawingForFrameAndRedrawReason(const Frame_s *frame, RedrawReason_e reason);
bool FrameDefaultsToFullDrawState(const Frame_s *frame);
bool DrawFrameAlwaysAsFull(Frame_s *frame);
double GetApproximateNumberOfPointsDrawnForFrame(Frame_s *frame);
bool OkToUseDisplayLists(const Frame_s *frame, bool isLight);
bool OrvanexIsRedrawing();

using DrawEventCallback_pf = bool (*)(RedrawReason_e reason, void *clientData);
bool DrawEventAddPreDrawCallback(DrawEventCallback_pf callback, void *clientData);
bool DrawEventAddPostDrawCallback(DrawEventCallback_pf callback, void *clientData);
void MopupDrawEventCallbackInfo();

void DisableScreenUpdateUntilNextFrameChange(Frame_s *frame);
void EnableScreenUpdateForFrame(Frame_s *frame);
void SetFrameOrderOutOfDateOnScreen();
void SetFrameOrderUpToDateOnScreen();
bool IsFrameOrderUpToDateOnScreen();

// ---- suspension ---------------------------------------------------------------------------------

// Counters that go up and down in pairs; graphics raises the status line, the interface (whose
// counter lives with the state changes) and the work area with it.
void SuspendGraphics();
void UnsuspendGraphics();
bool IsGraphicsSuspended();
void SuspendWorkArea();
void UnsuspendWorkArea();
bool IsWorkAreaSuspended();
void SuspendStatusLine();
void UnsuspendStatusLine();
bool IsStatusLineSuspended();

// ---- the parts of a frame -----------------------------------------------------------------------

// A non-transparent frame's rectangle in its background colour.
void EraseFrame();
// The border (and header bar) of the current frame; with drawBorder off the border is erased.
void DrawFrameBorderAndHeader(bool forceColorChoice, bool drawBorder);
// The sheet in the paper colour, its margins and grid, on the screen destinations.
void DrawPaper(bool clipToFrame);
// The work area in the screen background colour.
void EraseWorkArea();
// Colour index of the current frame's border when drawn on the screen with nothing printing.
constexpr int FrameHighlightColorIndex = 65;

// The plot layers the slots call. Each draws the current frame through VDI_ and returns false when
// interrupted; until a layer exists its entry draws nothing.
struct PlotLayerHooks_s {
    bool (*Plot2DFieldData)();
    bool (*Plot2DCOBData)();
    bool (*PlotAllLineMaps)();
    bool (*Plot3DPreDataInHardware)();
    bool (*Plot3DOpaqueFieldDataInHardware)();
    bool (*Plot3DOpaqueCOBDataInHardware)();
    bool (*Plot3DViewSensitiveDataInHardware)();
    bool (*Plot3DTranslucentDataInHardware)();
    bool (*Plot3DPostDataInHardware)();
    bool (*DrawPreData)();   // grid area, grid lines, text and geometry behind the data
    bool (*DrawPostData)();  // axes, legends, text and geometry in front of the data
};
extern PlotLayerHooks_s PlotLayerHooks;

// How often each part of the driver ran; tests compare them.
struct RedrawCounters_s {
    long FramesRendered;  // RenderEntireFrame calls
    long SlotsBuilt;      // slot functions run
    long FramesChecked;   // frames brought up to date by the frame checks
};
extern RedrawCounters_s RedrawCounters;

// ---- actions ------------------------------------------------------------------------------------

// $!REDRAW (the current frame) and $!REDRAWALL; with full drawing off approximate plots may be used.
bool Action_Redraw(bool doFullDrawing);
bool Action_RedrawAll(bool doFullDrawing);
// $!DRAWGRAPHICS NO suspends drawing until $!DRAWGRAPHICS YES.
bool Action_DrawGraphics(bool doDrawing);
enum DoubleBufferAction_e { DoubleBufferAction_On = 0, DoubleBufferAction_Off = 1, DoubleBufferAction_Swap = 2 };
bool Action_DoubleBuffer(DoubleBufferAction_e action);
extern bool ManualDoubleBuffer, ManualSwapRequired;
