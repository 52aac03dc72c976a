// Action and style commands through the launcher: zone creators that start a data set, simple
// zones from raw data, style rows that name variables, zones and contour groups checked against
// the frame, the frame background trading colours, line maps shifted, dialogs and prompts in
// batch mode, the configuration file's refusals and limits, and the order of the ACTION line.
#include <gtest/gtest.h>

#include "e2e/harness.h"

namespace {

// Four variables: X Y P T, two zones.
const char *kFourVars =
    "VARIABLES = X Y P T\nZONE T=\"a\" I=2\n0 0 1 5\n1 0 3 7\nZONE T=\"b\" I=2\n0 1 2 6\n1 1 4 9\n";

std::string runLog(Scratch &s, const std::string &body, const std::vector<std::string> &extra = {}) {
    s.write("four.dat", kFourVars);
    MacroRun run = RunMacro(s, body, extra);
    EXPECT_EQ(run.result.exitCode, 0);
    return run.log;
}

TEST(ActionsE2E, ZoneCreatorsStartADataSetInAnEmptyFrame) {
    Scratch s;
    std::string log = runLog(s, "$!CREATERECTANGULARZONE IMAX = 3 JMAX = 2 X1 = 0 X2 = 2 Y1 = 5 Y2 = 6\n" +
                                    EchoCommand("|NUMZONES| |NUMVARS| |ZONENAME[1]|") +
                                    "$!GETFIELDVALUE |A| ZONE = 1 VAR = 1 INDEX = 3\n"
                                    "$!GETFIELDVALUE |B| ZONE = 1 VAR = 2 INDEX = 4\n" +
                                    EchoCommand("|A| |B|"));
    // X runs 0, 1, 2 along I; the second J row (index 4) is at Y = 6.
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 2 Rectangular zone", "2 6"})) << log;

    // A zone in K needs the third variable.
    log = runLog(s, "$!CREATECIRCULARZONE IMAX = 2 JMAX = 5 KMAX = 2 RADIUS = 2\n" + EchoCommand("|NUMZONES| |NUMVARS|") +
                        "$!GETFIELDVALUE |R| ZONE = 1 VAR = 1 INDEX = 4\n" + EchoCommand("|R|"));
    // Point 4 is I = 2 (the rim) at J = 2, a quarter turn: X is exactly 0.
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 3", "0"})) << log;
}

TEST(ActionsE2E, SimpleZonesComeFromTheirRawData) {
    Scratch s;
    std::string log = runLog(s, "$!CREATESIMPLEZONE\nRAWDATA\n3 2\n1 10\n2 20\n3 30\n" +
                                    EchoCommand("|NUMZONES| |NUMVARS| |ZONENAME[1]| |MINVAR[2]| |MAXVAR[2]| |MAXI|") +
                                    "$!CREATESIMPLEXYZONE\nRAWDATA\n2\n7 70\n8 80\n" + EchoCommand("|NUMZONES| |MAXVAR[2]|"));
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"1 2 Enter Values 10 30 3", "2 80"})) << log;

    log = runLog(s, "$!CREATESIMPLEZONE\n" + EchoCommand("after"));
    EXPECT_TRUE(HoldsMessage(log, "Missing RAWDATA sub-option(s) in $!CREATESIMPLEZONE Command.")) << log;
    EXPECT_TRUE(EchoedLines(log).empty());
}

TEST(ActionsE2E, StyleRowsNamingVariablesMustNameOnesThatExist) {
    Scratch s;
    struct Case {
        std::string command, message, path;
    };
    const std::vector<Case> cases = {
        {"$!GLOBALTWODVECTOR UVAR = 9", "Variable not in current data set", "GLOBALTWODVECTOR UVAR"},
        {"$!GLOBALRGB REDCHANNELVAR = 5", "Variable not in current data set", "GLOBALRGB REDCHANNELVAR"},
        {"$!TWODAXIS XDETAIL { VARNUM = 99 }", "Variable not in current data set", "TWODAXIS XDETAIL VARNUM"},
        {"$!GLOBALSCATTER VAR = 77", "Variable not in current data set", "GLOBALSCATTER VAR"},
    };
    for (const Case &c : cases) {
        std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n" + c.command + "\n" + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << c.command;
    }
    // The old value stays; 0 means none; a variable that exists is taken.
    std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n$!GLOBALTWODVECTOR UVAR = 3\n"
                                "$!INTERNAL \"GETVALUE GLOBALTWODVECTOR UVAR\"\n"
                                "$!GLOBALTWODVECTOR VVAR = 0\n"
                                "$!GLOBALTWODVECTOR UVAR = 5\n");
    EXPECT_NE(log.find("GLOBALTWODVECTOR UVAR = 3\n"), std::string::npos) << log;
    EXPECT_TRUE(HoldsMessage(log, "Variable not in current data set")) << log;

    // Without a data set there is nothing to name.
    log = runLog(s, "$!GLOBALTWODVECTOR UVAR = 2\n" + EchoCommand("after"));
    EXPECT_TRUE(HoldsMessage(log, "Current frame must have an attached data set.")) << log;
}

