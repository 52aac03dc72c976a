// Values at the other location by simple averages: ordered zones with their ghost layout, a
// 1-wide direction, FE zones with shared and repeated nodes; the derived type; invalidation.
#include <gtest/gtest.h>

#include "base/data/derived.h"
#include "data/data_fixture.h"

namespace {

class DerivedTest : public DataSetTest {
  protected:
    // Adds an ordered zone whose only variable is at the given location.
    void addZoneAt(LgIndex_t i, LgIndex_t j, LgIndex_t k, ValueLocation_e location,
                   FieldDataType_e type = FieldDataType_Double) {
        ZoneSpec_s spec;
        spec.NumPtsI = i;
        spec.NumPtsJ = j;
        spec.NumPtsK = k;
        ASSERT_TRUE(AddZone(&spec, &type, &location, dataSet()->NumZones, nullptr, nullptr, -1, false));
    }
    FrameZoneList_s *list() { return GetFrameZoneList(CurFrame); }
};

TEST_F(DerivedTest, NodalFromOrderedCellCentredAveragesTheCellsAround) {
    makeDataSet(1, 0);
    addZoneAt(3, 3, 1, ValueLocation_CellCentered);
    // Cells (0,0)=1, (1,0)=2, (0,1)=3, (1,1)=4 at their lowest corners 0, 1, 3, 4.
    setValues(0, 0, {1, 2, -50, 3, 4, -50});
    FieldData_a nodal = GetReadableNLFieldDataPtr(dataSet(), list(), 0, 0);
    ASSERT_NE(nodal, nullptr);
    EXPECT_EQ(nodal->Location, ValueLocation_Nodal);
    ASSERT_EQ(nodal->NumValues, 9);
    const double expected[9] = {1, 1.5, 2, 2, 2.5, 3, 3, 3.5, 4};
    for (int n = 0; n < 9; n++) EXPECT_DOUBLE_EQ(GetFieldValue(nodal, n), expected[n]) << "node " << n;
    // Asking again gives the same object: it is kept until invalidated.
    EXPECT_EQ(GetReadableNLFieldDataPtr(dataSet(), list(), 0, 0), nodal);
    EXPECT_EQ(GetNLFieldDataPtr(dataSet(), list(), 0, 0), nodal);
}

TEST_F(DerivedTest, CellCentredFromNodalAveragesTheCornersIntoTheGhostLayout) {
    makeDataSet(1, 0);
    addZoneAt(3, 2, 1, ValueLocation_Nodal);
    setValues(0, 0, {0, 1, 2, 10, 11, 12});  // i + 10 j
    FieldData_a cc = GetReadableCCFieldDataPtr(dataSet(), list(), 0, 0);
    ASSERT_NE(cc, nullptr);
    ASSERT_EQ(cc->NumValues, 3);  // I x (J-1), the last a ghost
    EXPECT_DOUBLE_EQ(GetFieldValue(cc, 0), 5.5);
    EXPECT_DOUBLE_EQ(GetFieldValue(cc, 1), 6.5);
    // A zone one point wide in J: cells are segments of two corners.
    addZoneAt(4, 1, 1, ValueLocation_Nodal);
    setValues(1, 0, {0, 2, 6, 12});
    cc = GetReadableCCFieldDataPtr(dataSet(), list(), 1, 0);
    ASSERT_NE(cc, nullptr);
    ASSERT_EQ(cc->NumValues, 3);
    EXPECT_DOUBLE_EQ(GetFieldValue(cc, 0), 1.0);
    EXPECT_DOUBLE_EQ(GetFieldValue(cc, 2), 9.0);
}

TEST_F(DerivedTest, FEAveragesCountARepeatedNodeOnce) {
    makeDataSet(1, 0);
    ZoneSpec_s spec;
    spec.Type = ZoneType_FEQuad;
    spec.NumPtsI = 5;
    spec.NumPtsJ = 2;
    spec.NumPtsK = 4;
    FieldDataType_e type = FieldDataType_Double;
    ValueLocation_e location = ValueLocation_CellCentered;
    ASSERT_TRUE(AddZone(&spec, &type, &location, 0, nullptr, nullptr, -1, false));
    NodeMap_a nodeMap = GetZoneData(dataSet(), 0)->NodeMap;
    const LgIndex_t nodes[8] = {0, 1, 2, 3, 1, 4, 2, 2};  // the second quad is a collapsed triangle
    for (int n = 0; n < 8; n++) NodeMapSetNode(nodeMap, n / 4, n % 4, nodes[n]);
    setValues(0, 0, {10, 40});
    FieldData_a nodal = GetReadableNLFieldDataPtr(dataSet(), list(), 0, 0);
    ASSERT_NE(nodal, nullptr);
    EXPECT_DOUBLE_EQ(GetFieldValue(nodal, 0), 10.0);
    EXPECT_DOUBLE_EQ(GetFieldValue(nodal, 1), 25.0);
    EXPECT_DOUBLE_EQ(GetFieldValue(nodal, 2), 25.0);  // node 2 twice in element 1: once in the mean
    EXPECT_DOUBLE_EQ(GetFieldValue(nodal, 4), 40.0);
    // And back: element 1's distinct nodes are 1, 4, 2.
    FieldData_a cc = AllocScratchNodalFieldDataPtr(2, FieldDataType_Double, true);
    DeriveCellCenteredFromNodal(GetZoneSpec(dataSet(), 0), nodeMap, nodal, cc);
    EXPECT_DOUBLE_EQ(GetFieldValue(cc, 1), (25.0 + 40.0 + 25.0) / 3.0);
    DeallocScratchNodalFieldDataPtr(&cc);
}

TEST_F(DerivedTest, DerivedTypeFollowsTheNativeType) {
    makeDataSet(1, 0);
    addZoneAt(2, 2, 1, ValueLocation_Nodal, FieldDataType_ShortInt);
    addZoneAt(2, 2, 1, ValueLocation_Nodal, FieldDataType_LongInt);
    EXPECT_EQ(GetReadableCCFieldDataPtr(dataSet(), list(), 0, 0)->Type, FieldDataType_Float);
    EXPECT_EQ(GetReadableCCFieldDataPtr(dataSet(), list(), 1, 0)->Type, FieldDataType_Double);
}

TEST_F(DerivedTest, ChangesDropTheDerivedValuesAndDeletionRenumbers) {
    makeDataSet(1, 0);
    addZoneAt(2, 2, 1, ValueLocation_Nodal);
    addZoneAt(2, 2, 1, ValueLocation_Nodal);
    setValues(1, 0, {1, 2, 3, 4});
    ASSERT_NE(GetReadableCCFieldDataPtr(dataSet(), list(), 1, 0), nullptr);
    EXPECT_DOUBLE_EQ(GetFieldValue(GetCCFieldDataPtr(dataSet(), list(), 1, 0), 0), 2.5);
    // Zone 0 goes: zone 1's derived values move down with it.
    ASSERT_TRUE(DeleteZone(dataSet(), 0, true));
    ASSERT_NE(GetDerivedFieldDataPtr(list(), 0, 0), nullptr);
    EXPECT_DOUBLE_EQ(GetFieldValue(GetDerivedFieldDataPtr(list(), 0, 0), 0), 2.5);
    // A change of values invalidates them.
    setValues(0, 0, {5, 5, 5, 5});
    InvalidateAllScratchOnVarValueChange(dataSet(), nullptr, nullptr);
    EXPECT_EQ(GetDerivedFieldDataPtr(list(), 0, 0), nullptr);
    EXPECT_DOUBLE_EQ(GetFieldValue(GetReadableCCFieldDataPtr(dataSet(), list(), 0, 0), 0), 5.0);
}

}  // namespace
