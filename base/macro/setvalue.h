// The style tree: every configurable value is addressed by a path of up to seven set-value rows
// and changed through SetValue7, which checks the value against the field's input rules (InputSpecs_s),
// applies the assignment operator, and announces the change. GetValue reads a value back. Each
// style record is one table of fields (row, kind, input rules, where the value lives, or
// the table of a block below it), which drives setting and reading alike; the typed setters below
// hold the rules every field of a kind obeys. The general style's tables are in genstyle.cpp.
// Relies on: vocab (row numbers), macrocomp (scanning set commands), valparse (unit suffixes),
// statechg.
#pragma once

#include <cstddef>
#include <string>

#include "base/kernel/types.h"
#include "base/kernel/valparse.h"
#include "base/macro/macrocomp.h"

struct Set_a;

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

// ---- input rules -------------------------------------------------------------------------------

// How a value is checked: its type, its range in stored units, how a stored value is shown in
// macros (doubles: multiplied by InterfaceAdjust; integers: InterfaceAdjust added), and the
// conversion of a value with a unit suffix into stored units (null: no suffix allowed).
enum InputSpecType_e { InputSpecType_SmInteger = 0, InputSpecType_LgIndex = 2, InputSpecType_Float = 3, InputSpecType_Double = 4 };
struct InputSpecs_s {
    InputSpecType_e Type;
    double Min, Max;
    double InterfaceAdjust;
    ValueSuffixConverter_pf SuffixFunction;
};

extern const InputSpecs_s DoubleInputSpec;             // any double; PI suffix
extern const InputSpecs_s AboveZeroDoubleInputSpec;    // 1e-150 and up; PI suffix
extern const InputSpecs_s ZeroAndAboveDoubleInputSpec; // 0 and up
extern const InputSpecs_s ZeroToOneInputSpec;          // 0 to 1 as it stands
extern const InputSpecs_s PercentageInputSpec;         // 0 to 1, shown as percent
extern const InputSpecs_s AngleInputSpec;              // -4 pi to 4 pi radians, shown as degrees
extern const InputSpecs_s TextAngleInputSpec;          // -2 pi to 2 pi radians, shown as degrees
extern const InputSpecs_s XFrameCoordInputSpec;        // frame fractions, shown as percent
extern const InputSpecs_s YFrameCoordInputSpec;
extern const InputSpecs_s XPaperCoordInputSpec;        // paper inches, -500 to 500
extern const InputSpecs_s YPaperCoordInputSpec;
extern const InputSpecs_s LineThicknessInputSpec;      // frame fractions 1e-6 to 1, shown as percent
extern const InputSpecs_s FrameTextSizeInputSpec;      // frame fractions up to 2, shown as percent
extern const InputSpecs_s PointTextSizeInputSpec;      // points, up to 2500
extern const InputSpecs_s SmoothWeightInputSpec;
extern const InputSpecs_s AboveZeroLgIndexInputSpec;
extern const InputSpecs_s ZeroAndAboveLgIndexInputSpec;
extern const InputSpecs_s AboveZeroSmIntegerInputSpec;
extern const InputSpecs_s ZeroAndAboveSmIntegerInputSpec;
extern const InputSpecs_s EntIndexInputSpec;           // one-based in text, zero-based in store
// Style rows naming a variable or a zone of the frame's data set: set outside the configuration
// file, the value must name an enabled one (VarOrNone also takes 0, stored -1, for none).
extern const InputSpecs_s VarOrNoneInputSpec;
extern const InputSpecs_s VarNumInputSpec;
extern const InputSpecs_s ZoneNumInputSpec;
extern const InputSpecs_s ColorMapGroupInputSpec;      // 1 to 4 in text, 0 to 3 in store
extern const InputSpecs_s ContourGroupInputSpec;
extern const InputSpecs_s IsoSurfaceGroupInputSpec;
extern const InputSpecs_s SliceGroupInputSpec;
extern const InputSpecs_s ValuePrecisionInputSpec;     // 1 to 18
extern const InputSpecs_s NumberOfEllipsePointsInputSpec;
extern const InputSpecs_s ImageDimensionInputSpec;     // 4 to 32766
extern const InputSpecs_s ColorIndexInputSpec;         // 0 to 255

