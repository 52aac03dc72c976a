// Contour groups: levels, their generation, multi-colour codes and the colour of a value.
#include "base/field/contlevel.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/data/dataset.h"
#include "base/data/datautil.h"
#include "base/field/colormap.h"
#include "base/field/setup.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/macro/setvalue.h"
#include "base/macro/vocab.h"
#include "base/plot/devtypes.h"
#include "base/plot/draw0.h"
#include "base/plot/frame.h"
#include "base/plot/framelink.h"
#include "base/plot/framestyle.h"
#include "base/plot/grcolor.h"
#include "base/plot/solntime.h"

namespace {

struct SetDeleter_s {
    void operator()(Set_a *set) const { DeallocSet(&set); }
};
using SetPtr = std::unique_ptr<Set_a, SetDeleter_s>;

GlobalContour_s *contourOf(int group) {
    if (CurFrame == nullptr || group < 0 || group >= MaxContourGroups) return nullptr;
    return &CurFrame->Style.GlobalContour[group];
}

// Control point p of a ramp of m + 1 entries falls on index round(p x m).
int rampIndexOf(double location, int m) { return static_cast<int>(location * m + 0.499); }

}  // namespace

// ---- multi-colour codes -------------------------------------------------------------------------

int SignedColorIndex(int color) { return color >= 65281 && color <= 65535 ? color - 65536 : color; }

int GetContourGroupFromMultiColor(int color) {
    switch (SignedColorIndex(color)) {
        case MultiColor_Group1: return 0;
        case MultiColor_Group2: return 1;
        case MultiColor_Group3: return 2;
        case MultiColor_Group4: return 3;
        default: return -1;
    }
}

int GetMultiColorFromContourGroup(int group) {
    switch (group) {
        case 0: return MultiColor_Group1;
        case 1: return MultiColor_Group2;
        case 2: return MultiColor_Group3;
        case 3: return MultiColor_Group4;
        default: return MultiColor_Invalid;
    }
}

int GetContourGroupFromContourColoring(int coloring) {
    return coloring >= ContourColoring_Group1 && coloring <= ContourColoring_Group4 ? coloring - ContourColoring_Group1 : -1;
}

int GetMultiColorFromContourColoring(int coloring) {
    if (coloring == ContourColoring_RGB) return MultiColor_RGB;
    return GetMultiColorFromContourGroup(GetContourGroupFromContourColoring(coloring));
}

int GetContourColoringFromContourGroup(int group) {
    return group >= 0 && group < MaxContourGroups ? ContourColoring_Group1 + group : ContourColoring_Invalid;
}

int GetContourColoringFromMultiColor(int color) {
    if (SignedColorIndex(color) == MultiColor_RGB) return ContourColoring_RGB;
    return GetContourColoringFromContourGroup(GetContourGroupFromMultiColor(color));
}

int GetContourGroupForVaryingColor(int color) { return GetContourGroupFromMultiColor(color); }

// ---- level generation ---------------------------------------------------------------------------

int MaxNumContourLevels() {
    if (NumContourColors > 0) return NumContourColors;
    return std::max(1, GeneralBase.MaxNumContourLevels);
}

double CheckToSnapNiceNumberToZero(double value, double delta) {
    if (std::fabs(value) < 1e-5 && delta > 0 && std::fabs(value) / delta < 1e-5) return 0.0;
    return value;
}

double SnapToNiceDelta(double delta) {
    if (delta < 1.5) return 1.0;
    if (delta <= 3.0) return 2.0;
    if (delta <= 7.0) return 5.0;
    return 10.0;
}

