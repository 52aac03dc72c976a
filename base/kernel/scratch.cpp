#include "base/kernel/scratch.h"

#include <new>

#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"

ScratchSpace_s ScratchSpace;

bool InitializeScratchSpace() {
    const size_t linePoints = static_cast<size_t>(GeneralBase.MaxPtsInALine) + 1;
    try {
        ScratchSpace.TextBuffer.assign(static_cast<size_t>(GeneralBase.MaxChrsInTextLabels) + 1, '\0');
        ScratchSpace.IndexBuffer.assign(linePoints, 0);
        ScratchSpace.FractBuffer.assign(linePoints, 0.0);
        ScratchSpace.XLineBuffer.assign(linePoints, 0.0);
        ScratchSpace.YLineBuffer.assign(linePoints, 0.0);
        ScratchSpace.ZLineBuffer.assign(linePoints, 0.0);
        ScratchSpace.PickList.assign(static_cast<size_t>(GeneralBase.MaxNumPickObjects) + 1, 0);
        ScratchSpace.PolylineBuffer.assign(linePoints, XY_s{0.0, 0.0});
    } catch (const std::bad_alloc &) {
        FreeScratchSpace();
        ErrMsg("Cannot allocate scratch space");
        return false;
    }
    return true;
}

bool AllocPointBuffer() {
    try {
        ScratchSpace.PointBuffer.assign(static_cast<size_t>(GeneralBase.MaxPtsInALine) + 1, XYZ_s{0.0, 0.0, 0.0});
    } catch (const std::bad_alloc &) {
        ErrMsg("Cannot allocate scratch space");
        return false;
    }
    return true;
}

void FreeScratchSpace() { ScratchSpace = ScratchSpace_s(); }
