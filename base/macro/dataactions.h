// Macro handlers of the actions on the data set: zone creators, deleting zones and variables,
// duplicating and mirroring zones, single values, sharing and branching, auxiliary data, names
// and the title, and the actions that read something into a macro variable.
// Relies on: actcmd (the parsed command), datautil and share (the operations), macrovar.
#pragma once

struct ActionCommand_s;

using ActionHandler_pf = bool (*)(const ActionCommand_s &);

// The handler of a data-set action, or null if the action is not one of them.
ActionHandler_pf FindDataActionHandler(int action);
