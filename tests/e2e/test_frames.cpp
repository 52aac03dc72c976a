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
                                 "$!FRAMECONTROL POP FRAME = 3\n" + echo("|FRAMENAME|") +
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
        {"$!CREATENEWFRAME XYPOS { X = 600 }", "Invalid frame position and/or dimensions"},
        {"$!FRAMECONTROL POPBYNAME NAME = \"nope\"", "No frame is named \"nope\"."},
        {"$!FRAMECONTROL POP FRAME = 9", "Invalid frame number: 9."},
    };
    for (const Case &c : cases) {
        std::string log = run(s, c.command + "\n" + echo("after"));
        EXPECT_TRUE(HoldsMessage(log, c.message)) << c.command << "\n" << log;
        EXPECT_TRUE(echoes(log).empty()) << c.command;
    }
    std::string log = run(s, "$!CREATENEWFRAME WIDTH = 0.05\n");
    EXPECT_TRUE(HoldsMessage(log, "Invalid frame position and/or dimensions"));
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
