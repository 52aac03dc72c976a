// Frames on the page driven by macros: creating, naming, reordering and deleting, with the checks
// on positions, sizes and names.
#include <gtest/gtest.h>

#include "e2e/harness.h"

namespace {

std::vector<std::string> echoes(const std::string &log) {
    std::vector<std::string> lines;
    for (const std::string &line : Lines(log))
        if (line.rfind("= ", 0) == 0) lines.push_back(line.substr(2));
    return lines;
}

std::string run(Scratch &s, const std::string &body) {
    s.write("run.mcr", "#!MC 1100\n" + body);
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 0);
    return s.read("batch.log");
}

std::string echo(const std::string &text) { return "$!INTERNAL \"ECHO = " + text + "\"\n"; }

TEST(FramesE2E, CreateNameReorderAndDelete) {
    Scratch s;
    std::string log = run(s, "$!CREATENEWFRAME XYPOS { X = 2 Y = 1 } WIDTH = 4 HEIGHT = 3\n" + echo("|NUMFRAMES| |FRAMENAME|") +
                                 "$!FRAMENAME = \"Second\"\n"
                                 "$!CREATENEWFRAME\n" + echo("|NUMFRAMES| |FRAMENAME|") +
                                 "$!FRAMECONTROL POPBYNAME NAME = \"second\"\n" + echo("|FRAMENAME|") +
                                 "$!INTERNAL \"GETVALUE FRAMELAYOUT WIDTH\"\n"
                                 "$!FRAMECONTROL PUSHTOP\n" + echo("|FRAMENAME|") +
                                 "$!FRAMECONTROL POP FRAME = 1\n" + echo("|FRAMENAME|") +
                                 "$!FRAMECONTROL DELETETOP\n" + echo("|NUMFRAMES| |FRAMENAME|") +
                                 "$!FRAMECONTROL DELETETOP\n$!FRAMECONTROL DELETETOP\n" + echo("|NUMFRAMES| |FRAMENAME|"));
    // A renamed frame frees its name: the next new frame takes the first free "Frame 00n".
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"2 Frame 002", "3 Frame 002", "Second", "Frame 002", "Second",
                                                     "2 Frame 002", "1 Frame 001"}))
        << log;
    EXPECT_NE(log.find("FRAMELAYOUT WIDTH = 4\n"), std::string::npos) << log;
}

TEST(FramesE2E, BadPositionsNumbersAndNamesChangeNothing) {
    Scratch s;
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!CREATENEWFRAME WIDTH = 0.05", "Invalid frame position and/or dimensions"},
        {"$!CREATENEWFRAME XYPOS { X = 1 Y = 0.7 } HEIGHT = 0.09", "Invalid frame position and/or dimensions"},
        {"$!CREATENEWFRAME XYPOS { X = 600 }", "Invalid frame position and/or dimensions"},
        {"$!FRAMECONTROL POPBYNAME NAME = \"nope\"",
         "Attempted to pop a frame by an invalid frame name.\nFrame name used: \"nope\"."},
        {"$!FRAMECONTROL PUSHBYNAME NAME = \"nope\"",
         "Attempted to push a frame by an invalid frame name.\nFrame name used: \"nope\"."},
        {"$!FRAMECONTROL POP FRAME = 9", "Attempted to pop a frame by an invalid frame number.\nFrame number used: 9."},
        {"$!FRAMECONTROL PUSH FRAME = 0", "Attempted to push a frame by an invalid frame number.\nFrame number used: 0."},
    };
    for (const Case &c : cases) {
        std::string log = run(s, c.command + "\n" + echo("after"));
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_TRUE(echoes(log).empty()) << c.command;
    }
    std::string log = run(s, "$!CREATENEWFRAME WIDTH = 0.05\n");
    EXPECT_TRUE(HoldsMessage(log, "Invalid frame position and/or dimensions"));
    // The least size passes exactly.
    log = run(s, "$!CREATENEWFRAME XYPOS { X = 1 Y = 0.7 } WIDTH = 0.1 HEIGHT = 0.1\n" + echo("|NUMFRAMES|"));
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"2"})) << log;
}

