#include "base/data/face.h"

#include "base/kernel/alloc.h"
#include "base/kernel/outofmem.h"

bool ZoneNeedsFaceNeighbors(const ZoneSpec_s *zoneSpec) {
    if (zoneSpec->Type == ZoneType_FELineSeg) return false;
    if (zoneSpec->Type != ZoneType_Ordered) return true;
    int ones = (zoneSpec->NumPtsI == 1) + (zoneSpec->NumPtsJ == 1) + (zoneSpec->NumPtsK == 1);
    return ones < 2;
}

FaceNeighbor_a FaceNeighborAlloc(const ZoneSpec_s *zoneSpec, bool showErr) {
    auto *faceNeighbor = static_cast<FaceNeighbor_a>(newmalloc(sizeof(FaceNeighbor_s)));
    if (faceNeighbor == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    faceNeighbor->RefCount = 1;
    faceNeighbor->NumElements =
        ZoneTypeIsFE(zoneSpec->Type)
            ? zoneSpec->NumPtsJ
            : static_cast<LgIndex_t>(int64_t(zoneSpec->NumPtsI) * zoneSpec->NumPtsJ * zoneSpec->NumPtsK);
    faceNeighbor->ZoneType = zoneSpec->Type;
    faceNeighbor->Mode = zoneSpec->FNMode;
    faceNeighbor->IsValid = false;
    return faceNeighbor;
}

void FaceNeighborDealloc(FaceNeighbor_a *faceNeighbor) {
    if (*faceNeighbor == nullptr) return;
    if (--(*faceNeighbor)->RefCount < 1) newfree(*faceNeighbor);
    *faceNeighbor = nullptr;
}

FaceNeighbor_a FaceNeighborCopy(FaceNeighbor_a faceNeighbor, bool showErr) {
    auto *copy = static_cast<FaceNeighbor_a>(newmalloc(sizeof(FaceNeighbor_s)));
    if (copy == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    *copy = *faceNeighbor;
    copy->RefCount = 1;
    return copy;
}

void InvalidateFaceNeighbor(FaceNeighbor_a faceNeighbor) {
    if (faceNeighbor != nullptr) faceNeighbor->IsValid = false;
}
