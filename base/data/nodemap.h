// FE connectivity: the node map of a zone, shared between zones by reference count; the element
// shape tables (faces, face nodes, edges); the collapsed status of degenerate elements, faces and
// edges; and the element map, the inverse of a node map, which lists the elements around a node.
// Relies on: alloc, outofmem, dataset (only for the zone accessors GetNodeMapPtr and the like).
#pragma once

#include <cstdint>

#include "base/data/zonespec.h"
#include "base/kernel/types.h"

struct DataSet_s;

struct NodeMap_s {
    int32_t RefCount;
    LgIndex_t NumElements;
    ZoneType_e ZoneType;
    int16_t NodesPerElement;
    uint8_t Flags[2];    // both 0 for a data set's map; a computed object's map sets the second
    LgIndex_t *Nodes;    // element by element; null for zero elements
};
using NodeMap_a = NodeMap_s *;

// Nodes per element of an FE zone type (0 for ordered).
int GetNodesPerElement(ZoneType_e zoneType);

// A map of numElements elements with all node numbers 0. Refuses more than 2147483646 divided
// by the nodes per element; reports out of memory if showErr.
NodeMap_a AllocNodeMapPtr(LgIndex_t numElements, ZoneType_e zoneType, bool showErr);
// Lowers the count; frees at 0. Nulls the pointer.
void DeallocNodeMapPtr(NodeMap_a *nodeMap);
// Copies the nodes of src into dst (which has at least as many elements).
void CopyNodeMap(NodeMap_a dst, NodeMap_a src);
// A new map with the same contents (count 1), or null.
NodeMap_a NodeMapDuplicate(NodeMap_a src, bool showErr);

inline LgIndex_t NodeMapGetNode(NodeMap_a nodeMap, LgIndex_t element, int corner) {
    return nodeMap->Nodes[int64_t(element) * nodeMap->NodesPerElement + corner];
}
inline void NodeMapSetNode(NodeMap_a nodeMap, LgIndex_t element, int corner, LgIndex_t node) {
    nodeMap->Nodes[int64_t(element) * nodeMap->NodesPerElement + corner] = node;
}

// The zone's map (null for an ordered zone), and its node array for hot loops.
NodeMap_a GetNodeMapPtr(const DataSet_s *dataSet, EntIndex_t zone);
inline LgIndex_t *GetRawNodeMapPtr(NodeMap_a nodeMap) { return nodeMap != nullptr ? nodeMap->Nodes : nullptr; }
// The zone takes over the caller's reference to nodeMap; its old map is released.
void SetNodeMapPtr(DataSet_s *dataSet, EntIndex_t zone, NodeMap_a nodeMap);
// Releases the zone's map and leaves it without one.
void UnsetNodeMapPtr(DataSet_s *dataSet, EntIndex_t zone);

// ---- element shape ------------------------------------------------------------------------

// Ordered zones: 6 with I, J, K all above 1, 1 with two of them 1, 0 with all three 1, else 4.
// FE zones by type (i, j, k ignored): triangle 3, quadrilateral 4, tetrahedron 4, brick 6,
// line segment 1.
int GetFacesPerElement(ZoneType_e zoneType, LgIndex_t i, LgIndex_t j, LgIndex_t k);
// Nodes on one face: 0 ordered, 2 triangle, quadrilateral and line segment, 3 tetrahedron, 4 brick.
int GetNodesPerElementFace(ZoneType_e zoneType);
// The corners of an element that make a face, in the order orientation relies on. A face of
// fewer than four nodes repeats its first corner in the places left over.
void GetFEFaceNodeOrdering(ZoneType_e zoneType, int face, int *n0, int *n1, int *n2, int *n3);
// The node numbers of that face.
void GetFEFaceNodes(NodeMap_a nodeMap, LgIndex_t element, int face, LgIndex_t *n0, LgIndex_t *n1, LgIndex_t *n2,
                    LgIndex_t *n3);
