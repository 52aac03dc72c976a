// The out-of-memory report through ErrMsg.
#include "base/kernel/outofmem.h"

#include "base/kernel/errors.h"

void OutOfMemoryMsg() { ErrMsg("Out of memory"); }
