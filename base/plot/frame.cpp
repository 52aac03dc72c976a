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
#include "base/kernel/statechg.h"
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

bool CreateNewFrame() {
    installDataSetHooks();
    auto frame = std::make_unique<Frame_s>();
    char name[32];
    snprintf(name, sizeof(name), "Frame %03d", ++framesMade);
    frame->Name = name;
    frame->UniqueID = GetNextUniqueID();
    frame->Style = GetFrameTemplate(FrameStyleBase == StyleBase_Factory);
    CurFrame = frame.get();
    FrameStack.insert(FrameStack.begin(), std::move(frame));
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
