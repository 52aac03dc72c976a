// Coordinate systems and views: the 2D maps and conversions, the 3D matrices and transforms, view
// decomposition and rotation. See coordsys.h for the units.
#include "base/plot/coordsys.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace {

constexpr double LogLimitValueLow = 1e-150, LogLimitValueHigh = 1e150;
constexpr double LogLimitExponent = 150.0;
constexpr double Pi = 3.14159265358979323846;

double SpanOrOne(double span) { return span == 0.0 ? 1.0 : span; }

// One axis of Grid2Frame: the first limit falls on viewportLow, the second on viewportHigh.
void AxisToViewport(double first, double second, double viewportLow, double viewportHigh, double &scale,
                    double &offset) {
    scale = SpanOrOne(viewportHigh - viewportLow) / SpanOrOne(second - first);
    offset = viewportLow - first * scale;
}

// The axis limits in the terms Grid2Frame works in: swapped when reversed, log10 when log.
void AxisTerms(const AxisLimits_s &axis, double &first, double &second) {
    first = axis.Min;
    second = axis.Max;
    if (axis.CoordScale == CoordScale_Log) {
        first = first > 0.0 ? std::log10(first) : -1e150;
        second = second > 0.0 ? std::log10(second) : -1e150;
    }
    if (axis.IsReversed) std::swap(first, second);
}

double ClampedLog10(double value) {
    if (value < LogLimitValueLow) return -LogLimitExponent;
    if (value > LogLimitValueHigh) return LogLimitExponent;
    return std::log10(value);
}

// The direct map from one system to another, if there is one.
bool GetMap(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, CoordMap_s &map) {
    struct Entry {
        CoordSys_e From, To;
        const CoordMap_s Transformations_s::*Map;
    };
    static const Entry Table[] = {
        {CoordSys_Grid, CoordSys_Frame, &Transformations_s::Grid2Frame},
        {CoordSys_Frame, CoordSys_Grid, &Transformations_s::Frame2Grid},
        {CoordSys_Grid, CoordSys_Paper, &Transformations_s::Grid2Paper},
        {CoordSys_Paper, CoordSys_Grid, &Transformations_s::Paper2Grid},
        {CoordSys_Grid, CoordSys_Screen, &Transformations_s::Grid2Screen},
        {CoordSys_Screen, CoordSys_Grid, &Transformations_s::Screen2Grid},
        {CoordSys_Frame, CoordSys_Paper, &Transformations_s::Frame2Paper},
        {CoordSys_Paper, CoordSys_Frame, &Transformations_s::Paper2Frame},
        {CoordSys_Frame, CoordSys_Screen, &Transformations_s::Frame2Screen},
        {CoordSys_Screen, CoordSys_Frame, &Transformations_s::Screen2Frame},
        {CoordSys_Paper, CoordSys_Screen, &Transformations_s::Paper2Screen},
        {CoordSys_Screen, CoordSys_Paper, &Transformations_s::Screen2Paper},
        {CoordSys_Paper, CoordSys_Hardcopy, &Transformations_s::Paper2Hardcopy},
        {CoordSys_Frame, CoordSys_Hardcopy, &Transformations_s::Frame2Hardcopy},
        {CoordSys_Screen, CoordSys_Hardcopy, &Transformations_s::Screen2Hardcopy},
    };
    for (const Entry &entry : Table) {
        if (entry.From == oldSys && entry.To == newSys) {
            map = maps.*entry.Map;
            return true;
        }
    }
    return false;
}

// Frame offset is inches from the frame's origin with Y up: a length, so scale only.
CoordMap_s FrameOffset2Frame(const Transformations_s &maps) {
    CoordMap_s map;
    map.XScale = 1.0 / maps.Frame2Paper.XScale;
    map.XOffset = 0.0;
    map.YScale = -1.0 / maps.Frame2Paper.YScale;  // paper Y runs down, frame offset Y up
    map.YOffset = 0.0;
    return map;
}

// The scale-only map between two systems where one of them is FrameOffset.
bool GetFrameOffsetMap(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, CoordMap_s &map) {
    CoordMap_s toFrame = FrameOffset2Frame(maps);
    CoordMap_s scaleOnly;
    if (oldSys == CoordSys_FrameOffset) {
        if (newSys == CoordSys_Frame) {
            scaleOnly = toFrame;
        } else if (GetMap(maps, CoordSys_Frame, newSys, scaleOnly)) {
            scaleOnly = CoordMap_Compose(toFrame, scaleOnly);
        } else {
            return false;
        }
    } else {
        CoordMap_s fromFrame = CoordMap_Invert(toFrame);
        if (oldSys == CoordSys_Frame) {
            scaleOnly = fromFrame;
        } else if (GetMap(maps, oldSys, CoordSys_Frame, scaleOnly)) {
            scaleOnly = CoordMap_Compose(scaleOnly, fromFrame);
        } else {
            return false;
        }
    }
    scaleOnly.XOffset = 0.0;
    scaleOnly.YOffset = 0.0;
    map = scaleOnly;
    return true;
}

