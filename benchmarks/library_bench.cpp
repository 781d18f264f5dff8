// What a request for the picker's view models costs: with every thumbnail there, and the first time
// of all, when twelve pictures are rendered and written. The latter runs in fresh child processes
// with folders of their own, against the twelve draws alone: pipelines made before, nothing
// written.

#include "library/lock_screen_library.h"
#include "platform/loader.h"
#include "platform/platform.h"
#include "render/shader_frame.h"
#include "render/shader_gpu.h"
#include "tests/support/temporary_folder.h"

#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace vantor {
namespace {

constexpr gpu::TextureDescriptor kPicture{.pixelFormat = gpu::PixelFormat::bgra8Unorm,
                                          .width = 640,
                                          .height = 360,
                                          .usage = gpu::TextureUsage::renderTarget,
                                          .storageMode = gpu::StorageMode::shared};

/// A user's home, for this process and its children.
void liveIn(const std::filesystem::path& home) {
    setenv("HOME", home.c_str(), 1);
    setenv("VANTOR_USER_HOME", home.c_str(), 1);
    setenv("VANTOR_SYSTEM_ROOT", VANTOR_BENCH_SYSTEM_ROOT, 1);
}

bool loadFramework() {
    static auto framework = platform().loader().loadFramework(
        "/System/Library/PrivateFrameworks/WallpaperExtensionKit.framework/WallpaperExtensionKit");
    return framework.hasValue();
}

void cached(benchmark::State& state) {
    const TemporaryFolder home;
    liveIn(home.path());
    LockScreenLibrary library(platform(), ShaderGPU::shared());
    if (!loadFramework() || !library.archivedViewModels()) {
        state.SkipWithError("there are no view models");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.archivedViewModels().get());
    }
}

double secondsOf(const std::function<bool()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    const bool done = work();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    return done ? taken.count() : -1;
}

double composeFirst() {
    ShaderGPU& gpu = ShaderGPU::shared();
    LockScreenLibrary library(platform(), gpu);
    return loadFramework() ? secondsOf([&] { return library.archivedViewModels() != nullptr; })
                           : -1;
}

/// The pictures of a first composition: the fallback's, and one for each entry.
double drawOnly() {
    ShaderGPU& gpu = ShaderGPU::shared();
    const auto texture = gpu.device()->newTexture(kPicture);
    std::vector<std::shared_ptr<gpu::RenderPipelineState>> pipelines{gpu.pipeline(
        LockScreenLibrary::matchFallback().id, *LockScreenLibrary::matchFallback().source)};
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        pipelines.push_back(gpu.pipeline(entry.id, *entry.source));
    }
    return secondsOf([&] {
        for (const auto& pipeline : pipelines) {
            gpu::CommandBuffer* commands = gpu.queue()->commandBuffer();
            if (commands == nullptr) {
                return false;
            }
            encodeShaderFrame(*commands, *gpu.device(), pipeline, *texture, ShaderUniforms(), 12);
            commands->commit();
            commands->waitUntilCompleted();
        }
        return true;
    });
}

/// Runs this program again, as `what` in a home of its own; what it prints is seconds.
void inFreshProcess(benchmark::State& state, const std::string& what) {
    for (auto _ : state) {
        const TemporaryFolder home;
        liveIn(home.path());
        const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
            popen(("/proc/" + std::to_string(getpid()) + "/exe --" + what).c_str(), "r"), pclose);
        double seconds = -1;
        if (!pipe || std::fscanf(pipe.get(), "%lf", &seconds) != 1 || seconds < 0) {
            state.SkipWithError("the child process fails");
            return;
        }
        state.SetIterationTime(seconds);
    }
}

/// Nothing is torn down: the GPU's threads live as long as the process.
[[noreturn]] void endAtOnce() {
    std::fflush(nullptr);
    std::_Exit(0);
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    using namespace vantor;
    installPlatform(&systemPlatform());
    const std::string_view what = argc == 2 ? argv[1] : "";
    if (what == "--compose" || what == "--draw") {
        std::printf("%.9f\n", what == "--compose" ? composeFirst() : drawOnly());
        endAtOnce();
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("library/view_models/first", inFreshProcess, "compose")
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("library/view_models/draws", inFreshProcess, "draw")
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("library/view_models/cached", cached)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RunSpecifiedBenchmarks();
    endAtOnce();
}
