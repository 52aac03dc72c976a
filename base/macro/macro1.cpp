#include "base/macro/macro1.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <string>

#include "base/interact/fileio.h"
#include "base/kernel/alloc.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/paths.h"
#include "base/kernel/seams.h"
#include "base/kernel/statechg.h"
#include "base/kernel/undo.h"
#include "base/kernel/valparse.h"
#include "base/kernel/strutil.h"
#include "base/macro/actcmd.h"
#include "base/macro/macrocomp.h"
#include "base/macro/macrostate.h"
#include "base/macro/macrovar.h"
#include "base/macro/setvalue.h"
#include "base/macro/vocab.h"
#include "base/plot/draw0.h"

bool IsProcessingQuickMacro = false;
bool IsProcessingQuickMacroFile = false;
bool IsProcessingJournalCommand = false;
bool StopPlayback = false;
bool MacroLoadError = false;

MacroFunction_s::~MacroFunction_s() { DeallocMacroCommandList(&Commands); }

namespace {

struct CallFrame_s {
    MacroCommand_s *Current = nullptr;     // null when the list has run out
    MacroFunction_s *Function = nullptr;   // null in frame 0
    std::vector<std::string> Parameters;
};

struct LoopState_s {
    LgIndex_t NumTimes = 0, Step = 1, Current = 0;
};

// The one interpreter record.
struct MacroState_s {
    MacroCommand_s *MainCommands = nullptr;
    std::vector<std::unique_ptr<MacroFunction_s>> Functions;
    CallFrame_s CallFrames[MaxCallFrames];
    int CallLevel = 0;
    int LoopLevel = -1;
    int IfLevel = -1;
    LoopState_s Loops[MaxLoopLevels];
    bool IfBranchTaken[MaxIfLevels] = {};
    std::string FileName;  // the macro file of the run
} MacroState;

std::vector<int> MacroVersionStack;

MacroFunction_s *findFunction(const std::string &name) { return GetMacroFunctionPtr(name.c_str()); }

// The suspensions in force when the current macro run began (a nested run keeps its caller's and
// puts it back); what a run adds above them is undone when it ends.
struct SuspensionLevels_s {
    int Graphics = 0;
    bool Interface = false;
    bool StatusLine = false;
    bool WorkArea = false;
};
SuspensionLevels_s RunBaseline;

SuspensionLevels_s currentSuspensions() {
    return SuspensionLevels_s{GraphicsSuspended, IsInterfaceSuspended(), IsStatusLineSuspended(),
                              IsWorkAreaSuspended()};
}

void releaseFunction(MacroFunction_s *function) {
    auto &list = MacroState.Functions;
    list.erase(std::remove_if(list.begin(), list.end(), [&](const auto &f) { return f.get() == function; }), list.end());
}

// Back to the first command of the main macro.
void rewind() {
    MacroState.CallLevel = 0;
    MacroState.LoopLevel = -1;
    MacroState.IfLevel = -1;
    MacroState.CallFrames[0] = CallFrame_s{MacroState.MainCommands, nullptr, {}};
    MacroCallStack.clear();
}

// The control command a compressed command starts with, or -1.
int controlOf(const MacroCommand_s *command) {
    int index;
    MacroToken_e token;
    if (command == nullptr || !QueryCompressedForMajorCommand(command->Command, &index, &token) ||
        token != MacroToken_Control)
        return -1;
    return index;
}

const char *controlName(int index) { return ControlCommandList[index]; }

// ---- loading ------------------------------------------------------------------------------

struct OpenFile_s {
    FILE *File;
    int Line;
    int Version;
};

// The options of $!MACROFUNCTION, on a compressed command.
bool ProcessStartMacroFunction(const char *command, int line, bool warnOnRedefine, bool retainDefault,
                               MacroFunction_s **made) {
    const char *p = command;
    int index;
    MacroToken_e token;
    if (!ScanCompressedForMajorCommand(&p, line, command, &index, &token)) return false;
    auto function = std::make_unique<MacroFunction_s>();
    function->Retain = function->ShowInMacroPanel = retainDefault;
    bool haveName = false;
    while (true) {
        while (*p == ' ' || *p == '\t' || *p == '\n') p++;
        if (*p == '\0') break;
        if (!ScanCompressedForMacroCommand(&p, line, command, &index, &token, false, true)) return false;
        if (token != MacroToken_SetValue) {
            ErrBadMacro("Invalid macro command option.", line, command, true);
            return false;
        }
        ArbParam_t arg = 0;
        double number = 0;
        AssignOp_e op;
        if (!GetAssignedValueForSetValueCommand(index, &p, line, command, &number, &arg, &op, false)) return false;
        if (index == MacroSetValue_NAME || index == MacroSetValue_MNEMONIC || index == MacroSetValue_KEYSTROKE) {
            std::unique_ptr<char, void (*)(char *)> text(reinterpret_cast<char *>(arg), [](char *s) { newfree(s); });
            const char *value = text ? text.get() : "";
            if (index == MacroSetValue_NAME) {
                function->Name = value;
                haveName = true;
            } else if (index == MacroSetValue_MNEMONIC) {
                function->Mnemonic = value[0];
            } else {
                char key = value[0];
                if (!isalnum(static_cast<unsigned char>(key)) || value[1] != '\0') {
                    ErrBadMacro("Keystroke must be 0-9, a-z, or A-Z", line, command, true);
                    return false;
                }
                function->Keystroke = key;
            }
        } else if (index == MacroSetValue_RETAIN) {
            function->Retain = arg != 0;
        } else if (index == MacroSetValue_SHOWINMACROPANEL) {
            function->ShowInMacroPanel = arg != 0;
            if (function->ShowInMacroPanel) function->Retain = true;
        } else {
            ErrBadMacro("Invalid macro command option.", line, command, true);
            return false;
        }
    }
    if (!haveName) {
        ErrBadMacro("Missing macro function name", line, command, true);
        return false;
    }
    if (MacroFunction_s *old = findFunction(function->Name)) {
        if (warnOnRedefine && !function->Name.empty()) {
            std::string text = "Macro Function named \"" + function->Name + "\" has been redefined\n";
            Warning("%s", text.c_str());
        }
        releaseFunction(old);
    }
    MacroState.Functions.push_back(std::move(function));
    *made = MacroState.Functions.back().get();
    return true;
}

// The file named by $!INCLUDEMACRO, opened and past its header.
bool openInclude(const char *command, int line, int depth, OpenFile_s *opened) {
    std::string expanded;
    if (!ExpandMacroVars(command, line, {}, &expanded)) return false;
    const char *p = expanded.c_str();
    int index;
    MacroToken_e token;
    char *name = nullptr;
    if (!ScanCompressedForMajorCommand(&p, line, expanded.c_str(), &index, &token)) return false;
    while (*p == ' ') p++;
    if ((*p != '"' && *p != '\'') || !ScanCompressedForString(&p, line, expanded.c_str(), &name, false)) {
        ErrBadMacro("Invalid Filename in INCLUDEMACRO Command", line, command, true);
        return false;
    }
    std::string fileName = name;
    newfree(name);
    if (depth >= 4) {  // four includes may nest below the main file
        ErrBadMacro("Too many nested includes", line, command, true);
        return false;
    }
    FILE *file = fopen(fileName.c_str(), "rb");
    if (file == nullptr) {
        ErrBadMacro("Cannot open File in INCLUDEMACRO Command", line, command, true);
        return false;
    }
    int version = 0;
    if (!GetFileMagic(file, "MC", &version)) {
        fclose(file);
        ErrBadMacro("INCLUDEMACRO file has invalid header", line, command, true);
        return false;
    }
    if (!MacroHeaderOk(version)) {
        fclose(file);
        ErrBadMacro("INCLUDEMACRO file has invalid macro command version", line, command, true);
        return false;
    }
    *opened = OpenFile_s{file, 1, version};
    return true;
}

// ---- the flow check ----------------------------------------------------------------------

// Walks a list once: every IF, LOOP and WHILE closes, ELSE and ELSEIF stand only inside an IF and
// not behind its ELSE.
bool checkFlow(MacroCommand_s *list) {
    struct Open {
        int Word;
        MacroCommand_s *Command;
        bool SawElse;
    };
    std::vector<Open> open;
    auto closes = [](int word) {
        return word == MacroControl_ENDIF ? MacroControl_IF : word == MacroControl_ENDLOOP ? MacroControl_LOOP
                                                                                           : MacroControl_WHILE;
    };
    auto closerOf = [](int word) {
        return word == MacroControl_IF ? MacroControl_ENDIF : word == MacroControl_LOOP ? MacroControl_ENDLOOP
                                                                                        : MacroControl_ENDWHILE;
    };
    for (MacroCommand_s *c = list; c != nullptr; c = c->Next) {
        int word = controlOf(c);
        if (word == MacroControl_IF || word == MacroControl_LOOP || word == MacroControl_WHILE) {
            open.push_back({word, c, false});
        } else if (word == MacroControl_ENDIF || word == MacroControl_ENDLOOP || word == MacroControl_ENDWHILE) {
            if (open.empty() || open.back().Word != closes(word)) {
                std::string message = std::string("Cannot Find Matching ") + controlName(closes(word));
                ErrBadMacro(message.c_str(), c->LineNumber, c->Command, true, c->Offset);
                return false;
            }
            open.pop_back();
        } else if (word == MacroControl_ELSE || word == MacroControl_ELSEIF) {
            if (open.empty() || open.back().Word != MacroControl_IF || open.back().SawElse) {
                ErrBadMacro("ELSE or ELSEIF Unexpected", c->LineNumber, c->Command, true, c->Offset);
                return false;
            }
            if (word == MacroControl_ELSE) open.back().SawElse = true;
        }
    }
    if (!open.empty()) {
        std::string message = std::string("Cannot Find Matching ") + controlName(closerOf(open.back().Word));
        ErrBadMacro(message.c_str(), open.back().Command->LineNumber, open.back().Command->Command, true,
                    open.back().Command->Offset);
        return false;
    }
    return true;
}

// ---- matching -------------------------------------------------------------------------------

// Forward from `from` (excluded) to the closing word at depth zero.
MacroCommand_s *matchForward(MacroCommand_s *from, int opening, int closing) {
    int depth = 0;
    for (MacroCommand_s *c = from->Next; c != nullptr; c = c->Next) {
        int word = controlOf(c);
        if (word == opening) depth++;
        else if (word == closing && depth-- == 0) return c;
    }
    return nullptr;
}

MacroCommand_s *matchBackward(MacroCommand_s *from, int opening, int closing) {
    int depth = 0;
    for (MacroCommand_s *c = from->Prev; c != nullptr; c = c->Prev) {
        int word = controlOf(c);
        if (word == closing) depth++;
        else if (word == opening && depth-- == 0) return c;
    }
    return nullptr;
}

// The next ELSEIF, ELSE or ENDIF of the IF level that `from` stands in.
MacroCommand_s *nextBranch(MacroCommand_s *from) {
    int depth = 0;
    for (MacroCommand_s *c = from->Next; c != nullptr; c = c->Next) {
        int word = controlOf(c);
        if (word == MacroControl_IF) depth++;
        else if (word == MacroControl_ENDIF && depth > 0) depth--;
        else if (depth == 0 && (word == MacroControl_ELSEIF || word == MacroControl_ELSE || word == MacroControl_ENDIF))
            return c;
    }
    return nullptr;
}

// ---- running ------------------------------------------------------------------------------

struct Runner {
    // The running command with its variables expanded: what a run-time error shows. Null before
    // the expansion (and for a quick macro call, which has no command).
    const char *shown = nullptr;

