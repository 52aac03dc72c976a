// Face neighbours: the record and its sharing, the neighbour search over the node map, the
// queries that merge ordered, generated and user-defined neighbours, and the assignment, checking
// and renumbering of user-defined neighbours.
//
// The search runs as jobs on StandardThreadPool that share one Neighbors array. A job pairs two
// faces by first claiming the partner's slot (-1 to its own element, by compare-exchange) and
// only then its own; a job that loses its own slot to a third face gives the partner back. So
// every pair written is complete, whatever the order of the jobs, and a manifold mesh gets the
// same array from any number of workers.
#include "base/data/face.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

#include "base/data/datahooks.h"
#include "base/data/dataset.h"
#include "base/data/share.h"
#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/errors.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"

namespace {

constexpr const char *NoMemoryForUserDefText = "Not enough memory for user defined face neighbors.";
constexpr const char *RepairOutOfMemoryText = "Out of memory repairing user defined face neighbors.";
// A job takes at least this many elements, so small zones aren't split into idle jobs.
constexpr LgIndex_t MinElementsPerJob = 100;
// The zone number a renumbering gives a neighbour that goes with a deleted zone.
constexpr int DroppedZone = -2;

bool isGlobalMode(FaceNeighborMode_e mode) {
    return mode == FaceNeighborMode_GlobalOneToOne || mode == FaceNeighborMode_GlobalOneToMany;
}

int64_t numFacesOf(const FaceNeighbor_s *faceNeighbor) {
    return int64_t(faceNeighbor->NumElements) * faceNeighbor->FacesPerElement;
}

template <typename T>
T *allocArray(int64_t count) {
    return static_cast<T *>(newmalloc(size_t(std::max<int64_t>(count, 1)) * sizeof(T)));
}

template <typename T>
T *duplicateArray(const T *source, int64_t count) {
    T *copy = allocArray<T>(count);
    if (copy != nullptr && count > 0) memcpy(copy, source, size_t(count) * sizeof(T));
    return copy;
}

// A set holding 0..count-1, written word by word: the set of every face of a large zone.
Set_a *allocFullSet(int64_t count) {
    Set_a *set = AllocSet(false);
    if (set == nullptr) return nullptr;
    if (count > 0 && !ExpandSet(set, count, false)) {
        DeallocSet(&set);
        return nullptr;
    }
    int64_t fullWords = count / 64;
    for (int64_t w = 0; w < fullWords; w++) set->data[w] = ~uint64_t(0);
    if (count % 64 != 0) set->data[fullWords] |= (uint64_t(1) << (count % 64)) - 1;
    return set;
}

Set_a *duplicateSet(const Set_a *source) {
    if (source == nullptr) return nullptr;
    Set_a *copy = AllocSet(false);
    if (copy != nullptr && !CopySet(copy, source, false)) DeallocSet(&copy);
    return copy;
}

void freeAutoGen(FaceNeighborAutoGen_s **autoGen) {
    if (*autoGen == nullptr) return;
    newfree((*autoGen)->Neighbors);
    newfree(*autoGen);
    *autoGen = nullptr;
}

void freeUserDef(FaceNeighborUserDef_s **userDef) {
    if (*userDef == nullptr) return;
    DeallocSet(&(*userDef)->ObscuringFaces);
    DeallocSet(&(*userDef)->BoundaryEntries);
    newfree((*userDef)->Offsets);
    newfree((*userDef)->Elements);
    newfree((*userDef)->Zones);
    newfree(*userDef);
    *userDef = nullptr;
}

FaceNeighborAutoGen_s *copyAutoGen(const FaceNeighborAutoGen_s *source) {
    auto *copy = static_cast<FaceNeighborAutoGen_s *>(newmalloc(sizeof(FaceNeighborAutoGen_s)));
    if (copy == nullptr) return nullptr;
    *copy = *source;
    if ((copy->Neighbors = duplicateArray(source->Neighbors, source->NumFaces)) == nullptr) {
        newfree(copy);
        return nullptr;
    }
    return copy;
}

FaceNeighborUserDef_s *copyUserDef(const FaceNeighborUserDef_s *source, int64_t numFaces) {
    auto *copy = static_cast<FaceNeighborUserDef_s *>(newmalloc(sizeof(FaceNeighborUserDef_s)));
    if (copy == nullptr) return nullptr;
    *copy = FaceNeighborUserDef_s{};
    copy->NumNeighbors = source->NumNeighbors;
    copy->NumFreeAssignments = source->NumFreeAssignments;
    copy->Offsets = duplicateArray(source->Offsets, numFaces + 1);
    copy->Elements = duplicateArray(source->Elements, source->NumNeighbors);
    if (source->Zones != nullptr) copy->Zones = duplicateArray(source->Zones, source->NumNeighbors);
    copy->ObscuringFaces = duplicateSet(source->ObscuringFaces);
    copy->BoundaryEntries = duplicateSet(source->BoundaryEntries);
    if (copy->Offsets == nullptr || copy->Elements == nullptr || (source->Zones != nullptr && copy->Zones == nullptr) ||
        (source->ObscuringFaces != nullptr && copy->ObscuringFaces == nullptr) ||
        (source->BoundaryEntries != nullptr && copy->BoundaryEntries == nullptr))
        freeUserDef(&copy);
    return copy;
}

inline LgIndex_t loadNeighbor(LgIndex_t *neighbors, int64_t index) {
    return std::atomic_ref<LgIndex_t>(neighbors[index]).load(std::memory_order_relaxed);
}

inline bool hasUserEntry(const FaceNeighbor_s *faceNeighbor, int64_t index) {
    const FaceNeighborUserDef_s *userDef = faceNeighbor->UserDef;
    return userDef != nullptr && userDef->Offsets[index] != userDef->Offsets[index + 1];
}

// Each index of an ordered cell runs below max(dimension - 1, 1): the last slot of each
// dimension above 1 is a ghost.
bool orderedCellExists(LgIndex_t i, LgIndex_t j, LgIndex_t k, LgIndex_t element) {
    int64_t ij = int64_t(i) * j;
    if (element < 0 || i < 1 || j < 1 || k < 1 || element >= ij * k) return false;
    int64_t a = element % i, b = (element / i) % j, c = element / ij;
    return a < std::max(i - 1, 1) && b < std::max(j - 1, 1) && c < std::max(k - 1, 1);
}

bool elementExistsInZone(const ZoneSpec_s *spec, LgIndex_t element) {
    if (ZoneTypeIsFE(spec->Type)) return element >= 0 && element < spec->NumPtsJ;
    return orderedCellExists(spec->NumPtsI, spec->NumPtsJ, spec->NumPtsK, element);
}

bool elementExists(const FaceNeighbor_s *faceNeighbor, LgIndex_t element) {
    if (ZoneTypeIsFE(faceNeighbor->ZoneType)) return element >= 0 && element < faceNeighbor->NumElements;
    return orderedCellExists(faceNeighbor->I, faceNeighbor->J, faceNeighbor->K, element);
}

bool zoneIsThere(const DataSet_s *dataSet, int zone) {
    return zone >= 0 && zone < dataSet->NumZones && IsZoneEnabled(dataSet, EntIndex_t(zone)) &&
           GetZoneSpec(dataSet, EntIndex_t(zone)) != nullptr;
}

// ---- the neighbour search -------------------------------------------------------------------

struct NeighborJob_s {
    FaceNeighbor_a FaceNeighbor;
    NodeMap_a NodeMap;
    const ElementMap_s *ElementMap;
    LgIndex_t FirstElement, EndElement;  // the job's elements: FirstElement .. EndElement-1
    bool IsInterruptable;
    bool WasInterrupted;
    LgIndex_t NumCollapsedFaces;
};

enum class Claim { Paired, SearchOn, Taken };

// Pairs face a of elementA with face b of elementB. The partner's slot is claimed first, so a
// face is only ever written by the job that pairs it. If face a was meanwhile claimed by a third
// face, the partner is given back; if it was claimed by the partner itself, the two jobs found
// each other and the pair already stands.
Claim claimPair(const FaceNeighbor_s *faceNeighbor, LgIndex_t *neighbors, int64_t a, LgIndex_t elementA, int64_t b,
                LgIndex_t elementB) {
    if (hasUserEntry(faceNeighbor, b)) return Claim::SearchOn;
    LgIndex_t expected = -1;
    if (!std::atomic_ref<LgIndex_t>(neighbors[b]).compare_exchange_strong(expected, elementA, std::memory_order_relaxed))
        return Claim::SearchOn;
    expected = -1;
    if (std::atomic_ref<LgIndex_t>(neighbors[a]).compare_exchange_strong(expected, elementB, std::memory_order_relaxed) ||
        expected == elementB)
        return Claim::Paired;
    std::atomic_ref<LgIndex_t>(neighbors[b]).store(-1, std::memory_order_relaxed);
    return Claim::Taken;
}

// Triangles and quadrilaterals: the edge a-b against the edges of the elements around a. A
// triangle's edge may run either way; a quadrilateral's is tried as it is, then reversed.
void searchEdge(NeighborJob_s *job, LgIndex_t *neighbors, LgIndex_t element, int64_t index, LgIndex_t a, LgIndex_t b) {
    const FaceNeighbor_s *faceNeighbor = job->FaceNeighbor;
    const ElementMap_s *elementMap = job->ElementMap;
    const int nodesPerElement = job->NodeMap->NodesPerElement;
    const bool isQuad = job->NodeMap->ZoneType == ZoneType_FEQuad;
    if (a < 0) return;  // no node: a map with holes has nothing to pair here
    for (int pass = 0; pass < (isQuad ? 2 : 1); pass++) {
        for (LgIndex_t p = elementMap->Offsets[a]; p < elementMap->Offsets[a + 1]; p++) {
            LgIndex_t other = ElementMapGetItem(elementMap, p);
            if (other == element) continue;
            const LgIndex_t *nodes = job->NodeMap->Nodes + int64_t(other) * nodesPerElement;
            for (int edge = 0; edge < nodesPerElement; edge++) {
                LgIndex_t c = nodes[edge], d = nodes[(edge + 1) % nodesPerElement];
                bool matches = isQuad ? (pass == 0 ? (c == a && d == b) : (c == b && d == a))
                                      : ((c == a && d == b) || (c == b && d == a));
                if (!matches) continue;
                Claim claim = claimPair(faceNeighbor, neighbors, index, element,
                                        int64_t(other) * faceNeighbor->FacesPerElement + edge, other);
                if (claim != Claim::SearchOn) return;
            }
        }
    }
}

// Tetrahedra: an element around the first node that has all three nodes of the face; the face
// of it that matches is the one without its remaining corner (face 3 - corner).
void searchTetra(NeighborJob_s *job, LgIndex_t *neighbors, LgIndex_t element, int64_t index, const LgIndex_t face[3]) {
    const FaceNeighbor_s *faceNeighbor = job->FaceNeighbor;
    const ElementMap_s *elementMap = job->ElementMap;
    if (face[0] < 0) return;
    for (LgIndex_t p = elementMap->Offsets[face[0]]; p < elementMap->Offsets[face[0] + 1]; p++) {
        LgIndex_t other = ElementMapGetItem(elementMap, p);
        if (other == element) continue;
        const LgIndex_t *nodes = job->NodeMap->Nodes + int64_t(other) * 4;
        int cornerSum = 0, found = 0;
        for (int n = 0; n < 3; n++) {
            for (int c = 0; c < 4; c++) {
                if (nodes[c] == face[n]) {
                    cornerSum += c;
                    found++;
                    break;
                }
            }
        }
        if (found != 3) continue;
        int otherFace = 3 - (6 - cornerSum);
        Claim claim = claimPair(faceNeighbor, neighbors, index, element, int64_t(other) * 4 + otherFace, other);
        if (claim != Claim::SearchOn) return;
    }
}

void sortedFaceNodes(NodeMap_a nodeMap, LgIndex_t element, int face, LgIndex_t sorted[4]) {
    GetFEFaceNodes(nodeMap, element, face, &sorted[0], &sorted[1], &sorted[2], &sorted[3]);
    std::sort(sorted, sorted + 4);
}

// Bricks: an element around the first node holding all four nodes of the face; then its faces of
// the same collapsed status and without a neighbour yet, compared as sorted quadruples, so that
// a degenerate face matches whatever corners its repeated node stands in.
void searchBrick(NeighborJob_s *job, LgIndex_t *neighbors, LgIndex_t element, int face, int64_t index,
                 CollapsedStatus_e status) {
    const FaceNeighbor_s *faceNeighbor = job->FaceNeighbor;
    NodeMap_a nodeMap = job->NodeMap;
    const ElementMap_s *elementMap = job->ElementMap;
    LgIndex_t sorted[4];
    GetFEFaceNodes(nodeMap, element, face, &sorted[0], &sorted[1], &sorted[2], &sorted[3]);
    LgIndex_t first = sorted[0];
    if (first < 0) return;
    std::sort(sorted, sorted + 4);
    for (LgIndex_t p = elementMap->Offsets[first]; p < elementMap->Offsets[first + 1]; p++) {
        LgIndex_t other = ElementMapGetItem(elementMap, p);
        if (other == element) continue;
        const LgIndex_t *nodes = nodeMap->Nodes + int64_t(other) * 8;
        bool holdsAll = true;
        for (int n = 0; n < 4 && holdsAll; n++) holdsAll = std::find(nodes, nodes + 8, sorted[n]) != nodes + 8;
        if (!holdsAll) continue;
        for (int otherFace = 0; otherFace < 6; otherFace++) {
            int64_t otherIndex = int64_t(other) * 6 + otherFace;
            if (loadNeighbor(neighbors, otherIndex) != -1) continue;
            if (GetSurfEdgeOrVolFaceLogicalCollapsedStatus(nodeMap, other, otherFace) != status) continue;
            LgIndex_t otherSorted[4];
            sortedFaceNodes(nodeMap, other, otherFace, otherSorted);
            if (!std::equal(sorted, sorted + 4, otherSorted)) continue;
            if (claimPair(faceNeighbor, neighbors, index, element, otherIndex, other) != Claim::SearchOn) return;
        }
    }
}

void findNeighborsJob(void *argument) {
    auto *job = static_cast<NeighborJob_s *>(argument);
    FaceNeighbor_a faceNeighbor = job->FaceNeighbor;
    NodeMap_a nodeMap = job->NodeMap;
    LgIndex_t *neighbors = faceNeighbor->AutoGen->Neighbors;
    const int facesPerElement = faceNeighbor->FacesPerElement;
    const ZoneType_e type = nodeMap->ZoneType;
    const bool isVolume = type == ZoneType_FETetra || type == ZoneType_FEBrick;
    for (LgIndex_t element = job->FirstElement; element < job->EndElement; element++) {
        if (job->IsInterruptable && Interrupted) {
            job->WasInterrupted = true;
            return;
        }
        for (int face = 0; face < facesPerElement; face++) {
            int64_t index = int64_t(element) * facesPerElement + face;
            if (loadNeighbor(neighbors, index) != -1 || hasUserEntry(faceNeighbor, index)) continue;
            CollapsedStatus_e status = GetSurfEdgeOrVolFaceLogicalCollapsedStatus(nodeMap, element, face);
            bool isCollapsed = isVolume ? (status == CollapsedStatus_CollapsedToPoint ||
                                           status == CollapsedStatus_CollapsedToLine ||
                                           status == CollapsedStatus_CollapsedToSegmentedLine)
                                        : status == CollapsedStatus_CollapsedToPoint;
            if (isCollapsed) {
                job->NumCollapsedFaces++;
                continue;
            }
            switch (type) {
            case ZoneType_FETriangle:
            case ZoneType_FEQuad: {
                LgIndex_t a, b;
                GetFEEdgeNodes(nodeMap, element, face, 0, &a, &b);
                searchEdge(job, neighbors, element, index, a, b);
                break;
            }
            case ZoneType_FETetra: {
                LgIndex_t nodes[4];
                GetFEFaceNodes(nodeMap, element, face, &nodes[0], &nodes[1], &nodes[2], &nodes[3]);
                searchTetra(job, neighbors, element, index, nodes);
                break;
            }
            case ZoneType_FEBrick: searchBrick(job, neighbors, element, face, index, status); break;
            default: break;  // a line segment's ends have no face partner
            }
        }
    }
}

// ---- user-defined assignment ----------------------------------------------------------------

}  // namespace