namespace {

// snap x 10^exponent, rounded once (a power of ten is exact up to 10^22).
double scaledByPowerOfTen(double snap, int exponent) {
    return exponent >= 0 ? snap * std::pow(10.0, exponent) : snap / std::pow(10.0, -exponent);
}

// The nice step for range/n and the next finer one.
void niceDeltas(double range, int n, double *coarse, double *finer) {
    double d = range / n;
    if (!(d > 0) || !std::isfinite(d)) {
        *coarse = 1.0;
        *finer = 0.5;
        return;
    }
    int exponent = static_cast<int>(std::floor(std::log10(d)));
    double scaled = d / scaledByPowerOfTen(1.0, exponent);
    if (scaled < 1.0) scaled = d / scaledByPowerOfTen(1.0, --exponent);
    if (scaled > 10.0) scaled = d / scaledByPowerOfTen(1.0, ++exponent);
    double snap = SnapToNiceDelta(scaled);
    double finerSnap = snap == 10.0 ? 5.0 : snap == 5.0 ? 2.0 : snap == 2.0 ? 1.0 : 0.5;
    *coarse = scaledByPowerOfTen(snap, exponent);
    *finer = scaledByPowerOfTen(finerSnap, exponent);
}

// The smallest multiple k x delta not below min - range x 0.0001, from round(min/delta) by steps
// of 20 then of 1; min itself when min/delta is beyond 1e7.
double niceStart(double min, double range, double delta) {
    double target = min - range * 0.0001;
    double quotient = min / delta;
    if (std::fabs(quotient) > 1e7) return CheckToSnapNiceNumberToZero(min, delta);
    long long k = std::llround(quotient);
    while (double(k) * delta >= target) k -= 20;
    while (double(k) * delta < target) k += 1;
    return CheckToSnapNiceNumberToZero(double(k) * delta, delta);
}

int niceCount(double max, double start, double range, double delta) {
    return static_cast<int>((max - start + range * 0.0001) / delta) + 1;
}

}  // namespace

void GetNiceRangeMinAndDelta(double min, double max, int approxNum, double *niceMin, double *delta, int *count,
                             int maxCount) {
    double range = max - min;
    int target = std::max(approxNum, 1);
    double coarse = 1.0, finer = 0.5;
    for (int n = target;; n--) {
        niceDeltas(range, n, &coarse, &finer);
        if (n < 2 || range / coarse <= target) break;
    }
    double coarseStart = niceStart(min, range, coarse), finerStart = niceStart(min, range, finer);
    int coarseCount = niceCount(max, coarseStart, range, coarse);
    int finerCount = niceCount(max, finerStart, range, finer);
    bool takeFiner = finerCount <= maxCount && std::abs(finerCount - target) < std::abs(coarseCount - target);
    *niceMin = takeFiner ? finerStart : coarseStart;
    *delta = takeFiner ? finer : coarse;
    *count = takeFiner ? finerCount : coarseCount;
}

bool GetMinMaxDeltaContourLevels(double min, double max, double delta, int *numLevels, std::vector<double> *levels) {
    if (max < min || !(delta > 0) || (max - min) / delta > MaxNumContourLevels()) {
        ErrMsg("Invalid value for Min, Max or Delta");
        return false;
    }
    int count = static_cast<int>((max - min) / delta * 1.000001) + 1;
    levels->resize(size_t(count));
    for (int i = 0; i < count; i++) (*levels)[size_t(i)] = min + i * delta;
    *numLevels = count;
    return true;
}

bool GetMinMaxNumContourLevels(double min, double max, int numLevels, std::vector<double> *levels) {
    if (max < min || numLevels <= 0 || numLevels > MaxNumContourLevels()) {
        ErrMsg("Invalid value for Min, Max or NumLevels");
        return false;
    }
    double spacing = numLevels > 1 ? (max - min) / (numLevels - 1) : 0.0;
    levels->resize(size_t(numLevels));
    for (int i = 0; i < numLevels; i++) (*levels)[size_t(i)] = min + i * spacing;
    return true;
}

bool GetMinMaxExpContourLevels(double min, double max, int numLevels, std::vector<double> *levels) {
    if (max < min || numLevels <= 0 || numLevels > MaxNumContourLevels() || min <= 0) {
        ErrMsg("Invalid value for Min, Max or NumLevels");
        return false;
    }
    double logMin = std::log10(min);
    double d = numLevels > 1 ? (std::log10(max) - logMin) / (numLevels - 1) : 0.0;
    levels->resize(size_t(numLevels));
    for (int i = 0; i < numLevels; i++) (*levels)[size_t(i)] = std::pow(10.0, logMin + i * d);
    return true;
}

