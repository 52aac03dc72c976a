#include "base/field/contlegend.h"

#include <algorithm>
#include <cmath>

#include "base/field/contlevel.h"
#include "base/kernel/globals.h"
#include "base/plot/fieldmap.h"
#include "base/plot/frame.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"

namespace {

// Whether a shown map floods by the group (flood colouring GROUP1..4 is 1..4).
bool groupIsFlooded(Frame_s *frame, int group) {
    if (!frame->Style.FieldLayers.ShowContour || frame->ActiveFieldMaps == nullptr) return false;
    const Set_a *active = frame->ActiveFieldMaps;
    for (SetIndex_t m = GetNextMember(active, -1); m >= 0; m = GetNextMember(active, m)) {
        const ContourLayer_s &contour = frame->FieldAttributes[size_t(m)]->Style.Contour;
        bool floods = contour.ContourType != 0;  // LINES draws no flood
        if (contour.Show && floods && contour.FloodColoring == group + 1) return true;
    }
    return false;
}

// A box filled with a colour (none for a negative one), outlined if asked.
void box(double x1, double y1, double x2, double y2, int fill, bool outline, int lineColor) {
    if (fill >= 0) {
        VDI_Set_Fill_Color(fill, false, 0);
        VDI_Set_Line_Color(fill, 1, false, 0);
        VDI_Rectangle(x1, y1, x2, y2, false, true);
    }
    if (outline) {
        VDI_Set_Line_Color(lineColor, 1, false, 0);
        VDI_Rectangle(x1, y1, x2, y2, true, false);
    }
}

void drawLegend(Frame_s *frame, int group) {
    const GlobalContour_s &contour = frame->Style.GlobalContour[group];
    const ContourLegend_s &legend = contour.Legend;
    int numBands = int(contour.Levels.size()) + 1;
    if (contour.Levels.empty()) return;
    // Sizes in frame heights, then pixels: a band is a row of the number text's height times the
    // row spacing, and twice as wide as high.
    double frameHeight = std::fabs(CurTransforms.Frame2Screen.YScale);
    double row = std::max(1.0, legend.NumberTextShape.Height * legend.RowSpacing * frameHeight);
    double across = 2 * row, along = row * numBands;
    double width = legend.IsVertical ? across : along, height = legend.IsVertical ? along : across;
    // The anchor: XYPOS in frame units (Y up), with the alignment's corner or middle on it.
    double ax = CoordMap_X(CurTransforms.Frame2Screen, legend.XYPos.X);
    double ay = CoordMap_Y(CurTransforms.Frame2Screen, legend.XYPos.Y);
    int column = legend.AnchorAlignment % 3, line = legend.AnchorAlignment / 3;  // 0 left/top .. 2 right/bottom
    double left = ax - width * column / 2.0, top = ay - height * line / 2.0;
    const TextBox_s &frameBox = legend.Box;
    if (frameBox.BoxType != 0) {
        double margin = frameBox.Margin * row;
        // FILLED (1) fills with its colour, HOLLOW (2) only outlines.
        box(left - margin, top - margin, left + width + margin, top + height + margin,
            frameBox.BoxType == 1 ? frameBox.FillColor : -1, true, frameBox.Color);
    }
    for (int band = 0; band < numBands; band++) {
        int color = GetMultiColorFromContourLevel(group, band, false);
        if (color < 0) continue;
        // Vertical: the highest band on top; horizontal: the lowest on the left.
        double x1 = legend.IsVertical ? left : left + band * row;
        double y1 = legend.IsVertical ? top + (numBands - 1 - band) * row : top;
        box(x1, y1, x1 + (legend.IsVertical ? across : row), y1 + (legend.IsVertical ? row : across), color,
            legend.OverlayBarGrid, legend.TextColor);
    }
}

}  // namespace

bool DrawContourLegends() {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || frame->DataSet == nullptr) return true;
    if (frame->PlotType != PlotType_Cartesian2D && frame->PlotType != PlotType_Cartesian3D) return true;
    for (int group = 0; group < MaxContourGroups; group++)
        if (frame->Style.GlobalContour[group].Legend.Show && groupIsFlooded(frame, group)) drawLegend(frame, group);
    return !Interrupted;
}
