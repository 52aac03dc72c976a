// Field data: the get/set table, the object's life, load on demand from the data file, the
// temporary cache of computed variables, and min/max. The loaders here open their files with
// stdio/open directly rather than through Open_File: they run on worker threads, and the
// open-file list of Open_File is mainline-only; every file they touch is local (a remote file is
// taken into memory while its local copy still exists).
#include "base/data/fielddata.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_map>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

#include "base/data/dataload.h"
#include "base/interact/url.h"
#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/strutil.h"
#include "base/kernel/tempdir.h"

namespace {

// ---- clipping ---------------------------------------------------------------------------------
// Each set function stores the value converted to its type; anything outside the type's bounds is
// clipped to them and anything too small to keep is 0. Integers are truncated towards zero. The
// integer bounds stop one short of the type's largest value, and a NaN stores as 0 in an integer.

constexpr double FloatClip = 3.40282347E38;
constexpr double FloatTiny = 1.17549435E-38;
constexpr double DoubleClip = 1.0E150;
constexpr double DoubleTiny = 1.0E-150;
constexpr double LongClip = 2147483646.0;
constexpr double ShortClip = 32766.0;

template <typename T>
T clipToType(double value);

template <>
float clipToType<float>(double value) {
    if (value > FloatClip) return static_cast<float>(FloatClip);
    if (value < -FloatClip) return static_cast<float>(-FloatClip);
    if (std::fabs(value) < FloatTiny) return 0.0f;
    return static_cast<float>(value);
}

template <>
double clipToType<double>(double value) {
    if (value > DoubleClip) return DoubleClip;
    if (value < -DoubleClip) return -DoubleClip;
    if (std::fabs(value) < DoubleTiny) return 0.0;
    return value;
}

template <>
int32_t clipToType<int32_t>(double value) {
    if (!(std::fabs(value) >= 1.0)) return 0;
    if (value > LongClip) return static_cast<int32_t>(LongClip);
    if (value < -LongClip) return static_cast<int32_t>(-LongClip);
    return static_cast<int32_t>(value);
}

template <>
int16_t clipToType<int16_t>(double value) {
    if (!(std::fabs(value) >= 1.0)) return 0;
    if (value > ShortClip) return static_cast<int16_t>(ShortClip);
    if (value < -ShortClip) return static_cast<int16_t>(-ShortClip);
    return static_cast<int16_t>(value);
}

template <>
uint8_t clipToType<uint8_t>(double value) {
    if (!(value >= 1.0)) return 0;
    if (value > 255.0) return 255;
    return static_cast<uint8_t>(value);
}

// ---- byte order ---------------------------------------------------------------------------------

template <typename T>
T swapped(T value) {
    static_assert(sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    if constexpr (sizeof(T) == 2) {
        uint16_t u;
        memcpy(&u, &value, 2);
        u = __builtin_bswap16(u);
        memcpy(&value, &u, 2);
    } else if constexpr (sizeof(T) == 4) {
        uint32_t u;
        memcpy(&u, &value, 4);
        u = __builtin_bswap32(u);
        memcpy(&value, &u, 4);
    } else {
        uint64_t u;
        memcpy(&u, &value, 8);
        u = __builtin_bswap64(u);
        memcpy(&value, &u, 8);
    }
    return value;
}

// ---- get and set ----------------------------------------------------------------------------------
// Float and double have separate fragmented forms so that their plain forms stay one load; the
// other types test IsMemMapFragmented on every call.

template <typename T, bool Native, bool Aligned>
double getTyped(const FieldData_s *fieldData, LgIndex_t index) {
    T value;
    if constexpr (!std::is_floating_point_v<T>) {
        if (fieldData->IsMemMapFragmented) {
            MemMapCopyBytesFromMapping(fieldData->MemMap, static_cast<int64_t>(index) * sizeof(T), sizeof(T), &value);
            if constexpr (!Native) value = swapped(value);
            return static_cast<double>(value);
        }
    }
    if constexpr (Native && Aligned)
        value = static_cast<const T *>(fieldData->Data)[index];
    else
        memcpy(&value, static_cast<const char *>(fieldData->Data) + static_cast<size_t>(index) * sizeof(T), sizeof(T));
    if constexpr (!Native) value = swapped(value);
    return static_cast<double>(value);
}

template <typename T, bool Native>
double getFragmented(const FieldData_s *fieldData, LgIndex_t index) {
    T value;
    MemMapCopyBytesFromMapping(fieldData->MemMap, static_cast<int64_t>(index) * sizeof(T), sizeof(T), &value);
    if constexpr (!Native) value = swapped(value);
    return static_cast<double>(value);
}

template <typename T, bool Native, bool Aligned>
void setTyped(FieldData_s *fieldData, LgIndex_t index, double value) {
    T stored = clipToType<T>(value);
    if constexpr (!Native) stored = swapped(stored);
    if constexpr (!std::is_floating_point_v<T>) {
        if (fieldData->IsMemMapFragmented) {
            MemMapCopyBytesToMapping(fieldData->MemMap, static_cast<int64_t>(index) * sizeof(T), sizeof(T), &stored);
            return;
        }
    }
    if constexpr (Native && Aligned)
        static_cast<T *>(fieldData->Data)[index] = stored;
    else
        memcpy(static_cast<char *>(fieldData->Data) + static_cast<size_t>(index) * sizeof(T), &stored, sizeof(T));
}

template <typename T, bool Native>
void setFragmented(FieldData_s *fieldData, LgIndex_t index, double value) {
    T stored = clipToType<T>(value);
    if constexpr (!Native) stored = swapped(stored);
    MemMapCopyBytesToMapping(fieldData->MemMap, static_cast<int64_t>(index) * sizeof(T), sizeof(T), &stored);
}

uint8_t loadByte(const FieldData_s *fieldData, LgIndex_t byteIndex) {
    if (fieldData->IsMemMapFragmented) {
        uint8_t value;
        MemMapCopyBytesFromMapping(fieldData->MemMap, byteIndex, 1, &value);
        return value;
    }
    return static_cast<const uint8_t *>(fieldData->Data)[byteIndex];
}

void storeByte(FieldData_s *fieldData, LgIndex_t byteIndex, uint8_t value) {
    if (fieldData->IsMemMapFragmented)
        MemMapCopyBytesToMapping(fieldData->MemMap, byteIndex, 1, &value);
    else
        static_cast<uint8_t *>(fieldData->Data)[byteIndex] = value;
}

double getByte(const FieldData_s *fieldData, LgIndex_t index) { return loadByte(fieldData, index); }

void setByte(FieldData_s *fieldData, LgIndex_t index, double value) {
    storeByte(fieldData, index, clipToType<uint8_t>(value));
}

// Value `index` is bit index % 8 of byte index / 8, lowest bit first.
double getBit(const FieldData_s *fieldData, LgIndex_t index) {
    return (loadByte(fieldData, index >> 3) >> (index & 7)) & 1 ? 1.0 : 0.0;
}

void setBit(FieldData_s *fieldData, LgIndex_t index, double value) {
    uint8_t byte = loadByte(fieldData, index >> 3);
    uint8_t mask = static_cast<uint8_t>(1u << (index & 7));
    byte = value < 1.0 ? static_cast<uint8_t>(byte & ~mask) : static_cast<uint8_t>(byte | mask);
    storeByte(fieldData, index >> 3, byte);
}

template <typename T>
FieldValueGetFunction_pf pickGet(bool isNative, bool isAligned) {
    if (isNative) return isAligned ? &getTyped<T, true, true> : &getTyped<T, true, false>;
    return isAligned ? &getTyped<T, false, true> : &getTyped<T, false, false>;
}

template <typename T>
FieldValueSetFunction_pf pickSet(bool isNative, bool isAligned) {
    if (isNative) return isAligned ? &setTyped<T, true, true> : &setTyped<T, true, false>;
    return isAligned ? &setTyped<T, false, true> : &setTyped<T, false, false>;
}

// The functions for a mapping in more than one piece.
FieldValueGetFunction_pf determineFragmentedGet(FieldDataType_e type, bool isNative) {
    if (type == FieldDataType_Float) return isNative ? &getFragmented<float, true> : &getFragmented<float, false>;
    if (type == FieldDataType_Double) return isNative ? &getFragmented<double, true> : &getFragmented<double, false>;
    return DetermineFieldDataGetFunction(type, isNative, true);
}

FieldValueSetFunction_pf determineFragmentedSet(FieldDataType_e type, bool isNative) {
    if (type == FieldDataType_Float) return isNative ? &setFragmented<float, true> : &setFragmented<float, false>;
    if (type == FieldDataType_Double) return isNative ? &setFragmented<double, true> : &setFragmented<double, false>;
    return DetermineFieldDataSetFunction(type, isNative, true);
}

// The load function of a passive variable, and the do-nothing functions that stand in for the
// ones an add-on leaves out. Distinct functions, so IsFieldDataPassive can tell them apart.
bool passiveLoader(FieldData_a) { return true; }
double passiveGet(const FieldData_s *, LgIndex_t) { return 0.0; }
bool addOnNoOpLoad(FieldData_a) { return true; }
bool addOnNoOpUnload(FieldData_a) { return true; }
void addOnNoOpCleanup(FieldData_a) {}

// ---- small guards -------------------------------------------------------------------------------

class FileCloser {
  public:
    explicit FileCloser(FILE *file) : file_(file) {}
    ~FileCloser() {
        if (file_ != nullptr) fclose(file_);
    }
    FileCloser(const FileCloser &) = delete;
    FileCloser &operator=(const FileCloser &) = delete;
    FILE *get() const { return file_; }
    void reset(FILE *file) { file_ = file; }
    // Closes now and reports whether the close (and so the last write) succeeded.
    bool close() {
        bool ok = file_ == nullptr || fclose(file_) == 0;
        file_ = nullptr;
        return ok;
    }

  private:
    FILE *file_;
};

// Takes ReadMutex, then WriteMutex. Either may be null for an undefined object.
class ReadWriteLock {
  public:
    explicit ReadWriteLock(FieldData_a fieldData) : read_(fieldData->ReadMutex), write_(fieldData->WriteMutex) {}

  private:
    MutexLock read_;
    MutexLock write_;
};

// Warnings that appear once per run: each has its own flag.
std::atomic<bool> warnedCacheVariable{false};
std::atomic<bool> warnedLoadStoredMap{false};
std::atomic<bool> warnedStoreMap{false};
std::atomic<bool> warnedStoreVariable{false};
std::atomic<bool> warnedLoadVariableMap{false};

bool firstTime(std::atomic<bool> &flag) { return !flag.exchange(true); }

// The directory part of a file name, or the temporary directory when the name has none.
std::string directoryOf(const std::string &fileName) {
    size_t slash = fileName.rfind('/');
    if (slash != std::string::npos && slash > 0) return fileName.substr(0, slash);
    return OrvanexTempDirectory;
}

int64_t fileSize(FILE *file) {
    struct stat info;
    if (fstat(fileno(file), &info) != 0) return -1;
    return static_cast<int64_t>(info.st_size);
}

void resetContents(FieldData_s *fieldData) {
    memset(static_cast<void *>(fieldData), 0, sizeof(FieldData_s));
    fieldData->Type = FieldDataType_Invalid;
    fieldData->Location = ValueLocation_Invalid;
}

FieldData_a allocObject(bool showErr) {
    auto *fieldData = static_cast<FieldData_s *>(newmalloc(sizeof(FieldData_s)));
    if (fieldData == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    resetContents(fieldData);
    fieldData->RefCount = 1;
    fieldData->VarShareRefCount = 1;
    fieldData->LoadGeneration = DataLoadGetCurrentGeneration();
    return fieldData;
}

void freeMutexes(FieldData_s *fieldData) {
    if (fieldData->ReadMutex != nullptr) Thread_FreeMutex(&fieldData->ReadMutex);
    if (fieldData->WriteMutex != nullptr) Thread_FreeMutex(&fieldData->WriteMutex);
    fieldData->ReadMutex = nullptr;
    fieldData->WriteMutex = nullptr;
}

}  // namespace

// ---- values -----------------------------------------------------------------------------------

bool IsValidFieldDataType(FieldDataType_e type) { return type >= FieldDataType_Float && type <= FieldDataType_Bit; }

int FieldDataTypeSize(FieldDataType_e type) {
    switch (type) {
    case FieldDataType_Float: return 4;
    case FieldDataType_Double: return 8;
    case FieldDataType_LongInt: return 4;
    case FieldDataType_ShortInt: return 2;
    case FieldDataType_Byte: return 1;
    case FieldDataType_Bit: return 1;
    default: REQUIRE(IsValidFieldDataType(type)); return 0;
    }
}

int64_t FieldDataGetBytesNeeded(int64_t numValues, FieldDataType_e type) {
    REQUIRE(numValues >= 0);
    if (type == FieldDataType_Bit) return (numValues + 7) / 8;
    return numValues * FieldDataTypeSize(type);
}

double GetFieldValueForFloat(const FieldData_s *fieldData, LgIndex_t index) {
    return static_cast<const float *>(fieldData->Data)[index];
}

double GetFieldValueForDouble(const FieldData_s *fieldData, LgIndex_t index) {
    return static_cast<const double *>(fieldData->Data)[index];
}

FieldValueGetFunction_pf DetermineFieldDataGetFunction(FieldDataType_e type, bool isNative, bool isAligned) {
    switch (type) {
    case FieldDataType_Float:
        return isNative && isAligned ? &GetFieldValueForFloat : pickGet<float>(isNative, isAligned);
    case FieldDataType_Double:
        return isNative && isAligned ? &GetFieldValueForDouble : pickGet<double>(isNative, isAligned);
    case FieldDataType_LongInt: return pickGet<int32_t>(isNative, isAligned);
    case FieldDataType_ShortInt: return pickGet<int16_t>(isNative, isAligned);
    case FieldDataType_Byte: return &getByte;
    case FieldDataType_Bit: return &getBit;
    default: REQUIRE(IsValidFieldDataType(type)); return nullptr;
    }
}

FieldValueSetFunction_pf DetermineFieldDataSetFunction(FieldDataType_e type, bool isNative, bool isAligned) {
    switch (type) {
    case FieldDataType_Float: return pickSet<float>(isNative, isAligned);
    case FieldDataType_Double: return pickSet<double>(isNative, isAligned);
    case FieldDataType_LongInt: return pickSet<int32_t>(isNative, isAligned);
    case FieldDataType_ShortInt: return pickSet<int16_t>(isNative, isAligned);
    case FieldDataType_Byte: return &setByte;
    case FieldDataType_Bit: return &setBit;
    default: REQUIRE(IsValidFieldDataType(type)); return nullptr;
    }
}

bool EquivalentValues(double a, double b, FieldDataType_e type) {
    switch (type) {
    case FieldDataType_Float: return clipToType<float>(a) == clipToType<float>(b);
    case FieldDataType_Double: return clipToType<double>(a) == clipToType<double>(b);
    case FieldDataType_LongInt: return clipToType<int32_t>(a) == clipToType<int32_t>(b);
    case FieldDataType_ShortInt: return clipToType<int16_t>(a) == clipToType<int16_t>(b);
    case FieldDataType_Byte: return clipToType<uint8_t>(a) == clipToType<uint8_t>(b);
    case FieldDataType_Bit: return (a < 1.0) == (b < 1.0);
    default: REQUIRE(IsValidFieldDataType(type)); return false;
    }
}

void CopyUnalignedTypedValueArray(FieldDataType_e type, void *dstArray, LgIndex_t dstStart, const void *srcArray,
                                  LgIndex_t srcStart, LgIndex_t srcEnd) {
    REQUIRE(dstArray != nullptr && srcArray != nullptr);
    REQUIRE(dstStart >= 0 && srcStart >= 0);
    if (srcEnd < srcStart) return;
    if (type == FieldDataType_Bit) {
        const auto *src = static_cast<const uint8_t *>(srcArray);
        auto *dst = static_cast<uint8_t *>(dstArray);
        for (LgIndex_t s = srcStart, d = dstStart; s <= srcEnd; s++, d++) {
            uint8_t mask = static_cast<uint8_t>(1u << (d & 7));
            if ((src[s >> 3] >> (s & 7)) & 1)
                dst[d >> 3] = static_cast<uint8_t>(dst[d >> 3] | mask);
            else
                dst[d >> 3] = static_cast<uint8_t>(dst[d >> 3] & ~mask);
        }
        return;
    }
    size_t size = static_cast<size_t>(FieldDataTypeSize(type));
    memmove(static_cast<char *>(dstArray) + static_cast<size_t>(dstStart) * size,
            static_cast<const char *>(srcArray) + static_cast<size_t>(srcStart) * size,
            static_cast<size_t>(srcEnd - srcStart + 1) * size);
}

void CopyTypedValueArray(FieldDataType_e type, void *dstArray, LgIndex_t dstStart, const void *srcArray,
                         LgIndex_t srcStart, LgIndex_t srcEnd) {
    REQUIRE(reinterpret_cast<uintptr_t>(dstArray) % static_cast<uintptr_t>(FieldDataTypeSize(type)) == 0);
    REQUIRE(reinterpret_cast<uintptr_t>(srcArray) % static_cast<uintptr_t>(FieldDataTypeSize(type)) == 0);
    CopyUnalignedTypedValueArray(type, dstArray, dstStart, srcArray, srcStart, srcEnd);
}

void SwapBytesInUnalignedTypedValueArray(FieldDataType_e type, void *array, LgIndex_t start, LgIndex_t count) {
    REQUIRE(array != nullptr && start >= 0 && count >= 0);
    int size = FieldDataTypeSize(type);
    if (type == FieldDataType_Byte || type == FieldDataType_Bit) return;
    auto *bytes = static_cast<char *>(array) + static_cast<size_t>(start) * static_cast<size_t>(size);
    for (LgIndex_t v = 0; v < count; v++, bytes += size) {
        if (size == 2) {
            uint16_t u;
            memcpy(&u, bytes, 2);
            u = __builtin_bswap16(u);
            memcpy(bytes, &u, 2);
        } else if (size == 4) {
            uint32_t u;
            memcpy(&u, bytes, 4);
            u = __builtin_bswap32(u);
            memcpy(bytes, &u, 4);
        } else {
            uint64_t u;
            memcpy(&u, bytes, 8);
            u = __builtin_bswap64(u);
            memcpy(bytes, &u, 8);
        }
    }
}

void SwapBytesInTypedValueArray(FieldDataType_e type, void *array, LgIndex_t start, LgIndex_t count) {
    REQUIRE(reinterpret_cast<uintptr_t>(array) % static_cast<uintptr_t>(FieldDataTypeSize(type)) == 0);
    SwapBytesInUnalignedTypedValueArray(type, array, start, count);
}

// ---- the object -------------------------------------------------------------------------------

FieldData_a FieldDataAlloc() { return allocObject(true); }

bool FieldDataDefineData(FieldData_a fieldData, LgIndex_t numValues, FieldDataType_e type, ValueLocation_e location) {
    REQUIRE(fieldData != nullptr);
    REQUIRE(numValues >= 0);
    REQUIRE(IsValidFieldDataType(type));
    REQUIRE(location == ValueLocation_CellCentered || location == ValueLocation_Nodal);
    FieldDataCleanup(fieldData);
    if (!Thread_InitMutex(&fieldData->ReadMutex) || !Thread_InitMutex(&fieldData->WriteMutex)) {
        freeMutexes(fieldData);
        OutOfMemoryMsg();
        return false;
    }
    fieldData->NumValues = numValues;
    fieldData->Type = type;
    fieldData->Location = location;
    fieldData->IsNativeByteOrder = true;
    fieldData->IsAligned = true;
    fieldData->GetFunction = DetermineFieldDataGetFunction(type, true, true);
    fieldData->SetFunction = DetermineFieldDataSetFunction(type, true, true);
    fieldData->OwnsStorage = true;
    return true;
}

bool FieldDataAllocData(FieldData_a fieldData, bool showErr) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    REQUIRE(fieldData->Data == nullptr && fieldData->MemMap == nullptr);
    int64_t bytes = FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
    if (bytes > 0) {
        fieldData->Data = newmalloc(static_cast<size_t>(bytes));
        if (fieldData->Data == nullptr) {
            if (showErr) OutOfMemoryMsg();
            return false;
        }
    }
    fieldData->IsNativeByteOrder = true;
    fieldData->IsAligned = true;
    fieldData->IsMemMapFragmented = false;
    fieldData->GetFunction = DetermineFieldDataGetFunction(fieldData->Type, true, true);
    fieldData->SetFunction = DetermineFieldDataSetFunction(fieldData->Type, true, true);
    fieldData->IsReadable = true;
    fieldData->IsReadOnly = false;
    if (bytes > 0) DataLoadAccountForVarLoaded(fieldData);
    return true;
}

void FieldDataZeroNewStorage(FieldData_a fieldData) {
    if (fieldData->Data == nullptr || fieldData->MemMap != nullptr) return;
    memset(fieldData->Data, 0, static_cast<size_t>(FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type)));
}

