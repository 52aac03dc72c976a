// Contour levels and colour maps through the launcher: the levels a new contour variable gets,
// every $!CONTOURLEVELS form, the messages of bad commands and bad level lists (the levels left as
// they were), $!COLORMAPCONTROL, and colour-map files written, read back and refused.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "e2e/harness.h"

namespace {

// P runs over 0, 2, ..., 10 on a 3 x 2 zone.
const char *kField = "VARIABLES = X Y P\nZONE I=3 J=2\n0 0 0\n1 0 2\n2 0 4\n0 1 6\n1 1 8\n2 1 10\n";

std::string runLog(Scratch &s, const std::string &body) {
    s.write("field.dat", kField);
    MacroRun run = RunMacro(s, "$!READDATASET '\"field.dat\"'\n" + body);
    EXPECT_EQ(run.result.exitCode, 0);
    return run.log;
}

// The values of the lines "CONTOURLEVELS n = ..." and "GLOBAL... = value" the macro logged.
std::vector<std::string> shown(const std::string &log) {
    std::vector<std::string> lines;
    for (const std::string &line : Lines(log)) {
        if (line.rfind("CONTOURLEVELS ", 0) != 0 && line.rfind("GLOBAL", 0) != 0) continue;
        size_t at = line.find(" =");
        std::string value = at == std::string::npos ? line : line.substr(at + 2);
        lines.push_back(value.empty() ? value : value.substr(1));
    }
    return lines;
}

std::string levelsText(const std::vector<double> &levels) {
    std::string text;
    for (double level : levels) {
        char buffer[40];
        snprintf(buffer, sizeof(buffer), "%s%.15G", text.empty() ? "" : " ", level);
        text += buffer;
    }
    return text;
}

TEST(ContourLevelsE2E, ANewContourVariableGetsLevelsAcrossItsRange) {
    Scratch s;
    std::string log = runLog(s, "$!GLOBALCONTOUR 1 VAR = 3\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCONTOUR 1 COLORCUTOFF RANGEMIN\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCONTOUR 1 COLORCUTOFF RANGEMAX\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCONTOUR 1 COLORMAPFILTER CONTINUOUSCOLOR CMIN\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCONTOUR 1 COLORMAPFILTER CONTINUOUSCOLOR CMAX\"\n"
                                "$!GLOBALCONTOUR 2 DEFNUMLEVELS = 4\n"
                                "$!GLOBALCONTOUR 2 VAR = 3\n"
                                "$!INTERNAL \"CONTOURLEVELS 2\"\n");
    // DEFNUMLEVELS (10) levels, (10 - 0)/11 apart from one step in; the cut-off at a quarter and
    // three quarters; the continuous range the variable's.
    std::vector<double> ten;
    for (int i = 0; i < 10; i++) ten.push_back(0 + (i + 1) * (10.0 / 11));
    EXPECT_EQ(shown(log), (std::vector<std::string>{levelsText(ten), "2.5", "7.5", "0", "10", "2 4 6 8"})) << log;
}

TEST(ContourLevelsE2E, EveryFormOfTheCommand) {
    Scratch s;
    std::string log = runLog(s, "$!GLOBALCONTOUR 1 VAR = 3\n"
                                "$!CONTOURLEVELS NEW\nRAWDATA\n4\n3 1 2 2\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS ADD CONTOURGROUP = 1 RAWDATA\n3\n2.5 0.5 3\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS DELETERANGE RANGEMIN = 2 RANGEMAX = 2.5\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS DELETENEAREST RANGEMIN = 0.8\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS RESET NUMVALUES = 4\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS RESET\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS RESETTONICE APPROXNUMVALUES = 10\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n"
                                "$!CONTOURLEVELS NEW CONTOURGROUP = 3 RAWDATA\n2\n-1 1\n"
                                "$!INTERNAL \"CONTOURLEVELS 3\"\n"
                                "$!INTERNAL \"CONTOURLEVELS 1\"\n");
    EXPECT_EQ(shown(log), (std::vector<std::string>{"1 2 3", "0.5 1 2 2.5 3", "0.5 1 3", "0.5 3", "2 4 6 8", "2 4 6 8",
                                                   "1 2 3 4 5 6 7 8 9", "-1 1", "1 2 3 4 5 6 7 8 9"}))
        << log;
    EXPECT_NE(log.find("ACTION: CONTOURLEVELS\n"), std::string::npos) << log;
}

TEST(ContourLevelsE2E, BadCommandsAndLevelListsLeaveTheLevels) {
    Scratch s;
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!CONTOURLEVELS NEW", "Missing RAWDATA sub-option(s) in $!CONTOURLEVELS Command."},
        {"$!CONTOURLEVELS ADD NUMVALUES = 3", "Missing RAWDATA sub-option(s) in $!CONTOURLEVELS Command."},
        {"$!CONTOURLEVELS DELETERANGE RANGEMIN = 1", "Missing RANGEMAX sub-option(s) in $!CONTOURLEVELS Command."},
        {"$!CONTOURLEVELS DELETENEAREST", "Missing RANGEMIN sub-option(s) in $!CONTOURLEVELS Command."},
        {"$!CONTOURLEVELS NEW CONTOURGROUP = 5 RAWDATA\n1\n2", "Invalid value global contour index"},
        {"$!CONTOURLEVELS NEW RAWDATA\n3\n1 x 2", "Invalid RAWDATA value for: Contour Level"},
        {"$!CONTOURLEVELS NEW RAWDATA\n3\n1 2", "Incomplete Raw Data while looking for Value: Contour Level"},
        {"$!CONTOURLEVELS NEW RAWDATA\n0", "RAWDATA integer value, 0, out of range for: Contour Level"},
        {"$!CONTOURLEVELS NEW RAWDATA\n401\n1", "RAWDATA integer value, 401, out of range for: Contour Level"},
        {"$!CONTOURLEVELS DELETERANGE CONTOURGROUP = 2 RANGEMIN = 0 RANGEMAX = 1", "No contour levels to delete"},
        {"$!CONTOURLEVELS DELETENEAREST CONTOURGROUP = 2 RANGEMIN = 0", "No contour levels to delete"},
        {"$!GLOBALCONTOUR 1 VAR = 9", "Variable not in current data set"},
        {"$!CONTOURLEVELS RESET CONTOURGROUP = 2 NUMVALUES = 3",
         "Cannot reset contour levels: the contour variable has no values."},
    };
    for (const Case &c : cases) {
        std::string log = runLog(s, "$!GLOBALCONTOUR 1 VAR = 3\n$!CONTOURLEVELS NEW RAWDATA\n2\n4 5\n" + c.command +
                                        "\n$!INTERNAL \"ECHO = after\"\n");
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_EQ(log.find("= after"), std::string::npos) << c.command;
    }
}

