// Threads and the pool: the mainline record, timed waits and the deadline carry, the processor
// limit, worker start and stop, exact sums over many jobs, a job waiting on its sub-jobs, the
// mainline serving MainlineInvoke while it waits (a long poll interval makes a lost wake-up show
// as a time-out), free-list recycling and the release of every allocation.
#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"

#ifdef ORVANEX_THREAD_TESTS_STANDALONE
// The ThreadSanitizer build links the kernel sources without the start-up module, which otherwise
// provides the assertion handler.
void OrvanexAssertFailed(const char *kind, const char *expression, const char *file, int line) {
    fprintf(stderr, "Assertion failure (%s): %s\n    at %s:%d\n", kind, expression, file, line);
    abort();
}
#endif

namespace {

using Clock = std::chrono::steady_clock;

long msSince(Clock::time_point start) {
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

int numThreads(ThreadPool_s *pool) {
    MutexLock lock(pool->Mutex);
    return pool->NumThreads;
}

bool mainlineHasPostedJob() {
    MutexLock lock(MainlineJobPool->Mutex);
    return MainlineJobPool->First != nullptr;
}

struct SumRecord {
    long begin, end, sum;
    int runs;
    pthread_t thread;
};

void sumSquares(void *argument) {
    auto *record = static_cast<SumRecord *>(argument);
    for (long i = record->begin; i < record->end; i++) record->sum += i * i;
    record->runs++;
    record->thread = pthread_self();
}

long squaresBelow(long n) { return (n - 1) * n * (2 * n - 1) / 6; }

// Runs a batch of `count` jobs summing i*i over [0, count * 100) and returns the records.
std::vector<SumRecord> runSumBatch(ThreadPool_s *pool, long count) {
    std::vector<SumRecord> records(count);
    JobControl_s *control = nullptr;
    EXPECT_TRUE(InitJobControl(&control));
    for (long j = 0; j < count; j++) {
        records[j] = {j * 100, j * 100 + 100, 0, 0, {}};
        ThreadPoolAddJob(pool, sumSquares, &records[j], control);
    }
    ThreadPoolWait(pool, control);
    EXPECT_EQ(control->NumJobs, 0);
    FreeJobControl(&control);
    return records;
}

class ThreadPoolTest : public ::testing::Test {
  protected:
    void SetUp() override {
        savedGeneral = GeneralBase;
        ASSERT_TRUE(Thread_Init() && ThreadPoolInit());
    }
    void TearDown() override {
        ThreadPoolFree(&pool);
        ThreadPoolCleanup();
        Thread_Cleanup();
        GeneralBase = savedGeneral;
    }
    void makePool(int workers) {
        pool = ThreadPoolCreate();
        ASSERT_NE(pool, nullptr);
        for (int i = 0; i < workers; i++) ASSERT_TRUE(ThreadPoolCreateThread(pool));
    }
    GeneralBase_s savedGeneral;
    ThreadPool_s *pool = nullptr;
};

}  // namespace

TEST(ThreadLayer, MainlineRecordAndGlobalMutexes) {
    auto isMainlineElsewhere = [] {
        bool result = false;
        std::thread([&] { result = Thread_IsMainline(); }).join();
        return result;
    };
    EXPECT_TRUE(isMainlineElsewhere());  // before Thread_Init every thread counts as the mainline
    ASSERT_TRUE(Thread_Init());
    EXPECT_TRUE(Thread_ThreadingIsInitialized() && Thread_IsMainline());
    EXPECT_FALSE(isMainlineElsewhere());
    EXPECT_TRUE(StdOutMutex != nullptr && ZoneOptInfoMutex != nullptr);
    Thread_Cleanup();
    EXPECT_FALSE(Thread_ThreadingIsInitialized());
    EXPECT_TRUE(isMainlineElsewhere());
}

TEST_F(ThreadPoolTest, TimedWaitTimesOutSignalsAndCarriesNanoseconds) {
    Mutex_a mutex = nullptr;
    Condition_a condition = nullptr;
    ASSERT_TRUE(Thread_InitMutex(&mutex) && Thread_InitCondition(&condition));
    Thread_LockMutex(mutex);
    auto start = Clock::now();
    EXPECT_EQ(Thread_TimedWaitForCondition(condition, mutex, 80), 1);
    EXPECT_GE(msSince(start), 79);
    EXPECT_LT(msSince(start), 1000);

    // Start just before a whole second of the real-time clock, so that the deadline's nanoseconds
    // overflow; without the carry the wait fails at once with 255.
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_nsec < 950000000L) {
        timespec pause{0, 950000000L - now.tv_nsec};
        nanosleep(&pause, nullptr);
    }
    start = Clock::now();
    EXPECT_EQ(Thread_TimedWaitForCondition(condition, mutex, 70), 1);
    EXPECT_GE(msSince(start), 69);

