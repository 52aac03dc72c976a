// The hard-copy twin of the device layer: the Pl_ operations, each a call through the table of
// the vector driver in use (PostScript, HP-GL, WMF are drivers of this shape). The VDI layer
// reaches them on destination 6 with every coordinate already in hard-copy units. Also here a
// recording driver that keeps each call with its arguments, for tests and for checking what a
// draw sends to a printer.
// Units: hard-copy plotter units (Y up, or Y down for a metafile driver); line thickness and
// pattern length in the same units.
// Relies on: devtypes, genbase (RGB_s), types.
#pragma once

#include <string>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/types.h"
#include "base/plot/devtypes.h"

// One vector driver. A null entry is an operation the driver ignores.
struct PlDevice_s {
    const char *Name;
    bool IsMetafile;           // VDI_SetVert keeps rounded points in PtsIn for it
    bool Uses16BitCoords;      // metafile points clamped to -16000..16000
    bool CanDrawPreciseGrids;  // grids go to Rectangular_Precise_Grid / Polar_Precise_Grid

    void (*Begin_Path)();
    void (*Move_Abs)(double x, double y);
    void (*Line_Abs)(double x, double y);
    void (*End_Path)();
    void (*Set_Clipping)(double x1, double y1, double x2, double y2);
    void (*Set_Line_Style)(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap,
                           LineJoin_e join);
    // Colour index into the basic table, with the pen of a pen plotter.
    void (*Set_Line_Color)(int color, int penNumber, RGB_s rgb);
    void (*Set_Fill_Color)(int color, RGB_s rgb);
    void (*Set_Line_ColorRGB)(RGB_s rgb);
    void (*Set_Fill_ColorRGB)(RGB_s rgb);
    void (*Set_Fill_Pattern)(FillPat_e pattern);
    void (*Set_Translucency)(int percent);
    // The polygon's vertices, the last repeating the first when closed.
    void (*Pgon)(const double *x, const double *y, int numVert, bool fill, bool outline);
    void (*Rectangle)(double x1, double y1, double x2, double y2, bool outline, bool fill);
    // Rows of RGB bytes, top row first.
    void (*Draw_Image)(double x1, double y1, double x2, double y2, const uint8_t *rgb, int width, int height);
    void (*Rectangular_Precise_Grid)(double x1, double y1, double x2, double y2, int numX, int numY);
    void (*Polar_Precise_Grid)(double cx, double cy, double r1, double r2, double angle1, double angle2,
                               int numRadial, int numCircles);
};

// The driver the Pl_ operations use; null sends them nowhere.
void Pl_SetDevice(const PlDevice_s *device);
const PlDevice_s *Pl_GetDevice();

void Pl_Begin_Path();
void Pl_Move_Abs(double x, double y);
void Pl_Line_Abs(double x, double y);
void Pl_End_Path();
void Pl_Set_Clipping(double x1, double y1, double x2, double y2);
void Pl_Set_Line_Style(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap, LineJoin_e join);
void Pl_Set_Line_Color(int color, int penNumber, RGB_s rgb);
void Pl_Set_Fill_Color(int color, RGB_s rgb);
void Pl_Set_Line_ColorRGB(RGB_s rgb);
void Pl_Set_Fill_ColorRGB(RGB_s rgb);
void Pl_Set_Fill_Pattern(FillPat_e pattern);
void Pl_Set_Translucency(int percent);
void Pl_Pgon(const double *x, const double *y, int numVert, bool fill, bool outline);
void Pl_Rectangle(double x1, double y1, double x2, double y2, bool outline, bool fill);
void Pl_Draw_Image(double x1, double y1, double x2, double y2, const uint8_t *rgb, int width, int height);
bool Pl_CanDrawPreciseGrids();
void Pl_Rectangular_Precise_Grid(double x1, double y1, double x2, double y2, int numX, int numY);
void Pl_Polar_Precise_Grid(double cx, double cy, double r1, double r2, double angle1, double angle2, int numRadial,
                           int numCircles);

// ---- the recording driver -----------------------------------------------------------------------

enum PlOp_e : uint8_t {
    PlOp_Begin_Path,
    PlOp_Move_Abs,
    PlOp_Line_Abs,
    PlOp_End_Path,
    PlOp_Set_Clipping,
    PlOp_Set_Line_Style,
    PlOp_Set_Line_Color,
    PlOp_Set_Fill_Color,
    PlOp_Set_Line_ColorRGB,
    PlOp_Set_Fill_ColorRGB,
    PlOp_Set_Fill_Pattern,
    PlOp_Set_Translucency,
    PlOp_Pgon,
    PlOp_Rectangle,
    PlOp_Draw_Image,
    PlOp_Rectangular_Precise_Grid,
    PlOp_Polar_Precise_Grid
};

// One call. Coordinates in X1..Y2 (a point in X1, Y1); Value the thickness; Int1, Int2 the
// integer arguments in order (pattern and cap, colour and pen, percent, counts); Flag1, Flag2
// the Booleans in order; Points the vertices of a polygon; Rgb a colour argument.
struct PlRecord_s {
    PlOp_e Op;
    double X1 = 0.0, Y1 = 0.0, X2 = 0.0, Y2 = 0.0;
    double Value = 0.0, Value2 = 0.0;
    int Int1 = 0, Int2 = 0, Int3 = 0, Int4 = 0;
    bool Flag1 = false, Flag2 = false;
    RGB_s Rgb{0, 0, 0};
    std::vector<XY_s> Points;
};

// The recording driver; its calls append to PlRecorderRecords. The flags of the table can be
// changed through PlRecorderDevice before use (metafile, 16-bit, precise grids).
PlDevice_s *PlRecorderDevice();
std::vector<PlRecord_s> &PlRecorderRecords();
void PlRecorderClear();
// The operation's name as written by PlRecorderDump ("Line_Abs").
const char *PlOp_Name(PlOp_e op);
// One line per record, "Line_Abs 10 20".
std::string PlRecorderDump();
