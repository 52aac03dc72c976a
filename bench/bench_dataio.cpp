// Binary data files: opening (header only, values left on disk) for files of 1, 4 and 10 GB, and
// reading a 1 GB file fully into memory, beside `cat file > /dev/null` from the page cache.
// The files are written by hand (10 zones, a float and a double variable) so that the data never
// has to be in memory at once. Usage: orvanex_bench_dataio [directory]   (default /tmp)
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/data/dataio.h"
#include "base/data/dataload.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

template <typename T>
void put(FILE *file, T value) {
    fwrite(&value, sizeof(T), 1, file);
}

void putText(FILE *file, const char *text) {
    for (const char *c = text; *c; c++) put<int32_t>(file, (unsigned char)*c);
    put<int32_t>(file, 0);
}

// 10 ordered zones of `points` each, variables X (float) and Y (double): 12 bytes per point.
bool writeFile(const std::string &path, int64_t points) {
    FILE *file = fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    fwrite("#!QFV108", 1, 8, file);
    put<int32_t>(file, 1);
    putText(file, "bench");
    put<int32_t>(file, 2);
    putText(file, "X");
    putText(file, "Y");
    for (int z = 0; z < 10; z++) {
        put<float>(file, 299.0f);
        putText(file, "zone");
        for (int32_t v : {-1, -1}) put<int32_t>(file, v);
        put<double>(file, 0.0);
        for (int32_t v : {-1, 0, 0, 0, 0, 0}) put<int32_t>(file, v);
        for (int32_t v : {int32_t(points), 1, 1, 0}) put<int32_t>(file, v);
    }
    put<float>(file, 357.0f);
    std::vector<float> xs(1 << 20, 1.0f);
    std::vector<double> ys(1 << 20, 2.0);
    for (int z = 0; z < 10; z++) {
        put<float>(file, 299.0f);
        for (int32_t v : {1, 2, 0, 0, -1}) put<int32_t>(file, v);
        for (double v : {1.0, 1.0, 2.0, 2.0}) put<double>(file, v);
        for (int64_t done = 0; done < points;) {
            size_t n = size_t(std::min<int64_t>(points - done, int64_t(xs.size())));
            fwrite(xs.data(), sizeof(float), n, file);
            done += int64_t(n);
        }
        for (int64_t done = 0; done < points;) {
            size_t n = size_t(std::min<int64_t>(points - done, int64_t(ys.size())));
            fwrite(ys.data(), sizeof(double), n, file);
            done += int64_t(n);
        }
    }
    return fclose(file) == 0;
}

double medianOf(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

double openMs(const std::string &path) {
    std::vector<double> times;
    for (int run = 0; run < 7; run++) {
        DataSet_s *dataSet = nullptr;
        auto start = Clock::now();
        if (!ReadBinaryDataFile(path.c_str(), &dataSet, nullptr)) return -1.0;
        times.push_back(msSince(start));
        DeallocDataSet(&dataSet);
    }
    return medianOf(times);
}

// Opens the file and brings every value into memory, summing them so each page is touched.
double fullReadMs(const std::string &path, double *sum) {
    std::vector<double> times;
    for (int run = 0; run < 5; run++) {
        DataSet_s *dataSet = nullptr;
        auto start = Clock::now();
        if (!ReadBinaryDataFile(path.c_str(), &dataSet, nullptr)) return -1.0;
        double total = 0.0;
        for (EntIndex_t z = 0; z < dataSet->NumZones; z++)
            for (EntIndex_t v = 0; v < dataSet->NumVars; v++) {
                FieldData_a fd = GetReadableNativeFieldDataPtr(dataSet, z, v);
                if (fd->GetFunction == GetFieldValueForFloat) {
                    const auto *values = static_cast<const float *>(fd->Data);
                    for (LgIndex_t n = 0; n < fd->NumValues; n += 1024) total += values[n];
                } else {
                    const auto *values = static_cast<const double *>(fd->Data);
                    for (LgIndex_t n = 0; n < fd->NumValues; n += 512) total += values[n];
                }
            }
        times.push_back(msSince(start));
        *sum = total;
        DeallocDataSet(&dataSet);
    }
    return medianOf(times);
}

double catMs(const std::string &path) {
    std::string command = "cat '" + path + "' > /dev/null";
    std::vector<double> times;
    for (int run = 0; run < 5; run++) {
        auto start = Clock::now();
        if (system(command.c_str()) != 0) return -1.0;
        times.push_back(msSince(start));
    }
    return medianOf(times);
}

}  // namespace

int main(int argc, char **argv) {
    std::string dir = argc > 1 ? argv[1] : "/tmp";
    OrvanexTempDirectory = dir;
    DataLoadValidateThresholdValues(true);
    const struct {
        const char *name;
        double gigabytes;
    } files[] = {{"bench_1g.plt", 1.0}, {"bench_4g.plt", 4.0}, {"bench_10g.plt", 10.0}};
    printf("%-14s %10s %16s\n", "file", "size", "open (header)");
    for (const auto &f : files) {
        std::string path = dir + "/" + f.name;
        int64_t points = int64_t(f.gigabytes * 1e9 / 12.0 / 10.0);
        if (!writeFile(path, points)) {
            fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
        printf("%-14s %8.1f GB %13.2f ms\n", f.name, f.gigabytes, openMs(path));
        if (f.gigabytes > 1.0) remove(path.c_str());
    }
    std::string oneGig = dir + "/bench_1g.plt";
    double sum = 0.0;
    catMs(oneGig);  // into the page cache
    double cat = catMs(oneGig);
    double mapped = fullReadMs(oneGig, &sum);
    GeneralBase.UseMemoryMappedIO = false;
    double readInto = fullReadMs(oneGig, &sum);
    printf("\nfull read of 1 GB from the page cache (median of 5):\n");
    printf("  cat file > /dev/null        %8.1f ms\n", cat);
    printf("  orvanex, memory-mapped      %8.1f ms  (%.2fx cat)\n", mapped, mapped / cat);
    printf("  orvanex, read into memory   %8.1f ms  (%.2fx cat)\n", readInto, readInto / cat);
    remove(oneGig.c_str());
    return sum > 0.0 ? 0 : 1;
}
