// Field data: one variable's values in one zone, FieldData_a. Every value is read as a double
// through the object's GetFunction, whatever the stored type, byte order, alignment, or whether
// the bytes are on the heap, in a mapping of the data file or of a temporary file. Around that:
// load on demand from the data file, the temporary cache of computed variables ("storable"
// variables), passive variables, add-on variables, and min/max.
//
// Hot loops may compare GetFunction with GetFieldValueForFloat or GetFieldValueForDouble and then
// index Data as a plain array; those two are chosen only for native, aligned, unfragmented data.
//
// Identity: other zones, frames and caches hold FieldData_a pointers, so a change of storage
// swaps the contents of the object and never the object. ReadMutex serialises loading; a change
// of form takes ReadMutex and then WriteMutex. Values of a loaded array are read with no lock.
// Relies on memmap (mappings), dataload (accounting and generations), the thread layer (mutexes)
// and the temporary directory (cache files).
#pragma once

#include <cstdint>

#include "base/data/memmap.h"
#include "base/data/zonespec.h"
#include "base/kernel/thread.h"
#include "base/kernel/types.h"

enum FieldDataType_e : int16_t {
    FieldDataType_Float = 1,
    FieldDataType_Double = 2,
    FieldDataType_LongInt = 3,
    FieldDataType_ShortInt = 4,
    FieldDataType_Byte = 5,
    FieldDataType_Bit = 6,
    FieldDataType_Invalid = 255
};

struct FieldData_s;
using FieldData_a = FieldData_s *;

using FieldValueGetFunction_pf = double (*)(const FieldData_s *fieldData, LgIndex_t index);
using FieldValueSetFunction_pf = void (*)(FieldData_s *fieldData, LgIndex_t index, double value);
using FieldDataLoadFunction_pf = bool (*)(FieldData_a fieldData);
using FieldDataUnloadFunction_pf = bool (*)(FieldData_a fieldData);
using FieldDataCleanupFunction_pf = void (*)(FieldData_a fieldData);

struct FieldData_s {
    void *Data;                       // heap block or start of the mapping; null when not loaded
    ArbParam_t ClientData;            // a loader's load record, or an add-on's value
    FieldValueGetFunction_pf GetFunction;
    FieldValueSetFunction_pf SetFunction;  // null for a passive or read-only add-on variable
    FieldDataType_e Type;             // FieldDataType_Invalid until defined
    Boolean_t IsNativeByteOrder;
    Boolean_t IsAligned;              // the first value lies on the type's boundary
    ValueLocation_e Location;         // ValueLocation_Invalid until defined
    int32_t RefCount;                 // owners of this object
    int32_t VarShareRefCount;         // owners through variable sharing; 2 or more means shared
    LgIndex_t NumValues;
    Boolean_t IsMinMaxValid;
    double Min, Max;
    uint32_t LoadGeneration;          // data-load generation at the last use; 0 never used
    MemMap_s *MemMap;                 // null unless mapped
    Boolean_t IsMemMapFragmented;     // the mapping has more than one piece
    Boolean_t OwnsStorage;            // plain storage that the object allocates itself
    Mutex_a ReadMutex, WriteMutex;    // made by FieldDataDefineData
    Boolean_t IsReadable;
    Boolean_t IsReadOnly;
    FieldDataLoadFunction_pf LoadFunction;      // null for a plain variable
    FieldDataUnloadFunction_pf UnloadFunction;  // may refuse
    FieldDataCleanupFunction_pf CleanupFunction;  // frees ClientData
};

// ---- values ---------------------------------------------------------------------------------

// 4, 8, 4, 2, 1 bytes; a bit block of n values takes (n + 7) / 8 bytes.
int64_t FieldDataGetBytesNeeded(int64_t numValues, FieldDataType_e type);
// Bytes of one value; 1 for a bit variable (the unit in which its block is addressed).
int FieldDataTypeSize(FieldDataType_e type);
bool IsValidFieldDataType(FieldDataType_e type);

