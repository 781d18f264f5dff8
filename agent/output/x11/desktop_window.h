#pragma once
// The window below all others on one monitor. Main thread.

#include "agent/output/output.h"
#include "agent/output/pacing/refresh_timer.h"
#include "agent/output/x11/connection.h"
#include "agent/output/x11/monitors.h"

#include <functional>
#include <optional>

namespace vantor::agent::x11 {

class DesktopWindow final : public Output {
  public:
    /// `refresh` is called from the loop. The connection outlives the window.
    DesktopWindow(MainLoop& loop, const Connection& connection, const Monitor& monitor,
                  std::function<void(Output&)> refresh);
    ~DesktopWindow() override;
    DesktopWindow(const DesktopWindow&) = delete;
    DesktopWindow& operator=(const DesktopWindow&) = delete;

    const OutputDescription& description() const override { return description_; }
    Visibility visibility() const override { return visibility_; }
    VkSurfaceKHR makeSurface(VkInstance instance) override;
    bool isInMemory() const override { return false; }
    void requestRefresh() override;
    void willPresent() override { requestRefresh(); }

    xcb_window_t window() const { return window_; }
    const Rectangle& place() const { return monitor_.place; }
    /// A window manager is there, or came to anew: it may have put its windows below what was there
    /// before it, and it may have missed a window that was to be mapped while it started.
    void meetWindowManager();
    /// The monitor is where it was, or elsewhere.
    void follow(const Monitor& monitor);
    /// An event of this window.
    void take(const xcb_generic_event_t& event);

    /// Brings what is told up to date, given what covers the monitor; whether it, or the picture,
    /// is another one than after the last call.
    bool update(bool isBlanked, bool isFilled);

  private:
    void setProperties();
    void move();
    void due();

    const Connection& connection_;
    Monitor monitor_;
    xcb_window_t window_;
    RefreshTimer timer_;
    std::function<void(Output&)> refresh_;
    OutputDescription description_;
    Visibility visibility_ = Visibility::visible;
    /// What the window has of the monitor's size.
    std::uint32_t width_;
    std::uint32_t height_;
    /// By a window manager; else it is put lowest once.
    bool isManaged_;
    bool isMapped_ = false;
    bool isObscured_ = false;
    bool isExposed_ = false;
    bool isRefreshWanted_ = false;
    /// A window manager that put the window elsewhere was asked once to put it where it belongs.
    bool wasCorrected_ = false;
};

} // namespace vantor::agent::x11
