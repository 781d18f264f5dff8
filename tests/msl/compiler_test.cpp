#include <gtest/gtest.h>

#include "tests/msl/compile_helper.h"

namespace msl::tests {
namespace {

TEST(CompilerTest, ReflectionDescribesEveryResource) {
    const auto compiled = compileAndValidate(
        "struct U { float2 r; float4 t; };\n"
        "vertex float4 v(constant float4* p [[buffer(3)]], uint i [[vertex_id]]) { return p[i]; }\n"
        "fragment float4 f(constant U& u [[buffer(1)]], device float* o [[buffer(2)]],\n"
        "                  depth2d<float> d [[texture(4)]], texture2d<uint> t [[texture(0)]],\n"
        "                  sampler s [[sampler(5)]]) {\n"
        "    constexpr sampler q(filter::linear, address::repeat);\n"
        "    o[0] = u.r.x; return d.sample(s, u.r) + d.sample(q, u.r) + "
        "float(t.read(uint2(0)).x);\n"
        "}\n");
    ASSERT_EQ(compiled.text, "");
    EXPECT_EQ(compiled.validator, "");
    const auto& entries = compiled.result.module->entryPoints;
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].name, "v");
    EXPECT_EQ(entries[0].stage, Stage::vertex);
    ASSERT_EQ(entries[0].buffers.size(), 1U);
    EXPECT_EQ(entries[0].buffers[0].index, 3U);
    EXPECT_TRUE(entries[0].buffers[0].isArray);
    ASSERT_EQ(entries[1].buffers.size(), 2U);
    EXPECT_EQ(entries[1].buffers[0].size, 32U);
    EXPECT_FALSE(entries[1].buffers[0].writable);
    EXPECT_TRUE(entries[1].buffers[1].writable);
    ASSERT_EQ(entries[1].textures.size(), 2U);
    EXPECT_TRUE(entries[1].textures[0].depth);
    EXPECT_EQ(entries[1].textures[1].component, TextureComponent::uintComponent);
    ASSERT_EQ(entries[1].samplers.size(), 1U);
    EXPECT_EQ(entries[1].samplers[0].index, 5U);
    ASSERT_EQ(entries[1].constantSamplers.size(), 1U);
    EXPECT_EQ(entries[1].constantSamplers[0].binding, kConstantSamplerBinding);
    EXPECT_EQ(entries[1].constantSamplers[0].options.magFilter, SamplerFilter::linear);
    EXPECT_EQ(entries[1].constantSamplers[0].options.sAddress, SamplerAddress::repeat);
}

TEST(CompilerTest, TheSameSourceGivesTheSameWords) {
    const auto source = fragmentSource("return sin(v.v1234) + fragCoord;");
    EXPECT_EQ(compile(source).module->words, compile(source).module->words);
}

TEST(CompilerTest, EveryTextureShapeValidates) {
    const auto compiled = compileAndValidate(
        fragmentSource("return 0;") +
        "fragment float4 g(texture1d<float> a [[texture(0)]], texture3d<float> b [[texture(1)]],\n"
        "  texturecube<float> c [[texture(2)]], texture2d_array<float> d [[texture(3)]],\n"
        "  depth2d<float> e [[texture(4)]], texture2d<int> h [[texture(5)]],\n"
        "  texturecube_array<float> k [[texture(6)]], sampler s [[sampler(0)]]) {\n"
        "  float4 r = a.sample(s, 0.5) + b.sample(s, float3(0.5)) + c.sample(s, float3(1));\n"
        "  r += d.sample(s, float2(0.5), 1) + e.sample_compare(s, float2(0.5), 0.5);\n"
        "  r += float4(h.read(uint2(1, 1))) + k.sample(s, float3(1), 2, level(1));\n"
        "  r += d.sample(s, float2(0.5), 1, bias(0.5)) + b.get_depth() + d.get_array_size();\n"
        "  r += e.gather(s, float2(0.5)) + d.sample(s, float2(0.5), 0, gradient2d(r.xy, r.zw));\n"
        "  r += d.sample(s, float2(0.5), 0, int2(1, -1)) + e.gather_compare(s, r.xy, 0.5);\n"
        "  return r;\n}\n");
    EXPECT_EQ(compiled.text, "");
    EXPECT_EQ(compiled.validator, "");
}

TEST(CompilerTest, ManyOutputsAndDepthValidate) {
    const auto compiled = compileAndValidate(
        "struct O { float4 a [[color(0)]]; int2 b [[color(2)]]; float d [[depth(less)]]; };\n"
        "struct I { float4 p [[position]]; float2 uv [[center_no_perspective]]; uint n [[flat]]; "
        "};\n"
        "struct A { float3 at [[attribute(0)]]; int k [[attribute(1)]]; };\n"
        "vertex I v(A in [[stage_in]], uint i [[instance_id]]) { return {float4(in.at, 1), "
        "in.at.xy, i + uint(in.k)}; }\n"
        "fragment O f(I in [[stage_in]], bool front [[front_facing]], uint s [[sample_id]]) { O o; "
        "o.a = front ? in.p : float4(s); o.b = int2(in.uv); o.d = 0.5; return o; }\n");
    EXPECT_EQ(compiled.text, "");
    EXPECT_EQ(compiled.validator, "");
}

TEST(CompilerTest, FeaturesThatTheDeviceNeedsAreTold) {
    const auto plain = compileAndValidate(fragmentSource("return v.v1234;"));
    const auto across = compileAndValidate(fragmentSource("return float4(simd_sum(v.one));"));
    const auto wide = compileAndValidate(fragmentSource("long a = v.i3; return float4(a * 2);"));
    ASSERT_TRUE(plain.result.module && across.result.module && wide.result.module);
    EXPECT_FALSE(plain.result.module->usesSubgroups);
    EXPECT_FALSE(plain.result.module->usesInt64);
    EXPECT_TRUE(across.result.module->usesSubgroups);
    EXPECT_TRUE(wide.result.module->usesInt64);
}

} // namespace
} // namespace msl::tests
