// Action commands of macros: the options behind an action's name are read into one record (the
// positional argument, then each named option with its value), checked against what the action
// accepts and requires, and handed to the action's handler, which calls the Action_ operation.
// Relies on: macrocomp (scanning), vocab (the option tables), the Action_ operations.
#pragma once

#include <string>
#include <vector>

#include "base/kernel/set.h"
#include "base/kernel/types.h"
#include "base/macro/macrocomp.h"

// One named option of an action command, as read.
struct ActionOptionValue_s {
    int Row = -1;        // the option (an alias is stored as the option it stands for)
    int ParentRow = -1;  // the parent option whose block holds it, or -1
    int Kind = 0;        // SetValueKind_e or an enumerated set
    double Double = 0.0;
    LgIndex_t Integer = 0;  // integers, colours and enumerated values
    std::string Text;       // strings
    Set_a *Set = nullptr;   // sets (owned)
    AssignOp_e Op = AssignOp_Equals;
    std::string Block;      // the compressed text of a parent block that the handler reads itself
};

// An action command read from its compressed text.
struct ActionCommand_s {
    int Action = -1;
    int Line = 0;
    const char *Command = nullptr;  // the whole compressed command, for messages
    const char *RawData = nullptr;
    std::vector<std::string> Parameters;  // of the running macro function call
    // The positional argument, by the action's form.
    std::string String;
    LgIndex_t Integer = 0;
    std::string Variable;
    Set_a *Set = nullptr;
    int Mandatory = -1;
    int Group = 1;
    std::vector<ActionOptionValue_s> Options;

    ActionCommand_s() = default;
    ActionCommand_s(const ActionCommand_s &) = delete;
    ActionCommand_s &operator=(const ActionCommand_s &) = delete;
    ~ActionCommand_s();

    // The option, or null if the command does not give it.
    const ActionOptionValue_s *find(int row, int parentRow = -1) const;
    bool flag(int row, bool defaultValue, int parentRow = -1) const;
    double number(int row, double defaultValue, int parentRow = -1) const;
    LgIndex_t integer(int row, LgIndex_t defaultValue, int parentRow = -1) const;
    // Reports through ErrBadMacro and gives false (for handlers).
    bool fail(const std::string &message) const;
    // "ACTION: NAME" (with the positional text while the line stays within 60 columns) to the
    // batch log, and to the debug stream with PRINTDEBUG; handlers call it after their checks.
    void logAction() const;
};

// The raw data section of a command with its macro variables replaced (the parameters of the
// running function call included).
struct CookedRawData_s {
    char *Text = nullptr;
    const char *Raw = nullptr;
    CookedRawData_s() = default;
    CookedRawData_s(const CookedRawData_s &) = delete;
    CookedRawData_s &operator=(const CookedRawData_s &) = delete;
    ~CookedRawData_s() { DeallocRawMacroData(&Text, Raw); }
};
// False, after "Missing RAWDATA sub-option(s) in $!X Command.", when the command has none.
bool CookActionRawData(const ActionCommand_s &cmd, CookedRawData_s *cooked);

// Reads the options of an action behind its name (text points there), checks them and runs the
// action's handler.
bool ProcessActionCommand(int action, const char *text, int line, const char *command, const char *rawData,
                          const std::vector<std::string> &parameters);
// Reads the command without running it (for tests and for the journal of loads).
bool ParseActionCommand(int action, const char *text, int line, const char *command, ActionCommand_s *parsed);

// The file names of a $!READDATASET command of a journal (compressed or as text).
bool ExtractFileNamesFromLoadCommand(const char *command, std::vector<std::string> *names);
