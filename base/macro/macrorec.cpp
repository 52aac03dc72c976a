#include "base/macro/macrorec.h"

bool IsRecording() { return false; }
void StopMacroRecording() {}
void RecordSimpleActionCommand(int) {}
void RecordActionInt(const char *, LgIndex_t, int) {}
void RecordActionDouble(const char *, double, int) {}
void RecordFileIO(const char *, int, const char *, bool) {}
void RecordSetValueCommand(const int[7], ArbParam_t, double, int) {}
void RecordCompressedCommand(const char *, const char *) {}
