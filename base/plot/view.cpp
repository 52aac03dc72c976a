// The current frame's maps and views. Fits read the data ranges of the variables the axes show,
// over the zones the frame shows at its time; every view change ends in a new set of maps.
#include "base/plot/view.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/data/dataset.h"
#include "base/data/datautil.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/plot/draw0.h"
#include "base/plot/fieldmap.h"
#include "base/plot/framelink.h"
#include "base/plot/frame.h"
#include "base/plot/linemap.h"
#include "base/plot/solntime.h"
#include "base/plot/vdi.h"

Transformations_s CurTransforms;
ThreeDViewCalc_s CurThreeDViewCalc;

namespace {

int UsableWorkAreaWidth = 800, UsableWorkAreaHeight = 600;

struct SetDeleter {
    void operator()(Set_a *set) const { DeallocSet(&set); }
};

constexpr double Pi = 3.14159265358979323846;

bool is3D(const Frame_s *frame) { return frame->PlotType == PlotType_Cartesian3D; }
bool isLine(const Frame_s *frame) { return frame->PlotType == PlotType_XYLine || frame->PlotType == PlotType_PolarLine; }

// The axis pair the 2D maps of a frame use, and their grid block.
void axesOf(Frame_s *frame, AxisDetail_s **x, AxisDetail_s **y, AxisGrid_s **grid) {
    FrameStyle_s &style = frame->Style;
    switch (frame->PlotType) {
    case PlotType_XYLine:
    case PlotType_PolarLine:
        *x = &style.XYLineAxis.XDetail[0];
        *y = &style.XYLineAxis.YDetail[0];
        *grid = &style.XYLineAxis.Grid;
        return;
    case PlotType_Sketch:
        *x = &style.SketchAxis.XDetail;
        *y = &style.SketchAxis.YDetail;
        *grid = &style.SketchAxis.Grid;
        return;
    default:
        *x = &style.TwoDAxis.XDetail;
        *y = &style.TwoDAxis.YDetail;
        *grid = &style.TwoDAxis.Grid;
        return;
    }
}

AxisLimits_s limitsOf(const AxisDetail_s &detail) {
    AxisLimits_s limits;
    limits.Min = detail.RangeMin;
    limits.Max = detail.RangeMax;
    limits.CoordScale = detail.CoordScale == 1 ? CoordScale_Log : CoordScale_Linear;
    limits.IsReversed = detail.IsReversed;
    return limits;
}

// The range of one variable over a set of zones.
bool rangeOver(DataSet_s *dataSet, const Set_a *zones, EntIndex_t var, double *min, double *max) {
    bool any = false;
    for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z)) {
        double zoneMin, zoneMax;
        if (z >= dataSet->NumZones || !IsZoneEnabled(dataSet, EntIndex_t(z)) || IsVarPassive(dataSet, EntIndex_t(z), var) ||
            !GetNativeVarMinMaxForZoneVar(dataSet, EntIndex_t(z), var, true, &zoneMin, &zoneMax))
            continue;
        *min = any ? std::min(*min, zoneMin) : zoneMin;
        *max = any ? std::max(*max, zoneMax) : zoneMax;
        any = true;
    }
    return any;
}

// The box of the three variables on the 3D axes.
Box3D_s dataBoxOf(Frame_s *frame) {
    Box3D_s box{{0, 0, 0}, {1, 1, 1}};
    const ThreeDAxis_s &axes = frame->Style.ThreeDAxis;
    double *mins[] = {&box.Min.X, &box.Min.Y, &box.Min.Z}, *maxs[] = {&box.Max.X, &box.Max.Y, &box.Max.Z};
    const AxisDetail_s *details[] = {&axes.XDetail, &axes.YDetail, &axes.ZDetail};
    for (int n = 0; n < 3; n++) {
        double min, max;
        if (GetNativeVarMinMax(frame, EntIndex_t(details[n]->VarNum), &min, &max)) {
            *mins[n] = min;
            *maxs[n] = max;
        }
    }
    return box;
}

