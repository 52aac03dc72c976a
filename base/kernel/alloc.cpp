// The counted allocator. Each block carries a small header with its size and a magic word, so the
// counters (total bytes, largest block, allocations, live blocks and their peak) are always exact
// and a block that was never allocated here, or is freed twice, is caught instead of corrupting
// the heap. The counters are relaxed atomics: exact totals, no lock on the hot path.
#include "base/kernel/alloc.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

bool MemoryStatisticsOn = false;

namespace {

std::atomic<long> totalBytes{0};
std::atomic<long> maxSize{0};
std::atomic<long> numAllocs{0};
std::atomic<long> numActive{0};
std::atomic<long> maxActive{0};

struct BlockHeader {
    size_t size;
    size_t magic;
};
constexpr size_t kLiveMagic = 0x4f52564e4c495645ULL;
constexpr size_t kFreedMagic = 0x4f52564e46524545ULL;
constexpr size_t kHeaderSize = (sizeof(BlockHeader) + 15) & ~size_t(15);  // keeps 16-byte alignment

void raiseTo(std::atomic<long> &peak, long value) {
    long seen = peak.load(std::memory_order_relaxed);
    while (value > seen && !peak.compare_exchange_weak(seen, value, std::memory_order_relaxed)) {
    }
}

}  // namespace

void *newmalloc(size_t size) {
    auto *raw = static_cast<unsigned char *>(malloc(kHeaderSize + size));
    if (raw == nullptr) return nullptr;
    auto *header = reinterpret_cast<BlockHeader *>(raw);
    header->size = size;
    header->magic = kLiveMagic;
    totalBytes.fetch_add(static_cast<long>(size), std::memory_order_relaxed);
    raiseTo(maxSize, static_cast<long>(size));
    numAllocs.fetch_add(1, std::memory_order_relaxed);
    raiseTo(maxActive, numActive.fetch_add(1, std::memory_order_relaxed) + 1);
    return raw + kHeaderSize;
}

void newfree(void *p) {
    if (p == nullptr) return;
    auto *raw = static_cast<unsigned char *>(p) - kHeaderSize;
    auto *header = reinterpret_cast<BlockHeader *>(raw);
    if (header->magic != kLiveMagic) {
        // A block we did not hand out (or one freed already): freeing it would corrupt the heap.
        if (MemoryStatisticsOn) fprintf(stderr, "newfree: release of unallocated memory at %p\n", p);
        return;
    }
    header->magic = kFreedMagic;
    numActive.fetch_sub(1, std::memory_order_relaxed);
    free(raw);
}

long AllocActiveCount() { return numActive.load(std::memory_order_relaxed); }

void PrintAllocStats() {
    printf("TotalBytesAllocated = %ld\n", totalBytes.load());
    printf("MaxSizeAllocated    = %ld\n", maxSize.load());
    printf("MaxActiveAllocs     = %ld\n", maxActive.load());
    printf("NumAllocs           = %ld\n", numAllocs.load());
    printf("NumActiveAllocs(0)  = %ld\n", numActive.load());
}