void FieldDataDeallocData(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    bool released = false;
    if (fieldData->MemMap != nullptr) {
        MemMapUnmap(&fieldData->MemMap);
        released = true;
        // A mapping chose its functions by its own alignment and pieces; storage made later is
        // aligned and in one piece.
        fieldData->IsMemMapFragmented = false;
        fieldData->IsAligned = true;
        fieldData->GetFunction = DetermineFieldDataGetFunction(fieldData->Type, fieldData->IsNativeByteOrder, true);
        fieldData->SetFunction = DetermineFieldDataSetFunction(fieldData->Type, fieldData->IsNativeByteOrder, true);
    } else if (fieldData->Data != nullptr) {
        newfree(fieldData->Data);
        released = true;
    }
    fieldData->Data = nullptr;
    fieldData->IsReadable = false;
    if (released) DataLoadAccountForVarUnloaded(fieldData);
}

bool IsOffsetAlignedForFieldDataType(FieldDataType_e type, int64_t offset) {
    int size = FieldDataTypeSize(type);
    int boundary = size < 4 ? size : 4;
    return offset % boundary == 0;
}

bool FieldDataCanMemMapData(FieldDataType_e type, LgIndex_t numValues, bool layoutAllows) {
    if (!layoutAllows || !GeneralBase.UseMemoryMappedIO) return false;
    if (numValues <= 0 || numValues > MAXINDEX) return false;
    int64_t threshold = GeneralBase.MemoryMappedIOSizeThreshold > 0
                            ? static_cast<int64_t>(GeneralBase.MemoryMappedIOSizeThreshold)
                            : MemMapGetPageGranularity();
    return FieldDataGetBytesNeeded(numValues, type) >= threshold;
}

