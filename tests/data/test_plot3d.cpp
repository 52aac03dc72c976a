// PLOT3D input of the converter: grid, solution and function files written here byte by byte (or
// as text), converted through Fenrow's argument vector, and read back with the binary reader.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/data/dataio.h"
#include "base/data/datautil.h"
#include "base/data/fenrow.h"
#include "base/data/nodemap.h"
#include "base/kernel/alloc.h"
#include "base/kernel/globals.h"
#include "support/scratch.h"

namespace {

// Bytes of a PLOT3D file: 4-byte integers and floats, either byte order, optionally grouped into
// Fortran records (a 4-byte length before and after each record).
struct Bytes {
    bool swap = false;
    std::vector<unsigned char> data;
    template <typename T>
    Bytes &put(T value) {
        unsigned char b[4];
        memcpy(b, &value, 4);
        if (swap) std::reverse(b, b + 4);
        data.insert(data.end(), b, b + 4);
        return *this;
    }
    Bytes &ints(std::initializer_list<int32_t> values) {
        for (int32_t v : values) put(v);
        return *this;
    }
    Bytes &floats(std::initializer_list<float> values) {
        for (float v : values) put(v);
        return *this;
    }
    Bytes &record(const Bytes &body) {
        put(int32_t(body.data.size()));
        data.insert(data.end(), body.data.begin(), body.data.end());
        return put(int32_t(body.data.size()));
    }
};

class Plot3dTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = MakeScratchDir("plot3d");
        ASSERT_FALSE(dir.empty());
        ASSERT_EQ(system(("mkdir '" + dir + "/tmp'").c_str()), 0);
        OrvanexTempDirectory = dir + "/tmp";
    }
    void TearDown() override {
        DeallocDataSet(&dataSet);
        OrvanexTempDirectory.clear();
        ASSERT_TRUE(RemoveScratchDir(dir));
    }
    void write(char letter, const std::vector<unsigned char> &bytes) {
        FILE *file = fopen((dir + "/wing." + letter).c_str(), "wb");
        if (!bytes.empty()) fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
    }
    void write(char letter, const std::string &text) { write(letter, std::vector<unsigned char>(text.begin(), text.end())); }
    // Converts the stem "wing." with these options; on success reads the output. Gives the error text, or "".
    std::string convert(std::vector<std::string> options) {
        std::string stem = dir + "/wing.", output = dir + "/out.plt";
        remove(output.c_str());
        DeallocDataSet(&dataSet);
        options.insert(options.begin(), {"fenrow", "-plot3d"});
        options.push_back(stem);
        options.push_back(output);
        std::vector<char *> argv;
        for (std::string &o : options) argv.push_back(o.data());
        char *errorText = nullptr;
        bool ok = Fenrow(int(argv.size()), argv.data(), &errorText);
        std::string message = errorText != nullptr ? errorText : "";
        newfree(errorText);
        EXPECT_EQ(ok, message.empty()) << message;
        if (ok) EXPECT_TRUE(ReadBinaryDataFile(output.c_str(), &dataSet, &extras));
        else EXPECT_EQ(fopen(output.c_str(), "rb"), nullptr);  // nothing left behind
        return message;
    }
    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (int v = 0; v < dataSet->NumVars; v++) result.push_back(GetVarName(dataSet, v));
        return result;
    }
    std::vector<double> values(int zone, int var) {
        FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
        std::vector<double> result;
        for (LgIndex_t n = 0; fieldData != nullptr && n < fieldData->NumValues; n++)
            result.push_back(GetFieldValue(fieldData, n));
        return result;
    }
    // Names are "G%-3d" and "G%-3d,P%-3d " in the file; the reader trims the trailing blanks.
    void expectZone(int zone, const char *name, int i, int j, int k) {
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
        EXPECT_STREQ(spec->Name, name);
        EXPECT_EQ(spec->NumPtsI, i) << name;
        EXPECT_EQ(spec->NumPtsJ, j) << name;
        EXPECT_EQ(spec->NumPtsK, k) << name;
    }
    std::string dir;
    DataSet_s *dataSet = nullptr;
    DataFileExtras_s extras;
};

using Names = std::vector<std::string>;
using Values = std::vector<double>;

// A 2 x 1 x 2 grid, I fastest: X 1..4, Y 5..8, Z 9..12.
Bytes wholeGrid() { return Bytes().ints({2, 1, 2}).floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}); }

