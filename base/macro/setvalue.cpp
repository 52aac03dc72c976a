#include "base/macro/setvalue.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/statechg.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"
#include "base/plot/solntime.h"

StyleBase_e FrameStyleBase = StyleBase_Config;

bool Action_SetStyleBase(StyleBase_e base) {
    FrameStyleBase = base;
    return true;
}

namespace {

std::string LastSetValueError;
int SetValueBlockDepth = 0;
bool SetValueBlockChanged = false;
int SetValueBlockRow = -1;

// ---- input specifications ----------------------------------------------------------------

const InputSpecs_s AboveZeroLgIndexInputSpec{InputSpecType_LgIndex, 1, 2147483646, 0};
const InputSpecs_s ZeroAndAboveLgIndexInputSpec{InputSpecType_LgIndex, 0, 2147483646, 0};
const InputSpecs_s TextLabelLengthInputSpec{InputSpecType_LgIndex, 1, 100000, 0};
const InputSpecs_s EntIndexLimitInputSpec{InputSpecType_SmInteger, 1, 32700, 0};
const InputSpecs_s ProcessorsInputSpec{InputSpecType_LgIndex, 0, 8, 0};
const InputSpecs_s ZeroToOneInputSpec{InputSpecType_Double, 0, 1, 1};
const InputSpecs_s DoubleInputSpec{InputSpecType_Double, -1e150, 1e150, 1};
const InputSpecs_s ZeroAndAboveDoubleInputSpec{InputSpecType_Double, 0, 1e150, 1};

// ---- the fields ----------------------------------------------------------------------------

enum FieldKind_e { Field_Bool, Field_Int, Field_Long, Field_Double, Field_Enum, Field_String };

// Where a value lives: the general block, or the current frame.
struct StyleField_s {
    int Path[4];  // the major row and up to three rows below it; -1 ends
    FieldKind_e Kind;
    const InputSpecs_s *Spec;  // integers and doubles
    void *(*Target)();         // the stored value
    bool ConfigOnly;           // a $!LIMITS row outside the configuration file
};

#define GB(field) [] { return static_cast<void *>(&GeneralBase.field); }

const StyleField_s GeneralFields[] = {
    // $!LIMITS: all but the two load-on-demand fractions only in the configuration file.
    {{MacroSetValue_LIMITS, MacroSetValue_MAXPTSINALINE, -1}, Field_Int, &AboveZeroLgIndexInputSpec, GB(MaxPtsInALine), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXCHRSINTEXTLABELS, -1}, Field_Int, &TextLabelLengthInputSpec, GB(MaxChrsInTextLabels), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXNUMCONTOURLEVELS, -1}, Field_Int, &AboveZeroLgIndexInputSpec, GB(MaxNumContourLevels), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXFENROWZONES, -1}, Field_Int, &EntIndexLimitInputSpec, GB(MaxFenrowZones), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXFENROWVARS, -1}, Field_Int, &EntIndexLimitInputSpec, GB(MaxFenrowVars), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXNUMPICKOBJECTS, -1}, Field_Int, &AboveZeroLgIndexInputSpec, GB(MaxNumPickObjects), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXTHREADS, -1}, Field_Int, &ZeroAndAboveLgIndexInputSpec, GB(MaxThreads), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXAVAILABLEPROCESSORS, -1}, Field_Int, &ProcessorsInputSpec, GB(MaxAvailableProcessors), true},
    {{MacroSetValue_LIMITS, MacroSetValue_MAXUSABLEMEMORY, -1}, Field_Long, &ZeroAndAboveLgIndexInputSpec, GB(MaxUsableMemoryMB), true},
    {{MacroSetValue_LIMITS, MacroSetValue_IPCTIMEOUTSECONDS, -1}, Field_Int, &ZeroAndAboveLgIndexInputSpec, GB(IPCTimeoutSeconds), true},
    {{MacroSetValue_LIMITS, MacroSetValue_LODTHRESHOLDMINFRACT, -1}, Field_Double, &ZeroToOneInputSpec, GB(LODThresholdMinFract), false},
    {{MacroSetValue_LIMITS, MacroSetValue_LODTHRESHOLDMAXFRACT, -1}, Field_Double, &ZeroToOneInputSpec, GB(LODThresholdMaxFract), false},
    // $!INTERFACE
    {{MacroSetValue_INTERFACE, MacroSetValue_PRINTDEBUG, -1}, Field_Bool, nullptr, GB(Debug), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_ENABLEDELAYS, -1}, Field_Bool, nullptr, GB(EnableDelays), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_ENABLEPAUSES, -1}, Field_Bool, nullptr, GB(EnablePauses), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_ENABLEWARNINGS, -1}, Field_Bool, nullptr, GB(EnableWarnings), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_ENABLEINTERRUPTS, -1}, Field_Bool, nullptr, GB(EnableInterrupts), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_OKTOEXECUTESYSTEMCOMMAND, -1}, Field_Bool, nullptr, GB(OkToExecuteSystemCommand), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_MAXNUMUNDOLEVELS, -1}, Field_Int, &ZeroAndAboveLgIndexInputSpec, GB(NumUndoLevels), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_INITIALPLOTTYPE, -1}, Field_Enum, nullptr, GB(InitialPlotType), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_INITIALPLOTFIRSTZONEONLY, -1}, Field_Bool, nullptr, GB(InitialPlotFirstZoneOnly), false},
    {{MacroSetValue_INTERFACE, MacroSetValue_USEINITIALPLOTDIALOG, -1}, Field_Bool, nullptr, GB(UseInitialPlotDialog), false},
    // $!FILECONFIG
    {{MacroSetValue_FILECONFIG, MacroSetValue_DATAFILEVARLOADMODE, -1}, Field_Enum, nullptr, GB(DataFileVarLoadMode), false},
    {{MacroSetValue_FILECONFIG, MacroSetValue_ASSIGNSTRANDIDS, -1}, Field_Bool, nullptr, GB(AssignStrandIDs), false},
    {{MacroSetValue_FILECONFIG, MacroSetValue_USEMEMORYMAPPEDIO, -1}, Field_Bool, nullptr, GB(UseMemoryMappedIO), false},
    {{MacroSetValue_FILECONFIG, MacroSetValue_MEMORYMAPPEDIOSIZETHRESHOLD, -1}, Field_Long, &ZeroAndAboveLgIndexInputSpec, GB(MemoryMappedIOSizeThreshold), false},
    {{MacroSetValue_FILECONFIG, MacroSetValue_LOADONDEMAND, MacroSetValue_ALLOW, -1}, Field_Bool, nullptr, GB(LoadOnDemandAllow), false},
    {{MacroSetValue_FILECONFIG, MacroSetValue_LOADONDEMAND, MacroSetValue_UNLOADSTRATEGY, -1}, Field_Enum, nullptr, GB(LoadOnDemandUnloadStrategy), false},
    {{MacroSetValue_FILECONFIG, MacroSetValue_LOADONDEMAND, MacroSetValue_DATASTORESTRATEGY, -1}, Field_Enum, nullptr, GB(LoadOnDemandDataStoreStrategy), false},
    // $!COMPATIBILITY
    {{MacroSetValue_COMPATIBILITY, MacroSetValue_ALLOWDATASHARING, -1}, Field_Bool, nullptr, GB(AllowDataSharing), false},
};

