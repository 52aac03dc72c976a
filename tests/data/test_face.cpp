// Connectivity and face neighbours: shape tables and collapsed status, the element map, ordered
// neighbours, the search on small meshes worked out by hand, the same array from one and from
// four workers on a block of tetrahedra, user-defined neighbours (placement, queries, every
// message) and their renumbering after a zone is deleted or inserted.
#include <gtest/gtest.h>

#include <vector>

#include "base/data/dataset.h"
#include "base/data/face.h"
#include "base/kernel/genbase.h"
#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"
#include "data/data_fixture.h"

namespace {

using Nodes = std::vector<LgIndex_t>;

// A node map and its face neighbours, made without a data set.
struct Mesh {
    Mesh(ZoneType_e type, const Nodes &nodes) {
        ZoneSpec_s spec;
        spec.Type = type;
        spec.NumPtsK = GetNodesPerElement(type);
        spec.NumPtsJ = LgIndex_t(nodes.size()) / spec.NumPtsK;
        spec.NumPtsI = 1000;
        nodeMap = AllocNodeMapPtr(spec.NumPtsJ, type, false);
        std::copy(nodes.begin(), nodes.end(), nodeMap->Nodes);
        faceNeighbor = FaceNeighborAlloc(&spec, false);
    }
    ~Mesh() {
        DeallocNodeMapPtr(&nodeMap);
        FaceNeighborDealloc(&faceNeighbor);
    }
    Nodes update() {
        EXPECT_TRUE(UpdateFaceNeighbor(false, faceNeighbor, nodeMap, "test"));
        return Nodes(faceNeighbor->AutoGen->Neighbors, faceNeighbor->AutoGen->Neighbors + faceNeighbor->AutoGen->NumFaces);
    }
    NodeMap_a nodeMap;
    FaceNeighbor_a faceNeighbor;
};

// A block of nx x ny x nz unit cubes, each cut into five tetrahedra: the four corners of even
// parity (counted over the whole block) form the middle one, and each odd corner with its three
// neighbours a corner one. Every cube face is then cut along the diagonal between its even
// corners, from both sides alike, so the block's surface has 4 (nx ny + ny nz + nz nx) triangles.
Nodes tetBlock(int nx, int ny, int nz) {
    Nodes nodes;
    for (int k = 0; k < nz; k++)
        for (int j = 0; j < ny; j++)
            for (int i = 0; i < nx; i++) {
                LgIndex_t corner[8];
                for (int d = 0; d < 8; d++)
                    corner[d] = (i + (d & 1)) + (nx + 1) * ((j + ((d >> 1) & 1)) + (ny + 1) * (k + (d >> 2)));
                auto isOdd = [&](int d) { return ((i + j + k + __builtin_popcount(d)) & 1) != 0; };
                for (int d = 0; d < 8; d++)
                    if (isOdd(d)) nodes.insert(nodes.end(), {corner[d], corner[d ^ 1], corner[d ^ 2], corner[d ^ 4]});
                for (int d = 0; d < 8; d++)
                    if (!isOdd(d)) nodes.push_back(corner[d]);
            }
    return nodes;
}

}  // namespace

