// End-to-end harness: runs the real launcher in a scratch directory with files the test writes,
// and collects the exit code (or the signal that ended it), standard output, standard error and
// any file it left behind.
#pragma once

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

struct RunResult {
    int exitCode = -1;      // -1 if ended by a signal
    int signal = 0;         // the signal that ended it, or 0
    std::string out, err;
};

class Scratch {
  public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    const std::string &dir() const { return dir_; }
    std::string path(const std::string &name) const { return dir_ + "/" + name; }
    // The TMPDIR given to the program; empty after a clean run.
    std::string tmpDir() const { return path("tmp"); }

    void write(const std::string &name, const std::string &text) const;
    std::string read(const std::string &name) const;
    bool exists(const std::string &name) const;
    // Names in the program's TMPDIR (what a run left behind).
    std::vector<std::string> tmpEntries() const;

    // Environment for the run: set (value) or removed (absent optional is expressed by unsetEnv).
    void setEnv(const std::string &name, const std::string &value) { env_[name] = value; }
    void unsetEnv(const std::string &name) { env_[name] = kUnset; }

    // Runs the launcher with the arguments, in dir(), and waits.
    RunResult run(const std::vector<std::string> &args) const;
    // The same with another program of the build (a tool such as the converter).
    RunResult runProgram(const std::string &program, const std::vector<std::string> &args) const;
    // Starts it and returns at once; finish() waits and collects.
    pid_t start(const std::vector<std::string> &args) const { return startProgram(ORVANEX_LAUNCHER, args); }
    pid_t startProgram(const std::string &program, const std::vector<std::string> &args) const;
    RunResult finish(pid_t pid) const;

  private:
    static constexpr const char *kUnset = "\x01unset";
    std::string dir_;
    std::map<std::string, std::string> env_;
};

// The text of a message with its wrapping undone: newlines and runs of blanks become one blank.
std::string Unwrapped(const std::string &text);
// True if the text holds the message, whatever the wrapping.
bool HoldsMessage(const std::string &text, const std::string &message);
// What a shell command printed (standard output and, with 2>&1 in it, standard error).
std::string RunShell(const std::string &command);
// Runs a short Python program in the scratch directory with Debian's interpreter (which has
// Pillow) and gives what it printed.
std::string RunPython(const Scratch &s, const std::string &program);
// The lines of a text.
std::vector<std::string> Lines(const std::string &text);
// The lines a macro wrote with $!INTERNAL "ECHO = ...", without the "= ".
std::vector<std::string> EchoedLines(const std::string &log);
// The macro command that writes "= text" to the log.
std::string EchoCommand(const std::string &text);

// A batch run of a macro body (the header line is put in front, so the body starts on line 2)
// with its batch log.
struct MacroRun {
    RunResult result;
    std::string log;
};
MacroRun RunMacro(Scratch &s, const std::string &body, const std::vector<std::string> &extra = {});
