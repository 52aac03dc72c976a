// Lookups in the macro vocabulary tables of vocabtables.cpp. Command names are found by bisection
// over the prebuilt sort maps; enumerated sets are small and are walked row by row.
#include "base/macro/vocab.h"

#include <cctype>
#include <cstring>

#include "base/kernel/orvassert.h"

namespace {

// Longer than any name of the tables, so that a longer word is known not to match without
// copying all of it.
constexpr size_t MaxNameLength = 79;

const char *ActionName(int index) { return ActionCommandList[index]; }
const char *ControlName(int index) { return ControlCommandList[index]; }
const char *SetValueName(int index) { return SetValueCommandList[index].Name; }

// Bisection over a sort map; the table index whose name equals `name`, or -1.
int FindInSortMap(const int16_t *sortMap, int count, const char *(*nameOf)(int), const char *name) {
    int low = 0;
    int high = count - 1;
    while (low <= high) {
        int middle = low + (high - low) / 2;
        int order = strcmp(nameOf(sortMap[middle]), name);
        if (order == 0) return sortMap[middle];
        if (order < 0)
            low = middle + 1;
        else
            high = middle - 1;
    }
    return -1;
}

bool EqualIgnoringCase(const char *name, const char *text) {
    for (; *name != '\0' && *text != '\0'; ++name, ++text)
        if (*name != toupper(static_cast<unsigned char>(*text))) return false;
    return *name == *text;
}

bool SortMapIsOrdered(const int16_t *sortMap, int count, const char *(*nameOf)(int)) {
    for (int position = 1; position < count; ++position) {
        const char *previous = nameOf(sortMap[position - 1]);
        const char *current = nameOf(sortMap[position]);
        int order = strcmp(previous, current);
        // Equal names are allowed only where both are empty (the unnamed set-value rows).
        if (order > 0 || (order == 0 && current[0] != '\0')) return false;
    }
    return true;
}

}  // namespace

void InitMacroVocabulary() {
    CHECK(SortMapIsOrdered(MacroActionNameSortMap, ActionCommandListItemCount, ActionName));
    CHECK(SortMapIsOrdered(MacroControlNameSortMap, ControlCommandListItemCount, ControlName));
    CHECK(SortMapIsOrdered(MacroSetValueNameSortMap, SetValueCommandListItemCount, SetValueName));
    for (int row = 1; row < NumEnumValues; ++row) CHECK(CommandEnumMap[row - 1].Set <= CommandEnumMap[row].Set);
    CHECK(CommandEnumMap[NumEnumValues].Name == nullptr);
}

bool GetCommandText(int index, MacroToken_e token, std::string *text) {
    REQUIRE(text != nullptr);
    const char *name = nullptr;
    if (index >= 0) {
        if (token == MacroToken_Action && index < ActionCommandListItemCount)
            name = ActionCommandList[index];
        else if (token == MacroToken_Control && index < ControlCommandListItemCount)
            name = ControlCommandList[index];
        else if (token == MacroToken_SetValue && index < SetValueCommandListItemCount)
            name = SetValueCommandList[index].Name;
    }
    *text = name != nullptr ? name : "<?>";
    return name != nullptr;
}

bool IsParentCommand(int index, MacroToken_e token) {
    return token == MacroToken_SetValue && index >= 0 && index < SetValueCommandListItemCount &&
           SetValueCommandList[index].Kind == SetValueKind_Parent;
}

bool IsMajorCommand(int index, MacroToken_e token) {
    if (index < 0) return false;
    switch (token) {
        case MacroToken_Action: return index < ActionCommandListItemCount;
        case MacroToken_Control: return index < ControlCommandListItemCount;
        case MacroToken_SetValue: return index < SetValueCommandListItemCount && SetValueCommandList[index].IsMajor;
        default: return false;
    }
}

int GetActionCommandMandatoryEnumCommandNumber(int action) {
    REQUIRE(action >= 0 && action < ActionCommandListItemCount);
    return ActionCommandSyntaxList[action].MandatoryRow;
}

