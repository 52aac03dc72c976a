// The text data file converter: small text files written here, converted, and read back with the
// binary reader; each expectation is worked out by hand from the text beside it.
#include <gtest/gtest.h>

#include <cmath>

#include <cstdio>
#include <dirent.h>
#include <string>
#include <vector>

#include "base/data/dataio.h"
#include "base/data/datautil.h"
#include "base/data/fenrow.h"
#include "base/data/nodemap.h"
#include "base/kernel/alloc.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/strlist.h"
#include "base/kernel/globals.h"
#include "support/scratch.h"

namespace {

class FenrowTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = MakeScratchDir("fenrow");
        tempDir = dir + "/tmp";
        ASSERT_FALSE(dir.empty());
        ASSERT_EQ(system(("mkdir '" + tempDir + "'").c_str()), 0);
        OrvanexTempDirectory = tempDir;
    }
    void TearDown() override {
        DeallocDataSet(&dataSet);
        OrvanexTempDirectory.clear();
        ASSERT_TRUE(RemoveScratchDir(dir));
    }
    // Converts the text; on success reads the result into dataSet. Gives the error text, or "".
    std::string convert(const std::string &text) {
        FILE *file = fopen((dir + "/in.dat").c_str(), "wb");
        fputs(text.c_str(), file);
        fclose(file);
        char *errorText = nullptr;
        bool ok = FenrowAsciiDatafile((dir + "/in.dat").c_str(), out().c_str(), &errorText);
        std::string message = errorText != nullptr ? errorText : "";
        newfree(errorText);
        if (ok) {
            EXPECT_TRUE(ReadBinaryDataFile(out().c_str(), &dataSet, &extras));
        }
        EXPECT_EQ(ok, message.empty()) << message;
        return message;
    }
    std::string out() const { return dir + "/out.plt"; }
    std::vector<double> values(EntIndex_t zone, EntIndex_t var) {
        FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
        std::vector<double> result;
        for (LgIndex_t n = 0; fieldData != nullptr && n < fieldData->NumValues; n++)
            result.push_back(GetFieldValue(fieldData, n));
        return result;
    }
    int tempEntries() const {
        int count = 0;
        DIR *d = opendir(tempDir.c_str());
        while (dirent *e = readdir(d)) count += e->d_name[0] != '.';
        closedir(d);
        return count;
    }
    std::string dir, tempDir;
    DataSet_s *dataSet = nullptr;
    DataFileExtras_s extras;
};

TEST_F(FenrowTest, NumbersOnlyMakeOnePointZoneOfNumberedVariables) {
    ASSERT_EQ(convert("1 2\n3 4\n5 6\n"), "");
    ASSERT_EQ(dataSet->NumVars, 2);
    EXPECT_STREQ(GetVarName(dataSet, 0), "V1");
    EXPECT_STREQ(GetVarName(dataSet, 1), "V2");
    ASSERT_EQ(dataSet->NumZones, 1);
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, 0);
    EXPECT_STREQ(spec->Name, "ZONE 001");
    EXPECT_EQ(spec->NumPtsI, 3);
    EXPECT_EQ(spec->NumPtsJ, 1);
    EXPECT_FALSE(spec->IsBlock);  // a point zone stays point packed
    EXPECT_EQ(values(0, 0), (std::vector<double>{1, 3, 5}));
    EXPECT_EQ(values(0, 1), (std::vector<double>{2, 4, 6}));
    EXPECT_EQ(tempEntries(), 0);
}

TEST_F(FenrowTest, NumberFormsAndTypes) {
    struct Case {
        const char *type;
        const char *text;
        std::vector<double> expected;
    } cases[] = {
        {"DOUBLE", "3*0.5 7", {0.5, 0.5, 0.5, 7}},
        {"DOUBLE", "1.5+3 1d2 2.5E-1 -4", {1500, 100, 0.25, -4}},
        {"DOUBLE", "1.5-3 -2e1 .5 2*1", {0.0015, -20, 0.5, 1}},
        {"LONGINT", "2.6 -2.6 2.4 0", {3, -3, 2, 0}},  // 0.49 toward the sign, then truncated
        {"BYTE", "1 300 -5 7", {1, 255, 0, 7}},
        {"BIT", "1 0\\\n0 1", {1, 0, 0, 1}},  // a backslash just continues on the next line
    };
    for (const Case &c : cases) {
        DeallocDataSet(&dataSet);
        ASSERT_EQ(convert(std::string("VARIABLES = X\r\nZONE I=4 DT=(") + c.type + ") F=BLOCK\r\n" + c.text + "\n"), "")
            << c.text;
        std::vector<double> got = values(0, 0);
        ASSERT_EQ(got.size(), c.expected.size()) << c.text;
        for (size_t n = 0; n < got.size(); n++) EXPECT_DOUBLE_EQ(got[n], c.expected[n]) << c.text;
    }
}

