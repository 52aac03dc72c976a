// The data set's tables: renumbering on insertion and deletion, limits, names and all-or-nothing
// failures.
#include <gtest/gtest.h>

#include "base/data/share.h"
#include "base/data/strand.h"
#include "data/data_fixture.h"

namespace {

std::vector<SetIndex_t> members(const Set_a *set) {
    std::vector<SetIndex_t> result;
    for (SetIndex_t m = GetNextMember(set, -1); m >= 0; m = GetNextMember(set, m)) result.push_back(m);
    return result;
}

using Members = std::vector<SetIndex_t>;

TEST(ZoneOrVarListCapacity, GrowsByHalfInBlocksAndNeverPast32700) {
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 0, 5, 0), 5);       // first request: exact
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 10, 0, 0), 32);     // nothing asked: 32
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 10, 11, 0), 32);    // block max(5, 32)
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 1000, 1001, 0), 1500);
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 30000, 30001, 0), 32700);  // cut to the limit
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 100, 32700, 0), 32700);
    EXPECT_EQ(ZoneOrVarListAdjustCapacityRequest(nullptr, 100, 32701, 0), 0);        // refused
}

TEST(ZoneValueCounts, GhostLayoutOfOrderedCellCentredValues) {
    int64_t pts, cells, nodal, cc;
    CalcNumValuesNeeded(false, 3, 2, 1, &pts, &cells, &nodal, &cc);
    EXPECT_EQ(pts, 6);
    EXPECT_EQ(cells, 2);  // (3-1) x (2-1) x max(0, 1)
    EXPECT_EQ(cc, 3);     // I x (J-1): the last slot of the I line is a ghost
    CalcNumValuesNeeded(false, 4, 3, 2, &pts, &cells, &nodal, &cc);
    EXPECT_EQ(cc, 4 * 3 * 1);
    EXPECT_EQ(cells, 3 * 2 * 1);
    CalcNumValuesNeeded(false, 5, 1, 1, &pts, &cells, &nodal, &cc);
    EXPECT_EQ(cc, 4);
    CalcNumValuesNeeded(false, 1, 1, 1, &pts, &cells, &nodal, &cc);
    EXPECT_EQ(cc, 1);
    CalcNumValuesNeeded(true, 10, 7, 3, &pts, &cells, &nodal, &cc);
    EXPECT_EQ(nodal, 10);
    EXPECT_EQ(cc, 7);
}

TEST_F(DataSetTest, DeletingZonesRenumbersEnabledSetParentsAndStrands) {
    makeDataSet(2, 5);
    DataSet_s *ds = dataSet();
    SetZoneParentZone(ds, 4, 2);  // parent is the zone to be deleted
    SetZoneParentZone(ds, 3, 4);  // parent above it
    SetZoneParentZone(ds, 1, 0);  // parent below it
    ASSERT_TRUE(AddZoneToStrand(ds, 0, 1));
    ASSERT_TRUE(AddZoneToStrand(ds, 0, 3));
    ASSERT_TRUE(AddZoneToStrand(ds, 0, 4));
    ASSERT_TRUE(AddZoneToStrand(ds, 1, 2));
    DataSetDeallocZone(ds, 0);  // a gap below stays a gap, one lower
    ASSERT_TRUE(DeleteZone(ds, 2, true));
    EXPECT_EQ(ds->NumZones, 4);
    EXPECT_EQ(members(ds->EnabledZones), (Members{1, 2, 3}));
    EXPECT_EQ(GetZoneSpec(ds, 3)->ParentZone, -1);  // was zone 4, parent 2: deleted
    EXPECT_EQ(GetZoneSpec(ds, 2)->ParentZone, 3);   // was zone 3, parent 4: now 3
    EXPECT_EQ(GetZoneSpec(ds, 1)->ParentZone, 0);
    EXPECT_STREQ(GetZoneName(ds, 2), "Zone 4");
    EXPECT_EQ(members(GetStrandInfo(ds, 0)->ZoneMembers), (Members{1, 2, 3}));
    EXPECT_EQ(GetStrandInfo(ds, 1), nullptr);  // its only zone went, and with it the strand
}

TEST_F(DataSetTest, InsertingAZoneShiftsEverythingAboveIt) {
    makeDataSet(1, 3);
    DataSet_s *ds = dataSet();
    SetZoneParentZone(ds, 2, 1);
    ASSERT_TRUE(AddZoneToStrand(ds, 0, 2));
    ASSERT_TRUE(DataSetInsertZone(ds, 1));
    EXPECT_EQ(ds->NumZones, 4);
    EXPECT_EQ(members(ds->EnabledZones), (Members{0, 2, 3}));  // the new number stays disabled
    EXPECT_EQ(GetZoneSpec(ds, 1), nullptr);
    EXPECT_STREQ(GetZoneName(ds, 3), "Zone 3");
    EXPECT_EQ(GetZoneSpec(ds, 3)->ParentZone, 2);
    EXPECT_EQ(members(GetStrandInfo(ds, 0)->ZoneMembers), (Members{3}));
    // Beyond the end: the number is only reserved.
    ASSERT_TRUE(DataSetInsertZone(ds, 9));
    EXPECT_EQ(ds->NumZones, 10);
    EXPECT_FALSE(IsZoneEnabled(ds, 9));
}

