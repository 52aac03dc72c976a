// Macro errors as the launcher reports them in batch mode: each message with the line on which the
// failing command starts and the command as shown (expanded at run time), the call traceback with
// the offset and line of every level whatever layer found the error, and the limits of names,
// expansion, sets and unit suffixes. Values are shown with $!INTERNAL "ECHO ...", which writes its
// expanded text to the batch log.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "e2e/harness.h"

namespace {


// The report of a macro error: message, line and the command as shown.
std::string report(const std::string &message, int line, const std::string &shown) {
    return "Err: " + message + "\n\nError occurred in $! command\nstarting on line " + std::to_string(line) +
           ":\n\n" + shown;
}

// The report of an error found while the command was being read (the raw text is shown).
std::string preReport(const std::string &message, int line, const std::string &text) {
    return "Err: (PreProcessor): " + message + "\n\nError occurred in $! command\nstarting on line " +
           std::to_string(line) + ":\n\nText where error occurred: " + text;
}

// The text holds the report, whatever the wrapping, and the shown command ends where it does.
bool holdsReport(const std::string &text, const std::string &expected) {
    std::string all = Unwrapped(text), want = Unwrapped(expected);
    size_t at = all.find(want);
    return at != std::string::npos && (at + want.size() == all.size() || all[at + want.size()] == ' ');
}

// ---- $!RUNMACROFUNCTION ------------------------------------------------------------------------

const char *kEchoFunction = "$!MACROFUNCTION NAME = \"F\"\n" "$!INTERNAL \"ECHO = |1| |20|\"\n" "$!ENDMACROFUNCTION\n";

TEST(MacroErrorsE2E, CallParameterListsAreChecked) {
    Scratch s;
    std::string twenty, twentyOne;
    for (int n = 1; n <= 21; n++) {
        if (n <= 20) twenty += (n > 1 ? "," : "") + std::to_string(n);
        twentyOne += (n > 1 ? "," : "") + std::to_string(n);
    }
    MacroRun fits = RunMacro(s, std::string(kEchoFunction) + "$!RUNMACROFUNCTION \"F\" (" + twenty + ")\n");
    EXPECT_EQ(EchoedLines(fits.log), (std::vector<std::string>{"1 20"})) << fits.log;

    struct Case {
        std::string body, message, shown;
        int line;
    };
    const Case cases[] = {
        {"$!RUNMACROFUNCTION \"F\" (" + twentyOne + ")\n", "Too many parameters in $!RunMacroFunction command",
         "$!RUNMACROFUNCTION \"F\" (" + twentyOne + ")", 5},
        {"$!RUNMACROFUNCTION \"F\" 3\n", "Parameter List Must Start With \"(\"", "$!RUNMACROFUNCTION \"F\" 3", 5},
        {"$!VARSET |P| = \"x\"\n$!RUNMACROFUNCTION \"F\" |P|\n", "Parameter List Must Start With \"(\"",
         "$!RUNMACROFUNCTION \"F\" x", 6},
        {"$!RUNMACROFUNCTION \"F\" (a,,b)\n", "Invalid Macro Parameter Value", "$!RUNMACROFUNCTION \"F\" (a,,b)", 5},
        {"$!RUNMACROFUNCTION \"F\" ( )\n", "Invalid Macro Parameter Value", "$!RUNMACROFUNCTION \"F\" ( )", 5},
        // Only a value from a variable can leave the list open (the reader insists on the ")").
        {"$!VARSET |P| = \"(a, b\"\n$!RUNMACROFUNCTION \"F\" |P|\n",
         "Missing closing Parenthesis in macro parameter list",
         "$!RUNMACROFUNCTION \"F\" <UNRECOGNIZABLE COMMAND>", 6},
        {"$!RUNMACROFUNCTION 3\n", "Missing or invalid Macro Name", "$!RUNMACROFUNCTION 3", 5},
        {"$!VARSET |N| = 3\n$!RUNMACROFUNCTION |N|\n", "Missing or invalid Macro Name", "$!RUNMACROFUNCTION 3", 6},
        {"$!RUNMACROFUNCTION \"\"\n", "Missing Macro Function Name", "$!RUNMACROFUNCTION \"\"", 5},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, std::string(kEchoFunction) + c.body + EchoCommand("after"));
        EXPECT_TRUE(holdsReport(run.log, report(c.message, c.line, c.shown))) << c.body << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << c.body << run.log;
    }
}

