#include "base/macro/actcmd.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

#include "base/data/dataio.h"
#include "base/data/readdataset.h"
#include "base/field/contactions.h"
#include "base/field/contour.h"
#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/startup.h"
#include "base/kernel/strlist.h"
#include "base/kernel/strutil.h"
#include "base/macro/dataactions.h"
#include "base/macro/plotactions.h"
#include "base/kernel/undo.h"
#include "base/macro/macro1.h"
#include "base/macro/macrorec.h"
#include "base/macro/macrovar.h"
#include "base/macro/setvalue.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"
#include "base/plot/framestyle.h"

namespace {

const char *optionName(int row) { return SetValueCommandList[row].Name; }

void skipBlanks(const char **p) {
    while (**p == ' ' || **p == '\t' || **p == '\n') (*p)++;
}

// A parent option of an action whose block lists no options of its own: the handler reads it.
bool blockIsOpen(int action, int parentRow) {
    const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
    for (int n = 0; n < syntax.NumOptions; n++)
        if (ActionOptionList[syntax.FirstOption + n].ParentRow == parentRow) return false;
    return true;
}

// The text of a block from behind its { to the matching }, strings kept whole.
bool takeBlock(const char **p, std::string *block) {
    int depth = 1;
    char quote = 0;
    const char *start = *p;
    for (; **p != '\0'; (*p)++) {
        char c = **p;
        if (quote != 0) {
            if (c == '\\' && ((*p)[1] == quote || (*p)[1] == '\\')) (*p)++;
            else if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '{') {
            depth++;
        } else if (c == '}' && --depth == 0) {
            block->assign(start, size_t(*p - start));
            (*p)++;
            return true;
        }
    }
    return false;
}

struct Parser {
    ActionCommand_s &cmd;
    int action;

    bool fail(const std::string &message) { return cmd.fail(message); }

    bool invalidOption(int row) {
        char text[512];
        snprintf(text, sizeof(text), "Invalid option \"%s\"\nfor command: \"%s\"", optionName(row), ActionCommandList[action]);
        return fail(text);
    }

    bool positional(const char **p) {
        const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
        skipBlanks(p);
        switch (syntax.Form) {
        case ActionArgForm_String: {
            if (**p != '"' && **p != '\'') return fail("Expecting a string.");
            char *text = nullptr;
            if (!ScanCompressedForString(p, cmd.Line, cmd.Command, &text, false)) return false;
            cmd.String = text;
            newfree(text);
            return true;
        }
        case ActionArgForm_Integer:
            if (!ScanCompressedForInteger(p, &cmd.Integer)) return fail("Invalid Integer Value");
            return true;
        case ActionArgForm_Variable: {
            const char *close = **p == '|' ? strchr(*p + 1, '|') : nullptr;
            if (close == nullptr) return fail("Invalid or undefined Variable name");
            cmd.Variable.assign(*p + 1, size_t(close - *p - 1));
            *p = close + 1;
            return true;
        }
        case ActionArgForm_ZoneSet:
        case ActionArgForm_MapSet:
        case ActionArgForm_VarSet:
        case ActionArgForm_OptionalZoneSet:
        case ActionArgForm_OptionalMapSet:
            if (**p != '[' && (syntax.Form == ActionArgForm_OptionalZoneSet || syntax.Form == ActionArgForm_OptionalMapSet))
                return true;
            return ScanCompressedForSet(p, cmd.Line, cmd.Command, &cmd.Set);
        case ActionArgForm_GroupAndMandatory:
        case ActionArgForm_Mandatory: {
            int value;
            if (!ScanCompressedForEnumValue(p, cmd.Line, cmd.Command, syntax.MandatoryRow, &value)) return false;
            cmd.Mandatory = value;
            if (syntax.Form == ActionArgForm_GroupAndMandatory) {
                skipBlanks(p);
                LgIndex_t group = 1;
                if (isdigit(static_cast<unsigned char>(**p)) && ScanCompressedForInteger(p, &group)) cmd.Group = int(group);
            }
            return true;
        }
        default:
            return true;
        }
    }