bool FieldDataMemMapData(FieldData_a fieldData, int fileDescriptor, int64_t offset, MemMapAccess_e access,
                         bool showErr) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    REQUIRE(fieldData->Data == nullptr && fieldData->MemMap == nullptr);
    if (fieldData->NumValues > MAXINDEX) {
        if (showErr) ErrMsg("Storage limit (%ld) exceeded for a single variable.", static_cast<long>(MAXINDEX));
        return false;
    }
    if (fieldData->NumValues > 0) {
        int64_t bytes = FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
        // Touching a mapped page beyond the end of the file is a bus error, not a read error.
        struct stat info;
        if (fstat(fileDescriptor, &info) != 0 || static_cast<int64_t>(info.st_size) < offset + bytes) return false;
        MemMap_s *map = MemMapMapFile(fileDescriptor, offset, bytes, access, true);
        if (map == nullptr) return false;
        fieldData->MemMap = map;
        fieldData->Data = MemMapGetMapping(map);
        fieldData->IsMemMapFragmented = MemMapGetMemFragCount(map) > 1;
        fieldData->IsAligned =
            reinterpret_cast<uintptr_t>(fieldData->Data) % static_cast<uintptr_t>(FieldDataTypeSize(fieldData->Type)) ==
            0;
        if (fieldData->IsMemMapFragmented) {
            fieldData->GetFunction = determineFragmentedGet(fieldData->Type, fieldData->IsNativeByteOrder);
            fieldData->SetFunction = determineFragmentedSet(fieldData->Type, fieldData->IsNativeByteOrder);
        } else {
            fieldData->GetFunction =
                DetermineFieldDataGetFunction(fieldData->Type, fieldData->IsNativeByteOrder, fieldData->IsAligned);
            fieldData->SetFunction =
                DetermineFieldDataSetFunction(fieldData->Type, fieldData->IsNativeByteOrder, fieldData->IsAligned);
        }
    }
    fieldData->IsReadable = true;
    fieldData->IsReadOnly = access == MemMapAccess_ReadOnly;
    if (fieldData->NumValues > 0) DataLoadAccountForVarLoaded(fieldData);
    return true;
}

FieldData_a FieldDataCopy(FieldData_a fieldData, bool storable) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    REQUIRE(fieldData->IsReadable);
    FieldData_a copy = allocObject(true);
    if (copy == nullptr) return nullptr;
    bool ok = FieldDataDefineData(copy, fieldData->NumValues, fieldData->Type, fieldData->Location);
    if (ok) ok = storable ? FieldDataAllocStorableData(copy, true) : FieldDataAllocData(copy, true);
    if (!ok) {
        FieldDataDealloc(&copy, false);
        return nullptr;
    }
    CopyFieldData(copy, fieldData);
    copy->IsMinMaxValid = fieldData->IsMinMaxValid;
    copy->Min = fieldData->Min;
    copy->Max = fieldData->Max;
    return copy;
}

void CopyFieldDataRange(FieldData_a dst, LgIndex_t dstStart, LgIndex_t dstStride, FieldData_a src,
                        LgIndex_t srcStart, LgIndex_t srcStride, LgIndex_t count) {
    REQUIRE(dst != nullptr && src != nullptr);
    REQUIRE(count >= 0 && dstStart >= 0 && srcStart >= 0);
    REQUIRE(count == 0 || (dstStart + (count - 1) * dstStride < dst->NumValues &&
                           srcStart + (count - 1) * srcStride < src->NumValues));
    if (count == 0) return;
    REQUIRE(dst->SetFunction != nullptr);
    // Same type, both arrays contiguous in this byte order: a block copy.
    if (dstStride == 1 && srcStride == 1 && dst->Type == src->Type && dst->Data != nullptr && src->Data != nullptr &&
        dst->IsNativeByteOrder && src->IsNativeByteOrder && !dst->IsMemMapFragmented && !src->IsMemMapFragmented &&
        src->GetFunction == DetermineFieldDataGetFunction(src->Type, true, src->IsAligned)) {
        CopyUnalignedTypedValueArray(dst->Type, dst->Data, dstStart, src->Data, srcStart, srcStart + count - 1);
        return;
    }
    for (LgIndex_t n = 0; n < count; n++)
        dst->SetFunction(dst, dstStart + n * dstStride, src->GetFunction(src, srcStart + n * srcStride));
}

void CopyFieldData(FieldData_a dst, FieldData_a src) {
    REQUIRE(dst != nullptr && src != nullptr && dst->NumValues == src->NumValues);
    CopyFieldDataRange(dst, 0, 1, src, 0, 1, src->NumValues);
}

