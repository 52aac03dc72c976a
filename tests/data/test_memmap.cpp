// Memory mappings: the page offset of a mapping that starts inside a page, the split into pieces
// (forced by the test switch) with copies that cross piece boundaries, shared and private access,
// and the failure text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "base/data/memmap.h"

namespace {

// A scratch file of `size` bytes where byte n holds (n * 7 + 3) % 251, open read-write.
struct ScratchFile {
    std::string name;
    int fd = -1;
    explicit ScratchFile(size_t size) {
        char templ[] = "/tmp/orvanex_memmap_XXXXXX";
        fd = mkstemp(templ);
        name = templ;
        std::vector<unsigned char> bytes(size);
        for (size_t n = 0; n < size; n++) bytes[n] = static_cast<unsigned char>((n * 7 + 3) % 251);
        EXPECT_EQ(write(fd, bytes.data(), size), static_cast<ssize_t>(size));
    }
    ~ScratchFile() {
        close(fd);
        unlink(name.c_str());
    }
    static unsigned char expected(size_t n) { return static_cast<unsigned char>((n * 7 + 3) % 251); }
    unsigned char byteAt(size_t n) const {
        unsigned char b = 0;
        EXPECT_EQ(pread(fd, &b, 1, static_cast<off_t>(n)), 1);
        return b;
    }
};

struct ForceFragments {
    ForceFragments() { MemMapSetForceFragmentsForTest(true); }
    ~ForceFragments() { MemMapSetForceFragmentsForTest(false); }
};

const size_t Page = static_cast<size_t>(sysconf(_SC_PAGESIZE));

}  // namespace

TEST(MemMap, MappingStartsAtTheRequestedByteInsideAPage) {
    ASSERT_TRUE(MemMapInitialize());
    EXPECT_EQ(MemMapGetPageGranularity(), static_cast<int64_t>(Page));
    ScratchFile file(2 * Page + 50);
    const size_t offset = Page + 13;
    MemMap_s *map = MemMapMapFile(file.fd, static_cast<int64_t>(offset), 40, MemMapAccess_ReadOnly, false);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(MemMapGetMemFragCount(map), 1);
    EXPECT_EQ(map->PageOffset, 13u);
    const auto *bytes = static_cast<const unsigned char *>(MemMapGetMapping(map));
    for (size_t n = 0; n < 40; n++) EXPECT_EQ(bytes[n], ScratchFile::expected(offset + n)) << n;
    MemMapForceLoad(map);
    MemMapUnmap(&map);
    EXPECT_EQ(map, nullptr);
}

TEST(MemMap, FragmentedMappingCopiesAcrossPieceBoundaries) {
    ForceFragments force;
    ScratchFile file(5 * Page);
    const size_t offset = 100;
    const size_t length = 3 * Page + 200;  // 100 + 3 pages + 200 bytes span 4 pages
    MemMap_s *map = MemMapMapFile(file.fd, offset, static_cast<int64_t>(length), MemMapAccess_ReadWriteShared, true);
    ASSERT_NE(map, nullptr);
    ASSERT_EQ(MemMapGetMemFragCount(map), 4);
    for (int f = 0; f < 3; f++) EXPECT_EQ(map->Fragments[f].Length, Page);
    EXPECT_EQ(map->Fragments[3].Length, 300u);

    // A read of 64 bytes straddling each boundary between pieces.
    for (size_t boundary = Page; boundary < 4 * Page; boundary += Page) {
        unsigned char got[64];
        size_t from = boundary - offset - 32;
        MemMapCopyBytesFromMapping(map, static_cast<int64_t>(from), 64, got);
        for (size_t n = 0; n < 64; n++) ASSERT_EQ(got[n], ScratchFile::expected(offset + from + n)) << boundary;
    }
    // A write straddling the second boundary reaches the file.
    unsigned char pattern[10] = {200, 201, 202, 203, 204, 205, 206, 207, 208, 209};
    size_t at = 2 * Page - offset - 5;
    MemMapCopyBytesToMapping(map, static_cast<int64_t>(at), 10, pattern);
    EXPECT_TRUE(MemMapFlush(map));
    MemMapUnmap(&map);
    for (size_t n = 0; n < 10; n++) EXPECT_EQ(file.byteAt(offset + at + n), pattern[n]);
    EXPECT_EQ(file.byteAt(offset + at - 1), ScratchFile::expected(offset + at - 1));
    EXPECT_EQ(file.byteAt(offset + at + 10), ScratchFile::expected(offset + at + 10));
}

TEST(MemMap, AtMostSixteenPiecesTheLastTakingTheRest) {
    ForceFragments force;
    ScratchFile file(20 * Page);
    MemMap_s *map = MemMapMapFile(file.fd, 0, static_cast<int64_t>(20 * Page), MemMapAccess_ReadOnly, true);
    ASSERT_NE(map, nullptr);
    ASSERT_EQ(MemMapGetMemFragCount(map), 16);
    EXPECT_EQ(map->Fragments[0].Length, Page);
    EXPECT_EQ(map->Fragments[15].Length, 5 * Page);
    unsigned char last = 0;
    MemMapCopyBytesFromMapping(map, static_cast<int64_t>(20 * Page - 1), 1, &last);
    EXPECT_EQ(last, ScratchFile::expected(20 * Page - 1));
    MemMapUnmap(&map);

    // Without fragments allowed the switch has no effect: one piece.
    map = MemMapMapFile(file.fd, 0, static_cast<int64_t>(20 * Page), MemMapAccess_ReadOnly, false);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(MemMapGetMemFragCount(map), 1);
    MemMapUnmap(&map);
}

TEST(MemMap, PrivateWritesNeverReachTheFile) {
    ScratchFile file(Page);
    MemMap_s *map = MemMapMapFile(file.fd, 8, 16, MemMapAccess_ReadWritePrivate, true);
    ASSERT_NE(map, nullptr);
    unsigned char zeros[16] = {};
    MemMapCopyBytesToMapping(map, 0, 16, zeros);
    EXPECT_EQ(static_cast<unsigned char *>(MemMapGetMapping(map))[3], 0);
    MemMapUnmap(&map);
    EXPECT_EQ(file.byteAt(11), ScratchFile::expected(11));
}

TEST(MemMap, FailureUnmapsAndNamesTheError) {
    ScratchFile file(Page);
    int readOnly = open(file.name.c_str(), O_RDONLY);
    ASSERT_GE(readOnly, 0);
    // A shared writable mapping of a descriptor opened for reading only is refused with EACCES.
    EXPECT_EQ(MemMapMapFile(readOnly, 0, 16, MemMapAccess_ReadWriteShared, true), nullptr);
    EXPECT_STREQ(MemMapGetLastFailureText(), "Memory Mapping failed:\n    errno                 = EACCES\n");
    close(readOnly);
}