TEST(ActionsE2E, LayersNeedTheContourGroupTheyColourBy) {
    Scratch s;
    for (const std::string &command : {"$!FIELDMAP [1] CONTOUR { LINECONTOURGROUP = 2 }", "$!FIELDMAP [1] MESH { COLOR = MULTI2 }"}) {
        std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n$!PLOTTYPE = CARTESIAN2D\n" + command + "\n" + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(log, "Cannot use the selected contour group. Contour variable not assigned.")) << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << command;
    }
    // Once group 2 has a variable the same command is taken, and MINC/MAXC read group 1's.
    std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n$!PLOTTYPE = CARTESIAN2D\n"
                                "$!GLOBALCONTOUR 2 VAR = 3\n$!FIELDMAP [1] MESH { COLOR = MULTI2 }\n"
                                "$!GLOBALCONTOUR 1 VAR = 4\n" +
                                EchoCommand("|ZONEMESHCOLOR[1]| |ZONEMESHCOLOR[2]| |MINC| |MAXC|"));
    ASSERT_EQ(EchoedLines(log).size(), 1u) << log;
    std::string line = EchoedLines(log)[0];
    EXPECT_EQ(line.substr(0, 7), "MULTI2 ") << line;
    EXPECT_EQ(line.substr(line.size() - 4), " 5 9") << line;
}

TEST(ActionsE2E, SliceAndIsoSurfaceIntrinsicsReadTheStyle) {
    Scratch s;
    std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n$!GLOBALSLICE 1 SLICESURFACE = JPLANES\n"
                                "$!GLOBALSLICE 1 PRIMARYPOSITION { J = 7 }\n$!GLOBALSLICE 1 STARTPOSITION { J = 2 }\n"
                                "$!GLOBALISOSURFACE 1 ISOVALUE1 = 2.5\n" +
                                    EchoCommand("|SLICEPLANETYPE| |PRIMARYSLICEPOS| |STARTSLICEPOS| |ISOSURFACELEVEL|") +
                                    "$!GLOBALSLICE 1 SLICESURFACE = YPLANES\n$!GLOBALSLICE 1 ENDPOSITION { Y = 0.75 }\n" +
                                    EchoCommand("|SLICEPLANETYPE| |ENDSLICEPOS|"));
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"J-Planes 7 2 2.5", "Y-Planes 0.75"})) << log;
}

TEST(ActionsE2E, ANewBackgroundTradesColoursWithTheOld) {
    Scratch s;
    std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n$!PLOTTYPE = CARTESIAN2D\n"
                                "$!FIELDMAP [1] MESH { COLOR = RED }\n$!FIELDMAP [2] MESH { COLOR = WHITE }\n"
                                "$!BASETEXT COLOR = BLUE\n$!SETFRAMEBACKGROUNDCOLOR RED\n" +
                                EchoCommand("|ZONEMESHCOLOR[1]| |ZONEMESHCOLOR[2]|") +
                                "$!INTERNAL \"GETVALUE FRAMELAYOUT BACKGROUNDCOLOR\"\n"
                                "$!INTERNAL \"GETVALUE BASETEXT COLOR\"\n");
    // Red on a red background would vanish: it becomes the old white, and white becomes red.
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"WHITE RED"})) << log;
    EXPECT_NE(log.find("FRAMELAYOUT BACKGROUNDCOLOR = RED\n"), std::string::npos) << log;
    EXPECT_NE(log.find("BASETEXT COLOR = BLUE\n"), std::string::npos) << log;
    EXPECT_NE(log.find("ACTION: SETFRAMEBACKGROUNDCOLOR\n"), std::string::npos) << log;
}

