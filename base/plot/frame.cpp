// The frame stack and the links between frames and data sets. It also gives the data layer its
// view of frames, through the data set hooks it installs when the first frame is made.
#include "base/plot/frame.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "base/data/datahooks.h"
#include "base/data/dataset.h"

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

void installDataSetHooks() {
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
    for (auto &frame : FrameStack) DetachDataSetFromFrame(frame.get());
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
    return true;
}

void DetachDataSetFromFrame(Frame_s *frame) {
    DataSet_s *dataSet = frame->DataSet;
    if (dataSet == nullptr) return;
    frame->DataSet = nullptr;
    if (DataSetReferenceCount(dataSet) == 0) DeallocDataSet(&dataSet);
}
