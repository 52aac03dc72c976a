// The binary data file: files built byte by byte in both byte orders, every corruption message,
// and round trips of data sets built in memory through the writer and the reader.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>

#include "base/data/dataio.h"
#include "base/data/face.h"
#include "base/data/share.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/strlist.h"
#include "data/data_fixture.h"

namespace {

// Lays out a file's bytes in either byte order.
class Bytes {
  public:
    explicit Bytes(bool bigEndian) : big_(bigEndian) {}
    template <typename T>
    Bytes &put(T value) {
        unsigned char raw[sizeof(T)];
        memcpy(raw, &value, sizeof(T));
        bool hostBig = htonsTest();
        if (hostBig != big_)
            for (size_t i = 0; i < sizeof(T) / 2; i++) std::swap(raw[i], raw[sizeof(T) - 1 - i]);
        data.append(reinterpret_cast<char *>(raw), sizeof(T));
        return *this;
    }
    Bytes &i32(int32_t v) { return put(v); }
    Bytes &f32(float v) { return put(v); }
    Bytes &f64(double v) { return put(v); }
    Bytes &i16(int16_t v) { return put(v); }
    Bytes &byte(unsigned char v) {
        data.push_back(char(v));
        return *this;
    }
    Bytes &str(const std::string &s) {
        for (unsigned char c : s) i32(c);
        return i32(0);
    }
    Bytes &preamble(int version = 108) {
        data += "#!QF";
        char tag[8];
        snprintf(tag, sizeof(tag), "V%-3d", version);
        data.append(tag, 4);
        return i32(1);
    }
    // Title, variable names, and an ordered zone record with no aux data.
    Bytes &header(const std::vector<std::string> &vars, int32_t i, int32_t j, int32_t k, int32_t packing = 0,
                  const std::vector<int32_t> &locations = {}) {
        str("Test data").i32(int32_t(vars.size()));
        for (const auto &v : vars) str(v);
        return orderedZone("Zone A", i, j, k, packing, locations);
    }
    Bytes &orderedZone(const std::string &name, int32_t i, int32_t j, int32_t k, int32_t packing = 0,
                       const std::vector<int32_t> &locations = {}) {
        f32(299.0f).str(name).i32(-1).i32(-1).f64(0.0).i32(-1).i32(0).i32(packing);
        i32(locations.empty() ? 0 : 1);
        for (int32_t l : locations) i32(l);
        return i32(0).i32(0).i32(i).i32(j).i32(k).i32(0);
    }
    // The start of a zone's data: types, no passive, no sharing, no shared connectivity.
    Bytes &zoneData(const std::vector<int32_t> &types) {
        f32(299.0f);
        for (int32_t t : types) i32(t);
        return i32(0).i32(0).i32(-1);
    }
    std::string data;

