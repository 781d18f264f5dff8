#pragma once
// Whether the screen is blanked. A display that power management switches off counts: the server
// then says that its screen saver is on.

#include "agent/output/x11/connection.h"

namespace vantor::agent::x11 {

class ScreenSaver {
  public:
    /// On a server without the extension it is never on.
    explicit ScreenSaver(const Connection& connection);

    /// Whether the event was one of the screen saver's.
    bool take(const xcb_generic_event_t& event);
    bool isOn() const { return isOn_; }

  private:
    /// Of its events; 0 without the extension.
    std::uint8_t firstEvent_ = 0;
    bool isOn_ = false;
};

} // namespace vantor::agent::x11