TEST_F(FenrowTest, CellCenteredBlockHasZeroGhostSlots) {
    // 3 x 3 nodes, 2 x 2 cells: slot i + 3 j holds cell (i, j); slots 2 and 5 are ghosts.
    ASSERT_EQ(convert("VARIABLES = X Y\nZONE I=3 J=3 DATAPACKING=BLOCK VARLOCATION=([2]=CELLCENTERED)\n"
                      "1 2 3 4 5 6 7 8 9\n10 20 30 40\n"), "");
    EXPECT_EQ(values(0, 0), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(values(0, 1), (std::vector<double>{10, 20, 0, 30, 40, 0}));
    double min = 0, max = 0;
    ASSERT_TRUE(GetNativeVarMinMaxForZoneVar(dataSet, 0, 1, true, &min, &max));
    EXPECT_EQ(min, 10);  // ghosts take no part in the range
    EXPECT_EQ(max, 40);
}

TEST_F(FenrowTest, FiniteElementsWithNodeIdentifiersAndSharing) {
    ASSERT_EQ(convert("VARIABLES = \"ID\" \"X\"\n"
                      "ZONE T=\"fe\" N=3 E=2 ZONETYPE=FETRIANGLE DATAPACKING=POINT NV=1\n"
                      "100 1.0\n200 2.0\n300 3.0\n300 100 200\n100 200 300\n"
                      "ZONE T=\"second\" ZONETYPE=FETRIANGLE DATAPACKING=BLOCK CONNECTIVITYSHAREZONE=1 "
                      "VARSHARELIST=([1]=1)\n7 8 9\n"), "");
    ASSERT_EQ(dataSet->NumZones, 2);
    NodeMap_a nodes = GetZoneData(dataSet, 0)->NodeMap;
    ASSERT_NE(nodes, nullptr);
    std::vector<LgIndex_t> expected = {2, 0, 1, 0, 1, 2};  // identifiers 100, 200, 300 are nodes 0, 1, 2
    EXPECT_EQ(std::vector<LgIndex_t>(nodes->Nodes, nodes->Nodes + 6), expected);
    const ZoneSpec_s *second = GetZoneSpec(dataSet, 1);
    EXPECT_EQ(second->NumPtsI, 3);  // N and E taken from the zone shared with
    EXPECT_EQ(second->NumPtsJ, 2);
    EXPECT_EQ(GetZoneData(dataSet, 1)->NodeMap, nodes);
    EXPECT_EQ(GetNativeFieldDataPtr(dataSet, 1, 0), GetNativeFieldDataPtr(dataSet, 0, 0));
    EXPECT_EQ(values(1, 1), (std::vector<double>{7, 8, 9}));
}

TEST_F(FenrowTest, SharingZoneTakesOrderedSizes) {
    ASSERT_EQ(convert("VARIABLES = X Y\nZONE I=2 J=2 F=POINT\n1 2 3 4 5 6 7 8\n"
                      "ZONE VARSHARELIST=([1]) F=BLOCK\n9 10 11 12\n"), "");
    const ZoneSpec_s *second = GetZoneSpec(dataSet, 1);
    EXPECT_EQ(second->NumPtsI, 2);
    EXPECT_EQ(second->NumPtsJ, 2);
    EXPECT_EQ(values(1, 0), (std::vector<double>{1, 3, 5, 7}));
    EXPECT_EQ(values(1, 1), (std::vector<double>{9, 10, 11, 12}));
}

TEST_F(FenrowTest, StrandsAndSolutionTime) {
    struct Case {
        const char *keywords;
        int32_t strand;
        double time;
    } cases[] = {
        {"STRANDID=0", -1, 0.0},
        {"STRANDID=1 SOLUTIONTIME=2.5", 0, 2.5},
        {"", -1, 0.0},
        {"SOLUTIONTIME=5", -2, 5.0},
        {"AUXDATA Common.Time=\"3\"", -2, 3.0},
    };
    for (const Case &c : cases) {
        DeallocDataSet(&dataSet);
        ASSERT_EQ(convert(std::string("VARIABLES = X\nZONE I=1 ") + c.keywords + "\n1\n"), "") << c.keywords;
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, 0);
        if (c.strand == -2) EXPECT_NE(spec->StrandID, -1) << c.keywords;  // the load assigns one
        else EXPECT_EQ(spec->StrandID, c.strand) << c.keywords;
        EXPECT_EQ(spec->SolutionTime, c.time) << c.keywords;
    }
}