#undef GB

// Frame values that need more than a store: handled by name below.
bool isFrameSpecial(const int path[7]) {
    return (path[0] == MacroSetValue_FRAMENAME && path[1] == -1) ||
           (path[0] == MacroSetValue_GLOBALTIME && path[1] == MacroSetValue_SOLUTIONTIME && path[2] == -1);
}

const StyleField_s *findField(const int path[7]) {
    for (const StyleField_s &field : GeneralFields) {
        bool same = true;
        for (int n = 0; n < 7 && same; n++) {
            int want = n < 4 ? field.Path[n] : -1;
            if (n < 4 && field.Path[n] == -1) want = -1;
            same = (path[n] == want);
            if (n < 4 && field.Path[n] == -1) {
                for (int m = n; m < 7 && same; m++) same = path[m] == -1;
                break;
            }
        }
        if (same) return &field;
    }
    return nullptr;
}

std::string pathName(const int path[7]) {
    int last = 0;
    while (last + 1 < 7 && path[last + 1] >= 0) last++;
    return SetValueCommandList[path[last]].Name;
}

SetValueReturnCode_e fail(SetValueReturnCode_e code, const std::string &message) {
    LastSetValueError = message;
    return code;
}

std::string rangeText(const InputSpecs_s &spec) {
    char text[160];
    double adjust = spec.Type == InputSpecType_Double || spec.Type == InputSpecType_Float ? spec.InterfaceAdjust : 1.0;
    double offset = spec.Type == InputSpecType_Double || spec.Type == InputSpecType_Float ? 0.0 : spec.InterfaceAdjust;
    double min = spec.Min * adjust + offset, max = spec.Max * adjust + offset;
    if (max >= 1e150 || max >= 2147483646)
        snprintf(text, sizeof(text), "must be greater than or equal to %G.", min);
    else
        snprintf(text, sizeof(text), "must be between %G and %G.", min, max);
    return text;
}

