// Loading many files by name, one append each: a first file makes the data set and every further
// file is appended with its variables matched by name. Prints the total time for each shape and
// the time per variable, so that growth in the number of variables can be read off (linear work
// gives the same time per variable-zone at 1,000 and 5,000 variables).
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/data/dataio.h"
#include "base/data/datautil.h"
#include "base/data/readdataset.h"
#include "base/kernel/globals.h"
#include "base/plot/frame.h"

namespace {

// One binary file of numZones 2-point zones and numVars variables "V1".."Vn".
bool writeFile(const std::string &path, int numZones, int numVars) {
    DataSet_s *dataSet = AllocDataSet("bench", true, true);
    for (EntIndex_t v = 0; v < numVars; v++)
        if (!DataSetAllocVar(dataSet, v) || !DataSetAllocVarData(dataSet, v, ("V" + std::to_string(v + 1)).c_str()))
            return false;
    ZoneSpec_s spec;
    spec.NumPtsI = 2;
    spec.NumPtsJ = 1;
    spec.NumPtsK = 1;
    for (EntIndex_t z = 0; z < numZones; z++)
        if (!DataSetAllocZone(dataSet, z) ||
            !DataSetAllocZoneData(dataSet, z, &spec, nullptr, nullptr, nullptr, nullptr, false, -1, true, true, true,
                                  false))
            return false;
    bool ok = GoWriteDataSet(dataSet, nullptr, path.c_str(), WriteDataSetOptions_s());
    DeallocDataSet(&dataSet);
    return ok;
}

void run(const std::string &dir, int numFiles, int numZones, int numVars) {
    std::string path = dir + "/shape.plt";
    if (!writeFile(path, numZones, numVars)) {
        fprintf(stderr, "could not write %s\n", path.c_str());
        exit(1);
    }
    DeleteAllFrames();
    CreateNewFrame();
    ReadDataSetArgs_s args;
    InitReadDataSetArgs(&args);
    args.VarLoadMode = VarLoadMode_ByName;
    args.FileNamesOrInstructions = {path};
    auto start = std::chrono::steady_clock::now();
    for (int f = 0; f < numFiles; f++) {
        args.ReadDataOption = f == 0 ? ReadDataOption_New : ReadDataOption_Append;
        if (!Action_ReadDataSet(args)) exit(1);
    }
    double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    long cells = long(numFiles) * numZones * numVars;
    printf("%4d files x %4d zones x %5d vars: %9.1f ms  (%6.1f ns per zone-variable, %d zones in the data set)\n",
           numFiles, numZones, numVars, ms, ms * 1e6 / double(cells), CurFrame->DataSet->NumZones);
    DeleteAllFrames();
}

}  // namespace

int main(int argc, char **argv) {
    const char *base = argc > 1 ? argv[1] : "/tmp";
    std::string templ = std::string(base) + "/orvanex_loadflow_XXXXXX";
    if (mkdtemp(&templ[0]) == nullptr) return 1;
    OrvanexTempDirectory = templ;
    RegisterBuiltInDataSetReaders();
    if (argc > 4) {  // one shape: files zones variables
        run(templ, atoi(argv[2]), atoi(argv[3]), atoi(argv[4]));
        return system(("rm -rf " + templ).c_str()) == 0 ? 0 : 1;
    }
    run(templ, 65, 500, 10);  // 32,500 zones: within the limit of 32,700 zones of one data set
    run(templ, 100, 5, 1000);
    run(templ, 100, 5, 5000);
    run(templ, 100, 25, 1000);
    run(templ, 100, 25, 5000);
    return system(("rm -rf " + templ).c_str()) == 0 ? 0 : 1;
}
