#include "base/data/elemstate.h"

#include "base/kernel/alloc.h"

DataElementState_a DataElementStateAlloc(LgIndex_t numElements, ZoneType_e zoneType, bool isOriented) {
    auto *state = static_cast<DataElementState_a>(newmalloc(sizeof(DataElementState_s)));
    if (state == nullptr) return nullptr;
    bool isSurface = zoneType == ZoneType_FETriangle || zoneType == ZoneType_FEQuad;
    state->RefCount = 1;
    state->NumElements = isSurface ? numElements : 0;
    state->IsOriented = isOriented;
    state->IsValid = !isSurface || isOriented;
    return state;
}

void DataElementStateDealloc(DataElementState_a *state) {
    if (*state == nullptr) return;
    if (--(*state)->RefCount < 1) newfree(*state);
    *state = nullptr;
}

DataElementState_a DataElementStateCopy(DataElementState_a state) {
    auto *copy = static_cast<DataElementState_a>(newmalloc(sizeof(DataElementState_s)));
    if (copy == nullptr) return nullptr;
    *copy = *state;
    copy->RefCount = 1;
    return copy;
}

void InvalidateOrientationState(DataElementState_a state) {
    if (state != nullptr && state->NumElements > 0 && !state->IsOriented) state->IsValid = false;
}
