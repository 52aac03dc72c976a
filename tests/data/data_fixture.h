// A fixture for data set tests: one frame, a scratch temporary directory for stored variables,
// and standard error captured so that messages can be checked.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/data/datautil.h"
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
    // Runs f with standard error captured and returns what it printed.
    template <typename F>
    std::string messagesOf(F f) {
        ::testing::internal::CaptureStderr();
        f();
        return ::testing::internal::GetCapturedStderr();
    }

    std::string tempDir;
};
