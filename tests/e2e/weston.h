#pragma once
// A Wayland compositor (Weston with its kiosk shell, which shows one window on its whole screen),
// nested in an X server or in memory. Programs find it through WAYLAND_DISPLAY.

#include "tests/e2e/process.h"
#include "tests/e2e/x11_server.h"

#include <optional>

namespace vantor::e2e {

struct WestonOptions {
    unsigned width = 1024;
    unsigned height = 640;
    int scale = 1;
};

class Weston {
  public:
    /// Throws when it does not start, which fails the test that asked. Sets WAYLAND_DISPLAY and
    /// XDG_RUNTIME_DIR in this process, and unsets DISPLAY. Its keyboard is the server's.
    Weston(const X11Server& server, const WestonOptions& options);
    /// In memory, and without a seat.
    explicit Weston(const WestonOptions& options);
    Weston(const Weston&) = delete;
    Weston& operator=(const Weston&) = delete;

    /// It ends; what is connected loses its connection.
    void kill();

  private:
    void start(const std::string& backend, const WestonOptions& options);

    TemporaryFolder folder_;
    std::optional<Process> compositor_;
};

} // namespace vantor::e2e
