// Data-load accounting, thresholds and generations. The counters and thresholds are guarded by the
// data-load statistics mutex of the thread layer, held only round the counters: a sweep unloads
// variables, which accounts again, so it always runs after the mutex is released. Sweeps run only
// on the mainline, because a sweep unloads arrays that workers read without a lock; a worker that
// crosses a point where a sweep is due only raises the "sweep wanted" flag.
#include "base/data/dataload.h"

#include <atomic>
#include <sys/sysinfo.h>

#include "base/data/fielddata.h"
#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/thread.h"

namespace {

// Guarded by DataLoadStatsMutex.
int64_t totalKBytesLoaded = 0;
int64_t totalKBytesUnloaded = 0;
int64_t numLoadCalls = 0;
int64_t numUnloadCalls = 0;
int64_t peakKBytesResident = 0;
bool thresholdsAreValid = false;
int64_t maxKBytesThreshold = 0;
int64_t minKBytesThreshold = 0;

// The generation starts at 1 so that a stamp of 0 stands for "never used". Read by workers when
// they stamp a variable, hence atomic; changed only by the bracket calls.
std::atomic<uint32_t> currentGeneration{1};
std::atomic<int> majorOperationNesting{0};
std::atomic<bool> sweepWanted{false};
// Mainline only: a sweep that accounts for what it unloads must not start another sweep.
bool sweepInProgress = false;
// Sweeps asked for while this thread holds the mutex of a variable wait until it lets go: a sweep
// takes variables' mutexes, and that variable's would never come free.
thread_local int sweepSuspension = 0;
DataLoadSweep_pf sweepFunction = nullptr;

// Runs a sweep now if this is the mainline, else leaves it to the mainline.
void sweepOrDefer(int64_t limit) {
    if (!Thread_IsMainline() || sweepSuspension > 0) {
        sweepWanted = true;
        return;
    }
    if (sweepInProgress) return;
    sweepInProgress = true;
    sweepWanted = false;
    if (sweepFunction != nullptr)
        sweepFunction(limit);
    else
        DataLoadSweep(limit);
    sweepInProgress = false;
}

void computeThresholds() {
    int64_t usableKBytes = GetMaxUsablePhysicalMemory() / 1024;
    maxKBytesThreshold = static_cast<int64_t>(static_cast<double>(usableKBytes) * GeneralBase.LODThresholdMaxFract);
    minKBytesThreshold = static_cast<int64_t>(static_cast<double>(usableKBytes) * GeneralBase.LODThresholdMinFract);
    thresholdsAreValid = true;
}

}  // namespace

void DataLoadAccountForKBytesLoaded(int64_t kBytes) {
    REQUIRE(kBytes >= 0);
    if (kBytes == 0) return;
    {
        MutexLock lock(DataLoadStatsMutex);
        totalKBytesLoaded += kBytes;
        numLoadCalls++;
        int64_t resident = totalKBytesLoaded - totalKBytesUnloaded;
        if (resident > peakKBytesResident) peakKBytesResident = resident;
    }
    // What the present operation and the one before it touched is safe from this sweep.
    if (majorOperationNesting > 0 || sweepWanted) sweepOrDefer(static_cast<int64_t>(currentGeneration.load()) - 2);
}

void DataLoadAccountForKBytesUnloaded(int64_t kBytes) {
    REQUIRE(kBytes >= 0);
    if (kBytes == 0) return;
    MutexLock lock(DataLoadStatsMutex);
    totalKBytesUnloaded += kBytes;
    numUnloadCalls++;
}

void DataLoadAccountForVarLoaded(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    DataLoadAccountForKBytesLoaded(FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type) / 1024);
}

void DataLoadAccountForVarUnloaded(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    DataLoadAccountForKBytesUnloaded(FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type) / 1024);
}

// A counter read under the statistics mutex.
static int64_t lockedRead(const int64_t &counter) {
    MutexLock lock(DataLoadStatsMutex);
    return counter;
}

int64_t DataLoadGetTotalKBytesLoaded() { return lockedRead(totalKBytesLoaded); }

int64_t DataLoadGetTotalKBytesUnloaded() { return lockedRead(totalKBytesUnloaded); }

int64_t DataLoadGetResidentKBytes() {
    MutexLock lock(DataLoadStatsMutex);
    return totalKBytesLoaded - totalKBytesUnloaded;
}

int64_t DataLoadGetPeakKBytesResident() { return lockedRead(peakKBytesResident); }

int64_t DataLoadGetNumLoadCalls() { return lockedRead(numLoadCalls); }

int64_t DataLoadGetNumUnloadCalls() { return lockedRead(numUnloadCalls); }

int64_t GetMaxUsablePhysicalMemory() {
    if (GeneralBase.MaxUsableMemoryMB > 0) return static_cast<int64_t>(GeneralBase.MaxUsableMemoryMB) * 1024 * 1024;
    struct sysinfo info;
    if (sysinfo(&info) != 0) return 0;
    return static_cast<int64_t>(info.totalram) * static_cast<int64_t>(info.mem_unit);
}

void DataLoadValidateThresholdValues(bool force) {
    MutexLock lock(DataLoadStatsMutex);
    if (force || !thresholdsAreValid) computeThresholds();
}

int64_t DataLoadGetMaxKBytesThreshold() {
    MutexLock lock(DataLoadStatsMutex);
    if (!thresholdsAreValid) computeThresholds();
    return maxKBytesThreshold;
}

int64_t DataLoadGetMinKBytesThreshold() {
    MutexLock lock(DataLoadStatsMutex);
    if (!thresholdsAreValid) computeThresholds();
    return minKBytesThreshold;
}

bool DataLoadIsMemoryBelowThreshold() {
    MutexLock lock(DataLoadStatsMutex);
    if (!thresholdsAreValid) computeThresholds();
    return totalKBytesLoaded - totalKBytesUnloaded < minKBytesThreshold;
}

bool DataLoadIsMemoryAboveThreshold() {
    MutexLock lock(DataLoadStatsMutex);
    if (!thresholdsAreValid) computeThresholds();
    return totalKBytesLoaded - totalKBytesUnloaded > maxKBytesThreshold;
}

uint32_t DataLoadGetCurrentGeneration() { return currentGeneration.load(std::memory_order_relaxed); }

void DataLoadMajorOperationBegin() {
    if (majorOperationNesting.fetch_add(1) == 0) currentGeneration.fetch_add(1);
}

void DataLoadMajorOperationEnd() {
    int before = majorOperationNesting.fetch_sub(1);
    REQUIRE(before >= 1);
    if (before == 1)
        sweepOrDefer(static_cast<int64_t>(currentGeneration.load()) - 1);
    else if (sweepWanted)
        sweepOrDefer(static_cast<int64_t>(currentGeneration.load()) - 2);
}

void DataLoadSuspendSweeps() { sweepSuspension++; }

void DataLoadResumeSweeps() {
    REQUIRE(sweepSuspension > 0);
    if (--sweepSuspension == 0 && sweepWanted && Thread_IsMainline())
        sweepOrDefer(static_cast<int64_t>(currentGeneration.load()) - 2);
}

bool DataLoadMajorOperationIsOpen() { return majorOperationNesting > 0; }

bool DataLoadSweepIsWanted() { return sweepWanted; }

DataLoadSweep_pf DataLoadSetSweepFunctionForTest(DataLoadSweep_pf sweep) {
    DataLoadSweep_pf previous = sweepFunction;
    sweepFunction = sweep;
    return previous;
}
