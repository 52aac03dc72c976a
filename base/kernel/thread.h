// The thin layer over POSIX threads: the mainline (main thread) record, the global mutexes,
// opaque mutex and condition handles, detached threads and timed waits.
#pragma once

#include "base/kernel/types.h"

struct Mutex_s;
struct Condition_s;
using Mutex_a = Mutex_s *;          // a non-recursive POSIX mutex on the heap
using Condition_a = Condition_s *;  // a POSIX condition on the heap

using ThreadFunction_pf = void (*)(void *argument);

// Records the calling thread as the mainline and makes the global mutexes, in this order:
// standard output, string utilities, ErrMsg, allocation statistics, computed objects, time
// statistics, data-load statistics, the add-on lock mutex, zone optimisation information; then
// the condition and mutex of SleepMS. The initialised flag is set last.
bool Thread_Init();
void Thread_Cleanup();
bool Thread_ThreadingIsInitialized();
// True before Thread_Init; afterwards true only on the thread that called it.
bool Thread_IsMainline();
bool Thread_CreateDetachedThread(ThreadFunction_pf function, void *argument);

bool Thread_InitMutex(Mutex_a *mutex);
void Thread_FreeMutex(Mutex_a *mutex);
void Thread_LockMutex(Mutex_a mutex);
void Thread_UnlockMutex(Mutex_a mutex);
bool Thread_InitCondition(Condition_a *condition);
void Thread_FreeCondition(Condition_a *condition);
void Thread_SignalCondition(Condition_a condition);
void Thread_BroadcastCondition(Condition_a condition);
void Thread_WaitForCondition(Condition_a condition, Mutex_a mutex);
// 0 when signalled, 1 on time-out, 255 on anything else.
int Thread_TimedWaitForCondition(Condition_a condition, Mutex_a mutex, long milliseconds);
// An ArrayList_s item destructor for items that hold a Mutex_a.
bool Thread_MutexItemDestructor(void *itemRef, ArbParam_t clientData);

void SleepMS(long milliseconds);
// MAXAVAILABLEPROCESSORS if not zero, else the processors on line (asked once); at least 1, at most 8.
int GetNumAvailableProcessors();

// The global mutexes made by Thread_Init (null before it).
extern Mutex_a StdOutMutex, StringUtilMutex, ErrMsgMutex, AllocStatsMutex, COBMutex, TimeStatsMutex,
    DataLoadStatsMutex, OrvUtilLockMutex, ZoneOptInfoMutex;

// Holds a Mutex_a for a scope: for code inside one module that must not leak a lock.
class MutexLock {
  public:
    explicit MutexLock(Mutex_a mutex) : mutex_(mutex) {
        if (mutex_ != nullptr) Thread_LockMutex(mutex_);
    }
    ~MutexLock() {
        if (mutex_ != nullptr) Thread_UnlockMutex(mutex_);
    }
    MutexLock(const MutexLock &) = delete;
    MutexLock &operator=(const MutexLock &) = delete;

  private:
    Mutex_a mutex_;
};
