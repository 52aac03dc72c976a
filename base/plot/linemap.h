// Line maps: each names a zone, a pair of variables and the style of one curve. A frame keeps
// them in order and a set of the shown ones.
#pragma once

#include <cstdint>

#include "base/kernel/types.h"
#include "base/plot/framestyle.h"

struct AuxData_s;
struct Frame_s;
struct Set_a;

struct LineMapAttributes_s {
    LineMapStyle_s Style;
    uint64_t UniqueID = 0;
    AuxData_s *AuxData = nullptr;  // the map's auxiliary data (owned), null until an item is set

    LineMapAttributes_s() = default;
    LineMapAttributes_s(const LineMapAttributes_s &) = delete;
    LineMapAttributes_s &operator=(const LineMapAttributes_s &) = delete;
    ~LineMapAttributes_s();
};

int NumLineMaps(const Frame_s *frame);
bool IsValidLineMap(const Frame_s *frame, int map);
// A new map at the end from the frame's map template; its number, or -1 ("No data set. Cannot
// create new line map." unless quiet).
int AddNewLineMap(Frame_s *frame, const char *name, bool quiet);
// Removes a map; higher maps move down one number, in the shown set too.
void DeleteLineMap(Frame_s *frame, int map);
// The style of one map onto another (the target keeps its unique ID).
void CopyLineMapAttributes(Frame_s *frame, int from, int to);
// Deletes, from the last to the first, the maps that name a zone or variable the data set lacks.
void RemoveInvalidLineMaps(Frame_s *frame);
// A line plot frame without maps gets one per enabled zone (first X, then Y variable), the first
// one shown.
bool InitializeLineMapAttrValues(Frame_s *frame);
// The zones the shown maps draw (a new set).
Set_a *GetZonesFromActiveLineMaps(const Frame_s *frame);
bool SetActiveLineMaps(Frame_s *frame, const Set_a *maps);
void LineMapsClear(Frame_s *frame);
// A zone added or deleted in the frame's data set: maps keep naming the same zones.
void IncorporateZoneIntoLineMaps(Frame_s *frame, EntIndex_t zone);
void FrameStyleDeleteZoneFromLineMaps(Frame_s *frame, EntIndex_t zone);
// A variable is about to be deleted: maps drawing it go, higher variable numbers move down one.
void FrameStyleDeleteVarFromLineMaps(Frame_s *frame, EntIndex_t var);

// The actions behind $!CREATELINEMAP, $!DELETELINEMAPS and $!DUPLICATELINEMAP (one-based map
// numbers as given in macros, converted by the caller).
bool Action_CreateLineMap();
bool Action_DeleteLineMaps(const Set_a *maps);
bool Action_DuplicateLineMap(int source, int destination);
// $!SHIFTLINEMAPSTOTOP / TOBOTTOM: the maps of the set (zero-based) move, in their order, before
// (or after) all the others; the active set follows the maps it named.
bool Action_ShiftLineMapsToTop(const Set_a *maps);
bool Action_ShiftLineMapsToBottom(const Set_a *maps);
