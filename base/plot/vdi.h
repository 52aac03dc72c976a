// The device layer that all plot code draws through: the VDI_ operations in screen pixels (double
// precision, Y down) and the one rule that sends each of them somewhere:
//   destination 6 (hard copy): coordinates through the screen-to-hard-copy map, then Pl_;
//   destination 5 (the off-screen image): Gr_;
//   any other destination in batch mode, with graphics or the work area suspended, or with no
//   destination selected: nothing, though the current point still moves;
//   otherwise: Gr_.
// Also here: the selection of destinations and the proxy callbacks through which the window
// layer supplies the screen side (make a context current, sizes, buffer swap, dot pitch, key and
// mouse button state); the path and polygon state; display lists as the redraw driver uses them;
// start-up (Gr_Init) and shutdown of the device layer.
// Relies on: grhw (OpenGL back end), grcolor (colour tables), plotdev (hard copy), coordsys
// (CoordMap_s), phyfile (the batch work area), orvlock (the mouse button callback), globals,
// genbase, errors.
#pragma once

#include <cstdint>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/types.h"
#include "base/plot/coordsys.h"
#include "base/plot/devtypes.h"
#include "base/plot/grcolor.h"
#include "base/plot/grhw.h"
#include "base/plot/plotdev.h"

// ---- proxy callbacks of the window layer ------------------------------------------------------

// Makes the destination's OpenGL context current (also called with 255 to let go).
using RenderDestCallback_pf = bool (*)(RenderDest_e dest);
using RenderDestSizeCallback_pf = void (*)(RenderDest_e dest, int *width, int *height);
using SwapBuffersCallback_pf = void (*)(RenderDest_e dest);
using DotPitchCallback_pf = void (*)(double *dotsPerCmX, double *dotsPerCmY);
// True while the key (a key symbol of the window system) is held down.
using KeyStateCallback_pf = bool (*)(int key);

void RenderDestRegisterCallback(RenderDestCallback_pf callback);
void RenderDestSizeRegisterCallback(RenderDestSizeCallback_pf callback);
void SwapBuffersRegisterCallback(SwapBuffersCallback_pf callback);
void DotPitchRegisterCallback(DotPitchCallback_pf callback);
void KeyStateRegisterCallback(KeyStateCallback_pf callback);
// The mouse button state callback is registered with MouseButtonStateRegisterCallback of the
// lock (orvlock), which answers whether a drag holds the system.
// The window layer's answer to whether a key is down; false without a callback.
bool Gr_IsKeyDown(int key);
// False with the message of the first one missing, in this order: "Error: Required Render
// Destination Callback is not Registered", "... Render Destination Size ...", "... Swap Buffers
// ...", "... Dot Pitch ...", "... Key State ...", "... Mouse Button State ...".
bool VerifyAllRequiredGRProxyCallbacks();
// The callbacks of a run without a display, all six: destination 5 binds the off-screen image
// (SetRenderDestToOffscreenBitmap) and the screen destinations bind nothing; sizes and dot pitch
// are those of the physical display file; a swap, a key and a mouse button do nothing. A window
// layer registers its own over them.
void Gr_RegisterBatchProxyCallbacks();

// The poll for a user interrupt in long work (message names the work, file and line the caller):
// it sets Interrupted when a key or button was pressed. Polling is the window layer's: in batch
// mode, and until a window layer exists, nothing interrupts and this does nothing.
void _Gr_CheckInterrupt(const char *message, const char *file, int line);

// What the redraw driver does around a buffer swap; null hooks do nothing.
struct VDIHooks_s {
    void (*ResetRulerMarkers)();
    void (*ResetProbeLine)();
    void (*UpdateFrameDrawLevelsAfterBufferSwap)();
    void (*ClearManualSwapRequired)();
    bool (*IsWorkAreaSuspended)();
};
extern VDIHooks_s VDIHooks;

// The screen-to-hard-copy map of the frame being drawn, set with the frame's transformations.
void VDI_SetHardcopyMap(const CoordMap_s &screen2Hardcopy);
const CoordMap_s &VDI_GetHardcopyMap();

// ---- destination --------------------------------------------------------------------------------

void VDI_SetRenderDest(RenderDest_e dest);
void VDI_GetRenderDestSize(RenderDest_e dest, int *width, int *height);
void VDI_SwapBuffers();
void VDI_GetDotPitch(double *dotsPerCmX, double *dotsPerCmY);
// Reset, white line and fill, thickness 0 solid lines, line mode off, normal writing.
void VDI_SetupGraphics();
// Selects destination 5 with the off-screen image bound (Gr_ConstructOffscreenImage first); false,
// and no destination selected, when it cannot be bound. Called by the render destination callback
// while destination 5 is being selected, it only binds.
bool SetRenderDestToOffscreenBitmap();
// True when a VDI_ call made now would reach the OpenGL back end / the hard-copy back end.
bool VDI_GoesToGr();
bool VDI_GoesToPl();

// ---- context ------------------------------------------------------------------------------------

void VDI_ResetContext();
// One saved copy of the path state and the drawing state; restoring sends the state again.
void VDI_SaveContext();
void VDI_RestoreContext();
bool VDI_IsContextCurrentlySaved();

