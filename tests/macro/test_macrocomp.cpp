// Compressed macro commands: reading commands from a stream (continuation lines, comments,
// compressed lines, raw data sections, line ends), compressing every kind of token with its
// errors, the compressed form of the worked examples, uncompressing and dumping, the scanners the
// command parsers use, numbers with unit suffixes, the raw data parsers and the error reporter.
// A generated test takes every action command of the vocabulary with its positional form and each
// option it accepts through compress -> uncompress -> compress.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/kernel/alloc.h"
#include "base/macro/macrocomp.h"
#include "base/macro/macrostate.h"
#include "base/macro/vocab.h"
#include "macro/message_capture.h"

namespace {

std::vector<std::string> &messages = CapturedMessages;

class MacroComp : public MessageCaptureTest {
  protected:
    void SetUp() override {
        MessageCaptureTest::SetUp();
        saved = GeneralBase;
        MacroCallStack.clear();
    }
    void TearDown() override {
        MessageCaptureTest::TearDown();
        GeneralBase = saved;
        MacroCallStack.clear();
    }
    GeneralBase_s saved;
};

// The message of the one error reported (the part before the context the reporter adds).
std::string OnlyError() {
    EXPECT_EQ(messages.size(), 1u);
    if (messages.empty()) return "(no message)";
    std::string text = messages.back();
    const std::string preprocessor = "(PreProcessor): ";
    if (text.compare(0, preprocessor.size(), preprocessor) == 0) text.erase(0, preprocessor.size());
    size_t end = text.find("\n\nError occurred in $! command");
    return end == std::string::npos ? text : text.substr(0, end);
}

// Compresses a command given as one text.
std::string Compress(const char *text) {
    std::string command = "(failed)";
    if (!GetNextCompressedCommand(nullptr, text, &command, nullptr, nullptr, nullptr)) return "(failed)";
    return command;
}

// The error of compressing `text`.
std::string CompressError(const char *text) {
    messages.clear();
    std::string command;
    EXPECT_FALSE(GetNextCompressedCommand(nullptr, text, &command, nullptr, nullptr, nullptr)) << text;
    return OnlyError();
}

struct Read {
    std::string command;
    std::string rawData;
    bool hasRawData = false;
    int firstLine = 0;
};

// All commands of a stream made of `text` (which may hold NUL bytes); *ok says whether the reading
// went to the end without an error.
std::vector<Read> ReadAll(const std::string &text, bool *ok = nullptr, bool takeRawData = true) {
    std::vector<Read> result;
    std::string buffer = text;
    FILE *stream = fmemopen(buffer.data(), buffer.size(), "r");
    EXPECT_NE(stream, nullptr);
    int line = 0;
    bool allOk = true;
    for (int guard = 0; guard < 1000; ++guard) {
        Read read;
        char *rawData = nullptr;
        if (!GetNextCompressedCommand(stream, nullptr, &read.command, takeRawData ? &rawData : nullptr, &line,
                                      &read.firstLine)) {
            allOk = false;
            break;
        }
        if (read.command.empty()) break;
        if (rawData != nullptr) {
            read.rawData = rawData;
            read.hasRawData = true;
            DeallocRawMacroData(&rawData);
        }
        result.push_back(read);
    }
    fclose(stream);
    if (ok != nullptr) *ok = allOk;
    return result;
}

std::string Uncompress(const char *command, bool multiLine = true, const char *prefix = "") {
    std::string text;
    EXPECT_TRUE(UncompressMacroCommand(command, &text, MaxMacroCommandLength, prefix, multiLine)) << command;
    return text;
}

int Row(const char *name) {
    MacroToken_e token = MacroToken_String;
    int index = -1;
    EXPECT_TRUE(IdentifyMacroCommandString(name, &token, &index)) << name;
    EXPECT_EQ(token, MacroToken_SetValue) << name;
    return index;
}

std::string At(const char *name) { return "@" + std::to_string(Row(name)); }

}  // namespace

// ---- the worked examples: the compressed form is the file format ----

TEST_F(MacroComp, WorkedExamplesCompressByteForByte) {
    EXPECT_EQ(Compress("$!FIELD [1-3] MESH { SHOW = YES }"), "@509[1-3]@198{@158=1}");
    EXPECT_EQ(Compress("$!VIEW FIT"), "$17 0");
    EXPECT_EQ(Compress("$!VARSET |A| = 3"), "!11|A|=3");
    EXPECT_TRUE(messages.empty());
}

TEST_F(MacroComp, EveryTokenClassCompresses) {
    EXPECT_EQ(Compress("$!VARSET |A| += 2"), "!11|A|+=2");
    EXPECT_EQ(Compress("$!VARSET |A| -= 2"), "!11|A|-=2");
    EXPECT_EQ(Compress("$!VARSET |A| *= 2"), "!11|A|*=2");
    EXPECT_EQ(Compress("$!VARSET |A| /= 2"), "!11|A|/=2");
    EXPECT_EQ(Compress("$!VARSET |A| = -|B|"), "!11|A|=-|B|");       // a minus alone
    EXPECT_EQ(Compress("$!VARSET |A| = -2.5e3"), "!11|A|=-2.5e3");   // a signed number as written
    EXPECT_EQ(Compress("$!VARSET |A| = (|B| + 1) "), "!11|A|=(|B| + 1)");
    EXPECT_EQ(Compress("$!VARSET |A| = \"text\""), "!11|A|\"text\"");  // the = before a string goes
    EXPECT_EQ(Compress("$!VARSET |A| = 'it''s'"), "!11|A|'it''s'");
    EXPECT_EQ(Compress("$!IF |A| == 3"), "!6|A|==3");
    EXPECT_EQ(Compress("$!IF \"|A|\" == \"abc\""), "!6\"|A|\"==\"abc\"");  // == before a string stays
    EXPECT_EQ(Compress("$!IF |A| != 3"), "!6|A|!=3");
    EXPECT_EQ(Compress("$!IF |A| <> 3"), "!6|A|<>3");
    EXPECT_EQ(Compress("$!WHILE |A| <= 3"), "!13|A|<=3");
    EXPECT_EQ(Compress("$!WHILE |A| >= 3"), "!13|A|>=3");
    EXPECT_EQ(Compress("$!WHILE |A| < 3"), "!13|A|<3");
    EXPECT_EQ(Compress("$!WHILE |A| > 3"), "!13|A|>3");
    EXPECT_EQ(Compress("$!ENDWHILE"), "!5");
    EXPECT_EQ(Compress("$!LOOP 5"), "!8 5");  // a blank keeps 8 and 5 apart
    EXPECT_EQ(Compress("$!DELAY .5"), "$80 .5");
    EXPECT_EQ(Compress("$!DELETEZONES [ 1, 3 - 5 , 7-20:2 |N| ]"), "$22[1,3-5,7-20:2,|N|]");
    EXPECT_EQ(Compress("$!DELETEZONES [|A|-|B|:|C|]"), "$22[|A|-|B|:|C|]");
    EXPECT_EQ(Compress("$!DELETEZONES []"), "$22[]");
    EXPECT_EQ(Compress("$!FRAMELAYOUT.XYPOS { X = 1 }"), "@" + std::to_string(Row("FRAMELAYOUT")) + At("XYPOS") +
                                                            "{" + At("X") + "=1}");  // a point separates
    EXPECT_EQ(Compress("$!PLOTTYPE = CARTESIAN3D"), "@505=1");
    EXPECT_EQ(Compress("$!FRAMENAME = \"Frame 1\""), "@506\"Frame 1\"");
    EXPECT_EQ(Compress("$!ACTIVEFIELDZONES += [4]"), "@507+=[4]");
}

TEST_F(MacroComp, NumbersKeepTheirTextAndUnitSuffix) {
    std::string x = At("X");
    std::string head = "$15" + At("XYPOS") + "{" + x;
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = 3 cm }"), head + "=3CM}");
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = 3in }"), head + "=3IN}");
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = 3 Pt }"), head + "=3PT}");
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = 3PIX }"), head + "=3PIX}");
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = 3 pi }"), head + "=3PI}");
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = (1+2) CM }"), head + "=(1+2)CM}");
    EXPECT_EQ(Compress("$!ATTACHTEXT XYPOS { X = 1.5D2 }"), head + "=1.5D2}");
}

TEST_F(MacroComp, CommandNamesIgnoreCaseButAreNotAbbreviated) {
    EXPECT_EQ(Compress("$!field [1-3] mesh { show = yes }"), "@509[1-3]@198{@158=1}");
    EXPECT_EQ(Compress("$!FiElD [1-3] MeSh { ShOw = YeS }"), "@509[1-3]@198{@158=1}");
    EXPECT_EQ(CompressError("$!FIEL [1-3]"), "Unknown major command.");
    EXPECT_EQ(CompressError("$!FIELD [1] MES {SHOW = YES}"), "Invalid macro command option.");
}

TEST_F(MacroComp, GroupNumbersAreInserted) {
    std::string var = At("VAR");
    EXPECT_EQ(Compress("$!GLOBALCONTOUR VAR = 3"), "@525 1" + var + "=3");
    EXPECT_EQ(Compress("$!GLOBALCONTOUR 2 VAR = 3"), "@525 2" + var + "=3");
    EXPECT_EQ(Compress("$!GLOBALCONTOUR |G| VAR = 3"), "@525 |G|" + var + "=3");
    EXPECT_EQ(Compress("$!GLOBALISOSURFACE SHOW = NO"), "@535 1@158=0");
    EXPECT_EQ(Compress("$!ISOSURFACEATTRIBUTES 3 SHOW = NO"), "@536 3@158=0");
    EXPECT_EQ(Compress("$!GLOBALSLICE SHOW = NO"), "@537 1@158=0");
    EXPECT_EQ(Compress("$!SLICEATTRIBUTES 2 SHOW = NO"), "@538 2@158=0");
    EXPECT_EQ(Compress("$!GLOBALCOLORMAP CONTOURCOLORMAP = MODERN"), "@1371 1" + At("CONTOURCOLORMAP") + "=2");
    // Numbered parents: the number, then the block.
    std::string cp = At("CONTROLPOINT");
    EXPECT_EQ(Compress("$!GLOBALCOLORMAP 2 USERDEFINED { CONTROLPOINT 3 { COLORMAPFRACTION = 0.5 } }"),
              "@1371 2" + At("USERDEFINED") + "{" + cp + " 3{" + At("COLORMAPFRACTION") + "=0.5}}");
    EXPECT_EQ(Compress("$!GLOBALCONTOUR COLORMAPFILTER { COLORMAPOVERRIDE { SHOW = YES } }"),
              "@525 1" + At("COLORMAPFILTER") + "{@233 1{@158=1}}");
    EXPECT_EQ(Compress("$!BLANKING VALUE { CONSTRAINT 2 { INCLUDE = YES } }"),
              At("BLANKING") + At("VALUE") + "{@305 2{" + At("INCLUDE") + "=1}}");
    // XDETAIL takes a number directly below XYAXIS and XYLINEAXIS only.
    EXPECT_EQ(Compress("$!XYLINEAXIS XDETAIL 2 { SHOWAXIS = NO }"), "@399@374 2{" + At("SHOWAXIS") + "=0}");
    EXPECT_EQ(Compress("$!XYAXIS YDETAIL { SHOWAXIS = NO }"), "@398@375 1{" + At("SHOWAXIS") + "=0}");
    EXPECT_EQ(Compress("$!THREEDAXIS XDETAIL { SHOWAXIS = NO }"), At("THREEDAXIS") + "@374{" + At("SHOWAXIS") + "=0}");
}

