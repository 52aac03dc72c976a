// The walk through the frame style tables that sets and reads one value: the path leads from a
// major row through the records to a leaf, whose value is checked against its range, converted
// between macro units and the store, and combined with the assignment operator. Also the factory
// values of the records where one instance differs from the others (axes of each plot type, the
// first iso-surface and slice group), and the two templates.
// Relies on: framestyletables, vocab (names, enumerated sets), macrocomp (AssignOp_e).
#include "base/plot/framestyle.h"

#include <cmath>
#include <cstdio>
#include <type_traits>

#include "base/macro/macrocomp.h"
#include "base/macro/vocab.h"
#include "base/plot/framestyletables.h"

static_assert(std::is_same_v<LgIndex_t, int>, "index fields are read and written as int");

FrameStyle_s FrameFactoryDefaults;
FrameStyle_s FrameBase;

namespace {

// ---- the walk -------------------------------------------------------------------------------

const char *rowName(int row) {
    return row >= 0 && row < SetValueCommandListItemCount ? SetValueCommandList[row].Name : "<?>";
}

int fail(std::string *error, int code, const std::string &message) {
    if (error != nullptr) *error = message;
    return code;
}

int badOption(std::string *error, int row, int majorRow) {
    return fail(error, FrameStyle_InvalidCommandOption,
                std::string("Invalid option \"") + rowName(row) + "\"\nfor command: \"" + rowName(majorRow) + "\"");
}

// Finds `row` among the rows of `table`, looking through spliced records; *record moves to
// the record that holds the row.
const FrameStyleRow_s *findRow(const FrameStyleTable_s &table, int row, void **record) {
    for (size_t n = 0; n < table.Count; n++) {
        const FrameStyleRow_s &entry = table.Rows[n];
        if (entry.Kind == FrameStyleRowKind_Splice) {
            void *inner = entry.Locate(*record, 0);
            if (const FrameStyleRow_s *found = findRow(*entry.Sub, row, &inner)) {
                *record = inner;
                return found;
            }
        } else if (entry.Row == row) {
            return &entry;
        }
    }
    return nullptr;
}

struct Leaf_s {
    const FrameStyleRow_s *Row;
    void *Target;
    int Index;  // the leaf's place in the path
};

// Walks path[first..6] from `record` through `table` to a leaf. Returns FrameStyle_Ok, or the
// code and message of the first entry that does not fit.
int findLeaf(const FrameStyleTable_s &table, void *record, const int path[7], int first, Leaf_s *leaf,
             std::string *error) {
    const FrameStyleTable_s *current = &table;
    int lastRow = path[0];
    for (int n = first; n < 7; n++) {
        if (path[n] < 0) break;  // the path ends at a parent: there is no value
        void *holder = record;
        const FrameStyleRow_s *row = findRow(*current, path[n], &holder);
        if (row == nullptr) return badOption(error, path[n], path[0]);
        lastRow = path[n];
        if (row->Kind != FrameStyleRowKind_Sub) {
            for (int rest = n + 1; rest < 7; rest++)
                if (path[rest] != -1) return badOption(error, path[rest], path[0]);
            *leaf = {row, row->Locate(holder, 0), n};
            return FrameStyle_Ok;
        }
        int number = 0;
        if (row->NumberCount > 0) {
            n++;
            if (n >= 7 || path[n] < 1 || path[n] > row->NumberCount)
                return fail(error, FrameStyle_ValueRangeError, row->NumberError);
            number = path[n] - 1;
        }
        record = row->Locate(holder, number);
        current = row->Sub;
    }
    return badOption(error, lastRow, path[0]);
}

// ---- setting and reading one value ------------------------------------------------------------

bool isSuffixOp(int assignOp) { return assignOp >= AssignOp_ConvertFromCm && assignOp <= AssignOp_ConvertFromPix; }

std::string rangeText(const FrameStyleValueSpec_s &rules) {
    char text[160];
    double min = rules.IsInteger ? rules.Min + rules.Adjust : rules.Min * rules.Adjust;
    double max = rules.IsInteger ? rules.Max + rules.Adjust : rules.Max * rules.Adjust;
    if (rules.Max >= 1e150 || (rules.IsInteger && rules.Max >= MAXINDEX - 1))
        snprintf(text, sizeof(text), "must be greater than or equal to %G.", min);
    else
        snprintf(text, sizeof(text), "must be between %G and %G.", min, max);
    return text;
}

int outOfRange(std::string *error, int row, const FrameStyleValueSpec_s &rules) {
    return fail(error, FrameStyle_ValueRangeError, std::string("\"") + rowName(row) + "\" " + rangeText(rules));
}

// Applies the operator to a value in macro units. False for a division by zero.
bool applyOp(int assignOp, double current, double value, double *result) {
    switch (assignOp) {
    case AssignOp_PlusEquals: *result = current + value; return true;
    case AssignOp_MinusEquals: *result = current - value; return true;
    case AssignOp_TimesEquals: *result = current * value; return true;
    case AssignOp_DivideEquals:
        if (value == 0.0) return false;
        *result = current / value;
        return true;
    default: *result = value; return true;
    }
}

// A value given with a unit suffix, in the units the row stores. The frame's size is that of
// its rectangle; a pixel is 1/96 inch. Both scales are taken positive, so the value keeps its sign.
bool convertSuffix(double value, int assignOp, FrameStyleUnit_e suffix, const Rect_s &frameRect, double *stored) {
    double inches = value;
    switch (assignOp) {
    case AssignOp_ConvertFromCm: inches = value / 2.54; break;
    case AssignOp_ConvertFromPt: inches = value / 72.0; break;
    case AssignOp_ConvertFromPix: inches = value / 96.0; break;
    default: break;
    }
    double scale = 1.0;
    if (suffix == FrameStyleUnit_FrameX) scale = std::fabs(frameRect.X2 - frameRect.X1);
    if (suffix == FrameStyleUnit_FrameY) scale = std::fabs(frameRect.Y1 - frameRect.Y2);
    if (scale == 0.0) return false;
    *stored = inches / scale;
    return true;
}

// The new stored value of a double from the operator and value, checked against its range.
int computeDouble(const FrameStyleValueSpec_s &rules, int row, double current, double value, int assignOp,
                  const Rect_s &frameRect, double *result, std::string *error) {
    if (isSuffixOp(assignOp)) {
        if (rules.Suffix == FrameStyleUnit_None)
            return fail(error, FrameStyle_AssignOpError,
                        std::string("Not allowed to use suffix for \"") + rowName(row) + "\"");
        if (!convertSuffix(value, assignOp, rules.Suffix, frameRect, result))
            return fail(error, FrameStyle_ValueRangeError, "Divide by zero");
    } else {
        // The operator works on the value as the user sees it, so that *= and += scale and
        // shift what is shown, whatever factor lies between that and the store.
        double text;
        if (!applyOp(assignOp, current * rules.Adjust, value, &text))
            return fail(error, FrameStyle_ValueRangeError, "Divide by zero");
        *result = text / rules.Adjust;
    }
    if (!(*result >= rules.Min && *result <= rules.Max)) return outOfRange(error, row, rules);
    return FrameStyle_Ok;
}

int setDouble(double *target, const FrameStyleValueSpec_s &rules, int row, double value, int assignOp,
              const Rect_s &frameRect, std::string *error) {
    double result;
    int code = computeDouble(rules, row, *target, value, assignOp, frameRect, &result, error);
    if (code != FrameStyle_Ok) return code;
    if (result == *target) return FrameStyle_DuplicateValue;
    *target = result;
    return FrameStyle_Ok;
}

int setInt(int *target, const FrameStyleValueSpec_s &rules, int row, double value, int assignOp, std::string *error) {
    if (isSuffixOp(assignOp))
        return fail(error, FrameStyle_AssignOpError,
                    std::string("Not allowed to use suffix for \"") + rowName(row) + "\"");
    double text;
    if (!applyOp(assignOp, double(*target) + rules.Adjust, value, &text))
        return fail(error, FrameStyle_ValueRangeError, "Divide by zero");
    double result = std::trunc(text) - rules.Adjust;
    if (!(result >= rules.Min && result <= rules.Max)) return outOfRange(error, row, rules);
    if (int(result) == *target) return FrameStyle_DuplicateValue;
    *target = int(result);
    return FrameStyle_Ok;
}

int equalsOnly(std::string *error, int row) {
    return fail(error, FrameStyle_AssignOpError,
                std::string("Assignment operator invalid in\n assignment to \"") + rowName(row) + "\"");
}

int setLeaf(const Leaf_s &leaf, const int path[7], ArbParam_t argValue, double doubleValue, int assignOp,
            const Rect_s &frameRect, std::string *error) {
    int row = path[leaf.Index];
    const FrameStyleRow_s &entry = *leaf.Row;
    if (assignOp < AssignOp_Equals || assignOp > AssignOp_ConvertFromPix) return equalsOnly(error, row);
    switch (entry.Kind) {
    case FrameStyleRowKind_Bool: {
        if (assignOp != AssignOp_Equals) return equalsOnly(error, row);
        bool *target = static_cast<bool *>(leaf.Target);
        bool wanted = argValue != 0;
        if (wanted == *target) return FrameStyle_DuplicateValue;
        *target = wanted;
        return FrameStyle_Ok;
    }
    case FrameStyleRowKind_Enum: {
        if (assignOp != AssignOp_Equals) return equalsOnly(error, row);
        int *target = static_cast<int *>(leaf.Target);
        if (argValue < INT16_MIN || argValue > INT16_MAX || !IsEnumValueInSet(GetSetValueEnumSet(row), int(argValue)))
            return fail(error, FrameStyle_ValueRangeError, std::string("Invalid Option for \"") + rowName(row) + "\"");
        if (*target == int(argValue)) return FrameStyle_DuplicateValue;
        *target = int(argValue);
        return FrameStyle_Ok;
    }
    case FrameStyleRowKind_String: {
        if (assignOp != AssignOp_Equals) return equalsOnly(error, row);
        std::string *target = static_cast<std::string *>(leaf.Target);
        const char *text = reinterpret_cast<const char *>(argValue);
        std::string wanted = text != nullptr ? text : "";
        if (wanted == *target) return FrameStyle_DuplicateValue;
        *target = wanted;
        return FrameStyle_Ok;
    }
    case FrameStyleRowKind_Int:
        return setInt(static_cast<int *>(leaf.Target), *entry.Rules, row, double(argValue), assignOp, error);
    case FrameStyleRowKind_Double:
        return setDouble(static_cast<double *>(leaf.Target), *entry.Rules, row, doubleValue, assignOp, frameRect, error);
    case FrameStyleRowKind_TextHeight: {
        TextShape_s *shape = static_cast<TextShape_s *>(leaf.Target);
        return setDouble(&shape->Height, FrameStyleTextHeightSpec(shape->SizeUnits), row, doubleValue, assignOp,
                         frameRect, error);
    }
    case FrameStyleRowKind_RectX:
    case FrameStyleRowKind_RectY: {
        // XYPOS moves the frame: the opposite edge follows, so the size is kept.
        Rect_s *rect = static_cast<Rect_s *>(leaf.Target);
        bool isX = entry.Kind == FrameStyleRowKind_RectX;
        double *edge = isX ? &rect->X1 : &rect->Y2;
        double *opposite = isX ? &rect->X2 : &rect->Y1;
        double result;
        int code = computeDouble(*entry.Rules, row, *edge, doubleValue, assignOp, frameRect, &result, error);
        if (code != FrameStyle_Ok) return code;
        if (result == *edge) return FrameStyle_DuplicateValue;
        double moved = *opposite + (result - *edge);
        if (!(moved >= entry.Rules->Min && moved <= entry.Rules->Max)) return outOfRange(error, row, *entry.Rules);
        *edge = result;
        *opposite = moved;
        return FrameStyle_Ok;
    }
    case FrameStyleRowKind_RectWidth:
    case FrameStyleRowKind_RectHeight: {
        // The size moves the right or the bottom edge; the position stays.
        Rect_s *rect = static_cast<Rect_s *>(leaf.Target);
        bool isWidth = entry.Kind == FrameStyleRowKind_RectWidth;
        double current = isWidth ? rect->X2 - rect->X1 : rect->Y1 - rect->Y2;
        double result;
        int code = computeDouble(*entry.Rules, row, current, doubleValue, assignOp, frameRect, &result, error);
        if (code != FrameStyle_Ok) return code;
        if (result == current) return FrameStyle_DuplicateValue;
        if (isWidth)
            rect->X2 = rect->X1 + result;
        else
            rect->Y1 = rect->Y2 + result;
        return FrameStyle_Ok;
    }
    case FrameStyleRowKind_Sub:
    case FrameStyleRowKind_Splice: break;
    }
    return badOption(error, row, path[0]);
}

void getLeaf(const Leaf_s &leaf, double *doubleOut, ArbParam_t *argOut) {
    const FrameStyleRow_s &entry = *leaf.Row;
    switch (entry.Kind) {
    case FrameStyleRowKind_Bool: *argOut = *static_cast<const bool *>(leaf.Target) ? 1 : 0; break;
    case FrameStyleRowKind_Enum: *argOut = *static_cast<const int *>(leaf.Target); break;
    case FrameStyleRowKind_String:
        *argOut = reinterpret_cast<ArbParam_t>(static_cast<const std::string *>(leaf.Target)->c_str());
        break;
    case FrameStyleRowKind_Int:
        *argOut = ArbParam_t(*static_cast<const int *>(leaf.Target) + ArbParam_t(entry.Rules->Adjust));
        break;
    case FrameStyleRowKind_Double: *doubleOut = *static_cast<const double *>(leaf.Target) * entry.Rules->Adjust; break;
    case FrameStyleRowKind_TextHeight: {
        const TextShape_s *shape = static_cast<const TextShape_s *>(leaf.Target);
        *doubleOut = shape->Height * FrameStyleTextHeightSpec(shape->SizeUnits).Adjust;
        break;
    }
    case FrameStyleRowKind_RectX: *doubleOut = static_cast<const Rect_s *>(leaf.Target)->X1; break;
    case FrameStyleRowKind_RectY: *doubleOut = static_cast<const Rect_s *>(leaf.Target)->Y2; break;
    case FrameStyleRowKind_RectWidth: {
        const Rect_s *rect = static_cast<const Rect_s *>(leaf.Target);
        *doubleOut = rect->X2 - rect->X1;
        break;
    }
    case FrameStyleRowKind_RectHeight: {
        const Rect_s *rect = static_cast<const Rect_s *>(leaf.Target);
        *doubleOut = rect->Y1 - rect->Y2;
        break;
    }
    case FrameStyleRowKind_Sub:
    case FrameStyleRowKind_Splice: break;
    }
}

// Where the rows of a major start in the path, and the record they address; the code of a
// refused group number otherwise.
int locateMajor(FrameStyle_s *style, const FrameStyleMajor_s &major, const int path[7], void **record, int *first,
                std::string *error) {
    int group = 0;
    *first = 1;
    if (major.NumGroups > 0) {
        if (path[1] < 1 || path[1] > major.NumGroups) return fail(error, FrameStyle_ValueRangeError, major.GroupError);
        group = path[1] - 1;
        *first = 2;
    } else if (major.HasMapSet) {
        *first = 2;
    }
    *record = major.Locate(style, group);
    return FrameStyle_Ok;
}

int setMap(const FrameStyleTable_s &table, void *map, const Rect_s &frameRect, const int path[7], ArbParam_t argValue,
           double doubleValue, int assignOp, std::string *error) {
    Leaf_s leaf;
    int code = findLeaf(table, map, path, 2, &leaf, error);
    if (code != FrameStyle_Ok) return code;
    return setLeaf(leaf, path, argValue, doubleValue, assignOp, frameRect, error);
}

int getMap(const FrameStyleTable_s &table, const void *map, const int path[7], double *doubleOut, ArbParam_t *argOut) {
    Leaf_s leaf;
    if (findLeaf(table, const_cast<void *>(map), path, 2, &leaf, nullptr) != FrameStyle_Ok)
        return FrameStyle_InvalidCommandOption;
    getLeaf(leaf, doubleOut, argOut);
    return FrameStyle_Ok;
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

int FrameStyleSetValue(FrameStyle_s *style, const int path[7], ArbParam_t argValue, double doubleValue, int assignOp,
                       std::string *error) {
    const FrameStyleMajor_s *major = FindFrameStyleMajor(path[0]);
    if (major == nullptr) {
        // Not a record of the frame style: the plot type, name, active maps and the text and
        // geometry bases are set elsewhere.
        char text[64];
        snprintf(text, sizeof(text), "Invalid Major Command (%d)", path[0]);
        return fail(error, FrameStyle_InvalidCommandOption, text);
    }
    void *record;
    int first;
    int code = locateMajor(style, *major, path, &record, &first, error);
    if (code != FrameStyle_Ok) return code;
    Leaf_s leaf;
    code = findLeaf(*major->Table, record, path, first, &leaf, error);
    if (code != FrameStyle_Ok) return code;
    // Unit suffixes scale by the frame as it stands before this change.
    Rect_s frameRect = style->FrameLayout.Rect;
    return setLeaf(leaf, path, argValue, doubleValue, assignOp, frameRect, error);
}

int FrameStyleGetValue(const FrameStyle_s *style, const int path[7], double *doubleOut, ArbParam_t *argOut) {
    const FrameStyleMajor_s *major = FindFrameStyleMajor(path[0]);
    if (major == nullptr) return FrameStyle_InvalidCommandOption;
    void *record;
    int first;
    FrameStyle_s *mutableStyle = const_cast<FrameStyle_s *>(style);  // only read below
    if (locateMajor(mutableStyle, *major, path, &record, &first, nullptr) != FrameStyle_Ok)
        return FrameStyle_InvalidCommandOption;
    Leaf_s leaf;
    if (findLeaf(*major->Table, record, path, first, &leaf, nullptr) != FrameStyle_Ok)
        return FrameStyle_InvalidCommandOption;
    getLeaf(leaf, doubleOut, argOut);
    return FrameStyle_Ok;
}

int FieldMapStyleSetValue(FieldMapStyle_s *map, const Rect_s &frameRect, const int path[7], ArbParam_t argValue,
                          double doubleValue, int assignOp, std::string *error) {
    return setMap(GetFieldMapStyleTable(), map, frameRect, path, argValue, doubleValue, assignOp, error);
}

int FieldMapStyleGetValue(const FieldMapStyle_s *map, const int path[7], double *doubleOut, ArbParam_t *argOut) {
    return getMap(GetFieldMapStyleTable(), map, path, doubleOut, argOut);
}

int LineMapStyleSetValue(LineMapStyle_s *map, const Rect_s &frameRect, const int path[7], ArbParam_t argValue,
                         double doubleValue, int assignOp, std::string *error) {
    return setMap(GetLineMapStyleTable(), map, frameRect, path, argValue, doubleValue, assignOp, error);
}

int LineMapStyleGetValue(const LineMapStyle_s *map, const int path[7], double *doubleOut, ArbParam_t *argOut) {
    return getMap(GetLineMapStyleTable(), map, path, doubleOut, argOut);
}
