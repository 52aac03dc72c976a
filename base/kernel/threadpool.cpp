// Worker pools, batches of jobs and the mainline job list.
//
// A job sits in two doubly linked lists while nobody has taken it: its pool's pending list (or the
// mainline's list) and its batch's list. Whoever takes it unlinks it from both, runs it without any
// mutex held, then counts it off its batch. Job records and controls are recycled through free
// lists, since a parallel stretch may run many times per redraw.
//
// Start and stop jobs steer the workers: a new worker receives its start job directly from the
// thread that creates it, so that only the new worker can take it and the creator returns with the
// worker counted; stop jobs go to the head of the pending list and overtake pending work. Neither
// function is ever run.
#include "base/kernel/threadpool.h"

#include <algorithm>
#include <climits>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"

MainlineJobPool_s *MainlineJobPool = nullptr;
ThreadPool_s *StandardThreadPool = nullptr;
void (*GrCheckInterruptHook)() = nullptr;

namespace {

Mutex_a jobFreeListMutex = nullptr;
Mutex_a controlFreeListMutex = nullptr;
ThreadPoolJob *freeJobs = nullptr;
JobControl_s *freeControls = nullptr;

void startJobFunction(void *) {}
void stopJobFunction(void *) {}

const char *const JobAllocFailedText = "Failed to alloc job for thread pool.";

ThreadPoolJob *allocJob(ThreadFunction_pf function, void *argument, JobControl_s *control, ThreadPool_s *pool) {
    ThreadPoolJob *job = nullptr;
    {
        MutexLock lock(jobFreeListMutex);
        job = freeJobs;
        if (job != nullptr) freeJobs = job->NextFree;
    }
    if (job == nullptr) job = static_cast<ThreadPoolJob *>(newmalloc(sizeof(ThreadPoolJob)));
    if (job == nullptr) return nullptr;
    *job = ThreadPoolJob{};
    job->Function = function;
    job->Argument = argument;
    job->JobControl = control;
    job->Pool = pool;
    return job;
}

void freeJob(ThreadPoolJob *job) {
    MutexLock lock(jobFreeListMutex);
    job->NextFree = freeJobs;
    freeJobs = job;
}

// The pool's pending list and the mainline's list share the Pool links.
void linkPoolTail(ThreadPoolJob *&first, ThreadPoolJob *&last, ThreadPoolJob *job) {
    job->PoolNext = nullptr;
    job->PoolPrev = last;
    if (last != nullptr)
        last->PoolNext = job;
    else
        first = job;
    last = job;
}

void linkPoolHead(ThreadPoolJob *&first, ThreadPoolJob *&last, ThreadPoolJob *job) {
    job->PoolPrev = nullptr;
    job->PoolNext = first;
    if (first != nullptr)
        first->PoolPrev = job;
    else
        last = job;
    first = job;
}

void unlinkPool(ThreadPoolJob *&first, ThreadPoolJob *&last, ThreadPoolJob *job) {
    if (job->PoolPrev != nullptr)
        job->PoolPrev->PoolNext = job->PoolNext;
    else
        first = job->PoolNext;
    if (job->PoolNext != nullptr)
        job->PoolNext->PoolPrev = job->PoolPrev;
    else
        last = job->PoolPrev;
    job->PoolNext = job->PoolPrev = nullptr;
}

void linkBatchTail(JobControl_s *control, ThreadPoolJob *job) {
    job->BatchNext = nullptr;
    job->BatchPrev = control->Last;
    if (control->Last != nullptr)
        control->Last->BatchNext = job;
    else
        control->First = job;
    control->Last = job;
}

void linkBatchHead(JobControl_s *control, ThreadPoolJob *job) {
    job->BatchPrev = nullptr;
    job->BatchNext = control->First;
    if (control->First != nullptr)
        control->First->BatchPrev = job;
    else
        control->Last = job;
    control->First = job;
}

void unlinkBatch(JobControl_s *control, ThreadPoolJob *job) {
    if (job->BatchPrev != nullptr)
        job->BatchPrev->BatchNext = job->BatchNext;
    else
        control->First = job->BatchNext;
    if (job->BatchNext != nullptr)
        job->BatchNext->BatchPrev = job->BatchPrev;
    else
        control->Last = job->BatchPrev;
    job->BatchNext = job->BatchPrev = nullptr;
}

void takeJob(ThreadPool_s *pool, ThreadPoolJob *job) {
    unlinkPool(pool->First, pool->Last, job);
    unlinkBatch(job->JobControl, job);
}

// Counts a finished job off its batch and frees it; the pool's mutex is held. The last job of a
// batch wakes its waiters: the mainline through JobPosted (taking the mainline mutex after the
// pool's, in the one allowed order), any other thread through the batch's condition.
void finishJob(ThreadPoolJob *job) {
    JobControl_s *control = job->JobControl;
    CHECK(control->NumJobs > 0);
    control->NumJobs--;
    if (control->NumJobs == 0) {
        if (control->IsMainlineWaiter) {
            Thread_LockMutex(MainlineJobPool->Mutex);
            MainlineJobPool->WasPosted = true;
            Thread_SignalCondition(MainlineJobPool->JobPosted);
            Thread_UnlockMutex(MainlineJobPool->Mutex);
        }
        // A thread other than the mainline may wait on the same batch; a broadcast nobody hears
        // costs nothing.
        Thread_BroadcastCondition(control->Condition);
    }
    freeJob(job);
}

// Takes an untaken job and runs it on the calling thread; the pool's mutex is held on entry and
// on return, and released while the job runs.
void runJobHere(ThreadPool_s *pool, ThreadPoolJob *job) {
    takeJob(pool, job);
    Thread_UnlockMutex(pool->Mutex);
    job->Function(job->Argument);
    Thread_LockMutex(pool->Mutex);
    finishJob(job);
}

void workerMain(void *startJob) {
    auto *start = static_cast<ThreadPoolJob *>(startJob);
    ThreadPool_s *pool = start->Pool;
    Thread_LockMutex(pool->Mutex);
    pool->NumThreads++;
    finishJob(start);  // releases the creator, with this worker already counted
    bool isStopping = false;
    while (!isStopping) {
        ThreadPoolJob *job = pool->First;
        if (job == nullptr) {
            Thread_WaitForCondition(pool->Condition, pool->Mutex);
            continue;
        }
        if (job->Function == stopJobFunction) {
            takeJob(pool, job);
            isStopping = true;
            finishJob(job);
        } else {
            runJobHere(pool, job);
        }
    }
    // The thread that stopped this worker frees the pool as soon as it has the mutex again, so
    // nothing of the pool is touched after this unlock.
    pool->NumThreads--;
    Thread_UnlockMutex(pool->Mutex);
}

// With the mainline mutex held: runs every job posted for the mainline, in order, releasing the
// mutex while each runs.
void LockedMainlineProcessJobs() {
    MainlineJobPool_s *mainline = MainlineJobPool;
    while (mainline->First != nullptr) {
        ThreadPoolJob *job = mainline->First;
        unlinkPool(mainline->First, mainline->Last, job);
        unlinkBatch(job->JobControl, job);
        Thread_UnlockMutex(mainline->Mutex);
        job->Function(job->Argument);
        Thread_LockMutex(mainline->Mutex);
        job->JobControl->NumJobs--;
        if (job->JobControl->NumJobs == 0) Thread_BroadcastCondition(mainline->JobsDone);
        freeJob(job);
    }
}

// One round of the mainline's wait; the pool's mutex is held on entry and on return. The mainline
// mutex is taken before the pool's is released, so the signal of a worker that ends the batch in
// between cannot be lost; WasPosted keeps a signal given while the mainline was busy running a
// posted job or polling for an interrupt.
void serveMainlineOnce(ThreadPool_s *pool) {
    MainlineJobPool_s *mainline = MainlineJobPool;
    Thread_LockMutex(mainline->Mutex);
    Thread_UnlockMutex(pool->Mutex);
    LockedMainlineProcessJobs();
    Thread_UnlockMutex(mainline->Mutex);

    // The interrupt poll may dispatch events; it runs with no mutex held.
    if (GrCheckInterruptHook != nullptr) GrCheckInterruptHook();

    Thread_LockMutex(mainline->Mutex);
    if (!mainline->WasPosted)
        Thread_TimedWaitForCondition(mainline->JobPosted, mainline->Mutex,
                                     std::max(1, GeneralBase.InterruptCheckingFrequency));
    mainline->WasPosted = false;
    Thread_UnlockMutex(mainline->Mutex);
    Thread_LockMutex(pool->Mutex);
}

// Waits, with the pool's mutex held, until the batch has no unfinished job. mayRunJobs is false
// for the batch of stop jobs, which only workers may take.
void waitForBatch(ThreadPool_s *pool, JobControl_s *control, bool mayRunJobs) {
    bool isMainline = Thread_IsMainline();
    bool servesMainline = isMainline && MainlineJobPool != nullptr;
    if (servesMainline) control->IsMainlineWaiter = true;
    while (control->NumJobs > 0) {
        // A waiter off the mainline works, so a job that waits for jobs of its own cannot starve
        // the pool however few workers it has. The mainline runs pool jobs only when the pool has
        // no worker at all, since nobody else would.
        bool runsHere = mayRunJobs && control->First != nullptr && (!isMainline || pool->NumThreads == 0);
        if (runsHere)
            runJobHere(pool, control->First);
        else if (servesMainline)
            serveMainlineOnce(pool);
        else
            Thread_WaitForCondition(control->Condition, pool->Mutex);
    }
    if (servesMainline) {
        control->IsMainlineWaiter = false;
        Thread_LockMutex(MainlineJobPool->Mutex);
        LockedMainlineProcessJobs();
        Thread_UnlockMutex(MainlineJobPool->Mutex);
    }
}

bool MainlineSystemInit() {
    auto *mainline = static_cast<MainlineJobPool_s *>(newmalloc(sizeof(MainlineJobPool_s)));
    if (mainline == nullptr) return false;
    *mainline = MainlineJobPool_s{};
    if (!Thread_InitMutex(&mainline->Mutex) || !Thread_InitCondition(&mainline->JobPosted) ||
        !Thread_InitCondition(&mainline->JobsDone)) {
        Thread_FreeMutex(&mainline->Mutex);
        Thread_FreeCondition(&mainline->JobPosted);
        Thread_FreeCondition(&mainline->JobsDone);
        newfree(mainline);
        return false;
    }
    MainlineJobPool = mainline;
    return true;
}

void MainlineSystemCleanup() {
    MainlineJobPool_s *mainline = MainlineJobPool;
    if (mainline == nullptr) return;
    MainlineJobPool = nullptr;
    CHECK(mainline->First == nullptr);
    Thread_FreeMutex(&mainline->Mutex);
    Thread_FreeCondition(&mainline->JobPosted);
    Thread_FreeCondition(&mainline->JobsDone);
    newfree(mainline);
}

}  // namespace