TEST_F(MacroComp, ColorMapControlWritesTheGroupBehindTheOperation) {
    EXPECT_EQ(Compress("$!COLORMAPCONTROL REDISTRIBUTECONTROLPOINTS"), "$41 0 1 ");
    EXPECT_EQ(Compress("$!COLORMAPCONTROL 3 COPYSTANDARD CONTOURCOLORMAP = MODERN"),
              "$41 1 3 " + At("CONTOURCOLORMAP") + "=2");
    EXPECT_EQ(Compress("$!COLORMAPCONTROL |G| |OP|"), "$41 |OP| |G| ");
    EXPECT_EQ(Compress("$!COLORMAPCONTROL |OP|"), "$41 |OP| 1 ");
    EXPECT_EQ(Uncompress("$41 1 3 "), "$!COLORMAPCONTROL 3 COPYSTANDARD");
    EXPECT_EQ(Uncompress("$41 |OP| |G| "), "$!COLORMAPCONTROL |G| |OP|");
}

TEST_F(MacroComp, OlderOptionWordsAreDropped) {
    EXPECT_EQ(Compress("$!VIEW VIEWOP = FIT"), "$17 0");
    EXPECT_EQ(Compress("$!CONTOURLEVELS LEVELOP = RESET"), "$40 3");
    EXPECT_EQ(Compress("$!CONTOURLABELS LABELOP = DELETEALL"), Compress("$!CONTOURLABELS DELETEALL"));
    EXPECT_EQ(Compress("$!STREAMTRACE STREAMOP = DELETEALL"), "$42 1");
    EXPECT_EQ(Compress("$!COLORMAPCONTROL COLORMAPCONTROLOP = RESETTOFACTORY"), "$41 2 1 ");
    EXPECT_EQ(Compress("$!SETSTYLEBASE STYLEBASE = CONFIG"), "$44 1");
    // The search is exact: lower case is not the old syntax.
    EXPECT_EQ(CompressError("$!VIEW viewop = FIT").substr(0, 18), "Expecting One of: ");
}

TEST_F(MacroComp, EnumeratedValuesAreNamesOrVariables) {
    // A variable stays for the run.
    EXPECT_EQ(Compress("$!FIELD MESH { SHOW = |S| }"), "@509@198{@158=|S|}");
    EXPECT_EQ(Compress("$!VIEW |V|"), "$17 |V|");
    // A number in the text is refused at load.
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW = 1 }").substr(0, 18), "Expecting One of: ");
    // Through a variable it is checked when the command runs.
    int value = -1;
    const char *expanded = "1";
    EXPECT_TRUE(ScanCompressedForEnumValue(&expanded, 1, "@158=1", Row("SHOW"), &value));
    EXPECT_EQ(value, 1);
    const char *word = "no";
    EXPECT_TRUE(ScanCompressedForEnumValue(&word, 1, "@158=no", Row("SHOW"), &value));
    EXPECT_EQ(value, 0);
    messages.clear();
    const char *outOfSet = "7";
    EXPECT_FALSE(ScanCompressedForEnumValue(&outOfSet, 1, "@158=7", Row("SHOW"), &value));
    EXPECT_EQ(OnlyError(), "Expecting an enumerated value.");
    messages.clear();
    const char *unknownWord = "MAYBE";
    EXPECT_FALSE(ScanCompressedForEnumValue(&unknownWord, 1, "@158=MAYBE", Row("SHOW"), &value));
    EXPECT_EQ(OnlyError(), "Expecting an enumerated value.");
    // Negative values of a set.
    const char *multi = "-1";
    EXPECT_TRUE(ScanCompressedForEnumValue(&multi, 1, "", Row("COLOR"), &value));
    EXPECT_EQ(value, -1);
}

TEST_F(MacroComp, ViewWithAWordNotInItsSetListsTheNames) {
    // The names of set 171 in table order, each on its own line behind twelve blanks, cut at 349.
    const char *names[] = {"FIT",       "NICEFIT",  "DATAFIT", "AXISFIT", "SETMAGNIFICATION", "SETMAGNIFICATION",
                           "CENTER",    "TRANSLATE", "ZOOM",   "LAST",    "COPY",             "PASTE",
                           "PUSH",      "RESETTOENTIRECIRCLE", "AXISNICEFIT", "MAKECURRENTVIEWNICE",
                           "AXISMAKECURRENTVALUESNICE"};
    std::string expected = "Expecting One of: ";
    for (const char *name : names) expected += std::string("\n            ") + name;
    ASSERT_GT(expected.size(), 349u);
    expected.resize(349);
    EXPECT_EQ(CompressError("$!VIEW NOTAVIEW"), expected);
    EXPECT_EQ(CompressError("$!VIEW 3"), expected);
    // The whole report: the message, the line and the text of the line.
    messages.clear();
    std::string command;
    int line = 6;
    GetNextCompressedCommand(nullptr, "$!VIEW NOTAVIEW", &command, nullptr, &line, nullptr);
    ASSERT_EQ(messages.size(), 1u);
    std::string full = "(PreProcessor): " + expected + "\n\nError occurred in $! command\nstarting on line 7:\n\n";
    EXPECT_EQ(messages[0], full + (full.size() + 42 < 470 ? "Text where error occurred: $!VIEW NOTAVIEW" : ""));
}

TEST_F(MacroComp, EveryCompressorMessage) {
    EXPECT_EQ(CompressError("$!VARSET |A| = ?"), "Invalid Value or Identifier");
    EXPECT_EQ(CompressError("$!VARSET |A| = !"), "Invalid Value or Identifier");
    EXPECT_EQ(CompressError("$!VARSET |A| = 1e400"), "Invalid Value or Identifier");
    EXPECT_EQ(CompressError("$VIEW FIT"), "Major commands expect the '$!' prefix.");
    EXPECT_EQ(CompressError("$!NOSUCHCOMMAND"), "Unknown major command.");
    EXPECT_EQ(CompressError("$!"), "Unknown major command.");
    EXPECT_EQ(CompressError("$!FIELD NOSUCHOPTION"), "Invalid macro command option.");
    EXPECT_EQ(CompressError("$!REDRAW VIEW"),
              "Attempting to use a major command as a sub-option (command is probably missing the '$!' prefix).");
    EXPECT_EQ(CompressError("$!REDRAW VARSET"),
              "Attempting to use a major command as a sub-option (command is probably missing the '$!' prefix).");
    EXPECT_EQ(CompressError("$!MESH"), "Attempting to use a sub-option as a major command.");
    EXPECT_EQ(CompressError("$!REDRAW FIELD"), "Attempting to use a major command as a sub-option.");
    EXPECT_EQ(CompressError("MESH { SHOW = YES }"), "Macro Must Start With a Major Command");
    EXPECT_EQ(CompressError("{"), "Macro Must Start With a Major Command");
    EXPECT_EQ(CompressError("3"), "Macro Must Start With a Major Command");
    EXPECT_EQ(CompressError("$!REDRAW $!REDRAW"), "Macro Commands Must Start On a New Line");
    EXPECT_EQ(CompressError("$!FIELD MESH SHOW = YES"), "Expecting Start of sub-command");
    EXPECT_EQ(CompressError("$!FIELD MESH.SHOW = YES"), "Expecting Start of sub-command");
    EXPECT_EQ(CompressError("$!FIELD MESH }"), "Expecting Start of sub-command");
    EXPECT_EQ(CompressError("$!FIELD { SHOW = YES }"), "Unexpected sub-command starting brace");
    EXPECT_EQ(CompressError("$!FIELD MESH { { SHOW = YES } }"), "Unexpected sub-command starting brace");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW = YES } }"), "Unexpected sub-command close");
    EXPECT_EQ(CompressError("$!FIELD MESH, SHOW { }"), "Expecting A Macro Sub-command Parent option");
    EXPECT_EQ(CompressError("$!FIELD MESH, { }"), "Expecting A Macro Sub-command Parent option");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW YES }"), "Expecting = ");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW == YES }"), "Expecting = ");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW }"), "Expecting = ");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW += YES }"), "Only allowed to use = Assignment with this statement");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW -= YES }"), "Only allowed to use = Assignment with this statement");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW *= YES }"), "Only allowed to use = Assignment with this statement");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW /= YES }"), "Only allowed to use = Assignment with this statement");
    EXPECT_EQ(CompressError("$!FIELD MESH { SHOW = MAYBE }").substr(0, 25), "Expecting One of: \n      ");
    EXPECT_EQ(CompressError("$!PAUSE \"unterminated"), "Invalid String");
    EXPECT_EQ(CompressError("$!PAUSE \"escaped at the end\\\""), "Invalid String");
    EXPECT_EQ(CompressError("$!VARSET |ABCDEFGHIJKLMNOPQRSTUVWXYZ12345| = 1"), "Macro Variable Name Too Long");
    EXPECT_EQ(Compress("$!VARSET |ABCDEFGHIJKLMNOPQRSTUVWXYZ1234| = 1"), "!11|ABCDEFGHIJKLMNOPQRSTUVWXYZ1234|=1");
    EXPECT_EQ(CompressError("$!VARSET |A = 3"), "Cannot find closing \"|\" for macro variable");
    EXPECT_EQ(CompressError("$!DELETEZONES [1,2"), "Missing ']'");
    EXPECT_EQ(CompressError("$!DELETEZONES [1-"), "Missing ']'");
    EXPECT_EQ(CompressError("$!DELETEZONES [1.5]"), "Invalid Integer Value");
    EXPECT_EQ(CompressError("$!DELETEZONES [a]"), "Invalid Integer Value");
    EXPECT_EQ(CompressError("$!DELETEZONES [-1]"), "Invalid Integer Value");
    EXPECT_EQ(CompressError("$!VARSET |A| = (1+(2)"), "Missing ')'");
    EXPECT_EQ(CompressError("$!RUNMACROFUNCTION \"F\" (\"a)\""), "Missing ')'");
    EXPECT_EQ(CompressError("$!RAWCOLORMAP RAWDATA"),
              "Commands using RAW DATA currently not supported via ACTION_EXECUTEMACROCOMMAND");
    EXPECT_EQ(CompressError("$!RAWCOLORMAP @1033"), "Invalid Value or Identifier");
}

