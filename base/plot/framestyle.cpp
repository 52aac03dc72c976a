// What the frame adds to the set-value walk through its style records: unit suffixes converted
// by the size of the frame being set, the frame's rectangle read and set as a position and a size,
// text heights checked by the units they are given in; the entry points that take a path to the
// frame style, a map template or a map's own record. Also the factory values of the records where
// one instance differs from the others (axes of each plot type, the first iso-surface and slice
// group), and the two templates.
// Relies on: framestyletables, setvalue (the walk, input rules, typed setters), vocab (names).
#include "base/plot/framestyle.h"

#include <cmath>
#include <cstdio>
#include <set>
#include <type_traits>

#include "base/kernel/orvassert.h"
#include "base/macro/genstyle.h"
#include "base/macro/macrocomp.h"
#include "base/macro/vocab.h"
#include "base/plot/framestyletables.h"

static_assert(std::is_same_v<LgIndex_t, int>, "index fields are read and written as int");

FrameStyle_s FrameFactoryDefaults;
FrameStyle_s FrameBase;

namespace {

// ---- unit suffixes --------------------------------------------------------------------------

// The frame whose size a unit suffix is taken in. A suffix converter is told only the value and
// the unit, so the set functions below name the frame here for the length of one set.
struct SuffixFrame_s {
    const Rect_s *Rect;
    bool DividedByZero;  // a converter met a frame of no width or height
};
SuffixFrame_s SuffixFrame{nullptr, false};

class SuffixFrameGuard {
  public:
    explicit SuffixFrameGuard(const Rect_s &rect) : saved(SuffixFrame) { SuffixFrame = {&rect, false}; }
    ~SuffixFrameGuard() { SuffixFrame = saved; }
    SuffixFrameGuard(const SuffixFrameGuard &) = delete;
    SuffixFrameGuard &operator=(const SuffixFrameGuard &) = delete;
    bool dividedByZero() const { return SuffixFrame.DividedByZero; }

