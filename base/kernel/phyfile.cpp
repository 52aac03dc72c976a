#include "base/kernel/phyfile.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/kernel/errors.h"
#include "base/kernel/globals.h"
#include "base/kernel/paths.h"

PhysicalDisplay_s PhysicalDisplay;

namespace {

constexpr int PhyFileVersion = 700;
constexpr int MaxMRUNameLength = 2047;

struct FileCloser {
    void operator()(FILE *f) const { fclose(f); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// Reads one line without its newline; false at end of file.
bool readLine(FILE *file, std::string *line) {
    char buffer[MaxMRUNameLength + 2];
    if (fgets(buffer, sizeof(buffer), file) == nullptr) return false;
    size_t n = strlen(buffer);
    bool complete = n > 0 && buffer[n - 1] == '\n';
    while (n > 0 && (buffer[n - 1] == '\n' || buffer[n - 1] == '\r')) buffer[--n] = '\0';
    *line = buffer;
    if (!complete) {  // skip the rest of an over-long line
        int c;
        while ((c = fgetc(file)) != EOF && c != '\n') {
        }
    }
    return true;
}

}  // namespace

std::string PhysicalDisplayFileName() {
    const char *env = getenv("ORVPHYFILE");
    if (env != nullptr && env[0] != '\0') return MakeAbsolutePath(env, StartupDirectory);
    return MakeAbsolutePath("orvanex.phy", StartupDirectory);
}

PhyFileStatus_e ReadPhysicalDisplayFile(const std::string &fileName, PhysicalDisplay_s *phy) {
    FilePtr file(fopen(fileName.c_str(), "r"));
    if (!file) return PhyFileStatus_Missing;
    std::string line;
    int version = 0;
    if (!readLine(file.get(), &line) || sscanf(line.c_str(), "#!PHY %d", &version) != 1)
        return PhyFileStatus_Invalid;
    if (version < PhyFileVersion) return PhyFileStatus_Old;

    PhysicalDisplay_s read;
    int consumed = 0;
    if (!readLine(file.get(), &line) ||
        sscanf(line.c_str(), "%d %d %le %le %d%n", &read.WorkAreaWidth, &read.WorkAreaHeight, &read.DotsPerCmX,
               &read.DotsPerCmY, &read.Reserved, &consumed) != 5 ||
        read.WorkAreaWidth <= 0 || read.WorkAreaHeight <= 0 || !(read.DotsPerCmX > 0.0) || !(read.DotsPerCmY > 0.0))
        return PhyFileStatus_Invalid;
    for (std::string &mru : read.MRULayoutFiles)
        if (!readLine(file.get(), &mru)) break;
    *phy = read;
    return PhyFileStatus_Ok;
}

bool WritePhysicalDisplayFile(const std::string &fileName, const PhysicalDisplay_s &phy) {
    FilePtr file(fopen(fileName.c_str(), "w"));
    if (!file) return false;
    fprintf(file.get(), "#!PHY %d\n", PhyFileVersion);
    fprintf(file.get(), "%d %d %0.16le %0.16le %d\n", phy.WorkAreaWidth, phy.WorkAreaHeight, phy.DotsPerCmX,
            phy.DotsPerCmY, phy.Reserved);
    for (const std::string &mru : phy.MRULayoutFiles) fprintf(file.get(), "%s\n", mru.c_str());
    return ferror(file.get()) == 0;
}

void LoadPhysicalDisplayFile() {
    PhysicalDisplay_s phy;
    PhyFileStatus_e status = ReadPhysicalDisplayFile(PhysicalDisplayFileName(), &phy);
    if (status == PhyFileStatus_Old) Warning("Old .phy file ... ignoring.");
    if (status == PhyFileStatus_Invalid) Warning("Invalid .phy file ... ignoring.");
    if (status != PhyFileStatus_Ok) {
        if (InBatchMode) Warning("Invalid or Missing orvanex.phy file.  Batch Operation may not work correctly!");
        return;
    }
    // The MRU list is kept in every run; the screen numbers only matter without a screen.
    for (int i = 0; i < NumMRULayoutFiles; i++) PhysicalDisplay.MRULayoutFiles[i] = phy.MRULayoutFiles[i];
    PhysicalDisplay.Reserved = phy.Reserved;
    if (InBatchMode) {
        PhysicalDisplay.WorkAreaWidth = phy.WorkAreaWidth;
        PhysicalDisplay.WorkAreaHeight = phy.WorkAreaHeight;
        PhysicalDisplay.DotsPerCmX = phy.DotsPerCmX;
        PhysicalDisplay.DotsPerCmY = phy.DotsPerCmY;
        WorkAreaWidth = phy.WorkAreaWidth;
        WorkAreaHeight = phy.WorkAreaHeight;
        DotsPerCmX = phy.DotsPerCmX;
        DotsPerCmY = phy.DotsPerCmY;
    }
}
