#pragma once
// An X server in memory (Xvfb) with or without a window manager (openbox), and what a person at it
// would do and see. Programs find it through DISPLAY.

#include "tests/e2e/picture.h"
#include "tests/e2e/process.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace vantor::e2e {

enum class WindowManager { none, openbox };

class X11Server {
  public:
    /// Throws when it does not start, which fails the test that asked. Sets DISPLAY in this
    /// process, and unsets WAYLAND_DISPLAY.
    explicit X11Server(WindowManager manager = WindowManager::none, unsigned width = 1280,
                       unsigned height = 800);
    ~X11Server();
    X11Server(const X11Server&) = delete;
    X11Server& operator=(const X11Server&) = delete;

    /// ":1"
    const std::string& display() const { return display_; }
    /// Runs a command on it to its end ("xdotool", "key", "l"); gives its output. A failing one
    /// fails the test.
    std::string run(std::vector<std::string> command) const;
    void startWindowManager();
    void stopWindowManager() { manager_.reset(); }
    /// The server ends; what is connected loses its connection.
    void kill();

    /// The number of the window with that title; 0 while there is none that is shown.
    std::uint32_t windowTitled(const std::string& title) const;
    /// Asks as a title bar's button would.
    void requestClose(std::uint32_t window) const;
    /// A window over all others, of that colour (0xRRGGBB), that no window manager touches.
    std::uint32_t addCover(int x, int y, unsigned width, unsigned height,
                           std::uint32_t color) const;
    void removeWindow(std::uint32_t window) const;
    /// A white window at 100, 100 of 300 × 200, with that state from its first moment
    /// ("_NET_WM_STATE_FULLSCREEN"; "" for none).
    std::uint32_t addManaged(const std::string& state) const;
    void setTextProperty(const std::string& name, const std::string& value) const;
    /// What is on the screen.
    Pixel at(int x, int y) const;
    /// From the lowest to the highest.
    std::vector<std::uint32_t> stacking() const;
    xcb_connection_t* connection() const { return connection_; }

  private:
    std::uint32_t atom(const std::string& name) const;
    std::uint32_t root() const;

    std::optional<Process> server_;
    std::optional<Process> manager_;
    xcb_connection_t* connection_ = nullptr;
    std::string display_;
};

} // namespace vantor::e2e