struct FaceNeighborAssignContext_s {
    bool IsOk;
    bool IsRebuild;  // replaying present user data: AutoGen, validity and AutoAssignFN stay
    bool AnyAssigned;
    LgIndex_t NumAssignedFree;
    int64_t NextOffsetSlot;  // Offsets below this slot are final; the rest are padded at the end
    DataSet_s *DataSet;
    EntIndex_t Zone;
    FaceNeighbor_a FaceNeighbor;
    LgIndex_t *Offsets;
    Set_a *ObscuringFaces;
    ArrayList_s *Elements;
    ArrayList_s *Zones;  // global modes only
};

namespace {

void freeContext(FaceNeighborAssignContext_s **context) {
    FaceNeighborAssignContext_s *c = *context;
    newfree(c->Offsets);
    DeallocSet(&c->ObscuringFaces);
    ArrayListDealloc(&c->Elements, nullptr, 0);
    ArrayListDealloc(&c->Zones, nullptr, 0);
    newfree(c);
    *context = nullptr;
}

// Offsets all 0, every face obscuring, and lists sized for a surface's worth of faces: (faces)
// to the power 2/3, times the faces per element.
FaceNeighborAssignContext_s *allocContext(DataSet_s *dataSet, EntIndex_t zone, FaceNeighbor_a faceNeighbor,
                                          bool isRebuild) {
    auto *context = static_cast<FaceNeighborAssignContext_s *>(newmalloc(sizeof(FaceNeighborAssignContext_s)));
    if (context == nullptr) return nullptr;
    *context = FaceNeighborAssignContext_s{};
    context->IsOk = true;
    context->IsRebuild = isRebuild;
    context->NextOffsetSlot = 1;
    context->DataSet = dataSet;
    context->Zone = zone;
    context->FaceNeighbor = faceNeighbor;
    int64_t numFaces = numFacesOf(faceNeighbor);
    auto capacity = LgIndex_t(std::pow(double(numFaces), 2.0 / 3.0) * faceNeighbor->FacesPerElement);
    context->Offsets = allocArray<LgIndex_t>(numFaces + 1);
    context->ObscuringFaces = allocFullSet(numFaces);
    context->Elements = ArrayListAlloc(capacity, ArrayListType_LgIndex, nullptr, 0);
    if (isGlobalMode(faceNeighbor->Mode))
        context->Zones = ArrayListAlloc(capacity, ArrayListType_EntIndex, nullptr, 0);
    if (context->Offsets == nullptr || context->ObscuringFaces == nullptr || context->Elements == nullptr ||
        (isGlobalMode(faceNeighbor->Mode) && context->Zones == nullptr)) {
        freeContext(&context);
        return nullptr;
    }
    context->Offsets[0] = 0;
    return context;
}

bool isAssigned(const FaceNeighborAssignContext_s *context, int64_t index) {
    const FaceNeighbor_s *faceNeighbor = context->FaceNeighbor;
    if (!context->IsRebuild && faceNeighbor->AutoGen != nullptr && faceNeighbor->AutoGen->Neighbors[index] != -1)
        return true;
    return index + 1 < context->NextOffsetSlot && context->Offsets[index] != context->Offsets[index + 1];
}

// Puts a face's neighbours into the lists at the face's place. Faces in ascending order append;
// a face below the last one given opens a gap and moves the offsets after it. False only when
// memory runs out (no message).
bool insertEntries(FaceNeighborAssignContext_s *context, int64_t index, bool obscuresBoundary, LgIndex_t count,
                   const LgIndex_t *elements, const EntIndex_t *zones) {
    LgIndex_t listCount = ArrayListGetCount(context->Elements);
    LgIndex_t position;
    if (index + 1 >= context->NextOffsetSlot) {
        for (int64_t s = context->NextOffsetSlot; s <= index; s++) context->Offsets[s] = listCount;
        position = listCount;
    } else {
        position = context->Offsets[index];
    }
    for (LgIndex_t n = 0; n < count; n++) {
        ArrayListItem_u element, zone;
        element.LgIndex = elements[n];
        zone.EntIndex = zones != nullptr ? zones[n] : EntIndex_t(-1);
        if (!ArrayListInsertItem(context->Elements, position + n, element)) return false;
        if (context->Zones != nullptr && !ArrayListInsertItem(context->Zones, position + n, zone)) return false;
    }
    if (index + 1 >= context->NextOffsetSlot) {
        context->Offsets[index + 1] = listCount + count;
        context->NextOffsetSlot = index + 2;
    } else {
        for (int64_t s = index + 1; s < context->NextOffsetSlot; s++) context->Offsets[s] += count;
    }
    if ((count == 1 && elements[0] == -1) || !obscuresBoundary) context->NumAssignedFree++;
    if (!obscuresBoundary) RemoveFromSet(context->ObscuringFaces, index);
    context->AnyAssigned = true;
    return true;
}

// The record of what the context gathered; null when memory runs out.
FaceNeighborUserDef_s *buildUserDef(FaceNeighborAssignContext_s *context) {
    int64_t numFaces = numFacesOf(context->FaceNeighbor);
    LgIndex_t count = ArrayListGetCount(context->Elements);
    for (int64_t s = context->NextOffsetSlot; s <= numFaces; s++) context->Offsets[s] = count;
    context->NextOffsetSlot = numFaces + 1;
    auto *userDef = static_cast<FaceNeighborUserDef_s *>(newmalloc(sizeof(FaceNeighborUserDef_s)));
    if (userDef == nullptr) return nullptr;
    *userDef = FaceNeighborUserDef_s{};
    userDef->NumNeighbors = count;
    userDef->NumFreeAssignments = context->NumAssignedFree;
    userDef->Elements = static_cast<LgIndex_t *>(ArrayListToArray(context->Elements, nullptr, 0));
    if (context->Zones != nullptr)
        userDef->Zones = static_cast<EntIndex_t *>(ArrayListToArray(context->Zones, nullptr, 0));
    userDef->BoundaryEntries = AllocSet(false);
    if (userDef->Elements == nullptr || (context->Zones != nullptr && userDef->Zones == nullptr) ||
        userDef->BoundaryEntries == nullptr) {
        freeUserDef(&userDef);
        return nullptr;
    }
    for (LgIndex_t p = 0; p < count; p++) {
        bool isBoundary = userDef->Elements[p] == -1 && (userDef->Zones == nullptr || userDef->Zones[p] == -1);
        if (isBoundary && !AddToSet(userDef->BoundaryEntries, p, false)) {
            freeUserDef(&userDef);
            return nullptr;
        }
    }
    if (MemberCount(userDef->BoundaryEntries) == count) DeallocSet(&userDef->BoundaryEntries);
    userDef->Offsets = context->Offsets;
    context->Offsets = nullptr;
    if (MemberCount(context->ObscuringFaces) != numFaces) {
        userDef->ObscuringFaces = context->ObscuringFaces;
        context->ObscuringFaces = nullptr;
    }
    return userDef;
}

// Replays the zone's user-defined neighbours with their zones passed through mapZone, which gives
// the new number, or DroppedZone to leave the neighbour out. A face that loses a neighbour no
// longer obscures. AutoGen and the validity of the object are kept: the node map hasn't changed,
// and neighbours the user put straight into AutoGen are only there. False when memory runs out.
template <typename MapZone>
bool rebuildUserDef(DataSet_s *dataSet, EntIndex_t zone, MapZone mapZone) {
    if (!BranchConnectivity(dataSet, zone)) return false;
    FaceNeighbor_a faceNeighbor = GetZoneData(dataSet, zone)->FN;
    const FaceNeighborUserDef_s *old = faceNeighbor->UserDef;
    if (old == nullptr) return true;
    FaceNeighborAssignContext_s *context = allocContext(dataSet, zone, faceNeighbor, true);
    auto *elements = allocArray<LgIndex_t>(old->NumNeighbors);
    auto *zones = allocArray<EntIndex_t>(old->NumNeighbors);
    bool isOk = context != nullptr && elements != nullptr && zones != nullptr;
    int64_t numFaces = numFacesOf(faceNeighbor);
    for (int64_t index = 0; isOk && index < numFaces; index++) {
        LgIndex_t first = old->Offsets[index], last = old->Offsets[index + 1];
        if (first == last) continue;
        LgIndex_t count = 0;
        for (LgIndex_t p = first; p < last; p++) {
            int newZone = mapZone(old->Zones != nullptr ? old->Zones[p] : -1);
            if (newZone == DroppedZone) continue;
            elements[count] = old->Elements[p];
            zones[count++] = EntIndex_t(newZone);
        }
        if (count == 0) continue;
        bool obscures = (old->ObscuringFaces == nullptr || InSet(old->ObscuringFaces, index)) && count == last - first;
        isOk = insertEntries(context, index, obscures, count, elements, zones);
    }
    newfree(elements);
    newfree(zones);
    if (!isOk) {
        if (context != nullptr) freeContext(&context);
        return false;
    }
    return FaceNeighborUserDefEndAssign(&context);
}

}  // namespace

