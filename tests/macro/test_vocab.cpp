// The macro vocabulary: the committed tables are what their data file gives and the generator
// refuses a broken data file; counts, and the row numbers compressed commands and other modules
// rely on; the order of the name sort maps; uniqueness of names; the tie rules of name and value
// lookups; and what the action commands accept and require. Expected rows and names are typed
// here from the vocabulary as users know it, not read back from the generated tables.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/macro/vocab.h"

namespace {

// The table index of a command word, or -1; the token class must be `expected`.
int Lookup(const char *name, MacroToken_e expected) {
    MacroToken_e token = MacroToken_String;
    int index = -1;
    if (!IdentifyMacroCommandString(name, &token, &index)) return -1;
    return token == expected ? index : -2;
}
int Row(const char *name) { return Lookup(name, MacroToken_SetValue); }
int Action(const char *name) { return Lookup(name, MacroToken_Action); }

std::string Name(int index, MacroToken_e token) {
    std::string text;
    GetCommandText(index, token, &text);
    return text;
}

int EnumValue(int set, const char *name) {
    int value = -9999;
    EXPECT_TRUE(GetEnumValueFromString(set, name, &value)) << name << " in set " << set;
    return value;
}

std::string EnumText(int value, int row, bool isPolarLineFrame = false) {
    std::string text = "(none)";
    GetEnumText(value, row, isPolarLineFrame, &text);
    return text;
}

// The options an action requires, given the values of its enumerated options (keyed by row; the
// positional option under the action's mandatory row).
std::set<int> Required(int action, const std::map<int, int> &values) {
    std::set<int> required;
    const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
    for (int i = syntax.FirstRequirement; i < syntax.FirstRequirement + syntax.NumRequirements; ++i) {
        const ActionRequirement_s &requirement = ActionRequirementList[i];
        bool applies = requirement.WhenRow < 0;
        auto given = values.find(requirement.WhenRow);
        for (int v = 0; !applies && given != values.end() && v < requirement.NumWhenValues; ++v)
            applies = ActionRequirementValueList[requirement.FirstWhenValue + v] == given->second;
        if (applies) required.insert(requirement.Row);
    }
    return required;
}

int RunShell(const std::string &command) {
    int status = std::system(command.c_str());
    return (status != -1 && WIFEXITED(status)) ? WEXITSTATUS(status) : -1;
}

}  // namespace

TEST(MacroVocabGenerator, CommittedTablesAreWhatTheDataFileGives) {
    std::string command = std::string("python3 '") + ORVANEX_SOURCE_DIR + "/scripts/gen-vocab' --check";
    EXPECT_EQ(RunShell(command), 0);
}

// The generator run on a copy of the tree: an edited output is noticed, and data files with a
// missing row or an undefined set are refused.
TEST(MacroVocabGenerator, CheckNoticesStaleOutputAndBadData) {
    char scratch[] = "/tmp/orvanex-vocab-XXXXXX";
    ASSERT_NE(mkdtemp(scratch), nullptr);
    std::string root = scratch;
    std::string source = ORVANEX_SOURCE_DIR;
    ASSERT_EQ(RunShell("mkdir -p '" + root + "/scripts' '" + root + "/base/macro' && cp '" + source +
                       "/scripts/gen-vocab' '" + root + "/scripts/' && cp '" + source + "/base/macro/vocab.tables' '" +
                       source + "/base/macro/vocabtables.h' '" + source + "/base/macro/vocabtables.cpp' '" + root +
                       "/base/macro/'"),
              0);
    std::string check = "python3 '" + root + "/scripts/gen-vocab' --check 2>/dev/null";
    EXPECT_EQ(RunShell(check), 0);

    {
        std::ofstream edit(root + "/base/macro/vocabtables.cpp", std::ios::app);
        edit << "// edited by hand\n";
    }
    EXPECT_EQ(RunShell(check), 1);
    EXPECT_EQ(RunShell("python3 '" + root + "/scripts/gen-vocab'"), 0);
    EXPECT_EQ(RunShell(check), 0);

    std::string tables = root + "/base/macro/vocab.tables";
    std::string original;
    {
        std::ifstream in(tables);
        std::stringstream text;
        text << in.rdbuf();
        original = text.str();
    }
    auto checkWith = [&](const std::string &from, const std::string &to) {
        std::string changed = original;
        size_t at = changed.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        if (at != std::string::npos) changed.replace(at, from.size(), to);
        std::ofstream(tables) << changed;
        return RunShell(check);
    };
    EXPECT_EQ(checkWith(" SHOWMESH:100 ", " "), 2);                    // later rows would shift
    EXPECT_EQ(checkWith("TWODDRAWORDER:180", "TWODDRAWORDER:157"), 2);  // no set 157
    EXPECT_EQ(checkWith("FIELD:P", "MESH:P"), 2);                       // a name twice
    EXPECT_EQ(checkWith("  require SOURCEMAP", "  require SOURCEMAPS"), 2);
    RunShell("rm -rf '" + root + "'");
}