TEST(ActionsE2E, LineMapsShiftToTheTopAndBottom) {
    Scratch s;
    // The two zones give two maps; three more are made.
    std::string body = "$!READDATASET '\"four.dat\"'\n$!PLOTTYPE = XYLINE\n$!CREATELINEMAP\n$!CREATELINEMAP\n"
                       "$!CREATELINEMAP\n";
    for (int map = 1; map <= 5; map++)
        body += "$!LINEMAP [" + std::to_string(map) + "] NAME = \"m" + std::to_string(map) + "\"\n";
    body += "$!SHIFTLINEMAPSTOTOP [3,5]\n";
    for (int map = 1; map <= 5; map++) body += "$!INTERNAL \"GETVALUE LINEMAP " + std::to_string(map) + " NAME\"\n";
    body += "$!SHIFTXYMAPSTOBOTTOM [1]\n$!INTERNAL \"GETVALUE LINEMAP 5 NAME\"\n$!DUPLICATEXYMAP SOURCEMAP = 1 "
            "DESTINATIONMAP = 6\n$!INTERNAL \"GETVALUE LINEMAP 6 NAME\"\n$!SHIFTLINEMAPSTOTOP [9]\n";
    std::string log = runLog(s, body);
    std::string order;
    for (const std::string &line : Lines(log))
        if (line.rfind("LINEMAP ", 0) == 0) order += line.substr(line.find("= ") + 2) + " ";
    // m3 and m5 go first in their order; then m3 goes last; a copy of the new first map is added.
    EXPECT_EQ(order, "m3 m5 m1 m2 m4 m3 m5 ") << log;
    EXPECT_TRUE(HoldsMessage(log, "Invalid line map number: 9.")) << log;
}

TEST(ActionsE2E, DialogsAndPromptsInBatchMode) {
    Scratch s;
    std::string log = runLog(s, "$!LAUNCHDIALOG MACROVIEWER\n$!DROPDIALOG MACROVIEWER\n" + EchoCommand("after dialogs") +
                                    "$!PROMPTFORYESNO |A|\n  INSTRUCTIONS = \"Go on?\"\n" + EchoCommand("after prompt"));
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"after dialogs"})) << log;
    EXPECT_NE(log.find("ACTION: LAUNCHDIALOG\nACTION: DROPDIALOG\n"), std::string::npos) << log;
    EXPECT_TRUE(HoldsMessage(log, "User prompting not allowed while Orvanex is in batch mode or when graphics are suspended."))
        << log;
    for (const std::string &command : {"$!GETUSERINPUT |A|", "$!PROMPTFORTEXTSTRING |A|", "$!PROMPTFORFILENAME |A|"}) {
        log = runLog(s, command + "\n" + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(log, "User prompting not allowed")) << command << "\n" << log;
        EXPECT_TRUE(EchoedLines(log).empty()) << command;
    }
}

TEST(ActionsE2E, ActionLineComesAfterTheCheck) {
    Scratch s;
    // Each refused at its check: the message stands, and no ACTION line before it.
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> refused = {
        {"$!FRAMECONTROL POP FRAME = 9", "Attempted to pop a frame by an invalid frame number."},
        {"$!ATTACHDATASET", "Invalid reference to a frame number in ATTACHDATASETTOFRAME command"},
        {"$!SET3DEYEDISTANCE EYEDISTANCE = 3", "Must be in 3D to change the 3d view distance"},
        {"$!ROTATE3DVIEW PSI ANGLE = 10", "Plot type must be 3D to rotate the view."},
        {"$!CREATELINEMAP", "No data set. Cannot create new line map."},
        {"$!VIEW PASTE", "No view has been copied."},
        {"$!WORKSPACEVIEW ZOOM X1 = 1 Y1 = 1 X2 = 1 Y2 = 2", "Invalid region to zoom to."},
    };
    for (const Case &c : refused) {
        std::string log = runLog(s, c.command + "\n");
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_EQ(log.find("ACTION:"), std::string::npos) << c.command << "\n" << log;
    }
    std::string log = runLog(s, "$!CREATENEWFRAME XYPOS { X = 1 Y = 1 } WIDTH = 0.01 HEIGHT = 3\n");
    EXPECT_TRUE(HoldsMessage(log, "Invalid frame position and/or dimensions")) << log;
    EXPECT_EQ(log.find("ACTION: CREATENEWFRAME"), std::string::npos) << log;
    log = runLog(s, "$!CREATENEWFRAME XYPOS { X = 1 Y = 1 } WIDTH = 2 HEIGHT = 3\n" + EchoCommand("|NUMFRAMES|"));
    EXPECT_NE(log.find("ACTION: CREATENEWFRAME\n= 2\n"), std::string::npos) << log;
    // A number too large for a path entry is refused, not a crash.
    log = runLog(s, "$!INTERNAL \"GETVALUE GLOBALCONTOUR 99999999999 VAR\"\n");
    EXPECT_TRUE(HoldsMessage(log, "No value at GLOBALCONTOUR 99999999999 VAR.")) << log;
}

