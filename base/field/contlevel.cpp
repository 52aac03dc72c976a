#include "base/field/contlevel.h"

#include <algorithm>

#include "base/plot/devtypes.h"
#include "base/plot/frame.h"
#include "base/plot/grcolor.h"

int GetMultiColorFromContourLevel(int group, int level, bool) {
    if (CurFrame == nullptr || group < 0 || group >= MaxContourGroups) return FirstContourColorIndex;
    int numLevels = int(CurFrame->Style.GlobalContour[group].Levels.size());
    if (numLevels == 0) return FirstContourColorIndex;
    // Bands spread evenly over the ramp.
    return FirstContourColorIndex + std::clamp(level, 0, numLevels) * NumContourColors / numLevels;
}

int GetMultiColorIgnoringColorCutOff(int group, double value) {
    if (CurFrame == nullptr || group < 0 || group >= MaxContourGroups) return FirstContourColorIndex;
    const std::vector<double> &levels = CurFrame->Style.GlobalContour[group].Levels;
    int level = int(std::lower_bound(levels.begin(), levels.end(), value) - levels.begin());
    return GetMultiColorFromContourLevel(group, level, false);
}

int GetMultiColor(int group, double value) { return GetMultiColorIgnoringColorCutOff(group, value); }