  private:
    static bool htonsTest() {
        uint16_t one = 1;
        unsigned char first;
        memcpy(&first, &one, 1);
        return first == 0;
    }
    bool big_;
};

class DataIoTest : public DataSetTest {
  protected:
    std::string write(const std::string &name, const std::string &bytes) {
        std::string path = tempDir + "/" + name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    // Reads a file; returns the data set (owned by the test through loaded) or null and the messages.
    DataSet_s *read(const std::string &path, std::string *messages = nullptr) {
        DeallocDataSet(&loaded);
        std::string err = messagesOf([&] { ReadBinaryDataFile(path.c_str(), &loaded, &extras); });
        if (messages != nullptr) *messages = err;
        return loaded;
    }
    void TearDown() override {
        DeallocDataSet(&loaded);
        DataSetTest::TearDown();
    }
    double at(DataSet_s *ds, EntIndex_t zone, EntIndex_t var, LgIndex_t index) {
        FieldData_a fd = GetReadableNativeFieldDataPtr(ds, zone, var);
        return fd != nullptr ? GetFieldValue(fd, index) : -999.0;
    }
    DataSet_s *loaded = nullptr;
    DataFileExtras_s extras;
};

TEST_F(DataIoTest, MinimalFileInBothByteOrders) {
    for (bool big : {false, true}) {
        Bytes b(big);
        b.preamble().header({"X", "Y"}, 3, 2, 1).f32(357.0f);
        b.zoneData({1, 2}).f64(0).f64(5).f64(-1).f64(1);
        for (int n = 0; n < 6; n++) b.f32(float(n));
        for (int n = 0; n < 6; n++) b.f64(n % 2 ? 1.0 : -1.0);
        std::string err;
        DataSet_s *ds = read(write(big ? "big.plt" : "little.plt", b.data), &err);
        ASSERT_NE(ds, nullptr) << err;
        EXPECT_STREQ(ds->DataSetTitle, "Test data");
        EXPECT_STREQ(GetVarName(ds, 1), "Y");
        EXPECT_STREQ(GetZoneName(ds, 0), "Zone A");
        EXPECT_EQ(ZoneGetNumPoints(ds, 0), 6);
        FieldData_a x = GetNativeFieldDataPtr(ds, 0, 0);
        EXPECT_FALSE(IsFieldDataReadable(x));  // values stay on disk until asked for
        double min, max;
        FieldDataGetMinMax(x, &min, &max);  // known from the file without reading the values
        EXPECT_EQ(max, 5.0);
        EXPECT_EQ(at(ds, 0, 0, 4), 4.0);
        EXPECT_EQ(at(ds, 0, 1, 3), 1.0);
        EXPECT_EQ(GetNativeFieldDataPtr(ds, 0, 1)->Type, FieldDataType_Double);
    }
}

TEST_F(DataIoTest, BitsArePackedLowestFirstAndNineTakeTwoBytes) {
    Bytes b(false);
    b.preamble().header({"B"}, 9, 1, 1).f32(357.0f).zoneData({6}).f64(0).f64(1);
    b.byte(0b10100101).byte(0b00000001);
    DataSet_s *ds = read(write("bits.plt", b.data));
    ASSERT_NE(ds, nullptr);
    const double expected[9] = {1, 0, 1, 0, 0, 1, 0, 1, 1};
    for (int n = 0; n < 9; n++) EXPECT_EQ(at(ds, 0, 0, n), expected[n]) << n;
    // One byte short: the block runs past the end of the file.
    std::string err;
    EXPECT_EQ(read(write("short.plt", b.data.substr(0, b.data.size() - 1)), &err), nullptr);
    EXPECT_TRUE(HoldsMessage(err, "Err: Data file appears to be truncated.")) << err;
}

TEST_F(DataIoTest, PointPackedValuesOfMixedTypes) {
    Bytes b(true);
    b.preamble().header({"F", "D", "S"}, 2, 1, 1, 1).f32(357.0f).zoneData({1, 2, 4});
    for (int v = 0; v < 3; v++) b.f64(0).f64(0);
    b.f32(1.5f).f64(-2.25).i16(7).f32(3.5f).f64(8.0).i16(-9);  // point by point
    std::string err;
    DataSet_s *ds = read(write("point.plt", b.data), &err);
    ASSERT_NE(ds, nullptr) << err;
    EXPECT_EQ(at(ds, 0, 0, 1), 3.5);
    EXPECT_EQ(at(ds, 0, 1, 0), -2.25);
    EXPECT_EQ(at(ds, 0, 2, 1), -9.0);
}

TEST_F(DataIoTest, CorruptionMessages) {
    struct Case {
        const char *name;
        std::string bytes;
        const char *message;
    };
    std::vector<Case> cases;
    {
        Bytes b(false);
        b.preamble().header({"X"}, 2, 1, 1).f32(357.0f).f32(298.0f);
        cases.push_back({"marker", b.data, "Corrupt input file"});
    }
    {
        Bytes b(false);
        b.preamble().header({"X"}, 2, 1, 1).f32(357.0f).zoneData({7});
        cases.push_back({"type", b.data, "Invalid data type - binary input file corrupted"});
    }
    {
        Bytes b(false);
        b.preamble().header({"X"}, 0, 2, 1);
        cases.push_back({"dims", b.data,
                         "Invalid data file: incorrect specifi" "cation of I, J, or K points for ordered data set."});
    }
    {
        Bytes b(false);
        b.preamble().header({"X"}, 2, 2, 1, 1, {1});
        cases.push_back({"ccpoint", b.data, "Invalid datafile: cell centered variable must be in block format."});
    }
    {
        Bytes b(false);
        b.preamble().str("T").i32(1).str("X").f32(799.0f).str("Name").i32(3).str("v");
        cases.push_back({"auxtype", b.data, "Unsupported auxiliary data type"});
    }
    {
        Bytes b(false);
        b.preamble().str("T").i32(1).str("X").f32(799.0f).str("1bad").i32(0).str("v");
        cases.push_back({"auxname", b.data, "Invalid auxiliary data name."});
    }
    {
        Bytes b(false);  // a triangle zone with no elements
        b.preamble().str("T").i32(1).str("X");
        b.f32(299.0f).str("fe").i32(-1).i32(-1).f64(0).i32(-1).i32(2).i32(0).i32(0).i32(0).i32(0);
        b.i32(3).i32(0).i32(0).i32(0).i32(0).i32(0).f32(357.0f).zoneData({1}).f64(0).f64(0);
        b.f32(0).f32(0).f32(0);
        cases.push_back({"conn", b.data, "Connectivity list is zero length in zone 1"});
    }
    {
        Bytes b(false);
        b.preamble(109).str("T");
        cases.push_back({"newer", b.data,
                         "Binary file version newer than Orvanex version. Upgrade Orvanex or use an older Fenrow to "
                         "produce the datafile."});
    }
    {
        Bytes b(false);
        b.preamble(80).str("T");
        cases.push_back({"v80", b.data, "Invalid header in binary datafile"});
    }
    {
        Bytes b(false);  // 8e9 points
        b.preamble().header({"X"}, 2000, 2000, 2000);
        cases.push_back({"points", b.data, "Total Number of points for a zone exceeds 2147483646"});
    }
    cases.push_back({"garbage", "not a data file at all", "Invalid header in binary datafile"});
    for (const Case &c : cases) {
        std::string err;
        EXPECT_EQ(read(write(std::string(c.name) + ".plt", c.bytes), &err), nullptr) << c.name;
        EXPECT_TRUE(HoldsMessage(err, std::string("Err: ") + c.message)) << c.name << ": " << err;
    }
}

TEST_F(DataIoTest, VariablesWithoutZonesLoadNothing) {
    Bytes b(false);
    b.preamble().str("Empty").i32(2).str("A").str("B").f32(357.0f);
    DataSet_s *ds = read(write("empty.plt", b.data));
    ASSERT_NE(ds, nullptr);
    EXPECT_EQ(ds->NumVars, 0);
    EXPECT_EQ(ds->NumZones, 0);
}

TEST_F(DataIoTest, RoundTripOfEveryTypeLocationSharingAndRecord) {
    makeDataSet(0, 0);
    const FieldDataType_e types[6] = {FieldDataType_Float, FieldDataType_Double, FieldDataType_LongInt,
                                      FieldDataType_ShortInt, FieldDataType_Byte, FieldDataType_Bit};
    for (int v = 0; v < 7; v++) ASSERT_TRUE(AddVar(("V" + std::to_string(v + 1)).c_str(), nullptr, nullptr, false, nullptr));
    DataSet_s *ds = dataSet();
    ZoneSpec_s spec;
    spec.NumPtsI = 4;
    spec.NumPtsJ = 3;
    spec.NumPtsK = 1;
    spec.Name = const_cast<char *>("ordered");
    FieldDataType_e zoneTypes[7];
    ValueLocation_e locations[7];
    bool passive[7] = {false, false, false, false, false, false, true};
    for (int v = 0; v < 7; v++) {
        zoneTypes[v] = types[v % 6];
        locations[v] = v == 1 ? ValueLocation_CellCentered : ValueLocation_Nodal;
    }
    ASSERT_TRUE(AddZone(&spec, zoneTypes, locations, 0, nullptr, passive, -1, false));
    for (int v = 0; v < 6; v++) {
        FieldData_a fd = GetWritableNativeFieldDataPtr(ds, 0, EntIndex_t(v));
        for (LgIndex_t n = 0; n < fd->NumValues; n++) SetFieldValue(fd, n, v == 5 ? n % 3 == 0 : n * 3 - 7);
    }
    // An FE zone, and a second one sharing its connectivity and one variable.
    ZoneSpec_s fe;
    fe.Type = ZoneType_FETriangle;
    fe.NumPtsI = 4;
    fe.NumPtsJ = 2;
    fe.NumPtsK = 3;
    fe.Name = const_cast<char *>("triangles");
    FieldDataType_e feTypes[7] = {FieldDataType_Double, FieldDataType_Double, FieldDataType_Double, FieldDataType_Double,
                                  FieldDataType_Double, FieldDataType_Double, FieldDataType_Double};
    ASSERT_TRUE(AddZone(&fe, feTypes, nullptr, 1, nullptr, nullptr, -1, false));
    const LgIndex_t nodes[6] = {0, 1, 2, 2, 1, 3};
    for (int n = 0; n < 6; n++) NodeMapSetNode(GetZoneData(ds, 1)->NodeMap, n / 3, n % 3, nodes[n]);
    setValues(1, 0, {10, 11, 12, 13});
    EntIndex_t share[7] = {1, -1, -1, -1, -1, -1, -1};
    ASSERT_TRUE(AddZone(&fe, feTypes, nullptr, 2, share, nullptr, 1, false));
    SetZoneParentZone(ds, 2, 1);
    ds->AuxData = AuxDataAlloc();
    AuxDataSetItem(ds->AuxData, "Common.Case", ArbParam_t("run 7"), AuxDataType_String, true);
    GetZoneSpec(ds, 1)->AuxData = AuxDataAlloc();
    AuxDataSetItem(GetZoneSpec(ds, 1)->AuxData, "Material", ArbParam_t("steel"), AuxDataType_String, true);
    ds->CustomLabels[0] = StringListAlloc();
    StringListAppendString(ds->CustomLabels[0], "Mon");
    ds->NumCustomLabelSets = 1;
    DataFileExtras_s out;
    out.Texts.emplace_back();
    out.Texts[0].Text = "Hello";
    out.Texts[0].PositionCoordSys = 6;
    out.Texts[0].X = 0.25;
    out.Geoms.emplace_back();
    out.Geoms[0].SegmentX = {{0, 1, 2}};
    out.Geoms[0].SegmentY = {{3, 4, 5}};

    for (bool otherOrder : {false, true}) {
        SCOPED_TRACE(otherOrder ? "other byte order" : "native byte order");
        std::string path = tempDir + (otherOrder ? "/round_swapped.plt" : "/round.plt");
        WriteDataSetOptions_s options;
        options.OtherByteOrder = otherOrder;
        extras = DataFileExtras_s();
        ASSERT_TRUE(GoWriteDataSet(ds, &out, path.c_str(), options));
        DataSet_s *back = read(path);
        ASSERT_NE(back, nullptr);
        ASSERT_EQ(back->NumZones, 3);
        ASSERT_EQ(back->NumVars, 7);
        for (int v = 0; v < 6; v++) {
            FieldData_a a = GetReadableNativeFieldDataPtr(ds, 0, EntIndex_t(v));
            FieldData_a b = GetReadableNativeFieldDataPtr(back, 0, EntIndex_t(v));
            ASSERT_NE(b, nullptr) << v;
            EXPECT_EQ(b->Type, a->Type) << v;
            EXPECT_EQ(b->Location, a->Location) << v;
            ASSERT_EQ(b->NumValues, a->NumValues) << v;
            for (LgIndex_t n = 0; n < a->NumValues; n++) EXPECT_EQ(GetFieldValue(b, n), GetFieldValue(a, n)) << v << "," << n;
        }
        EXPECT_EQ(GetNativeFieldDataPtr(back, 0, 1)->NumValues, 8);  // cell-centred: I x (J-1), ghosts included
        EXPECT_TRUE(IsVarPassive(back, 0, 6));
        EXPECT_TRUE(VarIsSharedBetweenZones(back, 1, 2, 0));
        EXPECT_FALSE(VarIsSharedBetweenZones(back, 1, 2, 1));
        EXPECT_EQ(GetZoneData(back, 2)->NodeMap, GetZoneData(back, 1)->NodeMap);
        EXPECT_EQ(NodeMapGetNode(GetZoneData(back, 1)->NodeMap, 1, 2), 3);
        EXPECT_EQ(GetZoneSpec(back, 2)->ParentZone, 1);
        EXPECT_EQ(GetZoneSpec(back, 1)->Type, ZoneType_FETriangle);
        ArbParam_t value;
        AuxDataType_e type;
        bool retain;
        ASSERT_TRUE(AuxDataGetItemByName(back->AuxData, "Common.Case", &value, &type, &retain));
        EXPECT_STREQ(reinterpret_cast<const char *>(value), "run 7");
        ASSERT_TRUE(AuxDataGetItemByName(GetZoneSpec(back, 1)->AuxData, "Material", &value, &type, &retain));
        EXPECT_STREQ(reinterpret_cast<const char *>(value), "steel");
        ASSERT_EQ(back->NumCustomLabelSets, 1);
        EXPECT_STREQ(StringListGetStringRef(back->CustomLabels[0], 0), "Mon");
        ASSERT_EQ(extras.Texts.size(), 1u);
        EXPECT_EQ(extras.Texts[0].Text, "Hello");
        EXPECT_EQ(extras.Texts[0].PositionCoordSys, 6);
        EXPECT_EQ(extras.Texts[0].X, 0.25);
        ASSERT_EQ(extras.Geoms.size(), 1u);
        EXPECT_EQ(extras.Geoms[0].SegmentY[0][2], 5.0);
    }
}

TEST_F(DataIoTest, PlaceholderZonesKeepTheNumbering) {
    makeDataSet(1, 3);
    setValues(2, 0, {1, 2, 3, 4, 5, 6});
    Set_a *zones = AllocSet(true);
    AddToSet(zones, 0, true);
    AddToSet(zones, 2, true);
    WriteDataSetOptions_s options;
    options.Zones = zones;
    options.IncludeZombies = true;
    std::string path = tempDir + "/zombies.plt";
    ASSERT_TRUE(GoWriteDataSet(dataSet(), nullptr, path.c_str(), options));
    DeallocSet(&zones);
    DataSet_s *back = read(path);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->NumZones, 3);
    EXPECT_FALSE(IsZoneEnabled(back, 1));
    EXPECT_STREQ(GetZoneName(back, 2), "Zone 3");
    EXPECT_EQ(at(back, 2, 0, 5), 6.0);
}

TEST_F(DataIoTest, RewritingTheSourceFileKeepsTheValues) {
    makeDataSet(1, 1);
    setValues(0, 0, {1, 2, 3, 4, 5, 6});
    std::string path = tempDir + "/same.plt";
    ASSERT_TRUE(GoWriteDataSet(dataSet(), nullptr, path.c_str(), WriteDataSetOptions_s()));
    DataSet_s *first = read(path);
    ASSERT_NE(first, nullptr);
    loaded = nullptr;  // keep it: it reads from the file about to be replaced
    ASSERT_TRUE(CreateNewFrame());
    ASSERT_TRUE(AttachDataSetToCurFrame(first));
    ASSERT_FALSE(IsFieldDataReadable(GetNativeFieldDataPtr(first, 0, 0)));
    // A different data set goes over the file; the first must not read the new bytes.
    bool changed = false;
    ASSERT_TRUE(SetFieldValueInCurrentDataSet(0, 0, 0, 100.0, false, &changed));
    ASSERT_TRUE(GoWriteDataSet(first, nullptr, path.c_str(), WriteDataSetOptions_s()));
    EXPECT_EQ(at(first, 0, 0, 0), 100.0);
    EXPECT_EQ(at(first, 0, 0, 5), 6.0);
    DataSet_s *second = read(path);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(at(second, 0, 0, 0), 100.0);
}

TEST_F(DataIoTest, FailedWriteLeavesTheOldFile) {
    std::string path = write("keep.plt", "old contents");
    makeDataSet(1, 1);
    Set_a *none = AllocSet(true);
    WriteDataSetOptions_s options;
    options.Zones = none;
    options.Vars = none;
    std::string err = messagesOf([&] { EXPECT_FALSE(GoWriteDataSet(dataSet(), nullptr, path.c_str(), options)); });
    DeallocSet(&none);
    EXPECT_TRUE(HoldsMessage(err, "Err: Nothing to write out")) << err;
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_EQ(text.str(), "old contents");
}

}  // namespace