bool FindMap(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, CoordMap_s &map) {
    if (oldSys == CoordSys_FrameOffset || newSys == CoordSys_FrameOffset)
        return GetFrameOffsetMap(maps, oldSys, newSys, map);
    return GetMap(maps, oldSys, newSys, map);
}

double ConvertPosition1D(double value, CoordSys_e oldSys, CoordSys_e newSys, double scale, double offset,
                         bool isLog) {
    // Offsets are already zero for FrameOffset maps; log only applies to positions.
    if (isLog && oldSys == CoordSys_Grid) return ConvertFromLog(value, scale, offset);
    if (isLog && newSys == CoordSys_Grid) return ConvertToLog(value, scale, offset);
    return value * scale + offset;
}

// Frame units per one of `units`, measured along the frame height.
double FrameUnitsPerUnit(const Transformations_s &maps, Units_e units) {
    switch (units) {
        case Units_Frame: return 1.0;
        case Units_Point: return 1.0 / (72.0 * std::fabs(maps.Frame2Paper.YScale));
        case Units_Screen: return 1.0 / std::fabs(maps.Frame2Screen.YScale);
        case Units_AxisPercentage:
            return maps.AxisPercentageUnits2PaperUnits / std::fabs(maps.Frame2Paper.YScale);
        case Units_Grid: return std::fabs(maps.Grid2Frame.YScale);
    }
    return 1.0;
}

}  // namespace

const char *CoordSys_Word(CoordSys_e coordSys) {
    switch (coordSys) {
        case CoordSys_Grid: return "GRID";
        case CoordSys_Frame: return "FRAME";
        case CoordSys_FrameOffset: return "FRAMEOFFSET";
        case CoordSys_Paper: return "PAPER";
        case CoordSys_Screen: return "SCREEN";
        case CoordSys_Hardcopy: return "HARDCOPY";
        case CoordSys_Grid3D: return "GRID3D";
        default: return "INVALID";
    }
}

CoordMap_s CoordMap_Invert(const CoordMap_s &map) {
    assert(map.XScale != 0.0 && map.YScale != 0.0);
    CoordMap_s inverse;
    inverse.XScale = 1.0 / map.XScale;
    inverse.XOffset = -map.XOffset / map.XScale;
    inverse.YScale = 1.0 / map.YScale;
    inverse.YOffset = -map.YOffset / map.YScale;
    return inverse;
}

CoordMap_s CoordMap_Compose(const CoordMap_s &first, const CoordMap_s &second) {
    CoordMap_s both;
    both.XScale = first.XScale * second.XScale;
    both.XOffset = first.XOffset * second.XScale + second.XOffset;
    both.YScale = first.YScale * second.YScale;
    both.YOffset = first.YOffset * second.YScale + second.YOffset;
    return both;
}

double PlUnitsPerInchForDevice(int hardcopyDevice, double plotterUnitsPerInch) {
    return (hardcopyDevice == 0 || hardcopyDevice == 1) ? plotterUnitsPerInch : 2880.0;
}

double LimitPlUnitsPerInchTo16Bit(double plUnitsPerInch, double maxExtentInches) {
    while (plUnitsPerInch > 0.0 && std::fabs(maxExtentInches) * plUnitsPerInch > 16000.0) plUnitsPerInch *= 0.5;
    return plUnitsPerInch;
}