SetValueReturnCode_e outOfRange(const int path[7], const InputSpecs_s &spec) {
    return fail(SetValue_ValueRangeError, "\"" + pathName(path) + "\" " + rangeText(spec));
}

// Applies an assignment operator to the current value.
bool applyOp(AssignOp_e op, double current, double value, double *result, const int path[7], SetValueReturnCode_e *code) {
    switch (op) {
    case AssignOp_Equals: *result = value; return true;
    case AssignOp_PlusEquals: *result = current + value; return true;
    case AssignOp_MinusEquals: *result = current - value; return true;
    case AssignOp_TimesEquals: *result = current * value; return true;
    case AssignOp_DivideEquals:
        if (value == 0.0) {
            *code = fail(SetValue_ValueRangeError, "Divide by zero");
            return false;
        }
        *result = current / value;
        return true;
    default:
        *code = fail(SetValue_AssignOpError, "Not allowed to use suffix for \"" + pathName(path) + "\"");
        return false;
    }
}

SetValueReturnCode_e setNumber(const StyleField_s &field, const int path[7], AssignOp_e op, double value) {
    const InputSpecs_s &spec = *field.Spec;
    bool isDouble = field.Kind == Field_Double;
    double current = isDouble ? *static_cast<double *>(field.Target())
                              : field.Kind == Field_Long ? double(*static_cast<long *>(field.Target()))
                                                         : double(*static_cast<int *>(field.Target()));
    // Macro values are in interface units: a factor for doubles, an offset for integers.
    double stored = isDouble ? value / (spec.InterfaceAdjust != 0 ? spec.InterfaceAdjust : 1.0) : value - spec.InterfaceAdjust;
    double result;
    SetValueReturnCode_e code = SetValue_Ok;
    if (!applyOp(op, current, stored, &result, path, &code)) return code;
    if (!isDouble) result = std::trunc(result);
    if (!(result >= spec.Min && result <= spec.Max)) return outOfRange(path, spec);
    if (result == current) return SetValue_DuplicateValue;
    if (isDouble)
        *static_cast<double *>(field.Target()) = result;
    else if (field.Kind == Field_Long)
        *static_cast<long *>(field.Target()) = long(result);
    else
        *static_cast<int *>(field.Target()) = int(result);
    return SetValue_Ok;
}

SetValueReturnCode_e setField(const StyleField_s &field, const int path[7], ArbParam_t arg, double value,
                              AssignOp_e op) {
    if (field.ConfigOnly && !IsProcessingConfigFile)
        return fail(SetValue_LimitsOutsideConfig,
                    "The $!LIMITS sub-command option is only allowed within the configuration file.");
    switch (field.Kind) {
    case Field_Bool: {
        bool *target = static_cast<bool *>(field.Target());
        bool wanted = arg != 0;
        if (wanted == *target) return SetValue_DuplicateValue;
        *target = wanted;
        return SetValue_Ok;
    }
    case Field_Enum: {
        int *target = static_cast<int *>(field.Target());
        int leaf = 0;
        while (leaf + 1 < 7 && path[leaf + 1] >= 0) leaf++;
        int set = GetSetValueEnumSet(path[leaf]);
        if (!IsEnumValueInSet(set, int(arg)))
            return fail(SetValue_ValueRangeError, "Invalid Option for \"" + pathName(path) + "\"");
        if (*target == int(arg)) return SetValue_DuplicateValue;
        *target = int(arg);
        return SetValue_Ok;
    }
    case Field_Double:
        return setNumber(field, path, op, value);
    case Field_Int:
    case Field_Long:
        return setNumber(field, path, op, double(arg));
    case Field_String: {
        std::string *target = static_cast<std::string *>(field.Target());
        const char *text = reinterpret_cast<const char *>(arg);
        if (text != nullptr && *target == text) return SetValue_DuplicateValue;
        *target = text != nullptr ? text : "";
        return SetValue_Ok;
    }
    }
    return SetValue_InvalidCommandOption;
}

