// Sharing, branching, the zone creators, single values, resizing, duplicating and joining data
// sets: what the frame-level operations promise about values and reference counts.
#include <gtest/gtest.h>

#include <cmath>

#include "base/data/share.h"
#include "base/data/strand.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/strlist.h"
#include "data/data_fixture.h"

namespace {

TEST_F(DataSetTest, SharedVariableCountsAndCopyOnWrite) {
    makeDataSet(2, 2);
    DataSet_s *ds = dataSet();
    setValues(0, 1, {1, 2, 3, 4, 5, 6});
    ShareVariable(ds, 0, 1, 1);
    FieldData_a shared = GetNativeFieldDataPtr(ds, 0, 1);
    EXPECT_EQ(GetNativeFieldDataPtr(ds, 1, 1), shared);
    EXPECT_EQ(shared->RefCount, 2);
    EXPECT_EQ(GetVarShareReferenceCount(ds, 1, 1), 2);
    EXPECT_TRUE(VarIsSharedBetweenZones(ds, 0, 1, 1));
    EXPECT_TRUE(ZoneHasVarSharing(ds, 1));
    Set_a *zones = GetSharedVarZoneSet(ds, 1, 1);
    ASSERT_NE(zones, nullptr);
    EXPECT_EQ(MemberCount(zones), 2);
    DeallocSet(&zones);

    // Without branching a write reaches both zones.
    bool changed = false;
    ASSERT_TRUE(SetFieldValueInCurrentDataSet(1, 1, 0, 100.0, false, &changed));
    EXPECT_TRUE(changed);
    EXPECT_EQ(value(0, 1, 0), 100.0);
    // With branching the writer gets its own copy; the other zone keeps what it had.
    ASSERT_TRUE(SetFieldValueInCurrentDataSet(1, 1, 1, -7.0, true, &changed));
    EXPECT_TRUE(changed);
    EXPECT_NE(GetNativeFieldDataPtr(ds, 1, 1), GetNativeFieldDataPtr(ds, 0, 1));
    EXPECT_EQ(value(1, 1, 1), -7.0);
    EXPECT_EQ(value(0, 1, 1), 2.0);
    EXPECT_EQ(value(1, 1, 5), 6.0);  // the rest of the copy is the shared values
    EXPECT_EQ(GetVarShareReferenceCount(ds, 0, 1), 1);
    EXPECT_EQ(GetVarShareReferenceCount(ds, 1, 1), 1);
    EXPECT_EQ(GetNativeFieldDataPtr(ds, 0, 1)->RefCount, 1);
    // Setting the same value again changes nothing.
    ASSERT_TRUE(SetFieldValueInCurrentDataSet(1, 1, 1, -7.0, true, &changed));
    EXPECT_FALSE(changed);
}

TEST_F(DataSetTest, DeletingASharingZoneReleasesOneReference) {
    makeDataSet(1, 3);
    DataSet_s *ds = dataSet();
    ShareVariable(ds, 0, 1, 0);
    ShareVariable(ds, 0, 2, 0);
    FieldData_a shared = GetNativeFieldDataPtr(ds, 0, 0);
    EXPECT_EQ(shared->VarShareRefCount, 3);
    ASSERT_TRUE(DeleteZone(ds, 1, true));
    EXPECT_EQ(shared->VarShareRefCount, 2);
    EXPECT_EQ(shared->RefCount, 2);
    EXPECT_EQ(GetNativeFieldDataPtr(ds, 1, 0), shared);
}

TEST_F(DataSetTest, ConnectivitySharingAndBranching) {
    makeDataSet(2, 0);
    ZoneSpec_s spec;
    spec.Type = ZoneType_FETriangle;
    spec.NumPtsI = 4;
    spec.NumPtsJ = 2;
    spec.NumPtsK = 3;
    DataSet_s *ds = dataSet();
    ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, 0, nullptr, nullptr, -1, false));
    NodeMap_a nodeMap = GetZoneData(ds, 0)->NodeMap;
    ASSERT_NE(nodeMap, nullptr);
    NodeMapSetNode(nodeMap, 1, 2, 3);
    ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, 1, nullptr, nullptr, 0, false));  // shares zone 0's
    EXPECT_EQ(GetZoneData(ds, 1)->NodeMap, nodeMap);
    EXPECT_EQ(GetConnectivityReferenceCount(ds, 1), 2);
    EXPECT_TRUE(ZoneHasConnectivitySharing(ds, 0));
    ASSERT_TRUE(BranchConnectivity(ds, 1));
    EXPECT_NE(GetZoneData(ds, 1)->NodeMap, nodeMap);
    EXPECT_EQ(NodeMapGetNode(GetZoneData(ds, 1)->NodeMap, 1, 2), 3);
    EXPECT_EQ(GetConnectivityReferenceCount(ds, 0), 1);
    EXPECT_EQ(GetConnectivityReferenceCount(ds, 1), 1);
}