    CallFrame_s &frame() { return MacroState.CallFrames[MacroState.CallLevel]; }

    bool fail(const char *message, const MacroCommand_s *c) {
        ErrBadMacro(message, c->LineNumber, shown != nullptr ? shown : c->Command, true, c->Offset);
        return false;
    }

    // The text behind the control word.
    static const char *argumentsOf(const char *expanded) {
        const char *p = expanded;
        int index;
        MacroToken_e token;
        QueryCompressedForMajorCommand(p, &index, &token);
        p++;  // '!'
        while (isdigit(static_cast<unsigned char>(*p))) p++;
        return p;
    }

    bool condition(const char *expanded, const MacroCommand_s *c, bool *isTrue) {
        const char *p = argumentsOf(expanded);
        if (!ScanCompressedForConditionalExpression(&p, c->LineNumber, expanded, isTrue)) return false;
        while (*p == ' ' || *p == '\t' || *p == '\n') p++;
        if (*p != '\0') return fail("Invalid conditional expression.", c);
        return true;
    }

    // The target of $!VARSET or $!REMOVEVAR: the first reference, as written.
    bool targetOf(const char **p, const MacroCommand_s *c, std::string *name, bool forAssignment) {
        while (**p == ' ') (*p)++;
        const char *close = **p == '|' ? strchr(*p + 1, '|') : nullptr;
        std::string text = close != nullptr ? std::string(*p + 1, size_t(close - *p - 1)) : std::string();
        bool valid = !text.empty() && text.size() <= size_t(MaxMacroVarNameLength) &&
                     (IsValidInternalMacroVarName(text.c_str()) ||
                      std::all_of(text.begin(), text.end(), [](char ch) { return isdigit(static_cast<unsigned char>(ch)); }));
        if (!forAssignment) {
            if (!valid || !IsValidInternalMacroVarName(text.c_str())) return fail("Invalid or undefined Variable name", c);
        } else {
            if (!valid || ustrcmp(text.c_str(), "LOOP") == 0)
                return fail("Invalid Variable Reference On Left-Hand Side", c);
            if (isdigit(static_cast<unsigned char>(text[0]))) return fail("Not allowed to assign values to macro parameters", c);
        }
        *name = text;
        *p = close + 1;
        return true;
    }