  private:
    SuffixFrame_s saved;
};

// Inches from a value with a unit suffix. Both scales below are taken positive, so the value
// keeps its sign.
bool toFrameUnits(double *value, int suffix, double scale) {
    double inches = *value;
    switch (suffix) {
    case Suffix_Cm: inches = *value / 2.54; break;
    case Suffix_Pt: inches = *value / 72.0; break;
    case Suffix_Pix: inches = *value / 96.0; break;
    default: break;
    }
    if (scale == 0.0) {
        SuffixFrame.DividedByZero = true;
        return false;
    }
    *value = inches / scale;
    return true;
}

// ---- text heights ---------------------------------------------------------------------------

const InputSpecs_s FrameTextHeightInputSpec{InputSpecType_Double, 1e-150, 2, 100, ConvertSuffixToFrameHeights};
const InputSpecs_s AxisTextHeightInputSpec{InputSpecType_Double, 1e-150, 2, 100, nullptr};
const InputSpecs_s PointTextHeightInputSpec{InputSpecType_Double, 1e-150, 2500, 1, nullptr};

// ---- setting and reading through the records ------------------------------------------------

// The map majors address the template of their maps; path[1] holds the map set, which the
// template does not look at. Null for any other row.
void *mapTemplate(FrameStyle_s *style, int row, const StyleRecord_s **record) {
    if (row == MacroSetValue_FIELD || row == MacroSetValue_FIELDMAP) {
        *record = &GetFieldMapStyleRecord();
        return &style->FieldMap;
    }
    if (row == MacroSetValue_LINEMAP || row == MacroSetValue_XYMAP) {
        *record = &GetLineMapStyleRecord();
        return &style->LineMap;
    }
    return nullptr;
}

bool isRowOf(const StyleRecord_s &record, int row) {
    for (size_t n = 0; n < record.NumFields; n++)
        if (record.Fields[n].Row == row) return true;
    return false;
}

SetValueReturnCode_e fail(std::string *error, SetValueReturnCode_e code, const std::string &message) {
    if (error != nullptr) *error = message;
    return code;
}

// Sets the value at path[depth...] of a record, with unit suffixes taken in frameRect.
SetValueReturnCode_e setInRecord(const StyleRecord_s &record, void *base, const Rect_s &frameRect, const int path[7],
                                 int depth, ArbParam_t argValue, double doubleValue, int assignOp, std::string *error) {
    // An operator past the unit conversions is one that no row takes.
    AssignOp_e op = assignOp >= AssignOp_Equals && assignOp <= AssignOp_ConvertFromPix ? AssignOp_e(assignOp)
                                                                                      : AssignOp_e(-1);
    SuffixFrameGuard guard(frameRect);
    SetValueReturnCode_e code = SetStyleRecordValue(record, base, path, depth, argValue, doubleValue, op);
    if (ReturnCodeOk(code)) return code;
    if (guard.dividedByZero()) return fail(error, SetValue_ValueRangeError, "Divide by zero");
    return fail(error, code, GetLastSetValueErrorString());
}

SetValueReturnCode_e getInRecord(const StyleRecord_s &record, const void *base, const int path[7], int depth,
                                 double *doubleOut, ArbParam_t *argOut) {
    // Only read: the walk takes the record as it takes one to set.
    return GetStyleRecordValue(record, const_cast<void *>(base), path, depth, doubleOut, argOut);
}

// ---- factory values that differ between instances of a record ------------------------------

void setAxisTitleOffsets(AxisDetail_s *x, AxisDetail_s *y) {
    x->Title.Offset = 0.04;
    y->Title.Offset = 0.06;
}

FrameStyle_s makeFactoryFrameStyle() {
    FrameStyle_s style;

    // 2D: axes shown, the border of the grid area drawn, X and Y scaled together.
    style.TwoDAxis.Grid.AxisMode = 2;  // XYDEPENDENT
    style.TwoDAxis.Grid.GridArea.DrawBorder = true;
    style.TwoDAxis.XDetail.VarNum = 0;
    style.TwoDAxis.YDetail.VarNum = 1;
    setAxisTitleOffsets(&style.TwoDAxis.XDetail, &style.TwoDAxis.YDetail);

    // Sketch: the same block with the axes hidden and titles from their text.
    style.SketchAxis = style.TwoDAxis;
    style.SketchAxis.Grid.GridArea.DrawBorder = false;
    for (AxisDetail_s *detail : {&style.SketchAxis.XDetail, &style.SketchAxis.YDetail}) {
        detail->ShowAxis = false;
        detail->Title.TitleMode = 2;  // USETEXT
    }

    // Line plots: five independent X and five Y axes.
    style.XYLineAxis.Grid.AxisMode = 0;  // INDEPENDENT
    style.XYLineAxis.Grid.GridArea.DrawBorder = true;
    for (int n = 0; n < MaxXYLineAxes; n++) {
        style.XYLineAxis.XDetail[n].VarNum = 0;
        style.XYLineAxis.YDetail[n].VarNum = 1;
        setAxisTitleOffsets(&style.XYLineAxis.XDetail[n], &style.XYLineAxis.YDetail[n]);
    }

    // 3D: labels sized by the axis, grid lines shown, titles further out.
    style.ThreeDAxis.GridArea.DrawBorder = true;
    style.ThreeDAxis.GridArea.IsFilled = true;
    AxisDetail_s *threeD[] = {&style.ThreeDAxis.XDetail, &style.ThreeDAxis.YDetail, &style.ThreeDAxis.ZDetail};
    for (int n = 0; n < 3; n++) {
        threeD[n]->VarNum = n;
        threeD[n]->TickLabel.TextShape.SizeUnits = 4;  // AXISPERCENTAGE
        threeD[n]->Title.Offset = 0.08;
        threeD[n]->Gridlines.Show = true;
    }

    // Polar: theta runs over a full turn in degrees; both axes carry grid lines.
    PolarAxis_s &polar = style.PolarAxis;
    polar.GridArea.DrawBorder = true;
    polar.ViewportStyle.DrawBorder = true;
    polar.ThetaDetail.VarNum = 0;
    polar.RDetail.VarNum = 1;
    polar.ThetaDetail.RangeMin = 0.0;
    polar.ThetaDetail.RangeMax = 360.0;
    polar.ThetaDetail.GrSpacing = 15.0;
    polar.ThetaDetail.Gridlines.Cutoff = 0.05;
    polar.ThetaDetail.MinorGridlines.Cutoff = 0.1;
    polar.ThetaDetail.Title.PercentAlongLine = 0.03;
    polar.ThetaDetail.AxisLine.AxisAlignment = 3;  // WITHGRIDMAX
    polar.RDetail.AxisLine.AxisAlignment = 1;      // WITHOPPOSINGAXISVALUE
    for (AxisDetail_s *detail : {&polar.ThetaDetail, &polar.RDetail}) {
        detail->Gridlines.Show = true;
        detail->TickLabel.ShowAtAxisIntersection = false;
    }

    // Minor grid lines are dotted everywhere.
    auto dotMinorGridlines = [](AxisDetail_s *detail) { detail->MinorGridlines.LinePattern = 3; };
    for (AxisDetail_s *detail : {&style.TwoDAxis.XDetail, &style.TwoDAxis.YDetail, &style.SketchAxis.XDetail,
                                 &style.SketchAxis.YDetail, &style.ThreeDAxis.XDetail, &style.ThreeDAxis.YDetail,
                                 &style.ThreeDAxis.ZDetail, &polar.ThetaDetail, &polar.RDetail})
        dotMinorGridlines(detail);
    for (int n = 0; n < MaxXYLineAxes; n++) {
        dotMinorGridlines(&style.XYLineAxis.XDetail[n]);
        dotMinorGridlines(&style.XYLineAxis.YDetail[n]);
    }

    // Iso-surfaces and slices: the first group is shown; groups flood by contour group 1.
    for (IsoSurfaceAttributes_s &group : style.IsoSurfaceAttributes) {
        group.Mesh.Show = false;
        group.Shade.Show = false;
    }
    style.IsoSurfaceAttributes[0].ShowGroup = true;
    for (SliceAttributes_s &group : style.SliceAttributes) {
        group.Mesh.Show = false;
        group.Vector.Show = false;
        group.Shade.Show = false;
        group.EdgeLayer.Show = false;
    }
    style.SliceAttributes[0].ShowGroup = true;

    // Rods and ribbons: flooded surfaces without a mesh.
    style.StreamAttributes.RodRibbon.Mesh.Show = false;
    style.StreamAttributes.RodRibbon.Shade.Show = false;

    return style;
}

}  // namespace

