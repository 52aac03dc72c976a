// The VDI_ operations: the dispatch rule, destinations and proxy callbacks, path and polygon
// state, display lists for the redraw driver, start-up and shutdown of the device layer.
#include "base/plot/vdi.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "base/kernel/errors.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvlock.h"
#include "base/kernel/phyfile.h"

VDIHooks_s VDIHooks{};

std::vector<double> PlXPoly, PlYPoly;
int16_t NumVert = 0;
std::vector<int16_t> PtsIn;

namespace {

constexpr double Pi = 3.14159265358979323846;

RenderDestCallback_pf RenderDestCallback = nullptr;
RenderDestSizeCallback_pf RenderDestSizeCallback = nullptr;
SwapBuffersCallback_pf SwapBuffersCallback = nullptr;
DotPitchCallback_pf DotPitchCallback = nullptr;
KeyStateCallback_pf KeyStateCallback = nullptr;

// The destination VDI_SetRenderDest is handing to the render destination callback (255 outside
// that call), and what the callback answered last.
RenderDest_e DestBeingSelected = RenderDest_None;
bool RenderDestBound = true;

// Gr_Init has run and Gr_Mopup not yet.
bool DeviceLayerIsUp = false;

CoordMap_s HardcopyMap;

enum Route_e { Route_None, Route_Gr, Route_Pl };

// The one dispatch rule. No destination selected draws nowhere as well.
Route_e routeFor(RenderDest_e dest) {
    if (dest == RenderDest_Hardcopy) return Route_Pl;
    if (dest == RenderDest_OffscreenBitmap) return Route_Gr;
    if (dest == RenderDest_None || InBatchMode || GraphicsSuspended > 0) return Route_None;
    if (VDIHooks.IsWorkAreaSuspended != nullptr && VDIHooks.IsWorkAreaSuspended()) return Route_None;
    return Route_Gr;
}

Route_e route() { return routeFor(CurrentRenderDest); }

// The state of the path being drawn.
struct PathState_s {
    XY_s Current{0.0, 0.0}, Previous{0.0, 0.0};
    bool PointMovedTo = false;
    bool HoldsLines = false;
    bool IsOpen = false;
    bool StripOpen = false;  // OpenGL: the line strip of the open path is begun
};

// What the callers set last, kept so that a saved context can be sent again.
struct Request_s {
    bool LineIsRGB = false, FillIsRGB = false;
    int LineColor = 7, LinePen = 8, LineGroup = -1;
    bool LineShade = false;
    int FillColor = 7, FillGroup = -1;
    bool FillShaded = false;
    RGB_s LineRGB{255, 255, 255}, FillRGB{255, 255, 255};
    double Thickness = 0.0, PatternLength = 0.0;
    LinePattern_e Pattern = LinePattern_Solid;
    LineCap_e Cap = LineCap_Flat;
    LineJoin_e Join = LineJoin_Miter;
    FillPat_e FillPattern = FillPat_Solid;
    bool Precise = false;
    int Translucency = 0;
    WriteMode_e WriteMode = WriteMode_Normal;
    bool ClipSet = false;
    double Clip[4] = {0, 0, 0, 0};
    bool ClipToWorkArea = false;
};

PathState_s Path;
Request_s Request;

struct SavedContext_s {
    bool IsSaved = false;
    PathState_s Path;
    Request_s Request;
    GrContext_s Cache;
};
SavedContext_s Saved;

bool PgonIsComplex = false;

int roundToDot(double v) { return static_cast<int>(v >= 0.0 ? v + 0.499 : v - 0.499); }
double hardX(double x) { return CoordMap_X(HardcopyMap, x); }
double hardY(double y) { return CoordMap_Y(HardcopyMap, y); }
double hardLength(double length) { return length * std::fabs(HardcopyMap.XScale); }

RGB_s tableEntry(int color, int group) {
    int previous = Gr_GetColorMapGroup();
    if (group >= 0) Gr_SelectColorMapGroup(group);
    RGB_s rgb = Gr_ColorMapEntry(color);
    Gr_SelectColorMapGroup(previous);
    return rgb;
}

int groupFor(int group) { return group >= 0 ? SelectFinalColorMapGroup(group) : Gr_GetColorMapGroup(); }

// OpenGL side of a path: the current point goes out as a vertex, opening the strip if needed.
void emitPathVertex(const XY_s &point) {
    if (!Path.StripOpen) {
        Gr_Begin_LinePath();
        Path.StripOpen = true;
    }
    Gr_LinePath_Vertex(roundToDot(point.X), roundToDot(point.Y));
}

// Ends the OpenGL strip: the last vertex, and with the extra draw the previous once more so
// that the last pixel is set.
void finishStrip() {
    if (Path.HoldsLines) {
        emitPathVertex(Path.Current);
        if (Gr_DoExtraDrawForLastPixel()) Gr_LinePath_Vertex(roundToDot(Path.Previous.X), roundToDot(Path.Previous.Y));
    }
    if (Path.StripOpen) Gr_End_LinePath();
    Path.StripOpen = false;
    Path.HoldsLines = false;
}

void drawPolylineByLines(const std::vector<XY_s> &points) {
    if (points.size() < 2) return;
    VDI_Begin_Path();
    VDI_Move_Abs(points[0].X, points[0].Y);
    for (size_t p = 1; p < points.size(); p++) VDI_Line_Abs(points[p].X, points[p].Y);
    VDI_End_Path(false);
}

// Batch proxy callbacks. Without a display only the off-screen image has a context.
bool batchRenderDest(RenderDest_e dest) {
    if (dest == RenderDest_OffscreenBitmap) return SetRenderDestToOffscreenBitmap();
    return true;
}
void batchRenderDestSize(RenderDest_e, int *width, int *height) {
    *width = PhysicalDisplay.WorkAreaWidth;
    *height = PhysicalDisplay.WorkAreaHeight;
}
void batchSwapBuffers(RenderDest_e) {}
void batchDotPitch(double *dotsPerCmX, double *dotsPerCmY) {
    *dotsPerCmX = PhysicalDisplay.DotsPerCmX;
    *dotsPerCmY = PhysicalDisplay.DotsPerCmY;
}
bool batchKeyState(int) { return false; }
bool batchMouseButtonState(int) { return false; }

void freeListTree(DisplayList_s *list) {
    while (list != nullptr) {
        DisplayList_s *next = list->Next;
        freeListTree(list->Child);
        delete list;
        list = next;
    }
}

// Sends the requested state again, after the cache was invalidated.
void sendRequest(const Request_s &r) {
    if (r.LineIsRGB)
        VDI_Set_Line_ColorRGB(r.LineRGB);
    else
        VDI_Set_Line_Color(r.LineColor, r.LinePen, r.LineShade, r.LineGroup);
    if (r.FillIsRGB)
        VDI_Set_Fill_ColorRGB(r.FillRGB);
    else
        VDI_Set_Fill_Color(r.FillColor, r.FillShaded, r.FillGroup);
    VDI_Set_Line_Style(r.Thickness, r.Pattern, r.PatternLength, r.Cap, r.Join);
    VDI_SetFillPattern(r.FillPattern);
    VDI_Set_Line_Mode(r.Precise);
    VDI_Set_Translucency(r.Translucency);
    VDI_Set_Write_Mode(r.WriteMode);
    if (r.ClipSet) VDI_SetClipping(r.Clip[0], r.Clip[1], r.Clip[2], r.Clip[3], r.ClipToWorkArea);
}

}  // namespace

