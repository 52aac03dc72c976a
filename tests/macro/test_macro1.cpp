// Macro runs in process: finding macro functions by name and by keystroke, the drawing state a
// macro gives back when it fails or ends (suspensions it left, a manual double buffer), and the
// offset of the running command in the call traceback of errors that the layers below the
// interpreter report.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

#include "base/kernel/errors.h"
#include "base/kernel/globals.h"
#include "base/kernel/statechg.h"
#include "base/macro/macro1.h"
#include "base/macro/macrostate.h"
#include "base/plot/draw0.h"
#include "macro/message_capture.h"

namespace {

std::vector<std::string> &messages = CapturedMessages;

class MacroRun : public MessageCaptureTest {
  protected:
    void SetUp() override {
        MessageCaptureTest::SetUp();
        char pattern[] = "/tmp/orvanex_macro1_XXXXXX";
        int fd = mkstemp(pattern);
        ASSERT_GE(fd, 0);
        close(fd);
        fileName = pattern;
    }
    void TearDown() override {
        ReleaseMacros(true);
        MessageCaptureTest::TearDown();
        remove(fileName.c_str());
        while (IsGraphicsSuspended()) UnsuspendGraphics();
        Action_DoubleBuffer(DoubleBufferAction_Off);
    }
    void write(const std::string &body) {
        FILE *file = fopen(fileName.c_str(), "w");
        ASSERT_NE(file, nullptr);
        fputs(("#!MC 1100\n" + body).c_str(), file);
        fclose(file);
    }
    bool run(const std::string &body) {
        write(body);
        return LoadAndRunMacro(fileName.c_str(), false, false, false, false);
    }
    std::string fileName;
};

TEST_F(MacroRun, FunctionsAreFoundByNameAndKeystroke) {
    ASSERT_TRUE(run("$!MACROFUNCTION NAME = \"Alpha\" KEYSTROKE = \"q\"\n$!ENDMACROFUNCTION\n"
                    "$!MACROFUNCTION NAME = \"Beta\" KEYSTROKE = \"7\" MNEMONIC = \"B\"\n$!ENDMACROFUNCTION\n"
                    "$!MACROFUNCTION NAME = \"Gamma\"\n$!ENDMACROFUNCTION\n"));
    MacroFunction_s *alpha = GetMacroFunctionPtr("ALPHA");
    ASSERT_NE(alpha, nullptr);
    EXPECT_EQ(alpha->Name, "Alpha");
    EXPECT_EQ(alpha->Keystroke, 'q');
    MacroFunction_s *beta = GetMacroFunctionPtr("beta");
    ASSERT_NE(beta, nullptr);
    EXPECT_EQ(beta->Mnemonic, 'B');
    EXPECT_EQ(GetMacroFunctionPtr("Delta"), nullptr);
    EXPECT_EQ(GetMacroFunctionPtr(nullptr), nullptr);
    // Keystrokes compare without regard to case; a function without one is never found by key.
    EXPECT_EQ(GetMacroFunctionPtrByKeystroke('Q'), alpha);
    EXPECT_EQ(GetMacroFunctionPtrByKeystroke('q'), alpha);
    EXPECT_EQ(GetMacroFunctionPtrByKeystroke('7'), beta);
    EXPECT_EQ(GetMacroFunctionPtrByKeystroke('x'), nullptr);
    EXPECT_EQ(GetMacroFunctionPtrByKeystroke('\0'), nullptr);
    // Not retained: the next file releases them.
    ASSERT_TRUE(run("$!VARSET |A| = 1\n"));
    EXPECT_EQ(GetMacroFunctionPtr("Alpha"), nullptr);
    EXPECT_TRUE(messages.empty()) << messages.front();
}

TEST_F(MacroRun, DrawingIsGivenBackWhenAMacroFailsOrEnds) {
    ASSERT_FALSE(IsGraphicsSuspended());
    // Failed: two suspensions and a manual double buffer are left behind by the macro.
    EXPECT_FALSE(
        run("$!DRAWGRAPHICS NO\n$!DRAWGRAPHICS NO\n$!DOUBLEBUFFER ON\n$!LOOP 1\n$!VARSET |A| /= 0\n$!ENDLOOP\n"));
    EXPECT_EQ(messages.size(), 1u);
    EXPECT_FALSE(IsGraphicsSuspended());
    EXPECT_FALSE(IsWorkAreaSuspended());
    EXPECT_FALSE(IsStatusLineSuspended());
    EXPECT_FALSE(IsInterfaceSuspended());
    EXPECT_FALSE(ManualDoubleBuffer);
    // Ended normally.
    EXPECT_TRUE(run("$!DRAWGRAPHICS NO\n$!VARSET |A| = 1\n"));
    EXPECT_FALSE(IsGraphicsSuspended());
    EXPECT_FALSE(IsInterfaceSuspended());
    // A suspension in force before the run stays; only what the macro added goes.
    SuspendGraphics();
    EXPECT_TRUE(run("$!DRAWGRAPHICS NO\n$!DRAWGRAPHICS NO\n"));
    EXPECT_EQ(GraphicsSuspended, 1);
    EXPECT_TRUE(IsWorkAreaSuspended());
    EXPECT_TRUE(IsInterfaceSuspended());
    UnsuspendGraphics();
    EXPECT_FALSE(IsInterfaceSuspended());
}

TEST_F(MacroRun, AFailedQuickMacroGivesTheDrawingBack) {
    ASSERT_TRUE(run("$!MACROFUNCTION NAME = \"Dark\" RETAIN = YES\n$!DRAWGRAPHICS NO\n$!VARSET |A| /= 0\n"
                    "$!ENDMACROFUNCTION\n"));
    EXPECT_FALSE(ProcessQuickMacro("dark", ""));
    EXPECT_FALSE(IsGraphicsSuspended());
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].find("Overflow or Underflow"), std::string::npos) << messages[0];
}

