// Field maps of a frame. The zone-to-map records are kept per zone in the frame; a strand map
// finds its zones through the strand table so that zones added to a strand join it at once.
// Relies on: dataset and strand (zones, strands), solntime (relevant zones at a time), linemap
// (the line-map half of synchronising a frame with its data set).
#include "base/plot/fieldmap.h"

#include <memory>

#include "base/data/dataset.h"
#include "base/data/strand.h"
#include "base/kernel/set.h"
#include "base/plot/frame.h"
#include "base/plot/linemap.h"
#include "base/plot/solntime.h"

FieldAttributes_s::~FieldAttributes_s() { DeallocSet(&Zones); }

namespace {

struct SetDeleter {
    void operator()(Set_a *set) const { DeallocSet(&set); }
};
using SetPtr = std::unique_ptr<Set_a, SetDeleter>;

bool isStrand(int32_t strand) { return strand >= 0 && strand <= MaxStrandID; }

FieldAttributes_s *mapOf(const Frame_s *frame, int map) {
    return IsValidFieldMap(frame, map) ? frame->FieldAttributes[size_t(map)].get() : nullptr;
}

void dropActiveZoneCache(Frame_s *frame) { DeallocSet(&frame->ActiveFieldZones); }

bool isFieldPlot(PlotType_e type) { return type == PlotType_Cartesian2D || type == PlotType_Cartesian3D; }

// The zones of a map where they are kept: the map's own set, or its strand's members. Read in
// place, so that walking many maps copies nothing.
const Set_a *mapZoneSource(const Frame_s *frame, int map) {
    const FieldAttributes_s *attributes = mapOf(frame, map);
    if (attributes == nullptr) return nullptr;
    if (attributes->MapsZones) return attributes->Zones;
    const StrandInfo_s *strand = frame->DataSet != nullptr ? GetStrandInfo(frame->DataSet, attributes->StrandID) : nullptr;
    return strand != nullptr ? strand->ZoneMembers : nullptr;
}

// The counts of the zone kinds a map holds.
void updateZoneStats(const Frame_s *frame, int map) {
    FieldAttributes_s *attributes = mapOf(frame, map);
    attributes->Stats = ZoneStats_s{};
    const Set_a *zones = mapZoneSource(frame, map);
    if (zones == nullptr) return;
    for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z)) {
        const ZoneSpec_s *spec = GetZoneSpec(frame->DataSet, EntIndex_t(z));
        ZoneStats_s &stats = attributes->Stats;
        if (spec->Type == ZoneType_Ordered) {
            stats.NumOrdered++;
            int dims = (spec->NumPtsI > 1) + (spec->NumPtsJ > 1) + (spec->NumPtsK > 1);
            if (dims == 3) stats.NumIJKOrdered++;
            if (dims == 3) stats.NumVolume++;
            else if (dims == 2) stats.NumSurface++;
            else stats.NumLinear++;
        } else {
            stats.NumFE++;
            if (spec->Type == ZoneType_FETetra || spec->Type == ZoneType_FEBrick) stats.NumVolume++;
            else if (spec->Type == ZoneType_FELineSeg) stats.NumLinear++;
            else stats.NumSurface++;
        }
    }
}

// The defaults a new map takes from its zones.
void applyZoneTypeDefaults(const Frame_s *frame, int map) {
    FieldAttributes_s *attributes = mapOf(frame, map);
    FieldMapStyle_s &style = attributes->Style;
    if (attributes->Stats.NumVolume > 0) {
        style.Surfaces.SurfacesToPlot = 1;  // EXPOSEDCELLFACES
        style.Points.PointsToPlot = 0;      // SURFACENODES
        return;
    }
    if (attributes->Stats.NumLinear > 0) style.EdgeLayer.Show = false;
    style.VolumeMode = FieldVolumeMode_s{false, false, false};
    if (attributes->Stats.NumOrdered == 0) return;
    // The first ordered surface zone decides which planes are its surface.
    SetPtr zones(GetFieldMapZones(frame, map));
    for (SetIndex_t z = zones ? GetNextMember(zones.get(), -1) : -1; z >= 0; z = GetNextMember(zones.get(), z)) {
        const ZoneSpec_s *spec = GetZoneSpec(frame->DataSet, EntIndex_t(z));
        if (spec->Type != ZoneType_Ordered) continue;
        bool i = spec->NumPtsI > 1, j = spec->NumPtsJ > 1, k = spec->NumPtsK > 1;
        if (i + j + k != 2) continue;
        style.Surfaces.SurfacesToPlot = i && j ? 4 : i && k ? 3 : 2;  // KPLANES, JPLANES, IPLANES
        break;
    }
}