TEST_F(MacroComp, StringLimits) {
    // $2 and the quoted string fill the command buffer exactly.
    std::string longest = "$!READDATASET \"" + std::string(MaxMacroStringLength, 'x') + "\"";
    std::string compressed = Compress(longest.c_str());
    EXPECT_EQ(compressed.size(), 2 + 2 + static_cast<size_t>(MaxMacroStringLength));
    EXPECT_EQ(compressed.size(), static_cast<size_t>(MaxMacroCommandLength));
    std::string tooLong = "$!PAUSE \"" + std::string(119996, 'x') + "\"";
    EXPECT_EQ(CompressError(tooLong.c_str()), "String too long");
}

TEST_F(MacroComp, CommandLengthLimit) {
    // Two strings on two lines: $79 and 100,002 characters, then 19,996 more pass 119,999.
    std::string text = "$!PAUSE \"" + std::string(100000, 'a') + "\"\n  \"" + std::string(19994, 'b') + "\"";
    EXPECT_EQ(CompressError(text.c_str()), "Macro Command too long");
    std::string fits = "$!PAUSE \"" + std::string(100000, 'a') + "\"\n  \"" + std::string(19992, 'b') + "\"";
    EXPECT_EQ(Compress(fits.c_str()).size(), static_cast<size_t>(MaxMacroCommandLength));
}

TEST_F(MacroComp, StringsAndEscapesStandAsWritten) {
    EXPECT_EQ(Compress("$!PAUSE \"say \\\"hi\\\" \\\\ done\""), "$79\"say \\\"hi\\\" \\\\ done\"");
    EXPECT_EQ(Compress("$!PAUSE 'a # is text here'  # but a comment here"), "$79'a # is text here'");
    EXPECT_EQ(Compress("$!READDATASET '\"a b.dat\" \"c.dat\"'"), "$2'\"a b.dat\" \"c.dat\"'");
    // The parameter list of a call: a parenthesis in a string does not close it.
    EXPECT_EQ(Compress("$!RUNMACROFUNCTION \"F\" (1, \"a)b\", 'c')"), "!10\"F\"(1, \"a)b\", 'c')");
    // Elsewhere a parenthesis is an expression and strings are not special in it.
    EXPECT_EQ(Compress("$!VARSET |A| = (\")\")"), "(failed)");
}

TEST_F(MacroComp, ACommentBehindANumberEndsAtTheNumber) {
    EXPECT_EQ(Compress("$!VARSET |A| = 3#note"), "!11|A|=3");
    EXPECT_EQ(Compress("$!VARSET |A| = 3 # note"), "!11|A|=3");
    EXPECT_EQ(Compress("$!FIELD MESH#note"), "@509@198");
}

// ---- reading a stream ----

TEST_F(MacroComp, BlankAndCommentLinesDoNotEndACommandButADollarDoes) {
    bool ok = false;
    auto commands = ReadAll("$!FIELD [1]\n\n# a comment line\n   \t\n  MESH\n  {SHOW = YES}\n$!REDRAW\n", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].command, "@509[1]@198{@158=1}");
    EXPECT_EQ(commands[0].firstLine, 1);
    EXPECT_EQ(commands[1].command, "$0");
    EXPECT_EQ(commands[1].firstLine, 7);
    // A $ in the leading blanks of a line starts the next command.
    commands = ReadAll("$!VARSET |A| = 1\n     $!VARSET |B| = 2\n", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[1].command, "!11|B|=2");
    EXPECT_EQ(commands[1].firstLine, 2);
}