namespace {

// A string of an old file: a fixed count of float character codes.
void fixedString(Bytes &b, const std::string &text, int count) {
    for (int n = 0; n < count; n++) b.f32(n < int(text.size()) ? float((unsigned char)text[size_t(n)]) : 0.0f);
}

TEST_F(DataIoTest, Version100FEZoneWithOneBasedNodes) {
    Bytes b(true);
    b.preamble(100).str("Old FE").i32(1).str("T");
    b.f32(299.0f).str("tri").i32(2).i32(5).i32(3).i32(1).i32(0).f32(357.0f);  // FE block, colour 5, triangles
    b.f32(299.0f).i32(1).i32(0);                                                // types, no duplicated variables
    b.f32(1.0f).f32(2.0f).f32(3.0f).i32(0).i32(3).i32(1).i32(2);                // values, own nodes, 1-based
    std::string err;
    DataSet_s *ds = read(write("v100.plt", b.data), &err);
    ASSERT_NE(ds, nullptr) << err;
    EXPECT_EQ(GetZoneSpec(ds, 0)->Type, ZoneType_FETriangle);
    EXPECT_EQ(GetZoneSpec(ds, 0)->ZoneColor, 5);
    NodeMap_a nodeMap = GetZoneData(ds, 0)->NodeMap;
    EXPECT_EQ(NodeMapGetNode(nodeMap, 0, 0), 2);
    EXPECT_EQ(NodeMapGetNode(nodeMap, 0, 2), 1);
    EXPECT_EQ(at(ds, 0, 0, 2), 3.0);
}

TEST_F(DataIoTest, FloatVersion62WithFixedStringsAndDuplicatedVariables) {
    Bytes b(false);
    b.f32(6.2f);
    fixedString(b, "Sixty two", 80);
    b.f32(2.0f);
    fixedString(b, "X", 5);
    fixedString(b, "P\x01", 5);  // a control code becomes "?"
    for (const char *name : {"first", "second"}) {
        b.f32(299.0f);
        fixedString(b, name, 10);
        b.f32(0.0f).f32(2.0f).f32(1.0f).f32(1.0f);  // ordered block, I=2, J=1, K=1
    }
    b.f32(357.0f);
    b.f32(299.0f).f32(0.0f).f32(1.0f).f32(2.0f).f32(3.0f).f32(4.0f);  // X then P
    b.f32(299.0f).f32(1.0f).f32(1.0f).f32(9.0f).f32(8.0f);            // X from zone 1, then P
    std::string err;
    DataSet_s *ds = read(write("v62.plt", b.data), &err);
    ASSERT_NE(ds, nullptr) << err;
    EXPECT_STREQ(ds->DataSetTitle, "Sixty two");
    EXPECT_STREQ(GetVarName(ds, 1), "P?");
    EXPECT_STREQ(GetZoneName(ds, 1), "second");
    EXPECT_TRUE(VarIsSharedBetweenZones(ds, 0, 1, 0));
    EXPECT_EQ(at(ds, 1, 0, 1), 2.0);
    EXPECT_EQ(at(ds, 1, 1, 0), 9.0);
    // Duplication in the first zone has nothing to duplicate from.
    Bytes bad(false);
    bad.preamble(75).str("T").i32(1).str("X").f32(299.0f).str("z").i32(0).i32(-1).i32(2).i32(1).i32(1);
    bad.f32(357.0f).f32(299.0f).i32(1).i32(1).i32(1);
    EXPECT_EQ(read(write("dup.plt", bad.data), &err), nullptr);
    EXPECT_TRUE(HoldsMessage(err, "Cannot duplicate variables from the first zone since there are no previous zones "
                                  "to duplicate from."))
        << err;
    // Old text records are refused.
    Bytes text(false);
    text.preamble(75).str("T").i32(1).str("X").f32(499.0f);
    EXPECT_EQ(read(write("oldtext.plt", text.data), &err), nullptr);
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid text record")) << err;
}

TEST_F(DataIoTest, Version105CommonTimeBecomesTheSolutionTime) {
    Bytes b(false);
    b.preamble(105).str("T").i32(1).str("X");
    b.f32(299.0f).str("step").i32(-1).i32(0).i32(0).i32(0).i32(0).i32(2).i32(1).i32(1);  // no parent/strand/time
    b.i32(1).str("Common.Time").i32(0).str(" 2.5 ").i32(1).str("Other").i32(0).str("x").i32(0).f32(357.0f);
    b.f32(299.0f).i32(1).i32(0).i32(0).i32(-1).f64(1).f64(2).f32(1).f32(2);
    std::string err;
    DataSet_s *ds = read(write("v105.plt", b.data), &err);
    ASSERT_NE(ds, nullptr) << err;
    EXPECT_EQ(GetZoneSpec(ds, 0)->SolutionTime, 2.5);
    EXPECT_EQ(GetZoneSpec(ds, 0)->StrandID, -2);
    EXPECT_EQ(AuxDataGetNumItems(GetZoneSpec(ds, 0)->AuxData), 1);
}

}  // namespace

