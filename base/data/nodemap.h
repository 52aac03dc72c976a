// FE connectivity: the node map of a zone, shared between zones by reference count, and the
// element shape tables.
#pragma once

#include <cstdint>

#include "base/data/zonespec.h"
#include "base/kernel/types.h"

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