void InitializeFrameFactoryDefaults() {
    FrameFactoryDefaults = makeFactoryFrameStyle();
    FrameBase = FrameFactoryDefaults;
}

void ModernizeFrameDefaults() {
    // Long streamtraces are the common case now; the factory value stays for old stylesheets.
    FrameBase.StreamAttributes.MaxSteps = 10000;
}

const FrameStyle_s &GetFrameTemplate(bool useFactory) { return useFactory ? FrameFactoryDefaults : FrameBase; }

bool IsFrameStyleMajorRow(int row) {
    return (row >= MacroSetValue_FRAMEMODE && row <= MacroSetValue_GLOBALRGB) || row == MacroSetValue_GLOBALTIME ||
           (row >= MacroSetValue_GLOBALCONTOUR && row <= MacroSetValue_BLANKING) ||
           (row >= MacroSetValue_GLOBALSTREAM && row <= MacroSetValue_GLOBALPOLAR) ||
           (row >= MacroSetValue_POLARVIEW && row <= MacroSetValue_LINEPLOTLAYERS) || row == MacroSetValue_BASETEXT ||
           row == MacroSetValue_BASEGEOM || (row >= MacroSetValue_THREEDAXIS && row <= MacroSetValue_SKETCHAXIS) ||
           row == MacroSetValue_POLARAXIS || row == MacroSetValue_FRAMELAYOUT || row == MacroSetValue_THREEDVIEW ||
           row == MacroSetValue_FRAMELINKING || row == MacroSetValue_LINKING;
}

namespace {

// BASETEXT and BASEGEOM: the frame's text and geometry defaults, records of the general style's kind.
const StyleRecord_s *baseRecordOf(int row) {
    if (row == MacroSetValue_BASETEXT) return &GetTextStyleRecord();
    if (row == MacroSetValue_BASEGEOM) return &GetGeomStyleRecord();
    return nullptr;
}
void *baseObjectOf(FrameStyle_s *style, int row) {
    return row == MacroSetValue_BASETEXT ? static_cast<void *>(&style->BaseText) : static_cast<void *>(&style->BaseGeom);
}

}  // namespace