namespace {

TEST_F(DataIoTest, FaceNeighboursRoundTrip) {
    FaceNeighborInstallHooks();
    makeDataSet(1, 0);
    addTwoTriangles(0);
    addTwoTriangles(1);
    DataSet_s *ds = dataSet();
    // Zone 1: a user connection to zone 0; zone 0: neighbours from the node map kept as given.
    connectZone1ToZone0();
    ASSERT_TRUE(UpdateFaceNeighbor(false, GetZoneData(ds, 0)->FN, GetZoneData(ds, 0)->NodeMap, "zone 1"));
    GetZoneSpec(ds, 0)->AutoAssignFN = false;

    std::string path = tempDir + "/neighbours.plt";
    ASSERT_TRUE(GoWriteDataSet(ds, nullptr, path.c_str(), WriteDataSetOptions_s()));
    std::string err;
    DataSet_s *back = read(path, &err);
    ASSERT_NE(back, nullptr) << err;
    // Zone 0: element 0's face 1 (nodes 1-2) lies against element 1, read from the raw array.
    FaceNeighbor_a zone0 = GetZoneData(back, 0)->FN;
    ASSERT_TRUE(IsValidFaceNeighbor(zone0));
    LgIndex_t neighbor;
    EntIndex_t neighborZone;
    FaceNeighborGetNeighbor(zone0, 0, 1, 0, &neighbor, &neighborZone);
    EXPECT_EQ(neighbor, 1);
    EXPECT_EQ(neighborZone, -1);
    // Zone 1: the user connection survives, pointing into zone 0.
    FaceNeighbor_a zone1 = GetZoneData(back, 1)->FN;
    bool isUserDefined = false;
    ASSERT_EQ(FaceNeighborGetNumNeighbors(zone1, 0, 2, &isUserDefined), 1);
    EXPECT_TRUE(isUserDefined);
    FaceNeighborGetNeighbor(zone1, 0, 2, 0, &neighbor, &neighborZone);
    EXPECT_EQ(neighbor, 1);
    EXPECT_EQ(neighborZone, 0);
}

TEST_F(DataIoTest, BadUserFaceNeighbourIsRefused) {
    FaceNeighborInstallHooks();
    Bytes b(false);
    b.preamble().str("T").i32(1).str("X");
    // A triangle zone with one local connection (mode 0) naming element 5 of 2.
    b.f32(299.0f).str("fe").i32(-1).i32(-1).f64(0).i32(-1).i32(2).i32(0).i32(0).i32(0).i32(1).i32(0).i32(0);
    b.i32(4).i32(2).i32(0).i32(0).i32(0).i32(0).f32(357.0f);
    b.zoneData({1}).f64(0).f64(0).f32(0).f32(0).f32(0).f32(0);
    for (int n : {0, 1, 2, 2, 1, 3}) b.i32(n);
    b.i32(5).i32(0).i32(1);
    std::string err;
    EXPECT_EQ(read(write("badfn.plt", b.data), &err), nullptr);
    EXPECT_TRUE(HoldsMessage(err, "Invalid user defined face neighbor element assignment. Element number is not "
                                  "valid for the zone dimensions."))
        << err;
}

}  // namespace

