// The frame stack and the links between frames and data sets. It also gives the data layer its
// view of frames, through the data set hooks it installs when the first frame is made.
#include "base/plot/frame.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "base/data/datahooks.h"
#include "base/data/dataset.h"
#include "base/data/datautil.h"
#include "base/data/derived.h"
#include "base/data/strand.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strutil.h"
#include "base/macro/vocabtables.h"
#include "base/macro/setvalue.h"
#include "base/plot/draw0.h"
#include "base/plot/fieldmap.h"
#include "base/plot/linemap.h"
#include "base/plot/solntime.h"
#include "base/plot/vdi.h"

Frame_s *CurFrame = nullptr;

namespace {

std::vector<std::unique_ptr<Frame_s>> FrameStack;  // bottom of the stack first; the top is current
int framesMade = 0;

DataSet_s *currentDataSet() { return CurFrame != nullptr ? CurFrame->DataSet : nullptr; }

bool attachToCurFrame(DataSet_s *dataSet, bool) { return AttachDataSetToCurFrame(dataSet); }

void visitFrameDataSets(bool (*visitor)(DataSet_s *, void *), void *clientData) {
    for (auto &frame : FrameStack)
        if (frame->DataSet != nullptr && !visitor(frame->DataSet, clientData)) return;
}

// Calls f with the zone list of every frame that shows the data set.
template <typename F>
void forFramesOf(DataSet_s *dataSet, F f) {
    for (auto &frame : FrameStack)
        if (frame->DataSet == dataSet && frame->ZoneList != nullptr) f(frame->ZoneList);
}

// The frames that show the data set draw their data again.
void markDataOf(DataSet_s *dataSet) {
    for (auto &frame : FrameStack)
        if (frame->DataSet == dataSet) MarkFrameDataForScreenUpdate(frame.get());
}

void invalidateDerivedVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListInvalidate(list, zone, var); });
    markDataOf(dataSet);
}

bool incorporateZone(DataSet_s *dataSet, EntIndex_t zone) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListInvalidate(list, zone, -1); });
    for (auto &frame : FrameStack)
        if (frame->DataSet == dataSet && !IncorporateZoneIntoFrameStyle(frame.get(), zone)) return false;
    markDataOf(dataSet);
    return true;
}

void deleteZone(DataSet_s *dataSet, EntIndex_t zone) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListDeleteZone(list, zone); });
    for (auto &frame : FrameStack)
        if (frame->DataSet == dataSet) FrameStyleDeleteZone(frame.get(), zone);
    markDataOf(dataSet);
}

void deleteVar(DataSet_s *dataSet, EntIndex_t var) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListDeleteVar(list, var); });
    for (auto &frame : FrameStack)
        if (frame->DataSet == dataSet) FrameStyleDeleteVarFromLineMaps(frame.get(), var);
}

void installDataSetHooks() {
    DataSetHooks.InvalidateDerivedVar = invalidateDerivedVar;
    DataSetHooks.IncorporateZoneIntoFrameStyle = incorporateZone;
    DataSetHooks.FrameStyleDeleteZone = deleteZone;
    DataSetHooks.FrameStyleDeleteVar = deleteVar;
    DataSetHooks.CurrentDataSet = currentDataSet;
    DataSetHooks.AttachDataSetToCurFrame = attachToCurFrame;
    DataSetHooks.VisitFrameDataSets = visitFrameDataSets;
}

}  // namespace

bool CreateNewFrame() { return CreateNewFrame(nullptr); }

bool IsValidFrameRect(const Rect_s &rect) {
    // Sizes within 1e-9 of the least (0.1 inch) pass: a height given as 0.1 may come back a hair
    // under it from Y1 - Y2.
    return rect.X1 >= -500 && rect.Y2 >= -500 && rect.X2 <= 500 && rect.Y1 <= 500 && rect.Y1 >= rect.Y2 &&
           rect.X2 >= rect.X1 && rect.X2 - rect.X1 >= 0.1 - 1e-9 && rect.Y1 - rect.Y2 >= 0.1 - 1e-9;
}