// ---- the variable's range -----------------------------------------------------------------------

namespace {

bool rangeOverZones(DataSet_s *dataSet, const Set_a *zones, EntIndex_t var, double *min, double *max) {
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

// The zones whose range the levels cover: the active relevant ones and, for each strand in
// context, its zones at the first and last time step.
SetPtr niceCrossSectionOfZones(Frame_s *frame) {
    SetPtr zones(AllocSet(false));
    if (!zones) return zones;
    if (const Set_a *relevant = GetActiveRelevantZones(frame)) CopySet(zones.get(), relevant, false);
    SetPtr strands(GetActiveStrands(frame));
    for (SetIndex_t s = strands ? GetNextMember(strands.get(), -1) : -1; s >= 0; s = GetNextMember(strands.get(), s)) {
        if (!StrandIsInContext(frame, int32_t(s))) continue;
        Set_a *first = nullptr, *last = nullptr;
        if (GetStrandZonesAtFirstAndLastTimeSteps(frame, int32_t(s), &first, &last)) {
            if (first != nullptr) AppendSet(zones.get(), first, false);
            if (last != nullptr) AppendSet(zones.get(), last, false);
        }
        DeallocSet(&first);
        DeallocSet(&last);
    }
    return zones;
}

}  // namespace

bool GetContourGroupVarMinMax(int group, double *min, double *max) {
    *min = *max = 0.0;
    GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return false;
    Frame_s *frame = CurFrame;
    DataSet_s *dataSet = frame->DataSet;
    EntIndex_t var = EntIndex_t(contour->Var);
    if (dataSet == nullptr || var < 0 || var >= dataSet->NumVars) return false;
    SetPtr zones = niceCrossSectionOfZones(frame);
    if (zones && !IsEmpty(zones.get()) && rangeOverZones(dataSet, zones.get(), var, min, max)) return true;
    // The last resort: the first enabled zone.
    SetPtr first(AllocSet(false));
    SetIndex_t zone = GetNextMember(dataSet->EnabledZones, -1);
    if (!first || zone < 0 || !AddToSet(first.get(), zone, false)) return false;
    return rangeOverZones(dataSet, first.get(), var, min, max);
}

// ---- changing levels ----------------------------------------------------------------------------

namespace {

// The levels after a change went in: linked frames take them, listeners hear of it, the frame's
// data is drawn again.
void announceLevels(Frame_s *frame) {
    PropagateAttributesToLinkedFrames(frame, MacroSetValue_LINKCONTOURLEVELS);
    StateChanged(StateChange_ContourLevels);
    MarkFrameDataForScreenUpdate(frame);
}

bool addLevels(GlobalContour_s *contour, bool replace, int numLevels, const double *levels) {
    if (numLevels < 1 || levels == nullptr) return false;
    std::vector<double> merged;
    if (!replace) merged = contour->Levels;
    merged.insert(merged.end(), levels, levels + numLevels);
    std::sort(merged.begin(), merged.end());
    merged.erase(std::unique(merged.begin(), merged.end()), merged.end());
    if (int(merged.size()) > MaxNumContourLevels()) {
        ErrMsg("Too many contour levels.  The limit is %d.", MaxNumContourLevels());
        return false;
    }
    contour->Levels = std::move(merged);
    return true;
}

bool deleteLevels(GlobalContour_s *contour, bool nearest, double min, double max) {
    std::vector<double> &levels = contour->Levels;
    if (levels.empty()) {
        ErrMsg("No contour levels to delete");
        return false;
    }
    if (nearest) {
        size_t best = 0;
        for (size_t n = 1; n < levels.size(); n++)
            if (std::fabs(levels[n] - min) < std::fabs(levels[best] - min)) best = n;
        levels.erase(levels.begin() + long(best));
        return true;
    }
    auto first = std::lower_bound(levels.begin(), levels.end(), min);
    auto end = std::upper_bound(levels.begin(), levels.end(), max);
    if (first < end) levels.erase(first, end);
    return true;
}

// numLevels levels over [min, max]: evenly inside it, or nice ones. Equal neighbours collapse.
std::vector<double> resetLevels(bool nice, int numLevels, double min, double max) {
    std::vector<double> levels;
    if (numLevels < 2) {
        levels.push_back((min + max) / 2);
        return levels;
    }
    if (nice) {
        double border = (max - min) * 0.25 / (numLevels + 1);
        double start, delta;
        int count;
        GetNiceRangeMinAndDelta(min + border, max - border, numLevels, &start, &delta, &count, MaxNumContourLevels());
        for (int i = 0; i < count; i++) levels.push_back(CheckToSnapNiceNumberToZero(start + i * delta, delta));
    } else {
        double delta = (max - min) / (numLevels + 1);
        for (int i = 0; i < numLevels; i++) levels.push_back(CheckToSnapNiceNumberToZero(min + (i + 1) * delta, delta));
    }
    levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
    return levels;
}

bool resetGroupLevels(int group, bool nice, int numLevels) {
    GlobalContour_s *contour = contourOf(group);
    int count = numLevels > 0 ? numLevels : int(contour->Levels.size());
    if (count == 0) return true;
    double min, max;
    if (!GetContourGroupVarMinMax(group, &min, &max)) return false;
    contour->Levels = resetLevels(nice, count, min, max);
    contour->DefNumLevels = count;
    return true;
}

}  // namespace

bool SetContourLevels(ContourLevelAction_e action, int group, double min, double max, int numLevels,
                      const double *levels) {
    GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return false;
    bool ok = false;
    switch (action) {
        case ContourLevelAction_Add: ok = addLevels(contour, false, numLevels, levels); break;
        case ContourLevelAction_New: ok = addLevels(contour, true, numLevels, levels); break;
        case ContourLevelAction_DeleteRange: ok = deleteLevels(contour, false, min, max); break;
        case ContourLevelAction_DeleteNearest: ok = deleteLevels(contour, true, min, max); break;
        case ContourLevelAction_Reset: ok = resetGroupLevels(group, false, numLevels); break;
        case ContourLevelAction_ResetToNice: ok = resetGroupLevels(group, true, numLevels); break;
    }
    if (ok) announceLevels(CurFrame);
    return ok;
}

bool Action_ContourLevels(ContourLevelAction_e action, int group, double min, double max, int numLevels,
                          const double *levels) {
    return SetContourLevels(action, group, min, max, numLevels, levels);
}

// ---- a new contour variable ---------------------------------------------------------------------

double GetMinimumSpecifiedIncrementValue(int group) {
    const GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return AboveZeroDoubleInputSpec.Min;
    const ColorMapFilter_s &filter = contour->ColorMapFilter;
    return std::max(AboveZeroDoubleInputSpec.Min, (filter.CMax - filter.CMin) / 500);
}

void ResetLegendSpecifiedIncrement(int group, bool showWarning) {
    GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr || GetMinimumSpecifiedIncrementValue(group) <= contour->Legend.LabelIncrement) return;
    contour->Legend.LabelIncrement = (contour->ColorMapFilter.CMax - contour->ColorMapFilter.CMin) / 10;
    if (showWarning && contour->Legend.Show && contour->Legend.LabelLocation == 1)
        Warning("The contour legend has too many color bands. The \"Specified Increment\"\nvalue has been increased "
                "to reduce the number of color bands.");
}

