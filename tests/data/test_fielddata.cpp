// Field data objects: every type's set/get with its clip bounds, reads of foreign-order and
// unaligned bytes the test lays out, the fragmented forms, passive and 0-value variables,
// reference counts, min/max over ghost layouts, the temporary cache of storable variables with its
// failures, and the add-on forms.
#include <gtest/gtest.h>

#include <cfloat>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/data/dataload.h"
#include "base/data/fielddata.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "support/scratch.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the byte layouts below are little-endian native");

namespace {

std::vector<std::string> messages;
MessageBoxReply_e captureMessage(const char *text, MessageBoxType_e) {
    messages.push_back(text);
    return MessageBoxReply_Ok;
}

// A scratch temporary directory, captured messages, and GeneralBase put back afterwards.
class FieldDataTest : public ::testing::Test {
  protected:
    void SetUp() override {
        tempDir = MakeScratchDir("fielddata");
        ASSERT_FALSE(tempDir.empty());
        savedTempDir = OrvanexTempDirectory;
        OrvanexTempDirectory = tempDir;
        saved = GeneralBase;
        messages.clear();
        GraphicsAreInitialized = true;
        MessageBoxRegisterCallback(&captureMessage);
    }
    void TearDown() override {
        MessageBoxRegisterCallback(nullptr);
        GraphicsAreInitialized = false;
        ClearPendingErrors();
        GeneralBase = saved;
        OrvanexTempDirectory = savedTempDir;
        ASSERT_TRUE(RemoveScratchDir(tempDir));
    }
    FieldData_a make(LgIndex_t numValues, FieldDataType_e type, bool alloc = true) {
        FieldData_a fieldData = FieldDataAlloc();
        EXPECT_TRUE(FieldDataDefineData(fieldData, numValues, type, ValueLocation_Nodal));
        if (alloc) {
            EXPECT_TRUE(FieldDataAllocData(fieldData, true));
        }
        return fieldData;
    }
    long filesInTempDir() const {
        auto entries = std::filesystem::directory_iterator(tempDir);
        return std::distance(begin(entries), end(entries));
    }
    std::string tempDir, savedTempDir;
    GeneralBase_s saved;
};

struct Case {
    double in, out;
};

void expectStored(FieldDataType_e type, std::initializer_list<Case> cases) {
    FieldData_a fieldData = AllocScratchNodalFieldDataPtr(LgIndex_t(cases.size()), type, true);
    ASSERT_NE(fieldData, nullptr);
    LgIndex_t n = 0;
    for (const Case &c : cases) SetFieldValue(fieldData, n++, c.in);
    n = 0;
    for (const Case &c : cases) {
        EXPECT_EQ(GetFieldValue(fieldData, n), c.out) << "type " << type << " value " << c.in;
        n++;
    }
    DeallocScratchNodalFieldDataPtr(&fieldData);
    EXPECT_EQ(fieldData, nullptr);
}

}  // namespace

TEST_F(FieldDataTest, SetClipsToEachTypesBounds) {
    const double floatMax = double(FLT_MAX);  // 3.40282347E38 as a float
    expectStored(FieldDataType_Float, {{1.0E39, floatMax}, {-1.0E39, -floatMax}, {3.40282347E38, floatMax},
                                       {1.0E-39, 0.0}, {-1.0E-39, 0.0}, {1.5, 1.5}, {0.1, double(0.1f)}});
    expectStored(FieldDataType_Double,
                 {{1.0E151, 1.0E150}, {-1.0E200, -1.0E150}, {1.0E-151, 0.0}, {-1.0E-151, 0.0}, {0.1, 0.1}});
    expectStored(FieldDataType_LongInt, {{3.0E9, 2147483646.0}, {2147483647.0, 2147483646.0}, {-3.0E9, -2147483646.0},
                                         {0.9, 0.0}, {-0.9, 0.0}, {2.7, 2.0}, {-2.7, -2.0}});
    expectStored(FieldDataType_ShortInt,
                 {{32767.0, 32766.0}, {-40000.0, -32766.0}, {32765.9, 32765.0}, {5.9, 5.0}, {-5.9, -5.0}});
    expectStored(FieldDataType_Byte, {{-5.0, 0.0}, {0.99, 0.0}, {300.0, 255.0}, {255.9, 255.0}, {7.8, 7.0}});
    expectStored(FieldDataType_Bit, {{0.99, 0.0}, {1.0, 1.0}, {-3.0, 0.0}, {42.0, 1.0}});
}

