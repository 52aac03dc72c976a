#include "base/data/strand.h"

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