TEST(FaceShape, TablesCollapsedStatusAndElementMap) {
    EXPECT_EQ(GetFacesPerElement(ZoneType_Ordered, 3, 3, 3), 6);
    EXPECT_EQ(GetFacesPerElement(ZoneType_Ordered, 3, 3, 1), 4);
    EXPECT_EQ(GetFacesPerElement(ZoneType_Ordered, 3, 1, 1), 1);
    EXPECT_EQ(GetFacesPerElement(ZoneType_Ordered, 1, 1, 1), 0);
    EXPECT_EQ(GetFacesPerElement(ZoneType_FEBrick, 0, 0, 0), 6);
    EXPECT_EQ(GetFacesPerElement(ZoneType_FETriangle, 0, 0, 0), 3);
    EXPECT_EQ(GetNodesPerElementFace(ZoneType_FETetra), 3);
    int c[4];
    GetFEFaceNodeOrdering(ZoneType_FEBrick, 3, &c[0], &c[1], &c[2], &c[3]);
    EXPECT_EQ(std::vector<int>(c, c + 4), (std::vector<int>{3, 2, 6, 7}));
    GetFEFaceNodeOrdering(ZoneType_FETetra, 3, &c[0], &c[1], &c[2], &c[3]);
    EXPECT_EQ(std::vector<int>(c, c + 4), (std::vector<int>{1, 2, 3, 1}));  // the first repeated

    struct StatusCase {
        ZoneType_e type;
        LgIndex_t n0, n1, n2, n3;
        CollapsedStatus_e status;
    } statusCases[] = {
        {ZoneType_FEQuad, 1, 2, 3, 4, CollapsedStatus_NotCollapsed},
        {ZoneType_FEQuad, 5, 5, 5, 5, CollapsedStatus_CollapsedToPoint},
        {ZoneType_FEQuad, 1, 1, 2, 2, CollapsedStatus_CollapsedToLine},
        {ZoneType_FEBrick, 1, 2, 1, 3, CollapsedStatus_CollapsedToSegmentedLine},
        {ZoneType_FEBrick, 1, 2, 3, 3, CollapsedStatus_CollapsedToTriangle},
        {ZoneType_FETetra, 1, 2, 1, 0, CollapsedStatus_CollapsedToLine},
        {ZoneType_FETriangle, 3, 3, 3, 0, CollapsedStatus_CollapsedToPoint},
        {ZoneType_FELineSeg, 4, 4, 0, 0, CollapsedStatus_CollapsedToPoint},
        {ZoneType_FELineSeg, 4, 5, 0, 0, CollapsedStatus_NotCollapsed},
    };
    for (const StatusCase &s : statusCases)
        EXPECT_EQ(GetSurfaceCellLogicalCollapsedStatus(s.type, s.n0, s.n1, s.n2, s.n3), s.status) << s.n0 << s.n1 << s.n2;

    // A prism keeps five faces with area; a brick whose top is its bottom keeps two.
    Mesh bricks(ZoneType_FEBrick, {0, 1, 2, 2, 4, 5, 6, 6, 0, 1, 2, 3, 0, 1, 2, 3});
    EXPECT_FALSE(IsFEElementLogicallyCollapsed(bricks.nodeMap, 0));
    EXPECT_TRUE(IsFEElementLogicallyCollapsed(bricks.nodeMap, 1));
    EXPECT_EQ(GetSurfEdgeOrVolFaceLogicalCollapsedStatus(bricks.nodeMap, 0, 3), CollapsedStatus_CollapsedToLine);
    // A quadrilateral with one repeated node is a triangle; with three, a line.
    Mesh quads(ZoneType_FEQuad, {0, 1, 2, 2, 1, 3, 4, 2, 0, 1, 1, 1});
    EXPECT_FALSE(IsFEElementLogicallyCollapsed(quads.nodeMap, 0));
    EXPECT_TRUE(IsFEElementLogicallyCollapsed(quads.nodeMap, 2));
    LgIndex_t a, b;
    GetFEEdgeNodes(quads.nodeMap, 1, 3, 0, &a, &b);  // edge 3 closes the element: node 3 to node 0
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(2, 1));
    Mesh tetra(ZoneType_FETetra, {10, 11, 12, 13});
    GetFEEdgeNodes(tetra.nodeMap, 0, 3, 2, &a, &b);  // face 3 is corners 1 2 3; its edge 2 runs 3 to 1
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(13, 11));

    // Element map: element 0 repeats node 2 and is listed there once; element 2 repeats node 1.
    ElementMap_s *elementMap = AllocElementMapPtr(false);
    ASSERT_TRUE(UpdateElementMap(elementMap, quads.nodeMap));
    EXPECT_EQ(elementMap->NumNodes, 5);
    EXPECT_EQ(elementMap->NumEntries, 3 + 4 + 2);
    std::vector<Nodes> expected = {{0, 2}, {0, 1, 2}, {0, 1}, {1}, {1}};
    for (LgIndex_t node = 0; node < 5; node++) {
        Nodes listed;
        for (LgIndex_t n = 0; n < ElementMapGetNumElements(elementMap, node); n++)
            listed.push_back(ElementMapGetElement(elementMap, node, n));
        EXPECT_EQ(listed, expected[size_t(node)]) << "node " << node;
    }
    DeallocElementMapPtr(&elementMap);
    EXPECT_EQ(elementMap, nullptr);
}