TEST_F(FieldDataTest, StoredBytesFollowTheTypeLayout) {
    FieldData_a bits = make(20, FieldDataType_Bit);
    EXPECT_EQ(FieldDataGetBytesNeeded(20, FieldDataType_Bit), 3);
    memset(bits->Data, 0, 3);
    SetFieldValue(bits, 9, 1.0);   // byte 1, bit 1
    SetFieldValue(bits, 16, 5.0);  // byte 2, bit 0
    const auto *raw = static_cast<const uint8_t *>(bits->Data);
    EXPECT_EQ(raw[0], 0x00);
    EXPECT_EQ(raw[1], 0x02);
    EXPECT_EQ(raw[2], 0x01);
    SetFieldValue(bits, 9, 0.5);  // clears
    EXPECT_EQ(raw[1], 0x00);
    EXPECT_EQ(GetFieldValue(bits, 16), 1.0);
    FieldDataDealloc(&bits, false);

    EXPECT_EQ(FieldDataGetBytesNeeded(3, FieldDataType_Double), 24);
    EXPECT_EQ(FieldDataGetBytesNeeded(8, FieldDataType_Bit), 1);
}

TEST_F(FieldDataTest, ForeignAndUnalignedBytesReadAndWrite) {
    // Each value stands one byte into the buffer, in big-endian (foreign) order, then little-endian.
    struct Layout {
        FieldDataType_e type;
        std::vector<uint8_t> bigEndian;
        double value;
    };
    const Layout layouts[] = {
        {FieldDataType_Float, {0x3F, 0xC0, 0x00, 0x00}, 1.5},
        {FieldDataType_Double, {0xC0, 0x00, 0, 0, 0, 0, 0, 0}, -2.0},
        {FieldDataType_LongInt, {0x01, 0x02, 0x03, 0x04}, 16909060.0},
        {FieldDataType_ShortInt, {0xFF, 0xFE}, -2.0},
    };
    for (const Layout &layout : layouts) {
        for (bool native : {false, true}) {
            for (bool aligned : {false, true}) {
                alignas(8) uint8_t buffer[24] = {};
                size_t start = aligned ? 8 : 1;
                std::vector<uint8_t> bytes = layout.bigEndian;
                if (native) std::reverse(bytes.begin(), bytes.end());
                memcpy(buffer + start, bytes.data(), bytes.size());
                FieldData_s view{};
                view.Type = layout.type;
                view.Data = buffer + start;
                FieldValueGetFunction_pf get = DetermineFieldDataGetFunction(layout.type, native, aligned);
                FieldValueSetFunction_pf set = DetermineFieldDataSetFunction(layout.type, native, aligned);
                EXPECT_EQ(get(&view, 0), layout.value) << layout.type << native << aligned;
                memset(buffer, 0, sizeof(buffer));
                set(&view, 0, layout.value);  // writes the same bytes back
                EXPECT_EQ(memcmp(buffer + start, bytes.data(), bytes.size()), 0) << layout.type << native << aligned;
                EXPECT_EQ(buffer[start - 1], 0);
                EXPECT_EQ(buffer[start + bytes.size()], 0);
            }
        }
    }
    // Only native aligned float and double get the plain readers that hot loops look for.
    EXPECT_EQ(DetermineFieldDataGetFunction(FieldDataType_Float, true, true), &GetFieldValueForFloat);
    EXPECT_EQ(DetermineFieldDataGetFunction(FieldDataType_Double, true, true), &GetFieldValueForDouble);
    EXPECT_NE(DetermineFieldDataGetFunction(FieldDataType_Double, true, false), &GetFieldValueForDouble);
    EXPECT_NE(DetermineFieldDataGetFunction(FieldDataType_Float, false, true), &GetFieldValueForFloat);
}