// Each corner of the box through the frame-view transform; the extent of the result.
void transformedExtent(const Frame_s *frame, const Box3D_s &box, double *minX, double *maxX, double *minY,
                       double *maxY, XYZ_s (*transform)(const ThreeDView_s &, const ThreeDViewCalc_s &, const XYZ_s &)) {
    *minX = *minY = 1e150;
    *maxX = *maxY = -1e150;
    for (int corner = 0; corner < 8; corner++) {
        XYZ_s p{corner & 1 ? box.Max.X : box.Min.X, corner & 2 ? box.Max.Y : box.Min.Y, corner & 4 ? box.Max.Z : box.Min.Z};
        XYZ_s q = transform(frame->Style.ThreeDView, CurThreeDViewCalc, p);
        *minX = std::min(*minX, q.X);
        *maxX = std::max(*maxX, q.X);
        *minY = std::min(*minY, q.Y);
        *maxY = std::max(*maxY, q.Y);
    }
}

XYZ_s viewTransform(const ThreeDView_s &, const ThreeDViewCalc_s &calc, const XYZ_s &p) {
    return VDI3D_ViewTransformXYZ(calc, p);
}

// The viewport's paper height over its paper width: what the 3D view area is shaped by.
double viewAspect(const Frame_s *frame) {
    const Rect_s &r = frame->Style.FrameLayout.Rect;
    double width = r.X2 - r.X1, height = r.Y1 - r.Y2;
    return width > 0 ? height / width : 1.0;
}

double currentViewSize(const ThreeDView_s &view) { return view.DrawInPerspective ? view.FieldOfView : view.ViewWidth; }
void setViewSize(ThreeDView_s &view, double size) {
    if (view.DrawInPerspective)
        view.FieldOfView = size;
    else
        view.ViewWidth = size;
}

bool nearlyZero(double delta, double scale) { return std::fabs(delta) <= 1e-10 * std::max(1.0, std::fabs(scale)); }

// Puts the eye so that the data box lies centred before it at a good distance.
void placeEyeForFit(Frame_s *frame, const Box3D_s &box) {
    SetTransformations();
    double minX, maxX, minY, maxY;
    transformedExtent(frame, box, &minX, &maxX, &minY, &maxY, viewTransform);
    XYZ_s originView = VDI3D_ViewTransformXYZ(CurThreeDViewCalc, frame->Style.GlobalThreeD.RotateOrigin);
    double distance = VDI3D_CalcGoodViewDistance(CurThreeDViewCalc, box);
    XYZ_s eye{(minX + maxX) / 2, (minY + maxY) / 2, originView.Z + distance};
    frame->Style.ThreeDView.ViewerPosition = VDI3D_InverseViewTransformXYZ(CurThreeDViewCalc, eye);
}

// Sizes the view to hold the box: a damped search that stops when the size no longer changes.
void sizeViewToBox(Frame_s *frame, const Box3D_s &box) {
    ThreeDView_s &view = frame->Style.ThreeDView;
    double lastStep = 1e150;
    for (int round = 0; round < 1000; round++) {
        SetTransformations();
        double minX, maxX, minY, maxY;
        transformedExtent(frame, box, &minX, &maxX, &minY, &maxY, VDI3D_TransformXYZ);
        double wanted = VDI3D_CalcViewSize(view, CurThreeDViewCalc, viewAspect(frame), maxX - minX, maxY - minY);
        double delta = wanted - currentViewSize(view);
        if (nearlyZero(delta, currentViewSize(view))) break;
        double factor = 1.0;
        while (std::fabs(factor * delta) > 0.99 * lastStep && factor > 1e-12) factor /= 2;
        lastStep = std::fabs(factor * delta);
        double next = currentViewSize(view) + factor * delta;
        if (next == currentViewSize(view)) break;
        setViewSize(view, next);
    }
    SetTransformations();
}

// Moves the eye sideways so the box's centre is in the middle of the view.
void centre3D(Frame_s *frame, const Box3D_s &box) {
    SetTransformations();
    double minX, maxX, minY, maxY;
    transformedExtent(frame, box, &minX, &maxX, &minY, &maxY, viewTransform);
    XYZ_s eye{(minX + maxX) / 2, (minY + maxY) / 2, 0.0};
    frame->Style.ThreeDView.ViewerPosition = VDI3D_InverseViewTransformXYZ(CurThreeDViewCalc, eye);
    SetTransformations();
}

