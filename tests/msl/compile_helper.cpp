#include "tests/msl/compile_helper.h"

#include <spirv-tools/libspirv.hpp>

namespace msl::tests {

Compiled compileAndValidate(std::string_view source, const Options& options) {
    Compiled compiled;
    compiled.result = compile(source, options);
    for (const auto& diagnostic : compiled.result.diagnostics) {
        compiled.text += toText(diagnostic);
    }
    if (compiled.result.module) {
        spvtools::SpirvTools tools(SPV_ENV_VULKAN_1_2);
        tools.SetMessageConsumer([&](spv_message_level_t, const char*,
                                     const spv_position_t& position, const char* message) {
            compiled.validator += std::to_string(position.index) + ": " + message + "\n";
        });
        if (!tools.Validate(compiled.result.module->words)) {
            compiled.validator += "the module is not valid\n";
        }
    }
    return compiled;
}

std::string firstDiagnostic(std::string_view source) {
    const auto result = compile(source);
    if (result.diagnostics.empty()) {
        return {};
    }
    const auto& first = result.diagnostics.front();
    const char* severity = first.severity == Severity::error     ? "error"
                           : first.severity == Severity::warning ? "warning"
                                                                 : "note";
    return std::to_string(first.line) + ":" + std::to_string(first.column) + ": " + severity +
           ": " + first.message;
}

std::string fragmentSource(std::string_view body, std::string_view globals,
                           std::string_view parameters) {
    return "#include <metal_stdlib>\nusing namespace metal;\n" + std::string(globals) +
           "\nvertex float4 v_main(uint vid [[vertex_id]]) {\n"
           "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
           "    return float4(p * 2.0 - 1.0, 0.0, 1.0);\n}\n"
           "struct Values { float zero; float one; float two; float half_; int i3; uint u5; "
           "float2 v12; float4 v1234; };\n"
           "fragment float4 f_main(float4 fragCoord [[position]],\n"
           "                       constant Values& v [[buffer(0)]]" +
           std::string(parameters) + ") {\n" + std::string(body) + "\n}\n";
}

} // namespace msl::tests