void FieldDataCleanup(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    // An add-on's variable whose values the add-on brings was accounted when it became readable.
    bool accountAddOnUnload = fieldData->IsReadable && !fieldData->OwnsStorage && fieldData->Data == nullptr &&
                              IsFieldDataLoadOnDemandByAddOn(fieldData);
    if (fieldData->CleanupFunction != nullptr) fieldData->CleanupFunction(fieldData);
    FieldDataDeallocData(fieldData);
    if (accountAddOnUnload) DataLoadAccountForVarUnloaded(fieldData);
    freeMutexes(fieldData);
    // The identity of the object (its owners and its last use) outlives its contents.
    int32_t refCount = fieldData->RefCount;
    int32_t varShareRefCount = fieldData->VarShareRefCount;
    uint32_t loadGeneration = fieldData->LoadGeneration;
    resetContents(fieldData);
    fieldData->RefCount = refCount;
    fieldData->VarShareRefCount = varShareRefCount;
    fieldData->LoadGeneration = loadGeneration;
}

void FieldDataDealloc(FieldData_a *fieldData, bool doTrackVarSharing) {
    REQUIRE(fieldData != nullptr);
    if (*fieldData == nullptr) return;
    FieldData_a object = *fieldData;
    *fieldData = nullptr;
    if (doTrackVarSharing) object->VarShareRefCount--;
    object->RefCount--;
    if (object->RefCount < 1) {
        FieldDataCleanup(object);
        newfree(object);
    }
}

// ---- readable, writable, unloaded ---------------------------------------------------------------

namespace {

// The load steps, for a caller holding ReadMutex.
bool lockedMakeReadable(FieldData_a fieldData) {
    if (fieldData->IsReadable) return true;
    if (fieldData->OwnsStorage) {
        if (!FieldDataAllocData(fieldData, true)) return false;
        // An add-on's loader with its own unload function finds a zeroed array to fill.
        if (fieldData->Data != nullptr)
            memset(fieldData->Data, 0,
                   static_cast<size_t>(FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type)));
    }
    if (fieldData->LoadFunction == nullptr) return fieldData->IsReadable;
    bool ok = fieldData->LoadFunction(fieldData);
    if (ok && !fieldData->OwnsStorage && !IsFieldDataLoadOnDemandByOrvanex(fieldData)) {
        fieldData->IsReadable = true;
        DataLoadAccountForVarLoaded(fieldData);
    } else if (!ok && fieldData->OwnsStorage) {
        FieldDataDeallocData(fieldData);
    }
    return ok;
}

// Holds back sweeps while this thread holds a variable's mutex; declared before the mutex guards so
// that it lets go after them.
class SweepSuspension {
  public:
    SweepSuspension() { DataLoadSuspendSweeps(); }
    ~SweepSuspension() { DataLoadResumeSweeps(); }
    SweepSuspension(const SweepSuspension &) = delete;
    SweepSuspension &operator=(const SweepSuspension &) = delete;
};

// Stamps the variable as used by the present operation, before anything that can account, so that
// no sweep the load brings about takes the variable that was just loaded.
void stampGeneration(FieldData_a fieldData) { fieldData->LoadGeneration = DataLoadGetCurrentGeneration(); }

}  // namespace

bool FieldDataMakeReadable(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    stampGeneration(fieldData);
    SweepSuspension suspension;
    MutexLock lock(fieldData->ReadMutex);
    return lockedMakeReadable(fieldData);
}

bool FieldDataMakeWritable(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    stampGeneration(fieldData);
    SweepSuspension suspension;
    ReadWriteLock lock(fieldData);
    if (!lockedMakeReadable(fieldData)) return false;
    if (LockedIsFieldDataWritable(fieldData)) return true;

    FieldData_a copy = FieldDataCopy(fieldData, true);
    if (copy == nullptr) return false;  // out of memory, reported; the object is untouched

    // The old contents go with a temporary object of their own: its cleanup frees the mapping or
    // heap block and the old load record, but not the mutexes, which stay with the object.
    FieldData_s old = *fieldData;
    old.RefCount = 1;
    old.VarShareRefCount = 1;
    old.ReadMutex = nullptr;
    old.WriteMutex = nullptr;
    FieldDataCleanup(&old);

    // The copy's contents move in; the object keeps its identity: mutexes, counts and stamp.
    Mutex_a readMutex = fieldData->ReadMutex;
    Mutex_a writeMutex = fieldData->WriteMutex;
    int32_t refCount = fieldData->RefCount;
    int32_t varShareRefCount = fieldData->VarShareRefCount;
    uint32_t loadGeneration = fieldData->LoadGeneration;
    *fieldData = *copy;
    fieldData->ReadMutex = readMutex;
    fieldData->WriteMutex = writeMutex;
    fieldData->RefCount = refCount;
    fieldData->VarShareRefCount = varShareRefCount;
    fieldData->LoadGeneration = loadGeneration;
    freeMutexes(copy);
    newfree(copy);
    fieldData->IsMinMaxValid = false;
    return true;
}

bool FieldDataUnload(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    REQUIRE(IsFieldDataLoadOnDemand(fieldData));
    ReadWriteLock lock(fieldData);
    if (!fieldData->IsReadable) return true;
    if (fieldData->UnloadFunction != nullptr && !fieldData->UnloadFunction(fieldData)) return false;
    if (fieldData->OwnsStorage)
        FieldDataDeallocData(fieldData);
    else if (!IsFieldDataLoadOnDemandByOrvanex(fieldData))
        DataLoadAccountForVarUnloaded(fieldData);
    fieldData->IsReadable = false;
    return true;
}

bool LockedIsFieldDataReadable(const FieldData_s *fieldData) { return fieldData->IsReadable; }

bool LockedIsFieldDataWritable(const FieldData_s *fieldData) {
    return fieldData->IsReadable && !fieldData->IsReadOnly;
}

bool LockedIsFieldDataMemoryMapped(const FieldData_s *fieldData) { return fieldData->MemMap != nullptr; }

bool IsFieldDataReadable(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    MutexLock lock(fieldData->ReadMutex);
    return LockedIsFieldDataReadable(fieldData);
}

bool IsFieldDataWritable(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    ReadWriteLock lock(fieldData);
    return LockedIsFieldDataWritable(fieldData);
}

bool IsFieldDataMemoryMapped(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    MutexLock lock(fieldData->ReadMutex);
    return LockedIsFieldDataMemoryMapped(fieldData);
}

bool IsFieldDataPassive(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    return fieldData->LoadFunction == &passiveLoader;
}

bool IsFieldDataLoadOnDemand(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    return fieldData->LoadFunction != nullptr && !IsFieldDataPassive(fieldData);
}

bool IsFieldDataLoadOnDemandByOrvanex(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    return fieldData->LoadFunction == &OrvanexVarLoader || fieldData->LoadFunction == &OrvanexStorableVarLoader;
}

bool IsFieldDataLoadOnDemandByAddOn(const FieldData_s *fieldData) {
    return IsFieldDataLoadOnDemand(fieldData) && !IsFieldDataLoadOnDemandByOrvanex(fieldData);
}

bool IsFieldDataStorable(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    return fieldData->LoadFunction == &OrvanexStorableVarLoader;
}

bool IsFieldDataUsable(const FieldData_s *fieldData) {
    if (fieldData == nullptr) return false;
    if (fieldData->OwnsStorage && (fieldData->NumValues == 0 || fieldData->Data != nullptr)) return true;
    if (IsFieldDataPassive(fieldData) || IsFieldDataLoadOnDemand(fieldData)) return true;
    return fieldData->GetFunction != nullptr && !fieldData->OwnsStorage;
}

void FieldDataMakePassive(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    ReadWriteLock lock(fieldData);
    if (fieldData->CleanupFunction != nullptr) fieldData->CleanupFunction(fieldData);
    FieldDataDeallocData(fieldData);
    fieldData->ClientData = 0;
    fieldData->OwnsStorage = false;
    fieldData->LoadFunction = &passiveLoader;
    fieldData->UnloadFunction = nullptr;
    fieldData->CleanupFunction = nullptr;
    fieldData->GetFunction = &passiveGet;
    fieldData->SetFunction = nullptr;
    fieldData->IsReadable = true;
    fieldData->IsReadOnly = true;
    fieldData->IsMinMaxValid = true;
    fieldData->Min = 0.0;
    fieldData->Max = 0.0;
}

// ---- min and max --------------------------------------------------------------------------------

bool IsFieldDataMinMaxValid(const FieldData_s *fieldData) {
    REQUIRE(fieldData != nullptr);
    return fieldData->IsMinMaxValid;
}

void FieldDataGetMinMax(const FieldData_s *fieldData, double *min, double *max) {
    REQUIRE(fieldData != nullptr && fieldData->IsMinMaxValid);
    REQUIRE(min != nullptr && max != nullptr);
    *min = fieldData->Min;
    *max = fieldData->Max;
}

void FieldDataSetMinMax(FieldData_a fieldData, double min, double max) {
    REQUIRE(fieldData != nullptr);
    fieldData->Min = min;
    fieldData->Max = max;
    fieldData->IsMinMaxValid = true;
}

void FieldDataInvalidateMinMax(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr);
    fieldData->IsMinMaxValid = false;
}