TEST(FaceOrdered, LogicalNeighboursAndQueries) {
    struct Case {
        LgIndex_t i, j, k, element;
        int face;
        LgIndex_t neighbour;
    } cases[] = {
        {3, 3, 1, 1, 1, -1},  // I-high end of a 3 x 3 zone: the slot at i = 2 is a ghost
        {3, 3, 1, 0, 1, 1},  {3, 3, 1, 0, 2, 3}, {3, 3, 1, 3, 0, 0}, {3, 3, 1, 0, 3, -1},
        {3, 3, 3, 0, 5, 9},  {3, 3, 3, 0, 3, 3}, {3, 3, 3, 13, 0, 12}, {3, 3, 3, 13, 1, -1},
        {1, 3, 4, 0, 1, 3},  // JK zone: P is k, so P+1 is cell (0, 0, 1) = 3
        {1, 3, 4, 0, 2, 1},  // Q is j
        {4, 1, 3, 0, 2, 4},  // IK zone: Q is k, so Q+1 is cell (0, 0, 1) = 4
    };
    for (const Case &c : cases)
        EXPECT_EQ(GetLogicalOrderedNeighbor(c.i, c.j, c.k, c.element, c.face), c.neighbour)
            << c.i << "x" << c.j << "x" << c.k << " element " << c.element << " face " << c.face;

    ZoneSpec_s spec;
    spec.NumPtsI = spec.NumPtsJ = 3;
    spec.NumPtsK = 1;
    FaceNeighbor_a faceNeighbor = FaceNeighborAlloc(&spec, false);
    ASSERT_NE(faceNeighbor, nullptr);
    EXPECT_TRUE(IsValidFaceNeighbor(faceNeighbor));
    EXPECT_EQ(FaceNeighborGetNumElements(faceNeighbor), 9);
    bool isUserDefined = true;
    EXPECT_EQ(FaceNeighborGetNumNeighbors(faceNeighbor, 1, 1, &isUserDefined), 0);
    EXPECT_FALSE(isUserDefined);
    LgIndex_t neighbour = -5;
    EXPECT_TRUE(HasOnlyOneLocalFaceNeighbor(faceNeighbor, 0, 2, &neighbour));
    EXPECT_EQ(neighbour, 3);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(faceNeighbor, 0, 2, nullptr), FaceObscuration_EntirelyObscuredLocal);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(faceNeighbor, 1, 1, nullptr), FaceObscuration_NotObscured);
    FaceNeighborDealloc(&faceNeighbor);

    spec.NumPtsI = MAXINDEX / 8 + 1;  // 536870912 slots: one too many for four faces each
    spec.NumPtsJ = 2;
    EXPECT_EQ(FaceNeighborAlloc(&spec, false), nullptr);
}

TEST(FaceNeighbors, SmallMeshesWorkedByHand) {
    struct Case {
        const char *name;
        ZoneType_e type;
        Nodes nodes, neighbours;
        LgIndex_t numBoundary, numCollapsed;
    } cases[] = {
        // Edge 1-2 runs 1 to 2 in the first triangle and 2 to 1 in the second.
        {"triangles", ZoneType_FETriangle, {0, 1, 2, 2, 1, 3}, {-1, 1, -1, 0, -1, -1}, 4, 0},
        // Edge 1-2 runs 1 to 2 in both quadrilaterals.
        {"quads", ZoneType_FEQuad, {0, 1, 2, 3, 4, 1, 2, 5}, {-1, 1, -1, -1, -1, 0, -1, -1}, 6, 0},
        // Face 1 2 3 is face 3 of the first, face 0 of the second.
        {"tetrahedra", ZoneType_FETetra, {0, 1, 2, 3, 1, 2, 3, 4}, {-1, -1, -1, 1, 0, -1, -1, -1}, 6, 0},
        // A tetrahedron's surface: every edge is shared, no boundary.
        {"closed surface", ZoneType_FETriangle, {0, 2, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2}, {3, 2, 1, 0, 2, 3, 0, 3, 1, 1, 2, 0}, 0, 0},
        // Two prisms as bricks, stacked on their triangles (face 5 of one, face 4 of the other);
        // face 3 of each (2 2 6 6) has collapsed to a line and is no boundary.
        {"prisms", ZoneType_FEBrick, {0, 1, 2, 2, 4, 5, 6, 6, 4, 5, 6, 6, 8, 9, 10, 10},
         {-1, -1, -1, -1, -1, 1, -1, -1, -1, -1, 0, -1}, 8, 2},
        // A quadrilateral collapsed to a triangle (edge 2 is the point 2) beside a whole one.
        {"collapsed quad", ZoneType_FEQuad, {0, 1, 2, 2, 1, 3, 4, 2}, {-1, 1, -1, -1, -1, -1, -1, 0}, 5, 1},
    };
    for (const Case &c : cases) {
        Mesh mesh(c.type, c.nodes);
        EXPECT_EQ(mesh.update(), c.neighbours) << c.name;
        EXPECT_EQ(mesh.faceNeighbor->AutoGen->NumBoundaryFaces, c.numBoundary) << c.name;
        EXPECT_EQ(mesh.faceNeighbor->AutoGen->NumCollapsedFaces, c.numCollapsed) << c.name;
        EXPECT_TRUE(IsValidFaceNeighbor(mesh.faceNeighbor));
        EXPECT_EQ(mesh.update(), c.neighbours) << c.name << ", second run";
    }
}

class FaceThreadsTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (!Thread_ThreadingIsInitialized()) ownsThreads = Thread_Init();
        if (MainlineJobPool == nullptr) ownsPoolSystem = ThreadPoolInit();
    }
    static void TearDownTestSuite() {
        if (ownsPoolSystem) ThreadPoolCleanup();
        if (ownsThreads) Thread_Cleanup();
        ownsThreads = ownsPoolSystem = false;
    }
    void SetUp() override {
        savedPool = StandardThreadPool;
        savedProcessors = GeneralBase.MaxAvailableProcessors;
    }
    void TearDown() override {
        if (StandardThreadPool != savedPool) ThreadPoolFree(&StandardThreadPool);
        StandardThreadPool = savedPool;
        GeneralBase.MaxAvailableProcessors = savedProcessors;
    }
    Nodes updateWith(int workers, Mesh &mesh) {
        if (StandardThreadPool != savedPool) ThreadPoolFree(&StandardThreadPool);
        StandardThreadPool = ThreadPoolCreate();
        for (int w = 0; w < workers; w++) EXPECT_TRUE(ThreadPoolCreateThread(StandardThreadPool));
        GeneralBase.MaxAvailableProcessors = workers;
        InvalidateFaceNeighbor(mesh.faceNeighbor);
        return mesh.update();
    }
    static inline bool ownsThreads = false, ownsPoolSystem = false;
    ThreadPool_s *savedPool = nullptr;
    int savedProcessors = 0;
};

TEST_F(FaceThreadsTest, OneAndFourWorkersGiveTheSamePairs) {
    const int nx = 10, ny = 8, nz = 6;  // 2400 tetrahedra: 16 jobs of 150 with four processors
    Mesh mesh(ZoneType_FETetra, tetBlock(nx, ny, nz));
    Nodes one = updateWith(1, mesh);
    Nodes four = updateWith(4, mesh);
    EXPECT_EQ(one, four);
    EXPECT_EQ(mesh.faceNeighbor->AutoGen->NumBoundaryFaces, 4 * (nx * ny + ny * nz + nz * nx));
    // Every pair stands from both sides.
    LgIndex_t numAtMinusOne = 0;
    for (size_t index = 0; index < four.size(); index++) {
        LgIndex_t other = four[index];
        if (other == -1) {
            numAtMinusOne++;
            continue;
        }
        LgIndex_t element = LgIndex_t(index / 4);
        bool pointsBack = false;
        for (int face = 0; face < 4; face++) pointsBack = pointsBack || four[size_t(other) * 4 + face] == element;
        EXPECT_TRUE(pointsBack) << "face index " << index;
    }
    EXPECT_EQ(numAtMinusOne, 4 * (nx * ny + ny * nz + nz * nx));
}

// ---- user-defined neighbours --------------------------------------------------------------------

