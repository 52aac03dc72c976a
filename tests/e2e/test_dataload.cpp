// Data files named on the command line and in $!READDATASET: binary and text files load into the
// first frame with every option of the load, and every failure is told in the batch log while the
// run still ends with 0. What was loaded is shown by the developer word $!INTERNAL "ECHO ...".
#include <gtest/gtest.h>

#include <fstream>

#include "base/data/dataio.h"
#include "base/data/dataset.h"
#include "base/data/fielddata.h"
#include "e2e/harness.h"

namespace {

const char *kMacro = "#!MC 1100\n";

// A binary data file of numVars float variables "V1".. and one 3 x 2 zone, written by the writer.
// Variable v holds base + 10 v + n at point n (v and n from 0).
void writeDataFile(const std::string &path, EntIndex_t numVars, double base = 0.0) {
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
    for (EntIndex_t v = 0; v < numVars; v++) {
        FieldData_a fieldData = GetWritableNativeFieldDataPtr(dataSet, 0, v);
        ASSERT_NE(fieldData, nullptr);
        for (LgIndex_t n = 0; n < 6; n++) SetFieldValue(fieldData, n, base + 10.0 * v + n);
    }
    ASSERT_TRUE(GoWriteDataSet(dataSet, nullptr, path.c_str(), WriteDataSetOptions_s()));
    DeallocDataSet(&dataSet);
}

// Runs the macro body with the further arguments; gives the batch log.
std::string runMacro(Scratch &s, const std::string &body, std::vector<std::string> extra = {}) {
    MacroRun run = RunMacro(s, body, extra);
    EXPECT_EQ(run.result.exitCode, 0);
    return run.log;
}

// Shows the zone and variable counts and one value of the loaded data.
std::string showLoad(int zone, int var, int index) {
    return "$!GETFIELDVALUE |V| ZONE = " + std::to_string(zone) + " VAR = " + std::to_string(var) +
           " INDEX = " + std::to_string(index) + "\n" + EchoCommand("|NUMZONES| |NUMVARS| |V|");
}

std::vector<std::string> errorLines(const std::string &log) {
    std::vector<std::string> errors;
    for (const std::string &line : Lines(log))
        if (line.rfind("Err:", 0) == 0) errors.push_back(line);
    return errors;
}

TEST(CommandLineData, BinaryFilesLoadAndJoin) {
    Scratch s;
    writeDataFile(s.path("a.plt"), 2, 100.0);
    writeDataFile(s.path("b.plt"), 2, 200.0);
    // Point 4 (index 5 one-based) of V2 in a.plt: 100 + 10 + 4.
    std::string log = runMacro(s, showLoad(1, 2, 5), {"a.plt"});
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 2 114"})) << log;
    // Joined by "+": one data set of both files' zones, the second zone from b.plt.
    s.write("run.mcr", std::string(kMacro) + showLoad(2, 1, 3));
    RunResult joined = s.run({"-b", "run.mcr", "a.plt+b.plt", "-DEBUG"});
    EXPECT_EQ(joined.exitCode, 0);
    log = s.read("batch.log");
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"2 2 202"})) << log;
    EXPECT_NE(joined.err.find("Opening File: " + s.path("b.plt")), std::string::npos) << joined.err;
    // The load itself logs one action line, with the files joined by "+" when it fits.
    std::string both = "ACTION: READDATASET " + s.path("a.plt") + "+" + s.path("b.plt");
    std::string expected = both.size() <= 60 ? both : "ACTION: READDATASET";
    std::vector<std::string> actions;
    for (const std::string &line : Lines(log))
        if (line.rfind("ACTION: READDATASET", 0) == 0) actions.push_back(line);
    EXPECT_EQ(actions, std::vector<std::string>{expected}) << log;
    // By position the files share the variables that all of them have.
    writeDataFile(s.path("three.plt"), 3, 300.0);
    log = runMacro(s, showLoad(2, 2, 6), {"a.plt+three.plt"});
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"2 2 315"})) << log;
    // -DATAFILE names a file the same way.
    log = runMacro(s, showLoad(1, 1, 2), {"-DATAFILE", "b.plt"});
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 2 201"})) << log;
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
    s.write("a.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 4\n");
    writeDataFile(s.path("b.plt"), 2, 50.0);
    std::string log = runMacro(s, showLoad(1, 2, 2) + showLoad(2, 2, 6), {"a.dat+b.plt"});
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"2 2 4", "2 2 65"})) << log;
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(CommandLineData, FailuresAreToldInTheLog) {
    Scratch s;
    s.write("run.mcr", kMacro);
    s.write("garbage.plt", "this is not a data file");
    s.write("bad.dat", "VARIABLES = X\nZONE I=3\n1 2 x\n");
    writeDataFile(s.path("two.plt"), 2);
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
        // One variable: the coordinates cannot be made up.
        {"i1.dat", "Err: Cannot expand 1-Variable datafile.\nIMax = 1 for one of the zones."},
        {"mixed.dat", "Err: Cannot expand 1-variable datafile.\nZones must be all I-Ordered, all IJ-Ordered, or "
                      "all IJK-Ordered."},
        {"k.dat", "Err: KMax cannot be > 1 if JMax == 1 in a one variable data set"},
        {"fe.dat", "Warning: Unusual DataFile - One variable with FE Structure"},
        {"cut.plt", "Err: Data file appears to be truncated."},
    };
    s.write("i1.dat", "VARIABLES = P\nZONE I=1 J=2\n1\n2\n");
    s.write("mixed.dat", "VARIABLES = P\nZONE I=2\n1\n2\nZONE I=2 J=2\n1\n2\n3\n4\n");
    s.write("k.dat", "VARIABLES = P\nZONE I=2 J=1 K=2\n1\n2\n3\n4\n");
    s.write("fe.dat", "VARIABLES = P\nZONE N=3 E=1 ZONETYPE=FETRIANGLE\n1\n2\n3\n1 2 3\n");
    // The last values of the zone are cut off.
    std::string whole = s.read("two.plt");
    s.write("cut.plt", whole.substr(0, whole.size() - 12));
    for (const Case &c : cases) {
        RunResult r = s.run({"-b", "run.mcr", c.file});
        EXPECT_EQ(r.exitCode, 0) << c.file;
        EXPECT_TRUE(HoldsMessage(s.read("batch.log"), c.message)) << c.file << ":\n" << s.read("batch.log");
        EXPECT_TRUE(s.tmpEntries().empty()) << c.file;
    }
}