// An axis takes the range of its variable, the top raised by 0.0001 of the span.
bool fitAxisToVar(Frame_s *frame, AxisDetail_s *detail, const Set_a *zones) {
    double min, max;
    bool found = zones != nullptr ? rangeOver(frame->DataSet, zones, EntIndex_t(detail->VarNum), &min, &max)
                                  : GetNativeVarMinMax(frame, EntIndex_t(detail->VarNum), &min, &max);
    if (!found) return false;
    double span = max - min;
    if (span == 0.0) span = min != 0.0 ? std::fabs(min) * 0.1 : 1.0, min -= span / 2, max += span / 2;
    detail->RangeMin = min;
    detail->RangeMax = max + 0.0001 * (max - min);
    return true;
}

// The zones of the shown line maps that draw against one X (isX) or Y axis.
Set_a *lineMapZonesOnAxis(const Frame_s *frame, bool isX, int axis, int *var) {
    Set_a *zones = AllocSet(false);
    const Set_a *active = frame->ActiveLineMaps;
    *var = -1;
    for (SetIndex_t m = zones != nullptr && active != nullptr ? GetNextMember(active, -1) : -1; m >= 0;
         m = GetNextMember(active, m)) {
        if (!IsValidLineMap(frame, int(m))) continue;
        const LineMapAssign_s &assign = frame->LineMapAttributes[size_t(m)]->Style.Assign;
        if ((isX ? assign.XAxis : assign.YAxis) != axis) continue;
        if (*var < 0) *var = isX ? assign.XAxisVar : assign.YAxisVar;
        AddToSet(zones, assign.Zone, false);
    }
    return zones;
}

bool dataFit(Frame_s *frame) {
    if (frame->DataSet == nullptr) return true;
    if (is3D(frame)) {
        Box3D_s box = dataBoxOf(frame);
        placeEyeForFit(frame, box);
        sizeViewToBox(frame, box);
        return true;
    }
    if (frame->PlotType == PlotType_Sketch) return true;
    if (isLine(frame)) {
        XYLineAxis_s &axes = frame->Style.XYLineAxis;
        for (int n = 0; n < MaxXYLineAxes; n++)
            for (bool isX : {true, false}) {
                int var;
                std::unique_ptr<Set_a, SetDeleter> zones(lineMapZonesOnAxis(frame, isX, n, &var));
                if (!zones || var < 0) continue;
                AxisDetail_s &detail = isX ? axes.XDetail[n] : axes.YDetail[n];
                detail.VarNum = var;
                fitAxisToVar(frame, &detail, zones.get());
            }
        return true;
    }
    AxisDetail_s *x, *y;
    AxisGrid_s *grid;
    axesOf(frame, &x, &y, &grid);
    fitAxisToVar(frame, x, nullptr);
    fitAxisToVar(frame, y, nullptr);
    return true;
}

Rect_s twoDRanges(Frame_s *frame) {
    AxisDetail_s *x, *y;
    AxisGrid_s *grid;
    axesOf(frame, &x, &y, &grid);
    return Rect_s{x->RangeMin, y->RangeMin, x->RangeMax, y->RangeMax};
}

void setTwoDRanges(Frame_s *frame, const Rect_s &r) {
    AxisDetail_s *x, *y;
    AxisGrid_s *grid;
    axesOf(frame, &x, &y, &grid);
    x->RangeMin = r.X1;
    y->RangeMin = r.Y1;
    x->RangeMax = r.X2;
    y->RangeMax = r.Y2;
}

ThreeDSavedView_s saved3D(const Frame_s *frame) {
    const ThreeDView_s &view = frame->Style.ThreeDView;
    return {view.PsiAngle, view.ThetaAngle, view.AlphaAngle, view.ViewerPosition, view.ViewWidth, view.FieldOfView,
            frame->Style.GlobalThreeD.AxisScaleFact};
}

