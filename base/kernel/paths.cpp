#include "base/kernel/paths.h"

#include <cstring>
#include <strings.h>
#include <sys/stat.h>

std::string MakeAbsolutePath(const std::string &name, const std::string &directory) {
    if (name.empty() || name[0] == '/' || directory.empty()) return name;
    if (directory.back() == '/') return directory + name;
    return directory + "/" + name;
}

bool FileNameHasDirectory(const std::string &name) { return name.find('/') != std::string::npos; }

bool HasSuffixIgnoringCase(const std::string &name, const char *suffix) {
    size_t n = strlen(suffix);
    return name.size() >= n && strcasecmp(name.c_str() + name.size() - n, suffix) == 0;
}

bool IsDirectory(const std::string &name) {
    struct stat st;
    return stat(name.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool IsRegularFileOrOther(const std::string &name) {
    struct stat st;
    return stat(name.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}
