// The standalone converter: fenrow infile [outfile] [options]. Exit code 0 on success, 1 on
// failure with the converter's message on standard error as it is.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "base/data/fenrow.h"
#include "base/kernel/alloc.h"
#include "base/kernel/globals.h"

namespace {

// True if some argument names a file (options that take a value skip it).
bool namesInput(int argc, char **argv) {
    for (int a = 1; a < argc; a++) {
        const char *arg = argv[a];
        if (arg[0] == '-' && strlen(arg) >= 2) {
            if (strcasecmp(arg, "-iset") == 0 || strcasecmp(arg, "-jset") == 0 || strcasecmp(arg, "-kset") == 0 ||
                strcasecmp(arg, "-zonelist") == 0 || strcasecmp(arg, "-ip") == 0 || strcasecmp(arg, "-jp") == 0 ||
                strcasecmp(arg, "-kp") == 0)
                a++;
            continue;
        }
        return true;
    }
    return false;
}

}  // namespace

int main(int argc, char **argv) {
    if (!namesInput(argc, argv)) {
        fprintf(stderr, "Usage: fenrow infile [outfile] [options]\n");
        return 1;
    }
    // The scratch file of the data section needs a temporary directory of its own.
    const char *parent = getenv("TMPDIR");
    std::string templ = std::string(parent != nullptr && parent[0] != '\0' ? parent : "/tmp") + "/fenrow_XXXXXX";
    if (mkdtemp(templ.data()) == nullptr) {
        templ = "/tmp/fenrow_XXXXXX";
        if (mkdtemp(templ.data()) == nullptr) {
            fprintf(stderr, "Err: Unable to create temp scratch file.\nCheck Directory permissions");
            return 1;
        }
    }
    OrvanexTempDirectory = templ;
    char *errorText = nullptr;
    bool ok = Fenrow(argc, argv, &errorText);
    if (!ok && errorText != nullptr) fputs(errorText, stderr);
    newfree(errorText);
    rmdir(templ.c_str());
    return ok ? 0 : 1;
}