void install3D(Frame_s *frame, const ThreeDSavedView_s &saved) {
    ThreeDView_s &view = frame->Style.ThreeDView;
    view.PsiAngle = saved.PsiAngle;
    view.ThetaAngle = saved.ThetaAngle;
    view.AlphaAngle = saved.AlphaAngle;
    view.ViewerPosition = saved.ViewerPosition;
    view.ViewWidth = saved.ViewWidth;
    view.FieldOfView = saved.FieldOfView;
    frame->Style.GlobalThreeD.AxisScaleFact = saved.AxisScaleFact;
}

bool sameRect(const Rect_s &a, const Rect_s &b) { return a.X1 == b.X1 && a.Y1 == b.Y1 && a.X2 == b.X2 && a.Y2 == b.Y2; }
bool same3D(const ThreeDSavedView_s &a, const ThreeDSavedView_s &b) {
    return a.PsiAngle == b.PsiAngle && a.ThetaAngle == b.ThetaAngle && a.AlphaAngle == b.AlphaAngle &&
           a.ViewerPosition.X == b.ViewerPosition.X && a.ViewerPosition.Y == b.ViewerPosition.Y &&
           a.ViewerPosition.Z == b.ViewerPosition.Z && a.ViewWidth == b.ViewWidth && a.FieldOfView == b.FieldOfView;
}

void pushView(Frame_s *frame, bool onlyIfChanged) {
    if (is3D(frame))
        PushView(frame->ThreeDViewStack, saved3D(frame), onlyIfChanged, same3D);
    else
        PushView(frame->TwoDViewStack, twoDRanges(frame), onlyIfChanged, sameRect);
}

void populateViewStack(Frame_s *frame) {
    if (is3D(frame))
        PopulateViewStack(frame->ThreeDViewStack, saved3D(frame));
    else
        PopulateViewStack(frame->TwoDViewStack, twoDRanges(frame));
    frame->ViewNeedsReset = false;
}

// The view scale relative to the fit, kept centred.
bool setMagnification(Frame_s *frame, double magnification) {
    if (!(magnification > 0.0) || magnification > 1e6) {
        ErrMsg("Scale out of range");
        return false;
    }
    if (is3D(frame)) {
        ThreeDView_s &view = frame->Style.ThreeDView;
        ThreeDView_s before = view;
        XYZ_s eye = view.ViewerPosition;
        dataFit(frame);
        double fitSize = currentViewSize(view);
        // The eye stays where it was; only the size follows the fit.
        view = before;
        view.ViewerPosition = eye;
        setViewSize(view, view.DrawInPerspective ? 2 * std::atan(std::tan(fitSize / 2) / magnification)
                                                 : fitSize / magnification);
        return true;
    }
    Rect_s current = twoDRanges(frame);
    dataFit(frame);
    Rect_s fit = twoDRanges(frame);
    double cx = (current.X1 + current.X2) / 2, cy = (current.Y1 + current.Y2) / 2;
    double hw = (fit.X2 - fit.X1) / 2 / magnification, hh = (fit.Y2 - fit.Y1) / 2 / magnification;
    setTwoDRanges(frame, Rect_s{cx - hw, cy - hh, cx + hw, cy + hh});
    return true;
}

bool centre(Frame_s *frame) {
    if (frame->DataSet == nullptr) return true;
    if (is3D(frame)) {
        centre3D(frame, dataBoxOf(frame));
        return true;
    }
    if (frame->PlotType == PlotType_Sketch) return true;
    AxisDetail_s *x, *y;
    AxisGrid_s *grid;
    axesOf(frame, &x, &y, &grid);
    for (AxisDetail_s *detail : {x, y}) {
        double min, max;
        if (!GetNativeVarMinMax(frame, EntIndex_t(detail->VarNum), &min, &max)) continue;
        bool log = detail->CoordScale == 1 && min > 0 && detail->RangeMin > 0;
        auto f = [log](double v) { return log ? std::log10(v) : v; };
        auto g = [log](double v) { return log ? std::pow(10.0, v) : v; };
        double shift = (f(min) + f(max)) / 2 - (f(detail->RangeMin) + f(detail->RangeMax)) / 2;
        detail->RangeMin = g(f(detail->RangeMin) + shift);
        detail->RangeMax = g(f(detail->RangeMax) + shift);
    }
    return true;
}

