// Macro recording: actions and set-value commands write the command that repeats them while a
// recording is open. Recording is not built yet: IsRecording stays false and the helpers, which
// the operations already call at the right places, write nothing.
#pragma once

#include "base/kernel/types.h"

bool IsRecording();
void StopMacroRecording();
void RecordSimpleActionCommand(int action);
void RecordActionInt(const char *text, LgIndex_t value, int row);
void RecordActionDouble(const char *text, double value, int row);
void RecordFileIO(const char *text, int action, const char *fileName, bool write);
void RecordSetValueCommand(const int path[7], ArbParam_t argValue, double doubleValue, int assignOp);