TEST(MacroVocabCounts, TablesHaveTheirSizes) {
    InitMacroVocabulary();
    InitMacroVocabulary();  // a second start-up check changes nothing
    EXPECT_EQ(ActionCommandListItemCount, 128);
    EXPECT_EQ(ControlCommandListItemCount, 16);
    EXPECT_EQ(SetValueCommandListItemCount, 1390);
    EXPECT_EQ(NumEnumValues, 861);
    EXPECT_EQ(CommandEnumMap[861].Name, nullptr);
    for (int row = 0; row < NumEnumValues; ++row) {
        ASSERT_NE(CommandEnumMap[row].Name, nullptr) << row;
        EXPECT_NE(CommandEnumMap[row].Name[0], '\0') << row;
    }

    int majors = 0;
    std::vector<int> unnamed;
    for (int row = 0; row < SetValueCommandListItemCount; ++row) {
        majors += SetValueCommandList[row].IsMajor ? 1 : 0;
        if (SetValueCommandList[row].Name[0] == '\0') unnamed.push_back(row);
    }
    EXPECT_EQ(majors, 67);
    EXPECT_EQ(unnamed,
              (std::vector<int>{1022, 1023, 1024, 1025, 1026, 1027, 1028, 1047, 1048, 1072, 1090, 1091, 1092}));
    for (int row : unnamed) EXPECT_FALSE(SetValueCommandList[row].IsMajor) << row;
}

TEST(MacroVocabCounts, EnumeratedSetsAreNumberedAndOrdered) {
    std::set<int> sets;
    for (int row = 0; row < NumEnumValues; ++row) {
        sets.insert(CommandEnumMap[row].Set);
        if (row > 0) {
            EXPECT_LE(CommandEnumMap[row - 1].Set, CommandEnumMap[row].Set) << row;
        }
    }
    std::set<int> expected;
    for (int set = 100; set <= 248; ++set)
        if (set != 157 && set != 161) expected.insert(set);
    EXPECT_EQ(sets, expected);
    EXPECT_EQ(GetEnumSetOffset(100), 0);
    EXPECT_EQ(GetEnumSetOffset(157), -1);
    EXPECT_EQ(GetEnumSetOffset(161), -1);
    EXPECT_EQ(GetEnumSetOffset(99), -1);
    EXPECT_EQ(GetEnumSetOffset(249), -1);
    // The offset is the first row of its set, wherever the bisection lands.
    for (int set : expected) {
        int first = GetEnumSetOffset(set);
        ASSERT_GE(first, 0) << set;
        EXPECT_EQ(CommandEnumMap[first].Set, set);
        if (first > 0) {
            EXPECT_LT(CommandEnumMap[first - 1].Set, set);
        }
    }
    // Every enumerated set-value row names a set that exists.
    for (int row = 0; row < SetValueCommandListItemCount; ++row) {
        int set = GetSetValueEnumSet(row);
        if (set >= 0) {
            EXPECT_GE(GetEnumSetOffset(set), 0) << row;
        }
    }
    // First and last named rows, and the largest set.
    EXPECT_STREQ(CommandEnumMap[0].Name, "YES");
    EXPECT_EQ(CommandEnumMap[0].Value, 1);
    EXPECT_EQ(CommandEnumMap[860].Set, 248);
    EXPECT_STREQ(CommandEnumMap[860].Name, "ALWAYS");
    EXPECT_EQ(CommandEnumMap[860].Value, 2);
}

