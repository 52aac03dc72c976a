// The numeric expression evaluator of the macro language: the text of a parenthesised value, of a
// $!VARSET right side or of a condition is evaluated to a double. Arithmetic with + - * / %,
// powers with ^ or ** (right-associative, binding tighter than a sign), functions of one or two
// arguments, named constants, and the conditional form "relation ? value : value", where
// relations compare values and combine with && and ||.
// Only the first error of an evaluation is kept; ExprErrorCode and ExprErrorMessage give it.
// Relies on nothing but the C library (its errno reports domain and range errors).
#pragma once

// Gives the value of a name that is neither a function nor a constant; false if it has none.
using ExprLookUp_pf = bool (*)(const char *name, double *value, void *clientData);

enum ExprError_e {
    ExprError_None = 0,
    ExprError_Syntax = 1,               // "syntax error" and the messages of malformed operators
    ExprError_Empty = 2,                // "Expecting an expression."
    ExprError_UndefinedFunction = 3,    // "Function %s is undefined."
    ExprError_UndefinedConstant = 4,    // "Constant %s is undefined."
    ExprError_UndefinedIdentifier = 5,  // "Identifier %s is undefined."
    ExprError_ArgumentCount = 6,        // "Function, %s, expects one argument." / "... two arguments."
    ExprError_ZeroDenominator = 7,      // "Expecting a non-zero denominator."
    ExprError_Domain = 8,               // "Input is outside of the %s function's valid domain."
    ExprError_Range = 9                 // "Result is outside of the %s function's valid range."
};

// Evaluates `text`. A name that is neither a function nor a constant goes to lookUp (which may be
// null: the name is then an undefined constant; with a lookUp that fails, an undefined
// identifier). True with *result set; false leaves *result as it was.
bool ExprEvaluate(const char *text, double *result, ExprLookUp_pf lookUp, void *clientData);
// The message and code of the first error of the last evaluation; "" and 0 after a success.
const char *ExprErrorMessage();
int ExprErrorCode();
