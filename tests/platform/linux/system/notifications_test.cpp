#include "platform/linux/main_loop.h"
#include "platform/linux/system/linux_notifications.h"
#include "platform/unified_log.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vantor {
namespace {

class CapturingLog : public UnifiedLog {
  public:
    std::unique_ptr<UnifiedLogger> logger(std::string_view, std::string_view) override {
        class Logger : public UnifiedLogger {
          public:
            explicit Logger(std::vector<std::string>& lines) : lines_(lines) {}
            bool isDefaultLevelEnabled() const override { return true; }
            void write(std::string_view message) override { lines_.emplace_back(message); }

          private:
            std::vector<std::string>& lines_;
        };
        return std::make_unique<Logger>(lines);
    }
    std::vector<std::string> lines;
};

/// A bus daemon of its own.
class PrivateBus {
  public:
    PrivateBus() {
        const auto address = "unix:path=" + (folder_.path() / "bus").string();
        pid_ = fork();
        if (pid_ == 0) {
            execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile",
                   ("--address=" + address).c_str(), nullptr);
            _exit(127);
        }
        for (int i = 0; i < 500 && !std::filesystem::exists(folder_.path() / "bus"); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    }
    ~PrivateBus() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }

  private:
    TemporaryFolder folder_;
    pid_t pid_ = -1;
};

TEST(LinuxNotifications, APostReachesTheObserversOfItsNameInAnotherConnection) {
    const PrivateBus bus;
    MainLoop loop;
    CapturingLog log;
    LinuxNotifications receiving(loop, log);
    LinuxNotifications posting(loop, log);
    int heard = 0;
    receiving.observeDarwin("com.nimbara.lockscreen.changed", [&] {
        if (++heard == 2) {
            loop.stop(0);
        }
    });
    receiving.observeDarwin("com.nimbara.other", [] { FAIL() << "another name is heard"; });
    loop.async([&] {
        EXPECT_TRUE(posting.postDarwin("com.nimbara.lockscreen.changed"));
        EXPECT_TRUE(posting.postDarwin("com.nimbara.lockscreen.changed"));
    });
    const auto deadline = loop.asyncAfter(10, [&] { loop.stop(1); });
    EXPECT_EQ(loop.run(), 0);
    EXPECT_EQ(heard, 2);
    EXPECT_TRUE(log.lines.empty());
}

TEST(LinuxNotifications, TheScreenSaverLocksAndUnlocks) {
    const PrivateBus bus;
    MainLoop loop;
    CapturingLog log;
    LinuxNotifications notifications(loop, log);
    std::vector<std::string> heard;
    notifications.observeDistributed("com.apple.screenIsLocked",
                                     [&] { heard.push_back("locked"); });
    notifications.observeDistributed("com.apple.screenIsUnlocked", [&] {
        heard.push_back("unlocked");
        loop.stop(0);
    });
    sd_bus* saver = nullptr;
    ASSERT_GE(sd_bus_open_user(&saver), 0);
    loop.async([saver] {
        for (const int active : {1, 0}) {
            sd_bus_emit_signal(saver, "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver",
                               "ActiveChanged", "b", active);
        }
        sd_bus_flush(saver);
    });
    const auto deadline = loop.asyncAfter(10, [&] { loop.stop(1); });
    EXPECT_EQ(loop.run(), 0);
    EXPECT_EQ(heard, (std::vector<std::string>{"locked", "unlocked"}));
    sd_bus_flush_close_unref(saver);
}

TEST(LinuxNotifications, WithoutABusOneLineIsLoggedAndPostingFails) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    MainLoop loop;
    CapturingLog log;
    LinuxNotifications notifications(loop, log);
    notifications.observeDarwin("a", [] {});
    notifications.observeDistributed("b", [] {});
    EXPECT_FALSE(notifications.postDarwin("a"));
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.lines[0].find("no session bus: "), 0U);
}

} // namespace
} // namespace vantor
