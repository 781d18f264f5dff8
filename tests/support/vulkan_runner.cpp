#include "tests/support/vulkan_runner.h"

#include <algorithm>
#include <cstring>

#include "tests/support/vulkan_test_device.h"

namespace vantor::tests {
namespace {

constexpr uint32_t kSide = VulkanTestDevice::kSide;
constexpr VkFormat kFormat = VK_FORMAT_R32G32B32A32_SFLOAT;
constexpr VkDeviceSize kPixelBytes = 16;

// What the fragment function reads, as its entry point describes it, in one descriptor set.
class Resources {
  public:
    explicit Resources(VulkanTestDevice& gpu) : gpu_(gpu) {}
    ~Resources();
    Resources(const Resources&) = delete;
    Resources& operator=(const Resources&) = delete;

    void make(const msl::EntryPoint& entry, std::span<const std::vector<std::byte>> contents,
              std::span<const std::byte> argumentContents);
    VkPipelineLayout layout() const { return layout_; }
    std::span<const VkDescriptorSet> sets() const { return sets_; }

  private:
    struct Write {
        uint32_t binding;
        VkDescriptorType type;
        size_t index;
    };
    void add(uint32_t binding, VkDescriptorType type, size_t index);
    void addBuffer(uint32_t binding, std::span<const std::byte> contents, size_t least);
    void addTexture(uint32_t binding, const msl::TextureBinding& texture);
    void addSampler(uint32_t binding, const msl::SamplerOptions& options);
    void makeSets();

