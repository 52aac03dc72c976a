// Macro recording: actions and set-value commands write the command that repeats them while a
// recording is open. A macro's action is recorded as the compressed command it ran
// (RecordCompressedCommand, called by the action dispatch) and a style change by its path
// (SetValue7); the Record* builders are for actions started from the interface, which has none
// yet. Recording is not built yet: IsRecording stays false and the helpers write nothing.
#pragma once

#include "base/kernel/types.h"

bool IsRecording();
void StopMacroRecording();
void RecordSimpleActionCommand(int action);
void RecordActionInt(const char *text, LgIndex_t value, int row);
void RecordActionDouble(const char *text, double value, int row);
void RecordFileIO(const char *text, int action, const char *fileName, bool write);
// A command of a running macro, compressed, with its raw data (or null).
void RecordCompressedCommand(const char *command, const char *rawData);
void RecordSetValueCommand(const int path[7], ArbParam_t argValue, double doubleValue, int assignOp);
