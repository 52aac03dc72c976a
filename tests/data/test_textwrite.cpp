// The text writer's output, checked line by line against text worked out by hand.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "base/data/textwrite.h"
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
    ASSERT_TRUE(WriteTextDataSet(dataSet(), path.c_str(), options));
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
    ASSERT_TRUE(WriteTextDataSet(dataSet(), path.c_str(), options));
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
    ASSERT_TRUE(WriteTextDataSet(dataSet(), path.c_str(), options));
    std::string text = fileText(path);
    EXPECT_NE(text.find(" STRANDID=5, SOLUTIONTIME=0.125\n I=3, J=2, K=1, ZONETYPE=Ordered\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find(" VARLOCATION=([1]=CELLCENTERED)\n DT=(DOUBLE )\n10 20\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" N=3, E=1, ZONETYPE=FETriangle\n"), std::string::npos) << text;
    EXPECT_NE(text.find("0.333333333333 2 3\n3 2 1\n"), std::string::npos) << text;
    options.UsePointFormat = true;
    std::string err = messagesOf([&] { EXPECT_FALSE(WriteTextDataSet(dataSet(), path.c_str(), options)); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Cell centered variables may only be output in block format.")) << err;
    options.Precision = 51;
    err = messagesOf([&] { EXPECT_FALSE(WriteTextDataSet(dataSet(), path.c_str(), options)); });
    EXPECT_TRUE(HoldsMessage(err, "Err: Invalid ASCII precision value in data set write")) << err;
}

}  // namespace
