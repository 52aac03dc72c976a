#include "base/data/strand.h"

#include <algorithm>
#include <vector>

#include "base/data/dataset.h"
#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"

StrandInfo_s *StrandInfoAlloc() {
    auto *strand = static_cast<StrandInfo_s *>(newmalloc(sizeof(StrandInfo_s)));
    if (strand == nullptr) return nullptr;
    strand->ZoneMembers = AllocSet(false);
    if (strand->ZoneMembers == nullptr) {
        newfree(strand);
        return nullptr;
    }
    strand->ZonesByTime = nullptr;
    strand->ZoneStats[0] = strand->ZoneStats[1] = strand->ZoneStats[2] = 0;
    strand->HasUniqueTimes = false;
    strand->HasUniformStructure = false;
    strand->IsValid = false;
    return strand;
}

void StrandInfoDealloc(StrandInfo_s **strand) {
    if (*strand == nullptr) return;
    DeallocSet(&(*strand)->ZoneMembers);
    ArrayListDealloc(&(*strand)->ZonesByTime, nullptr, 0);
    newfree(*strand);
    *strand = nullptr;
}

bool StrandInfoItemDestructor(void *itemRef, ArbParam_t) {
    StrandInfoDealloc(static_cast<StrandInfo_s **>(itemRef));
    return true;
}

StrandInfo_s *GetStrandInfo(DataSet_s *dataSet, int32_t strand) {
    if (dataSet->StrandInfoList == nullptr || strand < 0 || strand >= ArrayListGetCount(dataSet->StrandInfoList))
        return nullptr;
    return static_cast<StrandInfo_s *>(ArrayListGetItem(dataSet->StrandInfoList, strand).VoidPtr);
}

void MarkStrandInfoAsInvalid(DataSet_s *dataSet, int32_t strand) {
    if (StrandInfo_s *info = GetStrandInfo(dataSet, strand)) {
        info->IsValid = false;
        ArrayListDealloc(&info->ZonesByTime, nullptr, 0);
    }
}

bool AddZoneToStrand(DataSet_s *dataSet, int32_t strand, EntIndex_t zone) {
    if (strand < 0 || strand > MaxStrandID) return true;  // static zones belong to no strand
    if (dataSet->StrandInfoList == nullptr) return false;
    StrandInfo_s *info = GetStrandInfo(dataSet, strand);
    if (info == nullptr) {
        info = StrandInfoAlloc();
        if (info == nullptr) return false;
        ArrayListItem_u item;
        item.VoidPtr = info;
        if (!ArrayListSetItem(dataSet->StrandInfoList, strand, item, StrandInfoItemDestructor, 0)) {
            StrandInfoDealloc(&info);
            return false;
        }
    }
    if (!AddToSet(info->ZoneMembers, zone, false)) return false;
    MarkStrandInfoAsInvalid(dataSet, strand);
    return true;
}

void RemoveZoneFromStrand(DataSet_s *dataSet, int32_t strand, EntIndex_t zone, bool doDeleteMember) {
    StrandInfo_s *info = GetStrandInfo(dataSet, strand);
    if (info == nullptr) return;
    if (doDeleteMember)
        DeleteSetMember(info->ZoneMembers, zone);
    else
        RemoveFromSet(info->ZoneMembers, zone);
    MarkStrandInfoAsInvalid(dataSet, strand);
    // A strand lives from its first zone to its last: the slot of one that lost its last zone is
    // emptied, so that counts and time ranges no longer see it.
    if (IsEmpty(info->ZoneMembers)) {
        ArrayListItem_u nothing;
        nothing.VoidPtr = nullptr;
        ArrayListSetItem(dataSet->StrandInfoList, strand, nothing, StrandInfoItemDestructor, 0);
    }
}

void StrandsInsertZone(DataSet_s *dataSet, EntIndex_t zone) {
    if (dataSet->StrandInfoList == nullptr) return;
    for (LgIndex_t s = 0; s < ArrayListGetCount(dataSet->StrandInfoList); s++) {
        StrandInfo_s *info = GetStrandInfo(dataSet, s);
        if (info == nullptr) continue;
        InsertSetMember(info->ZoneMembers, zone, false);
        RemoveFromSet(info->ZoneMembers, zone);  // the new number is no member yet
        MarkStrandInfoAsInvalid(dataSet, s);
    }
}

