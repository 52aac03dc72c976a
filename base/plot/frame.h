// Frames on the page. Each frame refers to one data set, which several frames may share by
// reference count. This holds the frame stack, the current frame and the link to data sets; the
// rest of a frame (plot type, style, maps, views) joins as the plot pipeline is built.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/data/dataio.h"

struct DataSet_s;
struct FrameZoneList_s;

struct Frame_s {
    std::string Name;
    uint64_t UniqueID = 0;
    DataSet_s *DataSet = nullptr;
    FrameZoneList_s *ZoneList = nullptr;  // derived values of the data set's variables
    // Text and geometry records read with the data, kept as read until text and geometries
    // are drawn.
    std::vector<Text_s> Texts;
    std::vector<Geom_s> Geoms;
};

// The current frame; null before the first frame exists.
extern Frame_s *CurFrame;

// A new frame on top of the stack, named "Frame %03d", made current.
bool CreateNewFrame();
// Deletes every frame, releasing their data sets.
void DeleteAllFrames();
int FrameStackCount();
// Frames from the top of the stack (0) down.
Frame_s *FrameStackGet(int position);

// The current frame takes the data set (one more reference to it).
bool AttachDataSetToCurFrame(DataSet_s *dataSet);
// The frame lets go of its data set; the data set is freed with its last reference.
void DetachDataSetFromFrame(Frame_s *frame);
// The frame's derived-value list, sized for its data set (mainline only).
FrameZoneList_s *GetFrameZoneList(Frame_s *frame);
// Number of frames that hold the data set.
int DataSetReferenceCount(const DataSet_s *dataSet);