TEST_F(MacroComp, AtOrBangInTheFirstColumnEndsACommand) {
    bool ok = false;
    auto commands = ReadAll("$!REDRAW\n@509[1]@198{@158=1}\n!11|A|=3\n$!QUIT\n", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 4u);
    EXPECT_EQ(commands[0].command, "$0");
    EXPECT_EQ(commands[1].command, "@509[1]@198{@158=1}");  // taken as it stands
    EXPECT_EQ(commands[2].command, "!11|A|=3");
    EXPECT_EQ(commands[3].command, "$111");
    EXPECT_EQ(commands[3].firstLine, 4);
    // Later on a line the same characters continue the command, and do not compress.
    messages.clear();
    ReadAll("$!REDRAW\n  @509\n", &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Invalid Value or Identifier");
    messages.clear();
    ReadAll("$!REDRAW\n  !11|A|=3\n", &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Invalid Value or Identifier");
}

TEST_F(MacroComp, LineEndsAndTheEndOfTheInput) {
    bool ok = false;
    auto commands = ReadAll("$!VARSET |A| = 1\r\n$!VARSET |B| = 2\r\r\n\r\n$!VARSET |C| = 3\r$!VARSET |D| = 4", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 4u);
    EXPECT_EQ(commands[0].firstLine, 1);
    EXPECT_EQ(commands[1].firstLine, 2);
    EXPECT_EQ(commands[2].firstLine, 4);
    EXPECT_EQ(commands[3].command, "!11|D|=4");
    EXPECT_EQ(commands[3].firstLine, 5);
    // A NUL byte is the end of the input, and stays the end.
    std::string withNul = std::string("$!REDRAW\n") + '\0' + "$!QUIT\n";
    commands = ReadAll(withNul, &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 1u);
    // An empty input ends at once.
    commands = ReadAll("", &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(commands.empty());
    commands = ReadAll("\n\n# only a comment\n", &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(commands.empty());
}

TEST_F(MacroComp, ALineLongerThanTheBufferIsRefused) {
    bool ok = true;
    messages.clear();
    ReadAll("$!PAUSE \"" + std::string(MaxMacroCommandLength, 'x') + "\"\n", &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Macro Command too long");
}

TEST_F(MacroComp, AReadErrorIsReported) {
    FILE *stream = fopen("/dev/null", "w");
    ASSERT_NE(stream, nullptr);
    std::string command;
    int line = 0;
    messages.clear();
    EXPECT_FALSE(GetNextCompressedCommand(stream, nullptr, &command, nullptr, &line, nullptr));
    fclose(stream);
    EXPECT_EQ(OnlyError(), "I/O Error While Reading Macro File");
}

TEST_F(MacroComp, ACompressedCommandFromAFileEqualsTheSameCompressedFromText) {
    const char *texts[] = {"$!FIELD [1-3] MESH { SHOW = YES COLOR = RED }", "$!VIEW FIT",
                           "$!VARSET |A| = 3",
                           "$!RUNMACROFUNCTION \"F\" (1, \"a)\")",
                           "$!COLORMAPCONTROL 2 RESETTOFACTORY",
                           "$!GLOBALCONTOUR 2 VAR = 3",
                           "$!PAUSE \"it's\""};
    for (const char *text : texts) {
        std::string fromText = Compress(text);
        ASSERT_NE(fromText, "(failed)") << text;
        bool ok = false;
        auto commands = ReadAll(fromText + "\n" + fromText + "\n", &ok);
        ASSERT_TRUE(ok);
        ASSERT_EQ(commands.size(), 2u) << text;
        EXPECT_EQ(commands[0].command, fromText);
        EXPECT_EQ(commands[1].command, fromText);
        // And from the text in a file.
        commands = ReadAll(std::string(text) + "\n", &ok);
        ASSERT_EQ(commands.size(), 1u);
        EXPECT_EQ(commands[0].command, fromText);
    }
}

TEST_F(MacroComp, RawDataSectionsFromTextAndFromCompressedLines) {
    std::string text =
        "$!CONTOURLEVELS NEW RAWDATA\n3\n# a comment line\n1.5 2.5  # tail comment\n   3.5\n\n$!REDRAW\n";
    bool ok = false;
    auto commands = ReadAll(text, &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].command, "$40 1");
    ASSERT_TRUE(commands[0].hasRawData);
    EXPECT_EQ(commands[0].rawData, "3\n1.5 2.5  \n   3.5\n");
    EXPECT_EQ(commands[1].command, "$0");
    EXPECT_EQ(commands[1].firstLine, 7);
    EXPECT_FALSE(commands[1].hasRawData);

    // The compressed form ends in the marker @1033; the marker is cut off and the section read.
    std::string compressed =
        "$40 1@1033\n3\n# a comment line\n1.5 2.5  # tail comment\n   3.5\n\n@509[1]@198{@158=1}\n";
    commands = ReadAll(compressed, &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].command, "$40 1");
    EXPECT_EQ(commands[0].rawData, "3\n1.5 2.5  \n   3.5\n");
    EXPECT_EQ(commands[1].command, "@509[1]@198{@158=1}");
    EXPECT_EQ(commands[1].firstLine, 7);

    // A $ or @ that is not followed by ! or a digit is raw data, as are blank lines.
    commands = ReadAll("$!ADDONCOMMAND ADDONID = 'x' COMMAND = 'y' RAWDATA\n  $text @here\n!11\n$!QUIT", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].rawData, "  $text @here\n!11");
    // A section at the end of the input.
    commands = ReadAll("$!RAWCOLORMAP RAWDATA\n1\n0 0 0", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].rawData, "1\n0 0 0");
}

TEST_F(MacroComp, RawDataErrors) {
    bool ok = true;
    messages.clear();
    ReadAll("$!REDRAW RAWDATA\n1\n", &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Unexpected RAWDATA");
    messages.clear();
    ReadAll("$!FIELD RAWDATA\n1\n", &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Unexpected RAWDATA");
    messages.clear();
    ReadAll("$!RAWCOLORMAP RAWDATA\n1\n", &ok, false);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Macro command not allowed in this context");
    messages.clear();
    ReadAll("$5@1033\n1\n", &ok, false);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Macro command not allowed in this context");
    messages.clear();
    ReadAll("@509@1033\n1\n", &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(OnlyError(), "Invalid command to use Raw Data");
    messages.clear();
    std::string command;
    EXPECT_FALSE(GetNextCompressedCommand(nullptr, "$5@1033", &command, nullptr, nullptr, nullptr));
    EXPECT_EQ(OnlyError(), "Commands using RAW DATA currently not supported via ACTION_EXECUTEMACROCOMMAND");
    // A marker that is not at the end, or inside a string, is no marker.
    auto commands = ReadAll("$109@1101'@1033'\n", &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_FALSE(commands[0].hasRawData);
}

TEST_F(MacroComp, CookingRawDataSubstitutesKnownVariables) {
    auto lookUp = [](const char *name, std::string *value, void *) {
        if (strcmp(name, "A") == 0) *value = "5";
        else if (strcmp(name, "B%4.1f") == 0) *value = " 6.0";
        else return false;
        return true;
    };
    const char *raw = "2\n|A| |B%4.1f| |NOPE| a|b |A|";
    char *cooked = nullptr;
    ASSERT_TRUE(GetCookedRawMacroData(raw, 1, "$40 1", lookUp, nullptr, &cooked));
    EXPECT_STREQ(cooked, "2\n5  6.0 |NOPE| a|b 5");
    EXPECT_NE(cooked, raw);
    DeallocRawMacroData(&cooked, raw);
    EXPECT_EQ(cooked, nullptr);
    const char *plain = "3 1 2 3";
    ASSERT_TRUE(GetCookedRawMacroData(plain, 1, "$40 1", lookUp, nullptr, &cooked));
    EXPECT_EQ(cooked, plain) << "a section without bars is used as it is";
    DeallocRawMacroData(&cooked, plain);  // must not free the original
    EXPECT_STREQ(plain, "3 1 2 3");
}

TEST_F(MacroComp, StuffStringIntoRawDataJoinsLines) {
    char *raw = nullptr;
    ASSERT_TRUE(StuffStringIntoRawData(&raw, "1"));
    ASSERT_TRUE(StuffStringIntoRawData(&raw, "2 3"));
    EXPECT_STREQ(raw, "1\n2 3");
    DeallocRawMacroData(&raw);
}

// ---- uncompressing ----

TEST_F(MacroComp, UncompressLaysOutSubCommands) {
    EXPECT_EQ(Uncompress("@509[1-3]@198{@158=1}"), "$!FIELD [1-3]\n  MESH\n  {\n    SHOW = YES\n  }");
    EXPECT_EQ(Uncompress("@509[1-3]@198{@158=1}", true, ">>"),
              ">>$!FIELD [1-3]\n    MESH\n    {\n      SHOW = YES\n    }");
    EXPECT_EQ(Uncompress("@509[1-3]@198{@158=1}", false), "$!FIELD [1-3]");
    EXPECT_EQ(Uncompress("$17 0"), "$!VIEW FIT");
    EXPECT_EQ(Uncompress("$17 0", false), "$!VIEW FIT");
    EXPECT_EQ(Uncompress("!11|A|=3"), "$!VARSET |A| = 3");
    EXPECT_EQ(Uncompress("!11|A|\"x y\""), "$!VARSET |A| = \"x y\"");
    EXPECT_EQ(Uncompress("!11|A|+=(|B|*2)"), "$!VARSET |A| += (|B|*2)");
    EXPECT_EQ(Uncompress("!11|A|=-|B|"), "$!VARSET |A| = -|B|");
    EXPECT_EQ(Uncompress("!6\"a\"==\"b\""), "$!IF \"a\" == \"b\"");
    EXPECT_EQ(Uncompress("!10\"F\"(1, \"a)\")"), "$!RUNMACROFUNCTION \"F\" (1, \"a)\")");
    EXPECT_EQ(Uncompress("@525 2@267=3"), "$!GLOBALCONTOUR 2\n  VAR = 3");
    EXPECT_EQ(Uncompress("@525 2@267=3", false), "$!GLOBALCONTOUR 2");
    EXPECT_EQ(Uncompress("@399@374 2{@158=0}"), "$!XYLINEAXIS\n  XDETAIL 2\n  {\n    SHOW = NO\n  }");
    EXPECT_EQ(Uncompress("@509@198,@233 1{}"), "$!FIELD\n  MESH,COLORMAPOVERRIDE 1\n  {\n  }");
    EXPECT_EQ(Uncompress("$79\"x\"@1045=2CM"), "$!PAUSE \"x\"\n  MAG = 2CM");
    EXPECT_EQ(Uncompress("$0"), "$!REDRAW");
    EXPECT_EQ(Uncompress("@505=1"), "$!PLOTTYPE = CARTESIAN3D");
}

// An expanded command may hold words: the values of variables, such as enumerated names. They
// are written as they stand.
TEST_F(MacroComp, UncompressWritesWordsOfExpandedCommands) {
    EXPECT_EQ(Uncompress("!8 abc"), "$!LOOP abc");
    EXPECT_EQ(Uncompress("$17 FIT"), "$!VIEW FIT");
    EXPECT_EQ(Uncompress("@509@158=YES"), "$!FIELD\n  SHOW = YES");
    EXPECT_EQ(Uncompress("$41 COPYSTANDARD 3 "), "$!COLORMAPCONTROL 3 COPYSTANDARD");
    EXPECT_EQ(Uncompress("!11|B|=5 abc_2"), "$!VARSET |B| = 5 abc_2");
}

TEST_F(MacroComp, UncompressMarksWhatItCannotName) {
    EXPECT_EQ(Uncompress("$17 999"), "$!VIEW <UNKNOWN BASE VALUE>");
    EXPECT_EQ(Uncompress("$17\"x\""), "$!VIEW <INVALID BASE VALUE> \"x\"");
    EXPECT_EQ(Uncompress("@525@267=3"), "$!GLOBALCONTOUR <UNKNOWN NUMBER>\n  VAR = 3");
    EXPECT_EQ(Uncompress("@509@198,@158{}"), "$!FIELD\n  MESH,<UNKNOWN PARENT COMMAND>\n  {\n  }");
    EXPECT_EQ(Uncompress("@509@1999=1"), "$!FIELD\n  <UNKNOWN OPTION> = 1");
    EXPECT_EQ(Uncompress("@509@158=9"), "$!FIELD\n  SHOW = <UNKNOWN BASE VALUE>");
    EXPECT_EQ(Uncompress("$0$0"), "$!REDRAW Unexpected Major Command!->$!REDRAW");
    std::string text;
    EXPECT_FALSE(UncompressMacroCommand("hello", &text, 1000, "", true));
    EXPECT_EQ(text, "<UNRECOGNIZABLE COMMAND>");
    EXPECT_FALSE(UncompressMacroCommand("$0 ? 1", &text, 1000, "", true));
    EXPECT_EQ(text, "$!REDRAW <UNRECOGNIZABLE COMMAND>");
    EXPECT_FALSE(UncompressMacroCommand("@509}", &text, 1000, "", true));
    EXPECT_EQ(text, "$!FIELD <UNRECOGNIZABLE COMMAND>");
    // Too long for the room given: cut there, and false.
    EXPECT_FALSE(UncompressMacroCommand("@509[1-3]@198{@158=1}", &text, 10, "", true));
    EXPECT_EQ(text, "$!FIELD [1");
    EXPECT_TRUE(UncompressMacroCommand("$17 0", &text, 10, "", true));
    EXPECT_EQ(text, "$!VIEW FIT");
}

TEST_F(MacroComp, DumpWritesLinesThatCompressBack) {
    const char *commands[] = {"!11|A|=3", "!11|A|\"text with 'quotes'\"", "!11|A|-=(|B|/2)", "!11|A|=-|B|",
                              "!11|LONGNAME|=1.5e3", "@509[1-3]@198{@158=1@62=1}"};
    for (const char *command : commands) {
        char buffer[4096] = {};
        FILE *stream = fmemopen(buffer, sizeof(buffer), "w");
        ASSERT_NE(stream, nullptr);
        ASSERT_TRUE(DumpMacroCommand(command, false, stream));
        ASSERT_TRUE(DumpMacroCommand(command, true, stream));
        fclose(stream);
        std::string written = buffer;
        ASSERT_EQ(written.back(), '\n');
        bool ok = false;
        auto read = ReadAll(written, &ok);
        ASSERT_TRUE(ok) << written;
        ASSERT_EQ(read.size(), 2u) << written;
        EXPECT_EQ(read[0].command, command) << written;
        EXPECT_EQ(read[1].command, command);
    }
}

// Every action command with its positional form, alone and with each option it accepts, given a
// valid value of the option's kind: compress, uncompress (one option a line) and compress again.
namespace {

std::string FirstEnumName(int row) {
    int offset = GetEnumSetOffset(GetSetValueEnumSet(row));
    return CommandEnumMap[offset].Name;
}

std::string OptionText(int action, int row, int enclosingRow) {
    std::string name;
    GetCommandText(row, MacroToken_SetValue, &name);
    int kind = GetSetValueKind(row);
    if (kind >= SetValueKind_FirstEnumSet) return name + " = " + FirstEnumName(row);
    switch (kind) {
        case SetValueKind_Parent: {
            std::string text = name;
            bool numbered = row == MacroSetValue_COLORMAPOVERRIDE || row == MacroSetValue_CONSTRAINT ||
                            row == MacroSetValue_CONTROLPOINT ||
                            ((row == MacroSetValue_XDETAIL || row == MacroSetValue_YDETAIL) &&
                             (enclosingRow == MacroSetValue_XYAXIS || enclosingRow == MacroSetValue_XYLINEAXIS));
            if (numbered) text += " 2";
            text += " {";
            const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
            bool any = false;
            for (int i = syntax.FirstOption; i < syntax.FirstOption + syntax.NumOptions; ++i) {
                if (ActionOptionList[i].ParentRow != row) continue;
                text += " " + OptionText(action, ActionOptionList[i].Row, row);
                any = true;
            }
            if (!any) text += " X = 1.5";  // a block the action checks itself
            return text + " }";
        }
        case SetValueKind_Word: return name + " = 'word'";
        case SetValueKind_Char: return name + " = 'c'";
        case SetValueKind_Text: return name + " = \"free text, with blanks\"";
        case SetValueKind_Double: return name + " = 2.5 CM";
        case SetValueKind_LgIndex:
        case SetValueKind_SmInteger:
        case SetValueKind_EntIndex: return name + " += 7";
        case SetValueKind_Color: return name + " = 3";
        case SetValueKind_Set: return name + " = [1-3,5]";
        case SetValueKind_RawData: return "";  // a section of its own, tested above
        default: return name + " = 1";
    }
}

std::string PositionalText(int action) {
    const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
    switch (syntax.Form) {
        case ActionArgForm_None: return "";
        case ActionArgForm_String: return " \"a file.dat\"";
        case ActionArgForm_Integer: return " 5";
        case ActionArgForm_Variable: return " |RESULT|";
        case ActionArgForm_ZoneSet:
        case ActionArgForm_OptionalZoneSet:
        case ActionArgForm_MapSet:
        case ActionArgForm_OptionalMapSet:
        case ActionArgForm_VarSet: return " [1-3,5]";
        case ActionArgForm_Mandatory: return " " + FirstEnumName(syntax.MandatoryRow);
        case ActionArgForm_GroupAndMandatory: return " 2 " + FirstEnumName(syntax.MandatoryRow);
    }
    return "";
}

}  // namespace

TEST_F(MacroComp, EveryActionFormRecompressesToTheSameCommand) {
    int cases = 0;
    for (int action = 0; action < ActionCommandListItemCount; ++action) {
        std::string name;
        GetCommandText(action, MacroToken_Action, &name);
        std::string head = "$!" + name + PositionalText(action);
        std::vector<std::string> texts{head};
        const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
        std::string all = head;
        for (int i = syntax.FirstOption; i < syntax.FirstOption + syntax.NumOptions; ++i) {
            if (ActionOptionList[i].ParentRow >= 0) continue;
            std::string option = OptionText(action, ActionOptionList[i].Row, -1);
            if (option.empty()) continue;
            texts.push_back(head + " " + option);
            all += "\n  " + option;
        }
        texts.push_back(all);
        for (const std::string &text : texts) {
            ++cases;
            messages.clear();
            std::string first = Compress(text.c_str());
            ASSERT_NE(first, "(failed)") << text << "\n" << (messages.empty() ? "" : messages[0]);
            ASSERT_EQ(first.compare(0, 1 + std::to_string(action).size(), "$" + std::to_string(action)), 0) << text;
            std::string uncompressed;
            ASSERT_TRUE(UncompressMacroCommand(first.c_str(), &uncompressed, MaxMacroCommandLength, "", true))
                << first;
            bool ok = false;
            auto again = ReadAll(uncompressed + "\n", &ok);
            ASSERT_TRUE(ok) << uncompressed << "\n" << (messages.empty() ? "" : messages[0]);
            ASSERT_EQ(again.size(), 1u) << uncompressed;
            EXPECT_EQ(again[0].command, first) << text << "\n->\n" << uncompressed;
            std::string oneLine;
            ASSERT_TRUE(UncompressMacroCommand(first.c_str(), &oneLine, MaxMacroCommandLength, "", false));
            EXPECT_EQ(oneLine.find('\n'), std::string::npos);
            EXPECT_EQ(oneLine.compare(0, 2 + name.size(), "$!" + name), 0);
        }
    }
    EXPECT_GT(cases, 128 + 400);
}

TEST_F(MacroComp, ControlAndStyleCommandsRecompressToTheSameCommand) {
    const char *texts[] = {
        "$!VARSET |A| = 3",  "$!VARSET |A| = \"text\"", "$!VARSET |A| *= (|A| + 1) CM", "$!IF |A| >= 2",
        "$!ELSEIF \"|A|\" <> 'b'", "$!ELSE", "$!ENDIF", "$!LOOP |N|", "$!ENDLOOP", "$!WHILE |A| < 3",
        "$!BREAK", "$!CONTINUE", "$!MACROFUNCTION NAME = \"F\" KEYSTROKE = 'k' RETAIN = YES", "$!ENDMACROFUNCTION",
        "$!RUNMACROFUNCTION \"F\" (|A|, 'x y')", "$!REMOVEVAR |A|", "$!INCLUDEMACRO \"|MACROFILEPATH|/b.mcr\"",
        "$!FIELD [1-3] MESH { SHOW = YES COLOR = RED LINETHICKNESS = 0.4 } CONTOUR { CONTOURTYPE = FLOOD }",
        "$!GLOBALCONTOUR 2 VAR = 3 COLORMAPFILTER { COLORMAPOVERRIDE 2 { SHOW = NO } }",
        "$!XYLINEAXIS XDETAIL 2 { SHOWAXIS = NO TITLE { TEXT = 'x' } }",
        "$!GLOBALCOLORMAP 3 USERDEFINED { CONTROLPOINT 2 { COLORMAPFRACTION = 0.25 LEADRGB { R = 10 } } }",
        "$!PLOTTYPE = XYLINE", "$!ACTIVEFIELDZONES -= [2,4-8:2]", "$!FRAMENAME = 'one'"};
    for (const char *text : texts) {
        std::string first = Compress(text);
        ASSERT_NE(first, "(failed)") << text << "\n" << (messages.empty() ? "" : messages[0]);
        std::string uncompressed = Uncompress(first.c_str());
        bool ok = false;
        auto again = ReadAll(uncompressed + "\n", &ok);
        ASSERT_TRUE(ok) << uncompressed;
        ASSERT_EQ(again.size(), 1u) << uncompressed;
        EXPECT_EQ(again[0].command, first) << text << "\n->\n" << uncompressed;
    }
}

// ---- scanning compressed commands ----

TEST_F(MacroComp, ScanningCommandTokens) {
    const char *text = " $17 0";
    int index = -1;
    MacroToken_e token = MacroToken_String;
    ASSERT_TRUE(ScanCompressedForMacroCommand(&text, 1, "$17 0", &index, &token, false, true));
    EXPECT_EQ(index, 17);
    EXPECT_EQ(token, MacroToken_Action);
    EXPECT_STREQ(text, " 0");
    const char *edges[] = {"$127", "!15", "@1389"};
    for (const char *edge : edges) {
        const char *p = edge;
        EXPECT_TRUE(ScanCompressedForMacroCommand(&p, 1, edge, &index, &token, false, true)) << edge;
    }
    const char *outside[] = {"$128", "!16", "@1390", "#3", "@", "$-1"};
    for (const char *bad : outside) {
        messages.clear();
        const char *p = bad;
        EXPECT_FALSE(ScanCompressedForMacroCommand(&p, 1, bad, &index, &token, false, true)) << bad;
        EXPECT_EQ(OnlyError(), "Unknown Command or Sub-Command");
        EXPECT_EQ(p, bad);
    }
    messages.clear();
    const char *quiet = "$128";
    EXPECT_FALSE(ScanCompressedForMacroCommand(&quiet, 1, quiet, &index, &token, false, false));
    EXPECT_TRUE(messages.empty());
    // Sub-option mode wants a parent that is not major.
    const char *parent = "@198{";
    EXPECT_TRUE(ScanCompressedForMacroCommand(&parent, 1, "", &index, &token, true, true));
    EXPECT_EQ(index, 198);
    const char *notParents[] = {"@158", "@509", "$17"};
    for (const char *bad : notParents) {
        messages.clear();
        const char *p = bad;
        EXPECT_FALSE(ScanCompressedForMacroCommand(&p, 1, "", &index, &token, true, true)) << bad;
        EXPECT_EQ(OnlyError(), "Invalid parent for Sub-Command.");
    }
    // Major commands.
    const char *major = "@509[1]";
    ASSERT_TRUE(ScanCompressedForMajorCommand(&major, 1, "", &index, &token));
    EXPECT_EQ(index, 509);
    EXPECT_STREQ(major, "[1]");
    messages.clear();
    const char *minor = "@158=1";
    EXPECT_FALSE(ScanCompressedForMajorCommand(&minor, 1, "", &index, &token));
    EXPECT_EQ(messages.size(), 1u);
    EXPECT_TRUE(QueryCompressedForMajorCommand("!11|A|=3", &index, &token));
    EXPECT_EQ(index, 11);
    EXPECT_EQ(token, MacroToken_Control);
    messages.clear();
    EXPECT_FALSE(QueryCompressedForMajorCommand("@158=1", &index, &token));
    EXPECT_FALSE(QueryCompressedForMajorCommand("junk", &index, &token));
    EXPECT_TRUE(messages.empty());
}

TEST_F(MacroComp, IsCompressedCommand) {
    EXPECT_TRUE(IsCompressedCommand("$17 0"));
    EXPECT_TRUE(IsCompressedCommand("  \t@509"));
    EXPECT_TRUE(IsCompressedCommand("!11|A|=3"));
    EXPECT_FALSE(IsCompressedCommand("$!VIEW FIT"));
    EXPECT_FALSE(IsCompressedCommand("@ 509"));
    EXPECT_FALSE(IsCompressedCommand("#17"));
    EXPECT_FALSE(IsCompressedCommand(""));
}

TEST_F(MacroComp, ScanningIntegers) {
    LgIndex_t value = 0;
    const char *texts[] = {"2147483646", "-2147483646", " 12 rest", "0"};
    const LgIndex_t expected[] = {2147483646, -2147483646, 12, 0};
    for (int i = 0; i < 4; ++i) {
        const char *p = texts[i];
        ASSERT_TRUE(ScanCompressedForInteger(&p, &value)) << texts[i];
        EXPECT_EQ(value, expected[i]);
    }
    const char *bad[] = {"2147483647", "12345678901", "3.5", "x", "-", "", "12abc"};
    for (const char *text : bad) {
        const char *p = text;
        EXPECT_FALSE(ScanCompressedForInteger(&p, &value)) << text;
        EXPECT_EQ(p, text);
    }
}

TEST_F(MacroComp, ScanningSets) {
    auto members = [](const char *text) {
        std::vector<SetIndex_t> result;
        Set_a *set = nullptr;
        const char *p = text;
        if (!ScanCompressedForSet(&p, 1, text, &set)) return std::vector<SetIndex_t>{-99};
        for (SetIndex_t m = GetNextMember(set, -1); m != BADSETVALUE; m = GetNextMember(set, m)) result.push_back(m);
        DeallocSet(&set);
        return result;
    };
    EXPECT_EQ(members("[1,3,5-9:2]"), (std::vector<SetIndex_t>{0, 2, 4, 6, 8}));
    EXPECT_EQ(members("[1 3 5-9:2]"), (std::vector<SetIndex_t>{0, 2, 4, 6, 8}));  // commas are optional
    EXPECT_EQ(members("[ 2 - 4 ]"), (std::vector<SetIndex_t>{1, 2, 3}));
    EXPECT_EQ(members("[4-4]"), (std::vector<SetIndex_t>{3}));
    EXPECT_EQ(members("[1-10:4]"), (std::vector<SetIndex_t>{0, 4, 8}));
    EXPECT_EQ(members("[]"), (std::vector<SetIndex_t>{}));
    const char *invalid[] = {"[3-1]", "[0]", "[1-5:0]", "[1,x]", "[1", "[-2]", "[1.5]"};
    for (const char *text : invalid) {
        messages.clear();
        EXPECT_EQ(members(text), (std::vector<SetIndex_t>{-99})) << text;
        EXPECT_EQ(OnlyError(), "Invalid SET specifi" "cation.") << text;
    }
    messages.clear();
    EXPECT_EQ(members("1,2"), (std::vector<SetIndex_t>{-99}));
    EXPECT_EQ(OnlyError(), "SETS Must Start With [");
}

// Ranges go in whole: across word boundaries, up to the largest member allowed, in no time. A
// member beyond 16,777,216 is refused before any room is made for it.
TEST_F(MacroComp, ScanningLargeSets) {
    auto scan = [](const char *text, Set_a **set) {
        const char *p = text;
        return ScanCompressedForSet(&p, 1, text, set);
    };
    Set_a *set = nullptr;
    ASSERT_TRUE(scan("[60-130, 200-203, 64]", &set));
    std::vector<SetIndex_t> expected;
    for (SetIndex_t m = 59; m <= 129; m++) expected.push_back(m);
    for (SetIndex_t m = 199; m <= 202; m++) expected.push_back(m);
    std::vector<SetIndex_t> got;
    for (SetIndex_t m = GetNextMember(set, -1); m != BADSETVALUE; m = GetNextMember(set, m)) got.push_back(m);
    EXPECT_EQ(got, expected);
    DeallocSet(&set);

    ASSERT_TRUE(scan("[1-16777216]", &set));
    EXPECT_EQ(MemberCount(set), 16777216);
    EXPECT_TRUE(InSet(set, 16777215));
    EXPECT_FALSE(InSet(set, 16777216));
    DeallocSet(&set);
    ASSERT_TRUE(scan("[16777210-16777216:3]", &set));
    EXPECT_EQ(MemberCount(set), 3);
    EXPECT_TRUE(InSet(set, 16777209) && InSet(set, 16777212) && InSet(set, 16777215));
    DeallocSet(&set);

    const char *tooLarge[] = {"[1-2000000000]", "[16777217]", "[5, 16777200-16777217:2]"};
    const char *named[] = {"2000000000", "16777217", "16777217"};
    for (size_t n = 0; n < 3; n++) {
        messages.clear();
        set = nullptr;
        EXPECT_FALSE(scan(tooLarge[n], &set)) << tooLarge[n];
        EXPECT_EQ(set, nullptr);
        EXPECT_EQ(OnlyError(), std::string("Invalid SET specifi" "cation.\nSet member ") + named[n] +
                                   " is above the largest allowed, 16777216.");
    }
}

TEST_F(MacroComp, AddingRangesToSets) {
    Set_a *set = AllocSet(true);
    ASSERT_NE(set, nullptr);
    ASSERT_TRUE(AddRangeToSet(set, 3, 3, true));    // one member
    ASSERT_TRUE(AddRangeToSet(set, 10, 9, true));   // empty: nothing
    ASSERT_TRUE(AddRangeToSet(set, 62, 65, true));  // across a word boundary
    ASSERT_TRUE(AddRangeToSet(set, 128, 319, true));  // whole words
    EXPECT_EQ(MemberCount(set), 1 + 4 + 192);
    for (SetIndex_t m : {3, 62, 63, 64, 65, 128, 191, 192, 319}) EXPECT_TRUE(InSet(set, m)) << m;
    for (SetIndex_t m : {2, 4, 9, 10, 61, 66, 127, 320}) EXPECT_FALSE(InSet(set, m)) << m;
    // Members already there stay; the range only adds.
    ASSERT_TRUE(AddToSet(set, 1000, true));
    ASSERT_TRUE(AddRangeToSet(set, 0, 1, true));
    EXPECT_EQ(MemberCount(set), 2 + 1 + 4 + 192 + 1);
    DeallocSet(&set);
}

TEST_F(MacroComp, ScanningStringsAndOperators) {
    char *text = nullptr;
    const char *p = " \"a\\\\b\\\"c\" rest";
    ASSERT_TRUE(ScanCompressedForString(&p, 1, "", &text, false));
    EXPECT_STREQ(text, "a\\b\"c");
    EXPECT_STREQ(p, " rest");
    newfree(text);
    p = "'one word'";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForString(&p, 1, "", &text, true));
    EXPECT_EQ(OnlyError(), "Expecting a string.");
    p = "'one\tword'";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForString(&p, 1, "", &text, true));
    EXPECT_EQ(OnlyError(), "Expecting a string.");
    p = "3";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForString(&p, 1, "", &text, false));
    EXPECT_EQ(OnlyError(), "Expecting a string.");

    AssignOp_e op = AssignOp_ConvertFromPix;
    const char *ops[] = {"=", "+=", "-=", "*=", "/="};
    for (int i = 0; i < 5; ++i) {
        p = ops[i];
        ASSERT_TRUE(ScanCompressedForAssignOp(&p, 1, "", &op));
        EXPECT_EQ(op, static_cast<AssignOp_e>(i));
    }
    p = "==";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForAssignOp(&p, 1, "", &op));
    EXPECT_EQ(OnlyError(), "Missing Assignment Operator");
    p = " =3";
    EXPECT_TRUE(ScanCompressedForEquals(&p, 1, ""));
    EXPECT_STREQ(p, "3");
    p = "+=3";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForEquals(&p, 1, ""));
    EXPECT_EQ(OnlyError(), "Only allowed to use = Assignment with this statement");
    p = "3";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForEquals(&p, 1, ""));
    EXPECT_EQ(OnlyError(), "Expecting \"=\"");

    Conditional_e conditional = Conditional_EqualTo;
    const char *relations[] = {"==", "<", ">", "<=", ">=", "!=", "<>"};
    const Conditional_e expected[] = {Conditional_EqualTo,         Conditional_LessThan, Conditional_GreaterThan,
                                      Conditional_LessThanOrEqual, Conditional_GreaterThanOrEqual,
                                      Conditional_NotEqual,        Conditional_NotEqual};
    for (int i = 0; i < 7; ++i) {
        p = relations[i];
        ASSERT_TRUE(ScanCompressedForConditional(&p, 1, "", &conditional));
        EXPECT_EQ(conditional, expected[i]) << relations[i];
        EXPECT_EQ(*p, '\0');
    }
    p = "=";
    messages.clear();
    EXPECT_FALSE(ScanCompressedForConditional(&p, 1, "", &conditional));
    EXPECT_EQ(OnlyError(),
              "Invalid relational operator in conditional expression.  Must use one of ==, <=, >=, or != ");
}

