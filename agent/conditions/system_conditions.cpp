#include "agent/conditions/system_conditions.h"

#include "platform/linux/system/bus_properties.h"
#include "platform/notifications.h"
#include "platform/platform.h"
#include "platform/unified_log.h"

#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace vantor::agent {
namespace {

constexpr const char* kLogin = "org.freedesktop.login1";
constexpr const char* kLoginPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr const char* kActive = "Active";
constexpr const char* kPower = "org.freedesktop.UPower";
constexpr const char* kPowerPath = "/org/freedesktop/UPower";
constexpr const char* kOnBattery = "OnBattery";
constexpr const char* kOwnSession = "auto";

constexpr std::string_view kScreenLocked = "com.apple.screenIsLocked";
constexpr std::string_view kScreenUnlocked = "com.apple.screenIsUnlocked";

} // namespace

SystemConditions::SystemConditions(Platform& platform, MainLoop& loop,
                                   std::function<void()> changed)
    : changed_(std::move(changed)),
      log_(platform.unifiedLog().logger("com.nimbara.vantor", "conditions")),
      bus_(loop, *log_, {.name = "system bus", .open = sd_bus_open_system},
           [this](sd_bus* bus) { return prepare(bus); }) {
    const std::pair<std::string_view, bool> notifications[] = {{kScreenLocked, true},
                                                               {kScreenUnlocked, false}};
    for (const auto& [name, locked] : notifications) {
        platform.notifications().observeDistributed(
            name, [weak = std::weak_ptr(self_), locked = locked] {
                if (const auto self = weak.lock()) {
                    (*self)->set(&Conditions::isLocked, locked);
                }
            });
    }
    if (const int status = bus_.connect(); status < 0) {
        log_->write(std::string("no system bus: ") + std::strerror(-status) +
                    "; sleep, other sessions and the battery go unnoticed");
    }
}

SystemConditions::~SystemConditions() = default;

void SystemConditions::set(bool Conditions::*member, bool value) {
    if (std::exchange(current_.*member, value) != value) {
        changed_();
    }
}

int SystemConditions::prepare(sd_bus* bus) {
    int status = sd_bus_match_signal_async(bus, nullptr, kLogin, kLoginPath, kManager,
                                           "PrepareForSleep", preparesForSleep, nullptr, this);
    if (status >= 0) {
        status = sd_bus_call_method_async(bus, nullptr, kLogin, kLoginPath, kManager, "GetSession",
                                          gotSession, this, "s", kOwnSession);
    }
    if (status >= 0) {
        status = followProperty(bus, {kPower, kPowerPath, kPower, kOnBattery}, powerChanged,
                                gotOnBattery, this);
    }
    return status;
}

int SystemConditions::preparesForSleep(sd_bus_message* message, void* data, sd_bus_error*) {
    int begins = 0;
    if (sd_bus_message_read(message, "b", &begins) > 0) {
        static_cast<SystemConditions*>(data)->set(&Conditions::isAsleep, begins != 0);
    }
    return 0;
}

int SystemConditions::gotSession(sd_bus_message* reply, void* data, sd_bus_error*) {
    const char* path = nullptr;
    // Without a session of its own the agent belongs to none that could be switched away from.
    if (sd_bus_message_is_method_error(reply, nullptr) == 0 &&
        sd_bus_message_read(reply, "o", &path) > 0) {
        static_cast<void>(followProperty(sd_bus_message_get_bus(reply),
                                         {kLogin, path, kSession, kActive}, sessionChanged,
                                         gotActive, data));
    }
    return 0;
}

int SystemConditions::sessionChanged(sd_bus_message* message, void* data, sd_bus_error*) {
    if (const auto active = changedBoolean(message, kSession, kActive)) {
        static_cast<SystemConditions*>(data)->set(&Conditions::isSessionActive, *active);
    }
    return 0;
}

int SystemConditions::gotActive(sd_bus_message* reply, void* data, sd_bus_error*) {
    if (const auto active = booleanReply(reply)) {
        static_cast<SystemConditions*>(data)->set(&Conditions::isSessionActive, *active);
    }
    return 0;
}

int SystemConditions::powerChanged(sd_bus_message* message, void* data, sd_bus_error*) {
    if (const auto onBattery = changedBoolean(message, kPower, kOnBattery)) {
        static_cast<SystemConditions*>(data)->set(&Conditions::isOnBattery, *onBattery);
    }
    return 0;
}

int SystemConditions::gotOnBattery(sd_bus_message* reply, void* data, sd_bus_error*) {
    if (const auto onBattery = booleanReply(reply)) {
        static_cast<SystemConditions*>(data)->set(&Conditions::isOnBattery, *onBattery);
    }
    return 0;
}

} // namespace vantor::agent
