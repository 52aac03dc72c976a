// The set-value machinery: the input rules, the typed setters every style field goes
// through, the walk of a path through a record's table of fields, SetValue7 and GetValue, and the
// walk of a compressed set command. The general style's tables are in genstyle.cpp; the frame
// values handled here by name (FRAMENAME, GLOBALTIME SOLUTIONTIME) move to the frame's tables
// when those exist.
#include "base/macro/setvalue.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "base/data/dataset.h"
#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/paths.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/macro/genstyle.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"
#include "base/plot/framestyle.h"
#include "base/kernel/undo.h"
#include "base/macro/macrorec.h"
#include "base/plot/draw0.h"
#include "base/plot/fieldmap.h"
#include "base/plot/framelink.h"
#include "base/plot/linemap.h"
#include "base/plot/solntime.h"

StyleBase_e FrameStyleBase = StyleBase_Config;

bool Action_SetStyleBase(StyleBase_e base) {
    FrameStyleBase = base;
    return true;
}

namespace {

constexpr double DegreesPerRadian = 57.29577951308232;

// Frame units from a value with a unit suffix. Both directions keep the sign: a length or a
// position within the frame is given the way it is stored.
bool modifyValueWithSuffixToFrameUnits(double *value, int suffix) { return ModifyXValueWithSuffixToFrameUnits(value, suffix); }

}  // namespace

// ---- input rules -------------------------------------------------------------------------------

const InputSpecs_s DoubleInputSpec{InputSpecType_Double, -1e150, 1e150, 1, MultiplyValueWithPiSuffixByPi};
const InputSpecs_s AboveZeroDoubleInputSpec{InputSpecType_Double, 1e-150, 1e150, 1, MultiplyValueWithPiSuffixByPi};
const InputSpecs_s ZeroAndAboveDoubleInputSpec{InputSpecType_Double, 0, 1e150, 1, nullptr};
const InputSpecs_s ZeroToOneInputSpec{InputSpecType_Double, 0, 1, 1, nullptr};
const InputSpecs_s PercentageInputSpec{InputSpecType_Double, 0, 1, 100, nullptr};
const InputSpecs_s AngleInputSpec{InputSpecType_Double, -12.566370614459172, 12.566370614459172, DegreesPerRadian, nullptr};
const InputSpecs_s TextAngleInputSpec{InputSpecType_Double, -6.283185307279586, 6.283185307279586, DegreesPerRadian, nullptr};
const InputSpecs_s XFrameCoordInputSpec{InputSpecType_Double, 0, 1, 100, modifyValueWithSuffixToFrameUnits};
const InputSpecs_s YFrameCoordInputSpec{InputSpecType_Double, 0, 1, 100, modifyValueWithSuffixToFrameUnits};
const InputSpecs_s XPaperCoordInputSpec{InputSpecType_Double, -500, 500, 1, ModifyXValueWithSuffixToInchPaperUnits};
const InputSpecs_s YPaperCoordInputSpec{InputSpecType_Double, -500, 500, 1, ModifyYValueWithSuffixToInchPaperUnits};
const InputSpecs_s LineThicknessInputSpec{InputSpecType_Double, 1e-6, 1, 100, modifyValueWithSuffixToFrameUnits};
const InputSpecs_s FrameTextSizeInputSpec{InputSpecType_Double, 1e-150, 2, 100, modifyValueWithSuffixToFrameUnits};
// The least size is that of the smallest font the text layer draws.
const InputSpecs_s PointTextSizeInputSpec{InputSpecType_Double, 0.5, 2500, 1, nullptr};
const InputSpecs_s SmoothWeightInputSpec{InputSpecType_Double, 1.17549435e-38, 0.95, 1, nullptr};
const InputSpecs_s AboveZeroLgIndexInputSpec{InputSpecType_LgIndex, 1, 2147483646, 0, nullptr};
const InputSpecs_s ZeroAndAboveLgIndexInputSpec{InputSpecType_LgIndex, 0, 2147483646, 0, nullptr};
const InputSpecs_s AboveZeroSmIntegerInputSpec{InputSpecType_SmInteger, 1, 32767, 0, nullptr};
const InputSpecs_s ZeroAndAboveSmIntegerInputSpec{InputSpecType_SmInteger, 0, 32767, 0, nullptr};
const InputSpecs_s EntIndexInputSpec{InputSpecType_SmInteger, 0, 32699, 1, nullptr};
const InputSpecs_s VarOrNoneInputSpec{InputSpecType_SmInteger, -1, 32699, 1, nullptr};
const InputSpecs_s VarNumInputSpec{InputSpecType_SmInteger, 0, 32699, 1, nullptr};
const InputSpecs_s ZoneNumInputSpec{InputSpecType_SmInteger, 0, 32699, 1, nullptr};
const InputSpecs_s ColorMapGroupInputSpec{InputSpecType_SmInteger, 0, 3, 1, nullptr};
const InputSpecs_s ContourGroupInputSpec{InputSpecType_SmInteger, 0, 3, 1, nullptr};
const InputSpecs_s IsoSurfaceGroupInputSpec{InputSpecType_SmInteger, 0, 3, 1, nullptr};
const InputSpecs_s SliceGroupInputSpec{InputSpecType_SmInteger, 0, 3, 1, nullptr};
const InputSpecs_s ValuePrecisionInputSpec{InputSpecType_SmInteger, 1, 18, 0, nullptr};
const InputSpecs_s NumberOfEllipsePointsInputSpec{InputSpecType_SmInteger, 3, 720, 0, nullptr};
const InputSpecs_s ImageDimensionInputSpec{InputSpecType_SmInteger, 4, 32766, 0, nullptr};
const InputSpecs_s ColorIndexInputSpec{InputSpecType_SmInteger, 0, 255, 0, nullptr};

InputSpecs_s NumContourLevelsInputSpec{InputSpecType_SmInteger, 1, 400, 0, nullptr};
InputSpecs_s CurvePointsInputSpec{InputSpecType_LgIndex, 2, 5000, 0, nullptr};

void SetInputCheckBounds() {
    NumContourLevelsInputSpec.Max = GeneralBase.MaxNumContourLevels;
    CurvePointsInputSpec.Max = GeneralBase.MaxPtsInALine;
}

std::string GetOutOfRangeErrMsgString(const InputSpecs_s &rules) {
    char text[160];
    bool isDouble = rules.Type == InputSpecType_Double || rules.Type == InputSpecType_Float;
    double adjust = isDouble ? (rules.InterfaceAdjust != 0 ? rules.InterfaceAdjust : 1.0) : 1.0;
    double offset = isDouble ? 0.0 : rules.InterfaceAdjust;
    double min = rules.Min * adjust + offset, max = rules.Max * adjust + offset;
    // A largest value at the index limit, as the macro shows it, is no limit.
    if (rules.Max >= 1e150 || max >= 2147483646)
        snprintf(text, sizeof(text), "must be greater than or equal to %G.", min);
    else
        snprintf(text, sizeof(text), "must be between %G and %G.", min, max);
    return text;
}