// The nodes of an edge. Triangle and quadrilateral: "face" is the edge, from corner face to the
// next corner round the element (edge is unused). Line segment: from corner edge to the other.
// Volumes: from the edge-th node of the face to the next node of that face.
void GetFEEdgeNodes(NodeMap_a nodeMap, LgIndex_t element, int face, int edge, LgIndex_t *a, LgIndex_t *b);

// How a cell, face or edge with repeated nodes has degenerated.
enum CollapsedStatus_e : uint8_t {
    CollapsedStatus_NotCollapsed = 0,
    CollapsedStatus_CollapsedToPoint = 1,
    CollapsedStatus_CollapsedToLine = 2,           // adjacent nodes equal in pairs (or three alike)
    CollapsedStatus_CollapsedToSegmentedLine = 3,  // diagonal nodes equal
    CollapsedStatus_CollapsedToTriangle = 4,       // one adjacent pair equal
    CollapsedStatus_Invalid = 255
};

// By node numbers: four corners for ordered, quadrilateral and brick types, three (n0..n2) for
// triangles and tetrahedra, two (n0, n1) for line segments.
CollapsedStatus_e GetSurfaceCellLogicalCollapsedStatus(ZoneType_e zoneType, LgIndex_t n0, LgIndex_t n1, LgIndex_t n2,
                                                       LgIndex_t n3);
// One face of an FE element: the edge of a surface element or line segment (two nodes), the
// triangle of a tetrahedron, the quadrilateral of a brick.
CollapsedStatus_e GetSurfEdgeOrVolFaceLogicalCollapsedStatus(NodeMap_a nodeMap, LgIndex_t element, int face);
// An element with no area (surfaces) or volume left: a line segment whose ends are one node, a
// triangle or quadrilateral with fewer than three distinct nodes, a tetrahedron with fewer than
// four, a brick with fewer than four faces that still have area.
bool IsFEElementLogicallyCollapsed(NodeMap_a nodeMap, LgIndex_t element);

// ---- element map --------------------------------------------------------------------------

// The elements around each node, in blocks so that no single allocation passes 4 megabytes:
// position p lies in SubLists[p >> ElementMapSubListShift][p & ElementMapSubListFilter].
constexpr int ElementMapSubListShift = 20;
constexpr LgIndex_t ElementMapSubListFilter = 1048575;
constexpr LgIndex_t ElementMapSubListMaxSize = 1048576;

struct ElementMap_s {
    LgIndex_t NumNodes;
    LgIndex_t *Offsets;  // NumNodes + 1: the elements of node n lie at Offsets[n] .. Offsets[n+1]-1
    LgIndex_t NumEntries;
    LgIndex_t NumSubLists;
    LgIndex_t **SubLists;
};

// An empty map; null after the out-of-memory message if showErr.
ElementMap_s *AllocElementMapPtr(bool showErr);
void DeallocElementMapPtr(ElementMap_s **elementMap);
// For an ArrayList_s of ElementMap_s pointers.
bool ElementMapItemDestructor(void *itemRef, ArbParam_t clientData);
// Rebuilds the map from the node map. An element is listed once under each of its distinct
// nodes, in element order. False when memory runs out (the map is then empty); no message.
bool UpdateElementMap(ElementMap_s *elementMap, NodeMap_a nodeMap);

inline LgIndex_t ElementMapGetNumElements(const ElementMap_s *elementMap, LgIndex_t node) {
    return elementMap->Offsets[node + 1] - elementMap->Offsets[node];
}
inline LgIndex_t ElementMapGetItem(const ElementMap_s *elementMap, LgIndex_t position) {
    return elementMap->SubLists[position >> ElementMapSubListShift][position & ElementMapSubListFilter];
}
inline LgIndex_t ElementMapGetElement(const ElementMap_s *elementMap, LgIndex_t node, LgIndex_t index) {
    return ElementMapGetItem(elementMap, elementMap->Offsets[node] + index);
}