namespace {

TEST_F(DataIoTest, EveryFEZoneTypeKeepsItsTypeAndNodes) {
    makeDataSet(1, 0);
    DataSet_s *ds = dataSet();
    const ZoneType_e types[5] = {ZoneType_FELineSeg, ZoneType_FETriangle, ZoneType_FEQuad, ZoneType_FETetra,
                                 ZoneType_FEBrick};
    for (EntIndex_t z = 0; z < 5; z++) {
        ZoneSpec_s spec;
        spec.Type = types[z];
        spec.NumPtsI = 9;
        spec.NumPtsJ = 2;
        spec.NumPtsK = GetNodesPerElement(types[z]);
        ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, z, nullptr, nullptr, -1, false));
        NodeMap_a nodeMap = GetZoneData(ds, z)->NodeMap;
        for (int e = 0; e < 2; e++)
            for (int c = 0; c < spec.NumPtsK; c++) NodeMapSetNode(nodeMap, e, c, (e + c * 2) % 9);
    }
    std::string path = tempDir + "/fe.plt";
    ASSERT_TRUE(GoWriteDataSet(ds, nullptr, path.c_str(), WriteDataSetOptions_s()));
    DataSet_s *back = read(path);
    ASSERT_NE(back, nullptr);
    for (EntIndex_t z = 0; z < 5; z++) {
        EXPECT_EQ(GetZoneSpec(back, z)->Type, types[z]) << z;
        NodeMap_a nodeMap = GetZoneData(back, z)->NodeMap;
        ASSERT_EQ(nodeMap->NodesPerElement, GetNodesPerElement(types[z]));
        for (int e = 0; e < 2; e++)
            for (int c = 0; c < nodeMap->NodesPerElement; c++) EXPECT_EQ(NodeMapGetNode(nodeMap, e, c), (e + c * 2) % 9);
    }
}

}  // namespace
