// Macros run by the launcher in batch mode: control flow, functions, includes, variables and
// expressions, the limits and error messages of the language, and data loads driven by
// $!READDATASET. Values are shown with the developer word $!INTERNAL "ECHO ...", which writes its
// (expanded) text to the batch log.
#include <gtest/gtest.h>

#include <chrono>

#include "e2e/harness.h"

namespace {

// ---- control flow -------------------------------------------------------------------------

TEST(MacroE2E, LoopsConditionsAndWhile) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!VARSET |A| = 0\n"
                               "$!LOOP 4\n"
                               "  $!IF |LOOP| == 2\n"
                               "    $!CONTINUE\n"
                               "  $!ELSEIF |LOOP| == 4\n"
                               "    $!BREAK\n"
                               "  $!ELSE\n"
                               "    $!VARSET |A| += |LOOP|\n"
                               "  $!ENDIF\n"
                               "$!ENDLOOP\n" +
                                   EchoCommand("|A|") +
                                   "$!LOOP 0\n" + EchoCommand("never") + "$!ENDLOOP\n"
                                   "$!LOOP -1\n" + EchoCommand("never") + "$!ENDLOOP\n"
                                   "$!VARSET |W| = 1\n"
                                   "$!WHILE |W| < 100\n  $!VARSET |W| *= 3\n$!ENDWHILE\n" +
                                   EchoCommand("|W|") + "$!IF \"a\" == \"A\"\n" + EchoCommand("case-blind") + "$!ENDIF\n");
    EXPECT_EQ(run.result.exitCode, 0);
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"4", "243", "case-blind"})) << run.log;
}

TEST(MacroE2E, NestedLoopsUpToTenAndTheEleventhRefused) {
    Scratch s;
    std::string open, close;
    for (int n = 0; n < 10; n++) {
        open += "$!LOOP 2\n";
        close += "$!ENDLOOP\n";
    }
    MacroRun ten = RunMacro(s, "$!VARSET |N| = 0\n" + open + "$!VARSET |N| += 1\n" + close + EchoCommand("|N|"));
    EXPECT_EQ(EchoedLines(ten.log), (std::vector<std::string>{"1024"})) << ten.log;
    MacroRun eleven = RunMacro(s, open + "$!LOOP 2\n$!VARSET |N| += 1\n$!ENDLOOP\n" + close + EchoCommand("after"));
    EXPECT_TRUE(HoldsMessage(eleven.log, "Err: Too many nested loops\n\nError occurred in $! command\nstarting on line 12:"))
        << eleven.log;
    EXPECT_TRUE(EchoedLines(eleven.log).empty());
}

TEST(MacroE2E, FunctionsTakeParametersAndNestToEightLevels) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!MACROFUNCTION NAME = \"Join\"\n"
                               "  $!VARSET |J| = \"|1|-|2|\"\n"
                               "  $!LOOP 3\n    $!IF |LOOP| == 2\n      $!BREAK\n    $!ENDIF\n  $!ENDLOOP\n"
                               "$!ENDMACROFUNCTION\n"
                               "$!MACROFUNCTION NAME = \"Third\"\n" + EchoCommand("|3|") + "$!VARSET |Z| = |3|\n" +
                                   "$!ENDMACROFUNCTION\n"
                                   "$!RUNMACROFUNCTION \"JOIN\" (\"a b\", c )\n" +
                                   EchoCommand("|J|") + "$!RUNMACROFUNCTION \"Third\" (1, 2)\n");
    // |3| with only two parameters: in a string it stays as text, outside one it fails.
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"a b-c", "|3|"})) << run.log;
    EXPECT_TRUE(HoldsMessage(run.log, "Err: Invalid or undefined macro variable.")) << run.log;

    std::string functions;
    for (int n = 1; n <= 9; n++) {
        functions += "$!MACROFUNCTION NAME = \"F" + std::to_string(n) + "\"\n";
        if (n < 9) functions += "$!RUNMACROFUNCTION \"F" + std::to_string(n + 1) + "\"\n";
        functions += "$!ENDMACROFUNCTION\n";
    }
    MacroRun deep = RunMacro(s, functions + "$!RUNMACROFUNCTION \"F2\"\n" + EchoCommand("eight deep") +
                                    "$!RUNMACROFUNCTION \"F1\"\n" + EchoCommand("never"));
    EXPECT_EQ(EchoedLines(deep.log), (std::vector<std::string>{"eight deep"})) << deep.log;
    EXPECT_TRUE(HoldsMessage(deep.log, "Err: Too many nested macro calls")) << deep.log;
    EXPECT_TRUE(HoldsMessage(deep.log, "Call Traceback:")) << deep.log;

    MacroRun recursive = RunMacro(s, "$!MACROFUNCTION NAME = \"R\"\n$!RUNMACROFUNCTION \"r\"\n$!ENDMACROFUNCTION\n"
                                     "$!RUNMACROFUNCTION \"R\"\n");
    EXPECT_TRUE(HoldsMessage(recursive.log, "Err: Recursive Macro Function Calls Not Allowed")) << recursive.log;
    MacroRun missing = RunMacro(s, "$!RUNMACROFUNCTION \"nope\"\n");
    EXPECT_TRUE(HoldsMessage(missing.log, "Err: Invalid Macro Function Name: nope")) << missing.log;
}

