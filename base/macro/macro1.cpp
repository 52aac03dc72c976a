#include "base/macro/macro1.h"

#include <cctype>
#include <cstring>
#include <string>

#include "base/interact/fileio.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/errors.h"
#include "base/kernel/paths.h"

bool GetFileMagic(FILE *file, const char *magic, int *version) {
    char line[80];
    if (fgets(line, 79, file) == nullptr) return false;  // at most 78 characters of the first line
    size_t magicLength = strlen(magic);
    if (line[0] != '#' || line[1] != '!' || strncmp(line + 2, magic, magicLength) != 0) return false;
    return sscanf(line + 2 + magicLength, "%d", version) == 1;
}

bool ReadMacroFileVersion(const char *fileName, int *version) {
    FILE *file = nullptr;
    if (!Open_File(&file, fileName, true, false, false, true, true)) return false;
    if (!GetFileMagic(file, "MC", version)) *version = -1;
    Close_File(&file, false);
    return true;
}

bool MacroHeaderOk(int version) { return version >= MacroVersionOldest && version <= MacroVersionCurrent; }

bool Action_RunMacro(const char *fileName) {
    if (!HasSuffixIgnoringCase(fileName, ".mcr")) {
        const char *dot = strrchr(fileName, '.');
        const char *slash = strrchr(fileName, '/');
        const char *extension = (dot != nullptr && (slash == nullptr || dot > slash)) ? dot + 1 : "";
        ErrMsg("Cannot execute %s\nNothing registered with Orvanex to handle script files of type \".%s\"",
               fileName, extension);
        return false;
    }
    int version = 0;
    if (!ReadMacroFileVersion(fileName, &version)) return false;
    bool ok = MacroHeaderOk(version);
    if (!ok) ErrMsg("Invalid Macro file header");
    return ok;
}

bool ReadInQuickMacros(const std::string &fileName, bool userNamedFile) {
    std::string path;
    if (!FindStartupFile(fileName, "QuickMacro File", &path)) {
        if (userNamedFile) Warning("Cannot open quick macro file.");
        return true;
    }
    int version = 0;
    if (!ReadMacroFileVersion(path.c_str(), &version)) return false;
    bool ok = MacroHeaderOk(version);
    if (!ok) ErrMsg("Invalid Macro file header");
    // The definitions it holds take effect once macro functions can run.
    return ok;
}