bool IdentifyMacroCommandString(const char *text, MacroToken_e *token, int *index) {
    REQUIRE(text != nullptr && token != nullptr && index != nullptr);
    size_t length = strlen(text);
    // An empty word would otherwise find one of the unnamed set-value rows.
    if (length == 0 || length > MaxNameLength) return false;
    char name[MaxNameLength + 1];
    for (size_t i = 0; i <= length; ++i) name[i] = static_cast<char>(toupper(static_cast<unsigned char>(text[i])));

    int found = FindInSortMap(MacroActionNameSortMap, ActionCommandListItemCount, ActionName, name);
    if (found >= 0) {
        *token = MacroToken_Action;
        *index = found;
        return true;
    }
    found = FindInSortMap(MacroControlNameSortMap, ControlCommandListItemCount, ControlName, name);
    if (found >= 0) {
        *token = MacroToken_Control;
        *index = found;
        return true;
    }
    found = FindInSortMap(MacroSetValueNameSortMap, SetValueCommandListItemCount, SetValueName, name);
    if (found >= 0) {
        *token = MacroToken_SetValue;
        *index = found;
        return true;
    }
    return false;
}

int GetSetValueKind(int row) {
    REQUIRE(row >= 0 && row < SetValueCommandListItemCount);
    return SetValueCommandList[row].Kind;
}

int GetSetValueEnumSet(int row) {
    int kind = GetSetValueKind(row);
    return kind >= SetValueKind_FirstEnumSet ? kind : -1;
}

int GetEnumSetOffset(int set) {
    // The rows are ordered by set number: bisect to any row of the set, then walk back to its
    // first row.
    int low = 0;
    int high = NumEnumValues - 1;
    while (low <= high) {
        int middle = low + (high - low) / 2;
        if (CommandEnumMap[middle].Set < set) {
            low = middle + 1;
        } else if (CommandEnumMap[middle].Set > set) {
            high = middle - 1;
        } else {
            while (middle > 0 && CommandEnumMap[middle - 1].Set == set) --middle;
            return middle;
        }
    }
    return -1;
}

bool GetEnumOffset(int value, int row, bool isPolarLineFrame, int *offset) {
    REQUIRE(offset != nullptr);
    if (row < 0 || row >= SetValueCommandListItemCount) return false;
    int set = GetSetValueEnumSet(row);
    int first = set >= 0 ? GetEnumSetOffset(set) : -1;
    if (first < 0) return false;
    // A polar line plot names its function dependency THETAINDEPENDENT or RINDEPENDENT, the later
    // aliases of XINDEPENDENT and YINDEPENDENT.
    bool lastWins = isPolarLineFrame && row == MacroSetValue_FUNCTIONDEPENDENCY;
    int found = -1;
    for (int enumRow = first; enumRow < NumEnumValues && CommandEnumMap[enumRow].Set == set; ++enumRow) {
        if (CommandEnumMap[enumRow].Value != value) continue;
        found = enumRow;
        if (!lastWins) break;
    }
    if (found < 0) return false;
    *offset = found;
    return true;
}

bool GetEnumText(int value, int row, bool isPolarLineFrame, std::string *text) {
    REQUIRE(text != nullptr);
    int offset = 0;
    if (!GetEnumOffset(value, row, isPolarLineFrame, &offset)) return false;
    *text = CommandEnumMap[offset].Name;
    return true;
}

bool GetEnumValueFromString(int set, const char *text, int *value) {
    REQUIRE(text != nullptr && value != nullptr);
    int first = GetEnumSetOffset(set);
    if (first < 0) return false;
    for (int enumRow = first; enumRow < NumEnumValues && CommandEnumMap[enumRow].Set == set; ++enumRow) {
        if (EqualIgnoringCase(CommandEnumMap[enumRow].Name, text)) {
            *value = CommandEnumMap[enumRow].Value;
            return true;
        }
    }
    return false;
}

bool IsEnumValueInSet(int set, int value) {
    int first = GetEnumSetOffset(set);
    if (first < 0) return false;
    for (int enumRow = first; enumRow < NumEnumValues && CommandEnumMap[enumRow].Set == set; ++enumRow)
        if (CommandEnumMap[enumRow].Value == value) return true;
    return false;
}

const ActionOption_s *FindActionOption(int action, int row, int parentRow) {
    REQUIRE(action >= 0 && action < ActionCommandListItemCount);
    const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
    for (int i = syntax.FirstOption; i < syntax.FirstOption + syntax.NumOptions; ++i)
        if (ActionOptionList[i].Row == row && ActionOptionList[i].ParentRow == parentRow) return &ActionOptionList[i];
    return nullptr;
}
