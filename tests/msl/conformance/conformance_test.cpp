// Each case of the conformance suite is compiled, validated and drawn; the pixel must be the one
// that the language's published rules give.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "tests/msl/compile_helper.h"
#include "tests/msl/conformance/case_file.h"
#include "tests/support/vulkan_runner.h"

namespace msl::tests {
namespace {

const std::string kHead = "#include <metal_stdlib>\nusing namespace metal;\n";
const std::string kVertex =
    "\nvertex float4 v_main(uint vid [[vertex_id]]) {\n"
    "    return float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1);\n}\n";

std::string sourceOf(const ConformanceCase& item) {
    if (item.hasBody) {
        return fragmentSource(item.body, item.declarations, item.parameters);
    }
    const bool hasVertex = item.declarations.find("v_main") != std::string::npos;
    return kHead + item.declarations + (hasVertex ? "" : kVertex);
}

template <typename T>
std::vector<std::byte> bytesOf(const std::vector<T>& values) {
    std::vector<std::byte> bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

// Buffer 0 holds the values of fragmentSource, buffer 1 the floats 0, 1, 2 and so on, buffer 2 the
// bytes 0 to 255, buffer 3 the halves 0, 0.5, 1 and so on, and every other one zeros.
std::vector<std::byte> contentsOf(const BufferBinding& buffer) {
    switch (buffer.index) {
    case 0: {
        const std::vector<float> numbers{0, 1, 2, 0.5F, 0, 0, 1, 2, 1, 2, 3, 4};
        auto bytes = bytesOf(numbers);
        const uint32_t integers[] = {3, 5};
        std::memcpy(bytes.data() + 16, integers, sizeof(integers));
        return bytes;
    }
    case 1: {
        std::vector<float> numbers;
        for (int i = 0; i < 64; ++i) {
            numbers.push_back(static_cast<float>(i));
        }
        return bytesOf(numbers);
    }
    case 2: {
        std::vector<uint8_t> numbers;
        for (int i = 0; i < 256; ++i) {
            numbers.push_back(static_cast<uint8_t>(i));
        }
        return bytesOf(numbers);
    }
    case 3: {
        std::vector<uint16_t> halves{0};
        for (uint16_t i = 1; i < 128; ++i) {
            // i / 2 in binary16: the exponent of the highest bit, the rest as fraction.
            const auto top = static_cast<uint16_t>(std::bit_width(i) - 1U);
            const auto fraction = static_cast<uint16_t>((i << (10U - top)) & 0x3FFU);
            halves.push_back(static_cast<uint16_t>(((14U + top) << 10U) | fraction));
        }
        return bytesOf(halves);
    }
    default:
        return std::vector<std::byte>(256);
    }
}

class Conformance : public testing::TestWithParam<ConformanceCase> {};

TEST_P(Conformance, HoldsWhatItsNameSays) {
    const auto& item = GetParam();
    const auto compiled = compileAndValidate(sourceOf(item));
    SCOPED_TRACE(sourceOf(item));
    if (item.outcome == ConformanceCase::Outcome::refused) {
        ASSERT_FALSE(compiled.result.module);
        ASSERT_FALSE(compiled.result.diagnostics.empty());
        const auto first =
            std::find_if(compiled.result.diagnostics.begin(), compiled.result.diagnostics.end(),
                         [](const Diagnostic& said) { return said.severity == Severity::error; });
        ASSERT_NE(first, compiled.result.diagnostics.end());
        EXPECT_TRUE(first->message.starts_with(item.refusal)) << compiled.text;
        return;
    }
    ASSERT_TRUE(compiled.result.module) << compiled.text;
    ASSERT_EQ(compiled.validator, "") << compiled.text;
    if (item.outcome == ConformanceCase::Outcome::compiles) {
        return;
    }
    auto* runner = vantor::tests::VulkanRunner::shared();
    ASSERT_NE(runner, nullptr) << "no Vulkan 1.3 device answers";
    std::vector<std::vector<std::byte>> buffers;
    for (const auto& entry : compiled.result.module->entryPoints) {
        if (entry.stage == Stage::fragment) {
            for (const auto& buffer : entry.buffers) {
                buffers.push_back(contentsOf(buffer));
            }
            break;
        }
    }
    vantor::tests::VulkanRunner::Extras extras;
    extras.argumentBuffer = contentsOf({.index = 1});
    for (const auto& constant : compiled.result.module->constants) {
        // Those below 100 are given: true, ten times the number, or the number and a half.
        if (constant.index >= 100) {
            continue;
        }
        const auto half = static_cast<float>(constant.index) + 0.5F;
        const uint32_t bits = constant.type == FunctionConstantType::boolean ? 1
                              : constant.type == FunctionConstantType::number
                                  ? std::bit_cast<uint32_t>(half)
                                  : constant.index * 10;
        extras.constants.emplace_back(constant.index, bits);
        extras.constants.emplace_back(kFunctionConstantDefined + constant.index, 1);
    }
    std::string problem;
    const auto pixel = runner->draw(*compiled.result.module, buffers, problem, extras);
    ASSERT_TRUE(pixel) << problem;
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR((*pixel)[i], item.expected[i], 1e-5F + std::fabs(item.expected[i]) * 4e-6F)
            << "component " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Language, Conformance, testing::ValuesIn(readCases(MSL_CASE_FOLDER)),
                         [](const auto& test) { return test.param.file + "_" + test.param.name; });

} // namespace
} // namespace msl::tests