    bool leaf(const char **p, int row, int parentRow) {
        const ActionOption_s *option = FindActionOption(action, row, parentRow);
        if (option == nullptr) return invalidOption(row);
        ActionOptionValue_s value;
        value.Row = option->AsRow;
        value.ParentRow = parentRow;
        value.Kind = GetSetValueKind(row);
        if (value.Kind == SetValueKind_Parent) {
            skipBlanks(p);
            if (**p != '{') return fail("Expecting Start of sub-command");
            (*p)++;
            if (blockIsOpen(action, option->AsRow)) {
                if (!takeBlock(p, &value.Block)) return fail("Unexpected sub-command close");
                cmd.Options.push_back(std::move(value));
                return true;
            }
            cmd.Options.push_back(std::move(value));
            return options(p, option->AsRow, true);
        }
        ArbParam_t arg = 0;
        if (!GetAssignedValueForSetValueCommand(row, p, cmd.Line, cmd.Command, &value.Double, &arg, &value.Op, true))
            return false;
        switch (value.Kind) {
        case SetValueKind_Word:
        case SetValueKind_Char:
        case SetValueKind_Text:
            value.Text = arg != 0 ? reinterpret_cast<const char *>(arg) : "";
            newfree(reinterpret_cast<char *>(arg));
            break;
        case SetValueKind_Set:
            value.Set = reinterpret_cast<Set_a *>(arg);
            break;
        case SetValueKind_Double:
            break;
        default:
            value.Integer = LgIndex_t(arg);
            break;
        }
        cmd.Options.push_back(std::move(value));
        return true;
    }

    // Options up to the end of the text, or to the } of a block.
    bool options(const char **p, int parentRow, bool inBlock) {
        while (true) {
            skipBlanks(p);
            if (**p == '\0') return !inBlock || fail("Missing closing brace of sub-command");
            if (**p == '}') {
                if (!inBlock) return fail("Unexpected sub-command close");
                (*p)++;
                return true;
            }
            int row;
            MacroToken_e token;
            if (!ScanCompressedForMacroCommand(p, cmd.Line, cmd.Command, &row, &token, false, true)) return false;
            if (token != MacroToken_SetValue) return fail("Macro Commands Must Start On a New Line");
            // A chain of parents (A,B) reaches B's block below A.
            while (**p == ',') {
                (*p)++;
                int child;
                if (!ScanCompressedForMacroCommand(p, cmd.Line, cmd.Command, &child, &token, true, true)) return false;
                const ActionOption_s *option = FindActionOption(action, row, parentRow);
                if (option == nullptr) return invalidOption(row);
                parentRow = option->AsRow;
                row = child;
            }
            if (!leaf(p, row, parentRow)) return false;
        }
    }