    bool isSignalled = false;
    std::thread signaller([&] {
        SleepMS(20);
        MutexLock lock(mutex);
        isSignalled = true;
        Thread_SignalCondition(condition);
    });
    int result = 1;
    while (!isSignalled) result = Thread_TimedWaitForCondition(condition, mutex, 5000);
    EXPECT_EQ(result, 0);
    Thread_UnlockMutex(mutex);
    signaller.join();
    Thread_FreeCondition(&condition);
    Thread_FreeMutex(&mutex);
}

TEST_F(ThreadPoolTest, AvailableProcessorsAreCappedAtEight) {
    const std::pair<int, int> cases[] = {{20, 8}, {9, 8}, {8, 8}, {3, 3}, {1, 1}};
    for (auto [setting, expected] : cases) {
        GeneralBase.MaxAvailableProcessors = setting;
        EXPECT_EQ(GetNumAvailableProcessors(), expected) << "MAXAVAILABLEPROCESSORS " << setting;
    }
    GeneralBase.MaxAvailableProcessors = 0;
    EXPECT_EQ(GetNumAvailableProcessors(), static_cast<int>(std::clamp(sysconf(_SC_NPROCESSORS_ONLN), 1L, 8L)));
}

TEST_F(ThreadPoolTest, WorkersAreCountedWhenStartedAndStopped) {
    for (int round = 0; round < 100; round++) {
        makePool(0);
        for (int i = 1; i <= 3; i++) {
            ASSERT_TRUE(ThreadPoolCreateThread(pool));
            ASSERT_EQ(numThreads(pool), i);
        }
        ThreadPoolDestroyThreads(pool, 2);
        ASSERT_EQ(numThreads(pool), 1);
        ThreadPoolDestroyThreads(pool, 5);  // more than are alive: stops the one left
        ASSERT_EQ(numThreads(pool), 0);
        ASSERT_TRUE(ThreadPoolCreateThread(pool));
        ThreadPoolFree(&pool);
        ASSERT_EQ(pool, nullptr);
    }
    GeneralBase.MaxAvailableProcessors = 3;
    StandardThreadPool = ThreadPoolCreate();
    ASSERT_TRUE(ThreadPoolCreateStandardWorkers());
    EXPECT_EQ(numThreads(StandardThreadPool), 3);
    ThreadPoolFree(&StandardThreadPool);
}

TEST_F(ThreadPoolTest, ManyJobsSumExactlyAndOnlyAPoolWithoutWorkersUsesTheMainline) {
    makePool(4);
    for (int round = 0; round < 300; round++) {
        long total = 0;
        for (const SumRecord &record : runSumBatch(pool, 64)) {
            ASSERT_EQ(record.runs, 1);
            ASSERT_FALSE(pthread_equal(record.thread, pthread_self()));  // the mainline only waits
            total += record.sum;
        }
        ASSERT_EQ(total, squaresBelow(6400)) << "round " << round;
    }
    ThreadPoolFree(&pool);
    makePool(0);  // nobody else would run them
    long total = 0;
    for (const SumRecord &record : runSumBatch(pool, 10)) {
        EXPECT_TRUE(pthread_equal(record.thread, pthread_self()));
        total += record.sum;
    }
    EXPECT_EQ(total, squaresBelow(1000));
}

namespace {

// A job that waits on a batch of eight sub-jobs it made itself.
struct OuterJob {
    ThreadPool_s *pool;
    pthread_t thread;
    SumRecord parts[8];
    long sum;
};

void runOuter(void *argument) {
    auto *outer = static_cast<OuterJob *>(argument);
    outer->thread = pthread_self();
    JobControl_s *control = nullptr;
    if (!InitJobControl(&control)) return;
    for (long i = 0; i < 8; i++) {
        outer->parts[i] = {i * 100, i * 100 + 100, 0, 0, {}};
        ThreadPoolAddJob(outer->pool, sumSquares, &outer->parts[i], control);
    }
    ThreadPoolWait(outer->pool, control);
    FreeJobControl(&control);
    for (const SumRecord &part : outer->parts) outer->sum += part.sum;
}

}  // namespace

TEST_F(ThreadPoolTest, JobWaitingOnItsOwnSubJobsCompletesWithOneWorker) {
    makePool(1);
    for (int round = 0; round < 200; round++) {
        OuterJob outers[3] = {};
        JobControl_s *control = nullptr;
        ASSERT_TRUE(InitJobControl(&control));
        for (OuterJob &outer : outers) {
            outer.pool = pool;
            ThreadPoolAddJob(pool, runOuter, &outer, control);
        }
        ThreadPoolWait(pool, control);
        FreeJobControl(&control);
        for (const OuterJob &outer : outers) {
            ASSERT_EQ(outer.sum, squaresBelow(800));
            // The only worker runs the outer job, so the waiter ran every part itself.
            for (const SumRecord &part : outer.parts) ASSERT_TRUE(pthread_equal(part.thread, outer.thread));
        }
    }
}

