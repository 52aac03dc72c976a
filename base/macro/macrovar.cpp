#include "base/macro/macrovar.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "base/data/datautil.h"
#include "base/data/readdataset.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/strlist.h"
#include "base/kernel/version.h"
#include "base/macro/actcmd.h"
#include "base/macro/macro1.h"
#include "base/macro/macrocomp.h"
#include "base/plot/fieldmap.h"
#include "base/plot/frame.h"
#include "base/plot/linemap.h"
#include "base/plot/view.h"
#include "base/plot/solntime.h"

namespace {

struct MacroVar_s {
    std::string Name;  // upper case
    std::string Value;
};
std::vector<MacroVar_s> MacroVars;  // at most MaxMacroVars, in order of creation

std::string upper(std::string text) {
    for (char &c : text) c = char(toupper(static_cast<unsigned char>(c)));
    return text;
}

MacroVar_s *findVar(const std::string &name) {
    std::string key = upper(name);
    for (MacroVar_s &var : MacroVars)
        if (var.Name == key) return &var;
    return nullptr;
}

bool isNameChar(unsigned char c) { return isalnum(c) || c == '_' || c >= 192; }

// ---- references -------------------------------------------------------------------------

struct Subscript_s {
    long Value = 0;
    bool ActiveOffset = false;
};

// A reference as it stands between the bars: |$HOME|, |A|, |ZONENAME[2]|, |AUXZONE[1]:Common.X|,
// |A%5.2f|, |A:=default|.
struct MacroVarRef_s {
    bool Environment = false;
    std::string Name;  // upper case, except for environment variables
    std::vector<Subscript_s> Subscripts;
    std::string SubIdentifier;
    std::string Format;
    bool HasDefault = false;
    std::string Default;
    bool Substring = false;  // [++n] keeps the first n characters, [--n] the last
    bool SubstringFromEnd = false;
    long SubstringLength = 0;
};

// Parses the text between the bars; false for a malformed reference.
bool GetMacroVarName(const std::string &text, MacroVarRef_s *ref) {
    size_t p = 0;
    if (p < text.size() && text[p] == '$') {
        ref->Environment = true;
        p++;
    }
    size_t start = p;
    while (p < text.size() && isNameChar(static_cast<unsigned char>(text[p]))) p++;
    if (p == start) return false;
    ref->Name = ref->Environment ? text.substr(start, p - start) : upper(text.substr(start, p - start));
    while (p < text.size()) {
        char c = text[p];
        if (c == ':' && p + 1 < text.size() && text[p + 1] == '=') {
            ref->HasDefault = true;
            ref->Default = text.substr(p + 2);
            return ref->Default.size() <= 120;
        }
        if (c == ':' && p + 1 < text.size() && isdigit(static_cast<unsigned char>(text[p + 1]))) {
            size_t q = p + 1;
            while (q < text.size() && isdigit(static_cast<unsigned char>(text[q]))) q++;
            ref->Subscripts.push_back({atol(text.substr(p + 1, q - p - 1).c_str()), false});
            p = q;
            continue;
        }
        if (c == ':') {
            size_t q = p + 1;
            while (q < text.size() && text[q] != '%' && !(text[q] == ':' && q + 1 < text.size() && text[q + 1] == '='))
                q++;
            ref->SubIdentifier = text.substr(p + 1, q - p - 1);
            if (ref->SubIdentifier.empty()) return false;
            p = q;
            continue;
        }
        if (c == '[') {
            size_t close = text.find(']', p);
            if (close == std::string::npos) return false;
            std::string inside = text.substr(p + 1, close - p - 1);
            p = close + 1;
            if (inside.size() > 2 && (inside.compare(0, 2, "++") == 0 || inside.compare(0, 2, "--") == 0)) {
                char *end = nullptr;
                long length = strtol(inside.c_str() + 2, &end, 10);
                if (*end != '\0' || length < 0) return false;
                ref->Substring = true;
                ref->SubstringFromEnd = inside[0] == '-';
                ref->SubstringLength = length;
                continue;
            }
            Subscript_s subscript;
            std::string key = upper(inside);
            if (key.compare(0, 13, "ACTIVEOFFSET=") == 0) {
                subscript.ActiveOffset = true;
                inside = inside.substr(13);
            }
            char *end = nullptr;
            subscript.Value = strtol(inside.c_str(), &end, 10);
            if (inside.empty() || *end != '\0') return false;
            ref->Subscripts.push_back(subscript);
            continue;
        }
        if (c == '%') {
            size_t q = p + 1;
            while (q < text.size() && strchr(" -#0123456789.", text[q]) != nullptr) q++;
            if (q < text.size() && strchr("sdeEfgG", text[q]) != nullptr) q++;
            ref->Format = text.substr(p, q - p);
            p = q;
            continue;
        }
        return false;
    }
    return true;
}

// ---- formats ----------------------------------------------------------------------------

bool numberFromText(const std::string &text, double *value) {
    const char *s = text.c_str();
    return ScanForReal(&s, value) && strspn(s, " \t") == strlen(s);
}

// A value printed by a format of the macro's own, at whatever width it asks for.
std::string printed(const char *format, ...) {
    va_list args, again;
    va_start(args, format);
    va_copy(again, args);
    int length = vsnprintf(nullptr, 0, format, args);
    va_end(args);
    std::string text(length > 0 ? size_t(length) : 0, '\0');
    if (length > 0) vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

bool StrFromDouble(const std::string &format, double value, std::string *result, std::string *error) {
    if (format.size() < 2) {
        *error = "Special macro variable formatting must include a format type character.";
        return false;
    }
    char type = format.back();
    std::string formatted;
    if (type == 'd') {
        // The range is that of the value; rounding away from zero follows.
        if (!(value <= 2147483646.0 && value >= -2147483646.0)) {
            *error = "Value out of range to apply integer formatting.";
            return false;
        }
        double rounded = value + (value >= 0 ? 0.499 : -0.499);
        formatted = printed(format.c_str(), int(std::trunc(rounded)));
    } else if (strchr("eEfgG", type) != nullptr) {
        formatted = printed(format.c_str(), value);
    } else {
        *error = "Invalid format specified for value formatting.";
        return false;
    }
    *result = formatted;
    return true;
}

bool StrFromStr(const std::string &format, const std::string &text, std::string *result, std::string *error) {
    if (format.size() < 2) {
        *error = "Special macro variable formatting must include a format type character.";
        return false;
    }
    char type = format.back();
    if (type == 's') {
        *result = printed(format.c_str(), text.c_str());
        return true;
    }
    if (strchr("deEfgG", type) != nullptr) {
        double value;
        if (!numberFromText(text, &value)) {
            *error = "Invalid format specified for value formatting.";
            return false;
        }
        return StrFromDouble(format, value, result, error);
    }
    *error = "Invalid format specified for string formatting.";
    return false;
}

bool applyFormat(const std::string &format, const std::string &value, std::string *result, std::string *error) {
    if (format.empty()) {
        *result = value;
        return true;
    }
    double number;
    if (numberFromText(value, &number)) return StrFromDouble(format, number, result, error);
    return StrFromStr(format, value, result, error);
}

// ---- intrinsics -------------------------------------------------------------------------

struct IntrinsicContext_s {
    const MacroVarRef_s &Ref;
    std::string *Value;
    std::string *Error;

    IntrinsicResult_e fail(IntrinsicResult_e result, const std::string &message) const {
        *Error = message;
        return result;
    }
    IntrinsicResult_e syntax(const char *format) const {
        char text[256];
        snprintf(text, sizeof(text), format, Ref.Name.c_str());
        return fail(Intrinsic_Syntax, text);
    }
    IntrinsicResult_e found(const std::string &value) const {
        *Value = value;
        return Intrinsic_Found;
    }
    IntrinsicResult_e number(double value) const { return found(MacroNumberText(value)); }
    bool plain() const { return Ref.Subscripts.empty() && Ref.SubIdentifier.empty(); }
    IntrinsicResult_e noSubscript() const { return syntax("Invalid character following %s."); }
    DataSet_s *dataSet() const { return CurFrame != nullptr ? CurFrame->DataSet : nullptr; }
    IntrinsicResult_e needsDataSet() const { return syntax("%s requires a data set."); }
};

using IntrinsicHandler_pf = IntrinsicResult_e (*)(const IntrinsicContext_s &c);

// A zone number of a reference: one-based, or counted among the enabled zones with ACTIVEOFFSET
// (the active field maps, until maps exist).
bool zoneOf(const IntrinsicContext_s &c, const Subscript_s &subscript, EntIndex_t *zone) {
    DataSet_s *dataSet = c.dataSet();
    if (!subscript.ActiveOffset) {
        *zone = EntIndex_t(subscript.Value - 1);
        return subscript.Value >= 1 && subscript.Value <= dataSet->NumZones && IsZoneEnabled(dataSet, *zone);
    }
    long n = 0;
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z))
        if (++n == subscript.Value) {
            *zone = EntIndex_t(z);
            return true;
        }
    return false;
}