// Row numbers that compressed commands carry and that the scanner, the style tree and the
// recorder use by number.
TEST(MacroVocabRows, RowsOtherModulesUseByNumber) {
    EXPECT_EQ(Row("RAWDATA"), 1033);
    EXPECT_EQ(GetSetValueKind(1033), SetValueKind_RawData);
    EXPECT_EQ(GetSetValueKind(1033), 15);
    // Group-numbered major commands.
    EXPECT_EQ(Row("GLOBALCONTOUR"), 525);
    EXPECT_EQ(Row("GLOBALISOSURFACE"), 535);
    EXPECT_EQ(Row("ISOSURFACEATTRIBUTES"), 536);
    EXPECT_EQ(Row("GLOBALSLICE"), 537);
    EXPECT_EQ(Row("SLICEATTRIBUTES"), 538);
    EXPECT_EQ(Row("GLOBALCOLORMAP"), 1371);
    for (int row : {525, 535, 536, 537, 538, 1371}) {
        EXPECT_TRUE(IsMajorCommand(row, MacroToken_SetValue)) << row;
        EXPECT_TRUE(IsParentCommand(row, MacroToken_SetValue)) << row;
    }
    // Numbered parent options.
    EXPECT_EQ(Row("COLORMAPOVERRIDE"), 233);
    EXPECT_EQ(Row("CONSTRAINT"), 305);
    EXPECT_EQ(Row("CONTROLPOINT"), 936);
    EXPECT_EQ(Row("XDETAIL"), 374);
    EXPECT_EQ(Row("YDETAIL"), 375);
    EXPECT_EQ(Row("XYAXIS"), 398);
    EXPECT_EQ(Row("XYLINEAXIS"), 399);
    for (int row : {233, 305, 936, 374, 375}) {
        EXPECT_TRUE(IsParentCommand(row, MacroToken_SetValue)) << row;
        EXPECT_FALSE(IsMajorCommand(row, MacroToken_SetValue)) << row;
    }
    EXPECT_TRUE(IsMajorCommand(398, MacroToken_SetValue));
    EXPECT_TRUE(IsMajorCommand(399, MacroToken_SetValue));
    // The operation of COLORMAPCONTROL, with its group number in front.
    EXPECT_EQ(Name(1025, MacroToken_SetValue), "");
    EXPECT_EQ(GetSetValueEnumSet(1025), 193);
    // Style of zones and maps.
    EXPECT_EQ(Row("ACTIVEFIELDZONES"), 507);
    EXPECT_EQ(Row("ACTIVEFIELDMAPS"), 508);
    EXPECT_EQ(Row("FIELD"), 509);
    EXPECT_EQ(Row("FIELDMAP"), 510);
    EXPECT_EQ(Row("ACTIVEXYMAPS"), 543);
    EXPECT_EQ(Row("ACTIVELINEMAPS"), 544);
    EXPECT_EQ(Row("XYMAP"), 547);
    EXPECT_EQ(Row("LINEMAP"), 548);
    EXPECT_EQ(GetSetValueKind(507), SetValueKind_Set);
    EXPECT_TRUE(IsMajorCommand(509, MacroToken_SetValue));
    EXPECT_TRUE(IsParentCommand(Row("MESH"), MacroToken_SetValue));
    EXPECT_EQ(GetSetValueEnumSet(Row("SHOW")), 100);
    // $!VIEW FIT compresses to "$17 0", $!VARSET to "!11".
    EXPECT_EQ(Action("VIEW"), 17);
    EXPECT_EQ(EnumValue(GetSetValueEnumSet(GetActionCommandMandatoryEnumCommandNumber(17)), "FIT"), 0);
    EXPECT_EQ(Lookup("VARSET", MacroToken_Control), 11);
}

TEST(MacroVocabRows, PositionalOptionsOfActions) {
    struct Pair {
        const char *action;
        int row;
        int set;
    };
    const Pair pairs[] = {{"VIEW", 1022, 171},         {"WORKSPACEVIEW", 1023, 170},
                          {"FRAMECONTROL", 1047, 194}, {"PICK", 1024, 181},
                          {"CONTOURLABELS", 1027, 183}, {"CONTOURLEVELS", 1026, 182},
                          {"COLORMAPCONTROL", 1025, 193}, {"STREAMTRACE", 1028, 184},
                          {"SETSTYLEBASE", 1038, 189}, {"ROTATE", 1072, 196},
                          {"ROTATE3DVIEW", 1072, 196}, {"DOUBLEBUFFER", 1090, 198},
                          {"DRAWGRAPHICS", 1091, 100}, {"LAUNCHDIALOG", 1121, 200},
                          {"DROPDIALOG", 1121, 200},   {"SHOWMOUSEPOINTER", 1092, 100},
                          {"SETFRAMEBACKGROUNDCOLOR", 1048, 101}};
    std::set<int> withPositional;
    for (const Pair &pair : pairs) {
        int action = Action(pair.action);
        ASSERT_GE(action, 0) << pair.action;
        withPositional.insert(action);
        EXPECT_EQ(GetActionCommandMandatoryEnumCommandNumber(action), pair.row) << pair.action;
        EXPECT_EQ(GetSetValueEnumSet(pair.row), pair.set) << pair.action;
    }
    EXPECT_EQ(withPositional.size(), 17u);
    for (int action = 0; action < ActionCommandListItemCount; ++action)
        if (withPositional.count(action) == 0) {
            EXPECT_EQ(GetActionCommandMandatoryEnumCommandNumber(action), -1) << Name(action, MacroToken_Action);
        }
    EXPECT_EQ(ActionCommandSyntaxList[Action("COLORMAPCONTROL")].Form, ActionArgForm_GroupAndMandatory);
    EXPECT_EQ(ActionCommandSyntaxList[Action("VIEW")].Form, ActionArgForm_Mandatory);
}

