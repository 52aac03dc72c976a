// The state of a macro run that the scanner and the interpreter share: the stack of macro function
// calls in progress, which the error reporter of the scanner writes out as a call traceback, and
// the position of the command being run, which that traceback shows for the innermost level.
// Relies on nothing but the standard library.
#pragma once

#include <string>
#include <vector>

// One macro function call in progress. Offset and LineNumber give where the call was made: the
// position, in the caller's command list, of the $!RUNMACROFUNCTION that made it. FunctionName and
// Parameters are those of the function called.
struct MacroCallFrame_s {
    int Offset;
    int LineNumber;
    std::string FunctionName;
    std::vector<std::string> Parameters;
};

// The macro function calls in progress, outermost first; CallLevel is its size.
extern std::vector<MacroCallFrame_s> MacroCallStack;

// The position in its list (from 1) of the command the interpreter is running, or -1 while none
// runs. The interpreter sets it before it expands a command, so that an error reported by any
// layer below (expansion, scanners, expressions, action handlers) names the command's offset.
extern int MacroCurrentOffset;
