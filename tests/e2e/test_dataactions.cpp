// The data-set actions as macro commands, through the launcher: zone creators, values, sharing,
// names, auxiliary data, and the refusals when no data set is attached.
#include <gtest/gtest.h>

#include "e2e/harness.h"

namespace {

const char *kTwoZones = "TITLE = \"two\"\nVARIABLES = X Y\nZONE T=\"a\" I=3\n1 10\n2 20\n3 30\nZONE T=\"b\" I=3\n4 40\n5 50\n6 60\n";

std::string runLog(Scratch &s, const std::string &body) {
    s.write("two.dat", kTwoZones);
    MacroRun run = RunMacro(s, body);
    EXPECT_EQ(run.result.exitCode, 0);
    return run.log;
}

TEST(DataActionsE2E, ZonesAreCreatedDuplicatedMirroredAndDeleted) {
    Scratch s;
    std::string log = runLog(s, "$!READDATASET '\"two.dat\"'\n"
                                "$!CREATERECTANGULARZONE IMAX = 3 JMAX = 2 X1 = 0 X2 = 2 Y1 = 5 Y2 = 6\n"
                                "$!GETFIELDVALUE |A| ZONE = 3 VAR = 1 INDEX = 3\n"
                                "$!GETFIELDVALUE |B| ZONE = 3 VAR = 2 INDEX = 4\n"
                                "$!INTERNAL \"ECHO = |NUMZONES| |A| |B| |MAXI| \"\n"
                                "$!DUPLICATEZONE SOURCEZONE = 1 IRANGE { MIN = 2 }\n"
                                "$!INTERNAL \"ECHO = |NUMZONES| |ZONENAME[4]|\"\n"
                                "$!GETFIELDVALUE |D| ZONE = 4 VAR = 2 INDEX = 1\n"
                                "$!CREATEMIRRORZONES SOURCEZONES = [2] MIRRORVAR = 'Y'\n"
                                "$!GETFIELDVALUE |M| ZONE = 5 VAR = 2 INDEX = 3\n"
                                "$!INTERNAL \"ECHO = |D| |NUMZONES| |M|\"\n"
                                "$!DELETEZONES [3-5]\n"
                                "$!INTERNAL \"ECHO = |NUMZONES|\"\n");
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"3 2 6 3 ", "4 SubZone", "20 5 -60", "2"})) << log;
}

TEST(DataActionsE2E, ValuesNamesTitleAndAuxiliaryData) {
    Scratch s;
    std::string log =
        runLog(s, "$!READDATASET '\"two.dat\"'\n"
                  "$!SETFIELDVALUE ZONE = 2 VAR = 2 INDEX = 1 FIELDVALUE = 99.5\n"
                  "$!GETFIELDVALUE |V| ZONE = 2 VAR = 2 INDEX = 1\n"
                  "$!RENAMEDATASETVAR VAR = 2 NAME = \"Pressure\"\n"
                  "$!RENAMEDATASETZONE ZONE = 1 NAME = \"inlet\"\n"
                  "$!SETDATASETTITLE \"renamed\"\n"
                  "$!GETVARNUMBYNAME |N| NAME = \"Pressure\"\n"
                  "$!GETZONETYPE |T| ZONE = 1\n"
                  "$!GETVARLOCATION |L| ZONE = 1 VAR = 1\n"
                  "$!INTERNAL \"ECHO = |V| |VARNAME[2]| |ZONENAME[1]| |DATASETTITLE| |N| |T| |L|\"\n"
                  "$!SETAUXDATA AUXDATALOCATION = ZONE ZONE = 1 NAME = \"Common.Note\" VALUESTRING = \"hi there\"\n"
                  "$!SETAUXDATA AUXDATALOCATION = DATASET NAME = \"Run\" VALUESTRING = \"7\"\n"
                  "$!GETAUXDATA |R| AUXDATALOCATION = DATASET NAME = \"Run\"\n"
                  "$!INTERNAL \"ECHO = |AUXZONE[1]:Common.Note| |R| |AUXDATASET:Run|\"\n"
                  "$!DELETEAUXDATA AUXDATALOCATION = DATASET NAME = \"Run\"\n"
                  "$!GETAUXDATA |R| AUXDATALOCATION = DATASET NAME = \"Run\"\n");
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"99.5 Pressure inlet renamed 2 ORDERED NODAL", "hi there 7 7"}))
        << log;
    EXPECT_TRUE(HoldsMessage(log, "Auxiliary data item Run does not exist.")) << log;
    EXPECT_NE(log.find("ACTION: SETDATASETTITLE renamed\n"), std::string::npos) << log;
}

