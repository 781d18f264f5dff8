#include "agent/conditions/system_conditions.h"

#include "platform/linux/main_loop.h"
#include "tests/platform/linux/system/private_bus.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <optional>
#include <systemd/sd-bus.h>

namespace vantor::agent {
namespace {

constexpr const char* kSessionPath = "/org/freedesktop/login1/session/c7";

/// logind and UPower as far as the conditions go, on the system bus.
class FakeMachine {
  public:
    explicit FakeMachine(MainLoop& loop) {
        static const sd_bus_vtable manager[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("GetSession", "s", "o", getSession, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END};
        static const sd_bus_vtable session[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_PROPERTY("Active", "b", nullptr, offsetof(FakeMachine, isActive_),
                            SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_VTABLE_END};
        static const sd_bus_vtable power[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_PROPERTY("OnBattery", "b", nullptr, offsetof(FakeMachine, isOnBattery_),
                            SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_PROPERTY("LidIsClosed", "b", nullptr, offsetof(FakeMachine, isLidClosed_),
                            SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_VTABLE_END};
        EXPECT_GE(sd_bus_open_system(&bus_), 0);
        EXPECT_GE(sd_bus_attach_event(bus_, loop.event(), SD_EVENT_PRIORITY_NORMAL), 0);
        for (const auto& [path, interface, table] :
             {std::tuple{"/org/freedesktop/login1", "org.freedesktop.login1.Manager", manager},
              std::tuple{kSessionPath, "org.freedesktop.login1.Session", session},
              std::tuple{"/org/freedesktop/UPower", "org.freedesktop.UPower", power}}) {
            EXPECT_GE(sd_bus_add_object_vtable(bus_, nullptr, path, interface, table, this), 0);
        }
        EXPECT_GE(sd_bus_request_name(bus_, "org.freedesktop.login1", 0), 0);
        EXPECT_GE(sd_bus_request_name(bus_, "org.freedesktop.UPower", 0), 0);
    }
    ~FakeMachine() { sd_bus_flush_close_unref(bus_); }
    FakeMachine(const FakeMachine&) = delete;
    FakeMachine& operator=(const FakeMachine&) = delete;

    void setActive(bool active) {
        isActive_ = active ? 1 : 0;
        EXPECT_GE(sd_bus_emit_properties_changed(
                      bus_, kSessionPath, "org.freedesktop.login1.Session", "Active", nullptr),
                  0);
    }
    void setOnBattery(bool onBattery) {
        isOnBattery_ = onBattery ? 1 : 0;
        EXPECT_GE(sd_bus_emit_properties_changed(bus_, "/org/freedesktop/UPower",
                                                 "org.freedesktop.UPower", "LidIsClosed",
                                                 "OnBattery", nullptr),
                  0);
    }
    void prepareForSleep(bool begins) {
        EXPECT_GE(sd_bus_emit_signal(bus_, "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", "PrepareForSleep", "b",
                                     begins ? 1 : 0),
                  0);
    }

  private:
    static int getSession(sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "o", kSessionPath);
    }

    sd_bus* bus_ = nullptr;
    int isActive_ = 1;
    int isOnBattery_ = 0;
    [[maybe_unused]] int isLidClosed_ = 0;
};

class SystemConditionsTest : public testing::Test {
  protected:
    ~SystemConditionsTest() override { platform_.reset(); }

    void follow() {
        conditions_ = std::make_unique<SystemConditions>(platform_, loop_, [this] {
            ++changes_;
            loop_.stop(0);
        });
    }
    /// Turns the loop until the condition is as it should be; false when it never is.
    bool becomes(bool Conditions::*condition, bool value) {
        const auto patience = loop_.asyncAfter(30, [this] { loop_.stop(1); });
        while (conditions_->current().*condition != value) {
            if (loop_.run() != 0) {
                return false;
            }
        }
        patience->cancel();
        return true;
    }

    FakePlatform& platform_ = FakePlatform::shared();
    MainLoop loop_;
    PrivateBus system_{"DBUS_SYSTEM_BUS_ADDRESS"};
    std::unique_ptr<SystemConditions> conditions_;
    int changes_ = 0;
};

TEST_F(SystemConditionsTest, KnowsWhatHoldsWhenItBegins) {
    FakeMachine machine(loop_);
    machine.setActive(false);
    machine.setOnBattery(true);
    follow();
    EXPECT_EQ(conditions_->current(), Conditions());
    EXPECT_TRUE(becomes(&Conditions::isOnBattery, true));
    EXPECT_TRUE(becomes(&Conditions::isSessionActive, false));
    EXPECT_FALSE(conditions_->current().isAsleep);
}

TEST_F(SystemConditionsTest, FollowsTheBatteryTheSessionAndSleep) {
    FakeMachine machine(loop_);
    machine.setOnBattery(true);
    machine.setActive(false);
    follow();
    // From here on both are followed.
    ASSERT_TRUE(becomes(&Conditions::isOnBattery, true));
    ASSERT_TRUE(becomes(&Conditions::isSessionActive, false));
    machine.setOnBattery(false);
    EXPECT_TRUE(becomes(&Conditions::isOnBattery, false));
    machine.setActive(true);
    EXPECT_TRUE(becomes(&Conditions::isSessionActive, true));
    machine.prepareForSleep(true);
    EXPECT_TRUE(becomes(&Conditions::isAsleep, true));
    machine.prepareForSleep(false);
    EXPECT_TRUE(becomes(&Conditions::isAsleep, false));
    EXPECT_EQ(changes_, 6);
}

TEST_F(SystemConditionsTest, TakesTheLockFromThePlatformsNotifications) {
    follow();
    auto& notifications = platform_.notifications();
    notifications.deliverDistributed("com.apple.screenIsLocked");
    platform_.mainQueue().drain();
    EXPECT_TRUE(conditions_->current().isLocked);
    notifications.deliverDistributed("com.apple.screenIsLocked");
    platform_.mainQueue().drain();
    notifications.deliverDistributed("com.apple.screenIsUnlocked");
    platform_.mainQueue().drain();
    EXPECT_FALSE(conditions_->current().isLocked);
    EXPECT_EQ(changes_, 2);
}

TEST_F(SystemConditionsTest, OutlivedByItsObserversItHearsNothing) {
    follow();
    conditions_.reset();
    platform_.notifications().deliverDistributed("com.apple.screenIsLocked");
    platform_.mainQueue().drain();
    EXPECT_EQ(changes_, 0);
}

TEST_F(SystemConditionsTest, WithoutASystemBusEverythingIsHarmless) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    follow();
    EXPECT_EQ(conditions_->current(), Conditions());
    EXPECT_EQ(changes_, 0);
}

} // namespace
} // namespace vantor::agent
