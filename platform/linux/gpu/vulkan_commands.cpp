#include "platform/linux/gpu/vulkan_commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

namespace vantor::vulkan {
namespace {

/// References that one pass usually takes; more make the list grow once.
constexpr std::size_t kUsualReferences = 16;

VkAttachmentLoadOp loadOf(gpu::LoadAction action) {
    switch (action) {
    case gpu::LoadAction::load:
        return VK_ATTACHMENT_LOAD_OP_LOAD;
    case gpu::LoadAction::clear:
        return VK_ATTACHMENT_LOAD_OP_CLEAR;
    case gpu::LoadAction::dontCare:
        break;
    }
    return VK_ATTACHMENT_LOAD_OP_DONT_CARE;
}

std::size_t alignedUp(std::size_t value, std::size_t alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

} // namespace

void VulkanEncoder::begin(std::span<const VkCommandBuffer> bands,
                          const gpu::RenderPassDescriptor& pass,
                          std::vector<std::shared_ptr<const void>>& kept, const Buffer& uniforms,
                          std::size_t& uniformsUsed) {
    bands_ = bands;
    kept_ = &kept;
    uniforms_ = &uniforms;
    uniformsUsed_ = &uniformsUsed;
    pipeline_ = nullptr;
    buffers_.fill({});
    textures_.fill(nullptr);

    // Every texture of this device is one of ours.
    DeviceImage& image = static_cast<VulkanTexture*>(pass.texture)->image();
    transition(*parts_.context, bands.front(), image, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL,
               pass.loadAction == gpu::LoadAction::load ? Contents::kept : Contents::discarded);
    const auto count = static_cast<std::uint32_t>(bands.size());
    std::uint32_t top = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto bottom =
            static_cast<std::uint32_t>(std::uint64_t{image.height()} * (i + 1) / count);
        beginBand(bands[i], pass, image,
                  {{0, static_cast<std::int32_t>(top)}, {image.width(), bottom - top}});
        top = bottom;
    }
    beginEncoding();
}

void VulkanEncoder::beginBand(VkCommandBuffer commands, const gpu::RenderPassDescriptor& pass,
                              const DeviceImage& image, const VkRect2D& area) const {
    VkRenderingAttachmentInfo attachment{};
    attachment.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
    attachment.imageView = image.view();
    attachment.imageLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    attachment.loadOp = loadOf(pass.loadAction);
    attachment.storeOp = pass.storeAction == gpu::StoreAction::store
                             ? VK_ATTACHMENT_STORE_OP_STORE
                             : VK_ATTACHMENT_STORE_OP_DONT_CARE;
    attachment.clearValue.color.float32[0] = static_cast<float>(pass.clearColor.red);
    attachment.clearValue.color.float32[1] = static_cast<float>(pass.clearColor.green);
    attachment.clearValue.color.float32[2] = static_cast<float>(pass.clearColor.blue);
    attachment.clearValue.color.float32[3] = static_cast<float>(pass.clearColor.alpha);
    VkRenderingInfo info{};
    info.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
    info.renderArea = area;
    info.layerCount = 1;
    info.colorAttachmentCount = 1;
    info.pColorAttachments = &attachment;
    vkCmdBeginRendering(commands, &info);

    // Metal's clip space has its y axis upwards.
    const float width = static_cast<float>(image.width());
    const float height = static_cast<float>(image.height());
    const VkViewport viewport{0.0F, height, width, -height, 0.0F, 1.0F};
    vkCmdSetViewport(commands, 0, 1, &viewport);
    vkCmdSetScissor(commands, 0, 1, &area);
}

void VulkanEncoder::setRenderPipelineStateImpl(
    const std::shared_ptr<gpu::RenderPipelineState>& pipeline) {
    // Every pipeline of this device is one of ours.
    const auto objects = static_cast<VulkanPipeline&>(*pipeline).objectsFor(parts_);
    pipeline_ = objects.get();
    if (pipeline_ == nullptr) {
        return;
    }
    kept_->push_back(objects);
    for (const VkCommandBuffer commands : bands_) {
        vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline_->handle());
        if (const VkDescriptorSet set = pipeline_->vertexSet(); set != VK_NULL_HANDLE) {
            vkCmdBindDescriptorSets(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline_->layout(),
                                    msl::kVertexDescriptorSet, 1, &set, 0, nullptr);
        }
    }
}