// Sets whose names other modules use as their own enumerations.
TEST(MacroVocabRows, SetsOtherModulesMirror) {
    const char *assignOps[] = {"EQUALS",        "PLUSEQUALS",    "MINUSEQUALS",   "TIMESEQUALS",   "DIVIDEEQUALS",
                               "CONVERTFROMCM", "CONVERTFROMIN", "CONVERTFROMPT", "CONVERTFROMPIX"};
    int first = GetEnumSetOffset(239);
    for (int i = 0; i < 9; ++i) {
        EXPECT_STREQ(CommandEnumMap[first + i].Name, assignOps[i]);
        EXPECT_EQ(CommandEnumMap[first + i].Value, i);
    }
    EXPECT_EQ(CommandEnumMap[first + 9].Set, 240);
    EXPECT_EQ(EnumValue(236, "V75"), 0);
    EXPECT_EQ(EnumValue(236, "V80"), 1);
    EXPECT_EQ(EnumValue(236, "V100"), 2);
    EXPECT_EQ(EnumValue(201, "FOREIGN"), 0);
    EXPECT_EQ(EnumValue(201, "V7STANDARD"), 1);
    EXPECT_EQ(EnumValue(201, "V7ACTIVEX"), 2);
    EXPECT_EQ(EnumValue(143, "AUTO"), 255);
    EXPECT_EQ(EnumValue(143, "BIT"), 6);
    EXPECT_EQ(EnumValue(144, "NODAL"), 1);
    EXPECT_EQ(EnumValue(144, "CELLCENTERED"), 0);
}

// A sample of rows across the tables, as the vocabulary lists them.
TEST(MacroVocabRows, SampledRowsHaveTheirNamesAndKinds) {
    struct SetValueRow {
        int row;
        const char *name;
        bool major;
        int kind;
    };
    const SetValueRow rows[] = {{0, "TWODDRAWORDER", false, 180},  {45, "LETTER", false, 1},
                                {82, "NUMSEGPTS", false, 10},     {139, "FRAMELINKING", true, 1},
                                {209, "ZONESET", false, 9},        {458, "FUNCTIONDEPENDENCY", false, 177},
                                {804, "XORCOLOR", false, 7},       {850, "MINPIXELSFORDRAG", false, 6},
                                {1001, "MNEMONIC", false, 13},     {1004, "KEYSTROKE", false, 2},
                                {1083, "FNAME", false, 14},        {1121, "DIALOGOP", false, 200},
                                {1150, "VARSHAREZONELIST", false, 12}, {1216, "CLIENTDATA", false, 4},
                                {1375, "IVERSION", false, 5},      {1389, "GLOBALLINKING", true, 1}};
    for (const SetValueRow &expected : rows) {
        EXPECT_EQ(Name(expected.row, MacroToken_SetValue), expected.name);
        EXPECT_EQ(SetValueCommandList[expected.row].IsMajor, expected.major) << expected.name;
        EXPECT_EQ(GetSetValueKind(expected.row), expected.kind) << expected.name;
    }
    EXPECT_EQ(Name(0, MacroToken_Action), "REDRAW");
    EXPECT_EQ(Name(63, MacroToken_Action), "INVERSEDISTINTERPOLATE");
    EXPECT_EQ(Name(109, MacroToken_Action), "ADDONCOMMAND");
    EXPECT_EQ(Name(127, MacroToken_Action), "SETFRAMEBACKGROUNDCOLOR");
    EXPECT_EQ(Name(0, MacroToken_Control), "BREAK");
    EXPECT_EQ(Name(7, MacroToken_Control), "INCLUDEMACRO");
    EXPECT_EQ(Name(14, MacroToken_Control), "ELSE");
    EXPECT_EQ(Name(15, MacroToken_Control), "ELSEIF");
    EXPECT_EQ(EnumValue(101, "RGBCOLOR"), -6);
    EXPECT_EQ(EnumValue(101, "CUSTOM56"), 63);
    EXPECT_EQ(EnumValue(134, "INVALID"), 255);
    EXPECT_EQ(EnumValue(200, "PERFORMANCE"), 96);
    EXPECT_EQ(EnumValue(238, "GEOM"), 36);
    EXPECT_EQ(EnumValue(192, "TWISTROTATEVIEWER"), 18);
}

TEST(MacroVocabSortMaps, MapsAreSortedPermutations) {
    auto checkMap = [](const int16_t *map, int count, auto nameOf, int emptyNames) {
        std::set<int> seen(map, map + count);
        EXPECT_EQ(static_cast<int>(seen.size()), count);
        EXPECT_EQ(*seen.begin(), 0);
        EXPECT_EQ(*seen.rbegin(), count - 1);
        for (int i = 0; i < emptyNames; ++i) EXPECT_STREQ(nameOf(map[i]), "");
        for (int i = emptyNames + 1; i < count; ++i)
            EXPECT_LT(strcmp(nameOf(map[i - 1]), nameOf(map[i])), 0) << nameOf(map[i]);
    };
    checkMap(MacroActionNameSortMap, ActionCommandListItemCount, [](int i) { return ActionCommandList[i]; }, 0);
    checkMap(MacroControlNameSortMap, ControlCommandListItemCount, [](int i) { return ControlCommandList[i]; }, 0);
    checkMap(MacroSetValueNameSortMap, SetValueCommandListItemCount,
             [](int i) { return SetValueCommandList[i].Name; }, 13);
    EXPECT_STREQ(ControlCommandList[MacroControlNameSortMap[0]], "BREAK");
    EXPECT_STREQ(ControlCommandList[MacroControlNameSortMap[15]], "WHILE");
}

