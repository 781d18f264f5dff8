#include "platform/linux/gpu/pipeline_cache.h"

#include "platform/linux/file_descriptor.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantor::vulkan {
namespace {

constexpr std::array<char, 8> kMagic{'V', 'a', 'n', 't', 'P', 'S', 'O', '1'};

/// Stands before the driver's bytes. The driver checks its own header only as far as Vulkan asks
/// for, and trusts what follows it.
struct FileHeader {
    std::array<char, 8> magic;
    std::uint32_t vendorID;
    std::uint32_t deviceID;
    std::uint32_t driverVersion;
    std::uint32_t reserved;
    DeviceUUID cacheUUID;
    DeviceUUID driverUUID;
    std::uint64_t size;
    std::uint64_t hash;
};
static_assert(sizeof(FileHeader) == 72);

/// FNV-1a of 64 bits (Fowler, Noll, Vo).
std::uint64_t hashOf(std::span<const std::uint8_t> bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::uint8_t byte : bytes) {
        hash = (hash ^ byte) * 0x100000001B3;
    }
    return hash;
}

FileHeader headerOf(const Context& context, std::span<const std::uint8_t> bytes) {
    const VkPhysicalDeviceProperties& device = context.properties();
    FileHeader header{.magic = kMagic,
                      .vendorID = device.vendorID,
                      .deviceID = device.deviceID,
                      .driverVersion = device.driverVersion,
                      .reserved = 0,
                      .cacheUUID = {},
                      .driverUUID = context.driverUUID(),
                      .size = bytes.size(),
                      .hash = hashOf(bytes)};
    std::memcpy(header.cacheUUID.data(), device.pipelineCacheUUID, VK_UUID_SIZE);
    return header;
}

bool readWhole(int file, void* into, std::size_t size) {
    auto* to = static_cast<std::uint8_t*>(into);
    while (size > 0) {
        const ssize_t count = read(file, to, size);
        if (count <= 0) {
            return false;
        }
        to += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool writeWhole(int file, const void* from, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(from);
    while (size > 0) {
        const ssize_t count = write(file, bytes, size);
        if (count <= 0) {
            return false;
        }
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

PipelineCache::PipelineCache(std::shared_ptr<Context> context, std::filesystem::path file)
    : context_(std::move(context)), file_(std::move(file)) {
    const std::vector<std::uint8_t> known = read();
    loadedBytes_ = known.size();
    storedHash_ = hashOf(known);
    VkPipelineCacheCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_CACHE_CREATE_INFO;
    info.initialDataSize = known.size();
    info.pInitialData = known.data();
    if (vkCreatePipelineCache(context_->device(), &info, nullptr, &cache_) != VK_SUCCESS) {
        cache_ = VK_NULL_HANDLE;
    }
}

PipelineCache::~PipelineCache() { vkDestroyPipelineCache(context_->device(), cache_, nullptr); }

std::vector<std::uint8_t> PipelineCache::read() const {
    const FileDescriptor file(
        file_.empty() ? -1 : open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    FileHeader header{};
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        !readWhole(file.get(), &header, sizeof(header)) || header.size > kMaxBytes ||
        static_cast<std::uint64_t>(status.st_size) != sizeof(header) + header.size) {
        return {};
    }
    std::vector<std::uint8_t> bytes(header.size);
    if (!readWhole(file.get(), bytes.data(), bytes.size())) {
        return {};
    }
    const FileHeader expected = headerOf(*context_, bytes);
    return std::memcmp(&header, &expected, sizeof(header)) == 0 ? bytes
                                                                : std::vector<std::uint8_t>{};
}

void PipelineCache::store() {
    std::size_t size = 0;
    if (file_.empty() || cache_ == VK_NULL_HANDLE ||
        vkGetPipelineCacheData(context_->device(), cache_, &size, nullptr) != VK_SUCCESS ||
        size > kMaxBytes) {
        return;
    }
    std::vector<std::uint8_t> bytes(size);
    if (vkGetPipelineCacheData(context_->device(), cache_, &size, bytes.data()) != VK_SUCCESS) {
        return;
    }
    bytes.resize(size);
    const FileHeader header = headerOf(*context_, bytes);
    if (header.hash == std::exchange(storedHash_, header.hash)) {
        return;
    }
    std::error_code failed;
    std::filesystem::create_directories(file_.parent_path(), failed);
    std::string temporary = file_.string() + ".XXXXXX";
    const FileDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file && !(writeWhole(file.get(), &header, sizeof(header)) &&
                  writeWhole(file.get(), bytes.data(), bytes.size()) &&
                  rename(temporary.c_str(), file_.c_str()) == 0)) {
        unlink(temporary.c_str());
    }
}

} // namespace vantor::vulkan
