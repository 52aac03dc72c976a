// Variables of a data file: when a block is mapped and when it is read, foreign byte order,
// skipping, classic cell-centred blocks, point-packed values of mixed types, a mapped variable
// that is written to, truncated files, temporary copies and the unloaded clone. Every file is a few
// bytes the test writes itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

#include "base/data/fielddata.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "support/scratch.h"

namespace {

std::vector<std::string> messages;
MessageBoxReply_e captureMessage(const char *text, MessageBoxType_e) {
    messages.push_back(text);
    return MessageBoxReply_Ok;
}

// Bytes of a file under construction.
struct Bytes {
    std::vector<uint8_t> data;
    template <typename T>
    Bytes &put(T value, bool bigEndian = false) {
        uint8_t raw[sizeof(T)];
        memcpy(raw, &value, sizeof(T));
        if (bigEndian) std::reverse(raw, raw + sizeof(T));
        data.insert(data.end(), raw, raw + sizeof(T));
        return *this;
    }
    Bytes &pad(size_t count) {
        data.insert(data.end(), count, 0xEE);
        return *this;
    }
};

class VarLoaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = MakeScratchDir("varload");
        ASSERT_FALSE(dir.empty());
        savedTempDir = OrvanexTempDirectory;
        OrvanexTempDirectory = dir + "/cache";
        ASSERT_EQ(mkdir(OrvanexTempDirectory.c_str(), 0700), 0);
        saved = GeneralBase;
        messages.clear();
        GraphicsAreInitialized = true;
        MessageBoxRegisterCallback(&captureMessage);
    }
    void TearDown() override {
        for (FieldData_a &fieldData : made) FieldDataDealloc(&fieldData, false);
        MessageBoxRegisterCallback(nullptr);
        GraphicsAreInitialized = false;
        ClearPendingErrors();
        GeneralBase = saved;
        OrvanexTempDirectory = savedTempDir;
        ASSERT_TRUE(RemoveScratchDir(dir));
    }
    std::string write(const Bytes &bytes, const char *name = "data.plt") {
        std::string path = dir + "/" + name;
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(bytes.data.data()),
                                                    std::streamsize(bytes.data.size()));
        return path;
    }
    static std::vector<uint8_t> read(const std::string &path) {
        std::ifstream in(path, std::ios::binary);
        return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
    }
    // A variable of an ordered zone i x j x k read from `path`.
    FieldData_a load(const std::string &path, int64_t offset, FieldDataType_e type, bool native, LgIndex_t i,
                     LgIndex_t j = 1, LgIndex_t k = 1, ValueLocation_e location = ValueLocation_Nodal,
                     DataValueStructure_e structure = DataValueStructure_ClassicGhost, const LgIndex_t *skip = nullptr,
                     LgIndex_t stride = 1, LgIndex_t pointBytes = 0, LgIndex_t offsetInPoint = 0,
                     bool isTemp = false) {
        ZoneSpec_s zone;
        zone.NumPtsI = i;
        zone.NumPtsJ = j;
        zone.NumPtsK = k;
        FieldData_a fieldData = FieldDataAlloc();
        made.push_back(fieldData);
        ok = LoadBinaryBlockVariable(path.c_str(), structure, isTemp, offset, stride, skip, &zone, type, native,
                                     location, fieldData, pointBytes, offsetInPoint);
        return fieldData;
    }
    std::string dir, savedTempDir;
    GeneralBase_s saved;
    std::vector<FieldData_a> made;
    bool ok = false;
};

const LgIndex_t Page = LgIndex_t(sysconf(_SC_PAGESIZE));

}  // namespace