TEST_F(DataSetTest, DeletingTheLastEnabledZoneIsRefused) {
    makeDataSet(1, 3);
    DataSet_s *ds = dataSet();
    DataSetDeallocZone(ds, 0);
    DataSetDeallocZone(ds, 1);
    EXPECT_EQ(ds->NumZones, 3);  // a deallocated zone leaves a disabled number behind
    EXPECT_FALSE(IsZoneEnabled(ds, 1));
    bool ok = true;
    std::string err = messagesOf([&] { ok = DeleteZone(ds, 2, true); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Cannot delete the last zone in a data set.")) << err;
    EXPECT_EQ(ds->NumZones, 3);
}

TEST_F(DataSetTest, DeletingTheLastNumberTakesTheDisabledNumbersBelowIt) {
    makeDataSet(1, 4);
    DataSet_s *ds = dataSet();
    DataSetDeallocZone(ds, 1);
    DataSetDeallocZone(ds, 2);
    ASSERT_TRUE(DeleteZone(ds, 3, true));
    EXPECT_EQ(ds->NumZones, 1);
    EXPECT_EQ(members(ds->EnabledZones), (Members{0}));
}

TEST_F(DataSetTest, VariablesInsertDeleteAndCollapse) {
    makeDataSet(3, 2);
    DataSet_s *ds = dataSet();
    setValues(1, 2, {7, 8, 9, 10, 11, 12});
    ASSERT_TRUE(DataSetInsertVar(ds, 1));
    EXPECT_EQ(ds->NumVars, 4);
    EXPECT_EQ(members(ds->EnabledVars), (Members{0, 2, 3}));
    EXPECT_STREQ(GetVarName(ds, 3), "V3");
    EXPECT_EQ(value(1, 3, 5), 12.0);
    // A gap of zones and of variables, then a collapse closes both.
    DataSetDeallocZone(ds, 0);
    CollapseDataSet(ds);
    EXPECT_EQ(ds->NumVars, 3);
    EXPECT_EQ(ds->NumZones, 1);
    EXPECT_EQ(members(ds->EnabledVars), (Members{0, 1, 2}));
    EXPECT_EQ(value(0, 2, 0), 7.0);
    EXPECT_STREQ(GetZoneName(ds, 0), "Zone 2");
    // Collapsing a data set without gaps changes nothing.
    CollapseDataSet(ds);
    EXPECT_EQ(ds->NumVars, 3);
    EXPECT_EQ(ds->NumZones, 1);
}

TEST_F(DataSetTest, DeleteVarsRespectsNoDeleteLocks) {
    makeDataSet(3, 1);
    DataSet_s *ds = dataSet();
    ASSERT_TRUE(VariableLockOn(ds, 1, VarLockMode_Delete, "tester"));
    Set_a *vars = AllocSet(true);
    AddToSet(vars, 0, true);
    AddToSet(vars, 1, true);
    bool ok = true;
    std::string err = messagesOf([&] { ok = DeleteVars(ds, vars); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Cannot delete variable: Variable 2 is locked by tester.")) << err;
    EXPECT_EQ(ds->NumVars, 3);  // nothing changed
    ASSERT_TRUE(VariableLockOff(ds, 1, "tester"));
    EXPECT_TRUE(DeleteVars(ds, vars));
    EXPECT_EQ(ds->NumVars, 1);
    EXPECT_STREQ(GetVarName(ds, 0), "V3");
    DeallocSet(&vars);
}

TEST_F(DataSetTest, LockedDataSetRefusesChanges) {
    makeDataSet(1, 1);
    ASSERT_TRUE(DataSetLockOn(dataSet(), "owner"));
    ZoneSpec_s spec;
    spec.NumPtsI = spec.NumPtsJ = spec.NumPtsK = 2;
    bool ok = true;
    std::string err = messagesOf([&] { ok = AddZone(&spec, nullptr, nullptr, 1, nullptr, nullptr, -1, false); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Cannot add a zone: The current data set is locked.")) << err;
    err = messagesOf([&] { ok = AddVar("W", nullptr, nullptr, false, nullptr); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Cannot add a variable: The current data set is locked.")) << err;
    EXPECT_EQ(dataSet()->NumZones, 1);
    EXPECT_EQ(dataSet()->NumVars, 1);
    EXPECT_TRUE(DataSetLockOff(dataSet(), "owner"));
}

TEST_F(DataSetTest, BadZonesLeaveTheDataSetUnchanged) {
    makeDataSet(2, 1);
    DataSet_s *ds = dataSet();
    ZoneSpec_s spec;
    spec.NumPtsI = 70000;
    spec.NumPtsJ = 70000;
    spec.NumPtsK = 1;
    bool ok = true;
    std::string err = messagesOf([&] { ok = AddZone(&spec, nullptr, nullptr, 1, nullptr, nullptr, -1, false); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Total Number of points for a zone exceeds 2147483646")) << err;
    EXPECT_EQ(ds->NumZones, 1);
    EXPECT_FALSE(IsZoneEnabled(ds, 1));
    // Points fit, bytes do not: 600 million doubles.
    spec.NumPtsI = 600000000;
    spec.NumPtsJ = 1;
    FieldDataType_e types[2] = {FieldDataType_Double, FieldDataType_Double};
    err = messagesOf([&] { ok = AddZone(&spec, types, nullptr, 1, nullptr, nullptr, -1, false); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Cannot allocate memory for field data.  If possible, try reducing precision for "
                                  "the field data type."))
        << err;
    EXPECT_EQ(ds->NumZones, 1);
    spec.NumPtsI = 0;
    err = messagesOf([&] { ok = AddZone(&spec, nullptr, nullptr, 1, nullptr, nullptr, -1, false); });
    EXPECT_FALSE(ok);
    err = messagesOf([&] { ok = AddZone(&spec, nullptr, nullptr, 32700, nullptr, nullptr, -1, false); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Exceeded maximum number of zones allowed (32700).")) << err;
    EXPECT_EQ(ds->NumZones, 1);
}

TEST_F(DataSetTest, NamesAreTrimmedAndCut) {
    makeDataSet(1, 1);
    std::string longName(200, 'n');
    ASSERT_TRUE(SetZoneName(dataSet(), 0, ("   " + longName + "  ").c_str()));
    EXPECT_EQ(std::string(GetZoneName(dataSet(), 0)), std::string(128, 'n'));
    ASSERT_TRUE(SetVarName(dataSet(), 0, "  Pressure "));
    EXPECT_STREQ(GetVarName(dataSet(), 0), "Pressure");
    ASSERT_TRUE(SetDatasetTitle(dataSet(), std::string(300, 't').c_str()));
    EXPECT_EQ(strlen(dataSet()->DataSetTitle), 256u);
}

TEST_F(DataSetTest, ZoneRankAndCounts) {
    makeDataSet(1, 0);
    addZone(5, 1, 1);
    addZone(5, 4, 1);
    addZone(1, 4, 3);
    addZone(5, 4, 3);
    DataSet_s *ds = dataSet();
    EXPECT_EQ(GetZoneRank(ds, 0), 1);
    EXPECT_EQ(GetZoneRank(ds, 1), 2);
    EXPECT_EQ(GetZoneRank(ds, 2), 2);
    EXPECT_EQ(GetZoneRank(ds, 3), 3);
    EXPECT_EQ(ZoneGetNumPoints(ds, 3), 60);
    EXPECT_EQ(ZoneGetNumElements(ds, 3), 4 * 3 * 2);
    EXPECT_EQ(ZoneGetNumElements(ds, 0), 4);
}

}  // namespace

namespace {

TEST_F(DataSetTest, JournalIsDroppedByAChangeUnlessMarkingIsSuspended) {
    makeDataSet(1, 1);
    DataSet_s *ds = dataSet();
    ASSERT_TRUE(ReassignDatasetToFileName(ds, "/data/a \"b\".plt"));
    ASSERT_NE(ds->Journal.Commands, nullptr);
    EXPECT_EQ(ArrayListGetCount(ds->Journal.Commands), 1);
    EXPECT_STREQ(ArrayListGetItem(ds->Journal.Commands, 0).CharPtr, "$!READDATASET  '\"/data/a \\\"b\\\".plt\"'");
    EXPECT_TRUE(ds->Journal.IsValid);
    EXPECT_TRUE(ds->Journal.IsDirty);
    SuspendDataSetMarking();
    MarkDataSetAsChanged(ds);
    EXPECT_TRUE(ds->Journal.IsValid);  // suspended: the recipe still holds
    UnsuspendDataSetMarking();
    MarkDataSetAsChanged(ds);
    EXPECT_FALSE(ds->Journal.IsValid);
    EXPECT_EQ(ds->Journal.Commands, nullptr);
    EXPECT_FALSE(ds->Journal.IsDirty);
}

}  // namespace
