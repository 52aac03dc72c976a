// Frames on the page. Each frame refers to one data set, which several frames may share by
// reference count. This holds the frame stack, the current frame and the link to data sets; the
// rest of a frame (plot type, style, maps, views) joins as the plot pipeline is built.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/data/dataio.h"
#include "base/kernel/genbase.h"
#include "base/plot/coordsys.h"
#include "base/plot/framestyle.h"

struct AuxData_s;
struct DataSet_s;
struct DisplayList_s;
struct FieldAttributes_s;
struct FrameZoneList_s;
struct LineMapAttributes_s;
struct Set_a;

enum PlotType_e : int16_t {
    PlotType_Automatic = 0,  // only as a request, never held by a frame
    PlotType_Cartesian3D = 1,
    PlotType_Cartesian2D = 2,
    PlotType_XYLine = 3,
    PlotType_Sketch = 4,
    PlotType_PolarLine = 5
};

// How a loaded data set reaches frames: NEW only this frame, APPEND onto its data set, REPLACE in
// every frame that shares the old data set.
enum ReadDataOption_e : int16_t { ReadDataOption_New = 0, ReadDataOption_Append = 1, ReadDataOption_Replace = 2 };

// What the screen shows of a frame and what must be drawn again. Two draw states, full (0) and
// approximate (1), each with eight slots: start, pre-data, zone and map data, computed objects,
// view-sensitive data, sorted panels, post-data, finish.
constexpr int NumFrameDrawSlots = 8;
struct FrameDrawState_s {
    bool NeedsUpdate[2] = {true, true};
    bool SlotValid[2][NumFrameDrawSlots] = {};
    bool IsVisible = true;
    bool ScreenUpdateEnabled = true;
    bool AlwaysFull = true;
    bool DrawingApproximate = false;
    bool WasInterrupted = false;
    bool SelectedForDrawing = true;  // an export of one frame leaves the others out
    // 0 nothing, 1 approximate, 2 full: what the back and the front buffer hold.
    int BackLevel = 0, FrontLevel = 0;
};

struct Frame_s {
    std::string Name;
    uint64_t UniqueID = 0;
    DataSet_s *DataSet = nullptr;
    FrameZoneList_s *ZoneList = nullptr;  // derived values of the data set's variables
    // Text and geometry records read with the data, kept as read until text and geometries
    // are drawn.
    std::vector<Text_s> Texts;
    std::vector<Geom_s> Geoms;
    PlotType_e PlotType = PlotType_Sketch;
    bool InitialPlotFirstZoneOnly = false;
    FrameStyle_s Style;  // a copy of the frame template when the frame is made
    AuxData_s *AuxData = nullptr;  // the frame's auxiliary data (owned), null until an item is set

    // Field maps: their style, each zone's map (-1 none), the shown maps and their zones (a cache,
    // null until asked for).
    std::vector<std::unique_ptr<FieldAttributes_s>> FieldAttributes;
    std::vector<int32_t> ZoneFieldMaps;
    Set_a *ActiveFieldMaps = nullptr;
    Set_a *ActiveFieldZones = nullptr;
    // Line maps and the shown ones.
    std::vector<std::unique_ptr<LineMapAttributes_s>> LineMapAttributes;
    Set_a *ActiveLineMaps = nullptr;

    // Solution time: the frame's time, its time steps and the animation range.
    double SolutionTime = 0.0;
    std::vector<double> TimeSteps;  // sorted; times within the tolerance are one step
    double AnimStartTime = 0.0, AnimEndTime = 0.0;
    bool AnimStartFollowsData = true, AnimEndFollowsData = true;
    int32_t AnimStartStep = 0, AnimEndStep = 0;
    Set_a *ActiveRelevantZones = nullptr;  // cached; null until asked for

    // Views: the 2D axis ranges and 3D views saved by $!VIEW PUSH and taken back by LAST, and a
    // flag that asks for the default view at the next look (a new plot type or data set).
    ViewStack_s<Rect_s> TwoDViewStack;
    ViewStack_s<ThreeDSavedView_s> ThreeDViewStack;
    bool ViewNeedsReset = true;

    FrameDrawState_s DrawState;
    // The work area's display lists of the full (8 slots), approximate (8) and minimal (1) draw
    // states; made on first use, never in batch mode.
    DisplayList_s *DisplayLists[3] = {};

    Frame_s() = default;
    Frame_s(const Frame_s &) = delete;
    Frame_s &operator=(const Frame_s &) = delete;
    ~Frame_s();
};

// The current frame; null before the first frame exists.
extern Frame_s *CurFrame;

constexpr int MaxNumFrames = 2048;

