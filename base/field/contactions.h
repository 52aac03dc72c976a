// Macro handlers of the contour actions: CONTOURLEVELS, and the colour map actions LOADCOLORMAP,
// WRITECOLORMAP, RAWCOLORMAP and COLORMAPCONTROL.
// Relies on: actcmd (the parsed command), contlevel and colormap (the operations), macrocomp (raw
// data sections), macrovar (macro variables in raw data).
#pragma once

#include "base/macro/dataactions.h"

// The handler of a contour action, or null if the action is not one of them.
ActionHandler_pf FindContourActionHandler(int action);
