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
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strutil.h"
#include "base/macro/vocabtables.h"
#include "base/macro/setvalue.h"
#include "base/plot/solntime.h"

Frame_s *CurFrame = nullptr;

namespace {

std::vector<std::unique_ptr<Frame_s>> FrameStack;  // top of the stack first
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

void invalidateDerivedVar(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListInvalidate(list, zone, var); });
}

bool incorporateZone(DataSet_s *dataSet, EntIndex_t zone) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListInvalidate(list, zone, -1); });
    return true;
}

void deleteZone(DataSet_s *dataSet, EntIndex_t zone) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListDeleteZone(list, zone); });
}

void deleteVar(DataSet_s *dataSet, EntIndex_t var) {
    forFramesOf(dataSet, [&](FrameZoneList_s *list) { FrameZoneListDeleteVar(list, var); });
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

bool CreateNewFrame(const Rect_s *rect) {
    if (rect != nullptr && !(rect->X1 >= -500 && rect->Y2 >= -500 && rect->X2 <= 500 && rect->Y1 <= 500 &&
                             rect->Y1 >= rect->Y2 && rect->X2 >= rect->X1 && rect->X2 - rect->X1 >= 0.1 &&
                             rect->Y1 - rect->Y2 >= 0.1)) {
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
    CurFrame = frame.get();
    FrameStack.insert(FrameStack.begin(), std::move(frame));
    framesMade++;
    StateChanged(StateChange_NewTopFrame, nullptr);
    return true;
}

int FindFrameByName(const char *name) {
    for (size_t n = 0; n < FrameStack.size(); n++)
        if (ustrcmp(FrameStack[n]->Name.c_str(), name) == 0) return int(n);
    return -1;
}

void DoPopping(int index) {
    if (index <= 0 || index >= FrameStackCount()) return;
    std::rotate(FrameStack.begin(), FrameStack.begin() + index, FrameStack.begin() + index + 1);
    CurFrame = FrameStack.front().get();
    StateChanged(StateChange_NewTopFrame, nullptr);
}

void DoPushing(int index) {
    if (index < 0 || index >= FrameStackCount() - 1) return;
    std::rotate(FrameStack.begin() + index, FrameStack.begin() + index + 1, FrameStack.end());
    CurFrame = FrameStack.front().get();
    StateChanged(StateChange_NewTopFrame, nullptr);
}

bool DeleteTopFrame() {
    if (FrameStack.empty()) return false;
    Frame_s *top = FrameStack.front().get();
    DetachDataSetFromFrame(top);
    FrameStack.erase(FrameStack.begin());
    CurFrame = FrameStack.empty() ? nullptr : FrameStack.front().get();
    StateChanged(StateChange_FrameDeleted, nullptr);
    // The page always has a frame.
    if (FrameStack.empty()) return CreateNewFrame(nullptr);
    return true;
}

bool Action_FrameControl(FrameAction_e action, int number, const char *name, double x, double y) {
    auto byName = [&](int *index) {
        *index = FindFrameByName(name != nullptr ? name : "");
        if (*index < 0) ErrMsg("No frame is named \"%s\".", name != nullptr ? name : "");
        return *index >= 0;
    };
    auto byNumber = [&](int *index) {
        *index = number - 1;
        if (*index < 0 || *index >= FrameStackCount()) ErrMsg("Invalid frame number: %d.", number);
        return *index >= 0 && *index < FrameStackCount();
    };
    int index = -1;
    switch (action) {
    case FrameAction_PushTop: DoPushing(0); return true;
    case FrameAction_Pop:
        if (!byNumber(&index)) return false;
        DoPopping(index);
        return true;
    case FrameAction_Push:
        if (!byNumber(&index)) return false;
        DoPushing(index);
        return true;
    case FrameAction_PopByName:
        if (!byName(&index)) return false;
        DoPopping(index);
        return true;
    case FrameAction_PushByName:
        if (!byName(&index)) return false;
        DoPushing(index);
        return true;
    case FrameAction_PopAtPosition:
        for (int n = 0; n < FrameStackCount(); n++) {
            const Rect_s &r = FrameStack[size_t(n)]->Style.FrameLayout.Rect;
            if (x >= r.X1 && x <= r.X2 && y >= r.Y2 && y <= r.Y1) {
                DoPopping(n);
                return true;
            }
        }
        ErrMsg("No frame lies at that position.");
        return false;
    case FrameAction_DeleteTop: return DeleteTopFrame();
    case FrameAction_FitAllToPaper: return FitAllFramesInPaper();
    }
    return false;
}

bool FitAllFramesInPaper() {
    if (FrameStack.empty()) return true;
    const Paper_s &paper = GeneralBase.Paper;
    int slot = PaperSizeInfoSlot(paper.PaperSize);
    if (slot < 0) return false;
    const PaperSizeInfo_s &info = paper.PaperSizeInfo[size_t(slot)];
    double width = paper.OrientPortrait ? info.Width : info.Height, height = paper.OrientPortrait ? info.Height : info.Width;
    // The hard clip rectangle of the sheet, and the box around all frames (Y grows downward).
    Rect_s outer{info.LeftHardClipOffset, height - info.BottomHardClipOffset, width - info.RightHardClipOffset,
                 info.TopHardClipOffset};
    Rect_s inner{1e150, -1e150, -1e150, 1e150};
    for (const auto &frame : FrameStack) {
        const Rect_s &r = frame->Style.FrameLayout.Rect;
        inner = {std::min(inner.X1, r.X1), std::max(inner.Y1, r.Y1), std::max(inner.X2, r.X2), std::min(inner.Y2, r.Y2)};
    }
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

bool AttachDataSetToCurFrame(DataSet_s *dataSet) {
    if (CurFrame == nullptr) return false;
    if (CurFrame->DataSet == dataSet) return true;
    DetachDataSetFromFrame(CurFrame);
    CurFrame->DataSet = dataSet;
    CurFrame->ZoneList = FrameZoneListAlloc();
    return true;
}

Frame_s::~Frame_s() { DeallocSet(&ActiveRelevantZones); }

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

// A frame's time starts at the data's first time.
void startFrameTime(Frame_s *frame) {
    double min, max;
    GetSolutionTimeMinMaxForAllStrands(frame, &min, &max);
    frame->TimeSteps.clear();
    frame->AnimStartFollowsData = frame->AnimEndFollowsData = true;
    frame->SolutionTime = min;
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
        for (int n = 0; n < FrameStackCount(); n++) {
            Frame_s *frame = FrameStackGet(n);
            if (frame->DataSet != present) continue;
            UpdateGlobalTimeScratchFlags(frame);
            UpdateFrameFlagsOnSolutionTimeChange(frame);
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
        for (int n = 0; n < FrameStackCount(); n++)
            if (FrameStackGet(n) != CurFrame && FrameStackGet(n)->DataSet == present) takers.push_back(FrameStackGet(n));
    for (Frame_s *frame : takers) {
        frame->DataSet = incoming;
        FrameZoneListDealloc(&frame->ZoneList);
        frame->ZoneList = FrameZoneListAlloc();
        frame->InitialPlotFirstZoneOnly = initialPlotFirstZoneOnly;
        startFrameTime(frame);
    }
    if (present != nullptr && DataSetReferenceCount(present) == 0) DeallocDataSet(&present);
    *dataSet = nullptr;
    CurFrame->PlotType = plotType;
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