// ---- proxy callbacks ------------------------------------------------------------------------------

void RenderDestRegisterCallback(RenderDestCallback_pf callback) { RenderDestCallback = callback; }
void RenderDestSizeRegisterCallback(RenderDestSizeCallback_pf callback) { RenderDestSizeCallback = callback; }
void SwapBuffersRegisterCallback(SwapBuffersCallback_pf callback) { SwapBuffersCallback = callback; }
void DotPitchRegisterCallback(DotPitchCallback_pf callback) { DotPitchCallback = callback; }
void KeyStateRegisterCallback(KeyStateCallback_pf callback) { KeyStateCallback = callback; }

bool Gr_IsKeyDown(int key) { return KeyStateCallback != nullptr && KeyStateCallback(key); }

bool VerifyAllRequiredGRProxyCallbacks() {
    const char *missing = nullptr;
    if (RenderDestCallback == nullptr)
        missing = "Error: Required Render Destination Callback is not Registered";
    else if (RenderDestSizeCallback == nullptr)
        missing = "Error: Required Render Destination Size Callback is not Registered";
    else if (SwapBuffersCallback == nullptr)
        missing = "Error: Required Swap Buffers Callback is not Registered";
    else if (DotPitchCallback == nullptr)
        missing = "Error: Required Dot Pitch Callback is not Registered";
    else if (KeyStateCallback == nullptr)
        missing = "Error: Required Key State Callback is not Registered";
    else if (!IsMouseButtonStateCallbackRegistered())
        missing = "Error: Required Mouse Button State Callback is not Registered";
    if (missing == nullptr) return true;
    ErrMsg("%s", missing);
    return false;
}

