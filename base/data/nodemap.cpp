#include "base/data/nodemap.h"

#include <algorithm>
#include <cstring>

#include "base/data/dataset.h"
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

// ---- the zone's map -------------------------------------------------------------------------

NodeMap_a GetNodeMapPtr(const DataSet_s *dataSet, EntIndex_t zone) { return GetZoneData(dataSet, zone)->NodeMap; }

void SetNodeMapPtr(DataSet_s *dataSet, EntIndex_t zone, NodeMap_a nodeMap) {
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    if (zoneData->NodeMap == nodeMap) return;
    DeallocNodeMapPtr(&zoneData->NodeMap);
    zoneData->NodeMap = nodeMap;
}

void UnsetNodeMapPtr(DataSet_s *dataSet, EntIndex_t zone) { DeallocNodeMapPtr(&GetZoneData(dataSet, zone)->NodeMap); }

// ---- element shape --------------------------------------------------------------------------

namespace {

// Corners of each face; faces of fewer than four nodes repeat their first corner.
constexpr int8_t BrickFaces[6][4] = {{0, 3, 7, 4}, {1, 2, 6, 5}, {0, 1, 5, 4}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}};
constexpr int8_t TetraFaces[4][4] = {{0, 1, 2, 0}, {0, 1, 3, 0}, {0, 2, 3, 0}, {1, 2, 3, 1}};

CollapsedStatus_e twoNodeStatus(LgIndex_t a, LgIndex_t b) {
    return a == b ? CollapsedStatus_CollapsedToPoint : CollapsedStatus_NotCollapsed;
}

CollapsedStatus_e threeNodeStatus(LgIndex_t a, LgIndex_t b, LgIndex_t c) {
    int equalPairs = (a == b) + (b == c) + (c == a);
    if (equalPairs == 0) return CollapsedStatus_NotCollapsed;
    return equalPairs == 3 ? CollapsedStatus_CollapsedToPoint : CollapsedStatus_CollapsedToLine;
}

// Counting equal neighbours round the face decides it: three equal adjacent pairs cannot happen
// without the fourth, two leave a line (a a b b, or a a a b), one leaves a triangle; with none,
// equal diagonal corners fold the face onto a line through them.
CollapsedStatus_e fourNodeStatus(LgIndex_t a, LgIndex_t b, LgIndex_t c, LgIndex_t d) {
    int equalAdjacent = (a == b) + (b == c) + (c == d) + (d == a);
    switch (equalAdjacent) {
    case 0: return (a == c || b == d) ? CollapsedStatus_CollapsedToSegmentedLine : CollapsedStatus_NotCollapsed;
    case 1: return CollapsedStatus_CollapsedToTriangle;
    case 2: return CollapsedStatus_CollapsedToLine;
    case 4: return CollapsedStatus_CollapsedToPoint;
    default: return CollapsedStatus_Invalid;
    }
}

int distinctNodeCount(NodeMap_a nodeMap, LgIndex_t element) {
    const LgIndex_t *nodes = nodeMap->Nodes + int64_t(element) * nodeMap->NodesPerElement;
    int count = 0;
    for (int c = 0; c < nodeMap->NodesPerElement; c++) {
        bool seen = false;
        for (int p = 0; p < c && !seen; p++) seen = nodes[p] == nodes[c];
        count += !seen;
    }
    return count;
}

}  // namespace

int GetFacesPerElement(ZoneType_e zoneType, LgIndex_t i, LgIndex_t j, LgIndex_t k) {
    switch (zoneType) {
    case ZoneType_Ordered: {
        int ones = (i == 1) + (j == 1) + (k == 1);
        return ones == 0 ? 6 : ones == 1 ? 4 : ones == 2 ? 1 : 0;
    }
    case ZoneType_FETriangle: return 3;
    case ZoneType_FEQuad: return 4;
    case ZoneType_FETetra: return 4;
    case ZoneType_FEBrick: return 6;
    case ZoneType_FELineSeg: return 1;
    }
    return 0;
}

int GetNodesPerElementFace(ZoneType_e zoneType) {
    switch (zoneType) {
    case ZoneType_FETriangle:
    case ZoneType_FEQuad:
    case ZoneType_FELineSeg: return 2;
    case ZoneType_FETetra: return 3;
    case ZoneType_FEBrick: return 4;
    default: return 0;
    }
}

void GetFEFaceNodeOrdering(ZoneType_e zoneType, int face, int *n0, int *n1, int *n2, int *n3) {
    REQUIRE(ZoneTypeIsFE(zoneType) && face >= 0 && face < GetFacesPerElement(zoneType, 0, 0, 0));
    static constexpr int8_t triangle[4] = {0, 1, 2, 0}, quad[4] = {0, 1, 2, 3}, lineSeg[4] = {0, 1, 0, 0};
    const int8_t *corners = lineSeg;
    switch (zoneType) {
    case ZoneType_FETriangle: corners = triangle; break;
    case ZoneType_FEQuad: corners = quad; break;
    case ZoneType_FETetra: corners = TetraFaces[face]; break;
    case ZoneType_FEBrick: corners = BrickFaces[face]; break;
    default: break;
    }
    *n0 = corners[0];
    *n1 = corners[1];
    *n2 = corners[2];
    *n3 = corners[3];
}

