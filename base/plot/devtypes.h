// The small enumerations and records shared by the device layer (vdi) and its two back ends, the
// OpenGL one (grhw) and the hard-copy twin (plotdev). Plain values only; nothing here draws.
// Units: screen pixels of the selected destination, X to the right and Y down.
#pragma once

#include <cstdint>

// Where VDI_ calls go. 0 to 4 are the screen destinations.
enum RenderDest_e : uint8_t {
    RenderDest_WorkArea = 0,
    RenderDest_ExampleText = 1,
    RenderDest_ExampleLightSourcePosition = 2,
    RenderDest_ExampleColorMap = 3,
    RenderDest_ExampleColor = 4,
    RenderDest_OffscreenBitmap = 5,
    RenderDest_Hardcopy = 6,
    RenderDest_None = 255
};

enum LinePattern_e : uint8_t {
    LinePattern_Solid = 0,
    LinePattern_Dashed = 1,
    LinePattern_DashDot = 2,
    LinePattern_Dotted = 3,
    LinePattern_LongDash = 4,
    LinePattern_DashDotDot = 5,
    LinePattern_Invalid = 255
};

enum LineCap_e : uint8_t { LineCap_Flat = 0, LineCap_Round = 1, LineCap_Square = 2, LineCap_Invalid = 255 };
enum LineJoin_e : uint8_t { LineJoin_Miter = 0, LineJoin_Round = 1, LineJoin_Bevel = 2, LineJoin_Invalid = 255 };

// 0: 2D drawing, clipped by the viewport set over the clip rectangle; 1: the same with the
// scissor on; 2: 3D drawing, whose caller sets its own view.
enum ClippingMode_e : uint8_t {
    ClippingMode_2D = 0,
    ClippingMode_2DScissor = 1,
    ClippingMode_3D = 2,
    ClippingMode_Invalid = 255
};

// XOR is drawn with an inverting blend, for rubber bands on the screen.
enum WriteMode_e : uint8_t { WriteMode_Normal = 0, WriteMode_XOR = 2, WriteMode_Invalid = 255 };

enum FillPat_e : uint8_t { FillPat_Solid = 0, FillPat_Hatched = 1, FillPat_None = 2, FillPat_Invalid = 255 };

// 0: build only; 1: build and run; 2: empty the list.
enum DisplayListMode_e : uint8_t {
    DisplayListMode_BuildOnly = 0,
    DisplayListMode_BuildAndRun = 1,
    DisplayListMode_Empty = 2
};

// The region of an image export: what the off-screen image or direct screen read covers.
enum ExportRegion_e : uint8_t { ExportRegion_CurrentFrame = 0, ExportRegion_AllFrames = 1, ExportRegion_WorkArea = 2 };

// Index 66 of every colour table: drawn as white, and the colour of everything in XOR mode.
constexpr int XORColorIndex = 66;
// The first entry of the contour ramp in a colour table.
constexpr int FirstContourColorIndex = 67;
