// The launcher: everything happens inside liborvanex.so's q_main. The launcher only makes sure the
// program finds its home (ORVHOME) when the environment does not name one: <bindir>/../share/orvanex.
#include <climits>
#include <cstdlib>
#include <string>
#include <unistd.h>

extern "C" int q_main(int argc, char **argv);

int main(int argc, char **argv) {
    if (getenv("ORVHOME") == nullptr) {
        char exe[PATH_MAX];
        ssize_t n = readlink("/proc/self/exe", exe, sizeof(exe) - 1);
        if (n > 0) {
            exe[n] = '\0';
            std::string binDir(exe);
            binDir.erase(binDir.find_last_of('/'));
            std::string home = binDir + "/../share/orvanex";
            char resolved[PATH_MAX];
            if (realpath(home.c_str(), resolved) != nullptr) home = resolved;
            setenv("ORVHOME", home.c_str(), 0);
        }
    }
    return q_main(argc, argv);
}