// ---- display lists ------------------------------------------------------------------------------

// A record for a block of numLists lists (at least 1); null with "Out of memory".
DisplayList_s *VDI_AllocDisplayList(int numLists = 1);
// Opens list + offset for building when the work area is drawn (not in batch mode, not
// suspended) and lists are in use; false means draw directly. Mode 2 empties the list.
bool VDI_BeginDisplayList(DisplayList_s *list, int offset, bool keepCache, bool isLight, DisplayListMode_e mode,
                          const char *name);
void VDI_EndDisplayList();
// Calls the list on the work area (see Gr_CallDisplayList).
void VDI_CallDisplayList(DisplayList_s *list, int offset, bool keepCache);
// Frees the record and its tree; the OpenGL names must have been released.
void VDI_DeallocDisplayList(DisplayList_s **list);
// Releases the names on the work area's context, then frees the records and nulls the array.
void VDI_ReleaseAndDeallocDisplayListArray(DisplayList_s **array, int count);

// ---- clipping, line and fill state --------------------------------------------------------------

void VDI_SetClipping(double x1, double y1, double x2, double y2, bool restrictToWorkArea);
void VDI_Set_Clipping_Mode(ClippingMode_e mode);
// Thickness and pattern length in pixels.
void VDI_Set_Line_Style(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap,
                        LineJoin_e join);
// An index of the colour table of the group (-1: the selected group); the pen is for plotters.
void VDI_Set_Line_Color(int color, int penNumber, bool shade, int group);
void VDI_Set_Fill_Color(int color, bool shaded, int group);
void VDI_Set_Line_ColorRGB(RGB_s rgb);
void VDI_Set_Fill_ColorRGB(RGB_s rgb);
void VDI_SetFillPattern(FillPat_e pattern);
void VDI_Set_Line_Mode(bool precise);
void VDI_Set_Translucency(int percent);
void VDI_Set_Write_Mode(WriteMode_e mode);

// ---- paths --------------------------------------------------------------------------------------

void VDI_Begin_Path();
void VDI_Move_Abs(double x, double y);
// A line from the current point; the point sent is rounded with 0.499 away from zero.
void VDI_Line_Abs(double x, double y);
// Four lines round the box from the current point to (x, y).
void VDI_Box_Abs(double x, double y);
void VDI_End_Path(bool keepPoint);
bool VDI_IsDrawingAPath();
XY_s VDI_GetCurrentPoint();

// ---- polygons -----------------------------------------------------------------------------------

extern std::vector<double> PlXPoly, PlYPoly;
extern int16_t NumVert;
// Rounded hard-copy points of a metafile driver, X and Y in turn.
extern std::vector<int16_t> PtsIn;

// Room for MAXPTSINALINE + 1 vertices; "Cannot allocate temporary space for motif polylines".
bool VDI_AllocPolygonBuffers();
void VDI_FreePolygonBuffers();
int VDI_MaxPolygonVertices();

void VDI_ResetVert();
// Sets vertex index and makes NumVert index + 1; a vertex equal to its predecessor is dropped
// (NumVert one less) and the result is false.
bool VDI_SetVert(int index, double x, double y);
bool VDI_QueryVert(int index, double *x, double *y);
bool VDI_PushVert(double x, double y);
// Complex polygons (concave, self-crossing) are tessellated; the setting stays until changed.
void VDI_PgonConfig(bool isComplex);
// Needs 2 vertices and a flag; filling needs 4 (the last repeating the first).
void VDI_Pgon(bool fill, bool outline);

// ---- shapes and images --------------------------------------------------------------------------

void VDI_Rectangle(double x1, double y1, double x2, double y2, bool outline, bool fill);
// A closed polygon of numPoints segments round the ellipse.
void VDI_Ellipse(XY_s centre, XY_s radii, int numPoints, bool fill, bool outline);
// numX by numY cells; exact on a hard-copy driver that can, else by lines.
void VDI_Rectangular_Precise_Grid(double x1, double y1, double x2, double y2, int numX, int numY);
// numRadial spokes and numCircles circles between radii r1 and r2, angles in radians.
void VDI_Polar_Precise_Grid(double cx, double cy, double r1, double r2, double angle1, double angle2, int numRadial,
                            int numCircles);
// Rows of RGB bytes, top row first, over the box.
void VDI_Render_Image(double x1, double y1, double x2, double y2, const uint8_t *rgb, int width, int height);

// ---- colour -------------------------------------------------------------------------------------

void VDI_SelectColorMapGroup(int group);
int VDI_GetCurrentColorMapGroup();
// The colour tables changed: reinstall every group, keep the selection, resend colours.
void VDI_SignalColorMapChange();

// ---- start-up and shutdown ----------------------------------------------------------------------

// Polygon buffers, the physical display file, dot pitch, the four colour tables with group 0
// installed; interactively the work area is set up once. Needs the proxy callbacks.
bool Gr_Init();
// Writes the physical display file after an interactive run; frees the tables, the polygon
// buffers, the off-screen context and the tessellator.
void Gr_Mopup();