TEST(MacroE2E, IncludesNestFourDeepAndUseTheMacroPath) {
    Scratch s;
    for (int n = 1; n <= 5; n++) {
        std::string body = "#!MC 1100\n$!VARSET |DEPTH| = " + std::to_string(n) + "\n";
        if (n < 5) body += "$!INCLUDEMACRO \"|MACROFILEPATH|/inc" + std::to_string(n + 1) + ".mcr\"\n";
        s.write("inc" + std::to_string(n) + ".mcr", body);
    }
    s.write("four.mcr", "#!MC 1100\n$!VARSET |DEPTH| = 4\n");
    s.write("inc4.mcr", "#!MC 1100\n$!VARSET |DEPTH| = 4\n");
    MacroRun four = RunMacro(s, "$!INCLUDEMACRO \"|MACROFILEPATH|/inc1.mcr\"\n" + EchoCommand("|DEPTH|"));
    EXPECT_EQ(EchoedLines(four.log), (std::vector<std::string>{"4"})) << four.log;

    s.write("inc4.mcr", "#!MC 1100\n$!INCLUDEMACRO \"|MACROFILEPATH|/inc5.mcr\"\n");
    MacroRun five = RunMacro(s, "$!INCLUDEMACRO \"|MACROFILEPATH|/inc1.mcr\"\n" + EchoCommand("|DEPTH|"));
    EXPECT_TRUE(HoldsMessage(five.log, "Too many nested includes")) << five.log;
    EXPECT_TRUE(EchoedLines(five.log).empty()) << "a load error runs nothing";

    s.write("bad.mcr", "not a macro\n");
    MacroRun bad = RunMacro(s, "$!INCLUDEMACRO \"|MACROFILEPATH|/bad.mcr\"\n");
    EXPECT_TRUE(HoldsMessage(bad.log, "INCLUDEMACRO file has invalid header")) << bad.log;
    MacroRun gone = RunMacro(s, "$!INCLUDEMACRO \"|MACROFILEPATH|/gone.mcr\"\n");
    EXPECT_TRUE(HoldsMessage(gone.log, "Cannot open File in INCLUDEMACRO Command")) << gone.log;
}

TEST(MacroE2E, FlowCheckRunsNothingWhenControlWordsDoNotMatch) {
    Scratch s;
    struct Case {
        std::string body, message;
    };
    const std::vector<Case> cases = {
        {"$!IF 1 == 1\n", "Cannot Find Matching ENDIF"},
        {"$!ENDIF\n", "Cannot Find Matching IF"},
        {"$!LOOP 2\n$!ENDWHILE\n", "Cannot Find Matching WHILE"},
        {"$!ELSE\n", "ELSE or ELSEIF Unexpected"},
        {"$!IF 1 == 1\n$!ELSE\n$!ELSEIF 1 == 2\n$!ENDIF\n", "ELSE or ELSEIF Unexpected"},
        {"$!ENDMACROFUNCTION\n", "ENDMACROFUNCTION Encountered Before MACROFUNCTION"},
        {"$!MACROFUNCTION NAME = \"A\"\n$!MACROFUNCTION NAME = \"B\"\n", "Cannot Nest Macro Function Definitions"},
        {"$!BREAK\n", "BREAK is not allowed outside of the context of a LOOP or a WHILE construct."},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, EchoCommand("before") + c.body);
        EXPECT_TRUE(HoldsMessage(run.log, c.message)) << c.body << run.log;
        if (c.body != "$!BREAK\n") {
            EXPECT_TRUE(EchoedLines(run.log).empty()) << c.body;
        }
    }
}

// ---- variables and expressions ------------------------------------------------------------

TEST(MacroE2E, VariableFormatsDefaultsAndQuotes) {
    Scratch s;
    s.setEnv("ORVANEX_TEST_ENV", "from env");
    MacroRun run = RunMacro(s, "$!VARSET |A| = 3.14159\n"
                               "$!VARSET |Q| = '\"x\"'\n"
                               "$!VARSET |S| = \"abcdefghij\"\n" +
                                   EchoCommand("|A%.2f| |A%5d| |B:=5| |A:=5| |$ORVANEX_TEST_ENV| |S[++4]|") +
                                   "$!VARSET |T| = \"|Q|\"\n$!INTERNAL 'ECHO = |T|'\n" + "$!VARSET |N| = (1/3)\n" + EchoCommand("|N|") +
                                   EchoCommand("|S%3d|"));
    std::vector<std::string> got = EchoedLines(run.log);
    ASSERT_GE(got.size(), 3u) << run.log;
    EXPECT_EQ(got[0], "3.14     3 5 3.14159 from env abcd...");
    EXPECT_EQ(got[1], "\"x\"");  // the outer quotes changed so that the string stayed whole
    EXPECT_EQ(got[2], "0.333333333333333");
    EXPECT_TRUE(HoldsMessage(run.log, "Err: Invalid format specified for value formatting.")) << run.log;
}

