// Data files named on the command line: binary files load into the first frame, and every
// failure is told in the batch log while the run still ends with 0.
#include <gtest/gtest.h>

#include "base/data/dataio.h"
#include "e2e/harness.h"

namespace {

const char *kMacro = "#!MC 1100\n";

// A binary data file of numVars float variables and one 3 x 2 zone, written by the writer.
void writeDataFile(const std::string &path, EntIndex_t numVars) {
    DataSet_s *dataSet = AllocDataSet("e2e", true, true);
    for (EntIndex_t v = 0; v < numVars; v++) {
        ASSERT_TRUE(DataSetAllocVar(dataSet, v));
        ASSERT_TRUE(DataSetAllocVarData(dataSet, v, ("V" + std::to_string(v + 1)).c_str()));
    }
    ZoneSpec_s spec;
    spec.NumPtsI = 3;
    spec.NumPtsJ = 2;
    spec.NumPtsK = 1;
    ASSERT_TRUE(DataSetAllocZone(dataSet, 0));
    ASSERT_TRUE(DataSetAllocZoneData(dataSet, 0, &spec, nullptr, nullptr, nullptr, nullptr, false, -1, true, true,
                                     true, false));
    ASSERT_TRUE(GoWriteDataSet(dataSet, nullptr, path.c_str(), WriteDataSetOptions_s()));
    DeallocDataSet(&dataSet);
}

std::vector<std::string> errorLines(const std::string &log) {
    std::vector<std::string> errors;
    for (const std::string &line : Lines(log))
        if (line.rfind("Err:", 0) == 0) errors.push_back(line);
    return errors;
}

TEST(CommandLineData, BinaryFilesLoadAndJoin) {
    Scratch s;
    s.write("run.mcr", kMacro);
    writeDataFile(s.path("a.plt"), 2);
    writeDataFile(s.path("b.plt"), 2);
    RunResult one = s.run({"-b", "run.mcr", "a.plt"});
    EXPECT_EQ(one.exitCode, 0);
    EXPECT_TRUE(errorLines(s.read("batch.log")).empty()) << s.read("batch.log");
    RunResult joined = s.run({"-b", "run.mcr", "a.plt+b.plt", "-DEBUG"});
    EXPECT_EQ(joined.exitCode, 0);
    EXPECT_TRUE(errorLines(s.read("batch.log")).empty()) << s.read("batch.log");
    EXPECT_NE(joined.err.find("Opening File: " + s.path("b.plt")), std::string::npos) << joined.err;
    // By position the files share the variables that all of them have.
    writeDataFile(s.path("three.plt"), 3);
    RunResult uneven = s.run({"-b", "run.mcr", "a.plt+three.plt"});
    EXPECT_EQ(uneven.exitCode, 0);
    EXPECT_TRUE(errorLines(s.read("batch.log")).empty()) << s.read("batch.log");
}

TEST(CommandLineData, UnknownReaderIsTold) {
    Scratch s;
    s.write("run.mcr", kMacro);
    writeDataFile(s.path("a.plt"), 2);
    RunResult r = s.run({"-b", "run.mcr", "-datasetreader", "NOPE", "a.plt"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), "Err: Unknown DataSet Reader: NOPE")) << s.read("batch.log");
}

TEST(CommandLineData, TextFilesAreConvertedAndLoaded) {
    Scratch s;
    s.write("run.mcr", kMacro);
    s.write("a.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 4\n");
    writeDataFile(s.path("b.plt"), 2);
    RunResult r = s.run({"-b", "run.mcr", "a.dat+b.plt"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(errorLines(s.read("batch.log")).empty()) << s.read("batch.log");
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(CommandLineData, FailuresAreToldInTheLog) {
    Scratch s;
    s.write("run.mcr", kMacro);
    s.write("garbage.plt", "this is not a data file");
    s.write("bad.dat", "VARIABLES = X\nZONE I=3\n1 2 x\n");
    writeDataFile(s.path("two.plt"), 2);
    writeDataFile(s.path("three.plt"), 3);
    struct Case {
        std::string file;
        std::string message;
    };
    const std::vector<Case> cases = {
        // No binary version in it: taken as text, which ends before any record.
        {"garbage.plt", "Err: Err:  Unexpected End of File in Datafile header"},
        {"missing.plt", "Err: Filename Error: File does not exist."},
        {"bad.dat", "Err: Err:  Expecting a value after location I,J,K,Var = 3,1,1,1\n\nError occurred on line 3 near "
                    "position\nmarked with \"@\" below:\n\n1 2 @x"},
        {"x.SKIP.plt", "Err: No files were selected"},
    };
    for (const Case &c : cases) {
        RunResult r = s.run({"-b", "run.mcr", c.file});
        EXPECT_EQ(r.exitCode, 0) << c.file;
        EXPECT_TRUE(HoldsMessage(s.read("batch.log"), c.message)) << c.file << ":\n" << s.read("batch.log");
        EXPECT_TRUE(s.tmpEntries().empty()) << c.file;
    }
}

}  // namespace