    bool required() {
        const ActionCommandSyntax_s &syntax = ActionCommandSyntaxList[action];
        for (int n = 0; n < syntax.NumRequirements; n++) {
            const ActionRequirement_s &req = ActionRequirementList[syntax.FirstRequirement + n];
            if (req.WhenRow >= 0) {
                LgIndex_t when = -1;
                if (req.WhenRow == syntax.MandatoryRow)
                    when = cmd.Mandatory;
                else if (const ActionOptionValue_s *given = cmd.find(req.WhenRow))
                    when = given->Integer;
                else
                    continue;
                bool applies = false;
                for (int v = 0; v < req.NumWhenValues; v++)
                    if (ActionRequirementValueList[req.FirstWhenValue + v] == when) applies = true;
                if (!applies) continue;
            }
            bool present = false;
            for (const ActionOptionValue_s &option : cmd.Options)
                if (option.Row == req.Row) present = true;
            if (!present) {
                char text[512];
                snprintf(text, sizeof(text), "Missing %s sub-option(s) in $!%s Command.", optionName(req.Row),
                         ActionCommandList[action]);
                return fail(text);
            }
        }
        return true;
    }
};

// ---- handlers -----------------------------------------------------------------------------

bool notYet(const ActionCommand_s &cmd) {
    return cmd.fail(std::string("$!") + ActionCommandList[cmd.Action] + " is not available yet.");
}

bool handleQuit(const ActionCommand_s &cmd) {
    cmd.logAction();
    Action_Quit(true);
    return true;
}

bool handlePause(const ActionCommand_s &cmd) {
    cmd.logAction();
    if (!GeneralBase.EnablePauses || InBatchMode) return true;
    std::string text;
    for (size_t n = 0; n < cmd.String.size(); n++) {
        if (cmd.String[n] == '\\' && n + 1 < cmd.String.size() && cmd.String[n + 1] == 'n') {
            text.push_back('\n');
            n++;
        } else {
            text.push_back(cmd.String[n]);
        }
    }
    ProcessMessageBoxModalDialog(text.empty() ? "Click OK to continue." : text.c_str(), MessageBox_Information);
    return true;
}

bool handleDelay(const ActionCommand_s &cmd) {
    cmd.logAction();
    if (GeneralBase.EnableDelays && !InBatchMode && cmd.Integer > 0) sleep(unsigned(cmd.Integer));
    return true;
}

bool handleSystem(const ActionCommand_s &cmd) {
    if (!GeneralBase.OkToExecuteSystemCommand) {
        if (InBatchMode)
            return cmd.fail("$!SYSTEM command not allowed in batch mode. Add \"$!Interface OkToExecuteSystemCommand = "
                            "TRUE\" to the orvanex configuration file");
        return cmd.fail("Cannot execute system command.");
    }
    cmd.logAction();
    // The command's own exit status is no error; only a shell that cannot be started is.
    bool wait = cmd.flag(MacroSetValue_WAIT, true);
    std::string command = wait ? cmd.String : cmd.String + " &";
    if (system(command.c_str()) == -1) return cmd.fail("Cannot execute system command.");
    return true;
}

// A set option as a new set the caller owns, or null.
SetPtr_t setOption(const ActionCommand_s &cmd, int row) {
    const ActionOptionValue_s *option = cmd.find(row);
    if (option == nullptr || option->Set == nullptr) return nullptr;
    SetPtr_t copy(AllocSet(false));
    if (copy) CopySet(copy.get(), option->Set, false);
    return copy;
}

bool handleReadDataSet(const ActionCommand_s &cmd) {
    ReadDataSetArgs_s args;
    InitReadDataSetArgs(&args);
    StringList_s *list = StringListFromCompound(cmd.String.c_str());
    if (list == nullptr) return cmd.fail("Invalid file name string argument.");
    for (LgIndex_t n = 0; n < StringListCount(list); n++) {
        const char *entry = StringListGetStringRef(list, n);
        args.FileNamesOrInstructions.emplace_back(entry != nullptr ? entry : "");
    }
    StringListDealloc(&list);
    args.ReadDataOption = ReadDataOption_e(cmd.integer(MacroSetValue_READDATAOPTION, ReadDataOption_New));
    args.ResetStyle = cmd.flag(MacroSetValue_RESETSTYLE, true);
    args.IncludeText = cmd.flag(MacroSetValue_INCLUDETEXT, true);
    args.IncludeGeom = cmd.flag(MacroSetValue_INCLUDEGEOM, true);
    args.IncludeCustomLabels = cmd.flag(MacroSetValue_INCLUDECUSTOMLABELS, true);
    args.IncludeData = cmd.flag(MacroSetValue_INCLUDEDATA, true);
    args.CollapseZonesAndVars = cmd.flag(MacroSetValue_COLLAPSEZONESANDVARS, false);
    args.AssignStrandIDs = cmd.flag(MacroSetValue_ASSIGNSTRANDIDS, args.AssignStrandIDs);
    args.AddZonesToExistingStrands = cmd.flag(MacroSetValue_ADDZONESTOEXISTINGSTRANDS, false);
    args.InitialPlotFirstZoneOnly = cmd.flag(MacroSetValue_INITIALPLOTFIRSTZONEONLY, false);
    args.InitialPlotType = PlotType_e(cmd.integer(MacroSetValue_INITIALPLOTTYPE, PlotType_Automatic));
    if (const ActionOptionValue_s *reader = cmd.find(MacroSetValue_DATASETREADER)) args.DataSetReader = reader->Text;
    SetPtr_t zones = setOption(cmd, MacroSetValue_ZONELIST);
    SetPtr_t positions = setOption(cmd, MacroSetValue_VARPOSITIONLIST);
    if (!positions) positions = setOption(cmd, MacroSetValue_VARLIST);
    args.ZonesToLoad = zones.get();
    args.VarPositionList = positions.get();
    StringList_s *names = nullptr;
    if (const ActionOptionValue_s *nameList = cmd.find(MacroSetValue_VARNAMELIST)) {
        // Each item is a name, or an alias list of names joined by ";".
        names = StringListFromCompound(nameList->Text.c_str());
        if (names == nullptr) return cmd.fail("Invalid file name string argument.");
        for (LgIndex_t n = 0; n < StringListCount(names); n++) {
            std::string entry = StringListGetStringRef(names, n) != nullptr ? StringListGetStringRef(names, n) : "";
            for (char &c : entry)
                if (c == ';') c = '\n';
            StringListSetString(names, n, entry.c_str());
        }
        args.VarLoadMode = VarLoadMode_ByName;
    }
    args.VarLoadMode = VarLoadMode_e(cmd.integer(MacroSetValue_VARLOADMODE, args.VarLoadMode));
    args.VarNameList = names;
    if (const ActionOptionValue_s *skip = cmd.find(MacroSetValue_IJKSKIP)) {
        const char *p = skip->Block.c_str();
        while (true) {
            skipBlanks(&p);
            if (*p == '\0') break;
            int row;
            MacroToken_e token;
            double value = 0;
            ArbParam_t arg = 0;
            AssignOp_e op;
            if (!ScanCompressedForMacroCommand(&p, cmd.Line, cmd.Command, &row, &token, false, true) ||
                !GetAssignedValueForSetValueCommand(row, &p, cmd.Line, cmd.Command, &value, &arg, &op, false)) {
                StringListDealloc(&names);
                return false;
            }
            LgIndex_t *target = row == MacroSetValue_I ? &args.IJKSkip.I : row == MacroSetValue_J ? &args.IJKSkip.J
                                                    : row == MacroSetValue_K ? &args.IJKSkip.K : nullptr;
            if (target == nullptr) {
                StringListDealloc(&names);
                char text[512];
                snprintf(text, sizeof(text), "Invalid option \"%s\"\nfor command: \"%s\"", optionName(row), "IJKSKIP");
                return cmd.fail(text);
            }
            *target = LgIndex_t(arg);
        }
    }
    bool ok = Action_ReadDataSet(args);
    StringListDealloc(&names);
    return ok;
}

bool handleWriteDataSet(const ActionCommand_s &cmd) {
    if (CurFrame == nullptr || CurFrame->DataSet == nullptr)
        return cmd.fail("Cannot write a data set: The current frame does not have an attached data set");
    WriteDataSetOptions_s options;
    SetPtr_t zones = setOption(cmd, MacroSetValue_ZONELIST);
    SetPtr_t vars = setOption(cmd, MacroSetValue_VARPOSITIONLIST);
    if (!vars) vars = setOption(cmd, MacroSetValue_VARLIST);
    options.Zones = zones.get();
    options.Vars = vars.get();
    options.IncludeText = cmd.flag(MacroSetValue_INCLUDETEXT, true);
    options.IncludeGeom = cmd.flag(MacroSetValue_INCLUDEGEOM, true);
    options.IncludeCustomLabels = cmd.flag(MacroSetValue_INCLUDECUSTOMLABELS, true);
    options.IncludeData = cmd.flag(MacroSetValue_INCLUDEDATA, true);
    options.IncludeDataShareLinkage = cmd.flag(MacroSetValue_INCLUDEDATASHARELINKAGE, true);
    options.Binary = cmd.flag(MacroSetValue_BINARY, true);
    options.UsePointFormat = cmd.flag(MacroSetValue_USEPOINTFORMAT, false);
    options.Precision = int(cmd.integer(MacroSetValue_PRECISION, 12));
    cmd.logAction();
    DataFileExtras_s extras;
    extras.Texts = CurFrame->Texts;
    extras.Geoms = CurFrame->Geoms;
    return GoWriteDataSet(CurFrame->DataSet, &extras, cmd.String.c_str(), options);
}

// Developer words. "COMPRESS <command>" logs the command's compressed and uncompressed forms;
// "ECHO <text>" logs the text (with the command's macro variables already expanded);
// "GETVALUE <rows>" logs the style value at a path of row names; "CONTOURLEVELS <group>" logs the
// levels of a contour group of the current frame.
bool handleInternal(const ActionCommand_s &cmd) {
    const std::string &text = cmd.String;
    FILE *out = InBatchMode && BatchFile != nullptr ? BatchFile : stdout;
    if (text.compare(0, 5, "ECHO ") == 0) {
        fprintf(out, "%s\n", text.c_str() + 5);
    } else if (text.compare(0, 9, "COMPRESS ") == 0) {
        std::string compressed, uncompressed;
        if (!GetNextCompressedCommand(nullptr, text.c_str() + 9, &compressed, nullptr, nullptr, nullptr)) return false;
        UncompressMacroCommand(compressed.c_str(), &uncompressed, size_t(MaxMacroCommandLength), nullptr, true);
        fprintf(out, "Compressed: %s\nUncompressed: %s\n", compressed.c_str(), uncompressed.c_str());
    } else if (text.compare(0, 9, "GETVALUE ") == 0) {
        // A style path of row names: "LIMITS MAXPTSINALINE".
        int path[7] = {-1, -1, -1, -1, -1, -1, -1};
        int depth = 0;
        size_t start = 9;
        while (start < text.size() && depth < 7) {
            size_t end = text.find(' ', start);
            std::string word = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
            start = end == std::string::npos ? text.size() : end + 1;
            if (word.empty()) continue;
            // A number: a group, map, zone or detail number in the path.
            if (word.find_first_not_of("0123456789") == std::string::npos) {
                if (word.size() > 9) return cmd.fail("No value at " + text.substr(9) + ".");
                path[depth++] = atoi(word.c_str());
                continue;
            }
            MacroToken_e token;
            int row;
            if (!IdentifyMacroCommandString(word.c_str(), &token, &row) || token != MacroToken_SetValue)
                return cmd.fail("Unknown style row " + word + ".");
            path[depth++] = row;
        }
        double number = 0;
        ArbParam_t arg = 0;
        if (depth == 0 || GetValue(&number, &arg, path) != SetValue_Ok) return cmd.fail("No value at " + text.substr(9) + ".");
        int kind = GetSetValueKind(path[depth - 1]);
        std::string shown;
        if (kind == SetValueKind_Double) {
            char buffer[64];
            snprintf(buffer, sizeof(buffer), "%.15G", number);
            shown = buffer;
        } else if (kind == SetValueKind_Word || kind == SetValueKind_Text || kind == SetValueKind_Char) {
            shown = reinterpret_cast<const char *>(arg);
        } else if (kind == SetValueKind_Set) {
            // One-based members, runs joined: [1-3,5].
            const Set_a *set = reinterpret_cast<const Set_a *>(arg);
            shown = "[";
            for (SetIndex_t m = set != nullptr ? GetNextMember(set, -1) : -1; m >= 0;) {
                SetIndex_t last = m;
                while (GetNextMember(set, last) == last + 1) last++;
                if (shown.size() > 1) shown += ",";
                shown += std::to_string(m + 1) + (last > m ? "-" + std::to_string(last + 1) : "");
                m = GetNextMember(set, last);
            }
            shown += "]";
        } else if (kind >= SetValueKind_FirstEnumSet) {
            if (!GetEnumText(int(arg), path[depth - 1], false, &shown)) shown = std::to_string(long(arg));
        } else {
            shown = std::to_string(long(arg));
        }
        fprintf(out, "%s = %s\n", text.c_str() + 9, shown.c_str());
    } else if (text.compare(0, 14, "CONTOURLEVELS ") == 0) {
        int group = atoi(text.c_str() + 14);
        if (CurFrame == nullptr || group < 1 || group > MaxContourGroups)
            return cmd.fail("No contour group " + text.substr(14) + ".");
        std::string shown;
        for (double level : CurFrame->Style.GlobalContour[group - 1].Levels) {
            char buffer[40];
            snprintf(buffer, sizeof(buffer), " %.15G", level);
            shown += buffer;
        }
        fprintf(out, "%s =%s\n", text.c_str(), shown.c_str());
    } else {
        return cmd.fail("Unknown $!INTERNAL command.");
    }
    fflush(out);
    return true;
}

// The X and Y of a parent block such as XYPOS { X = 1 Y = 2 }.
bool readXY(const ActionCommand_s &cmd, const ActionOptionValue_s &block, double *x, double *y) {
    const char *p = block.Block.c_str();
    while (true) {
        skipBlanks(&p);
        if (*p == '\0') return true;
        int row;
        MacroToken_e token;
        double value = 0;
        ArbParam_t arg = 0;
        AssignOp_e op;
        if (!ScanCompressedForMacroCommand(&p, cmd.Line, cmd.Command, &row, &token, false, true) ||
            !GetAssignedValueForSetValueCommand(row, &p, cmd.Line, cmd.Command, &value, &arg, &op, false))
            return false;
        if (row == MacroSetValue_X) *x = value;
        else if (row == MacroSetValue_Y) *y = value;
        else return cmd.fail(std::string("Invalid option \"") + optionName(row) + "\"\nfor command: \"XYPOS\"");
    }
}

bool handleCreateNewFrame(const ActionCommand_s &cmd) {
    const Rect_s &base = GetFrameTemplate(FrameStyleBase == StyleBase_Factory).FrameLayout.Rect;
    double x = base.X1, y = base.Y2;
    if (const ActionOptionValue_s *position = cmd.find(MacroSetValue_XYPOS))
        if (!readXY(cmd, *position, &x, &y)) return false;
    double width = cmd.number(MacroSetValue_WIDTH, base.X2 - base.X1);
    double height = cmd.number(MacroSetValue_HEIGHT, base.Y1 - base.Y2);
    Rect_s rect{x, y + height, x + width, y};
    if (!IsValidFrameRect(rect)) return cmd.fail("Invalid frame position and/or dimensions");
    cmd.logAction();
    return CreateNewFrame(&rect);
}

bool handleFrameControl(const ActionCommand_s &cmd) {
    const ActionOptionValue_s *name = cmd.find(MacroSetValue_NAME);
    return Action_FrameControl(FrameAction_e(cmd.Mandatory), int(cmd.integer(MacroSetValue_FRAME, 1)),
                               name != nullptr ? name->Text.c_str() : "", cmd.number(MacroSetValue_X, 0),
                               cmd.number(MacroSetValue_Y, 0));
}

bool handleSetStyleBase(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_SetStyleBase(StyleBase_e(cmd.Mandatory));
}

// Dialogs: there is no window to show them in; in batch mode a launch does nothing and
// succeeds, as it must for macros recorded interactively.
bool handleDialog(const ActionCommand_s &cmd) {
    cmd.logAction();
    return true;
}

// Commands that ask the user: nobody can answer in batch mode or with graphics suspended.
bool handlePrompt(const ActionCommand_s &cmd) {
    return cmd.fail("User prompting not allowed while Orvanex is in batch mode or when graphics are suspended.");
}

struct ActionHandler_s {
    int Action;
    ActionHandler_pf Handler;
};

const ActionHandler_s ActionHandlers[] = {
    {MacroAction_QUIT, handleQuit},
    {MacroAction_PAUSE, handlePause},
    {MacroAction_DELAY, handleDelay},
    {MacroAction_SYSTEM, handleSystem},
    {MacroAction_READDATASET, handleReadDataSet},
    {MacroAction_WRITEDATASET, handleWriteDataSet},
    {MacroAction_INTERNAL, handleInternal},
    {MacroAction_SETSTYLEBASE, handleSetStyleBase},
    {MacroAction_CREATENEWFRAME, handleCreateNewFrame},
    {MacroAction_FRAMECONTROL, handleFrameControl},
    {MacroAction_LAUNCHDIALOG, handleDialog},
    {MacroAction_DROPDIALOG, handleDialog},
    {MacroAction_GETUSERINPUT, handlePrompt},
    {MacroAction_PROMPTFORYESNO, handlePrompt},
    {MacroAction_PROMPTFORFILENAME, handlePrompt},
    {MacroAction_PROMPTFORTEXTSTRING, handlePrompt},
};

ActionHandler_pf handlerOf(int action) {
    for (const ActionHandler_s &entry : ActionHandlers)
        if (entry.Action == action) return entry.Handler;
    if (ActionHandler_pf handler = FindDataActionHandler(action)) return handler;
    if (ActionHandler_pf handler = FindPlotActionHandler(action)) return handler;
    if (ActionHandler_pf handler = FindContourActionHandler(action)) return handler;
    if (ActionHandler_pf handler = FindContourLineActionHandler(action)) return handler;
    return notYet;
}

}  // namespace