void VulkanEncoder::setFragmentBytesImpl(std::span<const std::uint8_t> bytes, std::uint32_t index) {
    const std::size_t alignment = parts_.context->limits().minStorageBufferOffsetAlignment;
    const std::size_t offset = alignedUp(*uniformsUsed_, alignment);
    if (offset + bytes.size() > kUniformBytes) {
        std::fprintf(stderr, "a command buffer holds at most %zu inline bytes\n", kUniformBytes);
        std::abort();
    }
    std::memcpy(uniforms_->bytes().data() + offset, bytes.data(), bytes.size());
    *uniformsUsed_ = offset + bytes.size();
    buffers_[index] = {.offset = offset, .size = bytes.size()};
}

void VulkanEncoder::setFragmentTextureImpl(const std::shared_ptr<gpu::Texture>& texture,
                                           std::uint32_t index) {
    textures_[index] = nullptr;
    if (texture) {
        kept_->push_back(texture);
        textures_[index] = static_cast<VulkanTexture&>(*texture).imageFor(parts_);
    }
}

void VulkanEncoder::pushResources() {
    constexpr std::size_t kMostWrites =
        msl::kMaxBuffers + msl::kMaxTextures + msl::kMaxSamplers + msl::kMaxConstantSamplers;
    std::array<VkWriteDescriptorSet, kMostWrites> writes;
    std::array<VkDescriptorBufferInfo, msl::kMaxBuffers> buffers;
    std::array<VkDescriptorImageInfo, kMostWrites> images;
    std::uint32_t count = 0;
    const auto add = [&](std::uint32_t binding, VkDescriptorType type) -> VkWriteDescriptorSet& {
        VkWriteDescriptorSet& write = writes[count++];
        write = {};
        write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        write.dstBinding = binding;
        write.descriptorCount = 1;
        write.descriptorType = type;
        return write;
    };
    const msl::EntryPoint& fragment = pipeline_->fragment();
    std::size_t bufferCount = 0;
    for (const auto& buffer : fragment.buffers) {
        const Bound& bound = buffers_[buffer.index];
        VkDescriptorBufferInfo& info = buffers[bufferCount++];
        info = bound.size != 0
                   ? VkDescriptorBufferInfo{uniforms_->handle(), bound.offset, bound.size}
                   : VkDescriptorBufferInfo{parts_.zeros.buffer->handle(), 0, VK_WHOLE_SIZE};
        add(msl::kBufferBinding + buffer.index, VK_DESCRIPTOR_TYPE_STORAGE_BUFFER).pBufferInfo =
            &info;
    }
    const auto addImage = [&](std::uint32_t binding, VkDescriptorType type, VkImageView view,
                              VkSampler sampler) {
        VkDescriptorImageInfo& info = images[count];
        info = {sampler, view, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL};
        add(binding, type).pImageInfo = &info;
    };
    for (const auto& texture : fragment.textures) {
        const DeviceImage* bound =
            texture.index < textures_.size() ? textures_[texture.index] : nullptr;
        addImage(msl::kTextureBinding + texture.index, VK_DESCRIPTOR_TYPE_SAMPLED_IMAGE,
                 bound != nullptr ? bound->view() : parts_.zeros.image->view(), VK_NULL_HANDLE);
    }
    for (const auto& sampler : fragment.samplers) {
        addImage(msl::kSamplerBinding + sampler.index, VK_DESCRIPTOR_TYPE_SAMPLER, VK_NULL_HANDLE,
                 parts_.zeros.sampler);
    }
    for (std::size_t i = 0; i < fragment.constantSamplers.size(); ++i) {
        addImage(fragment.constantSamplers[i].binding, VK_DESCRIPTOR_TYPE_SAMPLER, VK_NULL_HANDLE,
                 pipeline_->constantSamplers()[i]);
    }
    if (count == 0) {
        return;
    }
    for (const VkCommandBuffer commands : bands_) {
        parts_.context->pushDescriptorSet()(commands, VK_PIPELINE_BIND_POINT_GRAPHICS,
                                            pipeline_->layout(), msl::kFragmentDescriptorSet, count,
                                            writes.data());
    }
}