void GetFEFaceNodes(NodeMap_a nodeMap, LgIndex_t element, int face, LgIndex_t *n0, LgIndex_t *n1, LgIndex_t *n2,
                    LgIndex_t *n3) {
    int c0, c1, c2, c3;
    GetFEFaceNodeOrdering(nodeMap->ZoneType, face, &c0, &c1, &c2, &c3);
    *n0 = NodeMapGetNode(nodeMap, element, c0);
    *n1 = NodeMapGetNode(nodeMap, element, c1);
    *n2 = NodeMapGetNode(nodeMap, element, c2);
    *n3 = NodeMapGetNode(nodeMap, element, c3);
}

void GetFEEdgeNodes(NodeMap_a nodeMap, LgIndex_t element, int face, int edge, LgIndex_t *a, LgIndex_t *b) {
    int first, second;
    switch (nodeMap->ZoneType) {
    case ZoneType_FETriangle:
    case ZoneType_FEQuad:
        first = face;
        second = (face + 1) % nodeMap->NodesPerElement;
        break;
    case ZoneType_FELineSeg:
        first = edge;
        second = (edge + 1) % 2;
        break;
    default: {
        const int8_t *corners = nodeMap->ZoneType == ZoneType_FETetra ? TetraFaces[face] : BrickFaces[face];
        int nodesPerFace = GetNodesPerElementFace(nodeMap->ZoneType);
        REQUIRE(edge >= 0 && edge < nodesPerFace);
        first = corners[edge];
        second = corners[(edge + 1) % nodesPerFace];
    }
    }
    *a = NodeMapGetNode(nodeMap, element, first);
    *b = NodeMapGetNode(nodeMap, element, second);
}

CollapsedStatus_e GetSurfaceCellLogicalCollapsedStatus(ZoneType_e zoneType, LgIndex_t n0, LgIndex_t n1, LgIndex_t n2,
                                                       LgIndex_t n3) {
    switch (zoneType) {
    case ZoneType_FELineSeg: return twoNodeStatus(n0, n1);
    case ZoneType_FETriangle:
    case ZoneType_FETetra: return threeNodeStatus(n0, n1, n2);
    default: return fourNodeStatus(n0, n1, n2, n3);
    }
}

CollapsedStatus_e GetSurfEdgeOrVolFaceLogicalCollapsedStatus(NodeMap_a nodeMap, LgIndex_t element, int face) {
    LgIndex_t n0, n1, n2, n3;
    switch (nodeMap->ZoneType) {
    case ZoneType_FETriangle:
    case ZoneType_FEQuad:
    case ZoneType_FELineSeg:
        GetFEEdgeNodes(nodeMap, element, face, 0, &n0, &n1);
        return twoNodeStatus(n0, n1);
    case ZoneType_FETetra:
        GetFEFaceNodes(nodeMap, element, face, &n0, &n1, &n2, &n3);
        return threeNodeStatus(n0, n1, n2);
    default:
        GetFEFaceNodes(nodeMap, element, face, &n0, &n1, &n2, &n3);
        return fourNodeStatus(n0, n1, n2, n3);
    }
}

bool IsFEElementLogicallyCollapsed(NodeMap_a nodeMap, LgIndex_t element) {
    switch (nodeMap->ZoneType) {
    case ZoneType_FELineSeg: return distinctNodeCount(nodeMap, element) < 2;
    case ZoneType_FETriangle:
    case ZoneType_FEQuad: return distinctNodeCount(nodeMap, element) < 3;
    case ZoneType_FETetra: return distinctNodeCount(nodeMap, element) < 4;
    default: {
        // Four nodes are not enough on their own: a brick whose top is its bottom has four
        // distinct nodes and no volume. A solid keeps at least four faces with area.
        int facesWithArea = 0;
        for (int face = 0; face < 6; face++) {
            CollapsedStatus_e status = GetSurfEdgeOrVolFaceLogicalCollapsedStatus(nodeMap, element, face);
            facesWithArea += status == CollapsedStatus_NotCollapsed || status == CollapsedStatus_CollapsedToTriangle;
        }
        return facesWithArea < 4;
    }
    }
}

// ---- element map ----------------------------------------------------------------------------

