// Frame linking. The flags live in each frame's LINKING style; copying an attribute makes each
// frame of the group current in turn, so that the maps and views follow.
// Relies on: frame (the stack), framestyle (the link flags), view (maps after a change), statechg.
#include "base/plot/framelink.h"

#include <map>

#include "base/kernel/statechg.h"
#include "base/macro/vocabtables.h"
#include "base/plot/draw0.h"
#include "base/plot/frame.h"
#include "base/plot/view.h"

namespace {

bool *flagOf(Frame_s *frame, int row) {
    Linking_s &l = frame->Style.Linking;
    switch (row) {
    case MacroSetValue_LINKAXISSTYLE: return &l.LinkAxisStyle;
    case MacroSetValue_LINKGRIDLINESTYLE: return &l.LinkGridlineStyle;
    case MacroSetValue_LINKLAYERLINECOLOR: return &l.LinkLayerLineColor;
    case MacroSetValue_LINKLAYERLINEPATTERN: return &l.LinkLayerLinePattern;
    case MacroSetValue_LINKCONTOURLEVELS: return &l.LinkContourLevels;
    case MacroSetValue_LINKFRAMESIZEANDPOSITION: return &l.LinkFrameSizeAndPosition;
    case MacroSetValue_LINKXAXISRANGE: return &l.LinkXAxisRange;
    case MacroSetValue_LINKYAXISRANGE: return &l.LinkYAxisRange;
    case MacroSetValue_LINK3DVIEW: return &l.Link3DView;
    case MacroSetValue_LINKPOLARVIEW: return &l.LinkPolarView;
    case MacroSetValue_LINKAXISPOSITION: return &l.LinkAxisPosition;
    case MacroSetValue_LINKVALUEBLANKING: return &l.LinkValueBlanking;
    case MacroSetValue_LINKSLICEPOSITIONS: return &l.LinkSlicePositions;
    case MacroSetValue_LINKISOSURFACEVALUES: return &l.LinkIsoSurfaceValues;
    default: return nullptr;
    }
}

bool flagOn(const Frame_s *frame, int row) {
    bool *flag = flagOf(const_cast<Frame_s *>(frame), row);
    return flag != nullptr && *flag;
}

bool isWithinFrame(int row) {
    return row == MacroSetValue_LINKAXISSTYLE || row == MacroSetValue_LINKGRIDLINESTYLE ||
           row == MacroSetValue_LINKLAYERLINECOLOR || row == MacroSetValue_LINKLAYERLINEPATTERN;
}

// The axis the X or Y range link copies for a plot type.
AxisDetail_s *rangeAxis(Frame_s *frame, bool isX) {
    FrameStyle_s &style = frame->Style;
    if (frame->PlotType == PlotType_XYLine) return isX ? &style.XYLineAxis.XDetail[0] : &style.XYLineAxis.YDetail[0];
    if (frame->PlotType == PlotType_Cartesian2D) return isX ? &style.TwoDAxis.XDetail : &style.TwoDAxis.YDetail;
    return nullptr;
}

bool copyRange(const Frame_s *from, Frame_s *to, bool isX) {
    AxisDetail_s *source = rangeAxis(const_cast<Frame_s *>(from), isX), *target = rangeAxis(to, isX);
    if (source == nullptr || target == nullptr) return false;
    if (source->RangeMin == target->RangeMin && source->RangeMax == target->RangeMax) return false;
    target->RangeMin = source->RangeMin;
    target->RangeMax = source->RangeMax;
    return true;
}

bool copyXRange(const Frame_s *from, Frame_s *to) { return copyRange(from, to, true); }
bool copyYRange(const Frame_s *from, Frame_s *to) { return copyRange(from, to, false); }

bool copySizeAndPosition(const Frame_s *from, Frame_s *to) {
    const Rect_s &a = from->Style.FrameLayout.Rect;
    Rect_s &b = to->Style.FrameLayout.Rect;
    if (a.X1 == b.X1 && a.Y1 == b.Y1 && a.X2 == b.X2 && a.Y2 == b.Y2) return false;
    b = a;
    return true;
}

bool copy3DView(const Frame_s *from, Frame_s *to) {
    if (from->PlotType != PlotType_Cartesian3D || to->PlotType != PlotType_Cartesian3D) return false;
    FrameStyle_s &target = to->Style;
    const FrameStyle_s &source = from->Style;
    for (int n = 0; n < 3; n++) {
        const AxisDetail_s *a[] = {&source.ThreeDAxis.XDetail, &source.ThreeDAxis.YDetail, &source.ThreeDAxis.ZDetail};
        AxisDetail_s *b[] = {&target.ThreeDAxis.XDetail, &target.ThreeDAxis.YDetail, &target.ThreeDAxis.ZDetail};
        b[n]->RangeMin = a[n]->RangeMin;
        b[n]->RangeMax = a[n]->RangeMax;
    }
    target.GlobalThreeD.AxisScaleFact = source.GlobalThreeD.AxisScaleFact;
    target.GlobalThreeD.RotateOrigin = source.GlobalThreeD.RotateOrigin;
    target.ThreeDView = source.ThreeDView;
    return true;
}

bool copyPolarView(const Frame_s *from, Frame_s *to) {
    if (from->PlotType != PlotType_PolarLine || to->PlotType != PlotType_PolarLine) return false;
    to->Style.PolarView = from->Style.PolarView;
    to->Style.PolarAxis.ThetaDetail.RangeMin = from->Style.PolarAxis.ThetaDetail.RangeMin;
    to->Style.PolarAxis.ThetaDetail.RangeMax = from->Style.PolarAxis.ThetaDetail.RangeMax;
    to->Style.PolarAxis.RDetail.RangeMin = from->Style.PolarAxis.RDetail.RangeMin;
    to->Style.PolarAxis.RDetail.RangeMax = from->Style.PolarAxis.RDetail.RangeMax;
    return true;
}

bool copyAxisPosition(const Frame_s *from, Frame_s *to) {
    AxisGrid_s *target = to->PlotType == PlotType_XYLine      ? &to->Style.XYLineAxis.Grid
                         : to->PlotType == PlotType_Cartesian2D ? &to->Style.TwoDAxis.Grid
                                                                : nullptr;
    const AxisGrid_s *source = from->PlotType == PlotType_XYLine      ? &from->Style.XYLineAxis.Grid
                               : from->PlotType == PlotType_Cartesian2D ? &from->Style.TwoDAxis.Grid
                                                                        : nullptr;
    if (source == nullptr || target == nullptr) return false;
    target->ViewportPosition = source->ViewportPosition;
    target->GridArea = source->GridArea;
    return true;
}

std::map<int, LinkCopier_pf> &copiers() {
    static std::map<int, LinkCopier_pf> table = {
        {MacroSetValue_LINKFRAMESIZEANDPOSITION, copySizeAndPosition},
        {MacroSetValue_LINKXAXISRANGE, copyXRange},
        {MacroSetValue_LINKYAXISRANGE, copyYRange},
        {MacroSetValue_LINK3DVIEW, copy3DView},
        {MacroSetValue_LINKPOLARVIEW, copyPolarView},
        {MacroSetValue_LINKAXISPOSITION, copyAxisPosition},
    };
    return table;
}

// Frames whose plot type lets the link act.
bool qualifies(const Frame_s *frame, int row) {
    std::string reason;
    return FrameOkToSetLink(frame, row, &reason);
}

}  // namespace