class FaceUserDefTest : public DataSetTest {
  protected:
    // numZones FE quadrilateral zones of two elements sharing edge 1-2, the first in the given mode.
    void makeZones(int numZones, FaceNeighborMode_e mode) {
        FaceNeighborInstallHooks();
        makeDataSet(1, 0);
        for (int z = 0; z < numZones; z++) {
            ZoneSpec_s spec;
            spec.Type = ZoneType_FEQuad;
            spec.NumPtsI = 6;
            spec.NumPtsJ = 2;
            spec.NumPtsK = 4;
            spec.FNMode = z == 0 ? mode : FaceNeighborMode_LocalOneToOne;
            ASSERT_TRUE(AddZone(&spec, nullptr, nullptr, EntIndex_t(z), nullptr, nullptr, -1, false));
            NodeMap_a nodeMap = GetZoneData(dataSet(), EntIndex_t(z))->NodeMap;
            std::copy_n(Nodes{0, 1, 2, 3, 1, 4, 5, 2}.begin(), 8, nodeMap->Nodes);
        }
    }
    FaceNeighbor_a fn(EntIndex_t zone = 0) { return GetZoneData(dataSet(), zone)->FN; }
    ZoneSpec_s *spec(EntIndex_t zone = 0) { return GetZoneSpec(dataSet(), zone); }
    Nodes userElements() { return Nodes(fn()->UserDef->Elements, fn()->UserDef->Elements + fn()->UserDef->NumNeighbors); }
    std::vector<int> userZones() {
        return std::vector<int>(fn()->UserDef->Zones, fn()->UserDef->Zones + fn()->UserDef->NumNeighbors);
    }
};

TEST_F(FaceUserDefTest, PlacementQueriesAndCopy) {
    makeZones(3, FaceNeighborMode_GlobalOneToMany);
    spec()->AutoAssignFN = false;  // the user's list is complete: valid without a search
    FaceNeighborAssignContext_s *context = FaceNeighborUserDefBeginAssign(dataSet(), 0);
    ASSERT_NE(context, nullptr);
    const LgIndex_t one[] = {1}, twoElements[] = {0, 1}, zero[] = {0}, boundary[] = {-1};
    const EntIndex_t here[] = {-1}, zones12[] = {1, 2}, zone2[] = {2};
    EXPECT_TRUE(FaceNeighborUserDefAssign(context, 0, 1, true, 1, one, here));          // into AutoGen
    EXPECT_TRUE(FaceNeighborUserDefAssign(context, 1, 2, true, 2, twoElements, zones12)); // face index 6
    EXPECT_TRUE(FaceNeighborUserDefAssign(context, 0, 3, false, 1, zero, zone2));       // 3: before 6
    EXPECT_TRUE(FaceNeighborUserDefAssign(context, 0, 0, true, 1, boundary, here));     // 0: boundary
    EXPECT_TRUE(IsFaceNeighborAssignContextOk(context));
    ASSERT_TRUE(FaceNeighborUserDefEndAssign(&context));
    EXPECT_EQ(context, nullptr);

    FaceNeighborUserDef_s *userDef = fn()->UserDef;
    ASSERT_NE(userDef, nullptr);
    EXPECT_EQ(fn()->AutoGen->Neighbors[1], 1);
    EXPECT_EQ(Nodes(userDef->Offsets, userDef->Offsets + 9), (Nodes{0, 1, 1, 1, 2, 2, 2, 4, 4}));
    EXPECT_EQ(userElements(), (Nodes{-1, 0, 0, 1}));
    EXPECT_EQ(userZones(), (std::vector<int>{-1, 2, 1, 2}));
    EXPECT_EQ(userDef->NumFreeAssignments, 2);  // the boundary and the face that doesn't obscure
    EXPECT_EQ(spec()->FNNumBndryConns, 4);
    ASSERT_NE(userDef->ObscuringFaces, nullptr);
    EXPECT_FALSE(InSet(userDef->ObscuringFaces, 3));
    EXPECT_TRUE(InSet(userDef->ObscuringFaces, 6));
    ASSERT_NE(userDef->BoundaryEntries, nullptr);
    EXPECT_EQ(MemberCount(userDef->BoundaryEntries), 1);
    EXPECT_TRUE(InSet(userDef->BoundaryEntries, 0));
    // Valid at once: eight faces, one set in AutoGen, three with user entries.
    EXPECT_TRUE(IsValidFaceNeighbor(fn()));
    EXPECT_EQ(fn()->AutoGen->NumBoundaryFaces, 4);

    bool isUserDefined = false;
    EXPECT_EQ(FaceNeighborGetNumNeighbors(fn(), 1, 2, &isUserDefined), 2);
    EXPECT_TRUE(isUserDefined);
    LgIndex_t element;
    EntIndex_t zone;
    FaceNeighborGetNeighbor(fn(), 1, 2, 1, &element, &zone);
    EXPECT_EQ(std::make_pair(element, int(zone)), std::make_pair(1, 2));
    EXPECT_EQ(FaceNeighborGetNumNeighbors(fn(), 0, 0, &isUserDefined), 0);  // explicit boundary
    EXPECT_TRUE(HasOnlyOneLocalFaceNeighbor(fn(), 0, 1, &element));
    EXPECT_EQ(element, 1);
    EXPECT_FALSE(HasOnlyOneLocalFaceNeighbor(fn(), 0, 3, &element));  // its one neighbour is in zone 2

    Set_a *active = AllocSet(false);
    AddToSet(active, 1, false);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 0, 1, active), FaceObscuration_EntirelyObscuredLocal);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 1, 2, nullptr), FaceObscuration_NotObscured);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 1, 2, active), FaceObscuration_PartiallyObscured);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 0, 3, active), FaceObscuration_NotObscured);
    AddToSet(active, 2, false);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 1, 2, active), FaceObscuration_EntirelyObscured);
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 0, 3, active), FaceObscuration_PartiallyObscured);  // not obscuring
    EXPECT_EQ(FaceNeighborGetFaceObscuration(fn(), 0, 0, active), FaceObscuration_NotObscured);
    DeallocSet(&active);

    FaceNeighbor_a copy = FaceNeighborCopy(fn(), false);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->UserDef->Elements, userDef->Elements);
    EXPECT_EQ(Nodes(copy->UserDef->Elements, copy->UserDef->Elements + 4), userElements());
    EXPECT_EQ(copy->AutoGen->Neighbors[1], 1);
    EXPECT_TRUE(InSet(copy->UserDef->BoundaryEntries, 0));
    FaceNeighborDealloc(&copy);
}