namespace {

void clearElementMap(ElementMap_s *elementMap) {
    for (LgIndex_t s = 0; s < elementMap->NumSubLists; s++) newfree(elementMap->SubLists[s]);
    newfree(elementMap->SubLists);
    newfree(elementMap->Offsets);
    *elementMap = ElementMap_s{};
}

// Newmalloc'd space for count values, freed on leaving unless released.
struct IndexBuffer {
    explicit IndexBuffer(size_t count) : data(static_cast<LgIndex_t *>(newmalloc(count * sizeof(LgIndex_t)))) {}
    ~IndexBuffer() { newfree(data); }
    IndexBuffer(const IndexBuffer &) = delete;
    IndexBuffer &operator=(const IndexBuffer &) = delete;
    LgIndex_t *release() {
        LgIndex_t *result = data;
        data = nullptr;
        return result;
    }
    LgIndex_t *data;
};

}  // namespace

ElementMap_s *AllocElementMapPtr(bool showErr) {
    auto *elementMap = static_cast<ElementMap_s *>(newmalloc(sizeof(ElementMap_s)));
    if (elementMap == nullptr) {
        if (showErr) OutOfMemoryMsg();
        return nullptr;
    }
    *elementMap = ElementMap_s{};
    return elementMap;
}

void DeallocElementMapPtr(ElementMap_s **elementMap) {
    if (*elementMap == nullptr) return;
    clearElementMap(*elementMap);
    newfree(*elementMap);
    *elementMap = nullptr;
}

bool ElementMapItemDestructor(void *itemRef, ArbParam_t) {
    DeallocElementMapPtr(static_cast<ElementMap_s **>(itemRef));
    return true;
}

bool UpdateElementMap(ElementMap_s *elementMap, NodeMap_a nodeMap) {
    clearElementMap(elementMap);
    const int nodesPerElement = nodeMap->NodesPerElement;
    const int64_t numValues = int64_t(nodeMap->NumElements) * nodesPerElement;
    const LgIndex_t *nodes = nodeMap->Nodes;
    LgIndex_t maxNode = -1;
    for (int64_t n = 0; n < numValues; n++) maxNode = std::max(maxNode, nodes[n]);
    const LgIndex_t numNodes = maxNode + 1;

    // An element counts once under a node it repeats; negative node numbers name no node.
    auto isFirstUse = [&](const LgIndex_t *element, int corner) {
        if (element[corner] < 0) return false;
        for (int p = 0; p < corner; p++)
            if (element[p] == element[corner]) return false;
        return true;
    };
    IndexBuffer offsets(size_t(numNodes) + 1);
    IndexBuffer cursors(size_t(numNodes) + 1);
    if (offsets.data == nullptr || cursors.data == nullptr) return false;
    std::fill(cursors.data, cursors.data + numNodes + 1, 0);
    for (LgIndex_t e = 0; e < nodeMap->NumElements; e++) {
        const LgIndex_t *element = nodes + int64_t(e) * nodesPerElement;
        for (int c = 0; c < nodesPerElement; c++)
            if (isFirstUse(element, c)) cursors.data[element[c]]++;
    }
    LgIndex_t numEntries = 0;
    for (LgIndex_t n = 0; n < numNodes; n++) {
        offsets.data[n] = numEntries;
        numEntries += cursors.data[n];
        cursors.data[n] = offsets.data[n];
    }
    offsets.data[numNodes] = numEntries;

    LgIndex_t numSubLists = (numEntries + ElementMapSubListMaxSize - 1) / ElementMapSubListMaxSize;
    auto **subLists = static_cast<LgIndex_t **>(newmalloc(sizeof(LgIndex_t *) * size_t(std::max(numSubLists, 1))));
    if (subLists == nullptr) return false;
    for (LgIndex_t s = 0; s < numSubLists; s++) {
        LgIndex_t size = std::min(ElementMapSubListMaxSize, numEntries - s * ElementMapSubListMaxSize);
        subLists[s] = static_cast<LgIndex_t *>(newmalloc(size_t(size) * sizeof(LgIndex_t)));
        if (subLists[s] == nullptr) {
            for (LgIndex_t t = 0; t < s; t++) newfree(subLists[t]);
            newfree(subLists);
            return false;
        }
    }
    // Each node's cursor walks its own range, so elements stand in ascending order.
    for (LgIndex_t e = 0; e < nodeMap->NumElements; e++) {
        const LgIndex_t *element = nodes + int64_t(e) * nodesPerElement;
        for (int c = 0; c < nodesPerElement; c++) {
            if (!isFirstUse(element, c)) continue;
            LgIndex_t position = cursors.data[element[c]]++;
            subLists[position >> ElementMapSubListShift][position & ElementMapSubListFilter] = e;
        }
    }
    elementMap->NumNodes = numNodes;
    elementMap->Offsets = offsets.release();
    elementMap->NumEntries = numEntries;
    elementMap->NumSubLists = numSubLists;
    elementMap->SubLists = subLists;
    return true;
}