bool translate(Frame_s *frame, double dxPercent, double dyPercent) {
    double dx = dxPercent / 100.0, dy = dyPercent / 100.0;
    if (is3D(frame)) {
        SetTransformations();
        const Rect_s &limits = CurThreeDViewCalc.ViewLimits;
        XYZ_s eye{-(limits.X2 - limits.X1) * dx, -(limits.Y2 - limits.Y1) * dy, 0.0};
        frame->Style.ThreeDView.ViewerPosition = VDI3D_InverseViewTransformXYZ(CurThreeDViewCalc, eye);
        return true;
    }
    Rect_s r = twoDRanges(frame);
    double sx = (r.X2 - r.X1) * dx, sy = (r.Y2 - r.Y1) * dy;
    // The data moves with the picture: the ranges move the other way.
    setTwoDRanges(frame, Rect_s{r.X1 - sx, r.Y1 - sy, r.X2 - sx, r.Y2 - sy});
    return true;
}

bool zoom(Frame_s *frame, double x1, double y1, double x2, double y2) {
    if (x1 == x2 || y1 == y2) {
        ErrMsg("Scale out of range");
        return false;
    }
    if (is3D(frame)) {
        // The rectangle is in frame-view units; the view takes its centre and its size.
        SetTransformations();
        ThreeDView_s &view = frame->Style.ThreeDView;
        const Rect_s &limits = CurThreeDViewCalc.ViewLimits;
        double scale = std::max(std::fabs(x2 - x1) / (limits.X2 - limits.X1), std::fabs(y2 - y1) / (limits.Y2 - limits.Y1));
        XYZ_s eye{(x1 + x2) / 2 - CurThreeDViewCalc.EyeOffsetX, (y1 + y2) / 2 - CurThreeDViewCalc.EyeOffsetY, 0.0};
        view.ViewerPosition = VDI3D_InverseViewTransformXYZ(CurThreeDViewCalc, eye);
        setViewSize(view, view.DrawInPerspective ? 2 * std::atan(std::tan(view.FieldOfView / 2) * scale)
                                                 : view.ViewWidth * scale);
        return true;
    }
    setTwoDRanges(frame, Rect_s{std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)});
    return true;
}

bool axisFit(Frame_s *frame, char axis, int axisNum) {
    AxisDetail_s *detail = nullptr;
    if (is3D(frame)) {
        ThreeDAxis_s &axes = frame->Style.ThreeDAxis;
        detail = axis == 'X' ? &axes.XDetail : axis == 'Y' ? &axes.YDetail : axis == 'Z' ? &axes.ZDetail : nullptr;
    } else if (isLine(frame)) {
        if (axisNum >= 1 && axisNum <= MaxXYLineAxes)
            detail = axis == 'X'   ? &frame->Style.XYLineAxis.XDetail[axisNum - 1]
                     : axis == 'Y' ? &frame->Style.XYLineAxis.YDetail[axisNum - 1]
                                   : nullptr;
    } else {
        AxisDetail_s *x, *y;
        AxisGrid_s *grid;
        axesOf(frame, &x, &y, &grid);
        detail = axis == 'X' ? x : axis == 'Y' ? y : nullptr;
    }
    if (detail == nullptr) {
        ErrMsg("Invalid axis or axis number");
        return false;
    }
    if (!fitAxisToVar(frame, detail, nullptr)) {
        ErrMsg("Cannot calculate Axis Range");
        return false;
    }
    return true;
}

ThreeDSavedView_s CopiedThreeDView;
Rect_s CopiedTwoDView;
bool ViewCopied = false;

}  // namespace

void SetUsableWorkAreaSize(int width, int height) {
    UsableWorkAreaWidth = std::max(width, 2);
    UsableWorkAreaHeight = std::max(height, 2);
}

bool GetNativeVarMinMax(Frame_s *frame, EntIndex_t var, double *min, double *max) {
    *min = *max = 0.0;
    DataSet_s *dataSet = frame != nullptr ? frame->DataSet : nullptr;
    if (dataSet == nullptr || var < 0 || var >= dataSet->NumVars) return false;
    const Set_a *zones = GetActiveRelevantZones(frame);
    if (zones != nullptr && !IsEmpty(zones) && rangeOver(dataSet, zones, var, min, max)) return true;
    // The last resort: the first enabled zone.
    std::unique_ptr<Set_a, SetDeleter> first(AllocSet(false));
    SetIndex_t zone = GetNextMember(dataSet->EnabledZones, -1);
    if (!first || zone < 0 || !AddToSet(first.get(), zone, false)) return false;
    return rangeOver(dataSet, first.get(), var, min, max);
}

