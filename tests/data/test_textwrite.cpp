// The text writer's output, checked line by line against text worked out by hand.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "base/data/face.h"
#include "base/data/fenrow.h"
#include "base/data/share.h"
#include "base/data/textwrite.h"
#include "base/kernel/alloc.h"
#include "data/data_fixture.h"

namespace {

std::string fileText(const std::string &path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST_F(DataSetTest, TextWriterBlockAndPointLayouts) {
    makeDataSet(2, 1, 2, 1, 1);
    ASSERT_TRUE(SetDatasetTitle(dataSet(), "T \"q\""));
    setValues(0, 0, {1, 2.5});
    setValues(0, 1, {-3, 4e-7});
    WriteDataSetOptions_s options;
    options.Binary = false;
    options.Precision = 6;
    std::string path = tempDir + "/out.dat";
    ASSERT_TRUE(WriteTextDataSet(dataSet(), nullptr, path.c_str(), options));
    EXPECT_EQ(fileText(path), "TITLE     = \"T \\\"q\\\"\"\n"
                              "VARIABLES = \"V1\"\n\"V2\"\n"
                              "ZONE T=\"Zone 1\"\n"
                              " STRANDID=0, SOLUTIONTIME=0\n"
                              " I=2, J=1, K=1, ZONETYPE=Ordered\n"
                              " DATAPACKING=BLOCK\n"
                              " DT=(SINGLE SINGLE )\n"
                              "1 2.5\n"
                              "-3 4E-07\n");
    options.UsePointFormat = true;
    ASSERT_TRUE(WriteTextDataSet(dataSet(), nullptr, path.c_str(), options));
    std::string point = fileText(path);
    EXPECT_NE(point.find(" DATAPACKING=POINT\n DT=(SINGLE SINGLE )\n1 -3\n2.5 4E-07\n"), std::string::npos) << point;
}

TEST_F(DataSetTest, TextWriterLinesCellCentredValuesAndConnectivity) {
    makeDataSet(1, 0);
    FieldDataType_e type = FieldDataType_Double;
    ValueLocation_e location = ValueLocation_CellCentered;
    ZoneSpec_s spec;
    spec.NumPtsI = 3;
    spec.NumPtsJ = 2;
    spec.NumPtsK = 1;
    spec.Name = const_cast<char *>("cc");
    spec.StrandID = 4;
    spec.SolutionTime = 0.125;
    ASSERT_TRUE(AddZone(&spec, &type, &location, 0, nullptr, nullptr, -1, false));
    setValues(0, 0, {10, 20, 999});  // the third slot is a ghost and is not written
    ZoneSpec_s fe;
    fe.Type = ZoneType_FETriangle;
    fe.NumPtsI = 3;
    fe.NumPtsJ = 1;
    fe.NumPtsK = 3;
    fe.Name = const_cast<char *>("tri");
    ValueLocation_e nodal = ValueLocation_Nodal;
    ASSERT_TRUE(AddZone(&fe, &type, &nodal, 1, nullptr, nullptr, -1, false));
    for (int c = 0; c < 3; c++) NodeMapSetNode(GetZoneData(dataSet(), 1)->NodeMap, 0, c, 2 - c);
    setValues(1, 0, {1.0 / 3.0, 2, 3});
    WriteDataSetOptions_s options;
    options.Binary = false;
    options.Precision = 12;  // 80 / 17 = 4 values a line
    std::string path = tempDir + "/lines.dat";
    ASSERT_TRUE(WriteTextDataSet(dataSet(), nullptr, path.c_str(), options));
    std::string text = fileText(path);
    EXPECT_NE(text.find(" STRANDID=5, SOLUTIONTIME=0.125\n I=3, J=2, K=1, ZONETYPE=Ordered\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find(" VARLOCATION=([1]=CELLCENTERED)\n DT=(DOUBLE )\n10 20\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" N=3, E=1, ZONETYPE=FETriangle\n"), std::string::npos) << text;
    EXPECT_NE(text.find("0.333333333333 2 3\n3 2 1\n"), std::string::npos) << text;
    options.UsePointFormat = true;
    std::string err = messagesOf([&] { EXPECT_FALSE(WriteTextDataSet(dataSet(), nullptr, path.c_str(), options)); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Cell centered variables may only be output in block format.")) << err;
    options.Precision = 51;
    err = messagesOf([&] { EXPECT_FALSE(WriteTextDataSet(dataSet(), nullptr, path.c_str(), options)); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid ASCII precision value in data set write")) << err;
}

}  // namespace

namespace {

// Converts a text file and reads the result; null (with the converter's text in *err) on failure.
DataSet_s *convertAndRead(const std::string &text, const std::string &binary, std::string *err,
                          DataFileExtras_s *extras = nullptr) {
    char *errorText = nullptr;
    if (!FenrowAsciiDatafile(text.c_str(), binary.c_str(), &errorText)) {
        *err = errorText != nullptr ? errorText : "";
        newfree(errorText);
        return nullptr;
    }
    DataSet_s *dataSet = nullptr;
    ReadBinaryDataFile(binary.c_str(), &dataSet, extras);
    return dataSet;
}

TEST_F(DataSetTest, TextToBinaryToTextToBinaryKeepsTheData) {
    std::string text = tempDir + "/first.dat";
    std::ofstream(text) << "TITLE = \"round trip\"\n"
                           "VARIABLES = \"X\" \"P\"\n"
                           "ZONE T=\"grid\" I=3, J=2, DATAPACKING=BLOCK, VARLOCATION=([2]=CELLCENTERED), DT=(DOUBLE SINGLE)\n"
                           "0 1 2 0 1 2\n"
                           "7.25 -1.5\n"
                           "ZONE T=\"mesh\" N=4, E=2, ZONETYPE=FETRIANGLE, DATAPACKING=POINT, DT=(LONGINT SHORTINT)\n"
                           "1 10\n2 20\n3 30\n4 40\n"
                           "1 2 3\n3 2 4\n"
                           "ZONE T=\"copy\" N=4, E=2, ZONETYPE=FETRIANGLE, DATAPACKING=BLOCK, VARSHARELIST=([1]=2),"
                           " CONNECTIVITYSHAREZONE=2, DT=(LONGINT SHORTINT)\n"
                           "-1 -2 -3 -4\n";
    std::string err;
    DataSet_s *first = convertAndRead(text, tempDir + "/first.plt", &err);
    ASSERT_NE(first, nullptr) << err;
    WriteDataSetOptions_s options;
    options.Binary = false;
    std::string again = tempDir + "/again.dat";
    ASSERT_TRUE(WriteTextDataSet(first, nullptr, again.c_str(), options));
    DataSet_s *second = convertAndRead(again, tempDir + "/again.plt", &err);
    ASSERT_NE(second, nullptr) << err;
    ASSERT_EQ(second->NumZones, 3);
    ASSERT_EQ(second->NumVars, 2);
    EXPECT_STREQ(second->DataSetTitle, "round trip");
    for (EntIndex_t z = 0; z < 3; z++) {
        EXPECT_STREQ(GetZoneName(second, z), GetZoneName(first, z));
        EXPECT_EQ(GetZoneSpec(second, z)->Type, GetZoneSpec(first, z)->Type);
        for (EntIndex_t v = 0; v < 2; v++) {
            FieldData_a a = GetReadableNativeFieldDataPtr(first, z, v), b = GetReadableNativeFieldDataPtr(second, z, v);
            ASSERT_NE(a, nullptr);
            ASSERT_NE(b, nullptr);
            EXPECT_EQ(b->Type, a->Type) << z << "," << v;
            EXPECT_EQ(b->Location, a->Location) << z << "," << v;
            ASSERT_EQ(b->NumValues, a->NumValues) << z << "," << v;
            for (LgIndex_t n = 0; n < a->NumValues; n++) EXPECT_EQ(GetFieldValue(b, n), GetFieldValue(a, n));
        }
    }
    // What the first file said, as it said it.
    EXPECT_EQ(GetFieldValue(GetReadableNativeFieldDataPtr(second, 0, 1), 1), -1.5);
    EXPECT_EQ(GetFieldValue(GetReadableNativeFieldDataPtr(second, 0, 1), 2), 0.0);  // ghost slot
    EXPECT_EQ(NodeMapGetNode(GetZoneData(second, 1)->NodeMap, 1, 2), 3);
    EXPECT_TRUE(VarIsSharedBetweenZones(second, 1, 2, 0));
    EXPECT_EQ(GetZoneData(second, 2)->NodeMap, GetZoneData(second, 1)->NodeMap);
    EXPECT_EQ(GetFieldValue(GetReadableNativeFieldDataPtr(second, 2, 1), 3), -4.0);
    DeallocDataSet(&first);
    DeallocDataSet(&second);
}

}  // namespace

namespace {

TEST_F(DataSetTest, TextAndGeometryRecordsRoundTripThroughText) {
    makeDataSet(1, 1, 2, 1, 1);
    DataFileExtras_s out;
    Text_s text;
    text.PositionCoordSys = 1;
    text.X = 0.25;
    text.Y = 0.5;
    text.CharHeightUnits = 1;
    text.Height = 0.04;
    text.Angle = 0.5;
    text.Anchor = 4;
    text.BoxType = 2;
    text.BoxFillColor = 9;
    text.Color = 3;
    text.Font = 7;
    text.Text = "say \"hi\"";
    out.Texts.push_back(text);
    Geom_s line;
    line.PositionCoordSys = 0;
    line.X = 1.5;
    line.Color = 2;
    line.DataType = FieldDataType_Double;
    line.SegmentX = {{0, 1, 2}, {5}};
    line.SegmentY = {{3, 4, 5}, {6}};
    out.Geoms.push_back(line);
    Geom_s box;
    box.PositionCoordSys = 1;
    box.X = 0.1;
    box.Y = 0.2;
    box.GeomType = 1;
    box.IsFilled = 1;
    box.FillColor = 5;
    box.Sizes = {0.3, 0.4};
    out.Geoms.push_back(box);
    WriteDataSetOptions_s options;
    options.Binary = false;
    std::string path = tempDir + "/records.dat", binary = tempDir + "/records.plt";
    ASSERT_TRUE(WriteTextDataSet(dataSet(), &out, path.c_str(), options));
    std::string err;
    DataFileExtras_s in;
    DataSet_s *back = convertAndRead(path, binary, &err, &in);
    ASSERT_NE(back, nullptr) << err;
    DeallocDataSet(&back);
    ASSERT_EQ(in.Texts.size(), 1u);
    const Text_s &t = in.Texts[0];
    EXPECT_EQ(t.PositionCoordSys, 1);
    EXPECT_DOUBLE_EQ(t.X, 0.25);
    EXPECT_DOUBLE_EQ(t.Height, 0.04);
    EXPECT_NEAR(t.Angle, 0.5, 1e-12);
    EXPECT_EQ(t.Anchor, 4);
    EXPECT_EQ(t.BoxType, 2);
    EXPECT_EQ(t.BoxFillColor, 9);
    EXPECT_EQ(t.Color, 3);
    EXPECT_EQ(t.Font, 7);
    EXPECT_EQ(t.Text, "say \"hi\"");
    ASSERT_EQ(in.Geoms.size(), 2u);
    EXPECT_EQ(in.Geoms[0].SegmentX.size(), 2u);
    EXPECT_EQ(in.Geoms[0].SegmentY[0][2], 5.0);
    EXPECT_EQ(in.Geoms[0].SegmentX[1][0], 5.0);
    EXPECT_EQ(in.Geoms[0].X, 1.5);
    EXPECT_EQ(in.Geoms[0].Color, 2);
    EXPECT_EQ(in.Geoms[1].GeomType, 1);
    EXPECT_EQ(in.Geoms[1].FillColor, 5);
    EXPECT_TRUE(in.Geoms[1].IsFilled);
    ASSERT_EQ(in.Geoms[1].Sizes.size(), 2u);
    EXPECT_NEAR(in.Geoms[1].Sizes[1], 0.4, 1e-7);  // single precision in the file
    EXPECT_NEAR(in.Geoms[1].Y, 0.2, 1e-12);
}

}  // namespace

namespace {

TEST_F(DataSetTest, UserFaceNeighboursRoundTripThroughText) {
    FaceNeighborInstallHooks();
    makeDataSet(1, 0);
    addTwoTriangles(0);
    addTwoTriangles(1);
    connectZone1ToZone0();
    WriteDataSetOptions_s options;
    options.Binary = false;
    std::string path = tempDir + "/fn.dat", binary = tempDir + "/fn.plt";
    ASSERT_TRUE(WriteTextDataSet(dataSet(), nullptr, path.c_str(), options));
    std::string err;
    DataSet_s *back = convertAndRead(path, binary, &err);
    ASSERT_NE(back, nullptr) << err;
    FaceNeighbor_a faceNeighbor = GetZoneData(back, 1)->FN;
    bool isUserDefined = false;
    ASSERT_EQ(FaceNeighborGetNumNeighbors(faceNeighbor, 0, 2, &isUserDefined), 1);
    EXPECT_TRUE(isUserDefined);
    LgIndex_t neighbor;
    EntIndex_t neighborZone;
    FaceNeighborGetNeighbor(faceNeighbor, 0, 2, 0, &neighbor, &neighborZone);
    EXPECT_EQ(neighbor, 1);
    EXPECT_EQ(neighborZone, 0);
    DeallocDataSet(&back);
}

}  // namespace