bool ThreadPoolInit() {
    REQUIRE(MainlineJobPool == nullptr);
    if (!Thread_InitMutex(&jobFreeListMutex) || !Thread_InitMutex(&controlFreeListMutex) || !MainlineSystemInit()) {
        Thread_FreeMutex(&jobFreeListMutex);
        Thread_FreeMutex(&controlFreeListMutex);
        return false;
    }
    return true;
}

void ThreadPoolCleanup() {
    MainlineSystemCleanup();
    while (freeControls != nullptr) {
        JobControl_s *control = freeControls;
        freeControls = control->NextFree;
        Thread_FreeCondition(&control->Condition);
        newfree(control);
    }
    while (freeJobs != nullptr) {
        ThreadPoolJob *job = freeJobs;
        freeJobs = job->NextFree;
        newfree(job);
    }
    Thread_FreeMutex(&controlFreeListMutex);
    Thread_FreeMutex(&jobFreeListMutex);
}

ThreadPool_s *ThreadPoolCreate() {
    auto *pool = static_cast<ThreadPool_s *>(newmalloc(sizeof(ThreadPool_s)));
    if (pool != nullptr) {
        *pool = ThreadPool_s{};
        if (!Thread_InitMutex(&pool->Mutex) || !Thread_InitCondition(&pool->Condition)) {
            Thread_FreeMutex(&pool->Mutex);
            newfree(pool);
            pool = nullptr;
        }
    }
    if (pool == nullptr) ErrMsg("Cannot alloc space for thread pool.");
    return pool;
}