// The two plain readers that hot loops compare against.
double GetFieldValueForFloat(const FieldData_s *fieldData, LgIndex_t index);
double GetFieldValueForDouble(const FieldData_s *fieldData, LgIndex_t index);
FieldValueGetFunction_pf DetermineFieldDataGetFunction(FieldDataType_e type, bool isNative, bool isAligned);
FieldValueSetFunction_pf DetermineFieldDataSetFunction(FieldDataType_e type, bool isNative, bool isAligned);

inline double GetFieldValue(const FieldData_s *fieldData, LgIndex_t index) {
    return fieldData->GetFunction(fieldData, index);
}
inline void SetFieldValue(FieldData_s *fieldData, LgIndex_t index, double value) {
    fieldData->SetFunction(fieldData, index, value);
}

// Whether two doubles store as the same value in the type (after clipping and conversion).
bool EquivalentValues(double a, double b, FieldDataType_e type);

// Copies values srcStart..srcEnd (inclusive) of a typed array to dstArray from dstStart. Bit
// arrays are addressed in bits. The unaligned form makes no assumption on either address.
void CopyTypedValueArray(FieldDataType_e type, void *dstArray, LgIndex_t dstStart, const void *srcArray,
                         LgIndex_t srcStart, LgIndex_t srcEnd);
void CopyUnalignedTypedValueArray(FieldDataType_e type, void *dstArray, LgIndex_t dstStart, const void *srcArray,
                                  LgIndex_t srcStart, LgIndex_t srcEnd);
// Reverses the bytes of `count` values from `start`; byte and bit arrays are left alone.
void SwapBytesInTypedValueArray(FieldDataType_e type, void *array, LgIndex_t start, LgIndex_t count);
void SwapBytesInUnalignedTypedValueArray(FieldDataType_e type, void *array, LgIndex_t start, LgIndex_t count);

// ---- the object -----------------------------------------------------------------------------

// An undefined object, counts 1, stamped with the current generation. Null (with the message)
// when out of memory.
FieldData_a FieldDataAlloc();
// Cleans up whatever was there, makes the mutexes, native and aligned, picks get and set, and
// sets OwnsStorage. The reference counts are kept.
bool FieldDataDefineData(FieldData_a fieldData, LgIndex_t numValues, FieldDataType_e type, ValueLocation_e location);
// A heap block of FieldDataGetBytesNeeded, readable and writable, accounted. False (with
// OutOfMemoryMsg if showErr) when out of memory. No values: readable with no storage.
bool FieldDataAllocData(FieldData_a fieldData, bool showErr);
// Storage for a variable the program computes, which may later leave memory for the temporary
// cache: a read-write mapping of a new temporary file when possible, else the heap.
bool FieldDataAllocStorableData(FieldData_a fieldData, bool showErr);
// Frees the heap block or the mapping (accounted) and makes the object unreadable.
void FieldDataDeallocData(FieldData_a fieldData);
// Zeroes the values of storage just allocated. A heap block is cleared; a fresh cache file reads as
// zeros already, so its mapping is left untouched (clearing it would page the whole file in).
void FieldDataZeroNewStorage(FieldData_a fieldData);
// Maps the values from `offset` of the open file; see the mapping rules of the loaders.
bool FieldDataMemMapData(FieldData_a fieldData, int fileDescriptor, int64_t offset, MemMapAccess_e access,
                         bool showErr);
// A variable of `type` and `numValues` may be mapped: the layout allows it, USEMEMORYMAPPEDIO is
// on, and its bytes reach MEMORYMAPPEDIOSIZETHRESHOLD (0 meaning one page).
bool FieldDataCanMemMapData(FieldDataType_e type, LgIndex_t numValues, bool layoutAllows);
// The offset of a block is aligned for its type modulo min(size, 4).
bool IsOffsetAlignedForFieldDataType(FieldDataType_e type, int64_t offset);

