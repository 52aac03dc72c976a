// The OpenGL back end of the device layer: the Gr_ operations (state filtered through the cache
// GrContext, 2D primitives, clipping, display lists, buffers) and the GrHW_ operations (blocks of
// primitives that open lazily on their first vertex, colour and lighting, depth, polygon offset,
// the 2D and 3D views). Fixed-function OpenGL of a compatibility context, every call made
// through the table of entry points of glfuncs; concave polygons go through the GLU tessellator.
// Also the off-screen image: an OSMesa context drawing into memory, which needs no display at all.
// Pixel geometry: screen pixel (i, j) covers [i, i+1) x [j, j+1) with Y down. Filled shapes put
// their integer vertices on pixel corners, so a box from (x1, y1) to (x2, y2) fills exactly the
// pixels x1..x2-1, y1..y2-1; lines and points put them inside pixel (i, j), at (i + 0.375,
// j + 0.375), so a segment sets its first pixel and not its last.
// Relies on: glfuncs (the OpenGL entry points), grcolor (the colour tables), devtypes, genbase
// (the OPENGLCONFIG settings, the paper), globals, coordsys (3D matrices and the perspective
// lift), framestyle (the light source).
#pragma once

#include <cstdint>

#include "base/kernel/genbase.h"
#include "base/plot/coordsys.h"
#include "base/plot/devtypes.h"

// ---- destinations -------------------------------------------------------------------------------

extern RenderDest_e CurrentRenderDest;
// The sizes of the example draw areas and the off-screen image, pixels. The work area uses
// WorkAreaWidth and WorkAreaHeight of the kernel globals; hard copy uses those too.
extern int ExampleTextDrawAreaWidth, ExampleTextDrawAreaHeight;
extern int ExampleLightSourcePositionDrawAreaWidth, ExampleLightSourcePositionDrawAreaHeight;
extern int ExampleColorMapDrawAreaWidth, ExampleColorMapDrawAreaHeight;
extern int ExampleColorDrawAreaWidth, ExampleColorDrawAreaHeight;
extern int OffscreenDrawAreaWidth, OffscreenDrawAreaHeight;
// Point at the size variables of the selected destination (null before the first selection).
extern int *DrawAreaWidth, *DrawAreaHeight;

// The size variables of a destination; null for 255.
int *Gr_DestWidthVariable(RenderDest_e dest);
int *Gr_DestHeightVariable(RenderDest_e dest);
// The OpenGL settings for the selected destination: IMAGERENDERING for the off-screen image,
// SCREENRENDERING otherwise.
const OpenGLRendering_s &Gr_RenderingConfig();

// ---- the state cache ----------------------------------------------------------------------------

// What the back end last set. Unknown entries hold -1 (integers, doubles) or 255 (enumerations).
struct GrContext_s {
    int LineColor = -1, LineColorGroup = -1;  // index and its colour map group, or -1 when RGB
    RGB_s LineRGB{-1, -1, -1};
    int FillColor = -1, FillColorGroup = -1;
    RGB_s FillRGB{-1, -1, -1};
    double LineThickness = -1.0;
    LinePattern_e LinePattern = LinePattern_Invalid;
    double PatternLength = -1.0;
    LineCap_e LineCap = LineCap_Invalid;
    LineJoin_e LineJoin = LineJoin_Invalid;
    WriteMode_e WriteMode = WriteMode_Invalid;
    ClippingMode_e ClippingMode = ClippingMode_Invalid;
    int ClipX1 = -1, ClipY1 = -1, ClipX2 = -1, ClipY2 = -1;
    int Translucency = -1;
    FillPat_e FillPattern = FillPat_Invalid;
    int LineMode = -1;  // 1 precise, 0 not
};
extern GrContext_s GrContext;

// Marks every entry unknown, resets the line mode and invalidates the GrHW caches. Needed
// whenever OpenGL state may have changed behind the cache (after a display list ran).
void Gr_InvalidateCache();
// A new destination: no clip rectangle (the whole area), 2D clipping, normal writing, and the
// cache invalidated.
void Gr_ResetForNewDestination();

// The 16-bit stipple and repeat factor of a pattern of the given length in pixels; false for
// SOLID (no stipple unless every line is stippled).
bool Gr_LineStipple(LinePattern_e pattern, double patternLength, uint16_t *stipple, int *factor);

void Gr_Set_Line_Color(int color, int group);
void Gr_Set_Fill_Color(int color, int group);
void Gr_Set_Line_ColorRGB(RGB_s rgb);
void Gr_Set_Fill_ColorRGB(RGB_s rgb);
// Thickness and pattern length in pixels; the width drawn is the thickness rounded, at least 1.
void Gr_Set_Line_Style(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap,
                       LineJoin_e join);