void RegisterLinkCopier(int linkRow, LinkCopier_pf copier) { copiers()[linkRow] = copier; }

bool IsLinkFlagRow(int row) {
    return row >= MacroSetValue_LINKAXISSTYLE && row <= MacroSetValue_LINKISOSURFACEVALUES && row != MacroSetValue_LINKGROUP;
}

bool LinkFlagIsOn(int linkRow, int group, const Frame_s *frame) {
    return flagOn(frame, linkRow) && frame->Style.Linking.LinkGroup == group;
}

int NumFramesLinked(int linkRow, int group) {
    int count = 0;
    for (int n = 0; n < FrameStackCount(); n++)
        if (LinkFlagIsOn(linkRow, group, FrameStackGet(n))) count++;
    return count;
}

bool FrameHasLinkedView(const Frame_s *frame) {
    return flagOn(frame, MacroSetValue_LINK3DVIEW) || flagOn(frame, MacroSetValue_LINKPOLARVIEW) ||
           flagOn(frame, MacroSetValue_LINKXAXISRANGE) || flagOn(frame, MacroSetValue_LINKYAXISRANGE);
}

bool FrameOkToSetLink(const Frame_s *frame, int linkRow, std::string *reason) {
    PlotType_e type = frame->PlotType;
    bool field = type == PlotType_Cartesian2D || type == PlotType_Cartesian3D;
    const char *refusal = nullptr;
    switch (linkRow) {
    case MacroSetValue_LINKLAYERLINECOLOR:
        if (type == PlotType_Sketch) refusal = "Plot Type cannot be Sketch to link layer line colors";
        break;
    case MacroSetValue_LINKLAYERLINEPATTERN:
        if (!field) refusal = "Plot Type must be 2D or 3D to link layer line patterns";
        break;
    case MacroSetValue_LINKCONTOURLEVELS:
        if (!field) refusal = "Plot type must be 2D or 3D to link contour levels";
        break;
    case MacroSetValue_LINKXAXISRANGE:
    case MacroSetValue_LINKYAXISRANGE:
        if (type != PlotType_XYLine && type != PlotType_Cartesian2D) refusal = "Plot type must be XY or 2D to link X or Y axis ranges";
        break;
    case MacroSetValue_LINK3DVIEW:
        if (type != PlotType_Cartesian3D) refusal = "Plot type must be 3D to link 3D views";
        break;
    case MacroSetValue_LINKPOLARVIEW:
        if (type != PlotType_PolarLine) refusal = "Plot type must be Polar to link Polar views";
        break;
    case MacroSetValue_LINKAXISPOSITION:
        if (type != PlotType_XYLine && type != PlotType_Cartesian2D) refusal = "Plot type must be XY or 2D to link XY axis position";
        break;
    case MacroSetValue_LINKVALUEBLANKING:
        if (type == PlotType_Sketch) refusal = "Plot type must not be Sketch to link Value Blanking Constraints";
        break;
    case MacroSetValue_LINKSLICEPOSITIONS:
        if (type != PlotType_Cartesian3D) refusal = "Plot type must be 3D to link slices";
        break;
    case MacroSetValue_LINKISOSURFACEVALUES:
        if (type != PlotType_Cartesian3D) refusal = "Plot type must be 3D to link iso-surfaces";
        break;
    default: break;
    }
    if (refusal != nullptr && reason != nullptr) *reason = refusal;
    return refusal == nullptr;
}