// ---- loading: functions and includes -------------------------------------------------------------

TEST(MacroErrorsE2E, FunctionDefinitionsAreCheckedAtLoad) {
    Scratch s;
    for (const char *key : {"%", "ab", ""}) {
        std::string definition = std::string("$!MACROFUNCTION NAME = \"K\" KEYSTROKE = \"") + key + "\"\n";
        MacroRun run = RunMacro(s, EchoCommand("before") + "$!VARSET |A| = 1\n" + definition + "$!ENDMACROFUNCTION\n");
        std::string shown = std::string("$!MACROFUNCTION\n  NAME \"K\"\n  KEYSTROKE \"") + key + "\"";
        EXPECT_TRUE(holdsReport(run.log, report("Keystroke must be 0-9, a-z, or A-Z", 4, shown)))
            << key << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << "a load error runs nothing";
    }
    for (const char *key : {"z", "Q", "0"}) {
        MacroRun run = RunMacro(s, std::string("$!MACROFUNCTION NAME = \"K\" KEYSTROKE = \"") + key + "\"\n" +
                                       EchoCommand("in K") + "$!ENDMACROFUNCTION\n$!RUNMACROFUNCTION \"K\"\n");
        EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"in K"})) << key << run.log;
    }
    // A second definition of a name (in any case) replaces the first, with a warning.
    MacroRun again = RunMacro(s, "$!MACROFUNCTION NAME = \"Twice\"\n" + EchoCommand("first") + "$!ENDMACROFUNCTION\n" +
                                     "$!MACROFUNCTION NAME = \"TWICE\"\n" + EchoCommand("second") + "$!ENDMACROFUNCTION\n" +
                                     "$!RUNMACROFUNCTION \"twice\"\n");
    EXPECT_TRUE(HoldsMessage(again.log, "Warning: Macro Function named \"TWICE\" has been redefined\n")) << again.log;
    EXPECT_EQ(EchoedLines(again.log), (std::vector<std::string>{"second"})) << again.log;
}

TEST(MacroErrorsE2E, IncludeFilesAreChecked) {
    Scratch s;
    MacroRun number = RunMacro(s, EchoCommand("before") + "$!INCLUDEMACRO 3\n");
    EXPECT_TRUE(holdsReport(number.log, report("Invalid Filename in INCLUDEMACRO Command", 3, "$!INCLUDEMACRO 3")))
        << number.log;
    EXPECT_TRUE(EchoedLines(number.log).empty());

    // Versions 700 to 1100 are read; one outside is refused at the line of the include.
    for (int version : {699, 1101, 600}) {
        s.write("inc.mcr", "#!MC " + std::to_string(version) + "\n" + EchoCommand("included"));
        MacroRun run = RunMacro(s, EchoCommand("before") + "$!VARSET |A| = 1\n$!INCLUDEMACRO \"inc.mcr\"\n");
        EXPECT_TRUE(holdsReport(run.log, report("INCLUDEMACRO file has invalid macro command version", 4,
                                                "$!INCLUDEMACRO \"inc.mcr\"")))
            << version << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << version;
    }
    for (int version : {700, 1100}) {
        s.write("inc.mcr", "#!MC " + std::to_string(version) + "\n" + EchoCommand("included"));
        MacroRun run = RunMacro(s, "$!INCLUDEMACRO \"inc.mcr\"\n");
        EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"included"})) << version << run.log;
    }
}

// ---- start-up files ------------------------------------------------------------------------------

