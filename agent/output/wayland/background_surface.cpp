#include "agent/output/wayland/background_surface.h"

namespace vantor::agent::wayland {
namespace {

constexpr auto kAllEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                           ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
/// The surface goes below panels too, which otherwise keep their room to themselves.
constexpr std::int32_t kWholeOutput = -1;

} // namespace

const zwlr_layer_surface_v1_listener BackgroundSurface::kLayerListener = {
    .configure =
        [](void* data, zwlr_layer_surface_v1*, std::uint32_t serial, std::uint32_t width,
           std::uint32_t height) {
            auto* const self = static_cast<BackgroundSurface*>(data);
            self->serial_ = serial;
            self->facts_.width = width;
            self->facts_.height = height;
            self->isConfigured_ = true;
        },
    .closed =
        [](void* data, zwlr_layer_surface_v1*) {
            static_cast<BackgroundSurface*>(data)->isClosed_ = true;
        },
};

const wp_fractional_scale_v1_listener BackgroundSurface::kScaleListener = {
    .preferred_scale =
        [](void* data, wp_fractional_scale_v1*, std::uint32_t scale) {
            static_cast<BackgroundSurface*>(data)->facts_.preferredScale = scale;
        },
};

const wl_callback_listener BackgroundSurface::kFrameListener = {
    .done =
        [](void* data, wl_callback*, std::uint32_t) {
            auto* const self = static_cast<BackgroundSurface*>(data);
            self->frame_.reset();
            self->frameCame_ = true;
        },
};

BackgroundSurface::BackgroundSurface(const Globals& globals, wl_output* output)
    : compositor_(globals.compositor()), surface_(wl_compositor_create_surface(compositor_)) {
    // Nobody clicks on a wallpaper: an empty region takes no input.
    const Proxy<wl_region> nowhere(wl_compositor_create_region(compositor_));
    wl_surface_set_input_region(surface_.get(), nowhere.get());

    if (globals.viewporter() != nullptr) {
        viewport_.reset(wp_viewporter_get_viewport(globals.viewporter(), surface_.get()));
        facts_.hasViewport = true;
    }
    if (globals.fractionalScales() != nullptr) {
        fractionalScale_.reset(wp_fractional_scale_manager_v1_get_fractional_scale(
            globals.fractionalScales(), surface_.get()));
        wp_fractional_scale_v1_add_listener(fractionalScale_.get(), &kScaleListener, this);
    }

    layer_.reset(zwlr_layer_shell_v1_get_layer_surface(globals.layerShell(), surface_.get(), output,
                                                       ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND,
                                                       "wallpaper"));
    zwlr_layer_surface_v1_add_listener(layer_.get(), &kLayerListener, this);
    zwlr_layer_surface_v1_set_anchor(layer_.get(), kAllEdges);
    zwlr_layer_surface_v1_set_exclusive_zone(layer_.get(), kWholeOutput);
    zwlr_layer_surface_v1_set_keyboard_interactivity(
        layer_.get(), ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE);
    // Without a picture; the compositor answers with a size.
    commit();
}

std::optional<SurfaceFacts> BackgroundSurface::facts() const {
    return isConfigured_ ? std::optional(facts_) : std::nullopt;
}

void BackgroundSurface::apply(const SurfaceGeometry& geometry) {
    if (serial_) {
        zwlr_layer_surface_v1_ack_configure(layer_.get(), *serial_);
        serial_.reset();
    }
    if (applied_ == geometry) {
        return;
    }
    if (viewport_) {
        wp_viewport_set_destination(viewport_.get(),
                                    static_cast<std::int32_t>(geometry.pointsWidth),
                                    static_cast<std::int32_t>(geometry.pointsHeight));
    } else {
        wl_surface_set_buffer_scale(surface_.get(), geometry.bufferScale);
    }
    setOpaque(geometry.pointsWidth, geometry.pointsHeight);
    applied_ = geometry;
}

void BackgroundSurface::setOpaque(std::uint32_t width, std::uint32_t height) {
    const Proxy<wl_region> everywhere(wl_compositor_create_region(compositor_));
    wl_region_add(everywhere.get(), 0, 0, static_cast<std::int32_t>(width),
                  static_cast<std::int32_t>(height));
    wl_surface_set_opaque_region(surface_.get(), everywhere.get());
}

void BackgroundSurface::askForFrame() {
    frame_.reset(wl_surface_frame(surface_.get()));
    wl_callback_add_listener(frame_.get(), &kFrameListener, this);
}

} // namespace vantor::agent::wayland