TEST_F(FenrowTest, PlaceholderZoneKeepsItsNumber) {
    ASSERT_EQ(convert("VARIABLES = X\nZONE T=ZOMBIE I=0 J=0 K=0 F=BLOCK\nZONE T=\"real\" I=2\n4 5\n"), "");
    ASSERT_EQ(dataSet->NumZones, 2);
    EXPECT_FALSE(IsZoneEnabled(dataSet, 0));
    EXPECT_STREQ(GetZoneSpec(dataSet, 1)->Name, "real");
    EXPECT_EQ(values(1, 0), (std::vector<double>{4, 5}));
}

TEST_F(FenrowTest, QuotedStringsRecordsAndAuxiliaryData) {
    ASSERT_EQ(convert("TITLE = \"say \\\"hi\\\"\"\nVARIABLES = \"a\\\\nb\" \"c,d\" e\n"
                      "DATASETAUXDATA Owner=\"me\"\nVARAUXDATA 2 Unit=\"m\"\nCUSTOMLABELS \"Mon\" \"Tue\"\n"
                      "ZONE I=1 T=\"z 1\"\n1 2 3\n"), "");
    EXPECT_STREQ(dataSet->DataSetTitle, "say \"hi\"");
    EXPECT_STREQ(GetVarName(dataSet, 0), "a\\nb");  // a newline, kept as backslash and n
    EXPECT_STREQ(GetVarName(dataSet, 1), "c,d");
    EXPECT_STREQ(GetVarName(dataSet, 2), "e");
    EXPECT_STREQ(GetZoneSpec(dataSet, 0)->Name, "z 1");
    ArbParam_t value;
    AuxDataType_e type;
    bool retain;
    ASSERT_TRUE(AuxDataGetItemByName(dataSet->AuxData, "Owner", &value, &type, &retain));
    EXPECT_STREQ(reinterpret_cast<const char *>(value), "me");
    ASSERT_TRUE(AuxDataGetItemByName(GetVarSpec(dataSet, 1)->AuxData, "Unit", &value, &type, &retain));
    EXPECT_STREQ(reinterpret_cast<const char *>(value), "m");
    ASSERT_EQ(dataSet->NumCustomLabelSets, 1);
    EXPECT_EQ(StringListCount(dataSet->CustomLabels[0]), 2);
}

TEST_F(FenrowTest, TextPositionsBecomeFrameFractions) {
    struct Case {
        const char *keywords;
        int32_t coordSys;
        double x, y;
    } cases[] = {
        {"X=50 Y=20", 1, 0.5, 0.2},
        {"X=0.5 Y=0.25", 1, 0.5, 0.25},  // both within 0 and 1 without CS: an old window position
        {"CS=FRAME X=0.5 Y=0.25", 1, 0.005, 0.0025},
        {"CS=GRID X=3 Y=4", 0, 3, 4},
    };
    for (const Case &c : cases) {
        DeallocDataSet(&dataSet);
        extras = DataFileExtras_s();
        ASSERT_EQ(convert(std::string("VARIABLES = X\nTEXT ") + c.keywords + " T=\"hi\" H=5 A=90\nZONE I=1\n1\n"), "");
        ASSERT_EQ(extras.Texts.size(), 1u) << c.keywords;
        const Text_s &t = extras.Texts[0];
        EXPECT_EQ(t.PositionCoordSys, c.coordSys) << c.keywords;
        EXPECT_DOUBLE_EQ(t.X, c.x) << c.keywords;
        EXPECT_DOUBLE_EQ(t.Y, c.y) << c.keywords;
        EXPECT_EQ(t.Text, "hi");
        EXPECT_DOUBLE_EQ(t.Height, 0.05);  // 5 percent of the frame
        EXPECT_DOUBLE_EQ(t.Angle, 3.14159265358979323846 / 2);
    }
}