bool CreateNewFrame(const Rect_s *rect) {
    if (rect != nullptr && !IsValidFrameRect(*rect)) {
        ErrMsg("Invalid frame position and/or dimensions");
        return false;
    }
    if (FrameStack.size() >= size_t(MaxNumFrames)) {
        ErrMsg("Too many frames");
        return false;
    }
    installDataSetHooks();
    auto frame = std::make_unique<Frame_s>();
    frame->Style = GetFrameTemplate(FrameStyleBase == StyleBase_Factory);
    // The first free name "Frame 001", "Frame 002", ...
    for (int n = 1;; n++) {
        char name[32];
        snprintf(name, sizeof(name), "Frame %03d", n);
        if (FindFrameByName(name) < 0) {
            frame->Name = name;
            break;
        }
    }
    frame->UniqueID = GetNextUniqueID();
    if (rect != nullptr) frame->Style.FrameLayout.Rect = *rect;
    // The header colour: the first of 1 to 15 that no frame has, else one from the count,
    // never white.
    int color = 1;
    if (!FrameStack.empty()) {
        color = -1;
        for (int c = 1; c <= 15 && color < 0; c++) {
            bool used = std::any_of(FrameStack.begin(), FrameStack.end(), [c](const auto &f) {
                return f->Style.FrameLayout.HeaderColor == c;
            });
            if (!used) color = c;
        }
        if (color < 0) {
            int top = int(FrameStack.size()) - 1;
            color = top % 14;
            color += color > 5 ? 2 : 1;
        }
    }
    frame->Style.FrameLayout.HeaderColor = color;
    FrameStack.push_back(std::move(frame));
    ResetTopFrame();
    framesMade++;
    SetNewPlotType(PlotType_Sketch, false, false);
    StateChanged(StateChange_NewTopFrame, nullptr);
    return true;
}

int FindFrameByName(const char *name) {
    for (size_t n = 0; n < FrameStack.size(); n++)
        if (ustrcmp(FrameStack[n]->Name.c_str(), name) == 0) return int(n);
    return -1;
}

void AssignCurFrame(int index) { CurFrame = FrameStackGet(index); }

void ResetTopFrame() { CurFrame = FrameStack.empty() ? nullptr : FrameStack.back().get(); }

int GetTopFrameStack() { return FrameStackCount() - 1; }

int GetFrameStackPosition(const Frame_s *frame) {
    for (size_t n = 0; n < FrameStack.size(); n++)
        if (FrameStack[n].get() == frame) return int(n);
    ErrMsg("Internal Error: Cannot get frame handle on frame stack");
    return -1;
}

void DoPopping(int index) {
    int top = GetTopFrameStack();
    if (index < 0 || index >= top) return;
    std::rotate(FrameStack.begin() + index, FrameStack.begin() + index + 1, FrameStack.end());
    ResetTopFrame();
    SetFrameOrderOutOfDateOnScreen();
    StateChanged(StateChange_NewTopFrame, nullptr);
}

void DoPushing(int index) {
    if (index <= 0 || index >= FrameStackCount()) return;
    std::rotate(FrameStack.begin(), FrameStack.begin() + index, FrameStack.begin() + index + 1);
    ResetTopFrame();
    SetFrameOrderOutOfDateOnScreen();
    StateChanged(StateChange_NewTopFrame, nullptr);
}

void DoLightweightFramePush() {
    if (FrameStack.size() < 2) return;
    std::rotate(FrameStack.begin(), FrameStack.end() - 1, FrameStack.end());
    ResetTopFrame();
}

void DoLightweightFramePop() {
    if (FrameStack.size() < 2) return;
    std::rotate(FrameStack.begin(), FrameStack.begin() + 1, FrameStack.end());
    ResetTopFrame();
}

namespace {

// Makes each chosen frame current in turn, bottom to top, and restores the current frame.
bool forFrames(bool (*visit)(void *clientData), void *clientData, const DataSet_s *like, bool withDataSet,
               const Frame_s *except) {
    Frame_s *saved = CurFrame;
    std::vector<Frame_s *> frames;
    for (auto &frame : FrameStack)
        if ((like == nullptr || frame->DataSet == like) && (!withDataSet || frame->DataSet != nullptr) &&
            frame.get() != except)
            frames.push_back(frame.get());
    bool ok = true;
    for (Frame_s *frame : frames) {
        CurFrame = frame;
        if (!visit(clientData)) {
            ok = false;
            break;
        }
    }
    CurFrame = saved;
    return ok;
}

}  // namespace