void Gr_RegisterBatchProxyCallbacks() {
    RenderDestRegisterCallback(batchRenderDest);
    RenderDestSizeRegisterCallback(batchRenderDestSize);
    SwapBuffersRegisterCallback(batchSwapBuffers);
    DotPitchRegisterCallback(batchDotPitch);
    KeyStateRegisterCallback(batchKeyState);
    MouseButtonStateRegisterCallback(batchMouseButtonState);
}

void _Gr_CheckInterrupt(const char *, const char *, int) {
    // Key and button presses come from the window layer's event queue; there is none in batch
    // mode, and none until that layer exists, so nothing sets Interrupted here.
}

void VDI_SetHardcopyMap(const CoordMap_s &screen2Hardcopy) { HardcopyMap = screen2Hardcopy; }
const CoordMap_s &VDI_GetHardcopyMap() { return HardcopyMap; }

// ---- destination ----------------------------------------------------------------------------------

void VDI_SetRenderDest(RenderDest_e dest) {
    RenderDest_e old = CurrentRenderDest;
    if (old != RenderDest_Hardcopy && old != RenderDest_None && routeFor(old) == Route_Gr) Gr_FlushGraphics(true);
    if (dest != RenderDest_Hardcopy && RenderDestCallback != nullptr) {
        DestBeingSelected = dest;
        RenderDestBound = RenderDestCallback(dest);
        DestBeingSelected = RenderDest_None;
    }
    CurrentRenderDest = dest;
    if (dest == RenderDest_None) return;
    DrawAreaWidth = Gr_DestWidthVariable(dest);
    DrawAreaHeight = Gr_DestHeightVariable(dest);
    if (dest < RenderDest_OffscreenBitmap && RenderDestSizeCallback != nullptr)
        RenderDestSizeCallback(dest, DrawAreaWidth, DrawAreaHeight);
    if (dest != RenderDest_Hardcopy) Gr_ResetForNewDestination();
    VDI_ResetContext();
}

void VDI_GetRenderDestSize(RenderDest_e dest, int *width, int *height) {
    int *w = Gr_DestWidthVariable(dest), *h = Gr_DestHeightVariable(dest);
    if (dest < RenderDest_OffscreenBitmap && RenderDestSizeCallback != nullptr && w != nullptr)
        RenderDestSizeCallback(dest, w, h);
    *width = w != nullptr ? *w : 0;
    *height = h != nullptr ? *h : 0;
}

void VDI_SwapBuffers() {
    if (InBatchMode || GraphicsSuspended > 0) return;
    if (VDIHooks.IsWorkAreaSuspended != nullptr && VDIHooks.IsWorkAreaSuspended()) return;
    if (SwapBuffersCallback != nullptr) SwapBuffersCallback(CurrentRenderDest);
    if (VDIHooks.ResetRulerMarkers != nullptr) VDIHooks.ResetRulerMarkers();
    if (VDIHooks.ResetProbeLine != nullptr) VDIHooks.ResetProbeLine();
    if (route() == Route_Gr) Gr_FlushGraphics(false);
    if (CurrentRenderDest == RenderDest_WorkArea && VDIHooks.UpdateFrameDrawLevelsAfterBufferSwap != nullptr)
        VDIHooks.UpdateFrameDrawLevelsAfterBufferSwap();
    if (VDIHooks.ClearManualSwapRequired != nullptr) VDIHooks.ClearManualSwapRequired();
}

void VDI_GetDotPitch(double *dotsPerCmX, double *dotsPerCmY) {
    *dotsPerCmX = DotsPerCmX, *dotsPerCmY = DotsPerCmY;
    if (DotPitchCallback != nullptr) DotPitchCallback(dotsPerCmX, dotsPerCmY);
}

