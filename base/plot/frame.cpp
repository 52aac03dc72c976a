// The frame stack and the links between frames and data sets. It also gives the data layer its
// view of frames, through the data set hooks it installs when the first frame is made.
#include "base/plot/frame.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "base/data/datahooks.h"
#include "base/data/dataset.h"
#include "base/data/derived.h"

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
