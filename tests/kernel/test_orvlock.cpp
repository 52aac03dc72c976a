// The lock stack: known and unknown owners, the version of the latest owner, unlocking an entry
// deep in the stack, a held mouse button counting as a lock, the disruptive-call rule, the debug
// trace lines and the report of mismatched locks at shutdown.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvlock.h"
#include "base/kernel/version.h"

namespace {

const LockOwner_s addOnA = {110, "Add-on A"}, addOnB = {105, "Add-on B"}, addOnC = {100, "Add-on C"};
const LockOwner_s stranger = {99, "Stranger"};
int buttonDown = 0;  // the mouse button the window layer reports as down, 0 for none
int menuCleanups = 0;

class LockTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const LockOwner_s *owner : {&addOnA, &addOnB, &addOnC}) RegisterLockOwner(owner);
    }
    void TearDown() override {
        OrvanexLockCleanup();
        MouseButtonStateRegisterCallback(nullptr);
        IsProcessingDisruptiveOrvUtilFunction = false;
        UnlockMenuCleanupHook = nullptr;
        buttonDown = 0;
    }
};

}  // namespace

TEST_F(LockTest, KnownOwnersArePushedAndUnknownOnesGiveANullEntry) {
    EXPECT_FALSE(IsOrvanexLocked());
    EXPECT_EQ(GetCurrentLockOwner(), nullptr);
    EXPECT_EQ(GetCurrentLockOwnerOrvanexVersion(), -1);
    EXPECT_TRUE(OrvanexInternalLock());
    EXPECT_EQ(OrvanexLockVersion, ORVANEXVERSION);
    EXPECT_TRUE(LockOrvanex(PreV100AddOnLockAddress));
    EXPECT_TRUE(LockOrvanex(&addOnB));
    EXPECT_EQ(OrvanexLockVersion, 105);
    EXPECT_EQ(GetCurrentLockOwner(), &addOnB);

    EXPECT_FALSE(LockOrvanex(&stranger));
    EXPECT_EQ(OrvanexLockCount(), 4);
    EXPECT_EQ(OrvanexLockVersion, -1);
    EXPECT_EQ(GetCurrentLockOwner(), nullptr);  // the null entry is on top
    EXPECT_EQ(GetCurrentLockOwnerOrvanexVersion(), -1);
    EXPECT_TRUE(IsOrvanexLocked());
    EXPECT_FALSE(UnlockOrvanex(&stranger));  // it never stood in the stack
    EXPECT_EQ(OrvanexLockCount(), 4);
}

TEST_F(LockTest, UnlockRemovesTheLatestEntryOfItsOwnerWhereverItStands) {
    menuCleanups = 0;
    UnlockMenuCleanupHook = [] { menuCleanups++; };
    for (const LockOwner_s *owner : {&addOnA, &addOnB, &addOnA, &addOnC}) ASSERT_TRUE(LockOrvanex(owner));
    EXPECT_TRUE(UnlockOrvanex(&addOnB));  // deep in the stack: those above it stay
    EXPECT_EQ(OrvanexLockCount(), 3);
    EXPECT_EQ(GetCurrentLockOwner(), &addOnC);
    EXPECT_TRUE(UnlockOrvanex(&addOnA));  // the later of the two entries of A
    EXPECT_TRUE(UnlockOrvanex(&addOnC));
    EXPECT_EQ(GetCurrentLockOwner(), &addOnA);
    EXPECT_FALSE(UnlockOrvanex(&addOnB));
    EXPECT_EQ(menuCleanups, 3);
    EXPECT_TRUE(UnlockOrvanex(&addOnA));
    EXPECT_FALSE(IsOrvanexLocked());
}

TEST_F(LockTest, AHeldMouseButtonIsALockOfTheSystem) {
    MouseButtonStateRegisterCallback([](int button) { return button == buttonDown; });
    for (int button : {1, 2, 3}) {
        buttonDown = button;
        EXPECT_TRUE(IsOrvanexLocked()) << "button " << button;
        EXPECT_EQ(OrvanexLockCount(), 0);
        EXPECT_EQ(GetCurrentLockOwner(), &OrvanexLockOwner);
        EXPECT_EQ(GetCurrentLockOwnerOrvanexVersion(), ORVANEXVERSION);
    }
    buttonDown = 4;
    EXPECT_FALSE(IsOrvanexLocked());

    // The disruptive-call rule: flag set, locked, and the owner is not the system itself.
    ASSERT_TRUE(LockOrvanex(&addOnA));
    EXPECT_FALSE(IsAddOnProcessingDisruptiveOrvUtilFunction());
    IsProcessingDisruptiveOrvUtilFunction = true;
    EXPECT_TRUE(IsAddOnProcessingDisruptiveOrvUtilFunction());
    buttonDown = 1;  // a drag makes the system the owner
    EXPECT_FALSE(IsAddOnProcessingDisruptiveOrvUtilFunction());
    buttonDown = 0;
    ASSERT_TRUE(UnlockOrvanex(&addOnA));
    EXPECT_FALSE(IsAddOnProcessingDisruptiveOrvUtilFunction());
}

TEST_F(LockTest, DebugTraceAndMismatchReport) {
    FILE *savedStdError = StdError;
    FILE *traceFile = StdError = tmpfile();
    ASSERT_NE(traceFile, nullptr);
    GeneralBase.Debug = true;
    LockOrvanex(&addOnA);
    LockOrvanex(&stranger);
    UnlockOrvanex(&addOnA);
    GeneralBase.Debug = false;
    LockOrvanex(&addOnB);  // not traced
    StdError = savedStdError;
    rewind(traceFile);
    std::string text;
    for (int c; (c = fgetc(traceFile)) != EOF;) text += static_cast<char>(c);
    fclose(traceFile);
    EXPECT_EQ(text,
              "Lock Requested,  Lock Count =   1,  Requestor = Add-on A\n"
              "Lock Requested,  Lock Count =   2,  Requestor = Unknown\n"
              "Unlock Requested, Lock Count =   1,  Requestor = Add-on A\n");

    testing::internal::CaptureStderr();
    ReportMismatchedLocks();
    std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.find("Mismatched Lock/Unlocks, LockCount = 2."), std::string::npos) << report;
    OrvanexLockCleanup();
    testing::internal::CaptureStderr();
    ReportMismatchedLocks();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
