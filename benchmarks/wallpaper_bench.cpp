// What the GPU spends on one frame of each wallpaper. At 1280 × 720: our compiler's module against
// the modules that glslang, and glslang and spirv-opt -O, make of the same shader, drawn by the
// same code. At 640 × 360 and 1920 × 1080: what each costs beside plasma, and how it grows with the
// pixels. On a device that is the CPU a frame's time is the process's CPU time, which what else the
// machine does disturbs less.

#include "platform/linux/gpu/device_parts.h"
#include "platform/linux/gpu/vulkan_context.h"
#include "platform/linux/gpu/vulkan_device.h"
#include "render/shader_frame.h"
#include "shaders/shader_catalog.h"
#include "tests/support/foreign_compiler.h"
#include "tests/support/temporary_folder.h"

#include <benchmark/benchmark.h>
#include <glslang/Public/ShaderLang.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vantor {
namespace {

struct Extent {
    std::uint64_t width;
    std::uint64_t height;
};

constexpr Extent kSmall{640, 360};
constexpr Extent kMiddle{1280, 720};
constexpr Extent kLarge{1920, 1080};
constexpr int kFrames = 2;
constexpr float kTime = 12.0F;

struct Machine {
    std::shared_ptr<vulkan::VulkanDevice> device;
    std::shared_ptr<gpu::CommandQueue> queue;

    static Machine& shared() {
        static Machine& machine = *new Machine;
        return machine;
    }

  private:
    Machine() {
        auto made = vulkan::VulkanDevice::create();
        if (!made) {
            std::fprintf(stderr, "no GPU: %s\n", made.error().c_str());
            std::exit(1);
        }
        device = *std::move(made);
        queue = device->newCommandQueue();
    }
};

/// What spirv-opt -O makes of the words; nothing when it cannot be run.
std::vector<std::uint32_t> optimised(const std::vector<std::uint32_t>& words) {
    const TemporaryFolder folder;
    const std::string from = folder.path() / "from.spv";
    const std::string to = folder.path() / "to.spv";
    std::ofstream(from, std::ios::binary)
        .write(reinterpret_cast<const char*>(words.data()),
               static_cast<std::streamsize>(words.size() * sizeof(std::uint32_t)));
    if (std::system(("spirv-opt -O " + from + " -o " + to).c_str()) != 0) {
        return {};
    }
    std::ifstream in(to, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    std::vector<std::uint32_t> out(bytes.size() / sizeof(std::uint32_t));
    std::copy_n(bytes.data(), out.size() * sizeof(std::uint32_t),
                reinterpret_cast<char*>(out.data()));
    return out;
}

enum class Optimiser { none, spirvOpt };

/// The same shader as another compiler's module: its fragment function has the same resources.
std::optional<msl::Module> foreignModule(const msl::Module& ours, Optimiser optimiser) {
    const auto fragment =
        std::find_if(ours.entryPoints.begin(), ours.entryPoints.end(),
                     [](const msl::EntryPoint& entry) { return entry.name == "f_main"; });
    auto words = foreign::compileGLSL(foreign::toGLSL(ours));
    if (optimiser == Optimiser::spirvOpt) {
        words = optimised(words);
    }
    if (words.empty() || fragment == ours.entryPoints.end()) {
        return std::nullopt;
    }
    msl::Module module{.words = words, .entryPoints = {*fragment}};
    module.entryPoints.front().name = "main";
    return module;
}

double secondsOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void drawFrames(benchmark::State& state, const msl::Module& vertexModule,
                const msl::Module& fragmentModule, const char* fragmentName, const Extent& extent) {
    Machine& machine = Machine::shared();
    const auto target =
        machine.device->newTexture({.width = extent.width, .height = extent.height});
    auto made = machine.device->newRenderPipelineState(
        {.vertexFunction = vulkan::VulkanLibrary::of(vertexModule)->newFunction("v_main"),
         .fragmentFunction = vulkan::VulkanLibrary::of(fragmentModule)->newFunction(fragmentName)});
    if (!made) {
        state.SkipWithError(made.error().message.c_str());
        return;
    }
    const auto frame = [&] {
        gpu::CommandBuffer* const commands = machine.queue->commandBuffer();
        encodeShaderFrame(*commands, *machine.device, *made, *target, {}, kTime);
        commands->commit();
        commands->waitUntilCompleted();
    };
    frame();
    const bool isCpu =
        machine.device->parts()->context->properties().deviceType == VK_PHYSICAL_DEVICE_TYPE_CPU;
    const clockid_t clock = isCpu ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC;
    for (auto _ : state) {
        const double begin = secondsOf(clock);
        frame();
        state.SetIterationTime(secondsOf(clock) - begin);
    }
}

void ours(benchmark::State& state, std::string_view source, const Extent& extent) {
    const auto compiled = msl::compile(source);
    drawFrames(state, *compiled.module, *compiled.module, "f_main", extent);
}

void theirs(benchmark::State& state, std::string_view source, const Extent& extent,
            Optimiser optimiser) {
    const auto compiled = msl::compile(source);
    const auto foreign = foreignModule(*compiled.module, optimiser);
    if (!foreign) {
        state.SkipWithError("glslang and spirv-opt make no module");
        return;
    }
    drawFrames(state, *compiled.module, *foreign, "main", extent);
}

void byGlslang(benchmark::State& state, std::string_view source, const Extent& extent) {
    theirs(state, source, extent, Optimiser::none);
}

void byGlslangOptimised(benchmark::State& state, std::string_view source, const Extent& extent) {
    theirs(state, source, extent, Optimiser::spirvOpt);
}

struct Road {
    const char* name;
    void (*run)(benchmark::State& state, std::string_view source, const Extent& extent);
    Extent extent;
};

void registerWallpapers() {
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        const std::string name = "wallpaper/" + std::string(entry.id);
        for (const Road& road :
             {Road{"/ours", ours, kMiddle}, Road{"/glslang", byGlslang, kMiddle},
              Road{"/glslang_opt", byGlslangOptimised, kMiddle}, Road{"/640x360", ours, kSmall},
              Road{"/1920x1080", ours, kLarge}}) {
            benchmark::RegisterBenchmark((name + road.name).c_str(), road.run, *entry.source,
                                         road.extent)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond)
                ->Iterations(kFrames);
        }
    }
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    glslang::InitializeProcess();
    vantor::registerWallpapers();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    // Nothing is torn down: the GPU's threads live as long as the process.
    std::fflush(nullptr);
    std::_Exit(0);
}