void SetTransformations() {
    static bool running = false;
    Frame_s *frame = CurFrame;
    if (running || frame == nullptr) return;
    running = true;
    TransformInputs_s inputs;
    inputs.FrameRect = frame->Style.FrameLayout.Rect;
    double left, right, bottom, top;
    GetPaperSpecs(GeneralBase.Paper, &inputs.PaperWidth, &inputs.PaperHeight, &left, &right, &bottom, &top);
    inputs.RegionInWorkArea = GeneralBase.Paper.RegionInWorkArea;
    inputs.UsableWorkAreaWidth = UsableWorkAreaWidth;
    inputs.UsableWorkAreaHeight = UsableWorkAreaHeight;
    if (is3D(frame)) {
        // The view limits of the calculated view are the grid of the 3D frame's 2D maps.
        VDI3D_UpdateThreeDViewCalculatedValues(frame->Style.ThreeDView, frame->Style.GlobalThreeD, dataBoxOf(frame),
                                               nullptr, false, viewAspect(frame), CurThreeDViewCalc);
        inputs.Viewport = Rect_s{0.0, 0.0, 1.0, 1.0};
        const Rect_s &limits = CurThreeDViewCalc.ViewLimits;
        inputs.XAxis.Min = limits.X1;
        inputs.XAxis.Max = limits.X2;
        inputs.YAxis.Min = limits.Y1;
        inputs.YAxis.Max = limits.Y2;
    } else if (frame->PlotType == PlotType_PolarLine) {
        const Rect_s &extents = frame->Style.PolarView.Extents;
        inputs.Viewport = frame->Style.PolarAxis.ViewportPosition;
        inputs.XAxis.Min = extents.X1;
        inputs.XAxis.Max = extents.X2;
        inputs.YAxis.Min = extents.Y1;
        inputs.YAxis.Max = extents.Y2;
    } else {
        AxisDetail_s *x, *y;
        AxisGrid_s *grid;
        axesOf(frame, &x, &y, &grid);
        inputs.Viewport = grid->ViewportPosition;
        inputs.XAxis = limitsOf(*x);
        inputs.YAxis = limitsOf(*y);
    }
    Set2DTransformations(inputs, CurTransforms);
    VDI_SetHardcopyMap(CurTransforms.Screen2Hardcopy);
    running = false;
}

bool CheckToResetViewStack() {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || !frame->ViewNeedsReset) return false;
    // The default view: a fit (and the initial 3D scale, centred) for the plot type.
    dataFit(frame);
    if (is3D(frame)) {
        double scale = GeneralBase.FrameSetup.Initial3DScale;
        setMagnification(frame, scale);
        centre(frame);
    }
    populateViewStack(frame);
    SetTransformations();
    return true;
}