SetValueReturnCode_e FrameStyleSetValue(FrameStyle_s *style, const int path[7], ArbParam_t argValue,
                                        double doubleValue, int assignOp, std::string *error) {
    // Unit suffixes scale by the frame as it stands before this change.
    Rect_s frameRect = style->FrameLayout.Rect;
    const StyleRecord_s *mapRecord;
    if (void *map = mapTemplate(style, path[0], &mapRecord))
        return setInRecord(*mapRecord, map, frameRect, path, 2, argValue, doubleValue, assignOp, error);
    if (const StyleRecord_s *record = baseRecordOf(path[0]))
        return setInRecord(*record, baseObjectOf(style, path[0]), frameRect, path, 1, argValue, doubleValue, assignOp,
                           error);
    if (!isRowOf(GetFrameStyleRecord(), path[0])) {
        // Not a record of the frame style: the plot type, name, active maps and the text and
        // geometry bases are set elsewhere.
        char text[64];
        snprintf(text, sizeof(text), "Invalid Major Command (%d)", path[0]);
        return fail(error, SetValue_InvalidCommandOption, text);
    }
    return setInRecord(GetFrameStyleRecord(), style, frameRect, path, 0, argValue, doubleValue, assignOp, error);
}

SetValueReturnCode_e FrameStyleGetValue(const FrameStyle_s *style, const int path[7], double *doubleOut,
                                        ArbParam_t *argOut) {
    const StyleRecord_s *mapRecord;
    if (void *map = mapTemplate(const_cast<FrameStyle_s *>(style), path[0], &mapRecord))
        return getInRecord(*mapRecord, map, path, 2, doubleOut, argOut);
    if (const StyleRecord_s *record = baseRecordOf(path[0]))
        return getInRecord(*record, baseObjectOf(const_cast<FrameStyle_s *>(style), path[0]), path, 1, doubleOut, argOut);
    return getInRecord(GetFrameStyleRecord(), style, path, 0, doubleOut, argOut);
}

SetValueReturnCode_e FieldMapStyleSetValue(FieldMapStyle_s *map, const Rect_s &frameRect, const int path[7],
                                           ArbParam_t argValue, double doubleValue, int assignOp, std::string *error) {
    return setInRecord(GetFieldMapStyleRecord(), map, frameRect, path, 2, argValue, doubleValue, assignOp, error);
}

SetValueReturnCode_e FieldMapStyleGetValue(const FieldMapStyle_s *map, const int path[7], double *doubleOut,
                                           ArbParam_t *argOut) {
    return getInRecord(GetFieldMapStyleRecord(), map, path, 2, doubleOut, argOut);
}

SetValueReturnCode_e LineMapStyleSetValue(LineMapStyle_s *map, const Rect_s &frameRect, const int path[7],
                                          ArbParam_t argValue, double doubleValue, int assignOp, std::string *error) {
    return setInRecord(GetLineMapStyleRecord(), map, frameRect, path, 2, argValue, doubleValue, assignOp, error);
}

SetValueReturnCode_e LineMapStyleGetValue(const LineMapStyle_s *map, const int path[7], double *doubleOut,
                                          ArbParam_t *argOut) {
    return getInRecord(GetLineMapStyleRecord(), map, path, 2, doubleOut, argOut);
}

// ---- what the tables name -------------------------------------------------------------------

bool ConvertSuffixToFrameWidths(double *value, int suffix) {
    REQUIRE(SuffixFrame.Rect != nullptr);
    return toFrameUnits(value, suffix, std::fabs(SuffixFrame.Rect->X2 - SuffixFrame.Rect->X1));
}

bool ConvertSuffixToFrameHeights(double *value, int suffix) {
    REQUIRE(SuffixFrame.Rect != nullptr);
    return toFrameUnits(value, suffix, std::fabs(SuffixFrame.Rect->Y1 - SuffixFrame.Rect->Y2));
}

bool ConvertSuffixToPaperInches(double *value, int suffix) { return toFrameUnits(value, suffix, 1.0); }