    bool varSet(const char *expanded, const MacroCommand_s *c) {
        const char *p = argumentsOf(expanded);
        std::string name;
        if (!targetOf(&p, c, &name, true)) return false;
        std::string old;
        if (!GetInternalMacroVar(name.c_str(), &old)) {
            if (!SetInternalMacroVar(name.c_str(), "0", true)) return fail("Too Many Macro Variables", c);
            old = "0";
        }
        while (*p == ' ' || *p == '\t') p++;
        if (*p == '=' && (p[1] == '"' || p[1] == '\'' || p[1] == ' ')) {
            const char *q = p + 1;
            while (*q == ' ') q++;
            if (*q == '"' || *q == '\'') p = q;
        }
        if (*p == '"' || *p == '\'') {
            if (strchr(p + 1, *p) == nullptr) return fail("Missing ending \" in string", c);
            char *text = nullptr;
            if (!ScanCompressedForString(&p, c->LineNumber, expanded, &text, false)) return false;
            SetInternalMacroVar(name.c_str(), text, true);
            newfree(text);
            return true;
        }
        AssignOp_e op, suffixOp;
        double value;
        if (!ScanCompressedForAssignOp(&p, c->LineNumber, expanded, &op) ||
            !ScanCompressedForDouble(&p, c->LineNumber, expanded, name.c_str(), &value, &suffixOp))
            return false;
        if (suffixOp != AssignOp_Equals) {
            if (op != AssignOp_Equals) return fail("Not allowed to use suffix if assignment is not simple =", c);
            // A length given with a unit is stored in inches, the unit of the paper.
            ModifyXValueWithSuffixToInchPaperUnits(&value, suffixOp == AssignOp_ConvertFromCm   ? Suffix_Cm
                                                           : suffixOp == AssignOp_ConvertFromIn ? Suffix_In
                                                           : suffixOp == AssignOp_ConvertFromPt ? Suffix_Pt
                                                                                                : Suffix_Pix);
        }
        double current = 0;
        if (sscanf(old.c_str(), "%lf", &current) != 1) current = 0;
        switch (op) {
        case AssignOp_PlusEquals: value = current + value; break;
        case AssignOp_MinusEquals: value = current - value; break;
        case AssignOp_TimesEquals: value = current * value; break;
        case AssignOp_DivideEquals:
            if (value == 0.0) return fail("Overflow or Underflow", c);
            value = current / value;
            break;
        default: break;
        }
        SetInternalMacroVar(name.c_str(), MacroNumberText(value).c_str(), true);
        return true;
    }

