// Contour colour maps: ramps, the raw user-defined table, canned maps and colour-map files.
#include "base/field/colormap.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "base/interact/fileio.h"
#include "base/kernel/errors.h"
#include "base/kernel/globals.h"
#include "base/kernel/undo.h"
#include "base/macro/macro1.h"
#include "base/macro/macrocomp.h"
#include "base/macro/macrovar.h"
#include "base/macro/setvalue.h"
#include "base/macro/vocab.h"
#include "base/plot/grcolor.h"
#include "base/plot/vdi.h"

RGB_s RawUserDefColorMap[MaxRawUserDefColors];
int NumRawUserDefColors = 0;

namespace {

// ---- random numbers of the WILD map ---------------------------------------------------------

// A 32-bit linear congruential sequence from a fixed seed: the WILD ramp is the same on every
// build, in every run.
constexpr uint32_t RandNumSeed = 2531011u;
uint32_t RandNumState = RandNumSeed;

void SeedRandNum() { RandNumState = RandNumSeed; }

// A number in [0, 1).
double GetRandNum() {
    RandNumState = RandNumState * 1664525u + 1013904223u;
    return double(RandNumState >> 8) / double(1u << 24);
}

int16_t channelOf(double value) { return static_cast<int16_t>(value + 0.499); }

}  // namespace

// ---- the raw table ----------------------------------------------------------------------------

void InitRawUserColorMap() {
    for (int i = 0; i < MaxRawUserDefColors; i++) {
        int16_t gray = static_cast<int16_t>(static_cast<int>(i * 0.3191489361702128) & 0xFF);
        RawUserDefColorMap[i] = RGB_s{gray, gray, gray};
    }
    NumRawUserDefColors = MaxRawUserDefColors;
}

bool InstallRawColorMapRGBValues(int numEntries, const RGB_s *rgb) {
    if (numEntries < 0 || numEntries > MaxRawUserDefColors || (numEntries > 0 && rgb == nullptr)) {
        ErrMsg("Cannot install Raw ColorMap RGB Values.  Invalid number of RGB entries requested");
        return false;
    }
    for (int i = 0; i < numEntries; i++) RawUserDefColorMap[i] = rgb[i];
    NumRawUserDefColors = numEntries;
    return true;
}

// ---- bands and ramps --------------------------------------------------------------------------

ColorMapBand_s *GetColorMapBand(ColorMap_s *map, int contourColorMap) {
    switch (contourColorMap) {
        case ContourColorMap_SmRainbow: return &map->SmRainbow;
        case ContourColorMap_LgRainbow: return &map->LgRainbow;
        case ContourColorMap_Modern: return &map->Modern;
        case ContourColorMap_GrayScale: return &map->GrayScale;
        case ContourColorMap_UserDef: return &map->UserDefined;
        case ContourColorMap_TwoColor: return &map->TwoColor;
        default: return nullptr;
    }
}

const ColorMapBand_s *GetColorMapBand(const ColorMap_s *map, int contourColorMap) {
    return GetColorMapBand(const_cast<ColorMap_s *>(map), contourColorMap);
}

const ColorMapBand_s *GetCurrentColorMapBand(int group) {
    if (group < 0 || group >= NumColorMapGroups) return nullptr;
    const ColorMap_s &map = GeneralBase.ColorMapGroups[size_t(group)];
    return GetColorMapBand(&map, map.ContourColorMap);
}

int ColorMapControlPointIndex(double location, int numEntries) {
    return static_cast<int>(location * (numEntries - 1) + 0.499);
}