TEST_F(VarLoaderTest, DoubleOnAFourByteBoundaryIsStillMapped) {
    Bytes bytes;
    bytes.pad(12);  // a multiple of 4 but not of 8
    for (LgIndex_t n = 0; n < Page / 8; n++) bytes.put(n * 1.25);
    std::string path = write(bytes);
    FieldData_a fieldData = load(path, 12, FieldDataType_Double, true, Page / 8);
    ASSERT_TRUE(ok);
    EXPECT_TRUE(IsFieldDataLoadOnDemandByOrvanex(fieldData));
    EXPECT_FALSE(IsFieldDataReadable(fieldData));  // stays on disk until asked for
    ASSERT_TRUE(FieldDataMakeReadable(fieldData));
    EXPECT_TRUE(IsFieldDataMemoryMapped(fieldData));
    EXPECT_FALSE(fieldData->IsAligned);
    EXPECT_NE(fieldData->GetFunction, &GetFieldValueForDouble);
    EXPECT_FALSE(IsFieldDataWritable(fieldData));
    EXPECT_EQ(GetFieldValue(fieldData, 0), 0.0);
    EXPECT_EQ(GetFieldValue(fieldData, Page / 8 - 1), (Page / 8 - 1) * 1.25);
    ASSERT_TRUE(FieldDataUnload(fieldData));
    EXPECT_FALSE(IsFieldDataMemoryMapped(fieldData));

    // A double at an offset of 2 is not aligned for mapping: read to the heap instead.
    Bytes odd;
    odd.pad(2);
    for (LgIndex_t n = 0; n < Page / 8; n++) odd.put(n * 1.25);
    FieldData_a heap = load(write(odd, "odd.plt"), 2, FieldDataType_Double, true, Page / 8);
    ASSERT_TRUE(FieldDataMakeReadable(heap));
    EXPECT_FALSE(IsFieldDataMemoryMapped(heap));
    EXPECT_EQ(heap->GetFunction, &GetFieldValueForDouble);
    EXPECT_EQ(GetFieldValue(heap, 7), 8.75);
}

TEST_F(VarLoaderTest, ForeignOrderIsReadAndSwappedNeverMapped) {
    Bytes bytes;
    for (LgIndex_t n = 0; n < Page; n++) bytes.put(float(n) - 0.5f, true);
    FieldData_a fieldData = load(write(bytes), 0, FieldDataType_Float, false, Page);
    ASSERT_TRUE(FieldDataMakeReadable(fieldData));
    EXPECT_FALSE(IsFieldDataMemoryMapped(fieldData));
    EXPECT_EQ(fieldData->GetFunction, &GetFieldValueForFloat);  // swapped once, on the heap
    EXPECT_EQ(GetFieldValue(fieldData, 0), -0.5);
    EXPECT_EQ(GetFieldValue(fieldData, 1001), 1000.5);
    EXPECT_FALSE(IsFieldDataWritable(fieldData));  // a heap copy of a file is read-only too
}

TEST_F(VarLoaderTest, SizeThresholdOfOnePage) {
    GeneralBase.MemoryMappedIOSizeThreshold = 0;
    Bytes bytes;
    for (LgIndex_t n = 0; n < Page / 4; n++) bytes.put(int32_t(n));
    std::string path = write(bytes);
    FieldData_a under = load(path, 0, FieldDataType_LongInt, true, Page / 4 - 1);
    FieldData_a exact = load(path, 0, FieldDataType_LongInt, true, Page / 4);
    ASSERT_TRUE(FieldDataMakeReadable(under) && FieldDataMakeReadable(exact));
    EXPECT_FALSE(IsFieldDataMemoryMapped(under));
    EXPECT_TRUE(IsFieldDataMemoryMapped(exact));
    EXPECT_EQ(GetFieldValue(under, 17), 17.0);
    EXPECT_EQ(GetFieldValue(exact, Page / 4 - 1), Page / 4 - 1.0);
}

TEST_F(VarLoaderTest, WritingAMappedVariableMovesItToTheCache) {
    Bytes bytes;
    for (LgIndex_t n = 0; n < Page; n++) bytes.put(float(n));
    std::string path = write(bytes);
    std::vector<uint8_t> before = read(path);
    FieldData_a fieldData = load(path, 0, FieldDataType_Float, true, Page);
    fieldData->RefCount = 2;  // a second zone holds the same object
    FieldData_a secondOwner = fieldData;
    FieldDataSetMinMax(fieldData, 0, Page - 1);
    ASSERT_TRUE(FieldDataMakeReadable(fieldData));
    ASSERT_TRUE(IsFieldDataMemoryMapped(fieldData));
    Mutex_a readMutex = fieldData->ReadMutex;

    ASSERT_TRUE(FieldDataMakeWritable(fieldData));
    EXPECT_TRUE(IsFieldDataStorable(fieldData));
    EXPECT_EQ(fieldData->ReadMutex, readMutex);
    EXPECT_EQ(fieldData->RefCount, 2);
    EXPECT_FALSE(IsFieldDataMinMaxValid(fieldData));
    SetFieldValue(fieldData, 5, -7.0);
    EXPECT_EQ(GetFieldValue(secondOwner, 5), -7.0);
    EXPECT_EQ(GetFieldValue(secondOwner, 6), 6.0);
    EXPECT_EQ(read(path), before);  // the data file never changes

    // Out of memory and back, from the cache and not from the data file.
    ASSERT_TRUE(FieldDataUnload(fieldData));
    ASSERT_TRUE(FieldDataMakeReadable(fieldData));
    EXPECT_EQ(GetFieldValue(secondOwner, 5), -7.0);
    fieldData->RefCount = 1;
}

