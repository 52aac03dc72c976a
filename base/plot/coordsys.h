// Coordinate systems and views: the affine maps among grid, frame, paper, screen and hard copy
// coordinates and the position and unit conversions that use them; the 4 by 4 matrices of the 3D
// view (model view built from the three angles, the axis scale and the viewer position; frustum or
// box projection onto the view limits), the calculated view values, the full and partial 3D
// transforms, view decomposition and rotation about the data axes; the per-plot-type view stack.
// Everything here is pure: the inputs (frame rectangle, axis ranges, work area, 3D view style)
// come in as parameters and the results go out in plain records, so the caller decides where the
// current frame's maps live.
// Units: paper inches with Y down; frame units 0 to 1 with Y up; screen pixels of the work area
// with Y down; hard copy plotter units with Y up; angles in radians.
// Relies on: types (Rect_s, XYZ_s), framestyle (ThreeDView_s, GlobalThreeD_s).
#pragma once

#include <cstdint>

#include "base/kernel/types.h"
#include "base/plot/framestyle.h"

enum CoordSys_e : uint8_t {
    CoordSys_Grid = 0,
    CoordSys_Frame = 1,
    CoordSys_FrameOffset = 2,
    CoordSys_Paper = 3,
    CoordSys_Screen = 4,
    CoordSys_Hardcopy = 5,
    CoordSys_Grid3D = 6,
    CoordSys_Invalid = 255
};

enum Units_e : uint8_t {
    Units_Grid = 0,
    Units_Frame = 1,
    Units_Point = 2,
    Units_Screen = 3,
    Units_AxisPercentage = 4
};

enum CoordScale_e : uint8_t { CoordScale_Linear = 0, CoordScale_Log = 1, CoordScale_Invalid = 255 };

// The macro word of a coordinate system ("GRID", ..., "INVALID" for anything unknown).
const char *CoordSys_Word(CoordSys_e coordSys);

// ---- affine maps ------------------------------------------------------------------------------

// X' = X * XScale + XOffset, Y' = Y * YScale + YOffset.
struct CoordMap_s {
    double XScale = 1.0, XOffset = 0.0, YScale = 1.0, YOffset = 0.0;
};

inline double CoordMap_X(const CoordMap_s &map, double x) { return x * map.XScale + map.XOffset; }
inline double CoordMap_Y(const CoordMap_s &map, double y) { return y * map.YScale + map.YOffset; }
// The map that undoes `map`; both scales must be non-zero.
CoordMap_s CoordMap_Invert(const CoordMap_s &map);
// The map that applies `first`, then `second`.
CoordMap_s CoordMap_Compose(const CoordMap_s &first, const CoordMap_s &second);

// One axis of the grid area: its limits in data units and how it is scaled.
struct AxisLimits_s {
    double Min = 0.0, Max = 1.0;
    CoordScale_e CoordScale = CoordScale_Linear;
    bool IsReversed = false;
};

// What the maps are computed from. The viewport is the plot's grid area in frame units (X1, Y1 the
// lower left, X2, Y2 the upper right); the region in work area is the part of the paper shown,
// in paper inches.
struct TransformInputs_s {
    Rect_s FrameRect{1.0, 8.25, 10.0, 0.25};  // paper inches, Y down
    double PaperWidth = 11.0, PaperHeight = 8.5;
    Rect_s RegionInWorkArea{-0.05, -0.05, 11.05, 8.55};
    int UsableWorkAreaWidth = 800, UsableWorkAreaHeight = 600;  // pixels
    double JDotsPerIDots = 1.0;
    double PlUnitsPerInch = 2880.0;
    bool IsMetafile = false;  // hard copy Y grows downward, offsets 0
    Rect_s Viewport{0.1, 0.1, 0.9, 0.9};
    AxisLimits_s XAxis, YAxis;
};

// The maps valid for one frame, and the numbers that come with them.
struct Transformations_s {
    CoordMap_s Grid2Frame, Frame2Grid, Grid2Paper, Paper2Grid, Grid2Screen, Screen2Grid;
    CoordMap_s Frame2Paper, Paper2Frame, Frame2Screen, Screen2Frame, Paper2Screen, Screen2Paper;
    CoordMap_s Paper2Hardcopy, Frame2Hardcopy, Screen2Hardcopy;
    double IDotsPerPaperInch = 1.0, JDotsPerPaperInch = 1.0;
    double PlUnitsPerInch = 2880.0;
    double MaxPaperDim = 11.0;
    double AxisPercentageUnits2PaperUnits = 1.0;
    CoordScale_e CurXAxisCoordScale = CoordScale_Linear, CurYAxisCoordScale = CoordScale_Linear;
};

