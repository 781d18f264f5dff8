#include "agent/output/window/native_display.h"

#include <SDL.h>
#include <SDL_syswm.h>

namespace vantor::agent {

std::unique_ptr<NativeDisplay> NativeDisplay::of(SDL_Window& window) {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (SDL_GetWindowWMInfo(&window, &info) == SDL_FALSE) {
        return nullptr;
    }
    switch (info.subsystem) {
    case SDL_SYSWM_X11:
        return makeX11Display(window);
    case SDL_SYSWM_WAYLAND:
        return makeWaylandDisplay(window);
    default:
        return nullptr;
    }
}

} // namespace vantor::agent
