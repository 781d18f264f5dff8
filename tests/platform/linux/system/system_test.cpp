#include "platform/linux/archive/property_list_codec.h"
#include "platform/linux/system/linux_bundle.h"
#include "platform/linux/system/linux_code_identity.h"
#include "platform/linux/system/linux_images.h"
#include "platform/linux/system/linux_media_clock.h"
#include "platform/linux/system/system_root.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantor {
namespace {

/// A copy of "sleep" with those permissions, running; ended with its maker.
class RunningCopy {
  public:
    RunningCopy(const std::filesystem::path& folder, mode_t mode, uid_t owner = geteuid()) {
        const auto program = folder / "sleeper";
        std::filesystem::copy_file("/bin/sleep", program);
        EXPECT_EQ(chown(program.c_str(), owner, static_cast<gid_t>(-1)), 0);
        EXPECT_EQ(chmod(program.c_str(), mode), 0);
        int ready[2];
        EXPECT_EQ(pipe2(ready, O_CLOEXEC), 0);
        pid_ = fork();
        if (pid_ == 0) {
            execl(program.c_str(), program.c_str(), "60", nullptr);
            _exit(127);
        }
        close(ready[1]);
        char byte = 0;
        // The other end closes when the program has replaced the child.
        EXPECT_EQ(read(ready[0], &byte, 1), 0);
        close(ready[0]);
    }
    ~RunningCopy() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    int pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
};

TEST(LinuxCodeIdentity, HoldsForAProgramOfTheInstallationThatOthersCannotWrite) {
    const TemporaryFolder folder;
    LinuxCodeIdentity identity(folder.path(), geteuid());
    const RunningCopy copy(folder.path(), 0755);
    const auto code = identity.copyGuest(copy.pid());
    const auto requirement = identity.requirement("anchor apple");
    ASSERT_NE(code, nullptr);
    ASSERT_NE(requirement, nullptr);
    EXPECT_TRUE(identity.checkValidity(*code, *requirement));
}

TEST(LinuxCodeIdentity, FailsForAProgramThatOthersCanWrite) {
    const TemporaryFolder folder;
    LinuxCodeIdentity identity(folder.path(), geteuid());
    const RunningCopy copy(folder.path(), 0777);
    const auto code = identity.copyGuest(copy.pid());
    ASSERT_NE(code, nullptr);
    EXPECT_FALSE(identity.checkValidity(*code, *identity.requirement("anchor apple")));
}

/// A program of somebody who is not root, running.
class UsersProgram : public testing::Test {
  protected:
    bool holdsIn(const std::filesystem::path& installation, uid_t owner) const {
        LinuxCodeIdentity identity(installation, owner);
        const auto code = identity.copyGuest(program_.pid());
        return code && identity.checkValidity(*code, *identity.requirement("anchor apple"));
    }

    const uid_t user_ = geteuid() == 0 ? kNobody : geteuid();
    const TemporaryFolder folder_;

  private:
    static constexpr uid_t kNobody = 65534;
    const RunningCopy program_{folder_.path(), 0755, user_};
};

TEST_F(UsersProgram, BelongsToTheInstallationWhenItIsTheOwnersAndBelowThePrefix) {
    EXPECT_TRUE(holdsIn(folder_.path(), user_));
}

TEST_F(UsersProgram, DoesNotBelongToAnInstallationOfSomebodyElse) {
    EXPECT_FALSE(holdsIn(folder_.path(), user_ + 1));
}

TEST_F(UsersProgram, DoesNotBelongToAnInstallationElsewhere) {
    EXPECT_FALSE(holdsIn(folder_.path() / "installation", user_));
}

TEST(LinuxCodeIdentity, CannotExamineAProcessThatIsGone) {
    LinuxCodeIdentity identity("/", geteuid());
    const pid_t pid = fork();
    if (pid == 0) {
        _exit(0);
    }
    waitpid(pid, nullptr, 0);
    EXPECT_EQ(identity.copyGuest(pid), nullptr);
    EXPECT_EQ(identity.requirement("anchor trusted"), nullptr);
}

class LinuxBundleTest : public testing::Test {
  protected:
    void write(const std::filesystem::path& file, const std::string& text) {
        std::filesystem::create_directories((folder.path() / file).parent_path());
        std::ofstream(folder.path() / file) << text;
    }