// A fresh object of the same count, type and location with storable (or heap) storage and the
// values and min/max copied in. The source must be readable. Null when out of memory (reported).
FieldData_a FieldDataCopy(FieldData_a fieldData, bool storable);
void CopyFieldData(FieldData_a dst, FieldData_a src);
void CopyFieldDataRange(FieldData_a dst, LgIndex_t dstStart, LgIndex_t dstStride, FieldData_a src,
                        LgIndex_t srcStart, LgIndex_t srcStride, LgIndex_t count);

// With doTrackVarSharing lowers VarShareRefCount; always lowers RefCount and below 1 cleans up
// and frees the object. Nulls the caller's pointer in every case.
void FieldDataDealloc(FieldData_a *fieldData, bool doTrackVarSharing);
// Runs the cleanup function, frees the data, clears everything but the reference counts and
// frees the mutexes.
void FieldDataCleanup(FieldData_a fieldData);

// Loads if needed. False when the load failed (its loader reported); the variable stays unloaded.
bool FieldDataMakeReadable(FieldData_a fieldData);
// Readable, then, if read-only, moves the values into storable storage of its own so that they
// may change; the object pointer stays, and every owner sees the change.
bool FieldDataMakeWritable(FieldData_a fieldData);
// Calls the unload function if readable; false, with nothing changed, if it refuses.
bool FieldDataUnload(FieldData_a fieldData);

bool IsFieldDataReadable(FieldData_a fieldData);
bool IsFieldDataWritable(FieldData_a fieldData);
bool IsFieldDataMemoryMapped(FieldData_a fieldData);
// For callers already holding ReadMutex (and WriteMutex for the writable test).
bool LockedIsFieldDataReadable(const FieldData_s *fieldData);
bool LockedIsFieldDataWritable(const FieldData_s *fieldData);
bool LockedIsFieldDataMemoryMapped(const FieldData_s *fieldData);
bool IsFieldDataLoadOnDemand(const FieldData_s *fieldData);
bool IsFieldDataLoadOnDemandByOrvanex(const FieldData_s *fieldData);
bool IsFieldDataLoadOnDemandByAddOn(const FieldData_s *fieldData);
bool IsFieldDataStorable(const FieldData_s *fieldData);
bool IsFieldDataPassive(const FieldData_s *fieldData);
bool IsFieldDataUsable(const FieldData_s *fieldData);

// No storage at all: reads 0.0, no set function, readable and read-only, min = max = 0.
void FieldDataMakePassive(FieldData_a fieldData);

// ---- min and max ----------------------------------------------------------------------------

bool IsFieldDataMinMaxValid(const FieldData_s *fieldData);
void FieldDataGetMinMax(const FieldData_s *fieldData, double *min, double *max);
void FieldDataSetMinMax(FieldData_a fieldData, double min, double max);
void FieldDataInvalidateMinMax(FieldData_a fieldData);
// Running min and max of a readable variable, starting at 1.0E150 and -1.0E150. The ordered form
// visits i < iEnd, j < jEnd, k < kEnd at i + j*iDim + k*iDim*jDim, so the caller can leave out the
// ghost slots of a cell-centred array; the range form visits start <= index < end. True when at
// least one value was visited.
bool FieldDataCalcMinMaxOrdered(FieldData_a fieldData, LgIndex_t iEnd, LgIndex_t jEnd, LgIndex_t kEnd,
                                LgIndex_t iDim, LgIndex_t jDim, double *min, double *max);
bool FieldDataCalcMinMaxRange(FieldData_a fieldData, LgIndex_t start, LgIndex_t end, double *min, double *max);

// ---- scratch and add-on forms ---------------------------------------------------------------

// A nodal heap-only object for temporary work; null when out of memory (reported if showErr).
FieldData_a AllocScratchNodalFieldDataPtr(LgIndex_t numValues, FieldDataType_e type, bool showErr);
void DeallocScratchNodalFieldDataPtr(FieldData_a *fieldData);