void FrameTextHeightRules(const void *textShape, InputSpecs_s *rules) {
    switch (static_cast<const TextShape_s *>(textShape)->SizeUnits) {
    case 1: *rules = FrameTextHeightInputSpec; break;   // FRAME
    case 4: *rules = AxisTextHeightInputSpec; break;    // AXISPERCENTAGE
    case 2: *rules = PointTextHeightInputSpec; break;   // POINT
    default: *rules = AboveZeroDoubleInputSpec; break;  // GRID, SCREEN
    }
}

// XYPOS is (X1, Y2); WIDTH is X2 - X1 and HEIGHT Y1 - Y2.
double ReadFrameLeft(const void *rect) { return static_cast<const Rect_s *>(rect)->X1; }
double ReadFrameTop(const void *rect) { return static_cast<const Rect_s *>(rect)->Y2; }
double ReadFrameWidth(const void *rect) {
    const Rect_s *frame = static_cast<const Rect_s *>(rect);
    return frame->X2 - frame->X1;
}
double ReadFrameHeight(const void *rect) {
    const Rect_s *frame = static_cast<const Rect_s *>(rect);
    return frame->Y1 - frame->Y2;
}

namespace {

// Moves an edge to value and the opposite edge by as much, so the size is kept.
bool moveEdges(double *edge, double *opposite, double value, const InputSpecs_s &rules) {
    double moved = *opposite + (value - *edge);
    if (!(moved >= rules.Min && moved <= rules.Max)) return false;
    *edge = value;
    *opposite = moved;
    return true;
}

}  // namespace

bool MoveFrameLeft(void *rect, double value, const InputSpecs_s &rules) {
    Rect_s *frame = static_cast<Rect_s *>(rect);
    return moveEdges(&frame->X1, &frame->X2, value, rules);
}
bool MoveFrameTop(void *rect, double value, const InputSpecs_s &rules) {
    Rect_s *frame = static_cast<Rect_s *>(rect);
    return moveEdges(&frame->Y2, &frame->Y1, value, rules);
}
// The size moves the right or the bottom edge; the position stays.
bool StoreFrameWidth(void *rect, double value, const InputSpecs_s &) {
    Rect_s *frame = static_cast<Rect_s *>(rect);
    frame->X2 = frame->X1 + value;
    return true;
}
bool StoreFrameHeight(void *rect, double value, const InputSpecs_s &) {
    Rect_s *frame = static_cast<Rect_s *>(rect);
    frame->Y1 = frame->Y2 + value;
    return true;
}

namespace {

// The colour values of a record, into blocks and each number of a numbered block. Rows that are
// aliases of others reach the same value twice; the set keeps it once.
void collectColors(const StyleRecord_s &record, void *base, std::set<int *> *colors) {
    for (size_t n = 0; n < record.NumFields; n++) {
        const StyleField_s &field = record.Fields[n];
        if (field.Kind == StyleField_Block) {
            collectColors(*field.Sub, field.Target(base), colors);
        } else if (field.Kind == StyleField_NumberedBlock) {
            for (int number = 1; void *element = field.Element(base, number); number++)
                collectColors(*field.Sub, element, colors);
        } else if (field.Kind == StyleField_Enum && GetSetValueEnumSet(field.Row) == 101) {  // the colour set
            colors->insert(static_cast<int *>(field.Target(base)));
        }
    }
}

void swapColorsInRecord(const StyleRecord_s &record, void *base, int a, int b) {
    std::set<int *> colors;
    collectColors(record, base, &colors);
    for (int *color : colors) {
        if (*color == a) *color = b;
        else if (*color == b) *color = a;
    }
}

}  // namespace

void SwapFrameStyleColors(FrameStyle_s *style, int a, int b) { swapColorsInRecord(GetFrameStyleRecord(), style, a, b); }

void SwapFieldMapStyleColors(FieldMapStyle_s *map, int a, int b) { swapColorsInRecord(GetFieldMapStyleRecord(), map, a, b); }

void SwapLineMapStyleColors(LineMapStyle_s *map, int a, int b) { swapColorsInRecord(GetLineMapStyleRecord(), map, a, b); }