TEST_F(FenrowTest, GeometriesInFileUnits) {
    struct Case {
        const char *record;
        int32_t type;
        double x, y;
        std::vector<double> sizes, segmentX, segmentY;
    } cases[] = {
        // Frame percent: the anchor and the points become fractions.
        {"GEOMETRY X=10 Y=20 T=LINE\n1\n3\n0 0\n10 0\n10 10\n", 0, 0.1, 0.2, {}, {0, 0.1, 0.1}, {0, 0, 0.1}},
        {"GEOMETRY CS=GRID F=BLOCK X=1 Y=2\n1 3\n1 2 3\n4 5 6\n", 0, 1, 2, {}, {1, 2, 3}, {4, 5, 6}},
        {"GEOMETRY CS=GRID T=CIRCLE X=1 Y=2\n5\n", 3, 1, 2, {5}, {}, {}},
        {"GEOMETRY X=50 Y=50 T=RECTANGLE\n20 30\n", 1, 0.5, 0.5, {0.2, 0.3}, {}, {}},
    };
    for (const Case &c : cases) {
        DeallocDataSet(&dataSet);
        extras = DataFileExtras_s();
        ASSERT_EQ(convert(std::string("VARIABLES = X\n") + c.record + "ZONE I=1\n1\n"), "") << c.record;
        ASSERT_EQ(extras.Geoms.size(), 1u) << c.record;
        const Geom_s &g = extras.Geoms[0];
        EXPECT_EQ(g.GeomType, c.type) << c.record;
        EXPECT_DOUBLE_EQ(g.X, c.x) << c.record;
        EXPECT_DOUBLE_EQ(g.Y, c.y) << c.record;
        ASSERT_EQ(g.Sizes.size(), c.sizes.size()) << c.record;
        for (size_t n = 0; n < c.sizes.size(); n++) EXPECT_FLOAT_EQ(float(g.Sizes[n]), float(c.sizes[n]));
        if (c.segmentX.empty()) continue;
        ASSERT_EQ(g.SegmentX.size(), 1u) << c.record;
        for (size_t n = 0; n < c.segmentX.size(); n++) {
            EXPECT_FLOAT_EQ(float(g.SegmentX[0][n]), float(c.segmentX[n])) << c.record;
            EXPECT_FLOAT_EQ(float(g.SegmentY[0][n]), float(c.segmentY[n])) << c.record;
        }
    }
}