void Set2DTransformations(const TransformInputs_s &inputs, Transformations_s &maps) {
    maps.PlUnitsPerInch = inputs.PlUnitsPerInch;
    maps.MaxPaperDim = std::max(inputs.PaperWidth, inputs.PaperHeight);

    // Paper zoom: fit the region into the usable work area, keeping the pixel aspect.
    double width = std::max(inputs.UsableWorkAreaWidth - 1.0, 2.0);
    double height = std::max(inputs.UsableWorkAreaHeight - 1.0, 2.0);
    const Rect_s &region = inputs.RegionInWorkArea;
    double regionWidth = SpanOrOne(region.X2 - region.X1);
    double regionHeight = SpanOrOne(region.Y2 - region.Y1);
    double regionAspect = regionHeight / regionWidth;
    CoordMap_s paper2Screen;
    if (height / (width * inputs.JDotsPerIDots) > regionAspect) {
        maps.IDotsPerPaperInch = width / regionWidth;
        maps.JDotsPerPaperInch = maps.IDotsPerPaperInch * inputs.JDotsPerIDots;
        paper2Screen.XOffset = -region.X1 * maps.IDotsPerPaperInch;
        paper2Screen.YOffset =
            (height - regionHeight * maps.JDotsPerPaperInch) / 2.0 - region.Y1 * maps.JDotsPerPaperInch;
    } else {
        maps.JDotsPerPaperInch = height / regionHeight;
        maps.IDotsPerPaperInch = maps.JDotsPerPaperInch / inputs.JDotsPerIDots;
        paper2Screen.YOffset = -region.Y1 * maps.JDotsPerPaperInch;
        paper2Screen.XOffset =
            (width - regionWidth * maps.IDotsPerPaperInch) / 2.0 - region.X1 * maps.IDotsPerPaperInch;
    }
    paper2Screen.XScale = maps.IDotsPerPaperInch;
    paper2Screen.YScale = maps.JDotsPerPaperInch;
    maps.Paper2Screen = paper2Screen;
    maps.Screen2Paper = CoordMap_Invert(paper2Screen);

    // Frame units run 0 to 1 across the rectangle, Y up, so the Y scale is negative on the paper.
    const Rect_s &frame = inputs.FrameRect;
    maps.Frame2Paper = {SpanOrOne(frame.X2 - frame.X1), frame.X1, SpanOrOne(frame.Y2 - frame.Y1), frame.Y1};
    maps.Paper2Frame = CoordMap_Invert(maps.Frame2Paper);

    if (inputs.IsMetafile)
        maps.Paper2Hardcopy = {inputs.PlUnitsPerInch, 0.0, inputs.PlUnitsPerInch, 0.0};
    else
        maps.Paper2Hardcopy = {inputs.PlUnitsPerInch, 0.0, -inputs.PlUnitsPerInch,
                               inputs.PlUnitsPerInch * inputs.PaperHeight};
    maps.Frame2Screen = CoordMap_Compose(maps.Frame2Paper, maps.Paper2Screen);
    maps.Screen2Frame = CoordMap_Invert(maps.Frame2Screen);
    maps.Frame2Hardcopy = CoordMap_Compose(maps.Frame2Paper, maps.Paper2Hardcopy);
    maps.Screen2Hardcopy = CoordMap_Compose(maps.Screen2Paper, maps.Paper2Hardcopy);

    double xFirst, xSecond, yFirst, ySecond;
    AxisTerms(inputs.XAxis, xFirst, xSecond);
    AxisTerms(inputs.YAxis, yFirst, ySecond);
    AxisToViewport(xFirst, xSecond, inputs.Viewport.X1, inputs.Viewport.X2, maps.Grid2Frame.XScale,
                   maps.Grid2Frame.XOffset);
    AxisToViewport(yFirst, ySecond, inputs.Viewport.Y1, inputs.Viewport.Y2, maps.Grid2Frame.YScale,
                   maps.Grid2Frame.YOffset);
    maps.CurXAxisCoordScale = inputs.XAxis.CoordScale;
    maps.CurYAxisCoordScale = inputs.YAxis.CoordScale;
    maps.Frame2Grid = CoordMap_Invert(maps.Grid2Frame);
    maps.Grid2Paper = CoordMap_Compose(maps.Grid2Frame, maps.Frame2Paper);
    maps.Paper2Grid = CoordMap_Invert(maps.Grid2Paper);
    maps.Grid2Screen = CoordMap_Compose(maps.Grid2Frame, maps.Frame2Screen);
    maps.Screen2Grid = CoordMap_Invert(maps.Grid2Screen);
}

double ConvertFromLog(double value, double scale, double offset) { return ClampedLog10(value) * scale + offset; }

double ConvertToLog(double value, double scale, double offset) {
    double exponent = std::clamp(value * scale + offset, -LogLimitExponent, LogLimitExponent);
    return std::pow(10.0, exponent);
}

double ConvertXPosition(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, double x) {
    if (oldSys == newSys) return x;
    CoordMap_s map;
    if (!FindMap(maps, oldSys, newSys, map)) return x;
    bool isLog = maps.CurXAxisCoordScale == CoordScale_Log && oldSys != CoordSys_FrameOffset &&
                 newSys != CoordSys_FrameOffset;
    return ConvertPosition1D(x, oldSys, newSys, map.XScale, map.XOffset, isLog);
}

