// Data-load accounting, thresholds and generations. The sweep is replaced through the test seam by
// a recorder, so the rules of when a sweep runs and with which limit are checked on their own:
// nesting, generation - 1 at the outermost end, generation - 2 while loading, the mainline-only rule
// for workers, and the hold on sweeps while a variable's mutex is held.
#include <gtest/gtest.h>

#include <sys/sysinfo.h>
#include <thread>
#include <vector>

#include "base/data/dataload.h"
#include "base/data/fielddata.h"
#include "base/kernel/genbase.h"
#include "base/kernel/thread.h"

namespace {

std::vector<int64_t> sweeps;
void recordSweep(int64_t limit) { sweeps.push_back(limit); }

class DataLoadTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!Thread_ThreadingIsInitialized()) {
            ASSERT_TRUE(Thread_Init());
            startedThreading = true;
        }
        previous = DataLoadSetSweepFunctionForTest(&recordSweep);
        sweeps.clear();
        saved = GeneralBase;
    }
    void TearDown() override {
        while (DataLoadMajorOperationIsOpen()) DataLoadMajorOperationEnd();
        DataLoadSetSweepFunctionForTest(previous);
        GeneralBase = saved;
        DataLoadValidateThresholdValues(true);
        // Later tests of the same process start the thread layer themselves.
        if (startedThreading) Thread_Cleanup();
    }
    bool startedThreading = false;
    DataLoadSweep_pf previous = nullptr;
    GeneralBase_s saved;
};

}  // namespace

TEST_F(DataLoadTest, CountersAreKilobytesAndIgnoreZero) {
    int64_t loaded = DataLoadGetTotalKBytesLoaded(), unloaded = DataLoadGetTotalKBytesUnloaded();
    int64_t loads = DataLoadGetNumLoadCalls(), unloads = DataLoadGetNumUnloadCalls();
    int64_t resident = DataLoadGetResidentKBytes();
    DataLoadAccountForKBytesLoaded(0);
    DataLoadAccountForKBytesUnloaded(0);
    EXPECT_EQ(DataLoadGetNumLoadCalls(), loads);
    EXPECT_EQ(DataLoadGetNumUnloadCalls(), unloads);

    // 4096 floats are 16 KB; 1000 bytes round down to nothing.
    FieldData_s big{}, small{};
    big.NumValues = 4096;
    big.Type = FieldDataType_Float;
    small.NumValues = 1000;
    small.Type = FieldDataType_Byte;
    DataLoadAccountForVarLoaded(&big);
    DataLoadAccountForVarLoaded(&small);
    DataLoadAccountForKBytesLoaded(30);
    EXPECT_EQ(DataLoadGetTotalKBytesLoaded(), loaded + 46);
    EXPECT_EQ(DataLoadGetNumLoadCalls(), loads + 2);
    EXPECT_GE(DataLoadGetPeakKBytesResident(), resident + 46);
    DataLoadAccountForVarUnloaded(&big);
    DataLoadAccountForKBytesUnloaded(30);
    EXPECT_EQ(DataLoadGetTotalKBytesUnloaded(), unloaded + 46);
    EXPECT_EQ(DataLoadGetNumUnloadCalls(), unloads + 2);
    EXPECT_EQ(DataLoadGetResidentKBytes(), resident);
    EXPECT_TRUE(sweeps.empty());  // no operation open: accounting does not sweep
}

TEST_F(DataLoadTest, ThresholdsAreFractionsOfUsableMemory) {
    GeneralBase.MaxUsableMemoryMB = 1000;
    GeneralBase.LODThresholdMaxFract = 0.7;
    GeneralBase.LODThresholdMinFract = 0.3;
    DataLoadValidateThresholdValues(true);
    EXPECT_EQ(GetMaxUsablePhysicalMemory(), int64_t(1000) * 1024 * 1024);
    EXPECT_EQ(DataLoadGetMaxKBytesThreshold(), 716800);  // 1000 MB = 1024000 KB x 0.7
    EXPECT_EQ(DataLoadGetMinKBytesThreshold(), 307200);

    // Resident exactly at the maximum is not above it; one more kilobyte is.
    int64_t resident = DataLoadGetResidentKBytes();
    ASSERT_LT(resident, 307200);
    DataLoadAccountForKBytesLoaded(716800 - resident);
    EXPECT_FALSE(DataLoadIsMemoryAboveThreshold());
    EXPECT_FALSE(DataLoadIsMemoryBelowThreshold());
    DataLoadAccountForKBytesLoaded(1);
    EXPECT_TRUE(DataLoadIsMemoryAboveThreshold());
    DataLoadAccountForKBytesUnloaded(716801 - resident);
    EXPECT_TRUE(DataLoadIsMemoryBelowThreshold());

    // A changed setting takes effect only when the thresholds are worked out again.
    GeneralBase.MaxUsableMemoryMB = 0;
    EXPECT_EQ(DataLoadGetMaxKBytesThreshold(), 716800);
    DataLoadValidateThresholdValues(true);
    struct sysinfo info;
    ASSERT_EQ(sysinfo(&info), 0);
    int64_t physical = int64_t(info.totalram) * int64_t(info.mem_unit);
    EXPECT_EQ(GetMaxUsablePhysicalMemory(), physical);
    EXPECT_EQ(DataLoadGetMaxKBytesThreshold(), int64_t(double(physical / 1024) * 0.7));
}