    // Parameters "(a, "b c", 'd')" into values.
    bool parameters(const char **p, const MacroCommand_s *c, std::vector<std::string> *values) {
        while (**p == ' ') (*p)++;
        if (**p == '\0') return true;
        if (**p != '(') return fail("Parameter List Must Start With \"(\"", c);
        (*p)++;
        while (true) {
            while (**p == ' ' || **p == '\t') (*p)++;
            if (**p == '\0') return fail("Missing closing Parenthesis in macro parameter list", c);
            std::string value;
            if (**p == '"' || **p == '\'') {
                char quote = *(*p)++;
                while (**p != '\0' && **p != quote) {
                    if (**p == '\\' && ((*p)[1] == quote || (*p)[1] == '\\')) (*p)++;
                    value.push_back(*(*p)++);
                }
                if (**p != quote) return fail("Missing closing Parenthesis in macro parameter list", c);
                (*p)++;
                while (**p == ' ' || **p == '\t') (*p)++;
            } else {
                while (**p != '\0' && **p != ',' && **p != ')') value.push_back(*(*p)++);
                while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.pop_back();
                if (value.empty()) return fail("Invalid Macro Parameter Value", c);
            }
            if (values->size() >= size_t(MaxMacroParameters))
                return fail("Too many parameters in $!RunMacroFunction command", c);
            values->push_back(value);
            if (**p == ',') {
                (*p)++;
                continue;
            }
            if (**p == ')') {
                (*p)++;
                return true;
            }
            return fail("Missing closing Parenthesis in macro parameter list", c);
        }
    }

    // $!RUNMACROFUNCTION: a new frame on the function's first command.
    bool call(const char *expanded, MacroCommand_s *c) {
        const char *p = argumentsOf(expanded);
        while (*p == ' ') p++;
        char *nameText = nullptr;
        if ((*p != '"' && *p != '\'') || !ScanCompressedForString(&p, c->LineNumber, expanded, &nameText, false))
            return fail("Missing or invalid Macro Name", c);
        std::string name = nameText;
        newfree(nameText);
        if (MacroState.CallLevel + 2 > MaxCallFrames - 1) return fail("Too many nested macro calls", c);
        if (name.empty()) return fail("Missing Macro Function Name", c);
        MacroFunction_s *function = findFunction(name);
        if (function == nullptr) return fail(("Invalid Macro Function Name: " + name).c_str(), c);
        for (int level = 0; level <= MacroState.CallLevel; level++)
            if (MacroState.CallFrames[level].Function == function)
                return fail("Recursive Macro Function Calls Not Allowed", c);
        std::vector<std::string> values;
        if (!parameters(&p, c, &values)) return false;
        MacroCallStack.push_back(MacroCallFrame_s{c->Offset, c->LineNumber, function->Name, values});
        MacroState.CallLevel++;
        MacroState.CallFrames[MacroState.CallLevel] = CallFrame_s{function->Commands, function, values};
        return true;
    }

    // BREAK and CONTINUE: to the nearest enclosing LOOP or WHILE.
    bool breakOrContinue(MacroCommand_s *c, bool isBreak, MacroCommand_s **next) {
        int depth = 0, ifDepth = 0;
        for (MacroCommand_s *d = c->Next; d != nullptr; d = d->Next) {
            int word = controlOf(d);
            if (word == MacroControl_IF) ifDepth++;
            else if (word == MacroControl_ENDIF) {
                if (ifDepth > 0) ifDepth--;
                else MacroState.IfLevel--;  // leaving an IF that encloses the command
            } else if (word == MacroControl_LOOP || word == MacroControl_WHILE) depth++;
            else if (word == MacroControl_ENDLOOP || word == MacroControl_ENDWHILE) {
                if (depth-- > 0) continue;
                if (word == MacroControl_ENDWHILE) {
                    *next = isBreak ? d->Next : d;
                } else if (isBreak) {
                    *next = d->Next;
                    MacroState.LoopLevel--;
                } else {
                    *next = d;
                }
                return true;
            }
        }
        std::string message = std::string(isBreak ? "BREAK" : "CONTINUE") +
                              " is not allowed outside of the context of a LOOP or a WHILE construct.";
        return fail(message.c_str(), c);
    }

