#include "agent/output/output_backends.h"

#include "agent/output/headless/headless_backend.h"
#include "agent/output/wayland/wayland_background.h"
#include "agent/output/window/windows.h"
#include "agent/output/x11/x11_background.h"

#include <cstdlib>
#include <utility>
#include <vector>

namespace vantor::agent {
namespace {

std::vector<OutputDescription> virtualDisplays(const OutputRequest& request,
                                               std::uint32_t refreshRate) {
    std::vector<OutputDescription> displays;
    for (const DisplayMode& mode : request.displays) {
        displays.push_back({.connector = "headless-" + std::to_string(displays.size() + 1),
                            .width = mode.width,
                            .height = mode.height,
                            .scale = mode.scale,
                            .refreshRate = static_cast<double>(refreshRate)});
    }
    return displays;
}

std::vector<WindowOptions> windows(const OutputRequest& request) {
    std::vector<WindowOptions> windows;
    for (const DisplayMode& mode : request.displays) {
        windows.push_back(
            {.width = mode.width,
             .height = mode.height,
             .title = "Vantor wallpaper, display " + std::to_string(windows.size() + 1)});
    }
    return windows;
}

bool isSet(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

} // namespace

Result<std::unique_ptr<OutputBackend>, std::string> makeOutputs(MainLoop& loop,
                                                                const OutputRequest& request,
                                                                std::uint32_t refreshRate,
                                                                OutputEvents events) {
    if (request.kind == OutputKind::headless) {
        return makeHeadless(loop, virtualDisplays(request, refreshRate), std::move(events));
    }
    if (request.kind == OutputKind::window) {
        return makeWindows(loop, windows(request), std::move(events));
    }
    if (isSet("WAYLAND_DISPLAY")) {
        return makeWaylandBackground(loop, std::move(events));
    }
    if (isSet("DISPLAY")) {
        return makeX11Background(loop, std::move(events));
    }
    return Failure{std::string("there is no desktop: neither WAYLAND_DISPLAY nor DISPLAY names a "
                               "display server")};
}

} // namespace vantor::agent
