// Shared by the compiler's tests: compiling with the validator watching.
#pragma once

#include <string>
#include <string_view>

#include "msl/msl.h"

namespace msl::tests {

struct Compiled {
    CompileResult result;
    std::string text;      // all diagnostics
    std::string validator; // what the SPIR-V validator says; empty where it has no complaint
};

// Compiles and, where that gives a module, validates it for Vulkan 1.2.
Compiled compileAndValidate(std::string_view source, const Options& options = {});

// The first diagnostic's place and message, "line:column: severity: message"; empty where none.
std::string firstDiagnostic(std::string_view source);

// A whole source around the body of f_main; `parameters` follow its first two.
std::string fragmentSource(std::string_view body, std::string_view globals = {},
                           std::string_view parameters = {});

} // namespace msl::tests
