#include "base/data/nodemap.h"

#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"

int GetNodesPerElement(ZoneType_e zoneType) {
    switch (zoneType) {
    case ZoneType_FETriangle: return 3;
    case ZoneType_FEQuad: return 4;
    case ZoneType_FETetra: return 4;
    case ZoneType_FEBrick: return 8;
    case ZoneType_FELineSeg: return 2;
    default: return 0;
    }
}

NodeMap_a AllocNodeMapPtr(LgIndex_t numElements, ZoneType_e zoneType, bool showErr) {
    REQUIRE(ZoneTypeIsFE(zoneType) && numElements >= 0);
    int nodesPerElement = GetNodesPerElement(zoneType);
    if (numElements > MAXINDEX / nodesPerElement) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    auto *nodeMap = static_cast<NodeMap_a>(newmalloc(sizeof(NodeMap_s)));
    if (nodeMap == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    nodeMap->RefCount = 1;
    nodeMap->NumElements = numElements;
    nodeMap->ZoneType = zoneType;
    nodeMap->NodesPerElement = static_cast<int16_t>(nodesPerElement);
    nodeMap->Flags[0] = nodeMap->Flags[1] = 0;
    nodeMap->Nodes = nullptr;
    if (numElements > 0) {
        size_t bytes = size_t(numElements) * size_t(nodesPerElement) * sizeof(LgIndex_t);
        nodeMap->Nodes = static_cast<LgIndex_t *>(newmalloc(bytes));
        if (nodeMap->Nodes == nullptr) {
            newfree(nodeMap);
            if (showErr) OutOfMemoryMsg();
            return nullptr;
        }
        memset(nodeMap->Nodes, 0, bytes);
    }
    return nodeMap;
}

void DeallocNodeMapPtr(NodeMap_a *nodeMap) {
    if (*nodeMap == nullptr) return;
    if (--(*nodeMap)->RefCount < 1) {
        newfree((*nodeMap)->Nodes);
        newfree(*nodeMap);
    }
    *nodeMap = nullptr;
}

void CopyNodeMap(NodeMap_a dst, NodeMap_a src) {
    REQUIRE(dst->NodesPerElement == src->NodesPerElement && dst->NumElements >= src->NumElements);
    if (src->NumElements > 0)
        memcpy(dst->Nodes, src->Nodes, size_t(src->NumElements) * size_t(src->NodesPerElement) * sizeof(LgIndex_t));
}

NodeMap_a NodeMapDuplicate(NodeMap_a src, bool showErr) {
    NodeMap_a copy = AllocNodeMapPtr(src->NumElements, src->ZoneType, showErr);
    if (copy != nullptr) {
        CopyNodeMap(copy, src);
        copy->Flags[0] = src->Flags[0];
        copy->Flags[1] = src->Flags[1];
    }
    return copy;
}