namespace {

// Visits first + i + j*iDim + k*iDim*jDim for i < iEnd, j < jEnd, k < kEnd; `read` gives the value
// at an index.
template <typename Reader>
bool minMaxOver(int64_t first, LgIndex_t iEnd, LgIndex_t jEnd, LgIndex_t kEnd, int64_t iDim, int64_t jDim,
                Reader read, double *min, double *max) {
    double lo = 1.0E150;
    double hi = -1.0E150;
    bool any = false;
    for (LgIndex_t k = 0; k < kEnd; k++)
        for (LgIndex_t j = 0; j < jEnd; j++) {
            int64_t base = first + j * iDim + k * iDim * jDim;
            for (LgIndex_t i = 0; i < iEnd; i++) {
                double value = read(base + i);
                if (value < lo) lo = value;
                if (value > hi) hi = value;
                any = true;
            }
        }
    *min = lo;
    *max = hi;
    return any;
}

bool calcMinMax(FieldData_a fieldData, int64_t first, LgIndex_t iEnd, LgIndex_t jEnd, LgIndex_t kEnd, int64_t iDim,
                int64_t jDim, double *min, double *max) {
    REQUIRE(fieldData != nullptr && fieldData->IsReadable);
    REQUIRE(min != nullptr && max != nullptr);
    REQUIRE(iEnd <= 0 || jEnd <= 0 || kEnd <= 0 ||
            first + (iEnd - 1) + (jEnd - 1) * iDim + (kEnd - 1) * iDim * jDim < fieldData->NumValues);
    // The two plain types read their arrays directly: this runs over whole variables.
    if (fieldData->GetFunction == &GetFieldValueForFloat) {
        const auto *values = static_cast<const float *>(fieldData->Data);
        return minMaxOver(first, iEnd, jEnd, kEnd, iDim, jDim, [values](int64_t n) { return double(values[n]); }, min,
                          max);
    }
    if (fieldData->GetFunction == &GetFieldValueForDouble) {
        const auto *values = static_cast<const double *>(fieldData->Data);
        return minMaxOver(first, iEnd, jEnd, kEnd, iDim, jDim, [values](int64_t n) { return values[n]; }, min, max);
    }
    return minMaxOver(
        first, iEnd, jEnd, kEnd, iDim, jDim,
        [fieldData](int64_t n) { return fieldData->GetFunction(fieldData, static_cast<LgIndex_t>(n)); }, min, max);
}

}  // namespace

bool FieldDataCalcMinMaxOrdered(FieldData_a fieldData, LgIndex_t iEnd, LgIndex_t jEnd, LgIndex_t kEnd,
                                LgIndex_t iDim, LgIndex_t jDim, double *min, double *max) {
    REQUIRE(iEnd <= iDim && jEnd <= jDim);
    return calcMinMax(fieldData, 0, iEnd, jEnd, kEnd, iDim, jDim, min, max);
}

bool FieldDataCalcMinMaxRange(FieldData_a fieldData, LgIndex_t start, LgIndex_t end, double *min, double *max) {
    REQUIRE(fieldData != nullptr && start >= 0 && end <= fieldData->NumValues);
    return calcMinMax(fieldData, start, end - start, 1, 1, end - start, 1, min, max);
}

// ---- scratch and add-on forms -------------------------------------------------------------------

FieldData_a AllocScratchNodalFieldDataPtr(LgIndex_t numValues, FieldDataType_e type, bool showErr) {
    FieldData_a fieldData = allocObject(showErr);
    if (fieldData == nullptr) return nullptr;
    if (!FieldDataDefineData(fieldData, numValues, type, ValueLocation_Nodal) ||
        !FieldDataAllocData(fieldData, showErr)) {
        FieldDataDealloc(&fieldData, false);
        return nullptr;
    }
    return fieldData;
}

void DeallocScratchNodalFieldDataPtr(FieldData_a *fieldData) { FieldDataDealloc(fieldData, false); }

namespace {

OrvanexStorableVarLoadInfo_s *allocStorableRecord() {
    auto *record = static_cast<OrvanexStorableVarLoadInfo_s *>(newmalloc(sizeof(OrvanexStorableVarLoadInfo_s)));
    if (record == nullptr) return nullptr;
    memset(static_cast<void *>(record), 0, sizeof(OrvanexStorableVarLoadInfo_s));
    return record;
}

bool storableUsesMemMap(const FieldData_s *fieldData) {
    return GeneralBase.LoadOnDemandDataStoreStrategy == DataStoreStrategy_Auto &&
           FieldDataCanMemMapData(fieldData->Type, fieldData->NumValues, true);
}

void setStorableFunctions(FieldData_a fieldData, OrvanexStorableVarLoadInfo_s *record) {
    fieldData->ClientData = reinterpret_cast<ArbParam_t>(record);
    fieldData->LoadFunction = &OrvanexStorableVarLoader;
    fieldData->UnloadFunction = &OrvanexStorableVarUnload;
    fieldData->CleanupFunction = &OrvanexStorableVarCleanup;
    fieldData->OwnsStorage = false;
}

}  // namespace

bool FieldDataSetCustomLOD(FieldData_a fieldData, FieldDataLoadFunction_pf loadFunction,
                           FieldDataUnloadFunction_pf unloadFunction, FieldDataCleanupFunction_pf cleanupFunction,
                           FieldValueGetFunction_pf getFunction, FieldValueSetFunction_pf setFunction,
                           ArbParam_t clientData) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    if (!FieldDataDefineData(fieldData, fieldData->NumValues, fieldData->Type, fieldData->Location)) return false;
    FieldDataLoadFunction_pf load = loadFunction != nullptr ? loadFunction : &addOnNoOpLoad;
    FieldDataCleanupFunction_pf cleanup = cleanupFunction != nullptr ? cleanupFunction : &addOnNoOpCleanup;
    if (getFunction == nullptr && unloadFunction == nullptr && GeneralBase.LoadOnDemandAllow) {
        // The add-on loads once; from then on the temporary cache keeps the values.
        OrvanexStorableVarLoadInfo_s *record = allocStorableRecord();
        if (record == nullptr) {
            OutOfMemoryMsg();
            return false;
        }
        record->UseMemMap = storableUsesMemMap(fieldData);
        record->AddOnLoader = load;
        record->AddOnCleanup = cleanup;
        record->ClientData = clientData;
        setStorableFunctions(fieldData, record);
    } else {
        fieldData->ClientData = clientData;
        fieldData->LoadFunction = load;
        fieldData->UnloadFunction = unloadFunction != nullptr ? unloadFunction : &addOnNoOpUnload;
        fieldData->CleanupFunction = cleanup;
        if (getFunction != nullptr) {
            fieldData->GetFunction = getFunction;
            fieldData->SetFunction = setFunction;
            fieldData->OwnsStorage = false;
            fieldData->IsReadOnly = setFunction == nullptr;
        }
    }
    if (!GeneralBase.LoadOnDemandAllow) return FieldDataMakeReadable(fieldData);
    return true;
}

// ---- the temporary cache ------------------------------------------------------------------------

namespace {

OrvanexStorableVarLoadInfo_s *storableRecordOf(const FieldData_s *fieldData) {
    REQUIRE(fieldData->ClientData != 0);
    return reinterpret_cast<OrvanexStorableVarLoadInfo_s *>(fieldData->ClientData);
}

// Makes a cache file of the variable's full length in the temporary directory and maps it
// read-write. On failure nothing is kept (the file is deleted) and *path holds whatever name was
// tried, for the message.
bool createMappedCacheFile(FieldData_a fieldData, std::string *path, char **ownPath) {
    *ownPath = nullptr;
    if (!GetRandomFileName(path)) return false;
    FileCloser file(fopen(path->c_str(), "w+b"));
    int64_t bytes = FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
    bool ok = file.get() != nullptr && bytes > 0 && fseeko(file.get(), bytes - 1, SEEK_SET) == 0 &&
              fputc(0, file.get()) != EOF && fflush(file.get()) == 0;
    if (ok) {
        *ownPath = DupString(path->c_str());
        ok = *ownPath != nullptr;
    }
    if (ok) ok = FieldDataMemMapData(fieldData, fileno(file.get()), 0, MemMapAccess_ReadWriteShared, false);
    file.close();
    if (!ok) {
        newfree(*ownPath);
        *ownPath = nullptr;
        unlink(path->c_str());
    }
    return ok;
}

void warnCacheFailure(const std::string &path) {
    if (!firstTime(warnedCacheVariable)) return;
    std::string directory = path.empty() ? OrvanexTempDirectory : directoryOf(path);
    if (!directory.empty())
        Warning("Unable to cache variable to the temporary directory. Orvanex will attempt to use heap memory instead. "
                "Check access permissions and available space in the %s directory.",
                directory.c_str());
    else
        Warning("Unable to cache variable to the temporary directory. Orvanex will attempt to use heap memory instead. "
                "Check available space and access permissions to the directory containing the file, %s.",
                path.c_str());
}

void reportStoredOpenFailure(const char *path) {
    ErrMsg("Unable to load stored variable from the temporary directory. Check access permissions of the file %s or "
           "one of it's parent directories. Correct the the problem and try again.",
           path);
}

// The first load of an add-on's storable variable: storage as for a new storable variable, then
// the add-on fills it once and lets go of its client data.
bool firstAddOnLoad(FieldData_a fieldData, OrvanexStorableVarLoadInfo_s *record) {
    CHECK(record->AddOnLoader != nullptr);
    bool stored = false;
    if (record->UseMemMap) {
        std::string path;
        stored = createMappedCacheFile(fieldData, &path, &record->Path);
        if (!stored) {
            if (firstTime(warnedStoreMap))
                Warning("Unable to store varaible using a memory map. Orvanex will attempt to use heap memory instead.");
            record->UseMemMap = false;
        }
    }
    if (!stored) {
        if (!FieldDataAllocData(fieldData, true)) return false;
        if (fieldData->Data != nullptr)
            memset(fieldData->Data, 0,
                   static_cast<size_t>(FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type)));
    }
    ArbParam_t ownRecord = fieldData->ClientData;
    fieldData->ClientData = record->ClientData;
    bool ok = record->AddOnLoader(fieldData);
    if (ok && record->AddOnCleanup != nullptr) record->AddOnCleanup(fieldData);
    fieldData->ClientData = ownRecord;
    if (!ok) {
        FieldDataDeallocData(fieldData);
        if (record->Path != nullptr) {
            unlink(record->Path);
            newfree(record->Path);
            record->Path = nullptr;
        }
        return false;
    }
    record->AddOnLoader = nullptr;
    record->AddOnCleanup = nullptr;
    record->ClientData = 0;
    fieldData->IsReadOnly = false;
    return true;
}

}  // namespace

