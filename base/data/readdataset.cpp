#include "base/data/readdataset.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>
#include <vector>

#include "base/data/dataio.h"
#include "base/data/datautil.h"
#include "base/data/fenrow.h"
#include "base/data/fielddata.h"
#include "base/kernel/alloc.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/errors.h"
#include "base/kernel/paths.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strlist.h"
#include "base/kernel/tempdir.h"
#include "base/plot/frame.h"

namespace {

struct DataSetDeleter {
    void operator()(DataSet_s *dataSet) const { DeallocDataSet(&dataSet); }
};
using DataSetPtr = std::unique_ptr<DataSet_s, DataSetDeleter>;

std::vector<std::string> fileNamesOf(const StringList_s *instructions) {
    std::vector<std::string> names;
    for (LgIndex_t n = 0; n < StringListCount(instructions); n++) {
        const char *entry = StringListGetStringRef(instructions, n);
        std::string text = entry != nullptr ? entry : "";
        size_t start = 0;
        while (start <= text.size()) {
            size_t newline = text.find('\n', start);
            std::string name = text.substr(start, newline == std::string::npos ? std::string::npos : newline - start);
            if (!name.empty()) names.push_back(name);
            if (newline == std::string::npos) break;
            start = newline + 1;
        }
    }
    return names;
}

// A text data file: named ".dat", or a file in which no binary version can be found. A file that
// cannot be opened goes the binary way, whose reader tells what is wrong with the name.
bool isTextDataFile(const std::string &name) {
    if (HasSuffixIgnoringCase(name, ".dat")) return true;
    FILE *file = fopen(name.c_str(), "rb");
    if (file == nullptr) return false;
    char magic[4];
    bool hasMagic = fread(magic, 1, 4, file) == 4 && memcmp(magic, "#!QF", 4) == 0;
    int version = 1;
    if (!hasMagic) {
        rewind(file);
        FileStream_s stream{file, true};
        version = GetInputVersion(&stream);
    }
    fclose(file);
    return version == 0;
}

// Values of a loaded file are read from it on demand; before the converted file goes they must
// all be in memory.
bool makeResident(DataSet_s *dataSet) {
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++) {
        if (!IsZoneEnabled(dataSet, z)) continue;
        for (EntIndex_t v = 0; v < dataSet->NumVars; v++) {
            FieldData_a fieldData = IsVarEnabled(dataSet, v) ? GetNativeFieldDataPtr(dataSet, z, v) : nullptr;
            if (fieldData != nullptr && fieldData->LoadFunction == OrvanexVarLoader && !FieldDataMakeWritable(fieldData))
                return false;
        }
    }
    return true;
}

// Converts a text data file into a temporary binary file, loads that, and removes it.
bool readTextDataFile(const std::string &name, DataSet_s **loaded, DataFileExtras_s *extras) {
    std::string binaryName;
    if (!GetRandomFileName(&binaryName)) {
        ErrMsg("Unable to create temp scratch file.\nCheck Directory permissions");
        return false;
    }
    char *errorText = nullptr;
    if (!FenrowAsciiDatafile(name.c_str(), binaryName.c_str(), &errorText)) {
        ErrMsg("%s", errorText != nullptr ? errorText : "");
        newfree(errorText);
        unlink(binaryName.c_str());
        return false;
    }
    newfree(errorText);
    bool ok = ReadBinaryDataFile(binaryName.c_str(), loaded, extras);
    if (ok && !makeResident(*loaded)) {
        DeallocDataSet(loaded);
        ok = false;
    }
    unlink(binaryName.c_str());
    return ok;
}

}  // namespace

bool Action_ReadDataSet(const StringList_s *instructions, const std::string &readerName) {
    if (readerName != BaseDataSetReaderName) {
        ErrMsg("The data set reader \"%s\" is not available in this version of Orvanex.", readerName.c_str());
        return false;
    }
    std::vector<std::string> names = fileNamesOf(instructions);
    if (names.empty()) {
        ErrMsg("No data files were named.");
        return false;
    }
    DataSetPtr dataSet;
    DataFileExtras_s extras;
    for (const std::string &name : names) {
        DataSet_s *loaded = nullptr;
        if (isTextDataFile(name) ? !readTextDataFile(name, &loaded, &extras)
                                 : !ReadBinaryDataFile(name.c_str(), &loaded, &extras))
            return false;
        DataSetPtr next(loaded);
        if (!dataSet) {
            dataSet = std::move(next);
        } else if (!ConcatDataSets(dataSet.get(), next.get(), false, true)) {
            return false;
        }
    }
    if (CurFrame == nullptr || !AttachDataSetToCurFrame(dataSet.get())) return false;
    dataSet.release();
    CurFrame->Texts = std::move(extras.Texts);
    CurFrame->Geoms = std::move(extras.Geoms);
    StateChanged(StateChange_DataSetReset, nullptr);
    return true;
}
