#include "base/data/readdataset.h"

#include <memory>
#include <vector>

#include "base/data/dataio.h"
#include "base/data/datautil.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/errors.h"
#include "base/kernel/paths.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strlist.h"
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
        if (HasSuffixIgnoringCase(name, ".dat")) {
            ErrMsg("Reading text data files is not available in this version of Orvanex: %s", name.c_str());
            return false;
        }
        DataSet_s *loaded = nullptr;
        if (!ReadBinaryDataFile(name.c_str(), &loaded, &extras)) return false;
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