// A new frame on top of the stack, named with the first free "Frame %03d", made current. The
// rectangle (paper inches, Y downward) is the template's unless given; a rectangle outside the
// paper range or under 0.1 inch is refused, as is a frame beyond the 2048th.
bool CreateNewFrame();
// A frame rectangle on the paper (inches, Y1 the bottom edge) that a frame may have: within
// -500 to 500 and at least 0.1 inch each way.
bool IsValidFrameRect(const Rect_s &rect);
bool CreateNewFrame(const Rect_s *rect);
// The stack position (0 top) of the frame with the name (without regard to case), or -1.
int FindFrameByName(const char *name);
// Moves the frame at a stack position to the top ("pop") or to the bottom ("push").
void DoPopping(int index);
void DoPushing(int index);
// CurFrame to a stack position (0 the bottom), or to the top frame (null on an empty page).
void AssignCurFrame(int index);
void ResetTopFrame();
// The stack position of the top frame, -1 on an empty page.
int GetTopFrameStack();
// A frame's stack position, or -1 ("Internal Error: Cannot get frame handle on frame stack").
int GetFrameStackPosition(const Frame_s *frame);
// The whole stack turned one place (top to bottom; bottom to top), CurFrame reset, and nothing
// else: for visiting every frame as the current one and turning back.
void DoLightweightFramePush();
void DoLightweightFramePop();
// visit runs with each frame in turn made current, bottom to top; the current frame is
// restored. Like frames share the given frame's data set. False when a visit said stop.
bool DoForAllFramesInPage(bool (*visit)(void *clientData), void *clientData);
bool DoForAllFramesInAllPages(bool (*visit)(void *clientData), void *clientData);
bool DoForAllFramesWithDataSetInPage(bool (*visit)(void *clientData), void *clientData);
bool DoForAllFramesWithDataSetInAllPages(bool (*visit)(void *clientData), void *clientData);
bool DoForAllLikeFramesInPage(const Frame_s *frame, bool (*visit)(void *clientData), void *clientData);
bool DoForAllLikeFramesInAllPages(const Frame_s *frame, bool (*visit)(void *clientData), void *clientData);
bool DoForAllLikeFramesExceptSelfInPage(const Frame_s *frame, bool (*visit)(void *clientData), void *clientData);
bool DoForAllLikeFramesExceptSelfInAllPages(const Frame_s *frame, bool (*visit)(void *clientData), void *clientData);
// Deletes the top frame; an empty page gets a new empty frame.
bool DeleteTopFrame();
// The box around all frames' rectangles, in their sense (Y1 the bottom); false on an empty page.
bool GetBoundingBoxOfAllFrames(Rect_s *box);
// Scales and moves all frames together so that they fit the sheet's hard clip limits.
bool FitAllFramesInPaper();

enum FrameAction_e {
    FrameAction_PushTop = 0,
    FrameAction_Pop = 1,
    FrameAction_PopAtPosition = 2,
    FrameAction_DeleteTop = 3,
    FrameAction_FitAllToPaper = 4,
    FrameAction_PushByName = 5,
    FrameAction_PopByName = 6,
    FrameAction_Push = 7
};
// number is a one-based stack position (1 the bottom); x, y paper inches for POPATPOSITION.
bool Action_FrameControl(FrameAction_e action, int number, const char *name, double x, double y);
// Deletes every frame, releasing their data sets.
void DeleteAllFrames();
int FrameStackCount();
// Frames by stack position, 0 the bottom; null outside the stack.
Frame_s *FrameStackGet(int position);

// The current frame takes the data set (one more reference to it), with its maps made afresh.
bool AttachDataSetToCurFrame(DataSet_s *dataSet);
// The current frame, which must have no data, shares another frame's data set.
bool AttachDataSetFromOtherFrame(Frame_s *other);
// $!ATTACHDATASET FRAME = n: n is a one-based stack position.
bool Action_AttachDataSet(int frameNumber);
// $!SETFRAMEBACKGROUNDCOLOR: the current frame's background becomes the colour, and the old and
// new background colours trade places throughout the frame's style, its maps, its text and
// geometries and the default text and geometry styles, so nothing vanishes into the background.
bool Action_SetFrameBackgroundColor(int color);
// A loaded data set reaches the frames. NEW gives it to the current frame only, REPLACE to every
// frame that held the current frame's data set; both free the old one when no frame keeps it.
// APPEND joins its zones onto the current data set and frees the record. Strands are assigned
// first. On success *dataSet is null (taken over); on failure it is left to the caller.
bool AttachDataSetToCurFrame(DataSet_s **dataSet, ReadDataOption_e option, bool assignStrandIDs,
                             bool addZonesToExistingStrands, bool resetStyle, PlotType_e initialPlotType,
                             bool initialPlotFirstZoneOnly);
// Sketch with no zones; Cartesian3D at the first volume zone; Cartesian2D with a surface or FE
// zone; else XYLine.
PlotType_e DetermineBestPlotTypeForDataSet(const DataSet_s *dataSet);
// The frame lets go of its data set; the data set is freed with its last reference.
void DetachDataSetFromFrame(Frame_s *frame);
// The frame's derived-value list, sized for its data set (mainline only).
FrameZoneList_s *GetFrameZoneList(Frame_s *frame);
// Number of frames that hold the data set.
int DataSetReferenceCount(const DataSet_s *dataSet);

// The current frame takes the plot type; its maps follow. On failure the old type is put back
// ("Unable to perform the requested action.").
bool SetNewPlotType(PlotType_e requested, bool resetStyle, bool checkLinks);
// A plot type asked for by $!PLOTTYPE or $!FRAMEMODE, with its checks: AUTOMATIC picks the best
// type for the data; a frame without data borrows the data set of the nearest frame below it.
// On refusal *error holds the message.
bool ChangeCurFramePlotType(PlotType_e requested, std::string *error);

// A frame's style afresh from the template of the style base in use, keeping its name, unique ID,
// data set, plot type, rectangle and the layout numbers (header font, border thickness, border
// and header shown); its maps are made again.
void ResetFrameStylePreserveFrameLayoutAndPlotType(Frame_s *frame);
// The same from the chosen base, keeping only the rectangle; the plot type goes back to a sketch.
void SetFrameAttributesToDefaults(Frame_s *frame, StyleBase_e base);

// The sheet as it lies: in landscape the width and height swap and the hard clip offsets turn
// with it.
void GetPaperSpecs(const Paper_s &paper, double *width, double *height, double *left, double *right, double *bottom,
                   double *top);
// The paper view stack of eight regions; the front one is the paper's REGIONINWORKAREA.
void PushPaperView(const Rect_s &rect, bool resetAll);
void PopPaperView();
// The whole sheet with a margin of 0.05 inch.
void FitPaperInWorkArea(bool resetAll);