bool DoForAllFramesInPage(bool (*visit)(void *), void *clientData) {
    return forFrames(visit, clientData, nullptr, false, nullptr);
}
bool DoForAllFramesInAllPages(bool (*visit)(void *), void *clientData) { return DoForAllFramesInPage(visit, clientData); }
bool DoForAllFramesWithDataSetInPage(bool (*visit)(void *), void *clientData) {
    return forFrames(visit, clientData, nullptr, true, nullptr);
}
bool DoForAllFramesWithDataSetInAllPages(bool (*visit)(void *), void *clientData) {
    return DoForAllFramesWithDataSetInPage(visit, clientData);
}
bool DoForAllLikeFramesInPage(const Frame_s *frame, bool (*visit)(void *), void *clientData) {
    return frame->DataSet != nullptr && forFrames(visit, clientData, frame->DataSet, true, nullptr);
}
bool DoForAllLikeFramesInAllPages(const Frame_s *frame, bool (*visit)(void *), void *clientData) {
    return DoForAllLikeFramesInPage(frame, visit, clientData);
}
bool DoForAllLikeFramesExceptSelfInPage(const Frame_s *frame, bool (*visit)(void *), void *clientData) {
    return frame->DataSet != nullptr && forFrames(visit, clientData, frame->DataSet, true, frame);
}
bool DoForAllLikeFramesExceptSelfInAllPages(const Frame_s *frame, bool (*visit)(void *), void *clientData) {
    return DoForAllLikeFramesExceptSelfInPage(frame, visit, clientData);
}

bool DeleteTopFrame() {
    if (FrameStack.empty()) return false;
    Frame_s *top = FrameStack.back().get();
    VDI_ReleaseAndDeallocDisplayListArray(top->DisplayLists, 3);
    DetachDataSetFromFrame(top);
    FrameStack.pop_back();
    ResetTopFrame();
    MarkWorkAreaForScreenUpdate();
    StateChanged(StateChange_FrameDeleted, nullptr);
    // The page always has a frame.
    if (FrameStack.empty()) return CreateNewFrame(nullptr);
    return true;
}

bool Action_FrameControl(FrameAction_e action, int number, const char *name, double x, double y) {
    const char *given = name != nullptr ? name : "";
    auto byName = [&](const char *message, int *index) {
        *index = FindFrameByName(given);
        if (*index < 0) ErrMsg(message, given);
        return *index >= 0;
    };
    // Frame numbers in macros are stack positions from the bottom, from 1.
    auto byNumber = [&](const char *message, int *index) {
        *index = number - 1;
        bool ok = *index >= 0 && *index < FrameStackCount();
        if (!ok) ErrMsg(message, number);
        return ok;
    };
    const char *popNumber = "Attempted to pop a frame by an invalid frame number.\nFrame number used: %d.";
    const char *pushNumber = "Attempted to push a frame by an invalid frame number.\nFrame number used: %d.";
    const char *popName = "Attempted to pop a frame by an invalid frame name.\nFrame name used: \"%s\".";
    const char *pushName = "Attempted to push a frame by an invalid frame name.\nFrame name used: \"%s\".";
    // The frame a numbered or named action works on, checked before anything is logged or done.
    int index = -1;
    bool found = true;
    if (action == FrameAction_Pop) found = byNumber(popNumber, &index);
    else if (action == FrameAction_Push) found = byNumber(pushNumber, &index);
    else if (action == FrameAction_PopByName) found = byName(popName, &index);
    else if (action == FrameAction_PushByName) found = byName(pushName, &index);
    if (!found) return false;
    LogAction("FRAMECONTROL");
    switch (action) {
    case FrameAction_PushTop: DoPushing(GetTopFrameStack()); return true;
    case FrameAction_Pop:
    case FrameAction_PopByName: DoPopping(index); return true;
    case FrameAction_Push:
    case FrameAction_PushByName: DoPushing(index); return true;
    case FrameAction_PopAtPosition:
        // The highest frame that holds the point, edges included.
        for (int n = GetTopFrameStack(); n >= 0; n--) {
            const Rect_s &r = FrameStack[size_t(n)]->Style.FrameLayout.Rect;
            if (x >= r.X1 && x <= r.X2 && y >= r.Y2 && y <= r.Y1) {
                DoPopping(n);
                return true;
            }
        }
        return true;
    case FrameAction_DeleteTop: return DeleteTopFrame();
    case FrameAction_FitAllToPaper: return FitAllFramesInPaper();
    }
    return false;
}

