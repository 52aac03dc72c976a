// Data-load control: how much field data is resident (in kilobytes), the thresholds of usable
// memory that decide when variables leave memory, and the generations that decide which ones.
// A major operation (a redraw pass, an equation run, an add-on's data-load bracket) opens a new
// generation; what it touches is stamped with it and is safe from the sweep while it runs.
// The sweep itself walks frames, zones and variables and lives with the data set (DataLoadSweep).
// Relies on the thread layer for the statistics mutex and for telling the mainline apart.
#pragma once

#include <cstdint>

struct FieldData_s;

// LOADONDEMAND UNLOADSTRATEGY, GeneralBase.LoadOnDemandUnloadStrategy.
enum UnloadStrategy_e : int {
    UnloadStrategy_Auto = 0,
    UnloadStrategy_NeverUnload = 1,
    UnloadStrategy_MinimizeMemoryUse = 2
};

// LOADONDEMAND DATASTORESTRATEGY, GeneralBase.LoadOnDemandDataStoreStrategy.
enum DataStoreStrategy_e : int {
    DataStoreStrategy_Auto = 0,
    DataStoreStrategy_Heap = 1
};

// Accounting, all in kilobytes; a zero amount is ignored. Loading while a major operation is open
// sweeps with limit generation - 2 on the mainline; on a worker it only asks for a sweep, which the
// mainline runs at its next accounting call or major-operation end.
void DataLoadAccountForKBytesLoaded(int64_t kBytes);
void DataLoadAccountForKBytesUnloaded(int64_t kBytes);
// The variable's bytes (FieldDataGetBytesNeeded) / 1024.
void DataLoadAccountForVarLoaded(const FieldData_s *fieldData);
void DataLoadAccountForVarUnloaded(const FieldData_s *fieldData);

int64_t DataLoadGetTotalKBytesLoaded();
int64_t DataLoadGetTotalKBytesUnloaded();
// Total loaded less total unloaded.
int64_t DataLoadGetResidentKBytes();
int64_t DataLoadGetPeakKBytesResident();
int64_t DataLoadGetNumLoadCalls();
int64_t DataLoadGetNumUnloadCalls();

// Usable memory in bytes: MAXUSABLEMEMORY megabytes if not zero, else the physical memory.
int64_t GetMaxUsablePhysicalMemory();
// Works the thresholds out the first time they are needed, and again when forced (after a change
// of MAXUSABLEMEMORY or either threshold fraction).
void DataLoadValidateThresholdValues(bool force);
int64_t DataLoadGetMaxKBytesThreshold();
int64_t DataLoadGetMinKBytesThreshold();
// Resident below the minimum threshold / above the maximum threshold.
bool DataLoadIsMemoryBelowThreshold();
bool DataLoadIsMemoryAboveThreshold();

// The current generation; it starts at 1, so a stamp of 0 means never used.
uint32_t DataLoadGetCurrentGeneration();
// Nested brackets: the outermost begin opens a new generation, the outermost end sweeps with limit
// generation - 1.
void DataLoadMajorOperationBegin();
void DataLoadMajorOperationEnd();
bool DataLoadMajorOperationIsOpen();
// A worker (or the mainline while sweeps were suspended) asked for a sweep not run yet.
bool DataLoadSweepIsWanted();
// Field data brackets every stretch in which it holds a variable's mutex and may account: a sweep
// due inside waits, as a wanted sweep, and runs (generation - 2) when the outermost bracket closes
// on the mainline.
void DataLoadSuspendSweeps();
void DataLoadResumeSweeps();

// Unloads every enabled variable of every frame's data set whose generation stamp lies from 1 to
// `limit` (nothing for a negative limit). Defined by the data set layer; called here only on the
// mainline and never while the statistics mutex is held.
void DataLoadSweep(int64_t limit);

// Test seam: routes the sweeps of this module to `sweep` instead of DataLoadSweep (null restores
// it). Returns the previous routing.
using DataLoadSweep_pf = void (*)(int64_t limit);
DataLoadSweep_pf DataLoadSetSweepFunctionForTest(DataLoadSweep_pf sweep);
