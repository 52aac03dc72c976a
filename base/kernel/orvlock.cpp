// The lock stack of owners. Entries are owner record addresses, null for an owner that was not
// known; the last pushed is at the end. Owners are compared by address, so two locks by one owner
// are two entries and each unlock removes the latest of them.
#include "base/kernel/orvlock.h"

#include <cstdio>

#include "base/kernel/arrlist.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/version.h"

// Add-ons of the handle-less lock predate the version-100 interface; 75 is what their old form of
// registration records.
const LockOwner_s OrvanexLockOwner = {ORVANEXVERSION, "Orvanex"};
const LockOwner_s PreV100AddOnLockOwner = {75, "Pre-V100 Add-on"};

int OrvanexLockVersion = -1;
bool IsProcessingDisruptiveOrvUtilFunction = false;
void (*UnlockMenuCleanupHook)() = nullptr;

namespace {

ArrayList_s *lockStack = nullptr;
ArrayList_s *knownOwners = nullptr;
const LockOwner_s *lastKnownOwner = nullptr;
bool (*isMouseButtonDown)(int button) = nullptr;

bool listHolds(const ArrayList_s *list, const LockOwner_s *owner) {
    if (list == nullptr) return false;
    for (LgIndex_t i = 0; i < list->count; i++)
        if (ArrayListGetItem(list, i).VoidPtr == owner) return true;
    return false;
}

bool isKnownOwner(const LockOwner_s *owner) {
    if (owner == nullptr) return false;
    return owner == &OrvanexLockOwner || owner == PreV100AddOnLockAddress || owner == lastKnownOwner ||
           listHolds(knownOwners, owner);
}

bool isAnyMouseButtonDown() {
    if (isMouseButtonDown == nullptr) return false;
    for (int button = 1; button <= 3; button++)
        if (isMouseButtonDown(button)) return true;
    return false;
}

// An unknown owner is not read: its address may not be a record at all.
void traceLock(const char *format, const LockOwner_s *knownOwner) {
    if (!GeneralBase.Debug) return;
    const char *name = (knownOwner != nullptr && knownOwner->Name != nullptr) ? knownOwner->Name : "Unknown";
    fprintf(StdError, format, OrvanexLockCount(), name);
    fflush(StdError);
}

}  // namespace

bool LockOrvanex(const LockOwner_s *owner) {
    if (lockStack == nullptr) lockStack = ArrayListAlloc(8, ArrayListType_VoidPtr, nullptr, 0);
    if (lockStack == nullptr) return false;
    bool isKnown = isKnownOwner(owner);
    ArrayListItem_u entry;
    entry.VoidPtr = isKnown ? const_cast<LockOwner_s *>(owner) : nullptr;
    if (!ArrayListAppendItem(lockStack, entry)) return false;
    if (isKnown) {
        lastKnownOwner = owner;
        OrvanexLockVersion = owner->Version;
    } else {
        OrvanexLockVersion = -1;
    }
    traceLock("Lock Requested,  Lock Count = %3d,  Requestor = %s\n", isKnown ? owner : nullptr);
    return isKnown;
}

bool UnlockOrvanex(const LockOwner_s *owner) {
    if (lockStack == nullptr) return false;
    for (LgIndex_t i = lockStack->count - 1; i >= 0; i--) {
        if (ArrayListGetItem(lockStack, i).VoidPtr != owner) continue;
        ArrayListDeleteItem(lockStack, i, nullptr, 0);
        traceLock("Unlock Requested, Lock Count = %3d,  Requestor = %s\n", owner);
        if (UnlockMenuCleanupHook != nullptr) UnlockMenuCleanupHook();
        return true;
    }
    return false;
}

bool IsOrvanexLocked() { return OrvanexLockCount() > 0 || isAnyMouseButtonDown(); }

const LockOwner_s *GetCurrentLockOwner() {
    if (isAnyMouseButtonDown()) return &OrvanexLockOwner;
    if (OrvanexLockCount() == 0) return nullptr;
    return static_cast<const LockOwner_s *>(ArrayListGetItem(lockStack, lockStack->count - 1).VoidPtr);
}

int GetCurrentLockOwnerOrvanexVersion() {
    const LockOwner_s *owner = GetCurrentLockOwner();
    return owner != nullptr ? owner->Version : -1;
}

bool OrvanexInternalLock() { return LockOrvanex(&OrvanexLockOwner); }
bool OrvanexInternalUnlock() { return UnlockOrvanex(&OrvanexLockOwner); }

bool IsAddOnProcessingDisruptiveOrvUtilFunction() {
    return IsProcessingDisruptiveOrvUtilFunction && IsOrvanexLocked() && GetCurrentLockOwner() != &OrvanexLockOwner;
}

void RegisterLockOwner(const LockOwner_s *owner) {
    REQUIRE(owner != nullptr);
    if (listHolds(knownOwners, owner)) return;
    if (knownOwners == nullptr) knownOwners = ArrayListAlloc(8, ArrayListType_VoidPtr, nullptr, 0);
    if (knownOwners == nullptr) return;
    ArrayListItem_u entry;
    entry.VoidPtr = const_cast<LockOwner_s *>(owner);
    ArrayListAppendItem(knownOwners, entry);
}

void MouseButtonStateRegisterCallback(bool (*isButtonDown)(int button)) { isMouseButtonDown = isButtonDown; }
bool IsMouseButtonStateCallbackRegistered() { return isMouseButtonDown != nullptr; }

int OrvanexLockCount() { return lockStack != nullptr ? lockStack->count : 0; }

void ReportMismatchedLocks() {
    int count = OrvanexLockCount();
    if (count > 0) ErrMsg("Mismatched Lock/Unlocks, LockCount = %d. Possible Addon Locking problem.", count);
}

void OrvanexLockCleanup() {
    ArrayListDealloc(&lockStack, nullptr, 0);
    ArrayListDealloc(&knownOwners, nullptr, 0);
    lastKnownOwner = nullptr;
    OrvanexLockVersion = -1;
}
