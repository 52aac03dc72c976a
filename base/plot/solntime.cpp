#include "base/plot/solntime.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/data/dataset.h"
#include "base/data/strand.h"
#include "base/kernel/statechg.h"
#include "base/macro/vocabtables.h"
#include "base/plot/fieldmap.h"
#include "base/plot/frame.h"
#include "base/plot/linemap.h"

namespace {

struct SetDeleter {
    void operator()(Set_a *set) const { DeallocSet(&set); }
};

int32_t strandSlots(const DataSet_s *dataSet) {
    return dataSet != nullptr && dataSet->StrandInfoList != nullptr ? int32_t(ArrayListGetCount(dataSet->StrandInfoList))
                                                                    : 0;
}

// Calls f(strand) for each strand of the frame's data set, the active ones only if asked.
template <typename F>
void forStrands(const Frame_s *frame, bool activeOnly, F f) {
    DataSet_s *dataSet = frame != nullptr ? frame->DataSet : nullptr;
    for (int32_t s = 0; s < strandSlots(dataSet); s++)
        if (GetStrandInfo(dataSet, s) != nullptr && (!activeOnly || IsActiveStrand(frame, s))) f(s);
}

bool minMaxOver(const Frame_s *frame, bool activeOnly, double *min, double *max) {
    *min = *max = 0.0;
    bool any = false;
    forStrands(frame, activeOnly, [&](int32_t s) {
        double strandMin, strandMax;
        GetStrandSolutionTimeMinMax(frame->DataSet, s, &strandMin, &strandMax);
        *min = any ? std::min(*min, strandMin) : strandMin;
        *max = any ? std::max(*max, strandMax) : strandMax;
        any = true;
    });
    return any;
}

bool usesFieldMaps(const Frame_s *frame) {
    return (frame->PlotType == PlotType_Cartesian2D || frame->PlotType == PlotType_Cartesian3D) &&
           !frame->FieldAttributes.empty();
}

bool usesLineMaps(const Frame_s *frame) {
    return frame->PlotType == PlotType_XYLine || frame->PlotType == PlotType_PolarLine;
}

EntIndex_t zoneAt(const StrandInfo_s *info, LgIndex_t n) { return ArrayListGetItem(info->ZonesByTime, n).EntIndex; }
double timeOf(const DataSet_s *dataSet, EntIndex_t zone) { return GetZoneSpec(dataSet, zone)->SolutionTime; }

// Sorted, with each value within the tolerance of a kept one dropped.
std::vector<double> collapseTimes(std::vector<double> times, double tolerance) {
    std::sort(times.begin(), times.end());
    std::vector<double> steps;
    for (double t : times)
        if (steps.empty() || !ValuesAreNearlyEqual(steps.back(), t, tolerance)) steps.push_back(t);
    return steps;
}

}  // namespace

bool IsActiveStrand(const Frame_s *frame, int32_t strand) {
    if (frame == nullptr || frame->DataSet == nullptr || GetStrandInfo(frame->DataSet, strand) == nullptr) return false;
    // A field plot shows the strands of its active field maps, a line plot those of the zones of
    // its active line maps; a frame without maps (a sketch) counts every strand.
    if (usesFieldMaps(frame)) {
        const Set_a *active = frame->ActiveFieldMaps;
        for (SetIndex_t m = active != nullptr ? GetNextMember(active, -1) : -1; m >= 0; m = GetNextMember(active, m))
            if (!frame->FieldAttributes[size_t(m)]->MapsZones && frame->FieldAttributes[size_t(m)]->StrandID == strand)
                return true;
        return false;
    }
    if (usesLineMaps(frame)) {
        std::unique_ptr<Set_a, SetDeleter> zones(GetZonesFromActiveLineMaps(frame));
        for (SetIndex_t z = zones ? GetNextMember(zones.get(), -1) : -1; z >= 0; z = GetNextMember(zones.get(), z))
            if (z < frame->DataSet->NumZones && GetZoneSpec(frame->DataSet, EntIndex_t(z))->StrandID == strand) return true;
        return false;
    }
    return true;
}

bool AnyActiveStrands(const Frame_s *frame) {
    bool any = false;
    forStrands(frame, true, [&](int32_t) { any = true; });
    return any;
}

bool CurFrameHasActiveStrands() { return AnyActiveStrands(CurFrame); }