bool FieldDataAllocStorableData(FieldData_a fieldData, bool showErr) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    REQUIRE(fieldData->Data == nullptr && fieldData->MemMap == nullptr && fieldData->ClientData == 0);
    if (!GeneralBase.LoadOnDemandAllow) return FieldDataAllocData(fieldData, showErr);
    OrvanexStorableVarLoadInfo_s *record = allocStorableRecord();
    if (record == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return false;
    }
    record->UseMemMap = storableUsesMemMap(fieldData);
    bool stored = false;
    if (record->UseMemMap) {
        std::string path;
        stored = createMappedCacheFile(fieldData, &path, &record->Path);
        if (!stored) {
            warnCacheFailure(path);
            record->UseMemMap = false;
        }
    }
    if (!stored && !FieldDataAllocData(fieldData, showErr)) {
        newfree(record);
        return false;
    }
    setStorableFunctions(fieldData, record);
    return true;
}

bool OrvanexStorableVarLoader(FieldData_a fieldData) {
    OrvanexStorableVarLoadInfo_s *record = storableRecordOf(fieldData);
    if (record->Path == nullptr) return firstAddOnLoad(fieldData, record);

    int64_t bytes = FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
    if (record->UseMemMap) {
        FileCloser file(fopen(record->Path, "r+b"));
        if (file.get() == nullptr) {
            reportStoredOpenFailure(record->Path);
            return false;
        }
        if (fileSize(file.get()) < bytes) {
            ErrMsg("Unable to load variable from %s", record->Path);
            return false;
        }
        if (FieldDataMemMapData(fieldData, fileno(file.get()), 0, MemMapAccess_ReadWriteShared, false)) {
            fieldData->IsReadOnly = false;
            return true;
        }
        if (firstTime(warnedLoadStoredMap))
            Warning("Unable to load stored varaible from %s using a memory map. Orvanex will attempt to use heap memory "
                    "instead.",
                    record->Path);
    }

    FileCloser file(fopen(record->Path, "rb"));
    if (file.get() == nullptr) {
        reportStoredOpenFailure(record->Path);
        return false;
    }
    if (!FieldDataAllocData(fieldData, true)) return false;
    if (bytes > 0 && fread(fieldData->Data, 1, static_cast<size_t>(bytes), file.get()) != static_cast<size_t>(bytes)) {
        ErrMsg("Unable to load variable from %s", record->Path);
        FieldDataDeallocData(fieldData);
        return false;
    }
    // The values are on the heap now: truncating the file gives its disk space back until the
    // next unload writes it again.
    file.reset(freopen(record->Path, "w+b", file.get()));
    fieldData->IsReadOnly = false;
    return true;
}

bool OrvanexStorableVarUnload(FieldData_a fieldData) {
    OrvanexStorableVarLoadInfo_s *record = storableRecordOf(fieldData);
    if (fieldData->MemMap != nullptr) {
        // A shared mapping of the cache file: the values are in the file already.
        FieldDataDeallocData(fieldData);
        return true;
    }
    bool tookNewName = false;
    bool ok = true;
    std::string path;
    if (record->Path == nullptr) {
        ok = GetRandomFileName(&path);
        if (ok) {
            record->Path = DupString(path.c_str());
            ok = record->Path != nullptr;
            tookNewName = ok;
        }
    } else {
        path = record->Path;
    }
    if (ok) {
        FileCloser file(fopen(path.c_str(), "wb"));
        int64_t bytes = FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
        ok = file.get() != nullptr &&
             (bytes == 0 || fwrite(fieldData->Data, 1, static_cast<size_t>(bytes), file.get()) ==
                                static_cast<size_t>(bytes));
        ok = file.close() && ok;
    }
    if (!ok) {
        if (firstTime(warnedStoreVariable)) {
            std::string directory = path.empty() ? OrvanexTempDirectory : directoryOf(path);
            if (!directory.empty())
                Warning("Unable to store varaible to the temporary directory. Check access permissions and available "
                        "space in the %s directory.",
                        directory.c_str());
            else
                Warning("Unable to store varaible to the temporary directory. Check access permissions and available "
                        "space in the UNKNOWN directory.");
        }
        if (tookNewName) {
            unlink(record->Path);
            newfree(record->Path);
            record->Path = nullptr;
        }
        return false;  // the values stay on the heap
    }
    FieldDataDeallocData(fieldData);
    return true;
}

void OrvanexStorableVarCleanup(FieldData_a fieldData) {
    OrvanexStorableVarLoadInfo_s *record = storableRecordOf(fieldData);
    if (record->AddOnCleanup != nullptr) {
        ArbParam_t ownRecord = fieldData->ClientData;
        fieldData->ClientData = record->ClientData;
        record->AddOnCleanup(fieldData);
        fieldData->ClientData = ownRecord;
    }
    FieldDataDeallocData(fieldData);
    if (record->Path != nullptr) {
        unlink(record->Path);
        newfree(record->Path);
    }
    newfree(record);
    fieldData->ClientData = 0;
}

// ---- variables of a data file -------------------------------------------------------------------