// Errors raised below the interpreter (the expansion of variables, an expression, an action's
// handler) name the offset of the failing command in the innermost line of the traceback.
TEST_F(MacroRun, TracebackNamesTheOffsetOfTheCommandRunning) {
    const char *functions = "$!MACROFUNCTION NAME = \"F\"\n"
                            "$!VARSET |B| = 1\n"
                            "$!VARSET |B| = 2\n"
                            "$!VARSET |C| = |D|\n"
                            "$!ENDMACROFUNCTION\n"
                            "$!MACROFUNCTION NAME = \"G\"\n"
                            "$!VARSET |B| = 1\n"
                            "$!VARSET |C| = (2+)\n"
                            "$!ENDMACROFUNCTION\n"
                            "$!MACROFUNCTION NAME = \"H\"\n"
                            "$!INTERNAL \"NO SUCH WORD\"\n"
                            "$!ENDMACROFUNCTION\n";
    struct Case {
        std::string call, innermost;
    };
    const Case cases[] = {
        {"F", "1       3          5      F ()"},
        {"G", "1       2          9      G ()"},
        {"H", "1       1          12     H ()"},
    };
    for (const Case &c : cases) {
        messages.clear();
        EXPECT_FALSE(run(std::string(functions) + "$!VARSET |A| = 1\n$!RUNMACROFUNCTION \"" + c.call + "\"\n"));
        ASSERT_EQ(messages.size(), 1u) << c.call;
        const std::string &text = messages[0];
        std::string tail = "Level Offset Line Function\n" + c.innermost + "\n0       2          15     MAIN";
        ASSERT_GE(text.size(), tail.size()) << text;
        EXPECT_EQ(text.substr(text.size() - tail.size()), tail) << text;
    }
    // Once the run is over no command is running.
    EXPECT_EQ(MacroCurrentOffset, -1);
}

}  // namespace
