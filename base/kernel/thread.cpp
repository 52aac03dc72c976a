// The thin layer over POSIX threads. Mutex_a and Condition_a are heap records holding a default
// (non-recursive) pthread mutex and a pthread condition, allocated through newmalloc so that the
// allocation statistics see them. The mainline is the thread that called Thread_Init; before that
// (and after Thread_Cleanup) every thread counts as the mainline, since only one runs.
// Relies on: alloc, genbase (MAXAVAILABLEPROCESSORS).
#include "base/kernel/thread.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"

struct Mutex_s {
    pthread_mutex_t mutex;
};

struct Condition_s {
    pthread_cond_t condition;
};

Mutex_a StdOutMutex = nullptr, StringUtilMutex = nullptr, ErrMsgMutex = nullptr, AllocStatsMutex = nullptr,
        COBMutex = nullptr, TimeStatsMutex = nullptr, DataLoadStatsMutex = nullptr, OrvUtilLockMutex = nullptr,
        ZoneOptInfoMutex = nullptr;

namespace {

// Never more workers than this, whatever the machine or the setting says.
constexpr int MaxWorkerProcessors = 8;

std::atomic<bool> threadingIsInitialized{false};
std::atomic<bool> mainlineIsRecorded{false};
pthread_t mainlineThread;

// SleepMS waits on this condition, which nobody signals.
Mutex_a sleepMutex = nullptr;
Condition_a sleepCondition = nullptr;

// The global mutexes in the order Thread_Init makes them.
Mutex_a *const globalMutexes[] = {&StdOutMutex,    &StringUtilMutex,    &ErrMsgMutex,
                                  &AllocStatsMutex, &COBMutex,           &TimeStatsMutex,
                                  &DataLoadStatsMutex, &OrvUtilLockMutex, &ZoneOptInfoMutex};

struct ThreadStart_s {
    ThreadFunction_pf function;
    void *argument;
};

// Asks for round-robin scheduling at the thread's present priority. Only a request: an
// unprivileged process is normally refused (EPERM, or EINVAL for priority 0), and the thread
// runs under whatever policy it has.
void requestRoundRobinScheduling() {
    int policy = 0;
    sched_param param{};
    if (pthread_getschedparam(pthread_self(), &policy, &param) == 0)
        (void)pthread_setschedparam(pthread_self(), SCHED_RR, &param);
}

void *threadTrampoline(void *startRecord) {
    auto *start = static_cast<ThreadStart_s *>(startRecord);
    ThreadFunction_pf function = start->function;
    void *argument = start->argument;
    newfree(start);
    requestRoundRobinScheduling();
    function(argument);
    return nullptr;
}

timespec deadlineAfter(long milliseconds) {
    timespec deadline{};
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += milliseconds / 1000;
    deadline.tv_nsec += (milliseconds % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_sec += deadline.tv_nsec / 1000000000L;
        deadline.tv_nsec %= 1000000000L;
    }
    return deadline;
}

}  // namespace

bool Thread_Init() {
    REQUIRE(!threadingIsInitialized.load());
    mainlineThread = pthread_self();
    mainlineIsRecorded = true;
    bool ok = true;
    for (Mutex_a *mutex : globalMutexes)
        if (ok) ok = Thread_InitMutex(mutex);
    if (ok) ok = Thread_InitCondition(&sleepCondition) && Thread_InitMutex(&sleepMutex);
    if (!ok) {
        for (Mutex_a *mutex : globalMutexes) Thread_FreeMutex(mutex);
        Thread_FreeCondition(&sleepCondition);
        Thread_FreeMutex(&sleepMutex);
        mainlineIsRecorded = false;
        return false;
    }
    threadingIsInitialized = true;
    return true;
}

void Thread_Cleanup() {
    threadingIsInitialized = false;
    Thread_FreeMutex(&sleepMutex);
    Thread_FreeCondition(&sleepCondition);
    for (Mutex_a *mutex : globalMutexes) Thread_FreeMutex(mutex);
    mainlineIsRecorded = false;
}

bool Thread_ThreadingIsInitialized() { return threadingIsInitialized.load(); }

bool Thread_IsMainline() {
    if (!mainlineIsRecorded.load()) return true;
    return pthread_equal(pthread_self(), mainlineThread) != 0;
}

