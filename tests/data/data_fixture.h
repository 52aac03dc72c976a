// A fixture for data set tests: one frame, a scratch temporary directory for stored variables,
// and standard error captured so that messages can be checked.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/data/datautil.h"
#include "base/data/face.h"
#include "base/kernel/globals.h"
#include "base/plot/frame.h"
#include "e2e/harness.h"
#include "support/scratch.h"

class DataSetTest : public ::testing::Test {
  protected:
    void SetUp() override {
        tempDir = MakeScratchDir("data");
        ASSERT_FALSE(tempDir.empty());
        OrvanexTempDirectory = tempDir;
        ASSERT_TRUE(CreateNewFrame());
    }
    void TearDown() override {
        DeleteAllFrames();
        OrvanexTempDirectory.clear();
        ASSERT_TRUE(RemoveScratchDir(tempDir));
    }
    DataSet_s *dataSet() const { return CurFrame->DataSet; }

    // A data set of numVars float variables "V1".. with numZones ordered zones of i x j x k.
    void makeDataSet(int numVars, int numZones, LgIndex_t i = 3, LgIndex_t j = 2, LgIndex_t k = 1) {
        ASSERT_TRUE(GoCreateDataSet("test", EntIndex_t(numVars), nullptr, true));
        for (int z = 0; z < numZones; z++) addZone(i, j, k, ("Zone " + std::to_string(z + 1)).c_str());
    }
    void addZone(LgIndex_t i, LgIndex_t j, LgIndex_t k, const char *name = "z") {
        ZoneSpec_s spec;
        spec.NumPtsI = i;
        spec.NumPtsJ = j;
        spec.NumPtsK = k;
        spec.Name = const_cast<char *>(name);
        ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, dataSet()->NumZones, nullptr, nullptr, -1, false));
    }
    void setValues(EntIndex_t zone, EntIndex_t var, std::initializer_list<double> values) {
        FieldData_a fieldData = GetWritableNativeFieldDataPtr(dataSet(), zone, var);
        ASSERT_NE(fieldData, nullptr);
        LgIndex_t n = 0;
        for (double v : values) SetFieldValue(fieldData, n++, v);
    }
    double value(EntIndex_t zone, EntIndex_t var, LgIndex_t index) {
        FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet(), zone, var);
        return fieldData != nullptr ? GetFieldValue(fieldData, index) : -999.0;
    }
    // A new FE zone of two triangles, nodes 0 1 2 and 2 1 3, sharing the edge 1-2.
    void addTwoTriangles(EntIndex_t zone) {
        ZoneSpec_s fe;
        fe.Type = ZoneType_FETriangle;
        fe.NumPtsI = 4;
        fe.NumPtsJ = 2;
        fe.NumPtsK = 3;
        std::vector<FieldDataType_e> types(size_t(dataSet()->NumVars), FieldDataType_Float);
        ASSERT_TRUE(AddZone(&fe, types.data(), nullptr, zone, nullptr, nullptr, -1, false));
        const LgIndex_t nodes[6] = {0, 1, 2, 2, 1, 3};
        for (int n = 0; n < 6; n++) NodeMapSetNode(GetZoneData(dataSet(), zone)->NodeMap, n / 3, n % 3, nodes[n]);
    }
    // A user-defined global connection: face 2 of zone 1's element 0 lies against zone 0's element 1.
    void connectZone1ToZone0() {
        GetZoneSpec(dataSet(), 1)->FNMode = FaceNeighborMode_GlobalOneToOne;
        GetZoneData(dataSet(), 1)->FN->Mode = FaceNeighborMode_GlobalOneToOne;
        FaceNeighborAssignContext_s *context = FaceNeighborUserDefBeginAssign(dataSet(), 1);
        ASSERT_NE(context, nullptr);
        LgIndex_t element = 1;
        EntIndex_t zone = 0;
        ASSERT_TRUE(FaceNeighborUserDefAssign(context, 0, 2, true, 1, &element, &zone));
        ASSERT_TRUE(FaceNeighborUserDefEndAssign(&context));
    }
    // Runs f with standard error captured and returns what it printed.
    template <typename F>
    std::string messagesOf(F f) {
        ::testing::internal::CaptureStderr();
        f();
        return ::testing::internal::GetCapturedStderr();
    }

    std::string tempDir;
};