// A new map at the end, from the frame's map template, coloured by its number.
int newFieldMap(Frame_s *frame, int32_t strand, EntIndex_t firstZone) {
    auto attributes = std::make_unique<FieldAttributes_s>();
    attributes->Style = frame->Style.FieldMap;
    attributes->StrandID = isStrand(strand) ? strand : FirstZoneListMapStrandID;
    attributes->MapsZones = !isStrand(strand);
    if (attributes->MapsZones) {
        attributes->Zones = AllocSet(false);
        if (attributes->Zones == nullptr) return -1;
    }
    int map = int(frame->FieldAttributes.size());
    int color = AutoColorSequence(map);
    const ZoneSpec_s *spec = GetZoneSpec(frame->DataSet, firstZone);
    if (spec->ZoneColor != -2) color = spec->ZoneColor;
    FieldMapStyle_s &style = attributes->Style;
    style.Mesh.Color = style.Contour.Color = style.Vector.Color = style.Scatter.Color = style.EdgeLayer.Color = color;
    style.Shade.Color = frame->Style.Linking.LinkLayerLineColor || spec->ZoneColor != -2 ? color : 7;
    frame->FieldAttributes.push_back(std::move(attributes));
    return map;
}

int strandMap(const Frame_s *frame, int32_t strand) {
    for (size_t m = 0; m < frame->FieldAttributes.size(); m++)
        if (!frame->FieldAttributes[m]->MapsZones && frame->FieldAttributes[m]->StrandID == strand) return int(m);
    return -1;
}

bool mapIsEmpty(const Frame_s *frame, int map) {
    const Set_a *zones = mapZoneSource(frame, map);
    if (zones == nullptr) return true;
    for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z))
        if (IsZoneEnabled(frame->DataSet, EntIndex_t(z))) return false;
    return true;
}

// Puts an enabled zone in the map its strand or its record says, making one if needed. The
// number of a map made is added to newMaps; the maps the zone left or joined to touched.
bool placeZone(Frame_s *frame, EntIndex_t zone, Set_a *newMaps, Set_a *touched = nullptr) {
    const ZoneSpec_s *spec = GetZoneSpec(frame->DataSet, zone);
    int current = GetFieldMapForZone(frame, zone);
    int map;
    if (isStrand(spec->StrandID)) {
        map = strandMap(frame, spec->StrandID);
        if (current >= 0 && current != map) FieldMapRemoveZone(frame, current, zone);
    } else {
        map = current >= 0 && mapOf(frame, current)->MapsZones ? current : -1;
    }
    if (map < 0) {
        map = newFieldMap(frame, spec->StrandID, zone);
        if (map < 0 || (newMaps != nullptr && !AddToSet(newMaps, map, false))) return false;
    }
    if (touched != nullptr && current != map &&
        (!AddToSet(touched, map, false) || (current >= 0 && !AddToSet(touched, current, false))))
        return false;
    return FieldMapAddZone(frame, map, zone);
}

}  // namespace

int NumFieldMaps(const Frame_s *frame) { return frame != nullptr ? int(frame->FieldAttributes.size()) : 0; }

bool IsValidFieldMap(const Frame_s *frame, int map) { return map >= 0 && map < NumFieldMaps(frame); }

int GetFieldMapForStrandID(const Frame_s *frame, int32_t strand) {
    return frame != nullptr && isStrand(strand) ? strandMap(frame, strand) : -1;
}