namespace {

std::string LastSetValueError;
// Set while SetValue7 sets a value of the current frame: references to variables, zones and
// contour groups are then checked against it. Walks of a record on its own (tests, templates)
// store what they are given.
bool CheckFrameReferences = false;
// The set of zones or maps a map-style command names, for the length of the command; null for
// the shown ones.
const Set_a *SetValueModifierSet = nullptr;
int SetValueBlockDepth = 0;
bool SetValueBlockChanged = false;
int SetValueBlockRow = -1;

SetValueReturnCode_e fail(SetValueReturnCode_e code, const std::string &message) {
    LastSetValueError = message;
    return code;
}

std::string rowName(int row) {
    return row >= 0 && row < SetValueCommandListItemCount ? SetValueCommandList[row].Name : "<?>";
}

std::string quoted(int row) { return "\"" + rowName(row) + "\""; }

SetValueReturnCode_e outOfRange(int row, const InputSpecs_s &rules) {
    return fail(SetValue_ValueRangeError, quoted(row) + " " + GetOutOfRangeErrMsgString(rules));
}

// Code 5: what the configuration file may not do, which defaults of frames without data cannot hold.
SetValueReturnCode_e notInConfig(const char *what) {
    return fail(SetValue_NotAllowedInConfig, std::string("Cannot ") + what + " in the configuration file.");
}

SetValueReturnCode_e badOperator(int row) {
    return fail(SetValue_AssignOpError, "Assignment operator invalid in\n assignment to " + quoted(row));
}

SetValueReturnCode_e suffixRefused(int row) {
    return fail(SetValue_AssignOpError, "Not allowed to use suffix for " + quoted(row));
}

bool isSuffixOp(AssignOp_e op) { return op >= AssignOp_ConvertFromCm && op <= AssignOp_ConvertFromPix; }

int suffixOf(AssignOp_e op) {
    switch (op) {
        case AssignOp_ConvertFromCm: return Suffix_Cm;
        case AssignOp_ConvertFromIn: return Suffix_In;
        case AssignOp_ConvertFromPt: return Suffix_Pt;
        default: return Suffix_Pix;
    }
}

// Applies an arithmetic operator to the current value; both in macro units, so that *= and /=
// scale what the user sees whatever the stored unit. False with the code for a suffix or an
// unknown operator, and for a division by zero.
bool applyOp(int row, AssignOp_e op, double current, double operand, double *result, SetValueReturnCode_e *code) {
    switch (op) {
        case AssignOp_Equals: *result = operand; return true;
        case AssignOp_PlusEquals: *result = current + operand; return true;
        case AssignOp_MinusEquals: *result = current - operand; return true;
        case AssignOp_TimesEquals: *result = current * operand; return true;
        case AssignOp_DivideEquals:
            if (operand == 0.0) {
                *code = fail(SetValue_ValueRangeError, "Divide by zero");
                return false;
            }
            *result = current / operand;
            return true;
        default:
            *code = isSuffixOp(op) ? suffixRefused(row) : badOperator(row);
            return false;
    }
}

bool inRange(double value, const InputSpecs_s &rules) { return value >= rules.Min && value <= rules.Max; }

// The stored value of an integer setting from a macro value; the result of the operator is cut
// to a whole number before the offset is taken off.
bool integerResult(int row, AssignOp_e op, double current, double value, const InputSpecs_s &rules, double *result,
                   SetValueReturnCode_e *code) {
    if (isSuffixOp(op)) {
        *code = suffixRefused(row);
        return false;
    }
    double shown;
    if (!applyOp(row, op, current + rules.InterfaceAdjust, value, &shown, code)) return false;
    *result = std::trunc(shown) - rules.InterfaceAdjust;
    return true;
}

template <typename Integer>
SetValueReturnCode_e setInteger(int row, Integer *target, AssignOp_e op, double value, const InputSpecs_s &rules,
                                bool minusOneIsNone) {
    double result;
    SetValueReturnCode_e code = SetValue_Ok;
    if (!integerResult(row, op, double(*target), value, rules, &result, &code)) return code;
    if (!(minusOneIsNone && result == -1.0) && !inRange(result, rules)) return outOfRange(row, rules);
    if (result == double(*target)) return SetValue_DuplicateValue;
    *target = static_cast<Integer>(result);
    return SetValue_Ok;
}

// A whole number from a double: 0.499 is added away from zero.
double roundedAwayFromZero(double value) { return value >= 0 ? std::floor(value + 0.499) : std::ceil(value - 0.499); }

const InputSpecs_s RGBComponentInputSpec{InputSpecType_Double, 0, 255, 1, nullptr};

}  // namespace

// ---- typed setters ---------------------------------------------------------------------------

SetValueReturnCode_e SetBooleanValue(int row, bool *target, AssignOp_e op, ArbParam_t value) {
    if (op != AssignOp_Equals) return badOperator(row);
    bool wanted = value != 0;
    if (wanted == *target) return SetValue_DuplicateValue;
    *target = wanted;
    return SetValue_Ok;
}

SetValueReturnCode_e SetDoubleValue(int row, double *target, AssignOp_e op, double value, const InputSpecs_s &rules) {
    double adjust = rules.InterfaceAdjust != 0 ? rules.InterfaceAdjust : 1.0;
    double result;
    if (isSuffixOp(op)) {
        // The suffix function gives stored units directly.
        result = value;
        if (rules.SuffixFunction == nullptr || !rules.SuffixFunction(&result, suffixOf(op))) return suffixRefused(row);
    } else {
        double shown;
        SetValueReturnCode_e code = SetValue_Ok;
        if (!applyOp(row, op, *target * adjust, value, &shown, &code)) return code;
        result = op == AssignOp_Equals ? value / adjust : shown / adjust;
    }
    if (!inRange(result, rules)) return outOfRange(row, rules);
    if (result == *target) return SetValue_DuplicateValue;
    *target = result;
    return SetValue_Ok;
}

SetValueReturnCode_e SetLgIndexValue(int row, long *target, AssignOp_e op, double value, const InputSpecs_s &rules) {
    return setInteger(row, target, op, value, rules, false);
}

SetValueReturnCode_e SetIntegerValue(int row, int *target, AssignOp_e op, double value, const InputSpecs_s &rules) {
    return setInteger(row, target, op, value, rules, false);
}

SetValueReturnCode_e SetEntIndexValue(int row, int *target, AssignOp_e op, double value, const InputSpecs_s &rules) {
    return setInteger(row, target, op, value, rules, &rules == &EntIndexInputSpec);
}

SetValueReturnCode_e SetRGBComponentValue(int row, int16_t *target, AssignOp_e op, double value) {
    double result;
    SetValueReturnCode_e code = SetValue_Ok;
    if (!applyOp(row, op, double(*target), value, &result, &code)) return code;
    result = roundedAwayFromZero(result);
    if (!inRange(result, RGBComponentInputSpec)) return outOfRange(row, RGBComponentInputSpec);
    if (result == double(*target)) return SetValue_DuplicateValue;
    *target = static_cast<int16_t>(result);
    return SetValue_Ok;
}

SetValueReturnCode_e SetStringValue(int row, std::string *target, AssignOp_e op, const char *value) {
    if (op != AssignOp_Equals) return badOperator(row);
    const char *text = value != nullptr ? value : "";
    if (*target == text) return SetValue_DuplicateValue;
    *target = text;
    return SetValue_Ok;
}

SetValueReturnCode_e SetFNameValue(int row, std::string *target, AssignOp_e op, const char *value) {
    if (op != AssignOp_Equals) return badOperator(row);
    if (value == nullptr || *value == '\0') return fail(SetValue_ValueRangeError, "Invalid file name string argument.");
    std::string name = MakeAbsolutePath(value, StartupDirectory);
    if (*target == name) return SetValue_DuplicateValue;
    *target = name;
    return SetValue_Ok;
}

