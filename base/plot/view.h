// The current frame's coordinate maps and its views: fitting the data, centring, zooming,
// translating and magnifying, the view stacks of 2D axis ranges and 3D views, 3D rotation by
// command, and the workspace view of the paper.
// Relies on: coordsys (the maps and 3D matrices), frame (CurFrame, its style and data),
// fieldmap/linemap/solntime (the zones whose data a fit covers).
#pragma once

#include <cstdint>

#include "base/kernel/types.h"
#include "base/plot/coordsys.h"

struct Frame_s;

// The maps of CurFrame, and its 3D view values; valid after SetTransformations.
extern Transformations_s CurTransforms;
extern ThreeDViewCalc_s CurThreeDViewCalc;

// The pixels of the usable work area (the off-screen image in batch mode).
void SetUsableWorkAreaSize(int width, int height);
// Recomputes the maps of CurFrame: the 2D maps, and the 3D view for a 3D frame.
void SetTransformations();

// The range of a variable over the frame's shown zones at its time (or its first enabled zone);
// false (and 0, 0) when nothing can be taken.
bool GetNativeVarMinMax(Frame_s *frame, EntIndex_t var, double *min, double *max);

enum View_e {
    View_Fit = 0,
    View_DataFit = 1,
    View_AxisFit = 2,
    View_SetMagnification = 3,
    View_Center = 4,
    View_Translate = 5,
    View_Zoom = 6,
    View_Last = 7,
    View_Copy = 8,
    View_Paste = 9,
    View_Push = 10,
    View_Make3DMagnification = 11,
    View_NiceFit = 12,
    View_AxisNiceFit = 13,
    View_MakeCurrentViewNice = 14,
    View_AxisMakeCurrentValuesNice = 15,
    View_ResetToEntireCircle = 16
};

// One view operation on CurFrame. axis is 'X', 'Y' or 'Z' (AXISFIT), axisNum from 1; a, b, c, d
// carry the magnification (a), a translation in percent of the frame (a, b) or the zoom
// rectangle in grid units (a, b the first corner, c, d the second).
bool Action_View(View_e view, char axis, int axisNum, double a, double b, double c, double d);
// Makes the default view if the frame asks for one (a new plot type or new data).
bool CheckToResetViewStack();

// Rotation by command: about the X, Y or Z data axis, or to new PSI, THETA or ALPHA angles
// (by the angle added, in degrees); about a vector through the rotate origin.
enum RotateCommand_e {
    RotateCommand_X = 0,
    RotateCommand_Y = 1,
    RotateCommand_Z = 2,
    RotateCommand_Psi = 3,
    RotateCommand_Theta = 4,
    RotateCommand_Alpha = 5,
    RotateCommand_Twist = 6,
    RotateCommand_VertRollerBall = 7,
    RotateCommand_HorzRollerBall = 8,
    RotateCommand_AboutVector = 9
};
bool Action_ViewRotate3D(RotateCommand_e rotation, double angleDegrees, const XYZ_s *vector,
                         RotateOriginLocation_e originLocation);

// The centre of rotation: the middle of the data (DATACENTER) or the data under the middle of
// the view (VIEWCENTER).
enum OriginResetLocation_e { OriginResetLocation_DataCenter = 0, OriginResetLocation_ViewCenter = 1 };
bool Action_Reset3DOrigin(OriginResetLocation_e location);
// Moves the eye along its line of sight to the distance from the centre of rotation.
bool Action_Set3DEyeDistance(double distance);

enum WorkspaceView_e {
    WorkspaceView_FitSelectedFrames = 0,
    WorkspaceView_FitAllFrames = 1,
    WorkspaceView_FitPaper = 2,
    WorkspaceView_Maximize = 3,
    WorkspaceView_LastView = 4,
    WorkspaceView_Zoom = 5,
    WorkspaceView_Translate = 6,
    WorkspaceView_Unmaximize = 7
};
// ZOOM takes a paper rectangle (x1, y1)-(x2, y2); TRANSLATE moves the view by (x1, y1) inches.
bool Action_WorkspaceView(WorkspaceView_e view, double x1, double y1, double x2, double y2);