bool Action_View(View_e view, char axis, int axisNum, double a, double b, double c, double d) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr) return false;
    if (view == View_Paste && !ViewCopied) {
        ErrMsg("No view has been copied.");
        return false;
    }
    if (view == View_ResetToEntireCircle && frame->PlotType != PlotType_PolarLine) {
        ErrMsg("Plot type must be Polar to reset to the entire circle.");
        return false;
    }
    LogAction("VIEW");
    CheckToResetViewStack();
    bool ok = true;
    bool push = true;
    switch (view) {
    case View_Fit:
    case View_DataFit:
    case View_NiceFit:
    case View_MakeCurrentViewNice: ok = dataFit(frame); break;
    case View_AxisFit:
    case View_AxisNiceFit:
    case View_AxisMakeCurrentValuesNice: ok = axisFit(frame, axis, axisNum); break;
    case View_SetMagnification:
    case View_Make3DMagnification: ok = setMagnification(frame, a); break;
    case View_Center: ok = centre(frame); break;
    case View_Translate: ok = translate(frame, a, b); break;
    case View_Zoom: ok = zoom(frame, a, b, c, d); break;
    case View_Last:
        if (is3D(frame))
            install3D(frame, PopView(frame->ThreeDViewStack));
        else
            setTwoDRanges(frame, PopView(frame->TwoDViewStack));
        push = false;
        break;
    case View_Push: pushView(frame, false); push = false; break;
    case View_Copy:
        CopiedThreeDView = saved3D(frame);
        CopiedTwoDView = twoDRanges(frame);
        ViewCopied = true;
        push = false;
        break;
    case View_Paste:
        if (is3D(frame))
            install3D(frame, CopiedThreeDView);
        else
            setTwoDRanges(frame, CopiedTwoDView);
        break;
    case View_ResetToEntireCircle:
        frame->Style.PolarAxis.ThetaDetail.RangeMin = 0.0;
        frame->Style.PolarAxis.ThetaDetail.RangeMax = frame->Style.PolarAxis.ThetaPeriod;
        break;
    }
    if (!ok) return false;
    if (push) pushView(frame, true);
    SetTransformations();
    MarkFrameViewForScreenUpdate(frame);
    PropagateView(frame);
    StateChanged(StateChange_View, nullptr);
    return true;
}

bool Action_ViewRotate3D(RotateCommand_e rotation, double angleDegrees, const XYZ_s *vector,
                         RotateOriginLocation_e originLocation) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || !is3D(frame)) {
        ErrMsg("Plot type must be 3D to rotate the view.");
        return false;
    }
    if (rotation == RotateCommand_AboutVector && (vector == nullptr || (vector->X == 0 && vector->Y == 0 && vector->Z == 0))) {
        ErrMsg("The vector to rotate about must not be of zero length.");
        return false;
    }
    LogAction("ROTATE3DVIEW");
    CheckToResetViewStack();
    ThreeDView_s &view = frame->Style.ThreeDView;
    double angle = angleDegrees * Pi / 180.0;
    switch (rotation) {
    case RotateCommand_X:
    case RotateCommand_Y:
    case RotateCommand_Z:
        RotateAboutAxis(view, frame->Style.GlobalThreeD, RotateAxis_e(rotation), angle, originLocation);
        break;
    case RotateCommand_Psi: view.PsiAngle += angle; break;
    case RotateCommand_Theta: view.ThetaAngle += angle; break;
    case RotateCommand_Alpha:
    case RotateCommand_Twist: view.AlphaAngle += angle; break;
    case RotateCommand_AboutVector: {
        // About a vector: the same composition as about an axis, with the vector's direction.
        const XYZ_s &scale = frame->Style.GlobalThreeD.AxisScaleFact;
        Matrix4x4_s modelView, inverse, step;
        Setup3DModelViewMatrix(view, scale, modelView, inverse);
        XYZ_s centreAt = originLocation == RotateOriginLocation_Viewer ? view.ViewerPosition
                                                                      : frame->Style.GlobalThreeD.RotateOrigin;
        Matrix4x4_LoadTranslate(step, centreAt.X, centreAt.Y, centreAt.Z);
        Matrix4x4_Multiply(modelView, modelView, step);
        Matrix4x4_LoadScale(step, 1.0 / scale.X, 1.0 / scale.Y, 1.0 / scale.Z);
        Matrix4x4_Multiply(modelView, modelView, step);
        Matrix4x4_LoadRotate(step, angle, vector->X, vector->Y, vector->Z);
        Matrix4x4_Multiply(modelView, modelView, step);
        Matrix4x4_LoadScale(step, scale.X, scale.Y, scale.Z);
        Matrix4x4_Multiply(modelView, modelView, step);
        Matrix4x4_LoadTranslate(step, -centreAt.X, -centreAt.Y, -centreAt.Z);
        Matrix4x4_Multiply(modelView, modelView, step);
        VDI3D_DecomposeView(modelView, view.ViewerPosition, view.PsiAngle, view.ThetaAngle, view.AlphaAngle);
        break;
    }
    default:
        // The roller balls turn about the screen axes: vertical motion about screen X, horizontal
        // about screen Y; as commands they act as PSI and THETA changes.
        if (rotation == RotateCommand_VertRollerBall)
            view.PsiAngle += angle;
        else
            view.ThetaAngle += angle;
        break;
    }
    NormalizeViewAngles(view);
    SetTransformations();
    MarkFrameViewForScreenUpdate(frame);
    PropagateView(frame);
    StateChanged(StateChange_View, nullptr);
    return true;
}

