#pragma once
// A connection to a message bus that is made again when the bus goes away and comes back.

#include "platform/linux/system/xpc/bus_message.h"

#include <functional>
#include <memory>
#include <string>

namespace vantor {

class MainLoop;
class UnifiedLogger;
class WorkItem;

/// Main thread. While the bus is up nothing is polled: its end is a signal. After it, tries come
/// half a second to a minute apart.
class FollowedBus {
  public:
    struct Kind {
        /// "session bus".
        const char* name;
        /// sd_bus_open_user or its like; negative is an error number.
        int (*open)(sd_bus**);
    };
    /// Adds what the connection is for to each new one, which lives until the next; a negative
    /// error number gives the connection up.
    using Prepare = std::function<int(sd_bus*)>;

    /// Connects when it is told to.
    FollowedBus(MainLoop& loop, UnifiedLogger& log, Kind kind, Prepare prepare);
    ~FollowedBus();
    FollowedBus(const FollowedBus&) = delete;
    FollowedBus& operator=(const FollowedBus&) = delete;

    /// Drops the connection, if there is one, and makes it anew; a negative error number when there
    /// is no bus. One that has been there is then waited for, one that never was is not.
    int connect();

    /// Null before the first success. The connection may have ended by now.
    sd_bus* get() const { return bus_.get(); }

  private:
    int open();
    static int ended(sd_bus_message* message, void* data, sd_bus_error* error);
    void retryLater();

    MainLoop& loop_;
    UnifiedLogger& log_;
    Kind kind_;
    Prepare prepare_;
    xpc::Bus bus_;
    /// The next try; null while the connection is up.
    std::shared_ptr<WorkItem> retry_;
    /// Until the try after the next; 0 before the first success.
    double delay_ = 0;
};

} // namespace vantor