bool Thread_CreateDetachedThread(ThreadFunction_pf function, void *argument) {
    REQUIRE(function != nullptr);
    auto *start = static_cast<ThreadStart_s *>(newmalloc(sizeof(ThreadStart_s)));
    if (start == nullptr) return false;
    start->function = function;
    start->argument = argument;

    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        newfree(start);
        return false;
    }
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    bool ok = pthread_create(&thread, &attributes, threadTrampoline, start) == 0;
    pthread_attr_destroy(&attributes);
    if (!ok) newfree(start);
    return ok;
}

bool Thread_InitMutex(Mutex_a *mutex) {
    REQUIRE(mutex != nullptr);
    auto *made = static_cast<Mutex_s *>(newmalloc(sizeof(Mutex_s)));
    if (made == nullptr) return false;
    if (pthread_mutex_init(&made->mutex, nullptr) != 0) {
        newfree(made);
        return false;
    }
    *mutex = made;
    return true;
}

void Thread_FreeMutex(Mutex_a *mutex) {
    REQUIRE(mutex != nullptr);
    if (*mutex == nullptr) return;
    pthread_mutex_destroy(&(*mutex)->mutex);
    newfree(*mutex);
    *mutex = nullptr;
}

void Thread_LockMutex(Mutex_a mutex) {
    REQUIRE(mutex != nullptr);
    int result = pthread_mutex_lock(&mutex->mutex);
    CHECK(result == 0);
}

void Thread_UnlockMutex(Mutex_a mutex) {
    REQUIRE(mutex != nullptr);
    int result = pthread_mutex_unlock(&mutex->mutex);
    CHECK(result == 0);
}

bool Thread_InitCondition(Condition_a *condition) {
    REQUIRE(condition != nullptr);
    auto *made = static_cast<Condition_s *>(newmalloc(sizeof(Condition_s)));
    if (made == nullptr) return false;
    if (pthread_cond_init(&made->condition, nullptr) != 0) {
        newfree(made);
        return false;
    }
    *condition = made;
    return true;
}

void Thread_FreeCondition(Condition_a *condition) {
    REQUIRE(condition != nullptr);
    if (*condition == nullptr) return;
    pthread_cond_destroy(&(*condition)->condition);
    newfree(*condition);
    *condition = nullptr;
}

void Thread_SignalCondition(Condition_a condition) {
    REQUIRE(condition != nullptr);
    pthread_cond_signal(&condition->condition);
}

void Thread_BroadcastCondition(Condition_a condition) {
    REQUIRE(condition != nullptr);
    pthread_cond_broadcast(&condition->condition);
}

void Thread_WaitForCondition(Condition_a condition, Mutex_a mutex) {
    REQUIRE(condition != nullptr && mutex != nullptr);
    pthread_cond_wait(&condition->condition, &mutex->mutex);
}

int Thread_TimedWaitForCondition(Condition_a condition, Mutex_a mutex, long milliseconds) {
    REQUIRE(condition != nullptr && mutex != nullptr && milliseconds >= 0);
    timespec deadline = deadlineAfter(milliseconds);
    int result = pthread_cond_timedwait(&condition->condition, &mutex->mutex, &deadline);
    if (result == 0) return 0;
    if (result == ETIMEDOUT) return 1;
    return 255;
}

bool Thread_MutexItemDestructor(void *itemRef, ArbParam_t clientData) {
    REQUIRE(itemRef != nullptr);
    Thread_FreeMutex(static_cast<Mutex_a *>(itemRef));
    return true;
}

void SleepMS(long milliseconds) {
    if (milliseconds <= 0) return;
    if (sleepMutex == nullptr || sleepCondition == nullptr) {
        // Before Thread_Init there is no condition to wait on; a plain sleep does the same.
        timespec interval{milliseconds / 1000, (milliseconds % 1000) * 1000000L};
        while (nanosleep(&interval, &interval) != 0 && errno == EINTR) {
        }
        return;
    }
    // Nobody signals the condition, so only the deadline ends the wait; a spurious wake-up waits
    // again for what is left of the same deadline.
    timespec deadline = deadlineAfter(milliseconds);
    Thread_LockMutex(sleepMutex);
    while (pthread_cond_timedwait(&sleepCondition->condition, &sleepMutex->mutex, &deadline) == 0) {
    }
    Thread_UnlockMutex(sleepMutex);
}

int GetNumAvailableProcessors() {
    int numProcessors = GeneralBase.MaxAvailableProcessors;
    if (numProcessors == 0) {
        static const long online = sysconf(_SC_NPROCESSORS_ONLN);  // asked once
        numProcessors = static_cast<int>(std::min<long>(online, MaxWorkerProcessors));
    }
    return std::clamp(numProcessors, 1, MaxWorkerProcessors);
}
