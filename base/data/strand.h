// Strands: the zones that are the same piece of a model at different solution times. A strand
// record lists its zones; the sorted view and the flags are rebuilt on demand after a change.
#pragma once

#include <cstdint>

#include "base/kernel/set.h"
#include "base/kernel/types.h"

struct ArrayList_s;
struct DataSet_s;

constexpr int32_t MaxStrandID = 32699;  // StrandID 0..32699; -1 static; -2 "pick one" during a load

struct StrandInfo_s {
    Set_a *ZoneMembers;
    ArrayList_s *ZonesByTime;  // zone numbers sorted by solution time; made on demand
    uint64_t ZoneStats[3];
    bool HasUniqueTimes;
    bool HasUniformStructure;
    bool IsValid;
};

StrandInfo_s *StrandInfoAlloc();
void StrandInfoDealloc(StrandInfo_s **strand);
bool StrandInfoItemDestructor(void *itemRef, ArbParam_t clientData);

// The strand record, or null if the data set has none of that number.
StrandInfo_s *GetStrandInfo(DataSet_s *dataSet, int32_t strand);
bool AddZoneToStrand(DataSet_s *dataSet, int32_t strand, EntIndex_t zone);
// With doDeleteMember the higher members move down by one, as a zone deletion needs.
void RemoveZoneFromStrand(DataSet_s *dataSet, int32_t strand, EntIndex_t zone, bool doDeleteMember);
void MarkStrandInfoAsInvalid(DataSet_s *dataSet, int32_t strand);
// Every strand's members at or above zone move up by one (a zone was inserted there).
void StrandsInsertZone(DataSet_s *dataSet, EntIndex_t zone);
