// Face neighbour generation on 2,000,000 tetrahedra: a block of 100 x 80 x 50 unit cubes, each cut
// into five tetrahedra with shared nodes. UpdateFaceNeighbor runs with one worker and with two;
// the program prints each time in milliseconds and the boundary face count, which must be the
// same for both runs and equal the block's surface: each cube face on the surface is cut into two
// triangles, so 4 (nx ny + ny nz + nz nx) = 68,000. It also checks that both runs give the same
// array. Exit code 1 on any mismatch.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/data/face.h"
#include "base/data/nodemap.h"
#include "base/kernel/genbase.h"
#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"

namespace {

constexpr int Nx = 100, Ny = 80, Nz = 50;

// The four corners of even parity (over the whole block) make the middle tetrahedron, and each
// odd corner with its three neighbours a corner one; so both cubes beside a face cut it along
// the same diagonal.
void fillBlock(NodeMap_a nodeMap) {
    LgIndex_t *out = nodeMap->Nodes;
    for (int k = 0; k < Nz; k++)
        for (int j = 0; j < Ny; j++)
            for (int i = 0; i < Nx; i++) {
                LgIndex_t corner[8];
                for (int d = 0; d < 8; d++)
                    corner[d] = (i + (d & 1)) + (Nx + 1) * ((j + ((d >> 1) & 1)) + (Ny + 1) * (k + (d >> 2)));
                auto isOdd = [&](int d) { return ((i + j + k + __builtin_popcount(d)) & 1) != 0; };
                for (int d = 0; d < 8; d++) {
                    if (!isOdd(d)) continue;
                    *out++ = corner[d];
                    *out++ = corner[d ^ 1];
                    *out++ = corner[d ^ 2];
                    *out++ = corner[d ^ 4];
                }
                for (int d = 0; d < 8; d++)
                    if (!isOdd(d)) *out++ = corner[d];
            }
}

double msSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main() {
    if (!Thread_Init() || !ThreadPoolInit()) return 1;
    ZoneSpec_s spec;
    spec.Type = ZoneType_FETetra;
    spec.NumPtsI = (Nx + 1) * (Ny + 1) * (Nz + 1);
    spec.NumPtsJ = 5 * Nx * Ny * Nz;
    spec.NumPtsK = 4;
    NodeMap_a nodeMap = AllocNodeMapPtr(spec.NumPtsJ, spec.Type, true);
    FaceNeighbor_a faceNeighbor = FaceNeighborAlloc(&spec, true);
    if (nodeMap == nullptr || faceNeighbor == nullptr) return 1;
    fillBlock(nodeMap);
    const LgIndex_t expectedBoundary = 4 * (Nx * Ny + Ny * Nz + Nz * Nx);
    printf("%d tetrahedra, %d nodes; expected boundary faces %d\n", spec.NumPtsJ, spec.NumPtsI, expectedBoundary);

    ElementMap_s *elementMap = AllocElementMapPtr(true);
    auto start = std::chrono::steady_clock::now();
    if (elementMap == nullptr || !UpdateElementMap(elementMap, nodeMap)) return 1;
    printf("element map alone: %8.1f ms\n", msSince(start));
    DeallocElementMapPtr(&elementMap);

    bool isOk = true;
    std::vector<LgIndex_t> firstArray;
    for (int workers : {1, 2}) {
        StandardThreadPool = ThreadPoolCreate();
        for (int w = 0; w < workers; w++)
            if (StandardThreadPool == nullptr || !ThreadPoolCreateThread(StandardThreadPool)) return 1;
        GeneralBase.MaxAvailableProcessors = workers;
        InvalidateFaceNeighbor(faceNeighbor);
        start = std::chrono::steady_clock::now();
        if (!UpdateFaceNeighbor(false, faceNeighbor, nodeMap, "bench")) return 1;
        double ms = msSince(start);
        const FaceNeighborAutoGen_s *autoGen = faceNeighbor->AutoGen;
        printf("UpdateFaceNeighbor, %d worker%s: %8.1f ms, boundary faces %d\n", workers, workers == 1 ? " " : "s", ms,
               autoGen->NumBoundaryFaces);
        isOk = isOk && autoGen->NumBoundaryFaces == expectedBoundary;
        std::vector<LgIndex_t> array(autoGen->Neighbors, autoGen->Neighbors + autoGen->NumFaces);
        if (firstArray.empty())
            firstArray.swap(array);
        else
            isOk = isOk && array == firstArray;
        ThreadPoolFree(&StandardThreadPool);
    }
    printf("%s\n", isOk ? "counts and arrays agree" : "MISMATCH");
    FaceNeighborDealloc(&faceNeighbor);
    DeallocNodeMapPtr(&nodeMap);
    ThreadPoolCleanup();
    Thread_Cleanup();
    return isOk ? 0 : 1;
}