void VDI_SetupGraphics() {
    VDI_ResetContext();
    if (route() == Route_Gr) Gr_InvalidateCache();
    VDI_Set_Fill_Color(7, false, -1);
    VDI_Set_Line_Color(7, 8, false, -1);
    VDI_Set_Line_Style(0.0, LinePattern_Solid, 0.0, LineCap_Flat, LineJoin_Miter);
    VDI_Set_Line_Mode(false);
    VDI_Set_Write_Mode(WriteMode_Normal);
}

bool SetRenderDestToOffscreenBitmap() {
    // From the render destination callback: the selection is under way, only bind.
    if (DestBeingSelected == RenderDest_OffscreenBitmap) return Gr_MakeOffscreenCurrent();
    RenderDestBound = true;
    VDI_SetRenderDest(RenderDest_OffscreenBitmap);
    if (RenderDestBound) return true;
    // Nothing must draw into an image that is not bound.
    VDI_SetRenderDest(RenderDest_None);
    return false;
}

bool VDI_GoesToGr() { return route() == Route_Gr; }
bool VDI_GoesToPl() { return route() == Route_Pl; }

// ---- context --------------------------------------------------------------------------------------

void VDI_ResetContext() {
    if (Path.StripOpen && route() == Route_Gr) Gr_End_LinePath();
    Path = PathState_s();
    if (CurrentRenderDest != RenderDest_Hardcopy) {
        Gr_InvalidateCache();
        GrHW_ResetGrHWContext();
    }
}

void VDI_SaveContext() {
    Saved.Path = Path;
    Saved.Request = Request;
    Saved.Cache = GrContext;
    Saved.IsSaved = true;
}

void VDI_RestoreContext() {
    if (!Saved.IsSaved) return;
    if (Path.StripOpen && route() == Route_Gr) Gr_End_LinePath();
    Path = Saved.Path;
    Path.StripOpen = false;
    if (route() == Route_Gr) Gr_InvalidateCache();
    sendRequest(Saved.Request);
    Saved.IsSaved = false;
}

bool VDI_IsContextCurrentlySaved() { return Saved.IsSaved; }

// ---- display lists --------------------------------------------------------------------------------

DisplayList_s *VDI_AllocDisplayList(int numLists) {
    DisplayList_s *list = new (std::nothrow) DisplayList_s;
    if (list == nullptr) {
        ErrMsg("Out of memory");
        return nullptr;
    }
    list->NumLists = std::max(1, numLists);
    return list;
}

bool VDI_BeginDisplayList(DisplayList_s *list, int offset, bool keepCache, bool isLight, DisplayListMode_e mode,
                          const char *name) {
    if (list == nullptr) return false;
    // Lists live on the work area's context only.
    if (CurrentRenderDest != RenderDest_WorkArea || route() != Route_Gr) return false;
    if (mode == DisplayListMode_Empty) {
        if (list->Base != 0 && !list->IsEmpty) Gr_EmptyDisplayList(list);
        list->IsEmpty = true;
        return false;
    }
    const Interface_s &face = GeneralBase.Interface;
    bool compileAndExecute = false, deferredCall = false;
    if (mode == DisplayListMode_BuildAndRun) {
        if (!face.UseDisplayLists || (face.CacheLightDisplayListsOnly && !isLight)) return false;
        deferredCall = face.OpenGLConfig.RunDisplayListsAfterBuilding;
        compileAndExecute = !deferredCall;
    }
    if (Path.StripOpen) finishStrip();
    // Everything the list needs must be sent inside it.
    if (!keepCache) Gr_InvalidateCache();
    if (GeneralBase.Debug && name != nullptr) fprintf(StdError, "ProcessRendering: %s\n", name);
    return Gr_BeginDisplayList(list, offset, compileAndExecute, deferredCall);
}

void VDI_EndDisplayList() {
    if (!Gr_IsBuildingAnyDisplayList()) return;
    if (Path.StripOpen) finishStrip();
    Gr_EndDisplayList();
}

void VDI_CallDisplayList(DisplayList_s *list, int offset, bool keepCache) {
    if (CurrentRenderDest != RenderDest_WorkArea || route() != Route_Gr) return;
    Gr_CallDisplayList(list, offset, keepCache);
}

void VDI_DeallocDisplayList(DisplayList_s **list) {
    if (list == nullptr || *list == nullptr) return;
    freeListTree((*list)->Child);
    delete *list;
    *list = nullptr;
}

