// The style tree: every configurable value is addressed by a path of up to seven set-value rows
// and changed through SetValue7, which checks the value against the field's input specification,
// applies the assignment operator, and announces the change. GetValue reads a value back. Each
// style record is one table of fields (path, kind, input specification, where the value lives),
// which drives setting and reading alike.
// Relies on: vocab (row numbers), macrocomp (scanning set commands), statechg.
#pragma once

#include <string>

#include "base/kernel/types.h"
#include "base/macro/macrocomp.h"

enum SetValueReturnCode_e {
    SetValue_Ok = 0,
    SetValue_DuplicateValue = 1,         // the new value equals the old one
    SetValue_InvalidCommandOption = 2,   // the row is not valid at this path
    SetValue_NoAttachedDatasetError = 3,
    SetValue_NotAllowedInConfig = 5,
    SetValue_ValueRangeError = 6,
    SetValue_InvalidValueFormat = 7,
    SetValue_AssignOpError = 8,
    SetValue_InvalidVarOrZone = 9,
    SetValue_InternalMemoryError = 10,
    SetValue_ContextError = 11,
    SetValue_CannotAttachDataSet = 12,
    SetValue_LimitsOutsideConfig = 13
};

inline bool ReturnCodeOk(SetValueReturnCode_e code) { return code == SetValue_Ok || code == SetValue_DuplicateValue; }
SetValueReturnCode_e CombineSetValueReturnCodes(SetValueReturnCode_e a, SetValueReturnCode_e b);

// How a value is checked: its type, range (in stored units), the factor by which a stored value is
// shown in macros (or, for integers, the offset), and whether a unit suffix is allowed.
enum InputSpecType_e { InputSpecType_SmInteger = 0, InputSpecType_LgIndex = 2, InputSpecType_Float = 3, InputSpecType_Double = 4 };
struct InputSpecs_s {
    InputSpecType_e Type;
    double Min, Max;
    double InterfaceAdjust;
};

// Changes one value. path holds up to seven rows (the major row first), -1 where unused.
// argValue carries integers, enumerated values and strings (const char *); doubleValue doubles.
SetValueReturnCode_e SetValue7(ArbParam_t argValue, double doubleValue, AssignOp_e assignOp, const int path[7],
                               bool raiseStateChange);
// The text of the last failure of SetValue7.
const std::string &GetLastSetValueErrorString();

// Reads one value: doubles into *doubleOut, the rest into *argOut (strings as a const char *
// owned by the style). The value is given in macro units. Code 2 for a path that holds no value.
SetValueReturnCode_e GetValue(double *doubleOut, ArbParam_t *argOut, const int path[7]);

// Runs a set-value command (the compressed text behind its major row): each leaf goes through
// SetValue7. False after reporting the error.
bool ProcessSetValueSubCommands(int majorRow, const char *text, int line, const char *command);

// One state change at the end of a block of sets instead of one per set.
void BeginSetValueBlock(int row);
void EndSetValueBlock(int row);

// Which frame record new frames and maps copy: the factory values or the configured ones. It is
// CONFIG except while a file that says $!SETSTYLEBASE FACTORY is read.
enum StyleBase_e { StyleBase_Factory = 0, StyleBase_Config = 1 };
extern StyleBase_e FrameStyleBase;
bool Action_SetStyleBase(StyleBase_e base);

// True if the major row is one this build can set.
bool IsSetValueMajorAvailable(int row);