ActionCommand_s::~ActionCommand_s() {
    DeallocSet(&Set);
    for (ActionOptionValue_s &option : Options) DeallocSet(&option.Set);
}

const ActionOptionValue_s *ActionCommand_s::find(int row, int parentRow) const {
    const ActionOptionValue_s *found = nullptr;
    for (const ActionOptionValue_s &option : Options)
        if (option.Row == row && option.ParentRow == parentRow) found = &option;  // the last one given wins
    return found;
}

bool ActionCommand_s::flag(int row, bool defaultValue, int parentRow) const {
    const ActionOptionValue_s *option = find(row, parentRow);
    return option != nullptr ? option->Integer != 0 : defaultValue;
}

double ActionCommand_s::number(int row, double defaultValue, int parentRow) const {
    const ActionOptionValue_s *option = find(row, parentRow);
    return option != nullptr ? option->Double : defaultValue;
}

LgIndex_t ActionCommand_s::integer(int row, LgIndex_t defaultValue, int parentRow) const {
    const ActionOptionValue_s *option = find(row, parentRow);
    return option != nullptr ? option->Integer : defaultValue;
}

void ActionCommand_s::logAction() const { LogAction(ActionCommandList[Action], String.c_str()); }

bool ActionCommand_s::fail(const std::string &message) const {
    ErrBadMacro(message.c_str(), Line, Command, true);
    return false;
}