bool GetBoundingBoxOfAllFrames(Rect_s *box) {
    *box = Rect_s{1e150, -1e150, -1e150, 1e150};
    for (const auto &frame : FrameStack) {
        const Rect_s &r = frame->Style.FrameLayout.Rect;
        *box = {std::min(box->X1, r.X1), std::max(box->Y1, r.Y1), std::max(box->X2, r.X2), std::min(box->Y2, r.Y2)};
    }
    return !FrameStack.empty();
}

bool FitAllFramesInPaper() {
    if (FrameStack.empty()) return true;
    double width, height, left, right, bottom, top;
    GetPaperSpecs(GeneralBase.Paper, &width, &height, &left, &right, &bottom, &top);
    // The hard clip rectangle of the sheet, and the box around all frames (Y grows downward).
    Rect_s outer{left, height - bottom, width - right, top};
    Rect_s inner;
    GetBoundingBoxOfAllFrames(&inner);
    double outerW = outer.X2 - outer.X1, outerH = outer.Y1 - outer.Y2, innerW = inner.X2 - inner.X1,
           innerH = inner.Y1 - inner.Y2;
    if (outerW <= 0 || outerH <= 0 || innerW <= 0 || innerH <= 0) return false;
    // The largest rectangle of the frames' aspect centred in the sheet.
    Rect_s fit = outer;
    if (outerH / outerW > innerH / innerW) {
        double cut = (outerH - outerW / innerW * innerH) / 2;
        fit.Y2 += cut;
        fit.Y1 -= cut;
    } else {
        double cut = (outerW - outerH / innerH * innerW) / 2;
        fit.X1 += cut;
        fit.X2 -= cut;
    }
    double scale = (fit.X2 - fit.X1) / innerW;
    for (auto &frame : FrameStack) {
        Rect_s &r = frame->Style.FrameLayout.Rect;
        r = {(r.X1 - inner.X1) * scale + fit.X1, (r.Y1 - inner.Y2) * scale + fit.Y2, (r.X2 - inner.X1) * scale + fit.X1,
             (r.Y2 - inner.Y2) * scale + fit.Y2};
    }
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_FRAMELAYOUT);
    StateChanged(StateChange_Style, nullptr);
    return true;
}

void DeleteAllFrames() {
    for (auto &frame : FrameStack) {
        VDI_ReleaseAndDeallocDisplayListArray(frame->DisplayLists, 3);
        DetachDataSetFromFrame(frame.get());
        FrameZoneListDealloc(&frame->ZoneList);
    }
    FrameStack.clear();
    CurFrame = nullptr;
    framesMade = 0;
}

int FrameStackCount() { return static_cast<int>(FrameStack.size()); }

Frame_s *FrameStackGet(int position) {
    return position >= 0 && position < FrameStackCount() ? FrameStack[size_t(position)].get() : nullptr;
}

int DataSetReferenceCount(const DataSet_s *dataSet) {
    return static_cast<int>(std::count_if(FrameStack.begin(), FrameStack.end(),
                                          [dataSet](const auto &frame) { return frame->DataSet == dataSet; }));
}

Frame_s::~Frame_s() {
    AuxDataDealloc(&AuxData);
    DeallocSet(&ActiveRelevantZones);
    FieldMapsClear(this);
    LineMapsClear(this);
}

