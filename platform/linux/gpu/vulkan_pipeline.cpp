#include "platform/linux/gpu/vulkan_pipeline.h"

#include "platform/linux/gpu/vulkan_texture.h"

namespace vantor::vulkan {
namespace {

Failure<Error> failure(std::string message) {
    return Failure{Error{.domain = kErrorDomain, .code = 1, .message = std::move(message)}};
}

Failure<Error> failure(const char* what, VkResult result) {
    return failure(std::string(what) + " fails with Vulkan error " + std::to_string(result));
}

std::string textOf(const std::vector<msl::Diagnostic>& diagnostics) {
    std::string text;
    for (const msl::Diagnostic& diagnostic : diagnostics) {
        text += msl::toText(diagnostic);
    }
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

std::vector<VkDescriptorSetLayoutBinding> bindingsOf(const msl::EntryPoint& entry,
                                                     VkShaderStageFlags stage) {
    std::vector<VkDescriptorSetLayoutBinding> bindings;
    const auto add = [&](std::uint32_t binding, VkDescriptorType type) {
        bindings.push_back({binding, type, 1, stage, nullptr});
    };
    for (const auto& buffer : entry.buffers) {
        add(msl::kBufferBinding + buffer.index, VK_DESCRIPTOR_TYPE_STORAGE_BUFFER);
    }
    for (const auto& texture : entry.textures) {
        add(msl::kTextureBinding + texture.index, VK_DESCRIPTOR_TYPE_SAMPLED_IMAGE);
    }
    for (const auto& sampler : entry.samplers) {
        add(msl::kSamplerBinding + sampler.index, VK_DESCRIPTOR_TYPE_SAMPLER);
    }
    for (const auto& sampler : entry.constantSamplers) {
        add(sampler.binding, VK_DESCRIPTOR_TYPE_SAMPLER);
    }
    return bindings;
}

VkSamplerAddressMode addressOf(msl::SamplerAddress address) {
    switch (address) {
    case msl::SamplerAddress::repeat:
        return VK_SAMPLER_ADDRESS_MODE_REPEAT;
    case msl::SamplerAddress::mirroredRepeat:
        return VK_SAMPLER_ADDRESS_MODE_MIRRORED_REPEAT;
    case msl::SamplerAddress::clampToZero:
    case msl::SamplerAddress::clampToBorder:
        return VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_BORDER;
    case msl::SamplerAddress::clampToEdge:
        break;
    }
    return VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
}

VkFilter filterOf(msl::SamplerFilter filter) {
    return filter == msl::SamplerFilter::linear ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
}

VkSampler makeSampler(VkDevice device, const msl::SamplerOptions& options) {
    VkSamplerCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    info.magFilter = filterOf(options.magFilter);
    info.minFilter = filterOf(options.minFilter);
    info.mipmapMode = options.mipFilter == msl::SamplerMipFilter::linear
                          ? VK_SAMPLER_MIPMAP_MODE_LINEAR
                          : VK_SAMPLER_MIPMAP_MODE_NEAREST;
    info.addressModeU = addressOf(options.sAddress);
    info.addressModeV = addressOf(options.tAddress);
    info.addressModeW = addressOf(options.rAddress);
    info.unnormalizedCoordinates = options.normalizedCoordinates ? VK_FALSE : VK_TRUE;
    // Textures have one level.
    info.maxLod = 0.0F;
    switch (options.border) {
    case msl::SamplerBorder::opaqueBlack:
        info.borderColor = VK_BORDER_COLOR_FLOAT_OPAQUE_BLACK;
        break;
    case msl::SamplerBorder::opaqueWhite:
        info.borderColor = VK_BORDER_COLOR_FLOAT_OPAQUE_WHITE;
        break;
    case msl::SamplerBorder::transparentBlack:
        info.borderColor = VK_BORDER_COLOR_FLOAT_TRANSPARENT_BLACK;
        break;
    }
    VkSampler sampler = VK_NULL_HANDLE;
    vkCreateSampler(device, &info, nullptr, &sampler);
    return sampler;
}

/// A module for as long as a pipeline is made of it.
class ShaderModule {
  public:
    ShaderModule(VkDevice device, const VulkanFunction& function) : device_(device) {
        const std::vector<std::uint32_t>& words = function.library().words();
        VkShaderModuleCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
        info.codeSize = words.size() * sizeof(std::uint32_t);
        info.pCode = words.data();
        if (vkCreateShaderModule(device_, &info, nullptr, &module_) != VK_SUCCESS) {
            module_ = VK_NULL_HANDLE;
        }
    }
    ~ShaderModule() { vkDestroyShaderModule(device_, module_, nullptr); }
    ShaderModule(const ShaderModule&) = delete;
    ShaderModule& operator=(const ShaderModule&) = delete;

    VkShaderModule handle() const { return module_; }

  private:
    VkDevice device_;
    VkShaderModule module_ = VK_NULL_HANDLE;
};

VkResult makeSetLayout(VkDevice device, const std::vector<VkDescriptorSetLayoutBinding>& bindings,
                       VkDescriptorSetLayoutCreateFlags flags, VkDescriptorSetLayout& layout) {
    VkDescriptorSetLayoutCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    info.flags = flags;
    info.bindingCount = static_cast<std::uint32_t>(bindings.size());
    info.pBindings = bindings.data();
    return vkCreateDescriptorSetLayout(device, &info, nullptr, &layout);
}

} // namespace

Result<std::shared_ptr<gpu::Library>> VulkanLibrary::compile(std::string_view source) {
    msl::CompileResult result = msl::compile(source, {.fileName = "program_source"});
    if (!result.module) {
        return failure(textOf(result.diagnostics));
    }
    return std::shared_ptr<gpu::Library>(of(*std::move(result.module)));
}

std::shared_ptr<VulkanLibrary> VulkanLibrary::of(msl::Module module) {
    return std::shared_ptr<VulkanLibrary>(new VulkanLibrary(std::move(module)));
}

std::shared_ptr<gpu::Function> VulkanLibrary::newFunction(std::string_view name) {
    for (const msl::EntryPoint& entry : module_.entryPoints) {
        if (entry.name == name) {
            return std::make_shared<VulkanFunction>(entry, shared_from_this());
        }
    }
    return nullptr;
}

Result<std::shared_ptr<const PipelineObjects>>
PipelineObjects::create(const DeviceParts& parts, const PipelineDescription& description) {
    for (const auto& function : {description.vertex, description.fragment}) {
        if (auto need = unmetNeed(parts.context->abilities(), function->library().module(),
                                  function->entry())) {
            return failure(*std::move(need));
        }
    }
    const std::shared_ptr<PipelineObjects> objects(new PipelineObjects(parts.context, description));
    if (auto made = objects->createLayouts(parts.zeros); !made) {
        return Failure{made.error()};
    }
    const VkPipelineCache cache = parts.pipelineCache->handle();
    if (auto made = objects->createPipeline(cache); !made) {
        return Failure{made.error()};
    }
    return std::shared_ptr<const PipelineObjects>(objects);
}

PipelineObjects::~PipelineObjects() {
    const VkDevice device = context_->device();
    vkDestroyPipeline(device, pipeline_, nullptr);
    vkDestroyPipelineLayout(device, layout_, nullptr);
    vkDestroyDescriptorPool(device, pool_, nullptr);
    vkDestroyDescriptorSetLayout(device, fragmentLayout_, nullptr);
    vkDestroyDescriptorSetLayout(device, vertexLayout_, nullptr);
    for (const VkSampler sampler : samplers_) {
        vkDestroySampler(device, sampler, nullptr);
    }
}

Result<Done> PipelineObjects::createLayouts(const Zeros& zeros) {
    const msl::EntryPoint& vertex = description_.vertex->entry();
    const VkDevice device = context_->device();
    const auto fragmentBindings = bindingsOf(fragment(), VK_SHADER_STAGE_FRAGMENT_BIT);
    if (fragmentBindings.size() > context_->maxPushDescriptors()) {
        return failure("fragment function with " + std::to_string(fragmentBindings.size()) +
                       " resources exceeds the device's limit of " +
                       std::to_string(context_->maxPushDescriptors()));
    }
    for (const msl::ConstantSampler& sampler : fragment().constantSamplers) {
        samplers_.push_back(makeSampler(device, sampler.options));
    }
    if (const VkResult result =
            makeSetLayout(device, bindingsOf(vertex, VK_SHADER_STAGE_VERTEX_BIT), 0, vertexLayout_);
        result != VK_SUCCESS) {
        return failure("making a descriptor layout", result);
    }
    if (const VkResult result =
            makeSetLayout(device, fragmentBindings,
                          VK_DESCRIPTOR_SET_LAYOUT_CREATE_PUSH_DESCRIPTOR_BIT_KHR, fragmentLayout_);
        result != VK_SUCCESS) {
        return failure("making a descriptor layout", result);
    }
    if (auto made = createVertexSet(zeros); !made) {
        return made;
    }
    static_assert(msl::kVertexDescriptorSet == 0 && msl::kFragmentDescriptorSet == 1);
    const VkDescriptorSetLayout sets[] = {vertexLayout_, fragmentLayout_};
    VkPipelineLayoutCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    info.setLayoutCount = 2;
    info.pSetLayouts = sets;
    if (const VkResult result = vkCreatePipelineLayout(device, &info, nullptr, &layout_);
        result != VK_SUCCESS) {
        return failure("making a pipeline layout", result);
    }
    return Done{};
}

Result<Done> PipelineObjects::createVertexSet(const Zeros& zeros) {
    const auto bindings = bindingsOf(description_.vertex->entry(), VK_SHADER_STAGE_VERTEX_BIT);
    if (bindings.empty()) {
        return Done{};
    }
    const VkDevice device = context_->device();
    std::vector<VkDescriptorPoolSize> sizes;
    for (const auto& binding : bindings) {
        sizes.push_back({binding.descriptorType, 1});
    }
    VkDescriptorPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
    pool.maxSets = 1;
    pool.poolSizeCount = static_cast<std::uint32_t>(sizes.size());
    pool.pPoolSizes = sizes.data();
    if (const VkResult result = vkCreateDescriptorPool(device, &pool, nullptr, &pool_);
        result != VK_SUCCESS) {
        return failure("making a descriptor pool", result);
    }
    VkDescriptorSetAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
    allocation.descriptorPool = pool_;
    allocation.descriptorSetCount = 1;
    allocation.pSetLayouts = &vertexLayout_;
    if (const VkResult result = vkAllocateDescriptorSets(device, &allocation, &vertexSet_);
        result != VK_SUCCESS) {
        return failure("making a descriptor set", result);
    }
    const VkDescriptorBufferInfo buffer{zeros.buffer->handle(), 0, VK_WHOLE_SIZE};
    const VkDescriptorImageInfo image{zeros.sampler, zeros.image->view(),
                                      VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL};
    for (const auto& binding : bindings) {
        VkWriteDescriptorSet write{};
        write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        write.dstSet = vertexSet_;
        write.dstBinding = binding.binding;
        write.descriptorCount = 1;
        write.descriptorType = binding.descriptorType;
        write.pBufferInfo = &buffer;
        write.pImageInfo = &image;
        vkUpdateDescriptorSets(device, 1, &write, 0, nullptr);
    }
    return Done{};
}

Result<Done> PipelineObjects::createPipeline(VkPipelineCache cache) {
    const ShaderModule vertex(context_->device(), *description_.vertex);
    const ShaderModule fragmentModule(context_->device(), *description_.fragment);
    if (vertex.handle() == VK_NULL_HANDLE || fragmentModule.handle() == VK_NULL_HANDLE) {
        return failure("the device takes no shader module");
    }
    VkPipelineShaderStageCreateInfo stages[2]{};
    stages[0].sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].module = vertex.handle();
    stages[0].pName = description_.vertex->entry().name.c_str();
    stages[1] = stages[0];
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].module = fragmentModule.handle();
    stages[1].pName = fragment().name.c_str();

