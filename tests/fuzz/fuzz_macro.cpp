// Fuzzing the macro reader: the input is read as a macro stream, command after command, each
// command is written back as text (one option a line, and as one line) and that text compressed
// again; the whole input is also evaluated as a numeric expression. Nothing may crash, leak, hang
// or read outside a buffer, whatever the text.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/kernel/globals.h"
#include "base/macro/expr.h"
#include "base/macro/macrocomp.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static bool quiet = [] {
        InBatchMode = true;     // messages go to the batch log ...
        WriteBatchLog = false;  // ... which is off: fuzzing stays quiet
        return true;
    }();
    (void)quiet;
    std::string text(reinterpret_cast<const char *>(data), size);
    FILE *stream = fmemopen(text.data(), text.size() > 0 ? text.size() : 1, "r");
    if (stream == nullptr) return 0;
    int line = 0;
    for (int count = 0; count < 200; ++count) {
        std::string command;
        char *rawData = nullptr;
        int firstLine = 0;
        if (!GetNextCompressedCommand(stream, nullptr, &command, &rawData, &line, &firstLine) || command.empty()) {
            DeallocRawMacroData(&rawData);
            break;
        }
        std::string uncompressed;
        if (UncompressMacroCommand(command.c_str(), &uncompressed, MaxMacroCommandLength, "  ", true)) {
            std::string again;
            GetNextCompressedCommand(nullptr, uncompressed.c_str() + 2, &again, nullptr, nullptr, nullptr);
        }
        std::string oneLine;
        UncompressMacroCommand(command.c_str(), &oneLine, 200, "", false);
        if (rawData != nullptr) {
            std::vector<double> levels;
            LoadContourLevelRawMacroData(rawData, firstLine, command.c_str(), &levels);
            RawGeomPosition_s position;
            LoadGeomPositionRawMacroData(rawData, firstLine, command.c_str(), RawGeomType_LineSegs3D, false, &position);
        }
        DeallocRawMacroData(&rawData);
    }
    fclose(stream);
    double value = 0.0;
    ExprEvaluate(text.c_str(), &value, nullptr, nullptr);
    return 0;
}
