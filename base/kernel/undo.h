// Undo: operations bracket their changes in command blocks so that a later undo can take them
// back as one step. Until undo is built the calls keep their places in the operations and record
// nothing; IsPerformingUndo is always false.
#pragma once

enum UndoBlockKind_e {
    UndoBlock_View = 4,
    UndoBlock_ZoneAndMapStyle = 6,
    UndoBlock_DataAlteration = 8,
    UndoBlock_DataStructure = 9,
    UndoBlock_FrameBackground = 10,
    UndoBlock_OtherStyle = 11
};

bool UndoStateInitialize();
void UndoStateInvalidateUndo();
void BeginUndoCommandBlock(UndoBlockKind_e kind);
void EndUndoCommandBlock(bool isOk);
void UndoStateSuspendRecording();
void UndoStateUnsuspendRecording();
bool IsPerformingUndo();
