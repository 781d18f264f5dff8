#include "agent/output/wayland/connection.h"

#include "agent/output/wayland/proxy.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <poll.h>
#include <sys/epoll.h>
#include <system_error>
#include <systemd/sd-event.h>
#include <utility>

namespace vantor::agent::wayland {
namespace {

/// How long a compositor may take to answer while we start.
constexpr auto kPatience = std::chrono::seconds(10);

constexpr wl_callback_listener kDone = {
    .done = [](void* data, wl_callback*, std::uint32_t) { *static_cast<bool*>(data) = true; },
};

/// Waits for `events`; false when they do not come in time.
bool waitFor(int descriptor, short events, std::chrono::steady_clock::time_point end) {
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return false;
        }
        pollfd polled = {descriptor, events, 0};
        const int count = ::poll(&polled, 1, static_cast<int>(left.count()));
        if (count > 0) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            return false;
        }
    }
}

} // namespace

Result<std::unique_ptr<Connection>, std::string> Connection::open(MainLoop& loop) {
    wl_display* const display = wl_display_connect(nullptr);
    if (display == nullptr) {
        const int error = errno;
        const char* const name = std::getenv("WAYLAND_DISPLAY");
        return Failure{std::string("there is no Wayland compositor at '") +
                       (name != nullptr ? name : "wayland-0") +
                       "': " + std::generic_category().message(error)};
    }
    return std::unique_ptr<Connection>(new Connection(loop, display));
}

Connection::~Connection() {
    sd_event_source_disable_unref(turnEnded_);
    watch_.reset();
    wl_display_disconnect(display_);
}

std::optional<std::string> Connection::roundTrip() {
    bool done = false;
    const Proxy<wl_callback> answer(wl_display_sync(display_));
    wl_callback_add_listener(answer.get(), &kDone, &done);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    const int descriptor = wl_display_get_fd(display_);
    while (!done) {
        if (wl_display_dispatch_pending(display_) < 0) {
            return reason();
        }
        if (done || wl_display_prepare_read(display_) != 0) {
            continue;
        }
        const bool wroteAll = wl_display_flush(display_) >= 0 || errno != EAGAIN;
        const short events = wroteAll ? POLLIN : POLLIN | POLLOUT;
        if (!waitFor(descriptor, events, end)) {
            wl_display_cancel_read(display_);
            return "the compositor does not answer within " + std::to_string(kPatience.count()) +
                   " seconds";
        }
        if (wl_display_read_events(display_) < 0) {
            return reason();
        }
    }
    return std::nullopt;
}

void Connection::start(Events events) {
    events_ = std::move(events);
    watch_ =
        loop_.watch(wl_display_get_fd(display_), EPOLLIN, [this](std::uint32_t) { readable(); });
    sd_event_add_post(loop_.event(), &turnEnded_, turnEnded, this);
    wake();
}

void Connection::wake() {
    settleWanted_ = true;
    // The turn's end does the work.
    loop_.async([] {});
}

void Connection::flush() {
    if (!watch_) {
        return;
    }
    // With a broken pipe there may still be something to read: the reason.
    const bool full = wl_display_flush(display_) < 0 && errno == EAGAIN;
    if (full != awaitsRoom_) {
        awaitsRoom_ = full;
        watch_->setEvents(full ? EPOLLIN | EPOLLOUT : EPOLLIN);
    }
}

void Connection::readable() {
    // Where events wait already, the turn's end takes those first.
    if (wl_display_prepare_read(display_) == 0) {
        wl_display_read_events(display_);
    }
}

int Connection::turnEnded(sd_event_source*, void* self) {
    static_cast<Connection*>(self)->pump();
    return 0;
}

void Connection::pump() {
    const int dispatched = wl_display_dispatch_pending(display_);
    if (dispatched < 0 || wl_display_get_error(display_) != 0) {
        end();
        return;
    }
    const bool wanted = std::exchange(settleWanted_, false);
    if (dispatched > 0 || wanted) {
        events_.settle();
    }
    flush();
    // A driver that was called meanwhile may have read events for us.
    if (wl_display_prepare_read(display_) == 0) {
        wl_display_cancel_read(display_);
    } else {
        loop_.async([] {});
    }
}

void Connection::end() {
    turnEnded_ = sd_event_source_disable_unref(turnEnded_);
    watch_.reset();
    const auto ended = std::move(events_.ended);
    ended(reason());
}

std::string Connection::reason() const {
    const int error = wl_display_get_error(display_);
    if (error == EPROTO) {
        const wl_interface* interface = nullptr;
        std::uint32_t object = 0;
        const std::uint32_t code = wl_display_get_protocol_error(display_, &interface, &object);
        return "the compositor ended the connection with protocol error " + std::to_string(code) +
               " of " + (interface != nullptr ? interface->name : "an object that is gone");
    }
    if (error == EPIPE || error == ECONNRESET) {
        return "the compositor closed the connection";
    }
    return "the connection to the compositor failed: " + std::generic_category().message(error);
}

} // namespace vantor::agent::wayland
