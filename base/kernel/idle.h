// Deferred work: the idle queue of callbacks, the idle handler that runs when the event queue is
// empty, and the time-out flags that long loops poll.
//
// The idle queue is a ring of exactly OnIdleQueueSize entries, filled and flushed on the mainline.
// Its users add once: a Schedule...OnIdle function sets a flag and adds its callback only if the
// flag was clear, and the callback clears it, so a burst of changes costs one update and the limit
// stays out of reach.
//
// Steps of the idle handler that belong to layers above the kernel are reached through IdleHooks,
// each named after its step; a null hook is a step with nothing to do.
// Relies on: arrlist, alloc, errors, globals, orvlock, threadpool.
#pragma once

#include <atomic>

#include "base/kernel/threadpool.h"
#include "base/kernel/types.h"

constexpr int OnIdleQueueSize = 1000;

using OnIdleCallback_pf = void (*)(ArbParam_t clientData);

bool OnIdleQueueInit();
// Frees the entries that never ran, and the queue.
void OnIdleQueueCleanup();
bool OnIdleQueueIsEmpty();
bool OnIdleQueueIsFull();
// False when the queue is full ("Orvanex's on-idle event queue is full.", once per run) or no
// memory is left.
bool OnIdleQueueAddCallback(OnIdleCallback_pf callback, ArbParam_t clientData);
// Runs entries in first-in, first-out order until the queue is empty, including entries added by
// the callbacks themselves.
void OnIdleQueueFlush();

struct IdleHooks_s {
    bool (*IsInteractiveViewChangeUnderway)();  // a mouse-mode rotate, translate or zoom in progress
    bool (*InterfaceIsSuspended)();
    void (*UnsuspendInterface)();
    bool (*StatusLineIsSuspended)();
    void (*UnsuspendStatusLine)();
    bool (*WorkAreaIsSuspended)();
    void (*UnsuspendWorkArea)();
    void (*FlushRedraw)();
    void (*FlushInterface)();
    bool (*PrintPreviewIsOpen)();
    void (*UpdatePrintPreviewSensitivities)();
    void (*UpdateRedrawButtonSensitivity)();
    void (*FlushExampleDrawAreas)();  // light source, preferred colours, text, colour map
    void (*UpdateMenuAccelerators)();
    void (*CheckToWarnForAddOnViolation)();
};
extern IdleHooks_s IdleHooks;

// The idle handler; a call made while it runs returns at once.
void ProcessIdleEvents();

// The time-out facility. A timer thread of its own sets both flags once per
// INTERRUPTCHECKINGFREQUENCY; long loops test General (with Interrupted) and call
// HandleGeneralTimeOut only when one is set, and FlushInterface tests StatusLineFlush. Polling
// the interface thus costs a loop one flag test, and happens at most once per interval.
struct TimeOutTimer_s {
    long Interval;  // milliseconds
    Mutex_a Mutex;
    Condition_a Condition;
    bool IsRunning;  // under Mutex
    JobControl_s *JobControl;
    ThreadPool_s *Pool;
};

struct TimeOut_s {
    std::atomic<bool> General{false};
    std::atomic<bool> StatusLineFlush{false};
    TimeOutTimer_s Timer{};
};
extern TimeOut_s TimeOut;

// Clears both flags.
void InitTimeOutFacility();
// Starts the timer, after the workers and the configuration file.
bool StartTimeOutTimer();
// Stops the timer and frees its pool; returns at once if it never started.
void MopupTimeOutFacility();
// Clears General and polls for a user interrupt (GrCheckInterruptHook).
void HandleGeneralTimeOut();
// Clears StatusLineFlush.
void HandleStatusLineFlushTimeOut();