TEST_F(FenrowTest, ErrorsTellLineAndPosition) {
    auto at = [](const char *message, int line, const char *marked) {
        return std::string("Err:  ") + message + "\n\nError occurred on line " + std::to_string(line) +
               " near position\nmarked with \"@\" below:\n\n" + marked + "\n";
    };
    struct Case {
        const char *text;
        std::string expected;
    } cases[] = {
        {"VARIABLES = X\nZONE I=3 F=POINT\n1 2 x\n",
         at("Expecting a value after location I,J,K,Var = 3,1,1,1", 3, "1 2 @x")},
        {"# note\n\nVARIABLES = X\nZONE I=2 Q=3\n", at("Bad Identifier in zone header", 4, "ZONE I=2 @Q=3")},
        {"TITLE \"x\"\n", at("Missing Equals Sign after 'TITLE' in header", 1, "TITLE @\"x\"")},
        {"VARIABLES = X\nZONE I=2 VARLOCATION=([1]=CELLCENTERED)\n1 2\n",
         at("Invalid datafile: cell centered variable must be in block format.", 3, "@1 2")},
        {"VARIABLES = X\nZONE I=1\n1\nZONE VARSHARELIST=([1]=2)\n",
         at("Variables can only share from a lower numbered zone.", 4, "ZONE VARSHARELIST=([1]=@2)")},
        {"VARIABLES = X\nZONE I=2 D=(2-2)\n",
         at("Invalid sequence syntax: end sequence value must be larger than the start value.", 2,
            "ZONE I=2 D=(@2-2)")},
        {"ZONE I=2 F=BLOCK\n1 2\n", at("VARIABLES= statement must be used if\nfirst zone format is not POINT", 2, "@1 2")},
        {"VARIABLES = X\nZONE I=2\n3*\n", at("Bad Repeat", 3, "@3*")},
        {"VARIABLES = X\nZONE I=2 C=MAUVE\n", at("Invalid Color", 2, "ZONE I=2 C=@MAUVE")},
        {"VARIABLES = X\nZONE I=3 F=POINT\n1 2\n",
         "Err:  Unexpected End of file.  Need more values, IJK=3,1,1\n\nError occurred on line number 3\n\n"},
        {"VARIABLES = X\nZONE N=3 E=1 ZONETYPE=FETRIANGLE\n1 2 3\n1 2 4\n", "Err: FE Cell 1 has bad index of 4\n"},
        {"VARIABLES = X\nTEXT X=1 R=2\n", at("Cannot mix X,Y, and Z with R and THETA.", 2, "TEXT X=1 @R=2")},
        {"VARIABLES = X\nGEOMETRY T=LINE\n51\n", at("Geometry has too many polylines.\nUse separate geometries for each "
                                                      "polyline.", 3, "@51")},
        {"VARIABLES = X\n", "Err:  Unexpected End of File in Datafile header\n\nError occurred on line number 1\n\n"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(convert(c.text), c.expected) << c.text;
        EXPECT_EQ(fopen(out().c_str(), "rb"), nullptr) << c.text;  // neither output nor scratch file left
        EXPECT_EQ(tempEntries(), 0) << c.text;
    }
}

TEST_F(FenrowTest, OptionsOfTheArgumentVector) {
    FILE *file = fopen((dir + "/in.dat").c_str(), "wb");
    fputs("VARIABLES = X\nZONE I=5\n1 2 3 4 5\nZONE I=2\n6 7\n", file);
    fclose(file);
    std::string in = dir + "/in.dat", output = out();
    // I from 2 to the end in steps of 2 keeps 2 and 4 and the end, 5; only zone 1 is written.
    const char *args[] = {"fenrow", "-iset", "1,2,0,2", "-zonelist", "1", in.c_str(), output.c_str()};
    char *errorText = nullptr;
    ASSERT_TRUE(Fenrow(7, const_cast<char **>(args), &errorText)) << errorText;
    ASSERT_TRUE(ReadBinaryDataFile(output.c_str(), &dataSet, &extras));
    EXPECT_EQ(dataSet->NumZones, 1);
    EXPECT_EQ(values(0, 0), (std::vector<double>{2, 4, 5}));
    // The other byte order reads back the same.
    DeallocDataSet(&dataSet);
    const char *foreign[] = {"fenrow", in.c_str(), output.c_str(), "-FOREIGNPLT"};
    ASSERT_TRUE(Fenrow(4, const_cast<char **>(foreign), &errorText)) << errorText;
    ASSERT_TRUE(ReadBinaryDataFile(output.c_str(), &dataSet, &extras));
    EXPECT_EQ(values(1, 0), (std::vector<double>{6, 7}));
    const char *bad[] = {"fenrow", "-plot3d", in.c_str()};
    EXPECT_FALSE(Fenrow(3, const_cast<char **>(bad), &errorText));
    EXPECT_NE(std::string(errorText).find("PLOT3D"), std::string::npos);
    newfree(errorText);
}

}  // namespace

namespace {

// Decimal numbers must come out as the nearest double, whether the quick path or the general
// one reads them: strtod is the independent judge. Doubles beyond 1.0E150 in magnitude are
// clipped, and those below 1.0E-150 stored as zero, as every writer of the binary file does.
TEST_F(FenrowTest, DecimalsAreRoundedExactly) {
    const char *numbers[] = {"0.1",      "0.3",       "123.456e-5", "1e22",  "1e23",  "9007199254740993",
                             "-2.5E-300", "3.14159265358979323846", "0.000001", "7e-22", "1.7976931348623157e308",
                             "000123.4500", ".5", "5."};
    std::string text = "VARIABLES = X\nZONE I=" + std::to_string(std::size(numbers)) + " DT=(DOUBLE) F=BLOCK\n";
    for (const char *number : numbers) text += std::string(number) + "\n";
    ASSERT_EQ(convert(text), "");
    std::vector<double> read = values(0, 0);
    ASSERT_EQ(read.size(), std::size(numbers));
    for (size_t n = 0; n < read.size(); n++) {
        double expected = strtod(numbers[n], nullptr);
        if (std::fabs(expected) > 1.0e150) expected = expected > 0 ? 1.0e150 : -1.0e150;
        if (std::fabs(expected) < 1.0e-150) expected = 0.0;
        EXPECT_EQ(read[n], expected) << numbers[n];
    }
}

}  // namespace
