#pragma once
// The SHADER of a command: a catalog entry by its identifier, or a file of source text.

#include "platform/result.h"

#include <string>
#include <string_view>

namespace vantor {

namespace gpu {
class System;
}

struct NamedShader {
    /// The catalog identifier, or "file." and the file's name without its extension.
    std::string id;
    std::string source;
    /// How diagnostics name it: the file as the user wrote it, or the identifier.
    std::string name;
};

/// Finds the shader. The error is a sentence that says what was looked for.
Result<NamedShader, std::string> findShader(std::string_view argument);

/// Compiles the shader as the extension would. On failure the error is the compiler's whole text
/// with the shader's name in it. Without a GPU nothing can be checked and nothing is wrong.
Result<Done, std::string> checkShader(gpu::System& gpu, const NamedShader& shader);

} // namespace vantor
