#include "base/macro/plotactions.h"

#include <cstdio>
#include <string>

#include "base/macro/actcmd.h"
#include "base/output/export.h"
#include "base/macro/vocabtables.h"
#include "base/plot/draw0.h"
#include "base/plot/frame.h"
#include "base/plot/framelink.h"
#include "base/plot/linemap.h"
#include "base/plot/view.h"

namespace {

bool handleAttachDataSet(const ActionCommand_s &cmd) {
    // Without FRAME the frame below the current one gives its data set.
    int below = GetFrameStackPosition(CurFrame);
    return Action_AttachDataSet(int(cmd.integer(MacroSetValue_FRAME, below)));
}

bool handleCreateLineMap(const ActionCommand_s &cmd) {
    return Action_CreateLineMap();
}

bool handleDeleteLineMaps(const ActionCommand_s &cmd) {
    return Action_DeleteLineMaps(cmd.Set);
}

bool handleDuplicateLineMap(const ActionCommand_s &cmd) {
    if (cmd.find(MacroSetValue_SOURCEMAP) == nullptr || cmd.find(MacroSetValue_DESTINATIONMAP) == nullptr)
        return cmd.fail(std::string(ActionCommandList[cmd.Action]) + " needs SOURCEMAP and DESTINATIONMAP.");
    return Action_DuplicateLineMap(int(cmd.integer(MacroSetValue_SOURCEMAP, 0)) - 1,
                                   int(cmd.integer(MacroSetValue_DESTINATIONMAP, 0)) - 1);
}

bool handleShiftLineMapsToTop(const ActionCommand_s &cmd) {
    return Action_ShiftLineMapsToTop(cmd.Set);
}

bool handleShiftLineMapsToBottom(const ActionCommand_s &cmd) {
    return Action_ShiftLineMapsToBottom(cmd.Set);
}

bool handleSetFrameBackgroundColor(const ActionCommand_s &cmd) {
    return Action_SetFrameBackgroundColor(cmd.Mandatory);
}

bool handleView(const ActionCommand_s &cmd) {
    auto view = View_e(cmd.Mandatory);
    char axis = 'X';
    if (const ActionOptionValue_s *given = cmd.find(MacroSetValue_AXIS)) axis = given->Text.empty() ? 'X' : given->Text[0];
    if ((view == View_SetMagnification || view == View_Make3DMagnification) && cmd.find(MacroSetValue_MAG) == nullptr)
        return cmd.fail("SETMAGNIFICATION needs MAG.");
    if (view == View_Zoom && (cmd.find(MacroSetValue_X1) == nullptr || cmd.find(MacroSetValue_Y1) == nullptr ||
                              cmd.find(MacroSetValue_X2) == nullptr || cmd.find(MacroSetValue_Y2) == nullptr))
        return cmd.fail("ZOOM needs X1, Y1, X2 and Y2.");
    double a = cmd.number(MacroSetValue_MAG, 1.0), b = 0.0, c = 0.0, d = 0.0;
    if (view == View_Translate) {
        a = cmd.number(MacroSetValue_X, 0.0);
        b = cmd.number(MacroSetValue_Y, 0.0);
    } else if (view == View_Zoom) {
        a = cmd.number(MacroSetValue_X1, 0.0);
        b = cmd.number(MacroSetValue_Y1, 0.0);
        c = cmd.number(MacroSetValue_X2, 0.0);
        d = cmd.number(MacroSetValue_Y2, 0.0);
    }
    return Action_View(view, char(toupper(axis)), int(cmd.integer(MacroSetValue_AXISNUM, 1)), a, b, c, d);
}

bool handleRotate3DView(const ActionCommand_s &cmd) {
    XYZ_s vector{cmd.number(MacroSetValue_VECTORX, 0.0), cmd.number(MacroSetValue_VECTORY, 0.0),
                 cmd.number(MacroSetValue_VECTORZ, 0.0)};
    auto rotation = RotateCommand_e(cmd.Mandatory);
    if (rotation == RotateCommand_AboutVector && (cmd.find(MacroSetValue_VECTORX) == nullptr ||
                                                  cmd.find(MacroSetValue_VECTORY) == nullptr ||
                                                  cmd.find(MacroSetValue_VECTORZ) == nullptr))
        return cmd.fail("ABOUTVECTOR needs VECTORX, VECTORY and VECTORZ.");
    return Action_ViewRotate3D(rotation, cmd.number(MacroSetValue_ANGLE, 0.0), &vector,
                               RotateOriginLocation_e(cmd.integer(MacroSetValue_ROTATEORIGINLOCATION, 0)));
}

bool handleReset3DOrigin(const ActionCommand_s &cmd) {
    return Action_Reset3DOrigin(OriginResetLocation_e(cmd.integer(MacroSetValue_ORIGINRESETLOCATION, 0)));
}

bool handleSet3DEyeDistance(const ActionCommand_s &cmd) {
    return Action_Set3DEyeDistance(cmd.number(MacroSetValue_EYEDISTANCE, 0.0));
}

bool handleWorkspaceView(const ActionCommand_s &cmd) {
    return Action_WorkspaceView(WorkspaceView_e(cmd.Mandatory), cmd.number(MacroSetValue_X1, 0.0),
                                cmd.number(MacroSetValue_Y1, 0.0), cmd.number(MacroSetValue_X2, 0.0),
                                cmd.number(MacroSetValue_Y2, 0.0));
}

bool handlePropagateLinking(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_PropagateLinking(LinkType_e(cmd.integer(MacroSetValue_LINKTYPE, LinkType_BetweenFrames)),
                                   FrameCollection_e(cmd.integer(MacroSetValue_FRAMECOLLECTION, FrameCollection_All)));
}

bool handleRedraw(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_Redraw(cmd.flag(MacroSetValue_DOFULLDRAWING, true));
}

bool handleRedrawAll(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_RedrawAll(cmd.flag(MacroSetValue_DOFULLDRAWING, true));
}

bool handleDrawGraphics(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_DrawGraphics(cmd.Mandatory != 0);
}

bool handleDoubleBuffer(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_DoubleBuffer(DoubleBufferAction_e(cmd.Mandatory));
}

bool handleExport(const ActionCommand_s &cmd) {
    if (cmd.flag(MacroSetValue_APPEND, false)) return cmd.fail("APPEND is only for movie formats.");
    cmd.logAction();
    return Action_Export(int(cmd.integer(MacroSetValue_EXPORTREGION, 255)));
}

struct PlotActionHandler_s {
    int Action;
    ActionHandler_pf Handler;
};

const PlotActionHandler_s PlotActionHandlers[] = {
    {MacroAction_ATTACHDATASET, handleAttachDataSet},
    {MacroAction_CREATELINEMAP, handleCreateLineMap},
    {MacroAction_CREATEXYMAP, handleCreateLineMap},
    {MacroAction_DELETELINEMAPS, handleDeleteLineMaps},
    {MacroAction_DELETEXYMAPS, handleDeleteLineMaps},
    {MacroAction_DUPLICATELINEMAP, handleDuplicateLineMap},
    {MacroAction_DUPLICATEXYMAP, handleDuplicateLineMap},
    {MacroAction_SHIFTLINEMAPSTOTOP, handleShiftLineMapsToTop},
    {MacroAction_SHIFTXYMAPSTOTOP, handleShiftLineMapsToTop},
    {MacroAction_SHIFTLINEMAPSTOBOTTOM, handleShiftLineMapsToBottom},
    {MacroAction_SHIFTXYMAPSTOBOTTOM, handleShiftLineMapsToBottom},
    {MacroAction_SETFRAMEBACKGROUNDCOLOR, handleSetFrameBackgroundColor},
    {MacroAction_VIEW, handleView},
    {MacroAction_ROTATE3DVIEW, handleRotate3DView},
    {MacroAction_WORKSPACEVIEW, handleWorkspaceView},
    {MacroAction_RESET3DORIGIN, handleReset3DOrigin},
    {MacroAction_SET3DEYEDISTANCE, handleSet3DEyeDistance},
    {MacroAction_PROPAGATELINKING, handlePropagateLinking},
    {MacroAction_EXPORT, handleExport},
    {MacroAction_REDRAW, handleRedraw},
    {MacroAction_REDRAWALL, handleRedrawAll},
    {MacroAction_DRAWGRAPHICS, handleDrawGraphics},
    {MacroAction_DOUBLEBUFFER, handleDoubleBuffer},
};

}  // namespace

ActionHandler_pf FindPlotActionHandler(int action) {
    for (const PlotActionHandler_s &entry : PlotActionHandlers)
        if (entry.Action == action) return entry.Handler;
    return nullptr;
}