SetValueReturnCode_e SetSetValue(int row, Set_a **target, const Set_a *value, SetIndex_t limit, AssignOp_e op) {
    if (op != AssignOp_Equals && op != AssignOp_PlusEquals && op != AssignOp_MinusEquals)
        return fail(SetValue_AssignOpError, "Assignment operator invalid in\nSET assignment for " + quoted(row));
    if (*target == nullptr && op == AssignOp_MinusEquals) return SetValue_DuplicateValue;
    // The new set is built aside, so that a failure leaves the old one as it was.
    Set_a *result = AllocSet(false);
    bool ok = result != nullptr;
    if (ok && op != AssignOp_Equals && *target != nullptr) ok = CopySet(result, *target, false);
    for (SetIndex_t member = value != nullptr ? GetNextMember(value, BADSETVALUE) : BADSETVALUE;
         ok && member != BADSETVALUE && member < limit; member = GetNextMember(value, member)) {
        if (op == AssignOp_MinusEquals)
            RemoveFromSet(result, member);
        else
            ok = AddToSet(result, member, false);
    }
    if (!ok) {
        DeallocSet(&result);
        return fail(SetValue_InternalMemoryError, "Out of space during SET assignment for " + quoted(row));
    }
    bool unchanged = *target != nullptr ? EqualSets(result, *target) : false;
    if (unchanged) {
        DeallocSet(&result);
        return SetValue_DuplicateValue;
    }
    DeallocSet(target);
    *target = result;
    return SetValue_Ok;
}

SetValueReturnCode_e CheckEnumValue(int current, int value, int row) {
    if (value == current) return SetValue_DuplicateValue;
    if (IsEnumValueInSet(GetSetValueEnumSet(row), value)) return SetValue_Ok;
    return fail(SetValue_ValueRangeError, "Invalid Option for " + quoted(row));
}

// ---- style records ---------------------------------------------------------------------------

namespace {

SetValueReturnCode_e badOption(int row, int majorRow) {
    char text[512];
    snprintf(text, sizeof(text), "Invalid option \"%s\"\nfor command: \"%s\"", rowName(row).c_str(),
             rowName(majorRow).c_str());
    return fail(SetValue_InvalidCommandOption, text);
}

struct ResolvedField_s {
    const StyleField_s *Field;
    void *Record;  // the record the field belongs to
    int Row;
};

// Finds the row among the fields of a record, looking through spliced records; *current moves
// from the record to the one that holds the row.
const StyleField_s *findField(const StyleRecord_s &record, int row, void **current) {
    for (size_t n = 0; n < record.NumFields; n++) {
        const StyleField_s &field = record.Fields[n];
        if (field.Kind == StyleField_Block && field.Row < 0) {  // spliced
            void *inner = field.Target(*current);
            if (const StyleField_s *found = findField(*field.Sub, row, &inner)) {
                *current = inner;
                return found;
            }
        } else if (field.Row == row) {
            return &field;
        }
    }
    return nullptr;
}

// Walks the path from entry `depth` through the blocks of the record down to one value.
SetValueReturnCode_e resolve(const StyleRecord_s &record, void *base, const int path[7], int depth,
                             ResolvedField_s *resolved) {
    const StyleRecord_s *table = &record;
    void *current = base;
    int lastRow = path[0];
    while (true) {
        if (depth >= 7 || path[depth] < 0) return badOption(lastRow, path[0]);  // a block with nothing chosen in it
        int row = path[depth];
        const StyleField_s *field = findField(*table, row, &current);
        if (field == nullptr) return badOption(row, path[0]);
        lastRow = row;
        if (field->Kind == StyleField_Block) {
            current = field->Target(current);
            table = field->Sub;
            depth++;
            continue;
        }
        if (field->Kind == StyleField_NumberedBlock) {
            void *element = depth + 1 < 7 && path[depth + 1] >= 0 ? field->Element(current, path[depth + 1]) : nullptr;
            if (element == nullptr) return fail(SetValue_ValueRangeError, field->BadNumberMessage);
            current = element;
            table = field->Sub;
            depth += 2;
            continue;
        }
        if (depth + 1 < 7 && path[depth + 1] >= 0) return badOption(path[depth + 1], path[0]);  // a value has no rows below it
        *resolved = ResolvedField_s{field, current, row};
        return SetValue_Ok;
    }
}

InputSpecs_s specOf(const ResolvedField_s &resolved) {
    InputSpecs_s rules = resolved.Field->Spec != nullptr ? *resolved.Field->Spec : DoubleInputSpec;
    if (resolved.Field->AdjustSpec != nullptr) resolved.Field->AdjustSpec(resolved.Record, &rules);
    return rules;
}

// Sets a number through its typed setter under the given input rules.
SetValueReturnCode_e setNumber(const StyleField_s &field, int row, void *target, ArbParam_t argValue,
                               double doubleValue, AssignOp_e op, const InputSpecs_s &rules) {
    switch (field.Kind) {
        case StyleField_Int: return SetIntegerValue(row, static_cast<int *>(target), op, double(argValue), rules);
        case StyleField_Long: return SetLgIndexValue(row, static_cast<long *>(target), op, double(argValue), rules);
        case StyleField_EntIndex:
            // The rules may be a narrowed copy; the unset value belongs to the plain entity rules.
            return setInteger(row, static_cast<int *>(target), op, double(argValue), rules, field.Spec == &EntIndexInputSpec);
        default: return SetDoubleValue(row, static_cast<double *>(target), op, doubleValue, rules);
    }
}

// The colour values that take their colour from a contour group: MULTI (group 1) and MULTI2 to
// MULTI4; -6 is RGB.
int contourGroupOfColor(int color) { return color == -1 ? 0 : color <= -3 && color >= -5 ? -color - 2 : -1; }

// A row naming a variable, a zone or a contour group of the frame must name one that exists and
// can be used now; the configuration file sets the defaults of frames without data and is not
// checked. On failure the old value goes back.
SetValueReturnCode_e checkFrameReference(const StyleField_s &field, int row, void *target, int oldValue) {
    if (IsProcessingConfigFile || !CheckFrameReferences) return SetValue_Ok;
    int *value = static_cast<int *>(target);
    int group = -1;
    if (field.Kind == StyleField_Enum && GetSetValueEnumSet(row) == 101) group = contourGroupOfColor(*value);
    else if (field.Kind == StyleField_Int && field.Spec == &ContourGroupInputSpec) group = *value;
    bool isVar = field.Kind == StyleField_Int && (field.Spec == &VarOrNoneInputSpec || field.Spec == &VarNumInputSpec);
    bool isZone = field.Kind == StyleField_Int && field.Spec == &ZoneNumInputSpec;
    SetValueReturnCode_e code = SetValue_Ok;
    if (group >= 0) {
        if (CurFrame != nullptr && CurFrame->Style.GlobalContour[group].Var < 0)
            code = fail(SetValue_ContextError, "Cannot use the selected contour group. Contour variable not assigned.");
    } else if (isVar || isZone) {
        const DataSet_s *dataSet = CurFrame != nullptr ? CurFrame->DataSet : nullptr;
        if (isVar && *value < 0 && field.Spec == &VarOrNoneInputSpec) return SetValue_Ok;  // none
        if (dataSet == nullptr)
            code = fail(SetValue_NoAttachedDatasetError, "Current frame must have an attached data set.");
        else if (isVar && (*value >= dataSet->NumVars || !IsVarEnabled(dataSet, *value)))
            code = fail(SetValue_InvalidVarOrZone, "Variable not in current data set");
        else if (isZone && (*value >= dataSet->NumZones || !IsZoneEnabled(dataSet, *value)))
            code = fail(SetValue_InvalidVarOrZone, "Zone not in current data set");
    }
    if (code != SetValue_Ok) *value = oldValue;
    return code;
}

}  // namespace