void BuildBandedColorMap(const ColorMapBand_s &band, RGB_s *rgbOut, int numEntries) {
    if (numEntries <= 0) return;
    int numPoints = std::min(band.NumControlPoints, MaxColorMapControlPoints);
    if (numPoints < 1) {
        for (int i = 0; i < numEntries; i++) rgbOut[i] = RGB_s{0, 0, 0};
        return;
    }
    const ColorMapControlPoint_s *points = band.ControlPoint.data();
    auto clampIndex = [numEntries](int index) { return std::max(0, std::min(index, numEntries - 1)); };
    // Before the first point.
    int first = clampIndex(ColorMapControlPointIndex(points[0].Location, numEntries));
    for (int i = 0; i <= first; i++) rgbOut[i] = points[0].TrailRGB;
    // Each segment, both ends included: a point's index ends up with the colour of the segment
    // that leaves it, its lead colour.
    for (int p = 1; p < numPoints; p++) {
        int from = clampIndex(ColorMapControlPointIndex(points[p - 1].Location, numEntries));
        int to = clampIndex(ColorMapControlPointIndex(points[p].Location, numEntries));
        const RGB_s &lead = points[p - 1].LeadRGB, &trail = points[p].TrailRGB;
        for (int i = from; i <= to; i++) {
            double f = to > from ? double(i - from) / double(to - from) : 0.0;
            rgbOut[i] = RGB_s{channelOf(lead.R + (trail.R - lead.R) * f), channelOf(lead.G + (trail.G - lead.G) * f),
                              channelOf(lead.B + (trail.B - lead.B) * f)};
        }
    }
    // From the last point on.
    int last = clampIndex(ColorMapControlPointIndex(points[numPoints - 1].Location, numEntries));
    for (int i = last; i < numEntries; i++) rgbOut[i] = points[numPoints - 1].LeadRGB;
}

void BuildContourRamp(int group, RGB_s *ramp, int numEntries) {
    if (group < 0 || group >= NumColorMapGroups || numEntries <= 0) return;
    const ColorMap_s &map = GeneralBase.ColorMapGroups[size_t(group)];
    switch (map.ContourColorMap) {
        case ContourColorMap_Wild:
            SeedRandNum();
            for (int i = 0; i < numEntries; i++) {
                int16_t b = static_cast<int16_t>(GetRandNum() * 255 + 0.499);
                int16_t g = static_cast<int16_t>(GetRandNum() * 255 + 0.499);
                int16_t r = static_cast<int16_t>(GetRandNum() * 255 + 0.499);
                ramp[i] = RGB_s{r, g, b};
            }
            return;
        case ContourColorMap_RawUserDef:
            for (int i = 0; i < numEntries; i++) {
                if (NumRawUserDefColors < 1) {
                    ramp[i] = RGB_s{0, 0, 0};
                    continue;
                }
                int raw = static_cast<int>(double(i) / double(numEntries) * (NumRawUserDefColors - 1) + 0.499);
                ramp[i] = RawUserDefColorMap[std::max(0, std::min(raw, NumRawUserDefColors - 1))];
            }
            return;
        default: {
            const ColorMapBand_s *band = GetColorMapBand(&map, map.ContourColorMap);
            if (band != nullptr) {
                BuildBandedColorMap(*band, ramp, numEntries);
            } else {
                for (int i = 0; i < numEntries; i++) ramp[i] = RGB_s{0, 0, 0};
            }
            return;
        }
    }
}

void InstallAllColorMaps() { VDI_SignalColorMapChange(); }

void RegisterColorMapHooks() {
    GrColorHooks.BuildContourRamp = BuildContourRamp;
    SetValueHooks.ColorMapChanged = InstallAllColorMaps;
}

// ---- control points and canned maps -----------------------------------------------------------

bool ReDistributeColorMapControlPoints(ColorMapBand_s *band) {
    if (band == nullptr) {
        ErrMsg("Cannot redistribute control points for current colormap");
        return false;
    }
    int n = std::min(band->NumControlPoints, MaxColorMapControlPoints);
    for (int i = 0; i < n; i++)
        band->ControlPoint[size_t(i)].Location = i == n - 1 ? 1.0 : n > 1 ? double(i) / double(n - 1) : 0.0;
    return true;
}

bool CopyCannedColorMap(int map, int group) {
    if (group < 0 || group >= NumColorMapGroups) return false;
    ColorMap_s &target = GeneralBase.ColorMapGroups[size_t(group)];
    if (target.ContourColorMap != ContourColorMap_UserDef && target.ContourColorMap != ContourColorMap_RawUserDef) {
        ErrMsg("Only allowed to copy canned color map if current contour color map is user defined or raw user defined");
        return false;
    }
    bool canned = (map >= ContourColorMap_SmRainbow && map <= ContourColorMap_GrayScale) || map == ContourColorMap_TwoColor;
    if (!canned) {
        ErrMsg("Attempt to copy invalid canned colormap");
        return false;
    }
    ColorMapBand_s source = *GetColorMapBand(&target, map);
    if (target.ContourColorMap == ContourColorMap_UserDef) {
        target.UserDefined = source;
    } else {
        BuildBandedColorMap(source, RawUserDefColorMap, MaxRawUserDefColors);
        NumRawUserDefColors = MaxRawUserDefColors;
    }
    return true;
}

