#include "platform/linux/main_loop.h"
#include "platform/linux/system/linux_notifications.h"
#include "platform/unified_log.h"
#include "tests/platform/linux/system/private_bus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kNowhere = "unix:path=/nonexistent";
constexpr const char* kChanged = "com.nimbara.lockscreen.changed";
constexpr const char* kLocked = "com.apple.screenIsLocked";
constexpr const char* kUnlocked = "com.apple.screenIsUnlocked";

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

/// A connection that a test speaks with, turned by the loop.
class Peer {
  public:
    Peer(MainLoop& loop, int (*open)(sd_bus**)) {
        EXPECT_GE(open(&bus_), 0);
        EXPECT_GE(sd_bus_attach_event(bus_, loop.event(), SD_EVENT_PRIORITY_NORMAL), 0);
    }
    ~Peer() { sd_bus_flush_close_unref(bus_); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    sd_bus* get() const { return bus_; }

  private:
    sd_bus* bus_ = nullptr;
};

/// logind as far as a session's lock goes, on the system bus.
class FakeLogind {
  public:
    explicit FakeLogind(MainLoop& loop, bool hint = false)
        : hint_(hint ? 1 : 0), peer_(loop, sd_bus_open_system) {
        static const sd_bus_vtable manager[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("GetSession", "s", "o", getSession, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END};
        static const sd_bus_vtable session[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_PROPERTY("LockedHint", "b", nullptr, offsetof(FakeLogind, hint_),
                            SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_PROPERTY("IdleHint", "b", nullptr, offsetof(FakeLogind, hint_),
                            SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_VTABLE_END};
        EXPECT_GE(sd_bus_add_object_vtable(peer_.get(), nullptr, "/org/freedesktop/login1",
                                           "org.freedesktop.login1.Manager", manager, this),
                  0);
        EXPECT_GE(
            sd_bus_add_object_vtable(peer_.get(), nullptr, kSessionPath, kSession, session, this),
            0);
        EXPECT_GE(sd_bus_request_name(peer_.get(), "org.freedesktop.login1", 0), 0);
    }

    /// "Lock" or "Unlock".
    void signal(const char* member) {
        EXPECT_GE(sd_bus_emit_signal(peer_.get(), kSessionPath, kSession, member, ""), 0);
    }
    /// A session of somebody else.
    void signalElsewhere(const char* member) {
        EXPECT_GE(sd_bus_emit_signal(peer_.get(), "/org/freedesktop/login1/session/_32", kSession,
                                     member, ""),
                  0);
    }
    void setHint(bool locked) {
        hint_ = locked ? 1 : 0;
        EXPECT_GE(sd_bus_emit_properties_changed(peer_.get(), kSessionPath, kSession, "IdleHint",
                                                 "LockedHint", nullptr),
                  0);
    }

    /// Asks who follows the session for a sign of life, which comes after all that was said before.
    void ping() {
        answered_ = false;
        EXPECT_GE(sd_bus_call_method_async(peer_.get(), nullptr, follower_.c_str(), "/",
                                           "org.freedesktop.DBus.Peer", "Ping", answered, this, ""),
                  0);
    }
    bool isAnswered() const { return answered_; }

  private:
    static constexpr const char* kSessionPath = "/org/freedesktop/login1/session/_31";
    static constexpr const char* kSession = "org.freedesktop.login1.Session";

    static int answered(sd_bus_message*, void* data, sd_bus_error*) {
        static_cast<FakeLogind*>(data)->answered_ = true;
        return 0;
    }

    static int getSession(sd_bus_message* call, void* data, sd_bus_error*) {
        static_cast<FakeLogind*>(data)->follower_ = sd_bus_message_get_sender(call);
        const char* name = nullptr;
        EXPECT_GE(sd_bus_message_read(call, "s", &name), 0);
        EXPECT_STREQ(name, "auto");
        return sd_bus_reply_method_return(call, "o", kSessionPath);
    }

    int hint_;
    std::string follower_;
    bool answered_ = false;
    Peer peer_;
};

class LinuxNotificationsTest : public testing::Test {
  protected:
    LinuxNotificationsTest() {
        setenv("DBUS_SESSION_BUS_ADDRESS", kNowhere, 1);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", kNowhere, 1);
    }

    void observe(LinuxNotifications& notifications, const char* name) {
        notifications.observeDistributed(name, [this, name] { heard_.emplace_back(name); });
    }
    void observeLock(LinuxNotifications& notifications) {
        observe(notifications, kLocked);
        observe(notifications, kUnlocked);
    }

    /// Turns the loop until the condition holds; false when that takes too long.
    bool eventually(const std::function<bool()>& condition) {
        bool late = false;
        const auto deadline = loop_.asyncAfter(20, [&late] { late = true; });
        while (!condition() && !late) {
            loop_.turn();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        deadline->cancel();
        return !late;
    }
    bool hears(std::size_t count) {
        return eventually([&] { return heard_.size() >= count; });
    }
    bool logs(const std::string& line) {
        return eventually([&] {
            return std::find(log_.lines.begin(), log_.lines.end(), line) != log_.lines.end();
        });
    }
    void saverSays(Peer& saver, bool active) {
        EXPECT_GE(sd_bus_emit_signal(saver.get(), "/org/freedesktop/ScreenSaver",
                                     "org.freedesktop.ScreenSaver", "ActiveChanged", "b",
                                     active ? 1 : 0),
                  0);
    }
    void saverPosts(Peer& saver, const char* name) {
        EXPECT_GE(sd_bus_emit_signal(saver.get(), "/com/nimbara/vantor",
                                     "com.nimbara.vantor.Notifications", "Posted", "s", name),
                  0);
    }
    /// Until logind's session is followed, its signals reach nobody.
    void waitForLogind(FakeLogind& logind) {
        logind.setHint(true);
        ASSERT_TRUE(hears(1));
        logind.setHint(false);
        ASSERT_TRUE(hears(2));
        ASSERT_THAT(heard_, ElementsAre(kLocked, kUnlocked));
        heard_.clear();
    }

    MainLoop loop_;
    CapturingLog log_;
    std::vector<std::string> heard_;
};

TEST_F(LinuxNotificationsTest, APostReachesTheObserversOfItsNameInAnotherConnection) {
    const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    LinuxNotifications receiving(loop_, log_);
    LinuxNotifications posting(loop_, log_);
    observe(receiving, kChanged);
    observe(receiving, "com.nimbara.last");
    receiving.observeDarwin("com.nimbara.other", [] { FAIL() << "another name is heard"; });
    EXPECT_TRUE(posting.postDarwin(kChanged));
    EXPECT_TRUE(posting.postDarwin(kChanged));
    EXPECT_TRUE(posting.postDarwin("com.nimbara.last"));
    ASSERT_TRUE(hears(3));
    EXPECT_THAT(heard_, ElementsAre(kChanged, kChanged, "com.nimbara.last"));
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(LinuxNotificationsTest, TheScreenSaverLocksAndUnlocks) {
    const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    LinuxNotifications notifications(loop_, log_);
    observeLock(notifications);
    Peer saver(loop_, sd_bus_open_user);
    saverSays(saver, true);
    saverSays(saver, false);
    ASSERT_TRUE(hears(2));
    EXPECT_THAT(heard_, ElementsAre(kLocked, kUnlocked));
}

TEST_F(LinuxNotificationsTest, LogindsSessionLocksAndUnlocksWithItsSignals) {
    const PrivateBus bus("DBUS_SYSTEM_BUS_ADDRESS");
    FakeLogind logind(loop_);
    LinuxNotifications notifications(loop_, log_);
    observeLock(notifications);
    waitForLogind(logind);
    logind.signalElsewhere("Lock");
    logind.signal("Lock");
    logind.signal("Unlock");
    ASSERT_TRUE(hears(2));
    EXPECT_THAT(heard_, ElementsAre(kLocked, kUnlocked));
}

TEST_F(LinuxNotificationsTest, AScreenThatIsLockedAtTheStartIsFoundLocked) {
    const PrivateBus bus("DBUS_SYSTEM_BUS_ADDRESS");
    FakeLogind logind(loop_, true);
    LinuxNotifications notifications(loop_, log_);
    observeLock(notifications);
    ASSERT_TRUE(hears(1));
    EXPECT_THAT(heard_, ElementsAre(kLocked));
}

TEST_F(LinuxNotificationsTest, WhenAllSpeakEachChangeIsHeardOnce) {
    const PrivateBus session("DBUS_SESSION_BUS_ADDRESS");
    const PrivateBus system("DBUS_SYSTEM_BUS_ADDRESS");
    FakeLogind logind(loop_);
    LinuxNotifications notifications(loop_, log_);
    observeLock(notifications);
    observe(notifications, "com.nimbara.last");
    waitForLogind(logind);
    Peer saver(loop_, sd_bus_open_user);
    for (const bool locked : {true, false, true}) {
        heard_.clear();
        logind.signal(locked ? "Lock" : "Unlock");
        logind.setHint(locked);
        logind.ping();
        saverSays(saver, locked);
        saverPosts(saver, "com.nimbara.last");
        ASSERT_TRUE(hears(2));
        ASSERT_TRUE(eventually([&] { return logind.isAnswered(); }));
        EXPECT_THAT(heard_, testing::UnorderedElementsAre(locked ? kLocked : kUnlocked,
                                                          "com.nimbara.last"));
    }
}

TEST_F(LinuxNotificationsTest, APostedLockIsHeardAsItIsPosted) {
    const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    LinuxNotifications notifications(loop_, log_);
    observeLock(notifications);
    EXPECT_TRUE(notifications.postDarwin(kUnlocked));
    EXPECT_TRUE(notifications.postDarwin(kUnlocked));
    ASSERT_TRUE(hears(2));
    EXPECT_THAT(heard_, ElementsAre(kUnlocked, kUnlocked));
}

TEST_F(LinuxNotificationsTest, ASessionBusThatComesBackIsFollowedAgain) {
    PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    LinuxNotifications receiving(loop_, log_);
    LinuxNotifications posting(loop_, log_);
    observe(receiving, kChanged);
    ASSERT_TRUE(posting.postDarwin(kChanged));
    ASSERT_TRUE(hears(1));

    bus.stop();
    ASSERT_TRUE(logs("the session bus has gone"));
    EXPECT_FALSE(posting.postDarwin(kChanged));
    bus.start();
    ASSERT_TRUE(logs("the session bus is back"));
    EXPECT_TRUE(posting.postDarwin(kChanged));
    EXPECT_TRUE(hears(2));
}

TEST_F(LinuxNotificationsTest, APosterFindsTheBusAgainByItself) {
    PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    LinuxNotifications posting(loop_, log_);
    ASSERT_TRUE(posting.postDarwin(kChanged));
    bus.stop();
    EXPECT_FALSE(posting.postDarwin(kChanged));
    bus.start();
    EXPECT_TRUE(posting.postDarwin(kChanged)) << "though its loop has not run";
}

TEST_F(LinuxNotificationsTest, ALockThatWasMissedWhileTheSystemBusWasAwayIsFoundAfterIt) {
    PrivateBus bus("DBUS_SYSTEM_BUS_ADDRESS");
    LinuxNotifications notifications(loop_, log_);
    {
        FakeLogind logind(loop_);
        observeLock(notifications);
        waitForLogind(logind);
    }
    bus.stop();
    ASSERT_TRUE(logs("the system bus has gone"));
    bus.start();
    FakeLogind logind(loop_, true);
    ASSERT_TRUE(hears(1));
    EXPECT_THAT(heard_, ElementsAre(kLocked));
}

TEST_F(LinuxNotificationsTest, ASystemBusWithoutLogindIsSaidOnceAndTheRestWorks) {
    const PrivateBus session("DBUS_SESSION_BUS_ADDRESS");
    const PrivateBus system("DBUS_SYSTEM_BUS_ADDRESS");
    LinuxNotifications notifications(loop_, log_);
    observeLock(notifications);
    ASSERT_TRUE(eventually([&] { return !log_.lines.empty(); }));
    Peer saver(loop_, sd_bus_open_user);
    saverSays(saver, true);
    ASSERT_TRUE(hears(1));
    EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("logind knows no session of ours: ")));
}

TEST_F(LinuxNotificationsTest, WithoutABusOneLineIsLoggedAndPostingFails) {
    LinuxNotifications notifications(loop_, log_);
    notifications.observeDarwin("a", [] {});
    notifications.observeDistributed("b", [] {});
    EXPECT_FALSE(notifications.postDarwin("a"));
    EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("no session bus: ")));
    observeLock(notifications);
    EXPECT_THAT(log_.lines,
                ElementsAre(HasSubstr("no session bus: "), HasSubstr("no system bus: ")));
}

TEST_F(LinuxNotificationsTest, WhoOnlyPostsIsToldByTheResultAlone) {
    LinuxNotifications notifications(loop_, log_);
    EXPECT_FALSE(notifications.postDarwin("a"));
    EXPECT_THAT(log_.lines, IsEmpty());
}

} // namespace
} // namespace vantor