TEST_F(MacroComp, Conditions) {
    auto holds = [](const char *text) {
        bool isTrue = false;
        const char *p = text;
        if (!ScanCompressedForConditionalExpression(&p, 1, text, &isTrue)) return -1;
        return isTrue ? 1 : 0;
    };
    EXPECT_EQ(holds("\"a\" == \"A\""), 1);  // strings compare without regard to case
    EXPECT_EQ(holds("'abc' < 'ABD'"), 1);
    EXPECT_EQ(holds("'abc' >= 'abd'"), 0);
    EXPECT_EQ(holds("'x' <> 'y'"), 1);
    EXPECT_EQ(holds("'x' != 'X'"), 0);
    EXPECT_EQ(holds("3 < 4"), 1);
    EXPECT_EQ(holds("3 >= 4"), 0);
    EXPECT_EQ(holds("(1+2) == 3"), 1);
    EXPECT_EQ(holds("(0.1+0.2) == 0.3"), 0);  // no tolerance
    EXPECT_EQ(holds("-2 <= (-2)"), 1);
    EXPECT_EQ(holds("1e3 != 1000"), 0);
    messages.clear();
    EXPECT_EQ(holds("\"a\" == 3"), -1);
    EXPECT_EQ(OnlyError(),
              "Invalid string comparrision in conditional expression.  Expecting a string on the right hand side.");
    messages.clear();
    EXPECT_EQ(holds("\"a\" = \"b\""), -1);
    EXPECT_EQ(OnlyError(),
              "Invalid relational operator in conditional expression.  Must use one of ==, <=, >=, or != ");
    messages.clear();
    EXPECT_EQ(holds("abc == 3"), -1);
    EXPECT_EQ(OnlyError(), "Invalid conditional expression.");
    messages.clear();
    EXPECT_EQ(holds("3 3"), -1);
    EXPECT_EQ(OnlyError(), "Invalid conditional expression.");
    messages.clear();
    EXPECT_EQ(holds("(1/0) == 3"), -1);
    EXPECT_EQ(OnlyError(), "Invalid conditional expression.\nExpecting a non-zero denominator.");
}

