// The road of a frame from the extension to an output's picture, and its pieces: compositing, many
// surfaces, the first frame of a surface, and a surface that nobody sees.

#include "agent/host/compositor.h"
#include "agent/host/hosted_context.h"
#include "agent/host/memory_canvas.h"
#include "bridge/remote_context.h"
#include "platform/linux/gpu/vulkan_device.h"
#include "platform/linux/layers/linux_layers.h"
#include "platform/platform.h"
#include "render/shader_frame.h"
#include "render/shader_surface.h"
#include "shaders/shader_catalog.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <sys/resource.h>
#include <vector>

namespace vantor {
namespace {

constexpr double kWatched = 2.0;

double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// A surface of the real platform with a host, and the host's output.
class Road {
  public:
    explicit Road(const Size& size)
        : size_(size), context_(PrivateBridge::makeRemoteContext(platform(), std::nullopt)),
          hostGPU_(*vulkan::Context::create()),
          canvas_(agent::MemoryCanvas::create(hostGPU_, static_cast<std::uint32_t>(size.width),
                                              static_cast<std::uint32_t>(size.height))),
          compositor_(agent::Compositor::create(hostGPU_)) {
        root_->setFrame({.origin = {}, .size = size});
        root_->setBackgroundColor(Color::gray(0, 1));
        context_->object()->perform("setLayer:", root_);
        surface_ = makeSurface();
        hosted_ = std::make_unique<agent::HostedContext>(
            loop_, hostGPU_,
            *static_cast<LinuxLayers&>(platform().layers()).attach(context_->contextID()),
            agent::ContextHandlers{.frameArrived = [this] { loop_.stop(0); },
                                   .changed = [] {},
                                   .ended = [](const std::string&) {}});
        loop_.run();
    }
    ~Road() { surface_->stop(); }
    Road(const Road&) = delete;
    Road& operator=(const Road&) = delete;

    /// Draws a frame and waits until it reached the host.
    void deliver() {
        surface_->renderFrame();
        loop_.run();
    }
    void compose() {
        if (!compositor_->compose(*canvas_->begin(), {.context = hosted_.get()})) {
            std::abort();
        }
        while (!compositor_->isIdle()) {
            // The compositor is only polled; the agent does so once a refresh.
        }
    }
    /// Gives back what the host no longer shows, and lets the extension take it.
    void release() {
        hosted_->releaseReplaced();
        settle();
    }
    /// Lets the loop take all that is on its way.
    void settle() {
        loop_.asyncAfter(0.002, [this] { loop_.stop(0); });
        loop_.run();
    }

    std::shared_ptr<ShaderSurface> makeSurface() const {
        return ShaderSurface::create(platform(), ShaderGPU::shared(),
                                     {.entryID = std::string(ShaderCatalog::plasma.id),
                                      .source = *ShaderCatalog::plasma.source,
                                      .in = root_,
                                      .size = size_});
    }
    MainLoop& loop() { return loop_; }
    vulkan::Context& hostGPU() { return *hostGPU_; }
    const agent::HostedContext& hosted() const { return *hosted_; }