// A precise request draws the last pixel of a path again (DOEXTRADRAWFORLASTPIXEL) and, with
// STIPPLEALLLINES CRITICAL, stipples solid lines; ALL stipples them always, NONE never.
void Gr_Set_Line_Mode(bool precise);
bool Gr_DoExtraDrawForLastPixel();
void Gr_Set_Fill_Pattern(FillPat_e pattern);
// 0 to 100; non-zero blends with alpha (100 - percent) / 100.
void Gr_Set_Translucency(int percent);
void Gr_Set_Write_Mode(WriteMode_e mode);
void Gr_Set_Clipping_Mode(ClippingMode_e mode);
// With toWorkArea the rectangle is clamped to the destination; rounded with 0.499. A rectangle
// equal to the cached one is skipped unless force.
void Gr_Set_Clipping(double x1, double y1, double x2, double y2, bool toWorkArea, bool force);
void Gr_GetCurClipRectangle(int *x1, int *y1, int *x2, int *y2);

// ---- 2D primitives, integer screen pixels ----------------------------------------------------

// A line strip in the line colour, open until Gr_End_LinePath.
void Gr_Begin_LinePath();
void Gr_LinePath_Vertex(int x, int y);
void Gr_End_LinePath();
// Vertices in doubles, rounded here. Fill needs 4 vertices with the last repeating the first
// (not drawn again); complex polygons go through the tessellator. The outline is a line strip
// through all vertices in the line colour. fillOffsetX/Y shift filled vertices (whole pixels).
void Gr_Pgon(const double *x, const double *y, int numVert, bool fill, bool outline, bool isComplex,
             int fillOffsetX, int fillOffsetY);
// Corners inclusive. Fill without outline reaches one pixel further right and down; a box
// below 1.414216 pixels both ways is one point at its centre.
void Gr_Rectangle(int x1, int y1, int x2, int y2, bool outline, bool fill);
// The texels of rows of RGB bytes, top row first, drawn over the box.
void Gr_Draw_Image(int x1, int y1, int x2, int y2, const uint8_t *rgb, int width, int height);

// ---- display lists ------------------------------------------------------------------------------

// Render settings a list was built with, compared by its builder; IsSet false means none.
struct DisplayListRenderSettings_s {
    bool IsSet = false;
    uint64_t Key = 0;
};

// A block of OpenGL lists; a tree through Child and Next.
struct DisplayList_s {
    unsigned int Base = 0;  // OpenGL list base; 0 until allocated
    int NumLists = 1;
    bool IsBuilt = false;
    bool IsValid = false;           // read by the redraw driver; cleared by a mark
    bool IsPartiallyDrawn = false;  // read by the redraw driver
    bool IsBeingCalled = false;
    bool IsEmpty = true;
    bool IsSkipped = false;
    DisplayList_s *Child = nullptr;
    DisplayList_s *Next = nullptr;
    DisplayListRenderSettings_s RenderSettings;
};

// Opens the list at base + offset in GL_COMPILE or GL_COMPILE_AND_EXECUTE; with deferredCall the
// list is called when it closes. False when the base cannot be had.
bool Gr_BeginDisplayList(DisplayList_s *list, int offset, bool compileAndExecute, bool deferredCall);
void Gr_EndDisplayList();
bool Gr_IsBuildingAnyDisplayList();
DisplayList_s *Gr_BuildingDisplayList();
// Calls base + offset if the list has a base; then, unless keepCache, Gr_InvalidateCache.
void Gr_CallDisplayList(DisplayList_s *list, int offset, bool keepCache);
// Empties each list of the tree (an empty OpenGL list in its place), marking it empty.
void Gr_EmptyDisplayList(DisplayList_s *list);
// Gives the OpenGL names of the tree back; needs the context that made them.
void Gr_ReleaseDisplayList(DisplayList_s *list);

// ---- GrHW blocks --------------------------------------------------------------------------------

// The OpenGL primitive numbers.
enum BlockType_e : uint8_t {
    BlockType_Points = 0,
    BlockType_Lines = 1,
    BlockType_LineLoop = 2,
    BlockType_LineStrip = 3,
    BlockType_Triangles = 4,
    BlockType_TriangleStrip = 5,
    BlockType_TriangleFan = 6,
    BlockType_Quads = 7,
    BlockType_QuadStrip = 8,
    BlockType_Polygon = 9
};
enum PolygonMode_e : uint8_t { PolygonMode_Fill = 0, PolygonMode_Line = 1, PolygonMode_Point = 2 };
enum LightingEffect_e : uint8_t { LightingEffect_Paneled = 0, LightingEffect_Gouraud = 1 };
enum ShadeModel_e : uint8_t { ShadeModel_Flat = 0, ShadeModel_Smooth = 1 };

// A block in one colour: the fill colour for filled polygon blocks, the line colour otherwise.
// A polygon-type block that is not filled becomes a line loop.
void GrHW_BeginSingleColorBlock(BlockType_e type, PolygonMode_e mode, bool lighting, LightingEffect_e effect);
void GrHW_BeginMultiColorBlock(BlockType_e type, PolygonMode_e mode, bool lighting, LightingEffect_e effect,
                               ShadeModel_e shadeModel);
