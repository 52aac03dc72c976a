#include "e2e/harness.h"

#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/scratch.h"

extern char **environ;

Scratch::Scratch() {
    dir_ = MakeScratchDir("e2e");
    if (dir_.empty()) throw std::runtime_error("cannot make scratch directory");
    mkdir(tmpDir().c_str(), 0755);
    mkdir(path("home").c_str(), 0755);
    // A run sees only what the test gives it: no display, its own temp and home directories.
    unsetEnv("DISPLAY");
    unsetEnv("BATCHLOGFILE");
    unsetEnv("ORVPHYFILE");
    unsetEnv("ORVADDONFILE");
    unsetEnv("ORVZ9HOME");
    unsetEnv("ORV110HOME");
    unsetEnv("ORVHOME");
    setEnv("TMPDIR", tmpDir());
    setEnv("HOME", path("home"));
    setEnv("PWD", dir_);
}

Scratch::~Scratch() {
    if (!RemoveScratchDir(dir_)) fprintf(stderr, "could not remove %s\n", dir_.c_str());
}

void Scratch::write(const std::string &name, const std::string &text) const {
    std::ofstream file(path(name), std::ios::binary);
    file << text;
}

std::string Scratch::read(const std::string &name) const {
    std::ifstream file(name.size() > 0 && name[0] == '/' ? name : path(name), std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool Scratch::exists(const std::string &name) const {
    struct stat st;
    return stat((name.size() > 0 && name[0] == '/' ? name : path(name)).c_str(), &st) == 0;
}

std::vector<std::string> Scratch::tmpEntries() const {
    std::vector<std::string> names;
    if (DIR *d = opendir(tmpDir().c_str())) {
        while (dirent *e = readdir(d))
            if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) names.push_back(e->d_name);
        closedir(d);
    }
    return names;
}

pid_t Scratch::startProgram(const std::string &program, const std::vector<std::string> &args) const {
    pid_t pid = fork();
    if (pid != 0) return pid;
    // child
    if (chdir(dir_.c_str()) != 0) _exit(127);
    int out = open(path(".stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int err = open(path(".stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int in = open("/dev/null", O_RDONLY);
    dup2(out, 1);
    dup2(err, 2);
    dup2(in, 0);
    struct rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    for (const auto &[name, value] : env_) {
        if (value == kUnset)
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char *> argv;
    std::string launcher = program;
    argv.push_back(launcher.data());
    std::vector<std::string> copies(args);
    for (std::string &a : copies) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(launcher.c_str(), argv.data());
    _exit(127);
}

RunResult Scratch::finish(pid_t pid) const {
    RunResult result;
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    result.out = read(".stdout");
    result.err = read(".stderr");
    return result;
}

RunResult Scratch::run(const std::vector<std::string> &args) const { return finish(start(args)); }

RunResult Scratch::runProgram(const std::string &program, const std::vector<std::string> &args) const {
    return finish(startProgram(program, args));
}

std::string Unwrapped(const std::string &text) {
    std::string out;
    bool blank = false;
    for (char c : text) {
        if (c == '\n' || c == ' ' || c == '\t') {
            blank = true;
            continue;
        }
        if (blank && !out.empty()) out.push_back(' ');
        blank = false;
        out.push_back(c);
    }
    return out;
}

bool HoldsMessage(const std::string &text, const std::string &message) {
    return Unwrapped(text).find(Unwrapped(message)) != std::string::npos;
}

std::vector<std::string> Lines(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

std::vector<std::string> EchoedLines(const std::string &log) {
    std::vector<std::string> lines;
    for (const std::string &line : Lines(log))
        if (line.rfind("= ", 0) == 0) lines.push_back(line.substr(2));
    return lines;
}

std::string EchoCommand(const std::string &text) { return "$!INTERNAL \"ECHO = " + text + "\"\n"; }

MacroRun RunMacro(Scratch &s, const std::string &body, const std::vector<std::string> &extra) {
    s.write("run.mcr", "#!MC 1100\n" + body);
    std::vector<std::string> args{"-b", "run.mcr"};
    args.insert(args.end(), extra.begin(), extra.end());
    MacroRun run;
    run.result = s.run(args);
    run.log = s.read("batch.log");
    return run;
}

std::string RunShell(const std::string &command) {
    FILE *pipe = popen(command.c_str(), "r");
    std::string out;
    char buffer[512];
    while (pipe != nullptr && fgets(buffer, sizeof(buffer), pipe) != nullptr) out += buffer;
    if (pipe != nullptr) pclose(pipe);
    return out;
}

std::string RunPython(const Scratch &s, const std::string &program) {
    s.write("probe.py", program);
    return RunShell("cd '" + s.dir() + "' && /usr/bin/python3 probe.py 2>&1");
}