Set_a *GetActiveStrands(const Frame_s *frame) {
    if (frame == nullptr || frame->DataSet == nullptr) return nullptr;
    Set_a *strands = AllocSet(false);
    forStrands(frame, true, [&](int32_t s) {
        if (strands != nullptr && !AddToSet(strands, s, false)) DeallocSet(&strands);
    });
    return strands;
}

bool GetSolutionTimeMinMax(const Frame_s *frame, double *min, double *max) { return minMaxOver(frame, true, min, max); }

bool GetSolutionTimeMinMaxForAllStrands(const Frame_s *frame, double *min, double *max) {
    return minMaxOver(frame, false, min, max);
}

double GetSolutionTimeTolerance(const Frame_s *frame) {
    double min, max;
    if (!GetSolutionTimeMinMax(frame, &min, &max)) GetSolutionTimeMinMaxForAllStrands(frame, &min, &max);
    return (max - min) * 1.0e-6;
}

Set_a *GetStrandRelevantZones(const Frame_s *frame, int32_t strand, double time) {
    if (frame == nullptr || frame->DataSet == nullptr) return nullptr;
    DataSet_s *dataSet = frame->DataSet;
    StrandInfo_s *info = GetStrandInfo(dataSet, strand);
    if (info == nullptr) return nullptr;
    double tolerance = GetSolutionTimeTolerance(frame);
    double min, max;
    GetStrandSolutionTimeMinMax(dataSet, strand, &min, &max);
    LgIndex_t count = info->ZonesByTime != nullptr ? ArrayListGetCount(info->ZonesByTime) : 0;
    if (count == 0 || time < min - tolerance || time > max + tolerance) return nullptr;
    // The latest zone at or before the time: the one before the first zone later than it.
    LgIndex_t after = 0;
    while (after < count && timeOf(dataSet, zoneAt(info, after)) <= time + tolerance) after++;
    if (after == 0) return nullptr;
    double latest = timeOf(dataSet, zoneAt(info, after - 1));
    Set_a *zones = AllocSet(false);
    for (LgIndex_t n = after - 1; zones != nullptr && n >= 0; n--) {
        double t = timeOf(dataSet, zoneAt(info, n));
        if (t < latest - tolerance) break;
        if (t <= latest + tolerance && !AddToSet(zones, zoneAt(info, n), false)) DeallocSet(&zones);
    }
    return zones;
}

bool GetStrandZonesAtFirstAndLastTimeSteps(const Frame_s *frame, int32_t strand, Set_a **first, Set_a **last) {
    *first = *last = nullptr;
    if (frame == nullptr || frame->DataSet == nullptr || GetStrandInfo(frame->DataSet, strand) == nullptr) return false;
    double min, max;
    GetStrandSolutionTimeMinMax(frame->DataSet, strand, &min, &max);
    *first = AllocSet(false);
    *last = AllocSet(false);
    if (*first == nullptr || *last == nullptr) {
        DeallocSet(first);
        DeallocSet(last);
        return false;
    }
    const Set_a *members = GetStrandInfo(frame->DataSet, strand)->ZoneMembers;
    for (SetIndex_t z = GetNextMember(members, -1); z >= 0; z = GetNextMember(members, z)) {
        double t = timeOf(frame->DataSet, EntIndex_t(z));
        if (t == min) AddToSet(*first, z, false);
        if (t == max) AddToSet(*last, z, false);
    }
    return true;
}

EntIndex_t GetStrandCandidateZone(const Frame_s *frame, int32_t strand) {
    if (frame == nullptr || frame->DataSet == nullptr) return -1;
    StrandInfo_s *info = GetStrandInfo(frame->DataSet, strand);
    if (info == nullptr) return -1;
    std::unique_ptr<Set_a, SetDeleter> relevant(GetStrandRelevantZones(frame, strand, frame->SolutionTime));
    if (relevant && !IsEmpty(relevant.get())) return EntIndex_t(GetNextMember(relevant.get(), -1));
    UpdateStrandInfoFlags(frame->DataSet, strand);
    LgIndex_t count = info->ZonesByTime != nullptr ? ArrayListGetCount(info->ZonesByTime) : 0;
    if (count == 0) return -1;
    double min, max;
    GetStrandSolutionTimeMinMax(frame->DataSet, strand, &min, &max);
    return frame->SolutionTime < min ? zoneAt(info, 0) : zoneAt(info, count - 1);
}

