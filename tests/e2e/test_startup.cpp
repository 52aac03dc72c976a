// The launcher from the outside: exit codes, standard streams, batch log and temporary directory
// for the command line, the environment and the start-up files.
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

#include "e2e/harness.h"

namespace {

const char *kMacro = "#!MC 1100\n";
const std::regex kVersion(R"(\d+\.\d+-\d+-\d+)");

// The version the banner announces on the first line of standard output.
std::string bannerVersion(const RunResult &r) {
    std::smatch m;
    std::string first = Lines(r.out).empty() ? "" : Lines(r.out)[0];
    if (std::regex_search(first, m, std::regex(R"(^Orvanex (\d+\.\d+-\d+-\d+) - )"))) return m[1];
    return "";
}

// Value of a "%-23s: %s" start-up line of standard output.
std::string startupLine(const RunResult &r, const std::string &label) {
    std::string prefix = label + std::string(23 - label.size(), ' ') + ": ";
    for (const std::string &line : Lines(r.out))
        if (line.rfind(prefix, 0) == 0) return line.substr(prefix.size());
    return "";
}

TEST(BatchRun, ValidMacroExitsZeroWithLogAndNoTempDirectoryLeft) {
    Scratch s;
    s.write("run.mcr", kMacro);
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    std::string version = bannerVersion(r);
    ASSERT_TRUE(std::regex_match(version, kVersion)) << r.out;
    std::vector<std::string> log = Lines(s.read("batch.log"));
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log[0], "Orvanex " + version + " Batch Log");
    // The start-up lines, padded to 23 columns.
    std::string tempDir = startupLine(r, "Process Temp Dir");
    EXPECT_EQ(tempDir.rfind(s.tmpDir() + "/orvanex_", 0), 0u) << r.out;
    EXPECT_NE(startupLine(r, "Orvanex executable"), "");
    EXPECT_NE(startupLine(r, "Orvanex Home Directory"), "");
    EXPECT_FALSE(s.exists(tempDir));
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(BatchRun, OptionsAndSuffixesIgnoreCase) {
    Scratch s;
    s.write("RUN.MCR", kMacro);
    s.write("-x.mcr", kMacro);  // a name ending in .mcr is a macro even with a leading minus
    RunResult r = s.run({"-B", "RUN.MCR", "-x.mcr", "-NoBatchLog"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.err.find("Unknown command line option"), std::string::npos) << r.err;
    EXPECT_FALSE(s.exists("batch.log"));
}

TEST(BatchRun, BatchLogFileVariableNamesTheLog) {
    Scratch s;
    s.write("run.mcr", kMacro);
    s.setEnv("BATCHLOGFILE", "  my.log  ");
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(s.exists("my.log"));
    EXPECT_FALSE(s.exists("batch.log"));

    Scratch blank;
    blank.write("run.mcr", kMacro);
    blank.setEnv("BATCHLOGFILE", "   ");
    EXPECT_EQ(blank.run({"-b", "run.mcr"}).exitCode, 0);
    EXPECT_TRUE(blank.exists("batch.log"));
}

TEST(BatchRun, UncreatableLogFailsStartUp) {
    Scratch s;
    s.write("run.mcr", kMacro);
    s.setEnv("BATCHLOGFILE", "no/such/dir/x.log");
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Err: Cannot create batch log file " + s.path("no/such/dir/x.log")), std::string::npos)
        << r.err;
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(BatchRun, MissingPhysicalDisplayFileWarnsInTheLogOnly) {
    Scratch s;
    s.write("run.mcr", kMacro);
    const std::string warning = "Warning: Invalid or Missing orvanex.phy file.  Batch Operation may not work correctly!";
    EXPECT_EQ(s.run({"-b", "run.mcr"}).exitCode, 0);
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), warning)) << s.read("batch.log");

    // A good file, named by ORVPHYFILE: no warning.
    s.write("screen.phy", "#!PHY 700\n1024 768 4.0000000000000000e+01 4.0000000000000000e+01 0\n\n\n\n\n\n");
    s.setEnv("ORVPHYFILE", "screen.phy");
    EXPECT_EQ(s.run({"-b", "run.mcr"}).exitCode, 0);
    EXPECT_FALSE(HoldsMessage(s.read("batch.log"), warning)) << s.read("batch.log");

    // An old one is ignored with its own message.
    s.write("screen.phy", "#!PHY 600\n1024 768 40.0 40.0 0\n");
    EXPECT_EQ(s.run({"-b", "run.mcr"}).exitCode, 0);
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), "Warning: Old .phy file ... ignoring."));
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), warning));
}

