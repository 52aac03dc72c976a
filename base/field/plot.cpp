// Field plot layers. Points go from data to screen pixels through the frame's maps: in 2D by the
// grid-to-screen map (log axes included), in 3D first through the 3D view to frame-view
// coordinates, which are the grid of a 3D frame's 2D maps.
#include "base/field/contlegend.h"
#include "base/field/plot.h"

#include <cmath>
#include <memory>
#include <vector>

#include "base/field/contour.h"
#include "base/field/proccell.h"
#include "base/field/procln.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/plot/draw0.h"
#include "base/plot/fieldmap.h"
#include "base/plot/frame.h"
#include "base/plot/solntime.h"
#include "base/plot/vdi.h"
#include "base/plot/view.h"

namespace {

// How the points of one zone reach the screen.
struct MeshDraw_s {
    FieldValueReader_s X, Y, Z;
    bool Is3D;
    const ThreeDView_s *View;
};

void toScreen(const MeshDraw_s &draw, LgIndex_t node, double *sx, double *sy) {
    double x = ReadFieldValue(draw.X, node), y = ReadFieldValue(draw.Y, node);
    if (draw.Is3D) {
        XYZ_s frameView = VDI3D_TransformXYZ(*draw.View, CurThreeDViewCalc, XYZ_s{x, y, ReadFieldValue(draw.Z, node)});
        x = frameView.X;
        y = frameView.Y;
    }
    *sx = ConvertXPosition(CurTransforms, CoordSys_Grid, CoordSys_Screen, x);
    *sy = ConvertYPosition(CurTransforms, CoordSys_Grid, CoordSys_Screen, y);
}

const MeshDraw_s *drawOf(long clientData) { return reinterpret_cast<const MeshDraw_s *>(clientData); }

bool drawRun(CZInfo_s *, CZData_s *, LgIndex_t start, LgIndex_t stride, LgIndex_t end, long clientData) {
    const MeshDraw_s &draw = *drawOf(clientData);
    double x, y;
    toScreen(draw, start, &x, &y);
    VDI_Begin_Path();
    VDI_Move_Abs(x, y);
    for (LgIndex_t n = start + stride; n < end; n += stride) {
        toScreen(draw, n, &x, &y);
        VDI_Line_Abs(x, y);
    }
    if (end != start) {
        toScreen(draw, end, &x, &y);
        VDI_Line_Abs(x, y);
    }
    VDI_End_Path(false);
    return !Interrupted;
}

bool drawChain(CZInfo_s *, CZData_s *, const LgIndex_t *nodes, const LgIndex_t *, LgIndex_t count, long clientData) {
    const MeshDraw_s &draw = *drawOf(clientData);
    double x, y;
    VDI_Begin_Path();
    for (LgIndex_t n = 0; n < count; n++) {
        toScreen(draw, nodes[n], &x, &y);
        if (n == 0)
            VDI_Move_Abs(x, y);
        else
            VDI_Line_Abs(x, y);
    }
    VDI_End_Path(false);
    return !Interrupted;
}

// The outline of one FE cell; a triangle's repeated corner makes a zero-length side.
bool drawCell(CZInfo_s *, CZData_s *, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t, IJKPlanes_e,
              CellBlankedCond_e, long clientData) {
    const MeshDraw_s &draw = *drawOf(clientData);
    LgIndex_t corners[5] = {n1, n2, n3, n4, n1};
    double x, y;
    VDI_Begin_Path();
    for (int c = 0; c < 5; c++) {
        if (c > 0 && corners[c] == corners[c - 1]) continue;
        toScreen(draw, corners[c], &x, &y);
        if (c == 0)
            VDI_Move_Abs(x, y);
        else
            VDI_Line_Abs(x, y);
    }
    VDI_End_Path(false);
    return !Interrupted;
}

// The mesh of one zone in the style of its map.
bool drawZoneMesh(CZInfo_s *czInfo, CZData_s *czData, bool is3D) {
    const FieldMapStyle_s &style = *czInfo->FieldMap;
    MeshDraw_s draw{MakeFieldValueReader(czData->Native[CZVar_X]), MakeFieldValueReader(czData->Native[CZVar_Y]),
                    MakeFieldValueReader(czData->Native[CZVar_Z]), is3D, &CurFrame->Style.ThreeDView};
    if (draw.X.FieldData == nullptr || draw.Y.FieldData == nullptr || (is3D && draw.Z.FieldData == nullptr))
        return true;
    double frameHeight = std::fabs(CurTransforms.Frame2Screen.YScale);
    VDI_Set_Line_Color(style.Mesh.Color, 1, false, 0);
    VDI_Set_Line_Style(style.Mesh.LineThickness * frameHeight, LinePattern_e(style.Mesh.LinePattern),
                       style.Mesh.PatternLength * frameHeight, LineCap_Round, LineJoin_Round);
    auto clientData = reinterpret_cast<long>(&draw);
    bool lineZone = czInfo->ZoneType == ZoneType_FELineSeg;
    bool ok;
    if (czInfo->ZoneType == ZoneType_Ordered || lineZone)
        ok = ProcessLines(czInfo, czData, true, 0, czData->ISkip, czData->JSkip, czData->KSkip, drawRun, drawChain,
                          clientData, 10000);
    else
        ok = ProcessSurfaceCells(czInfo, czData, true, WalkFlag_SkipCollapsed, czData->ISkip, czData->JSkip,
                                 czData->KSkip, drawCell, nullptr, nullptr, clientData);
    return ok || !Interrupted;
}

bool hasMesh(const CZInfo_s *czInfo) { return czInfo->FieldPlotTypes->ShowMesh && czInfo->FieldMap->Mesh.Show; }

bool hasShade(const CZInfo_s *czInfo) { return czInfo->FieldPlotTypes->ShowShade && czInfo->FieldMap->Shade.Show; }

// The mesh lies under the flood when it is a wireframe, or an overlay with no flood to lie on.
bool meshIsUnderFlood(const CZInfo_s *czInfo) {
    int meshType = czInfo->FieldMap->Mesh.MeshType;
    return meshType == 0 || (meshType == 1 && !ZoneOrCOBHasContourFloodStyle(czInfo));
}

// One stage of a 2D zone: 0 the mesh under the flood, 1 flood or shade and contour lines, 2 the
// overlay and hidden-line mesh.
bool draw2DStage(CZInfo_s *czInfo, CZData_s *czData, int stage) {
    switch (stage) {
    case 0: return !hasMesh(czInfo) || !meshIsUnderFlood(czInfo) || drawZoneMesh(czInfo, czData, false);
    case 1:
        if ((ZoneOrCOBHasContourFloodStyle(czInfo) || hasShade(czInfo) || czInfo->Colors.FillColor != ColorNotDrawn) &&
            !Draw2DShadeOrContourFlooding(czInfo, czData))
            return false;
        return Draw2DContourLinesAndDefLabels(czInfo, czData);
    default: return !hasMesh(czInfo) || meshIsUnderFlood(czInfo) || drawZoneMesh(czInfo, czData, false);
    }
}

struct ZonePair {
    CZInfo_s *Info = nullptr;
    CZData_s *Data = nullptr;
    ZonePair() = default;
    ZonePair(const ZonePair &) = delete;
    ZonePair &operator=(const ZonePair &) = delete;
    ~ZonePair() { ReleaseSetupZoneOrCOB(&Info, &Data); }
};

bool anyGroupMakesAutoLabels(const Frame_s *frame) {
    for (const GlobalContour_s &contour : frame->Style.GlobalContour)
        if (contour.Labels.Show && contour.Labels.GenerateAutoLabels) return true;
    return false;
}

bool plotFieldData(bool is3D) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || frame->DataSet == nullptr) return true;
    const FieldLayers_s &layers = frame->Style.FieldLayers;
    if (!layers.ShowMesh && !layers.ShowContour && !layers.ShowShade) return true;
    const Set_a *zones = GetActiveRelevantZones(frame);
    if (zones == nullptr) return true;
    VDI_Set_Clipping_Mode(ClippingMode_2D);
    // The plot stays within the frame.
    double x1 = CoordMap_X(CurTransforms.Frame2Screen, 0.0), x2 = CoordMap_X(CurTransforms.Frame2Screen, 1.0);
    double y1 = CoordMap_Y(CurTransforms.Frame2Screen, 1.0), y2 = CoordMap_Y(CurTransforms.Frame2Screen, 0.0);
    VDI_SetClipping(std::fmin(x1, x2), std::fmin(y1, y2), std::fmax(x1, x2), std::fmax(y1, y2), true);
    // Auto labels are made afresh by each drawing of the lines, placed as the last drawing did.
    if (layers.ShowContour && anyGroupMakesAutoLabels(frame)) {
        DeleteAllAutoContourLabels(frame);
        ResetContourLabelPlacement();
    }
    const bool byLayer = !is3D && layers.TwoDDrawOrder == 1;
    std::vector<std::unique_ptr<ZonePair>> pairs;
    auto setupZone = [&](EntIndex_t zone) {
        auto pair = std::make_unique<ZonePair>();
        if (!SetupFrameZone(frame, zone, &pair->Info, &pair->Data)) return std::unique_ptr<ZonePair>();
        return pair;
    };
    if (!is3D && !byLayer) {
        // By zone: every stage of a zone before the next zone.
        for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z)) {
            std::unique_ptr<ZonePair> pair = setupZone(EntIndex_t(z));
            if (pair == nullptr) {
                if (Interrupted) return false;
                continue;
            }
            for (int stage = 0; stage < 3; stage++)
                if (!draw2DStage(pair->Info, pair->Data, stage) || Interrupted) return false;
        }
        return true;
    }
    for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z)) {
        std::unique_ptr<ZonePair> pair = setupZone(EntIndex_t(z));
        if (pair != nullptr) pairs.push_back(std::move(pair));
        if (Interrupted) return false;
    }
    if (!is3D) {
        for (int stage = 0; stage < 3; stage++)
            for (std::unique_ptr<ZonePair> &pair : pairs)
                if (!draw2DStage(pair->Info, pair->Data, stage) || Interrupted) return false;
        return true;
    }
    // 3D: surfaces first, then the mesh and the lines over them.
    for (std::unique_ptr<ZonePair> &pair : pairs) {
        CZInfo_s *czInfo = pair->Info;
        if ((ZoneOrCOBHasContourFloodStyle(czInfo) || czInfo->Colors.FillColor != ColorNotDrawn) &&
            !Draw3DShadeOrContourFloodingInSoftware(czInfo, pair->Data))
            return false;
    }
    for (std::unique_ptr<ZonePair> &pair : pairs)
        if (hasMesh(pair->Info) && !drawZoneMesh(pair->Info, pair->Data, true)) return false;
    for (std::unique_ptr<ZonePair> &pair : pairs)
        if (!Draw3DContLinesAndDefLabelsInSoftware(pair->Info, pair->Data)) return false;
    return !Interrupted;
}

}  // namespace