namespace {

// The union of the relevant zones of the maps in `maps` (all maps when null), skipping maps of
// their own zone lists if asked.
bool unionOfFieldMaps(const Frame_s *frame, const Set_a *maps, bool onlyStrandMaps, double time, Set_a *zones) {
    for (int m = 0; m < NumFieldMaps(frame); m++) {
        if (maps != nullptr && !InSet(maps, m)) continue;
        if (onlyStrandMaps && frame->FieldAttributes[size_t(m)]->MapsZones) continue;
        std::unique_ptr<Set_a, SetDeleter> relevant(GetFieldMapRelevantZones(frame, m, time));
        if (relevant && !AppendSet(zones, relevant.get(), false)) return false;
    }
    return true;
}

// Without field maps: the strands' relevant zones, and the static zones unless only strands.
bool unionOfStrands(const Frame_s *frame, bool onlyStrandMaps, double time, Set_a *zones) {
    const DataSet_s *dataSet = frame->DataSet;
    bool ok = true;
    forStrands(frame, true, [&](int32_t s) {
        std::unique_ptr<Set_a, SetDeleter> relevant(GetStrandRelevantZones(frame, s, time));
        if (ok && relevant) ok = AppendSet(zones, relevant.get(), false);
    });
    if (ok && !onlyStrandMaps)
        for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); ok && z >= 0;
             z = GetNextMember(dataSet->EnabledZones, z))
            if (GetZoneSpec(dataSet, EntIndex_t(z))->StrandID < 0) ok = AddToSet(zones, z, false);
    return ok;
}

}  // namespace

bool GetRelevantZones(const Frame_s *frame, bool onlyStrandMaps, double time, Set_a **zones) {
    *zones = nullptr;
    if (frame == nullptr || frame->DataSet == nullptr) return false;
    *zones = AllocSet(false);
    bool ok = *zones != nullptr && (frame->FieldAttributes.empty()
                                        ? unionOfStrands(frame, onlyStrandMaps, time, *zones)
                                        : unionOfFieldMaps(frame, nullptr, onlyStrandMaps, time, *zones));
    if (!ok) DeallocSet(zones);
    return ok;
}

const Set_a *GetActiveRelevantZones(Frame_s *frame) {
    if (frame->ActiveRelevantZones != nullptr || frame->DataSet == nullptr) return frame->ActiveRelevantZones;
    Set_a *zones = AllocSet(false);
    bool ok = zones != nullptr;
    if (ok && usesFieldMaps(frame)) {
        ok = frame->ActiveFieldMaps == nullptr ||
             unionOfFieldMaps(frame, frame->ActiveFieldMaps, false, frame->SolutionTime, zones);
    } else if (ok && usesLineMaps(frame)) {
        // The zones of the shown line maps that are relevant at the frame's time.
        std::unique_ptr<Set_a, SetDeleter> mapZones(GetZonesFromActiveLineMaps(frame)), all;
        Set_a *relevant = nullptr;
        ok = mapZones && GetRelevantZones(frame, false, frame->SolutionTime, &relevant);
        all.reset(relevant);
        for (SetIndex_t z = ok ? GetNextMember(mapZones.get(), -1) : -1; ok && z >= 0; z = GetNextMember(mapZones.get(), z))
            if (InSet(relevant, z)) ok = AddToSet(zones, z, false);
    } else if (ok) {
        ok = unionOfStrands(frame, false, frame->SolutionTime, zones);
    }
    if (!ok) DeallocSet(&zones);
    frame->ActiveRelevantZones = zones;
    return zones;
}

bool StrandIsInContext(const Frame_s *frame, int32_t strand) {
    if (!IsActiveStrand(frame, strand)) return false;
    double min, max, tolerance = GetSolutionTimeTolerance(frame);
    GetStrandSolutionTimeMinMax(frame->DataSet, strand, &min, &max);
    return frame->SolutionTime >= min - tolerance && frame->SolutionTime <= max + tolerance;
}

bool FrameHasTransientData(const Frame_s *frame) { return AnyActiveStrands(frame); }

