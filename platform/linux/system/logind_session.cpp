#include "platform/linux/system/logind_session.h"

#include "platform/linux/system/bus_properties.h"
#include "platform/unified_log.h"

#include <utility>

namespace vantor {
namespace {

constexpr const char* kService = "org.freedesktop.login1";
constexpr const char* kManagerPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr const char* kLockedHint = "LockedHint";
/// The caller's own session, or else the one that the caller's user sees.
constexpr const char* kOwnSession = "auto";

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
    const std::pair<const char*, sd_bus_message_handler_t> signals[] = {{"Lock", locked},
                                                                        {"Unlock", unlocked}};
    for (const auto& [member, handler] : signals) {
        if (const int status = sd_bus_match_signal_async(bus, nullptr, kService, path, kSession,
                                                         member, handler, nullptr, this);
            status < 0) {
            return status;
        }
    }
    return followProperty(bus, {kService, path, kSession, kLockedHint}, propertiesChanged, gotHint,
                          this);
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
    if (const auto hint = changedBoolean(message, kSession, kLockedHint)) {
        static_cast<LogindSession*>(data)->observer_.changed(*hint);
    }
    return 0;
}

int LogindSession::gotHint(sd_bus_message* reply, void* data, sd_bus_error*) {
    if (const auto hint = booleanReply(reply)) {
        static_cast<LogindSession*>(data)->observer_.found(*hint);
    }
    return 0;
}

} // namespace vantor
