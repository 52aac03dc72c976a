// The lock of the system: a stack of owners saying that somebody (the system itself, or an add-on)
// is in the middle of a sequence of calls, so that deferred work (the idle queue, redraws, dialog
// changes) must wait. It is no mutex: nobody blocks on it. It is touched only on the mainline,
// under OrvUtilLockMutex when it comes through the add-on interface. A mouse button held down
// counts as a lock too, since a drag is a sequence that must not be broken into.
// Relies on: arrlist, errors, genbase (the debug switch), globals (StdError).
#pragma once

// An owner record: the add-on manager's records start with these two fields.
struct LockOwner_s {
    int Version;  // the interface version the owner was built for
    const char *Name;
};

// The system's own record, and the one for add-ons without a handle.
extern const LockOwner_s OrvanexLockOwner;
extern const LockOwner_s PreV100AddOnLockOwner;
constexpr const LockOwner_s *PreV100AddOnLockAddress = &PreV100AddOnLockOwner;

// The version of the latest owner pushed; -1 if it was unknown.
extern int OrvanexLockVersion;
// Set while an add-on API function runs that would disturb a sequence in progress.
extern bool IsProcessingDisruptiveOrvUtilFunction;

// Pushes the owner. An unknown owner pushes a null entry, sets OrvanexLockVersion to -1 and gives
// false. Known: the system's record, PreV100AddOnLockAddress, the last known owner, and every
// owner made known through RegisterLockOwner.
bool LockOrvanex(const LockOwner_s *owner);
// Removes the latest entry of that owner, wherever it stands in the stack; false if none.
bool UnlockOrvanex(const LockOwner_s *owner);
bool IsOrvanexLocked();
// The system's record while a mouse button is down, otherwise the top of the stack (possibly a
// null entry), or null when nothing is locked.
const LockOwner_s *GetCurrentLockOwner();
// The current owner's version, -1 without an owner.
int GetCurrentLockOwnerOrvanexVersion();
bool OrvanexInternalLock();
bool OrvanexInternalUnlock();
// IsProcessingDisruptiveOrvUtilFunction is set, the system is locked, and not by itself.
bool IsAddOnProcessingDisruptiveOrvUtilFunction();

// The add-on manager makes each loaded add-on's record known.
void RegisterLockOwner(const LockOwner_s *owner);
// The window layer answers whether mouse button 1, 2 or 3 is down; null restores the default,
// which answers "not down".
void MouseButtonStateRegisterCallback(bool (*isButtonDown)(int button));
// True while a callback other than the default is registered (checked before graphics start).
bool IsMouseButtonStateCallbackRegistered();
// Called after each successful unlock; the menu layer removes its clear-placeholder entry and
// clears its record of an add-on having changed the top-level menu.
extern void (*UnlockMenuCleanupHook)();

// Entries on the stack.
int OrvanexLockCount();
// At shutdown: "Mismatched Lock/Unlocks, ..." if the stack is not empty.
void ReportMismatchedLocks();
// Frees the stack and forgets the known owners.
void OrvanexLockCleanup();