namespace {

Frame_s *threeDFrame(const char *refusal) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || !is3D(frame)) {
        ErrMsg("%s", refusal);
        return nullptr;
    }
    CheckToResetViewStack();
    return frame;
}

void finish3DChange(Frame_s *frame) {
    SetTransformations();
    MarkFrameViewForScreenUpdate(frame);
    PropagateView(frame);
    StateChanged(StateChange_View, nullptr);
}

}  // namespace

bool Action_Reset3DOrigin(OriginResetLocation_e location) {
    Frame_s *frame = threeDFrame("Plot type must be 3D to reset the rotate origin.");
    if (frame == nullptr) return false;
    if (location == OriginResetLocation_ViewCenter) {
        // Finding the data under the middle of the view needs a probe of the surfaces drawn.
        ErrMsg("There is no data at the center of view.  The rotate origin has not been moved.");
        return false;
    }
    LogAction("RESET3DORIGIN");
    Box3D_s box = dataBoxOf(frame);
    frame->Style.GlobalThreeD.RotateOrigin = {(box.Min.X + box.Max.X) / 2, (box.Min.Y + box.Max.Y) / 2,
                                              (box.Min.Z + box.Max.Z) / 2};
    finish3DChange(frame);
    return true;
}

bool Action_Set3DEyeDistance(double distance) {
    Frame_s *frame = threeDFrame("Must be in 3D to change the 3d view distance");
    if (frame == nullptr) return false;
    if (!(distance > 0.0)) {
        ErrMsg("The eye distance must be greater than zero.");
        return false;
    }
    LogAction("SET3DEYEDISTANCE");
    SetTransformations();
    // In view coordinates the eye is at the origin looking down -Z; it moves along Z only.
    XYZ_s origin = VDI3D_ViewTransformXYZ(CurThreeDViewCalc, frame->Style.GlobalThreeD.RotateOrigin);
    XYZ_s eye{0.0, 0.0, origin.Z + distance};
    frame->Style.ThreeDView.ViewerPosition = VDI3D_InverseViewTransformXYZ(CurThreeDViewCalc, eye);
    finish3DChange(frame);
    return true;
}

bool Action_WorkspaceView(WorkspaceView_e view, double x1, double y1, double x2, double y2) {
    if (view == WorkspaceView_Zoom && (x1 == x2 || y1 == y2)) {
        ErrMsg("Invalid region to zoom to.");
        return false;
    }
    LogAction("WORKSPACEVIEW");
    Rect_s region = GeneralBase.Paper.RegionInWorkArea;
    switch (view) {
    case WorkspaceView_FitSelectedFrames:
    case WorkspaceView_FitAllFrames: {
        Rect_s all;
        if (view == WorkspaceView_FitSelectedFrames && CurFrame != nullptr)
            all = CurFrame->Style.FrameLayout.Rect;
        else if (!GetBoundingBoxOfAllFrames(&all))
            return true;
        // Frame rectangles keep the bottom in Y1; the paper region keeps the top there.
        PushPaperView(Rect_s{all.X1 - 0.05, all.Y2 - 0.05, all.X2 + 0.05, all.Y1 + 0.05}, false);
        break;
    }
    case WorkspaceView_FitPaper: FitPaperInWorkArea(false); break;
    case WorkspaceView_LastView: PopPaperView(); break;
    case WorkspaceView_Zoom:
        PushPaperView(Rect_s{std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)}, false);
        break;
    case WorkspaceView_Translate:
        PushPaperView(Rect_s{region.X1 - x1, region.Y1 - y1, region.X2 - x1, region.Y2 - y1}, false);
        break;
    case WorkspaceView_Maximize:
    case WorkspaceView_Unmaximize:
        // Only the window's layout changes; there is nothing to do without one.
        return true;
    }
    MarkWorkAreaForScreenUpdate();
    SetTransformations();
    StateChanged(StateChange_View, nullptr);
    return true;
}
