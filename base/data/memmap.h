// Memory mappings of files: one mapping is a window of bytes of a file, made of one piece or, when
// the address space has no room for one piece, of up to 16 pieces (fragments) side by side in the
// file but not in memory. Field data maps its data file blocks and its temporary cache files here.
// Relies on POSIX mmap/msync/munmap and sysconf for the page size.
#pragma once

#include <cstddef>
#include <cstdint>

enum MemMapAccess_e : int16_t {
    MemMapAccess_ReadOnly = 0,          // PROT_READ, MAP_SHARED
    MemMapAccess_ReadWriteShared = 1,   // writes reach the file
    MemMapAccess_ReadWritePrivate = 2,  // copy on write; the file never changes
    MemMapAccess_Invalid = 255
};

constexpr int MemMapMaxFragments = 16;

struct MemMapFragment_s {
    void *Base;     // page-aligned start of the piece
    size_t Length;  // bytes mapped in this piece
};

struct MemMap_s {
    int NumFragments;                              // 1 to MemMapMaxFragments
    MemMapFragment_s Fragments[MemMapMaxFragments];
    size_t PageOffset;                             // the requested offset less the page boundary below it
    size_t Length;                                 // whole mapping: PageOffset + the requested length
};

// Asks the system for the page size. Returns false only if the system gives none.
bool MemMapInitialize();
void MemMapFinalize();
// The page size in bytes (asked once, even without MemMapInitialize).
int64_t MemMapGetPageGranularity();

// Maps `length` bytes of the file from `offset`. One piece first; if that fails and fragments are
// allowed, min(pages, 16) pieces. Null when nothing could be mapped (all pieces undone); the reason
// is kept for MemMapGetLastFailureText.
MemMap_s *MemMapMapFile(int fileDescriptor, int64_t offset, int64_t length, MemMapAccess_e access,
                        bool allowFragments);
// The address of the requested offset: the first piece's base plus the page offset. Contiguous
// only when the mapping has one piece.
void *MemMapGetMapping(const MemMap_s *map);
int MemMapGetMemFragCount(const MemMap_s *map);
// msync with MS_SYNC over every piece.
bool MemMapFlush(MemMap_s *map);
// Touches one byte per page, so that the pages come in before they are used.
void MemMapForceLoad(const MemMap_s *map);
// Unmaps every piece, frees the record and nulls the pointer; a null map is allowed.
void MemMapUnmap(MemMap_s **map);
// Copies bytes at `offset` (counted from the requested offset) to or from the mapping, across
// pieces as needed.
void MemMapCopyBytesToMapping(MemMap_s *map, int64_t offset, int64_t count, const void *bytes);
void MemMapCopyBytesFromMapping(const MemMap_s *map, int64_t offset, int64_t count, void *bytes);

// The text of the last failure of MemMapMapFile on this thread, for debugging ("" if none).
const char *MemMapGetLastFailureText();

// Test switch: with it on, MemMapMapFile skips the single-piece try whenever fragments are
// allowed, so that the fragmented path can be exercised on a machine with ample address space.
void MemMapSetForceFragmentsForTest(bool force);
