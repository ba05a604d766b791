#include "data/files.h"

#include <iterator>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>

#include "scratch_folder.h"

namespace Tessel::Files {
namespace {

namespace fs = std::filesystem;

class FilesTest : public testing::Test {
 protected:
    WString path(const WString& name) const { return folder_.wstring() + L"/" + name; }
    long numFiles() const { return std::distance(fs::directory_iterator(folder_), fs::directory_iterator()); }

    const ScratchFolder scratch_;
    const fs::path& folder_ = scratch_.path;
};

TEST_F(FilesTest, ReadsBackWhatWasWritten) {
    std::string allBytes;
    for (int i = 0; i < 300'000; ++i) allBytes += static_cast<char>(i);
    const WString unicode = path(L"gr\u00F6\u00DFe \u4E2D.txt");
    for (const std::string& bytes : {std::string(), std::string("a\r\nb\0c\n", 7), allBytes}) {
        writeBytes(unicode, bytes);
        EXPECT_EQ(readBytes(unicode), bytes);
        EXPECT_EQ(numFiles(), 1) << "a temporary file was left";
    }
    EXPECT_TRUE(fs::exists(folder_ / u8"gr\u00F6\u00DFe \u4E2D.txt"));
}

TEST_F(FilesTest, FailuresLeaveNothingBehind) {
    EXPECT_THROW(readBytes(path(L"missing")), FileNotFound);
    EXPECT_THROW(readBytes(path(L"")), FileNotFound);
    EXPECT_THROW(writeBytes(path(L"no folder/file"), "x"), UnableToWriteFile);
    EXPECT_THROW(writeBytes(path(L""), "x"), UnableToWriteFile);
    EXPECT_THROW(writeBytes(folder_.wstring(), "x"), UnableToWriteFile);
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    EXPECT_THROW(writeBytes(L"", "x"), UnableToWriteFile);
    fs::current_path(before);
    EXPECT_EQ(numFiles(), 0);
}

TEST_F(FilesTest, FollowsLinksAndKeepsPermissions) {
    const fs::path target = folder_ / "target", link = folder_ / "link";
    writeBytes(target.wstring(), "old");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    std::error_code error;
    fs::create_symlink(target, link, error);
    if (error) GTEST_SKIP() << "no symbolic links here";
    writeBytes(link.wstring(), "new");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(readBytes(target.wstring()), "new");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

}  // namespace
}  // namespace Tessel::Files