SetValueReturnCode_e SetStyleRecordValue(const StyleRecord_s &record, void *base, const int path[7], int depth,
                                         ArbParam_t argValue, double doubleValue, AssignOp_e assignOp) {
    ResolvedField_s resolved;
    SetValueReturnCode_e code = resolve(record, base, path, depth, &resolved);
    if (code != SetValue_Ok) return code;
    const StyleField_s &field = *resolved.Field;
    int row = resolved.Row;
    if ((field.Flags & StyleFieldFlag_ConfigFileOnly) != 0 && !IsProcessingConfigFile)
        return fail(SetValue_LimitsOutsideConfig,
                    "The $!" + rowName(path[0]) + " sub-command option is only allowed within the configuration file.");
    void *target = field.Target(resolved.Record);
    int oldValue = field.Kind == StyleField_Int || field.Kind == StyleField_Enum ? *static_cast<int *>(target) : 0;
    switch (field.Kind) {
        case StyleField_Bool: code = SetBooleanValue(row, static_cast<bool *>(target), assignOp, argValue); break;
        case StyleField_Int:
        case StyleField_Long:
        case StyleField_EntIndex:
        case StyleField_Double: {
            if (field.Read != nullptr) {
                // Computed from the target: set on a copy, then stored by the target.
                InputSpecs_s rules = specOf(resolved);
                double value = field.Read(target);
                code = SetDoubleValue(row, &value, assignOp, doubleValue, rules);
                if (code == SetValue_Ok && !field.Store(target, value, rules)) code = outOfRange(row, rules);
                break;
            }
            if (field.AdjustSpec != nullptr && field.Spec != nullptr) {
                // The range of the kind first, then the one the record's other values allow, so
                // that a value outside both is reported against the first.
                long scratchLong = field.Kind == StyleField_Long ? *static_cast<long *>(target) : 0;
                int scratchInt = field.Kind == StyleField_Int || field.Kind == StyleField_EntIndex ? *static_cast<int *>(target) : 0;
                double scratchDouble = field.Kind == StyleField_Double ? *static_cast<double *>(target) : 0.0;
                void *scratch = field.Kind == StyleField_Long ? static_cast<void *>(&scratchLong)
                                : field.Kind == StyleField_Double ? static_cast<void *>(&scratchDouble)
                                                                  : static_cast<void *>(&scratchInt);
                code = setNumber(field, row, scratch, argValue, doubleValue, assignOp, *field.Spec);
                if (!ReturnCodeOk(code)) break;
            }
            code = setNumber(field, row, target, argValue, doubleValue, assignOp, specOf(resolved));
            break;
        }
        case StyleField_Enum: {
            if (assignOp != AssignOp_Equals) {
                code = badOperator(row);
                break;
            }
            int *value = static_cast<int *>(target);
            if (argValue < INT16_MIN || argValue > INT16_MAX) {  // no enumerated value is that far out
                code = fail(SetValue_ValueRangeError, "Invalid Option for " + quoted(row));
                break;
            }
            code = CheckEnumValue(*value, int(argValue), row);
            if (code == SetValue_Ok) *value = int(argValue);
            break;
        }
        case StyleField_RGBComponent:
            code = SetRGBComponentValue(row, static_cast<int16_t *>(target), assignOp, doubleValue);
            break;
        case StyleField_String:
            code = SetStringValue(row, static_cast<std::string *>(target), assignOp, reinterpret_cast<const char *>(argValue));
            break;
        case StyleField_FileName:
            code = SetFNameValue(row, static_cast<std::string *>(target), assignOp, reinterpret_cast<const char *>(argValue));
            break;
        case StyleField_Set:
            code = SetSetValue(row, static_cast<Set_a **>(target), reinterpret_cast<const Set_a *>(argValue),
                               SetIndex_t(field.Spec->Max) + 1, assignOp);
            break;
        case StyleField_Block:
        case StyleField_NumberedBlock: code = badOption(row, path[0]); break;
    }
    if (code == SetValue_Ok && (field.Kind == StyleField_Int || field.Kind == StyleField_Enum))
        code = checkFrameReference(field, row, target, oldValue);
    if (code == SetValue_Ok && field.AfterChange != nullptr) field.AfterChange();
    return code;
}

SetValueReturnCode_e GetStyleRecordValue(const StyleRecord_s &record, void *base, const int path[7], int depth,
                                         double *doubleOut, ArbParam_t *argOut) {
    ResolvedField_s resolved;
    std::string savedError = LastSetValueError;  // reading leaves the last set error alone
    SetValueReturnCode_e code = resolve(record, base, path, depth, &resolved);
    LastSetValueError = savedError;
    if (code != SetValue_Ok) return SetValue_InvalidCommandOption;
    const StyleField_s &field = *resolved.Field;
    void *target = field.Target(resolved.Record);
    InputSpecs_s rules = specOf(resolved);
    switch (field.Kind) {
        case StyleField_Bool: *argOut = *static_cast<bool *>(target) ? 1 : 0; break;
        case StyleField_Int:
        case StyleField_EntIndex: *argOut = ArbParam_t(*static_cast<int *>(target) + LgIndex_t(rules.InterfaceAdjust)); break;
        case StyleField_Long: *argOut = ArbParam_t(*static_cast<long *>(target) + LgIndex_t(rules.InterfaceAdjust)); break;
        case StyleField_Double:
            *doubleOut = (field.Read != nullptr ? field.Read(target) : *static_cast<double *>(target)) *
                         (rules.InterfaceAdjust != 0 ? rules.InterfaceAdjust : 1.0);
            break;
        case StyleField_Enum: *argOut = *static_cast<int *>(target); break;
        case StyleField_RGBComponent: *doubleOut = *static_cast<int16_t *>(target); break;
        case StyleField_String:
        case StyleField_FileName:
            *argOut = reinterpret_cast<ArbParam_t>(static_cast<std::string *>(target)->c_str());
            break;
        case StyleField_Set: *argOut = reinterpret_cast<ArbParam_t>(*static_cast<Set_a **>(target)); break;
        case StyleField_Block:
        case StyleField_NumberedBlock: return SetValue_InvalidCommandOption;
    }
    return SetValue_Ok;
}

// ---- the tree --------------------------------------------------------------------------------

void CategorizeMajorCommand(int row, bool *isFrame, bool *isGeneral) {
    *isFrame = (row >= 504 && row <= 516) || row == 521 || (row >= 525 && row <= 529) || (row >= 533 && row <= 540) ||
               (row >= 542 && row <= 550) || row == 552 || row == 553 || (row >= 396 && row <= 400) || row == 1208 ||
               row == 554 || row == 555 || row == 139 || row == 140;
    *isGeneral = (row >= 983 && row <= 999) || row == 1371 || row == 1389;
}