bool AttachDataSetToCurFrame(DataSet_s *dataSet) {
    if (CurFrame == nullptr) return false;
    if (CurFrame->DataSet == dataSet) return true;
    DetachDataSetFromFrame(CurFrame);
    CurFrame->DataSet = dataSet;
    CurFrame->ZoneList = FrameZoneListAlloc();
    FieldMapsClear(CurFrame);
    LineMapsClear(CurFrame);
    if (dataSet == nullptr) return true;
    return FrameStyleSynchronizeWithDataSet(CurFrame, CurFrame->PlotType, true);
}

bool AttachDataSetFromOtherFrame(Frame_s *other) {
    if (CurFrame == nullptr) return false;
    if (CurFrame->DataSet != nullptr) {
        ErrMsg("Cannot attach new DataSet to frame that already has data attached");
        return false;
    }
    if (other == nullptr || other->DataSet == nullptr) {
        ErrMsg("Frame to attach data from is not attached to a DataSet");
        return false;
    }
    LogAction("ATTACHDATASET");
    if (!AttachDataSetToCurFrame(other->DataSet)) return false;
    StateChanged(StateChange_DataSetReset, nullptr);
    return true;
}

bool Action_AttachDataSet(int frameNumber) {
    Frame_s *other = FrameStackGet(frameNumber - 1);
    if (other == nullptr || other == CurFrame) {
        ErrMsg("Invalid reference to a frame number in ATTACHDATASETTOFRAME command");
        return false;
    }
    return AttachDataSetFromOtherFrame(other);
}

PlotType_e DetermineBestPlotTypeForDataSet(const DataSet_s *dataSet) {
    if (dataSet == nullptr || IsEmpty(dataSet->EnabledZones)) return PlotType_Sketch;
    bool surface = false;
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, EntIndex_t(z));
        if (spec->Type == ZoneType_FETetra || spec->Type == ZoneType_FEBrick ||
            (spec->Type == ZoneType_Ordered && spec->NumPtsI > 1 && spec->NumPtsJ > 1 && spec->NumPtsK > 1))
            return PlotType_Cartesian3D;
        if (spec->Type != ZoneType_Ordered ||
            (spec->NumPtsI > 1) + (spec->NumPtsJ > 1) + (spec->NumPtsK > 1) >= 2)
            surface = true;
    }
    return surface ? PlotType_Cartesian2D : PlotType_XYLine;
}

namespace {

// Data caches of a frame that a new or changed data set makes stale.
void resetFrameDataFlags(Frame_s *frame) {
    FrameZoneListDealloc(&frame->ZoneList);
    frame->ZoneList = FrameZoneListAlloc();
    DeallocSet(&frame->ActiveRelevantZones);
    frame->TimeSteps.clear();
    frame->AnimStartFollowsData = frame->AnimEndFollowsData = true;
}

void refreshFrameTime(Frame_s *frame) {
    UpdateGlobalTimeScratchFlags(frame);
    UpdateFrameFlagsOnSolutionTimeChange(frame);
}

}  // namespace