bool varOf(const IntrinsicContext_s &c, const Subscript_s &subscript, EntIndex_t *var) {
    *var = EntIndex_t(subscript.Value - 1);
    return !subscript.ActiveOffset && subscript.Value >= 1 && subscript.Value <= c.dataSet()->NumVars &&
           IsVarEnabled(c.dataSet(), *var);
}

IntrinsicResult_e minMaxVar(const IntrinsicContext_s &c, bool wantMax) {
    if (c.dataSet() == nullptr) return c.needsDataSet();
    EntIndex_t var;
    if (c.Ref.Subscripts.size() != 1 || !varOf(c, c.Ref.Subscripts[0], &var))
        return c.fail(Intrinsic_Syntax, "Invalid variable number for " + c.Ref.Name + ".");
    bool any = false;
    double min = 0, max = 0;
    DataSet_s *dataSet = c.dataSet();
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        double zoneMin, zoneMax;
        if (IsVarPassive(dataSet, EntIndex_t(z), var) ||
            !GetNativeVarMinMaxForZoneVar(dataSet, EntIndex_t(z), var, true, &zoneMin, &zoneMax))
            continue;
        min = any ? std::min(min, zoneMin) : zoneMin;
        max = any ? std::max(max, zoneMax) : zoneMax;
        any = true;
    }
    return c.number(wantMax ? max : min);
}

int plotTypeNumber(PlotType_e type) {
    switch (type) {
    case PlotType_Cartesian3D: return 3;
    case PlotType_Cartesian2D: return 2;
    case PlotType_XYLine: return 1;
    case PlotType_PolarLine: return 4;
    default: return 0;
    }
}