// The add-on form on an existing defined object (the data set layer finds the object by zone and
// variable). Null load, unload and cleanup become do-nothing functions. With a get function the
// add-on supplies each value; with neither get nor unload function and load on demand allowed the
// variable becomes storable, so that the add-on loads it once; with an unload function and no get
// function the object keeps its own heap array, which the add-on's loader fills. With load on
// demand off the variable is loaded now and that result is returned.
bool FieldDataSetCustomLOD(FieldData_a fieldData, FieldDataLoadFunction_pf loadFunction,
                           FieldDataUnloadFunction_pf unloadFunction, FieldDataCleanupFunction_pf cleanupFunction,
                           FieldValueGetFunction_pf getFunction, FieldValueSetFunction_pf setFunction,
                           ArbParam_t clientData);

// ---- the temporary cache ----------------------------------------------------------------------

struct OrvanexStorableVarLoadInfo_s {
    char *Path;                                // the cache file; null until one exists
    Boolean_t UseMemMap;
    FieldDataLoadFunction_pf AddOnLoader;      // an add-on's first load; null once done
    FieldDataCleanupFunction_pf AddOnCleanup;  // due after the add-on's load or at cleanup
    ArbParam_t ClientData;                     // the add-on's value, given to both
};

bool OrvanexStorableVarLoader(FieldData_a fieldData);
bool OrvanexStorableVarUnload(FieldData_a fieldData);
void OrvanexStorableVarCleanup(FieldData_a fieldData);

// ---- variables of a data file -----------------------------------------------------------------

struct OrvanexVarLoadInfo_s {
    const char *FileName;                    // interned: one copy per file name, shared by its records
    DataValueStructure_e DataValueStructure; // how an ordered cell-centred block lies in the file
    int64_t Offset;                          // byte offset of the variable's first value
    LgIndex_t Stride;                        // values from one value of this variable to the next
    Boolean_t IsMemMappable;
    Boolean_t IsNativeByteOrder;
    LgIndex_t IMax, JMax, KMax;              // as the file has them
    LgIndex_t *Skip;                         // three skips, or null when nothing is skipped
    // Point-packed data (Stride 2 or more): a point's variables may differ in type, so the
    // distance between two values of this variable is the point's byte size, not Stride values.
    LgIndex_t PointBytes;                    // bytes of one point; 0 for block data
    LgIndex_t ValueOffsetInPoint;            // bytes from a point's start to this variable's value
    ZoneType_e ZoneType;
};

// Turns fieldData into a variable loaded from the binary data file. `offset` is the byte position
// of the variable's first value; for point data (stride >= 2) pointBytes is the bytes of one point
// (0: stride values of this type) and valueOffsetInPoint where the variable stands in it. The
// ZoneSpec_s gives the dimensions as the file has them; `skip` is three skips or null. A local
// file with load on demand allowed stays on disk until needed; a temporary or remote copy (or
// load on demand off) is taken into memory now. False with the message on refused input.
bool LoadBinaryBlockVariable(const char *fileName, DataValueStructure_e structure, bool isTempOrRemote, int64_t offset,
                             LgIndex_t stride, const LgIndex_t *skip, const ZoneSpec_s *zoneSpec, FieldDataType_e type,
                             bool isNative, ValueLocation_e location, FieldData_a fieldData,
                             LgIndex_t pointBytes = 0, LgIndex_t valueOffsetInPoint = 0);
bool OrvanexVarLoader(FieldData_a fieldData);
bool OrvanexVarUnload(FieldData_a fieldData);
void OrvanexVarCleanup(FieldData_a fieldData);

// Points an existing variable at a block of a file (no skip), keeping its min and max: the form
// used after a save with auto-load, and by the add-on API.
bool FieldDataAutoLODFromFile(FieldData_a fieldData, const char *fileName, DataValueStructure_e structure,
                              int64_t offset, LgIndex_t stride, bool isNative, const ZoneSpec_s *zoneSpec);

// For branching a shared file-backed variable that is not in memory: a copy with its own load
// record (same file and offset), fresh mutexes, both counts 1, a generation stamp of 0xFFFFFFFF,
// and no file read. Null when out of memory (reported).
FieldData_a FieldDataCloneUnloaded(FieldData_a fieldData);