double ConvertYPosition(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys, double y) {
    if (oldSys == newSys) return y;
    CoordMap_s map;
    if (!FindMap(maps, oldSys, newSys, map)) return y;
    bool isLog = maps.CurYAxisCoordScale == CoordScale_Log && oldSys != CoordSys_FrameOffset &&
                 newSys != CoordSys_FrameOffset;
    return ConvertPosition1D(y, oldSys, newSys, map.YScale, map.YOffset, isLog);
}

double XScaleFact(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys) {
    CoordMap_s map;
    return (oldSys != newSys && FindMap(maps, oldSys, newSys, map)) ? map.XScale : 1.0;
}

double YScaleFact(const Transformations_s &maps, CoordSys_e oldSys, CoordSys_e newSys) {
    CoordMap_s map;
    return (oldSys != newSys && FindMap(maps, oldSys, newSys, map)) ? map.YScale : 1.0;
}

double ConvertUnits(const Transformations_s &maps, Units_e oldUnits, Units_e newUnits, double value) {
    if (oldUnits == newUnits) return value;
    return value * FrameUnitsPerUnit(maps, oldUnits) / FrameUnitsPerUnit(maps, newUnits);
}

// ---- matrices ---------------------------------------------------------------------------------

void Matrix4x4_LoadIdentity(Matrix4x4_s &out) {
    for (int row = 0; row < 4; row++)
        for (int col = 0; col < 4; col++) out.M[row][col] = row == col ? 1.0 : 0.0;
}

void Matrix4x4_Multiply(Matrix4x4_s &out, const Matrix4x4_s &left, const Matrix4x4_s &right) {
    Matrix4x4_s product;  // out may be left or right
    for (int row = 0; row < 4; row++)
        for (int col = 0; col < 4; col++) {
            double sum = 0.0;
            for (int k = 0; k < 4; k++) sum += left.M[row][k] * right.M[k][col];
            product.M[row][col] = sum;
        }
    out = product;
}

void Matrix4x4_LoadFrustum(Matrix4x4_s &out, double left, double right, double bottom, double top, double nearDist,
                           double farDist) {
    assert(right != left && top != bottom && farDist != nearDist);
    Matrix4x4_LoadIdentity(out);
    out.M[0][0] = 2.0 * nearDist / (right - left);
    out.M[0][2] = (right + left) / (right - left);
    out.M[1][1] = 2.0 * nearDist / (top - bottom);
    out.M[1][2] = (top + bottom) / (top - bottom);
    out.M[2][2] = -(farDist + nearDist) / (farDist - nearDist);
    out.M[2][3] = -2.0 * farDist * nearDist / (farDist - nearDist);
    out.M[3][2] = -1.0;
    out.M[3][3] = 0.0;
}

void Matrix4x4_LoadFrustumInverse(Matrix4x4_s &out, double left, double right, double bottom, double top,
                                  double nearDist, double farDist) {
    Matrix4x4_LoadIdentity(out);
    out.M[0][0] = (right - left) / (2.0 * nearDist);
    out.M[0][3] = (right + left) / (2.0 * nearDist);
    out.M[1][1] = (top - bottom) / (2.0 * nearDist);
    out.M[1][3] = (top + bottom) / (2.0 * nearDist);
    out.M[2][2] = 0.0;
    out.M[2][3] = -1.0;
    out.M[3][2] = -(farDist - nearDist) / (2.0 * farDist * nearDist);
    out.M[3][3] = (farDist + nearDist) / (2.0 * farDist * nearDist);
}

void Matrix4x4_LoadOrtho(Matrix4x4_s &out, double left, double right, double bottom, double top, double nearDist,
                         double farDist) {
    assert(right != left && top != bottom && farDist != nearDist);
    Matrix4x4_LoadIdentity(out);
    out.M[0][0] = 2.0 / (right - left);
    out.M[0][3] = -(right + left) / (right - left);
    out.M[1][1] = 2.0 / (top - bottom);
    out.M[1][3] = -(top + bottom) / (top - bottom);
    out.M[2][2] = -2.0 / (farDist - nearDist);
    out.M[2][3] = -(farDist + nearDist) / (farDist - nearDist);
}

void Matrix4x4_LoadOrthoInverse(Matrix4x4_s &out, double left, double right, double bottom, double top,
                                double nearDist, double farDist) {
    Matrix4x4_LoadIdentity(out);
    out.M[0][0] = (right - left) / 2.0;
    out.M[0][3] = (right + left) / 2.0;
    out.M[1][1] = (top - bottom) / 2.0;
    out.M[1][3] = (top + bottom) / 2.0;
    out.M[2][2] = -(farDist - nearDist) / 2.0;
    out.M[2][3] = -(farDist + nearDist) / 2.0;
}

