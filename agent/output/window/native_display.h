#pragma once
// The connection to the display server that SDL holds, for what SDL does not do: waking our loop,
// pacing frames, telling what covers a window, and outliving the server. Main thread.

#include "agent/output/window/frame_pacer.h"
#include "platform/linux/main_loop.h"

#include <functional>
#include <memory>
#include <optional>

struct SDL_Window;
union SDL_Event;

namespace vantor::agent {

/// Made while SDL's video runs, and destroyed before it ends.
class NativeDisplay {
  public:
    /// The connection that this window is on; null when it is neither X11's nor Wayland's.
    static std::unique_ptr<NativeDisplay> of(SDL_Window& window);
    virtual ~NativeDisplay() = default;

    /// Readable when the server has said something.
    virtual int descriptor() const = 0;
    /// The server closed the connection, or it was closed for an error.
    virtual bool isLost() const = 0;
    /// Whether SDL may destroy its windows after that.
    virtual bool canCloseWhenLost() const = 0;
    /// SDL is about to destroy its windows.
    virtual void willClose() = 0;
    /// `due` may show a frame now.
    virtual std::unique_ptr<FramePacer> makePacer(MainLoop& loop, SDL_Window& window,
                                                  std::function<void()> due) = 0;
    /// Asks the server to tell when the window is covered.
    virtual void watchObscurity(SDL_Window& window) = 0;
    /// Whether other windows cover it wholly, if the event is one that tells.
    virtual std::optional<bool> isObscured(SDL_Window& window, const SDL_Event& event) const = 0;
};

/// The two kinds; `of` chooses.
std::unique_ptr<NativeDisplay> makeX11Display(SDL_Window& window);
std::unique_ptr<NativeDisplay> makeWaylandDisplay(SDL_Window& window);

} // namespace vantor::agent