    VulkanTestDevice& gpu_;
    std::vector<VkDescriptorSetLayoutBinding> bindings_;
    std::vector<VulkanTestDevice::Buffer> buffers_;
    std::vector<VulkanTestDevice::Image> images_;
    std::vector<VkSampler> samplers_;
    std::vector<VkDescriptorBufferInfo> bufferInfos_;
    std::vector<VkDescriptorImageInfo> imageInfos_;
    std::vector<Write> writes_;
    std::array<VkDescriptorSetLayout, 2> setLayouts_{};
    std::array<VkDescriptorSet, 2> sets_{};
    VkPipelineLayout layout_ = VK_NULL_HANDLE;
    VkDescriptorPool pool_ = VK_NULL_HANDLE;
};

Resources::~Resources() {
    const VkDevice device = gpu_.handle();
    vkDestroyDescriptorPool(device, pool_, nullptr);
    vkDestroyPipelineLayout(device, layout_, nullptr);
    for (const auto setLayout : setLayouts_) {
        vkDestroyDescriptorSetLayout(device, setLayout, nullptr);
    }
    for (const auto sampler : samplers_) {
        vkDestroySampler(device, sampler, nullptr);
    }
    for (const auto& image : images_) {
        gpu_.release(image);
    }
    for (const auto& buffer : buffers_) {
        gpu_.release(buffer);
    }
}

void Resources::add(uint32_t binding, VkDescriptorType type, size_t index) {
    bindings_.push_back({binding, type, 1, VK_SHADER_STAGE_ALL_GRAPHICS, nullptr});
    writes_.push_back({binding, type, index});
}

void Resources::addBuffer(uint32_t binding, std::span<const std::byte> contents, size_t least) {
    buffers_.push_back(
        gpu_.makeBuffer(std::max(contents.size(), least), VK_BUFFER_USAGE_STORAGE_BUFFER_BIT));
    if (!contents.empty()) {
        std::memcpy(buffers_.back().data, contents.data(), contents.size());
    }
    bufferInfos_.push_back({buffers_.back().buffer, 0, VK_WHOLE_SIZE});
    add(binding, VK_DESCRIPTOR_TYPE_STORAGE_BUFFER, bufferInfos_.size() - 1);
}

void Resources::addTexture(uint32_t binding, const msl::TextureBinding& texture) {
    images_.push_back(gpu_.makeTexture(texture));
    imageInfos_.push_back({VK_NULL_HANDLE, images_.back().view, VK_IMAGE_LAYOUT_GENERAL});
    add(binding,
        texture.writable ? VK_DESCRIPTOR_TYPE_STORAGE_IMAGE : VK_DESCRIPTOR_TYPE_SAMPLED_IMAGE,
        imageInfos_.size() - 1);
}

void Resources::addSampler(uint32_t binding, const msl::SamplerOptions& options) {
    samplers_.push_back(gpu_.makeSampler(options));
    imageInfos_.push_back({samplers_.back(), VK_NULL_HANDLE, VK_IMAGE_LAYOUT_UNDEFINED});
    add(binding, VK_DESCRIPTOR_TYPE_SAMPLER, imageInfos_.size() - 1);
}

void Resources::make(const msl::EntryPoint& entry, std::span<const std::vector<std::byte>> contents,
                     std::span<const std::byte> argumentContents) {
    const std::vector<std::byte> nothing;
    for (size_t i = 0; i < entry.buffers.size(); ++i) {
        addBuffer(msl::kBufferBinding + entry.buffers[i].index,
                  i < contents.size() ? contents[i] : nothing, entry.buffers[i].size);
    }
    for (const auto& texture : entry.textures) {
        addTexture(msl::kTextureBinding + texture.index, texture);
    }
    for (const auto& argument : entry.arguments) {
        switch (argument.kind) {
        case msl::ArgumentKind::texture:
            addTexture(argument.binding, argument.texture);
            break;
        case msl::ArgumentKind::sampler:
            addSampler(argument.binding, {});
            break;
        case msl::ArgumentKind::buffer:
            addBuffer(argument.binding, argumentContents, argument.size);
            break;
        }
    }
    for (const auto& sampler : entry.samplers) {
        addSampler(msl::kSamplerBinding + sampler.index, {});
    }
    for (const auto& sampler : entry.constantSamplers) {
        addSampler(sampler.binding, sampler.options);
    }
    makeSets();
}

void Resources::makeSets() {
    const VkDevice device = gpu_.handle();
    VkDescriptorSetLayoutCreateInfo setInfo{};
    setInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    vkCreateDescriptorSetLayout(device, &setInfo, nullptr, &setLayouts_[msl::kVertexDescriptorSet]);
    setInfo.bindingCount = static_cast<uint32_t>(bindings_.size());
    setInfo.pBindings = bindings_.data();
    vkCreateDescriptorSetLayout(device, &setInfo, nullptr,
                                &setLayouts_[msl::kFragmentDescriptorSet]);
    VkPipelineLayoutCreateInfo layoutInfo{};
    layoutInfo.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    layoutInfo.setLayoutCount = 2;
    layoutInfo.pSetLayouts = setLayouts_.data();
    vkCreatePipelineLayout(device, &layoutInfo, nullptr, &layout_);
    const std::array<VkDescriptorPoolSize, 4> sizes{{{VK_DESCRIPTOR_TYPE_STORAGE_BUFFER, 32},
                                                     {VK_DESCRIPTOR_TYPE_SAMPLED_IMAGE, 32},
                                                     {VK_DESCRIPTOR_TYPE_SAMPLER, 32},
                                                     {VK_DESCRIPTOR_TYPE_STORAGE_IMAGE, 8}}};
    VkDescriptorPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
    poolInfo.maxSets = 2;
    poolInfo.poolSizeCount = static_cast<uint32_t>(sizes.size());
    poolInfo.pPoolSizes = sizes.data();
    vkCreateDescriptorPool(device, &poolInfo, nullptr, &pool_);
    VkDescriptorSetAllocateInfo allocate{};
    allocate.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
    allocate.descriptorPool = pool_;
    allocate.descriptorSetCount = 2;
    allocate.pSetLayouts = setLayouts_.data();
    vkAllocateDescriptorSets(device, &allocate, sets_.data());
    for (const auto& write : writes_) {
        VkWriteDescriptorSet update{};
        update.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        update.dstSet = sets_[msl::kFragmentDescriptorSet];
        update.dstBinding = write.binding;
        update.descriptorCount = 1;
        update.descriptorType = write.type;
        if (write.type == VK_DESCRIPTOR_TYPE_STORAGE_BUFFER) {
            update.pBufferInfo = &bufferInfos_[write.index];
        } else {
            update.pImageInfo = &imageInfos_[write.index];
        }
        vkUpdateDescriptorSets(device, 1, &update, 0, nullptr);
    }
}

VkPipeline makePipeline(VkDevice device, VkPipelineLayout layout,
                        const std::array<VkShaderModule, 2>& shaders,
                        const std::array<std::string, 2>& names,
                        const VkSpecializationInfo& constants) {
    std::array<VkPipelineShaderStageCreateInfo, 2> stages{};
    for (size_t i = 0; i < stages.size(); ++i) {
        stages[i].sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
        stages[i].stage = i == 0 ? VK_SHADER_STAGE_VERTEX_BIT : VK_SHADER_STAGE_FRAGMENT_BIT;
        stages[i].module = shaders[i];
        stages[i].pName = names[i].c_str();
        stages[i].pSpecializationInfo = &constants;
    }
    VkPipelineVertexInputStateCreateInfo vertexInput{};
    vertexInput.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo assembly{};
    assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    // Metal's y axis points up.
    const auto side = static_cast<float>(kSide);
    const VkViewport viewport{0, side, side, -side, 0, 1};
    const VkRect2D scissor{{0, 0}, {kSide, kSide}};
    VkPipelineViewportStateCreateInfo viewportState{};
    viewportState.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewportState.viewportCount = viewportState.scissorCount = 1;
    viewportState.pViewports = &viewport;
    viewportState.pScissors = &scissor;
    VkPipelineRasterizationStateCreateInfo raster{};
    raster.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    raster.frontFace = VK_FRONT_FACE_CLOCKWISE; // as Metal has it
    raster.lineWidth = 1;
    VkPipelineMultisampleStateCreateInfo multisample{};
    multisample.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    multisample.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState attachment{};
    attachment.colorWriteMask = 0xF;
    VkPipelineColorBlendStateCreateInfo blend{};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &attachment;
    VkPipelineRenderingCreateInfo rendering{};
    rendering.sType = VK_STRUCTURE_TYPE_PIPELINE_RENDERING_CREATE_INFO;
    rendering.colorAttachmentCount = 1;
    rendering.pColorAttachmentFormats = &kFormat;
    VkGraphicsPipelineCreateInfo pipelineInfo{};
    pipelineInfo.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    pipelineInfo.pNext = &rendering;
    pipelineInfo.stageCount = 2;
    pipelineInfo.pStages = stages.data();
    pipelineInfo.pVertexInputState = &vertexInput;
    pipelineInfo.pInputAssemblyState = &assembly;
    pipelineInfo.pViewportState = &viewportState;
    pipelineInfo.pRasterizationState = &raster;
    pipelineInfo.pMultisampleState = &multisample;
    pipelineInfo.pColorBlendState = &blend;
    pipelineInfo.layout = layout;
    VkPipeline pipeline = VK_NULL_HANDLE;
    if (vkCreateGraphicsPipelines(device, VK_NULL_HANDLE, 1, &pipelineInfo, nullptr, &pipeline) !=
        VK_SUCCESS) {
        return VK_NULL_HANDLE;
    }
    return pipeline;
}

std::optional<std::vector<VulkanRunner::Pixel>>
drawPixels(VulkanTestDevice& gpu, VkPipeline pipeline, const Resources& resources) {
    const auto target = gpu.makeImage(
        {.usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT});
    const auto readBack =
        gpu.makeBuffer(kSide * kSide * kPixelBytes, VK_BUFFER_USAGE_TRANSFER_DST_BIT);
    VkCommandBuffer commands = gpu.begin();
    gpu.transition(commands, target.image, VK_IMAGE_ASPECT_COLOR_BIT, VK_IMAGE_LAYOUT_UNDEFINED,
                   VK_IMAGE_LAYOUT_GENERAL);
    VkRenderingAttachmentInfo color{};
    color.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
    color.imageView = target.view;
    color.imageLayout = VK_IMAGE_LAYOUT_GENERAL;
    color.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
    color.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    color.clearValue.color = {{-7.0F, -7.0F, -7.0F, -7.0F}};
    VkRenderingInfo pass{};
    pass.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
    pass.renderArea = {{0, 0}, {kSide, kSide}};
    pass.layerCount = 1;
    pass.colorAttachmentCount = 1;
    pass.pColorAttachments = &color;
    vkCmdBeginRendering(commands, &pass);
    vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline);
    vkCmdBindDescriptorSets(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, resources.layout(), 0, 2,
                            resources.sets().data(), 0, nullptr);
    vkCmdDraw(commands, 3, 1, 0, 0);
    vkCmdEndRendering(commands);
    gpu.transition(commands, target.image, VK_IMAGE_ASPECT_COLOR_BIT, VK_IMAGE_LAYOUT_GENERAL,
                   VK_IMAGE_LAYOUT_GENERAL);
    VkBufferImageCopy copy{};
    copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    copy.imageExtent = {kSide, kSide, 1};
    vkCmdCopyImageToBuffer(commands, target.image, VK_IMAGE_LAYOUT_GENERAL, readBack.buffer, 1,
                           &copy);
    std::optional<std::vector<VulkanRunner::Pixel>> result;
    if (gpu.finish(commands)) {
        result.emplace(size_t{kSide} * kSide);
        std::memcpy(result->data(), readBack.data, result->size() * kPixelBytes);
    }
    gpu.release(readBack);
    gpu.release(target);
    return result;
}

} // namespace

