// The Pl_ operations: one call through the table of the driver in use, and the recording driver.
#include "base/plot/plotdev.h"

#include <cstdio>

namespace {

const PlDevice_s *CurrentPlDevice = nullptr;

std::vector<PlRecord_s> Records;

PlRecord_s &addRecord(PlOp_e op) {
    Records.emplace_back();
    Records.back().Op = op;
    return Records.back();
}

void recBeginPath() { addRecord(PlOp_Begin_Path); }
void recMoveAbs(double x, double y) {
    PlRecord_s &r = addRecord(PlOp_Move_Abs);
    r.X1 = x, r.Y1 = y;
}
void recLineAbs(double x, double y) {
    PlRecord_s &r = addRecord(PlOp_Line_Abs);
    r.X1 = x, r.Y1 = y;
}
void recEndPath() { addRecord(PlOp_End_Path); }
void recSetClipping(double x1, double y1, double x2, double y2) {
    PlRecord_s &r = addRecord(PlOp_Set_Clipping);
    r.X1 = x1, r.Y1 = y1, r.X2 = x2, r.Y2 = y2;
}
void recSetLineStyle(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap, LineJoin_e join) {
    PlRecord_s &r = addRecord(PlOp_Set_Line_Style);
    r.Value = thickness, r.Value2 = patternLength;
    r.Int1 = pattern, r.Int2 = cap, r.Int3 = join;
}
void recSetLineColor(int color, int penNumber, RGB_s rgb) {
    PlRecord_s &r = addRecord(PlOp_Set_Line_Color);
    r.Int1 = color, r.Int2 = penNumber, r.Rgb = rgb;
}
void recSetFillColor(int color, RGB_s rgb) {
    PlRecord_s &r = addRecord(PlOp_Set_Fill_Color);
    r.Int1 = color, r.Rgb = rgb;
}
void recSetLineColorRGB(RGB_s rgb) { addRecord(PlOp_Set_Line_ColorRGB).Rgb = rgb; }
void recSetFillColorRGB(RGB_s rgb) { addRecord(PlOp_Set_Fill_ColorRGB).Rgb = rgb; }
void recSetFillPattern(FillPat_e pattern) { addRecord(PlOp_Set_Fill_Pattern).Int1 = pattern; }
void recSetTranslucency(int percent) { addRecord(PlOp_Set_Translucency).Int1 = percent; }
void recPgon(const double *x, const double *y, int numVert, bool fill, bool outline) {
    PlRecord_s &r = addRecord(PlOp_Pgon);
    r.Int1 = numVert, r.Flag1 = fill, r.Flag2 = outline;
    for (int v = 0; v < numVert; v++) r.Points.push_back(XY_s{x[v], y[v]});
}
void recRectangle(double x1, double y1, double x2, double y2, bool outline, bool fill) {
    PlRecord_s &r = addRecord(PlOp_Rectangle);
    r.X1 = x1, r.Y1 = y1, r.X2 = x2, r.Y2 = y2, r.Flag1 = outline, r.Flag2 = fill;
}
void recDrawImage(double x1, double y1, double x2, double y2, const uint8_t *, int width, int height) {
    PlRecord_s &r = addRecord(PlOp_Draw_Image);
    r.X1 = x1, r.Y1 = y1, r.X2 = x2, r.Y2 = y2, r.Int1 = width, r.Int2 = height;
}
void recRectGrid(double x1, double y1, double x2, double y2, int numX, int numY) {
    PlRecord_s &r = addRecord(PlOp_Rectangular_Precise_Grid);
    r.X1 = x1, r.Y1 = y1, r.X2 = x2, r.Y2 = y2, r.Int1 = numX, r.Int2 = numY;
}
void recPolarGrid(double cx, double cy, double r1, double r2, double angle1, double angle2, int numRadial,
                  int numCircles) {
    PlRecord_s &r = addRecord(PlOp_Polar_Precise_Grid);
    r.X1 = cx, r.Y1 = cy, r.X2 = r1, r.Y2 = r2, r.Value = angle1, r.Value2 = angle2;
    r.Int1 = numRadial, r.Int2 = numCircles;
}

PlDevice_s RecorderDevice = {
    "RECORDER", false, false, false,
    recBeginPath, recMoveAbs, recLineAbs, recEndPath, recSetClipping, recSetLineStyle,
    recSetLineColor, recSetFillColor, recSetLineColorRGB, recSetFillColorRGB, recSetFillPattern,
    recSetTranslucency, recPgon, recRectangle, recDrawImage, recRectGrid, recPolarGrid,
};

}  // namespace

void Pl_SetDevice(const PlDevice_s *device) { CurrentPlDevice = device; }
const PlDevice_s *Pl_GetDevice() { return CurrentPlDevice; }

// Each operation is a no-op without a driver or without the entry.
#define PL_CALL(member, ...)                                                        \
    do {                                                                            \
        if (CurrentPlDevice != nullptr && CurrentPlDevice->member != nullptr)       \
            CurrentPlDevice->member(__VA_ARGS__);                                   \
    } while (0)