TEST(MacroE2E, ExpressionsFollowPrecedenceAndReportErrors) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!VARSET |A| = ((1<2 ? 3 : 4) + 1)\n$!VARSET |B| = (-2^2)\n$!VARSET |C| = (2^3^2)\n"
                               "$!VARSET |D| = (max(2, 7) % 4 + sqrt(16) * -1)\n" +
                                   EchoCommand("|A| |B| |C| |D|") + "$!VARSET |E| = (7 % 0)\n" + EchoCommand("never"));
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"4 -4 512 -1"})) << run.log;
    EXPECT_TRUE(HoldsMessage(run.log, "Expecting a non-zero denominator.")) << run.log;
    EXPECT_TRUE(HoldsMessage(run.log, "starting on line 7:")) << run.log;
}

TEST(MacroE2E, AssignmentRulesAndTheirMessages) {
    Scratch s;
    struct Case {
        std::string body, message;
    };
    const std::vector<Case> cases = {
        {"$!VARSET |LOOP| = 1\n", "Invalid Variable Reference On Left-Hand Side"},
        {"$!VARSET |1| = 1\n", "Not allowed to assign values to macro parameters"},
        {"$!VARSET |A| = 2\n$!VARSET |A| /= 0\n", "Overflow or Underflow"},
        {"$!REMOVEVAR |NOTHERE|\n", "Invalid or undefined Variable name"},
        {"$!VARSET |ABCDEFGHIJABCDEFGHIJABCDEFGHIJK| = 1\n", "Macro Variable Name Too Long"},
        {"$!LOOP X\n$!ENDLOOP\n", "Bad Loop"},
        {"$!VARSET |A| = |UNDEFINEDTHING|\n", "Invalid or undefined macro variable."},
        {"$!VARSET |A| = |LOOP|\n", "LOOP value is undefined outside of a loop."},
        {"$!VIEW FITX\n", "Expecting One of: "},
        {"$!PRINT\n", "$!PRINT is not available yet."},
        {"$!WRITEDATASET \"x.plt\" RESETSTYLE = YES\n", "Invalid option \"RESETSTYLE\"\nfor command: \"WRITEDATASET\""},
        {"$!DUPLICATEZONE\n", "Missing SOURCEZONE sub-option(s) in $!DUPLICATEZONE Command."},
        {"$!FIELD [1] MESH { SHOW = NO }\n", "No data set available."},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, c.body + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(run.log, c.message)) << c.body << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << c.body << run.log;
        EXPECT_EQ(run.result.exitCode, 0);
    }
    // A division by zero leaves the variable as it was.
    MacroRun kept = RunMacro(s, "$!MACROFUNCTION NAME = \"D\"\n$!VARSET |A| /= 0\n$!ENDMACROFUNCTION\n"
                                "$!VARSET |A| = 2\n$!RUNMACROFUNCTION \"D\"\n");
    EXPECT_TRUE(HoldsMessage(kept.log, "Overflow or Underflow")) << kept.log;
}

TEST(MacroE2E, VariableAndIfLimits) {
    Scratch s;
    std::string vars;
    for (int n = 1; n <= 399; n++) vars += "$!VARSET |V" + std::to_string(n) + "| = " + std::to_string(n) + "\n";
    MacroRun full = RunMacro(s, vars + EchoCommand("|V399|") + "$!VARSET |ONEMORE| = 1\n" + EchoCommand("never"));
    EXPECT_EQ(EchoedLines(full.log), (std::vector<std::string>{"399"})) << full.log;
    EXPECT_TRUE(HoldsMessage(full.log, "Err: Too Many Macro Variables")) << full.log;

    std::string open, close;
    for (int n = 0; n < 100; n++) {
        open += "$!IF 1 == 1\n";
        close += "$!ENDIF\n";
    }
    MacroRun hundred = RunMacro(s, open + EchoCommand("deep") + close);
    EXPECT_EQ(EchoedLines(hundred.log), (std::vector<std::string>{"deep"})) << hundred.log;
    MacroRun more = RunMacro(s, open + "$!IF 1 == 1\n" + EchoCommand("never") + "$!ENDIF\n" + close);
    EXPECT_TRUE(HoldsMessage(more.log, "Err: Too many nested IF/ENDIF")) << more.log;
}

