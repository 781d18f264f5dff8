#include "platform/linux/gpu/pipeline_needs.h"

#include <gtest/gtest.h>

namespace vantor::vulkan {
namespace {

constexpr DeviceAbilities kEverything{.int64 = true, .subgroups = true};

std::string needOf(const std::string& parameters, const std::string& body,
                   const DeviceAbilities& abilities = kEverything) {
    const auto result =
        msl::compile("#include <metal_stdlib>\nusing namespace metal;\n"
                     "struct Args { texture2d<float> t [[id(0)]]; float f [[id(1)]]; };\n"
                     "fragment float4 f_main(float4 p [[position]]" +
                     parameters + ") { " + body + " }\n");
    EXPECT_TRUE(result.module);
    if (!result.module) {
        return result.diagnostics.front().message;
    }
    return unmetNeed(abilities, *result.module, result.module->entryPoints.front()).value_or("");
}

TEST(PipelineNeeds, BuffersAndTwoDimensionalTexturesOfFloatsAreBound) {
    EXPECT_EQ(needOf(", constant float& f [[buffer(0)]], texture2d<float> t [[texture(0)]],"
                     " sampler s [[sampler(0)]]",
                     "return t.sample(s, p.xy) * f;"),
              "");
    EXPECT_EQ(needOf(", texture2d<half> t [[texture(3)]]", "return float4(t.read(uint2(p.xy)));"),
              "");
}

TEST(PipelineNeeds, OtherTexturesAreNamedByTheirIndex) {
    EXPECT_EQ(needOf(", texturecube<float> t [[texture(2)]]",
                     "constexpr sampler s; return t.sample(s, p.xyz);")
                  .find("function 'f_main' takes texture 2, "),
              0U);
    EXPECT_NE(needOf(", texture2d<uint> t [[texture(0)]]", "return float4(t.read(uint2(p.xy)));"),
              "");
    EXPECT_NE(needOf(", texture2d<float, access::write> t [[texture(0)]]",
                     "t.write(p, uint2(p.xy)); return p;"),
              "");
    EXPECT_NE(needOf(", texture2d_array<float> t [[texture(0)]]", "return t.read(uint2(p.xy), 0);"),
              "");
}

TEST(PipelineNeeds, ABufferIsForReading) {
    EXPECT_EQ(needOf(", device float* out [[buffer(4)]]", "out[0] = p.x; return p;"),
              "function 'f_main' writes to buffer 4; what a wallpaper is given is for reading");
    EXPECT_EQ(needOf(", device const float* in [[buffer(4)]]", "return float4(in[0]);"), "");
}

TEST(PipelineNeeds, AnArgumentBufferIsRefused) {
    EXPECT_EQ(needOf(", constant Args& a [[buffer(0)]]", "return a.t.read(uint2(p.xy)) * a.f;"),
              "function 'f_main' takes an argument buffer, which no wallpaper is given");
}

TEST(PipelineNeeds, WhatTheDeviceLacksIsSaid) {
    const std::string wide = "long a = long(p.x); return float4(float(a * a));";
    EXPECT_EQ(needOf("", wide), "");
    EXPECT_EQ(needOf("", wide, {.int64 = false, .subgroups = true}),
              "the device has no 64-bit integers");
    const std::string across = "return float4(simd_sum(p.x));";
    EXPECT_EQ(needOf("", across), "");
    EXPECT_EQ(needOf("", across, {.int64 = true, .subgroups = false}),
              "the device has no functions across SIMD groups");
}

} // namespace
} // namespace vantor::vulkan
