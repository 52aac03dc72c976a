// Field maps: groups of zones that share one field style. A strand map holds the zones of one
// time strand (found through the data set's strand table); a zone-list map keeps a set of its
// own. Each frame keeps its maps, which zone belongs to which map, and which maps are shown.
#pragma once

#include <cstdint>

#include "base/kernel/types.h"
#include "base/plot/framestyle.h"

struct Frame_s;
struct Set_a;
enum PlotType_e : int16_t;

// Strand numbers from this one up mark a map that keeps its own zone list.
constexpr int32_t FirstZoneListMapStrandID = 32700;

// What kinds of zone a map holds; the predicates below answer from it.
struct ZoneStats_s {
    int32_t NumOrdered = 0, NumIJKOrdered = 0, NumFE = 0, NumVolume = 0, NumSurface = 0, NumLinear = 0;
};

struct FieldAttributes_s {
    FieldMapStyle_s Style;  // GROUP and the layer records
    bool MapsZones = false;
    int32_t StrandID = FirstZoneListMapStrandID;
    Set_a *Zones = nullptr;  // the zone-list map's zones
    ZoneStats_s Stats;

    FieldAttributes_s() = default;
    FieldAttributes_s(const FieldAttributes_s &) = delete;
    FieldAttributes_s &operator=(const FieldAttributes_s &) = delete;
    ~FieldAttributes_s();
};

// RED, GREEN, BLUE, CYAN, YELLOW, PURPLE, then again: the colour of map n.
inline int AutoColorSequence(int mapNumber) { return mapNumber % 6 + 1; }

int NumFieldMaps(const Frame_s *frame);
bool IsValidFieldMap(const Frame_s *frame, int map);
// -1 for a zone without a map.
int GetFieldMapForZone(const Frame_s *frame, EntIndex_t zone);
// The map that stands for the strand, or -1 when no map of the frame holds that strand.
int GetFieldMapForStrandID(const Frame_s *frame, int32_t strand);
void SetFieldMapForZone(Frame_s *frame, EntIndex_t zone, int map);
// A new set of the map's zones (the caller frees it); null for no such map.
Set_a *GetFieldMapZones(const Frame_s *frame, int map);
// The maps that hold any of the zones (a new set).
Set_a *GetFieldMapsForZones(const Frame_s *frame, const Set_a *zones);
bool FieldMapAddZone(Frame_s *frame, int map, EntIndex_t zone);
void FieldMapRemoveZone(Frame_s *frame, int map, EntIndex_t zone);
bool FieldMapActivate(Frame_s *frame, int map);
void FieldMapDeactivate(Frame_s *frame, int map);
bool IsFieldMapActive(const Frame_s *frame, int map);
// Removes the map; higher maps move down one number, in the zone records and the active set.
void FieldMapDelete(Frame_s *frame, int map);
// Replaces the shown maps; members that name no map are dropped. The active-zone cache and the
// frame's time steps follow.
bool SetActiveFieldMaps(Frame_s *frame, const Set_a *maps);
// The zones of the active maps (cached until the active maps or the maps change).
const Set_a *GetActiveFieldZones(Frame_s *frame);
// The zones a map shows at a time: all of a zone-list map's zones, a strand map's relevant ones.
Set_a *GetFieldMapRelevantZones(const Frame_s *frame, int map, double time);
// The zone that stands for a map while it is styled.
EntIndex_t GetFieldMapCandidateZone(const Frame_s *frame, int map);

bool FieldMapHasOrderedZones(const Frame_s *frame, int map);
bool FieldMapHasIJKOrderedZones(const Frame_s *frame, int map);
bool FieldMapHasFEZones(const Frame_s *frame, int map);
bool FieldMapHasVolumeZones(const Frame_s *frame, int map);
bool FieldMapHasSurfaceZones(const Frame_s *frame, int map);
bool FieldMapHasLinearZones(const Frame_s *frame, int map);

// A zone was added to the frame's data set: it joins its strand's map or a new map of its own,
// shown when the frame is a field plot.
bool IncorporateZoneIntoFrameStyle(Frame_s *frame, EntIndex_t zone);
// A zone is about to be deleted from the frame's data set: it leaves its map (a map left empty
// goes) and higher zone numbers move down one.
void FrameStyleDeleteZone(Frame_s *frame, EntIndex_t zone);
// Brings the frame's zone records, field maps and line maps in line with its data set. With
// reset the maps start afresh (and are all shown for a field plot).
bool FrameStyleSynchronizeWithDataSet(Frame_s *frame, PlotType_e plotType, bool reset);
// Drops all field maps and zone records of a frame.
void FieldMapsClear(Frame_s *frame);