namespace {

// File names of load records, one copy each: a data set of many zones and variables holds one
// record per zone and variable, all naming the same few files.
struct InternedNames {
    std::mutex Mutex;
    std::unordered_map<std::string, long> Counts;  // name -> records that use it
};
// Never destroyed, so that a record freed late in shutdown still finds it.
InternedNames &internedNames = *new InternedNames;

const char *internFileName(const char *name) {
    std::lock_guard<std::mutex> lock(internedNames.Mutex);
    auto entry = internedNames.Counts.emplace(name, 0).first;
    entry->second++;
    return entry->first.c_str();
}

void releaseFileName(const char *name) {
    if (name == nullptr) return;
    std::lock_guard<std::mutex> lock(internedNames.Mutex);
    auto entry = internedNames.Counts.find(name);
    if (entry != internedNames.Counts.end() && --entry->second == 0) internedNames.Counts.erase(entry);
}

OrvanexVarLoadInfo_s *varRecordOf(const FieldData_s *fieldData) {
    REQUIRE(fieldData->ClientData != 0);
    return reinterpret_cast<OrvanexVarLoadInfo_s *>(fieldData->ClientData);
}

void freeVarRecord(OrvanexVarLoadInfo_s *record) {
    if (record == nullptr) return;
    releaseFileName(record->FileName);
    newfree(record->Skip);
    newfree(record);
}

// A deep copy of a load record; null when out of memory.
OrvanexVarLoadInfo_s *copyVarRecord(const OrvanexVarLoadInfo_s *source) {
    auto *record = static_cast<OrvanexVarLoadInfo_s *>(newmalloc(sizeof(OrvanexVarLoadInfo_s)));
    if (record == nullptr) return nullptr;
    *record = *source;
    record->FileName = internFileName(source->FileName);
    record->Skip = nullptr;
    if (source->Skip != nullptr) {
        record->Skip = static_cast<LgIndex_t *>(newmalloc(3 * sizeof(LgIndex_t)));
        if (record->Skip != nullptr) memcpy(record->Skip, source->Skip, 3 * sizeof(LgIndex_t));
    }
    if (record->FileName == nullptr || (source->Skip != nullptr && record->Skip == nullptr)) {
        freeVarRecord(record);
        return nullptr;
    }
    return record;
}

bool isSkipping(const LgIndex_t *skip) {
    return skip != nullptr && (skip[0] != 1 || skip[1] != 1 || skip[2] != 1);
}

// Values that remain of n when every skip-th is kept, and the last one too.
int64_t countAfterSkip(LgIndex_t n, LgIndex_t skip) {
    if (n <= 0) return 0;
    int64_t kept = (n - 1) / skip + 1;
    if ((n - 1) % skip != 0) kept++;
    return kept;
}

bool keptBySkip(LgIndex_t index, LgIndex_t n, LgIndex_t skip) { return index % skip == 0 || index == n - 1; }

// Where the values of one variable lie in its file: the first at `offset`, then one every `step`
// bytes (the value size for block data, the point size for point data).
struct FileLayout {
    FILE *File;
    int64_t Offset;
    int64_t Step;
    int ValueSize;
};

// Reads `count` values starting with value `first` of the file layout into `target`, packed.
// Block data is one fread; point data is read in chunks of whole points and the variable's value
// picked from each, which is the same as seeking past the rest of every point.
bool readValuesAt(const FileLayout &layout, int64_t first, int64_t count, void *target) {
    if (count <= 0) return true;
    if (fseeko(layout.File, layout.Offset + first * layout.Step, SEEK_SET) != 0) return false;
    auto *out = static_cast<char *>(target);
    if (layout.Step == layout.ValueSize)
        return fread(out, 1, static_cast<size_t>(count * layout.ValueSize), layout.File) ==
               static_cast<size_t>(count * layout.ValueSize);
    constexpr int64_t ChunkBytes = 1 << 20;
    int64_t pointsPerChunk = ChunkBytes / layout.Step > 0 ? ChunkBytes / layout.Step : 1;
    std::string chunk;
    for (int64_t done = 0; done < count;) {
        int64_t points = count - done < pointsPerChunk ? count - done : pointsPerChunk;
        // The last point of the block need not be whole: the file may end right after its value.
        int64_t bytes = (points - 1) * layout.Step + layout.ValueSize;
        chunk.resize(static_cast<size_t>(bytes));
        if (fread(chunk.data(), 1, static_cast<size_t>(bytes), layout.File) != static_cast<size_t>(bytes)) return false;
        for (int64_t p = 0; p < points; p++)
            memcpy(out + (done + p) * layout.ValueSize, chunk.data() + p * layout.Step,
                   static_cast<size_t>(layout.ValueSize));
        done += points;
        if (done < count && fseeko(layout.File, layout.Step - layout.ValueSize, SEEK_CUR) != 0) return false;
    }
    return true;
}

// A nodal ordered block read with skipping: keeps the values at positions that are a multiple of
// the skip, or last in their direction, in I, J and K.
bool readSkippedBlock(const FileLayout &layout, const OrvanexVarLoadInfo_s *record, FieldData_a fieldData) {
    LgIndex_t iMax = record->IMax, jMax = record->JMax, kMax = record->KMax;
    const LgIndex_t *skip = record->Skip;
    LgIndex_t target = 0;
    if (fieldData->Type == FieldDataType_Bit) {
        // Bits are not addressable one by one in the file: take the whole block and pick.
        int64_t total = static_cast<int64_t>(iMax) * jMax * kMax;
        std::string block(static_cast<size_t>((total + 7) / 8), '\0');
        if (!readValuesAt(layout, 0, static_cast<int64_t>(block.size()), block.data())) return false;
        for (LgIndex_t k = 0; k < kMax; k++)
            for (LgIndex_t j = 0; j < jMax; j++)
                for (LgIndex_t i = 0; i < iMax; i++)
                    if (keptBySkip(i, iMax, skip[0]) && keptBySkip(j, jMax, skip[1]) && keptBySkip(k, kMax, skip[2]))
                        CopyUnalignedTypedValueArray(FieldDataType_Bit, fieldData->Data, target++, block.data(),
                                                     i + j * iMax + k * iMax * jMax,
                                                     i + j * iMax + k * iMax * jMax);
        return true;
    }
    std::string line(static_cast<size_t>(iMax) * static_cast<size_t>(layout.ValueSize), '\0');
    auto *out = static_cast<char *>(fieldData->Data);
    for (LgIndex_t k = 0; k < kMax; k++) {
        if (!keptBySkip(k, kMax, skip[2])) continue;
        for (LgIndex_t j = 0; j < jMax; j++) {
            if (!keptBySkip(j, jMax, skip[1])) continue;
            if (!readValuesAt(layout, static_cast<int64_t>(j) * iMax + static_cast<int64_t>(k) * iMax * jMax, iMax,
                              line.data()))
                return false;
            for (LgIndex_t i = 0; i < iMax; i++)
                if (keptBySkip(i, iMax, skip[0]))
                    memcpy(out + static_cast<size_t>(target++) * static_cast<size_t>(layout.ValueSize),
                           line.data() + static_cast<size_t>(i) * static_cast<size_t>(layout.ValueSize),
                           static_cast<size_t>(layout.ValueSize));
        }
    }
    CHECK(target == fieldData->NumValues);
    return true;
}

// An ordered cell-centred block that holds only the real cells: each line of cells goes to the
// start of its I line in the ghost layout, so the ghost slots keep their zero. A zone with only
// one direction of cells has no ghosts between its cells and is read at once.
bool readClassicOrderedCCBlock(const FileLayout &layout, const OrvanexVarLoadInfo_s *record, FieldData_a fieldData) {
    LgIndex_t iMax = record->IMax, jMax = record->JMax, kMax = record->KMax;
    int directions = (iMax > 1) + (jMax > 1) + (kMax > 1);
    int64_t bytes = FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type);
    memset(fieldData->Data, 0, static_cast<size_t>(bytes));
    if (directions <= 1) {
        int64_t count = fieldData->Type == FieldDataType_Bit ? bytes : fieldData->NumValues;
        return readValuesAt(layout, 0, count, fieldData->Data);
    }
    LgIndex_t iCells = iMax > 1 ? iMax - 1 : 1;
    LgIndex_t jCells = jMax > 1 ? jMax - 1 : 1;
    LgIndex_t kCells = kMax > 1 ? kMax - 1 : 1;
    if (fieldData->Type == FieldDataType_Bit) {
        int64_t cells = static_cast<int64_t>(iCells) * jCells * kCells;
        std::string block(static_cast<size_t>((cells + 7) / 8), '\0');
        if (!readValuesAt(layout, 0, static_cast<int64_t>(block.size()), block.data())) return false;
        LgIndex_t cell = 0;
        for (LgIndex_t k = 0; k < kCells; k++)
            for (LgIndex_t j = 0; j < jCells; j++, cell += iCells)
                CopyUnalignedTypedValueArray(FieldDataType_Bit, fieldData->Data, j * iMax + k * iMax * jMax,
                                             block.data(), cell, cell + iCells - 1);
        return true;
    }
    auto *out = static_cast<char *>(fieldData->Data);
    int64_t line = 0;
    for (LgIndex_t k = 0; k < kCells; k++)
        for (LgIndex_t j = 0; j < jCells; j++, line++) {
            int64_t slot = static_cast<int64_t>(j) * iMax + static_cast<int64_t>(k) * iMax * jMax;
            if (!readValuesAt(layout, line * iCells, iCells, out + slot * layout.ValueSize)) return false;
        }
    return true;
}

// How many values of the variable the file's block holds: the whole I x J x K block when it is
// skipped, the real cells only for a classic ordered cell-centred block.
int64_t valuesInFile(const OrvanexVarLoadInfo_s *record, const FieldData_s *fieldData) {
    if (isSkipping(record->Skip)) return static_cast<int64_t>(record->IMax) * record->JMax * record->KMax;
    bool isOrderedCC = !ZoneTypeIsFE(record->ZoneType) && fieldData->Location == ValueLocation_CellCentered;
    if (isOrderedCC && record->DataValueStructure == DataValueStructure_Classic &&
        (record->IMax > 1) + (record->JMax > 1) + (record->KMax > 1) > 1) {
        int64_t iCells = record->IMax > 1 ? record->IMax - 1 : 1;
        int64_t jCells = record->JMax > 1 ? record->JMax - 1 : 1;
        int64_t kCells = record->KMax > 1 ? record->KMax - 1 : 1;
        return iCells * jCells * kCells;
    }
    return fieldData->NumValues;
}

bool readVariable(FILE *file, const OrvanexVarLoadInfo_s *record, FieldData_a fieldData) {
    FileLayout layout;
    layout.File = file;
    layout.Offset = record->Offset;
    layout.ValueSize = FieldDataTypeSize(fieldData->Type);
    layout.Step = record->Stride > 1 ? record->PointBytes : layout.ValueSize;
    bool isOrderedCC = !ZoneTypeIsFE(record->ZoneType) && fieldData->Location == ValueLocation_CellCentered;
    if (isSkipping(record->Skip)) {
        CHECK(!isOrderedCC);  // refused when the variable was set up
        return readSkippedBlock(layout, record, fieldData);
    }
    if (isOrderedCC && record->DataValueStructure == DataValueStructure_Classic)
        return readClassicOrderedCCBlock(layout, record, fieldData);
    int64_t count = fieldData->Type == FieldDataType_Bit
                        ? FieldDataGetBytesNeeded(fieldData->NumValues, fieldData->Type)
                        : fieldData->NumValues;
    return readValuesAt(layout, 0, count, fieldData->Data);
}

}  // namespace