TEST(ShareCompatibility, StructuresAndLocations) {
    ZoneSpec_s ordered, other, fe, fe2;
    ordered.NumPtsI = 6;
    ordered.NumPtsJ = ordered.NumPtsK = 1;
    other = ordered;
    fe.Type = ZoneType_FEQuad;
    fe.NumPtsI = 6;
    fe.NumPtsJ = 2;
    fe.NumPtsK = 4;
    fe2 = fe;
    fe2.NumPtsJ = 3;
    EXPECT_TRUE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_Nodal, ValueLocation_Nodal, &ordered, &other));
    EXPECT_FALSE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_Nodal, ValueLocation_CellCentered, &ordered,
                                                           &other));
    // An I-line and an FE zone of as many points share nodal values only.
    EXPECT_TRUE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_Nodal, ValueLocation_Nodal, &ordered, &fe));
    EXPECT_FALSE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_CellCentered, ValueLocation_CellCentered,
                                                           &ordered, &fe));
    other.NumPtsI = 3;
    other.NumPtsJ = 2;  // 6 points, but no I-line
    EXPECT_FALSE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_Nodal, ValueLocation_Nodal, &other, &fe));
    // FE: nodal by points, cell-centred by elements.
    EXPECT_TRUE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_Nodal, ValueLocation_Nodal, &fe, &fe2));
    EXPECT_FALSE(ZoneStructuresAreNativeVarShareCompatible(ValueLocation_CellCentered, ValueLocation_CellCentered,
                                                           &fe, &fe2));
    // Connectivity needs equal element counts too, and no global face neighbours.
    EXPECT_FALSE(ZoneStructuresAreConnectivityShareCompatible(&fe, &fe2));
    fe2.NumPtsJ = 2;
    EXPECT_TRUE(ZoneStructuresAreConnectivityShareCompatible(&fe, &fe2));
    fe2.FNMode = fe.FNMode = FaceNeighborMode_GlobalOneToOne;
    EXPECT_FALSE(ZoneStructuresAreConnectivityShareCompatible(&fe, &fe2));
}

TEST_F(DataSetTest, CircularZoneClosesExactly) {
    // Without a data set, the creator makes one with X and Y.
    ASSERT_TRUE(CreateCircularZone(3, 9, 1, 1.5, -2.0, 0.0, 0.0, 2.0, 0, 1, 2, FieldDataType_Double));
    DataSet_s *ds = dataSet();
    ASSERT_NE(ds, nullptr);
    EXPECT_STREQ(GetVarName(ds, 0), "X");
    EXPECT_STREQ(GetVarName(ds, 1), "Y");
    EXPECT_STREQ(GetZoneName(ds, 0), "Circular zone");
    EXPECT_STREQ(ds->DataSetTitle, "");
    auto at = [&](EntIndex_t var, LgIndex_t i, LgIndex_t j) { return value(0, var, i + j * 3); };
    // The outer ring: J = 0 and J = 8 are the same point to the bit; quarter turns are exact.
    EXPECT_EQ(at(0, 2, 0), at(0, 2, 8));
    EXPECT_EQ(at(1, 2, 0), at(1, 2, 8));
    EXPECT_EQ(at(0, 2, 0), 3.5);
    EXPECT_EQ(at(1, 2, 2), 0.0);   // a quarter turn: y = -2 + 2
    EXPECT_EQ(at(0, 2, 2), 1.5);
    EXPECT_EQ(at(0, 2, 4), -0.5);  // half turn
    EXPECT_EQ(at(1, 2, 4), -2.0);
    EXPECT_EQ(at(1, 2, 6), -4.0);  // three quarters
    EXPECT_NEAR(at(0, 2, 1), 1.5 + 2.0 * cos(M_PI / 4), 1e-12);
    EXPECT_EQ(at(0, 0, 5), 1.5);   // the centre
    EXPECT_EQ(at(0, 1, 0), 2.5);   // half the radius
}

