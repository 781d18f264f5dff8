#include "agent/output/window/native_display.h"

#include "agent/output/pacing/refresh_timer.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <X11/Xlib.h>
#include <cstdlib>
#include <utility>

namespace vantor::agent {
namespace {

SDL_SysWMinfo infoOf(SDL_Window& window) {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    SDL_GetWindowWMInfo(&window, &info);
    return info;
}

/// X11 announces no moments for frames: they are those of a timer at the display's rate.
class TimedPacer : public FramePacer {
  public:
    TimedPacer(MainLoop& loop, std::function<void()> due) : timer_(loop, 0, std::move(due)) {}
    void request() override { timer_.request(); }
    void willPresent() override { timer_.request(); }
    void setRate(double hertz) override { timer_.setRate(hertz); }

  private:
    RefreshTimer timer_;
};

class X11Display : public NativeDisplay {
  public:
    explicit X11Display(Display* display) : display_(display) {
        XSetIOErrorHandler([](Display*) { return 0; });
        // What Xlib does by itself when the connection breaks is to end the process.
        XSetIOErrorExitHandler(
            display_, [](Display*, void* self) { static_cast<X11Display*>(self)->isLost_ = true; },
            this);
        // For VisibilityNotify.
        SDL_EventState(SDL_SYSWMEVENT, SDL_ENABLE);
    }
    X11Display(const X11Display&) = delete;
    X11Display& operator=(const X11Display&) = delete;

    int descriptor() const override { return ConnectionNumber(display_); }
    bool isLost() const override { return isLost_; }

    // SDL waits until the server has unmapped a window, which a dead one never does: the loop that
    // it waits in would not end. So nothing is closed on a dead server, and one that dies just then
    // ends the process, as Xlib has it.
    bool canCloseWhenLost() const override { return false; }
    void willClose() override {
        XSetIOErrorExitHandler(
            display_, [](Display*, void*) { std::_Exit(EXIT_FAILURE); }, nullptr);
    }

    std::unique_ptr<FramePacer> makePacer(MainLoop& loop, SDL_Window&,
                                          std::function<void()> due) override {
        return std::make_unique<TimedPacer>(loop, std::move(due));
    }

    void watchObscurity(SDL_Window& window) override {
        const Window native = infoOf(window).info.x11.window;
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(display_, native, &attributes) != 0) {
            XSelectInput(display_, native, attributes.your_event_mask | VisibilityChangeMask);
            XFlush(display_);
        }
    }

    std::optional<bool> isObscured(SDL_Window& window, const SDL_Event& event) const override {
        if (event.type != SDL_SYSWMEVENT || event.syswm.msg->subsystem != SDL_SYSWM_X11) {
            return std::nullopt;
        }
        const XEvent& native = event.syswm.msg->msg.x11.event;
        if (native.type != VisibilityNotify ||
            native.xvisibility.window != infoOf(window).info.x11.window) {
            return std::nullopt;
        }
        return native.xvisibility.state == VisibilityFullyObscured;
    }

  private:
    Display* display_;
    bool isLost_ = false;
};

} // namespace

std::unique_ptr<NativeDisplay> makeX11Display(SDL_Window& window) {
    return std::make_unique<X11Display>(infoOf(window).info.x11.display);
}

} // namespace vantor::agent