bool ThreadPoolCreateThread(ThreadPool_s *pool) {
    REQUIRE(pool != nullptr);
    JobControl_s *control = nullptr;
    if (!InitJobControl(&control)) return false;
    ThreadPoolJob *start = allocJob(startJobFunction, nullptr, control, pool);
    if (start == nullptr) {
        FreeJobControl(&control);
        ErrMsg("%s", JobAllocFailedText);
        return false;
    }
    Thread_LockMutex(pool->Mutex);
    control->NumJobs = 1;
    bool isStarted = Thread_CreateDetachedThread(workerMain, start);
    if (isStarted) {
        while (control->NumJobs > 0) Thread_WaitForCondition(control->Condition, pool->Mutex);
    } else {
        control->NumJobs = 0;
        freeJob(start);
    }
    Thread_UnlockMutex(pool->Mutex);
    FreeJobControl(&control);
    if (!isStarted) ErrMsg("Cannot start a thread for the thread pool.");
    return isStarted;
}

void ThreadPoolDestroyThreads(ThreadPool_s *pool, int count) {
    REQUIRE(pool != nullptr && count >= 0);
    Thread_LockMutex(pool->Mutex);
    // More stop jobs than workers would wait forever for a taker.
    count = std::min(count, pool->NumThreads);
    JobControl_s *control = nullptr;
    if (count > 0 && InitJobControl(&control)) {
        for (int i = 0; i < count; i++) {
            ThreadPoolJob *stop = allocJob(stopJobFunction, nullptr, control, pool);
            if (stop == nullptr) {
                ErrMsg("%s", JobAllocFailedText);
                break;
            }
            linkPoolHead(pool->First, pool->Last, stop);
            linkBatchHead(control, stop);
            control->NumJobs++;
        }
        Thread_BroadcastCondition(pool->Condition);
        // On the mainline this wait also serves workers that must reach the mainline (through
        // MainlineInvoke) before they can get to their stop job.
        waitForBatch(pool, control, false);
        FreeJobControl(&control);
    }
    Thread_UnlockMutex(pool->Mutex);
}