// ---- loads driven by $!READDATASET ---------------------------------------------------------

const char *kTwoZones = "TITLE = \"t\"\nVARIABLES = X Y\nZONE T=\"a\" I=3\n1 10\n2 20\n3 30\nZONE T=\"b\" I=2\n4 40\n5 50\n";

TEST(DataLoadE2E, AppendByPositionEvensOutTheVariables) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("xyp.dat", "VARIABLES = X Y P\nZONE I=1\n7 8 9\n");
    std::string log = runMacro(s, "$!READDATASET '\"two.dat\"'\n"
                                  "$!READDATASET '\"xyp.dat\"' READDATAOPTION = APPEND VARLOADMODE = BYPOSITION\n" +
                                      EchoCommand("|NUMZONES| |NUMVARS| |VARNAME[3]|") + showLoad(3, 3, 1) + showLoad(1, 3, 2) +
                                      showLoad(3, 1, 1));
    EXPECT_TRUE(errorLines(log).empty()) << log;
    // P joins the old zones as a passive variable, which reads as zero.
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"3 3 P", "3 3 9", "3 3 0", "3 3 7"})) << log;
}

TEST(DataLoadE2E, ReplaceByNameChecksTheNamesOfThePresentData) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("xq.dat", "VARIABLES = X Q\nZONE I=1\n1 2\n");
    struct Case {
        std::string options, message;
    };
    const std::vector<Case> refused = {
        {"VARNAMELIST = '\"X\" \"Q\"'",
         "Err: Cannot append data set: Variable names supplied for variable 2 are not a superset of the existing names"},
        {"VARNAMELIST = '\"X\"'",
         "Err: Cannot append data set: Not enough variable names supplied in instructions for appended data set"},
        // "Y" is inside "YQ" but is none of its aliases.
        {"VARNAMELIST = '\"X\" \"YQ\"'",
         "Err: Cannot append data set: Variable names supplied for variable 2 are not a superset of the existing names"},
    };
    for (const Case &c : refused) {
        std::string log = runMacro(s, "$!READDATASET '\"two.dat\"'\n$!READDATASET '\"xq.dat\"' READDATAOPTION = REPLACE " +
                                          c.options + "\n" + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.options << "\n" << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << c.options;
    }
    // "Y" is one of the aliases of the second name, which maps Q of the file.
    std::string log = runMacro(s, "$!READDATASET '\"two.dat\"'\n$!READDATASET '\"xq.dat\"' READDATAOPTION = REPLACE "
                                  "VARNAMELIST = '\"X\" \"Y;Q\"'\n" +
                                      EchoCommand("|VARNAME[2]|") + showLoad(1, 2, 1));
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"Y", "1 2 2"})) << log;
}

