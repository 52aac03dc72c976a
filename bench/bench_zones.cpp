// Deleting 30,000 zones one call at a time from a data set of 30,001: prints the elapsed time at
// 10,000, 20,000 and 30,000 deletions, from the front of the numbering (every deletion renumbers
// all zones above it) and from the back. Linear work gives times in the ratio 1 : 2 : 3.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/data/datautil.h"
#include "base/kernel/globals.h"
#include "base/plot/frame.h"

namespace {

constexpr int kZones = 30001;

void buildDataSet() {
    DeleteAllFrames();
    CreateNewFrame();
    GoCreateDataSet("bench", 2, nullptr, true);
    ZoneSpec_s spec;
    spec.NumPtsI = 4;
    spec.NumPtsJ = 1;
    spec.NumPtsK = 1;
    for (int z = 0; z < kZones; z++) AddZone(&spec, nullptr, nullptr, EntIndex_t(z), nullptr, nullptr, -1, false);
}

void run(const char *label, bool fromFront) {
    buildDataSet();
    DataSet_s *dataSet = CurFrame->DataSet;
    auto start = std::chrono::steady_clock::now();
    for (int n = 1; n <= kZones - 1; n++) {
        EntIndex_t zone = fromFront ? 0 : EntIndex_t(dataSet->NumZones - 1);
        DeleteZone(dataSet, zone, true);
        if (n % 10000 == 0) {
            double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
            printf("%-12s %6d deleted: %8.1f ms\n", label, n, ms);
        }
    }
}

}  // namespace

int main() {
    char templ[] = "/tmp/orvanex_bench_XXXXXX";
    if (mkdtemp(templ) == nullptr) return 1;
    OrvanexTempDirectory = templ;
    run("from front", true);
    run("from back", false);
    DeleteAllFrames();
    std::string command = std::string("rm -rf ") + templ;
    return system(command.c_str()) == 0 ? 0 : 1;
}