TEST(FramesE2E, EachFrameKeepsItsOwnDataSet) {
    Scratch s;
    s.write("a.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 4\n");
    s.write("b.dat", "VARIABLES = X Y\nZONE I=1\n5 6\n");
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n$!CREATENEWFRAME\n" + echo("|ISDATASETAVAILABLE|") +
                                 "$!FRAMECONTROL PUSHTOP\n$!READDATASET '\"b.dat\"' READDATAOPTION = REPLACE\n" +
                                 echo("|NUMZONES|") + "$!FRAMECONTROL PUSHTOP\n" + echo("|ISDATASETAVAILABLE|"));
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"0", "1", "0"})) << log;
}

}  // namespace

namespace {

// Two 2D zones of 3 by 2 points: X 0..10, Y 0..5 in the first, X 20..30 in the second.
const char *kTwoSurfaces = "VARIABLES = X Y P\n"
                           "ZONE I=3 J=2\n0 0 1\n5 0 2\n10 0 3\n0 5 4\n5 5 5\n10 5 6\n"
                           "ZONE I=3 J=2\n20 0 1\n25 0 2\n30 0 3\n20 5 4\n25 5 5\n30 5 6\n";

std::string getValue(const std::string &path) { return "$!INTERNAL \"GETVALUE " + path + "\"\n"; }

// The values GETVALUE logged, in order.
std::vector<std::string> values(const std::string &log) {
    std::vector<std::string> found;
    for (const std::string &line : Lines(log)) {
        size_t at = line.find(" = ");
        // Not an echo, an error or a line of a quoted command.
        if (at != std::string::npos && line.rfind("= ", 0) != 0 && line[0] != ' ' && line.find("Err") == std::string::npos)
            found.push_back(line.substr(at + 3));
    }
    return found;
}

}  // namespace

TEST(FramesE2E, FramesShareADataSetAndSeeItsChanges) {
    Scratch s;
    s.write("a.dat", kTwoSurfaces);
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n$!CREATENEWFRAME\n$!ATTACHDATASET FRAME = 1\n" +
                                 echo("|NUMZONES| |PLOTTYPE|") + "$!DELETEZONES [1]\n" + echo("|NUMZONES|") +
                                 "$!FRAMECONTROL PUSHTOP\n" + echo("|NUMZONES| |FRAMENAME|") +
                                 "$!FRAMECONTROL POP FRAME = 1\n$!ATTACHDATASET FRAME = 1\n");
    // The second frame takes the plot type of its data; the deletion reaches the first frame too.
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"2 0", "1", "1 Frame 001"})) << log;
    EXPECT_TRUE(HoldsMessage(log, "Cannot attach new DataSet to frame that already has data attached")) << log;
}

TEST(FramesE2E, PlotTypeChangesAndTheirRefusals) {
    Scratch s;
    s.write("a.dat", kTwoSurfaces);
    std::string refused = run(s, "$!PLOTTYPE = CARTESIAN2D\n" + echo("a |PLOTTYPE|"));
    EXPECT_TRUE(HoldsMessage(refused, "Cannot switch dataless frame to non-sketch plot type.")) << refused;
    EXPECT_TRUE(echoes(refused).empty()) << refused;
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n" + echo("|PLOTTYPE|") + "$!PLOTTYPE = XYLINE\n" + echo("|PLOTTYPE| |NUMLINEMAPS|") +
                                 "$!CREATENEWFRAME\n" + echo("|ISDATASETAVAILABLE| |PLOTTYPE|") +
                                 "$!PLOTTYPE = AUTOMATIC\n" + echo("|ISDATASETAVAILABLE| |PLOTTYPE|") +
                                 "$!PLOTTYPE = CARTESIAN2D\n" + echo("|ISDATASETAVAILABLE| |PLOTTYPE|") +
                                 "$!FRAMEMODE = THREED\n" + echo("|PLOTTYPE|") + getValue("FRAMEMODE"));
    // AUTOMATIC without data is a sketch; a field plot borrows the data of the frame below.
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"2", "1 2", "0 0", "0 0", "1 2", "3"})) << log;
    EXPECT_NE(log.find("FRAMEMODE = THREED"), std::string::npos) << log;
}