TEST(DataActionsE2E, FrameAndLineMapAuxiliaryData) {
    Scratch s;
    std::string log =
        runLog(s, "$!READDATASET '\"two.dat\"'\n"
                  "$!PLOTTYPE = XYLINE\n"
                  "$!SETAUXDATA AUXDATALOCATION = FRAME NAME = \"Owner\" VALUESTRING = \"me and you\"\n"
                  "$!SETAUXDATA AUXDATALOCATION = LINEMAP MAP = 2 NAME = \"Common.Unit\" VALUESTRING = \"m/s\"\n"
                  "$!GETAUXDATA |F| AUXDATALOCATION = FRAME NAME = \"owner\"\n"
                  "$!GETAUXDATA |L| AUXDATALOCATION = LINEMAP MAP = 2 NAME = \"Common.Unit\"\n"
                  "$!INTERNAL \"ECHO = |AUXFRAME:Owner| / |F| / |AUXLINEMAP[2]:Common.Unit| / |L|\"\n"
                  "$!DELETEAUXDATA AUXDATALOCATION = FRAME NAME = \"Owner\"\n"
                  "$!DELETEAUXDATA AUXDATALOCATION = LINEMAP MAP = 2 NAME = \"Common.Unit\"\n"
                  "$!GETAUXDATA |F| AUXDATALOCATION = FRAME NAME = \"Owner\"\n");
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"me and you / me and you / m/s / m/s"})) << log;
    EXPECT_NE(log.find("ACTION: SETAUXDATA\n"), std::string::npos) << log;
    EXPECT_NE(log.find("ACTION: DELETEAUXDATA\n"), std::string::npos) << log;
    EXPECT_TRUE(HoldsMessage(log, "Auxiliary data item Owner does not exist.")) << log;

    // Once deleted, the intrinsics name what is missing; a map that does not exist is refused.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"$!DELETEAUXDATA AUXDATALOCATION = LINEMAP MAP = 2 NAME = \"Common.Unit\"\n"
         "$!INTERNAL \"ECHO = |AUXLINEMAP[2]:Common.Unit|\"\n",
         "AUXLINEMAP:Common.Unit is not defined for this line map."},
        {"$!INTERNAL \"ECHO = |AUXFRAME:Owner|\"\n", "AUXFRAME:Owner is not defined for this frame."},
        {"$!INTERNAL \"ECHO = |AUXLINEMAP[3]:Common.Unit|\"\n", "Invalid line map number for AUXLINEMAP."},
        {"$!SETAUXDATA AUXDATALOCATION = LINEMAP MAP = 3 NAME = \"A\" VALUESTRING = \"1\"\n", "Invalid line map number: 3."},
    };
    for (const auto &[body, message] : cases) {
        log = runLog(s, "$!READDATASET '\"two.dat\"'\n$!PLOTTYPE = XYLINE\n"
                        "$!SETAUXDATA AUXDATALOCATION = LINEMAP MAP = 2 NAME = \"Common.Unit\" VALUESTRING = \"m\"\n" +
                            body);
        EXPECT_TRUE(HoldsMessage(log, message)) << body << "\n" << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << body << "\n" << log;
    }
}

TEST(DataActionsE2E, SharingAndBranching) {
    Scratch s;
    std::string log = runLog(s, "$!READDATASET '\"two.dat\"'\n"
                                "$!SHAREFIELDDATAVAR SOURCEZONE = 1 DESTINATIONZONE = 2 VAR = 2\n"
                                "$!GETFIELDVALUEREFCOUNT |C| ZONE = 2 VAR = 2\n"
                                "$!GETFIELDVALUE |V| ZONE = 2 VAR = 2 INDEX = 2\n"
                                "$!BRANCHFIELDDATAVAR ZONE = 2 VAR = 2\n"
                                "$!GETFIELDVALUEREFCOUNT |D| ZONE = 2 VAR = 2\n"
                                "$!SETFIELDVALUE ZONE = 2 VAR = 2 INDEX = 2 FIELDVALUE = 0\n"
                                "$!GETFIELDVALUE |W| ZONE = 1 VAR = 2 INDEX = 2\n"
                                "$!INTERNAL \"ECHO = |C| |V| |D| |W|\"\n");
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"2 20 1 20"})) << log;
}

TEST(DataActionsE2E, RefusalsWithoutDataAndBadNumbers) {
    Scratch s;
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!DELETEZONES [1]", "Cannot delete zone: The current frame does not have an attached data set"},
        {"$!GETFIELDVALUE |A| ZONE = 1 VAR = 1 INDEX = 1",
         "Cannot get a field value: The current frame does not have an attached data set"},
        {"$!SETDATASETTITLE \"t\"", "Cannot set the data set title: The current frame does not have an attached data set"},
        {"$!GETFIELDVALUE |A| ZONE = 1 VAR = 1", "Missing INDEX sub-option(s) in $!GETFIELDVALUE Command."},
    };
    for (const Case &c : cases) {
        s.write("run.mcr", "#!MC 1100\n" + c.command + "\n$!INTERNAL \"ECHO = after\"\n");
        s.run({"-b", "run.mcr"});
        std::string log = s.read("batch.log");
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << c.command;
    }
    std::string log = runLog(s, "$!READDATASET '\"two.dat\"'\n$!GETFIELDVALUE |A| ZONE = 9 VAR = 1 INDEX = 1\n");
    EXPECT_TRUE(HoldsMessage(log, "Invalid zone number: 9.")) << log;
    log = runLog(s, "$!READDATASET '\"two.dat\"'\n$!GETFIELDVALUE |A| ZONE = 1 VAR = 1 INDEX = 4\n");
    EXPECT_TRUE(HoldsMessage(log, "Index out of range for zone 1.")) << log;
    // Deleting what is not there deletes nothing, also not the zones and variables that are.
    log = runLog(s, "$!READDATASET '\"two.dat\"'\n$!DELETEZONES [2,9]\n");
    EXPECT_TRUE(HoldsMessage(log, "Zones requested are not all available")) << log;
    EXPECT_EQ(log.find("ACTION: DELETEZONES"), std::string::npos) << log;
    log = runLog(s, "$!READDATASET '\"two.dat\"'\n$!DELETEVARS [3]\n");
    EXPECT_TRUE(HoldsMessage(log, "Vars requested are not all available")) << log;
    log = runLog(s, "$!READDATASET '\"two.dat\"'\n$!DELETEZONES [2]\n$!DELETEZONES [2]\n" +
                        EchoCommand("|NUMZONES|"));
    EXPECT_TRUE(HoldsMessage(log, "Zones requested are not all available")) << log;
}

}  // namespace
