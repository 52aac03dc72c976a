// Opening the display. The main window itself is not built yet: with a display that opens, the
// interactive start says so and ends, so that nothing waits for events that cannot come.
#include "ui/uimain.h"

#include <X11/Xlib.h>
#include <cstdio>

#include "base/kernel/errors.h"
#include "base/kernel/globals.h"

bool UIInitialize(int, char **) {
    if (InBatchMode) return true;
    Display *display = X_DisplayString.empty() ? nullptr : XOpenDisplay(X_DisplayString.c_str());
    if (display == nullptr) {
        fprintf(stderr, "Cannot open display.\n");
        return false;
    }
    XCloseDisplay(display);
    ErrMsg("The Orvanex window is not available in this version; run macros in batch mode with -b.");
    return false;
}