TEST(BatchRun, BadMacroHeaderIsAnErrorInTheLogButExitsZero) {
    Scratch s;
    s.write("run.mcr", "$!REDRAW\n");
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), "Err: Invalid Macro file header")) << s.read("batch.log");
}

TEST(BatchRun, MissingMacroFileIsReportedInTheLog) {
    Scratch s;
    RunResult r = s.run({"-b", "gone.mcr"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), "Err: Filename Error: File does not exist."));
}

TEST(BatchRun, ScriptOfAnotherKindHasNoRunner) {
    Scratch s;
    s.write("run.tcl", "puts hi\n");
    EXPECT_EQ(s.run({"-b", "run.tcl"}).exitCode, 0);
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), "Err: Cannot execute " + s.path("run.tcl") +
                                                      "\nNothing registered with Orvanex to handle script files of "
                                                      "type \".tcl\""))
        << s.read("batch.log");
}

TEST(MultipleMacros, FailureInTheMiddleIsReportedWithEachFileInItsPlace) {
    Scratch s;
    s.write("one.mcr", kMacro);
    s.write("two.mcr", "not a macro\n");
    s.write("three.mcr", kMacro);
    EXPECT_EQ(s.run({"-b", "one.mcr", "two.mcr", "three.mcr"}).exitCode, 0);
    std::string log = s.read("batch.log");
    std::string expected = "Err: Orvanex was interrupted while processing multiple macro files loaded from the "
                           "command line.\n\nOrvanex successfully processed these files:\n    " +
                           s.path("one.mcr") + "\n\nOrvanex was interrupted during this macro file:\n    " +
                           s.path("two.mcr") + "\n\nThese files are left unprocessed:\n    " + s.path("three.mcr");
    EXPECT_TRUE(HoldsMessage(log, expected)) << log;
    // Each file name stands on a line of its own, indented by four blanks.
    EXPECT_NE(log.find("\n    " + s.path("three.mcr") + "\n"), std::string::npos) << log;
}

TEST(MultipleMacros, FailureInTheLastFileGivesNoReport) {
    Scratch s;
    s.write("one.mcr", kMacro);
    s.write("two.mcr", "not a macro\n");
    EXPECT_EQ(s.run({"-b", "one.mcr", "two.mcr"}).exitCode, 0);
    EXPECT_EQ(s.read("batch.log").find("multiple macro files"), std::string::npos);
}

TEST(CommandLine, BatchWithoutMacroFails) {
    for (const char *flag : {"-b", "-B"}) {
        Scratch s;
        RunResult r = s.run({flag});
        EXPECT_EQ(r.exitCode, 1);
        EXPECT_NE(r.err.find("Err: No macro file specified for batch mode\n"), std::string::npos) << r.err;
        EXPECT_FALSE(s.exists("batch.log"));
    }
}

TEST(CommandLine, EveryMissingValueHasItsMessage) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"-ALTERNATETITLE", "Missing alternate title string."},
        {"-datasetreader", "Missing data set reader name"},
        {"-ADDONFILE", "Missing addonlist filename"},
        {"-LOADADDON", "Missing add-on filename"},
        {"-C", "Missing alternate configuration fname"},
        {"-H", "Missing home directory name for -h flag"},
        {"-QM", "Missing alternate quick macro file name"},
        {"-DEFINE", "Missing environment variable assignment from -define parameter"},
        {"-P", "Missing macro filename"},
        {"-R", "Missing routename"},
        {"-Y", "Missing export routename"},
        {"-F", "Missing alternate font filename"},
        {"-S", "Missing stylesheet fname"},
        {"-M", "Missing colormap fname"},
        {"-DATAFILE", "Missing datafile name"},
    };
    Scratch s;
    s.write("run.mcr", kMacro);
    for (const auto &[option, message] : cases) {
        RunResult r = s.run({"-b", "run.mcr", option});
        EXPECT_EQ(r.exitCode, 1) << option;
        EXPECT_TRUE(HoldsMessage(r.err, "Err: " + message)) << option << ": " << r.err;
        EXPECT_TRUE(s.tmpEntries().empty()) << option;
    }
}