TEST(MacroE2E, QuickMacroAndConfigurationFilesRunAtStartUp) {
    Scratch s;
    s.write("orvanex.mcr", "#!MC 1100\n$!MACROFUNCTION NAME = \"Hello\"\n" + EchoCommand("hello |1|") + "$!ENDMACROFUNCTION\n");
    s.write("orvanex.cfg", "#!MC 1100\n$!VARSET |FROMCONFIG| = 7\n");
    MacroRun run = RunMacro(s, "$!RUNMACROFUNCTION \"hello\" (there)\n" + EchoCommand("|FROMCONFIG|"));
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"hello there", "7"})) << run.log;

    s.write("orvanex.cfg", "#!MC 1100\n$!LOOP 2\n$!ENDLOOP\n");
    MacroRun refused = RunMacro(s, EchoCommand("still runs"));
    EXPECT_TRUE(HoldsMessage(refused.result.err + refused.log, "Command not allowed in the configuration file"))
        << refused.result.err << refused.log;
    EXPECT_EQ(EchoedLines(refused.log), (std::vector<std::string>{"still runs"}));
}

TEST(MacroE2E, IntrinsicsReadTheSystem) {
    Scratch s;
    MacroRun run = RunMacro(s, EchoCommand("|INBATCHMODE| |NUMFRAMES| |PLATFORM| |ORVANEXVERSION| |ISDATASETAVAILABLE|") +
                                   EchoCommand("|DATASETTITLE|") + "$!VARSET |X| = |AXISMINX|\n");
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"1 1 LINUX64 110 0", "No Data Set"})) << run.log;
    MacroRun paper = RunMacro(s, EchoCommand("|PAPERWIDTH| |PAPERHEIGHT|") + "$!PAPER ORIENTPORTRAIT = YES PAPERSIZE = A4\n" +
                                     EchoCommand("|PAPERWIDTH%.2f| |PAPERHEIGHT%.2f|"));
    EXPECT_EQ(EchoedLines(paper.log), (std::vector<std::string>{"11 8.5", "8.27 11.69"})) << paper.log;
    // A sketch frame has no X axis variable.
    EXPECT_TRUE(HoldsMessage(run.log, "Axis variable not defined.")) << run.log;
}

TEST(MacroE2E, PauseAndDelayAreSkippedInBatch) {
    Scratch s;
    auto start = std::chrono::steady_clock::now();
    MacroRun run = RunMacro(s, "$!DELAY 5\n$!PAUSE \"Press OK\"\n" + EchoCommand("after"));
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 4.0) << "the delay of 5 s did not wait";
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"after"})) << run.log;
    EXPECT_NE(run.log.find("ACTION: DELAY\nACTION: PAUSE Press OK\n"), std::string::npos) << run.log;
}

TEST(MacroE2E, QuitEndsTheMacro) {
    Scratch s;
    MacroRun run = RunMacro(s, EchoCommand("one") + "$!QUIT\n" + EchoCommand("two"));
    EXPECT_EQ(run.result.exitCode, 0);
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"one"})) << run.log;
}

TEST(MacroE2E, CompressedFormsRoundTripThroughTheLog) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!INTERNAL \"COMPRESS $!VARSET |A| = 3\"\n"
                               "$!INTERNAL \"COMPRESS $!READDATASET 'a.plt' READDATAOPTION = APPEND\"\n");
    EXPECT_NE(run.log.find("Compressed: !11|A|=3\nUncompressed: $!VARSET |A| = 3\n"), std::string::npos) << run.log;
    EXPECT_NE(run.log.find("Uncompressed: $!READDATASET 'a.plt'\n  READDATAOPTION = APPEND\n"), std::string::npos)
        << run.log;
}

TEST(MacroE2E, DebugTracesEveryCommand) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!VARSET |A| = 1\n$!MACROFUNCTION NAME = \"F\"\n$!VARSET |B| = 2\n$!ENDMACROFUNCTION\n"
                               "$!RUNMACROFUNCTION \"F\"\n",
                            {"-DEBUG"});
    EXPECT_NE(run.result.err.find("            MAIN:   1 (  2): $!VARSET |A| = 1\n"), std::string::npos) << run.result.err;
    EXPECT_NE(run.result.err.find("               F:   1 (  4): $!VARSET |B| = 2\n"), std::string::npos) << run.result.err;
}

TEST(MacroE2E, SystemCommandsAreRefusedUntilTheConfigurationAllowsThem) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!SYSTEM \"touch made.txt\"\n");
    EXPECT_TRUE(HoldsMessage(run.log, "Err: $!SYSTEM command not allowed in batch mode. Add \"$!Interface "
                                      "OkToExecuteSystemCommand = TRUE\" to the orvanex configuration file"))
        << run.log;
    EXPECT_FALSE(s.exists("made.txt"));
    s.write("orvanex.cfg", "#!MC 1100\n$!INTERFACE OKTOEXECUTESYSTEMCOMMAND = YES\n");
    MacroRun allowed = RunMacro(s, "$!SYSTEM \"touch made.txt\"\n$!SYSTEM \"exit 3\"\n" + EchoCommand("after"));
    EXPECT_TRUE(s.exists("made.txt")) << allowed.log;
    EXPECT_EQ(EchoedLines(allowed.log), (std::vector<std::string>{"after"})) << "an exit status is no error";
    EXPECT_NE(allowed.log.find("ACTION: SYSTEM touch made.txt\n"), std::string::npos) << allowed.log;
}