TEST_F(VarLoaderTest, SkippingKeepsMultiplesAndTheLastAndRefusesCells) {
    // 4 x 3 x 1 nodal, value = 10 j + i; skip 2, 2, 1 keeps i = 0, 2, 3 and j = 0, 2.
    Bytes bytes;
    for (int j = 0; j < 3; j++)
        for (int i = 0; i < 4; i++) bytes.put(int16_t(10 * j + i));
    std::string path = write(bytes);
    const LgIndex_t skip[3] = {2, 2, 1};
    FieldData_a nodal = load(path, 0, FieldDataType_ShortInt, true, 4, 3, 1, ValueLocation_Nodal,
                             DataValueStructure_ClassicGhost, skip);
    ASSERT_TRUE(ok);
    ASSERT_EQ(nodal->NumValues, 6);
    ASSERT_TRUE(FieldDataMakeReadable(nodal));
    const double expected[6] = {0, 2, 3, 20, 22, 23};
    for (LgIndex_t n = 0; n < 6; n++) EXPECT_EQ(GetFieldValue(nodal, n), expected[n]) << n;

    load(path, 0, FieldDataType_ShortInt, true, 4, 3, 1, ValueLocation_CellCentered, DataValueStructure_ClassicGhost,
         skip);
    EXPECT_FALSE(ok);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "Unable to apply skipping to a cell centered variable.");
}

TEST_F(VarLoaderTest, ClassicCellBlockLeavesGhostSlotsZero) {
    // 3 x 3 x 2 zone: 2 x 2 x 1 real cells in the file; in memory 3 x 3 x 1 slots at lowest corners.
    Bytes bytes;
    for (float cell : {1.f, 2.f, 3.f, 4.f}) bytes.put(cell);
    FieldData_a cells = load(write(bytes), 0, FieldDataType_Float, true, 3, 3, 2, ValueLocation_CellCentered,
                             DataValueStructure_Classic);
    ASSERT_TRUE(ok);
    ASSERT_EQ(cells->NumValues, 9);
    ASSERT_TRUE(FieldDataMakeReadable(cells));
    const double expected[9] = {1, 2, 0, 3, 4, 0, 0, 0, 0};
    for (LgIndex_t n = 0; n < 9; n++) EXPECT_EQ(GetFieldValue(cells, n), expected[n]) << n;

    // A line of cells (5 x 1 x 1) has no ghost between its cells.
    Bytes line;
    for (float cell : {5.f, 6.f, 7.f, 8.f}) line.put(cell);
    FieldData_a lineCells = load(write(line, "line.plt"), 0, FieldDataType_Float, true, 5, 1, 1,
                                 ValueLocation_CellCentered, DataValueStructure_Classic);
    ASSERT_TRUE(FieldDataMakeReadable(lineCells));
    ASSERT_EQ(lineCells->NumValues, 4);
    EXPECT_EQ(GetFieldValue(lineCells, 3), 8.0);
}