bool ResetContourColorMapToFactoryDefaults(int map, int group) {
    if (group < 0 || group >= NumColorMapGroups) return false;
    ColorMapBand_s *band = GetColorMapBand(&GeneralBase.ColorMapGroups[size_t(group)], map);
    if (band == nullptr) {
        ErrMsg("Cannot reset this color map - no factory defaults");
        return false;
    }
    *band = *GetColorMapBand(&GeneralFactoryDefaults.ColorMapGroups[size_t(group)], map);
    return true;
}

// ---- the actions ------------------------------------------------------------------------------

bool Action_RawColorMap(int numEntries, const RGB_s *rgb, int group) {
    if (group < 0 || group >= NumColorMapGroups) return false;
    if (!InstallRawColorMapRGBValues(numEntries, rgb)) return false;
    InstallAllColorMaps();
    return true;
}

bool Action_ColorMapControl(ColorMapControlAction_e action, int map, int group) {
    if (group < 0 || group >= NumColorMapGroups) return false;
    bool ok = false;
    switch (action) {
        case ColorMapControlAction_RedistributeControlPoints: {
            ColorMap_s &colorMap = GeneralBase.ColorMapGroups[size_t(group)];
            ok = ReDistributeColorMapControlPoints(GetColorMapBand(&colorMap, colorMap.ContourColorMap));
            break;
        }
        case ColorMapControlAction_CopyStandard: ok = CopyCannedColorMap(map, group); break;
        case ColorMapControlAction_ResetToFactory: ok = ResetContourColorMapToFactoryDefaults(map, group); break;
    }
    if (ok) InstallAllColorMaps();
    return ok;
}

// ---- colour-map files -------------------------------------------------------------------------

namespace {

// What a colour-map file may change, kept so that a failed read leaves it all as it was.
struct ColorMapState_s {
    std::array<ColorMap_s, NumColorMapGroups> Groups;
    std::vector<RGB_s> Raw;