    TemporaryFolder folder;
    PropertyListCodec codec;
};

TEST_F(LinuxBundleTest, ReadsItsIdentifierAndFindsResourcesInsideItselfOnly) {
    write("Info.plist", "{ CFBundleIdentifier = \"com.nimbara.app.lockscreen\"; }");
    write("Resources/Stills/plasma.jpg", "x");
    write("secret.jpg", "x");
    const LinuxBundle bundle(folder.path(), codec);
    EXPECT_EQ(bundle.identifier(), "com.nimbara.app.lockscreen");
    EXPECT_EQ(bundle.resource("plasma", "jpg", "Stills"),
              folder.path() / "Resources/Stills/plasma.jpg");
    EXPECT_EQ(bundle.resource("aurora", "jpg", "Stills"), std::nullopt);
    EXPECT_EQ(bundle.resource("../../secret", "jpg", "Stills"), std::nullopt);
    EXPECT_EQ(bundle.resource("", "jpg", "Stills"), std::nullopt);
}

TEST_F(LinuxBundleTest, AFolderWithoutAPropertyListIsNoBundle) {
    EXPECT_EQ(LinuxBundle(folder.path(), codec).identifier(), std::nullopt);
    write("Info.plist", "( not, a, dictionary )");
    EXPECT_EQ(LinuxBundle(folder.path(), codec).identifier(), std::nullopt);
}

TEST_F(LinuxBundleTest, TheUserDatabaseDoesNotListenToHOME) {
    const LinuxBundle bundle(folder.path(), codec);
    setenv("HOME", "/somewhere/else", 1);
    unsetenv("VANTOR_USER_HOME");
    EXPECT_EQ(bundle.homeDirectory(), "/somewhere/else");
    ASSERT_TRUE(bundle.userDatabaseHome());
    EXPECT_NE(*bundle.userDatabaseHome(), "/somewhere/else");
    setenv("VANTOR_USER_HOME", "/stands/in", 1);
    EXPECT_EQ(bundle.userDatabaseHome(), "/stands/in");
    unsetenv("VANTOR_USER_HOME");
}

class LinuxImagesTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    LinuxImages images;
};

TEST_F(LinuxImagesTest, APNGReadsBackAsItWasWrittenButOpaque) {
    // Two rows of two pixels with four bytes of padding.
    const std::vector<std::uint8_t> bytes{1,  2,  3,  0, 4,   5,   6,   0, 9, 9, 9, 9,
                                          10, 20, 30, 7, 255, 254, 253, 0, 9, 9, 9, 9};
    const auto file = folder.path() / "a.png";
    ASSERT_TRUE(
        images.writePNG(file, {.bytes = bytes, .width = 2, .height = 2, .bytesPerRow = 12}));
    const auto read = images.read(file);
    ASSERT_NE(read, nullptr);
    ASSERT_EQ(read->width(), 2U);
    ASSERT_EQ(read->height(), 2U);
    const auto pixels = static_cast<const LinuxImage&>(*read).bytes();
    const std::vector<std::uint8_t> expected{1,  2,  3,  255, 4,   5,   6,   255,
                                             10, 20, 30, 255, 255, 254, 253, 255};
    EXPECT_EQ(std::vector<std::uint8_t>(pixels.begin(), pixels.end()), expected);
}

TEST_F(LinuxImagesTest, AFailedWriteKeepsTheOldFileAndLeavesNothingBeside) {
    const std::vector<std::uint8_t> pixel{1, 2, 3, 4};
    const BGRAPixels one{.bytes = pixel, .width = 1, .height = 1, .bytesPerRow = 4};
    EXPECT_FALSE(images.writePNG(folder.path() / "no/such/folder.png", one));
    const auto file = folder.path() / "folder.png";
    std::filesystem::create_directory(file);
    EXPECT_FALSE(images.writePNG(file, one));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
    EXPECT_FALSE(images.writePNG(folder.path() / "empty.png", {}));
}

TEST_F(LinuxImagesTest, WhatIsNoPictureIsNull) {
    std::ofstream(folder.path() / "text.png") << "certainly not a picture";
    std::ofstream(folder.path() / "torn.png") << "\x89PNG\r\n\x1a\n....";
    std::ofstream(folder.path() / "torn.jpg") << "\xFF\xD8\xFF\xE0 torn";
    EXPECT_EQ(images.read(folder.path() / "text.png"), nullptr);
    EXPECT_EQ(images.read(folder.path() / "torn.png"), nullptr);
    EXPECT_EQ(images.read(folder.path() / "torn.jpg"), nullptr);
    EXPECT_EQ(images.read(folder.path() / "missing.png"), nullptr);
}

TEST(LinuxMediaClock, NeverRunsBackwards) {
    const LinuxMediaClock clock;
    const double before = clock.now();
    EXPECT_GE(clock.now(), before);
    EXPECT_GT(before, 0);
}

TEST(SystemRoot, FollowsTheEnvironment) {
    setenv("VANTOR_SYSTEM_ROOT", "/opt/vantor", 1);
    EXPECT_EQ(systemRoot(), "/opt/vantor");
    unsetenv("VANTOR_SYSTEM_ROOT");
    EXPECT_EQ(systemRoot(), runningProgram().parent_path().parent_path() / "lib/vantor");
}

} // namespace
} // namespace vantor
