#include "platform/linux/whole_file.h"

#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace vantor {
namespace {

using std::filesystem::perms;

class WholeFileTest : public testing::Test {
  protected:
    std::filesystem::path file(const char* name = "file") const { return folder_.path() / name; }

    static Result<Done, std::string> replace(const std::filesystem::path& file,
                                             std::string_view text) {
        return replaceFile(file, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    static std::string textOf(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(WholeFileTest, AReplacedFileKeepsItsPermissions) {
    ASSERT_TRUE(replace(file(), "old"));
    EXPECT_EQ(status(file()).permissions(), perms(0644));
    permissions(file(), perms(0600));
    ASSERT_TRUE(replace(file(), "new"));
    EXPECT_EQ(textOf(file()), "new");
    EXPECT_EQ(status(file()).permissions(), perms(0600));
}

TEST_F(WholeFileTest, ANewFileCanBeItsOwnersAlone) {
    ASSERT_TRUE(replaceFile(file(), {}, Readers::owner));
    EXPECT_EQ(status(file()).permissions(), perms(0600));
}

TEST_F(WholeFileTest, AFileIsReadUpToTheLimit) {
    ASSERT_TRUE(replace(file(), "12345"));
    EXPECT_EQ(*readFile(file(), 5), "12345");
    EXPECT_EQ(readFile(file(), 4).error(),
              file().string() + ": a file of more than 4 bytes exceeds the limit");
    ASSERT_TRUE(replace(file(), ""));
    EXPECT_EQ(*readFile(file(), 0), "");
}

TEST_F(WholeFileTest, AFileWhoseSizeIsNotKnownBeforehandIsReadWhole) {
    EXPECT_THAT(readFile("/proc/self/status", 1U << 20U)->value(), testing::HasSubstr("\nUid:"));
}

TEST_F(WholeFileTest, AFileThatIsNotThereHoldsNothing) {
    EXPECT_EQ(*readFile(file(), 5), std::nullopt);
    EXPECT_EQ(*readFile(file("missing/file"), 5), std::nullopt);
    ASSERT_TRUE(replace(file(), "no folder"));
    EXPECT_EQ(*readFile(file() / "file", 5), std::nullopt);
}

TEST_F(WholeFileTest, WhatIsNoRegularFileIsNotRead) {
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_EQ(readFile(file(), 5).error(), file().string() + ": this is no regular file");
    EXPECT_EQ(readFile(file().parent_path(), 5).error(),
              file().parent_path().string() + ": this is no regular file");
}

TEST_F(WholeFileTest, APrivateFolderIsMadeWithThoseAboveIt) {
    const auto folder = file("one") / "two" / "three";
    ASSERT_TRUE(makePrivateFolder(folder));
    EXPECT_EQ(status(folder).permissions(), perms(0700));
    EXPECT_EQ(status(file("one")).permissions(), perms(0700));
    permissions(folder, perms(0750));
    ASSERT_TRUE(makePrivateFolder(folder));
    EXPECT_EQ(status(folder).permissions(), perms(0750));
    ASSERT_TRUE(replace(file(), "no folder"));
    EXPECT_EQ(makePrivateFolder(file() / "folder").error(), file().string() + ": Not a directory");
}

TEST_F(WholeFileTest, ASymbolicLinkStaysOneAndItsTargetIsReplaced) {
    create_directory(file("elsewhere"));
    ASSERT_TRUE(replace(file("elsewhere/target"), "old"));
    create_symlink(file("elsewhere/target"), file("link"));
    ASSERT_TRUE(replace(file("link"), "new"));
    EXPECT_TRUE(is_symlink(file("link")));
    EXPECT_EQ(textOf(file("elsewhere/target")), "new");
}

TEST_F(WholeFileTest, AReaderThatOpenedTheOldFileStillReadsIt) {
    ASSERT_TRUE(replace(file(), "old"));
    std::ifstream reader(file());
    ASSERT_TRUE(replace(file(), "other"));
    std::string text;
    reader >> text;
    EXPECT_EQ(text, "old");
}

TEST_F(WholeFileTest, AMissingFolderIsSaidByName) {
    const auto replaced = replace(file("missing/file"), "text");
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error(), file("missing/file").string() + ": No such file or directory");
    EXPECT_EQ(canReplaceFile(file("missing/file")).error(), replaced.error());
    EXPECT_TRUE(canReplaceFile(file()));
    EXPECT_EQ(canReplaceFile(file("")).error(), file("").string() + ": Is a directory");
}

TEST_F(WholeFileTest, ALockIsHeldUntilItsOwnerEnds) {
    auto first = FolderLock::take(file(""));
    ASSERT_TRUE(first);
    const auto refused = FolderLock::take(file(""), std::chrono::milliseconds(30));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), file("").string() + ": another program has held the lock for 30 ms");
    { const FolderLock owner = std::move(*first); }
    EXPECT_TRUE(FolderLock::take(file(""), std::chrono::milliseconds(30)));
}

} // namespace
} // namespace vantor
