// What the GPU spends on one frame of each wallpaper. At 1280 × 720: our compiler's module against
// the module that glslang and spirv-opt -O make of the same shader, drawn by the same code. At
// 640 × 360 and 1920 × 1080: what each costs beside plasma, and how it grows with the pixels.

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

/// The same shader as another compiler's module: its fragment function has the same resources.
std::optional<msl::Module> foreignModule(const msl::Module& ours) {
    const auto fragment =
        std::find_if(ours.entryPoints.begin(), ours.entryPoints.end(),
                     [](const msl::EntryPoint& entry) { return entry.name == "f_main"; });
    const auto words = optimised(foreign::compileGLSL(foreign::toGLSL(ours)));
    if (words.empty() || fragment == ours.entryPoints.end()) {
        return std::nullopt;
    }
    msl::Module module{.words = words, .entryPoints = {*fragment}};
    module.entryPoints.front().name = "main";
    return module;
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
    for (auto _ : state) {
        frame();
    }
}

void ours(benchmark::State& state, std::string_view source, const Extent& extent) {
    const auto compiled = msl::compile(source);
    drawFrames(state, *compiled.module, *compiled.module, "f_main", extent);
}

void theirs(benchmark::State& state, std::string_view source, const Extent& extent) {
    const auto compiled = msl::compile(source);
    const auto foreign = foreignModule(*compiled.module);
    if (!foreign) {
        state.SkipWithError("glslang and spirv-opt make no module");
        return;
    }
    drawFrames(state, *compiled.module, *foreign, "main", extent);
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
             {Road{"/ours", ours, kMiddle}, Road{"/glslang", theirs, kMiddle},
              Road{"/640x360", ours, kSmall}, Road{"/1920x1080", ours, kLarge}}) {
            benchmark::RegisterBenchmark((name + road.name).c_str(), road.run, *entry.source,
                                         road.extent)
                ->UseRealTime()
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