TEST_F(MacroComp, Numbers) {
    auto real = [](const char *text, double *value) {
        const char *p = text;
        return ScanForReal(&p, value);
    };
    double value = 0.0;
    ASSERT_TRUE(real("1.5D2", &value));
    EXPECT_DOUBLE_EQ(value, 150.0);
    ASSERT_TRUE(real("-2.5e-1", &value));
    EXPECT_DOUBLE_EQ(value, -0.25);
    ASSERT_TRUE(real("+.5", &value));
    EXPECT_DOUBLE_EQ(value, 0.5);
    ASSERT_TRUE(real("7.", &value));
    EXPECT_DOUBLE_EQ(value, 7.0);
    ASSERT_TRUE(real("1e308", &value));
    EXPECT_DOUBLE_EQ(value, 1e150);  // clipped
    ASSERT_TRUE(real("-1e200", &value));
    EXPECT_DOUBLE_EQ(value, -1e150);
    ASSERT_TRUE(real("1e-200", &value));
    EXPECT_EQ(value, 0.0);
    ASSERT_TRUE(real("1d-308", &value));
    EXPECT_EQ(value, 0.0);
    EXPECT_FALSE(real("1e309", &value));
    EXPECT_FALSE(real("1e0001", &value));  // at most three exponent digits
    EXPECT_FALSE(real(".", &value));
    EXPECT_FALSE(real("-", &value));
    EXPECT_FALSE(real("e5", &value));
    // The number ends where the exponent has no digits.
    const char *p = "2e";
    ASSERT_TRUE(ScanForReal(&p, &value));
    EXPECT_STREQ(p, "e");
    EXPECT_TRUE(IsAReal2(" 1234567890123456789012345678901 ", &value));   // 31 characters
    EXPECT_FALSE(IsAReal2("12345678901234567890123456789012", &value));   // 32
    EXPECT_FALSE(IsAReal2("3 4", &value));
    EXPECT_FALSE(IsAReal2("", &value));
}

