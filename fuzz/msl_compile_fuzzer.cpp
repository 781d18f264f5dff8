// Any text compiles or is refused with a diagnostic; what compiles is valid SPIR-V.
#include <spirv-tools/libspirv.hpp>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "msl/msl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const spvtools::SpirvTools tools(SPV_ENV_VULKAN_1_2);
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    const auto result = msl::compile(source);
    if (!result.module) {
        if (result.diagnostics.empty()) {
            std::fputs("refused without a diagnostic\n", stderr);
            std::abort();
        }
        return 0;
    }
    if (!tools.Validate(result.module->words)) {
        std::fputs("the module is not valid\n", stderr);
        std::abort();
    }
    return 0;
}
