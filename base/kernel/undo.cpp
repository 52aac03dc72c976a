#include "base/kernel/undo.h"

namespace {
int openBlocks = 0;      // nesting of command blocks
int suspendedLevel = 0;  // nesting of suspensions
}  // namespace

bool UndoStateInitialize() { return true; }
void UndoStateInvalidateUndo() {}
void BeginUndoCommandBlock(UndoBlockKind_e) { openBlocks++; }
void EndUndoCommandBlock(bool) {
    if (openBlocks > 0) openBlocks--;
}
void UndoStateSuspendRecording() { suspendedLevel++; }
void UndoStateUnsuspendRecording() {
    if (suspendedLevel > 0) suspendedLevel--;
}
bool IsPerformingUndo() { return false; }
