#pragma once
// The connection to the compositor, as a source of the main loop. Vulkan drivers read from the same
// connection and may find events for us, so each turn of the loop looks for those too; nothing
// wakes while the compositor is silent. Main thread.

#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

struct sd_event_source;
struct wl_display;

namespace vantor::agent::wayland {

class Connection {
  public:
    struct Events {
        /// Listeners have run, or `wake` was called.
        std::function<void()> settle;
        /// The compositor is gone, for the reason that the sentence gives. The last event; it may
        /// destroy the connection.
        std::function<void(const std::string& why)> ended;
    };

    /// To the compositor that the environment names. The failure is a sentence.
    static Result<std::unique_ptr<Connection>, std::string> open(MainLoop& loop);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    wl_display* display() const { return display_; }

    /// Waits until the compositor has handled everything so far and listeners have run; gives the
    /// reason when it does not within a few seconds.
    std::optional<std::string> roundTrip();
    /// From now on the loop reads.
    void start(Events events);
    /// Has `settle` called from the loop soon.
    void wake();
    /// Sends what was asked for so far, as far as the compositor takes it.
    void flush();

  private:
    Connection(MainLoop& loop, wl_display* display) : loop_(loop), display_(display) {}

    static int turnEnded(sd_event_source* source, void* self);
    void readable();
    /// Everything that a turn of the loop leaves to do.
    void pump();
    void end();
    /// Why the connection cannot be used any more.
    std::string reason() const;

    MainLoop& loop_;
    wl_display* const display_;
    Events events_;
    /// Null before the start and after the end.
    std::unique_ptr<DescriptorWatch> watch_;
    sd_event_source* turnEnded_ = nullptr;
    bool awaitsRoom_ = false;
    bool settleWanted_ = false;
};

} // namespace vantor::agent::wayland
