// The sweep over the frames' data sets, and saving and restoring what was loaded.
#include <gtest/gtest.h>

#include "base/data/dataload.h"
#include "base/data/lodsweep.h"
#include "base/data/share.h"
#include "base/kernel/genbase.h"
#include "data/data_fixture.h"

namespace {

class SweepTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        savedStrategy = GeneralBase.LoadOnDemandUnloadStrategy;
        GeneralBase.LoadOnDemandUnloadStrategy = UnloadStrategy_MinimizeMemoryUse;
    }
    void TearDown() override {
        GeneralBase.LoadOnDemandUnloadStrategy = savedStrategy;
        DataSetTest::TearDown();
    }
    bool loaded(EntIndex_t zone, EntIndex_t var) {
        return IsFieldDataReadable(GetNativeFieldDataPtr(dataSet(), zone, var));
    }
    int savedStrategy = 0;
};

TEST_F(SweepTest, EndOfAnOperationUnloadsWhatItDidNotTouchAndValuesComeBack) {
    makeDataSet(2, 3);
    setValues(1, 1, {1.5, 2.5, 3.5, 4.5, 5.5, 6.5});
    DataLoadMajorOperationBegin();
    ASSERT_NE(GetReadableNativeFieldDataPtr(dataSet(), 0, 0), nullptr);  // touched in this operation
    DataLoadMajorOperationEnd();
    EXPECT_TRUE(loaded(0, 0));
    EXPECT_FALSE(loaded(0, 1));
    EXPECT_FALSE(loaded(1, 1));
    EXPECT_FALSE(loaded(2, 0));
    // The stored values come back from the temporary cache.
    EXPECT_EQ(value(1, 1, 0), 1.5);
    EXPECT_EQ(value(1, 1, 5), 6.5);
    // A nested operation sweeps only at its outermost end.
    DataLoadMajorOperationBegin();
    DataLoadMajorOperationBegin();
    DataLoadMajorOperationEnd();
    EXPECT_TRUE(loaded(1, 1));
    DataLoadMajorOperationEnd();
    EXPECT_FALSE(loaded(1, 1));
}

TEST_F(SweepTest, AutoStrategyLeavesMemoryAloneBelowTheThreshold) {
    GeneralBase.LoadOnDemandUnloadStrategy = UnloadStrategy_Auto;
    makeDataSet(1, 2);
    DataLoadMajorOperationBegin();
    DataLoadMajorOperationEnd();
    EXPECT_TRUE(loaded(0, 0));
    EXPECT_TRUE(loaded(1, 0));
}

TEST_F(SweepTest, LoadStateIsRestoredAfterAnUnload) {
    makeDataSet(2, 2);
    setValues(1, 0, {9, 8, 7, 6, 5, 4});
    FieldDataUnload(GetNativeFieldDataPtr(dataSet(), 0, 1));
    DataLoadState_s state = DataLoadStateSave(dataSet());
    Set_a *notLoaded = DataLoadGetNotLoadedVars(dataSet(), 0);
    EXPECT_EQ(MemberCount(notLoaded), 1);
    EXPECT_TRUE(InSet(notLoaded, 1));
    DeallocSet(&notLoaded);
    for (EntIndex_t z = 0; z < 2; z++)
        for (EntIndex_t v = 0; v < 2; v++) FieldDataUnload(GetNativeFieldDataPtr(dataSet(), z, v));
    EXPECT_TRUE(DataLoadZoneHasNotLoadedVariables(dataSet(), 1));
    DataLoadStateRestore(dataSet(), state);
    EXPECT_TRUE(loaded(0, 0));
    EXPECT_FALSE(loaded(0, 1));  // it was not loaded when the state was saved
    EXPECT_TRUE(loaded(1, 0));
    EXPECT_TRUE(loaded(1, 1));
    EXPECT_EQ(value(1, 0, 2), 7.0);
}

TEST_F(SweepTest, UnNeededZonesLeaveMemoryButSharedVariablesStay) {
    makeDataSet(1, 3);
    ShareVariable(dataSet(), 0, 2, 0);  // zone 2 shares zone 0's variable
    Set_a *needed = AllocSet(true);
    AddToSet(needed, 0, true);
    DataLoadUnloadAllVarsInUnNeededZones(dataSet(), needed);
    EXPECT_TRUE(loaded(0, 0));
    EXPECT_FALSE(loaded(1, 0));
    EXPECT_TRUE(loaded(2, 0));
    DeallocSet(&needed);
}

}  // namespace