bool AttachDataSetToCurFrame(DataSet_s **dataSet, ReadDataOption_e option, bool assignStrandIDs,
                             bool addZonesToExistingStrands, bool resetStyle, PlotType_e initialPlotType,
                             bool initialPlotFirstZoneOnly) {
    if (CurFrame == nullptr || dataSet == nullptr || *dataSet == nullptr) return false;
    DataSet_s *incoming = *dataSet;
    DataSet_s *present = CurFrame->DataSet;
    if (!resetStyle && present != nullptr && option != ReadDataOption_Append && AnyActiveStrands(CurFrame)) {
        ErrMsg("Orvanex cannot load data and retain plot style if the current style has strands.");
        return false;
    }
    // The incoming zones get their strands with the incoming data's own tolerance.
    if (!AssignStrandIDs(incoming, assignStrandIDs)) {
        ErrMsg("Out of memory while assigning strands.");
        return false;
    }
    if (option == ReadDataOption_Append && present != nullptr) {
        EntIndex_t firstNew = present->NumZones;
        if (!ConcatDataSets(present, incoming, addZonesToExistingStrands, true)) return false;
        DeallocDataSet(dataSet);
        for (EntIndex_t z = firstNew; z < present->NumZones; z++)
            if (IsZoneEnabled(present, z) && GetZoneSpec(present, z)->StrandID >= 0)
                MarkStrandInfoAsInvalid(present, GetZoneSpec(present, z)->StrandID);
        for (auto &frame : FrameStack) {
            if (frame->DataSet != present) continue;
            int mapsBefore = NumFieldMaps(frame.get());
            if (!FrameStyleSynchronizeWithDataSet(frame.get(), frame->PlotType, false)) return false;
            // Maps made for the appended zones are shown in a field plot.
            if (frame->PlotType == PlotType_Cartesian2D || frame->PlotType == PlotType_Cartesian3D)
                for (int m = mapsBefore; m < NumFieldMaps(frame.get()); m++) FieldMapActivate(frame.get(), m);
            refreshFrameTime(frame.get());
        }
        StateChangeInfo_s info;
        StateChanged(StateChange_ZonesAdded, &info);
        return true;
    }
    PlotType_e plotType = CurFrame->PlotType;
    if (IsEmpty(incoming->EnabledZones))
        plotType = PlotType_Sketch;
    else if (resetStyle || present == nullptr)
        plotType = initialPlotType == PlotType_Automatic ? DetermineBestPlotTypeForDataSet(incoming) : initialPlotType;
    // New: this frame only. Replace: every frame that held the old data set.
    std::vector<Frame_s *> takers{CurFrame};
    if (option == ReadDataOption_Replace && present != nullptr)
        for (auto &frame : FrameStack)
            if (frame.get() != CurFrame && frame->DataSet == present) takers.push_back(frame.get());
    // From here the frames own the incoming data set, and the old one goes once none holds it,
    // also when a frame's style fails to follow (which only a lack of memory can cause).
    for (Frame_s *frame : takers) {
        frame->DataSet = incoming;
        resetFrameDataFlags(frame);
        frame->InitialPlotFirstZoneOnly = initialPlotFirstZoneOnly;
    }
    *dataSet = nullptr;
    bool hadData = present != nullptr;
    if (present != nullptr && DataSetReferenceCount(present) == 0) DeallocDataSet(&present);
    bool keptStyleLacks = false;
    for (Frame_s *frame : takers) {
        bool reset = resetStyle || !hadData;
        int mapsBefore = NumFieldMaps(frame), lineMapsBefore = NumLineMaps(frame);
        PlotType_e type = frame == CurFrame ? plotType : frame->PlotType;
        if (!FrameStyleSynchronizeWithDataSet(frame, type, reset)) return false;
        if (!reset && (NumFieldMaps(frame) < mapsBefore || NumLineMaps(frame) < lineMapsBefore)) keptStyleLacks = true;
    }
    if (keptStyleLacks) Warning("Old style references attributes not available in the new data set.  The style may be adjusted.");
    for (Frame_s *frame : takers) {
        double min, max;
        GetSolutionTimeMinMaxForAllStrands(frame, &min, &max);
        if (resetStyle || frame->SolutionTime < min || frame->SolutionTime > max) frame->SolutionTime = min;
        refreshFrameTime(frame);
    }
    SetNewPlotType(plotType, resetStyle, false);
    for (Frame_s *frame : takers) {
        frame->ViewNeedsReset = frame->ViewNeedsReset || resetStyle || !hadData;
        MarkEntireFrameForScreenUpdate(frame);
    }
    StateChanged(StateChange_DataSetReset, nullptr);
    return true;
}

FrameZoneList_s *GetFrameZoneList(Frame_s *frame) {
    if (frame->DataSet == nullptr) return nullptr;
    if (frame->ZoneList == nullptr) frame->ZoneList = FrameZoneListAlloc();
    FrameZoneListEnsureSize(frame->ZoneList, frame->DataSet->NumZones, frame->DataSet->NumVars);
    return frame->ZoneList;
}

void DetachDataSetFromFrame(Frame_s *frame) {
    DataSet_s *dataSet = frame->DataSet;
    if (dataSet == nullptr) return;
    frame->DataSet = nullptr;
    FrameZoneListDealloc(&frame->ZoneList);
    if (DataSetReferenceCount(dataSet) == 0) DeallocDataSet(&dataSet);
}