int GetFieldMapForZone(const Frame_s *frame, EntIndex_t zone) {
    return zone >= 0 && size_t(zone) < frame->ZoneFieldMaps.size() ? frame->ZoneFieldMaps[size_t(zone)] : -1;
}

void SetFieldMapForZone(Frame_s *frame, EntIndex_t zone, int map) {
    if (zone < 0) return;
    if (size_t(zone) >= frame->ZoneFieldMaps.size()) frame->ZoneFieldMaps.resize(size_t(zone) + 1, -1);
    frame->ZoneFieldMaps[size_t(zone)] = map;
}

Set_a *GetFieldMapZones(const Frame_s *frame, int map) {
    if (mapOf(frame, map) == nullptr) return nullptr;
    Set_a *zones = AllocSet(false);
    if (zones == nullptr) return nullptr;
    const Set_a *source = mapZoneSource(frame, map);
    if (source != nullptr && !CopySet(zones, source, false)) DeallocSet(&zones);
    return zones;
}

Set_a *GetFieldMapsForZones(const Frame_s *frame, const Set_a *zones) {
    Set_a *maps = AllocSet(false);
    for (SetIndex_t z = maps != nullptr ? GetNextMember(zones, -1) : -1; z >= 0; z = GetNextMember(zones, z)) {
        int map = GetFieldMapForZone(frame, EntIndex_t(z));
        if (map >= 0 && !AddToSet(maps, map, false)) DeallocSet(&maps);
    }
    return maps;
}

bool FieldMapAddZone(Frame_s *frame, int map, EntIndex_t zone) {
    FieldAttributes_s *attributes = mapOf(frame, map);
    if (attributes == nullptr) return false;
    if (attributes->MapsZones && !AddToSet(attributes->Zones, zone, false)) return false;
    SetFieldMapForZone(frame, zone, map);
    dropActiveZoneCache(frame);
    return true;
}

void FieldMapRemoveZone(Frame_s *frame, int map, EntIndex_t zone) {
    FieldAttributes_s *attributes = mapOf(frame, map);
    if (attributes == nullptr) return;
    if (attributes->MapsZones) RemoveFromSet(attributes->Zones, zone);
    if (GetFieldMapForZone(frame, zone) == map) SetFieldMapForZone(frame, zone, -1);
    dropActiveZoneCache(frame);
}

bool FieldMapActivate(Frame_s *frame, int map) {
    if (!IsValidFieldMap(frame, map)) return false;
    if (frame->ActiveFieldMaps == nullptr && (frame->ActiveFieldMaps = AllocSet(false)) == nullptr) return false;
    dropActiveZoneCache(frame);
    return AddToSet(frame->ActiveFieldMaps, map, false);
}

void FieldMapDeactivate(Frame_s *frame, int map) {
    if (frame->ActiveFieldMaps != nullptr) RemoveFromSet(frame->ActiveFieldMaps, map);
    dropActiveZoneCache(frame);
}

bool IsFieldMapActive(const Frame_s *frame, int map) {
    return frame->ActiveFieldMaps != nullptr && InSet(frame->ActiveFieldMaps, map);
}

void FieldMapDelete(Frame_s *frame, int map) {
    if (!IsValidFieldMap(frame, map)) return;
    frame->FieldAttributes.erase(frame->FieldAttributes.begin() + map);
    for (int32_t &zoneMap : frame->ZoneFieldMaps) {
        if (zoneMap == map) zoneMap = -1;
        else if (zoneMap > map) zoneMap--;
    }
    if (frame->ActiveFieldMaps != nullptr) DeleteSetMember(frame->ActiveFieldMaps, map);
    dropActiveZoneCache(frame);
}

bool SetActiveFieldMaps(Frame_s *frame, const Set_a *maps) {
    SetPtr shown(AllocSet(false));
    if (!shown) return false;
    for (SetIndex_t m = GetNextMember(maps, -1); m >= 0; m = GetNextMember(maps, m))
        if (IsValidFieldMap(frame, int(m)) && !AddToSet(shown.get(), m, false)) return false;
    DeallocSet(&frame->ActiveFieldMaps);
    frame->ActiveFieldMaps = shown.release();
    dropActiveZoneCache(frame);
    UpdateGlobalTimeScratchFlags(frame);
    UpdateFrameFlagsOnSolutionTimeChange(frame);
    return true;
}

