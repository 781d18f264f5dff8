#include "render/shader_surface.h"

#include "render/shader_frame.h"

#include <algorithm>
#include <utility>

namespace vantor {
namespace {

constexpr int kMaxDrawables = 2;
constexpr FrameRateRange kFrameRates{.minimum = 30, .maximum = 60, .preferred = 60};
constexpr double kFallbackInterval = 1.0 / 30.0;
/// The most that one tick advances the animation: it does not jump after a stall.
constexpr double kMaxTickSeconds = 0.1;

} // namespace

std::shared_ptr<ShaderSurface> ShaderSurface::create(Platform& platform, ShaderGPU& gpu,
                                                     const Description& description) {
    if (!gpu.device()) {
        return nullptr;
    }
    auto pipeline = gpu.pipeline(description.entryID, description.source);
    if (!pipeline) {
        return nullptr;
    }
    std::shared_ptr<ShaderSurface> surface(
        new ShaderSurface(platform, gpu, std::move(pipeline), description));
    surface->makeClock(description.displayID);
    // Shown at once, since a surface may stay paused.
    surface->renderFrame();
    return surface;
}

ShaderSurface::ShaderSurface(Platform& platform, ShaderGPU& gpu,
                             std::shared_ptr<gpu::RenderPipelineState> pipeline,
                             const Description& description)
    : platform_(platform), clock_(platform.mediaClock()), gpu_(gpu), entryID_(description.entryID),
      pipeline_(std::move(pipeline)), metalLayer_(platform.layers().makeMetalLayer()),
      elapsed_(description.startTime), look_(description.look) {
    metalLayer_->setDevice(gpu.device());
    metalLayer_->setPixelFormat(gpu::PixelFormat::bgra8Unorm);
    metalLayer_->setFramebufferOnly(true);
    metalLayer_->setOpaque(true);
    metalLayer_->setMaximumDrawableCount(kMaxDrawables);
    description.in->addSublayer(metalLayer_);
    resize(description.size, description.scale);
}

void ShaderSurface::resize(const Size& size, double scale) {
    const UnanimatedTransaction transaction(platform_.layers().transactions());
    metalLayer_->setFrame({.origin = {}, .size = size});
    metalLayer_->setContentsScale(scale);
    metalLayer_->setDrawableSize({.width = size.width * scale, .height = size.height * scale});
}

void ShaderSurface::makeClock(std::optional<std::uint32_t> displayID) {
    const std::vector<Screen*> screens = platform_.screens().screens();
    if (screens.empty()) {
        return;
    }
    // An absent identifier equals an unreadable screen number.
    const auto match = std::find_if(screens.begin(), screens.end(), [&](const Screen* screen) {
        return screen->number() == displayID;
    });
    Screen* screen = match != screens.end() ? *match : screens.front();
    displayLink_ = screen->displayLink([weak = weak_from_this()] {
        if (const auto surface = weak.lock()) {
            surface->tick();
        }
    });
    if (displayLink_) {
        displayLink_->setPreferredFrameRateRange(kFrameRates);
        displayLink_->setPaused(true);
        displayLink_->addToMainRunLoop();
    }
}

void ShaderSurface::tick() {
    const double now = clock_.now();
    if (lastTick_) {
        elapsed_ += std::min(now - *lastTick_, kMaxTickSeconds);
    }
    lastTick_ = now;
    renderFrame();
}

void ShaderSurface::renderFrame() {
    gpu::CommandQueue* queue = gpu_.queue().get();
    if (queue == nullptr) {
        return;
    }
    gpu::DrawableRef drawable = metalLayer_->nextDrawable();
    if (!drawable) {
        return;
    }
    gpu::CommandBuffer* commands = queue->commandBuffer();
    if (commands == nullptr) {
        return;
    }
    encodeShaderFrame(*commands, *gpu_.device(), pipeline_, drawable->texture(), look_,
                      static_cast<float>(elapsed_));
    commands->presentDrawable(std::move(drawable));
    commands->commit();
}

void ShaderSurface::setPlaying(bool playing) {
    if (playing == isPlaying_) {
        return;
    }
    isPlaying_ = playing;
    lastTick_.reset();
    if (displayLink_) {
        displayLink_->setPaused(!playing);
    } else if (playing) {
        fallbackTimer_ =
            platform_.mainQueue().repeatingTimer(kFallbackInterval, [weak = weak_from_this()] {
                if (const auto surface = weak.lock()) {
                    surface->tick();
                }
            });
    } else if (fallbackTimer_) {
        fallbackTimer_->invalidate();
        fallbackTimer_.reset();
    }
}

void ShaderSurface::stop() {
    setPlaying(false);
    if (displayLink_) {
        displayLink_->invalidate();
        displayLink_.reset();
    }
    metalLayer_->removeFromSuperlayer();
}

} // namespace vantor
