#include "tests/shaders/shader_probe.h"

#include "platform/linux/gpu/vulkan_device.h"

#include <cstring>
#include <span>
#include <stdexcept>
#include <utility>

namespace vantor {
namespace {

constexpr std::size_t kTexelBytes = 4;

/// The process's one device. Never destroyed: its threads live as long as the process.
struct Machine {
    std::shared_ptr<vulkan::VulkanDevice> device;
    std::shared_ptr<gpu::CommandQueue> queue;

    static Machine& shared() {
        static Machine& machine = *new Machine;
        return machine;
    }

  private:
    Machine() {
        auto made = vulkan::VulkanDevice::create();
        if (!made) {
            throw std::runtime_error("no GPU: " + made.error());
        }
        device = *std::move(made);
        queue = device->newCommandQueue();
    }
};

/// The source with f_main turned into a function that others may call.
std::string withPictureFunction(std::string_view source) {
    const std::string_view entry =
        "fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]])";
    std::string text(source);
    const std::size_t at = text.find(entry);
    if (at == std::string::npos) {
        throw std::runtime_error("the source has no f_main of the usual shape");
    }
    return text.replace(at, entry.size(), "float4 picture(VOut in, constant Uniforms& u)");
}

/// A fragment function that puts the sampled pixel's place in `in` before it returns `value`.
std::string samplingEntry(std::string_view value) {
    return "\nstruct ProbePlace { float2 from; float2 step; };\n"
           "fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]],\n"
           "                       constant ProbePlace& place [[buffer(1)]]) {\n"
           "    in.position.xy = place.from + place.step * (in.position.xy - 0.5);\n"
           "    return " +
           std::string(value) + ";\n}\n";
}

template <typename T>
std::span<const std::uint8_t> bytesOf(const T& value) {
    return {reinterpret_cast<const std::uint8_t*>(&value), sizeof value};
}

} // namespace

ProbeView wholePicture(std::uint32_t width, std::uint32_t height, float time) {
    return {.uniforms = {{.x = static_cast<float>(width), .y = static_cast<float>(height)}, time},
            .width = width,
            .height = height};
}

ProbeView sparsePicture(Float2 resolution, float time) {
    ProbeView view{.uniforms = {resolution, time}};
    view.step = {.x = resolution.x / static_cast<float>(view.width),
                 .y = resolution.y / static_cast<float>(view.height)};
    return view;
}

ShaderProbe ShaderProbe::ofPicture(std::string_view source) {
    return {withPictureFunction(source) + samplingEntry("picture(in, u)"),
            gpu::PixelFormat::bgra8Unorm};
}

ShaderProbe ShaderProbe::ofNumbers(std::string_view source, std::string_view functions) {
    return {withPictureFunction(source) + std::string(functions) +
                samplingEntry("float4(probe(in, u))"),
            gpu::PixelFormat::r32Float};
}

ShaderProbe::ShaderProbe(const std::string& source, gpu::PixelFormat format) : format_(format) {
    gpu::Device& device = *Machine::shared().device;
    auto library = device.newLibrary(source);
    if (!library) {
        throw std::runtime_error(library.error().message);
    }
    auto made =
        device.newRenderPipelineState({.vertexFunction = (*library)->newFunction("v_main"),
                                       .fragmentFunction = (*library)->newFunction("f_main"),
                                       .colorPixelFormat = format});
    if (!made) {
        throw std::runtime_error(made.error().message);
    }
    pipeline_ = *std::move(made);
}

std::vector<std::uint8_t> ShaderProbe::draw(const ProbeView& view) const {
    const Machine& machine = Machine::shared();
    const auto target = machine.device->newTexture(
        {.pixelFormat = format_, .width = view.width, .height = view.height});
    gpu::CommandBuffer* const commands = machine.queue->commandBuffer();
    gpu::RenderCommandEncoder* const encoder =
        commands->renderCommandEncoder({.texture = target.get()});
    const Float2 place[] = {view.from, view.step};
    encoder->setRenderPipelineState(pipeline_);
    encoder->setFragmentBytes(bytesOf(view.uniforms), 0);
    encoder->setFragmentBytes(bytesOf(place), 1);
    encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
    encoder->endEncoding();
    commands->commit();
    commands->waitUntilCompleted();

    const std::size_t row = view.width * kTexelBytes;
    std::vector<std::uint8_t> bytes(row * view.height);
    target->getBytes(bytes, row, {.width = view.width, .height = view.height});
    return bytes;
}

std::vector<std::uint8_t> ShaderProbe::pixels(const ProbeView& view) const {
    std::vector<std::uint8_t> bytes = draw(view);
    for (std::size_t i = 0; i < bytes.size(); i += kTexelBytes) {
        std::swap(bytes[i], bytes[i + 2]);
    }
    return bytes;
}

std::vector<float> ShaderProbe::numbers(const ProbeView& view) const {
    const std::vector<std::uint8_t> bytes = draw(view);
    std::vector<float> values(bytes.size() / sizeof(float));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

} // namespace vantor