    // Decides one control command; *next is where the run goes on, *called a new frame.
    bool control(int word, const char *expanded, MacroCommand_s *c, MacroCommand_s **next, bool *called) {
        *next = c->Next;
        switch (word) {
        case MacroControl_LOOP: {
            if (MacroState.LoopLevel + 1 >= MaxLoopLevels) return fail("Too many nested loops", c);
            const char *p = argumentsOf(expanded);
            LgIndex_t times;
            if (!ScanCompressedForInteger(&p, &times)) return fail("Bad Loop", c);
            while (*p == ' ') p++;
            if (*p != '\0') return fail("Bad Loop", c);
            if (times < 1) {
                MacroCommand_s *end = matchForward(c, MacroControl_LOOP, MacroControl_ENDLOOP);
                *next = end != nullptr ? end->Next : nullptr;
                return true;
            }
            MacroState.LoopLevel++;
            MacroState.Loops[MacroState.LoopLevel] = LoopState_s{times, 1, 1};
            return true;
        }
        case MacroControl_ENDLOOP: {
            if (MacroState.LoopLevel < 0) return fail("ENDLOOP With No Matching LOOP", c);
            LoopState_s &loop = MacroState.Loops[MacroState.LoopLevel];
            loop.Current += loop.Step;
            if (loop.Current <= loop.NumTimes) {
                MacroCommand_s *start = matchBackward(c, MacroControl_LOOP, MacroControl_ENDLOOP);
                *next = start != nullptr ? start->Next : nullptr;
            } else {
                MacroState.LoopLevel--;
            }
            return true;
        }
        case MacroControl_WHILE: {
            bool isTrue;
            if (!condition(expanded, c, &isTrue)) return false;
            if (!isTrue) {
                MacroCommand_s *end = matchForward(c, MacroControl_WHILE, MacroControl_ENDWHILE);
                *next = end != nullptr ? end->Next : nullptr;
            }
            return true;
        }
        case MacroControl_ENDWHILE:
            *next = matchBackward(c, MacroControl_WHILE, MacroControl_ENDWHILE);
            return true;
        case MacroControl_BREAK:
        case MacroControl_CONTINUE:
            return breakOrContinue(c, word == MacroControl_BREAK, next);
        case MacroControl_IF:
        case MacroControl_ELSEIF: {
            if (word == MacroControl_IF) {
                if (MacroState.IfLevel + 1 >= MaxIfLevels) return fail("Too many nested IF/ENDIF", c);
                MacroState.IfLevel++;
                MacroState.IfBranchTaken[MacroState.IfLevel] = false;
            } else if (MacroState.IfLevel >= 0 && MacroState.IfBranchTaken[MacroState.IfLevel]) {
                *next = matchForward(c, MacroControl_IF, MacroControl_ENDIF);
                return true;
            }
            bool isTrue;
            if (!condition(expanded, c, &isTrue)) return false;
            if (isTrue) {
                MacroState.IfBranchTaken[MacroState.IfLevel] = true;
                return true;
            }
            MacroCommand_s *branch = nextBranch(c);
            if (branch != nullptr && controlOf(branch) == MacroControl_ELSE) {
                MacroState.IfBranchTaken[MacroState.IfLevel] = true;
                *next = branch->Next;
            } else {
                *next = branch;
            }
            return true;
        }
        case MacroControl_ELSE:
            *next = matchForward(c, MacroControl_IF, MacroControl_ENDIF);
            return true;
        case MacroControl_ENDIF:
            if (MacroState.IfLevel >= 0) MacroState.IfLevel--;
            return true;
        case MacroControl_VARSET:
            return varSet(expanded, c);
        case MacroControl_REMOVEVAR: {
            const char *p = argumentsOf(expanded);
            std::string name;
            if (!targetOf(&p, c, &name, false)) return false;
            if (!RemoveInternalMacroVar(name.c_str())) return fail("Invalid or undefined Variable name", c);
            return true;
        }
        case MacroControl_RUNMACROFUNCTION:
            if (!call(expanded, c)) return false;
            *called = true;
            return true;
        case MacroControl_INCLUDEMACRO:
        case MacroControl_MACROFUNCTION:
        case MacroControl_ENDMACROFUNCTION:
            return true;  // taken care of at load
        default:
            return fail("Unknown Command or Sub-Command", c);
        }
    }

    static bool allowedInConfigFile(int index, MacroToken_e token) {
        if (token == MacroToken_SetValue) return true;
        if (token == MacroToken_Action) return index == MacroAction_INTERNAL;
        return index == MacroControl_VARSET || index == MacroControl_IF || index == MacroControl_ELSE ||
               index == MacroControl_ELSEIF || index == MacroControl_ENDIF || index == MacroControl_REMOVEVAR;
    }

    void trace(const MacroCommand_s *c) {
        if (!GeneralBase.Debug) return;
        const char *frameName = frame().Function != nullptr ? frame().Function->Name.c_str() : "MAIN";
        std::string text;
        UncompressMacroCommand(c->Command, &text, size_t(MaxMacroCommandLength), nullptr, false);
        fprintf(StdError, "%16s: %3d (%3d): %s\n", frameName, c->Offset, c->LineNumber, text.c_str());
    }