bool SetupFrameZone(Frame_s *frame, EntIndex_t zone, CZInfo_s **czInfo, CZData_s **czData) {
    *czInfo = nullptr;
    *czData = nullptr;
    int map = GetFieldMapForZone(frame, zone);
    if (!IsValidFieldMap(frame, map)) return false;
    const bool is3D = frame->PlotType == PlotType_Cartesian3D;
    ZoneSetupInput_s input;
    input.DataSet = frame->DataSet;
    input.DerivedList = GetFrameZoneList(frame);
    input.Zone = zone;
    input.Is3D = is3D;
    input.FieldMap = &frame->FieldAttributes[size_t(map)]->Style;
    input.FieldLayers = &frame->Style.FieldLayers;
    input.GlobalContour = frame->Style.GlobalContour;
    input.Blanking = &frame->Style.Blanking;
    const AxisDetail_s &x = is3D ? frame->Style.ThreeDAxis.XDetail : frame->Style.TwoDAxis.XDetail;
    const AxisDetail_s &y = is3D ? frame->Style.ThreeDAxis.YDetail : frame->Style.TwoDAxis.YDetail;
    input.XVar = EntIndex_t(x.VarNum);
    input.YVar = EntIndex_t(y.VarNum);
    input.ZVar = EntIndex_t(is3D ? frame->Style.ThreeDAxis.ZDetail.VarNum : -1);
    input.ActiveZones = GetActiveFieldZones(frame);
    input.BackgroundColor = frame->Style.FrameLayout.BackgroundColor;
    return SetupZone(&input, false, false, czInfo, czData);
}

bool Plot2DFieldData() { return plotFieldData(false); }

bool Plot3DOpaqueFieldData() { return plotFieldData(true); }

void RegisterFieldPlotLayers() {
    PlotLayerHooks.Plot2DFieldData = Plot2DFieldData;
    PlotLayerHooks.DrawPostData = DrawContourLegends;
    PlotLayerHooks.Plot3DOpaqueFieldDataInHardware = Plot3DOpaqueFieldData;
}