void Matrix4x4_LoadRotate(Matrix4x4_s &out, double radians, double x, double y, double z) {
    Matrix4x4_LoadIdentity(out);
    double length = std::sqrt(x * x + y * y + z * z);
    if (length == 0.0) return;
    x /= length;
    y /= length;
    z /= length;
    double c = std::cos(radians), s = std::sin(radians), t = 1.0 - c;
    out.M[0][0] = t * x * x + c;
    out.M[0][1] = t * x * y - s * z;
    out.M[0][2] = t * x * z + s * y;
    out.M[1][0] = t * x * y + s * z;
    out.M[1][1] = t * y * y + c;
    out.M[1][2] = t * y * z - s * x;
    out.M[2][0] = t * x * z - s * y;
    out.M[2][1] = t * y * z + s * x;
    out.M[2][2] = t * z * z + c;
}

void Matrix4x4_LoadTranslate(Matrix4x4_s &out, double x, double y, double z) {
    Matrix4x4_LoadIdentity(out);
    out.M[0][3] = x;
    out.M[1][3] = y;
    out.M[2][3] = z;
}

void Matrix4x4_LoadScale(Matrix4x4_s &out, double x, double y, double z) {
    Matrix4x4_LoadIdentity(out);
    out.M[0][0] = x;
    out.M[1][1] = y;
    out.M[2][2] = z;
}

XYZ_s Matrix4x4_TransformPoint(const Matrix4x4_s &matrix, const XYZ_s &point, double *w) {
    const double in[4] = {point.X, point.Y, point.Z, 1.0};
    double result[4];
    for (int row = 0; row < 4; row++)
        result[row] = matrix.M[row][0] * in[0] + matrix.M[row][1] * in[1] + matrix.M[row][2] * in[2] +
                      matrix.M[row][3] * in[3];
    if (w) *w = result[3];
    return {result[0], result[1], result[2]};
}

// ---- 3D view ----------------------------------------------------------------------------------

void Setup3DModelViewMatrix(const ThreeDView_s &view, const XYZ_s &axisScaleFact, Matrix4x4_s &modelView,
                            Matrix4x4_s &invModelView) {
    assert(axisScaleFact.X != 0.0 && axisScaleFact.Y != 0.0 && axisScaleFact.Z != 0.0);
    // Each step multiplies on the right, so the last one (the translation) acts on a point first.
    Matrix4x4_s step;
    Matrix4x4_LoadIdentity(modelView);
    Matrix4x4_LoadRotate(step, view.AlphaAngle, 0.0, 0.0, 1.0);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadRotate(step, -view.PsiAngle, 1.0, 0.0, 0.0);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadRotate(step, view.ThetaAngle, 0.0, 0.0, 1.0);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadScale(step, axisScaleFact.X, axisScaleFact.Y, axisScaleFact.Z);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadTranslate(step, -view.ViewerPosition.X, -view.ViewerPosition.Y, -view.ViewerPosition.Z);
    Matrix4x4_Multiply(modelView, modelView, step);

    // The inverse undoes the steps in the opposite order.
    Matrix4x4_LoadTranslate(invModelView, view.ViewerPosition.X, view.ViewerPosition.Y, view.ViewerPosition.Z);
    Matrix4x4_LoadScale(step, 1.0 / axisScaleFact.X, 1.0 / axisScaleFact.Y, 1.0 / axisScaleFact.Z);
    Matrix4x4_Multiply(invModelView, invModelView, step);
    Matrix4x4_LoadRotate(step, -view.ThetaAngle, 0.0, 0.0, 1.0);
    Matrix4x4_Multiply(invModelView, invModelView, step);
    Matrix4x4_LoadRotate(step, view.PsiAngle, 1.0, 0.0, 0.0);
    Matrix4x4_Multiply(invModelView, invModelView, step);
    Matrix4x4_LoadRotate(step, -view.AlphaAngle, 0.0, 0.0, 1.0);
    Matrix4x4_Multiply(invModelView, invModelView, step);
}

Rect_s Get3DViewAreaViewCoordinates(const ThreeDView_s &view, double aspect, double distance) {
    double halfWidth =
        view.DrawInPerspective ? distance * std::tan(view.FieldOfView / 2.0) : view.ViewWidth / 2.0;
    return {-halfWidth, -halfWidth * aspect, halfWidth, halfWidth * aspect};
}