const Set_a *GetActiveFieldZones(Frame_s *frame) {
    if (frame->ActiveFieldZones != nullptr) return frame->ActiveFieldZones;
    Set_a *zones = AllocSet(false);
    if (zones == nullptr) return nullptr;
    const Set_a *active = frame->ActiveFieldMaps;
    for (SetIndex_t m = active != nullptr ? GetNextMember(active, -1) : -1; m >= 0; m = GetNextMember(active, m)) {
        SetPtr mapZones(GetFieldMapZones(frame, int(m)));
        if (mapZones && !AppendSet(zones, mapZones.get(), false)) {
            DeallocSet(&zones);
            return nullptr;
        }
    }
    frame->ActiveFieldZones = zones;
    return zones;
}

Set_a *GetFieldMapRelevantZones(const Frame_s *frame, int map, double time) {
    const FieldAttributes_s *attributes = mapOf(frame, map);
    if (attributes == nullptr) return nullptr;
    if (attributes->MapsZones) return GetFieldMapZones(frame, map);
    return GetStrandRelevantZones(frame, attributes->StrandID, time);
}

EntIndex_t GetFieldMapCandidateZone(const Frame_s *frame, int map) {
    const FieldAttributes_s *attributes = mapOf(frame, map);
    if (attributes == nullptr) return -1;
    if (!attributes->MapsZones) return GetStrandCandidateZone(frame, attributes->StrandID);
    return attributes->Zones != nullptr ? EntIndex_t(GetNextMember(attributes->Zones, -1)) : -1;
}

bool FieldMapHasOrderedZones(const Frame_s *frame, int map) { return mapOf(frame, map) && mapOf(frame, map)->Stats.NumOrdered > 0; }
bool FieldMapHasIJKOrderedZones(const Frame_s *frame, int map) { return mapOf(frame, map) && mapOf(frame, map)->Stats.NumIJKOrdered > 0; }
bool FieldMapHasFEZones(const Frame_s *frame, int map) { return mapOf(frame, map) && mapOf(frame, map)->Stats.NumFE > 0; }
bool FieldMapHasVolumeZones(const Frame_s *frame, int map) { return mapOf(frame, map) && mapOf(frame, map)->Stats.NumVolume > 0; }
bool FieldMapHasSurfaceZones(const Frame_s *frame, int map) { return mapOf(frame, map) && mapOf(frame, map)->Stats.NumSurface > 0; }
bool FieldMapHasLinearZones(const Frame_s *frame, int map) { return mapOf(frame, map) && mapOf(frame, map)->Stats.NumLinear > 0; }

bool IncorporateZoneIntoFrameStyle(Frame_s *frame, EntIndex_t zone) {
    if (frame->DataSet == nullptr || !IsZoneEnabled(frame->DataSet, zone)) return true;
    // Zone numbers are slots: a new zone takes its own and moves no other.
    if (size_t(zone) >= frame->ZoneFieldMaps.size()) frame->ZoneFieldMaps.resize(size_t(zone) + 1, -1);
    SetPtr newMaps(AllocSet(false));
    if (!newMaps || !placeZone(frame, zone, newMaps.get())) return false;
    int map = GetFieldMapForZone(frame, zone);
    updateZoneStats(frame, map);
    if (InSet(newMaps.get(), map)) {
        applyZoneTypeDefaults(frame, map);
        if (isFieldPlot(frame->PlotType) && !FieldMapActivate(frame, map)) return false;
    }
    IncorporateZoneIntoLineMaps(frame, zone);
    dropActiveZoneCache(frame);
    return true;
}