namespace {

int mainlineCounter = 0;  // touched only on the mainline: ThreadSanitizer reports any other access
std::atomic<int> invocationsOffMainline{0};

void countOnMainline(void *) {
    if (!Thread_IsMainline()) invocationsOffMainline++;
    mainlineCounter++;
}

void invokeOnMainline(void *isRunning) {
    if (isRunning != nullptr) *static_cast<std::atomic<bool> *>(isRunning) = true;
    MainlineInvoke(countOnMainline, nullptr);
}

}  // namespace

TEST_F(ThreadPoolTest, WorkersReachTheMainlineWhileItWaitsWithoutDeadlock) {
    GeneralBase.InterruptCheckingFrequency = 10000;  // a lost wake-up would cost 10 s
    makePool(2);
    mainlineCounter = 0;
    invocationsOffMainline = 0;
    auto start = Clock::now();
    for (int round = 0; round < 300; round++) {
        JobControl_s *control = nullptr;
        ASSERT_TRUE(InitJobControl(&control));
        for (int j = 0; j < 4; j++) ThreadPoolAddJob(pool, invokeOnMainline, nullptr, control);
        ThreadPoolWait(pool, control);
        FreeJobControl(&control);
        ASSERT_EQ(mainlineCounter, 4 * (round + 1));
    }
    // Freeing the pool while a worker is blocked in MainlineInvoke: the stop serves it.
    for (int round = 0; round < 100; round++) {
        std::atomic<bool> isRunning{false};
        JobControl_s *control = nullptr;
        ASSERT_TRUE(InitJobControl(&control));
        ThreadPoolAddJob(pool, invokeOnMainline, &isRunning, control);
        while (!isRunning) std::this_thread::yield();
        ThreadPoolFree(&pool);
        ASSERT_EQ(control->NumJobs, 0);
        FreeJobControl(&control);
        makePool(2);
    }
    EXPECT_EQ(mainlineCounter, 1300);
    EXPECT_EQ(invocationsOffMainline.load(), 0);
    EXPECT_LT(msSince(start), 8000);
}

TEST_F(ThreadPoolTest, MainlineWaitOnEmptyBatchRunsPostedJobsAndReturnsAtOnce) {
    GeneralBase.InterruptCheckingFrequency = 2000;
    makePool(1);
    mainlineCounter = 0;
    for (int round = 0; round < 200; round++) {
        std::thread invoker([] { MainlineInvoke(countOnMainline, nullptr); });
        while (!mainlineHasPostedJob()) std::this_thread::yield();
        JobControl_s *control = nullptr;
        ASSERT_TRUE(InitJobControl(&control));
        auto start = Clock::now();
        ThreadPoolWait(pool, control);
        ASSERT_LT(msSince(start), 1000);  // no poll interval was sat out
        ASSERT_EQ(mainlineCounter, round + 1);
        FreeJobControl(&control);
        invoker.join();
    }
    // On the mainline the call goes straight through and posts nothing.
    EXPECT_TRUE(MainlineInvoke(countOnMainline, nullptr));
    EXPECT_EQ(mainlineCounter, 201);
    EXPECT_FALSE(mainlineHasPostedJob());
    // Without the mainline system any thread calls straight through.
    ThreadPoolFree(&pool);
    ThreadPoolCleanup();
    pthread_t ranOn{};
    std::thread other([&] {
        MainlineInvoke([](void *thread) { *static_cast<pthread_t *>(thread) = pthread_self(); }, &ranOn);
        EXPECT_TRUE(pthread_equal(ranOn, pthread_self()));
    });
    other.join();
    ASSERT_TRUE(ThreadPoolInit());
}

TEST(ThreadPoolMemory, ControlsAndJobsAreRecycledAndAllFreedAtCleanup) {
    long baseline = AllocActiveCount();
    ASSERT_TRUE(Thread_Init() && ThreadPoolInit());
    JobControl_s *control = nullptr;
    ASSERT_TRUE(InitJobControl(&control));
    JobControl_s *firstAddress = control;
    control->IsMainlineWaiter = true;
    FreeJobControl(&control);
    EXPECT_EQ(control, nullptr);
    ASSERT_TRUE(InitJobControl(&control));
    EXPECT_EQ(control, firstAddress);
    EXPECT_FALSE(control->IsMainlineWaiter);
    FreeJobControl(&control);

    // Without workers all jobs of a batch exist at once, so every round needs the same records:
    // the first stocks the free lists, later rounds allocate nothing.
    ThreadPool_s *inlinePool = ThreadPoolCreate();
    runSumBatch(inlinePool, 50);
    long afterFirst = AllocActiveCount();
    runSumBatch(inlinePool, 50);
    EXPECT_EQ(AllocActiveCount(), afterFirst);

    ThreadPool_s *pool = ThreadPoolCreate();
    ASSERT_TRUE(ThreadPoolCreateThread(pool) && ThreadPoolCreateThread(pool));
    runSumBatch(pool, 50);
    ThreadPoolFree(&inlinePool);
    ThreadPoolFree(&pool);
    ThreadPoolCleanup();
    Thread_Cleanup();
    EXPECT_EQ(AllocActiveCount(), baseline);
}