namespace {

void BoxCorners(const Box3D_s &box, XYZ_s corners[8]) {
    for (int corner = 0; corner < 8; corner++)
        corners[corner] = {(corner & 1) ? box.Max.X : box.Min.X, (corner & 2) ? box.Max.Y : box.Min.Y,
                           (corner & 4) ? box.Max.Z : box.Min.Z};
}

// Nearest and farthest eye Z of the box's corners.
void EyeZRange(const ThreeDViewCalc_s &calc, const Box3D_s &box, double &nearZ, double &farZ) {
    XYZ_s corners[8];
    BoxCorners(box, corners);
    nearZ = 1e300;
    farZ = -1e300;
    for (const XYZ_s &corner : corners) {
        double eyeZ = VDI3D_GetTransformedZ(calc, corner);
        nearZ = std::min(nearZ, eyeZ);
        farZ = std::max(farZ, eyeZ);
    }
}

// Projection onto the view limits: the frustum or box, then normalised device X and Y scaled and
// shifted onto the limits.
void Setup3DProjection(const ThreeDView_s &view, double aspect, ThreeDViewCalc_s &calc) {
    Rect_s area = Get3DViewAreaViewCoordinates(view, aspect, calc.NearDist);
    Matrix4x4_s base, baseInverse;
    if (view.DrawInPerspective) {
        Matrix4x4_LoadFrustum(base, area.X1, area.X2, area.Y1, area.Y2, calc.NearDist, calc.FarDist);
        Matrix4x4_LoadFrustumInverse(baseInverse, area.X1, area.X2, area.Y1, area.Y2, calc.NearDist,
                                     calc.FarDist);
    } else {
        Matrix4x4_LoadOrtho(base, area.X1, area.X2, area.Y1, area.Y2, calc.NearDist, calc.FarDist);
        Matrix4x4_LoadOrthoInverse(baseInverse, area.X1, area.X2, area.Y1, area.Y2, calc.NearDist,
                                   calc.FarDist);
    }
    const Rect_s &limits = calc.ViewLimits;
    double halfX = (limits.X2 - limits.X1) / 2.0, halfY = (limits.Y2 - limits.Y1) / 2.0;
    double midX = (limits.X2 + limits.X1) / 2.0, midY = (limits.Y2 + limits.Y1) / 2.0;
    Matrix4x4_s toLimits, fromLimits;
    Matrix4x4_LoadIdentity(toLimits);
    toLimits.M[0][0] = halfX;
    toLimits.M[0][3] = midX;
    toLimits.M[1][1] = halfY;
    toLimits.M[1][3] = midY;
    Matrix4x4_LoadIdentity(fromLimits);
    fromLimits.M[0][0] = 1.0 / halfX;
    fromLimits.M[0][3] = -midX / halfX;
    fromLimits.M[1][1] = 1.0 / halfY;
    fromLimits.M[1][3] = -midY / halfY;
    Matrix4x4_Multiply(calc.Projection, toLimits, base);
    Matrix4x4_Multiply(calc.InvProjection, baseInverse, fromLimits);
    Matrix4x4_Multiply(calc.Combined, calc.Projection, calc.ModelView);
    Matrix4x4_Multiply(calc.CombinedInverse, calc.InvModelView, calc.InvProjection);
}

}  // namespace

void VDI3D_UpdateThreeDViewCalculatedValues(ThreeDView_s &view, const GlobalThreeD_s &global,
                                            const Box3D_s &dataBox, const Box3D_s *otherBox, bool showAxes,
                                            double aspect, ThreeDViewCalc_s &calc) {
    Setup3DModelViewMatrix(view, global.AxisScaleFact, calc.ModelView, calc.InvModelView);
    XYZ_s originView = VDI3D_ViewTransformXYZ(calc, global.RotateOrigin);
    calc.ViewDistance = -originView.Z;

    double dataNear, dataFar;
    EyeZRange(calc, dataBox, dataNear, dataFar);
    calc.DataNearDist = dataNear;
    calc.DataFarDist = dataFar;
    double nearDist = dataNear, farDist = dataFar;
    if (otherBox) {
        double otherNear, otherFar;
        EyeZRange(calc, *otherBox, otherNear, otherFar);
        nearDist = std::min(nearDist, otherNear);
        farDist = std::max(farDist, otherFar);
    }
    double dataDepth = dataFar - dataNear;
    if (!showAxes) {
        nearDist -= 0.025 * dataDepth;
        farDist += 0.025 * dataDepth;
    }

    // Near must stay in front of the eye, even for flat data.
    double fullDepth = farDist - nearDist;
    double minNear = fullDepth < 1e-150 ? 1e-150 : 0.01 * fullDepth;
    calc.NearClipped = false;
    if (nearDist < minNear) {
        nearDist = minNear;
        calc.NearClipped = true;
    }
    calc.NearDist = nearDist * 0.9999;
    calc.FarDist = std::max(farDist, nearDist + minNear) * 1.0001;
    calc.MidDist = (calc.NearDist + calc.FarDist) / 2.0;

    if (view.DrawInPerspective)
        view.ViewWidth = (calc.NearDist + calc.FarDist) * std::tan(view.FieldOfView / 2.0);
    else
        view.FieldOfView = 2.0 * std::atan(view.ViewWidth / (calc.NearDist + calc.FarDist));

    // Frame-view coordinates put the rotate origin at 0; the line of sight runs through the
    // middle of the view limits.
    calc.EyeOffsetX = -originView.X;
    calc.EyeOffsetY = -originView.Y;
    Rect_s area = Get3DViewAreaViewCoordinates(view, aspect, calc.MidDist);
    calc.ViewLimits = {area.X1 + calc.EyeOffsetX, area.Y1 + calc.EyeOffsetY, area.X2 + calc.EyeOffsetX,
                       area.Y2 + calc.EyeOffsetY};
    Setup3DProjection(view, aspect, calc);
}