// ---- set-value commands -----------------------------------------------------------------------

TEST(MacroE2E, SetValueCommandsChangeWhatLaterCommandsSee) {
    Scratch s;
    s.write("xy.dat", "VARIABLES = X Y\nZONE I=1\n1 2\n");
    s.write("yx.dat", "VARIABLES = Y X\nZONE I=1\n20 10\n");
    MacroRun run = RunMacro(s, "$!FILECONFIG DATAFILEVARLOADMODE = BYNAME\n"
                               "$!READDATASET '\"xy.dat\" \"yx.dat\"'\n" + EchoCommand("|MAXVAR[1]|") +
                                   "$!FILECONFIG DATAFILEVARLOADMODE = BYPOSITION\n"
                                   "$!READDATASET '\"xy.dat\" \"yx.dat\"'\n" + EchoCommand("|MAXVAR[1]|") +
                                   "$!INTERFACE ENABLEPAUSES = NO\n$!INTERFACE ENABLEPAUSES = NO\n"
                                   "$!INTERNAL \"GETVALUE INTERFACE ENABLEPAUSES\"\n"
                                   "$!LIMITS LODTHRESHOLDMINFRACT = 0.25\n"
                                   "$!INTERNAL \"GETVALUE LIMITS LODTHRESHOLDMINFRACT\"\n"
                                   "$!FRAMENAME = \"Results\"\n" + EchoCommand("|FRAMENAME|") +
                                   "$!GLOBALTIME SOLUTIONTIME = 2.5\n" + EchoCommand("|SOLUTIONTIME|"));
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"10", "20", "Results", "2.5"})) << run.log;
    EXPECT_NE(run.log.find("INTERFACE ENABLEPAUSES = NO\n"), std::string::npos) << run.log;
    EXPECT_NE(run.log.find("LIMITS LODTHRESHOLDMINFRACT = 0.25\n"), std::string::npos) << run.log;
    EXPECT_NE(run.log.find("ACTION: READDATASET xy.dat+yx.dat\n"), std::string::npos) << run.log;
}

TEST(MacroE2E, SetValueErrorsKeepTheOldValue) {
    Scratch s;
    struct Case {
        std::string body, message;
    };
    const std::vector<Case> cases = {
        {"$!LIMITS LODTHRESHOLDMINFRACT = 2\n", "\"LODTHRESHOLDMINFRACT\" must be between 0 and 1."},
        {"$!LIMITS LODTHRESHOLDMINFRACT /= 0\n", "Divide by zero"},
        {"$!LIMITS MAXPTSINALINE = 10\n", "The $!LIMITS sub-command option is only allowed within the configuration file."},
        {"$!INTERFACE MAXNUMUNDOLEVELS = -1\n", "\"MAXNUMUNDOLEVELS\" must be greater than or equal to 0."},
        {"$!VARSET |M| = 7\n$!FILECONFIG DATAFILEVARLOADMODE = |M|\n", "Expecting an enumerated value."},
        {"$!FILECONFIG DATAFILEVARLOADMODE += 1\n", "Only allowed to use = Assignment with this statement"},
        {"$!INTERFACE ENABLEPAUSES = MAYBE\n", "Expecting One of: "},
        {"$!LIMITS PRINTDEBUG = YES\n", "Invalid option \"PRINTDEBUG\"\nfor command: \"LIMITS\""},
        {"$!GLOBALTIME SOLUTIONTIME = 1\n", "Current frame must have an attached data set."},
        {"$!FIELDMAP [1] MESH { SHOW = NO }\n", "No data set available."},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, c.body + EchoCommand("after") + "$!INTERNAL \"GETVALUE LIMITS LODTHRESHOLDMINFRACT\"\n");
        EXPECT_TRUE(HoldsMessage(run.log, c.message)) << c.body << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << c.body;
    }
    MacroRun kept = RunMacro(s, "$!MACROFUNCTION NAME = \"BAD\"\n$!LIMITS LODTHRESHOLDMINFRACT = 2\n$!ENDMACROFUNCTION\n"
                                "$!INTERNAL \"GETVALUE LIMITS LODTHRESHOLDMINFRACT\"\n");
    EXPECT_NE(kept.log.find("LIMITS LODTHRESHOLDMINFRACT = 0.3\n"), std::string::npos) << kept.log;
}

TEST(MacroE2E, ConfigurationFileRaisesLimits) {
    Scratch s;
    s.write("orvanex.cfg", "#!MC 1100\n$!LIMITS MAXPTSINALINE = 20000\n$!LIMITS MAXFENROWZONES = 100\n");
    MacroRun run = RunMacro(s, "$!INTERNAL \"GETVALUE LIMITS MAXPTSINALINE\"\n"
                               "$!INTERNAL \"GETVALUE LIMITS MAXFENROWZONES\"\n");
    EXPECT_NE(run.log.find("LIMITS MAXPTSINALINE = 20000\n"), std::string::npos) << run.log;
    EXPECT_NE(run.log.find("LIMITS MAXFENROWZONES = 100\n"), std::string::npos) << run.log;
}

