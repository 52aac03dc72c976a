// Lookups in the macro vocabulary: the name of a command or option by its index and the index
// by its name, the kinds of set-value rows, the positional option of action commands, and
// enumerated values by name and back. The tables themselves, and a named constant for each of
// their rows, are in vocabtables.h, generated from vocab.tables by scripts/gen-vocab.
// Names are looked up only while macro text is compressed; afterwards everything goes by index.
// Relies on: vocabtables.
#pragma once

#include <cstdint>
#include <string>

#include "base/macro/vocabtables.h"

// The class of a token of macro text. The first three are the vocabulary tables; compressed text
// writes an action command as $ and its index, a set-value row as @ and its index and a control
// command as ! and its index.
enum MacroToken_e : int8_t {
    MacroToken_Action = 1,           // $!NAME
    MacroToken_SetValue = 2,         // NAME, or $!NAME for a major row
    MacroToken_Control = 3,          // $!NAME
    MacroToken_Separator = 5,        // . directly before a letter
    MacroToken_CallParameters = 6,   // (...) directly behind $!RUNMACROFUNCTION "name"
    MacroToken_SubCommandStart = 7,  // {
    MacroToken_SubCommandEnd = 8,    // }
    MacroToken_String = 9,           // "..." or '...'
    MacroToken_MacroVar = 10,        // |name|
    MacroToken_AssignOp = 11,        // =, +=, -=, *=, /=
    MacroToken_RelOp = 12,           // ==, !=, <, >, <=, >=, <>
    MacroToken_Set = 13,             // [...]
    MacroToken_Number = 14,          // a real number with an optional unit suffix
    MacroToken_Expression = 15,      // (...)
    MacroToken_Minus = 16            // - alone
};

// Checks at start-up what the lookups rely on: the name sort maps in strcmp order and the
// enumerated sets in increasing set order. Calling it again does no harm.
void InitMacroVocabulary();

// Puts the name of row `index` of the table of `token` (action, control or set-value) into
// *text. An index out of range, or another token class, gives false and leaves "<?>".
bool GetCommandText(int index, MacroToken_e token, std::string *text);
// True for a set-value row of kind parent (one that opens a sub-command block).
bool IsParentCommand(int index, MacroToken_e token);
// True for every action and control command and for a set-value row that is a $! command.
bool IsMajorCommand(int index, MacroToken_e token);
// The set-value row holding the enumerated set of the positional option of an action command
// (the word directly behind its name), or -1 for an action that has none.
int GetActionCommandMandatoryEnumCommandNumber(int action);

// Finds a command word (without its $!): the text is taken in upper case and must equal a name
// exactly, with no abbreviation. Action names are searched first, then control names, then
// set-value names. False, with *token and *index untouched, if nothing has the name.
bool IdentifyMacroCommandString(const char *text, MacroToken_e *token, int *index);

// The kind of a set-value row: a SetValueKind_e, or for an enumerated row its set number.
int GetSetValueKind(int row);
// The enumerated set of a set-value row, or -1 for a row of another kind.
int GetSetValueEnumSet(int row);

// The first row of CommandEnumMap that belongs to `set`, or -1 for a set that does not exist.
int GetEnumSetOffset(int set);
// The CommandEnumMap row that writes `value` for set-value row `row`: the first row of the set
// with that value. For FUNCTIONDEPENDENCY in a frame of polar line plot type the last one wins,
// which names the polar spellings. False if the row is not enumerated or no name has the value.
bool GetEnumOffset(int value, int row, bool isPolarLineFrame, int *offset);
// The name GetEnumOffset finds; false (and *text untouched) where it finds none.
bool GetEnumText(int value, int row, bool isPolarLineFrame, std::string *text);
// The value of the first row of `set` whose name equals the text, in any case.
bool GetEnumValueFromString(int set, const char *text, int *value);
// True if some name of `set` has `value`.
bool IsEnumValueInSet(int set, int value);

// The option entry that lets action command `action` take set-value row `row`, standing at the
// top level of the command (parentRow -1) or in the block of parent option `parentRow`; null if
// the action does not take it there.
const ActionOption_s *FindActionOption(int action, int row, int parentRow);
