#include "platform/linux/system/followed_bus.h"

#include "platform/linux/main_loop.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <utility>

namespace vantor {
namespace {

constexpr double kFirstDelaySeconds = 0.5;
constexpr double kLongestDelaySeconds = 60;
/// A bus daemon that hangs holds up the main thread for no longer.
constexpr std::uint64_t kCallMicroseconds = 5'000'000;

// What sd-bus itself says when a connection has ended.
constexpr const char* kLocalName = "org.freedesktop.DBus.Local";
constexpr const char* kLocalPath = "/org/freedesktop/DBus/Local";

} // namespace

FollowedBus::FollowedBus(MainLoop& loop, UnifiedLogger& log, Kind kind, Prepare prepare)
    : loop_(loop), log_(log), kind_(kind), prepare_(std::move(prepare)) {}

FollowedBus::~FollowedBus() {
    if (retry_) {
        retry_->cancel();
    }
}

int FollowedBus::connect() {
    const bool wasAway = retry_ != nullptr;
    if (retry_) {
        retry_->cancel();
        retry_ = nullptr;
    }
    bus_ = nullptr;
    const int status = open();
    if (status >= 0) {
        delay_ = kFirstDelaySeconds;
        if (wasAway) {
            log_.write(std::string("the ") + kind_.name + " is back");
        }
    } else if (delay_ > 0) {
        retryLater();
    }
    return status;
}

int FollowedBus::open() {
    sd_bus* opened = nullptr;
    int status = kind_.open(&opened);
    if (status < 0) {
        return status;
    }
    xpc::Bus bus(opened);
    status = sd_bus_set_method_call_timeout(opened, kCallMicroseconds);
    if (status >= 0) {
        status = sd_bus_match_signal(opened, nullptr, kLocalName, kLocalPath, kLocalName,
                                     "Disconnected", ended, this);
    }
    if (status >= 0) {
        status = prepare_(opened);
    }
    if (status >= 0) {
        status = sd_bus_attach_event(opened, loop_.event(), SD_EVENT_PRIORITY_NORMAL);
    }
    if (status >= 0) {
        bus_ = std::move(bus);
    }
    return status;
}

int FollowedBus::ended(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* self = static_cast<FollowedBus*>(data);
    // A connection that is still being made answers for itself.
    if (sd_bus_message_get_bus(message) == self->bus_.get() && !self->retry_) {
        self->log_.write(std::string("the ") + self->kind_.name + " has gone");
        self->retryLater();
    }
    return 0;
}

void FollowedBus::retryLater() {
    retry_ = loop_.asyncAfter(delay_, [this] { connect(); });
    delay_ = std::min(delay_ * 2, kLongestDelaySeconds);
}

} // namespace vantor
