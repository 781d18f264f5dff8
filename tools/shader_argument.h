#pragma once
// The SHADER of a command: a catalog entry by its identifier, or a file of source text.

#include "platform/result.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace vantor {

namespace gpu {
class Device;
class System;
} // namespace gpu

struct NamedShader {
    /// The catalog identifier, or "file." and the file's name without its extension.
    std::string id;
    std::string source;
    /// How diagnostics name it: the file as the user wrote it, or the identifier.
    std::string name;
};

/// Finds the shader. The error is a sentence that says what was looked for, and what was probably
/// meant.
Result<NamedShader, std::string> findShader(std::string_view argument);

/// Reads a source file. The error is a sentence that names it.
Result<NamedShader, std::string> readShaderFile(const std::filesystem::path& file);

/// Compiles the shader as the extension would. On failure the error is the compiler's whole text
/// with the shader's name in it.
Result<Done, std::string> checkShader(gpu::Device& device, const NamedShader& shader);
/// The same on the system's GPU. Without one nothing can be checked and nothing is wrong.
Result<Done, std::string> checkShader(gpu::System& gpu, const NamedShader& shader);

} // namespace vantor