bool SetNewPlotType(PlotType_e requested, bool resetStyle, bool checkLinks) {
    static bool reverting = false;  // going back after a failure must not fail again
    Frame_s *frame = CurFrame;
    if (frame == nullptr || requested == PlotType_Automatic) return false;
    PlotType_e old = frame->PlotType;
    bool changed = requested != old;
    frame->PlotType = requested;
    if (!FrameStyleSynchronizeWithDataSet(frame, requested, false)) {
        if (!reverting) {
            ErrMsg("Unable to perform the requested action.");
            reverting = true;
            SetNewPlotType(old, false, false);
            reverting = false;
        }
        return false;
    }
    // A field plot made from a frame whose maps were never shown shows them all.
    bool field = requested == PlotType_Cartesian2D || requested == PlotType_Cartesian3D;
    if (field && frame->ActiveFieldMaps == nullptr) {
        int last = frame->InitialPlotFirstZoneOnly ? 0 : NumFieldMaps(frame) - 1;
        for (int m = 0; m <= last && m < NumFieldMaps(frame); m++) FieldMapActivate(frame, m);
        if (frame->ActiveFieldMaps == nullptr) frame->ActiveFieldMaps = AllocSet(false);
    }
    if (changed) {
        frame->ViewNeedsReset = true;
        MarkEntireFrameForScreenUpdate(frame);
        StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_PLOTTYPE);
        StateChanged(StateChange_Style, nullptr);
    }
    (void)resetStyle;
    (void)checkLinks;
    return true;
}

bool ChangeCurFramePlotType(PlotType_e requested, std::string *error) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr) {
        *error = "There is no current frame.";
        return false;
    }
    if (requested == PlotType_Automatic)
        requested = frame->DataSet != nullptr ? DetermineBestPlotTypeForDataSet(frame->DataSet) : PlotType_Sketch;
    if (requested != PlotType_Sketch && frame->DataSet == nullptr) {
        // A frame without data borrows the data set of the nearest frame below it.
        int position = GetFrameStackPosition(frame);
        Frame_s *below = nullptr;
        for (int n = position - 1; n >= 0 && below == nullptr; n--)
            if (FrameStackGet(n)->DataSet != nullptr) below = FrameStackGet(n);
        if (below == nullptr) {
            *error = "Cannot switch dataless frame to non-sketch plot type.";
            return false;
        }
        if (!AttachDataSetToCurFrame(below->DataSet)) {
            *error = "Cannot attach data set to current frame.";
            return false;
        }
    }
    if (requested != PlotType_Sketch && IsEmpty(frame->DataSet->EnabledZones)) {
        *error = "Cannot assign to non-sketch plot type.  Current data set has no zones and is in an unstable state.";
        return false;
    }
    if (!SetNewPlotType(requested, false, true)) {
        *error = "Unable to perform the requested action.";
        return false;
    }
    return true;
}

void GetPaperSpecs(const Paper_s &paper, double *width, double *height, double *left, double *right, double *bottom,
                   double *top) {
    int slot = PaperSizeInfoSlot(paper.PaperSize);
    const PaperSizeInfo_s &info = paper.PaperSizeInfo[size_t(slot < 0 ? 0 : slot)];
    if (paper.OrientPortrait) {
        *width = info.Width;
        *height = info.Height;
        *left = info.LeftHardClipOffset;
        *right = info.RightHardClipOffset;
        *bottom = info.BottomHardClipOffset;
        *top = info.TopHardClipOffset;
    } else {
        // The sheet turned a quarter: the bottom margin comes to the left, the top to the right,
        // the right to the bottom and the left to the top.
        *width = info.Height;
        *height = info.Width;
        *left = info.BottomHardClipOffset;
        *right = info.TopHardClipOffset;
        *bottom = info.RightHardClipOffset;
        *top = info.LeftHardClipOffset;
    }
}

namespace {
Rect_s PaperViewStack[8];
}

void PushPaperView(const Rect_s &rect, bool resetAll) {
    for (int n = 7; n > 0; n--) PaperViewStack[n] = resetAll ? rect : PaperViewStack[n - 1];
    PaperViewStack[0] = rect;
    GeneralBase.Paper.RegionInWorkArea = rect;
}