TEST_F(FieldDataTest, TypedArraysCopyAndSwap) {
    // 1.0 is 3F F0 00.. in big-endian order.
    uint8_t doubles[17] = {0, 0x3F, 0xF0, 0, 0, 0, 0, 0, 0, 0x40, 0, 0, 0, 0, 0, 0, 0};
    SwapBytesInUnalignedTypedValueArray(FieldDataType_Double, doubles + 1, 0, 2);
    double values[2];
    memcpy(values, doubles + 1, 16);
    EXPECT_EQ(values[0], 1.0);
    EXPECT_EQ(values[1], 2.0);

    // Bits 2..5 of 0b00111100 copied to bit 7 onwards of a cleared array.
    uint8_t src = 0x3C, dst[2] = {0, 0};
    CopyUnalignedTypedValueArray(FieldDataType_Bit, dst, 7, &src, 2, 5);
    EXPECT_EQ(dst[0], 0x80);
    EXPECT_EQ(dst[1], 0x07);

    EXPECT_TRUE(EquivalentValues(1.0, 1.0 + 1e-9, FieldDataType_Float));
    EXPECT_FALSE(EquivalentValues(1.0, 1.0 + 1e-9, FieldDataType_Double));
    EXPECT_TRUE(EquivalentValues(2.2, 2.9, FieldDataType_LongInt));
    EXPECT_FALSE(EquivalentValues(2.9, 3.0, FieldDataType_LongInt));
    EXPECT_TRUE(EquivalentValues(40000.0, 32766.0, FieldDataType_ShortInt));
    EXPECT_TRUE(EquivalentValues(300.0, 255.0, FieldDataType_Byte));
    EXPECT_TRUE(EquivalentValues(0.2, -4.0, FieldDataType_Bit));
    EXPECT_FALSE(EquivalentValues(0.9, 1.0, FieldDataType_Bit));
}

TEST_F(FieldDataTest, PassiveZeroValueAndSharedObjects) {
    FieldData_a empty = make(0, FieldDataType_Double, false);
    EXPECT_TRUE(IsFieldDataUsable(empty));
    EXPECT_TRUE(FieldDataMakeReadable(empty));
    EXPECT_EQ(empty->Data, nullptr);
    EXPECT_TRUE(IsFieldDataWritable(empty));

    FieldData_a passive = make(5, FieldDataType_Float);
    FieldDataMakePassive(passive);
    EXPECT_TRUE(IsFieldDataPassive(passive));
    EXPECT_FALSE(IsFieldDataLoadOnDemand(passive));
    EXPECT_TRUE(IsFieldDataUsable(passive));
    EXPECT_EQ(passive->Data, nullptr);
    EXPECT_EQ(passive->SetFunction, nullptr);
    EXPECT_EQ(GetFieldValue(passive, 4), 0.0);
    EXPECT_TRUE(IsFieldDataReadable(passive));
    EXPECT_FALSE(IsFieldDataWritable(passive));
    double min = -1, max = -1;
    FieldDataGetMinMax(passive, &min, &max);
    EXPECT_EQ(std::make_pair(min, max), std::make_pair(0.0, 0.0));

    // Two owners, one through sharing: the first release keeps the object alive.
    passive->RefCount = 2;
    passive->VarShareRefCount = 2;
    FieldData_a other = passive;
    FieldDataDealloc(&other, true);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(passive->RefCount, 1);
    EXPECT_EQ(passive->VarShareRefCount, 1);
    FieldDataDealloc(&passive, false);
    FieldDataDealloc(&empty, false);
}