void ThreadPoolFree(ThreadPool_s **pool) {
    REQUIRE(pool != nullptr);
    ThreadPool_s *doomed = *pool;
    if (doomed == nullptr) return;
    ThreadPoolDestroyThreads(doomed, INT_MAX);
    // Jobs still pending have nobody left to run them.
    Thread_LockMutex(doomed->Mutex);
    while (doomed->First != nullptr) {
        ThreadPoolJob *job = doomed->First;
        takeJob(doomed, job);
        freeJob(job);
    }
    Thread_UnlockMutex(doomed->Mutex);
    Thread_FreeCondition(&doomed->Condition);
    Thread_FreeMutex(&doomed->Mutex);
    newfree(doomed);
    *pool = nullptr;
}

bool ThreadPoolCreateStandardWorkers() {
    REQUIRE(StandardThreadPool != nullptr);
    int numWorkers = GetNumAvailableProcessors();
    for (int i = 0; i < numWorkers; i++)
        if (!ThreadPoolCreateThread(StandardThreadPool)) return false;
    return true;
}

bool InitJobControl(JobControl_s **control) {
    REQUIRE(control != nullptr);
    JobControl_s *made = nullptr;
    {
        MutexLock lock(controlFreeListMutex);
        made = freeControls;
        if (made != nullptr) freeControls = made->NextFree;
    }
    if (made == nullptr) {
        // A control in the free list keeps its condition; only a new one needs one made.
        made = static_cast<JobControl_s *>(newmalloc(sizeof(JobControl_s)));
        if (made != nullptr && !Thread_InitCondition(&made->Condition)) {
            newfree(made);
            made = nullptr;
        }
        if (made == nullptr) {
            *control = nullptr;
            ErrMsg("%s", JobAllocFailedText);
            return false;
        }
    }
    made->IsMainlineWaiter = false;
    made->NumJobs = 0;
    made->First = made->Last = nullptr;
    made->NextFree = nullptr;
    *control = made;
    return true;
}