TEST(ContourLevelsE2E, AddingPastTheLimitIsRefused) {
    Scratch s;
    std::string raw = "400\n";
    for (int i = 0; i < 400; i++) raw += std::to_string(i) + (i % 20 == 19 ? "\n" : " ");
    std::string log = runLog(s, "$!CONTOURLEVELS NEW RAWDATA\n" + raw +
                                    "$!CONTOURLEVELS ADD RAWDATA\n2\n3 1000\n"
                                    "$!INTERNAL \"ECHO = after\"\n");
    EXPECT_TRUE(HoldsMessage(log, "Too many contour levels.  The limit is 400.")) << log;
    EXPECT_EQ(log.find("= after"), std::string::npos);
}

TEST(ColorMapsE2E, ControlWriteAndLoad) {
    Scratch s;
    std::string log = runLog(s, "$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = USERDEF\n"
                                "$!COLORMAPCONTROL COPYSTANDARD CONTOURCOLORMAP = MODERN\n"
                                "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 1 USERDEFINED NUMCONTROLPOINTS\"\n"
                                "$!GLOBALCOLORMAP 1 USERDEFINED { CONTROLPOINT 2 { COLORMAPFRACTION = 0.5 } }\n"
                                "$!COLORMAPCONTROL 1 REDISTRIBUTECONTROLPOINTS\n"
                                "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 1 USERDEFINED CONTROLPOINT 2 COLORMAPFRACTION\"\n"
                                "$!GLOBALCOLORMAP 3 GRAYSCALE { CONTROLPOINT 2 { LEADRGB { R = 7 } } }\n"
                                "$!COLORMAPCONTROL 3 RESETTOFACTORY CONTOURCOLORMAP = GRAYSCALE\n"
                                "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 3 GRAYSCALE CONTROLPOINT 2 LEADRGB R\"\n"
                                "$!GLOBALCOLORMAP 2 CONTOURCOLORMAP = TWOCOLOR\n"
                                "$!GLOBALCOLORMAP 2 TWOCOLOR { CONTROLPOINT 3 { TRAILRGB { G = 77 } } }\n"
                                "$!WRITECOLORMAP \"saved.map\"\n"
                                "$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = WILD\n"
                                "$!GLOBALCOLORMAP 2 TWOCOLOR { CONTROLPOINT 3 { TRAILRGB { G = 0 } } }\n"
                                "$!LOADCOLORMAP \"saved.map\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 1 CONTOURCOLORMAP\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 2 TWOCOLOR CONTROLPOINT 3 TRAILRGB G\"\n"
                                "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 1 USERDEFINED CONTROLPOINT 2 COLORMAPFRACTION\"\n");
    // Modern has 8 points; point 2 of 8 goes back to 1/7.
    char seventh[40];
    snprintf(seventh, sizeof(seventh), "%.15G", 1.0 / 7.0);
    EXPECT_EQ(shown(log), (std::vector<std::string>{"8", seventh, "32", "USERDEF", "77", seventh})) << log;
    std::string saved = s.read("saved.map");
    EXPECT_EQ(saved.rfind("#!MC 1100\n", 0), 0u) << saved;
    EXPECT_NE(saved.find("CONTOURCOLORMAP = TWOCOLOR"), std::string::npos) << saved;
}