namespace {

// The major rows followed by a group number, with the range of the number and its messages: one
// for text that is no integer, one for a number outside the groups.
struct GroupedMajor_s {
    int Row;
    const InputSpecs_s *Spec;
    const char *Message;
    const char *RangeMessage;
};
const GroupedMajor_s GroupedMajors[] = {
    {MacroSetValue_GLOBALCONTOUR, &ContourGroupInputSpec, "Invalid Global Contour number",
     "Invalid value global contour index"},
    {MacroSetValue_GLOBALISOSURFACE, &IsoSurfaceGroupInputSpec, "Invalid group number specified.",
     "Invalid group number specified."},
    {MacroSetValue_ISOSURFACEATTRIBUTES, &IsoSurfaceGroupInputSpec, "Invalid group number specified.",
     "Invalid group number specified."},
    {MacroSetValue_GLOBALSLICE, &SliceGroupInputSpec, "Invalid group number specified.", "Invalid group number specified."},
    {MacroSetValue_SLICEATTRIBUTES, &SliceGroupInputSpec, "Invalid group number specified.",
     "Invalid group number specified."},
    {MacroSetValue_GLOBALCOLORMAP, &ColorMapGroupInputSpec, "Invalid group number specified in $!GLOBALCOLORMAP command.",
     "Invalid group number specified in $!GLOBALCOLORMAP command."},
};

const GroupedMajor_s *findGroupedMajor(int row) {
    for (const GroupedMajor_s &major : GroupedMajors)
        if (major.Row == row) return &major;
    return nullptr;
}

// The blocks whose rows belong to a number written behind them; XDETAIL and YDETAIL only
// directly below XYAXIS or XYLINEAXIS.
const char *numberedParentMessage(int row, int enclosingRow) {
    if (row == MacroSetValue_COLORMAPOVERRIDE) return "Invalid ColorMap Override number";
    if (row == MacroSetValue_CONSTRAINT) return "Invalid Value Blanking Constraint number";
    if (row == MacroSetValue_CONTROLPOINT) return "Invalid color map control point";
    if ((row == MacroSetValue_XDETAIL || row == MacroSetValue_YDETAIL) &&
        (enclosingRow == MacroSetValue_XYAXIS || enclosingRow == MacroSetValue_XYLINEAXIS))
        return "Invalid Axis Number for X- or Y-Axis Detail";
    return nullptr;
}

// True if path entry n is a number rather than a row.
bool isPathNumber(const int path[7], int n) {
    if (n == 1) return findGroupedMajor(path[0]) != nullptr;
    return n >= 2 && path[n - 1] >= 0 && !isPathNumber(path, n - 1) &&
           numberedParentMessage(path[n - 1], path[n - 2]) != nullptr;
}

// $!COLORMAP and $!COLORSPECTRUM are old spellings of $!GLOBALCOLORMAP 1. False if the path is
// too long to take the group number.
bool normalizePath(const int path[7], int normalized[7]) {
    if (path[0] != MacroSetValue_COLORMAP && path[0] != MacroSetValue_COLORSPECTRUM) {
        for (int n = 0; n < 7; n++) normalized[n] = path[n];
        return true;
    }
    normalized[0] = MacroSetValue_GLOBALCOLORMAP;
    normalized[1] = 1;
    for (int n = 1; n < 6; n++) normalized[n + 1] = path[n];
    return path[6] < 0;
}

// Frame values that need more than a store: handled by name below.
bool isFrameSpecial(const int path[7]) {
    int row = path[0];
    bool plain = path[1] == -1;
    return (plain && (row == MacroSetValue_FRAMENAME || row == MacroSetValue_PLOTTYPE || row == MacroSetValue_FRAMEMODE ||
                      row == MacroSetValue_ACTIVEFIELDMAPS || row == MacroSetValue_ACTIVEFIELDZONES ||
                      row == MacroSetValue_ACTIVELINEMAPS || row == MacroSetValue_ACTIVEXYMAPS)) ||
           (row == MacroSetValue_GLOBALTIME && path[1] == MacroSetValue_SOLUTIONTIME && path[2] == -1);
}

// The shown maps of a frame, or the zones of its shown field maps, as the set rows name them.
Set_a **activeSetOf(Frame_s *frame, int row) {
    return row == MacroSetValue_ACTIVELINEMAPS || row == MacroSetValue_ACTIVEXYMAPS ? &frame->ActiveLineMaps
                                                                                   : &frame->ActiveFieldMaps;
}

SetValueReturnCode_e setActiveMaps(int row, ArbParam_t arg, AssignOp_e op) {
    if (IsProcessingConfigFile) {
        bool lines = row == MacroSetValue_ACTIVELINEMAPS || row == MacroSetValue_ACTIVEXYMAPS;
        return notInConfig(lines ? "assign Active LineMaps" : "assign Active Zones");
    }
    Frame_s *frame = CurFrame;
    if (frame->DataSet == nullptr) return fail(SetValue_NoAttachedDatasetError, "No data set available.");
    const Set_a *given = reinterpret_cast<const Set_a *>(arg);
    // The zones form names the maps that hold them.
    std::unique_ptr<Set_a, void (*)(Set_a *)> byZone(nullptr, [](Set_a *set) { DeallocSet(&set); });
    if (row == MacroSetValue_ACTIVEFIELDZONES) {
        byZone.reset(GetFieldMapsForZones(frame, given));
        if (!byZone) return fail(SetValue_InternalMemoryError, "Out of memory.");
        given = byZone.get();
    }
    Set_a *working = AllocSet(false);
    if (working == nullptr) return fail(SetValue_InternalMemoryError, "Out of memory.");
    Set_a **current = activeSetOf(frame, row);
    if (*current != nullptr) CopySet(working, *current, false);
    bool lines = current == &frame->ActiveLineMaps;
    SetIndex_t limit = lines ? NumLineMaps(frame) : NumFieldMaps(frame);
    SetValueReturnCode_e code = SetSetValue(row, &working, given, limit, op);
    if (code == SetValue_Ok && *current != nullptr && EqualSets(working, *current)) code = SetValue_DuplicateValue;
    if (code == SetValue_Ok && !(lines ? SetActiveLineMaps(frame, working) : SetActiveFieldMaps(frame, working)))
        code = fail(SetValue_InternalMemoryError, "Out of memory.");
    if (code == SetValue_Ok) {
        DeallocSet(&frame->ActiveRelevantZones);
        UpdateGlobalTimeScratchFlags(frame);
        UpdateFrameFlagsOnSolutionTimeChange(frame);
    }
    DeallocSet(&working);
    return code;
}

SetValueReturnCode_e setFrameSpecial(const int path[7], ArbParam_t arg, double value, AssignOp_e op) {
    int row = path[0];
    if (IsProcessingConfigFile) {
        // These belong to a frame with data, which the defaults of new frames are not.
        if (row == MacroSetValue_FRAMENAME) return notInConfig("assign the frame name");
        if (row == MacroSetValue_PLOTTYPE || row == MacroSetValue_FRAMEMODE)
            return notInConfig("assign the plot type");
        if (row == MacroSetValue_GLOBALTIME) return notInConfig("assign the solution time");
        return setActiveMaps(row, arg, op);
    }
    if (CurFrame == nullptr) return fail(SetValue_ContextError, "There is no current frame.");
    if (row == MacroSetValue_FRAMENAME) return SetStringValue(row, &CurFrame->Name, op, reinterpret_cast<const char *>(arg));
    if (row == MacroSetValue_PLOTTYPE || row == MacroSetValue_FRAMEMODE) {
        // The frame mode words have the values of the plot types they stand for.
        auto requested = PlotType_e(arg);
        if (requested == CurFrame->PlotType) return SetValue_DuplicateValue;
        std::string error;
        if (!ChangeCurFramePlotType(requested, &error)) return fail(SetValue_CannotAttachDataSet, error);
        return SetValue_Ok;
    }
    if (row != MacroSetValue_GLOBALTIME) return setActiveMaps(row, arg, op);
    // $!GLOBALTIME SOLUTIONTIME
    if (CurFrame->DataSet == nullptr) return fail(SetValue_NoAttachedDatasetError, "Current frame must have an attached data set.");
    double time = CurFrame->SolutionTime;
    SetValueReturnCode_e code = SetDoubleValue(path[1], &time, op, value, DoubleInputSpec);
    if (code == SetValue_Ok) SetFrameSolutionTime(CurFrame, time);
    return code;
}

// The maps a map-style command reaches: those of its set (the set given with the command, by
// zone for FIELD), else the shown ones.
Set_a *mapsOfCommand(Frame_s *frame, int row, const Set_a *given) {
    bool lines = row == MacroSetValue_LINEMAP || row == MacroSetValue_XYMAP;
    Set_a *maps = nullptr;
    if (given == nullptr) {
        const Set_a *active = lines ? frame->ActiveLineMaps : frame->ActiveFieldMaps;
        if (row == MacroSetValue_FIELD) active = GetActiveFieldZones(frame);
        maps = AllocSet(false);
        if (maps != nullptr && active != nullptr) CopySet(maps, active, false);
        if (row != MacroSetValue_FIELD) return maps;
        given = maps;
    }
    if (row == MacroSetValue_FIELD) {
        Set_a *byZone = GetFieldMapsForZones(frame, given);
        if (maps != nullptr) DeallocSet(&maps);
        return byZone;
    }
    maps = AllocSet(false);
    if (maps != nullptr) CopySet(maps, given, false);
    return maps;
}

SetValueReturnCode_e setMapStyle(const int path[7], ArbParam_t arg, double value, AssignOp_e op) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr) return fail(SetValue_ContextError, "There is no current frame.");
    if (frame->DataSet == nullptr) return fail(SetValue_NoAttachedDatasetError, "No data set available.");
    bool lines = path[0] == MacroSetValue_LINEMAP || path[0] == MacroSetValue_XYMAP;
    std::unique_ptr<Set_a, void (*)(Set_a *)> maps(mapsOfCommand(frame, path[0], SetValueModifierSet),
                                                   [](Set_a *set) { DeallocSet(&set); });
    if (!maps) return fail(SetValue_InternalMemoryError, "Out of memory.");
    for (SetIndex_t m = GetNextMember(maps.get(), -1); m >= 0; m = GetNextMember(maps.get(), m))
        if (!(lines ? IsValidLineMap(frame, int(m)) : IsValidFieldMap(frame, int(m))))
            return fail(SetValue_InvalidCommandOption, "Invalid Modifier List On Main Command");
    SetValueReturnCode_e code = SetValue_DuplicateValue;
    const Rect_s &rect = frame->Style.FrameLayout.Rect;
    for (SetIndex_t m = GetNextMember(maps.get(), -1); m >= 0; m = GetNextMember(maps.get(), m)) {
        std::string error;
        SetValueReturnCode_e one =
            lines ? LineMapStyleSetValue(&frame->LineMapAttributes[size_t(m)]->Style, rect, path, arg, value, int(op), &error)
                  : FieldMapStyleSetValue(&frame->FieldAttributes[size_t(m)]->Style, rect, path, arg, value, int(op), &error);
        if (!ReturnCodeOk(one)) return fail(one, error);
        code = CombineSetValueReturnCodes(code, one);
    }
    return code;
}