TEST(MacroErrorsE2E, ConfigurationAndQuickMacroFileErrors) {
    Scratch s;
    s.write("orvanex.cfg", "#!MC 1100\n$!VARSET |A| = 1\n$!MACROFUNCTION NAME = \"C\"\n$!ENDMACROFUNCTION\n");
    MacroRun config = RunMacro(s, EchoCommand("main runs"));
    EXPECT_TRUE(holdsReport(config.result.err + config.log,
                            report("Macro function definitions not allowed in configuration file.  Use orvanex.mcr "
                                   "instead.",
                                   3, "$!MACROFUNCTION\n  NAME \"C\"")))
        << config.result.err << config.log;
    EXPECT_EQ(EchoedLines(config.log), (std::vector<std::string>{"main runs"}));

    s.write("orvanex.cfg", "#!MC 1100\n");
    MacroRun missing = RunMacro(s, EchoCommand("main runs"), {"-qm", "nothere.mcr"});
    EXPECT_TRUE(HoldsMessage(missing.log, "Warning: Cannot open quick macro file.")) << missing.log;
    EXPECT_EQ(EchoedLines(missing.log), (std::vector<std::string>{"main runs"}));

    s.write("bad.mcr", "#!MC 1100\n$!MACROFUNCTION NAME = \"Q\"\n$!BOGUS\n$!ENDMACROFUNCTION\n");
    MacroRun bad = RunMacro(s, EchoCommand("main runs"), {"-qm", "bad.mcr"});
    std::string both = bad.result.err + bad.log;
    EXPECT_TRUE(holdsReport(both, preReport("Unknown major command.", 3, "$!BOGUS"))) << both;
    EXPECT_TRUE(HoldsMessage(both, "Warning: Errors detected while processing quick macro file.  Some or all quick "
                                   "macros may not be in effect!"))
        << both;
    EXPECT_EQ(EchoedLines(bad.log), (std::vector<std::string>{"main runs"}));
}

// ---- expansion -----------------------------------------------------------------------------------

TEST(MacroErrorsE2E, ExpansionStopsAtTheCommandLimit) {
    Scratch s;
    // !11|B|" (7 characters; a string stands directly behind its name) and the value twice may not
    // pass 119,999 characters.
    std::string fits(59990, 'x');
    MacroRun ok = RunMacro(s, "$!VARSET |A| = \"" + fits + "\"\n$!VARSET |B| = \"|A||A|\"\n" + EchoCommand("fits"));
    EXPECT_EQ(EchoedLines(ok.log), (std::vector<std::string>{"fits"})) << ok.log.substr(0, 2000);
    std::string over(59997, 'x');
    MacroRun tooLong = RunMacro(s, "$!VARSET |A| = \"" + over + "\"\n$!VARSET |B| = \"|A||A|\"\n" + EchoCommand("never"));
    EXPECT_TRUE(holdsReport(tooLong.log, report("Macro command too large after expanding macro variables.", 3,
                                                "$!VARSET |B| = \"|A||A|\"")))
        << tooLong.log.substr(0, 2000);
    EXPECT_TRUE(EchoedLines(tooLong.log).empty());

    // A value that doubles on every pass runs away and is stopped (2^17 > 119,999).
    MacroRun runaway =
        RunMacro(s, "$!VARSET |A| = \"x\"\n$!LOOP 40\n$!VARSET |A| = \"|A||A|\"\n$!ENDLOOP\n" + EchoCommand("never"));
    EXPECT_TRUE(holdsReport(runaway.log, report("Macro command too large after expanding macro variables.", 4,
                                                "$!VARSET |A| = \"|A||A|\"")))
        << runaway.log.substr(0, 2000);
    EXPECT_TRUE(EchoedLines(runaway.log).empty());
}