// Plotter units per inch of a vector driver: HPGL (0) and HPGL2 (1) take the style value, the
// others 2880.
double PlUnitsPerInchForDevice(int hardcopyDevice, double plotterUnitsPerInch);
// On a 16-bit metafile system: halve until maxExtentInches * units stays within 16000.
double LimitPlUnitsPerInchTo16Bit(double plUnitsPerInch, double maxExtentInches);

// The 2D maps. Cannot fail: zero spans count as 1.
void Set2DTransformations(const TransformInputs_s &inputs, Transformations_s &maps);

// Log axes: log10 with the value clamped to 1e-150..1e150 (exponents -150..150), then the map;
// and back, the exponent clamped to -150..150.
double ConvertFromLog(double value, double scale, double offset);
double ConvertToLog(double value, double scale, double offset);

// Position and unit conversions through `maps`. Unknown pairs return the value; FrameOffset uses
// scales only.
double ConvertXPosition(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, double x);
double ConvertYPosition(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, double y);
double XScaleFact(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys);
double YScaleFact(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys);
double ConvertUnits(const Transformations_s &maps, Units_e oldUnits, Units_e newUnits, double value);

// ---- 3D ---------------------------------------------------------------------------------------

// Row-major; points are column vectors: out = M * (x, y, z, 1).
struct Matrix4x4_s {
    double M[4][4];
};

void Matrix4x4_LoadIdentity(Matrix4x4_s &out);
void Matrix4x4_Multiply(Matrix4x4_s &out, const Matrix4x4_s &left, const Matrix4x4_s &right);
void Matrix4x4_LoadFrustum(Matrix4x4_s &out, double left, double right, double bottom, double top, double nearDist,
                           double farDist);
void Matrix4x4_LoadFrustumInverse(Matrix4x4_s &out, double left, double right, double bottom, double top,
                                  double nearDist, double farDist);
void Matrix4x4_LoadOrtho(Matrix4x4_s &out, double left, double right, double bottom, double top, double nearDist,
                         double farDist);
void Matrix4x4_LoadOrthoInverse(Matrix4x4_s &out, double left, double right, double bottom, double top,
                                double nearDist, double farDist);
// Counter-clockwise by `radians` seen from the tip of (x, y, z) looking at the origin.
void Matrix4x4_LoadRotate(Matrix4x4_s &out, double radians, double x, double y, double z);
void Matrix4x4_LoadTranslate(Matrix4x4_s &out, double x, double y, double z);
void Matrix4x4_LoadScale(Matrix4x4_s &out, double x, double y, double z);
// M * (x, y, z, 1); the fourth component goes to w when asked for.
XYZ_s Matrix4x4_TransformPoint(const Matrix4x4_s &matrix, const XYZ_s &point, double *w = nullptr);

// The calculated values of a 3D view and its software matrices.
struct ThreeDViewCalc_s {
    double ViewDistance = 0.0;
    double EyeOffsetX = 0.0, EyeOffsetY = 0.0;
    Rect_s ViewLimits{-1.0, -1.0, 1.0, 1.0};  // X1, Y1 minima; X2, Y2 maxima
    double NearDist = 1.0, MidDist = 1.0, FarDist = 1.0;
    double DataNearDist = 1.0, DataFarDist = 1.0;
    bool NearClipped = false;
    Matrix4x4_s Projection, InvProjection, ModelView, InvModelView, Combined, CombinedInverse;
};

// A box in grid coordinates.
struct Box3D_s {
    XYZ_s Min{0.0, 0.0, 0.0}, Max{0.0, 0.0, 0.0};
};

// Reset; rotate Alpha about Z; rotate -Psi about X; rotate Theta about Z; scale by the axis scale
// factors; translate by minus the viewer position. The inverse is formed alongside.
void Setup3DModelViewMatrix(const ThreeDView_s &view, const XYZ_s &axisScaleFact, Matrix4x4_s &modelView,
                            Matrix4x4_s &invModelView);

// Half width h of the view area at `distance`: left -h, right h, bottom -h * aspect, top h * aspect.
Rect_s Get3DViewAreaViewCoordinates(const ThreeDView_s &view, double aspect, double distance);

// The calculated values, projection and combined transforms for the given limits. `otherBox`
// (text, geometry, axes) widens the depth range when given; aspect is the viewport's paper height
// over its paper width. Keeps FieldOfView and ViewWidth of `view` in step.
void VDI3D_UpdateThreeDViewCalculatedValues(ThreeDView_s &view, const GlobalThreeD_s &global,
                                            const Box3D_s &dataBox, const Box3D_s *otherBox, bool showAxes,
                                            double aspect, ThreeDViewCalc_s &calc);

