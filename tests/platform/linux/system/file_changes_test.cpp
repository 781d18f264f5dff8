#include "platform/linux/file_changes.h"

#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vantor {
namespace {

class FileChangesTest : public testing::Test {
  protected:
    std::filesystem::path path(const char* name) const { return folder_.path() / name; }
    void save(const char* name) const { std::ofstream(path(name)) << "text"; }

    void watch(const char* name) {
        auto watched = FileChanges::watch(loop_, path(name), [this] { ++changes_; });
        ASSERT_TRUE(watched) << watched.error();
        changesOfFile_ = std::move(*watched);
    }
    /// How often the callback came since the last question. Events are there when the call that
    /// causes them returns.
    int changes() {
        loop_.turn();
        return std::exchange(changes_, 0);
    }

  private:
    TemporaryFolder folder_;
    MainLoop loop_;
    int changes_ = 0;
    std::unique_ptr<FileChanges> changesOfFile_;
};

TEST_F(FileChangesTest, ASaveInPlaceIsSeenWhenItIsDone) {
    save("file");
    watch("file");
    EXPECT_EQ(changes(), 0);
    std::ofstream writer(path("file"));
    writer << "half" << std::flush;
    EXPECT_EQ(changes(), 0);
    writer.close();
    EXPECT_EQ(changes(), 1);
}

TEST_F(FileChangesTest, ASaveByRenamingIsSeenEachTime) {
    save("file");
    watch("file");
    for (int i = 0; i < 3; ++i) {
        save("new");
        EXPECT_EQ(changes(), 0) << "another name";
        rename(path("new"), path("file"));
        EXPECT_EQ(changes(), 1);
    }
}

TEST_F(FileChangesTest, ABackupThatTakesTheNameAwayIsFollowedByTheNewFile) {
    save("file");
    watch("file");
    rename(path("file"), path("file~"));
    EXPECT_EQ(changes(), 1);
    save("file");
    EXPECT_EQ(changes(), 1);
    std::filesystem::remove(path("file~"));
    EXPECT_EQ(changes(), 0);
    std::filesystem::remove(path("file"));
    EXPECT_EQ(changes(), 1);
}

TEST_F(FileChangesTest, ALinksTargetIsWatchedWithItAlsoAfterItPointsElsewhere) {
    create_directory(path("one"));
    create_directory(path("two"));
    save("one/target");
    save("two/target");
    create_symlink(path("one/target"), path("link"));
    watch("link");
    save("one/target");
    EXPECT_EQ(changes(), 1);
    create_symlink(path("two/target"), path("new"));
    rename(path("new"), path("link"));
    EXPECT_EQ(changes(), 1);
    save("two/target");
    EXPECT_EQ(changes(), 1);
}

TEST_F(FileChangesTest, ALinkThatTakesTheNameIsSeenAtOnce) {
    save("target");
    watch("link");
    create_symlink(path("target"), path("link"));
    EXPECT_EQ(changes(), 1);
    std::filesystem::remove(path("link"));
    EXPECT_EQ(changes(), 1);
    create_hard_link(path("target"), path("link"));
    EXPECT_EQ(changes(), 1);
}

TEST_F(FileChangesTest, AFileThatIsMadeIsSeenWhenItIsWritten) {
    watch("file");
    std::ofstream writer(path("file"));
    EXPECT_EQ(changes(), 0);
    writer.close();
    EXPECT_EQ(changes(), 1);
}

TEST_F(FileChangesTest, AFolderComesAndGoes) {
    watch("folder");
    create_directory(path("folder"));
    EXPECT_EQ(changes(), 1);
    save("folder/file");
    EXPECT_EQ(changes(), 0);
    std::filesystem::remove_all(path("folder"));
    EXPECT_EQ(changes(), 1);
}

TEST_F(FileChangesTest, TheEndOfItsFolderIsSaidOnce) {
    create_directory(path("one"));
    watch("one/file");
    rename(path("one"), path("other"));
    EXPECT_EQ(changes(), 1);

    create_directory(path("two"));
    watch("two/file");
    std::filesystem::remove(path("two"));
    EXPECT_EQ(changes(), 1);
    EXPECT_EQ(changes(), 0);
}

TEST_F(FileChangesTest, AFolderThatIsNotThereIsRefused) {
    MainLoop loop;
    const auto watched = FileChanges::watch(loop, path("missing/file"), [] {});
    ASSERT_FALSE(watched);
    EXPECT_EQ(watched.error(),
              path("missing/file").string() + ": cannot be watched: No such file or directory");
}

} // namespace
} // namespace vantor
