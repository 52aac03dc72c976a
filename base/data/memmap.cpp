// Memory mappings of files in one or more pieces. A mapping is always made from a page boundary;
// the distance from that boundary to the offset the caller asked for is the page offset, and every
// offset a caller gives is counted from the requested offset, never from the boundary.
#include "base/data/memmap.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

#include "base/kernel/alloc.h"
#include "base/kernel/orvassert.h"

namespace {

std::atomic<int64_t> pageSize{0};
std::atomic<bool> forceFragments{false};
thread_local char lastFailureText[256] = "";

const char *errnoName(int error) {
    switch (error) {
    case ETXTBSY: return "ETXTBSY";
    case EINVAL: return "EINVAL";
    case ENODEV: return "ENODEV";
    case EACCES: return "EACCES";
    case ENOMEM: return "ENOMEM";
    case EAGAIN: return "EAGAIN";
    case EBADF: return "EBADF";
    default: return "UNKNOWN";
    }
}

void recordFailure(int error) {
    snprintf(lastFailureText, sizeof(lastFailureText), "Memory Mapping failed:\n    errno                 = %s\n",
             errnoName(error));
}

void unmapPieces(MemMap_s *map) {
    for (int f = 0; f < map->NumFragments; f++)
        if (map->Fragments[f].Base != nullptr) munmap(map->Fragments[f].Base, map->Fragments[f].Length);
    map->NumFragments = 0;
}

// Maps `numPieces` pieces covering `totalLength` bytes from the page-aligned file offset. Every
// piece but the last has (pages / numPieces) pages; the last takes the rest.
bool mapPieces(MemMap_s *map, int fileDescriptor, int64_t alignedOffset, size_t totalLength, int numPieces,
               int prot, int flags) {
    size_t page = static_cast<size_t>(MemMapGetPageGranularity());
    size_t pages = (totalLength + page - 1) / page;
    size_t piecePages = pages / static_cast<size_t>(numPieces);
    map->NumFragments = 0;
    size_t done = 0;
    for (int f = 0; f < numPieces; f++) {
        size_t length = (f == numPieces - 1) ? totalLength - done : piecePages * page;
        // A read-only map is made when the values are wanted: populating its page tables in one
        // go costs far less than a fault per page as a reader walks the array.
        int populate = prot == PROT_READ ? MAP_POPULATE : 0;
        void *base = mmap(nullptr, length, prot, flags | populate, fileDescriptor,
                          static_cast<off_t>(alignedOffset + done));
        if (base == MAP_FAILED) {
            recordFailure(errno);
            unmapPieces(map);
            return false;
        }
        map->Fragments[f].Base = base;
        map->Fragments[f].Length = length;
        map->NumFragments = f + 1;
        done += length;
    }
    return true;
}

// Finds the piece holding mapping byte `position` (counted from the page boundary) and the
// position inside it. Every piece but the last has the first piece's length.
int pieceOf(const MemMap_s *map, size_t position, size_t *within) {
    size_t pieceLength = map->Fragments[0].Length;
    size_t f = position / pieceLength;
    if (f >= static_cast<size_t>(map->NumFragments)) f = static_cast<size_t>(map->NumFragments - 1);
    *within = position - f * pieceLength;
    CHECK(*within < map->Fragments[f].Length);
    return static_cast<int>(f);
}

}  // namespace

bool MemMapInitialize() { return MemMapGetPageGranularity() > 0; }

void MemMapFinalize() {}

int64_t MemMapGetPageGranularity() {
    int64_t size = pageSize.load(std::memory_order_relaxed);
    if (size == 0) {
        long answer = sysconf(_SC_PAGESIZE);
        size = answer > 0 ? answer : 4096;
        pageSize.store(size, std::memory_order_relaxed);
    }
    return size;
}

void MemMapSetForceFragmentsForTest(bool force) { forceFragments = force; }

const char *MemMapGetLastFailureText() { return lastFailureText; }

