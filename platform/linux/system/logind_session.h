#pragma once
// The lock state of this process's login session, as logind tells it on the system bus: the
// session's signals "Lock" and "Unlock", and its property "LockedHint".

#include "platform/linux/system/followed_bus.h"

#include <functional>
#include <string>

namespace vantor {

/// Main thread. Nothing here waits: every call's answer comes through the loop.
class LogindSession {
  public:
    struct Observer {
        /// The session was locked or unlocked now.
        std::function<void(bool locked)> changed;
        /// What the property says when a connection is made; it may have been so for long.
        std::function<void(bool locked)> found;
    };

    LogindSession(MainLoop& loop, UnifiedLogger& log, Observer observer);

    /// A negative error number when there is no system bus.
    int connect() { return bus_.connect(); }

  private:
    int askForSession(sd_bus* bus);
    static int gotSession(sd_bus_message* reply, void* data, sd_bus_error* error);
    int follow(sd_bus* bus, const char* path);
    static int locked(sd_bus_message* message, void* data, sd_bus_error* error);
    static int unlocked(sd_bus_message* message, void* data, sd_bus_error* error);
    static int propertiesChanged(sd_bus_message* message, void* data, sd_bus_error* error);
    static int gotHint(sd_bus_message* reply, void* data, sd_bus_error* error);

    UnifiedLogger& log_;
    Observer observer_;
    FollowedBus bus_;
};

} // namespace vantor
