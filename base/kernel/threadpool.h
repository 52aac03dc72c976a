// The pool of worker threads that runs jobs of computation, grouped in batches (one JobControl_s
// per batch), and the mainline job list through which a worker has a function run on the mainline.
//
// Every parallel stretch has one form: InitJobControl; fill an array of per-job records; one
// ThreadPoolAddJob per record on StandardThreadPool; ThreadPoolWait; FreeJobControl; merge the
// records in job order. Jobs write only to their own record.
//
// Mutex order: a pool's mutex, then the mainline mutex, then the free-list mutexes (held only for
// one list operation). No mutex is held while a job's function runs.
// Relies on: thread, alloc, errors, genbase (INTERRUPTCHECKINGFREQUENCY).
#pragma once

#include "base/kernel/thread.h"

struct ThreadPool_s;
struct JobControl_s;

struct ThreadPoolJob {
    ThreadFunction_pf Function;
    void *Argument;
    JobControl_s *JobControl;
    ThreadPool_s *Pool;  // null on the mainline's list
    ThreadPoolJob *PoolNext, *PoolPrev;    // in the pool's (or the mainline's) list of untaken jobs
    ThreadPoolJob *BatchNext, *BatchPrev;  // in the batch's list of untaken jobs
    ThreadPoolJob *NextFree;
};

// One per batch of jobs.
struct JobControl_s {
    Condition_a Condition;  // broadcast when the last job ends, for a waiter that isn't the mainline
    bool IsMainlineWaiter;  // the mainline waits on this batch: the last job signals JobPosted instead
    int NumJobs;            // jobs added and not finished
    ThreadPoolJob *First, *Last;  // jobs of the batch that no thread has taken yet
    JobControl_s *NextFree;
};

struct ThreadPool_s {
    Mutex_a Mutex;
    Condition_a Condition;        // signalled when a job is added, for idle workers
    ThreadPoolJob *First, *Last;  // pending jobs
    int NumThreads;               // workers alive
};

struct MainlineJobPool_s {
    Mutex_a Mutex;
    Condition_a JobPosted;  // a job was posted for the mainline, or a batch it waits on ended
    Condition_a JobsDone;   // the mainline finished the last job of some invoker's control
    ThreadPoolJob *First, *Last;
    bool WasPosted;  // JobPosted's predicate: set with each signal, cleared by the mainline's wait
};

// Null while the mainline system is not up.
extern MainlineJobPool_s *MainlineJobPool;
// The pool of all parallel work of the system.
extern ThreadPool_s *StandardThreadPool;

// The mainline's wait polls this for a user interrupt once per INTERRUPTCHECKINGFREQUENCY; the
// redraw layer sets it. Null means there is nothing to poll.
extern void (*GrCheckInterruptHook)();

// The two free-list mutexes and the mainline job list. ThreadPoolCleanup is the reverse and also
// frees what stands in the free lists.
bool ThreadPoolInit();
void ThreadPoolCleanup();

// A pool without workers; null after "Cannot alloc space for thread pool.".
ThreadPool_s *ThreadPoolCreate();
// Adds one worker; returns once the worker runs and is counted in NumThreads.
bool ThreadPoolCreateThread(ThreadPool_s *pool);
// Stops count workers (at most those alive) and returns once they have left their loop.
void ThreadPoolDestroyThreads(ThreadPool_s *pool, int count);
// Stops all workers and frees the pool; nulls *pool.
void ThreadPoolFree(ThreadPool_s **pool);
// Creates GetNumAvailableProcessors() workers in StandardThreadPool.
bool ThreadPoolCreateStandardWorkers();

// Takes a control from the free list, or allocates one; false (and a message) without memory.
bool InitJobControl(JobControl_s **control);
// Gives a control with no unfinished job back to the free list; nulls *control.
void FreeJobControl(JobControl_s **control);

// Queues fn(argument) as a job of the batch. A job may add further jobs to its own batch.
bool ThreadPoolAddJob(ThreadPool_s *pool, ThreadFunction_pf function, void *argument, JobControl_s *control);
// Returns when every job of the batch has finished. Off the mainline the waiter runs untaken jobs
// of the batch itself. The mainline never runs pool jobs (except on a pool without workers, where
// nobody else would): it serves jobs posted by MainlineInvoke and polls for an interrupt while it
// waits, and on an empty batch it only drains the posted jobs.
void ThreadPoolWait(ThreadPool_s *pool, JobControl_s *control);
// The same, called with the pool's mutex held; returns with it held.
void LockedThreadPoolWait(ThreadPool_s *pool, JobControl_s *control);

// Runs fn(argument) on the mainline and returns when it has run. On the mainline, or while the
// mainline system is not up, it calls fn directly. False only if no job could be allocated.
bool MainlineInvoke(ThreadFunction_pf function, void *argument);