SetValueReturnCode_e setFrameSpecial(const int path[7], ArbParam_t arg, double value, AssignOp_e op) {
    if (CurFrame == nullptr) return fail(SetValue_ContextError, "There is no current frame.");
    if (path[0] == MacroSetValue_FRAMENAME) {
        const char *text = reinterpret_cast<const char *>(arg);
        std::string name = text != nullptr ? text : "";
        if (name == CurFrame->Name) return SetValue_DuplicateValue;
        CurFrame->Name = name;
        return SetValue_Ok;
    }
    // $!GLOBALTIME SOLUTIONTIME
    if (CurFrame->DataSet == nullptr) return fail(SetValue_NoAttachedDatasetError, "Current frame must have an attached data set.");
    double result;
    SetValueReturnCode_e code = SetValue_Ok;
    if (!applyOp(op, CurFrame->SolutionTime, value, &result, path, &code)) return code;
    if (!std::isfinite(result) || std::fabs(result) > 1e150) return outOfRange(path, DoubleInputSpec);
    if (result == CurFrame->SolutionTime) return SetValue_DuplicateValue;
    SetFrameSolutionTime(CurFrame, result);
    return SetValue_Ok;
}

void announce(const int path[7]) {
    if (SetValueBlockDepth > 0) {
        SetValueBlockChanged = true;
        return;
    }
    for (int n = 0; n < 7 && path[n] >= 0; n++) StateChangeSupplementalInfoSetStyleParam(n, path[n]);
    StateChanged(StateChange_Style, nullptr);
}

}  // namespace

SetValueReturnCode_e CombineSetValueReturnCodes(SetValueReturnCode_e a, SetValueReturnCode_e b) {
    if (!ReturnCodeOk(a)) return a;
    if (!ReturnCodeOk(b)) return b;
    return a == SetValue_Ok || b == SetValue_Ok ? SetValue_Ok : SetValue_DuplicateValue;
}

const std::string &GetLastSetValueErrorString() { return LastSetValueError; }

bool IsSetValueMajorAvailable(int row) {
    if (row == MacroSetValue_FRAMENAME || row == MacroSetValue_GLOBALTIME) return true;
    for (const StyleField_s &field : GeneralFields)
        if (field.Path[0] == row) return true;
    return false;
}

SetValueReturnCode_e SetValue7(ArbParam_t argValue, double doubleValue, AssignOp_e assignOp, const int path[7],
                               bool raiseStateChange) {
    LastSetValueError.clear();
    SetValueReturnCode_e code;
    if (isFrameSpecial(path)) {
        code = setFrameSpecial(path, argValue, doubleValue, assignOp);
    } else if (const StyleField_s *field = findField(path)) {
        code = setField(*field, path, argValue, doubleValue, assignOp);
    } else {
        char text[512];
        snprintf(text, sizeof(text), "Invalid option \"%s\"\nfor command: \"%s\"", pathName(path).c_str(),
                 SetValueCommandList[path[0]].Name);
        code = fail(SetValue_InvalidCommandOption, text);
    }
    if (GeneralBase.Debug) {
        char prefix[64];
        snprintf(prefix, sizeof(prefix), "SV: D=%-6G I=%-4d", doubleValue, int(argValue));
        std::string text = std::string(code == SetValue_DuplicateValue ? "SV DUPLICATE! :" : !ReturnCodeOk(code) ? "SV FAILED! :" : "") + prefix;
        for (int n = 0; n < 7 && path[n] >= 0; n++) {
            char part[32];
            snprintf(part, sizeof(part), " P=%-14s", SetValueCommandList[path[n]].Name);
            text += part;
        }
        fprintf(StdError, "%s\n", text.c_str());
    }
    if (code == SetValue_Ok && raiseStateChange && !IsProcessingStylesheet) announce(path);
    return code;
}

SetValueReturnCode_e GetValue(double *doubleOut, ArbParam_t *argOut, const int path[7]) {
    if (path[0] == MacroSetValue_FRAMENAME && path[1] == -1 && CurFrame != nullptr) {
        *argOut = reinterpret_cast<ArbParam_t>(CurFrame->Name.c_str());
        return SetValue_Ok;
    }
    if (isFrameSpecial(path) && CurFrame != nullptr) {
        *doubleOut = CurFrame->SolutionTime;
        return SetValue_Ok;
    }
    const StyleField_s *field = findField(path);
    if (field == nullptr) return SetValue_InvalidCommandOption;
    void *target = field->Target();
    switch (field->Kind) {
    case Field_Bool: *argOut = *static_cast<bool *>(target) ? 1 : 0; break;
    case Field_Enum: *argOut = *static_cast<int *>(target); break;
    case Field_Int: *argOut = ArbParam_t(*static_cast<int *>(target) + LgIndex_t(field->Spec->InterfaceAdjust)); break;
    case Field_Long: *argOut = ArbParam_t(*static_cast<long *>(target) + LgIndex_t(field->Spec->InterfaceAdjust)); break;
    case Field_Double: *doubleOut = *static_cast<double *>(target) * field->Spec->InterfaceAdjust; break;
    case Field_String: *argOut = reinterpret_cast<ArbParam_t>(static_cast<std::string *>(target)->c_str()); break;
    }
    return SetValue_Ok;
}