TEST_F(VarLoaderTest, PointPackedValuesOfMixedTypes) {
    // Each point: float, double, short = 14 bytes; three points; the file ends after the last short.
    Bytes bytes;
    bytes.pad(6);
    for (int p = 0; p < 3; p++) bytes.put(float(p)).put(100.5 + p).put(int16_t(-p - 1));
    std::string path = write(bytes);
    FieldData_a doubles = load(path, 6 + 4, FieldDataType_Double, true, 3, 1, 1, ValueLocation_Nodal,
                               DataValueStructure_ClassicGhost, nullptr, 3, 14, 4);
    FieldData_a shorts = load(path, 6 + 12, FieldDataType_ShortInt, true, 3, 1, 1, ValueLocation_Nodal,
                              DataValueStructure_ClassicGhost, nullptr, 3, 14, 12);
    ASSERT_TRUE(FieldDataMakeReadable(doubles));
    ASSERT_TRUE(FieldDataMakeReadable(shorts));
    EXPECT_FALSE(IsFieldDataMemoryMapped(doubles));  // point data is never mapped
    for (LgIndex_t p = 0; p < 3; p++) {
        EXPECT_EQ(GetFieldValue(doubles, p), 100.5 + p);
        EXPECT_EQ(GetFieldValue(shorts, p), -p - 1.0);
    }
    // A bit variable cannot be point-packed; a value outside its point is corrupt too.
    load(path, 6, FieldDataType_Bit, true, 3, 1, 1, ValueLocation_Nodal, DataValueStructure_ClassicGhost, nullptr, 3,
         14, 0);
    EXPECT_FALSE(ok);
    load(path, 6, FieldDataType_Double, true, 3, 1, 1, ValueLocation_Nodal, DataValueStructure_ClassicGhost, nullptr, 3,
         14, 10);
    EXPECT_FALSE(ok);
    EXPECT_EQ(messages, std::vector<std::string>(2, "Binary datafile corrupted!"));
}

TEST_F(VarLoaderTest, TruncatedFileFailsTheLoad) {
    Bytes bytes;
    for (LgIndex_t n = 0; n < Page; n++) bytes.put(float(n));
    std::string path = write(bytes);
    FieldData_a mapped = load(path, 8, FieldDataType_Float, true, Page);  // two values short
    FieldData_a heap = load(path, 8, FieldDataType_Float, false, Page);
    EXPECT_FALSE(FieldDataMakeReadable(mapped));
    EXPECT_FALSE(FieldDataMakeReadable(heap));
    EXPECT_FALSE(IsFieldDataReadable(mapped));
    EXPECT_EQ(heap->Data, nullptr);
    EXPECT_EQ(messages, std::vector<std::string>(2, "Unable to load variable from " + path));
}

TEST_F(VarLoaderTest, TemporaryCopyIsTakenInAtOnce) {
    GeneralBase.LoadOnDemandUnloadStrategy = 2;  // minimise memory: stored away at once
    Bytes bytes;
    for (LgIndex_t n = 0; n < 50; n++) bytes.put(double(n) * 3);
    std::string path = write(bytes, "copy.plt");
    FieldData_a fieldData = load(path, 0, FieldDataType_Double, true, 50, 1, 1, ValueLocation_Nodal,
                                 DataValueStructure_ClassicGhost, nullptr, 1, 0, 0, true);
    ASSERT_TRUE(ok);
    EXPECT_TRUE(IsFieldDataStorable(fieldData));
    EXPECT_FALSE(IsFieldDataReadable(fieldData));
    ASSERT_EQ(unlink(path.c_str()), 0);  // the copy may go now
    ASSERT_TRUE(FieldDataMakeReadable(fieldData));
    EXPECT_EQ(GetFieldValue(fieldData, 49), 147.0);
}

TEST_F(VarLoaderTest, UnloadedCloneHasItsOwnRecord) {
    Bytes bytes;
    for (LgIndex_t n = 0; n < 8; n++) bytes.put(uint8_t(n * 9));
    std::string path = write(bytes);
    FieldData_a original = load(path, 2, FieldDataType_Byte, true, 6);
    FieldDataSetMinMax(original, 18, 63);
    FieldData_a clone = FieldDataCloneUnloaded(original);
    ASSERT_NE(clone, nullptr);
    made.push_back(clone);
    EXPECT_NE(clone->ClientData, original->ClientData);
    EXPECT_NE(clone->ReadMutex, original->ReadMutex);
    EXPECT_EQ(clone->LoadGeneration, 0xFFFFFFFFu);
    EXPECT_EQ(clone->RefCount, 1);
    EXPECT_EQ(clone->VarShareRefCount, 1);
    EXPECT_FALSE(IsFieldDataReadable(clone));
    EXPECT_TRUE(IsFieldDataMinMaxValid(clone));
    auto *record = reinterpret_cast<OrvanexVarLoadInfo_s *>(clone->ClientData);
    EXPECT_EQ(std::string(record->FileName), path);
    EXPECT_EQ(record->Offset, 2);
    ASSERT_TRUE(FieldDataMakeReadable(clone));
    EXPECT_EQ(GetFieldValue(clone, 0), 18.0);
    EXPECT_NE(clone->LoadGeneration, 0xFFFFFFFFu);
    EXPECT_FALSE(IsFieldDataReadable(original));
}