XYZ_s VDI3D_ViewTransformXYZ(const ThreeDViewCalc_s &calc, const XYZ_s &grid);
XYZ_s VDI3D_InverseViewTransformXYZ(const ThreeDViewCalc_s &calc, const XYZ_s &viewPoint);
// Eye Z of a grid point, positive into the screen.
double VDI3D_GetTransformedZ(const ThreeDViewCalc_s &calc, const XYZ_s &grid);
// To frame-view coordinates (the units of the view limits); Z of the result is the eye Z.
XYZ_s VDI3D_TransformXYZ(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, const XYZ_s &grid);
// From frame-view X, Y and eye Z back to grid.
XYZ_s VDI3D_InverseTransformXYZ(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, const XYZ_s &frameView);
// View X and Y plus the eye offsets, and minus view Z.
XYZ_s VDI3D_OrthoTransformXYZ(const ThreeDViewCalc_s &calc, const XYZ_s &grid);
// Moves the point towards the viewer by `lift` in eye Z, keeping its picture position in
// perspective, and returns it in grid coordinates.
XYZ_s VDI3D_PerspectiveLiftXYZ(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, const XYZ_s &grid,
                               double lift);

// The field of view (perspective) or view width (orthographic) that shows a box width by height.
double VDI3D_CalcViewSize(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, double aspect, double width,
                          double height);
// Eye distance that frames `box` well: its view Z centre plus view distance plus 6 times its depth.
double VDI3D_CalcGoodViewDistance(const ThreeDViewCalc_s &calc, const Box3D_s &box);

// Angles and viewer position from a model view (without axis scale).
void VDI3D_DecomposeView(const Matrix4x4_s &modelView, XYZ_s &viewerPosition, double &psi, double &theta,
                         double &alpha);

enum RotateAxis_e : uint8_t { RotateAxis_X = 0, RotateAxis_Y = 1, RotateAxis_Z = 2 };
enum RotateOriginLocation_e : uint8_t { RotateOriginLocation_DefinedOrigin = 0, RotateOriginLocation_Viewer = 1 };

// Turns the data by `angle` about a data axis through the rotate origin (or through the eye):
// counter-clockwise seen from the positive end of the axis. Updates the angles and the viewer
// position of `view`.
void RotateAboutAxis(ThreeDView_s &view, const GlobalThreeD_s &global, RotateAxis_e axis, double angle,
                     RotateOriginLocation_e originLocation);
// Each angle folded into -2pi..2pi.
void NormalizeViewAngles(ThreeDView_s &view);

// ---- view stack -------------------------------------------------------------------------------

constexpr int ViewStackDepth = 16;

// Entry 0 is the top. Pushing shifts every entry down one, the oldest falling off; popping
// shifts them up one, the bottom entry staying.
template <typename View_t>
struct ViewStack_s {
    View_t Entries[ViewStackDepth]{};
    int NumPushed = 0;  // pushes since the last populate, capped at the depth
};

template <typename View_t, typename Equal_f>
bool PushView(ViewStack_s<View_t> &stack, const View_t &view, bool onlyIfChanged, Equal_f equal) {
    if (onlyIfChanged && stack.NumPushed > 0 && equal(stack.Entries[0], view)) return false;
    for (int entry = ViewStackDepth - 1; entry > 0; entry--) stack.Entries[entry] = stack.Entries[entry - 1];
    stack.Entries[0] = view;
    if (stack.NumPushed < ViewStackDepth) stack.NumPushed++;
    return true;
}

template <typename View_t>
void PopulateViewStack(ViewStack_s<View_t> &stack, const View_t &view) {
    for (int entry = 0; entry < ViewStackDepth; entry++) stack.Entries[entry] = view;
    stack.NumPushed = ViewStackDepth;
}

// "LAST": the top entry is removed and the new top returned for installing.
template <typename View_t>
const View_t &PopView(ViewStack_s<View_t> &stack) {
    for (int entry = 0; entry < ViewStackDepth - 1; entry++) stack.Entries[entry] = stack.Entries[entry + 1];
    return stack.Entries[0];
}

// The 3D entry of a view stack.
struct ThreeDSavedView_s {
    double PsiAngle = 0.0, ThetaAngle = 0.0, AlphaAngle = 0.0;
    XYZ_s ViewerPosition{0.0, 0.0, 0.0};
    double ViewWidth = 0.0, FieldOfView = 0.0;
    XYZ_s AxisScaleFact{1.0, 1.0, 1.0};
};