bool isMapStyleRow(int row);

void announce(const int path[7]) {
    if (SetValueBlockDepth > 0) {
        SetValueBlockChanged = true;
        return;
    }
    // The path as SetValue7 takes it: behind a map command the set of maps it reached stands in
    // place of a row, behind a grouped one the group number, behind a numbered block its number.
    std::unique_ptr<Set_a, void (*)(Set_a *)> maps(nullptr, [](Set_a *set) { DeallocSet(&set); });
    if (isMapStyleRow(path[0]) && CurFrame != nullptr) maps.reset(mapsOfCommand(CurFrame, path[0], SetValueModifierSet));
    for (int n = 0; n < 7 && path[n] >= 0; n++)
        StateChangeSupplementalInfoSetStyleParam(n, n == 1 && maps ? reinterpret_cast<ArbParam_t>(maps.get()) : path[n]);
    // A field map command names the maps it changed.
    if ((path[0] == MacroSetValue_FIELD || path[0] == MacroSetValue_FIELDMAP) && maps) {
        StateChangeSupplementalInfoSetFieldMapSet(maps.get());
    } else if ((path[0] == MacroSetValue_ACTIVEFIELDMAPS || path[0] == MacroSetValue_ACTIVEFIELDZONES) &&
               CurFrame != nullptr && CurFrame->ActiveFieldMaps != nullptr) {
        StateChangeSupplementalInfoSetFieldMapSet(CurFrame->ActiveFieldMaps);
    }
    StateChanged(StateChange_Style, nullptr);
}

bool isMapStyleRow(int row);

void printDebug(SetValueReturnCode_e code, ArbParam_t argValue, double doubleValue, const int path[7]) {
    char prefix[64];
    snprintf(prefix, sizeof(prefix), "SV: D=%-6G I=%-4d", doubleValue, int(argValue));
    std::string text = std::string(code == SetValue_DuplicateValue ? "SV DUPLICATE! :" : !ReturnCodeOk(code) ? "SV FAILED! :" : "") + prefix;
    for (int n = 0; n < 7 && path[n] >= 0; n++) {
        char part[32];
        if (n == 1 && isMapStyleRow(path[0]))
            snprintf(part, sizeof(part), " P=%-14s", "[maps]");
        else if (isPathNumber(path, n))
            snprintf(part, sizeof(part), " P=%-14d", path[n]);
        else
            snprintf(part, sizeof(part), " P=%-14s", rowName(path[n]).c_str());
        text += part;
    }
    fprintf(StdError, "%s\n", text.c_str());
}

}  // namespace

SetValueReturnCode_e CombineSetValueReturnCodes(SetValueReturnCode_e a, SetValueReturnCode_e b) {
    if (!ReturnCodeOk(a)) return a;
    if (!ReturnCodeOk(b)) return b;
    return a == SetValue_Ok || b == SetValue_Ok ? SetValue_Ok : SetValue_DuplicateValue;
}

const std::string &GetLastSetValueErrorString() { return LastSetValueError; }

SetValueHooks_s SetValueHooks{};

namespace {

// Map style lives per field map and line map: these rows reach the maps of the command's set.
bool isMapStyleRow(int row) {
    return row == MacroSetValue_FIELD || row == MacroSetValue_FIELDMAP || row == MacroSetValue_LINEMAP ||
           row == MacroSetValue_XYMAP;
}

// What a style change leaves to be drawn again.
void markForStyleChange(const int path[7]) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr || IsProcessingConfigFile) return;
    switch (path[0]) {
    case MacroSetValue_FRAMEMODE:
    case MacroSetValue_PLOTTYPE: return;  // the plot type change marks for itself
    case MacroSetValue_GLOBALTHREED:
        if (path[1] == MacroSetValue_ROTATEORIGIN || path[1] == MacroSetValue_SLICE)
            MarkWorkAreaForScreenUpdate();
        else if (path[1] == MacroSetValue_LIGHTSOURCE)
            MarkFrameLightSourceForScreenUpdate(frame);
        else if (path[1] != MacroSetValue_PSIANGLE && path[1] != MacroSetValue_THETAANGLE && path[1] != MacroSetValue_ALPHAANGLE)
            MarkEntireFrameForScreenUpdate(frame);
        return;
    case MacroSetValue_THREEDVIEW: MarkFrameViewForScreenUpdate(frame); return;
    case MacroSetValue_FRAMENAME:
        MarkFrameStyleForScreenUpdate(frame);
        MarkFramePostDataForScreenUpdate(frame);
        return;
    case MacroSetValue_ACTIVEFIELDZONES:
    case MacroSetValue_ACTIVEFIELDMAPS:
    case MacroSetValue_FIELD:
    case MacroSetValue_FIELDMAP:
    case MacroSetValue_FIELDLAYERS: MarkFrameZonesForScreenUpdate(frame); return;
    case MacroSetValue_GLOBALSCATTER:
        if (path[1] == MacroSetValue_LEGEND)
            MarkFramePostDataForScreenUpdate(frame);
        else
            MarkFrameDataForScreenUpdate(frame);
        return;
    case MacroSetValue_GLOBALCONTOUR:
        if (path[2] == MacroSetValue_LEGEND) {
            MarkFramePostDataForScreenUpdate(frame);
        } else {
            MarkFrameDataForScreenUpdate(frame);
            if (path[2] == MacroSetValue_LABELS) MarkFramePostDataForScreenUpdate(frame);
        }
        return;
    case MacroSetValue_GLOBALTWODVECTOR:
    case MacroSetValue_GLOBALTHREEDVECTOR:
    case MacroSetValue_GLOBALSTREAM:
    case MacroSetValue_GLOBALISOSURFACE:
    case MacroSetValue_ISOSURFACEATTRIBUTES:
    case MacroSetValue_SLICEATTRIBUTES: return;
    case MacroSetValue_FRAMELAYOUT: MarkFrameSizeAndPositionForScreenUpdate(frame); return;
    default: MarkEntireFrameForScreenUpdate(frame); return;
    }
}