    static ColorMapState_s take() {
        return ColorMapState_s{GeneralBase.ColorMapGroups,
                               std::vector<RGB_s>(RawUserDefColorMap, RawUserDefColorMap + NumRawUserDefColors)};
    }
    void restore() const {
        GeneralBase.ColorMapGroups = Groups;
        for (size_t i = 0; i < Raw.size(); i++) RawUserDefColorMap[i] = Raw[i];
        NumRawUserDefColors = int(Raw.size());
    }
};

// Closes a stream opened by Open_File when the reader or writer leaves.
struct FileCloser_s {
    FILE *File = nullptr;
    ~FileCloser_s() {
        if (File != nullptr) Close_File(&File, false);
    }
};

// The actions a colour-map file must never hold: running one ends the read.
const char *const RefusedActions[] = {
    "SAVELAYOUT",       "NEWLAYOUT",         "WRITESTYLESHEET",      "EXPORT",           "WRITECURVEINFO",
    "PRINT",            "PICK",              "ANIMATEZONES",         "ANIMATEXYMAPS",    "ANIMATELINEMAPS",
    "ANIMATECONTOURLEVELS", "ANIMATEISOSURFACES", "ANIMATEIJKPLANES", "ANIMATEIJKBLANKING", "ANIMATESLICES",
    "ANIMATESTREAM",    "DRAWGRAPHICS",      "FLUSHGRAPHICS",        "PAUSE",            "DELAY",
    "GETFIELDVALUE",    "GETFIELDVALUEREFCOUNT", "GETVARLOCATION",   "GETCONNECTIVITYREFCOUNT", "GETZONETYPE",
    "GETNODEINDEX",     "ADDMACROPANELTITLE", "LAUNCHDIALOG",        "DROPDIALOG",       "GETUSERINPUT",
    "GETCURFRAMENAME",  "GETVARNUMBYNAME",   "GETAUXDATA",           "DELETEAUXDATA",    "PROMPTFORYESNO",
    "PROMPTFORFILENAME", "PROMPTFORTEXTSTRING", "PUBLISH",           "EXPORTFINISH",     "SHOWMOUSEPOINTER",
    "SETFRAMEBACKGROUNDCOLOR",
};

bool isRefusedAction(const char *name) {
    for (const char *refused : RefusedActions)
        if (strcmp(name, refused) == 0) return true;
    return false;
}

// Runs the commands of an open colour-map file behind its header; false at the first failure.
bool runColorMapCommands(FILE *file, int version) {
    int lineNumber = 1;
    while (true) {
        if (OrvanexIsQuitting || Interrupted) return false;
        std::string command;
        char *rawData = nullptr;
        int firstLine = lineNumber;
        if (!GetNextCompressedCommand(file, nullptr, &command, &rawData, &lineNumber, &firstLine)) {
            DeallocRawMacroData(&rawData);
            return false;
        }
        std::unique_ptr<char, void (*)(char *)> raw(rawData, [](char *p) { DeallocRawMacroData(&p); });
        if (command.empty()) return true;
        std::string expanded;
        if (!ExpandMacroVars(command.c_str(), firstLine, {}, &expanded)) return false;
        int index;
        MacroToken_e token;
        if (!QueryCompressedForMajorCommand(expanded.c_str(), &index, &token)) {
            ErrBadMacro("Unknown Command or Sub-Command", firstLine, expanded.c_str(), true);
            return false;
        }
        if (token == MacroToken_Control) {
            // Variables may be set and removed; they shape nothing a colour map keeps, so they are
            // passed over here.
            if (index == MacroControl_VARSET || index == MacroControl_REMOVEVAR) continue;
            ErrBadMacro("Not allowed to use control commands in this type of macro file", firstLine, expanded.c_str(),
                        true);
            return false;
        }
        if (token == MacroToken_Action) {
            if (index == MacroAction_OPENLAYOUT || index == MacroAction_READSTYLESHEET ||
                index == MacroAction_LOADCOLORMAP) {
                ErrBadMacro("$!OPENLAYOUT, $!READSTYLESHEET, and $!LOADCOLORMAP cannot call one-another.", firstLine,
                            expanded.c_str(), true);
                return false;
            }
            if (isRefusedAction(ActionCommandList[index])) {
                char message[128];
                snprintf(message, sizeof(message), "$!%s not allowed in a %s file.", ActionCommandList[index],
                         "color map");
                ErrBadMacro(message, firstLine, expanded.c_str(), true);
                return false;
            }
            if (index != MacroAction_RAWCOLORMAP) continue;
        } else if (index != MacroSetValue_COLORSPECTRUM && index != MacroSetValue_COLORMAP &&
                   index != MacroSetValue_GLOBALCOLORMAP) {
            continue;
        }
        // The enclosing command (a $!LOADCOLORMAP in a macro) is still running.
        bool wasProcessing = IsProcessingMacroCommand;
        bool ok = ProcessMacroCommand(expanded.c_str(), firstLine, version, raw.get(), {});
        IsProcessingMacroCommand = wasProcessing;
        if (!ok) return false;
    }
}

}  // namespace

bool LoadColorMap(const char *fileName) {
    if (fileName == nullptr || fileName[0] == '\0') {
        ErrMsg("Invalid file name for loading color map");
        return false;
    }
    FileCloser_s file;
    if (!Open_File(&file.File, fileName, true, false, false, true, true)) return false;
    int version = 0;
    if (!GetFileMagic(file.File, "MC", &version) || version < MacroVersionOldest) {
        ErrMsg("Invalid colormap file header.\n\nIf this file was produced by a version of Orvanex older than version 7 "
               "use the \"cnvorv\" utility program to upgrade the file.");
        return false;
    }
    if (version > MacroVersionCurrent) {
        Warning("Macro header indicates that this macro file was created with a newer version of Orvanex, "
                "consequently Orvanex may encounter macro instructions that it is unable to process.");
        version = MacroVersionCurrent;
    }
    ColorMapState_s saved = ColorMapState_s::take();
    UndoStateInvalidateUndo();
    UndoStateSuspendRecording();
    bool wasStylesheet = IsProcessingStylesheet;
    IsProcessingStylesheet = true;
    PushMacroVersion(version);
    bool ok = runColorMapCommands(file.File, version);
    PopMacroVersion();
    IsProcessingStylesheet = wasStylesheet;
    UndoStateUnsuspendRecording();
    if (!ok) saved.restore();
    InstallAllColorMaps();
    return ok;
}