XYZ_s VDI3D_ViewTransformXYZ(const ThreeDViewCalc_s &calc, const XYZ_s &grid) {
    return Matrix4x4_TransformPoint(calc.ModelView, grid);
}

XYZ_s VDI3D_InverseViewTransformXYZ(const ThreeDViewCalc_s &calc, const XYZ_s &viewPoint) {
    return Matrix4x4_TransformPoint(calc.InvModelView, viewPoint);
}

double VDI3D_GetTransformedZ(const ThreeDViewCalc_s &calc, const XYZ_s &grid) {
    const double(&row)[4] = calc.ModelView.M[2];
    return -(row[0] * grid.X + row[1] * grid.Y + row[2] * grid.Z + row[3]);
}

XYZ_s VDI3D_TransformXYZ(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, const XYZ_s &grid) {
    double eyeZ = VDI3D_GetTransformedZ(calc, grid);
    if (eyeZ >= calc.NearDist) {
        double w = 1.0;
        XYZ_s projected = Matrix4x4_TransformPoint(calc.Combined, grid, &w);
        if (view.DrawInPerspective) {
            projected.X /= w;
            projected.Y /= w;
        }
        return {projected.X, projected.Y, eyeZ};
    }
    // Nearer than near: not projected, so nothing divides by a vanishing depth.
    XYZ_s viewPoint = VDI3D_ViewTransformXYZ(calc, grid);
    double factor = view.DrawInPerspective ? calc.MidDist / calc.NearDist : 1.0;
    return {viewPoint.X * factor + calc.EyeOffsetX, viewPoint.Y * factor + calc.EyeOffsetY, eyeZ};
}

XYZ_s VDI3D_InverseTransformXYZ(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, const XYZ_s &frameView) {
    double eyeZ = frameView.Z;
    double factor = 1.0;
    if (view.DrawInPerspective) factor = calc.MidDist / std::max(eyeZ, calc.NearDist);
    XYZ_s viewPoint{(frameView.X - calc.EyeOffsetX) / factor, (frameView.Y - calc.EyeOffsetY) / factor, -eyeZ};
    return VDI3D_InverseViewTransformXYZ(calc, viewPoint);
}

XYZ_s VDI3D_OrthoTransformXYZ(const ThreeDViewCalc_s &calc, const XYZ_s &grid) {
    XYZ_s viewPoint = VDI3D_ViewTransformXYZ(calc, grid);
    return {viewPoint.X + calc.EyeOffsetX, viewPoint.Y + calc.EyeOffsetY, -viewPoint.Z};
}

XYZ_s VDI3D_PerspectiveLiftXYZ(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, const XYZ_s &grid,
                               double lift) {
    XYZ_s viewPoint = VDI3D_ViewTransformXYZ(calc, grid);
    double oldZ = viewPoint.Z;
    viewPoint.Z += lift;  // view Z grows towards the viewer
    if (view.DrawInPerspective && -viewPoint.Z >= calc.NearDist && oldZ != 0.0) {
        viewPoint.X *= viewPoint.Z / oldZ;
        viewPoint.Y *= viewPoint.Z / oldZ;
    }
    return VDI3D_InverseViewTransformXYZ(calc, viewPoint);
}

double VDI3D_CalcViewSize(const ThreeDView_s &view, const ThreeDViewCalc_s &calc, double aspect, double width,
                          double height) {
    // The limiting dimension, expressed as a width.
    double limiting = (width != 0.0 && height / width > aspect) ? height / aspect : width;
    if (view.DrawInPerspective) return 2.0 * std::atan(limiting / 2.0 / calc.MidDist);
    return limiting;
}

