#include "tools/drawing.h"

#include "platform/linux/whole_file.h"

namespace vantor {
namespace {

std::string sizeText(const Size& size) {
    return std::to_string(static_cast<unsigned>(size.width)) + "x" +
           std::to_string(static_cast<unsigned>(size.height));
}

} // namespace

Result<Done, std::string> drawPNG(ShaderGPU& gpu, const NamedShader& shader, const Frame& frame,
                                  const std::filesystem::path& file) {
    if (auto writable = canReplaceFile(file); !writable) {
        return writable;
    }
    if (!gpu.device()) {
        return Failure{std::string("there is no GPU to draw with")};
    }
    if (auto checked = checkShader(*gpu.device(), shader); !checked) {
        return checked;
    }
    if (!gpu.renderPNG(shader.id, shader.source, frame.look, frame.size, frame.time, file)) {
        return Failure{file.string() + ": a picture of " + sizeText(frame.size) +
                       " pixels cannot be drawn or written"};
    }
    return Done{};
}

} // namespace vantor