// The leaf row of a path: its last entry.
int leafOf(const int path[7]) {
    int n = 0;
    while (n < 6 && path[n + 1] >= 0) n++;
    return path[n];
}

// A link flag may be switched on only where the frame's plot type lets it act.
bool linkAllowed(const int path[7], ArbParam_t argValue, std::string *error) {
    if (IsProcessingConfigFile || IsPerformingUndo() || CurFrame == nullptr || argValue == 0) return true;
    if (path[0] != MacroSetValue_LINKING && path[0] != MacroSetValue_FRAMELINKING) return true;
    int leaf = leafOf(path);
    return !IsLinkFlagRow(leaf) || FrameOkToSetLink(CurFrame, leaf, error);
}

// After a change of the current frame: a link switched on takes the linked attribute, a changed
// attribute goes to the linked frames.
void followLinks(const int path[7], ArbParam_t argValue) {
    Frame_s *frame = CurFrame;
    if (frame == nullptr) return;
    int leaf = leafOf(path);
    if ((path[0] == MacroSetValue_LINKING || path[0] == MacroSetValue_FRAMELINKING) && IsLinkFlagRow(leaf) && argValue != 0)
        AddLinkToCurFrame(leaf);
    else if (path[0] == MacroSetValue_FRAMELAYOUT)
        PropagateAttributesToLinkedFrames(frame, MacroSetValue_LINKFRAMESIZEANDPOSITION);
    else if (path[0] == MacroSetValue_THREEDVIEW || path[0] == MacroSetValue_GLOBALTHREED ||
             path[0] == MacroSetValue_TWODAXIS || path[0] == MacroSetValue_XYLINEAXIS || path[0] == MacroSetValue_XYAXIS ||
             path[0] == MacroSetValue_POLARVIEW)
        PropagateView(frame);
}

// GLOBALCONTOUR n VAR: the group's levels and ranges follow the new variable; one they cannot
// follow is put back.
GlobalContour_s *contourOfVarPath(FrameStyle_s *style, const int path[7]) {
    bool isVar = path[0] == MacroSetValue_GLOBALCONTOUR && path[1] >= 1 && path[1] <= MaxContourGroups &&
                 path[2] == MacroSetValue_VAR && path[3] < 0;
    return isVar && style != nullptr ? &style->GlobalContour[path[1] - 1] : nullptr;
}
SetValueReturnCode_e followContourVar(FrameStyle_s *style, const int path[7], int oldVar) {
    GlobalContour_s *contour = contourOfVarPath(style, path);
    if (contour == nullptr || SetValueHooks.NewContourVar == nullptr) return SetValue_Ok;
    if (SetValueHooks.NewContourVar(path[1] - 1, oldVar, contour->Var)) return SetValue_Ok;
    contour->Var = oldVar;
    return fail(SetValue_InvalidVarOrZone, "Variable not in current data set");
}

// The frame record a frame row addresses: the base record while the configuration file runs,
// else the current frame's.
FrameStyle_s *frameStyleTarget() {
    if (IsProcessingConfigFile) return &FrameBase;
    return CurFrame != nullptr ? &CurFrame->Style : nullptr;
}

}  // namespace

bool IsSetValueMajorAvailable(int row) {
    bool isFrame, isGeneral;
    CategorizeMajorCommand(row, &isFrame, &isGeneral);
    return isGeneral || row == MacroSetValue_FRAMENAME || row == MacroSetValue_GLOBALTIME ||
           (isFrame && IsFrameStyleMajorRow(row));
}

SetValueReturnCode_e SetValue7(ArbParam_t argValue, double doubleValue, AssignOp_e assignOp, const int pathIn[7],
                               bool raiseStateChange) {
    LastSetValueError.clear();
    struct CheckScope {
        bool saved = CheckFrameReferences;
        CheckScope() { CheckFrameReferences = true; }
        ~CheckScope() { CheckFrameReferences = saved; }
    } checkScope;
    int path[7];
    bool isFrame, isGeneral;
    CategorizeMajorCommand(pathIn[0], &isFrame, &isGeneral);
    // Frame style changes are one undo step each: zone and map style, or other style.
    bool undoBlock = isFrame && raiseStateChange;
    if (undoBlock) {
        int row = pathIn[0];
        bool mapStyle = (row >= 507 && row <= 510) || row == 543 || row == 544 || row == 547 || row == 548;
        BeginUndoCommandBlock(mapStyle ? UndoBlock_ZoneAndMapStyle : UndoBlock_OtherStyle);
    }
    SetValueReturnCode_e code;
    if (!normalizePath(pathIn, path)) {
        code = badOption(pathIn[6], pathIn[0]);
    } else if (isFrameSpecial(path)) {
        code = setFrameSpecial(path, argValue, doubleValue, assignOp);
    } else if (isGeneral) {
        code = GeneralState_s_SetValue(path, argValue, doubleValue, assignOp);
    } else if (isMapStyleRow(path[0]) && !IsProcessingConfigFile) {
        code = setMapStyle(path, argValue, doubleValue, assignOp);
    } else if (isFrame && IsFrameStyleMajorRow(path[0])) {
        FrameStyle_s *style = frameStyleTarget();
        std::string error;
        if (style == nullptr)
            code = fail(SetValue_ContextError, "There is no current frame.");
        else if (!linkAllowed(path, argValue, &error))
            code = fail(SetValue_ContextError, error);
        else if (IsProcessingConfigFile && contourOfVarPath(style, path) != nullptr)
            code = notInConfig("assign the contouring variable");
        else {
            const GlobalContour_s *contour = contourOfVarPath(style, path);
            int oldVar = contour != nullptr ? contour->Var : -1;
            code = FrameStyleSetValue(style, path, argValue, doubleValue, assignOp, &error);
            if (code == SetValue_Ok && raiseStateChange && !IsProcessingConfigFile)
                code = followContourVar(style, path, oldVar);
        }
        if (!error.empty()) LastSetValueError = error;
        if (code == SetValue_Ok && !IsProcessingConfigFile) followLinks(path, argValue);
    } else if (isFrame) {
        code = fail(SetValue_InvalidCommandOption, "$!" + rowName(path[0]) + " is not available yet.");
    } else {
        char text[64];
        snprintf(text, sizeof(text), "Invalid Major Command (%d)", path[0]);
        code = fail(SetValue_InvalidCommandOption, text);
    }
    if (GeneralBase.Debug) printDebug(code, argValue, doubleValue, path);
    // Settings of the interactive tools are not recorded.
    bool toolSetting = path[0] == MacroSetValue_INTERFACE &&
                       (path[1] == MacroSetValue_ROTATION || path[1] == MacroSetValue_TRANSLATION ||
                        path[1] == MacroSetValue_SCALE || path[1] == MacroSetValue_DATA);
    if (code == SetValue_Ok && IsRecording() && !IsPerformingUndo() && !toolSetting)
        RecordSetValueCommand(path, argValue, doubleValue, int(assignOp));
    if (code == SetValue_Ok) {
        if (isFrame)
            markForStyleChange(path);
        else if (path[0] == MacroSetValue_PAPER || path[0] == MacroSetValue_BASICCOLOR)
            MarkWorkAreaForScreenUpdate();
    }
    if (code == SetValue_Ok && raiseStateChange && !IsProcessingStylesheet) announce(path);
    if (undoBlock) EndUndoCommandBlock(code == SetValue_Ok);
    return code;
}