TEST(MacroErrorsE2E, LimitsHoldAtTheirEdges) {
    Scratch s;
    // Integer formatting takes values up to 2,147,483,646 either way, and no further.
    MacroRun edge = RunMacro(s, "$!VARSET |A| = 2147483646\n$!VARSET |B| = -2147483646\n" + EchoCommand("|A%d| |B%d|") +
                                    "$!VARSET |A| = 2147483647\n" + EchoCommand("|A%d|"));
    EXPECT_EQ(EchoedLines(edge.log), (std::vector<std::string>{"2147483646 -2147483646"})) << edge.log;
    EXPECT_TRUE(HoldsMessage(edge.log, "Value out of range to apply integer formatting.")) << edge.log;
    // Widths are as wide as asked.
    MacroRun wide = RunMacro(s, "$!VARSET |A| = 7\n$!VARSET |S| = \"ab\"\n" + EchoCommand("|A%600d|") + EchoCommand("|S%-700s|."));
    ASSERT_EQ(EchoedLines(wide.log).size(), 2u) << wide.log.substr(0, 300);
    EXPECT_EQ(EchoedLines(wide.log)[0], std::string(599, ' ') + "7");
    EXPECT_EQ(EchoedLines(wide.log)[1], "ab" + std::string(698, ' ') + ".");
    // A function the file never closes is named with the line that opened it; nothing runs.
    MacroRun open = RunMacro(s, EchoCommand("never") + "$!MACROFUNCTION NAME = \"F\"\n" + EchoCommand("inside"));
    EXPECT_TRUE(HoldsMessage(open.log, "Cannot Find Matching ENDMACROFUNCTION")) << open.log;
    EXPECT_NE(open.log.find("starting on line 3:"), std::string::npos) << open.log;
    EXPECT_TRUE(EchoedLines(open.log).empty());
    // Text copied after the last value counts toward the limit too.
    std::string tail(60000, 'y');
    MacroRun late = RunMacro(s, "$!VARSET |A| = \"" + std::string(60000, 'x') + "\"\n$!VARSET |B| = \"|A|" + tail +
                                    "\"\n" + EchoCommand("never"));
    EXPECT_TRUE(HoldsMessage(late.log, "Macro command too large after expanding macro variables.")) << late.log.substr(0, 500);
    EXPECT_TRUE(EchoedLines(late.log).empty());
}

TEST(MacroErrorsE2E, FormatAndIntrinsicErrors) {
    Scratch s;
    s.setEnv("ORVANEX_TEST_PRESENT", "here");
    s.unsetEnv("ORVANEX_TEST_ABSENT");
    struct Case {
        std::string body, message, shown;
    };
    const Case cases[] = {
        {"$!VARSET |A| = 5\n$!INTERNAL \"ECHO |A%|\"\n",
         "Special macro variable formatting must include a format type character.", "$!INTERNAL \"ECHO |A%|\""},
        {"$!VARSET |A| = 3E9\n$!INTERNAL \"ECHO |A%d|\"\n", "Value out of range to apply integer formatting.",
         "$!INTERNAL \"ECHO |A%d|\""},
        {"$!VARSET |A| = -3E9\n$!INTERNAL \"ECHO |A%5d|\"\n", "Value out of range to apply integer formatting.",
         "$!INTERNAL \"ECHO |A%5d|\""},
        {"$!VARSET |A| = \"abc\"\n$!INTERNAL \"ECHO |A%5|\"\n", "Invalid format specified for string formatting.",
         "$!INTERNAL \"ECHO |A%5|\""},
        {"$!VARSET |A| = \"abc\"\n$!INTERNAL \"ECHO |A%3d|\"\n", "Invalid format specified for value formatting.",
         "$!INTERNAL \"ECHO |A%3d|\""},
        {"$!VARSET |A| = 1\n$!VARSET |B| = |$ORVANEX_TEST_ABSENT|\n",
         "Environment variable, ORVANEX_TEST_ABSENT, does not exist.", "$!VARSET |B| = |$ORVANEX_TEST_ABSENT|"},
        {"$!VARSET |A| = 1\n$!INTERNAL \"ECHO |$ORVANEX_TEST_PRESENT[1]|\"\n",
         "Invalid character following environment variable, ORVANEX_TEST_PRESENT.",
         "$!INTERNAL \"ECHO |$ORVANEX_TEST_PRESENT[1]|\""},
        {"$!VARSET |A| = 1\n$!VARSET |B| = |NUMZONES[1]|\n", "Invalid character following NUMZONES.",
         "$!VARSET |B| = |NUMZONES[1]|"},
        {"$!VARSET |A| = 1\n$!VARSET |B| = |NUMZONES|\n", "NUMZONES requires a data set.", "$!VARSET |B| = |NUMZONES|"},
        {"$!VARSET |A| = 1\n$!VARSET |B| = |NUMVARS|\n", "NUMVARS requires a data set.", "$!VARSET |B| = |NUMVARS|"},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, c.body + EchoCommand("never"));
        EXPECT_TRUE(holdsReport(run.log, report(c.message, 3, c.shown))) << c.body << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << c.body;
    }
    // The same references done right.
    MacroRun good = RunMacro(s, "$!VARSET |A| = 2.6\n" + EchoCommand("|A%d| |A%5.1f| |$ORVANEX_TEST_PRESENT| |A:=1|"));
    EXPECT_EQ(EchoedLines(good.log), (std::vector<std::string>{"3   2.6 here 2.6"})) << good.log;
}

