// Fuzzing the binary data file reader: every input is written to a file and read as a data set,
// and every value the reader registered is then loaded. Nothing may crash, leak or read outside
// a buffer, whatever the bytes.
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "base/data/dataio.h"
#include "base/kernel/globals.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static std::string path = [] {
        InBatchMode = true;     // messages go to the batch log ...
        WriteBatchLog = false;  // ... which is off: fuzzing stays quiet
        OrvanexTempDirectory = "/tmp";
        return std::string("/tmp/orvanex_fuzz_") + std::to_string(getpid()) + ".plt";
    }();
    FILE *file = fopen(path.c_str(), "wb");
    if (file == nullptr) return 0;
    fwrite(data, 1, size, file);
    fclose(file);
    DataSet_s *dataSet = nullptr;
    if (ReadBinaryDataFile(path.c_str(), &dataSet, nullptr)) {
        for (EntIndex_t z = 0; z < dataSet->NumZones; z++)
            for (EntIndex_t v = 0; z < dataSet->NumZones && IsZoneEnabled(dataSet, z) && v < dataSet->NumVars; v++)
                if (FieldData_a fd = GetReadableNativeFieldDataPtr(dataSet, z, v))
                    if (fd->NumValues > 0) (void)GetFieldValue(fd, fd->NumValues - 1);
        DeallocDataSet(&dataSet);
    }
    remove(path.c_str());
    return 0;
}