TEST_F(Plot3dTest, WholeGridInPlainBinary) {
    write('g', wholeGrid().data);
    ASSERT_EQ(convert({"-3dw", "-b", "-gridonly"}), "");
    EXPECT_EQ(names(), (Names{"X", "Y", "Z"}));
    ASSERT_EQ(dataSet->NumZones, 1);
    expectZone(0, "G1", 2, 1, 2);
    EXPECT_EQ(values(0, 0), (Values{1, 2, 3, 4}));
    EXPECT_EQ(values(0, 2), (Values{9, 10, 11, 12}));
    // The J plane of one point is dropped: K moves up to J.
    ASSERT_EQ(convert({"-3dw", "-b", "-gridonly", "-collapseijk"}), "");
    expectZone(0, "G1", 2, 2, 1);
    EXPECT_EQ(values(0, 1), (Values{5, 6, 7, 8}));
}

TEST_F(Plot3dTest, IBlankIsReadAsIntegers) {
    Bytes grid = wholeGrid();
    grid.ints({1, 0, -1, 2});
    write('g', grid.data);
    ASSERT_EQ(convert({"-3dw", "-b", "-i", "-gridonly"}), "");
    EXPECT_EQ(names(), (Names{"X", "Y", "Z", "IBlnk"}));
    EXPECT_EQ(values(0, 3), (Values{1, 0, -1, 2}));
}

TEST_F(Plot3dTest, MultiGridFortranRecordsInTheOtherByteOrder) {
    Bytes grid, count, dims, first, second;
    grid.swap = count.swap = dims.swap = first.swap = second.swap = true;
    count.ints({2});
    dims.ints({2, 1, 1, 1, 3, 1});
    first.floats({1, 2, 3, 4, 5, 6});
    second.floats({7, 8, 9, 10, 11, 12, 13, 14, 15});
    grid.record(count).record(dims).record(first).record(second);
    write('g', grid.data);
    ASSERT_EQ(convert({"-3dw", "-m", "-f", "-foreign", "-gridonly"}), "");
    ASSERT_EQ(dataSet->NumZones, 2);
    expectZone(0, "G1", 2, 1, 1);
    expectZone(1, "G2", 1, 3, 1);
    EXPECT_EQ(values(0, 2), (Values{5, 6}));
    EXPECT_EQ(values(1, 0), (Values{7, 8, 9}));
    EXPECT_EQ(values(1, 2), (Values{13, 14, 15}));
    // A closing record marker that differs from the opening one is refused.
    grid.data[grid.data.size() - 1] ^= 1;
    write('g', grid.data);
    EXPECT_NE(convert({"-3dw", "-m", "-f", "-foreign", "-gridonly"}).find("record marker"), std::string::npos);
}

TEST_F(Plot3dTest, SolutionAddsFiveVariablesAndDropsTheConstants) {
    write('g', Bytes().ints({2, 1, 1}).floats({1, 2, 3, 4, 5, 6}).data);
    write('q', Bytes().ints({2, 1, 1}).floats({0.5f, 10, 1e6f, 7}).floats({11, 12, 21, 22, 31, 32, 41, 42, 51, 52}).data);
    ASSERT_EQ(convert({"-3dw", "-b"}), "");
    EXPECT_EQ(names(), (Names{"X", "Y", "Z", "RHO", "RHO-U", "RHO-V", "RHO-W", "E"}));
    EXPECT_EQ(values(0, 3), (Values{11, 12}));
    EXPECT_EQ(values(0, 7), (Values{51, 52}));
    // Function values follow the solution, F1 first.
    write('f', Bytes().ints({2, 1, 1, 2}).floats({61, 62, 71, 72}).data);
    ASSERT_EQ(convert({"-3dw", "-b", "-functionandq"}), "");
    ASSERT_EQ(dataSet->NumVars, 10);
    EXPECT_EQ(names()[8], "F1");
    EXPECT_EQ(values(0, 9), (Values{71, 72}));
    ASSERT_EQ(convert({"-3dw", "-b", "-function"}), "");
    EXPECT_EQ(names(), (Names{"X", "Y", "Z", "F1", "F2"}));
    EXPECT_EQ(values(0, 3), (Values{61, 62}));
}