// ---- variable names --------------------------------------------------------------------------

TEST(MacroErrorsE2E, VariableNamesHoldThirtyCharacters) {
    Scratch s;
    std::string thirty = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_234";
    ASSERT_EQ(thirty.size(), 30u);
    MacroRun ok = RunMacro(s, "$!VARSET |" + thirty + "| = 7\n" + EchoCommand("|" + thirty + "|") + "$!REMOVEVAR |" +
                                  thirty + "|\n" + EchoCommand("|" + thirty + ":=gone|"));
    EXPECT_EQ(EchoedLines(ok.log), (std::vector<std::string>{"7", "gone"})) << ok.log;
    std::string thirtyOne = thirty + "5";
    MacroRun tooLong = RunMacro(s, EchoCommand("before") + "$!VARSET |" + thirtyOne + "| = 7\n");
    EXPECT_TRUE(
        holdsReport(tooLong.log, preReport("Macro Variable Name Too Long", 3, "$!VARSET |" + thirtyOne + "| = 7")))
        << tooLong.log;
    EXPECT_TRUE(EchoedLines(tooLong.log).empty()) << "a load error runs nothing";
}

// ---- run-time errors show the expanded command --------------------------------------------------

TEST(MacroErrorsE2E, ControlErrorsShowTheExpandedCommand) {
    Scratch s;
    struct Case {
        std::string body, message, shown;
    };
    const Case cases[] = {
        {"$!VARSET |N| = \"abc\"\n$!LOOP |N|\n$!ENDLOOP\n", "Bad Loop", "$!LOOP abc"},
        {"$!VARSET |N| = 2.5\n$!LOOP |N|\n$!ENDLOOP\n", "Bad Loop", "$!LOOP 2.5"},
        {"$!VARSET |N| = \"abc\"\n$!IF |N| == 1\n$!ENDIF\n", "Invalid conditional expression.", "$!IF abc == 1"},
        {"$!VARSET |N| = 4\n$!WHILE |N| < 5 6\n$!ENDWHILE\n", "Invalid conditional expression.", "$!WHILE 4 < 5 6"},
        {"$!VARSET |N| = 0\n$!VARSET |A| /= |N|\n", "Overflow or Underflow", "$!VARSET |A| /= 0"},
    };
    for (const Case &c : cases) {
        MacroRun run = RunMacro(s, c.body + EchoCommand("never"));
        EXPECT_TRUE(holdsReport(run.log, report(c.message, 3, c.shown))) << c.body << run.log;
        EXPECT_TRUE(EchoedLines(run.log).empty()) << c.body;
    }
}

// ---- the call traceback ----------------------------------------------------------------------