    bool run(bool interruptible, bool singleStep, bool stepOver, bool runToReturn) {
        int stopLevel = MacroState.CallLevel - (runToReturn ? 1 : 0);
        bool first = true;
        std::string expanded;
        while (true) {
            if (OrvanexIsQuitting) return true;
            if (interruptible && Interrupted) StopPlayback = true;
            MacroCommand_s *c = frame().Current;
            if (c == nullptr || StopPlayback) return true;
            if (c->StopHere && !first) {
                StopPlayback = true;
                return true;
            }
            first = false;
            if (singleStep && !stepOver) StopPlayback = true;
            MacroCurrentOffset = c->Offset;
            shown = nullptr;
            if (!ExpandMacroVars(c->Command, c->LineNumber, frame().Parameters, &expanded)) return false;
            shown = expanded.c_str();
            int index;
            MacroToken_e token;
            if (!QueryCompressedForMajorCommand(expanded.c_str(), &index, &token))
                return fail("Unknown Command or Sub-Command", c);
            if (IsProcessingConfigFile && !allowedInConfigFile(index, token))
                return fail("Command not allowed in the configuration file", c);
            trace(c);
            MacroCommand_s *next = c->Next;
            bool called = false;
            if (token == MacroToken_Control) {
                if (!control(index, expanded.c_str(), c, &next, &called)) return false;
            } else {
                PushMacroVersion(c->MacroVersion);
                bool ok = ProcessMacroCommand(expanded.c_str(), c->LineNumber, c->MacroVersion, c->RawData,
                                              frame().Parameters);
                PopMacroVersion();
                if (!ok) return false;
            }
            if (!called) frame().Current = next;
            // Frames that have run out return to their callers, past the $!RUNMACROFUNCTION.
            while (frame().Current == nullptr && MacroState.CallLevel > 0) {
                frame() = CallFrame_s{};
                MacroState.CallLevel--;
                if (!MacroCallStack.empty()) MacroCallStack.pop_back();
                if (runToReturn && MacroState.CallLevel <= stopLevel) return true;
                if (frame().Current != nullptr) frame().Current = frame().Current->Next;
                if (frame().Current == nullptr && MacroState.CallLevel == 0) StopPlayback = true;
            }
            if (stepOver && MacroState.CallLevel <= stopLevel && !called) return true;
        }
    }
};

std::string directoryOf(const std::string &fileName) {
    size_t slash = fileName.find_last_of('/');
    return slash == std::string::npos ? std::string(".") : fileName.substr(0, slash);
}

}  // namespace

// ---- headers ----------------------------------------------------------------------------

bool GetFileMagic(FILE *file, const char *magic, int *version) {
    char line[80];
    if (fgets(line, 79, file) == nullptr) return false;  // at most 78 characters of the first line
    size_t magicLength = strlen(magic);
    if (line[0] != '#' || line[1] != '!' || strncmp(line + 2, magic, magicLength) != 0) return false;
    return sscanf(line + 2 + magicLength, "%d", version) == 1;
}

bool ReadMacroFileVersion(const char *fileName, int *version) {
    FILE *file = nullptr;
    if (!Open_File(&file, fileName, true, false, false, true, true)) return false;
    if (!GetFileMagic(file, "MC", version)) *version = -1;
    Close_File(&file, false);
    return true;
}

bool MacroHeaderOk(int version) { return version >= MacroVersionOldest && version <= MacroVersionCurrent; }

// ---- state --------------------------------------------------------------------------------

MacroFunction_s *GetMacroFunctionPtr(const char *name) {
    if (name == nullptr) return nullptr;
    for (auto &function : MacroState.Functions)
        if (ustrcmp(function->Name.c_str(), name) == 0) return function.get();
    return nullptr;
}

MacroFunction_s *GetMacroFunctionPtrByKeystroke(char key) {
    if (key == '\0') return nullptr;
    for (auto &function : MacroState.Functions)
        if (tolower(static_cast<unsigned char>(function->Keystroke)) == tolower(static_cast<unsigned char>(key)))
            return function.get();
    return nullptr;
}

void ResetGraphicsStateAfterMacroProcessing() {
    bool drawingBack = false;
    while (GraphicsSuspended > RunBaseline.Graphics) {
        UnsuspendGraphics();
        drawingBack = true;
    }
    if (!RunBaseline.StatusLine)
        while (IsStatusLineSuspended()) UnsuspendStatusLine();
    if (!RunBaseline.WorkArea)
        while (IsWorkAreaSuspended()) {
            UnsuspendWorkArea();
            drawingBack = true;
        }
    if (!RunBaseline.Interface)
        while (IsInterfaceSuspended()) UnsuspendInterface();
    if (ManualDoubleBuffer) {
        if (ManualSwapRequired) Action_DoubleBuffer(DoubleBufferAction_Swap);
        Action_DoubleBuffer(DoubleBufferAction_Off);
    }
    // What was not drawn while drawing was off is drawn at the next repair.
    if (drawingBack) MarkEverythingForScreenUpdate();
}

bool InitMacros() {
    InitMacroVocabulary();
    ReleaseMacros(true);
    ResetMacroVars();
    MacroVersionStack.clear();
    return true;
}

void ReleaseMacros(bool includingRetained) {
    DeallocMacroCommandList(&MacroState.MainCommands);
    auto &list = MacroState.Functions;
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](const auto &f) { return includingRetained || !f->Retain; }),
               list.end());
    rewind();
}

void ResetMacros() {
    MacroState.CallLevel = 0;
    MacroState.LoopLevel = -1;
}

void PushMacroVersion(int version) { MacroVersionStack.push_back(version); }
void PopMacroVersion() {
    if (!MacroVersionStack.empty()) MacroVersionStack.pop_back();
}
int GetMacroVersion() { return MacroVersionStack.empty() ? MacroVersionCurrent : MacroVersionStack.back(); }

bool MacroLoopCurrent(LgIndex_t *current) {
    if (MacroState.LoopLevel < 0) return false;
    *current = MacroState.Loops[MacroState.LoopLevel].Current;
    return true;
}

std::string MacroFilePath() { return directoryOf(MacroState.FileName); }
std::string MacroRunFileName() { return MacroState.FileName; }

std::vector<std::string> MacroFunctionNames() {
    std::vector<std::string> names;
    for (const auto &function : MacroState.Functions) names.push_back(function->Name);
    return names;
}