// The axis detail that a letter names in the current frame's plot type, or null.
const AxisDetail_s *axisDetailOf(char letter) {
    if (CurFrame == nullptr) return nullptr;
    const FrameStyle_s &style = CurFrame->Style;
    switch (CurFrame->PlotType) {
    case PlotType_Cartesian3D:
        return letter == 'X' ? &style.ThreeDAxis.XDetail : letter == 'Y' ? &style.ThreeDAxis.YDetail
                             : letter == 'Z' ? &style.ThreeDAxis.ZDetail : nullptr;
    case PlotType_Cartesian2D:
        return letter == 'X' ? &style.TwoDAxis.XDetail : letter == 'Y' ? &style.TwoDAxis.YDetail : nullptr;
    case PlotType_PolarLine:
        return letter == 'A' ? &style.PolarAxis.ThetaDetail : letter == 'R' ? &style.PolarAxis.RDetail : nullptr;
    case PlotType_XYLine: {
        // The lowest numbered axis that a shown map uses.
        const Set_a *active = CurFrame->ActiveLineMaps;
        int lowest = MaxXYLineAxes;
        for (SetIndex_t m = active != nullptr ? GetNextMember(active, -1) : -1; m >= 0; m = GetNextMember(active, m))
            if (IsValidLineMap(CurFrame, int(m))) {
                const LineMapAssign_s &assign = CurFrame->LineMapAttributes[size_t(m)]->Style.Assign;
                lowest = std::min(lowest, letter == 'X' ? assign.XAxis : assign.YAxis);
            }
        if (lowest == MaxXYLineAxes) lowest = 0;
        return letter == 'X' ? &style.XYLineAxis.XDetail[lowest] : letter == 'Y' ? &style.XYLineAxis.YDetail[lowest] : nullptr;
    }
    default: return nullptr;
    }
}

IntrinsicResult_e axisRange(const IntrinsicContext_s &c, bool wantMax) {
    if (!c.plain()) return c.noSubscript();
    const AxisDetail_s *detail = axisDetailOf(c.Ref.Name.back());
    if (detail == nullptr) return c.fail(Intrinsic_Syntax, "Axis variable not defined.");
    return c.number(wantMax ? detail->RangeMax : detail->RangeMin);
}

// The range of the variable on an axis role: in a line plot that of the first shown map.
IntrinsicResult_e roleRange(const IntrinsicContext_s &c, bool wantMax) {
    if (!c.plain()) return c.noSubscript();
    if (c.dataSet() == nullptr) return c.needsDataSet();
    char letter = c.Ref.Name.back();
    int var = -1;
    if (CurFrame->PlotType == PlotType_XYLine || CurFrame->PlotType == PlotType_PolarLine) {
        const Set_a *active = CurFrame->ActiveLineMaps;
        SetIndex_t m = active != nullptr ? GetNextMember(active, -1) : -1;
        if (m >= 0 && IsValidLineMap(CurFrame, int(m))) {
            const LineMapAssign_s &assign = CurFrame->LineMapAttributes[size_t(m)]->Style.Assign;
            bool polar = CurFrame->PlotType == PlotType_PolarLine;
            if (letter == (polar ? 'A' : 'X')) var = assign.XAxisVar;
            if (letter == (polar ? 'R' : 'Y')) var = assign.YAxisVar;
        }
    } else if (const AxisDetail_s *detail = axisDetailOf(letter)) {
        var = detail->VarNum;
    }
    if (var < 0) return c.fail(Intrinsic_Syntax, "Internal variable not defined.");
    double min, max;
    GetNativeVarMinMax(CurFrame, EntIndex_t(var), &min, &max);
    return c.number(wantMax ? max : min);
}

// MINC, MAXU, MINS, ...: the range, over the frame, of the variable a layer of the style uses
// (C the contour variable of group 1, U V W the vector components of the frame's kind of
// vectors, S the scatter sizing variable, B the first variable of the first value blanking
// constraint).
IntrinsicResult_e styleVarRange(const IntrinsicContext_s &c, bool wantMax) {
    if (!c.plain()) return c.noSubscript();
    if (c.dataSet() == nullptr) return c.needsDataSet();
    const FrameStyle_s &style = CurFrame->Style;
    const GlobalVector_s &vector = CurFrame->PlotType == PlotType_Cartesian3D ? style.GlobalThreeDVector : style.GlobalTwoDVector;
    int var = -1;
    switch (c.Ref.Name.back()) {
        case 'C': var = style.GlobalContour[0].Var; break;
        case 'U': var = vector.UVar; break;
        case 'V': var = vector.VVar; break;
        case 'W': var = vector.WVar; break;
        case 'S': var = style.GlobalScatter.Var; break;
        case 'B': var = style.Blanking.Value.Constraint[0].VarA; break;
        default: break;
    }
    if (var < 0 || var >= c.dataSet()->NumVars) return c.fail(Intrinsic_Syntax, "Internal variable not defined.");
    double min, max;
    GetNativeVarMinMax(CurFrame, EntIndex_t(var), &min, &max);
    return c.number(wantMax ? max : min);
}

// SLICEPLANETYPE and the slice positions of slice group 1: the kind of planes, and where the
// primary, start and end planes stand along their axis (indices from 1).
const char *const SlicePlaneNames[] = {"X-Planes", "Y-Planes", "Z-Planes", "I-Planes", "J-Planes", "K-Planes"};

// The frame these read is missing only while the configuration file runs.
IntrinsicResult_e noFrame(const IntrinsicContext_s &c) { return c.fail(Intrinsic_NotAvailable, c.Ref.Name + " is not available."); }

IntrinsicResult_e slicePlaneType(const IntrinsicContext_s &c) {
    if (!c.plain()) return c.noSubscript();
    if (CurFrame == nullptr) return noFrame(c);
    int surface = CurFrame->Style.SliceAttributes[0].SliceSurface;
    return c.found(surface >= 0 && surface < 6 ? SlicePlaneNames[surface] : "");
}

