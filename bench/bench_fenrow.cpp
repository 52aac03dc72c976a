// Converting a large text data file: one ordered zone, 5 variables, POINT packing. Writes the
// file (size in MB from the command line, default 500), converts it to binary with the converter,
// and prints the time, the rate and the peak resident memory of this process. bench/fenrow.sh
// runs it beside pandas reading the same numbers.
// Usage: orvanex_bench_fenrow [megabytes] [directory]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

#include "base/data/fenrow.h"
#include "base/kernel/alloc.h"
#include "base/kernel/globals.h"

int main(int argc, char **argv) {
    double megabytes = argc > 1 ? atof(argv[1]) : 500.0;
    std::string dir = argc > 2 ? argv[2] : "/tmp";
    std::string text = dir + "/bench_fenrow.dat", binary = dir + "/bench_fenrow.plt";
    OrvanexTempDirectory = dir;
    // Each point line is about 60 bytes: five numbers of 10 to 12 characters.
    long points = long(megabytes * 1e6 / 60.0);
    FILE *file = fopen(text.c_str(), "w");
    if (file == nullptr) return 1;
    fprintf(file, "VARIABLES = \"X\" \"Y\" \"Z\" \"U\" \"P\"\nZONE T=\"big\" I=%ld, J=1, K=1, DATAPACKING=POINT\n", points);
    for (long n = 0; n < points; n++)
        fprintf(file, "%.6f %.6f %.6f %.5e %.4f\n", n * 1e-3, (n % 1000) * 0.25, (n % 7) * 1.5, n * 3.1e-4,
                1.0 - (n % 100) * 0.01);
    long bytes = ftell(file);
    fclose(file);
    struct rusage before;
    getrusage(RUSAGE_SELF, &before);
    auto start = std::chrono::steady_clock::now();
    char *errorText = nullptr;
    bool ok = FenrowAsciiDatafile(text.c_str(), binary.c_str(), &errorText);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    struct rusage after;
    getrusage(RUSAGE_SELF, &after);
    if (!ok) {
        fprintf(stderr, "%s\n", errorText != nullptr ? errorText : "conversion failed");
        return 1;
    }
    newfree(errorText);
    printf("file %s: %.1f MB, %ld points x 5 values\n", text.c_str(), bytes / 1e6, points);
    printf("orvanex converter: %.2f s, %.1f MB/s, peak RSS %ld MB (before: %ld MB)\n", seconds, bytes / 1e6 / seconds,
           after.ru_maxrss / 1024, before.ru_maxrss / 1024);
    remove(binary.c_str());
    return 0;
}