SetValueReturnCode_e SetInterfaceValue(int row, ArbParam_t argValue, double doubleValue) {
    const int path[7] = {MacroSetValue_INTERFACE, row, -1, -1, -1, -1, -1};
    return SetValue7(argValue, doubleValue, AssignOp_Equals, path, true);
}

SetValueReturnCode_e GetValue(double *doubleOut, ArbParam_t *argOut, const int pathIn[7]) {
    int path[7];
    if (!normalizePath(pathIn, path)) return SetValue_InvalidCommandOption;
    if (isFrameSpecial(path)) {
        Frame_s *frame = CurFrame;
        if (frame == nullptr) return SetValue_ContextError;
        int row = path[0];
        if (row == MacroSetValue_FRAMENAME)
            *argOut = reinterpret_cast<ArbParam_t>(frame->Name.c_str());
        else if (row == MacroSetValue_PLOTTYPE || row == MacroSetValue_FRAMEMODE)
            *argOut = ArbParam_t(frame->PlotType);
        else if (row == MacroSetValue_GLOBALTIME)
            *doubleOut = frame->SolutionTime;
        else if (row == MacroSetValue_ACTIVEFIELDZONES)
            *argOut = reinterpret_cast<ArbParam_t>(GetActiveFieldZones(frame));
        else
            *argOut = reinterpret_cast<ArbParam_t>(*activeSetOf(frame, row));
        return SetValue_Ok;
    }
    bool isFrame, isGeneral;
    CategorizeMajorCommand(path[0], &isFrame, &isGeneral);
    if (isGeneral) return GeneralState_s_GetValue(path, doubleOut, argOut);
    if (isMapStyleRow(path[0]) && !IsProcessingConfigFile) {
        // One map: the number in path[1] (from 1), else the first shown one.
        Frame_s *frame = CurFrame;
        if (frame == nullptr) return SetValue_ContextError;
        bool lines = path[0] == MacroSetValue_LINEMAP || path[0] == MacroSetValue_XYMAP;
        const Set_a *active = lines ? frame->ActiveLineMaps : frame->ActiveFieldMaps;
        int map = path[1] >= 1 ? path[1] - 1 : active != nullptr ? int(GetNextMember(active, -1)) : -1;
        if (path[0] == MacroSetValue_FIELD && path[1] >= 1) map = GetFieldMapForZone(frame, EntIndex_t(path[1] - 1));
        if (lines ? !IsValidLineMap(frame, map) : !IsValidFieldMap(frame, map)) return SetValue_InvalidCommandOption;
        return lines ? LineMapStyleGetValue(&frame->LineMapAttributes[size_t(map)]->Style, path, doubleOut, argOut)
                     : FieldMapStyleGetValue(&frame->FieldAttributes[size_t(map)]->Style, path, doubleOut, argOut);
    }
    if (isFrame && IsFrameStyleMajorRow(path[0])) {
        const FrameStyle_s *style = frameStyleTarget();
        if (style == nullptr) return SetValue_ContextError;
        return FrameStyleGetValue(style, path, doubleOut, argOut);
    }
    return SetValue_InvalidCommandOption;
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

// ---- walking a compressed set command --------------------------------------------------------

namespace {

struct SubCommandWalker {
    int line;
    const char *command;
    int path[7];

    bool report(const std::string &message) {
        ErrBadMacro(message.c_str(), line, command, true);
        return false;
    }

    // The number behind a grouped major row or a numbered block, into path[at]: a whole number
    // from 1 on (a group number within its range).
    bool number(const char **p, int at, const char *message, const InputSpecs_s *rules, const char *rangeMessage = nullptr) {
        LgIndex_t value;
        if (!ScanCompressedForInteger(p, &value)) return report(message);
        if (rangeMessage == nullptr) rangeMessage = message;
        if (value < 1) return report(rangeMessage);
        if (rules != nullptr && !inRange(double(value) - rules->InterfaceAdjust, *rules)) return report(rangeMessage);
        path[at] = value;
        return true;
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
            if (GetSetValueKind(row) == SetValueKind_Parent) {
                if (const char *message = numberedParentMessage(row, at > 0 ? path[at - 1] : -1)) {
                    if (++at >= 7) return report("Macro has Too Many Sub-Options");
                    if (!number(p, at, message, nullptr)) return false;
                }
                for (int n = at + 1; n < 7; n++) path[n] = -1;
                while (**p == ' ') (*p)++;
                if (**p != '{') return report("Expecting Start of sub-command section.");
                (*p)++;
                if (!walk(p, at + 1, true)) return false;
                continue;
            }
            for (int n = at + 1; n < 7; n++) path[n] = -1;
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
    std::unique_ptr<Set_a, void (*)(Set_a *)> modifier(nullptr, [](Set_a *set) { DeallocSet(&set); });
    struct ModifierScope {
        const std::unique_ptr<Set_a, void (*)(Set_a *)> &set;
        ~ModifierScope() { SetValueModifierSet = nullptr; }
    } scope{modifier};
    int depth = 1;
    if (majorRow == MacroSetValue_COLORMAP || majorRow == MacroSetValue_COLORSPECTRUM) {
        // The old forms name their group; only group 1 was ever kept, so any other does nothing.
        LgIndex_t group;
        const char *q = p;
        if (ScanCompressedForInteger(&q, &group)) {
            if (group != 1) return true;
            p = q;
        }
    } else if (isMapStyleRow(majorRow)) {
        if (!IsProcessingConfigFile && (CurFrame == nullptr || CurFrame->DataSet == nullptr)) {
            ErrBadMacro("No data set available.", line, command, true);
            return false;
        }
        while (*p == ' ') p++;
        if (*p == '[') {
            if (IsProcessingConfigFile) {
                ErrBadMacro("Modifier set not allowed when command is used in the config file", line, command, true);
                return false;
            }
            Set_a *given = nullptr;
            if (!ScanCompressedForSet(&p, line, command, &given)) return false;
            modifier.reset(given);
            if (IsEmpty(given)) {
                ErrBadMacro("Invalid Command Modifier or Empty command", line, command, true);
                return false;
            }
        }
        // The set stands aside; its place in the path holds 0, "the maps of the command".
        walker.path[1] = 0;
        depth = 2;
    } else if (const GroupedMajor_s *grouped = findGroupedMajor(majorRow)) {
        if (majorRow == MacroSetValue_GLOBALCONTOUR && !IsProcessingConfigFile &&
            (CurFrame == nullptr || CurFrame->DataSet == nullptr)) {
            ErrBadMacro("No data set available.", line, command, true);
            return false;
        }
        if (!walker.number(&p, 1, grouped->Message, grouped->Spec, grouped->RangeMessage)) return false;
        depth = 2;
    }
    SetValueModifierSet = modifier.get();
    if (GetSetValueKind(majorRow) != SetValueKind_Parent) return walker.leaf(&p, majorRow);
    // Each value set is its own style change, announced with its whole path.
    return walker.walk(&p, depth, false);
}