// ---- data loads -----------------------------------------------------------------------------

const char *kTwoZones = "TITLE = \"two\"\nVARIABLES = X Y\nZONE T=\"a\" I=3\n1 10\n2 20\n3 30\nZONE T=\"b\" I=2\n4 40\n5 50\n";

TEST(MacroE2E, ReadDataSetOptionsReachTheLoad) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("xyp.dat", "VARIABLES = X Y P\nZONE I=1\n7 8 9\n");
    s.write("line.dat", "VARIABLES = V W\nZONE I=10\n0 0\n1 1\n2 2\n3 3\n4 4\n5 5\n6 6\n7 7\n8 8\n9 9\n");
    std::string values;
    for (int n = 0; n < 300; n++) values += std::to_string(n) + "\n";
    s.write("one.dat", "VARIABLES = P\nZONE I=300\n" + values);
    MacroRun run = RunMacro(
        s, "$!READDATASET '\"two.dat\"'\n" + EchoCommand("|NUMZONES| |NUMVARS| |ZONENAME[2]| |DATASETTITLE|") +
               "$!READDATASET '\"xyp.dat\"' READDATAOPTION = APPEND VARLOADMODE = BYNAME VARNAMELIST = '\"X\" \"Y\" \"P\"'\n" +
               EchoCommand("|NUMZONES| |NUMVARS| |VARNAME[3]|") +
               "$!READDATASET '\"line.dat\"' IJKSKIP { I = 4 }\n" + EchoCommand("|MAXI| |MAXVAR[2]|") +
               "$!READDATASET '\"two.dat\"' ZONELIST = [2] COLLAPSEZONESANDVARS = YES\n" + EchoCommand("|NUMZONES| |ZONENAME[1]|") +
               "$!READDATASET '\"one.dat\"'\n" + EchoCommand("|NUMVARS| |VARNAME[1]| |VARNAME[2]| |MAXVAR[1]|") +
               EchoCommand("|DATASETFNAME|"));
    EXPECT_EQ(run.result.exitCode, 0);
    std::vector<std::string> got = EchoedLines(run.log);
    ASSERT_EQ(got.size(), 6u) << run.log;
    EXPECT_EQ(got[0], "2 2 b two");
    EXPECT_EQ(got[1], "3 3 P");
    EXPECT_EQ(got[2], "4 9");
    EXPECT_EQ(got[3], "1 b");
    EXPECT_EQ(got[4], "2 I P 300");
    EXPECT_EQ(got[5], "one.dat");  // as the command named it
    EXPECT_TRUE(s.tmpEntries().empty());
}

TEST(MacroE2E, ReadDataSetChecksAndFailuresChangeNothing) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("xq.dat", "VARIABLES = X Q\nZONE I=1\n1 2\n");
    s.write("bad.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 x\n");
    struct Case {
        std::string command, message;
    };
    const std::vector<Case> cases = {
        {"$!READDATASET '\"xq.dat\"' READDATAOPTION = APPEND VARNAMELIST = '\"X\" \"Q\"'",
         "Cannot append data set: Variable names supplied for variable 2 are not a superset of the existing names"},
        {"$!READDATASET '\"xq.dat\"' READDATAOPTION = APPEND VARNAMELIST = '\"X\"'",
         "Cannot append data set: Not enough variable names supplied in instructions for appended data set"},
        {"$!READDATASET '\"xq.dat\"' READDATAOPTION = REPLACE VARNAMELIST = '\"X\" \"X\"'",
         "is referenced more than once."},
        {"$!READDATASET '\"bad.dat\"' READDATAOPTION = APPEND", "Expecting a value after location"},
        {"$!READDATASET '\"missing.dat\"'", "File does not exist."},
        {"$!READDATASET '\"a.SKIP.dat\"'", "No files were selected"},
        {"$!READDATASET '\"two.dat\"' DATASETREADER = 'NOPE'", "Unknown DataSet Reader: NOPE"},
        {"$!READDATASET '\"two.dat\"' VARPOSITIONLIST = [1,3] VARNAMELIST = '\"X\" \"Y\"' VARLOADMODE = BYPOSITION",
         "Variable 3 does not exist in the data file."},
        {"$!READDATASET '\"two.dat\"' IJKSKIP { I = 0 }", "Index skip values must be 1 or greater."},
        {"$!READDATASET '\"two.dat\"' BOGUSOPTION = 1", "Invalid macro command option."},
        {"$!READDATASET '\"two.dat\"' RESETSTYLE = 3", "Expecting One of: "},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, "$!READDATASET '\"two.dat\"'\n$!MACROFUNCTION NAME = \"SHOW\"\n" +
                                       EchoCommand("|NUMZONES| |NUMVARS|") + "$!ENDMACROFUNCTION\n" + c.command + "\n" +
                                       EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(run.log, c.message)) << c.command << "\n" << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << c.command;
        EXPECT_TRUE(s.tmpEntries().empty()) << c.command;
    }
}

