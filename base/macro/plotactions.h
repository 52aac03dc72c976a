// Macro handlers of the actions on frames, maps and views: ATTACHDATASET, the line map actions,
// VIEW, ROTATE3DVIEW, WORKSPACEVIEW, PROPAGATELINKING, and the redraw commands.
#pragma once

#include "base/macro/dataactions.h"

// The handler of one of these actions, or null.
ActionHandler_pf FindPlotActionHandler(int action);