namespace {

bool followNewContourVar(int group, bool isNewVar) {
    GlobalContour_s *contour = contourOf(group);
    double min, max;
    if (contour == nullptr || !GetContourGroupVarMinMax(group, &min, &max)) return false;
    Frame_s *frame = CurFrame;
    MarkFrameDataForScreenUpdate(frame);
    contour->ColorCutoff.RangeMin = (3 * min + max) / 4;
    contour->ColorCutoff.RangeMax = (min + 3 * max) / 4;
    int count = isNewVar ? contour->DefNumLevels : int(contour->Levels.size());
    if (count > 0) {
        contour->Levels = resetLevels(false, count, min, max);
        contour->DefNumLevels = count;
    }
    contour->ColorMapFilter.CMin = min;
    contour->ColorMapFilter.CMax = max;
    ResetLegendSpecifiedIncrement(group, false);
    for (IsoSurfaceAttributes_s &iso : frame->Style.IsoSurfaceAttributes) {
        if (iso.DefinitionContourGroup != group) continue;
        iso.IsoValue1 = (3 * min + max) / 4;
        iso.IsoValue2 = (min + max) / 2;
        iso.IsoValue3 = (min + 3 * max) / 4;
    }
    PropagateAttributesToLinkedFrames(frame, MacroSetValue_LINKCONTOURLEVELS);
    StateChanged(StateChange_ContourVar);
    return true;
}

// $!GLOBALCONTOUR n VAR on the current frame: a field plot follows the new variable.
bool newContourVarFromStyle(int group, int oldVar, int newVar) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || frame->DataSet == nullptr || newVar < 0) return true;
    if (frame->PlotType != PlotType_Cartesian2D && frame->PlotType != PlotType_Cartesian3D) return true;
    return followNewContourVar(group, newVar != oldVar);
}