TEST_F(Plot3dTest, TwoDimensionalGridAndSolution) {
    write('g', Bytes().ints({1, 2}).floats({1, 2, 3, 4}).data);
    write('q', Bytes().ints({1, 2}).floats({0, 0, 0, 0}).floats({5, 6, 7, 8, 9, 10, 11, 12}).data);
    ASSERT_EQ(convert({"-2d", "-b"}), "");
    EXPECT_EQ(names(), (Names{"X", "Y", "RHO", "RHO-U", "RHO-V", "E"}));
    expectZone(0, "G1", 1, 2, 1);
    EXPECT_EQ(values(0, 1), (Values{3, 4}));
    EXPECT_EQ(values(0, 5), (Values{11, 12}));
}

TEST_F(Plot3dTest, TextFilesAreWhiteSpaceSeparatedNumbers) {
    write('g', std::string("2 1 1\n 1.5 2\n3,4\n 5d0 6E-1\n"));
    ASSERT_EQ(convert({"-3dw", "-gridonly"}), "");
    EXPECT_EQ(values(0, 0), (Values{1.5, 2}));
    EXPECT_EQ(values(0, 2)[0], 5.0);
    EXPECT_FLOAT_EQ(values(0, 2)[1], 0.6f);
}

TEST_F(Plot3dTest, PlanesAreZonesOfTheirOwn) {
    // 2 x 1 x 3: X is 1..6, so point (i, k) has X = i + 2k + 1, zero-based.
    write('g', Bytes().ints({2, 1, 3}).floats({1, 2, 3, 4, 5, 6}).floats({0, 0, 0, 0, 0, 0}).floats({0, 0, 0, 0, 0, 0}).data);
    ASSERT_EQ(convert({"-3dp", "-b", "-gridonly", "-kp", "2"}), "");
    ASSERT_EQ(dataSet->NumZones, 1);
    expectZone(0, "G1  ,P2", 2, 1, 1);
    EXPECT_EQ(values(0, 0), (Values{3, 4}));
    // An I plane runs over J then K.
    ASSERT_EQ(convert({"-3dp", "-b", "-gridonly", "-ip", "2"}), "");
    expectZone(0, "G1  ,P2", 1, 3, 1);
    EXPECT_EQ(values(0, 0), (Values{2, 4, 6}));
    // Without a list every K plane.
    ASSERT_EQ(convert({"-3dp", "-b", "-gridonly"}), "");
    ASSERT_EQ(dataSet->NumZones, 3);
    expectZone(2, "G1  ,P3", 2, 1, 1);
    EXPECT_EQ(values(2, 0), (Values{5, 6}));
    // In -3dw a list keeps those indices of the whole grid.
    ASSERT_EQ(convert({"-3dw", "-b", "-gridonly", "-kp", "1,3"}), "");
    expectZone(0, "G1", 2, 1, 2);
    EXPECT_EQ(values(0, 0), (Values{1, 2, 5, 6}));
}

TEST_F(Plot3dTest, UnstructuredGridsBecomeElementZones) {
    // 4 nodes, 2 triangles, no tetrahedra: X, Y, Z, the triangles (one-based), a flag per triangle.
    write('g', std::string("4 2 0\n1 2 3 4  5 6 7 8  9 10 11 12\n1 2 3  1 3 4\n0 0\n"));
    ASSERT_EQ(convert({"-unstructured", "-gridonly"}), "");
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, 0);
    EXPECT_STREQ(spec->Name, "G1   US");
    EXPECT_EQ(spec->Type, ZoneType_FETriangle);
    EXPECT_EQ(spec->NumPtsI, 4);
    EXPECT_EQ(spec->NumPtsJ, 2);
    EXPECT_EQ(values(0, 1), (Values{5, 6, 7, 8}));
    NodeMap_a nodes = GetZoneData(dataSet, 0)->NodeMap;
    ASSERT_NE(nodes, nullptr);
    EXPECT_EQ(std::vector<LgIndex_t>(nodes->Nodes, nodes->Nodes + 6), (std::vector<LgIndex_t>{0, 1, 2, 0, 2, 3}));
    // One tetrahedron in a second grid of a multi-grid file.
    write('g', std::string("2\n4 1 0  4 0 1\n1 2 3 4 5 6 7 8 9 10 11 12\n1 2 3\n0\n"
                           "0 1 0 0  0 0 1 0  0 0 0 1\n4 3 2 1\n"));
    ASSERT_EQ(convert({"-unstructured", "-gridonly", "-m"}), "");
    ASSERT_EQ(dataSet->NumZones, 2);
    EXPECT_STREQ(GetZoneSpec(dataSet, 1)->Name, "G2   US");
    EXPECT_EQ(GetZoneSpec(dataSet, 1)->Type, ZoneType_FETetra);
    nodes = GetZoneData(dataSet, 1)->NodeMap;
    EXPECT_EQ(std::vector<LgIndex_t>(nodes->Nodes, nodes->Nodes + 4), (std::vector<LgIndex_t>{3, 2, 1, 0}));
    EXPECT_EQ(values(1, 2), (Values{0, 0, 0, 1}));
}