TEST(ActionsE2E, ConfigurationFileRefusalsEndInOneWarning) {
    Scratch s;
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!FRAMENAME = \"x\"", "Cannot assign the frame name in the configuration file."},
        {"$!ACTIVEFIELDMAPS = [1]", "assign Active Zones"},
        {"$!ACTIVELINEMAPS = [1]", "assign Active LineMaps"},
        {"$!GLOBALCONTOUR 1 VAR = 3", "assign the contouring variable"},
        {"$!FIELDMAP [1] MESH { SHOW = NO }", "Modifier set not allowed when command is used in the config file"},
        {"$!LOOP 2\n$!ENDLOOP", "Command not allowed in the configuration file"},
    };
    for (const Case &c : cases) {
        s.write("orvanex.cfg", "#!MC 1100\n" + c.command + "\n");
        s.write("run.mcr", "#!MC 1100\n");
        RunResult r = s.run({"-b", "run.mcr"});
        EXPECT_EQ(r.exitCode, 0);
        std::string all = r.err + s.read("batch.log");
        EXPECT_TRUE(HoldsMessage(all, c.message)) << c.command << "\n" << all;
        EXPECT_TRUE(HoldsMessage(all, "Errors detected while processing configuration file.  Some or all configuration "
                                      "options may not be in effect."))
            << c.command << "\n" << all;
    }
}

TEST(ActionsE2E, ConfiguredLimitsBoundTheirChecks) {
    Scratch s;
    s.write("run.mcr", "#!MC 1100\n$!READDATASET '\"four.dat\"'\n$!GLOBALCONTOUR 1 DEFNUMLEVELS = 1000\n" +
                           EchoCommand("after levels"));
    s.write("four.dat", kFourVars);
    // The factory limit of 400 contour levels refuses 1000 ...
    s.run({"-b", "run.mcr"});
    std::string log = s.read("batch.log");
    EXPECT_TRUE(HoldsMessage(log, "\"DEFNUMLEVELS\" must be between 1 and 400.")) << log;
    EXPECT_TRUE(EchoedLines(log).empty());
    // ... a configuration that raises it takes it.
    s.write("orvanex.cfg", "#!MC 1100\n$!LIMITS MAXNUMCONTOURLEVELS = 2000\n");
    s.run({"-b", "run.mcr"});
    log = s.read("batch.log");
    EXPECT_EQ(EchoedLines(log), (std::vector<std::string>{"after levels"})) << log;

    // Points of a curve follow MAXPTSINALINE the same way.
    s.write("orvanex.cfg", "#!MC 1100\n$!LIMITS MAXPTSINALINE = 100\n");
    s.write("run.mcr", "#!MC 1100\n$!READDATASET '\"four.dat\"'\n$!PLOTTYPE = XYLINE\n"
                       "$!LINEMAP [1] CURVES { NUMPTS = 100 }\n$!LINEMAP [1] CURVES { NUMPTS = 101 }\n");
    s.run({"-b", "run.mcr"});
    log = s.read("batch.log");
    EXPECT_TRUE(HoldsMessage(log, "\"NUMPTS\" must be between 2 and 100.")) << log;
    EXPECT_NE(log.find("starting on line 5"), std::string::npos) << log;
}

}  // namespace

namespace {

TEST(ActionsE2E, MalformedSetCommandsNameWhatIsWrong) {
    Scratch s;
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!FIELDMAP [] MESH { SHOW = NO }", "Invalid Command Modifier or Empty command"},
        {"$!GLOBALCONTOUR 1 LABELS SHOW = YES", "(PreProcessor): Expecting Start of sub-command"},
        {"$!TWODAXIS XDETAIL { TICKS { TICKS { SHOW = NO } } }", "Invalid option \"TICKS\"\nfor command: \"TWODAXIS\""},
        {"$!THREEDAXIS XDETAIL { TICKS { SHOWONAXISLINE = YES } 5 }", "Invalid Identifier in Sub-Command"},
        {"$!GLOBALCONTOUR 1 VAR = 1 }", "(PreProcessor): Unexpected sub-command close"},
        {"$!GLOBALCONTOUR 9 VAR = 1", "Invalid value global contour index"},
        {"$!GLOBALCONTOUR -1 VAR = 1", "Invalid value global contour index"},
    };
    for (const Case &c : cases) {
        std::string log = runLog(s, "$!READDATASET '\"four.dat\"'\n" + c.command + "\n" + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_NE(log.find("starting on line 3:"), std::string::npos) << c.command;
        EXPECT_TRUE(EchoedLines(log).empty()) << c.command;
    }
}

}  // namespace