TEST(FramesE2E, FieldMapsFollowZonesAsTheyComeAndGo) {
    Scratch s;
    s.write("a.dat", kTwoSurfaces);
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n" + getValue("ACTIVEFIELDMAPS") +
                                 getValue("FIELDMAP 1 MESH COLOR") + getValue("FIELDMAP 2 MESH COLOR") +
                                 "$!FIELDMAP [2] MESH { COLOR = PURPLE }\n" + getValue("FIELDMAP 2 MESH COLOR") +
                                 "$!CREATERECTANGULARZONE IMAX = 2 JMAX = 2\n" + getValue("ACTIVEFIELDMAPS") +
                                 getValue("FIELDMAP 3 MESH COLOR") + getValue("FIELDMAP 3 SURFACES SURFACESTOPLOT") +
                                 "$!DELETEZONES [1]\n" + getValue("ACTIVEFIELDMAPS") + getValue("FIELDMAP 1 MESH COLOR") +
                                 "$!ACTIVEFIELDMAPS -= [1]\n" + getValue("ACTIVEFIELDMAPS") +
                                 "$!FIELD [2] MESH { COLOR = CYAN }\n" + getValue("FIELD 2 MESH COLOR") +
                                 "$!FIELDMAP [7] MESH { SHOW = NO }\n");
    EXPECT_EQ(values(log), (std::vector<std::string>{"[1-2]", "RED", "GREEN", "PURPLE", "[1-3]", "BLUE", "KPLANES",
                                                     "[1-2]", "PURPLE", "[2]", "CYAN"}))
        << log;
    EXPECT_TRUE(HoldsMessage(log, "Invalid Modifier List On Main Command")) << log;
}

TEST(FramesE2E, ViewsFitZoomTranslateAndGoBack) {
    Scratch s;
    s.write("a.dat", kTwoSurfaces);
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n$!VIEW DATAFIT\n" + echo("|AXISMINX| |AXISMAXX| |AXISMAXY|") +
                                 "$!VIEW ZOOM X1 = 2 Y1 = 1 X2 = 4 Y2 = 3\n" + echo("|AXISMINX| |AXISMAXY|") +
                                 "$!VIEW TRANSLATE X = 50 Y = 0\n" + echo("|AXISMINX| |AXISMAXX|") +
                                 "$!VIEW LAST\n$!VIEW LAST\n" + echo("|AXISMINX| |AXISMAXX|") +
                                 "$!VIEW SETMAGNIFICATION MAG = 2\n" + echo("|AXISMINX| |AXISMAXX|"));
    // The fit raises each maximum by 0.0001 of the span; translating by 50% moves the data right,
    // so the range moves left by half its width; magnifying by 2 halves the fitted span about
    // the centre of the view.
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"0 30.003 5.0005", "2 3", "1 3", "0 30.003", "7.50075 22.50225"}))
        << log;
}

TEST(FramesE2E, ThreeDRotationByCommand) {
    Scratch s;
    s.write("box.dat", "VARIABLES = X Y Z\nZONE I=2 J=2 K=2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n");
    std::string log = run(s, "$!READDATASET '\"box.dat\"'\n" + echo("|PLOTTYPE|") +
                                 "$!ROTATE3DVIEW PSI ANGLE = 10\n" + getValue("THREEDVIEW PSIANGLE") +
                                 "$!ROTATE3DVIEW THETA ANGLE = -20\n" + getValue("THREEDVIEW THETAANGLE") +
                                 "$!FRAMECONTROL DELETETOP\n$!ROTATE3DVIEW X ANGLE = 5\n");
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"3"})) << log;
    EXPECT_EQ(values(log), (std::vector<std::string>{"70", "-140"})) << log;
    EXPECT_TRUE(HoldsMessage(log, "Plot type must be 3D to rotate the view.")) << log;
    // The unit cube's centre becomes the rotate origin; the view centre needs a probe.
    log = run(s, "$!READDATASET '\"box.dat\"'\n$!RESET3DORIGIN ORIGINRESETLOCATION = DATACENTER\n" +
                     getValue("GLOBALTHREED ROTATEORIGIN X") + getValue("GLOBALTHREED ROTATEORIGIN Z") +
                     "$!RESET3DORIGIN ORIGINRESETLOCATION = VIEWCENTER\n");
    EXPECT_EQ(values(log), (std::vector<std::string>{"0.5", "0.5"})) << log;
    EXPECT_TRUE(HoldsMessage(log, "There is no data at the center of view.  The rotate origin has not been moved."))
        << log;
}