IntrinsicResult_e slicePosition(const IntrinsicContext_s &c, const SlicePosition_s SliceAttributes_s::*which) {
    if (!c.plain()) return c.noSubscript();
    if (CurFrame == nullptr) return noFrame(c);
    const SliceAttributes_s &slice = CurFrame->Style.SliceAttributes[0];
    const SlicePosition_s &position = slice.*which;
    switch (slice.SliceSurface) {
        case 0: return c.number(position.X);
        case 1: return c.number(position.Y);
        case 2: return c.number(position.Z);
        case 3: return c.number(position.I + 1);
        case 4: return c.number(position.J + 1);
        default: return c.number(position.K + 1);
    }
}

// ZONEMESHCOLOR[n]: the colour of the mesh of zone n, as its macro word.
IntrinsicResult_e zoneMeshColor(const IntrinsicContext_s &c) {
    if (c.dataSet() == nullptr) return c.needsDataSet();
    EntIndex_t zone;
    if (c.Ref.Subscripts.size() != 1 || !c.Ref.SubIdentifier.empty() || !zoneOf(c, c.Ref.Subscripts[0], &zone))
        return c.syntax("Invalid zone number for %s.");
    int map = GetFieldMapForZone(CurFrame, zone);
    if (map < 0 || !IsValidFieldMap(CurFrame, map)) return c.syntax("Invalid zone number for %s.");
    std::string name;
    GetEnumText(CurFrame->FieldAttributes[size_t(map)]->Style.Mesh.Color, MacroSetValue_COLOR, false, &name);
    return c.found(name);
}

// The zone of the first shown map: a field map's first zone, a line map's zone.
EntIndex_t firstActiveMapZone(DataSet_s *dataSet) {
    Frame_s *frame = CurFrame;
    if (frame->PlotType == PlotType_XYLine || frame->PlotType == PlotType_PolarLine) {
        const Set_a *active = frame->ActiveLineMaps;
        SetIndex_t m = active != nullptr ? GetNextMember(active, -1) : -1;
        if (m >= 0 && IsValidLineMap(frame, int(m))) return EntIndex_t(frame->LineMapAttributes[size_t(m)]->Style.Assign.Zone);
    } else if (const Set_a *zones = GetActiveFieldZones(frame); zones != nullptr && !IsEmpty(zones)) {
        return EntIndex_t(GetNextMember(zones, -1));
    }
    return EntIndex_t(GetNextMember(dataSet->EnabledZones, -1));
}

IntrinsicResult_e maxIndex(const IntrinsicContext_s &c, int which) {
    if (!c.plain()) return c.noSubscript();
    if (c.dataSet() == nullptr) return c.needsDataSet();
    EntIndex_t zone = firstActiveMapZone(c.dataSet());
    if (zone < 0 || zone >= c.dataSet()->NumZones) return c.number(0);
    LgIndex_t ijk[3];
    GetZoneIndices(c.dataSet(), zone, &ijk[0], &ijk[1], &ijk[2]);
    return c.number(ijk[which]);
}

IntrinsicResult_e auxItem(const IntrinsicContext_s &c, const AuxData_s *aux, const char *owner) {
    ArbParam_t value;
    AuxDataType_e type;
    bool retain;
    if (c.Ref.SubIdentifier.empty()) return c.syntax("Missing auxiliary data name for %s.");
    if (aux == nullptr || !AuxDataGetItemByName(aux, c.Ref.SubIdentifier.c_str(), &value, &type, &retain))
        return c.fail(Intrinsic_Syntax, c.Ref.Name + ":" + c.Ref.SubIdentifier + " is not defined for this " + owner + ".");
    return c.found(reinterpret_cast<const char *>(value));
}

// The file names of the data set, from the $!READDATASET commands of its journal.
bool dataSetFileNames(const DataSet_s *dataSet, std::vector<std::string> *names) {
    if (dataSet->Journal.Commands == nullptr) return true;
    for (LgIndex_t n = 0; n < ArrayListGetCount(dataSet->Journal.Commands); n++) {
        const char *command = ArrayListGetItem(dataSet->Journal.Commands, n).CharPtr;
        if (!ExtractFileNamesFromLoadCommand(command, names)) return false;
    }
    return true;
}

// The sheet in use as it lies: a landscape sheet is wider than high.
double paperSide(bool width) {
    const Paper_s &paper = GeneralBase.Paper;
    int slot = PaperSizeInfoSlot(paper.PaperSize);
    if (slot < 0) return 0.0;
    const PaperSizeInfo_s &info = paper.PaperSizeInfo[size_t(slot)];
    double shortSide = std::min(info.Width, info.Height), longSide = std::max(info.Width, info.Height);
    bool alongWidthIsLong = !paper.OrientPortrait;
    return width == alongWidthIsLong ? longSide : shortSide;
}

struct Intrinsic_s {
    const char *Name;
    IntrinsicHandler_pf Handler;
};

#define PLAIN(...)                                                   \
    [](const IntrinsicContext_s &c) -> IntrinsicResult_e {          \
        if (!c.plain()) return c.noSubscript();                      \
        __VA_ARGS__;                                                 \
    }
#define WITH_DATA(...)                                               \
    [](const IntrinsicContext_s &c) -> IntrinsicResult_e {          \
        if (!c.plain()) return c.noSubscript();                      \
        if (c.dataSet() == nullptr) return c.needsDataSet();         \
        DataSet_s *dataSet = c.dataSet();                            \
        __VA_ARGS__;                                                        \
    }
#define AXIS_RANGE(wantMax) [](const IntrinsicContext_s &c) { return axisRange(c, wantMax); }
#define ROLE_RANGE(wantMax) [](const IntrinsicContext_s &c) { return roleRange(c, wantMax); }
#define STYLE_RANGE(wantMax) [](const IntrinsicContext_s &c) { return styleVarRange(c, wantMax); }
// Values of parts of the system that this build does not have yet.
#define LATER [](const IntrinsicContext_s &c) -> IntrinsicResult_e { return c.fail(Intrinsic_NotAvailable, c.Ref.Name + " is not available."); }