// Two checks whose upper bounds are limits of the configuration: the number of contour levels
// (1 to MAXNUMCONTOURLEVELS) and the points of a curve (2 to MAXPTSINALINE).
extern InputSpecs_s NumContourLevelsInputSpec;
extern InputSpecs_s CurvePointsInputSpec;
// Sets those bounds from the limits in force (once the configuration file has run).
void SetInputCheckBounds();

// The text of "must be ..." for a range, in macro units.
std::string GetOutOfRangeErrMsgString(const InputSpecs_s &rules);

// ---- typed setters ---------------------------------------------------------------------------
// Each sets *target from a macro value and gives the code; on failure the message is left for
// GetLastSetValueErrorString and *target is untouched. `row` names the value in messages.
// Assignment operators: = += -= *= /= work on numbers in macro units; the unit suffixes (5 to 8)
// replace = for doubles whose input rules have a SuffixFunction.

SetValueReturnCode_e SetBooleanValue(int row, bool *target, AssignOp_e op, ArbParam_t value);
// value in macro units: stored = value / InterfaceAdjust.
SetValueReturnCode_e SetDoubleValue(int row, double *target, AssignOp_e op, double value, const InputSpecs_s &rules);
// value in macro units: stored = value - InterfaceAdjust. A fractional result of *= or /= is cut.
SetValueReturnCode_e SetLgIndexValue(int row, long *target, AssignOp_e op, double value, const InputSpecs_s &rules);
SetValueReturnCode_e SetIntegerValue(int row, int *target, AssignOp_e op, double value, const InputSpecs_s &rules);
// An entity number: with EntIndexInputSpec a stored -1 (0 in text) means none and passes.
SetValueReturnCode_e SetEntIndexValue(int row, int *target, AssignOp_e op, double value, const InputSpecs_s &rules);
// One channel of a colour, 0 to 255, given as a double and rounded.
SetValueReturnCode_e SetRGBComponentValue(int row, int16_t *target, AssignOp_e op, double value);
SetValueReturnCode_e SetStringValue(int row, std::string *target, AssignOp_e op, const char *value);
// A file name: an empty one is refused; a relative one is made absolute against the start
// directory.
SetValueReturnCode_e SetFNameValue(int row, std::string *target, AssignOp_e op, const char *value);
// = clears *target and copies the members of value below limit; += adds them; -= removes them.
// A missing target set is made for = and +=. Other operators: code 8.
SetValueReturnCode_e SetSetValue(int row, Set_a **target, const Set_a *value, SetIndex_t limit, AssignOp_e op);
// Code 1 when value equals current, 0 when value is in the enumerated set of row, else code 6.
SetValueReturnCode_e CheckEnumValue(int current, int value, int row);

// ---- style records ---------------------------------------------------------------------------

enum StyleFieldKind_e : int8_t {
    StyleField_Bool,          // bool
    StyleField_Int,           // int: a small integer or an index (SetIntegerValue)
    StyleField_Long,          // long (SetLgIndexValue)
    StyleField_EntIndex,      // int: an entity number (SetEntIndexValue)
    StyleField_Double,        // double; with Read and Store, one computed from the target
    StyleField_Enum,          // int: a value of the row's enumerated set
    StyleField_RGBComponent,  // int16_t, one channel of a colour
    StyleField_String,        // std::string
    StyleField_FileName,      // std::string, never empty
    StyleField_Set,           // Set_a *; Max of the input rules limits the members
    StyleField_Block,         // a block of rows: Sub describes the record Target gives; a block
                              // without a row (-1) is spliced: its rows stand in the enclosing one
    StyleField_NumberedBlock  // a block behind a number (the next path entry): Element gives it
};

enum StyleFieldFlags_e : uint8_t {
    StyleFieldFlag_ConfigFileOnly = 1  // set only while the configuration file is read
};

struct StyleRecord_s;