TEST_F(DataLoadTest, OutermostEndSweepsOlderThanTheOperation) {
    ASSERT_GE(DataLoadGetCurrentGeneration(), 1u);
    FieldData_a fieldData = FieldDataAlloc();
    EXPECT_EQ(fieldData->LoadGeneration, DataLoadGetCurrentGeneration());  // stamped, never 0
    EXPECT_NE(fieldData->LoadGeneration, 0u);
    FieldDataDealloc(&fieldData, false);

    uint32_t before = DataLoadGetCurrentGeneration();
    DataLoadMajorOperationBegin();
    EXPECT_EQ(DataLoadGetCurrentGeneration(), before + 1);
    DataLoadMajorOperationBegin();  // nested: same generation
    EXPECT_EQ(DataLoadGetCurrentGeneration(), before + 1);
    DataLoadMajorOperationEnd();
    EXPECT_TRUE(sweeps.empty());
    DataLoadMajorOperationEnd();
    ASSERT_EQ(sweeps.size(), 1u);
    EXPECT_EQ(sweeps[0], int64_t(before));  // generation - 1
    EXPECT_FALSE(DataLoadMajorOperationIsOpen());
}

TEST_F(DataLoadTest, LoadingInsideAnOperationSparesThePreviousOne) {
    uint32_t before = DataLoadGetCurrentGeneration();
    DataLoadMajorOperationBegin();
    DataLoadAccountForKBytesLoaded(0);
    EXPECT_TRUE(sweeps.empty());
    DataLoadAccountForKBytesLoaded(8);
    ASSERT_EQ(sweeps.size(), 1u);
    EXPECT_EQ(sweeps[0], int64_t(before + 1) - 2);
    DataLoadAccountForKBytesUnloaded(8);
    EXPECT_EQ(sweeps.size(), 1u);  // unloading never sweeps
    DataLoadMajorOperationEnd();
    EXPECT_EQ(sweeps.size(), 2u);
}

TEST_F(DataLoadTest, WorkerOnlyAsksTheMainlineToSweep) {
    uint32_t generation = 0;
    DataLoadMajorOperationBegin();
    DataLoadMajorOperationBegin();
    generation = DataLoadGetCurrentGeneration();
    std::thread worker([] { DataLoadAccountForKBytesLoaded(4); });
    worker.join();
    EXPECT_TRUE(sweeps.empty());
    EXPECT_TRUE(DataLoadSweepIsWanted());
    // The inner end runs the wanted sweep on the mainline, with the loading limit.
    DataLoadMajorOperationEnd();
    ASSERT_EQ(sweeps.size(), 1u);
    EXPECT_EQ(sweeps[0], int64_t(generation) - 2);
    EXPECT_FALSE(DataLoadSweepIsWanted());

    // Or the mainline's own accounting call runs it.
    std::thread worker2([] { DataLoadAccountForKBytesLoaded(4); });
    worker2.join();
    EXPECT_EQ(sweeps.size(), 1u);
    DataLoadAccountForKBytesLoaded(4);
    EXPECT_EQ(sweeps.size(), 2u);
    EXPECT_FALSE(DataLoadSweepIsWanted());
    DataLoadMajorOperationEnd();
    ASSERT_EQ(sweeps.size(), 3u);
    EXPECT_EQ(sweeps[2], int64_t(generation) - 1);
    DataLoadAccountForKBytesUnloaded(12);
}

namespace {

// A variable whose add-on loader marks when it has finished; the sweep records whether it ran
// before that, i.e. while the variable's mutex was held.
bool loadFinished = false;
std::vector<bool> sweptAfterLoad;
bool markingLoader(FieldData_a) {
    loadFinished = true;
    return true;
}
bool keepUnload(FieldData_a) { return true; }
// The data set's sweep tests readability, which takes the variable's mutex: run inside the load it
// would wait on this very thread. The recorder only notes when it ran.
void sweepThatTouchesTheVariable(int64_t) { sweptAfterLoad.push_back(loadFinished); }

}  // namespace

TEST_F(DataLoadTest, SweepWaitsUntilTheLoadingVariableIsFree) {
    DataLoadSetSweepFunctionForTest(&sweepThatTouchesTheVariable);
    FieldData_a loading = FieldDataAlloc();
    ASSERT_TRUE(FieldDataDefineData(loading, 2048, FieldDataType_Float, ValueLocation_Nodal));
    ASSERT_TRUE(FieldDataSetCustomLOD(loading, &markingLoader, &keepUnload, nullptr, nullptr, nullptr, 0));
    loadFinished = false;
    sweptAfterLoad.clear();
    DataLoadMajorOperationBegin();
    ASSERT_TRUE(FieldDataMakeReadable(loading));  // its heap block of 8 KB is accounted
    ASSERT_EQ(sweptAfterLoad.size(), 1u);
    EXPECT_TRUE(sweptAfterLoad[0]);
    EXPECT_EQ(loading->LoadGeneration, DataLoadGetCurrentGeneration());
    DataLoadMajorOperationEnd();
    FieldDataDealloc(&loading, false);
}