// ---- the record -------------------------------------------------------------------------------

bool ZoneNeedsFaceNeighbors(const ZoneSpec_s *zoneSpec) {
    if (zoneSpec->Type == ZoneType_FELineSeg) return false;
    if (zoneSpec->Type != ZoneType_Ordered) return true;
    int ones = (zoneSpec->NumPtsI == 1) + (zoneSpec->NumPtsJ == 1) + (zoneSpec->NumPtsK == 1);
    return ones < 2;
}

FaceNeighbor_a FaceNeighborAlloc(const ZoneSpec_s *zoneSpec, bool showErr) {
    bool isFE = ZoneTypeIsFE(zoneSpec->Type);
    int facesPerElement = GetFacesPerElement(zoneSpec->Type, zoneSpec->NumPtsI, zoneSpec->NumPtsJ, zoneSpec->NumPtsK);
    int64_t numElements = isFE ? int64_t(zoneSpec->NumPtsJ)
                               : int64_t(zoneSpec->NumPtsI) * zoneSpec->NumPtsJ * zoneSpec->NumPtsK;
    FaceNeighbor_a faceNeighbor = nullptr;
    if (numElements <= MAXINDEX && (facesPerElement == 0 || numElements <= MAXINDEX / facesPerElement))
        faceNeighbor = static_cast<FaceNeighbor_a>(newmalloc(sizeof(FaceNeighbor_s)));
    if (faceNeighbor == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    faceNeighbor->RefCount = 1;
    faceNeighbor->IsValid = !isFE;
    faceNeighbor->ZoneType = zoneSpec->Type;
    faceNeighbor->FacesPerElement = int16_t(facesPerElement);
    faceNeighbor->I = zoneSpec->NumPtsI;
    faceNeighbor->J = zoneSpec->NumPtsJ;
    faceNeighbor->K = zoneSpec->NumPtsK;
    faceNeighbor->Mode = zoneSpec->FNMode;
    faceNeighbor->AutoGen = nullptr;
    faceNeighbor->UserDef = nullptr;
    faceNeighbor->NumElements = LgIndex_t(numElements);
    return faceNeighbor;
}

void FaceNeighborDealloc(FaceNeighbor_a *faceNeighbor) {
    if (*faceNeighbor == nullptr) return;
    if (--(*faceNeighbor)->RefCount < 1) {
        freeAutoGen(&(*faceNeighbor)->AutoGen);
        freeUserDef(&(*faceNeighbor)->UserDef);
        newfree(*faceNeighbor);
    }
    *faceNeighbor = nullptr;
}

FaceNeighbor_a FaceNeighborCopy(FaceNeighbor_a faceNeighbor, bool showErr) {
    auto *copy = static_cast<FaceNeighbor_a>(newmalloc(sizeof(FaceNeighbor_s)));
    bool isOk = copy != nullptr;
    if (isOk) {
        *copy = *faceNeighbor;
        copy->RefCount = 1;
        copy->AutoGen = nullptr;
        copy->UserDef = nullptr;
        if (faceNeighbor->AutoGen != nullptr) isOk = (copy->AutoGen = copyAutoGen(faceNeighbor->AutoGen)) != nullptr;
        if (isOk && faceNeighbor->UserDef != nullptr)
            isOk = (copy->UserDef = copyUserDef(faceNeighbor->UserDef, numFacesOf(faceNeighbor))) != nullptr;
        if (!isOk) FaceNeighborDealloc(&copy);
    }
    if (!isOk && showErr) OutOfMemoryMsg();
    return copy;
}

bool FaceNeighborAllocAutoGen(FaceNeighbor_a faceNeighbor) {
    if (faceNeighbor->AutoGen != nullptr) return true;
    int64_t numFaces = numFacesOf(faceNeighbor);
    auto *autoGen = static_cast<FaceNeighborAutoGen_s *>(newmalloc(sizeof(FaceNeighborAutoGen_s)));
    if (autoGen == nullptr) return false;
    autoGen->NumFaces = LgIndex_t(numFaces);
    autoGen->NumBoundaryFaces = 0;
    autoGen->NumCollapsedFaces = 0;
    if ((autoGen->Neighbors = allocArray<LgIndex_t>(numFaces)) == nullptr) {
        newfree(autoGen);
        return false;
    }
    std::fill(autoGen->Neighbors, autoGen->Neighbors + numFaces, -1);
    faceNeighbor->AutoGen = autoGen;
    return true;
}

void InvalidateFaceNeighbor(FaceNeighbor_a faceNeighbor) {
    if (faceNeighbor == nullptr) return;
    faceNeighbor->IsValid = false;
    freeAutoGen(&faceNeighbor->AutoGen);
    freeUserDef(&faceNeighbor->UserDef);
}

void InvalidateFaceNeighbors(DataSet_s *dataSet, const Set_a *zones) {
    const Set_a *zoneSet = zones != nullptr ? zones : dataSet->EnabledZones;
    for (SetIndex_t z = GetNextMember(zoneSet, -1); z >= 0; z = GetNextMember(zoneSet, z)) {
        if (z >= dataSet->NumZones || !IsZoneEnabled(dataSet, EntIndex_t(z))) continue;
        ZoneData_s *zoneData = GetZoneData(dataSet, EntIndex_t(z));
        if (zoneData == nullptr || zoneData->FN == nullptr) continue;
        ZoneSpec_s *spec = GetZoneSpec(dataSet, EntIndex_t(z));
        spec->AutoAssignFN = true;
        spec->FNNumBndryConns = 0;
        InvalidateFaceNeighbor(zoneData->FN);
    }
}

// ---- generation -------------------------------------------------------------------------------

bool UpdateFaceNeighbor(bool isInterruptable, FaceNeighbor_a faceNeighbor, NodeMap_a nodeMap, const char *text) {
    REQUIRE(faceNeighbor != nullptr);
    (void)text;  // shown by the status line, which this layer doesn't reach yet
    if (nodeMap == nullptr) {
        faceNeighbor->IsValid = true;
        return true;
    }
    REQUIRE(nodeMap->NumElements == faceNeighbor->NumElements && nodeMap->ZoneType == faceNeighbor->ZoneType);
    ElementMap_s *elementMap = nullptr;
    LgIndex_t numElements = faceNeighbor->NumElements;
    int numProcessors = GetNumAvailableProcessors();
    int numJobs = numProcessors == 1 ? 1 : 4 * numProcessors;
    LgIndex_t perJob = std::max(numElements / numJobs, MinElementsPerJob);
    numJobs = std::max(1, int(std::min<LgIndex_t>(numJobs, numElements / perJob)));
    auto *jobs = static_cast<NeighborJob_s *>(newmalloc(sizeof(NeighborJob_s) * size_t(numJobs)));
    bool isOk = jobs != nullptr && FaceNeighborAllocAutoGen(faceNeighbor) &&
                (elementMap = AllocElementMapPtr(false)) != nullptr && UpdateElementMap(elementMap, nodeMap);
    JobControl_s *control = nullptr;
    if (isOk && StandardThreadPool != nullptr) isOk = InitJobControl(&control);
    if (!isOk) {
        newfree(jobs);
        DeallocElementMapPtr(&elementMap);
        OutOfMemoryMsg();
        InvalidateFaceNeighbor(faceNeighbor);
        return false;
    }

    faceNeighbor->IsValid = true;
    for (int j = 0; j < numJobs; j++) {
        jobs[j] = NeighborJob_s{faceNeighbor, nodeMap, elementMap, j * perJob,
                                j == numJobs - 1 ? numElements : (j + 1) * perJob, isInterruptable, false, 0};
        // A job the pool can't take runs here, while the others run on the workers.
        if (control == nullptr || !ThreadPoolAddJob(StandardThreadPool, findNeighborsJob, &jobs[j], control))
            findNeighborsJob(&jobs[j]);
    }
    if (control != nullptr) {
        ThreadPoolWait(StandardThreadPool, control);
        FreeJobControl(&control);
    }

    bool wasInterrupted = false;
    LgIndex_t numCollapsed = 0;
    for (int j = 0; j < numJobs; j++) {
        numCollapsed += jobs[j].NumCollapsedFaces;
        wasInterrupted = wasInterrupted || jobs[j].WasInterrupted;
    }
    newfree(jobs);
    DeallocElementMapPtr(&elementMap);
    faceNeighbor->AutoGen->NumCollapsedFaces = numCollapsed;
    FaceNeighborUpdateAutoGenBoundaryCount(faceNeighbor, nodeMap);
    if (wasInterrupted) faceNeighbor->IsValid = false;
    return !wasInterrupted;
}

void FaceNeighborUpdateAutoGenBoundaryCount(FaceNeighbor_a faceNeighbor, NodeMap_a nodeMap) {
    FaceNeighborAutoGen_s *autoGen = faceNeighbor->AutoGen;
    if (autoGen == nullptr || nodeMap == nullptr) return;
    LgIndex_t numBoundary = 0;
    const int facesPerElement = faceNeighbor->FacesPerElement;
    for (LgIndex_t element = 0; element < faceNeighbor->NumElements; element++) {
        for (int face = 0; face < facesPerElement; face++) {
            int64_t index = int64_t(element) * facesPerElement + face;
            if (autoGen->Neighbors[index] != -1 || hasUserEntry(faceNeighbor, index)) continue;
            CollapsedStatus_e status = GetSurfEdgeOrVolFaceLogicalCollapsedStatus(nodeMap, element, face);
            numBoundary += status == CollapsedStatus_NotCollapsed || status == CollapsedStatus_CollapsedToTriangle;
        }
    }
    autoGen->NumBoundaryFaces = numBoundary;
}

LgIndex_t GetLogicalOrderedNeighbor(LgIndex_t i, LgIndex_t j, LgIndex_t k, LgIndex_t element, int face) {
    int64_t ij = int64_t(i) * j;
    int64_t a = element % i, b = (element / i) % j, c = element / ij;
    int ones = (i == 1) + (j == 1) + (k == 1);
    if (ones == 0) {
        switch (face) {
        case 0: a--; break;
        case 1: a++; break;
        case 2: b--; break;
        case 3: b++; break;
        case 4: c--; break;
        case 5: c++; break;
        default: return -1;
        }
    } else if (ones == 1) {
        int64_t *p = &a, *q = &b;  // an IJ zone
        if (j == 1) q = &c;        // IK
        if (i == 1) p = &c;        // JK: P is k, Q is j
        switch (face) {
        case 0: --*q; break;
        case 1: ++*p; break;
        case 2: ++*q; break;
        case 3: --*p; break;
        default: return -1;
        }
    } else {
        return -1;
    }
    auto inside = [](int64_t index, LgIndex_t dimension) { return index >= 0 && index < std::max(dimension - 1, 1); };
    if (!inside(a, i) || !inside(b, j) || !inside(c, k)) return -1;
    return LgIndex_t(a + b * i + c * ij);
}

// ---- queries ----------------------------------------------------------------------------------

LgIndex_t FaceNeighborGetNeighbors(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face,
                                   const LgIndex_t **elements, const EntIndex_t **zones, LgIndex_t *elementBuffer,
                                   EntIndex_t *zoneBuffer) {
    REQUIRE(face >= 0 && face < faceNeighbor->FacesPerElement && element >= 0 && element < faceNeighbor->NumElements);
    int64_t index = int64_t(element) * faceNeighbor->FacesPerElement + face;
    *elements = nullptr;
    *zones = nullptr;
    LgIndex_t computed = -1;
    if (faceNeighbor->AutoGen != nullptr && faceNeighbor->AutoGen->Neighbors[index] != -1) {
        computed = faceNeighbor->AutoGen->Neighbors[index];
    } else if (hasUserEntry(faceNeighbor, index)) {
        const FaceNeighborUserDef_s *userDef = faceNeighbor->UserDef;
        LgIndex_t first = userDef->Offsets[index];
        if (userDef->Elements[first] == -1) return 0;  // an explicit boundary
        *elements = userDef->Elements + first;
        if (userDef->Zones != nullptr) *zones = userDef->Zones + first;
        return userDef->Offsets[index + 1] - first;
    } else if (faceNeighbor->ZoneType == ZoneType_Ordered) {
        computed = GetLogicalOrderedNeighbor(faceNeighbor->I, faceNeighbor->J, faceNeighbor->K, element, face);
    }
    if (computed == -1) return 0;
    elementBuffer[0] = computed;
    if (zoneBuffer != nullptr) zoneBuffer[0] = -1;
    *elements = elementBuffer;
    return 1;
}

LgIndex_t FaceNeighborGetNumNeighbors(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face, bool *isUserDefined) {
    const LgIndex_t *elements;
    const EntIndex_t *zones;
    LgIndex_t elementBuffer;
    EntIndex_t zoneBuffer;
    LgIndex_t count = FaceNeighborGetNeighbors(faceNeighbor, element, face, &elements, &zones, &elementBuffer, &zoneBuffer);
    if (isUserDefined != nullptr) {
        int64_t index = int64_t(element) * faceNeighbor->FacesPerElement + face;
        bool fromAutoGen = faceNeighbor->AutoGen != nullptr && faceNeighbor->AutoGen->Neighbors[index] != -1;
        *isUserDefined = !fromAutoGen && hasUserEntry(faceNeighbor, index);
    }
    return count;
}

void FaceNeighborGetNeighbor(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face, LgIndex_t index,
                             LgIndex_t *neighborElement, EntIndex_t *neighborZone) {
    const LgIndex_t *elements;
    const EntIndex_t *zones;
    LgIndex_t elementBuffer;
    EntIndex_t zoneBuffer;
    LgIndex_t count = FaceNeighborGetNeighbors(faceNeighbor, element, face, &elements, &zones, &elementBuffer, &zoneBuffer);
    REQUIRE(index >= 0 && index < count);
    *neighborElement = elements[index];
    *neighborZone = zones != nullptr ? zones[index] : EntIndex_t(-1);
}

bool HasOnlyOneLocalFaceNeighbor(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face, LgIndex_t *neighbor) {
    const LgIndex_t *elements;
    const EntIndex_t *zones;
    LgIndex_t elementBuffer;
    EntIndex_t zoneBuffer;
    if (FaceNeighborGetNeighbors(faceNeighbor, element, face, &elements, &zones, &elementBuffer, &zoneBuffer) != 1 ||
        (zones != nullptr && zones[0] != -1))
        return false;
    *neighbor = elements[0];
    return true;
}

FaceObscuration_e FaceNeighborGetFaceObscuration(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face,
                                                 const Set_a *activeZones) {
    int64_t index = int64_t(element) * faceNeighbor->FacesPerElement + face;
    if (faceNeighbor->AutoGen != nullptr && faceNeighbor->AutoGen->Neighbors[index] != -1)
        return FaceObscuration_EntirelyObscuredLocal;
    if (!hasUserEntry(faceNeighbor, index)) {
        bool hasLogical = faceNeighbor->ZoneType == ZoneType_Ordered &&
                          GetLogicalOrderedNeighbor(faceNeighbor->I, faceNeighbor->J, faceNeighbor->K, element, face) != -1;
        return hasLogical ? FaceObscuration_EntirelyObscuredLocal : FaceObscuration_NotObscured;
    }
    const FaceNeighborUserDef_s *userDef = faceNeighbor->UserDef;
    LgIndex_t first = userDef->Offsets[index], last = userDef->Offsets[index + 1];
    if (userDef->Elements[first] == -1) return FaceObscuration_NotObscured;
    bool isObscuring = userDef->ObscuringFaces == nullptr || InSet(userDef->ObscuringFaces, index);
    if (isObscuring && userDef->Zones == nullptr) return FaceObscuration_EntirelyObscured;
    LgIndex_t numActive = 0;
    for (LgIndex_t p = first; p < last; p++) {
        EntIndex_t zone = userDef->Zones != nullptr ? userDef->Zones[p] : EntIndex_t(-1);
        numActive += zone == -1 || (activeZones != nullptr && InSet(activeZones, zone));
    }
    if (numActive == 0) return FaceObscuration_NotObscured;
    if (isObscuring && numActive == last - first) return FaceObscuration_EntirelyObscured;
    return FaceObscuration_PartiallyObscured;
}

// ---- user-defined neighbours ------------------------------------------------------------------

FaceNeighborAssignContext_s *FaceNeighborUserDefBeginAssign(DataSet_s *dataSet, EntIndex_t zone) {
    REQUIRE(IsZoneEnabled(dataSet, zone));
    if (!BranchConnectivity(dataSet, zone)) return nullptr;
    ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    FaceNeighbor_a faceNeighbor = GetZoneData(dataSet, zone)->FN;
    REQUIRE(faceNeighbor != nullptr);
    spec->FNNumBndryConns = 0;
    InvalidateFaceNeighbor(faceNeighbor);
    FaceNeighborAssignContext_s *context = allocContext(dataSet, zone, faceNeighbor, false);
    bool needsAutoGen = ZoneTypeIsFE(spec->Type) && spec->Type != ZoneType_FELineSeg;
    if (context == nullptr || (needsAutoGen && !FaceNeighborAllocAutoGen(faceNeighbor))) {
        if (context != nullptr) freeContext(&context);
        ErrMsg("%s", NoMemoryForUserDefText);
        return nullptr;
    }
    // Neighbours in other zones change what derived values averaged across zones would see.
    if (isGlobalMode(faceNeighbor->Mode)) {
        const Set_a *vars = dataSet->EnabledVars;
        for (SetIndex_t var = GetNextMember(vars, -1); var >= 0; var = GetNextMember(vars, var)) {
            Set_a *sharing = GetSharedVarZoneSet(dataSet, zone, EntIndex_t(var));
            if (sharing == nullptr) continue;
            for (SetIndex_t z = GetNextMember(sharing, -1); z >= 0; z = GetNextMember(sharing, z))
                DataSetHooks.InvalidateDerivedVar(dataSet, EntIndex_t(z), EntIndex_t(var));
            DeallocSet(&sharing);
        }
    }
    return context;
}

bool FaceNeighborUserDefAssign(FaceNeighborAssignContext_s *context, LgIndex_t element, int face,
                               bool obscuresBoundary, LgIndex_t count, const LgIndex_t *elements,
                               const EntIndex_t *zones) {
    REQUIRE(context != nullptr);
    if (!context->IsOk) return false;
    auto fail = [context](const char *message) {
        ErrMsg("%s", message);
        context->IsOk = false;
        return false;
    };
    FaceNeighbor_a faceNeighbor = context->FaceNeighbor;
    const bool isGlobal = isGlobalMode(faceNeighbor->Mode);
    if (!isGlobal) zones = nullptr;
    if (!elementExists(faceNeighbor, element))
        return fail("Invalid user defined face neighbor element assignment. Element number is not valid for the zone "
                    "dimensions.");
    if (face < 0 || face >= faceNeighbor->FacesPerElement)
        return fail("Invalid user defined face neighbor face assignment. Face number is not valid for the zone type.");
    if (count < 1 || elements == nullptr) return fail("Corrupt input file: invalid face neighbors.");
    for (LgIndex_t n = 0; n < count; n++) {
        EntIndex_t zone = zones != nullptr ? zones[n] : EntIndex_t(-1);
        if (zone == context->Zone)
            return fail("Cannot specify the current zone for global user defined face neighbor modes. Use \"0\" "
                        "instead.");
        if (zone < -1) return fail("Corrupt input file: invalid face neighbors.");
        // -1 in this zone is an explicit boundary, and only as the face's one entry.
        if (elements[n] == -1 && (zone != -1 || count > 1))
            return fail("User defined face neighbors cannot specify boundary faces.");
    }
    int64_t index = int64_t(element) * faceNeighbor->FacesPerElement + face;
    if (isAssigned(context, index))
        return fail("Invalid user defined face neighbor assignment. Not allowed to assign face neighbors to an "
                    "element's face more than once.");
    bool isLocal = zones == nullptr || zones[0] == -1;
    if (obscuresBoundary && count == 1 && isLocal && faceNeighbor->AutoGen != nullptr && !context->IsRebuild &&
        elements[0] >= 0 && elements[0] < faceNeighbor->NumElements) {
        faceNeighbor->AutoGen->Neighbors[index] = elements[0];
        context->AnyAssigned = true;
        return true;
    }
    if (!insertEntries(context, index, obscuresBoundary, count, elements, zones)) return fail(NoMemoryForUserDefText);
    return true;
}

bool FaceNeighborUserDefEndAssign(FaceNeighborAssignContext_s **contextRef) {
    REQUIRE(contextRef != nullptr && *contextRef != nullptr);
    FaceNeighborAssignContext_s *context = *contextRef;
    DataSet_s *dataSet = context->DataSet;
    EntIndex_t zone = context->Zone;
    ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    FaceNeighbor_a faceNeighbor = context->FaceNeighbor;
    bool isOk = context->IsOk;
    FaceNeighborUserDef_s *userDef = nullptr;
    if (isOk && context->AnyAssigned && ArrayListGetCount(context->Elements) > 0) {
        userDef = buildUserDef(context);
        if (userDef == nullptr) {
            isOk = false;
            if (!context->IsRebuild) ErrMsg("%s", NoMemoryForUserDefText);
        }
    }
    if (!isOk) {
        if (!context->IsRebuild) {
            InvalidateFaceNeighbor(faceNeighbor);
            spec->FNNumBndryConns = 0;
            spec->AutoAssignFN = true;
        }
        freeContext(contextRef);
        return false;
    }
    if (!context->AnyAssigned) spec->AutoAssignFN = true;
    freeUserDef(&faceNeighbor->UserDef);
    faceNeighbor->UserDef = userDef;
    spec->FNNumBndryConns = userDef != nullptr ? userDef->NumNeighbors : 0;
    NodeMap_a nodeMap = GetZoneData(dataSet, zone)->NodeMap;
    if (!context->IsRebuild && !spec->AutoAssignFN) {
        ValidateFaceNeighbor(faceNeighbor);
        FaceNeighborUpdateAutoGenBoundaryCount(faceNeighbor, nodeMap);
    } else if (context->IsRebuild && faceNeighbor->IsValid) {
        FaceNeighborUpdateAutoGenBoundaryCount(faceNeighbor, nodeMap);
    }
    freeContext(contextRef);
    return true;
}

bool IsFaceNeighborAssignContextOk(const FaceNeighborAssignContext_s *context) {
    return context != nullptr && context->IsOk;
}

bool VerifyUserDefFNIntegrity(DataSet_s *dataSet, EntIndex_t zone) {
    for (;;) {
        FaceNeighbor_a faceNeighbor = GetZoneData(dataSet, zone)->FN;
        if (faceNeighbor == nullptr || faceNeighbor->UserDef == nullptr) return true;
        const FaceNeighborUserDef_s *userDef = faceNeighbor->UserDef;
        bool namesAbsentZone = false;
        for (LgIndex_t p = 0; p < userDef->NumNeighbors; p++) {
            int neighborZone = userDef->Zones != nullptr ? userDef->Zones[p] : -1;
            LgIndex_t element = userDef->Elements[p];
            if (element == -1) {
                if (neighborZone == -1) continue;
                ErrMsg("One or more of zone %d's user defined face neighbor tuples references a zone other than the "
                       "current one for a boundary face. Correct the problem and reload the data.",
                       zone + 1);
                return false;
            }
            if (neighborZone == zone) {
                ErrMsg("One or more of zone %d's user defined face neighbors specifies the global zone reference "
                       "using the current zone number when it should instead refer to the current zone with a zero. "
                       "Correct the problem and reload the data.",
                       zone + 1);
                return false;
            }
            int target = neighborZone == -1 ? zone : neighborZone;
            if (!zoneIsThere(dataSet, target)) {
                namesAbsentZone = true;
                continue;
            }
            if (!elementExistsInZone(GetZoneSpec(dataSet, EntIndex_t(target)), element)) {
                ErrMsg("One or more of zone %d's user defined face neighbor tuples references a non-existent element. "
                       "Correct the problem and reload the data.",
                       zone + 1);
                return false;
            }
        }
        if (!namesAbsentZone) return true;
        // Zones left out of the load take their neighbours with them; then check what remains.
        auto keepPresent = [dataSet](int z) { return z == -1 || zoneIsThere(dataSet, z) ? z : DroppedZone; };
        if (!rebuildUserDef(dataSet, zone, keepPresent)) {
            ErrMsg("%s", RepairOutOfMemoryText);
            InvalidateFaceNeighbors(dataSet, nullptr);
            return false;
        }
    }
}

void FaceNeighborAdjustUserDefAfterZoneAdjustment(DataSet_s *dataSet, EntIndex_t zone, int delta) {
    if (delta == 0) return;
    auto renumber = [zone, delta](int z) {
        if (z < zone) return z;  // this zone (-1) and lower zones keep their numbers
        if (delta > 0) return z + 1;
        return z == zone ? DroppedZone : z - 1;
    };
    const Set_a *zones = dataSet->EnabledZones;
    for (SetIndex_t z = GetNextMember(zones, -1); z >= 0; z = GetNextMember(zones, z)) {
        if (z >= dataSet->NumZones) break;
        ZoneData_s *zoneData = GetZoneData(dataSet, EntIndex_t(z));
        if (zoneData == nullptr || zoneData->FN == nullptr) continue;
        const FaceNeighborUserDef_s *userDef = zoneData->FN->UserDef;
        if (userDef == nullptr || userDef->Zones == nullptr) continue;
        bool isAffected = false;
        for (LgIndex_t p = 0; p < userDef->NumNeighbors && !isAffected; p++) isAffected = userDef->Zones[p] >= zone;
        if (isAffected && !rebuildUserDef(dataSet, EntIndex_t(z), renumber)) {
            ErrMsg("%s", RepairOutOfMemoryText);
            InvalidateFaceNeighbors(dataSet, nullptr);
            return;
        }
    }
}

void FaceNeighborInstallHooks() {
    DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment = FaceNeighborAdjustUserDefAfterZoneAdjustment;
}