namespace {

// A number that reads back as the same double: 15 digits when they suffice, else 17.
std::string exactNumber(double value) {
    char text[40];
    snprintf(text, sizeof(text), "%.15G", value);
    if (strtod(text, nullptr) != value) snprintf(text, sizeof(text), "%.17G", value);
    return text;
}

std::string mapName(int contourColorMap) {
    std::string name;
    return GetEnumText(contourColorMap, MacroSetValue_CONTOURCOLORMAP, false, &name) ? name : "SMRAINBOW";
}

// The name of a band's block in $!GLOBALCOLORMAP.
const char *bandBlockName(int contourColorMap) {
    switch (contourColorMap) {
        case ContourColorMap_SmRainbow: return "SMRAINBOW";
        case ContourColorMap_LgRainbow: return "LGRAINBOW";
        case ContourColorMap_Modern: return "MODERN";
        case ContourColorMap_GrayScale: return "GRAYSCALE";
        case ContourColorMap_UserDef: return "USERDEFINED";
        case ContourColorMap_TwoColor: return "TWOCOLOR";
        default: return nullptr;
    }
}

}  // namespace

bool WriteColorMapInfo(FILE *file, int group) {
    if (group < 0 || group >= NumColorMapGroups) return false;
    const ColorMap_s &map = GeneralBase.ColorMapGroups[size_t(group)];
    int number = group + 1;
    if (map.ContourColorMap == ContourColorMap_RawUserDef) {
        fprintf(file, "$!RAWCOLORMAP\nRAWDATA\n%d\n", NumRawUserDefColors);
        for (int i = 0; i < NumRawUserDefColors; i++)
            fprintf(file, "%d %d %d\n", RawUserDefColorMap[i].R, RawUserDefColorMap[i].G, RawUserDefColorMap[i].B);
    }
    fprintf(file, "$!GLOBALCOLORMAP %d\n  CONTOURCOLORMAP = %s\n", number, mapName(map.ContourColorMap).c_str());
    const char *block = bandBlockName(map.ContourColorMap);
    if (block == nullptr) return ferror(file) == 0;
    if (map.ContourColorMap != ContourColorMap_UserDef)
        fprintf(file, "$!COLORMAPCONTROL %d RESETTOFACTORY\n  CONTOURCOLORMAP = %s\n", number,
                mapName(map.ContourColorMap).c_str());
    const ColorMapBand_s &band = *GetColorMapBand(&map, map.ContourColorMap);
    fprintf(file, "$!GLOBALCOLORMAP %d\n  %s\n    {\n    NUMCONTROLPOINTS = %d\n", number, block, band.NumControlPoints);
    for (int p = 0; p < band.NumControlPoints && p < MaxColorMapControlPoints; p++) {
        const ColorMapControlPoint_s &point = band.ControlPoint[size_t(p)];
        fprintf(file,
                "    CONTROLPOINT %d\n      {\n      COLORMAPFRACTION = %s\n"
                "      LEADRGB { R = %d G = %d B = %d }\n      TRAILRGB { R = %d G = %d B = %d }\n      }\n",
                p + 1, exactNumber(point.Location).c_str(), point.LeadRGB.R, point.LeadRGB.G, point.LeadRGB.B,
                point.TrailRGB.R, point.TrailRGB.G, point.TrailRGB.B);
    }
    fprintf(file, "    }\n");
    return ferror(file) == 0;
}

bool WriteColorMap(const char *fileName) {
    if (fileName == nullptr || fileName[0] == '\0') {
        ErrMsg("Invalid file name for writing color map");
        return false;
    }
    FileCloser_s file;
    if (!Open_File(&file.File, fileName, false, false, true, true, true)) return false;
    bool ok = fprintf(file.File, "#!MC %d\n", MacroVersionCurrent) > 0;
    for (int group = 0; ok && group < NumColorMapGroups; group++) ok = WriteColorMapInfo(file.File, group);
    ok = Close_File(&file.File, false) && ok;
    if (!ok) {
        remove(fileName);
        ErrMsg("Error writing color map file %s.", fileName);
    }
    return ok;
}

bool Action_LoadColorMap(const std::string &fileName) { return LoadColorMap(fileName.c_str()); }

bool Action_WriteColorMap(const std::string &fileName) { return WriteColorMap(fileName.c_str()); }
