#pragma once
// One life of a Vulkan device with what belongs to it, and the owner that begins a new life when
// the device is lost.

#include "platform/linux/gpu/completion_thread.h"
#include "platform/linux/gpu/pipeline_cache.h"
#include "platform/linux/gpu/vulkan_resources.h"
#include "platform/linux/gpu/vulkan_uploader.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantor::vulkan {

double steadySeconds();

struct DeviceOptions {
    /// Where compiled pipelines are kept between runs; empty keeps none.
    std::filesystem::path pipelineCache{};
    /// Told of a lost device and of what follows, in sentences; standard error without one.
    std::function<void(const std::string&)> report{};
    /// Between two attempts to replace a lost device: one that is lost again and again must not
    /// keep the main thread from anything else.
    std::chrono::milliseconds recoveryInterval{1000};
    /// Seconds of a clock that never goes back, by which the device's work is timed. Any thread.
    double (*clock)() = steadySeconds;
    DeviceCalls calls{};
};

/// What a shader reads where nothing is bound: zeros.
struct Zeros {
    std::unique_ptr<Buffer> buffer;
    std::unique_ptr<DeviceImage> image;
    VkSampler sampler = VK_NULL_HANDLE;
};
inline constexpr VkDeviceSize kZeroBytes = 65536;

struct DeviceParts {
    std::shared_ptr<Context> context;
    std::shared_ptr<Uploader> uploader;
    std::shared_ptr<PipelineCache> pipelineCache;
    Zeros zeros;
    std::unique_ptr<CompletionThread> completion;

    static Result<std::shared_ptr<DeviceParts>, std::string> create(const DeviceOptions& options);
    ~DeviceParts();
    DeviceParts(const DeviceParts&) = delete;
    DeviceParts& operator=(const DeviceParts&) = delete;

  private:
    DeviceParts() = default;
    bool makeZeros();
};

/// Main thread.
class DeviceLife {
  public:
    static Result<std::shared_ptr<DeviceLife>, std::string> create(DeviceOptions options);

    /// The living device's parts; null while it is lost and cannot be replaced. Replaces a lost
    /// one, so that what was made with its parts must be compared with these.
    const std::shared_ptr<DeviceParts>& current();

  private:
    DeviceLife(DeviceOptions options, std::shared_ptr<DeviceParts> parts);
    void recover();

    DeviceOptions options_;
    std::shared_ptr<DeviceParts> parts_;
    std::optional<std::chrono::steady_clock::time_point> lastAttempt_;
    /// The last attempt failed, and was reported.
    bool failing_ = false;
};

} // namespace vantor::vulkan