void Pl_Begin_Path() {
    if (CurrentPlDevice != nullptr && CurrentPlDevice->Begin_Path != nullptr) CurrentPlDevice->Begin_Path();
}
void Pl_Move_Abs(double x, double y) { PL_CALL(Move_Abs, x, y); }
void Pl_Line_Abs(double x, double y) { PL_CALL(Line_Abs, x, y); }
void Pl_End_Path() {
    if (CurrentPlDevice != nullptr && CurrentPlDevice->End_Path != nullptr) CurrentPlDevice->End_Path();
}
void Pl_Set_Clipping(double x1, double y1, double x2, double y2) { PL_CALL(Set_Clipping, x1, y1, x2, y2); }
void Pl_Set_Line_Style(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap,
                       LineJoin_e join) {
    PL_CALL(Set_Line_Style, thickness, pattern, patternLength, cap, join);
}
void Pl_Set_Line_Color(int color, int penNumber, RGB_s rgb) { PL_CALL(Set_Line_Color, color, penNumber, rgb); }
void Pl_Set_Fill_Color(int color, RGB_s rgb) { PL_CALL(Set_Fill_Color, color, rgb); }
void Pl_Set_Line_ColorRGB(RGB_s rgb) { PL_CALL(Set_Line_ColorRGB, rgb); }
void Pl_Set_Fill_ColorRGB(RGB_s rgb) { PL_CALL(Set_Fill_ColorRGB, rgb); }
void Pl_Set_Fill_Pattern(FillPat_e pattern) { PL_CALL(Set_Fill_Pattern, pattern); }
void Pl_Set_Translucency(int percent) { PL_CALL(Set_Translucency, percent); }
void Pl_Pgon(const double *x, const double *y, int numVert, bool fill, bool outline) {
    PL_CALL(Pgon, x, y, numVert, fill, outline);
}
void Pl_Rectangle(double x1, double y1, double x2, double y2, bool outline, bool fill) {
    PL_CALL(Rectangle, x1, y1, x2, y2, outline, fill);
}
void Pl_Draw_Image(double x1, double y1, double x2, double y2, const uint8_t *rgb, int width, int height) {
    PL_CALL(Draw_Image, x1, y1, x2, y2, rgb, width, height);
}
bool Pl_CanDrawPreciseGrids() { return CurrentPlDevice != nullptr && CurrentPlDevice->CanDrawPreciseGrids; }
void Pl_Rectangular_Precise_Grid(double x1, double y1, double x2, double y2, int numX, int numY) {
    PL_CALL(Rectangular_Precise_Grid, x1, y1, x2, y2, numX, numY);
}
void Pl_Polar_Precise_Grid(double cx, double cy, double r1, double r2, double angle1, double angle2, int numRadial,
                           int numCircles) {
    PL_CALL(Polar_Precise_Grid, cx, cy, r1, r2, angle1, angle2, numRadial, numCircles);
}

#undef PL_CALL

PlDevice_s *PlRecorderDevice() { return &RecorderDevice; }
std::vector<PlRecord_s> &PlRecorderRecords() { return Records; }
void PlRecorderClear() { Records.clear(); }

const char *PlOp_Name(PlOp_e op) {
    static const char *const names[] = {
        "Begin_Path",     "Move_Abs",          "Line_Abs",          "End_Path",         "Set_Clipping",
        "Set_Line_Style", "Set_Line_Color",    "Set_Fill_Color",    "Set_Line_ColorRGB", "Set_Fill_ColorRGB",
        "Set_Fill_Pattern", "Set_Translucency", "Pgon",             "Rectangle",        "Draw_Image",
        "Rectangular_Precise_Grid", "Polar_Precise_Grid"};
    return static_cast<size_t>(op) < sizeof(names) / sizeof(names[0]) ? names[op] : "?";
}

std::string PlRecorderDump() {
    std::string out;
    char buffer[256];
    for (const PlRecord_s &r : Records) {
        out += PlOp_Name(r.Op);
        switch (r.Op) {
            case PlOp_Move_Abs:
            case PlOp_Line_Abs: snprintf(buffer, sizeof(buffer), " %g %g", r.X1, r.Y1); break;
            case PlOp_Set_Clipping:
            case PlOp_Rectangle:
            case PlOp_Draw_Image:
                snprintf(buffer, sizeof(buffer), " %g %g %g %g", r.X1, r.Y1, r.X2, r.Y2);
                break;
            case PlOp_Set_Line_Style:
                snprintf(buffer, sizeof(buffer), " %g %d %g %d %d", r.Value, r.Int1, r.Value2, r.Int2, r.Int3);
                break;
            case PlOp_Set_Line_Color:
            case PlOp_Set_Fill_Color:
            case PlOp_Set_Fill_Pattern:
            case PlOp_Set_Translucency: snprintf(buffer, sizeof(buffer), " %d", r.Int1); break;
            case PlOp_Set_Line_ColorRGB:
            case PlOp_Set_Fill_ColorRGB: snprintf(buffer, sizeof(buffer), " %d %d %d", r.Rgb.R, r.Rgb.G, r.Rgb.B); break;
            case PlOp_Pgon: {
                snprintf(buffer, sizeof(buffer), " %d%s%s", r.Int1, r.Flag1 ? " fill" : "", r.Flag2 ? " outline" : "");
                out += buffer;
                buffer[0] = '\0';
                for (const XY_s &p : r.Points) {
                    char point[64];
                    snprintf(point, sizeof(point), " (%g,%g)", p.X, p.Y);
                    out += point;
                }
                break;
            }
            default: buffer[0] = '\0'; break;
        }
        out += buffer;
        out += '\n';
    }
    return out;
}