TEST_F(MacroComp, AssignedValuesByKind) {
    double doubleValue = 0.0;
    ArbParam_t argValue = 0;
    AssignOp_e op = AssignOp_Equals;
    auto assign = [&](const char *row, const char *text, bool allowAssignOps = true) {
        const char *p = text;
        messages.clear();
        return GetAssignedValueForSetValueCommand(Row(row), &p, 1, text, &doubleValue, &argValue, &op, allowAssignOps);
    };
    // Doubles with operators, expressions and unit suffixes.
    ASSERT_TRUE(assign("X", "=2.5"));
    EXPECT_DOUBLE_EQ(doubleValue, 2.5);
    EXPECT_EQ(op, AssignOp_Equals);
    ASSERT_TRUE(assign("X", "+=(2*3)"));
    EXPECT_DOUBLE_EQ(doubleValue, 6.0);
    EXPECT_EQ(op, AssignOp_PlusEquals);
    ASSERT_TRUE(assign("X", "=(2^3^2)"));
    EXPECT_DOUBLE_EQ(doubleValue, 512.0);
    ASSERT_TRUE(assign("X", "=(1<2 ? 3 : 4)"));
    EXPECT_DOUBLE_EQ(doubleValue, 3.0);
    ASSERT_TRUE(assign("X", "=3CM"));
    EXPECT_EQ(op, AssignOp_ConvertFromCm);
    EXPECT_DOUBLE_EQ(doubleValue, 3.0);
    ASSERT_TRUE(assign("X", "=3 in"));
    EXPECT_EQ(op, AssignOp_ConvertFromIn);
    ASSERT_TRUE(assign("X", "=1PT"));
    EXPECT_EQ(op, AssignOp_ConvertFromPt);
    ASSERT_TRUE(assign("X", "=2PIX"));
    EXPECT_EQ(op, AssignOp_ConvertFromPix);
    ASSERT_TRUE(assign("X", "=(1+1)PIX"));
    EXPECT_EQ(op, AssignOp_ConvertFromPix);
    EXPECT_DOUBLE_EQ(doubleValue, 2.0);
    ASSERT_TRUE(assign("X", "=3PI"));
    EXPECT_EQ(op, AssignOp_Equals);
    EXPECT_DOUBLE_EQ(doubleValue, 3.0);  // PI is accepted and changes nothing
    ASSERT_TRUE(assign("X", "*=3PI"));
    EXPECT_EQ(op, AssignOp_TimesEquals);
    EXPECT_FALSE(assign("X", "+=3CM"));
    EXPECT_EQ(OnlyError(), "Not allowed to use suffix if assignment is not simple =");
    EXPECT_FALSE(assign("X", "+=3", false));
    EXPECT_EQ(OnlyError(), "Only allowed to use = Assignment with this statement");
    EXPECT_FALSE(assign("X", "=(1/0)"));
    EXPECT_EQ(OnlyError(), "Invalid assignment for X.\nExpecting a non-zero denominator.");
    EXPECT_FALSE(assign("X", "=(2+)"));
    EXPECT_EQ(OnlyError(), "Invalid assignment for X.\nsyntax error");
    EXPECT_FALSE(assign("X", "=abc"));
    EXPECT_EQ(OnlyError(), "Invalid assignment for X.");
    EXPECT_FALSE(assign("X", "3"));
    EXPECT_EQ(OnlyError(), "Missing Assignment Operator");
    // Integers.
    ASSERT_TRUE(assign("VAR", "-=2"));
    EXPECT_EQ(argValue, 2);
    EXPECT_EQ(op, AssignOp_MinusEquals);
    EXPECT_FALSE(assign("VAR", "=2.5"));
    EXPECT_EQ(OnlyError(), "Invalid Integer Value");
    // Sets: =, += and -= only.
    ASSERT_TRUE(assign("ZONELIST", "+=[2-3]"));
    EXPECT_EQ(op, AssignOp_PlusEquals);
    Set_a *set = reinterpret_cast<Set_a *>(argValue);
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(MemberCount(set), 2);
    EXPECT_TRUE(InSet(set, 1) && InSet(set, 2));
    DeallocSet(&set);
    EXPECT_FALSE(assign("ZONELIST", "*=[2]"));
    EXPECT_EQ(OnlyError(), "Only allowed to use = Assignment with this statement");
    // Strings: the = may be left out; a one-word string refuses blanks.
    ASSERT_TRUE(assign("TEXT", "\"two words\""));
    char *string = reinterpret_cast<char *>(argValue);
    EXPECT_STREQ(string, "two words");
    newfree(string);
    ASSERT_TRUE(assign("ASCIICHAR", "='x'"));
    string = reinterpret_cast<char *>(argValue);
    EXPECT_STREQ(string, "x");
    newfree(string);
    EXPECT_FALSE(assign("ASCIICHAR", "'x y'"));
    EXPECT_EQ(OnlyError(), "Expecting a string.");
    // Enumerated values: = only.
    ASSERT_TRUE(assign("SHOW", "=YES"));
    EXPECT_EQ(argValue, 1);
    ASSERT_TRUE(assign("SHOW", "= 0"));
    EXPECT_EQ(argValue, 0);
    EXPECT_FALSE(assign("SHOW", "+=1"));
    EXPECT_EQ(OnlyError(), "Only allowed to use = Assignment with this statement");
    EXPECT_FALSE(assign("SHOW", "=2"));
    EXPECT_EQ(OnlyError(), "Expecting an enumerated value.");
    EXPECT_FALSE(assign("SHOW", "YES"));
    EXPECT_EQ(OnlyError(), "Expecting \"=\"");
    // Colour indices: = only.
    ASSERT_TRUE(assign("GRIDLINECOLOR", "=4"));
    EXPECT_EQ(argValue, 4);
    EXPECT_FALSE(assign("GRIDLINECOLOR", "+=4"));
    EXPECT_EQ(OnlyError(), "Only allowed to use = Assignment with this statement");
}

// ---- raw data parsers ----

TEST_F(MacroComp, RawColorMaps) {
    std::vector<RawColorMapEntry_s> entries;
    ASSERT_TRUE(LoadColorMapRawMacroData("2\n0 128 255\n10\t20 30", 3, "$5", &entries));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].G, 128);
    EXPECT_EQ(entries[1].B, 30);
    struct Case {
        const char *raw;
        const char *message;
    } cases[] = {
        {"1\n0 256 0", "RGB value out of range in Color Map Entry number 1\n"},
        {"2\n0 0 0\n0 -1 0", "RGB value out of range in Color Map Entry number 2\n"},
        {"2\n1 2 3\n4 x 6", "I/O Error trying to read Color Map RGB Entry number 2\n"},
        {"2\n1 2 3\n4 5", "I/O Error trying to read Color Map RGB Entry number 2\n"},
        {"0", "RAWDATA integer value, 0, out of range for: Num Raw colormap entries"},
        {"801", "RAWDATA integer value, 801, out of range for: Num Raw colormap entries"},
        {"", "Incomplete Raw Data while looking for\nValue: Num Raw colormap entries"},
        {"two", "Invalid RAWDATA integer value for: Num Raw colormap entries"},
    };
    for (const Case &c : cases) {
        messages.clear();
        EXPECT_FALSE(LoadColorMapRawMacroData(c.raw, 3, "$5", &entries)) << c.raw;
        EXPECT_EQ(OnlyError(), c.message) << c.raw;
    }
    // 800 entries is the most.
    std::string most = "800";
    for (int i = 0; i < 800; ++i) most += " 1 2 3";
    ASSERT_TRUE(LoadColorMapRawMacroData(most.c_str(), 3, "$5", &entries));
    EXPECT_EQ(entries.size(), 800u);
}

TEST_F(MacroComp, RawContourLevels) {
    std::vector<double> levels;
    ASSERT_TRUE(LoadContourLevelRawMacroData("3\n1 2.5e1\n-3D0", 1, "$40 1", &levels));
    EXPECT_EQ(levels, (std::vector<double>{1.0, 25.0, -3.0}));
    GeneralBase.MaxNumContourLevels = 2;
    messages.clear();
    EXPECT_FALSE(LoadContourLevelRawMacroData("3 1 2 3", 1, "$40 1", &levels));
    EXPECT_EQ(OnlyError(), "RAWDATA integer value, 3, out of range for: Contour Level");
    messages.clear();
    EXPECT_FALSE(LoadContourLevelRawMacroData("2 1 x", 1, "$40 1", &levels));
    EXPECT_EQ(OnlyError(), "Invalid RAWDATA value for: Contour Level");
    messages.clear();
    EXPECT_FALSE(LoadContourLevelRawMacroData("2 1", 1, "$40 1", &levels));
    EXPECT_EQ(OnlyError(), "Incomplete Raw Data while looking for\nValue: Contour Level");
    messages.clear();
    EXPECT_FALSE(LoadContourLevelRawMacroData("1.5 1", 1, "$40 1", &levels));
    EXPECT_EQ(OnlyError(), "Invalid RAWDATA integer value for: Contour Level");
}

TEST_F(MacroComp, RawPolylines) {
    RawPolyline_s polyline;
    ASSERT_TRUE(LoadPolylineRawMacroData("2 3\n1 2 3\n4 5 6", 1, "", &polyline));
    EXPECT_EQ(polyline.NumPoints, 2);
    EXPECT_EQ(polyline.NumValuesPerPoint, 3);
    EXPECT_EQ(polyline.Values, (std::vector<double>{1, 2, 3, 4, 5, 6}));
    GeneralBase.MaxPtsInALine = 4;
    messages.clear();
    EXPECT_FALSE(LoadPolylineRawMacroData("5 1 1 2 3 4 5", 1, "", &polyline));
    EXPECT_EQ(OnlyError(), "RAWDATA integer value, 5, out of range for: Num polyline entries");
    messages.clear();
    EXPECT_FALSE(LoadPolylineRawMacroData("1 0", 1, "", &polyline));
    EXPECT_EQ(OnlyError(), "RAWDATA integer value, 0, out of range for: Num polyline entries");
    messages.clear();
    EXPECT_FALSE(LoadPolylineRawMacroData("1 2 1", 1, "", &polyline));
    EXPECT_EQ(OnlyError(), "Incomplete Raw Data while looking for\nValue: Polyline value");

    std::vector<XY_s> xy;
    ASSERT_TRUE(LoadXYPolylineRawMacroData("2\n1 2\n3 4", 1, "", &xy));
    ASSERT_EQ(xy.size(), 2u);
    EXPECT_EQ(xy[1].X, 3.0);
    EXPECT_EQ(xy[1].Y, 4.0);
    messages.clear();
    EXPECT_FALSE(LoadXYPolylineRawMacroData("2\n1 2\n3 y", 1, "", &xy));
    EXPECT_EQ(OnlyError(), "Invalid RAWDATA value for: Y Polyline value");
    messages.clear();
    EXPECT_FALSE(LoadXYPolylineRawMacroData("9\n1 2", 1, "", &xy));
    EXPECT_EQ(OnlyError(), "RAWDATA integer value, 9, out of range for: Num xy polyline entries");

    std::vector<XYZ_s> xyz;
    ASSERT_TRUE(LoadXYZPolylineRawMacroData("1\n1 2 1e200", 1, "", &xyz));
    ASSERT_EQ(xyz.size(), 1u);
    EXPECT_EQ(xyz[0].Z, 1e150);  // clipped
    messages.clear();
    EXPECT_FALSE(LoadXYZPolylineRawMacroData("1\n1 2", 1, "", &xyz));
    EXPECT_EQ(OnlyError(), "Incomplete Raw Data while looking for\nValue: Z Polyline value");
    messages.clear();
    EXPECT_FALSE(LoadXYZPolylineRawMacroData("x", 1, "", &xyz));
    EXPECT_EQ(OnlyError(), "Invalid RAWDATA integer value for: Num xyz polyline entries");
}