void VDI_ReleaseAndDeallocDisplayListArray(DisplayList_s **array, int count) {
    if (array == nullptr) return;
    bool anyNames = false;
    for (int n = 0; n < count; n++)
        if (array[n] != nullptr) anyNames = true;
    if (anyNames && !InBatchMode) {
        VDI_SetRenderDest(RenderDest_WorkArea);
        if (route() == Route_Gr)
            for (int n = 0; n < count; n++) Gr_ReleaseDisplayList(array[n]);
        VDI_SetRenderDest(RenderDest_None);
    }
    for (int n = 0; n < count; n++) VDI_DeallocDisplayList(&array[n]);
}

// ---- clipping, line and fill state ----------------------------------------------------------------

void VDI_SetClipping(double x1, double y1, double x2, double y2, bool restrictToWorkArea) {
    Request.ClipSet = true;
    Request.Clip[0] = x1, Request.Clip[1] = y1, Request.Clip[2] = x2, Request.Clip[3] = y2;
    Request.ClipToWorkArea = restrictToWorkArea;
    switch (route()) {
        case Route_Pl: Pl_Set_Clipping(hardX(x1), hardY(y1), hardX(x2), hardY(y2)); break;
        case Route_Gr: Gr_Set_Clipping(x1, y1, x2, y2, restrictToWorkArea, false); break;
        case Route_None: break;
    }
}

void VDI_Set_Clipping_Mode(ClippingMode_e mode) {
    if (route() == Route_Gr) Gr_Set_Clipping_Mode(mode);
}

void VDI_Set_Line_Style(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap,
                        LineJoin_e join) {
    Request.Thickness = thickness, Request.Pattern = pattern, Request.PatternLength = patternLength;
    Request.Cap = cap, Request.Join = join;
    switch (route()) {
        case Route_Pl: Pl_Set_Line_Style(hardLength(thickness), pattern, hardLength(patternLength), cap, join); break;
        case Route_Gr: Gr_Set_Line_Style(thickness, pattern, patternLength, cap, join); break;
        case Route_None: break;
    }
}

void VDI_Set_Line_Color(int color, int penNumber, bool shade, int group) {
    Request.LineIsRGB = false;
    Request.LineColor = color, Request.LinePen = penNumber, Request.LineShade = shade, Request.LineGroup = group;
    switch (route()) {
        case Route_Pl: Pl_Set_Line_Color(color, penNumber, tableEntry(color, group)); break;
        case Route_Gr: Gr_Set_Line_Color(color, groupFor(group)); break;
        case Route_None: break;
    }
}

void VDI_Set_Fill_Color(int color, bool shaded, int group) {
    Request.FillIsRGB = false;
    Request.FillColor = color, Request.FillShaded = shaded, Request.FillGroup = group;
    switch (route()) {
        case Route_Pl: Pl_Set_Fill_Color(color, tableEntry(color, group)); break;
        case Route_Gr: Gr_Set_Fill_Color(color, groupFor(group)); break;
        case Route_None: break;
    }
}

void VDI_Set_Line_ColorRGB(RGB_s rgb) {
    Request.LineIsRGB = true, Request.LineRGB = rgb;
    switch (route()) {
        case Route_Pl: Pl_Set_Line_ColorRGB(rgb); break;
        case Route_Gr: Gr_Set_Line_ColorRGB(rgb); break;
        case Route_None: break;
    }
}

void VDI_Set_Fill_ColorRGB(RGB_s rgb) {
    Request.FillIsRGB = true, Request.FillRGB = rgb;
    switch (route()) {
        case Route_Pl: Pl_Set_Fill_ColorRGB(rgb); break;
        case Route_Gr: Gr_Set_Fill_ColorRGB(rgb); break;
        case Route_None: break;
    }
}

void VDI_SetFillPattern(FillPat_e pattern) {
    Request.FillPattern = pattern;
    switch (route()) {
        case Route_Pl: Pl_Set_Fill_Pattern(pattern); break;
        case Route_Gr: Gr_Set_Fill_Pattern(pattern); break;
        case Route_None: break;
    }
}

void VDI_Set_Line_Mode(bool precise) {
    Request.Precise = precise;
    if (route() == Route_Gr) Gr_Set_Line_Mode(precise);
}

