#pragma once
// One animated wallpaper: a Metal layer, a shader, its look, a clock and a render loop. Main thread
// only.

#include "platform/layers.h"
#include "platform/main_queue.h"
#include "platform/media_clock.h"
#include "platform/platform.h"
#include "platform/screens.h"
#include "render/shader_gpu.h"
#include "shaders/shader_uniforms.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantor {

/// Created paused, with one frame shown. Its owner calls `stop` before it lets go; a stopped
/// surface is not used again. The frame path allocates nothing and never waits for the GPU.
class ShaderSurface : public std::enable_shared_from_this<ShaderSurface> {
  public:
    struct Description {
        /// The resolved key; also the key of the pipeline.
        std::string entryID{};
        std::string_view source{};
        ShaderUniforms look{};
        /// The layer that the surface's own is added to.
        LayerRef in{};
        /// In points.
        Size size{};
        /// Pixels per point.
        double scale = 1;
        /// Whose refresh clock drives it; the first screen's when it names none.
        std::optional<std::uint32_t> displayID{};
        /// Animation time of the first frame, in seconds.
        double startTime = 0;
    };

    /// Null without a GPU and when the source does not compile (which is logged). Platform and GPU
    /// context must outlive the surface.
    static std::shared_ptr<ShaderSurface> create(Platform& platform, ShaderGPU& gpu,
                                                 const Description& description);

    ShaderSurface(const ShaderSurface&) = delete;
    ShaderSurface& operator=(const ShaderSurface&) = delete;

    const std::string& entryID() const { return entryID_; }
    bool isPlaying() const { return isPlaying_; }
    /// Animation time in seconds; the look's speed is the shader's business.
    double elapsed() const { return elapsed_; }
    const ShaderUniforms& look() const { return look_; }
    /// Shows with the next frame.
    void setLook(const ShaderUniforms& look) { look_ = look; }

    /// Starts or halts the clock; the first tick after a change adds no time.
    void setPlaying(bool playing);
    /// Gives the layer another size (points) and scale, without animation.
    void resize(const Size& size, double scale);
    /// Halts the clock for good and takes the layer out of the tree.
    void stop();

    /// What a refresh of the display does: advances the time and draws.
    void tick();
    /// Draws the current moment; nothing when any object of the frame cannot be had.
    void renderFrame();

  private:
    ShaderSurface(Platform& platform, ShaderGPU& gpu,
                  std::shared_ptr<gpu::RenderPipelineState> pipeline,
                  const Description& description);

    void makeClock(std::optional<std::uint32_t> displayID);

    Platform& platform_;
    MediaClock& clock_;
    ShaderGPU& gpu_;
    const std::string entryID_;
    const std::shared_ptr<gpu::RenderPipelineState> pipeline_;
    const std::shared_ptr<MetalLayer> metalLayer_;
    std::unique_ptr<DisplayLink> displayLink_;
    /// Only where there is no display link.
    std::unique_ptr<RepeatingTimer> fallbackTimer_;
    double elapsed_ = 0;
    /// Media time of the tick before; nothing after creation and after every play-state change.
    std::optional<double> lastTick_;
    bool isPlaying_ = false;
    ShaderUniforms look_;
};

} // namespace vantor