void AddLinkToCurFrame(int linkRow) {
    Frame_s *self = CurFrame;
    if (self == nullptr || isWithinFrame(linkRow)) return;
    auto copier = copiers().find(linkRow);
    if (copier == copiers().end()) return;
    int group = self->Style.Linking.LinkGroup;
    // The newest other frame on the link gives the attribute.
    for (int n = FrameStackCount() - 1; n >= 0; n--) {
        Frame_s *other = FrameStackGet(n);
        if (other == self || !LinkFlagIsOn(linkRow, group, other) || !qualifies(other, linkRow)) continue;
        if (copier->second(other, self)) SetTransformations();
        return;
    }
}

void PropagateAttributesToLinkedFrames(Frame_s *source, int linkRow) {
    if (source == nullptr || !flagOn(source, linkRow) || !qualifies(source, linkRow)) return;
    auto copier = copiers().find(linkRow);
    if (copier == copiers().end()) return;
    int group = source->Style.Linking.LinkGroup;
    Frame_s *saved = CurFrame;
    bool changed = false;
    for (int n = 0; n < FrameStackCount(); n++) {
        Frame_s *target = FrameStackGet(n);
        if (target == source || !LinkFlagIsOn(linkRow, group, target) || !qualifies(target, linkRow)) continue;
        if (!copier->second(source, target)) continue;
        if (linkRow == MacroSetValue_LINKFRAMESIZEANDPOSITION)
            MarkFrameSizeAndPositionForScreenUpdate(target);
        else
            MarkFrameViewForScreenUpdate(target);
        CurFrame = target;
        SetTransformations();
        changed = true;
    }
    CurFrame = saved;
    SetTransformations();
    if (changed) StateChanged(StateChange_View, nullptr);
}

void PropagateView(Frame_s *source) {
    for (int row : {MacroSetValue_LINKXAXISRANGE, MacroSetValue_LINKYAXISRANGE, MacroSetValue_LINK3DVIEW,
                    MacroSetValue_LINKPOLARVIEW})
        PropagateAttributesToLinkedFrames(source, row);
}

bool Action_PropagateLinking(LinkType_e linkType, FrameCollection_e collection) {
    Frame_s *source = CurFrame;
    if (source == nullptr) return false;
    // Nothing can be picked without the interactive tools.
    if (collection == FrameCollection_Picked) return true;
    for (int n = 0; n < FrameStackCount(); n++) {
        Frame_s *target = FrameStackGet(n);
        if (target == source) continue;
        Linking_s &to = target->Style.Linking;
        const Linking_s &from = source->Style.Linking;
        if (linkType == LinkType_WithinFrame) {
            to.LinkAxisStyle = from.LinkAxisStyle;
            to.LinkGridlineStyle = from.LinkGridlineStyle;
            to.LinkLayerLineColor = from.LinkLayerLineColor;
            to.LinkLayerLinePattern = from.LinkLayerLinePattern;
        } else {
            Linking_s within = to;
            to = from;
            to.LinkAxisStyle = within.LinkAxisStyle;
            to.LinkGridlineStyle = within.LinkGridlineStyle;
            to.LinkLayerLineColor = within.LinkLayerLineColor;
            to.LinkLayerLinePattern = within.LinkLayerLinePattern;
        }
    }
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_LINKING);
    StateChanged(StateChange_Style, nullptr);
    return true;
}