TEST_F(MacroComp, RawGeometries) {
    RawGeomPosition_s position;
    ASSERT_TRUE(LoadGeomPositionRawMacroData("2\n2\n0 0\n1 1\n3\n0 0 1 0 1 1", 1, "$16", RawGeomType_LineSegs, false,
                                             &position));
    ASSERT_EQ(position.Segments.size(), 2u);
    EXPECT_EQ(position.Segments[0].size(), 2u);
    ASSERT_EQ(position.Segments[1].size(), 3u);
    EXPECT_EQ(position.Segments[1][2].X, 1.0);
    EXPECT_EQ(position.Segments[1][2].Y, 1.0);
    ASSERT_TRUE(LoadGeomPositionRawMacroData("1 2 0 0 5 1 1 6", 1, "$16", RawGeomType_LineSegs3D, false, &position));
    ASSERT_EQ(position.Segments.size(), 1u);
    EXPECT_EQ(position.Segments[0][1].Z, 6.0);
    ASSERT_TRUE(LoadGeomPositionRawMacroData("1 2 0 1 90 2", 1, "$16", RawGeomType_LineSegs, true, &position));
    EXPECT_EQ(position.Segments[0][1].X, 90.0);  // theta
    EXPECT_EQ(position.Segments[0][1].Y, 2.0);   // r
    ASSERT_TRUE(LoadGeomPositionRawMacroData("2 3", 1, "$16", RawGeomType_Rectangle, false, &position));
    EXPECT_EQ(position.XSize, 2.0);
    EXPECT_EQ(position.YSize, 3.0);
    ASSERT_TRUE(LoadGeomPositionRawMacroData("5", 1, "$16", RawGeomType_Circle, false, &position));
    EXPECT_EQ(position.XSize, 5.0);
    ASSERT_TRUE(LoadGeomPositionRawMacroData("10 20", 1, "$16", RawGeomType_Image, false, &position));
    EXPECT_EQ(position.YSize, 20.0);
    struct Case {
        const char *raw;
        RawGeomType_e type;
        const char *message;
    } cases[] = {
        {"51", RawGeomType_LineSegs, "RAWDATA integer value, 51, out of range for: Num geometry segments"},
        {"0", RawGeomType_LineSegs, "RAWDATA integer value, 0, out of range for: Num geometry segments"},
        {"1 0", RawGeomType_LineSegs, "RAWDATA integer value, 0, out of range for: Num polyline points"},
        {"1 1 0", RawGeomType_LineSegs, "Incomplete Raw Data while looking for\nValue: Y Polyline value"},
        {"1 1 0 0", RawGeomType_LineSegs3D, "Incomplete Raw Data while looking for\nValue: Z Polyline value"},
        {"2", RawGeomType_Ellipse, "Incomplete Raw Data while looking for\nValue: Geometry y-size Value"},
        {"x 2", RawGeomType_Rectangle, "Invalid RAWDATA value for: Geometry x-size Value"},
        {"", RawGeomType_Square, "Incomplete Raw Data while looking for\nValue: Geometry Size Value"},
        {"w", RawGeomType_Image, "Invalid RAWDATA value for: Geometry Width Value"},
        {"1", RawGeomType_Image, "Incomplete Raw Data while looking for\nValue: Geometry Height Value"},
    };
    for (const Case &c : cases) {
        messages.clear();
        EXPECT_FALSE(LoadGeomPositionRawMacroData(c.raw, 1, "$16", c.type, false, &position)) << c.raw;
        EXPECT_EQ(OnlyError(), c.message) << c.raw;
    }
}

// ---- the error reporter ----

TEST_F(MacroComp, ErrBadMacroShowsTheCommand) {
    ErrBadMacro("Bad thing", 12, "$17 0", true);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "Bad thing\n\nError occurred in $! command\nstarting on line 12:\n\n$!VIEW FIT");
    messages.clear();
    ErrBadMacro(nullptr, 3, "$!VIEW FIT", false);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "(PreProcessor): <Unknown Error>\n\nError occurred in $! command\nstarting on line 3:\n\n"
                           "Text where error occurred: $!VIEW FIT");
    // A command that is not all printable is left out.
    messages.clear();
    ErrBadMacro("Bad", 3, "$17\x01 0", true);
    EXPECT_EQ(messages[0], "Bad\n\nError occurred in $! command\nstarting on line 3:\n\n");
    // Raw text goes in only while the whole stays under 470 characters.
    messages.clear();
    std::string header = "(PreProcessor): M\n\nError occurred in $! command\nstarting on line 3:\n\n";
    std::string fits(469 - header.size() - 27, 'x');
    ErrBadMacro("M", 3, fits.c_str(), false);
    EXPECT_EQ(messages[0], header + "Text where error occurred: " + fits);
    messages.clear();
    std::string tooMuch = fits + "x";
    ErrBadMacro("M", 3, tooMuch.c_str(), false);
    EXPECT_EQ(messages[0], header);
    // A compressed command is uncompressed into the rest of the 500 characters.
    messages.clear();
    std::string longCommand = "$79\"" + std::string(600, 'y') + "\"";
    ErrBadMacro("M", 3, longCommand.c_str(), true);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].size(), 500u);
    std::string start = "M\n\nError occurred in $! command\nstarting on line 3:\n\n$!PAUSE \"yyyy";
    EXPECT_EQ(messages[0].substr(0, start.size()), start);
    EXPECT_EQ(messages[0].back(), 'y');
}

TEST_F(MacroComp, ErrBadMacroShowsTheCallTraceback) {
    MacroCallStack.push_back(MacroCallFrame_s{3, 10, "OUTER", {"a", "b c"}});
    MacroCallStack.push_back(MacroCallFrame_s{2, 21, "AVERYLONGFUNCTIONNAME", {}});
    ErrBadMacro("Bad", 25, "$0", true, 4);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0],
              "Bad\n\nError occurred in $! command\nstarting on line 25:\n\n$!REDRAW"
              "\n\nCall Traceback:\n"
              "Level Offset Line Function\n"
              "2       4          25     AVERYLONGFUNCTI ()\n"
              "1       2          21     OUTER (a,b c)\n"
              "0       3          10     MAIN");
    // Without an offset of its own the report takes that of the command the interpreter runs.
    messages.clear();
    MacroCurrentOffset = 6;
    ErrBadMacro("Bad", 25, "$0", true);
    MacroCurrentOffset = -1;
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].find("\n2       6          25     AVERYLONGFUNCTI ()\n"), std::string::npos) << messages[0];
    // The lines stop when fewer than 71 characters are left: 72 characters of header, 27 + 260 of
    // text and 45 of traceback header leave 96, enough for the innermost line (45) but not more.
    messages.clear();
    std::string raw(260, 'z');
    ErrBadMacro("Bad", 25, raw.c_str(), false, 4);
    ASSERT_EQ(messages.size(), 1u);
    std::string text = messages[0];
    ASSERT_NE(text.find("Call Traceback"), std::string::npos);
    EXPECT_NE(text.find("\n2       4"), std::string::npos);
    EXPECT_EQ(text.find("MAIN"), std::string::npos);
    EXPECT_LE(text.size(), 500u);
}

TEST_F(MacroComp, MacroErrorsAreShownWhileMessageBoxesAreSuspended) {
    MessageBoxesSuspended = 1;
    ErrBadMacro("Seen", 1, "$0", true);
    EXPECT_EQ(MessageBoxesSuspended, 1);
    MessageBoxesSuspended = 0;
    ASSERT_EQ(messages.size(), 1u);
}

// ---- command lists ----

TEST_F(MacroComp, CommandLists) {
    MacroCommand_s *head = nullptr;
    MacroCommand_s *last = nullptr;
    ASSERT_TRUE(PushMacroCommand(&head, &last, "$0", 2, 1100, nullptr));
    char *raw = nullptr;
    ASSERT_TRUE(StuffStringIntoRawData(&raw, "1 2 3"));
    ASSERT_TRUE(PushMacroCommand(&head, &last, "$40 1", 5, 900, raw));
    ASSERT_TRUE(PushMacroCommand(&head, nullptr, "!11|A|=3", 9, 1100, nullptr));  // walks to the end
    ASSERT_NE(head, nullptr);
    EXPECT_STREQ(head->Command, "$0");
    EXPECT_EQ(head->Offset, 1);
    EXPECT_EQ(head->Prev, nullptr);
    EXPECT_FALSE(head->StopHere);
    MacroCommand_s *second = head->Next;
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->Prev, head);
    EXPECT_EQ(second->Offset, 2);
    EXPECT_EQ(second->LineNumber, 5);
    EXPECT_EQ(second->MacroVersion, 900);
    EXPECT_STREQ(second->RawData, "1 2 3");
    MacroCommand_s *third = second->Next;
    ASSERT_NE(third, nullptr);
    EXPECT_EQ(third->Offset, 3);
    EXPECT_EQ(third->Prev, second);
    EXPECT_EQ(third->Next, nullptr);
    EXPECT_EQ(last, second) << "the push without a tail pointer leaves it alone";
    DeallocMacroCommandList(&head);
    EXPECT_EQ(head, nullptr);
}