void FreeJobControl(JobControl_s **control) {
    REQUIRE(control != nullptr);
    JobControl_s *released = *control;
    if (released == nullptr) return;
    REQUIRE(released->NumJobs == 0);
    MutexLock lock(controlFreeListMutex);
    released->NextFree = freeControls;
    freeControls = released;
    *control = nullptr;
}

bool ThreadPoolAddJob(ThreadPool_s *pool, ThreadFunction_pf function, void *argument, JobControl_s *control) {
    REQUIRE(pool != nullptr && function != nullptr && control != nullptr);
    ThreadPoolJob *job = allocJob(function, argument, control, pool);
    if (job == nullptr) {
        ErrMsg("%s", JobAllocFailedText);
        return false;
    }
    Thread_LockMutex(pool->Mutex);
    linkPoolTail(pool->First, pool->Last, job);
    linkBatchTail(control, job);
    control->NumJobs++;
    Thread_SignalCondition(pool->Condition);
    Thread_UnlockMutex(pool->Mutex);
    return true;
}

void ThreadPoolWait(ThreadPool_s *pool, JobControl_s *control) {
    REQUIRE(pool != nullptr && control != nullptr);
    Thread_LockMutex(pool->Mutex);
    LockedThreadPoolWait(pool, control);
    Thread_UnlockMutex(pool->Mutex);
}

void LockedThreadPoolWait(ThreadPool_s *pool, JobControl_s *control) {
    REQUIRE(pool != nullptr && control != nullptr);
    waitForBatch(pool, control, true);
}

bool MainlineInvoke(ThreadFunction_pf function, void *argument) {
    REQUIRE(function != nullptr);
    MainlineJobPool_s *mainline = MainlineJobPool;
    if (mainline == nullptr || Thread_IsMainline()) {
        function(argument);
        return true;
    }
    // Allocated before the mainline mutex is taken, so that a failure is reported without it.
    JobControl_s *control = nullptr;
    if (!InitJobControl(&control)) return false;
    ThreadPoolJob *job = allocJob(function, argument, control, nullptr);
    if (job == nullptr) {
        FreeJobControl(&control);
        ErrMsg("%s", JobAllocFailedText);
        return false;
    }
    Thread_LockMutex(mainline->Mutex);
    linkPoolTail(mainline->First, mainline->Last, job);
    linkBatchTail(control, job);
    control->NumJobs++;
    mainline->WasPosted = true;
    Thread_SignalCondition(mainline->JobPosted);
    while (control->NumJobs > 0) Thread_WaitForCondition(mainline->JobsDone, mainline->Mutex);
    FreeJobControl(&control);
    Thread_UnlockMutex(mainline->Mutex);
    return true;
}