void VDI_Set_Translucency(int percent) {
    Request.Translucency = percent;
    switch (route()) {
        case Route_Pl: Pl_Set_Translucency(percent); break;
        case Route_Gr: Gr_Set_Translucency(percent); break;
        case Route_None: break;
    }
}

void VDI_Set_Write_Mode(WriteMode_e mode) {
    Request.WriteMode = mode;
    if (route() == Route_Gr) Gr_Set_Write_Mode(mode);
}

// ---- paths ----------------------------------------------------------------------------------------

void VDI_Begin_Path() {
    Route_e where = route();
    if (where == Route_Gr && Path.StripOpen) finishStrip();
    Path.IsOpen = true;
    Path.HoldsLines = false;
    if (where == Route_Gr) {
        Gr_Set_Clipping_Mode(ClippingMode_2D);
        Gr_Begin_LinePath();
        Path.StripOpen = true;
    } else if (where == Route_Pl) {
        Pl_Begin_Path();
    }
}

void VDI_Move_Abs(double x, double y) {
    Route_e where = route();
    // A move ends the strip of lines so far; the next line starts a new one.
    if (where == Route_Gr && Path.HoldsLines) finishStrip();
    if (where == Route_Pl) Pl_Move_Abs(hardX(x), hardY(y));
    Path.Current = XY_s{x, y};
    Path.PointMovedTo = true;
    Path.HoldsLines = false;
}

void VDI_Line_Abs(double x, double y) {
    Route_e where = route();
    if (where == Route_Gr) {
        if (!Path.IsOpen) {
            // A line outside a path is a path of its own.
            Gr_Set_Clipping_Mode(ClippingMode_2D);
            emitPathVertex(Path.Current);
            Path.Previous = Path.Current;
            Path.Current = XY_s{x, y};
            Path.HoldsLines = true;
            finishStrip();
            return;
        }
        emitPathVertex(Path.Current);
    } else if (where == Route_Pl) {
        Pl_Line_Abs(hardX(x), hardY(y));
    }
    Path.Previous = Path.Current;
    Path.Current = XY_s{x, y};
    Path.HoldsLines = true;
}

void VDI_Box_Abs(double x, double y) {
    XY_s start = Path.Current;
    VDI_Line_Abs(x, start.Y);
    VDI_Line_Abs(x, y);
    VDI_Line_Abs(start.X, y);
    VDI_Line_Abs(start.X, start.Y);
}

void VDI_End_Path(bool keepPoint) {
    Route_e where = route();
    if (where == Route_Gr)
        finishStrip();
    else if (where == Route_Pl)
        Pl_End_Path();
    Path.IsOpen = false;
    Path.HoldsLines = false;
    Path.StripOpen = false;
    if (!keepPoint) Path.PointMovedTo = false;
}

bool VDI_IsDrawingAPath() { return Path.IsOpen; }
XY_s VDI_GetCurrentPoint() { return Path.Current; }

// ---- polygons -------------------------------------------------------------------------------------

bool VDI_AllocPolygonBuffers() {
    size_t room = static_cast<size_t>(std::max(GeneralBase.MaxPtsInALine, 4)) + 1;
    try {
        PlXPoly.assign(room, 0.0);
        PlYPoly.assign(room, 0.0);
        PtsIn.assign(2 * room, 0);
    } catch (const std::bad_alloc &) {
        VDI_FreePolygonBuffers();
        ErrMsg("Cannot allocate temporary space for motif polylines");
        return false;
    }
    NumVert = 0;
    return true;
}

void VDI_FreePolygonBuffers() {
    std::vector<double>().swap(PlXPoly);
    std::vector<double>().swap(PlYPoly);
    std::vector<int16_t>().swap(PtsIn);
    NumVert = 0;
}

int VDI_MaxPolygonVertices() { return static_cast<int>(std::min<size_t>(PlXPoly.size(), INT16_MAX)); }

void VDI_ResetVert() { NumVert = 0; }

