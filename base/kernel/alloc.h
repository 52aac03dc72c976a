// The counted allocator: every allocation of the system's plain records and strings goes through
// newmalloc/newfree so that the memory statistics of the internal settings can account for it.
#pragma once

#include <cstddef>

// Statistics switch of the internal settings; when on, allocations are counted.
extern bool MemoryStatisticsOn;

void *newmalloc(size_t size);
void newfree(void *p);

// Prints the allocator's counters to standard output (used at exit when statistics are on).
void PrintAllocStats();
// Number of blocks allocated and not yet freed.
long AllocActiveCount();