TEST(MacroE2E, WriteDataSetRoundTrips) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    MacroRun run = RunMacro(s, "$!READDATASET '\"two.dat\"'\n$!WRITEDATASET \"out.plt\" ZONELIST = [2]\n"
                               "$!READDATASET '\"out.plt\"'\n" + EchoCommand("|NUMZONES| |ZONENAME[1]| |MAXVAR[2]|"));
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"1 b 50"})) << run.log;
    EXPECT_TRUE(s.exists("out.plt"));
}

// ---- the general style ----------------------------------------------------------------------

TEST(MacroE2E, ConfigurationFileSetsExportAndPaper) {
    Scratch s;
    s.write("orvanex.cfg", "#!MC 1100\n"
                           "$!EXPORTSETUP IMAGEWIDTH = 1024 EXPORTFORMAT = JPEG QUALITY = 90\n"
                           "$!PAPER PAPERSIZE = A4 ORIENTPORTRAIT = YES SHOWGRID = NO\n"
                           "$!PAPER PAPERSIZEINFO { A4 { WIDTH = 21 CM } } REGIONINWORKAREA { X2 = 9 }\n"
                           "$!GLOBALFRAME FRAMEHEADERHEIGHT = 0.3\n");
    const char *const reads[] = {"EXPORTSETUP IMAGEWIDTH", "EXPORTSETUP EXPORTFORMAT", "EXPORTSETUP QUALITY",
                                 "EXPORTSETUP EXPORTREGION", "PAPER PAPERSIZE", "PAPER ORIENTPORTRAIT",
                                 "PAPER SHOWGRID", "PAPER SHOWRULER", "PAPER PAPERSIZEINFO A4 WIDTH",
                                 "PAPER PAPERSIZEINFO A4 HEIGHT", "PAPER REGIONINWORKAREA X2",
                                 "GLOBALFRAME FRAMEHEADERHEIGHT"};
    std::string body;
    for (const char *path : reads) body += std::string("$!INTERNAL \"GETVALUE ") + path + "\"\n";
    MacroRun run = RunMacro(s, body);
    for (const char *line : {"EXPORTSETUP IMAGEWIDTH = 1024\n", "EXPORTSETUP EXPORTFORMAT = JPEG\n",
                             "EXPORTSETUP QUALITY = 90\n", "EXPORTSETUP EXPORTREGION = CURRENTFRAME\n",
                             "PAPER PAPERSIZE = A4\n", "PAPER ORIENTPORTRAIT = YES\n", "PAPER SHOWGRID = NO\n",
                             "PAPER SHOWRULER = YES\n",
                             "PAPER PAPERSIZEINFO A4 WIDTH = 8.26771653543307\n",  // 21 cm
                             "PAPER PAPERSIZEINFO A4 HEIGHT = 11.69291339\n", "PAPER REGIONINWORKAREA X2 = 9\n",
                             "GLOBALFRAME FRAMEHEADERHEIGHT = 0.3\n"})
        EXPECT_NE(run.log.find(line), std::string::npos) << line << run.log;
    EXPECT_FALSE(HoldsMessage(run.log + run.result.out + run.result.err, "Errors detected")) << run.log;

    // Without the file: the factory export setup and the modern header height.
    Scratch plain;
    MacroRun factory = RunMacro(plain, body);
    for (const char *line : {"EXPORTSETUP IMAGEWIDTH = 512\n", "EXPORTSETUP EXPORTFORMAT = PNG\n",
                             "PAPER PAPERSIZE = LETTER\n", "PAPER ORIENTPORTRAIT = NO\n",
                             "PAPER PAPERSIZEINFO A4 WIDTH = 8.26771654\n", "GLOBALFRAME FRAMEHEADERHEIGHT = 0.2\n"})
        EXPECT_NE(factory.log.find(line), std::string::npos) << line << factory.log;
}