TEST_F(FieldDataTest, MinMaxLeavesOutGhostSlots) {
    // A 3 x 3 x 1 cell-centred layout: 3 x 2 slots, the last of each I line a ghost.
    FieldData_a cells = make(6, FieldDataType_Double);
    const double values[6] = {4, -2, 1000, 7, 3, -1000};
    for (LgIndex_t n = 0; n < 6; n++) SetFieldValue(cells, n, values[n]);
    double min = 0, max = 0;
    EXPECT_TRUE(FieldDataCalcMinMaxOrdered(cells, 2, 2, 1, 3, 3, &min, &max));
    EXPECT_EQ(std::make_pair(min, max), std::make_pair(-2.0, 7.0));
    EXPECT_TRUE(FieldDataCalcMinMaxRange(cells, 1, 5, &min, &max));
    EXPECT_EQ(std::make_pair(min, max), std::make_pair(-2.0, 1000.0));
    EXPECT_FALSE(FieldDataCalcMinMaxRange(cells, 3, 3, &min, &max));
    EXPECT_EQ(std::make_pair(min, max), std::make_pair(1.0E150, -1.0E150));
    FieldDataSetMinMax(cells, -2, 7);
    EXPECT_TRUE(IsFieldDataMinMaxValid(cells));
    FieldDataInvalidateMinMax(cells);
    EXPECT_FALSE(IsFieldDataMinMaxValid(cells));
    FieldDataDealloc(&cells, false);

    // The general path (short integers) agrees.
    FieldData_a shorts = make(4, FieldDataType_ShortInt);
    for (LgIndex_t n = 0; n < 4; n++) SetFieldValue(shorts, n, 10.0 - 3 * n);
    EXPECT_TRUE(FieldDataCalcMinMaxOrdered(shorts, 1, 2, 1, 2, 2, &min, &max));
    EXPECT_EQ(std::make_pair(min, max), std::make_pair(4.0, 10.0));
    FieldDataDealloc(&shorts, false);
}

TEST_F(FieldDataTest, StorableVariableLeavesAndReturnsThroughTheCache) {
    const LgIndex_t pageFloats = LgIndex_t(sysconf(_SC_PAGESIZE) / 4);
    // A page or more is mapped onto a cache file; less stays on the heap until unloaded.
    for (LgIndex_t numValues : {pageFloats * 2, LgIndex_t(10)}) {
        FieldData_a fieldData = make(numValues, FieldDataType_Float, false);
        ASSERT_TRUE(FieldDataAllocStorableData(fieldData, true));
        EXPECT_TRUE(IsFieldDataStorable(fieldData));
        EXPECT_EQ(IsFieldDataMemoryMapped(fieldData), numValues > 10);
        EXPECT_EQ(filesInTempDir(), numValues > 10 ? 1 : 0);
        for (LgIndex_t n = 0; n < numValues; n++) SetFieldValue(fieldData, n, n * 0.5);
        ASSERT_TRUE(FieldDataUnload(fieldData));
        EXPECT_FALSE(IsFieldDataReadable(fieldData));
        EXPECT_EQ(fieldData->Data, nullptr);
        EXPECT_EQ(filesInTempDir(), 1);
        ASSERT_TRUE(FieldDataMakeReadable(fieldData));
        EXPECT_TRUE(IsFieldDataWritable(fieldData));
        for (LgIndex_t n = 0; n < numValues; n += 7) ASSERT_EQ(GetFieldValue(fieldData, n), n * 0.5);
        if (numValues == 10) {
            // Read back to the heap: the cache file gives its space back.
            struct stat info;
            auto *record = reinterpret_cast<OrvanexStorableVarLoadInfo_s *>(fieldData->ClientData);
            ASSERT_EQ(stat(record->Path, &info), 0);
            EXPECT_EQ(info.st_size, 0);
        }
        FieldDataDealloc(&fieldData, false);
        EXPECT_EQ(filesInTempDir(), 0);  // the cache file dies with the variable
    }
    EXPECT_TRUE(messages.empty());
}