VulkanRunner::VulkanRunner(std::unique_ptr<VulkanTestDevice> device) : device_(std::move(device)) {}
VulkanRunner::~VulkanRunner() = default;

VulkanRunner* VulkanRunner::shared() {
    // Never destroyed: a driver that is unloaded before the process ends leaves allocations of its
    // own behind that the leak checker can no longer tell from ours.
    static VulkanRunner* const runner = [] {
        auto device = std::make_unique<VulkanTestDevice>();
        return device->open() ? new VulkanRunner(std::move(device)) : nullptr;
    }();
    return runner;
}

std::optional<VulkanRunner::Pixel>
VulkanRunner::draw(const msl::Module& module, std::span<const std::vector<std::byte>> buffers,
                   std::string& problem, const Extras& extras) {
    const auto fragment = std::find_if(
        module.entryPoints.begin(), module.entryPoints.end(),
        [](const msl::EntryPoint& entry) { return entry.stage == msl::Stage::fragment; });
    if (fragment == module.entryPoints.end()) {
        problem = "there is no fragment function";
        return std::nullopt;
    }
    const auto pixels = drawAll({module.words, "v_main"}, {module.words, "f_main", *fragment},
                                buffers, problem, extras);
    return pixels ? std::optional(pixels->front()) : std::nullopt;
}