// LINKCONTOURLEVELS: the levels of all four groups.
bool copyContourLevels(const Frame_s *from, Frame_s *to) {
    bool changed = false;
    for (int group = 0; group < MaxContourGroups; group++) {
        const std::vector<double> &source = from->Style.GlobalContour[group].Levels;
        std::vector<double> &target = to->Style.GlobalContour[group].Levels;
        if (target == source) continue;
        target = source;
        changed = true;
    }
    return changed;
}

}  // namespace

bool UpdateFlagsAndMarkFrameForNewContourVar(int group, int newVar) {
    GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return false;
    int oldVar = contour->Var;
    contour->Var = newVar;
    if (followNewContourVar(group, newVar != oldVar)) return true;
    contour->Var = oldVar;
    return false;
}

void RegisterContourHooks() {
    SetValueHooks.NewContourVar = newContourVarFromStyle;
    RegisterLinkCopier(MacroSetValue_LINKCONTOURLEVELS, copyContourLevels);
    RegisterColorMapHooks();
}

// ---- value to colour ----------------------------------------------------------------------------

int GetFilterColorMapGroup(int group) { return SelectFinalColorMapGroup(group); }

int GetMultiColorFromContourLevel(int group, int level, bool useCutoff) {
    const GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return FirstContourColorIndex;
    const std::vector<double> &levels = contour->Levels;
    int numLevels = int(levels.size());
    if (useCutoff && level >= 0 && level < numLevels) {
        const ColorCutoff_s &cutoff = contour->ColorCutoff;
        double value = levels[size_t(level)];
        if ((cutoff.IncludeMin && value < cutoff.RangeMin) || (cutoff.IncludeMax && value > cutoff.RangeMax))
            return NoColor;
    }
    const ColorMapFilter_s &filter = contour->ColorMapFilter;
    if (filter.ColorMapOverrideActive) {
        for (const ColorMapOverride_s &entry : filter.ColorMapOverride)
            if (entry.Include && entry.StartLevel + 1 <= level && level < entry.EndLevel + 1) return entry.Color;
    }
    if (filter.Zebra.Include && level % 2 == 0) return filter.Zebra.IsTransparent ? NoColor : filter.Zebra.Color;
    int m = MaxNumContourLevels();
    int index;
    if (level <= 0)
        index = 0;
    else if (level >= numLevels)
        index = m;
    else
        index = static_cast<int>(double(level) / numLevels * (double(filter.ColorMapCycles) * (m + 1) - 1) + 0.499) %
                (m + 1);
    if (filter.ReverseColorMap) index = m - index;
    return FirstContourColorIndex + index;
}

