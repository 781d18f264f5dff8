#pragma once
// The windows that fill monitors, as the window manager tells of them: where windows are
// composited, the server itself counts nothing as covered.

#include "agent/output/x11/connection.h"
#include "agent/output/x11/monitors.h"

#include <span>
#include <vector>

namespace vantor::agent::x11 {

class FullScreenWindows {
  public:
    explicit FullScreenWindows(const Connection& connection) : connection_(connection) {}

    /// Whether they may be others after that event.
    bool concerns(const xcb_generic_event_t& event) const;
    /// Asks for them anew; `own` are not looked at.
    void read(std::span<const xcb_window_t> own);
    bool cover(const Rectangle& place) const;

  private:
    struct Found {
        xcb_window_t window = XCB_NONE;
        Rectangle place;
    };

    bool isOnCurrentDesktop(xcb_window_t window, std::span<const std::uint32_t> current) const;
    bool isFullScreen(xcb_window_t window) const;
    /// Empty when it is not shown.
    Rectangle placeOf(xcb_window_t window) const;
    void watch(xcb_window_t window, std::uint32_t events) const;

    const Connection& connection_;
    std::vector<Found> found_;
};

} // namespace vantor::agent::x11