void PopPaperView() {
    for (int n = 0; n < 7; n++) PaperViewStack[n] = PaperViewStack[n + 1];
    GeneralBase.Paper.RegionInWorkArea = PaperViewStack[0];
}

void FitPaperInWorkArea(bool resetAll) {
    double width, height, left, right, bottom, top;
    GetPaperSpecs(GeneralBase.Paper, &width, &height, &left, &right, &bottom, &top);
    PushPaperView(Rect_s{-0.05, -0.05, width + 0.05, height + 0.05}, resetAll);
}

namespace {

// A frame's style from a template, keeping what makes the frame itself.
void restyleFrame(Frame_s *frame, const FrameStyle_s &from, bool keepLayout, bool keepPlotType) {
    FrameLayout_s layout = frame->Style.FrameLayout;
    frame->Style = from;
    if (keepLayout) {
        FrameLayout_s &now = frame->Style.FrameLayout;
        now.HeaderFont = layout.HeaderFont;
        now.BorderThickness = layout.BorderThickness;
        now.ShowBorder = layout.ShowBorder;
        now.ShowHeader = layout.ShowHeader;
    }
    frame->Style.FrameLayout.Rect = layout.Rect;
    if (!keepPlotType) frame->PlotType = PlotType_Sketch;
    FieldMapsClear(frame);
    LineMapsClear(frame);
    frame->ViewNeedsReset = true;
    if (frame->DataSet != nullptr) FrameStyleSynchronizeWithDataSet(frame, frame->PlotType, true);
    MarkEntireFrameForScreenUpdate(frame);
}

}  // namespace

void ResetFrameStylePreserveFrameLayoutAndPlotType(Frame_s *frame) {
    restyleFrame(frame, GetFrameTemplate(FrameStyleBase == StyleBase_Factory), true, true);
}

void SetFrameAttributesToDefaults(Frame_s *frame, StyleBase_e base) {
    restyleFrame(frame, GetFrameTemplate(base == StyleBase_Factory), false, false);
}

bool Action_SetFrameBackgroundColor(int color) {
    if (CurFrame == nullptr) {
        ErrMsg("There is no current frame.");
        return false;
    }
    LogAction("SETFRAMEBACKGROUNDCOLOR");
    int old = CurFrame->Style.FrameLayout.BackgroundColor;
    if (old == color) return true;
    auto trade = [old, color](int32_t *value) {
        if (*value == old) *value = color;
        else if (*value == color) *value = old;
    };
    SwapFrameStyleColors(&CurFrame->Style, old, color);  // the background itself goes from old to new
    SwapFieldMapStyleColors(&CurFrame->Style.FieldMap, old, color);
    SwapLineMapStyleColors(&CurFrame->Style.LineMap, old, color);
    for (auto &map : CurFrame->FieldAttributes) SwapFieldMapStyleColors(&map->Style, old, color);
    for (auto &map : CurFrame->LineMapAttributes) SwapLineMapStyleColors(&map->Style, old, color);
    for (Text_s &text : CurFrame->Texts) {
        trade(&text.Color);
        trade(&text.BoxOutlineColor);
        trade(&text.BoxFillColor);
    }
    for (Geom_s &geom : CurFrame->Geoms) {
        trade(&geom.Color);
        trade(&geom.FillColor);
    }
    for (int *value : {&CurFrame->Style.BaseText.Color, &CurFrame->Style.BaseText.BoxColor,
                       &CurFrame->Style.BaseText.BoxFillColor, &CurFrame->Style.BaseGeom.Color,
                       &CurFrame->Style.BaseGeom.FillColor, &GeneralBase.DefaultText.Color, &GeneralBase.DefaultText.BoxColor,
                       &GeneralBase.DefaultText.BoxFillColor, &GeneralBase.DefaultGeom.Color,
                       &GeneralBase.DefaultGeom.FillColor})
        trade(value);
    MarkEntireFrameForScreenUpdate(CurFrame);
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_FRAMELAYOUT);
    StateChangeSupplementalInfoSetStyleParam(1, MacroSetValue_BACKGROUNDCOLOR);
    StateChanged(StateChange_Style);
    return true;
}