TEST_F(FieldDataTest, FragmentedStorableMappingReadsAndWritesAcrossPieces) {
    MemMapSetForceFragmentsForTest(true);
    const LgIndex_t numValues = LgIndex_t(3 * sysconf(_SC_PAGESIZE) / 8);
    FieldData_a doubles = make(numValues, FieldDataType_Double, false);
    FieldData_a longs = make(numValues, FieldDataType_LongInt, false);
    bool ok = FieldDataAllocStorableData(doubles, true) && FieldDataAllocStorableData(longs, true);
    MemMapSetForceFragmentsForTest(false);
    ASSERT_TRUE(ok);
    ASSERT_TRUE(doubles->IsMemMapFragmented);
    EXPECT_EQ(MemMapGetMemFragCount(doubles->MemMap), 3);
    EXPECT_NE(doubles->GetFunction, &GetFieldValueForDouble);  // no plain array to index
    for (LgIndex_t n = 0; n < numValues; n++) {
        SetFieldValue(doubles, n, n - 0.25);
        SetFieldValue(longs, n, 3.0 * n);
    }
    for (LgIndex_t n = 0; n < numValues; n++) {
        ASSERT_EQ(GetFieldValue(doubles, n), n - 0.25);
        ASSERT_EQ(GetFieldValue(longs, n), 3.0 * n);
    }
    FieldData_a heapCopy = FieldDataCopy(doubles, false);
    ASSERT_NE(heapCopy, nullptr);
    EXPECT_EQ(heapCopy->GetFunction, &GetFieldValueForDouble);
    EXPECT_EQ(static_cast<double *>(heapCopy->Data)[numValues - 1], numValues - 1.25);
    FieldDataDealloc(&heapCopy, false);
    FieldDataDealloc(&doubles, false);
    FieldDataDealloc(&longs, false);
}

TEST_F(FieldDataTest, CacheFailuresFallBackOrRefuse) {
    // No temporary directory to make a cache file in: the heap, with one warning per run.
    OrvanexTempDirectory = tempDir + "/missing";
    const LgIndex_t pageFloats = LgIndex_t(sysconf(_SC_PAGESIZE) / 4);
    FieldData_a first = make(pageFloats, FieldDataType_Float, false);
    FieldData_a second = make(pageFloats, FieldDataType_Float, false);
    ASSERT_TRUE(FieldDataAllocStorableData(first, true));
    ASSERT_TRUE(FieldDataAllocStorableData(second, true));
    EXPECT_FALSE(IsFieldDataMemoryMapped(first));
    EXPECT_TRUE(IsFieldDataStorable(first));
    ASSERT_LE(messages.size(), 1u);  // a run that warned before stays silent
    if (!messages.empty()) {
        EXPECT_EQ(messages[0], "Unable to cache variable to the temporary directory. Orvanex will attempt to use heap "
                               "memory instead. Check access permissions and available space in the " +
                                   tempDir + "/missing directory.");
    }
    // Nor can it be stored: the unload is refused and the values stay.
    SetFieldValue(first, 3, 9.0);
    EXPECT_FALSE(FieldDataUnload(first));
    EXPECT_TRUE(IsFieldDataReadable(first));
    EXPECT_EQ(GetFieldValue(first, 3), 9.0);
    FieldDataDealloc(&first, false);
    FieldDataDealloc(&second, false);

    // A stored variable whose cache file has gone cannot come back, and says so.
    OrvanexTempDirectory = tempDir;
    messages.clear();
    FieldData_a stored = make(pageFloats, FieldDataType_Float, false);
    ASSERT_TRUE(FieldDataAllocStorableData(stored, true));
    ASSERT_TRUE(FieldDataUnload(stored));
    std::string path = reinterpret_cast<OrvanexStorableVarLoadInfo_s *>(stored->ClientData)->Path;
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_FALSE(FieldDataMakeReadable(stored));
    EXPECT_FALSE(IsFieldDataReadable(stored));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "Unable to load stored variable from the temporary directory. Check access permissions of "
                           "the file " + path + " or one of it's parent directories. Correct the the problem and try "
                           "again.");
    FieldDataDealloc(&stored, false);
}

