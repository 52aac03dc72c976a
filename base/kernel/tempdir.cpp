// Temporary directory and fatal signals. The directory is created with mkdtemp under a umask of
// 022; every temporary file of the system is made in it by GetRandomFileName, and its owner
// deletes it, so at a normal exit the directory is empty and rmdir removes it. On a fatal signal
// the handler removes it with "rm -rf" and leaves through abort.
#include "base/kernel/tempdir.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/paths.h"

namespace {

bool createdByProcess = false;
std::string pasteBufferFileName;
volatile sig_atomic_t handlerEntered = 0;
// A copy of the directory name made before any signal can arrive, so the handler need not touch
// a std::string that might be in the middle of a change.
char tempDirForHandler[4096] = "";

const int fatalSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGILL, SIGABRT, SIGFPE,
                            SIGBUS, SIGSEGV, SIGPIPE, SIGSYS, SIGTERM};

bool signalWantsBacktrace(int sig) {
    switch (sig) {
    case SIGINT: case SIGILL: case SIGABRT: case SIGFPE: case SIGBUS: case SIGSEGV: case SIGPIPE: case SIGSYS:
        return true;
    default:
        return false;
    }
}

bool CleanupOnAbnormalShutdown() {
    if (!createdByProcess || tempDirForHandler[0] == '\0') return true;
    char command[4200];
    snprintf(command, sizeof(command), "rm -rf %s 2>/dev/null", tempDirForHandler);
    int status = system(command);
    return status == 0 && access(tempDirForHandler, F_OK) != 0;
}

void FatalSignalHandler(int sig) {
    if (handlerEntered) return;
    handlerEntered = 1;
    bool backtraced = signalWantsBacktrace(sig);
    if (backtraced) PrintCurBacktrace();
    if (createdByProcess && !CleanupOnAbnormalShutdown())
        fprintf(stderr,
                "\nOrvanex received shutdown signal #%d but failed to cleanup it's temporary directory:\n    %s\n"
                "Please remove it by hand.\n",
                sig, tempDirForHandler);
    else
        fprintf(stderr, "\nOrvanex received shutdown signal #%d.\n", sig);
    if (backtraced)
        fprintf(stderr, "Please send the output above to support@orvanex.org with a description of what you did.\n");
    fflush(stderr);
    for (int s : fatalSignals) signal(s, SIG_DFL);
    abort();
}

// Holds the process umask at 022 for the life of the guard.
class UmaskGuard {
  public:
    UmaskGuard() : old_(umask(022)) {}
    ~UmaskGuard() { umask(old_); }
    UmaskGuard(const UmaskGuard &) = delete;
    UmaskGuard &operator=(const UmaskGuard &) = delete;

  private:
    mode_t old_;
};

}  // namespace

void PrintCurBacktrace() {
    void *frames[128];
    int count = backtrace(frames, 127);
    char **symbols = backtrace_symbols(frames, count);
    if (symbols == nullptr) return;
    for (int i = 0; i < count; i++) fprintf(stderr, "%s\n", symbols[i]);
    free(symbols);
}

void InstallFatalSignalHandler() {
    static bool installed = false;
    if (installed) return;
    installed = true;
    struct sigaction action;
    memset(&action, 0, sizeof(action));
    action.sa_handler = FatalSignalHandler;
    sigemptyset(&action.sa_mask);
    for (int s : fatalSignals) sigaction(s, &action, nullptr);
}

bool TempDirectoryCreatedByProcess() { return createdByProcess; }

bool InitializeTempDirectory(const std::string &systemTempDir) {
    std::string parent;
    if (!GeneralBase.TempFilePath.empty())
        parent = GeneralBase.TempFilePath;
    else if (!systemTempDir.empty())
        parent = systemTempDir;
    else if (IsDirectory("/usr/tmp"))
        parent = "/usr/tmp";
    else
        parent = "/tmp";
    parent = MakeAbsolutePath(parent, StartupDirectory);

    bool ok = false;
    if (IsDirectory(parent)) {
        std::string templ = MakeAbsolutePath("orvanex_XXXXXX", parent);
        UmaskGuard guard;
        if (mkdtemp(templ.data()) != nullptr) {
            OrvanexTempDirectory = templ;
            GeneralBase.TempFilePath = templ;
            createdByProcess = true;
            snprintf(tempDirForHandler, sizeof(tempDirForHandler), "%s", templ.c_str());
            ok = true;
        }
    }
    if (!ok) {
        ErrMsg("The temporary directory %s is invalid or you do not have permission to write to it.\n"
               "Assign a temporary directory for Orvanex by setting the %s environment variable to a valid directory",
               parent.c_str(), "TMPDIR");
        return false;
    }
    printf("%-23s: %s\n", "Process Temp Dir", OrvanexTempDirectory.c_str());
    fflush(stdout);
    InstallFatalSignalHandler();
    signal(SIGXFSZ, SIG_IGN);
    return true;
}

void RemoveTempDirectory() {
    if (!createdByProcess) return;
    if (rmdir(OrvanexTempDirectory.c_str()) == 0) {
        createdByProcess = false;
        tempDirForHandler[0] = '\0';
    }
}

bool GetRandomFileName(std::string *fileName) {
    if (OrvanexTempDirectory.empty()) return false;
    std::string templ = MakeAbsolutePath("tpXXXXXX", OrvanexTempDirectory);
    UmaskGuard guard;
    int fd = mkstemp(templ.data());
    if (fd < 0) return false;
    close(fd);
    *fileName = templ;
    return true;
}

bool CreatePasteBufferFile() {
    std::string name;
    FILE *file = nullptr;
    if (GetRandomFileName(&name)) file = fopen(name.c_str(), "w+");
    if (file == nullptr) {
        ErrMsg("Unable to create the paste buffer file, %s\nCheck directory permissions.", name.c_str());
        if (!name.empty()) unlink(name.c_str());
        return false;
    }
    fclose(file);
    pasteBufferFileName = name;
    return true;
}

void DeletePasteBufferFile() {
    if (pasteBufferFileName.empty()) return;
    unlink(pasteBufferFileName.c_str());
    pasteBufferFileName.clear();
}

const std::string &PasteBufferFileName() { return pasteBufferFileName; }
