// The colour tables: allocation, installation of a group, look-up by index.
#include "base/plot/grcolor.h"

#include <new>

#include "base/kernel/errors.h"
#include "base/kernel/statechg.h"

int NumContourColors = 0;
std::vector<RGB_s> CurrentColorMap[NumColorMapGroups];
GrColorHooks_s GrColorHooks{};

namespace {

int SelectedGroup = 0;

// The band a colour map group shows, by its ContourColorMap value; null for WILD and raw.
const ColorMapBand_s *bandOfGroup(const ColorMap_s &map) {
    switch (map.ContourColorMap) {
        case 0: return &map.SmRainbow;
        case 1: return &map.LgRainbow;
        case 2: return &map.Modern;
        case 3: return &map.GrayScale;
        case 5: return &map.UserDefined;
        case 6: return &map.TwoColor;
        default: return nullptr;
    }
}

int16_t lerpChannel(int16_t from, int16_t to, double fraction) {
    return static_cast<int16_t>(from + (to - from) * fraction + 0.499);
}

// The ramp without the contour code: each control point on index round(p * (n-1)), constant
// before the first and after the last, linear from one point's lead to the next one's trail.
// WILD and raw user-defined maps, which need the contour code's tables, come out gray.
void defaultRamp(int group, RGB_s *ramp, int numEntries) {
    const ColorMapBand_s *band = bandOfGroup(GeneralBase.ColorMapGroups[group]);
    if (band == nullptr || band->NumControlPoints < 1 || numEntries < 2) {
        for (int i = 0; i < numEntries; i++) {
            int16_t v = static_cast<int16_t>(numEntries > 1 ? i * 255 / (numEntries - 1) : 0);
            ramp[i] = RGB_s{v, v, v};
        }
        return;
    }
    const int last = numEntries - 1;
    auto indexOf = [last](double location) { return static_cast<int>(location * last + 0.499); };
    const ColorMapControlPoint_s *points = band->ControlPoint.data();
    int first = indexOf(points[0].Location);
    for (int i = 0; i <= first && i < numEntries; i++) ramp[i] = points[0].TrailRGB;
    for (int p = 1; p < band->NumControlPoints; p++) {
        int from = indexOf(points[p - 1].Location), to = indexOf(points[p].Location);
        const RGB_s &a = points[p - 1].LeadRGB, &b = points[p].TrailRGB;
        for (int i = from; i <= to && i < numEntries; i++) {
            double f = to > from ? double(i - from) / double(to - from) : 1.0;
            ramp[i] = RGB_s{lerpChannel(a.R, b.R, f), lerpChannel(a.G, b.G, f), lerpChannel(a.B, b.B, f)};
        }
    }
    int lastPoint = indexOf(points[band->NumControlPoints - 1].Location);
    for (int i = lastPoint; i < numEntries; i++) ramp[i] = points[band->NumControlPoints - 1].LeadRGB;
}

}  // namespace

bool Gr_AllocColorTables() {
    int numContour = GeneralBase.MaxNumContourLevels > 0 ? GeneralBase.MaxNumContourLevels : 1;
    try {
        for (std::vector<RGB_s> &table : CurrentColorMap)
            table.assign(static_cast<size_t>(numContour) + FirstContourColorIndex + 1, RGB_s{0, 0, 0});
    } catch (const std::bad_alloc &) {
        Gr_FreeColorTables();
        ErrMsg("Out of memory");
        return false;
    }
    NumContourColors = numContour;
    return true;
}

void Gr_FreeColorTables() {
    for (std::vector<RGB_s> &table : CurrentColorMap) std::vector<RGB_s>().swap(table);
    NumContourColors = 0;
    SelectedGroup = 0;
}

int SelectFinalColorMapGroup(int group) {
    if (GeneralBase.LinkColorMaps) return 0;
    return group >= 0 && group < NumColorMapGroups ? group : 0;
}

void Gr_SelectColorMapGroup(int group) { SelectedGroup = SelectFinalColorMapGroup(group); }
int Gr_GetColorMapGroup() { return SelectedGroup; }

void Gr_InstallColorMap(int group) {
    Gr_SelectColorMapGroup(group);
    int final = SelectedGroup;
    std::vector<RGB_s> &table = CurrentColorMap[final];
    if (table.empty()) return;
    for (int i = 0; i < NumBasicColors; i++) table[i] = GeneralBase.BasicColor[i];
    // The inverting blend of XOR drawing needs a white source.
    table[XORColorIndex] = RGB_s{255, 255, 255};
    RGB_s *ramp = table.data() + FirstContourColorIndex;
    int numRamp = NumContourColors + 1;
    if (GrColorHooks.BuildContourRamp != nullptr)
        GrColorHooks.BuildContourRamp(final, ramp, numRamp);
    else
        defaultRamp(final, ramp, numRamp);
    if (GrColorHooks.MarkColorMapForScreenUpdate != nullptr) GrColorHooks.MarkColorMapForScreenUpdate();
    StateChanged(StateChange_ColorMap);
}

RGB_s Gr_ColorMapEntry(int index) {
    const std::vector<RGB_s> &table = CurrentColorMap[SelectedGroup];
    if (index < 0 || static_cast<size_t>(index) >= table.size()) return RGB_s{0, 0, 0};
    return table[index];
}

bool Gr_GetColorMapRGB(int index, int *r, int *g, int *b) {
    const std::vector<RGB_s> &table = CurrentColorMap[SelectedGroup];
    bool inTable = index >= 0 && static_cast<size_t>(index) < table.size();
    RGB_s rgb = inTable ? table[index] : RGB_s{0, 0, 0};
    *r = rgb.R, *g = rgb.G, *b = rgb.B;
    return inTable;
}

unsigned long Gr_GetBasicColorPixelValue(int basicColor) {
    RGB_s rgb = basicColor >= 0 && basicColor < NumBasicColors ? GeneralBase.BasicColor[basicColor] : RGB_s{0, 0, 0};
    return (static_cast<unsigned long>(rgb.R) << 16) | (static_cast<unsigned long>(rgb.G) << 8) |
           static_cast<unsigned long>(rgb.B);
}