const Intrinsic_s Intrinsics[] = {
    {"ORVHOME", PLAIN(return c.found(OrvanexHomeDirectory))},
    {"NUMWIN", PLAIN(return c.number(FrameStackCount()))},
    {"NUMFRAMES", PLAIN(return c.number(FrameStackCount()))},
    {"COLORMAPDYNAMIC", PLAIN(return c.number(0))},
    {"FRAMEMODE", PLAIN(return c.number(CurFrame != nullptr ? plotTypeNumber(CurFrame->PlotType) : 0))},
    {"PLOTTYPE", PLAIN(return c.number(CurFrame != nullptr ? plotTypeNumber(CurFrame->PlotType) : 0))},
    {"IS3DV", PLAIN(return c.number(1))},
    {"INBATCHMODE", PLAIN(return c.number(InBatchMode ? 1 : 0))},
    {"OPSYS", PLAIN(return c.number(1))},
    {"NUMPLANES", PLAIN(return c.number(24))},
    {"BYTEORDERING", PLAIN(return c.found("INTEL"))},
    {"ORVANEXVERSION", PLAIN(return c.number(110))},
    {"ISDATASETAVAILABLE", PLAIN(return c.number(c.dataSet() != nullptr ? 1 : 0))},
    {"NUMXYMAPS", PLAIN(return c.number(NumLineMaps(CurFrame)))},
    {"NUMLINEMAPS", PLAIN(return c.number(NumLineMaps(CurFrame)))},
    {"NUMZONES", WITH_DATA(return c.number(dataSet->NumZones))},
    {"NUMVARS", WITH_DATA(return c.number(dataSet->NumVars))},
    {"AXISMINX", AXIS_RANGE(false)}, {"AXISMINY", AXIS_RANGE(false)}, {"AXISMINZ", AXIS_RANGE(false)},
    {"AXISMINR", AXIS_RANGE(false)}, {"AXISMINA", AXIS_RANGE(false)},
    {"AXISMAXX", AXIS_RANGE(true)}, {"AXISMAXY", AXIS_RANGE(true)}, {"AXISMAXZ", AXIS_RANGE(true)},
    {"AXISMAXR", AXIS_RANGE(true)}, {"AXISMAXA", AXIS_RANGE(true)},
    {"MINVAR", [](const IntrinsicContext_s &c) { return minMaxVar(c, false); }},
    {"MAXVAR", [](const IntrinsicContext_s &c) { return minMaxVar(c, true); }},
    {"MINX", ROLE_RANGE(false)}, {"MINY", ROLE_RANGE(false)}, {"MINZ", ROLE_RANGE(false)}, {"MAXX", ROLE_RANGE(true)},
    {"MAXY", ROLE_RANGE(true)}, {"MAXZ", ROLE_RANGE(true)}, {"MINA", ROLE_RANGE(false)}, {"MINR", ROLE_RANGE(false)},
    {"MAXA", ROLE_RANGE(true)}, {"MAXR", ROLE_RANGE(true)}, {"MINU", STYLE_RANGE(false)}, {"MINV", STYLE_RANGE(false)},
    {"MINW", STYLE_RANGE(false)}, {"MAXU", STYLE_RANGE(true)}, {"MAXV", STYLE_RANGE(true)}, {"MAXW", STYLE_RANGE(true)},
    {"MINB", STYLE_RANGE(false)}, {"MAXB", STYLE_RANGE(true)}, {"MINC", STYLE_RANGE(false)}, {"MAXC", STYLE_RANGE(true)},
    {"MINS", STYLE_RANGE(false)}, {"MAXS", STYLE_RANGE(true)},
    {"MAXI", [](const IntrinsicContext_s &c) { return maxIndex(c, 0); }},
    {"MAXJ", [](const IntrinsicContext_s &c) { return maxIndex(c, 1); }},
    {"MAXK", [](const IntrinsicContext_s &c) { return maxIndex(c, 2); }},
    {"PRIMARYSLICEPOS", [](const IntrinsicContext_s &c) { return slicePosition(c, &SliceAttributes_s::PrimaryPosition); }},
    {"STARTSLICEPOS", [](const IntrinsicContext_s &c) { return slicePosition(c, &SliceAttributes_s::StartPosition); }},
    {"ENDSLICEPOS", [](const IntrinsicContext_s &c) { return slicePosition(c, &SliceAttributes_s::EndPosition); }},
    {"SLICEPLANETYPE", slicePlaneType},
    {"LOOP", PLAIN(LgIndex_t current; if (!MacroLoopCurrent(&current)) return c.syntax("%s value is undefined outside of a loop."); return c.number(double(current)))},
    {"MACROFILEPATH", PLAIN(return c.found(MacroFilePath()))},
    {"PLATFORM", PLAIN(return c.found(OrvanexPlatform))},
    {"DATE", PLAIN(time_t now = time(nullptr); std::string t = ctime(&now); return c.found(t.substr(8, 2) + " " + t.substr(4, 3) + " " + t.substr(20, 4)))},
    {"TIME", PLAIN(time_t now = time(nullptr); std::string t = ctime(&now); return c.found(t.substr(11, 8)))},
    {"DATASETTITLE", PLAIN(DataSet_s *dataSet = c.dataSet(); return c.found(dataSet != nullptr ? dataSet->DataSetTitle : "No Data Set"))},
    {"FRAMENAME", PLAIN(return c.found(CurFrame != nullptr ? CurFrame->Name : ""))},
    {"ZONENAME", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         EntIndex_t zone;
         if (c.Ref.Subscripts.size() != 1 || !c.Ref.SubIdentifier.empty() || !zoneOf(c, c.Ref.Subscripts[0], &zone))
             return c.syntax("Invalid zone number for %s.");
         return c.found(GetZoneName(c.dataSet(), zone));
     }},
    {"VARNAME", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         EntIndex_t var;
         if (c.Ref.Subscripts.size() != 1 || !c.Ref.SubIdentifier.empty() || !varOf(c, c.Ref.Subscripts[0], &var))
             return c.syntax("Invalid variable number for %s.");
         return c.found(GetVarName(c.dataSet(), var));
     }},
    {"PRINTFNAME", PLAIN(return c.found(GeneralBase.PrintFName))},
    {"LAYOUTFNAME", PLAIN(return c.found(LayoutFName))},
    {"ZONEMESHCOLOR", zoneMeshColor},
    {"STREAMSTARTPOS", LATER}, {"STREAMTYPE", LATER}, {"ISOSURFACELEVEL", PLAIN(if (CurFrame == nullptr) return noFrame(c); return c.number(CurFrame->Style.IsoSurfaceAttributes[0].IsoValue1))},
    {"DATASETFNAME", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         if (c.Ref.Subscripts.size() > 1 || !c.Ref.SubIdentifier.empty()) return c.noSubscript();
         std::vector<std::string> names;
         if (!dataSetFileNames(c.dataSet(), &names)) return c.fail(Intrinsic_Syntax, "Error processing data journal.");
         if (names.empty()) return c.fail(Intrinsic_Syntax, "No files are associated with the current data set.");
         if (c.Ref.Subscripts.empty()) {
             std::string all;
             for (const std::string &name : names) all += (all.empty() ? "" : "\n") + name;
             return c.found(all);
         }
         long n = c.Ref.Subscripts[0].Value;
         if (n < 1 || size_t(n) > names.size()) {
             char text[256];
             snprintf(text, sizeof(text), "%s at index %ld is not defined for this dataset.", c.Ref.Name.c_str(), n);
             return c.fail(Intrinsic_Syntax, text);
         }
         return c.found(names[size_t(n - 1)]);
     }},
    {"AUXFRAME", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (!c.Ref.Subscripts.empty()) return c.noSubscript();
         return auxItem(c, CurFrame != nullptr ? CurFrame->AuxData : nullptr, "frame");
     }},
    {"AUXDATASET", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         if (!c.Ref.Subscripts.empty()) return c.noSubscript();
         return auxItem(c, c.dataSet()->AuxData, "dataset");
     }},
    {"AUXZONE", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         EntIndex_t zone;
         if (c.Ref.Subscripts.size() != 1 || !zoneOf(c, c.Ref.Subscripts[0], &zone)) return c.syntax("Invalid zone number for %s.");
         return auxItem(c, GetZoneSpec(c.dataSet(), zone)->AuxData, "zone");
     }},
    {"AUXVAR", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         EntIndex_t var;
         if (c.Ref.Subscripts.size() != 1 || !varOf(c, c.Ref.Subscripts[0], &var)) return c.syntax("Invalid variable number for %s.");
         return auxItem(c, GetVarSpec(c.dataSet(), var)->AuxData, "variable");
     }},
    {"AUXLINEMAP", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         // Line maps are numbered as they stand, from 1; there is no active offset for them.
         if (c.Ref.Subscripts.size() != 1 || c.Ref.Subscripts[0].ActiveOffset || c.Ref.Subscripts[0].Value < 1 ||
             c.Ref.Subscripts[0].Value > NumLineMaps(CurFrame))
             return c.syntax("Invalid line map number for %s.");
         return auxItem(c, CurFrame->LineMapAttributes[size_t(c.Ref.Subscripts[0].Value - 1)]->AuxData, "line map");
     }},
    {"PAPERHEIGHT", PLAIN(return c.number(paperSide(false)))},
    {"PAPERWIDTH", PLAIN(return c.number(paperSide(true)))},
    {"EXPORTISRECORDING", PLAIN(return c.found("NO"))},
    {"MACROFNAME", PLAIN(return c.found(MacroRunFileName()))},
    {"VARSTATUS", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         EntIndex_t zone, var;
         if (c.Ref.Subscripts.size() != 2 || !zoneOf(c, c.Ref.Subscripts[0], &zone) || !varOf(c, c.Ref.Subscripts[1], &var))
             return c.syntax("Invalid zone or variable number for %s.");
         return c.found(GetVarStatus(c.dataSet(), zone, var));
     }},
    {"SOLUTIONTIME", [](const IntrinsicContext_s &c) -> IntrinsicResult_e {
         if (c.dataSet() == nullptr) return c.needsDataSet();
         if (!c.Ref.SubIdentifier.empty() || c.Ref.Subscripts.size() > 1) return c.noSubscript();
         if (c.Ref.Subscripts.empty()) return c.number(CurFrame->SolutionTime);
         EntIndex_t zone;
         if (!zoneOf(c, c.Ref.Subscripts[0], &zone)) return c.syntax("Invalid zone number for %s.");
         return c.number(GetZoneSpec(c.dataSet(), zone)->SolutionTime);
     }},
    {"INTERNALLODSTATS", LATER}, {"INTERNALTIMESTATS", LATER},
    {"INTERNALIMAGERENDERINGTEXTUREMAX", LATER}, {"INTERNALSCREENRENDERINGTEXTUREMAX", LATER},
};

