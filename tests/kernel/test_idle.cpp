// The idle queue (exactly 1000 entries, the once-per-run full message, wrap with first-in,
// first-out order, entries added during a flush), the idle handler's steps, their order and their
// conditions, and the time-out timer's flags and prompt stop.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/idle.h"
#include "base/kernel/orvlock.h"
#include "base/kernel/strutil.h"

namespace {

using Clock = std::chrono::steady_clock;

long msSince(Clock::time_point start) {
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

std::vector<ArbParam_t> ran;
std::string trace;
int interfaceSuspensions = 0, interruptPolls = 0;
bool viewChangeUnderway = false, printPreviewOpen = false;

void record(ArbParam_t clientData) { ran.push_back(clientData); }

void addsAnother(ArbParam_t clientData) {
    ran.push_back(clientData);
    if (clientData < 105) OnIdleQueueAddCallback(addsAnother, clientData + 1);
}

int occurrences(const std::string &text, const std::string &piece) {
    int count = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) count++;
    return count;
}

class IdleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        savedGeneral = GeneralBase;
        ran.clear();
        trace.clear();
        FormatStringBufferCleanup();  // a report keeps a format buffer; it is not the queue's
        baseline = AllocActiveCount();
        ASSERT_TRUE(Thread_Init() && ThreadPoolInit() && OnIdleQueueInit());
    }
    void TearDown() override {
        OnIdleQueueCleanup();  // frees entries that never ran
        ThreadPoolFree(&StandardThreadPool);
        ThreadPoolCleanup();
        Thread_Cleanup();
        OrvanexLockCleanup();
        IdleHooks = IdleHooks_s{};
        GrCheckInterruptHook = nullptr;
        GeneralBase = savedGeneral;
        InBatchMode = false;
        Interrupted = false;
        GraphicsSuspended = 0;
        FormatStringBufferCleanup();
        EXPECT_EQ(AllocActiveCount(), baseline);
    }
    GeneralBase_s savedGeneral;
    long baseline = 0;
};

}  // namespace

TEST_F(IdleTest, TheThousandAndFirstEntryIsRefusedAndReportedOnce) {
    for (int i = 0; i < 1000; i++) ASSERT_TRUE(OnIdleQueueAddCallback(record, i));
    EXPECT_TRUE(OnIdleQueueIsFull());
    testing::internal::CaptureStderr();
    for (int i = 0; i < 5; i++) EXPECT_FALSE(OnIdleQueueAddCallback(record, -1));
    OnIdleQueueFlush();
    for (int i = 0; i < 1000; i++) ASSERT_TRUE(OnIdleQueueAddCallback(record, i));
    EXPECT_FALSE(OnIdleQueueAddCallback(record, -1));  // full again in the same run: no second message
    std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(occurrences(errors, "Orvanex's on-idle event queue is full."), 1) << errors;
    EXPECT_EQ(occurrences(errors, "support@orvanex.org"), 1) << errors;
    OnIdleQueueFlush();
    ASSERT_EQ(ran.size(), 2000u);
    for (size_t i = 0; i < ran.size(); i++) ASSERT_EQ(ran[i], static_cast<ArbParam_t>(i % 1000));
    for (int i = 0; i < 10; i++) OnIdleQueueAddCallback(record, i);  // left for cleanup to free
}

TEST_F(IdleTest, RingWrapsKeepsOrderAndRunsEntriesAddedDuringAFlush) {
    std::vector<ArbParam_t> expected;
    ArbParam_t next = 0;
    auto add = [&](int count) {
        for (int i = 0; i < count; i++, next++) {
            ASSERT_TRUE(OnIdleQueueAddCallback(record, next));
            expected.push_back(next);
        }
    };
    for (int count : {1000, 1000, 1000, 700}) {
        add(count);
        OnIdleQueueFlush();
    }
    add(700);  // slots 700..999, then 0..399
    add(300);  // exactly full across the wrap
    testing::internal::CaptureStderr();
    EXPECT_FALSE(OnIdleQueueAddCallback(record, -1));
    testing::internal::GetCapturedStderr();
    OnIdleQueueFlush();
    EXPECT_EQ(ran, expected);

    ran.clear();
    OnIdleQueueAddCallback(addsAnother, 100);
    OnIdleQueueAddCallback(record, 1);
    OnIdleQueueAddCallback(record, 2);
    OnIdleQueueFlush();
    EXPECT_EQ(ran, (std::vector<ArbParam_t>{100, 1, 2, 101, 102, 103, 104, 105}));
    EXPECT_TRUE(OnIdleQueueIsEmpty());
}

