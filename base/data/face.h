// Face neighbours of a zone: what lies across each face of each cell. Three sources answer
// through one set of queries: the implicit neighbours of ordered cells, the neighbours found from
// an FE node map by a search that runs on the standard thread pool (the AutoGen record), and the
// neighbours the user gave (the UserDef record), which may lie in other zones and be several.
// The index of an element's face in every array is element x FacesPerElement + face.
// Relies on: nodemap (shape tables, element map), set, arrlist, threadpool, dataset, share.
#pragma once

#include <cstdint>

#include "base/data/nodemap.h"
#include "base/data/zonespec.h"
#include "base/kernel/set.h"

struct DataSet_s;

// Neighbours found from the node map: one element number per face, -1 for none.
struct FaceNeighborAutoGen_s {
    LgIndex_t NumFaces;  // elements x faces
    LgIndex_t NumBoundaryFaces;
    LgIndex_t NumCollapsedFaces;
    LgIndex_t *Neighbors;
};

// Neighbours given by the user. The entries of face index f stand at positions Offsets[f] to
// Offsets[f+1]-1 of Elements (and Zones); equal offsets mean the face has none.
struct FaceNeighborUserDef_s {
    LgIndex_t NumNeighbors;        // entries in Elements
    LgIndex_t NumFreeAssignments;  // faces given without the obscures-boundary flag, or as a boundary
    Set_a *ObscuringFaces;         // faces the neighbours wholly cover; null when all do
    LgIndex_t *Offsets;            // elements x faces + 1
    Set_a *BoundaryEntries;        // positions holding an explicit boundary; null when all do
    LgIndex_t *Elements;           // neighbour elements; -1 a boundary
    EntIndex_t *Zones;             // global modes: neighbour zones, -1 this zone; null for local modes
};

struct FaceNeighbor_s {
    int32_t RefCount;
    bool IsValid;  // starts true for ordered zones, false for FE zones
    ZoneType_e ZoneType;
    int16_t FacesPerElement;
    LgIndex_t I, J, K;  // the zone's numbers; FE: points, elements, nodes per element
    FaceNeighborMode_e Mode;
    FaceNeighborAutoGen_s *AutoGen;  // null until generated
    FaceNeighborUserDef_s *UserDef;  // null if the user gave nothing
    LgIndex_t NumElements;           // FE: J; ordered: I x J x K, ghost slots included
};
using FaceNeighbor_a = FaceNeighbor_s *;

// What covers a face, for drawing and boundary extraction.
enum FaceObscuration_e {
    FaceObscuration_NotObscured = 0,
    FaceObscuration_PartiallyObscured = 1,
    FaceObscuration_EntirelyObscured = 2,        // by user-defined neighbours
    FaceObscuration_EntirelyObscuredLocal = 3    // by one neighbour of the same zone
};

// False for an FE line-segment zone and an ordered zone with at least two of I, J, K equal to 1:
// those have no faces that can have neighbours.
bool ZoneNeedsFaceNeighbors(const ZoneSpec_s *zoneSpec);
// Null (with the out-of-memory message if showErr) when memory runs out or the zone has more than
// 2147483646 / FacesPerElement elements.
FaceNeighbor_a FaceNeighborAlloc(const ZoneSpec_s *zoneSpec, bool showErr);
// Lowers the count; frees at 0. Nulls the pointer.
void FaceNeighborDealloc(FaceNeighbor_a *faceNeighbor);
// A new object (count 1) with everything copied: numbers, validity, AutoGen and UserDef.
FaceNeighbor_a FaceNeighborCopy(FaceNeighbor_a faceNeighbor, bool showErr);
// Gives the object an AutoGen record with every neighbour -1 if it has none; false on out of
// memory (no message).
bool FaceNeighborAllocAutoGen(FaceNeighbor_a faceNeighbor);

inline bool IsValidFaceNeighbor(FaceNeighbor_a faceNeighbor) { return faceNeighbor->IsValid; }
inline void ValidateFaceNeighbor(FaceNeighbor_a faceNeighbor) { faceNeighbor->IsValid = true; }
// Marks invalid and drops AutoGen and UserDef. Whoever invalidates then sets the zone's
// AutoAssignFN true and FNNumBndryConns 0, since the user data is gone.
void InvalidateFaceNeighbor(FaceNeighbor_a faceNeighbor);
// The same for each zone of the set (null: every enabled zone), with AutoAssignFN and
// FNNumBndryConns reset.
void InvalidateFaceNeighbors(DataSet_s *dataSet, const Set_a *zones);

inline FaceNeighborMode_e FaceNeighborGetMode(FaceNeighbor_a faceNeighbor) { return faceNeighbor->Mode; }
inline LgIndex_t FaceNeighborGetNumElements(FaceNeighbor_a faceNeighbor) { return faceNeighbor->NumElements; }

