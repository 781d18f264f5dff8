#pragma once
// Compiled sources and pipelines. A pipeline knows which resources its fragment function reads;
// they are pushed for each draw, so that a frame needs no descriptor pool.

#include "msl/msl.h"
#include "platform/gpu.h"
#include "platform/linux/gpu/device_parts.h"

#include <memory>
#include <vector>

namespace vantor::vulkan {

/// Of the errors of libraries and pipelines.
inline constexpr const char* kErrorDomain = "VantorGPU";

/// A compiled source. Has nothing of a device, and so outlives every one.
class VulkanLibrary : public gpu::Library, public std::enable_shared_from_this<VulkanLibrary> {
  public:
    static Result<std::shared_ptr<gpu::Library>> compile(std::string_view source);
    /// What a compiler made.
    static std::shared_ptr<VulkanLibrary> of(msl::Module module);

    std::shared_ptr<gpu::Function> newFunction(std::string_view name) override;
    const std::vector<std::uint32_t>& words() const { return module_.words; }
    const msl::Module& module() const { return module_; }

  private:
    explicit VulkanLibrary(msl::Module module) : module_(std::move(module)) {}

    msl::Module module_;
};

class VulkanFunction : public gpu::Function {
  public:
    VulkanFunction(const msl::EntryPoint& entry, std::shared_ptr<const VulkanLibrary> library)
        : entry_(entry), library_(std::move(library)) {}

    const msl::EntryPoint& entry() const { return entry_; }
    const VulkanLibrary& library() const { return *library_; }

  private:
    /// Part of the library.
    const msl::EntryPoint& entry_;
    std::shared_ptr<const VulkanLibrary> library_;
};

struct PipelineDescription {
    std::shared_ptr<const VulkanFunction> vertex;
    std::shared_ptr<const VulkanFunction> fragment;
    VkFormat format = VK_FORMAT_UNDEFINED;
};

/// A pipeline on one life of the device.
class PipelineObjects {
  public:
    static Result<std::shared_ptr<const PipelineObjects>>
    create(const DeviceParts& parts, const PipelineDescription& description);
    ~PipelineObjects();
    PipelineObjects(const PipelineObjects&) = delete;
    PipelineObjects& operator=(const PipelineObjects&) = delete;

    const std::shared_ptr<Context>& context() const { return context_; }
    VkPipeline handle() const { return pipeline_; }
    VkPipelineLayout layout() const { return layout_; }
    const msl::EntryPoint& fragment() const { return description_.fragment->entry(); }
    /// The vertex function's resources, all unbound; null when it has none.
    VkDescriptorSet vertexSet() const { return vertexSet_; }
    /// In the order of the fragment function's constant samplers.
    const std::vector<VkSampler>& constantSamplers() const { return samplers_; }

  private:
    PipelineObjects(std::shared_ptr<Context> context, PipelineDescription description)
        : context_(std::move(context)), description_(std::move(description)) {}
    Result<Done> createLayouts(const Zeros& zeros);
    Result<Done> createVertexSet(const Zeros& zeros);
    Result<Done> createPipeline(VkPipelineCache cache);

    std::shared_ptr<Context> context_;
    PipelineDescription description_;
    VkDescriptorSetLayout vertexLayout_ = VK_NULL_HANDLE;
    VkDescriptorSetLayout fragmentLayout_ = VK_NULL_HANDLE;
    VkDescriptorPool pool_ = VK_NULL_HANDLE;
    VkDescriptorSet vertexSet_ = VK_NULL_HANDLE;
    std::vector<VkSampler> samplers_;
    VkPipelineLayout layout_ = VK_NULL_HANDLE;
    VkPipeline pipeline_ = VK_NULL_HANDLE;
};

class VulkanPipeline : public gpu::RenderPipelineState {
  public:
    static Result<std::shared_ptr<gpu::RenderPipelineState>>
    create(const DeviceParts& parts, const gpu::RenderPipelineDescriptor& descriptor);

    /// The pipeline on that life of the device: made again when the device was replaced. Null when
    /// the device refuses it.
    std::shared_ptr<const PipelineObjects> objectsFor(const DeviceParts& parts);

  private:
    VulkanPipeline(PipelineDescription description, std::shared_ptr<const PipelineObjects> objects)
        : description_(std::move(description)), objects_(std::move(objects)) {}

    PipelineDescription description_;
    std::shared_ptr<const PipelineObjects> objects_;
};

} // namespace vantor::vulkan
