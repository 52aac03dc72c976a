// Macro variables: the table of user variables (values are always text), the references that
// macro commands make to them (|NAME|, |1|, |$HOME|, |ZONENAME[2]|, with formats and defaults),
// the intrinsic variables that read the state of the system, and the expansion of a compressed
// command that replaces every reference by its value.
// Relies on: macrocomp (limits, error reporting), data sets and frames for the intrinsics.
#pragma once

#include <string>
#include <vector>

constexpr int MaxMacroVars = 399;

// A letter or _, then letters, digits and _.
bool IsValidInternalMacroVarName(const char *name);
// Sets a user variable (the name is taken in upper case); with create a missing one is made.
// False if it is missing and not to be made, or the table is full.
bool SetInternalMacroVar(const char *name, const char *value, bool create);
// The add-on door: checks the name (at most 30 characters) and creates the variable.
bool AssignInternalMacroValueByName(const char *name, const char *value);
// The value of a user variable; false if there is none of that name.
bool GetInternalMacroVar(const char *name, std::string *value);
bool RemoveInternalMacroVar(const char *name);
int NumMacroVars();
// Removes the variables a layout made: LFBD and those beginning with LFDSFN or LFDSRN.
void RemoveLayoutFileVariables();
void ResetMacroVars();

// A number as variables hold it: %0.*G with precision 15.
std::string MacroNumberText(double value);

// Replaces every |reference| of a compressed command by its value. parameters are those of the
// running macro function call (|1| is the first). False after reporting the error.
bool ExpandMacroVars(const char *command, int line, const std::vector<std::string> &parameters, std::string *expanded);

// Results of ExpandIntrinsic.
enum IntrinsicResult_e { Intrinsic_Found = 0, Intrinsic_Unknown = 1, Intrinsic_Syntax = 2, Intrinsic_NotAvailable = 3,
                         Intrinsic_OutOfMemory = 4 };
// Reads an intrinsic reference (name, subscripts, sub-identifier) from the front of text. With end
// given, the text may go on behind the reference and *end points there; without it the whole text
// must be the reference. *error holds the message of any result but found.
IntrinsicResult_e ExpandIntrinsic(const char *text, std::string *value, const char **end, std::string *error);

// The value of a reference as it stands between bars ("A", "A%5.2f", "1", "NUMZONES"), for the raw
// data of commands; the parameters are those of the running call. False if nothing is known.
bool LookUpMacroVariableValue(const char *reference, std::string *value, void *clientData);
