// The window layer's entry at start-up. UIInitialize opens the display for an interactive run;
// in batch mode it does nothing.
#pragma once

bool UIInitialize(int argc, char **argv);