namespace {

int loadCalls = 0, cleanupCalls = 0;
bool fillWithIndex(FieldData_a fieldData) {
    loadCalls++;
    EXPECT_EQ(fieldData->ClientData, 77);  // the add-on sees its own value
    for (LgIndex_t n = 0; n < fieldData->NumValues; n++) SetFieldValue(fieldData, n, n + 100.0);
    return true;
}
void countCleanup(FieldData_a fieldData) {
    EXPECT_EQ(fieldData->ClientData, 77);
    cleanupCalls++;
}
bool refuseUnload(FieldData_a) { return false; }
double twiceIndex(const FieldData_s *, LgIndex_t index) { return 2.0 * index; }

}  // namespace

TEST_F(FieldDataTest, AddOnVariables) {
    // Neither get nor unload function: the add-on loads once, the cache keeps the values after.
    loadCalls = cleanupCalls = 0;
    FieldData_a once = make(3000, FieldDataType_Float, false);
    ASSERT_TRUE(FieldDataSetCustomLOD(once, &fillWithIndex, nullptr, &countCleanup, nullptr, nullptr, 77));
    EXPECT_TRUE(IsFieldDataStorable(once));
    EXPECT_FALSE(IsFieldDataReadable(once));
    ASSERT_TRUE(FieldDataMakeReadable(once));
    EXPECT_EQ(GetFieldValue(once, 2999), 3099.0);
    ASSERT_TRUE(FieldDataUnload(once));
    ASSERT_TRUE(FieldDataMakeReadable(once));
    EXPECT_EQ(GetFieldValue(once, 5), 105.0);
    EXPECT_EQ(loadCalls, 1);
    EXPECT_EQ(cleanupCalls, 1);
    FieldDataDealloc(&once, false);
    EXPECT_EQ(cleanupCalls, 1);

    // An unload function that refuses leaves the variable readable with its values.
    FieldData_a kept = make(4, FieldDataType_Double, false);
    ASSERT_TRUE(FieldDataSetCustomLOD(kept, &fillWithIndex, &refuseUnload, nullptr, nullptr, nullptr, 77));
    EXPECT_TRUE(IsFieldDataLoadOnDemandByAddOn(kept));
    ASSERT_TRUE(FieldDataMakeReadable(kept));
    EXPECT_FALSE(FieldDataUnload(kept));
    EXPECT_TRUE(IsFieldDataReadable(kept));
    EXPECT_EQ(GetFieldValue(kept, 3), 103.0);
    FieldDataDealloc(&kept, false);

    // A get function: values on request, read-only without a set function; it counts as 8 KB
    // resident while loaded.
    FieldData_a computed = make(1024, FieldDataType_Double, false);
    ASSERT_TRUE(FieldDataSetCustomLOD(computed, nullptr, nullptr, nullptr, &twiceIndex, nullptr, 0));
    int64_t resident = DataLoadGetResidentKBytes();
    ASSERT_TRUE(FieldDataMakeReadable(computed));
    EXPECT_EQ(DataLoadGetResidentKBytes(), resident + 8);
    EXPECT_EQ(GetFieldValue(computed, 3), 6.0);
    EXPECT_FALSE(IsFieldDataWritable(computed));
    EXPECT_TRUE(IsFieldDataUsable(computed));
    ASSERT_TRUE(FieldDataUnload(computed));
    EXPECT_FALSE(IsFieldDataReadable(computed));
    EXPECT_EQ(DataLoadGetResidentKBytes(), resident);
    FieldDataDealloc(&computed, false);
}
