#include "platform/linux/system/logind_session.h"

#include "platform/unified_log.h"

#include <string_view>
#include <utility>

namespace vantor {
namespace {

constexpr const char* kService = "org.freedesktop.login1";
constexpr const char* kManagerPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kLockedHint = "LockedHint";
/// The caller's own session, or else the one that the caller's user sees.
constexpr const char* kOwnSession = "auto";

/// The LockedHint of a "PropertiesChanged", in which it need not stand.
std::optional<bool> changedHint(sd_bus_message* message) {
    const char* interface = nullptr;
    if (sd_bus_message_read(message, "s", &interface) < 0 ||
        std::string_view(interface) != kSession ||
        sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0) {
        return std::nullopt;
    }
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) < 0) {
            return std::nullopt;
        }
        int hint = 0;
        if (std::string_view(name) == kLockedHint) {
            return sd_bus_message_read(message, "v", "b", &hint) > 0 ? std::optional(hint != 0)
                                                                     : std::nullopt;
        }
        if (sd_bus_message_skip(message, "v") < 0 || sd_bus_message_exit_container(message) < 0) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

LogindSession::LogindSession(MainLoop& loop, UnifiedLogger& log, Observer observer)
    : log_(log), observer_(std::move(observer)),
      bus_(loop, log, {.name = "system bus", .open = sd_bus_open_system},
           [this](sd_bus* bus) { return askForSession(bus); }) {}

int LogindSession::askForSession(sd_bus* bus) {
    return sd_bus_call_method_async(bus, nullptr, kService, kManagerPath, kManager, "GetSession",
                                    gotSession, this, "s", kOwnSession);
}

int LogindSession::gotSession(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(data);
    const char* path = nullptr;
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) {
        self->log_.write(std::string("logind knows no session of ours: ") +
                         sd_bus_message_get_error(reply)->message);
    } else if (sd_bus_message_read(reply, "o", &path) < 0 ||
               self->follow(sd_bus_message_get_bus(reply), path) < 0) {
        self->log_.write("logind's session cannot be followed");
    }
    return 0;
}

int LogindSession::follow(sd_bus* bus, const char* path) {
    const struct {
        const char* interface;
        const char* member;
        sd_bus_message_handler_t handler;
    } signals[] = {
        {kSession, "Lock", locked},
        {kSession, "Unlock", unlocked},
        {kProperties, "PropertiesChanged", propertiesChanged},
    };
    for (const auto& [interface, member, handler] : signals) {
        if (const int status = sd_bus_match_signal_async(bus, nullptr, kService, path, interface,
                                                         member, handler, nullptr, this);
            status < 0) {
            return status;
        }
    }
    return sd_bus_call_method_async(bus, nullptr, kService, path, kProperties, "Get", gotHint, this,
                                    "ss", kSession, kLockedHint);
}

int LogindSession::locked(sd_bus_message*, void* data, sd_bus_error*) {
    static_cast<LogindSession*>(data)->observer_.changed(true);
    return 0;
}

int LogindSession::unlocked(sd_bus_message*, void* data, sd_bus_error*) {
    static_cast<LogindSession*>(data)->observer_.changed(false);
    return 0;
}

int LogindSession::propertiesChanged(sd_bus_message* message, void* data, sd_bus_error*) {
    if (const auto hint = changedHint(message)) {
        static_cast<LogindSession*>(data)->observer_.changed(*hint);
    }
    return 0;
}

int LogindSession::gotHint(sd_bus_message* reply, void* data, sd_bus_error*) {
    int hint = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) == 0 &&
        sd_bus_message_read(reply, "v", "b", &hint) > 0) {
        static_cast<LogindSession*>(data)->observer_.found(hint != 0);
    }
    return 0;
}

} // namespace vantor