    VkPipelineVertexInputStateCreateInfo input{};
    input.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo assembly{};
    assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    VkPipelineViewportStateCreateInfo viewport{};
    viewport.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewport.viewportCount = 1;
    viewport.scissorCount = 1;
    VkPipelineRasterizationStateCreateInfo raster{};
    raster.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    raster.lineWidth = 1.0F;
    VkPipelineMultisampleStateCreateInfo samples{};
    samples.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    samples.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState attachment{};
    attachment.colorWriteMask = VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT |
                                VK_COLOR_COMPONENT_B_BIT | VK_COLOR_COMPONENT_A_BIT;
    VkPipelineColorBlendStateCreateInfo blend{};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &attachment;
    const VkDynamicState dynamics[] = {VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
    VkPipelineDynamicStateCreateInfo dynamic{};
    dynamic.sType = VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO;
    dynamic.dynamicStateCount = 2;
    dynamic.pDynamicStates = dynamics;
    VkPipelineRenderingCreateInfo rendering{};
    rendering.sType = VK_STRUCTURE_TYPE_PIPELINE_RENDERING_CREATE_INFO;
    rendering.colorAttachmentCount = 1;
    rendering.pColorAttachmentFormats = &description_.format;

    VkGraphicsPipelineCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    info.pNext = &rendering;
    info.stageCount = 2;
    info.pStages = stages;
    info.pVertexInputState = &input;
    info.pInputAssemblyState = &assembly;
    info.pViewportState = &viewport;
    info.pRasterizationState = &raster;
    info.pMultisampleState = &samples;
    info.pColorBlendState = &blend;
    info.pDynamicState = &dynamic;
    info.layout = layout_;
    if (const VkResult result =
            vkCreateGraphicsPipelines(context_->device(), cache, 1, &info, nullptr, &pipeline_);
        result != VK_SUCCESS) {
        pipeline_ = VK_NULL_HANDLE;
        return failure("making a pipeline", result);
    }
    return Done{};
}

Result<std::shared_ptr<gpu::RenderPipelineState>>
VulkanPipeline::create(const DeviceParts& parts, const gpu::RenderPipelineDescriptor& descriptor) {
    // Every function of this device is one of ours.
    const PipelineDescription description{
        .vertex = std::static_pointer_cast<const VulkanFunction>(descriptor.vertexFunction),
        .fragment = std::static_pointer_cast<const VulkanFunction>(descriptor.fragmentFunction),
        .format = formatOf(descriptor.colorPixelFormat)};
    if (!description.vertex || description.vertex->entry().stage != msl::Stage::vertex) {
        return failure("the pipeline has no vertex function");
    }
    if (!description.fragment || description.fragment->entry().stage != msl::Stage::fragment) {
        return failure("the pipeline has no fragment function");
    }
    if (description.format == VK_FORMAT_UNDEFINED) {
        return failure("the pipeline has no pixel format");
    }
    auto objects = PipelineObjects::create(parts, description);
    if (!objects) {
        return Failure{objects.error()};
    }
    return std::shared_ptr<gpu::RenderPipelineState>(
        new VulkanPipeline(description, *std::move(objects)));
}

std::shared_ptr<const PipelineObjects> VulkanPipeline::objectsFor(const DeviceParts& parts) {
    if (!objects_ || objects_->context() != parts.context) {
        auto again = PipelineObjects::create(parts, description_);
        objects_ = again ? *std::move(again) : nullptr;
    }
    return objects_;
}

} // namespace vantor::vulkan