MemMap_s *MemMapMapFile(int fileDescriptor, int64_t offset, int64_t length, MemMapAccess_e access,
                        bool allowFragments) {
    REQUIRE(fileDescriptor >= 0);
    REQUIRE(offset >= 0 && length > 0);
    REQUIRE(access == MemMapAccess_ReadOnly || access == MemMapAccess_ReadWriteShared ||
            access == MemMapAccess_ReadWritePrivate);
    lastFailureText[0] = '\0';
    auto *map = static_cast<MemMap_s *>(newmalloc(sizeof(MemMap_s)));
    if (map == nullptr) {
        recordFailure(ENOMEM);
        return nullptr;
    }
    memset(map, 0, sizeof(MemMap_s));
    int64_t page = MemMapGetPageGranularity();
    int64_t alignedOffset = offset - offset % page;
    map->PageOffset = static_cast<size_t>(offset - alignedOffset);
    map->Length = map->PageOffset + static_cast<size_t>(length);

    int prot = access == MemMapAccess_ReadOnly ? PROT_READ : PROT_READ | PROT_WRITE;
    int flags = access == MemMapAccess_ReadWritePrivate ? MAP_PRIVATE : MAP_SHARED;

    bool mapped = false;
    if (!(allowFragments && forceFragments))
        mapped = mapPieces(map, fileDescriptor, alignedOffset, map->Length, 1, prot, flags);
    if (!mapped && allowFragments) {
        int64_t pages = (static_cast<int64_t>(map->Length) + page - 1) / page;
        int numPieces = static_cast<int>(pages < MemMapMaxFragments ? pages : MemMapMaxFragments);
        mapped = mapPieces(map, fileDescriptor, alignedOffset, map->Length, numPieces, prot, flags);
    }
    if (!mapped) {
        newfree(map);
        return nullptr;
    }
    return map;
}

void *MemMapGetMapping(const MemMap_s *map) {
    REQUIRE(map != nullptr && map->NumFragments >= 1);
    return static_cast<char *>(map->Fragments[0].Base) + map->PageOffset;
}

int MemMapGetMemFragCount(const MemMap_s *map) {
    REQUIRE(map != nullptr);
    return map->NumFragments;
}

bool MemMapFlush(MemMap_s *map) {
    REQUIRE(map != nullptr);
    bool ok = true;
    for (int f = 0; f < map->NumFragments; f++)
        if (msync(map->Fragments[f].Base, map->Fragments[f].Length, MS_SYNC) != 0) ok = false;
    return ok;
}

void MemMapForceLoad(const MemMap_s *map) {
    REQUIRE(map != nullptr);
    size_t page = static_cast<size_t>(MemMapGetPageGranularity());
    volatile unsigned char dummy = 0;
    for (int f = 0; f < map->NumFragments; f++) {
        const auto *bytes = static_cast<const unsigned char *>(map->Fragments[f].Base);
        for (size_t position = 0; position < map->Fragments[f].Length; position += page) dummy = bytes[position];
    }
    (void)dummy;
}

void MemMapUnmap(MemMap_s **map) {
    REQUIRE(map != nullptr);
    if (*map == nullptr) return;
    unmapPieces(*map);
    newfree(*map);
    *map = nullptr;
}

void MemMapCopyBytesToMapping(MemMap_s *map, int64_t offset, int64_t count, const void *bytes) {
    REQUIRE(map != nullptr && offset >= 0 && count >= 0);
    size_t position = map->PageOffset + static_cast<size_t>(offset);
    REQUIRE(position + static_cast<size_t>(count) <= map->Length);
    const auto *source = static_cast<const unsigned char *>(bytes);
    size_t remaining = static_cast<size_t>(count);
    while (remaining > 0) {
        size_t within = 0;
        int f = pieceOf(map, position, &within);
        size_t chunk = map->Fragments[f].Length - within;
        if (chunk > remaining) chunk = remaining;
        memcpy(static_cast<unsigned char *>(map->Fragments[f].Base) + within, source, chunk);
        source += chunk;
        position += chunk;
        remaining -= chunk;
    }
}

void MemMapCopyBytesFromMapping(const MemMap_s *map, int64_t offset, int64_t count, void *bytes) {
    REQUIRE(map != nullptr && offset >= 0 && count >= 0);
    size_t position = map->PageOffset + static_cast<size_t>(offset);
    REQUIRE(position + static_cast<size_t>(count) <= map->Length);
    auto *target = static_cast<unsigned char *>(bytes);
    size_t remaining = static_cast<size_t>(count);
    // Most copies are one value inside one piece: find it directly.
    if (map->NumFragments == 1) {
        memcpy(target, static_cast<const unsigned char *>(map->Fragments[0].Base) + position, remaining);
        return;
    }
    while (remaining > 0) {
        size_t within = 0;
        int f = pieceOf(map, position, &within);
        size_t chunk = map->Fragments[f].Length - within;
        if (chunk > remaining) chunk = remaining;
        memcpy(target, static_cast<const unsigned char *>(map->Fragments[f].Base) + within, chunk);
        target += chunk;
        position += chunk;
        remaining -= chunk;
    }
}