// One row of a record. Target maps the record to the value (or the block) within it; Element
// maps the record and a number as written in the macro to a block, or null for a number that
// does not exist.
struct StyleField_s {
    int Row;
    StyleFieldKind_e Kind;
    const InputSpecs_s *Spec;          // numbers and sets
    void *(*Target)(void *record);
    const StyleRecord_s *Sub;          // blocks
    void *(*Element)(void *record, int number);
    const char *BadNumberMessage;      // numbered blocks: the message for a number Element refuses
    uint8_t Flags;
    // Optional: narrows the input rules by the record's other values (given a copy of the field's own).
    // A field without input rules of its own takes those the hook gives, and nothing else.
    void (*AdjustSpec)(const void *record, InputSpecs_s *rules);
    // Optional: runs after the value changed.
    void (*AfterChange)();
    // Optional, doubles computed from the target: the value in stored units, and the store of a
    // new one that passed the input rules; false if the target cannot take it, which is reported
    // as out of range.
    double (*Read)(const void *target) = nullptr;
    bool (*Store)(void *target, double value, const InputSpecs_s &rules) = nullptr;
};

struct StyleRecord_s {
    const StyleField_s *Fields;
    size_t NumFields;
};

// Builders of table rows: a value of a kind, a block whose rows live in the record the target
// gives, and a block that a number written behind its row selects.
constexpr StyleField_s MakeStyleField(int row, StyleFieldKind_e kind, const InputSpecs_s *rules,
                                      void *(*target)(void *record)) {
    StyleField_s entry{};
    entry.Row = row;
    entry.Kind = kind;
    entry.Spec = rules;
    entry.Target = target;
    return entry;
}
constexpr StyleField_s MakeStyleBlock(int row, const StyleRecord_s &sub, void *(*target)(void *record)) {
    StyleField_s entry = MakeStyleField(row, StyleField_Block, nullptr, target);
    entry.Sub = &sub;
    return entry;
}
constexpr StyleField_s MakeStyleNumberedBlock(int row, const StyleRecord_s &sub, void *(*element)(void *record, int number),
                                              const char *message) {
    StyleField_s entry = MakeStyleField(row, StyleField_NumberedBlock, nullptr, nullptr);
    entry.Sub = &sub;
    entry.Element = element;
    entry.BadNumberMessage = message;
    return entry;
}

// Sets the value at path[depth...] of a record: path[depth] is a row of the record's table (or
// of a record spliced into it); a block takes the rest of the path, a numbered block the number
// in the next entry first. path[0] names the command in messages.
SetValueReturnCode_e SetStyleRecordValue(const StyleRecord_s &record, void *base, const int path[7], int depth,
                                         ArbParam_t argValue, double doubleValue, AssignOp_e assignOp);
// Reads it, in macro units: doubles and colour channels into *doubleOut, the rest into *argOut
// (strings as a const char * owned by the style, sets as the Set_a *). Code 2 for a path that
// holds no value.
SetValueReturnCode_e GetStyleRecordValue(const StyleRecord_s &record, void *base, const int path[7], int depth,
                                         double *doubleOut, ArbParam_t *argOut);

// ---- the tree --------------------------------------------------------------------------------

// Sorts a major row: a frame style row, a general style row, or neither.
void CategorizeMajorCommand(int row, bool *isFrame, bool *isGeneral);

// Changes one value. path holds up to seven entries (the major row first), -1 where unused;
// behind $!GLOBALCOLORMAP and behind a numbered block such as CONTROLPOINT the entry is the
// number as written (1 to 4, 1 and up). $!COLORMAP and $!COLORSPECTRUM address colour map
// group 1. argValue carries integers, enumerated values, strings (const char *) and sets;
// doubleValue doubles and colour channels.
SetValueReturnCode_e SetValue7(ArbParam_t argValue, double doubleValue, AssignOp_e assignOp, const int path[7],
                               bool raiseStateChange);
// The text of the last failure of SetValue7.
const std::string &GetLastSetValueErrorString();

// A value of an INTERFACE row, as the interface sets one: integers, enumerated values and strings
// in argValue, doubles in doubleValue.
SetValueReturnCode_e SetInterfaceValue(int row, ArbParam_t argValue, double doubleValue);
// Reads one value (see GetStyleRecordValue). Code 2 for a path that holds no value.
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

// Work that follows a style change in the layers above the style tree, registered by them; a
// null entry does nothing.
struct SetValueHooks_s {
    // A colour map group, a basic colour or LINKCOLORMAPS changed: the colour tables follow.
    void (*ColorMapChanged)();
    // GLOBALCONTOUR n VAR of the current frame went from oldVar to newVar (group and variables
    // 0-based, -1 for none); false puts the old variable back.
    bool (*NewContourVar)(int group, int oldVar, int newVar);
};
extern SetValueHooks_s SetValueHooks;