bool VDI_SetVert(int index, double x, double y) {
    if (index < 0 || index >= VDI_MaxPolygonVertices()) return false;
    PlXPoly[index] = x;
    PlYPoly[index] = y;
    NumVert = static_cast<int16_t>(index + 1);
    if (index > 0 && x == PlXPoly[index - 1] && y == PlYPoly[index - 1]) {
        NumVert = static_cast<int16_t>(index);
        return false;
    }
    const PlDevice_s *device = Pl_GetDevice();
    if (CurrentRenderDest == RenderDest_Hardcopy && device != nullptr && device->IsMetafile) {
        double hx = roundToDot(hardX(x)), hy = roundToDot(hardY(y));
        if (device->Uses16BitCoords) hx = std::clamp(hx, -16000.0, 16000.0), hy = std::clamp(hy, -16000.0, 16000.0);
        int16_t px = static_cast<int16_t>(hx), py = static_cast<int16_t>(hy);
        if (index > 0 && PtsIn[2 * (index - 1)] == px && PtsIn[2 * (index - 1) + 1] == py) {
            NumVert = static_cast<int16_t>(index);
            return false;
        }
        PtsIn[2 * index] = px;
        PtsIn[2 * index + 1] = py;
    }
    return true;
}

bool VDI_QueryVert(int index, double *x, double *y) {
    if (index < 0 || index >= NumVert) return false;
    *x = PlXPoly[index];
    *y = PlYPoly[index];
    return true;
}

bool VDI_PushVert(double x, double y) { return VDI_SetVert(NumVert, x, y); }

void VDI_PgonConfig(bool isComplex) { PgonIsComplex = isComplex; }

void VDI_Pgon(bool fill, bool outline) {
    if (NumVert < 2 || (!fill && !outline)) return;
    switch (route()) {
        case Route_Pl: {
            std::vector<double> hx(NumVert), hy(NumVert);
            for (int v = 0; v < NumVert; v++) hx[v] = hardX(PlXPoly[v]), hy[v] = hardY(PlYPoly[v]);
            Pl_Pgon(hx.data(), hy.data(), NumVert, fill && NumVert >= 4, outline);
            break;
        }
        case Route_Gr:
            if (Path.StripOpen) finishStrip();
            Gr_Pgon(PlXPoly.data(), PlYPoly.data(), NumVert, fill, outline, PgonIsComplex,
                    GeneralBase.Interface.XPgonFillOffset, GeneralBase.Interface.YPgonFillOffset);
            break;
        case Route_None: break;
    }
}

// ---- shapes and images ----------------------------------------------------------------------------

void VDI_Rectangle(double x1, double y1, double x2, double y2, bool outline, bool fill) {
    switch (route()) {
        case Route_Pl: Pl_Rectangle(hardX(x1), hardY(y1), hardX(x2), hardY(y2), outline, fill); break;
        case Route_Gr:
            if (Path.StripOpen) finishStrip();
            Gr_Rectangle(roundToDot(x1), roundToDot(y1), roundToDot(x2), roundToDot(y2), outline, fill);
            break;
        case Route_None: break;
    }
}

void VDI_Ellipse(XY_s centre, XY_s radii, int numPoints, bool fill, bool outline) {
    if (numPoints < 3) return;
    numPoints = std::min(numPoints, VDI_MaxPolygonVertices() - 1);
    VDI_ResetVert();
    for (int p = 0; p < numPoints; p++) {
        double angle = 2.0 * Pi * p / numPoints;
        VDI_PushVert(centre.X + radii.X * std::cos(angle), centre.Y + radii.Y * std::sin(angle));
    }
    VDI_PushVert(PlXPoly[0], PlYPoly[0]);
    VDI_Pgon(fill, outline);
}

void VDI_Rectangular_Precise_Grid(double x1, double y1, double x2, double y2, int numX, int numY) {
    if (numX < 1 || numY < 1) return;
    if (route() == Route_Pl && Pl_CanDrawPreciseGrids()) {
        Pl_Rectangular_Precise_Grid(hardX(x1), hardY(y1), hardX(x2), hardY(y2), numX, numY);
        return;
    }
    for (int i = 0; i <= numX; i++) {
        double x = x1 + (x2 - x1) * i / numX;
        drawPolylineByLines({{x, y1}, {x, y2}});
    }
    for (int j = 0; j <= numY; j++) {
        double y = y1 + (y2 - y1) * j / numY;
        drawPolylineByLines({{x1, y}, {x2, y}});
    }
}

