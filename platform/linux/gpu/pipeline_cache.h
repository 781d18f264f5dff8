#pragma once
// What the driver compiled, kept in a file from one run to the next.

#include "platform/linux/gpu/vulkan_context.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace vantor::vulkan {

class PipelineCache {
  public:
    /// A file beyond this is neither read nor written.
    static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

    /// Starts with what the file holds. A file that is absent, damaged, or of another device or
    /// driver counts as empty; so does an empty path, under which nothing is stored either.
    PipelineCache(std::shared_ptr<Context> context, std::filesystem::path file);
    ~PipelineCache();
    PipelineCache(const PipelineCache&) = delete;
    PipelineCache& operator=(const PipelineCache&) = delete;

    /// For pipeline creation, which adds to it. Null when the driver makes none.
    VkPipelineCache handle() const { return cache_; }
    /// Bytes that the file held for this device.
    std::size_t loadedBytes() const { return loadedBytes_; }

    /// Writes the file, whole or not at all, if the cache has changed since it was read or stored.
    /// A file that cannot be written costs nothing but the next run's time. One thread only.
    void store();

  private:
    std::vector<std::uint8_t> read() const;

    std::shared_ptr<Context> context_;
    std::filesystem::path file_;
    VkPipelineCache cache_ = VK_NULL_HANDLE;
    std::size_t loadedBytes_ = 0;
    /// Of the bytes that the file holds.
    std::uint64_t storedHash_ = 0;
};

} // namespace vantor::vulkan