// Builds AutoGen from the node map (none for an ordered zone: it is only marked valid). Faces
// already set in AutoGen, and faces with user-defined entries, keep what they have. The elements
// are split over jobs of StandardThreadPool: one with one processor, else four per processor,
// each of at least 100 elements. False if interrupted (AutoGen is kept, the object stays
// invalid) or out of memory (message given, the object invalidated). The text names what is
// being updated, for the status line.
bool UpdateFaceNeighbor(bool isInterruptable, FaceNeighbor_a faceNeighbor, NodeMap_a nodeMap, const char *text);
// NumBoundaryFaces: faces at -1 whose face or edge has not collapsed (status 0 or 4) and that
// have no user-defined entry.
void FaceNeighborUpdateAutoGenBoundaryCount(FaceNeighbor_a faceNeighbor, NodeMap_a nodeMap);

// The neighbour of an ordered cell: element i + j x I + k x I x J, faces 0..5 toward i-1, i+1,
// j-1, j+1, k-1, k+1 in a volume; with one dimension 1 the two running indices P and Q (IJ: i, j;
// IK: i, k; JK: k, j) and faces 0..3 toward Q-1, P+1, Q+1, P-1. -1 outside the cells, whose
// indices run below max(dimension - 1, 1).
LgIndex_t GetLogicalOrderedNeighbor(LgIndex_t i, LgIndex_t j, LgIndex_t k, LgIndex_t element, int face);

// Queries. Callers make sure on the mainline that the object is valid; no lock is taken. In an
// FE zone an AutoGen neighbour wins; then a user range that doesn't begin with -1; then, in an
// ordered zone without user entries for the face, the logical neighbour. A user range that
// begins with -1 is a boundary.
LgIndex_t FaceNeighborGetNumNeighbors(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face, bool *isUserDefined);
// Points elements (and zones, null for local neighbours) at the neighbours: into the user arrays,
// or into the one-entry buffers for a computed neighbour. Returns the count.
LgIndex_t FaceNeighborGetNeighbors(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face,
                                   const LgIndex_t **elements, const EntIndex_t **zones, LgIndex_t *elementBuffer,
                                   EntIndex_t *zoneBuffer);
// The index-th neighbour; neighborZone -1 for this zone.
void FaceNeighborGetNeighbor(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face, LgIndex_t index,
                             LgIndex_t *neighborElement, EntIndex_t *neighborZone);
// True when the face has exactly one neighbour and it lies in this zone.
bool HasOnlyOneLocalFaceNeighbor(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face, LgIndex_t *neighbor);
// How the face is covered, counting user neighbours in other zones only if activeZones (may be
// null) holds them.
FaceObscuration_e FaceNeighborGetFaceObscuration(FaceNeighbor_a faceNeighbor, LgIndex_t element, int face,
                                                 const Set_a *activeZones);

// ---- user-defined neighbours ----------------------------------------------------------------

struct FaceNeighborAssignContext_s;

// Starts replacing the zone's user-defined neighbours: gives the zone private connectivity,
// invalidates its face neighbours and sets FNNumBndryConns 0. Null on failure, with the message.
FaceNeighborAssignContext_s *FaceNeighborUserDefBeginAssign(DataSet_s *dataSet, EntIndex_t zone);
// Gives one face its neighbours, in any order of faces. Elements and faces are zero-based; in
// global modes zones[n] is zero-based with -1 for this zone (zones null: all this zone), and is
// ignored in local modes. A single -1 element in this zone makes the face an explicit boundary.
// One neighbour in this zone with obscuresBoundary goes straight into AutoGen. A bad argument
// gives its message, returns false and spoils the context.
bool FaceNeighborUserDefAssign(FaceNeighborAssignContext_s *context, LgIndex_t element, int face,
                               bool obscuresBoundary, LgIndex_t count, const LgIndex_t *elements,
                               const EntIndex_t *zones);
// Installs what was assigned (or, after a failure, drops it and sets AutoAssignFN true), frees the
// context and nulls the pointer. With AutoAssignFN false the object is valid afterwards.
bool FaceNeighborUserDefEndAssign(FaceNeighborAssignContext_s **context);
bool IsFaceNeighborAssignContextOk(const FaceNeighborAssignContext_s *context);

// After a load and before UpdateFaceNeighbor: each user entry must be a boundary of this zone or
// name an existing element, and never this zone by its own number. Entries in zones that are
// not enabled are dropped. False with the message on the first bad entry.
bool VerifyUserDefFNIntegrity(DataSet_s *dataSet, EntIndex_t zone);
// Renumbers the zone references of global user neighbours after a zone was inserted at zone
// (delta +1: references at or above it rise by one) or deleted (delta -1: references to it go,
// higher ones fall by one). delta 0 does nothing.
void FaceNeighborAdjustUserDefAfterZoneAdjustment(DataSet_s *dataSet, EntIndex_t zone, int delta);
// Installs the renumbering into the data set's hooks; called once at start-up.
void FaceNeighborInstallHooks();
