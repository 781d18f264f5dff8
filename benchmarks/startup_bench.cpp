// What a new process spends until it can draw, and until its first picture. Each measurement is a
// process of its own: this program starts itself with the measurement's name.

#include "platform/linux/gpu/vulkan_device.h"
#include "render/shader_frame.h"
#include "shaders/shader_catalog.h"
#include "tests/support/temporary_folder.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

namespace vantor {
namespace {

constexpr int kProcesses = 3;

double secondsOf(const std::function<bool()>& work) {
    const auto start = std::chrono::steady_clock::now();
    if (!work()) {
        std::exit(1);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The least that Vulkan asks for before something can be drawn.
bool bareDevice() {
    VkApplicationInfo application{};
    application.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO;
    application.apiVersion = VK_API_VERSION_1_3;
    VkInstanceCreateInfo instanceInfo{};
    instanceInfo.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    instanceInfo.pApplicationInfo = &application;
    VkInstance instance = VK_NULL_HANDLE;
    if (vkCreateInstance(&instanceInfo, nullptr, &instance) != VK_SUCCESS) {
        return false;
    }
    std::uint32_t count = 1;
    VkPhysicalDevice physical = VK_NULL_HANDLE;
    vkEnumeratePhysicalDevices(instance, &count, &physical);
    const float priority = 1;
    VkDeviceQueueCreateInfo queue{};
    queue.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queue.queueCount = 1;
    queue.pQueuePriorities = &priority;
    VkDeviceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    info.queueCreateInfoCount = 1;
    info.pQueueCreateInfos = &queue;
    VkDevice device = VK_NULL_HANDLE;
    return count != 0 && vkCreateDevice(physical, &info, nullptr, &device) == VK_SUCCESS;
}

bool ourDevice() {
    // Kept: only its making is measured.
    auto made = vulkan::VulkanDevice::create();
    static std::shared_ptr<vulkan::VulkanDevice>& kept =
        *new std::shared_ptr(made ? *std::move(made) : std::shared_ptr<vulkan::VulkanDevice>());
    return kept != nullptr;
}

bool firstPicture() {
    auto made = vulkan::VulkanDevice::create({.pipelineCache = std::getenv("VANTOR_BENCH_CACHE")});
    if (!made) {
        return false;
    }
    auto& device = *new std::shared_ptr(*std::move(made));
    auto library = device->newLibrary(*ShaderCatalog::elecPCB.source);
    auto pipeline = device->newRenderPipelineState(
        {.vertexFunction = library.value()->newFunction("v_main"),
         .fragmentFunction = library.value()->newFunction("f_main")});
    auto& queue = *new std::shared_ptr(device->newCommandQueue());
    const auto target = device->newTexture({.width = 320, .height = 180});
    gpu::CommandBuffer* const commands = queue->commandBuffer();
    encodeShaderFrame(*commands, *device, pipeline.value(), *target, {}, 12.0F);
    commands->commit();
    commands->waitUntilCompleted();
    return true;
}

std::string self;

/// Runs this program for one measurement; gives its seconds.
double measuredBy(const std::string& measurement, const std::string& variables = "") {
    FILE* const child =
        popen((variables + " '" + self + "' --measure " + measurement).c_str(), "r");
    double seconds = 0;
    if (child == nullptr || std::fscanf(child, "%lf", &seconds) != 1 || pclose(child) != 0) {
        std::fprintf(stderr, "%s cannot be measured\n", measurement.c_str());
        std::exit(1);
    }
    return seconds;
}

void startUp(benchmark::State& state, const std::string& measurement) {
    for (auto _ : state) {
        state.SetIterationTime(measuredBy(measurement));
    }
}

std::string cachesIn(const std::filesystem::path& folder) {
    return "VANTOR_BENCH_CACHE=" + (folder / "pipelines.cache").string() +
           " MESA_SHADER_CACHE_DIR=" + folder.string();
}

void coldPicture(benchmark::State& state) {
    for (auto _ : state) {
        const TemporaryFolder folder;
        state.SetIterationTime(measuredBy("picture", cachesIn(folder.path())));
    }
}

void warmPicture(benchmark::State& state) {
    const TemporaryFolder folder;
    const std::string variables = cachesIn(folder.path());
    measuredBy("picture", variables);
    for (auto _ : state) {
        state.SetIterationTime(measuredBy("picture", variables));
    }
}

BENCHMARK_CAPTURE(startUp, ours, "ours")
    ->Name("startup/ours")
    ->UseManualTime()
    ->Iterations(kProcesses);
BENCHMARK_CAPTURE(startUp, bare, "bare")
    ->Name("startup/bare")
    ->UseManualTime()
    ->Iterations(kProcesses);
BENCHMARK(coldPicture)->Name("picture/cold")->UseManualTime()->Iterations(1);
BENCHMARK(warmPicture)->Name("picture/warm")->UseManualTime()->Iterations(1);

int measure(std::string_view measurement) {
    const auto work = measurement == "ours"   ? ourDevice
                      : measurement == "bare" ? bareDevice
                                              : firstPicture;
    std::printf("%.9f\n", secondsOf(work));
    std::fflush(nullptr);
    std::_Exit(0);
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--measure") {
        return vantor::measure(argv[2]);
    }
    vantor::self = argv[0];
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
