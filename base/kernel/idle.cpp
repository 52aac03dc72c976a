// The idle queue, the idle handler and the time-out timer.
//
// The queue's ring: head and tail start at -1; an add advances the tail (with wrap from the last
// slot to 0) and stores there, a flush advances the head and takes from there, so the head always
// names the slot taken last. A slot is null while free.
#include "base/kernel/idle.h"

#include <algorithm>

#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/orvlock.h"

IdleHooks_s IdleHooks{};
TimeOut_s TimeOut;

namespace {

struct OnIdleEntry_s {
    OnIdleCallback_pf Callback;
    ArbParam_t ClientData;
};

ArrayList_s *idleQueue = nullptr;
LgIndex_t idleQueueHead = -1;
LgIndex_t idleQueueTail = -1;
LgIndex_t idleQueueCount = 0;
bool hasReportedFullQueue = false;
bool isProcessingIdleEvents = false;

LgIndex_t nextSlot(LgIndex_t slot) { return slot == OnIdleQueueSize - 1 ? 0 : slot + 1; }

bool isInteractiveViewChangeUnderway() {
    return IdleHooks.IsInteractiveViewChangeUnderway != nullptr && IdleHooks.IsInteractiveViewChangeUnderway();
}

void callHook(void (*hook)()) {
    if (hook != nullptr) hook();
}

// Undoes every open suspension of one part of the interface, however deep the nesting left behind.
void unsuspendFully(bool (*isSuspended)(), void (*unsuspend)()) {
    if (isSuspended == nullptr || unsuspend == nullptr) return;
    while (isSuspended()) unsuspend();
}

void timerJob(void *) {
    TimeOutTimer_s &timer = TimeOut.Timer;
    Thread_LockMutex(timer.Mutex);
    while (timer.IsRunning) {
        TimeOut.General = true;
        TimeOut.StatusLineFlush = true;
        Thread_TimedWaitForCondition(timer.Condition, timer.Mutex, timer.Interval);
    }
    Thread_UnlockMutex(timer.Mutex);
}

}  // namespace

bool OnIdleQueueInit() {
    REQUIRE(idleQueue == nullptr);
    idleQueue = ArrayListAlloc(OnIdleQueueSize, ArrayListType_VoidPtr, nullptr, 0);
    idleQueueHead = idleQueueTail = -1;
    idleQueueCount = 0;
    hasReportedFullQueue = false;
    return idleQueue != nullptr;
}

void OnIdleQueueCleanup() {
    if (idleQueue == nullptr) return;
    for (LgIndex_t i = 0; i < idleQueue->count; i++) newfree(ArrayListGetItem(idleQueue, i).VoidPtr);
    ArrayListDealloc(&idleQueue, nullptr, 0);
    idleQueueHead = idleQueueTail = -1;
    idleQueueCount = 0;
}

bool OnIdleQueueIsEmpty() { return idleQueueCount == 0; }
bool OnIdleQueueIsFull() { return idleQueueCount == OnIdleQueueSize; }

bool OnIdleQueueAddCallback(OnIdleCallback_pf callback, ArbParam_t clientData) {
    REQUIRE(idleQueue != nullptr && callback != nullptr);
    REQUIRE(Thread_IsMainline());
    if (OnIdleQueueIsFull()) {
        if (!hasReportedFullQueue) {
            hasReportedFullQueue = true;
            ErrMsg("Orvanex's on-idle event queue is full.\nPlease report this to the Orvanex support team "
                   "at support@orvanex.org.");
        }
        return false;
    }
    auto *entry = static_cast<OnIdleEntry_s *>(newmalloc(sizeof(OnIdleEntry_s)));
    if (entry == nullptr) return false;
    entry->Callback = callback;
    entry->ClientData = clientData;
    LgIndex_t slot = nextSlot(idleQueueTail);
    ArrayListItem_u item;
    item.VoidPtr = entry;
    if (!ArrayListSetItem(idleQueue, slot, item, nullptr, 0)) {
        newfree(entry);
        return false;
    }
    idleQueueTail = slot;
    idleQueueCount++;
    return true;
}