void FrameStyleDeleteZone(Frame_s *frame, EntIndex_t zone) {
    int map = GetFieldMapForZone(frame, zone);
    if (map >= 0) {
        FieldMapRemoveZone(frame, map, zone);
        // A strand map still lists the zone in the strand table until the zone goes.
        SetPtr zones(GetFieldMapZones(frame, map));
        bool empty = !zones || IsEmpty(zones.get()) || (MemberCount(zones.get()) == 1 && InSet(zones.get(), zone));
        if (empty) {
            FieldMapDelete(frame, map);
            map = -1;
        }
    }
    if (size_t(zone) < frame->ZoneFieldMaps.size()) frame->ZoneFieldMaps.erase(frame->ZoneFieldMaps.begin() + zone);
    // Only sets that reach above the zone have members to move down.
    for (auto &attributes : frame->FieldAttributes)
        if (attributes->MapsZones && attributes->Zones->size > zone) DeleteSetMember(attributes->Zones, zone);
    if (map >= 0) updateZoneStats(frame, map);
    FrameStyleDeleteZoneFromLineMaps(frame, zone);
    dropActiveZoneCache(frame);
}

void FieldMapsClear(Frame_s *frame) {
    frame->FieldAttributes.clear();
    frame->ZoneFieldMaps.clear();
    DeallocSet(&frame->ActiveFieldMaps);
    dropActiveZoneCache(frame);
}

bool FrameStyleSynchronizeWithDataSet(Frame_s *frame, PlotType_e plotType, bool reset) {
    DataSet_s *dataSet = frame->DataSet;
    if (dataSet == nullptr) {
        FieldMapsClear(frame);
        LineMapsClear(frame);
        return true;
    }
    // 1. Zone records, one per zone of the data set.
    if (reset) FieldMapsClear(frame);
    frame->ZoneFieldMaps.resize(size_t(dataSet->NumZones), -1);
    // 2. A frame without maps starts at the data's first time.
    if (frame->FieldAttributes.empty()) {
        double min, max;
        GetSolutionTimeMinMaxForAllStrands(frame, &min, &max);
        SetFrameSolutionTime(frame, min);
    }
    // 3. Field maps: every enabled zone in its map; disabled zones out; empty maps go. Only the
    // maps a zone joined or left are looked at again, so that an append to a data set of many
    // maps costs what it adds, not what is there.
    SetPtr newMaps(AllocSet(false)), touched(AllocSet(false));
    if (!newMaps || !touched) return false;
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++) {
        if (IsZoneEnabled(dataSet, z)) {
            if (!placeZone(frame, z, newMaps.get(), touched.get())) return false;
        } else if (int map = GetFieldMapForZone(frame, z); map >= 0) {
            FieldMapRemoveZone(frame, map, z);
            if (!AddToSet(touched.get(), map, false)) return false;
        }
    }
    // A strand map may have lost zones to the strand table without a zone moving here.
    for (int m = 0; m < NumFieldMaps(frame); m++)
        if (!mapOf(frame, m)->MapsZones && !AddToSet(touched.get(), m, false)) return false;
    for (SetIndex_t m = GetPrevMember(touched.get(), -1); m >= 0; m = GetPrevMember(touched.get(), m))
        if (mapIsEmpty(frame, int(m))) {
            FieldMapDelete(frame, int(m));
            DeleteSetMember(newMaps.get(), m);
            DeleteSetMember(touched.get(), m);
        }
    for (SetIndex_t m = GetNextMember(touched.get(), -1); m >= 0; m = GetNextMember(touched.get(), m)) {
        updateZoneStats(frame, int(m));
        if (InSet(newMaps.get(), m)) applyZoneTypeDefaults(frame, int(m));
    }
    if (isFieldPlot(plotType) && reset) {
        int last = frame->InitialPlotFirstZoneOnly ? 0 : NumFieldMaps(frame) - 1;
        for (int m = 0; m <= last && m < NumFieldMaps(frame); m++)
            if (!FieldMapActivate(frame, m)) return false;
    }
    dropActiveZoneCache(frame);
    // 4. Line maps.
    if (plotType == PlotType_XYLine || plotType == PlotType_PolarLine) InitializeLineMapAttrValues(frame);
    if (plotType != PlotType_Sketch) RemoveInvalidLineMaps(frame);
    return true;
}