TEST_F(Plot3dTest, BadInputIsRefusedWithItsMessage) {
    std::vector<unsigned char> grid = wholeGrid().data;
    std::vector<unsigned char> truncated(grid.begin(), grid.end() - 2);
    std::vector<unsigned char> multi = Bytes().ints({2, 2, 1, 2, 2, 1, 2}).floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})
                                           .floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}).data;
    struct Case {
        std::vector<unsigned char> g, q, f;
        std::vector<std::string> options;
        std::string message;
    } cases[] = {
        {grid, {}, {}, {"-b", "-gridonly"}, "Err: PLOT3D Mode not set"},
        {grid, {}, {}, {"-2d", "-b", "-gridonly", "-ip", "1"}, "Err: PlotMode must be -3dw or -3dp when -ip,-jp,-kp are used"},
        {grid, {}, {}, {"-3dp", "-b", "-gridonly", "-jp", "1-x"}, "Err: Bad -jp list"},
        {grid, {}, {}, {"-3dp", "-b", "-gridonly", "-kp", "3"}, "Err: Bad -kp list"},
        {Bytes().ints({2, 0, 2}).data, {}, {}, {"-3dw", "-b", "-gridonly"}, "Err: Error in PLOT3D dimensions."},
        {grid, Bytes().ints({2, 2, 1}).data, {}, {"-3dw", "-b"}, "Err: inconsistent .g and .q files"},
        {grid, {}, Bytes().ints({2, 1, 1, 1}).data, {"-3dw", "-b", "-function"}, "Err: inconsistent .g and .f files"},
        {multi, {}, Bytes().ints({2, 2, 1, 2, 1, 2, 1, 2, 2}).data, {"-3dw", "-m", "-b", "-function"},
         "Err: Each grid in multi-grid files must have the same number of variables"},
        {truncated, {}, {}, {"-3dw", "-b", "-gridonly"}, "Err: Unexpected end of PLOT3D file " + dir + "/wing.g"},
        {Bytes().ints({1000, 1000, 1000, 1}).data, {}, {}, {"-3dw", "-b", "-gridonly"},
         "Err: Unexpected end of PLOT3D file " + dir + "/wing.g"},
        {Bytes().record(Bytes().ints({1, 1, 1})).record(Bytes().floats({0, 0, 0, 0, 0, 0})).data, {}, {},
         {"-3dw", "-f", "-gridonly"}, "Err: Double precision PLOT3D files cannot be converted by this version of the converter."},
        {Bytes().record(Bytes().ints({2, 1, 1})).record(Bytes().floats({0, 0, 0, 0, 0})).data, {}, {},
         {"-3dw", "-f", "-gridonly"}, "Err: Error in PLOT3D dimensions."},
        {Bytes().ints({3, 1, 1}).data, {}, {}, {"-unstructured", "-b", "-gridonly"},
         "Err: Cannot have triangles and tetrahedrons in the same zone\n"},
        {Bytes().ints({3, 1, 0}).floats({0, 0, 0, 0, 0, 0, 0, 0, 0}).ints({1, 2, 4, 0}).data, {}, {},
         {"-unstructured", "-b", "-gridonly"}, "Err: FE Cell 1 has bad index of 4\n"},
        {grid, {}, {}, {"-unstructured", "-b"},
         "Err: Current version can only process grid files when plot3d unstructured data is converted.  Include the -gridonly flag"},
    };
    for (const Case &c : cases) {
        write('g', c.g), write('q', c.q), write('f', c.f);
        EXPECT_EQ(convert(c.options), c.message);
    }
}

}  // namespace