void OnIdleQueueFlush() {
    REQUIRE(idleQueue != nullptr);
    REQUIRE(Thread_IsMainline());
    while (!OnIdleQueueIsEmpty()) {
        idleQueueHead = nextSlot(idleQueueHead);
        auto *entry = static_cast<OnIdleEntry_s *>(ArrayListGetItem(idleQueue, idleQueueHead).VoidPtr);
        CHECK(entry != nullptr);
        ArrayListItem_u empty;
        empty.VoidPtr = nullptr;
        ArrayListSetItem(idleQueue, idleQueueHead, empty, nullptr, 0);
        idleQueueCount--;
        // The entry is out of the ring before its callback runs, so the callback may add freely.
        entry->Callback(entry->ClientData);
        newfree(entry);
    }
}

void ProcessIdleEvents() {
    if (isProcessingIdleEvents) return;
    isProcessingIdleEvents = true;

    if (!IsOrvanexLocked() && !isInteractiveViewChangeUnderway()) {
        // Batch mode suspends drawing for the whole run; that suspension is not left over.
        if (!InBatchMode)
            while (GraphicsSuspended > 0) GraphicsSuspended--;
        unsuspendFully(IdleHooks.InterfaceIsSuspended, IdleHooks.UnsuspendInterface);
        unsuspendFully(IdleHooks.StatusLineIsSuspended, IdleHooks.UnsuspendStatusLine);
        unsuspendFully(IdleHooks.WorkAreaIsSuspended, IdleHooks.UnsuspendWorkArea);
        // A wait on an empty batch runs the jobs workers have posted for the mainline.
        JobControl_s *control = nullptr;
        if (StandardThreadPool != nullptr && InitJobControl(&control)) {
            ThreadPoolWait(StandardThreadPool, control);
            FreeJobControl(&control);
        }
    }
    if (!IsOrvanexLocked() && idleQueue != nullptr && !OnIdleQueueIsEmpty()) OnIdleQueueFlush();
    if (!isInteractiveViewChangeUnderway()) callHook(IdleHooks.FlushRedraw);
    callHook(IdleHooks.FlushInterface);
    if (!IsOrvanexLocked()) {
        if (IdleHooks.PrintPreviewIsOpen != nullptr && IdleHooks.PrintPreviewIsOpen())
            callHook(IdleHooks.UpdatePrintPreviewSensitivities);
        else
            callHook(IdleHooks.UpdateRedrawButtonSensitivity);
    }
    callHook(IdleHooks.FlushExampleDrawAreas);
    callHook(IdleHooks.UpdateMenuAccelerators);
    if (!isInteractiveViewChangeUnderway()) callHook(IdleHooks.CheckToWarnForAddOnViolation);

    isProcessingIdleEvents = false;
    Interrupted = false;
}

void InitTimeOutFacility() {
    TimeOut.General = false;
    TimeOut.StatusLineFlush = false;
}

bool StartTimeOutTimer() {
    TimeOutTimer_s &timer = TimeOut.Timer;
    REQUIRE(timer.Pool == nullptr);
    timer.Interval = std::max(1, GeneralBase.InterruptCheckingFrequency);
    timer.IsRunning = true;
    bool ok = Thread_InitMutex(&timer.Mutex) && Thread_InitCondition(&timer.Condition);
    if (ok) ok = (timer.Pool = ThreadPoolCreate()) != nullptr;
    if (ok) ok = ThreadPoolCreateThread(timer.Pool) && InitJobControl(&timer.JobControl);
    if (ok) ok = ThreadPoolAddJob(timer.Pool, timerJob, nullptr, timer.JobControl);
    if (!ok) {
        FreeJobControl(&timer.JobControl);
        ThreadPoolFree(&timer.Pool);
        Thread_FreeCondition(&timer.Condition);
        Thread_FreeMutex(&timer.Mutex);
        timer.IsRunning = false;
    }
    return ok;
}

void MopupTimeOutFacility() {
    TimeOutTimer_s &timer = TimeOut.Timer;
    if (timer.Pool == nullptr) return;
    Thread_LockMutex(timer.Mutex);
    timer.IsRunning = false;
    Thread_SignalCondition(timer.Condition);
    Thread_UnlockMutex(timer.Mutex);
    ThreadPoolWait(timer.Pool, timer.JobControl);
    FreeJobControl(&timer.JobControl);
    ThreadPoolFree(&timer.Pool);
    Thread_FreeCondition(&timer.Condition);
    Thread_FreeMutex(&timer.Mutex);
}

void HandleGeneralTimeOut() {
    TimeOut.General = false;
    if (GrCheckInterruptHook != nullptr) GrCheckInterruptHook();
}

void HandleStatusLineFlushTimeOut() { TimeOut.StatusLineFlush = false; }