int CompareZoneSolutionTimes(EntIndex_t zoneA, EntIndex_t zoneB, const DataSet_s *dataSet) {
    double a = GetZoneSpec(dataSet, zoneA)->SolutionTime, b = GetZoneSpec(dataSet, zoneB)->SolutionTime;
    if (a != b) return a < b ? -1 : 1;
    return zoneA < zoneB ? -1 : zoneA > zoneB ? 1 : 0;
}

namespace {

int compareByTime(ArrayListItem_u a, ArrayListItem_u b, ArbParam_t clientData) {
    return CompareZoneSolutionTimes(a.EntIndex, b.EntIndex, reinterpret_cast<const DataSet_s *>(clientData));
}

}  // namespace

bool UpdateStrandZonesSortedByTime(DataSet_s *dataSet, int32_t strand) {
    StrandInfo_s *info = GetStrandInfo(dataSet, strand);
    if (info == nullptr) return false;
    ArrayListDealloc(&info->ZonesByTime, nullptr, 0);
    info->ZonesByTime = ArrayListAlloc(MemberCount(info->ZoneMembers), ArrayListType_EntIndex, nullptr, 0);
    if (info->ZonesByTime == nullptr) return false;
    for (SetIndex_t z = GetNextMember(info->ZoneMembers, -1); z >= 0; z = GetNextMember(info->ZoneMembers, z)) {
        ArrayListItem_u item;
        item.EntIndex = EntIndex_t(z);
        if (!ArrayListAppendItem(info->ZonesByTime, item)) return false;
    }
    ArrayListSort(info->ZonesByTime, compareByTime, ArbParam_t(dataSet));
    return true;
}

void UpdateStrandInfoFlags(DataSet_s *dataSet, int32_t strand) {
    if (strand > MaxStrandID) return;
    StrandInfo_s *info = GetStrandInfo(dataSet, strand);
    if (info == nullptr || info->IsValid) return;
    info->HasUniqueTimes = true;
    info->HasUniformStructure = true;
    if (!IsEmpty(info->ZoneMembers) && UpdateStrandZonesSortedByTime(dataSet, strand)) {
        const ZoneSpec_s *first = GetZoneSpec(dataSet, EntIndex_t(GetNextMember(info->ZoneMembers, -1)));
        LgIndex_t count = ArrayListGetCount(info->ZonesByTime);
        for (LgIndex_t n = 0; n < count; n++) {
            const ZoneSpec_s *spec = GetZoneSpec(dataSet, ArrayListGetItem(info->ZonesByTime, n).EntIndex);
            // Zones that differ in J count as differently shaped too: an ordered zone's J is
            // part of its structure.
            if (spec->Type != first->Type || spec->NumPtsI != first->NumPtsI || spec->NumPtsJ != first->NumPtsJ ||
                spec->NumPtsK != first->NumPtsK) {
                info->HasUniqueTimes = false;
                info->HasUniformStructure = false;
                break;
            }
            if (n > 0 &&
                GetZoneSpec(dataSet, ArrayListGetItem(info->ZonesByTime, n - 1).EntIndex)->SolutionTime ==
                    spec->SolutionTime)
                info->HasUniqueTimes = false;
        }
    }
    // What the field maps read of a strand: its zone count, the zone types present and the
    // largest point count.
    info->ZoneStats[0] = uint64_t(MemberCount(info->ZoneMembers));
    info->ZoneStats[1] = info->ZoneStats[2] = 0;
    for (SetIndex_t z = GetNextMember(info->ZoneMembers, -1); z >= 0; z = GetNextMember(info->ZoneMembers, z)) {
        info->ZoneStats[1] |= uint64_t(1) << GetZoneSpec(dataSet, EntIndex_t(z))->Type;
        info->ZoneStats[2] = std::max<uint64_t>(info->ZoneStats[2], uint64_t(ZoneGetNumPoints(dataSet, EntIndex_t(z))));
    }
    info->IsValid = true;
}