void VulkanEncoder::drawPrimitivesImpl(gpu::PrimitiveType, std::uint32_t vertexStart,
                                       std::uint32_t vertexCount) {
    if (pipeline_ == nullptr) {
        return;
    }
    pushResources();
    for (const VkCommandBuffer commands : bands_) {
        vkCmdDraw(commands, vertexCount, 1, vertexStart, 0);
    }
}

void VulkanEncoder::endEncodingImpl() {
    for (const VkCommandBuffer commands : bands_) {
        vkCmdEndRendering(commands);
    }
}

std::unique_ptr<VulkanCommandBuffer>
VulkanCommandBuffer::create(std::shared_ptr<const DeviceParts> parts) {
    std::unique_ptr<VulkanCommandBuffer> buffer(new VulkanCommandBuffer(std::move(parts)));
    const Context& context = *buffer->parts_->context;
    VkCommandPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    pool.queueFamilyIndex = context.queueFamily();
    if (vkCreateCommandPool(context.device(), &pool, nullptr, &buffer->pool_) != VK_SUCCESS) {
        return nullptr;
    }
    buffer->uniforms_ = Buffer::create(buffer->parts_->context, VulkanEncoder::kUniformBytes,
                                       VK_BUFFER_USAGE_STORAGE_BUFFER_BIT);
    buffer->kept_.reserve(kUsualReferences);
    return buffer->uniforms_ ? std::move(buffer) : nullptr;
}

VulkanCommandBuffer::~VulkanCommandBuffer() {
    if (banded_) {
        banded_->cancel();
        point_ = banded_->point();
    }
    static_cast<void>(parts_->context->wait(point_));
    vkDestroyCommandPool(parts_->context->device(), pool_, nullptr);
}

bool VulkanCommandBuffer::isIdle() const {
    if (recording_ || (banded_ && !banded_->isSubmitted())) {
        return false;
    }
    return parts_->context->isDone(banded_ ? banded_->point() : point_);
}

bool VulkanCommandBuffer::begin() {
    kept_.clear();
    banded_.reset();
    uniformsUsed_ = 0;
    used_ = 0;
    if (vkResetCommandPool(parts_->context->device(), pool_, 0) != VK_SUCCESS || !record(1)) {
        return false;
    }
    recording_ = true;
    beginRecording();
    return true;
}

bool VulkanCommandBuffer::record(std::size_t count) {
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = pool_;
    allocation.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocation.commandBufferCount = 1;
    VkCommandBufferBeginInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    while (used_ < count) {
        if (used_ == commands_.size()) {
            VkCommandBuffer made = VK_NULL_HANDLE;
            if (vkAllocateCommandBuffers(parts_->context->device(), &allocation, &made) !=
                VK_SUCCESS) {
                return false;
            }
            commands_.push_back(made);
        }
        if (vkBeginCommandBuffer(commands_[used_], &info) != VK_SUCCESS) {
            return false;
        }
        ++used_;
    }
    return true;
}

