#include "agent/configuration/configuration_watch.h"

#include "platform/linux/main_loop.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>

namespace vantor::agent {
namespace {

class ConfigurationWatchTest : public testing::Test {
  protected:
    std::filesystem::path config() const { return folder_.path() / ".config"; }
    std::filesystem::path file() const { return config() / "vantor/agent.toml"; }
    void save(const std::string& text = "max_fps = 1") const { std::ofstream(file()) << text; }

    void watch() {
        auto created = ConfigurationWatch::create(loop_, file(), [this] { ++changes_; });
        ASSERT_TRUE(created) << created.error();
        watch_ = std::move(*created);
    }
    /// Whether a change was told since the last question. Events are there when the call that
    /// causes them returns; what they post runs a turn later.
    bool changed() {
        loop_.turn();
        loop_.turn();
        return std::exchange(changes_, 0) > 0;
    }

    MainLoop loop_;
    TemporaryFolder folder_;
    std::unique_ptr<ConfigurationWatch> watch_;
    int changes_ = 0;
};

TEST_F(ConfigurationWatchTest, TellsOfEverySave) {
    create_directories(file().parent_path());
    save();
    watch();
    EXPECT_FALSE(changed());
    for (int i = 0; i < 3; ++i) {
        save();
        EXPECT_TRUE(changed());
        std::ofstream(config() / "vantor/new") << "max_fps = 2";
        EXPECT_FALSE(changed());
        rename(config() / "vantor/new", file());
        EXPECT_TRUE(changed());
    }
    std::filesystem::remove(file());
    EXPECT_TRUE(changed());
}

TEST_F(ConfigurationWatchTest, AFileIsSeenThatCameWithItsFolders) {
    watch();
    create_directories(file().parent_path());
    save();
    EXPECT_TRUE(changed());
    EXPECT_FALSE(changed());
    save();
    EXPECT_TRUE(changed());
}

TEST_F(ConfigurationWatchTest, EachFolderOnTheWayIsWaitedFor) {
    watch();
    create_directory(config());
    EXPECT_TRUE(changed());
    create_directory(file().parent_path());
    EXPECT_TRUE(changed());
    save();
    EXPECT_TRUE(changed());
}

TEST_F(ConfigurationWatchTest, AFolderThatGoesAndComesBackIsFollowed) {
    create_directories(file().parent_path());
    save();
    watch();
    for (int i = 0; i < 3; ++i) {
        std::filesystem::remove_all(config());
        EXPECT_TRUE(changed());
        create_directories(file().parent_path());
        EXPECT_TRUE(changed());
        save();
        EXPECT_TRUE(changed());
    }
    rename(file().parent_path(), config() / "old");
    EXPECT_TRUE(changed());
    std::ofstream(config() / "old/agent.toml") << "elsewhere";
    EXPECT_FALSE(changed());
}

TEST_F(ConfigurationWatchTest, OtherFilesInTheFolderAreNoChange) {
    create_directories(file().parent_path());
    watch();
    std::ofstream(config() / "vantor/other.toml") << "text";
    std::ofstream(config() / "other") << "text";
    EXPECT_FALSE(changed());
}

TEST_F(ConfigurationWatchTest, MayEndWhereverAChangeIsTold) {
    create_directories(file().parent_path());
    auto created = ConfigurationWatch::create(loop_, file(), [this] {
        ++changes_;
        watch_ = nullptr;
    });
    ASSERT_TRUE(created);
    watch_ = std::move(*created);
    save();
    EXPECT_TRUE(changed());
    save();
    EXPECT_FALSE(changed());
}

TEST_F(ConfigurationWatchTest, TellsNothingAfterItsEnd) {
    create_directories(file().parent_path());
    watch();
    save();
    loop_.turn();
    watch_ = nullptr;
    EXPECT_FALSE(changed());
}

} // namespace
} // namespace vantor::agent