TEST(ColorMapsE2E, RefusedCommandsAndFiles) {
    Scratch s;
    s.write("header.map", "#!MC 50\n$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = MODERN\n");
    s.write("export.map", "#!MC 1100\n$!GLOBALCOLORMAP 1 CONTOURCOLORMAP = MODERN\n$!EXPORT\n");
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!COLORMAPCONTROL COPYSTANDARD", "Missing CONTOURCOLORMAP sub-option(s) in $!COLORMAPCONTROL Command."},
        {"$!COLORMAPCONTROL COPYSTANDARD CONTOURCOLORMAP = MODERN",
         "Only allowed to copy canned color map if current contour color map is user defined or raw user defined"},
        {"$!COLORMAPCONTROL 5 REDISTRIBUTECONTROLPOINTS", "Invalid group number specified in $!COLORMAPCONTROL command."},
        {"$!COLORMAPCONTROL 2 RESETTOFACTORY CONTOURCOLORMAP = WILD", "Cannot reset this color map - no factory defaults"},
        {"$!LOADCOLORMAP \"header.map\"", "Invalid colormap file header."},
        {"$!LOADCOLORMAP \"export.map\"", "$!EXPORT not allowed in a color map file."},
        {"$!RAWCOLORMAP RAWDATA\n1\n1 2 300", "RGB value out of range in Color Map Entry number 1"},
    };
    for (const Case &c : cases) {
        std::string log = runLog(s, c.command + "\n$!INTERNAL \"ECHO = after\"\n");
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_EQ(log.find("= after"), std::string::npos) << c.command;
    }
    // At start-up (-M) a file that fails changes nothing, and the macro runs on; a good one goes in.
    s.write("good.map", "#!MC 1100\n$!GLOBALCOLORMAP 2 CONTOURCOLORMAP = GRAYSCALE\n");
    s.write("show.mcr", "#!MC 1100\n$!INTERNAL \"GETVALUE GLOBALCOLORMAP 1 CONTOURCOLORMAP\"\n"
                        "$!INTERNAL \"GETVALUE GLOBALCOLORMAP 2 CONTOURCOLORMAP\"\n");
    RunResult r = s.run({"-b", "-M", "export.map", "show.mcr"});
    EXPECT_EQ(r.exitCode, 0);
    std::string log = s.read("batch.log");
    EXPECT_TRUE(HoldsMessage(log, "$!EXPORT not allowed in a color map file.")) << log;
    EXPECT_EQ(shown(log), (std::vector<std::string>{"SMRAINBOW", "LGRAINBOW"})) << log;
    r = s.run({"-b", "-M", "good.map", "show.mcr"});
    EXPECT_EQ(r.exitCode, 0);
    log = s.read("batch.log");
    EXPECT_EQ(shown(log), (std::vector<std::string>{"SMRAINBOW", "GRAYSCALE"})) << log;
}

}  // namespace
