#include "agent/output/window/wayland_probe.h"

#include <cstdlib>
#include <memory>
#include <string_view>
#include <wayland-client.h>

namespace vantor::agent {
namespace {

struct Disconnect {
    void operator()(wl_display* display) const { wl_display_disconnect(display); }
};
struct DestroyRegistry {
    void operator()(wl_registry* registry) const { wl_registry_destroy(registry); }
};

struct Offer {
    bool hasSeat = false;
    bool hasWindows = false;

    static void announced(void* data, wl_registry*, std::uint32_t, const char* interface,
                          std::uint32_t) {
        auto* const self = static_cast<Offer*>(data);
        self->hasSeat |= std::string_view(interface) == "wl_seat";
        self->hasWindows |= std::string_view(interface) == "xdg_wm_base";
    }
    static void withdrawn(void*, wl_registry*, std::uint32_t) {}
};

} // namespace

std::string whyNotWayland() {
    if (std::getenv("WAYLAND_DISPLAY") == nullptr) {
        return "WAYLAND_DISPLAY names no Wayland compositor";
    }
    const std::unique_ptr<wl_display, Disconnect> display(wl_display_connect(nullptr));
    if (!display) {
        return "no Wayland compositor answers";
    }
    const std::unique_ptr<wl_registry, DestroyRegistry> registry(
        wl_display_get_registry(display.get()));
    static constexpr wl_registry_listener kListener{.global = Offer::announced,
                                                    .global_remove = Offer::withdrawn};
    Offer offer;
    wl_registry_add_listener(registry.get(), &kListener, &offer);
    if (wl_display_roundtrip(display.get()) < 0) {
        return "the Wayland compositor closed the connection";
    }
    if (!offer.hasWindows) {
        return "the Wayland compositor offers no windows";
    }
    if (!offer.hasSeat) {
        return "the Wayland compositor offers no seat, without which SDL opens no window";
    }
    return {};
}

} // namespace vantor::agent