void VDI_Polar_Precise_Grid(double cx, double cy, double r1, double r2, double angle1, double angle2, int numRadial,
                            int numCircles) {
    if (route() == Route_Pl && Pl_CanDrawPreciseGrids()) {
        Pl_Polar_Precise_Grid(hardX(cx), hardY(cy), hardLength(r1), hardLength(r2), angle1, angle2, numRadial,
                              numCircles);
        return;
    }
    for (int s = 0; s < numRadial; s++) {
        double a = numRadial > 1 ? angle1 + (angle2 - angle1) * s / (numRadial - 1) : angle1;
        drawPolylineByLines(
            {{cx + r1 * std::cos(a), cy - r1 * std::sin(a)}, {cx + r2 * std::cos(a), cy - r2 * std::sin(a)}});
    }
    for (int c = 0; c < numCircles; c++) {
        double r = numCircles > 1 ? r1 + (r2 - r1) * c / (numCircles - 1) : r2;
        // About one segment per 2 pixels of arc, at least 8.
        int segments = std::max(8, static_cast<int>(std::fabs(angle2 - angle1) * r / 2.0));
        std::vector<XY_s> arc;
        for (int k = 0; k <= segments; k++) {
            double a = angle1 + (angle2 - angle1) * k / segments;
            arc.push_back(XY_s{cx + r * std::cos(a), cy - r * std::sin(a)});
        }
        drawPolylineByLines(arc);
    }
}

void VDI_Render_Image(double x1, double y1, double x2, double y2, const uint8_t *rgb, int width, int height) {
    switch (route()) {
        case Route_Pl: Pl_Draw_Image(hardX(x1), hardY(y1), hardX(x2), hardY(y2), rgb, width, height); break;
        case Route_Gr:
            if (Path.StripOpen) finishStrip();
            Gr_Draw_Image(roundToDot(x1), roundToDot(y1), roundToDot(x2), roundToDot(y2), rgb, width, height);
            break;
        case Route_None: break;
    }
}

// ---- colour ---------------------------------------------------------------------------------------

void VDI_SelectColorMapGroup(int group) { Gr_SelectColorMapGroup(group); }
int VDI_GetCurrentColorMapGroup() { return Gr_GetColorMapGroup(); }

void VDI_SignalColorMapChange() {
    int selected = Gr_GetColorMapGroup();
    for (int group = 0; group < NumColorMapGroups; group++) Gr_InstallColorMap(group);
    Gr_SelectColorMapGroup(selected);
    GrHW_InvalidateColorCache();
}

// ---- start-up and shutdown ------------------------------------------------------------------------

bool Gr_Init() {
    if (!VDI_AllocPolygonBuffers()) return false;
    LoadPhysicalDisplayFile();
    if (!VerifyAllRequiredGRProxyCallbacks()) return false;
    VDI_GetDotPitch(&DotsPerCmX, &DotsPerCmY);
    if (!Gr_AllocColorTables()) return false;
    for (int group = NumColorMapGroups - 1; group >= 0; group--) Gr_InstallColorMap(group);
    if (InBatchMode) {
        int width = 0, height = 0;
        VDI_GetRenderDestSize(RenderDest_WorkArea, &width, &height);
        if (width > 0 && height > 0) WorkAreaWidth = width, WorkAreaHeight = height;
    } else {
        VDI_SetRenderDest(RenderDest_WorkArea);
        VDI_SetupGraphics();
        VDI_SetClipping(0, 0, WorkAreaWidth - 1, WorkAreaHeight - 1, true);
        VDI_SetRenderDest(RenderDest_None);
    }
    GraphicsAreInitialized = true;
    DeviceLayerIsUp = true;
    return true;
}

void Gr_Mopup() {
    // An interactive run leaves its screen for the next batch run. The shutdown clears
    // GraphicsAreInitialized before it calls here, so the layer keeps its own record.
    if (!InBatchMode && DeviceLayerIsUp) {
        PhysicalDisplay.WorkAreaWidth = WorkAreaWidth;
        PhysicalDisplay.WorkAreaHeight = WorkAreaHeight;
        PhysicalDisplay.DotsPerCmX = DotsPerCmX;
        PhysicalDisplay.DotsPerCmY = DotsPerCmY;
        WritePhysicalDisplayFile(PhysicalDisplayFileName(), PhysicalDisplay);
    }
    DeviceLayerIsUp = false;
    Gr_Close();
    Gr_FreeColorTables();
    VDI_FreePolygonBuffers();
    Path = PathState_s();
    Saved = SavedContext_s();
    CurrentRenderDest = RenderDest_None;
    DrawAreaWidth = DrawAreaHeight = nullptr;
}