  private:
    Size size_;
    MainLoop& loop_ = static_cast<MainLoop&>(platform().mainQueue());
    LayerRef root_ = platform().layers().makeLayer();
    std::shared_ptr<PrivateBridge::RemoteContext> context_;
    std::shared_ptr<vulkan::Context> hostGPU_;
    std::unique_ptr<agent::MemoryCanvas> canvas_;
    std::unique_ptr<agent::Compositor> compositor_;
    std::shared_ptr<ShaderSurface> surface_;
    std::unique_ptr<agent::HostedContext> hosted_;
};

constexpr Size kFullHD{.width = 1920, .height = 1080};

std::shared_ptr<gpu::RenderPipelineState> plasma() {
    return ShaderGPU::shared().pipeline(ShaderCatalog::plasma.id, *ShaderCatalog::plasma.source);
}

void offscreen(benchmark::State& state) {
    ShaderGPU& gpu = ShaderGPU::shared();
    const auto target = gpu.device()->newTexture({.width = 1920, .height = 1080});
    for (auto _ : state) {
        gpu::CommandBuffer* const commands = gpu.queue()->commandBuffer();
        encodeShaderFrame(*commands, *gpu.device(), plasma(), *target, {}, 12.0F);
        commands->commit();
        commands->waitUntilCompleted();
    }
}

void wholeRoad(benchmark::State& state) {
    Road road(kFullHD);
    for (auto _ : state) {
        const double before = seconds(CLOCK_MONOTONIC);
        road.deliver();
        road.compose();
        state.SetIterationTime(seconds(CLOCK_MONOTONIC) - before);
        road.release();
    }
}

void composing(benchmark::State& state) {
    Road road(kFullHD);
    road.deliver();
    for (auto _ : state) {
        road.compose();
    }
}

void copying(benchmark::State& state) {
    Road road(kFullHD);
    road.deliver();
    vulkan::Context& gpu = road.hostGPU();
    vulkan::DeviceImage& from = *road.hosted().frame(road.hosted().layers().back().layerID)->image;
    const auto to = vulkan::DeviceImage::create(
        gpu.shared_from_this(),
        {.width = 1920, .height = 1080, .usage = VK_IMAGE_USAGE_TRANSFER_DST_BIT});
    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    poolInfo.queueFamilyIndex = gpu.queueFamily();
    VkCommandPool pool = VK_NULL_HANDLE;
    vkCreateCommandPool(gpu.device(), &poolInfo, nullptr, &pool);
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = pool;
    allocation.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    vkAllocateCommandBuffers(gpu.device(), &allocation, &commands);
    for (auto _ : state) {
        vkResetCommandPool(gpu.device(), pool, 0);
        VkCommandBufferBeginInfo begin{};
        begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
        vkBeginCommandBuffer(commands, &begin);
        vulkan::transition(gpu, commands, *to, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                           vulkan::Contents::discarded);
        VkImageCopy copy{};
        copy.srcSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
        copy.dstSubresource = copy.srcSubresource;
        copy.extent = {1920, 1080, 1};
        vkCmdCopyImage(commands, from.handle(), VK_IMAGE_LAYOUT_GENERAL, to->handle(),
                       VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 1, &copy);
        vkEndCommandBuffer(commands);
        const std::uint64_t point = gpu.submit(commands);
        while (!gpu.isDone(point)) {
            // As the compositor is waited for.
        }
    }
    vkDestroyCommandPool(gpu.device(), pool, nullptr);
}

vulkan::Context& extensionGPU() {
    return *static_cast<vulkan::VulkanDevice&>(*ShaderGPU::shared().device()).parts()->context;
}

/// One frame of each of a number of surfaces: the time of one.
void surfaces(benchmark::State& state) {
    auto& loop = static_cast<MainLoop&>(platform().mainQueue());
    const LayerRef root = platform().layers().makeLayer();
    const auto context = PrivateBridge::makeRemoteContext(platform(), std::nullopt);
    context->object()->perform("setLayer:", root);
    std::vector<std::shared_ptr<ShaderSurface>> all;
    for (int i = 0; i < state.range(0); ++i) {
        all.push_back(ShaderSurface::create(platform(), ShaderGPU::shared(),
                                            {.entryID = std::string(ShaderCatalog::plasma.id),
                                             .source = *ShaderCatalog::plasma.source,
                                             .in = root,
                                             .size = {.width = 320, .height = 180}}));
    }
    vulkan::Context& gpu = extensionGPU();
    /// Seconds for a frame of each; nothing when one had no drawable yet.
    const auto frames = [&]() -> std::optional<double> {
        const double start = seconds(CLOCK_MONOTONIC);
        const std::uint64_t before = gpu.lastPoint();
        for (const auto& surface : all) {
            surface->renderFrame();
        }
        static_cast<void>(gpu.wait(gpu.lastPoint()));
        const bool whole = gpu.lastPoint() - before == all.size();
        return whole ? std::optional(seconds(CLOCK_MONOTONIC) - start) : std::nullopt;
    };
    const auto settle = [&] {
        // The completion thread tells the loop of the frames that are done.
        loop.asyncAfter(0.005, [&loop] { loop.stop(0); });
        loop.run();
    };
    for (auto _ : state) {
        std::optional<double> took;
        while (!took) {
            settle();
            took = frames();
        }
        state.SetIterationTime(*took / static_cast<double>(all.size()));
    }
    for (const auto& surface : all) {
        surface->stop();
    }
}

void steadyFrame(benchmark::State& state) {
    Road road({.width = 1280, .height = 720});
    for (auto _ : state) {
        const double before = seconds(CLOCK_MONOTONIC);
        road.deliver();
        state.SetIterationTime(seconds(CLOCK_MONOTONIC) - before);
        road.compose();
        road.release();
    }
}

/// From the surface's creation to its frame at the host.
void firstFrame(benchmark::State& state) {
    plasma();
    Road road({.width = 1280, .height = 720});
    for (auto _ : state) {
        const double before = seconds(CLOCK_MONOTONIC);
        const auto surface = road.makeSurface();
        road.loop().run();
        state.SetIterationTime(seconds(CLOCK_MONOTONIC) - before);
        road.compose();
        surface->stop();
        road.release();
    }
}

/// A paused surface with a host, left alone.
void paused(benchmark::State& state) {
    Road road({.width = 640, .height = 360});
    MainLoop& loop = road.loop();
    const auto watch = [&loop] {
        loop.asyncAfter(kWatched, [&loop] { loop.stop(0); });
        loop.run();
    };
    loop.asyncAfter(0.2, [&loop] { loop.stop(0); });
    loop.run();
    double wakeUps = 0;
    double busy = 0;
    for (auto _ : state) {
        rusage before{};
        rusage after{};
        const double cpu = seconds(CLOCK_PROCESS_CPUTIME_ID);
        getrusage(RUSAGE_SELF, &before);
        watch();
        getrusage(RUSAGE_SELF, &after);
        // The one wake-up that ends the watch is not the surface's.
        wakeUps += static_cast<double>(after.ru_nvcsw - before.ru_nvcsw) - 1;
        busy += seconds(CLOCK_PROCESS_CPUTIME_ID) - cpu;
    }
    state.counters["wakeups"] = benchmark::Counter(wakeUps, benchmark::Counter::kAvgIterations);
    state.counters["cpu_us"] = benchmark::Counter(busy * 1e6, benchmark::Counter::kAvgIterations);
}

BENCHMARK(offscreen)->Name("road/offscreen")->UseRealTime()->Iterations(5);
BENCHMARK(wholeRoad)->Name("road/whole")->UseManualTime()->Iterations(5);
BENCHMARK(composing)->Name("composite/ours")->UseRealTime()->Iterations(50);
BENCHMARK(copying)->Name("composite/copy")->UseRealTime()->Iterations(50);
BENCHMARK(surfaces)->Name("surfaces")->Arg(1)->UseManualTime()->Iterations(40);
BENCHMARK(surfaces)->Name("surfaces")->Arg(4)->UseManualTime()->Iterations(10);
BENCHMARK(surfaces)->Name("surfaces")->Arg(16)->UseManualTime()->Iterations(3);
BENCHMARK(surfaces)->Name("surfaces")->Arg(64)->UseManualTime()->Iterations(2);
BENCHMARK(steadyFrame)->Name("first/steady")->UseManualTime()->Iterations(5);
BENCHMARK(firstFrame)->Name("first/warmed")->UseManualTime()->Iterations(5);
BENCHMARK(paused)->Name("paused")->UseRealTime()->Iterations(1);

} // namespace
} // namespace vantor