gpu::RenderCommandEncoder*
VulkanCommandBuffer::renderCommandEncoderImpl(const gpu::RenderPassDescriptor& pass) {
    const auto* const texture = static_cast<const VulkanTexture*>(pass.texture);
    if (texture->image().context() != parts_->context || !record(texture->bands())) {
        // It went with a lost device, or the device has no memory left.
        return nullptr;
    }
    encoder_.begin(std::span(commands_).first(used_), pass, kept_, *uniforms_, uniformsUsed_);
    return &encoder_;
}

void VulkanCommandBuffer::presentDrawableImpl(gpu::DrawableRef drawable) {
    // Every drawable of our layers is one of ours.
    presented_ = static_cast<VulkanDrawable*>(drawable.release());
}

void VulkanCommandBuffer::commitImpl() {
    recording_ = false;
    // A drawable that is not shown goes back to its layer at the end of this.
    gpu::DrawableRef returned(std::exchange(presented_, nullptr));
    auto* const drawable = static_cast<VulkanDrawable*>(returned.get());
    DeviceImage* const image =
        drawable != nullptr ? &static_cast<VulkanTexture&>(drawable->texture()).image() : nullptr;
    const bool isShown = image != nullptr && image->context() == parts_->context;
    if (isShown) {
        transition(*parts_->context, commands_[used_ - 1], *image, VK_IMAGE_LAYOUT_GENERAL,
                   Contents::kept, Ownership::releasedOutside);
    }
    if (submit(isShown ? drawable->shared_from_this() : nullptr) && isShown) {
        static_cast<void>(returned.release());
    }
}

bool VulkanCommandBuffer::submit(const std::shared_ptr<Awaiting>& shown) {
    const auto bands = std::span(commands_).first(used_);
    for (const VkCommandBuffer commands : bands) {
        if (vkEndCommandBuffer(commands) != VK_SUCCESS) {
            return false;
        }
    }
    std::shared_ptr<Awaiting> awaiting = shown;
    std::uint64_t point = 0;
    if (shown && bands.size() > 1) {
        banded_ = std::make_shared<BandedPicture>(parts_->context,
                                                  std::vector(bands.begin(), bands.end()), shown);
        awaiting = banded_;
        point = banded_->start();
    } else {
        for (const VkCommandBuffer commands : bands) {
            point = parts_->context->submit(commands);
        }
    }
    if (point == 0) {
        // The device is lost: nothing was drawn, and nothing is shown.
        return false;
    }
    point_ = point;
    if (awaiting) {
        parts_->completion->notify(point, std::move(awaiting));
    }
    return true;
}

void VulkanCommandBuffer::waitUntilCompletedImpl() {
    while (banded_ && !banded_->isSubmitted() && parts_->context->wait(banded_->point())) {
        // The completion thread is about to submit the next band.
        std::this_thread::yield();
    }
    if (banded_) {
        point_ = banded_->point();
    }
    static_cast<void>(parts_->context->wait(point_));
}

gpu::CommandBuffer* VulkanQueue::commandBuffer() {
    const std::shared_ptr<DeviceParts>& parts = life_->current();
    if (!parts) {
        return nullptr;
    }
    if (!buffers_.empty() && !buffers_.front()->isOf(*parts)) {
        // A new life of the device began; buffers of the old one can only be finished.
        std::erase_if(buffers_, [](const auto& buffer) { return buffer->isIdle(); });
    }
    const auto idle = std::find_if(buffers_.begin(), buffers_.end(), [&](const auto& buffer) {
        return buffer->isOf(*parts) && buffer->isIdle();
    });
    if (idle != buffers_.end()) {
        return (*idle)->begin() ? idle->get() : nullptr;
    }
    if (buffers_.size() == kMaxBuffers) {
        return nullptr;
    }
    auto made = VulkanCommandBuffer::create(parts);
    if (!made || !made->begin()) {
        return nullptr;
    }
    buffers_.push_back(std::move(made));
    return buffers_.back().get();
}

} // namespace vantor::vulkan