namespace {

// The continuous ramp index of a value between CMin and CMax.
int continuousIndex(const GlobalContour_s &contour, int group, double value) {
    const ColorMapFilter_s &filter = contour.ColorMapFilter;
    double a = filter.CMin, b = filter.CMax;
    int cycles = std::max(1, filter.ColorMapCycles);
    int m = MaxNumContourLevels();
    if (value <= a) return 0;
    if (value >= b) return m;
    double x = cycles * (value - a) / (b - a);
    if (x > 1.0) x -= std::floor(x);
    int index = static_cast<int>(x * m + 0.499);
    if (filter.UseFastApproxContinuousFlood) return index;
    // Keep the index inside the control-point segment the value falls in, so that sharp breaks
    // of the map stay sharp.
    double cycleLength = (b - a) / cycles;
    int cycle = 0;
    while (cycle < cycles - 1 && a + (cycle + 1) * cycleLength < value) cycle++;
    double start = cycle * cycleLength;
    double lower = 0.0, upper = 1.0;
    if (const ColorMapBand_s *band = GetCurrentColorMapBand(GetFilterColorMapGroup(group))) {
        int numPoints = std::min(band->NumControlPoints, MaxColorMapControlPoints);
        int p = 0;
        while (p < numPoints && a + start + band->ControlPoint[size_t(p)].Location * cycleLength < value) p++;
        if (p == 0) {
            upper = 0.0;
        } else if (p == numPoints) {
            lower = band->ControlPoint[size_t(numPoints - 1)].Location;
        } else {
            lower = band->ControlPoint[size_t(p - 1)].Location;
            upper = band->ControlPoint[size_t(p)].Location;
        }
    }
    int lowest = rampIndexOf(lower, m);
    int highest = std::max(lowest, rampIndexOf(upper, m) - 1);
    return std::clamp(index, lowest, highest);
}

}  // namespace

int GetMultiColorIgnoringColorCutOff(int group, double value) {
    const GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return FirstContourColorIndex;
    Gr_SelectColorMapGroup(GetFilterColorMapGroup(group));
    if (contour->ColorMapFilter.ColorMapDistribution != 0) {
        const std::vector<double> &levels = contour->Levels;
        int level = int(std::lower_bound(levels.begin(), levels.end(), value) - levels.begin());
        return GetMultiColorFromContourLevel(group, level, false);
    }
    int index = continuousIndex(*contour, group, value);
    if (contour->ColorMapFilter.ReverseColorMap) index = MaxNumContourLevels() - index;
    return FirstContourColorIndex + index;
}

int GetMultiColor(int group, double value) {
    const GlobalContour_s *contour = contourOf(group);
    if (contour == nullptr) return FirstContourColorIndex;
    const ColorCutoff_s &cutoff = contour->ColorCutoff;
    if ((cutoff.IncludeMin && value < cutoff.RangeMin) || (cutoff.IncludeMax && value > cutoff.RangeMax)) return NoColor;
    return GetMultiColorIgnoringColorCutOff(group, value);
}

int GetIsoSurfaceColor(int level, int color, int isoGroup) {
    int group = GetContourGroupFromMultiColor(color);
    if (group < 0 || CurFrame == nullptr || isoGroup < 0 || isoGroup >= MaxIsoSurfaceGroups) return color;
    const IsoSurfaceAttributes_s &iso = CurFrame->Style.IsoSurfaceAttributes[isoGroup];
    if (group != iso.DefinitionContourGroup) return color;
    const GlobalContour_s &contour = CurFrame->Style.GlobalContour[group];
    if (iso.IsoSurfaceSelection == 0) {  // ALLCONTOURLEVELS
        if (contour.ColorMapFilter.ColorMapDistribution != 0) return GetMultiColorFromContourLevel(group, level, true);
        if (level < 0 || level >= int(contour.Levels.size())) return color;
        return GetMultiColor(group, contour.Levels[size_t(level)]);
    }
    double value = level <= 0 ? iso.IsoValue1 : level == 1 ? iso.IsoValue2 : iso.IsoValue3;
    return GetMultiColor(group, value);
}

// ---- RGB colouring ------------------------------------------------------------------------------

