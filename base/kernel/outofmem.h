// The one report of an allocation that failed. Every module that runs out of memory ends its
// operation with this message, so that the user sees the same text whatever ran short.
#pragma once

void OutOfMemoryMsg();