TEST(MacroE2E, GeneralStyleErrorsNameTheirLine) {
    Scratch s;
    MacroRun range = RunMacro(s, EchoCommand("one") + "$!EXPORTSETUP IMAGEWIDTH = 0\n" + EchoCommand("two"));
    EXPECT_TRUE(HoldsMessage(range.log, "Err: \"IMAGEWIDTH\" must be between 1 and 32766.\n\n"
                                        "Error occurred in $! command\nstarting on line 3:"))
        << range.log;
    EXPECT_EQ(EchoedLines(range.log), (std::vector<std::string>{"one"}));

    MacroRun group = RunMacro(s, "$!GLOBALCOLORMAP 5\n  CONTOURCOLORMAP = MODERN\n");
    EXPECT_TRUE(HoldsMessage(group.log, "Err: Invalid group number specified in $!GLOBALCOLORMAP command.\n\n"
                                        "Error occurred in $! command\nstarting on line 2:"))
        << group.log;

    MacroRun suffix = RunMacro(s, EchoCommand("one") + "$!INTERFACE\n  TRANSLATION { SMALLSTEP = 1 }\n"
                                                "  PERCENTAGEOFPOINTSTOKEEP = 2 CM\n");
    EXPECT_TRUE(HoldsMessage(suffix.log, "Err: Not allowed to use suffix for \"PERCENTAGEOFPOINTSTOKEEP\"\n\n"
                                         "Error occurred in $! command\nstarting on line 3:"))
        << suffix.log;

    // In the configuration file the message names the file's line, and start-up goes on.
    s.write("orvanex.cfg", "#!MC 1100\n$!PAPER SHOWRULER = NO\n$!BASICSIZE\n  LINETHICKNESSES { HUGE = 150 }\n");
    MacroRun config = RunMacro(s, "$!INTERNAL \"GETVALUE PAPER SHOWRULER\"\n");
    EXPECT_TRUE(HoldsMessage(config.log + config.result.out + config.result.err, "\"HUGE\" must be between 0.0001 and 100.\n\n"
                                         "Error occurred in $! command\nstarting on line 3:"))
        << config.log << config.result.out << config.result.err;
    EXPECT_NE(config.log.find("PAPER SHOWRULER = NO\n"), std::string::npos) << config.log;
}

TEST(MacroE2E, OldColorMapFormsTouchOnlyGroupOne) {
    Scratch s;
    // A number other than 1 passes the command over: the impossible count would fail otherwise.
    MacroRun skipped = RunMacro(s, "$!COLORMAP 2\n  TWOCOLOR { NUMCONTROLPOINTS = 99 }\n" + EchoCommand("after"));
    EXPECT_EQ(EchoedLines(skipped.log), (std::vector<std::string>{"after"})) << skipped.log;
    MacroRun checked = RunMacro(s, "$!COLORSPECTRUM 1\n  TWOCOLOR { NUMCONTROLPOINTS = 99 }\n" + EchoCommand("after"));
    EXPECT_TRUE(HoldsMessage(checked.log, "\"NUMCONTROLPOINTS\" must be between 2 and 50.")) << checked.log;
    EXPECT_TRUE(EchoedLines(checked.log).empty());
    MacroRun control = RunMacro(s, "$!GLOBALCOLORMAP 2 SMRAINBOW { CONTROLPOINT 6 { COLORMAPFRACTION = 0.5 } }\n");
    EXPECT_TRUE(HoldsMessage(control.log, "Err: Invalid color map control point")) << control.log;
}

TEST(MacroE2E, FrameStyleIsSetAndReadAndConfigurationDefaultsReachNewFrames) {
    Scratch s;
    s.write("two.dat", kTwoZones);
    s.write("orvanex.cfg", "#!MC 1100\n$!FRAMELAYOUT SHOWHEADER = YES\n");
    MacroRun run = RunMacro(s, "$!INTERNAL \"GETVALUE FRAMELAYOUT SHOWHEADER\"\n"
                               "$!THREEDVIEW PSIANGLE = 30\n"
                               "$!INTERNAL \"GETVALUE THREEDVIEW PSIANGLE\"\n"
                               "$!FRAMELAYOUT XYPOS { X = 2 }\n"
                               "$!INTERNAL \"GETVALUE FRAMELAYOUT WIDTH\"\n"
                               "$!GLOBALCONTOUR 1 VAR = 1\n");
    EXPECT_NE(run.log.find("FRAMELAYOUT SHOWHEADER = YES\n"), std::string::npos) << run.log;
    EXPECT_NE(run.log.find("THREEDVIEW PSIANGLE = 30\n"), std::string::npos) << run.log;
    EXPECT_NE(run.log.find("FRAMELAYOUT WIDTH = 9\n"), std::string::npos) << "moving keeps the size\n" << run.log;
    EXPECT_TRUE(HoldsMessage(run.log, "Err: No data set available.")) << run.log;

    struct Case {
        std::string body, message;
    };
    const std::vector<Case> cases = {
        {"$!GLOBALCONTOUR 5 VAR = 1\n", "Invalid value global contour index"},
        {"$!VARSET |G| = \"x\"\n$!GLOBALCONTOUR |G| VAR = 1\n", "Invalid Global Contour number"},
        {"$!THREEDVIEW PSIANGLE = 1000\n", "\"PSIANGLE\" must be between"},
    };
    for (const Case &c : cases) {
        MacroRun bad = RunMacro(s, "$!READDATASET '\"two.dat\"'\n" + c.body + EchoCommand("after"));
        EXPECT_TRUE(HoldsMessage(bad.log, c.message)) << c.body << bad.log;
        EXPECT_TRUE(EchoedLines(bad.log).empty()) << c.body;
    }
}

}  // namespace
