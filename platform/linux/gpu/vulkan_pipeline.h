#pragma once
// Compiled sources and pipelines. A pipeline knows which resources its fragment function reads;
// they are pushed for each draw, so that a frame needs no descriptor pool.

#include "msl/msl.h"
#include "platform/gpu.h"
#include "platform/linux/gpu/vulkan_resources.h"

#include <memory>
#include <vector>

namespace vantor::vulkan {

/// What a shader reads where nothing is bound: zeros.
struct Zeros {
    std::unique_ptr<Buffer> buffer;
    std::unique_ptr<DeviceImage> image;
    VkSampler sampler = VK_NULL_HANDLE;
};
inline constexpr VkDeviceSize kZeroBytes = 65536;

class VulkanFunction : public gpu::Function {
  public:
    VulkanFunction(std::shared_ptr<Context> context, VkShaderModule module, msl::EntryPoint entry,
                   std::shared_ptr<gpu::Library> library)
        : context_(std::move(context)), module_(module), entry_(std::move(entry)),
          library_(std::move(library)) {}

    VkShaderModule module() const { return module_; }
    const msl::EntryPoint& entry() const { return entry_; }

  private:
    std::shared_ptr<Context> context_;
    VkShaderModule module_;
    msl::EntryPoint entry_;
    /// Keeps the module.
    std::shared_ptr<gpu::Library> library_;
};

class VulkanLibrary : public gpu::Library, public std::enable_shared_from_this<VulkanLibrary> {
  public:
    static Result<std::shared_ptr<gpu::Library>> compile(std::shared_ptr<Context> context,
                                                         std::string_view source);
    ~VulkanLibrary() override;

    std::shared_ptr<gpu::Function> newFunction(std::string_view name) override;

  private:
    explicit VulkanLibrary(std::shared_ptr<Context> context) : context_(std::move(context)) {}

    std::shared_ptr<Context> context_;
    VkShaderModule module_ = VK_NULL_HANDLE;
    std::vector<msl::EntryPoint> entries_;
};

class VulkanPipeline : public gpu::RenderPipelineState {
  public:
    static Result<std::shared_ptr<gpu::RenderPipelineState>>
    create(std::shared_ptr<Context> context, const Zeros& zeros,
           const gpu::RenderPipelineDescriptor& descriptor);
    ~VulkanPipeline() override;

    VkPipeline handle() const { return pipeline_; }
    VkPipelineLayout layout() const { return layout_; }
    const msl::EntryPoint& fragment() const { return fragment_; }
    /// The vertex function's resources, all unbound; null when it has none.
    VkDescriptorSet vertexSet() const { return vertexSet_; }
    /// In the order of the fragment function's constant samplers.
    const std::vector<VkSampler>& constantSamplers() const { return samplers_; }

  private:
    explicit VulkanPipeline(std::shared_ptr<Context> context) : context_(std::move(context)) {}
    Result<Done> createLayouts(const msl::EntryPoint& vertex, const Zeros& zeros);
    Result<Done> createVertexSet(const msl::EntryPoint& vertex, const Zeros& zeros);
    Result<Done> createPipeline(const VulkanFunction& vertex, const VulkanFunction& fragment,
                                VkFormat format);

    std::shared_ptr<Context> context_;
    msl::EntryPoint fragment_;
    VkDescriptorSetLayout vertexLayout_ = VK_NULL_HANDLE;
    VkDescriptorSetLayout fragmentLayout_ = VK_NULL_HANDLE;
    VkDescriptorPool pool_ = VK_NULL_HANDLE;
    VkDescriptorSet vertexSet_ = VK_NULL_HANDLE;
    std::vector<VkSampler> samplers_;
    VkPipelineLayout layout_ = VK_NULL_HANDLE;
    VkPipeline pipeline_ = VK_NULL_HANDLE;
};

} // namespace vantor::vulkan
