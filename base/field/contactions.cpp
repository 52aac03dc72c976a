// Macro handlers of the contour actions.
#include "base/field/contactions.h"

#include <cstdio>
#include <string>
#include <vector>

#include "base/field/colormap.h"
#include "base/field/contlevel.h"
#include "base/macro/actcmd.h"
#include "base/macro/macrocomp.h"
#include "base/macro/macrovar.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"
#include "base/plot/framestyle.h"

namespace {

// CONTOURLEVELS: NEW and ADD take RAWDATA; DELETERANGE takes RANGEMIN and RANGEMAX, DELETENEAREST
// RANGEMIN; RESET takes NUMVALUES and RESETTONICE APPROXNUMVALUES (0, the default, keeps the
// count). CONTOURGROUP is 1 unless given.
bool handleContourLevels(const ActionCommand_s &cmd) {
    int group = int(cmd.integer(MacroSetValue_CONTOURGROUP, 1));
    if (group < 1 || group > MaxContourGroups) return cmd.fail("Invalid value global contour index");
    auto action = ContourLevelAction_e(cmd.Mandatory);
    std::vector<double> levels;
    int numLevels = 0;
    if (action == ContourLevelAction_Add || action == ContourLevelAction_New) {
        CookedRawData_s raw;
        if (!CookActionRawData(cmd, &raw) || !LoadContourLevelRawMacroData(raw.Text, cmd.Line, cmd.Command, &levels))
            return false;
        numLevels = int(levels.size());
    } else if (action == ContourLevelAction_Reset) {
        numLevels = int(cmd.integer(MacroSetValue_NUMVALUES, 0));
    } else if (action == ContourLevelAction_ResetToNice) {
        numLevels = int(cmd.integer(MacroSetValue_APPROXNUMVALUES, 0));
    }
    if (numLevels < 0) return cmd.fail("Invalid number of contour levels");
    if (action == ContourLevelAction_Reset || action == ContourLevelAction_ResetToNice) {
        // A reset that makes levels needs the range of the group's variable.
        double min, max;
        bool makesLevels = numLevels > 0 || (CurFrame != nullptr && !CurFrame->Style.GlobalContour[group - 1].Levels.empty());
        if (makesLevels && !GetContourGroupVarMinMax(group - 1, &min, &max))
            return cmd.fail("Cannot reset contour levels: the contour variable has no values.");
    }
    cmd.logAction();
    return Action_ContourLevels(action, group - 1, cmd.number(MacroSetValue_RANGEMIN, 0.0),
                                cmd.number(MacroSetValue_RANGEMAX, 0.0), numLevels, levels.data());
}

// COLORMAPCONTROL [group] operation: the group is a colour map group, 1 unless given.
bool handleColorMapControl(const ActionCommand_s &cmd) {
    if (cmd.Group < 1 || cmd.Group > NumColorMapGroups)
        return cmd.fail("Invalid group number specified in $!COLORMAPCONTROL command.");
    int map = int(cmd.integer(MacroSetValue_CONTOURCOLORMAP, -1));
    cmd.logAction();
    return Action_ColorMapControl(ColorMapControlAction_e(cmd.Mandatory), map, cmd.Group - 1);
}

// RAWCOLORMAP [GROUP = n] RAWDATA: the count, then R G B per entry.
bool handleRawColorMap(const ActionCommand_s &cmd) {
    int group = int(cmd.integer(MacroSetValue_GROUP, 1));
    if (group < 1 || group > NumColorMapGroups)
        return cmd.fail("Invalid group number specified in $!RAWCOLORMAP command.");
    CookedRawData_s raw;
    std::vector<RawColorMapEntry_s> entries;
    if (!CookActionRawData(cmd, &raw) || !LoadColorMapRawMacroData(raw.Text, cmd.Line, cmd.Command, &entries)) return false;
    std::vector<RGB_s> rgb;
    for (const RawColorMapEntry_s &entry : entries)
        rgb.push_back(RGB_s{int16_t(entry.R), int16_t(entry.G), int16_t(entry.B)});
    cmd.logAction();
    return Action_RawColorMap(int(rgb.size()), rgb.data(), group - 1);
}

bool handleLoadColorMap(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_LoadColorMap(cmd.String);
}

bool handleWriteColorMap(const ActionCommand_s &cmd) {
    cmd.logAction();
    return Action_WriteColorMap(cmd.String);
}

struct ContourAction_s {
    int Action;
    ActionHandler_pf Handler;
};

const ContourAction_s ContourActions[] = {
    {MacroAction_CONTOURLEVELS, handleContourLevels},
    {MacroAction_COLORMAPCONTROL, handleColorMapControl},
    {MacroAction_RAWCOLORMAP, handleRawColorMap},
    {MacroAction_LOADCOLORMAP, handleLoadColorMap},
    {MacroAction_WRITECOLORMAP, handleWriteColorMap},
};

}  // namespace

ActionHandler_pf FindContourActionHandler(int action) {
    for (const ContourAction_s &entry : ContourActions)
        if (entry.Action == action) return entry.Handler;
    return nullptr;
}