TEST_F(DataSetTest, RectangularZoneAndItsMessages) {
    bool ok = true;
    std::string err = messagesOf([&] { ok = CreateRectangularZone(0, 2, 1, 0, 0, 0, 1, 1, 1, 0, 1, 2, FieldDataType_Float); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid dimensions for rectangular zone creation.")) << err;
    ASSERT_TRUE(CreateRectangularZone(3, 2, 2, 0, 10, -1, 1, 20, 1, 0, 1, 2, FieldDataType_Float));
    DataSet_s *ds = dataSet();
    EXPECT_EQ(ds->NumVars, 3);
    EXPECT_STREQ(GetVarName(ds, 2), "Z");
    EXPECT_EQ(value(0, 0, 1), 0.5f);
    EXPECT_EQ(value(0, 1, 3), 20.0);
    EXPECT_EQ(value(0, 2, 11), 1.0);
    err = messagesOf([&] { ok = CreateRectangularZone(4, 1, 1, 0, 0, 0, 1, 1, 1, 0, 7, 2, FieldDataType_Float); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid YVar request in CreateRectangularZone")) << err;
    ASSERT_TRUE(CreateRectangularZone(4, 1, 1, 0, 0, 0, 1, 1, 1, 0, 1, 2, FieldDataType_Float));
    EXPECT_STREQ(GetZoneName(ds, 1), "1-D Zone");
}

TEST_F(DataSetTest, SimpleZoneInterleavedValuesAndExtraVariables) {
    const double values[] = {1, 10, 2, 20, 3, 30};
    ASSERT_TRUE(CreateSimpleZone(3, 2, values, FieldDataType_Double, true));
    DataSet_s *ds = dataSet();
    EXPECT_STREQ(GetZoneName(ds, 0), "Enter Values");
    EXPECT_EQ(value(0, 0, 2), 3.0);
    EXPECT_EQ(value(0, 1, 1), 20.0);
    // Three variables asked of a data set with two: the third is added as "V3".
    const double three[] = {5, 6, 7};
    ASSERT_TRUE(CreateSimpleZone(1, 3, three, FieldDataType_Double, false));
    EXPECT_STREQ(GetVarName(ds, 2), "V3");
    EXPECT_EQ(value(1, 2, 0), 7.0);
    EXPECT_EQ(value(0, 2, 2), 0.0);  // the old zone's new variable is zero
}

TEST_F(DataSetTest, SetFieldValueIndexChecks) {
    makeDataSet(1, 1, 3, 3, 1);
    FieldDataType_e types[1] = {FieldDataType_Float};
    ValueLocation_e locations[1] = {ValueLocation_CellCentered};
    ZoneSpec_s spec;
    spec.NumPtsI = spec.NumPtsJ = 3;
    spec.NumPtsK = 1;
    ASSERT_TRUE(AddZone(&spec, types, locations, 1, nullptr, nullptr, -1, false));
    bool changed;
    bool ok = true;
    std::string err = messagesOf([&] { ok = SetFieldValueInCurrentDataSet(0, 0, 9, 1.0, false, &changed); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid INDEX (10) in SetFieldValue command.\n(1 <= Index <= 9)")) << err;
    // A ghost slot of a cell-centred variable: index 2 is I=3, past the 2 cells of an I line.
    err = messagesOf([&] { ok = SetFieldValueInCurrentDataSet(1, 0, 2, 1.0, false, &changed); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid INDEX (3) in SetFieldValue command.\nINDEX is equivalent to I=3, "
                                  "J=1, K=1 and\nmust be within the following ranges:\n    1 <= I <= 2\n    1 <= J <= "
                                  "2\n    1 <= K <= 1"))
        << err;
    EXPECT_TRUE(SetFieldValueInCurrentDataSet(1, 0, 4, 1.0, false, &changed));  // I=2, J=2
    err = messagesOf([&] { ok = SetFieldValueInCurrentDataSet(5, 0, 0, 1.0, false, &changed); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Unable to fetch variable 1 from zone 6 for modification.")) << err;
}

TEST_F(DataSetTest, CellCentredMinMaxSkipsGhostSlots) {
    makeDataSet(1, 0);
    FieldDataType_e types[1] = {FieldDataType_Double};
    ValueLocation_e locations[1] = {ValueLocation_CellCentered};
    ZoneSpec_s spec;
    spec.NumPtsI = 3;
    spec.NumPtsJ = 3;
    spec.NumPtsK = 1;
    DataSet_s *ds = dataSet();
    ASSERT_TRUE(AddZone(&spec, types, locations, 0, nullptr, nullptr, -1, false));
    // Slots 0,1 | 2 ghost | 3,4 | 5 ghost: the ghosts hold values that must not count.
    setValues(0, 0, {5, 6, 1000, 7, 8, -1000});
    double min, max;
    ASSERT_TRUE(GetNativeVarMinMaxForZoneVar(ds, 0, 0, true, &min, &max));
    EXPECT_EQ(min, 5.0);
    EXPECT_EQ(max, 8.0);
    // A 1-wide direction: a 4 x 1 x 3 zone has cells along I and K only.
    spec.NumPtsI = 4;
    spec.NumPtsJ = 1;
    spec.NumPtsK = 3;
    ASSERT_TRUE(AddZone(&spec, types, locations, 1, nullptr, nullptr, -1, false));
    FieldData_a cc = GetWritableNativeFieldDataPtr(ds, 1, 0);
    ASSERT_EQ(cc->NumValues, 8);  // 4 x 1 x 2
    for (LgIndex_t n = 0; n < 8; n++) SetFieldValue(cc, n, n % 4 == 3 ? 99.0 : double(n));
    ASSERT_TRUE(GetNativeVarMinMaxForZoneVar(ds, 1, 0, true, &min, &max));
    EXPECT_EQ(min, 0.0);
    EXPECT_EQ(max, 6.0);
}

TEST_F(DataSetTest, ReallocZoneKeepsValuesByPosition) {
    makeDataSet(1, 1, 2, 2, 1);
    DataSet_s *ds = dataSet();
    setValues(0, 0, {1, 2, 3, 4});
    FieldData_a before = GetNativeFieldDataPtr(ds, 0, 0);
    ASSERT_TRUE(ReallocZone(ds, 0, 2, 2, 1));  // same dimensions: nothing changes
    EXPECT_EQ(GetNativeFieldDataPtr(ds, 0, 0), before);
    ASSERT_TRUE(ReallocZone(ds, 0, 3, 2, 1));
    EXPECT_EQ(ZoneGetNumPoints(ds, 0), 6);
    // (i, j) keeps its value; the new column is 0.
    EXPECT_EQ(value(0, 0, 0), 1.0);
    EXPECT_EQ(value(0, 0, 1), 2.0);
    EXPECT_EQ(value(0, 0, 2), 0.0);
    EXPECT_EQ(value(0, 0, 3), 3.0);
    EXPECT_EQ(value(0, 0, 4), 4.0);
}

TEST_F(DataSetTest, ReallocFEZoneShrinkingPointsZeroesNodesPastTheEnd) {
    makeDataSet(1, 0);
    ZoneSpec_s spec;
    spec.Type = ZoneType_FETriangle;
    spec.NumPtsI = 5;
    spec.NumPtsJ = 2;
    spec.NumPtsK = 3;
    DataSet_s *ds = dataSet();
    ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, 0, nullptr, nullptr, -1, false));
    NodeMap_a nodeMap = GetZoneData(ds, 0)->NodeMap;
    LgIndex_t nodes[6] = {0, 1, 2, 2, 3, 4};
    for (int n = 0; n < 6; n++) NodeMapSetNode(nodeMap, n / 3, n % 3, nodes[n]);
    ASSERT_TRUE(ReallocZone(ds, 0, 4, 2, 0));
    nodeMap = GetZoneData(ds, 0)->NodeMap;
    EXPECT_EQ(NodeMapGetNode(nodeMap, 1, 1), 3);
    EXPECT_EQ(NodeMapGetNode(nodeMap, 1, 2), 0);  // node 4 is past the 4 points now
    EXPECT_EQ(NodeMapGetNode(nodeMap, 0, 2), 2);
}

TEST_F(DataSetTest, DuplicateWholeZoneSharesAndSubsetCopies) {
    makeDataSet(1, 1, 5, 3, 1);
    DataSet_s *ds = dataSet();
    setValues(0, 0, {0, 1, 2, 3, 4, 10, 11, 12, 13, 14, 20, 21, 22, 23, 24});
    ASSERT_TRUE(DuplicateZone(0, {1, 0, 1}, {1, 0, 1}, {1, 0, 1}));
    EXPECT_TRUE(VarIsSharedBetweenZones(ds, 0, 1, 0));
    EXPECT_STREQ(GetZoneName(ds, 1), "Zone 1");
    // I from 1 to 5 by 3: indices 1, 4, 5 (the range always ends on its last index).
    ASSERT_TRUE(DuplicateZone(0, {1, 5, 3}, {2, 0, 1}, {1, 0, 1}));
    EXPECT_STREQ(GetZoneName(ds, 2), "SubZone");
    EXPECT_EQ(ZoneGetNumPoints(ds, 2), 3 * 2);
    EXPECT_EQ(value(2, 0, 0), 10.0);
    EXPECT_EQ(value(2, 0, 1), 13.0);
    EXPECT_EQ(value(2, 0, 2), 14.0);
    EXPECT_EQ(value(2, 0, 5), 24.0);
    bool ok = true;
    std::string err = messagesOf([&] { ok = DuplicateZone(0, {4, 2, 1}, {1, 0, 1}, {1, 0, 1}); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid index range")) << err;
}

TEST_F(DataSetTest, ConcatChecksLeaveBothDataSetsUnchanged) {
    makeDataSet(2, 1);
    DataSet_s *destination = dataSet();
    DataSet_s *source = AllocDataSet("other", true, true);
    ASSERT_TRUE(DataSetAllocVar(source, 0));
    ASSERT_TRUE(DataSetAllocVarData(source, 0, "A"));
    bool ok = true;
    std::string err = messagesOf([&] { ok = ConcatDataSets(destination, source, false, true); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "Invalid data sets for concatenation.  The source and destination data sets do not "
                                  "have the same number of variables."))
        << err;
    err = messagesOf([&] { ok = ConcatDataSets(nullptr, source, false, true); });
    EXPECT_TRUE(HoldsMessage(err, "Source or destination data sets not available.")) << err;
    ASSERT_TRUE(DataSetAllocVar(source, 1));
    ASSERT_TRUE(DataSetAllocVarData(source, 1, "B"));
    destination->NumCustomLabelSets = 6;
    source->NumCustomLabelSets = 5;
    err = messagesOf([&] { ok = ConcatDataSets(destination, source, false, true); });
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(err, "The total number of custom label sets exceeds the maximum.")) << err;
    destination->NumCustomLabelSets = source->NumCustomLabelSets = 0;
    EXPECT_EQ(destination->NumZones, 1);
    RemoveFromSet(source->EnabledVars, 1);
    err = messagesOf([&] { ok = ConcatDataSets(destination, source, false, true); });
    EXPECT_TRUE(HoldsMessage(err, "do not have the same enabled variables.")) << err;
    DeallocDataSet(&source);
}

TEST_F(DataSetTest, ConcatMovesZonesRenumbersAndJoinsAuxData) {
    makeDataSet(1, 2);
    DataSet_s *destination = dataSet();
    destination->AuxData = AuxDataAlloc();
    AuxDataSetItem(destination->AuxData, "Case", ArbParam_t("a"), AuxDataType_String, false);
    DataSet_s *source = AllocDataSet("other", true, true);
    ASSERT_TRUE(DataSetAllocVar(source, 0));
    ASSERT_TRUE(DataSetAllocVarData(source, 0, "Renamed"));
    source->AuxData = AuxDataAlloc();
    AuxDataSetItem(source->AuxData, "case", ArbParam_t("b"), AuxDataType_String, true);
    AuxDataSetItem(source->AuxData, "Other", ArbParam_t("x"), AuxDataType_String, false);
    for (EntIndex_t z = 0; z < 2; z++) {
        ZoneSpec_s spec;
        spec.NumPtsI = 2;
        spec.NumPtsJ = spec.NumPtsK = 1;
        spec.StrandID = 0;
        spec.ParentZone = z == 1 ? 0 : -1;
        ASSERT_TRUE(DataSetAllocZone(source, z));
        ASSERT_TRUE(DataSetAllocZoneData(source, z, &spec, nullptr, nullptr, nullptr, nullptr, false, -1, true, true,
                                         true, false));
    }
    ASSERT_TRUE(ConcatDataSets(destination, source, false, true));
    EXPECT_EQ(destination->NumZones, 4);
    EXPECT_EQ(source->NumZones, 0);
    EXPECT_EQ(GetZoneSpec(destination, 3)->ParentZone, 2);
    EXPECT_EQ(GetZoneSpec(destination, 2)->StrandID, 0);  // no strands in the destination before
    StrandInfo_s *strand = GetStrandInfo(destination, 0);
    ASSERT_NE(strand, nullptr);
    EXPECT_TRUE(InSet(strand->ZoneMembers, 2) && InSet(strand->ZoneMembers, 3) && !InSet(strand->ZoneMembers, 0));
    ArbParam_t joined;
    AuxDataType_e type;
    bool retain;
    ASSERT_TRUE(AuxDataGetItemByName(destination->AuxData, "CASE", &joined, &type, &retain));
    EXPECT_STREQ(reinterpret_cast<const char *>(joined), "a|b");
    EXPECT_TRUE(retain);
    EXPECT_EQ(AuxDataGetNumItems(destination->AuxData), 2);
    EXPECT_STREQ(GetVarName(destination, 0), "Renamed");
    DeallocDataSet(&source);
}

TEST_F(DataSetTest, MirrorNegatesTheAxisVariableOnAPrivateCopy) {
    ASSERT_TRUE(CreateRectangularZone(2, 2, 1, 1, 2, 0, 3, 4, 0, 0, 1, 2, FieldDataType_Double));
    DataSet_s *ds = dataSet();
    ASSERT_TRUE(CreateMirrorZones(nullptr, 'X'));
    EXPECT_EQ(ds->NumZones, 2);
    EXPECT_STREQ(GetZoneName(ds, 1), "Mirror: Rectangular zone (zone 1)");
    EXPECT_EQ(value(1, 0, 1), -3.0);
    EXPECT_EQ(value(0, 0, 1), 3.0);
    EXPECT_TRUE(VarIsSharedBetweenZones(ds, 0, 1, 1));  // Y is still shared
    bool ok = true;
    std::string err = messagesOf([&] { ok = CreateMirrorZones(nullptr, 'Z'); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Plot type must be 3D to mirror about Z axis.")) << err;
    err = messagesOf([&] { ok = CreateMirrorZones(nullptr, 'Q'); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid mirror axis")) << err;
}

}  // namespace

namespace {

TEST_F(DataSetTest, BranchingAnUnloadedFileVariableDoesNotReadTheFile) {
    makeDataSet(1, 2, 4, 1, 1);
    DataSet_s *ds = dataSet();
    // Four floats in a file, behind a 4-byte preamble.
    std::string file = tempDir + "/values.bin";
    FILE *f = fopen(file.c_str(), "wb");
    const float values[5] = {0.0f, 1.0f, 2.0f, 3.0f, 4.0f};
    fwrite(values, sizeof(float), 5, f);
    fclose(f);
    FieldData_a fileVar = FieldDataAlloc();
    ASSERT_TRUE(LoadBinaryBlockVariable(file.c_str(), DataValueStructure_ClassicGhost, false, 4, 1, nullptr,
                                        GetZoneSpec(ds, 0), FieldDataType_Float, true, ValueLocation_Nodal, fileVar));
    SetNativeFieldDataPtr(ds, 0, 0, fileVar);
    ShareVariable(ds, 0, 1, 0);
    ASSERT_FALSE(IsFieldDataReadable(fileVar));
    remove(file.c_str());  // a read from here on would fail
    ASSERT_TRUE(BranchVariable(ds, 1, 0));
    FieldData_a branched = GetNativeFieldDataPtr(ds, 1, 0);
    EXPECT_NE(branched, fileVar);
    EXPECT_FALSE(IsFieldDataReadable(branched));
    EXPECT_EQ(branched->VarShareRefCount, 1);
    EXPECT_EQ(fileVar->VarShareRefCount, 1);
    EXPECT_EQ(branched->NumValues, 4);
}

}  // namespace