namespace {

int rgbChannelOf(double value, double min, double max) {
    double f = max > min ? (value - min) / (max - min) : 0.0;
    return static_cast<int>(std::clamp(f, 0.0, 1.0) * 255 + 0.499);
}

// Which channels have a variable in each RGB mode.
bool modeHasChannel(int rgbMode, int channel) {
    switch (rgbMode) {
        case 1: return channel != 2;
        case 2: return channel != 1;
        case 3: return channel != 0;
        default: return true;
    }
}

const GlobalRGB_s *frameRGB() { return CurFrame != nullptr ? &CurFrame->Style.GlobalRGB : nullptr; }

// The three variable values at a point or cell; false when a table the mode needs is missing.
bool rgbValuesAt(const CZData_s *czData, LgIndex_t index, bool isPoint, int rgbMode, double values[3]) {
    for (int c = 0; c < 3; c++) {
        values[c] = 0.0;
        if (!modeHasChannel(rgbMode, c)) continue;
        FieldData_a table = isPoint ? czData->Nodal[CZVar_R + c] : czData->CC[CZVar_R + c];
        if (table == nullptr) return false;
        values[c] = GetFieldValue(table, index);
    }
    return true;
}

}  // namespace

RGB_s RGBColorFromValues(int rgbMode, double r, double g, double b, double min, double max) {
    int channel[3] = {rgbChannelOf(r, min, max), rgbChannelOf(g, min, max), rgbChannelOf(b, min, max)};
    if (rgbMode >= 1 && rgbMode <= 3) {
        int third = rgbMode == 1 ? 2 : rgbMode == 2 ? 1 : 0;
        int first = third == 0 ? 1 : 0, second = third == 2 ? 1 : 2;
        int sum = channel[first] + channel[second];
        if (sum > 255) {
            int &smaller = channel[first] <= channel[second] ? channel[first] : channel[second];
            int &larger = &smaller == &channel[first] ? channel[second] : channel[first];
            smaller = std::max(0, smaller - (sum - 255) / 2);
            larger = 255 - smaller;
            channel[third] = 0;
        } else {
            channel[third] = 255 - sum;
        }
    }
    return RGB_s{int16_t(channel[0]), int16_t(channel[1]), int16_t(channel[2])};
}

bool GetRGBColorAtIndex(const CZData_s *czData, LgIndex_t index, bool isPoint, RGB_s *rgb) {
    const GlobalRGB_s *style = frameRGB();
    double values[3];
    if (czData == nullptr || style == nullptr || !rgbValuesAt(czData, index, isPoint, style->RGBMode, values))
        return false;
    *rgb = RGBColorFromValues(style->RGBMode, values[0], values[1], values[2], style->RangeMin, style->RangeMax);
    return true;
}

bool GetRGBColorAtPointIndex(const CZData_s *czData, LgIndex_t point, RGB_s *rgb) {
    return GetRGBColorAtIndex(czData, point, true, rgb);
}

bool GetRGBColorAtCellIndex(const CZData_s *czData, LgIndex_t cell, RGB_s *rgb) {
    return GetRGBColorAtIndex(czData, cell, false, rgb);
}

bool GetAveragedRGBColorAtPointIndices(const CZData_s *czData, int numPoints, const LgIndex_t *points, RGB_s *rgb) {
    if (numPoints < 1) return false;
    long sum[3] = {0, 0, 0};
    for (int n = 0; n < numPoints; n++) {
        RGB_s one;
        if (!GetRGBColorAtIndex(czData, points[n], true, &one)) return false;
        sum[0] += one.R, sum[1] += one.G, sum[2] += one.B;
    }
    auto average = [numPoints](long total) { return int16_t(double(total) / numPoints + 0.499); };
    *rgb = RGB_s{average(sum[0]), average(sum[1]), average(sum[2])};
    return true;
}

bool GetRGBColorAtIndexFract(const CZData_s *czData, LgIndex_t point1, LgIndex_t point2, double fract, RGB_s *rgb) {
    const GlobalRGB_s *style = frameRGB();
    double a[3], b[3];
    if (czData == nullptr || style == nullptr || !rgbValuesAt(czData, point1, true, style->RGBMode, a) ||
        !rgbValuesAt(czData, point2, true, style->RGBMode, b))
        return false;
    double v[3];
    for (int c = 0; c < 3; c++) v[c] = a[c] + fract * (b[c] - a[c]);
    *rgb = RGBColorFromValues(style->RGBMode, v[0], v[1], v[2], style->RangeMin, style->RangeMax);
    return true;
}
