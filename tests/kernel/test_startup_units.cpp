// Rules of the start-up modules that can be checked in-process: the physical-display file, the
// version identifier and the data-set instruction string of the command line.
#include <gtest/gtest.h>

#include <string>

#include "base/kernel/alloc.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/phyfile.h"
#include "base/kernel/strlist.h"
#include "base/kernel/version.h"

namespace {

std::string scratchFile(const char *name) { return std::string(::testing::TempDir()) + name; }

TEST(PhysicalDisplayFile, RoundTripKeepsNumbersExactlyAndTheMRUList) {
    PhysicalDisplay_s phy;
    phy.WorkAreaWidth = 1234;
    phy.WorkAreaHeight = 567;
    phy.DotsPerCmX = 1.0 / 3.0;      // needs all 16 digits to come back exactly
    phy.DotsPerCmY = 37.795275590551;
    phy.Reserved = 7;
    phy.MRULayoutFiles[0] = "/a/newest.lay";
    phy.MRULayoutFiles[2] = "/b/third.lay";  // an empty slot between
    std::string name = scratchFile("round.phy");
    ASSERT_TRUE(WritePhysicalDisplayFile(name, phy));

    PhysicalDisplay_s back;
    ASSERT_EQ(ReadPhysicalDisplayFile(name, &back), PhyFileStatus_Ok);
    EXPECT_EQ(back.WorkAreaWidth, 1234);
    EXPECT_EQ(back.WorkAreaHeight, 567);
    EXPECT_EQ(back.DotsPerCmX, 1.0 / 3.0);
    EXPECT_EQ(back.DotsPerCmY, 37.795275590551);
    EXPECT_EQ(back.Reserved, 7);
    EXPECT_EQ(back.MRULayoutFiles[0], "/a/newest.lay");
    EXPECT_EQ(back.MRULayoutFiles[1], "");
    EXPECT_EQ(back.MRULayoutFiles[2], "/b/third.lay");
}

TEST(PhysicalDisplayFile, BadFilesAreRecognised) {
    PhysicalDisplay_s phy;
    EXPECT_EQ(ReadPhysicalDisplayFile(scratchFile("none.phy"), &phy), PhyFileStatus_Missing);
    struct Case {
        const char *text;
        PhyFileStatus_e status;
    };
    const Case cases[] = {
        {"#!PHY 699\n800 600 38.0 38.0 0\n", PhyFileStatus_Old},
        {"#!PHX 700\n800 600 38.0 38.0 0\n", PhyFileStatus_Invalid},
        {"#!PHY 700\n800 600 38.0\n", PhyFileStatus_Invalid},
        {"#!PHY 700\n-5 600 38.0 38.0 0\n", PhyFileStatus_Invalid},
        {"", PhyFileStatus_Invalid},
        {"#!PHY 700\n800 600 38.0 38.0 0\n", PhyFileStatus_Ok},  // MRU lines may be missing
    };
    for (const Case &c : cases) {
        std::string name = scratchFile("case.phy");
        FILE *f = fopen(name.c_str(), "w");
        fputs(c.text, f);
        fclose(f);
        EXPECT_EQ(ReadPhysicalDisplayFile(name, &phy), c.status) << c.text;
    }
}

TEST(Version, IdentifierParsesBackIntoFourNumbers) {
    int16_t major, minor, revision, build;
    ASSERT_TRUE(OrvanexGetVersion("11.0-4-083", &major, &minor, &revision, &build));
    EXPECT_EQ(major, 11);
    EXPECT_EQ(minor, 0);
    EXPECT_EQ(revision, 4);
    EXPECT_EQ(build, 83);  // leading zeros are allowed
    EXPECT_FALSE(OrvanexGetVersion("11.0-4", &major, &minor, &revision, &build));
    EXPECT_FALSE(OrvanexGetVersion("11.0-4-83x", &major, &minor, &revision, &build));
    EXPECT_FALSE(OrvanexGetVersion("11.0-4-40000", &major, &minor, &revision, &build));
    EXPECT_EQ(ORVANEXVERSION, OrvanexMajorVersion * 10 + OrvanexMinorVersion);
}

// The compound instruction string that the option scan builds for the data files.
TEST(CommandLineInstructions, LayoutWithDataSetsGroupsFilesJoinedByPlus) {
    StartupDirectory = "/work/dir";
    bool ok = true;
    const char *args[] = {"orvanex", "one.lay", "a.plt+b.plt", "/abs/c.plt", "-DATAFILE", "x+y.plt"};
    char **argv = const_cast<char **>(args);
    PreScanCommandLine(6, argv, &ok);
    ProcessCommandLineOptions(6, argv, &ok);
    ASSERT_TRUE(ok);
    EXPECT_TRUE(CommandLineState.LayoutWasNamed);
    EXPECT_EQ(LayoutFName, "/work/dir/one.lay");
    StringList_s *list = StringListFromCompound(CommandLineState.DataSetInstructions.c_str());
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(StringListCount(list), 3);
    EXPECT_STREQ(StringListGetStringRef(list, 0), "/work/dir/a.plt\n/work/dir/b.plt");
    EXPECT_STREQ(StringListGetStringRef(list, 1), "/abs/c.plt");
    EXPECT_STREQ(StringListGetStringRef(list, 2), "/work/dir/x+y.plt");  // -DATAFILE is not split
    StringListDealloc(&list);
    StartupDirectory.clear();
}

TEST(CommandLineInstructions, ReaderInstructionsAreQuotedAsGiven) {
    StartupDirectory = "/w";
    bool ok = true;
    const char *args[] = {"orvanex", "-datasetreader", "My Reader", "-B", "say \"hi\""};
    char **argv = const_cast<char **>(args);
    PreScanCommandLine(5, argv, &ok);
    ProcessCommandLineOptions(5, argv, &ok);
    ASSERT_TRUE(ok);
    EXPECT_FALSE(InBatchMode);
    EXPECT_EQ(CommandLineState.DataSetReaderName, "My Reader");
    StringList_s *list = StringListFromCompound(CommandLineState.DataSetInstructions.c_str());
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(StringListCount(list), 2);
    EXPECT_STREQ(StringListGetStringRef(list, 0), "-B");
    EXPECT_STREQ(StringListGetStringRef(list, 1), "say \"hi\"");
    StringListDealloc(&list);
    StartupDirectory.clear();
}

}  // namespace

namespace {

TEST(AssertionDeathTest, FailedAssertionAbortsNamingItsKindAndExpression) {
    EXPECT_DEATH(
        {
            BatchFile = tmpfile();  // the mop-up closes an open log on the way out
            REQUIRE(1 + 1 == 3);
        },
        "Assertion failure \\(Pre-condition\\): 1 \\+ 1 == 3");
    EXPECT_DEATH(CHECK(false), "Assertion failure \\(Check\\): false");
}

}  // namespace