bool CookActionRawData(const ActionCommand_s &cmd, CookedRawData_s *cooked) {
    if (cmd.RawData == nullptr) {
        char text[128];
        snprintf(text, sizeof(text), "Missing RAWDATA sub-option(s) in $!%s Command.", ActionCommandList[cmd.Action]);
        return cmd.fail(text);
    }
    cooked->Raw = cmd.RawData;
    return GetCookedRawMacroData(cmd.RawData, cmd.Line, cmd.Command, LookUpMacroVariableValue,
                                 const_cast<std::vector<std::string> *>(&cmd.Parameters), &cooked->Text);
}

bool ParseActionCommand(int action, const char *text, int line, const char *command, ActionCommand_s *parsed) {
    parsed->Action = action;
    parsed->Line = line;
    parsed->Command = command;
    Parser parser{*parsed, action};
    const char *p = text;
    return parser.positional(&p) && parser.options(&p, -1, false) && parser.required();
}

bool ProcessActionCommand(int action, const char *text, int line, const char *command, const char *rawData,
                          const std::vector<std::string> &parameters) {
    ActionCommand_s parsed;
    parsed.RawData = rawData;
    parsed.Parameters = parameters;
    if (!ParseActionCommand(action, text, line, command, &parsed)) return false;
    if (!handlerOf(action)(parsed)) return false;
    // The command as run is what a recording keeps.
    if (IsRecording() && !IsPerformingUndo()) RecordCompressedCommand(command, rawData);
    return true;
}

bool ExtractFileNamesFromLoadCommand(const char *command, std::vector<std::string> *names) {
    std::string compressed;
    if (!IsCompressedCommand(command)) {
        if (!GetNextCompressedCommand(nullptr, command, &compressed, nullptr, nullptr, nullptr)) return false;
        command = compressed.c_str();
    }
    const char *p = command;
    int index;
    MacroToken_e token;
    if (!QueryCompressedForMajorCommand(p, &index, &token)) return false;
    if (token != MacroToken_Action || index != MacroAction_READDATASET) return true;
    ActionCommand_s parsed;
    p++;
    while (isdigit(static_cast<unsigned char>(*p))) p++;
    if (!ParseActionCommand(index, p, 0, command, &parsed)) return false;
    StringList_s *list = StringListFromCompound(parsed.String.c_str());
    if (list == nullptr) return false;
    for (LgIndex_t n = 0; n < StringListCount(list); n++) {
        const char *entry = StringListGetStringRef(list, n);
        for (const std::string &name : SplitLines(entry != nullptr ? entry : ""))
            if (!name.empty()) names->push_back(name);
    }
    StringListDealloc(&list);
    return true;
}