double VDI3D_CalcGoodViewDistance(const ThreeDViewCalc_s &calc, const Box3D_s &box) {
    XYZ_s corners[8];
    BoxCorners(box, corners);
    double zMin = 1e300, zMax = -1e300;
    for (const XYZ_s &corner : corners) {
        double z = VDI3D_ViewTransformXYZ(calc, corner).Z;
        zMin = std::min(zMin, z);
        zMax = std::max(zMax, z);
    }
    double depth = zMax - zMin;
    if (depth < 1e-150) depth = 1.0;
    return (zMin + zMax) * 0.5 + calc.ViewDistance + 6.0 * depth;
}

void VDI3D_DecomposeView(const Matrix4x4_s &modelView, XYZ_s &viewerPosition, double &psi, double &theta,
                         double &alpha) {
    // With R = Rz(alpha) Rx(-psi) Rz(theta): the third row is (-sin psi sin theta, -sin psi cos theta,
    // cos psi) and the third column (-sin alpha sin psi, cos alpha sin psi, cos psi).
    const double(&m)[4][4] = modelView.M;
    // The rotation part may carry the axis scale; the angles need the pure rotation.
    double columnLength[3];
    for (int col = 0; col < 3; col++)
        columnLength[col] = std::sqrt(m[0][col] * m[0][col] + m[1][col] * m[1][col] + m[2][col] * m[2][col]);
    double r[3][3];
    for (int row = 0; row < 3; row++)
        for (int col = 0; col < 3; col++) r[row][col] = m[row][col] / columnLength[col];
    double c = r[2][2];
    if (c >= 0.9999999999) {
        psi = 0.0;
        theta = std::atan2(r[1][0], r[0][0]);
        alpha = 0.0;
    } else if (c <= -0.9999999999) {
        psi = Pi;
        theta = std::atan2(-r[1][0], r[0][0]);
        alpha = 0.0;
    } else {
        psi = std::acos(c);
        theta = std::atan2(-r[2][0], -r[2][1]);
        alpha = std::atan2(-r[0][2], r[1][2]);
    }
    // The viewer is the point the model view sends to the eye: solve R S (V' ) = -t.
    double t[3] = {m[0][3], m[1][3], m[2][3]};
    double local[3];
    for (int col = 0; col < 3; col++) {
        double dot = 0.0;
        for (int row = 0; row < 3; row++) dot += r[row][col] * t[row];
        local[col] = -dot / columnLength[col];
    }
    viewerPosition = {local[0], local[1], local[2]};
}

void NormalizeViewAngles(ThreeDView_s &view) {
    view.PsiAngle = std::fmod(view.PsiAngle, 2.0 * Pi);
    view.ThetaAngle = std::fmod(view.ThetaAngle, 2.0 * Pi);
    view.AlphaAngle = std::fmod(view.AlphaAngle, 2.0 * Pi);
}

void RotateAboutAxis(ThreeDView_s &view, const GlobalThreeD_s &global, RotateAxis_e axis, double angle,
                     RotateOriginLocation_e originLocation) {
    const XYZ_s &scale = global.AxisScaleFact;
    Matrix4x4_s modelView, invModelView;
    Setup3DModelViewMatrix(view, scale, modelView, invModelView);
    // The turn acts on the scaled data about the chosen centre C: the model view becomes
    // M * T(C) * S^-1 * R * S * T(-C), which is again a rotation, a scale and a translation.
    XYZ_s centre = originLocation == RotateOriginLocation_Viewer ? view.ViewerPosition : global.RotateOrigin;
    Matrix4x4_s step;
    Matrix4x4_LoadTranslate(step, centre.X, centre.Y, centre.Z);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadScale(step, 1.0 / scale.X, 1.0 / scale.Y, 1.0 / scale.Z);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadRotate(step, angle, axis == RotateAxis_X ? 1.0 : 0.0, axis == RotateAxis_Y ? 1.0 : 0.0,
                         axis == RotateAxis_Z ? 1.0 : 0.0);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadScale(step, scale.X, scale.Y, scale.Z);
    Matrix4x4_Multiply(modelView, modelView, step);
    Matrix4x4_LoadTranslate(step, -centre.X, -centre.Y, -centre.Z);
    Matrix4x4_Multiply(modelView, modelView, step);
    VDI3D_DecomposeView(modelView, view.ViewerPosition, view.PsiAngle, view.ThetaAngle, view.AlphaAngle);
    NormalizeViewAngles(view);
}