void BeginSetValueBlock(int row) {
    if (SetValueBlockDepth++ == 0) {
        SetValueBlockChanged = false;
        SetValueBlockRow = row;
    }
}

void EndSetValueBlock(int row) {
    if (SetValueBlockDepth == 0 || --SetValueBlockDepth > 0) return;
    if (SetValueBlockChanged) {
        int path[7] = {row >= 0 ? row : SetValueBlockRow, -1, -1, -1, -1, -1, -1};
        announce(path);
    }
}

namespace {

struct SubCommandWalker {
    int line;
    const char *command;
    int path[7];

    bool report(const std::string &message) {
        ErrBadMacro(message.c_str(), line, command, true);
        return false;
    }

    // Leaves and blocks from *p at path depth `depth` (entries below it are set).
    bool walk(const char **p, int depth, bool inBlock) {
        while (true) {
            while (**p == ' ' || **p == '\t' || **p == '\n') (*p)++;
            if (**p == '\0') return !inBlock || report("Expecting End of sub-command section.");
            if (**p == '}') {
                if (!inBlock) return report("Invalid Identifier in Sub-Command");
                (*p)++;
                return true;
            }
            if (**p != '@') return report("Invalid Identifier in Sub-Command");
            int row;
            MacroToken_e token;
            if (!ScanCompressedForMacroCommand(p, line, command, &row, &token, false, true)) return false;
            int at = depth;
            if (at >= 7) return report("Macro has Too Many Sub-Options");
            path[at] = row;
            while (**p == ',') {  // a chain of parents
                (*p)++;
                if (!ScanCompressedForMacroCommand(p, line, command, &row, &token, true, true)) return false;
                if (++at >= 7) return report("Macro has Too Many Sub-Options");
                path[at] = row;
            }
            for (int n = at + 1; n < 7; n++) path[n] = -1;
            if (GetSetValueKind(row) == SetValueKind_Parent) {
                while (**p == ' ') (*p)++;
                if (**p != '{') return report("Expecting Start of sub-command section.");
                (*p)++;
                if (!walk(p, at + 1, true)) return false;
                continue;
            }
            if (!leaf(p, row)) return false;
        }
    }

    bool leaf(const char **p, int row) {
        double value = 0;
        ArbParam_t arg = 0;
        AssignOp_e op = AssignOp_Equals;
        if (!GetAssignedValueForSetValueCommand(row, p, line, command, &value, &arg, &op, true)) return false;
        int kind = GetSetValueKind(row);
        SetValueReturnCode_e code = SetValue7(arg, value, op, path, true);
        if (kind == SetValueKind_Word || kind == SetValueKind_Char || kind == SetValueKind_Text)
            newfree(reinterpret_cast<char *>(arg));
        else if (kind == SetValueKind_Set) {
            Set_a *set = reinterpret_cast<Set_a *>(arg);
            DeallocSet(&set);
        }
        if (!ReturnCodeOk(code)) return report(GetLastSetValueErrorString());
        return true;
    }
};

}  // namespace

bool ProcessSetValueSubCommands(int majorRow, const char *text, int line, const char *command) {
    if (!IsSetValueMajorAvailable(majorRow)) {
        ErrBadMacro((std::string("$!") + SetValueCommandList[majorRow].Name + " is not available yet.").c_str(), line,
                    command, true);
        return false;
    }
    SubCommandWalker walker{line, command, {majorRow, -1, -1, -1, -1, -1, -1}};
    const char *p = text;
    if (GetSetValueKind(majorRow) != SetValueKind_Parent) return walker.leaf(&p, majorRow);
    BeginSetValueBlock(majorRow);
    bool ok = walker.walk(&p, 1, false);
    EndSetValueBlock(majorRow);
    return ok;
}
