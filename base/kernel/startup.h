// The life of the process: start-up in four phases, the run loop, and shutdown. q_main, called by
// the launcher, runs them in order and returns the exit code.
#pragma once

extern "C" int q_main(int argc, char **argv);

bool InitOrvanex(int argc, char **argv);
bool InitializeGraphicsCallbacks();
bool StartUp(int argc, char **argv);
void RunOrvanex();
void InitiateShutdown(bool isOk);
void FinalizeShutdown();

void SetOrvanexExitCode(int exitCode);
int GetOrvanexExitCode();

// Records the command and starts an orderly shutdown.
void Action_Quit(bool isOk);

// Reads the configuration file: search, header check with its messages; never stops start-up.
void ReadInConfigFile();

// Called after an assertion failure, once: offers to save the layout, closes the log.
void OrvanexMopupOnAssert();
// Closes the batch log and a StdError that is neither standard stream.
void MopupAuxFiles();