bool LoadBinaryBlockVariable(const char *fileName, DataValueStructure_e structure, bool isTempOrRemote, int64_t offset,
                             LgIndex_t stride, const LgIndex_t *skip, const ZoneSpec_s *zoneSpec, FieldDataType_e type,
                             bool isNative, ValueLocation_e location, FieldData_a fieldData, LgIndex_t pointBytes,
                             LgIndex_t valueOffsetInPoint) {
    REQUIRE(fileName != nullptr && zoneSpec != nullptr && fieldData != nullptr);
    REQUIRE(offset >= 0 && stride >= 1);
    REQUIRE(location == ValueLocation_CellCentered || location == ValueLocation_Nodal);
    REQUIRE(skip == nullptr || (skip[0] >= 1 && skip[1] >= 1 && skip[2] >= 1));
    if (!IsValidFieldDataType(type)) {
        ErrMsg("Binary datafile corrupted!");
        return false;
    }
    bool isFE = ZoneTypeIsFE(zoneSpec->Type);
    int valueSize = FieldDataTypeSize(type);
    if (stride > 1) {
        // Bits of one variable cannot be spread over points; a point must hold the value.
        if (pointBytes == 0) pointBytes = stride * valueSize;
        if (type == FieldDataType_Bit || valueOffsetInPoint < 0 || valueOffsetInPoint + valueSize > pointBytes) {
            ErrMsg("Binary datafile corrupted!");
            return false;
        }
    } else {
        pointBytes = 0;
        valueOffsetInPoint = 0;
    }
    bool skipped = !isFE && isSkipping(skip);
    if (skipped && location == ValueLocation_CellCentered) {
        ErrMsg("Unable to apply skipping to a cell centered variable.");
        return false;
    }

    int64_t numValues;
    if (skipped)
        numValues = countAfterSkip(zoneSpec->NumPtsI, skip[0]) * countAfterSkip(zoneSpec->NumPtsJ, skip[1]) *
                    countAfterSkip(zoneSpec->NumPtsK, skip[2]);
    else
        numValues = CalcNumValuesNeededAt(zoneSpec, location);
    if (numValues > MAXINDEX) {
        ErrMsg("Storage limit (%ld) exceeded for a single variable.", static_cast<long>(MAXINDEX));
        return false;
    }

    // A map shows the file's bytes as they are: only a plain array laid out as in memory can be
    // mapped. A classic ordered cell-centred block lacks the ghost slots of the memory layout.
    bool plainArray = !skipped && stride == 1;
    bool layoutAllows = plainArray && (structure != DataValueStructure_Classic || location == ValueLocation_Nodal || isFE);
    bool isRemote = URLNameIsValidSyntax(fileName);
    bool canMap = !isTempOrRemote && !isRemote && isNative && IsOffsetAlignedForFieldDataType(type, offset) &&
                  FieldDataCanMemMapData(type, static_cast<LgIndex_t>(numValues), layoutAllows);

    auto *record = static_cast<OrvanexVarLoadInfo_s *>(newmalloc(sizeof(OrvanexVarLoadInfo_s)));
    if (record == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    memset(static_cast<void *>(record), 0, sizeof(OrvanexVarLoadInfo_s));
    record->FileName = internFileName(fileName);
    if (skipped) {
        record->Skip = static_cast<LgIndex_t *>(newmalloc(3 * sizeof(LgIndex_t)));
        if (record->Skip != nullptr) memcpy(record->Skip, skip, 3 * sizeof(LgIndex_t));
    }
    if (record->FileName == nullptr || (skipped && record->Skip == nullptr)) {
        freeVarRecord(record);
        OutOfMemoryMsg();
        return false;
    }
    record->DataValueStructure = structure;
    record->Offset = offset;
    record->Stride = stride;
    record->IsMemMappable = canMap;
    record->IsNativeByteOrder = isNative;
    record->IMax = zoneSpec->NumPtsI;
    record->JMax = zoneSpec->NumPtsJ;
    record->KMax = zoneSpec->NumPtsK;
    record->PointBytes = pointBytes;
    record->ValueOffsetInPoint = valueOffsetInPoint;
    record->ZoneType = zoneSpec->Type;

    if (!FieldDataDefineData(fieldData, static_cast<LgIndex_t>(numValues), type, location)) {
        freeVarRecord(record);
        return false;
    }
    fieldData->ClientData = reinterpret_cast<ArbParam_t>(record);
    fieldData->LoadFunction = &OrvanexVarLoader;
    fieldData->UnloadFunction = &OrvanexVarUnload;
    fieldData->CleanupFunction = &OrvanexVarCleanup;
    fieldData->IsReadOnly = true;
    fieldData->OwnsStorage = false;

    if (!isTempOrRemote && !isRemote && GeneralBase.LoadOnDemandAllow) return true;

    // The file will not stay: take the values into storage of the variable's own now.
    if (!FieldDataMakeWritable(fieldData)) return false;
    if (GeneralBase.LoadOnDemandAllow &&
        (GeneralBase.LoadOnDemandUnloadStrategy == UnloadStrategy_MinimizeMemoryUse ||
         !DataLoadIsMemoryBelowThreshold()))
        FieldDataUnload(fieldData);
    return true;
}

bool OrvanexVarLoader(FieldData_a fieldData) {
    OrvanexVarLoadInfo_s *record = varRecordOf(fieldData);
    FileCloser file(fopen(record->FileName, "rb"));
    if (file.get() == nullptr) {
        ErrMsg("Unable to load variable from %s", record->FileName);
        return false;
    }
    // A block that the file is too short to hold is refused before any mapping: reading a mapped
    // page past the end of a file is a bus error.
    int64_t inFile = valuesInFile(record, fieldData);
    int64_t end = record->Stride > 1
                      ? record->Offset + (inFile - 1) * record->PointBytes + FieldDataTypeSize(fieldData->Type)
                      : record->Offset + FieldDataGetBytesNeeded(inFile, fieldData->Type);
    if (inFile > 0 && fileSize(file.get()) < end) {
        ErrMsg("Unable to load variable from %s", record->FileName);
        return false;
    }

    if (record->IsMemMappable) {
        if (FieldDataMemMapData(fieldData, fileno(file.get()), record->Offset, MemMapAccess_ReadOnly, false)) {
            fieldData->IsReadOnly = true;
            return true;
        }
        if (firstTime(warnedLoadVariableMap))
            Warning("Unable to load variable from %s using a memory map. Orvanex will attempt to read it instead.",
                    record->FileName);
    }

    if (!FieldDataAllocData(fieldData, true)) return false;
    if (!readVariable(file.get(), record, fieldData)) {
        ErrMsg("Unable to load variable from %s", record->FileName);
        FieldDataDeallocData(fieldData);
        return false;
    }
    if (!record->IsNativeByteOrder) SwapBytesInTypedValueArray(fieldData->Type, fieldData->Data, 0, fieldData->NumValues);
    // A heap copy is as read-only as a map: an unload throws it away.
    fieldData->IsReadOnly = true;
    return true;
}

bool OrvanexVarUnload(FieldData_a fieldData) {
    FieldDataDeallocData(fieldData);
    return true;
}

void OrvanexVarCleanup(FieldData_a fieldData) {
    FieldDataDeallocData(fieldData);
    freeVarRecord(varRecordOf(fieldData));
    fieldData->ClientData = 0;
}

bool FieldDataAutoLODFromFile(FieldData_a fieldData, const char *fileName, DataValueStructure_e structure,
                              int64_t offset, LgIndex_t stride, bool isNative, const ZoneSpec_s *zoneSpec) {
    REQUIRE(fieldData != nullptr && IsValidFieldDataType(fieldData->Type));
    bool minMaxValid = fieldData->IsMinMaxValid;
    double min = fieldData->Min, max = fieldData->Max;
    if (!LoadBinaryBlockVariable(fileName, structure, false, offset, stride, nullptr, zoneSpec, fieldData->Type,
                                 isNative, fieldData->Location, fieldData))
        return false;
    if (minMaxValid) FieldDataSetMinMax(fieldData, min, max);
    return true;
}

FieldData_a FieldDataCloneUnloaded(FieldData_a fieldData) {
    REQUIRE(fieldData != nullptr && fieldData->LoadFunction == &OrvanexVarLoader);
    REQUIRE(!fieldData->IsReadable && fieldData->Data == nullptr && fieldData->MemMap == nullptr);
    FieldData_a clone = allocObject(true);
    if (clone == nullptr) return nullptr;
    OrvanexVarLoadInfo_s *record = copyVarRecord(varRecordOf(fieldData));
    bool ok = record != nullptr;
    *clone = *fieldData;
    clone->ClientData = reinterpret_cast<ArbParam_t>(record);
    clone->ReadMutex = nullptr;
    clone->WriteMutex = nullptr;
    clone->RefCount = 1;
    clone->VarShareRefCount = 1;
    clone->LoadGeneration = 0xFFFFFFFFu;
    if (ok) ok = Thread_InitMutex(&clone->ReadMutex) && Thread_InitMutex(&clone->WriteMutex);
    if (!ok) {
        freeMutexes(clone);
        freeVarRecord(record);
        newfree(clone);
        OutOfMemoryMsg();
        return nullptr;
    }
    return clone;
}