TEST_F(FaceUserDefTest, EveryAssignmentAndCheckMessage) {
    makeZones(3, FaceNeighborMode_GlobalOneToMany);
    addZone(3, 3, 1, "ordered");  // zone 3: cells 0, 1, 3, 4; slot 2 is a ghost
    const LgIndex_t zero[] = {0}, boundary[] = {-1};
    const EntIndex_t zone1[] = {1}, self[] = {0};
    struct Case {
        EntIndex_t zone;
        LgIndex_t element;
        int face;
        LgIndex_t count;
        const LgIndex_t *elements;
        const EntIndex_t *zones;
        const char *message;
    } cases[] = {
        {0, 2, 0, 1, zero, zone1, "Element number is not valid for the zone dimensions."},
        {3, 2, 0, 1, zero, nullptr, "Element number is not valid for the zone dimensions."},
        {0, 0, 4, 1, zero, zone1, "Face number is not valid for the zone type."},
        {0, 0, 0, 1, boundary, zone1, "User defined face neighbors cannot specify boundary faces."},
        {0, 0, 0, 1, zero, self, "Cannot specify the current zone for global user defined face neighbor modes. "
                                 "Use \"0\" instead."},
        {0, 0, 0, 0, zero, zone1, "Corrupt input file: invalid face neighbors."},
        {0, 1, 3, 1, zero, zone1, "Not allowed to assign face neighbors to an element's face more than once."},
    };
    for (const Case &c : cases) {
        FaceNeighborAssignContext_s *context = FaceNeighborUserDefBeginAssign(dataSet(), c.zone);
        ASSERT_NE(context, nullptr);
        spec(c.zone)->AutoAssignFN = false;
        bool isOk = true;
        std::string messages = messagesOf([&] {
            // The face-twice case gives face 3 of element 1 once correctly first.
            if (c.element == 1) {
                EXPECT_TRUE(FaceNeighborUserDefAssign(context, 1, 3, true, 1, zero, zone1));
            }
            isOk = FaceNeighborUserDefAssign(context, c.element, c.face, true, c.count, c.elements, c.zones);
        });
        EXPECT_FALSE(isOk) << c.message;
        EXPECT_NE(Unwrapped(messages).find(c.message), std::string::npos) << messages;
        EXPECT_FALSE(IsFaceNeighborAssignContextOk(context));
        EXPECT_FALSE(FaceNeighborUserDefEndAssign(&context));
        EXPECT_EQ(fn(c.zone)->UserDef, nullptr);
        EXPECT_TRUE(spec(c.zone)->AutoAssignFN);
        EXPECT_EQ(spec(c.zone)->FNNumBndryConns, 0);
    }

    // The checks after a load, on entries the file reader could have stored; zone numbers one-based.
    const LgIndex_t two[] = {1, 0};
    const EntIndex_t zones12[] = {1, 2};
    auto assignTwo = [&] {
        FaceNeighborAssignContext_s *context = FaceNeighborUserDefBeginAssign(dataSet(), 0);
        ASSERT_TRUE(FaceNeighborUserDefAssign(context, 0, 0, true, 2, two, zones12));
        ASSERT_TRUE(FaceNeighborUserDefEndAssign(&context));
    };
    struct Corruption {
        LgIndex_t element;
        EntIndex_t zone;
        const char *message;
    } corruptions[] = {
        {-1, 2, "zone 1's user defined face neighbor tuples references a zone other than the current one for a "
                "boundary face."},
        {0, 0, "zone 1's user defined face neighbors specifies the global zone reference using the current zone "
               "number"},
        {2, 2, "zone 1's user defined face neighbor tuples references a non-existent element."},
    };
    for (const Corruption &c : corruptions) {
        assignTwo();
        fn()->UserDef->Elements[1] = c.element;
        fn()->UserDef->Zones[1] = c.zone;
        std::string messages = messagesOf([&] { EXPECT_FALSE(VerifyUserDefFNIntegrity(dataSet(), 0)); });
        EXPECT_NE(Unwrapped(messages).find(c.message), std::string::npos) << messages;
    }
    // A neighbour in a zone left out of the load is dropped; the rest pass.
    assignTwo();
    RemoveFromSet(dataSet()->EnabledZones, 2);
    EXPECT_TRUE(VerifyUserDefFNIntegrity(dataSet(), 0));
    EXPECT_EQ(userElements(), (Nodes{1}));
    EXPECT_EQ(userZones(), (std::vector<int>{1}));
    EXPECT_FALSE(InSet(fn()->UserDef->ObscuringFaces, 0));  // it lost a neighbour
    AddToSet(dataSet()->EnabledZones, 2, false);
}