int32_t GetNumValidStrandsInDataSet(const DataSet_s *dataSet) {
    int32_t count = 0;
    LgIndex_t slots = dataSet->StrandInfoList != nullptr ? ArrayListGetCount(dataSet->StrandInfoList) : 0;
    for (LgIndex_t s = 0; s < slots; s++)
        if (ArrayListGetItem(dataSet->StrandInfoList, s).VoidPtr != nullptr) count++;
    return count;
}

bool GetStrandSolutionTimeMinMax(DataSet_s *dataSet, int32_t strand, double *min, double *max) {
    *min = *max = 0.0;
    StrandInfo_s *info = GetStrandInfo(dataSet, strand);
    if (info == nullptr) return false;
    UpdateStrandInfoFlags(dataSet, strand);
    LgIndex_t count = info->ZonesByTime != nullptr ? ArrayListGetCount(info->ZonesByTime) : 0;
    if (count == 0) return true;
    *min = GetZoneSpec(dataSet, ArrayListGetItem(info->ZonesByTime, 0).EntIndex)->SolutionTime;
    *max = GetZoneSpec(dataSet, ArrayListGetItem(info->ZonesByTime, count - 1).EntIndex)->SolutionTime;
    return true;
}

void GetDataSetStrandSolutionTimeMinMax(DataSet_s *dataSet, double *min, double *max) {
    *min = *max = 0.0;
    bool any = false;
    LgIndex_t slots = dataSet->StrandInfoList != nullptr ? ArrayListGetCount(dataSet->StrandInfoList) : 0;
    for (LgIndex_t s = 0; s < slots; s++) {
        double strandMin, strandMax;
        if (!GetStrandSolutionTimeMinMax(dataSet, int32_t(s), &strandMin, &strandMax)) continue;
        *min = any ? std::min(*min, strandMin) : strandMin;
        *max = any ? std::max(*max, strandMax) : strandMax;
        any = true;
    }
}

bool AssignStrandIDs(DataSet_s *dataSet, bool assign) {
    std::vector<EntIndex_t> unassigned;
    double minTime = 0.0, maxTime = 0.0;
    bool anyTime = false;
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        ZoneSpec_s *spec = GetZoneSpec(dataSet, EntIndex_t(z));
        if (spec->StrandID == -2 && !assign) spec->StrandID = -1;
        if (spec->StrandID == -1) continue;
        minTime = anyTime ? std::min(minTime, spec->SolutionTime) : spec->SolutionTime;
        maxTime = anyTime ? std::max(maxTime, spec->SolutionTime) : spec->SolutionTime;
        anyTime = true;
        if (spec->StrandID == -2) unassigned.push_back(EntIndex_t(z));
    }
    if (unassigned.empty()) return true;
    double tolerance = (maxTime - minTime) * 1.0e-6;

    // One bin per time step; a bin's time is that of its first zone. Bins stay sorted by time and
    // are found by bisection, so a chain of near-equal times cannot pull bins together.
    struct Bin {
        double Time;
        std::vector<EntIndex_t> Zones;
    };
    std::vector<Bin> bins;
    for (EntIndex_t zone : unassigned) {
        double time = GetZoneSpec(dataSet, zone)->SolutionTime;
        auto at = std::lower_bound(bins.begin(), bins.end(), time, [tolerance](const Bin &bin, double t) {
            return bin.Time < t && !ValuesAreNearlyEqual(bin.Time, t, tolerance);
        });
        if (at != bins.end() && ValuesAreNearlyEqual(at->Time, time, tolerance))
            at->Zones.push_back(zone);
        else
            bins.insert(at, Bin{time, {zone}});
    }
    // Strand n takes the n-th zone of every bin, in time order.
    int32_t strand = dataSet->StrandInfoList != nullptr ? int32_t(ArrayListGetCount(dataSet->StrandInfoList)) : 0;
    for (size_t n = 0;; n++, strand++) {
        bool any = false;
        for (const Bin &bin : bins) {
            if (n >= bin.Zones.size()) continue;
            any = true;
            ZoneSpec_s *spec = GetZoneSpec(dataSet, bin.Zones[n]);
            if (strand > MaxStrandID) {
                spec->StrandID = -1;  // past the last strand number the rest are static
                continue;
            }
            spec->StrandID = strand;
            if (!AddZoneToStrand(dataSet, strand, bin.Zones[n])) return false;
        }
        if (!any) break;
    }
    return true;
}