TEST_F(IdleTest, IdleHandlerRunsItsStepsInOrderUnderTheirConditions) {
    IdleHooks.IsInteractiveViewChangeUnderway = [] { return viewChangeUnderway; };
    IdleHooks.InterfaceIsSuspended = [] { return interfaceSuspensions > 0; };
    IdleHooks.UnsuspendInterface = [] { interfaceSuspensions--, trace += "ui "; };
    IdleHooks.FlushRedraw = [] { trace += "redraw "; };
    IdleHooks.FlushInterface = [] {
        trace += "interface ";
        ProcessIdleEvents();  // re-entry returns at once
    };
    IdleHooks.PrintPreviewIsOpen = [] { return printPreviewOpen; };
    IdleHooks.UpdatePrintPreviewSensitivities = [] { trace += "preview "; };
    IdleHooks.UpdateRedrawButtonSensitivity = [] { trace += "button "; };
    IdleHooks.FlushExampleDrawAreas = [] { trace += "examples "; };
    IdleHooks.UpdateMenuAccelerators = [] { trace += "accelerators "; };
    IdleHooks.CheckToWarnForAddOnViolation = [] { trace += "violation "; };
    auto queueEntry = [] { OnIdleQueueAddCallback([](ArbParam_t) { trace += "queue "; }, 0); };
    viewChangeUnderway = printPreviewOpen = false;
    interfaceSuspensions = 2;
    GraphicsSuspended = 3;
    Interrupted = true;
    queueEntry();
    ProcessIdleEvents();
    EXPECT_EQ(trace, "ui ui queue redraw interface button examples accelerators violation ");
    EXPECT_EQ(GraphicsSuspended, 0);
    EXPECT_FALSE(Interrupted);

    // Locked: nothing is unsuspended, the queue waits, sensitivities are left alone.
    trace.clear();
    interfaceSuspensions = GraphicsSuspended = 1;
    queueEntry();
    ASSERT_TRUE(OrvanexInternalLock());
    ProcessIdleEvents();
    EXPECT_EQ(trace, "redraw interface examples accelerators violation ");
    EXPECT_EQ(interfaceSuspensions + GraphicsSuspended, 2);
    ASSERT_TRUE(OrvanexInternalUnlock());

    // A view change under way: no unsuspending, no redraw, no add-on check; the queue runs.
    trace.clear();
    viewChangeUnderway = printPreviewOpen = true;
    ProcessIdleEvents();
    EXPECT_EQ(trace, "queue interface preview examples accelerators ");
    viewChangeUnderway = false;

    // Batch mode keeps the suspension of drawing it made for the whole run.
    InBatchMode = true;
    ProcessIdleEvents();
    EXPECT_EQ(GraphicsSuspended, 1);
    EXPECT_EQ(interfaceSuspensions, 0);

    // The handler's wait on the pool serves what workers posted for the mainline.
    StandardThreadPool = ThreadPoolCreate();
    for (int round = 0; round < 100; round++) {
        bool hasRun = false;
        std::thread worker([&] { MainlineInvoke([](void *flag) { *static_cast<bool *>(flag) = true; }, &hasRun); });
        for (bool posted = false; !posted;) {
            MutexLock lock(MainlineJobPool->Mutex);
            posted = MainlineJobPool->First != nullptr;
        }
        ProcessIdleEvents();
        EXPECT_TRUE(hasRun);
        worker.join();
    }
}

TEST_F(IdleTest, TimerSetsTheFlagsOncePerIntervalAndStopsPromptly) {
    interruptPolls = 0;
    GrCheckInterruptHook = [] { interruptPolls++; };
    TimeOut.General = TimeOut.StatusLineFlush = true;
    InitTimeOutFacility();
    EXPECT_FALSE(TimeOut.General || TimeOut.StatusLineFlush);

    GeneralBase.InterruptCheckingFrequency = 200;
    ASSERT_TRUE(StartTimeOutTimer());
    auto start = Clock::now();
    while (!TimeOut.General && msSince(start) < 2000) SleepMS(1);
    HandleGeneralTimeOut();
    EXPECT_FALSE(TimeOut.General);
    EXPECT_TRUE(TimeOut.StatusLineFlush);  // each flag has its own handler
    EXPECT_EQ(interruptPolls, 1);
    HandleStatusLineFlushTimeOut();
    EXPECT_FALSE(TimeOut.StatusLineFlush);
    start = Clock::now();
    while (!TimeOut.General && msSince(start) < 2000) SleepMS(1);
    EXPECT_TRUE(TimeOut.StatusLineFlush);
    EXPECT_GE(msSince(start), 100);  // about one interval after the flag was seen and cleared
    EXPECT_LT(msSince(start), 1000);
    MopupTimeOutFacility();

    // Stopping signals the timer instead of sitting out its interval.
    GeneralBase.InterruptCheckingFrequency = 5000;
    ASSERT_TRUE(StartTimeOutTimer());
    SleepMS(20);
    start = Clock::now();
    MopupTimeOutFacility();
    EXPECT_LT(msSince(start), 1000);
    EXPECT_EQ(TimeOut.Timer.Pool, nullptr);
}