TEST_F(FaceUserDefTest, ZoneNumbersFollowDeleteAndInsert) {
    makeZones(6, FaceNeighborMode_GlobalOneToMany);
    const LgIndex_t three[] = {0, 1, 0}, one[] = {1};
    const EntIndex_t zones124[] = {1, 2, 4}, zone4[] = {4};
    FaceNeighborAssignContext_s *context = FaceNeighborUserDefBeginAssign(dataSet(), 0);
    ASSERT_TRUE(FaceNeighborUserDefAssign(context, 0, 0, true, 3, three, zones124));
    ASSERT_TRUE(FaceNeighborUserDefAssign(context, 0, 2, true, 1, one, zone4));
    ASSERT_TRUE(FaceNeighborUserDefEndAssign(&context));
    EXPECT_EQ(fn()->UserDef->ObscuringFaces, nullptr);  // every face obscures

    // Zone 3 (one-based) goes: its neighbour is dropped and zone 5 becomes zone 4.
    DataSetDeleteZone(dataSet(), 2);
    EXPECT_EQ(userElements(), (Nodes{0, 0, 1}));
    EXPECT_EQ(userZones(), (std::vector<int>{1, 3, 3}));
    EXPECT_EQ(Nodes(fn()->UserDef->Offsets, fn()->UserDef->Offsets + 4), (Nodes{0, 2, 2, 3}));
    ASSERT_NE(fn()->UserDef->ObscuringFaces, nullptr);
    EXPECT_FALSE(InSet(fn()->UserDef->ObscuringFaces, 0));  // fewer neighbours than before
    EXPECT_TRUE(InSet(fn()->UserDef->ObscuringFaces, 2));
    EXPECT_EQ(spec()->FNNumBndryConns, 3);

    // A zone inserted at 2 (one-based) raises every reference at or above it.
    ASSERT_TRUE(DataSetInsertZone(dataSet(), 1));
    EXPECT_EQ(userZones(), (std::vector<int>{2, 4, 4}));
    FaceNeighborAdjustUserDefAfterZoneAdjustment(dataSet(), 0, 0);  // delta 0: nothing
    EXPECT_EQ(userZones(), (std::vector<int>{2, 4, 4}));
}
