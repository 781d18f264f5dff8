#include "platform/linux/gpu/device_parts.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace vantor::vulkan {

double steadySeconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

Result<std::shared_ptr<DeviceParts>, std::string>
DeviceParts::create(const DeviceOptions& options) {
    auto context = Context::create(options.calls);
    if (!context) {
        return Failure{context.error()};
    }
    const std::shared_ptr<DeviceParts> parts(new DeviceParts);
    parts->context = *context;
    parts->uploader = Uploader::create(*context);
    if (!parts->uploader || !parts->makeZeros()) {
        return Failure{std::string("the Vulkan device has no memory")};
    }
    parts->pipelineCache = std::make_shared<PipelineCache>(*context, options.pipelineCache);
    parts->completion = std::make_unique<CompletionThread>(*context, options.clock);
    return parts;
}

DeviceParts::~DeviceParts() {
    completion.reset();
    if (context) {
        // What the zeros were made with may still be under way.
        vkDeviceWaitIdle(context->device());
        vkDestroySampler(context->device(), zeros.sampler, nullptr);
    }
}

bool DeviceParts::makeZeros() {
    zeros.buffer = Buffer::create(context, kZeroBytes, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT);
    zeros.image = DeviceImage::create(
        context, {.format = VK_FORMAT_B8G8R8A8_UNORM,
                  .width = 1,
                  .height = 1,
                  .usage = VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT});
    VkSamplerCreateInfo sampler{};
    sampler.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    if (!zeros.buffer || !zeros.image ||
        vkCreateSampler(context->device(), &sampler, nullptr, &zeros.sampler) != VK_SUCCESS) {
        return false;
    }
    std::memset(zeros.buffer->bytes().data(), 0, zeros.buffer->bytes().size());
    const std::array<std::uint8_t, 4> texel{};
    return uploader->upload(*zeros.image, {.width = 1, .height = 1}, texel, texel.size());
}

Result<std::shared_ptr<DeviceLife>, std::string> DeviceLife::create(DeviceOptions options) {
    if (!options.report) {
        options.report = [](const std::string& sentence) {
            std::fprintf(stderr, "%s\n", sentence.c_str());
        };
    }
    auto parts = DeviceParts::create(options);
    if (!parts) {
        return Failure{parts.error()};
    }
    return std::shared_ptr<DeviceLife>(new DeviceLife(std::move(options), *std::move(parts)));
}

DeviceLife::DeviceLife(DeviceOptions options, std::shared_ptr<DeviceParts> parts)
    : options_(std::move(options)), parts_(std::move(parts)) {}

const std::shared_ptr<DeviceParts>& DeviceLife::current() {
    if (!parts_ || parts_->context->isLost()) {
        recover();
    }
    return parts_;
}

void DeviceLife::recover() {
    if (parts_) {
        options_.report("the GPU " + parts_->context->name() + " is lost");
        parts_.reset();
    }
    const auto now = std::chrono::steady_clock::now();
    if (lastAttempt_ && now - *lastAttempt_ < options_.recoveryInterval) {
        return;
    }
    const bool isFirstAttempt = !std::exchange(failing_, true);
    lastAttempt_ = now;
    if (auto made = DeviceParts::create(options_)) {
        parts_ = *std::move(made);
        failing_ = false;
        options_.report("the GPU " + parts_->context->name() + " takes over");
    } else if (isFirstAttempt) {
        options_.report("no GPU takes over: " + made.error());
    }
}

} // namespace vantor::vulkan