// ---- loading ------------------------------------------------------------------------------

bool LoadMacroFile(const char *fileName, bool warnOnRedefine, bool retainDefault) {
    MacroLoadError = false;
    ReleaseMacros(false);
    FILE *file = nullptr;
    if (!Open_File(&file, fileName, true, false, false, true, true)) {
        MacroLoadError = true;
        return false;
    }
    int version = 0;
    if (!GetFileMagic(file, "MC", &version) || !MacroHeaderOk(version)) {
        Close_File(&file, false);
        ErrMsg("Invalid Macro file header");
        MacroLoadError = true;
        return false;
    }
    // The run's file is known before loading, so that |MACROFILEPATH| works in includes.
    MacroState.FileName = MakeAbsolutePath(fileName, StartupDirectory);
    std::vector<OpenFile_s> files{{file, 1, version}};
    MacroCommand_s *mainLast = nullptr;
    MacroFunction_s *openFunction = nullptr;
    // Where the open function began, for the message if the file ends inside it.
    int openFunctionLine = 0;
    std::string openFunctionCommand;
    MacroCommand_s *functionLast = nullptr;
    long long count = 0;
    bool ok = true;
    std::string command;
    while (ok && !files.empty()) {
        OpenFile_s &current = files.back();
        char *rawData = nullptr;
        int firstLine = current.Line;
        if (!GetNextCompressedCommand(current.File, nullptr, &command, &rawData, &current.Line, &firstLine)) {
            ok = false;
            break;
        }
        if (command.empty()) {
            fclose(current.File);
            files.pop_back();
            continue;
        }
        if (++count >= 2147483646LL) {
            newfree(rawData);
            ErrBadMacro("Macro File Too Large", firstLine, command.c_str(), true);
            ok = false;
            break;
        }
        int index;
        MacroToken_e token;
        QueryCompressedForMajorCommand(command.c_str(), &index, &token);
        bool isControl = token == MacroToken_Control;
        if (isControl && index == MacroControl_INCLUDEMACRO) {
            newfree(rawData);
            OpenFile_s opened{};
            ok = openInclude(command.c_str(), firstLine, int(files.size()) - 1, &opened);
            if (ok) files.push_back(opened);
            continue;
        }
        if (isControl && index == MacroControl_MACROFUNCTION) {
            newfree(rawData);
            if (IsProcessingConfigFile) {
                ErrBadMacro("Macro function definitions not allowed in configuration file.  Use orvanex.mcr instead.",
                            firstLine, command.c_str(), true);
                ok = false;
            } else if (openFunction != nullptr) {
                ErrBadMacro("Cannot Nest Macro Function Definitions", firstLine, command.c_str(), true);
                ok = false;
            } else {
                ok = ProcessStartMacroFunction(command.c_str(), firstLine, warnOnRedefine, retainDefault, &openFunction);
                functionLast = nullptr;
                openFunctionLine = firstLine;
                openFunctionCommand = command;
            }
            continue;
        }
        if (isControl && index == MacroControl_ENDMACROFUNCTION) {
            newfree(rawData);
            if (openFunction == nullptr) {
                ErrBadMacro("ENDMACROFUNCTION Encountered Before MACROFUNCTION", firstLine, command.c_str(), true);
                ok = false;
            }
            openFunction = nullptr;
            continue;
        }
        if (openFunction != nullptr)
            ok = PushMacroCommand(&openFunction->Commands, &functionLast, command.c_str(), firstLine, current.Version, rawData);
        else
            ok = PushMacroCommand(&MacroState.MainCommands, &mainLast, command.c_str(), firstLine, current.Version, rawData);
    }
    for (OpenFile_s &open : files) fclose(open.File);
    if (ok && openFunction != nullptr) {
        ErrBadMacro("Cannot Find Matching ENDMACROFUNCTION", openFunctionLine, openFunctionCommand.c_str(), true);
        ok = false;
    }
    if (!ok) {
        MacroLoadError = true;
        ReleaseMacros(false);
    }
    rewind();
    return ok;
}

bool LoadAndRunMacro(const char *fileName, bool, bool warnOnRedefine, bool retainDefault, bool interruptible) {
    if (!LoadMacroFile(fileName, warnOnRedefine, retainDefault)) return false;
    bool ok = checkFlow(MacroState.MainCommands);
    for (size_t n = 0; ok && n < MacroState.Functions.size(); n++) ok = checkFlow(MacroState.Functions[n]->Commands);
    if (!ok) {
        MacroLoadError = true;
        return false;
    }
    StopPlayback = DebugPlay;
    SuspensionLevels_s outerBaseline = RunBaseline;
    RunBaseline = currentSuspensions();
    bool ran = ProcessLinkedMacroList(interruptible, true, false, false, false);
    // A run that failed or reached its end (not one stopped to be stepped on) gives the drawing back.
    if (!ran || MacroState.CallFrames[0].Current == nullptr || OrvanexIsQuitting)
        ResetGraphicsStateAfterMacroProcessing();
    RunBaseline = outerBaseline;
    return ran;
}