std::optional<std::vector<VulkanRunner::Pixel>>
VulkanRunner::drawAll(const StageCode& vertex, const StageCode& fragment,
                      std::span<const std::vector<std::byte>> buffers, std::string& problem,
                      const Extras& extras) {
    const VkDevice device = device_->handle();
    Resources resources(*device_);
    resources.make(fragment.entry, buffers, extras.argumentBuffer);
    std::array<VkShaderModule, 2> shaders{};
    for (size_t i = 0; i < shaders.size(); ++i) {
        const auto& words = i == 0 ? vertex.words : fragment.words;
        VkShaderModuleCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
        info.codeSize = words.size_bytes();
        info.pCode = words.data();
        vkCreateShaderModule(device, &info, nullptr, &shaders[i]);
    }
    VkSpecializationInfo constants{};
    constants.mapEntryCount = static_cast<uint32_t>(extras.constants.size());
    std::vector<VkSpecializationMapEntry> entries;
    std::vector<uint32_t> values;
    for (const auto& [id, bits] : extras.constants) {
        entries.push_back({id, static_cast<uint32_t>(values.size() * sizeof(bits)), sizeof(bits)});
        values.push_back(bits);
    }
    constants.pMapEntries = entries.data();
    constants.dataSize = values.size() * sizeof(uint32_t);
    constants.pData = values.data();
    const VkPipeline pipeline =
        makePipeline(device, resources.layout(), shaders, {vertex.name, fragment.name}, constants);
    std::optional<std::vector<Pixel>> result;
    if (pipeline == VK_NULL_HANDLE) {
        problem = "the pipeline is refused";
    } else {
        result = drawPixels(*device_, pipeline, resources);
        problem = result ? "" : "the drawing is refused";
    }
    vkDestroyPipeline(device, pipeline, nullptr);
    for (const auto shader : shaders) {
        vkDestroyShaderModule(device, shader, nullptr);
    }
    return result;
}

} // namespace vantor::tests