TEST(CommandLine, FileArgumentErrors) {
    Scratch s;
    s.write("run.mcr", kMacro);
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{"-bogus"}, "Unknown command line option: -bogus"},
        {{"a.lay", "b.LAY"}, "Not allowed to specify multiple layout files on the command line"},
        {{"a.plt", "one.lpk"}, "Not allowed to specify alternate plot files when loading a layout package."},
        {{"one.LPK", "a.plt"}, "Not allowed to specify alternate plot files when loading a layout package."},
        {{"one.lpk", "-DATAFILE", "a.plt"}, "Not allowed to specify alternate plot files when loading a layout package."},
    };
    for (const Case &c : cases) {
        std::vector<std::string> args = {"-b", "run.mcr"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        RunResult r = s.run(args);
        EXPECT_EQ(r.exitCode, 1) << c.message;
        EXPECT_TRUE(HoldsMessage(r.err, "Err: " + c.message)) << r.err;
    }
}

TEST(CommandLine, ValuedToolkitOptionAtTheEndIsReportedAndStartUpGoesOn) {
    Scratch s;
    s.write("run.mcr", kMacro);
    RunResult r = s.run({"-b", "run.mcr", "-geometry"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(HoldsMessage(r.err, "Err: Invalid option to -geometry")) << r.err;
    // Toolkit options are compared with case: "-GEOMETRY" is no toolkit option and no option at all.
    RunResult upper = s.run({"-b", "run.mcr", "-GEOMETRY", "10x10"});
    EXPECT_EQ(upper.exitCode, 1);
    EXPECT_TRUE(HoldsMessage(upper.err, "Err: Unknown command line option: -GEOMETRY"));
}

TEST(CommandLine, DataSetReaderTakesTheRestOfTheLine) {
    Scratch s;
    s.write("run.mcr", kMacro);
    // "-B" after -datasetreader is an instruction for the reader, not the batch option: without
    // the earlier -b this run would be interactive.
    RunResult r = s.run({"-b", "run.mcr", "-datasetreader", "R", "a", "-B", "-bogus"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.err.find("Unknown command line option"), std::string::npos);
}

TEST(CommandLine, VersionOptionPrintsPlatformAndExitsOne) {
    Scratch s;
    RunResult r = s.run({"-v"});
    EXPECT_EQ(r.exitCode, 1);
    std::string version = bannerVersion(r);
    EXPECT_NE(r.out.find("\nOrvanex " + version + " LINUX64\n"), std::string::npos) << r.out;
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(CommandLine, DebugOption) {
    Scratch s;
    s.write("run.mcr", kMacro);
    // At the very end of the line: debug output on standard error.
    RunResult atEnd = s.run({"-b", "run.mcr", "-DEBUG"});
    EXPECT_EQ(atEnd.exitCode, 0);
    EXPECT_NE(atEnd.err.find("Opening File: " + s.path("run.mcr")), std::string::npos) << atEnd.err;
    // With a file name: the debug output goes there.
    RunResult toFile = s.run({"-debug", "dbg.txt", "-b", "run.mcr"});
    EXPECT_EQ(toFile.exitCode, 0);
    EXPECT_NE(s.read("dbg.txt").find("Opening File: " + s.path("run.mcr")), std::string::npos);
    // A file that cannot be written: the message, and debug off again.
    RunResult bad = s.run({"-DEBUG", "no/such/dir/dbg.txt", "-b", "run.mcr"});
    EXPECT_EQ(bad.exitCode, 0);
    EXPECT_TRUE(HoldsMessage(bad.err, "Err: Cannot write debug output to no/such/dir/dbg.txt, permission denied or "
                                      "invalid file name."))
        << bad.err;
    EXPECT_EQ(bad.err.find("Opening File:"), std::string::npos);
}

TEST(CommandLine, DefineSetsTheEnvironmentBeforeTheConfigurationFile) {
    Scratch s;
    s.write("run.mcr", kMacro);
    // -DEFINE acts in the pre-scan, so the variable is there when the log is named.
    RunResult r = s.run({"-DEFINE", "BATCHLOGFILE=defined.log", "-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(s.exists("defined.log"));
}

TEST(Interactive, NoDisplayEndsWithExitOne) {
    Scratch s;
    RunResult r = s.run({});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Cannot open display.\n"), std::string::npos) << r.err;
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(TempDirectory, InvalidTmpDirFailsStartUp) {
    Scratch s;
    s.write("run.mcr", kMacro);
    s.setEnv("TMPDIR", s.path("missing"));
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(r.exitCode, 1);
    // The option scan opened the log before the directory is made, so the message stands there.
    EXPECT_TRUE(HoldsMessage(s.read("batch.log"), "Err: The temporary directory " + s.path("missing") +
                                        " is invalid or you do not have permission to write to it.\nAssign a "
                                        "temporary directory for Orvanex by setting the TMPDIR environment variable "
                                        "to a valid directory"))
        << s.read("batch.log");
}

TEST(TempDirectory, RemovedAfterShutdownSignal) {
    Scratch s;
    // The program blocks reading the macro from a pipe until the test lets it go.
    ASSERT_EQ(mkfifo(s.path("run.mcr").c_str(), 0644), 0);
    pid_t pid = s.start({"-b", "run.mcr"});
    int fd = open(s.path("run.mcr").c_str(), O_WRONLY);  // returns once the program opened the macro
    ASSERT_GE(fd, 0);
    EXPECT_EQ(s.tmpEntries().size(), 1u);  // its temp directory exists now
    kill(pid, SIGTERM);
    RunResult r = s.finish(pid);
    close(fd);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_NE(r.err.find("\nOrvanex received shutdown signal #15.\n"), std::string::npos) << r.err;
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(ConfigurationFile, HeaderOutcomes) {
    struct Case {
        const char *header;
        const char *message;  // null: accepted silently
    };
    const Case cases[] = {
        {"#!MC 1100\n", nullptr},
        {"#!MC 700\n", nullptr},
        {"#!MC 1101\n", "Err: Configuration file is for a newer version of Orvanex.  Using factory defaults."},
        {"#!MC 699\n", "Err: Configuration file is out of date.  Using factory defaults."},
        {"#!XX 1100\n", "Err: Bad header in configuration file.  Using factory defaults."},
        {"#!MC\n", "Err: Bad header in configuration file.  Using factory defaults."},
    };
    for (const Case &c : cases) {
        Scratch s;
        s.write("run.mcr", kMacro);
        s.write("orvanex.cfg", c.header);
        RunResult r = s.run({"-b", "run.mcr"});
        EXPECT_EQ(r.exitCode, 0) << c.header;
        EXPECT_EQ(startupLine(r, "Configuration File"), s.path("orvanex.cfg"));
        if (c.message != nullptr)
            EXPECT_TRUE(HoldsMessage(r.err, c.message)) << c.header << r.err;
        else
            EXPECT_EQ(r.err.find("Err:"), std::string::npos) << c.header << r.err;
        EXPECT_EQ(r.err.find("Configuration file is missing"), std::string::npos);
    }
}

TEST(ConfigurationFile, SearchOrderAndMissingWarning) {
    Scratch s;
    s.write("run.mcr", kMacro);
    RunResult missing = s.run({"-b", "run.mcr"});
    EXPECT_TRUE(HoldsMessage(missing.err, "Warning: Configuration file is missing.  Using factory defaults."));
    // $HOME/.orvanex.cfg is found when the start directory has none ...
    s.write("home/.orvanex.cfg", "#!MC 1100\n");
    EXPECT_EQ(startupLine(s.run({"-b", "run.mcr"}), "Configuration File"), s.path("home/.orvanex.cfg"));
    // ... and the start directory wins over it.
    s.write("orvanex.cfg", "#!MC 1100\n");
    EXPECT_EQ(startupLine(s.run({"-b", "run.mcr"}), "Configuration File"), s.path("orvanex.cfg"));
    // -C names another file, made absolute against the start directory.
    s.write("other.cfg", "#!MC 1101\n");
    RunResult named = s.run({"-C", "other.cfg", "-b", "run.mcr"});
    EXPECT_EQ(startupLine(named, "Configuration File"), s.path("other.cfg"));
    EXPECT_TRUE(HoldsMessage(named.err, "Configuration file is for a newer version of Orvanex."));
}

TEST(ConfigurationFile, HomeDirectoryFromOptionAndEnvironment) {
    Scratch s;
    s.write("run.mcr", kMacro);
    mkdir(s.path("inst").c_str(), 0755);
    s.write("inst/orvanex.cfg", "#!MC 1100\n");
    s.setEnv("ORVHOME", "\"" + s.path("inst") + "\"");  // quotes are removed
    RunResult r = s.run({"-b", "run.mcr"});
    EXPECT_EQ(startupLine(r, "Orvanex Home Directory"), s.path("inst"));
    EXPECT_EQ(startupLine(r, "Configuration File"), s.path("inst/orvanex.cfg"));
    RunResult h = s.run({"-h", "elsewhere", "-b", "run.mcr"});
    EXPECT_EQ(startupLine(h, "Orvanex Home Directory"), s.path("elsewhere"));
}

}  // namespace
