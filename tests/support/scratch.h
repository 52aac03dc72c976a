// Scratch directories for tests: made fresh under /tmp, removed with everything in them.
#pragma once

#include <cstdlib>
#include <string>

// A new empty directory "/tmp/orvanex_<prefix>_XXXXXX"; empty on failure.
inline std::string MakeScratchDir(const char *prefix) {
    std::string templ = std::string("/tmp/orvanex_") + prefix + "_XXXXXX";
    return mkdtemp(templ.data()) != nullptr ? templ : std::string();
}

// Removes the directory and its contents; true on success.
inline bool RemoveScratchDir(const std::string &dir) {
    return !dir.empty() && system(("rm -rf '" + dir + "'").c_str()) == 0;
}