#undef PLAIN
#undef WITH_DATA
#undef LATER

const Intrinsic_s *findIntrinsic(const std::string &name) {
    for (const Intrinsic_s &intrinsic : Intrinsics)
        if (name == intrinsic.Name) return &intrinsic;
    return nullptr;
}

IntrinsicResult_e expandReference(MacroVarRef_s ref, std::string *value, std::string *error) {
    if (ref.Environment) {
        if (!ref.Subscripts.empty() || !ref.SubIdentifier.empty()) {
            *error = "Invalid character following environment variable, " + ref.Name + ".";
            return Intrinsic_Syntax;
        }
        const char *env = getenv(ref.Name.c_str());
        if (env == nullptr) {
            *error = "Environment variable, " + ref.Name + ", does not exist.";
            return Intrinsic_Syntax;
        }
        *value = env;
        return Intrinsic_Found;
    }
    // MINV3 and MAXV3 are MINVAR and MAXVAR of variable 3.
    if ((ref.Name.compare(0, 4, "MINV") == 0 || ref.Name.compare(0, 4, "MAXV") == 0) && ref.Name.size() > 4 &&
        std::all_of(ref.Name.begin() + 4, ref.Name.end(), [](char c) { return isdigit(static_cast<unsigned char>(c)); })) {
        ref.Subscripts.insert(ref.Subscripts.begin(), Subscript_s{atol(ref.Name.c_str() + 4), false});
        ref.Name = ref.Name.substr(0, 3) + "VAR";
    }
    const Intrinsic_s *intrinsic = findIntrinsic(ref.Name);
    if (intrinsic == nullptr) {
        *error = ref.Name + " is not a recognized intrinsic.";
        return Intrinsic_Unknown;
    }
    return intrinsic->Handler(IntrinsicContext_s{ref, value, error});
}