TEST(MacroVocabNames, NamesAreUniqueAcrossTables) {
    std::set<std::string> commands;
    for (int i = 0; i < ActionCommandListItemCount; ++i) EXPECT_TRUE(commands.insert(ActionCommandList[i]).second);
    for (int i = 0; i < ControlCommandListItemCount; ++i) EXPECT_TRUE(commands.insert(ControlCommandList[i]).second);
    std::set<std::string> setValues;
    for (int row = 0; row < SetValueCommandListItemCount; ++row) {
        std::string name = SetValueCommandList[row].Name;
        if (name.empty()) continue;
        EXPECT_TRUE(setValues.insert(name).second) << name;
        EXPECT_EQ(commands.count(name), 0u) << name;
        for (char c : name) EXPECT_TRUE((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) << name;
    }
    // Within a set a name stands once, except SETMAGNIFICATION, which carries two values.
    std::set<std::pair<int, std::string>> enumNames;
    int repeats = 0;
    for (int row = 0; row < NumEnumValues; ++row)
        if (!enumNames.insert({CommandEnumMap[row].Set, CommandEnumMap[row].Name}).second) {
            ++repeats;
            EXPECT_EQ(CommandEnumMap[row].Set, 171);
            EXPECT_STREQ(CommandEnumMap[row].Name, "SETMAGNIFICATION");
        }
    EXPECT_EQ(repeats, 1);
}

TEST(MacroVocabLookup, CommandWordsAnyCaseExactOnly) {
    MacroToken_e token = MacroToken_String;
    int index = -1;
    for (const char *word : {"FIELD", "field", "Field", "fIeLd"}) {
        ASSERT_TRUE(IdentifyMacroCommandString(word, &token, &index)) << word;
        EXPECT_EQ(token, MacroToken_SetValue);
        EXPECT_EQ(index, 509);
    }
    ASSERT_TRUE(IdentifyMacroCommandString("readdataset", &token, &index));
    EXPECT_EQ(token, MacroToken_Action);
    EXPECT_EQ(index, 2);
    ASSERT_TRUE(IdentifyMacroCommandString("ElseIf", &token, &index));
    EXPECT_EQ(token, MacroToken_Control);
    EXPECT_EQ(index, 15);
    // First and last of each sort order are reachable by the bisection.
    EXPECT_EQ(Action("ADDMACROPANELTITLE"), 100);
    EXPECT_EQ(Action("WRITESTYLESHEET"), 11);
    EXPECT_EQ(Row("A3"), 48);
    EXPECT_EQ(Row("ZZZ"), -1);

    token = MacroToken_Number;
    index = 1234;
    for (const char *word : {"FIEL", "FIELDS", "READDATA", "", "$!FIELD", "FIELD ", "ZEBRA2"}) {
        EXPECT_FALSE(IdentifyMacroCommandString(word, &token, &index)) << word;
        EXPECT_EQ(token, MacroToken_Number);
        EXPECT_EQ(index, 1234);
    }
    std::string tooLong(200, 'A');
    EXPECT_FALSE(IdentifyMacroCommandString(tooLong.c_str(), &token, &index));
}

TEST(MacroVocabLookup, CommandTextOutOfRangeGivesQuestionMark) {
    std::string text;
    EXPECT_TRUE(GetCommandText(509, MacroToken_SetValue, &text));
    EXPECT_EQ(text, "FIELD");
    struct Case {
        int index;
        MacroToken_e token;
    };
    for (const Case &bad : {Case{-1, MacroToken_Action}, Case{128, MacroToken_Action}, Case{16, MacroToken_Control},
                            Case{-1, MacroToken_Control}, Case{1390, MacroToken_SetValue},
                            Case{0, MacroToken_String}}) {
        text = "unchanged";
        EXPECT_FALSE(GetCommandText(bad.index, bad.token, &text)) << bad.index;
        EXPECT_EQ(text, "<?>");
    }
    EXPECT_TRUE(GetCommandText(127, MacroToken_Action, &text));
    EXPECT_TRUE(GetCommandText(15, MacroToken_Control, &text));
    EXPECT_TRUE(GetCommandText(1389, MacroToken_SetValue, &text));
    EXPECT_TRUE(GetCommandText(1022, MacroToken_SetValue, &text));  // an unnamed row has a name: empty
    EXPECT_EQ(text, "");
}

TEST(MacroVocabLookup, MajorAndParent) {
    EXPECT_TRUE(IsMajorCommand(0, MacroToken_Action));
    EXPECT_TRUE(IsMajorCommand(127, MacroToken_Action));
    EXPECT_FALSE(IsMajorCommand(128, MacroToken_Action));
    EXPECT_TRUE(IsMajorCommand(11, MacroToken_Control));
    EXPECT_FALSE(IsMajorCommand(Row("SHOW"), MacroToken_SetValue));
    EXPECT_FALSE(IsMajorCommand(Row("MESH"), MacroToken_SetValue));
    EXPECT_FALSE(IsMajorCommand(0, MacroToken_String));
    EXPECT_TRUE(IsParentCommand(Row("MESH"), MacroToken_SetValue));
    EXPECT_FALSE(IsParentCommand(Row("SHOW"), MacroToken_SetValue));
    EXPECT_FALSE(IsParentCommand(Row("MESH"), MacroToken_Action));  // index 198 of another table
    EXPECT_FALSE(IsParentCommand(-1, MacroToken_SetValue));
    EXPECT_FALSE(IsParentCommand(1390, MacroToken_SetValue));
}

TEST(MacroVocabEnums, FirstRowWithAValueIsWritten) {
    int show = Row("SHOW");
    EXPECT_EQ(EnumText(1, show), "YES");
    EXPECT_EQ(EnumText(0, show), "NO");
    for (const char *name : {"YES", "ON", "TRUE", "YEP", "yes", "On"}) EXPECT_EQ(EnumValue(100, name), 1) << name;
    for (const char *name : {"NO", "OFF", "FALSE", "NOPE"}) EXPECT_EQ(EnumValue(100, name), 0) << name;
    EXPECT_EQ(EnumText(2, show), "(none)");

    int dataType = Row("DATATYPE");
    EXPECT_EQ(EnumValue(143, "FLOAT"), 1);
    EXPECT_EQ(EnumValue(143, "SINGLE"), 1);
    EXPECT_EQ(EnumText(1, dataType), "SINGLE");
    EXPECT_EQ(EnumText(0, Row("CLIPPING")), "CLIPTOVIEWPORT");
    EXPECT_EQ(EnumValue(137, "CLIPTOAXES"), 0);
    EXPECT_EQ(EnumText(3, Row("EXPORTFORMAT")), "SUNRASTER");
    EXPECT_EQ(EnumValue(162, "SUNVIEW"), 3);
    EXPECT_EQ(EnumText(3, 1121), "PLOTATTRIBUTES");  // ZONEMAPSTYLE is the later name of 3

    // SETMAGNIFICATION stands twice; text reads the first (11), and both values write it.
    EXPECT_EQ(EnumValue(171, "SETMAGNIFICATION"), 11);
    EXPECT_EQ(EnumText(11, 1022), "SETMAGNIFICATION");
    EXPECT_EQ(EnumText(3, 1022), "SETMAGNIFICATION");

    int offset = -1;
    EXPECT_TRUE(GetEnumOffset(12, 1022, false, &offset));
    EXPECT_STREQ(CommandEnumMap[offset].Name, "NICEFIT");
    offset = -7;
    EXPECT_FALSE(GetEnumOffset(1, Row("MESH"), false, &offset));  // not enumerated
    EXPECT_FALSE(GetEnumOffset(1, -1, false, &offset));
    EXPECT_EQ(offset, -7);

    int value = 42;
    EXPECT_FALSE(GetEnumValueFromString(100, "YE", &value));
    EXPECT_FALSE(GetEnumValueFromString(100, "YESS", &value));
    EXPECT_FALSE(GetEnumValueFromString(157, "YES", &value));
    EXPECT_FALSE(GetEnumValueFromString(101, "YES", &value));
    EXPECT_EQ(value, 42);
    EXPECT_TRUE(IsEnumValueInSet(101, -6));
    EXPECT_FALSE(IsEnumValueInSet(101, -2));
    EXPECT_FALSE(IsEnumValueInSet(157, 0));
}

TEST(MacroVocabEnums, FunctionDependencyOfPolarLinePlots) {
    int dependency = Row("FUNCTIONDEPENDENCY");
    EXPECT_EQ(dependency, 458);
    EXPECT_EQ(EnumText(0, dependency, false), "XINDEPENDENT");
    EXPECT_EQ(EnumText(1, dependency, false), "YINDEPENDENT");
    EXPECT_EQ(EnumText(0, dependency, true), "THETAINDEPENDENT");
    EXPECT_EQ(EnumText(1, dependency, true), "RINDEPENDENT");
    // Only that row turns the rule round: a polar frame writes other aliases as usual.
    EXPECT_EQ(EnumText(1, Row("SHOW"), true), "YES");
    EXPECT_EQ(EnumText(0, Row("PICKSUBPOSITION"), true), "ALL");
}

TEST(MacroVocabActions, OptionsAndForms) {
    std::set<int> rawData;
    for (int action = 0; action < ActionCommandListItemCount; ++action) {
        const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
        if (syntax.TakesRawData) rawData.insert(action);
        for (int i = syntax.FirstOption; i < syntax.FirstOption + syntax.NumOptions; ++i) {
            const ActionOption_s &option = ActionOptionList[i];
            EXPECT_NE(SetValueCommandList[option.Row].Name[0], '\0');
            EXPECT_FALSE(SetValueCommandList[option.Row].IsMajor);
            if (option.ParentRow >= 0) {
                EXPECT_EQ(GetSetValueKind(option.ParentRow), SetValueKind_Parent);
            }
        }
        // Whatever is required is an option the command takes at its top level.
        for (int i = syntax.FirstRequirement; i < syntax.FirstRequirement + syntax.NumRequirements; ++i) {
            const ActionOption_s *option = FindActionOption(action, ActionRequirementList[i].Row, -1);
            ASSERT_NE(option, nullptr) << Name(action, MacroToken_Action);
            EXPECT_EQ(option->AsRow, option->Row);
        }
    }
    std::set<int> expectedRaw;
    for (const char *name : {"CONTOURLEVELS", "CREATESIMPLEXYZONE", "CREATESIMPLEZONE", "RAWCOLORMAP",
                             "EXTRACTFROMPOLYLINE", "STREAMTRACE", "ADDONCOMMAND", "ATTACHGEOM"})
        expectedRaw.insert(Action(name));
    EXPECT_EQ(rawData, expectedRaw);

    EXPECT_EQ(ActionCommandSyntaxList[Action("READDATASET")].Form, ActionArgForm_String);
    EXPECT_EQ(ActionCommandSyntaxList[Action("DELAY")].Form, ActionArgForm_Integer);
    EXPECT_EQ(ActionCommandSyntaxList[Action("GETFIELDVALUE")].Form, ActionArgForm_Variable);
    EXPECT_EQ(ActionCommandSyntaxList[Action("DELETEZONES")].Form, ActionArgForm_ZoneSet);
    EXPECT_EQ(ActionCommandSyntaxList[Action("ALTERDATA")].Form, ActionArgForm_OptionalZoneSet);
    EXPECT_EQ(ActionCommandSyntaxList[Action("DELETELINEMAPS")].Form, ActionArgForm_OptionalMapSet);
    EXPECT_EQ(ActionCommandSyntaxList[Action("SHIFTLINEMAPSTOTOP")].Form, ActionArgForm_MapSet);
    EXPECT_EQ(ActionCommandSyntaxList[Action("DELETEVARS")].Form, ActionArgForm_VarSet);
    EXPECT_EQ(ActionCommandSyntaxList[Action("QUIT")].Form, ActionArgForm_None);

    // Options that old and current files carry besides the listed ones.
    EXPECT_NE(FindActionOption(Action("SAVELAYOUT"), Row("USERELATIVEPATHS"), -1), nullptr);
    EXPECT_NE(FindActionOption(Action("OPENLAYOUT"), Row("ALTDATALOADINSTRUCTIONS"), -1), nullptr);
    EXPECT_NE(FindActionOption(Action("OPENLAYOUT"), Row("ALTPLOTFNAMES"), -1), nullptr);
    EXPECT_NE(FindActionOption(Action("WRITESTYLESHEET"), Row("INCLUDEPLOTSTYLE"), -1), nullptr);
    EXPECT_NE(FindActionOption(Action("FRAMECONTROL"), Row("X"), -1), nullptr);
    EXPECT_NE(FindActionOption(Action("FRAMECONTROL"), Row("Y"), -1), nullptr);
    int blanking = Action("ANIMATEIJKBLANKING");
    EXPECT_NE(FindActionOption(blanking, Row("FNAME"), -1), nullptr);
    for (const char *axis : {"I", "J", "K"})
        for (const char *bound : {"MIN", "MAX"})
            for (const char *second : {"", "2"}) {
                std::string name = std::string(axis) + bound + "FRACT" + second;
                EXPECT_NE(FindActionOption(blanking, Row(name.c_str()), -1), nullptr) << name;
            }
    EXPECT_EQ(FindActionOption(Action("REDRAW"), Row("FNAME"), -1), nullptr);

    // Index ranges are blocks with MIN, MAX and SKIP inside.
    int alterData = Action("ALTERDATA");
    EXPECT_NE(FindActionOption(alterData, Row("IRANGE"), -1), nullptr);
    EXPECT_NE(FindActionOption(alterData, Row("MIN"), Row("IRANGE")), nullptr);
    EXPECT_NE(FindActionOption(alterData, Row("SKIP"), Row("KRANGE")), nullptr);
    EXPECT_EQ(FindActionOption(alterData, Row("MIN"), -1), nullptr);

    // Old spellings taken for the current option.
    const ActionOption_s *zone = FindActionOption(Action("DUPLICATEZONE"), Row("ZONE"), -1);
    ASSERT_NE(zone, nullptr);
    EXPECT_EQ(zone->AsRow, Row("SOURCEZONE"));
    const ActionOption_s *zones = FindActionOption(Action("CREATEFEBOUNDARY"), Row("SOURCEZONES"), -1);
    ASSERT_NE(zones, nullptr);
    EXPECT_EQ(zones->AsRow, Row("SOURCEZONE"));
}

TEST(MacroVocabActions, RequiredOptionsFollowTheFormUsed) {
    auto rows = [](std::initializer_list<const char *> names) {
        std::set<int> result;
        for (const char *name : names) result.insert(Row(name));
        return result;
    };
    EXPECT_EQ(Required(Action("DUPLICATEZONE"), {}), rows({"SOURCEZONE"}));
    EXPECT_EQ(Required(Action("CREATEFEBOUNDARY"), {}), rows({"SOURCEZONE"}));
    EXPECT_EQ(Required(Action("SETFIELDVALUE"), {}), rows({"ZONE", "VAR", "FIELDVALUE", "INDEX"}));
    EXPECT_EQ(Required(Action("WRITECURVEINFO"), {}), rows({"SOURCEMAP"}));
    EXPECT_EQ(Required(Action("ADDONCOMMAND"), {}), rows({"ADDONID", "COMMAND"}));
    EXPECT_EQ(Required(Action("REDRAW"), {}), rows({}));

    int levels = Action("CONTOURLEVELS");
    EXPECT_EQ(Required(levels, {{1026, EnumValue(182, "DELETERANGE")}}), rows({"RANGEMIN", "RANGEMAX"}));
    EXPECT_EQ(Required(levels, {{1026, EnumValue(182, "DELETENEAREST")}}), rows({"RANGEMIN"}));
    EXPECT_EQ(Required(levels, {{1026, EnumValue(182, "ADD")}}), rows({}));

    int rotate = Action("ROTATE3DVIEW");
    EXPECT_EQ(Required(rotate, {{1072, EnumValue(196, "ABOUTVECTOR")}}),
              rows({"ANGLE", "VECTORX", "VECTORY", "VECTORZ"}));
    EXPECT_EQ(Required(rotate, {{1072, EnumValue(196, "PSI")}}), rows({"ANGLE"}));
    EXPECT_NE(FindActionOption(rotate, Row("VECTORY"), -1), nullptr);

    int colorMap = Action("COLORMAPCONTROL");
    EXPECT_EQ(Required(colorMap, {{1025, EnumValue(193, "COPYSTANDARD")}}), rows({"CONTOURCOLORMAP"}));
    EXPECT_EQ(Required(colorMap, {{1025, EnumValue(193, "RESETTOFACTORY")}}), rows({"CONTOURCOLORMAP"}));
    EXPECT_EQ(Required(colorMap, {{1025, EnumValue(193, "REDISTRIBUTECONTROLPOINTS")}}), rows({}));

    int location = Row("AUXDATALOCATION");
    EXPECT_EQ(Required(Action("SETAUXDATA"), {{location, EnumValue(230, "ZONE")}}),
              rows({"AUXDATALOCATION", "NAME", "VALUESTRING", "ZONE"}));
    EXPECT_EQ(Required(Action("SETAUXDATA"), {{location, EnumValue(230, "DATASET")}}),
              rows({"AUXDATALOCATION", "NAME", "VALUESTRING"}));
    EXPECT_EQ(Required(Action("GETAUXDATA"), {{location, EnumValue(230, "VAR")}}),
              rows({"AUXDATALOCATION", "NAME", "VAR"}));
    EXPECT_EQ(Required(Action("DELETEAUXDATA"), {{location, EnumValue(230, "LINEMAP")}}),
              rows({"AUXDATALOCATION", "NAME", "MAP"}));
    EXPECT_EQ(Required(Action("DELETEAUXDATA"), {{location, EnumValue(230, "FRAME")}}),
              rows({"AUXDATALOCATION", "NAME"}));

    int transform = Action("TRANSFORMCOORDINATES");
    int how = Row("TRANSFORMATION");
    EXPECT_EQ(Required(transform, {{how, EnumValue(245, "POLARTORECT")}}),
              rows({"TRANSFORMATION", "THETAVAR", "RVAR"}));
    EXPECT_EQ(Required(transform, {{how, EnumValue(245, "SPHERICALTORECT")}}),
              rows({"TRANSFORMATION", "THETAVAR", "PSIVAR", "RVAR"}));
    EXPECT_EQ(Required(transform, {{how, EnumValue(245, "RECTTOPOLAR")}}),
              rows({"TRANSFORMATION", "XVAR", "YVAR"}));
    EXPECT_EQ(Required(transform, {{how, EnumValue(245, "RECTTOSPHERICAL")}}),
              rows({"TRANSFORMATION", "XVAR", "YVAR", "ZVAR"}));
}
