// Field plot layers. Points go from data to screen pixels through the frame's maps: in 2D by the
// grid-to-screen map (log axes included), in 3D first through the 3D view to frame-view
// coordinates, which are the grid of a 3D frame's 2D maps.
#include "base/field/plot.h"

#include <cmath>
#include <vector>

#include "base/field/proccell.h"
#include "base/field/procln.h"
#include "base/field/setup.h"
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
bool drawCell(CZInfo_s *, CZData_s *, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3, LgIndex_t n4, LgIndex_t,
              IJKPlanes_e, CellBlankedCond_e, long clientData) {
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
bool drawZoneMesh(Frame_s *frame, EntIndex_t zone, const FieldMapStyle_s &style, bool is3D) {
    ZoneSetupInput_s input;
    input.DataSet = frame->DataSet;
    input.DerivedList = GetFrameZoneList(frame);
    input.Zone = zone;
    input.Is3D = is3D;
    input.FieldMap = &style;
    input.FieldLayers = &frame->Style.FieldLayers;
    input.Blanking = &frame->Style.Blanking;
    const AxisDetail_s &x = is3D ? frame->Style.ThreeDAxis.XDetail : frame->Style.TwoDAxis.XDetail;
    const AxisDetail_s &y = is3D ? frame->Style.ThreeDAxis.YDetail : frame->Style.TwoDAxis.YDetail;
    input.XVar = EntIndex_t(x.VarNum);
    input.YVar = EntIndex_t(y.VarNum);
    input.ZVar = EntIndex_t(is3D ? frame->Style.ThreeDAxis.ZDetail.VarNum : -1);
    input.ActiveZones = GetActiveFieldZones(frame);
    CZInfo_s *czInfo = nullptr;
    CZData_s *czData = nullptr;
    if (!SetupZone(&input, false, false, &czInfo, &czData)) return !Interrupted;
    MeshDraw_s draw{MakeFieldValueReader(czData->Native[CZVar_X]), MakeFieldValueReader(czData->Native[CZVar_Y]),
                    MakeFieldValueReader(czData->Native[CZVar_Z]), is3D, &frame->Style.ThreeDView};
    bool ok = draw.X.FieldData != nullptr && draw.Y.FieldData != nullptr && (!is3D || draw.Z.FieldData != nullptr);
    if (ok) {
        double frameHeight = std::fabs(CurTransforms.Frame2Screen.YScale);
        VDI_Set_Line_Color(style.Mesh.Color, 1, false, 0);
        VDI_Set_Line_Style(style.Mesh.LineThickness * frameHeight, LinePattern_e(style.Mesh.LinePattern),
                           style.Mesh.PatternLength * frameHeight, LineCap_Round, LineJoin_Round);
        auto clientData = reinterpret_cast<long>(&draw);
        bool lineZone = czInfo->ZoneType == ZoneType_FELineSeg;
        if (czInfo->ZoneType == ZoneType_Ordered || lineZone)
            ok = ProcessLines(czInfo, czData, true, 0, czData->ISkip, czData->JSkip, czData->KSkip, drawRun, drawChain,
                              clientData, 10000);
        else
            ok = ProcessSurfaceCells(czInfo, czData, true, WalkFlag_SkipCollapsed, czData->ISkip, czData->JSkip,
                                     czData->KSkip, drawCell, nullptr, nullptr, clientData);
    }
    ReleaseSetupZoneOrCOB(&czInfo, &czData);
    return ok || !Interrupted;
}

bool plotFieldData(bool is3D) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || frame->DataSet == nullptr || !frame->Style.FieldLayers.ShowMesh) return true;
    const Set_a *zones = GetActiveRelevantZones(frame);
    if (zones == nullptr) return true;
    VDI_Set_Clipping_Mode(ClippingMode_2D);
    // The plot stays within the frame.
    double x1 = CoordMap_X(CurTransforms.Frame2Screen, 0.0), x2 = CoordMap_X(CurTransforms.Frame2Screen, 1.0);
    double y1 = CoordMap_Y(CurTransforms.Frame2Screen, 1.0), y2 = CoordMap_Y(CurTransforms.Frame2Screen, 0.0);
    VDI_SetClipping(std::fmin(x1, x2), std::fmin(y1, y2), std::fmax(x1, x2), std::fmax(y1, y2), true);
    for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z)) {
        int map = GetFieldMapForZone(frame, EntIndex_t(z));
        if (!IsValidFieldMap(frame, map)) continue;
        const FieldMapStyle_s &style = frame->FieldAttributes[size_t(map)]->Style;
        if (!style.Mesh.Show) continue;
        if (!drawZoneMesh(frame, EntIndex_t(z), style, is3D)) return false;
        if (Interrupted) return false;
    }
    return true;
}

}  // namespace

bool Plot2DFieldData() { return plotFieldData(false); }

bool Plot3DOpaqueFieldData() { return plotFieldData(true); }

void RegisterFieldPlotLayers() {
    PlotLayerHooks.Plot2DFieldData = Plot2DFieldData;
    PlotLayerHooks.Plot3DOpaqueFieldDataInHardware = Plot3DOpaqueFieldData;
}
