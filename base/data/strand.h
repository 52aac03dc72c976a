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

// Two times within the tolerance are the same time; with tolerance 0 only equal times are.
inline bool ValuesAreNearlyEqual(double a, double b, double tolerance) {
    return tolerance <= 0.0 ? a == b : (a > b ? a - b : b - a) < tolerance;
}

// By SolutionTime, ties by zone number, ascending.
int CompareZoneSolutionTimes(EntIndex_t zoneA, EntIndex_t zoneB, const DataSet_s *dataSet);
// Rebuilds the members sorted by time.
bool UpdateStrandZonesSortedByTime(DataSet_s *dataSet, int32_t strand);
// Brings the sorted view, the two flags and the zone statistics of an invalid strand up to date.
void UpdateStrandInfoFlags(DataSet_s *dataSet, int32_t strand);
// Non-null strand slots.
int32_t GetNumValidStrandsInDataSet(const DataSet_s *dataSet);
// The first and last time of a strand (0 and 0 without one); false if there is no such strand.
bool GetStrandSolutionTimeMinMax(DataSet_s *dataSet, int32_t strand, double *min, double *max);
// Over all strands of the data set; 0.0 and 0.0 with none.
void GetDataSetStrandSolutionTimeMinMax(DataSet_s *dataSet, double *min, double *max);

// Gives every zone of a new load whose StrandID is -2 a strand: with assign false they become
// static (-1); otherwise zones are put in bins by time (within the tolerance of the load's times)
// and strand n takes the n-th zone of each bin. Existing strands keep their numbers; new ones go
// after them. False on out of memory.
bool AssignStrandIDs(DataSet_s *dataSet, bool assign);