// [++n] and [--n]: only when at least three characters are saved.
void applySubstring(const MacroVarRef_s &ref, std::string *value) {
    if (!ref.Substring || long(value->size()) < ref.SubstringLength + 3) return;
    if (ref.SubstringFromEnd)
        *value = "..." + value->substr(value->size() - size_t(ref.SubstringLength));
    else
        *value = value->substr(0, size_t(ref.SubstringLength)) + "...";
}

// What a reference stands for: a user variable, a parameter of the call, an intrinsic. Result as
// for intrinsics; Unknown when nothing has the name.
IntrinsicResult_e resolveReference(const MacroVarRef_s &ref, const std::vector<std::string> &parameters,
                                   std::string *value, std::string *error) {
    if (!ref.Environment) {
        if (const MacroVar_s *var = findVar(ref.Name)) {
            *value = var->Value;
            return Intrinsic_Found;
        }
        if (std::all_of(ref.Name.begin(), ref.Name.end(), [](char c) { return isdigit(static_cast<unsigned char>(c)); })) {
            long n = atol(ref.Name.c_str());
            if (n >= 1 && size_t(n) <= parameters.size()) {
                *value = parameters[size_t(n - 1)];
                return Intrinsic_Found;
            }
            return Intrinsic_Unknown;
        }
    }
    return expandReference(ref, value, error);
}

// The value of a reference text with its format and default applied.
IntrinsicResult_e valueOfReference(const std::string &text, const std::vector<std::string> &parameters, std::string *value,
                                   std::string *error) {
    MacroVarRef_s ref;
    if (!GetMacroVarName(text, &ref)) return Intrinsic_Unknown;
    std::string raw;
    IntrinsicResult_e result = resolveReference(ref, parameters, &raw, error);
    if (result != Intrinsic_Found) {
        if (!ref.HasDefault) return result;
        raw = ref.Default;
    }
    applySubstring(ref, &raw);
    if (!applyFormat(ref.Format, raw, value, error)) return Intrinsic_Syntax;
    return Intrinsic_Found;
}

// The commands whose first reference names the variable they assign: it is copied, not expanded.
bool assignsFirstReference(const char *command) {
    int index;
    MacroToken_e token;
    if (!QueryCompressedForMajorCommand(command, &index, &token)) return false;
    if (token == MacroToken_Control) return index == MacroControl_VARSET || index == MacroControl_REMOVEVAR;
    if (token != MacroToken_Action) return false;
    static const int assigning[] = {MacroAction_GETUSERINPUT, MacroAction_GETCURFRAMENAME, MacroAction_GETVARNUMBYNAME,
                                    MacroAction_GETAUXDATA, MacroAction_GETFIELDVALUE, MacroAction_GETFIELDVALUEREFCOUNT,
                                    MacroAction_GETVARLOCATION, MacroAction_GETCONNECTIVITYREFCOUNT,
                                    MacroAction_GETNODEINDEX, MacroAction_GETZONETYPE, MacroAction_PROMPTFORYESNO,
                                    MacroAction_PROMPTFORFILENAME, MacroAction_PROMPTFORTEXTSTRING};
    return std::find(std::begin(assigning), std::end(assigning), index) != std::end(assigning);
}

}  // namespace

// ---- the table ----------------------------------------------------------------------------

bool IsValidInternalMacroVarName(const char *name) {
    if (name == nullptr || !(isalpha(static_cast<unsigned char>(name[0])) || name[0] == '_')) return false;
    for (const char *p = name; *p != '\0'; p++)
        if (!isalnum(static_cast<unsigned char>(*p)) && *p != '_') return false;
    return true;
}

bool SetInternalMacroVar(const char *name, const char *value, bool create) {
    if (MacroVar_s *var = findVar(name)) {
        var->Value = value;
        return true;
    }
    if (!create || MacroVars.size() >= size_t(MaxMacroVars)) return false;
    MacroVars.push_back({upper(name), value});
    return true;
}

