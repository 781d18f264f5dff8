#include "tools/shader_argument.h"

#include "platform/gpu.h"
#include "platform/suggestion.h"
#include "platform/utf8.h"
#include "shaders/shader_catalog.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace vantor {
namespace {

/// Twenty times the largest source of the catalog.
constexpr std::uintmax_t kMaxSourceBytes = 1U << 20U;

/// How the compiler of the seam names its source.
constexpr std::string_view kSourceName = "program_source:";
/// How a finding begins that is about the source as a whole.
constexpr std::string_view kPlaceless = "error: ";

std::string renamed(std::string text, const std::string& name) {
    if (text.starts_with(kPlaceless)) {
        return name + ": " + text;
    }
    std::size_t lineStart = 0;
    while (lineStart < text.size()) {
        if (text.compare(lineStart, kSourceName.size(), kSourceName) == 0) {
            text.replace(lineStart, kSourceName.size() - 1, name);
        }
        const auto end = text.find('\n', lineStart);
        lineStart = end == std::string::npos ? text.size() : end + 1;
    }
    return text;
}

std::string unknown(std::string_view argument, const std::error_code& status) {
    std::vector<std::string_view> identifiers;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        identifiers.push_back(entry.id);
    }
    return "\"" + std::string(argument) +
           "\" is neither a catalog entry (see vantorctl list) nor a readable file: " +
           status.message() + didYouMean(argument, identifiers);
}

} // namespace

Result<NamedShader, std::string> findShader(std::string_view argument) {
    if (const ShaderCatalog::Entry* entry = ShaderCatalog::entry(argument)) {
        if (!entry->source) {
            return Failure{"\"" + std::string(argument) + "\" has no source"};
        }
        return NamedShader{std::string(entry->id), std::string(*entry->source),
                           std::string(entry->id)};
    }
    const std::filesystem::path file{std::string(argument)};
    std::error_code status;
    static_cast<void>(std::filesystem::file_size(file, status));
    if (status) {
        return Failure{unknown(argument, status)};
    }
    return readShaderFile(file);
}

Result<NamedShader, std::string> readShaderFile(const std::filesystem::path& file) {
    std::error_code status;
    const auto size = std::filesystem::file_size(file, status);
    if (status) {
        return Failure{file.string() + ": " + status.message()};
    }
    if (size > kMaxSourceBytes) {
        return Failure{file.string() + ": file of " + std::to_string(size) +
                       " bytes exceeds the limit of " + std::to_string(kMaxSourceBytes)};
    }
    std::ifstream stream(file, std::ios::binary);
    std::string source{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (source.empty()) {
        return Failure{file.string() + ": the file is empty or cannot be read"};
    }
    if (!isUTF8(source)) {
        return Failure{file.string() + ": the file is not UTF-8 text"};
    }
    return NamedShader{"file." + file.stem().string(), std::move(source), file.string()};
}

Result<Done, std::string> checkShader(gpu::System& gpu, const NamedShader& shader) {
    const auto device = gpu.createSystemDefaultDevice();
    return device ? checkShader(*device, shader) : Done{};
}

Result<Done, std::string> checkShader(gpu::Device& device, const NamedShader& shader) {
    auto library = device.newLibrary(shader.source);
    if (!library) {
        return Failure{renamed(library.error().message, shader.name)};
    }
    gpu::RenderPipelineDescriptor descriptor;
    descriptor.vertexFunction = library.value()->newFunction("v_main");
    descriptor.fragmentFunction = library.value()->newFunction("f_main");
    for (const auto& [function, name] : {std::pair{&descriptor.vertexFunction, "vertex v_main"},
                                         {&descriptor.fragmentFunction, "fragment f_main"}}) {
        if (!*function) {
            return Failure{shader.name + ": error: the source has no entry point \"" + name + "\""};
        }
    }
    auto pipeline = device.newRenderPipelineState(descriptor);
    if (!pipeline) {
        return Failure{shader.name + ": error: " + pipeline.error().message};
    }
    return Done{};
}

} // namespace vantor