void UpdateGlobalTimeScratchFlags(Frame_s *frame) {
    if (frame == nullptr || !AnyActiveStrands(frame)) return;
    std::vector<double> times;
    forStrands(frame, true, [&](int32_t s) {
        const Set_a *members = GetStrandInfo(frame->DataSet, s)->ZoneMembers;
        for (SetIndex_t z = GetNextMember(members, -1); z >= 0; z = GetNextMember(members, z))
            times.push_back(timeOf(frame->DataSet, EntIndex_t(z)));
    });
    frame->TimeSteps = collapseTimes(std::move(times), GetSolutionTimeTolerance(frame));
    if (frame->TimeSteps.empty()) return;
    double min = frame->TimeSteps.front(), max = frame->TimeSteps.back();
    // A start or end time that follows the data takes its limit; one set outside the data's
    // range goes back to the limit and follows the data from now on.
    if (frame->AnimStartFollowsData || frame->AnimStartTime < min || frame->AnimStartTime > max) {
        frame->AnimStartTime = min;
        frame->AnimStartFollowsData = true;
    }
    if (frame->AnimEndFollowsData || frame->AnimEndTime < min || frame->AnimEndTime > max) {
        frame->AnimEndTime = max;
        frame->AnimEndFollowsData = true;
    }
    auto steps = int32_t(frame->TimeSteps.size());
    if (frame->AnimStartStep >= steps) frame->AnimStartStep = 0;
    if (frame->AnimEndStep >= steps) frame->AnimEndStep = 0;
}

void UpdateFrameFlagsOnSolutionTimeChange(Frame_s *frame) {
    // The frame's drawing state follows the relevant zones; until the frame keeps such state,
    // taking the new set is all there is to do.
    DeallocSet(&frame->ActiveRelevantZones);
    GetActiveRelevantZones(frame);
}

void SetFrameSolutionTime(Frame_s *frame, double time) {
    frame->SolutionTime = time;
    UpdateFrameFlagsOnSolutionTimeChange(frame);
}

bool SetZoneSolutionTime(Frame_s *frame, EntIndex_t zone, double time) {
    if (frame == nullptr || frame->DataSet == nullptr || !IsZoneEnabled(frame->DataSet, zone)) return false;
    ZoneSpec_s *spec = GetZoneSpec(frame->DataSet, zone);
    if (spec->SolutionTime == time) return true;
    spec->SolutionTime = time;
    if (spec->StrandID < 0 || spec->StrandID > MaxStrandID) return false;
    MarkStrandInfoAsInvalid(frame->DataSet, spec->StrandID);
    UpdateStrandInfoFlags(frame->DataSet, spec->StrandID);
    UpdateGlobalTimeScratchFlags(frame);
    UpdateFrameFlagsOnSolutionTimeChange(frame);
    Set_a *zones = AllocSet(false);
    if (zones != nullptr) AddToSet(zones, zone, false);
    // The style path of the change is that of $!GLOBALTIME SOLUTIONTIME.
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALTIME);
    StateChangeSupplementalInfoSetStyleParam(1, MacroSetValue_SOLUTIONTIME);
    StateChangeSupplementalInfoSetZone(zone);
    StateChangeInfo_s info;
    info.ZoneSet = zones;
    info.Index = zone;
    StateChanged(StateChange_Style, &info);
    DeallocSet(&zones);
    return true;
}

int32_t GetNumSolutionTimeTimeSteps(const Frame_s *frame) {
    return frame != nullptr ? int32_t(frame->TimeSteps.size()) : 0;
}

double GetSolutionTimeAtTimeStep(const Frame_s *frame, int32_t step) {
    if (frame == nullptr || step < 0 || step >= GetNumSolutionTimeTimeSteps(frame)) return 0.0;
    return frame->TimeSteps[size_t(step)];
}

int32_t GetTimeStepValueAtSolutionTime(double time) {
    const Frame_s *frame = CurFrame;
    int32_t steps = GetNumSolutionTimeTimeSteps(frame);
    if (steps == 0) return 0;
    double tolerance = GetSolutionTimeTolerance(frame);
    for (int32_t s = 0; s < steps; s++)
        if (ValuesAreNearlyEqual(frame->TimeSteps[size_t(s)], time, tolerance)) return s;
    for (int32_t s = 0; s < steps; s++)
        if (frame->TimeSteps[size_t(s)] > time) return s == 0 ? 0 : s - 1;
    return steps - 1;
}
