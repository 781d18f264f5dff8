#pragma once
// A surface below all windows that fills one output and takes no input. It reports what the
// compositor tells of it; when to draw is decided elsewhere. Main thread.

#include "agent/output/wayland/globals.h"
#include "agent/output/wayland/surface_geometry.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace vantor::agent::wayland {

class BackgroundSurface {
  public:
    BackgroundSurface(const Globals& globals, wl_output* output);
    BackgroundSurface(const BackgroundSurface&) = delete;
    BackgroundSurface& operator=(const BackgroundSurface&) = delete;

    wl_surface* surface() const { return surface_.get(); }
    /// Nothing before the first configuration.
    std::optional<SurfaceFacts> facts() const;
    /// The compositor shows this surface no more.
    bool isClosed() const { return isClosed_; }

    /// Whether there is a configuration that no commit has answered.
    bool hasNews() const { return serial_.has_value(); }
    /// Has the next commit answer the last configuration with this geometry.
    void apply(const SurfaceGeometry& geometry);
    void commit() { wl_surface_commit(surface_.get()); }

    /// Has the next commit ask for one frame callback.
    void askForFrame();
    /// Whether a frame callback was asked for and has not come.
    bool awaitsFrame() const { return frame_ != nullptr; }
    /// Whether one has come since the last call.
    bool takeFrame() { return std::exchange(frameCame_, false); }
    /// One that was asked for is awaited no more.
    void dropFrame() {
        frame_.reset();
        frameCame_ = false;
    }

  private:
    static const zwlr_layer_surface_v1_listener kLayerListener;
    static const wp_fractional_scale_v1_listener kScaleListener;
    static const wl_callback_listener kFrameListener;

    void setOpaque(std::uint32_t width, std::uint32_t height);

    wl_compositor* const compositor_;
    // In the order in which they are made; they go in the other one.
    Proxy<wl_surface> surface_;
    /// These two are null where the compositor has none of them.
    Proxy<wp_viewport> viewport_;
    Proxy<wp_fractional_scale_v1> fractionalScale_;
    Proxy<zwlr_layer_surface_v1> layer_;
    Proxy<wl_callback> frame_;

    SurfaceFacts facts_;
    bool isConfigured_ = false;
    bool isClosed_ = false;
    bool frameCame_ = false;
    /// Of the last configuration, until it is answered.
    std::optional<std::uint32_t> serial_;
    /// What the surface was told last.
    std::optional<SurfaceGeometry> applied_;
};

} // namespace vantor::agent::wayland
