// The standalone converter: exit codes, its message on standard error, the files it leaves.
#include <gtest/gtest.h>

#include "e2e/harness.h"

namespace {

TEST(FenrowTool, ExitCodesAndMessages) {
    Scratch s;
    s.write("good.dat", "1 2\n3 4\n");
    s.write("bad.dat", "VARIABLES = X\nZONE I=2 Q=1\n");
    struct Case {
        std::vector<std::string> args;
        int exitCode;
        std::string err;
        const char *written;  // a file the run must leave, or null
    } cases[] = {
        {{"good.dat"}, 0, "", "good.plt"},
        {{"good.dat", "other.plt", "-d"}, 0, "", "other.plt"},
        {{"bad.dat", "bad.plt"}, 1,
         "Err:  Bad Identifier in zone header\n\nError occurred on line 2 near position\nmarked with \"@\" below:\n\n"
         "ZONE I=2 @Q=1\n", nullptr},
        {{"missing"}, 1, "Err: Cannot find input file missing\n", nullptr},
        {{"good.dat", "-nosuch"}, 1, "Err: invalid flag", nullptr},
        {{}, 1, "Usage: fenrow infile [outfile] [options]\n", nullptr},
    };
    for (const Case &c : cases) {
        RunResult r = s.runProgram(ORVANEX_FENROW, c.args);
        std::string label = c.args.empty() ? "(none)" : c.args[0];
        EXPECT_EQ(r.exitCode, c.exitCode) << label;
        EXPECT_EQ(r.err, c.err) << label;
        if (c.written != nullptr) {
            EXPECT_TRUE(s.exists(c.written)) << label;
        }
        EXPECT_TRUE(s.tmpEntries().empty()) << label;
    }
    EXPECT_FALSE(s.exists("bad.plt"));
}

}  // namespace
