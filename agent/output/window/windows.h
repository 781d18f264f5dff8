#pragma once
// Virtual displays as windows on the desktop, X11's or Wayland's, through SDL.

#include "agent/output/output.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <memory>
#include <string>
#include <vector>

namespace vantor::agent {

struct WindowOptions {
    /// Points.
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
    std::string title;
};

/// One window for each, with the connectors "window-1" and so on; Wayland's where both display
/// servers answer, unless SDL_VIDEODRIVER says otherwise. A window that is closed is a display that
/// is unplugged; closing the last one is `WindowCommand::quit`, as is what the help panel names as
/// such. At most one backend of this kind at a time; only `ended` may destroy it from within an
/// event. Failure gives a sentence.
Result<std::unique_ptr<OutputBackend>, std::string>
makeWindows(MainLoop& loop, const std::vector<WindowOptions>& windows, OutputEvents events);

} // namespace vantor::agent
