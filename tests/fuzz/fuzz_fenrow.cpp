// Fuzzing the text data file converter: every input is converted, and what converts is read back
// as a binary file. Nothing may crash, leak, hang or read outside a buffer.
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "base/data/dataio.h"
#include "base/data/fenrow.h"
#include "base/kernel/alloc.h"
#include "base/kernel/globals.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const std::string stem = [] {
        InBatchMode = true;     // messages go to the batch log ...
        WriteBatchLog = false;  // ... which is off: fuzzing stays quiet
        OrvanexTempDirectory = "/tmp";
        return std::string("/tmp/orvanex_fuzz_text_") + std::to_string(getpid());
    }();
    std::string input = stem + ".dat", output = stem + ".plt";
    FILE *file = fopen(input.c_str(), "wb");
    if (file == nullptr) return 0;
    fwrite(data, 1, size, file);
    fclose(file);
    char *errorText = nullptr;
    if (FenrowAsciiDatafile(input.c_str(), output.c_str(), &errorText)) {
        DataSet_s *dataSet = nullptr;
        if (ReadBinaryDataFile(output.c_str(), &dataSet, nullptr)) DeallocDataSet(&dataSet);
    }
    newfree(errorText);
    remove(input.c_str());
    remove(output.c_str());
    return 0;
}