bool AssignInternalMacroValueByName(const char *name, const char *value) {
    if (!IsValidInternalMacroVarName(name) || strlen(name) > size_t(MaxMacroVarNameLength)) return false;
    return SetInternalMacroVar(name, value, true);
}

bool GetInternalMacroVar(const char *name, std::string *value) {
    const MacroVar_s *var = findVar(name);
    if (var == nullptr) return false;
    *value = var->Value;
    return true;
}

bool RemoveInternalMacroVar(const char *name) {
    MacroVar_s *var = findVar(name);
    if (var == nullptr) return false;
    MacroVars.erase(MacroVars.begin() + (var - MacroVars.data()));
    return true;
}

int NumMacroVars() { return int(MacroVars.size()); }

void RemoveLayoutFileVariables() {
    MacroVars.erase(std::remove_if(MacroVars.begin(), MacroVars.end(),
                                   [](const MacroVar_s &var) {
                                       return var.Name == "LFBD" || var.Name.compare(0, 6, "LFDSFN") == 0 ||
                                              var.Name.compare(0, 6, "LFDSRN") == 0;
                                   }),
                    MacroVars.end());
}

void ResetMacroVars() { MacroVars.clear(); }

std::string MacroNumberText(double value) {
    char text[64];
    snprintf(text, sizeof(text), "%0.*G", 15, value);
    return text;
}

IntrinsicResult_e ExpandIntrinsic(const char *text, std::string *value, const char **end, std::string *error) {
    std::string reference;
    const char *p = text;
    while (*p != '\0' && (isNameChar(static_cast<unsigned char>(*p)) || *p == '.' || *p == '$' || *p == '[' ||
                          *p == ']' || *p == ':' || *p == '=' || *p == '+' || *p == '-')) {
        // A sub-identifier may hold anything up to the end of the reference; subscripts hold
        // digits and ACTIVEOFFSET=.
        p++;
    }
    if (end != nullptr) *end = p;
    reference.assign(text, size_t(p - text));
    if (end == nullptr && *p != '\0') {
        *error = "Invalid character following " + reference + ".";
        return Intrinsic_Syntax;
    }
    MacroVarRef_s ref;
    if (!GetMacroVarName(reference, &ref)) {
        *error = "Invalid array notation or substring modifier syntax.";
        return Intrinsic_Syntax;
    }
    IntrinsicResult_e result = expandReference(ref, value, error);
    if (result == Intrinsic_Found) applySubstring(ref, value);
    return result;
}

bool LookUpMacroVariableValue(const char *reference, std::string *value, void *clientData) {
    static const std::vector<std::string> none;
    const auto *parameters = clientData != nullptr ? static_cast<const std::vector<std::string> *>(clientData) : &none;
    std::string error;
    return valueOfReference(reference, *parameters, value, &error) == Intrinsic_Found;
}

bool ExpandMacroVars(const char *command, int line, const std::vector<std::string> &parameters, std::string *expanded) {
    expanded->clear();
    if (strchr(command, '|') == nullptr) {
        *expanded = command;
        return true;
    }
    bool skipFirst = assignsFirstReference(command);
    char quote = 0;
    size_t stringStart = 0;  // where the open string's text begins in *expanded
    const char *p = command;
    auto fail = [&](const std::string &message) {
        ErrBadMacro(message.c_str(), line, command, true);
        return false;
    };
    while (*p != '\0') {
        char c = *p;
        if (quote != 0) {
            if (c == '\\' && (p[1] == quote || p[1] == '\\')) {
                expanded->append(p, 2);
                p += 2;
                continue;
            }
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
            expanded->push_back(c);
            stringStart = expanded->size();
            p++;
            continue;
        }
        if (c != '|') {
            expanded->push_back(c);
            p++;
            continue;
        }
        // || and a bar behind a bar are copied.
        if (p[1] == '|') {
            expanded->append("||");
            p += 2;
            continue;
        }
        const char *close = strchr(p + 1, '|');
        if (close == nullptr) {
            if (quote != 0) {
                expanded->push_back(c);
                p++;
                continue;
            }
            return fail("Invalid or undefined macro variable.");
        }
        std::string text(p + 1, size_t(close - p - 1));
        if (skipFirst) {
            skipFirst = false;
            expanded->append(p, size_t(close - p + 1));
            p = close + 1;
            continue;
        }
        std::string value, error;
        IntrinsicResult_e result = valueOfReference(text, parameters, &value, &error);
        if (result != Intrinsic_Found) {
            if (quote != 0 && result == Intrinsic_Unknown) {  // not a reference after all: the bar is text
                expanded->push_back(c);
                p++;
                continue;
            }
            return fail(result == Intrinsic_Unknown || error.empty() ? "Invalid or undefined macro variable." : error);
        }
        if (quote == 0 && !expanded->empty() && isalnum(static_cast<unsigned char>(expanded->back())))
            expanded->push_back(' ');
        // A value that is the whole of a string and quoted with the same quote: the outer quotes
        // change to the other kind, so that the result stays one string.
        bool wholeString = quote != 0 && expanded->size() == stringStart && close[1] == quote;
        if (wholeString && value.size() >= 2 && value.front() == quote && value.back() == quote) {
            char other = quote == '"' ? '\'' : '"';
            (*expanded)[stringStart - 1] = other;
            expanded->append(value);
            expanded->push_back(other);
            p = close + 2;
            quote = 0;
        } else {
            expanded->append(value);
            p = close + 1;
        }
        if (expanded->size() > size_t(MaxMacroCommandLength))
            return fail("Macro command too large after expanding macro variables.");
    }
    // Text copied after the last value counts as well.
    if (expanded->size() > size_t(MaxMacroCommandLength)) return fail("Macro command too large after expanding macro variables.");
    return true;
}