// Every layer that finds an error (the interpreter, the expansion of variables, an expression, the
// scanners, an action's handler) names the offset and line of the failing command in the innermost
// level; the outer levels name the calls that led there.
TEST(MacroErrorsE2E, CallTracebackNamesOffsetsAndLines) {
    Scratch s;
    struct Case {
        std::string failing, next, message, shown;
    };
    const Case cases[] = {
        {"$!LOOP |S|", "$!ENDLOOP", "Bad Loop", "$!LOOP abc"},
        {"$!VARSET |R| = |UNDEFINED|", "$!VARSET |Q| = 4", "Invalid or undefined macro variable.",
         "$!VARSET |R| = |UNDEFINED|"},
        {"$!VARSET |R| = (1/0)", "$!VARSET |Q| = 4", "Invalid assignment for R.\nExpecting a non-zero denominator.",
         "$!VARSET |R| = (1/0)"},
        {"$!VARSET |R| = |S|", "$!VARSET |Q| = 4", "Invalid assignment for R.", "$!VARSET |R| = abc"},
        {"$!INTERNAL \"NOT A WORD\"", "$!VARSET |Q| = 4", "Unknown $!INTERNAL command.", "$!INTERNAL \"NOT A WORD\""},
    };
    for (const Case &c : cases) {
        // Line 2 onwards; the failing command is the third of Inner (line 7), which Outer calls as
        // its second command (line 12), which the main macro calls as its fourth (line 16).
        MacroRun run = RunMacro(s, "$!VARSET |S| = \"abc\"\n"               // 2
                                   "$!MACROFUNCTION NAME = \"Inner\"\n"     // 3
                                   "  $!VARSET |Q| = 1\n"                   // 4
                                   "  $!VARSET |Q| = 2\n"                   // 5
                                   "  # a comment line counts as a line\n"  // 6
                                   "  " + c.failing + "\n"                  // 7
                                   "  " + c.next + "\n"                     // 8
                                   "$!ENDMACROFUNCTION\n"                   // 9
                                   "$!MACROFUNCTION NAME = \"Outer\"\n"     // 10
                                   "  $!VARSET |Q| = 3\n"                   // 11
                                   "  $!RUNMACROFUNCTION \"Inner\" (a, \"b c\")\n"  // 12
                                   "$!ENDMACROFUNCTION\n"                   // 13
                                   "$!VARSET |T| = 1\n"                     // 14
                                   "$!VARSET |T| = 2\n"                     // 15
                                   "$!RUNMACROFUNCTION \"Outer\" (1, 'two')\n" +  // 16
                                       EchoCommand("never"));
        EXPECT_TRUE(holdsReport(run.log, report(c.message, 7, c.shown))) << c.failing << run.log;
        std::vector<std::string> lines = Lines(run.log);
        auto at = std::find(lines.begin(), lines.end(), "Call Traceback:");
        ASSERT_NE(at, lines.end()) << c.failing << run.log;
        ASSERT_GE(lines.end() - at, 5) << run.log;
        EXPECT_EQ(at[1], "Level Offset Line Function");
        EXPECT_EQ(at[2], "2       3          7      Inner (a,b c)") << c.failing;
        EXPECT_EQ(at[3], "1       2          12     Outer (1,two)") << c.failing;
        EXPECT_EQ(at[4], "0       4          16     MAIN") << c.failing;
        EXPECT_TRUE(EchoedLines(run.log).empty());
    }
}

// ---- values ----------------------------------------------------------------------------------

TEST(MacroErrorsE2E, UnitSuffixesInVarset) {
    Scratch s;
    MacroRun run = RunMacro(s, "$!VARSET |A| = 2.54 CM\n$!VARSET |B| = 36PT\n$!VARSET |C| = 3 in\n"
                               "$!VARSET |D| = 2 PI\n$!VARSET |E| = (1+1.54) cm\n" +
                                   EchoCommand("|A| |B| |C| |D| |E|"));
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"1 0.5 3 2 1"})) << run.log;
    for (const char *op : {"+=", "-=", "*=", "/="}) {
        MacroRun refused = RunMacro(s, "$!VARSET |A| = 2\n$!VARSET |A| " + std::string(op) + " 3 CM\n" + EchoCommand("never"));
        EXPECT_TRUE(holdsReport(refused.log, report("Not allowed to use suffix if assignment is not simple =", 3,
                                                    "$!VARSET |A| " + std::string(op) + " 3CM")))
            << op << refused.log;
        EXPECT_TRUE(EchoedLines(refused.log).empty());
    }
}

TEST(MacroErrorsE2E, HugeSetsAreRefusedAtOnce) {
    Scratch s;
    s.write("xyp.dat", "VARIABLES = X Y P\nZONE I=1\n7 8 9\n");
    auto start = std::chrono::steady_clock::now();
    MacroRun run = RunMacro(s, "$!READDATASET '\"xyp.dat\"'\n$!ACTIVEFIELDZONES = [1-16777216]\n" + EchoCommand("largest") +
                                   "$!ACTIVEFIELDZONES = [1-2000000000]\n" + EchoCommand("never"));
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 20.0);
    EXPECT_EQ(EchoedLines(run.log), (std::vector<std::string>{"largest"})) << run.log;
    EXPECT_TRUE(holdsReport(run.log, report("Invalid SET specifi" "cation.\nSet member 2000000000 is above the largest "
                                            "allowed, 16777216.",
                                            5, "$!ACTIVEFIELDZONES = [1-2000000000]")))
        << run.log;
}

}  // namespace