TEST(DataLoadE2E, LoadFailuresAreTold) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("ab.dat", "VARIABLES = A B\nZONE I=1\n1 2\n");
    s.write("bad.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 x\n");
    std::string labels;
    for (int n = 0; n < 6; n++) labels += "CUSTOMLABELS \"a\" \"b\"\n";
    s.write("xy6.dat", "VARIABLES = X Y\n" + labels + "ZONE I=1\n1 2\n");
    s.write("xyp6.dat", "VARIABLES = X Y P\n" + labels + "ZONE I=1\n3 4 5\n");
    struct Case {
        std::string body, message;
    };
    const std::vector<Case> cases = {
        {"$!READDATASET '\"two.dat\" \"ab.dat\"' VARLOADMODE = BYNAME",
         "Err: The specified data files have no matching variable names. Please reload the files using the Load Data "
         "File Options dialog to associate variable names."},
        // The append's variables match, then the join refuses the twelve label sets.
        {"$!READDATASET '\"xy6.dat\"'\n$!READDATASET '\"xyp6.dat\"' READDATAOPTION = APPEND",
         "Err: Invalid data sets for concatenation.  The total number of custom label sets exceeds the maximum."},
        {"$!READDATASET '\"two.dat\"'\n$!READDATASET '\"bad.dat\"' READDATAOPTION = APPEND",
         "Expecting a value after location I,J,K,Var = 2,1,1,2"},
    };
    for (const Case &c : cases) {
        std::string log = runMacro(s, c.body + "\n" + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.body << "\n" << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << c.body;
        EXPECT_TRUE(s.tmpEntries().empty()) << c.body;
    }
}

TEST(DataLoadE2E, TheLoadLogsOneActionLineWithTheFilesJoined) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("one.dat", "VARIABLES = X Y\nZONE I=1\n1 2\n");
    std::string log = runMacro(s, "$!READDATASET '\"two.dat\" \"one.dat\"'\n" + EchoCommand("|NUMZONES|"));
    std::vector<std::string> actions;
    for (const std::string &line : Lines(log))
        if (line.rfind("ACTION: READDATASET", 0) == 0) actions.push_back(line);
    EXPECT_EQ(actions, std::vector<std::string>{"ACTION: READDATASET two.dat+one.dat"}) << log;
    EXPECT_EQ(EchoedLines(log), std::vector<std::string>{"3"}) << log;
}

TEST(DataLoadE2E, ZoneListReadsEveryFilesHeader) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("second.dat", "TITLE = \"second\"\nVARIABLES = X Y\nZONE I=1\n7 70\n");
    std::string log = runMacro(s, "$!READDATASET '\"two.dat\" \"second.dat\"' ZONELIST = [1]\n" +
                                      EchoCommand("|NUMZONES| |DATASETTITLE|") +
                                      "$!READDATASET '\"two.dat\" \"second.dat\"' ZONELIST = [3]\n" +
                                      showLoad(3, 2, 1));
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 t | second", "3 2 70"})) << log;
}

TEST(DataLoadE2E, SkipNearTheLargestIndexKeepsFirstAndLast) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    std::string log = runMacro(s, "$!READDATASET '\"two.dat\"' IJKSKIP { I = 2147483646 }\n" + EchoCommand("|MAXI|") +
                                      showLoad(1, 2, 2) + showLoad(2, 1, 2));
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"2", "2 2 30", "2 2 5"})) << log;
}

TEST(DataLoadE2E, StyleMayBeKeptOnceTheLastStrandIsGone) {
    Scratch s;
    s.write("st.dat", "VARIABLES = X Y\nZONE I=1 SOLUTIONTIME=1\n1 1\nZONE I=1 SOLUTIONTIME=2\n2 2\n"
                      "ZONE I=1\n3 3\n");
    s.write("stat.dat", "VARIABLES = X Y\nZONE I=1\n4 4\n");
    std::string log = runMacro(s, "$!READDATASET '\"st.dat\"'\n$!DELETEZONES [1,2]\n$!PLOTTYPE = SKETCH\n"
                                  "$!READDATASET '\"stat.dat\"' RESETSTYLE = NO\n" + showLoad(1, 1, 1));
    EXPECT_TRUE(errorLines(log).empty()) << log;
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 2 4"})) << log;
    // While a strand remains the style cannot be kept.
    log = runMacro(s, "$!READDATASET '\"st.dat\"'\n$!DELETEZONES [1]\n$!PLOTTYPE = SKETCH\n"
                      "$!READDATASET '\"stat.dat\"' RESETSTYLE = NO\n" + EchoCommand("after"));
    EXPECT_TRUE(HoldsMessage(log, "Err: Orvanex cannot load data and retain plot style if the current style has strands."))
        << log;
    EXPECT_TRUE(EchoedLines(log).empty());
}

}  // namespace