bool ProcessLinkedMacroList(bool interruptible, bool restart, bool singleStep, bool stepOver, bool runToReturn) {
    UndoStateInvalidateUndo();
    UndoStateSuspendRecording();
    if (restart) rewind();
    int outerOffset = MacroCurrentOffset;
    Runner runner;
    bool ok = runner.run(interruptible, singleStep, stepOver, runToReturn);
    MacroCurrentOffset = outerOffset;
    UndoStateUnsuspendRecording();
    if (!ok) {
        StopPlayback = true;
        MacroCallStack.clear();
    }
    return ok;
}

bool ProcessMacroCommand(const char *command, int line, int version, const char *rawData,
                         const std::vector<std::string> &parameters) {
    if (IsProcessingMacroCommand && !IsProcessingStylesheet) {
        ErrBadMacro("Not allowed to execute macro commands during execution of another macro command.", line, command,
                    true);
        return false;
    }
    const char *p = command;
    int index;
    MacroToken_e token;
    if (!ScanCompressedForMajorCommand(&p, line, command, &index, &token)) return false;
    PushMacroVersion(version);
    UndoStateSuspendRecording();
    IsProcessingMacroCommand = true;
    bool ok;
    if (token == MacroToken_Action) {
        ok = ProcessActionCommand(index, p, line, command, rawData, parameters);
    } else {
        ok = ProcessSetValueSubCommands(index, p, line, command);
    }
    IsProcessingMacroCommand = false;
    UndoStateUnsuspendRecording();
    PopMacroVersion();
    return ok;
}

bool ExecuteSingleMacroCommand(const char *text, int version) {
    std::string command;
    if (!GetNextCompressedCommand(nullptr, text, &command, nullptr, nullptr, nullptr)) return false;
    if (command.empty()) return true;
    std::string expanded;
    if (!ExpandMacroVars(command.c_str(), 1, {}, &expanded)) return false;
    return ProcessMacroCommand(expanded.c_str(), 1, version, nullptr, {});
}

// ---- doors ----------------------------------------------------------------------------------

bool ProcessQuickMacro(const char *functionName, const char *parameters) {
    StopPlayback = false;
    Interrupted = false;
    MacroFunction_s *function = findFunction(functionName);
    if (function == nullptr) {
        ErrMsg("Invalid Macro Function Name: %s", functionName);
        return false;
    }
    std::vector<std::string> values;
    if (parameters != nullptr && parameters[0] != '\0') {
        const char *p = parameters;
        MacroCommand_s dummy{const_cast<char *>(""), false, 0, 0, 0, int16_t(MacroVersionCurrent), nullptr, nullptr, nullptr};
        Runner runner;
        if (!runner.parameters(&p, &dummy, &values)) return false;
    }
    int savedLevel = MacroState.CallLevel;
    if (MacroState.CallLevel + 2 > MaxCallFrames - 1) {
        ErrMsg("Too many nested macro calls");
        return false;
    }
    MacroCallStack.push_back(MacroCallFrame_s{0, 0, function->Name, values});
    MacroState.CallLevel++;
    MacroState.CallFrames[MacroState.CallLevel] = CallFrame_s{function->Commands, function, values};
    IsProcessingQuickMacro = true;
    SuspensionLevels_s outerBaseline = RunBaseline;
    RunBaseline = currentSuspensions();
    bool ok = function->Commands == nullptr || ProcessLinkedMacroList(false, false, false, true, true);
    if (!ok) ResetGraphicsStateAfterMacroProcessing();
    RunBaseline = outerBaseline;
    IsProcessingQuickMacro = false;
    while (MacroState.CallLevel > savedLevel) {
        MacroState.CallFrames[MacroState.CallLevel] = CallFrame_s{};
        MacroState.CallLevel--;
        if (!MacroCallStack.empty()) MacroCallStack.pop_back();
    }
    return ok;
}

bool Action_RunMacroFunction(const char *name, const char *parameters) { return ProcessQuickMacro(name, parameters); }

bool Action_RunMacroFunctionByKeystroke(char key) {
    if (!isalnum(static_cast<unsigned char>(key))) return false;
    MacroFunction_s *function = GetMacroFunctionPtrByKeystroke(key);
    return function != nullptr && ProcessQuickMacro(function->Name.c_str(), nullptr);
}

bool Action_RunMacro(const char *fileName) {
    if (!HasSuffixIgnoringCase(fileName, ".mcr")) {
        const char *dot = strrchr(fileName, '.');
        const char *slash = strrchr(fileName, '/');
        const char *extension = (dot != nullptr && (slash == nullptr || dot > slash)) ? dot + 1 : "";
        ErrMsg("Cannot execute %s\nNothing registered with Orvanex to handle script files of type \".%s\"",
               fileName, extension);
        return false;
    }
    return LoadAndRunMacro(fileName, true, true, false, true);
}

bool ReadInQuickMacros(const std::string &fileName, bool userNamedFile) {
    std::string path;
    if (!FindStartupFile(fileName, "QuickMacro File", &path)) {
        if (userNamedFile) Warning("Cannot open quick macro file.");
        return true;
    }
    IsProcessingQuickMacroFile = true;
    bool ok = LoadAndRunMacro(path.c_str(), false, true, true, false);
    IsProcessingQuickMacroFile = false;
    if (!ok) Warning("Errors detected while processing quick macro file.  Some or all quick macros may not be in effect!");
    return ok;
}

bool RunConfigurationFile(const char *fileName) {
    IsProcessingConfigFile = true;
    bool ok = LoadAndRunMacro(fileName, false, false, false, false);
    IsProcessingConfigFile = false;
    ReleaseMacros(false);
    return ok;
}