void GrHW_BeginNoColorBlock(BlockType_e type, PolygonMode_e mode);
void GrHW_SetMultiColor(int index);
void GrHW_SetMultiColorRGB(RGB_s rgb);
void GrHW_Vertex3D(double x, double y, double z);
void GrHW_Normal3D(double x, double y, double z);
void GrHW_Vertex2D(int i, int j);
void GrHW_EndBlock();
void GrHW_FlushBlockCache();
bool GrHW_IsBlockOpen();
// Filled (in the fill colour) it covers the pixels i1..i2-1, j1..j2-1; outlined (in the line
// colour) it runs through the pixels i1, i2, j1, j2.
void GrHW_Rectangle(int i1, int j1, int i2, int j2, PolygonMode_e mode);
int GrHW_NumVerticesInBlock();

// Views. Rectangles in screen pixels of the destination, corners inclusive.
void GrHW_SetViewport(int x1, int y1, int x2, int y2);
void GrHW_SetScissor(int x1, int y1, int x2, int y2);
void GrHW_DisableScissor();
// Viewport over the rectangle and a projection that maps screen pixels onto it.
void GrHW_Setup2DView(int x1, int y1, int x2, int y2);
void GrHW_Invalidate2DView();
// Row-major matrices of the 3D view (coordsys), loaded as the projection and model view.
void GrHW_Load3DMatrices(const Matrix4x4_s &projection, const Matrix4x4_s &modelView);

// One light; the frame's light source; the front face flips with the parity of negative axis
// scale factors.
void GrHW_Setup3DLighting(const LightSource_s &light, bool oddNegativeScaleFactors);
void GrHW_SetTranslucencyFraction(double alpha);
// C from 0 to 1: lit colours become v * C + 1 - C.
void GrHW_SetSurfaceColorContrast(double contrast);
// Zero turns the lift off; otherwise view and calc must outlive the lift.
void GrHW_SetPerspectiveLift(double lift, const ThreeDView_s *view = nullptr, const ThreeDViewCalc_s *calc = nullptr);
void GrHW_SetScaleFactors(double x, double y, double z);
void GrHW_SetOffsets(double x, double y, double z);
void GrHW_EnableDepthTest();
void GrHW_DisableDepthTest();
void GrHW_EnableDepthWrite();
void GrHW_DisableDepthWrite();
void GrHW_ClearDepthBuffer();
void GrHW_EnablePolygonOffset();
void GrHW_DisablePolygonOffset();
void GrHW_SetPolygonOffset(double factor);
void GrHW_ForceColorResend();
void GrHW_InvalidateColorCache();
// Clears the caches of blocks, colour, views, depth and the lift: a fresh context.
void GrHW_ResetGrHWContext();
void GrHW_SaveContext();
void GrHW_RestoreContext();

// ---- buffers and the off-screen image -----------------------------------------------------------

// Allocates Width * Height * 4 bytes for a new image (letting the context go from the old one);
// false with the message when it cannot.
bool Gr_ConstructOffscreenImage(int width, int height, ExportRegion_e region);
// Creates the OSMesa context once (24 depth bits, no stencil, no accumulation), binds it to the
// image and fills the OpenGL table (glfuncs) from OSMesa. The first binding of a new image clears
// it to the paper colour (white for a transparent paper) and clears depth. "Error creating
// off-screen graphics context.\nTry specifying a smaller image size."
bool Gr_MakeOffscreenCurrent();
bool Gr_IsOffscreenImageReady();
bool Gr_PrepareOffScreenImageForPixelAccess();
// Row 0 is the top of the picture; 3 bytes per pixel into rgb (room for the image width).
bool Gr_GetRGBPixelRow(int row, uint8_t *rgb);
void Gr_DestroyOffscreenImage();
// Export read straight from the front buffer of the work area (USEOFFSCREENBITMAP off): rows
// are read at the region's offset in the work area.
bool Gr_SetupDirectScreenExport(int width, int height, ExportRegion_e region, int offsetX, int offsetY);
void Gr_MopupDirectScreenExport();

void Gr_BackBuffer();
void Gr_FrontBuffer();
void Gr_FlushGraphics(bool finish);
void Gr_CopyFrontToBackingStore();
void Gr_CopyBackingStoreToFront();

// Clears the whole destination to a colour of the table (or RGB).
void Gr_ClearDrawArea(RGB_s rgb);

// GL_RENDERER of the current context, or "" without one.
const char *Gr_GetRendererName();
// A whole word of the extension string; false for an empty name or one with a blank.
bool Gr_OpenGLExtensionSupported(const char *name);
// OpenGL state calls sent by the back end since the start (colour, width, stipple, blend,
// enables, views); the tests use it to see the cache at work.
uint64_t Gr_GetGLStateCallCount();
// Frees the tessellator, the image and the OSMesa context.
void Gr_Close();