TEST(FramesE2E, LineMapsAreMadeCopiedAndDeleted) {
    Scratch s;
    s.write("xy.dat", "VARIABLES = X Y\nZONE I=3\n0 1\n1 2\n2 3\nZONE I=2\n5 5\n6 6\n");
    std::string log = run(s, "$!READDATASET '\"xy.dat\"'\n" + echo("|PLOTTYPE| |NUMLINEMAPS|") +
                                 getValue("ACTIVELINEMAPS") + getValue("LINEMAP 2 ASSIGN ZONE") +
                                 "$!CREATELINEMAP\n$!DUPLICATELINEMAP SOURCEMAP = 2 DESTINATIONMAP = 3\n" +
                                 getValue("LINEMAP 3 ASSIGN ZONE") + "$!DELETELINEMAPS [1]\n" +
                                 echo("|NUMLINEMAPS|") + getValue("LINEMAP 1 ASSIGN ZONE") + "$!VIEW DATAFIT\n" +
                                 "$!ACTIVELINEMAPS = [1]\n$!VIEW DATAFIT\n" + echo("|AXISMINX| |AXISMAXY|") +
                                 "$!DELETEVARS [2]\n" + echo("|NUMLINEMAPS|"));
    // Deleting the Y variable takes the maps that draw it.
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"1 2", "2", "5 6.0001", "0"})) << log;
    EXPECT_EQ(values(log), (std::vector<std::string>{"[1]", "2", "2", "2"})) << log;
}

TEST(FramesE2E, LinkedFramesShareRangesAndSize) {
    Scratch s;
    s.write("a.dat", kTwoSurfaces);
    const std::string link = "$!LINKING BETWEENFRAMES { LINKXAXISRANGE = YES LINKFRAMESIZEANDPOSITION = YES }\n";
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n$!VIEW DATAFIT\n" + link +
                                 "$!CREATENEWFRAME XYPOS { X = 1 Y = 1 } WIDTH = 3 HEIGHT = 3\n"
                                 "$!ATTACHDATASET FRAME = 1\n$!PLOTTYPE = CARTESIAN2D\n" + link +
                                 echo("|AXISMINX| |AXISMAXX|") + "$!VIEW ZOOM X1 = 2 Y1 = 1 X2 = 4 Y2 = 3\n" +
                                 "$!FRAMELAYOUT WIDTH = 5\n$!FRAMECONTROL PUSHTOP\n" + echo("|AXISMINX| |AXISMAXX|") +
                                 getValue("FRAMELAYOUT WIDTH") + "$!PLOTTYPE = SKETCH\n" +
                                 "$!LINKING BETWEENFRAMES { LINK3DVIEW = YES }\n");
    // The new frame took the range of the linked frame when it was linked; the zoom and the new
    // width went back to the first frame.
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"0 30.003", "2 4"})) << log;
    EXPECT_EQ(values(log), (std::vector<std::string>{"5"})) << log;
    EXPECT_TRUE(HoldsMessage(log, "Plot type must be 3D to link 3D views")) << log;
}

TEST(FramesE2E, RedrawCommandsRunHeadless) {
    Scratch s;
    s.write("a.dat", kTwoSurfaces);
    std::string log = run(s, "$!READDATASET '\"a.dat\"'\n$!REDRAW\n$!REDRAWALL DOFULLDRAWING = NO\n"
                             "$!DRAWGRAPHICS NO\n$!FIELDMAP [1] MESH { COLOR = BLUE }\n$!DRAWGRAPHICS YES\n"
                             "$!DOUBLEBUFFER ON\n$!DOUBLEBUFFER SWAP\n$!DOUBLEBUFFER OFF\n" + echo("done"));
    EXPECT_EQ(echoes(log), (std::vector<std::string>{"done"})) << log;
    for (const char *action : {"ACTION: REDRAW", "ACTION: REDRAWALL", "ACTION: DRAWGRAPHICS", "ACTION: DOUBLEBUFFER"})
        EXPECT_NE(log.find(action), std::string::npos) << action << "\n" << log;
}
