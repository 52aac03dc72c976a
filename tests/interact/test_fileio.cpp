// File-name checks and Open_File/Close_File on local files.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "base/interact/fileio.h"
#include "base/kernel/globals.h"
#include "support/scratch.h"

namespace {

class FileIo : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = MakeScratchDir("fileio");
        ASSERT_FALSE(dir.empty());
        savedBatch = InBatchMode;
        InBatchMode = true;  // overwrite questions answer yes, as in a batch run
    }
    void TearDown() override {
        InBatchMode = savedBatch;
        ASSERT_TRUE(RemoveScratchDir(dir));
    }
    std::string path(const std::string &name) const { return dir + "/" + name; }
    std::string dir;
    bool savedBatch = false;
};

TEST_F(FileIo, RejectsBlankDirectoryBadCharactersAndMissingFiles) {
    EXPECT_FALSE(IsValidFileName(nullptr, true, false));
    EXPECT_FALSE(IsValidFileName("", false, false));
    EXPECT_FALSE(IsValidFileName(dir.c_str(), false, false));                     // a directory
    EXPECT_FALSE(IsValidFileName(path("a*b").c_str(), false, false));             // asterisk
    EXPECT_FALSE(IsValidFileName(path("a|b").c_str(), false, false));
    EXPECT_FALSE(IsValidFileName(path("a\\b").c_str(), false, false));
    EXPECT_FALSE(IsValidFileName(path("a\tb").c_str(), false, false));            // control code
    EXPECT_FALSE(IsValidFileName(path("nodir/a.plt").c_str(), false, false));     // directory part invalid
    EXPECT_FALSE(IsValidFileName(path("a.plt").c_str(), true, false));            // reading: must exist
    EXPECT_TRUE(IsValidFileName(path("a.plt").c_str(), false, false));            // writing: need not
    EXPECT_TRUE(IsValidFileName("relative.plt", false, false));
}

TEST_F(FileIo, AcceptsUtf8NamesButNotStrayHighControlBytes) {
    EXPECT_TRUE(IsValidFileName(path("d\xc3\xa9j\xc3\xa0.plt").c_str(), false, false));  // "déjà"
    EXPECT_TRUE(IsValidFileName(path("\xe2\x82\xac.plt").c_str(), false, false));        // euro sign
    EXPECT_FALSE(IsValidFileName(path("a\x85.plt").c_str(), false, false));              // lone 0x85
    EXPECT_FALSE(IsValidFileName(path("\xc0\x80.plt").c_str(), false, false));           // overlong NUL
    EXPECT_FALSE(IsOkFNameChar(128));
    EXPECT_FALSE(IsOkFNameChar(159));
    EXPECT_TRUE(IsOkFNameChar(160));
    EXPECT_FALSE(IsOkFNameChar(31));
    EXPECT_TRUE(IsOkFNameChar(' '));
}

TEST_F(FileIo, UrlNames) {
    EXPECT_TRUE(IsValidFileName("ftp://host/dir/a.plt", true, false));
    EXPECT_TRUE(IsValidFileName("http://host/a.plt", true, false));
    EXPECT_FALSE(IsValidFileName("file:///tmp/a.plt", true, false));  // a scheme without transfer
    EXPECT_FALSE(IsValidFileName("ab:/x", true, false));              // an attempt that does not parse
    // A drive-letter-like name is a plain file name: its ":" stands at position 1.
    EXPECT_FALSE(IsValidFileName("x:/no/such/file", true, false));
    FILE *f = nullptr;
    EXPECT_FALSE(Open_File(&f, "ftp://host/a.plt", true, false, false, false, false));  // no transfer layer
    EXPECT_EQ(f, nullptr);
}

TEST_F(FileIo, ChopFilenameKeepsTheLast47Characters) {
    std::string fifty(50, 'a');
    EXPECT_EQ(ChopFilename(fifty.c_str()), fifty);
    std::string longName = std::string(10, 'x') + std::string(47, 'y');
    EXPECT_EQ(ChopFilename(longName.c_str()), "..." + std::string(47, 'y'));
}

TEST_F(FileIo, WriteAppendReadRoundTripAndOpenFileCount) {
    std::string name = "  " + path("data.txt") + "  ";  // blanks around the name are trimmed
    FILE *f = nullptr;
    int before = OpenFileCount();
    ASSERT_TRUE(Open_File(&f, name.c_str(), false, false, false, false, true));
    EXPECT_EQ(OpenFileCount(), before + 1);
    fputs("one\n", f);
    ASSERT_TRUE(Close_File(&f, true));
    EXPECT_EQ(f, nullptr);
    EXPECT_EQ(OpenFileCount(), before);

    ASSERT_TRUE(Open_File(&f, path("data.txt").c_str(), false, true, false, false, true));  // append
    fputs("two\n", f);
    ASSERT_TRUE(Close_File(&f, true));

    ASSERT_TRUE(Open_File(&f, path("data.txt").c_str(), true, false, false, false, true));
    char buffer[32] = {0};
    size_t n = fread(buffer, 1, sizeof(buffer) - 1, f);
    EXPECT_EQ(std::string(buffer, n), "one\ntwo\n");
    ASSERT_TRUE(Close_File(&f, true));

    // A plain write replaces the file (batch mode answers the question with yes).
    ASSERT_TRUE(Open_File(&f, path("data.txt").c_str(), false, false, false, false, true));
    fputs("new\n", f);
    ASSERT_TRUE(Close_File(&f, true));
    struct stat st;
    ASSERT_EQ(stat(path("data.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 4);
}

TEST_F(FileIo, FileExistsIsFalseForDirectories) {
    EXPECT_FALSE(FileExists(dir.c_str(), false));
    EXPECT_FALSE(FileExists(path("none").c_str(), false));
    FILE *f = fopen(path("there").c_str(), "w");
    fclose(f);
    EXPECT_TRUE(FileExists(path("there").c_str(), false));
}

}  // namespace
